#include "tools/failure_hints.hpp"

#include <algorithm>
#include <cctype>
#include <vector>

#include "name_value/option_vocabulary.hpp"
#include "tools/apply_options.hpp"
#include "tools/host_values.hpp"

namespace zvtool {
namespace {

std::string lower(std::string_view text) {
  std::string out(text);
  for (auto& c : out) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return out;
}

std::size_t edit_distance(std::string_view a, std::string_view b) {
  std::vector<std::size_t> row(b.size() + 1);
  for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= a.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= b.size(); ++j) {
      const std::size_t above = row[j];
      row[j] = std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[b.size()];
}

bool same_key(std::string_view a, std::string_view b) { return lower(a) == lower(b); }

std::string describe_class(const hv::Value& value) {
  if (value.get() == nullptr) return "no value (null)";
  switch (hvGetClassID(value.get())) {
    case hvDoubleClass:
      return hvGetNumberOfElements(value.get()) == 1 ? "a number" : "numbers";
    case hvLogicalClass:
      return "a logical";
    default:
      return "JSON";
  }
}

// A value that JSON read as something other than text, that the option takes
// as text: say so, and how to write the text.
std::string text_hint(const std::string& name, const std::string& written, const hv::Value& value,
                      const textio::parser::options& before) {
  if (value.get() != nullptr && hvGetClassID(value.get()) == hvCharClass) return {};
  textio::parser::options scratch = before;
  const hv::Value pair[] = {text_value(name), text_value(written)};
  if (apply_options(pair, scratch)) return {};
  return "The value " + written + " was read as " + describe_class(value) + "; write '\"" + written +
         "\"' to give it as text.";
}

}  // namespace

std::optional<std::string_view> near_key(std::string_view name) {
  const std::string wanted = lower(name);
  std::optional<std::string_view> nearest;
  std::size_t best = 3;
  std::size_t prefixed = 0;
  std::string_view prefix_key;
  for (const auto& option : textio::options::option_descriptions) {
    const std::string key = lower(option.key);
    const std::size_t distance = edit_distance(wanted, key);
    if (distance < best) {
      best = distance;
      nearest = option.key;
    }
    if (wanted.size() >= 3 && key.starts_with(wanted)) {
      ++prefixed;
      prefix_key = option.key;
    }
  }
  if (nearest && best < wanted.size()) return nearest;
  if (prefixed == 1) return prefix_key;
  return std::nullopt;
}

std::optional<std::string> flag_hint(std::string_view flag) {
  static constexpr std::pair<std::string_view, std::string_view> familiar[] = {
      {"--sep", "`Delimiter ';'`"},
      {"--separator", "`Delimiter ';'`"},
      {"--delimiter", "`Delimiter ';'`"},
      {"--delim", "`Delimiter ';'`"},
      {"--header", "`NumHeaderLines 1 VariableNamesLine 1`"},
      {"--skip", "`--skip-rows N` (records) or `NumHeaderLines N` (lines)"},
      {"--skiprows", "`--skip-rows N`"},
      {"--nrows", "`--rows N`"},
      {"--n-rows", "`--rows N`"},
      {"--head", "`--rows N`"},
      {"--limit", "`--rows N`"},
      {"--columns", "`--select NAMES`"},
      {"--usecols", "`--select NAMES`"},
      {"--fields", "`--select NAMES`"},
      {"--out", "`-o FILE`"},
      {"--tsv", "`--format tsv`"},
      {"--csv", "`--format csv`"},
      {"--json", "`--format jsonl`"},
  };
  const std::string wanted = lower(flag);
  for (const auto& [name, hint] : familiar) {
    if (wanted == name) return std::string(hint);
  }
  // An option key written as a flag: --num-header-lines, --NumHeaderLines.
  std::string key;
  for (const char c : std::string_view(wanted).substr(2)) {
    if (c != '-' && c != '_') key += c;
  }
  for (const auto& option : textio::options::option_descriptions) {
    if (lower(option.key) == key) return "`" + std::string(option.key) + " VALUE` (a name and a value, no dashes)";
  }
  return std::nullopt;
}

void explain_failure(message_failure& failure, std::span<const std::string> texts, std::span<const hv::Value> values) {
  if (failure.id.key == "UnknownParameter" && !failure.id.args.empty()) {
    const auto& argument = failure.id.args[0];
    std::string name;
    if (const auto* bytes = std::get_if<std::string>(&argument)) name = *bytes;
    if (const auto* units = std::get_if<ustring>(&argument)) name = foundation::core::unicode::to_utf8(*units);
    if (const auto key = near_key(name)) failure.hint = "Did you mean '" + std::string(*key) + "'?";
    return;
  }
  if (texts.size() != values.size() || texts.size() % 2 != 0) return;
  textio::parser::options record;
  for (std::size_t i = 0; i < texts.size(); i += 2) {
    const textio::parser::options before = record;
    const auto refused = apply_options(values.subspan(i, 2), record);
    if (!refused) continue;
    if (refused->identifier != failure.identifier) return;
    failure.option = texts[i];
    failure.hint = text_hint(texts[i], texts[i + 1], values[i + 1], before);
    if (failure.hint.empty() && same_key(texts[i], "DecimalSeparator")) {
      failure.hint = "DecimalSeparator takes exactly one character.";
    }
    return;
  }
}

}  // namespace zvtool
