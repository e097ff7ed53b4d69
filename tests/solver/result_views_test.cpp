// The result dialogs and the results viewer over a model solved by the solver of the
// build: a lake beside a pumping well, whose balance the solver reports and the
// loader stores in LKResults; and the lake balance section of the extract file read
// by the loader, bad records included.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <fstream>

#include "controller_fixture.h"
#include "elements/element_store.h"
#include "elements/solver_label.h"
#include "solver/result_views.h"
#include "solver/results_loader.h"
#include "support/scripted_ui.h"

namespace tarno::testing {
namespace {

class RecordingClipboard : public ClipboardPort {
 public:
  void SetText(const std::string& text) override { texts.push_back(text); }
  std::vector<std::string> texts;
};

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  size_t from = 0;
  for (size_t at; (at = text.find("\r\n", from)) != std::string::npos; from = at + 2)
    lines.push_back(text.substr(from, at - from));
  return lines;
}

// An aquifer (base -100, thickness 200, k 1; the reference head is 0) with a well that pumps 500 at
// (100, 50) and a square lake of 20 x 20 west of it, with rain 0.001, evaporation
// 0.003 and a bottom resistance of 2: the lake loses to evaporation more than it gets
// from the rain and takes the rest from the aquifer.
class LakeResultsTest : public ControllerTest {
 protected:
  void SetUp() override {
    ControllerTest::SetUp();
    Sql("update Model set AQBase=-100, AQThickness='200', AQHydCond=1, AQPorosity=0.25, "
        "CONTOURShow=-1, TRACECompute=0");
    const auto well = Point(100, 50);
    Sql("insert into Wells (VID, Head, Radius, Label) values (" + std::to_string(well) +
        ", 500, 0.5, 'W1')");
    lake_ = String({{40, 40}, {60, 40}, {60, 60}, {40, 60}}, true);
    Sql("insert into Lakes (PID, Label, InterriorConductivity, AddedRechargeRate, "
        "Evapotranspiration, Resistance, Width, StageTableFilename) values (" +
        std::to_string(lake_) + ", 'Pond', 1000, 0.001, 0.003, 2, 1, '__NONE__')");
  }

  void Solve() {
    SolveContext& ctx = Context();
    ctx_.programDirectory = TARNO_BIN_DIR;
    ExpectReferenceHeadWarning();
    SolveOptions o;
    const SolveReport r = ModelRunTARNO(ctx, o);
    ui_.Verify();
    ASSERT_EQ(r.outcome, SolveOutcome::Completed) << r.failure;
    ui_.ClearRecord();
  }

