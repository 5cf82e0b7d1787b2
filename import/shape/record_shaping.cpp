#include "import/shape/record_shaping.hpp"

#include <utility>

#include "import/shape/fixed_width_cutter.hpp"
#include "import/reader_errors.hpp"

namespace textio::import {
namespace {

using textio::enums::EmptyLineRule;
using textio::enums::ExtraColumnsRule;
using textio::enums::ParserType;
using textio::enums::PartialFieldRule;
namespace reader_error = ZORVEK::textio::reader;

template <class Tag>
[[noreturn]] void fail(source_position p) {
  throw_msg_id_exception(Tag(p.line, p.column));
}

}  // namespace

template <class CharT>
record_shaper<CharT>::record_shaper(const textio::parser::options& opts, std::vector<std::uint64_t> widths,
                                    bool reads_empty_lines, const scanned_record<CharT>& scanned,
                                    omitted_variables<CharT>& omitted)
    : parser_(opts.parser_type()),
      empty_line_rule_(opts.empty_line_rule()),
      extra_columns_rule_(opts.extra_columns_rule()),
      partial_field_rule_(opts.partial_field_rule()),
      reads_empty_lines_(reads_empty_lines),
      whitespace_(opts.whitespace()),
      delimiter_rules_{opts.leading_delim_rule(), opts.trailing_delim_rule(), opts.consecutive_delim_rule()},
      widths_(std::move(widths)),
      omitted_(omitted),
      cells_(scanned) {}

template <class CharT>
empty_record record_shaper<CharT>::on_empty(const scanned_record<CharT>& rec) const {
  if (rec.had_comment) return empty_record::skip;
  if (parser_ == ParserType::Line) return reads_empty_lines_ ? empty_record::as_record : empty_record::skip;
  switch (empty_line_rule_) {
    case EmptyLineRule::Skip:
      return empty_record::skip;
    case EmptyLineRule::Error:
      fail<reader_error::EmptyLine>({rec.position(rec.fields.front().start).line, 1});
    case EmptyLineRule::Read:
      return empty_record::empty_row;
  }
  return empty_record::as_record;
}

template <class CharT>
std::size_t record_shaper<CharT>::keep_delimited_fields(scanned_record<CharT>& rec, view window) const {
  if (keeps_every_field(delimiter_rules_)) return rec.fields.size();
  const delimiter_outcome outcome = apply_delimiter_rules(rec.fields, delimiter_rules_);
  if (outcome.fault != delimiter_fault::none) {
    const source_position p = resolve(window, rec.position(rec.delimiters[outcome.field]));
    if (outcome.fault == delimiter_fault::leading) fail<reader_error::LeadingDelimiter>(p);
    if (outcome.fault == delimiter_fault::trailing) fail<reader_error::TrailingDelimiter>(p);
    fail<reader_error::ConsecutiveDelimiters>(p);
  }
  return rec.fields.size();
}

template <class CharT>
bool record_shaper<CharT>::take_cells(scanned_record<CharT>& rec, view w) {
  cells_.clear();
  switch (parser_) {
    case ParserType::Delimited:
    case ParserType::Tabular:
      // The kept fields become the cells as they are, without a copy.
      keep_delimited_fields(rec, w);
      cells_.cells.swap(rec.fields);
      return true;
    case ParserType::Line:
      cells_.cells.push_back(rec.fields[0]);
      return true;
    case ParserType::FixedWidth:
      if constexpr (sizeof(CharT) == 2) {
        return fixed_width_cells(rec.text(w, rec.fields[0]), rec.position(rec.fields[0].start).line, false);
      }
      return false;
  }
  return false;
}

template <class CharT>
bool record_shaper<CharT>::cut_waiting_units() {
  // The cells point into the waiting text, kept until the next record.
  waiting_ = std::exchange(pending_units_, {});
  cells_.clear();
  cells_.in_window = false;
  return fixed_width_cells(waiting_, 0, true);
}

// Cuts a fixed-width record (the pending units of an earlier line first).
// `final`: no line follows, so a record to be wrapped is kept as it is.
template <class CharT>
bool record_shaper<CharT>::fixed_width_cells(std::u16string_view line_text, std::uint64_t line, bool final) {
  if constexpr (sizeof(CharT) == 2) {
    std::u16string_view record_text = line_text;
    if (!pending_units_.empty()) {
      fixed_text_ = pending_units_;
      fixed_text_ += line_text;
      pending_units_.clear();
      record_text = fixed_text_;
    }
    const fixed_width_cut cut = cut_fixed_width(record_text, widths_, whitespace_);
    const auto column = [&](std::size_t offset) { return source_position{line, offset + 1}; };
    std::optional<std::size_t> filled;
    if (cut.short_record) {
      switch (partial_field_rule_) {
        case PartialFieldRule::Keep:
          break;
        case PartialFieldRule::OmitRow:
          return false;
        case PartialFieldRule::OmitVar:
          omitted_.mark(cut.incomplete);
          break;
        case PartialFieldRule::Fill:
          filled = cut.incomplete;
          break;
        case PartialFieldRule::Wrap:
          if (final) break;
          pending_units_.assign(record_text);
          return false;
        case PartialFieldRule::Error:
          fail<reader_error::PartialField>(column(record_text.size()));
      }
    }
    for (std::size_t i = 0; i < cut.fields.size(); ++i) {
      cells_.cells.push_back(cells_.external_cell(record_text.substr(cut.fields[i].begin, cut.fields[i].length),
                                                  column(cut.fields[i].offset), filled && *filled == i));
    }
    if (cut.has_extra) {
      switch (extra_columns_rule_) {
        case ExtraColumnsRule::AddVars: {
          std::size_t b = cut.extra_begin;
          std::size_t e = record_text.size();
          const std::u16string_view ws = whitespace_;
          while (b < e && ws.find(record_text[b]) != std::u16string_view::npos) ++b;
          while (e > b && ws.find(record_text[e - 1]) != std::u16string_view::npos) --e;
          cells_.cells.push_back(cells_.external_cell(record_text.substr(b, e - b), column(cut.extra_begin)));
          break;
        }
        case ExtraColumnsRule::Ignore:
          break;
        case ExtraColumnsRule::Wrap:
          // With a record width of 0 no record could ever take them.
          if (cut.extra_begin > 0) next_pending_.assign(record_text.substr(cut.extra_begin));
          break;
        case ExtraColumnsRule::Error:
          fail<reader_error::ExtraColumns>(column(cut.extra_begin));
      }
    }
    return true;
  } else {
    (void)line_text;
    (void)line;
    (void) final;
    return false;
  }
}

template <class CharT>
std::size_t record_shaper<CharT>::shape(view w, std::optional<std::size_t>& variables) {
  field_list& cells = cells_.cells;
  // Wrapped extra fields of the previous record come first.
  current_carry_ = std::move(carry_);
  carry_.clear();
  for (auto o = current_carry_.rbegin(); o != current_carry_.rend(); ++o) {
    raw_field c = cells_.external_cell(o->content, o->where);
    c.quoted = o->quoted;
    cells.push_front(c);
  }
  const std::size_t kept = fields_kept(extra_columns_rule_, cells.size(), variables);
  if (kept < cells.size()) {
    switch (extra_columns_rule_) {
      case ExtraColumnsRule::AddVars:
      case ExtraColumnsRule::Ignore:
        break;
      case ExtraColumnsRule::Wrap:
        // With no variables no record could ever take them.
        for (std::size_t i = kept; kept > 0 && i < cells.size(); ++i) {
          carry_.push_back(
              {std::basic_string<CharT>(cells_.text_of(w, cells[i])), cells[i].quoted != 0, cells_.where(w, cells[i])});
        }
        break;
      case ExtraColumnsRule::Error:
        fail<reader_error::ExtraColumns>(cells_.where(w, cells[kept]));
    }
    cells.resize(kept);
  }
  return cells.size() < *variables ? *variables - cells.size() : 0;
}

template class record_shaper<char>;
template class record_shaper<char16_t>;

}  // namespace textio::import
