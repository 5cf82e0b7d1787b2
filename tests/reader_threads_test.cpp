// Readers built on several threads at once from records with equal and with
// different lists: every thread must see one shared object per distinct list,
// and the sanitizer builds must find no race.
#include "parser/record_readers.hpp"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <thread>
#include <vector>

#include "support/delim_call_log.hpp"
#include "zvdelim/delimiter.hpp"

namespace {

using textio::parser::options;
using text_list = std::vector<ustring>;
using handle = std::shared_ptr<textio::Delimiter>;

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
