// The process-wide cache behind get_or_create_delim: a map from list to a weak
// reference, under one mutex. Objects are built under the lock, so two
// threads asking for the same new list always get one object.
#include "zvdelim/get_or_create_delim.hpp"

#include <algorithm>
#include <map>
#include <mutex>
#include <utility>

#include "zvdelim/delimiter.hpp"

namespace textio {
namespace {

// Below this many entries the cache is not swept at all.
constexpr std::size_t sweep_floor = 64;

class delimiter_cache {
 public:
  std::shared_ptr<Delimiter> get(const std::vector<::ustring>& strings) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = entries_.find(strings);
    if (found != entries_.end()) {
      if (auto live = found->second.lock()) return live;
      auto fresh = std::make_shared<Delimiter>(strings);
      found->second = fresh;
      return fresh;
    }
    if (entries_.size() >= sweep_at_) sweep();
    auto fresh = std::make_shared<Delimiter>(strings);
    entries_.emplace(strings, fresh);
    return fresh;
  }

  std::size_t size() {
    const std::lock_guard<std::mutex> lock(mutex_);
    return entries_.size();
  }

 private:
  // Drops the entries whose object has died. The next sweep waits until the
  // cache has doubled again, so the cost per insertion stays constant.
  void sweep() {
    std::erase_if(entries_, [](const auto& entry) { return entry.second.expired(); });
    sweep_at_ = std::max(sweep_floor, 2 * entries_.size());
  }

  std::mutex mutex_;
  std::map<std::vector<::ustring>, std::weak_ptr<Delimiter>> entries_;
  std::size_t sweep_at_ = sweep_floor;
};

delimiter_cache& cache() {
  static delimiter_cache instance;
  return instance;
}

thread_local detail::delim_call_observer observer;
thread_local std::uint64_t call_count = 0;

}  // namespace

std::shared_ptr<Delimiter> get_or_create_delim(const std::vector<::ustring>& strings) {
  ++call_count;
  if (observer) observer(strings);
  return cache().get(strings);
}

namespace detail {

delim_call_observer set_delim_call_observer(delim_call_observer new_observer) {
  auto old = std::move(observer);
  observer = std::move(new_observer);
  return old;
}

std::uint64_t delim_call_count() noexcept { return call_count; }

std::size_t delim_cache_entries() { return cache().size(); }

}  // namespace detail
}  // namespace textio
