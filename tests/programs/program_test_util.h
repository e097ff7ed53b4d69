// Helpers of the tests that run the programs of the build as a user would.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace tarno::test {

// What a program run gave back.
struct RunResult {
  int status = -1;
  std::string out;
  std::string err;
};

// Quotes a word for the shell.
inline std::string Quote(const std::string& s) {
  std::string q = "'";
  for (char c : s) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

inline std::string ReadAll(const std::filesystem::path& p) {
  std::ifstream in(p, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

inline bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

}  // namespace tarno::test
