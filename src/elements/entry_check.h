// The text fields of the observation and tracing dialogs: whether a typed number
// reads, and numbers shown in a field that come back exact when left untouched.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "elements/element.h"

namespace tarno {

// Whether a number field holds a value: blank reads as 0; otherwise the whole text
// (blanks around it aside) must be one number of the decimal parse, "12.5", "-3",
// "1E3", within the range of a 64-bit float. "1.2.3", "5-", "abc" and "1e999" do not.
bool IsNumberEntry(std::string_view text);

// As IsNumberEntry, and the value is a whole number within [low, high].
bool IsWholeEntry(std::string_view text, double low, double high);

// A number as a field first shows it, with the exact value behind the text: a field
// whose text is still the shown one gives back the exact value, so that a dialog
// confirmed unchanged writes its element back bit for bit.
struct ShownNumber {
  std::string text;
  double value = 0.0;
};
ShownNumber ShowNumber(double value);
// The value of a field that first showed `shown` and now holds `text`.
double ReadNumber(const std::string& text, const ShownNumber& shown);

// Writes a dialog's value into a row field unless the field already holds it (as
// Row::Number, Row::Integer and Row::Text read it): an untouched field keeps its
// stored form, a NULL of an optional field included.
void SetNumber(Row& row, std::string_view field, double value);
void SetInteger(Row& row, std::string_view field, std::int64_t value);
void SetText(Row& row, std::string_view field, const std::string& value);

// The length unit word of the dialogs: "meters" or "feet".
const char* LengthUnitWord(bool meters);

}  // namespace tarno
