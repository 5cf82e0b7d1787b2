#include "tools/memory_limit.hpp"

#include <sys/resource.h>
#include <unistd.h>

#include <cctype>
#include <cstdio>
#include <limits>

#include "tools/usage_error.hpp"

#if defined(__SANITIZE_ADDRESS__)
#define ZVTP_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZVTP_ADDRESS_SANITIZER 1
#endif
#endif

namespace zvtool {

std::uint64_t parse_memory_size(const std::string& size) {
  const auto refuse = [&size]() -> std::uint64_t {
    throw usage_error("--max-memory takes a size in bytes with an optional K, M, G or T suffix, not '" + size + "'");
  };
  std::size_t i = 0;
  std::uint64_t value = 0;
  constexpr std::uint64_t max = std::numeric_limits<std::uint64_t>::max();
  while (i < size.size() && std::isdigit(static_cast<unsigned char>(size[i])) != 0) {
    const auto digit = static_cast<std::uint64_t>(size[i] - '0');
    if (value > (max - digit) / 10) return refuse();
    value = value * 10 + digit;
    ++i;
  }
  if (i == 0) return refuse();
  std::string suffix = size.substr(i);
  for (char& c : suffix) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  if (suffix.ends_with("IB"))
    suffix.resize(suffix.size() - 2);
  else if (suffix.size() > 1 && suffix.ends_with('B'))
    suffix.pop_back();
  int shift = 0;
  if (suffix == "K")
    shift = 10;
  else if (suffix == "M")
    shift = 20;
  else if (suffix == "G")
    shift = 30;
  else if (suffix == "T")
    shift = 40;
  else if (!suffix.empty() && suffix != "B")
    return refuse();
  if (value == 0 || value > (max >> shift)) return refuse();
  return value << shift;
}

std::uint64_t default_memory_limit() {
  const long pages = ::sysconf(_SC_PHYS_PAGES);
  const long page_size = ::sysconf(_SC_PAGESIZE);
  if (pages <= 0 || page_size <= 0) return std::numeric_limits<std::uint64_t>::max();
  return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(page_size) / 2;
}

void apply_memory_limit(std::uint64_t bytes) {
#ifndef ZVTP_ADDRESS_SANITIZER
  rlimit limit{};
  if (::getrlimit(RLIMIT_AS, &limit) != 0) return;
  const auto wanted = static_cast<rlim_t>(bytes);
  // Never above a hard limit the caller already set.
  limit.rlim_cur = limit.rlim_max != RLIM_INFINITY && limit.rlim_max < wanted ? limit.rlim_max : wanted;
  ::setrlimit(RLIMIT_AS, &limit);
#else
  (void)bytes;
#endif
}

std::string memory_size_text(std::uint64_t bytes) {
  const char* units[] = {"bytes", "KiB", "MiB", "GiB", "TiB"};
  double value = static_cast<double>(bytes);
  int unit = 0;
  while (value >= 1024 && unit < 4) {
    value /= 1024;
    ++unit;
  }
  char text[32];
  std::snprintf(text, sizeof text, unit == 0 ? "%.0f %s" : "%.1f %s", value, units[unit]);
  return text;
}

}  // namespace zvtool
