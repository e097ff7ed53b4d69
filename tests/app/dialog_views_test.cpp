// The dialog views, built without exec(): widgets are set, buttons pressed, and the
// models checked.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QTabWidget>
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#include "app/dialog_registry.h"
#include "app/dialog_views.h"
#include "app/shell_models.h"
#include "app/views/gui_options_view.h"
#include "app/views/ls_confirm_view.h"
#include "app/views/model_settings_view.h"
#include "app/views/new_database_wizard_view.h"
#include "app/views/project_settings_view.h"
#include "app/views/restore_window_view.h"
#include "app/views/solve_views.h"
#include "app/views/unit_change_view.h"
#include "app/views/welcome_view.h"
#include "dialogs_test_support.h"
#include "support/scripted_ui.h"

namespace tarno::testing {
namespace {

using Field = ModelSettings::Field;

std::string Text(const QLineEdit* edit) { return edit->text().toStdString(); }

// ---------------------------------------------------------------------------
// Model settings.

class ModelSettingsViewTest : public ProjectTest {
 protected:
  void SetUp() override {
    ProjectTest::SetUp();
    Database db = Open();
    db.ExecuteRaw("update Model set CONTOURInterval=2.5, NumberStreamLines=30");
    settings_.Load(db);
  }
  ModelSettings settings_;
};

TEST_F(ModelSettingsViewTest, ShowsTheFieldsWithTheirUnits) {
  ModelSettingsDialog dialog(settings_, path_.string());
  ScriptedUserInterface ui;
  ModelSettingsView view(dialog, ui);
  EXPECT_EQ(view.windowTitle().toStdString(), ModelSettingsDialog::kTitle);
  EXPECT_EQ(Text(view.field(Field::Thickness)), "1");
  EXPECT_EQ(Text(view.field(Field::Porosity)), "0.2");
  EXPECT_EQ(Text(view.field(Field::ContourInt)), "2.5");
  EXPECT_EQ(view.lengthUnitLabel()->text().toStdString(), "meters");
  EXPECT_EQ(view.conductivityUnitLabel()->text().toStdString(), "meters/day");
  EXPECT_EQ(view.field(Field::None), nullptr);
  ASSERT_EQ(view.tabs()->count(), 6);
  for (Field f : {Field::Thickness, Field::SaltGravity, Field::ContourLevel, Field::StepSize,
                  Field::OuterIterations, Field::ScenarioBaseElev}) {
    QLineEdit* edit = view.field(f);
    ASSERT_NE(edit, nullptr);
    EXPECT_TRUE(view.tabs()->widget(ModelSettingsView::TabOf(f))->isAncestorOf(edit))
        << "each field sits on the tab its failure brings forward";
  }
}

TEST_F(ModelSettingsViewTest, FeetProjectsShowFeet) {
  settings_.computeMeters = false;
  ModelSettingsDialog dialog(settings_, path_.string());
  ScriptedUserInterface ui;
  ModelSettingsView view(dialog, ui);
  EXPECT_EQ(view.lengthUnitLabel()->text().toStdString(), "feet");
  EXPECT_EQ(view.conductivityUnitLabel()->text().toStdString(), "feet/day");
}

TEST_F(ModelSettingsViewTest, StreamFunctionSwapsTheIntervalCaptionAndValue) {
  ModelSettingsDialog dialog(settings_, path_.string());
  ScriptedUserInterface ui;
  ModelSettingsView view(dialog, ui);
  QLineEdit* interval = view.field(Field::ContourInt);
  EXPECT_EQ(view.intervalCaption()->text().toStdString(), "Contour Interval");
  interval->setText("4");  // typed before the switch: kept for the way back
  view.contourProperty(kContourStreamFunction)->click();
  EXPECT_EQ(view.intervalCaption()->text().toStdString(), "Number of Stream Lines");
  EXPECT_EQ(Text(interval), "30");
  interval->setText("12");
  view.contourProperty(kContourPotentials)->click();
  EXPECT_EQ(view.intervalCaption()->text().toStdString(), "Contour Interval");
  EXPECT_EQ(Text(interval), "4");
  view.contourProperty(kContourStreamFunction)->click();
  EXPECT_EQ(Text(interval), "12");
  EXPECT_EQ(settings_.ContourProperty(), kContourStreamFunction);
}

TEST_F(ModelSettingsViewTest, DrawdownNoteAndEnablingRules) {
  ModelSettingsDialog dialog(settings_, path_.string());
  ScriptedUserInterface ui;
  ModelSettingsView view(dialog, ui);
  EXPECT_TRUE(view.drawdownNote()->isHidden());
  view.contourProperty(kContourDrawdowns)->click();
  EXPECT_FALSE(view.drawdownNote()->isHidden());
  EXPECT_EQ(view.drawdownNote()->title().toStdString(), "Note on Drawdowns:");
  view.contourProperty(kContourHeads)->click();
  EXPECT_TRUE(view.drawdownNote()->isHidden());

  QLineEdit* step = view.field(Field::StepSize);
  EXPECT_EQ(Text(view.tbDefaultStepSize()), "0");
  view.chkDefaultStep()->setChecked(true);
  EXPECT_FALSE(step->isEnabled());
  view.chkDefaultStep()->setChecked(false);
  EXPECT_TRUE(step->isEnabled());
  view.chkComputePaths()->setChecked(false);
  EXPECT_FALSE(step->isEnabled());
  EXPECT_FALSE(view.field(Field::MaxTime)->isEnabled());

  EXPECT_FALSE(view.field(Field::ContourLevel)->isEnabled()) << "coarse fixes the level";
  view.contourDetail(kContourCustom)->setChecked(true);
  EXPECT_TRUE(view.field(Field::ContourLevel)->isEnabled());
  view.chkContour()->setChecked(false);
  EXPECT_FALSE(view.field(Field::ContourLevel)->isEnabled());
  EXPECT_FALSE(view.contourProperty(0)->isEnabled());

  EXPECT_FALSE(view.field(Field::SaltGravity)->isEnabled());
  view.chkAddSaltwaterInterface()->setChecked(true);
  EXPECT_TRUE(view.field(Field::SaltGravity)->isEnabled());
}

TEST_F(ModelSettingsViewTest, AFailingOkKeepsTheDialogWithTheFieldsTabForward) {
  ModelSettingsDialog dialog(settings_, path_.string());
  ScriptedUserInterface ui;
  ModelSettingsView view(dialog, ui);
  view.tabs()->setCurrentIndex(ModelSettingsView::kAquiferTab);
  view.field(Field::MaxTime)->setText("-5");
  ui.ExpectMessage("Bad Entry", {"Maximum Travel Time must be positive.",
                                 "Please enter a new Maximum Travel Time."});
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.result(), 0) << "the dialog stays";
  EXPECT_EQ(dialog.Result, 2);
  EXPECT_EQ(dialog.last.failedField, Field::MaxTime);
  EXPECT_EQ(view.tabs()->currentIndex(), ModelSettingsView::kTracingTab);
  EXPECT_EQ(view.field(Field::MaxTime)->selectedText().toStdString(), "-5");
  EXPECT_EQ(ModelNumber("TRACEMaxTime"), 3650);
}

TEST_F(ModelSettingsViewTest, AGoodOkWritesTheRowAndCloses) {
  ModelSettingsDialog dialog(settings_, path_.string());
  ScriptedUserInterface ui;
  ModelSettingsView view(dialog, ui);
  view.field(Field::Thickness)->setText("30");
  view.field(Field::HydCond)->setText("12.5");
  view.chkOutsideLoop()->setChecked(true);
  view.field(Field::OuterIterations)->setText("4");
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.result(), 1);
  EXPECT_EQ(dialog.Result, 1);
  EXPECT_EQ(ModelNumber("AQThickness"), 30);
  EXPECT_EQ(ModelNumber("AQHydCond"), 12.5);
  EXPECT_EQ(ModelNumber("OuterIterationsFlag"), 1);
}

