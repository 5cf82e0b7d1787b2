#include "import/detect/layout_choice.hpp"

#include <algorithm>
#include <utility>

#include "import/detect/dialect_scoring.hpp"
#include "import/detect/table_layout.hpp"

namespace textio::import {
namespace {

using textio::enums::ParserType;

// Records the layout looks at: a bound on the work for any sample.
constexpr std::size_t max_records = 600;

}  // namespace

chosen_layout choose_layout(const std::vector<sample_line>& lines, std::string_view examined, const std::string& marker,
                            const user_choices& choices, const front_matter& front, bool parser_given,
                            bool choose_parser, bool choose_delimiter, textio::parser::options& opts,
                            detection_report& rep) {
  auto open = [&](const char* key) { return choices.keys.count(key) == 0; };
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
  chosen.rule = rule;
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
  return chosen;
}

}  // namespace textio::import
