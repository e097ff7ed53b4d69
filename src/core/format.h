// Picture-mask number formatting.
//
// Every number that goes to a command file, an export or a message passes through a
// picture mask such as "#.0000000E+00 " or "######0.00 ", or through the general
// 15-digit form. The masks are part of the file formats: each caller passes the
// mask of its command exactly as written, trailing blanks included.
//
// Mask language (the classic Format picture):
//   0        a digit position that always shows a digit (a zero when there is none).
//   #        a digit position that shows a digit only when there is one: before the
//            point a leading zero is not shown, after the point a trailing zero
//            beyond the last "0" position is not shown.
//   .        the decimal point; it is written whenever the mask has one, so
//            "#####.##" gives "12." for 12 and "." for 0.
//   ,        between integer digit positions: thousands grouping ("#,###,##0.0").
//   E+ E- e+ e-  after a digit position: scientific notation. The digit positions
//            behind it ("00") give the least number of exponent digits; "+" writes
//            the exponent's sign always, "-" only when it is negative; "e" writes a
//            lower-case e.
//   \c       the character c as it is; "text" a quoted literal.
//   anything else is a literal, written where it stands ("000000_" -> "000042_").
//
// Rounding in masks is half away from zero on the exact binary value (2.5 with "0"
// gives "3", 0.125 with "0.00" gives "0.13"), as the classic Format does. This
// differs on purpose from Round and CLng (core/rounding.h), which round ties to even.
//
// Sign: a negative value gets "-" directly in front of its first digit position,
// behind any literal text that leads the mask. A value that rounds to zero in the
// mask (and minus zero) is written without a sign, so -0.0 and -0.001 with "0.00"
// give "0.00".
//
// Scientific masks with more than one digit position before the point
// ("##.000000E+00 ", "#0.000000E+00 "): the mantissa is always normalised to ONE
// digit before the point, the same as with "#.000000E+00 ". The extra position only
// decides what zero looks like: a "0" position writes "0" for zero, a "#" nothing.
// So 12.5 with "##.000000E+00 " is "1.250000E+01 ", and 0 with "#0.000000E+00 " is
// "0.000000E+00 ". Every result therefore reads back as an ordinary real number
// with the mask's number of significant digits.
//
// Huge and tiny values keep a valid exponent with at least the mask's exponent
// digits: 1e300 with "#.0000000E+00" is "1.0000000E+300", 1e-300 "1.0000000E-300".
// A fixed mask writes all integer digits of a large value (1e20 with "0" writes 21
// digits). NaN and infinities, which a stored value should never be, are written
// as "NaN", "Inf" and "-Inf" in place of the number, with the mask's literals.
#pragma once

#include <string>
#include <string_view>

namespace tarno {

// Formats `value` through the picture `mask`. An empty mask, or the named format
// "General Number", gives GeneralNumber(value). The named formats "Fixed" ("0.00"),
// "Standard" ("#,##0.00") and "Scientific" ("0.00E+00") are understood as well.
std::string FormatNumber(double value, std::string_view mask);

// The general form of a 64-bit float with up to 15 significant digits, as the
// conversion of a number to text writes it: no trailing zeros, a leading zero
// before the point of a number below one ("0.5", "-0.25"), fixed notation for
// decimal exponents from -4 to 14 and scientific notation otherwise ("1E+15",
// "1.5E-05", "-2.5E+20"; the exponent has a sign and at least two digits).
// Zero is "0". This is the form used in message texts and for the "General Number"
// format.
std::string GeneralNumber(double value);

// The same number as the classic Str function writes it: a leading blank for a
// value not below zero (or the "-"), and no zero before the point of a number below
// one: " 12.5", "-12.5", " .5", "-.25", " 0", " 1E+15".
std::string StrNumber(double value);

// A number without a mask in a command file: StrNumber followed by one blank,
// " 12.5 ", "-.5 ". The solver reads numbers without a leading digit.
std::string CommandNumber(double value);

}  // namespace tarno
