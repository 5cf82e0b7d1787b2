// How one read goes, decided once before any record is read: the effective
// options, the units the scanners read, the way data records take through
// the reader (counted, through the structural scan, as plain text values,
// kept for OmitVar rules) and whether the file is read in parts on several
// threads. The readers of a read, parts included, all work from one.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "import/input/utf8_input.hpp"
#include "import/output.hpp"
#include "import/scan/structural_scan.hpp"
#include "import/text_format.hpp"
#include "import/values/value_conversion.hpp"
#include "parser/options.hpp"

namespace textio::import {

struct read_path {
  textio::parser::options opts;  // the effective options (effective_options)
  bool utf8_bytes = false;       // scanned as UTF-8 bytes, else as UTF-16 units

  // An OmitVar rule keeps the table until its end, to drop variables.
  bool keeps_table = false;
  // Records are only counted: no rule looks at their values.
  bool counts = false;
  // A compressed input not read in parts is decompressed on a thread of
  // its own, ahead of the reading.
  bool decompress_ahead = false;
  // A long record goes to the sink in parts of value_stage::record_part_size.
  bool values_in_parts = false;
  // A rule, or strict typing, may drop or fail a record.
  bool rules_may_drop = false;
  // Plain delimited UTF-8 records (from first_structural_line on, after the
  // header and meta lines) go through the structural scan.
  std::optional<structural_classes> structural;
  std::uint64_t first_structural_line = 0;
  // Records of plain text values go from the structural scan through the
  // value rules to the sink, without shaping (all fields kept, AddVars or
  // Ignore, rules that never drop a record).
  bool plain = false;
  // The data records can be read in parts, each from its start state alone
  // (as long as quotes stay quotes).
  bool parts_readable = false;
  // The file is read in parts on format.threads threads (a compressed one
  // decompressed on a thread of its own into a spool the parts read).
  bool on_threads = false;
};

// The path of reading `input` (its encoding set) into `sink` with the
// user's options `given`, in `format`, with `types` for a typed table.
read_path choose_read_path(const textio::parser::options& given, const utf8_input& input, const record_sink& sink,
                           const text_format& format, std::span<const variable_typing> types = {});

}  // namespace textio::import
