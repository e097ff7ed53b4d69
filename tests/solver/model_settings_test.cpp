// The model settings: defaults from a new Model row, every check of OK with its
// exact message and bounds, and the write-back of the row.
#include <gtest/gtest.h>

#include <functional>
#include <utility>
#include <vector>

#include "solver_fixture.h"
#include "store/undo_history.h"

namespace tarno::testing {
namespace {

class ModelSettingsTest : public SolverProject {
 protected:
  // Runs OK expecting one "Bad Entry" box with `lines`; checks that the failing
  // field is `field` and that the row was not written.
  void ExpectRefused(ModelSettings& s, ModelSettings::Field field,
                     const std::vector<std::string>& lines) {
    ScriptedUserInterface ui;
    ui.Expect(UiCallKind::MessageBox).Title("Bad Entry").Lines(lines).WithIcon(Icon::Exclamation);
    Sql("update Model set AQPorosity=0.2");
    const auto result = s.Ok(db_, ui);
    ui.Verify();
    EXPECT_FALSE(result.accepted);
    EXPECT_EQ(result.failedField, field);
    Statement st = db_.Prepare("select AQHydCond, AQPorosity from Model");
    ASSERT_TRUE(st.Step());
    EXPECT_DOUBLE_EQ(st.GetDouble(1), 0.2) << "nothing may be written after a failed check";
  }

