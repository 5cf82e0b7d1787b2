// Detection time: per file of the detection corpus (median and worst over
// the files, each file's best of the iterations), and on a 1 MiB sample of
// the generated CSV that bench/read_comparison.sh reads, which is what
// detection costs before reading a large file of that kind.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include "import/detect/detection.hpp"
#include "import/detection_corpus.hpp"

namespace {

struct corpus_file {
  std::string name;
  std::string sample;
  bool whole = true;
  double best_seconds = 1e9;
};

std::vector<corpus_file>& corpus() {
  static std::vector<corpus_file> files = [] {
    std::vector<corpus_file> out;
    const std::string dir = ZVTP_DETECT_CORPUS;
    for (const auto& e : detection_corpus::load_manifest(dir)) {
      corpus_file f;
      f.name = e.file;
      f.sample = detection_corpus::read_sample(dir + "/" + e.file, f.whole);
      out.push_back(std::move(f));
    }
    return out;
  }();
  return files;
}

void BM_DetectCorpusFiles(benchmark::State& state) {
  auto& files = corpus();
  for (auto _ : state) {
    for (auto& f : files) {
      const auto start = std::chrono::steady_clock::now();
      auto r = textio::import::detect(f.sample, f.whole, {}, {});
      benchmark::DoNotOptimize(r);
      const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
      f.best_seconds = std::min(f.best_seconds, s);
    }
  }
  std::vector<double> times;
  const corpus_file* worst = &files.front();
  for (const auto& f : files) {
    times.push_back(f.best_seconds);
    if (f.best_seconds > worst->best_seconds) worst = &f;
  }
  std::sort(times.begin(), times.end());
  state.counters["files"] = static_cast<double>(files.size());
  state.counters["median_ms"] = 1e3 * times[times.size() / 2];
  state.counters["worst_ms"] = 1e3 * times.back();
  std::fprintf(stderr, "slowest corpus file: %s (%.3f ms)\n", worst->name.c_str(), 1e3 * worst->best_seconds);
}
BENCHMARK(BM_DetectCorpusFiles)->Unit(benchmark::kMillisecond);

// The first 1 MiB (to a line end) of a CSV like bench/generate_csv.py's.
void BM_DetectOneMiBSample(benchmark::State& state) {
  std::string sample;
  for (int i = 0; sample.size() < textio::import::detection_sample_bytes; ++i) {
    sample += std::to_string(i) + "," + std::to_string(i * 0.37) + ",gamma," + std::to_string(i * 7919) +
              (i % 3 == 0 ? ",\"alpha, beta\"" : ",delta") + ",8.2127e-01" +
              (i % 7 == 0 ? ",\"say \"\"hi\"\"\"" : ",plain") + ",-404,zeta_" + std::to_string(i % 97) + ",0.583\n";
  }
  for (auto _ : state) {
    auto r = textio::import::detect(sample, false, {}, {});
    benchmark::DoNotOptimize(r);
  }
  state.SetBytesProcessed(static_cast<std::int64_t>(state.iterations()) * static_cast<std::int64_t>(sample.size()));
}
BENCHMARK(BM_DetectOneMiBSample)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
