// The view of the Instant Inspector's settings, built without exec(): fields set,
// buttons pressed, and the model and the messages checked.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "app/views/inspector_view.h"
#include "dialogs_test_support.h"
#include "support/scripted_ui.h"

namespace tarno::testing {
namespace {

std::string Text(const QLineEdit* edit) { return edit->text().toStdString(); }

TEST(InspectorViewTest, ShowsTheSettingsAndRefusesAStepThatIsNotPositive) {
  EnsureApplication();
  InspectorSettings s;
  s.StepSize = 2.5;
  s.Elevation = 12;
  s.InspectAtTop = false;
  InspectorDialog model;
  model.Load(s, false);
  ScriptedUserInterface ui;
  InspectorView view(model, ui);
  EXPECT_EQ(view.windowTitle().toStdString(), "Instant Inspector Settings...");
  EXPECT_EQ(Text(view.stepSize()), "2.5");
  EXPECT_EQ(view.stepUnit()->text().toStdString(), "ft");
  EXPECT_EQ(Text(view.elevation()), "12");
  EXPECT_FALSE(view.top()->isChecked());
  EXPECT_TRUE(view.elevation()->isEnabled());
  EXPECT_EQ(view.top()->text().toStdString(), "Inspect at top of saturated thickness");
  EXPECT_EQ(view.traceBackwards()->text().toStdString(), "Trace backwards in time");

  // The elevation does not count at the top of the saturated thickness.
  view.top()->setChecked(true);
  EXPECT_FALSE(view.elevation()->isEnabled());

  view.stepSize()->setText("0");
  ui.ExpectMessage("Invalid Value", {"Invalid Step Size!", "Please enter a value larger than 0."});
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(model.Result, 2);
  EXPECT_EQ(view.stepSize()->selectedText().toStdString(), "0");

  view.stepSize()->setText("4");
  view.traceBackwards()->setChecked(true);
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(model.Result, 1);
  EXPECT_DOUBLE_EQ(model.Settings.StepSize, 4.0);
  EXPECT_TRUE(model.Settings.InspectAtTop);
  EXPECT_TRUE(model.Settings.TraceBackwards);
}

TEST(InspectorViewTest, CancelLeavesTheSettingsAsLoaded) {
  EnsureApplication();
  InspectorSettings s;
  InspectorDialog model;
  model.Load(s, true);
  ScriptedUserInterface ui;
  InspectorView view(model, ui);
  EXPECT_EQ(view.stepUnit()->text().toStdString(), "m");
  view.stepSize()->setText("9");
  view.cancelButton()->click();
  EXPECT_EQ(model.Result, 2);
  EXPECT_DOUBLE_EQ(model.Settings.StepSize, 1.0);
}

}  // namespace
}  // namespace tarno::testing
