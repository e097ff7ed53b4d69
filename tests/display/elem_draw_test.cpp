// The drawing of elements: colours by kind, flag and mode, the order of shadow and
// colour, vertex markers, closed outlines, shared vertices, switches, labels and
// the selected element.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "display/draw_common.h"
#include "draw_fixture.h"

namespace tarno::testing {
namespace {

class ElemDraw : public DrawTest {
 protected:
  std::int64_t Well(double x, double y, int ppWell, int transient, double radius = 1.0,
                    double setback = 0.0) {
    const auto vid = Point(x, y);
    Statement st = db_.PrepareRaw(
        "insert into Wells (VID, Head, Radius, Setback, PPWell, Transient) values (?, 0, ?, ?, ?, ?)");
    st.Bind(1, vid).Bind(2, radius).Bind(3, setback).Bind(4, ppWell).Bind(5, transient);
    st.Run();
    return vid;
  }
  std::int64_t Linesink(const std::vector<std::pair<double, double>>& xy, int headSpecified,
                        int drain, int routing, int farfield, int gallery,
                        const std::string& label = "LS") {
    const auto pid = String(xy);
    Statement st = db_.PrepareRaw(
        "insert into LinesinkStrings (PID, Label, HeadSpecified, Drain, Routing, Farfield, "
        "Gallery) values (?, ?, ?, ?, ?, ?, ?)");
    st.Bind(1, pid).Bind(2, label + std::to_string(pid)).Bind(3, headSpecified).Bind(4, drain);
    st.Bind(5, routing).Bind(6, farfield).Bind(7, gallery);
    st.Run();
    return pid;
  }
  std::int64_t Inho(const std::vector<std::pair<double, double>>& xy, Colour c) {
    const auto pid = String(xy);
    Statement st = db_.PrepareRaw("insert into Inhomogeneities (PID, Label, Color) values (?, ?, ?)");
    st.Bind(1, pid).Bind(2, "IN" + std::to_string(pid)).Bind(3, static_cast<std::int64_t>(c));
    st.Run();
    return pid;
  }
  std::int64_t Barrier(const std::vector<std::pair<double, double>>& xy, int closed) {
    const auto pid = String(xy);
    Statement st =
        db_.PrepareRaw("insert into NoFlowStrings (PID, Label, Closed) values (?, ?, ?)");
    st.Bind(1, pid).Bind(2, "B" + std::to_string(pid)).Bind(3, closed);
    st.Run();
    return pid;
  }
  std::int64_t Domain(const std::vector<std::pair<double, double>>& xy, bool far, bool near,
                      Colour c) {
    const auto pid = String(xy);
    Statement st = db_.PrepareRaw(
        "insert into Domains (PID, Label, Color, FarFieldBoundary, NearFieldHU) values (?, ?, ?, ?, ?)");
    st.Bind(1, pid).Bind(2, "D" + std::to_string(pid)).Bind(3, static_cast<std::int64_t>(c));
    st.Bind(4, far).Bind(5, near);
    st.Run();
    return pid;
  }
  void Label(double x, double y, const std::string& text, double scalerX, int type,
             const std::string& font = "Arial") {
    Statement st = db_.PrepareRaw(
        "insert into TextLabels (Text, X, Y, ScalerX, FontName, FontSize, LabelType) values (?, "
        "?, ?, ?, ?, 12, ?)");
    st.Bind(1, text).Bind(2, x).Bind(3, y).Bind(4, scalerX).Bind(5, font).Bind(6, type);
    st.Run();
  }
  // The polylines drawn in one colour.
  std::vector<RecordingCanvas::Op> LinesIn(Colour c) const {
    std::vector<RecordingCanvas::Op> out;
    for (const auto& op : OpsOf(Kind::Polyline))
      if (op.colour == c) out.push_back(op);
    return out;
  }
};

// ---- wells ----

TEST_F(ElemDraw, WellColourFollowsItsFlagsWithThePartiallyPenetratingFirst) {
  struct Case {
    int pp, transient;
    Colour expected;
  } cases[] = {
      {0, 0, PaletteColour(5)},
      {1, 0, Rgb(43, 230, 210)},
      {0, 1, Rgb(255, 255, 0)},
      {1, 1, Rgb(43, 230, 210)},
      {2, 1, Rgb(255, 255, 0)},  // only a 1 is the partially penetrating flag
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(::testing::Message() << c.pp << "/" << c.transient);
    canvas_.ClearOps();
    auto ctx = Ctx();
    ElemDrawWell(ctx, 50, 50, 5, 2, c.pp, c.transient, kDrawNormal);
    EXPECT_EQ(Colours(), std::set<Colour>{c.expected});
    // The marker's circle and the two circles of setback and radius.
    EXPECT_EQ(canvas_.Count(Kind::Circle), 3);
  }
  canvas_.ClearOps();
  auto ctx = Ctx();
  ElemDrawWell(ctx, 50, 50, 5, 2, 1, 1, kDrawSelected);
  EXPECT_EQ(Colours(), std::set<Colour>{PaletteColour(12)});
  canvas_.ClearOps();
  ElemDrawWell(ctx, 50, 50, 5, 2, 1, 1, kDrawErase);
  EXPECT_EQ(Colours(), std::set<Colour>{state_.options.Background});
  canvas_.ClearOps();
  ElemDrawWell(ctx, 50, 50, 5, 2, 0, 0, kDrawDryWell);
  EXPECT_EQ(Colours(), std::set<Colour>{PaletteColour(10)});
}

TEST_F(ElemDraw, WellCirclesAreTheRadiiInMapUnitsDottedSetbackFirst) {
  auto ctx = Ctx();
  state_.frame.basemapConvert = 0.5;  // two map units to one model unit
  ElemDrawWell(ctx, 50, 50, 5, 2, 0, 0, kDrawNormal);
  const auto circles = OpsOf(Kind::Circle);
  ASSERT_EQ(circles.size(), 3u);
  const auto a = Dev(40, 50), b = Dev(60, 50);  // setback 5 / 0.5 = 10 map units
  EXPECT_EQ(circles[1].style, kPenDot);
  EXPECT_EQ(circles[1].points[1].x - circles[1].points[0].x, b.x - a.x);
  const auto c = Dev(46, 50), d = Dev(54, 50);  // radius 2 / 0.5 = 4 map units
  EXPECT_EQ(circles[2].style, kPenSolid);
  EXPECT_EQ(circles[2].points[1].x - circles[2].points[0].x, d.x - c.x);
}

TEST_F(ElemDraw, WellWithAHeadBelowMinusThousandInTheResultsIsDry) {
  const auto normal = Well(20, 20, 0, 0);
  const auto dry = Well(80, 80, 0, 0);
  auto result = [&](std::int64_t vid, double head) {
    Statement st = db_.PrepareRaw(
        "insert into WLResults (Label, TARNOLabel, X, Y, Radius, SpecifiedHead, Discharge, Head) "
        "values ('w', ?, 0, 0, 0, 0, 0, ?)");
    char name[16];
    std::snprintf(name, sizeof name, "WL_%06lld", static_cast<long long>(vid));
    st.Bind(1, std::string(name)).Bind(2, head);
    st.Run();
  };
  result(normal, -1000.0);
  result(dry, -1000.5);
  auto ctx = Ctx();
  ElemDrawAllWells(ctx);
  EXPECT_EQ(Colours(), std::set<Colour>{PaletteColour(5)}) << "no solution shown";

  canvas_.ClearOps();
  state_.solution.valid = true;
  ElemDrawAllWells(ctx);
  EXPECT_EQ(canvas_.Count(Kind::Circle, PaletteColour(5)), 3);
  EXPECT_EQ(canvas_.Count(Kind::Circle, PaletteColour(10)), 3);

  canvas_.ClearOps();
  state_.ProjectOpen = false;
  ElemDrawAllWells(ctx);
  EXPECT_EQ(Figures(), 0);
}

// ---- line-sink strings ----

TEST_F(ElemDraw, LinesinkColourByKind) {
  const std::vector<std::pair<double, double>> xy = {{10, 10}, {90, 90}};
  struct Case {
    int head, drain, routing, farfield, gallery;
    Colour expected;
  } cases[] = {
      {1, 1, 1, 1, 0, PaletteColour(6)}, {1, 0, 1, 1, 0, Rgb(90, 47, 0)},
      {1, 0, 0, 1, 0, PaletteColour(3)}, {1, 0, 0, 0, 1, Rgb(0, 0, 255)},
      {0, 1, 0, 0, 1, Rgb(0, 255, 0)},   {0, 1, 1, 1, 0, PaletteColour(5)},
  };
  for (const auto& c : cases) {
    const auto pid = Linesink(xy, c.head, c.drain, c.routing, c.farfield, c.gallery);
    canvas_.ClearOps();
    auto ctx = Ctx();
    ElemDrawLinesinkString(ctx, pid, kDrawNormal);
    EXPECT_EQ(Colours(), (std::set<Colour>{PaletteColour(15), c.expected})) << pid;
  }
}

TEST_F(ElemDraw, EachLinesinkShadowComesBeforeItsColour) {
  state_.options.LinesinkShadow = 3.0;
  const auto pid = Linesink({{10, 10}, {50, 20}, {90, 10}}, 1, 0, 0, 0, 0);
  auto ctx = Ctx();
  ElemDrawLinesinkString(ctx, pid, kDrawNormal);
  const auto lines = OpsOf(Kind::Polyline);
  ASSERT_EQ(lines.size(), 4u);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(lines[2 * i].colour, PaletteColour(15));
    EXPECT_EQ(lines[2 * i].width, 4);  // 3 points at 96 pixels per inch
    EXPECT_EQ(lines[2 * i + 1].colour, Rgb(0, 0, 255));
    EXPECT_EQ(lines[2 * i].points, lines[2 * i + 1].points);
  }
  EXPECT_EQ(lines[0].points[0], Dev(10, 10));
  EXPECT_EQ(lines[2].points[1], Dev(90, 10));
}

TEST_F(ElemDraw, OneVertexStringIsAMarkerAndEmptyStringNothing) {
  const auto one = Linesink({{30, 30}}, 1, 0, 0, 0, 0);
  const auto none = Linesink({}, 1, 0, 0, 0, 0);
  auto ctx = Ctx();
  ElemDrawLinesinkString(ctx, none, kDrawNormal);
  EXPECT_EQ(Figures(), 0);
  ElemDrawLinesinkString(ctx, one, kDrawNormal);
  EXPECT_GT(Figures(), 0);
  EXPECT_EQ(Colours(), std::set<Colour>{Rgb(0, 0, 255)});
}

TEST_F(ElemDraw, LinesinkVertexMarkersBySwitchModeAndDrawingState) {
  const auto pid = Linesink({{10, 10}, {50, 20}, {90, 10}}, 1, 0, 0, 0, 0);
  auto ctx = Ctx();
  ElemDrawLinesinkString(ctx, pid, kDrawNormal);
  EXPECT_TRUE(LinesIn(PaletteColour(0)).empty());

  canvas_.ClearOps();
  state_.layers.linesinkVertices = true;
  ElemDrawLinesinkString(ctx, pid, kDrawNormal);
  const std::size_t perVertex = LinesIn(PaletteColour(0)).size();
  EXPECT_EQ(perVertex % 3, 0u);
  EXPECT_GT(perVertex, 0u);

  canvas_.ClearOps();
  state_.layers.linesinkVertices = false;
  state_.mouseState = 5;
  state_.mouseMode = 2;
  state_.drawingPid = pid;
  ElemDrawLinesinkString(ctx, pid, kDrawNormal);
  EXPECT_EQ(LinesIn(PaletteColour(0)).size(), perVertex) << "the string being drawn";
  canvas_.ClearOps();
  state_.drawingPid = pid + 1;
  ElemDrawLinesinkString(ctx, pid, kDrawNormal);
  EXPECT_TRUE(LinesIn(PaletteColour(0)).empty()) << "another string being drawn";
}

TEST_F(ElemDraw, SelectedLinesinkMarksVerticesAndItsSelectedSegmentInYellow) {
  const auto pid = Linesink({{10, 10}, {50, 20}, {90, 10}}, 1, 0, 0, 0, 0);
  state_.selection = {2, pid, VidAt(pid, 1), 0};
  auto ctx = Ctx();
  ElemDrawLinesinkString(ctx, pid, kDrawSelected);
  EXPECT_EQ(LinesIn(PaletteColour(12)).size(), 2u);
  EXPECT_FALSE(LinesIn(PaletteColour(0)).empty());
  const auto yellow = LinesIn(Rgb(255, 255, 0));
  ASSERT_EQ(yellow.size(), 1u);
  EXPECT_EQ(yellow[0].points, (std::vector<DevicePoint>{Dev(50, 20), Dev(90, 10)}));

  // The last vertex begins no segment.
  canvas_.ClearOps();
  state_.selection.vid = VidAt(pid, 2);
  ElemDrawLinesinkString(ctx, pid, kDrawSelected);
  EXPECT_TRUE(LinesIn(Rgb(255, 255, 0)).empty());
}

TEST_F(ElemDraw, StreamLinkagesNeedTheSwitchAndAValidSolution) {
  const auto a = Linesink({{10, 10}, {30, 10}}, 1, 0, 1, 0, 0, "up");
  Linesink({{50, 50}, {70, 50}}, 1, 0, 1, 0, 0, "down");
  Sql("insert into LSResults (Label, TARNOLabel, X1, Y1, X2, Y2, SpecifiedHead, CalculatedHead, "
      "Discharge, Resistance, LinkedTo) values ('up" + std::to_string(a) +
      "', 'LS_000001', 10, 10, 30, 10, 0, 0, 0, 0, 'LS_000002'),"
      "('down" + std::to_string(a + 1) +
      "', 'LS_000002', 50, 50, 70, 50, 0, 0, 0, 0, ' END_LINESINK')");
  auto ctx = Ctx();
  state_.layers.streamLinkages = true;
  ElemDrawAllLinesinks(ctx);
  EXPECT_TRUE(LinesIn(Rgb(255, 0, 0)).empty()) << "no valid solution";

  canvas_.ClearOps();
  state_.solution.valid = true;
  ElemDrawAllLinesinks(ctx);
  const auto red = LinesIn(Rgb(255, 0, 0));
  ASSERT_EQ(red.size(), 1u);
  EXPECT_EQ(red[0].points.front(), Dev(30, 10));
  EXPECT_EQ(red[0].points.back(), Dev(60, 50));
  EXPECT_EQ(LinesIn(PaletteColour(0)).size(), 1u) << "the end of the stream";

  canvas_.ClearOps();
  state_.layers.streamLinkages = false;
  ElemDrawAllLinesinks(ctx);
  EXPECT_TRUE(LinesIn(Rgb(255, 0, 0)).empty());
}

// ---- barriers, inhomogeneities, lakes ----

TEST_F(ElemDraw, ClosedBarrierClosesAndOpenDoesNot) {
  const auto open = Barrier({{10, 10}, {50, 10}, {50, 50}}, 0);
  const auto closed = Barrier({{60, 60}, {90, 60}, {90, 90}}, 2);
  auto ctx = Ctx();
  ElemDrawAllNoFlow(ctx);
  const auto lines = LinesIn(PaletteColour(0));
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].points.size(), 3u);
  EXPECT_NE(lines[0].points.front(), lines[0].points.back());
  ASSERT_EQ(lines[1].points.size(), 4u);
  EXPECT_EQ(lines[1].points.front(), lines[1].points.back());
  (void)open;
  (void)closed;
}

