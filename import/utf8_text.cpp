#include "import/utf8_text.hpp"

#include <cstdint>
#include <cstring>

#include "zvcore/utf8.hpp"

namespace textio::import {
namespace {

namespace unicode = foundation::core::unicode;

constexpr std::uint64_t high_bits = 0x8080808080808080ULL;

}  // namespace

utf8_check check_utf8(std::string_view bytes) noexcept {
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
  const std::size_t n = bytes.size();
  std::size_t i = 0;
  while (i < n) {
    // ASCII 32 bytes, then eight bytes at a time.
    while (i + 32 <= n) {
      std::uint64_t words[4];
      std::memcpy(words, p + i, 32);
      if (((words[0] | words[1] | words[2] | words[3]) & high_bits) != 0) break;
      i += 32;
    }
    while (i + 8 <= n) {
      std::uint64_t word = 0;
      std::memcpy(&word, p + i, 8);
      if ((word & high_bits) != 0) break;
      i += 8;
    }
    if (i >= n) break;
    if (p[i] < 0x80u) {
      ++i;
      continue;
    }
    const unicode::utf8_sequence sequence = unicode::utf8_sequence_at(bytes.substr(i));
    if (sequence.length == 0) return {i, !sequence.truncated};
    i += sequence.length;
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
    if (p[i] < 0x80u) {
      *dst++ = p[i++];
      continue;
    }
    const std::size_t length = unicode::utf8_length_from_lead(p[i]);
    dst = unicode::write_utf16(dst, unicode::decode_utf8(p + i, length));
    i += length;
  }
  out.resize(static_cast<std::size_t>(dst - out.data()));
}

std::size_t utf16_length(std::string_view valid_utf8) noexcept {
  std::size_t units = 0;
  for (const char c : valid_utf8) {
    const auto b = static_cast<unsigned char>(c);
    if (!unicode::is_utf8_continuation(b)) ++units;
    if (b >= 0xF0u) ++units;
  }
  return units;
}

}  // namespace textio::import
