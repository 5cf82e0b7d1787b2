#include "tools/report.hpp"

namespace zvtool {

tool_result finish_report(json_writer& out, const std::optional<message_failure>& failure) {
  tool_result result;
  if (failure) {
    out.key("error");
    write_message_failure(out, *failure);
    result.status = 1;
    result.err = message_line(*failure);
  }
  out.end_object();
  result.out = out.text() + "\n";
  return result;
}

}  // namespace zvtool
