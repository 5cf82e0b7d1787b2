// The built zvtextparser tool run as a process, against its contract: one
// row a case, with the arguments, the input bytes, the exit status, what
// standard output is (or holds) and what standard error is (or holds). Then
// what a table cannot say: output files, pipes, the memory limit.
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "import/read_helpers.hpp"
#include "support/run_tool.hpp"

namespace {

using namespace std::string_literals;
using nlohmann::ordered_json;
using test_support::run_tool;
using test_support::tool_setup;

// How a stream is checked: equal to the text, holding it, starting or ending
// with it, or (standard output only) a JSON object whose JSON pointers give
// the values there.
struct expected {
  enum { is, has, starts, ends, json } how;
  std::string text;
};
expected is(std::string text) { return {expected::is, std::move(text)}; }
expected has(std::string text) { return {expected::has, std::move(text)}; }
expected starts(std::string text) { return {expected::starts, std::move(text)}; }
expected ends(std::string text) { return {expected::ends, std::move(text)}; }
expected json(std::string text) { return {expected::json, std::move(text)}; }
const expected nothing = is("");
const expected any = has("");

struct process_case {
  // "@" stands for the input written to a file; "-" with an input reads it
  // from standard input.
  std::vector<std::string> args;
  std::string input;
  int status;
  expected out;
  expected err = nothing;
  tool_setup setup = {};
};

void PrintTo(const process_case& c, std::ostream* os) {
  for (const auto& a : c.args) *os << a.substr(0, 30) << ' ';
}

void check(const expected& e, const std::string& got, const char* stream) {
  switch (e.how) {
    case expected::is:
      EXPECT_EQ(got, e.text) << stream;
      break;
    case expected::has:
      EXPECT_NE(got.find(e.text), std::string::npos) << stream << ":\n" << got;
      break;
    case expected::starts:
      EXPECT_TRUE(got.starts_with(e.text)) << stream << ":\n" << got.substr(0, 400);
      break;
    case expected::ends:
      EXPECT_TRUE(got.ends_with(e.text)) << stream << ":\n"
                                         << got.substr(got.size() - std::min<std::size_t>(got.size(), 400));
      break;
    case expected::json: {
      const auto out = ordered_json::parse(got);
      const auto wanted = ordered_json::parse(e.text);
      for (const auto& [pointer, value] : wanted.items()) {
        const ordered_json::json_pointer at(pointer);
        ASSERT_TRUE(out.contains(at)) << pointer << " missing in\n" << got;
        EXPECT_EQ(out.at(at), value) << pointer;
      }
    }
  }
}

// options and reader print "options" and one of "reader" and "error", or
// "options" alone; a refused option is one line on standard error with the
// error's identifier; reader prints what options prints, then its reader.
void check_option_objects(const process_case& c, const test_support::tool_run& run) {
  const auto out = ordered_json::parse(run.out);
  const bool reader = c.args[0] == "reader";
  EXPECT_EQ(out.size(), c.status == 1 || reader ? 2u : 1u) << run.out;
  if (c.status == 1) {
    const std::string identifier = out["error"]["identifier"];
    EXPECT_EQ(identifier, "ZORVEK:textio:textio:" + out["error"]["key"].get<std::string>());
    EXPECT_TRUE(run.err.starts_with("zvtextparser: " + identifier + ": ")) << run.err;
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
  }
  if (reader) {
    std::vector<std::string> args{"options"};
    args.insert(args.end(), c.args.begin() + 2, c.args.end());
    const auto options = run_tool(args);
    EXPECT_EQ(options.err, run.err);
    const std::string start =
        c.status == 1 ? options.out : options.out.substr(0, options.out.size() - 3) + ",\n  \"reader\": {\n";
    EXPECT_EQ(run.out.substr(0, start.size()), start);
  }
}

class Process : public ::testing::TestWithParam<process_case> {};

TEST_P(Process, KeepsItsContract) {
  const process_case& c = GetParam();
  tool_setup setup = c.setup;
  std::vector<std::string> args = c.args;
  const std::string path = import_test::write_file(c.input);
  int in = -1;
  for (auto& a : args) {
    if (a == "@") a = path;
    if (a == "-" && !c.input.empty()) setup.stdin_fd = in = ::open(path.c_str(), O_RDONLY);
  }
  const auto run = run_tool(args, setup);
  if (in >= 0) ::close(in);
  EXPECT_EQ(run.status, c.status) << run.err;
  check(c.out, run.out, "standard output");
  check(c.err, run.err, "standard error");
  if (c.out.how == expected::json && (c.args[0] == "options" || c.args[0] == "reader")) check_option_objects(c, run);
}

const std::string table = "a,b,c\n1,\"x\ty\",3\n2,\"q\nr\",4\n5,z,6\n";
const std::string big_and_two = R"({"$class": "uint64", "$size": [1, 2], "$data": [18446744073709551615, 2]})";
const std::string full = "zvtextparser: cannot write to standard output: No space left on device";
const std::string empty_table = "{\"variables\": [], \"units\": [], \"descriptions\": []}\n";
const expected error_line = starts("{\"error\": ");

tool_setup setup_of(void (*set)(tool_setup&)) {
  tool_setup s;
  set(s);
  return s;
}
const tool_setup dev_full = setup_of([](tool_setup& s) { s.stdout_path = "/dev/full"; });
const tool_setup closed_stdout = setup_of([](tool_setup& s) { s.close_stdout = true; });
const tool_setup closed_stdin = setup_of([](tool_setup& s) { s.close_stdin = true; });

// Six thousand records of "1,2,3": far more output than a pipe holds.
std::string many_records() {
  std::string text;
  for (int i = 0; i < 6000; ++i) text += "1,2,3\n";
  return text;
}

// read with one header line and no detection, then `first` and `more`.
std::vector<std::string> headed(const char* file, std::vector<std::string> first,
                                const std::vector<std::string>& more) {
  first.insert(first.begin(), {"read", file, "--no-detect", "VariableNamesLine", "1", "NumHeaderLines", "1"});
  first.insert(first.end(), more.begin(), more.end());
  return first;
}
std::vector<std::string> ending(const std::vector<std::string>& more) { return headed("@", {"--format", "csv"}, more); }
std::vector<std::string> typed(const std::vector<std::string>& more) {
  return headed("-", {"OutputBuilderType", "table"}, more);
}

const std::string after_end = "a,b\n1,2\n3,4\n5,6\n\n7,8\nNote\nmore\n";
const std::string left_7 = "the table ends before line 7; 2 lines from line 7 on were left unread";
const std::string left_5 = "the table ends before line 5; 4 lines from line 5 on were left unread";

// Records longer than the detection sample's lines; rows that gain fields.
std::string quoted_records() {
  std::string text = "id,address,code\n";
  for (int i = 0; i < 1000; ++i) text += std::to_string(i) + ",\"" + std::to_string(i) + " Street\nTown\",X1\n";
  return text;
}
std::string ragged_records() {
  std::string text = "version,date,size\n";
  for (int i = 0; i < 30; ++i) {
    text += "1." + std::to_string(i) + ",2015-01-01," + std::to_string(i * 10) + (i >= 10 ? ",sha" : "") +
            (i >= 20 ? ",7" : "") + "\n";
  }
  return text;
}

const std::string zips = "zip,city\n08123,Camden\n02134,Boston\n";
const std::string dates = "when,amount\n28/01/2018,4000.00\n01/01/2006 00:15,+1\n";
const std::string held = "d,n,x\n28/01/2018,007,\n01/02/2018,+1,\n";
const std::string dt_int = R"(["datetime", "int32"])";

// A value after the detection sample that its guessed type does not fit.
const std::string misfit = [] {
  std::string text = "a,b\n";
  for (int i = 0; i < 1500; ++i) text += std::to_string(i) + "," + std::to_string(i * 2) + "\n";
  return text + "0&&&&&&&&,5\n";
}();
const std::string misfit_note =
    "zvtextparser: note: variable \"a\": 1 value did not convert to double (first at line 1502); ";
const std::string as_text = misfit_note + "written as text\n";
const std::string not_double = "line 1502, column 1 does not convert to double.\n";

std::string wide_record() {
  std::string wide = "x";
  for (int i = 0; i < 5000; ++i) wide += ",1";
  return wide + "\n";
}

// clang-format off
const process_case cases[] = {
    // The options and reader objects, and refused options. The count of
    // NAME VALUE arguments is checked before any pair is applied; a failed
    // pair leaves the earlier ones written and the later ones not.
    {{"options"}, "", 0,
     json(R"({"/options/num_header_lines": 18446744073709551615, "/options/whitespace": " \b\t"})")},
    {{"options", "DataLine", "3", "MultipleDelimsAsOne", "true", "VariableWidths", big_and_two}, "", 0,
     json(R"({"/options/num_header_lines": 2, "/options/consecutive_delim_rule": "Join",
              "/options/field_widths": [18446744073709551615, 2]})")},
    {{"options", "NumVariables", "3", "DataLine"}, "", 1,
     json(R"({"/error/key": "OddNumberNVPairs", "/error/arguments": [], "/options/num_variables": 0})"), any},
    {{"options", "NumVariables", "4", "DataLine", "3", "NumHeaderLines", "-1", "TrimNonNumeric", "true"}, "", 1,
     json(R"({"/error/key": "ExpectedNonNegativeScalarInt", "/options/num_variables": 4,
              "/options/num_header_lines": 2, "/options/trim_non_numeric": false})"), any},
    {{"options", "--", "--struct", "1"}, "", 1, json(R"({"/error/arguments": ["--struct"]})"), any},
    {{"options", "--struct", R"({"DataLine": 5, "foo": 1, "NumHeaderLines": 1, "TrimNonNumeric": true})"}, "", 0,
     json(R"({"/options/num_header_lines": 1, "/options/trim_non_numeric": true})")},
    // Enumerations go by their names; a rule names its flags when it refuses.
    {{"options", "FileType", "fixed", "MissingRule", "OMITROW", "ExtraColumnsRule", "wrap", "PartialFieldRule", "fill"},
     "", 0, json(R"({"/options/file_type": "FixedWidth", "/options/missing_rule": "OmitRow",
                     "/options/extra_columns_rule": "Wrap", "/options/partial_field_rule": "Fill"})")},
    {{"options", "ConsecutiveDelimitersRule", "q"}, "", 1,
     json(R"({"/error/key": "BadTextFlag", "/error/arguments": ["'split', 'join', 'error'\n"]})"), any},
    {{"reader", "line", "Delimiter", ",", "LineEnding", R"(["\n", "", "\u00e9x"])"}, "", 0,
     json(R"({"/reader": {"kind": "line", "stop_chars": [0, 10, 233], "reads_empty_lines": false}})")},
    {{"reader", "delimited", "Delimiter", R"([",", "\t"])"}, "", 0,
     json(R"({"/reader": {"kind": "delimited", "quote": 34, "stop_chars": [9, 10, 13, 44]}})")},
    // The sum of the widths wraps around.
    {{"reader", "fixedwidth", "VariableWidths", big_and_two}, "", 0,
     json(R"({"/reader": {"kind": "fixedwidth", "field_widths": [18446744073709551615, 2], "record_width": 1,
                          "stop_chars": [13, 10, 13]}})")},
    {{"reader", "delimited", "NumVariables", "2", "Delimiter"}, "", 1, json(R"({"/error/key": "OddNumberNVPairs"})"),
     any},
    {{"reader", "fixedwidth", "--struct", R"({"NumVariables": 2, "EmptyLineRule": "sometimes"})"}, "", 1,
     json(R"({"/options/num_variables": 2, "/error/key": "BadTextFlag"})"), any},
    // In CSV mode a refused option writes nothing to standard output.
    {{"read", "/nonexistent", "--format", "csv", "Delimiter", "7"}, "", 1, nothing,
     has("zvtextparser: ZORVEK:textio:textio:DelimiterType: ")},
    // detect's arguments: the kinds of file and reader first, then the rest
    // in the record's order, enumerations by their flags.
    {{"detect", "@", "Delimiter", ";", "EmptyLineRule", "read", "FileType", "delimitedtext"}, "a;b\n1;2\n", 0,
     json(R"({"/arguments": ["FileType", "\"delimitedtext\"", "Delimiter", "[\";\"]", "NumHeaderLines", "1",
              "NumVariables", "2", "VariableNamesLine", "1", "EmptyLineRule", "\"read\""]})")},

    // Usage errors; the reader's kind is checked before its options.
    {{"reader"}, "", 2, nothing, has("reader needs KIND (the reader to build: line, delimited or fixedwidth)")},
    {{"reader", "tabular", "DataLine", "0"}, "", 2, nothing, has("unknown reader kind 'tabular'")},
    {{"options", "--struct", "{\"NumVariables\": "}, "", 2, nothing, has("--struct")},
    {{"read", "/nonexistent", "--format", "xml"}, "", 2, nothing, has("unknown --format 'xml'")},
    {{"read", "-", "--max-memory", "lots"}, "", 2, nothing, has("--max-memory")},
    {{"read", "-", "--threads", "0"}, "", 2, nothing, has("--threads takes a count from 1 to 1024, not '0'")},
    {{"option"}, "", 2, nothing, has("unknown subcommand 'option'")},
    {{}, "", 2, nothing, has("a subcommand comes first")},
    {{"read", "@", "--select", "a,nope"}, table, 2, nothing,
     has("no variable 'nope'; its variables are 'a', 'b', 'c'")},
    {{"read", "@", "--rows", "x"}, table, 2, nothing, has("--rows takes a count")},
    {{"read", "@", "--objects", "--format", "csv"}, table, 2, nothing, has("--objects goes with --format jsonl")},
    {{"read", "@", "--sep", ";"}, table, 2, nothing, has("did you mean `Delimiter ';'`")},
    {{"read", "@", "--nrows", "5"}, table, 2, nothing, has("did you mean `--rows N`")},
    {{"read", "@", "--num-header-lines", "2"}, table, 2, nothing, has("did you mean `NumHeaderLines VALUE`")},

    // Formats, rows and columns as people ask for them.
    {{"read", "@", "--format", "tsv"}, table, 0, is("a\tb\tc\n1\tx\\ty\t3\n2\tq\\nr\t4\n5\tz\t6\n")},
    {{"read", "@", "--objects", "--rows", "1"}, table, 0, has("{\"a\": 1, \"b\": \"x\\ty\", \"c\": 3}\n")},
    {{"read", "@", "--select", "c,a", "--format", "csv"}, table, 0, is("c,a\r\n3,1\r\n4,2\r\n6,5\r\n")},
    {{"read", "@", "--select", "2", "--format", "csv", "--rows", "1"}, table, 0, is("b\r\nx\ty\r\n")},
    {{"read", "@", "--skip-rows", "1", "--rows", "1", "--format", "csv"}, table, 0, is("a,b,c\r\n2,\"q\nr\",4\r\n")},
    {{"read", "@", "--rows", "0", "--format", "csv"}, table, 0, is("a,b,c\r\n")},
    {{"read", "@", "--verbose", "--count"}, table, 0, is("{\"records\": 3, \"fields\": 9}\n"),
     has("zvtextparser: read on one thread\n")},

    // A reading error exits 4 with one line on standard error, after the
    // records before it.
    {{"read", "@", "--no-detect", "ConsecutiveDelimitersRule", "error", "--format", "csv"}, "1,2\n3,,4\n", 4,
     is("1,2\r\n"),
     is("zvtextparser: ZORVEK:textio:reader:ConsecutiveDelimiters: Consecutive delimiters at line 2, column 3.\n")},

    // Failed input or output exits 5 with the reason, the error line too.
    {{"read", "@"}, many_records(), 5, nothing, has(full), dev_full},
    {{"read", "@", "--format", "csv"}, many_records(), 5, nothing, has(full), dev_full},
    {{"read", "@", "--count"}, many_records(), 5, nothing, has(full), dev_full},
    {{"read", "@", "NumVariables", "2", "ExtraColumnsRule", "error"}, many_records(), 5, nothing, has(full), dev_full},
    {{"options"}, "", 5, nothing, has(full), dev_full},
    {{"--help"}, "", 5, nothing, has(full), dev_full},
    {{"read", "@"}, many_records(), 5, nothing,
     has("zvtextparser: cannot write to standard output: Bad file descriptor"), closed_stdout},
    {{"read", "/nonexistent/f.csv"}, "", 5, error_line,
     has("Cannot read '/nonexistent/f.csv': No such file or directory.")},
    {{"read", "/tmp"}, "", 5, error_line, has("Is a directory.")},
    {{"read", "-"}, "", 5, error_line, has("Cannot read 'standard input': Bad file descriptor."), closed_stdin},
    {{"read", "@", "-o", "/dev/full"}, table, 5, nothing, has("cannot write to /dev/full: No space left on device")},
    {{"read", "@", "-o", "/no/such/folder/x.csv"}, table, 5, nothing, has("/no/such/folder")},

    // A record of one missing value in CSV is an empty line: the advice is
    // EmptyLineRule read.
    {{"read", "@", "TreatAsMissing", "NA", "--format", "csv"}, "x\nNA\ny\n", 0, is("Var1\r\nx\r\n\r\ny\r\n"),
     has("EmptyLineRule read")},
    {{"read", "@", "TreatAsMissing", "NA", "NumVariables", "2", "--format", "csv"}, "x\nNA\ny\n", 0,
     is("Var1,Var2\r\nx,\r\n,\r\ny,\r\n"), any},

    // Past a detected end (--table-may-end) records with the table's field
    // count are read on; a given end (--table-end) holds. Lines left unread
    // are named, and fail the read under --strict after the records.
    {ending({"--table-may-end", "5"}), after_end, 0, is("a,b\r\n1,2\r\n3,4\r\n5,6\r\n7,8\r\n"), has(left_7)},
    {ending({"--table-may-end", "5", "--exact-scan"}), after_end, 0, is("a,b\r\n1,2\r\n3,4\r\n5,6\r\n7,8\r\n"),
     has(left_7)},
    {ending({"--table-may-end", "5", "--count"}), after_end, 0, is("{\"records\": 4, \"fields\": 8}\n"), has(left_7)},
    {ending({"--table-may-end", "5", "--strict"}), after_end, 4, is("a,b\r\n1,2\r\n3,4\r\n5,6\r\n7,8\r\n"),
     has(left_7)},
    {ending({"--table-end", "5"}), after_end, 0, is("a,b\r\n1,2\r\n3,4\r\n5,6\r\n"), has(left_5)},
    {ending({"--table-end", "5", "--strict", "--count"}), after_end, 4, is("{\"records\": 3, \"fields\": 6}\n"),
     has(left_5)},
    {ending({"--table-may-end", "5", "--all-lines", "--strict"}), after_end, 0,
     is("a,b\r\n1,2\r\n3,4\r\n5,6\r\n7,8\r\nNote,\r\nmore,\r\n")},

    // Detection keeps every record: of records longer than the sample's
    // lines, of rows that gain fields, of a list with comments.
    {{"read", "@", "--count", "--strict"}, quoted_records(), 0, starts("{\"records\": 1000,")},
    {{"read", "@", "--count", "--strict"}, ragged_records(), 0, starts("{\"records\": 30,")},
    {{"read", ZVTP_DETECT_CORPUS "/netbase__services", "--count", "--strict"}, "", 0, starts("{\"records\": 125,")},

    // Bytes that no text encoding explains end in NotText before any output;
    // a given encoding reads them as they stand. Empty and blank inputs are
    // an empty table, said on standard error.
    {{"read", "@"}, "\x7F" "ELF\x02\x01\x01\0\0\0"s, 4, error_line,
     has("zvtextparser: ZORVEK:textio:reader:NotText: The input is not text: the byte at offset 0 ")},
    {{"read", "@", "--format", "csv"}, "a,b\n\x1F\x8B\x08\0\0\0\0\0\0\x03"s, 4, nothing,
     has("at offset 4 is a control")},
    {{"read", "@"}, "a,b\n1,\x01\x02\n2,\x03\x04\n"s, 4, error_line, has("at offset 6 is a control")},
    {{"read", "@", "--encoding", "ISO-8859-1", "--format", "csv"}, "a,b\n1,x\0\0y\n"s, 0,
     is("a,b\r\n1,x\0\0y\r\n"s), any},
    {{"read", "@", "--format", "csv"}, "a,b\n1,x\0y\n"s, 0, is("a,b\r\n1,x\0y\r\n"s), any},
    {{"read", "@", "--format", "csv"}, "a,b\n1,\x1B[1mx\n" + std::string(200, 'z') + ",2\n", 0, starts("a,b\r\n"), any},
    {{"read", "@"}, "", 0, is(empty_table), is("zvtextparser: note: empty input\n")},
    {{"read", "@", "--format", "csv"}, "\n \r\n\t\n", 0, nothing, is("zvtextparser: note: empty input\n")},
    {{"read", "@", "--no-detect"}, "", 0, is(empty_table), has("empty input")},

    // Typed values from standard input, detected or given with --types: by
    // default each value's text as read (CSV) or, for a number whose text is
    // a JSON number, in JSON; --canonical writes the shortest numbers and
    // ISO 8601 datetimes.
    {{"read", "-", "--format", "csv"}, zips, 0, is("zip,city\r\n08123,Camden\r\n02134,Boston\r\n"), any},
    {{"read", "-"}, zips, 0, ends("\n[\"08123\", \"Camden\"]\n[\"02134\", \"Boston\"]\n"), any},
    {{"read", "-"}, "n,m\n5,0.5\n-01,-0\n", 0, ends("\n[\"5\", 0.5]\n[\"-01\", -0]\n"), any},
    {typed({"--types", R"(["double"])", "--format", "csv"}), zips, 0,
     is("zip,city\r\n08123,Camden\r\n02134,Boston\r\n")},
    {typed({"--types", R"(["int32"])"}), zips, 0, ends("\n[8123, \"Camden\"]\n[2134, \"Boston\"]\n")},
    {{"read", "-", "--format", "csv"}, dates, 0,
     is("when,amount\r\n28/01/2018,4000.00\r\n01/01/2006 00:15,+1\r\n"), any},
    {{"read", "-", "--format", "csv", "--canonical"}, dates, 0,
     is("when,amount\r\n2018-01-28,4000\r\n2006-01-01T00:15:00,1\r\n"), any},
    {{"read", "-"}, dates, 0, ends("\n[\"2018-01-28\", 4000.00]\n[\"2006-01-01T00:15:00\", 1]\n"), any},
    {{"read", "-", "--canonical"}, dates, 0, ends("\n[\"2018-01-28\", 4000]\n[\"2006-01-01T00:15:00\", 1]\n"), any},
    {{"read", "-", "DecimalSeparator", ",", "--format", "csv"}, "a;b\n1,5;x\n2,25;y\n", 0,
     is("a,b\r\n\"1,5\",x\r\n\"2,25\",y\r\n"), any},
    // Held for OmitVar (x is all missing), and read in UTF-16 units (which a
    // non-ASCII whitespace asks for).
    {typed({"--types", dt_int, "MissingRule", "omitvar", "--format", "csv"}), held, 0,
     is("d,n\r\n28/01/2018,007\r\n01/02/2018,+1\r\n")},
    {typed({"--types", dt_int, "Whitespace", "\u3000", "--format", "csv"}), held, 0,
     is("d,n,x\r\n28/01/2018,007,\r\n01/02/2018,+1,\r\n")},
    {typed({"--types", dt_int, "Whitespace", "\u3000", "MissingRule", "omitvar", "--format", "csv"}), held, 0,
     is("d,n\r\n28/01/2018,007\r\n01/02/2018,+1\r\n")},
    {typed({"--types", R"(["double"])", "Whitespace", "\u3000"}), "n\n4000.00\n+1\n", 0, ends("\n[4000.00]\n[1]\n")},
    {typed({"--types", R"(["double"])", "--format", "csv"}), "n\n\"7.50\"\n  8.0  \n", 0, is("n\r\n7.50\r\n8.0\r\n")},

    // A value that does not convert is never lost silently: kept as its text
    // when its type was guessed, under ImportErrorRule when given; a note
    // ends standard error; --strict makes it a reading error.
    {{"read", "@", "--format", "csv"}, misfit, 0, ends("\n0&&&&&&&&,5\r\n"), ends(as_text)},
    {{"read", "@", "--format", "csv", "--threads", "2"}, misfit, 0, ends("\n0&&&&&&&&,5\r\n"), ends(as_text)},
    {{"read", "@", "--format", "csv", "--canonical"}, misfit, 0, ends("\n0&&&&&&&&,5\r\n"), ends(as_text)},
    {{"read", "@", "--format", "csv", "--exact-scan"}, misfit, 0, ends("\n0&&&&&&&&,5\r\n"), ends(as_text)},
    {{"read", "@"}, misfit, 0, ends("\n[\"0&&&&&&&&\", 5]\n"), ends(as_text)},
    {{"read", "@", "--types", R"(["double"])", "--format", "csv"}, misfit, 0, ends("\n,5\r\n"),
     ends(misfit_note + "ImportErrorRule fill made it missing\n")},
    {{"read", "@", "--types", R"(["double"])", "ImportErrorRule", "omitrow", "--format", "csv"}, misfit, 0,
     ends("\n1499,2998\r\n"), ends(misfit_note + "ImportErrorRule omitrow left out its record\n")},
    {{"read", "@", "--strict", "--format", "csv"}, misfit, 4, ends("\n1499,2998\r\n"), ends(not_double)},
    {{"read", "@", "--strict", "--types", R"(["double"])"}, misfit, 4, has("\n{\"error\""), ends(not_double)},
    // A record long enough to go out in parts, under a rule that may drop it,
    // is checked first and then written: its value is counted once.
    {{"read", "@", "--no-detect", "OutputBuilderType", "table", "MissingRule", "omitrow", "--types", R"(["double"])",
      "--format", "csv"}, wide_record(), 0, starts(",1,1,"),
     ends("variable 1: 1 value did not convert to double (first at line 1); ImportErrorRule fill made it missing\n")},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Rows, Process, ::testing::ValuesIn(cases));

