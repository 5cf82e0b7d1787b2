// The tool documents the option keys from a list of its own; it must hold
// exactly the keys of the option table.
#include "tools/option_keys.hpp"

#include <gtest/gtest.h>

#include <set>
#include <string>

#include "name_value/option_table.hpp"

namespace {

TEST(ToolOptionKeys, HoldExactlyTheKeysOfTheOptionTable) {
  std::set<std::string> tool_keys;
  for (const auto& k : zvtool::option_keys()) {
    EXPECT_TRUE(tool_keys.insert(std::string(k.key)).second) << "listed twice: " << k.key;
    EXPECT_FALSE(k.value_help.empty()) << "no description for " << k.key;
  }
  std::set<std::string> table_keys;
  for (const auto& [key, setter] : textio::options::option_table) table_keys.insert(key);
  EXPECT_EQ(tool_keys, table_keys);
}

}  // namespace
