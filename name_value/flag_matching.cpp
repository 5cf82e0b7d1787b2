#include "name_value/flag_matching.hpp"

#include <cstring>

#include "name_value/ascii_tables.hpp"
#include "zvarray/matrix.hpp"

namespace textio::options {

std::int32_t compare_text_to_flag(const hvArray_tag* value, const char* flag, std::size_t flag_length) {
  char16_t* text = nullptr;
  const std::uint64_t text_length = matrix::detail::get_hvchar_ptr_and_len(value, text);
  std::int32_t result = -1;
  if (text == nullptr || text_length == 0) return flag_length == 0 ? 0 : result;
  if (flag_length == 0) return 1;
  try {
    const std::uint64_t common = text_length < flag_length ? text_length : flag_length;
    for (std::uint64_t i = 0; i < common; ++i) {
      const int t = ascii_to_lower(text[i]);
      const int f = ascii_to_lower(flag[i]);
      if (t != f) return t - f;
    }
    if (text_length == flag_length)
      result = 0;
    else
      result = text_length > flag_length ? 1 : -1;
  } catch (...) {
    // The host decides: throw the failure on, throw another, or return.
    matrix::detail::char_exception_dispatcher();
  }
  return result;
}

bool text_equals_flag(const hvArray_tag* value, const char* flag) {
  if (hvGetNumberOfElements(value) == 0) return false;
  return compare_text_to_flag(value, flag, std::strlen(flag)) == 0;
}

bool text_abbreviates_flag(const hvArray_tag* value, const char* flag) {
  const std::uint64_t n = hvGetNumberOfElements(value);
  if (n == 0) return false;
  const std::size_t flag_length = std::strlen(flag);
  const std::size_t piece = n < flag_length ? static_cast<std::size_t>(n) : flag_length;
  return compare_text_to_flag(value, flag, piece) == 0;
}

}  // namespace textio::options
