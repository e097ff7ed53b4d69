#include "store/lifecycle_basename.h"

#include <ctime>
#include <string>

#include "core/error.h"

namespace tarno {

namespace {

// 0..9 as a digit, 10 and up as the letter of code value + 87 ('a' for 10).
char CodeChar(int v) {
  if (v < 10) return static_cast<char>('0' + v);
  return static_cast<char>(v + 87);
}

void CheckRange(const char* what, int v, int lo, int hi) {
  if (v < lo || v > hi)
    throw Error(std::string("Invalid ") + what + " " + std::to_string(v) +
                " for a base name (expected " + std::to_string(lo) + " to " +
                std::to_string(hi) + ")");
}

}  // namespace

std::string DefaultBaseName(const LocalDateTime& t) {
  CheckRange("month", t.month, 1, 12);
  CheckRange("day", t.day, 1, 31);
  CheckRange("year", t.year, 0, 9999);
  CheckRange("hour", t.hour, 0, 23);
  CheckRange("minute", t.minute, 0, 59);
  CheckRange("second", t.second, 0, 60);
  const int second = t.second > 59 ? 59 : t.second;
  std::string name;
  name += CodeChar(t.month);
  name += CodeChar(t.day);
  name += std::to_string(t.year % 100);
  name += CodeChar(t.hour);
  name += std::to_string(t.minute);
  name += CodeChar(second / 2);
  return name;
}

std::string DefaultBaseNameNow() {
  std::time_t now = std::time(nullptr);
  std::tm tm{};
  localtime_r(&now, &tm);
  LocalDateTime t;
  t.year = tm.tm_year + 1900;
  t.month = tm.tm_mon + 1;
  t.day = tm.tm_mday;
  t.hour = tm.tm_hour;
  t.minute = tm.tm_min;
  t.second = tm.tm_sec;
  return DefaultBaseName(t);
}

}  // namespace tarno