TEST_F(ModelSettingsViewTest, ConvergenceButtonTakesTheAdvancedDialogsFields) {
  ModelSettingsDialog dialog(settings_, path_.string());
  ScriptedUserInterface ui;
  ModelSettingsView view(dialog, ui);
  ui.ExpectModal<ConvergeDialog>("Converge", [](ConvergeDialog& d) {
    EXPECT_EQ(d.tbIterations, "1");
    d.tbIterations = "6";
    d.chkFastSolution = true;
    d.Result = 1;
  });
  view.convergeButton()->click();
  ui.Verify();
  EXPECT_EQ(settings_.tbIterations, "6");
  EXPECT_TRUE(view.chkFastSolution()->isChecked());
  EXPECT_EQ(Text(view.field(Field::Iterations)), "6");
}

// The note on drawdowns has its room from the start: showing it neither grows the
// dialog nor squeezes the option buttons above it.
TEST_F(ModelSettingsViewTest, TheDrawdownNoteShowsWithoutMovingTheLayout) {
  ModelSettingsDialog dialog(settings_, path_.string());
  ScriptedUserInterface ui;
  ModelSettingsView view(dialog, ui);
  view.tabs()->setCurrentIndex(ModelSettingsView::TabOf(Field::ContourInt));
  view.show();
  QApplication::processEvents();
  const QSize before = view.size();
  const QRect heads = view.contourProperty(kContourHeads)->geometry();
  view.contourProperty(kContourDrawdowns)->click();
  QApplication::processEvents();
  EXPECT_FALSE(view.drawdownNote()->isHidden());
  EXPECT_EQ(view.size(), before);
  EXPECT_EQ(view.contourProperty(kContourHeads)->geometry(), heads);
  for (int i = 0; i < 6; ++i) {
    QRadioButton* option = view.contourProperty(i);
    EXPECT_GE(option->height(), option->sizeHint().height()) << "option " << i << " is clipped";
  }
  QGroupBox* note = view.drawdownNote();
  EXPECT_GE(note->height(), note->hasHeightForWidth() ? note->heightForWidth(note->width())
                                                      : note->sizeHint().height());
  view.hide();
}

