#include "import/input/decompressor.hpp"

#include <bzlib.h>
#include <lzma.h>
#include <zlib.h>
#include <zstd.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "import/reader_errors.hpp"

namespace textio::import {
namespace {

constexpr std::size_t raw_block = std::size_t{1} << 16;

bool starts(std::string_view head, std::string_view magic) { return head.substr(0, magic.size()) == magic; }

}  // namespace

compression compression_of(std::string_view head) {
  using namespace std::string_view_literals;
  if (starts(head, "\x1F\x8B"sv)) return compression::gzip;
  if (starts(head, "\xFD\x37\x7A\x58\x5A\x00"sv)) return compression::xz;
  if (starts(head, "\x28\xB5\x2F\xFD"sv)) return compression::zstd;
  // "BZh", a block size digit, then the magic of a block or of the end.
  if (head.size() >= 10 && starts(head, "BZh") && head[3] >= '1' && head[3] <= '9' &&
      (head.substr(4, 6) == "\x31\x41\x59\x26\x53\x59"sv || head.substr(4, 6) == "\x17\x72\x45\x38\x50\x90"sv)) {
    return compression::bzip2;
  }
  // zlib: deflate with a 32 KiB window and a header checksum; the second
  // byte of its usual levels is never printable text.
  if (head.size() >= 2 && head[0] == '\x78' && (head[1] == '\x01' || head[1] == '\x9C' || head[1] == '\xDA')) {
    return compression::zlib;
  }
  return compression::none;
}

std::string_view compression_name(compression kind) {
  switch (kind) {
    case compression::gzip:
      return "gzip";
    case compression::zlib:
      return "zlib";
    case compression::bzip2:
      return "bzip2";
    case compression::xz:
      return "xz";
    case compression::zstd:
      return "zstd";
    case compression::none:
      break;
  }
  return "none";
}

// One state for every format: the raw bytes waiting, where they are taken
// from, and each library's stream (only the one in use is set up).
struct decompressor::state {
  compression kind;
  raw_reader raw;
  std::string name;
  std::array<char, raw_block> in{};
  std::size_t in_begin = 0;
  std::size_t in_end = 0;
  // Decompressed bytes not yet handed out: the libraries always write
  // blocks of this size, so that what is read before a failure does not
  // depend on the size of the reads.
  std::array<char, raw_block> out{};
  std::size_t out_begin = 0;
  std::size_t out_end = 0;
  std::uint64_t consumed = 0;  // compressed bytes taken by the library
  bool raw_ended = false;
  bool failed = false;        // corrupt: the next read throws
  bool stream_ended = false;  // the last stream ended where the input did
  z_stream z{};
  bz_stream bz{};
  lzma_stream xz = LZMA_STREAM_INIT;
  ZSTD_DStream* zstd = nullptr;

