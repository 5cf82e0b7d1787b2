// zvtextparser: the library's settings from the shell.
//
//   zvtextparser options [--struct JSON] [NAME VALUE ...]
//   zvtextparser reader line|delimited|fixedwidth [--struct JSON] [NAME VALUE ...]
//   zvtextparser read FILE [--struct JSON] [NAME VALUE ...] [--format jsonl|csv] [--count]
//
// CLI11 gives the subcommand structure and the help. The arguments after a
// subcommand are sorted by hand (see subcommand_arguments.hpp) and CLI11 sees
// only the subcommand's name and --help; its --struct option and positional
// arguments (the reader's kind among them) are declared for the help alone. Exit status: 0 success, 1 a
// message exception of the library, 2 a usage error, 3 any other failure.
#include <CLI/CLI.hpp>

#include <array>
#include <exception>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "tools/help_text.hpp"
#include "tools/options_command.hpp"
#include "tools/reader_command.hpp"
#include "tools/read_command.hpp"
#include "tools/report.hpp"
#include "tools/subcommand_arguments.hpp"
#include "tools/usage_error.hpp"

namespace {

using zvtool::subcommand_arguments;
using zvtool::tool_result;

// A subcommand that takes --struct JSON or NAME VALUE pairs, after a first
// positional argument of its own when it has one.
struct subcommand {
  std::string_view name;
  std::string_view summary;
  tool_result (*run)(const subcommand_arguments&);
  std::string_view first_positional = {};  ///< its name in the help; empty for none
  std::string_view first_positional_help = {};
};

constexpr std::array subcommands{
    subcommand{"options", "Apply options to a default record in one call and print the record as JSON.",
               &zvtool::run_options_command},
    subcommand{"reader",
               "Apply options as options does, build the reader of the given kind from the record and print both "
               "as JSON.",
               &zvtool::run_reader_command, "kind", "The reader to build: line, delimited or fixedwidth"},
    subcommand{
        "read",
        "Read FILE with the reader the options name and print its records (FILE [--format jsonl|csv] [--count]).",
        &zvtool::run_read_command, "file", "The file to read, or - for standard input"},
};

const subcommand* find_subcommand(std::string_view name) {
  for (const auto& s : subcommands) {
    if (s.name == name) return &s;
  }
  return nullptr;
}

std::string subcommand_names() {
  std::string names;
  for (const auto& s : subcommands) {
    if (!names.empty()) names += ", ";
    names += s.name;
  }
  return names;
}

int run(const std::vector<std::string>& args) {
  CLI::App app{
      "Turns option names and values into the text parser's settings record, and the record into a reader "
      "configuration, and prints them as JSON.",
      "zvtextparser"};
  app.require_subcommand(1);
  app.footer(zvtool::help_footer());

  // Declared for the help; the values come from the hand-sorted arguments.
  std::string struct_json;
  std::string first;
  std::vector<std::string> pairs;
  for (const auto& s : subcommands) {
    CLI::App* sub = app.add_subcommand(std::string(s.name), std::string(s.summary));
    sub->add_option("--struct", struct_json, "A JSON object whose fields are the options (the call's one argument)")
        ->type_name("JSON");
    if (!s.first_positional.empty()) {
      sub->add_option(std::string(s.first_positional), first, std::string(s.first_positional_help))->type_name("KIND");
    }
    sub->add_option("pairs", pairs, "Option names and their values")->type_name("NAME VALUE");
    sub->footer(zvtool::help_footer());
  }

  std::vector<std::string> to_parse = args;
  subcommand_arguments scanned;
  if (!args.empty() && args[0] != "--help" && args[0] != "-h" && args[0].starts_with('-')) {
    throw zvtool::usage_error("unknown option '" + args[0] + "'; a subcommand comes first (see zvtextparser --help)");
  }
  if (!args.empty() && !args[0].starts_with('-')) {
    if (find_subcommand(args[0]) == nullptr) {
      throw zvtool::usage_error("unknown subcommand '" + args[0] + "'; the subcommands are: " + subcommand_names() +
                                " (see zvtextparser --help)");
    }
    scanned = zvtool::scan_subcommand_arguments(std::span(args).subspan(1));
    to_parse = {args[0]};
    if (scanned.help) to_parse.emplace_back("--help");
  }

  std::vector<const char*> argv{"zvtextparser"};
  for (const auto& a : to_parse) argv.push_back(a.c_str());
  try {
    app.parse(static_cast<int>(argv.size()), argv.data());
  } catch (const CLI::CallForHelp& e) {
    return app.exit(e, std::cout, std::cerr);
  } catch (const CLI::ParseError& e) {
    throw zvtool::usage_error(std::string(e.what()) + " (see zvtextparser --help)");
  }

  const subcommand* command = find_subcommand(app.get_subcommands().at(0)->get_name());
  const tool_result result = command->run(scanned);
  std::cout << result.out << std::flush;
  std::cerr << result.err << std::flush;
  return result.status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return run(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const zvtool::usage_error& e) {
    std::cerr << "zvtextparser: " << e.what() << '\n';
    return 2;
  } catch (const std::exception& e) {
    std::cerr << "zvtextparser: " << e.what() << '\n';
    return 3;
  } catch (...) {
    std::cerr << "zvtextparser: unknown failure\n";
    return 3;
  }
}
