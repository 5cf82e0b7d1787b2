// The field each rule option writes, read and written by the option's key.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "parser/options.hpp"
#include "zvcore/ustring.hpp"

namespace test_support {

// A text for a test trace: printable ASCII as is, other units as \u and their number.
inline std::string describe_text(const ::ustring& text) {
  std::string out = "\"";
  for (const char16_t c : text) {
    if (c >= 0x20 && c < 0x7F)
      out += static_cast<char>(c);
    else
      out += "\\u" + std::to_string(static_cast<unsigned>(c));
  }
  return out + "\"";
}

// The field that a rule option writes, as a number.
inline int rule_field(const textio::parser::options& o, std::string_view key) {
  if (key == "ConsecutiveDelimitersRule") return static_cast<int>(o.consecutive_delim_rule());
  if (key == "FileType") return static_cast<int>(o.file_type());
  if (key == "LeadingDelimitersRule") return static_cast<int>(o.leading_delim_rule());
  if (key == "TrailingDelimitersRule") return static_cast<int>(o.trailing_delim_rule());
  if (key == "EmptyLineRule") return static_cast<int>(o.empty_line_rule());
  if (key == "OutputBuilderType") return static_cast<int>(o.output_type());
  if (key == "ExtraColumnsRule") return static_cast<int>(o.extra_columns_rule());
  if (key == "ImportErrorRule") return static_cast<int>(o.import_error_rule());
  if (key == "MissingRule") return static_cast<int>(o.missing_rule());
  if (key == "ParserType") return static_cast<int>(o.parser_type());
  if (key == "PartialFieldRule") return static_cast<int>(o.partial_field_rule());
  throw std::invalid_argument("no rule option " + std::string(key));
}

// Writes a rule field directly through the record's accessor.
inline void set_rule_field(textio::parser::options& o, std::string_view key, int position) {
  namespace enums = textio::enums;
  const auto p = static_cast<std::uint8_t>(position);
  if (key == "ConsecutiveDelimitersRule")
    o.consecutive_delim_rule(enums::ConsecutiveDelimitersRule{p});
  else if (key == "FileType")
    o.file_type(enums::FileType{p});
  else if (key == "LeadingDelimitersRule")
    o.leading_delim_rule(enums::LeadingDelimiterRule{p});
  else if (key == "TrailingDelimitersRule")
    o.trailing_delim_rule(enums::TrailingDelimiterRule{p});
  else if (key == "EmptyLineRule")
    o.empty_line_rule(enums::EmptyLineRule{p});
  else if (key == "OutputBuilderType")
    o.output_type(enums::OutputBuilderType{p});
  else if (key == "ExtraColumnsRule")
    o.extra_columns_rule(enums::ExtraColumnsRule{p});
  else if (key == "ImportErrorRule")
    o.import_error_rule(enums::BadDataRule{p});
  else if (key == "MissingRule")
    o.missing_rule(enums::BadDataRule{p});
  else if (key == "ParserType")
    o.parser_type(enums::ParserType{p});
  else if (key == "PartialFieldRule")
    o.partial_field_rule(enums::PartialFieldRule{p});
  else
    throw std::invalid_argument("no rule option " + std::string(key));
}

}  // namespace test_support
