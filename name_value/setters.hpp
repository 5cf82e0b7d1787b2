// The option setters, one per key of the option vocabulary (ExpChars and
// ExponentCharacter share one, as do EmptyValue and ReturnOnError). A setter
// tests the value, converts it into a temporary and writes the record last.
// They are reached only through the option table.
#pragma once

#include <tuple>

#include "name_value/flag_matching.hpp"
#include "name_value/option_vocabulary.hpp"
#include "parser/options.hpp"
#include "zvarray/hv_array.hpp"

namespace textio::options::setters {

// Counts, line numbers, logicals, widths, single texts, escape-decoded texts
// and the ignored keys, each defined in the file of its kind.
#define ZVTP_DECLARE_SETTER(key, setter, field, text, description) \
  void setter(const hvArray_tag* value, textio::parser::options& opts);
#define ZVTP_NOT_DECLARED(key, setter, match, member, enumeration, description, ...)
ZVTP_OPTION_VOCABULARY(ZVTP_DECLARE_SETTER, ZVTP_NOT_DECLARED)
#undef ZVTP_DECLARE_SETTER
#undef ZVTP_NOT_DECLARED

// The setter of every rule option: matches the value against the option's
// flags, exactly or by abbreviation, and stores the position as the
// enumerator. A failed match throws BadTextFlag before the record is touched.
template <class Enumeration, void (textio::parser::options::*write)(Enumeration), flag_match match, const auto& flags>
void rule(const hvArray_tag* value, textio::parser::options& opts) {
  const std::uint8_t position = std::apply(
      [value](auto... flag) {
        if constexpr (match == flag_match::exact) {
          return parse_exact_flag(value, flag...);
        } else {
          return parse_abbreviated_flag(value, flag...);
        }
      },
      flags);
  (opts.*write)(static_cast<Enumeration>(position));
}

}  // namespace textio::options::setters
