#include "tools/record_writers.hpp"

#include <charconv>
#include <cmath>
#include <cstdint>
#include <utility>

#include "import/values/number_text.hpp"
#include "tools/byte_scan.hpp"
#include "tools/checked_output.hpp"
#include "tools/json_writer.hpp"
#include "zvcore/ustring.hpp"

namespace zvtool {
namespace {

using textio::import::output_value;
using textio::import::value_kind;

void append_csv_text(std::string& out, std::string_view text);

// A text value in the output's own way: CSV quotes, TSV escapes.
using text_appender = void (*)(std::string& out, std::string_view text);

// An integer, logical, datetime or duration value as both outputs write it;
// JSON quotes the datetime and duration texts.
template <class Integer>
void append_integer(std::string& out, Integer n) {
  char digits[24];
  out.append(digits, std::to_chars(digits, digits + sizeof digits, n).ptr);
}

void append_typed(std::string& out, const output_value& v, bool json) {
  if (v.kind == value_kind::integer) {
    append_integer(out, v.integer);
  } else if (v.kind == value_kind::unsigned_integer) {
    append_integer(out, static_cast<std::uint64_t>(v.integer));
  } else if (v.kind == value_kind::logical) {
    out += v.number != 0 ? "true" : "false";
  } else if (json) {
    out += '"';
    out += v.bytes;
    out += '"';
  } else {
    out += v.bytes;
  }
}

// A number: its text as the reader found it, when that is already the
// shortest round trip, else formatted.
void append_number(std::string& out, const output_value& v) {
  const std::string_view shortest = textio::import::written_shortest(v);
  if (shortest.empty()) return textio::import::append_number_text(out, v.number);
  out += shortest;
}

// A number's own text when it is a JSON number of its value; false when it
// is not.
bool append_json_number_as_written(std::string& out, const output_value& v) {
  if (!textio::import::written_as_json_number(v)) return false;
  if (v.utf16) {
    for (const char16_t u : v.units) out += static_cast<char>(u);  // (ASCII)
  } else {
    out += v.written;
  }
  return true;
}

// A typed value's own text as the output writes text; false when it has none.
bool append_csv_as_written(std::string& out, const output_value& v, text_appender text) {
  if (v.utf16 && !v.units.empty()) {
    text(out, foundation::core::unicode::to_utf8(v.units));
    return true;
  }
  if (v.written.empty()) return false;
  text(out, v.written);
  return true;
}

void append_json(std::string& out, const output_value& v, value_text values) {
  switch (v.kind) {
    case value_kind::integer:
    case value_kind::unsigned_integer:
      if (values == value_text::canonical || !append_json_number_as_written(out, v)) append_typed(out, v, true);
      return;
    default:
      append_typed(out, v, true);
      return;
    case value_kind::missing:
      out += "null";
      return;
    case value_kind::number:
      if (values == value_text::as_written && append_json_number_as_written(out, v)) return;
      if (std::isfinite(v.number)) {
        append_number(out, v);
      } else {
        out += '"';
        textio::import::append_number_text(out, v.number);
        out += '"';
      }
      return;
    case value_kind::text:
      if (v.utf16) {
        append_json_units(out, v.units);
      } else {
        append_json_bytes(out, v.bytes);
      }
      return;
  }
}

void append_json_elements(std::string& out, std::span<const output_value> values, value_text as) {
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0) out += ", ";
    append_json(out, values[i], as);
  }
}

void append_json_array(std::string& out, std::span<const output_value> values, value_text as) {
  out += '[';
  append_json_elements(out, values, as);
  out += ']';
}

// Quoted when empty, led by a byte-order mark, starting or ending with a
// blank, or holding a byte that CSV must quote. The text is scanned once: a
// quote can only sit at or after the first such byte, and the runs between
// quotes go in one piece, each quote doubled.
void append_csv_text(std::string& out, std::string_view text) {
  const std::size_t special = find_csv_special(text);
  const auto blank = [](char c) { return c == ' ' || c == '\t' || c == '\b'; };
  if (special == text.size() && !text.empty() && !text.starts_with("\xEF\xBB\xBF") && !blank(text.front()) &&
      !blank(text.back())) {
    out += text;
    return;
  }
  out += '"';
  for (std::size_t quote = text.find('"', special); quote != std::string_view::npos; quote = text.find('"')) {
    out.append(text.data(), quote + 1);
    out += '"';
    text.remove_prefix(quote + 1);
  }
  out += text;
  out += '"';
}

// TSV: a tab, line feed, carriage return or backslash in a value is
// written as \t, \n, \r or \\, so that every tab parts fields and every
// line feed ends a row.
void append_tsv_text(std::string& out, std::string_view text) {
  for (const char c : text) {
    switch (c) {
      case '\t':
        out += "\\t";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\r':
        out += "\\r";
        break;
      case '\\':
        out += "\\\\";
        break;
      default:
        out += c;
    }
  }
}

void append_csv(std::string& out, const output_value& v, value_text values, text_appender text) {
  switch (v.kind) {
    default:
      if (values == value_text::canonical || !append_csv_as_written(out, v, text)) append_typed(out, v, false);
      return;
    case value_kind::missing:
      return;
    case value_kind::number:
      if (values == value_text::canonical || !append_csv_as_written(out, v, text)) append_number(out, v);
      return;
    case value_kind::text:
      if (v.utf16) {
        text(out, foundation::core::unicode::to_utf8(v.units));
      } else {
        text(out, v.bytes);
      }
      return;
  }
}

