// hvArray_tag, the host's array value, and the operations that read it.
//
// A value has a class, a list of at least two dimensions (trailing singleton
// dimensions beyond the second are dropped) and column-major data. Cell
// arrays and structs hold pointers to their elements' values, which they own;
// a slot may be null (no value). Values are built with hv::Value
// (zvarray/value.hpp); everything here only reads them.
//
// Every operation accepts a null pointer and then answers as for an empty
// value of no class.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace hv {
class Value;
}

enum hvClassID : std::uint32_t {
  hvUnknownClass = 0,
  hvCellClass = 1,
  hvStructClass = 2,
  hvLogicalClass = 3,
  hvCharClass = 4,
  hvDoubleClass = 6,
  hvSingleClass = 7,
  hvInt8Class = 8,
  hvUint8Class = 9,
  hvInt16Class = 10,
  hvUint16Class = 11,
  hvInt32Class = 12,
  hvUint32Class = 13,
  hvInt64Class = 14,
  hvUint64Class = 15,
  hvFunctionClass = 16,
  // Class numbers above 16 are extended classes: the value stores which plain
  // class it stands for, and _get_class_id_non_trivial resolves it.
  hvFirstExtendedClass = 17,
};

// Size in bytes of one element of a class (pointers for cell and struct).
std::size_t hvElementSize(hvClassID cls) noexcept;

struct hvArray_tag {
 public:
  hvArray_tag(const hvArray_tag&) = delete;
  hvArray_tag& operator=(const hvArray_tag&) = delete;
  ~hvArray_tag();

  hvClassID class_id() const noexcept {
    return class_number_ > hvFunctionClass ? _get_class_id_non_trivial() : static_cast<hvClassID>(class_number_);
  }
  const std::vector<std::uint64_t>& dimensions() const {
    if (dimensions_opaque_) _complete_opaque_dimensions();
    return dimensions_;
  }
  std::uint64_t number_of_elements() const {
    std::uint64_t n = 1;
    for (const auto d : dimensions()) n *= d;
    return n;
  }
  const void* data() const noexcept { return data_.get(); }

  int get_number_of_struct_fields() const noexcept;
  // NUL-terminated 8-bit field names in field order; null for a non-struct.
  const char* const* get_struct_field_names() const noexcept;

 private:
  friend class hv::Value;
  hvArray_tag() = default;

  hvClassID _get_class_id_non_trivial() const noexcept;
  void _complete_opaque_dimensions() const;
  std::unique_ptr<hvArray_tag> clone() const;

  std::uint32_t class_number_ = hvUnknownClass;           // plain class, or extended (> 16)
  hvClassID extended_as_ = hvUnknownClass;                // what an extended number stands for
  mutable std::vector<std::uint64_t> dimensions_;         // complete form
  mutable std::vector<std::uint64_t> opaque_dimensions_;  // incomplete form, if any
  mutable bool dimensions_opaque_ = false;
  std::unique_ptr<std::byte[]> data_;
  std::size_t data_bytes_ = 0;
  std::vector<std::unique_ptr<hvArray_tag>> children_;  // owned elements of cells/structs
  std::vector<std::string> field_names_;
  std::vector<const char*> field_name_pointers_;
};

// Class of a value (extended class numbers resolved); hvUnknownClass for null.
inline hvClassID hvGetClassID(const hvArray_tag* value) noexcept {
  return value == nullptr ? hvUnknownClass : value->class_id();
}
// Number of dimensions, at least 2 for a value; 0 for null.
std::size_t hvGetNumberOfDimensions(const hvArray_tag* value);
// The dimension list; null for null.
const std::uint64_t* hvGetDimensions(const hvArray_tag* value);
// Number of rows (first dimension).
std::uint64_t hvGetM(const hvArray_tag* value);
// Number of columns: the product of all dimensions after the first.
std::uint64_t hvGetN(const hvArray_tag* value);
// Product of all dimensions; 0 when any of them is 0.
inline std::uint64_t hvGetNumberOfElements(const hvArray_tag* value) {
  return value == nullptr ? 0 : value->number_of_elements();
}
// True for a 1-by-1 value of any class.
bool hvIsScalar(const hvArray_tag* value);
// The first element as a double (char gives its code unit, logical 0 or 1);
// NaN when there is no numeric first element.
double hvGetScalar(const hvArray_tag* value);
// True for a 1-by-1 logical value.
bool hvIsLogicalScalar(const hvArray_tag* value);
// The logical elements, one byte each (0 or 1); null for other classes.
const std::uint8_t* hvGetLogicals(const hvArray_tag* value);
// Raw element data: numbers, UTF-16 units, logical bytes, or for cells and
// structs `const hvArray_tag*` entries (struct: element-major, field-minor).
inline const void* hvGetData(const hvArray_tag* value) { return value == nullptr ? nullptr : value->data(); }
