// Evaluation by the multipole expansions of the elements (engine/fast_eval.h) against
// the direct sums: each element kind (wells, line-sinks of given and solved constant
// strength, line-doublets of inhomogeneities and walls), at points far away, near and
// on the elements; the documented error bound; the choice of the path; grids, extracts
// and pathlines computed both ways.

#include "bench/engine/regional_model.h"
#include "engine/extract.h"
#include "engine/fast_eval.h"
#include "engine/grid.h"
#include "engine/trace.h"
#include "helpers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <sstream>
#include <vector>

using namespace tarno::engine;
using namespace tarno::engine::testing;

namespace {

using Points = std::vector<std::pair<double, double>>;

// Small leaves, so that the expansions are used at short range even in small models.
MultipoleOptions smallLeaves(int terms = 30, double theta = 0.5) {
  MultipoleOptions o;
  o.terms = terms;
  o.theta = theta;
  o.leafSize = 2;
  return o;
}

// A lattice over the box, and points near and on every segment and well: at the
// centres and ends of segments, 1e-3 and 0.3 of a length off the centre, at the well
// screens and a metre from the wells.
Points testPoints(const Solution& s, double x0, double y0, double x1, double y1, int side = 25) {
  Points p;
  for (int j = 0; j < side; ++j)
    for (int i = 0; i < side; ++i)
      p.push_back({x0 + (x1 - x0) * (i + 0.31) / side, y0 + (y1 - y0) * (j + 0.57) / side});
  for (const SegmentResult& g : s.segmentResults()) {
    const double cx = 0.5 * (g.x1 + g.x2), cy = 0.5 * (g.y1 + g.y2);
    const double nx = -(g.y2 - g.y1), ny = g.x2 - g.x1;
    p.push_back({cx, cy});
    p.push_back({g.x1, g.y1});
    p.push_back({cx + 1e-3 * nx, cy + 1e-3 * ny});
    p.push_back({cx - 0.3 * nx, cy - 0.3 * ny});
  }
  for (const WellResult& w : s.wellResults()) {
    p.push_back({w.x + w.radius, w.y});
    p.push_back({w.x - 0.7, w.y + 0.7});
  }
  return p;
}

struct Differences {
  double phi = 0;       // largest |potential difference|
  double head = 0;      // largest |head difference| (wet points)
  double q = 0;         // largest |Q difference|
  double qScale = 0;    // largest |Q| of the direct sums
  int dryMismatch = 0;  // points dry one way and wet the other
};

Differences compare(const Solution& s, const FieldEvaluator& f, const Points& pts) {
  Differences d;
  for (const auto& [x, y] : pts) {
    const PointValues a = s.evaluate(x, y), b = f.evaluate(x, y);
    d.phi = std::max(d.phi, std::fabs(a.potential - b.potential));
    const bool wa = a.head != kDryHead, wb = b.head != kDryHead;
    if (wa != wb) ++d.dryMismatch;
    if (wa && wb) d.head = std::max(d.head, std::fabs(a.head - b.head));
    d.q = std::max(d.q, std::hypot(a.qx - b.qx, a.qy - b.qy));
    d.qScale = std::max(d.qScale, std::hypot(a.qx, a.qy));
    // The potential by itself (the sums without W) agrees with the full record.
    EXPECT_NEAR(f.potential(x, y), b.potential, 1e-12 * std::fabs(b.potential) + 1e-9)
        << x << " " << y;
    if (wb) {
      EXPECT_NEAR(f.head(x, y), b.head, 1e-9) << x << " " << y;
    }
  }
  return d;
}

// Sum of |Q| / (2 pi) of the wells and line-sinks: the scale of the error bound.
double boundScale(const Solution& s) {
  double a = 0;
  for (const WellResult& w : s.wellResults()) a += std::fabs(w.discharge);
  for (const SegmentResult& g : s.segmentResults()) a += std::fabs(g.discharge);
  return a / (2.0 * kPi);
}

Model wellField(int count, unsigned seed) {
  Model m = aquiferModel(0.0, 10.0, 20.0, -5000.0, 0.0, 40.0);
  m.aquifer.qx0 = 0.3;
  std::mt19937 rng(seed);
  auto u = [&] { return rng() / 4294967296.0; };
  for (int i = 0; i < count; ++i)
    m.wells.push_back(well(2000.0 * u(), 2000.0 * u(), i % 10 == 0 ? 35.0 : 100.0 + 400.0 * u(),
                           i % 10 == 0, 0.2, "W" + std::to_string(i)));
  return m;
}

// Head strings with resistance and strings of given strength, crossing a 2 km box.
Model stringField() {
  Model m = aquiferModel(0.0, 10.0, 20.0, -5000.0, 0.0, 45.0);
  for (int k = 0; k < 6; ++k) {
    LineSinkString h = straightString(LineSinkKind::Head, 0.0, 300.0 * k + 10.0, 2000.0,
                                      300.0 * k + 170.0, 25, 38.0, 33.0, "H" + std::to_string(k));
    h.resistance = 2.0;
    h.width = 5.0;
    m.lineSinks.push_back(h);
    LineSinkString q =
        straightString(LineSinkKind::Discharge, 150.0 + 300.0 * k, 100.0, 200.0 + 300.0 * k, 1900.0,
                       20, 0.05 * (k + 1), -0.02, "Q" + std::to_string(k));
    m.lineSinks.push_back(q);
  }
  m.wells.push_back(well(1000.0, 1000.0, 800.0, false, 0.2, "WQ"));
  return m;
}

std::vector<Vertex> circle(double cx, double cy, double r, int n) {
  std::vector<Vertex> v;
  for (int k = 0; k < n; ++k) {
    const double a = 2.0 * kPi * k / n;
    v.push_back({cx + r * std::cos(a), cy + r * std::sin(a), ""});
  }
  return v;
}

// Two inhomogeneities, a leaky wall, and wells and a head string around them.
Model doubletField() {
  Model m = aquiferModel(0.0, 10.0, 20.0, -5000.0, 0.0, 40.0);
  m.aquifer.qx0 = 0.5;
  Inhomogeneity a;
  a.conductivity = 40.0;
  a.extraction = -1e-3;
  a.label = "IN1";
  a.vertices = circle(500.0, 500.0, 300.0, 16);
  m.inhomogeneities.push_back(a);
  Inhomogeneity b;
  b.conductivity = 2.0;
  b.label = "IN2";
  b.vertices = circle(1400.0, 600.0, 250.0, 12);
  m.inhomogeneities.push_back(b);
  Wall w;
  w.kind = WallKind::Open;
  w.conductivity = 0.05;
  w.thickness = 1.0;
  w.bottom = 0.0;
  w.label = "WALL";
  w.vertices = {
      {900.0, 1000.0, ""}, {1000.0, 1400.0, ""}, {1200.0, 1600.0, ""}, {1600.0, 1700.0, ""}};
  m.walls.push_back(w);
  m.wells.push_back(well(500.0, 500.0, 300.0, false, 0.2, "WIN"));
  m.wells.push_back(well(1300.0, 1300.0, 600.0, false, 0.2, "WOUT"));
  LineSinkString h =
      straightString(LineSinkKind::Head, 100.0, 1800.0, 1900.0, 1850.0, 12, 37.0, 36.0, "RIV");
  m.lineSinks.push_back(h);
  return m;
}

Solution solved(Model m) {
  Solution s(std::move(m));
  s.solve(opts(5));
  return s;
}

}  // namespace

