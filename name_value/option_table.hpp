// The map from option name to setter, its case-insensitive ordering, and the
// two halves of the entry point.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>

#include "parser/options.hpp"
#include "zvarray/hv_array.hpp"

namespace textio::options {

// A setter tests the value, converts it into a temporary and writes the record
// last; it reports failure only by a message exception.
using option_setter = void (*)(const hvArray_tag* value, textio::parser::options& opts);

// The upper-case fold of every byte under the global locale as it stands now.
// The table stays valid until the calling thread asks again.
const char* global_upper_case_table();

// A name being looked up, with the fold of the global locale taken when the
// lookup starts, so that one lookup folds with one locale throughout.
struct folded_name {
  std::string_view text;
  const char* upper;  // from global_upper_case_table()
};

// Byte-wise comparison after folding each byte with std::ctype<char>::toupper
// of the global locale as it stands at the time of the comparison (of the
// lookup, for a folded_name). Folded bytes compare as signed char; a prefix
// is the smaller.
struct option_name_less {
  using is_transparent = void;
  bool operator()(const std::string& a, const std::string& b) const;
  bool operator()(const folded_name& a, const std::string& b) const;
  bool operator()(const std::string& a, const folded_name& b) const;
};

using option_map = std::map<std::string, option_setter, option_name_less>;

// Every option key, built at load and only read afterwards.
extern const option_map option_table;

// The entry whose key equals `name` under option_name_less, or table.end().
option_map::const_iterator find_option(const option_map& table, std::string_view name);

void apply_struct_fields(const option_map& table, const hvArray_tag* value, textio::parser::options& opts);
void apply_name_value_pairs(const option_map& table, const hvArray_tag* const* args, std::int32_t count,
                            textio::parser::options& opts);

}  // namespace textio::options
