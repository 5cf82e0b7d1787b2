// zvtextparser: the library's settings from the shell.
//
//   zvtextparser options [--struct JSON] [NAME VALUE ...]
//   zvtextparser reader KIND [--struct JSON] [NAME VALUE ...]
//   zvtextparser read FILE [--struct JSON] [--format jsonl|csv] [--count] [NAME VALUE ...]
//   zvtextparser help [SUBCOMMAND|values|keys]
//
// The subcommands and their options are declared in tools/subcommands.cpp and
// read by one parser (tools/command_line.hpp). Exit statuses: tools/exit_status.hpp.
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "tools/checked_output.hpp"
#include "tools/exit_status.hpp"
#include "tools/subcommands.hpp"
#include "tools/usage_error.hpp"

namespace {

std::string subcommand_names() {
  std::string names;
  for (const auto& s : zvtool::subcommands()) {
    if (!names.empty()) names += ", ";
    names += s.grammar.name;
  }
  return names;
}

int run(const std::vector<std::string>& args) {
  if (args.empty())
    throw zvtool::usage_error("a subcommand comes first: " + subcommand_names() + " (see zvtextparser --help)");
  if (args[0] == "--help" || args[0] == "-h") {
    std::cout << zvtool::tool_help() << std::flush;
    return zvtool::exit_success;
  }
  const zvtool::subcommand* command = zvtool::find_subcommand(args[0]);
  if (command == nullptr) {
    const std::string what = args[0].starts_with('-') ? "unknown option '" : "unknown subcommand '";
    throw zvtool::usage_error(what + args[0] + "'; a subcommand comes first: " + subcommand_names() +
                              " (see zvtextparser --help)");
  }
  const zvtool::parsed_arguments parsed = zvtool::parse_arguments(command->grammar, std::span(args).subspan(1));
  if (parsed.help) {
    std::cout << zvtool::subcommand_help(command->grammar) << std::flush;
    return zvtool::exit_success;
  }
  const zvtool::tool_result result = command->run(parsed);
  std::cout << result.out << std::flush;
  std::cerr << result.err << std::flush;
  return result.status;
}

}  // namespace

int main(int argc, char** argv) {
  const zvtool::checked_standard_output output;
  try {
    const int status = run(std::vector<std::string>(argv + 1, argv + argc));
    zvtool::flush_output(std::cout);
    return status;
  } catch (const zvtool::output_failure& e) {
    return zvtool::report_output_failure(e);
  } catch (const zvtool::usage_error& e) {
    std::cerr << "zvtextparser: " << e.what() << '\n';
    return zvtool::exit_usage_error;
  } catch (const std::exception& e) {
    std::cerr << "zvtextparser: " << e.what() << '\n';
    return zvtool::exit_failure;
  } catch (...) {
    std::cerr << "zvtextparser: unknown failure\n";
    return zvtool::exit_failure;
  }
}
