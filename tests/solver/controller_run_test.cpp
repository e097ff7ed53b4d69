// ModelRunTARNO: the new / continue / regrid decision, the stale files, the solver's
// arguments and working directory, the fatal report and the state of the solution.
#include "controller_fixture.h"
#include "solver/solve_dialogs.h"

namespace tarno::testing {
namespace {

using ::testing::ElementsAre;

TEST_F(ControllerTest, NewSolveDeletesStaleFilesInOrderAndRunsSolverInProjectFolder) {
  for (const char* f : {"golden.SOL", "ERROR.LOG", "MESSAGE.LOG", "golden.XTR", "TARNO1.INI",
                        "TARNO.OPS"})
    Touch(f);
  GoodSolver();
  SolveContext& ctx = Context();
  state_.ContourLinesPresent = true;  // a stale flag that the new solve clears
  ExpectReferenceHeadWarning();
  SolveOptions o;
  const SolveReport r = ModelRunTARNO(ctx, o);
  ui_.Verify();

  EXPECT_EQ(r.outcome, SolveOutcome::Completed) << r.failure;
  EXPECT_TRUE(r.newSolution);
  EXPECT_EQ(r.writeType, kWriteNewSolve);
  EXPECT_THAT(r.deletedFiles, ElementsAre("golden.SOL", "ERROR.LOG", "MESSAGE.LOG", "golden.XTR",
                                          "TARNO1.INI", "TARNO.OPS"));
  EXPECT_EQ(Args("tarno1"), "61 golden");
  std::string cwd = ReadFile(Dir() / "tarno1.cwd");
  cwd = cwd.substr(0, cwd.find('\n'));
  EXPECT_EQ(std::filesystem::canonical(cwd), std::filesystem::canonical(Dir()));
  EXPECT_TRUE(Has("golden.dat"));
  EXPECT_TRUE(state_.SolutionPresent);
  EXPECT_THAT(ui_.WaitTexts(), ::testing::Contains("Running Solver..."));
  EXPECT_FALSE(ui_.WaitWindowVisible());
  EXPECT_FALSE(r.errorLogHasReport);
  // Menus: results off during the run, on after it.
  ASSERT_GE(menus_.size(), 4u);
  EXPECT_EQ(menus_[0], "RESULTS_TABLE-");
  EXPECT_EQ(menus_[1], "MODELRUNFILES-");
  EXPECT_EQ(menus_[2], "RESULTS_TABLE+");
  EXPECT_EQ(redraws_, 1);
}

TEST_F(ControllerTest, ParentWorkingDirectoryIsLeftAlone) {
  GoodSolver();
  const auto before = std::filesystem::current_path();
  SolveContext& ctx = Context();
  ExpectReferenceHeadWarning();
  SolveOptions o;
  ModelRunTARNO(ctx, o);
  EXPECT_EQ(std::filesystem::current_path(), before);
}

TEST_F(ControllerTest, ErrorLogIsShownOnlyWhenItReportsSomething) {
  struct Case {
    std::string log;
    bool report;
  };
  for (const Case& c : {Case{"*\\r\\n", false}, Case{"*\\r\\nline 4: clipped\\r\\n", true},
                        Case{"line 4: bad value\\r\\n", true}, Case{"* \\r\\n", true}}) {
    GoodSolver(c.log);
    ui_.ClearRecord();
    SolveContext& ctx = Context();
    settings_.chkViewError = true;
    settings_.chkViewMessage = false;
    state_ = SolutionState{};
    ExpectReferenceHeadWarning();
    SolveOptions o;
    const SolveReport r = ModelRunTARNO(ctx, o);
    ui_.Verify();
    EXPECT_EQ(r.errorLogHasReport, c.report) << c.log;
    const auto shown = ui_.TextFilesShown();
    EXPECT_EQ(shown.size(), c.report ? 1u : 0u) << c.log;
    if (!shown.empty()) {
      EXPECT_EQ(std::filesystem::path(shown[0]).filename(), "error.log");
    }
  }
}

TEST_F(ControllerTest, ErrorLogIsNotShownWhenTheSwitchIsOffButTheMessageLogIs) {
  GoodSolver("line 4: bad\\r\\n");
  SolveContext& ctx = Context();
  settings_.chkViewError = false;
  settings_.chkViewMessage = true;
  ExpectReferenceHeadWarning();
  SolveOptions o;
  const SolveReport r = ModelRunTARNO(ctx, o);
  EXPECT_TRUE(r.errorLogHasReport);
  ASSERT_EQ(ui_.TextFilesShown().size(), 1u);
  EXPECT_EQ(std::filesystem::path(ui_.TextFilesShown()[0]).filename(), "message.log");
}

class PresentSolution : public ControllerTest {
 protected:
  void SetUp() override {
    ControllerTest::SetUp();
    Touch("golden.SOL");
    Touch("golden.XTR");
    GoodSolver();
    Context();
    state_.SolutionPresent = true;
    state_.ContoursPresent = true;
    state_.PathsPresent = true;
    state_.ContourLinesPresent = true;
    state_.ReferenceHead = 1;  // the aquifer top: no warning
  }
  void ExpectPrompt(int result) {
    ui_.ExpectModal<SolvePrompt>(SolvePrompt::kName, [result](SolvePrompt& p) { p.Result = result; });
  }
};

TEST_F(PresentSolution, CancelInPromptLeavesFilesAndFlags) {
  ExpectPrompt(2);
  SolveOptions o;
  const SolveReport r = ModelRunTARNO(ctx_, o);
  ui_.Verify();
  EXPECT_EQ(r.outcome, SolveOutcome::Cancelled);
  EXPECT_TRUE(Has("golden.SOL"));
  EXPECT_TRUE(Has("golden.XTR"));
  EXPECT_FALSE(Has("tarno1.args"));
  EXPECT_TRUE(state_.SolutionPresent && state_.ContoursPresent && state_.PathsPresent &&
              state_.ContourLinesPresent);
  EXPECT_TRUE(o.ShowLogs);
}

TEST_F(PresentSolution, YesSolvesAnew) {
  ExpectPrompt(6);
  SolveOptions o;
  const SolveReport r = ModelRunTARNO(ctx_, o);
  ui_.Verify();
  EXPECT_EQ(r.writeType, kWriteNewSolve);
  EXPECT_EQ(r.deletedFiles.front(), "golden.SOL");
  EXPECT_EQ(Args("tarno1"), "61 golden");
  EXPECT_TRUE(o.ShowLogs);
}

TEST_F(PresentSolution, NoRegridsKeepsTheSolutionAndSilencesLogs) {
  ExpectPrompt(7);
  SolveOptions o;
  const SolveReport r = ModelRunTARNO(ctx_, o);
  ui_.Verify();
  EXPECT_EQ(r.outcome, SolveOutcome::Completed) << r.failure;
  EXPECT_EQ(r.writeType, kWriteRegrid);
  EXPECT_THAT(r.deletedFiles, ElementsAre("golden.XTR"));
  EXPECT_EQ(Args("tarno1"), "61 REGRID.DAT");
  EXPECT_TRUE(Has("regrid.dat"));
  EXPECT_FALSE(o.ShowLogs);
  EXPECT_TRUE(state_.SolutionPresent);
}

TEST_F(PresentSolution, WithoutPromptTheDefaultIsARegrid) {
  SolveOptions o;
  o.Prompt = false;
  const SolveReport r = ModelRunTARNO(ctx_, o);
  ui_.Verify();
  EXPECT_EQ(r.writeType, kWriteRegrid);
}

TEST_F(PresentSolution, ForceRegridAsksNothing) {
  SolveOptions o;
  o.ForceRegrid = true;
  const SolveReport r = ModelRunTARNO(ctx_, o);
  ui_.Verify();
  EXPECT_EQ(r.writeType, kWriteRegrid);
  EXPECT_EQ(Args("tarno1"), "61 REGRID.DAT");
}

TEST_F(PresentSolution, DeletedSolutionFileForcesNewSolveWithoutQuestion) {
  std::filesystem::remove(Dir() / "golden.SOL");
  ExpectReferenceHeadWarning();
  state_.ReferenceHead = 0;
  SolveOptions o;
  const SolveReport r = ModelRunTARNO(ctx_, o);
  ui_.Verify();
  EXPECT_TRUE(r.newSolution);
  EXPECT_EQ(r.writeType, kWriteNewSolve);
}

TEST_F(PresentSolution, ContinueWritesTheIterationsAndClearsGridFlags) {
  ui_.ExpectModal<FormContinueSolve>(FormContinueSolve::kName, [this](FormContinueSolve& f) {
    EXPECT_EQ(f.tbIterations, settings_.tbIterations);
    f.tbIterations = "7";
    f.chkFastSolution = true;
    EXPECT_TRUE(f.Ok(ui_));
  });
  SolveOptions o;
  o.ContinueSolve = true;
  const SolveReport r = ModelRunTARNO(ctx_, o);
  ui_.Verify();
  EXPECT_EQ(r.outcome, SolveOutcome::Completed) << r.failure;
  EXPECT_EQ(r.writeType, kWriteContinue);
  EXPECT_EQ(Args("tarno1"), "61 golden");
  EXPECT_TRUE(settings_.chkFastSolution);
  const std::string dat = ReadFile(Dir() / "golden.dat");
  EXPECT_NE(dat.find(" load golden\r\n"), std::string::npos);
  EXPECT_NE(dat.find(" solve 7 "), std::string::npos) << dat;
  Statement st = db_.PrepareRaw("select SOLVERIterations, FastSolution from Model");
  ASSERT_TRUE(st.Step());
  EXPECT_EQ(st.GetInt64(0), 7);
  EXPECT_TRUE(st.GetBool(1));
  // The continue recomputes the grid (the writer set the flag again) but the
  // contour lines of the old grid are gone.
  EXPECT_EQ(state_.ContoursPresent, settings_.chkContour);
}

TEST_F(PresentSolution, CancelledContinueFormChangesNothing) {
  ui_.ExpectModal<FormContinueSolve>(FormContinueSolve::kName, [](FormContinueSolve&) {});
  SolveOptions o;
  o.ContinueSolve = true;
  const SolveReport r = ModelRunTARNO(ctx_, o);
  ui_.Verify();
  EXPECT_EQ(r.outcome, SolveOutcome::Cancelled);
  EXPECT_TRUE(Has("golden.XTR"));
  EXPECT_TRUE(state_.ContourLinesPresent);
}

TEST_F(PresentSolution, ContinueFormRefusesZeroIterations) {
  FormContinueSolve f;
  f.Load(settings_, ProjectPath());
  f.tbIterations = "0";
  ui_.ExpectMessage("Bad Entry", {"Number of Iterations must be positive.",
                                  "Please enter a new value for the Number of Iterations."});
  EXPECT_FALSE(f.Ok(ui_));
  EXPECT_TRUE(f.Cancel);
  ui_.Verify();
}

TEST_F(PresentSolution, RewrittenRegridWritesBothFilesAndDropsContourLines) {
  SolveOptions o;
  o.ForceRegrid = true;
  o.Rewrite = true;
  state_.ContoursPresent = false;
  const SolveReport r = ModelRunTARNO(ctx_, o);
  EXPECT_EQ(r.outcome, SolveOutcome::Completed) << r.failure;
  EXPECT_TRUE(Has("golden.dat"));
  EXPECT_TRUE(Has("regrid.dat"));
  EXPECT_FALSE(state_.ContourLinesPresent);
}

TEST_F(ControllerTest, FatalRunShowsEveryLineOfTheReportAndClearsTheState) {
  FakeProgram("tarno1", "printf 'The model could not be solved (line 12).\\r\\nSingular  matrix, "
                        "column 3\\r\\n' > TARNO.OPS\nexit 3");
  SolveContext& ctx = Context();
  state_.ReferenceHead = 1;
  ui_.ExpectMessage("Fatal execution error",
                    {"TARNO Encountered a fatal error: ", "",
                     "The model could not be solved (line 12).", "Singular  matrix, column 3"})
      .WithIcon(Icon::Critical);
  SolveOptions o;
  const SolveReport r = ModelRunTARNO(ctx, o);
  ui_.Verify();
  EXPECT_EQ(r.outcome, SolveOutcome::Fatal);
  EXPECT_EQ(r.solverStatus, 3);
  EXPECT_FALSE(Has("TARNO.OPS"));
  EXPECT_FALSE(state_.SolutionPresent || state_.ContoursPresent || state_.PathsPresent ||
               state_.ContourLinesPresent);
}

TEST_F(ControllerTest, EmptyFatalReportStillGivesTheBox) {
  FakeProgram("tarno1", ": > tarno.ops");
  SolveContext& ctx = Context();
  state_.ReferenceHead = 1;
  ui_.ExpectMessage("Fatal execution error", {"TARNO Encountered a fatal error: ", ""});
  SolveOptions o;
  EXPECT_EQ(ModelRunTARNO(ctx, o).outcome, SolveOutcome::Fatal);
  ui_.Verify();
  EXPECT_FALSE(Has("tarno.ops"));
}

TEST_F(ControllerTest, NonZeroExitWithoutReportCountsAsSuccess) {
  GoodSolver("*\\r\\n", "exit 4");
  SolveContext& ctx = Context();
  state_.ReferenceHead = 1;
  SolveOptions o;
  const SolveReport r = ModelRunTARNO(ctx, o);
  EXPECT_EQ(r.outcome, SolveOutcome::Completed);
  EXPECT_EQ(r.solverStatus, 4);
  EXPECT_TRUE(state_.SolutionPresent);
}

TEST_F(ControllerTest, MissingSolverIsToldThenTheStartFailsIntoTheReport) {
  Touch("golden.XTR");
  SolveContext& ctx = Context();
  state_.ReferenceHead = 1;
  ui_.ExpectMessage("Executable Missing", {"tarno1 does not exist in the tarno directory!"});
  ui_.ExpectMessageTitled(kUnhandledErrorTitle);
  SolveOptions o;
  const SolveReport r = ModelRunTARNO(ctx, o);
  ui_.Verify();
  EXPECT_EQ(r.outcome, SolveOutcome::Failed);
  const auto msgs = ui_.Messages();
  ASSERT_EQ(msgs.size(), 2u);
  ASSERT_EQ(msgs[1].lines.size(), 3u);
  EXPECT_EQ(msgs[1].lines[0], "Unhandled error in ModelRunTARNO");
  EXPECT_NE(msgs[1].lines[1].find(" (error number 53)"), std::string::npos) << msgs[1].lines[1];
  // The old extract file went before the start failed.
  EXPECT_FALSE(Has("golden.XTR"));
  EXPECT_FALSE(state_.SolutionPresent);
}

TEST_F(ControllerTest, ReadOnlyErrorHasItsOwnAdvice) {
  ui_.ExpectMessageTitled("Read Only File").WithIcon(Icon::Critical);
  TARNOErrorAnalysis(ui_, "ModelRunTARNO", "attempt to write a readonly database", kErrorReadOnly);
  ASSERT_EQ(ui_.Messages().size(), 1u);
  const UiCall m = ui_.Messages()[0];
  EXPECT_EQ(m.title, "Read Only File");
  EXPECT_THAT(m.lines,
              ElementsAre("attempt to write a readonly database (error number 3051)",
                          " The file might be 'read only'. If the file was copied from, or opened "
                          "from, a cd, the file will be 'read only'."));
}

}  // namespace
}  // namespace tarno::testing
