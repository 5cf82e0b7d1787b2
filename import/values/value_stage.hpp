// Values from the cells of a record: which fields are missing (empty, the
// TreatAsMissing placeholders, markers that detection found), the
// MissingRule and ImportErrorRule, and the conversion of text into numbers
// (Matrix) or typed values (Table with types).
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "import/values/number_conversion.hpp"
#include "import/shape/omitted_variables.hpp"
#include "import/output.hpp"
#include "import/read_events.hpp"
#include "import/shape/record_cells.hpp"
#include "import/scan/record_scanner.hpp"
#include "import/values/value_conversion.hpp"
#include "parser/options.hpp"

namespace textio::import {

// What the values of a read ask of the reader.
struct value_needs {
  bool converts = false;  // values are converted from text: Matrix, or Table with types
  bool strict = false;    // a value that does not convert may fail the reading
  // A record's values follow from its fields as plain_text_values gives
  // them (text, or missing for an empty unquoted field) through
  // convert_in_place alone: no placeholders to compare, and a missing value
  // or one that does not convert stays in its record.
  bool in_place = false;
};

template <class CharT>
class value_stage {
 public:
  using view = std::basic_string_view<CharT>;
  using string = std::basic_string<CharT>;

  // check: the rules only, no values; parts: the values are handed to the
  // sink whenever they hold a part, and the rest kept; whole: all values kept.
  enum class use { check, parts, whole };
  static constexpr std::size_t record_part_size = 4096;

  // `opts`: the reader's effective options; `types` count for a Table only.
  // OmitVar rules mark their variables in `omitted`.
  value_stage(const textio::parser::options& opts, const scan_rules<CharT>& data_rules,
              std::span<const variable_typing> types, omitted_variables<CharT>& omitted);

  // What values under `opts` (the reader's effective options) and `types` ask for.
  static value_needs needs(const textio::parser::options& opts, std::span<const variable_typing> types);

  // Turns the values of a record at `line` as plain_text_values gives them
  // (text, or missing for an empty unquoted field) into what make gives for
  // such fields, under the rules value_needs::in_place allows.
  void convert_in_place(std::span<output_value> values, std::uint64_t line);
  // The type of each variable by position (Table only).
  std::span<const variable_typing> typing() const noexcept { return typing_; }

  // The values of a record's cells followed by `padding` missing ones, under
  // the missing and import-error rules; false when a rule drops the record.
  // The missing values of the padding are not among values().
  bool make(const record_cells<CharT>& record, view window, std::size_t padding, use how, record_sink& sink);

  const std::vector<output_value>& values() const noexcept { return values_; }
  // By variable: the values so far that did not convert to its type.
  const std::vector<unconverted_values>& unconverted() const noexcept { return unconverted_; }

 private:
  bool is_missing(const record_cells<CharT>& record, const raw_field& c, view t) const;
  bool is_typed_marker(std::size_t i, view text) const;
  const conversion_settings& conversion_of(std::size_t i) const {
    return conversions_[static_cast<std::size_t>(typing_[i].dates)];
  }
  // The canonical text's home for variable i: its own for datetime and
  // duration variables, whose values point into it until the record is
  // handed on; one shared string for the others, which leave it unused.
  std::string& canonical_of(std::size_t i) { return i < canonical_.size() ? canonical_[i] : unused_canonical_; }
  void count_unconverted(std::size_t i, std::uint64_t line);
  template <class ErrorTag, class Where>
  bool keep_row_under(textio::enums::BadDataRule rule, std::size_t i, Where where);
  template <class Where>
  bool field_value(std::size_t i, view text, bool missing, output_value& v, use how, Where where);

  textio::enums::BadDataRule missing_rule_;
  textio::enums::BadDataRule import_error_rule_;
  bool matrix_ = false;
  const scan_rules<CharT>& data_rules_;
  omitted_variables<CharT>& omitted_;
  number_format format_;
  std::vector<string> placeholders_;
  // The caller's types, which outlive the reading: a wide table holds them
  // once, not once a reader.
  std::span<const variable_typing> typing_;
  // By date order (not by variable: a wide table would hold a copy of the
  // number format for each of its variables).
  conversion_settings conversions_[2];
  // Per variable up to the last datetime or duration one.
  std::vector<std::string> canonical_;
  std::string unused_canonical_;
  // By variable, so that a variable's markers are found by binary search.
  std::vector<std::pair<std::size_t, string>> typed_markers_;
  value_needs needs_;
  std::vector<output_value> values_;
  std::vector<unconverted_values> unconverted_;
};

}  // namespace textio::import
