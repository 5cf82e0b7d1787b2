// Reads fuzzed bytes as a text file under a fuzzed set of options: whatever
// the bytes and options, the reader ends normally or with one of its
// messages, and what it hands on is well formed (a header first, text that
// is valid UTF-8 on the byte path) and the same with the structural scan on
// and off, and read in parts on threads. The input is cut into reads of a
// fuzzed size, so records break across the window at every place.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <random>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "fuzz/fuzz_input.hpp"
#include "import/output.hpp"
#include "import/text_reader.hpp"
#include "import/values/number_text.hpp"
#include "import/input/utf8_input.hpp"
#include "import/input/utf8_text.hpp"
#include "import/values/value_conversion.hpp"
#include "name_value/set_parser_options.hpp"
#include "zvarray/value.hpp"
#include "zvcore/exceptions.hpp"

namespace {

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "invariant broken: %s\n", what);
  std::abort();
}

// A log with its control bytes and non-ASCII bytes as \xNN.
std::string printable(const std::string& log) {
  std::string out;
  for (const char c : log) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x20 && byte < 0x7f) {
      out += c;
    } else {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\x%02x", byte);
      out += hex;
    }
  }
  return out;
}

// Units that matter to the reader, and a few that test the encodings.
const char16_t alphabet[] = {u',', u';', u'\n', u'\r', u'"',  u'#',      u'/',      u'*',      u' ',      u'\t', u'a',
                             u'1', u'.', u'e',  u'-',  u'\0', u'\u00e9', u'\u3000', u'\xd834', u'\xdd1e', u'N'};

std::u16string draw_text(fuzz::FuzzInput& in, std::uint32_t max_length) {
  std::u16string text;
  const std::uint32_t length = in.below(max_length + 1);
  for (std::uint32_t i = 0; i < length; ++i) text.push_back(in.pick(alphabet));
  return text;
}

hv::Value draw_list(fuzz::FuzzInput& in) {
  std::vector<hv::Value> items;
  const std::uint32_t n = in.below(4);
  for (std::uint32_t i = 0; i < n; ++i) items.push_back(hv::Value::text(draw_text(in, 3)));
  return hv::Value::cell_row(std::move(items));
}

struct option_kind {
  const char16_t* name;
  enum { flag, text, list, count, widths, logical } shape;
  std::vector<const char16_t*> flags;
};

const option_kind options_to_draw[] = {
    {u"ParserType", option_kind::flag, {u"delimited", u"fixedwidth", u"tabular", u"line"}},
    {u"OutputBuilderType", option_kind::flag, {u"table", u"matrix", u"cell"}},
    {u"MissingRule", option_kind::flag, {u"fill", u"omitrow", u"omitvar", u"error"}},
    {u"ImportErrorRule", option_kind::flag, {u"fill", u"omitrow", u"omitvar", u"error"}},
    {u"ConsecutiveDelimitersRule", option_kind::flag, {u"split", u"join", u"error"}},
    {u"LeadingDelimitersRule", option_kind::flag, {u"keep", u"ignore", u"error"}},
    {u"TrailingDelimitersRule", option_kind::flag, {u"keep", u"ignore", u"error"}},
    {u"EmptyLineRule", option_kind::flag, {u"skip", u"read", u"error"}},
    {u"ExtraColumnsRule", option_kind::flag, {u"addvars", u"ignore", u"wrap", u"error"}},
    {u"PartialFieldRule", option_kind::flag, {u"keep", u"omitrow", u"omitvar", u"fill", u"wrap", u"error"}},
    {u"Delimiter", option_kind::list, {}},
    {u"LineEnding", option_kind::list, {}},
    {u"CommentStyle", option_kind::list, {}},
    {u"TreatAsMissing", option_kind::list, {}},
    {u"Whitespace", option_kind::text, {}},
    {u"DecimalSeparator", option_kind::text, {}},
    {u"ThousandsSeparator", option_kind::text, {}},
    {u"ExpChars", option_kind::text, {}},
    {u"NumHeaderLines", option_kind::count, {}},
    {u"NumVariables", option_kind::count, {}},
    {u"VariableNamesLine", option_kind::count, {}},
    {u"VariableUnitsLine", option_kind::count, {}},
    {u"VariableDescriptionsLine", option_kind::count, {}},
    {u"VariableWidths", option_kind::widths, {}},
    {u"TrimNonNumeric", option_kind::logical, {}},
    {u"MultipleDelimsAsOne", option_kind::logical, {}},
};

