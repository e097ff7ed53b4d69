#include "store/lifecycle_basename.h"

#include <algorithm>
#include <cctype>
#include <ctime>
#include <filesystem>
#include <set>
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

namespace {

std::string Lowered(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

}  // namespace

std::string DerivedBaseName(const std::string& fileStem, const std::string& folder,
                            const std::vector<std::string>& taken) {
  std::set<std::string> used;
  for (const std::string& t : taken) used.insert(Lowered(t));
  std::error_code ec;
  for (std::filesystem::directory_iterator it(folder, ec), end; !ec && it != end;
       it.increment(ec)) {
    // Project files do not count: a project is often named as its solver files.
    const std::string file = Lowered(it->path().filename().string());
    if (file.ends_with(".trn") || file.ends_with(".trn.compress")) continue;
    used.insert(Lowered(it->path().stem().string()));
  }

  std::string stem;
  for (unsigned char c : fileStem) {
    if (std::isalnum(c) || c == '_' || c == '-') stem += static_cast<char>(c);
    if (stem.size() == 8) break;
  }
  if (stem.empty()) stem = "copy";
  if (!used.count(Lowered(stem))) return stem;
  for (int n = 2; n < 1000; ++n) {
    const std::string number = std::to_string(n);
    const std::string name = stem.substr(0, std::min(stem.size(), 8 - number.size())) + number;
    if (!used.count(Lowered(name))) return name;
  }
  return DefaultBaseNameNow();
}

}  // namespace tarno
