// The block kernels of the structural scan, compiled once per instruction set
// (Highway's foreach_target) and chosen at run time from what the CPU runs.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "import/scan/structural_kernels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include <cpuid.h>

#include <algorithm>
#include <bit>
#include <cstring>
#include <iterator>

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

// The record walk: the marks of each block, its record ends and delimiters
// found bit by bit.
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

// The records a tally covers from text[from..], counted up to the first
// one it does not cover, the first irregular quote or the window's end;
// the walk goes on from `end`.
struct tally_run {
  std::uint64_t records = 0;
  std::size_t end = 0;
  std::uint64_t line = 0;
};

tally_run TallyRecords(const structural_classes& classes, std::string_view text, std::size_t from, bool at_end,
                       std::uint64_t line, const structural_tally& tally) {
  const std::size_t n = text.size();
  // Content tells an empty record (whitespace only, or a comment) from
  // others. A delimiter is content, so without comments only a record with
  // no delimiter needs its bytes looked at, and the blocks are classified
  // without whitespace.
  const bool lean = !classes.has_comment;
  structural_classes walked = classes;
  if (lean) walked.whitespace_count = 0;
  const auto all_blank = [&](std::size_t begin, std::size_t end) {
    for (std::size_t i = begin; i < end; ++i) {
      const auto first = classes.whitespace.begin();
      const auto last = first + static_cast<std::ptrdiff_t>(classes.whitespace_count);
      if (std::find(first, last, text[i]) == last) return false;
    }
    return true;
  };
  const class_vectors vectors(walked);
  block_carry carry;
  tally_run run{0, from, line};
  std::uint64_t lines = 0;
  std::size_t fields = 0;
  std::uint64_t content = 0;  // the record's bytes that are content
  walk_blocks(
      reinterpret_cast<const std::uint8_t*>(text.data()), n, from, at_end ? n : n - 1, walked, vectors, carry,
      [&](const block_marks& m, std::uint64_t seg, std::size_t at, unsigned e, std::size_t next) {
        fields += bit_count(m.fields & seg);
        lines += bit_count(m.lines & seg);
        const bool has_content = lean ? fields != 0 || !all_blank(run.end, at + e) : (content |= m.content & seg) != 0;
        if (!has_content || fields >= tally.max_fields || run.end >= tally.stop || run.line >= tally.line_limit) {
          return false;
        }
        ++run.records;
        run.line += lines + 1;
        run.end = next;
        lines = fields = 0;
        content = 0;
        return true;
      },
      [&](const block_marks& m, std::uint64_t live, std::size_t) {
        fields += bit_count(m.fields & live);
        if (!lean) content |= m.content & live;
        lines += bit_count(m.lines & live);
        return true;
      });
  return run;
}