TEST_F(ElemDraw, InhomogeneitySharedVerticesAreMarkedGreyOrYellow) {
  const Colour c1 = Rgb(1, 2, 3), c2 = Rgb(4, 5, 6);
  const auto a = Inho({{10, 10}, {50, 10}, {50, 50}, {10, 50}}, c1);
  Inho({{50, 10}, {90, 10}, {90, 50}, {50, 50}}, c2);
  // A lake vertex at a third corner shares nothing: lakes are not inhomogeneities.
  const auto lake = String({{10, 10}, {0, 0}, {0, 10}});
  Sql("insert into Lakes (PID, Label, StageTableFilename, Color) values (" +
      std::to_string(lake) + ", 'L', 'x', 0)");
  auto ctx = Ctx();
  ElemDrawAllInhos(ctx);
  EXPECT_TRUE(LinesIn(Rgb(128, 128, 128)).empty()) << "vertices not shown";
  const auto outlines = LinesIn(c1);
  ASSERT_EQ(outlines.size(), 1u);
  EXPECT_EQ(outlines[0].points.size(), 5u);
  EXPECT_EQ(outlines[0].points.front(), outlines[0].points.back());

  canvas_.ClearOps();
  state_.layers.inhomogeneityVertices = true;
  ElemDrawAllInhos(ctx);
  const std::size_t grey = LinesIn(Rgb(128, 128, 128)).size();
  const std::size_t plain = LinesIn(PaletteColour(0)).size();
  // Two shared corners in each polygon, two plain corners in each.
  EXPECT_GT(grey, 0u);
  EXPECT_EQ(grey, plain);

  canvas_.ClearOps();
  ElemDrawInho(ctx, a, kDrawSelected, false, c1);
  EXPECT_EQ(LinesIn(65535).size() * 2, grey);
  EXPECT_EQ(LinesIn(PaletteColour(12)).size(), 1u);
}

