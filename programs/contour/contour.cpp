#include "programs/contour/contour.h"

#include <array>
#include <cstddef>
#include <exception>
#include <optional>
#include <utility>

#ifdef _OPENMP
#include <omp.h>
#endif

namespace tarno::contour {

// A cell's corners and edges are numbered counter-clockwise from the lower
// left: corners 0 (i, j), 1 (i+1, j), 2 (i+1, j+1), 3 (i, j+1); edge k runs
// from corner k to corner k+1: 0 bottom, 1 right, 2 top, 3 left.
//
// Walking the cell's boundary counter-clockwise, an edge that goes from an
// above corner to a below corner is where a line enters the cell (with the
// higher values on its left), one that goes from below to above is where it
// leaves. A cell has one entry and one exit, or two of each in a saddle.
//
// Cell byte: bits 0-3 the above corners, bit 4 the centre is above (saddles),
// bits 5 and 6 the segment entering by edge 0/1 and by edge 2/3 has been
// walked, bit 7 a corner is blank.
namespace {

constexpr std::uint8_t kCentreAbove = 0x10;
constexpr std::uint8_t kBlankCell = 0x80;
constexpr std::uint8_t usedBit(int entry) { return static_cast<std::uint8_t>(0x20 << (entry >> 1)); }

struct Tables {
  // exit[case | centre bit][entry]: the edge a line entering by `entry` leaves
  // by, or -1 when no line enters there.
  std::array<std::array<std::int8_t, 4>, 32> exit{};
  // entries[case | centre bit]: the entry edges, -1 for none.
  std::array<std::array<std::int8_t, 2>, 32> entries{};

