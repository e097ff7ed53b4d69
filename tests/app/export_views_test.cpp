// The views of the geometry exports' dialogs, built without exec(): a choice made,
// OK pressed, and the model read back.
#include "app/views/export_views.h"

#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>

#include "dialogs_test_support.h"
#include "support/scripted_ui.h"

namespace tarno {
namespace {

using testing::EnsureApplication;

TEST(ExportViewsTest, VectorExportWantsAChoiceAndHandsOverTheModeAndLayer) {
  EnsureApplication();
  ScriptedUserInterface ui;
  exchange::VectorExport model;
  model.FileMode = "DXF";
  VectorExportView view(model, ui);
  EXPECT_EQ(view.windowTitle(), QStringLiteral("Export DXF File"));
  EXPECT_EQ(view.option(1)->text(), QStringLiteral("Particle Paths"));
  EXPECT_FALSE(view.layerName()->isHidden());
  ui.ExpectMessage("Choose Type", {"Please choose a type to export."});
  view.okButton()->click();
  EXPECT_EQ(model.Result, 2);
  view.option(0)->setChecked(true);
  view.layerName()->setText(QStringLiteral("Heads"));
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(model.Result, 1);
  EXPECT_EQ(model.mode, "CONTOURS");
  EXPECT_EQ(model.Layer, "Heads");

  exchange::VectorExport bln;
  bln.FileMode = "BLN";
  VectorExportView blnView(bln, ui);
  EXPECT_TRUE(blnView.layerName()->isHidden());
}

TEST(ExportViewsTest, ExportShapefileHandsOverTheOption) {
  EnsureApplication();
  ScriptedUserInterface ui;
  exchange::ExportShapefile model;
  ExportShapefileView view(model, ui);
  EXPECT_EQ(view.option(1)->text(), QStringLiteral("Path Lines, TicMarks"));
  view.option(8)->setChecked(true);
  view.okButton()->click();
  EXPECT_EQ(model.Result, 1);
  EXPECT_EQ(model.SfOption, 8);
  exchange::ExportShapefile other;
  ExportShapefileView otherView(other, ui);
  otherView.cancelButton()->click();
  EXPECT_EQ(other.Result, 2);
}

}  // namespace
}  // namespace tarno
