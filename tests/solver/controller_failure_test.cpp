// The ways a solve can go wrong after the command file: a missing program, a solver
// that crashes or is killed, an extract file that is missing, empty, cut short,
// garbage or of another project. Each gives its message, leaves the project file
// whole with its blank result rows, and the next solve works.
#include "controller_fixture.h"

namespace tarno::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

class SolveFailure : public ControllerTest {
 protected:
  void SetUp() override {
    ControllerTest::SetUp();
    // Two discharge wells and a discharge line-sink of two segments.
    const auto w1 = Point(50, 50);
    const auto w2 = Point(150, 50);
    Sql("insert into Wells (VID, Label, Head) values (" + std::to_string(w1) + ", 'North', 300);"
        "insert into Wells (VID, Label, Head) values (" + std::to_string(w2) + ", 'South', 200);");
    const auto pid = String({{0, 0}, {100, 10}, {200, 0}});
    Sql("insert into LinesinkStrings (PID, Label, HeadSpecified, StartingHead, EndingHead) values "
        "(" + std::to_string(pid) + ", 'Ditch', 0, 1.5, 1.5)");
    wl1_ = "WL_" + Pad6(w1);
    wl2_ = "WL_" + Pad6(w2);
    ls1_ = "LS_" + Pad6(pid) + "_0100";
    ls2_ = "LS_" + Pad6(pid) + "_0200";
    Context();
    state_.ReferenceHead = 1;  // the aquifer top: no warning
  }

  static std::string Pad6(std::int64_t v) {
    std::string s = std::to_string(v);
    return std::string(6 - s.size(), '0') + s;
  }

  // An extract file of this model: both wells and both segments.
  std::string GoodExtract() const {
    return "* data points\r\n"
           "* discharge specified wells\r\n"
           " -5.0E+01, 0.0E+00, 1.0E+00, 3.0E+02, 9.5E+00, " + wl1_ + "\r\n"
           " 5.0E+01, 0.0E+00, 1.0E+00, 2.0E+02, 9.75E+00, " + wl2_ + "\r\n"
           "* discharge specified line sinks\r\n"
           " -1.0E+02, -5.0E+01, 0.0E+00, -4.0E+01, 1.5075E+02, " + ls1_ + "\r\n"
           " 0.0E+00, -4.0E+01, 1.0E+02, -5.0E+01, 1.5075E+02, " + ls2_ + "\r\n";
  }

  // A solver that leaves `extract` as its extract file (as written, byte for byte),
  // a solution and quiet logs, then runs `tail`.
  void SolverWriting(const std::string& extract, const std::string& tail = "") {
    std::ofstream(Dir() / "prepared.xtr", std::ios::binary | std::ios::trunc) << extract;
    FakeProgram("tarno1", "printf 'solution' > golden.SOL\n"
                          "cp prepared.xtr golden.XTR\n"
                          "printf '*\\r\\n' > error.log\n"
                          "printf 'Iteration 1\\r\\n' > message.log\n" + tail);
  }

  SolveReport Solve() {
    SolveOptions o;
    o.Prompt = false;
    return ModelRunTARNO(ctx_, o);
  }

  // The file is a sound database; the writer's blank rows are there, one a well
  // and one a segment.
  void ExpectConsistentProject() {
    Statement ok = db_.PrepareRaw("pragma integrity_check");
    ASSERT_TRUE(ok.Step());
    EXPECT_EQ(ok.GetText(0), "ok");
    EXPECT_EQ(Count("WLResults"), 2);
    EXPECT_EQ(Count("LSResults"), 2);
  }
  std::int64_t Count(const std::string& table) {
    Statement st = db_.PrepareRaw("select count(*) from " + table);
    st.Step();
    return st.GetInt64(0);
  }
  double WellDischarge(const std::string& label) {
    Statement st = db_.PrepareRaw("select Discharge from WLResults where TARNOLabel = ?");
    st.Bind(1, label);
    return st.Step() ? st.GetDouble(0) : -1;
  }

