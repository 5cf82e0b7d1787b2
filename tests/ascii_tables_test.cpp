#include "name_value/ascii_tables.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>

#include <boost/exception/exception.hpp>

#include "zvarray/matrix.hpp"
#include "zvcore/exceptions.hpp"

namespace {

using foundation::ustring::CtypeInvalidCharacter;
using textio::options::ascii_lower_table;
using textio::options::ascii_to_lower;
using thrown_type = boost::exception_detail::clone_impl<CtypeInvalidCharacter>;

// What the fold must give: lower case for "A" to "Z", the code itself below
// 128, and a refusal from 128 up.
std::optional<int> reference_lower(std::uint32_t code) {
  if (code >= 128) return std::nullopt;
  if (code >= 'A' && code <= 'Z') return static_cast<int>(code + 32);
  return static_cast<int>(code);
}

// The fold of one character; a refusal only counts if it is the wrapped
// CtypeInvalidCharacter (anything else escapes and fails the test).
template <class Char>
std::optional<int> fold(Char c) {
  try {
    return ascii_to_lower(c);
  } catch (const thrown_type&) {
    return std::nullopt;
  }
}

// Every char16_t and every char (0x80 to 0xFF refused whether char is signed
// or not); the table agrees with the fold below 128. A refusal is the wrapped
// CtypeInvalidCharacter, which is no host message and never reaches the host.
TEST(AsciiTables, EveryUnitFoldsAsTheReference) {
  static_assert(!std::is_base_of_v<foundation::core::except::IUserException, thrown_type>);
  const auto host_errors = matrix::detail::legacy_hv_error_count();
  int mismatches = 0;
  for (std::uint32_t code = 0; code <= 0xFFFF; ++code) {
    if (fold(static_cast<char16_t>(code)) != reference_lower(code) && ++mismatches <= 10) ADD_FAILURE() << "U+" << code;
  }
  for (int byte = 0; byte <= 0xFF; ++byte) {
    const auto want = reference_lower(static_cast<std::uint32_t>(byte));
    EXPECT_EQ(fold(static_cast<char>(static_cast<unsigned char>(byte))), want) << "byte " << byte;
    if (byte < 128) {
      EXPECT_EQ(ascii_lower_table[static_cast<std::size_t>(byte)], *want) << "entry " << byte;
    }
  }
  EXPECT_EQ(matrix::detail::legacy_hv_error_count(), host_errors);
}

}  // namespace
