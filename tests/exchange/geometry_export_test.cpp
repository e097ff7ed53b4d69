// The geometry exports, each file opened by a reader that is not ours: GDAL/OGR for
// DXF and shapefiles (in-process, and ogrinfo/gdalinfo where the programs are
// installed), a boundary line reader written here from the format.
#include "exchange/geometry_export.h"

#include <gdal.h>
#include <ogr_api.h>

#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>

#include "basemaps/dbf.h"
#include "core/error_trap.h"
#include "exchange/bln_writer.h"
#include "exchange/dxf_writer.h"
#include "support/program_runner.h"
#include "support/project_fixture.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace tarno::exchange {

namespace fs = std::filesystem;
namespace gt = geometry_text;

namespace {

// One feature as OGR reads it: its DXF layer (or nothing), its geometry's type and
// points (all rings or parts one after the other), and its fields as text.
struct Feature {
  std::string layer;
  OGRwkbGeometryType type = wkbUnknown;
  std::vector<std::pair<double, double>> points;
  std::map<std::string, std::string> fields;
};

void CollectPoints(OGRGeometryH g, std::vector<std::pair<double, double>>& out) {
  const int parts = OGR_G_GetGeometryCount(g);
  if (parts > 0) {
    for (int i = 0; i < parts; ++i) CollectPoints(OGR_G_GetGeometryRef(g, i), out);
    return;
  }
  for (int i = 0; i < OGR_G_GetPointCount(g); ++i)
    out.push_back({OGR_G_GetX(g, i), OGR_G_GetY(g, i)});
}

std::vector<Feature> ReadFeatures(const fs::path& file) {
  GDALAllRegister();
  std::vector<Feature> out;
  GDALDatasetH ds =
      GDALOpenEx(file.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY, nullptr, nullptr, nullptr);
  if (ds == nullptr) {
    ADD_FAILURE() << "OGR cannot open " << file;
    return out;
  }
  OGRLayerH layer = GDALDatasetGetLayer(ds, 0);
  OGR_L_ResetReading(layer);
  while (OGRFeatureH f = OGR_L_GetNextFeature(layer)) {
    Feature feature;
    OGRFeatureDefnH defn = OGR_L_GetLayerDefn(layer);
    for (int i = 0; i < OGR_FD_GetFieldCount(defn); ++i)
      feature.fields[OGR_Fld_GetNameRef(OGR_FD_GetFieldDefn(defn, i))] =
          OGR_F_GetFieldAsString(f, i);
    if (feature.fields.count("Layer")) feature.layer = feature.fields["Layer"];
    if (OGRGeometryH g = OGR_F_GetGeometryRef(f)) {
      feature.type = wkbFlatten(OGR_G_GetGeometryType(g));
      CollectPoints(g, feature.points);
    }
    out.push_back(std::move(feature));
    OGR_F_Destroy(f);
  }
  GDALClose(ds);
  return out;
}

std::vector<Feature> OnLayer(const std::vector<Feature>& all, const std::string& layer) {
  std::vector<Feature> out;
  for (const Feature& f : all)
    if (f.layer == layer) out.push_back(f);
  return out;
}

// A boundary line file read from the format: a head line with the number of
// points and the flag (and maybe a name), then that many "X,Y" lines.
struct BlnRecord {
  int count = 0;
  int flag = 0;
  std::string name;
  std::vector<std::pair<double, double>> points;
};
std::vector<BlnRecord> ReadBln(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  std::vector<BlnRecord> records;
  std::string line;
  while (std::getline(in, line)) {
    EXPECT_FALSE(line.empty());
    EXPECT_EQ(line.back(), '\r') << "lines end with CR LF";
    line.pop_back();
    BlnRecord r;
    std::istringstream head(line);
    head >> r.count >> r.flag;
    EXPECT_TRUE(head) << "bad head line \"" << line << "\"";
    std::getline(head >> std::ws, r.name);
    if (r.name.size() >= 2 && r.name.front() == '"') r.name = r.name.substr(1, r.name.size() - 2);
    for (int i = 0; i < r.count; ++i) {
      EXPECT_TRUE(std::getline(in, line)) << "record ends early";
      double x = 0, y = 0;
      char comma = 0;
      std::istringstream pair(line);
      pair >> x >> comma >> y;
      EXPECT_EQ(comma, ',');
      r.points.push_back({x, y});
    }
    if (!r.points.empty() || r.count == 0) records.push_back(std::move(r));
  }
  return records;
}

std::string Fixed14(double v) {
  char buf[32];
  std::snprintf(buf, sizeof buf, "%14.6E", v);
  return buf;
}

class GeometryExportTest : public testing::ScratchProject {
 protected:
  void SetUp() override {
    ScratchProject::SetUp();
    Prepare();
  }
  void Prepare() {
    // The solver files lie beside the project, under the base name "m"; the model
    // origin is (1000, 2000).
    db_.Execute("update Project set TARNOBaseName='m', TARNOBasePath='" + dir_.string() + "'");
    db_.Execute(
        "update Model set SOLVERX0=1000, SOLVERY0=2000, WINDOWX1=0, WINDOWY1=0, "
        "WINDOWX2=5000, WINDOWY2=5000");
  }

  GeometryExportContext Context() {
    GeometryExportContext ctx{ui_, ProjectPath()};
    ctx.defaultDirectoriesFile = (dir_ / "TARNO.def").string();
    return ctx;
  }

