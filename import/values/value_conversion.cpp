#include "import/values/value_conversion.hpp"

#include <charconv>
#include <cstdint>
#include <limits>

#include "import/values/duration_parsing.hpp"
#include "import/values/number_text.hpp"

namespace textio::import {
namespace {

// The text as ASCII, or false when it is longer than `buffer` or holds
// other units (no typed value but text has them).
template <class CharT>
bool narrow(std::basic_string_view<CharT> text, char (&buffer)[64], std::string_view& out) {
  if (text.size() > sizeof buffer) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto u = static_cast<std::make_unsigned_t<CharT>>(text[i]);
    if (u >= 0x80) return false;
    buffer[i] = static_cast<char>(u);
  }
  out = std::string_view(buffer, text.size());
  return true;
}

template <class T>
bool in_range(std::int64_t v) {
  return v >= std::numeric_limits<T>::min() && v <= std::numeric_limits<T>::max();
}

// Whether `type`, an integer type read as int64 (any but uint64), holds `v`.
bool fits_type(value_type type, std::int64_t v) {
  switch (type) {
    case value_type::int8:
      return in_range<std::int8_t>(v);
    case value_type::int16:
      return in_range<std::int16_t>(v);
    case value_type::int32:
      return in_range<std::int32_t>(v);
    case value_type::uint8:
      return in_range<std::uint8_t>(v);
    case value_type::uint16:
      return in_range<std::uint16_t>(v);
    case value_type::uint32:
      return in_range<std::uint32_t>(v);
    case value_type::int64:
      return true;
    default:
      return false;
  }
}

// Whether all of `d` is one number of type T.
template <class T>
bool whole_number(std::string_view d, T& v) {
  const char* end = d.data() + d.size();
  const auto r = std::from_chars(d.data(), end, v);
  return r.ec == std::errc() && r.ptr == end;
}

// An exact integer: optional sign, digits, thousands separators dropped.
bool integer_value(std::string_view s, value_type type, const number_format& format, output_value& out) {
  char digits[64];
  std::size_t n = 0;
  for (std::size_t i = 0; i < s.size(); ++i) {
    if (i > 0 && format.thousands_separator.find(static_cast<char16_t>(s[i])) != std::u16string::npos) continue;
    digits[n++] = s[i];
  }
  std::string_view d(digits, n);
  if (!d.empty() && d[0] == '+') d.remove_prefix(1);
  if (d.empty() || d[0] == '+') return false;
  if (type == value_type::uint64) {
    std::uint64_t v = 0;
    if (!whole_number(d, v)) return false;
    out.kind = value_kind::unsigned_integer;
    out.integer = static_cast<std::int64_t>(v);
    out.number = static_cast<double>(v);
    return true;
  }
  std::int64_t v = 0;
  if (!whole_number(d, v) || !fits_type(type, v)) return false;
  out.kind = value_kind::integer;
  out.integer = v;
  out.number = static_cast<double>(v);
  return true;
}

// Keeps the text a value was read from (a view: nothing is copied).
template <class CharT>
void keep_written(std::basic_string_view<CharT> text, output_value& out) {
  if constexpr (sizeof(CharT) == 1) {
    out.written = text;
  } else {
    out.utf16 = true;
    out.units = text;
  }
}

template <class CharT>
bool typed_value(std::basic_string_view<CharT> text, value_type type, const conversion_settings& settings,
                 output_value& out, std::string& canonical) {
  if (type == value_type::double_) return number_value(text, settings.numbers, out);
  if (type == value_type::single) {
    double number = 0;
    if (!to_number(text, settings.numbers, number)) return false;
    out.kind = value_kind::number;
    out.number = static_cast<double>(static_cast<float>(number));
    out.bytes = {};
    return true;
  }
  if (type == value_type::string) return false;
  char buffer[64];
  std::string_view s;
  if (!narrow(text, buffer, s)) return false;
  if (is_integer_type(type)) return integer_value(s, type, settings.numbers, out);
  if (type == value_type::logical) {
    const auto b = parse_logical(s);
    if (!b) return false;
    out.kind = value_kind::logical;
    out.number = *b ? 1 : 0;
    return true;
  }
  if (type == value_type::datetime) {
    const auto d = parse_datetime(s, settings.dates);
    if (!d) return false;
    out.kind = value_kind::datetime;
    out.number = d->seconds_since_epoch();
    canonical = d->iso_text();
  } else {
    const auto d = parse_duration(s);
    if (!d) return false;
    out.kind = value_kind::duration;
    out.number = d->seconds();
    canonical = d->text();
  }
  out.bytes = canonical;
  return true;
}

}  // namespace

std::optional<bool> parse_logical(std::string_view s) {
  const auto is = [&](std::string_view word) {
    if (s.size() != word.size()) return false;
    for (std::size_t i = 0; i < s.size(); ++i) {
      const char c = s[i] >= 'A' && s[i] <= 'Z' ? static_cast<char>(s[i] + 32) : s[i];
      if (c != word[i]) return false;
    }
    return true;
  };
  if (is("true")) return true;
  if (is("false")) return false;
  return std::nullopt;
}

template <class CharT>
bool number_value(std::basic_string_view<CharT> text, const number_format& format, output_value& out) {
  double number = 0;
  if (!to_number(text, format, number)) return false;
  out.kind = value_kind::number;
  out.number = number;
  out.bytes = {};
  keep_written(text, out);
  // Whether its text may stand for it is left to the outputs that ask.
  out.plain_decimal = reads_plain_decimals(format);
  return true;
}

template <class CharT>
bool convert_value(std::basic_string_view<CharT> text, value_type type, const conversion_settings& settings,
                   output_value& out, std::string& canonical) {
  if (!typed_value(text, type, settings, out, canonical)) return false;
  keep_written(text, out);
  if (is_integer_type(type) || type == value_type::single) out.plain_decimal = reads_plain_decimals(settings.numbers);
  return true;
}

template bool number_value<char>(std::string_view, const number_format&, output_value&);
template bool number_value<char16_t>(std::u16string_view, const number_format&, output_value&);
template bool convert_value<char>(std::string_view, value_type, const conversion_settings&, output_value&,
                                  std::string&);
template bool convert_value<char16_t>(std::u16string_view, value_type, const conversion_settings&, output_value&,
                                      std::string&);

}  // namespace textio::import
