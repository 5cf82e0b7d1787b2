#include "tools/show_command.hpp"

#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "import/read.hpp"
#include "tools/apply_options.hpp"
#include "tools/exit_status.hpp"
#include "tools/message_failure.hpp"
#include "tools/reading_choices.hpp"
#include "tools/record_selection.hpp"
#include "tools/record_writers.hpp"
#include "tools/usage_error.hpp"
#include "tools/variable_types.hpp"
#include "zvcore/ustring.hpp"

namespace zvtool {
namespace {

using textio::import::output_value;

constexpr std::size_t default_rows = 20;
constexpr std::size_t narrowest = 6;  // a column is never cut below this

// The names, types and first rows of the table as text.
struct shown_table : textio::import::record_sink {
  std::vector<std::string> names;
  std::vector<std::string> types;
  std::vector<std::vector<std::string>> rows;
  std::uint64_t row_bytes = 0;  // the rows' text and separators, for an estimate of the file's rows

  void header(const textio::import::table_header& h) override {
    for (const output_value& n : h.names) append_value_text(names.emplace_back(), n);
    for (const auto& run : h.types) types.insert(types.end(), run.count, std::string(run.name));
  }
  void record(std::span<const output_value> values) override { padded_record(values, 0); }
  void padded_record(std::span<const output_value> values, std::size_t missing) override {
    auto& row = rows.emplace_back();
    for (const output_value& v : values) {
      append_value_text(row.emplace_back(), v);
      row_bytes += row.back().size() + 1;
    }
    row.resize(row.size() + missing);
  }
};

// Characters, not bytes: UTF-8 continuation bytes do not count.
std::size_t width_of(std::string_view text) {
  return static_cast<std::size_t>(
      std::count_if(text.begin(), text.end(), [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

// `text` in at most `width` characters, cut with "…"; control characters
// (a tab, a line break inside a quoted value) shown as a blank.
std::string cell(std::string_view text, std::size_t width) {
  std::string out;
  std::size_t chars = 0;
  const std::size_t whole = width_of(text);
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto b = static_cast<unsigned char>(text[i]);
    const bool starts_char = (b & 0xC0) != 0x80;
    if (starts_char && whole > width && chars + 1 == width) {
      out += "\xE2\x80\xA6";  // …
      return out;
    }
    chars += starts_char ? 1 : 0;
    out += b < 0x20 ? ' ' : text[i];
  }
  return out;
}

bool numeric(std::string_view type) {
  return type != "string" && type != "datetime" && type != "duration" && type != "logical";
}

// How wide the output may be: COLUMNS, else the terminal's width, else none.
std::optional<std::size_t> room() {
  if (const char* columns = std::getenv("COLUMNS")) {
    std::size_t n = 0;
    const std::string_view text(columns);
    if (std::from_chars(text.data(), text.data() + text.size(), n).ec == std::errc() && n > 0) return n;
  }
  if (::isatty(STDOUT_FILENO) != 0) return 80;
  return std::nullopt;
}

std::string layout(const shown_table& t) {
  std::size_t columns = std::max(t.names.size(), t.types.size());
  for (const auto& row : t.rows) columns = std::max(columns, row.size());
  const auto at = [](const std::vector<std::string>& v, std::size_t i) { return i < v.size() ? v[i] : std::string(); };
  std::vector<std::size_t> widths(columns, 1);
  for (std::size_t c = 0; c < columns; ++c) {
    widths[c] = std::max({width_of(at(t.names, c)), width_of(at(t.types, c)), std::size_t{1}});
    for (const auto& row : t.rows) widths[c] = std::max(widths[c], width_of(at(row, c)));
  }
  // Too wide: the widest columns give way first, down to the narrowest.
  if (const auto limit = room()) {
    const auto total = [&] {
      std::size_t n = 0;
      for (const std::size_t w : widths) n += w + 2;
      return n;
    };
    while (total() > *limit) {
      auto widest = std::max_element(widths.begin(), widths.end());
      if (*widest <= narrowest) break;
      --*widest;
    }
  }
  std::string out;
  const auto line = [&](const auto& text_of, bool align) {
    std::string row;
    for (std::size_t c = 0; c < columns; ++c) {
      const std::string text = cell(text_of(c), widths[c]);
      const std::size_t pad = widths[c] - width_of(text);
      const bool right = align && numeric(at(t.types, c));
      if (c > 0) row += "  ";
      if (right) row.append(pad, ' ');
      row += text;
      if (!right && c + 1 < columns) row.append(pad, ' ');
    }
    while (!row.empty() && row.back() == ' ') row.pop_back();
    out += row + "\n";
  };
  line([&](std::size_t c) { return at(t.names, c); }, false);
  if (!t.types.empty()) line([&](std::size_t c) { return at(t.types, c); }, false);
  for (const auto& row : t.rows) line([&](std::size_t c) { return at(row, c); }, true);
  return out;
}

std::string quoted_delimiter(const textio::import::read_outcome& o) {
  using textio::enums::ParserType;
  if (o.options.parser_type() == ParserType::FixedWidth) return "fixed width";
  if (o.options.parser_type() == ParserType::Tabular) return "runs of blanks";
  const auto& d = o.options.delimiter();
  if (d.empty()) return "one column";
  const std::string first = foundation::core::unicode::to_utf8(d.front());
  return first == "\t" ? "tab" : "'" + first + "'";
}

std::string summary(const std::string& file, const textio::import::read_outcome& o, const shown_table& t) {
  std::string text = file + ": " + o.format.encoding + ", delimiter " + quoted_delimiter(o) + ", " +
                     std::to_string(o.options.num_header_lines()) + " header line" +
                     (o.options.num_header_lines() == 1 ? "" : "s") + ", " +
                     std::to_string(std::max(t.names.size(), t.types.size())) + " variables";
  std::error_code ec;
  const std::uintmax_t size = std::filesystem::is_regular_file(file, ec) ? std::filesystem::file_size(file, ec) : 0;
  if (size > 0 && !ec && !t.rows.empty() && t.row_bytes > 0) {
    const auto rows = static_cast<std::uint64_t>(
        static_cast<double>(size) / (static_cast<double>(t.row_bytes) / static_cast<double>(t.rows.size())));
    text += ", about " + std::to_string(std::max<std::uint64_t>(rows, t.rows.size())) + " rows";
  }
  if (o.report) {
    char confidence[32];
    std::snprintf(confidence, sizeof confidence, ", confidence %.2f", o.report->confidence);
    text += confidence;
  }
  return text + "\n";
}

}  // namespace

tool_result run_show_command(const parsed_arguments& args) {
  textio::parser::options record;
  if (const auto failure = apply_option_arguments(args.value("--struct"), args.option_arguments, record)) {
    return tool_result{exit_option_refused, "", message_line(*failure)};
  }
  textio::import::read_settings settings = read_settings_of(args);
  settings.types = type_request_of(args.value("--types"));
  settings.threads = 1;
  std::uint64_t rows = default_rows;
  if (const auto n = args.value("--rows")) {
    const auto [end, ec] = std::from_chars(n->data(), n->data() + n->size(), rows);
    if (ec != std::errc() || end != n->data() + n->size()) throw usage_error("--rows takes a count, not '" + *n + "'");
  }
  shown_table table;
  row_window window(table, 0, rows);
  tool_result result;
  try {
    const auto outcome = textio::import::read_into(source_of(args), record, settings, window);
    result.out = summary(*args.operand, outcome, table) + layout(table);
    if (outcome.empty_input) result.err += "zvtextparser: note: empty input\n";
  } catch (const foundation::core::except::IMsgIDException& error) {
    const message_failure failure = capture_message(error);
    result.status = reading_failure_status(failure);
    result.err += message_line(failure);
  }
  return result;
}

}  // namespace zvtool
