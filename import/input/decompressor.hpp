// Compressed input, recognised by its first bytes whatever the file is
// called, and decompressed as it is read (never whole into memory): gzip
// and zlib (zlib), bzip2 (libbz2), xz (liblzma) and zstd (libzstd).
// Concatenated streams (members, frames) read as one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

namespace textio::import {

enum class compression : std::uint8_t { none, gzip, zlib, bzip2, xz, zstd };

// The bytes that tell a compressed input; the first of the input's bytes
// are looked at, at most this many.
inline constexpr std::size_t compression_magic_bytes = 10;

// The compression that `head` (the input's first bytes) starts with.
compression compression_of(std::string_view head);

// "gzip", "zlib", "bzip2", "xz", "zstd".
std::string_view compression_name(compression kind);

class decompressor {
 public:
  // Reads raw bytes into a buffer of the given size; 0 at the end.
  using raw_reader = std::function<std::size_t(char* into, std::size_t size)>;

  // `name` names the input in messages.
  decompressor(compression kind, raw_reader raw, std::string name);
  decompressor(const decompressor&) = delete;
  decompressor& operator=(const decompressor&) = delete;
  ~decompressor();

  // Puts up to `size` decompressed bytes into `into`; 0 at the end of the
  // input. Throws the reader's CorruptInput, with the offset of the
  // compressed bytes read so far, for a corrupt stream or one cut short.
  std::size_t read(char* into, std::size_t size);

 private:
  struct state;
  std::unique_ptr<state> state_;
};

}  // namespace textio::import