// ---- Each element kind against the direct sums ----------------------------------

TEST(MultipoleEvaluation, WellsAgreeWithDirectSumFarNearAndAtTheScreens) {
  const Solution s = solved(wellField(300, 5u));
  const FieldEvaluator f(s, FieldEvaluator::Path::Multipole, smallLeaves());
  ASSERT_EQ(f.path(), FieldEvaluator::Path::Multipole);
  EXPECT_EQ(f.tree()->elements(), 300);
  const Differences d = compare(s, f, testPoints(s, -500.0, -500.0, 2500.0, 2500.0));
  EXPECT_EQ(d.dryMismatch, 0);
  EXPECT_LT(d.head, 1e-9);
  EXPECT_LT(d.q, 1e-9 * d.qScale);
  // At a well's centre both ways give the direct near-field values (W nothing from it).
  const WellResult& w0 = s.wellResults()[3];
  EXPECT_NEAR(f.discharge(w0.x, w0.y).first, s.discharge(w0.x, w0.y).first, 1e-9 * d.qScale);
}

TEST(MultipoleEvaluation, LineSinksOfGivenAndSolvedStrengthAgreeWithDirectSum) {
  const Solution s = solved(stringField());
  const FieldEvaluator f(s, FieldEvaluator::Path::Multipole, smallLeaves());
  const Differences d = compare(s, f, testPoints(s, -500.0, -500.0, 2500.0, 2500.0));
  EXPECT_EQ(d.dryMismatch, 0);
  EXPECT_LT(d.head, 1e-9);
  EXPECT_LT(d.q, 1e-9 * d.qScale);
  // Points on a segment (the potential is continuous there) and just either side.
  const SegmentResult g = s.segmentResults()[7];
  const double cx = 0.5 * (g.x1 + g.x2), cy = 0.5 * (g.y1 + g.y2);
  for (double off : {0.0, 1e-9, -1e-9})
    EXPECT_NEAR(f.potential(cx, cy + off), s.potential(cx, cy + off),
                1e-9 * std::fabs(s.potential(cx, cy)));
}

