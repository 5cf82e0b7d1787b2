// Detection: fills in what nobody gave from a bounded sample of the file's
// start, and says what it found and how sure it is. It looks at the sample
// only, so that it costs the same on a small file and a huge one, and it
// never changes a setting the user gave.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <zvtextparser/import/text_format.hpp>
#include <zvtextparser/parser/options.hpp>

namespace textio::import {

// The sample: this many bytes of the file's start, then on to the end of the
// line they stop in.
inline constexpr std::size_t detection_sample_bytes = std::size_t{1} << 20;

// What the user gave. The options record's detection flags say it for the
// delimiter, the header lines and the variable count; `keys` says it for the
// settings without a flag (the option table's own spelling, e.g.
// "DecimalSeparator", "VariableNamesLine").
struct user_choices {
  std::set<std::string> keys;
  std::optional<std::string> encoding;
  std::optional<char> quote;  // '\0': no quote character
  std::optional<escape_style> escape;
};

struct detected_setting {
  std::string setting;  // an option key, or "Encoding", "Quote", "Escape", "TableEnd"
  std::string reason;   // one short sentence
};

struct detection_report {
  std::string encoding;
  char quote = '"';
  escape_style escape = escape_style::doubled;
  std::vector<std::string> variable_names;  // UTF-8
  bool names_generated = false;             // no names row: Var1, Var2, ...
  std::optional<std::uint64_t> table_end_line;
  // Where the sample shows it is no text (first_binary_byte), when the
  // encoding was left open: the byte offset. Confidence is then 0.
  std::optional<std::uint64_t> not_text_at;
  double confidence = 0;            // 0 to 1
  std::vector<std::string> doubts;  // why the confidence is below 1, one short sentence each
  std::vector<detected_setting> filled;
  // Per variable: its type name ("double", "datetime", ...), the missing
  // markers found in it, and for a datetime whether its dates are
  // month-first and whether the sample settled day-first against month-first.
  std::vector<std::string> variable_types;
  std::vector<std::vector<std::string>> missing_markers;
  std::vector<bool> month_first;
  std::vector<bool> date_order_unsettled;
};

struct detection_result {
  textio::parser::options options;  // the user's record with what was detected filled in
  text_format format;
  detection_report report;
};

// Detects from `raw_sample`, the file's first bytes as read (byte-order mark
// included); `whole_file` when the sample is all of the input. Throws the
// reader's messages for bytes that are invalid in a forced encoding.
detection_result detect(std::string_view raw_sample, bool whole_file, const textio::parser::options& given,
                        const user_choices& choices);

}  // namespace textio::import
