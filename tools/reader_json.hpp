// The reader configurations as JSON: each reader's plain fields, after a
// "kind" member that names the reader. Stop characters are sets of code
// units rather than text, so they are written as arrays of integers (an empty
// string's terminator as 0). The delimiter handles and the pointers into the
// options record are not written: the record is reported beside the reader.
#pragma once

#include "parser/record_readers.hpp"
#include "tools/json_writer.hpp"

namespace zvtool {

// {"kind": "line", "stop_chars": [...], "reads_empty_lines": B}
void write_line_reader(json_writer& out, const textio::parser::LineRecordReader& reader);

// {"kind": "delimited", "quote": 34, "stop_chars": [...]}
void write_delimited_reader(json_writer& out, const textio::parser::DelimitedRecordReader& reader);

// {"kind": "fixedwidth", "field_widths": [...], "record_width": N, "stop_chars": [...]}
void write_fixed_width_reader(json_writer& out, const textio::parser::FixedWidthRecordReader& reader);

}  // namespace zvtool