  void ExpectAccepted(ModelSettings& s) {
    ScriptedUserInterface ui;
    const auto result = s.Ok(db_, ui);
    ui.Verify();
    EXPECT_TRUE(result.accepted);
  }
};

TEST_F(ModelSettingsTest, NewProjectDefaults) {
  const ModelSettings s = LoadSettings();
  EXPECT_EQ(s.tbThickness, "1");  // the text field of the store
  EXPECT_EQ(s.tbPorosity, "0.2");
  EXPECT_EQ(s.tbSaltGravity, "1.035");
  EXPECT_EQ(s.tbMaxTime, "3650");
  EXPECT_EQ(s.tbIterations, "1");
  EXPECT_TRUE(s.chkContour);
  EXPECT_EQ(s.ContourProperty(), kContourHeads);
  EXPECT_EQ(s.DetailedContours(), 40);
  EXPECT_TRUE(s.chkComputePaths);
  EXPECT_TRUE(s.chkViewError);
  EXPECT_FALSE(s.chkOutsideLoop);
  EXPECT_EQ(s.tbScenario[1], "") << "no tag (\"__NONE__\" in the store) shows empty";
  EXPECT_EQ(s.tbScenario[2], "");
  EXPECT_EQ(s.LengthUnit(), "meters");
  EXPECT_EQ(s.VelocityUnit(), "meters/day");
  EXPECT_DOUBLE_EQ(s.BasemapConvert, 1.0);
}

TEST_F(ModelSettingsTest, NegativeContourShowSelectsItsKindWithContoursOff) {
  Sql("update Model set CONTOURShow=-5, NumberStreamLines=25, CONTOURInterval=0.5");
  ModelSettings s = LoadSettings();
  EXPECT_EQ(s.ContourProperty(), kContourStreamFunction);
  EXPECT_FALSE(s.chkContour);
  EXPECT_EQ(s.tbContourInt, "25");
  EXPECT_EQ(s.ContourIntervalCaption(), "Number of Stream Lines");
  // Back to heads: the interval comes back into the field.
  s.SelectContourProperty(kContourHeads);
  EXPECT_EQ(s.tbContourInt, "0.5");
  EXPECT_EQ(s.ContourIntervalCaption(), "Contour Interval");
  EXPECT_EQ(s.ContourShowValue(), -1);
}

TEST_F(ModelSettingsTest, FeetUnits) {
  Sql("update Model set ComputeMeters=0, BasemapMeters=1");
  const ModelSettings s = LoadSettings();
  EXPECT_EQ(s.LengthUnit(), "feet");
  EXPECT_EQ(s.VelocityUnit(), "feet/day");
  EXPECT_DOUBLE_EQ(s.BasemapConvert, 1 / 0.3048);
}

TEST_F(ModelSettingsTest, AquiferChecks) {
  ModelSettings s = LoadSettings();
  s.tbThickness = "0";
  ExpectRefused(s, ModelSettings::Field::Thickness,
                {"Thickness must be greater than 0.", "Please enter a new value."});
  s.tbThickness = "";  // an empty field reads as 0
  ExpectRefused(s, ModelSettings::Field::Thickness,
                {"Thickness must be greater than 0.", "Please enter a new value."});
  s.tbThickness = "12";
  s.tbHydCond = "-1";
  ExpectRefused(s, ModelSettings::Field::HydCond,
                {"Hydraulic Conductivity must be greater than 0.", "Please enter a positive value."});
  s.tbHydCond = "3";
  const std::vector<std::string> porosity = {
      "Porosity must be greater than 0 and less than or equal to 1.", "Please enter a new value."};
  s.tbPorosity = "0";
  ExpectRefused(s, ModelSettings::Field::Porosity, porosity);
  s.tbPorosity = "1.0001";
  ExpectRefused(s, ModelSettings::Field::Porosity, porosity);
  s.tbPorosity = "1";  // exactly 1 is valid
  s.tbFreshGravity = "0";
  ExpectRefused(s, ModelSettings::Field::FreshGravity,
                {"Fresh Water Specific Gravity must be greater than 0.", "Please enter a new value."});
  s.tbFreshGravity = "1";
  s.tbSaltGravity = "abc";
  ExpectRefused(s, ModelSettings::Field::SaltGravity,
                {"Salt Water Specific Gravity must be greater than 0.", "Please enter a new value."});
  s.tbSaltGravity = "1.03";
  ExpectAccepted(s);
}

TEST_F(ModelSettingsTest, ContourChecks) {
  ModelSettings s = LoadSettings();
  s.tbContourMin = "5";
  s.tbContourMax = "5";
  ExpectRefused(s, ModelSettings::Field::ContourMax,
                {"Maximum Contour must be greater than Minimum Contour.",
                 "Please enter a new Maximum Contour."});
  s.tbContourMax = "6";
  s.tbContourInt = "0";
  ExpectRefused(s, ModelSettings::Field::ContourInt,
                {"Contour Interval must be greater than zero.", "Please enter a new Contour Interval."});
  // More levels than the contour program draws: refused here, not at the solve.
  s.tbContourMin = "0";
  s.tbContourMax = "1000";
  s.tbContourInt = "0.001";
  ExpectRefused(s, ModelSettings::Field::ContourInt,
                {"From 0 to 1000 by 0.001 are more than 100000 contour levels.",
                 "Please enter a larger Contour Interval."});
  s.tbContourInt = "1";
  s.tbContourMax = "100000";  // 100001 levels, one too many
  ExpectRefused(s, ModelSettings::Field::ContourInt,
                {"From 0 to 100000 by 1 are more than 100000 contour levels.",
                 "Please enter a larger Contour Interval."});
  s.tbContourMax = "99999";  // the most there may be
  ExpectAccepted(s);
  s.tbContourMin = "5";
  s.tbContourMax = "6";
  s.SelectContourProperty(kContourStreamFunction);
  s.tbContourInt = "1";
  ExpectRefused(s, ModelSettings::Field::ContourInt,
                {"Invalid Number of Stream Lines.", "Please enter a number greater than 1."});
  s.tbContourInt = "2";
  s.contourDetail = kContourCustom;
  s.tbContourLevel = "201";
  ExpectRefused(s, ModelSettings::Field::ContourLevel,
                {"Invalid Contour Level.", "Please enter a Contour Level between 0 and 200."});
  s.tbContourLevel = "200";
  s.tbBase = "10";
  s.tbThickness = "5";
  s.chkContourElevation = true;
  s.tbContourElevation = "15.5";
  ExpectRefused(s, ModelSettings::Field::ContourElevation,
                {"Contour Elevation must be between the.", "aquifer base and the aquifer top."});
  s.tbContourElevation = "15";
  ExpectAccepted(s);
}

TEST_F(ModelSettingsTest, TracingAndSolverChecks) {
  ModelSettings s = LoadSettings();
  s.tbMaxTime = "0";
  ExpectRefused(s, ModelSettings::Field::MaxTime,
                {"Maximum Travel Time must be positive.", "Please enter a new Maximum Travel Time."});
  s.tbMaxTime = "10";
  s.tbStepSize = "-2";
  ExpectRefused(s, ModelSettings::Field::StepSize,
                {"Tracing Step Size must be positive.", "Please enter a new Tracing Step Size."});
  s.tbStepSize = "2";
  s.tbIterations = "0";
  ExpectRefused(s, ModelSettings::Field::Iterations,
                {"Number of Iterations must be positive.",
                 "Please enter a new value for the Number of Iterations."});
  s.tbIterations = "4";
  // A new project stores 0 outer iterations; that is checked only with the loop on.
  ExpectAccepted(s);
  s.chkOutsideLoop = true;
  ExpectRefused(s, ModelSettings::Field::OuterIterations,
                {"Number of Iterations (Outside Loop) must be positive.",
                 "Please enter a new value for the Number of Iterations for the Outside Loop."});
}

TEST_F(ModelSettingsTest, ScenarioTagRule) {
  const std::vector<std::string> message = {
      "Scenario tags may not include spaces or the characters - , or _.",
      "Scenario tags may also not be '__NONE__'."};
  ModelSettings s = LoadSettings();
  s.chkScenarioHydCond = true;
  for (const char* bad : {"k_1", "k 1", "k-1", "k,1", "__NONE__"}) {
    s.tbScenario[1] = bad;
    ExpectRefused(s, ModelSettings::Field::ScenarioHydCond, message);
  }
  s.tbScenario[1] = "kA";
  s.chkScenarioBaseElev = true;
  s.tbScenario[2] = "b_";
  ExpectRefused(s, ModelSettings::Field::ScenarioBaseElev, message);
  s.tbScenario[2] = "";  // no tag
  ExpectAccepted(s);
  {
    Statement st = db_.Prepare("select ScenHydCond, ScenBaseElev, chkScenarioHydCond from Model");
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetText(0), "kA");
    EXPECT_EQ(st.GetText(1), "__NONE__");
    EXPECT_TRUE(st.GetBool(2));
  }
  // A tag cleared in the field goes: the store says "__NONE__" again, and the field
  // reads back empty.
  s.tbScenario[1] = "";
  ExpectAccepted(s);
  Statement st = db_.Prepare("select ScenHydCond from Model");
  ASSERT_TRUE(st.Step());
  EXPECT_EQ(st.GetText(0), "__NONE__");
  EXPECT_EQ(LoadSettings().tbScenario[1], "");
  // A scenario switched on over a field that was loaded without a tag passes.
  ModelSettings fresh = LoadSettings();
  fresh.chkScenarioBaseElev = true;
  ExpectAccepted(fresh);
}

TEST_F(ModelSettingsTest, OkWritesTheRowAndReportsRegridAndRetrace) {
  ModelSettings s = LoadSettings();
  s.tbBase = "-5";
  s.tbThickness = "25.5";
  s.tbHydCond = "12";
  s.chkContour = false;
  s.SelectContourProperty(kContourDischarge);
  s.contourDetail = kContourDetailed;
  s.tbIterations = "7";
  s.chkOutsideLoop = true;
  s.tbOuterIterations = "4";
  s.chkFastSolution = true;
  s.chkConjunctive = true;
  ScriptedUserInterface ui;
  auto result = s.Ok(db_, ui);
  EXPECT_TRUE(result.accepted);
  EXPECT_TRUE(result.regrid);
  EXPECT_FALSE(result.retrace);

  ModelSettings back = LoadSettings();
  EXPECT_EQ(back.tbBase, "-5");
  EXPECT_EQ(back.tbThickness, "25.5");
  EXPECT_EQ(back.tbHydCond, "12");
  EXPECT_FALSE(back.chkContour);
  EXPECT_EQ(back.ContourProperty(), kContourDischarge);
  EXPECT_EQ(back.DetailedContours(), 80);
  EXPECT_EQ(back.Iterations(), 7);
  EXPECT_TRUE(back.chkOutsideLoop);
  EXPECT_EQ(back.tbOuterIterations, "4");
  EXPECT_TRUE(back.chkFastSolution);
  EXPECT_TRUE(back.chkConjunctive);
  Statement st = db_.Prepare("select CONTOURShow, CONTOURLevel from Model");
  ASSERT_TRUE(st.Step());
  EXPECT_EQ(st.GetInt64(0), -3);
  EXPECT_EQ(st.GetInt64(1), 80);

  // Only tracing fields changed now.
  s.tbStepSize = "3";
  result = s.Ok(db_, ui);
  EXPECT_FALSE(result.regrid);
  EXPECT_TRUE(result.retrace);
  // The number of stream lines goes to its own field.
  s.SelectContourProperty(kContourStreamFunction);
  s.tbContourInt = "17";
  EXPECT_TRUE(s.Ok(db_, ui).accepted);
  Statement n = db_.Prepare("select NumberStreamLines, CONTOURInterval from Model");
  ASSERT_TRUE(n.Step());
  EXPECT_EQ(n.GetInt64(0), 17);
  EXPECT_DOUBLE_EQ(n.GetDouble(1), 1);
  ui.Verify();
}

TEST_F(ModelSettingsTest, OkIsOneEntryOfTheEditHistory) {
  UndoHistory history;
  history.Attach(ProjectPath().string());
  ModelSettings s = LoadSettings();
  const std::string before = LoadSettings().tbHydCond;
  s.tbHydCond = "42";
  s.tbIterations = "9";
  ScriptedUserInterface ui;
  ASSERT_TRUE(s.Ok(db_, ui).accepted);
  EXPECT_EQ(history.UndoName(), "Model Settings");
  EXPECT_EQ(LoadSettings().tbHydCond, "42");
  ASSERT_TRUE(history.Undo(db_));
  EXPECT_EQ(LoadSettings().tbHydCond, before);
  ASSERT_TRUE(history.Redo(db_));
  EXPECT_EQ(LoadSettings().tbIterations, "9");

  // A refused entry writes nothing and records nothing.
  s.tbHydCond = "-1";
  ui.ExpectMessageTitled("Bad Entry");
  EXPECT_FALSE(s.Ok(db_, ui).accepted);
  ui.Verify();
  EXPECT_EQ(history.UndoCount(), 1u);
}

TEST_F(ModelSettingsTest, OkReportsAChangeOfTheAquiferOrTheSolverAsInvalidating) {
  ScriptedUserInterface ui;
  ModelSettings s = LoadSettings();
  // Nothing changed, or a value written otherwise: the solution stands.
  EXPECT_FALSE(s.Ok(db_, ui).invalidate);
  s.tbPorosity = "0.20";
  s.tbHydCond = s.tbHydCond + ".0";
  EXPECT_FALSE(s.Ok(db_, ui).invalidate);
  // Contours and tracing only regrid or retrace.
  s.tbContourInt = "0.5";
  s.tbStepSize = "2";
  auto r = s.Ok(db_, ui);
  EXPECT_TRUE(r.regrid);
  EXPECT_TRUE(r.retrace);
  EXPECT_FALSE(r.invalidate);
  s.chkViewError = !s.chkViewError;
  EXPECT_FALSE(s.Ok(db_, ui).invalidate) << "a log switch is no change of the solution";

  // Each aquifer and solver value on its own.
  const std::vector<std::function<void(ModelSettings&)>> changes = {
      [](ModelSettings& m) { m.tbBase = "-3"; },
      [](ModelSettings& m) { m.tbThickness = "40"; },
      [](ModelSettings& m) { m.tbHydCond = "20"; },
      [](ModelSettings& m) { m.tbRecharge = "0.001"; },
      [](ModelSettings& m) { m.tbPorosity = "0.3"; },
      [](ModelSettings& m) { m.chkAddSaltwaterInterface = !m.chkAddSaltwaterInterface; },
      [](ModelSettings& m) { m.tbIterations = "4"; },
      [](ModelSettings& m) { m.chkFastSolution = !m.chkFastSolution; },
      [](ModelSettings& m) { m.chkConjunctive = !m.chkConjunctive; },
      [](ModelSettings& m) {
        m.chkOutsideLoop = true;
        m.tbOuterIterations = "6";
      },
  };
  for (std::size_t i = 0; i < changes.size(); ++i) {
    changes[i](s);
    const auto result = s.Ok(db_, ui);
    ASSERT_TRUE(result.accepted) << i;
    EXPECT_TRUE(result.invalidate) << "change " << i;
    EXPECT_FALSE(s.Ok(db_, ui).invalidate) << "the same settings again, change " << i;
  }
  // A fresh load compares with the row as it now stands.
  ModelSettings again = LoadSettings();
  EXPECT_FALSE(again.Ok(db_, ui).invalidate);
  ui.Verify();
}

TEST(DefaultStep, ShowsThreeSignificantDigits) {
  ModelSettings s;
  const std::vector<std::pair<double, std::string>> cases = {
      {83.5010203256312, "83.5"}, {0.0123456, "0.0123"}, {1237.6, "1240"},
      {5, "5"},                   {99.96, "100"},        {0, "0"}};
  for (const auto& [value, text] : cases) {
    s.DefaultStepSize = value;
    EXPECT_EQ(s.DefaultStepText(), text) << value;
  }
  EXPECT_DOUBLE_EQ(s.DefaultStepSize, 0) << "only the text is rounded";
}

TEST(DefaultStep, IsFourThousandthsOfTheWindowDiagonal) {
  EXPECT_DOUBLE_EQ(ComputeDefaultStep(0, 0, 300, 400), 2.0);
  EXPECT_DOUBLE_EQ(ComputeDefaultStep(10, 10, 10, 10), 0.0);
}

}  // namespace
}  // namespace tarno::testing