TEST(MultipoleEvaluation, LineDoubletsOfInhomogeneitiesAndWallsAgreeWithDirectSum) {
  const Solution s = solved(doubletField());
  const FieldEvaluator f(s, FieldEvaluator::Path::Multipole, smallLeaves());
  Points pts = testPoints(s, -200.0, -200.0, 2200.0, 2200.0);
  // The vertices and edge centres of the polygons and the wall, and points just inside.
  for (const InhomogeneityResult& in : s.inhomogeneityResults())
    for (const InhomogeneityNode& n : in.nodes) {
      pts.push_back({n.x1, n.y1});
      pts.push_back({n.xc, n.yc});
      pts.push_back({n.xc + 1e-4 * (500.0 - n.xc), n.yc + 1e-4 * (500.0 - n.yc)});
    }
  for (const WallResult& w : s.wallResults())
    for (const WallNode& n : w.nodes) {
      pts.push_back({n.x1, n.y1});
      pts.push_back({n.xc, n.yc});
    }
  const Differences d = compare(s, f, pts);
  EXPECT_EQ(d.dryMismatch, 0);
  EXPECT_LT(d.head, 1e-9);
  EXPECT_LT(d.q, 1e-9 * d.qScale);
}

TEST(MultipoleEvaluation, ErrorFallsWithTheTermsAndStaysWithinTheBound) {
  const Solution s = solved(stringField());
  const double A = boundScale(s);
  const Points pts = testPoints(s, -1000.0, -1000.0, 3000.0, 3000.0, 20);
  double previous = 1e300;
  for (int p : {3, 6, 12, 24}) {
    const double theta = 0.5;
    const FieldEvaluator f(s, FieldEvaluator::Path::Multipole, smallLeaves(p, theta));
    double err = 0;
    for (const auto& [x, y] : pts)
      err = std::max(err, std::fabs(f.potential(x, y) - s.potential(x, y)));
    const double bound = std::pow(theta, p + 1) / (1.0 - theta) * A;
    EXPECT_LE(err, bound + 1e-10 * A) << "p = " << p;
    EXPECT_LT(err, previous) << "p = " << p;
    previous = err;
    // The expansions are used: few terms leave an error well above round-off.
    if (p == 3) {
      EXPECT_GT(err, 1e-6 * A);
    }
  }
}

