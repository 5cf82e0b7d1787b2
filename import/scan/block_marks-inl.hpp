// The marks of 64-byte blocks: each byte classed with vector compares, the
// classes turned into record ends, delimiters, quotes and comments with bit
// arithmetic, and the bit walk over the marks that counting and scanning
// share.
// Per-target code: included by structural_kernels.cpp once for each
// instruction set, hence the toggled guard instead of #pragma once.
#if defined(ZVTP_IMPORT_SCAN_BLOCK_MARKS_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZVTP_IMPORT_SCAN_BLOCK_MARKS_INL_H_
#undef ZVTP_IMPORT_SCAN_BLOCK_MARKS_INL_H_
#else
#define ZVTP_IMPORT_SCAN_BLOCK_MARKS_INL_H_
#endif

#include <hwy/highway.h>

#include <bit>
#include <cstring>

#include "import/scan/structural_scan.hpp"

HWY_BEFORE_NAMESPACE();
namespace textio::import {
namespace HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Bit i of the result: the parity of bits 0..i of x.
HWY_INLINE std::uint64_t prefix_xor(std::uint64_t x) {
#if HWY_TARGET == HWY_SSSE3 || HWY_TARGET == HWY_EMU128 || HWY_TARGET == HWY_SCALAR
  x ^= x << 1;
  x ^= x << 2;
  x ^= x << 4;
  x ^= x << 8;
  x ^= x << 16;
  x ^= x << 32;
  return x;
#else
  // A carry-less multiply by all ones.
  const hn::Full128<std::uint64_t> d;
  return hn::GetLane(hn::CLMulLower(hn::Set(d, x), hn::Set(d, ~std::uint64_t{0})));
#endif
}

// Compiled for the kernel's instruction set (a popcnt instruction where
// there is one).
HWY_INLINE std::size_t bit_count(std::uint64_t x) { return static_cast<std::size_t>(__builtin_popcountll(x)); }

struct raw_masks {
  std::uint64_t quote, delimiter, cr, lf, comment, blank;
};

// The bits of a byte mask, lane i at bit i.
template <class D, class M>
HWY_INLINE std::uint64_t mask_bits(D d, M m) {
#if HWY_TARGET == HWY_AVX3 || HWY_TARGET == HWY_AVX3_DL
  (void)d;
  return static_cast<std::uint64_t>(m.raw);
#elif HWY_TARGET == HWY_AVX2
  return static_cast<std::uint32_t>(_mm256_movemask_epi8(hn::VecFromMask(d, m).raw));
#elif HWY_TARGET == HWY_SSE4 || HWY_TARGET == HWY_SSSE3
  return static_cast<std::uint32_t>(_mm_movemask_epi8(hn::VecFromMask(d, m).raw));
#else
  std::uint8_t bytes[8] = {};
  hn::StoreMaskBits(d, m, bytes);
  std::uint64_t v;
  std::memcpy(&v, bytes, 8);
  return v;
#endif
}

#if HWY_TARGET != HWY_SCALAR
using bytes_tag = hn::ScalableTag<std::uint8_t>;
using byte_vector = hn::Vec<bytes_tag>;

// The class bytes broadcast once per call; a set of fewer than max_set
// bytes repeats its first.
struct class_vectors {
  explicit class_vectors(const structural_classes& c) {
    const bytes_tag d;
    quote = hn::Set(d, static_cast<std::uint8_t>(c.quote));
    cr = hn::Set(d, '\r');
    lf = hn::Set(d, '\n');
    comment = hn::Set(d, static_cast<std::uint8_t>(c.comment));
    for (std::size_t k = 0; k < structural_classes::max_set; ++k) {
      delimiter[k] = hn::Set(d, static_cast<std::uint8_t>(c.delimiters[k < c.delimiter_count ? k : 0]));
      blank[k] = hn::Set(d, static_cast<std::uint8_t>(c.whitespace[k < c.whitespace_count ? k : 0]));
    }
  }
  byte_vector quote, cr, lf, comment;
  byte_vector delimiter[structural_classes::max_set];
  byte_vector blank[structural_classes::max_set];
};

// The class masks of 64 bytes at p.
HWY_INLINE raw_masks classify(const std::uint8_t* p, const structural_classes& c, const class_vectors& k) {
  const bytes_tag d;
  const std::size_t lanes = hn::Lanes(d);
  const bool comments = c.has_comment;
  const bool delimiters = c.delimiter_count > 0;
  const bool blanks = c.whitespace_count > 0;
  raw_masks r{};
  for (std::size_t i = 0; i < 64; i += lanes) {
    const auto v = hn::LoadU(d, p + i);
    r.quote |= mask_bits(d, hn::Eq(v, k.quote)) << i;
    r.cr |= mask_bits(d, hn::Eq(v, k.cr)) << i;
    r.lf |= mask_bits(d, hn::Eq(v, k.lf)) << i;
    if (comments) r.comment |= mask_bits(d, hn::Eq(v, k.comment)) << i;
    // As many compares as the set has bytes (most sets have one or two).
    if (delimiters) {
      auto m = hn::Eq(v, k.delimiter[0]);
      for (std::size_t j = 1; j < c.delimiter_count; ++j) m = hn::Or(m, hn::Eq(v, k.delimiter[j]));
      r.delimiter |= mask_bits(d, m) << i;
    }
    if (blanks) {
      auto m = hn::Eq(v, k.blank[0]);
      for (std::size_t j = 1; j < c.whitespace_count; ++j) m = hn::Or(m, hn::Eq(v, k.blank[j]));
      r.blank |= mask_bits(d, m) << i;
    }
  }
  return r;
}
#else
struct class_vectors {
  explicit class_vectors(const structural_classes&) {}
};

HWY_INLINE raw_masks classify(const std::uint8_t* p, const structural_classes& c, const class_vectors&) {
  raw_masks r{};
  for (unsigned i = 0; i < 64; ++i) {
    const char b = static_cast<char>(p[i]);
    const std::uint64_t bit = std::uint64_t{1} << i;
    if (b == c.quote) r.quote |= bit;
    if (b == '\r') r.cr |= bit;
    if (b == '\n') r.lf |= bit;
    if (c.has_comment && b == c.comment) r.comment |= bit;
    for (std::size_t k = 0; k < c.delimiter_count; ++k) {
      if (b == c.delimiters[k]) r.delimiter |= bit;
    }
    for (std::size_t k = 0; k < c.whitespace_count; ++k) {
      if (b == c.whitespace[k]) r.blank |= bit;
    }
  }
  return r;
}
#endif

// Turns the class masks of one block of `length` bytes (1..64) into marks.
HWY_INLINE block_marks finish(raw_masks k, std::size_t length, bool next_is_lf, const structural_classes& c,
                              block_carry& carry) {
  const std::uint64_t valid = length == 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << length) - 1;
  const unsigned last = static_cast<unsigned>(length - 1);
  k.quote &= valid;
  k.delimiter &= valid;
  k.cr &= valid;
  k.lf &= valid;
  k.comment &= valid;

