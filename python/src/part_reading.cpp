#include "python/src/part_reading.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <utility>

#include "import/detect/type_detection.hpp"
#include "import/input/utf8_input.hpp"
#include "import/reader_errors.hpp"
#include "import/table/arrow_table.hpp"
#include "import/text_reader.hpp"
#include "tools/apply_options.hpp"
#include "tools/message_failure.hpp"
#include "tools/reading_choices.hpp"
#include "tools/variable_types.hpp"

namespace zvpy {
namespace ti = textio::import;

namespace {

// Takes records and keeps none: finding record starts needs no values.
struct discarding_sink : ti::record_sink {
  void header(const ti::table_header&) override {}
  void record(std::span<const ti::output_value>) override {}
};

textio::parser::options options_of(const read_plan& plan) {
  textio::parser::options record;
  if (const auto failure = zvtool::apply_option_arguments(std::nullopt, plan.option_pairs, record)) {
    throw std::runtime_error("the plan's options are refused: " + zvtool::message_line(*failure));
  }
  return record;
}

// The file opened for positional reads, closed when done.
class open_file {
 public:
  explicit open_file(const std::string& path) : fd_(::open(path.c_str(), O_RDONLY | O_CLOEXEC)) {
    if (fd_ < 0) {
      textio::throw_msg_id_exception(ZORVEK::textio::reader::CannotReadFile(path, std::strerror(errno)));
    }
  }
  open_file(const open_file&) = delete;
  open_file& operator=(const open_file&) = delete;
  ~open_file() { ::close(fd_); }
  int fd() const noexcept { return fd_; }

 private:
  int fd_;
};

}  // namespace

read_plan plan_read(const std::string& path, const textio::parser::options& options, const ti::read_settings& settings,
                    const std::optional<std::string>& types_json) {
  read_plan plan;
  ti::read_settings asked = settings;
  if (types_json) asked.types = zvtool::type_request_of(types_json);
  const ti::read_outcome found = ti::plan_read(ti::read_source::file(path), options, asked);
  const textio::parser::options& record = found.options;
  plan.format = found.format;
  plan.names = found.names;
  plan.types = found.types;
  // The record as pairs that set it again: the reproducing arguments of a
  // default format hold no tool options.
  for (const std::string& a : zvtool::reproducing_arguments(record, ti::text_format{})) {
    if (a != "--") plan.option_pairs.push_back(a);
  }
  plan.format.threads = 1;
  return plan;
}

std::vector<ti::part_state> part_starts(const std::string& path, const read_plan& plan, std::uint64_t block_bytes) {
  std::vector<ti::part_state> starts{ti::part_state{}};
  const textio::parser::options record = options_of(plan);
  ti::utf8_input input(path);
  input.decode_from(plan.format.encoding);
  discarding_sink sink;
  const ti::read_path how = ti::choose_read_path(record, input, sink, plan.format);
  if (!input.is_whole_regular_file() || input.converts() || !how.utf8_bytes || block_bytes == 0) return starts;
  // (The reader keeps references to its callbacks.)
  const ti::progress_callback no_progress;
  const ti::stray_quote_callback no_stray_quote;
  ti::table_reader<char> reader(how, input, sink, no_progress, plan.format, no_stray_quote, {});
  if (!reader.reads_in_parts()) return starts;
  for (std::uint64_t at = block_bytes; at < input.size(); at += block_bytes) {
    if (at <= starts.back().offset) continue;  // a record longer than a block
    reader.stop_at(at);
    reader.run();
    const auto& stopped = reader.stopped_at();
    if (!stopped) break;
    // Quotes read as text from some place on, or a boundary in the header:
    // such a file is read whole.
    if (!reader.reads_in_parts() || !reader.header_sent() || stopped->line < reader.first_data_line()) {
      return {ti::part_state{}};
    }
    starts.push_back(*stopped);
  }
  return starts;
}

ti::arrow_table read_part(const std::string& path, const read_plan& plan, const ti::part_state& start,
                          std::optional<std::uint64_t> stop) {
  const textio::parser::options record = options_of(plan);
  ti::arrow_table_sink sink;
  const ti::progress_callback no_progress;
  const ti::stray_quote_callback no_stray_quote;
  if (start.offset == 0) {
    ti::utf8_input input(path);
    input.decode_from(plan.format.encoding);
    // Text that is converted, or read in UTF-16 units, is read whole: its
    // offsets are no file offsets.
    const ti::read_path how = ti::choose_read_path(record, input, sink, plan.format, plan.types);
    if (!stop || input.converts() || !how.utf8_bytes) {
      ti::read_typed_table(record, input, sink, plan.format, plan.types, no_progress, no_stray_quote);
      return sink.take();
    }
    ti::table_reader<char> reader(how, input, sink, no_progress, plan.format, no_stray_quote, plan.types);
    reader.stop_at(*stop);
    reader.run();
    return sink.take();
  }
  // The header the first part reads: names, and the types in runs.
  ti::table_header header;
  for (const std::string& name : plan.names) {
    ti::output_value text;
    text.kind = ti::value_kind::text;
    text.bytes = name;
    header.names.push_back(text);
  }
  for (const ti::variable_typing& t : plan.types) {
    const std::string_view name = ti::type_name(t.type);
    if (header.types.empty() || header.types.back().name != name) header.types.push_back({name, 0});
    ++header.types.back().count;
  }
  sink.header(header);
  const open_file file(path);
  ti::utf8_input input(file.fd(), path, start.offset);
  ti::part_plan part;
  part.start = start;
  part.stop = stop.value_or(std::numeric_limits<std::uint64_t>::max());
  ti::table_reader<char> reader(ti::choose_read_path(record, input, sink, plan.format, plan.types), input, sink,
                                no_progress, plan.format, no_stray_quote, plan.types, &part);
  reader.run();
  return sink.take();
}

}  // namespace zvpy
