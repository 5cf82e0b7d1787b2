// Dates and date-times as written in text files: ISO 8601 (a date, or a date
// and a time joined by T or a blank, with fractional seconds and Z or an
// offset), day-first and month-first dates with '/', '-' or '.', two- and
// four-digit years, English month names and abbreviations, and times on a
// 12-hour clock with AM or PM, also without a date.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "import/value_types.hpp"

namespace textio::import {

struct datetime_value {
  std::int32_t year = 1970;
  std::uint8_t month = 1;
  std::uint8_t day = 1;
  bool has_date = true;  // false: a time of day alone, on 1970-01-01
  bool has_time = false;
  std::int64_t nanoseconds = 0;                // of the day
  std::uint8_t fraction_digits = 0;            // as written
  std::optional<std::int16_t> offset_minutes;  // a zone: Z is 0

  // Seconds since 1970-01-01T00:00:00, at UTC when there is a zone.
  double seconds_since_epoch() const;
  // ISO 8601 with the precision the text had: 2020-03-04, or
  // 2020-03-04T05:06:07.25+01:00, or 17:05:00 for a time alone.
  std::string iso_text() const;
};

// The date the text spells, or nothing. `order` decides a date of two
// numbers and a year; dates with a month name or a four-digit year first
// need no order.
std::optional<datetime_value> parse_datetime(std::string_view text, date_order order);

// Which orders a text reads under: a date of two numbers up to 12 reads
// under both, 13/4/2020 only day-first, an ISO date under both.
struct date_orders {
  bool day_first = false;
  bool month_first = false;
};
date_orders accepted_orders(std::string_view text);

}  // namespace textio::import
