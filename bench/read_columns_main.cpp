// Reads a file into memory and prints the table's shape, for the
// whole-process race in bench/read_comparison.sh. Usage:
//   zvtextimport_table FILE [--typed] [--threads N] [NAME VALUE ...]
// Without --typed: the text-cell table (import/table/column_table.hpp) with
// the options as given. With --typed: the typed table of read_table, with
// detection and types as `zvtextparser read` has them by default.
// Every core unless --threads says otherwise.
#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "import/read.hpp"
#include "import/table/column_table.hpp"
#include "tools/apply_options.hpp"
#include "tools/message_failure.hpp"

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs("usage: zvtextimport_table FILE [--typed] [--threads N] [NAME VALUE ...]\n", stderr);
    return 2;
  }
  bool typed = false;
  unsigned threads = std::max(1U, std::thread::hardware_concurrency());
  std::vector<std::string> arguments;
  for (int i = 2; i < argc; ++i) {
    const std::string_view a = argv[i];
    if (a == "--typed") {
      typed = true;
    } else if (a == "--threads" && i + 1 < argc) {
      threads = static_cast<unsigned>(std::stoul(argv[++i]));
    } else {
      arguments.emplace_back(a);
    }
  }
  textio::parser::options options;
  if (const auto failure = zvtool::apply_option_arguments(std::nullopt, arguments, options)) {
    std::fputs("zvtextimport_table: the options were refused\n", stderr);
    return 1;
  }
  if (typed) {
    textio::import::read_settings settings;
    settings.threads = threads;
    const auto got = textio::import::read_table(textio::import::read_source::file(argv[1]), options, settings);
    std::printf("{\"rows\": %lld, \"columns\": %zu, \"batches\": %zu}\n", static_cast<long long>(got.table.rows()),
                got.table.fields.size(), got.table.batches.size());
    return 0;
  }
  textio::import::text_format format;
  format.threads = threads;
  const auto table = textio::import::read_columns(argv[1], options, format);
  std::size_t text_bytes = 0;
  for (const auto& column : table.columns) text_bytes += column.text.size();
  std::printf("{\"rows\": %zu, \"columns\": %zu, \"text_bytes\": %zu}\n", table.rows, table.columns.size(), text_bytes);
  return 0;
}
