// The drawing of contour lines and pathlines from the solver's files: levels and
// their labels, the label margin and angle, paths and their time and elevation
// marks with the mark files.
#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "display/draw_marks.h"
#include "display/results_draw.h"
#include "draw_fixture.h"

namespace tarno::testing {
namespace {

std::string Field(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%14.6E", v);
  return buf;
}

std::string ReadFile(const std::filesystem::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

class ResultsDraw : public DrawTest {
 protected:
  void SetUp() override {
    DrawTest::SetUp();
    // Model coordinates are map coordinates less (50, 50).
    state_.frame.originX = 50;
    state_.frame.originY = 50;
    state_.solution.valid = true;
    state_.options.ContourColor = Rgb(1, 2, 3);
    state_.options.ContourWidth = 1;
    state_.options.ContourType = kPenDash;
    state_.options.PathlineColor = Rgb(4, 5, 6);
    state_.options.PathlineType = kPenSolid;
  }
  // A contour level through world points.
  static std::string Level(double level, const std::vector<std::pair<double, double>>& world) {
    std::string s = "LEVEL" + Field(level) + "\r\n";
    for (const auto& [x, y] : world) s += "      " + Field(x - 50) + Field(y - 50) + "\r\n";
    return s;
  }
  struct P {
    double x, y, t, z;
  };
  static std::string Path(const std::vector<P>& world) {
    std::string s = "START\r\n";
    for (const auto& p : world)
      s += "      " + Field(p.x - 50) + Field(p.y - 50) + Field(p.t) + Field(p.z) + Field(0) + "\r\n";
    return s + "END\r\n";
  }
  void Write(const std::string& name, const std::string& text) {
    std::ofstream(dir_ / name, std::ios::binary) << text;
  }
  std::vector<RecordingCanvas::Op> In(Kind kind, Colour c) const {
    std::vector<RecordingCanvas::Op> out;
    for (const auto& op : OpsOf(kind))
      if (op.colour == c) out.push_back(op);
    return out;
  }
};

TEST(ContourLabelAngle, VerticalIsNinetyAndNegativeTurnsPositive) {
  EXPECT_DOUBLE_EQ(ContourLabelAngle(0.0, 5.0), 90.0);
  EXPECT_DOUBLE_EQ(ContourLabelAngle(0.0, -5.0), 90.0);
  EXPECT_NEAR(ContourLabelAngle(1.0, 1.0), 45.0, 1e-9);
  EXPECT_NEAR(ContourLabelAngle(-1.0, -1.0), 45.0, 1e-9);
  EXPECT_NEAR(ContourLabelAngle(1.0, -1.0), 315.0, 1e-9);
  EXPECT_NEAR(ContourLabelAngle(-2.0, 2.0), 315.0, 1e-9);
  EXPECT_DOUBLE_EQ(ContourLabelAngle(3.0, 0.0), 0.0);
}

TEST_F(ResultsDraw, ContoursAreOnePolylinePerLevelWithTheContourPen) {
  Write("model.CTR", Level(112.25, {{1, 1}, {3, 3}, {50, 50}}) +
                         Level(7, {{1, 50}, {3, 50}}) +               // all near the edge
                         Level(-3.5, {{50, 10}, {50, 90}}) +           // vertical
                         Level(20, {{10, 90}, {90, 10}}));             // falling
  auto ctx = Ctx();
  ModelDrawContours(ctx);
  // Each labelled line in two pieces around its label; the one near the edge whole.
  const auto lines = In(Kind::Polyline, Rgb(1, 2, 3));
  ASSERT_EQ(lines.size(), 7u);
  EXPECT_EQ(lines[0].points.front(), Dev(1, 1));
  EXPECT_EQ(lines[0].points[1], Dev(3, 3));
  EXPECT_EQ(lines[1].points.back(), Dev(50, 50));
  EXPECT_EQ(lines[0].style, kPenDash);
  EXPECT_EQ(lines[2].points, (std::vector<DevicePoint>{Dev(1, 50), Dev(3, 50)}));
  EXPECT_EQ(lines[3].points.front(), Dev(50, 10));
  EXPECT_EQ(lines[4].points.back(), Dev(50, 90));

  const auto labels = OpsOf(Kind::Text);
  ASSERT_EQ(labels.size(), 3u) << "the line near the edge has no label";
  // The first segment's midpoint (2, 2) lies in the margin; the second's is used.
  EXPECT_EQ(labels[0].text, "112.3");
  EXPECT_EQ(labels[0].font, "Arial");
  EXPECT_EQ(labels[0].points[0], Dev(26.5, 26.5));
  EXPECT_EQ(labels[0].escapement, 450);
  EXPECT_EQ(labels[0].colour, Rgb(1, 2, 3));
  EXPECT_EQ(labels[1].text, "-3.5");
  EXPECT_EQ(labels[1].escapement, 900);
  EXPECT_EQ(labels[2].text, "20.0");
  EXPECT_EQ(labels[2].escapement, 3150);
}

TEST(SplitAroundBox, CutsTheLineWhereItEntersAndLeavesTheBox) {
  const LabelBox box{10, 0, 0, 2, 1, 3};  // u in (-2, 2), v in (-1, 3) about (10, 0)
  // Straight through along the baseline.
  auto pieces = SplitAroundBox({0, 10, 20}, {0, 0, 0}, box);
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_EQ(pieces[0], (std::vector<WorldPoint>{{0, 0}, {8, 0}}));
  EXPECT_EQ(pieces[1], (std::vector<WorldPoint>{{12, 0}, {20, 0}}));
  // In through the left side, out through the top.
  pieces = SplitAroundBox({0, 10, 10}, {0, 0, 10}, box);
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_EQ(pieces[0].back(), (WorldPoint{8, 0}));
  EXPECT_EQ(pieces[1], (std::vector<WorldPoint>{{10, 3}, {10, 10}}));
  // Missing the box, or only touching its edge: whole.
  pieces = SplitAroundBox({0, 20}, {5, 5}, box);
  ASSERT_EQ(pieces.size(), 1u);
  EXPECT_EQ(pieces[0].size(), 2u);
  pieces = SplitAroundBox({0, 20}, {3, 3}, box);
  ASSERT_EQ(pieces.size(), 1u);
  // Wholly inside: nothing is left; starting inside: the part after the box.
  EXPECT_TRUE(SplitAroundBox({9, 11}, {0, 1}, box).empty());
  pieces = SplitAroundBox({10, 30}, {0, 0}, box);
  ASSERT_EQ(pieces.size(), 1u);
  EXPECT_EQ(pieces[0], (std::vector<WorldPoint>{{12, 0}, {30, 0}}));
  // The box turns with the label: at 90 degrees it is long in Y.
  const LabelBox up{0, 0, 90, 2, 1, 3};
  pieces = SplitAroundBox({0, 0}, {-10, 10}, up);
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_NEAR(pieces[0].back().y, -2, 1e-12);
  EXPECT_NEAR(pieces[1].front().y, 2, 1e-12);
  pieces = SplitAroundBox({-10, 10}, {0, 0}, up);  // across it: v from -1 (right) to 3 (left)
  ASSERT_EQ(pieces.size(), 2u);
  EXPECT_NEAR(pieces[0].back().x, -3, 1e-12);
  EXPECT_NEAR(pieces[1].front().x, 1, 1e-12);
}

TEST_F(ResultsDraw, AThickContourPenLeavesAGapUnderTheLabel) {
  state_.options.ContourWidth = 6;  // points: 8 pixels at 96 per inch
  state_.options.ContourType = kPenSolid;
  Write("model.CTR", Level(42, {{10, 50}, {90, 50}}));
  auto ctx = Ctx();
  ModelDrawContours(ctx);
  const auto lines = In(Kind::Polyline, Rgb(1, 2, 3));
  const auto labels = OpsOf(Kind::Text);
  ASSERT_EQ(lines.size(), 2u);
  ASSERT_EQ(labels.size(), 1u);
  EXPECT_EQ(lines[0].width, 8);
  EXPECT_EQ(lines[0].points.front(), Dev(10, 50));
  EXPECT_EQ(lines[1].points.back(), Dev(90, 50));
  // The label stands in the gap, centred, and the gap holds its width (as the
  // surface measures it) with the pen's round ends kept clear of the text.
  const DevicePoint at = labels[0].points[0];
  EXPECT_EQ(at, Dev(50, 50));
  const int left = lines[0].points.back().x, right = lines[1].points.front().x;
  EXPECT_LT(left, at.x);
  EXPECT_GT(right, at.x);
  const int textWidth = canvas_.TextWidth("42.0", labels[0].height, "Arial");
  EXPECT_GE(at.x - left, textWidth / 2 + 8 / 2);
  EXPECT_GE(right - at.x, textWidth / 2 + 8 / 2);
  EXPECT_NEAR(at.x - left, right - at.x, 1);
  EXPECT_LT(right - left, textWidth + 4 * labels[0].height) << "a gap, not a hole";
}

TEST_F(ResultsDraw, ALineHardlyLargerThanItsLabelIsDrawnWhole) {
  // A small closed contour, 3 units (24 pixels) across, under a label of about as
  // much: cut around the label it would all but vanish.
  Write("model.CTR", Level(3, {{50, 50}, {53, 50}, {53, 51}, {50, 51}, {50, 50}}));
  auto ctx = Ctx();
  ModelDrawContours(ctx);
  const auto lines = In(Kind::Polyline, Rgb(1, 2, 3));
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].points.size(), 5u);
  EXPECT_EQ(OpsOf(Kind::Text).size(), 1u);
}

TEST_F(ResultsDraw, ContourLabelMarginIsFourPercentOfTheWindow) {
  // Midpoints at 4.5 and 95.5 lie inside [4, 96]; 3.5 and 96.5 do not.
  Write("model.CTR", Level(1, {{3, 50}, {6, 50}}) + Level(2, {{95, 50}, {96, 50}}) +
                         Level(3, {{50, 3}, {50, 4}}) + Level(4, {{50, 96}, {50, 97}}));
  auto ctx = Ctx();
  ModelDrawContours(ctx);
  const auto labels = OpsOf(Kind::Text);
  ASSERT_EQ(labels.size(), 2u);
  EXPECT_EQ(labels[0].text, "1.0");
  EXPECT_EQ(labels[1].text, "2.0");
}

TEST_F(ResultsDraw, ContoursNeedTheSwitchTheModelsShowFlagAndTheFile) {
  auto ctx = Ctx();
  ModelDrawContours(ctx);
  EXPECT_EQ(Figures(), 0) << "no file";

  Write("model.ctr", Level(5, {{10, 10}, {90, 90}}));  // the name's case does not matter
  ModelDrawContours(ctx);
  EXPECT_EQ(canvas_.Count(Kind::Polyline), 2);  // the line on either side of its label

  canvas_.ClearOps();
  state_.layers.contours = false;
  ModelDrawContours(ctx);
  EXPECT_EQ(Figures(), 0);

  state_.layers.contours = true;
  Sql("update Model set CONTOURShow=0");
  ModelDrawContours(ctx);
  EXPECT_EQ(Figures(), 0);
  EXPECT_TRUE(ui_.Messages().empty());
}

TEST_F(ResultsDraw, BrokenContourFileGivesTheGeneralMessage) {
  Write("model.CTR", "      " + Field(1) + Field(2) + "\r\n");  // a point before any level
  ui_.Expect(UiCallKind::MessageBox).Title("Unhandled Error -- Contact the Authors").Answer(Answer::OK);
  auto ctx = Ctx();
  ModelDrawContours(ctx);
  ASSERT_EQ(ui_.Messages().size(), 1u);
  EXPECT_EQ(ui_.Messages()[0].lines.at(0), "Unhandled error in ModelDrawContours");
  EXPECT_NE(ui_.Messages()[0].lines.at(1).find("model.CTR"), std::string::npos);
  ui_.Verify();
}

TEST_F(ResultsDraw, PathlinesWithTimeAndElevationMarks) {
  Write("model.PTH", Path({{70, 70, 0, 9}}) +  // one point: nothing at all
                         Path({{10, 10, 0, 5}, {20, 10, 10, 3}, {20, 30, 20, 8}}));
  state_.layers.pathlines = true;
  state_.layers.timeMarkStep = 5;
  state_.layers.elevationMarkStep = 2;
  auto ctx = Ctx();
  ModelDrawPathlines(ctx);

  const auto paths = In(Kind::Polyline, Rgb(4, 5, 6));
  // The path itself, then two strokes for each of the four elevation marks.
  ASSERT_EQ(paths.size(), 9u);
  EXPECT_EQ(paths[0].points, (std::vector<DevicePoint>{Dev(10, 10), Dev(20, 10), Dev(20, 30)}));
  EXPECT_EQ(In(Kind::Circle, Rgb(4, 5, 6)).size(), 4u) << "four time marks";

  const std::string pad10(10, ' ');
  EXPECT_EQ(ReadFile(dir_ / "TICMARKST.TIC"),
            " 15 " + pad10 + " 10 \r\n" + " 20 " + pad10 + " 10 \r\n" + " 20 " + pad10 +
                " 20 \r\n" + " 20 " + pad10 + " 30 \r\n");
  // Down from 5 to 3 passes 4; up from 3 to 8 passes 4 and 6 and reaches 8.
  EXPECT_EQ(ReadFile(dir_ / "TICMARKSZ.TIC"),
            " 15 " + pad10 + " 10 " + pad10 + "-1 \r\n" +
            " 20 " + pad10 + " 14 " + pad10 + " 1 \r\n" +
            " 20 " + pad10 + " 22 " + pad10 + " 1 \r\n" +
            " 20 " + pad10 + " 30 " + pad10 + " 1 \r\n");
}

TEST_F(ResultsDraw, PathSwitchesAndAOnePointPath) {
  Write("model.PTH", Path({{70, 70, 0, 9}}));
  state_.layers.timeMarkStep = 0.5;
  auto ctx = Ctx();
  ModelDrawPathlines(ctx);
  EXPECT_EQ(Figures(), 0) << "Pathlines switch off";
  EXPECT_FALSE(std::filesystem::exists(dir_ / "TICMARKST.TIC"));

  state_.layers.pathlines = true;
  ModelDrawPathlines(ctx);
  EXPECT_EQ(Figures(), 0);
  EXPECT_EQ(ReadFile(dir_ / "TICMARKST.TIC"), "");
  EXPECT_EQ(ReadFile(dir_ / "TICMARKSZ.TIC"), "");

  // Show Paths off: the marks stay, the line goes.
  Write("model.PTH", Path({{10, 10, 0, 0}, {20, 10, 1, 0}}));
  state_.layers.showPaths = false;
  ModelDrawPathlines(ctx);
  EXPECT_EQ(canvas_.Count(Kind::Polyline), 0);
  EXPECT_EQ(canvas_.Count(Kind::Circle), 2);
}

TEST(PathMarks, StepsAndEdges) {
  const std::vector<PathPoint> path = {{0, 0, 2, 10, 0}, {10, 0, 4, 10, 0}, {10, 10, 4, 10, 0}};
  EXPECT_TRUE(TimeMarks(path, 0.0).empty());
  EXPECT_TRUE(TimeMarks({path[0]}, 1.0).empty());
  // The path starts at time 2: marks 1 lies before it, 2 and 3 and 4 on it.
  const auto marks = TimeMarks(path, 1.0);
  ASSERT_EQ(marks.size(), 3u);
  EXPECT_DOUBLE_EQ(marks[0].x, 0.0);
  EXPECT_DOUBLE_EQ(marks[1].x, 5.0);
  EXPECT_DOUBLE_EQ(marks[2].x, 10.0);
  EXPECT_DOUBLE_EQ(marks[2].y, 0.0) << "a zero-length step in time marks once";
  // A flat path in elevation has no elevation marks.
  EXPECT_TRUE(ElevationMarks(path, 1.0).empty());
  const auto z = ElevationMarks({{0, 0, 0, -1, 0}, {4, 0, 0, 3, 0}}, 2.0);
  ASSERT_EQ(z.size(), 2u);
  EXPECT_DOUBLE_EQ(z[0].x, 1.0);  // elevation 0
  EXPECT_DOUBLE_EQ(z[1].x, 3.0);  // elevation 2
  EXPECT_EQ(z[0].direction, 1);
}

TEST(PrintZones, FourteenColumnZones) {
  EXPECT_EQ(PrintZones({"a", "b"}), "a" + std::string(13, ' ') + "b");
  EXPECT_EQ(PrintZones({std::string(14, 'x'), "b"}), std::string(14, 'x') + std::string(14, ' ') + "b");
  EXPECT_EQ(PrintZones({}), "");
}

}  // namespace
}  // namespace tarno::testing
