#include "core/text.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <filesystem>
#include <system_error>

#include "core/error.h"

namespace tarno {

void ParseString(std::string_view line, std::string_view delimiter,
                 std::vector<std::string>& fields, int& count) {
  fields.assign(1, std::string());
  if (delimiter.empty()) {
    if (!line.empty()) fields.emplace_back(line);
  } else {
    std::size_t start = 0;
    while (start <= line.size()) {
      const std::size_t at = line.find(delimiter, start);
      const std::size_t end = at == std::string_view::npos ? line.size() : at;
      if (end > start) fields.emplace_back(line.substr(start, end - start));
      if (at == std::string_view::npos) break;
      start = at + delimiter.size();
    }
  }
  count = static_cast<int>(fields.size()) - 1;
}

std::vector<std::string> ParseString(std::string_view line, std::string_view delimiter) {
  std::vector<std::string> fields;
  int count = 0;
  ParseString(line, delimiter, fields, count);
  return fields;
}

std::string PadString(std::string_view text, int width, std::string_view padCharacter) {
  std::string out(text);
  if (padCharacter.empty()) return out;
  while (static_cast<int>(out.size()) < width) out += padCharacter;
  return out;
}

std::string StripString(std::string_view text, std::string_view characters) {
  std::string out;
  out.reserve(text.size());
  for (char c : text) {
    if (characters.find(c) == std::string_view::npos) out.push_back(c);
  }
  return out;
}

std::string StripPaddedString(std::string_view text, std::string_view padCharacter) {
  std::size_t end = text.size();
  while (end > 0) {
    const char c = text[end - 1];
    if (c != '\0' && padCharacter.find(c) == std::string_view::npos) break;
    --end;
  }
  return std::string(text.substr(0, end));
}

std::string TrimST(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) return {};
  const std::size_t last = text.find_last_not_of(" \t");
  return std::string(text.substr(first, last - first + 1));
}

int BoolToInt(bool value) { return value ? 1 : 0; }

bool IntToBool(int value) { return value != 0; }

bool FileExists(std::string_view path) {
  if (path.empty()) return false;
  std::error_code ec;
  return std::filesystem::is_regular_file(std::filesystem::path(path), ec);
}

namespace {
std::size_t LastSeparator(std::string_view path) { return path.find_last_of("/\\"); }
}  // namespace

std::string GetPathFromFile(std::string_view path) {
  const std::size_t at = LastSeparator(path);
  if (at == std::string_view::npos) return {};
  return std::string(path.substr(0, at + 1));
}

std::string GetNameFromFile(std::string_view path) {
  const std::size_t at = LastSeparator(path);
  if (at == std::string_view::npos) return std::string(path);
  return std::string(path.substr(at + 1));
}

namespace {
// The decimal exponent of the first significant digit of a number text such as
// "0012.5e7" (here 8). Only used to tell a huge number from a tiny one.
long long DecimalOrder(const std::string& number) {
  const std::size_t ePos = number.find('e');
  const std::string mantissa = number.substr(0, ePos);
  long long exponent = 0;
  if (ePos != std::string::npos) {
    const char* first = number.data() + ePos + 1;
    if (*first == '+') ++first;
    const auto r = std::from_chars(first, number.data() + number.size(), exponent);
    if (r.ec == std::errc::result_out_of_range) exponent = *first == '-' ? -(1LL << 40) : (1LL << 40);
  }
  const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
  const std::size_t firstDigit = mantissa.find_first_of("123456789");
  if (firstDigit == std::string::npos) return -1;  // zero
  const long long order = firstDigit < point ? static_cast<long long>(point - firstDigit) - 1
                                             : -static_cast<long long>(firstDigit - point);
  return order + exponent;
}
}  // namespace

double Val(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
  std::string number;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) {
    negative = text[i] == '-';
    ++i;
  }
  bool anyDigit = false;
  bool point = false;
  for (; i < text.size(); ++i) {
    const char c = text[i];
    if (c >= '0' && c <= '9') {
      number.push_back(c);
      anyDigit = true;
    } else if (c == '.' && !point) {
      number.push_back(c);
      point = true;
    } else {
      break;
    }
  }
  if (!anyDigit) return 0.0;
  // An exponent counts only when at least one digit follows it.
  if (i < text.size() && (text[i] == 'e' || text[i] == 'E')) {
    std::size_t j = i + 1;
    std::string exponent = "e";
    if (j < text.size() && (text[j] == '+' || text[j] == '-')) exponent.push_back(text[j++]);
    const std::size_t digitsFrom = j;
    while (j < text.size() && text[j] >= '0' && text[j] <= '9') exponent.push_back(text[j++]);
    if (j > digitsFrom) number += exponent;
  }
  double value = 0.0;
  const auto result = std::from_chars(number.data(), number.data() + number.size(), value);
  if (result.ec == std::errc::result_out_of_range) {
    // from_chars reports overflow and underflow alike; an underflow reads as zero.
    if (DecimalOrder(number) < 0) return negative ? -0.0 : 0.0;
    throw OverflowError("Overflow: the number \"" + std::string(text) + "\" is too large");
  }
  return negative ? -value : value;
}

bool EqualsIgnoreCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(a[i])) !=
        std::tolower(static_cast<unsigned char>(b[i])))
      return false;
  return true;
}

}  // namespace tarno
