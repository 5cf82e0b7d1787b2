// Calling one option through the entry point, and comparing whole records so
// that a test can show a failed setter wrote nothing.
#pragma once

#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "name_value/set_parser_options.hpp"
#include "parser/options.hpp"
#include "support/record_equality.hpp"
#include "zvarray/value.hpp"

namespace test_support {

// set_parser_options with the one pair (key, value).
inline void apply_option(textio::parser::options& opts, std::string_view key, const hv::Value& value) {
  const hv::Value name = hv::Value::text_utf8(key);
  const hvArray_tag* const args[] = {name.get(), value.get()};
  textio::options::set_parser_options(args, 2, opts);
}

// Passes when every field and flag of the two records is equal; names the
// first field that differs otherwise.
inline ::testing::AssertionResult same_record(const textio::parser::options& a, const textio::parser::options& b) {
  const std::string differ = first_difference(a, b);
  if (differ.empty()) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "records differ, first in " << differ;
}

}  // namespace test_support
