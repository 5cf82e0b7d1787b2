// zvtextparser read run as a process, for what only a process shows: exit
// statuses and standard error, failed writes, closed pipes and the memory
// limit; and a file that changes while it is read.
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "import/read_helpers.hpp"
#include "support/run_tool.hpp"
#include "tools/read_command.hpp"
#include "tools/subcommands.hpp"

namespace {

using test_support::run_tool;
using test_support::tool_setup;

// Six thousand records of "1,2,3": far more output than a pipe holds.
std::string many_records(int times = 1) {
  std::string text;
  for (int i = 0; i < 6000 * times; ++i) text += "1,2,3\n";
  return text;
}

TEST(ReadProcess, ReadingErrorExitsFourWithOneLineOnStandardError) {
  const std::string path = import_test::write_file("1,2\n3,,4\n");
  const auto run = run_tool({"read", path, "--no-detect", "ConsecutiveDelimitersRule", "error", "--format", "csv"});
  EXPECT_EQ(run.status, 4);
  EXPECT_EQ(run.out, "1,2\r\n");
  EXPECT_TRUE(run.err.starts_with("zvtextparser: ZORVEK:textio:reader:ConsecutiveDelimiters: ")) << run.err;
  EXPECT_NE(run.err.find("line 2, column 3"), std::string::npos) << run.err;
}

TEST(ReadProcess, FailedInputOrOutputExitsFiveWithTheReason) {
  const std::string path = import_test::write_file(many_records());
  tool_setup dev_full;
  dev_full.stdout_path = "/dev/full";
  tool_setup closed_out;
  closed_out.close_stdout = true;
  tool_setup closed_in;
  closed_in.close_stdin = true;
  const tool_setup plain;
  const std::string full = "zvtextparser: cannot write to standard output: No space left on device";
  const struct {
    std::vector<std::string> args;
    tool_setup setup;
    std::string err_has;
  } cases[] = {
      {{"read", path}, dev_full, full},
      {{"read", path, "--format", "csv"}, dev_full, full},
      {{"read", path, "--count"}, dev_full, full},
      {{"read", path, "NumVariables", "2", "ExtraColumnsRule", "error"}, dev_full, full},  // the error line
      {{"options"}, dev_full, full},
      {{"--help"}, dev_full, full},
      {{"read", path}, closed_out, "zvtextparser: cannot write to standard output: Bad file descriptor"},
      {{"read", "/nonexistent/f.csv"}, plain, "Cannot read '/nonexistent/f.csv': No such file or directory."},
      {{"read", ::testing::TempDir()}, plain, "Is a directory."},
      {{"read", "-"}, closed_in, "Cannot read 'standard input': Bad file descriptor."},
  };
  for (const auto& c : cases) {
    const auto run = run_tool(c.args, c.setup);
    EXPECT_EQ(run.status, 5) << c.args[0] << ": " << run.err;
    EXPECT_NE(run.err.find(c.err_has), std::string::npos) << c.args.back() << ": " << run.err;
  }
}

// Standard input is a pipe that stays open after the records, so a tool that
// went on reading after its output's reader left would wait for ever (and be
// killed at the timeout).
TEST(ReadProcess, ClosedPipeEndsQuietlyAndAtOnceWhateverSigpipeDoes) {
  const std::string text = many_records(70);  // 2.5 MB: more than the reader's first block
  for (const bool ignored : {false, true}) {
    int in[2];
    int out[2];
    ASSERT_EQ(::pipe(in), 0);
    ASSERT_EQ(::pipe(out), 0);
    ::close(out[0]);
    ::fcntl(in[1], F_SETFL, O_NONBLOCK);
    std::atomic<bool> finished{false};
    std::thread feeder([&] {
      for (std::size_t sent = 0; !finished;) {
        const ssize_t wrote = sent < text.size() ? ::write(in[1], text.data() + sent, text.size() - sent) : -1;
        if (wrote > 0) {
          sent += static_cast<std::size_t>(wrote);
        } else {
          ::usleep(1000);
        }
      }
    });
    tool_setup setup;
    setup.stdin_fd = in[0];
    setup.stdout_fd = out[1];
    setup.ignore_sigpipe = ignored;
    setup.timeout_seconds = 20;
    const auto run = run_tool({"read", "-"}, setup);
    finished = true;
    feeder.join();
    for (const int fd : {in[0], in[1], out[1]}) ::close(fd);
    EXPECT_EQ(run.status, 141) << "SIGPIPE ignored: " << ignored << "; " << run.err;
    EXPECT_EQ(run.err, "") << "SIGPIPE ignored: " << ignored;
  }
}

// An output that changes the file being read at its first write, as another
// program might while the records are written. In process: the warning and
// the status are the tool's result, which main only prints.
class changing_output : public std::stringbuf {
 public:
  explicit changing_output(std::function<void()> change) : change_(std::move(change)) {}

