// The tool's exit statuses, one meaning each, and their descriptions for the
// help and the README.
#pragma once

#include <array>
#include <string_view>

namespace zvtool {

inline constexpr int exit_success = 0;
inline constexpr int exit_option_refused = 1;  ///< the library refused an option (message exception)
inline constexpr int exit_usage_error = 2;     ///< the tool was called wrongly
inline constexpr int exit_failure = 3;         ///< any other failure
inline constexpr int exit_reading_error = 4;   ///< the data holds a reading error (UnterminatedQuote, InvalidUtf8, ...)
inline constexpr int exit_io_failure = 5;      ///< the input cannot be read or the output cannot be written

struct exit_status_meaning {
  int status;
  std::string_view meaning;
};

inline constexpr std::array exit_status_meanings{
    exit_status_meaning{exit_success, "success"},
    exit_status_meaning{exit_option_refused, "the library refused an option"},
    exit_status_meaning{exit_usage_error, "usage error of the tool"},
    exit_status_meaning{exit_failure, "any other failure"},
    exit_status_meaning{exit_reading_error, "reading error in the data"},
    exit_status_meaning{exit_io_failure, "input or output failure"},
};

}  // namespace zvtool
