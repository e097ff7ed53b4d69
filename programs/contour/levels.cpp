#include "programs/contour/levels.h"

#include <cmath>
#include <cstdio>

namespace tarno::contour {

namespace {
std::string text(double v) {
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.10g", v);
  return buf;
}
}  // namespace

std::vector<double> makeLevels(double min, double interval, double max) {
  if (!std::isfinite(min) || !std::isfinite(interval) || !std::isfinite(max))
    throw LevelError("the levels must be finite numbers");
  if (interval <= 0) throw LevelError("the interval must be greater than zero, found " + text(interval));
  if (max < min) throw LevelError("the maximum " + text(max) + " is below the minimum " + text(min));
  const double steps = (max - min) / interval;  // max - min may overflow to infinity
  if (!(steps + 1 <= static_cast<double>(kMaxLevels)))
    throw LevelError("from " + text(min) + " to " + text(max) + " by " + text(interval) + " is more than " +
                     std::to_string(kMaxLevels) + " levels");
  const long long last = static_cast<long long>(std::floor(steps + 1e-9));
  std::vector<double> levels;
  levels.reserve(static_cast<std::size_t>(last) + 1);
  for (long long i = 0; i <= last; ++i) levels.push_back(min + static_cast<double>(i) * interval);
  // The last step reaches max up to rounding: take max itself, so that a grid
  // value equal to max meets exactly the level it was meant to.
  if (std::fabs(levels.back() - max) <= 1e-9 * interval) levels.back() = max;
  return levels;
}

}  // namespace tarno::contour
