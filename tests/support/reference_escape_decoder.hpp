// A deliberately simple escape decoder that the fast one is compared with, in
// the tests and in the fuzzer.
#pragma once

#include <cstddef>
#include <string_view>

#include "zvcore/ustring.hpp"

namespace test_support {

// The decoder as a plain left-to-right pass that edits the text at every
// sequence (erase or replace, moving the tail each time). Slow, but easy to
// check by eye; the fast decoder must agree with it on every input.
inline bool reference_decode(ustring& text) noexcept {
  constexpr std::u16string_view letters = u"\\bnrt";
  constexpr std::u16string_view decoded = u"\\\b\n\r\t";
  bool result = true;
  for (std::size_t i = text.find(u'\\'); i != ustring::npos && i + 1 < text.size(); i = text.find(u'\\', i)) {
    const std::size_t known = letters.find(text[i + 1]);
    if (known != std::u16string_view::npos) {
      text.replace(i, 2, 1, decoded[known]);
      ++i;
    } else {
      result = false;
      text.erase(i, 2);
    }
  }
  return result;
}

}  // namespace test_support