  std::int64_t lake_ = 0;
};

TEST_F(LakeResultsTest, TheLakeBalanceOfTheSolveClosesAndFillsLakeinfo) {
  Solve();
  const std::string label = SolverVertexLabel("LK_", lake_, 0);
  const auto d = LoadLakeinfo(db_, label);
  ASSERT_TRUE(d.has_value()) << "no LKResults row " << label;
  EXPECT_EQ(d->Label, "Pond");
  EXPECT_EQ(d->TARNOLabel, label);
  EXPECT_EQ(d->DataFirstTarnoLabel, SolverVertexLabel("LK_", lake_, 0));
  EXPECT_EQ(d->DataLastTarnoLabel, SolverVertexLabel("LK_", lake_, 300));
  EXPECT_NEAR(d->DataArea, 400, 1e-9);
  EXPECT_FALSE(d->Dry());
  // Rain and evaporation on the whole water surface (no stage table).
  EXPECT_NEAR(d->DataPrecipitation, 0.001 * 400, 1e-9);
  EXPECT_NEAR(d->DataEvapotranspiration, 0.003 * 400, 1e-9);
  // The exchange is uniform over the bottom: here the lake takes water from the aquifer.
  EXPECT_GT(d->dataGroundwaterIn, 0);
  EXPECT_EQ(d->DataGroundwaterOut, 0);
  EXPECT_EQ(
      d->DataStreamFlowIn + d->DataStreamFlowOut + d->DataOverlandFlowIn + d->DataOverlandFlowOut,
      0);
  // The totals are the sums of their terms, the error their difference, and it closes.
  EXPECT_NEAR(
      d->DataTotalIn,
      d->DataPrecipitation + d->dataGroundwaterIn + d->DataOverlandFlowIn + d->DataStreamFlowIn,
      1e-9);
  EXPECT_NEAR(d->DataTotalOut,
              d->DataEvapotranspiration + d->DataGroundwaterOut + d->DataOverlandFlowOut +
                  d->DataStreamFlowOut,
              1e-9);
  EXPECT_NEAR(d->DataError, d->DataTotalIn - d->DataTotalOut, 1e-9);
  const double largest = std::max({d->DataPrecipitation, d->dataGroundwaterIn,
                                   d->DataEvapotranspiration, d->DataTotalIn, d->DataTotalOut});
  EXPECT_LE(std::fabs(d->DataError), 1e-6 * largest);
  EXPECT_LE(std::fabs(d->DataErrorPercent), 1e-4);
  // The exchange N = (h - s) / c: the aquifer under the lake stands above the stage.
  EXPECT_GT(d->Value("AquiferHead"), d->DataLakeStage);
  EXPECT_NEAR((d->Value("AquiferHead") - d->DataLakeStage) / 2 * 400, d->dataGroundwaterIn,
              1e-4 * d->dataGroundwaterIn);
  // The view's columns: the lake, the inflows, the outflows and the balance.
  ASSERT_EQ(d->ColumnStarts.size(), 2u);
  EXPECT_EQ(d->Lines[d->ColumnStarts[0]].field, "Precipitation");
  EXPECT_EQ(d->Lines[d->ColumnStarts[1]].field, "Evapotranspiration");
  // Every line of the dialog shows its value.
  const InfoLine* stage = d->Line("LakeStage");
  ASSERT_NE(stage, nullptr);
  EXPECT_EQ(stage->caption, "Lake Stage");
  EXPECT_DOUBLE_EQ(stage->value, d->DataLakeStage);
}

TEST_F(LakeResultsTest, ARightClickOnALakeVertexShowsItsBalance) {
  Solve();
  const std::vector<Vertex> v = LoadVertices(db_, lake_);
  ASSERT_EQ(v.size(), 4u);
  Lakeinfo shown;
  ui_.ExpectModal<Lakeinfo>(Lakeinfo::kName, [&](Lakeinfo& d) { shown = d; });
  EXPECT_EQ(ShowResultInfo(db_, ui_, ElementKind::Lake, v[2]), InfoShown::Lakeinfo);
  ui_.Verify();
  EXPECT_EQ(shown.Label, "Pond");
  EXPECT_EQ(shown.Title, Lakeinfo::kTitle);
  EXPECT_GT(shown.DataTotalIn, 0);

  // A solve that loses the lake's rows (a result table of an older load) tells so.
  Sql("delete from LKResults");
  ui_.ExpectMessageTitled(kNoResultsTitle);
  EXPECT_EQ(ShowResultInfo(db_, ui_, ElementKind::Lake, v[0]), InfoShown::Message);
  ui_.Verify();
  // Kinds without an information dialog show nothing.
  EXPECT_EQ(ShowResultInfo(db_, ui_, ElementKind::Barrier, v[0]), InfoShown::Nothing);
}

TEST_F(LakeResultsTest, TheViewerShowsEveryTableAndCopiesTheShownOne) {
  // Before a solve the tables are empty, and the viewer shows no rows.
  ResultViewer viewer;
  viewer.Load(db_);
  ASSERT_EQ(viewer.Tables.size(), ResultTables().size());
  for (const auto& t : viewer.Tables) EXPECT_TRUE(t.rows.empty()) << t.table;

  Solve();
  viewer.Load(db_);
  std::vector<std::string> captions;
  for (const auto& t : viewer.Tables) captions.push_back(t.caption);
  EXPECT_THAT(captions, ::testing::ElementsAre("Linesinks", "Wells", "No-Flow Boundaries",
                                               "Flux Inspection Lines", "Test Points",
                                               "Inhomogeneities", "Lakes"));
  const auto& wells = viewer.Tables[1];
  EXPECT_THAT(wells.headers,
              ::testing::ElementsAre("Label", "TARNO Label", "X", "Y", "Radius", "Specified Head",
                                     "Calculated Head", "Discharge"));
  ASSERT_EQ(wells.rows.size(), 1u);
  EXPECT_EQ(wells.rows[0][0], "W1");
  EXPECT_EQ(wells.rows[0][2], "100");
  EXPECT_EQ(wells.rows[0][7], "500");
  ASSERT_EQ(viewer.Tables[6].rows.size(), 1u);
  EXPECT_EQ(viewer.Tables[6].rows[0][0], "Pond");

  // The copy: captions, then one line per row, tab separated.
  RecordingClipboard clipboard;
  viewer.Tab = 1;
  viewer.COPYCLIPBOARD_Click(clipboard);
  ASSERT_EQ(clipboard.texts.size(), 1u);
  const auto lines = SplitLines(clipboard.texts[0]);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0],
            "Label\tTARNO Label\tX\tY\tRadius\tSpecified Head\tCalculated Head\tDischarge");
  EXPECT_EQ(lines[1].rfind("W1\tWL_", 0), 0u) << lines[1];
  EXPECT_EQ(std::count(lines[1].begin(), lines[1].end(), '\t'), 7);
  // An empty table copies its captions alone.
  viewer.Tab = 2;
  EXPECT_EQ(SplitLines(viewer.ClipboardText()).size(), 1u);
}

