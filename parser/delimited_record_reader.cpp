#include "parser/record_readers.hpp"

#include <utility>

namespace textio::parser {

DelimitedRecordReader::DelimitedRecordReader(const options& o)
    : opts(&o),
      quoted_delimiters(u'"', o.delimiter(), o.line_ending()),
      line_delimiter(textio::get_or_create_delim(o.line_ending())),
      field_delimiter(textio::get_or_create_delim(o.delimiter())) {}

DelimitedRecordReader::DelimitedRecordReader(const DelimitedRecordReader& other) = default;

// NOLINTNEXTLINE(performance-noexcept-move-constructor): copying the pair may allocate
DelimitedRecordReader::DelimitedRecordReader(DelimitedRecordReader&& other)
    : opts(other.opts),
      quoted_delimiters(other.quoted_delimiters),
      line_delimiter(std::move(other.line_delimiter)),
      field_delimiter(std::move(other.field_delimiter)) {}

DelimitedRecordReader::~DelimitedRecordReader() = default;

}  // namespace textio::parser
