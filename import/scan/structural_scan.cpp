#include "import/scan/structural_scan.hpp"

#include <algorithm>

namespace textio::import {
namespace {

// Adds a one-byte ASCII unit to a set; false when it does not fit.
bool add_unit(std::array<char, structural_classes::max_set>& set, std::size_t& count, char16_t unit) {
  if (unit >= 0x80) return false;
  const char byte = static_cast<char>(unit);
  if (std::find(set.begin(), set.begin() + count, byte) != set.begin() + count) return true;
  if (count == set.size()) return false;
  set[count++] = byte;
  return true;
}

}  // namespace

std::optional<structural_classes> structural_classes::for_rules(const scan_rules<char>& rules) {
  if (!rules.quotes || static_cast<unsigned char>(rules.quote) >= 0x80) return std::nullopt;
  structural_classes c;
  c.quote = rules.quote;

  // Line endings: LF, CR and CR LF only (any other string, "\n," say,
  // would end records where the scan sees none).
  for (const std::u16string& e : rules.line_endings.strings()) {
    if (e == u"\n") {
      c.lf = true;
    } else if (e == u"\r") {
      c.cr = true;
    } else if (e == u"\r\n") {
      c.crlf = true;
    } else if (!e.empty()) {
      return std::nullopt;
    }
  }

  const auto& delimiters = rules.field_delimiters;
  if (delimiters.longest() > 1) return std::nullopt;
  for (const char16_t u : delimiters.first_units()) {
    if (!add_unit(c.delimiters, c.delimiter_count, u)) return std::nullopt;
  }

  if (!rules.comment_open.empty()) {
    if (rules.comment_open.longest() != 1 || !rules.comment_close.empty() ||
        rules.comment_open.first_units().size() != 1 || rules.comment_open.first_units()[0] >= 0x80)
      return std::nullopt;
    c.has_comment = true;
    c.comment = static_cast<char>(rules.comment_open.first_units()[0]);
  }

  for (const char16_t u : rules.whitespace) {
    if (!add_unit(c.whitespace, c.whitespace_count, u)) return std::nullopt;
  }

  // Each byte in one class at most.
  std::array<int, 128> seen{};
  const auto claim = [&seen](char byte) { return ++seen[static_cast<unsigned char>(byte)] == 1; };
  bool disjoint = claim(c.quote) && claim('\r') && claim('\n');
  if (c.has_comment) disjoint = disjoint && claim(c.comment);
  for (std::size_t i = 0; i < c.delimiter_count; ++i) disjoint = disjoint && claim(c.delimiters[i]);
  for (std::size_t i = 0; i < c.whitespace_count; ++i) disjoint = disjoint && claim(c.whitespace[i]);
  if (!disjoint) return std::nullopt;
  return c;
}

}  // namespace textio::import
