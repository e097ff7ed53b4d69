// The Instant Inspector, the integrity check, the time of evaluation and one
// streamline, against the solver program of the build (tarno1) on a small model
// with a known solution: one injection well in a confined aquifer.
#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>
#include <fstream>

#include "controller_fixture.h"
#include "core/format.h"
#include "solver/inspect.h"
#include "support/scripted_ui.h"

namespace tarno::testing {
namespace {

namespace fs = std::filesystem;

// A confined aquifer (base 0, thickness 10, k 1, porosity 0.25) with one well that
// injects 6000 at (100, 50), and one test point at (135, 85), 35 units off in x and
// y. Contours and traces are off so that only the solver runs.
class InspectTest : public ControllerTest {
 protected:
  void SetUp() override {
    ControllerTest::SetUp();
    Sql("update Model set AQBase=0, AQThickness='10', AQHydCond=1, AQPorosity=0.25, "
        "CONTOURShow=-1, "
        "TRACECompute=0");
    const auto well = Point(100, 50);
    Sql("insert into Wells (VID, Head, Radius, Label) values (" + std::to_string(well) +
        ", -6000, 0.5, 'W1')");
    const auto tp = Point(135, 85);
    Sql("insert into TestPoints (VID, ObsHead, Label, Type) values (" + std::to_string(tp) +
        ", 0, 'TP1', 'Piezometer')");
  }

  // Solves with the real solver; the state then holds a solution.
  void Solve() {
    SolveContext& ctx = Context();
    ctx_.programDirectory = TARNO_BIN_DIR;
    ExpectReferenceHeadWarning();
    SolveOptions o;
    const SolveReport r = ModelRunTARNO(ctx, o);
    ui_.Verify();
    ASSERT_EQ(r.outcome, SolveOutcome::Completed) << r.failure;
    ASSERT_TRUE(state_.SolutionPresent);
    ui_.ClearRecord();
  }

