// The command file writer against files derived by hand, line by line, from the
// command language: a golden new solve, the other write types, and the blocks whose
// masks or words are irregular.
#include <gtest/gtest.h>

#include <sstream>

#include "core/error.h"
#include "solver_fixture.h"
#include "support/program_runner.h"

namespace tarno::testing {
namespace {

class CommandFileTest : public SolverProject {
 protected:
  CommandFileContext Context(ModelSettings& s, SolutionState& state, UserInterface& ui) {
    CommandFileContext ctx;
    ctx.projectPath = ProjectPath();
    ctx.settings = &s;
    ctx.state = &state;
    ctx.window = {0, 200, 100, 0};
    ctx.ui = &ui;
    return ctx;
  }

  // The iterations of the project's Model row.
  std::int64_t StoredIterations() {
    Statement m = db_.Prepare("select SOLVERIterations from Model");
    EXPECT_TRUE(m.Step());
    return m.GetInt64(0);
  }

  std::vector<std::string> Header(const std::string& suffix = "") {
    return {"* Written by TARNO for Windows 2.2.4",
            " error error" + suffix + ".log",
            " yes",
            " message message" + suffix + ".log",
            " yes",
            " echo echo" + suffix + ".log",
            " yes",
            " picture off",
            " quit",
            " ",
            " bfname  golden"};
  }

  std::vector<std::string> ExtractBlock() {
    return {" extract",
            " file golden",
            " y",
            "  50.00 25.00 TP_000003",
            "  gage -50.00 -25.00 TG_000004",
            " well discharge",
            " well head",
            " ppwell discharge",
            " ppwell head",
            " Theis well",
            " linesink discharge",
            " linesink head",
            " inhomogeneity",
            " flux FL_000007",
            "  0.00 -50.00 ",
            "  0.00 50.00 ",
            " quit",
            " quit"};
  }

  // The lines of the file from the first line equal to `from` up to and including
  // the next line equal to `to`.
  static std::vector<std::string> Slice(const std::vector<std::string>& lines,
                                        const std::string& from, const std::string& to,
                                        std::size_t start = 0) {
    std::vector<std::string> out;
    std::size_t i = start;
    while (i < lines.size() && lines[i] != from) ++i;
    for (; i < lines.size(); ++i) {
      out.push_back(lines[i]);
      if (out.size() > 1 && lines[i] == to) break;
    }
    return out;
  }

  void SetOrigin(double x, double y) {
    Sql("update Model set SOLVERX0=" + std::to_string(x) + ", SOLVERY0=" + std::to_string(y));
  }
};

TEST_F(CommandFileTest, NewSolveMatchesTheHandWrittenFile) {
  BuildGoldenProject();
  ModelSettings s = LoadSettings();
  SolutionState state;
  ScriptedUserInterface ui;
  // Strings with resistance and one iteration: the advice dialog recommends two; the
  // user types 3 and confirms.
  ui.ExpectModal<IterationsDialog>("Iterations", [](IterationsDialog& d) {
    EXPECT_EQ(d.lblRecommended,
              "For models containing linesinks with resistance, it is recommended to use at "
              "least        iterations.");
    EXPECT_EQ(d.lblRecommendedIterations, 2);
    EXPECT_EQ(d.tbIterations, "1");
    d.tbIterations = "3";
    d.Result = 1;
  });
  CommandFileContext ctx = Context(s, state, ui);
  const auto path = ModelWriteInputFile(kWriteNewSolve, false, false, ctx);
  ui.Verify();

  EXPECT_EQ(path, Dir() / "golden.dat");
  const std::string expected = DataFile("golden_new_solve.dat");
  const std::string actual = ReadFile(path);
  EXPECT_TRUE(SameLines(Lines(expected), Lines(actual)));
  EXPECT_EQ(expected, actual);  // byte for byte, CR LF included

  // Half the mean of (start + end) over the head-specified strings: (22 + 16) / 4.
  EXPECT_DOUBLE_EQ(state.ReferenceHead, 9.5);
  EXPECT_TRUE(state.ContoursPresent);
  EXPECT_TRUE(state.PathsPresent);
  EXPECT_EQ(state.Note, "Contours: Heads");
  EXPECT_EQ(s.Iterations(), 3);
  EXPECT_EQ(ui.WaitTexts(), std::vector<std::string>{"Writing Data to Solver..."});
  EXPECT_FALSE(ui.WaitWindowVisible());

  Statement m = db_.Prepare("select SOLVERX0, SOLVERY0 from Model");
  ASSERT_TRUE(m.Step());
  EXPECT_DOUBLE_EQ(m.GetDouble(0), 100);
  EXPECT_DOUBLE_EQ(m.GetDouble(1), 50);
}

TEST_F(CommandFileTest, NewSolvePreparesTheBlankResultRows) {
  BuildGoldenProject();
  // Old rows of an earlier solve must go.
  Sql("insert into WLResults (Label, TARNOLabel, X, Y, Radius, SpecifiedHead, Discharge, Head) "
      "values ('old', 'WL_999999', 0, 0, 0, 0, 0, 0)");
  ModelSettings s = LoadSettings();
  SolutionState state;
  ScriptedUserInterface ui;
  CommandFileContext ctx = Context(s, state, ui);
  ModelWriteInputFile(kWriteNewSolve, false, true, ctx);

  {
    Statement st = db_.Prepare(
        "select Label, TARNOLabel, X, Y, Radius, SpecifiedHead, Discharge, Head from WLResults "
        "order by TARNOLabel");
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetText(0), "W1");
    EXPECT_EQ(st.GetText(1), "WL_000001");
    EXPECT_DOUBLE_EQ(st.GetDouble(2), 120);  // map coordinates, as stored
    EXPECT_DOUBLE_EQ(st.GetDouble(3), 60);
    EXPECT_DOUBLE_EQ(st.GetDouble(5), 0);  // a discharge well has no specified head
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetText(1), "WL_000002");
    EXPECT_DOUBLE_EQ(st.GetDouble(5), 12.5);
    EXPECT_DOUBLE_EQ(st.GetDouble(4), 0);
    EXPECT_DOUBLE_EQ(st.GetDouble(7), 0);
    EXPECT_FALSE(st.Step());
  }
  {
    Statement st = db_.Prepare(
        "select Label, TARNOLabel, X1, Y1, X2, Y2, SpecifiedHead, CalculatedHead, LinkedTo, "
        "SearchType from LSResults order by TARNOLabel");
    struct Row {
      const char* label;
      const char* tarno;
      double x1, y1, x2, y2, head;
    };
    const Row rows[] = {{"S1", "LS_000004_0100", 150, 0, 150, 40, -999},
                        {"S1", "LS_000004_0200", 150, 40, 180, 40, -999},
                        {"S2", "LS_000005_0100", 0, 100, 200, 100, 11},
                        {"R1", "LS_000006_0100", 190, 10, 190, 50, 9 - 2.0 * 20 / 60},
                        {"R1", "LS_000006_0200", 190, 50, 190, 70, 9 - 2.0 * 50 / 60}};
    for (const Row& r : rows) {
      ASSERT_TRUE(st.Step()) << r.tarno;
      EXPECT_EQ(st.GetText(0), r.label);
      EXPECT_EQ(st.GetText(1), r.tarno);
      EXPECT_DOUBLE_EQ(st.GetDouble(2), r.x1);
      EXPECT_DOUBLE_EQ(st.GetDouble(3), r.y1);
      EXPECT_DOUBLE_EQ(st.GetDouble(4), r.x2);
      EXPECT_DOUBLE_EQ(st.GetDouble(5), r.y2);
      EXPECT_NEAR(st.GetDouble(6), r.head, 1e-12) << r.tarno;
      EXPECT_DOUBLE_EQ(st.GetDouble(7), 0);
      EXPECT_EQ(st.GetText(8), "__NONE__");
      EXPECT_EQ(st.GetText(9), "Unassigned");
    }
    EXPECT_FALSE(st.Step());
  }
  {
    Statement st = db_.Prepare("select Label, TARNOLabel from INResults order by TARNOLabel");
    for (const char* l : {"IN_000002_0000", "IN_000002_0100", "IN_000002_0200"}) {
      ASSERT_TRUE(st.Step());
      EXPECT_EQ(st.GetText(0), "I1");
      EXPECT_EQ(st.GetText(1), l);
    }
    EXPECT_FALSE(st.Step());
  }
  {
    // An open wall of two vertices has one segment, so one row.
    Statement st = db_.Prepare("select Label, TARNOLabel from NFResults");
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetText(0), "B1");
    EXPECT_EQ(st.GetText(1), "HB_000003_0000");
    EXPECT_FALSE(st.Step());
  }
}

