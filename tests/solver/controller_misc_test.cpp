// The contour run after a solve, the equation estimate, the invalidation of a
// solution and of its contours, and the starting and waiting of programs.
#include <csignal>

#include "controller_fixture.h"

namespace tarno::testing {
namespace {

using ::testing::ElementsAre;

constexpr const char* kGrid =
    "DSAA\\r\\n3 2\\r\\n0 10\\r\\n0 5\\r\\n2 10\\r\\n2 4 6\\r\\n8 10 1.70141E+38\\r\\n";

TEST_F(ControllerTest, NewGridIsContouredWithTheLevelsAsTheyStand) {
  GoodSolver("*\\r\\n", std::string("printf '") + kGrid + "' > golden.GRD");
  FakeProgram("contour", "printf 'LEVEL      2.500000E+00\\r\\n      1.000000E+00  2.000000E+00\\r\\n' "
                         "> \"$1.CTR\"");
  Touch("golden.CTR");
  SolveContext& ctx = Context();
  settings_.chkContour = true;
  settings_.SelectContourProperty(kContourHeads);
  settings_.tbContourMin = "1.5";
  settings_.tbContourInt = "0.25";
  settings_.tbContourMax = "9";
  state_.ReferenceHead = 1;
  SolveOptions o;
  const SolveReport r = ModelRunTARNO(ctx, o);
  ui_.Verify();
  ASSERT_EQ(r.outcome, SolveOutcome::Completed) << r.failure;
  EXPECT_TRUE(r.contourRun);
  EXPECT_EQ(r.contourStatus, 0);
  EXPECT_EQ(Args("contour"), "golden 1.5 0.25 9");
  EXPECT_TRUE(state_.ContourLinesPresent);
  // The writer and the loader show their own wait texts around these two.
  EXPECT_THAT(ui_.WaitTexts(), ::testing::IsSupersetOf({"Running Solver...", "Contouring..."}));
  const auto waits = ui_.WaitTexts();
  EXPECT_LT(std::find(waits.begin(), waits.end(), "Running Solver..."),
            std::find(waits.begin(), waits.end(), "Contouring..."));
  EXPECT_NE(std::find(menus_.begin(), menus_.end(), "chkContour+"), menus_.end());
}

// A field that is no number reads as 0 everywhere in the settings; the contourer is
// given that number, not the text it would refuse.
TEST_F(ControllerTest, ContourLevelsAreTheNumbersTheFieldsReadAs) {
  GoodSolver("*\\r\\n", std::string("printf '") + kGrid + "' > golden.GRD");
  FakeProgram("contour", ": > \"$1.CTR\"");
  SolveContext& ctx = Context();
  settings_.chkContour = true;
  settings_.SelectContourProperty(kContourHeads);
  settings_.tbContourMin = "abc";
  settings_.tbContourInt = " .5m";
  settings_.tbContourMax = "12.0";
  state_.ReferenceHead = 1;
  SolveOptions o;
  const SolveReport r = ModelRunTARNO(ctx, o);
  ui_.Verify();
  ASSERT_EQ(r.outcome, SolveOutcome::Completed) << r.failure;
  EXPECT_EQ(Args("contour"), "golden 0 0.5 12");
}

// A contourer that fails is told with what it said; the contour lines of the last
// run stay until a run replaces them.
TEST_F(ControllerTest, FailedContourRunIsToldAndKeepsTheOldLines) {
  GoodSolver("*\\r\\n", std::string("printf '") + kGrid + "' > golden.GRD");
  FakeProgram("contour", "echo 'contour: the grid golden.GRD is cut short' >&2\nexit 3");
  Touch("golden.CTR");
  SolveContext& ctx = Context();
  settings_.chkContour = true;
  settings_.SelectContourProperty(kContourHeads);
  state_.ReferenceHead = 1;
  ui_.ExpectMessage(kContourFailedTitle,
                    {"The contour program failed (exit status 3) on golden.GRD with the levels 0 to 1 by 1.",
                     "contour: the grid golden.GRD is cut short", "The contour lines drawn before are kept."});
  SolveOptions o;
  const SolveReport r = ModelRunTARNO(ctx, o);
  ui_.Verify();
  ASSERT_EQ(r.outcome, SolveOutcome::Completed) << r.failure;
  EXPECT_EQ(r.contourStatus, 3);
  EXPECT_EQ(ReadFile(Dir() / "golden.CTR"), "old");
  EXPECT_TRUE(state_.ContourLinesPresent);

  // Without lines of an earlier run there is nothing to draw, and the state says so.
  std::filesystem::remove(Dir() / "golden.CTR");
  ui_.ClearRecord();
  ui_.ExpectMessageTitled(kContourFailedTitle);
  SolveOptions again;
  again.Prompt = false;
  state_.SolutionPresent = false;
  EXPECT_EQ(ModelRunTARNO(ctx, again).outcome, SolveOutcome::Completed);
  ui_.Verify();
  const auto& calls = ui_.Calls();
  const auto told = std::find_if(calls.begin(), calls.end(),
                                 [](const UiCall& c) { return c.title == kContourFailedTitle; });
  ASSERT_NE(told, calls.end());
  EXPECT_EQ(told->lines.back(), "No contour lines are drawn.");
  EXPECT_FALSE(state_.ContourLinesPresent);
}

// A custom grid of fewer than two points across passes the settings' check but not
// the solver: the solve says so before it starts and changes nothing.
TEST_F(ControllerTest, GridPointsOutOfTheSolversRangeStopTheSolve) {
  GoodSolver();
  Touch("golden.SOL");
  Touch("golden.XTR");
  SolveContext& ctx = Context();
  settings_.chkContour = true;
  settings_.contourDetail = kContourCustom;
  settings_.tbContourLevel = "1";
  state_.SolutionPresent = true;
  ui_.ExpectMessage("Bad Entry",
                    {"The contour grid needs from 2 to 100000 points across; the Contour Level is 1.",
                     "Please enter a new Contour Level in the Model Settings, or turn the contours off."});
  SolveOptions o;
  const SolveReport r = ModelRunTARNO(ctx, o);
  ui_.Verify();
  EXPECT_EQ(r.outcome, SolveOutcome::Refused);
  EXPECT_TRUE(r.deletedFiles.empty());
  EXPECT_TRUE(Has("golden.SOL") && Has("golden.XTR"));
  EXPECT_FALSE(Has("tarno1.args"));
  EXPECT_TRUE(state_.SolutionPresent);

  // Without contours the level does not matter.
  ui_.ClearRecord();
  settings_.chkContour = false;
  SolveOptions plain;
  plain.Prompt = false;
  EXPECT_EQ(ModelRunTARNO(ctx, plain).outcome, SolveOutcome::Completed);
}

TEST_F(ControllerTest, StreamFunctionLevelsComeFromTheGridRange) {
  GoodSolver("*\\r\\n", std::string("printf '") + kGrid + "' > golden.GRD");
  FakeProgram("contour", ": > \"$1.CTR\"");
  SolveContext& ctx = Context();
  settings_.chkContour = true;
  settings_.SelectContourProperty(kContourStreamFunction);
  settings_.tbContourInt = "5";  // the number of stream lines
  state_.ReferenceHead = 1;
  SolveOptions o;
  const SolveReport r = ModelRunTARNO(ctx, o);
  ASSERT_EQ(r.outcome, SolveOutcome::Completed) << r.failure;
  EXPECT_EQ(Args("contour"), "golden 2 2 10");
}

TEST_F(ControllerTest, OneStreamLineDividesByZeroIntoTheReport) {
  GoodSolver("*\\r\\n", std::string("printf '") + kGrid + "' > golden.GRD");
  FakeProgram("contour", ": > \"$1.CTR\"");
  SolveContext& ctx = Context();
  settings_.chkContour = true;
  settings_.SelectContourProperty(kContourStreamFunction);
  settings_.tbContourInt = "1";
  state_.ReferenceHead = 1;
  ui_.ExpectMessageTitled(kUnhandledErrorTitle);
  SolveOptions o;
  const SolveReport r = ModelRunTARNO(ctx, o);
  ui_.Verify();
  EXPECT_EQ(r.outcome, SolveOutcome::Failed);
  EXPECT_NE(ui_.Messages()[0].lines[1].find("(error number 11)"), std::string::npos);
  EXPECT_FALSE(Has("contour.args"));
}

TEST_F(ControllerTest, NoGridNoContourRun) {
  GoodSolver();
  SolveContext& ctx = Context();
  settings_.chkContour = true;
  state_.ReferenceHead = 1;
  SolveOptions o;
  const SolveReport r = ModelRunTARNO(ctx, o);
  EXPECT_EQ(r.outcome, SolveOutcome::Completed);
  EXPECT_FALSE(r.contourRun);
  EXPECT_FALSE(state_.ContourLinesPresent);
}

TEST_F(ControllerTest, MissingContourProgramIsToldByItsName) {
  GoodSolver("*\\r\\n", std::string("printf '") + kGrid + "' > golden.GRD");
  SolveContext& ctx = Context();
  settings_.chkContour = true;
  settings_.SelectContourProperty(kContourHeads);
  state_.ReferenceHead = 1;
  ui_.ExpectMessage("Executable Missing", {"contour does not exist in the tarno directory!"});
  ui_.ExpectMessageTitled(kUnhandledErrorTitle);
  SolveOptions o;
  EXPECT_EQ(ModelRunTARNO(ctx, o).outcome, SolveOutcome::Failed);
  ui_.Verify();
  EXPECT_FALSE(ui_.WaitWindowVisible());
}

TEST_F(ControllerTest, WellsAreCountedByKindOnce) {
  for (int i = 0; i < 5; ++i) Point(i, i);
  Sql("insert into Wells (VID, Label, HeadSpecified, PPWell, Transient) values "
      "(1,'a',1,0,0),(2,'b',0,0,0),(3,'c',1,1,0),(4,'d',0,1,1),(5,'e',0,0,1)");
  const WellCounts c = CountWells(db_);
  EXPECT_EQ(c.twoD, 2);
  EXPECT_EQ(c.partiallyPenetrating, 2) << "a partially penetrating transient well is counted once";
  EXPECT_EQ(c.transient, 1);
  EXPECT_EQ(c.total(), 5);
  EXPECT_EQ(c.unknowns, 1 + 3 + 2);
}

TEST_F(ControllerTest, SizeOfAnEmptyModelIsTheMinimum) {
  ui_.ExpectMessageTitled("Model Size");
  EXPECT_EQ(ModelGetSize(db_, true, ui_), 61);
  const UiCall m = ui_.Messages().at(0);
  ASSERT_EQ(m.lines.size(), 18u);
  EXPECT_EQ(m.lines[0], "Current model size:");
  EXPECT_EQ(m.lines[1], "Number of wells (2-D): 0");
  EXPECT_EQ(m.lines[16], "Maximum number of equations allowed: 7000");
  EXPECT_EQ(m.lines[17], "Estimated number of equations is less than: 61");
}

TEST_F(ControllerTest, SizeCountsEveryKindOfUnknown) {
  // Wells: head plain (1), discharge plain (0), head pp (3), discharge pp (2),
  // transient (0).
  for (int i = 0; i < 5; ++i) Point(i, i);
  Sql("insert into Wells (VID, Label, HeadSpecified, PPWell, Transient) values "
      "(1,'a',1,0,0),(2,'b',0,0,0),(3,'c',1,1,0),(4,'d',0,1,0),(5,'e',0,0,1)");
  std::vector<std::pair<double, double>> river;
  for (int i = 0; i < 40; ++i) river.push_back({i * 10.0, 0});
  const auto ls = String(river);  // 39 line-sinks
  Sql("insert into LinesinkStrings (PID, Label) values (" + std::to_string(ls) + ", 'r')");
  const auto closedBarrier = String({{0, 0}, {1, 0}, {1, 1}, {0, 1}}, true);  // 4 doublets
  const auto openBarrier = String({{5, 0}, {6, 0}, {6, 1}});                  // 2 doublets
  Sql("insert into NoFlowStrings (PID, Label, Closed) values (" + std::to_string(closedBarrier) +
      ", 'b1', 1), (" + std::to_string(openBarrier) + ", 'b2', 0)");
  const auto inK = String({{0, 0}, {2, 0}, {2, 2}});    // 3 doublets
  const auto inNone = String({{9, 9}, {8, 9}, {8, 8}});  // no change: 0
  Sql("insert into Inhomogeneities (PID, Label, ChangeK) values (" + std::to_string(inK) +
      ", 'i1', 1), (" + std::to_string(inNone) + ", 'i2', 0)");
  // 39 + 2*6 + 2*3 + 1 + 6 + 25 = 89, plus 4 leakage cells.
  EXPECT_EQ(ModelGetSize(db_, false, ui_), 89);
  ui_.ExpectMessageTitled("Model Size");
  EXPECT_EQ(ModelGetSize(db_, true, ui_, 4, true), 93);
  const auto lines = ui_.Messages().at(0).lines;
  EXPECT_EQ(lines[1], "Number of wells (2-D): 2");
  EXPECT_EQ(lines[2], "Number of partially penetrating wells: 2");
  EXPECT_EQ(lines[3], "Number of transient wells: 1");
  EXPECT_EQ(lines[5], "Number of linesinks: 39");
  EXPECT_EQ(lines[7], "Number of inhomogeneity elements (line doublets): 3");
  EXPECT_EQ(lines[9], "Number of barrier elements (line doublets): 6");
  EXPECT_EQ(lines[10], "Number of Leakage cells:4");
  EXPECT_EQ(lines.back(), "Estimated number of equations is less than: 93");
}

class Invalidate : public ControllerTest {
 protected:
  void SetUp() override {
    ControllerTest::SetUp();
    for (const char* ext : {".SOL", ".DAT", ".XTR", ".PTH", ".CTR", ".GRD"})
      Touch(std::string("golden") + ext);
    Context();
    state_.SolutionPresent = state_.ContoursPresent = state_.PathsPresent =
        state_.ContourLinesPresent = true;
    state_.SolutionTime = 30;
    state_.Note = "Contours: Heads";
    Sql("insert into WLResults (Label, TARNOLabel, X, Y, Radius, SpecifiedHead, Discharge, Head) "
        "values ('w', 'WL_000001', 1, 2, 1, 0, 0, 5)");
  }
};

TEST_F(Invalidate, NoKeepsEverything) {
  ui_.ExpectMessage("Model Changed!",
                    {"This change may make the current solution inconsistent with your",
                     "current element layout.  Do you want to remove the current solution",
                     "results from view and invalidate the solution?  "},
                    Answer::No);
  EXPECT_FALSE(InvalidateSolution(ctx_, true, true));
  ui_.Verify();
  EXPECT_TRUE(Has("golden.SOL"));
  EXPECT_TRUE(state_.SolutionPresent);
  EXPECT_EQ(Count("WLResults"), 1);
}

TEST_F(Invalidate, YesRemovesFilesFlagsAndRows) {
  ui_.ExpectMessageTitled("Model Changed!", Answer::Yes);
  EXPECT_TRUE(InvalidateSolution(ctx_, true, true));
  ui_.Verify();
  for (const char* ext : {".SOL", ".DAT", ".XTR", ".PTH", ".CTR", ".GRD"})
    EXPECT_FALSE(Has(std::string("golden") + ext)) << ext;
  EXPECT_FALSE(state_.SolutionPresent || state_.ContoursPresent || state_.PathsPresent ||
               state_.ContourLinesPresent);
  EXPECT_EQ(state_.SolutionTime, 0);
  EXPECT_EQ(state_.Note, "");
  EXPECT_EQ(Count("WLResults"), 0);
  EXPECT_EQ(redraws_, 1);
  EXPECT_EQ(searchClosed_, 1);
}

// The map is drawn again once the results are gone: the redraw must not show the
// removed solution's wells and test points by their old results, nor its note.
TEST_F(Invalidate, TheRedrawComesAfterTheResultsAreRemoved) {
  std::int64_t rowsAtRedraw = -1;
  std::string noteAtRedraw = "unset";
  ctx_.hooks.redraw = [&] {
    rowsAtRedraw = Count("WLResults");
    noteAtRedraw = state_.Note;
  };
  EXPECT_TRUE(InvalidateSolution(ctx_, false, true));
  EXPECT_EQ(rowsAtRedraw, 0);
  EXPECT_EQ(noteAtRedraw, "");
}

TEST_F(Invalidate, WithoutSolutionOnlyTheSearchWindowCloses) {
  state_.SolutionPresent = false;
  EXPECT_FALSE(InvalidateSolution(ctx_, true, true));
  ui_.Verify();
  EXPECT_TRUE(Has("golden.SOL"));
  EXPECT_EQ(Count("WLResults"), 1);
  EXPECT_EQ(searchClosed_, 1);
}

TEST_F(Invalidate, RecomputeContoursUsesTheModelRow) {
  Sql("update Model set CONTOURMinimum=3, CONTOURInterval=0.5, CONTOURMaximum=12");
  FakeProgram("contour", ": > \"$1.CTR\"");
  ui_.ExpectMessage("Recompute?",
                    {"This change makes the current contour lines and/or pathlines invalid.",
                     "Recompute contours and pathlines based on the new settings?"},
                    Answer::Yes);
  InvalidateContours(ctx_);
  ui_.Verify();
  EXPECT_EQ(Args("contour"), "golden 3 0.5 12");
  EXPECT_EQ(menus_.back(), "chkContour+");
}

TEST_F(Invalidate, FailedContourStartIsReported) {
  ui_.ExpectMessageTitled("Recompute?", Answer::Yes);
  ui_.ExpectMessageTitled("Executable Missing");
  ui_.ExpectMessage(kUnhandledErrorTitle,
                    {"Could not run the contouring program", kPersistsLine});
  InvalidateContours(ctx_);
  ui_.Verify();
}

TEST_F(Invalidate, FailedRecomputeIsToldAndKeepsTheOldLines) {
  Sql("update Model set CONTOURMinimum=3, CONTOURInterval=0.5, CONTOURMaximum=12");
  FakeProgram("contour", "echo 'contour: cannot read golden.GRD' >&2\nexit 1");
  state_.ContourLinesPresent = false;
  ui_.ExpectMessageTitled("Recompute?", Answer::Yes);
  ui_.ExpectMessage(kContourFailedTitle,
                    {"The contour program failed (exit status 1) on golden.GRD with the levels 3 to 12 by 0.5.",
                     "contour: cannot read golden.GRD", "The contour lines drawn before are kept."});
  InvalidateContours(ctx_);
  ui_.Verify();
  EXPECT_TRUE(Has("golden.CTR"));
  EXPECT_FALSE(state_.ContourLinesPresent);
}

TEST_F(Invalidate, NoToRecomputeTurnsContoursOff) {
  ui_.ExpectMessageTitled("Recompute?", Answer::No);
  InvalidateContours(ctx_);
  ui_.Verify();
  EXPECT_EQ(menus_.back(), "chkContour-");
  EXPECT_EQ(redraws_, 1);
}

TEST(Process, ReportsExitStatusSignalAndMissingProgram) {
  BlockingWaiter w;
  const auto tmp = std::filesystem::temp_directory_path();
  EXPECT_EQ(WaitForTerm1(w, StartProgram("/bin/sh", {"-c", "exit 7"}, tmp)), 7);
  EXPECT_EQ(WaitForTerm1(w, StartProgram("/bin/sh", {"-c", "kill -TERM $$"}, tmp)), 128 + SIGTERM);
  try {
    StartProgram(tmp / "no-such-program-here", {}, tmp);
    FAIL() << "a missing program started";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), error_number::kFileNotFound);
    EXPECT_NE(std::string(e.what()).find("no-such-program-here"), std::string::npos);
  }
  EXPECT_THROW(StartProgram("/bin/sh", {"-c", "true"}, tmp / "no-such-folder-here"), Error);
}

TEST(Process, PollingWaiterPumpsWhileTheProgramRuns) {
  int pumps = 0;
  PollingWaiter w([&] { ++pumps; }, std::chrono::milliseconds(5));
  const auto pid = StartProgram("/bin/sh", {"-c", "sleep 0.2; exit 2"},
                                std::filesystem::temp_directory_path());
  EXPECT_EQ(WaitForTerm1(w, pid), 2);
  EXPECT_GT(pumps, 3);
}

TEST(Process, ProgramDirectoryIsTheFolderOfTheRunningExecutable) {
  EXPECT_TRUE(std::filesystem::exists(ProgramDirectory() / "test_solver"));
}

}  // namespace
}  // namespace tarno::testing
