// Durations as hh:mm:ss with an optional fraction and optional days before a
// blank ("2 03:04:05"); hours may exceed a day when no days are given.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace textio::import {

struct duration_value {
  bool negative = false;
  std::int64_t nanoseconds = 0;  // magnitude
  std::uint8_t fraction_digits = 0;

  double seconds() const;
  // hh:mm:ss[.fff]: hours counted past a day, the fraction as written.
  std::string text() const;
};

std::optional<duration_value> parse_duration(std::string_view text);

}  // namespace textio::import
