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

// Digits and single line-ending characters.
const ustring digit_chars = u"0123456789";
const ustring space_char = u" ";
const ustring line_feed = u"\n";
const ustring carriage_return = u"\r";
const ustring carriage_return_line_feed = u"\r\n";

// Written forms of not-a-number and infinity. Only the lower-case forms have
// signed variants.
const ustring nan_text_mixed = u"NaN";
const ustring inf_text_mixed = u"Inf";
const ustring empty_text = u"";
const ustring inf_text = u"inf";
const ustring negative_inf_text = u"-inf";
const ustring nan_text = u"nan";
const ustring negative_nan_text = u"-nan";
const std::vector<ustring> empty_text_list{};

// Type names of the environment.
const ustring type_name_double = u"double";
const ustring type_name_single = u"single";
const ustring type_name_uint8 = u"uint8";
const ustring type_name_int8 = u"int8";
const ustring type_name_uint16 = u"uint16";
const ustring type_name_int16 = u"int16";
const ustring type_name_uint32 = u"uint32";
const ustring type_name_int32 = u"int32";
const ustring type_name_uint64 = u"uint64";
const ustring type_name_int64 = u"int64";
const ustring type_name_auto = u"auto";
const ustring type_name_datetime = u"datetime";
const ustring type_name_duration = u"duration";
const ustring type_name_categorical = u"categorical";
const ustring type_name_logical = u"logical";
const ustring type_name_string = u"string";
const ustring type_name_char = u"char";

}  // namespace textio::parser
