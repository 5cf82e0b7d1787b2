// The entry point (argument forms, name lookup, order of application and
// failure behaviour) and the message exceptions it throws: tags, class tree,
// copies, catalog texts and the single hand-off to the host.
#include "name_value/set_parser_options.hpp"

#include <gtest/gtest.h>

#include <cstdint>
#include <locale>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "errors/msg_id_exception.hpp"
#include "errors/tags.hpp"
#include "name_value/option_table.hpp"
#include "support/expect_message.hpp"
#include "zvarray/matrix.hpp"
#include "zvarray/value.hpp"
#include "zvcore/message_catalog.hpp"

namespace {

namespace msg = ZORVEK::textio::textio;
namespace except = foundation::core::except;
using hv::Value;
using resource_core::MsgArg;
using test_support::utext_arg;
using textio::parser::options;

// Calls the entry point with the values as arguments, in order.
void call(options& o, const std::vector<Value>& values, std::int32_t count) {
  std::vector<const hvArray_tag*> args;
  for (const auto& v : values) args.push_back(v.get());
  textio::options::set_parser_options(args.data(), count, o);
}
void call(options& o, const std::vector<Value>& values) { call(o, values, static_cast<std::int32_t>(values.size())); }

Value t(const char16_t* s) { return Value::text(s); }

TEST(EntryPoint, CountsThatDoNothingAndCountsThatAreOdd) {
  const std::vector<Value> pair = {t(u"NumVariables"), Value::scalar(3)};
  for (const std::int32_t count : {0, -2, -4, INT32_MIN, -1, -3, 1, 3, INT32_MAX}) {
    options o;
    if (count <= 0 && count % 2 == 0) {
      call(o, pair, count);
    } else {
      EXPECT_MESSAGE(call(o, pair, count), msg::OddNumberNVPairs);
    }
    EXPECT_TRUE(o.detecting_num_variables()) << count;
  }
  // A single argument that is no struct is an odd list, as is a struct with more.
  for (const auto& v : {t(u"NumVariables"), Value::cell_row({}), Value::none()}) {
    options o;
    EXPECT_MESSAGE(call(o, {v}), msg::OddNumberNVPairs);
  }
  options o;
  EXPECT_MESSAGE(call(o, {Value::struct_scalar({{"NumVariables", Value::scalar(2)}}), t(u"x"), t(u"y")}),
                 msg::OddNumberNVPairs);
  EXPECT_TRUE(o.detecting_num_variables());
  EXPECT_MESSAGE(textio::options::set_parser_options(nullptr, 1, o), msg::OddNumberNVPairs);
}

TEST(EntryPoint, NamesIgnoreCaseButMustMatchWholly) {
  for (const auto* name : {u"numheaderlines", u"NUMHEADERLINES", u"nUmHeAdErLiNeS"}) {
    options o;
    call(o, {t(name), Value::scalar(4)});
    EXPECT_EQ(o.num_header_lines(), 4u);
  }
  for (const auto* name : {u"NumHeader", u" NumHeaderLines", u"NumHeaderLiness", u"", u"Num\u00e9HeaderLines"}) {
    options o;
    EXPECT_MESSAGE(call(o, {t(name), Value::scalar(4)}), msg::UnknownParameter, utext_arg(name));
    EXPECT_TRUE(o.detecting_num_header_lines());
  }
  // Names that are no char array report no text; a 2-by-2 name reads column-major.
  for (const auto& name : {Value::scalar(1), Value::none(), Value::cell_row({t(u"NumVariables")})}) {
    options o;
    EXPECT_MESSAGE(call(o, {name, Value::scalar(1)}), msg::UnknownParameter, utext_arg(u""));
  }
  options o;
  EXPECT_MESSAGE(call(o, {Value::chars({2, 2}, u"abcd"), Value::scalar(1)}), msg::UnknownParameter, utext_arg(u"abcd"));
  EXPECT_MESSAGE(textio::options::set_parser_options(nullptr, 2, o), msg::UnknownParameter, utext_arg(u""));
  textio::options::set_parser_options(nullptr, 0, o);
}

TEST(EntryPoint, PairsApplyLeftToRightAndStopAtTheFirstFailure) {
  options o;
  EXPECT_MESSAGE(call(o, {t(u"foo"), Value::scalar(1), t(u"NumVariables"), Value::scalar(3)}), msg::UnknownParameter,
                 utext_arg(u"foo"));
  EXPECT_TRUE(o.detecting_num_variables());

  options q;
  EXPECT_MESSAGE(
      call(q, {t(u"DataLine"), Value::scalar(5), t(u"NumVariables"), Value::scalar(-1), t(u"bogus"), Value::scalar(1)}),
      msg::ExpectedNonNegativeScalarInt);
  EXPECT_EQ(q.num_header_lines(), 4u);

  // The last of two keys writing one field wins.
  options r;
  call(r, {t(u"NumHeaderLines"), Value::scalar(7), t(u"DataLine"), Value::scalar(2)});
  EXPECT_EQ(r.num_header_lines(), 1u);
}

TEST(EntryPoint, StructFormAppliesKnownFieldsInOrderAndSkipsOthers) {
  options o;
  call(o, {Value::struct_scalar({{"foo", Value::scalar(1)},
                                 {"numvariables", Value::scalar(2)},
                                 {"NUMVARIABLES", Value::scalar(5)},
                                 {"DataLine", Value::scalar(3)}})});
  EXPECT_EQ(o.num_variables(), 5u);
  EXPECT_EQ(o.num_header_lines(), 2u);

  // Failure in a field stops the walk; earlier fields stay written.
  options p;
  EXPECT_MESSAGE(call(p, {Value::struct_scalar({{"NumVariables", Value::scalar(2)},
                                                {"DataLine", Value::none()},
                                                {"NumHeaderLines", Value::scalar(1)}})}),
                 msg::ExpectedPositiveScalarInt);
  EXPECT_EQ(p.num_variables(), 2u);
  EXPECT_TRUE(p.detecting_num_header_lines());

  // A struct array is read through its first element; an empty one does nothing.
  options q;
  call(q, {Value::structure({1, 2}, {"NumVariables"}, {Value::scalar(4), Value::scalar(9)})});
  EXPECT_EQ(q.num_variables(), 4u);
  call(q, {Value::struct_scalar({{"NumVariables", Value::scalar(6)}}).with_extended_class(21)});
  EXPECT_EQ(q.num_variables(), 6u);
  for (const auto& empty : {Value::structure({0, 0}, {"NumVariables"}, {}), Value::structure({1, 0}, {}, {})}) {
    options e;
    call(e, {empty});
    EXPECT_TRUE(e.detecting_num_variables());
  }
}

// A ctype facet that also folds '-' to '_' and '9' to 'V', to see which
// locale is used.
class DashFoldingCtype : public std::ctype<char> {
 protected:
  char do_toupper(char c) const override { return c == '-' ? '_' : c == '9' ? 'V' : std::ctype<char>::do_toupper(c); }
  const char* do_toupper(char* begin, const char* end) const override {
    for (char* p = begin; p != end; ++p) *p = do_toupper(*p);
    return end;
  }
};

// The ordering folds signed bytes with the prefix first; both the ordering
// and the lookups fold with the global locale as it stands at each call.
TEST(OptionNameOrdering, ComparesFoldedSignedBytesUnderTheGlobalLocaleOfEachCall) {
  const textio::options::option_name_less less;
  EXPECT_FALSE(less("abc", "ABC") || less("ABC", "abc"));
  EXPECT_TRUE(less("ab", "ABC"));
  EXPECT_FALSE(less("ABC", "ab"));
  EXPECT_TRUE(less("a", "_"));     // 'A' (65) below '_' (95) after folding
  EXPECT_TRUE(less("\x80", "A"));  // bytes from 0x80 compare as negative
  options o;
  const std::vector<Value> pair = {t(u"Num9ariables"), Value::scalar(3)};
  EXPECT_TRUE(less("a-b", "a_b"));
  EXPECT_MESSAGE(call(o, pair), msg::UnknownParameter, utext_arg(u"Num9ariables"));
  const std::locale previous = std::locale::global(std::locale(std::locale::classic(), new DashFoldingCtype));
  EXPECT_FALSE(less("a-b", "a_b") || less("a_b", "a-b"));
  call(o, pair);
  EXPECT_EQ(o.num_variables(), 3u);
  std::locale::global(previous);
  EXPECT_TRUE(less("a-b", "a_b"));
  EXPECT_MESSAGE(call(o, pair), msg::UnknownParameter, utext_arg(u"Num9ariables"));
}

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
