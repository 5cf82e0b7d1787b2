#include "import/input/utf8_text.hpp"

#include <cstdint>
#include <cstring>

#include "zvcore/ustring.hpp"
#include "zvcore/utf8.hpp"

namespace textio::import {
namespace {

namespace unicode = foundation::core::unicode;

constexpr std::uint64_t high_bits = 0x8080808080808080ULL;

std::uint64_t word_at(const unsigned char* p) noexcept {
  std::uint64_t w;
  std::memcpy(&w, p, 8);
  return w;
}

}  // namespace

utf8_check check_utf8(std::string_view bytes) noexcept {
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data());
  const std::size_t n = bytes.size();
  std::size_t i = 0;
  while (i < n) {
    // ASCII 64 bytes, then eight bytes at a time (words loaded one by one:
    // copied to an array, they went through the stack).
    while (i + 64 <= n) {
      const unsigned char* q = p + i;
      const std::uint64_t any = (word_at(q) | word_at(q + 8)) | (word_at(q + 16) | word_at(q + 24)) |
                                (word_at(q + 32) | word_at(q + 40)) | (word_at(q + 48) | word_at(q + 56));
      if ((any & high_bits) != 0) break;
      i += 64;
    }
    while (i + 8 <= n) {
      if ((word_at(p + i) & high_bits) != 0) break;
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

std::string utf8_of_text(const output_value& v) {
  if (v.kind != value_kind::text) return {};
  return v.utf16 ? foundation::core::unicode::to_utf8(v.units) : std::string(v.bytes);
}

}  // namespace textio::import
