#include "name_value/escape_sequences.hpp"

#include <cstddef>

namespace textio::options {
namespace {

constexpr char16_t backslash = u'\\';

// The unit a known sequence stands for, or 0 when the unit behind the
// backslash makes an unknown sequence. (No known sequence gives U+0000.)
constexpr char16_t decoded_unit(char16_t second) noexcept {
  switch (second) {
    case u'\\':
      return u'\\';
    case u'b':
      return u'\b';
    case u'n':
      return u'\n';
    case u'r':
      return u'\r';
    case u't':
      return u'\t';
    default:
      return 0;
  }
}

}  // namespace

bool decode_escape_sequences(ustring& text) noexcept {
  const std::size_t size = text.size();
  std::size_t read = text.find(backslash);
  if (read == ustring::npos) return true;

  // Units before `read` are final. The decoded text is never longer than what
  // has been read, so it is written over the same buffer behind the reader,
  // each unit moved once.
  char16_t* const units = text.data();
  std::size_t write = read;
  bool all_known = true;
  while (read < size) {
    const char16_t unit = units[read];
    if (unit != backslash) {
      units[write++] = unit;
      ++read;
      continue;
    }
    if (read + 1 == size) {
      units[write++] = unit;  // a lone backslash at the end stays
      break;
    }
    const char16_t decoded = decoded_unit(units[read + 1]);
    if (decoded != 0) {
      units[write++] = decoded;
    } else {
      all_known = false;  // both units go
    }
    read += 2;
  }
  text.resize(write);  // shrinks only: no allocation
  return all_known;
}

}  // namespace textio::options
