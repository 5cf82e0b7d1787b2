// arrow_table_sink: records into batches of typed columns, and the batches
// into one table whose columns agree in type.
#include <algorithm>
#include <optional>
#include <utility>

#include "import/input/utf8_text.hpp"
#include "import/table/arrow_column_values.hpp"
#include "import/table/arrow_table.hpp"

namespace textio::import {
namespace {

// A datetime's canonical text ends in Z or a UTC offset when the value had one.
bool has_utc_offset(std::string_view iso) {
  const std::size_t t = iso.find('T');
  if (t == std::string_view::npos) return false;
  return iso.back() == 'Z' || iso.find_first_of("+-", t) != std::string_view::npos;
}

// The one type a column takes in every batch: the type its batches agree
// on, else text.
arrow_type common_type(const std::vector<arrow_batch>& batches, std::size_t column, arrow_type declared) {
  std::optional<arrow_type> seen;
  bool large = false;
  bool mixed = false;
  for (const arrow_batch& b : batches) {
    if (column >= b.columns.size() || b.columns[column].type == arrow_type::null) continue;
    const arrow_type t = b.columns[column].type;
    large = large || t == arrow_type::large_utf8;
    if (seen && *seen != t) mixed = true;
    if (!seen) seen = t;
  }
  if (large) return arrow_type::large_utf8;
  if (mixed) return arrow_type::utf8;
  if (seen) return *seen;
  return declared == arrow_type::null ? arrow_type::utf8 : declared;
}

// The bytes a batch's buffers hold.
std::size_t batch_bytes(const arrow_batch& batch) {
  std::size_t n = 0;
  for (const arrow_column& c : batch.columns) n += c.validity.size() + c.values.size() + c.text.size();
  return n;
}

}  // namespace

void arrow_table_sink::header(const table_header& header) {
  const auto text = utf8_of_text;
  const std::size_t count = std::max({header.names.size(), header.units.size(), header.descriptions.size()});
  table_.fields.resize(std::max(table_.fields.size(), count));
  for (std::size_t i = 0; i < header.names.size(); ++i) table_.fields[i].name = text(header.names[i]);
  for (std::size_t i = 0; i < header.units.size(); ++i) table_.fields[i].unit = text(header.units[i]);
  for (std::size_t i = 0; i < header.descriptions.size(); ++i)
    table_.fields[i].description = text(header.descriptions[i]);
  declared_.clear();
  for (const type_run& run : header.types) {
    const auto type = type_from_name(run.name);
    declared_.insert(declared_.end(), run.count, type ? arrow_type_of(*type) : arrow_type::utf8);
  }
}

arrow_batch& arrow_table_sink::open_batch() {
  if (!open_) open_.emplace();
  return *open_;
}

void arrow_table_sink::close_batch() {
  if (open_ && open_->rows > 0) hand_on(std::move(*open_));
  open_.reset();
}

void arrow_table_sink::hand_on(arrow_batch&& batch) {
  if (!on_batch_) {
    table_.batches.push_back(std::move(batch));
    return;
  }
  // A streamed batch stands alone: its columns of only missing values take
  // their declared type (else text).
  for (std::size_t i = 0; i < batch.columns.size(); ++i) {
    if (batch.columns[i].type != arrow_type::null) continue;
    const arrow_type declared = i < declared_.size() ? declared_[i] : arrow_type::null;
    become(batch.columns[i], declared == arrow_type::null ? arrow_type::utf8 : declared, false);
  }
  if (table_.fields.size() < batch.columns.size()) table_.fields.resize(batch.columns.size());
  for (std::size_t i = 0; i < batch.columns.size() && i < utc_.size(); ++i) {
    if (utc_[i] && batch.columns[i].type == arrow_type::timestamp) table_.fields[i].timezone = "UTC";
  }
  on_batch_(std::move(batch), table_.fields);
}

void arrow_table_sink::put_values(std::span<const output_value> values, std::size_t width) {
  arrow_batch& batch = open_batch();
  if (utc_.size() < width) utc_.resize(width, false);
  while (batch.columns.size() < width) {
    const std::size_t i = batch.columns.size();
    batch.columns.push_back(new_column(i < declared_.size() ? declared_[i] : arrow_type::null, batch.rows, false));
  }
  for (std::size_t k = 0; k < values.size(); ++k) {
    const std::size_t i = part_at_ + k;
    arrow_column& c = batch.columns[i];
    const output_value& v = values[k];
    // Most values: a double for a float64 column, UTF-8 text for a text one.
    if (c.validity.size() == 0) [[likely]] {
      if (c.type == arrow_type::float64 && v.kind == value_kind::number) {
        c.values.push(v.number);
        ++c.length;
        continue;
      }
      if (c.type == arrow_type::utf8 && v.kind == value_kind::text && !v.utf16 &&
          c.text.size() + v.bytes.size() <= static_cast<std::size_t>(narrow_text_max)) {
        c.text.append(v.bytes.data(), v.bytes.size());
        c.values.push(static_cast<std::int32_t>(c.text.size()));
        ++c.length;
        continue;
      }
    }
    if (v.kind == value_kind::missing) {
      put_missing(c);
      continue;
    }
    if (c.type == arrow_type::null) {
      become(c, natural_type(v.kind), false);
    } else if (!fits(c.type, v.kind)) {
      become(c, arrow_type::utf8, utc_[i]);
    }
    if (v.kind == value_kind::datetime && !utc_[i] && has_utc_offset(v.bytes)) utc_[i] = true;
    put_value(c, v);
  }
  part_at_ += values.size();
}

void arrow_table_sink::record_part(std::span<const output_value> values) {
  put_values(values, part_at_ + values.size());
}

void arrow_table_sink::padded_record(std::span<const output_value> values, std::size_t missing) {
  put_values(values, part_at_ + values.size() + missing);
  arrow_batch& batch = *open_;
  for (std::size_t i = part_at_; i < batch.columns.size(); ++i) put_missing(batch.columns[i]);
  part_at_ = 0;
  const auto rows = static_cast<std::size_t>(++batch.rows);
  if (rows >= limits_.rows || (rows % 1024 == 0 && batch_bytes(batch) >= limits_.bytes)) close_batch();
}

std::unique_ptr<record_sink> arrow_table_sink::part_sink() {
  auto part = std::make_unique<arrow_table_sink>(limits_);
  part->declared_ = declared_;
  return part;
}

void arrow_table_sink::take_part(record_sink& part) {
  auto& from = static_cast<arrow_table_sink&>(part);
  close_batch();
  from.close_batch();
  if (utc_.size() < from.utc_.size()) utc_.resize(from.utc_.size(), false);
  for (std::size_t i = 0; i < from.utc_.size(); ++i) utc_[i] = utc_[i] || from.utc_[i];
  for (arrow_batch& b : from.table_.batches) hand_on(std::move(b));
  from.table_.batches.clear();
  from.utc_.clear();
}

arrow_table arrow_table_sink::take() {
  close_batch();
  std::size_t width = table_.fields.size();
  for (const arrow_batch& b : table_.batches) width = std::max(width, b.columns.size());
  table_.fields.resize(width);
  utc_.resize(width, false);
  for (std::size_t i = 0; i < width; ++i) {
    const arrow_type type = common_type(table_.batches, i, i < declared_.size() ? declared_[i] : arrow_type::null);
    for (arrow_batch& b : table_.batches) {
      if (b.columns.size() <= i) b.columns.push_back(new_column(arrow_type::null, b.rows, false));
      become(b.columns[i], type, utc_[i]);
    }
    if (type == arrow_type::timestamp && utc_[i]) table_.fields[i].timezone = "UTC";
  }
  declared_.clear();
  utc_.clear();
  return std::exchange(table_, {});
}

}  // namespace textio::import
