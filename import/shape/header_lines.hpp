// The names, units and descriptions lines of a table (VariableNamesLine,
// VariableUnitsLine, VariableDescriptionsLine, or names given outright) and
// the header they make, with the variables' types when values are converted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "import/output.hpp"
#include "import/text_format.hpp"
#include "import/value_types.hpp"
#include "parser/options.hpp"

namespace textio::import {

// A text as an output value in the reader's units.
template <class CharT>
output_value text_value(std::basic_string_view<CharT> t) {
  output_value v;
  v.kind = value_kind::text;
  if constexpr (sizeof(CharT) == 1) {
    v.bytes = t;
  } else {
    v.utf16 = true;
    v.units = t;
  }
  return v;
}

template <class CharT>
class header_lines {
 public:
  using string = std::basic_string<CharT>;

  // `opts`: the reader's effective options; names given in `text` win over a
  // names line.
  header_lines(const textio::parser::options& opts, const text_format& text);

  bool is_meta_line(std::uint64_t line) const noexcept {
    return line == names_line_ || line == units_line_ || line == descriptions_line_;
  }

  // Takes the field texts of meta line `line`; a names line that gives the
  // names sets the variable count when none is known yet.
  void take(std::uint64_t line, std::vector<string> texts, std::optional<std::size_t>& variables);

  const std::vector<string>& names() const noexcept { return names_; }

  // The header without the variables marked in `omitted`; `typing`, when not
  // empty, gives the types of the first variables (the rest are text) and
  // `variables` the variable count.
  table_header values(const std::vector<bool>& omitted, std::span<const variable_typing> typing,
                      std::optional<std::size_t> variables) const;

 private:
  std::uint64_t names_line_ = 0;
  std::uint64_t units_line_ = 0;
  std::uint64_t descriptions_line_ = 0;
  bool names_given_ = false;
  std::vector<string> names_;
  std::vector<string> units_;
  std::vector<string> descriptions_;
};

}  // namespace textio::import
