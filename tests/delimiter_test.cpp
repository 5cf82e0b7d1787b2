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

TEST(Delimiter, EdgesOfTheLookup) {
  EXPECT_EQ(Delimiter({u","}).match_at(u"a,", 7), std::nullopt);  // position past the end
  EXPECT_EQ(Delimiter({}).match_at(u",", 0), std::nullopt);
  // Units above 0x7FFF order as unsigned.
  EXPECT_EQ(Delimiter({u"\uFFFF\u0001", u"\u8000"}).match_at(u"\uFFFF\u0001\u8000", 2), (match{1, 1}));
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

// Equal lists share one object, which dies with its last handle (the cache
// holds no owner); lists that differ in any way, order included, do not share.
TEST(DelimiterCache, EqualListsShareOneObjectAndOthersDoNot) {
  const text_list lists[] = {{}, {u""}, {u"", u""}, {u","}, {u",", u";"}, {u";", u","}, {u",;"}, {u",", u";", u";"}};
  std::vector<std::shared_ptr<Delimiter>> handles;
  for (const text_list& list : lists) handles.push_back(textio::get_or_create_delim(list));
  for (std::size_t i = 0; i < handles.size(); ++i) {
    EXPECT_EQ(handles[i]->strings(), lists[i]) << "list " << i;
    EXPECT_EQ(textio::get_or_create_delim(lists[i]), handles[i]) << "list " << i;
    for (std::size_t j = i + 1; j < handles.size(); ++j) EXPECT_NE(handles[i], handles[j]) << i << " vs " << j;
  }
  const std::weak_ptr<Delimiter> first = textio::get_or_create_delim({u"only-in-this-test"});
  EXPECT_TRUE(first.expired());
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
