#include "tools/host_values.hpp"

#include <array>
#include <cfloat>
#include <cmath>
#include <cstdint>
#include <limits>
#include <set>
#include <utility>

#include "tools/usage_error.hpp"
#include "zvcore/ustring.hpp"

namespace zvtool {
namespace {

using json = nlohmann::ordered_json;

// Rewrites every number token "-0" (an integer, so no fraction or exponent)
// outside string literals as "-0.0", which the parser reads as a floating
// negative zero. In JSON a '-' outside a string starts a number or an
// exponent's sign; the one after 'e' or 'E' is left alone. The rewrite keeps
// invalid text invalid, since both tokens are numbers wherever they stand.
std::string keep_negative_zero(std::string_view text) {
  const auto is_digit = [](char c) { return c >= '0' && c <= '9'; };
  std::string out;
  out.reserve(text.size() + 8);
  bool in_string = false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const char c = text[i];
    out += c;
    if (in_string) {
      if (c == '\\' && i + 1 < text.size()) {
        out += text[++i];
      } else if (c == '"') {
        in_string = false;
      }
      continue;
    }
    if (c == '"') {
      in_string = true;
      continue;
    }
    const bool exponent_sign = i > 0 && (text[i - 1] == 'e' || text[i - 1] == 'E');
    if (c != '-' || exponent_sign || i + 1 >= text.size() || text[i + 1] != '0') continue;
    const char after = i + 2 < text.size() ? text[i + 2] : '\0';
    if (is_digit(after) || after == '.' || after == 'e' || after == 'E') continue;
    out += "0.0";
    ++i;
  }
  return out;
}

// A short rendering of a JSON value for messages. A container that holds
// containers is not written out: the serializer recurses, and the value may
// nest arbitrarily deep.
std::string describe(const json& j) {
  bool nested = false;
  if (j.is_structured()) {
    for (const auto& e : j) nested = nested || e.is_structured();
  }
  std::string text = !nested ? j.dump() : j.is_array() ? "[...]" : "{...}";
  if (text.size() > 40) text = text.substr(0, 37) + "...";
  return text;
}

[[noreturn]] void fail(const std::string& path, const std::string& what) {
  throw usage_error(path.empty() ? what : "at " + path + ": " + what);
}

struct class_name {
  std::string_view name;
  hvClassID id;
};

constexpr std::array class_names{
    class_name{"cell", hvCellClass},     class_name{"struct", hvStructClass}, class_name{"logical", hvLogicalClass},
    class_name{"char", hvCharClass},     class_name{"double", hvDoubleClass}, class_name{"single", hvSingleClass},
    class_name{"int8", hvInt8Class},     class_name{"uint8", hvUint8Class},   class_name{"int16", hvInt16Class},
    class_name{"uint16", hvUint16Class}, class_name{"int32", hvInt32Class},   class_name{"uint32", hvUint32Class},
    class_name{"int64", hvInt64Class},   class_name{"uint64", hvUint64Class},
};

std::string class_name_list() {
  std::string list;
  for (const auto& c : class_names) {
    if (!list.empty()) list += ", ";
    list += c.name;
  }
  return list;
}

double number_of(const json& j) {
  if (j.is_number_unsigned()) return static_cast<double>(j.get<std::uint64_t>());
  if (j.is_number_integer()) return static_cast<double>(j.get<std::int64_t>());
  return j.get<double>();
}

// An integer element of class T, from a JSON integer, or from a JSON number
// with no fractional part that T can hold exactly. `what` names the expected
// kind in messages, as in "int8 data".
template <class T>
T integer_element(const json& e, const std::string& path, std::string_view what) {
  if (e.is_number_unsigned()) {
    if (const auto u = e.get<std::uint64_t>(); std::in_range<T>(u)) return static_cast<T>(u);
  } else if (e.is_number_integer()) {
    if (const auto s = e.get<std::int64_t>(); std::in_range<T>(s)) return static_cast<T>(s);
  } else if (e.is_number_float()) {
    const double x = e.get<double>();
    if (!std::isfinite(x) || std::trunc(x) != x) {
      fail(path, describe(e) + " is not an integer, as " + std::string(what) + " must be");
    }
    const double limit = std::ldexp(1.0, std::numeric_limits<T>::digits);
    const double lowest = std::numeric_limits<T>::is_signed ? -limit : 0.0;
    if (x >= lowest && x < limit) return static_cast<T>(x);
  } else {
    fail(path, describe(e) + " is not an integer, as " + std::string(what) + " must be");
  }
  fail(path, describe(e) + " is out of the range of " + std::string(what));
}

double floating_element(const json& e, const std::string& path) {
  if (e.is_number()) return number_of(e);
  if (e.is_string()) {
    const auto& s = e.get_ref<const std::string&>();
    if (s == "NaN") return std::numeric_limits<double>::quiet_NaN();
    if (s == "Inf") return std::numeric_limits<double>::infinity();
    if (s == "-Inf") return -std::numeric_limits<double>::infinity();
  }
  fail(path, describe(e) + " is not a number, \"NaN\", \"Inf\" or \"-Inf\"");
}

float single_element(const json& e, const std::string& path) {
  const double x = floating_element(e, path);
  if (std::isfinite(x) && std::fabs(x) > FLT_MAX) fail(path, describe(e) + " is out of the range of single");
  return static_cast<float>(x);
}

// Where a part of a value lies, as "$data[2].name[0]".
std::string child_path(const std::string& path, const std::string& part) {
  return path.empty() ? part : path + "." + part;
}

std::string element_path(const std::string& path, std::size_t i) {
  return child_path(path, "$data[" + std::to_string(i) + "]");
}

// Maps JSON onto host values, counting the nesting depth.
class mapper {
 public:
  hv::Value map(const json& j, const std::string& path, std::size_t depth) const {
    if (depth >= max_value_depth) {
      fail(path, "values nest deeper than " + std::to_string(max_value_depth) + " levels");
    }
    switch (j.type()) {
      case json::value_t::null:
        return hv::Value::none();
      case json::value_t::boolean:
        return hv::Value::logical(j.get<bool>());
      case json::value_t::number_integer:
      case json::value_t::number_unsigned:
      case json::value_t::number_float:
        return hv::Value::scalar(number_of(j));
      case json::value_t::string:
        return string_value(j.get_ref<const std::string&>());
      case json::value_t::array:
        return array_value(j, path, depth);
      case json::value_t::object:
        return j.contains("$class") ? typed_value(j, path, depth) : object_value(j, path, depth);
      case json::value_t::binary:
      case json::value_t::discarded:
        break;
    }
    fail(path, "unsupported JSON value");
  }

