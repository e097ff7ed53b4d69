// Lakes drawn by their shores: a circular lake edge against the radial solution of its
// balance, an inlet stream that raises the stage, a lake that dries, the stage table of a
// saved and loaded solution, and the command file's lake edge solved by the program.
#include "engine/lake.h"
#include "engine/lake_edge.h"
#include "engine/solution.h"
#include "helpers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <optional>
#include <sstream>

using namespace tarno::engine;
using namespace tarno::engine::testing;

namespace {

// A confined aquifer (T = 100) fixed at the reference point, without uniform flow, and a
// lake edge around a regular polygon of n vertices whose area is that of the circle of
// radius R. The edge is a routed string as the command file gives it: evaporation less
// precipitation `e`, bottom and second estimate from " Levels".
struct EdgeLakeCase {
  double k = 10, H = 10, xr = -5000, href = 100, R = 200;
  int n = 64;

  double Rp() const { return R * std::sqrt(2.0 * kPi / (n * std::sin(2.0 * kPi / n))); }

  LineSinkString edge(double e, double firstEstimate, double secondEstimate, double bottom) const {
    LineSinkString ls;
    ls.kind = LineSinkKind::Stream;
    ls.label = "LS_000007";
    ls.lake.on = true;
    ls.lake.netEvaporation = e;
    ls.lake.estimate = secondEstimate;
    ls.lake.bottom = bottom;
    for (int i = 0; i < n; ++i) {
      const double t0 = 2.0 * kPi * i / n, t1 = 2.0 * kPi * (i + 1) / n;
      char label[32];
      std::snprintf(label, sizeof label, "LS_000007_%04d", (i + 1) * 100);
      ls.segments.push_back({Rp() * std::cos(t0), Rp() * std::sin(t0), Rp() * std::cos(t1),
                             Rp() * std::sin(t1), firstEstimate, label});
    }
    return ls;
  }

  Model model(double e, double bottom = -1e30) const {
    Model m = aquiferModel(-100, k, H, xr, 0, href);
    m.lineSinks.push_back(edge(e, href - 5, href + 5, bottom));
    return m;
  }

  // The exact stage: the lake takes Q = e A from the aquifer, which outside the shore is
  // the radial flow to a sink of Q fixed at the reference point.
  double exactStage(double e) const {
    const double Q = e * kPi * R * R, T = k * H;
    return href + Q / (2 * kPi * T) * std::log(R / std::fabs(xr));
  }
  // The polygon's control points lie within R (pi / n)^2 / 2 of the circle.
  double tolerance(double e) const {
    const double Q = std::fabs(e) * kPi * R * R, T = k * H;
    return 2 * Q / (2 * kPi * T * R) * R * (kPi / n) * (kPi / n) + 1e-6;
  }
};

LakeSolveReport solveEdges(const Model& m, std::optional<Solution>& s) {
  return solveWithLakeEdges(m, s, opts(5), {}, {});
}

}  // namespace

TEST(LakeEdges, CircularEdgeStageAndBalanceAgainstTheRadialSolution) {
  const EdgeLakeCase c;
  for (double e : {0.002, -0.001}) {  // net evaporation, then net rain
    std::optional<Solution> s;
    const LakeSolveReport rep = solveEdges(c.model(e), s);
    ASSERT_TRUE(s && s->solved());
    EXPECT_TRUE(rep.converged);
    const auto lakes = lakeResults(*s);
    ASSERT_EQ(lakes.size(), 1u);
    const LakeResult& L = lakes[0];
    const double A = kPi * c.R * c.R;
    EXPECT_NEAR(L.polygonArea, A, 1e-9 * A);
    EXPECT_NEAR(L.stage, c.exactStage(e), c.tolerance(e)) << "e = " << e;
    EXPECT_FALSE(L.dry);
    // The balance closes to 1e-6 of its largest term; the groundwater the edge takes is
    // the net evaporation of the lake's area.
    EXPECT_LE(std::fabs(L.error), 1e-6 * std::max(L.totalIn, L.totalOut));
    if (e > 0) {
      EXPECT_NEAR(L.groundwaterIn, e * A, 1e-6 * e * A);
      EXPECT_NEAR(L.evaporation, e * A, 1e-9 * e * A);
    } else {
      EXPECT_NEAR(L.groundwaterOut, -e * A, -1e-6 * e * A);
      EXPECT_NEAR(L.precipitation, -e * A, -1e-9 * e * A);
    }
    // The segments of the solved model hold the stage; a stage point by the shore gets it.
    for (const Segment& g : s->model().lineSinks.at(0).segments) EXPECT_EQ(g.value, L.stage);
    EXPECT_DOUBLE_EQ(nearestLakeStage(*s, c.R + 30, 0), L.stage);
    // The head just outside follows the radial solution too.
    const double Q = e * A, T = c.k * c.H;
    EXPECT_NEAR(s->head(2 * c.R, 0), c.href + Q / (2 * kPi * T) * std::log(2 * c.R / 5000.0),
                c.tolerance(e));
  }
}

