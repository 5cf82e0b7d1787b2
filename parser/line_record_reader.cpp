#include "parser/record_readers.hpp"

#include <utility>

namespace textio::parser {

// The empty list is a temporary of the mem-initializer and dies once
// delimiters is built, ahead of the third delimiter call.
LineRecordReader::LineRecordReader(const options& opts)
    : delimiters(opts.line_ending(), std::vector<ustring>{}),
      line_delimiter(textio::get_or_create_delim(opts.line_ending())),
      whitespace(&opts.whitespace()),
      reads_empty_lines(opts.empty_line_rule() == enums::EmptyLineRule::Read) {}

LineRecordReader::LineRecordReader(const LineRecordReader& other) = default;

LineRecordReader::LineRecordReader(LineRecordReader&& other)  // NOLINT(performance-noexcept-move-constructor)
    : delimiters(other.delimiters),
      line_delimiter(std::move(other.line_delimiter)),
      whitespace(other.whitespace),
      reads_empty_lines(other.reads_empty_lines) {}

LineRecordReader::~LineRecordReader() = default;

}  // namespace textio::parser
