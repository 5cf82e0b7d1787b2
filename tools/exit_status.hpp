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
// The reader of the output went away (a closed pipe): the tool ends at once
// and quietly with the status a shell shows for a process that SIGPIPE ends,
// whether SIGPIPE was ignored or not.
inline constexpr int exit_closed_pipe = 141;

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
    exit_status_meaning{exit_closed_pipe, "the output was a pipe that its reader closed (nothing is printed)"},
};

}  // namespace zvtool
