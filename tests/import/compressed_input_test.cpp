// Compressed input, told by its first bytes: each format read from a file and
// from standard input gives the records of the plain text; a stream that is
// cut short or corrupt is a reading error, never a partial result with
// status 0; text that only looks like a magic number stays text.
#include <bzlib.h>
#include <fcntl.h>
#include <lzma.h>
#include <unistd.h>
#include <zlib.h>
#include <zstd.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <vector>

#include "import/input/decompressor.hpp"
#include "import/input/stream_spool.hpp"
#include "import/read_helpers.hpp"
#include "support/run_tool.hpp"
#include "zvcore/exceptions.hpp"

namespace {

using test_support::run_tool;

const std::string table = "id,note\n1,plain\n2,\"two\nlines\"\n3,\"a, b\"\n";

using import_test::gzip;
std::string zlib(const std::string& text) { return gzip(text, 15); }

std::string bzip2(const std::string& text) {
  std::string out(text.size() + 1024, '\0');
  auto size = static_cast<unsigned>(out.size());
  BZ2_bzBuffToBuffCompress(out.data(), &size, const_cast<char*>(text.data()), static_cast<unsigned>(text.size()), 9, 0,
                           0);
  out.resize(size);
  return out;
}

std::string xz(const std::string& text) {
  std::string out(text.size() + 1024, '\0');
  std::size_t size = 0;
  lzma_easy_buffer_encode(6, LZMA_CHECK_CRC64, nullptr, reinterpret_cast<const std::uint8_t*>(text.data()), text.size(),
                          reinterpret_cast<std::uint8_t*>(out.data()), &size, out.size());
  out.resize(size);
  return out;
}

std::string zstd(const std::string& text) {
  std::string out(ZSTD_compressBound(text.size()), '\0');
  out.resize(ZSTD_compress(out.data(), out.size(), text.data(), text.size(), 3));
  return out;
}

TEST(CompressedInput, EachFormatReadsAsItsText) {
  const std::string plain = run_tool({"read", import_test::write_file(table), "--format", "csv"}).out;
  ASSERT_NE(plain.find("lines"), std::string::npos);
  const struct {
    const char* name;
    std::string bytes;
  } cases[] = {{"gzip", gzip(table)},
               {"zlib", zlib(table)},
               {"bzip2", bzip2(table)},
               {"xz", xz(table)},
               {"zstd", zstd(table)},
               {"gzip members", gzip(table) + gzip("4,x\n")},
               {"zstd frames", zstd(table) + zstd("4,x\n")}};
  for (const auto& c : cases) {
    const std::string path = import_test::write_file(c.bytes);
    const auto from_file = run_tool({"read", path, "--format", "csv"});
    EXPECT_EQ(from_file.status, 0) << c.name << from_file.err;
    const bool two = std::string(c.name).find(' ') != std::string::npos;
    EXPECT_EQ(from_file.out, two ? plain + "4,x\r\n" : plain) << c.name;
    const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
    test_support::tool_setup piped;
    piped.stdin_fd = fd;
    const auto from_stdin = run_tool({"read", "-", "--format", "csv"}, piped);
    ::close(fd);
    EXPECT_EQ(from_stdin.out, from_file.out) << c.name << from_stdin.err;
  }
}

TEST(CompressedInput, CutShortOrCorruptIsAReadingError) {
  const std::string whole = gzip(table);
  std::string flipped = xz(table);
  flipped[flipped.size() / 2] = static_cast<char>(flipped[flipped.size() / 2] ^ 0x55);
  const std::string cases[] = {whole.substr(0, whole.size() - 6), whole + "garbage", flipped,
                               bzip2(table).substr(0, 30), zstd(table).substr(0, 20)};
  for (const std::string& bytes : cases) {
    const auto run = run_tool({"read", import_test::write_file(bytes), "--format", "csv"});
    EXPECT_EQ(run.status, 4) << run.err;
    EXPECT_NE(run.err.find("ZORVEK:textio:reader:CorruptInput: "), std::string::npos) << run.err;
  }
}

// Many blocks of the decompressing thread, read in parts: the same records as
// on one thread, and a stream cut short in a later block still a reading
// error.
TEST(CompressedInput, DecompressedAheadOnAThreadOfItsOwn) {
  std::string big = "id,note,value\n";
  for (int i = 0; big.size() < (std::size_t{5} << 20); ++i) {
    big += std::to_string(i) + ",\"row " + std::to_string(i * 7) + "\"," + std::to_string(i % 1000) + ".25\n";
  }
  const std::string packed = gzip(big);
  const std::string path = import_test::write_file(packed);
  const auto one = run_tool({"read", path, "--format", "csv", "--threads", "1"});
  const auto two = run_tool({"read", path, "--format", "csv", "--threads", "2"});
  EXPECT_EQ(two.status, 0) << two.err;
  EXPECT_EQ(two.out, one.out);
  EXPECT_EQ(two.out, run_tool({"read", import_test::write_file(big), "--format", "csv", "--threads", "1"}).out);
  const auto cut =
      run_tool({"read", import_test::write_file(packed.substr(0, packed.size() - 100)), "--count", "--threads", "2"});
  EXPECT_EQ(cut.status, 4) << cut.err;
  EXPECT_NE(cut.err.find("CorruptInput"), std::string::npos) << cut.err;
}

// The spool's bytes come at their offsets whatever the sizes asked, with a
// bound ahead far below the input; its source's failure comes after every
// byte before it, and again; bytes let go of are refused, not waited for;
// an endless source does not keep it from stopping.
TEST(CompressedInput, SpoolKeepsOffsetsFailureAndFloor) {
  using textio::import::stream_spool;
  std::string expected;
  for (int i = 0; i < 10000; ++i) expected += static_cast<char>('a' + i % 26);
  for (const bool fails : {false, true}) {
    std::size_t at = 3;  // the first 3 bytes are given to the spool whole
    stream_spool spool(
        expected.substr(0, 3), 0,
        [&](char* into, std::size_t size) -> std::size_t {
          if (fails && at >= 1003) throw std::runtime_error("bad");
          const std::size_t n = std::min<std::size_t>({size, 8, expected.size() - at});
          expected.copy(into, n, at);
          at += n;
          return n;
        },
        64, 128);
    std::string got;
    char buffer[13];
    EXPECT_EQ(spool.read_at(500, buffer, 13), 13U);
    EXPECT_EQ(std::string(buffer, 13), expected.substr(500, 13));
    try {
      for (std::size_t n; (n = spool.read_at(got.size(), buffer, sizeof buffer)) != 0;) {
        got.append(buffer, n);
        spool.release_before(got.size());
      }
      EXPECT_FALSE(fails);
      EXPECT_EQ(spool.read_at(got.size(), buffer, sizeof buffer), 0U);
    } catch (const std::runtime_error&) {
      EXPECT_TRUE(fails);
      EXPECT_THROW(spool.read_at(got.size(), buffer, sizeof buffer), std::runtime_error);
    }
    EXPECT_EQ(got, fails ? expected.substr(0, 1003) : expected);
    EXPECT_THROW(spool.read_at(got.size() - 1, buffer, 1), std::out_of_range);
  }
  stream_spool endless(
      {}, 0, [](char* into, std::size_t size) { return std::string(size, 'x').copy(into, size); }, 64, 128);
  char one = 0;
  EXPECT_EQ(endless.read_at(0, &one, 1), 1U);
}

// A stream corrupt part-way hands out the same text before its failure
// whether it is read in small reads or large ones.
TEST(CompressedInput, TextBeforeACorruptionWhateverTheReadSize) {
  std::string text;
  for (int i = 0; i < 20000; ++i) text += std::to_string(i * 7919 % 10007) + (i % 9 == 0 ? "\n" : ",");
  const std::string packed[] = {gzip(text), bzip2(text), xz(text), zstd(text)};
  int failures = 0;  // (a flipped byte that a format has no check for reads as other text)
  for (std::string bytes : packed) {
    bytes[bytes.size() * 3 / 4] = static_cast<char>(bytes[bytes.size() * 3 / 4] ^ 0x5A);
    const auto read_all = [&](std::size_t read_size) {
      std::size_t at = 0;
      textio::import::decompressor d(
          textio::import::compression_of(bytes),
          [&](char* into, std::size_t size) {
            const std::size_t n = std::min(size, bytes.size() - at);
            bytes.copy(into, n, at);
            at += n;
            return n;
          },
          "test");
      std::string out(read_size, '\0');
      std::string got;
      try {
        for (std::size_t n; (n = d.read(out.data(), read_size)) != 0;) got.append(out, 0, n);
      } catch (const foundation::core::except::IMsgIDException&) {
        return got + "|failed";
      }
      return got;
    };
    const std::string large = read_all(std::size_t{1} << 20);
    failures += large.ends_with("|failed") ? 1 : 0;
    EXPECT_EQ(large, read_all(64)) << textio::import::compression_name(textio::import::compression_of(bytes));
  }
  EXPECT_GE(failures, 2);
}

TEST(CompressedInput, OnlyTheMagicOfEachFormatCounts) {
  using textio::import::compression;
  using namespace std::string_view_literals;
  EXPECT_EQ(textio::import::compression_of(gzip("x")), compression::gzip);
  EXPECT_EQ(textio::import::compression_of(zlib("x")), compression::zlib);
  EXPECT_EQ(textio::import::compression_of(bzip2("x")), compression::bzip2);
  EXPECT_EQ(textio::import::compression_of(bzip2("")), compression::bzip2);
  EXPECT_EQ(textio::import::compression_of(xz("x")), compression::xz);
  EXPECT_EQ(textio::import::compression_of(zstd("x")), compression::zstd);
  for (const std::string_view text : {"x^2,y\n"sv, "BZh9 is a name\n"sv, "xx\n"sv, ""sv, "\x1F"sv}) {
    EXPECT_EQ(textio::import::compression_of(text), compression::none) << text;
  }
}

}  // namespace
