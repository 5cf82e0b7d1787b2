#include "tools/message_failure.hpp"

#include <variant>

#include "tools/exit_status.hpp"

namespace zvtool {

message_failure capture_message(const foundation::core::except::IMsgIDException& error) {
  return message_failure{error.GetMsgIDText(), error.GetBaseMsgID(), error.GetUnicodeMessageTxt()};
}

void write_message_failure(json_writer& out, const message_failure& failure) {
  out.begin_object();
  out.key("identifier");
  out.bytes_value(failure.identifier);
  out.key("key");
  out.bytes_value(failure.id.key);
  out.key("arguments");
  out.begin_array();
  for (const auto& argument : failure.id.args) {
    if (const auto* bytes = std::get_if<std::string>(&argument)) {
      out.bytes_value(*bytes);
    } else if (const auto* units = std::get_if<ustring>(&argument)) {
      out.text_value(*units);
    } else {
      out.bytes_value(std::to_string(std::get<std::uint64_t>(argument)));
    }
  }
  out.end_array();
  out.key("message");
  out.text_value(failure.message);
  out.end_object();
}

std::string message_line(const message_failure& failure) {
  const std::string message = foundation::core::unicode::to_utf8(failure.message);
  std::string text;
  for (std::size_t i = 0; i < message.size(); ++i) {
    const bool crlf = message[i] == '\r' && i + 1 < message.size() && message[i + 1] == '\n';
    if (crlf) ++i;
    text += message[i] == '\n' || message[i] == '\r' ? ' ' : message[i];
  }
  const auto first = text.find_first_not_of(" \t");
  const auto last = text.find_last_not_of(" \t");
  text = first == std::string::npos ? std::string() : text.substr(first, last - first + 1);
  if (!failure.option.empty()) text = failure.option + ": " + text;
  if (!failure.hint.empty()) text += " " + failure.hint;
  return "zvtextparser: " + failure.identifier + ": " + text + "\n";
}

int reading_failure_status(const message_failure& failure) {
  return failure.id.key == "CannotReadFile" ? exit_io_failure : exit_reading_error;
}

}  // namespace zvtool