  // After a failure: a good run completes, loads every row and is a new solve when
  // the failure took the solution away.
  void ExpectNextSolveWorks(bool newSolution) {
    ui_.Verify();
    ui_.ClearRecord();
    SolverWriting(GoodExtract());
    const SolveReport r = Solve();
    ui_.Verify();
    EXPECT_EQ(r.outcome, SolveOutcome::Completed) << r.failure;
    EXPECT_EQ(r.newSolution, newSolution);
    EXPECT_EQ(r.load.rowsUpdated, 4);
    EXPECT_FALSE(r.resultsUnusable);
    EXPECT_TRUE(state_.SolutionPresent);
    EXPECT_DOUBLE_EQ(WellDischarge(wl2_), 200.0);
  }

  std::string wl1_, wl2_, ls1_, ls2_;
};

TEST_F(SolveFailure, AGoodExtractFillsEveryRow) {
  SolverWriting(GoodExtract());
  const SolveReport r = Solve();
  ui_.Verify();
  EXPECT_EQ(r.outcome, SolveOutcome::Completed) << r.failure;
  EXPECT_EQ(r.load.records, 4);
  EXPECT_EQ(r.load.unmatched, 0);
  EXPECT_EQ(r.load.rowsUpdated, 4);
  EXPECT_FALSE(r.resultsUnusable);
  EXPECT_DOUBLE_EQ(WellDischarge(wl1_), 300.0);
}

// A crash and a kill from outside leave no report; half-written files are not
// loaded, the state is cleared as after a fatal run.
TEST_F(SolveFailure, SolverEndedBySignalIsFatalAndNothingIsLoaded) {
  for (const char* signal : {"KILL", "SEGV"}) {
    SCOPED_TRACE(signal);
    ui_.ClearRecord();
    // The solver dies in the middle of its extract file.
    SolverWriting(GoodExtract().substr(0, 120), std::string("kill -") + signal + " $$");
    state_.ContoursPresent = true;
    ui_.ExpectMessageTitled("Fatal execution error").WithIcon(Icon::Critical);
    const SolveReport r = Solve();
    ui_.Verify();
    EXPECT_EQ(r.outcome, SolveOutcome::Fatal);
    EXPECT_TRUE(EndedBySignal(r.solverStatus)) << r.solverStatus;
    const UiCall m = ui_.Messages().back();
    ASSERT_EQ(m.lines.size(), 4u);
    EXPECT_EQ(m.lines[0], "TARNO Encountered a fatal error: ");
    EXPECT_THAT(m.lines[2], HasSubstr("The solver ended abnormally (signal "));
    EXPECT_EQ(m.lines[3], "Its result files are incomplete and were not loaded.");
    EXPECT_FALSE(state_.SolutionPresent || state_.ContoursPresent);
    EXPECT_DOUBLE_EQ(WellDischarge(wl1_), 0.0);  // the blank row of the writer
    ExpectConsistentProject();
  }
  ExpectNextSolveWorks(true);
}

TEST_F(SolveFailure, NonZeroExitAfterAGoodExtractStillLoads) {
  // The exit status alone decides nothing: only TARNO.OPS or a signal is fatal.
  SolverWriting(GoodExtract(), "exit 2");
  const SolveReport r = Solve();
  EXPECT_EQ(r.outcome, SolveOutcome::Completed);
  EXPECT_EQ(r.solverStatus, 2);
  EXPECT_FALSE(EndedBySignal(r.solverStatus));
  EXPECT_EQ(r.load.rowsUpdated, 4);
}

TEST_F(SolveFailure, MissingExtractFileIsAFileError) {
  FakeProgram("tarno1", "printf 'solution' > golden.SOL\nprintf '*\\r\\n' > error.log");
  ui_.ExpectMessageTitled(kUnhandledErrorTitle);
  const SolveReport r = Solve();
  ui_.Verify();
  EXPECT_EQ(r.outcome, SolveOutcome::Failed);
  EXPECT_THAT(r.failure, HasSubstr("golden.xtr"));
  EXPECT_THAT(ui_.Messages().back().lines[1], HasSubstr(" (error number 53)"));
  ExpectConsistentProject();
  ExpectNextSolveWorks(false);
}