TEST_F(ModelSettingsViewTest, TheDefaultStepShowsRounded) {
  settings_.DefaultStepSize = 83.5010203256312;
  ModelSettingsDialog dialog(settings_, path_.string());
  ScriptedUserInterface ui;
  ModelSettingsView view(dialog, ui);
  EXPECT_EQ(Text(view.tbDefaultStepSize()), "83.5");
  EXPECT_TRUE(view.tbDefaultStepSize()->isReadOnly());
}

TEST_F(ModelSettingsViewTest, ScenarioTagsAreCheckedByTheModel) {
  ModelSettingsDialog dialog(settings_, path_.string());
  ScriptedUserInterface ui;
  ModelSettingsView view(dialog, ui);
  QLineEdit* tag = view.field(Field::ScenarioHydCond);
  EXPECT_EQ(Text(tag), "") << "no tag shows as an empty field";
  EXPECT_EQ(Text(view.field(Field::ScenarioBaseElev)), "");
  EXPECT_FALSE(tag->isEnabled());
  view.chkScenarioHydCond()->setChecked(true);
  EXPECT_TRUE(tag->isEnabled());
  tag->setText("wet_year");
  ui.ExpectMessage("Bad Entry", {"Scenario tags may not include spaces or the characters - , or _.",
                                 "Scenario tags may also not be '__NONE__'."});
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.tabs()->currentIndex(), ModelSettingsView::kScenarioTab);
  tag->setText("wet");
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.result(), 1);
  Database db = Open();
  Statement st = db.PrepareRaw("select ScenHydCond, ScenBaseElev from Model");
  ASSERT_TRUE(st.Step());
  EXPECT_EQ(st.GetText(0), "wet");
  EXPECT_EQ(st.GetText(1), "__NONE__");
}

TEST_F(ModelSettingsViewTest, CancelLeavesTheRow) {
  ModelSettingsDialog dialog(settings_, path_.string());
  ScriptedUserInterface ui;
  ModelSettingsView view(dialog, ui);
  view.field(Field::Thickness)->setText("30");
  view.cancelButton()->click();
  EXPECT_EQ(view.result(), 2);
  EXPECT_EQ(dialog.Result, 2);
  EXPECT_EQ(ModelNumber("AQThickness"), 1);
}

// ---------------------------------------------------------------------------
// The project life cycle.

TEST_F(ProjectTest, WizardViewFillsItsModel) {
  NewDatabaseWizard wizard;
  NewDatabaseWizardView view(wizard);
  EXPECT_EQ(view.windowTitle().toStdString(), NewDatabaseWizard::kTitle);
  EXPECT_EQ(view.description()->toPlainText().toStdString(), "New TARNO Project\n");
  EXPECT_TRUE(view.computeMeters()->isChecked());
  EXPECT_TRUE(view.mapMeters()->isChecked());
  EXPECT_EQ(view.createButton()->text().toStdString(), "Create Database");
  EXPECT_EQ(view.abortButton()->text().toStdString(), "Abort");
  view.description()->setPlainText("Dune field");
  view.computeFeet()->setChecked(true);
  view.mapFeet()->setChecked(true);
  view.createButton()->click();
  EXPECT_EQ(wizard.Result, NewDatabaseWizard::kCreate);
  EXPECT_EQ(wizard.Description, "Dune field");
  EXPECT_FALSE(wizard.ComputeMeters);
  EXPECT_FALSE(wizard.BasemapMeters);

  NewDatabaseWizard second;
  second.Result = NewDatabaseWizard::kCreate;
  NewDatabaseWizardView closed(second);
  closed.reject();  // the window's close button
  EXPECT_EQ(second.Result, NewDatabaseWizard::kAbort);
}

