// Reading one file in parts that are read apart (on other processes or
// machines): a plan made once (options, format and types, detected or
// given), the record starts at or after each block boundary, and a part
// read from its start up to the next part's. A quoted field with line breaks
// that crosses a boundary belongs to the part where its record starts.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "import/read.hpp"
#include "import/reading/table_reader.hpp"

namespace zvpy {

struct read_plan {
  // NAME VALUE pairs that give the options record read with.
  std::vector<std::string> option_pairs;
  textio::import::text_format format;
  std::vector<std::string> names;  // the variable names
  std::vector<textio::import::variable_typing> types;
};

// The plan for reading `path` with `options` and `settings` (detection,
// given choices, types) as read_table would read it.
read_plan plan_read(const std::string& path, const textio::parser::options& options,
                    const textio::import::read_settings& settings, const std::optional<std::string>& types_json);

// Where the parts of `path` start: the first at the file's start (offset 0),
// then the state at the first record that starts at or after each multiple
// of `block_bytes`. Only the first when the file cannot be read in parts
// (not UTF-8, not a regular file, a table end, rules that keep the table).
// Reads the file once.
std::vector<textio::import::part_state> part_starts(const std::string& path, const read_plan& plan,
                                                    std::uint64_t block_bytes);

// The records of `path` from `start` (the file's start when its offset is
// 0) up to the first record that starts at or after `stop` (none: the end).
textio::import::arrow_table read_part(const std::string& path, const read_plan& plan,
                                      const textio::import::part_state& start, std::optional<std::uint64_t> stop);

}  // namespace zvpy
