// The argument of BadTextFlag: the flags that an option accepts, each in
// single quotes, separated by ", ", with one line feed at the end:
//   'keep', 'ignore', 'error'<LF>
// Built only when a flag fails to match.
#pragma once

#include <concepts>
#include <string>

namespace textio {

// One to six flags. The text of one flag is the quoted flag and the line feed;
// the text of more is the first flag quoted, ", ", and the text of the rest.
template <std::same_as<const char*>... Rest>
requires(sizeof...(Rest) <= 5) std::string flag_list_text(const char* first, Rest... rest) {
  std::string text = "'";
  text += first;
  if constexpr (sizeof...(Rest) == 0) {
    text += "'\n";
  } else {
    text += "', ";
    text += flag_list_text(rest...);
  }
  return text;
}

}  // namespace textio
