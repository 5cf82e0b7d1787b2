#include "tools/reading_choices.hpp"

#include <algorithm>
#include <charconv>
#include <thread>
#include <cctype>
#include <cstdio>
#include <string_view>

#include <nlohmann/json.hpp>

#include "name_value/option_vocabulary.hpp"
#include "tools/apply_options.hpp"
#include "tools/host_values.hpp"
#include "tools/json_writer.hpp"
#include "tools/record_json.hpp"
#include "tools/usage_error.hpp"

namespace zvtool {
namespace {

// More threads than this is a typing slip, not a machine.
constexpr unsigned max_threads = 1024;

using textio::import::escape_style;

bool same_name(std::string_view a, std::string_view b) {
  return std::ranges::equal(a, b, [](char x, char y) {
    return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
  });
}

void add_key(std::set<std::string>& keys, std::string_view name) {
  for (const auto& option : textio::options::option_descriptions) {
    if (same_name(option.key, name)) keys.emplace(option.key);
  }
}

using textio::options::field_key;
using textio::options::field_text;

// The fields that a key sets back, in the order of their arguments: the kind
// of file and of reader first, then the rest in the record's order.
std::vector<const field_key*> keyed_fields(const nlohmann::ordered_json& record) {
  std::vector<const field_key*> fields{textio::options::key_of_field("file_type"),
                                       textio::options::key_of_field("parser_type")};
  for (const auto& item : record.items()) {
    const field_key* row = textio::options::key_of_field(item.key());
    if (row != nullptr && std::ranges::find(fields, row) == fields.end()) fields.push_back(row);
  }
  return fields;
}

nlohmann::ordered_json record_json(const textio::parser::options& record) {
  json_writer out;
  write_options_record(out, record);
  // Discarded when a text holds a lone surrogate, which JSON libraries refuse.
  return nlohmann::ordered_json::parse(out.text(), nullptr, false);
}

// The VALUE argument that gives a field's JSON value back.
std::string value_text(const field_key& f, nlohmann::ordered_json value) {
  const bool escaped = f.text == field_text::escaped;
  const auto unescape = [escaped](nlohmann::ordered_json& v) {
    if (!escaped || !v.is_string()) return;
    std::string doubled;
    for (const char c : v.get<std::string>()) {
      doubled += c;
      if (c == '\\') doubled += c;
    }
    v = doubled;
  };
  // An empty list of texts: an empty cell array ([] would be numbers).
  if (value.is_array() && value.empty() && escaped) return R"({"$class": "cell", "$size": [0, 0]})";
  if (value.is_array()) {
    for (auto& v : value) unescape(v);
  } else {
    unescape(value);
  }
  // Enumerations go by their lower-case names, which the options accept.
  if (value.is_string() && f.text == field_text::enumerator) {
    std::string name = value.get<std::string>();
    for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    value = name;
  }
  return value.dump();
}

}  // namespace

std::string escape_name(escape_style escape) { return escape == escape_style::backslash ? "backslash" : "double"; }

std::string quote_name(char quote) { return quote == '\0' ? "none" : std::string(1, quote); }

textio::import::user_choices user_choices_of(const parsed_arguments& args) {
  textio::import::user_choices choices;
  if (const auto json = args.value("--struct")) {
    const hv::Value value = struct_argument(*json);
    const hvArray_tag* record = value.get();
    const int fields = record == nullptr ? 0 : record->get_number_of_struct_fields();
    const char* const* names = fields > 0 ? record->get_struct_field_names() : nullptr;
    for (int i = 0; i < fields && names != nullptr; ++i) add_key(choices.keys, names[i]);
  } else {
    for (std::size_t i = 0; i < args.option_arguments.size(); i += 2) add_key(choices.keys, args.option_arguments[i]);
  }
  choices.encoding = args.value("--encoding");
  if (const auto quote = args.value("--quote")) {
    if (*quote == "none") {
      choices.quote = '\0';
    } else if (quote->size() == 1 && static_cast<unsigned char>((*quote)[0]) < 0x80 && (*quote)[0] != '\n' &&
               (*quote)[0] != '\r') {
      choices.quote = (*quote)[0];
    } else {
      throw usage_error("--quote takes one ASCII character or none, not '" + *quote + "'");
    }
  }
  if (const auto escape = args.value("--escape")) {
    if (*escape == "double") {
      choices.escape = escape_style::doubled;
    } else if (*escape == "backslash") {
      choices.escape = escape_style::backslash;
    } else {
      throw usage_error("--escape takes double or backslash, not '" + *escape + "'");
    }
  }
  return choices;
}

std::string report_text(const textio::import::detection_report& report) {
  char head[160];
  std::snprintf(head, sizeof head, "detected: encoding %s, quote %s, escape %s, confidence %.2f\n",
                report.encoding.c_str(), quote_name(report.quote).c_str(), escape_name(report.escape).c_str(),
                report.confidence);
  std::string text = head;
  for (const auto& filled : report.filled) {
    text.append("  ").append(filled.setting).append(": ").append(filled.reason).append("\n");
  }
  if (!report.variable_names.empty()) {
    text.append("  variable names:");
    for (const auto& name : report.variable_names) text.append(" ").append(json_quote_bytes(name));
    text.append("\n");
  }
  if (report.table_end_line) {
    text.append("  the table ends before line ").append(std::to_string(*report.table_end_line)).append("\n");
  }
  for (const std::string& doubt : report.doubts) text.append("  confidence lowered: ").append(doubt).append("\n");
  return text;
}

textio::import::read_settings read_settings_of(const parsed_arguments& args) {
  textio::import::read_settings settings;
  settings.given = user_choices_of(args);
  settings.detect = !args.has("--no-detect");
  settings.strict = args.has("--strict");
  const auto line_of = [&args](const char* option) -> std::optional<std::uint64_t> {
    const auto end = args.value(option);
    if (!end) return std::nullopt;
    std::uint64_t line = 0;
    const auto [ptr, ec] = std::from_chars(end->data(), end->data() + end->size(), line);
    if (ec != std::errc() || ptr != end->data() + end->size() || line == 0) {
      throw usage_error(std::string(option) + " takes a line number from 1, not '" + *end + "'");
    }
    return line;
  };
  settings.table_end_line = line_of("--table-end");
  settings.table_may_end_line = line_of("--table-may-end");
  if (const auto names = args.value("--variable-names")) {
    const auto json = parse_json(*names);
    if (!json || !json->is_array() || !std::ranges::all_of(*json, [](const auto& n) { return n.is_string(); })) {
      throw usage_error("--variable-names takes a JSON array of strings");
    }
    settings.variable_names = json->get<std::vector<std::string>>();
  }
  settings.all_lines = args.has("--all-lines");
  settings.exact_scan = args.has("--exact-scan");
  if (const auto threads = args.value("--threads")) {
    unsigned count = 0;
    const auto [ptr, ec] = std::from_chars(threads->data(), threads->data() + threads->size(), count);
    if (ec != std::errc() || ptr != threads->data() + threads->size() || count == 0 || count > max_threads) {
      throw usage_error("--threads takes a count from 1 to " + std::to_string(max_threads) + ", not '" + *threads +
                        "'");
    }
    settings.threads = count;
  }
  return settings;
}

textio::import::read_source source_of(const parsed_arguments& args) {
  return textio::import::read_source::file(*args.operand);
}

std::vector<std::string> reproducing_arguments(const textio::parser::options& record,
                                               const textio::import::text_format& format) {
  const nlohmann::ordered_json wanted = record_json(record);
  const nlohmann::ordered_json plain = record_json(textio::parser::options{});
  std::vector<std::string> pairs;
  const std::vector<const field_key*> fields = keyed_fields(plain);
  const auto add_differing = [&](const nlohmann::ordered_json& from) {
    for (const field_key* f : fields) {
      const std::string field(f->field);
      // Setting the field also clears its detection flag, if it has one.
      const std::string flag = "detecting_" + field;
      const bool flag_differs = wanted.contains(flag) && wanted[flag] != from[flag];
      if (wanted[field] == from[field] && !flag_differs) continue;
      pairs.emplace_back(f->key);
      pairs.push_back(value_text(*f, wanted[field]));
    }
  };
  if (!wanted.is_discarded()) add_differing(plain);
  // A setter may change other fields too; setting them again after it puts
  // them right.
  for (int round = 0; round < 3 && !pairs.empty(); ++round) {
    textio::parser::options replay;
    if (apply_option_arguments(std::nullopt, pairs, replay)) break;
    const nlohmann::ordered_json got = record_json(replay);
    if (got.is_discarded() || got == wanted) break;
    add_differing(got);
  }
  std::vector<std::string> args;
  if (format.encoding != "UTF-8") args.insert(args.end(), {"--encoding", format.encoding});
  if (format.quote != '"') args.insert(args.end(), {"--quote", quote_name(format.quote)});
  if (format.escape != escape_style::doubled) args.insert(args.end(), {"--escape", escape_name(format.escape)});
  if (format.table_end_line) {
    args.insert(args.end(), {format.table_end_detected ? "--table-may-end" : "--table-end",
                             std::to_string(*format.table_end_line)});
  }
  if (!format.variable_names.empty()) {
    args.insert(args.end(), {"--variable-names", nlohmann::ordered_json(format.variable_names).dump()});
  }
  // After "--" a pair that starts with "--" is not taken for an option.
  if (std::ranges::any_of(pairs, [](const std::string& a) { return a.starts_with("--"); })) args.emplace_back("--");
  args.insert(args.end(), pairs.begin(), pairs.end());
  return args;
}

}  // namespace zvtool
