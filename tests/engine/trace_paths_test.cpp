// Pathlines: travel times and the capture zone of a well in uniform flow against
// exact solutions, the Dupuit elevation, the stop rules, the particles around a
// well, the .PTH layout, and the trace menu run end to end.

#include "engine/run.h"
#include "engine/trace.h"
#include "helpers.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdlib.h>

namespace fs = std::filesystem;
using namespace tarno::engine;
using namespace tarno::engine::testing;

namespace {

// Confined uniform flow Qx0 in +x: b = 10, n = 0.25.
Model uniformFlow(double qx0) {
  Model m = aquiferModel(0.0, 10.0, 10.0, -1000.0, 0.0, 1000.0);
  m.aquifer.qx0 = qx0;
  return m;
}

Solution solved(const Model& m) {
  Solution s(m);
  s.solve(opts(1));
  return s;
}

TraceSettings settings(double step, double x1, double y1, double x2, double y2) {
  TraceSettings st;
  st.step = step;
  st.x1 = x1;
  st.y1 = y1;
  st.x2 = x2;
  st.y2 = y2;
  return st;
}

Particle particle(double x, double y, double z, int direction) { return Particle{x, y, z, direction, "p"}; }

// The stream function of a pumping well Q at the origin in uniform flow Qx0 (+x),
// branch cut along the negative x axis.
double psiWell(double x, double y, double Q, double qx0) {
  return -qx0 * y + Q / (2 * kPi) * std::atan2(y, x);
}

// y of a path where it crosses x = xc (linear between the points around it).
std::optional<double> yAt(const Path& p, double xc) {
  for (size_t k = 1; k < p.points.size(); ++k) {
    const PathPoint &a = p.points[k - 1], &b = p.points[k];
    if ((a.x - xc) * (b.x - xc) <= 0 && a.x != b.x) return a.y + (xc - a.x) / (b.x - a.x) * (b.y - a.y);
  }
  return std::nullopt;
}

// An open wall across the flow from (0, -200) to (0, 200).
Wall openWall(double conductivity, double bottom) {
  Wall w;
  w.kind = WallKind::Open;
  w.conductivity = conductivity;
  w.thickness = 1.0;
  w.bottom = bottom;
  w.label = "barrier";
  w.vertices = {Vertex{0, -200, "a"}, Vertex{0, 200, "b"}};
  return w;
}

// True where a piece of the path passes through the segment (x1, y1) - (x2, y2).
bool pathCrosses(const Path& p, double x1, double y1, double x2, double y2) {
  auto side = [](double ax, double ay, double bx, double by, double px, double py) {
    return (bx - ax) * (py - ay) - (by - ay) * (px - ax);
  };
  for (size_t k = 1; k < p.points.size(); ++k) {
    const PathPoint &a = p.points[k - 1], &b = p.points[k];
    if (side(x1, y1, x2, y2, a.x, a.y) * side(x1, y1, x2, y2, b.x, b.y) < 0 &&
        side(a.x, a.y, b.x, b.y, x1, y1) * side(a.x, a.y, b.x, b.y, x2, y2) < 0)
      return true;
  }
  return false;
}

}  // namespace

TEST(TraceTimes, StraightPathInUniformFlowHasTheExactTravelTime) {
  const double qx0 = 2.0, n = 0.25, b = 10.0;
  Solution s = solved(uniformFlow(qx0));
  TraceSettings st = settings(7.0, -1000, -1000, 1000, 1000);
  st.maxTime = 100.0;
  for (int dir : {1, -1}) {
    auto paths = tracePaths(s, {particle(0, 5, 4.0, dir)}, st);
    ASSERT_EQ(paths.size(), 1u);
    const Path& p = paths[0];
    EXPECT_EQ(p.end, PathEnd::MaxTime);
    for (const PathPoint& q : p.points) {
      EXPECT_NEAR(q.time, dir * q.x * n * b / qx0, 1e-9) << q.x;  // distance * n * b / Qx0
      EXPECT_GE(q.time, 0.0);
      EXPECT_NEAR(q.y, 5.0, 1e-9);
      EXPECT_NEAR(q.elevation, 4.0, 1e-9);  // no recharge: the particle keeps its level
    }
    EXPECT_DOUBLE_EQ(p.points.back().time, 100.0);
    EXPECT_NEAR(p.points.back().x, dir * 100.0 * qx0 / (n * b), 1e-9);
    // Steps of the step length, the last one shortened to end on the time.
    EXPECT_NEAR(std::fabs(p.points[1].x - p.points[0].x), 7.0, 1e-9);
  }
}

