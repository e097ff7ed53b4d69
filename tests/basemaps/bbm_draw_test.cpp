// Drawing BBM maps on a recording surface: what is visible, the styling of each
// data type, the DLG rules by scale level, labels, areas, points, the command
// stream, groups and the base map layer.
#include <gtest/gtest.h>

#include <cmath>

#include "basemaps/bbm.h"
#include "basemaps/bbm_layer.h"
#include "bbm_fixture.h"

namespace tarno::testing {
namespace {

class BbmDrawTest : public BbmTest {
 protected:
  BBMap& Open(const BbmWriterBase& w) {
    map_.SetUserInterface(&ui_);
    map_.Connect(Save(w));
    EXPECT_TRUE(map_.Connected());
    return map_;
  }
  // Windows for the three DLG levels on the 1000-pixel surface: 10, 2500 and 4000
  // hundredths a pixel.
  void Level(int level) {
    const double width = level == 0 ? 100 : level == 1 ? 25000 : 40000;
    Bind({0, width, width, 0});
  }
  // One DLG line (0,0)-(1000,1000) with pairs, drawn at a level.
  std::vector<RecordingCanvas::Op> DrawDlg(std::vector<BbmPair> pairs, int level,
                                           BbmLineLabel* label = nullptr) {
    BbmRecordWriter w(Fields(bbm::kAttributed, "ROAD"));
    w.AddLine(1, {0, 1000}, {0, 1000}, pairs);
    BBMap& map = Open(w);
    Level(level);
    const BbmLineLabel l = map.DrawLine(g_, 1);
    if (label != nullptr) *label = l;
    return OpsOf(Kind::Polyline);
  }
  BBMap map_;
};

TEST_F(BbmDrawTest, ColouredLinesAreDrawnInTheirMinorAndOnlyWhenVisible) {
  BbmRecordWriter w(Fields(bbm::kColoured));
  w.AddLine(1, {1000, 2000, 3000}, {1000, 1500, 1000}, {{1, Rgb(10, 20, 30)}});
  w.AddLine(2, {20000, 30000}, {20000, 30000}, {{1, Rgb(1, 2, 3)}});  // outside
  w.AddLine(3, {10000, 12000}, {5000, 5000}, {{1, Rgb(4, 5, 6)}});    // touches the right edge
  w.AddLine(4, {10001, 12000}, {5000, 5000}, {{1, Rgb(7, 8, 9)}});    // just outside
  w.AddLine(5, {100, 200}, {100, 200}, {});                           // no pair: skipped
  Open(w).Draw(g_, true, true, true);
  const auto lines = OpsOf(Kind::Polyline);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].colour, Rgb(10, 20, 30));
  EXPECT_EQ(lines[0].width, 1);
  EXPECT_EQ(lines[0].style, kPenSolid);
  EXPECT_EQ(lines[0].points,
            (std::vector<DevicePoint>{Dev(1000, 1000), Dev(2000, 1500), Dev(3000, 1000)}));
  EXPECT_EQ(lines[1].colour, Rgb(4, 5, 6));
  ui_.Verify();
}

TEST_F(BbmDrawTest, UnattributedRecordsAreDrawnAndPointsTwice) {
  BbmRecordWriter w(Fields(bbm::kUnattributed));
  w.AddLine(1, {100, 900}, {100, 900}, {});
  w.AddPoint(2, 5000, 5000, {});
  BBMap& map = Open(w);
  map.color(Rgb(9, 9, 9));
  map.Draw(g_, true, true, true);
  EXPECT_EQ(canvas_.Count(Kind::Polyline, Rgb(9, 9, 9)), 1);
  // A point is a cross of two strokes in magenta, drawn twice.
  EXPECT_EQ(canvas_.Count(Kind::Polyline, PaletteColour(5)), 4);

  // An attributed map skips both when they carry no pair.
  BbmRecordWriter d(Fields(bbm::kAttributed));
  d.AddLine(1, {100, 900}, {100, 900}, {});
  d.AddPoint(2, 5000, 5000, {});
  d.AddPoint(3, 6000, 6000, {{300, 2}});
  canvas_.ClearOps();
  Open(d).Draw(g_, true, true, true);
  const auto marks = OpsOf(Kind::Polyline);
  ASSERT_EQ(marks.size(), 2u);
  EXPECT_EQ(marks[0].points[0].y, Dev(6000, 6000).y);
}

