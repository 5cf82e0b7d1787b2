#include "tools/subcommand_arguments.hpp"

#include <string_view>

#include "tools/usage_error.hpp"

namespace zvtool {

subcommand_arguments scan_subcommand_arguments(std::span<const std::string> args) {
  constexpr std::string_view struct_option = "--struct";
  subcommand_arguments scanned;
  const auto set_struct = [&scanned](std::string json) {
    if (scanned.struct_json) throw usage_error("--struct may be given only once");
    scanned.struct_json = std::move(json);
  };
  bool options_ended = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (options_ended) {
      scanned.positionals.push_back(arg);
    } else if (arg == "--") {
      options_ended = true;
    } else if (arg == "--help" || arg == "-h") {
      scanned.help = true;
    } else if (arg == struct_option) {
      if (i + 1 == args.size()) throw usage_error("--struct needs a JSON object after it");
      set_struct(args[++i]);
    } else if (arg.starts_with(struct_option) && arg[struct_option.size()] == '=') {
      set_struct(arg.substr(struct_option.size() + 1));
    } else {
      scanned.positionals.push_back(arg);
    }
  }
  return scanned;
}

}  // namespace zvtool
