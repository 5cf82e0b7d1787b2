#include "import/values/number_conversion.hpp"

#include <fast_float/fast_float.h>

#include <cmath>
#include <limits>

namespace textio::import {
namespace {

bool is_digit(char16_t u) { return u >= u'0' && u <= u'9'; }

char16_t lower(char16_t u) { return u >= u'A' && u <= u'Z' ? static_cast<char16_t>(u + 32) : u; }

// NaN or Inf with an optional sign, the whole of `ascii`.
std::optional<double> special_value(std::string_view ascii) {
  bool negative = false;
  if (!ascii.empty() && (ascii[0] == '+' || ascii[0] == '-')) {
    negative = ascii[0] == '-';
    ascii.remove_prefix(1);
  }
  if (ascii == "nan") return std::numeric_limits<double>::quiet_NaN();
  if (ascii == "inf" || ascii == "infinity") {
    return negative ? -std::numeric_limits<double>::infinity() : std::numeric_limits<double>::infinity();
  }
  return std::nullopt;
}

}  // namespace

number_format number_format_of(const textio::parser::options& record) {
  number_format format;
  format.decimal_separator = record.decimal_separator();
  format.thousands_separator = record.thousands_separator();
  format.exp_chars = record.exp_chars();
  format.trim_non_numeric = record.trim_non_numeric();
  return format;
}

bool reads_plain_decimals(const number_format& format) {
  return format.decimal_separator == u'.' && format.thousands_separator.empty() && !format.trim_non_numeric;
}

template <class CharT>
bool to_number(std::basic_string_view<CharT> text, const number_format& format, double& number) {
  if constexpr (sizeof(CharT) == 1) {
    // Plain numbers under the usual format read in place: digits first and
    // last rule out NaN and Inf spellings, which the general path checks.
    if (format.decimal_separator == u'.' && format.thousands_separator.empty() && !format.trim_non_numeric &&
        format.exp_chars.find(u'e') != std::u16string::npos && format.exp_chars.find(u'E') != std::u16string::npos &&
        !text.empty() && is_digit(static_cast<unsigned char>(text.back()))) {
      std::string_view t = text;
      if (t.front() == '+') t.remove_prefix(1);
      if (!t.empty() && (is_digit(static_cast<unsigned char>(t.front())) || t.front() == '-' || t.front() == '.')) {
        double value = 0;
        const auto [ptr, ec] = fast_float::from_chars(t.data(), t.data() + t.size(), value);
        if (ec == std::errc() && ptr == t.data() + t.size()) {
          number = value;
          return true;
        }
      }
    }
  }
  const auto unit = [&](std::size_t i) {
    return static_cast<char16_t>(static_cast<std::make_unsigned_t<CharT>>(text[i]));
  };
  std::size_t begin = 0;
  std::size_t end = text.size();
  if (format.trim_non_numeric) {
    // Up to the first unit that can start a number, back from the last digit.
    while (begin < end && !(is_digit(unit(begin)) || unit(begin) == u'+' || unit(begin) == u'-' ||
                            unit(begin) == format.decimal_separator))
      ++begin;
    while (end > begin && !is_digit(unit(end - 1))) --end;
  }
  if (begin == end) return false;
  // The plain form that from_chars reads.
  std::string ascii;
  ascii.reserve(end - begin);
  bool other = false;  // a unit with no part in a number: only NaN or Inf can still match
  for (std::size_t i = begin; i < end; ++i) {
    const char16_t u = unit(i);
    if (u == format.decimal_separator) {
      ascii.push_back('.');
    } else if (is_digit(u) || u == u'+' || u == u'-') {
      ascii.push_back(static_cast<char>(u));
    } else if (format.exp_chars.find(u) != std::u16string::npos) {
      ascii.push_back('e');
    } else if (format.thousands_separator.find(u) != std::u16string::npos) {
      continue;
    } else if (u < 0x80) {
      ascii.push_back(static_cast<char>(lower(u)));
      other = true;
    } else {
      return false;
    }
  }
  if (other) {
    const auto special = special_value(ascii);
    if (special) number = *special;
    return special.has_value();
  }
  std::string_view digits = ascii;
  if (!digits.empty() && digits[0] == '+') digits.remove_prefix(1);
  if (digits.empty() || digits[0] == '+') return false;
  // (A number too large or too small for a double reads as its infinity or
  // zero, with its sign.)
  double value = 0;
  const auto [ptr, ec] = fast_float::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (ec != std::errc() || ptr != digits.data() + digits.size()) return false;
  number = value;
  return true;
}

template bool to_number<char>(std::string_view, const number_format&, double&);
template bool to_number<char16_t>(std::u16string_view, const number_format&, double&);

}  // namespace textio::import
