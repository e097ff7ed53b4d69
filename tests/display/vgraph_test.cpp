#include "display/vgraph.h"

#include <gtest/gtest.h>

#include <climits>
#include <vector>

#include "core/error.h"
#include "core/rounding.h"
#include "display/canvas.h"
#include "support/scripted_ui.h"

namespace tarno {
namespace {

using Kind = RecordingCanvas::Kind;

class LayerTest : public ::testing::Test {
 protected:
  void TearDown() override { EXPECT_NO_THROW(ui.Verify()); }

  // A 960 x 480 surface at 96 dpi (10 by 5 inches) showing 0..960 by 0..480: one
  // unit a pixel, and every aspect figure exact.
  int InitUnit(bool grid = false, double spacing = 100) {
    WorldWindow w{0, 960, 480, 0};
    return g.vgGDIInitObject(canvas, w, grid, spacing);
  }
  std::vector<RecordingCanvas::Op> OpsOf(Kind kind) const {
    std::vector<RecordingCanvas::Op> out;
    for (const auto& op : canvas.Ops())
      if (op.kind == kind) out.push_back(op);
    return out;
  }

  ScriptedUserInterface ui;
  VGraphGDI g{&ui};
  RecordingCanvas canvas{960, 480, 96, 96};
};

// A page whose printable area and physical offsets the test sets.
class PageCanvas : public RecordingCanvas {
 public:
  PageCanvas(int horz, int vert, int offX, int offY, int dpi)
      : RecordingCanvas(horz, vert, dpi, dpi), horz_(horz), vert_(vert), offX_(offX), offY_(offY) {}
  int HorzRes() const override { return horz_; }
  int VertRes() const override { return vert_; }
  int PhysicalOffsetX() const override { return offX_; }
  int PhysicalOffsetY() const override { return offY_; }

