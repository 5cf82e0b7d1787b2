// Small files written by a test and read through the read subcommand in
// process, its JSON-lines output split up.
#pragma once

#include <string>
#include <vector>

namespace import_test {

struct read_output {
  int status = -1;
  std::string header;                // the first line
  std::vector<std::string> records;  // the record lines, without an error line
  std::string error;                 // the {"error": ...} line, if any
  std::string raw;                   // everything written to standard output
  std::string err;                   // what standard error would show
};

// Writes `contents` to a fresh file in the test's temporary folder.
std::string write_file(const std::string& contents);

// `text` compressed with gzip (or zlib without the gzip wrapper, with
// window_bits 15).
std::string gzip(const std::string& text, int window_bits = 15 + 16);

// zvtextparser read <file> --no-detect <args...>; every field as text unless
// the arguments name OutputBuilderType.
read_output read_file(const std::string& path, const std::vector<std::string>& args);
inline read_output read_text(const std::string& contents, const std::vector<std::string>& args) {
  return read_file(write_file(contents), args);
}

// The records joined with " | ", then the error as Key(arguments), if any.
std::string joined(const read_output& out);

}  // namespace import_test
