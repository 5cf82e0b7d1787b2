#include "import/utf8_text.hpp"

#include <cstdint>
#include <cstring>

namespace textio::import {
namespace {

constexpr std::uint64_t high_bits = 0x8080808080808080ULL;

bool is_continuation(unsigned char b) { return (b & 0xC0u) == 0x80u; }

// Length of the sequence that lead byte `b` starts, 0 when it starts none.
std::size_t sequence_length(unsigned char b) {
  if (b < 0x80u) return 1;
  if (b >= 0xC2u && b <= 0xDFu) return 2;
  if (b >= 0xE0u && b <= 0xEFu) return 3;
  if (b >= 0xF0u && b <= 0xF4u) return 4;
  return 0;
}

// Whether the second byte is allowed after this lead byte (rules out
// overlong forms, surrogates and values above U+10FFFF).
bool second_byte_ok(unsigned char lead, unsigned char second) {
  if (!is_continuation(second)) return false;
  if (lead == 0xE0u) return second >= 0xA0u;
  if (lead == 0xEDu) return second <= 0x9Fu;
  if (lead == 0xF0u) return second >= 0x90u;
  if (lead == 0xF4u) return second <= 0x8Fu;
  return true;
}

}  // namespace

utf8_check check_utf8(std::string_view bytes) noexcept {
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
  const std::size_t n = bytes.size();
  std::size_t i = 0;
  while (i < n) {
    // Eight ASCII bytes at a time.
    while (i + 8 <= n) {
      std::uint64_t word = 0;
      std::memcpy(&word, p + i, 8);
      if ((word & high_bits) != 0) break;
      i += 8;
    }
    if (i >= n) break;
    const unsigned char lead = p[i];
    if (lead < 0x80u) {
      ++i;
      continue;
    }
    const std::size_t length = sequence_length(lead);
    if (length == 0) return {i, true};
    for (std::size_t k = 1; k < length; ++k) {
      if (i + k >= n) return {i, false};
      const bool ok = k == 1 ? second_byte_ok(lead, p[i + 1]) : is_continuation(p[i + k]);
      if (!ok) return {i, true};
    }
    i += length;
  }
  return {n, false};
}

void append_utf16(std::u16string& out, std::string_view valid_utf8) {
  const auto* p = reinterpret_cast<const unsigned char*>(valid_utf8.data());
  const std::size_t n = valid_utf8.size();
  const std::size_t start = out.size();
  out.resize(start + n);  // never more units than bytes
  char16_t* dst = out.data() + start;
  std::size_t i = 0;
  while (i < n) {
    const unsigned char b = p[i];
    if (b < 0x80u) {
      *dst++ = b;
      ++i;
    } else if (b < 0xE0u) {
      *dst++ = static_cast<char16_t>(((b & 0x1Fu) << 6) | (p[i + 1] & 0x3Fu));
      i += 2;
    } else if (b < 0xF0u) {
      *dst++ = static_cast<char16_t>(((b & 0x0Fu) << 12) | ((p[i + 1] & 0x3Fu) << 6) | (p[i + 2] & 0x3Fu));
      i += 3;
    } else {
      const std::uint32_t cp =
          ((b & 0x07u) << 18) | ((p[i + 1] & 0x3Fu) << 12) | ((p[i + 2] & 0x3Fu) << 6) | (p[i + 3] & 0x3Fu);
      *dst++ = static_cast<char16_t>(0xD800u + ((cp - 0x10000u) >> 10));
      *dst++ = static_cast<char16_t>(0xDC00u + ((cp - 0x10000u) & 0x3FFu));
      i += 4;
    }
  }
  out.resize(static_cast<std::size_t>(dst - out.data()));
}

std::size_t utf16_length(std::string_view valid_utf8) noexcept {
  std::size_t units = 0;
  for (const char c : valid_utf8) {
    const auto b = static_cast<unsigned char>(c);
    if (!is_continuation(b)) ++units;
    if (b >= 0xF0u) ++units;
  }
  return units;
}

}  // namespace textio::import
