// Throughput of the record writers alone: the rows of bench/generate_csv.py's
// kind held in memory as values, written as CSV and as JSON lines to a stream
// that drops the bytes. Bytes per second count the CSV text of the rows, so
// that the figures compare with the reader's on the same file.
#include <benchmark/benchmark.h>

#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

#include "tools/record_writers.hpp"

namespace {

using textio::import::output_value;
using textio::import::value_kind;

struct null_buffer : std::streambuf {
  std::streamsize xsputn(const char*, std::streamsize n) override { return n; }
  int_type overflow(int_type c) override { return traits_type::not_eof(c); }
};

struct sample {
  std::vector<std::string> texts;  // ten fields a row
  std::size_t csv_bytes = 0;
};

const sample& rows() {
  static const sample s = [] {
    sample out;
    const char* words[] = {"alpha", "beta", "gamma", "delta", "epsilon", "zeta", "eta", "theta", "iota", "kappa"};
    for (int i = 0; i < 20000; ++i) {
      const std::string row[] = {std::to_string(i),
                                 std::to_string(-3523.3447 + i),
                                 words[i % 10],
                                 std::to_string(1695753998 - i),
                                 i % 3 == 0 ? "alpha, beta" : words[(i + 3) % 10],
                                 "8.212743e-01",
                                 i % 7 == 0 ? "say \"hi\"" : "plain",
                                 std::to_string(i % 1000 - 500),
                                 std::string(words[(i + 5) % 10]) + "_" + std::to_string(i % 97),
                                 "0.583"};
      for (const auto& field : row) {
        out.texts.push_back(field);
        out.csv_bytes += field.size() + 1;
      }
    }
    return out;
  }();
  return s;
}

template <typename Writer>
void write_rows(benchmark::State& state, bool numbers) {
  const sample& s = rows();
  std::vector<output_value> values(s.texts.size());
  for (std::size_t i = 0; i < values.size(); ++i) {
    values[i].kind = value_kind::text;
    values[i].bytes = s.texts[i];
    // As numbers: the columns that hold them (the rest stays text).
    if (numbers && (i % 10 == 0 || i % 10 == 1 || i % 10 == 3 || i % 10 == 7 || i % 10 == 9)) {
      values[i].kind = value_kind::number;
      values[i].number = std::stod(s.texts[i]);
    }
  }
  null_buffer sink;
  std::ostream out(&sink);
  for (auto _ : state) {
    Writer writer(out);
    for (std::size_t i = 0; i < values.size(); i += 10) writer.record(std::span(values).subspan(i, 10));
    writer.flush();
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations() * s.csv_bytes));
}

void BM_WriteCsvText(benchmark::State& state) { write_rows<zvtool::csv_writer>(state, false); }
void BM_WriteCsvNumbers(benchmark::State& state) { write_rows<zvtool::csv_writer>(state, true); }
void BM_WriteJsonlText(benchmark::State& state) { write_rows<zvtool::jsonl_writer>(state, false); }
void BM_WriteJsonlNumbers(benchmark::State& state) { write_rows<zvtool::jsonl_writer>(state, true); }
BENCHMARK(BM_WriteCsvText);
BENCHMARK(BM_WriteCsvNumbers);
BENCHMARK(BM_WriteJsonlText);
BENCHMARK(BM_WriteJsonlNumbers);

}  // namespace

BENCHMARK_MAIN();
