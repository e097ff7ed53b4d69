#include "engine/grid.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>

namespace tarno::engine {

std::optional<GridQuantity> gridQuantity(std::string_view word) {
  std::string w;
  for (char c : word) w += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  if (w == "heads") return GridQuantity::Heads;
  if (w == "potentials") return GridQuantity::Potentials;
  if (w == "discharge") return GridQuantity::Discharge;
  if (w == "interface") return GridQuantity::Interface;
  if (w == "stream") return GridQuantity::Stream;
  return std::nullopt;
}

const char* gridQuantityName(GridQuantity q) {
  switch (q) {
    case GridQuantity::Heads: return "heads";
    case GridQuantity::Potentials: return "potentials";
    case GridQuantity::Discharge: return "discharge";
    case GridQuantity::Interface: return "interface";
    case GridQuantity::Stream: return "stream";
  }
  return "heads";
}

std::optional<GridGeometry> gridGeometry(double x1, double y1, double x2, double y2, int horizontalPoints) {
  if (!(std::isfinite(x1) && std::isfinite(y1) && std::isfinite(x2) && std::isfinite(y2))) return std::nullopt;
  if (horizontalPoints < 2) return std::nullopt;
  GridGeometry g;
  g.xlo = std::min(x1, x2);
  g.xhi = std::max(x1, x2);
  g.ylo = std::min(y1, y2);
  g.yhi = std::max(y1, y2);
  const double w = g.xhi - g.xlo, h = g.yhi - g.ylo;
  if (!(w > 0) || !(h > 0)) return std::nullopt;
  g.nx = horizontalPoints;
  const double dx = w / (g.nx - 1);
  const double rows = std::round(h / dx) + 1.0;
  g.ny = static_cast<int>(std::clamp(rows, 2.0, 1.0e9));
  return g;
}

double Grid::x(int i) const {
  const GridGeometry& g = geometry;
  return i == g.nx - 1 ? g.xhi : g.xlo + (g.xhi - g.xlo) * i / (g.nx - 1);
}

double Grid::y(int j) const {
  const GridGeometry& g = geometry;
  return j == g.ny - 1 ? g.yhi : g.ylo + (g.yhi - g.ylo) * j / (g.ny - 1);
}

std::optional<double> interfaceElevation(const Aquifer& a, double head, double base) {
  if (!a.hasInterface || !(head > kDryLimit)) return std::nullopt;
  const double contrast = a.saltGravity - a.freshGravity;
  if (!(contrast > 0) || !(a.freshGravity > 0)) return std::nullopt;
  if (!(head > a.seaLevel)) return std::nullopt;
  const double z = a.seaLevel - a.freshGravity / contrast * (head - a.seaLevel);
  if (!(z > base)) return std::nullopt;
  return z;
}

Grid computeGrid(const Solution& solution, const GridGeometry& geometry, GridQuantity quantity) {
  const FieldEvaluator evaluator(solution, static_cast<long>(geometry.nx) * geometry.ny);
  return computeGrid(evaluator, geometry, quantity);
}

Grid computeGrid(const FieldEvaluator& evaluator, const GridGeometry& geometry, GridQuantity quantity) {
  const Solution& solution = evaluator.solution();
  Grid grid;
  grid.geometry = geometry;
  grid.quantity = quantity;
  const long n = static_cast<long>(geometry.nx) * geometry.ny;
  grid.z.assign(static_cast<size_t>(n), kGridBlank);
  const Aquifer& aquifer = solution.model().aquifer;
  int nonFinite = 0;
#pragma omp parallel for schedule(dynamic, 64) reduction(+ : nonFinite)
  for (long k = 0; k < n; ++k) {
    const int i = static_cast<int>(k % geometry.nx), j = static_cast<int>(k / geometry.nx);
    const double x = grid.x(i), y = grid.y(j);
    double v = kGridBlank;
    bool blank = false;
    switch (quantity) {
      case GridQuantity::Heads: {
        const double h = evaluator.head(x, y);
        if (h > kDryLimit) v = h;
        else blank = true;
        break;
      }
      case GridQuantity::Potentials:
      case GridQuantity::Discharge: {
        const PointValues p = evaluator.evaluate(x, y);
        if (!(p.head > kDryLimit)) blank = true;
        else v = quantity == GridQuantity::Potentials ? p.potential : std::hypot(p.qx, p.qy);
        break;
      }
      case GridQuantity::Interface: {
        if (!aquifer.hasInterface) {
          blank = true;
          break;
        }
        const PointValues p = evaluator.evaluate(x, y);
        if (auto z = interfaceElevation(aquifer, p.head, p.base)) v = *z;
        else blank = true;
        break;
      }
      case GridQuantity::Stream: {
        const double h = evaluator.head(x, y);
        if (h > kDryLimit) v = solution.streamFunction(x, y);
        else blank = true;
        break;
      }
    }
    if (!blank && !std::isfinite(v)) {
      ++nonFinite;
      v = kGridBlank;
    }
    grid.z[static_cast<size_t>(k)] = blank ? kGridBlank : v;
  }
  grid.nonFinite = nonFinite;
  return grid;
}

bool subtractGrid(Grid& grid, const Grid& kept, std::string* why) {
  const GridGeometry &a = grid.geometry, &b = kept.geometry;
  auto fail = [&](const std::string& s) {
    if (why) *why = s;
    return false;
  };
  if (a.nx != b.nx || a.ny != b.ny)
    return fail("the kept grid has " + std::to_string(b.nx) + " x " + std::to_string(b.ny) + " points, this one " +
                std::to_string(a.nx) + " x " + std::to_string(a.ny));
  const double tolX = 1e-6 * (a.xhi - a.xlo) / std::max(1, a.nx - 1);
  const double tolY = 1e-6 * (a.yhi - a.ylo) / std::max(1, a.ny - 1);
  // The kept grid may have come from a file with ten decimals: allow for that too.
  auto near = [](double p, double q, double tol) {
    return std::fabs(p - q) <= tol + 1e-9 * std::max(std::fabs(p), std::fabs(q));
  };
  if (!near(a.xlo, b.xlo, tolX) || !near(a.xhi, b.xhi, tolX) || !near(a.ylo, b.ylo, tolY) || !near(a.yhi, b.yhi, tolY))
    return fail("the kept grid covers another window");
  for (size_t k = 0; k < grid.z.size(); ++k) {
    if (Grid::isBlank(grid.z[k]) || Grid::isBlank(kept.z[k])) grid.z[k] = kGridBlank;
    else grid.z[k] -= kept.z[k];
  }
  return true;
}

namespace {

std::string fmt(double v, int digits) {
  if (Grid::isBlank(v)) return kGridBlankText;
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.*E", digits, v);
  return buf;
}

}  // namespace

std::string formatSurferGrid(const Grid& grid, int digits) {
  const GridGeometry& g = grid.geometry;
  double lo = 0, hi = 0;
  bool any = false;
  for (double v : grid.z) {
    if (Grid::isBlank(v)) continue;
    if (!any) lo = hi = v;
    lo = std::min(lo, v);
    hi = std::max(hi, v);
    any = true;
  }
  std::string out;
  out.reserve(grid.z.size() * (digits + 9) + 200);
  out += solver_files::grid::kTag;
  out += '\n';
  out += std::to_string(g.nx) + " " + std::to_string(g.ny) + "\n";
  out += fmt(g.xlo, digits) + " " + fmt(g.xhi, digits) + "\n";
  out += fmt(g.ylo, digits) + " " + fmt(g.yhi, digits) + "\n";
  out += fmt(lo, digits) + " " + fmt(hi, digits) + "\n";
  for (int j = 0; j < g.ny; ++j) {
    for (int i = 0; i < g.nx; ++i) {
      if (i > 0) out += ' ';
      out += fmt(grid.at(i, j), digits);
    }
    out += '\n';
  }
  return out;
}

Grid parseSurferGrid(std::string_view text) {
  int line = 1;
  size_t pos = 0;
  // Tokens with the line they stand on.
  auto next = [&](std::string& tok) -> bool {
    tok.clear();
    while (pos < text.size()) {
      char c = text[pos];
      if (c == '\n') ++line;
      if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
        ++pos;
        continue;
      }
      break;
    }
    while (pos < text.size() && !std::isspace(static_cast<unsigned char>(text[pos]))) tok += text[pos++];
    return !tok.empty();
  };
  auto fail = [&](const std::string& what) -> std::runtime_error {
    return std::runtime_error("line " + std::to_string(line) + ": " + what);
  };
  std::string tok;
  if (!next(tok) || tok != solver_files::grid::kTag)
    throw fail("\"" + std::string(solver_files::grid::kTag) + "\" expected, found \"" + tok.substr(0, 40) + "\"");
  auto number = [&](const char* what) {
    if (!next(tok)) throw fail(std::string("the file ends where ") + what + " belongs");
    char* end = nullptr;
    double v = std::strtod(tok.c_str(), &end);
    if (end == tok.c_str() || *end != '\0' || !std::isfinite(v))
      throw fail(std::string(what) + " expected, found \"" + tok.substr(0, 40) + "\"");
    return v;
  };
  Grid g;
  double nx = number("the number of columns"), ny = number("the number of rows");
  if (nx < 2 || ny < 2 || nx > 1e6 || ny > 1e6 || nx * ny > 2e7 || nx != std::floor(nx) || ny != std::floor(ny))
    throw fail("the counts " + std::to_string(nx) + " x " + std::to_string(ny) + " are not those of a grid");
  g.geometry.nx = static_cast<int>(nx);
  g.geometry.ny = static_cast<int>(ny);
  g.geometry.xlo = number("xlo");
  g.geometry.xhi = number("xhi");
  g.geometry.ylo = number("ylo");
  g.geometry.yhi = number("yhi");
  number("zlo");
  number("zhi");
  const size_t n = static_cast<size_t>(g.geometry.nx) * g.geometry.ny;
  g.z.reserve(n);
  for (size_t k = 0; k < n; ++k) {
    double v = number("a grid value");
    g.z.push_back(Grid::isBlank(v) ? kGridBlank : v);
  }
  return g;
}

}  // namespace tarno::engine
