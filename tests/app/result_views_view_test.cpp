// The views of the result dialogs, built without exec(): what they show of their
// models, that nothing in them can be edited, and the viewer's copy.
#include <gtest/gtest.h>

#include <QClipboard>
#include <QGridLayout>
#include <QGuiApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTableWidget>

#include "app/views/result_views.h"
#include "dialogs_test_support.h"

namespace tarno::testing {
namespace {

class RecordingClipboard : public ClipboardPort {
 public:
  void SetText(const std::string& text) override { texts.push_back(text); }
  std::vector<std::string> texts;
};

Lakeinfo SomeLake() {
  Lakeinfo d;
  d.Title = Lakeinfo::kTitle;
  d.Label = "Pond";
  d.TARNOLabel = "LK_000007_0000";
  d.Lines = {{"Label", "Label", 0, "Pond", true},
             {"Area", "Area", 400, "400", false},
             {"LakeStage", "Lake Stage", -9999, "dry", false},
             {"TotalIn", "Total In", 1.25, "1.25", false}};
  return d;
}

TEST(ResultInfoViewTest, ShowsEveryLineReadOnlyUnderTheModelsTitle) {
  EnsureApplication();
  const Lakeinfo model = SomeLake();
  ResultInfoView view(model);
  EXPECT_EQ(view.windowTitle().toStdString(), "Lake Balance");
  ASSERT_EQ(view.values().size(), model.Lines.size());
  for (size_t i = 0; i < model.Lines.size(); ++i) {
    EXPECT_EQ(view.values()[i]->text().toStdString(), model.Lines[i].text);
    EXPECT_TRUE(view.values()[i]->isReadOnly());
  }
  // Numbers stand to the right, texts to the left.
  EXPECT_TRUE(view.values()[1]->alignment() & Qt::AlignRight);
  EXPECT_TRUE(view.values()[0]->alignment() & Qt::AlignLeft);
  view.okButton()->click();
  EXPECT_EQ(view.result(), 1);
}

TEST(ResultInfoViewTest, TheModelsColumnStartsPlaceTheLines) {
  EnsureApplication();
  Lakeinfo model = SomeLake();
  model.ColumnStarts = {1, 3};  // Label | Area, Lake Stage | Total In
  ResultInfoView view(model);
  auto* grid = view.findChild<QGridLayout*>();
  ASSERT_NE(grid, nullptr);
  auto cellOf = [&](QWidget* w) {
    int row = 0, column = 0, rs = 0, cs = 0;
    grid->getItemPosition(grid->indexOf(w), &row, &column, &rs, &cs);
    return std::make_pair(row, column);
  };
  EXPECT_EQ(cellOf(view.values()[0]), std::make_pair(0, 1));
  EXPECT_EQ(cellOf(view.values()[1]), std::make_pair(0, 3));
  EXPECT_EQ(cellOf(view.values()[2]), std::make_pair(1, 3));
  EXPECT_EQ(cellOf(view.values()[3]), std::make_pair(0, 5));
  // Without them: two columns of equal length.
  model.ColumnStarts.clear();
  ResultInfoView halves(model);
  auto* g2 = halves.findChild<QGridLayout*>();
  int row = 0, column = 0, rs = 0, cs = 0;
  g2->getItemPosition(g2->indexOf(halves.values()[2]), &row, &column, &rs, &cs);
  EXPECT_EQ(std::make_pair(row, column), std::make_pair(0, 3));
}

TEST(ResultViewerViewTest, OneReadOnlyGridPerTableAndTheCopyOfTheShownTab) {
  EnsureApplication();
  ResultViewer model;
  model.Tables = {{"WLResults", "Wells", {"Label", "X"}, {{"W1", "100"}, {"W2", "250.5"}}},
                  {"FIResults", "Flux Inspection Lines", {"Label", "PID", "Flux"}, {}}};
  RecordingClipboard clipboard;
  ResultViewerView view(model, clipboard);
  EXPECT_EQ(view.windowTitle().toStdString(), ResultViewer::kTitle);
  ASSERT_EQ(view.tabs()->count(), 2);
  EXPECT_EQ(view.tabs()->tabText(0).toStdString(), "Wells");
  EXPECT_EQ(view.tabs()->tabText(1).toStdString(), "Flux Inspection Lines");
  QTableWidget* wells = view.grid(0);
  ASSERT_EQ(wells->rowCount(), 2);
  ASSERT_EQ(wells->columnCount(), 2);
  EXPECT_EQ(wells->horizontalHeaderItem(1)->text().toStdString(), "X");
  EXPECT_EQ(wells->item(1, 1)->text().toStdString(), "250.5");
  EXPECT_EQ(wells->editTriggers(), QAbstractItemView::NoEditTriggers);
  EXPECT_TRUE(wells->item(1, 1)->textAlignment() & Qt::AlignRight);
  EXPECT_TRUE(wells->item(1, 0)->textAlignment() & Qt::AlignLeft);
  EXPECT_EQ(view.grid(1)->rowCount(), 0);

  view.copyButton()->click();
  ASSERT_EQ(clipboard.texts.size(), 1u);
  EXPECT_EQ(clipboard.texts[0], "Label\tX\r\nW1\t100\r\nW2\t250.5\r\n");
  // The tab shown is the one copied.
  view.tabs()->setCurrentIndex(1);
  EXPECT_EQ(model.Tab, 1);
  view.copyButton()->click();
  ASSERT_EQ(clipboard.texts.size(), 2u);
  EXPECT_EQ(clipboard.texts[1], "Label\tPID\tFlux\r\n");
  view.closeButton()->click();
  EXPECT_EQ(view.result(), 1);
}

TEST(ResultViewerViewTest, TheDesktopClipboardTakesTheText) {
  EnsureApplication();
  QtClipboard clipboard;
  clipboard.SetText("Label\tFlux\r\nFL1\t12.5\r\n");
  EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(), "Label\tFlux\r\nFL1\t12.5\r\n");
}

}  // namespace
}  // namespace tarno::testing