TEST_F(SolveFailure, TruncatedExtractLoadsWhatIsWholeAndNamesTheCutRecord) {
  // Cut in the middle of the second well's record.
  const std::string good = GoodExtract();
  const std::string cut = good.substr(0, good.find(wl2_) - 12);
  SolverWriting(cut);
  ui_.ExpectMessageTitled("Import error").WithIcon(Icon::Critical);
  const SolveReport r = Solve();
  ui_.Verify();
  EXPECT_EQ(r.outcome, SolveOutcome::Completed);
  EXPECT_EQ(r.load.badRecords, 1);
  EXPECT_EQ(r.load.rowsUpdated, 1);
  EXPECT_FALSE(r.resultsUnusable);
  const UiCall m = ui_.Messages().back();
  EXPECT_EQ(m.lines.at(0), "Bad DISCHARGE WELL record: Record 4 of TARNO results file:");
  EXPECT_EQ(m.lines.at(1), " 5.0E+01, 0.0E+00, 1.0E+00, 2.0E+02");
  EXPECT_DOUBLE_EQ(WellDischarge(wl1_), 300.0);
  EXPECT_DOUBLE_EQ(WellDischarge(wl2_), 0.0);
  ExpectConsistentProject();
  ExpectNextSolveWorks(false);
}

TEST_F(SolveFailure, EmptyExtractIsTold) {
  SolverWriting("");
  ui_.ExpectMessageTitled("Import error").WithIcon(Icon::Critical);
  const SolveReport r = Solve();
  ui_.Verify();
  EXPECT_EQ(r.outcome, SolveOutcome::Completed);
  EXPECT_TRUE(r.resultsUnusable);
  const UiCall m = ui_.Messages().back();
  EXPECT_THAT(m.lines.at(0), HasSubstr("golden.XTR is empty."));
  EXPECT_THAT(m.lines.at(1), HasSubstr("no results were loaded"));
  ExpectConsistentProject();
  ExpectNextSolveWorks(false);
}

TEST_F(SolveFailure, GarbageExtractIsTold) {
  std::string garbage = "\x7f" "ELF\x02\x01\x01";
  garbage += std::string("\0\0\0\r\n\xff\xfe", 7) + "solver output\r\n @@@ ,,,\r\n";
  SolverWriting(garbage);
  ui_.ExpectMessageTitled("Import error");
  const SolveReport r = Solve();
  ui_.Verify();
  EXPECT_TRUE(r.resultsUnusable);
  EXPECT_THAT(ui_.Messages().back().lines.at(0), HasSubstr("has no section of results"));
  EXPECT_EQ(r.load.rowsUpdated, 0);
  ExpectConsistentProject();
  ExpectNextSolveWorks(false);
}

TEST_F(SolveFailure, ExtractOfAnotherProjectIsTold) {
  SolverWriting("* data points\r\n"
                "@ 1.0E+00, 2.0E+00, 3.0, 4.0, 5.0, 6.0, 7.0, 8.0, 4.2E+01, 0, 0, 0, 0, 0, TP_000917\r\n"
                "* discharge specified wells\r\n"
                " 1.0E+00, 2.0E+00, 3.0E-01, 5.0E+02, 4.0E+01, WL_000917\r\n"
                "* head specified line sinks\r\n"
                " 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, LS_000918_0100\r\n");
  ui_.ExpectMessageTitled("Import error");
  const SolveReport r = Solve();
  ui_.Verify();
  EXPECT_TRUE(r.resultsUnusable);
  EXPECT_EQ(r.load.records, 3);
  EXPECT_EQ(r.load.unmatched, 3);
  EXPECT_THAT(ui_.Messages().back().lines,
              ElementsAre(HasSubstr("None of the 3 records of the TARNO results file "),
                          "The file may be the results of another project; no results were "
                          "loaded."));
  ExpectConsistentProject();
  ExpectNextSolveWorks(false);
}

TEST_F(SolveFailure, SomeUnknownLabelsAmongKnownOnesPassSilently) {
  SolverWriting(GoodExtract() + " 1, 2, 3, 4, 5.0, LS_000999_0100\r\n");
  const SolveReport r = Solve();
  ui_.Verify();  // no message
  EXPECT_FALSE(r.resultsUnusable);
  EXPECT_EQ(r.load.unmatched, 1);
  EXPECT_EQ(r.load.rowsUpdated, 4);
}

TEST_F(SolveFailure, MissingSolverThenPresentSolver) {
  ui_.ExpectMessage("Executable Missing", {"tarno1 does not exist in the tarno directory!"});
  ui_.ExpectMessageTitled(kUnhandledErrorTitle);
  EXPECT_EQ(Solve().outcome, SolveOutcome::Failed);
  ExpectConsistentProject();
  ExpectNextSolveWorks(true);
}

