// Setters of the rule options. Each matches the value against its option's
// flags, exactly or by abbreviation, and stores the position as the
// enumerator; a failed match throws BadTextFlag before the record is touched.
#include "name_value/setters.hpp"

#include <array>
#include <cstddef>
#include <cstdint>
#include <tuple>

#include "name_value/flag_matching.hpp"
#include "name_value/rule_flags.hpp"

namespace textio::options::setters {
namespace {

template <std::size_t N>
std::uint8_t exact_position(const hvArray_tag* value, const std::array<const char*, N>& flags) {
  return std::apply([value](auto... flag) { return parse_exact_flag(value, flag...); }, flags);
}

template <std::size_t N>
std::uint8_t abbreviated_position(const hvArray_tag* value, const std::array<const char*, N>& flags) {
  return std::apply([value](auto... flag) { return parse_abbreviated_flag(value, flag...); }, flags);
}

}  // namespace

void consecutive_delimiters_rule(const hvArray_tag* value, textio::parser::options& opts) {
  const auto position = abbreviated_position(value, rule_flags::consecutive_delimiters_rule);
  opts.consecutive_delim_rule(static_cast<enums::ConsecutiveDelimitersRule>(position));
}

void file_type(const hvArray_tag* value, textio::parser::options& opts) {
  const auto position = abbreviated_position(value, rule_flags::file_type);
  opts.file_type(static_cast<enums::FileType>(position));
}

void leading_delimiters_rule(const hvArray_tag* value, textio::parser::options& opts) {
  const auto position = abbreviated_position(value, rule_flags::leading_delimiters_rule);
  opts.leading_delim_rule(static_cast<enums::LeadingDelimiterRule>(position));
}

void trailing_delimiters_rule(const hvArray_tag* value, textio::parser::options& opts) {
  const auto position = abbreviated_position(value, rule_flags::trailing_delimiters_rule);
  opts.trailing_delim_rule(static_cast<enums::TrailingDelimiterRule>(position));
}

void empty_line_rule(const hvArray_tag* value, textio::parser::options& opts) {
  const auto position = exact_position(value, rule_flags::empty_line_rule);
  opts.empty_line_rule(static_cast<enums::EmptyLineRule>(position));
}

void output_builder_type(const hvArray_tag* value, textio::parser::options& opts) {
  const auto position = exact_position(value, rule_flags::output_builder_type);
  opts.output_type(static_cast<enums::OutputBuilderType>(position));
}

void extra_columns_rule(const hvArray_tag* value, textio::parser::options& opts) {
  const auto position = exact_position(value, rule_flags::extra_columns_rule);
  opts.extra_columns_rule(static_cast<enums::ExtraColumnsRule>(position));
}

void import_error_rule(const hvArray_tag* value, textio::parser::options& opts) {
  const auto position = exact_position(value, rule_flags::bad_data_rule);
  opts.import_error_rule(static_cast<enums::BadDataRule>(position));
}

void missing_rule(const hvArray_tag* value, textio::parser::options& opts) {
  const auto position = exact_position(value, rule_flags::bad_data_rule);
  opts.missing_rule(static_cast<enums::BadDataRule>(position));
}

void parser_type(const hvArray_tag* value, textio::parser::options& opts) {
  const auto position = exact_position(value, rule_flags::parser_type);
  opts.parser_type(static_cast<enums::ParserType>(position));
}

void partial_field_rule(const hvArray_tag* value, textio::parser::options& opts) {
  const auto position = exact_position(value, rule_flags::partial_field_rule);
  opts.partial_field_rule(static_cast<enums::PartialFieldRule>(position));
}

}  // namespace textio::options::setters
