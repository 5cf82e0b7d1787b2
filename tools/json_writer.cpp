#include "tools/json_writer.hpp"

#include <charconv>
#include <stdexcept>

namespace zvtool {
namespace {

constexpr char hex_digits[] = "0123456789abcdef";

void append_unit_escape(std::string& out, unsigned unit) {
  out += "\\u";
  for (int shift = 12; shift >= 0; shift -= 4) out += hex_digits[(unit >> shift) & 0xFu];
}

// Escapes an ASCII unit that JSON does not allow as is; false when the unit
// needs no escape.
bool append_ascii_escape(std::string& out, unsigned unit) {
  switch (unit) {
    case '"':
      out += "\\\"";
      return true;
    case '\\':
      out += "\\\\";
      return true;
    case '\b':
      out += "\\b";
      return true;
    case '\f':
      out += "\\f";
      return true;
    case '\n':
      out += "\\n";
      return true;
    case '\r':
      out += "\\r";
      return true;
    case '\t':
      out += "\\t";
      return true;
    default:
      if (unit < 0x20) {
        append_unit_escape(out, unit);
        return true;
      }
      return false;
  }
}

void append_utf8(std::string& out, char32_t c) {
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0 | (c >> 6));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else if (c < 0x10000) {
    out += static_cast<char>(0xE0 | (c >> 12));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (c >> 18));
    out += static_cast<char>(0x80 | ((c >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((c >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (c & 0x3F));
  }
}

bool is_high_surrogate(char16_t u) { return u >= 0xD800 && u <= 0xDBFF; }
bool is_low_surrogate(char16_t u) { return u >= 0xDC00 && u <= 0xDFFF; }

// Length of the well-formed UTF-8 sequence that starts at bytes[i], or 0 when
// none does (a stray continuation byte, an overlong form, a surrogate, a code
// point above U+10FFFF, a truncated sequence).
std::size_t utf8_sequence_length(std::string_view bytes, std::size_t i) {
  const auto at = [&](std::size_t k) { return static_cast<unsigned char>(bytes[k]); };
  const unsigned char lead = at(i);
  if (lead < 0x80) return 1;
  std::size_t length = 0;
  unsigned char low = 0x80;  // range of the second byte
  unsigned char high = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0) low = 0xA0;
    if (lead == 0xED) high = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0) low = 0x90;
    if (lead == 0xF4) high = 0x8F;
  } else {
    return 0;
  }
  if (bytes.size() - i < length) return 0;
  if (at(i + 1) < low || at(i + 1) > high) return 0;
  for (std::size_t k = 2; k < length; ++k) {
    if (at(i + k) < 0x80 || at(i + k) > 0xBF) return 0;
  }
  return length;
}

}  // namespace

std::string json_quote_units(std::u16string_view units) {
  std::string out = "\"";
  for (std::size_t i = 0; i < units.size(); ++i) {
    const char16_t u = units[i];
    if (u < 0x80) {
      if (!append_ascii_escape(out, u)) out += static_cast<char>(u);
    } else if (is_high_surrogate(u) && i + 1 < units.size() && is_low_surrogate(units[i + 1])) {
      const char32_t c = 0x10000 + ((static_cast<char32_t>(u) - 0xD800) << 10) + (units[i + 1] - 0xDC00);
      append_utf8(out, c);
      ++i;
    } else if (is_high_surrogate(u) || is_low_surrogate(u)) {
      append_unit_escape(out, u);
    } else {
      append_utf8(out, u);
    }
  }
  out += '"';
  return out;
}

std::string json_quote_bytes(std::string_view bytes) {
  std::string out = "\"";
  for (std::size_t i = 0; i < bytes.size();) {
    const std::size_t length = utf8_sequence_length(bytes, i);
    if (length == 0) {
      append_unit_escape(out, static_cast<unsigned char>(bytes[i]));
      ++i;
    } else if (length == 1) {
      if (!append_ascii_escape(out, static_cast<unsigned char>(bytes[i]))) out += bytes[i];
      ++i;
    } else {
      out.append(bytes.substr(i, length));
      i += length;
    }
  }
  out += '"';
  return out;
}

void json_writer::indent(std::size_t depth) {
  out_ += '\n';
  out_.append(2 * depth, ' ');
}

void json_writer::next_item() {
  if (levels_.empty()) return;
  level& current = levels_.back();
  if (!current.empty) out_ += ',';
  current.empty = false;
  indent(levels_.size());
}

void json_writer::value_prefix() {
  if (!levels_.empty() && levels_.back().is_object) {
    if (!key_written_) throw std::logic_error("json_writer: a member value needs a key first");
    key_written_ = false;
    return;
  }
  next_item();
}

void json_writer::key(std::string_view name) {
  if (levels_.empty() || !levels_.back().is_object || key_written_) {
    throw std::logic_error("json_writer: a key belongs directly inside an object");
  }
  next_item();
  out_ += json_quote_bytes(name);
  out_ += ": ";
  key_written_ = true;
}

void json_writer::open(char bracket, bool is_object) {
  value_prefix();
  out_ += bracket;
  levels_.push_back(level{is_object});
}

void json_writer::close(char bracket, bool is_object) {
  if (levels_.empty() || levels_.back().is_object != is_object || key_written_) {
    throw std::logic_error("json_writer: unbalanced container");
  }
  const bool empty = levels_.back().empty;
  levels_.pop_back();
  if (!empty) indent(levels_.size());
  out_ += bracket;
}

void json_writer::begin_object() { open('{', true); }
void json_writer::end_object() { close('}', true); }
void json_writer::begin_array() { open('[', false); }
void json_writer::end_array() { close(']', false); }

void json_writer::text_value(std::u16string_view units) {
  value_prefix();
  out_ += json_quote_units(units);
}

void json_writer::bytes_value(std::string_view bytes) {
  value_prefix();
  out_ += json_quote_bytes(bytes);
}

void json_writer::unsigned_value(std::uint64_t n) {
  value_prefix();
  out_ += std::to_string(n);
}

void json_writer::bool_value(bool b) {
  value_prefix();
  out_ += b ? "true" : "false";
}

void json_writer::null_value() {
  value_prefix();
  out_ += "null";
}

void json_writer::double_value(double d) {
  value_prefix();
  char buffer[32];
  const auto end = std::to_chars(buffer, buffer + sizeof buffer, d).ptr;
  out_.append(buffer, end);
}

}  // namespace zvtool