TEST_F(ElemDraw, InhomogeneityBeingDrawnStaysOpen) {
  const auto a = Inho({{10, 10}, {50, 10}, {50, 50}}, Rgb(1, 2, 3));
  state_.mouseState = 5;
  state_.mouseMode = 5;
  state_.drawingPid = a;
  auto ctx = Ctx();
  ElemDrawAllInhos(ctx);
  const auto outline = LinesIn(Rgb(1, 2, 3));
  ASSERT_EQ(outline.size(), 1u);
  EXPECT_EQ(outline[0].points.size(), 3u);
  EXPECT_FALSE(LinesIn(PaletteColour(0)).empty()) << "its vertices are marked";
}

TEST_F(ElemDraw, LakeIsAClosedOutlineInItsColour) {
  const auto lake = String({{10, 10}, {40, 10}, {40, 40}});
  Sql("insert into Lakes (PID, Label, StageTableFilename, Color) values (" +
      std::to_string(lake) + ", 'L', 'x', 255)");
  auto ctx = Ctx();
  ElemDrawAllLakes(ctx);
  const auto lines = LinesIn(255);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].points.size(), 4u);
  canvas_.ClearOps();
  ElemDrawLakes(ctx, lake, kDrawSelected);
  EXPECT_EQ(LinesIn(PaletteColour(12)).size(), 1u);
}

