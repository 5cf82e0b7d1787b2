#include "zvcore/ustring.hpp"

#include <cstdint>

namespace foundation::core::unicode {
namespace {

constexpr char16_t replacement_character = 0xFFFD;

// Length of the well-formed UTF-8 sequence at the start of s, or 0.
std::size_t sequence_length(std::string_view s, char32_t& code_point) noexcept {
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(s[i]); };
  const std::uint8_t b0 = byte(0);
  if (b0 < 0x80) {
    code_point = b0;
    return 1;
  }
  std::size_t length = 0;
  char32_t minimum = 0;
  if (b0 >= 0xC2 && b0 <= 0xDF) {
    length = 2;
    code_point = b0 & 0x1Fu;
    minimum = 0x80;
  } else if (b0 >= 0xE0 && b0 <= 0xEF) {
    length = 3;
    code_point = b0 & 0x0Fu;
    minimum = 0x800;
  } else if (b0 >= 0xF0 && b0 <= 0xF4) {
    length = 4;
    code_point = b0 & 0x07u;
    minimum = 0x10000;
  } else {
    return 0;
  }
  if (s.size() < length) return 0;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0u) != 0x80u) return 0;
    code_point = (code_point << 6) | (byte(i) & 0x3Fu);
  }
  if (code_point < minimum || code_point > 0x10FFFF) return 0;
  if (code_point >= 0xD800 && code_point <= 0xDFFF) return 0;
  return length;
}

}  // namespace

::ustring to_utf16(std::string_view utf8) {
  ::ustring out;
  out.reserve(utf8.size());
  while (!utf8.empty()) {
    char32_t cp = 0;
    const std::size_t n = sequence_length(utf8, cp);
    if (n == 0) {
      out.push_back(replacement_character);
      utf8.remove_prefix(1);
      continue;
    }
    if (cp >= 0x10000) {
      cp -= 0x10000;
      out.push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(cp));
    }
    utf8.remove_prefix(n);
  }
  return out;
}

std::string to_utf8(std::u16string_view utf16) {
  // Plain ASCII, the common case for names, converts unit for unit.
  std::size_t ascii = 0;
  while (ascii < utf16.size() && utf16[ascii] < 0x80) ++ascii;
  std::string out(ascii, '\0');
  for (std::size_t i = 0; i < ascii; ++i) out[i] = static_cast<char>(utf16[i]);
  if (ascii == utf16.size()) return out;
  out.reserve(utf16.size() + (utf16.size() - ascii) * 2);
  utf16.remove_prefix(ascii);
  for (std::size_t i = 0; i < utf16.size(); ++i) {
    char32_t cp = utf16[i];
    if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < utf16.size() && utf16[i + 1] >= 0xDC00 && utf16[i + 1] <= 0xDFFF) {
      cp = 0x10000 + ((cp - 0xD800) << 10) + (utf16[i + 1] - 0xDC00);
      ++i;
    } else if (cp >= 0xD800 && cp <= 0xDFFF) {
      cp = replacement_character;
    }
    if (cp < 0x80) {
      out.push_back(static_cast<char>(cp));
    } else if (cp < 0x800) {
      out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
      out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
      out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
    }
  }
  return out;
}

bool is_valid_utf8(std::string_view bytes) noexcept {
  while (!bytes.empty()) {
    char32_t cp = 0;
    const std::size_t n = sequence_length(bytes, cp);
    if (n == 0) return false;
    bytes.remove_prefix(n);
  }
  return true;
}

}  // namespace foundation::core::unicode