 private:
  static hv::Value string_value(const std::string& utf8) {
    if (utf8.empty()) return hv::Value::chars({0, 0}, u"");
    return text_value(utf8);
  }

  hv::Value array_value(const json& j, const std::string& path, std::size_t depth) const {
    if (j.empty()) return hv::Value::array<double>({0, 0}, std::vector<double>{});
    bool all_numbers = true;
    for (const auto& e : j) all_numbers = all_numbers && e.is_number();
    if (all_numbers) {
      std::vector<double> x;
      x.reserve(j.size());
      for (const auto& e : j) x.push_back(number_of(e));
      return hv::Value::row(x);
    }
    std::vector<hv::Value> elements;
    elements.reserve(j.size());
    for (std::size_t i = 0; i < j.size(); ++i) {
      elements.push_back(map(j[i], path + "[" + std::to_string(i) + "]", depth + 1));
    }
    return hv::Value::cell_row(std::move(elements));
  }

  hv::Value object_value(const json& j, const std::string& path, std::size_t depth) const {
    std::vector<std::pair<std::string, hv::Value>> fields;
    fields.reserve(j.size());
    for (const auto& [name, value] : j.items()) {
      fields.emplace_back(name, map(value, child_path(path, name), depth + 1));
    }
    return hv::Value::struct_scalar(std::move(fields));
  }

  static hvClassID class_of(const json& j, const std::string& path) {
    const json& name = j.at("$class");
    if (name.is_string()) {
      for (const auto& c : class_names) {
        if (c.name == name.get_ref<const std::string&>()) return c.id;
      }
    }
    fail(path, "$class " + describe(name) + " is unknown; the classes are " + class_name_list());
  }

  static hv::Dims size_of(const json& j, const std::string& path) {
    const auto size = j.find("$size");
    if (size == j.end()) fail(path, "a typed value needs \"$size\", a list of at least two dimensions");
    if (!size->is_array() || size->size() < 2) {
      fail(path, "$size " + describe(*size) + " must be a list of at least two dimensions");
    }
    hv::Dims dims;
    for (const auto& d : *size)
      dims.push_back(integer_element<std::uint64_t>(d, child_path(path, "$size"), "a $size entry"));
    return dims;
  }