  Tables() {
    for (int code = 0; code < 32; ++code) {
      const int corners = code & 15;
      const bool centreAbove = (code & kCentreAbove) != 0;
      auto above = [&](int corner) { return ((corners >> (corner & 3)) & 1) != 0; };
      int exitEdge = -1;
      for (int k = 0; k < 4; ++k)
        if (!above(k) && above(k + 1)) exitEdge = k;
      int n = 0;
      entries[code] = {-1, -1};
      for (int k = 0; k < 4; ++k) {
        exit[code][k] = -1;
        if (!(above(k) && !above(k + 1))) continue;
        entries[code][n++] = static_cast<std::int8_t>(k);
        const bool saddle = corners == 5 || corners == 10;
        // In a saddle an above centre keeps the above corners joined: the line
        // turns to the next edge and cuts off a below corner; a below centre
        // makes it turn back and cut off the above corner it came past.
        exit[code][k] = static_cast<std::int8_t>(saddle ? (centreAbove ? (k + 1) % 4 : (k + 3) % 4) : exitEdge);
      }
    }
  }
};

const Tables& tables() {
  static const Tables t;
  return t;
}

}  // namespace

Contourer::Contourer(const Grid& grid) : g_(grid), cx_(grid.nx - 1), cy_(grid.ny - 1) {
  const std::size_t cells = static_cast<std::size_t>(cx_) * cy_;
  blank_.assign(cells, 0);
  cells_.assign(cells, 0);
  above_.assign(static_cast<std::size_t>(grid.nx) * 2, 0);
  std::vector<std::uint8_t> rowBlank(static_cast<std::size_t>(grid.nx) * 2);
  std::uint8_t* a = rowBlank.data();
  std::uint8_t* b = a + grid.nx;
  for (int i = 0; i < grid.nx; ++i) a[i] = isBlank(grid.at(i, 0));
  for (int j = 0; j < cy_; ++j) {
    for (int i = 0; i < grid.nx; ++i) b[i] = isBlank(grid.at(i, j + 1));
    std::uint8_t* out = &blank_[static_cast<std::size_t>(j) * cx_];
    for (int i = 0; i < cx_; ++i) out[i] = a[i] | a[i + 1] | b[i] | b[i + 1];
    std::swap(a, b);
  }
}

void Contourer::classify(double level) {
  const int nx = g_.nx;
  const double* z = g_.z.data();
  std::uint8_t* a = above_.data();
  std::uint8_t* b = a + nx;
  for (int i = 0; i < nx; ++i) a[i] = z[i] >= level;
  for (int j = 0; j < cy_; ++j) {
    const double* next = z + static_cast<std::size_t>(j + 1) * nx;
    for (int i = 0; i < nx; ++i) b[i] = next[i] >= level;
    const std::size_t row = static_cast<std::size_t>(j) * cx_;
    std::uint8_t* out = &cells_[row];
    const std::uint8_t* blank = &blank_[row];
    for (int i = 0; i < cx_; ++i) {
      std::uint8_t c = static_cast<std::uint8_t>(a[i] | (a[i + 1] << 1) | (b[i + 1] << 2) | (b[i] << 3));
      out[i] = blank[i] ? kBlankCell : c;
    }
    const double* low = z + static_cast<std::size_t>(j) * nx;
    for (int i = 0; i < cx_; ++i) {
      if (out[i] != 5 && out[i] != 10) continue;
      // Quarters first: the sum of four large values could overflow.
      const double centre = 0.25 * low[i] + 0.25 * low[i + 1] + 0.25 * next[i] + 0.25 * next[i + 1];
      if (centre >= level) out[i] |= kCentreAbove;
    }
    std::swap(a, b);
  }
}

Point Contourer::crossing(int i, int j, int edge, double level) const {
  // Each edge is interpolated from its lower-left end, whichever cell asks,
  // so the two cells beside an edge get the same point bit for bit.
  int i0 = i, j0 = j, i1 = i, j1 = j;
  switch (edge) {
    case 0: i1 = i + 1; break;
    case 1: i0 = i1 = i + 1; j1 = j + 1; break;
    case 2: j0 = j1 = j + 1; i1 = i + 1; break;
    default: j1 = j + 1; break;
  }
  const double v0 = g_.at(i0, j0);
  const double v1 = g_.at(i1, j1);
  const double t = (level - v0) / (v1 - v0);
  if (t <= 0) return {g_.x(i0), g_.y(j0)};
  if (t >= 1) return {g_.x(i1), g_.y(j1)};
  if (j0 == j1) {
    const double x0 = g_.x(i0);
    return {x0 + (g_.x(i1) - x0) * t, g_.y(j0)};
  }
  const double y0 = g_.y(j0);
  return {g_.x(i0), y0 + (g_.y(j1) - y0) * t};
}

void Contourer::trace(int i, int j, int entry, double level, std::vector<Polyline>& out) {
  const Tables& tab = tables();
  Polyline line;
  line.level = level;
  auto add = [&line](const Point& p) {
    if (line.points.empty() || !(line.points.back() == p)) line.points.push_back(p);
  };
  const int si = i, sj = j, sk = entry;
  add(crossing(i, j, entry, level));
  for (;;) {
    std::uint8_t& cell = cells_[static_cast<std::size_t>(j) * cx_ + i];
    const int exitEdge = tab.exit[cell & 0x1F][entry];
    cell |= usedBit(entry);
    add(crossing(i, j, exitEdge, level));
    int ni = i, nj = j;
    switch (exitEdge) {
      case 0: --nj; break;
      case 1: ++ni; break;
      case 2: ++nj; break;
      default: --ni; break;
    }
    if (ni < 0 || nj < 0 || ni >= cx_ || nj >= cy_) break;
    const std::uint8_t next = cells_[static_cast<std::size_t>(nj) * cx_ + ni];
    if (next & kBlankCell) break;
    const int nextEntry = (exitEdge + 2) % 4;
    if (next & usedBit(nextEntry)) {
      // Back where the walk began (the one walked segment a walk can reach).
      line.closed = ni == si && nj == sj && nextEntry == sk;
      break;
    }
    i = ni;
    j = nj;
    entry = nextEntry;
  }
  const std::size_t need = line.closed ? 3 : 2;
  if (line.points.size() >= need) out.push_back(std::move(line));
}

std::vector<Polyline> Contourer::level(double level) {
  std::vector<Polyline> out;
  if (cx_ <= 0 || cy_ <= 0) return out;
  classify(level);
  const Tables& tab = tables();
  auto hasLine = [](std::uint8_t c) {
    if (c & kBlankCell) return false;
    const int corners = c & 15;
    return corners != 0 && corners != 15;
  };
  // Open lines first: those whose first segment has no cell before it (the
  // grid's edge or a blank cell lies across its entry edge).
  for (int j = 0; j < cy_; ++j) {
    for (int i = 0; i < cx_; ++i) {
      const std::uint8_t c = cells_[static_cast<std::size_t>(j) * cx_ + i];
      if (!hasLine(c)) continue;
      for (int e : tab.entries[c & 0x1F]) {
        if (e < 0) break;
        if (cells_[static_cast<std::size_t>(j) * cx_ + i] & usedBit(e)) continue;
        int pi = i, pj = j;
        switch (e) {
          case 0: --pj; break;
          case 1: ++pi; break;
          case 2: ++pj; break;
          default: --pi; break;
        }
        const bool start = pi < 0 || pj < 0 || pi >= cx_ || pj >= cy_ ||
                           (cells_[static_cast<std::size_t>(pj) * cx_ + pi] & kBlankCell);
        if (start) trace(i, j, e, level, out);
      }
    }
  }
  // What is left are closed loops.
  for (int j = 0; j < cy_; ++j) {
    for (int i = 0; i < cx_; ++i) {
      const std::uint8_t c = cells_[static_cast<std::size_t>(j) * cx_ + i];
      if (!hasLine(c)) continue;
      for (int e : tab.entries[c & 0x1F]) {
        if (e < 0) break;
        if (cells_[static_cast<std::size_t>(j) * cx_ + i] & usedBit(e)) continue;
        trace(i, j, e, level, out);
      }
    }
  }
  return out;
}

std::vector<Polyline> contourGrid(const Grid& grid, const std::vector<double>& levels) {
  const int n = static_cast<int>(levels.size());
  std::vector<std::vector<Polyline>> perLevel(levels.size());
  // An exception must not leave a parallel region, nor skip the loop's
  // barrier: the first one (out of memory, in practice) is kept and thrown
  // again after the region.
  std::exception_ptr failure;
  auto keep = [&failure] {
#pragma omp critical(contour_failure)
    if (!failure) failure = std::current_exception();
  };
#pragma omp parallel
  {
    std::optional<Contourer> c;
    try {
      c.emplace(grid);
    } catch (...) {
      keep();
    }
#pragma omp for schedule(dynamic, 1)
    for (int k = 0; k < n; ++k) {
      if (!c) continue;
      try {
        perLevel[k] = c->level(levels[k]);
      } catch (...) {
        keep();
      }
    }
  }
  if (failure) std::rethrow_exception(failure);
  std::vector<Polyline> all;
  std::size_t total = 0;
  for (const auto& l : perLevel) total += l.size();
  all.reserve(total);
  for (auto& l : perLevel)
    for (auto& p : l) all.push_back(std::move(p));
  return all;
}

}  // namespace tarno::contour