TEST(MultipoleEvaluation, ElementsOfZeroStrengthAndACoincidentClusterGiveNothingWrong) {
  // Many wells at one point (a cluster of radius 0) and one of them of zero discharge.
  Model m = aquiferModel(0.0, 10.0, 20.0, -5000.0, 0.0, 40.0);
  for (int i = 0; i < 9; ++i)
    m.wells.push_back(well(100.0, 100.0, i == 0 ? 0.0 : 50.0, false, 0.2));
  for (int i = 0; i < 9; ++i) m.wells.push_back(well(300.0 + 10.0 * i, 100.0, 40.0, false, 0.2));
  const Solution s = solved(m);
  const FieldEvaluator f(s, FieldEvaluator::Path::Multipole, smallLeaves());
  const Differences d = compare(s, f, testPoints(s, -100.0, -100.0, 600.0, 400.0, 12));
  EXPECT_LT(d.head, 1e-9);
  EXPECT_LT(d.q, 1e-9 * d.qScale);
}

TEST(MultipoleEvaluation, RegionalModelSolvedDenselyAgreesWithDefaultOptions) {
  Model m = bench::MakeRegionalModel(1500, 3u);
  const Solution s = solved(m);
  const FieldEvaluator f(s, FieldEvaluator::Path::Multipole);
  Points pts = testPoints(s, m.window.x1, m.window.y1, m.window.x2, m.window.y2, 40);
  const Differences d = compare(s, f, pts);
  EXPECT_EQ(d.dryMismatch, 0);
  EXPECT_LT(d.head, 1e-9);
  EXPECT_LT(d.q, 1e-9 * d.qScale);
  // The heads at many points at once are the heads one by one.
  std::vector<double> xs, ys;
  for (size_t i = 0; i < pts.size(); i += 7) {
    xs.push_back(pts[i].first);
    ys.push_back(pts[i].second);
  }
  const std::vector<double> h = f.heads(xs, ys);
  for (size_t i = 0; i < xs.size(); ++i) EXPECT_EQ(h[i], f.head(xs[i], ys[i]));
}

// ---- The choice of the path ---------------------------------------------------

TEST(MultipoleEvaluation, SmallModelsStayOnTheDirectPathBitForBit) {
  const Solution s = solved(stringField());
  ASSERT_LT(FieldEvaluator::expandableElements(s), FieldEvaluator::kMultipoleElements);
  const FieldEvaluator f(s, 1000000L);
  EXPECT_EQ(f.path(), FieldEvaluator::Path::Direct);
  EXPECT_EQ(f.tree(), nullptr);
  for (const auto& [x, y] : testPoints(s, 0.0, 0.0, 2000.0, 2000.0, 8)) {
    const PointValues a = s.evaluate(x, y), b = f.evaluate(x, y);
    EXPECT_EQ(a.potential, b.potential);
    EXPECT_EQ(a.qx, b.qx);
    EXPECT_EQ(a.qy, b.qy);
    EXPECT_EQ(a.vz, b.vz);
    EXPECT_EQ(s.head(x, y), f.head(x, y));
  }
  // Heads at many points at once: the direct heads one by one.
  std::vector<double> xs, ys;
  for (int i = 0; i < 5000; ++i) {
    xs.push_back(0.4 * i);
    ys.push_back(0.37 * i);
  }
  const std::vector<double> h = s.heads(xs, ys);
  for (int i = 0; i < 5000; i += 97) EXPECT_EQ(h[i], s.head(xs[i], ys[i]));
}

