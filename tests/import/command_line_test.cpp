// The command line a person expects, run as a process: output formats and
// files, rows and columns chosen, hints for familiar flags, show. One row a
// case: arguments, input, status, what standard output is (or holds) and
// what standard error holds.
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "import/read_helpers.hpp"
#include "support/run_tool.hpp"

namespace {

using test_support::run_tool;

const std::string table = "a,b,c\n1,\"x\ty\",3\n2,\"q\nr\",4\n5,z,6\n";

struct process_case {
  std::vector<std::string> args;  // after "read FILE" (or with the subcommand when it is not read)
  int status;
  std::string out;  // exact, unless `out_has`
  bool out_has = false;
  std::string err_has = {};
};

TEST(CommandLine, ReadsAsPeopleAsk) {
  const std::string file = import_test::write_file(table);
  const process_case cases[] = {
      {{"--format", "tsv"}, 0, "a\tb\tc\n1\tx\\ty\t3\n2\tq\\nr\t4\n5\tz\t6\n"},
      {{"--objects", "--rows", "1"}, 0, "{\"a\": 1, \"b\": \"x\\ty\", \"c\": 3}\n", true},
      {{"--select", "c,a", "--format", "csv"}, 0, "c,a\r\n3,1\r\n4,2\r\n6,5\r\n"},
      {{"--select", "2", "--format", "csv", "--rows", "1"}, 0, "b\r\nx\ty\r\n"},
      {{"--select", "a,nope"}, 2, "", false, "no variable 'nope'; its variables are 'a', 'b', 'c'"},
      {{"--skip-rows", "1", "--rows", "1", "--format", "csv"}, 0, "a,b,c\r\n2,\"q\nr\",4\r\n"},
      {{"--rows", "0", "--format", "csv"}, 0, "a,b,c\r\n"},
      {{"--rows", "x"}, 2, "", false, "--rows takes a count"},
      {{"--objects", "--format", "csv"}, 2, "", false, "--objects goes with --format jsonl"},
      {{"--sep", ";"}, 2, "", false, "did you mean `Delimiter ';'`"},
      {{"--nrows", "5"}, 2, "", false, "did you mean `--rows N`"},
      {{"--num-header-lines", "2"}, 2, "", false, "did you mean `NumHeaderLines VALUE`"},
      {{"--verbose", "--count"}, 0, "{\"records\": 3, \"fields\": 9}\n", false, "zvtextparser: read on one thread\n"},
  };
  for (const process_case& c : cases) {
    std::vector<std::string> args = {"read", file};
    args.insert(args.end(), c.args.begin(), c.args.end());
    const auto run = run_tool(args);
    const std::string what = c.args.empty() ? "" : c.args.front() + " " + c.args.back();
    EXPECT_EQ(run.status, c.status) << what << "\n" << run.err;
    if (c.out_has) {
      EXPECT_NE(run.out.find(c.out), std::string::npos) << what << "\n" << run.out;
    } else if (c.status == 0) {
      EXPECT_EQ(run.out, c.out) << what;
    }
    EXPECT_NE(run.err.find(c.err_has), std::string::npos) << what << "\n" << run.err;
  }
}

// -o writes the whole output under its name or, after a failure, nothing
// there at all; a device is written to as it is.
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
  const auto full = run_tool({"read", import_test::write_file(table), "-o", "/dev/full"});
  EXPECT_EQ(full.status, 5);
  EXPECT_NE(full.err.find("cannot write to /dev/full: No space left on device"), std::string::npos) << full.err;
  const auto nowhere = run_tool({"read", import_test::write_file(table), "-o", "/no/such/folder/x.csv"});
  EXPECT_EQ(nowhere.status, 5);
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
  test_support::tool_setup setup;
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
