// Differential fuzzing of the escape decoder against the simple reference:
// same text, same result flag, and never a reallocation.
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "fuzz/fuzz_input.hpp"
#include "name_value/escape_sequences.hpp"
#include "support/reference_escape_decoder.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size > 1 << 16) return 0;
  fuzz::FuzzInput in(data, size);
  // Mostly backslashes and sequence letters, so that sequences are dense.
  static const char16_t alphabet[] = {u'\\', u'\\', u'\\', u't', u'n', u'r', u'b', u'q', u'a', u'T', u'0', u' '};
  ustring text;
  while (!in.empty()) {
    const std::uint8_t b = in.byte();
    if (b < 0xF0)
      text.push_back(alphabet[b % (sizeof alphabet / sizeof alphabet[0])]);
    else
      text.push_back(in.integral<char16_t>());
  }
  ustring fast = text;
  ustring slow = text;
  const char16_t* buffer = fast.data();
  const bool fast_result = textio::options::decode_escape_sequences(fast);
  const bool slow_result = test_support::reference_decode(slow);
  if (fast != slow || fast_result != slow_result) {
    std::fprintf(stderr, "decoder differs from the reference\n");
    std::abort();
  }
  if (fast.data() != buffer) {
    std::fprintf(stderr, "decoder reallocated\n");
    std::abort();
  }
  return 0;
}
