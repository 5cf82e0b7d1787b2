// Case folding of text flags: ASCII only, to lower case, with no locale. Any
// character from 128 up is refused with CtypeInvalidCharacter. This fold is
// unrelated to the locale fold of option names in option_name_less.
#pragma once

#include <array>
#include <cstdint>
#include <exception>
#include <string>
#include <utility>

namespace foundation::ustring {

// Base of the character-class failures; `what` gives `message`.
class CtypeExceptionBase : public std::exception {
 public:
  CtypeExceptionBase(std::string text, std::int32_t first, std::int32_t second)
      : message(std::move(text)), first_code(first), second_code(second) {}
  ~CtypeExceptionBase() noexcept override = default;
  const char* what() const noexcept override { return message.c_str(); }

  std::string message;
  std::int32_t first_code;
  std::int32_t second_code;
};

// A character outside the 7-bit range reached the ASCII fold.
class CtypeInvalidCharacter : public CtypeExceptionBase {
 public:
  CtypeInvalidCharacter() : CtypeExceptionBase("Invalid character error.", 3, 0) {}
};

}  // namespace foundation::ustring

namespace textio::options {

// Entry i is i, except that "A" to "Z" map to "a" to "z". Nothing from 128 up.
extern const std::array<std::uint8_t, 128> ascii_lower_table;

// Throws a copy of a default CtypeInvalidCharacter wrapped in
// boost::exception_detail::clone_impl, so that it can be cloned and rethrown.
[[noreturn]] void throw_invalid_character();

// The lower-case code of an ASCII character. A char must not be negative (no
// byte from 0x80 up) and a char16_t must be at most 127 as a whole value;
// anything else goes to throw_invalid_character before the table is read.
int ascii_to_lower(char c);
int ascii_to_lower(char16_t c);

}  // namespace textio::options