TEST(TraceTimes, UnconfinedParticleKeepsItsRelativeElevation) {
  Model m = aquiferModel(0.0, 10.0, 100.0, -2000.0, 0.0, 30.0);  // unconfined: heads below 100
  m.aquifer.qx0 = 1.0;
  Solution s = solved(m);
  auto paths = tracePaths(s, {particle(-500, 0, 12.0, 1)}, settings(25.0, -1000, -500, 1000, 500));
  const Path& p = paths[0];
  ASSERT_GT(p.points.size(), 20u);
  const double zeta = p.points[0].elevation / p.points[0].head;
  EXPECT_NEAR(p.points[0].elevation, 12.0, 1e-9);
  for (const PathPoint& q : p.points) EXPECT_NEAR(q.elevation / q.head, zeta, 1e-9);
  // The water table falls along the flow, and so does the particle.
  EXPECT_LT(p.points.back().elevation, p.points[0].elevation - 1.0);
  // A start above the water table begins on it.
  auto top = tracePaths(s, {particle(-500, 0, 500.0, 1)}, settings(25.0, -1000, -500, 1000, 500));
  EXPECT_NEAR(top[0].points[0].elevation, top[0].points[0].head, 1e-9);
}

TEST(TraceCapture, BackwardPathsFromAPumpingWellSpanItsCaptureWidthUpstream) {
  const double Q = 2000.0, qx0 = 2.0, width = Q / qx0;  // 1000
  Model m = uniformFlow(qx0);
  m.wells.push_back(well(0, 0, Q, false, 0.5));
  Solution s = solved(m);
  std::string why;
  auto particles = wellParticles(s, 0, 0, 5.0, 48, &why);
  ASSERT_EQ(particles.size(), 48u) << why;
  const double L = 8.0 * width;
  auto paths = tracePaths(s, particles, settings(40.0, -L, -L, 0.5 * L, L));
  // Far upstream a path at y has y_inf = y + Q / (2 pi Qx0) atan(y / L): the
  // well's pull at x = -L, taken off so that the paths give the width at infinity.
  double ymin = 1e300, ymax = -1e300;
  for (size_t i = 0; i < paths.size(); ++i) {
    const Path& p = paths[i];
    const double a = 2 * kPi * (i + 0.5) / 48;  // the particle's angle
    EXPECT_NEAR(p.points[0].x, 0.5 * std::cos(a), 1e-9);
    // The stream function is kept along every path.
    const double psi0 = psiWell(p.points[0].x, p.points[0].y, Q, qx0);
    for (const PathPoint& q : p.points) ASSERT_NEAR(psiWell(q.x, q.y, Q, qx0), psi0, 2e-3 * Q) << i;
    ASSERT_EQ(p.end, PathEnd::Window) << i;
    auto y = yAt(p, -L);
    ASSERT_TRUE(y) << i;
    const double yInf = *y + Q / (2 * kPi * qx0) * std::atan(*y / L);
    ymin = std::min(ymin, yInf);
    ymax = std::max(ymax, yInf);
  }
  // The outermost particles start 1/48 of a turn from the stagnation direction,
  // so they carry all but 1/48 of the well's water: the dividing streamlines lie
  // Q / Qx0 apart.
  EXPECT_NEAR((ymax - ymin) / (1.0 - 1.0 / 48), width, 0.005 * width);
  EXPECT_NEAR(ymax, -ymin, 1e-3 * width);
}