TEST_F(ProjectTest, ProjectSettingsViewKeepsABadNameAndWritesAGoodOne) {
  ProjectSettings settings;
  settings.Load(path_.string());
  ScriptedUserInterface ui;
  ProjectSettingsView view(settings, ui);
  EXPECT_EQ(Text(view.baseName()), "golden");
  EXPECT_EQ(Text(view.compUnits()), "Meters");
  EXPECT_TRUE(view.compUnits()->isReadOnly());

  view.baseName()->setText("ninechars");
  ui.ExpectMessage(ProjectSettings::kBadNameTitle, {ProjectSettings::kBadNameText});
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.result(), 0);

  view.baseName()->setText("eight888");
  view.description()->setPlainText("Renamed");
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.result(), ProjectSettings::kOK);
  EXPECT_EQ(settings.TARNOBaseName, "eight888");
  Database db = Open();
  Statement st = db.PrepareRaw("select TARNOBaseName, Description from Project");
  ASSERT_TRUE(st.Step());
  EXPECT_EQ(st.GetText(0), "eight888");
  EXPECT_EQ(st.GetText(1), "Renamed");
}

// After a refused OK the refused field is selected, so that what is typed next
// replaces the name or the path the message spoke of.
TEST_F(ProjectTest, ProjectSettingsViewSelectsTheRefusedField) {
  ProjectSettings settings;
  settings.Load(path_.string());
  ScriptedUserInterface ui;
  ProjectSettingsView view(settings, ui);
  view.basePath()->setText(QString::fromStdString(path_.string()));  // a file, not a folder
  ui.ExpectMessageTitled(ProjectSettings::kBadPathTitle);
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.result(), 0);
  EXPECT_EQ(view.basePath()->selectedText().toStdString(), path_.string());
  EXPECT_FALSE(view.baseName()->hasSelectedText());

  view.basePath()->setText(QString::fromStdString(path_.parent_path().string()));
  view.baseName()->setText("a*b");
  ui.ExpectMessage(ProjectSettings::kBadNameTitle, {ProjectSettings::kBadNameCharactersText});
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.baseName()->selectedText().toStdString(), "a*b");
  EXPECT_FALSE(view.basePath()->hasSelectedText());
}

TEST_F(ProjectTest, ProjectSettingsCancelDisabledForANewProject) {
  ProjectSettings settings;
  settings.Load(path_.string());
  settings.CancelEnabled = false;
  const int loaded = settings.Result;
  ScriptedUserInterface ui;
  ProjectSettingsView view(settings, ui);
  EXPECT_FALSE(view.cancelButton()->isEnabled());
  view.baseName()->setText("other");
  view.reject();  // the close button does nothing either
  EXPECT_EQ(view.result(), 0);
  EXPECT_EQ(settings.Result, loaded);
  EXPECT_EQ(settings.BaseName, "golden") << "nothing taken from the fields";
}

TEST_F(ProjectTest, ChangeUnitsGoesThroughTheModelAndShowsTheNewUnits) {
  ProjectSettings settings;
  settings.Load(path_.string());
  ScriptedUserInterface ui;
  ProjectSettingsView view(settings, ui);
  ui.Expect(UiCallKind::MessageBox).Title(kUnitChangeWarningTitle).Answer(Answer::Yes);
  ui.ExpectModal<UnitChange>(UnitChange::kName, [](UnitChange& d) {
    d.ComputeMeters = false;
    d.OK();
  });
  ui.ExpectMessageTitled(kReopenProjectTitle);
  view.changeUnitsButton()->click();
  ui.Verify();
  EXPECT_EQ(Text(view.compUnits()), "Feet");
  EXPECT_EQ(Text(view.mapUnits()), "Meters");
}