  // Contour lines in model coordinates: LEVEL records and their points.
  void WriteContours(
      const std::vector<std::pair<double, std::vector<std::pair<double, double>>>>& lines) {
    std::string text;
    for (const auto& [level, points] : lines) {
      text += "LEVEL" + Fixed14(level) + "\r\n";
      for (const auto& [x, y] : points) text += "      " + Fixed14(x) + Fixed14(y) + "\r\n";
    }
    ASSERT_TRUE(test::WriteFile(dir_ / "m.CTR", text));
  }
  void WritePaths() {
    std::string text = "LABEL particle 1\r\nSTART\r\n";
    for (int i = 0; i < 4; ++i)
      text += "     " + std::to_string(i + 1) + Fixed14(10.0 * i) + Fixed14(5.0 * i) +
              Fixed14(100.0 * i) + Fixed14(50.0 - i) + Fixed14(60.0) + "\r\n";
    text += "END\r\nSTART\r\n" + std::string("     1") + Fixed14(1) + Fixed14(1) + Fixed14(0) +
            Fixed14(0) + Fixed14(0) + "\r\nEND\r\n";
    ASSERT_TRUE(test::WriteFile(dir_ / "m.PTH", text));
  }

  // A closed barrier of four vertices without conductivity, a horizontal barrier,
  // a drain and a stream.
  void AddStrings() {
    Add(ElementKind::Barrier, "Ring", At({{100, 100}, {200, 100}, {200, 200}, {100, 200}}),
        [](Row& r) { r.Set("Closed", 1); });
    Add(ElementKind::Barrier, "Wall", At({{300, 300}, {400, 400}}),
        [](Row& r) { r.Set("HydCond", 0.5); });
    Add(ElementKind::Linesink, "Drain1", At({{0, 0}, {50, 50}}), [](Row& r) { r.Set("Drain", 1); });
    Add(ElementKind::Linesink, "Creek", At({{0, 10}, {50, 60}, {80, 90}}),
        [](Row& r) { r.Set("Routing", 1); });
  }