// ---- domains, capture zones, flux lines ----

TEST_F(ElemDraw, DomainsFollowTheHydrologicUnitSwitches) {
  Domain({{10, 10}, {90, 10}, {90, 90}}, true, false, Rgb(7, 0, 0));   // far field
  Domain({{20, 20}, {80, 20}, {80, 80}}, false, true, Rgb(8, 0, 0));   // unit boundary
  Domain({{30, 30}, {70, 30}, {70, 70}}, false, false, Rgb(9, 0, 0));  // model boundary
  auto ctx = Ctx();
  ModelDrawAllDomains(ctx);
  EXPECT_EQ(Figures(), 0) << "both kinds hidden";

  state_.layers.viewFarField = true;
  ModelDrawAllDomains(ctx);
  EXPECT_EQ(Colours(), std::set<Colour>{Rgb(7, 0, 0)});
  EXPECT_EQ(LinesIn(Rgb(7, 0, 0))[0].points.size(), 4u);

  canvas_.ClearOps();
  state_.layers.viewFarField = false;
  state_.layers.viewNearField = true;
  ModelDrawAllDomains(ctx);
  EXPECT_EQ(Colours(), (std::set<Colour>{Rgb(8, 0, 0), Rgb(9, 0, 0)}));
  EXPECT_EQ(LinesIn(Rgb(8, 0, 0))[0].points.size(), 4u);
  EXPECT_EQ(LinesIn(Rgb(9, 0, 0))[0].points.size(), 3u);
}

