#include "import/detect/detection.hpp"

#include <algorithm>
#include <cstdio>
#include <optional>

#include "import/detect/blanks.hpp"
#include "import/detect/cell_types.hpp"
#include "import/detect/dialect_scoring.hpp"
#include "import/detect/encoding.hpp"
#include "import/detect/fixed_width_columns.hpp"
#include "import/detect/sample_table.hpp"
#include "import/detect/sample_types.hpp"
#include "import/detect/table_layout.hpp"
#include "errors/msg_id_exception.hpp"
#include "zvcore/ustring.hpp"

namespace textio::import {
namespace {

using textio::enums::ParserType;

// Lines and records the layout looks at: a bound on the work for any sample.
constexpr std::size_t max_lines = 1000;
constexpr std::size_t max_records = 600;

std::string printable(char c) {
  if (c == '\t') return "tab";
  if (c == ' ') return "blank";
  return std::string("'") + c + "'";
}

// Comment markers at line starts: the most used of #, % and //, when such
// lines are there but are not most of the sample.
std::string find_comment_marker(const std::vector<sample_line>& lines) {
  static constexpr std::string_view markers[] = {"#", "%", "//"};
  std::size_t non_blank = 0;
  std::size_t best = 0;
  std::string marker;
  std::size_t counts[3] = {};
  for (const sample_line& l : lines) {
    const std::string_view t = trim_leading_blanks(l.text);
    if (t.empty()) continue;
    ++non_blank;
    for (std::size_t m = 0; m < 3; ++m) counts[m] += t.substr(0, markers[m].size()) == markers[m];
  }
  for (std::size_t m = 0; m < 3; ++m) {
    if (counts[m] > best) {
      best = counts[m];
      marker = markers[m];
    }
  }
  if (best == 0 || best * 10 >= non_blank * 9) return {};
  return marker;
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

// A block of "key: value" lines between "---" lines (YAML front matter)
// ahead of the table.
struct front_matter {
  std::size_t text_end = 0;       // offset of the first line after it
  std::optional<char> delimiter;  // from its sep: or delimiter: key
};

// Finds the front matter and blanks its lines, so that the rest of
// detection takes them as blank lines above the table.
front_matter take_front_matter(std::vector<sample_line>& lines) {
  front_matter out;
  if (lines.empty() || trim_blanks(lines[0].text) != "---") return out;
  std::size_t end = 0;
  for (std::size_t i = 1; i < lines.size() && i < 200 && end == 0; ++i) {
    const std::string_view t = trim_blanks(lines[i].text);
    if (t == "---" || t == "...") end = i + 1;
  }
  if (end == 0) return out;
  for (std::size_t i = 1; i + 1 < end; ++i) {
    const std::string_view t = trim_blanks(lines[i].text);
    for (const std::string_view key : {"sep:", "delimiter:"}) {
      if (!t.starts_with(key)) continue;
      std::string_view v = trim_blanks(t.substr(key.size()));
      if (v.size() >= 2 && (v.front() == '"' || v.front() == '\'') && v.back() == v.front())
        v = v.substr(1, v.size() - 2);
      if (v == "\\t" || v == "\t" || v == "tab") {
        out.delimiter = '\t';
      } else if (v.size() == 1 && v[0] != ' ') {
        out.delimiter = v[0];
      }
    }
  }
  out.text_end = end < lines.size() ? lines[end].offset : lines.back().offset + lines.back().text.size();
  for (std::size_t i = 0; i < end; ++i) lines[i].text = lines[i].text.substr(0, 0);
  return out;
}

struct chosen_layout {
  dialect d;
  bool fixed_width = false;
  bool single_column = false;
  std::vector<std::uint64_t> widths;
  sample_table table;
  double margin = 1;  // how far the best candidate is ahead of the next, 0 to 1
};

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
  std::vector<char> quotes = {'"', '\0', '\''};
  if (choices.quote) quotes = {*choices.quote};
  std::vector<escape_style> escapes = {escape_style::doubled, escape_style::backslash};
  if (choices.escape) escapes = {*choices.escape};
  chosen_layout chosen;
  std::vector<char> delimiters;
  bool with_blanks = false;
  if (choose_delimiter && front.delimiter) {
    delimiters = {*front.delimiter};
  } else if (choose_delimiter) {
    delimiters = candidate_delimiters(lines, marker);
    with_blanks = choose_parser;
  } else if (opts.parser_type() == ParserType::Tabular) {
    with_blanks = true;
  } else {
    for (const ustring& d : opts.delimiter()) {
      if (d.size() == 1 && d[0] < 0x80) delimiters.push_back(static_cast<char>(d[0]));
    }
    if (delimiters.empty()) delimiters.push_back(opts.delimiter().empty() ? '\n' : ',');
  }
  std::vector<dialect_score> ranked = rank_dialects(lines, examined, marker, delimiters, with_blanks, quotes, escapes);
  chosen.d = ranked.empty() ? dialect{} : ranked.front().d;
  if (ranked.size() > 1 && ranked[0].score > 0) {
    // The nearest rival with another delimiter.
    for (std::size_t i = 1; i < ranked.size(); ++i) {
      if (ranked[i].d.delimiter != ranked[0].d.delimiter || ranked[i].d.blanks != ranked[0].d.blanks) {
        chosen.margin = std::clamp((ranked[0].score - ranked[i].score) / ranked[0].score, 0.0, 1.0);
        break;
      }
    }
  }
  const dialect_score best = ranked.empty() ? dialect_score{} : ranked.front();
  chosen.table = split_records(lines, chosen.d, marker, max_records);
  // A rule line under the names gives the columns, or at least where the
  // rows start.
  const rule_line rule = choose_parser ? find_rule_line(lines, marker) : rule_line{};
  const bool ruled_columns = rule.starts.size() >= 2;
  if (choose_parser && (best.dominant_fields <= 1 || best.d.blanks || best.consistency < 0.8 || ruled_columns)) {
    // Blank-aligned columns: separate by runs of blanks when every row then
    // has the same number of fields, else cut at fixed positions.
    const dialect blanks{' ', true, '"', escape_style::doubled};
    const dialect_score by_blanks = score_dialect(lines, blanks, marker);
    sample_table blank_table = split_records(lines, blanks, marker, max_records);
    const table_layout blank_layout = analyse_layout(blank_table, {});
    // Columns shared by the body as runs of blanks see it, else by all lines
    // (runs of blanks may have found no body), else past a preamble.
    fixed_columns columns;
    for (const std::size_t from : {static_cast<std::size_t>(rule.line > 0 ? rule.line : blank_layout.header_lines),
                                   std::size_t{0}, lines.size() / 4, lines.size() / 2}) {
      columns = fixed_width_starts(lines, from, marker);
      if (columns.starts.size() >= 2) break;
    }
    if (ruled_columns) columns.starts = rule.starts;
    const std::vector<std::size_t>& starts = columns.starts;
    bool use_fixed = false;
    if (starts.size() >= 2) {
      sample_table fixed = cut_fixed_width(lines, starts, marker, max_records);
      const table_layout fixed_layout = analyse_layout(fixed, {});
      // Fixed positions win when runs of blanks do not give every row the
      // same fields, or when they cut more fields than the columns hold and
      // the columns stand at least two blanks apart (words inside a field
      // are one blank apart).
      // (Runs of blanks that leave a body of one or two rows, or of less
      // than half the rows the columns cut, found no table.)
      const bool blanks_regular =
          blank_layout.body_fit >= 0.95 &&
          (blank_layout.body_rows >= 3 || blank_layout.body_rows + 1 >= fixed_layout.body_rows) &&
          blank_layout.body_rows * 2 >= fixed_layout.body_rows;
      const bool blanks_split_fields = by_blanks.dominant_fields > starts.size() && columns.narrowest_gap >= 2;
      // Or when most rows have as many fields as the columns and only the
      // last column holds words apart by blanks.
      const bool blanks_split_last =
          by_blanks.dominant_fields == starts.size() && by_blanks.consistency < 1 && words_only_in_last_column(fixed);
      use_fixed = fixed_layout.body_rows >= 2 && fixed_layout.body_fit >= 0.95 &&
                  (!blanks_regular || blanks_split_fields || blanks_split_last || ruled_columns);
      if (use_fixed) {
        chosen.fixed_width = true;
        chosen.widths = widths_from_starts(starts, lines);
        chosen.table = std::move(fixed);
      }
    }
    if (!use_fixed && best.dominant_fields <= 1 && by_blanks.dominant_fields <= 1) chosen.single_column = true;
    // Tabs that line columns up (one tab or two, by the width of the text
    // before them) cut an irregular table, runs of blanks a regular one.
    if (!use_fixed && !best.d.blanks && best.d.delimiter == '\t' && best.consistency < 0.5 &&
        by_blanks.dominant_fields >= 2 && by_blanks.consistency >= 2 * best.consistency) {
      chosen.d = blanks;
      chosen.table = std::move(blank_table);
    }
  }
  if (parser_given && opts.parser_type() == ParserType::FixedWidth) {
    // Fixed width given without widths: the columns the lines share.
    chosen.fixed_width = true;
    chosen.widths = opts.field_widths();
    std::vector<std::size_t> starts;
    if (open("VariableWidths")) {
      starts = fixed_width_starts(lines, 0, marker).starts;
      chosen.widths = widths_from_starts(starts, lines);
      opts.field_widths(chosen.widths);
      rep.filled.push_back({"VariableWidths", "the lines share blank columns at these positions"});
    } else {
      std::uint64_t at = 0;
      for (const std::uint64_t w : chosen.widths) {
        starts.push_back(static_cast<std::size_t>(at));
        at += w;
      }
    }
    chosen.table = cut_fixed_width(lines, starts, marker, max_records);
  }
  if (!chosen.fixed_width && !chosen.single_column && choose_delimiter && best.dominant_fields <= 1) {
    chosen.single_column = true;
  }

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
  if (chosen.fixed_width || chosen.d.blanks) follow_rule_line(layout, chosen.table, rule);

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