 private:
  int horz_, vert_, offX_, offY_;
};

// ---------------------------------------------------------------------------
// Screen init and the aspect correction

TEST_F(LayerTest, InitSetsTheTransformationOfAMatchingWindow) {
  ASSERT_EQ(InitUnit(), 0);
  const auto& s = g.State();
  EXPECT_EQ(s.Initialized, 1);
  EXPECT_EQ(s.TargetObject, &canvas);
  EXPECT_EQ(s.Surface, &canvas);
  EXPECT_EQ(s.WindowWidth100, 96000);
  EXPECT_EQ(s.WindowHeight100, 48000);
  EXPECT_EQ(s.WorldX1, 96000);
  EXPECT_EQ(s.WorldY1, 48000);
  EXPECT_EQ(s.DeviceYBase, 480);
  EXPECT_EQ(s.SymbolUnit, 13);  // 96 x 10 / 72 = 13.3, truncated
  EXPECT_DOUBLE_EQ(g.vgGDIUnitsPerPixel(), 100.0);
  EXPECT_TRUE(canvas.Ops().empty()) << "init does not clear or draw without a grid";
}

TEST_F(LayerTest, ZeroExtentWindowReturnsOneButTheStateTakesTheWindow) {
  ASSERT_EQ(InitUnit(), 0);
  WorldWindow flat{5, 5, 20, 10};
  EXPECT_EQ(g.vgGDIInitObject(canvas, flat, false, 10), 1);
  EXPECT_EQ(flat, (WorldWindow{5, 5, 20, 10})) << "no aspect correction";
  const auto& s = g.State();
  EXPECT_DOUBLE_EQ(s.Left, 5);
  EXPECT_DOUBLE_EQ(s.Right, 5);
  EXPECT_EQ(s.Left100, 500);
  EXPECT_EQ(s.Top100, 2000);
  // The transformation keeps the earlier window's values.
  EXPECT_EQ(s.WorldX0, 0);
  EXPECT_EQ(s.WindowWidth100, 96000);

  WorldWindow noHeight{0, 10, 3, 3};
  EXPECT_EQ(g.vgGDIInitObject(canvas, noHeight, false, 10), 1);

  RecordingCanvas empty(0, 300);
  WorldWindow w{0, 10, 10, 0};
  EXPECT_EQ(g.vgGDIInitObject(empty, w, false, 10), 1);
}

TEST_F(LayerTest, WideWindowOnTallSurfaceGrowsInHeightAroundItsCentre) {
  RecordingCanvas tall(400, 800, 96, 96);
  WorldWindow w{0, 100, 10, 0};
  ASSERT_EQ(g.vgGDIInitObject(tall, w, false, 10), 0);
  EXPECT_DOUBLE_EQ(w.Left, 0);
  EXPECT_DOUBLE_EQ(w.Right, 100);
  EXPECT_DOUBLE_EQ(w.Top, 105);     // centre 5, half height 50 x 2
  EXPECT_DOUBLE_EQ(w.Bottom, -95);
  EXPECT_DOUBLE_EQ(g.State().Top, 105);
  EXPECT_EQ(g.State().WindowHeight100, 20000);
  EXPECT_EQ(g.State().WorldY0, -9500);
}

TEST_F(LayerTest, TallWindowOnWideSurfaceWidensAroundItsCentre) {
  RecordingCanvas wide(800, 400, 96, 96);
  WorldWindow w{0, 10, 100, 0};
  ASSERT_EQ(g.vgGDIInitObject(wide, w, false, 10), 0);
  EXPECT_DOUBLE_EQ(w.Left, -95);
  EXPECT_DOUBLE_EQ(w.Right, 105);
  EXPECT_DOUBLE_EQ(w.Top, 100);
  EXPECT_DOUBLE_EQ(w.Bottom, 0);
  // The aspect is that of the inches, so unequal pixels per inch count.
  RecordingCanvas stretched(800, 800, 96, 48);
  WorldWindow square{0, 100, 100, 0};
  ASSERT_EQ(g.vgGDIInitObject(stretched, square, false, 10), 0);
  EXPECT_DOUBLE_EQ(square.Top, 150);  // 8.33 by 16.67 inches: twice as tall
  EXPECT_DOUBLE_EQ(square.Bottom, -50);
}

TEST_F(LayerTest, WindowOutOfRangeIsToldAndRaisesTheFlag) {
  ui.ExpectMessage(vgraph_text::kAppTitle,
                   {vgraph_text::kWindowRangeText, vgraph_text::kWindowRangeCause})
      .WithIcon(Icon::Critical);
  WorldWindow w{3.0e7, 3.0e7 + 960, 480, 0};  // 3e9 hundredths do not fit
  bool flag = false;
  g.vgGDIInitObject(canvas, w, false, 10, &flag);
  EXPECT_TRUE(flag);
}

TEST_F(LayerTest, RefreshAsksTheBoundSurfaceOnlyAfterAScreenInit) {
  g.vgGDIRefresh();
  EXPECT_TRUE(canvas.Ops().empty());
  InitUnit();
  g.vgGDIRefresh();
  EXPECT_EQ(canvas.Count(Kind::Refresh), 1);
}

TEST(LayerInstance, OneLayerForTheProcess) { EXPECT_EQ(&Graphics(), &Graphics()); }

// ---------------------------------------------------------------------------
// The grid

TEST_F(LayerTest, GridStartsAtTheMultipleLeftOfTheWindow) {
  WorldWindow w{3.5, 11.5, 5, 1};  // 8 by 4: the surface's own aspect
  ASSERT_EQ(g.vgGDIInitObject(canvas, w, true, 2), 0);
  const auto lines = OpsOf(Kind::Polyline);
  // Verticals at 2, 4, 6, 8, 10; horizontals at 0, 2, 4; no axes.
  ASSERT_EQ(lines.size(), 8u);
  for (const auto& op : lines) {
    EXPECT_EQ(op.style, kPenDot);
    EXPECT_EQ(op.colour, PaletteColour(7));
    EXPECT_EQ(op.width, 1);
  }
  // X = 2 lies 1.5 units (180 px at 120 px a unit) left of the surface.
  EXPECT_EQ(lines[0].points[0].x, -180);
  EXPECT_EQ(lines[0].points[1].x, -180);
  // Verticals run from the bottom to the top.
  EXPECT_EQ(lines[0].points[0].y, 480);
  EXPECT_EQ(lines[0].points[1].y, 0);
  EXPECT_EQ(lines[4].points[0].x, 780);  // X = 10
  // The first horizontal, at Y = 0, is below the window (device Y 600).
  EXPECT_EQ(lines[5].points[0].y, 600);
  EXPECT_EQ(lines[5].points[0].x, 0);
  EXPECT_EQ(lines[5].points[1].x, 960);
  EXPECT_DOUBLE_EQ(g.State().GridSpacing, 2);
}

TEST_F(LayerTest, AxisLinesOnlyWhenZeroIsStrictlyInside) {
  WorldWindow around{-10, 10, 5, -5};
  ASSERT_EQ(g.vgGDIInitObject(canvas, around, true, 5), 0);
  auto solid = [&] {
    std::vector<RecordingCanvas::Op> out;
    for (const auto& op : OpsOf(Kind::Polyline))
      if (op.style == kPenSolid) out.push_back(op);
    return out;
  };
  auto axes = solid();
  ASSERT_EQ(axes.size(), 2u);
  EXPECT_EQ(axes[0].points[0].x, 480);  // X = 0 in the middle
  EXPECT_EQ(axes[0].width, 1);          // width -1 points: one pixel
  EXPECT_EQ(axes[0].colour, PaletteColour(7));
  EXPECT_EQ(axes[1].points[0].y, 240);  // Y = 0 in the middle
  // The axis comes after the dotted verticals, on top of them.
  const auto& ops = canvas.Ops();
  EXPECT_EQ(ops[5].style, kPenSolid);
  EXPECT_EQ(ops[2].style, kPenDot);

  canvas.ClearOps();
  WorldWindow edge{0, 10, 5, 0};
  ASSERT_EQ(g.vgGDIInitObject(canvas, edge, true, 5), 0);
  EXPECT_TRUE(solid().empty());
}

TEST_F(LayerTest, IllegalGridSpacingIsToldAndDrawsNoGrid) {
  InitUnit(true, 100);
  ASSERT_FALSE(canvas.Ops().empty());
  canvas.ClearOps();
  ui.ExpectMessage(vgraph_text::kIllegalValueTitle, {vgraph_text::kIllegalSpacing})
      .WithIcon(Icon::Critical);
  ui.ExpectMessage(vgraph_text::kIllegalValueTitle, {vgraph_text::kIllegalSpacing});
  WorldWindow w{0, 960, 480, 0};
  EXPECT_EQ(g.vgGDIInitObject(canvas, w, true, 0), 0);
  EXPECT_EQ(g.vgGDIInitObject(canvas, w, true, -5), 0);
  EXPECT_TRUE(canvas.Ops().empty());
  EXPECT_DOUBLE_EQ(g.State().GridSpacing, 100);  // the old spacing stands
  EXPECT_EQ(g.State().WindowWidth100, 96000);    // the transformation is set
  // Without the grid a bad spacing is not looked at.
  EXPECT_EQ(g.vgGDIInitObject(canvas, w, false, 0), 0);
}

// ---------------------------------------------------------------------------
// Transformations

TEST_F(LayerTest, WorldToDeviceRoundsHalfToEvenAndFlipsY) {
  InitUnit();
  EXPECT_EQ(g.vgGDIWorldToDevice(0, 0), (DevicePoint{0, 480}));
  EXPECT_EQ(g.vgGDIWorldToDevice(960, 480), (DevicePoint{960, 0}));
  EXPECT_EQ(g.vgGDIWorldToDevice(2.5, 2.5), (DevicePoint{2, 478}));
  EXPECT_EQ(g.vgGDIWorldToDevice(3.5, 3.5), (DevicePoint{4, 476}));
  EXPECT_EQ(g.vgGDIWorldToDevice(-2.5, 0), (DevicePoint{-2, 480}));
}

TEST_F(LayerTest, WorldToDeviceOverflowReachesTheCaller) {
  InitUnit();
  EXPECT_THROW(g.vgGDIWorldToDevice(1e12, 0), OverflowError);
  EXPECT_THROW(g.vgGDIWorldToDevice(0, -1e12), OverflowError);
  // A world polyline through such a point fails before anything is drawn.
  const double xs[2] = {0, 1e12};
  const double ys[2] = {0, 0};
  EXPECT_THROW(g.vgGDIPolyline(xs, ys, 2, 0, 0, 0), OverflowError);
  EXPECT_TRUE(canvas.Ops().empty());
}

TEST_F(LayerTest, HundredthsTruncateWhereWorldPointsRound) {
  InitUnit();
  EXPECT_EQ(g.vgGDIHundredthsToDevice(12345, 12399), (DevicePoint{123, 356}));
  // 356.55 truncates to 356 from hundredths but rounds to 357 from the world.
  EXPECT_EQ(g.vgGDIHundredthsToDevice(12345, 12345).y, 356);
  EXPECT_EQ(g.vgGDIWorldToDevice(123.45, 123.45).y, 357);
  EXPECT_EQ(g.vgGDIHundredthsToDevice(12399, 0).x, 123);
  EXPECT_EQ(g.vgGDIWorldToDevice(123.99, 0).x, 124);
}

TEST_F(LayerTest, HundredthsOverflowIsTheZoomLimit) {
  WorldWindow tiny{0, 0.1, 0.05, 0};  // 10 hundredths over 960 pixels
  ASSERT_EQ(g.vgGDIInitObject(canvas, tiny, false, 1), 0);
  ASSERT_EQ(g.State().WindowWidth100, 10);
  ui.ExpectMessageTitled(vgraph_text::kCantZoomTitle).WithIcon(Icon::Information);
  const DevicePoint p = g.vgGDIHundredthsToDevice(2000000000, 0);
  EXPECT_EQ(p, (DevicePoint{0, 0})) << "X failed first; nothing was computed";
  ASSERT_EQ(ui.Messages().size(), 1u);
  EXPECT_EQ(ui.Messages()[0].lines.at(0), vgraph_text::kCantZoomText);

  // The difference from the window's corner is checked as well.
  ui.ExpectMessageTitled(vgraph_text::kCantZoomTitle);
  WorldWindow far{1000, 1960, 480, 0};
  ASSERT_EQ(g.vgGDIInitObject(canvas, far, false, 1), 0);
  g.vgGDIHundredthsToDevice(INT_MIN, 0);
}

TEST_F(LayerTest, HundredthsWithoutAWindowSkipTheFailingStatements) {
  // Before any init the state has no extent: the divisions fail and are skipped.
  EXPECT_EQ(g.vgGDIHundredthsToDevice(100, 100), (DevicePoint{0, 0}));
}

TEST_F(LayerTest, DeviceToWorldReachesTheEdgesRoundedToHundredths) {
  WorldWindow w{1.234, 81.234, 42.5, 2.5};
  ASSERT_EQ(g.vgGDIInitObject(canvas, w, false, 5), 0);
  EXPECT_DOUBLE_EQ(g.vgGDIDeviceToWorldX(960, false), 81.23);
  EXPECT_DOUBLE_EQ(g.vgGDIDeviceToWorldX(0, false), 1.23);
  EXPECT_DOUBLE_EQ(g.vgGDIDeviceToWorldY(480, false), 2.5);
  EXPECT_DOUBLE_EQ(g.vgGDIDeviceToWorldY(0, false), 42.5);
  EXPECT_DOUBLE_EQ(g.vgGDIDeviceToWorldX(486.6f, false), 41.78);  // 40.55 + 1.234
  EXPECT_DOUBLE_EQ(g.vgGDIDeviceToWorldY(120, false), 32.5);
}

TEST_F(LayerTest, SnapGoesToTheNearestGridMultiple) {
  WorldWindow w{1.234, 81.234, 42.5, 2.5};
  ASSERT_EQ(g.vgGDIInitObject(canvas, w, false, 5), 0);
  EXPECT_DOUBLE_EQ(g.vgGDIDeviceToWorldX(960, true), 80);   // 81.23
  EXPECT_DOUBLE_EQ(g.vgGDIDeviceToWorldX(0, true), 0);      // 1.23
  EXPECT_DOUBLE_EQ(g.vgGDIDeviceToWorldY(480, true), 5);    // 2.5: the half goes up
  EXPECT_DOUBLE_EQ(g.vgGDIDeviceToWorldX(228, true), 20);   // 20.23
  WorldWindow neg{-96, 0, 0, -48};  // ten pixels a unit
  ASSERT_EQ(g.vgGDIInitObject(canvas, neg, false, 5), 0);
  EXPECT_DOUBLE_EQ(g.vgGDIDeviceToWorldX(934, true), -5);   // -2.6
  EXPECT_DOUBLE_EQ(g.vgGDIDeviceToWorldX(935, true), 0);    // -2.5
}

TEST_F(LayerTest, BoxVisibleCountsTouchingBoxes) {
  InitUnit();  // 0..96000 by 0..48000 hundredths
  EXPECT_TRUE(g.vgGDIBoxVisible(96000, 99000, 100, 0));
  EXPECT_FALSE(g.vgGDIBoxVisible(96001, 99000, 100, 0));
  EXPECT_TRUE(g.vgGDIBoxVisible(-100, 0, 100, 0));
  EXPECT_FALSE(g.vgGDIBoxVisible(-100, -1, 100, 0));
  EXPECT_TRUE(g.vgGDIBoxVisible(10, 20, 0, -50));
  EXPECT_FALSE(g.vgGDIBoxVisible(10, 20, -1, -50));
  EXPECT_TRUE(g.vgGDIBoxVisible(10, 20, 70000, 48000));
  EXPECT_FALSE(g.vgGDIBoxVisible(10, 20, 70000, 48001));
  EXPECT_TRUE(g.vgGDIBoxVisible(-5, 99000, 70000, -5)) << "a box around the window";
}

TEST_F(LayerTest, ClipTakesTheCornersInTheOrderGiven) {
  InitUnit();
  g.vgGDISetClipRegion(10, 20, 110, 220);
  const auto clips = OpsOf(Kind::Clip);
  ASSERT_EQ(clips.size(), 1u);
  EXPECT_EQ(clips[0].points[0], (DevicePoint{10, 460}));
  EXPECT_EQ(clips[0].points[1], (DevicePoint{110, 260}));
}

// ---------------------------------------------------------------------------
// Lines, polygons and circles

TEST_F(LayerTest, StyledLineOnTheTopRowMovesDownOnePixel) {
  InitUnit();
  std::vector<DevicePoint> dashed = {{5, 0}, {10, 0}};
  g.vgGDIDevicePolyline(dashed, 2, 0, 1, kPenDash);
  EXPECT_EQ(dashed[0].y, 1) << "changed in the caller's array";
  EXPECT_EQ(dashed[1].y, 0) << "only the first point";
  std::vector<DevicePoint> above = {{5, -7}, {10, 0}};
  g.vgGDIDevicePolyline(above, 2, 0, 1, kPenDot);
  EXPECT_EQ(above[0].y, 1);
  std::vector<DevicePoint> solid = {{5, 0}, {10, 0}};
  g.vgGDIDevicePolyline(solid, 2, 0, 1, kPenSolid);
  EXPECT_EQ(solid[0].y, 0);
  const auto lines = OpsOf(Kind::Polyline);
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0].points[0].y, 1);
  EXPECT_EQ(lines[2].points[0].y, 0);
}

