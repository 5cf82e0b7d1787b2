// Assertions on the library's message exceptions: the type (tag) and the
// arguments, never the wording.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "errors/msg_id_exception.hpp"
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

}  // namespace test_support

// EXPECT_MESSAGE(statement, Tag) or EXPECT_MESSAGE(statement, Tag, args)
#define EXPECT_MESSAGE(statement, Tag, ...) \
  EXPECT_TRUE(::test_support::throws_message<Tag>([&] { statement; } __VA_OPT__(, ) __VA_ARGS__))
