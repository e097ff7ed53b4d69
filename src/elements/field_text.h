// Numbers as the text fields of the element dialogs show them, and back.
#pragma once

#include <cstdint>
#include <string>

namespace tarno {

// The text a dialog field shows for a stored number: the general form of the
// number (as messages write it) where that reads back as the same number, else the
// shortest text that does, so that an unchanged field stores the value it showed.
std::string FieldText(double value);
// A whole number's text.
std::string FieldText(std::int64_t value);

}  // namespace tarno
