// Reads a text file with the reader configuration that an options record
// names, and hands the table to a sink record by record. The pieces:
// utf8_input (bytes), unit_window (units), scan_setup with record_scanner or
// structural_scan and structural_fields (the fields of one record),
// header_lines (names, units, descriptions), record_shaping with
// delimiter_rules / fixed_width_cutter (the cells of a record and the
// variable count), value_stage (missing values, import errors, conversion),
// omitted_variables (OmitVar), output.hpp (sinks).
#pragma once

#include <span>

#include "import/output.hpp"
#include "import/read_events.hpp"
#include "import/text_format.hpp"
#include "import/input/utf8_input.hpp"
#include "import/values/value_conversion.hpp"
#include "parser/options.hpp"

namespace textio::import {

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
// A value that does not convert becomes what its typing says: under
// ImportErrorRule (Fill makes it missing, OmitRow, OmitVar, Error as for
// Matrix), its text, or a NotConverted error; the summary counts them per
// variable. Other output types ignore `types`.
read_summary read_typed_table(const textio::parser::options& given, utf8_input& input, record_sink& sink,
                              const text_format& format, std::span<const variable_typing> types,
                              const progress_callback& progress = {}, const stray_quote_callback& stray_quote = {});

// read_table in the default format: UTF-8, '"' doubled, the whole input.
void read_table(const textio::parser::options& given, utf8_input& input, record_sink& sink,
                const progress_callback& progress = {});

}  // namespace textio::import
