// Record shaping: how the scanned fields of a data record become its cells.
// The delimiter rules (LeadingDelimitersRule, TrailingDelimitersRule,
// ConsecutiveDelimitersRule) and the EmptyLineRule apply to delimited
// records, PartialFieldRule to a fixed-width record cut by its widths, and
// ExtraColumnsRule to fields beyond the variable count, which it adds,
// drops or wraps into the next record. Fields a record lacks are a count of
// missing values, not cells.
#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "import/shape/delimiter_rules.hpp"
#include "import/shape/omitted_variables.hpp"
#include "import/shape/record_cells.hpp"
#include "import/scan/record_scanner.hpp"
#include "parser/options.hpp"

namespace textio::import {

// What an empty record (no units but whitespace, no quote) gives.
enum class empty_record {
  skip,       // nothing
  empty_row,  // a row of missing values (EmptyLineRule Read)
  as_record,  // a record like any other (the line parser when it reads empty lines)
};

// The extra-columns rule on the count of a record's fields: how many of its
// `fields` stay in the record under `variables`, which it sets when unknown
// and raises under AddVars. Ignore, Wrap and Error keep `variables` fields;
// what Wrap and Error do with the rest is the shaper's.
inline std::size_t fields_kept(textio::enums::ExtraColumnsRule rule, std::size_t fields,
                               std::optional<std::size_t>& variables) {
  if (!variables) variables = fields;
  if (fields <= *variables) return fields;
  if (rule == textio::enums::ExtraColumnsRule::AddVars) variables = fields;
  return *variables;
}

// The most fields a record may have without changing the variable count or
// being wrapped or failed: any under Ignore, else `variables`.
inline std::size_t most_fields_unchanged(textio::enums::ExtraColumnsRule rule, std::size_t variables) {
  return rule == textio::enums::ExtraColumnsRule::Ignore ? std::numeric_limits<std::size_t>::max() : variables;
}

template <class CharT>
class record_shaper {
 public:
  using view = std::basic_string_view<CharT>;

  // `opts`: the reader's effective options; `widths`: the fixed-width field
  // widths; `reads_empty_lines`: whether the line parser reads empty lines.
  // The cells refer to `scanned`, the record the scanner fills; PartialFieldRule
  // OmitVar marks its variable in `omitted`.
  record_shaper(const textio::parser::options& opts, std::vector<std::uint64_t> widths, bool reads_empty_lines,
                const scanned_record<CharT>& scanned, omitted_variables<CharT>& omitted);

  // The cells of the record being shaped.
  const record_cells<CharT>& cells() const noexcept { return cells_; }

  // What an empty scanned record gives; fails under EmptyLineRule Error.
  empty_record on_empty(const scanned_record<CharT>& rec) const;

  // Leaves in rec.fields the fields of a delimited record that its delimiter
  // rules keep, and gives their number; fails on a delimiter the rules forbid.
  std::size_t keep_delimited_fields(scanned_record<CharT>& rec, view window) const;

  // Makes the cells of scanned record `rec` by the parser's rules, taking its
  // fields; false when the record gives no row (yet).
  bool take_cells(scanned_record<CharT>& rec, view window);

  // Starts a record without fields of its own (an empty row).
  void start_empty() { cells_.clear(); }

  // Puts the wrapped extra fields of the previous record first and applies
  // the extra-columns rule under `variables`, which it sets when unknown and
  // raises under AddVars; gives the number of fields the record lacks.
  std::size_t shape(view window, std::optional<std::size_t>& variables);

  // After a data record: text cut off a fixed-width record by the
  // extra-columns rule Wrap waits for the next line.
  void end_record() {
    if (!next_pending_.empty()) pending_units_ = std::exchange(next_pending_, {});
  }
  // A names, units or descriptions line: text waiting from earlier lines is
  // dropped.
  void drop_waiting_units() {
    pending_units_.clear();
    next_pending_.clear();
  }

  // At the end of the input: fixed-width text still waiting for a line
  // (PartialFieldRule and ExtraColumnsRule Wrap) and wrapped fields still
  // waiting for a record.
  bool has_waiting_units() const noexcept { return !pending_units_.empty(); }
  bool has_waiting_fields() const noexcept { return !carry_.empty(); }
  // Cuts the waiting units as the last record; false when it gives no row.
  bool cut_waiting_units();
  // Starts a record of waiting fields alone.
  void start_waiting_fields() {
    cells_.clear();
    cells_.in_window = false;
  }

 private:
  // A field kept beyond its record (wrapped extra columns).
  struct owned_cell {
    std::basic_string<CharT> content;
    bool quoted = false;
    source_position where;
  };

  bool fixed_width_cells(std::u16string_view line_text, std::uint64_t line, bool final);

  textio::enums::ParserType parser_;
  textio::enums::EmptyLineRule empty_line_rule_;
  textio::enums::ExtraColumnsRule extra_columns_rule_;
  textio::enums::PartialFieldRule partial_field_rule_;
  bool reads_empty_lines_ = false;
  std::u16string whitespace_;
  delimiter_rule_set delimiter_rules_;
  std::vector<std::uint64_t> widths_;
  omitted_variables<CharT>& omitted_;

  record_cells<CharT> cells_;
  std::vector<owned_cell> carry_;
  std::vector<owned_cell> current_carry_;
  std::u16string pending_units_;
  std::u16string next_pending_;
  std::u16string fixed_text_;
  std::u16string waiting_;  // the text of the last record, cut from waiting units
};

}  // namespace textio::import
