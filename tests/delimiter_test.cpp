// The delimiter objects: the longest-match lookup, the cache that shares one
// object per distinct list, and readers built on several threads at once (the
// sanitizer builds must find no race).
#include "zvdelim/delimiter.hpp"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "parser/record_readers.hpp"
#include "support/delim_call_log.hpp"
#include "zvdelim/get_or_create_delim.hpp"

namespace {

using textio::Delimiter;
using text_list = std::vector<ustring>;
using match = Delimiter::match;
using textio::parser::options;

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

using handle = std::shared_ptr<Delimiter>;

constexpr std::size_t thread_count = 8;
constexpr std::size_t rounds = 200;

// Threads of the same parity share their delimiter list; every thread also
// has a list of its own, which no other thread asks for.
text_list shared_list(std::size_t thread) { return thread % 2 == 0 ? text_list{u","} : text_list{u";", u"\t"}; }
text_list own_list(std::size_t thread) { return {u"own-" + ustring(1, static_cast<char16_t>(u'a' + thread))}; }

struct thread_result {
  handle shared_field, own_field, line;
  std::size_t calls = 0;
  bool consistent = true;
};

TEST(ReaderThreads, ConstructAtOnceAndShareObjects) {
  std::array<thread_result, thread_count> results;
  std::atomic<std::size_t> ready{0};
  std::vector<std::thread> threads;
  for (std::size_t t = 0; t < thread_count; ++t) {
    threads.emplace_back([t, &results, &ready] {
      thread_result& r = results[t];
      options shared_record;
      shared_record.delimiter(shared_list(t));
      options own_record;
      own_record.delimiter(own_list(t));
      test_support::delim_call_log log;
      // Start together so the cache sees the calls interleaved.
      ++ready;
      while (ready.load() < thread_count) std::this_thread::yield();
      for (std::size_t i = 0; i < rounds; ++i) {
        textio::parser::DelimitedRecordReader shared_reader(shared_record);
        const textio::parser::DelimitedRecordReader own_reader(own_record);
        const textio::parser::FixedWidthRecordReader fixed_reader(own_record);
        // A move on this thread while other threads release their handles.
        const textio::parser::DelimitedRecordReader moved(std::move(shared_reader));
        if (i == 0) {
          r.shared_field = moved.field_delimiter;
          r.own_field = own_reader.field_delimiter;
          r.line = fixed_reader.line_delimiter;
        }
        r.consistent = r.consistent && moved.field_delimiter == r.shared_field &&
                       own_reader.field_delimiter == r.own_field && fixed_reader.line_delimiter == r.line &&
                       moved.line_delimiter == r.line;
      }
      r.calls = log.calls().size();
    });
  }
  for (std::thread& thread : threads) thread.join();

  for (std::size_t t = 0; t < thread_count; ++t) {
    SCOPED_TRACE(testing::Message() << "thread " << t);
    const thread_result& r = results[t];
    EXPECT_TRUE(r.consistent);
    EXPECT_EQ(r.calls, rounds * 9);  // 4 + 4 + 1 per round, logged on this thread
    ASSERT_NE(r.shared_field, nullptr);
    EXPECT_EQ(r.shared_field->strings(), shared_list(t));
    EXPECT_EQ(r.own_field->strings(), own_list(t));
    EXPECT_EQ(r.line, results[0].line);
    EXPECT_EQ(r.shared_field, results[t % 2].shared_field);
    for (std::size_t u = 0; u < t; ++u) {
      EXPECT_NE(r.own_field, results[u].own_field) << "vs " << u;
      if (t % 2 != u % 2) {
        EXPECT_NE(r.shared_field, results[u].shared_field) << "vs " << u;
      }
    }
  }
}

}  // namespace
