// Reads a text file with the reader configuration that an options record
// names, and hands the table to a sink record by record. The pieces:
// utf8_input (bytes), unit_window (units), record_scanner (fields of one
// record), delimiter_rules / fixed_width_cutter (which fields a record has),
// then the variable count, missing values and number conversion here.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "import/output.hpp"
#include "import/utf8_input.hpp"
#include "import/value_conversion.hpp"
#include "parser/options.hpp"

namespace textio::import {

// Called after each block of input with the bytes read so far and the
// input's size (0 when unknown).
using progress_callback = std::function<void(std::uint64_t bytes_read, std::uint64_t total)>;

// Reads all of `input`. Throws the reader's messages (reader_errors.hpp);
// records handed to the sink before the failure stay handed. Memory stays
// bounded by the longest record unless a rule omits variables, which needs
// the whole table first.
void read_table(const textio::parser::options& given, utf8_input& input, record_sink& sink,
                const progress_callback& progress = {});

// Reads as read_table does, and with OutputBuilderType Table converts each
// variable to its type in `types` (by position; variables beyond are text).
// A value that does not convert follows ImportErrorRule: Fill makes it
// missing, OmitRow, OmitVar, Error as for Matrix. Other output types ignore
// `types`.
void read_typed_table(const textio::parser::options& given, utf8_input& input, record_sink& sink,
                      std::span<const variable_typing> types, const progress_callback& progress = {});

}  // namespace textio::import
