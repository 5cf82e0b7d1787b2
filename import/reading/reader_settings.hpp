// The options record that the reader works from, derived from the one the
// user's options produced: values still to be detected get their stand-ins
// (the delimiter ",", no header lines), and Tabular becomes delimited text
// with the whitespace characters as delimiters, runs of them joined and none
// kept at either end of a record.
#pragma once

#include "parser/options.hpp"

namespace textio::import {

textio::parser::options effective_options(const textio::parser::options& given);

// Whether the text can be scanned as UTF-8 bytes: not fixed-width (widths
// count UTF-16 units), and every delimiter, line ending, comment marker and
// whitespace unit is ASCII, so that a byte that is part of a longer
// character never equals one of them.
bool scans_utf8_bytes(const textio::parser::options& effective);

}  // namespace textio::import
