// Reads a file into the in-memory table (import/table/column_table.hpp) and prints
// its shape, for the whole-process race in bench/read_comparison.sh.
// Usage: zvtextimport_table FILE [NAME VALUE ...] (the options of `read`),
// with every core.
#include <algorithm>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "import/table/column_table.hpp"
#include "tools/apply_options.hpp"
#include "tools/message_failure.hpp"

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs("usage: zvtextimport_table FILE [NAME VALUE ...]\n", stderr);
    return 2;
  }
  const std::vector<std::string> arguments(argv + 2, argv + argc);
  textio::parser::options options;
  if (const auto failure = zvtool::apply_option_arguments(std::nullopt, arguments, options)) {
    std::fputs("zvtextimport_table: the options were refused\n", stderr);
    return 1;
  }
  textio::import::text_format format;
  format.threads = std::max(1U, std::thread::hardware_concurrency());
  const auto table = textio::import::read_columns(argv[1], options, format);
  std::size_t text_bytes = 0;
  for (const auto& column : table.columns) text_bytes += column.text.size();
  std::printf("{\"rows\": %zu, \"columns\": %zu, \"text_bytes\": %zu}\n", table.rows, table.columns.size(), text_bytes);
  return 0;
}
