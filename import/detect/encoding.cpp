#include "import/detect/encoding.hpp"

#include <uchardet.h>

#include <algorithm>
#include <memory>

#include "import/reader_errors.hpp"
#include "import/input/transcoder.hpp"
#include "import/input/utf8_text.hpp"

namespace textio::import {
namespace {

namespace msg = ZORVEK::textio::reader;

bool starts_with(std::string_view s, std::string_view prefix) { return s.substr(0, prefix.size()) == prefix; }

// Length of the valid UTF-8 prefix of `s`; a sequence cut off by the end of
// `s` counts as valid when `may_be_cut` (the sample stops mid-character).
std::size_t valid_utf8_prefix(std::string_view s, bool may_be_cut) {
  const utf8_check c = check_utf8(s);
  if (c.valid == s.size() || (may_be_cut && !c.invalid)) return may_be_cut && !c.invalid ? s.size() : c.valid;
  return c.valid;
}

// UTF-16 without a byte-order mark: ASCII text in it has a zero in every
// other byte.
std::string utf16_without_bom(std::string_view s) {
  const std::size_t n = std::min<std::size_t>(s.size(), 4096) & ~std::size_t{1};
  if (n < 4) return {};
  std::size_t even_zero = 0;
  std::size_t odd_zero = 0;
  for (std::size_t i = 0; i < n; i += 2) {
    even_zero += s[i] == 0;
    odd_zero += s[i + 1] == 0;
  }
  const std::size_t pairs = n / 2;
  if (odd_zero * 10 >= pairs * 7 && even_zero * 10 <= pairs) return "UTF-16LE";
  if (even_zero * 10 >= pairs * 7 && odd_zero * 10 <= pairs) return "UTF-16BE";
  return {};
}

// Whether every byte above 0x7F reads in Windows-1252 as a letter or a
// usual sign, one at a time between ASCII, as in Western European text. Runs
// of such bytes are words of another script (Cyrillic, Greek, a multi-byte
// encoding).
bool looks_western(std::string_view s) {
  static constexpr std::string_view signs =
      "\x80\x85\x91\x92\x93\x94\x96\x97\x99\xA0\xA3\xA7\xA9\xAB\xAE\xB0\xB1\xB2\xB5\xB7\xBA\xBB\xBC\xBD";
  std::size_t run = 0;
  bool any = false;
  for (const char c : s) {
    const auto b = static_cast<unsigned char>(c);
    if (b < 0x80) {
      run = 0;
      continue;
    }
    any = true;
    if (++run > 2) return false;
    const bool letter = b >= 0xC0 && b != 0xD7 && b != 0xF7;
    if (!letter && signs.find(c) == std::string_view::npos) return false;
  }
  return any;
}

struct byte_order_mark {
  std::string_view bytes;
  const char* name;
};

// The byte-order mark at the start of `raw`, or null.
const byte_order_mark* mark_at(std::string_view raw) {
  // UTF-32LE before UTF-16LE: its mark begins with UTF-16LE's.
  static constexpr byte_order_mark marks[] = {
      {std::string_view("\xEF\xBB\xBF", 3), "UTF-8"},    {std::string_view("\xFF\xFE\0\0", 4), "UTF-32LE"},
      {std::string_view("\0\0\xFE\xFF", 4), "UTF-32BE"}, {std::string_view("\xFF\xFE", 2), "UTF-16LE"},
      {std::string_view("\xFE\xFF", 2), "UTF-16BE"},
  };
  for (const byte_order_mark& mark : marks) {
    if (starts_with(raw, mark.bytes)) return &mark;
  }
  return nullptr;
}

}  // namespace

encoding_guess detect_encoding(std::string_view raw) {
  if (const byte_order_mark* mark = mark_at(raw)) return {mark->name, mark->bytes.size(), 1.0, "byte-order mark"};
  if (std::string name = utf16_without_bom(raw); !name.empty()) {
    return {name, 0, 0.8, "every other byte is zero"};
  }
  const std::size_t valid = valid_utf8_prefix(raw, true);
  if (valid == raw.size()) {
    const bool ascii = std::all_of(raw.begin(), raw.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
    return {"UTF-8", 0, ascii ? 0.9 : 1.0, ascii ? "ASCII only" : "valid UTF-8"};
  }
  if (looks_western(raw))
    return {"WINDOWS-1252", 0, 0.8, "not UTF-8; the bytes above 127 are Western European letters"};
  // Another legacy encoding: ask the charset detector, over at most 256 KiB.
  std::unique_ptr<std::remove_pointer_t<uchardet_t>, void (*)(uchardet_t)> det(uchardet_new(), uchardet_delete);
  const std::string_view probe = raw.substr(0, std::size_t{1} << 18);
  std::string name;
  if (det && uchardet_handle_data(det.get(), probe.data(), probe.size()) == 0) {
    uchardet_data_end(det.get());
    name = uchardet_get_charset(det.get());
  }
  if (name.empty() || name == "ASCII" || is_utf8_name(name)) {
    return {"WINDOWS-1252", 0, 0.3, "not UTF-8; no legacy encoding recognised, assuming Windows-1252"};
  }
  return {name, 0, 0.7, "not UTF-8; the charset detector recognised " + name};
}

std::optional<std::size_t> first_binary_byte(std::string_view raw, const std::string& encoding) {
  if (encoding.starts_with("UTF-16") || encoding.starts_with("UTF-32")) return std::nullopt;
  const auto is_control = [](char c) {
    const auto b = static_cast<unsigned char>(c);
    return (b < 0x20 && (b < '\t' || b > '\r')) || b == 0x7F;
  };
  // Counted without branches, which the compiler turns into vector code:
  // this runs over the whole sample of every file.
  std::size_t controls = 0;
  for (const char c : raw) {
    const auto b = static_cast<unsigned char>(c);
    controls += static_cast<std::size_t>((b < 0x20) & (static_cast<unsigned char>(b - '\t') > '\r' - '\t')) |
                static_cast<std::size_t>(b == 0x7F);
  }
  if (controls < 2 || controls * 100 <= raw.size()) return std::nullopt;
  return static_cast<std::size_t>(std::find_if(raw.begin(), raw.end(), is_control) - raw.begin());
}

std::string decode_sample(std::string_view raw, const std::string& encoding, bool whole_file) {
  // Only the mark of the encoding read with is skipped.
  const byte_order_mark* mark = mark_at(raw);
  const std::size_t bom = mark != nullptr && encoding == mark->name ? mark->bytes.size() : 0;
  const std::string_view body = raw.substr(bom);
  if (is_utf8_name(encoding)) {
    const std::size_t strict = valid_utf8_prefix(body, false);
    if (strict == body.size()) return std::string(body);
    // A character cut off at the end of the sample is dropped.
    if (!whole_file && valid_utf8_prefix(body, true) == body.size()) return std::string(body.substr(0, strict));
    textio::throw_msg_id_exception(msg::InvalidUtf8(bom + strict));
  }
  transcoder decoder(encoding);
  std::string out;
  const transcoder::result r = decoder.convert(body, out);
  // What is left unconverted without an invalid sequence is a character cut
  // off by the sample's end.
  if (r.consumed < body.size() && (r.invalid || whole_file)) {
    textio::throw_msg_id_exception(msg::InvalidEncoding(encoding, bom + r.consumed));
  }
  // A byte-order mark the caller did not see (a forced encoding of the same
  // family) is not text.
  if (starts_with(out, "\xEF\xBB\xBF")) out.erase(0, 3);
  return out;
}

}  // namespace textio::import