TEST_F(ElemDraw, ProtectionAreasNeedTheirSwitchAndAreClosed) {
  const auto pid = String({{10, 10}, {30, 10}, {30, 30}});
  Sql("insert into Capzones (Label, PID) values ('C', " + std::to_string(pid) + ")");
  const auto flux = String({{50, 50}, {80, 80}});
  Sql("insert into FluxInspect (Label, PID) values ('F', " + std::to_string(flux) + ")");
  auto ctx = Ctx();
  ModelDrawAllCapzones(ctx);
  EXPECT_EQ(Figures(), 0);
  state_.layers.protectionAreas = true;
  ModelDrawAllCapzones(ctx);
  ASSERT_EQ(OpsOf(Kind::Polyline).size(), 1u);
  EXPECT_EQ(OpsOf(Kind::Polyline)[0].points.size(), 4u);
  canvas_.ClearOps();
  ModelDrawAllFluxInspect(ctx);
  ASSERT_EQ(OpsOf(Kind::Polyline).size(), 1u);
  EXPECT_EQ(OpsOf(Kind::Polyline)[0].points.size(), 2u);
}

// ---- observation objects ----

TEST_F(ElemDraw, TestPointColourBySignOfTheResidualAndType) {
  auto ctx = Ctx();
  struct Case {
    const char* type;
    double modelled;
    Colour expected;
  } cases[] = {
      {"Piezometer", 10.0, PaletteColour(4)}, {"Piezometer", 10.5, PaletteColour(2)},
      {"Gage", 9.0, Rgb(0, 255, 255)},        {"Gage", 11.0, Rgb(0, 64, 128)},
      {"Lake Stage", 10.0, Rgb(255, 128, 0)}, {"Lake Stage", 12.0, Rgb(128, 255, 128)},
  };
  for (const auto& c : cases) {
    canvas_.ClearOps();
    ModelDrawTestPoint(ctx, 50, 50, c.modelled, 10.0, 0, 1, c.type);
    EXPECT_EQ(Colours(), std::set<Colour>{c.expected}) << c.type << " " << c.modelled;
  }
  canvas_.ClearOps();
  ModelDrawTestPoint(ctx, 50, 50, 11, 10, 0, 2, "Gage");
  EXPECT_EQ(Colours(), std::set<Colour>{PaletteColour(12)});
}

