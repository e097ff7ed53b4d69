// The view of the calibration statistics, built without exec(): the fields and
// frames of each tab, the "Not Enough Points" message of a disabled tab, the two
// chart views, the information of a clicked point, the clipboard and the PNG export.
#include <gtest/gtest.h>

#include <QApplication>
#include <QChart>
#include <QChartView>
#include <QClipboard>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <QValueAxis>
#include <cstdlib>

#include "app/views/stats_view.h"
#include "dialogs_test_support.h"
#include "support/scripted_ui.h"

namespace tarno::testing {
namespace {

class StatsViewTest : public ProjectTest {
 protected:
  void SetUp() override {
    ProjectTest::SetUp();
    Database db = Open();
    // Piezometers: differences -2.5, -0.4, 0.3, 1.2, 2.0; one gage; no lake stages.
    db.ExecuteRaw(
        "insert into TPResults (Label, VID, ObsHead, ModelHead, Difference, Type) values "
        "('MW-1', 1, 120.0, 117.5, -2.5, 'Piezometer'), ('MW-2', 2, 118.0, 117.6, -0.4, "
        "'Piezometer'), ('MW-3', 3, 116.0, 116.3, 0.3, 'Piezometer'), ('MW-4', 4, 121.0, "
        "122.2, 1.2, 'Piezometer'), ('MW-5', 5, 119.0, 121.0, 2.0, 'Piezometer');"
        "insert into TPResults (Label, VID, ObsHead, ModelHead, Difference, ObsStreamFlow, "
        "ModelFlow, Type) values ('G-1', 6, 0, 0, 10, 200, 210, 'Gage')");
    model_.init(db);
  }
  static std::string AxisTitle(QChartView* view, Qt::Orientation o) {
    const auto axes = view->chart()->axes(o);
    return axes.isEmpty() ? std::string() : axes[0]->titleText().toStdString();
  }

  Calibration model_;
  ScriptedUserInterface ui_;
};

TEST_F(StatsViewTest, ShowsTheStatisticsAndDisablesTabsWithTooFewPoints) {
  StatsView view(model_, ui_);
  ASSERT_EQ(view.tabs()->count(), 3);
  EXPECT_EQ(view.tabs()->tabText(1).toStdString(), "Gages");
  const char* expected[8] = {"2.0", "-2.5", "0.1", "0.3", "1.3", "1.5", "5", "11.9"};
  for (int i = 0; i < 8; ++i)
    EXPECT_EQ(view.statistic(0, i)->text().toStdString(), expected[i]) << i;
  EXPECT_TRUE(view.statistic(0, 0)->isEnabledTo(&view));
  EXPECT_FALSE(view.statistic(1, 0)->isEnabledTo(&view)) << "one gage gives no statistics";
  EXPECT_FALSE(view.exportButton(2)->isEnabledTo(&view));
  EXPECT_EQ(AxisTitle(view.chartView(0), Qt::Horizontal), "Observed Head");
  EXPECT_EQ(AxisTitle(view.chartView(0), Qt::Vertical), "Modeled Head");

  ui_.ExpectMessage("Not Enough Points", {"There are not enough points for Gage statistics."});
  view.tabs()->setCurrentIndex(1);
  ui_.Verify();
  EXPECT_EQ(model_.currentTab, 1);
  EXPECT_FALSE(view.ExportChart()) << "nothing to export on a disabled tab";
}

TEST_F(StatsViewTest, TheViewOptionSwitchesToTheCumulativePlot) {
  StatsView view(model_, ui_);
  view.cumulativeOption(0)->click();
  EXPECT_EQ(model_.tabs[0].view, ChartView::CumulativeProbability);
  EXPECT_EQ(AxisTitle(view.chartView(0), Qt::Horizontal), "Difference (Modeled - Observed)");
  EXPECT_EQ(AxisTitle(view.chartView(0), Qt::Vertical), "Cumulative probability");
  view.scatterOption(0)->click();
  EXPECT_EQ(AxisTitle(view.chartView(0), Qt::Horizontal), "Observed Head");
}

TEST_F(StatsViewTest, AClickNearAPointShowsItsTestPoint) {
  StatsView view(model_, ui_);
  ui_.ExpectMessage("Test point information",
                    {"Selected test point: MW-4", "Observed head:       121.0",
                     "Modeled head:        122.2", "Difference:          1.2"});
  view.PointClicked(0, 121.1, 122.1);
  ui_.Verify();
}

TEST_F(StatsViewTest, CopiesTheStatisticsOfThePresentTab) {
  StatsView view(model_, ui_);
  view.copyStatisticsAction()->trigger();
  const std::string text = QApplication::clipboard()->text().toStdString();
  if (text.empty()) GTEST_SKIP() << "no clipboard on this platform";
  EXPECT_EQ(text.substr(0, 26), "Number of Observations: 5\r");
  EXPECT_NE(text.find("RMS Difference: 1.5\r\n"), std::string::npos);
}

// The picture of the manual comes from this export: with TARNO_CHART_PICTURE set,
// the chart goes to that file.
TEST_F(StatsViewTest, ExportWritesThePresentChartAsPng) {
  StatsView view(model_, ui_);
  const char* keep = std::getenv("TARNO_CHART_PICTURE");
  const std::string file = keep ? std::string(keep) : (dir_ / "scatter").string();
  ui_.ExpectSaveFile(file);
  ui_.ExpectSaveFile(std::nullopt);
  ASSERT_TRUE(view.ExportChart());
  EXPECT_FALSE(view.ExportChart()) << "cancelled";
  ui_.Verify();
  const std::string written = keep ? file : file + ".png";
  QImage image;
  ASSERT_TRUE(image.load(QString::fromStdString(written), "PNG")) << written;
  EXPECT_GE(image.width(), 640);
  EXPECT_GE(image.height(), 480);
  // Something is drawn besides the white ground.
  int coloured = 0;
  for (int y = 0; y < image.height(); y += 4)
    for (int x = 0; x < image.width(); x += 4)
      if (image.pixel(x, y) != qRgb(255, 255, 255)) ++coloured;
  EXPECT_GT(coloured, 100);
}

TEST_F(StatsViewTest, AnUnwritableFileIsReported) {
  StatsView view(model_, ui_);
  const std::string file = (dir_ / "no-such-folder" / "chart.png").string();
  ui_.ExpectSaveFile(file);
  ui_.ExpectMessage("Export Chart", {"The picture could not be written to " + file + "."});
  EXPECT_FALSE(view.ExportChart());
  ui_.Verify();
}

}  // namespace
}  // namespace tarno::testing
