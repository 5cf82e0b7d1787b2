#include "name_value/option_table.hpp"

#include <locale>

#include "name_value/setters.hpp"
// The text constants are built ahead of the table in this unit.
#include "parser/constants.hpp"

namespace textio::options {

namespace {

// The upper-case fold of every byte under one locale. A locale's facets never
// change, so the table stays right for as long as that locale is the global
// one; each comparison checks that it still is.
struct upper_case_table {
  std::locale locale{std::locale::classic()};
  char upper[256]{};
  bool filled = false;

  const char* for_locale(const std::locale& current) {
    if (!filled || !(current == locale)) {
      const auto& ctype = std::use_facet<std::ctype<char>>(current);
      for (int b = 0; b < 256; ++b) upper[b] = ctype.toupper(static_cast<char>(b));
      locale = current;
      filled = true;
    }
    return upper;
  }
};

}  // namespace

namespace {

bool folded_less(std::string_view a, std::string_view b, const char* upper) {
  const std::size_t common = a.size() < b.size() ? a.size() : b.size();
  for (std::size_t i = 0; i < common; ++i) {
    const auto x = static_cast<signed char>(upper[static_cast<unsigned char>(a[i])]);
    const auto y = static_cast<signed char>(upper[static_cast<unsigned char>(b[i])]);
    if (x != y) return x < y;
  }
  return a.size() < b.size();
}

}  // namespace

const char* global_upper_case_table() {
  thread_local upper_case_table table;
  return table.for_locale(std::locale());
}

bool option_name_less::operator()(const std::string& a, const std::string& b) const {
  return folded_less(a, b, global_upper_case_table());
}

bool option_name_less::operator()(const folded_name& a, const std::string& b) const {
  return folded_less(a.text, b, a.upper);
}

bool option_name_less::operator()(const std::string& a, const folded_name& b) const {
  return folded_less(a, b.text, b.upper);
}

option_map::const_iterator find_option(const option_map& table, std::string_view name) {
  return table.find(folded_name{name, global_upper_case_table()});
}

// One row per key of the vocabulary.
const option_map option_table{
#define ZVTP_OPTION_ROW(key, setter, field, text, description) {#key, &setters::setter},
#define ZVTP_RULE_ROW(key, setter, match, member, enumeration, description, ...)                              \
  {#key, &setters::rule<enums::enumeration,                                                                   \
                        static_cast<void (parser::options::*)(enums::enumeration)>(&parser::options::member), \
                        flag_match::match, rule_flags::setter>},
    ZVTP_OPTION_VOCABULARY(ZVTP_OPTION_ROW, ZVTP_RULE_ROW)
#undef ZVTP_OPTION_ROW
#undef ZVTP_RULE_ROW
};

}  // namespace textio::options
