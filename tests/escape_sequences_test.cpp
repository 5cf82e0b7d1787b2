#include "name_value/escape_sequences.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "support/reference_escape_decoder.hpp"

namespace {

using test_support::reference_decode;
using textio::options::decode_escape_sequences;

struct decode_case {
  std::u16string given;
  std::u16string decoded;
  bool known;
};

const decode_case decode_cases[] = {
    {u"a\\tb\\b\\n\\r", u"a\tb\b\n\r", true},
    {u"\\\\\\n", u"\\\n", true},  // pairs form from the left; the decoded backslash starts nothing
    {u"\\\\q", u"\\q", true},     // q follows a decoded backslash, so it is plain
    {u"\\", u"\\", true},         // a lone backslash at the end stays
    {u"\\qa\\n", u"a\n", false},  // both units of an unknown pair go; the scan goes on
    // Unknown: no other letters, no upper case, no numeric forms.
    {u"\\0\\T", u"", false},
    {u"\\x41", u"41", false},
    {std::u16string(u"\\\0", 2), u"", false},  // a NUL unit behind a backslash
    {u"\\\u00E9", u"", false},
    // NUL units elsewhere are ordinary text.
    {std::u16string(u"a\0\\t", 4), std::u16string(u"a\0\t", 3), true},
};

// The reference is held to the same table, so agreement below means both are
// right, not merely alike.
TEST(EscapeSequences, DecoderAndReferenceGiveTheTable) {
  for (const auto& c : decode_cases) {
    SCOPED_TRACE(testing::PrintToString(c.given));
    for (bool (*decode)(ustring&) noexcept : {&decode_escape_sequences, &reference_decode}) {
      ustring text = c.given;
      EXPECT_EQ(decode(text), c.known);
      EXPECT_EQ(text, c.decoded);
    }
  }
}

TEST(EscapeSequences, DecodesInPlaceWithoutReallocating) {
  for (const ustring& given : {ustring(u"no backslash"), ustring(u"\\t\\q\\\\x\\"), ustring(4096, u'\\')}) {
    ustring text = given;
    const char16_t* before = text.data();
    const std::size_t capacity = text.capacity();
    decode_escape_sequences(text);
    EXPECT_EQ(text.data(), before);
    EXPECT_EQ(text.capacity(), capacity);
  }
}

// Every text of up to seven units over an alphabet that holds a backslash, a
// known letter, an unknown letter and a plain unit.
TEST(EscapeSequences, AgreesWithReferenceOnAllShortTexts) {
  const std::u16string alphabet = u"\\tqa";
  for (std::size_t length = 0, combinations = 1; length <= 7; ++length, combinations *= alphabet.size()) {
    for (std::size_t code = 0; code < combinations; ++code) {
      ustring fast;
      for (std::size_t i = 0, rest = code; i < length; ++i, rest /= alphabet.size()) fast += alphabet[rest % alphabet.size()];
      ustring slow = fast;
      const std::string given = testing::PrintToString(fast);
      ASSERT_EQ(decode_escape_sequences(fast), reference_decode(slow)) << given;
      ASSERT_EQ(fast, slow) << given;
    }
  }
}

}  // namespace
