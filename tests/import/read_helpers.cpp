#include "import/read_helpers.hpp"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "tools/read_command.hpp"
#include "tools/subcommands.hpp"

namespace import_test {

std::string write_file(const std::string& contents) {
  static std::atomic<int> counter{0};
  const std::string path =
      ::testing::TempDir() + "zvtextimport_" + std::to_string(::getpid()) + "_" + std::to_string(counter++) + ".txt";
  std::ofstream out(path, std::ios::binary);
  out << contents;
  return path;
}

read_output read_file(const std::string& path, const std::vector<std::string>& args) {
  std::vector<std::string> all{path, "--no-detect"};
  all.insert(all.end(), args.begin(), args.end());
  const auto names = [&](std::string_view word) {
    return std::any_of(args.begin(), args.end(), [&](const std::string& a) {
      return a.size() == word.size() && std::equal(a.begin(), a.end(), word.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
             });
    });
  };
  if (!names("OutputBuilderType") && !names("--struct")) {
    all.push_back("OutputBuilderType");
    all.push_back("cell");
  }
  const zvtool::parsed_arguments scanned = zvtool::parse_subcommand_arguments("read", all);
  std::ostringstream text;
  const zvtool::tool_result result = zvtool::run_read(scanned, text);
  read_output out;
  out.status = result.status;
  out.raw = text.str();
  std::istringstream lines(out.raw);
  std::string line;
  bool first = true;
  while (std::getline(lines, line)) {
    if (line.starts_with("{\"error\"")) {
      out.error = line;
    } else if (first) {
      out.header = line;
    } else {
      out.records.push_back(line);
    }
    first = false;
  }
  return out;
}

read_output read_text(const std::string& contents, const std::vector<std::string>& args) {
  return read_file(write_file(contents), args);
}

std::string joined(const read_output& out) {
  std::string text;
  for (const auto& r : out.records) {
    if (!text.empty()) text += " | ";
    text += r;
  }
  return text;
}

}  // namespace import_test
