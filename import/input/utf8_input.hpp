// A file (or standard input) read as UTF-8 in large blocks: the byte-order
// mark is skipped, and every block handed out ends at a character boundary
// and holds only well-formed UTF-8. Compressed input (decompressor.hpp) is
// decompressed and input in another encoding converted to UTF-8 as it is
// read. Memory: one block.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace textio::import {

class decompressor;
class stream_spool;
class transcoder;

class utf8_input {
 public:
  // "-" reads standard input (named "standard input" in messages). Throws
  // CannotReadFile, with the system's reason, when the file cannot be opened.
  explicit utf8_input(const std::string& path);
  // Reads from an open descriptor, which stays open.
  utf8_input(int fd, std::string name);
  // Reads a regular file open as `fd` (which stays open) from byte `offset`
  // on, with positional reads that leave the descriptor's position alone, so
  // that several inputs can read parts of one file at once. No byte-order
  // mark is looked for.
  utf8_input(int fd, std::string name, std::uint64_t offset);
  // Reads the bytes of `spool` from `offset` on, as a part of a file is
  // read; with `releases`, the spool lets go of each byte once read (the
  // input reads on to the end alone).
  utf8_input(stream_spool& spool, std::string name, std::uint64_t offset, bool releases);
  // Reads bytes in memory, which must outlive the input; `name` names them
  // in messages.
  utf8_input(std::string_view bytes, std::string name);
  utf8_input(const utf8_input&) = delete;
  utf8_input& operator=(const utf8_input&) = delete;
  ~utf8_input();

  // Reads the input as `encoding` (an iconv name) from now on, converting it
  // to UTF-8; its byte-order mark is skipped. Call before the first read.
  // Throws UnknownEncoding.
  void decode_from(const std::string& encoding);

  // The input's first bytes as they are (byte-order mark included): `bytes`
  // of them, then on to the end of the line they stop in (but no further
  // than as many bytes again, at least 64 KiB), or all of the input when it
  // is shorter. Reading later starts with these same bytes, so
  // standard input needs no seek. Call before the first read.
  std::string_view sample(std::size_t bytes);
  // Whether the input ended within the sample.
  bool sample_is_whole_input() const noexcept { return at_end_; }

  // Appends about `want` bytes (at least one character unless the input has
  // ended) to `out`. Returns false, appending nothing, at the end of the
  // input. Throws InvalidUtf8 with the byte offset of the first bad sequence,
  // CannotReadFile when reading fails.
  bool read(std::string& out, std::size_t want);

  // Takes at most `bytes` (at least 1) from the input per read call, as a
  // slow pipe would, and makes that the block size; tests use it to cut the
  // text at every place.
  void limit_reads(std::size_t bytes) noexcept { read_limit_ = block_size_ = bytes == 0 ? 1 : bytes; }
  // The amount a reader asks for at least when it needs more text.
  std::size_t block_size() const noexcept { return block_size_; }

  // The file's size when it is a regular file and not compressed, else 0.
  std::uint64_t size() const noexcept { return decompressor_ ? 0 : size_; }
  // A regular file read from its first byte, so that an offset in the text
  // read is the same offset in the file (parts of it can be read at once).
  bool is_whole_regular_file() const noexcept { return regular_ && from_file_start_; }
  // Whether the input is compressed (and decompressed as it is read).
  bool compressed() const noexcept { return decompressor_ != nullptr; }
  // Whether the input is compressed and read from a file or memory (not a
  // pipe or terminal, whose read may wait without end and keep a thread
  // from stopping), so that spool_ahead() can decompress it on a thread.
  bool can_spool() const noexcept { return decompressor_ && !spool_ && (regular_ || in_memory_); }
  // Decompresses a compressed input on a thread of its own into a spool
  // (stream_spool.hpp) that keeps its bytes from the ones not yet read on,
  // at most `ahead_bytes` ahead of its floor; this input reads on from it,
  // so that decompression and reading go on at once. With `releases`, the
  // spool lets go of each byte once this input has read it (no other input
  // reads the spool). Nothing when !can_spool(). Throws std::system_error
  // when no thread can be started.
  void spool_ahead(std::uint64_t ahead_bytes, bool releases);
  // The spool this input reads from, if any.
  stream_spool* spool() const noexcept { return spool_; }
  // Whether the input is converted from another encoding.
  bool converts() const noexcept { return transcoder_ != nullptr; }
  int descriptor() const noexcept { return fd_; }
  const std::string& name() const noexcept { return name_; }
  // Bytes taken from the input so far.
  std::uint64_t bytes_read() const noexcept { return offset_; }

  // For a regular file: whether its size or modification time differ now
  // from when it was opened, i.e. it was written to while being read and the
  // text read may mix old and new contents. False for any other input.
  bool changed_since_opened() const noexcept;

 private:
  // Notes the size and modification time of a regular file.
  void note_file_state() noexcept;
  // Reads raw bytes into pending_; false at the end of the input.
  bool fill(std::size_t want);
  // Raw bytes, decompressed when the input is compressed.
  std::size_t read_some(char* into, std::size_t size);
  // The bytes find_compression read first, then read_raw.
  std::size_t read_after_head(char* into, std::size_t size);
  // One read of the descriptor (positional from position_ when set) or of
  // the memory, retried when interrupted; throws CannotReadFile.
  std::size_t read_raw(char* into, std::size_t size);
  // Looks at the input's first bytes for a compression's magic, when it is
  // opened (a part of a file is not looked at: the file was, whole); a
  // compressed input is no regular file of text to cut into parts.
  void find_compression();
  // read() for input in another encoding than UTF-8.
  bool read_converted(std::string& out, std::size_t want);

  int fd_ = -1;
  bool owns_fd_ = false;
  std::string name_;
  std::uint64_t size_ = 0;
  bool regular_ = false;
  bool from_file_start_ = false;  // the descriptor stood at byte 0 when opened
  std::int64_t mtime_seconds_ = 0;
  std::int64_t mtime_nanoseconds_ = 0;
  std::uint64_t offset_ = 0;  // bytes of the input before pending_
  bool positional_ = false;   // reads at position_ with pread
  std::uint64_t position_ = 0;
  bool in_memory_ = false;  // reads memory_ instead of a descriptor
  const char* memory_ = nullptr;
  std::uint64_t memory_size_ = 0;
  std::string pending_;  // raw bytes not yet handed out
  bool at_end_ = false;
  bool started_ = false;  // the byte-order mark has been looked for
  std::size_t read_limit_ = static_cast<std::size_t>(-1);
  std::size_t block_size_ = std::size_t{1} << 18;
  std::unique_ptr<transcoder> transcoder_;  // none: the input is UTF-8
  std::string head_;                        // raw bytes it read, handed out first
  std::unique_ptr<decompressor> decompressor_;
  std::unique_ptr<stream_spool> own_spool_;  // decompressor_ spooled on its own thread
  stream_spool* spool_ = nullptr;            // read from here, at spool_at_
  std::uint64_t spool_at_ = 0;
  bool releases_ = false;  // lets go of the spool's bytes once read
};

}  // namespace textio::import
