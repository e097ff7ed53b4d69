// The leakage grid to a lower model: its files and the leakage computed from heads.
#include "engine/leakage.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace tarno::engine {

namespace fs = std::filesystem;

double LeakageGrid::width() const {
  double w = 0.0;
  for (double s : colSize) w += s;
  return w;
}

double LeakageGrid::height() const {
  double h = 0.0;
  for (double s : rowSize) h += s;
  return h;
}

std::array<double, 4> LeakageGrid::cell(int row, int col) const {
  double top = y0 + height();
  for (int r = 0; r < row; ++r) top -= rowSize[r];
  double left = x0;
  for (int c = 0; c < col; ++c) left += colSize[c];
  return {left, top - rowSize[row], left + colSize[col], top};
}

std::vector<LeakageCell> LeakageGrid::cells() const {
  std::vector<LeakageCell> out;
  double top = y0 + height();
  for (int r = 0; r < rows; ++r) {
    double left = x0;
    for (int c = 0; c < cols; ++c) {
      const double rate = leakage.empty() ? 0.0 : leakage[index(r, c)];
      if (rate != 0.0) out.push_back({left, top - rowSize[r], left + colSize[c], top, rate});
      left += colSize[c];
    }
    top -= rowSize[r];
  }
  return out;
}

namespace {

bool toNumber(const std::string& t, double& v) {
  char* end = nullptr;
  v = std::strtod(t.c_str(), &end);
  return !t.empty() && *end == '\0' && std::isfinite(v);
}

}  // namespace

bool readLeakageGrid(const fs::path& file, LeakageGrid& grid, std::vector<LeakageFileProblem>& problems) {
  const std::string name = file.filename().string();
  std::ifstream in(file);
  if (!in) {
    problems.push_back({name, 0, "the leakage grid file " + name + " was not found"});
    return false;
  }
  // Every number with its line: the counts and sizes may be spread over lines.
  std::vector<std::pair<std::string, int>> tokens;
  std::string line;
  int lineNo = 0;
  while (std::getline(in, line)) {
    ++lineNo;
    std::istringstream ls(line);
    std::string t;
    while (ls >> t) tokens.emplace_back(t, lineNo);
  }
  size_t k = 0;
  auto fail = [&](int at, const std::string& m) {
    problems.push_back({name, at, m});
    return false;
  };
  auto readList = [&](const char* what, int& count, std::vector<double>& sizes) {
    double v = 0;
    if (k >= tokens.size()) return fail(lineNo, std::string("the file ends before the number of ") + what);
    if (!toNumber(tokens[k].first, v) || v < 1 || v != std::floor(v) || v > 1e6)
      return fail(tokens[k].second, std::string("the number of ") + what + " \"" + tokens[k].first +
                                        "\" is not a positive whole number");
    count = (int)v;
    ++k;
    sizes.clear();
    for (int i = 0; i < count; ++i, ++k) {
      if (k >= tokens.size())
        return fail(lineNo, "the file ends after " + std::to_string(i) + " of the " + std::to_string(count) + " " +
                                what + "' sizes");
      if (!toNumber(tokens[k].first, v) || v <= 0)
        return fail(tokens[k].second, std::string("a size of the ") + what + " \"" + tokens[k].first +
                                          "\" is not a positive number");
      sizes.push_back(v);
    }
    return true;
  };
  LeakageGrid g;
  if (!readList("rows", g.rows, g.rowSize) || !readList("columns", g.cols, g.colSize)) return false;
  if (k + 2 <= tokens.size()) {
    double x = 0, y = 0;
    if (!toNumber(tokens[k].first, x) || !toNumber(tokens[k + 1].first, y))
      return fail(tokens[k].second, "the grid's corner \"" + tokens[k].first + " " + tokens[k + 1].first +
                                        "\" is not two numbers");
    g.cornerInFile = true;
    g.fileX = x;
    g.fileY = y;
    k += 2;
  }
  if (k < tokens.size())
    problems.push_back({name, tokens[k].second, "values after the grid's definition are ignored"});
  grid = std::move(g);
  return true;
}