TEST(TraceStops, WellLineSinkWindowAndSteps) {
  // A pumping well at (500, 0) in uniform flow: a particle upstream on its axis enters it.
  Model m = uniformFlow(1.0);
  m.wells.push_back(well(500, 0, 800.0, false, 0.3));
  Solution s = solved(m);
  auto w = tracePaths(s, {particle(0, 0, 5, 1)}, settings(10.0, -1000, -1000, 1000, 1000))[0];
  EXPECT_EQ(w.end, PathEnd::Well);
  EXPECT_LE(std::hypot(w.points.back().x - 500, w.points.back().y), 10.0);
  EXPECT_GT(std::hypot(w.points.back().x - 500, w.points.back().y), 0.3);
  // Backward from the same start the well is no sink: the path leaves the window
  // enlarged by half its size (x below -1500).
  auto back = tracePaths(s, {particle(0, 0, 5, -1)}, settings(10.0, -1000, -1000, 1000, 1000))[0];
  EXPECT_EQ(back.end, PathEnd::Window);
  EXPECT_LT(back.points.back().x, -1500.0);
  EXPECT_GT(back.points[back.points.size() - 2].x, -1500.0);
  // A start within a step of the sink: a path of one point.
  auto one = tracePaths(s, {particle(495, 0, 5, 1)}, settings(10.0, -1000, -1000, 1000, 1000))[0];
  EXPECT_EQ(one.end, PathEnd::Well);
  EXPECT_EQ(one.points.size(), 1u);

  // A line-sink taking water across the flow at x = 100: the path ends on it.
  Model l = uniformFlow(1.0);
  l.lineSinks.push_back(straightString(LineSinkKind::Discharge, 100, -400, 100, 400, 4, 1.5, 1.5));
  Solution ls = solved(l);
  auto hit = tracePaths(ls, {particle(0, 30, 5, 1)}, settings(7.0, -1000, -1000, 1000, 1000))[0];
  EXPECT_EQ(hit.end, PathEnd::LineSink);
  EXPECT_NEAR(hit.points.back().x, 100.0, 1e-6);
  EXPECT_GT(hit.points.back().time, hit.points[hit.points.size() - 2].time);
  auto onIt = tracePaths(ls, {particle(100, 30, 5, 1)}, settings(7.0, -1000, -1000, 1000, 1000))[0];
  EXPECT_EQ(onIt.end, PathEnd::LineSink);
  EXPECT_EQ(onIt.points.size(), 1u);
  // A recharging line-sink (strength < 0) is no sink forward: the path passes it.
  Model r = uniformFlow(1.0);
  r.lineSinks.push_back(straightString(LineSinkKind::Discharge, 100, -400, 100, 400, 4, -0.5, -0.5));
  auto pass = tracePaths(solved(r), {particle(0, 30, 5, 1)}, settings(7.0, -1000, -1000, 1000, 1000))[0];
  EXPECT_EQ(pass.end, PathEnd::Window);
  // ... but it is one backward: from downstream, the path ends on it.
  auto source = tracePaths(solved(r), {particle(300, 30, 5, -1)}, settings(7.0, -1000, -1000, 1000, 1000))[0];
  EXPECT_EQ(source.end, PathEnd::LineSink);
  EXPECT_NEAR(source.points.back().x, 100.0, 1e-6);

  // The step limit.
  TraceSettings few = settings(10.0, -1000, -1000, 1000, 1000);
  few.maxSteps = 12;
  auto limited = tracePaths(solved(uniformFlow(1.0)), {particle(0, 0, 5, 1)}, few)[0];
  EXPECT_EQ(limited.end, PathEnd::Steps);
  EXPECT_EQ(limited.points.size(), 13u);
}

TEST(TraceStops, DryAquiferEndsThePathAtTheLastWetPoint) {
  // Unconfined, thin, pumped hard: a dry zone around the well.
  Model m = aquiferModel(0.0, 1.0, 20.0, 1000.0, 0.0, 5.0);
  m.wells.push_back(well(0.0, 0.0, 60.0, false, 0.2));
  Solution s = solved(m);
  ASSERT_LE(s.head(5, 0), kDryHead + 1);
  ASSERT_GT(s.head(400, 0), 0);
  auto p = tracePaths(s, {particle(400, 0, 1, 1)}, settings(2.0, -1000, -1000, 1000, 1000))[0];
  EXPECT_EQ(p.end, PathEnd::Dry);
  EXPECT_GT(p.points.size(), 2u);
  for (const PathPoint& q : p.points) EXPECT_GT(q.head, 0.0);
  // A start in the dry zone: one point, its head written as dry.
  auto d = tracePaths(s, {particle(5, 0, 1, 1)}, settings(2.0, -500, -500, 500, 500))[0];
  EXPECT_EQ(d.end, PathEnd::Dry);
  ASSERT_EQ(d.points.size(), 1u);
  EXPECT_EQ(d.points[0].head, kDryHead);
}

