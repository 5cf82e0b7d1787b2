// Text getters and error hooks of the host array library.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "zvarray/hv_array.hpp"
#include "zvcore/exceptions.hpp"
#include "zvcore/ustring.hpp"

namespace matrix {

// The characters of a char array, in column-major order, as UTF-8. Anything
// that is not a char array (null included) gives the empty string.
std::string get_string(const hvArray_tag* value);

// The characters of a char array as UTF-16 units; empty for anything else.
::ustring get_ustring(const hvArray_tag* value);

// A char array gives a list of its one text; a cell array gives one entry per
// element in column-major order (an element that is no char array gives an
// empty entry); anything else gives an empty list.
std::vector<::ustring> get_ustring_array(const hvArray_tag* value);

namespace detail {

// Points `chars` at the value's UTF-16 units and gives their number. Anything
// that is not a char array gives a null pointer and 0.
std::uint64_t get_hvchar_ptr_and_len(const hvArray_tag* value, char16_t*& chars);

// Called inside a handler with a character-class failure active. What it does
// is the host's; the stand-in's behaviour is set with set_char_exception_mode.
void char_exception_dispatcher();

// Hands a failure to the host before it is thrown. The stand-in counts the
// calls, runs the installed hook if any, and returns.
void do_legacy_hv_error(const foundation::core::except::IUserException& error);

// ---- Test controls of the stand-in ----

enum class char_exception_mode {
  rethrow,        // throw the active exception on (the default)
  throw_another,  // throw a std::runtime_error instead
  return_normally
};
void set_char_exception_mode(char_exception_mode mode) noexcept;
char_exception_mode get_char_exception_mode() noexcept;
// How often char_exception_dispatcher has been called on this thread.
std::uint64_t char_exception_dispatch_count() noexcept;

using legacy_hv_error_hook = std::function<void(const foundation::core::except::IUserException&)>;
// Installs a hook run by do_legacy_hv_error on this thread; returns the old one.
legacy_hv_error_hook set_legacy_hv_error_hook(legacy_hv_error_hook hook);
// How often do_legacy_hv_error has been called on this thread.
std::uint64_t legacy_hv_error_count() noexcept;

}  // namespace detail
}  // namespace matrix
