// Reading small files that a test writes, through the read subcommand in
// process, and splitting its JSON-lines output.
#pragma once

#include <string>
#include <vector>

namespace import_test {

struct read_output {
  int status = -1;
  std::string header;                // the first line (variables, units, descriptions)
  std::vector<std::string> records;  // the record lines, without an error line
  std::string error;                 // the {"error": ...} line, if any
  std::string raw;                   // everything written to standard output
};

// Writes `contents` to a fresh file in the test's temporary folder and gives
// its path.
std::string write_file(const std::string& contents);

// zvtextparser read <file> --no-detect <args...>, in process. Unless the
// arguments name OutputBuilderType (or give --struct), it is "cell": every
// field as text, which is what these tests look at; typed output has its own
// tests.
read_output read_file(const std::string& path, const std::vector<std::string>& args);
read_output read_text(const std::string& contents, const std::vector<std::string>& args);

// The records joined with " | ", for compact expectations.
std::string joined(const read_output& out);

}  // namespace import_test