// -o writes the whole output under its name or, after a failure, nothing
// there at all.
TEST(CommandLine, OutputFileIsWholeOrAbsent) {
  const std::string folder = std::filesystem::path(import_test::write_file("")).parent_path();
  const std::string out = folder + "/out.csv";
  std::filesystem::remove(out);
  const auto ok = run_tool({"read", import_test::write_file(table), "-o", out, "--format", "csv"});
  EXPECT_EQ(ok.status, 0) << ok.err;
  EXPECT_EQ(ok.out, "");
  std::ifstream written(out, std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(written), {}), "a,b,c\r\n1,x\ty,3\r\n2,\"q\nr\",4\r\n5,z,6\r\n");

  const std::string failed = folder + "/failed.csv";
  std::filesystem::remove(failed);
  const auto bad = run_tool({"read", import_test::write_file("a,b\n1,2\n3,\"open\n"), "--quote", "\"", "--output",
                             failed, "--format", "csv"});
  EXPECT_EQ(bad.status, 4);
  EXPECT_FALSE(std::filesystem::exists(failed));
  for (const auto& entry : std::filesystem::directory_iterator(folder)) {
    EXPECT_EQ(entry.path().filename().string().find(".failed.csv."), std::string::npos) << "left behind";
  }
}

// --rows stops reading: of an endless-looking input on standard input only
// the first blocks are taken before the tool exits.
TEST(CommandLine, RowsStopReadingEarly) {
  int pipe_fds[2];
  ASSERT_EQ(::pipe(pipe_fds), 0);
  ::signal(SIGPIPE, SIG_IGN);
  std::uint64_t written = 0;
  std::thread feeder([&] {
    std::string block = "id,value\n";
    for (int i = 0; block.size() < (std::size_t{1} << 16); ++i) block += std::to_string(i) + ",x\n";
    while (written < (std::uint64_t{1} << 30)) {
      const ssize_t n = ::write(pipe_fds[1], block.data(), block.size());
      if (n <= 0) break;
      written += static_cast<std::uint64_t>(n);
      block = "7,y\n7,y\n7,y\n7,y\n";
      block.resize(std::size_t{1} << 16, '\n');
    }
    ::close(pipe_fds[1]);
  });
  tool_setup setup;
  setup.stdin_fd = pipe_fds[0];
  const auto run = run_tool({"read", "-", "--rows", "3", "--format", "csv"}, setup);
  ::close(pipe_fds[0]);
  feeder.join();
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "id,value\r\n0,x\r\n1,x\r\n2,x\r\n");
  EXPECT_LT(written, std::uint64_t{16} << 20);
}

TEST(CommandLine, ShowAlignsTheFirstRows) {
  const std::string file = import_test::write_file("name,amount\nalpha,1.5\nbeta,10\nthe longest name of all,7\n");
  const auto run = run_tool({"show", file, "--rows", "2"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.out.find("UTF-8, delimiter ',', 1 header line, 2 variables"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("\nname    amount\nstring  double\nalpha      1.5\nbeta        10\n"), std::string::npos)
      << run.out;
  EXPECT_EQ(run.out.find("longest"), std::string::npos) << run.out;
}

}  // namespace
