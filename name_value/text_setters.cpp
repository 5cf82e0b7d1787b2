// Setters of the options that take one text and store it as given: no
// decoding, so a backslash is an ordinary character here.
#include "name_value/setters.hpp"

#include "name_value/text_checks.hpp"
#include "zvarray/matrix.hpp"

namespace textio::options::setters {

void date_locale(const hvArray_tag* value, textio::parser::options& opts) {
  require_text(value, "DateLocale");
  opts.date_locale(matrix::get_ustring(value));
}

void decimal_separator(const hvArray_tag* value, textio::parser::options& opts) {
  require_one_character(value, "DecimalSeparator");
  const char16_t separator = static_cast<const char16_t*>(hvGetData(value))[0];
  opts.decimal_separator(separator);
}

// Reached under ExpChars and ExponentCharacter; it reports "ExpChars" for both.
void exp_chars(const hvArray_tag* value, textio::parser::options& opts) {
  require_text(value, "ExpChars");
  opts.exp_chars(matrix::get_ustring(value));
}

void thousands_separator(const hvArray_tag* value, textio::parser::options& opts) {
  require_text(value, "ThousandsSeparator");
  const ustring separator = matrix::get_ustring(value);
  opts.thousands_separator(separator);
}

}  // namespace textio::options::setters
