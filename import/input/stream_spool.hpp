// The bytes of a stream (a decompressed input) read on a thread of its own
// and kept in memory from a floor on, so that several readers can read them
// at any offset at once, as parts of a file are read. The thread stays a
// bounded amount ahead of the floor, unless a reader waits for bytes beyond
// that; the floor rises as the readers no longer need the bytes below it.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>

namespace textio::import {

class stream_spool {
 public:
  // Puts up to `size` bytes into `into`; 0 at the end. May throw.
  using source = std::function<std::size_t(char* into, std::size_t size)>;

  // The stream's bytes from `first_offset` on: `first_bytes`, then what
  // `from` gives, read on a thread in blocks of `block_bytes`, at most
  // `ahead_bytes` past the floor. Throws std::system_error when no thread
  // can be started.
  stream_spool(std::string first_bytes, std::uint64_t first_offset, source from, std::size_t block_bytes,
               std::uint64_t ahead_bytes);
  stream_spool(const stream_spool&) = delete;
  stream_spool& operator=(const stream_spool&) = delete;
  ~stream_spool();

  // Copies the bytes at `offset`, up to `size`, waiting for them; fewer
  // only at the end of the stream. Throws what the source threw once
  // `offset` reaches the bytes it failed at, and std::out_of_range for an
  // offset below the floor (released).
  std::size_t read_at(std::uint64_t offset, char* into, std::size_t size);

  // No reader needs the bytes before `offset` any more: their memory goes.
  void release_before(std::uint64_t offset);

 private:
  void fill();

  source from_;
  std::size_t block_bytes_;
  std::uint64_t ahead_bytes_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<std::uint64_t, std::string> blocks_;  // by their first offset, contiguous
  std::uint64_t floor_;
  std::uint64_t end_;         // the offset after the last byte read so far
  std::uint64_t wanted_ = 0;  // a waiting reader needs bytes up to here
  bool ended_ = false;        // the source gave 0 or threw
  std::exception_ptr failure_;
  bool stopping_ = false;
  std::thread thread_;
};

}  // namespace textio::import
