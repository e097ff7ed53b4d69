// The catalogue of a project's base maps: kinds, rows, adding with its boxes, the
// pre-scan, the extents and the BBM group entry.
#include <gtest/gtest.h>

#include "basemaps/catalogue.h"
#include "catalogue_fixture.h"
#include "map_files.h"
#include "store/database.h"
#include "store/default_dirs.h"

namespace tarno::test {
namespace {

namespace ct = catalogue_text;

TEST(BaseMapKinds, EveryExtensionOfTheTableWithoutRegardToCase) {
  EXPECT_EQ(KindOfMap("/m/roads.bbm"), BaseMapKind::Bbm);
  EXPECT_EQ(KindOfMap("/m/ROADS.BBM"), BaseMapKind::Bbm);
  EXPECT_EQ(KindOfMap("/m/parcels.Shp"), BaseMapKind::Shape);
  for (const char* e : {"dgn", "dwg", "DXF"})
    EXPECT_EQ(KindOfMap(std::string("/m/plan.") + e), BaseMapKind::Cad) << e;
  for (const char* e : {"bil", "bip", "bmp", "bsq", "gis", "jpg", "jpeg", "lan", "ras", "rlc", "rs",
                        "sid", "sun", "tif", "TIFF"})
    EXPECT_EQ(KindOfMap(std::string("/m/photo.") + e), BaseMapKind::Raster) << e;
  EXPECT_EQ(ExtensionsOf(BaseMapKind::Raster).size(), 15u);
}

TEST(BaseMapKinds, OnlyTheLastExtensionOfTheFileNameCounts) {
  EXPECT_EQ(KindOfMap("/m/roads.bbm.bak"), BaseMapKind::Unknown);
  EXPECT_EQ(KindOfMap("/m/roads"), BaseMapKind::Unknown);
  EXPECT_EQ(KindOfMap("/m.shp/roads"), BaseMapKind::Unknown);  // a folder's dot
  EXPECT_EQ(KindOfMap("/m/.bbm"), BaseMapKind::Unknown);       // a hidden file, no extension
  EXPECT_EQ(KindOfMap("/m/photo.jp"), BaseMapKind::Unknown);
  EXPECT_EQ(MapExtension("C/Maps/Photo.JPEG"), "jpeg");
}

TEST(BaseMapKinds, TheSelectDialogOffersEveryKind) {
  const FileDialogRequest r = SelectMapRequest("/maps/");
  EXPECT_EQ(r.title, "Select Basemap File");
  EXPECT_EQ(r.defaultExtension, "BBM");
  EXPECT_EQ(r.initialDirectory, "/maps/");
  EXPECT_EQ(
      r.filter.rfind("All Supported Types|*.bbm;*.bil;*.bip;*.bmp;*.bsq;*.dgn;*.dwg;*.dxf;"
                     "*.gis;*.jpg;*.jpeg;*.lan;*.ras;*.rlc;*.rs;*.shp;*.sid;*.sun;*.tif;*.tiff|",
                     0),
      0u)
      << r.filter;
  // Description and pattern pairs.
  std::size_t bars = 0;
  for (char c : r.filter) bars += c == '|';
  EXPECT_EQ(bars % 2, 1u);
}

TEST_F(CatalogueTest, AnAddedMapIsShownWithoutColourOrLabelField) {
  const std::string roads = Map("roads.bbm");
  const auto added = AddMaps(project_, ui_, {roads}, openers_);
  ui_.Verify();
  ASSERT_EQ(added.size(), 1u);
  EXPECT_EQ(added[0].outcome, AddOutcome::Added);
  const auto rows = ReadBaseMaps(project_);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].MapName, roads);
  EXPECT_TRUE(rows[0].Show);
  EXPECT_EQ(rows[0].Color, 0);
  EXPECT_EQ(rows[0].ColorField, "__NONE__");
  EXPECT_EQ(rows[0].TextField, "__NONE__");
  Database db = Database::Open(project_);
  Statement st = db.PrepareRaw("select count(*) from MapLabels;");
  st.Step();
  EXPECT_EQ(st.GetInt64(0), 0);
}

