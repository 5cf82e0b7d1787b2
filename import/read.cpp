#include "import/read.hpp"

#include <algorithm>
#include <memory>
#include <thread>

#include "import/detect/sample_types.hpp"
#include "import/detect/type_detection.hpp"
#include "import/input/utf8_input.hpp"
#include "import/input/utf8_text.hpp"
#include "import/reader_errors.hpp"
#include "import/text_reader.hpp"
#include "zvcore/exceptions.hpp"

namespace textio::import {
namespace {

namespace msg = ZORVEK::textio::reader;

// Records the type sample keeps: the first this many.
constexpr std::size_t type_sample_records = 1000;

std::unique_ptr<utf8_input> open_input(const read_source& source) {
  switch (source.from) {
    case read_source::origin::descriptor:
      return std::make_unique<utf8_input>(source.fd, source.name);
    case read_source::origin::memory:
      return std::make_unique<utf8_input>(source.bytes, source.name);
    case read_source::origin::path:
      break;
  }
  return std::make_unique<utf8_input>(source.name);
}

text_format format_given(const user_choices& given) {
  text_format format;
  if (given.encoding) format.encoding = *given.encoding;
  if (given.quote) format.quote = *given.quote;
  if (given.escape) format.escape = *given.escape;
  return format;
}

bool blank(std::string_view sample) {
  if (sample.starts_with("\xEF\xBB\xBF")) sample.remove_prefix(3);
  return sample.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

detection_result detect_from(utf8_input& input, const textio::parser::options& options, const user_choices& given) {
  const std::string_view sample = input.sample(detection_sample_bytes);
  detection_result detected = detect(sample, input.sample_is_whole_input(), options, given);
  if (detected.report.not_text_at) textio::throw_msg_id_exception(msg::NotText(*detected.report.not_text_at));
  return detected;
}

// The names and first records of the sample as text, for their types.
struct text_sample : record_sink {
  std::vector<std::string> names;
  std::vector<std::vector<std::string>> rows;
  std::size_t variables = 0;

  void header(const table_header& h) override {
    for (const auto& n : h.names) names.push_back(utf8_of_text(n));
    variables = std::max(variables, names.size());
  }
  void record(std::span<const output_value> values) override {
    record_part(values);
    if (part_open) variables = std::max(variables, rows.back().size());
    part_open = false;
  }
  // The reading of the sample stops once it holds its records.
  bool satisfied() const override { return rows.size() == type_sample_records && !part_open; }
  // A wide record comes in parts, so that its values are never held whole
  // beside their texts.
  bool takes_parts() const override { return true; }
  void record_part(std::span<const output_value> values) override {
    if (!part_open) {
      if (rows.size() == type_sample_records) return;
      rows.emplace_back();
      part_open = true;
    }
    for (const auto& v : values) rows.back().push_back(utf8_of_text(v));
  }

 private:
  bool part_open = false;  // the last row takes the next part
};

// Reads the sample's records as text, up to type_sample_records. A record
// cut off by the sample's end is left out; a reading error ends the sample
// early (the full read reports it).
text_sample sample_records(std::string_view raw, bool whole, const textio::parser::options& options,
                           text_format format) {
  text_sample sample;
  textio::parser::options as_text = options;
  as_text.output_type(textio::enums::OutputBuilderType::Cell);
  format.threads = 1;
  try {
    utf8_input input(raw, "sample");
    if (format.encoding != "UTF-8") input.decode_from(format.encoding);
    read_table(as_text, input, sample, format);
  } catch (const foundation::core::except::IMsgIDException&) {
  }
  if (!whole && !sample.rows.empty() && sample.rows.size() < type_sample_records) sample.rows.pop_back();
  return sample;
}

// The types detection found, overridden by the caller's.
std::vector<variable_typing> apply_request(std::vector<variable_typing> types, const type_request& request,
                                           const std::vector<std::string>& names) {
  const std::size_t variables = std::max(types.size(), names.size());
  if (request.by_position.size() > variables && variables > 0) {
    textio::throw_msg_id_exception(msg::TooManyTypes(request.by_position.size(), variables));
  }
  const auto set = [&types](std::size_t i, value_type type) {
    if (types.size() <= i) types.resize(i + 1);
    types[i] = variable_typing{type, types[i].dates, {}};
  };
  for (std::size_t i = 0; i < request.by_position.size(); ++i) {
    if (request.by_position[i]) set(i, *request.by_position[i]);
  }
  for (const auto& [name, type] : request.by_name) {
    const auto at = std::find(names.begin(), names.end(), name);
    if (at == names.end()) textio::throw_msg_id_exception(msg::UnknownVariable(name));
    set(static_cast<std::size_t>(at - names.begin()), type);
  }
  return types;
}

void find_types(read_outcome& out, const read_settings& settings, std::string_view raw, bool whole) {
  std::vector<variable_typing> types;
  std::vector<bool> unsettled;
  std::vector<std::string> names;
  if (out.report) {
    types = variable_typings(*out.report);
    unsettled = out.report->date_order_unsettled;
    names = out.report->variable_names;
  } else {
    std::vector<detected_type> detected;
    {
      // (The sample's texts go before the types are copied out: a wide
      // record holds many.)
      text_sample sample = sample_records(raw, whole, out.options, out.format);
      detected = detect_types(sample.rows, sample.variables, type_detection_settings_of(out.options));
      names = std::move(sample.names);
    }
    types.reserve(detected.size());
    unsettled.reserve(detected.size());
    for (detected_type& d : detected) {
      types.push_back(std::move(d.typing));
      unsettled.push_back(d.date_order_unsettled);
    }
  }
  if (!out.format.variable_names.empty()) names = out.format.variable_names;
  out.types = apply_request(std::move(types), settings.types, names);
  out.names = std::move(names);
  if (settings.strict) {
    for (variable_typing& t : out.types) t.unconverted = unconverted_value::reading_error;
  }
  for (std::size_t i = 0; i < unsettled.size() && i < out.types.size(); ++i) {
    if (unsettled[i] && out.types[i].type == value_type::datetime) out.date_order_unsettled.push_back(i);
  }
}

}  // namespace

namespace {

// Detection and the types: all that reading `input` goes by, before its
// first record.
// `counting`: the sink only counts, so types matter only where a rule looks
// at the values.
read_outcome prepare(utf8_input& input, const textio::parser::options& options, const read_settings& settings,
                     bool counting = false) {
  read_outcome out;
  out.options = options;
  out.format = format_given(settings.given);
  const std::string_view raw = input.sample(detection_sample_bytes);
  const bool whole = input.sample_is_whole_input();
  out.empty_input = whole && blank(raw);
  if (settings.detect && !out.empty_input) {
    detection_result detected = detect_from(input, options, settings.given);
    out.options = std::move(detected.options);
    out.format = std::move(detected.format);
    out.report = std::move(detected.report);
  }
  if (settings.table_may_end_line) {
    out.format.table_end_line = settings.table_may_end_line;
    out.format.table_end_detected = true;
  }
  if (settings.table_end_line) {
    out.format.table_end_line = settings.table_end_line;
    out.format.table_end_detected = false;
  }
  if (!settings.variable_names.empty()) out.format.variable_names = settings.variable_names;
  if (settings.all_lines) {
    out.format.table_end_line.reset();
    out.format.table_end_detected = false;
  }
  out.format.structural_scan = !settings.exact_scan;
  out.format.threads = settings.threads != 0 ? settings.threads : std::max(1U, std::thread::hardware_concurrency());
  // A count is the same with types or without while no type is asked for
  // (which may be refused) and neither a value that does not convert nor a
  // detected missing marker changes a record: then the sample is not read
  // for them.
  using textio::enums::BadDataRule;
  const bool types_count = !counting || settings.strict || !settings.types.by_position.empty() ||
                           !settings.types.by_name.empty() || out.options.import_error_rule() != BadDataRule::Fill ||
                           out.options.missing_rule() != BadDataRule::Fill;
  if (out.options.output_type() == textio::enums::OutputBuilderType::Table && !out.empty_input && types_count) {
    find_types(out, settings, raw, whole);
  }
  if (out.names.empty() && out.report) out.names = out.report->variable_names;
  if (out.names.empty()) out.names = out.format.variable_names;
  return out;
}

}  // namespace

read_outcome read_into(const read_source& source, const textio::parser::options& options, const read_settings& settings,
                       record_sink& sink) {
  const std::unique_ptr<utf8_input> input = open_input(source);
  read_outcome out = prepare(*input, options, settings, sink.counts_only());
  if (settings.before_reading) settings.before_reading(out);
  out.summary =
      read_typed_table(out.options, *input, sink, out.format, out.types, settings.progress, settings.stray_quote);
  out.input_changed = input->changed_since_opened();
  return out;
}

read_outcome plan_read(const read_source& source, const textio::parser::options& options,
                       const read_settings& settings) {
  const std::unique_ptr<utf8_input> input = open_input(source);
  return prepare(*input, options, settings);
}

table_read read_table(const read_source& source, const textio::parser::options& options,
                      const read_settings& settings) {
  arrow_table_sink sink;
  read_outcome outcome = read_into(source, options, settings, sink);
  return {sink.take(), std::move(outcome)};
}

read_outcome read_batches(const read_source& source, const textio::parser::options& options,
                          const read_settings& settings, batch_limits limits, const batch_callback& on_batch) {
  arrow_table_sink sink(limits, on_batch);
  read_outcome outcome = read_into(source, options, settings, sink);
  sink.take();  // hands on the last batch
  return outcome;
}

detection_result detect(const read_source& source, const textio::parser::options& options,
                        const read_settings& settings) {
  const std::unique_ptr<utf8_input> input = open_input(source);
  return detect_from(*input, options, settings.given);
}

}  // namespace textio::import
