// UTF-8 checks and conversion for text read in blocks.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "import/output.hpp"

namespace textio::import {

struct utf8_check {
  // Bytes from the start that are whole, well-formed sequences.
  std::size_t valid = 0;
  // Whether the rest (bytes from `valid` on) is an invalid sequence rather
  // than the start of one that more bytes could complete.
  bool invalid = false;
};

// Checks `bytes` from the start. A well-formed prefix of a sequence at the
// very end is not invalid: it counts as incomplete.
utf8_check check_utf8(std::string_view bytes) noexcept;

// Appends the UTF-16 units of well-formed UTF-8 to `out`.
void append_utf16(std::u16string& out, std::string_view valid_utf8);

// UTF-16 units that a prefix of well-formed UTF-8 text converts to: one per
// sequence, two for a four-byte one.
std::size_t utf16_length(std::string_view valid_utf8) noexcept;

// A text value (a name, a field) as UTF-8, whichever units it is in; empty
// for a value of another kind.
std::string utf8_of_text(const output_value& v);

}  // namespace textio::import