TEST_F(CommandFileTest, ContinueLoadsTheSolutionAndWritesNoElements) {
  BuildGoldenProject();
  SetOrigin(100, 50);
  Sql("update Model set OuterIterationsFlag=1, OuterIterations=7, StoreMatrixOnDisk=1, "
      "FastSolution=1");
  ModelSettings s = LoadSettings();
  SolutionState state;
  state.ContoursPresent = true;
  state.PathsPresent = true;
  state.SolutionTime = 12.5;
  ScriptedUserInterface ui;
  CommandFileContext ctx = Context(s, state, ui);
  ctx.continueIterations = "4";
  const auto path = ModelWriteInputFile(kWriteContinue, false, false, ctx);
  ui.Verify();
  EXPECT_EQ(path, Dir() / "golden.dat");

  std::vector<std::string> expected = Header();
  for (const char* l : {" layout ", " window -100.00 -50.00 100.00 50.00 ", " quit ",
                        " load golden", " time 0", " solve 4 7 1 0", " ", " save golden", "y",
                        " time          12.5 "})
    expected.push_back(l);
  for (const auto& l : ExtractBlock()) expected.push_back(l);
  expected.push_back(" stop");
  EXPECT_TRUE(SameLines(expected, Lines(ReadFile(path))));
  EXPECT_TRUE(ui.WaitTexts().empty());
}

TEST_F(CommandFileTest, RegridLoadsAndWritesOnlyWhatIsMissing) {
  BuildGoldenProject();
  SetOrigin(100, 50);
  Sql("update Particles set SatdThick=-1, Forward=0");  // a boolean true is not the number 1
  ModelSettings s = LoadSettings();
  s.chkDefaultStep = true;  // has no effect on the step line
  s.tbStepSize = "2.5";
  s.tbMaxTime = "100";
  SolutionState state;
  state.ContoursPresent = true;
  ScriptedUserInterface ui;
  CommandFileContext ctx = Context(s, state, ui);
  const auto path = ModelWriteInputFile(kWriteRegrid, false, false, ctx);
  EXPECT_EQ(path, Dir() / "regrid.dat");

  std::vector<std::string> expected = Header("_gr");
  for (const char* l :
       {" layout ", " window -100.00 -50.00 100.00 50.00 ", " quit ", " load golden",
        " time          0 "})
    expected.push_back(l);
  for (const auto& l : ExtractBlock()) expected.push_back(l);
  for (const char* l :
       {" trace", " picture off", " file golden", " y ", " time 100", " step 2.5", " points",
        " 1.0000000E+01 5.0000000E+00 3.0000000E+00 -1.0", " quit",
        " well 2.0000000E+01 1.0000000E+01 5.00000E+00 4", " go", " quit", " stop"})
    expected.push_back(l);
  EXPECT_TRUE(SameLines(expected, Lines(ReadFile(path))));
  EXPECT_TRUE(state.PathsPresent);
}

TEST_F(CommandFileTest, SolveOnlyEndsAfterTheTimeLine) {
  BuildGoldenProject();
  ModelSettings s = LoadSettings();
  SolutionState state;
  ScriptedUserInterface ui;
  CommandFileContext ctx = Context(s, state, ui);
  const auto lines = Lines(ReadFile(ModelWriteInputFile(kWriteNewSolve, true, true, ctx)));
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[lines.size() - 2], " time          0 ");
  EXPECT_EQ(lines.back(), " stop");
  EXPECT_FALSE(state.ContoursPresent);
  EXPECT_FALSE(state.PathsPresent);
}