hv::Value draw_value(fuzz::FuzzInput& in, const option_kind& kind) {
  switch (kind.shape) {
    case option_kind::flag:
      return hv::Value::text(kind.flags[in.below(static_cast<std::uint32_t>(kind.flags.size()))]);
    case option_kind::text:
      return hv::Value::text(draw_text(in, 2));
    case option_kind::list:
      return in.flag() ? draw_list(in) : hv::Value::text(draw_text(in, 2));
    case option_kind::count:
      return hv::Value::scalar(in.below(4));
    case option_kind::widths: {
      std::vector<double> widths;
      const std::uint32_t n = in.below(4);
      for (std::uint32_t i = 0; i < n; ++i) widths.push_back(in.below(5));
      return hv::Value::row(widths);
    }
    case option_kind::logical:
      return hv::Value::logical(in.flag());
  }
  return hv::Value::none();
}

// Checks the order of calls and the values, and writes down what it gets.
class checking_sink : public textio::import::record_sink {
 public:
  void header(const textio::import::table_header& h) override {
    if (header_seen_) fail("header twice");
    header_seen_ = true;
    for (const auto* list : {&h.names, &h.units, &h.descriptions}) {
      check(*list);
      log += 'H';
      write_down(*list);
    }
    for (const auto& run : h.types) log += std::string(run.name) + "*" + std::to_string(run.count) + ";";
  }
  void record(std::span<const textio::import::output_value> values) override {
    if (!header_seen_) fail("record before header");
    check(values);
    ++records;
    fields += values.size();
    log += 'R';
    write_down(values);
  }
  std::uint64_t records = 0;
  std::uint64_t fields = 0;
  std::string log;  // every value handed on, in order

  bool takes_part_sinks() const override { return true; }
  std::unique_ptr<textio::import::record_sink> part_sink() override {
    auto part = std::make_unique<checking_sink>();
    part->header_seen_ = true;  // parts get no header
    return part;
  }
  void take_part(textio::import::record_sink& part) override {
    if (!header_seen_) fail("part before header");
    auto& p = static_cast<checking_sink&>(part);
    log += std::exchange(p.log, {});
    records += std::exchange(p.records, 0);
    fields += std::exchange(p.fields, 0);
  }

 private:
  static void check(std::span<const textio::import::output_value> values) {
    for (const auto& v : values) {
      if (v.kind != textio::import::value_kind::text) continue;
      if (!v.utf16 && textio::import::check_utf8(v.bytes).valid != v.bytes.size()) fail("text is not UTF-8");
    }
  }
  void write_down(std::span<const textio::import::output_value> values) {
    for (const auto& v : values) {
      log += static_cast<char>('0' + static_cast<int>(v.kind));
      log.append(v.bytes);
      // As bytes: the units are not always aligned for char16_t.
      log.append(reinterpret_cast<const char*>(v.units.data()), v.units.size() * sizeof(char16_t));
      log.append(reinterpret_cast<const char*>(&v.number), sizeof v.number);
      log.append(reinterpret_cast<const char*>(&v.integer), sizeof v.integer);
      log.append(v.written);
      log += textio::import::written_as_json_number(v) ? 'j' : '-';
      log += '\x1f';
    }
  }
  bool header_seen_ = false;
};

