#include "import/scan/scan_setup.hpp"

#include <string>

#include "import/scan/string_matcher.hpp"
#include "parser/record_readers.hpp"
#include "zvcore/ustring.hpp"

namespace textio::import {
namespace {

using textio::enums::ConsecutiveDelimitersRule;
using textio::enums::LeadingDelimiterRule;
using textio::enums::ParserType;
using textio::enums::TrailingDelimiterRule;

template <class CharT>
string_matcher<CharT> comment_matcher(const std::vector<ustring>& style, std::size_t index) {
  if (style.size() <= index || style[index].empty()) return {};
  return string_matcher<CharT>(textio::get_or_create_delim({style[index]}));
}

template <class CharT>
void add_comments_and_finish(const textio::parser::options& opts, scan_rules<CharT>& rules) {
  rules.comment_open = comment_matcher<CharT>(opts.comment_style(), 0);
  if (!rules.comment_open.empty()) rules.comment_close = comment_matcher<CharT>(opts.comment_style(), 1);
  rules.whitespace = opts.whitespace();
  rules.finish();
}

}  // namespace

template <class CharT>
reader_scan_rules<CharT> scan_rules_for(const textio::parser::options& opts, const text_format& text) {
  reader_scan_rules<CharT> out;
  scan_rules<CharT>& raw_rules = out.lines;
  scan_rules<CharT>& data_rules = out.data;

  const textio::parser::LineRecordReader line_reader(opts);
  raw_rules.line_endings = string_matcher<CharT>(line_reader.line_delimiter);
  raw_rules.whitespace = *line_reader.whitespace;
  raw_rules.finish();
  raw_rules.mark_stop_characters(line_reader.delimiters.stop_chars, starts_line_ending);
  out.reads_empty_lines = line_reader.reads_empty_lines;

  switch (opts.parser_type()) {
    case ParserType::Delimited:
    case ParserType::Tabular: {
      const textio::parser::DelimitedRecordReader reader(opts);
      data_rules.field_delimiters = string_matcher<CharT>(reader.field_delimiter);
      data_rules.line_endings = string_matcher<CharT>(reader.line_delimiter);
      data_rules.quotes = text.quote != '\0';
      data_rules.quote = static_cast<CharT>(static_cast<unsigned char>(text.quote));
      data_rules.backslash_escape = text.escape == escape_style::backslash;
      data_rules.stray_quote_as_text = text.quote_detected;
      data_rules.trim = true;
      // The places of delimiters are needed only to report a fault.
      data_rules.record_delimiters = opts.leading_delim_rule() == LeadingDelimiterRule::Error ||
                                     opts.trailing_delim_rule() == TrailingDelimiterRule::Error ||
                                     opts.consecutive_delim_rule() == ConsecutiveDelimitersRule::Error;
      add_comments_and_finish(opts, data_rules);
      data_rules.mark_stop_characters(reader.quoted_delimiters.delimiters.stop_chars,
                                      starts_field_delimiter | starts_line_ending);
      break;
    }
    case ParserType::FixedWidth: {
      const textio::parser::FixedWidthRecordReader reader(opts);
      data_rules.line_endings = string_matcher<CharT>(reader.line_delimiter);
      add_comments_and_finish(opts, data_rules);
      data_rules.mark_stop_characters(reader.stop_chars, starts_line_ending);
      out.widths = reader.field_widths;
      break;
    }
    case ParserType::Line:
      data_rules.line_endings = raw_rules.line_endings;
      data_rules.whitespace = raw_rules.whitespace;
      data_rules.finish();
      data_rules.mark_stop_characters(line_reader.delimiters.stop_chars, starts_line_ending);
      break;
  }
  return out;
}

template reader_scan_rules<char> scan_rules_for<char>(const textio::parser::options&, const text_format&);
template reader_scan_rules<char16_t> scan_rules_for<char16_t>(const textio::parser::options&, const text_format&);

}  // namespace textio::import
