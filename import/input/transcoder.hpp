// Converts the bytes of a legacy or UTF-16/32 encoding to UTF-8 a piece at a
// time, so that a file can be read in blocks: a character cut off at the end
// of one piece waits for the next.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace textio::import {

// Whether `encoding` names UTF-8 itself, which needs no conversion.
bool is_utf8_name(std::string_view encoding) noexcept;

class transcoder {
 public:
  // Throws UnknownEncoding when the system cannot convert from `encoding`.
  explicit transcoder(const std::string& encoding);
  transcoder(const transcoder&) = delete;
  transcoder& operator=(const transcoder&) = delete;
  ~transcoder();

  struct result {
    std::size_t consumed = 0;  // bytes of the input converted
    bool invalid = false;      // the byte at `consumed` starts an invalid sequence
  };
  // Appends the UTF-8 form of the longest whole-character prefix of `bytes`
  // to `out`. What is left unconsumed without `invalid` is a character cut
  // off at the end.
  result convert(std::string_view bytes, std::string& out);

  const std::string& name() const noexcept { return name_; }

 private:
  std::string name_;
  void* descriptor_;  // iconv_t
};

}  // namespace textio::import
