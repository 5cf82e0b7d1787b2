// The message exceptions: tags, class tree, copies, catalog texts and the
// single hand-off to the host.
#include "errors/msg_id_exception.hpp"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <tuple>
#include <vector>

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
  const auto text = [](const char* s) { return std::vector<MsgArg>{MsgArg(std::in_place_index<1>, s)}; };
  const std::tuple<std::string, resource_core::BaseMsgID, std::vector<MsgArg>> cases[] = {
      {"BadTextFlag", msg::BadTextFlag("'a', 'b'\n"), text("'a', 'b'\n")},
      {"CommentStyleSize", msg::CommentStyleSize(), {}},
      {"DelimiterType", msg::DelimiterType(), {}},
      {"ExpectedNonNegativeScalarInt", msg::ExpectedNonNegativeScalarInt(), {}},
      {"ExpectedPositiveScalarInt", msg::ExpectedPositiveScalarInt(), {}},
      {"ExpectedScalarLogical", msg::ExpectedScalarLogical(), {}},
      {"InvalidEscapeSequence", msg::InvalidEscapeSequence("Whitespace"), text("Whitespace")},
      {"InvalidStringOrCellStringProperty", msg::InvalidStringOrCellStringProperty("LineEnding"), text("LineEnding")},
      {"InvalidStringProperty", msg::InvalidStringProperty("ExpChars"), text("ExpChars")},
      {"OddNumberNVPairs", msg::OddNumberNVPairs(), {}},
      {"UnknownParameter", msg::UnknownParameter(u""), {MsgArg(std::in_place_index<2>, u"")}},
  };
  for (const auto& [key, id, args] : cases) {
    EXPECT_EQ(id.key, key);
    EXPECT_EQ(id.catalog, "ZORVEK:textio:textio");
    EXPECT_EQ(id.args, args);
    const auto entry = foundation::core::catalog::find_message("ZORVEK:textio:textio", id.key);
    ASSERT_TRUE(entry.has_value());
    EXPECT_EQ(entry->find("{0}") != std::string::npos, !args.empty());
  }
}

// Thrown once, caught as every base; the host sees it once, before the throw.
TEST(Messages, ThrownOnceToTheHostAndCatchableAsEveryBase) {
  const msg::UnknownParameter tag(u"Delimitr\u00e9");
  std::uint64_t seen_in_hook = 0;
  const auto before = matrix::detail::legacy_hv_error_count();
  auto old = matrix::detail::set_legacy_hv_error_hook([&](const except::IUserException& e) {
    ++seen_in_hook;
    EXPECT_EQ(dynamic_cast<const except::IMsgIDException&>(e).GetBaseMsgID().key, "UnknownParameter");
  });
  try {
    textio::throw_msg_id_exception(tag);
  } catch (const except::IMsgIDException& e) {
    EXPECT_EQ(e.GetMsgIDText(), "ZORVEK:textio:textio:UnknownParameter");
    const ustring text = e.GetUnicodeMessageTxt();
    EXPECT_NE(text.find(u"Delimitr\u00e9"), ustring::npos);
    EXPECT_EQ(dynamic_cast<const std::exception&>(e).what(), foundation::core::unicode::to_utf8(text));
  }
  EXPECT_EQ(matrix::detail::legacy_hv_error_count() - before, 1u);
  EXPECT_EQ(seen_in_hook, 1u);
  EXPECT_THROW(textio::throw_msg_id_exception(tag), except::IUserException);
  EXPECT_THROW(textio::throw_msg_id_exception(tag), boost::exception);
  EXPECT_THROW(textio::throw_msg_id_exception(tag), exception_of<msg::UnknownParameter>);

  // A host hook that throws replaces the message; nothing else is thrown.
  matrix::detail::set_legacy_hv_error_hook([](const except::IUserException&) { throw std::runtime_error("host"); });
  EXPECT_THROW(textio::throw_msg_id_exception(msg::OddNumberNVPairs()), std::runtime_error);
  matrix::detail::set_legacy_hv_error_hook(std::move(old));
}

// Copies, clones and rethrows keep the identifier and the arguments.
TEST(Messages, CopyCloneAndRethrowKeepIdentifierAndArguments) {
  const exception_of<msg::InvalidStringProperty> original(msg::InvalidStringProperty("DateLocale"));
  const std::unique_ptr<const boost::exception_detail::clone_base> cloned(original.clone());
  for (const auto* e : {static_cast<const except::IMsgIDException*>(&original),
                        dynamic_cast<const except::IMsgIDException*>(cloned.get())}) {
    ASSERT_NE(e, nullptr);
    try {
      dynamic_cast<const boost::exception_detail::clone_base&>(*e).rethrow();
      ADD_FAILURE() << "rethrow returned";
    } catch (const exception_of<msg::InvalidStringProperty>& thrown) {
      EXPECT_EQ(thrown.GetMsgIDText(), "ZORVEK:textio:textio:InvalidStringProperty");
      EXPECT_EQ(thrown.GetBaseMsgID().args, original.GetBaseMsgID().args);
    }
  }
}

}  // namespace
