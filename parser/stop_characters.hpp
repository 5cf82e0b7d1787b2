// Stop characters and delimiter pairs: what the record readers make of the
// lists of delimiters and line endings.
//
// A stop-character string holds every code unit at which a string of the
// lists can begin, each once, ascending by unsigned value. A reader scans for
// these units and only there asks a delimiter object whether a delimiter
// starts. An empty string counts with its terminator, U+0000.
//
// The delimiter objects are opaque here: the pairs only take, copy and
// release handles to them.
#pragma once

#include <memory>
#include <vector>

#include "zvcore/ustring.hpp"
#include "zvdelim/get_or_create_delim.hpp"

namespace textio::parser {

// The first unit of each string of `list`, sorted, without duplicates.
ustring first_characters(const std::vector<ustring>& list);

// The sorted union of the first units of both lists.
ustring stop_characters(const std::vector<ustring>& first, const std::vector<ustring>& second);

// Two delimiter handles and the stop characters of their lists. Fixed once
// built: a copy shares both objects, construction from an rvalue copies as
// well and leaves the source whole, and there is no assignment.
struct DelimiterPair {
  // Takes `primary` for the first list, then `secondary` for the second, then
  // the stop characters of both.
  DelimiterPair(const std::vector<ustring>& first, const std::vector<ustring>& second);
  DelimiterPair(const DelimiterPair& other) = default;
  DelimiterPair& operator=(const DelimiterPair&) = delete;
  ~DelimiterPair() = default;

  const std::shared_ptr<textio::Delimiter> primary;
  const std::shared_ptr<textio::Delimiter> secondary;
  const ustring stop_chars;
};

// A delimiter pair with the character that quotes a field. Copies as
// DelimiterPair does.
struct QuotedDelimiterPair {
  QuotedDelimiterPair(char16_t quote_char, const std::vector<ustring>& first, const std::vector<ustring>& second);
  QuotedDelimiterPair(const QuotedDelimiterPair& other) = default;
  QuotedDelimiterPair& operator=(const QuotedDelimiterPair&) = delete;
  ~QuotedDelimiterPair() = default;

  const char16_t quote;
  const DelimiterPair delimiters;
};

}  // namespace textio::parser
