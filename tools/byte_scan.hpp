// Finds the first byte that a writer must treat specially, eight bytes at a
// time (SWAR: bit tricks on a 64-bit word). The writers copy everything before
// it in one piece. Fields are short (a few to a few dozen bytes), so a word at
// a time keeps the set-up cost near zero where a wide vector would not pay.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace zvtool {

namespace swar {

constexpr std::uint64_t ones = 0x0101010101010101u;
constexpr std::uint64_t highs = 0x8080808080808080u;

constexpr std::uint64_t broadcast(unsigned char c) { return ones * c; }

// The high bit of every byte below `limit` (limit <= 0x80). Borrows may also
// mark bytes above the lowest marked one, so only the lowest mark is exact.
constexpr std::uint64_t below(std::uint64_t word, unsigned char limit) {
  return (word - broadcast(limit)) & ~word & highs;
}

// The high bit of every byte equal to `c`; only the lowest mark is exact.
constexpr std::uint64_t equal(std::uint64_t word, unsigned char c) { return below(word ^ broadcast(c), 1); }

inline std::uint64_t load(const char* p) {
  std::uint64_t word;
  std::memcpy(&word, p, sizeof word);
  return word;
}

// The index of the first byte of `text` for which `marks(word)` sets the high
// bit (exact at its lowest mark), or text.size().
template <typename Marks, typename Special>
std::size_t find_first(std::string_view text, Marks marks, Special special) {
  std::size_t i = 0;
  if constexpr (std::endian::native == std::endian::little) {
    for (; i + 8 <= text.size(); i += 8) {
      if (const std::uint64_t m = marks(load(text.data() + i)); m != 0) {
        return i + static_cast<std::size_t>(std::countr_zero(m)) / 8;
      }
    }
  }
  for (; i < text.size(); ++i) {
    if (special(static_cast<unsigned char>(text[i]))) return i;
  }
  return text.size();
}

}  // namespace swar

// The first byte that JSON text cannot hold as it is: a control, '"', '\\',
// or a byte of 0x80 and above (which must be checked as UTF-8).
inline std::size_t find_json_special(std::string_view text) {
  return swar::find_first(
      text,
      [](std::uint64_t w) {
        return swar::below(w, 0x20) | (w & swar::highs) | swar::equal(w, '"') | swar::equal(w, '\\');
      },
      [](unsigned char c) { return c < 0x20 || c >= 0x80 || c == '"' || c == '\\'; });
}

// The first byte that makes a CSV field need quotes: ',', '"', CR or LF.
inline std::size_t find_csv_special(std::string_view text) {
  return swar::find_first(
      text,
      [](std::uint64_t w) {
        return swar::equal(w, ',') | swar::equal(w, '"') | swar::equal(w, '\r') | swar::equal(w, '\n');
      },
      [](unsigned char c) { return c == ',' || c == '"' || c == '\r' || c == '\n'; });
}

}  // namespace zvtool