TEST(TraceStops, AStartBehindABoundingWallIsOutsideTheModelNotDry) {
  // An impermeable island (the region inside the wall is not part of the model) in
  // uniform flow: a particle started on the island ends at once, told apart from a
  // dry start; one started upstream flows around it.
  Model m = uniformFlow(1.0);
  Wall w;
  w.kind = WallKind::Inside;
  w.conductivity = 0.0;
  w.label = "island";
  for (int k = 0; k < 24; ++k) {
    const double a = 2 * kPi * k / 24;
    w.vertices.push_back(Vertex{100 * std::cos(a), 100 * std::sin(a), "v" + std::to_string(k)});
  }
  m.walls.push_back(w);
  Solution s = solved(m);
  ASSERT_TRUE(s.ignored(0, 0));
  auto in = tracePaths(s, {particle(0, 0, 5, 1)}, settings(2.0, -500, -500, 500, 500))[0];
  EXPECT_EQ(in.end, PathEnd::Ignored);
  ASSERT_EQ(in.points.size(), 1u);
  auto around = tracePaths(s, {particle(-400, 30, 5, 1)}, settings(2.0, -500, -500, 500, 500))[0];
  EXPECT_EQ(around.end, PathEnd::Window);
  for (const PathPoint& q : around.points) EXPECT_FALSE(s.ignored(q.x, q.y)) << q.x << " " << q.y;
}

TEST(TraceWalls, APathHeadingIntoAnImpermeableWallStopsAtIt) {
  // Uniform flow against an impermeable wall across it: the dividing streamline meets
  // the wall head on at the front stagnation point (forward) and leaves it at the rear
  // one (backward). A path launched along it ends on the wall, on its own side, with
  // large steps that would otherwise carry it through.
  Model m = uniformFlow(1.0);
  m.walls.push_back(openWall(0.0, -1.0));
  Solution s = solved(m);
  ASSERT_EQ(s.barrierSegments().size(), 1u);
  for (int dir : {1, -1}) {
    SCOPED_TRACE(dir);
    for (double step : {5.0, 40.0}) {
      const Path p = tracePaths(s, {particle(-dir * 150.0, 0, 5, dir)}, settings(step, -500, -500, 500, 500))[0];
      EXPECT_EQ(p.end, PathEnd::Wall) << pathEndName(p.end) << " step " << step;
      for (const PathPoint& q : p.points) EXPECT_LE(dir * q.x, 0.0) << q.x << " " << q.y;
      EXPECT_FALSE(pathCrosses(p, 0, -200, 0, 200));
      EXPECT_NEAR(p.points.back().x, 0.0, 1e-3 * step) << "step " << step;
      // Times go on growing along the cut path.
      for (size_t k = 1; k < p.points.size(); ++k) EXPECT_GE(p.points[k].time, p.points[k - 1].time);
    }
  }
}

TEST(TraceWalls, PathsBesideTheDividingLineTurnAlongTheWallAndPassItsTip) {
  // Off the dividing streamline the flow runs along the wall to its tip and around it.
  // However large the step, no piece of a path passes through the wall.
  Model m = uniformFlow(1.0);
  m.walls.push_back(openWall(0.0, -1.0));
  Solution s = solved(m);
  for (double y0 : {-120.0, -20.0, 5.0, 60.0, 180.0}) {
    for (double step : {10.0, 60.0}) {
      SCOPED_TRACE(std::to_string(y0) + " step " + std::to_string(step));
      const Path p = tracePaths(s, {particle(-300, y0, 5, 1)}, settings(step, -500, -500, 500, 500))[0];
      EXPECT_EQ(p.end, PathEnd::Window) << pathEndName(p.end);
      EXPECT_FALSE(pathCrosses(p, 0, -200, 0, 200));
      EXPECT_GT(p.points.back().x, 0.0);
      // The path stays on its side of the dividing streamline (y = 0) while it passes.
      for (const PathPoint& q : p.points) EXPECT_GE(q.y * y0, 0.0) << q.x << " " << q.y;
    }
  }
}