TEST_F(CommandFileTest, PestTemplateWritesParameterFieldsAndKeepsResultRows) {
  BuildGoldenProject();
  SetOrigin(100, 50);
  Sql("update Inhomogeneities set chkScenarioHydCond=1, ScenHydCond='kin', "
      "chkScenarioRecharge=1, ScenRecharge='rch'");
  Sql("update LinesinkStrings set chkScenario=1, ScenResistance='res' where Label='S2'");
  Sql("insert into WLResults (Label, TARNOLabel, X, Y, Radius, SpecifiedHead, Discharge, Head) "
      "values ('old', 'WL_999999', 0, 0, 0, 0, 0, 0)");
  ModelSettings s = LoadSettings();
  s.chkScenarioHydCond = true;
  s.tbScenario[1] = "kaq";
  s.chkContour = false;
  s.chkComputePaths = false;
  SolutionState state;
  state.ReferenceHead = 4;
  ScriptedUserInterface ui;  // no advice dialog and no wait window for a template
  CommandFileContext ctx = Context(s, state, ui);
  const auto path = ModelWriteInputFile(kWritePestTemplate, false, false, ctx);
  ui.Verify();
  EXPECT_EQ(path, Dir() / "golden.tpl");
  const auto lines = Lines(ReadFile(path));
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines[0], "ptf !");
  EXPECT_EQ(lines[1], "* Written by TARNO for Windows 2.2.4");
  EXPECT_EQ(Slice(lines, " aquifer", " quit "),
            (std::vector<std::string>{" aquifer", " base .00000E+00", " permeability !kaq         !",
                                      " thickness 2.0000000E+01", " porosity 2.5000000E-01",
                                      " reference    1.1180340E+03 1.1180340E+03 4.0000000E+00 ",
                                      " quit "}));
  EXPECT_EQ(Slice(lines, " inhomogeneity ", " quit ")[1],
            " transmissivity ! kin          ! -9.99900E+03 -9.99900E+03 ! rch          ! "
            "3.00000E-01 IN_000002_0000");
  // S2 takes part in scenarios, R1 does not.
  EXPECT_EQ(std::count(lines.begin(), lines.end(), " resistance ! res          ! "), 1);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), " resistance 1.000000E+00 "), 1);
  EXPECT_EQ(lines.back(), " stop");
  EXPECT_TRUE(ui.WaitTexts().empty());
  EXPECT_EQ(Count("WLResults"), 1);
  EXPECT_EQ(Count("LSResults"), 0);
  EXPECT_DOUBLE_EQ(state.ReferenceHead, 4);  // a template does not recompute it
}

// A template against the hand-written file of the new solve: the same file line
// for line but for what a template changes, each spelled out here. The export
// switches contours and pathlines off, so the grid and trace blocks go; the
// reference head is the one of the last solve; tagged values become fields.
class TemplateFileTest : public CommandFileTest {
 protected:
  void CheckAgainstTheNewSolveFile(int type) {
    BuildGoldenProject();
    SetOrigin(100, 50);
    Sql("update Inhomogeneities set chkScenarioHydCond=1, ScenHydCond='kin'");
    Sql("update LinesinkStrings set chkScenario=1, ScenResistance='res' where Label='S2'");
    ModelSettings s = LoadSettings();
    s.SetIterations("3");
    s.chkScenarioHydCond = true;
    s.tbScenario[1] = "kaq";
    s.chkContour = false;
    s.chkComputePaths = false;
    SolutionState state;
    state.ReferenceHead = 9.5;
    ScriptedUserInterface ui;
    CommandFileContext ctx = Context(s, state, ui);
    const auto actual = Lines(ReadFile(ModelWriteInputFile(type, false, false, ctx)));
    ui.Verify();

    std::vector<std::string> expected;
    if (type == kWritePestTemplate) expected.push_back("ptf !");
    // PEST's fields are padded with blanks, as its control file pads the names;
    // UCODE's with underscores.
    const std::string kaq = type == kWritePestTemplate ? "kaq         " : "kaq_________";
    const std::string kin = type == kWritePestTemplate ? "kin         " : "kin_________";
    const std::string res = type == kWritePestTemplate ? "res         " : "res_________";
    bool gridAndTrace = false;
    for (const std::string& line : Lines(DataFile("golden_new_solve.dat"))) {
      if (line == " grid") gridAndTrace = true;  // up to the end: the grid, then the trace
      if (line == " stop") gridAndTrace = false;
      if (gridAndTrace) continue;
      if (line == " permeability 1.0000000E+01")
        expected.push_back(" permeability !" + kaq + "!");
      else if (line.rfind(" transmissivity 5.00000E+00 ", 0) == 0)
        expected.push_back(" transmissivity ! " + kin + " ! -9.99900E+03 -9.99900E+03 "
                           "-1.0000000E-03 3.00000E-01 IN_000002_0000");
      else if (line == " resistance 2.000000E+00 ")  // S2's, the only plain head string
        expected.push_back(" resistance ! " + res + " ! ");
      else
        expected.push_back(line);
    }
    EXPECT_TRUE(SameLines(expected, actual));
  }
};

TEST_F(TemplateFileTest, PestTemplateIsTheNewSolveFileWithFields) {
  CheckAgainstTheNewSolveFile(kWritePestTemplate);
}

TEST_F(TemplateFileTest, UcodeTemplateIsTheNewSolveFileWithFields) {
  CheckAgainstTheNewSolveFile(kWriteUcodeTemplate);
}

TEST_F(CommandFileTest, UcodeTemplateHasNoPtfLine) {
  BuildGoldenProject();
  SetOrigin(100, 50);
  ModelSettings s = LoadSettings();
  SolutionState state;
  ScriptedUserInterface ui;
  CommandFileContext ctx = Context(s, state, ui);
  const auto lines = Lines(ReadFile(ModelWriteInputFile(kWriteUcodeTemplate, false, false, ctx)));
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines[0], "* Written by TARNO for Windows 2.2.4");
  EXPECT_TRUE(std::filesystem::exists(Dir() / "golden.tpl"));
}

TEST_F(CommandFileTest, AquiferScenarioFieldsGoIntoAPlainSolveToo) {
  BuildGoldenProject();
  Sql("update Inhomogeneities set chkScenarioHydCond=1, ScenHydCond='kin'");
  ModelSettings s = LoadSettings();
  s.chkScenarioBaseElev = true;
  s.tbScenario[2] = "bot";
  s.chkScenarioHydCond = true;
  s.tbScenario[1] = "__NONE__";  // no tag: the number stays
  SolutionState state;
  ScriptedUserInterface ui;
  CommandFileContext ctx = Context(s, state, ui);
  const auto lines = Lines(ReadFile(ModelWriteInputFile(kWriteNewSolve, false, true, ctx)));
  const auto aquifer = Slice(lines, " aquifer", " quit ");
  ASSERT_GE(aquifer.size(), 3u);
  EXPECT_EQ(aquifer[1], " base !bot!");  // no pad character outside a template
  EXPECT_EQ(aquifer[2], " permeability 1.0000000E+01");
  // Element fields are template-only.
  EXPECT_EQ(Slice(lines, " inhomogeneity ", " quit ")[1],
            " transmissivity 5.00000E+00 -9.99900E+03 -9.99900E+03 -1.0000000E-03 3.00000E-01 "
            "IN_000002_0000");
}

TEST_F(CommandFileTest, IllegalWriteTypeWritesNothing) {
  ModelSettings s = LoadSettings();
  SolutionState state;
  for (int type : {0, 6, -1}) {
    ScriptedUserInterface ui;
    ui.ExpectMessage("Illegal Parameter", {"Illegal WriteType specified in ModelWriteInputFile.",
                                           "No Input file has been written."});
    CommandFileContext ctx = Context(s, state, ui);
    EXPECT_TRUE(ModelWriteInputFile(type, false, false, ctx).empty());
    ui.Verify();
  }
  EXPECT_FALSE(std::filesystem::exists(Dir() / "golden.dat"));
  EXPECT_FALSE(std::filesystem::exists(Dir() / "regrid.dat"));
}