TEST_F(ElemDraw, TestPointNumbersCarryTheSignAndTheMask) {
  auto ctx = Ctx();
  ModelDrawTestPoint(ctx, 50, 50, 11.5, 10.0, 1, 1, "Piezometer");
  ModelDrawTestPoint(ctx, 50, 50, 9.75, 10.0, 3, 1, "Piezometer");
  ModelDrawTestPoint(ctx, 50, 50, 10.0, 10.0, 1, 1, "Piezometer");
  ModelDrawTestPoint(ctx, 50, 50, 12.0, 10.0, 2, 1, "Piezometer");  // no text
  const auto texts = OpsOf(Kind::Text);
  ASSERT_EQ(texts.size(), 3u);
  EXPECT_EQ(texts[0].text, "+1.50");
  EXPECT_EQ(texts[0].font, "Arial");
  EXPECT_EQ(texts[1].text, "-0.25");
  EXPECT_EQ(texts[2].text, "0.00");
}

TEST_F(ElemDraw, ScaledTestPointSymbolsGrowWithTheResidualUpToFive) {
  // Symbol 1 is a filled diamond of radius round(SymbolUnit * 0.3 * size).
  auto radius = [&](double modelled, double observed, int style) {
    canvas_.ClearOps();
    auto ctx = Ctx();
    ModelDrawTestPoint(ctx, 50, 50, modelled, observed, style, 1, "Piezometer");
    const auto polys = OpsOf(Kind::Polygon);
    EXPECT_EQ(polys.size(), 1u);
    return polys.empty() ? 0 : std::abs(polys[0].points[0].x - Dev(50, 50).x);
  };
  state_.layers.piezometerScale = 10;
  const int unit = radius(10.0, 10.0, 0);  // size 1
  EXPECT_GT(unit, 0);
  EXPECT_EQ(radius(15.0, 10.0, 2), 5 * unit) << "50 % is beyond the 10 % scale";
  EXPECT_EQ(radius(5.0, 10.0, 2), 5 * unit) << "-50 %: the signed size -5";
  EXPECT_EQ(radius(12.0, 0.0, 2), unit) << "zero observed keeps the start size";
  state_.layers.piezometerScale = 20;
  const int half = radius(11.0, 10.0, 2);  // 10 % of 20 %: size 2.5
  EXPECT_NEAR(half, 2.5 * unit, 1.0);
}

TEST_F(ElemDraw, AllTestPointsUseResultsWhenThereAreAnyAndTheDisplaySwitch) {
  const auto vid = Point(40, 40);
  Sql("insert into TestPoints (VID, Label, ObsHead, Type) values (" + std::to_string(vid) +
      ", 'T1', 10, 'Piezometer')");
  auto ctx = Ctx();
  ModelDrawAllTestPoints(ctx);
  EXPECT_EQ(Colours(), std::set<Colour>{PaletteColour(5)}) << "plain mark without results";

  Sql("insert into TPResults (Label, VID, ObsHead, ModelHead, Difference, X, Y, Type) values "
      "('T1', " + std::to_string(vid) + ", 10, 12, 2, 40, 40, 'Piezometer')");
  state_.layers.testPointNumbers = true;
  canvas_.ClearOps();
  ModelDrawAllTestPoints(ctx);
  EXPECT_EQ(Colours(), std::set<Colour>{PaletteColour(2)});
  ASSERT_EQ(OpsOf(Kind::Text).size(), 1u);
  EXPECT_EQ(OpsOf(Kind::Text)[0].text, "+2.00");

  canvas_.ClearOps();
  state_.layers.testPointLabels = true;
  ModelDrawAllTestPoints(ctx);
  ASSERT_EQ(OpsOf(Kind::Text).size(), 2u);
  EXPECT_EQ(OpsOf(Kind::Text)[1].text, "T1");

  canvas_.ClearOps();
  state_.layers.showTestPoints = false;
  ModelDrawAllTestPoints(ctx);
  EXPECT_EQ(Figures(), 0);
}

TEST_F(ElemDraw, ParticlesAreSymbolFiveByMode) {
  auto ctx = Ctx();
  ModelDrawParticle(ctx, 50, 50, kDrawNormal);
  ModelDrawParticle(ctx, 50, 50, kDrawSelected);
  ModelDrawParticle(ctx, 50, 50, kDrawErase);
  const auto discs = OpsOf(Kind::Circle);
  ASSERT_EQ(discs.size(), 3u);
  EXPECT_EQ(discs[0].colour, PaletteColour(4));
  EXPECT_EQ(discs[0].fill, PaletteColour(4));
  EXPECT_EQ(discs[1].colour, PaletteColour(12));
  EXPECT_EQ(discs[2].colour, state_.options.Background);
}

