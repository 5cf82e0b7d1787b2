// Rows and columns of a read, chosen on the command line: --skip-rows and
// --rows keep a window of the records (the reader stops once it is full),
// --select keeps variables by name or position, in the order given.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "import/output.hpp"

namespace zvtool {

// Hands on records `skip` to `skip + rows` (all after `skip` when `rows` is
// none) and is satisfied after them, so that reading stops.
class row_window : public textio::import::record_sink {
 public:
  row_window(textio::import::record_sink& to, std::uint64_t skip, std::optional<std::uint64_t> rows)
      : to_(to), skip_(skip), rows_(rows) {}
  void header(const textio::import::table_header& header) override { to_.header(header); }
  void record(std::span<const textio::import::output_value> values) override { padded_record(values, 0); }
  void padded_record(std::span<const textio::import::output_value> values, std::size_t missing) override;
  bool takes_parts() const override { return to_.takes_parts(); }
  void record_part(std::span<const textio::import::output_value> values) override {
    if (inside()) to_.record_part(values);
  }
  bool satisfied() const override { return rows_ && seen_ >= skip_ + *rows_; }

 private:
  bool inside() const { return seen_ >= skip_ && !satisfied(); }

  textio::import::record_sink& to_;
  std::uint64_t skip_;
  std::optional<std::uint64_t> rows_;
  std::uint64_t seen_ = 0;
};

// Hands on the variables `wanted` names, in that order: names as in the
// header, or 1-based positions written as numbers. Throws usage_error at the
// header for a name the table does not have (naming those it has) or a
// position past its variables.
class column_choice : public textio::import::record_sink {
 public:
  column_choice(textio::import::record_sink& to, std::vector<std::string> wanted)
      : to_(to), wanted_(std::move(wanted)) {}
  void header(const textio::import::table_header& header) override;
  void record(std::span<const textio::import::output_value> values) override { padded_record(values, 0); }
  void padded_record(std::span<const textio::import::output_value> values, std::size_t missing) override;
  bool satisfied() const override { return to_.satisfied(); }

 private:
  textio::import::record_sink& to_;
  std::vector<std::string> wanted_;
  std::vector<std::size_t> columns_;  // 0-based, in output order
  std::vector<textio::import::output_value> chosen_;
};

// "a,b,3" as the list of names and positions it gives.
std::vector<std::string> selection_of(const std::string& text);

}  // namespace zvtool