// With a tally (it starts where TallyRecords stopped), the batch ends before
// the next record the tally covers, so that counts stay in the input's order.
template <bool Tally>
void Walk(const structural_classes& classes, std::string_view text, std::size_t from, bool at_end, std::uint64_t line,
          bool collect, const structural_tally& tally, structural_batch& batch) {
  batch.tallied = 0;
  batch.records.clear();
  batch.delimiters.clear();
  batch.first_delimiter.clear();
  const std::size_t n = text.size();
  batch.what = at_end ? structural_stop::end_of_input : structural_stop::need_more;
  if (from == n) return;
  block_carry carry;
  // The record being walked.
  std::size_t begin = from;
  std::uint64_t lines = 0;
  std::size_t fields = 0;
  bool content = false;
  bool comment = false;
  const auto add_delimiters = [&](std::uint64_t delims, std::size_t at) {
    for (; delims != 0; delims &= delims - 1) batch.delimiters.push_back(at + std::countr_zero(delims));
  };
  const auto add_record = [&](std::size_t end, std::size_t next) {
    // Filled in place (a record built elsewhere and copied in whole stalls
    // on the copy).
    structural_record& r = batch.records.emplace_back();
    r.begin = begin;
    r.end = end;
    r.next = next;
    r.line = line;
    r.next_line = line + lines + (next != end ? 1 : 0);
    r.fields = fields + 1;
    r.empty = !content;
    r.had_comment = comment;
    if (collect) batch.first_delimiter.push_back(batch.delimiters.size() - fields);
    begin = next;
    line = r.next_line;
    lines = fields = 0;
    content = comment = false;
  };
  // The bits of the record that lie in a block, before its end or the block's.
  const auto take = [&](const block_marks& m, std::uint64_t bits, std::size_t at) {
    fields += static_cast<std::size_t>(bit_count(m.fields & bits));
    if (collect) add_delimiters(m.fields & bits, at);
    content = content || (m.content & bits) != 0;
    comment = comment || (m.comments & bits) != 0;
    lines += bit_count(m.lines & bits);
  };
  const class_vectors vectors(classes);
  // Without the end of the input, the last byte may begin a CR LF: records
  // end only before it.
  const walk_end how = walk_blocks(
      reinterpret_cast<const std::uint8_t*>(text.data()), n, from, at_end ? n : n - 1, classes, vectors, carry,
      [&](const block_marks& m, std::uint64_t seg, std::size_t at, unsigned e, std::size_t next) {
        take(m, seg, at);
        if constexpr (Tally) {
          // The batch ends before a record the tally covers. (The walk starts
          // where the tally stopped, at a record it does not cover.)
          if (!batch.records.empty() && content && fields < tally.max_fields && begin < tally.stop &&
              line < tally.line_limit) {
            batch.what = structural_stop::full;
            return false;
          }
        }
        add_record(at + e, next);
        // (A tally that covers no record yet may cover more after this one.)
        if (batch.records.size() == structural_batch::capacity || (Tally && tally.max_fields == 0)) {
          batch.what = structural_stop::full;
          return false;
        }
        return true;
      },
      [&](const block_marks& m, std::uint64_t live, std::size_t at) {
        // The rest of the block belongs to the open record.
        take(m, live, at);
        if (collect && fields > structural_batch::max_collected_fields) {
          batch.what = structural_stop::exact;
          return false;
        }
        return true;
      });
  if (how == walk_end::stopped) return;
  if (how == walk_end::irregular) {
    batch.what = structural_stop::exact;
    return;
  }
  if (begin == n) return;
  if (!at_end) {
    batch.what = structural_stop::need_more;
  } else if (carry.quote != 0) {
    batch.what = structural_stop::exact;  // a quote open at the end: the exact scanner reports it
  } else {
    add_record(n, n);
    batch.what = structural_stop::end_of_input;
  }
}

