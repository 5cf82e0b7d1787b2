// The options record as JSON: all thirty fields under their own names, in
// declaration order. Texts are written unit for unit, counts as exact
// integers, enumerations by their enumerator names.
#pragma once

#include "parser/options.hpp"
#include "tools/json_writer.hpp"

namespace zvtool {

// Writes the record as one JSON object value (after a key, or at the top).
void write_options_record(json_writer& out, const textio::parser::options& record);

}  // namespace zvtool
