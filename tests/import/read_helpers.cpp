#include "import/read_helpers.hpp"

#include <unistd.h>
#include <zlib.h>

#include <algorithm>
#include <atomic>
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
  std::ofstream(path, std::ios::binary) << contents;
  return path;
}

std::string gzip(const std::string& text, int window_bits) {
  z_stream z{};
  deflateInit2(&z, 6, Z_DEFLATED, window_bits, 8, Z_DEFAULT_STRATEGY);
  std::string out(deflateBound(&z, text.size()) + 32, '\0');
  z.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(text.data()));
  z.avail_in = static_cast<uInt>(text.size());
  z.next_out = reinterpret_cast<Bytef*>(out.data());
  z.avail_out = static_cast<uInt>(out.size());
  deflate(&z, Z_FINISH);
  out.resize(z.total_out);
  deflateEnd(&z);
  return out;
}

read_output read_file(const std::string& path, const std::vector<std::string>& args) {
  std::vector<std::string> all{path, "--no-detect"};
  all.insert(all.end(), args.begin(), args.end());
  if (std::find(args.begin(), args.end(), "OutputBuilderType") == args.end()) {
    all.insert(all.end(), {"OutputBuilderType", "cell"});
  }
  std::ostringstream text;
  read_output out;
  const auto result = zvtool::run_read(zvtool::parse_subcommand_arguments("read", all), text);
  out.status = result.status;
  out.err = result.err;
  out.raw = text.str();
  std::istringstream lines(out.raw);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with("{\"error\"")) {
      out.error = line;
    } else if (out.header.empty() && out.records.empty()) {
      out.header = line;
    } else {
      out.records.push_back(line);
    }
  }
  return out;
}

std::string joined(const read_output& out) {
  std::string text;
  for (const auto& r : out.records) text += (text.empty() ? "" : " | ") + r;
  if (out.error.empty()) return text;
  // The error's key and arguments as the error line writes them.
  const auto field = [&](const std::string& name, char close) {
    const std::size_t begin = out.error.find(name) + name.size();
    return out.error.substr(begin, out.error.find(close, begin) - begin);
  };
  return text + (text.empty() ? "" : " | ") + field("\"key\": \"", '"') + "(" + field("\"arguments\": [", ']') + ")";
}

}  // namespace import_test
