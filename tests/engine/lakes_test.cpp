// Lakes against exact solutions: a circular lake of high interior conductivity in
// uniform flow, with and without a stage table, its balance, a dry lake, and the stage
// table itself.
#include "engine/lake.h"
#include "engine/solution.h"
#include "helpers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <optional>

using namespace tarno::engine;
using namespace tarno::engine::testing;

namespace {

// A regular polygon of n vertices with the area of the circle of radius R.
std::vector<Vertex> circle(double cx, double cy, double R, int n, const std::string& prefix) {
  const double Rp = R * std::sqrt(2.0 * kPi / (n * std::sin(2.0 * kPi / n)));
  std::vector<Vertex> v;
  for (int i = 0; i < n; ++i) {
    const double t = 2.0 * kPi * i / n;
    char buf[16];
    std::snprintf(buf, sizeof buf, "_%04d", i + 1);
    v.push_back({cx + Rp * std::cos(t), cy + Rp * std::sin(t), prefix + buf});
  }
  return v;
}

// Confined aquifer (base 0, thickness 10, conductivity 10) with a uniform flow Q0 in +x
// and the reference far upstream; a circular lake of radius R at the origin with
// interior conductivity kLake.
struct CircularLake {
  double k = 10, H = 10, Q0 = 1.0, xr = -5000, href = 100, R = 200, kLake = 1000;
  int n = 64;

  Model model(double P, double E, double c) const {
    Model m = aquiferModel(0, k, H, xr, 0, href);
    m.aquifer.qx0 = Q0;
    Lake l;
    l.conductivity = kLake;
    l.precipitation = P;
    l.evaporation = E;
    l.resistance = c;
    l.label = "LK_000001_0000";
    l.vertices = circle(0, 0, R, n, "LK_000001");
    m.lakes.push_back(l);
    return m;
  }

  // The exact head at the centre for a uniform exchange g (> 0 out of the aquifer): the
  // uniform flow with its dipole (zero at the centre) and the radial solution of a
  // uniform area sink in a circle of transmissivity Ti inside To, fixed at the
  // reference point. Written independently of the engine.
  double centreHead(double g) const {
    const double To = k * H, Ti = kLake * H, G = Q0 / To;
    const double a = (To - Ti) / (To + Ti);
    const double rr = std::fabs(xr);
    const double C = href + G * (xr + a * R * R / xr) - g * R * R / (2 * To) * std::log(rr / R);
    return C - g * R * R / (4 * Ti);
  }

  // The polygon's error against the circle: its edges lie within R (pi / n)^2 / 2 of the
  // circle, over which the radial solution outside changes by its slope g R / (2 To); the
  // uniform flow's part vanishes at the centre by symmetry.
  double tolerance(double g) const {
    return std::fabs(g) * R / (2 * k * H) * R * (kPi / n) * (kPi / n) / 2 + 1e-9;
  }
};

LakeSolveReport solveLakes(const Model& m, std::optional<Solution>& s) {
  return solveWithLakes(m, s, opts(5), {}, {});
}

}  // namespace

// ---------------------------------------------------------------------------------
// The stage table

TEST(StageTable, RowsCommentsAndBadTables) {
  std::vector<StageRow> t;
  std::string why;
  ASSERT_TRUE(parseStageTable(
      "! stage area volume\n10 0 0\n\n12, 100, 100\r\n* top\n15\t400\t850\n", t, why))
      << why;
  ASSERT_EQ(t.size(), 3u);
  EXPECT_EQ(t[1].stage, 12);
  EXPECT_EQ(t[2].area, 400);
  EXPECT_EQ(t[2].volume, 850);
  EXPECT_FALSE(parseStageTable("10 0 0\n10 5 5\n", t, why));
  EXPECT_NE(why.find("line 2"), std::string::npos) << why;
  EXPECT_FALSE(parseStageTable("10 0 0\n11 -5 5\n", t, why));
  EXPECT_FALSE(parseStageTable("10 0\n", t, why));
  EXPECT_FALSE(parseStageTable("10 0 0 7\n", t, why));
  EXPECT_FALSE(parseStageTable("! nothing\n", t, why));
  EXPECT_FALSE(readStageTable("/nonexistent/stage.tab", t, why));
}