TEST(TraceWalls, ABoundingWallCutsTheStepAndThePathGoesOnAroundIt) {
  // The island of the test above, turned by half an edge so that an edge faces the
  // flow at x = -100 cos(7.5 degrees). A first step of 60 from 40 in front of it would
  // end on the island: it is cut on the edge, and the path goes on around the island
  // (the numerical dividing streamline is not exactly the axis), never inside it.
  Model m = uniformFlow(1.0);
  Wall w;
  w.kind = WallKind::Inside;
  w.conductivity = 0.0;
  w.label = "island";
  for (int k = 0; k < 24; ++k) {
    const double a = 2 * kPi * (k + 0.5) / 24;
    w.vertices.push_back(Vertex{100 * std::cos(a), 100 * std::sin(a), "v" + std::to_string(k)});
  }
  m.walls.push_back(w);
  Solution s = solved(m);
  const auto barriers = s.barrierSegments();
  ASSERT_EQ(barriers.size(), 24u);
  EXPECT_TRUE(barriers.front().bounding);
  const double edge = -100.0 * std::cos(kPi / 24), step = 60.0;
  const Path p = tracePaths(s, {particle(edge - 40.0, 0, 5, 1)}, settings(step, -500, -500, 500, 500))[0];
  ASSERT_GE(p.points.size(), 3u);
  EXPECT_NEAR(p.points[1].x, edge, 1e-3 * step);
  EXPECT_LT(p.points[1].x, edge);
  EXPECT_GT(p.points[1].time, 0.0);
  EXPECT_EQ(p.end, PathEnd::Window) << pathEndName(p.end);
  for (const PathPoint& q : p.points) EXPECT_FALSE(s.ignored(q.x, q.y)) << q.x << " " << q.y;
  for (const BarrierSegment& b : barriers) EXPECT_FALSE(pathCrosses(p, b.x1, b.y1, b.x2, b.y2)) << b.x1 << " " << b.y1;
}

TEST(TraceWalls, WallsThatPassWaterAreCrossed) {
  // A leaky wall, and an impermeable one whose bottom lies above the base (the flow
  // passes under it): neither is a barrier, and the path goes through as the water does.
  for (const Wall& w : {openWall(0.5, -1.0), openWall(0.0, 4.0)}) {
    Model m = uniformFlow(1.0);
    m.walls.push_back(w);
    Solution s = solved(m);
    EXPECT_TRUE(s.barrierSegments().empty());
    const Path p = tracePaths(s, {particle(-150, 0, 5, 1)}, settings(10.0, -500, -500, 500, 500))[0];
    EXPECT_EQ(p.end, PathEnd::Window) << pathEndName(p.end) << " K " << w.conductivity;
    EXPECT_GT(p.points.back().x, 0.0);
  }
}

TEST(TraceWells, ParticlesCircleTheWellInTheDirectionItsDischargeAsks) {
  Model m = uniformFlow(1.0);
  m.wells.push_back(well(100, 50, 500.0, false, 0.25, "WL_000007"));
  m.wells.push_back(well(-300, 50, -200.0, false, 0.5, "WL_000008"));
  m.wells.push_back(well(900, 50, 0.0, false, 0.5, "WL_000009"));
  Solution s = solved(m);
  std::string why;
  auto pumped = wellParticles(s, 100.2, 50, 3, 4, &why);  // within twice the radius
  ASSERT_EQ(pumped.size(), 4u) << why;
  for (const Particle& p : pumped) {
    EXPECT_NEAR(std::hypot(p.x - 100, p.y - 50), 0.25, 1e-12);
    EXPECT_EQ(p.direction, -1);
    EXPECT_DOUBLE_EQ(p.z, 3.0);
  }
  EXPECT_EQ(pumped[2].label, "well WL_000007 particle 3");
  auto injected = wellParticles(s, -300, 50, 3, 2, &why);
  ASSERT_EQ(injected.size(), 2u);
  EXPECT_EQ(injected[0].direction, 1);
  EXPECT_TRUE(wellParticles(s, 0, 50, 3, 4, &why).empty());
  EXPECT_NE(why.find("WL_000007"), std::string::npos) << why;  // names the nearest
  EXPECT_TRUE(wellParticles(s, 900, 50, 3, 4, &why).empty());
  EXPECT_NE(why.find("no water"), std::string::npos) << why;
}

