// The scan rules that a reader's settings give: those of header and skipped
// lines, read whole, and those of data records, by parser type (delimiters,
// line endings, quotes, comments, whitespace, field widths).
#pragma once

#include <cstdint>
#include <vector>

#include "import/scan/record_scanner.hpp"
#include "import/text_format.hpp"
#include "parser/options.hpp"

namespace textio::import {

template <class CharT>
struct reader_scan_rules {
  scan_rules<CharT> lines;            // header lines and names, units, descriptions lines outside a data parser
  scan_rules<CharT> data;             // data records
  bool reads_empty_lines = false;     // whether the line parser reads an empty line as a record
  std::vector<std::uint64_t> widths;  // fixed width: the width of each field
};

// The rules for `opts`, which are the effective options of the reader.
template <class CharT>
reader_scan_rules<CharT> scan_rules_for(const textio::parser::options& opts, const text_format& text);

}  // namespace textio::import
