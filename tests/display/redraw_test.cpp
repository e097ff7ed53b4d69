// The redraw pipeline: what is rebuilt when, the order of the layers of the
// picture, the haze, the wait window and the menus set on the way.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <limits>
#include <set>
#include <utility>

#include "core/error.h"
#include "core/error_trap.h"
#include "map_fixture.h"

namespace tarno::test {
namespace {

using Kind = RecordingCanvas::Kind;

class Redraw : public MapFixture {
 protected:
  // A contour file with one line of level 100 and a path file with one path.
  void WriteSolutionFiles(bool contours, bool paths) {
    if (contours) {
      std::ofstream ctr(dir / "maptest.CTR");
      ctr << "LEVEL 100.0\r\n";
      ctr << "      " << "    20.0000000" << "    30.0000000" << "\r\n";
      ctr << "      " << "   120.0000000" << "    60.0000000" << "\r\n";
    }
    if (paths) {
      std::ofstream pth(dir / "maptest.PTH");
      pth << "STA\r\n";
      pth << "      " << "    50.0000000" << "    50.0000000"
          << "     0.0000000" << "    10.0000000" << "   100.0000000" << "\r\n";
      pth << "      " << "    90.0000000" << "    40.0000000"
          << "    10.0000000" << "    10.0000000" << "    99.0000000" << "\r\n";
      pth << "END\r\n";
    }
  }
  // What a redraw drew over the background, without the closing refresh.
  std::vector<RecordingCanvas::Op> Drawn(std::size_t backgroundOps) {
    auto ops = Tail(map.Ops(), backgroundOps);
    if (!ops.empty() && ops.back().kind == Kind::Refresh) ops.pop_back();
    return ops;
  }
  void MakeSolutionValid() {
    state.solution.valid = true;
    state.solution.contourLinesPresent = true;
    state.solution.pathsPresent = true;
    state.layers.contours = true;
    state.layers.pathlines = true;
    state.layers.showPaths = true;
  }
};

TEST_F(Redraw, WithoutAProjectOnlyLaysOut) {
  state.ProjectOpen = false;
  int layouts = 0, disabled = 0, menus = 0;
  view.hooks.layoutSurfaces = [&] { ++layouts; };
  view.hooks.disableMouse = [&] { ++disabled; };
  view.hooks.setTestDisplayMenu = [&](const TestDisplayMenu&) { ++menus; };
  view.Redraw(false, true);
  EXPECT_EQ(layouts, 1);
  EXPECT_EQ(disabled, 0);
  EXPECT_EQ(menus, 0);
  EXPECT_TRUE(map.Ops().empty());
  EXPECT_TRUE(map2.Ops().empty());
  EXPECT_TRUE(ui.Calls().empty());
  EXPECT_EQ(view.BackgroundBuilds(), 0);
}

TEST_F(Redraw, PrintingIsRefused) {
  EXPECT_THROW(view.Redraw(true, false), Error);
  EXPECT_TRUE(map.Ops().empty());
}

TEST_F(Redraw, UnchangedWindowKeepsTheBackgroundAndANewWellAppearsOverIt) {
  AddWell(50, 50);
  view.Redraw(false, false);
  ASSERT_EQ(view.BackgroundBuilds(), 1);
  const auto background = map2.Ops();
  const auto first = map.Ops();
  EXPECT_TRUE(StartsWith(first, background));

  AddWell(150, 50);
  view.Redraw(false, false);
  EXPECT_EQ(view.BackgroundBuilds(), 1);
  ASSERT_EQ(map2.Ops().size(), background.size());
  EXPECT_TRUE(StartsWith(map2.Ops(), background));
  // The new picture is the old background with more drawn on top.
  EXPECT_TRUE(StartsWith(map.Ops(), background));
  EXPECT_GT(map.Ops().size(), first.size());
  EXPECT_EQ(map.copies, 2);
  // The new well is drawn where it stands: world (150, 50) is pixel (150, 50).
  const auto near = [](const std::vector<RecordingCanvas::Op>& ops) {
    return std::count_if(ops.begin(), ops.end(), [](const RecordingCanvas::Op& op) {
      return std::any_of(op.points.begin(), op.points.end(), [](const DevicePoint& p) {
        return std::abs(p.x - 150) <= 10 && std::abs(p.y - 50) <= 10;
      });
    });
  };
  EXPECT_EQ(near(first), 0);
  EXPECT_GT(near(map.Ops()), 0);
}

TEST_F(Redraw, AWindowDifferingInTheLastBitRebuildsTheBackground) {
  view.Redraw(false, false);
  ASSERT_EQ(view.BackgroundBuilds(), 1);
  EXPECT_EQ(view.LastDrawnWindow, state.Window);
  state.Window.Right = std::nextafter(state.Window.Right, std::numeric_limits<double>::infinity());
  view.Redraw(false, false);
  EXPECT_EQ(view.BackgroundBuilds(), 2);
  EXPECT_FALSE(view.RedrawBasemap);
}

TEST_F(Redraw, RaisedFlagsRebuildOnceAndAreConsumed) {
  view.Redraw(false, false);
  view.MustRedraw = true;
  view.Redraw(false, false);
  EXPECT_EQ(view.BackgroundBuilds(), 2);
  EXPECT_FALSE(view.MustRedraw);
  view.RedrawBasemap = true;
  view.Redraw(false, false);
  EXPECT_EQ(view.BackgroundBuilds(), 3);
  view.Redraw(false, false);
  EXPECT_EQ(view.BackgroundBuilds(), 3);
}

TEST_F(Redraw, DefaultStepFollowsTheWindow) {
  view.Redraw(false, false);
  const double w = state.Window.Right - state.Window.Left;
  const double h = state.Window.Top - state.Window.Bottom;
  EXPECT_NEAR(view.DefaultStepSize, 0.004 * std::sqrt(w * w + h * h), 1e-12);
}

TEST_F(Redraw, LayersLieBackgroundElementsContoursPathlines) {
  AddWell(50, 50);
  // Elements alone.
  view.Redraw(false, false);
  const auto background = map2.Ops();
  const auto elements = Drawn(background.size());
  ASSERT_FALSE(elements.empty());

  // With a solution: the contours come next...
  MakeSolutionValid();
  WriteSolutionFiles(true, false);
  int overlays = 0;
  std::size_t opsAtOverlay = 0;
  view.hooks.drawResultsOverlay = [&] {
    ++overlays;
    opsAtOverlay = map.Ops().size();
  };
  view.Redraw(false, false);
  ASSERT_TRUE(StartsWith(map.Ops(), background));
  const auto withContours = Drawn(background.size());
  ASSERT_TRUE(StartsWith(withContours, elements));
  const auto contours = Tail(withContours, elements.size());
  ASSERT_FALSE(contours.empty());

  // ...and the pathlines after them, the overlay last.
  WriteSolutionFiles(false, true);
  view.Redraw(false, false);
  const auto all = Drawn(background.size());
  ASSERT_TRUE(StartsWith(all, withContours));
  const auto paths = Tail(all, withContours.size());
  ASSERT_FALSE(paths.empty());
  EXPECT_EQ(overlays, 2);
  EXPECT_EQ(opsAtOverlay, map.Ops().size() - 1);  // only the final refresh follows

  // Without a valid solution neither is drawn, the files notwithstanding.
  state.solution.valid = false;
  view.Redraw(false, false);
  EXPECT_EQ(Drawn(background.size()).size(), elements.size());
  EXPECT_EQ(overlays, 2);
}

class HazeRedraw : public MapFixture {
 protected:
  HazeRedraw() : MapFixture(40, 30) {}
  void SetUp() override {
    MapFixture::SetUp();
    state.Window = WorldWindow{0.0, 40.0, 30.0, 0.0};
    state.layers.haze = true;
  }
  std::vector<RecordingCanvas::Op> HazeDots(const std::vector<RecordingCanvas::Op>& ops) {
    std::vector<RecordingCanvas::Op> dots;
    for (const auto& op : ops) {
      if (op.kind == Kind::Circle && op.colour == state.options.HazeColor) dots.push_back(op);
    }
    return dots;
  }
};

TEST_F(HazeRedraw, LevelOneCoversEveryPixelAndElementsLieAbove) {
  state.options.HazeLevel = 1;
  AddWell(20, 15);
  view.Redraw(false, true);
  const auto dots = HazeDots(map2.Ops());
  ASSERT_EQ(dots.size(), 40u * 30u);
  std::set<std::pair<int, int>> centres;
  for (const auto& d : dots) {
    // A circle of radius 1 pixel: its box is two pixels wide, and it is an outline.
    EXPECT_EQ(d.points[1].x - d.points[0].x, 2);
    EXPECT_EQ(d.points[1].y - d.points[0].y, 2);
    centres.insert({d.points[0].x + 1, d.points[0].y + 1});
  }
  for (int x = 1; x <= 40; ++x) {
    for (int y = 1; y <= 30; ++y) EXPECT_TRUE(centres.count({x, y})) << x << "," << y;
  }
  // On the map the well comes after the whole background, haze included.
  const auto background = map2.Ops();
  ASSERT_TRUE(StartsWith(map.Ops(), background));
  const auto over = Tail(map.Ops(), background.size());
  EXPECT_TRUE(HazeDots(over).empty());
  EXPECT_FALSE(over.empty());
  const auto waits = ui.WaitTexts();
  EXPECT_NE(std::find(waits.begin(), waits.end(), "Applying Haze..."), waits.end());
}

TEST_F(HazeRedraw, CoarserLevelsStepFromOne) {
  state.options.HazeLevel = 3;
  view.Redraw(false, false);
  const auto dots = HazeDots(map2.Ops());
  EXPECT_EQ(dots.size(), 14u * 10u);  // x = 1, 4, ..., 40 and y = 1, 4, ..., 28
  // An unchanged window does not paint the haze again.
  view.Redraw(false, false);
  EXPECT_EQ(HazeDots(map2.Ops()).size(), 14u * 10u);
  EXPECT_EQ(view.BackgroundBuilds(), 1);
}

TEST_F(HazeRedraw, ALevelBelowOneIsReportedNotLooped) {
  state.options.HazeLevel = 0;
  ui.ExpectMessageTitled(kUnhandledErrorTitle);
  view.Redraw(false, false);
  ui.Verify();
  EXPECT_NE(ui.Messages().at(0).lines.at(0).find("Redraw"), std::string::npos);
  EXPECT_NE(ui.Messages().at(0).lines.at(1).find("Haze level 0"), std::string::npos);
  EXPECT_FALSE(ui.WaitWindowVisible());
}

TEST_F(Redraw, WaitWindowTextsAndTheSecondHide) {
  std::vector<std::string> events;
  view.hooks.disableMouse = [&] { events.push_back("disable"); };
  view.hooks.enableMouse = [&] { events.push_back("enable"); };
  view.hooks.elemTurnOffSelection = [&] { events.push_back("selection off"); };
  view.hooks.layoutSurfaces = [&] { events.push_back("layout"); };
  view.hooks.resetMenus = [&] { events.push_back("menus"); };

  view.Redraw(false, true);
  EXPECT_EQ(ui.WaitTexts(), (std::vector<std::string>{"Redrawing...", "Drawing Basemaps...",
                                                       "Drawing Elements..."}));
  EXPECT_EQ(ui.CallsOf(UiCallKind::PleaseWaitHide).size(), 2u);
  EXPECT_EQ(events, (std::vector<std::string>{"selection off", "disable", "menus", "layout",
                                              "enable"}));

  // No background to build, no wait of the caller's: one text, one hide.
  ui.ClearRecord();
  view.Redraw(false, false);
  EXPECT_EQ(ui.WaitTexts(), (std::vector<std::string>{"Drawing Elements..."}));
  EXPECT_EQ(ui.CallsOf(UiCallKind::PleaseWaitHide).size(), 1u);
  EXPECT_FALSE(ui.WaitWindowVisible());
}

TEST_F(Redraw, FeedbackSurvivesTheBaseMaps) {
  view.hooks.currentFeedback = [] { return std::string("Click mouse button to select element"); };
  view.Redraw(false, false);
  EXPECT_EQ(ui.CurrentFeedback(), "Click mouse button to select element");
}

TEST_F(Redraw, MenusFollowTheSolutionAndTheTestPoints) {
  Execute(
      "insert into Vertices (PID, Seq, X, Y) values (-1, 0, 10, 10);"
      "insert into TestPoints (VID, Label, Type) values (last_insert_rowid(), 'T1', 'Piezometer');");
  TestDisplayMenu menu;
  bool toolbar = false;
  view.hooks.setTestDisplayMenu = [&](const TestDisplayMenu& m) { menu = m; };
  view.hooks.showToolbar = [&](bool visible) { toolbar = visible; };
  state.layers.toolbar = true;

  view.Redraw(false, false);
  EXPECT_TRUE(toolbar);
  EXPECT_FALSE(menu.firstEnabled);
  EXPECT_FALSE(menu.piezometerScalingEnabled);
  EXPECT_FALSE(state.layers.contoursEnabled);
  EXPECT_FALSE(state.layers.pathlinesEnabled);
  EXPECT_FALSE(state.layers.resultsOverlayEnabled);

  state.solution.valid = true;
  state.layers.toolbar = false;
  view.Redraw(false, false);
  EXPECT_FALSE(toolbar);
  EXPECT_TRUE(menu.firstEnabled);
  EXPECT_TRUE(menu.piezometerScalingEnabled);
  EXPECT_FALSE(menu.gageScalingEnabled);
  EXPECT_FALSE(menu.stageScalingEnabled);
  EXPECT_TRUE(state.layers.contoursEnabled);
  EXPECT_TRUE(state.layers.pathlinesEnabled);
  EXPECT_TRUE(state.layers.resultsOverlayEnabled);
}

TEST_F(Redraw, AMissingProjectIsReportedAndLeavesTheMouseDisabled) {
  state.projectFile = dir / "gone.trn";
  int enabled = 0;
  view.hooks.enableMouse = [&] { ++enabled; };
  ui.ExpectMessageTitled(kUnhandledErrorTitle);
  view.Redraw(false, true);
  ui.Verify();
  EXPECT_EQ(ui.Messages().at(0).lines.at(0), "Unhandled error in Redraw");
  EXPECT_EQ(enabled, 0);
  EXPECT_TRUE(map.Ops().empty());
}

class SetUpLayers : public MapFixture {};

TEST_F(SetUpLayers, SwitchesFollowTheProject) {
  int changed = 0;
  view.hooks.layersChanged = [&] { ++changed; };
  state.layers.pathlines = true;
  state.layers.timeMarkStep = 5;
  state.layers.gageScale = 100;
  view.SetUpLayers();
  EXPECT_EQ(changed, 1);
  EXPECT_TRUE(state.layers.contours);
  EXPECT_FALSE(state.layers.pathlines);
  EXPECT_TRUE(state.layers.contoursEnabled);   // CONTOURShow 1 of a new project
  EXPECT_TRUE(state.layers.pathlinesEnabled);  // TRACECompute of a new project
  EXPECT_TRUE(state.layers.showPaths);
  EXPECT_EQ(state.layers.timeMarkStep, 0.0);
  EXPECT_EQ(state.layers.piezometerScale, 10);
  EXPECT_EQ(state.layers.gageScale, 50);
  EXPECT_FALSE(state.layers.hydrographyLabelsEnabled);
  EXPECT_FALSE(state.layers.protectionAreas);
  EXPECT_FALSE(state.layers.protectionAreasEnabled);

  Execute(
      "update Model set CONTOURShow = 0, TRACECompute = 0;"
      "insert into TextLabels (Text, X, Y, LabelType) values ('River', 1, 1, 1);"
      "insert into Capzones (Label, PID) values ('Zone', 7);");
  state.layers.elements = false;
  AddWell(5, 5);
  view.SetUpLayers();
  EXPECT_EQ(changed, 2);
  EXPECT_TRUE(state.layers.elements);
  EXPECT_FALSE(state.layers.contoursEnabled);
  EXPECT_FALSE(state.layers.pathlinesEnabled);
  EXPECT_TRUE(state.layers.hydrographyLabelsEnabled);
  EXPECT_TRUE(state.layers.protectionAreas);
  EXPECT_TRUE(state.layers.protectionAreasEnabled);
}

TEST_F(SetUpLayers, ElementsSwitchIsLeftAloneWithoutElements) {
  state.layers.elements = false;
  view.SetUpLayers();
  EXPECT_FALSE(state.layers.elements);
}

}  // namespace
}  // namespace tarno::test
