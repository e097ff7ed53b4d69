// The common frame of the converter programs' main functions: usage, messages and
// exit status (0 done, 1 the conversion failed, 2 bad usage). Messages go to
// standard error as "<program>: <text>", the summary to standard output.
#pragma once

#include <exception>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "basemaps/converters.h"

namespace tarno {

inline constexpr int kConvertDone = 0;
inline constexpr int kConvertFailed = 1;
inline constexpr int kConvertUsage = 2;

inline std::string CountsText(const ConvertCounts& c) {
  std::string text = std::to_string(c.points) + " points, " + std::to_string(c.lines) + " lines, " +
                     std::to_string(c.areas) + " areas";
  if (c.skipped > 0) text += " (" + std::to_string(c.skipped) + " features skipped)";
  return text;
}

// Runs `work` on the arguments (without the program's name) when their count lies
// in [minArgs, maxArgs]; `work` returns the summary line.
inline int RunConverter(const char* program, const char* usage, int argc, char** argv, int minArgs,
                        int maxArgs,
                        const std::function<std::string(const std::vector<std::string>&)>& work) {
  std::vector<std::string> args(argv + 1, argv + argc);
  if (args.size() == 1 && (args[0] == "-h" || args[0] == "--help")) {
    std::cout << "usage: " << program << " " << usage << "\n";
    return kConvertDone;
  }
  if (static_cast<int>(args.size()) < minArgs || static_cast<int>(args.size()) > maxArgs) {
    std::cerr << "usage: " << program << " " << usage << "\n";
    return kConvertUsage;
  }
  try {
    std::cout << program << ": " << work(args) << "\n";
    return kConvertDone;
  } catch (const std::exception& e) {
    std::cerr << program << ": " << e.what() << "\n";
    return kConvertFailed;
  }
}

// A whole number argument; throws ConvertError naming the argument otherwise.
inline int IntegerArgument(const std::string& text, const char* what) {
  std::size_t used = 0;
  int value = 0;
  try {
    value = std::stoi(text, &used);
  } catch (const std::exception&) {
    used = 0;
  }
  if (used == 0 || used != text.size()) {
    throw ConvertError("The " + std::string(what) + " \"" + text + "\" is not a whole number.");
  }
  return value;
}

}  // namespace tarno
