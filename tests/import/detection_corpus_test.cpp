// Detection over the corpus of real files: per-field accuracy and the share of
// variables typed right must not fall below what they reached. Mismatches are
// printed to show what to improve.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>

#include "import/detection_corpus.hpp"

namespace {

// The accuracy reached on the corpus, per field; a change that lowers one
// fails here.
const std::map<std::string, double> floors = {
    {"encoding", 1.0},     {"delimiter", 0.984},  {"quote", 1.0},           {"escape", 1.0},
    {"header_lines", 1.0}, {"names_line", 0.992}, {"num_variables", 0.984}, {"decimal", 1.0},
    {"thousands", 1.0},    {"comment", 1.0},      {"table_end", 1.0},       {"types", 1.0},
};

TEST(DetectionCorpus, AccuracyHoldsItsFloor) {
  const std::string dir = ZVTP_DETECT_CORPUS;
  const auto entries = detection_corpus::load_manifest(dir);
  ASSERT_GE(entries.size(), 80u);
  std::map<std::string, int> right;
  int variables = 0;  // over the files whose manifest gives types, one letter per variable
  for (const auto& e : entries) {
    bool whole = true;
    const std::string sample = detection_corpus::read_sample(dir + "/" + e.file, whole);
    const auto got = detection_corpus::detect_fields(sample, whole);
    for (const auto& field : detection_corpus::fields) {
      const std::string& want = e.expected.at(field);
      if (detection_corpus::same_answer(field, want, got.at(field), sample)) {
        ++right[field];
      } else {
        std::printf("  %-48s %-14s expected %-12s got %s\n", e.file.c_str(), field.c_str(), want.c_str(),
                    got.at(field).c_str());
      }
    }
    const auto types = e.expected.find("types");
    if (types == e.expected.end()) continue;
    for (std::size_t i = 0; i < types->second.size(); ++i, ++variables) {
      const char g = i < got.at("types").size() ? got.at("types")[i] : '?';
      if (g == types->second[i]) {
        ++right["types"];
      } else {
        std::printf("  %-48s variable %zu expected %c got %c\n", e.file.c_str(), i + 1, types->second[i], g);
      }
    }
  }
  ASSERT_GT(variables, 500);
  for (const auto& [field, floor] : floors) {
    const double total = field == "types" ? variables : static_cast<double>(entries.size());
    const double accuracy = right[field] / total;
    std::printf("%-14s %5.1f %% (%d of %.0f)\n", field.c_str(), 100 * accuracy, right[field], total);
    EXPECT_GE(accuracy + 1e-9, floor) << field;
  }
}

}  // namespace
