// Helpers of the contour program's tests: grids made from a function, their
// text, and a reader of .CTR files that reads by columns as the front end does.
#pragma once

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "programs/contour/grid.h"
#include "support/program_runner.h"
#include "support/temp_dir.h"

namespace tarno::contour::test {

inline constexpr double kBlank = 1.70141e38;

// A grid over [xlo, xhi] x [ylo, yhi] with nx by ny points, z = f(x, y).
inline Grid makeGrid(int nx, int ny, double xlo, double xhi, double ylo, double yhi,
                     const std::function<double(double, double)>& f) {
  Grid g;
  g.nx = nx;
  g.ny = ny;
  g.xlo = xlo;
  g.xhi = xhi;
  g.ylo = ylo;
  g.yhi = yhi;
  g.z.resize(static_cast<std::size_t>(nx) * ny);
  for (int j = 0; j < ny; ++j)
    for (int i = 0; i < nx; ++i) g.z[static_cast<std::size_t>(j) * nx + i] = f(g.x(i), g.y(j));
  return g;
}

// The grid as a Surfer text grid, rows from ylo, values with 17 digits.
inline std::string gridText(const Grid& g, const char* eol = "\r\n") {
  std::string s = std::string("DSAA") + eol;
  char buf[128];
  std::snprintf(buf, sizeof buf, "%d %d%s%.17g %.17g%s%.17g %.17g%s", g.nx, g.ny, eol, g.xlo, g.xhi, eol, g.ylo,
                g.yhi, eol);
  s += buf;
  double lo = 1e300, hi = -1e300;
  for (double v : g.z)
    if (!isBlank(v)) lo = std::min(lo, v), hi = std::max(hi, v);
  std::snprintf(buf, sizeof buf, "%.17g %.17g%s", lo, hi, eol);
  s += buf;
  for (int j = 0; j < g.ny; ++j) {
    for (int i = 0; i < g.nx; ++i) {
      std::snprintf(buf, sizeof buf, i ? " %.17g" : "%.17g", g.at(i, j));
      s += buf;
    }
    s += eol;
  }
  return s;
}

struct CtrPoint {
  double x, y;
};
struct CtrLine {
  double level = 0;
  std::vector<CtrPoint> points;
};

inline double column(const std::string& line, std::size_t col, std::size_t width) {
  if (line.size() < col - 1) throw std::runtime_error("short line: " + line);
  std::string field = line.substr(col - 1, width);
  char* end = nullptr;
  double v = std::strtod(field.c_str(), &end);
  while (*end == ' ') ++end;
  if (end == field.c_str() || *end) throw std::runtime_error("bad field \"" + field + "\" in: " + line);
  return v;
}

// Reads a .CTR text: a line beginning "LEVEL" opens a polyline, its level from
// column 6; other lines are points, X from column 7 and Y from column 21, each
// 14 columns. A trailing CR is dropped. Throws on anything else.
inline std::vector<CtrLine> parseCtr(const std::string& text) {
  std::vector<CtrLine> out;
  std::size_t pos = 0;
  while (pos < text.size()) {
    std::size_t nl = text.find('\n', pos);
    std::string line = text.substr(pos, nl == std::string::npos ? std::string::npos : nl - pos);
    pos = nl == std::string::npos ? text.size() : nl + 1;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.rfind("LEVEL", 0) == 0) {
      CtrLine c;
      c.level = column(line, 6, 14);
      out.push_back(c);
      continue;
    }
    if (out.empty()) throw std::runtime_error("point before LEVEL: " + line);
    out.back().points.push_back({column(line, 7, 14), column(line, 21, 14)});
  }
  return out;
}

inline std::string readFile(const std::filesystem::path& p) { return tarno::test::ReadFile(p); }

inline void writeFile(const std::filesystem::path& p, const std::string& text) {
  tarno::test::WriteFile(p, text);
}

using tarno::test::RunResult;
using tarno::test::TempDir;

// Runs the contour executable of the build in `dir` with `args`, words separated by
// blanks.
inline RunResult runContourProgram(const std::filesystem::path& dir, const std::string& args) {
  std::vector<std::string> words;
  std::istringstream in(args);
  for (std::string word; in >> word;) words.push_back(word);
  tarno::test::RunOptions options;
  options.cwd = dir;
  return tarno::test::RunProgram("contour", words, options);
}

}  // namespace tarno::contour::test
