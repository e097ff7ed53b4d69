// The base maps in the desktop program: Add Map and Remove Map of the project
// settings, the browser's view and the options' view over their models, and the
// pre-scan of the main window when a project opens.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QListWidget>
#include <QPushButton>
#include <cstdlib>
#include <sstream>

#include "../basemaps/map_files.h"
#include "app/main_window.h"
#include "app/shell_models.h"
#include "app/views/basemap_views.h"
#include "app/views/project_settings_view.h"
#include "basemaps/browser.h"
#include "basemaps/catalogue.h"
#include "core/console_ui.h"
#include "dialogs_test_support.h"
#include "store/database.h"
#include "support/scripted_ui.h"

namespace tarno::testing {
namespace {

class BaseMapViews : public ProjectTest {
 protected:
  void SetUp() override {
    ProjectTest::SetUp();
    ::setenv("TARNO_CONFIG_DIR", (dir_ / "config").string().c_str(), 1);
    settings_.Load(path_.string());
  }
  void TearDown() override {
    ::unsetenv("TARNO_CONFIG_DIR");
    ProjectTest::TearDown();
  }
  ProjectSettings settings_;
  ScriptedUserInterface ui_;
};

TEST_F(BaseMapViews, AddMapOfTheProjectSettingsListsTheMapAndAsksForARedraw) {
  const std::string wells = test::MakeShapefile(dir_ / "wells.shp");
  ui_.ExpectOpenFiles({});
  EXPECT_FALSE(ProjectSettingsAddMap(settings_, ui_, DefaultOpeners()));
  EXPECT_FALSE(settings_.Reload);
  ui_.ExpectOpenFiles({wells}).Title("Select Basemap File");
  EXPECT_TRUE(ProjectSettingsAddMap(settings_, ui_, DefaultOpeners()));
  ui_.Verify();
  EXPECT_EQ(settings_.BaseMaps, std::vector<std::string>{wells});
  EXPECT_TRUE(settings_.Reload);
  EXPECT_TRUE(settings_.MustRedraw);

  settings_.Reload = settings_.MustRedraw = false;
  ui_.ExpectMessageTitled(kRemoveMapTitle, Answer::No);
  EXPECT_FALSE(ProjectSettingsRemoveMap(settings_, ui_, 0));
  EXPECT_FALSE(ProjectSettingsRemoveMap(settings_, ui_, 3));  // no such row: nothing asked
  ui_.ExpectMessage(kRemoveMapTitle, {"Remove the map " + wells + " from the project?",
                                      "The file itself is not deleted."},
                    Answer::Yes);
  EXPECT_TRUE(ProjectSettingsRemoveMap(settings_, ui_, 0));
  ui_.Verify();
  EXPECT_TRUE(settings_.BaseMaps.empty());
  EXPECT_TRUE(ReadBaseMaps(path_.string()).empty());
  EXPECT_TRUE(settings_.Reload);
}

TEST_F(BaseMapViews, TheSettingsViewAddsAndRemovesThroughItsButtons) {
  const std::string wells = test::MakeShapefile(dir_ / "wells.shp");
  ProjectSettingsView view(settings_, ui_);
  EXPECT_EQ(view.baseMaps()->count(), 0);
  EXPECT_FALSE(view.removeMapButton()->isEnabled());
  ui_.ExpectOpenFiles({wells});
  view.addMapButton()->click();
  ASSERT_EQ(view.baseMaps()->count(), 1);
  EXPECT_EQ(view.baseMaps()->item(0)->text().toStdString(), wells);
  view.baseMaps()->setCurrentRow(0);
  EXPECT_TRUE(view.removeMapButton()->isEnabled());
  ui_.ExpectMessageTitled(kRemoveMapTitle, Answer::Yes);
  view.removeMapButton()->click();
  ui_.Verify();
  EXPECT_EQ(view.baseMaps()->count(), 0);
}

TEST_F(BaseMapViews, TheBrowserViewShowsTheListAndItsButtonsActOnTheSelection) {
  const std::string wells = test::MakeShapefile(dir_ / "wells.shp");
  const std::string more = test::MakeShapefile(dir_ / "more.shp");
  {
    Database db = Open();
    InsertBaseMap(db, wells);
    InsertBaseMap(db, more);
  }
  MapBrowser browser(path_.string(), DefaultOpeners());
  browser.Load();
  MapBrowserView view(browser, ui_);
  ASSERT_EQ(view.maps()->count(), 2);
  EXPECT_EQ(view.maps()->item(0)->text().toStdString(), "wells.shp  (shape, shown)  " + wells);
  view.maps()->setCurrentRow(1);
  EXPECT_EQ(browser.Selected, 1);
  ui_.ExpectMessage("Remove Map", {"Remove the map " + more + " from the project?",
                                   "The file itself is not deleted."},
                    Answer::Yes);
  view.removeButton()->click();
  ui_.Verify();
  ASSERT_EQ(view.maps()->count(), 1);
  EXPECT_TRUE(browser.Changed);
  // The view of the attribute table goes through the port.
  view.maps()->setCurrentRow(0);
  ui_.ExpectModal("ViewShape");
  view.viewButton()->click();
  ui_.Verify();
  EXPECT_EQ(browser.ShapeDialog.Rows.size(), 3u);
}

TEST_F(BaseMapViews, TheOptionsViewHandsItsFieldsToTheModel) {
  BaseMapBrowserOptions model;
  BaseMapRow row;
  row.MapName = test::MakeShapefile(dir_ / "wells.shp");
  model.Load(row);
  BaseMapBrowserOptionsView view(model, ui_);
  EXPECT_EQ(view.colorField()->count(), 3);  // __NONE__, ZONE, DEPTH
  EXPECT_FALSE(view.buildPyramids()->isVisibleTo(&view));
  view.show()->setChecked(false);
  view.colorField()->setCurrentText("ZONE");
  view.useColorField()->setChecked(true);
  view.textField()->setCurrentText("DEPTH");
  view.okButton()->click();
  EXPECT_EQ(model.Result, BaseMapBrowserOptions::kOK);
  EXPECT_FALSE(model.Row.Show);
  EXPECT_EQ(model.Row.ColorField, "ZONE");
  EXPECT_TRUE(model.Row.UseColorField);
  EXPECT_EQ(model.Row.TextField, "DEPTH");
  ui_.Verify();
}

TEST_F(BaseMapViews, OpeningAProjectPrescansItsMapsAndReportsTheBrokenOnes) {
  const std::string wells = test::MakeShapefile(dir_ / "wells.shp");
  const std::string broken = (dir_ / "broken.shp").string();
  test::WriteFile(broken, "not a shapefile");
  {
    Database db = Open();
    InsertBaseMap(db, wells);
    InsertBaseMap(db, broken);
  }
  std::ostringstream messages;
  ConsoleUserInterface console(messages, Answer::No);
  MainWindowOptions options;
  options.ui = &console;
  options.useSettings = false;
  MainWindow w(options);
  w.resize(600, 400);
  ASSERT_TRUE(w.OpenProject(path_.string())) << messages.str();
  EXPECT_NE(messages.str().find("Error Adding Image: Error adding vector image " + broken),
            std::string::npos)
      << messages.str();
  ASSERT_EQ(w.BaseMaps().size(), 1u);
  EXPECT_EQ(w.BaseMaps()[0]->Name(), wells);
  EXPECT_TRUE(w.Action("TOOLS_CMDS(5)")->isEnabled());
  w.Session().FileCloseProject();
  EXPECT_TRUE(w.BaseMaps().empty());
}

}  // namespace
}  // namespace tarno::testing
