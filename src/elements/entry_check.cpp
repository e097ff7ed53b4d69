#include "elements/entry_check.h"

#include <cmath>

#include "core/error.h"
#include "core/format.h"
#include "core/text.h"

namespace tarno {

namespace {

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

bool IsNumberEntry(std::string_view text) {
  const std::string t = TrimST(text);
  if (t.empty()) return true;
  // The shape the decimal parse reads in full: sign, digits with one point (at least
  // one digit), and an exponent with at least one digit.
  std::size_t i = 0;
  if (t[i] == '+' || t[i] == '-') ++i;
  bool digits = false;
  bool point = false;
  for (; i < t.size(); ++i) {
    if (IsDigit(t[i])) {
      digits = true;
    } else if (t[i] == '.' && !point) {
      point = true;
    } else {
      break;
    }
  }
  if (!digits) return false;
  if (i < t.size() && (t[i] == 'e' || t[i] == 'E')) {
    ++i;
    if (i < t.size() && (t[i] == '+' || t[i] == '-')) ++i;
    const std::size_t from = i;
    while (i < t.size() && IsDigit(t[i])) ++i;
    if (i == from) return false;
  }
  if (i != t.size()) return false;
  try {
    return std::isfinite(Val(t));
  } catch (const OverflowError&) {
    return false;
  }
}

bool IsWholeEntry(std::string_view text, double low, double high) {
  if (!IsNumberEntry(text)) return false;
  const double v = Val(TrimST(text));
  return v == std::floor(v) && v >= low && v <= high;
}

ShownNumber ShowNumber(double value) { return {GeneralNumber(value), value}; }

double ReadNumber(const std::string& text, const ShownNumber& shown) {
  return text == shown.text ? shown.value : Val(text);
}

void SetNumber(Row& row, std::string_view field, double value) {
  if (row.Number(field) != value) row.Set(field, value);
}

void SetInteger(Row& row, std::string_view field, std::int64_t value) {
  if (row.Integer(field) != value) row.Set(field, value);
}

void SetText(Row& row, std::string_view field, const std::string& value) {
  if (row.Text(field) != value) row.Set(field, value);
}

const char* LengthUnitWord(bool meters) { return meters ? "meters" : "feet"; }

}  // namespace tarno
