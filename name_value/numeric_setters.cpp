// Setters of the count, line-number, logical and width options, and of the two
// keys that are accepted and ignored.
#include "name_value/setters.hpp"

#include <cmath>
#include <cstring>
#include <vector>

#include "errors/msg_id_exception.hpp"
#include "errors/tags.hpp"
#include "name_value/host_value_tests.hpp"

namespace textio::options::setters {
namespace {

namespace msg = ZORVEK::textio::textio;

bool first_logical(const hvArray_tag* value) { return hvGetLogicals(value)[0] != 0; }

// An element of a double width list: a non-negative integer below 2^64.
bool is_width(double x) { return x >= 0.0 && x < 18446744073709551616.0 && is_integer_value(x); }

}  // namespace

void num_header_lines(const hvArray_tag* value, textio::parser::options& opts) {
  const std::uint64_t n = non_negative_count(value);
  opts.num_header_lines(n);
}

void num_variables(const hvArray_tag* value, textio::parser::options& opts) {
  const std::uint64_t n = non_negative_count(value);
  opts.num_variables(n);
  opts.detecting_num_variables(false);
}

void data_line(const hvArray_tag* value, textio::parser::options& opts) {
  // DataLine counts lines from 1; the record holds the lines ahead of it.
  const std::uint64_t line = positive_count(value);
  opts.num_header_lines(line - 1);
}

void variable_names_line(const hvArray_tag* value, textio::parser::options& opts) {
  opts.variable_names_line(non_negative_count(value));
}

void variable_units_line(const hvArray_tag* value, textio::parser::options& opts) {
  opts.variable_units_line(non_negative_count(value));
}

void variable_descriptions_line(const hvArray_tag* value, textio::parser::options& opts) {
  opts.variable_descriptions_line(non_negative_count(value));
}

void multiple_delims_as_one(const hvArray_tag* value, textio::parser::options& opts) {
  require_logical(value);
  const bool join = first_logical(value);
  opts.consecutive_delim_rule(static_cast<enums::ConsecutiveDelimitersRule>(join ? 1 : 0));
  opts.leading_delim_rule(static_cast<enums::LeadingDelimiterRule>(join ? 1 : 0));
}

void trim_non_numeric(const hvArray_tag* value, textio::parser::options& opts) {
  require_logical(value);
  opts.trim_non_numeric(first_logical(value));
}

// Widths come as uint64 elements, or as doubles holding non-negative integers;
// a value without elements empties the list. Anything else is refused before
// the record is touched.
void variable_widths(const hvArray_tag* value, textio::parser::options& opts) {
  if (value == nullptr) throw_msg_id_exception(msg::ExpectedNonNegativeScalarInt());
  const std::uint64_t n = hvGetNumberOfElements(value);
  std::vector<std::uint64_t> widths;
  if (n != 0) {
    switch (hvGetClassID(value)) {
      case hvUint64Class:
        widths.resize(n);
        std::memcpy(widths.data(), hvGetData(value), n * sizeof(std::uint64_t));
        break;
      case hvDoubleClass: {
        const auto* x = static_cast<const double*>(hvGetData(value));
        widths.reserve(n);
        for (std::uint64_t i = 0; i < n; ++i) {
          if (!is_width(x[i])) throw_msg_id_exception(msg::ExpectedNonNegativeScalarInt());
          widths.push_back(to_unsigned_64(x[i]));
        }
        break;
      }
      default:
        throw_msg_id_exception(msg::ExpectedNonNegativeScalarInt());
    }
  }
  opts.field_widths(std::move(widths));
}

void ignored_option(const hvArray_tag*, textio::parser::options&) {}

}  // namespace textio::options::setters
