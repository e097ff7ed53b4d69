// The views of the estimation dialogs, built without exec(): the PEST view's buttons
// write the files into the lists, a click shows a file in the text box, edits reach
// the model; the weights view locks the labels and refuses a bad weight.
#include <gtest/gtest.h>

#include <QLabel>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QProgressDialog>
#include <QPushButton>
#include <QTableWidget>

#include "app/views/pest_view.h"
#include "dialogs_test_support.h"
#include "solver/model_settings.h"
#include "support/scripted_ui.h"

namespace tarno::testing {
namespace {

class EstimationViewTest : public ProjectTest {
 protected:
  SolveContext Context(ScriptedUserInterface& ui) {
    {
      Database db = Open();
      db.ExecuteRaw("update Model set chkScenarioHydCond=1, ScenHydCond='kaq'");
      settings_.Load(db);
    }
    SolveContext ctx;
    ctx.projectPath = path_;
    ctx.settings = &settings_;
    ctx.state = &state_;
    ctx.ui = &ui;
    ctx.programDirectory = dir_;
    ctx.window = {0, 100, 100, 0};
    return ctx;
  }
  ModelSettings settings_;
  SolutionState state_;
};

TEST_F(EstimationViewTest, WriteFillsTheListsAndAClickShowsTheFile) {
  ScriptedUserInterface ui;
  SolveContext ctx = Context(ui);
  PestDialog dialog(ctx, nullptr);
  dialog.RefreshLists();
  EstimationView view(dialog, ui);
  EXPECT_EQ(view.windowTitle().toStdString(), "PEST");
  ASSERT_NE(view.button("Run PEST -->"), nullptr);
  EXPECT_FALSE(view.button("Run PEST -->")->isEnabled());
  EXPECT_FALSE(view.button("Import Optimized Parameters")->isEnabled());
  EXPECT_EQ(view.inputList()->count(), 0);

  ui.ExpectMessageTitled("Write PEST");
  view.button("Write PEST Input Files")->click();
  ui.Verify();
  EXPECT_TRUE(view.button("Run PEST -->")->isEnabled());
  ASSERT_EQ(view.inputList()->count(), 5);
  EXPECT_EQ(view.inputList()->item(0)->text().toStdString(), "golden.pst");

  emit view.inputList()->itemClicked(view.inputList()->item(0));
  EXPECT_EQ(view.fileLabel()->text().toStdString(), "File: golden.pst");
  EXPECT_TRUE(view.textBox()->toPlainText().startsWith("pcf\n* control data\n"));
  EXPECT_FALSE(view.textBox()->isReadOnly());
  EXPECT_TRUE(view.button("Save")->isEnabled());
  // An edit in the box reaches the model with the file's CR LF line ends.
  view.textBox()->setPlainText("pcf\nchanged\n");
  EXPECT_TRUE(dialog.textChanged);
  EXPECT_EQ(dialog.TextBox, "pcf\r\nchanged\r\n");
  view.button("Save")->click();
  EXPECT_FALSE(dialog.textChanged);
}

TEST_F(EstimationViewTest, TheEstimatorButtonRefusesAProjectWithoutTestPoints) {
  ScriptedUserInterface ui;
  SolveContext ctx = Context(ui);
  PestDialog dialog(ctx, nullptr);
  dialog.RefreshLists();
  EstimationView view(dialog, ui);
  ASSERT_NE(view.button("Estimate Without PEST"), nullptr);
  ui.ExpectMessage("No Test Points", {"There are no Test Points with observations in this project!",
                                      "No estimation will be made."});
  view.button("Estimate Without PEST")->click();
  ui.Verify();
  EXPECT_EQ(view.inputList()->count(), 0);
  EXPECT_EQ(view.outputList()->count(), 0);
}

// Notes, at each message box, whether the estimation view already holds its progress
// bar: a window-modal bar up while a question is asked blocks the question.
class BarWatchingUi : public ScriptedUserInterface {
 public:
  tarno::Answer MessageBox(const std::string& title, const std::vector<std::string>& lines,
                           tarno::Buttons buttons, tarno::Icon icon) override {
    if (view != nullptr && !view->findChildren<QProgressDialog*>().isEmpty())
      barAtBox.push_back(title);
    return ScriptedUserInterface::MessageBox(title, lines, buttons, icon);
  }
  QWidget* view = nullptr;
  std::vector<std::string> barAtBox;
};

TEST_F(EstimationViewTest, TheEstimatorAsksBeforeAnyProgressBarIsUp) {
  BarWatchingUi ui;
  SolveContext ctx = Context(ui);
  state_.SolutionPresent = true;
  PestDialog dialog(ctx, nullptr);
  dialog.RefreshLists();
  EstimationView view(dialog, ui);
  ui.view = &view;
  // Declined: nothing runs, no bar was made.
  ui.ExpectMessage("Warning",
                   {"Running the estimator will invalidate and remove your present solution.",
                    "Do you wish to continue?"},
                   Answer::No);
  view.button("Estimate Without PEST")->click();
  ui.Verify();
  EXPECT_TRUE(ui.barAtBox.empty());
  EXPECT_TRUE(view.findChildren<QProgressDialog*>().isEmpty());
  EXPECT_TRUE(state_.SolutionPresent);
  // Accepted: the refusal of a project without test points comes before any model
  // run, so no bar is up for it either.
  ui.ExpectMessageTitled("Warning", Answer::Yes);
  ui.ExpectMessageTitled("No Test Points");
  view.button("Estimate Without PEST")->click();
  ui.Verify();
  EXPECT_TRUE(ui.barAtBox.empty());
  EXPECT_EQ(view.outputList()->count(), 0);
}

TEST_F(EstimationViewTest, WeightsViewLocksTheLabelsAndChecksTheWeights) {
  {
    Database db = Open();
    db.ExecuteRaw("insert into Vertices (PID, Seq, X, Y) values (-1, 0, 1, 1)");
    const auto vid = db.LastInsertId();
    db.ExecuteRaw(
        "insert into TestPoints (VID, Label, Type, ObsHead, PESTWeight, UCODEWeight) "
        "values (" +
        std::to_string(vid) + ", 'P1', 'Piezometer', 5, 2, 1)");
  }
  OptWeight model("PEST");
  {
    Database db = Open();
    model.init(db);
  }
  ScriptedUserInterface ui;
  OptWeightView view(model, ui);
  QTableWidget* grid = view.grid(0);
  ASSERT_EQ(grid->rowCount(), 1);
  EXPECT_FALSE(grid->item(0, 0)->flags() & Qt::ItemIsEditable);
  EXPECT_EQ(grid->item(0, 1)->text().toStdString(), "2");
  grid->item(0, 1)->setText("abc");
  ui.ExpectMessageTitled("Bad Entry");
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(model.Result, 2);
  grid->item(0, 1)->setText("0.5");
  view.okButton()->click();
  EXPECT_EQ(model.Result, 1);
  EXPECT_EQ(model.Piezometer_Weights[0].Weight, "0.5");
}

}  // namespace
}  // namespace tarno::testing