class WellBlocksTest : public CommandFileTest {};

TEST_F(WellBlocksTest, SevenBlocksWithTheirOwnMasks) {
  // Extents -10..10 both ways: the origin is (0, 0) and map and model agree.
  auto well = [&](double x, double y, const std::string& cols, const std::string& vals) {
    const auto vid = Point(x, y);
    Sql("insert into Wells (VID, " + cols + ") values (" + std::to_string(vid) + ", " + vals + ")");
  };
  well(-10, -10, "Head, Radius, Label", "0, 1, 'D1'");
  well(10, 10, "Head, Radius, Label, HeadSpecified", "0, 1, 'H1', 1");
  well(0, 5, "Head, Radius, Label, PPWell, TopElev, BottomElev", "-100, 0.3, 'P1', 1, 8, 2");
  well(5, 0, "Head, Radius, Label, PPWell, TopElev, BottomElev, HeadSpecified",
       "9, 0.3, 'P2', 1, 8, 2, 1");
  well(1, 1, "Head, Radius, Label, Transient, Time, StartHead, SS, Cyclic, Cycles",
       "50, 0.2, 'T1', 1, 10, 9, 0.0001, 1, 2");
  well(2, 2, "Head, Radius, Label, Transient, Time, StartHead, SS", "30, 0.2, 'T1', 1, 5, 9, 0.0001");
  well(-5, 3, "Head, Radius, Label, Pond", "0.002, 4, 'K1', 1");
  well(3, -5, "Head, Radius, Label, Pond, HeadSpecified", "7.5, 2, 'K2', 1, 1");
  // Transient and head-specified: a combination no block holds.
  well(0, 0, "Head, Radius, Label, Transient, HeadSpecified", "1, 1, 'X1', 1, 1");

  ModelSettings s = LoadSettings();
  SolutionState state;
  ScriptedUserInterface ui;
  CommandFileContext ctx = Context(s, state, ui);
  ctx.window = {-10, 10, 10, -10};
  const auto lines = Lines(ReadFile(ModelWriteInputFile(kWriteNewSolve, false, true, ctx)));

  const std::vector<std::string> expected = {
      " well ",
      " discharge ",
      "  -1.000000E+01 -1.000000E+01 0.00000E+00 1.00000E+00 WL_000001",
      " quit ",
      " well ",
      " head ",
      "  1.000000E+01 1.000000E+01 .000000E+00 1.000000E+00 WL_000002",
      " quit ",
      " ppwell ",
      " discharge ",
      "  .000000E+00 5.000000E+00 8.000000E+00 2.000000E+00 -1.000000E+02 3.000000E-01 WL_000003",
      " quit ",
      " ppwell ",
      " head ",
      "  5.000000E+00 .000000E+00 8.000000E+00 2.000000E+00 9.000000E+00 3.000000E-01 WL_000004",
      " quit ",
      " twell ",
      " discharge ",
      "  1.000000E+00 1.000000E+00 5.000000E+01 .000000E+00 9.000000E+00 1.000000E-04 "
      "2.000000E-01 WL_000005",
      "  1.000000E+00 1.000000E+00 -5.000000E+01 1.000000E+01 9.000000E+00 1.000000E-04 "
      "2.000000E-01 WL_000005",
      "  1.000000E+00 1.000000E+00 5.000000E+01 2.000000E+01 9.000000E+00 1.000000E-04 "
      "2.000000E-01 WL_000005",
      "  1.000000E+00 1.000000E+00 -5.000000E+01 3.000000E+01 9.000000E+00 1.000000E-04 "
      "2.000000E-01 WL_000005",
      "  2.000000E+00 2.000000E+00 3.000000E+01 5.000000E+00 9.000000E+00 1.000000E-04 "
      "2.000000E-01 WL_000006",
      " quit ",
      " sinkdisk ",
      " discharge ",
      "  -5.000000E+00 3.000000E+00 -1.000000E+00  3.000000E+00 2.000000E-03 .000000E+00 "
      "WL_000007",
      " quit ",
      " sinkdisk ",
      " head ",
      "  3.000000E+00 -5.000000E+00 5.000000E+00  -5.000000E+00 7.500000E+00 WL_000008",
      " quit ",
      " layout ",
  };
  EXPECT_TRUE(SameLines(expected, Slice(lines, " well ", " layout ")));

  // Blocks 1 to 5 add rows; the second row of transient well T1 does not, nor do
  // the sink disks or the well no block holds.
  Statement st = db_.Prepare("select TARNOLabel, SpecifiedHead from WLResults order by TARNOLabel");
  std::vector<std::pair<std::string, double>> rows;
  while (st.Step()) rows.emplace_back(st.GetText(0), st.GetDouble(1));
  const std::vector<std::pair<std::string, double>> expectedRows = {
      {"WL_000001", 0}, {"WL_000002", 0}, {"WL_000003", 0}, {"WL_000004", 9}, {"WL_000005", 0}};
  EXPECT_EQ(rows, expectedRows);

  // No string holds a specified head: the reference head is the value of the well
  // query, which really takes half of the mean: 0.5 * (0 + 9 + 7.5 + 1) / 4.
  EXPECT_DOUBLE_EQ(state.ReferenceHead, 2.1875);
}

TEST_F(WellBlocksTest, CyclicWellWithoutCyclesWritesNoLineButKeepsItsRow) {
  const auto vid = Point(0, 0);
  Sql("insert into Wells (VID, Head, Radius, Label, Transient, Cyclic, Cycles, Time) values (" +
      std::to_string(vid) + ", 5, 1, 'C0', 1, 1, 0, 3)");
  ModelSettings s = LoadSettings();
  SolutionState state;
  state.ReferenceHead = 1;  // the aquifer top: no warning
  ScriptedUserInterface ui;
  CommandFileContext ctx = Context(s, state, ui);
  const auto lines = Lines(ReadFile(ModelWriteInputFile(kWriteNewSolve, false, true, ctx)));
  EXPECT_EQ(Slice(lines, " twell ", " quit "),
            (std::vector<std::string>{" twell ", " discharge ", " quit "}));
  EXPECT_EQ(Count("WLResults"), 1);
}

class StringBlocksTest : public CommandFileTest {};

