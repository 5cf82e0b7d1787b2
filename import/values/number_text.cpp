#include "import/values/number_text.hpp"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>

namespace textio::import {
namespace {

// The length of the exponent form of a number of `significant` digits,
// d[.ddd]e+XX, for the exponents below 100 that the texts here have.
std::size_t exponent_form_length(std::size_t significant) { return significant + (significant > 1 ? 1 : 0) + 4; }

// Whether the digits of a whole number below 2^53 are its shortest form: no
// longer than the exponent form ("1e+06" wins over "1000000").
bool whole_digits_are_shortest(std::string_view digits) {
  std::size_t significant = digits.size();
  while (significant > 1 && digits[significant - 1] == '0') --significant;
  return digits.size() <= exponent_form_length(significant);
}

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
  if (!whole_digits_are_shortest(std::string_view(first, static_cast<std::size_t>(end - first)))) return false;
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

bool is_shortest_number_text(std::string_view text) {
  // At most 15 significant digits and a sign keep the text under 40 bytes
  // unless zeros lead the fraction, and then the exponent form is shorter.
  if (text.empty() || text.size() > 40) return false;
  const std::string_view sign = text.front() == '-' ? text.substr(0, 1) : std::string_view();
  const std::string_view number = text.substr(sign.size());
  const std::size_t point = number.find('.');
  const std::string_view whole = number.substr(0, point);
  const std::string_view fraction = point == std::string_view::npos ? std::string_view() : number.substr(point + 1);
  const auto digits = [](std::string_view s) {
    for (const char c : s) {
      if (c < '0' || c > '9') return false;
    }
    return true;
  };
  // The whole part: "0" or digits that do not start with 0; the fraction,
  // when there is a point, digits that do not end in 0.
  if (whole.empty() || !digits(whole) || (whole.size() > 1 && whole.front() == '0')) return false;
  if (point != std::string_view::npos && (fraction.empty() || !digits(fraction) || fraction.back() == '0')) {
    return false;
  }
  if (fraction.empty()) {
    // A whole number: append_whole_number writes its digits when they are
    // no longer than the exponent form; "-0" takes the general path.
    if (whole == "0") return sign.empty();
    return whole.size() <= 15 && whole_digits_are_shortest(whole);
  }
  // A fraction: the shortest text is the fixed form (this one) when it is no
  // longer than the exponent form.
  const std::size_t leading_zeros =
      whole == "0" ? fraction.find_first_not_of('0') : 0;  // the fraction ends in a digit other than 0
  const std::size_t significant = whole == "0" ? fraction.size() - leading_zeros : whole.size() + fraction.size();
  if (significant > 15) return false;
  return number.size() <= exponent_form_length(significant);
}

namespace {

template <class CharT>
bool json_number_syntax(std::basic_string_view<CharT> text) {
  std::size_t i = 0;
  const auto at = [&](char c) { return i < text.size() && text[i] == static_cast<CharT>(c); };
  const auto digits = [&] {
    const std::size_t from = i;
    while (i < text.size() && text[i] >= '0' && text[i] <= '9') ++i;
    return i > from;
  };
  if (at('-')) ++i;
  if (at('0')) {
    ++i;
  } else if (!digits()) {
    return false;
  }
  if (at('.')) {
    ++i;
    if (!digits()) return false;
  }
  if (at('e') || at('E')) {
    ++i;
    if (at('+') || at('-')) ++i;
    if (!digits()) return false;
  }
  return i == text.size();
}

}  // namespace

bool is_json_number_text(std::string_view text) { return json_number_syntax(text); }
bool is_json_number_text(std::u16string_view text) { return json_number_syntax(text); }

bool written_as_json_number(const output_value& v) {
  if (!v.plain_decimal) return false;
  return v.utf16 ? json_number_syntax(v.units) : json_number_syntax(v.written);
}

std::string_view written_shortest(const output_value& v) {
  if (!v.plain_decimal || v.utf16 || !is_shortest_number_text(v.written)) return {};
  return v.written;
}

}  // namespace textio::import
