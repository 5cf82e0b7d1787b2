#include "tools/record_selection.hpp"

#include <algorithm>
#include <charconv>

#include "import/input/utf8_text.hpp"
#include "tools/usage_error.hpp"

namespace zvtool {
namespace {

using textio::import::output_value;

std::optional<std::size_t> position_of(const std::string& text) {
  std::size_t n = 0;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), n);
  if (ec != std::errc() || end != text.data() + text.size() || n == 0) return std::nullopt;
  return n - 1;
}

// The values of `from` at `columns`, a missing value past its end.
std::vector<output_value> pick(std::span<const output_value> from, const std::vector<std::size_t>& columns) {
  std::vector<output_value> out;
  out.reserve(columns.size());
  for (const std::size_t c : columns) out.push_back(c < from.size() ? from[c] : output_value{});
  return out;
}

}  // namespace

void row_window::padded_record(std::span<const output_value> values, std::size_t missing) {
  if (inside()) to_.padded_record(values, missing);
  ++seen_;
}

void column_choice::header(const textio::import::table_header& header) {
  std::vector<std::string> names;
  for (const output_value& n : header.names) names.push_back(textio::import::utf8_of_text(n));
  std::size_t typed = 0;
  for (const auto& run : header.types) typed += run.count;
  const std::size_t variables = std::max(names.size(), typed);
  for (const std::string& w : wanted_) {
    const auto at = std::find(names.begin(), names.end(), w);
    if (at != names.end()) {
      columns_.push_back(static_cast<std::size_t>(at - names.begin()));
    } else if (const auto p = position_of(w); p && (*p < variables || variables == 0)) {
      columns_.push_back(*p);
    } else {
      std::string known;
      for (const std::string& n : names) known += (known.empty() ? "'" : ", '") + n + "'";
      throw usage_error("--select: the table has no variable '" + w + "'" +
                        (known.empty() ? std::string(" (it has no names; give positions from 1)")
                                       : "; its variables are " + known + " (or positions from 1)"));
    }
  }
  textio::import::table_header chosen;
  chosen.names = pick(header.names, columns_);
  if (!header.units.empty()) chosen.units = pick(header.units, columns_);
  if (!header.descriptions.empty()) chosen.descriptions = pick(header.descriptions, columns_);
  std::vector<std::string_view> types;
  for (const auto& run : header.types) types.insert(types.end(), run.count, run.name);
  for (const std::size_t c : columns_) {
    const std::string_view type = c < types.size() ? types[c] : std::string_view("string");
    if (!chosen.types.empty() && chosen.types.back().name == type) {
      ++chosen.types.back().count;
    } else if (!types.empty()) {
      chosen.types.push_back({type, 1});
    }
  }
  to_.header(chosen);
}

void column_choice::padded_record(std::span<const output_value> values, std::size_t missing) {
  (void)missing;  // past the values every chosen column is missing
  chosen_ = pick(values, columns_);
  to_.record(chosen_);
}

std::vector<std::string> selection_of(const std::string& text) {
  std::vector<std::string> out;
  std::size_t start = 0;
  for (;;) {
    const std::size_t comma = text.find(',', start);
    out.push_back(text.substr(start, comma - start));
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  return out;
}

}  // namespace zvtool