TEST_F(StringBlocksTest, BarrierWordsMasksAndSegmentRows) {
  const auto closed1 = String({{0, 0}, {10, 0}, {10, 10}});
  const auto closed2 = String({{20, 0}, {30, 0}});
  const auto closed3 = String({{40, 0}, {50, 0}});
  const auto closed7 = String({{60, 0}, {70, 0}});
  const auto single = String({{80, 0}});
  auto wall = [&](std::int64_t pid, int closed) {
    Sql("insert into NoFlowStrings (PID, Label, HydCond, Thickness, Porosity, BottomElevation, "
        "Closed) values (" +
        std::to_string(pid) + ", 'B" + std::to_string(pid) + "', 2, 0.5, 0.25, -3, " +
        std::to_string(closed) + ")");
  };
  wall(closed1, 1);
  wall(closed2, 2);
  wall(closed3, 3);
  wall(closed7, 7);
  wall(single, 0);
  SetOrigin(0, 0);
  ModelSettings s = LoadSettings();
  SolutionState state;
  ScriptedUserInterface ui;
  CommandFileContext ctx = Context(s, state, ui);
  ctx.window = {0, 80, 10, 0};
  // Templates keep the origin row; the writing is the same.
  const auto lines = Lines(ReadFile(ModelWriteInputFile(kWriteUcodeTemplate, false, true, ctx)));
  const std::vector<std::string> expected = {
      " inhomogeneity ",
      "slurry closed   2.0000000E+00 5.0000000E-01 2.5000000E-01 -3.0000000E+00 HB_000001_0000",
      "  .000000E+00 .000000E+00 HB_000001_0000",
      "  1.000000E+01 .000000E+00 HB_000001_0100",
      "  1.000000E+01 1.000000E+01 HB_000001_0200",
      "slurry outside  2.0000000E+00 5.0000000E-01 2.5000000E-01 -3.0000000E+00 HB_000002_0000",
      "  2.000000E+01 .000000E+00 HB_000002_0000",
      "  3.000000E+01 .000000E+00 HB_000002_0100",
      "slurry inside   2.0000000E+00 5.0000000E-01 2.5000000E-01 -3.0000000E+00 HB_000003_0000",
      "  4.000000E+01 .000000E+00 HB_000003_0000",
      "  5.000000E+01 .000000E+00 HB_000003_0100",
      "  6.000000E+01 .000000E+00 HB_000004_0000",
      "  7.000000E+01 .000000E+00 HB_000004_0100",
      " quit ",
  };
  EXPECT_TRUE(SameLines(expected, Slice(lines, " inhomogeneity ", " quit ")));
}

TEST_F(StringBlocksTest, BarrierRowsOnePerWallSegment) {
  const auto closed = String({{0, 0}, {10, 0}, {10, 10}});
  const auto open = String({{20, 0}, {30, 0}, {30, 10}});
  Sql("insert into NoFlowStrings (PID, Label, Closed) values (" + std::to_string(closed) +
      ", 'BC', 1)");
  Sql("insert into NoFlowStrings (PID, Label, Closed) values (" + std::to_string(open) +
      ", 'BO', 0)");
  ModelSettings s = LoadSettings();
  SolutionState state;
  state.ReferenceHead = 1;
  ScriptedUserInterface ui;
  CommandFileContext ctx = Context(s, state, ui);
  ModelWriteInputFile(kWriteNewSolve, false, true, ctx);
  Statement st = db_.Prepare("select TARNOLabel from NFResults order by TARNOLabel");
  std::vector<std::string> labels;
  while (st.Step()) labels.push_back(st.GetText(0));
  EXPECT_EQ(labels, (std::vector<std::string>{"HB_000001_0000", "HB_000001_0100", "HB_000001_0200",
                                              "HB_000002_0000", "HB_000002_0100"}));
}

TEST_F(StringBlocksTest, DrainGalleryAndFarFieldStrings) {
  const auto drain = String({{0, 0}, {10, 0}});
  const auto gallery = String({{0, 10}, {10, 10}});
  const auto far = String({{0, 20}, {10, 20}});
  Sql("insert into LinesinkStrings (PID, Label, HeadSpecified, StartingHead, EndingHead, "
      "Resistance, Width, Depth, Drain) values (" +
      std::to_string(drain) + ", 'D', 1, 4, 4, 1, 2, 3, 1)");
  Sql("insert into LinesinkStrings (PID, Label, HeadSpecified, StartingHead, EndingHead, "
      "Resistance, Width, Depth, Gallery, TotalDischarge, AutoSWIZC) values (" +
      std::to_string(gallery) + ", 'G', 1, 4, 6, 1, 2, 3, 1, 250, 2)");
  Sql("insert into LinesinkStrings (PID, Label, HeadSpecified, StartingHead, EndingHead, "
      "Resistance, Width, Depth, FarField) values (" +
      std::to_string(far) + ", 'F', 1, 8, 8, 1, 2, 3, 1)");
  SetOrigin(0, 0);
  ModelSettings s = LoadSettings();
  SolutionState state;
  ScriptedUserInterface ui;
  CommandFileContext ctx = Context(s, state, ui);
  ctx.window = {0, 10, 20, 0};
  const auto lines = Lines(ReadFile(ModelWriteInputFile(kWritePestTemplate, false, true, ctx)));
  const std::vector<std::string> expected = {
      " linesink ",
      " drain ",
      " resistance 1.000000E+00 ",
      " width 2.000000E+00  0",
      " depth 3.000000E+00 ",
      "  .000000E+00 .000000E+00 1.000000E+01 .000000E+00 4.00000E+00 LS_000001_0100",
      " gallery ",
      " pumping  250 ",
      " resistance 1.000000E+00 ",
      " width 2.000000E+00  2",
      " depth 3.000000E+00 ",
      "  .000000E+00 1.000000E+01 1.000000E+01 1.000000E+01 5.00000E+00 LS_000002_0100",
      " head ",
      " resistance  0 ",
      " width .000000E+00  0",
      " depth .000000E+00 ",
      "  .000000E+00 2.000000E+01 1.000000E+01 2.000000E+01 8.00000E+00 LS_000003_0100",
      " quit ",
  };
  EXPECT_TRUE(SameLines(expected, Slice(lines, " linesink ", " quit ")));
}