TEST_F(BbmDrawTest, DrawSwitchesChooseTheKinds) {
  BbmRecordWriter w(Fields(bbm::kAttributed, "HYDR"));
  w.AddLine(1, {0, 5000, 5000, 0}, {0, 0, 5000, 5000}, {{50, 412}});
  w.AddPoint(2, 1000, 1000, {{300, 1}});
  w.AddArea(3, {1}, {{50, 111}});
  BBMap& map = Open(w);
  map.Draw(g_, false, false, true);
  EXPECT_EQ(canvas_.Count(Kind::Polygon), 0);
  EXPECT_EQ(canvas_.Count(Kind::Polyline), 2);
  canvas_.ClearOps();
  map.Draw(g_, true, true, false);
  // Areas come first, under the lines.
  ASSERT_EQ(canvas_.Ops().size(), 2u);
  EXPECT_EQ(canvas_.Ops()[0].kind, Kind::Polygon);
  EXPECT_EQ(canvas_.Ops()[1].kind, Kind::Polyline);
  EXPECT_EQ(canvas_.Ops()[1].colour, Rgb(0, 192, 192));
}

TEST_F(BbmDrawTest, HydrographyDropsMinorsAndDotsIntermittentStreams) {
  EXPECT_EQ(DrawDlg({{50, 412}}, 0).size(), 1u);
  for (const int minor : {419, 601, 611, 612, 617, 200, 250}) {
    EXPECT_TRUE(DrawDlg({{50, minor}}, 0).empty()) << minor;
  }
  // Only major 50 counts.
  EXPECT_EQ(DrawDlg({{51, 419}}, 0).size(), 1u);
  auto dotted = DrawDlg({{50, 610}}, 1);
  ASSERT_EQ(dotted.size(), 1u);
  EXPECT_EQ(dotted[0].style, kPenDot);
  EXPECT_TRUE(DrawDlg({{50, 610}}, 2).empty());
}

TEST_F(BbmDrawTest, RoadLabelsTakeTheHighestRouteClass) {
  BbmLineLabel label;
  DrawDlg({{172, 80}, {173, 30}}, 0, &label);
  EXPECT_EQ(label.text, "I-80");
  DrawDlg({{173, 30}, {172, 80}}, 0, &label);
  EXPECT_EQ(label.text, "I-80");
  DrawDlg({{173, 30}, {174, 9}}, 0, &label);
  EXPECT_EQ(label.text, "US-30");
  DrawDlg({{176, 12}, {174, 9}}, 0, &label);
  EXPECT_EQ(label.text, "SR-9");
  // A county road yields only to "CR", "US" and "I-": it replaces a state route.
  DrawDlg({{174, 9}, {176, 12}}, 0, &label);
  EXPECT_EQ(label.text, "CR-12");
  DrawDlg({{176, 12}}, 0, &label);
  EXPECT_EQ(label.text, "CR-12");
  EXPECT_DOUBLE_EQ(label.x, 0.0);
  EXPECT_NEAR(label.angle, 45.0, 1e-5);  // atan(1) with the program's pi
  DrawDlg({{170, 201}}, 0, &label);
  EXPECT_EQ(label.text, "");
}

TEST_F(BbmDrawTest, RoadAngleIsExactly90ForAVerticalStart) {
  BbmRecordWriter w(Fields(bbm::kAttributed));
  w.AddLine(1, {500, 500, 900}, {100, 900, 900}, {{172, 5}});
  w.AddLine(2, {500}, {100}, {{172, 5}});  // one vertex: no direction
  BBMap& map = Open(w);
  const BbmLineLabel up = map.DrawLine(g_, 1);
  EXPECT_EQ(up.angle, 90.0);
  EXPECT_DOUBLE_EQ(up.x, 5.0);
  EXPECT_DOUBLE_EQ(up.y, 1.0);
  EXPECT_EQ(map.DrawLine(g_, 2).angle, 0.0);
}

