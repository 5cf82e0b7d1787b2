// A deliberately simple flag matcher built on the flag tables, that the
// library's matching is compared with, in the tests and in the fuzzer.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "name_value/option_vocabulary.hpp"

namespace test_support {

// Folds ASCII by arithmetic and refuses anything from 128 up; then compares
// strings. No part of it is shared with the matcher.
inline std::optional<int> reference_position(std::u16string_view text,
                                             const textio::options::rule_option_flags& option) {
  if (text.empty()) return std::nullopt;
  std::string folded;
  for (const char16_t c : text) {
    if (c > 127) return std::nullopt;
    folded += static_cast<char>(c >= u'A' && c <= u'Z' ? c + 32 : c);
  }
  for (std::size_t i = 0; i < option.flags.size(); ++i) {
    const std::string_view flag = option.flags[i];
    const bool matched = option.match == textio::options::flag_match::exact
                             ? folded == flag
                             : folded.size() <= flag.size() && flag.substr(0, folded.size()) == folded;
    if (matched) return static_cast<int>(i);
  }
  return std::nullopt;
}

}  // namespace test_support
