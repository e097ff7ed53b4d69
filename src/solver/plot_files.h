// Readers of the files drawn on the map after a solve: the solver's grid
// (<base>.GRD, a Surfer text grid), the contour lines of the contourer
// (<base>.CTR) and the pathlines of the solver (<base>.PTH).
//
// All three are read line by line; a trailing CR is dropped and blank lines are
// skipped. A malformed line throws PlotFileError, whose text names the file, the
// line number and the offending text.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "core/error.h"
#include "core/solver_files.h"

namespace tarno {

class PlotFileError : public Error {
 public:
  PlotFileError(const std::filesystem::path& file, int line, const std::string& what);
  const std::filesystem::path& file() const noexcept { return file_; }
  int line() const noexcept { return line_; }

 private:
  std::filesystem::path file_;
  int line_;
};

// The value the solver writes at dry points and in ignored regions.
inline constexpr double kGridBlank = solver_files::grid::kBlank;

// The fifth line of a grid: the smallest and largest value.
struct GridRange {
  double zlo = 0.0;
  double zhi = 0.0;
};

// A whole Surfer text grid. z holds nx * ny values, row by row from the row at
// ylo; blank points keep kGridBlank.
struct SurferGrid {
  int nx = 0;
  int ny = 0;
  double xlo = 0.0, xhi = 0.0, ylo = 0.0, yhi = 0.0;
  double zlo = 0.0, zhi = 0.0;
  std::vector<double> z;
  double At(int column, int row) const { return z[static_cast<std::size_t>(row) * nx + column]; }
  static bool IsBlank(double v) { return v >= kGridBlank * 0.999999; }
};

// Reads five lines and splits the fifth at blanks (a run of blanks counts as
// one): zlo and zhi.
GridRange ReadGridRange(const std::filesystem::path& file);

// Reads the whole grid: "DSAA", the counts, the three ranges and nx * ny values
// (any number of values to a line).
SurferGrid ReadSurferGrid(const std::filesystem::path& file);

struct PlotPoint {
  double x = 0.0;
  double y = 0.0;
};

// One polyline of the contour file: its level and its points, in model
// coordinates.
struct ContourPolyline {
  double level = 0.0;
  std::vector<PlotPoint> points;
};

// Reads the contour file: a line beginning "LEVEL" opens a polyline whose level
// stands from column 6 on; the other lines are points with X from column 7 and Y
// from column 21 (fourteen columns each). A point before the first LEVEL line is
// an error. A missing file gives an empty list (nothing to draw).
std::vector<ContourPolyline> ReadContourFile(const std::filesystem::path& file);

// One point of a path: X, Y and the three values of the solver (time, elevation,
// head); the marks along a path are measured along the first of them.
struct PathPoint {
  double x = 0.0;
  double y = 0.0;
  double value1 = 0.0;
  double value2 = 0.0;
  double value3 = 0.0;
};

struct Pathline {
  std::string label;  // the text after "LABEL", empty when the path had none
  std::vector<PathPoint> points;
};

// The most points kept of one path; further points of the path are dropped.
inline constexpr std::size_t kMaxPathPoints = solver_files::path_file::kMaxPoints;

// Reads the pathline file: "LABEL <text>" names the next path, a line beginning
// "STA" opens a path, "END" closes it; the lines between are points with five
// fields of fourteen columns from columns 7, 21, 35, 49 and 63. A point outside a
// path, a path opened inside another or not closed at the end of the file is an
// error. A missing file gives an empty list.
std::vector<Pathline> ReadPathFile(const std::filesystem::path& file);

// One mark of the mark files that the pathline drawing writes beside the path
// file: TICMARKST.TIC (time marks: X and Y) and TICMARKSZ.TIC (elevation marks: X,
// Y and the direction, 1 upward or -1 downward). The positions are map
// coordinates, as drawn.
struct TicMark {
  double x = 0.0;
  double y = 0.0;
  int direction = 0;  // 0 for a time mark
};

// Reads a mark file: one mark a line, its numbers separated by blanks (the print
// zones of the writer); with `withDirection` the third number is the direction.
// Blank lines are skipped; a line with too few or bad numbers throws
// PlotFileError. A missing file gives an empty list.
std::vector<TicMark> ReadTicMarkFile(const std::filesystem::path& file, bool withDirection);

}  // namespace tarno