TEST_F(LayerTest, WorldPolylinesStopAtFiveThousandPointsHundredthsDoNot) {
  InitUnit();
  std::vector<double> xs(5001), ys(5001);
  std::vector<std::int32_t> xl(5001), yl(5001);
  for (int i = 0; i < 5001; ++i) {
    xs[i] = i % 960;
    ys[i] = i % 480;
    xl[i] = (i % 960) * 100;
    yl[i] = (i % 480) * 100;
  }
  try {
    g.vgGDIPolyline(xs.data(), ys.data(), 5001, 0, 0, 0);
    ADD_FAILURE() << "5,001 points were taken";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), 9);
  }
  EXPECT_THROW(g.vgGDIPolygon(xs.data(), ys.data(), 5001, 0, 1, 0, 0), Error);
  EXPECT_TRUE(canvas.Ops().empty());

  g.vgGDIPolyline(xs.data(), ys.data(), 5000, 0, 0, 0);
  g.vgGDIPolylineL(xl.data(), yl.data(), 5001, 0, 3, kPenDash);
  g.vgGDIPolygonL(xl.data(), yl.data(), 5001, 0, 2, kPenSolid, 255);
  const auto& ops = canvas.Ops();
  ASSERT_EQ(ops.size(), 3u);
  EXPECT_EQ(ops[0].points.size(), 5000u);
  EXPECT_EQ(ops[1].points.size(), 5001u);
  EXPECT_EQ(ops[1].width, 3) << "hundredths pass the width through";
  EXPECT_EQ(ops[1].style, kPenDash);
  EXPECT_EQ(ops[2].kind, Kind::Polygon);
  EXPECT_EQ(ops[2].points.size(), 5001u);
  EXPECT_EQ(ops[2].fill, 255);
  EXPECT_EQ(ops[1].points[5000], (DevicePoint{200, 280}));  // (200, 200) world
}

