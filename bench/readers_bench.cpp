// Building each record reader from a default record, with the delimiter
// cache warm (the record's lists have been seen before).
#include <benchmark/benchmark.h>

#include "parser/options.hpp"
#include "parser/record_readers.hpp"

namespace {

template <class Reader>
void BM_ConstructReader(benchmark::State& state) {
  const textio::parser::options opts;
  const Reader warm(opts);  // keeps the cached delimiter objects alive
  for (auto _ : state) {
    Reader reader(opts);
    benchmark::DoNotOptimize(&reader);
  }
}

BENCHMARK(BM_ConstructReader<textio::parser::LineRecordReader>)->Name("BM_ConstructLineRecordReader");
BENCHMARK(BM_ConstructReader<textio::parser::DelimitedRecordReader>)->Name("BM_ConstructDelimitedRecordReader");
BENCHMARK(BM_ConstructReader<textio::parser::FixedWidthRecordReader>)->Name("BM_ConstructFixedWidthRecordReader");

}  // namespace
