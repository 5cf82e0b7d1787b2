#include <cmath>
#include <cstring>
#include <limits>

#include "zvarray/hv_array.hpp"

namespace {

template <typename T>
double element_as_double(const void* data) {
  T x;
  std::memcpy(&x, data, sizeof x);
  return static_cast<double>(x);
}

}  // namespace

std::size_t hvGetNumberOfDimensions(const hvArray_tag* value) {
  return value == nullptr ? 0 : value->dimensions().size();
}

const std::uint64_t* hvGetDimensions(const hvArray_tag* value) {
  return value == nullptr ? nullptr : value->dimensions().data();
}

std::uint64_t hvGetM(const hvArray_tag* value) { return value == nullptr ? 0 : value->dimensions().front(); }

std::uint64_t hvGetN(const hvArray_tag* value) {
  if (value == nullptr) return 0;
  const auto& dims = value->dimensions();
  std::uint64_t n = 1;
  for (std::size_t i = 1; i < dims.size(); ++i) n *= dims[i];
  return n;
}

bool hvIsScalar(const hvArray_tag* value) {
  if (value == nullptr) return false;
  const auto& dims = value->dimensions();
  return dims.size() == 2 && dims[0] == 1 && dims[1] == 1;
}

double hvGetScalar(const hvArray_tag* value) {
  constexpr double none = std::numeric_limits<double>::quiet_NaN();
  if (hvGetNumberOfElements(value) == 0) return none;
  const void* d = value->data();
  switch (value->class_id()) {
    case hvDoubleClass:
      return element_as_double<double>(d);
    case hvSingleClass:
      return element_as_double<float>(d);
    case hvLogicalClass:
      return element_as_double<std::uint8_t>(d);
    case hvCharClass:
      return element_as_double<char16_t>(d);
    case hvInt8Class:
      return element_as_double<std::int8_t>(d);
    case hvUint8Class:
      return element_as_double<std::uint8_t>(d);
    case hvInt16Class:
      return element_as_double<std::int16_t>(d);
    case hvUint16Class:
      return element_as_double<std::uint16_t>(d);
    case hvInt32Class:
      return element_as_double<std::int32_t>(d);
    case hvUint32Class:
      return element_as_double<std::uint32_t>(d);
    case hvInt64Class:
      return element_as_double<std::int64_t>(d);
    case hvUint64Class:
      return element_as_double<std::uint64_t>(d);
    default:
      return none;
  }
}

bool hvIsLogicalScalar(const hvArray_tag* value) { return hvGetClassID(value) == hvLogicalClass && hvIsScalar(value); }

const std::uint8_t* hvGetLogicals(const hvArray_tag* value) {
  if (hvGetClassID(value) != hvLogicalClass) return nullptr;
  return static_cast<const std::uint8_t*>(value->data());
}
