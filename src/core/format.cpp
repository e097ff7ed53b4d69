#include "core/format.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <vector>

namespace tarno {

namespace {

// A mask shows at most this many significant digits; positions beyond them are
// written as zeros. The cut is the one rounding of the value.
constexpr int kMaxSignificant = 15;

// ---------------------------------------------------------------------------
// Decimal digits of a double.
//
// The digits come from printf's %e conversion, which is exact in glibc for any
// precision. Rounding is then done here, half away from zero, on the digit string:
// printf itself would round exact ties to even.

struct Digits {
  std::string digits;  // significant digits, the first one not zero (empty for zero)
  int exponent = 0;    // decimal exponent of the first digit: value = d.ddd x 10^exponent
};

// Writes `magnitude` (> 0, finite) with `precision` digits after the point in %e
// form and splits it into digits and exponent.
Digits PrintfDigits(double magnitude, int precision) {
  std::vector<char> buffer(static_cast<std::size_t>(precision) + 32);
  std::snprintf(buffer.data(), buffer.size(), "%.*e", precision, magnitude);
  Digits result;
  const char* p = buffer.data();
  for (; *p != 'e' && *p != '\0'; ++p) {
    if (*p >= '0' && *p <= '9') result.digits.push_back(*p);
  }
  if (*p == 'e') result.exponent = std::atoi(p + 1);
  return result;
}

// The decimal exponent of the first significant digit of `magnitude` (> 0).
int DecimalExponent(double magnitude) { return PrintfDigits(magnitude, 20).exponent; }

// Decides whether the digits following a cut round the kept part up, half away from
// zero. Returns -1 when the tail is "5" followed by zeros only, which in a
// truncated expansion might still hide a non-zero digit further on.
int RoundsUp(std::string_view tail) {
  if (tail.empty()) return 0;
  if (tail[0] > '5') return 1;
  if (tail[0] < '5') return 0;
  for (std::size_t i = 1; i < tail.size(); ++i) {
    if (tail[i] != '0') return 1;
  }
  return -1;
}

// `magnitude` (> 0, finite) rounded half away from zero to `count` significant
// digits, counted from the first digit of its exponent `exponent`. `count` may be 0
// (the value rounds to 0 or to one unit in the place just above its first digit) or
// negative (the value rounds to zero). The result has exactly `count` digits, unless
// it became zero (empty digits); a carry out of the first digit gives "1000..." with
// the exponent raised by one.
Digits RoundToDigits(double magnitude, int count) {
  if (count < 0) return {};
  constexpr int kGuard = 25;
  Digits printed = PrintfDigits(magnitude, std::max(count, 1) - 1 + kGuard);
  std::string_view all = printed.digits;
  int up = RoundsUp(all.substr(static_cast<std::size_t>(count)));
  if (up < 0) {
    // A possible tie: look at the exact expansion. A double has at most 767
    // significant decimal digits.
    Digits exact = PrintfDigits(magnitude, 800);
    const std::size_t cut = std::min(static_cast<std::size_t>(count), exact.digits.size());
    up = RoundsUp(std::string_view(exact.digits).substr(cut));
    if (up < 0) up = 1;  // an exact tie goes away from zero
    printed.digits = exact.digits;
    printed.exponent = exact.exponent;
  }
  Digits result;
  result.exponent = printed.exponent;
  result.digits = printed.digits.substr(0, static_cast<std::size_t>(count));
  // Beyond the exact expansion every digit is zero.
  result.digits.resize(static_cast<std::size_t>(count), '0');
  if (up == 1) {
    int i = count - 1;
    for (; i >= 0; --i) {
      if (result.digits[static_cast<std::size_t>(i)] == '9') {
        result.digits[static_cast<std::size_t>(i)] = '0';
      } else {
        ++result.digits[static_cast<std::size_t>(i)];
        break;
      }
    }
    if (i < 0) {
      // Carry out of the first digit: 999 -> 1000, one place up.
      if (count > 0) result.digits.pop_back();
      result.digits.insert(result.digits.begin(), '1');
      result.exponent += 1;
    }
  }
  if (result.digits.find_first_not_of('0') == std::string::npos) return {};
  return result;
}

// ---------------------------------------------------------------------------
// Mask parsing.

struct Token {
  enum Kind { kHash, kZero, kLiteral } kind;
  std::string text;  // for literals
};

struct Mask {
  std::string prefix;            // literal text before the first digit position
  std::vector<Token> integer;    // digit positions and inner literals before the point
  bool hasPoint = false;
  std::vector<Token> fraction;   // digit positions and inner literals after the point
  bool grouping = false;         // a "," among the integer positions
  bool scientific = false;
  char exponentLetter = 'E';
  bool exponentPlus = false;     // "E+": always write the exponent's sign
  int exponentDigits = 0;        // least number of exponent digits
  std::string suffix;            // literal text after the last digit position
  bool anyDigit = false;

