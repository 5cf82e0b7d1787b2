// Runs the benchmarks, then prints the ratios the library is held to, each
// measured in this one run, and fails (exit 1) when one is missed. Pass
// --no-ratio-check to only print them.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <string>
#include <vector>

namespace {

// Keeps the CPU time per iteration of every run while printing as usual.
class RecordingReporter : public benchmark::ConsoleReporter {
 public:
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const auto& run : runs) {
      // Times come in each benchmark's own unit; keep nanoseconds.
      const double ns = run.GetAdjustedCPUTime() / benchmark::GetTimeUnitMultiplier(run.time_unit) * 1e9;
      if (run.run_type == Run::RT_Iteration) cpu_ns_[run.benchmark_name()] = ns;
      if (run.run_type == Run::RT_Aggregate && run.aggregate_name == "median") cpu_ns_[run.run_name.str()] = ns;
    }
    ConsoleReporter::ReportRuns(runs);
  }
  const std::map<std::string, double>& times() const { return cpu_ns_; }

 private:
  std::map<std::string, double> cpu_ns_;
};

struct Ratio {
  const char* what;
  const char* numerator;
  const char* denominator;
  double limit;
};

const Ratio ratios[] = {
    {"ten-pair call / default record", "BM_SetParserOptionsTenPairs", "BM_DefaultConstructOptions", 60},
    {"struct form / name-value form", "BM_SetParserOptionsStructTenFields", "BM_SetParserOptionsTenPairs", 1.5},
    {"line reader / default record", "BM_ConstructLineRecordReader", "BM_DefaultConstructOptions", 15},
    {"delimited reader / default record", "BM_ConstructDelimitedRecordReader", "BM_DefaultConstructOptions", 15},
    {"fixed-width reader / default record", "BM_ConstructFixedWidthRecordReader", "BM_DefaultConstructOptions", 15},
    {"decode only \\t / decode no backslash", "BM_DecodeOnlyTabSequences", "BM_DecodeNoBackslash", 4},
};

}  // namespace

int main(int argc, char** argv) {
  bool check = true;
  std::vector<char*> args;
  for (int i = 0; i < argc; ++i) {
    if (std::strcmp(argv[i], "--no-ratio-check") == 0)
      check = false;
    else
      args.push_back(argv[i]);
  }
  int count = static_cast<int>(args.size());
  benchmark::Initialize(&count, args.data());
  if (benchmark::ReportUnrecognizedArguments(count, args.data())) return 2;
  RecordingReporter reporter;
  benchmark::RunSpecifiedBenchmarks(&reporter);
  benchmark::Shutdown();

  const auto& t = reporter.times();
  bool missed = false;
  std::printf("\n%-40s %12s %12s %8s %6s\n", "ratio (CPU time)", "numerator", "denominator", "ratio", "limit");
  for (const auto& r : ratios) {
    const auto n = t.find(r.numerator);
    const auto d = t.find(r.denominator);
    if (n == t.end() || d == t.end() || d->second <= 0) continue;  // filtered out
    const double ratio = n->second / d->second;
    const bool ok = ratio <= r.limit;
    missed = missed || !ok;
    std::printf("%-40s %10.0fns %10.0fns %8.2f %6.1f%s\n", r.what, n->second, d->second, ratio, r.limit,
                ok ? "" : "  MISSED");
  }
  return check && missed ? 1 : 0;
}
