#include "parser/stop_characters.hpp"

#include <algorithm>
#include <iterator>

namespace textio::parser {

ustring first_characters(const std::vector<ustring>& list) {
  ustring units;
  units.reserve(list.size());
  // operator[] at size() reads the terminator, so an empty string gives U+0000.
  for (const ustring& s : list) units.push_back(s[0]);
  // char16_t is unsigned: the sort is by unsigned value.
  std::sort(units.begin(), units.end());
  units.erase(std::unique(units.begin(), units.end()), units.end());
  return units;
}

ustring stop_characters(const std::vector<ustring>& first, const std::vector<ustring>& second) {
  const ustring from_second = first_characters(second);
  const ustring from_first = first_characters(first);
  ustring units;
  units.reserve(from_first.size() + from_second.size());
  std::set_union(from_first.begin(), from_first.end(), from_second.begin(), from_second.end(),
                 std::back_inserter(units));
  return units;
}

DelimiterPair::DelimiterPair(const std::vector<ustring>& first, const std::vector<ustring>& second)
    : primary(textio::get_or_create_delim(first)),
      secondary(textio::get_or_create_delim(second)),
      stop_chars(stop_characters(first, second)) {}

QuotedDelimiterPair::QuotedDelimiterPair(char16_t quote_char, const std::vector<ustring>& first,
                                         const std::vector<ustring>& second)
    : quote(quote_char), delimiters(first, second) {}

}  // namespace textio::parser