TEST(TraceFile, ColumnsOfThePathFile) {
  Path a;
  a.label = "particle 1";
  a.points = {{1234.5, -0.25, 0.0, 12.5, 13.0}, {1300.0, 2.0e6, 3.5, -1.0, 12.0}};
  Path one;
  one.label = "well WL_000001 particle 2";
  one.points = {{1.0, 2.0, 0.0, 3.0, kDryHead}};
  std::ostringstream out;
  writePathFile(out, {a, one});
  std::istringstream in(out.str());
  std::vector<std::string> l;
  for (std::string s; std::getline(in, s);) l.push_back(s);
  ASSERT_EQ(l.size(), 9u);
  EXPECT_EQ(l[0], "LABEL particle 1");
  EXPECT_EQ(l[1], "START");
  EXPECT_EQ(l[2], "     1  1.234500E+03 -2.500000E-01  0.000000E+00  1.250000E+01  1.300000E+01");
  EXPECT_EQ(l[3].size(), 76u);
  EXPECT_EQ(l[3].substr(20, 14), "  2.000000E+06");  // Y from column 21
  EXPECT_EQ(l[3].substr(34, 14), "  3.500000E+00");  // time from column 35
  EXPECT_EQ(l[3].substr(48, 14), " -1.000000E+00");  // elevation from column 49
  EXPECT_EQ(l[3].substr(62, 14), "  1.200000E+01");  // head from column 63
  EXPECT_EQ(l[4], "END");
  EXPECT_EQ(l[5], "LABEL well WL_000001 particle 2");  // a path of one point is written all the same
  EXPECT_EQ(l[7], "     1  1.000000E+00  2.000000E+00  0.000000E+00  3.000000E+00 -9.999000E+03");
  EXPECT_EQ(l[8], "END");
}

TEST(TraceFile, LongPathsAreThinnedToWhatTheFrontEndKeeps) {
  Path p;
  p.label = "long";
  for (int i = 0; i < 120001; ++i) p.points.push_back({double(i), 0, double(i), 0, 1});
  std::ostringstream out;
  writePathFile(out, {p});
  std::istringstream in(out.str());
  std::vector<std::string> l;
  for (std::string s; std::getline(in, s);) l.push_back(s);
  const size_t written = l.size() - 3;
  EXPECT_LE(written, kMaxWrittenPathPoints);
  EXPECT_GT(written, kMaxWrittenPathPoints / 2);
  EXPECT_EQ(std::strtod(l[l.size() - 2].substr(6, 14).c_str(), nullptr), 120000.0);  // the end is kept
}

namespace {

using TraceDir = tarno::test::TempDir;

std::vector<std::string> linesOf(const fs::path& p) {
  std::ifstream f(p, std::ios::binary);
  std::vector<std::string> out;
  for (std::string s; std::getline(f, s);) out.push_back(s);
  return out;
}

const std::vector<std::string> kTraceModel = {
    " error error.log", " y", " aquifer", " base 0", " permeability 10", " thickness 10", " porosity 0.25",
    " uniflow 1 0", " reference -5000 0 100", " quit", " layout", " window -1000.00 -1000.00 1000.00 1000.00 ",
    " quit ", " well", " discharge", "  500 0 800 .3 WL_000001", " quit", " solve 1 1 0 1"};

std::vector<std::string> runTrace(const fs::path& dir, const std::vector<std::string>& block) {
  auto lines = kTraceModel;
  lines.insert(lines.end(), block.begin(), block.end());
  lines.push_back(" stop");
  std::string text;
  for (const auto& l : lines) text += l + "\r\n";
  EXPECT_EQ(runCommands(parseCommandFile(text), dir / "T.DAT", dir), kExitOk);
  return linesOf(dir / "error.log");
}

}  // namespace