TEST_F(ProjectTest, UnitChangeViewFillsItsModel) {
  UnitChange change;
  change.ComputeMeters = false;
  UnitChangeView view(change);
  EXPECT_TRUE(view.computeFeet()->isChecked());
  EXPECT_TRUE(view.mapMeters()->isChecked());
  view.computeMeters()->setChecked(true);
  view.mapFeet()->setChecked(true);
  view.okButton()->click();
  EXPECT_EQ(change.Result, UnitChange::kOK);
  EXPECT_TRUE(change.ComputeMeters);
  EXPECT_FALSE(change.BasemapMeters);
}

// ---------------------------------------------------------------------------
// The shell.

TEST_F(ProjectTest, GUIOptionsViewRefusesABadHazeAndTakesColours) {
  GUIOptions options;
  {
    Database db = Open();
    options.init(db);
  }
  ScriptedUserInterface ui;
  GUIOptionsView view(options, ui);
  EXPECT_EQ(view.windowTitle().toStdString(),
            "GUI Options                                   (F1 for Help)");
  EXPECT_EQ(view.contourLineType()->currentText().toStdString(), "DOT");

  ui.ExpectColour(Rgb(1, 2, 3));
  view.contourColorButton()->click();
  ui.ExpectColour(std::nullopt);  // Cancel keeps the colour
  view.pathlineColorButton()->click();
  EXPECT_EQ(options.ContourColor, Rgb(1, 2, 3));
  EXPECT_EQ(options.PathlineColor, ClassicColour(4));
  EXPECT_EQ(view.contourColorSwatch()->palette().color(QPalette::Window), QColor(1, 2, 3));

  view.contourLineType()->setCurrentText("SOLID");
  view.pathlineLineType()->setCurrentText("DASH");
  view.defaultsButton()->click();
  EXPECT_EQ(view.contourLineType()->currentText().toStdString(), "DOT");
  EXPECT_EQ(view.pathlineLineType()->currentText().toStdString(), "SOLID");

  view.hazeLevel()->setText("6");
  ui.ExpectMessage("Invalid Data", {"Invalid Haze Level!", "Please enter a new value."});
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.result(), 0);

  view.hazeLevel()->setText("4");
  view.contourLineWidth()->setValue(3);
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.result(), 1);
  EXPECT_EQ(options.HazeLevel, 4);
  EXPECT_EQ(ModelNumber("ContourLineWidth"), 3);
  EXPECT_EQ(ModelNumber("ContourLineColor"), Rgb(1, 2, 3));
}

TEST(WelcomeViewTest, TheChoiceAndTheBoxReachTheModel) {
  EnsureApplication();
  Welcome welcome;
  WelcomeView view(welcome);
  EXPECT_EQ(view.windowTitle().toStdString(), "Welcome to TARNO");
  EXPECT_TRUE(view.startProject()->isChecked());
  view.secondExample()->click();
  EXPECT_FALSE(view.startProject()->isChecked());
  view.dontShow()->setChecked(true);
  view.okButton()->click();
  EXPECT_EQ(welcome.Result, 3);
  EXPECT_TRUE(welcome.chkShowBox);

  Welcome again;
  again.Result = 2;
  WelcomeView second(again);
  EXPECT_TRUE(second.firstExample()->isChecked());
  second.startProject()->click();
  EXPECT_FALSE(second.firstExample()->isChecked());
  second.okButton()->click();
  EXPECT_EQ(again.Result, 1);
}

// ---------------------------------------------------------------------------
// Saved windows.

TEST(RestoreWindowViewTest, CornersAreFilteredAndHandedOver) {
  EnsureApplication();
  RestoreWindow model;
  model.rows = {{"north", 0, 0, 10, 10}, {"south", -5, -5, 5, 5}};
  ScriptedUserInterface ui;
  RestoreWindowView view(model, ui, {});
  EXPECT_EQ(view.names()->count(), 2);
  EXPECT_FALSE(view.okButton()->isEnabled()) << "nothing in view yet";
  EXPECT_FALSE(view.deleteButton()->isEnabled()) << "no project to delete from";
  view.names()->setCurrentRow(1);
  EXPECT_EQ(model.current, 1);
  EXPECT_TRUE(view.okButton()->isEnabled());

  view.x1()->setText("-7a.5");
  emit view.x1()->textEdited(view.x1()->text());
  EXPECT_EQ(Text(view.x1()), "-7.5");
  view.y2()->setText("2E3");
  view.okButton()->click();
  EXPECT_EQ(model.Result, 1);
  EXPECT_DOUBLE_EQ(model.x1, -7.5);
  EXPECT_DOUBLE_EQ(model.y2, 2000);
}

