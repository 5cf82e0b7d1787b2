#include "import/values/duration_parsing.hpp"

#include <cstdio>

namespace textio::import {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }

// Digits from `i`, at most `max`; nothing when there are none or too many.
std::optional<std::int64_t> digits(std::string_view s, std::size_t& i, std::size_t max, std::size_t min = 1) {
  std::size_t n = 0;
  std::int64_t v = 0;
  while (i < s.size() && is_digit(s[i])) {
    if (++n > max) return std::nullopt;
    v = v * 10 + (s[i++] - '0');
  }
  if (n < min) return std::nullopt;
  return v;
}

}  // namespace

std::optional<duration_value> parse_duration(std::string_view s) {
  duration_value v;
  std::size_t i = 0;
  if (i < s.size() && (s[i] == '-' || s[i] == '+')) v.negative = s[i++] == '-';
  std::int64_t days = 0;
  // Bounds that keep the nanoseconds within 64 bits: 999999 hours, or 99999
  // days.
  auto hours = digits(s, i, 6);
  if (!hours) return std::nullopt;
  if (i < s.size() && s[i] == ' ') {
    if (*hours > 99999) return std::nullopt;
    ++i;
    days = *hours;
    hours = digits(s, i, 2);
    if (!hours || *hours > 23) return std::nullopt;
  }
  if (i >= s.size() || s[i++] != ':') return std::nullopt;
  const auto minutes = digits(s, i, 2, 2);
  if (!minutes || *minutes > 59 || i >= s.size() || s[i++] != ':') return std::nullopt;
  const auto seconds = digits(s, i, 2, 2);
  if (!seconds || *seconds > 59) return std::nullopt;
  std::int64_t fraction = 0;
  std::size_t n = 0;
  if (i < s.size() && s[i] == '.') {
    ++i;
    while (i < s.size() && is_digit(s[i])) {
      if (n < 9) fraction = fraction * 10 + (s[i] - '0'), ++n;
      ++i;
    }
    if (n == 0) return std::nullopt;
    for (std::size_t k = n; k < 9; ++k) fraction *= 10;
  }
  if (i != s.size()) return std::nullopt;
  v.nanoseconds = (((days * 24 + *hours) * 60 + *minutes) * 60 + *seconds) * 1'000'000'000LL + fraction;
  v.fraction_digits = static_cast<std::uint8_t>(n);
  return v;
}

double duration_value::seconds() const {
  const double s = static_cast<double>(nanoseconds) / 1e9;
  return negative ? -s : s;
}

std::string duration_value::text() const {
  const std::int64_t secs = nanoseconds / 1'000'000'000;
  char buf[48];
  int n = std::snprintf(buf, sizeof buf, "%s%02lld:%02d:%02d", negative ? "-" : "", static_cast<long long>(secs / 3600),
                        static_cast<int>(secs / 60 % 60), static_cast<int>(secs % 60));
  if (fraction_digits > 0) {
    char frac[16];
    std::snprintf(frac, sizeof frac, "%09lld", static_cast<long long>(nanoseconds % 1'000'000'000));
    n += std::snprintf(buf + n, sizeof buf - static_cast<std::size_t>(n), ".%.*s", int{fraction_digits}, frac);
  }
  return std::string(buf, static_cast<std::size_t>(n));
}

}  // namespace textio::import
