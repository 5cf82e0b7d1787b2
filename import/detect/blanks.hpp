// Blanks (space and tab) around the sample's lines and fields: indentation
// and padding, which detection looks past.
#pragma once

#include <string_view>

namespace textio::import {

constexpr bool is_blank(char c) { return c == ' ' || c == '\t'; }

constexpr std::string_view trim_leading_blanks(std::string_view s) {
  while (!s.empty() && is_blank(s.front())) s.remove_prefix(1);
  return s;
}

constexpr std::string_view trim_blanks(std::string_view s) {
  s = trim_leading_blanks(s);
  while (!s.empty() && is_blank(s.back())) s.remove_suffix(1);
  return s;
}

}  // namespace textio::import
