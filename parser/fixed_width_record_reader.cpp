#include "parser/record_readers.hpp"

#include <numeric>
#include <utility>

namespace textio::parser {

FixedWidthRecordReader::FixedWidthRecordReader(const options& o)
    : opts(&o),
      field_widths(o.field_widths()),
      line_delimiter(textio::get_or_create_delim(o.line_ending())),
      // Unsigned arithmetic: a sum past 2^64 wraps, by design unchecked.
      record_width(std::accumulate(field_widths.begin(), field_widths.end(), std::uint64_t{0})) {
  const std::vector<ustring>& endings = o.line_ending();
  stop_chars.reserve(endings.size());
  // operator[] at size() reads the terminator, so an empty ending adds U+0000.
  for (const ustring& ending : endings) stop_chars.push_back(ending[0]);
}

FixedWidthRecordReader::FixedWidthRecordReader(const FixedWidthRecordReader& other) = default;

FixedWidthRecordReader::FixedWidthRecordReader(FixedWidthRecordReader&& other) noexcept
    : opts(other.opts),
      field_widths(std::move(other.field_widths)),
      line_delimiter(std::move(other.line_delimiter)),
      stop_chars(std::move(other.stop_chars)),
      record_width(other.record_width) {
  // A moved-from string is only "valid but unspecified" (a short one may be
  // copied); the reader promises an empty one.
  other.stop_chars.clear();
  other.field_widths.clear();
}

FixedWidthRecordReader::~FixedWidthRecordReader() = default;

}  // namespace textio::parser
