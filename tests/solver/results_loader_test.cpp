// The results loader on a hand-written extract file with every section, its bad
// records and their messages, and the result rows read back.
#include <gtest/gtest.h>

#include "core/error.h"
#include "solver/results_loader.h"
#include "solver_fixture.h"
#include "support/temp_dir.h"

namespace tarno::testing {
namespace {

class ResultsLoaderTest : public SolverProject {
 protected:
  // The golden project with its blank result rows, as a new solve leaves them.
  void PrepareSolve() {
    BuildGoldenProject();
    ModelSettings s = LoadSettings();
    SolutionState state;
    ScriptedUserInterface ui;
    CommandFileContext ctx;
    ctx.projectPath = ProjectPath();
    ctx.settings = &s;
    ctx.state = &state;
    ctx.window = {0, 200, 100, 0};
    ctx.ui = &ui;
    ModelWriteInputFile(kWriteNewSolve, true, true, ctx);
  }

  // Origin (100, 50), map and model units alike.
  ModelFrame Frame() const { return ModelFrame{100, 50, 1.0}; }

  void CopyExtract(const std::string& dataName, const std::string& fileName) {
    std::filesystem::copy_file(std::filesystem::path(TARNO_TEST_DATA_DIR) / dataName,
                               Dir() / fileName, std::filesystem::copy_options::overwrite_existing);
  }

  static std::vector<std::string> Bad(const std::string& name, int line, const std::string& text) {
    return {name + std::to_string(line) + " of TARNO results file:", text,
            "Continue reading the results file?"};
  }

  void ExpectBad(ScriptedUserInterface& ui, const std::string& name, int line,
                 const std::string& text) {
    ui.Expect(UiCallKind::MessageBox)
        .Title("Import error")
        .Lines(Bad(name, line, text))
        .WithButtons(Buttons::OK)
        .WithIcon(Icon::Critical);
  }

  // Values of one row selected by `where`, in the order of `columns`.
  std::vector<double> Row(const std::string& table, const std::string& columns,
                          const std::string& where) {
    Statement st = db_.PrepareRaw("select " + columns + " from " + table + " where " + where);
    std::vector<double> v;
    if (!st.Step()) {
      ADD_FAILURE() << "no row in " << table << " where " << where;
      return v;
    }
    for (int i = 0; i < st.ColumnCount(); ++i) v.push_back(st.GetDouble(i));
    EXPECT_FALSE(st.Step()) << "more than one row in " << table << " where " << where;
    return v;
  }