  ScriptedUserInterface ui_;
};

// ---- DXF --------------------------------------------------------------------------

TEST(DxfWriterTest, GroupCodesStandRightAlignedInThreeColumnsAndRealsKeepAPoint) {
  EXPECT_EQ(DxfGroup(0, "SECTION"), "  0\r\nSECTION\r\n");
  EXPECT_EQ(DxfGroup(10, "1.5"), " 10\r\n1.5\r\n");
  EXPECT_EQ(DxfGroup(100, "AcDbEntity"), "100\r\nAcDbEntity\r\n");
  EXPECT_EQ(DxfReal(12.0), "12.0");
  EXPECT_EQ(DxfReal(455150.25), "455150.25");
  EXPECT_EQ(DxfReal(0.0), "0.0");
  EXPECT_EQ(DxfReal(-1e20), "-1e+20");
}

TEST(DxfWriterTest, TheSkeletonHoldsTheSectionsTablesAndUniqueHandlesBelowTheSeed) {
  DxfDrawing d;
  d.AddPolyline("Contours", {{0, 0}, {1, 1}}, false, 12.5);
  d.AddCircle("Wells", 5, 5, 0.5);
  const std::string text = d.Text(MapWindow{-10, 20, 30, -5});
  std::vector<std::string> lines;
  std::istringstream in(text);
  for (std::string l; std::getline(in, l);) {
    ASSERT_FALSE(l.empty());
    ASSERT_EQ(l.back(), '\r');
    l.pop_back();
    lines.push_back(l);
  }
  ASSERT_EQ(lines.size() % 2, 0u);
  std::vector<std::string> sections, tables, dictionaries;
  std::set<unsigned long> handles;
  unsigned long seed = 0;
  for (std::size_t i = 0; i + 1 < lines.size(); i += 2) {
    const std::string& code = lines[i];
    const std::string& value = lines[i + 1];
    ASSERT_EQ(code.size(), 3u) << "line " << i + 1;
    if (code == "  2" && i >= 2 && lines[i - 1] == "SECTION") sections.push_back(value);
    if (code == "  2" && i >= 2 && lines[i - 1] == "TABLE") tables.push_back(value);
    if (code == "  3" && !dictionaries.empty() && dictionaries.size() < 5)
      dictionaries.push_back(value);
    if (code == "  3" && value == "ACAD_GROUP") dictionaries.push_back(value);
    if ((code == "  5" || code == "105") && lines[i - 1] != "$HANDSEED") {
      const unsigned long h = std::stoul(value, nullptr, 16);
      EXPECT_TRUE(handles.insert(h).second) << "handle " << value << " twice";
    }
    if (code == "  5" && lines[i - 1] == "$HANDSEED") seed = std::stoul(value, nullptr, 16);
  }
  EXPECT_EQ(sections, (std::vector<std::string>{"HEADER", "CLASSES", "TABLES", "BLOCKS", "ENTITIES",
                                                "OBJECTS"}));
  EXPECT_EQ(tables, (std::vector<std::string>{"VPORT", "LTYPE", "LAYER", "STYLE", "VIEW", "UCS",
                                              "APPID", "DIMSTYLE", "BLOCK_RECORD"}));
  EXPECT_EQ(dictionaries, (std::vector<std::string>{"ACAD_GROUP", "ACAD_LAYOUT", "ACAD_MLINESTYLE",
                                                    "ACAD_PLOTSETTINGS", "ACAD_PLOTSTYLENAME"}));
  ASSERT_FALSE(handles.empty());
  EXPECT_GT(seed, *handles.rbegin());
  EXPECT_NE(text.find("$ACADVER\r\n  1\r\nAC1015\r\n"), std::string::npos);
  EXPECT_NE(text.find("$DWGCODEPAGE\r\n  3\r\nANSI_1252\r\n"), std::string::npos);
  EXPECT_NE(text.find("$EXTMIN\r\n 10\r\n-10.0\r\n 20\r\n-5.0\r\n"), std::string::npos);
  EXPECT_NE(text.find("$EXTMAX\r\n 10\r\n20.0\r\n 20\r\n30.0\r\n"), std::string::npos);
  // One layer entry per layer used, beside "0".
  EXPECT_NE(text.find("LAYER\r\n  5\r\n"), std::string::npos);
  EXPECT_EQ(d.Layers(), (std::vector<std::string>{"Contours", "Wells"}));
  EXPECT_NE(text.find("AcDbPolyline\r\n 90\r\n2\r\n 70\r\n0\r\n 43\r\n0.0\r\n 38\r\n12.5\r\n"),
            std::string::npos);
}

TEST_F(GeometryExportTest, ContoursBeforeAnySolveSayNoContoursAndWriteNoFile) {
  auto ctx = Context();
  ui_.ExpectMessage(gt::kCantExportLower, {gt::kNoContours});
  EXPECT_FALSE(ExportDxf(ctx, VectorMode::Contours, ""));
  ui_.ExpectMessage(gt::kCantExportLower, {gt::kNoContours});
  EXPECT_FALSE(ExportBln(ctx, VectorMode::Contours));
  ui_.Verify();
  EXPECT_TRUE(ui_.CallsOf(UiCallKind::SaveFile).empty()) << "no file is asked for";
  for (const auto& entry : fs::directory_iterator(dir_)) {
    const std::string ext = entry.path().extension().string();
    EXPECT_NE(ext, ".dxf");
    EXPECT_NE(ext, ".bln");
  }
}

TEST_F(GeometryExportTest, DxfContoursStandInMapCoordinatesOnTheNamedLayerAtTheirLevels) {
  MakeProject(false, true);  // map in feet, model in metres: BasemapConvert 0.3048
  Prepare();
  WriteContours({{101.5, {{0, 0}, {30.48, 0}, {30.48, 304.8}}},
                 {102, {{1, 1}}},
                 {102.5, {{0, 0}, {3.048, 3.048}}}});
  auto ctx = Context();
  ui_.ExpectSaveFile((dir_ / "c").string()).Title(gt::kDxfDialogTitle);
  ui_.ExpectMessage(gt::kCompleteTitle, {gt::kDxfContoursDone, gt::kDxfVersion});
  ASSERT_TRUE(ExportDxf(ctx, VectorMode::Contours, "Heads 2024"));
  ui_.Verify();
  const auto save = ui_.CallsOf(UiCallKind::SaveFile).at(0).file;
  EXPECT_EQ(save.filter, gt::kDxfFilter);
  const auto features = ReadFeatures(dir_ / "c.dxf");
  ASSERT_EQ(features.size(), 2u) << "the one-point line is left out";
  EXPECT_EQ(OnLayer(features, "Heads 2024").size(), 2u);
  ASSERT_EQ(features[0].points.size(), 3u);
  EXPECT_NEAR(features[0].points[0].first, 1000.0, 1e-6);
  EXPECT_NEAR(features[0].points[1].first, 1100.0, 1e-6);
  EXPECT_NEAR(features[0].points[2].second, 3000.0, 1e-6);
  const std::string text = test::ReadFile(dir_ / "c.dxf");
  EXPECT_NE(text.find(" 38\r\n101.5\r\n"), std::string::npos);
  EXPECT_NE(text.find(" 38\r\n102.5\r\n"), std::string::npos);
}

// The first DXF export starts beside the project, not in the configuration folder
// that holds TARNO.def; then where the last drawing went.
TEST_F(GeometryExportTest, AFirstDxfExportStartsInTheProjectsFolder) {
  AddStrings();
  std::filesystem::create_directories(dir_ / "config");
  std::filesystem::create_directories(dir_ / "cad");
  auto ctx = Context();
  ctx.defaultDirectoriesFile = (dir_ / "config" / "TARNO.def").string();
  ASSERT_TRUE(test::WriteFile(ctx.defaultDirectoriesFile, "Open Project Path = /elsewhere\n"));
  ui_.ExpectSaveFile((dir_ / "cad" / "e1.dxf").string());
  ui_.ExpectMessageTitled(gt::kCompleteTitle);
  ui_.ExpectSaveFile((dir_ / "cad" / "e2.dxf").string());
  ui_.ExpectMessageTitled(gt::kCompleteTitle);
  ASSERT_TRUE(ExportDxf(ctx, VectorMode::Elements, ""));
  ASSERT_TRUE(ExportDxf(ctx, VectorMode::Elements, ""));
  ui_.Verify();
  const auto saves = ui_.CallsOf(UiCallKind::SaveFile);
  EXPECT_EQ(std::filesystem::path(saves.at(0).file.initialDirectory),
            std::filesystem::path(dir_.string() + "/"));
  EXPECT_EQ(std::filesystem::path(saves.at(1).file.initialDirectory),
            std::filesystem::path((dir_ / "cad").string() + "/"));
}

TEST_F(GeometryExportTest, DxfElementsGoToTheirLayersAndAClosedBarrierKeepsItsLastSegment) {
  AddStrings();
  Add(ElementKind::Well, "W1", Point(10, 20));
  Add(ElementKind::Inhomogeneity, "Zone", At({{0, 0}, {0, 100}, {100, 100}}));
  auto ctx = Context();
  ui_.ExpectSaveFile((dir_ / "e.dxf").string());
  ui_.ExpectMessage(gt::kCompleteTitle, {gt::kDxfElementsDone, gt::kDxfVersion});
  ASSERT_TRUE(ExportDxf(ctx, VectorMode::Elements, ""));
  const auto features = ReadFeatures(dir_ / "e.dxf");
  EXPECT_EQ(features.size(), 6u);
  const auto ring = OnLayer(features, "No Flow Strings");
  ASSERT_EQ(ring.size(), 1u);
  ASSERT_EQ(ring[0].points.size(), 5u);
  EXPECT_EQ(ring[0].points.front(), ring[0].points.back()) << "the closing segment is there";
  EXPECT_EQ(OnLayer(features, "Horizontal Barriers").size(), 1u);
  EXPECT_EQ(OnLayer(features, "Line-sinks (drains)").size(), 1u);
  EXPECT_EQ(OnLayer(features, "Line-sinks (streams and lakes)").size(), 1u);
  EXPECT_EQ(OnLayer(features, "Inhomogeneities").at(0).points.size(), 4u);
  const auto wells = OnLayer(features, "Wells");
  ASSERT_EQ(wells.size(), 1u);
  double cx = 0, cy = 0;
  for (auto [x, y] : wells[0].points) cx += x, cy += y;
  EXPECT_NEAR(cx / wells[0].points.size(), 10.0, 0.5);
  EXPECT_NEAR(cy / wells[0].points.size(), 20.0, 0.5);
}

TEST_F(GeometryExportTest, DxfPathlinesCarryTheirTicMarksOnTheirLayers) {
  WritePaths();
  ASSERT_TRUE(test::WriteFile(dir_ / kTimeTicFile, " 1010          2005 \r\n 1020 2010\r\n"));
  ASSERT_TRUE(test::WriteFile(dir_ / kElevationTicFile, " 1005 2002 1 \r\n 1006 2003 -1\r\n"));
  auto ctx = Context();
  ui_.ExpectSaveFile((dir_ / "p.dxf").string());
  ui_.ExpectMessage(gt::kCompleteTitle, {gt::kDxfPathsDone, gt::kDxfVersion});
  ASSERT_TRUE(ExportDxf(ctx, VectorMode::Pathlines, ""));
  const auto features = ReadFeatures(dir_ / "p.dxf");
  const auto paths = OnLayer(features, "Pathlines");
  ASSERT_EQ(paths.size(), 1u) << "the one-point path is left out";
  ASSERT_EQ(paths[0].points.size(), 4u);
  EXPECT_NEAR(paths[0].points[3].first, 1030.0, 1e-6);
  EXPECT_NEAR(paths[0].points[3].second, 2015.0, 1e-6);
  EXPECT_EQ(OnLayer(features, "Time Ticmarks").size(), 2u);
  EXPECT_EQ(OnLayer(features, "Vertical Ticmarks Up").size(), 1u);
  EXPECT_EQ(OnLayer(features, "Vertical Ticmarks Down").size(), 1u);
}

TEST_F(GeometryExportTest, EmptyCaptureZonesHaveTheirOwnBoxesInDxfAndBln) {
  auto ctx = Context();
  ui_.ExpectMessage(gt::kCantExport, {gt::kNoCapzones, gt::kNoDxfWritten});
  EXPECT_FALSE(ExportDxf(ctx, VectorMode::Capzones, ""));
  ui_.ExpectMessage(gt::kCantExport, {gt::kNoCapzonesBln});
  EXPECT_FALSE(ExportBln(ctx, VectorMode::Capzones));
  ui_.ExpectMessage(gt::kCantExport, {gt::kNoElements});
  EXPECT_FALSE(ExportDxf(ctx, VectorMode::Elements, ""));
  ui_.Verify();
}

TEST_F(GeometryExportTest, ARefusedOverwriteLeavesTheFileAsItWas) {
  AddStrings();
  ASSERT_TRUE(test::WriteFile(dir_ / "old.dxf", "keep"));
  auto ctx = Context();
  ui_.ExpectSaveFile((dir_ / "old.dxf").string());
  ui_.ExpectMessage(gt::kFileExistsTitle,
                    {"File " + (dir_ / "old.dxf").string() + " already exists.", gt::kOverwrite},
                    Answer::No);
  EXPECT_FALSE(ExportDxf(ctx, VectorMode::Elements, ""));
  ui_.Verify();
  EXPECT_EQ(test::ReadFile(dir_ / "old.dxf"), "keep");
}

TEST_F(GeometryExportTest, OgrinfoReadsTheDxfLayersAndFeatures) {
  if (test::RunExecutable("ogrinfo", {"--version"}).status != 0) GTEST_SKIP() << "no ogrinfo";
  AddStrings();
  auto ctx = Context();
  ui_.ExpectSaveFile((dir_ / "e.dxf").string());
  ui_.ExpectMessageTitled(gt::kCompleteTitle);
  ASSERT_TRUE(ExportDxf(ctx, VectorMode::Elements, ""));
  const auto summary = test::RunExecutable("ogrinfo", {"-al", "-so", (dir_ / "e.dxf").string()});
  ASSERT_EQ(summary.status, 0) << summary.err;
  EXPECT_NE(summary.out.find("Feature Count: 4"), std::string::npos) << summary.out;
  const auto all = test::RunExecutable("ogrinfo", {"-al", (dir_ / "e.dxf").string()});
  EXPECT_NE(all.out.find("Layer (String) = No Flow Strings"), std::string::npos);
  EXPECT_NE(all.out.find("LINESTRING (100 100,200 100,200 200,100 200,100 100)"), std::string::npos)
      << all.out;
}

// ---- SURFER boundary lines and grid -------------------------------------------------

TEST_F(GeometryExportTest, BlnElementsRepeatTheFirstPointOfClosedStringsAndSquareTheWells) {
  AddStrings();
  Add(ElementKind::Well, "W1", Point(10, 20));
  auto ctx = Context();
  ctx.window = MapWindow{0, 500, 500, 0};  // marks of a half side of 1
  ui_.ExpectSaveFile((dir_ / "e.bln").string()).Title(gt::kBlnDialogTitle);
  ui_.ExpectMessage(gt::kCompleteTitle, {(dir_ / "e.bln").string() + gt::kWritten});
  ASSERT_TRUE(ExportBln(ctx, VectorMode::Elements));
  ui_.Verify();
  EXPECT_EQ(ui_.CallsOf(UiCallKind::SaveFile).at(0).file.filter, gt::kBlnFilter);
  const auto records = ReadBln(dir_ / "e.bln");
  ASSERT_EQ(records.size(), 5u);
  EXPECT_EQ(test::ReadFile(dir_ / "e.bln").substr(0, 6), " 5 1\r\n") << "a well's head line";
  const BlnRecord& well = records[0];
  EXPECT_EQ(well.count, 5);
  EXPECT_EQ(well.flag, 1);
  EXPECT_EQ(well.points.front(), well.points.back());
  EXPECT_EQ(well.points[0], (std::pair<double, double>{9, 19}));
  EXPECT_EQ(well.points[2], (std::pair<double, double>{11, 21}));
  const auto ring = std::find_if(records.begin(), records.end(),
                                 [](const BlnRecord& r) { return r.name == "Ring"; });
  ASSERT_NE(ring, records.end());
  ASSERT_EQ(ring->count, 5);
  EXPECT_EQ(ring->points.front(), ring->points.back()) << "the closing segment is there";
  const auto wall = std::find_if(records.begin(), records.end(),
                                 [](const BlnRecord& r) { return r.name == "Wall"; });
  ASSERT_NE(wall, records.end());
  EXPECT_EQ(wall->count, 2) << "an open barrier is not closed";
}

TEST_F(GeometryExportTest, BlnContoursOpenARecordPerLevelAndWriteTheLevelScript) {
  WriteContours({{101.5, {{0, 0}, {10, 0}}}, {1234.4, {{0, 5}, {10, 5}, {20, 5}}}});
  auto ctx = Context();
  ui_.ExpectSaveFile((dir_ / "sub" / "c.bln").string());
  fs::create_directory(dir_ / "sub");
  ui_.ExpectMessageTitled(gt::kCompleteTitle);
  ASSERT_TRUE(ExportBln(ctx, VectorMode::Contours));
  const auto records = ReadBln(dir_ / "sub" / "c.bln");
  ASSERT_EQ(records.size(), 2u);
  EXPECT_EQ(records[0].name, "101.5");
  EXPECT_EQ(records[1].count, 3);
  EXPECT_EQ(records[1].points[2], (std::pair<double, double>{1020, 2005}));
  EXPECT_EQ(test::ReadFile(dir_ / "sub" / kSurferScriptFile),
            "102   1 0.000000e+00 \r\n1234   1 0.000000e+00 \r\n");
}

TEST_F(GeometryExportTest, ABlnFileThatCannotBeWrittenGivesTheIoErrorBox) {
  AddStrings();
  auto ctx = Context();
  ui_.ExpectSaveFile((dir_ / "no such folder" / "e.bln").string());
  ui_.ExpectMessage(gt::kIoErrorTitle,
                    {"Internal error 75 occurred during boundary line file export"});
  EXPECT_FALSE(ExportBln(ctx, VectorMode::Elements));
  ui_.Verify();
}

TEST_F(GeometryExportTest, TheGridIsExportedInMapCoordinates) {
  ASSERT_TRUE(test::WriteFile(dir_ / "m.GRD",
                              "DSAA\r\n3 2\r\n-100 100\r\n-50 50\r\n1 6\r\n1 2 3\r\n4 5 6\r\n"));
  auto ctx = Context();
  ui_.ExpectMessage(gt::kGridTitle, {gt::kGridLine1, std::string(gt::kGridLine2) + "Heads"});
  ui_.ExpectSaveFile((dir_ / "out.grd").string()).Title(gt::kGridDialogTitle);
  ui_.ExpectMessage(gt::kCompleteTitle, {gt::kGridDone});
  ASSERT_TRUE(ToolsExportGrid(ctx));
  ui_.Verify();
  EXPECT_EQ(test::ReadFile(dir_ / "out.grd"),
            "DSAA\r\n3 2\r\n900.00  1100.00\r\n1950.00  2050.00\r\n1 6\r\n1 2 3\r\n4 5 6\r\n");
  if (test::RunExecutable("gdalinfo", {"--version"}).status != 0) GTEST_SKIP() << "no gdalinfo";
  const auto info = test::RunExecutable("gdalinfo", {(dir_ / "out.grd").string()});
  ASSERT_EQ(info.status, 0) << info.err;
  // Cells of 100 by 100 about the nodes: the corners lie half a cell outside them.
  EXPECT_NE(info.out.find("Upper Left  (     850.000,    2100.000)"), std::string::npos)
      << info.out;
  EXPECT_NE(info.out.find("Lower Right (    1150.000,    1900.000)"), std::string::npos)
      << info.out;
}

TEST_F(GeometryExportTest, NoGridBeforeASolveAndACancelledGridBoxWritesNothing) {
  auto ctx = Context();
  ui_.ExpectMessage(gt::kCantExportLower, {gt::kNoGrid});
  EXPECT_FALSE(ToolsExportGrid(ctx));
  ASSERT_TRUE(
      test::WriteFile(dir_ / "m.GRD", "DSAA\r\n2 2\r\n0 1\r\n0 1\r\n0 0\r\n0 0\r\n0 0\r\n"));
  ui_.ExpectMessageTitled(gt::kGridTitle, Answer::Cancel);
  EXPECT_FALSE(ToolsExportGrid(ctx));
  ui_.Verify();
}

TEST(GridCopyTest, AGridWithoutItsLimitLinesIsRefusedNamingTheFileAndLine) {
  test::TempDir tmp;
  ASSERT_TRUE(test::WriteFile(tmp / "bad.grd", "DSAA\r\n2 2\r\nx y\r\n0 1\r\n"));
  try {
    CopyGridInMap(tmp / "bad.grd", tmp / "out.grd", ModelFrame{});
    FAIL() << "no error";
  } catch (const Error& e) {
    EXPECT_NE(std::string(e.what()).find("bad.grd, line 3"), std::string::npos) << e.what();
    EXPECT_NE(std::string(e.what()).find("\"x y\""), std::string::npos) << e.what();
  }
  EXPECT_FALSE(fs::exists(tmp / "out.grd"));
}

// ---- Shapefiles ----------------------------------------------------------------------

TEST_F(GeometryExportTest, EveryElementKindGoesToAShapefileWithItsAttributes) {
  AddStrings();
  Add(ElementKind::Well, "W1", Point(10, 20), [](Row& r) { r.Set("Head", 12.5); });
  Add(ElementKind::Well, "W2", Point(30, 40));
  Add(ElementKind::TestPoint, "TP1", Point(5, 6), [](Row& r) { r.Set("ObsHead", 101.25); });
  Element particle = NewElement(ElementKind::Particle, Point(7, 8));
  Insert(db_, particle);
  // Counter-clockwise as drawn: the shapefile gets it clockwise.
  Add(ElementKind::Inhomogeneity, "Zone", At({{0, 0}, {100, 0}, {100, 100}}));
  Add(ElementKind::Capzone, "Area", At({{0, 0}, {0, 50}, {50, 50}, {50, 0}}));
  auto ctx = Context();
  const std::vector<ShapeKind> kinds = {
      ShapeKind::Wells,    ShapeKind::TestPoints, ShapeKind::Particles, ShapeKind::Inhomogeneities,
      ShapeKind::Capzones, ShapeKind::LineSinks,  ShapeKind::NoFlows};
  for (ShapeKind k : kinds) {
    const std::string name = (dir_ / (std::string("k") + ShapeInfo(k).suffix + ".shp")).string();
    ui_.ExpectSaveFile(name).Title(ShapeInfo(k).dialogTitle);
    ui_.ExpectMessage(gt::kCompleteTitle, {name + gt::kWritten});
  }
  EXPECT_EQ(ExportShapeKinds(ctx, kinds), 7);
  ui_.Verify();
  const auto request = ui_.CallsOf(UiCallKind::SaveFile).at(0).file;
  EXPECT_EQ(request.initialFile, "m_wells.shp");
  EXPECT_EQ(request.filter, gt::kShapeFilter);

  const auto wells = ReadFeatures(dir_ / "k_wells.shp");
  ASSERT_EQ(wells.size(), 2u);
  EXPECT_EQ(wells[0].type, wkbPoint);
  EXPECT_EQ(wells[0].points.at(0), (std::pair<double, double>{10, 20}));
  EXPECT_EQ(wells[0].fields.at("LABEL"), "W1");
  EXPECT_DOUBLE_EQ(std::stod(wells[0].fields.at("HEAD")), 12.5);
  const DbfTable table = ReadDBF(dir_ / "k_wells.dbf");
  EXPECT_EQ(table.Fields.at(0).Type, 'C') << "the first column is a character column";
  // A numeric field is wide enough for its decimals, the point and a digit before it
  // (HEAD was "N 4.10": 12.5 in four places with ten decimals), and each value has
  // them all.
  for (const char* dbf : {"k_wells.dbf", "k_testpts.dbf", "k_ptcls.dbf", "k_inhomos.dbf",
                          "k_lines.dbf", "k_noflows.dbf", "k_whps.dbf"}) {
    const DbfTable t = ReadDBF(dir_ / dbf);
    for (std::size_t f = 0; f < t.Fields.size(); ++f) {
      const DbfField& field = t.Fields[f];
      if (field.Type != 'N' || field.Decimals == 0) continue;
      SCOPED_TRACE(std::string(dbf) + " " + field.Name);
      EXPECT_GE(field.Length, field.Decimals + 2);
      for (const auto& record : t.Records) {
        const std::string value = record.at(f);
        const std::size_t dot = value.find('.');
        ASSERT_NE(dot, std::string::npos) << value;
        EXPECT_EQ(value.size() - dot - 1, static_cast<std::size_t>(field.Decimals)) << value;
      }
    }
  }
  EXPECT_EQ(table.Records.at(0).at(table.FieldIndex("HEAD")), "12.5");

  EXPECT_DOUBLE_EQ(std::stod(ReadFeatures(dir_ / "k_testpts.shp").at(0).fields.at("OBSHEAD")),
                   101.25);
  EXPECT_EQ(ReadFeatures(dir_ / "k_ptcls.shp").size(), 1u);

  const auto zone = ReadFeatures(dir_ / "k_inhomos.shp").at(0);
  EXPECT_EQ(zone.type, wkbPolygon);
  ASSERT_EQ(zone.points.size(), 4u);
  EXPECT_EQ(zone.points.front(), zone.points.back());
  double twiceArea = 0;
  for (std::size_t i = 1; i < zone.points.size(); ++i)
    twiceArea += zone.points[i - 1].first * zone.points[i].second -
                 zone.points[i].first * zone.points[i - 1].second;
  EXPECT_LT(twiceArea, 0.0) << "the outer ring runs clockwise";
  EXPECT_EQ(ReadFeatures(dir_ / "k_whps.shp").at(0).fields.at("LABEL"), "Area");

  const auto lines = ReadFeatures(dir_ / "k_lines.shp");
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].fields.at("KIND"), "drains");
  EXPECT_EQ(lines[1].points.size(), 3u);
  const auto noflows = ReadFeatures(dir_ / "k_noflows.shp");
  ASSERT_EQ(noflows.size(), 2u);
  EXPECT_EQ(noflows[0].type, wkbLineString);
  EXPECT_EQ(noflows[0].points.size(), 5u) << "a closed barrier keeps its last segment";
  EXPECT_EQ(noflows[1].fields.at("CLOSED"), "0");
}

