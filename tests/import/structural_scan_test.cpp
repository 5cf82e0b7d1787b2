// The structural scan against the exact record scanner: the same records,
// fields, line numbers and flags, with every kernel the CPU runs, for the
// whole text and for every cut of it (a window that ends early); and the
// same field texts once filled in.
#include "import/scan/structural_scan.hpp"

#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fuzz/structural_agreement.hpp"

namespace {

using structural_check::found_records;

std::string pad(std::size_t n) { return std::string(n, 'x'); }

struct scan_case {
  const char* name;
  std::string text;
  std::vector<std::u16string> endings = {u"\n", u"\r", u"\r\n"};
  char16_t comment = 0;
  std::size_t handed_over = 0;  // records the structural scan leaves to the exact scanner
};

void PrintTo(const scan_case& c, std::ostream* os) { *os << c.name; }

std::string repeat(const std::string& s, int n) {
  std::string out;
  for (int i = 0; i < n; ++i) out += s;
  return out;
}

const scan_case cases[] = {
    {"plain records, blank and trailing fields", "a,b,c\n,,\n  \n\t,\nx,\n\ny", {u"\n", u"\r", u"\r\n"}},
    {"quoted field crossing blocks", pad(60) + ",\"" + repeat("q,\n\r\n", 20) + "\",z\nnext,1\n"},
    {"quote opening at a block's last byte", pad(63) + "\n" + pad(62) + ",\"a,b\"\n"},
    {"doubled quotes at a block edge", pad(61) + ",\"" + "\"\"" + pad(70) + "\"\"\",1\n\"\"\n"},
    {"a line of only a quoted empty field", "\"\"\n\"\"\r\n\"\"", {u"\n", u"\r\n"}},
    {"CR LF split across blocks", pad(63) + "\r\n" + pad(62) + "\r\n\r\n"},
    {"a record starting at a block's last byte", pad(62) + "\n,\n" + pad(62) + "\na"},
    {"CR LF only: lone CR and LF are text", pad(63) + "\r" + "a\nb\r\n\"q\r\n\"\r\n", {u"\r\n"}},
    {"CR and LF without CR LF: an empty line between", pad(63) + "\r\n,\r\n", {u"\r", u"\n"}},
    {"comments, also across blocks and after a quote",
     "#c,\"d\n" + pad(50) + "#" + pad(30) + ",\"\n\"a\"#x\n  #\n\"#\",1\n#" + pad(130),
     {u"\n", u"\r", u"\r\n"},
     u'#'},
    {"quotes that do not open or close a field",
     " \"a,b\",1\nab\"c,d\n\"a\"b,c\n\"a\"b\"c,d\n\"ok\",2\n",
     {u"\n"},
     0,
     3},
    {"a quote inside a field at a block's first byte", pad(64) + "\"a,b\"\n1,2\n", {u"\n"}, 0, 1},
    {"a quote open at the end", "a,b\n" + pad(70) + ",\"open,\n", {u"\n"}, 0, 1},
};

class StructuralScan : public ::testing::TestWithParam<scan_case> {};

TEST_P(StructuralScan, AgreesWithTheExactScanner) {
  const scan_case& c = GetParam();
  const auto plain = structural_check::make_rules({u",", u";"}, c.endings, c.comment, u" \t");
  const auto fast = textio::import::structural_classes::for_rules(plain);
  ASSERT_TRUE(fast.has_value());
  const found_records exact = structural_check::exact_records(plain, c.text);
  for (const std::int64_t target : textio::import::structural_targets()) {
    SCOPED_TRACE(textio::import::structural_target_name(target));
    const found_records whole = structural_check::structural_records(plain, *fast, c.text, true, target);
    EXPECT_EQ(whole.failed, exact.failed);
    EXPECT_EQ(whole.handed_over, c.handed_over);
    EXPECT_EQ(structural_check::filled_records_disagree(plain, *fast, c.text, target), "");
    ASSERT_EQ(whole.records.size(), exact.records.size());
    for (std::size_t i = 0; i < exact.records.size(); ++i)
      EXPECT_EQ(whole.records[i], exact.records[i]) << "record " << i;
    for (std::size_t cut = 0; cut < c.text.size(); ++cut) {
      const found_records part =
          structural_check::structural_records(plain, *fast, std::string_view(c.text).substr(0, cut), false, target);
      ASSERT_LE(part.records.size(), exact.records.size()) << "cut " << cut;
      for (std::size_t i = 0; i < part.records.size(); ++i) {
        ASSERT_EQ(part.records[i], exact.records[i]) << "cut " << cut << " record " << i;
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Texts, StructuralScan, ::testing::ValuesIn(cases));

TEST(StructuralScan, LeavesUncoveredRulesToTheExactScanner) {
  using structural_check::make_rules;
  using textio::import::structural_classes;
  const std::vector<std::u16string> lf = {u"\n"};
  EXPECT_TRUE(structural_classes::for_rules(make_rules({u","}, lf, u'#', u" ")));
  EXPECT_FALSE(structural_classes::for_rules(make_rules({u"\t"}, lf, 0, u" \t")));  // a delimiter that is blank
  EXPECT_FALSE(structural_classes::for_rules(make_rules({u"::"}, lf, 0, u" ")));    // two bytes
  EXPECT_FALSE(structural_classes::for_rules(make_rules({u","}, {u"\n\r"}, 0, u" ")));
  EXPECT_FALSE(structural_classes::for_rules(make_rules({u","}, {u"\n", u"\n,"}, 0, u" ")));  // LF then more
  EXPECT_FALSE(structural_classes::for_rules(make_rules({u","}, lf, u'"', u" ")));  // comment marker is the quote
  EXPECT_FALSE(structural_classes::for_rules(make_rules({u",", u";", u"|", u":", u"!"}, lf, 0, u" ")));
  EXPECT_FALSE(structural_classes::for_rules(make_rules({u","}, lf, 0, u" \u3000")));  // whitespace not ASCII
  // A block comment, even of one-byte markers: the scan knows line comments only.
  auto block = make_rules({u","}, lf, u'{', u" ");
  block.comment_close = textio::import::string_matcher<char>(textio::get_or_create_delim({u"}"}));
  EXPECT_FALSE(structural_classes::for_rules(block));
}

// Collecting the delimiters of a record with more fields than that would
// cost more than the exact scanner's fields: such a record is handed over.
TEST(StructuralScan, HandsOverRecordsOfVeryManyFieldsWhenCollecting) {
  using textio::import::structural_batch;
  const auto rules = structural_check::make_rules({u","}, {u"\n"}, 0, u" ");
  const auto classes = textio::import::structural_classes::for_rules(rules);
  ASSERT_TRUE(classes.has_value());
  const std::string text = "a\n" + std::string(2 * structural_batch::max_collected_fields, ',') + "\nb\n";
  structural_batch batch;
  textio::import::walk_records(*classes, text, 0, true, 1, true, 0, batch);
  EXPECT_EQ(batch.what, textio::import::structural_stop::exact);
  EXPECT_EQ(batch.records.size(), 1u);
  textio::import::walk_records(*classes, text, 0, true, 1, false, 0, batch);
  EXPECT_EQ(batch.records.size(), 3u);
}

}  // namespace
