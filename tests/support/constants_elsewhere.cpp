#include "support/constants_elsewhere.hpp"

#include "parser/constants.hpp"

namespace test_support {

constant_addresses constants_elsewhere() {
  return {&textio::parser::digit_chars, &textio::parser::empty_text_list, &textio::parser::type_name_char};
}

}  // namespace test_support