TEST(LakeEdges, SecantNeedsFewSolvesFromAnyPairOfEstimates) {
  const EdgeLakeCase c;
  Model m = c.model(0.002);
  // Estimates far from the stage, and equal estimates (the second is moved off the first).
  for (auto [a, b] : {std::pair{50.0, 150.0}, std::pair{99.0, 99.0}}) {
    for (Segment& g : m.lineSinks[0].segments) g.value = a;
    m.lineSinks[0].lake.estimate = b;
    std::optional<Solution> s;
    const LakeSolveReport rep = solveEdges(m, s);
    EXPECT_TRUE(rep.converged);
    // The balance is linear in the stage: the secant lands in its third solve, the
    // fourth confirms.
    EXPECT_LE(rep.lakeIterations, 5);
    EXPECT_NEAR(lakeResults(*s).at(0).stage, c.exactStage(0.002), c.tolerance(0.002));
  }
}

TEST(LakeEdges, InletStreamRaisesTheStageAndEntersTheBalance) {
  const EdgeLakeCase c;
  auto withInlet = [&](double inflow) {
    Model m = c.model(0.002);
    LineSinkString st;
    st.kind = LineSinkKind::Stream;
    st.label = "LS_000009";
    st.endInflow = inflow;
    // A stream with a high bed resistance (it barely exchanges with the aquifer) whose
    // last vertex is the edge's first vertex.
    st.resistance = 1e9;
    st.width = 1;
    st.segments.push_back({c.Rp() + 500, 0, c.Rp() + 250, 0, 99.0, "LS_000009_0100"});
    st.segments.push_back({c.Rp() + 250, 0, c.Rp(), 0, 99.0, "LS_000009_0200"});
    m.lineSinks.push_back(st);
    std::optional<Solution> s;
    const LakeSolveReport rep = solveEdges(m, s);
    EXPECT_TRUE(rep.converged);
    return lakeResults(*s).at(0);
  };
  const LakeResult dryStream = withInlet(0.0), fed = withInlet(100.0);
  EXPECT_NEAR(fed.streamIn, 100.0, 1e-3);
  EXPECT_LE(std::fabs(fed.error), 1e-6 * std::max(fed.totalIn, fed.totalOut));
  // The stream brings part of what evaporates: the lake takes less groundwater, so it
  // stands higher, by the radial solution's response to the smaller sink.
  const double T = c.k * c.H;
  EXPECT_NEAR(fed.stage - dryStream.stage, -100.0 / (2 * kPi * T) * std::log(c.R / 5000.0), 1e-3);
  EXPECT_NEAR(dryStream.groundwaterIn - fed.groundwaterIn, 100.0, 1e-3);
}

TEST(LakeEdges, LakeBelowItsBottomIsDryAndTheEdgeOnlyDrains) {
  const EdgeLakeCase c;
  // The balance needs a stage well below 100; a bottom at 99.9 leaves the lake dry.
  std::optional<Solution> s;
  const LakeSolveReport rep = solveEdges(c.model(0.002, 99.9), s);
  EXPECT_TRUE(rep.converged);
  const LakeResult L = lakeResults(*s).at(0);
  EXPECT_TRUE(L.dry);
  EXPECT_EQ(L.stage, kDryHead);
  EXPECT_EQ(nearestLakeStage(*s, c.R + 10, 0), kDryHead);
  EXPECT_EQ(s->model().lineSinks[0].kind, LineSinkKind::Drain);
  EXPECT_GE(L.groundwaterIn, 0.0);
  EXPECT_LT(L.evaporation, 0.002 * kPi * c.R * c.R);  // it evaporates only what reaches it
  EXPECT_LE(std::fabs(L.error), 1e-9 * std::max(1.0, L.totalIn));
  // A bottom below the stage changes nothing.
  std::optional<Solution> w;
  solveEdges(c.model(0.002, 50.0), w);
  EXPECT_FALSE(lakeResults(*w).at(0).dry);
  EXPECT_NEAR(lakeResults(*w).at(0).stage, c.exactStage(0.002), c.tolerance(0.002));
}

TEST(LakeEdges, SavedAndLoadedSolutionKeepsTheLakeEdge) {
  const EdgeLakeCase c;
  std::optional<Solution> s;
  solveEdges(c.model(0.002, 20.0), s);
  const LakeResult before = lakeResults(*s).at(0);
  const std::string path = ::testing::TempDir() + "/lake_edge.sol";
  s->save(path);
  const Solution loaded = Solution::load(path);
  const LineSinkString& ls = loaded.model().lineSinks.at(0);
  EXPECT_TRUE(ls.lake.on);
  EXPECT_TRUE(ls.lake.solved);
  EXPECT_EQ(ls.lake.bottom, 20.0);
  EXPECT_EQ(ls.lake.netEvaporation, 0.002);
  const LakeResult after = lakeResults(loaded).at(0);
  EXPECT_EQ(after.stage, before.stage);
  EXPECT_NEAR(after.groundwaterIn, before.groundwaterIn, 1e-9 * before.groundwaterIn);
  std::remove(path.c_str());
}
