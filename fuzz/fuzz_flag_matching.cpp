// Differential fuzzing of the eleven rule options against a simple reference
// matcher built on the flag tables, in each mode of the host's character
// dispatcher. A mismatch, another exception, a write to another field or a
// host error count other than one per failure is a finding.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "errors/msg_id_exception.hpp"
#include "errors/tags.hpp"
#include "fuzz/fuzz_input.hpp"
#include "fuzz/host_value_generator.hpp"
#include "name_value/option_vocabulary.hpp"
#include "name_value/set_parser_options.hpp"
#include "support/record_equality.hpp"
#include "support/record_fields.hpp"
#include "support/reference_flag_matcher.hpp"
#include "zvarray/matrix.hpp"

namespace {

[[noreturn]] void fail(const char* what) {
  std::fprintf(stderr, "invariant broken: %s\n", what);
  std::abort();
}

// The text the reference sees: the characters of a char array with elements,
// in column-major order; nothing for any other value.
std::optional<ustring> text_of(const hvArray_tag* value) {
  if (hvGetClassID(value) != hvCharClass || hvGetNumberOfElements(value) == 0) return std::nullopt;
  return matrix::get_ustring(value);
}

void apply_option(textio::parser::options& record, const char* key, const hv::Value& value) {
  const hv::Value name = hv::Value::text_utf8(key);
  const hvArray_tag* args[] = {name.get(), value.get()};
  textio::options::set_parser_options(args, 2, record);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 1024) return 0;
  fuzz::FuzzInput in(data, size);
  const auto& option = textio::options::rule_options[in.below(textio::options::rule_options.size())];
  matrix::detail::set_char_exception_mode(static_cast<matrix::detail::char_exception_mode>(in.below(3)));

  hv::Value value;
  if (in.below(4) == 0) {
    value = fuzz::draw_value(in);
  } else {
    // A flag or a piece of one, with case changed and units swapped.
    ustring text;
    const std::string_view flag = option.flags[in.below(static_cast<std::uint32_t>(option.flags.size()))];
    const std::size_t length = in.below(static_cast<std::uint32_t>(flag.size() + 2));
    for (std::size_t i = 0; i < length; ++i) {
      char16_t c = i < flag.size() ? static_cast<char16_t>(flag[i]) : u'x';
      if (in.flag()) c = static_cast<char16_t>(c >= u'a' && c <= u'z' ? c - 32 : c);
      if (in.below(16) == 0) c = in.integral<char16_t>();
      text.push_back(c);
    }
    value = hv::Value::text(text);
  }

  const auto text = text_of(value.get());
  const std::optional<int> expected = text ? test_support::reference_position(*text, option) : std::nullopt;

  textio::parser::options record;
  const textio::parser::options before = record;
  const auto errors_before = matrix::detail::legacy_hv_error_count();
  try {
    apply_option(record, option.key, value);
    if (!expected) fail("matched where the reference matches nothing");
    const int position = expected.value_or(-1);
    if (test_support::rule_field(record, option.key) != position) fail("matched another flag than the reference");
    textio::parser::options only_that = before;
    test_support::set_rule_field(only_that, option.key, position);
    if (!test_support::first_difference(record, only_that).empty()) fail("a match wrote another field");
    if (matrix::detail::legacy_hv_error_count() != errors_before) fail("host error call on success");
  } catch (const foundation::core::except::Exception<ZORVEK::textio::textio::BadTextFlag, std::exception, void>&) {
    if (expected) fail("BadTextFlag where the reference matches");
    if (!test_support::first_difference(record, before).empty()) fail("a failure wrote the record");
    if (matrix::detail::legacy_hv_error_count() != errors_before + 1) fail("host error calls per failure is not one");
  } catch (...) {
    fail("an exception other than BadTextFlag");
  }
  matrix::detail::set_char_exception_mode(matrix::detail::char_exception_mode::rethrow);
  return 0;
}
