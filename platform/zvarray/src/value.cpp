#include "zvarray/value.hpp"

#include <cstring>
#include <limits>
#include <stdexcept>

namespace hv {
namespace {

// At least two dimensions; trailing singleton dimensions past the second are
// dropped, as the host stores them.
Dims normalise(Dims dims) {
  if (dims.size() < 2) throw std::invalid_argument("hv::Value: a value needs at least two dimensions");
  while (dims.size() > 2 && dims.back() == 1) dims.pop_back();
  return dims;
}

std::uint64_t element_count(const Dims& dims) {
  std::uint64_t n = 1;
  bool zero = false;
  for (const auto d : dims) {
    if (d == 0)
      zero = true;
    else if (n > std::numeric_limits<std::uint64_t>::max() / d)
      n = std::numeric_limits<std::uint64_t>::max();
    else
      n *= d;
  }
  return zero ? 0 : n;
}

void check_count(const Dims& dims, std::size_t given) {
  if (element_count(dims) != given) {
    throw std::invalid_argument("hv::Value: the number of elements does not match the dimensions");
  }
}

}  // namespace

Value::Value(std::unique_ptr<hvArray_tag> tag) : tag_(std::move(tag)) {}
Value::~Value() = default;

Value::Value(const Value& other) : tag_(other.tag_ ? other.tag_->clone() : nullptr) {}

Value& Value::operator=(const Value& other) {
  if (this != &other) tag_ = other.tag_ ? other.tag_->clone() : nullptr;
  return *this;
}

std::unique_ptr<hvArray_tag> Value::make_tag(hvClassID cls, Dims dims) {
  dims = normalise(std::move(dims));
  const std::uint64_t count = element_count(dims);
  const std::size_t size = hvElementSize(cls);
  if (count > std::numeric_limits<std::size_t>::max() / (size == 0 ? 1 : size)) {
    throw std::length_error("hv::Value: value too large");
  }
  std::unique_ptr<hvArray_tag> tag(new hvArray_tag);
  tag->class_number_ = cls;
  tag->dimensions_ = std::move(dims);
  tag->data_bytes_ = static_cast<std::size_t>(count) * size;
  tag->data_ = std::make_unique<std::byte[]>(tag->data_bytes_ == 0 ? 1 : tag->data_bytes_);
  return tag;
}

Value Value::make_plain(hvClassID cls, Dims dims, const void* data, std::size_t count) {
  dims = normalise(std::move(dims));
  check_count(dims, count);
  auto tag = make_tag(cls, std::move(dims));
  if (tag->data_bytes_ != 0) std::memcpy(tag->data_.get(), data, tag->data_bytes_);
  return Value(std::move(tag));
}

Value Value::scalar(double x) { return array<double>({1, 1}, std::span<const double>(&x, 1)); }

Value Value::logical(bool b) {
  const std::uint8_t byte = b ? 1 : 0;
  return make_plain(hvLogicalClass, {1, 1}, &byte, 1);
}

Value Value::row(const std::vector<double>& x) { return array<double>({1, x.size()}, x); }

Value Value::text(std::u16string_view units) {
  return make_plain(hvCharClass, {1, units.size()}, units.data(), units.size());
}

Value Value::text_utf8(std::string_view utf8) { return text(foundation::core::unicode::to_utf16(utf8)); }

Value Value::chars(Dims dims, std::u16string_view units) {
  return make_plain(hvCharClass, std::move(dims), units.data(), units.size());
}

Value Value::cell(Dims dims, std::vector<Value> elements) {
  dims = normalise(std::move(dims));
  check_count(dims, elements.size());
  auto tag = make_tag(hvCellClass, std::move(dims));
  auto* slots = reinterpret_cast<const hvArray_tag**>(tag->data_.get());
  for (std::size_t i = 0; i < elements.size(); ++i) {
    slots[i] = elements[i].tag_.get();
    if (elements[i].tag_) tag->children_.push_back(std::move(elements[i].tag_));
  }
  return Value(std::move(tag));
}

Value Value::cell_row(std::vector<Value> elements) {
  const auto n = elements.size();
  return cell({1, n}, std::move(elements));
}

Value Value::structure(Dims dims, std::vector<std::string> field_names, std::vector<Value> values) {
  dims = normalise(std::move(dims));
  const std::uint64_t count = element_count(dims);
  if (count != 0 && field_names.size() > std::numeric_limits<std::size_t>::max() / count) {
    throw std::length_error("hv::Value: struct too large");
  }
  if (values.size() != count * field_names.size()) {
    throw std::invalid_argument("hv::Value: a struct needs one value per field and element");
  }
  std::unique_ptr<hvArray_tag> tag(new hvArray_tag);
  tag->class_number_ = hvStructClass;
  tag->dimensions_ = std::move(dims);
  tag->data_bytes_ = values.size() * sizeof(const hvArray_tag*);
  tag->data_ = std::make_unique<std::byte[]>(tag->data_bytes_ == 0 ? 1 : tag->data_bytes_);
  tag->field_names_ = std::move(field_names);
  for (const auto& name : tag->field_names_) tag->field_name_pointers_.push_back(name.c_str());
  auto* slots = reinterpret_cast<const hvArray_tag**>(tag->data_.get());
  for (std::size_t i = 0; i < values.size(); ++i) {
    slots[i] = values[i].tag_.get();
    if (values[i].tag_) tag->children_.push_back(std::move(values[i].tag_));
  }
  return Value(std::move(tag));
}

Value Value::struct_scalar(std::vector<std::pair<std::string, Value>> fields) {
  std::vector<std::string> names;
  std::vector<Value> values;
  for (auto& [name, value] : fields) {
    names.push_back(std::move(name));
    values.push_back(std::move(value));
  }
  return structure({1, 1}, std::move(names), std::move(values));
}

Value Value::with_extended_class(std::uint32_t class_number) && {
  if (class_number <= hvFunctionClass) {
    throw std::invalid_argument("hv::Value: extended class numbers start at 17");
  }
  if (tag_) {
    tag_->extended_as_ = tag_->class_id();
    tag_->class_number_ = class_number;
  }
  return std::move(*this);
}

Value Value::with_opaque_dimensions() && {
  if (tag_ && !tag_->dimensions_opaque_) {
    tag_->opaque_dimensions_ = std::move(tag_->dimensions_);
    tag_->dimensions_.clear();
    tag_->dimensions_opaque_ = true;
  }
  return std::move(*this);
}

}  // namespace hv