TEST(MultipoleEvaluation, LargeModelsTakeTheExpansionsOnlyForManyPoints) {
  Solution s(bench::MakeRegionalModel(FieldEvaluator::kMultipoleElements + 200, 4u));
  setStandInStrengths(s, 9u);
  const long least = FieldEvaluator::multipolePoints(FieldEvaluator::expandableElements(s));
  EXPECT_GE(least, FieldEvaluator::kMultipolePoints);
  EXPECT_TRUE(FieldEvaluator::multipoleFor(s, least));
  EXPECT_FALSE(FieldEvaluator::multipoleFor(s, least - 1));
  EXPECT_EQ(FieldEvaluator(s, 100000L).path(), FieldEvaluator::Path::Multipole);
  EXPECT_EQ(FieldEvaluator(s, 10L).path(), FieldEvaluator::Path::Direct);
  // Bigger models need fewer points to repay the tree.
  EXPECT_LT(FieldEvaluator::multipolePoints(100000), FieldEvaluator::multipolePoints(3000));
  EXPECT_EQ(FieldEvaluator::multipolePoints(FieldEvaluator::kMultipoleElements - 1),
            std::numeric_limits<long>::max());
  // Heads at many points at once take the expansions as well.
  {
    std::vector<double> xs, ys;
    const Model& m = s.model();
    for (int i = 0; i < 2000; ++i) {
      xs.push_back(m.window.x1 + (m.window.x2 - m.window.x1) * (i % 50 + 0.5) / 50.0);
      ys.push_back(m.window.y1 + (m.window.y2 - m.window.y1) * (i / 50 + 0.5) / 40.0);
    }
    const FieldEvaluator many(s, (long)xs.size());
    ASSERT_EQ(many.path(), FieldEvaluator::Path::Multipole);
    const std::vector<double> h = s.heads(xs, ys);
    for (int i = 0; i < 2000; i += 37) {
      EXPECT_EQ(h[i], many.head(xs[i], ys[i]));
      EXPECT_NEAR(h[i], s.head(xs[i], ys[i]), 1e-9);
    }
  }
  // The heads of the results (every segment's centre, every well's screen) as well.
  const std::vector<SegmentResult> segs = s.segmentResults();
  for (size_t k = 0; k < segs.size(); k += 101) {
    const double cx = 0.5 * (segs[k].x1 + segs[k].x2), cy = 0.5 * (segs[k].y1 + segs[k].y2);
    EXPECT_NEAR(segs[k].calculatedHead, s.head(cx, cy), 1e-9) << segs[k].label;
  }
  for (const WellResult& w : s.wellResults())
    EXPECT_NEAR(w.head, s.head(w.x + w.radius, w.y), 1e-9) << w.label;
  // Stand-in strengths: the evaluation is the same sum whatever the values.
  const FieldEvaluator f(s, 100000L);
  const Model& m = s.model();
  const Differences d =
      compare(s, f, testPoints(s, m.window.x1, m.window.y1, m.window.x2, m.window.y2, 10));
  EXPECT_LT(d.phi, 1e-9 * boundScale(s));
  EXPECT_LT(d.q, 1e-9 * d.qScale);
}

TEST(MultipoleEvaluation, ModelWithAnElementAtAnInfiniteCoordinateStaysDirect) {
  Model m = wellField(50, 2u);
  m.wells[7].x = std::numeric_limits<double>::infinity();
  Solution s(m);
  const FieldEvaluator f(s, FieldEvaluator::Path::Multipole, smallLeaves());
  EXPECT_EQ(f.path(), FieldEvaluator::Path::Direct);
  // The direct sum's value there (not finite here), not a crash of the tree.
  const double a = f.potential(10.0, 20.0), b = s.potential(10.0, 20.0);
  EXPECT_TRUE(a == b || (std::isnan(a) && std::isnan(b))) << a << " " << b;
}

// ---- Grids, extracts and pathlines both ways --------------------------------------

TEST(MultipoleEvaluation, GridFileWrittenBothWaysAgrees) {
  Model m = bench::MakeRegionalModel(1500, 3u);
  const Solution s = solved(m);
  const auto geometry = gridGeometry(m.window.x1, m.window.y1, m.window.x2, m.window.y2, 60);
  ASSERT_TRUE(geometry);
  const FieldEvaluator direct(s, FieldEvaluator::Path::Direct);
  const FieldEvaluator fast(s, FieldEvaluator::Path::Multipole);
  for (GridQuantity q : {GridQuantity::Heads, GridQuantity::Discharge, GridQuantity::Potentials}) {
    const Grid a = computeGrid(direct, *geometry, q), b = computeGrid(fast, *geometry, q);
    // The direct evaluator's grid is the solution's own grid.
    EXPECT_EQ(formatSurferGrid(a), formatSurferGrid(computeGrid(s, *geometry, q)));
    const Grid ra = parseSurferGrid(formatSurferGrid(a)), rb = parseSurferGrid(formatSurferGrid(b));
    ASSERT_EQ(ra.z.size(), rb.z.size());
    double scale = 0;
    for (double v : ra.z)
      if (!Grid::isBlank(v)) scale = std::max(scale, std::fabs(v));
    for (size_t i = 0; i < ra.z.size(); ++i) {
      ASSERT_EQ(Grid::isBlank(ra.z[i]), Grid::isBlank(rb.z[i])) << i;
      if (!Grid::isBlank(ra.z[i])) {
        EXPECT_NEAR(ra.z[i], rb.z[i], 1e-9 * scale) << gridQuantityName(q) << " " << i;
      }
    }
    EXPECT_NEAR(ra.geometry.xlo, rb.geometry.xlo, 0.0);
  }
}

