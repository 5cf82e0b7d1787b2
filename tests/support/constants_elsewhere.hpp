// Addresses of a few text constants as another translation unit sees them.
#pragma once

#include <vector>

#include "zvcore/ustring.hpp"

namespace test_support {

struct constant_addresses {
  const ustring* digit_chars;
  const std::vector<ustring>* empty_text_list;
  const ustring* type_name_char;
};

constant_addresses constants_elsewhere();

}  // namespace test_support