// ---- uniform flow, labels, the whole pass ----

TEST_F(ElemDraw, UniformFlowOnlyWhenComputed) {
  Sql("update Model set UNIFLOWRefX=50, UNIFLOWRefY=50, UNIFLOWOrientation=90, UNIFLOWCompute=0");
  auto ctx = Ctx();
  ElemDrawUniformFlow(ctx);
  EXPECT_EQ(Figures(), 0);
  Sql("update Model set UNIFLOWCompute=1");
  ElemDrawUniformFlow(ctx);
  // Symbol 8: two circles and the arrow, which points up for 90 degrees.
  EXPECT_EQ(canvas_.Count(Kind::Circle), 2);
  const auto arrow = OpsOf(Kind::Polyline);
  ASSERT_EQ(arrow.size(), 1u);
  EXPECT_EQ(arrow[0].points[0], Dev(50, 50));
  EXPECT_EQ(arrow[0].points[1].x, Dev(50, 50).x);
  EXPECT_LT(arrow[0].points[1].y, Dev(50, 50).y);
}

TEST_F(ElemDraw, UserLabelsVanishWhenTheWindowIsTenTimesNarrower) {
  Label(10, 10, "near", 999.0, 0);    // 99.9 < width: shown
  Label(20, 20, "far", 1000.0, 0);    // 100 is not below the width of 100: hidden
  Label(30, 30, "river", 0.0, 1);
  Bind({0, 100, 100, 0});
  ASSERT_DOUBLE_EQ(state_.Window.Right - state_.Window.Left, 100.0);
  auto ctx = Ctx();
  ModelDrawAllText(ctx);
  auto texts = OpsOf(Kind::Text);
  ASSERT_EQ(texts.size(), 1u);
  EXPECT_EQ(texts[0].text, "near");
  EXPECT_EQ(texts[0].colour, PaletteColour(0));
  EXPECT_EQ(texts[0].font, "Arial");

  // Hydrography labels need their switch and the toolbar's.
  state_.layers.hydrographyLabels = true;
  state_.layers.toolbar = false;
  canvas_.ClearOps();
  ModelDrawAllText(ctx);
  EXPECT_EQ(OpsOf(Kind::Text).size(), 1u);
  state_.layers.toolbar = true;
  canvas_.ClearOps();
  ModelDrawAllText(ctx);
  texts = OpsOf(Kind::Text);
  ASSERT_EQ(texts.size(), 2u);
  EXPECT_EQ(texts[1].text, "river");
  EXPECT_EQ(texts[1].colour, PaletteColour(13));
  state_.layers.hydrographyLabels = false;
  canvas_.ClearOps();
  ModelDrawAllText(ctx);
  EXPECT_EQ(OpsOf(Kind::Text).size(), 1u);
}

TEST_F(ElemDraw, ElementSwitchOffStillDrawsObservationObjects) {
  Well(20, 20, 0, 0);
  Linesink({{10, 10}, {90, 90}}, 1, 0, 0, 0, 0);
  const auto tp = Point(40, 40);
  Sql("insert into TestPoints (VID, Label, ObsHead, Type) values (" + std::to_string(tp) +
      ", 'T1', 10, 'Piezometer')");
  const auto pa = Point(60, 60);
  Sql("insert into Particles (VID) values (" + std::to_string(pa) + ")");
  state_.layers.elements = false;
  auto ctx = Ctx();
  ElemDrawAll(ctx);
  EXPECT_EQ(Colours(), (std::set<Colour>{PaletteColour(5), PaletteColour(4)}));
  EXPECT_EQ(canvas_.Count(Kind::Circle, PaletteColour(4)), 1);
  EXPECT_EQ(canvas_.Count(Kind::Circle, PaletteColour(5)), 0) << "no well";
  EXPECT_EQ(canvas_.Count(Kind::Polyline, PaletteColour(15)), 0) << "no line-sink";
}