TEST(RestoreWindowViewTest, EveryCornerShowsWholeWithItsSign) {
  EnsureApplication();
  RestoreWindow model;
  // The corners of a window zoomed far out: long numbers, two of them negative.
  model.rows = {{"far", -8909292.3587527, -815529.096515035, 9819792.3587527, 10796503.4283383}};
  model.Navigate(0);
  ScriptedUserInterface ui;
  RestoreWindowView view(model, ui, {});
  view.show();
  for (QLineEdit* edit : {view.x1(), view.y1(), view.x2(), view.y2()}) {
    // With the cursor at the end a text too long for its field scrolls, and its
    // first characters (the sign) go out of sight to the left.
    edit->setCursorPosition(static_cast<int>(edit->text().size()));
    (void)view.grab();
    const int start = edit->inputMethodQuery(Qt::ImCursorRectangle).toRect().center().x() -
                      edit->fontMetrics().horizontalAdvance(edit->text());
    EXPECT_GE(start, 0) << Text(edit);
  }
}

TEST(RestoreWindowViewTest, DeleteTakesTheRowInViewOffAndOKConfirmsIt) {
  EnsureApplication();
  RestoreWindow model;
  model.rows = {{"north", 0, 0, 10, 10, 7}, {"north", 0, 0, 10, 10, 8}};
  model.Navigate(1);
  ScriptedUserInterface ui;
  RestoreWindowView view(model, ui, [] { return std::string("project.trn"); });
  ASSERT_TRUE(view.deleteButton()->isEnabled());
  view.deleteButton()->click();
  ASSERT_EQ(view.names()->count(), 1);
  EXPECT_EQ(model.rows[0].key, 7) << "the twin in view went, not both";
  EXPECT_EQ(model.deleted, (std::vector<std::int64_t>{8}));
  view.deleteButton()->click();
  EXPECT_EQ(view.names()->count(), 0);
  EXPECT_FALSE(view.deleteButton()->isEnabled());
  EXPECT_TRUE(view.okButton()->isEnabled()) << "OK confirms the deletions";
  view.okButton()->click();
  EXPECT_EQ(model.Result, 1);
}

// ---------------------------------------------------------------------------
// Around a solve.

TEST(SolveViewsTest, SolvePromptAnswers) {
  EnsureApplication();
  SolvePrompt prompt;
  SolvePromptView view(prompt);
  EXPECT_EQ(view.windowTitle().toStdString(), "Valid Solution Present... Resolve?");
  view.noButton()->click();
  EXPECT_EQ(prompt.Result, 7);
  view.yesButton()->click();
  EXPECT_EQ(prompt.Result, 6);
  view.cancelButton()->click();
  EXPECT_EQ(prompt.Result, 2);
}

TEST(VertexViewsTest, LSConfirmShowsTheMessageAndStoresTheButton) {
  EnsureApplication();
  LSConfirm confirm;
  {
    LSConfirmView view(confirm);
    EXPECT_EQ(view.windowTitle().toStdString(), "Confirm...");
    EXPECT_EQ(view.message()->text().toStdString(),
              "Delete the selected vertex or the entire string?");
    EXPECT_EQ(view.button(0)->text().toStdString(), "Cancel");
    EXPECT_EQ(view.button(1)->toolTip().toStdString(), "Delete only the selected vertex");
    EXPECT_EQ(view.button(2)->text().toStdString(), "Entire String");
    EXPECT_EQ(view.button(2)->toolTip().toStdString(),
              "Delete the entire selected string of elements");
    view.button(2)->click();
    EXPECT_EQ(confirm.Result, 2);
    view.button(1)->click();
    EXPECT_EQ(confirm.Result, 1);
    view.reject();
    EXPECT_EQ(confirm.Result, 0);
  }
  confirm.Message = "Delete this vertex or the entire Domain?";
  LSConfirmView view(confirm);
  EXPECT_EQ(view.message()->text().toStdString(), "Delete this vertex or the entire Domain?");
}