TEST(MultipoleEvaluation, GridOfALargeModelTakesTheExpansionsBySize) {
  Solution s(bench::MakeRegionalModel(FieldEvaluator::kMultipoleElements + 200, 4u));
  setStandInStrengths(s, 9u);
  const Model& m = s.model();
  const auto big = gridGeometry(m.window.x1, m.window.y1, m.window.x2, m.window.y2, 40);
  const auto small = gridGeometry(m.window.x1, m.window.y1, m.window.x2, m.window.y2, 5);
  ASSERT_TRUE(big && small);
  ASSERT_GE((long)big->nx * big->ny,
            FieldEvaluator::multipolePoints(FieldEvaluator::expandableElements(s)));
  ASSERT_LT((long)small->nx * small->ny, FieldEvaluator::kMultipolePoints);
  const FieldEvaluator direct(s, FieldEvaluator::Path::Direct),
      fast(s, FieldEvaluator::Path::Multipole);
  EXPECT_EQ(computeGrid(s, *big, GridQuantity::Heads).z,
            computeGrid(fast, *big, GridQuantity::Heads).z);
  EXPECT_EQ(computeGrid(s, *small, GridQuantity::Heads).z,
            computeGrid(direct, *small, GridQuantity::Heads).z);
}

TEST(MultipoleEvaluation, ExtractOfManyPointsOfALargeModelTakesTheExpansions) {
  Solution s(bench::MakeRegionalModel(FieldEvaluator::kMultipoleElements + 200, 4u));
  setStandInStrengths(s, 9u);
  const Model& m = s.model();
  ExtractInput block;
  for (int i = 0; i < 1000; ++i) {
    ExtractPoint p;
    p.kind = ExtractPoint::Kind::Point;
    p.x = m.window.x1 + (m.window.x2 - m.window.x1) * (i % 25 + 0.3) / 25.0;
    p.y = m.window.y1 + (m.window.y2 - m.window.y1) * (i / 25 + 0.6) / 40.0;
    p.label = "P" + std::to_string(i);
    block.points.push_back(p);
  }
  const SolutionSource source(s);
  std::ostringstream out;
  writeExtract(out, block, source);
  // Each record against the direct evaluation, read back from its text.
  std::istringstream in(out.str());
  std::string line;
  std::getline(in, line);  // the section's head
  int records = 0;
  for (const ExtractPoint& p : block.points) {
    ASSERT_TRUE(std::getline(in, line));
    const PointValues v = s.evaluate(p.x, p.y);
    ASSERT_FALSE(line.empty());
    std::vector<double> nums;
    std::string cell;
    std::istringstream cells(line.substr(1));  // after the record's mark
    while (std::getline(cells, cell, ',') && nums.size() < 12) nums.push_back(std::stod(cell));
    ASSERT_EQ(nums.size(), 12u) << line;
    // X, Y, Z, potential: the potential as written (seven digits) agrees.
    EXPECT_NEAR(nums[3], v.potential, 6e-7 * std::fabs(v.potential)) << line;
    ++records;
  }
  EXPECT_EQ(records, 1000);
  // The source did take the expansions for this many points, and not for a few.
  source.expectPoints(1000);
  const PointValues a = source.point(block.points[5].x, block.points[5].y, std::nullopt);
  EXPECT_NE(a.potential, s.evaluate(block.points[5].x, block.points[5].y).potential);
  source.expectPoints(3);
  EXPECT_EQ(source.point(block.points[5].x, block.points[5].y, std::nullopt).potential,
            s.evaluate(block.points[5].x, block.points[5].y).potential);
}

