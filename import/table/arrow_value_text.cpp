#include "import/table/arrow_value_text.hpp"

#include <cstdio>

#include "import/values/number_text.hpp"

namespace textio::import {
namespace {

// The date of a day count since 1970-01-01 (the proleptic Gregorian calendar).
void append_date(std::string& out, std::int64_t days) {
  days += 719468;
  const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
  const std::int64_t doe = days - era * 146097;
  const std::int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const std::int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const std::int64_t mp = (5 * doy + 2) / 153;
  const std::int64_t day = doy - (153 * mp + 2) / 5 + 1;
  const std::int64_t month = mp < 10 ? mp + 3 : mp - 9;
  const std::int64_t year = yoe + era * 400 + (month <= 2);
  char buf[32];
  const int n = std::snprintf(buf, sizeof buf, "%04lld-%02lld-%02lld", static_cast<long long>(year),
                              static_cast<long long>(month), static_cast<long long>(day));
  out.append(buf, static_cast<std::size_t>(n));
}

// hh:mm:ss with a fraction of microseconds when there is one.
void append_clock(std::string& out, std::int64_t micros) {
  const std::int64_t seconds = micros / 1000000;
  const std::int64_t fraction = micros % 1000000;
  char buf[48];
  int n = std::snprintf(buf, sizeof buf, "%02lld:%02lld:%02lld", static_cast<long long>(seconds / 3600),
                        static_cast<long long>(seconds / 60 % 60), static_cast<long long>(seconds % 60));
  if (fraction != 0)
    n += std::snprintf(buf + n, sizeof buf - static_cast<std::size_t>(n), ".%06lld", static_cast<long long>(fraction));
  out.append(buf, static_cast<std::size_t>(n));
}

}  // namespace

void append_value_text(std::string& out, const arrow_column& c, std::int64_t row, bool utc) {
  const auto i = static_cast<std::size_t>(row);
  switch (c.type) {
    case arrow_type::boolean:
      out += ((c.values.data()[i >> 3] >> (i & 7)) & 1) != 0 ? "true" : "false";
      return;
    case arrow_type::int8:
      return append_integer(out, c.values.at<std::int8_t>(i));
    case arrow_type::int16:
      return append_integer(out, c.values.at<std::int16_t>(i));
    case arrow_type::int32:
      return append_integer(out, c.values.at<std::int32_t>(i));
    case arrow_type::int64:
      return append_integer(out, c.values.at<std::int64_t>(i));
    case arrow_type::uint8:
      return append_integer(out, c.values.at<std::uint8_t>(i));
    case arrow_type::uint16:
      return append_integer(out, c.values.at<std::uint16_t>(i));
    case arrow_type::uint32:
      return append_integer(out, c.values.at<std::uint32_t>(i));
    case arrow_type::uint64:
      return append_integer(out, c.values.at<std::uint64_t>(i));
    case arrow_type::float32:
      return append_number_text(out, c.values.at<float>(i));
    case arrow_type::float64:
      return append_number_text(out, c.values.at<double>(i));
    case arrow_type::timestamp: {
      const auto micros = c.values.at<std::int64_t>(i);
      const std::int64_t day = 86400LL * 1000000;
      const std::int64_t days = micros >= 0 ? micros / day : -((-micros + day - 1) / day);
      append_date(out, days);
      out += 'T';
      append_clock(out, micros - days * day);
      if (utc) out += 'Z';
      return;
    }
    case arrow_type::duration: {
      const auto micros = c.values.at<std::int64_t>(i);
      if (micros < 0) out += '-';
      return append_clock(out, micros < 0 ? -micros : micros);
    }
    case arrow_type::null:
    case arrow_type::utf8:
    case arrow_type::large_utf8:
      return;
  }
}
}  // namespace textio::import
