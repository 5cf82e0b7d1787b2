#include "import/scan/lines_left.hpp"

#include <cstddef>
#include <string_view>

namespace textio::import {

template <class CharT>
std::uint64_t count_lines_left(unit_window<CharT>& window, const scan_rules<CharT>& rules) {
  std::uint64_t lines = 0;
  bool open_line = false;  // units after the last line ending
  for (;;) {
    const std::basic_string_view<CharT> w = window.view();
    std::size_t pos = 0;
    while (pos < w.size()) {
      if ((rules.classes(w[pos]) & starts_line_ending) == 0) {
        open_line = true;
        ++pos;
        continue;
      }
      if (!window.at_end() && pos + rules.lookahead > w.size()) break;
      const std::size_t ending = rules.line_endings.match(w, pos);
      if (ending == 0) {
        open_line = true;
        ++pos;
        continue;
      }
      ++lines;
      open_line = false;
      pos += ending;
    }
    window.consume(pos);
    if (!window.at_end() && window.more()) continue;
    if (!window.view().empty() && window.at_end()) continue;
    break;
  }
  return lines + (open_line ? 1 : 0);
}

template std::uint64_t count_lines_left<char>(unit_window<char>&, const scan_rules<char>&);
template std::uint64_t count_lines_left<char16_t>(unit_window<char16_t>&, const scan_rules<char16_t>&);

}  // namespace textio::import