  // The test point's record of the solve's extract file.
  InspectedPoint ExtractedTestPoint() {
    std::ifstream in(Dir() / "golden.XTR");
    std::string line;
    while (std::getline(in, line)) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      if (line.find("TP_") != std::string::npos) {
        const auto p = ParseInspectedPoint(line);
        if (p) return *p;
      }
    }
    ADD_FAILURE() << "no test point record in golden.XTR";
    return {};
  }
};

TEST_F(InspectTest, InspectionAtATestPointGivesTheValuesOfTheSolvesExtract) {
  Solve();
  const InspectedPoint expected = ExtractedTestPoint();
  InspectorSettings inspector;  // at the top of the saturated zone, as a test point
  ui_.ExpectMessageTitled("Model Results");
  const InspectReport r = ModelInspectResults(ctx_, inspector, 135, 85);
  ui_.Verify();
  ASSERT_TRUE(r.ran);
  EXPECT_EQ(r.solverRuns, 1);
  EXPECT_DOUBLE_EQ(r.point.x, expected.x);
  EXPECT_DOUBLE_EQ(r.point.y, expected.y);
  EXPECT_DOUBLE_EQ(r.point.z, expected.z);
  EXPECT_DOUBLE_EQ(r.point.potential, expected.potential);
  EXPECT_DOUBLE_EQ(r.point.qx, expected.qx);
  EXPECT_DOUBLE_EQ(r.point.qy, expected.qy);
  EXPECT_DOUBLE_EQ(r.point.vx, expected.vx);
  EXPECT_DOUBLE_EQ(r.point.vy, expected.vy);
  EXPECT_DOUBLE_EQ(r.point.head, expected.head);
  EXPECT_DOUBLE_EQ(r.point.vz, expected.vz);
  EXPECT_DOUBLE_EQ(r.point.porosity, 0.25);
  EXPECT_DOUBLE_EQ(r.point.conductivity, 1.0);
  EXPECT_DOUBLE_EQ(r.point.base, 0.0);
  EXPECT_DOUBLE_EQ(r.point.recharge, 0.0);
  // Injection: the head rises towards the well, the water flows away from it (+x, +y).
  EXPECT_GT(r.point.vx, 0);
  EXPECT_NEAR(r.point.vx, r.point.vy, 1e-6 * r.point.vx);

  // The box, through the port, with its exact lines.
  const auto shown = ui_.Messages();
  ASSERT_EQ(shown.size(), 1u);
  EXPECT_THAT(shown[0].lines,
              ::testing::ElementsAre("X        1.3500E+02", "Y        8.5000E+01",
                                     "Z       " + FormatNumber(expected.z, " 0.0000E+00"),
                                     "Head" + FormatNumber(expected.head, " 0.0000E+00"),
                                     "Porosity 2.5000E-01", "Conductivity 1.0000E+00",
                                     "Bottom Elev 0.0000E+00", "Recharge 0.0000E+00",
                                     "Velocity (X)" + FormatNumber(expected.vx, " 0.0000E+00"),
                                     "Velocity (Y)" + FormatNumber(expected.vy, " 0.0000E+00"),
                                     "Velocity (Z)" + FormatNumber(expected.vz, " 0.0000E+00"),
                                     "All data are in computational units, except",
                                     "the x,y-coordinates, which are in map units."));
  // Its own command file and logs; the logs of the solve stay.
  EXPECT_TRUE(Has("_INSPECT.DAT"));
  EXPECT_TRUE(Has("error_insp.log"));
  EXPECT_TRUE(Has("message.log"));
}

TEST_F(InspectTest, IntegrityCheckDifferenceQuotientsMeetTheAnalyticVelocities) {
  Solve();
  InspectorSettings inspector;
  ui_.ExpectMessage("Solver Integrity Check", {"Solver Integrity data will be supplied by using",
                                               "the Instant Inspector (Shift left-mouse click)."});
  SolverIntegrityCheck_Click(ui_, inspector);
  ASSERT_TRUE(inspector.IntegrityCheck);
  inspector.StepSize = 0.5;
  // Both ways of choosing the elevation: at the top (two runs), and given (one run).
  for (const bool top : {true, false}) {
    inspector.InspectAtTop = top;
    inspector.Elevation = 5;
    SolverIntegrity shown;
    ui_.ExpectMessageTitled("Model Results");
    ui_.ExpectModal<SolverIntegrity>(SolverIntegrity::kName,
                                     [&](SolverIntegrity& d) { shown = d; });
    const InspectReport r = ModelInspectResults(ctx_, inspector, 135, 85);
    ui_.Verify();
    ASSERT_TRUE(r.integrity) << top;
    EXPECT_EQ(r.solverRuns, top ? 2 : 1);
    EXPECT_NE(shown.VxAnyl, 0.0);
    EXPECT_NEAR(shown.VxNum, shown.VxAnyl, 1e-4 * std::fabs(shown.VxAnyl)) << top;
    EXPECT_NEAR(shown.VyNum, shown.VyAnyl, 1e-4 * std::fabs(shown.VyAnyl)) << top;
    // A confined aquifer without recharge: no vertical flow, no divergence, and the
    // numerical divergences vanish to the precision of the file against the
    // velocity's change over the step.
    const double scale = std::fabs(shown.VxAnyl) / 0.5;
    EXPECT_DOUBLE_EQ(shown.VzAnyl, 0.0);
    EXPECT_NEAR(shown.VzNum, 0.0, 1e-3 * scale * 10);
    EXPECT_NEAR(shown.divqNum, 0.0, 1e-3 * scale);
    EXPECT_NEAR(shown.divCapQNum, 0.0, 1e-3 * scale * 0.25 * 10);
    EXPECT_DOUBLE_EQ(shown.divCapQAnyl, 0.0);
  }
}

// With the salt water interface on, the box has the interface's elevation under the
// point after the head; it lies by Ghyben-Herzberg below sea level (100), 1/0.025 =
// 40 times as deep as the head stands above it.
TEST_F(InspectTest, WithTheInterfaceTheBoxShowsItsElevationBelowThePoint) {
  Sql("update Model set AQBase=-1000, AQThickness='1100', AddASaltWaterInterface=1, FreshWSpecGravity=1, "
      "SaltWSpecGravity=1.025, LocalSeaLevel=100");
  Solve();
  InspectorSettings inspector;
  ui_.ExpectMessageTitled("Model Results");
  const InspectReport r = ModelInspectResults(ctx_, inspector, 135, 85);
  ui_.Verify();
  ASSERT_TRUE(r.ran);
  ASSERT_TRUE(r.point.interfaceElevation.has_value());
  ASSERT_GE(r.lines.size(), 5u);
  EXPECT_EQ(r.lines[4].rfind("Interface Elevation ", 0), 0u) << r.lines[4];
  if (*r.point.interfaceElevation != -9999)
    // The extract file keeps six digits of each: 40 times the head's last digit.
    EXPECT_NEAR(*r.point.interfaceElevation, 100 - 40 * (r.point.head - 100), 0.01);
  else
    ADD_FAILURE() << "no interface under the point: " << r.lines[4] << " head " << r.point.head
                  << " base " << r.point.base;
}

TEST_F(InspectTest, WithoutASolutionNothingIsWrittenAndTheUserIsTold) {
  SolveContext& ctx = Context();
  ctx_.programDirectory = TARNO_BIN_DIR;
  InspectorSettings inspector;
  ui_.ExpectMessage(kNoSolutionTitle, {kNoSolutionText});
  EXPECT_FALSE(ModelInspectResults(ctx, inspector, 135, 85).ran);
  ui_.ExpectMessage(kNoSolutionTitle, {kNoSolutionText});
  EXPECT_FALSE(ModelTraceOneStreamline(ctx, inspector, 135, 85).has_value());
  ui_.ExpectMessage("Can't set time",
                    {"You must have a valid solution before changing the time setting"});
  EXPECT_FALSE(SET_TIME_Click(ctx));
  ui_.Verify();
  EXPECT_FALSE(Has("_INSPECT.DAT"));
  EXPECT_FALSE(Has("_TRACE.DAT"));
}

TEST_F(InspectTest, OneStreamlineRunsFromThePointAndJoinsThePathFile) {
  Solve();
  InspectorSettings inspector;
  settings_.chkDefaultStep = false;
  settings_.tbStepSize = "1";
  settings_.tbMaxTime = "100";
  const auto path = ModelTraceOneStreamline(ctx_, inspector, 135, 85);
  ui_.Verify();
  ASSERT_TRUE(path.has_value());
  ASSERT_GE(path->points.size(), 2u);
  // Model coordinates: the origin is the centre of the extents (117.5, 67.5).
  EXPECT_NEAR(path->points.front().x, 17.5, 1e-6);
  EXPECT_NEAR(path->points.front().y, 17.5, 1e-6);
  // Forward in time, away from the injection well, along the diagonal.
  const PathPoint& last = path->points.back();
  EXPECT_GT(last.x, 17.5);
  EXPECT_NEAR(last.x - 17.5, last.y - 17.5, 1e-3 * (last.x - 17.5));
  const auto all = ReadPathFile(Dir() / "golden.PTH");
  ASSERT_EQ(all.size(), 1u);
  EXPECT_EQ(all[0].points.size(), path->points.size());

  // Backward in time the path runs towards the well and ends at it.
  inspector.TraceBackwards = true;
  const auto back = ModelTraceOneStreamline(ctx_, inspector, 135, 85);
  ASSERT_TRUE(back.has_value());
  ASSERT_GE(back->points.size(), 2u);
  EXPECT_LT(back->points.back().x, 17.5);
  EXPECT_EQ(ReadPathFile(Dir() / "golden.PTH").size(), 2u);
}

TEST_F(InspectTest, SetTimeAsksRegridsAndKeepsTheTime) {
  Solve();
  ui_.Expect(UiCallKind::InputBox)
      .Title("Solution Time")
      .Lines(
          {"Enter the time for the grid.\nNote: this will be ignored if no Theis wells are used"})
      .Text("12.5");
  EXPECT_TRUE(SET_TIME_Click(ctx_));
  ui_.Verify();
  EXPECT_DOUBLE_EQ(state_.SolutionTime, 12.5);
  // The regrid evaluates at the new time.
  const std::string regrid = ReadFile(Dir() / "regrid.dat");
  EXPECT_NE(regrid.find(" 12.5 \r\n"), std::string::npos) << regrid;
  // Cancel changes nothing.
  ui_.Expect(UiCallKind::InputBox).Title("Solution Time").Text(std::nullopt);
  EXPECT_FALSE(SET_TIME_Click(ctx_));
  EXPECT_DOUBLE_EQ(state_.SolutionTime, 12.5);
}

TEST(InspectorDialogTest, StepSizeMustBePositiveAndTheRestIsTaken) {
  InspectorSettings s;
  InspectorDialog d;
  d.Load(s, false);
  EXPECT_TRUE(d.chkTop);
  EXPECT_EQ(d.lblStepUnit, "ft");
  EXPECT_EQ(d.dataStepSize, "1");
  for (const char* bad : {"0", "-2", "", "abc"}) {
    ScriptedUserInterface ui;
    ui.ExpectMessage("Invalid Value",
                     {"Invalid Step Size!", "Please enter a value larger than 0."});
    d.dataStepSize = bad;
    d.tbElevation = "7";
    EXPECT_FALSE(d.OK(ui)) << bad;
    ui.Verify();
    EXPECT_EQ(d.Result, 2);
    EXPECT_DOUBLE_EQ(d.Settings.StepSize, 1.0);  // nothing taken
    EXPECT_DOUBLE_EQ(d.Settings.Elevation, 0.0);
  }
  ScriptedUserInterface ui;
  d.dataStepSize = "2.5";
  d.chkTop = false;
  d.chkTraceBackwards = true;
  EXPECT_TRUE(d.OK(ui));
  EXPECT_EQ(d.Result, 1);
  EXPECT_DOUBLE_EQ(d.Settings.StepSize, 2.5);
  EXPECT_DOUBLE_EQ(d.Settings.Elevation, 7.0);
  EXPECT_FALSE(d.Settings.InspectAtTop);
  EXPECT_EQ(d.Settings.TraceDirection(), -1);
  // The integrity switch is not the dialog's: it stays as it was.
  EXPECT_FALSE(d.Settings.IntegrityCheck);
}

TEST(InspectFilesTest, CommandFileHasThePointTheInterfaceAndTheSixNeighbours) {
  InspectRequest r;
  r.baseName = "example";
  r.time = 3.5;
  r.x = 1850;
  r.y = -3700;
  r.z = 10;
  r.interfacePoint = true;
  r.neighbours = true;
  r.step = 2;
  r.neighbourZ = 10;
  const std::string text = InspectCommandText(r);
  const std::string expected =
      "* Written by TARNO for Windows 2.2.4\r\n error error_insp.log\r\n yes\r\n message "
      "message_insp.log\r\n"
      " yes\r\n echo echo_inspect.log\r\n yes\r\n picture off\r\n quit\r\n \r\n load example\r\n "
      "time 3.5\r\n"
      " extract \r\n file _INSPECT.XTR\r\n y\r\n"
      "1.8500000E+03 -3.7000000E+03 10.00\r\n"
      " interface 1.8500000E+03 -3.7000000E+03 \r\n"
      "1.8520000E+03 -3.7000000E+03 1.0000000E+01 \r\n"
      "1.8480000E+03 -3.7000000E+03 1.0000000E+01 \r\n"
      "1.8500000E+03 -3.6980000E+03 1.0000000E+01 \r\n"
      "1.8500000E+03 -3.7020000E+03 1.0000000E+01 \r\n"
      "1.8500000E+03 -3.7000000E+03 1.2000000E+01 \r\n"
      "1.8500000E+03 -3.7000000E+03 8.0000000E+00 \r\n"
      " quit \r\n stop\r\n";
  EXPECT_EQ(text, expected);
  // Without an elevation the point line has X and Y alone.
  r.z.reset();
  r.neighbours = false;
  r.interfacePoint = false;
  EXPECT_NE(InspectCommandText(r).find(" y\r\n1.8500000E+03 -3.7000000E+03\r\n quit \r\n"),
            std::string::npos);
}

TEST(InspectFilesTest, PointRecordsAreReadByTheirFieldsAndOthersRefused) {
  const std::string record =
      "@   1.850000E+03,  3.700000E+03,  1.000000E+01,  1.083992E+04,  1.066382E-01, "
      "-3.030347E-01,  "
      "2.508853E-02, -7.129435E-02,  1.170019E+02,  1.007944E-04,  2.500000E-01,  7.500000E+01,  "
      "1.000000E+02, -2.000000E-04,";
  const auto p = ParseInspectedPoint(record);
  ASSERT_TRUE(p.has_value());
  EXPECT_DOUBLE_EQ(p->x, 1850);
  EXPECT_DOUBLE_EQ(p->z, 10);
  EXPECT_DOUBLE_EQ(p->qy, -3.030347E-01);
  EXPECT_DOUBLE_EQ(p->head, 117.0019);
  EXPECT_DOUBLE_EQ(p->vz, 1.007944E-04);
  EXPECT_DOUBLE_EQ(p->conductivity, 75);
  EXPECT_DOUBLE_EQ(p->recharge, -2e-4);
  EXPECT_FALSE(
      ParseInspectedPoint("@         gage,  8.50000E+02,  3.30000E+02,  0.00000E+00,TG_000039"));
  EXPECT_FALSE(ParseInspectedPoint(record.substr(0, 100)));
  EXPECT_FALSE(ParseInspectedPoint(record.substr(1)));
}

TEST(InspectFilesTest, LargeValuesAreShownInFullAndSmallOnesWithAnExponent) {
  InspectedPoint p;
  p.z = 117.0019;
  p.head = -9999;
  p.vx = -4.4544e-2;
  const auto lines = ModelResultsLines(p, 456300.04, -4395200);
  EXPECT_EQ(lines[0], "X        456300.0");
  EXPECT_EQ(lines[1], "Y        -4395200.0");
  EXPECT_EQ(lines[2], "Z        1.1700E+02");
  EXPECT_EQ(lines[3], "Head -9.9990E+03");
  EXPECT_EQ(lines[8], "Velocity (X) -4.4544E-02");
}

TEST(InspectFilesTest, TheInterfaceRecordIsReadByItsWordAndShownAfterTheHead) {
  EXPECT_EQ(ParseInterfaceRecord("@    interface, 1.00000E+00, 2.00000E+00,-3.25000E+01,"), -32.5);
  EXPECT_FALSE(ParseInterfaceRecord("@         gage, 1.00000E+00, 2.00000E+00, 5.00000E+00,LS_1"));
  InspectedPoint p;
  p.head = 1;
  EXPECT_EQ(ModelResultsLines(p, 0, 0)[4].rfind("Porosity", 0), 0u);
  p.interfaceElevation = -40;
  const auto lines = ModelResultsLines(p, 0, 0);
  EXPECT_EQ(lines[4], "Interface Elevation  -4.0000E+01");
  EXPECT_EQ(lines[5].rfind("Porosity", 0), 0u);
}

TEST(InspectFilesTest, TraceFileNamesItsLogsThePointAndTheDirection) {
  TraceRequest r;
  r.baseName = "example";
  r.left = -100;
  r.bottom = -50;
  r.right = 100;
  r.top = 50;
  r.maxTime = "3650";
  r.x = 12.3456;
  r.y = -6;
  r.z = 10;
  r.direction = -1;
  const std::string text = TraceCommandText(r);
  EXPECT_EQ(
      text.rfind("* Written by TARNO for Windows Beta 2.2.4\r\n error error_trace.log\r\n", 0), 0u);
  EXPECT_NE(text.find(" message message_trc.log\r\n"), std::string::npos);
  EXPECT_NE(text.find(" window -100.00 -50.00 100.00 50.00 \r\n"), std::string::npos);
  EXPECT_NE(text.find(" points\r\n 12.35 -6.00 10.00 -1 \r\n quit \r\n go\r\n quit\r\n stop\r\n"),
            std::string::npos)
      << text;
  // The default step: no step line.
  EXPECT_EQ(text.find(" step "), std::string::npos);
  r.stepText = "2";
  EXPECT_NE(TraceCommandText(r).find(" time 3650\r\n step 2\r\n file _TRACE.PTH\r\n y\r\n"),
            std::string::npos);
}

// A project with a leakage grid: 2 x 2 cells of 20 over (100..140, 50..90), each of
// its own rate. The box has a "Leakage" line after the head with the rate of the cell
// under the point; without the grid there is none.
TEST_F(InspectTest, WithALeakageGridTheBoxShowsTheLeakageOfTheCellUnderThePoint) {
  // Rows from the top: the top row is y 70..90, its second cell x 120..140.
  std::ofstream(Dir() / "golden.del") << "2\n20 20\n2\n20 20\n";
  std::ofstream(Dir() / "golden.vlk") << "1.0e-03  2.5e-03\n3.0e-03  4.0e-03\n";
  SolveContext& ctx = Context();
  ctx.modflow.GridPresent = true;
  ctx.modflow.IncludeLeakage = true;
  ctx.modflow.LeakageX = 100;
  ctx.modflow.LeakageY = 50;
  Solve();
  ASSERT_TRUE(ctx_.modflow.GridPresent);
  InspectorSettings inspector;
  ui_.ExpectMessageTitled("Model Results");
  InspectReport r = ModelInspectResults(ctx_, inspector, 135, 85);
  ui_.Verify();
  ASSERT_TRUE(r.ran);
  ASSERT_TRUE(r.point.leakage.has_value());
  EXPECT_DOUBLE_EQ(*r.point.leakage, 2.5e-3);
  // The cell's leakage leaves the aquifer: the local recharge is its negative.
  EXPECT_DOUBLE_EQ(r.point.recharge, -2.5e-3);
  ASSERT_GE(r.lines.size(), 5u);
  EXPECT_EQ(r.lines[4], "Leakage 2.5000E-03");
  EXPECT_EQ(r.lines[5].rfind("Porosity", 0), 0u);

  // A point of the lower left cell, and one off the grid (0 there).
  ui_.ExpectMessageTitled("Model Results");
  r = ModelInspectResults(ctx_, inspector, 105, 55);
  ASSERT_TRUE(r.point.leakage.has_value());
  EXPECT_DOUBLE_EQ(*r.point.leakage, 3.0e-3);
  ui_.ExpectMessageTitled("Model Results");
  r = ModelInspectResults(ctx_, inspector, 145, 95);
  ASSERT_TRUE(r.point.leakage.has_value());
  EXPECT_DOUBLE_EQ(*r.point.leakage, 0.0);
  ui_.Verify();

  // Without the grid the question is not asked and the line is absent.
  ctx_.modflow.GridPresent = false;
  ui_.ExpectMessageTitled("Model Results");
  r = ModelInspectResults(ctx_, inspector, 135, 85);
  ui_.Verify();
  EXPECT_FALSE(r.point.leakage.has_value());
  for (const std::string& line : r.lines)
    EXPECT_EQ(line.rfind("Leakage", 0), std::string::npos) << line;
  EXPECT_EQ(ReadFile(Dir() / "_INSPECT.DAT").find("cell_leakage"), std::string::npos);
}

TEST(InspectRecords, TheCellLeakageRecordIsReadAndNoOtherRecordPassesForIt) {
  EXPECT_EQ(ParseCellLeakageRecord("@ cell_leakage,  1.00000E+01,  2.00000E+01,  2.50000E-03,"),
            std::optional<double>(2.5e-3));
  EXPECT_FALSE(ParseCellLeakageRecord("@    interface,  1.00000E+01,  2.00000E+01, -9.99900E+03,"));
  EXPECT_FALSE(
      ParseCellLeakageRecord("@         gage,  1.00000E+01,  2.00000E+01,  2.50000E-03,TG_1"));
  EXPECT_FALSE(ParseCellLeakageRecord(" cell_leakage,  1.00000E+01,  2.00000E+01,  2.50000E-03,"));
  InspectedPoint p;
  p.leakage = 0.5;
  const auto lines = ModelResultsLines(p, 0, 0);
  ASSERT_GE(lines.size(), 5u);
  EXPECT_EQ(lines[3].rfind("Head", 0), 0u);
  EXPECT_EQ(lines[4], "Leakage 5.0000E-01");
}

}  // namespace
}  // namespace tarno::testing
