#include "import/input/transcoder.hpp"

#include <iconv.h>

#include <cctype>
#include <cerrno>

#include "import/reader_errors.hpp"

namespace textio::import {

bool is_utf8_name(std::string_view encoding) noexcept {
  std::string letters;
  for (const char c : encoding) {
    if (c != '-' && c != '_') letters += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return letters == "UTF8";
}

transcoder::transcoder(const std::string& encoding) : name_(encoding) {
  const iconv_t cd = ::iconv_open("UTF-8", encoding.c_str());
  if (cd == reinterpret_cast<iconv_t>(-1)) throw_msg_id_exception(ZORVEK::textio::reader::UnknownEncoding(encoding));
  descriptor_ = cd;
}

transcoder::~transcoder() { ::iconv_close(static_cast<iconv_t>(descriptor_)); }

transcoder::result transcoder::convert(std::string_view bytes, std::string& out) {
  result r;
  char* in = const_cast<char*>(bytes.data());  // iconv's signature; it does not write
  std::size_t in_left = bytes.size();
  while (in_left > 0) {
    // A byte gives at most four bytes of UTF-8 in the encodings iconv knows.
    const std::size_t start = out.size();
    const std::size_t room = in_left * 4 + 16;
    out.resize(start + room);
    char* to = out.data() + start;
    std::size_t to_left = room;
    const std::size_t done = ::iconv(static_cast<iconv_t>(descriptor_), &in, &in_left, &to, &to_left);
    const int error = errno;
    out.resize(start + (room - to_left));
    if (done != static_cast<std::size_t>(-1)) break;
    if (error == E2BIG) continue;
    r.invalid = error == EILSEQ;
    break;  // EINVAL: a character cut off at the end
  }
  r.consumed = bytes.size() - in_left;
  return r;
}

}  // namespace textio::import