TEST_F(BbmDrawTest, RoadsAreGeneralisedByLevel) {
  auto one = [&](std::vector<BbmPair> pairs, int level) {
    auto ops = DrawDlg(std::move(pairs), level);
    RecordingCanvas::Op none;
    none.kind = Kind::Clear;  // stands for "not drawn"
    return ops.size() == 1 ? ops[0] : none;
  };
  EXPECT_EQ(one({{170, 205}}, 0).width, 2);
  EXPECT_EQ(one({{170, 211}}, 0).style, kPenDot);
  EXPECT_EQ(one({{170, 402}}, 0).width, 1);
  EXPECT_EQ(one({{170, 203}}, 1).width, 2);
  EXPECT_EQ(one({{170, 205}}, 1).width, 1);
  EXPECT_EQ(one({{170, 402}}, 1).kind, Kind::Clear);
  EXPECT_EQ(one({{170, 250}}, 2).kind, Kind::Clear);
  EXPECT_EQ(one({{170, 201}}, 2).width, 1);
  // A road that is not drawn has no label either.
  BbmLineLabel label;
  EXPECT_TRUE(DrawDlg({{172, 80}, {170, 250}}, 2, &label).empty());
  EXPECT_EQ(label.text, "");
}

TEST_F(BbmDrawTest, RailwaysAndClass19) {
  auto rail = DrawDlg({{180, 201}}, 0);
  ASSERT_EQ(rail.size(), 1u);
  EXPECT_EQ(rail[0].colour, PaletteColour(6));
  EXPECT_EQ(rail[0].width, 2);
  EXPECT_EQ(DrawDlg({{180, 202}}, 0)[0].width, 1);
  EXPECT_TRUE(DrawDlg({{180, 202}}, 1).empty());
  EXPECT_EQ(DrawDlg({{180, 602}}, 1).size(), 1u);
  EXPECT_TRUE(DrawDlg({{180, 602}, {180, 300}}, 1).empty());
  EXPECT_TRUE(DrawDlg({{180, 602}}, 2).empty());

  EXPECT_EQ(DrawDlg({{190, 250}}, 1)[0].style, kPenDot);
  EXPECT_EQ(DrawDlg({{190, 301}}, 2)[0].style, kPenSolid);
  // At the closest level this class fails, and the failure ends the map's drawing.
  BbmRecordWriter w(Fields(bbm::kAttributed));
  w.AddLine(1, {0, 1000}, {0, 1000}, {{190, 250}});
  w.AddLine(2, {0, 1000}, {0, 1000}, {{50, 412}});
  BBMap& map = Open(w);
  Level(0);
  try {
    map.Draw(g_, true, true, true);
    ADD_FAILURE() << "class 19 drew at level 0";
  } catch (const BbmError& e) {
    EXPECT_NE(std::string(e.what()).find(map.Fname()), std::string::npos);
  }
  EXPECT_EQ(canvas_.Count(Kind::Polyline), 0);
  // The file was closed: the map draws again at another scale.
  Level(1);
  map.Draw(g_, true, true, true);
  EXPECT_EQ(canvas_.Count(Kind::Polyline), 2);
}

TEST_F(BbmDrawTest, HypsographyLabelsFollowTheSwitchAndUnits) {
  BbmRecordWriter w(Fields(bbm::kAttributed, "HYPS"));
  w.AddLine(1, {1000, 2000}, {1000, 1000}, {{20, 0}, {22, 1000}});  // feet
  w.AddLine(2, {5000, 6000}, {5000, 5000}, {{20, 0}, {24, 100}});   // metres
  BBMap& map = Open(w);
  EXPECT_EQ(map.DrawLine(g_, 1).text, "");
  EXPECT_TRUE(map.HypsographyFound());
  map.SetDrawOptions({true, false});
  EXPECT_EQ(map.DrawLine(g_, 1).text, "1000");
  EXPECT_EQ(map.DrawLine(g_, 2).text, "328");  // 100 / 0.3048, truncated
  map.SetDrawOptions({true, true});
  EXPECT_EQ(map.DrawLine(g_, 1).text, "304");
  const BbmLineLabel l = map.DrawLine(g_, 2);
  EXPECT_EQ(l.text, "100");
  EXPECT_DOUBLE_EQ(l.x, 50.0);
  EXPECT_EQ(l.angle, 0.0);
  canvas_.ClearOps();
  map.Draw(g_, true, true, true);
  const auto texts = OpsOf(Kind::Text);
  ASSERT_EQ(texts.size(), 2u);
  EXPECT_EQ(texts[0].text, "304");
  EXPECT_EQ(texts[0].font, "Verdana Bold");
  EXPECT_EQ(texts[0].colour, 0);
  EXPECT_EQ(texts[0].alignment, kAlignCentre + kAlignBaseline);
}