  std::string Text(const std::string& sql) {
    Statement st = db_.PrepareRaw(sql);
    if (!st.Step()) return "<no row>";
    return st.GetText(0);
  }
};

TEST_F(ResultsLoaderTest, EverySectionOfAHandWrittenFile) {
  PrepareSolve();
  CopyExtract("golden.xtr", "GOLDEN.XTR");  // the solver writes the extension in capitals
  ScriptedUserInterface ui;
  ui.ExpectMessage("Not Available", {"Grid extractions not yet supported"});
  ExpectBad(ui, "Bad DATA record: Record ", 5, "@   1.0,  2.0,  3.0");
  ExpectBad(ui, "Bad DISCHARGE WELL record: Record ", 9, "  1.0, 2.0, 3.0");
  ExpectBad(ui, "Bad DRAIN record: Record ", 21, " 1.0, 2.0");
  ExpectBad(ui, "Bad Inhomogeneity Record: Record ", 26, " IN_000002_0200, 6.0E+00");
  ExpectBad(ui, "Bad Horizontal Barrier record: Record ", 32, " HB_000003_0000");
  ExpectBad(ui, "Bad FLUX INSPECTOR record: Record ", 35, " FL_000008");
  const LoadSummary summary = ModelLoadTARNOResults(ProjectPath(), Frame(), ui);
  ui.Verify();
  EXPECT_EQ(summary.linesRead, 38);
  EXPECT_EQ(summary.badRecords, 6);
  EXPECT_EQ(summary.sectionHeads, 10);
  EXPECT_EQ(summary.records, 26);  // 4 "@" lines and 22 section records
  EXPECT_EQ(summary.unmatched, 1);  // WL_999999; a grid point is not an element
  EXPECT_EQ(ui.WaitTexts(), std::vector<std::string>{"Loading Results..."});
  EXPECT_FALSE(ui.WaitWindowVisible());

  // Test points: Difference is model minus observed.
  EXPECT_EQ(Row("TPResults", "ModelHead, Difference, X, Y, ObsHead", "VID=3"),
            (std::vector<double>{12.5, 1.5, 150, 75, 11}));
  EXPECT_EQ(Row("TPResults", "ModelFlow, Difference, ModelHead", "VID=4"),
            (std::vector<double>{23.5, 3.5, 0}));
  EXPECT_EQ(Text("select Type from TPResults where VID=4"), "Gage");

  // Wells: a discharge well keeps its specified head; a head well's head is the
  // specified head plus the error.
  EXPECT_EQ(Row("WLResults", "X, Y, Radius, Discharge, SpecifiedHead, Head",
                "TARNOLabel='WL_000001'"),
            (std::vector<double>{120, 60, 0.5, 500, 0, 8.25}));
  EXPECT_EQ(Row("WLResults", "X, Y, Radius, Discharge, SpecifiedHead, Head",
                "TARNOLabel='WL_000002'"),
            (std::vector<double>{80, 40, 0.25, -300, 12.5, 12.5 + 0.001}));

  const std::string lsColumns =
      "X1, Y1, X2, Y2, SpecifiedHead, CalculatedHead, Discharge, Width, Resistance, Depth, "
      "BaseFlow, OverlandFlow, Error";
  // Discharge strings: ends and discharge only; the label's blanks are trimmed.
  EXPECT_EQ(Row("LSResults", lsColumns, "TARNOLabel='LS_000004_0100'"),
            (std::vector<double>{150, 0, 150, 40, -999, 0, 150, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Row("LSResults", lsColumns, "TARNOLabel='LS_000004_0200'"),
            (std::vector<double>{150, 40, 180, 40, -999, 0, 250, 0, 0, 0, 0, 0, 0}));
  EXPECT_EQ(Row("LSResults", lsColumns, "TARNOLabel='LS_000005_0100'"),
            (std::vector<double>{0, 100, 200, 100, 11, 10.5, -400, 3, 2, 1.5, 7, 8, 0.01}));
  EXPECT_EQ(Row("LSResults", lsColumns, "TARNOLabel='LS_000006_0100'"),
            (std::vector<double>{190, 10, 190, 50, 8.3, 8.1, -20, 2, 1, 0.5, 12, 13, 0.002}));
  // A drain record takes base flow and overland flow from the last head record.
  EXPECT_EQ(Row("LSResults", lsColumns, "TARNOLabel='LS_000006_0200'"),
            (std::vector<double>{190, 50, 190, 70, 7.3, 7.2, -10, 2, 1, 0.5, 12, 13, 0.003}));
  EXPECT_EQ(Text("select LinkedTo from LSResults where TARNOLabel='LS_000006_0100'"),
            "LS_000006_0200");
  EXPECT_EQ(Text("select LinkedTo from LSResults where TARNOLabel='LS_000006_0200'"), "__NONE__");

  // Search types by the string of each row.
  EXPECT_EQ(Text("select SearchType from LSResults where Label='S1'"), "Discharge");
  EXPECT_EQ(Text("select SearchType from LSResults where Label='S2'"), "NearField");
  EXPECT_EQ(Text("select SearchType from LSResults where TARNOLabel='LS_000006_0200'"), "Stream");

  const std::string inColumns =
      "Conductivity, BottomElev, ExtractRate, Porosity, DomainArea, AvgPotJump, X1, Y1, XC, YC, "
      "StrPotJumpNode, ParabStrPotJump, RealStrExtrNode, ImagStrExtrNode, RealStrExtrCntr, Tfac, "
      "DeltaPNode, DeltaPCntr";
  EXPECT_EQ(Row("INResults", inColumns, "TARNOLabel='IN_000002_0000'"),
            (std::vector<double>{5, 3, -0.001, 0.3, 800, 0.4, 0, 0, 20, 0, 1.1, 1.2, 1.3, 1.4, 1.5,
                                 1.6, 1.7, 1.8}));
  EXPECT_EQ(Row("INResults", inColumns, "TARNOLabel='IN_000002_0100'"),
            (std::vector<double>{5, 3, -0.001, 0.3, 800, 0.4, 40, 0, 40, 10, 2.1, 2.2, 2.3, 2.4,
                                 2.5, 2.6, 2.7, 2.8}));
  // The second header line replaced the kept values; the bad one did not.
  EXPECT_EQ(Row("INResults", inColumns, "TARNOLabel='IN_000002_0200'"),
            (std::vector<double>{9, 8, 7, 6, 5, 4, 40, 20, 20, 10, 3.1, 3.2, 3.3, 3.4, 3.5, 3.6,
                                 3.7, 3.8}));

  EXPECT_EQ(Row("NFResults",
                "Conductivity, Width, Porosity, WallBottomElev, X1, Y1, XC, YC, StrPotJumpNode, "
                "ParabStrPotJump, DeltaFlowCntr, DeltaFlowNode",
                "TARNOLabel='HB_000003_0000'"),
            (std::vector<double>{0.01, 0.5, 0.25, 2, 60, 90, 80, 90, 4.1, 4.2, 4.3, 4.4}));

  EXPECT_EQ(Row("FIResults", "PID, TotalFlux", "Label='FL_000007'"),
            (std::vector<double>{7, -125}));
  EXPECT_EQ(Count("FIResults"), 1);
}

TEST_F(ResultsLoaderTest, ALoadReplacesTheTestPointAndFluxRowsOfTheLastOne) {
  PrepareSolve();
  CopyExtract("golden.xtr", "golden.xtr");
  ScriptedUserInterface ui;
  for (int i = 0; i < 2; ++i) {
    ui.ClearScript();
    ui.ExpectMessageTitled("Not Available");
    for (int k = 0; k < 6; ++k) ui.ExpectMessageTitled("Import error");
    ModelLoadTARNOResults(ProjectPath(), Frame(), ui);
    ui.Verify();
  }
  EXPECT_EQ(Count("TPResults"), 2);
  EXPECT_EQ(Count("FIResults"), 1);
}

TEST_F(ResultsLoaderTest, HeadLinesOnlyLeaveBlankRows) {
  PrepareSolve();
  std::ofstream(Dir() / "golden.xtr", std::ios::binary)
      << "* data points\r\n* head specified wells\r\n* discharge specified line sinks\r\n";
  ScriptedUserInterface ui;
  const auto summary = ModelLoadTARNOResults(ProjectPath(), Frame(), ui);
  ui.Verify();
  EXPECT_EQ(summary.rowsUpdated, 0);
  EXPECT_EQ(Row("WLResults", "X, Discharge, Head", "TARNOLabel='WL_000002'"),
            (std::vector<double>{80, 0, 0}));
  EXPECT_EQ(Row("TPResults", "ModelHead, Difference", "VID=3"), (std::vector<double>{0, 0}));
}

TEST_F(ResultsLoaderTest, MissingFileIsAFileErrorAfterTheTestPointRows) {
  PrepareSolve();
  ScriptedUserInterface ui;
  try {
    ModelLoadTARNOResults(ProjectPath(), Frame(), ui);
    FAIL() << "no error for a missing extract file";
  } catch (const Error& e) {
    EXPECT_EQ(e.number(), error_number::kFileNotFound);
    EXPECT_NE(std::string(e.what()).find("golden.xtr"), std::string::npos);
  }
  EXPECT_EQ(Count("TPResults"), 2);
  EXPECT_EQ(Count("LSResults"), 5);
  EXPECT_FALSE(ui.WaitWindowVisible());
}

TEST_F(ResultsLoaderTest, RecordsForUnknownLabelsAndTestPointsChangeNothing) {
  PrepareSolve();
  std::ofstream(Dir() / "golden.xtr", std::ios::binary)
      << "@         gage, 1.0, 2.0, 3.0,TG_000099\r\n"
      << "@   lake_stage, 1.0, 2.0, 3.0,TS_000003\r\n"
      << "* head specified line sinks\r\n"
      << " 1,2,3,4,5,6,7,8,9,10,11,12,13, LS_424242_0100\r\n"
      << "* stream linkages\r\n"
      << " LS_000005_0100\r\n";
  ScriptedUserInterface ui;
  const auto summary = ModelLoadTARNOResults(ProjectPath(), Frame(), ui);
  ui.Verify();
  // The lake stage record finds test point 3 through the last six characters of its
  // label: head 3, difference 3 - 11.
  EXPECT_EQ(summary.rowsUpdated, 1);
  EXPECT_EQ(Row("TPResults", "ModelHead, Difference", "VID=3"), (std::vector<double>{3, -8}));
  EXPECT_EQ(Row("TPResults", "ModelFlow, Difference", "VID=4"), (std::vector<double>{0, 0}));
  EXPECT_EQ(Text("select LinkedTo from LSResults where TARNOLabel='LS_000005_0100'"), "__NONE__");
}

TEST_F(ResultsLoaderTest, CoordinatesGoBackThroughTheFrameRoundedToFourDecimals) {
  PrepareSolve();
  std::ofstream(Dir() / "golden.xtr", std::ios::binary)
      << "* discharge specified wells\r\n"
      << " 0.30480000004, -0.3048, 1, 2, 3, WL_000001\r\n";
  ScriptedUserInterface ui;
  ModelLoadTARNOResults(ProjectPath(), ModelFrame{100, 50, 0.3048}, ui);
  const auto row = Row("WLResults", "X, Y", "TARNOLabel='WL_000001'");
  ASSERT_EQ(row.size(), 2u);
  EXPECT_DOUBLE_EQ(row[0], 101);
  EXPECT_DOUBLE_EQ(row[1], 49);
}

TEST(SectionHeads, FirstNameInTheTableWins) {
  EXPECT_EQ(SectionOfHeadLine(" discharge specified wells"), kSectionDischargeWells);
  EXPECT_EQ(SectionOfHeadLine(" head specified wells"), kSectionHeadWells);
  // "head specified wells" is not part of the partially penetrating head text, but
  // "discharge specified" partially penetrating wells are found as such.
  EXPECT_EQ(SectionOfHeadLine(" head specified partially penetrating wells"), kSectionHeadPPWells);
  EXPECT_EQ(SectionOfHeadLine(" discharge specified partially penetrating wells"),
            kSectionDischargePPWells);
  EXPECT_EQ(SectionOfHeadLine(" Theis wells"), kSectionTheisWells);
  EXPECT_EQ(SectionOfHeadLine(" drains"), kSectionDrains);
  EXPECT_EQ(SectionOfHeadLine(" head specified line sinks (no drains)"), kSectionDrains);
  EXPECT_EQ(SectionOfHeadLine(" galleries"), kSectionGalleries);
  EXPECT_EQ(SectionOfHeadLine(" transmissivity inhomogeneities"), kSectionInhomogeneities);
  EXPECT_EQ(SectionOfHeadLine(" slurry walls"), kSectionBarriers);
  EXPECT_EQ(SectionOfHeadLine(" flux inspection lines"), kSectionFlux);
  EXPECT_EQ(SectionOfHeadLine(" stream linkages"), kSectionStreamLinks);
  // Case matters, and an unknown head selects nothing.
  EXPECT_EQ(SectionOfHeadLine(" Drains"), kSectionNone);
  EXPECT_EQ(SectionOfHeadLine(" data points"), kSectionNone);
}

TEST(ExtractFile, FoundInAnyCase) {
  const test::TempDir temp("tarno_xtr");
  const std::filesystem::path& dir = temp.Path();
  EXPECT_TRUE(FindExtractFile(dir, "base").empty());
  std::ofstream(dir / "BASE.XTR") << "x";
  EXPECT_EQ(FindExtractFile(dir, "base"), dir / "BASE.XTR");
  std::ofstream(dir / "base.xtr") << "x";
  EXPECT_EQ(FindExtractFile(dir, "base"), dir / "base.xtr");
}

}  // namespace
}  // namespace tarno::testing

namespace tarno::testing {
namespace {

// When the counts of a load tell that the file cannot be this project's results.
TEST(UnusableResults, EachCaseHasItsMessageAndUsableLoadsHaveNone) {
  struct Case {
    const char* name;
    LoadSummary summary;
    const char* firstLine;  // nullptr: no message
  };
  auto counts = [](int lines, int heads, int records, int bad, int unmatched, int updated) {
    LoadSummary s;
    s.file = "/p/model.XTR";
    s.linesRead = lines;
    s.sectionHeads = heads;
    s.records = records;
    s.badRecords = bad;
    s.unmatched = unmatched;
    s.rowsUpdated = updated;
    return s;
  };
  const Case cases[] = {
      {"empty", counts(0, 0, 0, 0, 0, 0), "The TARNO results file /p/model.XTR is empty."},
      {"no head", counts(40, 0, 3, 3, 0, 0),
       "The TARNO results file /p/model.XTR has no section of results."},
      {"foreign", counts(9, 3, 5, 1, 4, 0),
       "None of the 5 records of the TARNO results file /p/model.XTR belongs to an element of "
       "this project."},
      // Heads only: a model without elements to report.
      {"heads only", counts(3, 3, 0, 0, 0, 0), nullptr},
      // Every record bad: each had its own message already.
      {"all bad", counts(4, 1, 3, 3, 0, 0), nullptr},
      // Some labels unknown, others loaded.
      {"partly foreign", counts(9, 3, 5, 0, 2, 3), nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    ScriptedUserInterface ui;
    if (c.firstLine)
      ui.Expect(UiCallKind::MessageBox).Title("Import error").WithIcon(Icon::Critical);
    EXPECT_EQ(ReportUnusableResults(c.summary, ui), c.firstLine != nullptr);
    ui.Verify();
    if (c.firstLine) {
      EXPECT_EQ(ui.Messages().at(0).lines.at(0), c.firstLine);
    }
  }
}

}  // namespace
}  // namespace tarno::testing
