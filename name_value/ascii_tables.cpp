#include "name_value/ascii_tables.hpp"

#include <boost/exception/exception.hpp>

namespace textio::options {
namespace {

constexpr std::array<std::uint8_t, 128> make_ascii_lower_table() {
  std::array<std::uint8_t, 128> table{};
  for (std::size_t i = 0; i < table.size(); ++i) {
    const bool upper = i >= 'A' && i <= 'Z';
    table[i] = static_cast<std::uint8_t>(upper ? i + ('a' - 'A') : i);
  }
  return table;
}

}  // namespace

constinit const std::array<std::uint8_t, 128> ascii_lower_table = make_ascii_lower_table();

void throw_invalid_character() {
  const foundation::ustring::CtypeInvalidCharacter failure;
  throw boost::exception_detail::clone_impl<foundation::ustring::CtypeInvalidCharacter>(failure);
}

int ascii_to_lower(char c) {
  // Compared as a byte, so that 0x80 to 0xFF fail whether char is signed or not.
  const auto code = static_cast<unsigned char>(c);
  if (code >= ascii_lower_table.size()) throw_invalid_character();
  return ascii_lower_table[code];
}

int ascii_to_lower(char16_t c) {
  // The whole 16-bit value is tested: 0x0141 is refused, not read as 0x41.
  if (c >= ascii_lower_table.size()) throw_invalid_character();
  return ascii_lower_table[c];
}

}  // namespace textio::options