TEST_F(LakeResultsTest, InvalidatingTheSolutionEmptiesTheLakeBalances) {
  Solve();
  ASSERT_TRUE(LoadLakeinfo(db_, SolverVertexLabel("LK_", lake_, 0)).has_value());
  ClearLakeResults(db_);
  EXPECT_FALSE(LoadLakeinfo(db_, SolverVertexLabel("LK_", lake_, 0)).has_value());
}

// The lake balance section read by the loader: a record of a lake of the project is
// stored, one of no lake counted as unmatched, a short one reported.
TEST_F(LakeResultsTest, TheLoaderReadsTheLakeBalanceSection) {
  const std::string label = SolverVertexLabel("LK_", lake_, 0);
  const auto file = Dir() / "lakes.xtr";
  std::ofstream(file, std::ios::binary)
      << "* data points\r\n* lake balances\r\n"
      << " " << label << ", " << SolverVertexLabel("LK_", lake_, 0) << ", "
      << SolverVertexLabel("LK_", lake_, 300)
      << ", 4.0E+02, 4.0E+02, 0.0E+00, 9.5E+00, 1.0E+01, 4.0E-01, 8.0E-01, 0.0E+00, 0.0E+00, "
         "1.2E+00, "
         "1.2E+00, 0.0E+00, 0.0E+00, 0.0E+00, 1.2E+00, 0.0E+00, 0.0E+00\r\n"
      << " LK_999999_0000, LK_999999_0000, LK_999999_0300, 1, 1, 0, 1, 1, 0, 0, 0, 0, 0, 0, 0, 0, "
         "0, "
         "0, 0, 0\r\n"
      << " " << label << ", 4.0E+02\r\n";
  ui_.ExpectMessage("Import error",
                    {"Bad LAKE BALANCE record: Record 5 of TARNO results file:",
                     " " + label + ", 4.0E+02", "Continue reading the results file?"})
      .WithIcon(Icon::Critical);
  const LoadSummary s = LoadTARNOResultsFile(db_, file, ModelFrame{100, 50, 1.0}, ui_);
  ui_.Verify();
  EXPECT_EQ(s.badRecords, 1);
  EXPECT_EQ(s.unmatched, 1);
  const auto d = LoadLakeinfo(db_, label);
  ASSERT_TRUE(d.has_value());
  EXPECT_EQ(d->Label, "Pond");
  EXPECT_DOUBLE_EQ(d->DataLakeStage, 9.5);
  EXPECT_DOUBLE_EQ(d->dataGroundwaterIn, 0.8);
  EXPECT_DOUBLE_EQ(d->DataTotalOut, 1.2);
  EXPECT_EQ(SectionOfHeadLine(" lake balances"), kSectionLakeBalances);
}

}  // namespace
}  // namespace tarno::testing
