// UTF-8 one sequence at a time: the one place that knows which bytes form a
// well-formed sequence (no overlong form, no surrogate, nothing above
// U+10FFFF), how one decodes and how a code point encodes. The text
// conversions, the tool's JSON writer and the reader's UTF-8 input all use it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace foundation::core::unicode {

constexpr bool is_utf8_continuation(unsigned char b) noexcept { return (b & 0xC0u) == 0x80u; }

// Bytes of the sequence that lead byte `b` starts, 0 when it starts none.
constexpr std::size_t utf8_length_from_lead(unsigned char b) noexcept {
  if (b < 0x80u) return 1;
  if (b >= 0xC2u && b <= 0xDFu) return 2;
  if (b >= 0xE0u && b <= 0xEFu) return 3;
  if (b >= 0xF0u && b <= 0xF4u) return 4;
  return 0;
}

struct utf8_sequence {
  std::size_t length = 0;  ///< bytes of the well-formed sequence at the start; 0 when they start none
  bool truncated = false;  ///< no sequence, but the bytes are a well-formed beginning of one
};

// The sequence at the start of `bytes` (which must not be empty).
constexpr utf8_sequence utf8_sequence_at(std::string_view bytes) noexcept {
  const auto lead = static_cast<unsigned char>(bytes[0]);
  const std::size_t length = utf8_length_from_lead(lead);
  if (length == 0) return {};
  for (std::size_t k = 1; k < length; ++k) {
    if (k >= bytes.size()) return {0, true};
    const auto b = static_cast<unsigned char>(bytes[k]);
    bool ok = is_utf8_continuation(b);
    // The second byte rules out overlong forms, surrogates and values above U+10FFFF.
    if (k == 1 && lead == 0xE0u) ok = ok && b >= 0xA0u;
    if (k == 1 && lead == 0xEDu) ok = ok && b <= 0x9Fu;
    if (k == 1 && lead == 0xF0u) ok = ok && b >= 0x90u;
    if (k == 1 && lead == 0xF4u) ok = ok && b <= 0x8Fu;
    if (!ok) return {};
  }
  return {length, false};
}

// The code point of a well-formed sequence of `length` bytes at `p`.
constexpr char32_t decode_utf8(const unsigned char* p, std::size_t length) noexcept {
  switch (length) {
    case 1:
      return p[0];
    case 2:
      return ((p[0] & 0x1Fu) << 6) | (p[1] & 0x3Fu);
    case 3:
      return ((p[0] & 0x0Fu) << 12) | ((p[1] & 0x3Fu) << 6) | (p[2] & 0x3Fu);
    default:
      return ((p[0] & 0x07u) << 18) | ((p[1] & 0x3Fu) << 12) | ((p[2] & 0x3Fu) << 6) | (p[3] & 0x3Fu);
  }
}

constexpr bool is_high_surrogate(char32_t u) noexcept { return u >= 0xD800 && u <= 0xDBFF; }
constexpr bool is_low_surrogate(char32_t u) noexcept { return u >= 0xDC00 && u <= 0xDFFF; }
constexpr char32_t combine_surrogates(char32_t high, char32_t low) noexcept {
  return 0x10000 + ((high - 0xD800) << 10) + (low - 0xDC00);
}

// Appends the UTF-8 bytes of a code point (a surrogate encodes as its own value).
inline void append_utf8(std::string& out, char32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

// Writes the UTF-16 units of a code point at `out` and gives the end.
constexpr char16_t* write_utf16(char16_t* out, char32_t c) noexcept {
  if (c < 0x10000) {
    *out++ = static_cast<char16_t>(c);
  } else {
    *out++ = static_cast<char16_t>(0xD800u + ((c - 0x10000u) >> 10));
    *out++ = static_cast<char16_t>(0xDC00u + ((c - 0x10000u) & 0x3FFu));
  }
  return out;
}

}  // namespace foundation::core::unicode