TEST_F(GeometryExportTest, ResultShapefilesHoldTheLinesAndMarksInMapCoordinates) {
  WriteContours({{101.5, {{0, 0}, {10, 0}}}, {102, {{0, 5}, {10, 5}, {20, 5}}}});
  WritePaths();
  ASSERT_TRUE(test::WriteFile(dir_ / kTimeTicFile, " 1010          2005 \r\n"));
  ASSERT_TRUE(test::WriteFile(dir_ / kElevationTicFile, " 1005 2002 1 \r\n 1006 2003 -1\r\n"));
  auto ctx = Context();
  ctx.timeMarkStep = 365;
  GeometryProject p = LoadGeometryProject(ProjectPath());
  const auto kinds = KindsOfOption(p, ShapeOption::PathsAndTics);
  ASSERT_EQ(kinds, (std::vector<ShapeKind>{ShapeKind::Paths, ShapeKind::TimeTics,
                                           ShapeKind::ElevationTics}));
  std::vector<ShapeKind> all = {ShapeKind::Contours};
  all.insert(all.end(), kinds.begin(), kinds.end());
  for (const char* name : {"c.shp", "p.shp", "t.shp", "z.shp"}) {
    ui_.ExpectSaveFile((dir_ / name).string());
    ui_.ExpectMessageTitled(gt::kCompleteTitle);
  }
  EXPECT_EQ(ExportShapeKinds(ctx, all), 4);
  ui_.Verify();
  const auto contours = ReadFeatures(dir_ / "c.shp");
  ASSERT_EQ(contours.size(), 2u);
  EXPECT_EQ(contours[1].points.at(2), (std::pair<double, double>{1020, 2005}));
  EXPECT_DOUBLE_EQ(std::stod(contours[0].fields.at("LEVEL")), 101.5);
  EXPECT_EQ(ReadDBF(dir_ / "c.dbf").Records.at(0).at(1), "101.50") << "the mask ######.#0";
  const auto paths = ReadFeatures(dir_ / "p.shp");
  ASSERT_EQ(paths.size(), 1u);
  EXPECT_EQ(paths[0].fields.at("LABEL"), "particle 1");
  EXPECT_DOUBLE_EQ(std::stod(paths[0].fields.at("ENDTIME")), 300.0);
  const auto tics = ReadFeatures(dir_ / "t.shp");
  ASSERT_EQ(tics.size(), 1u);
  EXPECT_EQ(tics[0].fields.at("INTERVAL"), "365 Days");
  const auto ztics = ReadFeatures(dir_ / "z.shp");
  ASSERT_EQ(ztics.size(), 2u);
  EXPECT_EQ(ztics[1].fields.at("DIRECTION"), "Down");
}