TEST_F(CatalogueTest, ASecondAddSaysTheMapHasBeenAdded) {
  const std::string roads = Map("roads.bbm");
  AddMaps(project_, ui_, {roads}, openers_);
  ui_.ExpectMessage("File Already Added", {roads + " has already been added."});
  // Also twice within one choice: the second is the one refused.
  const std::string rivers = Map("rivers.shp");
  ui_.ExpectMessage("File Already Added", {rivers + " has already been added."});
  const auto added = AddMaps(project_, ui_, {roads, rivers, rivers}, openers_);
  ui_.Verify();
  ASSERT_EQ(added.size(), 3u);
  EXPECT_EQ(added[0].outcome, AddOutcome::AlreadyAdded);
  EXPECT_EQ(added[1].outcome, AddOutcome::Added);
  EXPECT_EQ(added[2].outcome, AddOutcome::AlreadyAdded);
  EXPECT_EQ(ReadBaseMaps(project_).size(), 2u);
}

TEST_F(CatalogueTest, AVectorMapThatCannotBeOpenedIsRefusedAndTheOthersGoOn) {
  const std::string bad = Map("broken.dxf", false);
  const std::string missing = (dir_ / "nowhere.shp").string();
  const std::string odd = Map("notes.txt");
  const std::string good = Map("good.shp");
  // Each box ends with the reader's reason.
  ui_.ExpectMessage("Invalid File",
                    {"The image is not a valid vector data set!",
                     "Could not add the file: " + bad + ".", "The map " + bad + " cannot be read"});
  ui_.ExpectMessage("Invalid File", {"The image is not a valid vector data set!",
                                     "Could not add the file: " + missing + ".",
                                     "The map " + missing + " cannot be read"});
  ui_.ExpectMessage(
      "Invalid File",
      {"The image is not a valid vector data set!", "Could not add the file: " + odd + ".",
       "The file " + odd + " is not a base map of a known kind (extension \"txt\")"});
  const auto added = AddMaps(project_, ui_, {bad, missing, odd, good}, openers_);
  ui_.Verify();
  EXPECT_EQ(added[0].outcome, AddOutcome::InvalidFile);
  EXPECT_EQ(added[2].outcome, AddOutcome::InvalidFile);
  EXPECT_EQ(added[3].outcome, AddOutcome::Added);
  const auto rows = ReadBaseMaps(project_);
  ASSERT_EQ(rows.size(), 1u);
  EXPECT_EQ(rows[0].MapName, good);
}

TEST_F(CatalogueTest, AnImageThatCannotBeReadCannotBeAdded) {
  const std::string bad = Map("photo.tif", false);
  ui_.ExpectMessage("Can't Add", {"The image is not a valid raster data set.",
                                  "The map " + bad + " cannot be read"});
  const auto added = AddMaps(project_, ui_, {bad}, openers_);
  ui_.Verify();
  EXPECT_EQ(added[0].outcome, AddOutcome::CantAdd);
  EXPECT_TRUE(ReadBaseMaps(project_).empty());
}

TEST_F(CatalogueTest, AnImageWithoutWorldFileIsAskedAboutAndCancelRemovesIt) {
  const std::string kept = Map("kept.jpg");
  const std::string dropped = Map("dropped.jpg");
  const std::string placed = Map("placed.jpg");
  georeferenced_.insert(placed);
  ui_.ExpectMessage("Not Georeferenced",
                    {"The file " + kept + " may not be georeferenced!",
                     "Click OK to proceed or Cancel to remove map."},
                    Answer::OK)
      .WithButtons(Buttons::OKCancel);
  ui_.ExpectMessage("Not Georeferenced",
                    {"The file " + dropped + " may not be georeferenced!",
                     "Click OK to proceed or Cancel to remove map."},
                    Answer::Cancel)
      .WithButtons(Buttons::OKCancel);
  const auto added = AddMaps(project_, ui_, {kept, dropped, placed}, openers_);
  ui_.Verify();
  EXPECT_EQ(added[0].outcome, AddOutcome::Added);
  EXPECT_EQ(added[1].outcome, AddOutcome::RemovedByUser);
  EXPECT_EQ(added[2].outcome, AddOutcome::Added);
  const auto rows = ReadBaseMaps(project_);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].MapName, kept);
  EXPECT_EQ(rows[1].MapName, placed);
}

TEST_F(CatalogueTest, AddMapOffersTheSelectDialogAndRemembersItsFolder) {
  const std::string roads = Map("roads.bbm");
  ui_.ExpectOpenFiles({});  // Cancel: nothing happens
  EXPECT_FALSE(SelectAndAddMaps(project_, ui_, openers_));
  ui_.ExpectOpenFiles({roads}).Title("Select Basemap File");
  EXPECT_TRUE(SelectAndAddMaps(project_, ui_, openers_));
  ui_.Verify();
  const auto dialogs = ui_.CallsOf(UiCallKind::OpenFiles);
  ASSERT_EQ(dialogs.size(), 2u);
  EXPECT_EQ(dialogs[1].file.defaultExtension, "BBM");
  EXPECT_EQ(dialogs[1].file.filter, SelectMapFilter());
  EXPECT_EQ(DefaultDirectories(kSelectBBMPathKey, DirectoryMode::Read),
            WithClosingSeparator(dir_.Path().string()));
  // Adding only maps that are refused answers false.
  ui_.ExpectOpenFiles({roads});
  ui_.ExpectMessageTitled("File Already Added");
  EXPECT_FALSE(SelectAndAddMaps(project_, ui_, openers_));
  ui_.Verify();
}

