// The numeric and logical value tests shared by the setters, and the one
// conversion from a tested double to an unsigned 64-bit count.
#pragma once

#include <cstdint>

#include "zvarray/hv_array.hpp"

namespace textio::options {

// Pass when the value is a double scalar holding an integer >= 0 (or > 0);
// throw ExpectedNonNegativeScalarInt (ExpectedPositiveScalarInt) otherwise.
void require_non_negative_int(const hvArray_tag* value);
void require_positive_int(const hvArray_tag* value);
// Pass for a 1-by-1 logical; throw ExpectedScalarLogical otherwise.
void require_logical(const hvArray_tag* value);

// True for a finite x without a fractional part. Every double of magnitude
// 2^52 or more counts as an integer.
bool is_integer_value(double x);
// x truncated toward zero; a zero result keeps the sign of x.
double fix_toward_zero(double x);
// x (tested, non-negative, below 2^64) as an unsigned 64-bit integer. Values
// from 2^63 up convert exactly. Anything from 2^64 up gives
// 0x8000000000000000, as the processor's truncating conversion would; the
// setters refuse such values before converting.
std::uint64_t to_unsigned_64(double x);

// The tested count of a setter: the value passes require_non_negative_int (or
// require_positive_int) and is below 2^64, and is converted with
// to_unsigned_64. The test's failure is thrown for anything else.
std::uint64_t non_negative_count(const hvArray_tag* value);
std::uint64_t positive_count(const hvArray_tag* value);

}  // namespace textio::options