TEST_F(GeometryExportTest, AFailingKindShowsItsWordsAndTheNextKindGoesOn) {
  Add(ElementKind::Well, "W1", Point(10, 20));
  ASSERT_TRUE(test::WriteFile(dir_ / "w.shp", "old"));
  ASSERT_TRUE(test::WriteFile(dir_ / "w.dbf", "old"));
  auto ctx = Context();
  ui_.ExpectSaveFile((dir_ / "c.shp").string());
  ui_.ExpectMessage(gt::kExportFailedTitle, {"Contours Export Failed - The contour file " +
                                             (dir_ / "m.CTR").string() + " does not exist"});
  ui_.ExpectSaveFile((dir_ / "w.shp").string());
  ui_.ExpectMessageTitled(gt::kFileExistsTitle, Answer::Yes);
  ui_.ExpectMessageTitled(gt::kCompleteTitle);
  EXPECT_EQ(ExportShapeKinds(ctx, {ShapeKind::Contours, ShapeKind::Wells}), 1);
  ui_.Verify();
  EXPECT_FALSE(fs::exists(dir_ / "c.shp"));
  EXPECT_EQ(ReadFeatures(dir_ / "w.shp").size(), 1u) << "the old files of the name are replaced";
  EXPECT_EQ(ReadDBF(dir_ / "w.dbf").Records.size(), 1u);
}

