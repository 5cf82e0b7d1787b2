// Matching of texts against flags: the ASCII fold under it, the comparison,
// the search and its failures, every rule option against a reference, and
// the tool's key help against the option table.
#include "name_value/flag_matching.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <map>
#include <optional>
#include <random>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "errors/tags.hpp"
#include "name_value/ascii_tables.hpp"
#include "name_value/option_table.hpp"
#include "name_value/option_vocabulary.hpp"
#include "support/expect_message.hpp"
#include "support/record_fields.hpp"
#include "support/reference_flag_matcher.hpp"
#include "tools/help_text.hpp"
#include "zvarray/matrix.hpp"
#include "zvarray/value.hpp"
#include "zvcore/exceptions.hpp"

namespace {

namespace msg = ZORVEK::textio::textio;
using matrix::detail::char_exception_mode;
using test_support::text_arg;
using textio::options::compare_text_to_flag;

// Sets how the host stand-in's char_exception_dispatcher treats the active
// failure for the guard's life, so that no test leaks its setting.
struct mode_guard {
  explicit mode_guard(char_exception_mode mode) : previous(matrix::detail::get_char_exception_mode()) {
    matrix::detail::set_char_exception_mode(mode);
  }
  ~mode_guard() { matrix::detail::set_char_exception_mode(previous); }
  char_exception_mode previous;
};

const char* mode_name(char_exception_mode mode) {
  return std::array{"rethrow", "throw_another", "return_normally"}.at(static_cast<std::size_t>(mode));
}

using thrown_type = boost::exception_detail::clone_impl<foundation::ustring::CtypeInvalidCharacter>;

// What the fold must give: lower case for "A" to "Z", the code itself below
// 128, and a refusal from 128 up.
std::optional<int> reference_lower(std::uint32_t code) {
  if (code >= 128) return std::nullopt;
  if (code >= 'A' && code <= 'Z') return static_cast<int>(code + 32);
  return static_cast<int>(code);
}

// The fold of one character; a refusal only counts if it is the wrapped
// CtypeInvalidCharacter (anything else escapes and fails the test).
template <class Char>
std::optional<int> fold(Char c) {
  try {
    return textio::options::ascii_to_lower(c);
  } catch (const thrown_type&) {
    return std::nullopt;
  }
}

// Every char16_t and every char (0x80 to 0xFF refused whether char is signed
// or not); the table agrees with the fold below 128. A refusal is the wrapped
// CtypeInvalidCharacter, which is no host message and never reaches the host.
TEST(AsciiTables, EveryUnitFoldsAsTheReference) {
  static_assert(!std::is_base_of_v<foundation::core::except::IUserException, thrown_type>);
  const auto host_errors = matrix::detail::legacy_hv_error_count();
  int mismatches = 0;
  for (std::uint32_t code = 0; code <= 0xFFFF; ++code) {
    if (fold(static_cast<char16_t>(code)) != reference_lower(code) && ++mismatches <= 10) ADD_FAILURE() << "U+" << code;
  }
  for (int byte = 0; byte <= 0xFF; ++byte) {
    const auto want = reference_lower(static_cast<std::uint32_t>(byte));
    EXPECT_EQ(fold(static_cast<char>(static_cast<unsigned char>(byte))), want) << "byte " << byte;
    if (byte < 128) {
      EXPECT_EQ(textio::options::ascii_lower_table[static_cast<std::size_t>(byte)], *want) << "entry " << byte;
    }
  }
  EXPECT_EQ(matrix::detail::legacy_hv_error_count(), host_errors);
}

// Zero for equal texts (most cases are in the differential test below); units
// from 128 up that the walk does not reach are never looked at.
TEST(CompareTextToFlag, GivesTheFoldedDifferenceOrTheLengthOrder) {
  const struct {
    hv::Value text;
    const char* flag;
    std::size_t flag_length;
    std::int32_t expected;
    const char* why;
  } cases[] = {
      {hv::Value::text(u"AbC"), "abc", 3, 0, "case is folded"},
      {hv::Value::text(u"["), "a", 1, '[' - 'a', "91 is no letter and stays"},
      {hv::Value::text(u"abx"), "abc", 2, 1, "only flag_length characters of the flag count"},
      {hv::Value::none(), "a", 1, -1, "no value is the empty text"},
      {hv::Value::text(std::u16string_view(u"a\0", 2)), "a", 1, 1, "a NUL unit counts as a character"},
      {hv::Value::text(u"b\u0141"), "ab", 2, 1, "first place differs"},
      {hv::Value::text(u"keep\u0141"), "keep", 4, 1, "behind the whole flag"},
      {hv::Value::text(u"k"), "k\xFF", 2, -1, "behind the whole text"},
  };
  const mode_guard guard(char_exception_mode::rethrow);
  const auto dispatched = matrix::detail::char_exception_dispatch_count();
  for (const auto& c : cases) {
    EXPECT_EQ(compare_text_to_flag(c.text.get(), c.flag, c.flag_length), c.expected) << c.why;
  }
  EXPECT_EQ(matrix::detail::char_exception_dispatch_count(), dispatched);
}

// A character from 128 up, reached by the walk, goes to the dispatcher, which
// throws it on, throws another, or returns (and then the result is -1).
TEST(CompareTextToFlag, NonAsciiCharacterGoesToTheDispatcherInEveryMode) {
  const std::pair<char_exception_mode, const char*> modes[] = {
      {char_exception_mode::rethrow, "CtypeInvalidCharacter"},
      {char_exception_mode::throw_another, "runtime_error"},
      {char_exception_mode::return_normally, "-1"},
  };
  const std::pair<hv::Value, const char*> reached[] = {
      {hv::Value::text(u"\u0141"), "a"},      // low byte 0x41 is "A"
      {hv::Value::text(u"ab\u0165"), "abe"},  // low byte 0x65 is "e"
      {hv::Value::text(u"aA"), "a\xC3\x81"},  // the flag side is folded and checked as well
  };
  for (const auto& [mode, expected] : modes) {
    const mode_guard guard(mode);
    for (const auto& [text, flag] : reached) {
      const auto dispatched = matrix::detail::char_exception_dispatch_count();
      std::string outcome;
      try {
        outcome = std::to_string(compare_text_to_flag(text.get(), flag, std::strlen(flag)));
      } catch (const thrown_type&) {
        outcome = "CtypeInvalidCharacter";
      } catch (const std::runtime_error&) {
        outcome = "runtime_error";
      }
      EXPECT_EQ(outcome, expected) << mode_name(mode) << " flag " << flag;
      EXPECT_EQ(matrix::detail::char_exception_dispatch_count(), dispatched + 1);
    }
  }
}

TEST(FlagMatching, TheEarliestMatchingFlagWinsAndTheEndOfTheListThrowsAPlainException) {
  const auto ab = hv::Value::text(u"ab");
  EXPECT_EQ(textio::options::match_abbreviated_flags(ab.get(), "abc", "ab"), 0);
  EXPECT_EQ(textio::options::match_exact_flags(ab.get(), "abc", "ab", "ab"), 1);
  EXPECT_EQ(textio::options::parse_exact_flag(ab.get(), "a", "b", "c", "d", "e", "ab"), 5);
  EXPECT_EQ(textio::options::parse_abbreviated_flag(ab.get(), "a", "b", "c", "d", "e", "abc"), 5);
  for (const bool abbreviated : {false, true}) {
    try {
      abbreviated ? textio::options::match_abbreviated_flags(ab.get(), "a")
                  : textio::options::match_exact_flags(ab.get(), "a");
      ADD_FAILURE() << "matched";
    } catch (const std::exception& e) {
      EXPECT_EQ(typeid(e), typeid(std::exception));
    }
  }
}

// Every cause of failure ends as one BadTextFlag with the list text, handed to
// the host once; the inner failure never reaches the host. With the
// dispatcher returning, the search goes on to the next flag.
TEST(FlagMatching, ParseTurnsEveryFailureIntoOneBadTextFlag) {
  const struct {
    char_exception_mode mode;
    hv::Value text;
    std::uint64_t dispatches;
  } cases[] = {
      {char_exception_mode::rethrow, hv::Value::text(u"\u00E9"), 1},
      {char_exception_mode::throw_another, hv::Value::text(u"\u00E9"), 1},
      {char_exception_mode::return_normally, hv::Value::text(u"\u00E9"), 3},
      {char_exception_mode::rethrow, hv::Value::text(u"zzz"), 0},
  };
  std::vector<std::string> seen;
  auto previous_hook =
      matrix::detail::set_legacy_hv_error_hook([&seen](const foundation::core::except::IUserException& e) {
        const auto* id = dynamic_cast<const foundation::core::except::IMsgIDException*>(&e);
        seen.push_back(id != nullptr ? id->GetBaseMsgID().key : "not a message");
      });
  for (const auto& c : cases) {
    const mode_guard guard(c.mode);
    for (const bool abbreviated : {false, true}) {
      const auto dispatched = matrix::detail::char_exception_dispatch_count();
      seen.clear();
      EXPECT_MESSAGE(abbreviated ? textio::options::parse_abbreviated_flag(c.text.get(), "eins", "zwei", "drei")
                                 : textio::options::parse_exact_flag(c.text.get(), "eins", "zwei", "drei"),
                     msg::BadTextFlag, text_arg("'eins', 'zwei', 'drei'\n"));
      EXPECT_EQ(matrix::detail::char_exception_dispatch_count() - dispatched, c.dispatches) << mode_name(c.mode);
      EXPECT_EQ(seen, std::vector<std::string>{"BadTextFlag"}) << mode_name(c.mode);
    }
  }
  matrix::detail::set_legacy_hv_error_hook(std::move(previous_hook));
}

// Every beginning of every flag, in lower and mixed case, with a unit
// added, its last unit given a high byte, or its first swapped for a
// look-alike; then random texts over the letters of the flags, a few others
// and a few non-ASCII units.
std::set<::ustring> differential_inputs() {
  const ::ustring look_alikes = u"\u212A\u0130\u017F\u0441\uFF45";
  std::set<::ustring> inputs{u""};
  for (const auto& option : textio::options::rule_options) {
    for (const std::string_view flag : option.flags) {
      for (std::size_t length = 1; length <= flag.size(); ++length) {
        const ::ustring lower(flag.begin(), flag.begin() + static_cast<std::ptrdiff_t>(length));
        ::ustring mixed = lower;
        for (std::size_t i = 0; i < length; i += 2) mixed[i] = static_cast<char16_t>(mixed[i] - 32);
        for (const auto& base : {lower, mixed}) {
          ::ustring high_byte = base;
          high_byte.back() = static_cast<char16_t>(0x0100 | base.back());
          ::ustring look_alike = base;
          look_alike[0] = look_alikes[length % look_alikes.size()];
          inputs.insert({base, base + u" ", base + u"s", base + base.back(), high_byte, look_alike});
        }
      }
    }
  }
  const ::ustring alphabet = u"abcdefghiklmnoprstuvwxyzAEIKLOST \t\u00E9\u0141\u212A";
  std::mt19937 random(20240601);
  std::uniform_int_distribution<std::size_t> length(0, 8);
  std::uniform_int_distribution<std::size_t> letter(0, alphabet.size() - 1);
  for (int i = 0; i < 1000; ++i) {
    ::ustring text(length(random), u' ');
    for (auto& c : text) c = alphabet[letter(random)];
    inputs.insert(text);
  }
  return inputs;
}

// The argument of BadTextFlag per option, byte for byte; the flags in it, in
// this order, are the positions the option stores. Written out here, not taken
// from the vocabulary, so that a change of order or of match kind is seen.
const std::map<std::string_view, std::string> list_texts = {
    {"ConsecutiveDelimitersRule", "'split', 'join', 'error'\n"},
    {"FileType", "'text', 'delimitedtext', 'fixedwidth'\n"},
    {"LeadingDelimitersRule", "'keep', 'ignore', 'error'\n"},
    {"TrailingDelimitersRule", "'keep', 'ignore', 'error'\n"},
    {"EmptyLineRule", "'skip', 'read', 'error'\n"},
    {"OutputBuilderType", "'table', 'matrix', 'cell'\n"},
    {"ExtraColumnsRule", "'addvars', 'ignore', 'wrap', 'error'\n"},
    {"ImportErrorRule", "'fill', 'omitrow', 'omitvar', 'error'\n"},
    {"MissingRule", "'fill', 'omitrow', 'omitvar', 'error'\n"},
    {"ParserType", "'delimited', 'fixedwidth', 'tabular', 'line'\n"},
    {"PartialFieldRule", "'keep', 'omitrow', 'omitvar', 'fill', 'wrap', 'error'\n"},
};
const std::set<std::string_view> abbreviating = {"ConsecutiveDelimitersRule", "FileType", "LeadingDelimitersRule",
                                                 "TrailingDelimitersRule"};

// A record with other fields away from their defaults and every rule field on
// a position that no list gives, so that any write shows.
textio::parser::options prepared_record() {
  textio::parser::options o;
  for (const auto& option : textio::options::rule_options) test_support::set_rule_field(o, option.key, 7);
  o.num_variables(5);
  o.exp_chars(u"e");
  o.trim_non_numeric(true);
  return o;
}

// Each value through the entry point: a match writes only its field and calls
// no host hook; a failure is BadTextFlag with the option's list, one host
// call, and a record exactly as before. Empty when the outcome is as expected.
std::string check_rule_option(const textio::options::rule_option_flags& option, const hv::Value& value,
                              std::optional<int> expected) {
  textio::parser::options record = prepared_record();
  textio::parser::options want = prepared_record();
  if (expected) test_support::set_rule_field(want, option.key, *expected);
  const auto host_errors = matrix::detail::legacy_hv_error_count();
  std::string outcome;
  if (expected) {
    test_support::apply_option(record, option.key, value);
  } else if (!test_support::throws_message<msg::BadTextFlag>(
                 [&] { test_support::apply_option(record, option.key, value); }, text_arg(list_texts.at(option.key)))) {
    outcome += " no BadTextFlag with the list;";
  }
  if (!test_support::same_record(record, want)) {
    outcome += " wrote field " + std::to_string(test_support::rule_field(record, option.key)) + ";";
  }
  if (matrix::detail::legacy_hv_error_count() - host_errors != (expected ? 0u : 1u)) outcome += " host calls wrong;";
  return outcome;
}

// The dispatcher's mode matters only where a unit from 128 up is met, so the
// other two modes are run on those texts alone.
TEST(FlagMatching, EveryRuleOptionAgreesWithTheReference) {
  const auto inputs = differential_inputs();
  for (const auto mode :
       {char_exception_mode::rethrow, char_exception_mode::throw_another, char_exception_mode::return_normally}) {
    const mode_guard guard(mode);
    int failures = 0;
    for (const auto& text : inputs) {
      if (mode != char_exception_mode::rethrow &&
          std::all_of(text.begin(), text.end(), [](char16_t c) { return c < 128; }))
        continue;
      const auto value = hv::Value::text(text);
      for (const auto& option : textio::options::rule_options) {
        const std::string outcome = check_rule_option(option, value, test_support::reference_position(text, option));
        if (!outcome.empty() && ++failures <= 10) {
          ADD_FAILURE() << option.key << " " << test_support::describe_text(text) << " in mode " << mode_name(mode)
                        << ":" << outcome;
        }
      }
    }
    EXPECT_EQ(failures, 0) << mode_name(mode);
  }
  // Values that are no text, or a column of the flag's characters.
  ASSERT_EQ(std::size(textio::options::rule_options), list_texts.size());
  for (const auto& option : textio::options::rule_options) {
    EXPECT_EQ(option.match == textio::options::flag_match::abbreviated, abbreviating.contains(option.key))
        << option.key;
    const std::string_view flag = option.flags[0];
    const std::u16string first(flag.begin(), flag.end());
    for (const auto& value :
         {hv::Value::none(), hv::Value::logical(true), hv::Value::cell_row({hv::Value::text(first)})}) {
      EXPECT_EQ(check_rule_option(option, value, std::nullopt), "") << option.key;
    }
    EXPECT_EQ(check_rule_option(option, hv::Value::chars({first.size(), 1}, first), 0), "") << option.key;
  }
}

// The tool's key help lists the option table's keys, and for each rule option
// the flags of its list, in position order, and whether it abbreviates.
TEST(OptionHelp, ListsTheTablesKeysAndEachRulesFlagsInPositionOrder) {
  std::set<std::string> help_keys;
  std::istringstream lines(zvtool::option_keys_help());
  std::string line;
  std::getline(lines, line);  // the title
  while (std::getline(lines, line)) {
    ASSERT_TRUE(line.starts_with("  ")) << line;
    const std::string key = line.substr(2, line.find(' ', 2) - 2);
    EXPECT_TRUE(help_keys.insert(key).second) << "listed twice: " << key;
    std::string list;
    for (auto open = line.find('\''); open != std::string::npos;
         open = line.find('\'', line.find('\'', open + 1) + 1)) {
      list += (list.empty() ? "" : ", ") + line.substr(open, line.find('\'', open + 1) - open + 1);
    }
    EXPECT_EQ(list.empty() ? "" : list + "\n", list_texts.contains(key) ? list_texts.at(key) : "") << key;
    EXPECT_EQ(line.find("(abbreviations accepted)") != std::string::npos, abbreviating.contains(key)) << key;
  }
  std::set<std::string> table_keys;
  for (const auto& [key, setter] : textio::options::option_table) table_keys.insert(key);
  EXPECT_EQ(help_keys, table_keys);
}

}  // namespace
