#pragma once
// The leakage grid to a lower model: a grid of rectangular cells, each with a uniform
// leakage rate that the aquifer loses to (or, negative, gains from) the model below.
// The solver takes the rates as area sinks of given strength; after a solve it computes
// each cell's leakage from its resistance and the head below, (h - h_lower) / c, and
// writes the new rates (under-relaxed) for the next run of the lower model.
//
// The files, all "<base name><extension>", plain text, blanks between values:
//   .del  the grid: the number of rows, then each row's size (the first row is the top
//         one); the number of columns, then each column's size; then, optionally, the
//         grid's lower-left corner (x y). The numbers may be spread over lines at will.
//   .vlk  the leakage rate of each cell (per area, > 0 downwards): one line per row,
//         from the top, one value per column.
//   .rla  the resistance of each cell (days), laid out as .vlk.
//   .lhd  the head in the model below for each cell, laid out as .vlk.
//   .grs  the sub-grid resolution of each cell (points in x and in y), laid out as .vlk.
//   .vle  written by the solver: the leakage computed from the heads less the rate
//         that was used, laid out as .vlk.
#include "engine/model.h"
#include "engine/solution.h"

#include <array>
#include <filesystem>
#include <string>
#include <vector>

namespace tarno::engine {

struct LeakageGrid {
  int rows = 0, cols = 0;
  std::vector<double> rowSize, colSize;  // rows from the top, columns from the left
  bool cornerInFile = false;             // the .del file gave the lower-left corner
  double fileX = 0.0, fileY = 0.0;
  double x0 = 0.0, y0 = 0.0;             // lower-left corner used (model coordinates)
  std::vector<double> leakage;           // rows * cols, row by row from the top

  double width() const;
  double height() const;
  int index(int row, int col) const { return row * cols + col; }
  // The rectangle of a cell: x1, y1, x2, y2.
  std::array<double, 4> cell(int row, int col) const;
  // The cells of nonzero rate as the model's area sinks.
  std::vector<LeakageCell> cells() const;
};

// A problem met in a grid file: the file's name, its line (0: the file as a whole).
struct LeakageFileProblem {
  std::string file;
  int line = 0;
  std::string message;
};

// Reads the grid definition. False (with a problem) when it cannot be used.
bool readLeakageGrid(const std::filesystem::path& file, LeakageGrid& grid, std::vector<LeakageFileProblem>& problems);
// Reads one value per cell (one line per row from the top). False (with a problem) when
// the file is missing, a line has the wrong number of values or a value is no number.
bool readCellValues(const std::filesystem::path& file, const LeakageGrid& grid, std::vector<double>& values,
                    std::vector<LeakageFileProblem>& problems);
// Writes one value per cell, "%1.6e" joined by two blanks, one line per row.
bool writeCellValues(const std::filesystem::path& file, const LeakageGrid& grid, const std::vector<double>& values);

// The data that turn heads into leakage: resistances, heads below and, optionally, the
// resolution of each cell (empty: `defaultPoints` in each direction). With
// `addAquiferResistance` half the saturated thickness over the conductivity is added to
// each cell's resistance (the vertical resistance of the upper half of the aquifer).
struct LeakageExchange {
  std::vector<double> resistance, lowerHead;
  std::vector<int> resolution;
  int defaultPoints = 1;
  bool addAquiferResistance = false;
};

// The leakage of one cell from the heads: the mean over n x n points in the cell
// (midpoints of equal sub-cells) of (h - h_lower) / c. A dry point takes the aquifer's
// base for its head and leaks upwards only.
double cellLeakageFromHeads(const LeakageGrid& grid, const LeakageExchange& ex, const Solution& s, int row, int col,
                            int points);

// The leakage check over a rectangle: the cells whose centres lie in it, the total
// leakage of their rates, and the total integrated from the heads with n x n points in
// each cell (when resistances and heads below are at hand).
struct LeakageCheckResult {
  int cells = 0;
  double total = 0.0;
  bool integratedKnown = false;
  double integrated = 0.0;
  double error() const { return integrated != 0.0 ? (total - integrated) / integrated : 0.0; }
};
LeakageCheckResult checkLeakage(const LeakageGrid& grid, const LeakageExchange* ex, const Solution& s, double x1,
                                double y1, double x2, double y2, int n);

}  // namespace tarno::engine
