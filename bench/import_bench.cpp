// Throughput of the reference reader on a generated CSV (10 columns, mixed
// text and numbers, some quoted fields): the structural scan alone on the
// text in memory (per kernel), counting (the structural scan), reading every value (the full scanner, on UTF-8 bytes),
// and reading as UTF-16 (a non-ASCII delimiter forces that path), and one
// wide record typed field by field. The comparison with other programs on a 256 MiB file
// is bench/read_comparison.sh.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "import/output.hpp"
#include "import/scan/structural_scan.hpp"
#include "import/text_reader.hpp"
#include "import/input/utf8_input.hpp"
#include "parser/options.hpp"
#include "zvdelim/get_or_create_delim.hpp"

namespace {

// A file of about 16 MiB, written once.
const std::string& sample_path() {
  static const std::string path = [] {
    std::string file = "/tmp/zvtextimport_bench_" + std::to_string(::getpid()) + ".csv";
    std::ofstream out(file, std::ios::binary);
    std::string row;
    for (int i = 0; out.tellp() < (16 << 20); ++i) {
      row = std::to_string(i) + "," + std::to_string(i * 0.37) + ",gamma," + std::to_string(i * 7919) +
            (i % 3 == 0 ? ",\"alpha, beta\"" : ",delta") + ",8.2127e-01" +
            (i % 7 == 0 ? ",\"say \"\"hi\"\"\"" : ",plain") + ",-404,zeta_" + std::to_string(i % 97) + ",0.583\n";
      out << row;
    }
    return file;
  }();
  return path;
}

struct null_sink : textio::import::record_sink {
  void header(const textio::import::table_header&) override {}
  void record(std::span<const textio::import::output_value> values) override {
    benchmark::DoNotOptimize(values.data());
    fields += values.size();
  }
  std::size_t fields = 0;
};

struct counting_sink : null_sink {
  bool counts_only() const override { return true; }
  void record_count(std::size_t n, std::uint64_t records) override { fields += n * records; }
};

template <class Sink>
void read_sample(benchmark::State& state, const textio::parser::options& opts) {
  std::int64_t bytes = 0;
  for (auto _ : state) {
    textio::import::utf8_input input(sample_path());
    Sink sink;
    textio::import::read_table(opts, input, sink);
    benchmark::DoNotOptimize(sink.fields);
    bytes += static_cast<std::int64_t>(input.bytes_read());
  }
  state.SetBytesProcessed(bytes);
}

void BM_CountDelimited(benchmark::State& state) { read_sample<counting_sink>(state, textio::parser::options()); }
BENCHMARK(BM_CountDelimited)->Unit(benchmark::kMillisecond);

void BM_ReadDelimitedValues(benchmark::State& state) { read_sample<null_sink>(state, textio::parser::options()); }
BENCHMARK(BM_ReadDelimitedValues)->Unit(benchmark::kMillisecond);

void BM_ReadDelimitedUtf16(benchmark::State& state) {
  textio::parser::options opts;
  opts.delimiter(std::vector<ustring>{u",", u"\u00a6"});
  read_sample<null_sink>(state, opts);
}
BENCHMARK(BM_ReadDelimitedUtf16)->Unit(benchmark::kMillisecond);

// One line of `fields` fields (whole numbers, decimals and words by turns,
// as bench/generate_wide.py writes them) read with a type for each field:
// the time per field should not grow with the line (bench/wide_records.sh
// measures whole processes and their memory).
void BM_ReadWideRecord(benchmark::State& state) {
  const auto fields = static_cast<std::size_t>(state.range(0));
  std::string line;
  std::vector<textio::import::variable_typing> types(fields);
  const char* const words[] = {"alpha", "beta", "gamma", "delta"};
  for (std::size_t i = 0; i < fields; ++i) {
    if (i != 0) line += ',';
    if (i % 3 == 0) line += std::to_string(i);
    if (i % 3 == 1) line += std::to_string(i % 1000) + ".125";
    if (i % 3 == 2) line += words[i % 4];
    types[i].type = i % 3 == 2 ? textio::import::value_type::string : textio::import::value_type::double_;
  }
  line += '\n';
  struct parts_sink : null_sink {
    bool takes_parts() const override { return true; }
    void record_part(std::span<const textio::import::output_value> values) override { fields += values.size(); }
  };
  for (auto _ : state) {
    textio::import::utf8_input input(line, "wide");
    parts_sink sink;
    textio::import::read_typed_table(textio::parser::options(), input, sink, textio::import::text_format{}, types);
    benchmark::DoNotOptimize(sink.fields);
  }
  state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations()) * state.range(0));
}
BENCHMARK(BM_ReadWideRecord)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

// The structural scan over the whole sample in memory, counting records and
// fields, with one kernel.
void BM_StructuralScan(benchmark::State& state, std::int64_t target) {
  std::ifstream in(sample_path(), std::ios::binary);
  const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  using namespace textio::import;
  scan_rules<char> rules;
  rules.field_delimiters = string_matcher<char>(textio::get_or_create_delim({u","}));
  rules.line_endings = string_matcher<char>(textio::get_or_create_delim({u"\n", u"\r", u"\r\n"}));
  rules.quotes = true;
  rules.trim = true;
  rules.whitespace = u" \t";
  rules.finish();
  structural_scanner scanner(*structural_classes::for_rules(rules), false, target);
  for (auto _ : state) {
    std::size_t records = 0;
    std::size_t fields = 0;
    const auto out = scanner.scan(text, true, 1, [&](const structural_record& r) {
      ++records;
      fields += r.fields;
      return true;
    });
    if (out.what != structural_stop::end_of_input) state.SkipWithError("the sample left the structural scan");
    benchmark::DoNotOptimize(records);
    benchmark::DoNotOptimize(fields);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(text.size()));
}

}  // namespace

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  for (const std::int64_t target : textio::import::structural_targets()) {
    benchmark::RegisterBenchmark(
        (std::string("BM_StructuralScan/") + textio::import::structural_target_name(target)).c_str(), BM_StructuralScan,
        target)
        ->Unit(benchmark::kMillisecond);
  }
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  std::remove(sample_path().c_str());
  return 0;
}
