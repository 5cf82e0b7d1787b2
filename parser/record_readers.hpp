// The three reader configurations built from a finished options record: line
// by line, delimited, and fixed-width. Each is a plain record whose fields a
// consumer reads directly; the reading itself is the consumer's.
//
// A reader does not own the options record it was built from: it keeps a
// pointer into it, so that record must outlive the reader and every copy of it
// and stay at the same address. Delimiter objects are shared between a reader
// and its copies. No reader can be assigned.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include <zvtextparser/errors/export.hpp>
#include <zvtextparser/parser/options.hpp>
#include <zvtextparser/parser/stop_characters.hpp>
#include "zvcore/ustring.hpp"
#include "zvdelim/get_or_create_delim.hpp"

namespace textio::parser {

// Takes a file one line at a time.
class ZVTEXTPARSER_API LineRecordReader {
 public:
  // Asks for delimiter objects in this order: line_ending, an empty list,
  // line_ending again.
  explicit LineRecordReader(const options& opts);
  LineRecordReader(const LineRecordReader& other);
  // Copies delimiters (the source keeps them) and takes line_delimiter. The
  // copy may allocate, so this move can throw.
  LineRecordReader(LineRecordReader&& other);  // NOLINT(performance-noexcept-move-constructor)
  LineRecordReader& operator=(const LineRecordReader&) = delete;
  ~LineRecordReader();

  DelimiterPair delimiters;                           // line endings, with an empty second list
  std::shared_ptr<textio::Delimiter> line_delimiter;  // line endings
  const ustring* whitespace;                          // the record's own whitespace field
  bool reads_empty_lines;                             // empty_line_rule is Read
};

// Fields separated by delimiters, records by line endings.
class ZVTEXTPARSER_API DelimitedRecordReader {
 public:
  // The quote character is always U+0022. Asks for delimiter objects in this
  // order: delimiter, line_ending, line_ending, delimiter. The delimiter list
  // is used whether or not it is still to be detected.
  explicit DelimitedRecordReader(const options& opts);
  DelimitedRecordReader(const DelimitedRecordReader& other);
  // Copies quoted_delimiters (the source keeps them) and takes the other two
  // handles. The copy may allocate, so this move can throw.
  DelimitedRecordReader(DelimitedRecordReader&& other);  // NOLINT(performance-noexcept-move-constructor)
  DelimitedRecordReader& operator=(const DelimitedRecordReader&) = delete;
  ~DelimitedRecordReader();

  const options* opts;
  // primary: delimiter; secondary: line_ending; stop_chars of both.
  QuotedDelimiterPair quoted_delimiters;
  std::shared_ptr<textio::Delimiter> line_delimiter;   // line_ending
  std::shared_ptr<textio::Delimiter> field_delimiter;  // delimiter
};

// Fields of given widths, records separated by line endings.
class ZVTEXTPARSER_API FixedWidthRecordReader {
 public:
  // Asks for one delimiter object, for line_ending.
  explicit FixedWidthRecordReader(const options& opts);
  FixedWidthRecordReader(const FixedWidthRecordReader& other);
  // Takes field_widths, line_delimiter and stop_chars; the source's are left
  // empty and null.
  FixedWidthRecordReader(FixedWidthRecordReader&& other) noexcept;
  FixedWidthRecordReader& operator=(const FixedWidthRecordReader&) = delete;
  ~FixedWidthRecordReader();

  const options* opts;
  std::vector<std::uint64_t> field_widths;            // the reader's own copy
  std::shared_ptr<textio::Delimiter> line_delimiter;  // line_ending
  // The first unit of each line ending, in list order, duplicates kept (not a
  // sorted stop-character string); U+0000 for an empty one.
  ustring stop_chars;
  std::uint64_t record_width;  // sum of field_widths, modulo 2^64
};

}  // namespace textio::parser
