// The record walk: the marks of each block, its record ends and delimiters
// found bit by bit and noted in a structural_batch.
// Per-target code: included by structural_kernels.cpp once for each
// instruction set, hence the toggled guard instead of #pragma once.
#if defined(ZVTP_IMPORT_SCAN_RECORD_WALK_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZVTP_IMPORT_SCAN_RECORD_WALK_INL_H_
#undef ZVTP_IMPORT_SCAN_RECORD_WALK_INL_H_
#else
#define ZVTP_IMPORT_SCAN_RECORD_WALK_INL_H_
#endif

#include <hwy/highway.h>

#include <bit>

#include "import/scan/block_marks-inl.hpp"
#include "import/scan/structural_scan.hpp"

HWY_BEFORE_NAMESPACE();
namespace textio::import {
namespace HWY_NAMESPACE {
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

}  // namespace HWY_NAMESPACE
}  // namespace textio::import
HWY_AFTER_NAMESPACE();

#endif  // ZVTP_IMPORT_SCAN_RECORD_WALK_INL_H_