TEST_F(StringBlocksTest, RoutedLakeStringWithInletAndOutlet) {
  const auto pid = String({{0, 0}, {30, 0}, {30, 40}});
  Sql("insert into LinesinkStrings (PID, Label, HeadSpecified, Routing, StartingHead, "
      "EndingHead, Lake, InletStream, OutletStream, OutletTable, TotalDischarge, "
      "Evapotranspiration, Precipitation, EndStream) values (" +
      std::to_string(pid) + ", 'LK', 1, 1, 5, 6, -1, 1, 1, 'out.tab', 3, 0.004, 0.001, 0)");
  SetOrigin(0, 0);
  ModelSettings s = LoadSettings();
  SolutionState state;
  ScriptedUserInterface ui;
  CommandFileContext ctx = Context(s, state, ui);
  ctx.window = {0, 30, 40, 0};
  const auto lines = Lines(ReadFile(ModelWriteInputFile(kWriteUcodeTemplate, false, true, ctx)));
  const std::vector<std::string> expected = {
      " linesink ",
      "* stream parameter is lake evaporation - precipitation (L/day)",
      " stream 3.000000E-03",
      " Inlet ",
      " Outlet out.tab",
      " Lake out.tab",
      " Levels  3   6 ",
      " overlandflow 0.000000E+00",
      " resistance .000000E+00 ",
      " width 0.00000E+00  0",
      " depth 0.00000E+00 ",
      "  .000000E+00 .000000E+00 5.000000 LS_000001_0100",
      "  3.000000E+01 .000000E+00 5.000000 LS_000001_0200",
      " 3.000000E+01 4.000000E+01 ",
      " quit ",
  };
  EXPECT_TRUE(SameLines(expected, Slice(lines, " linesink ", " quit ")));
}

TEST_F(StringBlocksTest, CoincidentVerticesEndTheWriting) {
  const auto pid = String({{5, 5}, {5, 5}});
  Sql("insert into LinesinkStrings (PID, Label, HeadSpecified) values (" + std::to_string(pid) +
      ", 'Z', 0)");
  ModelSettings s = LoadSettings();
  SolutionState state;
  state.ReferenceHead = 1;
  ScriptedUserInterface ui;
  CommandFileContext ctx = Context(s, state, ui);
  EXPECT_THROW(ModelWriteInputFile(kWriteNewSolve, false, true, ctx), Error);
  EXPECT_FALSE(ui.WaitWindowVisible());
}

TEST_F(StringBlocksTest, EmptyTablesLeaveOutTheirMenusAndASingleVertexLeavesAnEmptyMenu) {
  const auto single = String({{3, 3}});
  Sql("insert into Lakes (PID, Label, StageTableFilename) values (" + std::to_string(single) +
      ", 'L', 'x.stg')");
  ModelSettings s = LoadSettings();
  SolutionState state;
  state.ReferenceHead = 1;
  ScriptedUserInterface ui;
  CommandFileContext ctx = Context(s, state, ui);
  const auto lines = Lines(ReadFile(ModelWriteInputFile(kWriteNewSolve, false, true, ctx)));
  EXPECT_EQ(Slice(lines, " Inhomogeneity", " quit "),
            (std::vector<std::string>{" Inhomogeneity", " quit "}));
  for (const char* word : {" inhomogeneity ", " well ", " linesink ", " points", " flux "})
    EXPECT_EQ(std::count(lines.begin(), lines.end(), word), 0) << word;
}

class ControlBlocksTest : public CommandFileTest {};

TEST_F(ControlBlocksTest, NoHeadConditionWarnsAndTakesTheAquiferTop) {
  Sql("update Model set AQBase=2, AQThickness='8'");
  ModelSettings s = LoadSettings();
  SolutionState state;
  ScriptedUserInterface ui;
  ui.Expect(UiCallKind::MessageBox)
      .Title("Warning")
      .Lines({"No head-specified conditions exist.", "Reference head will be set to aquifer top."})
      .WithIcon(Icon::Exclamation);
  CommandFileContext ctx = Context(s, state, ui);
  const auto lines = Lines(ReadFile(ModelWriteInputFile(kWriteNewSolve, false, true, ctx)));
  ui.Verify();
  EXPECT_DOUBLE_EQ(state.ReferenceHead, 10);
  // No vertices: the extents are the map window, 0..200 by 0..100.
  EXPECT_EQ(Slice(lines, " aquifer", " quit ")[5],
            " reference    1.1180340E+03 1.1180340E+03 1.0000000E+01 ");

  // A second write finds the reference head equal to the top: no message.
  ScriptedUserInterface quiet;
  ctx.ui = &quiet;
  state.ContoursPresent = state.PathsPresent = false;
  ModelWriteInputFile(kWriteNewSolve, false, true, ctx);
  quiet.Verify();
}

TEST_F(ControlBlocksTest, UniformFlowAndSaltwaterInterface) {
  // Saturated thickness min(15 - 0, 10) = 10; Q = 0.01 * 2 * 10 = 0.2 at 90 degrees.
  Sql("update Model set AQBase=0, AQThickness='10', AQHydCond=2, UNIFLOWCompute=1, "
      "UNIFLOWRefX=150, UNIFLOWRefY=50, UNIFLOWRefHead=15, UNIFLOWGradient=0.01, "
      "UNIFLOWOrientation=90, AddASaltWaterInterface=1, FreshWSpecGravity=1, "
      "SaltWSpecGravity=1.025, LocalSeaLevel=-2, StoreMatrixOnDisk=1");
  ModelSettings s = LoadSettings();
  ASSERT_TRUE(s.chkAddSaltwaterInterface);
  SolutionState state;
  ScriptedUserInterface ui;  // uniform flow: no reference head search, no warning
  CommandFileContext ctx = Context(s, state, ui);
  const auto lines = Lines(ReadFile(ModelWriteInputFile(kWriteNewSolve, true, true, ctx)));
  ui.Verify();
  // The reference point lies inside the extents of the window (0..200 by 0..100):
  // origin (100, 50), so the point is (50, 0) in model coordinates.
  const std::vector<std::string> expected = {
      " aquifer",
      " base .00000E+00",
      " permeability 2.0000000E+00",
      " thickness 1.0000000E+01",
      " porosity 2.0000000E-01",
      " interface 1.0000000E+00 1.0250000E+00 -2.0000000E+00",
      // cos(90 degrees) through the fifteen-digit constant is 1.6155e-15, not 0.
      " uniflow      3.2310891E-16 2.0000000E-01 ",
      " reference    5.0000000E+01 .0000000E+00 1.5000000E+01 ",
      " quit ",
  };
  EXPECT_TRUE(SameLines(expected, Slice(lines, " aquifer", " quit ")));
  // A saltwater model never keeps its matrix on disk.
  EXPECT_NE(std::find(lines.begin(), lines.end(), " solve 1 3 0 1"), lines.end());
}

