// The advanced dialogs behind the model settings (relaxation, convergence), the
// integrity check's holder, and the leakage hook after a solve.
#include "controller_fixture.h"
#include "solver/solve_dialogs.h"

namespace tarno::testing {
namespace {

const std::vector<std::string> kOuterMessage = {
    "Number of Iterations (Outside Loop) must be positive.",
    "Please enter a new value for the Number of Iterations for the Outside Loop."};
const std::vector<std::string> kInnerMessage = {
    "Number of Iterations must be positive.",
    "Please enter a new value for the Number of Iterations."};

class AdvancedDialogs : public SolverProject {};

TEST_F(AdvancedDialogs, RelaxationChecksTheOuterCountOnlyWithTheLoopOn) {
  Sql("update Model set OuterIterationsFlag=1, OuterIterations=4");
  ModelSettings s = LoadSettings();
  RelaxDialog d;
  d.Load(s);
  EXPECT_EQ(d.DialogName(), "relax");
  EXPECT_TRUE(d.chkOutsideLoop);
  EXPECT_EQ(d.tbOuterIterations, "4");

  // A count of zero (or no number) with the loop on is refused; nothing is copied.
  for (const char* bad : {"0", "", "-2", "x"}) {
    SCOPED_TRACE(bad);
    ScriptedUserInterface ui;
    ui.ExpectMessage("Bad Entry", kOuterMessage).WithIcon(Icon::Exclamation);
    d.tbOuterIterations = bad;
    EXPECT_FALSE(d.Ok(s, ui));
    ui.Verify();
    EXPECT_EQ(d.Result, 2);
    EXPECT_EQ(s.tbOuterIterations, "4");
  }
  // With the loop off the count is not looked at.
  ScriptedUserInterface quiet;
  d.chkOutsideLoop = false;
  d.tbOuterIterations = "0";
  EXPECT_TRUE(d.Ok(s, quiet));
  quiet.Verify();
  EXPECT_EQ(d.Result, 1);
  EXPECT_FALSE(s.chkOutsideLoop);
  EXPECT_EQ(s.tbOuterIterations, "0");

  // The model settings' OK writes what the dialog gave them.
  d.chkOutsideLoop = true;
  d.tbOuterIterations = "7";
  ASSERT_TRUE(d.Ok(s, quiet));
  ASSERT_TRUE(s.Ok(db_, quiet).accepted);
  Statement st = db_.PrepareRaw("select OuterIterationsFlag, OuterIterations from Model");
  ASSERT_TRUE(st.Step());
  EXPECT_NE(st.GetInt64(0), 0);
  EXPECT_EQ(st.GetInt64(1), 7);
}

TEST_F(AdvancedDialogs, ConvergenceChecksTheInnerCountAndCopiesTheSwitches) {
  Sql("update Model set SOLVERIterations=3, FastSolution=1, StoreMatrixOnDisk=0");
  ModelSettings s = LoadSettings();
  ConvergeDialog d;
  d.Load(s);
  EXPECT_EQ(d.DialogName(), "Converge");
  EXPECT_EQ(d.tbIterations, "3");
  EXPECT_TRUE(d.chkFastSolution);
  EXPECT_FALSE(d.chkStoreMatrixOnDisk);

  ScriptedUserInterface ui;
  ui.ExpectMessage("Bad Entry", kInnerMessage).WithIcon(Icon::Exclamation);
  d.tbIterations = "0";
  d.chkStoreMatrixOnDisk = true;
  EXPECT_FALSE(d.Ok(s, ui));
  ui.Verify();
  EXPECT_EQ(s.Iterations(), 3);
  EXPECT_FALSE(s.chkStoreMatrixOnDisk);

  d.tbIterations = "12";
  d.chkFastSolution = false;
  ASSERT_TRUE(d.Ok(s, ui));
  EXPECT_EQ(d.Result, 1);
  EXPECT_EQ(s.Iterations(), 12);
  EXPECT_FALSE(s.chkFastSolution);
  EXPECT_TRUE(s.chkStoreMatrixOnDisk);
  ASSERT_TRUE(s.Ok(db_, ui).accepted);
  Statement st =
      db_.PrepareRaw("select SOLVERIterations, FastSolution, StoreMatrixOnDisk from Model");
  ASSERT_TRUE(st.Step());
  EXPECT_EQ(st.GetInt64(0), 12);
  EXPECT_EQ(st.GetInt64(1), 0);
  EXPECT_NE(st.GetInt64(2), 0);
}

TEST(SolverIntegrityHolder, StartsAtZeroUnderItsName) {
  SolverIntegrity d;
  EXPECT_EQ(d.DialogName(), "SolverIntegrity");
  EXPECT_STREQ(SolverIntegrity::kTitle, "Solver Integrity Check");
  for (double v : {d.VxAnyl, d.VxNum, d.VyAnyl, d.VyNum, d.VzAnyl, d.VzNum, d.divqAnyl,
                   d.divqNum, d.divCapQAnyl, d.divCapQNum})
    EXPECT_EQ(v, 0.0);
}

// The leakage file is handed to the MODFLOW coupling only when the solve included
// the leakage of a grid.
TEST_F(ControllerTest, LeakageHookRunsOnlyWithAGridAndLeakage) {
  GoodSolver();
  SolveContext& ctx = Context();
  state_.ReferenceHead = 1;
  std::vector<std::filesystem::path> loaded;
  ctx.hooks.loadLeakage = [&](const std::filesystem::path& p) { loaded.push_back(p); };
  struct Case {
    bool grid, leakage;
  };
  for (const Case c : {Case{false, false}, Case{true, false}, Case{false, true}, Case{true, true}}) {
    ctx.modflow.GridPresent = c.grid;
    ctx.modflow.IncludeLeakage = c.leakage;
    state_.SolutionPresent = false;
    SolveOptions o;
    EXPECT_EQ(ModelRunTARNO(ctx, o).outcome, SolveOutcome::Completed);
  }
  ASSERT_EQ(loaded.size(), 1u);
  EXPECT_EQ(loaded[0], Dir() / "golden.vlk");
}

}  // namespace
}  // namespace tarno::testing