  static std::uint64_t element_count(const hv::Dims& dims, const std::string& path) {
    std::uint64_t n = 1;
    for (const auto d : dims) {
      if (d == 0) return 0;
    }
    for (const auto d : dims) {
      if (n > std::numeric_limits<std::uint64_t>::max() / d)
        fail(path, "$size holds more elements than can be counted");
      n *= d;
    }
    return n;
  }

  static void check_keys(const json& j, hvClassID id, const std::string& path) {
    for (const auto& [name, value] : j.items()) {
      const bool known =
          name == "$class" || name == "$size" || name == "$data" || (name == "$fields" && id == hvStructClass);
      if (!known) {
        fail(path,
             "unknown key \"" + name + "\" in a typed value (keys: $class, $size, $data, and $fields for a struct)");
      }
    }
  }

  hv::Value typed_value(const json& j, const std::string& path, std::size_t depth) const {
    const hvClassID id = class_of(j, path);
    check_keys(j, id, path);
    hv::Dims dims = size_of(j, path);
    const std::uint64_t count = element_count(dims, path);
    static const json no_data = json::array();
    const auto found = j.find("$data");
    const json& data = found == j.end() ? no_data : *found;
    if (found == j.end() && count != 0)
      fail(path, "$data is missing, and $size asks for " + std::to_string(count) + " elements");

    if (id == hvCharClass && data.is_string()) {
      const ustring units = foundation::core::unicode::to_utf16(data.get_ref<const std::string&>());
      if (units.size() != count) fail(path, length_mismatch(units.size(), count, "code units"));
      return hv::Value::chars(std::move(dims), units);
    }
    if (!data.is_array()) fail(path, "$data " + describe(data) + " must be a list");
    if (data.size() != count) fail(path, length_mismatch(data.size(), count, "elements"));

    switch (id) {
      case hvCellClass: {
        std::vector<hv::Value> elements;
        elements.reserve(data.size());
        for (std::size_t i = 0; i < data.size(); ++i)
          elements.push_back(map(data[i], element_path(path, i), depth + 1));
        return hv::Value::cell(std::move(dims), std::move(elements));
      }
      case hvStructClass:
        return struct_value(j, data, std::move(dims), path, depth);
      case hvLogicalClass: {
        std::vector<bool> b;
        for (std::size_t i = 0; i < data.size(); ++i) {
          if (!data[i].is_boolean())
            fail(element_path(path, i), describe(data[i]) + " is not true or false, as logical data must be");
          b.push_back(data[i].get<bool>());
        }
        return hv::Value::array<bool>(std::move(dims), b);
      }
      case hvCharClass:
        return numeric<std::uint16_t, char16_t>(data, std::move(dims), path, "char data (code units 0 to 65535)");
      case hvDoubleClass: {
        std::vector<double> x;
        for (std::size_t i = 0; i < data.size(); ++i) x.push_back(floating_element(data[i], element_path(path, i)));
        return hv::Value::array<double>(std::move(dims), x);
      }
      case hvSingleClass: {
        std::vector<float> x;
        for (std::size_t i = 0; i < data.size(); ++i) x.push_back(single_element(data[i], element_path(path, i)));
        return hv::Value::array<float>(std::move(dims), x);
      }
      case hvInt8Class:
        return numeric<std::int8_t>(data, std::move(dims), path, "int8 data");
      case hvUint8Class:
        return numeric<std::uint8_t>(data, std::move(dims), path, "uint8 data");
      case hvInt16Class:
        return numeric<std::int16_t>(data, std::move(dims), path, "int16 data");
      case hvUint16Class:
        return numeric<std::uint16_t>(data, std::move(dims), path, "uint16 data");
      case hvInt32Class:
        return numeric<std::int32_t>(data, std::move(dims), path, "int32 data");
      case hvUint32Class:
        return numeric<std::uint32_t>(data, std::move(dims), path, "uint32 data");
      case hvInt64Class:
        return numeric<std::int64_t>(data, std::move(dims), path, "int64 data");
      case hvUint64Class:
        return numeric<std::uint64_t>(data, std::move(dims), path, "uint64 data");
      default:
        break;
    }
    fail(path, "unsupported $class");
  }

  static std::string length_mismatch(std::size_t given, std::uint64_t wanted, std::string_view what) {
    return "$data holds " + std::to_string(given) + " " +
           std::string(given == 1 ? what.substr(0, what.size() - 1) : what) + ", but $size asks for " +
           std::to_string(wanted);
  }

