// The residual statistics: the eight numbers against hand-computed values, the
// median of even and odd counts, disabled tabs, the chart data, and the dialog's
// messages, clipboard text and export through the scripted port.
#include <gtest/gtest.h>

#include <cmath>

#include "calibration/stats_model.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace tarno::testing {
namespace {

ObservationSet SetOf(ObservationKind kind, const std::vector<std::pair<double, double>>& obsModel) {
  ObservationSet s;
  s.kind = kind;
  for (std::size_t i = 0; i < obsModel.size(); ++i)
    s.Add(obsModel[i].first, obsModel[i].second, obsModel[i].second - obsModel[i].first,
          "T" + std::to_string(i + 1));
  return s;
}

TEST(MedianDifference, EvenCountsAverageTheTwoMiddleValues) {
  EXPECT_DOUBLE_EQ(MedianDifference({-1.0, 3.0}), 1.0);
  EXPECT_DOUBLE_EQ(MedianDifference({-4.0, -1.0, 2.0, 10.0}), 0.5);
  EXPECT_DOUBLE_EQ(MedianDifference({}), 0.0);
}

TEST(MedianDifference, OddCountsTakeHalfTheCountRoundedToEven) {
  // k = round-half-even(N / 2): N = 1 -> 0, 3 -> 2, 5 -> 2, 7 -> 4, 9 -> 4.
  EXPECT_DOUBLE_EQ(MedianDifference({7.0}), 7.0);
  EXPECT_DOUBLE_EQ(MedianDifference({1.0, 2.0, 3.0}), 3.0) << "N = 3 takes the largest";
  EXPECT_DOUBLE_EQ(MedianDifference({1.0, 2.0, 3.0, 4.0, 5.0}), 3.0);
  EXPECT_DOUBLE_EQ(MedianDifference({1, 2, 3, 4, 5, 6, 7}), 5.0) << "one above the middle";
  EXPECT_DOUBLE_EQ(MedianDifference({1, 2, 3, 4, 5, 6, 7, 8, 9}), 5.0);
}

TEST(ResidualStatistics, MatchHandComputedValues) {
  // Differences sorted: -2, 1, 3, 6 (observed 10 each).
  const auto set = SetOf(ObservationKind::Piezometer, {{10, 8}, {10, 11}, {10, 13}, {10, 16}});
  const auto s = ComputeStatistics(set);
  ASSERT_TRUE(s);
  EXPECT_DOUBLE_EQ(s->maximum, 6.0);
  EXPECT_DOUBLE_EQ(s->minimum, -2.0);
  EXPECT_DOUBLE_EQ(s->average, 2.0);          // 8 / 4
  EXPECT_DOUBLE_EQ(s->median, 2.0);           // (1 + 3) / 2
  EXPECT_DOUBLE_EQ(s->meanAbsolute, 3.0);     // 12 / 4
  EXPECT_DOUBLE_EQ(s->rms, std::sqrt(12.5));  // (4 + 1 + 9 + 36) / 4
  EXPECT_EQ(s->count, 4);
  EXPECT_DOUBLE_EQ(s->sumOfSquares, 50.0);
  const auto texts = StatisticTexts(*s);
  const std::array<std::string, 8> expected = {"6.0", "-2.0", "2.0", "2.0",
                                               "3.0", "3.5",  "4",   "50.0"};
  EXPECT_EQ(texts, expected);
}

TEST(ResidualStatistics, FieldsShowOneDecimalWhateverTheSize) {
  ResidualStatistics s;
  s.maximum = 12345.678;
  s.minimum = -3.14;
  s.average = 0.05;
  s.median = -0.25;
  s.count = 12;
  s.sumOfSquares = 0.0;
  const auto t = StatisticTexts(s);
  EXPECT_EQ(t[0], "12345.7");
  EXPECT_EQ(t[1], "-3.1");
  EXPECT_EQ(t[6], "12");
  EXPECT_EQ(t[7], "0.0");
  EXPECT_EQ(std::string(StatisticCaptions()[5]), "Root-Mean-Square Difference");
}

TEST(ResidualStatistics, FewerThanTwoObservationsGiveNone) {
  EXPECT_FALSE(ComputeStatistics(SetOf(ObservationKind::Gage, {})));
  EXPECT_FALSE(ComputeStatistics(SetOf(ObservationKind::Gage, {{5, 6}})));
  EXPECT_TRUE(ComputeStatistics(SetOf(ObservationKind::Gage, {{5, 6}, {5, 4}})));
}

TEST(ChartData, ScatterHoldsTheLineOfEqualityOverObservedAndModelled) {
  const auto set = SetOf(ObservationKind::Gage, {{10, 4}, {20, 25}, {30, 31}});
  const ChartData c = ScatterData(set);
  EXPECT_EQ(c.xTitle, "Observed Stream Flow");
  EXPECT_EQ(c.yTitle, "Modeled Stream Flow");
  ASSERT_EQ(c.rows.size(), 3u);
  EXPECT_EQ(c.rows[1][0], 20.0);
  EXPECT_EQ(c.rows[1][1], 25.0);
  EXPECT_EQ(c.rows[0][2], 4.0) << "minimum over modelled values too";
  EXPECT_EQ(c.rows[0][3], 4.0);
  EXPECT_EQ(c.rows[1][2], 31.0);
  EXPECT_EQ(c.rows[1][3], 31.0);
  EXPECT_EQ(c.rows[2][2], 0.0);
}

TEST(ChartData, CumulativeFillsAQuarterOfTheValueRange) {
  const auto set = SetOf(ObservationKind::LakeStage, {{100, 99}, {100, 101}, {100, 108}});
  const ChartData c = CumulativeData(set);
  EXPECT_EQ(c.xTitle, "Difference (Modeled - Observed)");
  EXPECT_EQ(c.yTitle, "Cumulative probability");
  ASSERT_EQ(c.rows.size(), 3u);
  // max - min = 108 - 99 = 9; i / ((3 - 1) * 4).
  EXPECT_DOUBLE_EQ(c.rows[0][1], 0.0);
  EXPECT_DOUBLE_EQ(c.rows[1][1], 9.0 / 8.0);
  EXPECT_DOUBLE_EQ(c.rows[2][1], 9.0 / 4.0);
  EXPECT_DOUBLE_EQ(c.rows[2][0], 8.0);
  EXPECT_EQ(ScatterData(SetOf(ObservationKind::LakeStage, {{1, 2}})).xTitle, "Observed Stage");
}

// A project with TPResults rows, read through the store.
class CalibrationDialog : public ::testing::Test {
 protected:
  void SetUp() override {
    DBNewDatabase(dir_ / "cal.trn", "Calibration test", true, true);
    db_ = Database::Open(dir_ / "cal.trn");
  }
  void TearDown() override { db_.Close(); }
  void Result(const std::string& label, const std::string& type, double obs, double model) {
    const bool gage = type == "Gage";
    Statement st = db_.PrepareRaw(
        "insert into TPResults (Label, VID, ObsHead, ModelHead, Difference, ObsStreamFlow, "
        "ModelFlow, Type) values (?, 1, ?, ?, ?, ?, ?, ?)");
    st.Bind(1, label).Bind(2, gage ? 0.0 : obs).Bind(3, gage ? 0.0 : model);
    st.Bind(4, model - obs).Bind(5, gage ? obs : 0.0).Bind(6, gage ? model : 0.0).Bind(7, type);
    st.Run();
  }
  std::string Path() const { return (dir_ / "cal.trn").string(); }

