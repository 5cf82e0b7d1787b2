#include "import/input/read_ahead.hpp"

#include <algorithm>
#include <cstring>
#include <utility>

namespace textio::import {

read_ahead::read_ahead(source from, std::size_t block_bytes, std::size_t blocks)
    : from_(std::move(from)),
      block_bytes_(std::max<std::size_t>(block_bytes, 1)),
      blocks_(std::max<std::size_t>(blocks, 1)) {
  thread_ = std::thread([this] { fill(); });
}

read_ahead::~read_ahead() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void read_ahead::fill() {
  for (;;) {
    std::string block;
    {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [&] { return stopping_ || full_.size() < blocks_; });
      if (stopping_) return;
      if (!free_.empty()) {
        block = std::move(free_.back());
        free_.pop_back();
      }
    }
    std::exception_ptr failure;
    std::size_t got = 0;
    try {
      block.resize(block_bytes_);
      // Fill the block, so that the reader takes few and large blocks.
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
      if (!block.empty()) full_.push_back(std::move(block));
      if (last) {
        ended_ = true;
        failure_ = failure;
      }
    }
    changed_.notify_all();
    if (last) return;
  }
}

std::size_t read_ahead::read(char* into, std::size_t size) {
  if (size == 0) return 0;
  if (current_at_ == current_.size()) {
    std::unique_lock lock(mutex_);
    if (current_.capacity() != 0) free_.push_back(std::move(current_));
    current_.clear();
    current_at_ = 0;
    changed_.wait(lock, [&] { return !full_.empty() || ended_; });
    if (full_.empty()) {
      if (failure_) std::rethrow_exception(failure_);
      return 0;
    }
    current_ = std::move(full_.front());
    full_.pop_front();
    changed_.notify_all();
  }
  const std::size_t n = std::min(size, current_.size() - current_at_);
  std::memcpy(into, current_.data() + current_at_, n);
  current_at_ += n;
  return n;
}

}  // namespace textio::import
