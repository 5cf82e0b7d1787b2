#include "import/values/datetime_parsing.hpp"

#include <array>
#include <chrono>
#include <cstdio>

namespace textio::import {
namespace {

bool is_digit(char c) { return c >= '0' && c <= '9'; }
bool is_alpha(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
char lower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

class cursor {
 public:
  explicit cursor(std::string_view s) : s_(s) {}
  bool done() const { return i_ == s_.size(); }
  char peek() const { return done() ? '\0' : s_[i_]; }
  bool take(char c) {
    if (peek() != c) return false;
    ++i_;
    return true;
  }
  // A run of min..max digits as a number, and how many there were.
  // `whole`: the run must end there (no digit follows).
  std::optional<int> number(std::size_t min, std::size_t max, std::size_t* count = nullptr, bool whole = true) {
    std::size_t n = 0;
    int value = 0;
    while (n < max && i_ + n < s_.size() && is_digit(s_[i_ + n])) value = value * 10 + (s_[i_ + n++] - '0');
    if (n < min || (whole && i_ + n < s_.size() && is_digit(s_[i_ + n]))) return std::nullopt;
    i_ += n;
    if (count) *count = n;
    return value;
  }
  std::string_view letters() {
    const std::size_t b = i_;
    while (i_ < s_.size() && is_alpha(s_[i_])) ++i_;
    return s_.substr(b, i_ - b);
  }
  std::size_t pos() const { return i_; }
  // AM or PM in either case, after at most one blank: 0 for AM, 12 for PM,
  // -1 (nothing taken) when there is none.
  int meridiem() {
    const std::size_t at = i_ + (peek() == ' ' ? 1 : 0);
    if (at + 2 > s_.size() || lower(s_[at + 1]) != 'm' || (at + 2 < s_.size() && is_alpha(s_[at + 2]))) return -1;
    const char c = lower(s_[at]);
    if (c != 'a' && c != 'p') return -1;
    i_ = at + 2;
    return c == 'a' ? 0 : 12;
  }

 private:
  std::string_view s_;
  std::size_t i_ = 0;
};

// January is 1; an abbreviation of three letters or more ("Sept" too).
std::optional<int> month_number(std::string_view word) {
  static constexpr std::array<std::string_view, 12> months = {"january",   "february", "march",    "april",
                                                              "may",       "june",     "july",     "august",
                                                              "september", "october",  "november", "december"};
  if (word.size() < 3) return std::nullopt;
  std::string l;
  for (const char c : word) l.push_back(lower(c));
  for (std::size_t m = 0; m < months.size(); ++m) {
    if (months[m].starts_with(l)) return static_cast<int>(m + 1);
  }
  return std::nullopt;
}

// Two-digit years: 00-68 are 2000-2068, 69-99 are 1969-1999.
int full_year(int year, std::size_t digits) {
  if (digits > 2) return year;
  return year < 69 ? 2000 + year : 1900 + year;
}

std::optional<int> year_at(cursor& c) {
  std::size_t digits = 0;
  const auto y = c.number(2, 4, &digits);
  if (!y || digits == 3) return std::nullopt;
  return full_year(*y, digits);
}

bool is_date_separator(char c) { return c == '-' || c == '/' || c == '.'; }

// The date part; leaves the cursor after it.
bool parse_date(cursor& c, date_order order, datetime_value& v) {
  int year = 0;
  int month = 0;
  int day = 0;
  if (is_alpha(c.peek())) {
    // Jan 5, 2020 / January 5 2020
    const auto m = month_number(c.letters());
    if (!m || !(c.take(' ') || c.take('-'))) return false;
    const auto d = c.number(1, 2);
    if (!d) return false;
    c.take(',');
    if (!(c.take(' ') || c.take('-'))) return false;
    const auto y = year_at(c);
    if (!y) return false;
    year = *y, month = *m, day = *d;
  } else {
    std::size_t digits = 0;
    const auto first = c.number(1, 4, &digits);
    if (!first || digits == 3) return false;
    const char sep = c.peek();
    if (!(is_date_separator(sep) || sep == ' ')) return false;
    c.take(sep);
    if (digits == 4) {
      // Year first: 2020-03-04, 2020/03/04.
      if (sep == ' ') return false;
      const auto m = c.number(1, 2);
      if (!m || !c.take(sep)) return false;
      const auto d = c.number(1, 2);
      if (!d) return false;
      year = *first, month = *m, day = *d;
    } else if (is_alpha(c.peek())) {
      // 5-Jan-2020 / 5 January 2020
      const auto m = month_number(c.letters());
      if (!m || !c.take(sep)) return false;
      const auto y = year_at(c);
      if (!y) return false;
      year = *y, month = *m, day = *first;
    } else {
      if (sep == ' ' || digits > 2) return false;
      const auto second = c.number(1, 2);
      if (!second || !c.take(sep)) return false;
      const auto y = year_at(c);
      if (!y) return false;
      year = *y;
      day = order == date_order::day_first ? *first : *second;
      month = order == date_order::day_first ? *second : *first;
    }
  }
  const std::chrono::year_month_day ymd{std::chrono::year{year}, std::chrono::month{static_cast<unsigned>(month)},
                                        std::chrono::day{static_cast<unsigned>(day)}};
  if (!ymd.ok()) return false;
  v.year = year;
  v.month = static_cast<std::uint8_t>(month);
  v.day = static_cast<std::uint8_t>(day);
  return true;
}

// hh:mm[:ss[.fff]], then AM or PM on a 12-hour clock (12 AM is midnight),
// then an optional Z or offset. `clock`: AM or PM must be there.
bool parse_time(cursor& c, datetime_value& v, bool clock = false) {
  auto h = c.number(1, 2);
  if (!h || *h > 23 || !c.take(':')) return false;
  const auto m = c.number(2, 2);
  if (!m || *m > 59) return false;
  int s = 0;
  std::int64_t fraction = 0;
  std::size_t digits = 0;
  if (c.take(':')) {
    const auto sec = c.number(2, 2);
    if (!sec || *sec > 60) return false;
    s = *sec;
    if (c.take('.') || c.take(',')) {
      while (is_digit(c.peek())) {
        if (digits < 9) fraction = fraction * 10 + (c.peek() - '0'), ++digits;
        c.take(c.peek());
      }
      if (digits == 0) return false;
      for (std::size_t k = digits; k < 9; ++k) fraction *= 10;
    }
  }
  const int half = c.meridiem();
  if (half < 0 && clock) return false;
  if (half >= 0) {
    if (*h < 1 || *h > 12) return false;
    h = *h % 12 + half;
  }
  v.has_time = true;
  v.nanoseconds = ((*h * 60LL + *m) * 60 + s) * 1'000'000'000LL + fraction;
  v.fraction_digits = static_cast<std::uint8_t>(digits);
  if (c.take('Z')) {
    v.offset_minutes = 0;
  } else if (c.peek() == '+' || c.peek() == '-') {
    const int sign = c.peek() == '-' ? -1 : 1;
    c.take(c.peek());
    const auto oh = c.number(2, 2, nullptr, false);
    if (!oh || *oh > 14) return false;
    int om = 0;
    const bool colon = c.take(':');
    if (colon || is_digit(c.peek())) {
      const auto mm = c.number(2, 2);
      if (!mm || *mm > 59) return false;
      om = *mm;
    }
    v.offset_minutes = static_cast<std::int16_t>(sign * (*oh * 60 + om));
  }
  return true;
}

}  // namespace

std::optional<datetime_value> parse_datetime(std::string_view text, date_order order) {
  if (text.size() < 6 || text.size() > 40) return std::nullopt;
  cursor c(text);
  datetime_value v;
  if (!parse_date(c, order, v)) {
    // A time of day alone reads as one when it says AM or PM; without, it
    // is a duration.
    cursor t(text);
    datetime_value time_only;
    time_only.has_date = false;
    if (!parse_time(t, time_only, true) || !t.done()) return std::nullopt;
    return time_only;
  }
  if (c.done()) return v;
  if (!(c.take('T') || c.take(' '))) return std::nullopt;
  if (!parse_time(c, v) || !c.done()) return std::nullopt;
  return v;
}

date_orders accepted_orders(std::string_view text) {
  return {parse_datetime(text, date_order::day_first).has_value(),
          parse_datetime(text, date_order::month_first).has_value()};
}

double datetime_value::seconds_since_epoch() const {
  using namespace std::chrono;
  const sys_days d = year_month_day{std::chrono::year{year}, std::chrono::month{month}, std::chrono::day{day}};
  double s = static_cast<double>(d.time_since_epoch().count()) * 86400.0 + static_cast<double>(nanoseconds) / 1e9;
  if (offset_minutes) s -= *offset_minutes * 60.0;
  return s;
}

std::string datetime_value::iso_text() const {
  char buf[64];
  int n = has_date
              ? std::snprintf(buf, sizeof buf, "%04d-%02u-%02u", static_cast<int>(year), unsigned{month}, unsigned{day})
              : 0;
  if (has_time) {
    const std::int64_t secs = nanoseconds / 1'000'000'000;
    n += std::snprintf(buf + n, sizeof buf - static_cast<std::size_t>(n),
                       has_date ? "T%02d:%02d:%02d" : "%02d:%02d:%02d", static_cast<int>(secs / 3600),
                       static_cast<int>(secs / 60 % 60), static_cast<int>(secs % 60));
    if (fraction_digits > 0) {
      char frac[16];
      std::snprintf(frac, sizeof frac, "%09lld", static_cast<long long>(nanoseconds % 1'000'000'000));
      n += std::snprintf(buf + n, sizeof buf - static_cast<std::size_t>(n), ".%.*s", int{fraction_digits}, frac);
    }
    if (offset_minutes) {
      if (*offset_minutes == 0) {
        n += std::snprintf(buf + n, sizeof buf - static_cast<std::size_t>(n), "Z");
      } else {
        const int o = *offset_minutes < 0 ? -*offset_minutes : *offset_minutes;
        n += std::snprintf(buf + n, sizeof buf - static_cast<std::size_t>(n), "%c%02d:%02d",
                           *offset_minutes < 0 ? '-' : '+', o / 60, o % 60);
      }
    }
  }
  return std::string(buf, static_cast<std::size_t>(n));
}

}  // namespace textio::import
