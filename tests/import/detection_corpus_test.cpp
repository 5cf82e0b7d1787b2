// Detection over the corpus of real files: per-field accuracy must not fall
// below what it reached. Mismatches are printed to show what to improve.
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
    {"thousands", 1.0},    {"comment", 1.0},      {"table_end", 1.0},
};

const double type_accuracy_floor = 1.0;

TEST(DetectionCorpus, PerFieldAccuracyHoldsItsFloor) {
  const std::string dir = ZVTP_DETECT_CORPUS;
  const auto entries = detection_corpus::load_manifest(dir);
  ASSERT_GE(entries.size(), 80u);
  std::map<std::string, int> right;
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
  }
  for (const auto& field : detection_corpus::fields) {
    const double accuracy = static_cast<double>(right[field]) / static_cast<double>(entries.size());
    std::printf("%-14s %5.1f %% (%d of %zu)\n", field.c_str(), 100 * accuracy, right[field], entries.size());
    EXPECT_GE(accuracy + 1e-9, floors.at(field)) << field;
  }
}

// Variable types, one letter per variable, over the files whose manifest
// gives them: the share of variables typed right must not fall.
TEST(DetectionCorpus, VariableTypeAccuracyHoldsItsFloor) {
  const std::string dir = ZVTP_DETECT_CORPUS;
  std::map<char, int> right;
  std::map<char, int> total;
  for (const auto& e : detection_corpus::load_manifest(dir)) {
    const auto types = e.expected.find("types");
    if (types == e.expected.end() || types->second.empty()) continue;
    const std::string& want = types->second;
    bool whole = true;
    const std::string sample = detection_corpus::read_sample(dir + "/" + e.file, whole);
    const std::string got = detection_corpus::detect_fields(sample, whole).at("types");
    for (std::size_t i = 0; i < want.size(); ++i) {
      const char g = i < got.size() ? got[i] : '?';
      ++total[want[i]];
      if (g == want[i]) {
        ++right[want[i]];
      } else {
        std::printf("  %-48s variable %zu expected %c got %c\n", e.file.c_str(), i + 1, want[i], g);
      }
    }
  }
  int all_right = 0;
  int all = 0;
  for (const auto& [type, n] : total) {
    std::printf("type %c %5.1f %% (%d of %d)\n", type, 100.0 * right[type] / n, right[type], n);
    all_right += right[type];
    all += n;
  }
  ASSERT_GT(all, 500);
  const double accuracy = static_cast<double>(all_right) / all;
  std::printf("types %5.1f %% (%d of %d)\n", 100 * accuracy, all_right, all);
  EXPECT_GE(accuracy + 1e-9, type_accuracy_floor);
}

}  // namespace
