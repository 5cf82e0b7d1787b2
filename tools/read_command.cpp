#include "tools/read_command.hpp"

#include <unistd.h>

#include <charconv>
#include <cstdio>
#include <iostream>
#include <optional>

#include "import/read.hpp"
#include "parser/options.hpp"
#include "tools/apply_options.hpp"
#include "tools/checked_output.hpp"
#include "tools/exit_status.hpp"
#include "tools/json_writer.hpp"
#include "tools/memory_limit.hpp"
#include "tools/output_file.hpp"
#include "tools/reading_choices.hpp"
#include "tools/record_json.hpp"
#include "tools/record_selection.hpp"
#include "tools/record_writers.hpp"
#include "tools/usage_error.hpp"
#include "tools/variable_types.hpp"

namespace zvtool {
namespace {

// Below this confidence a guess is said to be one, so that nobody takes it
// for certain without looking.
constexpr double unsure_confidence = 0.5;

std::string unsure_note(double confidence) {
  char figure[16];
  std::snprintf(figure, sizeof figure, "%.2f", confidence);
  return std::string("zvtextparser: note: detection is unsure of this file (confidence ") + figure +
         "); --verbose shows the guesses, and options given by name are never guessed\n";
}

constexpr std::uint64_t progress_threshold = std::uint64_t{64} << 20;

// {"error": {...}} on one line, arguments as written by the error object.
std::string error_line(const message_failure& failure) {
  std::string line = "{\"error\": {\"identifier\": " + json_quote_bytes(failure.identifier) +
                     ", \"key\": " + json_quote_bytes(failure.id.key) + ", \"arguments\": [";
  for (std::size_t i = 0; i < failure.id.args.size(); ++i) {
    if (i > 0) line += ", ";
    const auto& argument = failure.id.args[i];
    if (const auto* bytes = std::get_if<std::string>(&argument)) {
      line += json_quote_bytes(*bytes);
    } else if (const auto* units = std::get_if<ustring>(&argument)) {
      line += json_quote_units(*units);
    } else {
      line += std::to_string(std::get<std::uint64_t>(argument));
    }
  }
  line += "], \"message\": " + json_quote_units(failure.message) + "}}\n";
  return line;
}

// A percentage on standard error, redrawn in place, for a large input when
// standard error is a terminal.
textio::import::progress_callback progress_bar() {
  if (::isatty(STDERR_FILENO) == 0) return {};
  return [last = -1](std::uint64_t done, std::uint64_t total) mutable {
    if (total <= progress_threshold) return;
    const int percent = static_cast<int>(done * 100 / total);
    if (percent == last) return;
    last = percent;
    std::fprintf(stderr, "\rreading: %3d%%", percent);
    if (percent >= 100) std::fprintf(stderr, "\r\033[K");
    std::fflush(stderr);
  };
}

std::string changed_warning(const std::string& file) {
  return "zvtextparser: warning: '" + file +
         "' changed while it was read (its size or modification time differ from when it was opened); the records "
         "may mix old and new contents\n";
}

// What standard error says once detection and the types are settled: that
// the input is empty, the detection report (--verbose) or that detection is
// unsure, and the variables whose dates read both ways.
std::string found_notes(const textio::import::read_outcome& found, bool verbose) {
  std::string notes;
  if (found.empty_input) notes += "zvtextparser: note: empty input\n";
  if (found.report && verbose) {
    notes += report_text(*found.report);
  } else if (found.report && found.report->confidence < unsure_confidence && !found.report->filled.empty()) {
    notes += unsure_note(found.report->confidence);
  }
  for (const std::size_t i : found.date_order_unsettled) {
    notes += "zvtextparser: note: the dates of variable " + std::to_string(i + 1) +
             " read both day-first and month-first; they are read day-first\n";
  }
  return notes;
}

// One note per variable with values that did not convert to its type: how
// many, the line of the first, and what became of them.
std::string unconverted_notes(const std::vector<textio::import::unconverted_values>& unconverted,
                              std::span<const textio::import::variable_typing> types,
                              const std::vector<std::string>& names, textio::enums::BadDataRule rule) {
  using textio::enums::BadDataRule;
  std::string notes;
  for (std::size_t i = 0; i < unconverted.size() && i < types.size(); ++i) {
    const auto& u = unconverted[i];
    if (u.count == 0) continue;
    notes += "zvtextparser: note: variable " +
             (i < names.size() && !names[i].empty() ? json_quote_bytes(names[i]) : std::to_string(i + 1)) + ": " +
             std::to_string(u.count) + (u.count == 1 ? " value did" : " values did") + " not convert to " +
             std::string(textio::import::type_name(types[i].type)) + " (first at line " + std::to_string(u.first_line) +
             "); ";
    const bool one = u.count == 1;
    if (types[i].unconverted == textio::import::unconverted_value::text) {
      notes += "written as text\n";
    } else if (rule == BadDataRule::OmitRow) {
      notes +=
          one ? "ImportErrorRule omitrow left out its record\n" : "ImportErrorRule omitrow left out their records\n";
    } else if (rule == BadDataRule::OmitVar) {
      notes += "ImportErrorRule omitvar left out the variable\n";
    } else {
      notes += one ? "ImportErrorRule fill made it missing\n" : "ImportErrorRule fill made them missing\n";
    }
  }
  return notes;
}

}  // namespace

read_format output_format(const parsed_arguments& args) {
  if (args.has("--count")) return read_format::count;
  const std::string name = args.value("--format").value_or("jsonl");
  if (name == "jsonl") return read_format::jsonl;
  if (name == "csv") return read_format::csv;
  if (name == "tsv") return read_format::tsv;
  throw usage_error("unknown --format '" + name + "'; the formats are jsonl, csv and tsv");
}

tool_result run_read(const parsed_arguments& args, std::ostream& out) {
  const read_format format = output_format(args);
  textio::parser::options record;
  if (const auto failure = apply_option_arguments(args.value("--struct"), args.option_arguments, record)) {
    if (format == read_format::csv || format == read_format::tsv) {
      return tool_result{exit_option_refused, "", message_line(*failure)};
    }
    json_writer report;
    report.begin_object();
    report.key("options");
    write_options_record(report, record);
    tool_result result = finish_report(report, failure);
    out << result.out;
    result.out.clear();
    return result;
  }

  std::optional<jsonl_writer> jsonl;
  std::optional<csv_writer> csv;
  count_writer counter;
  textio::import::record_sink* sink = &counter;
  const value_text values = args.has("--canonical") ? value_text::canonical : value_text::as_written;
  if (args.has("--objects") && format != read_format::jsonl) throw usage_error("--objects goes with --format jsonl");
  if (format == read_format::jsonl) sink = &jsonl.emplace(out, values, args.has("--objects"));
  if (format == read_format::csv) sink = &csv.emplace(out, values, csv_style);
  if (format == read_format::tsv) sink = &csv.emplace(out, values, tsv_style);
  // Columns chosen first, then the window of rows.
  std::optional<column_choice> columns;
  if (const auto select = args.value("--select")) sink = &columns.emplace(*sink, selection_of(*select));
  const auto count_of = [&args](const char* option) -> std::optional<std::uint64_t> {
    const auto text = args.value(option);
    if (!text) return std::nullopt;
    std::uint64_t n = 0;
    const auto [end, ec] = std::from_chars(text->data(), text->data() + text->size(), n);
    if (ec != std::errc() || end != text->data() + text->size()) {
      throw usage_error(std::string(option) + " takes a count from 0, not '" + *text + "'");
    }
    return n;
  };
  const std::optional<std::uint64_t> rows = count_of("--rows");
  const std::optional<std::uint64_t> skip = count_of("--skip-rows");
  std::optional<row_window> window;
  if (rows || skip) sink = &window.emplace(*sink, skip.value_or(0), rows);
  const auto flush_records = [&] {
    if (jsonl) jsonl->flush();
    if (csv) csv->flush();
  };

  textio::import::read_settings settings = read_settings_of(args);
  // A window of rows is read on one thread, so that reading stops with it.
  if (window) settings.threads = 1;
  settings.types = type_request_of(args.value("--types"));
  settings.progress = progress_bar();
  tool_result result;
  settings.stray_quote = [&result](std::uint64_t line, std::uint64_t column) {
    result.err += "zvtextparser: warning: the quote at line " + std::to_string(line) + ", column " +
                  std::to_string(column) + " never closes; quotes are read as text from there on\n";
  };
  settings.before_reading = [&result, &args](const textio::import::read_outcome& found) {
    result.err += found_notes(found, args.has("--verbose"));
  };
  std::string unconverted;  // the notes on values that did not convert, last on standard error
  try {
    const textio::import::read_outcome outcome = textio::import::read_into(source_of(args), record, settings, *sink);
    const textio::import::read_summary& summary = outcome.summary;
    unconverted =
        unconverted_notes(summary.unconverted, outcome.types, outcome.names, outcome.options.import_error_rule());
    if (summary.lines_left_unread > 0) {
      result.err += "zvtextparser: the table ends before line " + std::to_string(summary.first_line_unread) + "; " +
                    std::to_string(summary.lines_left_unread) + " lines from line " +
                    std::to_string(summary.first_line_unread) + " on were left unread (--all-lines reads them)\n";
      if (args.has("--strict")) result.status = exit_reading_error;
    }
    if (args.has("--verbose")) {
      result.err += summary.parts_on_threads > 0
                        ? "zvtextparser: " + std::to_string(summary.parts_on_threads) + " parts read on " +
                              std::to_string(outcome.format.threads) + " threads\n"
                        : std::string("zvtextparser: read on one thread\n");
    }
    if (outcome.input_changed) {
      result.err += changed_warning(*args.operand);
      if (args.has("--strict")) result.status = exit_io_failure;
    }
  } catch (const foundation::core::except::IMsgIDException& error) {
    const message_failure failure = capture_message(error);
    if (failure.id.key == "UnknownVariable") {
      throw usage_error("--types: the file has no variable '" + std::get<std::string>(failure.id.args.at(0)) + "'");
    }
    if (failure.id.key == "TooManyTypes") {
      throw usage_error("--types names " + std::to_string(std::get<std::uint64_t>(failure.id.args.at(0))) +
                        " types but the file has " + std::to_string(std::get<std::uint64_t>(failure.id.args.at(1))) +
                        " variables");
    }
    result.status = reading_failure_status(failure);
    result.err += message_line(failure);
    if (failure.id.key == "OutOfMemory") {
      result.err += "zvtextparser: the memory limit was " + memory_size_text(memory_limit(args)) + " (--max-memory)\n";
    }
    flush_records();
    if (format == read_format::jsonl || format == read_format::count) out << error_line(failure);
    flush_output(out);
    return result;
  }
  flush_records();
  if (csv && csv->lone_missing_written()) result.err += lone_missing_advice();
  result.err += unconverted;
  if (format == read_format::count) {
    out << "{\"records\": " << counter.records() << ", \"fields\": " << counter.fields() << "}\n";
  }
  flush_output(out);
  return result;
}

std::uint64_t memory_limit(const parsed_arguments& args) {
  const auto given = args.value("--max-memory");
  return given ? parse_memory_size(*given) : default_memory_limit();
}

tool_result run_read_command(const parsed_arguments& args) {
  apply_memory_limit(memory_limit(args));
  const auto path = args.value("--output");
  if (!path) return run_read(args, std::cout);
  output_file file(*path);
  std::ostream out(file.buffer());
  tool_result result = run_read(args, out);
  flush_output(out);
  // Only a whole output takes the name; after a failure none is left.
  if (result.status == exit_success) file.commit();
  return result;
}

}  // namespace zvtool
