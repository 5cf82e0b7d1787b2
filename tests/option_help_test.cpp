// The tool's key help against the library's option table: the same keys, and
// each rule option's flags, in the order the help lists them, are exactly
// what its setter accepts and stores as positions 0, 1, ...
#include "tools/help_text.hpp"

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "errors/tags.hpp"
#include "name_value/option_table.hpp"
#include "support/expect_message.hpp"
#include "support/record_fields.hpp"
#include "zvarray/value.hpp"

namespace {

TEST(OptionHelp, ListsTheTablesKeysAndEachRulesFlagsInPositionOrder) {
  std::set<std::string> help_keys;
  int rule_lines = 0;
  std::istringstream lines(zvtool::option_keys_help());
  std::string line;
  std::getline(lines, line);  // the title
  while (std::getline(lines, line)) {
    ASSERT_TRUE(line.starts_with("  ")) << line;
    const std::string key = line.substr(2, line.find(' ', 2) - 2);
    EXPECT_TRUE(help_keys.insert(key).second) << "listed twice: " << key;
    std::vector<std::string> flags;
    for (auto open = line.find('\''); open != std::string::npos;
         open = line.find('\'', line.find('\'', open + 1) + 1)) {
      flags.push_back(line.substr(open + 1, line.find('\'', open + 1) - open - 1));
    }
    if (flags.empty()) continue;
    ++rule_lines;
    for (std::size_t position = 0; position < flags.size(); ++position) {
      textio::parser::options record;
      test_support::set_rule_field(record, key, 7);
      test_support::apply_option(record, key, hv::Value::text_utf8(flags[position]));
      EXPECT_EQ(test_support::rule_field(record, key), static_cast<int>(position)) << key << " " << flags[position];
    }
    // The setter's refusal lists its flags: exactly those of the help.
    std::string list;
    for (const auto& flag : flags) list += (list.empty() ? "'" : ", '") + flag + "'";
    textio::parser::options record;
    EXPECT_MESSAGE(test_support::apply_option(record, key, hv::Value::text_utf8("zz")),
                   ZORVEK::textio::textio::BadTextFlag, test_support::text_arg(list + "\n"))
        << key;
  }
  EXPECT_EQ(rule_lines, 11);
  std::set<std::string> table_keys;
  for (const auto& [key, setter] : textio::options::option_table) table_keys.insert(key);
  EXPECT_EQ(help_keys, table_keys);
}

}  // namespace