TEST_F(LayerTest, PolylineWidthIsInPoints) {
  RecordingCanvas at72(720, 720, 72, 72);
  WorldWindow w{0, 10, 10, 0};
  ASSERT_EQ(g.vgGDIInitObject(at72, w, false, 1), 0);
  const double xs[2] = {1, 9};
  const double ys[2] = {1, 1};
  for (double width : {0.0, -1.0, 1.0}) g.vgGDIPolyline(xs, ys, 2, 0, width, 0);
  g.vgGDIPolyline(xs, ys, 2, 0, 3.0, 0);
  ASSERT_EQ(at72.Ops().size(), 4u);
  EXPECT_EQ(at72.Ops()[0].width, 1);
  EXPECT_EQ(at72.Ops()[1].width, 1);
  EXPECT_EQ(at72.Ops()[2].width, 1);
  EXPECT_EQ(at72.Ops()[3].width, 3);

  InitUnit();  // 96 dpi
  g.vgGDIPolyline(xs, ys, 2, 0, 2.0, 0);  // 192 / 72 = 2.67
  g.vgGDIPolyline(xs, ys, 2, 0, 0.5, 0);  // 48 / 72: the thinnest line
  const auto lines = OpsOf(Kind::Polyline);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].width, 2);
  EXPECT_EQ(lines[1].width, 0);
  // The polygon's width is in pixels.
  g.vgGDIPolygon(xs, ys, 2, 0, 2, 0, -1);
  EXPECT_EQ(OpsOf(Kind::Polygon).at(0).width, 2);
}

