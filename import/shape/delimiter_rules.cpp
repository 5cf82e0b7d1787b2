#include "import/shape/delimiter_rules.hpp"

namespace textio::import {
namespace {

bool blank(const raw_field& f) { return !f.quoted && f.length == 0; }

}  // namespace

delimiter_outcome apply_delimiter_rules(field_list& fields, const delimiter_rule_set& rules) {
  using textio::enums::ConsecutiveDelimitersRule;
  using textio::enums::LeadingDelimiterRule;
  using textio::enums::TrailingDelimiterRule;
  const std::size_t n = fields.size();
  if (n <= 1) return {};
  std::size_t first = 0;
  while (first < n && blank(fields[first])) ++first;
  // Only delimiters: every one of them is leading.
  if (first == n) {
    if (rules.leading == LeadingDelimiterRule::Error) return {delimiter_fault::leading, 0};
    if (rules.leading != LeadingDelimiterRule::Keep) fields.clear();
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
  const bool join = rules.consecutive == ConsecutiveDelimitersRule::Join;
  std::size_t kept = 0;
  for (std::size_t i = 0; i < n; ++i) {
    bool keep = true;
    if (i < first) {
      keep = rules.leading == LeadingDelimiterRule::Keep;
    } else if (i > last) {
      keep = rules.trailing == TrailingDelimiterRule::Keep;
    } else if (i != first && i != last && join) {
      keep = !blank(fields[i]);
    }
    if (keep) fields[kept++] = fields[i];
  }
  fields.resize(kept);
  return {};
}

}  // namespace textio::import