TEST(MultipoleEvaluation, PathlinesTracedBothWaysAgree) {
  Model m = bench::MakeRegionalModel(1500, 3u);
  const Solution s = solved(m);
  std::vector<Particle> particles;
  for (int i = 0; i < 6; ++i) {
    Particle p;
    p.x = m.window.x1 + (m.window.x2 - m.window.x1) * (0.15 + 0.13 * i);
    p.y = m.window.y1 + (m.window.y2 - m.window.y1) * (0.2 + 0.11 * i);
    p.z = 5.0;
    p.label = "P" + std::to_string(i);
    particles.push_back(p);
  }
  TraceSettings st;
  st.step = 50.0;
  st.maxTime = 3.65e5;
  st.x1 = m.window.x1;
  st.y1 = m.window.y1;
  st.x2 = m.window.x2;
  st.y2 = m.window.y2;
  st.evaluation = FieldEvaluator::Path::Direct;
  const std::vector<Path> a = tracePaths(s, particles, st);
  st.evaluation = FieldEvaluator::Path::Multipole;
  const std::vector<Path> b = tracePaths(s, particles, st);
  ASSERT_EQ(a.size(), b.size());
  for (size_t i = 0; i < a.size(); ++i) {
    SCOPED_TRACE(a[i].label);
    ASSERT_GT(a[i].points.size(), 5u);
    EXPECT_EQ(a[i].end, b[i].end);
    ASSERT_EQ(a[i].points.size(), b[i].points.size());
    const PathPoint &ea = a[i].points.back(), &eb = b[i].points.back();
    EXPECT_NEAR(ea.x, eb.x, 1e-4);
    EXPECT_NEAR(ea.y, eb.y, 1e-4);
    EXPECT_NEAR(ea.time, eb.time, 1e-6 * ea.time);
  }
}

// With many segments a step looks only at the segments in the cells near it: no path
// may pass through a line-sink that takes water without ending there.
TEST(MultipoleEvaluation, PathlinesAmongManySegmentsStopAtTheFirstSinkTheyCross) {
  Model m = bench::MakeRegionalModel(1500, 3u);
  const Solution s = solved(m);
  const std::vector<SegmentResult> segs = s.segmentResults();
  ASSERT_GT(segs.size(), 1000u);
  std::vector<Particle> particles;
  for (int i = 0; i < 12; ++i) {
    Particle p;
    p.x = m.window.x1 + (m.window.x2 - m.window.x1) * (0.08 + 0.075 * i);
    p.y = m.window.y1 + (m.window.y2 - m.window.y1) * (0.9 - 0.07 * i);
    p.z = 5.0;
    particles.push_back(p);
  }
  TraceSettings st;
  st.step = 40.0;
  st.x1 = m.window.x1;
  st.y1 = m.window.y1;
  st.x2 = m.window.x2;
  st.y2 = m.window.y2;
  auto crosses = [](const PathPoint& a, const PathPoint& b, const SegmentResult& g) {
    auto side = [](double ax, double ay, double bx, double by, double px, double py) {
      return (bx - ax) * (py - ay) - (by - ay) * (px - ax);
    };
    const double d1 = side(g.x1, g.y1, g.x2, g.y2, a.x, a.y),
                 d2 = side(g.x1, g.y1, g.x2, g.y2, b.x, b.y);
    const double d3 = side(a.x, a.y, b.x, b.y, g.x1, g.y1),
                 d4 = side(a.x, a.y, b.x, b.y, g.x2, g.y2);
    return d1 * d2 < 0 && d3 * d4 < 0;
  };
  int atSinks = 0;
  for (const Path& p : tracePaths(s, particles, st)) {
    atSinks += p.end == PathEnd::LineSink;
    for (size_t k = 0; k + 2 < p.points.size(); ++k)
      for (const SegmentResult& g : segs)
        if (g.strength > 0)
          ASSERT_FALSE(crosses(p.points[k], p.points[k + 1], g)) << g.label << " step " << k;
  }
  EXPECT_GE(atSinks, 4);
}