TEST_F(LayerTest, DeviceCircleFillsForZeroAndOutlinesForNegative) {
  InitUnit();
  g.vgGDIDeviceCircle({100, 50}, 10, 255, 1, 0, 0);
  g.vgGDIDeviceCircle({100, 50}, 10, 255, 1, 0, -1);
  const auto circles = OpsOf(Kind::Circle);
  ASSERT_EQ(circles.size(), 2u);
  EXPECT_EQ(circles[0].fill, 0) << "black is a fill";
  EXPECT_EQ(circles[1].fill, -1);
  EXPECT_EQ(circles[0].points[0], (DevicePoint{90, 40}));
  EXPECT_EQ(circles[0].points[1], (DevicePoint{110, 60}));
  EXPECT_THROW(g.vgGDIDeviceCircle({INT_MAX - 5, 0}, 10, 0, 1, 0, -1), OverflowError);
}

TEST_F(LayerTest, WorldCircleIsAnOutlineScaledByTheWindow) {
  WorldWindow w{0, 480, 240, 0};  // two pixels a unit
  ASSERT_EQ(g.vgGDIInitObject(canvas, w, false, 10), 0);
  g.vgGDICircle(100, 100, 12.25, 255, 2, kPenSolid);  // 24.5 pixels: 24
  const auto circles = OpsOf(Kind::Circle);
  ASSERT_EQ(circles.size(), 1u);
  EXPECT_EQ(circles[0].fill, -1);
  EXPECT_EQ(circles[0].points[0], (DevicePoint{176, 256}));
  EXPECT_EQ(circles[0].points[1], (DevicePoint{224, 304}));
  EXPECT_EQ(circles[0].width, 2);
}

// ---------------------------------------------------------------------------
// Point symbols (U = 13 at 96 dpi)

TEST_F(LayerTest, OnlySymbolsOneSevenAndTenUseTheSizeFactor) {
  InitUnit();
  for (int symbol = 1; symbol <= 11; ++symbol) {
    canvas.ClearOps();
    g.vgGDIDeviceMarker({200, 200}, symbol, 255, 1, 30, 1.0);
    const auto normal = canvas.Ops();
    canvas.ClearOps();
    g.vgGDIDeviceMarker({200, 200}, symbol, 255, 1, 30, 2.0);
    const auto doubled = canvas.Ops();
    ASSERT_FALSE(normal.empty()) << "symbol " << symbol;
    ASSERT_EQ(normal.size(), doubled.size()) << "symbol " << symbol;
    bool same = true;
    for (std::size_t i = 0; i < normal.size(); ++i) same = same && normal[i].points == doubled[i].points;
    const bool usesSize = symbol == 1 || symbol == 7 || symbol == 10;
    EXPECT_EQ(same, !usesSize) << "symbol " << symbol;
    if (symbol == 10) {  // only the triangle grows, not the diamond
      EXPECT_EQ(normal[0].points, doubled[0].points);
    }
  }
  canvas.ClearOps();
  g.vgGDIDeviceMarker({200, 200}, 0, 255, 1, 0, 1);
  g.vgGDIDeviceMarker({200, 200}, 12, 255, 1, 0, 1);
  EXPECT_TRUE(canvas.Ops().empty());
}

TEST_F(LayerTest, FilledDiamondAndOutline) {
  InitUnit();
  g.vgGDIDeviceMarker({100, 100}, 1, 255, 3, 0, 1.0);  // r = round(3.9) = 4
  g.vgGDIDeviceMarker({100, 100}, 2, 255, 3, 0, 5.0);  // r = 4, size ignored
  const auto& ops = canvas.Ops();
  ASSERT_EQ(ops.size(), 2u);
  EXPECT_EQ(ops[0].kind, Kind::Polygon);
  EXPECT_EQ(ops[0].fill, 255);
  EXPECT_EQ(ops[0].width, 3);
  EXPECT_EQ(ops[0].points,
            (std::vector<DevicePoint>{{104, 100}, {100, 104}, {96, 100}, {100, 96}}));
  EXPECT_EQ(ops[1].kind, Kind::Polyline);
  EXPECT_EQ(ops[1].points,
            (std::vector<DevicePoint>{{104, 100}, {100, 104}, {96, 100}, {100, 96}, {104, 100}}));
}

