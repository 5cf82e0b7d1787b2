// The library's fixed vocabulary of text values. Every constant has internal
// linkage: each translation unit that includes this header holds its own
// copies, built at load in the order written here.
#pragma once

#include <vector>

#include "zvcore/ustring.hpp"

namespace textio::parser {

// Defaults of the options record.
const ustring default_whitespace = u" \b\t";  // space, backspace, tab
const ustring default_exp_chars = u"eEdD";

}  // namespace textio::parser
