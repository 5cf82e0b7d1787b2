// A small streaming JSON writer for the tool's output, two-space indented.
//
// It is hand-written because the texts it writes are not all Unicode: the
// record's strings are UTF-16 code units that may hold lone surrogates, and
// message arguments are 8-bit texts that may hold bytes that are no UTF-8.
// Both must come out unit for unit (a lone surrogate as \uXXXX, a stray byte
// as \u00XX), which a general JSON library refuses or replaces.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace zvtool {

// A JSON string literal, quotes included, of UTF-16 units: valid text as
// UTF-8, a lone surrogate as \uXXXX, controls, '"' and '\' escaped.
std::string json_quote_units(std::u16string_view units);

// A JSON string literal of 8-bit text: well-formed UTF-8 sequences as they
// are, every other byte as \u00XX, controls, '"' and '\' escaped.
std::string json_quote_bytes(std::string_view bytes);

class json_writer {
 public:
  void begin_object();
  void end_object();
  void begin_array();
  void end_array();

  // The key of the next member of the current object (8-bit text).
  void key(std::string_view name);

  void text_value(std::u16string_view units);
  void bytes_value(std::string_view bytes);
  void unsigned_value(std::uint64_t n);
  void bool_value(bool b);
  void null_value();
  // Shortest form that reads back as the same double; must be finite.
  void double_value(double d);

  // The document so far; complete once every container is closed. Ends
  // without a line break.
  const std::string& text() const noexcept { return out_; }

 private:
  struct level {
    bool is_object;
    bool empty = true;
  };

  // Places a separator and indentation before a member or element.
  void next_item();
  void open(char bracket, bool is_object);
  void close(char bracket, bool is_object);
  void value_prefix();
  void indent(std::size_t depth);

  std::string out_;
  std::vector<level> levels_;
  bool key_written_ = false;
};

}  // namespace zvtool
