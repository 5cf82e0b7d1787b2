#include "name_value/host_value_tests.hpp"

#include <cmath>
#include <limits>

#include "errors/msg_id_exception.hpp"
#include "errors/tags.hpp"

namespace textio::options {
namespace {

namespace msg = ZORVEK::textio::textio;

constexpr double two_to_63 = 9223372036854775808.0;
constexpr double two_to_64 = 18446744073709551616.0;

// Steps 1 to 3 of the integer tests; the sign test differs.
bool is_double_scalar(const hvArray_tag* value) {
  return value != nullptr && hvIsScalar(value) && hvGetClassID(value) == hvDoubleClass;
}

}  // namespace

void require_non_negative_int(const hvArray_tag* value) {
  if (!is_double_scalar(value)) throw_msg_id_exception(msg::ExpectedNonNegativeScalarInt());
  const double x = hvGetScalar(value);
  if (!(x >= 0.0) || !is_integer_value(x)) throw_msg_id_exception(msg::ExpectedNonNegativeScalarInt());
}

void require_positive_int(const hvArray_tag* value) {
  if (!is_double_scalar(value)) throw_msg_id_exception(msg::ExpectedPositiveScalarInt());
  const double x = hvGetScalar(value);
  if (!(x > 0.0) || !is_integer_value(x)) throw_msg_id_exception(msg::ExpectedPositiveScalarInt());
}

void require_logical(const hvArray_tag* value) {
  if (value == nullptr || !hvIsLogicalScalar(value)) throw_msg_id_exception(msg::ExpectedScalarLogical());
}

bool is_integer_value(double x) {
  if (std::isnan(x) || std::fabs(x) > std::numeric_limits<double>::max()) return false;
  return fix_toward_zero(x) == x;
}

double fix_toward_zero(double x) {
  if (std::fabs(x) <= 2147483647.0) {
    const auto truncated = static_cast<double>(static_cast<std::int32_t>(x));
    return truncated == 0.0 ? x * 0.0 : truncated;
  }
  if (std::fabs(x) < 4503599627370496.0) return static_cast<double>(static_cast<std::int64_t>(x));
  return x;
}

std::uint64_t to_unsigned_64(double x) {
  std::uint64_t high = 0;
  if (x >= two_to_63) {
    x -= two_to_63;
    if (x < two_to_63) high = 0x8000000000000000ull;
  }
  // Out of the signed range (2^64 and more, or below -2^63): the x86
  // conversion's "integer indefinite" value, without undefined behaviour.
  if (!(x < two_to_63) || !(x >= -two_to_63)) return 0x8000000000000000ull;
  return static_cast<std::uint64_t>(static_cast<std::int64_t>(x)) + high;
}

std::uint64_t non_negative_count(const hvArray_tag* value) {
  require_non_negative_int(value);
  const double x = hvGetScalar(value);
  if (x >= two_to_64) throw_msg_id_exception(msg::ExpectedNonNegativeScalarInt());
  return to_unsigned_64(x);
}

std::uint64_t positive_count(const hvArray_tag* value) {
  require_positive_int(value);
  const double x = hvGetScalar(value);
  if (x >= two_to_64) throw_msg_id_exception(msg::ExpectedPositiveScalarInt());
  return to_unsigned_64(x);
}

}  // namespace textio::options
