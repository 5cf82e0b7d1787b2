// The encoding of a file's bytes: recognised from a sample, and a sample
// converted to UTF-8 for the detector.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace textio::import {

struct encoding_guess {
  std::string name;           // an iconv name: "UTF-8", "UTF-16LE", "WINDOWS-1252", ...
  std::size_t bom_bytes = 0;  // length of the byte-order mark at the start, 0 when none
  double confidence = 0;      // 0 to 1
  std::string reason;
};

// Byte-order marks first, then valid UTF-8, then a legacy encoding.
encoding_guess detect_encoding(std::string_view raw_sample);

// The offset of the byte that shows `raw_sample` is no text in `encoding`,
// or nothing: the first control byte (NUL included; tab, line feed,
// vertical tab, form feed and carriage return are text) when there is more
// than one and they make more than 1 % of the sample, as in binary and
// compressed data. A stray one in a table is read as it stands. UTF-16 and
// UTF-32 hold zero bytes as text and are not judged by their bytes.
std::optional<std::size_t> first_binary_byte(std::string_view raw_sample, const std::string& encoding);

// The sample in `encoding` as UTF-8, without its byte-order mark. A character
// cut off at the end of a sample that is not the whole input is dropped.
// Throws the reader's InvalidEncoding message with the byte offset of the
// first byte that is invalid in that encoding.
std::string decode_sample(std::string_view raw_sample, const std::string& encoding, bool whole_file);

}  // namespace textio::import