TEST_F(GeometryExportTest, OgrinfoSummarisesAShapefileExport) {
  if (test::RunExecutable("ogrinfo", {"--version"}).status != 0) GTEST_SKIP() << "no ogrinfo";
  AddStrings();
  auto ctx = Context();
  ui_.ExpectSaveFile((dir_ / "b.shp").string());
  ui_.ExpectMessageTitled(gt::kCompleteTitle);
  ASSERT_EQ(ExportShapeKinds(ctx, {ShapeKind::NoFlows}), 1);
  const auto summary = test::RunExecutable("ogrinfo", {"-al", "-so", (dir_ / "b.shp").string()});
  ASSERT_EQ(summary.status, 0) << summary.err;
  EXPECT_NE(summary.out.find("Geometry: Line String"), std::string::npos) << summary.out;
  EXPECT_NE(summary.out.find("Feature Count: 2"), std::string::npos) << summary.out;
  EXPECT_NE(summary.out.find("LABEL: String"), std::string::npos) << summary.out;
}

// ---- The dialogs ---------------------------------------------------------------------

TEST(ExportDialogsTest, AChoiceIsNeededAndTheTitleFollowsTheFileMode) {
  ScriptedUserInterface ui;
  VectorExport v;
  EXPECT_EQ(v.Title(), "Export DXF File");
  v.FileMode = "BLN";
  EXPECT_EQ(v.Title(), "Export SURFER\u00ae BLN File");
  EXPECT_FALSE(v.LayerVisible());
  ui.ExpectMessage("Choose Type", {"Please choose a type to export."});
  EXPECT_FALSE(v.OK(ui));
  EXPECT_EQ(v.Result, 2);
  v.Select(2);
  EXPECT_EQ(v.mode, "CAPZONES");
  EXPECT_TRUE(v.OK(ui));
  EXPECT_EQ(v.Result, 1);
  ExportShapefile s;
  ui.ExpectMessage("Choose Type", {"Please choose a type to export."});
  EXPECT_FALSE(s.OK(ui));
  s.SfOption = 8;
  EXPECT_TRUE(s.OK(ui));
  ui.Verify();
}

