// zvtextparser read run as a process: exit status, standard output and
// standard error.
#include <fcntl.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "import/read_helpers.hpp"
#include "support/run_tool.hpp"

namespace {

using test_support::run_tool;

TEST(ReadProcess, ReadsAFile) {
  const std::string path = import_test::write_file("a,b\n1,\"x\"\"y\"\n");
  const auto run = run_tool({"read", path, "--no-detect", "NumHeaderLines", "1", "VariableNamesLine", "1"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(
      run.out,
      "{\"variables\": [\"a\", \"b\"], \"units\": [], \"descriptions\": [], \"types\": [\"double\", \"string\"]}\n"
      "[1, \"x\\\"y\"]\n");
  EXPECT_EQ(run.err, "");
}

TEST(ReadProcess, ReadingErrorExitsFourWithTheMessage) {
  const std::string path = import_test::write_file("1,2\n3,,4\n");
  const auto run = run_tool({"read", path, "--no-detect", "ConsecutiveDelimitersRule", "error", "--format", "csv"});
  EXPECT_EQ(run.status, 4);
  EXPECT_EQ(run.out, "1,2\r\n");
  EXPECT_TRUE(run.err.starts_with("zvtextparser: ZORVEK:textio:reader:ConsecutiveDelimiters: ")) << run.err;
  EXPECT_NE(run.err.find("line 2, column 3"), std::string::npos) << run.err;
}

TEST(ReadProcess, StructGivesTheOptions) {
  const std::string path = import_test::write_file("a;b\n");
  const auto run = run_tool({"read", "--no-detect", "--struct", R"({"Delimiter": ";", "VariableNamesLine": 1})", path});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(
      run.out,
      "{\"variables\": [\"a\", \"b\"], \"units\": [], \"descriptions\": [], \"types\": [\"string\", \"string\"]}\n");
}

TEST(ReadProcess, UsageErrors) {
  const std::string path = import_test::write_file("1");
  EXPECT_EQ(run_tool({"read"}).status, 2);
  EXPECT_EQ(run_tool({"read", path, "--format", "xml"}).status, 2);
  EXPECT_EQ(run_tool({"read", path, "--format"}).status, 2);
  EXPECT_EQ(run_tool({"read", path, "--struct", "{}", "Delimiter", ","}).status, 2);
}

TEST(ReadProcess, CountAndCsvOptions) {
  const std::string path = import_test::write_file("a b\nc\n");
  EXPECT_EQ(run_tool({"read", path, "--no-detect", "--count", "ParserType", "tabular"}).out,
            "{\"records\": 2, \"fields\": 4}\n");
  EXPECT_EQ(run_tool({"read", path, "--no-detect", "--format=csv", "Delimiter", " "}).out, "a,b\r\nc,\r\n");
}

namespace faults {

using test_support::tool_setup;

// Six thousand records of "1,2,3": far more output than a pipe holds.
std::string many_records() {
  std::string text;
  for (int i = 0; i < 6000; ++i) text += "1,2,3\n";
  return text;
}

struct output_fault {
  const char* name;
  std::vector<std::string> args;  // "FILE" stands for a small file
  tool_setup setup;
  int status;
  std::string err_has;
};

TEST(ReadProcess, FailedWritesEndTheToolWithTheOutputAndTheReason) {
  const std::string path = import_test::write_file(many_records());
  const std::string full = "No space left on device";
  tool_setup dev_full;
  dev_full.stdout_path = "/dev/full";
  tool_setup closed;
  closed.close_stdout = true;
  const output_fault cases[] = {
      {"jsonl", {"read", "FILE"}, dev_full, 5, full},
      {"csv", {"read", "FILE", "--format", "csv"}, dev_full, 5, full},
      {"count", {"read", "FILE", "--count"}, dev_full, 5, full},
      {"reading_error_line", {"read", "FILE", "NumVariables", "2", "ExtraColumnsRule", "error"}, dev_full, 5, full},
      {"options", {"options"}, dev_full, 5, full},
      {"help", {"--help"}, dev_full, 5, full},
      {"closed_descriptor", {"read", "FILE"}, closed, 5, "Bad file descriptor"},
  };
  for (const auto& c : cases) {
    std::vector<std::string> args = c.args;
    for (auto& a : args) {
      if (a == "FILE") a = path;
    }
    const auto run = run_tool(args, c.setup);
    EXPECT_EQ(run.status, c.status) << c.name << ": " << run.err;
    EXPECT_NE(run.err.find("zvtextparser: cannot write to standard output: " + c.err_has), std::string::npos)
        << c.name << ": " << run.err;
  }
}

// Standard input is a pipe that stays open after the records, so a tool that
// went on reading after its output's reader left would wait for ever (and be
// killed at the timeout).
TEST(ReadProcess, ClosedPipeEndsQuietlyAndAtOnceWhateverSigpipeDoes) {
  std::string text;
  for (int i = 0; i < 70; ++i) text += many_records();  // 2.5 MB: more than the reader's first block
  for (const bool ignored : {false, true}) {
    int in[2];
    int out[2];
    ASSERT_EQ(::pipe(in), 0);
    ASSERT_EQ(::pipe(out), 0);
    ::close(out[0]);
    ::fcntl(in[1], F_SETFL, O_NONBLOCK);
    std::atomic<bool> finished{false};
    std::thread feeder([&] {
      std::size_t sent = 0;
      while (!finished) {
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

TEST(ReadProcess, InputThatCannotBeReadExitsFive) {
  tool_setup closed;
  closed.close_stdin = true;
  const auto run = run_tool({"read", "-"}, closed);
  EXPECT_EQ(run.status, 5);
  EXPECT_NE(run.err.find("Cannot read 'standard input': Bad file descriptor."), std::string::npos) << run.err;
}

// The tool reads the file while the test holds its output back (a full
// pipe), the test changes the file, then lets the tool finish.
TEST(ReadProcess, FileChangedWhileReadIsReported) {
  struct change_case {
    const char* name;
    bool truncate;  // else append
    bool strict;
    int status;
  };
  const change_case cases[] = {{"truncated_strict", true, true, 5}, {"grown", false, false, 0}};
  for (const auto& c : cases) {
    std::string text;
    for (int i = 0; i < 40; ++i) text += many_records();  // about 1.4 MB
    const std::string path = import_test::write_file(text);
    int out[2];
    ASSERT_EQ(::pipe(out), 0);
    std::atomic<bool> finished{false};
    std::thread changer([&] {
      int queued = 0;
      for (int waited = 0; waited < 2000 && queued < 60000; ++waited) {
        ::ioctl(out[0], FIONREAD, &queued);
        ::usleep(10000);
      }
      if (c.truncate) {
        ASSERT_EQ(::truncate(path.c_str(), 100), 0);
      } else {
        std::ofstream(path, std::ios::app) << "4,5,6\n";
      }
      ::fcntl(out[0], F_SETFL, O_NONBLOCK);
      char buffer[1 << 16];
      while (!finished) {
        if (::read(out[0], buffer, sizeof buffer) <= 0) ::usleep(1000);
      }
    });
    tool_setup setup;
    setup.stdout_fd = out[1];
    setup.timeout_seconds = 30;
    std::vector<std::string> args{"read", path};
    if (c.strict) args.emplace_back("--strict");
    const auto run = run_tool(args, setup);
    finished = true;
    changer.join();
    ::close(out[0]);
    ::close(out[1]);
    EXPECT_EQ(run.status, c.status) << c.name << ": " << run.err;
    EXPECT_NE(run.err.find("zvtextparser: warning: '" + path + "' changed while it was read"), std::string::npos)
        << c.name << ": " << run.err;
  }
}

TEST(ReadProcess, CsvWithARecordOfOneMissingValueAdvisesEmptyLineRuleRead) {
  const std::string path = import_test::write_file("x\nNA\ny\n");
  const auto lone = run_tool({"read", path, "TreatAsMissing", "NA", "--format", "csv"});
  EXPECT_EQ(lone.status, 0);
  EXPECT_EQ(lone.out, "x\r\n\r\ny\r\n");
  EXPECT_NE(lone.err.find("EmptyLineRule read"), std::string::npos) << lone.err;
  const auto two = run_tool({"read", path, "TreatAsMissing", "NA", "NumVariables", "2", "--format", "csv"});
  EXPECT_EQ(two.out, "x,\r\n,\r\ny,\r\n");
  EXPECT_EQ(two.err, "");
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
  EXPECT_EQ(run_tool({"read", "-", "--max-memory", "lots"}).status, 2);
}

}  // namespace faults

}  // namespace