TEST_F(BbmDrawTest, ALabelRepeatsOnlyAtFifteenPercentOfTheDiagonal) {
  // The diagonal of the 100 x 100 window is 141.4 units; 15 % is 21.2 units.
  BbmRecordWriter w(Fields(bbm::kAttributed, "ROAD"));
  w.AddLine(1, {1000, 1500}, {1000, 1000}, {{173, 30}});
  w.AddLine(2, {2000, 2500}, {1000, 1000}, {{173, 30}});  // 10 units on: hidden
  w.AddLine(3, {2000, 2500}, {2000, 2000}, {{173, 31}});  // another road: shown
  w.AddLine(4, {3200, 3500}, {1000, 1000}, {{173, 30}});  // 22 units on: shown
  w.AddLine(5, {3300, 3500}, {1000, 1000}, {{172, 30}});  // another text: shown
  BBMap& map = Open(w);
  map.DrawAllLines(g_);
  std::vector<std::string> texts;
  for (const auto& op : OpsOf(Kind::Text)) texts.push_back(op.text);
  EXPECT_EQ(texts, (std::vector<std::string>{"US-30", "US-31", "US-30", "I-30"}));
  EXPECT_EQ(canvas_.Count(Kind::Polyline), 5);
  // A new draw starts with no labels placed.
  canvas_.ClearOps();
  map.DrawAllLines(g_);
  EXPECT_EQ(canvas_.Count(Kind::Text), 4);
}

TEST_F(BbmDrawTest, SimpleCodedLines) {
  BbmRecordWriter w(Fields(bbm::kSimpleCoded));
  w.AddLine(1, {0, 1000}, {0, 0}, {{100, 0}});
  w.AddLine(2, {0, 1000}, {100, 100}, {{200, 2}});
  w.AddLine(3, {0, 1000}, {200, 200}, {{200, 7}});  // keeps the colour before
  w.AddLine(4, {0, 1000, 2000}, {300, 300, 300}, {{300, 0}});
  w.AddLine(5, {0, 1000}, {400, 400}, {{400, 0}});
  BBMap& map = Open(w);
  map.DrawAllLines(g_);
  const auto ops = OpsOf(Kind::Polyline);
  ASSERT_EQ(ops.size(), 3u + 6u);
  EXPECT_EQ(ops[0].colour, PaletteColour(1));
  EXPECT_EQ(ops[1].colour, PaletteColour(6));
  EXPECT_EQ(ops[2].colour, PaletteColour(6));
  for (std::size_t i = 3; i < ops.size(); ++i) EXPECT_EQ(ops[i].colour, PaletteColour(5));
  EXPECT_EQ(map.color(), PaletteColour(6));
}

TEST_F(BbmDrawTest, AreasJoinTheirBoundariesAndColourByMinor) {
  BbmRecordWriter w(Fields(bbm::kAttributed, "HYDR"));
  const auto a = w.AddLine(1, {1000, 5000}, {1000, 1000}, {{50, 412}});
  const auto b = w.AddLine(2, {1000, 5000}, {5000, 5000}, {{50, 412}});
  const auto c = w.AddLine(3, {5000, 5000}, {1000, 5000}, {{50, 412}});
  w.AddArea(1, {a, c, -b, 0, 2}, {{50, 101}, {50, 105}});
  w.AddArea(2, {a}, {{50, 107}});
  w.AddArea(3, {a}, {{40, 105}});  // not hydrography: not drawn
  w.AddArea(4, {}, {{50, 105}});   // no boundary: not drawn
  w.AddArea(5, {a}, {});           // no pair: not drawn
  w.AddArea(6, {a}, {{50, 100}, {50, 999}});
  BBMap& map = Open(w);
  map.DrawAllAreas(g_);
  const auto polys = OpsOf(Kind::Polygon);
  ASSERT_EQ(polys.size(), 3u);
  EXPECT_EQ(polys[0].points,
            (std::vector<DevicePoint>{Dev(1000, 1000), Dev(5000, 1000), Dev(5000, 1000),
                                      Dev(5000, 5000), Dev(5000, 5000), Dev(1000, 5000)}));
  EXPECT_EQ(polys[0].colour, Rgb(192, 192, 0));
  EXPECT_EQ(polys[0].fill, Rgb(192, 192, 0));
  EXPECT_EQ(polys[0].width, 0);
  EXPECT_EQ(polys[1].colour, Rgb(128, 64, 64));
  EXPECT_EQ(polys[2].colour, PaletteColour(7));

  // A boundary that names a line the file does not have.
  BbmRecordWriter bad(Fields(bbm::kAttributed));
  bad.AddLine(1, {0, 10}, {0, 10}, {{50, 412}});
  bad.AddArea(1, {-7}, {{50, 101}});
  EXPECT_THROW(Open(bad).DrawAllAreas(g_), BbmError);
}

