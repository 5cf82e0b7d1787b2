// Detects on fuzzed bytes with a fuzzed set of given options and choices:
// whatever the input, detection ends normally (or, for a forced encoding,
// with one of the reader's messages), says how sure it is within 0 to 1,
// and leaves every setting that was given as it was.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "fuzz/fuzz_input.hpp"
#include "import/detect/detection.hpp"
#include "name_value/set_parser_options.hpp"
#include "zvarray/value.hpp"
#include "zvcore/exceptions.hpp"

namespace {

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "invariant broken: %s\n", what);
  std::abort();
}

struct given_option {
  const char16_t* name;
  const char* key;
  hv::Value (*value)(fuzz::FuzzInput&);
};

const char16_t* const delimiters[] = {u",", u";", u"\t", u"|", u" ", u"ab"};
const char16_t* const parsers[] = {u"delimited", u"fixedwidth", u"tabular", u"line"};
const char16_t* const markers[] = {u"#", u"%", u"//"};

const given_option options_to_draw[] = {
    {u"Delimiter", "Delimiter", [](fuzz::FuzzInput& in) { return hv::Value::text(in.pick(delimiters)); }},
    {u"NumHeaderLines", "NumHeaderLines", [](fuzz::FuzzInput& in) { return hv::Value::scalar(in.below(5)); }},
    {u"NumVariables", "NumVariables", [](fuzz::FuzzInput& in) { return hv::Value::scalar(in.below(5)); }},
    {u"VariableNamesLine", "VariableNamesLine", [](fuzz::FuzzInput& in) { return hv::Value::scalar(in.below(3)); }},
    {u"ParserType", "ParserType", [](fuzz::FuzzInput& in) { return hv::Value::text(in.pick(parsers)); }},
    {u"DecimalSeparator", "DecimalSeparator",
     [](fuzz::FuzzInput& in) { return hv::Value::text(in.flag() ? u"," : u"."); }},
    {u"CommentStyle", "CommentStyle", [](fuzz::FuzzInput& in) { return hv::Value::text(in.pick(markers)); }},
    {u"VariableWidths", "VariableWidths",
     [](fuzz::FuzzInput& in) {
       return hv::Value::row(std::vector<double>{1.0 + in.below(4), 1.0 + in.below(4)});
     }},
};

const char* const encodings[] = {"UTF-8", "WINDOWS-1252", "UTF-16LE", "GB18030", "NO-SUCH-ENCODING"};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 65536) return 0;
  fuzz::FuzzInput in(data, size);
  textio::parser::options given;
  textio::import::user_choices choices;
  const std::uint32_t settings = in.below(4);
  for (std::uint32_t i = 0; i < settings; ++i) {
    const given_option& o = in.pick(options_to_draw);
    const hv::Value name = hv::Value::text(o.name);
    const hv::Value value = o.value(in);
    const hvArray_tag* args[] = {name.get(), value.get()};
    try {
      textio::options::set_parser_options(args, 2, given);
      choices.keys.insert(o.key);
    } catch (const foundation::core::except::IMsgIDException&) {
    }
  }
  const std::uint8_t choice_bits = in.byte();
  if (choice_bits & 1u) choices.encoding = in.pick(encodings);
  if (choice_bits & 2u) choices.quote = "\"'\0"[in.below(3)];
  if (choice_bits & 4u)
    choices.escape = in.flag() ? textio::import::escape_style::backslash : textio::import::escape_style::doubled;
  const bool whole = (choice_bits & 8u) == 0;

  std::string sample;
  while (!in.empty()) sample.push_back(static_cast<char>(in.byte()));
  textio::import::detection_result r;
  try {
    r = textio::import::detect(sample, whole, given, choices);
  } catch (const foundation::core::except::IMsgIDException&) {
    if (!choices.encoding) fail("an error without a forced encoding");
    return 0;
  }
  const auto& o = r.options;
  if (!(r.report.confidence >= 0 && r.report.confidence <= 1)) fail("confidence outside 0 to 1");
  if (o.detecting_delimiter() && given.detecting_delimiter() &&
      (!choices.keys.count("ParserType") || given.parser_type() == textio::enums::ParserType::Delimited)) {
    fail("delimiter left undetected");
  }
  if (!given.detecting_delimiter() && o.delimiter() != given.delimiter()) fail("given delimiter changed");
  if (!given.detecting_num_header_lines() && o.num_header_lines() != given.num_header_lines()) {
    fail("given header lines changed");
  }
  if (o.detecting_num_header_lines() || o.detecting_num_variables()) fail("a count left undetected");
  if (!given.detecting_num_variables() && o.num_variables() != given.num_variables()) fail("given count changed");
  for (const char* key : {"DecimalSeparator", "VariableNamesLine", "ParserType", "CommentStyle", "VariableWidths"}) {
    if (!choices.keys.count(key)) continue;
    const bool same = std::string_view(key) == "DecimalSeparator" ? o.decimal_separator() == given.decimal_separator()
                      : std::string_view(key) == "VariableNamesLine"
                          ? o.variable_names_line() == given.variable_names_line()
                      : std::string_view(key) == "ParserType"   ? o.parser_type() == given.parser_type()
                      : std::string_view(key) == "CommentStyle" ? o.comment_style() == given.comment_style()
                                                                : o.field_widths() == given.field_widths();
    if (!same) fail("a given setting changed");
  }
  if (choices.quote && r.format.quote != *choices.quote) fail("given quote changed");
  if (choices.encoding && r.format.encoding != *choices.encoding) fail("given encoding changed");
  return 0;
}
