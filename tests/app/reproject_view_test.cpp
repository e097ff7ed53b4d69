// The views of the reprojection dialogs, built without exec(): lists filled from the
// models, choices made, buttons pressed, and the models read back.
#include "app/views/reproject_view.h"

#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>

#include "dialogs_test_support.h"
#include "support/temp_dir.h"

namespace tarno {
namespace {

using testing::EnsureApplication;

TEST(ReprojectMapsViewTest, ListsTheFolderAndHandsOverTheChoices) {
  EnsureApplication();
  test::TempDir dir;
  test::WriteFile(dir / "b.bbm", "x");
  test::WriteFile(dir / "a.tif", "x");
  test::WriteFile(dir / "notes.txt", "x");
  ReprojectMapsDialog model;
  model.SourcePath = dir.Path().string();
  ReprojectMapsView view(model);
  ASSERT_EQ(view.sourceFiles()->count(), 2);
  EXPECT_EQ(view.sourceFiles()->item(0)->text(), QStringLiteral("a.tif"));
  EXPECT_EQ(view.sourceProjections()->count(), 171);
  EXPECT_EQ(view.targetProjections()->font().family(), QStringLiteral("Courier New"));
  EXPECT_TRUE(view.nad27()->isChecked());

  view.sourceFiles()->item(1)->setSelected(true);
  view.sourceProjections()->setCurrentRow(15);
  view.targetProjections()->setCurrentRow(*ProjectionIndexOfCode(2202));
  view.nad83()->setChecked(true);
  view.okButton()->click();
  EXPECT_EQ(model.Result, 1);
  EXPECT_EQ(model.SelectedFiles, (std::vector<std::string>{"b.bbm"}));
  EXPECT_EQ(model.SourceProjection, 15);
  EXPECT_EQ(ProjectionList()[model.TargetProjection].code, 2202);
  EXPECT_EQ(model.datum, Datum::NAD83);
}

TEST(ReprojectMapsViewTest, CancelLeavesTheChoicesAlone) {
  EnsureApplication();
  ReprojectMapsDialog model;
  model.TargetProjection = 3;
  ReprojectMapsView view(model);
  view.targetProjections()->setCurrentRow(9);
  view.cancelButton()->click();
  EXPECT_EQ(model.Result, 2);
  EXPECT_EQ(model.TargetProjection, 3);
}

TEST(MapTargetViewTest, StartsAtTheModelsRowsAndShowsTheMaps) {
  EnsureApplication();
  MapTargetDialog model;
  model.Files = {"/maps/a.bbm", "/maps/b.bbm"};
  model.SourceProjection = *ProjectionIndexOfCode(2202);
  model.datum = Datum::NAD83;
  MapTargetView view(model);
  EXPECT_EQ(view.files()->count(), 2);
  EXPECT_EQ(view.sourceProjections()->currentRow(), model.SourceProjection);
  EXPECT_TRUE(view.nad83()->isChecked());
  view.targetProjections()->setCurrentRow(15);
  view.okButton()->click();
  EXPECT_EQ(model.Result, 1);
  EXPECT_EQ(model.TargetProjection, 15);
}

}  // namespace
}  // namespace tarno
