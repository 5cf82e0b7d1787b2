// Draws typed values from fuzzer bytes. When the bytes run out every draw
// gives zero, so any input decodes to something. (A small stand-in for the
// data provider that ships with clang, so the targets also build with g++.)
#pragma once

#include <cstddef>
#include <cstdint>
#include <bit>
#include <cstring>
#include <span>
#include <string>

namespace fuzz {

class FuzzInput {
 public:
  FuzzInput(const std::uint8_t* data, std::size_t size) : data_(data), size_(size) {}

  bool empty() const { return size_ == 0; }
  std::size_t remaining() const { return size_; }

  std::uint8_t byte() {
    if (size_ == 0) return 0;
    --size_;
    return *data_++;
  }

  template <typename T>
  T integral() {
    T value{};
    const std::size_t n = sizeof(T) < size_ ? sizeof(T) : size_;
    std::memcpy(&value, data_, n);
    data_ += n;
    size_ -= n;
    return value;
  }

  // A number in [0, bound), or 0 when bound is 0.
  std::uint32_t below(std::uint32_t bound) {
    if (bound <= 1) return 0;
    if (bound <= 256) return byte() % bound;
    return integral<std::uint32_t>() % bound;
  }

  bool flag() { return (byte() & 1u) != 0; }

  double any_double() { return std::bit_cast<double>(integral<std::uint64_t>()); }

  template <typename T, std::size_t N>
  const T& pick(const T (&items)[N]) {
    return items[below(static_cast<std::uint32_t>(N))];
  }

 private:
  const std::uint8_t* data_;
  std::size_t size_;
};

}  // namespace fuzz