  // Line endings: where each starts, the LF that completes a CR LF.
  const std::uint64_t lf_next = (k.lf >> 1) | (std::uint64_t{next_is_lf} << last);
  const std::uint64_t pair = c.crlf ? k.cr & lf_next : 0;
  const std::uint64_t skip = (pair << 1) | carry.skip_lf;
  const std::uint64_t starts = pair | (c.cr ? k.cr & ~pair : 0) | (c.lf ? k.lf & ~skip : 0);
  carry.skip_lf = (pair >> last) & 1;

  // Comments run from a marker outside quotes to the next line ending; the
  // quotes inside them do not count.
  std::uint64_t in_comment = 0;
  std::uint64_t markers = 0;
  std::uint64_t inside = carry.quote;
  if (carry.in_comment) {
    in_comment = starts != 0 ? (std::uint64_t{1} << std::countr_zero(starts)) - 1 : valid;
    carry.in_comment = starts == 0;
  }
  std::uint64_t quotes = k.quote & ~in_comment;
  std::uint64_t in_quotes = prefix_xor(quotes) ^ inside;
  if (c.has_comment) {
    for (;;) {
      const std::uint64_t open = k.comment & ~in_quotes & ~in_comment;
      if (open == 0) break;
      const unsigned s = static_cast<unsigned>(std::countr_zero(open));
      markers |= std::uint64_t{1} << s;
      const std::uint64_t rest = s == 63 ? 0 : starts & (~std::uint64_t{0} << (s + 1));
      const std::uint64_t upto = rest != 0 ? (std::uint64_t{1} << std::countr_zero(rest)) - 1 : ~std::uint64_t{0};
      in_comment |= upto & (~std::uint64_t{0} << s);
      if (rest == 0) carry.in_comment = true;
      quotes = k.quote & ~in_comment;
      in_quotes = prefix_xor(quotes) ^ inside;
    }
  }
  in_comment &= valid;
  carry.quote = static_cast<std::uint64_t>(static_cast<std::int64_t>(in_quotes << (63 - last)) >> 63);

