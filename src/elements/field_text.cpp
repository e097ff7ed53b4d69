#include "elements/field_text.h"

#include <charconv>

#include "core/format.h"
#include "core/text.h"

namespace tarno {

std::string FieldText(double value) {
  std::string text = GeneralNumber(value);
  if (Val(text) == value) return text;
  char buffer[64];
  const auto result = std::to_chars(buffer, buffer + sizeof buffer, value);
  return std::string(buffer, result.ptr);
}

std::string FieldText(std::int64_t value) { return std::to_string(value); }

}  // namespace tarno
