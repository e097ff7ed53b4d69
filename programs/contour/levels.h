// The contour levels of a run: min, min + interval, ... up to max.
#pragma once

#include <stdexcept>
#include <string>
#include <vector>

namespace tarno::contour {

// More levels than this is taken for a mistake in the arguments.
inline constexpr long long kMaxLevels = 100000;

class LevelError : public std::invalid_argument {
 public:
  using std::invalid_argument::invalid_argument;
};

// Level i is min + i * interval (computed directly, not summed step by step);
// the last level is the largest that does not pass max by more than 1e-9 of
// the interval, so that max itself is a level when the steps reach it up to
// rounding (and is then max itself). Throws LevelError for a non-finite argument, an interval of zero or
// less, a max below min, or more than kMaxLevels levels.
std::vector<double> makeLevels(double min, double interval, double max);

}  // namespace tarno::contour