TEST_F(BbmDrawTest, CommandStreamDrawsLinesPolygonsAndLosesTheUnfinishedLine) {
  BbmCommandWriter c(Fields(bbm::kCommands));
  c.Colour(4);
  c.Width(25);  // 25 hundredths at 10 a pixel: round(2.5) = 2
  c.MoveTo(1000, 1000);
  c.LineTo(2000, 1000);
  c.LineTo(2000, 2000);
  c.Raw(77);             // unknown codes have no operand
  c.MoveTo(9000, 9000);  // draws the line; a polygon would replace it unseen
  c.Colour(15);
  c.Polygon({3000, 4000, 4000}, {3000, 3000, 4000});
  c.MoveTo(6000, 6000);  // draws the first line, then the polygon's outline
  c.MoveTo(50000, 50000);
  c.LineTo(60000, 60000);  // outside the window: not drawn
  c.MoveTo(7000, 7000);
  c.LineTo(8000, 8000);
  c.End(false);  // 999 right after a 1: the last line is lost
  BBMap& map = Open(c);
  map.Draw(g_, false, false, false);
  const auto& ops = canvas_.Ops();
  ASSERT_EQ(ops.size(), 3u);
  EXPECT_EQ(ops[0].kind, Kind::Polyline);
  EXPECT_EQ(ops[0].colour, PaletteColour(4));
  EXPECT_EQ(ops[0].width, 2);
  EXPECT_EQ(ops[0].points,
            (std::vector<DevicePoint>{Dev(1000, 1000), Dev(2000, 1000), Dev(2000, 2000)}));
  EXPECT_EQ(ops[1].kind, Kind::Polygon);
  EXPECT_EQ(ops[1].colour, 0);  // 15 reads as black
  EXPECT_EQ(ops[1].fill, 0);
  EXPECT_EQ(ops[1].width, 2);
  EXPECT_EQ(ops[2].kind, Kind::Polyline);  // the outline, in the colour latched at its start
  EXPECT_EQ(ops[2].colour, PaletteColour(4));
  EXPECT_EQ(ops[2].points.size(), 3u);
  ui_.Verify();
}

TEST_F(BbmDrawTest, BrokenCommandStreamIsToldAndEndsTheDraw) {
  BbmCommandWriter c(Fields(bbm::kCommands));
  c.MoveTo(1000, 1000);
  c.LineTo(2000, 2000);
  c.MoveTo(3000, 3000);
  c.LineTo(4000, 4000);
  c.Raw(bbm::kCmdColour, {16});  // no such palette colour
  c.MoveTo(0, 0);
  c.End();
  BBMap& map = Open(c);
  ui_.ExpectMessage("TARNO", {"Error encountered in OpenDWG BBM file"});
  map.Draw(g_, true, true, true);
  EXPECT_EQ(canvas_.Count(Kind::Polyline), 1);
  ui_.Verify();

  // A polygon that claims more points than the file holds, and a cut operand.
  BbmCommandWriter p(Fields(bbm::kCommands));
  p.Raw(bbm::kCmdPolygon, {1000000, 1, 2});
  ui_.ExpectMessage("TARNO", {"Error encountered in OpenDWG BBM file"});
  Open(p).Draw(g_, true, true, true);
  std::string cut = c.Bytes();
  cut.resize(296 + 6);
  map_.Connect(SaveBytes(cut, "cut.bbm"));
  ui_.ExpectMessage("TARNO", {"Error encountered in OpenDWG BBM file"});
  map_.Draw(g_, true, true, true);
  ui_.Verify();
}