TEST_F(LayerTest, CircledCrossesAndDisc) {
  InitUnit();
  g.vgGDIDeviceMarker({100, 100}, 3, 255, 7, 0, 1.0);  // r = round(5.2) = 5
  const auto& ops = canvas.Ops();
  ASSERT_EQ(ops.size(), 3u);
  EXPECT_EQ(ops[0].kind, Kind::Circle);
  EXPECT_EQ(ops[0].fill, -1);
  EXPECT_EQ(ops[0].width, 2) << "the table's width, not the caller's";
  EXPECT_EQ(ops[0].points[0], (DevicePoint{95, 95}));
  EXPECT_EQ(ops[1].points, (std::vector<DevicePoint>{{95, 105}, {105, 95}}));
  EXPECT_EQ(ops[2].points, (std::vector<DevicePoint>{{95, 95}, {105, 105}}));
  EXPECT_EQ(ops[2].width, 2);

  canvas.ClearOps();
  g.vgGDIDeviceMarker({100, 100}, 4, 255, 7, 0, 1.0);
  ASSERT_EQ(canvas.Ops().size(), 3u);
  EXPECT_EQ(canvas.Ops()[1].points, (std::vector<DevicePoint>{{95, 100}, {105, 100}}));
  EXPECT_EQ(canvas.Ops()[2].points, (std::vector<DevicePoint>{{100, 95}, {100, 105}}));

  canvas.ClearOps();
  g.vgGDIDeviceMarker({100, 100}, 5, 255, 7, 0, 1.0);  // r = round(1.95) = 2
  ASSERT_EQ(canvas.Ops().size(), 1u);
  EXPECT_EQ(canvas.Ops()[0].fill, 255);
  EXPECT_EQ(canvas.Ops()[0].width, 1);
  EXPECT_EQ(canvas.Ops()[0].points[1], (DevicePoint{102, 102}));

  canvas.ClearOps();
  g.vgGDIDeviceMarker({100, 100}, 9, 255, 7, 0, 1.0);  // r = round(2.6) = 3
  ASSERT_EQ(canvas.Ops().size(), 1u);
  EXPECT_EQ(canvas.Ops()[0].points[0], (DevicePoint{97, 97}));
  EXPECT_EQ(canvas.Ops()[0].fill, -1);
}

TEST_F(LayerTest, FlowArrowPointsCounterClockwiseFromTheRight) {
  InitUnit();
  // r = round(6.5) = 6, ties to even; the arrow is 4r = 24 long.
  g.vgGDIDeviceMarker({100, 100}, 8, 255, 1, 90, 1.0);
  const auto& ops = canvas.Ops();
  ASSERT_EQ(ops.size(), 3u);
  EXPECT_EQ(ops[0].points[0], (DevicePoint{94, 94}));
  EXPECT_EQ(ops[1].points[0], (DevicePoint{88, 88}));
  EXPECT_EQ(ops[2].points, (std::vector<DevicePoint>{{100, 100}, {100, 76}}));
  EXPECT_EQ(ops[2].width, 2);
  canvas.ClearOps();
  g.vgGDIDeviceMarker({100, 100}, 8, 255, 1, 0, 1.0);
  EXPECT_EQ(canvas.Ops()[2].points[1], (DevicePoint{124, 100}));
  canvas.ClearOps();
  g.vgGDIDeviceMarker({100, 100}, 8, 255, 1, 225, 1.0);  // down and to the left
  EXPECT_EQ(canvas.Ops()[2].points[1], (DevicePoint{83, 117}));
}

TEST_F(LayerTest, StemAndTriangleOfSymbolTen) {
  InitUnit();
  g.vgGDIDeviceMarker({100, 100}, 10, 255, 3, 0, 1.0);  // r = round(2.34) = 2, s = -13
  const auto& ops = canvas.Ops();
  ASSERT_EQ(ops.size(), 2u);
  EXPECT_EQ(ops[0].kind, Kind::Polygon);
  EXPECT_EQ(ops[0].points[0], (DevicePoint{102, 100}));
  EXPECT_EQ(ops[1].width, 1);
  // -13 x 0.866025 = -11.26; -13 x 0.5 = -6.5 -> 106.5 rounds to 106 (even).
  EXPECT_EQ(ops[1].points, (std::vector<DevicePoint>{
                               {100, 100}, {100, 87}, {111, 106}, {89, 106}, {100, 87}}));
}

TEST_F(LayerTest, DoubleDiamondOfSymbolEleven) {
  InitUnit();
  g.vgGDIDeviceMarker({100, 100}, 11, 255, 2, 0, 3.0);  // r = 4, 2r = 8
  const auto& ops = canvas.Ops();
  ASSERT_EQ(ops.size(), 2u);
  EXPECT_EQ(ops[0].points[2], (DevicePoint{96, 100}));
  EXPECT_EQ(ops[1].points.size(), 5u);
  EXPECT_EQ(ops[1].points[2], (DevicePoint{92, 100}));
  EXPECT_EQ(ops[1].width, 2);
}

