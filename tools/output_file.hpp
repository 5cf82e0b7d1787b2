// --output FILE: the output is written to a temporary file beside FILE and
// renamed to FILE only when the whole of it was written, so that a failure
// never leaves half an output under the final name. An existing FILE that
// is no regular file (a device, a pipe) is written to directly.
#pragma once

#include <memory>
#include <string>

#include "tools/checked_output.hpp"

namespace zvtool {

class output_file {
 public:
  // Throws output_failure when neither FILE nor a file beside it can be opened.
  explicit output_file(std::string path);
  output_file(const output_file&) = delete;
  output_file& operator=(const output_file&) = delete;
  // Removes the temporary file unless commit() ran.
  ~output_file();

  std::streambuf* buffer() noexcept { return buffer_.get(); }
  // Moves the written file to its name. Throws output_failure.
  void commit();

 private:
  void discard() noexcept;

  std::string path_;
  std::string temporary_;  // empty when writing to `path_` itself
  int fd_ = -1;
  std::unique_ptr<fd_output_buffer> buffer_;
};

}  // namespace zvtool
