// Command reader: the leakage menu: origin, solve and check lines.
#include "engine/command_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

namespace tarno::engine::reader {

bool Reader::readLeakageCommand(const std::string& w) {
  double v[5];
  if (w == "origin") {
    if (!numbers(1, 2, v)) report("leakage \"origin\" needs two numbers; line skipped");
    else leakage_.origin = std::array<double, 2>{v[0], v[1]};
  } else if (w == "solve") {
    if (!numbers(1, 5, v)) report("leakage \"solve\" needs five numbers; line skipped");
    else leakage_.solve = std::array<double, 5>{v[0], v[1], v[2], v[3], v[4]};
  } else if (w == "check") {
    if (!numbers(1, 5, v)) report("leakage \"check\" needs five numbers; line skipped");
    else leakage_.checks.push_back({v[0], v[1], v[2], v[3], v[4]});
  } else {
    return false;
  }
  return true;
}

}  // namespace tarno::engine::reader
