#pragma once
// Contour grids of a solution: a rectangular lattice of values (heads,
// potentials, discharge, interface elevation or stream function) computed in
// parallel, differences against a kept grid, and the Surfer text grid file.
//
// The file (<name>.GRD):
//
//   DSAA
//   <nx> <ny>
//   <xlo> <xhi>
//   <ylo> <yhi>
//   <zlo> <zhi>
//   <nx values of the row at ylo>
//   ...                                  (ny rows, from ylo up to yhi)
//
// Numbers are written "%.10E" (eleven significant digits: reading a value back
// and writing it again gives the same text, and the contourer's levels are far
// coarser). Dry points, points in ignored regions and points where a value
// cannot be computed (the centre of a well) hold the blank 1.70141E+38 and are
// left out of zlo and zhi; a grid of blanks only has zlo = zhi = 0.

#include "core/solver_files.h"
#include "engine/fast_eval.h"
#include "engine/solution.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tarno::engine {

// The blank value of a Surfer grid, as written.
inline constexpr double kGridBlank = solver_files::grid::kBlank;
inline constexpr const char* kGridBlankText = solver_files::grid::kBlankText;

// Heads at or below this are dry (or outside the model) to the front end.
inline constexpr double kDryLimit = -1000.0;

enum class GridQuantity { Heads, Potentials, Discharge, Interface, Stream };

// "heads", "potentials", "discharge", "interface", "stream" (any case).
std::optional<GridQuantity> gridQuantity(std::string_view word);
const char* gridQuantityName(GridQuantity q);

// The lattice: nx points across from xlo to xhi, ny rows from ylo to yhi.
struct GridGeometry {
  int nx = 0, ny = 0;
  double xlo = 0, xhi = 0, ylo = 0, yhi = 0;
};

// The lattice for `horizontalPoints` points across the window (x1, y1, x2, y2,
// corners in any order): the number of rows follows the window's height at the
// same spacing, rounded, and is at least 2. Nothing when the window has no
// width or no height (or is not finite), or fewer than 2 points are asked.
std::optional<GridGeometry> gridGeometry(double x1, double y1, double x2, double y2, int horizontalPoints);

struct Grid {
  GridGeometry geometry;
  GridQuantity quantity = GridQuantity::Heads;
  std::vector<double> z;  // nx * ny values, row by row from ylo; kGridBlank where blank
  int nonFinite = 0;      // points made blank because no finite value could be computed

  double x(int i) const;
  double y(int j) const;
  double& at(int i, int j) { return z[static_cast<size_t>(j) * geometry.nx + i]; }
  double at(int i, int j) const { return z[static_cast<size_t>(j) * geometry.nx + i]; }
  static bool isBlank(double v) { return !(v < solver_files::grid::kBlankThreshold); }
};

// The elevation of the salt water interface under a fresh water head, by the
// Ghyben-Herzberg relation: the interface lies rho_f / (rho_s - rho_f) times
// the fresh water head above sea level below sea level. Nothing when the
// aquifer has no interface data, the head is dry or does not stand above sea
// level, or the interface would lie below the aquifer's base (`base`): there is
// no interface at that point.
std::optional<double> interfaceElevation(const Aquifer& aquifer, double head, double base);

// Computes the grid in parallel (OpenMP) over the points. The value at a point
// where the head is dry or ignored is blank whatever the quantity.
// Large models take the values from the multipole expansions of the elements
// (engine/fast_eval.h: FieldEvaluator chooses by the model's size and the number of
// points); the stream function is always summed directly.
Grid computeGrid(const Solution& solution, const GridGeometry& geometry, GridQuantity quantity);
// The same with the evaluator given (its path chosen by the caller).
Grid computeGrid(const FieldEvaluator& evaluator, const GridGeometry& geometry, GridQuantity quantity);

// Replaces `grid` by itself minus `kept`. Both must have the same lattice
// (counts equal, corners equal within 1e-6 of the spacing); a blank in either
// is blank in the result. Returns false with the reason in `why` when they do
// not match; the grid is then unchanged.
bool subtractGrid(Grid& grid, const Grid& kept, std::string* why);

// The Surfer text grid. `digits` is the number of decimals of the values
// (10 for .GRD files; 16 keeps a kept grid exact).
std::string formatSurferGrid(const Grid& grid, int digits = 10);

// Reads a Surfer text grid (any number of values to a line). Throws
// std::runtime_error naming the line and the text that could not be read.
Grid parseSurferGrid(std::string_view text);

}  // namespace tarno::engine