TEST_F(GeometryExportTest, TheToolsEntriesAskWhatToExportFirst) {
  AddStrings();
  auto ctx = Context();
  ui_.ExpectModal<VectorExport>("VectorExport", [](VectorExport& d) {
    EXPECT_EQ(d.FileMode, "BLN");
    d.Select(3);
    d.Result = 1;
  });
  ui_.ExpectSaveFile((dir_ / "e.bln").string());
  ui_.ExpectMessageTitled(gt::kCompleteTitle);
  EXPECT_TRUE(ToolsExportBLN(ctx));
  ui_.ExpectModal<VectorExport>("VectorExport", [](VectorExport& d) { d.Cancel(); });
  EXPECT_FALSE(ToolsExportDXF(ctx));
  ui_.ExpectModal<ExportShapefile>("ExportShapefile", [](ExportShapefile& d) {
    d.SfOption = static_cast<int>(ShapeOption::NoFlows);
    d.Result = 1;
  });
  ui_.ExpectSaveFile((dir_ / "n.shp").string())
      .Title("Output ShapeFile name for no-flow boundaries");
  ui_.ExpectMessageTitled(gt::kCompleteTitle);
  EXPECT_EQ(ToolsExportShape(ctx), 1);
  ui_.Verify();
}

TEST(TicMarkFileTest, MarksAreReadFromPrintZonesAndABadDirectionNamesTheLine) {
  test::TempDir tmp;
  ASSERT_TRUE(
      test::WriteFile(tmp / "z.tic", " 1005.5        2002          1 \r\n\r\n-.5  .25  -1\r\n"));
  const auto marks = ReadTicMarkFile(tmp / "z.tic", true);
  ASSERT_EQ(marks.size(), 2u);
  EXPECT_DOUBLE_EQ(marks[0].x, 1005.5);
  EXPECT_EQ(marks[0].direction, 1);
  EXPECT_DOUBLE_EQ(marks[1].y, 0.25);
  EXPECT_EQ(marks[1].direction, -1);
  EXPECT_TRUE(ReadTicMarkFile(tmp / "none.tic", false).empty());
  ASSERT_TRUE(test::WriteFile(tmp / "bad.tic", " 1 2 1\r\n 3 4 0\r\n"));
  try {
    ReadTicMarkFile(tmp / "bad.tic", true);
    FAIL() << "no error";
  } catch (const PlotFileError& e) {
    EXPECT_EQ(e.line(), 2);
    EXPECT_NE(std::string(e.what()).find("\"0\""), std::string::npos) << e.what();
  }
}

}  // namespace

}  // namespace tarno::exchange

