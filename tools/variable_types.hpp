// The types `read` converts variables to: detected from the file's first
// records, or given with --types as a list by position or an object by
// variable name ("auto": detect).
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "import/detect/detection.hpp"
#include "import/text_format.hpp"
#include "import/detect/type_detection.hpp"
#include "parser/options.hpp"

namespace zvtool {

// The first records of a file as the reader reads them, as text.
struct text_sample {
  std::vector<std::string> names;
  std::vector<std::vector<std::string>> rows;
  std::size_t variables = 0;
};

inline constexpr std::size_t type_sample_records = 1000;

// Reads the first `records` records of `path` under `record` as text.
// Reading errors in the sample end it early; the full read reports them.
text_sample read_text_sample(const textio::parser::options& record, const std::string& path,
                             const textio::import::text_format& format, std::size_t records = type_sample_records);

// The types that detection reported.
std::vector<textio::import::detected_type> detected_types_of(const textio::import::detection_report& report);

// Detects each variable's type from `sample` with the record's number
// format and missing placeholders (markers are detected when it has none).
std::vector<textio::import::detected_type> detect_sample_types(const textio::parser::options& record,
                                                               const text_sample& sample);

// Applies --types (JSON) over the detected types. Throws usage_error for bad
// JSON, an unknown type name, a variable name the file does not have, or
// more positions than variables.
std::vector<textio::import::variable_typing> apply_type_argument(const std::optional<std::string>& json,
                                                                 std::vector<textio::import::detected_type> detected,
                                                                 const std::vector<std::string>& names);

}  // namespace zvtool