TEST_F(LayerTest, SymbolsKeepTheirSizeInPointsOnAnotherResolution) {
  RecordingCanvas page(2880, 1440, 288, 288);  // U = 40
  WorldWindow w{0, 1440, 720, 0};               // two pixels a unit
  ASSERT_EQ(g.vgGDIInitObject(page, w, false, 10), 0);
  EXPECT_EQ(g.State().SymbolUnit, 40);
  g.vgGDIMarker(400, 300, 9, 255, 1, 0, 1.0);  // r = 8 at (800, 840)
  ASSERT_EQ(page.Ops().size(), 1u);
  EXPECT_EQ(page.Ops()[0].points[0], (DevicePoint{792, 832}));
  g.vgGDIMarkerL(40000, 30000, 9, 255, 1, 0, 1.0);
  EXPECT_EQ(page.Ops()[1].points, page.Ops()[0].points);
}

// ---------------------------------------------------------------------------
// Text

TEST_F(LayerTest, TextAlignmentCodes) {
  InitUnit();
  const int expected[] = {24, 30, 26, 24, 30, 24};
  for (int a = 0; a <= 5; ++a) {
    DevicePoint at{10, 20};
    g.vgGDItext(at, "x", 10, 0, a, 0, "Arial", false);
    EXPECT_EQ(canvas.Ops().back().alignment, expected[a]) << "alignment " << a;
  }
  DevicePoint at{10, 20};
  g.vgGDItext(at, "x", 10, 0, -1, 0, "Arial", false);
  EXPECT_EQ(canvas.Ops().back().alignment, 24);
}

TEST_F(LayerTest, TextHeightEscapementAndOffset) {
  InitUnit();
  DevicePoint at{10, 20};
  g.vgGDItext(at, "Well 1", 10, 45.5, 0, 255, "Arial", true);  // H = 13
  EXPECT_EQ(at, (DevicePoint{16, 26})) << "the offset moves the caller's point";
  const auto& op = canvas.Ops().back();
  EXPECT_EQ(op.kind, Kind::Text);
  EXPECT_EQ(op.points[0], (DevicePoint{16, 26}));
  EXPECT_EQ(op.height, 13);
  EXPECT_EQ(op.escapement, 460);  // round(45.5) = 46
  EXPECT_EQ(op.text, "Well 1");
  EXPECT_EQ(op.font, "Arial");
  EXPECT_EQ(op.colour, 255);
  DevicePoint plain{10, 20};
  g.vgGDItext(plain, "a", 10, 44.5, 0, 255, "Arial", false);
  EXPECT_EQ(plain, (DevicePoint{10, 20}));
  EXPECT_EQ(canvas.Ops().back().escapement, 440);

  g.vgGDIWorldText(100, 100, "w", "Courier", 12, 0, 0, 2, false);  // H = 16
  EXPECT_EQ(canvas.Ops().back().points[0], (DevicePoint{100, 380}));
  EXPECT_EQ(canvas.Ops().back().height, 16);
  EXPECT_EQ(canvas.Ops().back().alignment, 26);
}

TEST_F(LayerTest, TextFailureIsToldAndDrawsNothing) {
  InitUnit();
  ui.ExpectMessage(vgraph_text::kDrawTextTitle, {vgraph_text::kDrawTextError})
      .WithIcon(Icon::Critical);
  DevicePoint at{0, 0};
  g.vgGDItext(at, "x", INT_MAX / 10, 0, 0, 0, "Arial", false);  // the height overflows
  EXPECT_TRUE(canvas.Ops().empty());
}

// ---------------------------------------------------------------------------
// The printed page

TEST_F(LayerTest, PrinterCentresTheWindowAndDrawsFrameAndClip) {
  // 10 by 8 printable inches plus offsets of a half and four tenths: 11 by 8.8
  // inches of paper, 9 by 6.8 within the margins. The window's width decides.
  PageCanvas page(1000, 800, 50, 40, 100);
  const WorldWindow w{0, 100, 50, 0};
  ASSERT_EQ(g.vgGDIInitPrinter(page, w, {}, false, 10), 0);
  const auto& s = g.State();
  EXPECT_EQ(s.DeviceWidth, 900);
  EXPECT_EQ(s.DeviceHeight, 450);
  EXPECT_EQ(s.DeviceX0, 50);
  EXPECT_EQ(s.DeviceY0, 175);
  EXPECT_EQ(s.DeviceYBase, 800);
  EXPECT_EQ(s.Initialized, 0) << "only a screen init marks the layer initialised";
  EXPECT_EQ(s.TargetObject, nullptr);
  EXPECT_EQ(s.Surface, &page);

  const std::vector<DevicePoint> frame = {{50, 625}, {50, 175}, {950, 175}, {950, 625}, {50, 625}};
  const auto& ops = page.Ops();
  ASSERT_EQ(ops.size(), 3u);
  EXPECT_EQ(ops[0].kind, Kind::Polyline);
  EXPECT_EQ(ops[0].points, frame);
  EXPECT_EQ(ops[0].colour, 0);
  EXPECT_EQ(ops[0].style, kPenSolid);
  EXPECT_EQ(ops[1].kind, Kind::Clip);
  EXPECT_EQ(ops[1].points, (std::vector<DevicePoint>{{50, 625}, {950, 175}}));
  EXPECT_EQ(ops[2].points, frame);

  g.vgGDIEndPrinter(page);
  EXPECT_EQ(page.Ops().back().kind, Kind::Refresh);
}

