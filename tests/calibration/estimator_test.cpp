// The built-in estimator: recovery of known parameters on a stand-in model (a shell
// script) and on a synthetic groundwater model solved by tarno1, the same answer on
// one worker and on several, a failing model run, and the refusals of a project
// that has nothing to estimate.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>

#include "calibration/estimator.h"
#include "calibration/estimator_dialog.h"
#include "calibration/pest_files.h"
#include "core/error.h"
#include "pest_fixture.h"
#include "solver/process.h"
#include "support/program_runner.h"
#include "support/temp_dir.h"

namespace tarno::testing {
namespace {

namespace fs = std::filesystem;

// The stand-in model y = a x^2 / (1 + b x) with a = 2.5, b = 0.4 and a fixed c, its
// control file starting from a = 7.5, b = 1.2 (a factor of 3 off).
class FakeModelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (const auto& e : fs::directory_iterator(fs::path(TARNO_TEST_DATA_DIR) / "estimator"))
      fs::copy_file(e.path(), dir_ / e.path().filename());
    fs::permissions(dir_ / "model.sh", fs::perms::owner_exec, fs::perm_options::add);
    options_.workRoot = dir_.Path();
  }
  void TearDown() override { ::unsetenv("FAIL_MODEL"); }
  test::TempDir dir_{"est-fake"};
  EstimatorOptions options_;
};

TEST_F(FakeModelTest, RecoversTheParametersAndRecordsEveryIteration) {
  const ControlFile cf = ReadControlFile(dir_ / "fake.pst");
  std::vector<int> seen;
  int progressCalls = 0;
  options_.threads = 4;
  options_.onIteration = [&](const EstimatorIteration& it) { seen.push_back(it.number); };
  options_.onProgress = [&](int done, int planned, int) {
    EXPECT_LE(done, planned);
    ++progressCalls;
  };
  const EstimatorResult r = Estimate(cf, options_);
  ASSERT_TRUE(r.ok) << r.failure;
  EXPECT_NEAR(r.values[0] / 2.5, 1, 1e-6);
  EXPECT_NEAR(r.values[1] / 0.4, 1, 1e-6);
  EXPECT_DOUBLE_EQ(r.values[2], 3);  // fixed
  EXPECT_LE(r.iterations, 15);
  EXPECT_LT(r.phi, 1e-12);
  // Iteration 0 is the initial run; phi never rises.
  ASSERT_EQ(seen.size(), r.history.size());
  EXPECT_EQ(seen.front(), 0);
  for (std::size_t k = 1; k < r.history.size(); ++k)
    EXPECT_LT(r.history[k].phi, r.history[k - 1].phi);
  EXPECT_EQ(progressCalls, r.runs);
  // The run folders are gone.
  for (const auto& e : fs::directory_iterator(dir_.Path()))
    EXPECT_EQ(e.path().filename().string().rfind("tarno-estimate-", 0), std::string::npos);

  const std::string rec = EstimatorRecordText(cf, r);
  EXPECT_NE(rec.find("Iteration 0  phi"), std::string::npos);
  EXPECT_NE(rec.find("  y3 "), std::string::npos);
  EXPECT_NE(rec.find("Ended after " + std::to_string(r.iterations) + " iterations"),
            std::string::npos);
}

TEST_F(FakeModelTest, OneWorkerAndManyWorkersGiveTheSameEstimate) {
  const ControlFile cf = ReadControlFile(dir_ / "fake.pst");
  options_.threads = 1;
  const EstimatorResult one = Estimate(cf, options_);
  options_.threads = 8;
  const EstimatorResult many = Estimate(cf, options_);
  ASSERT_TRUE(one.ok) << one.failure;
  ASSERT_TRUE(many.ok) << many.failure;
  EXPECT_EQ(one.runs, many.runs);
  EXPECT_EQ(one.iterations, many.iterations);
  EXPECT_EQ(one.values, many.values);
}

TEST_F(FakeModelTest, AFailingRunStopsTheEstimationAndSaysWhy) {
  const ControlFile cf = ReadControlFile(dir_ / "fake.pst");
  ::setenv("FAIL_MODEL", "1", 1);
  const EstimatorResult r = Estimate(cf, options_);
  EXPECT_FALSE(r.ok);
  EXPECT_NE(r.failure.find("Model run 1 (initial values"), std::string::npos) << r.failure;
  EXPECT_NE(r.failure.find("fatal error: Fatal: stopped by the test"), std::string::npos)
      << r.failure;
  EXPECT_EQ(r.runs, 1);
}

TEST_F(FakeModelTest, ATemplateFieldWithoutAParameterFailsTheRun) {
  std::ofstream(dir_ / "fake.tpl", std::ios::app) << " d !zz  !\r\n";
  const EstimatorResult r = Estimate(ReadControlFile(dir_ / "fake.pst"), options_);
  EXPECT_FALSE(r.ok);
  EXPECT_NE(r.failure.find("the parameter field \"ZZ\" has no parameter"), std::string::npos)
      << r.failure;
}

