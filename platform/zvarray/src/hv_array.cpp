#include "zvarray/hv_array.hpp"

#include <cstring>

std::size_t hvElementSize(hvClassID cls) noexcept {
  switch (cls) {
    case hvCellClass:
    case hvStructClass:
      return sizeof(const hvArray_tag*);
    case hvLogicalClass:
    case hvInt8Class:
    case hvUint8Class:
      return 1;
    case hvCharClass:
    case hvInt16Class:
    case hvUint16Class:
      return 2;
    case hvSingleClass:
    case hvInt32Class:
    case hvUint32Class:
      return 4;
    case hvDoubleClass:
    case hvInt64Class:
    case hvUint64Class:
      return 8;
    default:
      return 0;
  }
}

hvArray_tag::~hvArray_tag() = default;

hvClassID hvArray_tag::_get_class_id_non_trivial() const noexcept { return extended_as_; }

void hvArray_tag::_complete_opaque_dimensions() const {
  if (!dimensions_opaque_) return;
  dimensions_ = opaque_dimensions_;
  opaque_dimensions_.clear();
  dimensions_opaque_ = false;
}

int hvArray_tag::get_number_of_struct_fields() const noexcept {
  if (class_id() != hvStructClass) return 0;
  return static_cast<int>(field_names_.size());
}

const char* const* hvArray_tag::get_struct_field_names() const noexcept {
  if (class_id() != hvStructClass) return nullptr;
  return field_name_pointers_.data();
}

std::unique_ptr<hvArray_tag> hvArray_tag::clone() const {
  std::unique_ptr<hvArray_tag> copy(new hvArray_tag);
  copy->class_number_ = class_number_;
  copy->extended_as_ = extended_as_;
  copy->dimensions_ = dimensions_;
  copy->opaque_dimensions_ = opaque_dimensions_;
  copy->dimensions_opaque_ = dimensions_opaque_;
  copy->data_bytes_ = data_bytes_;
  copy->data_ = std::make_unique<std::byte[]>(data_bytes_ == 0 ? 1 : data_bytes_);
  copy->field_names_ = field_names_;
  for (const auto& name : copy->field_names_) copy->field_name_pointers_.push_back(name.c_str());
  const hvClassID cls = class_id();
  if (cls == hvCellClass || cls == hvStructClass) {
    // Children are cloned and the pointer table rebuilt to point at the copies.
    const auto* slots = reinterpret_cast<const hvArray_tag* const*>(data_.get());
    auto* copy_slots = reinterpret_cast<const hvArray_tag**>(copy->data_.get());
    const std::size_t count = data_bytes_ / sizeof(const hvArray_tag*);
    for (std::size_t i = 0; i < count; ++i) {
      if (slots[i] == nullptr) {
        copy_slots[i] = nullptr;
        continue;
      }
      copy->children_.push_back(slots[i]->clone());
      copy_slots[i] = copy->children_.back().get();
    }
  } else if (data_bytes_ != 0) {
    std::memcpy(copy->data_.get(), data_.get(), data_bytes_);
  }
  return copy;
}
