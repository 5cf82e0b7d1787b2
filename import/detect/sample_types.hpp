// The variable types of a detection: from the body rows of the sample, and
// back from the report into how the reader reads each variable.
#pragma once

#include <string>
#include <vector>

#include "import/detect/detection.hpp"
#include "import/values/value_conversion.hpp"

namespace textio::import {

// Fills the report's variable types, markers and date orders from `rows`
// (the sample's data records as UTF-8 fields) under the detected `opts`.
void add_variable_types(detection_report& report, const std::vector<std::vector<std::string>>& rows,
                        std::size_t variables, const textio::parser::options& opts);

// How the reader reads each variable that the report typed.
std::vector<variable_typing> variable_typings(const detection_report& report);

}  // namespace textio::import
