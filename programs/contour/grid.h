// The Surfer text grid (DSAA) as the contour program reads it:
//
//   DSAA
//   <nx> <ny>
//   <xlo> <xhi>
//   <ylo> <yhi>
//   <zlo> <zhi>
//   <nx values of the row at ylo> ... <nx values of the row at yhi>
//
// The five header lines are read line by line, two fields to a line; the values
// follow in any number to a line. The reader is strict: anything it cannot take
// as written throws GridError naming the file, the line and the offending text.
#pragma once

#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "core/solver_files.h"

namespace tarno::contour {

// Values at or above this are blank (dry points, ignored regions); the solver
// writes 1.70141E+38.
inline constexpr double kBlankThreshold = solver_files::grid::kBlankThreshold;
inline bool isBlank(double v) { return v >= kBlankThreshold; }

// Limits beyond which a grid is refused as absurd rather than allocated.
inline constexpr long long kMaxGridSide = 100000;
inline constexpr long long kMaxGridPoints = 25000000;

class GridError : public std::runtime_error {
 public:
  // `line` is 1-based; 0 when the failure is not tied to a line.
  GridError(const std::string& file, int line, const std::string& what);
  const std::string& file() const noexcept { return file_; }
  int line() const noexcept { return line_; }
  // The message without the file and line.
  const std::string& detail() const noexcept { return detail_; }

  // "<file>, line <n>: <what>", or "<file>: <what>" for line 0.
  static std::string describe(const std::string& file, int line, const std::string& what);

 private:
  std::string file_;
  int line_;
  std::string detail_;
};

struct Grid {
  int nx = 0;
  int ny = 0;
  double xlo = 0.0, xhi = 0.0, ylo = 0.0, yhi = 0.0;
  double zlo = 0.0, zhi = 0.0;
  std::vector<double> z;  // nx * ny values, row by row from the row at ylo

  double at(int i, int j) const { return z[static_cast<std::size_t>(j) * nx + i]; }
  // Model coordinates of column i and row j. The ends are exact: column nx - 1
  // lies at xhi, not at xlo plus a rounded sum of steps.
  double x(int i) const { return i == nx - 1 ? xhi : xlo + (xhi - xlo) * i / (nx - 1); }
  double y(int j) const { return j == ny - 1 ? yhi : ylo + (yhi - ylo) * j / (ny - 1); }
};

// Parses the text of a grid file; `fileName` is only used in messages.
Grid parseGrid(std::string_view text, const std::string& fileName);

// Reads and parses a grid file. A file that cannot be opened or read throws
// GridError with line 0.
Grid readGridFile(const std::filesystem::path& file);

// Reads a whole token as a decimal number ("12", "-1.5", "+.5E3", "1.70141E+38").
// False when the token is not one number; a number too large for a double reads
// as infinite, one too small as zero or a denormal.
bool parseNumber(std::string_view token, double& out);

// The text of a token as it goes into a message: cut to a readable length,
// control characters shown as '?'.
std::string quoteToken(std::string_view token);

}  // namespace tarno::contour
