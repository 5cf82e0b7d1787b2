#include "import/detect/detection.hpp"

#include <algorithm>
#include <cstdio>
#include <optional>

#include "import/detect/cell_types.hpp"
#include "import/detect/encoding.hpp"
#include "import/detect/fixed_width_columns.hpp"
#include "import/detect/layout_choice.hpp"
#include "import/detect/sample_preamble.hpp"
#include "import/detect/sample_table.hpp"
#include "import/detect/sample_types.hpp"
#include "import/detect/table_layout.hpp"
#include "errors/msg_id_exception.hpp"
#include "zvcore/ustring.hpp"

namespace textio::import {
namespace {

using textio::enums::ParserType;

// Lines the layout looks at: a bound on the work for any sample.
constexpr std::size_t max_lines = 1000;

std::string printable(char c) {
  if (c == '\t') return "tab";
  if (c == ' ') return "blank";
  return std::string("'") + c + "'";
}

// Share of characters that are control characters other than tab, CR, LF, FF.
double control_share(std::string_view text) {
  if (text.empty()) return 0;
  std::size_t control = 0;
  for (const char c : text) {
    const auto b = static_cast<unsigned char>(c);
    control += b < 0x20 && b != '\t' && b != '\n' && b != '\r' && b != '\f';
  }
  return static_cast<double>(control) / static_cast<double>(text.size());
}

}  // namespace

detection_result detect(std::string_view raw_sample, bool whole_file, const textio::parser::options& given,
                        const user_choices& choices) {
  detection_result result{given, {}, {}};
  textio::parser::options& opts = result.options;
  text_format& fmt = result.format;
  detection_report& rep = result.report;
  auto open = [&](const char* key) { return choices.keys.count(key) == 0; };

  // Encoding.
  double encoding_confidence = 1;
  std::string text;
  if (choices.encoding) {
    fmt.encoding = *choices.encoding;
    text = decode_sample(raw_sample, fmt.encoding, whole_file);
  } else {
    const encoding_guess g = detect_encoding(raw_sample);
    rep.not_text_at = first_binary_byte(raw_sample, g.name);
    fmt.encoding = g.name;
    encoding_confidence = g.confidence;
    try {
      text = decode_sample(raw_sample, g.name, whole_file);
      rep.filled.push_back({"Encoding", g.reason});
    } catch (const foundation::core::except::IMsgIDException&) {
      // The guess does not fit every byte: Latin-1 does.
      fmt.encoding = "ISO-8859-1";
      encoding_confidence = 0.2;
      text = decode_sample(raw_sample, fmt.encoding, whole_file);
      rep.filled.push_back({"Encoding", "no encoding fits every byte; read as Latin-1"});
    }
  }
  rep.encoding = fmt.encoding;
  if (!whole_file) {
    // The sample ends at a line end; anything after the last one is cut off.
    const std::size_t last = text.find_last_of("\r\n");
    if (last != std::string::npos) text.resize(last + 1);
  }
  std::vector<sample_line> lines = split_lines(text, max_lines);
  const front_matter front = take_front_matter(lines);
  // The part of the sample that is looked at.
  const std::string_view examined =
      lines.empty() ? std::string_view()
                    : std::string_view(text).substr(front.text_end,
                                                    lines.back().offset + lines.back().text.size() - front.text_end);
  const bool parser_given = !open("ParserType");
  // The reader is chosen when nobody gave it (and the front matter does not
  // name the delimiter); the delimiter also when the delimited reader was
  // given without one.
  const bool choose_parser = opts.detecting_delimiter() && !parser_given && !front.delimiter;
  const bool choose_delimiter =
      opts.detecting_delimiter() && (!parser_given || opts.parser_type() == ParserType::Delimited);

  // Comment marker.
  std::string marker;
  if (!opts.comment_style().empty()) {
    marker = foundation::core::unicode::to_utf8(opts.comment_style().front());
  } else if (open("CommentStyle")) {
    marker = find_comment_marker(lines);
    if (!marker.empty()) {
      opts.comment_style(std::vector<ustring>{foundation::core::unicode::to_utf16(marker)});
      rep.filled.push_back({"CommentStyle", "lines starting with " + marker + " are not like the table"});
    }
  }

  // Dialect.
  chosen_layout chosen =
      choose_layout(lines, examined, marker, choices, front, parser_given, choose_parser, choose_delimiter, opts, rep);

  // Numbers, then the layout read with them.
  number_separators numbers;
  if (!chosen.fixed_width) numbers = guess_number_format(chosen.table, chosen.d);
  if (!open("DecimalSeparator")) numbers.decimal = static_cast<char>(opts.decimal_separator());
  if (!open("ThousandsSeparator")) {
    numbers.thousands = opts.thousands_separator().empty() ? '\0' : static_cast<char>(opts.thousands_separator()[0]);
  }
  // Lines beyond those looked at: the table's last record may be cut there.
  if (!whole_file || text.find_first_not_of("\r\n", examined.size()) != std::string::npos) chosen.table.cut = true;
  table_layout layout = analyse_layout(chosen.table, numbers);
  if (chosen.fixed_width || chosen.d.blanks) follow_rule_line(layout, chosen.table, chosen.rule);

  // Fill in what was left open.
  if (choose_delimiter) {
    if (chosen.fixed_width) {
      opts.parser_type(ParserType::FixedWidth);
      if (open("VariableWidths")) opts.field_widths(chosen.widths);
      opts.delimiter(std::vector<ustring>{});
      rep.filled.push_back({"ParserType", "columns line up at fixed positions with blanks between them"});
    } else if (chosen.single_column) {
      opts.delimiter(std::vector<ustring>{});
      rep.filled.push_back({"Delimiter", "no candidate splits the lines into a regular table: one column"});
    } else if (chosen.d.blanks) {
      opts.parser_type(ParserType::Tabular);
      opts.delimiter(std::vector<ustring>{u" ", u"\t"});
      rep.filled.push_back({"ParserType", "runs of blanks separate the same number of fields on every row"});
    } else {
      opts.delimiter(
          std::vector<ustring>{ustring(1, static_cast<char16_t>(static_cast<unsigned char>(chosen.d.delimiter)))});
      rep.filled.push_back(
          {"Delimiter", printable(chosen.d.delimiter) +
                            (front.delimiter ? " is named by the front matter" : " gives the most regular table")});
    }
  }
  fmt.quote = choices.quote ? *choices.quote : chosen.fixed_width || chosen.single_column ? '"' : chosen.d.quote;
  fmt.escape = choices.escape ? *choices.escape : chosen.d.escape;
  fmt.quote_detected = !choices.quote.has_value();
  if (!choices.quote && (chosen.d.quote != '"' || examined.find('"') != std::string_view::npos)) {
    rep.filled.push_back({"Quote", chosen.d.quote == '\0' ? std::string("no quote character pairs up")
                                                          : printable(chosen.d.quote) + " quotes fields"});
  }
  if (!choices.escape && chosen.d.escape == escape_style::backslash) {
    rep.filled.push_back({"Escape", "quotes inside quoted fields follow a backslash"});
  }
  if (open("DecimalSeparator") && numbers.decimal != '.') {
    opts.decimal_separator(static_cast<char16_t>(numbers.decimal));
    rep.filled.push_back({"DecimalSeparator", "numbers are written with a decimal comma"});
  }
  if (open("ThousandsSeparator") && numbers.thousands != '\0') {
    opts.thousands_separator(ustring(1, static_cast<char16_t>(numbers.thousands)));
    rep.filled.push_back(
        {"ThousandsSeparator", "numbers group their digits by three with " + printable(numbers.thousands)});
  }
  if (opts.detecting_num_header_lines()) {
    opts.num_header_lines(layout.header_lines);
    rep.filled.push_back(
        {"NumHeaderLines", std::to_string(layout.header_lines) + " lines come before the first row of data"});
  }
  if (open("VariableNamesLine")) {
    opts.variable_names_line(layout.names_line);
    if (layout.names_line > 0) {
      rep.filled.push_back({"VariableNamesLine", layout.names_rows > 1
                                                     ? "the table's first rows hold names spread over several lines"
                                                     : "the table's first row differs in kind from the values below"});
      if (layout.names_rows > 1 || layout.names_filled) fmt.variable_names = layout.names;
    }
  }
  if (opts.detecting_num_variables()) {
    opts.num_variables(chosen.fixed_width ? chosen.widths.size() : chosen.single_column ? 1 : layout.num_variables);
    opts.detecting_num_variables(false);
    rep.filled.push_back({"NumVariables", "the body's rows have this many fields"});
  }
  if (open("VariableNamesLine") && layout.names_line == 0 && fmt.variable_names.empty() && opts.num_variables() > 0 &&
      opts.num_variables() <= max_kept_fields) {
    // No names row: the variables are named by their position.
    for (std::uint64_t j = 1; j <= opts.num_variables(); ++j) fmt.variable_names.push_back("Var" + std::to_string(j));
    rep.names_generated = true;
    rep.filled.push_back({"VariableNames", "no row names the variables: Var1, Var2, ..."});
  }
  if (layout.trailing_delimiter && open("TrailingDelimitersRule") && !chosen.fixed_width) {
    opts.trailing_delim_rule(textio::enums::TrailingDelimiterRule::Ignore);
    rep.filled.push_back({"TrailingDelimitersRule", "every row ends with a delimiter"});
  }
  if (layout.end_line) {
    fmt.table_end_line = layout.end_line;
    fmt.table_end_detected = true;
    rep.filled.push_back(
        {"TableEnd", "the rows after line " + std::to_string(*layout.end_line - 1) + " do not fit the table"});
  }

  // How sure: the encoding, how regular the body is, how far ahead the
  // dialect was, and how much table there was to go by.
  // Each lowering that matters is said in the report.
  double confidence = encoding_confidence;
  const auto lower = [&](double factor, std::string why) {
    confidence *= factor;
    if (factor < 0.95) rep.doubts.push_back(std::move(why));
  };
  if (encoding_confidence < 0.85) rep.doubts.emplace_back("the encoding is a guess");
  if (lines.empty()) {
    confidence = 0;
    rep.doubts.emplace_back("the sample is empty");
  } else {
    lower(0.4 + 0.6 * layout.body_fit, "not every row of the table has the same number of fields");
    lower(0.6 + 0.4 * std::min(1.0, chosen.margin * 4), "another delimiter cuts a table nearly as regular");
    if (layout.body_rows < 3) {
      lower(0.5, "the table has fewer than 3 rows of data");
    } else if (layout.body_rows < 10) {
      lower(0.7 + 0.03 * static_cast<double>(layout.body_rows),
            "the guess rests on " + std::to_string(layout.body_rows) + " rows of data");
    }
    if (layout.end_line) {
      lower(0.8, "the table seems to end at line " + std::to_string(*layout.end_line) +
                     ", and what follows is read only while it fits the table");
    }
    if (control_share(examined) > 0.01) lower(0.1, "the sample holds control characters");
    if (chosen.single_column) lower(0.7, "no delimiter splits the lines");
  }
  rep.quote = fmt.quote;
  rep.escape = fmt.escape;
  rep.variable_names = layout.names;
  if (!fmt.variable_names.empty()) rep.variable_names = fmt.variable_names;
  rep.table_end_line = fmt.table_end_line;
  rep.confidence = rep.not_text_at ? 0.0 : std::clamp(confidence, 0.0, 1.0);

  // The type of each variable from the table's body rows.
  std::vector<std::vector<std::string>> body;
  for (const sample_record& rec : chosen.table.records) {
    if (layout.end_line && rec.first_line >= *layout.end_line) break;
    if (rec.first_line > opts.num_header_lines() && !rec.blank && !rec.comment) body.push_back(rec.fields);
  }
  const std::uint64_t variables = opts.detecting_num_variables() ? layout.num_variables : opts.num_variables();
  add_variable_types(rep, body, static_cast<std::size_t>(std::min<std::uint64_t>(variables, max_kept_fields)), opts);
  return result;
}

}  // namespace textio::import
