#include "name_value/ascii_tables.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>

#include <boost/exception/exception.hpp>

#include "zvarray/matrix.hpp"
#include "zvcore/exceptions.hpp"

namespace {

using foundation::ustring::CtypeExceptionBase;
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

std::string show(std::optional<int> x) { return x ? std::to_string(*x) : "refused"; }

TEST(AsciiTables, EveryChar16ValueFoldsAsTheReference) {
  std::string mismatches;
  int count = 0;
  for (std::uint32_t code = 0; code <= 0xFFFF; ++code) {
    const auto got = fold(static_cast<char16_t>(code));
    const auto want = reference_lower(code);
    if (got != want && ++count <= 10) {
      mismatches += " U+" + std::to_string(code) + ": " + show(got) + " not " + show(want) + ";";
    }
  }
  EXPECT_EQ(count, 0) << mismatches;
}

// Bytes 0x80 to 0xFF are refused whether char is signed or not; the table
// agrees with the fold below 128.
TEST(AsciiTables, EveryCharValueAndTableEntryFoldsAsTheReference) {
  static_assert(std::is_same_v<decltype(ascii_lower_table)::value_type, std::uint8_t>);
  for (int byte = 0; byte <= 0xFF; ++byte) {
    const auto want = reference_lower(static_cast<std::uint32_t>(byte));
    EXPECT_EQ(fold(static_cast<char>(static_cast<unsigned char>(byte))), want) << "byte " << byte;
    if (byte < 128) {
      EXPECT_EQ(ascii_lower_table[static_cast<std::size_t>(byte)], *want) << "entry " << byte;
    }
  }
}

// The refusal is the wrapped CtypeInvalidCharacter, clones and rethrows as
// its own type, and never reaches the host.
TEST(AsciiTables, RefusalIsTheWrappedInvalidCharacter) {
  static_assert(std::is_base_of_v<boost::exception_detail::clone_base, thrown_type>);
  static_assert(!std::is_base_of_v<boost::exception, thrown_type>);
  static_assert(!std::is_base_of_v<foundation::core::except::IUserException, thrown_type>);

  const auto host_errors = matrix::detail::legacy_hv_error_count();
  try {
    ascii_to_lower(u'\u00C0');
    ADD_FAILURE() << "returned";
  } catch (const CtypeExceptionBase& e) {
    EXPECT_STREQ(e.what(), "Invalid character error.");
    EXPECT_EQ(e.first_code, 3);
    EXPECT_EQ(e.second_code, 0);
    const auto* wrapped = dynamic_cast<const boost::exception_detail::clone_base*>(&e);
    ASSERT_NE(dynamic_cast<const thrown_type*>(&e), nullptr);
    ASSERT_NE(wrapped, nullptr);
    const std::unique_ptr<const boost::exception_detail::clone_base> copy(wrapped->clone());
    const auto* copied = dynamic_cast<const CtypeInvalidCharacter*>(copy.get());
    ASSERT_NE(copied, nullptr);
    EXPECT_STREQ(copied->what(), "Invalid character error.");
    EXPECT_THROW(copy->rethrow(), thrown_type);
  }
  EXPECT_EQ(matrix::detail::legacy_hv_error_count(), host_errors);
}

}  // namespace
