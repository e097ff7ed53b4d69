// The geometry of the labels and marks of a solution's drawing, open for tests.
#pragma once

#include <string>
#include <vector>

#include "solver/plot_files.h"

namespace tarno {

// The angle of a contour label along a segment, in degrees: the arctangent of
// dy / dx, 90 for a vertical segment, plus 360 when negative.
double ContourLabelAngle(double dx, double dy);

// One mark along a path: its position and, for elevation marks, the direction (1
// upward, -1 downward; 0 for time marks).
struct PathMark {
  double x = 0.0;
  double y = 0.0;
  int direction = 0;
};

// Time marks at one step, two steps, ... along the first value of the points,
// interpolated linearly between the two points that enclose each mark time.
std::vector<PathMark> TimeMarks(const std::vector<PathPoint>& path, double step);
// Elevation marks at the multiples of the step crossed between two points, along
// the second value, walking downward and upward.
std::vector<PathMark> ElevationMarks(const std::vector<PathPoint>& path, double step);

// Items written one after the other in print zones of 14 columns, as a list of
// values separated by commas is printed to a text file.
std::string PrintZones(const std::vector<std::string>& items);

}  // namespace tarno
