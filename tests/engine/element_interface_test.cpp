// The element interface (engine/elements.h): what each element says about its unknowns
// must agree with the evaluation of the solution, which does not go through it (the
// structure-of-arrays loops of engine/fields.cpp and the area elements' sums). A new
// element whose column or unit discharge disagreed with its evaluation would solve
// conditions that the reported heads do not meet.
#include "engine/elements.h"

#include "engine/state.h"
#include "helpers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <set>
#include <vector>

namespace tarno::engine {
namespace {

using testing::aquiferModel;
using testing::straightString;
using testing::well;

// A model with an unknown of every kind and no known element (no uniform flow, no
// discharge-specified element, no recharge), so that the field is the sum of the
// unknowns' unit fields alone.
Model everyKind() {
  Model m = aquiferModel(0.0, 10.0, 20.0, -2000.0, 0.0, 30.0);
  m.wells.push_back(well(-300.0, 200.0, 25.0, true, 0.2, "WL_HEAD"));
  PartialWell pw;
  pw.x = 250.0;
  pw.y = -250.0;
  pw.top = 15.0;
  pw.bottom = 5.0;
  pw.radius = 0.2;
  pw.value = 24.0;
  pw.headSpecified = true;
  pw.label = "WL_PARTIAL";
  m.partialWells.push_back(pw);
  LineSinkString river =
      straightString(LineSinkKind::Head, -500.0, -400.0, 500.0, -380.0, 4, 28.0, 26.0, "LS_RIVER");
  river.resistance = 2.0;
  river.width = 5.0;
  river.depth = 1.0;
  m.lineSinks.push_back(river);
  m.lineSinks.push_back(
      straightString(LineSinkKind::Drain, -400.0, 400.0, 100.0, 450.0, 3, 27.0, 26.5, "LS_DRAIN"));
  LineSinkString gallery = straightString(LineSinkKind::Gallery, 300.0, 100.0, 300.0, 300.0, 3,
                                          20.0, 20.0, "LS_GALLERY");
  gallery.pumping = 300.0;
  m.lineSinks.push_back(gallery);
  m.lineSinks.push_back(
      straightString(LineSinkKind::Stream, -600.0, 0.0, -450.0, 150.0, 2, 29.0, 28.0, "LS_STREAM"));
  m.ponds.push_back(Pond{0.0, -100.0, 30.0, 29.0, true, "WL_POND"});
  Inhomogeneity in;
  in.conductivity = 40.0;
  in.label = "HB_INHOMOGENEITY";
  in.vertices = {{100, 0, "a"}, {200, 0, "b"}, {200, 80, "c"}, {100, 80, "d"}};
  m.inhomogeneities.push_back(in);
  Wall w;
  w.kind = WallKind::Open;
  w.conductivity = 0.5;
  w.thickness = 1.0;
  w.bottom = -1.0;
  w.label = "HB_WALL";
  w.vertices = {{-200, -200, "a"}, {-100, -150, "b"}, {0, -220, "c"}};
  m.walls.push_back(w);
  return m;
}

// Points away from every element (none lies on a segment, an edge or a pond's rim).
std::vector<std::pair<double, double>> probePoints() {
  std::vector<std::pair<double, double>> p;
  for (int i = 0; i < 7; ++i)
    for (int j = 0; j < 7; ++j) p.emplace_back(-650.0 + 211.3 * i, -620.0 + 197.1 * j);
  p.emplace_back(150.0, 40.0);  // inside the inhomogeneity
  p.emplace_back(5.0, -95.0);   // inside the pond
  return p;
}

class ElementInterface : public ::testing::Test {
 protected:
  void SetUp() override {
    s.model = everyKind();
    s.prepare();
    // Strengths of no particular meaning, every unknown non-zero.
    for (int j = 0; j < s.n; ++j)
      s.x[j] = 0.37 * std::sin(1.7 * j + 0.3) + (j % 3 == 0 ? -0.2 : 0.15);
    s.syncStrengths(false);
  }
  Solution::State s;
};

TEST_F(ElementInterface, TheModelHasAnUnknownOfEveryKind) {
  std::set<UnknownKind> kinds(s.ukind.begin(), s.ukind.end());
  for (UnknownKind k :
       {UnknownKind::WellQ, UnknownKind::SegSigma, UnknownKind::GalleryPhi, UnknownKind::Constant,
        UnknownKind::DbNode, UnknownKind::DbPara, UnknownKind::PondRate})
    EXPECT_TRUE(kinds.count(k)) << "kind " << int(k);
  // Only the gallery's row has no collocation point of its own.
  for (int j = 0; j < s.n; ++j)
    EXPECT_EQ(elementOf(s, j).hasPoint(), s.ukind[j] != UnknownKind::GalleryPhi) << "unknown " << j;
}

TEST_F(ElementInterface, ColumnsSumToThePotentialTheSolutionEvaluates) {
  const auto pts = probePoints();
  std::vector<double> px, py;
  for (const auto& [x, y] : pts) {
    px.push_back(x);
    py.push_back(y);
  }
  const int m = (int)pts.size();
  std::vector<double> sum(m, 0.0), col(m);
  for (int j = 0; j < s.n; ++j) {
    elementOf(s, j).column(s, j, px.data(), py.data(), m, col.data());
    for (int i = 0; i < m; ++i) sum[i] += s.x[j] * col[i];
  }
  for (int i = 0; i < m; ++i) {
    const double phi = s.potentialAt(px[i], py[i]);
    EXPECT_NEAR(sum[i], phi, 1e-9 * (1.0 + std::fabs(phi)))
        << "at (" << px[i] << ", " << py[i] << ")";
  }
}

TEST_F(ElementInterface, UnitDischargesSumToTheDischargeTheSolutionEvaluates) {
  for (const auto& [x, y] : probePoints()) {
    std::complex<double> w(0.0, 0.0);
    for (int j = 0; j < s.n; ++j) w += s.x[j] * elementOf(s, j).unitW(s, j, x, y);
    const std::complex<double> expected = s.wAt(x, y);
    EXPECT_NEAR(w.real(), expected.real(), 1e-9 * (1.0 + std::abs(expected)))
        << "at (" << x << ", " << y << ")";
    EXPECT_NEAR(w.imag(), expected.imag(), 1e-9 * (1.0 + std::abs(expected)))
        << "at (" << x << ", " << y << ")";
  }
}

TEST_F(ElementInterface, UnitDischargeIsMinusTheDerivativeOfTheColumn) {
  // W = -dOmega/dz: Qx = -dPhi/dx and Qy = -dPhi/dy of each unknown's own column.
  const double h = 1e-3;
  for (int j = 0; j < s.n; ++j) {
    if (s.ukind[j] == UnknownKind::GalleryPhi || s.ukind[j] == UnknownKind::Constant) continue;
    for (const auto& [x, y] :
         {std::pair{-333.0, 77.0}, std::pair{420.0, -510.0}, std::pair{150.0, 40.0}}) {
      const double xs[4] = {x + h, x - h, x, x};
      const double ys[4] = {y, y, y + h, y - h};
      double phi[4];
      elementOf(s, j).column(s, j, xs, ys, 4, phi);
      const double qx = -(phi[0] - phi[1]) / (2 * h), qy = -(phi[2] - phi[3]) / (2 * h);
      const std::complex<double> w = elementOf(s, j).unitW(s, j, x, y);
      const double scale = 1e-5 * (1.0 + std::abs(w));
      EXPECT_NEAR(w.real(), qx, scale) << "unknown " << j << " kind " << int(s.ukind[j]);
      EXPECT_NEAR(-w.imag(), qy, scale) << "unknown " << j << " kind " << int(s.ukind[j]);
    }
  }
}

TEST_F(ElementInterface, EveryUnknownNamesItsElementForTheSingularMessage) {
  for (int j = 0; j < s.n; ++j) {
    const std::string what = elementOf(s, j).describe(s, j);
    switch (s.ukind[j]) {
      case UnknownKind::WellQ:
        EXPECT_TRUE(what.find("WL_HEAD") != std::string::npos ||
                    what.find("WL_PARTIAL") != std::string::npos)
            << what;
        break;
      case UnknownKind::SegSigma:
        EXPECT_NE(what.find("line-sink segment LS_"), std::string::npos) << what;
        break;
      case UnknownKind::GalleryPhi: EXPECT_EQ(what, "the head of gallery LS_GALLERY"); break;
      case UnknownKind::Constant:
        EXPECT_EQ(what, "the constant fixed by the reference point");
        break;
      case UnknownKind::PondRate: EXPECT_EQ(what, "the rate of pond WL_POND"); break;
      case UnknownKind::DbNode:
      case UnknownKind::DbPara:
        EXPECT_TRUE(what == "a jump along wall HB_WALL" ||
                    what == "a jump along inhomogeneity HB_INHOMOGENEITY")
            << what;
        break;
    }
  }
}

// The water balance asks every group of balanceElements(): a group left out of the list
// would drop its lines from the balance, or shrink the far field's circle so that it cuts
// through elements.
TEST_F(ElementInterface, BalanceGroupsGiveEveryKindItsLineAndCoverEveryElement) {
  std::vector<std::string> kinds;
  const AddBalanceTerm add = [&](const std::string& kind, double) {
    if (std::find(kinds.begin(), kinds.end(), kind) == kinds.end()) kinds.push_back(kind);
  };
  BalanceBox box;
  for (const BalanceElement* e : balanceElements()) {
    e->balanceTerms(s, add);
    e->extent(s, box);
  }
  const std::vector<std::string> expected = {
      "wells, head specified", "partial wells, head specified", "line-sinks, head specified", "drains",
      "galleries", "streams", "ponds, head specified"};
  EXPECT_EQ(kinds, expected);
  // The stream's upstream end lies farthest west, the river sets the east and the south,
  // the drain's end the north.
  EXPECT_DOUBLE_EQ(box.xmin, -600.0);
  EXPECT_DOUBLE_EQ(box.xmax, 500.0);
  EXPECT_DOUBLE_EQ(box.ymin, -400.0);
  EXPECT_DOUBLE_EQ(box.ymax, 450.0);
}

// Recharge inside an inhomogeneity, a discharge-specified pond and leakage cells have
// lines of their own.
TEST(BalanceElements, AreaSinksPondsAndLeakageHaveLinesOfTheirOwn) {
  Solution::State s;
  s.model = aquiferModel(0.0, 10.0, 20.0, -2000.0, 0.0, 30.0);
  Inhomogeneity in;
  in.extraction = -0.001;
  in.label = "IN_RECHARGE";
  in.vertices = {{-100, -100, "a"}, {100, -100, "b"}, {100, 100, "c"}, {-100, 100, "d"}};
  s.model.inhomogeneities.push_back(in);
  s.model.ponds.push_back(Pond{500.0, 0.0, 50.0, 0.002, false, "WL_POND"});
  s.model.leakage.push_back(LeakageCell{-900.0, -900.0, -800.0, -850.0, 0.001});
  s.prepare();
  std::vector<std::pair<std::string, double>> terms;
  const AddBalanceTerm add = [&](const std::string& kind, double q) { terms.emplace_back(kind, q); };
  BalanceBox box;
  for (const BalanceElement* e : balanceElements()) {
    e->balanceTerms(s, add);
    e->extent(s, box);
  }
  ASSERT_EQ(terms.size(), 3u);
  EXPECT_EQ(terms[0].first, "area sinks, inhomogeneities");
  EXPECT_NEAR(terms[0].second, -0.001 * 200.0 * 200.0, 1e-9);
  EXPECT_EQ(terms[1].first, "ponds, discharge specified");
  EXPECT_NEAR(terms[1].second, -0.002 * detail::kPi * 50.0 * 50.0, 1e-9);
  EXPECT_EQ(terms[2].first, "leakage to the model below");
  EXPECT_NEAR(terms[2].second, 0.001 * 100.0 * 50.0, 1e-12);
  EXPECT_DOUBLE_EQ(box.xmin, -900.0);
  EXPECT_DOUBLE_EQ(box.xmax, 550.0);
  EXPECT_DOUBLE_EQ(box.ymin, -900.0);
  EXPECT_DOUBLE_EQ(box.ymax, 100.0);
}

// A limited (dry) stream reach flows again when its own condition would take less than
// the flow that reaches it: without resistance once the aquifer's head reaches the
// stream's; with resistance when its loss to the aquifer, w (h - hs) / c per length,
// capped at w d / c by the percolation depth, is smaller than the flow arriving.
TEST(StreamRouting, ALimitedReachIsReleasedWhenItsConditionTakesLessThanTheFlowReachingIt) {
  Solution::State s;
  s.model = aquiferModel(0.0, 10.0, 20.0, -2000.0, 0.0, 30.0);
  LineSinkString bare = straightString(LineSinkKind::Stream, 0.0, 0.0, 100.0, 0.0, 1, 25.0, 25.0, "LS_BARE");
  LineSinkString resistant = straightString(LineSinkKind::Stream, 0.0, 50.0, 100.0, 50.0, 1, 25.0, 25.0, "LS_RES");
  resistant.resistance = 2.0;
  resistant.width = 4.0;
  LineSinkString shallow = straightString(LineSinkKind::Stream, 0.0, 100.0, 100.0, 100.0, 1, 25.0, 25.0, "LS_SHALLOW");
  shallow.resistance = 2.0;
  shallow.width = 4.0;
  shallow.depth = 0.5;
  s.model.lineSinks = {bare, resistant, shallow};
  s.prepare();
  ASSERT_EQ(s.segs.size(), 3u);
  const double L = 100.0;
  auto releases = [&](int seg, double head, double avail) {
    SegEl& e = s.segs[seg];
    e.state = SegState::Limited;
    s.phiPts[e.unknown] = s.aqOf(e.dom).phiFromHead(head);
    return segment_conditions::limitedReleases(s, e, avail, L);
  };
  // No resistance: the stream's head decides alone.
  EXPECT_TRUE(releases(0, 25.01, 0.0));
  EXPECT_FALSE(releases(0, 24.9, 1000.0));
  // Resistance 2, width 4: at a head 1 below the stream it loses 2 per length, 200 in all.
  EXPECT_TRUE(releases(1, 24.0, 250.0));
  EXPECT_FALSE(releases(1, 24.0, 150.0));
  EXPECT_TRUE(releases(1, 25.5, 0.0));  // it gains water: flows with nothing arriving
  // Depth 0.5 caps the loss at 4 * 0.5 / 2 = 1 per length, 100 in all, however deep the head.
  EXPECT_TRUE(releases(2, 20.0, 150.0));
  EXPECT_FALSE(releases(2, 20.0, 50.0));
}

}  // namespace
}  // namespace tarno::engine