void WalkRecords(const structural_classes& classes, std::string_view text, std::size_t from, bool at_end,
                 std::uint64_t line, bool collect, const structural_tally* tally, structural_batch& batch) {
  if (tally != nullptr) {
    const tally_run run = TallyRecords(classes, text, from, at_end, line, *tally);
    Walk<true>(classes, text, run.end, at_end, run.line, false, *tally, batch);
    batch.tallied = run.records;
    batch.tally_end = run.end;
    batch.tally_line = run.line;
    return;
  }
  Walk<false>(classes, text, from, at_end, line, collect, structural_tally{}, batch);
}

}  // namespace HWY_NAMESPACE
}  // namespace textio::import
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace textio::import {
namespace {

using mark_function = void (*)(const structural_classes&, std::string_view, int, block_carry&, block_marks*);
using walk_function = void (*)(const structural_classes&, std::string_view, std::size_t, bool, std::uint64_t, bool,
                               const structural_tally*, structural_batch&);

struct kernel {
  std::int64_t target;
  const char* name;
  mark_function mark;
  walk_function walk;
};

// Every kernel compiled in, best first.
const kernel kernels[] = {
#if HWY_TARGETS & HWY_AVX3
    {HWY_AVX3, "AVX3", &N_AVX3::MarkBlocks, &N_AVX3::WalkRecords},
#endif
#if HWY_TARGETS & HWY_AVX2
    {HWY_AVX2, "AVX2", &N_AVX2::MarkBlocks, &N_AVX2::WalkRecords},
#endif
#if HWY_TARGETS & HWY_SSE4
    {HWY_SSE4, "SSE4", &N_SSE4::MarkBlocks, &N_SSE4::WalkRecords},
#endif
#if HWY_TARGETS & HWY_SSSE3
    {HWY_SSSE3, "SSSE3", &N_SSSE3::MarkBlocks, &N_SSSE3::WalkRecords},
#endif
#if HWY_TARGETS & HWY_EMU128
    {HWY_EMU128, "EMU128", &N_EMU128::MarkBlocks, &N_EMU128::WalkRecords},
#endif
#if HWY_TARGETS & HWY_SCALAR
    {HWY_SCALAR, "SCALAR", &N_SCALAR::MarkBlocks, &N_SCALAR::WalkRecords},
#endif
};

// Whether the CPU (and the system, for the wide registers) runs a kernel:
// the instruction sets each Highway target is compiled for. Highway's own
// detection lives in its shared library, whose loading measures the timer
// and costs every process several milliseconds; these checks are the
// compiler's.
bool cpu_runs(std::int64_t target) {
  __builtin_cpu_init();
  const bool ssse3 = __builtin_cpu_supports("ssse3");
  const bool sse4 = ssse3 && __builtin_cpu_supports("sse4.1") && __builtin_cpu_supports("sse4.2") &&
                    __builtin_cpu_supports("pclmul") && __builtin_cpu_supports("aes");
  unsigned a = 0, b = 0, c = 0, d = 0;
  const bool f16c = __get_cpuid(1, &a, &b, &c, &d) != 0 && (c & bit_F16C) != 0;
  const bool avx2 = sse4 && __builtin_cpu_supports("avx") && __builtin_cpu_supports("avx2") &&
                    __builtin_cpu_supports("bmi") && __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("fma") &&
                    f16c;
  const bool avx3 = avx2 && __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
                    __builtin_cpu_supports("avx512dq") && __builtin_cpu_supports("avx512bw");
  switch (target) {
    case HWY_AVX3:
      return avx3;
    case HWY_AVX2:
      return avx2;
    case HWY_SSE4:
      return sse4;
    case HWY_SSSE3:
      return ssse3;
    default:
      return target == HWY_EMU128 || target == HWY_SCALAR;
  }
}

const kernel& best_kernel() {
  static const kernel* const best = []() -> const kernel* {
    for (const kernel& k : kernels) {
      if (cpu_runs(k.target)) return &k;
    }
    return &kernels[std::size(kernels) - 1];
  }();
  return *best;
}

const kernel& kernel_for(std::int64_t target) {
  for (const kernel& k : kernels) {
    if (k.target == target) return k;
  }
  return best_kernel();
}

}  // namespace

void mark_blocks(const structural_classes& classes, std::string_view text, int next, block_carry& carry,
                 block_marks* out) {
  best_kernel().mark(classes, text, next, carry, out);
}

std::vector<std::int64_t> structural_targets() {
  std::vector<std::int64_t> out;
  for (const kernel& k : kernels) {
    if (cpu_runs(k.target)) out.push_back(k.target);
  }
  return out;
}

const char* structural_target_name(std::int64_t target) { return target == 0 ? "best" : kernel_for(target).name; }

void mark_blocks_with(std::int64_t target, const structural_classes& classes, std::string_view text, int next,
                      block_carry& carry, block_marks* out) {
  kernel_for(target).mark(classes, text, next, carry, out);
}

void walk_records(const structural_classes& classes, std::string_view text, std::size_t from, bool at_end,
                  std::uint64_t line, bool collect, std::int64_t target, structural_batch& batch,
                  const structural_tally* tally) {
  kernel_for(target).walk(classes, text, from, at_end, line, collect, tally, batch);
}

}  // namespace textio::import
#endif  // HWY_ONCE