TEST_F(ProjectTest, ContinueSolveRefusesABadCountAndWritesAGoodOne) {
  ModelSettings settings;
  {
    Database db = Open();
    settings.Load(db);
  }
  FormContinueSolve form;
  form.Load(settings, path_);
  ScriptedUserInterface ui;
  FormContinueSolveView view(form, ui);
  EXPECT_EQ(Text(view.iterations()), "1");
  view.iterations()->setText("0");
  ui.ExpectMessageTitled("Bad Entry");
  view.okButton()->click();
  ui.Verify();
  EXPECT_TRUE(form.Cancel);
  EXPECT_EQ(view.result(), 0);

  view.iterations()->setText("3");
  view.fastSolution()->setChecked(true);
  view.okButton()->click();
  EXPECT_FALSE(form.Cancel);
  EXPECT_EQ(view.result(), 1);
  EXPECT_EQ(ModelNumber("SOLVERIterations"), 3);
  EXPECT_TRUE(settings.chkFastSolution);
}

TEST(SolveViewsTest, RelaxAndConvergeCheckTheirCounts) {
  EnsureApplication();
  ModelSettings settings;
  RelaxDialog relax;
  relax.Load(settings);
  ScriptedUserInterface ui;
  RelaxDialogView relaxView(relax, ui, &settings);
  relaxView.outsideLoop()->setChecked(true);
  relaxView.outerIterations()->setText("0");
  ui.ExpectMessageTitled("Bad Entry");
  relaxView.okButton()->click();
  ui.Verify();
  EXPECT_EQ(relax.Result, 2);
  EXPECT_FALSE(settings.chkOutsideLoop);
  relaxView.outerIterations()->setText("5");
  relaxView.okButton()->click();
  EXPECT_EQ(relax.Result, 1);
  EXPECT_TRUE(settings.chkOutsideLoop);
  EXPECT_EQ(settings.tbOuterIterations, "5");

  // Shown through the registry there are no settings: the model keeps the fields.
  ConvergeDialog converge;
  converge.Load(settings);
  ConvergeDialogView convergeView(converge, ui);
  convergeView.iterations()->setText("9");
  convergeView.storeMatrixOnDisk()->setChecked(true);
  convergeView.okButton()->click();
  EXPECT_EQ(converge.Result, 1);
  EXPECT_EQ(converge.tbIterations, "9");
  EXPECT_TRUE(converge.chkStoreMatrixOnDisk);
  EXPECT_EQ(settings.tbIterations, "1");
}

TEST(SolveViewsTest, IntegrityShowsTheValues) {
  EnsureApplication();
  SolverIntegrity integrity;
  integrity.VxAnyl = 1.5;
  integrity.divCapQNum = -0.25;
  integrity.VxNum = -0.105000000001354;  // a difference quotient of seven-digit heads
  SolverIntegrityView view(integrity);
  EXPECT_EQ(view.windowTitle().toStdString(), "Solver Integrity Check");
  EXPECT_EQ(Text(view.value(0, 0)), "1.5");
  EXPECT_EQ(Text(view.value(4, 1)), "-0.25");
  EXPECT_EQ(Text(view.value(0, 1)), "-0.105");
  EXPECT_TRUE(view.value(2, 0)->isReadOnly());
}

TEST(SolveViewsTest, IterationsAdviceShowsTheMinimumAndChecksTheCount) {
  EnsureApplication();
  IterationsDialog advice;
  advice.lblRecommended =
      "For models containing linesinks with resistance, it is recommended to use at least      "
      "  iterations.";
  advice.lblRecommendedIterations = 2;
  advice.tbIterations = "1";
  ScriptedUserInterface ui;
  IterationsDialogView view(advice, ui);
  EXPECT_EQ(view.windowTitle().toStdString(), "Recommended # Iterations");
  EXPECT_EQ(view.advice()->text().toStdString(),
            "For models containing linesinks with resistance, it is recommended to use at least "
            "2 iterations.");
  EXPECT_EQ(Text(view.iterations()), "1");

  view.iterations()->setText("0");
  ui.ExpectMessage("Bad Entry",
                   {"Number of Iterations must be positive.",
                    "Please enter a new value for the Number of Iterations."});
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(advice.Result, 2);
  EXPECT_EQ(view.result(), 0) << "the dialog stays after a bad count";

  view.iterations()->setText("3");
  view.okButton()->click();
  EXPECT_EQ(advice.Result, 1);
  EXPECT_EQ(advice.tbIterations, "3");

  IterationsDialog declined;
  declined.tbIterations = "1";
  declined.Result = 1;
  IterationsDialogView other(declined, ui);
  other.iterations()->setText("4");
  other.cancelButton()->click();
  EXPECT_EQ(declined.Result, 2);
  EXPECT_EQ(declined.tbIterations, "1") << "Cancel keeps the count";
}

