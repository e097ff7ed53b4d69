// Contour lines of a grid by marching squares.
//
// Rules, the same for every level:
// - A grid value v is above a level L when v >= L, below otherwise; a value
//   equal to the level counts as above. A line crosses a grid edge whose ends
//   lie on different sides, at the linearly interpolated point; an end equal to
//   the level gives that grid point itself, exactly.
// - A cell with a blank corner gives no line. A line that reaches the grid's
//   edge or a cell with a blank corner ends there.
// - A cell whose diagonal corners alternate (a saddle) is resolved by its
//   centre value, the mean of the four corners: when the centre is above, the
//   two above corners are joined through the cell.
// - The crossings of each level are joined across cells into polylines, each
//   walked with the higher values on its left. A closed polyline repeats its
//   first point at its end.
// - Consecutive equal points (where a line runs through grid points equal to
//   the level) are kept once, and a polyline left with a single point (a peak
//   or pit exactly at the level) is dropped.
#pragma once

#include <cstdint>
#include <vector>

#include "programs/contour/grid.h"

namespace tarno::contour {

struct Point {
  double x = 0.0;
  double y = 0.0;
  bool operator==(const Point&) const = default;
};

struct Polyline {
  double level = 0.0;
  bool closed = false;  // the last point repeats the first
  std::vector<Point> points;
};

// Contours one grid at one level after another; keeps the scratch space of a
// level between calls. One object per thread.
class Contourer {
 public:
  explicit Contourer(const Grid& grid);

  // The polylines of one level, in a fixed order: first the open ones, by the
  // cell where each begins (row by row from ylo, column by column from xlo),
  // then the closed ones by the first cell found on each.
  std::vector<Polyline> level(double level);

 private:
  void classify(double level);
  Point crossing(int i, int j, int edge, double level) const;
  void trace(int i, int j, int entry, double level, std::vector<Polyline>& out);

  const Grid& g_;
  int cx_ = 0, cy_ = 0;               // cells across and up
  std::vector<std::uint8_t> blank_;   // per cell: a corner is blank
  std::vector<std::uint8_t> cells_;   // per cell: corner case, saddle and used bits
  std::vector<std::uint8_t> above_;   // scratch: above bits of two rows
};

// All levels in order (level by level, each in the order of Contourer::level),
// computed in parallel when the build has OpenMP.
std::vector<Polyline> contourGrid(const Grid& grid, const std::vector<double>& levels);

}  // namespace tarno::contour
