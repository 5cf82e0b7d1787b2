#include "import/values/value_stage.hpp"

#include <algorithm>
#include <limits>

#include "import/shape/header_lines.hpp"
#include "import/reader_errors.hpp"
#include "zvcore/ustring.hpp"

namespace textio::import {
namespace {

using textio::enums::BadDataRule;
using textio::enums::OutputBuilderType;
namespace reader_error = ZORVEK::textio::reader;

template <class CharT>
std::basic_string<CharT> encode(const ustring& text) {
  if constexpr (sizeof(CharT) == 1) {
    return foundation::core::unicode::to_utf8(text);
  } else {
    return text;
  }
}

// A UTF-8 text in the reader's units.
template <class CharT>
std::basic_string<CharT> from_utf8(const std::string& text) {
  if constexpr (sizeof(CharT) == 1) {
    return text;
  } else {
    return foundation::core::unicode::to_utf16(text);
  }
}

// The text of a plain text value in the reader's units.
template <class CharT>
std::basic_string_view<CharT> text_of_value(const output_value& v) {
  if constexpr (sizeof(CharT) == 1) {
    return v.bytes;
  } else {
    return v.units;
  }
}

// Whether a text has a UTF-8 form (no lone surrogate).
bool has_utf8_form(const ustring& text) {
  return foundation::core::unicode::to_utf16(foundation::core::unicode::to_utf8(text)) == text;
}

// The TreatAsMissing texts to compare: an empty text is missing anyway, and
// one without a UTF-8 form never matches UTF-8 text.
template <class CharT>
std::vector<std::basic_string<CharT>> placeholders_of(const textio::parser::options& opts) {
  std::vector<std::basic_string<CharT>> texts;
  for (const auto& p : opts.missing_placeholders()) {
    if (!p.empty() && (sizeof(CharT) == 2 || has_utf8_form(p))) texts.push_back(encode<CharT>(p));
  }
  return texts;
}

}  // namespace

template <class CharT>
value_needs value_stage<CharT>::needs(const textio::parser::options& opts, std::span<const variable_typing> types) {
  value_needs n;
  const bool typed = opts.output_type() == OutputBuilderType::Table && !types.empty();
  n.converts = opts.output_type() == OutputBuilderType::Matrix || typed;
  for (std::size_t i = 0; typed && i < types.size(); ++i) {
    n.strict =
        n.strict || (types[i].type != value_type::string && types[i].unconverted == unconverted_value::reading_error);
  }
  n.in_place = placeholders_of<CharT>(opts).empty() && opts.missing_rule() == BadDataRule::Fill &&
               (!n.converts || opts.import_error_rule() == BadDataRule::Fill) && !n.strict;
  return n;
}

template <class CharT>
value_stage<CharT>::value_stage(const textio::parser::options& opts, const scan_rules<CharT>& data_rules,
                                std::span<const variable_typing> types, omitted_variables<CharT>& omitted)
    : missing_rule_(opts.missing_rule()),
      import_error_rule_(opts.import_error_rule()),
      matrix_(opts.output_type() == OutputBuilderType::Matrix),
      data_rules_(data_rules),
      omitted_(omitted),
      format_(number_format_of(opts)) {
  if (opts.output_type() == OutputBuilderType::Table) typing_ = types;
  placeholders_ = placeholders_of<CharT>(opts);
  needs_ = needs(opts, types);
  for (const date_order order : {date_order::day_first, date_order::month_first}) {
    conversions_[static_cast<std::size_t>(order)] = conversion_settings{format_, order};
  }
  std::size_t timed = 0;  // variables up to the last datetime or duration one
  for (std::size_t i = 0; i < typing_.size(); ++i) {
    for (const std::string& m : typing_[i].missing_markers) typed_markers_.push_back({i, from_utf8<CharT>(m)});
    if (typing_[i].type == value_type::datetime || typing_[i].type == value_type::duration) timed = i + 1;
  }
  canonical_.resize(timed);
  if (!typing_.empty()) unconverted_.resize(typing_.size());
}

template <class CharT>
bool value_stage<CharT>::is_missing(const record_cells<CharT>& record, const raw_field& c, view t) const {
  if (record.known_missing(c)) return true;
  if (c.quoted) return false;
  if (t.empty()) return true;
  // Most fields: no placeholders to compare and nothing to trim.
  if (placeholders_.empty() &&
      (data_rules_.trim || ((data_rules_.classes(t.front()) | data_rules_.classes(t.back())) & is_whitespace) == 0)) {
    return false;
  }
  if (!data_rules_.trim) {
    while (!t.empty() && (data_rules_.classes(t.front()) & is_whitespace) != 0) t.remove_prefix(1);
    while (!t.empty() && (data_rules_.classes(t.back()) & is_whitespace) != 0) t.remove_suffix(1);
  }
  if (t.empty()) return true;
  for (const string& p : placeholders_) {
    if (t == p) return true;
  }
  return false;
}

// Whether a field that did not convert is a missing marker detected for its
// variable.
template <class CharT>
bool value_stage<CharT>::is_typed_marker(std::size_t i, view text) const {
  const auto first = std::lower_bound(typed_markers_.begin(), typed_markers_.end(), i,
                                      [](const auto& m, std::size_t v) { return m.first < v; });
  for (auto m = first; m != typed_markers_.end() && m->first == i; ++m) {
    if (text == m->second) return true;
  }
  return false;
}

template <class CharT>
void value_stage<CharT>::count_unconverted(std::size_t i, std::uint64_t line) {
  unconverted_values& u = unconverted_[i];
  if (u.count++ == 0) u.first_line = line;
}

// Applies a missing or import-error rule to field i: Fill keeps the field as
// it is, OmitVar marks its variable, Error fails at where(); false for
// OmitRow.
template <class CharT>
template <class ErrorTag, class Where>
bool value_stage<CharT>::keep_row_under(BadDataRule rule, std::size_t i, Where where) {
  switch (rule) {
    case BadDataRule::Fill:
      return true;
    case BadDataRule::OmitRow:
      return false;
    case BadDataRule::OmitVar:
      omitted_.mark(i);
      return true;
    case BadDataRule::Error: {
      const source_position p = where();
      throw_msg_id_exception(ErrorTag(p.line, p.column));
    }
  }
  return true;
}

// The value of field i (a fresh value in `v`) under the missing and
// import-error rules; false when a rule drops the record. `where` gives the
// field's place for an error and its line for the count of values that did
// not convert.
template <class CharT>
template <class Where>
bool value_stage<CharT>::field_value(std::size_t i, view text, bool missing, output_value& v, use how, Where where) {
  if (missing) return keep_row_under<reader_error::MissingValue>(missing_rule_, i, where);
  if (matrix_) {
    if (number_value(text, format_, v)) return true;
    v.kind = value_kind::number;
    v.number = std::numeric_limits<double>::quiet_NaN();
    return keep_row_under<reader_error::ImportError>(import_error_rule_, i, where);
  }
  if (i >= typing_.size() || typing_[i].type == value_type::string) {
    if (how != use::check) v = text_value(text);
    return true;
  }
  if (convert_value(text, typing_[i].type, conversion_of(i), v, canonical_of(i))) return true;
  v = output_value{};
  if (is_typed_marker(i, text)) return keep_row_under<reader_error::MissingValue>(missing_rule_, i, where);
  if (typing_[i].unconverted == unconverted_value::reading_error) {
    const source_position p = where();
    throw_msg_id_exception(reader_error::NotConverted(p.line, p.column, std::string(type_name(typing_[i].type))));
  }
  if (typing_[i].unconverted == unconverted_value::text) {
    // Kept as its text: a later value that the guessed type does not fit.
    if (how != use::check) count_unconverted(i, where().line);
    v = text_value(text);
    return true;
  }
  // (A first pass that only checks counts a value only where it drops the
  // record; the pass that keeps it counts it.)
  const bool keep = keep_row_under<reader_error::ImportError>(import_error_rule_, i, where);
  if (how != use::check || !keep) count_unconverted(i, where().line);
  return keep;
}

template <class CharT>
void value_stage<CharT>::convert_in_place(std::span<output_value> values, std::uint64_t line) {
  if (!needs_.converts) return;  // text stays text, missing stays missing
  // Under the rules value_needs::in_place asks for, no rule fails or drops a
  // record: the place of a field is never asked for, only its line.
  const auto where = [line] { return source_position{line, 1}; };
  for (std::size_t i = 0; i < values.size(); ++i) {
    output_value& v = values[i];
    const view text = text_of_value<CharT>(v);
    const bool missing = v.kind != value_kind::text;
    v = output_value{};
    field_value(i, text, missing, v, use::whole, where);
  }
}

template <class CharT>
bool value_stage<CharT>::make(const record_cells<CharT>& record, view w, std::size_t padding, use how,
                              record_sink& sink) {
  values_.clear();
  // Each value is built in its place in values_; a part is handed on once the
  // value after it is complete, so a rule that fails a field leaves the
  // output as it was.
  if (how != use::check) values_.reserve(std::min(record.cells.size(), record_part_size + 1));
  std::size_t i = 0;
  for (const raw_field& c : record.cells) {
    const view text = record.text_of(w, c);
    output_value checked;
    output_value& v = how == use::check ? checked : values_.emplace_back();
    if (!field_value(i, text, is_missing(record, c, text), v, how, [&] { return record.where(w, c); })) return false;
    ++i;
    if (how == use::parts && values_.size() > record_part_size) {
      sink.record_part(std::span<const output_value>(values_).first(record_part_size));
      values_.front() = values_.back();
      values_.resize(1);
    }
  }
  if (padding > 0) {
    const std::size_t cells = record.cells.size();
    if (missing_rule_ == BadDataRule::OmitVar) {
      omitted_.mark(cells, padding);
    } else if (!keep_row_under<reader_error::MissingValue>(missing_rule_, cells, [&] { return record.end(w); })) {
      return false;
    }
  }
  return true;
}

template class value_stage<char>;
template class value_stage<char16_t>;

}  // namespace textio::import