TEST(StageTable, AreaAndVolumeBetweenAndBeyondTheRows) {
  const std::vector<StageRow> t = {{10, 0, 0}, {12, 100, 100}, {15, 400, 850}};
  EXPECT_EQ(stageArea(t, 9.99), 0.0);  // below the bottom the lake is dry
  EXPECT_EQ(stageArea(t, 10), 0.0);
  EXPECT_DOUBLE_EQ(stageArea(t, 11), 50.0);
  EXPECT_DOUBLE_EQ(stageArea(t, 13.5), 250.0);
  EXPECT_DOUBLE_EQ(stageArea(t, 20), 400.0);  // straight banks above the table
  EXPECT_DOUBLE_EQ(stageVolume(t, 11), 50.0);
  EXPECT_DOUBLE_EQ(stageVolume(t, 16), 850.0 + 400.0);
  EXPECT_EQ(stageVolume(t, 5), 0.0);
}

// ---------------------------------------------------------------------------------
// A circular lake in uniform flow

TEST(Lakes, CircularLakeStageAndBalanceAgainstTheExactSolution) {
  const CircularLake c;
  const double P = 0.001, E = 0.003, res = 50;
  std::optional<Solution> s;
  const auto rep = solveLakes(c.model(P, E, res), s);
  ASSERT_TRUE(s && s->solved());
  EXPECT_TRUE(rep.converged);
  EXPECT_EQ(rep.lakeIterations, 1);  // without a table the exchange is known at once
  const auto lakes = lakeResults(*s);
  ASSERT_EQ(lakes.size(), 1u);
  const LakeResult& L = lakes[0];
  const double g = E - P, A = kPi * c.R * c.R;
  EXPECT_NEAR(L.polygonArea, A, 1e-9 * A);
  EXPECT_NEAR(L.stage, c.centreHead(g) - g * res, c.tolerance(g));
  EXPECT_FALSE(L.dry);
  // Balance: groundwater in = evaporation - precipitation, closed to 1e-6 of the
  // largest term.
  EXPECT_NEAR(L.groundwaterIn, (E - P) * A, 1e-9 * E * A);
  EXPECT_EQ(L.groundwaterOut, 0.0);
  EXPECT_NEAR(L.precipitation, P * A, 1e-9 * P * A);
  EXPECT_NEAR(L.evaporation, E * A, 1e-9 * E * A);
  EXPECT_LE(std::fabs(L.error), 1e-6 * std::max(L.totalIn, L.totalOut));
  // The groundwater that enters the lake is the net flow into its polygon, measured on
  // the aquifer side: the integral of the normal discharge around a ring just outside.
  std::vector<std::pair<double, double>> ring;
  for (int i = 0; i <= 180; ++i) {
    const double t = 2 * kPi * i / 180;
    ring.push_back({1.05 * c.R * std::cos(t), 1.05 * c.R * std::sin(t)});
  }
  EXPECT_NEAR(-s->flux(ring), L.groundwaterIn, 1e-3 * L.groundwaterIn);
  // Inside, the lake has its own conductivity.
  EXPECT_EQ(s->evaluate(10, 10).conductivity, c.kLake);
  // A lake stage point near the lake reports the stage; the inhomogeneity section
  // leaves the lake out.
  LakeSolutionSource src(*s);
  EXPECT_DOUBLE_EQ(src.lakeStage(300, 0), L.stage);
  EXPECT_TRUE(src.inhomogeneities().empty());
}

TEST(Lakes, StageFollowsTheBottomResistanceAndTheSignOfTheBalance) {
  const CircularLake c;
  auto stage = [&](double P, double E, double res) {
    std::optional<Solution> s;
    solveLakes(c.model(P, E, res), s);
    return lakeResults(*s).at(0);
  };
  // The exchange is fixed by the balance, so the head under the lake does not change
  // with the resistance: the stage drops by exactly (E - P) c.
  const LakeResult a = stage(0.001, 0.003, 0.0), b = stage(0.001, 0.003, 200.0);
  EXPECT_NEAR(a.aquiferHead, b.aquiferHead, 1e-9);
  EXPECT_NEAR(a.stage - b.stage, 0.002 * 200.0, 1e-9);
  EXPECT_NEAR(a.stage, c.centreHead(0.002), c.tolerance(0.002));
  // More rain than evaporation: the lake loses water to the aquifer and stands above it.
  const LakeResult w = stage(0.004, 0.001, 100.0);
  EXPECT_GT(w.groundwaterOut, 0.0);
  EXPECT_EQ(w.groundwaterIn, 0.0);
  EXPECT_NEAR(w.stage, c.centreHead(-0.003) + 0.003 * 100.0, c.tolerance(0.003));
  EXPECT_GT(w.stage, w.aquiferHead);
  EXPECT_LE(std::fabs(w.error), 1e-6 * std::max(w.totalIn, w.totalOut));
}

