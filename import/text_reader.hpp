// Reads a text file with the reader configuration that an options record
// names, and hands the table to a sink record by record. The pieces:
// utf8_input (bytes), unit_window (units), scan_setup with record_scanner or
// structural_scan and structural_fields (the fields of one record),
// header_lines (names, units, descriptions), record_shaping with
// delimiter_rules / fixed_width_cutter (the cells of a record and the
// variable count), value_stage (missing values, import errors, conversion),
// omitted_variables (OmitVar), output.hpp (sinks).
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "import/output.hpp"
#include "import/text_format.hpp"
#include "import/utf8_input.hpp"
#include "import/value_conversion.hpp"
#include "parser/options.hpp"

namespace textio::import {

// Called after each block of input with the bytes read so far and the
// input's size (0 when unknown).
using progress_callback = std::function<void(std::uint64_t bytes_read, std::uint64_t total)>;

// Called once when a quote that was detected, not given, never closes: from
// there on quotes are read as text. Line and column (UTF-16 units) are 1-based.
using stray_quote_callback = std::function<void(std::uint64_t line, std::uint64_t column)>;

struct read_summary {
  // Physical lines after the format's table end, counted but not read.
  std::uint64_t lines_left_unread = 0;
  // Parts of the file read on other threads (text_format::threads).
  std::uint64_t parts_on_threads = 0;
};

// Reads all of `input` (up to the format's table end) in the format's
// encoding, quote and escape. Throws the reader's messages
// (reader_errors.hpp); records handed to the sink before the failure stay
// handed. Memory stays bounded by the longest record unless a rule omits
// variables, which needs the whole table first.
read_summary read_table(const textio::parser::options& given, utf8_input& input, record_sink& sink,
                        const text_format& format, const progress_callback& progress = {},
                        const stray_quote_callback& stray_quote = {});

// Reads as read_table does, and with OutputBuilderType Table converts each
// variable to its type in `types` (by position; variables beyond are text).
// A value that does not convert follows ImportErrorRule: Fill makes it
// missing, OmitRow, OmitVar, Error as for Matrix. Other output types ignore
// `types`.
read_summary read_typed_table(const textio::parser::options& given, utf8_input& input, record_sink& sink,
                              const text_format& format, std::span<const variable_typing> types,
                              const progress_callback& progress = {}, const stray_quote_callback& stray_quote = {});

// read_table in the default format: UTF-8, '"' doubled, the whole input.
void read_table(const textio::parser::options& given, utf8_input& input, record_sink& sink,
                const progress_callback& progress = {});

}  // namespace textio::import