  [[noreturn]] void corrupt() const {
    textio::throw_msg_id_exception(
        ZORVEK::textio::reader::CorruptInput(name, std::string(compression_name(kind)), consumed));
  }
  // The bytes made by the call that found the stream corrupt are handed out
  // first; the next read throws.
  std::size_t corrupt_after(std::size_t made) {
    if (made == 0) corrupt();
    failed = true;
    return made;
  }
  // More raw bytes when none are waiting; false at the end of the input.
  bool refill() {
    if (in_begin < in_end) return true;
    if (raw_ended) return false;
    in_begin = 0;
    in_end = raw(in.data(), in.size());
    raw_ended = in_end == 0;
    return !raw_ended;
  }
  void took(std::size_t n) {
    in_begin += n;
    consumed += n;
  }
  std::size_t inflate_some(char* out, std::size_t size);
  std::size_t bunzip_some(char* out, std::size_t size);
  std::size_t unxz_some(char* out, std::size_t size);
  std::size_t unzstd_some(char* out, std::size_t size);
  // One call of the format's function.
  std::size_t some(char* into, std::size_t size);
};

decompressor::decompressor(compression kind, raw_reader raw, std::string name) : state_(std::make_unique<state>()) {
  state& s = *state_;
  s.kind = kind;
  s.raw = std::move(raw);
  s.name = std::move(name);
  bool ok = true;
  switch (kind) {
    case compression::gzip:
    case compression::zlib:
      ok = inflateInit2(&s.z, 15 + 32) == Z_OK;  // gzip or zlib header, found by zlib
      break;
    case compression::bzip2:
      ok = BZ2_bzDecompressInit(&s.bz, 0, 0) == BZ_OK;
      break;
    case compression::xz:
      ok = lzma_stream_decoder(&s.xz, UINT64_MAX, LZMA_CONCATENATED) == LZMA_OK;
      break;
    case compression::zstd:
      s.zstd = ZSTD_createDStream();
      ok = s.zstd != nullptr;
      break;
    case compression::none:
      break;
  }
  if (!ok) throw std::bad_alloc();
}

decompressor::~decompressor() {
  state& s = *state_;
  switch (s.kind) {
    case compression::gzip:
    case compression::zlib:
      inflateEnd(&s.z);
      break;
    case compression::bzip2:
      BZ2_bzDecompressEnd(&s.bz);
      break;
    case compression::xz:
      lzma_end(&s.xz);
      break;
    case compression::zstd:
      ZSTD_freeDStream(s.zstd);
      break;
    case compression::none:
      break;
  }
}

std::size_t decompressor::state::inflate_some(char* out, std::size_t size) {
  for (;;) {
    if (!refill()) {
      if (!stream_ended) corrupt();
      return 0;
    }
    // A new member after a finished one (concatenated gzip files).
    if (stream_ended) {
      if (inflateReset(&z) != Z_OK) corrupt();
      stream_ended = false;
    }
    const std::size_t waiting = in_end - in_begin;
    z.next_in = reinterpret_cast<Bytef*>(in.data() + in_begin);
    z.avail_in = static_cast<uInt>(waiting);
    z.next_out = reinterpret_cast<Bytef*>(out);
    z.avail_out = static_cast<uInt>(size);
    const int r = inflate(&z, Z_NO_FLUSH);
    took(waiting - z.avail_in);
    const std::size_t made = size - z.avail_out;
    if (r != Z_OK && r != Z_STREAM_END && r != Z_BUF_ERROR) return corrupt_after(made);
    if (r == Z_STREAM_END) stream_ended = true;
    if (made > 0) return made;
    if (z.avail_in == waiting && r != Z_STREAM_END) corrupt();  // no progress: it would never end
  }
}

std::size_t decompressor::state::bunzip_some(char* out, std::size_t size) {
  for (;;) {
    if (!refill()) {
      if (!stream_ended) corrupt();
      return 0;
    }
    if (stream_ended) {
      BZ2_bzDecompressEnd(&bz);
      bz = bz_stream{};
      if (BZ2_bzDecompressInit(&bz, 0, 0) != BZ_OK) corrupt();
      stream_ended = false;
    }
    const std::size_t waiting = in_end - in_begin;
    bz.next_in = in.data() + in_begin;
    bz.avail_in = static_cast<unsigned>(waiting);
    bz.next_out = out;
    bz.avail_out = static_cast<unsigned>(size);
    const int r = BZ2_bzDecompress(&bz);
    took(waiting - bz.avail_in);
    const std::size_t made = size - bz.avail_out;
    if (r != BZ_OK && r != BZ_STREAM_END) return corrupt_after(made);
    if (r == BZ_STREAM_END) stream_ended = true;
    if (made > 0) return made;
    if (bz.avail_in == waiting && r != BZ_STREAM_END) corrupt();
  }
}

std::size_t decompressor::state::unxz_some(char* out, std::size_t size) {
  for (;;) {
    const bool more = refill();
    xz.next_in = reinterpret_cast<const std::uint8_t*>(in.data() + in_begin);
    xz.avail_in = in_end - in_begin;
    xz.next_out = reinterpret_cast<std::uint8_t*>(out);
    xz.avail_out = size;
    const lzma_ret r = lzma_code(&xz, more ? LZMA_RUN : LZMA_FINISH);
    took(in_end - in_begin - xz.avail_in);
    const std::size_t made = size - xz.avail_out;
    if (r == LZMA_STREAM_END) return made;
    if (r != LZMA_OK) return corrupt_after(made);
    if (made > 0) return made;
    if (!more) corrupt();
  }
}

std::size_t decompressor::state::unzstd_some(char* out, std::size_t size) {
  for (;;) {
    if (!refill()) {
      if (!stream_ended) corrupt();
      return 0;
    }
    ZSTD_inBuffer input{in.data() + in_begin, in_end - in_begin, 0};
    ZSTD_outBuffer output{out, size, 0};
    const std::size_t r = ZSTD_decompressStream(zstd, &output, &input);
    took(input.pos);
    if (ZSTD_isError(r) != 0) return corrupt_after(output.pos);
    stream_ended = r == 0;  // a frame is complete
    if (output.pos > 0) return output.pos;
    if (input.pos == 0 && r != 0) corrupt();
  }
}

std::size_t decompressor::state::some(char* into, std::size_t size) {
  switch (kind) {
    case compression::gzip:
    case compression::zlib:
      return inflate_some(into, size);
    case compression::bzip2:
      return bunzip_some(into, size);
    case compression::xz:
      return unxz_some(into, size);
    case compression::zstd:
      return unzstd_some(into, size);
    case compression::none:
      break;
  }
  return 0;
}

std::size_t decompressor::read(char* into, std::size_t size) {
  if (size == 0) return 0;
  state& s = *state_;
  if (s.out_begin == s.out_end) {
    if (s.failed) s.corrupt();
    s.out_begin = 0;
    s.out_end = s.some(s.out.data(), s.out.size());
    if (s.out_end == 0) return 0;
  }
  const std::size_t n = std::min(size, s.out_end - s.out_begin);
  std::memcpy(into, s.out.data() + s.out_begin, n);
  s.out_begin += n;
  return n;
}

}  // namespace textio::import
