#include "tools/options_command.hpp"

#include "parser/options.hpp"
#include "tools/apply_options.hpp"
#include "tools/host_values.hpp"
#include "tools/record_json.hpp"

namespace zvtool {

tool_result run_options_command(const subcommand_arguments& args) {
  const std::vector<hv::Value> values = option_arguments(args.struct_json, args.positionals);
  textio::parser::options record;
  const auto failure = apply_options(values, record);
  json_writer out;
  out.begin_object();
  out.key("options");
  write_options_record(out, record);
  return finish_report(out, failure);
}

}  // namespace zvtool
