// A deliberately simple escape decoder that the fast one is compared with, in
// the tests and in the fuzzer.
#pragma once

#include <cstddef>

#include "zvcore/ustring.hpp"

namespace test_support {

// The decoder as a plain left-to-right pass that edits the text at every
// sequence (erase or replace, moving the tail each time). Slow, but easy to
// check by eye; the fast decoder must agree with it on every input.
inline bool reference_decode(ustring& text) noexcept {
  bool result = true;
  std::size_t position = 0;
  while (position < text.size()) {
    const std::size_t i = text.find(u'\\', position);
    if (i == ustring::npos || i + 1 >= text.size()) break;
    char16_t decoded = 0;
    switch (text[i + 1]) {
      case u'\\':
        decoded = u'\\';
        break;
      case u'b':
        decoded = u'\b';
        break;
      case u'n':
        decoded = u'\n';
        break;
      case u'r':
        decoded = u'\r';
        break;
      case u't':
        decoded = u'\t';
        break;
      default:
        break;
    }
    if (decoded != 0) {
      text.replace(i, 2, 1, decoded);
      position = i + 1;
    } else {
      result = false;
      text.erase(i, 2);
      position = i;
    }
  }
  return result;
}

}  // namespace test_support