// With a stage table the water surface, and with it the exchange, depends on the stage:
// between the rows (h0, 0) and (h1, A) the area is A (s - h0) / (h1 - h0), so the
// exchange is (E - P) (s - h0) / (h1 - h0) per area of polygon, and the head under the
// lake is linear in it (confined aquifer). The stage meets both: a linear equation.
TEST(Lakes, StageTableClosesTheBalanceAtTheExactStage) {
  const CircularLake c;
  const double P = 0.0005, E = 0.004, res = 100, A = kPi * c.R * c.R;
  const double hBase = c.centreHead(0.0);
  const double h0 = hBase - 3.0, h1 = hBase + 1.0;
  Model m = c.model(P, E, res);
  m.lakes[0].table = {{h0, 0.0, 0.0}, {h1, A, 2.0 * A}, {h1 + 10, A, 12.0 * A}};
  std::optional<Solution> s;
  const auto rep = solveLakes(m, s);
  EXPECT_TRUE(rep.converged);
  EXPECT_GT(rep.lakeIterations, 1);
  const LakeResult L = lakeResults(*s).at(0);
  // s = hBase - g D with g = beta (s - h0), D the head's response to g plus c.
  const double D = (hBase - c.centreHead(1.0)) + res;
  const double beta = (E - P) / (h1 - h0);
  const double exact = (hBase + beta * D * h0) / (1.0 + beta * D);
  EXPECT_NEAR(L.stage, exact, c.tolerance(E));
  ASSERT_GT(L.stage, h0);
  ASSERT_LT(L.stage, h1);
  EXPECT_NEAR(L.surfaceArea, A * (L.stage - h0) / (h1 - h0), 1e-9 * A);
  EXPECT_NEAR(L.volume, 2.0 * A * (L.stage - h0) / (h1 - h0), 1e-9 * A);
  EXPECT_LE(std::fabs(L.error), 1e-6 * std::max(L.totalIn, L.totalOut));
  EXPECT_NEAR(L.groundwaterIn, (E - P) * L.surfaceArea, 1e-6 * E * A);
}

TEST(Lakes, LakeWhoseTableLiesAboveTheWaterIsDry) {
  const CircularLake c;
  Model m = c.model(0.001, 0.003, 10);
  const double hBase = c.centreHead(0.0);
  m.lakes[0].table = {{hBase + 2, 0, 0}, {hBase + 4, 1000, 1000}};
  std::optional<Solution> s;
  EXPECT_TRUE(solveLakes(m, s).converged);
  const LakeResult L = lakeResults(*s).at(0);
  EXPECT_TRUE(L.dry);
  EXPECT_EQ(L.stage, kDryHead);
  EXPECT_EQ(L.surfaceArea, 0.0);
  EXPECT_EQ(L.groundwaterIn + L.groundwaterOut + L.precipitation + L.evaporation, 0.0);
  // No exchange: the aquifer under the lake is that of the uniform flow (the polygon
  // stands for the circle, off by G R (pi / n)^2 at most).
  EXPECT_NEAR(L.aquiferHead, hBase, c.Q0 / (c.k * c.H) * c.R * (kPi / c.n) * (kPi / c.n));
  EXPECT_EQ(nearestLakeStage(*s, 0, 250), kDryHead);
}

