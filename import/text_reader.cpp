#include "import/text_reader.hpp"

#include "import/reading/parallel_reading.hpp"
#include "import/reading/read_path.hpp"
#include "import/reading/table_reader.hpp"

namespace textio::import {

read_summary read_table(const textio::parser::options& given, utf8_input& input, record_sink& sink,
                        const text_format& format, const progress_callback& progress,
                        const stray_quote_callback& stray_quote) {
  return read_typed_table(given, input, sink, format, {}, progress, stray_quote);
}

read_summary read_typed_table(const textio::parser::options& given, utf8_input& input, record_sink& sink,
                              const text_format& format, std::span<const variable_typing> types,
                              const progress_callback& progress, const stray_quote_callback& stray_quote) {
  input.decode_from(format.encoding);
  const read_path path = choose_read_path(given, input, sink, format, types);
  if (path.on_threads) return read_in_parts(path, input, sink, format, types, progress, stray_quote);
  // (4 MiB: enough that neither thread waits on the other for long.)
  if (path.decompress_ahead) input.spool_ahead(std::uint64_t{4} << 20, true);
  if (path.utf8_bytes) return table_reader<char>(path, input, sink, progress, format, stray_quote, types).run().summary;
  return table_reader<char16_t>(path, input, sink, progress, format, stray_quote, types).run().summary;
}

void read_table(const textio::parser::options& given, utf8_input& input, record_sink& sink,
                const progress_callback& progress) {
  read_table(given, input, sink, text_format{}, progress);
}

}  // namespace textio::import