  test::TempDir dir_{"tarno-calstats"};
  Database db_;
  ScriptedUserInterface ui_;
};

TEST_F(CalibrationDialog, LoadsEachKindSortedByDifferenceFromItsOwnColumns) {
  Result("P1", "Piezometer", 10, 13);
  Result("P2", "Piezometer", 10, 8);
  Result("P3", "Piezometer", 10, 10.5);
  Result("G1", "Gage", 100, 90);
  Result("G2", "Gage", 50, 70);
  Result("S1", "Lake Stage", 200, 201);
  Calibration dlg;
  dlg.init(db_);
  const CalibrationTab& p = dlg.Tab(ObservationKind::Piezometer);
  EXPECT_TRUE(p.enabled);
  EXPECT_EQ(p.set.labels, (std::vector<std::string>{"P2", "P3", "P1"}));
  EXPECT_EQ(p.texts[3], "3.0") << "N = 3: the largest difference is the median";
  EXPECT_EQ(p.texts[6], "3");
  const CalibrationTab& g = dlg.Tab(ObservationKind::Gage);
  EXPECT_TRUE(g.enabled);
  EXPECT_EQ(g.set.observed, (std::vector<double>{100, 50}));
  EXPECT_EQ(g.texts[0], "20.0");
  EXPECT_EQ(g.texts[7], "500.0");
  EXPECT_EQ(g.texts[3], "5.0") << "(-10 + 20) / 2";
  const CalibrationTab& s = dlg.Tab(ObservationKind::LakeStage);
  EXPECT_FALSE(s.enabled) << "one observation gives no statistics";
  EXPECT_EQ(s.texts[0], "");
}

TEST_F(CalibrationDialog, ADisabledTabGivesTheNotEnoughPointsMessageOfItsKind) {
  Result("S1", "Lake Stage", 200, 201);
  Calibration dlg;
  dlg.init(db_);
  const char* texts[] = {"There are not enough points for Piezometer statistics.",
                         "There are not enough points for Gage statistics.",
                         "There are not enough points for Lake Stage statistics."};
  for (int i = 0; i < 3; ++i) ui_.ExpectMessage("Not Enough Points", {texts[i]});
  for (int i = 0; i < 3; ++i) EXPECT_FALSE(dlg.SelectTab(i, ui_));
  ui_.Verify();
  EXPECT_EQ(dlg.currentTab, 2);
  EXPECT_EQ(dlg.StatisticsText(), "");
}

TEST_F(CalibrationDialog, MenuEntryOpensTheDialogEvenWithoutResults) {
  db_.Close();
  ui_.ExpectModal<Calibration>("Calibration", [](Calibration& d) {
    for (const auto& t : d.tabs) EXPECT_FALSE(t.enabled);
  });
  ShowCalibrationStatistics(ui_, Path());
  ui_.Verify();
  EXPECT_TRUE(ui_.Messages().empty());
}

TEST_F(CalibrationDialog, AFailedLoadShowsTheGeneralErrorAndStillOpens) {
  ui_.ExpectMessageTitled("Unhandled Error -- Contact the Authors");
  ui_.ExpectModal("Calibration");
  ShowCalibrationStatistics(ui_, (dir_ / "missing.trn").string());
  ui_.Verify();
  ASSERT_EQ(ui_.Messages().size(), 1u);
  EXPECT_EQ(ui_.Messages()[0].lines[0], "Unhandled error in Calibration.init");
}

TEST_F(CalibrationDialog, CopiesThePresentTabsStatisticsInTheClipboardOrder) {
  Result("G1", "Gage", 100, 90);
  Result("G2", "Gage", 50, 70);
  Calibration dlg;
  dlg.init(db_);
  EXPECT_TRUE(dlg.SelectTab(1, ui_));
  EXPECT_EQ(dlg.StatisticsText(),
            "Number of Observations: 2\r\n"
            "Maximum Difference: 20.0\r\n"
            "Minimum Difference: -10.0\r\n"
            "Average Difference (AD): 5.0\r\n"
            "Median Difference (MAD): 5.0\r\n"
            "Mean Absolute Difference: 15.0\r\n"
            "RMS Difference: 15.8\r\n"
            "Sum of Squared Differences: 500.0\r\n");
}

TEST_F(CalibrationDialog, PointSelectionShowsTheTestPointInformation) {
  Result("P1", "Piezometer", 10, 13.26);
  Result("P2", "Piezometer", 10, 8);
  Calibration dlg;
  dlg.init(db_);
  ui_.ExpectMessage("Test point information",
                    {"Selected test point: P1", "Observed head:       10.0",
                     "Modeled head:        13.3", "Difference:          3.3"});
  dlg.ShowPointInformation(0, 1, ui_);
  dlg.ShowPointInformation(0, 7, ui_);  // no such row: nothing shown
  ui_.Verify();
}

TEST_F(CalibrationDialog, ChartFollowsTheViewOfItsTab) {
  Result("P1", "Piezometer", 10, 13);
  Result("P2", "Piezometer", 12, 8);
  Calibration dlg;
  dlg.init(db_);
  EXPECT_EQ(dlg.Chart(0).xTitle, "Observed Head");
  dlg.tabs[0].view = ChartView::CumulativeProbability;
  const ChartData c = dlg.Chart(0);
  EXPECT_EQ(c.xTitle, "Difference (Modeled - Observed)");
  EXPECT_DOUBLE_EQ(c.rows[0][0], -4.0);
  EXPECT_DOUBLE_EQ(c.rows[1][1], (13.0 - 8.0) / 4.0);
}

TEST_F(CalibrationDialog, ChartExportAsksForAPngFile) {
  Calibration dlg;
  dlg.currentTab = 1;
  ui_.ExpectSaveFile((dir_ / "fit").string());
  ui_.ExpectSaveFile((dir_ / "fit.v2.PNG").string());
  ui_.ExpectSaveFile(std::nullopt);
  EXPECT_EQ(dlg.AskChartFile(ui_), (dir_ / "fit.png").string());
  EXPECT_EQ(dlg.AskChartFile(ui_), (dir_ / "fit.v2.PNG").string());
  EXPECT_FALSE(dlg.AskChartFile(ui_));
  ui_.Verify();
  const auto calls = ui_.CallsOf(UiCallKind::SaveFile);
  ASSERT_EQ(calls.size(), 3u);
  EXPECT_EQ(calls[0].file.filter, "PNG Image (*.png)|*.png");
  EXPECT_EQ(calls[0].file.initialFile, "Gage.png");
}

TEST_F(CalibrationDialog, ChartExportOpensInTheProjectsFolder) {
  Calibration dlg;
  dlg.projectFile = (dir_ / "model.trn").string();
  ui_.ExpectSaveFile(std::nullopt);
  EXPECT_FALSE(dlg.AskChartFile(ui_));
  ui_.Verify();
  const auto calls = ui_.CallsOf(UiCallKind::SaveFile);
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0].file.initialDirectory, dir_.Path().string());
}

}  // namespace
}  // namespace tarno::testing
