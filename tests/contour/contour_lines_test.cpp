// Marching squares on grids whose contours are known: planes, a cone, a saddle,
// grids with blanks, and levels that meet grid values exactly.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <utility>

#include "contour_test_util.h"
#include "programs/contour/contour.h"

namespace tarno::contour {
namespace {

using test::kBlank;
using test::makeGrid;

std::vector<Polyline> linesAt(const Grid& g, double level) { return Contourer(g).level(level); }

// No two consecutive points of a polyline are equal, and a closed one ends
// where it begins.
void expectWellFormed(const std::vector<Polyline>& lines) {
  for (const auto& p : lines) {
    ASSERT_GE(p.points.size(), 2u);
    for (std::size_t k = 1; k < p.points.size(); ++k)
      EXPECT_FALSE(p.points[k] == p.points[k - 1]) << "repeated point " << k << " at level " << p.level;
    if (p.closed) {
      EXPECT_GE(p.points.size(), 3u);
      EXPECT_TRUE(p.points.front() == p.points.back());
    }
  }
}

// The grid value interpolated bilinearly at (x, y): what a contour point on a
// cell edge must match.
double valueAt(const Grid& g, double x, double y) {
  double fx = (x - g.xlo) / (g.xhi - g.xlo) * (g.nx - 1);
  double fy = (y - g.ylo) / (g.yhi - g.ylo) * (g.ny - 1);
  int i = std::clamp(static_cast<int>(std::floor(fx)), 0, g.nx - 2);
  int j = std::clamp(static_cast<int>(std::floor(fy)), 0, g.ny - 2);
  double u = fx - i, v = fy - j;
  return (1 - u) * (1 - v) * g.at(i, j) + u * (1 - v) * g.at(i + 1, j) + u * v * g.at(i + 1, j + 1) +
         (1 - u) * v * g.at(i, j + 1);
}

TEST(ContourPlane, StraightParallelLinesAtTheirPlaces) {
  // z = 2x + 1 over x in [0, 10], y in [-5, 5]: level L lies at x = (L - 1) / 2.
  Grid g = makeGrid(11, 7, 0, 10, -5, 5, [](double x, double) { return 2 * x + 1; });
  for (double level : {2.0, 4.5, 7.25, 20.0}) {
    auto lines = linesAt(g, level);
    ASSERT_EQ(lines.size(), 1u) << level;
    const Polyline& p = lines[0];
    EXPECT_FALSE(p.closed);
    EXPECT_EQ(p.level, level);
    ASSERT_EQ(p.points.size(), 7u);  // one point on each row
    for (const Point& q : p.points) EXPECT_NEAR(q.x, (level - 1) / 2, 1e-12);
    // Higher values (larger x) on the left: the line runs from yhi to ylo.
    EXPECT_DOUBLE_EQ(p.points.front().y, 5);
    EXPECT_DOUBLE_EQ(p.points.back().y, -5);
    expectWellFormed(lines);
  }
  EXPECT_TRUE(linesAt(g, 0.5).empty());   // below every value
  EXPECT_TRUE(linesAt(g, 21.5).empty());  // above every value
}

TEST(ContourPlane, SlopedPlaneInBothDirections) {
  // z = x + y: the lines are diagonals x + y = L; every point lies on one.
  Grid g = makeGrid(21, 21, 0, 1, 0, 1, [](double x, double y) { return x + y; });
  for (double level : {0.33, 1.0, 1.71}) {
    auto lines = linesAt(g, level);
    ASSERT_EQ(lines.size(), 1u);
    for (const Point& q : lines[0].points) EXPECT_NEAR(q.x + q.y, level, 1e-12);
    const Point& a = lines[0].points.front();
    const Point& b = lines[0].points.back();
    // Ends on the grid's boundary.
    auto onEdge = [](const Point& q) { return q.x == 0 || q.x == 1 || q.y == 0 || q.y == 1; };
    EXPECT_TRUE(onEdge(a) && onEdge(b));
    // Higher values on the left: from the x = 0 or y = 1 side... the direction
    // (b - a) turned left points up the gradient (1, 1).
    double dx = b.x - a.x, dy = b.y - a.y;
    EXPECT_GT(-dy * 1 + dx * 1, 0);
    expectWellFormed(lines);
  }
}

TEST(ContourCone, ClosedCirclesOfTheRightRadius) {
  // z = r around (3, -2): the level-R contour is a circle of radius R.
  const double cx = 3, cy = -2;
  Grid g = makeGrid(81, 61, -5, 11, -8, 4, [&](double x, double y) { return std::hypot(x - cx, y - cy); });
  const double cell = 16.0 / 80;
  for (double r : {1.0, 2.5, 5.3}) {
    auto lines = linesAt(g, r);
    ASSERT_EQ(lines.size(), 1u) << r;
    const Polyline& p = lines[0];
    EXPECT_TRUE(p.closed);
    EXPECT_GT(p.points.size(), 20u);
    double area = 0;
    for (std::size_t k = 0; k + 1 < p.points.size(); ++k) {
      const Point& a = p.points[k];
      const Point& b = p.points[k + 1];
      // Linear interpolation of a cone across a cell misses by a fraction of the cell.
      EXPECT_NEAR(std::hypot(a.x - cx, a.y - cy), r, 0.1 * cell);
      area += a.x * b.y - b.x * a.y;
    }
    // Higher values outside, on the left: the circle runs clockwise.
    EXPECT_NEAR(-area / 2, M_PI * r * r, 0.02 * M_PI * r * r);
    expectWellFormed(lines);
  }
}

TEST(ContourCone, CircleCutByTheGridEdgeIsOpen) {
  Grid g = makeGrid(41, 41, 0, 10, 0, 10, [](double x, double y) { return std::hypot(x, y); });
  auto lines = linesAt(g, 5);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_FALSE(lines[0].closed);
  EXPECT_NEAR(lines[0].points.front().x, 0, 1e-12);
  EXPECT_NEAR(lines[0].points.back().y, 0, 1e-12);
}

TEST(ContourSaddle, ResolvedByTheCentreValue) {
  // One cell, corners 1 (lower left), 0, 1 (upper right), 0: a saddle at 0.5.
  Grid g;
  g.nx = g.ny = 2;
  g.xlo = g.ylo = 0;
  g.xhi = g.yhi = 1;
  g.z = {1, 0, 0, 1};  // row at ylo: (0,0)=1, (1,0)=0; row at yhi: (0,1)=0, (1,1)=1
  // Centre 0.5: at level 0.4 it is above, and the two high corners join through
  // the cell: the lines cut off the low corners (1,0) and (0,1).
  auto lines = linesAt(g, 0.4);
  ASSERT_EQ(lines.size(), 2u);
  for (const auto& p : lines) {
    ASSERT_EQ(p.points.size(), 2u);
    double mx = (p.points[0].x + p.points[1].x) / 2, my = (p.points[0].y + p.points[1].y) / 2;
    EXPECT_TRUE((mx > 0.5 && my < 0.5) || (mx < 0.5 && my > 0.5)) << mx << " " << my;
  }
  // At level 0.6 the centre is below: the lines cut off the high corners.
  lines = linesAt(g, 0.6);
  ASSERT_EQ(lines.size(), 2u);
  for (const auto& p : lines) {
    double mx = (p.points[0].x + p.points[1].x) / 2, my = (p.points[0].y + p.points[1].y) / 2;
    EXPECT_TRUE((mx < 0.5 && my < 0.5) || (mx > 0.5 && my > 0.5)) << mx << " " << my;
  }
}

TEST(ContourSaddle, HyperbolicSurfaceGivesFourBranches) {
  // z = x * y on [-1, 1]^2; level 0.1 has two branches (first and third
  // quadrants), level -0.1 two more; a level through the saddle point crosses.
  Grid g = makeGrid(41, 41, -1, 1, -1, 1, [](double x, double y) { return x * y; });
  for (double level : {0.1, -0.1}) {
    auto lines = linesAt(g, level);
    ASSERT_EQ(lines.size(), 2u) << level;
    for (const auto& p : lines) {
      EXPECT_FALSE(p.closed);
      for (const auto& q : p.points) EXPECT_NEAR(valueAt(g, q.x, q.y), level, 1e-12);
    }
    expectWellFormed(lines);
  }
}

TEST(ContourBlanks, NoLineThroughACellWithABlankCorner) {
  // A plane with a blank point in the middle: the vertical line through it
  // breaks into two pieces that stop at the cells around the blank.
  Grid g = makeGrid(11, 11, 0, 10, 0, 10, [](double x, double) { return x; });
  g.z[5 * 11 + 5] = kBlank;
  auto lines = linesAt(g, 4.5);
  ASSERT_EQ(lines.size(), 2u);
  for (const auto& p : lines) {
    EXPECT_FALSE(p.closed);
    for (std::size_t k = 0; k + 1 < p.points.size(); ++k) {
      // No segment inside the cells around (5, 5): y between 4 and 6.
      double ymid = (p.points[k].y + p.points[k + 1].y) / 2;
      EXPECT_FALSE(ymid > 4 && ymid < 6) << ymid;
    }
  }
  std::set<double> ends;
  for (const auto& p : lines) ends.insert(p.points.front().y), ends.insert(p.points.back().y);
  EXPECT_EQ(ends, (std::set<double>{0, 4, 6, 10}));
  // Far from the blank the lines are whole.
  EXPECT_EQ(linesAt(g, 1.5).size(), 1u);
}

TEST(ContourBlanks, ClosedContourAroundABlankRegionOpens) {
  Grid g = makeGrid(41, 41, -10, 10, -10, 10, [](double x, double y) { return std::hypot(x, y); });
  // Blank a wedge to the right of the centre: the circle of radius 5 is cut.
  for (int j = 0; j < g.ny; ++j)
    for (int i = 0; i < g.nx; ++i)
      if (g.x(i) > 2 && std::fabs(g.y(j)) < 1) g.z[static_cast<std::size_t>(j) * g.nx + i] = kBlank;
  auto lines = linesAt(g, 5);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_FALSE(lines[0].closed);
  // Clockwise (higher values outside, on the left) from the lower side of the
  // gap round to its upper side.
  EXPECT_EQ(lines[0].points.front().y, -1);
  EXPECT_EQ(lines[0].points.back().y, 1);
  EXPECT_GT(lines[0].points.front().x, 2);
  // A circle clear of the blanks stays closed.
  auto inner = linesAt(g, 1.5);
  ASSERT_EQ(inner.size(), 1u);
  EXPECT_TRUE(inner[0].closed);
}

TEST(ContourBlanks, AllBlankGridGivesNothing) {
  Grid g = makeGrid(5, 5, 0, 1, 0, 1, [](double, double) { return kBlank; });
  EXPECT_TRUE(linesAt(g, 0).empty());
  EXPECT_TRUE(linesAt(g, 1e38).empty());
}

TEST(ContourExactValues, LevelsOnGridValuesGiveCleanLines) {
  // Integer plane z = i at integer levels: lines through the grid points, one
  // point per row, no repeats.
  Grid g = makeGrid(6, 5, 0, 5, 0, 4, [](double x, double) { return x; });
  for (double level = 1; level <= 4; ++level) {
    auto lines = linesAt(g, level);
    ASSERT_EQ(lines.size(), 1u);
    ASSERT_EQ(lines[0].points.size(), 5u);
    for (const auto& q : lines[0].points) EXPECT_EQ(q.x, level);
    expectWellFormed(lines);
  }
}

TEST(ContourExactValues, PeakExactlyAtTheLevelIsDropped) {
  // A single grid point equal to the level, all others below: the contour is
  // one point, which is no line.
  Grid g = makeGrid(5, 5, 0, 4, 0, 4, [](double x, double y) { return -std::hypot(x - 2, y - 2); });
  EXPECT_TRUE(linesAt(g, 0).empty());
  // Just below the peak: a small closed line.
  auto lines = linesAt(g, -0.5);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_TRUE(lines[0].closed);
}

TEST(ContourExactValues, RidgeOnTheLevelRunsAlongAndBack) {
  // Three grid points equal to the level in a row, all others below: the line
  // round them is closed and runs along the ridge and back, with no point
  // repeated in a row.
  Grid g;
  g.nx = 5;
  g.ny = 3;
  g.xlo = g.ylo = 0;
  g.xhi = 4;
  g.yhi = 2;
  g.z = {0, 0, 0, 0, 0, 0, 1, 1, 1, 0, 0, 0, 0, 0, 0};
  auto lines = linesAt(g, 1);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_TRUE(lines[0].closed);
  std::vector<double> xs;
  for (const auto& q : lines[0].points) {
    xs.push_back(q.x);
    EXPECT_EQ(q.y, 1);
  }
  EXPECT_EQ(xs, (std::vector<double>{1, 2, 3, 2, 1}));
}

TEST(ContourExactValues, PlateauAndStepsOnTheLevelStayJoined) {
  // Terraces: values 0, 1, 1, 1, 2 across and a level of 1; points equal to
  // the level count as above, so the line runs along the first column of 1s.
  Grid g;
  g.nx = 5;
  g.ny = 4;
  g.xlo = g.ylo = 0;
  g.xhi = 4;
  g.yhi = 3;
  for (int j = 0; j < 4; ++j)
    for (double v : {0.0, 1.0, 1.0, 1.0, 2.0}) g.z.push_back(v);
  // A bump to 1 in the column of zeros splits the line in two; a dip to 1
  // among the 2s changes nothing.
  g.z[2 * 5 + 0] = 1;
  g.z[1 * 5 + 4] = 1;
  auto lines = linesAt(g, 1);
  expectWellFormed(lines);
  ASSERT_EQ(lines.size(), 2u);
  for (const auto& p : lines) {
    EXPECT_FALSE(p.closed);
    for (const auto& q : p.points) EXPECT_EQ(valueAt(g, q.x, q.y), 1);
  }
  // Without the bump: one line along the first column of 1s.
  g.z[2 * 5 + 0] = 0;
  lines = linesAt(g, 1);
  ASSERT_EQ(lines.size(), 1u);
  ASSERT_EQ(lines[0].points.size(), 4u);
  for (const auto& q : lines[0].points) EXPECT_EQ(q.x, 1);
}

TEST(ContourExactValues, RandomIntegerGridsStayWellFormed) {
  // Small integer values at integer levels meet grid points everywhere:
  // every polyline must still be clean, every point on the level, every open
  // line end on the edge.
  unsigned seed = 12345;
  auto next = [&seed] {
    seed = seed * 1103515245u + 12345u;
    return static_cast<int>((seed >> 16) % 4);
  };
  for (int trial = 0; trial < 200; ++trial) {
    Grid g = makeGrid(9, 7, 0, 8, 0, 6, [&](double, double) { return next(); });
    for (double level : {1.0, 2.0, 3.0, 1.5}) {
      auto lines = linesAt(g, level);
      expectWellFormed(lines);
      for (const auto& p : lines) {
        for (const auto& q : p.points) EXPECT_NEAR(valueAt(g, q.x, q.y), level, 1e-12);
        if (p.closed) continue;
        for (const Point& e : {p.points.front(), p.points.back()})
          EXPECT_TRUE(e.x == 0 || e.x == 8 || e.y == 0 || e.y == 6) << trial;
      }
    }
  }
}

TEST(ContourGrid, LevelsInOrderAndSameAsOneByOne) {
  Grid g = makeGrid(60, 50, 0, 1, 0, 1,
                    [](double x, double y) { return std::sin(7 * x) * std::cos(5 * y) + x; });
  std::vector<double> levels;
  for (int k = 0; k < 12; ++k) levels.push_back(-0.8 + 0.15 * k);
  auto all = contourGrid(g, levels);
  std::vector<Polyline> expected;
  Contourer c(g);
  for (double l : levels)
    for (auto& p : c.level(l)) expected.push_back(std::move(p));
  ASSERT_EQ(all.size(), expected.size());
  for (std::size_t k = 0; k < all.size(); ++k) {
    EXPECT_EQ(all[k].level, expected[k].level);
    EXPECT_EQ(all[k].closed, expected[k].closed);
    EXPECT_TRUE(all[k].points == expected[k].points);
  }
  EXPECT_TRUE(std::is_sorted(all.begin(), all.end(),
                             [](const Polyline& a, const Polyline& b) { return a.level < b.level; }));
}

}  // namespace
}  // namespace tarno::contour
