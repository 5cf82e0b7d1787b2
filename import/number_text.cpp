#include "import/number_text.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace textio::import {
namespace {

// Whole numbers below 2^53 as integer digits, which is what the shortest
// round trip gives (every such integer is exact, so no shorter digits read
// back to it) as long as the plain form is no longer than the exponent form
// ("1e+06" wins over "1000000"). False when the value takes the general path.
bool append_whole_number(std::string& out, double value) {
  if (!(std::fabs(value) < 9007199254740992.0) || value != std::trunc(value) || (value == 0 && std::signbit(value))) {
    return false;
  }
  std::array<char, 24> digits{};
  const auto whole = static_cast<std::int64_t>(value);
  char* const end = std::to_chars(digits.data(), digits.data() + digits.size(), whole).ptr;
  const char* const first = digits.data() + (whole < 0 ? 1 : 0);
  const auto length = static_cast<std::size_t>(end - first);
  std::size_t significant = length;
  while (significant > 1 && first[significant - 1] == '0') --significant;
  // d[.ddd]e+XX: the exponent is below 16, two digits.
  const std::size_t exponent_form = significant + (significant > 1 ? 1 : 0) + 4;
  if (length > exponent_form) return false;
  out.append(digits.data(), end);
  return true;
}

}  // namespace

void append_number_text(std::string& out, double value) {
  if (std::isnan(value)) {
    out += "NaN";
  } else if (std::isinf(value)) {
    out += value > 0 ? "Inf" : "-Inf";
  } else if (!append_whole_number(out, value)) {
    std::array<char, 32> digits{};
    const auto result = std::to_chars(digits.data(), digits.data() + digits.size(), value);
    out.append(digits.data(), result.ptr);
  }
}

}  // namespace textio::import