void append_csv_fields(std::string& out, std::span<const output_value> values, value_text as,
                       const delimited_style& style) {
  const text_appender text = style.separator == '\t' ? append_tsv_text : append_csv_text;
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (i > 0) out += style.separator;
    append_csv(out, values[i], as, text);
  }
}

void append_csv_row(std::string& out, std::span<const output_value> values, value_text as,
                    const delimited_style& style) {
  append_csv_fields(out, values, as, style);
  out += style.line_end;
}

// Appends `count` copies of `text` to the output in pieces, so that a long
// run of missing values never sits in memory at once.
void append_repeated(buffered_output& out, std::string_view text, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    out.text() += text;
    out.maybe_flush();
  }
}

}  // namespace

void buffered_output::write_out() {
  if (buffer_.empty() || !out_) return;
  out_->write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
  buffer_.clear();
}

void buffered_output::flush() {
  if (!out_) return;
  write_out();
  flush_output(*out_);
}

void buffered_output::write(std::string_view text) {
  if (!out_ || buffer_.size() + text.size() < piece) {
    buffer_ += text;
    return;
  }
  write_out();
  out_->write(text.data(), static_cast<std::streamsize>(text.size()));
  check_output(*out_);
}

std::string number_text(double value) {
  std::string text;
  textio::import::append_number_text(text, value);
  return text;
}

void jsonl_writer::header(const textio::import::table_header& header) {
  std::string& out = out_.text();
  if (objects_) {
    keys_.clear();
    for (const output_value& name : header.names) {
      std::string key;
      append_json(key, name, values_);
      keys_.push_back(std::move(key) + ": ");
    }
  }
  out += "{\"variables\": ";
  append_json_array(out, header.names, values_);
  out += ", \"units\": ";
  append_json_array(out, header.units, values_);
  out += ", \"descriptions\": ";
  append_json_array(out, header.descriptions, values_);
  if (!header.types.empty()) {
    out += ", \"types\": [";
    bool first = true;
    for (const textio::import::type_run& run : header.types) {
      for (std::size_t i = 0; i < run.count; ++i) {
        out += std::exchange(first, false) ? "\"" : ", \"";
        out += run.name;
        out += '"';
        out_.maybe_flush();  // a wide table's list is long
      }
    }
    out += ']';
  }
  out += "}\n";
  out_.maybe_flush();
}

const std::string& jsonl_writer::key(std::size_t i) {
  while (keys_.size() <= i) keys_.push_back("\"Var" + std::to_string(keys_.size() + 1) + "\": ");
  return keys_[i];
}

void jsonl_writer::object_values(std::span<const output_value> values, std::size_t missing, bool last) {
  std::string& out = out_.text();
  if (!std::exchange(in_record_, !last)) {
    out += '{';
    field_ = 0;
  }
  for (std::size_t i = 0; i < values.size() + missing; ++i, ++field_) {
    if (field_ > 0) out += ", ";
    out += key(field_);
    if (i < values.size()) {
      append_json(out, values[i], values_);
    } else {
      out += "null";
    }
  }
  if (last) out += "}\n";
  out_.maybe_flush();
}

void jsonl_writer::record_part(std::span<const output_value> values) {
  if (objects_) return object_values(values, 0, false);
  std::string& out = out_.text();
  if (!std::exchange(in_record_, true)) out += '[';
  for (const output_value& v : values) {
    append_json(out, v, values_);
    out += ", ";
  }
  out_.maybe_flush();
}

void jsonl_writer::record(std::span<const output_value> values) {
  if (objects_) return object_values(values, 0, true);
  std::string& out = out_.text();
  if (std::exchange(in_record_, false)) {
    append_json_elements(out, values, values_);
    out += ']';
  } else {
    append_json_array(out, values, values_);
  }
  out += '\n';
  out_.maybe_flush();
}

void jsonl_writer::padded_record(std::span<const output_value> values, std::size_t missing) {
  if (objects_) return object_values(values, missing, true);
  if (missing == 0) return record(values);
  std::string& out = out_.text();
  if (!std::exchange(in_record_, false)) out += '[';
  for (std::size_t i = 0; i < values.size(); ++i) {
    append_json(out, values[i], values_);
    out += ", ";
  }
  append_repeated(out_, "null, ", missing - 1);
  out_.text() += "null]\n";
  out_.maybe_flush();
}

void csv_writer::header(const textio::import::table_header& header) {
  if (header.names.empty()) return;
  append_csv_row(out_.text(), header.names, values_, style_);
  out_.maybe_flush();
}

void csv_writer::record(std::span<const output_value> values) { padded_record(values, 0); }

void csv_writer::record_part(std::span<const output_value> values) {
  append_csv_fields(out_.text(), values, values_, style_);
  out_.text() += style_.separator;
  in_record_ = true;
  out_.maybe_flush();
}

void csv_writer::padded_record(std::span<const output_value> values, std::size_t missing) {
  if (!std::exchange(in_record_, false) && values.size() + missing == 1 &&
      (missing == 1 || values[0].kind == value_kind::missing)) {
    lone_missing_written_ = true;
  }
  append_csv_fields(out_.text(), values, values_, style_);
  append_repeated(out_, std::string_view(&style_.separator, 1), values.empty() && missing > 0 ? missing - 1 : missing);
  out_.text() += style_.line_end;
  out_.maybe_flush();
}

void append_value_text(std::string& out, const output_value& v) {
  append_csv(out, v, value_text::as_written, [](std::string& to, std::string_view text) { to += text; });
}

std::string lone_missing_advice() {
  return "zvtextparser: note: a record of one missing value is written as an empty line; read this CSV back with "
         "EmptyLineRule read to keep those records\n";
}

}  // namespace zvtool