class counting_sink : public textio::import::record_sink {
 public:
  void header(const textio::import::table_header&) override {}
  void record(std::span<const textio::import::output_value> values) override { record_count(values.size(), 1); }
  bool counts_only() const override { return true; }
  void record_count(std::size_t n, std::uint64_t count) override {
    records += count;
    fields += n * count;
  }
  std::uint64_t records = 0;
  std::uint64_t fields = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 8192) return 0;
  fuzz::FuzzInput in(data, size);
  textio::parser::options record;
  const std::uint32_t settings = in.below(8);
  for (std::uint32_t i = 0; i < settings; ++i) {
    const option_kind& kind = in.pick(options_to_draw);
    const hv::Value name = hv::Value::text(kind.name);
    const hv::Value value = draw_value(in, kind);
    const hvArray_tag* args[] = {name.get(), value.get()};
    try {
      textio::options::set_parser_options(args, 2, record);
    } catch (const foundation::core::except::IMsgIDException&) {
      // The record stays as the failed call left it.
    }
  }
  const std::size_t read_size = 1 + in.below(16);
  // The reader's own format: quote, escape, a detected quote, an encoding
  // to convert from, a table end (given or detected).
  textio::import::text_format format;
  static constexpr char quotes[] = {'"', '\'', '\0'};
  static constexpr const char* encodings[] = {"UTF-8", "UTF-8", "WINDOWS-1252", "UTF-16LE", "UTF-32BE"};
  const std::uint32_t format_bits = in.below(256);
  format.quote = quotes[format_bits % 3];
  if ((format_bits & 4) != 0) format.escape = textio::import::escape_style::backslash;
  format.quote_detected = (format_bits & 8) != 0;
  format.encoding = in.pick(encodings);
  if ((format_bits & 16) != 0) format.table_end_line = 1 + in.below(8);
  format.table_end_detected = (format_bits & 32) != 0;  // records that fit read on past it

  // Variable types by position, as detection gives them (Table output only),
  // some with a missing marker and month-first dates. They come from a hash
  // of the whole input rather than from its bytes, so that the committed
  // inputs keep the files and settings they were found with.
  std::vector<textio::import::variable_typing> types;
  std::minstd_rand pick(static_cast<std::minstd_rand::result_type>(
      std::hash<std::string_view>{}(std::string_view(reinterpret_cast<const char*>(data), size)) | 1));
  types.resize(pick() % 5);
  for (auto& t : types) {
    t.type = static_cast<textio::import::value_type>(pick() %
                                                     (static_cast<unsigned>(textio::import::value_type::string) + 1));
    if (pick() % 2 != 0) t.dates = textio::import::date_order::month_first;
    if (pick() % 3 == 0) t.missing_markers.push_back(pick() % 2 != 0 ? "N" : "-");
  }
  // What becomes of a value that does not convert: the rule, text (a guessed
  // type) or a reading error (strict).
  for (auto& t : types) t.unconverted = static_cast<textio::import::unconverted_value>(pick() % 3);

  // The rest of the bytes are the file.
  std::vector<std::uint8_t> file;
  while (!in.empty()) file.push_back(in.byte());
  const int fd = ::memfd_create("fuzz_text_reader", 0);
  if (fd < 0) return 0;
  if (!file.empty() && ::write(fd, file.data(), file.size()) != static_cast<ssize_t>(file.size())) fail("write");

  // Reads the file into `sink`: the message that ended reading, empty when
  // none, then the warnings and what was left unread.
  const auto read = [&](textio::import::record_sink& sink, bool structural, unsigned threads = 1) {
    ::lseek(fd, 0, SEEK_SET);
    format.structural_scan = structural;
    format.threads = threads;
    std::string outcome;
    const auto stray = [&outcome](std::uint64_t line, std::uint64_t column) {
      outcome += "stray quote " + std::to_string(line) + ":" + std::to_string(column) + ";";
    };
    try {
      textio::import::utf8_input input(fd, "fuzz");
      input.limit_reads(read_size);
      const auto summary = textio::import::read_typed_table(record, input, sink, format, types, {}, stray);
      outcome = "read all;" + outcome + std::to_string(summary.lines_left_unread);
      for (const auto& u : summary.unconverted) {
        outcome += ";" + std::to_string(u.count) + "@" + std::to_string(u.first_line);
      }
    } catch (const foundation::core::except::IMsgIDException& e) {
      // A reading error is a normal end.
      outcome = std::string(e.what()) + ";" + outcome;
    }
    return outcome;
  };
  checking_sink sink;
  const std::string outcome = read(sink, true);
  // The exact scanner alone must read the same.
  checking_sink exact;
  const std::string exact_outcome = read(exact, false);
  if (exact_outcome != outcome || exact.log != sink.log) {
    std::fprintf(stderr, "with the structural scan: %s\n%s\nwithout: %s\n%s\n", outcome.c_str(),
                 printable(sink.log).c_str(), exact_outcome.c_str(), printable(exact.log).c_str());
    fail("the structural scan changes what is read");
  }
  // Parts read on threads must come to the same; parts of a few bytes put
  // guessed starts everywhere, inside quoted fields too.
  format.part_bytes = 1 + read_size * 2 + (format_bits >> 5);
  checking_sink parts;
  const std::string parts_outcome = read(parts, true, 2 + (format_bits >> 7));
  if (parts_outcome != outcome || parts.log != sink.log) {
    std::fprintf(stderr, "one thread: %s\n%s\nin parts: %s\n%s\n", outcome.c_str(), printable(sink.log).c_str(),
                 parts_outcome.c_str(), printable(parts.log).c_str());
    fail("reading in parts changes what is read");
  }
  format.part_bytes = std::uint64_t{8} << 20;
  // Counting takes shorter ways; it must come to the same numbers.
  for (const bool structural : {true, false}) {
    counting_sink counter;
    const std::string counted = read(counter, structural);
    if (counted.starts_with("read all;") != outcome.starts_with("read all;"))
      fail("counting and reading disagree on failing");
    if (outcome.starts_with("read all;") && (counter.records != sink.records || counter.fields != sink.fields))
      fail("count differs");
  }
  ::close(fd);
  return 0;
}
