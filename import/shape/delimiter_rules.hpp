// What delimiters at the start, at the end and two in a row mean for the
// fields of a delimited record. A field is blank when it is unquoted and has
// no units after trimming. The leading run (blank fields ahead of the first
// field with text) and the trailing run (blank fields after the last) are
// settled by their own rules first; the blank fields between two fields with
// text then follow the consecutive rule.
#pragma once

#include <cstddef>

#include "import/scan/record_scanner.hpp"
#include "parser/enums.hpp"

namespace textio::import {

struct delimiter_rule_set {
  textio::enums::LeadingDelimiterRule leading = textio::enums::LeadingDelimiterRule::Keep;
  textio::enums::TrailingDelimiterRule trailing = textio::enums::TrailingDelimiterRule::Keep;
  textio::enums::ConsecutiveDelimitersRule consecutive = textio::enums::ConsecutiveDelimitersRule::Split;
};

// Whether the rules keep every field as it is.
inline bool keeps_every_field(const delimiter_rule_set& rules) noexcept {
  return rules.leading == textio::enums::LeadingDelimiterRule::Keep &&
         rules.trailing == textio::enums::TrailingDelimiterRule::Keep &&
         rules.consecutive == textio::enums::ConsecutiveDelimitersRule::Split;
}

enum class delimiter_fault { none, leading, trailing, consecutive };

struct delimiter_outcome {
  delimiter_fault fault = delimiter_fault::none;
  std::size_t field = 0;  // the field whose ending delimiter breaks an "error" rule
};

// Removes the fields that the rules drop, keeping the order of the others,
// or leaves the fields as they are and gives the first fault under an
// "error" rule (leading, then trailing, then consecutive).
delimiter_outcome apply_delimiter_rules(field_list& fields, const delimiter_rule_set& rules);

}  // namespace textio::import