TEST_F(CatalogueTest, RowsKeepTheirLookAndLabelField) {
  const std::string parcels = Map("parcels.shp");
  AddMaps(project_, ui_, {parcels}, openers_);
  Database db = Database::Open(project_);
  BaseMapRow row = *FindBaseMap(db, parcels);
  row.Show = false;
  row.Color = 0x00FF00;
  row.ColorField = "ZONE";
  row.UseColorField = true;
  row.TextField = "OWNER";
  ASSERT_TRUE(UpdateBaseMap(db, row));
  BaseMapRow back = *FindBaseMap(db, parcels);
  EXPECT_FALSE(back.Show);
  EXPECT_EQ(back.Color, 0x00FF00);
  EXPECT_EQ(back.ColorField, "ZONE");
  EXPECT_TRUE(back.UseColorField);
  EXPECT_EQ(back.TextField, "OWNER");
  // No label field: the MapLabels row goes.
  row.TextField = "__NONE__";
  UpdateBaseMap(db, row);
  EXPECT_EQ(FindBaseMap(db, parcels)->TextField, "__NONE__");
  row.TextField = "OWNER";
  UpdateBaseMap(db, row);
  // Removing the map removes its labels; a second removal finds nothing.
  EXPECT_TRUE(RemoveBaseMap(db, parcels));
  EXPECT_FALSE(RemoveBaseMap(db, parcels));
  Statement st = db.PrepareRaw("select count(*) from MapLabels;");
  st.Step();
  EXPECT_EQ(st.GetInt64(0), 0);
  BaseMapRow ghost;
  ghost.MapName = "/nowhere.shp";
  EXPECT_FALSE(UpdateBaseMap(db, ghost));
}

TEST_F(CatalogueTest, PrescanOpensEveryMapAndReportsTheOnesThatFail) {
  const std::string roads = Map("roads.bbm", true, "0 10 10 0");
  const std::string gone = Map("gone.dxf", false);
  const std::string photo = Map("photo.tif", false);
  const std::string hidden = Map("hidden.shp", true, "0 1 1 0");
  const std::string parcels = Map("parcels.shp", true, "5 6 7 8");
  {
    Database db = Database::Open(project_);
    for (const auto& m : {roads, gone, photo, hidden, parcels}) InsertBaseMap(db, m);
    BaseMapRow h = *FindBaseMap(db, hidden);
    h.Show = false;
    UpdateBaseMap(db, h);
  }
  ui_.ExpectMessage("Error Adding Image",
                    {"Error adding vector image " + gone, "The map " + gone + " cannot be read"});
  ui_.ExpectMessage("Error Adding Image",
                    {"Error adding raster image " + photo, "The map " + photo + " cannot be read"});
  const BaseMapLayers layers = PrescanMaps(project_, ui_, openers_);
  ui_.Verify();
  ASSERT_EQ(layers.size(), 3u);
  EXPECT_EQ(layers[0]->Name(), roads);
  EXPECT_EQ(layers[1]->Name(), hidden);
  EXPECT_EQ(layers[2]->Name(), parcels);
  EXPECT_TRUE(layers[0]->Show);
  EXPECT_FALSE(layers[1]->Show);
  EXPECT_TRUE(layers[2]->Show);
  EXPECT_EQ(ui_.WaitTexts(), std::vector<std::string>{"Pre-scanning maps..."});
  EXPECT_FALSE(ui_.WaitWindowVisible());
}

TEST_F(CatalogueTest, APrescanWithoutMapsShowsNoWaitWindow) {
  EXPECT_TRUE(PrescanMaps(project_, ui_, openers_).empty());
  EXPECT_TRUE(ui_.Calls().empty());
}

TEST_F(CatalogueTest, AMapOfAKindWithoutReaderFailsThePrescanOnly) {
  const std::string plan = Map("plan.dwg");
  {
    Database db = Database::Open(project_);
    InsertBaseMap(db, plan);
  }
  openers_.cad = nullptr;
  ui_.ExpectMessage("Error Adding Image", {"Error adding vector image " + plan,
                                           "No reader of CAD maps is available for " + plan});
  EXPECT_TRUE(PrescanMaps(project_, ui_, openers_).empty());
  ui_.Verify();
}

