#include "core/rounding.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

#include "core/error.h"

namespace tarno {

double RoundHalfEven(double value) {
  if (!std::isfinite(value)) return value;
  const double lower = std::floor(value);
  const double diff = value - lower;  // exact for doubles: both share the exponent range
  if (diff < 0.5) return lower;
  if (diff > 0.5) return lower + 1.0;
  // A tie: the even one of lower and lower + 1.
  return std::fmod(lower, 2.0) == 0.0 ? lower : lower + 1.0;
}

std::int32_t CLng(double value) {
  if (std::isnan(value)) throw OverflowError("Overflow: not a number");
  const double r = RoundHalfEven(value);
  if (r < -2147483648.0 || r > 2147483647.0) {
    throw OverflowError("Overflow: " + std::to_string(value) + " does not fit a 32-bit integer");
  }
  return static_cast<std::int32_t>(r);
}

std::int16_t CInt(double value) {
  if (std::isnan(value)) throw OverflowError("Overflow: not a number");
  const double r = RoundHalfEven(value);
  if (r < -32768.0 || r > 32767.0) {
    throw OverflowError("Overflow: " + std::to_string(value) + " does not fit a 16-bit integer");
  }
  return static_cast<std::int16_t>(r);
}

double Round(double value, int decimals) {
  if (decimals < 0) {
    throw InvalidArgumentError("Invalid procedure call: Round with " + std::to_string(decimals) +
                               " decimals");
  }
  if (!std::isfinite(value) || value == 0.0) return value;
  // The value's decimal form with 15 significant digits: d.dddddddddddddd e exponent.
  char buffer[48];
  std::snprintf(buffer, sizeof buffer, "%.14e", std::fabs(value));
  std::string digits;
  const char* p = buffer;
  for (; *p != 'e'; ++p) {
    if (*p != '.') digits.push_back(*p);
  }
  const int exponent = std::atoi(p + 1);
  // Digits kept: those down to the wanted decimal place.
  const long long keep = static_cast<long long>(exponent) + 1 + decimals;
  if (keep >= static_cast<long long>(digits.size())) return value;  // nothing to cut
  const bool negative = value < 0.0;
  if (keep < 0) return negative ? -0.0 : 0.0;
  const std::size_t cut = static_cast<std::size_t>(keep);
  bool up = false;
  if (digits[cut] > '5') {
    up = true;
  } else if (digits[cut] == '5') {
    const bool exactHalf = digits.find_first_not_of('0', cut + 1) == std::string::npos;
    const int previous = cut == 0 ? 0 : digits[cut - 1] - '0';
    up = !exactHalf || previous % 2 == 1;  // a tie goes to the even digit
  }
  std::string kept = digits.substr(0, cut);
  int newExponent = exponent;
  if (up) {
    int i = static_cast<int>(kept.size()) - 1;
    for (; i >= 0 && kept[static_cast<std::size_t>(i)] == '9'; --i) kept[static_cast<std::size_t>(i)] = '0';
    if (i >= 0) {
      ++kept[static_cast<std::size_t>(i)];
    } else {
      kept.insert(kept.begin(), '1');
      ++newExponent;
    }
  }
  if (kept.empty() || kept.find_first_not_of('0') == std::string::npos) {
    return negative ? -0.0 : 0.0;
  }
  // Back to binary: the kept digits with the exponent of their first digit.
  std::string text = kept;
  text.insert(1, 1, '.');
  text += 'e';
  text += std::to_string(newExponent);
  double result = 0.0;
  std::from_chars(text.data(), text.data() + text.size(), result);
  return negative ? -result : result;
}

double Int(double value) { return std::floor(value); }

double Fix(double value) { return std::trunc(value); }

}  // namespace tarno
