// Builds host values and option names from fuzzer bytes: every class and
// shape, texts rich in backslashes, flags and non-ASCII units, nested cells,
// structs with odd field names, and null values.
#pragma once

#include <string>

#include "fuzz/fuzz_input.hpp"
#include "zvarray/value.hpp"

namespace fuzz {

// The 32 option keys.
extern const char* const option_keys[32];

// A text drawn from a small vocabulary (flags, escapes, keys) or from raw
// units, possibly case-changed.
ustring draw_text(FuzzInput& in);

// Any host value, or none. Depth limits the nesting of cells and structs.
hv::Value draw_value(FuzzInput& in, int depth = 0);

// An option name: mostly a key in random case, sometimes junk or no text.
hv::Value draw_name(FuzzInput& in);

}  // namespace fuzz
