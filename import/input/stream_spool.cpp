#include "import/input/stream_spool.hpp"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <stdexcept>
#include <utility>

namespace textio::import {

stream_spool::stream_spool(std::string first_bytes, std::uint64_t first_offset, source from, std::size_t block_bytes,
                           std::uint64_t ahead_bytes)
    : from_(std::move(from)),
      block_bytes_(std::max<std::size_t>(block_bytes, 1)),
      ahead_bytes_(ahead_bytes),
      floor_(first_offset),
      end_(first_offset + first_bytes.size()) {
  if (!first_bytes.empty()) blocks_.emplace(first_offset, std::move(first_bytes));
  thread_ = std::thread([this] { fill(); });
}

stream_spool::~stream_spool() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void stream_spool::fill() {
  for (;;) {
    {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [&] { return stopping_ || end_ - floor_ < ahead_bytes_ || wanted_ > end_; });
      if (stopping_) return;
    }
    std::string block(block_bytes_, '\0');
    std::exception_ptr failure;
    std::size_t got = 0;
    try {
      while (got < block.size()) {
        const std::size_t n = from_(block.data() + got, block.size() - got);
        if (n == 0) break;
        got += n;
      }
    } catch (...) {
      failure = std::current_exception();
    }
    const bool last = failure || got < block.size();
    block.resize(got);
    {
      const std::lock_guard lock(mutex_);
      if (got != 0) {
        blocks_.emplace(end_, std::move(block));
        end_ += got;
      }
      if (last) {
        ended_ = true;
        failure_ = failure;
      }
    }
    changed_.notify_all();
    if (last) return;
  }
}

std::size_t stream_spool::read_at(std::uint64_t offset, char* into, std::size_t size) {
  std::unique_lock lock(mutex_);
  if (offset < floor_) throw std::out_of_range("stream bytes released");
  if (size == 0) return 0;
  if (offset >= end_ && !ended_) {
    wanted_ = std::max(wanted_, offset + 1);
    changed_.notify_all();
    changed_.wait(lock, [&] { return offset < end_ || ended_; });
    if (offset < floor_) throw std::out_of_range("stream bytes released");
  }
  if (offset >= end_) {
    if (failure_) std::rethrow_exception(failure_);
    return 0;
  }
  const std::size_t n = static_cast<std::size_t>(std::min<std::uint64_t>(size, end_ - offset));
  auto block = std::prev(blocks_.upper_bound(offset));
  for (std::size_t done = 0; done < n; ++block) {
    const std::size_t at = static_cast<std::size_t>(offset + done - block->first);
    const std::size_t take = std::min(n - done, block->second.size() - at);
    std::memcpy(into + done, block->second.data() + at, take);
    done += take;
  }
  return n;
}

void stream_spool::release_before(std::uint64_t offset) {
  {
    const std::lock_guard lock(mutex_);
    if (offset <= floor_) return;
    floor_ = std::min(offset, end_);
    while (!blocks_.empty() && blocks_.begin()->first + blocks_.begin()->second.size() <= floor_) {
      blocks_.erase(blocks_.begin());
    }
  }
  changed_.notify_all();
}

}  // namespace textio::import