TEST(TraceMenu, PointsAndWellsInFileOrder) {
  TraceDir dir;
  auto err = runTrace(dir.Path(), {" trace", " picture off", " file demo", " y ", " time 3650", " step 10",
                                   " points", " 0.0000000E+00 1.0000000E+02 5.0000000E+00 1.0",
                                   " 0.0000000E+00 -1.0000000E+02 5.0000000E+00 -1.0", " quit",
                                   " well 5.0000000E+02 0.0000000E+00 5.00000E+00 3", " go", " quit"});
  EXPECT_EQ(err, std::vector<std::string>{"*"});
  auto pth = linesOf(dir.Path() / "demo.PTH");
  std::vector<std::string> labels;
  for (const auto& l : pth)
    if (l.rfind("LABEL ", 0) == 0) labels.push_back(l.substr(6));
  EXPECT_EQ(labels, (std::vector<std::string>{"particle 1", "particle 2", "well WL_000001 particle 1",
                                              "well WL_000001 particle 2", "well WL_000001 particle 3"}));
  // Every point line: six characters, then five fields of fourteen; times grow from 0.
  double last = -1;
  for (const auto& l : pth) {
    if (l.rfind("LABEL", 0) == 0 || l == "START" || l == "END") {
      last = -1;
      continue;
    }
    ASSERT_EQ(l.size(), 76u) << l;
    const double t = std::strtod(l.substr(34, 14).c_str(), nullptr);
    EXPECT_GE(t, last) << l;
    last = t;
  }
}

TEST(TraceMenu, BadInputIsReportedAndFallsBack) {
  TraceDir dir;
  const int n = static_cast<int>(kTraceModel.size());
  auto err = runTrace(dir.Path(), {" trace", " file bad", " y", " time -5", " step 0", " points", " 0 100 5 1",
                                   " quit", " well 0 900 5 3", " well 500 0 5 0", " go", " quit", " trace",
                                   " file nogo", " y", " points", " 0 0 5 1", " quit", " quit"});
  ASSERT_EQ(err.size(), 5u);
  EXPECT_EQ(err[0].rfind("line " + std::to_string(n + 4), 0), 0u) << err[0];  // time
  EXPECT_NE(err[0].find("without a time limit"), std::string::npos) << err[0];
  EXPECT_EQ(err[1].rfind("line " + std::to_string(n + 5), 0), 0u) << err[1];  // step: the default is used
  EXPECT_NE(err[1].find("0.004"), std::string::npos) << err[1];
  EXPECT_EQ(err[2].rfind("line " + std::to_string(n + 9), 0), 0u) << err[2];  // no well there
  EXPECT_EQ(err[3].rfind("line " + std::to_string(n + 10), 0), 0u) << err[3];  // no particles asked
  EXPECT_EQ(err[4].rfind("line " + std::to_string(n + 13), 0), 0u) << err[4];  // a trace without go
  EXPECT_NE(err[4].find("\"go\""), std::string::npos) << err[4];
  auto pth = linesOf(dir.Path() / "bad.PTH");
  ASSERT_FALSE(pth.empty());
  EXPECT_EQ(pth[0], "LABEL particle 1");
  // The default step: 0.004 of the window's diagonal.
  auto xy = [&](int k) {
    return std::array<double, 2>{std::strtod(pth[k].substr(6, 14).c_str(), nullptr),
                                 std::strtod(pth[k].substr(20, 14).c_str(), nullptr)};
  };
  const double length = std::hypot(xy(3)[0] - xy(2)[0], xy(3)[1] - xy(2)[1]);
  EXPECT_NEAR(length, 0.004 * std::hypot(2000.0, 2000.0), 0.1);
  EXPECT_FALSE(fs::exists(dir.Path() / "nogo.PTH"));
}
