#include "import/shape/header_lines.hpp"

#include <algorithm>
#include <utility>

#include "zvcore/ustring.hpp"

namespace textio::import {

template <class CharT>
header_lines<CharT>::header_lines(const textio::parser::options& opts, const text_format& text)
    : names_line_(opts.variable_names_line()),
      units_line_(opts.variable_units_line()),
      descriptions_line_(opts.variable_descriptions_line()),
      names_given_(!text.variable_names.empty()) {
  for (const std::string& name : text.variable_names) {
    if constexpr (sizeof(CharT) == 1) {
      names_.push_back(name);
    } else {
      names_.push_back(foundation::core::unicode::to_utf16(name));
    }
  }
}

template <class CharT>
void header_lines<CharT>::take(std::uint64_t line, std::vector<string> texts, std::optional<std::size_t>& variables) {
  if (line == names_line_ && !names_given_) {
    names_ = texts;
    if (!variables) variables = names_.size();
  }
  if (line == units_line_) units_ = texts;
  if (line == descriptions_line_) descriptions_ = std::move(texts);
}

template <class CharT>
table_header header_lines<CharT>::values(const std::vector<bool>& omitted, std::span<const variable_typing> typing,
                                         std::optional<std::size_t> variables) const {
  table_header h;
  const auto fill = [&](const std::vector<string>& texts, std::vector<output_value>& out) {
    for (std::size_t i = 0; i < texts.size(); ++i) {
      if (i < omitted.size() && omitted[i]) continue;
      out.push_back(text_value<CharT>(texts[i]));
    }
  };
  fill(names_, h.names);
  fill(units_, h.units);
  fill(descriptions_, h.descriptions);
  if (!typing.empty()) {
    const std::size_t count = std::max({typing.size(), names_.size(), variables.value_or(0)});
    for (std::size_t i = 0; i < count; ++i) {
      if (i < omitted.size() && omitted[i]) continue;
      const std::string_view name = type_name(i < typing.size() ? typing[i].type : value_type::string);
      if (h.types.empty() || h.types.back().name != name) h.types.push_back({name, 0});
      ++h.types.back().count;
    }
  }
  return h;
}

template class header_lines<char>;
template class header_lines<char16_t>;

}  // namespace textio::import
