#include "zvdelim/delimiter.hpp"

#include <gtest/gtest.h>

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "zvdelim/get_or_create_delim.hpp"

namespace {

using textio::Delimiter;
using text_list = std::vector<ustring>;
using match = Delimiter::match;

struct lookup_case {
  const char* what;
  text_list strings;
  ustring text;
  std::size_t position;
  std::optional<match> expected;
};

const lookup_case lookup_cases[] = {
    {"the pair wins over its first half", {u"\r\n", u"\n", u"\r"}, u"a\r\nb", 1, match{0, 2}},
    {"position past the end", {u","}, u"a,", 7, std::nullopt},
    {"an empty string never matches the terminator", {u"", u","}, u"ab", 2, std::nullopt},
    {"an empty list matches nothing", {}, u",", 0, std::nullopt},
    {"units above 0x7FFF", {u"\uFFFF\u0001", u"\u8000"}, u"\uFFFF\u0001\u8000", 2, match{1, 1}},
    {"a lone surrogate unit", {u"\xD800"}, u"x\xD800", 1, match{0, 1}},
};

TEST(Delimiter, FindsTheLongestStringAtAPosition) {
  for (const lookup_case& c : lookup_cases) {
    const Delimiter d(c.strings);
    EXPECT_EQ(d.match_at(c.text, c.position), c.expected) << c.what;
  }
}

TEST(Delimiter, AgreesWithABruteForceSearch) {
  // Every position of a text built from the strings' own units, compared with
  // a plain scan of the whole list.
  const text_list strings{u"a", u"ab", u"abc", u"b", u"ba", u"ca", u"", u"ab"};
  const Delimiter d(strings);
  const ustring text = u"abcabbacabcxaab";
  for (std::size_t pos = 0; pos <= text.size(); ++pos) {
    std::optional<match> expected;
    for (std::size_t i = 0; i < strings.size(); ++i) {
      const ustring& s = strings[i];
      if (s.empty() || text.compare(pos, s.size(), s) != 0 || pos + s.size() > text.size()) continue;
      if (!expected || s.size() > expected->length) expected = match{i, s.size()};
    }
    EXPECT_EQ(d.match_at(text, pos), expected) << "position " << pos;
  }
}

TEST(DelimiterCache, EqualListsShareOneObjectAndOthersDoNot) {
  EXPECT_EQ(textio::get_or_create_delim({u",", u";"}), textio::get_or_create_delim(text_list{u",", u";"}));
  EXPECT_EQ(textio::get_or_create_delim({}), textio::get_or_create_delim({}));
  const text_list lists[] = {
      {},           {u""},
      {u"", u""},   {u","},
      {u",", u";"}, {u";", u","},  // order is part of the key
      {u",;"},      {u",", u";", u";"},
  };
  std::vector<std::shared_ptr<Delimiter>> handles;
  for (const text_list& list : lists) handles.push_back(textio::get_or_create_delim(list));
  for (std::size_t i = 0; i < handles.size(); ++i) {
    EXPECT_EQ(handles[i]->strings(), lists[i]) << "list " << i;
    for (std::size_t j = i + 1; j < handles.size(); ++j) EXPECT_NE(handles[i], handles[j]) << i << " vs " << j;
  }
}

TEST(DelimiterCache, AnObjectDiesWithItsLastHandle) {
  const text_list list{u"only-in-this-test"};
  std::weak_ptr<Delimiter> first;
  {
    auto handle = textio::get_or_create_delim(list);
    first = handle;
    EXPECT_EQ(handle.use_count(), 1);  // the cache holds no owner
  }
  EXPECT_TRUE(first.expired());
  const auto again = textio::get_or_create_delim(list);
  ASSERT_NE(again, nullptr);
  EXPECT_EQ(again->strings(), list);
}

TEST(DelimiterCache, DeadEntriesAreSweptAsTheCacheGrows) {
  const std::size_t before = textio::detail::delim_cache_entries();
  for (int i = 0; i < 5000; ++i) {
    const auto handle = textio::get_or_create_delim({u"sweep", std::u16string(1, static_cast<char16_t>(0x4000 + i))});
    ASSERT_NE(handle, nullptr);
  }
  // Without sweeping the cache would have grown by 5000.
  EXPECT_LT(textio::detail::delim_cache_entries(), before + 200);
}

}  // namespace
