// Fills a record with fuzzed calls, then builds, copies and moves each of the
// three readers and checks their plain fields against what the record says.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <set>
#include <utility>
#include <vector>

#include "fuzz/fuzz_input.hpp"
#include "fuzz/host_value_generator.hpp"
#include "name_value/set_parser_options.hpp"
#include "parser/record_readers.hpp"
#include "zvcore/exceptions.hpp"

namespace {

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "invariant broken: %s\n", what);
  std::abort();
}

// Sorted, without repeats, and holding exactly the first units of the lists.
void check_stop_characters(const ustring& stops, const std::vector<ustring>& a, const std::vector<ustring>& b) {
  std::set<char16_t> expected;
  for (const auto* list : {&a, &b}) {
    for (const auto& s : *list) expected.insert(s.empty() ? u'\0' : s[0]);
  }
  if (stops != ustring(expected.begin(), expected.end())) fail("stop characters");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 4096) return 0;
  fuzz::FuzzInput in(data, size);
  textio::parser::options record;
  const std::uint32_t calls = in.below(12);
  for (std::uint32_t i = 0; i < calls; ++i) {
    const hv::Value name = fuzz::draw_name(in);
    const hv::Value value = fuzz::draw_value(in);
    const hvArray_tag* args[] = {name.get(), value.get()};
    try {
      textio::options::set_parser_options(args, 2, record);
    } catch (const foundation::core::except::IMsgIDException&) {
      // Failed pairs write nothing; the record is still a valid one.
    }
  }

  const textio::parser::LineRecordReader line(record);
  check_stop_characters(line.delimiters.stop_chars, record.line_ending(), {});
  if (line.whitespace != &record.whitespace()) fail("line reader whitespace pointer");
  if (line.reads_empty_lines != (record.empty_line_rule() == textio::enums::EmptyLineRule::Read))
    fail("reads_empty_lines");
  textio::parser::LineRecordReader line_copy(line);
  const textio::parser::LineRecordReader line_moved(std::move(line_copy));
  if (line_moved.delimiters.primary != line.delimiters.primary) fail("line reader copy shares its delimiters");

  const textio::parser::DelimitedRecordReader delimited(record);
  check_stop_characters(delimited.quoted_delimiters.delimiters.stop_chars, record.delimiter(), record.line_ending());
  if (delimited.quoted_delimiters.quote != u'"' || delimited.opts != &record) fail("delimited reader fields");
  textio::parser::DelimitedRecordReader delimited_source(delimited);
  const textio::parser::DelimitedRecordReader delimited_moved(std::move(delimited_source));
  if (delimited_source.field_delimiter || delimited_source.line_delimiter) fail("moved-from delimited handles");

  const textio::parser::FixedWidthRecordReader fixed(record);
  std::uint64_t sum = 0;
  for (const auto w : record.field_widths()) sum += w;
  if (fixed.record_width != sum || fixed.field_widths != record.field_widths()) fail("fixed-width widths");
  ustring units;
  for (const auto& s : record.line_ending()) units.push_back(s.empty() ? u'\0' : s[0]);
  if (fixed.stop_chars != units) fail("fixed-width stop characters");
  return 0;
}
