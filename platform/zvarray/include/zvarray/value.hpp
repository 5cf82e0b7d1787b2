// hv::Value: an owning handle to a host value, for callers, tests and tools
// that need to build one.
//
//   auto name  = hv::Value::text(u"Delimiter");
//   auto value = hv::Value::cell_row({hv::Value::text(u","), hv::Value::text(u"\\t")});
//   const hvArray_tag* args[] = {name.get(), value.get()};
//
// Data is given in column-major order. A Value can be empty (Value::none()),
// and then get() is null: that is how a missing value or an empty cell slot is
// written. Copies are deep.
#pragma once

#include <complex>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "zvarray/hv_array.hpp"
#include "zvcore/ustring.hpp"

namespace hv {

using Dims = std::vector<std::uint64_t>;

// The class a C++ element type is stored as (bool is logical, char16_t char).
template <typename T>
constexpr hvClassID class_of() {
  if constexpr (std::is_same_v<T, double>)
    return hvDoubleClass;
  else if constexpr (std::is_same_v<T, float>)
    return hvSingleClass;
  else if constexpr (std::is_same_v<T, bool>)
    return hvLogicalClass;
  else if constexpr (std::is_same_v<T, char16_t>)
    return hvCharClass;
  else if constexpr (std::is_same_v<T, std::int8_t>)
    return hvInt8Class;
  else if constexpr (std::is_same_v<T, std::uint8_t>)
    return hvUint8Class;
  else if constexpr (std::is_same_v<T, std::int16_t>)
    return hvInt16Class;
  else if constexpr (std::is_same_v<T, std::uint16_t>)
    return hvUint16Class;
  else if constexpr (std::is_same_v<T, std::int32_t>)
    return hvInt32Class;
  else if constexpr (std::is_same_v<T, std::uint32_t>)
    return hvUint32Class;
  else if constexpr (std::is_same_v<T, std::int64_t>)
    return hvInt64Class;
  else if constexpr (std::is_same_v<T, std::uint64_t>)
    return hvUint64Class;
  else
    static_assert(sizeof(T) == 0, "no host class for this element type");
}

class Value {
 public:
  Value() = default;  // no value
  Value(const Value& other);
  Value& operator=(const Value& other);
  Value(Value&&) noexcept = default;
  Value& operator=(Value&&) noexcept = default;
  ~Value();

  static Value none() { return Value(); }

  // A numeric, logical or char array of the given shape. data.size() must be
  // the product of dims; throws std::invalid_argument otherwise.
  template <typename T>
  static Value array(Dims dims, std::span<const T> data) {
    return make_plain(class_of<T>(), std::move(dims), data.data(), data.size());
  }
  template <typename T>
  static Value array(Dims dims, const std::vector<T>& data) {
    if constexpr (std::is_same_v<T, bool>) {
      std::vector<std::uint8_t> bytes(data.begin(), data.end());
      return make_plain(hvLogicalClass, std::move(dims), bytes.data(), bytes.size());
    } else {
      return make_plain(class_of<T>(), std::move(dims), data.data(), data.size());
    }
  }

  static Value scalar(double x);                             // 1-by-1 double
  static Value logical(bool b);                              // 1-by-1 logical
  static Value row(const std::vector<double>& x);            // 1-by-N double (N = 0: 1-by-0)
  static Value text(std::u16string_view units);              // 1-by-N char (N = 0: 1-by-0)
  static Value text_utf8(std::string_view utf8);             // 1-by-N char from UTF-8
  static Value chars(Dims dims, std::u16string_view units);  // char of any shape

  // A cell array of the given shape; elements may be empty Values (null slots).
  static Value cell(Dims dims, std::vector<Value> elements);
  static Value cell_row(std::vector<Value> elements);  // 1-by-N cell

  // A struct array: values are element-major (all fields of element 0 first).
  static Value structure(Dims dims, std::vector<std::string> field_names, std::vector<Value> values);
  // A 1-by-1 struct with fields in the given order.
  static Value struct_scalar(std::vector<std::pair<std::string, Value>> fields);

  // The same value, but stored under an extended class number (above 16) that
  // the host resolves back to this value's class.
  Value with_extended_class(std::uint32_t class_number) &&;
  // The same value, with its dimensions held in the host's incomplete form.
  Value with_opaque_dimensions() &&;

  const hvArray_tag* get() const noexcept { return tag_.get(); }
  explicit operator bool() const noexcept { return tag_ != nullptr; }

 private:
  explicit Value(std::unique_ptr<hvArray_tag> tag);
  static Value make_plain(hvClassID cls, Dims dims, const void* data, std::size_t count);
  static std::unique_ptr<hvArray_tag> make_tag(hvClassID cls, Dims dims);

  std::unique_ptr<hvArray_tag> tag_;
};

}  // namespace hv
