// The message exceptions: tags, class tree, copies, catalog texts and the
// single hand-off to the host.
#include "errors/msg_id_exception.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "errors/tags.hpp"
#include "zvarray/matrix.hpp"
#include "zvcore/message_catalog.hpp"

namespace {

namespace msg = ZORVEK::textio::textio;
namespace except = foundation::core::except;
using resource_core::MsgArg;

template <class Tag>
using exception_of = except::Exception<Tag, std::exception, void>;

// Each tag: its catalog key, its argument in its own alternative, and a
// catalog entry that uses the argument exactly when there is one.
TEST(Messages, TagsCarryCatalogKeyAndArgumentsInTheirAlternatives) {
  struct Case {
    resource_core::BaseMsgID id;
    std::string key;
    std::vector<MsgArg> args;
  };
  const std::vector<Case> cases = {
      {msg::BadTextFlag("'a', 'b'\n"), "BadTextFlag", {MsgArg(std::in_place_index<1>, "'a', 'b'\n")}},
      {msg::CommentStyleSize(), "CommentStyleSize", {}},
      {msg::DelimiterType(), "DelimiterType", {}},
      {msg::ExpectedNonNegativeScalarInt(), "ExpectedNonNegativeScalarInt", {}},
      {msg::ExpectedPositiveScalarInt(), "ExpectedPositiveScalarInt", {}},
      {msg::ExpectedScalarLogical(), "ExpectedScalarLogical", {}},
      {msg::InvalidEscapeSequence("Whitespace"),
       "InvalidEscapeSequence",
       {MsgArg(std::in_place_index<1>, "Whitespace")}},
      {msg::InvalidStringOrCellStringProperty("LineEnding"),
       "InvalidStringOrCellStringProperty",
       {MsgArg(std::in_place_index<1>, "LineEnding")}},
      {msg::InvalidStringProperty("ExpChars"), "InvalidStringProperty", {MsgArg(std::in_place_index<1>, "ExpChars")}},
      {msg::OddNumberNVPairs(), "OddNumberNVPairs", {}},
      {msg::UnknownParameter(u""), "UnknownParameter", {MsgArg(std::in_place_index<2>, u"")}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.key);
    EXPECT_EQ(c.id.catalog, "ZORVEK:textio:textio");
    EXPECT_EQ(c.id.key, c.key);
    EXPECT_EQ(c.id.args, c.args);
    const auto text = foundation::core::catalog::find_message("ZORVEK:textio:textio", c.key);
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(text->find("{0}") != std::string::npos, !c.args.empty());
  }
}

// Catches the exception as every base in turn and checks what each sees.
TEST(Messages, ThrownExceptionIsCatchableAsEveryBaseWithOneText) {
  const msg::UnknownParameter tag(u"Delimitr\u00e9");
  std::string via_std;
  try {
    textio::throw_msg_id_exception(tag);
  } catch (const std::exception& e) {
    via_std = e.what();
  }
  try {
    textio::throw_msg_id_exception(tag);
  } catch (const except::IMsgIDException& e) {
    EXPECT_EQ(e.GetMsgIDText(), "ZORVEK:textio:textio:UnknownParameter");
    EXPECT_EQ(e.GetBaseMsgID().key, "UnknownParameter");
    const ustring text = e.GetUnicodeMessageTxt();
    EXPECT_NE(text.find(u"Delimitr\u00e9"), ustring::npos);
    EXPECT_EQ(via_std, foundation::core::unicode::to_utf8(text));
  }
  EXPECT_THROW(textio::throw_msg_id_exception(tag), except::IException);
  EXPECT_THROW(textio::throw_msg_id_exception(tag), except::IUserException);
  EXPECT_THROW(textio::throw_msg_id_exception(tag), boost::exception);
  EXPECT_THROW(textio::throw_msg_id_exception(tag), boost::exception_detail::clone_base);
  EXPECT_THROW(textio::throw_msg_id_exception(tag), exception_of<msg::UnknownParameter>);
}

TEST(Messages, CopyCloneAndRethrowKeepIdentifierAndArguments) {
  const exception_of<msg::InvalidStringProperty> original(msg::InvalidStringProperty("DateLocale"));
  const auto check = [&](const except::IMsgIDException& e) {
    EXPECT_EQ(e.GetMsgIDText(), original.GetMsgIDText());
    EXPECT_EQ(e.GetBaseMsgID().catalog, original.GetBaseMsgID().catalog);
    EXPECT_EQ(e.GetBaseMsgID().key, original.GetBaseMsgID().key);
    EXPECT_EQ(e.GetBaseMsgID().args, original.GetBaseMsgID().args);
  };
  const exception_of<msg::InvalidStringProperty> copy(original);
  check(copy);
  const std::unique_ptr<const boost::exception_detail::clone_base> cloned(original.clone());
  check(dynamic_cast<const except::IMsgIDException&>(*cloned));
  try {
    original.rethrow();
    ADD_FAILURE() << "rethrow returned";
  } catch (const exception_of<msg::InvalidStringProperty>& e) {
    check(e);
  }
}

TEST(Messages, HostSeesEachThrowOnceBeforeItIsThrown) {
  std::uint64_t seen_in_hook = 0;
  std::string key_in_hook;
  const auto before = matrix::detail::legacy_hv_error_count();
  auto old = matrix::detail::set_legacy_hv_error_hook([&](const except::IUserException& e) {
    ++seen_in_hook;
    key_in_hook = dynamic_cast<const except::IMsgIDException&>(e).GetBaseMsgID().key;
  });
  EXPECT_THROW(textio::throw_msg_id_exception(msg::OddNumberNVPairs()), exception_of<msg::OddNumberNVPairs>);
  EXPECT_EQ(matrix::detail::legacy_hv_error_count() - before, 1u);
  EXPECT_EQ(seen_in_hook, 1u);
  EXPECT_EQ(key_in_hook, "OddNumberNVPairs");

  // A host hook that throws replaces the message; nothing else is thrown.
  matrix::detail::set_legacy_hv_error_hook([](const except::IUserException&) { throw std::runtime_error("host"); });
  EXPECT_THROW(textio::throw_msg_id_exception(msg::OddNumberNVPairs()), std::runtime_error);
  matrix::detail::set_legacy_hv_error_hook(std::move(old));
}

}  // namespace
