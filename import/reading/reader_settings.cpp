#include "import/reading/reader_settings.hpp"

#include <vector>

#include "import/scan/string_matcher.hpp"

namespace textio::import {

bool all_ascii(const std::vector<std::u16string>& strings) noexcept {
  for (const auto& s : strings) {
    for (const char16_t u : s) {
      if (u >= 0x80) return false;
    }
  }
  return true;
}

textio::parser::options effective_options(const textio::parser::options& given) {
  using textio::enums::ParserType;
  textio::parser::options opts = given;
  if (opts.detecting_num_header_lines()) {
    opts.num_header_lines(0);
    opts.unset_num_header_lines();
  }
  if (opts.parser_type() == ParserType::Tabular) {
    std::vector<ustring> delimiters;
    for (const char16_t u : opts.whitespace()) delimiters.emplace_back(1, u);
    opts.delimiter(std::move(delimiters));
    opts.consecutive_delim_rule(textio::enums::ConsecutiveDelimitersRule::Join);
    opts.leading_delim_rule(textio::enums::LeadingDelimiterRule::Ignore);
    opts.trailing_delim_rule(textio::enums::TrailingDelimiterRule::Ignore);
  } else if (given.detecting_delimiter()) {
    opts.delimiter(std::vector<ustring>{u","});
    opts.unset_delimiter();
  }
  return opts;
}

bool scans_utf8_bytes(const textio::parser::options& effective) {
  if (effective.parser_type() == textio::enums::ParserType::FixedWidth) return false;
  for (const char16_t u : effective.whitespace()) {
    if (u >= 0x80) return false;
  }
  return all_ascii(effective.delimiter()) && all_ascii(effective.line_ending()) && all_ascii(effective.comment_style());
}

}  // namespace textio::import
