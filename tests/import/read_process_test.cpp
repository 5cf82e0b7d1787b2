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
