#include "fuzz/host_value_generator.hpp"

#include <cstdint>
#include <iterator>
#include <limits>
#include <vector>

#include "name_value/option_vocabulary.hpp"

namespace fuzz {

const char* const option_keys[32] = {
#define ZVTP_KEY(key, ...) #key,
    ZVTP_OPTION_VOCABULARY(ZVTP_KEY, ZVTP_KEY)
#undef ZVTP_KEY
};
static_assert(std::size(textio::options::option_descriptions) == std::size(option_keys));

namespace {

const char16_t* const vocabulary[] = {
    u"split",      u"join",    u"error",   u"text",      u"delimitedtext",
    u"fixedwidth", u"keep",    u"ignore",  u"skip",      u"read",
    u"table",      u"matrix",  u"cell",    u"addvars",   u"wrap",
    u"fill",       u"omitrow", u"omitvar", u"delimited", u"tabular",
    u"line",       u"s",       u"d",       u"e",         u"f",
    u"",           u"\\t",     u"\\n",     u"\\r",       u"\\b",
    u"\\\\",       u"\\",      u"\\q",     u"\\\\\\",    u",",
    u"\r\n",       u"%",       u"#",       u"NaN",       u"\u0130",
    u"\u212A",     u"\xD800",  u"\xDFFF",  u"\xFFFF",
};

const double special_numbers[] = {
    0.0,
    -0.0,
    1.0,
    2.0,
    3.0,
    -1.0,
    2.5,
    1e300,
    -1e300,
    2147483647.0,
    2147483648.0,
    4503599627370496.0,
    9223372036854775808.0,
    18446744073709549568.0,
    18446744073709551616.0,
    std::numeric_limits<double>::infinity(),
    -std::numeric_limits<double>::infinity(),
    std::numeric_limits<double>::quiet_NaN(),
    std::numeric_limits<double>::denorm_min(),
};

char16_t toggle_case(char16_t c) {
  if (c >= u'a' && c <= u'z') return static_cast<char16_t>(c - 32);
  if (c >= u'A' && c <= u'Z') return static_cast<char16_t>(c + 32);
  return c;
}

hv::Dims draw_dims(FuzzInput& in, std::uint64_t& count) {
  const std::uint32_t rank = 2 + in.below(3);
  hv::Dims dims;
  count = 1;
  for (std::uint32_t i = 0; i < rank; ++i) {
    dims.push_back(in.below(4));
    count *= dims.back();
  }
  return dims;
}

double draw_number(FuzzInput& in) {
  switch (in.below(3)) {
    case 0:
      return in.pick(special_numbers);
    case 1:
      return static_cast<double>(in.below(40));
    default:
      return in.any_double();
  }
}

template <typename T>
hv::Value draw_numeric_array(FuzzInput& in) {
  std::uint64_t count = 0;
  hv::Dims dims = in.flag() ? hv::Dims{1, 1} : draw_dims(in, count);
  if (dims == hv::Dims{1, 1}) count = 1;
  std::vector<T> data;
  for (std::uint64_t i = 0; i < count; ++i) {
    if constexpr (std::is_floating_point_v<T>)
      data.push_back(static_cast<T>(draw_number(in)));
    else
      data.push_back(in.integral<T>());
  }
  return hv::Value::array<T>(std::move(dims), data);
}

}  // namespace

ustring draw_text(FuzzInput& in) {
  ustring text;
  const std::uint32_t parts = in.below(4);
  for (std::uint32_t p = 0; p <= parts; ++p) {
    if (in.flag()) {
      text += in.pick(vocabulary);
    } else {
      const std::uint32_t n = in.below(6);
      for (std::uint32_t i = 0; i < n; ++i) {
        text.push_back(in.flag() ? static_cast<char16_t>(in.below(128)) : in.integral<char16_t>());
      }
    }
  }
  if (in.below(4) == 0) {
    for (auto& c : text) {
      if (in.flag()) c = toggle_case(c);
    }
  }
  return text;
}

hv::Value draw_value(FuzzInput& in, int depth) {
  switch (in.below(16)) {
    case 0:
      return hv::Value::none();
    case 1:
    case 2:
    case 3:
      return hv::Value::text(draw_text(in));
    case 4: {
      std::uint64_t count = 0;
      hv::Dims dims = draw_dims(in, count);
      ustring units;
      for (std::uint64_t i = 0; i < count; ++i) units.push_back(static_cast<char16_t>(u'a' + in.below(26)));
      return hv::Value::chars(std::move(dims), units);
    }
    case 5:
    case 6:
      return hv::Value::scalar(draw_number(in));
    case 7:
      return draw_numeric_array<double>(in);
    case 8:
      if (in.flag())
        return hv::Value::logical(in.flag());
      else {
        const std::uint32_t n = in.below(3);
        return hv::Value::array<bool>({1, n}, std::vector<bool>(n, in.flag()));
      }
    case 9:
      switch (in.below(5)) {
        case 0:
          return draw_numeric_array<float>(in);
        case 1:
          return draw_numeric_array<std::int32_t>(in);
        case 2:
          return draw_numeric_array<std::uint64_t>(in);
        case 3:
          return draw_numeric_array<std::int8_t>(in);
        default:
          return draw_numeric_array<std::uint16_t>(in);
      }
    case 10:
    case 11:
    case 12: {
      if (depth >= 3) return hv::Value::text(draw_text(in));
      std::uint64_t count = 0;
      hv::Dims dims = in.flag() ? hv::Dims{1, in.below(4)} : draw_dims(in, count);
      if (dims.size() == 2 && dims[0] == 1) count = dims[1];
      std::vector<hv::Value> elements;
      for (std::uint64_t i = 0; i < count; ++i) {
        elements.push_back(in.below(4) != 0 ? hv::Value::text(draw_text(in)) : draw_value(in, depth + 1));
      }
      return hv::Value::cell(std::move(dims), std::move(elements));
    }
    case 13: {
      if (depth >= 3) return hv::Value::none();
      const std::uint32_t fields = in.below(4);
      std::vector<std::string> names;
      for (std::uint32_t f = 0; f < fields; ++f) {
        names.push_back(in.flag() ? std::string(in.pick(option_keys)) : std::string(1, static_cast<char>(in.byte())));
      }
      const std::uint32_t elements = in.below(3);
      std::vector<hv::Value> values;
      for (std::uint32_t i = 0; i < elements * fields; ++i) values.push_back(draw_value(in, depth + 1));
      return hv::Value::structure({1, elements}, std::move(names), std::move(values));
    }
    case 14:
      return draw_value(in, depth + 1).with_opaque_dimensions();
    default: {
      hv::Value inner = draw_value(in, depth + 1);
      return std::move(inner).with_extended_class(17 + in.below(100));
    }
  }
}

hv::Value draw_name(FuzzInput& in) {
  switch (in.below(8)) {
    case 0:
      return hv::Value::text(draw_text(in));
    case 1:
      return draw_value(in, 2);
    default: {
      ustring key;
      for (const char* c = in.pick(option_keys); *c != '\0'; ++c) key.push_back(static_cast<char16_t>(*c));
      if (in.flag()) {
        for (auto& c : key) {
          if (in.flag()) c = toggle_case(c);
        }
      }
      return hv::Value::text(key);
    }
  }
}

}  // namespace fuzz