// The synthetic model of examples/calibration-model.sh, built with tarnocmd: known
// conductivity 20 and recharge 0.0005, both put off by a factor of 3.
class SyntheticModelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const test::RunResult b =
        test::RunExecutable(fs::path(TARNO_SOURCE_DIR) / "examples" / "calibration-model.sh",
                            {TARNO_BIN_DIR, dir_.Path().string(), "6"},
                            {.env = {"TARNO_CONFIG_DIR=" + (dir_ / "config").string()}});
    ASSERT_EQ(b.status, 0) << b.err;
    project_ = dir_ / "synth.trn";
    Database db = Database::Open(project_);
    settings_.Load(db);
  }
  SolveContext Context(ScriptedUserInterface& ui) {
    SolveContext ctx;
    ctx.projectPath = project_;
    ctx.settings = &settings_;
    ctx.state = &state_;
    ctx.ui = &ui;
    ctx.programDirectory = TARNO_BIN_DIR;
    ctx.programOutput = "/dev/null";
    ctx.solverErrors = "/dev/null";
    return ctx;
  }
  double Conductivity() {
    Database db = Database::Open(project_);
    Statement st = db.Prepare("select AQHydCond from Model");
    st.Step();
    return st.GetDouble(0);
  }
  double Recharge() {
    Database db = Database::Open(project_);
    const auto upland = FindByLabel(db, ElementKind::Inhomogeneity, "Upland");
    EXPECT_TRUE(upland.has_value());
    return upland ? upland->row.Number("Recharge") : -1;
  }
  test::TempDir dir_{"est-synth"};
  fs::path project_;
  ModelSettings settings_;
  SolutionState state_;
};

TEST_F(SyntheticModelTest, RecoversConductivityAndRechargeAndImportsThem) {
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled("PEST Parameters Imported");
  SolveContext ctx = Context(ui);
  EstimatorOptions o;
  o.workRoot = dir_.Path();
  const EstimateReport rep = RunEstimation(ctx, o, true);
  ASSERT_TRUE(rep.ok) << rep.failure;
  EXPECT_TRUE(rep.imported);
  EXPECT_LE(rep.result.iterations, 10);
  EXPECT_NEAR(Conductivity() / 20.0, 1, 1e-3);
  EXPECT_NEAR(Recharge() / 0.0005, 1, 1e-3);
  EXPECT_TRUE(fs::exists(rep.parFile));
  EXPECT_TRUE(fs::exists(rep.recordFile));
  EXPECT_TRUE(fs::exists(dir_ / "PEST2TARNO.log"));
}

TEST_F(SyntheticModelTest, WithoutImportTheProjectKeepsItsValues) {
  ScriptedUserInterface ui;
  SolveContext ctx = Context(ui);
  EstimatorOptions o;
  o.workRoot = dir_.Path();
  o.maxIterations = 2;
  const EstimateReport rep = RunEstimation(ctx, o, false);
  ASSERT_TRUE(rep.ok) << rep.failure;
  EXPECT_FALSE(rep.imported);
  EXPECT_EQ(rep.result.iterations, 2);
  EXPECT_DOUBLE_EQ(Conductivity(), 60);
  EXPECT_DOUBLE_EQ(Recharge(), 0.0015);
  // The .par holds the estimate in the form the PEST import reads.
  const ControlFile cf = ReadControlFile(dir_ / "synth.pst");
  EXPECT_EQ(test::ReadFile(rep.parFile), ParFileText(cf.parameters, rep.result.values));
}

TEST_F(SyntheticModelTest, ASolverThatFailsLeavesTheProjectUnchanged) {
  // A solver in its place that always ends with a fatal error.
  fs::create_directories(dir_ / "bad");
  test::WriteFile(dir_ / "bad" / "tarno1",
                  "#!/bin/sh\necho 'Singular matrix' > TARNO.OPS\nexit 1\n");
  fs::permissions(dir_ / "bad" / "tarno1", fs::perms::owner_exec, fs::perm_options::add);
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled(kEstimationFailedTitle);
  SolveContext ctx = Context(ui);
  ctx.programDirectory = dir_ / "bad";
  EstimatorOptions o;
  o.workRoot = dir_.Path();
  const EstimateReport rep = RunEstimation(ctx, o, true);
  EXPECT_FALSE(rep.ok);
  EXPECT_NE(rep.failure.find("Singular matrix"), std::string::npos) << rep.failure;
  EXPECT_FALSE(fs::exists(dir_ / "synth.par"));
  EXPECT_DOUBLE_EQ(Conductivity(), 60);
  EXPECT_DOUBLE_EQ(Recharge(), 0.0015);
  ui.Verify();
}

