#include "tools/options_command.hpp"

#include <vector>

#include "tools/apply_options.hpp"
#include "tools/record_json.hpp"

namespace zvtool {

tool_result report_options_call(const std::optional<std::string>& struct_json, std::span<const std::string> positionals,
                                record_members more) {
  textio::parser::options record;
  const auto failure = apply_option_arguments(struct_json, positionals, record);
  json_writer out;
  out.begin_object();
  out.key("options");
  write_options_record(out, record);
  if (!failure && more != nullptr) more(out, record);
  return finish_report(out, failure);
}

tool_result run_options_command(const parsed_arguments& args) {
  return report_options_call(args.value("--struct"), args.option_arguments);
}

}  // namespace zvtool
