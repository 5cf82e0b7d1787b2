// The map from option name to setter, its case-insensitive ordering, and the
// two halves of the entry point.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "parser/options.hpp"
#include "zvarray/hv_array.hpp"

namespace textio::options {

// A setter tests the value, converts it into a temporary and writes the record
// last; it reports failure only by a message exception.
using option_setter = void (*)(const hvArray_tag* value, textio::parser::options& opts);

// Byte-wise comparison after folding each byte with std::ctype<char>::toupper
// of the global locale as it stands at the time of the comparison.
struct option_name_less {
  bool operator()(const std::string& a, const std::string& b) const;
};

using option_map = std::map<std::string, option_setter, option_name_less>;

// Every option key, built at load and only read afterwards.
extern const option_map option_table;

void apply_struct_fields(const option_map& table, const hvArray_tag* value, textio::parser::options& opts);
void apply_name_value_pairs(const option_map& table, const hvArray_tag* const* args, std::int32_t count,
                            textio::parser::options& opts);

}  // namespace textio::options
