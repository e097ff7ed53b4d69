// Rounding and conversion of numbers, with the classic semantics that the file
// formats and the stored values depend on:
//
//   CLng, CInt   store a 64-bit float into a 32-bit or 16-bit integer, rounding to
//                nearest with ties to even; a result out of range (or a NaN) raises
//                OverflowError.
//   Round        rounds to a number of decimals, ties to even.
//   Int          the largest whole number not above the value (floor).
//   Fix          the whole part, dropping the fraction (truncation toward zero).
#pragma once

#include <cstdint>

namespace tarno {

// Rounds to the nearest whole number, ties to the even neighbour (2.5 -> 2,
// 3.5 -> 4, -2.5 -> -2). Infinities and NaN come back unchanged.
double RoundHalfEven(double value);

// Store into a 32-bit signed integer, ties to even. Throws OverflowError when the
// rounded value is outside -2147483648 .. 2147483647 or the value is not a number.
std::int32_t CLng(double value);

// Store into a 16-bit signed integer, ties to even. Throws OverflowError outside
// -32768 .. 32767.
std::int16_t CInt(double value);

// Rounds to `decimals` places (0 or more), ties to even at that place. The tie is
// judged on the value's decimal form with 15 significant digits, the precision in
// which numbers are shown and stored as text, so 2.675 rounds to 2.68 and 0.125 to
// 0.12, although 2.675 is held in binary just below the half. A value whose 15
// significant digits end above the wanted place is returned unchanged. Throws
// InvalidArgumentError for negative decimals.
double Round(double value, int decimals = 0);

// Floor and truncation, returning the whole number as a 64-bit float.
double Int(double value);
double Fix(double value);

}  // namespace tarno
