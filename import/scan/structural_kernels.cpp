// The block kernels of the structural scan, compiled once per instruction set
// (Highway's foreach_target) and chosen at run time from what the CPU runs.
// The per-target code is in the -inl headers: block_marks (classing bytes,
// marking blocks, the bit walk), record_tally (counting) and record_walk
// (noting records); this file holds the walk's entry point and the choice.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "import/scan/structural_kernels.cpp"
#include <hwy/foreach_target.h>  // IWYU pragma: keep
#include <hwy/highway.h>

#include <cpuid.h>

#include <cstring>
#include <iterator>

#include "import/scan/block_marks-inl.hpp"
#include "import/scan/record_tally-inl.hpp"
#include "import/scan/record_walk-inl.hpp"
#include "import/scan/structural_scan.hpp"

HWY_BEFORE_NAMESPACE();
namespace textio::import {
namespace HWY_NAMESPACE {

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