TEST_F(SolveFailure, MissingContourProgramThenPresentContourProgram) {
  settings_.chkContour = true;
  settings_.SelectContourProperty(kContourHeads);
  const std::string grid = "DSAA\\r\\n2 2\\r\\n0 1\\r\\n0 1\\r\\n1 2\\r\\n1 2\\r\\n1 2\\r\\n";
  SolverWriting(GoodExtract(), "printf '" + grid + "' > golden.GRD");
  ui_.ExpectMessage("Executable Missing", {"contour does not exist in the tarno directory!"});
  ui_.ExpectMessageTitled(kUnhandledErrorTitle);
  EXPECT_EQ(Solve().outcome, SolveOutcome::Failed);
  ui_.Verify();
  EXPECT_FALSE(state_.ContourLinesPresent);
  ExpectConsistentProject();

  ui_.ClearRecord();
  FakeProgram("contour", "printf 'LEVEL  1.000000E+00\\r\\n' > golden.CTR");
  SolverWriting(GoodExtract(), "printf '" + grid + "' > golden.GRD");
  const SolveReport r = Solve();
  ui_.Verify();
  EXPECT_EQ(r.outcome, SolveOutcome::Completed) << r.failure;
  EXPECT_TRUE(r.contourRun);
  EXPECT_EQ(r.contourStatus, 0);
  EXPECT_TRUE(state_.ContourLinesPresent);
  EXPECT_EQ(r.load.rowsUpdated, 4);
}

}  // namespace
}  // namespace tarno::testing

namespace tarno::testing {
namespace {

class SolverFilesRefused : public ControllerTest {
 protected:
  void SetUp() override {
    ControllerTest::SetUp();
    const auto w = Point(50, 50);
    Sql("insert into Wells (VID, Label, Head) values (" + std::to_string(w) + ", 'North', 300)");
    Context();
    state_.ReferenceHead = 1;
    GoodSolver();
  }
  void SetSolverFiles(const std::string& base, const std::string& dir) {
    Statement st = db_.PrepareRaw("update Project set TARNOBaseName = ?, TARNOBasePath = ?");
    st.Bind(1, base).Bind(2, dir);
    st.Run();
  }
  SolveReport Solve() {
    SolveOptions o;
    o.Prompt = false;
    return ModelRunTARNO(ctx_, o);
  }
};

// A base name with a separator, a missing folder, a file in place of the folder and a
// read-only command file: each is told before anything is deleted, with the name or
// the path, never through the general error trap; the solution of the last run stays.
TEST_F(SolverFilesRefused, PathProblemsAreToldBeforeTheSolutionIsDiscarded) {
  ASSERT_EQ(Solve().outcome, SolveOutcome::Completed);
  ui_.Verify();
  ASSERT_TRUE(state_.SolutionPresent);
  Touch("afile");
  Touch("golden.DAT");
  const std::string dir = Dir().string();
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"a/b*c", dir}, {"golden", dir + "/missing"}, {"golden", dir + "/afile"}, {"golden", dir}};
  for (const auto& [base, path] : cases) {
    SCOPED_TRACE(base + " in " + path);
    const bool readOnlyDat = base == "golden" && path == dir;
    if (readOnlyDat) {
      std::filesystem::permissions(Dir() / "golden.DAT", std::filesystem::perms::owner_read);
      if (::access((Dir() / "golden.DAT").c_str(), W_OK) == 0) continue;  // the superuser writes anyway
    }
    SetSolverFiles(base, path);
    ui_.ClearRecord();
    ui_.ExpectMessageTitled(kSolverFilesTitle);
    const SolveReport r = Solve();
    ui_.Verify();
    EXPECT_EQ(r.outcome, SolveOutcome::Refused);
    ASSERT_EQ(ui_.Calls().size(), 1u);
    const auto& lines = ui_.Calls()[0].lines;
    const std::string named = readOnlyDat ? (Dir() / "golden.DAT").string() : base == "a/b*c" ? base : path;
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(),
                            [&](const std::string& l) { return l.find(named) != std::string::npos; }));
    EXPECT_TRUE(r.deletedFiles.empty());
    EXPECT_TRUE(state_.SolutionPresent);
    EXPECT_TRUE(Has("golden.SOL"));
    EXPECT_TRUE(Has("golden.XTR"));
  }
}

}  // namespace
}  // namespace tarno::testing