bool readCellValues(const fs::path& file, const LeakageGrid& grid, std::vector<double>& values,
                    std::vector<LeakageFileProblem>& problems) {
  const std::string name = file.filename().string();
  std::ifstream in(file);
  if (!in) {
    problems.push_back({name, 0, "the file " + name + " was not found"});
    return false;
  }
  std::vector<double> out;
  out.reserve((size_t)grid.rows * grid.cols);
  std::string line;
  int lineNo = 0, row = 0;
  while (std::getline(in, line)) {
    ++lineNo;
    std::istringstream ls(line);
    std::vector<std::string> fields;
    std::string t;
    while (ls >> t) fields.push_back(t);
    if (fields.empty()) continue;  // blank lines (a trailing one) are passed over
    if (row >= grid.rows) {
      problems.push_back({name, lineNo, "more lines than the grid's " + std::to_string(grid.rows) + " rows"});
      return false;
    }
    if ((int)fields.size() != grid.cols) {
      problems.push_back({name, lineNo, std::to_string(fields.size()) + " values where the grid has " +
                                            std::to_string(grid.cols) + " columns"});
      return false;
    }
    for (const std::string& f : fields) {
      double v = 0;
      if (!toNumber(f, v)) {
        problems.push_back({name, lineNo, "\"" + f + "\" is not a number"});
        return false;
      }
      out.push_back(v);
    }
    ++row;
  }
  if (row < grid.rows) {
    problems.push_back({name, lineNo, "the file ends after " + std::to_string(row) + " of the grid's " +
                                          std::to_string(grid.rows) + " rows"});
    return false;
  }
  values = std::move(out);
  return true;
}

bool writeCellValues(const fs::path& file, const LeakageGrid& grid, const std::vector<double>& values) {
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  char b[40];
  for (int r = 0; r < grid.rows; ++r) {
    for (int c = 0; c < grid.cols; ++c) {
      std::snprintf(b, sizeof b, "%1.6e", values[grid.index(r, c)]);
      if (c > 0) out << "  ";
      out << b;
    }
    out << "\r\n";
  }
  out.close();
  return bool(out);
}

double cellLeakageFromHeads(const LeakageGrid& grid, const LeakageExchange& ex, const Solution& s, int row, int col,
                            int points) {
  const auto box = grid.cell(row, col);
  const int i = grid.index(row, col);
  const int n = std::max(points, 1);
  const Aquifer& aq = s.model().aquifer;
  double sum = 0.0;
  for (int a = 0; a < n; ++a)
    for (int b = 0; b < n; ++b) {
      const double x = box[0] + (a + 0.5) / n * (box[2] - box[0]);
      const double y = box[1] + (b + 0.5) / n * (box[3] - box[1]);
      const PointValues p = s.evaluate(x, y);
      double c = ex.resistance[i];
      const bool dry = p.head < -1000.0;
      const double head = dry ? p.base : p.head;
      if (ex.addAquiferResistance && !dry && p.conductivity > 0) {
        const double top = p.base + aq.thickness;
        c += 0.5 * (std::min(head, top) - p.base) / p.conductivity;
      }
      if (!(c > 0)) continue;  // no resistance: no exchange counted for the point
      double q = (head - ex.lowerHead[i]) / c;
      if (dry) q = std::min(q, 0.0);
      sum += q;
    }
  return sum / (n * n);
}

LeakageCheckResult checkLeakage(const LeakageGrid& grid, const LeakageExchange* ex, const Solution& s, double x1,
                                double y1, double x2, double y2, int n) {
  LeakageCheckResult r;
  const double xa = std::min(x1, x2), xb = std::max(x1, x2), ya = std::min(y1, y2), yb = std::max(y1, y2);
  r.integratedKnown = ex != nullptr;
  for (int row = 0; row < grid.rows; ++row)
    for (int col = 0; col < grid.cols; ++col) {
      const auto box = grid.cell(row, col);
      const double cx = 0.5 * (box[0] + box[2]), cy = 0.5 * (box[1] + box[3]);
      if (cx < xa || cx > xb || cy < ya || cy > yb) continue;
      const double area = (box[2] - box[0]) * (box[3] - box[1]);
      ++r.cells;
      r.total += (grid.leakage.empty() ? 0.0 : grid.leakage[grid.index(row, col)]) * area;
      if (ex) r.integrated += cellLeakageFromHeads(grid, *ex, s, row, col, n) * area;
    }
  return r;
}

}  // namespace tarno::engine
