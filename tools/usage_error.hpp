// A mistake in how the tool was called (bad JSON, a malformed typed value, an
// unknown subcommand). It ends the run with exit status 2 and its text on
// standard error; it never comes out of the library.
#pragma once

#include <stdexcept>
#include <string>

namespace zvtool {

class usage_error : public std::runtime_error {
 public:
  explicit usage_error(const std::string& what) : std::runtime_error(what) {}
};

}  // namespace zvtool