TEST(IterationsDialogTest, TheMinimumFillsTheGapOfBlanks) {
  IterationsDialog d;
  d.lblRecommended = "use at least        iterations.";
  d.lblRecommendedIterations = 5;
  EXPECT_EQ(d.AdviceText(), "use at least 5 iterations.");
  d.lblRecommended = "no gap";
  EXPECT_EQ(d.AdviceText(), "no gap 5 ");
}

TEST(DialogRegistryTest, EveryShownDialogHasItsView) {
  EnsureApplication();
  QtUserInterface ui;
  RegisterDialogViews(ui);
  const std::vector<std::string> names = ShownDialogs::Names();
  ASSERT_FALSE(names.empty());
  for (const std::string& name : names) EXPECT_TRUE(ui.HasView(name)) << name;
  EXPECT_TRUE(ui.HasView("Iterations"));
  const std::set<std::string> unique(names.begin(), names.end());
  EXPECT_EQ(unique.size(), names.size()) << "two models share a name";
}

// Every dialog model declared in the sources takes part in the registry: the name
// in its kName must be one of the registry's names. A model left out would reach a
// window without a view.
TEST(DialogRegistryTest, EveryDialogModelOfTheSourcesIsInTheRegistry) {
  namespace fs = std::filesystem;
  const std::vector<std::string> registry = ShownDialogs::Names();
  // Element dialogs derive from ElementDialog, itself an abstract DialogModel.
  const std::regex declaration(
      R"(class\s+(\w+)\s*(?:final\s*)?:\s*public\s+(?:DialogModel|ElementDialog)\b)");
  const std::regex name(R"re(kName\s*=\s*"([^"]*)")re");
  int models = 0;
  for (const auto& entry : fs::recursive_directory_iterator(fs::path(TARNO_SOURCE_DIR) / "src")) {
    if (entry.path().extension() != ".h") continue;
    std::ifstream in(entry.path());
    const std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    for (auto it = std::sregex_iterator(text.begin(), text.end(), declaration);
         it != std::sregex_iterator(); ++it) {
      const std::string cls = (*it)[1];
      if (cls == "ElementDialog") continue;  // the interface, shown only as its kinds
      ++models;
      // The model's own name stands in its body, before the next class begins.
      const std::size_t from = static_cast<std::size_t>(it->position() + it->length());
      const std::size_t next = text.find("\nclass ", from);
      const std::string body = text.substr(from, next == std::string::npos ? std::string::npos
                                                                            : next - from);
      std::smatch m;
      if (!std::regex_search(body, m, name)) {
        ADD_FAILURE() << cls << " (" << entry.path() << ") has no kName";
        continue;
      }
      EXPECT_NE(std::find(registry.begin(), registry.end(), m[1].str()), registry.end())
          << cls << " \"" << m[1] << "\" is not in ShownDialogs";
    }
  }
  EXPECT_EQ(models, static_cast<int>(registry.size()));
}

TEST_F(ProjectTest, ShowModalRunsTheViewAndLeavesTheResultInTheModel) {
  QtUserInterface ui;
  RegisterDialogViews(ui, [this] { return path_.string(); });

  SolvePrompt prompt;
  OnNextDialog<SolvePromptView>([](SolvePromptView* view) { view->noButton()->click(); });
  ui.ShowModal(prompt);
  EXPECT_EQ(prompt.Result, 7);

  NewDatabaseWizard wizard;
  OnNextDialog<NewDatabaseWizardView>([](NewDatabaseWizardView* view) {
    view->mapFeet()->setChecked(true);
    view->createButton()->click();
  });
  ui.ShowModal(wizard);
  EXPECT_EQ(wizard.Result, NewDatabaseWizard::kCreate);
  EXPECT_FALSE(wizard.BasemapMeters);

  // A relaxation shown on its own checks with the model's rule and keeps its fields.
  RelaxDialog relax;
  OnNextDialog<RelaxDialogView>([](RelaxDialogView* view) {
    view->outsideLoop()->setChecked(true);
    view->outerIterations()->setText("3");
    view->okButton()->click();
  });
  ui.ShowModal(relax);
  EXPECT_EQ(relax.Result, 1);
  EXPECT_EQ(relax.tbOuterIterations, "3");
}

}  // namespace
}  // namespace tarno::testing
