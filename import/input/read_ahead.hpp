// A byte source read ahead on a thread of its own: the decompressing thread
// of a compressed input, so that decompression and reading go on at once.
// The source fills a few blocks ahead of the reader (bounded memory) and its
// failure is thrown to the reader where it happened in the bytes, after
// every byte before it.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace textio::import {

class read_ahead {
 public:
  // Puts up to `size` bytes into `into`; 0 at the end. May throw.
  using source = std::function<std::size_t(char* into, std::size_t size)>;

  // Starts the thread, which calls `from` until it gives 0 or throws, with
  // at most `blocks` blocks of `block_bytes` waiting. Throws
  // std::system_error when no thread can be started.
  read_ahead(source from, std::size_t block_bytes, std::size_t blocks);
  read_ahead(const read_ahead&) = delete;
  read_ahead& operator=(const read_ahead&) = delete;
  // Stops the thread (at its next block) and waits for it.
  ~read_ahead();

  // The source's next bytes, up to `size`; 0 at its end. Throws what the
  // source threw, once the bytes before the failure are taken.
  std::size_t read(char* into, std::size_t size);

 private:
  void fill();

  source from_;
  std::size_t block_bytes_;
  std::size_t blocks_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::string> full_;   // filled blocks, in order
  std::vector<std::string> free_;  // taken blocks, their memory kept
  std::string current_;            // the block being read
  std::size_t current_at_ = 0;
  bool ended_ = false;  // the source gave 0 or threw
  std::exception_ptr failure_;
  bool stopping_ = false;
  std::thread thread_;
};

}  // namespace textio::import