  // Integer data read as Read (range checked), stored as Stored.
  template <class Read, class Stored = Read>
  static hv::Value numeric(const json& data, hv::Dims dims, const std::string& path, std::string_view what) {
    std::vector<Stored> x;
    x.reserve(data.size());
    for (std::size_t i = 0; i < data.size(); ++i) {
      x.push_back(static_cast<Stored>(integer_element<Read>(data[i], element_path(path, i), what)));
    }
    return hv::Value::array<Stored>(std::move(dims), x);
  }

  hv::Value struct_value(const json& j, const json& data, hv::Dims dims, const std::string& path,
                         std::size_t depth) const {
    std::vector<std::string> names;
    const auto fields = j.find("$fields");
    if (fields != j.end()) {
      if (!fields->is_array()) fail(path, "$fields " + describe(*fields) + " must be a list of field names");
      for (const auto& name : *fields) {
        if (!name.is_string()) fail(path, "$fields holds " + describe(name) + ", which is no field name");
        names.push_back(name.get<std::string>());
      }
    } else if (!data.empty() && data[0].is_object()) {
      for (const auto& [name, value] : data[0].items()) names.push_back(name);
    }
    std::set<std::string> listed;
    for (const auto& name : names) {
      if (!listed.insert(name).second) fail(path, "$fields names \"" + name + "\" twice");
    }

    std::vector<hv::Value> values;
    values.reserve(data.size() * names.size());
    for (std::size_t i = 0; i < data.size(); ++i) {
      const json& element = data[i];
      const std::string here = element_path(path, i);
      if (!element.is_object()) fail(here, describe(element) + " is not an object of field values");
      for (const auto& [name, value] : element.items()) {
        if (listed.count(name) == 0) fail(here, "field \"" + name + "\" is not among the struct's fields");
      }
      for (const auto& name : names) {
        const auto field = element.find(name);
        values.push_back(field == element.end() ? hv::Value::none() : map(*field, child_path(here, name), depth + 1));
      }
    }
    return hv::Value::structure(std::move(dims), std::move(names), std::move(values));
  }
};

}  // namespace

std::optional<nlohmann::ordered_json> parse_json(std::string_view text, std::string* error) {
  try {
    return json::parse(keep_negative_zero(text));
  } catch (const json::exception& e) {
    if (error != nullptr) *error = e.what();
    return std::nullopt;
  }
}

hv::Value text_value(std::string_view utf8) { return hv::Value::text(foundation::core::unicode::to_utf16(utf8)); }

hv::Value host_value(const nlohmann::ordered_json& json) { return mapper().map(json, "", 0); }

hv::Value value_argument(std::string_view argument) {
  if (auto parsed = parse_json(argument)) return host_value(*parsed);
  return text_value(argument);
}

hv::Value struct_argument(std::string_view json_text) {
  std::string error;
  const auto parsed = parse_json(json_text, &error);
  if (!parsed) throw usage_error("--struct: the value is not valid JSON: " + error);
  if (!parsed->is_object()) throw usage_error("--struct: the value must be a JSON object, not " + describe(*parsed));
  try {
    hv::Value value = host_value(*parsed);
    if (hvGetClassID(value.get()) != hvStructClass) throw usage_error("the typed value must be of $class struct");
    return value;
  } catch (const usage_error& e) {
    throw usage_error(std::string("--struct: ") + e.what());
  }
}

std::vector<hv::Value> option_arguments(const std::optional<std::string>& struct_json,
                                        std::span<const std::string> positionals) {
  std::vector<hv::Value> values;
  if (struct_json) {
    if (!positionals.empty()) {
      throw usage_error("--struct stands for all NAME VALUE pairs; give either --struct or pairs, not both");
    }
    values.push_back(struct_argument(*struct_json));
    return values;
  }
  values.reserve(positionals.size());
  for (std::size_t i = 0; i < positionals.size(); ++i) {
    if (i % 2 == 0) {
      values.push_back(text_value(positionals[i]));
      continue;
    }
    try {
      values.push_back(value_argument(positionals[i]));
    } catch (const usage_error& e) {
      throw usage_error("argument " + std::to_string(i + 1) + ", the value of '" + positionals[i - 1] +
                        "': " + e.what());
    }
  }
  return values;
}

}  // namespace zvtool