TEST_F(ControlBlocksTest, GridBlockVariants) {
  SetOrigin(100, 50);
  ModelSettings s = LoadSettings();
  SolutionState state;
  ScriptedUserInterface ui;
  CommandFileContext ctx = Context(s, state, ui);

  auto grid = [&]() {
    state.ContoursPresent = false;
    state.PathsPresent = true;
    const auto lines = Lines(ReadFile(ModelWriteInputFile(kWriteRegrid, false, false, ctx)));
    return Slice(lines, " grid", " quit");
  };

  s.chkContourElevation = true;
  s.tbContourElevation = "5";
  s.SelectContourProperty(kContourDrawdowns);
  s.contourDetail = kContourCustom;
  s.tbContourLevel = "120";
  EXPECT_EQ(grid(), (std::vector<std::string>{
                        " grid", " window -100.00 -50.00 5.00 100.00 50.00 5.00 ", " dotmap off",
                        " horizontalpoints 120", " plot heads", " go", " minusgrid golden",
                        " surfer golden", " y ", " quit"}));
  EXPECT_EQ(state.Note, "Contours: Drawdowns");

  s.chkContourElevation = false;
  s.SelectContourProperty(kContourStreamFunction);
  s.contourDetail = kContourDetailed;
  EXPECT_EQ(grid(), (std::vector<std::string>{" grid", " window -100.00 -50.00 100.00 50.00 ",
                                              " dotmap off", " horizontalpoints 80", " plot stream",
                                              " go", " surfer golden", " y ", " quit"}));
  EXPECT_EQ(state.Note, "Contours: Stream Function");

  const char* plots[] = {" plot potentials", " plot discharge", " plot interface"};
  const char* notes[] = {"Contours: Potentials", "Contours: Discharge", "Contours: Interface"};
  for (int k = 0; k < 3; ++k) {
    s.SelectContourProperty(kContourPotentials + k);
    EXPECT_EQ(grid()[4], plots[k]);
    EXPECT_EQ(state.Note, notes[k]);
  }

  // With contours off nothing is written and the flag stays.
  s.chkContour = false;
  state.ContoursPresent = false;
  const auto lines = Lines(ReadFile(ModelWriteInputFile(kWriteRegrid, false, false, ctx)));
  EXPECT_EQ(std::count(lines.begin(), lines.end(), " grid"), 0);
  EXPECT_FALSE(state.ContoursPresent);
  EXPECT_EQ(lines[lines.size() - 2], " quit");  // the extract block's
}

TEST_F(ControlBlocksTest, ConjunctiveSolveAndLeakage) {
  SetOrigin(0, 0);
  ModelSettings s = LoadSettings();
  s.chkConjunctive = true;
  s.tbIterations = "6";
  SolutionState state;
  ScriptedUserInterface ui;
  CommandFileContext ctx = Context(s, state, ui);
  ctx.modflow.GridPresent = true;
  ctx.modflow.IncludeLeakage = true;
  ctx.modflow.UseAverageHeads = true;
  ctx.modflow.relax = 0.75;
  ctx.modflow.LeakageX = -5;
  ctx.modflow.LeakageY = 2.5;
  const auto lines = Lines(ReadFile(ModelWriteInputFile(kWriteUcodeTemplate, true, false, ctx)));
  // The leakage origin closes the elements; the leakage solve stands before the
  // solve line.
  std::vector<std::vector<std::string>> menus;
  for (std::size_t i = 0; i + 2 < lines.size(); ++i)
    if (lines[i] == " leakage") menus.push_back({lines[i + 1], lines[i + 2]});
  EXPECT_EQ(menus, (std::vector<std::vector<std::string>>{{" origin -5   2.5 ", " quit"},
                                                          {" solve 1 1 0 0 0.75 ", " quit"}}));
  EXPECT_NE(std::find(lines.begin(), lines.end(), " solve conjunctive 6 3 0 1"), lines.end());
}

TEST_F(ControlBlocksTest, IterationAdviceCasesInTheirOrder) {
  const auto pid = String({{0, 0}, {10, 0}});
  Sql("insert into Inhomogeneities (PID, Label, ChangeB) values (" + std::to_string(pid) +
      ", 'I', 1)");
  ModelSettings s = LoadSettings();
  SolutionState state;
  state.ReferenceHead = 1;
  CommandFileContext ctx;

  // Conjunctive comes first, and Cancel leaves the iterations alone.
  {
    s.chkConjunctive = true;
    ScriptedUserInterface ui;
    ui.ExpectModal<IterationsDialog>("Iterations", [](IterationsDialog& d) {
      EXPECT_EQ(d.lblRecommendedIterations, 5);
      EXPECT_EQ(d.lblRecommended,
                "For conunctive surface water - grondwater solutions it is recommended to use at "
                "least        iterations.");
      d.tbIterations = "9";
      d.Result = 2;
    });
    ctx = Context(s, state, ui);
    ModelWriteInputFile(kWriteNewSolve, true, false, ctx);
    ui.Verify();
    EXPECT_EQ(s.Iterations(), 1);
    EXPECT_EQ(StoredIterations(), 1) << "Cancel stores nothing";
  }
  // Then the inhomogeneity with its own base.
  {
    s.chkConjunctive = false;
    ScriptedUserInterface ui;
    ui.ExpectModal<IterationsDialog>("Iterations", [](IterationsDialog& d) {
      EXPECT_EQ(d.lblRecommendedIterations, 3);
      EXPECT_EQ(d.lblRecommended,
                "For models containing inhomogeneities with base elevation different from "
                "default, it is recommended to use at least        iterations.");
      d.tbIterations = "3";
      d.Result = 1;
    });
    ctx = Context(s, state, ui);
    const auto lines = Lines(ReadFile(ModelWriteInputFile(kWriteNewSolve, true, false, ctx)));
    ui.Verify();
    EXPECT_NE(std::find(lines.begin(), lines.end(), " solve 3 3 0 1"), lines.end());
    // The confirmed count is the project's: the settings show it when they open
    // again, and the next solve does not advise once more.
    EXPECT_EQ(StoredIterations(), 3);
  }
  // Enough iterations: no dialog.
  {
    ScriptedUserInterface ui;
    ctx = Context(s, state, ui);
    ModelWriteInputFile(kWriteNewSolve, true, false, ctx);
    ui.Verify();
  }
}

