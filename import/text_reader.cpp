#include "import/text_reader.hpp"

#include "import/reading/parallel_reading.hpp"
#include "import/reading/reader_settings.hpp"
#include "import/reading/table_reader.hpp"

namespace textio::import {

template class table_reader<char>;
template class table_reader<char16_t>;

read_summary read_table(const textio::parser::options& given, utf8_input& input, record_sink& sink,
                        const text_format& format, const progress_callback& progress,
                        const stray_quote_callback& stray_quote) {
  return read_typed_table(given, input, sink, format, {}, progress, stray_quote);
}

read_summary read_typed_table(const textio::parser::options& given, utf8_input& input, record_sink& sink,
                              const text_format& format, std::span<const variable_typing> types,
                              const progress_callback& progress, const stray_quote_callback& stray_quote) {
  input.decode_from(format.encoding);
  // A compressed input is decompressed on a thread of its own while this
  // one reads.
  if (format.threads > 1) input.decompress_ahead();
  const textio::parser::options opts = effective_options(given);
  if (scans_utf8_bytes(opts)) {
    if (format.threads > 1 && input.is_whole_regular_file() && !input.converts() && sink.takes_part_sinks()) {
      return read_in_parts(given, input, sink, format, types, progress, stray_quote);
    }
    return table_reader<char>(given, input, sink, progress, format, stray_quote, types).run();
  }
  return table_reader<char16_t>(given, input, sink, progress, format, stray_quote, types).run();
}

void read_table(const textio::parser::options& given, utf8_input& input, record_sink& sink,
                const progress_callback& progress) {
  read_table(given, input, sink, text_format{}, progress);
}

}  // namespace textio::import
