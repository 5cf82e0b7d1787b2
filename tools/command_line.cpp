#include "tools/command_line.hpp"

#include <algorithm>
#include <cctype>

#include "tools/exit_status.hpp"
#include "tools/failure_hints.hpp"
#include "tools/usage_error.hpp"

namespace zvtool {
namespace {

// "--" and a letter: an option word. "--" alone ends the options; "-1",
// "-abc" and "--5" are values.
bool is_option_word(std::string_view arg) {
  return arg.size() > 2 && arg.starts_with("--") && std::isalpha(static_cast<unsigned char>(arg[2])) != 0;
}

const tool_option* find_option(const subcommand_grammar& grammar, std::string_view name) {
  const auto found = std::ranges::find(grammar.options, name, &tool_option::name);
  return found == grammar.options.end() ? nullptr : &*found;
}

// The option whose short name `arg` is ("-o"), or null.
const tool_option* short_option(const subcommand_grammar& grammar, std::string_view arg) {
  if (arg.size() != 2 || arg[0] != '-' || arg[1] == '-') return nullptr;
  const auto found = std::ranges::find(grammar.options, arg, &tool_option::short_name);
  return found == grammar.options.end() ? nullptr : &*found;
}

std::string see_help(const subcommand_grammar& grammar) {
  return " (see zvtextparser " + std::string(grammar.name) + " --help)";
}

}  // namespace

std::string exit_status_help() {
  std::string text = "Exit status:\n";
  for (const auto& [status, meaning] : exit_status_meanings) {
    text += "  " + std::to_string(status) + "  " + std::string(meaning) + "\n";
  }
  return text;
}

namespace {

std::string option_label(const tool_option& option) {
  std::string label(option.name);
  if (!option.value_name.empty()) label += " " + std::string(option.value_name);
  if (!option.short_name.empty()) label += " (" + std::string(option.short_name) + ")";
  return label;
}

}  // namespace

std::optional<std::string> parsed_arguments::value(std::string_view option) const {
  const auto found = options.find(option);
  if (found == options.end()) return std::nullopt;
  return found->second;
}

std::string option_list(const subcommand_grammar& grammar) {
  std::string list;
  for (const auto& option : grammar.options) list += option_label(option) + ", ";
  return list + "--help";
}

parsed_arguments parse_arguments(const subcommand_grammar& grammar, std::span<const std::string> args) {
  parsed_arguments parsed;
  parsed.subcommand = grammar.name;
  std::optional<std::string> mistake;  // the first one; help wins over it
  const auto fail = [&mistake, &grammar](std::string text) {
    if (!mistake) mistake = std::move(text) + see_help(grammar);
  };
  bool options_ended = false;
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& arg = args[i];
    if (!options_ended && arg == "--") {
      options_ended = true;
    } else if (!options_ended && (arg == "--help" || arg == "-h")) {
      parsed.help = true;
    } else if (!options_ended && (is_option_word(arg) || short_option(grammar, arg) != nullptr)) {
      const tool_option* by_short = short_option(grammar, arg);
      const auto equals = by_short != nullptr ? std::string::npos : arg.find('=');
      const std::string name = by_short != nullptr ? std::string(by_short->name) : arg.substr(0, equals);
      const tool_option* option = find_option(grammar, name);
      if (option == nullptr) {
        const std::optional<std::string> hint = flag_hint(name);
        fail("unknown option '" + name + "' for " + std::string(grammar.name) +
             (hint ? "; did you mean " + *hint + "?" : "") + "; its options are " + option_list(grammar) +
             ", and after \"--\" an argument such as " + name + " is a name or value");
      } else if (option->value_name.empty()) {
        if (equals != std::string::npos) fail(name + " takes no value");
        parsed.options[name];
      } else if (equals == std::string::npos && i + 1 == args.size()) {
        fail(name + " needs " + std::string(option->value_name) + " after it");
      } else if (parsed.has(name)) {
        fail(name + " may be given only once");
        if (equals == std::string::npos) ++i;
      } else {
        parsed.options[name] = equals == std::string::npos ? args[++i] : arg.substr(equals + 1);
      }
    } else if (!grammar.operand.empty() && !parsed.operand) {
      parsed.operand = arg;
    } else if (grammar.takes_pairs) {
      parsed.option_arguments.push_back(arg);
    } else {
      fail("unexpected argument '" + arg + "'");
    }
  }
  if (parsed.help) return parsed;
  if (mistake) throw usage_error(*mistake);
  if (grammar.operand_required && !grammar.operand.empty() && !parsed.operand) {
    throw usage_error(std::string(grammar.name) + " needs " + std::string(grammar.operand) + " (" +
                      std::string(grammar.operand_help) + ")" + see_help(grammar));
  }
  return parsed;
}

std::string subcommand_help(const subcommand_grammar& grammar) {
  struct row {
    std::string label;
    std::string_view help;
  };
  std::vector<row> arguments;
  if (!grammar.operand.empty()) arguments.push_back({std::string(grammar.operand), grammar.operand_help});
  if (grammar.takes_pairs) {
    arguments.push_back(
        {"NAME VALUE ...", "options for the library, in one call (zvtextparser help keys, zvtextparser help values)"});
  }
  std::vector<row> options;
  for (const auto& option : grammar.options) options.push_back({option_label(option), option.help});
  options.push_back({"-h, --help", "show this help"});

  std::size_t width = 0;
  for (const auto* rows : {&arguments, &options}) {
    for (const auto& r : *rows) width = std::max(width, r.label.size());
  }
  const auto table = [width](const std::vector<row>& rows) {
    std::string text;
    for (const auto& r : rows) {
      text += "  " + r.label + std::string(width + 2 - r.label.size(), ' ') + std::string(r.help) + "\n";
    }
    return text;
  };

  std::string text = "Usage: zvtextparser " + std::string(grammar.name);
  if (!grammar.operand.empty()) {
    text += grammar.operand_required ? " " + std::string(grammar.operand) : " [" + std::string(grammar.operand) + "]";
  }
  if (!grammar.options.empty()) text += " [OPTIONS]";
  if (grammar.takes_pairs) text += " [NAME VALUE ...]";
  text +=
      "\n\n" + std::string(grammar.summary) + "\n\nArguments:\n" + table(arguments) + "\nOptions:\n" + table(options);
  if (grammar.takes_pairs) {
    text +=
        "\nOptions may stand anywhere before \"--\", where an argument \"--word\" must be\n"
        "one of them; after \"--\" it is a name or value like any other. Negative\n"
        "numbers such as -1 are values wherever they stand.\n";
  }
  if (!grammar.details.empty()) text += "\n" + std::string(grammar.details);
  return text + "\n" + exit_status_help();
}

}  // namespace zvtool
