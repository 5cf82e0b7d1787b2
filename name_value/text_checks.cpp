#include "name_value/text_checks.hpp"

#include <cstdint>

#include "errors/msg_id_exception.hpp"
#include "errors/tags.hpp"

namespace textio::options {
namespace {

namespace msg = ZORVEK::textio::textio;

bool is_text_or_list(const hvArray_tag* value) { return is_text(value) || is_text_list(value); }

}  // namespace

bool is_text(const hvArray_tag* value) {
  // A null value has no class, so it fails the first test.
  if (hvGetClassID(value) != hvCharClass) return false;
  if (hvGetNumberOfDimensions(value) != 2) return false;
  const std::uint64_t rows = hvGetM(value);
  if (rows == 1) return true;
  if (rows != 0) return false;
  return hvGetN(value) == 0;
}

bool is_text_list(const hvArray_tag* value) {
  if (hvGetClassID(value) != hvCellClass) return false;
  const std::uint64_t count = hvGetNumberOfElements(value);
  if (count == 0) return true;
  const auto* elements = static_cast<const hvArray_tag* const*>(hvGetData(value));
  for (std::uint64_t i = 0; i < count; ++i) {
    // A slot without a value is null and fails is_text.
    if (!is_text(elements[i])) return false;
  }
  return true;
}

void require_text(const hvArray_tag* value, const char* option) {
  if (!is_text(value)) throw_msg_id_exception(msg::InvalidStringProperty(option));
}

void require_one_character(const hvArray_tag* value, const char* option) {
  if (!is_text(value) || hvGetNumberOfElements(value) != 1) {
    throw_msg_id_exception(msg::InvalidStringProperty(option));
  }
}

void require_text_or_list(const hvArray_tag* value, const char* option) {
  if (!is_text_or_list(value)) throw_msg_id_exception(msg::InvalidStringOrCellStringProperty(option));
}

void require_delimiter_value(const hvArray_tag* value) {
  if (!is_text_or_list(value)) throw_msg_id_exception(msg::DelimiterType());
}

}  // namespace textio::options
