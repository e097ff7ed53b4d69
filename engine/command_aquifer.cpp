// Command reader: the aquifer menu: base, permeability, thickness, porosity, interface, uniform flow
// and the reference point.
#include "engine/command_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

namespace tarno::engine::reader {

bool Reader::readAquiferCommand(const std::string& w) {
  auto one = [&](std::optional<double>& target) {
    double v = 0;
    if (!numbers(1, 1, &v)) report(quoted(items_[0]) + " needs one number; line skipped");
    else target = v;
  };
  if (w == "base") one(aquifer_.base);
  else if (w == "permeability") one(aquifer_.permeability);
  else if (w == "thickness") one(aquifer_.thickness);
  else if (w == "porosity") one(aquifer_.porosity);
  else if (w == "interface") {
    std::array<double, 3> v{};
    if (!numbers(1, 3, v.data())) report("\"interface\" needs three numbers (fresh and salt water gravity, sea level); line skipped");
    else if (!(v[0] > 0.0) || !(v[1] > v[0]))
      report("\"interface\": the salt water gravity must exceed the fresh water gravity, and both be positive; "
             "line skipped");
    else {
      aquifer_.interface = v;
      aquifer_.interfaceLine = lineNo_;
    }
  } else if (w == "uniflow") {
    std::array<double, 2> v{};
    if (!numbers(1, 2, v.data())) report("\"uniflow\" needs two numbers (Qx0 Qy0); line skipped");
    else aquifer_.uniflow = v;
  } else if (w == "reference") {
    std::array<double, 3> v{};
    if (!numbers(1, 3, v.data())) report("\"reference\" needs three numbers (x y head); line skipped");
    else aquifer_.reference = v;
  } else {
    return false;
  }
  return true;
}

}  // namespace tarno::engine::reader