TEST_F(ElemDraw, SelectedElementIsDrawnAgainLast) {
  const auto w = Well(20, 20, 0, 0);
  const auto ls = Linesink({{10, 10}, {50, 20}, {90, 10}}, 1, 0, 0, 0, 0);
  auto ctx = Ctx();
  state_.selection = {1, 0, w, w};
  ElemDrawAll(ctx);
  ASSERT_FALSE(canvas_.Ops().empty());
  EXPECT_EQ(canvas_.Ops().back().colour, PaletteColour(12));
  EXPECT_EQ(canvas_.Count(Kind::Circle, PaletteColour(12)), 3);

  canvas_.ClearOps();
  state_.selection = {2, ls, VidAt(ls, 0), 0};
  ElemDrawAll(ctx);
  EXPECT_EQ(LinesIn(PaletteColour(12)).size(), 2u);
  EXPECT_EQ(LinesIn(Rgb(255, 255, 0)).size(), 1u);
  EXPECT_EQ(canvas_.Ops().back().colour, PaletteColour(0)) << "the vertex last";
}

TEST_F(ElemDraw, SelectedTextLabelFailsQuietlyWithAFontName) {
  Label(10, 10, "a", 0.0, 5, "Arial");
  Label(10, 10, "b", 0.0, 5, " 14 ");
  auto ctx = Ctx();
  state_.selection = {30, 0, 0, 1};
  ElemDrawAll(ctx);
  EXPECT_EQ(Figures(), 0);
  EXPECT_TRUE(ui_.Messages().empty());

  state_.selection.id = 2;
  ElemDrawAll(ctx);
  const auto texts = OpsOf(Kind::Text);
  ASSERT_EQ(texts.size(), 1u);
  EXPECT_EQ(texts[0].text, "b");
  EXPECT_EQ(texts[0].font, "2");
  EXPECT_EQ(texts[0].colour, 12) << "the colour is the font size";
  EXPECT_EQ(texts[0].escapement, 0);
}

TEST(DrawTextToLong, NumbersOnly) {
  EXPECT_EQ(draw::TextToLong(" 12 "), 12);
  EXPECT_EQ(draw::TextToLong("2.5"), 2);
  EXPECT_EQ(draw::TextToLong("-7"), -7);
  EXPECT_THROW(draw::TextToLong("Arial"), Error);
  EXPECT_THROW(draw::TextToLong(""), Error);
  EXPECT_THROW(draw::TextToLong("12px"), Error);
  EXPECT_THROW(draw::TextToLong("inf"), Error);
  EXPECT_THROW(draw::TextToLong("1e10"), OverflowError);
}

TEST_F(ElemDraw, AFailureShowsTheGeneralMessageWithTheOperationsName) {
  Well(1e12, 1e12, 0, 0);  // far beyond the device range
  ui_.Expect(UiCallKind::MessageBox).Title("Unhandled Error -- Contact the Authors").Answer(Answer::OK);
  auto ctx = Ctx();
  ElemDrawAllWells(ctx);
  ASSERT_EQ(ui_.Messages().size(), 1u);
  EXPECT_EQ(ui_.Messages()[0].lines.at(0), "Unhandled error in ElemDrawAllWells");
  ui_.Verify();
}

// ---- the example project ----

TEST_F(ElemDraw, ExampleProjectDrawsEveryKindItHolds) {
  std::ifstream in(std::string(TARNO_SOURCE_DIR) + "/examples/vincennes.sql");
  ASSERT_TRUE(in) << "examples/vincennes.sql";
  std::stringstream sql;
  sql << in.rdbuf();
  Sql(sql.str());
  Statement w = db_.PrepareRaw("select WINDOWX1, WINDOWX2, WINDOWY2, WINDOWY1 from Model");
  ASSERT_TRUE(w.Step());
  Bind({w.GetDouble(0), w.GetDouble(1), w.GetDouble(2), w.GetDouble(3)});
  state_.layers.linesinkVertices = true;
  state_.layers.inhomogeneityVertices = true;
  auto ctx = Ctx();
  int sum = 0;
  struct Step {
    const char* name;
    void (*draw)(DrawContext&);
  } steps[] = {
      {"wells", ElemDrawAllWells},
      {"line-sinks", ElemDrawAllLinesinks},
      {"barriers", ElemDrawAllNoFlow},
      {"inhomogeneities", ElemDrawAllInhos},
      {"test points", ModelDrawAllTestPoints},
      {"particles", ModelDrawAllParticles},
      {"flux lines", ModelDrawAllFluxInspect},
  };
  for (const auto& s : steps) {
    canvas_.ClearOps();
    s.draw(ctx);
    EXPECT_GT(Figures(), 0) << s.name;
    sum += Figures();
  }
  canvas_.ClearOps();
  ElemDrawAll(ctx);
  EXPECT_EQ(Figures(), sum) << "the whole pass is the sum of its kinds";
  EXPECT_TRUE(ui_.Messages().empty());
}

}  // namespace
}  // namespace tarno::testing