 protected:
  std::streamsize xsputn(const char* s, std::streamsize n) override { return once(), std::stringbuf::xsputn(s, n); }
  int_type overflow(int_type c) override { return once(), std::stringbuf::overflow(c); }

 private:
  void once() {
    if (change_) std::exchange(change_, nullptr)();
  }
  std::function<void()> change_;
};

TEST(ReadChangedFile, IsReportedAndFailsWithStrict) {
  for (const bool strict : {true, false}) {
    const std::string path = import_test::write_file(many_records(40));  // about 1.4 MB
    changing_output buffer([&] {
      if (strict) {
        ASSERT_EQ(::truncate(path.c_str(), 100), 0);
      } else {
        std::ofstream(path, std::ios::app) << "4,5,6\n";
      }
    });
    std::ostream out(&buffer);
    std::vector<std::string> args{path};
    if (strict) args.emplace_back("--strict");
    const auto result = zvtool::run_read(zvtool::parse_subcommand_arguments("read", args), out);
    EXPECT_EQ(result.status, strict ? 5 : 0) << result.err;
    EXPECT_NE(result.err.find("zvtextparser: warning: '" + path + "' changed while it was read"), std::string::npos)
        << result.err;
  }
}

TEST(ReadProcess, CsvWithARecordOfOneMissingValueAdvisesEmptyLineRuleRead) {
  const std::string path = import_test::write_file("x\nNA\ny\n");
  const auto lone = run_tool({"read", path, "TreatAsMissing", "NA", "--format", "csv"});
  EXPECT_EQ(lone.out, "Var1\r\nx\r\n\r\ny\r\n");
  EXPECT_NE(lone.err.find("EmptyLineRule read"), std::string::npos) << lone.err;
  const auto two = run_tool({"read", path, "TreatAsMissing", "NA", "NumVariables", "2", "--format", "csv"});
  EXPECT_EQ(two.out, "Var1,Var2\r\nx,\r\n,\r\ny,\r\n");
  EXPECT_EQ(two.err.find("EmptyLineRule"), std::string::npos) << two.err;
}

// Past a detected end (--table-may-end, as detect gives it) records with the
// table's field count are read on, skipped blank lines too; a given end
// (--table-end) holds. Lines left unread are named on standard error and
// fail the read under --strict, after the records.
TEST(ReadProcess, LinesAfterTheTableEnd) {
  const std::string path = import_test::write_file("a,b\n1,2\n3,4\n5,6\n\n7,8\nNote\nmore\n");
  const std::string left_7 = "the table ends before line 7; 2 lines from line 7 on were left unread";
  const std::string left_5 = "the table ends before line 5; 4 lines from line 5 on were left unread";
  const struct {
    std::vector<std::string> args;
    int status;
    std::string out;
    std::string err_has;
  } cases[] = {
      {{"--table-may-end", "5"}, 0, "a,b\r\n1,2\r\n3,4\r\n5,6\r\n7,8\r\n", left_7},
      {{"--table-may-end", "5", "--exact-scan"}, 0, "a,b\r\n1,2\r\n3,4\r\n5,6\r\n7,8\r\n", left_7},
      {{"--table-may-end", "5", "--count"}, 0, "{\"records\": 4, \"fields\": 8}\n", left_7},
      {{"--table-may-end", "5", "--strict"}, 4, "a,b\r\n1,2\r\n3,4\r\n5,6\r\n7,8\r\n", left_7},
      {{"--table-end", "5"}, 0, "a,b\r\n1,2\r\n3,4\r\n5,6\r\n", left_5},
      {{"--table-end", "5", "--strict", "--count"}, 4, "{\"records\": 3, \"fields\": 6}\n", left_5},
      {{"--table-may-end", "5", "--all-lines", "--strict"},
       0,
       "a,b\r\n1,2\r\n3,4\r\n5,6\r\n7,8\r\nNote,\r\nmore,\r\n",
       ""},
  };
  for (const auto& c : cases) {
    std::vector<std::string> args{"read", path,       "--no-detect", "VariableNamesLine", "1", "NumHeaderLines",
                                  "1",    "--format", "csv"};
    args.insert(args.end(), c.args.begin(), c.args.end());
    const auto run = run_tool(args);
    const std::string name = c.args[0] + " " + c.args.back();
    EXPECT_EQ(run.status, c.status) << name << ": " << run.err;
    EXPECT_EQ(run.out, c.out) << name;
    if (c.err_has.empty()) {
      EXPECT_EQ(run.err, "") << name;
    } else {
      EXPECT_NE(run.err.find(c.err_has), std::string::npos) << name << ": " << run.err;
    }
  }
}

// Detection keeps every record of a table whose records are longer than the
// sample's lines, of one whose rows gain fields, and of a list with comments.
TEST(ReadProcess, DetectionReadsEveryRecord) {
  std::string quoted = "id,address,code\n";
  for (int i = 0; i < 1000; ++i) quoted += std::to_string(i) + ",\"" + std::to_string(i) + " Street\nTown\",X1\n";
  std::string ragged = "version,date,size\n";
  for (int i = 0; i < 30; ++i) {
    ragged += "1." + std::to_string(i) + ",2015-01-01," + std::to_string(i * 10) + (i >= 10 ? ",sha" : "") +
              (i >= 20 ? ",7" : "") + "\n";
  }
  const std::string services = std::string(ZVTP_DETECT_CORPUS) + "/netbase__services";
  for (const auto& [path, records] : {std::pair<std::string, std::string>{import_test::write_file(quoted), "1000"},
                                      {import_test::write_file(ragged), "30"},
                                      {services, "125"}}) {
    const auto run = run_tool({"read", path, "--count", "--strict"});
    EXPECT_EQ(run.status, 0) << path << ": " << run.err;
    EXPECT_TRUE(run.out.starts_with("{\"records\": " + records + ",")) << path << ": " << run.out;
  }
}

// Bytes that no text encoding explains end in NotText with the offset of the
// first telling byte, before any output; a given encoding reads them as they
// stand. Empty and blank inputs are an empty table, said on standard error.
TEST(ReadProcess, RefusesWhatIsNotTextAndSaysWhenInputIsEmpty) {
  using namespace std::string_literals;
  const std::string not_text = "zvtextparser: ZORVEK:textio:reader:NotText: ";
  const struct {
    std::string input;
    std::vector<std::string> extra;
    int status;
    std::string out;
    std::string err_has;
  } cases[] = {
      {"\x7F"
       "ELF\x02\x01\x01\0\0\0"s,
       {},
       4,
       "",
       not_text + "The input is not text: the byte at offset 0 "},
      {"a,b\n\x1F\x8B\x08\0\0\0\0\0\0\x03"s, {"--format", "csv"}, 4, "", "at offset 4 is a control"},
      {"a,b\n1,\x01\x02\n2,\x03\x04\n"s, {}, 4, "", "at offset 6 is a control"},
      {"a,b\n1,x\0\0y\n"s, {"--encoding", "ISO-8859-1", "--format", "csv"}, 0, "a,b\r\n1,x\0\0y\r\n"s, ""},
      {"a,b\n1,x\0y\n"s, {"--format", "csv"}, 0, "a,b\r\n1,x\0y\r\n"s, ""},
      {"a,b\n1,\x1B[1mx\n" + std::string(200, 'z') + ",2\n", {"--format", "csv"}, 0, "", ""},
      {"", {}, 0, "{\"variables\": [], \"units\": [], \"descriptions\": []}\n", "zvtextparser: note: empty input\n"},
      {"\n \r\n\t\n", {"--format", "csv"}, 0, "", "zvtextparser: note: empty input\n"},
      {"", {"--no-detect"}, 0, "{\"variables\": [], \"units\": [], \"descriptions\": []}\n", "empty input"},
  };
  for (const auto& c : cases) {
    std::vector<std::string> args = {"read", import_test::write_file(c.input)};
    args.insert(args.end(), c.extra.begin(), c.extra.end());
    const auto run = run_tool(args);
    EXPECT_EQ(run.status, c.status) << c.input << run.err;
    if (c.status != 0) {
      EXPECT_EQ(run.out.find("{\"variables\""), std::string::npos) << run.out;
    } else if (!c.out.empty()) {
      EXPECT_EQ(run.out, c.out) << c.input;
    }
    if (c.err_has.empty()) {
      EXPECT_EQ(run.err.find("NotText"), std::string::npos) << run.err;
      EXPECT_EQ(run.err.find("empty input"), std::string::npos) << run.err;
    } else {
      EXPECT_NE(run.err.find(c.err_has), std::string::npos) << c.input << "\n" << run.err;
    }
  }
}

// What read writes for typed values, detected from standard input or given
// with --types: by default each value's text as read (CSV) or, for a
// number whose text is a JSON number, in JSON; --canonical writes the
// shortest numbers and ISO 8601 datetimes.
TEST(ReadProcess, TypedValuesAreWrittenAsRead) {
  const std::string zips = "zip,city\n08123,Camden\n02134,Boston\n";
  const std::string dates = "when,amount\n28/01/2018,4000.00\n01/01/2006 00:15,+1\n";
  const std::string commas = "a;b\n1,5;x\n2,25;y\n";
  const std::string held = "d,n,x\n28/01/2018,007,\n01/02/2018,+1,\n";
  const std::string types = R"(["datetime", "int32"])";
  const std::vector<std::string> typed = {"--no-detect", "NumHeaderLines",    "1",    "VariableNamesLine",
                                          "1",           "OutputBuilderType", "table"};
  const auto with = [](std::vector<std::string> args, const std::vector<std::string>& more) {
    args.insert(args.end(), more.begin(), more.end());
    return args;
  };
  const struct {
    const char* name;
    std::string input;
    std::vector<std::string> args;
    std::string out;  // the records, after the header line in JSON lines
  } cases[] = {
      {"leading zeros", zips, {"--format", "csv"}, "zip,city\r\n08123,Camden\r\n02134,Boston\r\n"},
      {"leading zeros detected as text", zips, {}, "[\"08123\", \"Camden\"]\n[\"02134\", \"Boston\"]\n"},
      {"negative leading zero detected as text", "n,m\n5,0.5\n-01,-0\n", {}, "[\"5\", 0.5]\n[\"-01\", -0]\n"},
      {"leading zeros typed double", zips, with(typed, {"--types", R"(["double"])", "--format", "csv"}),
       "zip,city\r\n08123,Camden\r\n02134,Boston\r\n"},
      {"leading zeros typed int32 in json", zips, with(typed, {"--types", R"(["int32"])"}),
       "[8123, \"Camden\"]\n[2134, \"Boston\"]\n"},
      {"dates and decimals",
       dates,
       {"--format", "csv"},
       "when,amount\r\n28/01/2018,4000.00\r\n01/01/2006 00:15,+1\r\n"},
      {"dates and decimals canonical",
       dates,
       {"--format", "csv", "--canonical"},
       "when,amount\r\n2018-01-28,4000\r\n2006-01-01T00:15:00,1\r\n"},
      {"json numbers", dates, {}, "[\"2018-01-28\", 4000.00]\n[\"2006-01-01T00:15:00\", 1]\n"},
      {"json numbers canonical", dates, {"--canonical"}, "[\"2018-01-28\", 4000]\n[\"2006-01-01T00:15:00\", 1]\n"},
      {"decimal comma quoted",
       commas,
       {"DecimalSeparator", ",", "--format", "csv"},
       "a,b\r\n\"1,5\",x\r\n\"2,25\",y\r\n"},
      // Held for OmitVar (x is all missing), and read in UTF-16 units (which
      // a non-ASCII whitespace asks for).
      {"held rows", held, with(typed, {"--types", types, "MissingRule", "omitvar", "--format", "csv"}),
       "d,n\r\n28/01/2018,007\r\n01/02/2018,+1\r\n"},
      {"utf-16 units", held, with(typed, {"--types", types, "Whitespace", "\u3000", "--format", "csv"}),
       "d,n,x\r\n28/01/2018,007,\r\n01/02/2018,+1,\r\n"},
      {"utf-16 units held", held,
       with(typed, {"--types", types, "Whitespace", "\u3000", "MissingRule", "omitvar", "--format", "csv"}),
       "d,n\r\n28/01/2018,007\r\n01/02/2018,+1\r\n"},
      {"utf-16 units in json", "n\n4000.00\n+1\n", with(typed, {"--types", R"(["double"])", "Whitespace", "\u3000"}),
       "[4000.00]\n[1]\n"},
      {"unquoted and trimmed", "n\n\"7.50\"\n  8.0  \n", with(typed, {"--types", R"(["double"])", "--format", "csv"}),
       "n\r\n7.50\r\n8.0\r\n"},
  };
  for (const auto& c : cases) {
    const int fd = ::open(import_test::write_file(c.input).c_str(), O_RDONLY);
    ASSERT_GE(fd, 0);
    tool_setup setup;
    setup.stdin_fd = fd;
    std::vector<std::string> args = {"read", "-"};
    args.insert(args.end(), c.args.begin(), c.args.end());
    const auto run = run_tool(args, setup);
    ::close(fd);
    EXPECT_EQ(run.status, 0) << c.name << ": " << run.err;
    const bool csv = run.out.find('\r') != std::string::npos;
    EXPECT_EQ(csv ? run.out : run.out.substr(run.out.find('\n') + 1), c.out) << c.name;
  }
}

// A value after the detection sample that its guessed type does not fit is
// kept as its text; under a type the user gave, ImportErrorRule applies.
// Either way a note ends standard error; --strict makes it a reading error.
TEST(ReadProcess, ValuesThatDoNotConvertAreNeverLostSilently) {
  std::string text = "a,b\n";
  for (int i = 0; i < 1500; ++i) text += std::to_string(i) + "," + std::to_string(i * 2) + "\n";
  const std::string path = import_test::write_file(text + "0&&&&&&&&,5\n");
  const std::string note =
      "zvtextparser: note: variable \"a\": 1 value did not convert to double (first at line 1502); ";
  const struct {
    std::vector<std::string> args;
    std::string last;     // the last line written
    std::string err_end;  // how standard error ends
    int status = 0;
  } cases[] = {
      {{"--format", "csv"}, "0&&&&&&&&,5\r\n", note + "written as text\n"},
      {{"--format", "csv", "--threads", "2"}, "0&&&&&&&&,5\r\n", note + "written as text\n"},
      {{"--format", "csv", "--canonical"}, "0&&&&&&&&,5\r\n", note + "written as text\n"},
      {{"--format", "csv", "--exact-scan"}, "0&&&&&&&&,5\r\n", note + "written as text\n"},
      {{}, "[\"0&&&&&&&&\", 5]\n", note + "written as text\n"},
      {{"--types", R"(["double"])", "--format", "csv"}, ",5\r\n", note + "ImportErrorRule fill made it missing\n"},
      {{"--types", R"(["double"])", "ImportErrorRule", "omitrow", "--format", "csv"},
       "1499,2998\r\n",
       note + "ImportErrorRule omitrow left out its record\n"},
      {{"--strict", "--format", "csv"}, "1499,2998\r\n", "line 1502, column 1 does not convert to double.\n", 4},
      {{"--strict", "--types", R"(["double"])"}, "{\"error\"", "line 1502, column 1 does not convert to double.\n", 4},
  };
  for (const auto& c : cases) {
    std::vector<std::string> args = {"read", path};
    args.insert(args.end(), c.args.begin(), c.args.end());
    const auto run = run_tool(args);
    const std::string named = args.back();
    EXPECT_EQ(run.status, c.status) << named << ": " << run.err;
    const std::size_t last = run.out.rfind('\n', run.out.size() - 2);
    EXPECT_TRUE(run.out.substr(last + 1).starts_with(c.last)) << named << ": " << run.out.substr(last + 1);
    EXPECT_TRUE(run.err.ends_with(c.err_end)) << named << ": " << run.err;
  }
  // A record long enough to go out in parts, under a rule that may drop it,
  // is checked first and then written: its value is counted once.
  std::string wide = "x";
  for (int i = 0; i < 5000; ++i) wide += ",1";
  const auto run = run_tool({"read", import_test::write_file(wide + "\n"), "--no-detect", "OutputBuilderType", "table",
                             "MissingRule", "omitrow", "--types", R"(["double"])", "--format", "csv"});
  EXPECT_TRUE(run.out.starts_with(",1,1,")) << run.out.substr(0, 20);
  EXPECT_TRUE(
      run.err.ends_with("variable 1: 1 value did not convert to double (first at line 1); ImportErrorRule fill "
                        "made it missing\n"))
      << run.err;
}

#if defined(__SANITIZE_ADDRESS__)
constexpr bool address_sanitizer = true;
#elif defined(__has_feature)
constexpr bool address_sanitizer = __has_feature(address_sanitizer);
#else
constexpr bool address_sanitizer = false;
#endif

// Under a 160 MiB limit: padding up to a large variable count costs nothing
// per variable, while a record of three million fields needs more and ends
// in a reading error that names its line.
TEST(ReadProcess, MemoryLimitBoundsTheReader) {
  if (address_sanitizer) GTEST_SKIP() << "the limit is off under AddressSanitizer";
  const auto padded = run_tool({"read", import_test::write_file("a\n"), "--no-detect", "NumVariables", "3000000",
                                "--max-memory", "160M", "--format", "csv"});
  EXPECT_EQ(padded.status, 0) << padded.err;
  EXPECT_EQ(padded.out.size(), 3000002u);
  std::string wide = "x\n";
  for (int i = 0; i < 3000000; ++i) wide += "1,";
  const auto run = run_tool({"read", import_test::write_file(wide), "--no-detect", "--max-memory", "160M", "--count",
                             "MissingRule", "omitrow"});
  EXPECT_EQ(run.status, 4);
  EXPECT_NE(run.err.find("OutOfMemory: Out of memory reading the record at line 2"), std::string::npos) << run.err;
  EXPECT_NE(run.err.find("the memory limit was 160.0 MiB (--max-memory)"), std::string::npos) << run.err;
}

}  // namespace