TEST_F(LayerTest, PrinterGridIsSolidGreyBetweenTheFrames) {
  PageCanvas page(1000, 800, 0, 0, 360);  // 0.2 points at 360 dpi: one pixel
  const WorldWindow w{-50, 50, 25, -25};
  ASSERT_EQ(g.vgGDIInitPrinter(page, w, {0.5, 0.5, 0.5, 0.5}, true, 25), 0);
  const auto& ops = page.Ops();
  // Frame, clip, 5 verticals, the X axis, 3 horizontals, the Y axis, frame.
  ASSERT_EQ(ops.size(), 13u);
  for (std::size_t i = 2; i < 12; ++i) {
    EXPECT_EQ(ops[i].colour, Rgb(111, 111, 111));
    EXPECT_EQ(ops[i].style, kPenSolid);
  }
  EXPECT_EQ(ops[2].width, 1);  // round(72) / 72
  EXPECT_EQ(ops[7].width, 2);  // the axis: round(180) / 72 = 2.5
  EXPECT_EQ(ops[11].width, 2);
  EXPECT_EQ(ops[12].colour, 0);
}

TEST_F(LayerTest, PrinterOfNoExtentDoesNothing) {
  PageCanvas page(0, 800, 0, 0, 100);
  EXPECT_EQ(g.vgGDIInitPrinter(page, {0, 100, 50, 0}, {}, true, 10), 1);
  PageCanvas ok(1000, 800, 0, 0, 100);
  EXPECT_EQ(g.vgGDIInitPrinter(ok, {0, 0, 50, 0}, {}, true, 10), 1);
  EXPECT_TRUE(page.Ops().empty());
  EXPECT_TRUE(ok.Ops().empty());
  EXPECT_DOUBLE_EQ(g.State().Right, 0) << "the window is not taken";
}

TEST_F(LayerTest, PrinterGridWithIllegalSpacingIsToldToo) {
  ui.ExpectMessage(vgraph_text::kIllegalValueTitle, {vgraph_text::kIllegalSpacing});
  PageCanvas page(1000, 800, 0, 0, 100);
  EXPECT_EQ(g.vgGDIInitPrinter(page, {0, 100, 50, 0}, {}, true, 0), 0);
  EXPECT_EQ(page.Ops().size(), 3u);  // frame, clip, frame
}

// The range of a window on a surface of 400 by 200 pixels: one hundredth per pixel
// at least, and every side within 32-bit hundredths.
TEST(WindowRangeTest, LimitsAreOneHundredthPerPixelAndThe32BitHundredths) {
  EXPECT_EQ(CheckWindowRange({0, 4, 2, 0}, 400, 200), WindowRange::kFits);
  EXPECT_EQ(CheckWindowRange({0, 3.99, 1.99, 0}, 400, 200), WindowRange::kTooSmall);
  // The aspect correction counts: a window tall enough grows wide enough.
  EXPECT_EQ(CheckWindowRange({0, 1, 2, 0}, 400, 200), WindowRange::kFits);
  EXPECT_EQ(CheckWindowRange({0, 0.0001, 0.0001, 0}, 400, 200), WindowRange::kTooSmall);
  EXPECT_EQ(CheckWindowRange({-1e7, 1e7, 5e6, -5e6}, 400, 200), WindowRange::kFits);
  // Each side fits, but the width in hundredths does not.
  EXPECT_EQ(CheckWindowRange({-2e7, 2e7, 1e7, -1e7}, 400, 200), WindowRange::kTooLarge);
  EXPECT_EQ(CheckWindowRange({2.2e7, 2.2e7 + 10, 5, 0}, 400, 200), WindowRange::kTooLarge);
  // No extent: nothing to draw, nothing out of range.
  EXPECT_EQ(CheckWindowRange({0, 0, 2, 0}, 400, 200), WindowRange::kFits);
  EXPECT_EQ(CheckWindowRange({0, 4, 2, 0}, 0, 200), WindowRange::kFits);

  const WorldWindow widened = WidenToSmallest({10, 10.5, 5.1, 5}, 400, 200);
  EXPECT_EQ(CheckWindowRange(widened, 400, 200), WindowRange::kFits);
  EXPECT_DOUBLE_EQ((widened.Left + widened.Right) / 2, 10.25);
  EXPECT_DOUBLE_EQ((widened.Top + widened.Bottom) / 2, 5.05);
  EXPECT_LT(widened.Right - widened.Left, 4.1);
  const WorldWindow large{0, 100, 50, 0};
  EXPECT_EQ(WidenToSmallest(large, 400, 200), large);
}

// The window the range is checked on is the one the screen init draws.
TEST(WindowRangeTest, AspectCorrectionIsTheInitsOwn) {
  VGraphGDI g;
  RecordingCanvas surface(400, 100, 96, 48);
  WorldWindow w{0, 100, 100, 0};
  const WorldWindow corrected = AspectCorrected(w, 400, 100, 96, 48);
  g.vgGDIInitObject(surface, w, false, 10);
  EXPECT_EQ(corrected, w);
  EXPECT_NE(corrected, (WorldWindow{0, 100, 100, 0}));
}

}  // namespace
}  // namespace tarno
