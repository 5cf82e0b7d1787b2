// ustring, the environment's UTF-16 text type, and conversions between it and
// UTF-8.
#pragma once

#include <string>
#include <string_view>

// Text as 16-bit code units; lengths and positions count units, not characters.
using ustring = std::basic_string<char16_t>;

namespace foundation::core::unicode {

// UTF-8 to UTF-16. Well-formed input converts losslessly; each byte that does
// not start a well-formed sequence becomes U+FFFD.
::ustring to_utf16(std::string_view utf8);

// UTF-16 to UTF-8. Surrogate pairs combine; a lone surrogate becomes U+FFFD,
// the one case where the conversion loses information.
std::string to_utf8(std::u16string_view utf16);

// True when every byte belongs to a well-formed UTF-8 sequence.
bool is_valid_utf8(std::string_view bytes) noexcept;

}  // namespace foundation::core::unicode
