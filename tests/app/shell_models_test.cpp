// The shell's dialog models: the GUI options with the project's Model row, and the
// model settings dialog writing to the project.
#include <gtest/gtest.h>

#include "app/shell_models.h"
#include "dialogs_test_support.h"
#include "store/schema.h"
#include "support/scripted_ui.h"

namespace tarno::testing {
namespace {

const std::vector<std::string> kHazeLines = {"Invalid Haze Level!", "Please enter a new value."};

class GUIOptionsTest : public ProjectTest {
 protected:
  GUIOptions Loaded() {
    GUIOptions options;
    Database db = Open();
    options.init(db);
    return options;
  }
};

TEST_F(GUIOptionsTest, InitReadsThePensOfANewProject) {
  const GUIOptions options = Loaded();
  EXPECT_EQ(options.ContourType, "DOT");
  EXPECT_EQ(options.PathlineType, "SOLID");
  EXPECT_EQ(options.ContourWidth, 1);
  EXPECT_EQ(options.PathlineWidth, 1);
  EXPECT_EQ(options.ContourColor, ClassicColour(1));
  EXPECT_EQ(options.PathlineColor, ClassicColour(4));
  EXPECT_EQ(options.UnitText, "Meters");
  EXPECT_EQ(options.projectFile, path_.string());
  EXPECT_EQ(options.DataHazeLevel, "3");
  EXPECT_EQ(options.DataVertexTolerance, "0.01");
  EXPECT_EQ(options.DataLinesinkShadow, "2");
}

TEST_F(GUIOptionsTest, UnitTextFollowsTheBaseMapUnits) {
  {
    Database db = Open();
    db.ExecuteRaw("update Model set BasemapMeters=0");
  }
  EXPECT_EQ(Loaded().UnitText, "Feet");
}

TEST_F(GUIOptionsTest, HazeLevelsOneAndFivePass) {
  for (const char* level : {"1", "5"}) {
    GUIOptions options = Loaded();
    options.DataHazeLevel = level;
    ScriptedUserInterface ui;
    EXPECT_TRUE(options.OK(ui)) << level;
    ui.Verify();
    EXPECT_EQ(options.Result, 1);
    EXPECT_EQ(options.HazeLevel, std::stoi(level));
  }
}

TEST_F(GUIOptionsTest, HazeLevelsZeroAndSixAreRefusedWithNothingWritten) {
  for (const char* level : {"0", "6", "5.5", ""}) {
    GUIOptions options = Loaded();
    options.DataHazeLevel = level;
    options.ContourWidth = 7;
    ScriptedUserInterface ui;
    ui.ExpectMessage("Invalid Data", kHazeLines).WithIcon(Icon::Exclamation);
    EXPECT_FALSE(options.OK(ui)) << level;
    ui.Verify();
    EXPECT_EQ(options.Result, 2);
    EXPECT_EQ(options.HazeLevel, 3) << "the property keeps its value";
    EXPECT_EQ(ModelNumber("ContourLineWidth"), 1);
  }
}

TEST_F(GUIOptionsTest, OkWritesThePensAndInitReadsThemBack) {
  GUIOptions options = Loaded();
  options.ContourType = "DASH-DOT";
  options.PathlineType = "DASH";
  options.ContourWidth = 3;
  options.PathlineWidth = 2;
  options.ContourColor = Rgb(10, 20, 30);
  options.PathlineColor = Rgb(200, 100, 0);
  options.DataVertexTolerance = "0.05abc";
  options.DataLinesinkShadow = "4.5";
  options.DataHazeLevel = "2";
  ScriptedUserInterface ui;
  ASSERT_TRUE(options.OK(ui));
  EXPECT_DOUBLE_EQ(options.VertexTolerance, 0.05) << "read with the decimal parse";
  EXPECT_DOUBLE_EQ(options.LinesinkShadow, 4.5);
  EXPECT_EQ(options.HazeLevel, 2);

  const GUIOptions again = Loaded();
  EXPECT_EQ(again.ContourType, "DASH-DOT");
  EXPECT_EQ(again.PathlineType, "DASH");
  EXPECT_EQ(again.ContourWidth, 3);
  EXPECT_EQ(again.PathlineWidth, 2);
  EXPECT_EQ(again.ContourColor, Rgb(10, 20, 30));
  EXPECT_EQ(again.PathlineColor, Rgb(200, 100, 0));
}

TEST_F(GUIOptionsTest, LoadDefaultsResetsOnlyTheLineTypes) {
  GUIOptions options = Loaded();
  options.ContourType = "SOLID";
  options.PathlineType = "DASH-DOT-DOT";
  options.ContourWidth = 4;
  options.LoadDefaults();
  EXPECT_EQ(options.ContourType, "DOT");
  EXPECT_EQ(options.PathlineType, "SOLID");
  EXPECT_EQ(options.ContourWidth, 4);
}

TEST_F(GUIOptionsTest, AnUnknownStoredLineTypeReadsAsTheDefault) {
  {
    Database db = Open();
    db.ExecuteRaw("update Model set ContourLineType='WAVY', PathlineLineType='dot'");
  }
  const GUIOptions options = Loaded();
  EXPECT_EQ(options.ContourType, "DOT");
  EXPECT_EQ(options.PathlineType, "SOLID");
}

TEST(GUIOptionsPens, PenStyleOfEachLineType) {
  EXPECT_EQ(GUIOptions::PenStyleOf("SOLID"), kPenSolid);
  EXPECT_EQ(GUIOptions::PenStyleOf("DASH"), kPenDash);
  EXPECT_EQ(GUIOptions::PenStyleOf("DOT"), kPenDot);
  EXPECT_EQ(GUIOptions::PenStyleOf("DASH-DOT"), kPenDashDot);
  EXPECT_EQ(GUIOptions::PenStyleOf("DASH-DOT-DOT"), kPenDashDotDot);
  EXPECT_EQ(GUIOptions::PenStyleOf("dash"), 0);
  EXPECT_EQ(GUIOptions::PenStyleOf(""), 0);
}

TEST(GUIOptionsPens, ApplyToHandsEveryOptionToTheMap) {
  GUIOptions options;
  options.HazeLevel = 5;
  options.HazeColor = Rgb(1, 2, 3);
  options.VertexTolerance = 0.2;
  options.LinesinkShadow = 6;
  options.ContourType = "DASH";
  options.PathlineType = "DASH-DOT-DOT";
  options.ContourWidth = 2;
  options.PathlineWidth = 3;
  options.ContourColor = Rgb(4, 5, 6);
  options.PathlineColor = Rgb(7, 8, 9);
  DisplayOptions display;
  display.Background = Rgb(9, 9, 9);
  options.ApplyTo(display);
  EXPECT_EQ(display.HazeLevel, 5);
  EXPECT_EQ(display.HazeColor, Rgb(1, 2, 3));
  EXPECT_DOUBLE_EQ(display.VertexTolerance, 0.2);
  EXPECT_DOUBLE_EQ(display.LinesinkShadow, 6);
  EXPECT_EQ(display.ContourType, kPenDash);
  EXPECT_EQ(display.PathlineType, kPenDashDotDot);
  EXPECT_EQ(display.ContourWidth, 2);
  EXPECT_EQ(display.PathlineWidth, 3);
  EXPECT_EQ(display.ContourColor, Rgb(4, 5, 6));
  EXPECT_EQ(display.PathlineColor, Rgb(7, 8, 9));
  EXPECT_EQ(display.Background, Rgb(9, 9, 9)) << "not an option of the dialog";
}

class ModelSettingsDialogTest : public ProjectTest {
 protected:
  ModelSettings Loaded() {
    ModelSettings settings;
    Database db = Open();
    settings.Load(db);
    return settings;
  }
};

TEST_F(ModelSettingsDialogTest, ABadThicknessIsRefusedAndNothingWritten) {
  ModelSettings settings = Loaded();
  settings.tbThickness = "0";
  settings.tbHydCond = "7";
  ModelSettingsDialog dialog(settings, path_.string());
  ScriptedUserInterface ui;
  ui.ExpectMessage("Bad Entry", {"Thickness must be greater than 0.", "Please enter a new value."})
      .WithIcon(Icon::Exclamation);
  EXPECT_FALSE(dialog.OK(ui));
  ui.Verify();
  EXPECT_EQ(dialog.Result, 2);
  EXPECT_FALSE(dialog.last.accepted);
  EXPECT_EQ(dialog.last.failedField, ModelSettings::Field::Thickness);
  EXPECT_EQ(ModelNumber("AQHydCond"), 1);
}

TEST_F(ModelSettingsDialogTest, AGoodChangeIsWrittenAndReported) {
  ModelSettings settings = Loaded();
  settings.tbThickness = "25";
  settings.tbContourMax = "40";
  ModelSettingsDialog dialog(settings, path_.string());
  ScriptedUserInterface ui;
  EXPECT_TRUE(dialog.OK(ui));
  ui.Verify();
  EXPECT_EQ(dialog.Result, 1);
  EXPECT_TRUE(dialog.last.accepted);
  EXPECT_TRUE(dialog.last.regrid) << "the contour limits changed";
  EXPECT_FALSE(dialog.last.retrace);
  EXPECT_EQ(Loaded().tbThickness, "25");
}

TEST_F(ModelSettingsDialogTest, AMissingProjectFileIsAnError) {
  ModelSettings settings;
  ModelSettingsDialog dialog(settings, (dir_ / "gone.trn").string());
  ScriptedUserInterface ui;
  EXPECT_THROW(dialog.OK(ui), Error);
  EXPECT_EQ(dialog.Result, 2);
}

}  // namespace
}  // namespace tarno::testing
