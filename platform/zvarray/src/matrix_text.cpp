#include "zvarray/matrix.hpp"

namespace matrix {
namespace {

std::u16string_view chars_of(const hvArray_tag* value) {
  char16_t* chars = nullptr;
  const std::uint64_t n = detail::get_hvchar_ptr_and_len(value, chars);
  if (chars == nullptr) return {};
  return {chars, static_cast<std::size_t>(n)};
}

}  // namespace

std::string get_string(const hvArray_tag* value) { return foundation::core::unicode::to_utf8(chars_of(value)); }

::ustring get_ustring(const hvArray_tag* value) { return ::ustring(chars_of(value)); }

std::vector<::ustring> get_ustring_array(const hvArray_tag* value) {
  std::vector<::ustring> out;
  switch (hvGetClassID(value)) {
    case hvCharClass:
      out.push_back(get_ustring(value));
      break;
    case hvCellClass: {
      const auto n = hvGetNumberOfElements(value);
      const auto* slots = static_cast<const hvArray_tag* const*>(hvGetData(value));
      out.reserve(n);
      for (std::uint64_t i = 0; i < n; ++i) out.push_back(get_ustring(slots[i]));
      break;
    }
    default:
      break;
  }
  return out;
}

namespace detail {

std::uint64_t get_hvchar_ptr_and_len(const hvArray_tag* value, char16_t*& chars) {
  chars = nullptr;
  if (hvGetClassID(value) != hvCharClass) return 0;
  const auto n = hvGetNumberOfElements(value);
  if (n == 0) return 0;
  // The host hands out a mutable pointer; callers of this library only read.
  chars = const_cast<char16_t*>(static_cast<const char16_t*>(hvGetData(value)));
  return n;
}

}  // namespace detail
}  // namespace matrix