  int IntegerPositions() const {
    return static_cast<int>(std::count_if(integer.begin(), integer.end(),
                                          [](const Token& t) { return t.kind != Token::kLiteral; }));
  }
  int FractionPositions() const {
    return static_cast<int>(std::count_if(fraction.begin(), fraction.end(),
                                          [](const Token& t) { return t.kind != Token::kLiteral; }));
  }
  // Decimals always shown: up to and including the last "0" position after the point.
  int MinimumDecimals() const {
    int position = 0, minimum = 0;
    for (const Token& t : fraction) {
      if (t.kind == Token::kLiteral) continue;
      ++position;
      if (t.kind == Token::kZero) minimum = position;
    }
    return minimum;
  }
};

bool IsDigitPosition(char c) { return c == '#' || c == '0'; }

Mask ParseMask(std::string_view mask) {
  Mask m;
  // Literal text collected since the last digit position; where it lands depends on
  // whether another digit position follows.
  std::string pending;
  enum { kPrefix, kInteger, kFraction, kExponent } part = kPrefix;

  auto flushPendingInto = [&](std::vector<Token>& tokens) {
    if (!pending.empty()) {
      tokens.push_back({Token::kLiteral, pending});
      pending.clear();
    }
  };
  auto addDigit = [&](char c) {
    const Token token{c == '0' ? Token::kZero : Token::kHash, {}};
    if (part == kPrefix) {
      m.prefix += pending;
      pending.clear();
      part = kInteger;
    }
    if (part == kInteger) {
      flushPendingInto(m.integer);
      m.integer.push_back(token);
    } else {
      flushPendingInto(m.fraction);
      m.fraction.push_back(token);
    }
    m.anyDigit = true;
  };

  for (std::size_t i = 0; i < mask.size(); ++i) {
    const char c = mask[i];
    if (part == kExponent) {
      if (IsDigitPosition(c) && pending.empty()) {
        ++m.exponentDigits;
      } else {
        pending += c;
      }
      continue;
    }
    if (c == '\\' && i + 1 < mask.size()) {
      pending += mask[++i];
    } else if (c == '"') {
      const std::size_t close = mask.find('"', i + 1);
      const std::size_t end = close == std::string_view::npos ? mask.size() : close;
      pending.append(mask.substr(i + 1, end - i - 1));
      i = end;
    } else if (IsDigitPosition(c)) {
      addDigit(c);
    } else if (c == '.' && !m.hasPoint && (part == kPrefix || part == kInteger)) {
      if (part == kPrefix) {
        m.prefix += pending;
        pending.clear();
      } else {
        flushPendingInto(m.integer);
      }
      m.hasPoint = true;
      part = kFraction;
    } else if (c == ',' && part == kInteger && i + 1 < mask.size() &&
               (IsDigitPosition(mask[i + 1]) || mask[i + 1] == ',')) {
      m.grouping = true;
    } else if ((c == 'E' || c == 'e') && m.anyDigit && i + 1 < mask.size() &&
               (mask[i + 1] == '+' || mask[i + 1] == '-')) {
      if (part == kInteger) flushPendingInto(m.integer);
      if (part == kFraction) flushPendingInto(m.fraction);
      m.scientific = true;
      m.exponentLetter = c;
      m.exponentPlus = mask[i + 1] == '+';
      ++i;
      part = kExponent;
    } else {
      pending += c;
    }
  }
  // Trailing literal text: whatever followed the last digit position. Literals that
  // were queued as inner literals of the last part but have no digit after them are
  // part of the suffix as well; pending holds exactly those.
  if (part == kPrefix) {
    m.prefix += pending;
  } else {
    m.suffix = pending;
  }
  return m;
}

// ---------------------------------------------------------------------------
// Rendering.

// Writes the integer part: `digits` are the integer digits without leading zeros
// (empty for a zero integer part).
std::string RenderInteger(const Mask& m, const std::string& digits) {
  if (m.grouping) {
    // Digits and forced zeros first, then the separators every three digits.
    std::string plain = digits;
    const int zeros = [&] {
      int count = 0, seenZero = 0;
      // Positions from the leftmost "0" to the point always show a digit.
      for (const Token& t : m.integer) {
        if (t.kind == Token::kLiteral) continue;
        if (t.kind == Token::kZero) seenZero = 1;
        if (seenZero) ++count;
      }
      return count;
    }();
    if (static_cast<int>(plain.size()) < zeros) plain.insert(0, zeros - plain.size(), '0');
    std::string grouped;
    const int n = static_cast<int>(plain.size());
    for (int i = 0; i < n; ++i) {
      if (i > 0 && (n - i) % 3 == 0) grouped.push_back(',');
      grouped.push_back(plain[static_cast<std::size_t>(i)]);
    }
    return grouped;
  }
  // Right to left over the positions, each taking the next digit from the right.
  std::string out;
  int next = static_cast<int>(digits.size()) - 1;
  std::size_t leftmostDigitAt = std::string::npos;  // index in `out` (reversed)
  for (auto it = m.integer.rbegin(); it != m.integer.rend(); ++it) {
    if (it->kind == Token::kLiteral) {
      std::string reversed(it->text.rbegin(), it->text.rend());
      out += reversed;
      continue;
    }
    if (next >= 0) {
      out.push_back(digits[static_cast<std::size_t>(next--)]);
    } else if (it->kind == Token::kZero) {
      out.push_back('0');
    } else {
      continue;
    }
    leftmostDigitAt = out.size();
  }
  // Digits beyond the mask's positions stand before the leftmost position.
  std::string extra;
  while (next >= 0) extra.push_back(digits[static_cast<std::size_t>(next--)]);
  if (!extra.empty()) {
    const std::size_t at = leftmostDigitAt == std::string::npos ? out.size() : leftmostDigitAt;
    out.insert(at, extra);
  }
  return std::string(out.rbegin(), out.rend());
}

// Writes the fraction: `digits` has one digit for each position after the point.
std::string RenderFraction(const Mask& m, std::string digits) {
  const int minimum = m.MinimumDecimals();
  int shown = static_cast<int>(digits.size());
  while (shown > minimum && digits[static_cast<std::size_t>(shown - 1)] == '0') --shown;
  std::string out;
  int position = 0;
  for (const Token& t : m.fraction) {
    if (t.kind == Token::kLiteral) {
      out += t.text;
      continue;
    }
    if (position < shown) out.push_back(digits[static_cast<std::size_t>(position)]);
    ++position;
  }
  return out;
}

std::string Assemble(const Mask& m, bool negative, const std::string& integer,
                     const std::string& fraction, const std::string& exponent) {
  std::string out = m.prefix;
  if (negative) out.push_back('-');
  out += integer;
  if (m.hasPoint) out.push_back('.');
  out += fraction;
  out += exponent;
  out += m.suffix;
  return out;
}

std::string FormatFixed(const Mask& m, double value) {
  const int decimals = m.FractionPositions();
  const double magnitude = std::fabs(value);
  Digits d;
  if (magnitude != 0.0) {
    const int exponent = DecimalExponent(magnitude);
    const int count = exponent + 1 + decimals;
    // After a carry (9.996 -> 10.00) the digits are one short; the positions below
    // are filled with zeros when the parts are cut out.
    d = RoundToDigits(magnitude, std::min(count, kMaxSignificant));
  }
  std::string integer, fraction;
  if (d.digits.empty()) {
    fraction.assign(static_cast<std::size_t>(decimals), '0');
  } else if (d.exponent >= 0) {
    const std::size_t intCount = static_cast<std::size_t>(d.exponent) + 1;
    integer = d.digits.substr(0, intCount);
    if (integer.size() < intCount) integer.append(intCount - integer.size(), '0');
    fraction = d.digits.size() > intCount ? d.digits.substr(intCount) : std::string();
  } else {
    fraction.assign(static_cast<std::size_t>(-d.exponent - 1), '0');
    fraction += d.digits;
  }
  fraction.resize(static_cast<std::size_t>(decimals), '0');
  const bool negative = value < 0.0 && !d.digits.empty();
  return Assemble(m, negative, RenderInteger(m, integer), RenderFraction(m, fraction), "");
}

std::string FormatScientific(const Mask& m, double value) {
  const int decimals = m.FractionPositions();
  // One digit before the point whenever the mask has a position there (see the
  // header for the choice with two positions); none when it has none.
  const int intDigits = m.IntegerPositions() > 0 ? 1 : 0;
  const int count = std::max(intDigits + decimals, 1);
  const double magnitude = std::fabs(value);
  Digits d;
  if (magnitude != 0.0) {
    d = RoundToDigits(magnitude, std::min(count, kMaxSignificant));
    if (!d.digits.empty()) d.digits.resize(static_cast<std::size_t>(count), '0');
  }
  std::string integer, fraction;
  int exponent = 0;
  if (d.digits.empty()) {
    fraction.assign(static_cast<std::size_t>(decimals), '0');
  } else {
    integer = d.digits.substr(0, static_cast<std::size_t>(intDigits));
    fraction = d.digits.substr(static_cast<std::size_t>(intDigits));
    exponent = intDigits == 1 ? d.exponent : d.exponent + 1;
  }
  fraction.resize(static_cast<std::size_t>(decimals), '0');
  std::string e(1, m.exponentLetter);
  if (exponent < 0) {
    e.push_back('-');
  } else if (m.exponentPlus) {
    e.push_back('+');
  }
  std::string expDigits = std::to_string(std::abs(exponent));
  const std::size_t width = static_cast<std::size_t>(std::max(m.exponentDigits, 1));
  if (expDigits.size() < width) expDigits.insert(0, width - expDigits.size(), '0');
  e += expDigits;
  const bool negative = value < 0.0 && !d.digits.empty();
  return Assemble(m, negative, RenderInteger(m, integer), RenderFraction(m, fraction), e);
}

// The general form's digits: up to 15 significant digits, trailing zeros dropped.
struct General {
  bool negative = false;
  std::string body;  // without sign; with the leading zero of a number below one
};

General GeneralParts(double value) {
  General g;
  if (value == 0.0 || std::isnan(value)) {
    g.body = std::isnan(value) ? "NaN" : "0";
    return g;
  }
  g.negative = value < 0.0;
  const double magnitude = std::fabs(value);
  if (std::isinf(magnitude)) {
    g.body = "Inf";
    return g;
  }
  Digits d = RoundToDigits(magnitude, 15);
  while (d.digits.size() > 1 && d.digits.back() == '0') d.digits.pop_back();
  const int e = d.exponent;
  if (e >= 15 || e < -4) {
    g.body = d.digits.substr(0, 1);
    if (d.digits.size() > 1) g.body.append(1, '.').append(d.digits, 1);
    std::string expDigits = std::to_string(std::abs(e));
    if (expDigits.size() < 2) expDigits.insert(0, 1, '0');
    g.body += std::string("E") + (e < 0 ? "-" : "+") + expDigits;
  } else if (e >= 0) {
    const std::size_t intCount = static_cast<std::size_t>(e) + 1;
    std::string integer = d.digits.substr(0, std::min(intCount, d.digits.size()));
    if (integer.size() < intCount) integer.append(intCount - integer.size(), '0');
    g.body = integer;
    if (d.digits.size() > intCount) g.body.append(1, '.').append(d.digits, intCount);
  } else {
    g.body = "0." + std::string(static_cast<std::size_t>(-e - 1), '0') + d.digits;
  }
  return g;
}

std::string NonFinite(const Mask& m, double value) {
  const char* word = std::isnan(value) ? "NaN" : (value < 0 ? "-Inf" : "Inf");
  return m.prefix + word + m.suffix;
}

}  // namespace

std::string GeneralNumber(double value) {
  General g = GeneralParts(value);
  return g.negative ? "-" + g.body : g.body;
}

std::string StrNumber(double value) {
  General g = GeneralParts(value);
  std::string body = g.body;
  if (body.size() > 1 && body[0] == '0' && body[1] == '.') body.erase(0, 1);
  return (g.negative ? "-" : " ") + body;
}

std::string CommandNumber(double value) { return StrNumber(value) + " "; }

std::string FormatNumber(double value, std::string_view mask) {
  if (mask.empty() || mask == "General Number") return GeneralNumber(value);
  if (mask == "Fixed") return FormatNumber(value, "0.00");
  if (mask == "Standard") return FormatNumber(value, "#,##0.00");
  if (mask == "Scientific") return FormatNumber(value, "0.00E+00");
  const Mask m = ParseMask(mask);
  if (!m.anyDigit && !m.hasPoint) return m.prefix;  // nothing but literal text
  if (!std::isfinite(value)) return NonFinite(m, value);
  return m.scientific ? FormatScientific(m, value) : FormatFixed(m, value);
}

}  // namespace tarno