TEST_F(CatalogueTest, ExtentsAreTheBoxOfTheShownMaps) {
  BaseMapLayers layers;
  EXPECT_FALSE(ModelCheckMapExtents(layers));
  layers.push_back(std::make_unique<FakeLayer>("a", false, std::nullopt));
  EXPECT_FALSE(ModelCheckMapExtents(layers));
  layers.push_back(std::make_unique<FakeLayer>("b", false, MapExtents{10, 20, 40, 30}));
  layers.push_back(std::make_unique<FakeLayer>("c", true, MapExtents{-5, 12, 35, 25}));
  // A map switched off counts for nothing.
  layers.push_back(std::make_unique<FakeLayer>("d", true, MapExtents{-500, 500, 500, -500}));
  layers.back()->Show = false;
  const auto box = ModelCheckMapExtents(layers);
  ASSERT_TRUE(box);
  EXPECT_DOUBLE_EQ(box->MinX, -5);
  EXPECT_DOUBLE_EQ(box->MaxX, 20);
  EXPECT_DOUBLE_EQ(box->MinY, 25);
  EXPECT_DOUBLE_EQ(box->MaxY, 40);

  // From the project: hidden and unreadable maps add nothing, and no box is shown.
  const std::string shown = Map("shown.bbm", true, "100 200 300 250");
  const std::string hidden = Map("hidden.bbm", true, "-1000 1000 1000 -1000");
  const std::string broken = Map("broken.shp", false);
  {
    Database db = Database::Open(project_);
    for (const auto& m : {shown, hidden, broken}) InsertBaseMap(db, m);
    BaseMapRow h = *FindBaseMap(db, hidden);
    h.Show = false;
    UpdateBaseMap(db, h);
  }
  const auto projectBox = ModelCheckMapExtents(project_, openers_);
  ASSERT_TRUE(projectBox);
  EXPECT_DOUBLE_EQ(projectBox->MinX, 100);
  EXPECT_DOUBLE_EQ(projectBox->MaxX, 200);
  EXPECT_DOUBLE_EQ(projectBox->MinY, 250);
  EXPECT_DOUBLE_EQ(projectBox->MaxY, 300);
  EXPECT_TRUE(ui_.Calls().empty());
}

TEST_F(CatalogueTest, SelectingABBMGroupNeedsABBMMap) {
  ui_.ExpectMessage("No Maps", {"No BBM Maps are loaded in current project"});
  EXPECT_FALSE(BBMSelect(project_, ui_));
  {
    Database db = Database::Open(project_);
    InsertBaseMap(db, Map("parcels.shp"));
  }
  ui_.ExpectMessage("No Maps", {"No BBM Maps are loaded in current project"});
  EXPECT_FALSE(BBMSelect(project_, ui_));
  ui_.Verify();
  {
    Database db = Database::Open(project_);
    InsertBaseMap(db, Map("roads.BBM"));
  }
  EXPECT_TRUE(BBMSelect(project_, ui_));
  ui_.Verify();
  EXPECT_EQ(ui_.CurrentActivity(), "Select BBM Group");
  EXPECT_EQ(ui_.CurrentFeedback(), "Click mouse on map to select a group of ...");
}

}  // namespace
}  // namespace tarno::test

