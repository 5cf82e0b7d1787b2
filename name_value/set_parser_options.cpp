#include "name_value/set_parser_options.hpp"

#include "errors/msg_id_exception.hpp"
#include "errors/tags.hpp"
#include "name_value/option_table.hpp"
#include "zvarray/matrix.hpp"

namespace textio::options {

void apply_struct_fields(const option_map& table, const hvArray_tag* value, textio::parser::options& opts) {
  const int field_count = value->get_number_of_struct_fields();
  if (field_count <= 0) return;
  // A struct array is read through its first element; an empty one has none.
  if (hvGetNumberOfElements(value) == 0) return;
  const char* const* names = value->get_struct_field_names();
  const auto* fields = static_cast<const hvArray_tag* const*>(hvGetData(value));
  for (int i = 0; i < field_count; ++i) {
    const auto entry = find_option(table, names[i]);
    if (entry == table.end()) continue;
    entry->second(fields[i], opts);
  }
}

void apply_name_value_pairs(const option_map& table, const hvArray_tag* const* args, std::int32_t count,
                            textio::parser::options& opts) {
  if ((static_cast<std::uint32_t>(count) & 1u) != 0) {
    throw_msg_id_exception(ZORVEK::textio::textio::OddNumberNVPairs());
  }
  if (count <= 0) return;
  // A null argument array reads as null names, which are unknown.
  const auto arg = [args](std::int32_t i) -> const hvArray_tag* { return args == nullptr ? nullptr : args[i]; };
  for (std::int32_t i = 0; i < count; i += 2) {
    const auto entry = find_option(table, matrix::get_string(arg(i)));
    if (entry == table.end()) {
      throw_msg_id_exception(ZORVEK::textio::textio::UnknownParameter(matrix::get_ustring(arg(i))));
    }
    entry->second(arg(i + 1), opts);
  }
}

void set_parser_options(const hvArray_tag* const* args, std::int32_t count, textio::parser::options& opts) {
  if (count == 1 && args != nullptr && hvGetClassID(args[0]) == hvStructClass) {
    apply_struct_fields(option_table, args[0], opts);
    return;
  }
  apply_name_value_pairs(option_table, args, count, opts);
}

}  // namespace textio::options
