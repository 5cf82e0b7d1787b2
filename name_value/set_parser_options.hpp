// textio::options::set_parser_options: the library's one door for user
// settings. Writes name-value arguments, or one struct of them, into an
// options record.
#pragma once

#include <cstdint>

#include <zvtextparser/errors/export.hpp>
#include <zvtextparser/parser/options.hpp>
#include "zvarray/hv_array.hpp"

namespace textio::options {

// Applies `count` arguments to `opts`:
//  - count 1 and a struct: each field whose name is an option key is applied,
//    in field order; other fields are skipped in silence.
//  - otherwise name-value pairs, left to right. An odd count throws
//    OddNumberNVPairs before anything is read; 0 or a negative even count does
//    nothing; an unknown name throws UnknownParameter.
// Option names ignore case (global locale). The first failure ends the call;
// pairs applied before it stay written. Failures are message exceptions of
// the catalog "ZORVEK:textio:textio".
ZVTEXTPARSER_API void set_parser_options(const hvArray_tag* const* args, std::int32_t count,
                                         textio::parser::options& opts);

}  // namespace textio::options