TEST_F(SyntheticModelTest, ThePestDialogsButtonEstimatesImportsAndShowsTheRecord) {
  ScriptedUserInterface ui;
  // A present solution is only given up after a Yes.
  state_.SolutionPresent = true;
  ui.ExpectMessageTitled("Warning", Answer::No);
  SolveContext ctx = Context(ui);
  BlockingWaiter waiter;
  ctx.waiter = &waiter;
  PestDialog dialog(ctx, nullptr);
  EXPECT_FALSE(EstimateInPestDialog(dialog, ctx, {}));
  EXPECT_FALSE(fs::exists(dir_ / "synth.pst"));
  ui.Verify();

  ui.ExpectMessageTitled("Warning", Answer::Yes);
  ui.ExpectMessageTitled("PEST Parameters Imported");
  std::vector<int> percents;
  std::string lastText;
  ASSERT_TRUE(EstimateInPestDialog(dialog, ctx, [&](int percent, const std::string& text) {
    percents.push_back(percent);
    lastText = text;
  }));
  ui.Verify();
  ASSERT_FALSE(percents.empty());
  for (int p : percents) {
    EXPECT_GT(p, 0);
    EXPECT_LE(p, 100);
  }
  EXPECT_EQ(lastText.rfind("Iteration ", 0), 0u) << lastText;
  EXPECT_EQ(dialog.shownFile, "synth.erc");
  EXPECT_NE(dialog.TextBox.find("Iteration 0  phi"), std::string::npos);
  EXPECT_NEAR(Conductivity() / 20.0, 1, 1e-3);
  EXPECT_NEAR(Recharge() / 0.0005, 1, 1e-3);
}

// A project with nothing to estimate is refused before anything is written.
class EstimatorRefusalTest : public PestProject {};

TEST_F(EstimatorRefusalTest, NoTestPointsOrNoTagsAreRefusedWithAMessage) {
  db_.Execute("update Model set chkScenarioHydCond=True, ScenHydCond='Kaq', AQHydCond=10");
  {
    ScriptedUserInterface ui;
    ui.ExpectMessage(kNoTestPointsTitle,
                     {"There are no Test Points with observations in this project!",
                      "No estimation will be made."});
    SolveContext ctx = Context(ui);
    const EstimateReport rep = RunEstimation(ctx, {}, true);
    EXPECT_FALSE(rep.ok);
    ui.Verify();
  }
  db_.Execute("update Model set chkScenarioHydCond=False");
  TestPoint("TP1", "Piezometer", 12.5, 1.0);
  {
    ScriptedUserInterface ui;
    ui.ExpectMessage("No Scenarios",
                     {"There are no Scenarios in this project!", "No estimation will be made."});
    SolveContext ctx = Context(ui);
    const EstimateReport rep = RunEstimation(ctx, {}, true);
    EXPECT_FALSE(rep.ok);
    ui.Verify();
  }
  EXPECT_FALSE(fs::exists(dir_ / "m.pst"));
  EXPECT_FALSE(fs::exists(dir_ / "m.tpl"));
}

}  // namespace
}  // namespace tarno::testing

namespace tarno::testing {
namespace {

// tarnocmd estimate: its lines, its exit status, and a project it refuses.
TEST(EstimateCommandTest, PrintsAnIterationPerLineAndRefusesBadInput) {
  test::TempDir dir("est-cmd");
  const std::vector<std::string> env = {"TARNO_CONFIG_DIR=" + (dir / "config").string()};
  ASSERT_EQ(test::RunExecutable(fs::path(TARNO_SOURCE_DIR) / "examples" / "calibration-model.sh",
                                {TARNO_BIN_DIR, dir.Path().string(), "4"}, {.env = env})
                .status,
            0);
  const std::string project = (dir / "synth.trn").string();
  test::RunResult r = test::RunProgram(
      "tarnocmd", {"estimate", project, "--no-import", "--threads", "2"}, {.env = env});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out.rfind("Iteration 0: phi ", 0), 0u) << r.out;
  EXPECT_NE(r.out.find("\nIteration 1: phi "), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("Not imported (--no-import)"), std::string::npos) << r.out;
  EXPECT_TRUE(fs::exists(dir / "synth.par"));

  r = test::RunProgram("tarnocmd", {"estimate", project, "--threads", "zero"}, {.env = env});
  EXPECT_EQ(r.status, 2);
  EXPECT_NE(r.err.find("invalid number \"zero\" for --threads"), std::string::npos) << r.err;

  // Without test points.
  for (int i = 1; i <= 4; ++i)
    ASSERT_EQ(
        test::RunProgram("tarnocmd", {"delete", project, "TP" + std::to_string(i)}, {.env = env})
            .status,
        0);
  r = test::RunProgram("tarnocmd", {"estimate", project}, {.env = env});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(
      r.err.find("No Test Points: There are no Test Points with observations in this project!"),
      std::string::npos)
      << r.err;
}

}  // namespace
}  // namespace tarno::testing