namespace tarno::exchange {
namespace {

// ezdxf's recovery reader and its audit check the structure of a DXF file (handles,
// owners, tables, dictionaries, layouts) as a CAD program does on loading it.
TEST_F(GeometryExportTest, EzdxfAuditsTheDxfSkeletonWithoutAnError) {
  const char* python = "/usr/bin/python3";
  if (!fs::exists(python) || test::RunExecutable(python, {"-c", "import ezdxf"}).status != 0)
    GTEST_SKIP() << "python3-ezdxf is not installed";
  AddStrings();
  Add(ElementKind::Well, "W1", Point(10, 20));
  auto ctx = Context();
  ui_.ExpectSaveFile((dir_ / "e.dxf").string());
  ui_.ExpectMessageTitled(gt::kCompleteTitle);
  ASSERT_TRUE(ExportDxf(ctx, VectorMode::Elements, ""));
  const auto audit = test::RunExecutable(
      python, {"-c",
               "import sys\nfrom ezdxf import recover\n"
               "doc, rec = recover.readfile(sys.argv[1])\na = doc.audit()\n"
               "print(doc.dxfversion, len(rec.errors), len(rec.fixes), len(a.errors), len(a.fixes),"
               " len(doc.modelspace()))\n",
               (dir_ / "e.dxf").string()});
  ASSERT_EQ(audit.status, 0) << audit.err;
  EXPECT_EQ(audit.out, "AC1015 0 0 0 0 5\n");
}

}  // namespace
}  // namespace tarno::exchange

namespace tarno::exchange {
namespace {

// A damaged solver file ends the export in the general error message, which names
// the file, the line and what stands there; no file is asked for.
TEST_F(GeometryExportTest, ADamagedContourFileIsReportedWithItsLineAndNothingIsWritten) {
  ASSERT_TRUE(test::WriteFile(dir_ / "m.CTR", "LEVEL  1.0E+02\r\n      garbage here\r\n"));
  auto ctx = Context();
  ui_.ExpectMessageTitled(kUnhandledErrorTitle);
  EXPECT_FALSE(ExportDxf(ctx, VectorMode::Contours, ""));
  ui_.Verify();
  const std::vector<std::string> lines = ui_.Messages().at(0).lines;
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[0], "Unhandled error in ToolsExportDXF");
  EXPECT_NE(lines[1].find("m.CTR, line 2"), std::string::npos) << lines[1];
  EXPECT_NE(lines[1].find("garbage here"), std::string::npos) << lines[1];
  EXPECT_TRUE(ui_.CallsOf(UiCallKind::SaveFile).empty());
}

}  // namespace
}  // namespace tarno::exchange