TEST_F(BbmDrawTest, GroupsCountRecordsByPairAndDrawHighlighted) {
  BbmRecordWriter w(Fields(bbm::kAttributed, "HYDR"));
  const auto a = w.AddLine(1, {1000, 2000}, {1000, 1000}, {{50, 412}, {50, 412}});
  w.AddLine(2, {3000, 4000}, {3000, 3000}, {{50, 412}, {170, 201}});
  w.AddLine(3, {5000, 6000}, {5000, 5000}, {{170, 201}});
  w.AddPoint(4, 500, 500, {{170, 201}});
  w.AddArea(5, {a}, {{50, 412}});
  BBMap& map = Open(w);
  const std::vector<BbmGroup> expected = {{50, 412, 0, 2, 1}, {170, 201, 1, 2, 0}};
  EXPECT_EQ(map.Groups(), expected);
  map.DrawGroup(g_, 170, 201, PaletteColour(12));
  // Two lines and a cross of two strokes, all in the highlight colour.
  EXPECT_EQ(canvas_.Count(Kind::Polyline, PaletteColour(12)), 4);
  EXPECT_EQ(canvas_.Count(Kind::Polyline), 4);
  canvas_.ClearOps();
  map.DrawGroup(g_, 50, 412, PaletteColour(12));
  EXPECT_EQ(canvas_.Count(Kind::Polygon), 1);
  EXPECT_EQ(OpsOf(Kind::Polygon)[0].fill, -1);
  EXPECT_EQ(canvas_.Count(Kind::Polyline), 2);
}

TEST_F(BbmDrawTest, LayerDrawsWithTheRowColour) {
  BbmRecordWriter w(Fields(bbm::kUnattributed));
  w.AddLine(1, {1000, 2000}, {1000, 3000}, {});
  BaseMapRow row;
  row.MapName = Save(w);
  row.Color = Rgb(1, 2, 3);
  auto layer = OpenBbmLayer(row);
  EXPECT_EQ(layer->Name(), row.MapName);
  EXPECT_FALSE(layer->IsRaster());
  ASSERT_TRUE(layer->Extents().has_value());
  EXPECT_DOUBLE_EQ(layer->Extents()->Left, 10.0);
  EXPECT_DOUBLE_EQ(layer->Extents()->Top, 30.0);
  layer->Draw(g_);
  EXPECT_EQ(canvas_.Count(Kind::Polyline, Rgb(1, 2, 3)), 1);

  BaseMapRow missing;
  missing.MapName = (temp_ / "gone.bbm").string();
  try {
    OpenBbmLayer(missing);
    ADD_FAILURE() << "a missing map opened";
  } catch (const Error& e) {
    EXPECT_NE(std::string(e.what()).find(missing.MapName), std::string::npos);
  }
  BaseMapRow text;
  text.MapName = SaveBytes("not a map at all", "text.bbm");
  EXPECT_THROW(OpenBbmLayer(text), BbmError);
}

TEST_F(BbmDrawTest, DenseLinesAreThinnedToThePixel) {
  std::vector<std::int32_t> xs, ys;
  for (int i = 0; i <= 1000; ++i) {
    xs.push_back(i * 10);  // one pixel in ten vertices... at 100 hundredths a pixel
    ys.push_back(5000);
  }
  BbmRecordWriter w(Fields(bbm::kUnattributed));
  w.AddLine(1, xs, ys, {});
  BBMap& map = Open(w);
  Bind({0, 1000, 1000, 0});  // 100 hundredths a pixel
  map.DrawAllLines(g_);
  const auto ops = OpsOf(Kind::Polyline);
  ASSERT_EQ(ops.size(), 1u);
  EXPECT_EQ(ops[0].points.size(), 101u);
  EXPECT_EQ(ops[0].points.front().x, 0);
  EXPECT_EQ(ops[0].points.back().x, 100);
}

}  // namespace
}  // namespace tarno::testing

namespace tarno::testing {
namespace {

TEST_F(BbmDrawTest, LongMapsAskTheSurfaceToShowProgressEvery500Lines) {
  BbmRecordWriter w(Fields(bbm::kColoured));
  for (int i = 0; i < 1200; ++i) w.AddLine(i + 1, {100, 200}, {100, 200}, {{1, 5}});
  w.AddPoint(1, 200000, 200000, {{1, 5}});  // outside the window: no cross
  Open(w).Draw(g_, true, true, true);
  EXPECT_EQ(canvas_.Count(Kind::Refresh), 2);
  EXPECT_EQ(canvas_.Count(Kind::Polyline), 1200);
}

}  // namespace
}  // namespace tarno::testing
