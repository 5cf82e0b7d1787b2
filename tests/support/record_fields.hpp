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
  for (const char16_t c : text)
    out +=
        c >= 0x20 && c < 0x7F ? std::string(1, static_cast<char>(c)) : "\\u" + std::to_string(static_cast<unsigned>(c));
  return out + "\"";
}

// Each rule option's key, the record's accessor and the accessor's type.
#define ZVTP_RULE_FIELDS(X)                                                         \
  X("ConsecutiveDelimitersRule", consecutive_delim_rule, ConsecutiveDelimitersRule) \
  X("FileType", file_type, FileType)                                                \
  X("LeadingDelimitersRule", leading_delim_rule, LeadingDelimiterRule)              \
  X("TrailingDelimitersRule", trailing_delim_rule, TrailingDelimiterRule)           \
  X("EmptyLineRule", empty_line_rule, EmptyLineRule)                                \
  X("OutputBuilderType", output_type, OutputBuilderType)                            \
  X("ExtraColumnsRule", extra_columns_rule, ExtraColumnsRule)                       \
  X("ImportErrorRule", import_error_rule, BadDataRule)                              \
  X("MissingRule", missing_rule, BadDataRule)                                       \
  X("ParserType", parser_type, ParserType)                                          \
  X("PartialFieldRule", partial_field_rule, PartialFieldRule)

// The field that a rule option writes, as a number.
inline int rule_field(const textio::parser::options& o, std::string_view key) {
#define ZVTP_GET(name, field, type) \
  if (key == name) return static_cast<int>(o.field());
  ZVTP_RULE_FIELDS(ZVTP_GET)
#undef ZVTP_GET
  throw std::invalid_argument("no rule option " + std::string(key));
}

// Writes a rule field directly through the record's accessor.
inline void set_rule_field(textio::parser::options& o, std::string_view key, int position) {
#define ZVTP_SET(name, field, type) \
  if (key == name) return o.field(textio::enums::type{static_cast<std::uint8_t>(position)});
  ZVTP_RULE_FIELDS(ZVTP_SET)
#undef ZVTP_SET
  throw std::invalid_argument("no rule option " + std::string(key));
}

#undef ZVTP_RULE_FIELDS

}  // namespace test_support
