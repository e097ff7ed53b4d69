// The base maps in the desktop program: Add Map and Remove Map of the project
// settings, the browser's view and the options' view over their models, and the
// pre-scan of the main window when a project opens.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QImage>
#include <QListWidget>
#include <QPushButton>
#include <cstdlib>
#include <sstream>

#include "../basemaps/map_files.h"
#include "app/app_screenshot.h"
#include "app/main_window.h"
#include "app/shell/shell_controller.h"
#include "app/shell_models.h"
#include "app/views/basemap_views.h"
#include "app/views/project_settings_view.h"
#include "basemaps/browser.h"
#include "basemaps/catalogue.h"
#include "core/console_ui.h"
#include "dialogs_test_support.h"
#include "display/redraw.h"
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
  ui_.ExpectMessage(
      kRemoveMapTitle,
      {"Remove the map " + wells + " from the project?", "The file itself is not deleted."},
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
  ui_.ExpectMessage(
      "Remove Map",
      {"Remove the map " + more + " from the project?", "The file itself is not deleted."},
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
  ASSERT_EQ(w.Shell().BaseMaps().size(), 1u);
  EXPECT_EQ(w.Shell().BaseMaps()[0]->Name(), wells);
  EXPECT_TRUE(w.Action("TOOLS_CMDS(5)")->isEnabled());
  w.Session().FileCloseProject();
  EXPECT_TRUE(w.Shell().BaseMaps().empty());
}

// A red image of 40 x 20 pixels of 10 map units, its upper left pixel centred at
// (1000, 2000).
std::string RedImage(const std::filesystem::path& path) {
  GDALAllRegister();
  GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("GTiff");
  char** options = CSLSetNameValue(nullptr, "PHOTOMETRIC", "RGB");
  GDALDataset* ds = driver->Create(path.string().c_str(), 40, 20, 3, GDT_Byte, options);
  CSLDestroy(options);
  std::vector<std::uint8_t> red(40 * 20, 255), none(40 * 20, 0);
  CPLErr e =
      ds->GetRasterBand(1)->RasterIO(GF_Write, 0, 0, 40, 20, red.data(), 40, 20, GDT_Byte, 0, 0);
  e = ds->GetRasterBand(2)->RasterIO(GF_Write, 0, 0, 40, 20, none.data(), 40, 20, GDT_Byte, 0, 0);
  e = ds->GetRasterBand(3)->RasterIO(GF_Write, 0, 0, 40, 20, none.data(), 40, 20, GDT_Byte, 0, 0);
  (void)e;
  GDALClose(ds);
  test::WriteWorld(path.parent_path() / (path.stem().string() + ".tfw"));
  return path.string();
}

int RedPixels(const QImage& image) {
  int n = 0;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) n += image.pixelColor(x, y) == QColor(255, 0, 0);
  return n;
}

TEST_F(BaseMapViews, TheScreenshotOfAProjectDrawsItsBaseMaps) {
  const std::string image = RedImage(dir_ / "photo.tif");
  {
    Database db = Open();
    InsertBaseMap(db, image);
  }
  ScreenshotRequest r;
  r.output = (dir_ / "shot.png").string();
  r.project = path_.string();
  r.width = 200;
  r.height = 100;
  std::ostringstream out, err;
  ASSERT_EQ(TakeScreenshot(r, out, err), 0) << err.str();
  QImage shot(QString::fromStdString(r.output));
  ASSERT_FALSE(shot.isNull());
  // The image lies within the project's stored window, widened to take it in: its
  // red is on the picture.
  EXPECT_GT(RedPixels(shot), 40);

  // Switched off in the list, the map is not drawn.
  {
    Database db = Open();
    BaseMapRow row = *FindBaseMap(db, image);
    row.Show = false;
    UpdateBaseMap(db, row);
  }
  std::ostringstream out2, err2;
  ASSERT_EQ(TakeScreenshot(r, out2, err2), 0) << err2.str();
  QImage hidden(QString::fromStdString(r.output));
  ASSERT_FALSE(hidden.isNull());
  EXPECT_EQ(RedPixels(hidden), 0);
}

TEST_F(BaseMapViews, TheBaseMapsStayUnderTheModelAtARedrawOfTheSameWindow) {
  const std::string image = RedImage(dir_ / "photo.tif");
  {
    Database db = Open();
    InsertBaseMap(db, image);
  }
  std::ostringstream messages;
  ConsoleUserInterface console(messages, Answer::No);
  MainWindowOptions options;
  options.ui = &console;
  options.useSettings = false;
  MainWindow w(options);
  w.resize(300, 260);
  ASSERT_TRUE(w.OpenProject(path_.string())) << messages.str();
  w.RenderMapAt(200, 100);
  const int red = RedPixels(w.MapImage());
  EXPECT_GT(red, 40);
  // An edit redraws the model over the kept background: the window is the same, so
  // the background is not drawn again, and the map stays.
  const int builds = w.View().BackgroundBuilds();
  ASSERT_TRUE(w.View().Redraw(false, false));
  EXPECT_EQ(w.View().BackgroundBuilds(), builds);
  EXPECT_EQ(RedPixels(w.MapImage()), red);
  EXPECT_TRUE(messages.str().empty()) << messages.str();
}

}  // namespace
}  // namespace tarno::testing
