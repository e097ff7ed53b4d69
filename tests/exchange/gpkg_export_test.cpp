// The GeoPackage export: both example projects with results written beside them,
// read back in-process and by ogrinfo; the overwrite question; a bad results file.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>

#include "elements/element_store.h"
#include "exchange/gpkg_export.h"
#include "gis_test_support.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace tarno::testing {
namespace {

using exchange::GpkgExportReport;
using exchange::WriteGeoPackage;

struct ExampleCase {
  const char* script;
  int epsg;
  double toMap;  // map units per model unit: 1, or 0.3048 for a model in feet
};

class GpkgExampleTest : public GisProject, public ::testing::WithParamInterface<ExampleCase> {
 protected:
  // Results as the solver and contourer leave them, in model coordinates about an
  // origin that is not the map's.
  void WriteResults() {
    db_.ExecuteRaw("update Model set SOLVERX0=455000, SOLVERY0=4391000");
    std::ofstream ctr(dir_ / "m.CTR", std::ios::binary);
    ctr << "LEVEL  1.150000E+02\r\n"
        << PlotLine({0, 0}) << "\r\n"
        << PlotLine({100, 50}) << "\r\n"
        << PlotLine({200, 0}) << "\r\n"
        << "LEVEL  1.160000E+02\r\n"
        << PlotLine({-100, -100}) << "\r\n"
        << PlotLine({-50, -80}) << "\r\n";
    std::ofstream pth(dir_ / "m.PTH", std::ios::binary);
    pth << "LABEL WL_0001\r\nSTART\r\n"
        << PlotLine({10, 20, 0, 110, 117}) << "\r\n"
        << PlotLine({30, 40, 5, 111, 117}) << "\r\n"
        << PlotLine({50, 60, 9, 112, 116})
        << "\r\nEND\r\n"
        // A path of one point is no line.
        << "START\r\n"
        << PlotLine({1, 1, 0, 0, 0}) << "\r\nEND\r\n";
    // The test points' results, but for the last one.
    db_.ExecuteRaw(
        "insert into TPResults(Label, VID, ObsHead, ModelHead, Difference, Type) "
        "select Label, VID, ObsHead, ObsHead + 0.5, 0.5, Type from TestPoints "
        "where VID < (select max(VID) from TestPoints)");
  }
};

TEST_P(GpkgExampleTest, EveryKindAndTheResultsStandInMapCoordinatesWithTheProjectsSystem) {
  // The model's unit as the example is made: metres or feet.
  MakeProject(true, GetParam().toMap == 1.0);
  PointSolverFilesHere();
  LoadExample(GetParam().script);
  SetCrs("EPSG:" + std::to_string(GetParam().epsg));
  WriteResults();
  const auto file = dir_ / "out.gpkg";
  const GpkgExportReport report = WriteGeoPackage(db_, ProjectPath(), file);
  EXPECT_NE(report.crsName.find("UTM zone"), std::string::npos) << report.crsName;
  EXPECT_TRUE(report.skipped.empty());

  GdalDatasetPtr ds = OpenVectorFile(file);
  ASSERT_TRUE(ds);
  std::vector<std::string> names;
  for (int i = 0; i < ds->GetLayerCount(); ++i) names.emplace_back(ds->GetLayer(i)->GetName());
  std::sort(names.begin(), names.end());
  std::vector<std::string> expected = exchange::GpkgLayerNames();
  std::sort(expected.begin(), expected.end());
  EXPECT_EQ(names, expected);

  // One feature per element, its id the element's key.
  const std::map<std::string, ElementKind> kinds = {{"wells", ElementKind::Well},
                                                    {"linesink_strings", ElementKind::Linesink},
                                                    {"barriers", ElementKind::Barrier},
                                                    {"inhomogeneities", ElementKind::Inhomogeneity},
                                                    {"test_points", ElementKind::TestPoint},
                                                    {"particles", ElementKind::Particle},
                                                    {"flux_lines", ElementKind::FluxLine},
                                                    {"lakes", ElementKind::Lake}};
  for (const auto& [name, kind] : kinds) {
    SCOPED_TRACE(name);
    OGRLayer* layer = ds->GetLayerByName(name.c_str());
    ASSERT_NE(layer, nullptr);
    const std::vector<Element> elements = LoadAll(db_, kind);
    EXPECT_EQ(layer->GetFeatureCount(), static_cast<GIntBig>(elements.size()));
    EXPECT_EQ(report.Count(name), static_cast<std::int64_t>(elements.size()));
    const OGRSpatialReference* srs = layer->GetSpatialRef();
    ASSERT_NE(srs, nullptr);
    EXPECT_STREQ(srs->GetAuthorityCode(nullptr), std::to_string(GetParam().epsg).c_str());
    for (const Element& e : elements) {
      std::unique_ptr<OGRFeature> f(layer->GetFeature(e.key));
      ASSERT_TRUE(f) << e.Label();
      if (e.row.Has("Label")) {
        EXPECT_EQ(f->GetFieldAsString("Label"), e.Label());
      }
      const OGRGeometry* g = f->GetGeometryRef();
      ASSERT_NE(g, nullptr);
      if (Info(kind).geometry == Geometry::Point) {
        EXPECT_EQ(g->toPoint()->getX(), e.X());
        EXPECT_EQ(g->toPoint()->getY(), e.Y());
      } else if (wkbFlatten(g->getGeometryType()) == wkbLineString) {
        const bool closed = kind == ElementKind::Barrier && e.row.Integer("Closed") != 0;
        const OGRLineString* line = g->toLineString();
        ASSERT_EQ(line->getNumPoints(), static_cast<int>(e.vertices.size() + (closed ? 1 : 0)));
        for (std::size_t i = 0; i < e.vertices.size(); ++i) {
          EXPECT_EQ(line->getX(static_cast<int>(i)), e.vertices[i].X);
          EXPECT_EQ(line->getY(static_cast<int>(i)), e.vertices[i].Y);
        }
      } else {
        const OGRLinearRing* ring = g->toPolygon()->getExteriorRing();
        EXPECT_EQ(ring->getNumPoints(), static_cast<int>(e.vertices.size() + 1)) << "closed ring";
        EXPECT_EQ(ring->getX(0), e.vertices[0].X);
      }
    }
  }
  // A well's fields under the table's names.
  {
    const Element w = LoadAll(db_, ElementKind::Well).front();
    std::unique_ptr<OGRFeature> f(ds->GetLayerByName("wells")->GetFeature(w.key));
    EXPECT_DOUBLE_EQ(f->GetFieldAsDouble("Head"), w.row.Number("Head"));
    EXPECT_DOUBLE_EQ(f->GetFieldAsDouble("Radius"), w.row.Number("Radius"));
    EXPECT_EQ(f->GetFieldAsInteger("HeadSpecified"), w.row.Integer("HeadSpecified"));
  }
  // The test points with their results; the last had none.
  {
    OGRLayer* tp = ds->GetLayerByName("test_points");
    const std::vector<Element> points = LoadAll(db_, ElementKind::TestPoint);
    ASSERT_GE(points.size(), 2u);
    for (const Element& p : points) {
      std::unique_ptr<OGRFeature> f(tp->GetFeature(p.key));
      if (&p == &points.back()) {
        EXPECT_TRUE(f->IsFieldNull(f->GetFieldIndex("ModelHead")));
        EXPECT_TRUE(f->IsFieldNull(f->GetFieldIndex("Residual")));
      } else {
        EXPECT_DOUBLE_EQ(f->GetFieldAsDouble("ModelHead"), p.row.Number("ObsHead") + 0.5);
        EXPECT_DOUBLE_EQ(f->GetFieldAsDouble("Residual"), 0.5);
      }
    }
  }
  // The results with the model origin applied, in map units.
  const double k = GetParam().toMap;
  {
    OGRLayer* contours = ds->GetLayerByName("contours");
    ASSERT_EQ(contours->GetFeatureCount(), 2);
    contours->ResetReading();
    std::unique_ptr<OGRFeature> f(contours->GetNextFeature());
    EXPECT_DOUBLE_EQ(f->GetFieldAsDouble("Level"), 115.0);
    const OGRLineString* line = f->GetGeometryRef()->toLineString();
    ASSERT_EQ(line->getNumPoints(), 3);
    EXPECT_NEAR(line->getX(1), 455000 + 100 * k, 1e-4);
    EXPECT_NEAR(line->getY(1), 4391000 + 50 * k, 1e-4);
  }
  {
    OGRLayer* paths = ds->GetLayerByName("pathlines");
    ASSERT_EQ(paths->GetFeatureCount(), 1) << "the path of one point is left out";
    paths->ResetReading();
    std::unique_ptr<OGRFeature> f(paths->GetNextFeature());
    EXPECT_STREQ(f->GetFieldAsString("Label"), "WL_0001");
    const OGRLineString* line = f->GetGeometryRef()->toLineString();
    ASSERT_EQ(line->getNumPoints(), 3);
    EXPECT_NEAR(line->getX(2), 455000 + 50 * k, 1e-4);
    EXPECT_NEAR(line->getY(2), 4391000 + 60 * k, 1e-4);
    EXPECT_DOUBLE_EQ(line->getZ(2), 112.0) << "the elevation";
    EXPECT_DOUBLE_EQ(line->getM(2), 9.0) << "the time";
  }
  ds.reset();

  // An independent reader sees the same.
  if (!HaveProgram("ogrinfo")) GTEST_SKIP() << "ogrinfo is not installed";
  const auto all = test::RunExecutable("ogrinfo", {"-ro", "-so", file.string()});
  ASSERT_EQ(all.status, 0) << all.err;
  EXPECT_NE(all.out.find("wells (Point)"), std::string::npos) << all.out;
  EXPECT_NE(all.out.find("linesink_strings (Line String)"), std::string::npos) << all.out;
  EXPECT_NE(all.out.find("inhomogeneities (Polygon)"), std::string::npos) << all.out;
  const auto wells = test::RunExecutable("ogrinfo", {"-ro", "-so", file.string(), "wells"});
  EXPECT_NE(
      wells.out.find("Feature Count: " + std::to_string(CountElements(db_, ElementKind::Well))),
      std::string::npos)
      << wells.out;
  EXPECT_NE(wells.out.find("ID[\"EPSG\"," + std::to_string(GetParam().epsg) + "]"),
            std::string::npos)
      << wells.out;
  // The vertices of the first line-sink string, as ogrinfo prints its geometry.
  const Element river = LoadAll(db_, ElementKind::Linesink).front();
  const auto one = test::RunExecutable("ogrinfo", {"-ro", "-q", file.string(), "linesink_strings",
                                                   "-fid", std::to_string(river.key)});
  const auto at = one.out.find("LINESTRING (");
  ASSERT_NE(at, std::string::npos) << one.out;
  const std::string coords = one.out.substr(at, one.out.find(')', at) - at);
  EXPECT_EQ(static_cast<std::size_t>(std::count(coords.begin(), coords.end(), ',')) + 1,
            river.vertices.size());
}

INSTANTIATE_TEST_SUITE_P(Examples, GpkgExampleTest,
                         ::testing::Values(ExampleCase{"vincennes.sql", 26916, 1.0},
                                           ExampleCase{"basin-and-range.sql", 26911, 0.3048}));

class GpkgExportTest : public GisProject {};

TEST_F(GpkgExportTest, AProjectWithoutASystemAndWithoutResultsGivesEmptyResultLayers) {
  Add(ElementKind::Barrier, "Wall", At({{0, 0}, {10, 0}, {10, 10}}),
      [](Row& r) { r.Set("Closed", 2); });
  // The kinds without a vertex of their own: a text label and the uniform flow.
  Element text = NewElement(ElementKind::Text);
  text.row.Set("Text", "Town");
  text.row.Set("X", 3.0);
  text.row.Set("Y", 4.0);
  Insert(db_, text);
  Element uniform = NewElement(ElementKind::UniformFlow);
  uniform.row.Set("UNIFLOWRefX", 300.0);
  uniform.row.Set("UNIFLOWRefY", -5.0);
  uniform.row.Set("UNIFLOWGradient", 0.002);
  Insert(db_, uniform);
  const auto file = dir_ / "plain.gpkg";
  const GpkgExportReport report = WriteGeoPackage(db_, ProjectPath(), file);
  EXPECT_TRUE(report.crsName.empty());
  EXPECT_EQ(report.Count("text_labels"), 1);
  EXPECT_EQ(report.Count("uniform_flow"), 1);
  EXPECT_EQ(report.Count("contours"), 0);
  EXPECT_EQ(report.Count("pathlines"), 0);
  EXPECT_EQ(report.Count("barriers"), 1);
  GdalDatasetPtr ds = OpenVectorFile(file);
  OGRLayer* barriers = ds->GetLayerByName("barriers");
  // GDAL reads the GeoPackage's "undefined Cartesian" system as a local one, or none.
  if (const OGRSpatialReference* srs = barriers->GetSpatialRef()) {
    EXPECT_TRUE(srs->IsLocal() || srs->IsEmpty());
    EXPECT_EQ(srs->GetAuthorityCode(nullptr), nullptr);
  }
  barriers->ResetReading();
  std::unique_ptr<OGRFeature> f(barriers->GetNextFeature());
  // A closed barrier ends where it began.
  const OGRLineString* line = f->GetGeometryRef()->toLineString();
  ASSERT_EQ(line->getNumPoints(), 4);
  EXPECT_EQ(line->getX(3), 0.0);
  EXPECT_EQ(f->GetFieldAsInteger("Closed"), 2);
  {
    OGRLayer* labels = ds->GetLayerByName("text_labels");
    labels->ResetReading();
    std::unique_ptr<OGRFeature> t(labels->GetNextFeature());
    EXPECT_STREQ(t->GetFieldAsString("Text"), "Town");
    EXPECT_EQ(t->GetGeometryRef()->toPoint()->getX(), 3.0);
    EXPECT_EQ(t->GetGeometryRef()->toPoint()->getY(), 4.0);
    OGRLayer* flow = ds->GetLayerByName("uniform_flow");
    flow->ResetReading();
    std::unique_ptr<OGRFeature> u(flow->GetNextFeature());
    EXPECT_DOUBLE_EQ(u->GetFieldAsDouble("UNIFLOWGradient"), 0.002);
    EXPECT_EQ(u->GetGeometryRef()->toPoint()->getX(), 300.0);
    EXPECT_EQ(u->GetGeometryRef()->toPoint()->getY(), -5.0);
  }
  EXPECT_EQ(exchange::GpkgReportLines(report),
            (std::vector<std::string>{"barriers: 1", "text_labels: 1", "uniform_flow: 1",
                                      "The project has no coordinate reference system."}));
}

TEST_F(GpkgExportTest, ABadCoordinateSystemFileIsNamedWithItsLine) {
  SetCrs("not a system");
  try {
    WriteGeoPackage(db_, ProjectPath(), dir_ / "x.gpkg");
    FAIL() << "no error";
  } catch (const Error& e) {
    const std::string what = e.what();
    EXPECT_NE(what.find((dir_ / "m.prj").string()), std::string::npos) << what;
    EXPECT_NE(what.find("line 1: \"not a system\""), std::string::npos) << what;
  }
  EXPECT_FALSE(std::filesystem::exists(dir_ / "x.gpkg"));
}

TEST_F(GpkgExportTest, TheMenuAsksBeforeReplacingAFileAndTellsWhatItWrote) {
  Add(ElementKind::Well, "W1", Point(5, 6));
  db_.Close();
  const std::string file = (dir_ / "wells.gpkg").string();
  ASSERT_TRUE(test::WriteFile(file, "old"));
  {
    ScriptedUserInterface ui;
    ui.ExpectSaveFile(file).Title("Write GeoPackage File");
    ui.ExpectMessage("File Exists",
                     {"File " + file + " already exists.", "Do you want to overwrite it?"},
                     Answer::No);
    ui.ExpectMessage("Abort", {"GeoPackage export aborted"});
    EXPECT_FALSE(exchange::ToolsExportGeoPackage(ui, ProjectPath().string()));
    ui.Verify();
    EXPECT_EQ(test::ReadFile(file), "old");
  }
  ScriptedUserInterface ui;
  ui.ExpectSaveFile(file);
  ui.ExpectMessageTitled("File Exists", Answer::Yes);
  ui.ExpectMessage("Export Complete", {file + " has been written.", "wells: 1",
                                       "The project has no coordinate reference system."});
  EXPECT_TRUE(exchange::ToolsExportGeoPackage(ui, ProjectPath().string()));
  ui.Verify();
  EXPECT_EQ(ui.WaitTexts(), std::vector<std::string>{"Exporting GeoPackage..."});
  EXPECT_FALSE(ui.WaitWindowVisible());
  EXPECT_EQ(ui.Calls().front().file.initialFile, "m.gpkg");
  GdalDatasetPtr ds = OpenVectorFile(file);
  ASSERT_TRUE(ds);
  EXPECT_EQ(ds->GetLayerByName("wells")->GetFeatureCount(), 1);
}

TEST_F(GpkgExportTest, ABadContourFileFailsBeforeTheOldFileIsTouched) {
  std::ofstream(dir_ / "m.CTR", std::ios::binary) << PlotLine({1, 2}) << "\r\n";
  db_.Close();
  const std::string file = (dir_ / "kept.gpkg").string();
  ASSERT_TRUE(test::WriteFile(file, "old"));
  ScriptedUserInterface ui;
  ui.ExpectSaveFile(file);
  ui.ExpectMessageTitled("File Exists", Answer::Yes);
  ui.Expect(UiCallKind::MessageBox).Title("Export Failed");
  EXPECT_FALSE(exchange::ToolsExportGeoPackage(ui, ProjectPath().string()));
  ui.Verify();
  const std::string said = ui.Messages().back().lines.front();
  EXPECT_EQ(said.rfind("GeoPackage Export Failed - ", 0), 0u) << said;
  EXPECT_NE(said.find("m.CTR"), std::string::npos) << said;
  EXPECT_NE(said.find("line 1"), std::string::npos) << said;
  EXPECT_EQ(test::ReadFile(file), "old");
}

}  // namespace
}  // namespace tarno::testing
