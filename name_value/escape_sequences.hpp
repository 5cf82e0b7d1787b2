// Decoding of the backslash sequences that users write in the decoded text
// options (Whitespace, Delimiter, LineEnding, TreatAsMissing, CommentStyle).
#pragma once

#include "zvcore/ustring.hpp"

namespace textio::options {

// Replaces, in one pass from the left, every backslash pair by what it stands
// for: \\ backslash, \b U+0008, \n U+000A, \r U+000D, \t U+0009. A decoded
// unit is never looked at again, so "\\\\n" (backslash, backslash, n) gives
// backslash, n. Any other pair is unknown: both units are removed and the
// result becomes false, but the pass goes on to the end. A lone backslash at
// the very end stays and is no fault. Units are 16-bit; case matters.
//
//   u"a\\tb"  -> u"a\tb", true
//   u"\\qa\\n" -> u"a\n", false
//
// Works in place in linear time and never allocates.
bool decode_escape_sequences(ustring& text) noexcept;

}  // namespace textio::options
