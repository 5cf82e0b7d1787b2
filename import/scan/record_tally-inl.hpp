// Counting records without noting them: the run of records a tally covers,
// counted in registers.
// Per-target code: included by structural_kernels.cpp once for each
// instruction set, hence the toggled guard instead of #pragma once.
#if defined(ZVTP_IMPORT_SCAN_RECORD_TALLY_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZVTP_IMPORT_SCAN_RECORD_TALLY_INL_H_
#undef ZVTP_IMPORT_SCAN_RECORD_TALLY_INL_H_
#else
#define ZVTP_IMPORT_SCAN_RECORD_TALLY_INL_H_
#endif

#include <hwy/highway.h>

#include <algorithm>

#include "import/scan/block_marks-inl.hpp"
#include "import/scan/structural_scan.hpp"

HWY_BEFORE_NAMESPACE();
namespace textio::import {
namespace HWY_NAMESPACE {
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

}  // namespace HWY_NAMESPACE
}  // namespace textio::import
HWY_AFTER_NAMESPACE();

#endif  // ZVTP_IMPORT_SCAN_RECORD_TALLY_INL_H_
