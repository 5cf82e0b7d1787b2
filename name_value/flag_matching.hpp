// Matching of a host value against a fixed list of text flags, without regard
// to ASCII case. The position of the first flag that matches is the result.
// Inside the search a failure is the way of saying no: the end of the list
// throws, and the parse functions turn every failure into BadTextFlag.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <exception>

#include "errors/flag_list_text.hpp"
#include "errors/msg_id_exception.hpp"
#include "errors/tags.hpp"
#include "zvarray/hv_array.hpp"

namespace textio::options {

// Compares the value's characters, read in place, with the first
// `flag_length` characters of `flag`, both folded by ascii_to_lower. Gives 0
// when they are equal. A value without characters is the empty text. A
// character from 128 up that the walk reaches goes to
// matrix::detail::char_exception_dispatcher; if that returns, the result is -1.
std::int32_t compare_text_to_flag(const hvArray_tag* value, const char* flag, std::size_t flag_length);

// The whole text equals the whole flag. False for a value without elements.
bool text_equals_flag(const hvArray_tag* value, const char* flag);

// The text, at least one character long, equals the flag's beginning (up to
// the whole flag). A text longer than the flag never abbreviates it.
bool text_abbreviates_flag(const hvArray_tag* value, const char* flag);

template <class... Flags>
concept flag_list = (sizeof...(Flags) >= 1 && sizeof...(Flags) <= 6) && (std::same_as<Flags, const char*> && ...);

// The position of the first flag that the text equals (or abbreviates); a
// default std::exception when none does.
template <class... Flags>
requires flag_list<Flags...> std::uint8_t match_exact_flags(const hvArray_tag* value, Flags... flags) {
  const char* const list[] = {flags...};
  for (std::size_t position = 0; position < sizeof...(Flags); ++position) {
    if (text_equals_flag(value, list[position])) return static_cast<std::uint8_t>(position);
  }
  throw std::exception();
}

template <class... Flags>
requires flag_list<Flags...> std::uint8_t match_abbreviated_flags(const hvArray_tag* value, Flags... flags) {
  const char* const list[] = {flags...};
  for (std::size_t position = 0; position < sizeof...(Flags); ++position) {
    if (text_abbreviates_flag(value, list[position])) return static_cast<std::uint8_t>(position);
  }
  throw std::exception();
}

// The matched position, or BadTextFlag with the whole list as its argument,
// whatever the cause of the failure. The caught failure is dropped.
template <class... Flags>
requires flag_list<Flags...> std::uint8_t parse_exact_flag(const hvArray_tag* value, Flags... flags) {
  try {
    return match_exact_flags(value, flags...);
  } catch (...) {
    throw_msg_id_exception(ZORVEK::textio::textio::BadTextFlag(flag_list_text(flags...)));
  }
}

template <class... Flags>
requires flag_list<Flags...> std::uint8_t parse_abbreviated_flag(const hvArray_tag* value, Flags... flags) {
  try {
    return match_abbreviated_flags(value, flags...);
  } catch (...) {
    throw_msg_id_exception(ZORVEK::textio::textio::BadTextFlag(flag_list_text(flags...)));
  }
}

}  // namespace textio::options