// With the readers of the library: images found georeferenced by their world files.
namespace tarno::test {
namespace {

TEST_F(CatalogueTest, AJpegWithOnlyAJgwFileHasAWorldFileAndOneWithNeitherIsAskedAbout) {
  const std::string placed = MakeImage(dir_ / "placed.jpg", "JPEG");
  WriteWorld(dir_ / "placed.jgw");
  const std::string bare = MakeImage(dir_ / "bare.jpg", "JPEG");
  const std::string tiff = MakeImage(dir_ / "scan.TIF", "GTiff");
  WriteWorld(dir_ / "scan.tfw");
  ui_.ExpectMessage("Not Georeferenced",
                    {"The file " + bare + " may not be georeferenced!",
                     "Click OK to proceed or Cancel to remove map."},
                    Answer::Cancel)
      .WithButtons(Buttons::OKCancel);
  const auto added = AddMaps(project_, ui_, {placed, bare, tiff}, DefaultOpeners());
  ui_.Verify();
  EXPECT_EQ(added[0].outcome, AddOutcome::Added);
  EXPECT_EQ(added[1].outcome, AddOutcome::RemovedByUser);
  EXPECT_EQ(added[2].outcome, AddOutcome::Added);

  // The pre-scan opens both with the real reader; their extents come from the world
  // files: 8 x 4 pixels of 10 map units, (1000, 2000) the centre of the upper left
  // pixel.
  const BaseMapLayers layers = PrescanMaps(project_, ui_, DefaultOpeners());
  ASSERT_EQ(layers.size(), 2u);
  EXPECT_TRUE(layers[0]->IsRaster());
  const auto box = ModelCheckMapExtents(layers);
  ASSERT_TRUE(box);
  EXPECT_DOUBLE_EQ(box->MinX, 995);
  EXPECT_DOUBLE_EQ(box->MaxX, 1075);
  EXPECT_DOUBLE_EQ(box->MinY, 1965);
  EXPECT_DOUBLE_EQ(box->MaxY, 2005);
}

TEST_F(CatalogueTest, TheLibraryReadersRefuseFilesThatAreNotTheirKind) {
  const std::string fakeJpeg = Map("fake.jpg");  // a text file
  const std::string fakeBbm = Map("fake.bbm");
  ui_.ExpectMessageTitled("Can't Add");
  ui_.ExpectMessageTitled("Invalid File");
  const auto added = AddMaps(project_, ui_, {fakeJpeg, fakeBbm}, DefaultOpeners());
  ui_.Verify();
  EXPECT_EQ(added[0].outcome, AddOutcome::CantAdd);
  EXPECT_EQ(added[1].outcome, AddOutcome::InvalidFile);
  ASSERT_EQ(ui_.Calls().size(), 2u);
  const std::vector<std::string>& cantAdd = ui_.Calls()[0].lines;
  ASSERT_EQ(cantAdd.size(), 2u);
  EXPECT_EQ(cantAdd[0], "The image is not a valid raster data set.");
  EXPECT_NE(cantAdd[1].find(fakeJpeg), std::string::npos) << cantAdd[1];
  const std::vector<std::string>& invalid = ui_.Calls()[1].lines;
  ASSERT_EQ(invalid.size(), 3u);
  EXPECT_NE(invalid[2].find(fakeBbm), std::string::npos) << invalid[2];
}

// What was wrong reaches the user: the fixed texts of the boxes come first, the
// reader's reason last.
TEST_F(CatalogueTest, AnImageWithADamagedWorldFileIsRefusedNamingTheWorldFileLine) {
  const std::string photo = MakeImage(dir_ / "photo.tif", "GTiff");
  const std::string world = (dir_ / "photo.tfw").string();
  // The letter O typed for the digit 0 on the fourth line.
  WriteFile(world, "10\r\n0\r\n0\r\n-1O\r\n1000\r\n2000\r\n");
  ui_.ExpectMessage("Can't Add",
                    {"The image is not a valid raster data set.",
                     "The world file \"" + world + "\", line 4: \"-1O\" is not a number"});
  const auto added = AddMaps(project_, ui_, {photo}, DefaultOpeners());
  ui_.Verify();
  EXPECT_EQ(added[0].outcome, AddOutcome::CantAdd);
  EXPECT_TRUE(ReadBaseMaps(project_).empty());

  // Added while the world file was sound, then damaged: the pre-scan says why.
  WriteWorld(dir_ / "photo.tfw");
  ASSERT_EQ(AddMaps(project_, ui_, {photo}, DefaultOpeners())[0].outcome, AddOutcome::Added);
  WriteFile(world, "10\n0\n0\n");
  ui_.ExpectMessage("Error Adding Image", {"Error adding raster image " + photo,
                                           "The world file \"" + world +
                                               "\" has 3 lines; a world file has six numbers, "
                                               "one to a line"});
  EXPECT_TRUE(PrescanMaps(project_, ui_, DefaultOpeners()).empty());
  ui_.Verify();
}

TEST_F(CatalogueTest, ADwgDrawingIsRefusedWithTheAdviceToSaveItAsDxf) {
  const std::string plan = (dir_ / "plan.dwg").string();
  WriteFile(plan, "AC1015 not read here");
  ui_.ExpectMessage("Invalid File", {"The image is not a valid vector data set!",
                                     "Could not add the file: " + plan + ".",
                                     "The drawing \"" + plan +
                                         "\" is a DWG file, which cannot be read here; save "
                                         "it as DXF and add the DXF file"});
  EXPECT_EQ(AddMaps(project_, ui_, {plan}, DefaultOpeners())[0].outcome, AddOutcome::InvalidFile);
  ui_.Verify();
}

}  // namespace
}  // namespace tarno::test
