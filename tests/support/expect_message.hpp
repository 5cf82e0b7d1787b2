// Assertions on the library's message exceptions (the type, or tag, and the
// arguments, never the wording), calls of one option through the entry point,
// and whole-record comparisons that show a failed call wrote nothing.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "errors/msg_id_exception.hpp"
#include "name_value/set_parser_options.hpp"
#include "parser/options.hpp"
#include "support/record_equality.hpp"
#include "zvarray/value.hpp"
#include "zvcore/base_msg_id.hpp"
#include "zvcore/exceptions.hpp"

namespace test_support {

using Args = std::vector<resource_core::MsgArg>;

inline std::string describe(const resource_core::BaseMsgID& id) {
  std::string text = id.key + "(";
  for (const auto& arg : id.args) {
    const auto* s = std::get_if<std::string>(&arg);
    const auto* u = std::get_if<::ustring>(&arg);
    text += s ? "\"" + *s + "\" " : u ? "u\"" + foundation::core::unicode::to_utf8(*u) + "\" " : "<plain> ";
  }
  return text + ")";
}

// Passes when fn throws the message exception of Tag with exactly `args`
// (each argument in its own alternative).
template <class Tag>
::testing::AssertionResult throws_message(const std::function<void()>& fn, const Args& args = {}) {
  try {
    fn();
  } catch (const foundation::core::except::Exception<Tag, std::exception, void>& e) {
    if (e.GetBaseMsgID().args == args) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "threw " << describe(e.GetBaseMsgID()) << " with other arguments";
  } catch (const foundation::core::except::IMsgIDException& e) {
    return ::testing::AssertionFailure() << "threw another message: " << describe(e.GetBaseMsgID());
  } catch (const std::exception& e) {
    return ::testing::AssertionFailure() << "threw a non-message exception: " << e.what();
  }
  return ::testing::AssertionFailure() << "threw nothing";
}

inline Args text_arg(const std::string& s) { return {resource_core::MsgArg(std::in_place_index<1>, s)}; }
inline Args utext_arg(const ::ustring& s) { return {resource_core::MsgArg(std::in_place_index<2>, s)}; }

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

// EXPECT_MESSAGE(statement, Tag) or EXPECT_MESSAGE(statement, Tag, args)
#define EXPECT_MESSAGE(statement, Tag, ...) \
  EXPECT_TRUE(::test_support::throws_message<Tag>([&] { statement; } __VA_OPT__(, ) __VA_ARGS__))
