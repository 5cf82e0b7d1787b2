// The escape decoder on 1 MiB of text (2^19 units): once with no backslash at
// all, once made only of "\t" pairs. Every pair shortens the text, so the
// second case shows whether the tail is moved once or once per sequence.
// Both include the copy of the input into the working string.
#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>

#include "name_value/escape_sequences.hpp"
#include "zvcore/ustring.hpp"

namespace {

constexpr std::size_t text_units = (std::size_t{1} << 20) / sizeof(char16_t);

void decode_copy_of(benchmark::State& state, const ustring& input) {
  ustring work;
  work.reserve(input.size());
  for (auto _ : state) {
    work.assign(input);
    const bool ok = textio::options::decode_escape_sequences(work);
    benchmark::DoNotOptimize(ok);
    benchmark::DoNotOptimize(work.data());
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) *
                          static_cast<std::int64_t>(input.size() * sizeof(char16_t)));
}

void BM_DecodeNoBackslash(benchmark::State& state) {
  ustring input;
  for (std::size_t i = 0; i < text_units; ++i) input.push_back(static_cast<char16_t>(u'a' + i % 26));
  decode_copy_of(state, input);
}

void BM_DecodeOnlyTabSequences(benchmark::State& state) {
  ustring input;
  for (std::size_t i = 0; i < text_units / 2; ++i) input.append(u"\\t");
  decode_copy_of(state, input);
}

BENCHMARK(BM_DecodeNoBackslash)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_DecodeOnlyTabSequences)->Unit(benchmark::kMicrosecond);

}  // namespace
