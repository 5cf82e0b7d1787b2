#include "zvcore/ustring.hpp"

#include "zvcore/utf8.hpp"

namespace foundation::core::unicode {
namespace {

constexpr char16_t replacement_character = 0xFFFD;

}  // namespace

::ustring to_utf16(std::string_view utf8) {
  ::ustring out(utf8.size(), u'\0');  // never more units than bytes
  char16_t* end = out.data();
  while (!utf8.empty()) {
    const std::size_t length = utf8_sequence_at(utf8).length;
    if (length == 0) {
      *end++ = replacement_character;
      utf8.remove_prefix(1);
      continue;
    }
    end = write_utf16(end, decode_utf8(reinterpret_cast<const unsigned char*>(utf8.data()), length));
    utf8.remove_prefix(length);
  }
  out.resize(static_cast<std::size_t>(end - out.data()));
  return out;
}

std::string to_utf8(std::u16string_view utf16) {
  std::string out;
  out.reserve(utf16.size());
  for (std::size_t i = 0; i < utf16.size(); ++i) {
    char32_t c = utf16[i];
    if (is_high_surrogate(c) && i + 1 < utf16.size() && is_low_surrogate(utf16[i + 1])) {
      c = combine_surrogates(c, utf16[++i]);
    } else if (is_high_surrogate(c) || is_low_surrogate(c)) {
      c = replacement_character;
    }
    append_utf8(out, c);
  }
  return out;
}

bool is_valid_utf8(std::string_view bytes) noexcept {
  while (!bytes.empty()) {
    const std::size_t length = utf8_sequence_at(bytes).length;
    if (length == 0) return false;
    bytes.remove_prefix(length);
  }
  return true;
}

}  // namespace foundation::core::unicode
