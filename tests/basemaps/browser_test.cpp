// The map browser and its dialogs: options of one map, the attribute table of a
// shapefile, the layers of a CAD file and the bands of an image.
#include <gdal_priv.h>
#include <gtest/gtest.h>
#include <ogrsf_frmts.h>

#include "basemaps/bbm_writer.h"
#include "basemaps/browser.h"
#include "catalogue_fixture.h"
#include "map_files.h"
#include "store/database.h"

namespace tarno::test {
namespace {

class BrowserTest : public CatalogueTest {
 protected:
  MapBrowser Browser() {
    MapBrowser b(project_, openers_);
    b.Load();
    return b;
  }
};

TEST_F(BrowserTest, OptionsOfAShapefileOfferItsAttributesAndAreWritten) {
  const std::string shp = MakeShapefile(dir_ / "wells.shp");
  {
    Database db = Database::Open(project_);
    InsertBaseMap(db, shp);
  }
  MapBrowser browser = Browser();
  browser.Selected = 0;
  ui_.ExpectModal<BaseMapBrowserOptions>("BaseMapBrowserOptions", [&](BaseMapBrowserOptions& d) {
    EXPECT_EQ(d.Fields, (std::vector<std::string>{"__NONE__", "ZONE", "DEPTH"}));
    EXPECT_FALSE(d.PyramidsOffered());
    d.Row.ColorField = "NOPE";
    EXPECT_FALSE(d.OK(ui_));  // the box below; the dialog stays
    d.Row.ColorField = "zone";
    d.Row.UseColorField = true;
    d.Row.TextField = "DEPTH";
    d.Row.Show = false;
    d.ChooseColour(ui_);
    EXPECT_TRUE(d.OK(ui_));
  });
  ui_.ExpectMessage("Invalid Field", {"The map wells.shp has no attribute \"NOPE\".",
                                      "Please choose one of the list."});
  ui_.ExpectColour(0x0000FFu);
  EXPECT_TRUE(browser.Options(ui_));
  ui_.Verify();
  EXPECT_TRUE(browser.Changed);
  const auto rows = ReadBaseMaps(project_);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].ColorField, "zone");
  EXPECT_TRUE(rows[0].UseColorField);
  EXPECT_EQ(rows[0].TextField, "DEPTH");
  EXPECT_FALSE(rows[0].Show);
  EXPECT_EQ(rows[0].Color, 0x0000FF);
  EXPECT_TRUE(overviewsBuilt_.empty());
}

TEST_F(BrowserTest, CancelledOptionsChangeNothingAndPyramidsAreBuiltForImagesOnly) {
  const std::string tif = Map("photo.tif");
  const std::string roads = Map("roads.bbm");
  georeferenced_.insert(tif);
  AddMaps(project_, ui_, {tif, roads}, openers_);
  MapBrowser browser = Browser();
  browser.Selected = 0;
  ui_.ExpectModal<BaseMapBrowserOptions>("BaseMapBrowserOptions", [](BaseMapBrowserOptions& d) {
    d.Row.Show = false;
    d.Cancel();
  });
  EXPECT_FALSE(browser.Options(ui_));
  EXPECT_FALSE(browser.Changed);
  EXPECT_TRUE(ReadBaseMaps(project_)[0].Show);

  ui_.ExpectModal<BaseMapBrowserOptions>("BaseMapBrowserOptions", [&](BaseMapBrowserOptions& d) {
    EXPECT_TRUE(d.PyramidsOffered());
    EXPECT_EQ(d.Fields, std::vector<std::string>{"__NONE__"});
    d.BuildPyramids = true;
    EXPECT_TRUE(d.OK(ui_));
  });
  EXPECT_TRUE(browser.Options(ui_));
  EXPECT_EQ(overviewsBuilt_, std::vector<std::string>{tif});
  EXPECT_EQ(ui_.WaitTexts(), std::vector<std::string>{"Building pyramids..."});

  // A BBM map has no pyramids: the choice is dropped by OK.
  browser.Selected = 1;
  ui_.ExpectModal<BaseMapBrowserOptions>("BaseMapBrowserOptions", [&](BaseMapBrowserOptions& d) {
    d.BuildPyramids = true;
    EXPECT_TRUE(d.OK(ui_));
    EXPECT_FALSE(d.BuildPyramids);
  });
  EXPECT_TRUE(browser.Options(ui_));
  EXPECT_EQ(overviewsBuilt_.size(), 1u);
  ui_.Verify();
}

TEST_F(BrowserTest, RemoveAsksFirstAndNeedsASelection) {
  const std::string a = Map("a.bbm"), b = Map("b.bbm");
  AddMaps(project_, ui_, {a, b}, openers_);
  MapBrowser browser = Browser();
  ui_.ExpectMessage("No Map Selected", {"Please select a map in the list first."});
  EXPECT_FALSE(browser.Remove(ui_));
  browser.Selected = 0;
  ui_.ExpectMessageTitled("Remove Map", Answer::No);
  EXPECT_FALSE(browser.Remove(ui_));
  EXPECT_EQ(ReadBaseMaps(project_).size(), 2u);
  ui_.ExpectMessage(
      "Remove Map",
      {"Remove the map " + a + " from the project?", "The file itself is not deleted."},
      Answer::Yes);
  EXPECT_TRUE(browser.Remove(ui_));
  ui_.Verify();
  EXPECT_TRUE(browser.Changed);
  ASSERT_EQ(browser.Maps.size(), 1u);
  EXPECT_EQ(browser.Maps[0].MapName, b);
  EXPECT_TRUE(std::filesystem::exists(a));
  ASSERT_EQ(browser.ListLines().size(), 1u);
  EXPECT_EQ(browser.ListLines()[0], "b.bbm  (BBM, shown)  " + b);
}