TEST_F(ControlBlocksTest, UnitCodeOfTheOriginLine) {
  // A map in feet with a model in metres: factor 0.3048, code 0; model
  // coordinates scale with the factor.
  Sql("update Model set BasemapMeters=0, ComputeMeters=1");
  const auto vid = Point(10, 20);
  Sql("insert into TestPoints (VID, Label) values (" + std::to_string(vid) + ", 'T')");
  ModelSettings s = LoadSettings();
  EXPECT_DOUBLE_EQ(s.BasemapConvert, 0.3048);
  SolutionState state;
  state.ReferenceHead = 1;
  ScriptedUserInterface ui;
  CommandFileContext ctx = Context(s, state, ui);
  ctx.window = {0, 20, 40, 0};
  auto lines = Lines(ReadFile(ModelWriteInputFile(kWriteNewSolve, false, true, ctx)));
  // One point widens to 9..11 by 19..21: origin (10, 20), lower left (9, 19).
  EXPECT_EQ(lines[11], " modelorigin  9   19   0 ");
  EXPECT_EQ(Slice(lines, " extract", " quit")[3], "  0.00 0.00 TP_000001");
  EXPECT_EQ(Slice(lines, " layout ", " quit ")[1], " window -3.05 -6.10 3.05 6.10 ");

  Sql("update Model set BasemapMeters=1, ComputeMeters=0");
  s = LoadSettings();
  ctx.settings = &s;
  state.ContoursPresent = state.PathsPresent = false;
  lines = Lines(ReadFile(ModelWriteInputFile(kWriteNewSolve, false, true, ctx)));
  EXPECT_EQ(lines[11], " modelorigin  9   19   1 ");
}

}  // namespace
}  // namespace tarno::testing

namespace tarno::testing {
namespace {

class ElementWriterTest : public SolverProject {
 protected:
  int WriteElements(bool fill, bool isTemplate, std::string& text) {
    ModelSettings s = LoadSettings();
    SolutionState state;
    ScriptedUserInterface ui;
    ElementWriterContext ec;
    ec.settings = &s;
    ec.state = &state;
    ec.window = {0, 10, 10, 0};
    ec.extents = {0, 10, 0, 10};
    ec.frame = ModelFrame{5, 5, 1.0};
    ec.baseName = "golden";
    ec.ui = &ui;
    std::ostringstream out;
    int level = 0;
    ToolsWriteTARNOElements(out, db_, ec, fill, isTemplate, isTemplate ? "_" : "", level);
    text = out.str();
    return level;
  }
};

TEST_F(ElementWriterTest, ModelLevelFollowsTheElements) {
  std::string text;
  EXPECT_EQ(WriteElements(true, false, text), 1);
  const auto head = String({{0, 0}, {10, 0}});
  Sql("insert into LinesinkStrings (PID, Label, HeadSpecified, Resistance) values (" +
      std::to_string(head) + ", 'H', 1, 2)");
  EXPECT_EQ(WriteElements(true, false, text), 4);
  const auto wall = String({{0, 5}, {10, 5}});
  Sql("insert into NoFlowStrings (PID, Label) values (" + std::to_string(wall) + ", 'W')");
  EXPECT_EQ(WriteElements(true, false, text), 4);  // a wall of conductivity 0
  Sql("update NoFlowStrings set HydCond=1");
  EXPECT_EQ(WriteElements(true, false, text), 6);
}

TEST_F(ElementWriterTest, ResultTablesAreEmptiedUnlessTemplate) {
  const auto pid = String({{0, 0}, {10, 0}});
  Sql("insert into LinesinkStrings (PID, Label, HeadSpecified) values (" + std::to_string(pid) +
      ", 'D', 0)");
  Sql("insert into INResults (Label, TARNOLabel, X1, Y1, XC, YC, StrPotJumpNode, "
      "ParabStrPotJump, RealStrExtrNode, ImagStrExtrNode, RealStrExtrCntr) values ('old', "
      "'IN_000009_0000', 0, 0, 0, 0, 0, 0, 0, 0, 0)");
  std::string text;
  WriteElements(false, true, text);
  EXPECT_EQ(Count("INResults"), 1);
  EXPECT_EQ(Count("LSResults"), 0);
  // Not a template, no rows wanted: the tables are emptied all the same.
  WriteElements(false, false, text);
  EXPECT_EQ(Count("INResults"), 0);
  EXPECT_EQ(Count("LSResults"), 0);
  WriteElements(true, false, text);
  EXPECT_EQ(Count("LSResults"), 1);
  // Every line ends with CR LF and the block opens with the origin line: the
  // extents' lower left corner, code 2 for equal units.
  EXPECT_EQ(text.rfind(" modelorigin  0   0   2 \r\n title golden\r\n aquifer\r\n", 0), 0u);
}

}  // namespace
}  // namespace tarno::testing

namespace tarno::testing {
namespace {

// A scenario tag on the aquifer puts parameter fields into a plain solve's file; the
// parameter value file beside it gives their values as the untagged file writes them,
// and the solver solves the tagged file exactly as the untagged one.
TEST_F(CommandFileTest, TaggedAquiferSolvesAsTheUntaggedOneThroughTheParameterValueFile) {
  BuildGoldenProject();
  auto write = [&](bool tagged) {
    ModelSettings s = LoadSettings();
    s.SetIterations("3");
    s.chkContour = false;
    s.chkComputePaths = false;
    s.chkScenarioHydCond = tagged;
    s.tbScenario[1] = "kaq";
    s.chkScenarioBaseElev = tagged;
    s.tbScenario[2] = "Bot";
    SolutionState state;
    ScriptedUserInterface ui;
    CommandFileContext ctx = Context(s, state, ui);
    return ModelWriteInputFile(kWriteNewSolve, false, true, ctx);
  };
  const auto path = write(true);
  const auto lines = Lines(ReadFile(path));
  EXPECT_EQ(std::count(lines.begin(), lines.end(), " permeability !kaq!"), 1);
  EXPECT_EQ(std::count(lines.begin(), lines.end(), " base !Bot!"), 1);
  const auto tpv = Dir() / "golden.TPV";
  EXPECT_EQ(ReadFile(tpv),
            "* Parameter values of golden.dat, written by TARNO\r\nBot .00000E+00\r\nkaq "
            "1.0000000E+01\r\n");

  // The solver on the tagged file and on the untagged one, each in a folder of its own.
  auto solve = [&](const std::filesystem::path& folder) {
    tarno::test::RunOptions o;
    o.cwd = folder;
    const auto r = tarno::test::RunProgram("tarno1", {"61", "golden"}, o);
    EXPECT_EQ(r.status, 0) << r.err;
    return ReadFile(folder / "golden.XTR");
  };
  const auto taggedDir = Dir() / "tagged", plainDir = Dir() / "plain";
  std::filesystem::create_directories(taggedDir);
  std::filesystem::create_directories(plainDir);
  std::filesystem::copy_file(path, taggedDir / "golden.dat");
  std::filesystem::copy_file(tpv, taggedDir / "golden.TPV");
  // Without tags the file is removed, so an old one cannot give values to a template.
  std::filesystem::copy_file(write(false), plainDir / "golden.dat");
  EXPECT_FALSE(std::filesystem::exists(tpv));
  const std::string a = solve(taggedDir), b = solve(plainDir);
  EXPECT_FALSE(a.empty());
  EXPECT_EQ(a, b);
}

}  // namespace
}  // namespace tarno::testing