  // A quote opens a field only right after a delimiter, a line ending, the
  // start, or a closing quote (then the two are a doubled quote). Any other
  // quote the prefix-XOR takes for an opening one is text to the exact
  // scanner (after whitespace, inside a field, after a closed quote's text).
  const std::uint64_t opens = quotes & in_quotes;
  const std::uint64_t closes = quotes & ~in_quotes;
  const std::uint64_t separators = (k.delimiter | starts | skip) & ~in_quotes & ~in_comment;
  const std::uint64_t before_open = ((separators | closes) << 1) | carry.may_open;
  carry.may_open = ((separators | closes) >> last) & 1;
  const std::uint64_t irregular = opens & ~before_open;

  block_marks m{};
  m.fields = k.delimiter & ~in_quotes & ~in_comment;
  m.records = starts & ~in_quotes;
  m.lines = starts;
  m.wide = pair;
  m.content = ~k.blank & ~in_comment & valid;
  m.comments = markers;
  m.irregular = irregular;
  return m;
}

void MarkBlocks(const structural_classes& classes, std::string_view text, int next, block_carry& carry,
                block_marks* out) {
  const auto* p = reinterpret_cast<const std::uint8_t*>(text.data());
  const std::size_t n = text.size();
  const class_vectors vectors(classes);
  std::size_t at = 0;
  for (; at + 64 <= n; at += 64) {
    const bool next_is_lf = at + 64 < n ? p[at + 64] == '\n' : next == '\n';
    *out++ = finish(classify(p + at, classes, vectors), 64, next_is_lf, classes, carry);
  }
  if (at < n) {
    std::uint8_t tail[64] = {};
    std::memcpy(tail, p + at, n - at);
    *out = finish(classify(tail, classes, vectors), n - at, next == '\n', classes, carry);
  }
}

// The marks of the block at p[at..] of p[0..n): 64 bytes, or those left.
HWY_INLINE block_marks mark_at(const std::uint8_t* p, std::size_t n, std::size_t at, const structural_classes& classes,
                               const class_vectors& vectors, block_carry& carry) {
  if (n - at >= 64) {
    return finish(classify(p + at, classes, vectors), 64, at + 64 < n && p[at + 64] == '\n', classes, carry);
  }
  std::uint8_t tail[64] = {};
  std::memcpy(tail, p + at, n - at);
  return finish(classify(tail, classes, vectors), n - at, false, classes, carry);
}

// The bit walk that counting and scanning share: the marks of each block of
// text[from..), and in each block every settled record end before the first
// irregular quote, handed to `on_end(m, seg, at, e, next)` with the bits of
// the record that lie in the block (seg), the end's bit e and where the next
// record starts; the bits of the block after its last end go to
// `on_rest(m, live, at)`. Either returns false to stop the walk. Everything
// stays in registers: counting spends its time in this loop.
enum class walk_end { text_end, stopped, irregular };

template <class OnEnd, class OnRest>
HWY_INLINE walk_end walk_blocks(const std::uint8_t* p, std::size_t n, std::size_t from, std::size_t settled,
                                const structural_classes& classes, const class_vectors& vectors, block_carry& carry,
                                OnEnd&& on_end, OnRest&& on_rest) {
  std::size_t begin = from;  // the record being walked
  for (std::size_t at = from; at < n; at += 64) {
    const block_marks m = mark_at(p, n, at, classes, vectors, carry);
    // Bits from the record's first byte on.
    std::uint64_t live = begin > at ? ~std::uint64_t{0} << (begin - at) : ~std::uint64_t{0};
    const unsigned stop_bit = m.irregular != 0 ? static_cast<unsigned>(std::countr_zero(m.irregular)) : 64;
    std::uint64_t ends = stop_bit == 64 ? m.records : m.records & ((std::uint64_t{1} << stop_bit) - 1);
    if (settled < at + 64) ends &= settled > at ? (std::uint64_t{1} << (settled - at)) - 1 : 0;
    while (ends != 0) {
      const unsigned e = static_cast<unsigned>(std::countr_zero(ends));
      ends &= ends - 1;
      const std::uint64_t seg = live & ((std::uint64_t{1} << e) - 1);
      const std::size_t next = at + e + 1 + ((m.wide >> e) & 1);
      if (!on_end(m, seg, at, e, next)) return walk_end::stopped;
      begin = next;
      live = next - at < 64 ? ~std::uint64_t{0} << (next - at) : 0;
    }
    if (stop_bit != 64) return walk_end::irregular;
    if (!on_rest(m, live, at)) return walk_end::stopped;
  }
  return walk_end::text_end;
}

}  // namespace HWY_NAMESPACE
}  // namespace textio::import
HWY_AFTER_NAMESPACE();

#endif  // ZVTP_IMPORT_SCAN_BLOCK_MARKS_INL_H_