TEST_F(BrowserTest, ViewShowsTheAttributeTableOfAShapefile) {
  const std::string shp = MakeShapefile(dir_ / "wells.shp");
  {
    Database db = Database::Open(project_);
    InsertBaseMap(db, shp);
  }
  MapBrowser browser = Browser();
  browser.Selected = 0;
  ui_.ExpectModal("ViewShape");
  browser.View(ui_);
  ui_.Verify();
  const ViewShape& v = browser.ShapeDialog;
  EXPECT_EQ(v.Title(), "Shapefile Attributes - wells.shp");
  EXPECT_EQ(v.Columns, (std::vector<std::string>{"ZONE", "DEPTH"}));
  EXPECT_EQ(v.RecordCount, 3);
  ASSERT_EQ(v.Rows.size(), 3u);
  EXPECT_EQ(v.Rows[1][0], "south");
  EXPECT_EQ(v.Rows[2][0], "");  // a field never set reads empty
  EXPECT_EQ(std::stod(v.Rows[2][1]), 4.5);
  EXPECT_EQ(v.GeometryType, "Point");
}

TEST_F(BrowserTest, ViewShowsTheBandsOfAnImageAndTheLayersOfACadFile) {
  const std::string tif = MakeImage(dir_ / "photo.tif", "GTiff", 8, 4, 3);
  ViewGraphics g;
  g.Load(tif);
  EXPECT_EQ(g.Kind, BaseMapKind::Raster);
  ASSERT_EQ(g.Entries.size(), 3u);
  EXPECT_EQ(g.Entries[2].Name, "Band 3");
  EXPECT_NE(g.Summary.find("8 x 4 pixels"), std::string::npos) << g.Summary;
  EXPECT_NE(g.Summary.find("not georeferenced"), std::string::npos) << g.Summary;

  // A minimal DXF with one line on the layer "ROADS".
  const std::string dxf = (dir_ / "plan.dxf").string();
  WriteFile(
      dxf,
      "0\nSECTION\n2\nENTITIES\n0\nLINE\n8\nROADS\n10\n0.0\n20\n0.0\n30\n0.0\n11\n5.0\n21\n5.0\n"
      "31\n0.0\n0\nENDSEC\n0\nEOF\n");
  g.Load(dxf);
  EXPECT_EQ(g.Kind, BaseMapKind::Cad);
  ASSERT_FALSE(g.Entries.empty());
  EXPECT_NE(g.Entries[0].Details.find("1 feature(s)"), std::string::npos) << g.Entries[0].Details;
  EXPECT_EQ(g.Title(), "Graphics Layers - plan.dxf");
}

TEST_F(BrowserTest, ViewOfABbmMapShowsItsHeaderAndAnUnreadableMapSaysSo) {
  const std::string roads = (dir_ / "roads.bbm").string();
  {
    BbmHeaderFields fields;
    fields.title = "Roads";
    fields.dataType = bbm::kUnattributed;
    BbmRecordWriter w(fields);
    w.AddLine(1, {0, 1000}, {0, 500}, {});
    w.Save(roads);
  }
  const std::string bad = Map("broken.dxf");  // opens for the fake opener, not for the reader
  const std::string fakeBbm = Map("fake.bbm");
  {
    Database db = Database::Open(project_);
    for (const auto& m : {roads, bad, fakeBbm}) InsertBaseMap(db, m);
  }
  MapBrowser browser = Browser();
  browser.Selected = 0;
  ui_.ExpectMessageTitled("BBM File Header");
  browser.View(ui_);
  ui_.Verify();
  const auto header = ui_.Messages().back().lines;
  ASSERT_FALSE(header.empty());
  EXPECT_EQ(header[0], "Filename:         " + roads);
  browser.Selected = 1;
  ui_.ExpectMessage("Cannot View Map", {"The file " + bad + " cannot be read"});
  browser.View(ui_);
  browser.Selected = 2;
  // The reader's own description names the file.
  ui_.ExpectMessageTitled("Cannot View Map");
  browser.View(ui_);
  ui_.Verify();
  ASSERT_EQ(ui_.Messages().back().lines.size(), 1u);
  EXPECT_NE(ui_.Messages().back().lines[0].find(fakeBbm), std::string::npos);
}

TEST_F(BrowserTest, AddMapsThroughTheBrowserSelectsTheNewMap) {
  const std::string a = Map("a.bbm"), b = Map("b.shp");
  MapBrowser browser = Browser();
  ui_.ExpectOpenFiles({a, b});
  EXPECT_TRUE(browser.AddMaps(ui_));
  ui_.Verify();
  EXPECT_TRUE(browser.Changed);
  EXPECT_EQ(browser.Maps.size(), 2u);
  EXPECT_EQ(browser.Selected, 1);
}

}  // namespace
}  // namespace tarno::test