// Over an aquifer that is dry under it a lake holds no water: dry, with no exchange.
TEST(Lakes, LakeOverADryAquiferIsDry) {
  Model m = aquiferModel(0, 10, 10, -5000, 0, 1.0);
  m.aquifer.qx0 = 0.1;  // the potential falls below 0 well before the lake
  Lake l;
  l.conductivity = 100;
  l.precipitation = 0.001;
  l.evaporation = 0.002;
  l.resistance = 10;
  l.label = "LK_000001_0000";
  l.vertices = circle(0, 0, 100, 16, "LK_000001");
  m.lakes.push_back(l);
  std::optional<Solution> s;
  EXPECT_TRUE(solveLakes(m, s).converged);
  const LakeResult L = lakeResults(*s).at(0);
  EXPECT_TRUE(L.dry);
  EXPECT_EQ(L.stage, kDryHead);
  EXPECT_EQ(L.totalIn + L.totalOut, 0.0);
}

// Two lakes: the solution's model carries them; saved and loaded, the stages and
// balances are the same, and a lake with fewer than three vertices is left out.
TEST(Lakes, SaveAndLoadKeepTheLakesAndTheirStages) {
  CircularLake c;
  Model m = c.model(0.001, 0.002, 20);
  Lake second = m.lakes[0];
  second.label = "LK_000002_0000";
  second.vertices = circle(800, 300, 150, 32, "LK_000002");
  second.table = {{90, 0, 0}, {110, 50000, 400000}};
  m.lakes.push_back(second);
  Lake bad;
  bad.label = "LK_000003_0000";
  bad.vertices = {{5000, 5000, "LK_000003_0001"}};
  m.lakes.push_back(bad);
  std::optional<Solution> s;
  ASSERT_TRUE(solveLakes(m, s).converged);
  const auto before = lakeResults(*s);
  ASSERT_EQ(before.size(), 2u);
  EXPECT_NE(before[0].stage, before[1].stage);
  const auto path = std::filesystem::temp_directory_path() / "tarno_lakes_test.SOL";
  s->save(path.string());
  Solution t = Solution::load(path.string());
  std::filesystem::remove(path);
  const auto after = lakeResults(t);
  ASSERT_EQ(after.size(), 2u);
  for (size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(after[i].label, before[i].label);
    EXPECT_DOUBLE_EQ(after[i].stage, before[i].stage);
    EXPECT_DOUBLE_EQ(after[i].groundwaterIn, before[i].groundwaterIn);
  }
  // Solving the loaded model again builds each lake once.
  std::optional<Solution> u;
  solveLakes(t.model(), u);
  EXPECT_EQ(u->inhomogeneityResults().size(), 2u);
  EXPECT_NEAR(lakeResults(*u).at(1).stage, before[1].stage, 1e-6);
}

// ---------------------------------------------------------------------------------
// Streams linked to lakes

namespace {

LineSinkString stream(double x1, double x2, double y, int n, double head, double endInflow,
                      const std::string& label) {
  LineSinkString s = straightString(LineSinkKind::Stream, x1, y, x2, y, n, head, head, label);
  s.resistance = 10;
  s.width = 2;
  s.endInflow = endInflow;
  return s;
}

const SegmentResult& lastSegmentOf(const std::vector<SegmentResult>& segs,
                                   const std::string& label) {
  const SegmentResult* last = nullptr;
  for (const auto& r : segs)
    if (r.stringLabel == label) last = &r;
  if (!last) throw std::runtime_error("no segment of " + label);
  return *last;
}

}  // namespace

TEST(StageTable, RatingTablesAndTheirOutflow) {
  std::vector<std::pair<double, double>> r;
  std::string why;
  ASSERT_TRUE(parseRatingTable("* stage discharge\n10 0\n11, 100\n13 500\n", r, why)) << why;
  ASSERT_EQ(r.size(), 3u);
  EXPECT_EQ(ratingFlow(r, 9), 0.0);
  EXPECT_DOUBLE_EQ(ratingFlow(r, 10.5), 50.0);
  EXPECT_DOUBLE_EQ(ratingFlow(r, 12), 300.0);
  EXPECT_DOUBLE_EQ(ratingFlow(r, 14), 700.0);  // on with the last slope
  EXPECT_FALSE(parseRatingTable("10 0\n9 5\n", r, why));
  EXPECT_FALSE(parseRatingTable("10 -1\n", r, why));
  EXPECT_FALSE(parseRatingTable("10 1 2\n", r, why));
}

