// The view of "Implement Scenarios", built without exec(): cells edited, buttons
// pressed, and the model and the project checked.
#include <gtest/gtest.h>

#include <QApplication>
#include <QPushButton>
#include <QTableWidget>

#include "app/views/scenario_view.h"
#include "dialogs_test_support.h"
#include "support/scripted_ui.h"

namespace tarno::testing {
namespace {

class ScenarioViewTest : public ProjectTest {
 protected:
  // The aquifer's conductivity 25 (default 2.5) under the tag "K".
  void TagAquifer() {
    Database db = Open();
    db.ExecuteRaw(
        "update Model set chkScenarioHydCond = 1, ScenHydCond = 'K', AQHydCond = 25, "
        "DefaultAQHydCond = 2.5");
  }
  static std::string Cell(QTableWidget* grid, int row, int column) {
    return grid->item(row, column)->text().toStdString();
  }
};

TEST_F(ScenarioViewTest, ShowsTheTablesRefusesTextAndCarriesValuesToTheModel) {
  TagAquifer();
  Scenarios model;
  model.projectFile = path_.string();
  model.init();
  ScriptedUserInterface ui;
  ScenariosView view(model, ui);
  EXPECT_EQ(view.windowTitle().toStdString(), "Implement Scenarios");
  EXPECT_EQ(view.updateButton()->text().toStdString(), "Update Database (Save Changes)");
  EXPECT_EQ(view.defaultButton(0)->text().toStdString(), "Replace all Current Values with Default");
  EXPECT_EQ(view.defaultButton(1)->text().toStdString(), "Replace all Default Values with Current");
  QTableWidget* aq = view.grid(ScenarioTable::Aquifer);
  ASSERT_EQ(aq->rowCount(), 1);
  EXPECT_EQ(Cell(aq, 0, 0), "K");
  EXPECT_EQ(Cell(aq, 0, 1), "25");
  EXPECT_EQ(Cell(aq, 0, 2), "2.5");
  EXPECT_EQ(view.grid(ScenarioTable::Linesink)->rowCount(), 0);
  EXPECT_FALSE(aq->item(0, 0)->flags() & Qt::ItemIsEditable) << "the tag is not edited here";

  // A numeric column refuses text: the cell goes back to its value.
  aq->item(0, 1)->setText("fast");
  EXPECT_EQ(Cell(aq, 0, 1), "25");
  EXPECT_EQ(model.AqDataTable[0].Current, 25);
  aq->item(0, 1)->setText("30");
  EXPECT_EQ(model.AqDataTable[0].Current, 30);

  // "Replace all Default Values with Current" shows at once.
  view.defaultButton(1)->click();
  EXPECT_EQ(Cell(aq, 0, 2), "30");
  view.updateButton()->click();
  ui.Verify();
  EXPECT_TRUE(model.Invalidate);
  EXPECT_EQ(ModelNumber("AQHydCond"), 30);
  EXPECT_EQ(ModelNumber("DefaultAQHydCond"), 30);

  view.doneButton()->click();
  EXPECT_EQ(model.Result, 1);
}

TEST_F(ScenarioViewTest, ClosingTheWindowIsDoneAndLeavesTheModel) {
  TagAquifer();
  Scenarios model;
  model.projectFile = path_.string();
  model.init();
  ScriptedUserInterface ui;
  ScenariosView view(model, ui);
  view.grid(ScenarioTable::Aquifer)->item(0, 1)->setText("1");
  view.reject();
  EXPECT_EQ(model.Result, 1);
  EXPECT_FALSE(model.Invalidate);
  EXPECT_EQ(ModelNumber("AQHydCond"), 25);
}

// An estimated value carries all 12 digits; shown, the dialog shows it whole in every
// table rather than cut short ("0.000499995..."), the narrow tag column included.
TEST_F(ScenarioViewTest, ShowsLongValuesWhole) {
  {
    Database db = Open();
    db.ExecuteRaw(
        "update Model set chkScenarioHydCond = 1, ScenHydCond = 'Kaq', "
        "AQHydCond = 20.0002101879657, DefaultAQHydCond = 0.000499995737845");
  }
  Scenarios model;
  model.projectFile = path_.string();
  model.init();
  ScriptedUserInterface ui;
  ScenariosView view(model, ui);
  view.show();
  QApplication::processEvents();
  QTableWidget* aq = view.grid(ScenarioTable::Aquifer);
  ASSERT_EQ(aq->rowCount(), 1);
  EXPECT_EQ(Cell(aq, 0, 2), "0.000499995737845");
  for (int c = 0; c < 3; ++c) {
    const QString text = aq->item(0, c)->text();
    EXPECT_GE(aq->columnWidth(c), aq->fontMetrics().horizontalAdvance(text)) << text.toStdString();
  }
  int used = 0;
  for (int c = 0; c < 3; ++c) used += aq->columnWidth(c);
  EXPECT_LE(used, aq->viewport()->width()) << "no column runs out of sight";
}

}  // namespace
}  // namespace tarno::testing
