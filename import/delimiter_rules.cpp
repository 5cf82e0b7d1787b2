#include "import/delimiter_rules.hpp"

namespace textio::import {
namespace {

bool blank(const raw_field& f) { return !f.quoted && f.length == 0; }

}  // namespace

delimiter_outcome apply_delimiter_rules(std::span<const raw_field> fields, const delimiter_rule_set& rules,
                                        std::vector<std::size_t>& kept) {
  using textio::enums::ConsecutiveDelimitersRule;
  using textio::enums::LeadingDelimiterRule;
  using textio::enums::TrailingDelimiterRule;
  kept.clear();
  const std::size_t n = fields.size();
  if (n <= 1) {
    if (n == 1) kept.push_back(0);
    return {};
  }
  std::size_t first = 0;
  while (first < n && blank(fields[first])) ++first;
  // Only delimiters: every one of them is leading.
  if (first == n) {
    if (rules.leading == LeadingDelimiterRule::Error) return {delimiter_fault::leading, 0};
    if (rules.leading == LeadingDelimiterRule::Keep) {
      for (std::size_t i = 0; i < n; ++i) kept.push_back(i);
    }
    return {};
  }
  std::size_t last = n - 1;
  while (blank(fields[last])) --last;

  if (first > 0 && rules.leading == LeadingDelimiterRule::Error) return {delimiter_fault::leading, 0};
  if (last + 1 < n && rules.trailing == TrailingDelimiterRule::Error) return {delimiter_fault::trailing, last};
  if (rules.consecutive == ConsecutiveDelimitersRule::Error) {
    for (std::size_t i = first + 1; i < last; ++i) {
      if (blank(fields[i])) return {delimiter_fault::consecutive, i};
    }
  }
  if (rules.leading == LeadingDelimiterRule::Keep) {
    for (std::size_t i = 0; i < first; ++i) kept.push_back(i);
  }
  for (std::size_t i = first; i <= last; ++i) {
    if (i != first && i != last && blank(fields[i]) && rules.consecutive == ConsecutiveDelimitersRule::Join) continue;
    kept.push_back(i);
  }
  if (rules.trailing == TrailingDelimiterRule::Keep) {
    for (std::size_t i = last + 1; i < n; ++i) kept.push_back(i);
  }
  return {};
}

}  // namespace textio::import