// An inlet brings its stream flow into the lake, an outlet takes what its rating gives
// at the stage; the lake's balance closes with both, and the flows are those of the
// solution's own stream routing.
TEST(Lakes, InletAndOutletStreamsEnterTheBalance) {
  const CircularLake c;
  const double P = 0.001, E = 0.003;
  Model m = c.model(P, E, 50);
  const double hc = c.centreHead(0.0);
  LineSinkString in = stream(-1000, -100, 0, 4, hc + 5, 300, "LS_000010");
  in.inlet = true;
  LineSinkString out = stream(100, 1000, 0, 4, hc - 5, 7, "LS_000011");
  out.outletTable = "out.tab";
  out.outletRating = {{hc - 2, 0}, {hc + 2, 2000}};
  m.lineSinks = {in, out};
  std::optional<Solution> s;
  const auto rep = solveLakes(m, s);
  EXPECT_TRUE(rep.converged);
  const LakeResult L = lakeResults(*s).at(0);
  EXPECT_LE(std::fabs(L.error), 1e-6 * std::max(L.totalIn, L.totalOut));
  // The inlet's flow at its end, which its end inflow is part of, all enters the lake
  // (the lake takes it from the solve before the last, which the iteration made agree to
  // 1e-6).
  const auto segs = s->segmentResults();
  const SegmentResult& end = lastSegmentOf(segs, "LS_000010");
  EXPECT_NEAR(L.streamIn, end.baseFlow + end.overlandFlow, 1e-6 * L.totalIn);
  EXPECT_NEAR(end.overlandFlow, 300.0, 1e-9);
  EXPECT_EQ(L.overlandIn + L.overlandOut, 0.0);
  EXPECT_TRUE(end.downstreamLabel.empty());
  // The outlet carries what the rating gives at the stage, as its end inflow.
  EXPECT_GT(L.streamOut, 0.0);
  EXPECT_NEAR(L.streamOut, ratingFlow(out.outletRating, L.stage), 1e-6 * L.streamOut);
  EXPECT_DOUBLE_EQ(s->model().lineSinks[1].endInflow, L.streamOut);
  EXPECT_NEAR(lastSegmentOf(segs, "LS_000011").overlandFlow, L.streamOut, 1e-9 * L.streamOut);
  // The exchange with the aquifer closes the rest, and the flux around the lake shows it.
  const double net = (E - P) * L.polygonArea - L.streamIn + L.streamOut;
  EXPECT_NEAR(L.groundwaterIn - L.groundwaterOut, net, 1e-6 * L.totalIn);
}

// A string that leaves one lake and enters another carries the first lake's outflow into
// the second; both balances close.
TEST(Lakes, AStreamLinksTwoLakesInAChain) {
  const CircularLake c;
  Model m = c.model(0.002, 0.001, 20);  // a wet lake: it overflows into the stream
  const double hc = c.centreHead(0.0);
  Lake second = m.lakes[0];
  second.label = "LK_000002_0000";
  second.vertices = circle(1500, 0, 150, 32, "LK_000002");
  m.lakes.push_back(second);
  LineSinkString link = stream(100, 1400, 0, 6, hc - 8, 0, "LS_000020");
  link.outletTable = "out.tab";
  link.outletRating = {{hc - 3, 0}, {hc + 3, 600}};
  link.inlet = true;
  m.lineSinks = {link};
  std::optional<Solution> s;
  EXPECT_TRUE(solveLakes(m, s).converged);
  const auto lakes = lakeResults(*s);
  ASSERT_EQ(lakes.size(), 2u);
  for (const auto& L : lakes)
    EXPECT_LE(std::fabs(L.error), 1e-6 * std::max(L.totalIn, L.totalOut)) << L.label;
  EXPECT_GT(lakes[0].streamOut, 0.0);
  EXPECT_EQ(lakes[0].streamIn, 0.0);
  // The second lake receives the outflow of the first (as the stream's end inflow) and
  // what the stream gained or lost on the way.
  const SegmentResult& end = lastSegmentOf(s->segmentResults(), "LS_000020");
  EXPECT_NEAR(end.overlandFlow, lakes[0].streamOut, 1e-9 * lakes[0].streamOut);
  // (taken from the solve before the last, which the iteration made agree to 1e-6)
  EXPECT_NEAR(lakes[1].streamIn, end.baseFlow + end.overlandFlow, 1e-6 * lakes[1].totalIn);
  EXPECT_EQ(lakes[1].streamOut, 0.0);
}
