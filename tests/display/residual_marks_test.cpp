// The residual marks of test points: the scales chosen in the Test Points menu, the
// start size of a gage without an observed flow, and a zero residual.
#include <gtest/gtest.h>

#include "display/elem_draw.h"
#include "display/residual_scaling.h"
#include "draw_fixture.h"

namespace tarno::testing {
namespace {

class ResidualMarks : public DrawTest {
 protected:
  // The radius in pixels of the piezometer's diamond (symbol 1).
  int PiezometerRadius(double modelled, double observed) {
    canvas_.ClearOps();
    auto ctx = Ctx();
    ModelDrawTestPoint(ctx, 50, 50, modelled, observed, 2, 1, "Piezometer");
    const auto polys = OpsOf(Kind::Polygon);
    EXPECT_EQ(polys.size(), 1u);
    return polys.empty() ? 0 : std::abs(polys[0].points[0].x - Dev(50, 50).x);
  }
  // Every point of every figure drawn, for comparing two marks.
  std::vector<DevicePoint> Shape() const {
    std::vector<DevicePoint> out;
    for (const auto& op : canvas_.Ops()) out.insert(out.end(), op.points.begin(), op.points.end());
    return out;
  }
};

TEST_F(ResidualMarks, TheMenuChoiceSetsTheScaleOfItsKindOnly) {
  LayerSwitches& l = state_.layers;
  EXPECT_TRUE(SetTestPointScaling("TPSCALING(0)", l));
  EXPECT_TRUE(SetTestPointScaling("TGSCALING(2)", l));
  EXPECT_TRUE(SetTestPointScaling("TSSCALING(2)", l));
  EXPECT_EQ(l.piezometerScale, 5);
  EXPECT_EQ(l.gageScale, 100);
  EXPECT_EQ(l.stageScale, 20);
  EXPECT_EQ(TestPointScaleChecked("TPSCALING(0)", l), true);
  EXPECT_EQ(TestPointScaleChecked("TPSCALING(1)", l), false);
  EXPECT_EQ(TestPointScaleChecked("TSSCALING(1)", l), false);
  EXPECT_FALSE(TestPointScaleChecked("TESTDISPLAY(1)", l).has_value());
  EXPECT_FALSE(SetTestPointScaling("TPSCALING(3)", l));
  EXPECT_EQ(l.piezometerScale, 5);
}

TEST_F(ResidualMarks, AScaledMarkGrowsWithTheChosenScale) {
  state_.layers.piezometerScale = 10;
  const int unit = [&] {
    canvas_.ClearOps();
    auto ctx = Ctx();
    ModelDrawTestPoint(ctx, 50, 50, 10, 10, 0, 1, "Piezometer");
    return std::abs(OpsOf(Kind::Polygon)[0].points[0].x - Dev(50, 50).x);
  }();
  ASSERT_GT(unit, 0);
  // A residual of +5 % of the observed value.
  SetTestPointScaling("TPSCALING(0)", state_.layers);  // +/- 5 %: full size
  EXPECT_EQ(PiezometerRadius(105.0, 100.0), 5 * unit);
  SetTestPointScaling("TPSCALING(1)", state_.layers);  // +/- 10 %: half
  EXPECT_NEAR(PiezometerRadius(105.0, 100.0), 2.5 * unit, 1.0);
  SetTestPointScaling("TPSCALING(2)", state_.layers);  // +/- 20 %: a quarter
  EXPECT_NEAR(PiezometerRadius(105.0, 100.0), 1.25 * unit, 1.0);
}

TEST_F(ResidualMarks, AGageWithoutObservedFlowKeepsTheStartSizeFromTheResults) {
  const auto vid = Point(40, 40);
  Sql("insert into TPResults (Label, VID, ObsHead, ModelHead, Difference, X, Y, ObsStreamFlow, "
      "ModelFlow, Type) values ('G1', " +
      std::to_string(vid) + ", 0, 0, 7, 40, 40, 0, 7, 'Gage')");
  auto ctx = Ctx();
  state_.layers.testPointScaled = false;
  ModelDrawAllTestPoints(ctx);
  const auto plain = Shape();
  ASSERT_FALSE(plain.empty());
  EXPECT_EQ(Colours(), std::set<Colour>{Rgb(0, 64, 128)}) << "a positive gage residual";
  canvas_.ClearOps();
  state_.layers.testPointScaled = true;
  ModelDrawAllTestPoints(ctx);
  const auto scaled = Shape();
  ASSERT_EQ(scaled.size(), plain.size());
  for (std::size_t i = 0; i < plain.size(); ++i) {
    EXPECT_EQ(scaled[i].x, plain[i].x) << i;
    EXPECT_EQ(scaled[i].y, plain[i].y) << i;
  }
}

TEST_F(ResidualMarks, AZeroResidualTakesTheNegativeSideAndNoPlus) {
  auto ctx = Ctx();
  ModelDrawTestPoint(ctx, 50, 50, 250.0, 250.0, 3, 1, "Lake Stage");
  EXPECT_EQ(Colours(), std::set<Colour>{Rgb(255, 128, 0)});
  ASSERT_EQ(OpsOf(Kind::Text).size(), 1u);
  EXPECT_EQ(OpsOf(Kind::Text)[0].text, "0.00");
}

}  // namespace
}  // namespace tarno::testing
