// The fields of a record that the structural scan found, in the form the
// record scanner gives them (scanned_record): trimmed unquoted text, quoted
// text with doubled quotes made single, the flags, lines and places that
// record shaping and values read. Records it does not settle (a comment after
// text, one longer than the rules allow) stay with the exact scanner.
#pragma once

#include <string_view>
#include <vector>

#include "import/output.hpp"
#include "import/scan/record_scanner.hpp"
#include "import/scan/structural_scan.hpp"

namespace textio::import {

// Fills `out` as record_scanner<char> with `rules` fills it for record `r` of
// `text`, whose offsets then count from r.begin (the record is read in
// text.substr(r.begin)). False, with `out` unusable, when the exact scanner
// must read the record. `rules` are those the structural classes were made
// for: delimited, trimmed, quotes doubled.
bool fill_scanned_record(std::string_view text, const structural_record& r, const scan_rules<char>& rules,
                         scanned_record<char>& out);

// The values of record `r` when every value is its text and only an empty
// unquoted field is missing (no placeholders, MissingRule Fill), one value a
// field: what fill_scanned_record and the value stage give for a record on
// one line without a comment, all its fields kept. False when the record
// must take that road. Text with doubled quotes made single is kept in
// `scratch` until the next record.
bool plain_text_values(std::string_view text, const structural_record& r, const scan_rules<char>& rules,
                       scanned_record<char>& scratch, std::vector<output_value>& values);

}  // namespace textio::import
