#include "tools/json_writer.hpp"

#include <charconv>
#include <stdexcept>

#include "zvcore/utf8.hpp"

namespace zvtool {
namespace {

using foundation::core::unicode::append_utf8;
using foundation::core::unicode::combine_surrogates;
using foundation::core::unicode::is_high_surrogate;
using foundation::core::unicode::is_low_surrogate;
using foundation::core::unicode::utf8_sequence_at;

constexpr char hex_digits[] = "0123456789abcdef";

void append_unit_escape(std::string& out, unsigned unit) {
  out += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) out += hex_digits[(unit >> shift) & 0xFu];
}

// Escapes an ASCII unit that JSON does not allow as is; false when the unit
// needs no escape.
bool append_ascii_escape(std::string& out, unsigned unit) {
  switch (unit) {
    case '"':
      out += "\\\"";
      return true;
    case '\\':
      out += "\\\\";
      return true;
    case '\b':
      out += "\\b";
      return true;
    case '\f':
      out += "\\f";
      return true;
    case '\n':
      out += "\\n";
      return true;
    case '\r':
      out += "\\r";
      return true;
    case '\t':
      out += "\\t";
      return true;
    default:
      if (unit < 0x20) {
        append_unit_escape(out, unit);
        return true;
      }
      return false;
  }
}

}  // namespace

std::string json_quote_units(std::u16string_view units) {
  std::string out = "\"";
  for (std::size_t i = 0; i < units.size(); ++i) {
    const char16_t u = units[i];
    if (u < 0x80) {
      if (!append_ascii_escape(out, u)) out += static_cast<char>(u);
    } else if (is_high_surrogate(u) && i + 1 < units.size() && is_low_surrogate(units[i + 1])) {
      append_utf8(out, combine_surrogates(u, units[i + 1]));
      ++i;
    } else if (is_high_surrogate(u) || is_low_surrogate(u)) {
      append_unit_escape(out, u);
    } else {
      append_utf8(out, u);
    }
  }
  out += '"';
  return out;
}

std::string json_quote_bytes(std::string_view bytes) {
  std::string out = "\"";
  for (std::size_t i = 0; i < bytes.size();) {
    const std::size_t length = utf8_sequence_at(bytes.substr(i)).length;
    if (length == 0) {
      append_unit_escape(out, static_cast<unsigned char>(bytes[i]));
      ++i;
    } else if (length == 1) {
      if (!append_ascii_escape(out, static_cast<unsigned char>(bytes[i]))) out += bytes[i];
      ++i;
    } else {
      out.append(bytes.substr(i, length));
      i += length;
    }
  }
  out += '"';
  return out;
}

void json_writer::indent(std::size_t depth) {
  out_ += '\n';
  out_.append(2 * depth, ' ');
}

void json_writer::next_item() {
  if (levels_.empty()) return;
  level& current = levels_.back();
  if (!current.empty) out_ += ',';
  current.empty = false;
  indent(levels_.size());
}

void json_writer::value_prefix() {
  if (!levels_.empty() && levels_.back().is_object) {
    if (!key_written_) throw std::logic_error("json_writer: a member value needs a key first");
    key_written_ = false;
    return;
  }
  next_item();
}

void json_writer::key(std::string_view name) {
  if (levels_.empty() || !levels_.back().is_object || key_written_) {
    throw std::logic_error("json_writer: a key belongs directly inside an object");
  }
  next_item();
  out_ += json_quote_bytes(name);
  out_ += ": ";
  key_written_ = true;
}

void json_writer::open(char bracket, bool is_object) {
  value_prefix();
  out_ += bracket;
  levels_.push_back(level{is_object});
}

void json_writer::close(char bracket, bool is_object) {
  if (levels_.empty() || levels_.back().is_object != is_object || key_written_) {
    throw std::logic_error("json_writer: unbalanced container");
  }
  const bool empty = levels_.back().empty;
  levels_.pop_back();
  if (!empty) indent(levels_.size());
  out_ += bracket;
}

void json_writer::begin_object() { open('{', true); }
void json_writer::end_object() { close('}', true); }
void json_writer::begin_array() { open('[', false); }
void json_writer::end_array() { close(']', false); }

void json_writer::text_value(std::u16string_view units) {
  value_prefix();
  out_ += json_quote_units(units);
}

void json_writer::bytes_value(std::string_view bytes) {
  value_prefix();
  out_ += json_quote_bytes(bytes);
}

void json_writer::unsigned_value(std::uint64_t n) {
  value_prefix();
  out_ += std::to_string(n);
}

void json_writer::bool_value(bool b) {
  value_prefix();
  out_ += b ? "true" : "false";
}

void json_writer::null_value() {
  value_prefix();
  out_ += "null";
}

void json_writer::double_value(double d) {
  value_prefix();
  char buffer[32];
  const auto end = std::to_chars(buffer, buffer + sizeof buffer, d).ptr;
  out_.append(buffer, end);
}

}  // namespace zvtool
