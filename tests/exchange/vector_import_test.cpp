// The import of GIS vector files: a shapefile and a GeoJSON file written here with
// OGR, the field mapping, reprojection, the features that are skipped and why, the
// dialog model, and a round trip through the GeoPackage export.
#include <gtest/gtest.h>

#include <cmath>

#include "elements/element_ops.h"
#include "elements/element_store.h"
#include "exchange/geometry_export.h"
#include "exchange/gpkg_export.h"
#include "exchange/vector_import.h"
#include "gis_test_support.h"
#include "store/undo_history.h"
#include "support/scripted_ui.h"

namespace tarno::testing {
namespace {

using exchange::ImportVectorLayer;
using exchange::VectorImportOptions;
using exchange::VectorImportReport;

class VectorImportTest : public GisProject {
 protected:
  VectorImportReport Import(const std::filesystem::path& file, ElementKind kind,
                            std::map<std::string, std::string> mapping,
                            const std::string& layer = "") {
    VectorImportOptions o;
    o.file = file.string();
    o.layer = layer;
    o.kind = kind;
    o.mapping = std::move(mapping);
    return ImportVectorLayer(db_, ProjectPath(), o);
  }
  // The reasons of the skipped features by feature id.
  static std::map<std::int64_t, std::string> Skipped(const VectorImportReport& r) {
    std::map<std::int64_t, std::string> out;
    for (const auto& s : r.skipped) out[s.fid] = s.reason;
    return out;
  }
};

TEST_F(VectorImportTest, AShapefileOfLinesGivesLineSinkStringsWithTheMappedFields) {
  const auto shp = dir_ / "rivers.shp";
  {
    VectorFileWriter w("ESRI Shapefile", shp, "rivers", wkbLineString);
    w.Field("NAME", OFTString);
    w.Field("STAGE", OFTReal);
    w.Field("RES", OFTReal);
    w.Add("LINESTRING (0 0, 100 0, 200 50)", [](OGRFeature& f) {
      f.SetField("NAME", "Big River");
      f.SetField("STAGE", 12.5);
      f.SetField("RES", 3.0);
    });
    w.Add("LINESTRING (0 100, 50 150)", [](OGRFeature& f) {
      f.SetField("NAME", "Creek");
      f.SetField("STAGE", 14.0);
      f.SetField("RES", 0.5);
    });
    w.Add("LINESTRING (0 200, 50 250)", [](OGRFeature& f) {
      f.SetField("NAME", "Ditch");
      f.SetField("STAGE", 14.0);
      // no resistance: a mapped value is missing
    });
    w.Add("LINESTRING (5 5, 6 6)", [](OGRFeature& f) {
      f.SetField("STAGE", 1.0);  // no name: a mapped label that is empty
    });
  }
  const VectorImportReport r = Import(
      shp, ElementKind::Linesink, {{"label", "NAME"}, {"head", "STAGE"}, {"resistance", "RES"}});
  EXPECT_EQ(r.features, 4);
  EXPECT_EQ(r.labels, (std::vector<std::string>{"Big_River", "Creek"}));
  const auto skipped = Skipped(r);
  ASSERT_EQ(skipped.size(), 2u);
  EXPECT_EQ(skipped.at(2), "the attribute 'RES' (resistance) has no value");
  EXPECT_EQ(skipped.at(3), "the attribute 'NAME' (label) has no value");

  const std::vector<Element> strings = LoadAll(db_, ElementKind::Linesink);
  ASSERT_EQ(strings.size(), 2u);
  const Element& river = strings[0];
  EXPECT_EQ(river.Label(), "Big_River");
  EXPECT_EQ(river.row.Integer("HeadSpecified"), 1);
  EXPECT_EQ(river.row.Number("StartingHead"), 12.5);
  EXPECT_EQ(river.row.Number("EndingHead"), 12.5);
  EXPECT_EQ(river.row.Number("Resistance"), 3.0);
  ASSERT_EQ(river.vertices.size(), 3u);
  EXPECT_EQ(river.vertices[2].X, 200.0);
  EXPECT_EQ(river.vertices[2].Y, 50.0);
  const Element& creek = strings[1];
  EXPECT_EQ(creek.row.Number("StartingHead"), 14.0);
  EXPECT_EQ(creek.row.Number("Resistance"), 0.5);
  // An unmapped field keeps the kind's default.
  EXPECT_EQ(creek.row.Number("Width"),
            NewElementAt(db_, ElementKind::Linesink, {{0, 0}, {1, 1}}).row.Number("Width"));
  EXPECT_EQ(creek.vertices.size(), 2u);
  EXPECT_EQ(exchange::ImportSummaryLines(r)[0],
            "Imported 2 line-sink strings from 4 features of the layer 'rivers' in " +
                shp.string() + ".");
}

TEST_F(VectorImportTest, AGeoJsonFileOfPointsGivesWellsAndSaysWhatItSkipped) {
  const auto json = dir_ / "wells.geojson";
  {
    VectorFileWriter w("GeoJSON", json, "wells", wkbUnknown);
    w.Field("id", OFTInteger);
    w.Field("name", OFTString);
    w.Field("q", OFTReal);
    w.Field("qtext", OFTString);
    auto add = [&](int id, const std::string& wkt, const char* name, std::optional<double> q,
                   const char* qtext = "1") {
      w.Add(wkt, [&](OGRFeature& f) {
        f.SetFID(id);
        f.SetField("name", name);
        if (q)
          f.SetField("q", *q);
        else
          f.SetFieldNull(f.GetFieldIndex("q"));
        f.SetField("qtext", qtext);
      });
    };
    add(1, "POINT (10 20)", "PW1", 500.0);
    add(2, "MULTIPOINT ((30 40), (50 60))", "Pair", 250.0);
    add(3, "POINT (70 80)", "NoRate", std::nullopt);
    add(4, "POLYGON ((0 0, 1 0, 1 1, 0 0))", "Area", 1.0);
    add(5, "", "Nowhere", 1.0);
    add(6, "POINT (90 90)", "Bad", 1.0, "12abc");
    add(7, "POINT (95 95)", "   ", 1.0);
  }
  // The rate as a number, then as text that is no number.
  VectorImportReport r = Import(json, ElementKind::Well, {{"label", "name"}, {"discharge", "q"}});
  EXPECT_EQ(r.labels, (std::vector<std::string>{"PW1", "Pair_1", "Pair_2", "Bad"}));
  auto skipped = Skipped(r);
  EXPECT_EQ(skipped.size(), 4u);
  EXPECT_EQ(skipped[7], "the attribute 'name' (label) is empty");
  EXPECT_EQ(skipped[3], "the attribute 'q' (discharge) has no value");
  EXPECT_EQ(skipped[4], "a polygon cannot make a well");
  EXPECT_EQ(skipped[5], "it has no geometry");

  const auto w = FindByLabel(db_, ElementKind::Well, "PW1");
  ASSERT_TRUE(w);
  EXPECT_EQ(w->row.Number("Head"), 500.0);
  EXPECT_EQ(w->row.Integer("HeadSpecified"), 0);
  EXPECT_EQ(w->X(), 10.0);
  const auto second = FindByLabel(db_, ElementKind::Well, "Pair_2");
  ASSERT_TRUE(second);
  EXPECT_EQ(second->X(), 50.0);
  EXPECT_EQ(second->row.Number("Head"), 250.0);

  // A text that is no number is refused by the field's check, with the feature's id.
  r = Import(json, ElementKind::Well, {{"label", "name"}, {"discharge", "qtext"}});
  skipped = Skipped(r);
  ASSERT_TRUE(skipped.count(6));
  EXPECT_NE(skipped[6].find("12abc"), std::string::npos) << skipped[6];
}

TEST_F(VectorImportTest, PolygonsGiveInhomogeneitiesByTheirOuterRing) {
  const auto json = dir_ / "zones.geojson";
  {
    VectorFileWriter w("GeoJSON", json, "zones", wkbUnknown);
    w.Field("K", OFTReal);
    w.Add("POLYGON ((0 0, 100 0, 100 100, 0 100, 0 0), (40 40, 60 40, 60 60, 40 40))",
          [](OGRFeature& f) { f.SetField("K", 8.0); });
    w.Add("LINESTRING (0 0, 10 0, 10 10)", [](OGRFeature& f) { f.SetField("K", 1.0); });
    w.Add("LINESTRING (200 0, 210 0, 210 10, 200 0)", [](OGRFeature& f) { f.SetField("K", 2.0); });
    // A ring of two distinct points: too few for an area.
    w.Add("POLYGON ((0 0, 5 5, 5 5, 0 0))", [](OGRFeature& f) { f.SetField("K", 3.0); });
  }
  const VectorImportReport r = Import(json, ElementKind::Inhomogeneity, {{"conductivity", "K"}});
  ASSERT_EQ(r.Taken(), 2u);
  EXPECT_EQ(Skipped(r).at(1), "an open line cannot make an inhomogeneity");
  EXPECT_EQ(Skipped(r).at(3).rfind("Wrong Number of Vertices:", 0), 0u) << Skipped(r).at(3);
  const std::vector<Element> inh = LoadAll(db_, ElementKind::Inhomogeneity);
  ASSERT_EQ(inh.size(), 2u);
  EXPECT_EQ(inh[0].vertices.size(), 4u) << "the ring without its closing point, no hole";
  EXPECT_EQ(inh[0].row.Number("HydCond"), 8.0);
  EXPECT_EQ(inh[0].row.Integer("ChangeK"), 1);
  EXPECT_EQ(inh[0].Label(), "zones_0") << "an unmapped label is made of the layer and feature id";
  EXPECT_EQ(inh[1].vertices.size(), 3u) << "a closed line without its repeated point";
}

TEST_F(VectorImportTest, APointIsReprojectedToTheProjectsSystem) {
  SetCrs("EPSG:26916");                   // NAD83 / UTM zone 16N
  const auto json = dir_ / "ll.geojson";  // GeoJSON is longitude and latitude on WGS 84
  {
    VectorFileWriter w("GeoJSON", json, "ll", wkbPoint, 4326);
    w.Field("name", OFTString);
    // On the zone's central meridian: easting 500000, northing the meridian arc times
    // 0.9996 (4982950.4 m at 45 degrees).
    w.Add("POINT (-87 45)", [](OGRFeature& f) { f.SetField("name", "CM45"); });
  }
  const VectorImportReport r = Import(json, ElementKind::Well, {{"label", "name"}});
  ASSERT_EQ(r.Taken(), 1u);
  ASSERT_EQ(r.notes.size(), 1u);
  EXPECT_EQ(r.notes[0], "Coordinates reprojected from WGS 84 to NAD83 / UTM zone 16N.");
  const auto w = FindByLabel(db_, ElementKind::Well, "CM45");
  ASSERT_TRUE(w);
  EXPECT_NEAR(w->X(), 500000.0, 0.01);
  EXPECT_NEAR(w->Y(), 4982950.4, 1.0);
}

TEST_F(VectorImportTest, WithoutAProjectSystemTheCoordinatesAreTakenAsTheyStand) {
  const auto json = dir_ / "ll.geojson";
  {
    VectorFileWriter w("GeoJSON", json, "ll", wkbPoint, 4326);
    w.Add("POINT (-87 45)", [](OGRFeature&) {});
  }
  const VectorImportReport r = Import(json, ElementKind::Well, {});
  ASSERT_EQ(r.Taken(), 1u);
  EXPECT_EQ(
      r.notes[0],
      "The project has no coordinate reference system: the coordinates in WGS 84 are taken as "
      "map coordinates.");
  const auto w = FindByLabel(db_, ElementKind::Well, r.labels[0]);
  EXPECT_EQ(w->X(), -87.0);
}

TEST_F(VectorImportTest, AMappingOfAnUnknownRoleOrAttributeIsRefusedBeforeAnythingIsRead) {
  const auto json = dir_ / "a.geojson";
  {
    VectorFileWriter w("GeoJSON", json, "a", wkbPoint);
    w.Field("name", OFTString);
    w.Add("POINT (1 1)", [](OGRFeature&) {});
  }
  EXPECT_THROW(Import(json, ElementKind::Well, {{"label", "NAME_MISSING"}}), Error);
  EXPECT_THROW(Import(json, ElementKind::Well, {{"resistance", "name"}}), Error);
  EXPECT_THROW(Import(json, ElementKind::Well, {}, "nolayer"), Error);
  EXPECT_THROW(Import(dir_ / "none.geojson", ElementKind::Well, {}), Error);
  EXPECT_THROW(Import(json, ElementKind::TestPoint, {}), Error);
  EXPECT_EQ(CountElements(db_, ElementKind::Well), 0);
}

TEST_F(VectorImportTest, TheDialogProposesTheKindAndTheMappingAndChecksItsOK) {
  const auto json = dir_ / "streams.geojson";
  {
    VectorFileWriter w("GeoJSON", json, "streams", wkbLineString);
    w.Field("Label", OFTString);
    w.Field("resistance", OFTReal);
    w.Field("Width", OFTReal);
    w.Add("LINESTRING (0 0, 1 1)", [](OGRFeature& f) {
      f.SetField("Label", "S1");
      f.SetField("resistance", 2.0);
      f.SetField("Width", 3.0);
    });
  }
  exchange::VectorImport d;
  d.Load(json.string());
  ASSERT_EQ(d.layers.size(), 1u);
  EXPECT_EQ(d.layers[0].attributes, (std::vector<std::string>{"Label", "resistance", "Width"}));
  EXPECT_EQ(d.kind, ElementKind::Linesink);
  EXPECT_EQ(d.AttributeOf("label"), "Label");
  EXPECT_EQ(d.AttributeOf("resistance"), "resistance");
  EXPECT_EQ(d.AttributeOf("width"), "Width");
  EXPECT_EQ(d.AttributeOf("head"), "");
  // A barrier has no resistance: the mapping follows the kind.
  d.ChooseKind(ElementKind::Barrier);
  EXPECT_EQ(d.AttributeOf("resistance"), "");
  EXPECT_EQ(d.AttributeOf("label"), "Label");

  d.Map("conductivity", "nosuch");
  ScriptedUserInterface ui;
  ui.ExpectMessage("Field Mapping", {"The layer 'streams' has no attribute 'nosuch'."});
  EXPECT_FALSE(d.OK(ui));
  EXPECT_EQ(d.Result, 2);
  d.Map("conductivity", "");
  EXPECT_TRUE(d.OK(ui));
  ui.Verify();
  EXPECT_EQ(d.Result, 1);
  const auto o = d.Options();
  EXPECT_EQ(o.layer, "streams");
  EXPECT_EQ(o.kind, ElementKind::Barrier);
}

TEST_F(VectorImportTest, TheMenuShowsTheDialogAndTheSummary) {
  const auto json = dir_ / "w.geojson";
  {
    VectorFileWriter w("GeoJSON", json, "w", wkbPoint);
    w.Field("name", OFTString);
    w.Add("POINT (1 2)", [](OGRFeature& f) { f.SetField("name", "A1"); });
    w.Add("LINESTRING (1 2, 3 4)", [](OGRFeature& f) { f.SetField("name", "L"); });
  }
  db_.Close();
  ScriptedUserInterface ui;
  ui.ExpectOpenFile(json.string()).Title("GIS Vector File to be Imported");
  ui.ExpectModal<exchange::VectorImport>("VectorImport", [&](exchange::VectorImport& d) {
    // A layer of points and lines: the user says which kind.
    EXPECT_EQ(exchange::KindForLayer(*d.CurrentLayer()), std::nullopt);
    d.ChooseKind(ElementKind::Well);
    EXPECT_EQ(d.AttributeOf("label"), "") << "no attribute is named as a role";
    d.Map("label", "name");
    ASSERT_TRUE(d.OK(ui));
  });
  ui.ExpectMessage("GIS Import",
                   {"Imported 1 wells from 2 features of the layer 'w' in " + json.string() + ".",
                    "Skipped 1:", "Feature 1: a line cannot make a well",
                    "The project has no coordinate reference system: the coordinates in WGS 84 are "
                    "taken as map coordinates."});
  EXPECT_TRUE(exchange::ToolsImportVector(ui, ProjectPath().string()));
  ui.Verify();
  EXPECT_EQ(ui.WaitTexts(), std::vector<std::string>{"Importing GIS features..."});
  db_ = Database::Open(ProjectPath());
  EXPECT_TRUE(FindByLabel(db_, ElementKind::Well, "A1"));
}

TEST_F(VectorImportTest, TheWholeImportIsOneEntryOfTheEditHistory) {
  const auto json = dir_ / "two.geojson";
  {
    VectorFileWriter w("GeoJSON", json, "two", wkbPoint);
    w.Field("name", OFTString);
    w.Add("POINT (1 1)", [](OGRFeature& f) { f.SetField("name", "A"); });
    w.Add("POINT (2 2)", [](OGRFeature& f) { f.SetField("name", "B"); });
  }
  UndoHistory history;
  history.Attach(ProjectPath().string());
  ASSERT_EQ(Import(json, ElementKind::Well, {{"label", "name"}}).Taken(), 2u);
  ASSERT_EQ(history.UndoCount(), 1u);
  EXPECT_EQ(history.UndoEntries()[0].name, "Import GIS Vector File");
  ASSERT_TRUE(history.Undo(db_));
  EXPECT_EQ(CountElements(db_, ElementKind::Well), 0);
  // An import that took nothing leaves no entry.
  history.Clear();
  EXPECT_EQ(Import(json, ElementKind::Inhomogeneity, {}).Taken(), 0u);
  EXPECT_EQ(history.UndoCount(), 0u);
  history.Detach();
}

// Elements -> GeoPackage -> import into a new project with the same aquifer gives
// the same elements.
TEST_F(VectorImportTest, ARoundTripThroughTheGeoPackageKeepsGeometryAndFields) {
  LoadExample("vincennes.sql");
  // A closed barrier besides the example's open one.
  Add(ElementKind::Barrier, "Ring", At({{450000, 4390000}, {450500, 4390000}, {450500, 4390500}}),
      [](Row& r) {
        r.Set("Closed", 3);
        r.Set("HydCond", 0.01);
        r.Set("Thickness", 1.0);
      });
  const auto gpkg = dir_ / "round.gpkg";
  exchange::WriteGeoPackage(db_, ProjectPath(), gpkg);
  std::map<ElementKind, std::vector<Element>> before;
  for (ElementKind k : exchange::ImportKinds()) before[k] = LoadAll(db_, k);

  // The same aquifer, no elements.
  db_.ExecuteRaw(
      "delete from Wells; delete from LinesinkStrings; delete from NoFlowStrings; "
      "delete from Inhomogeneities; delete from Vertices; delete from Polygons;");
  const std::map<ElementKind, std::string> layers = {
      {ElementKind::Linesink, "linesink_strings"},
      {ElementKind::Barrier, "barriers"},
      {ElementKind::Inhomogeneity, "inhomogeneities"},
      {ElementKind::Well, "wells"}};
  for (const auto& [kind, layer] : layers) {
    SCOPED_TRACE(layer);
    const auto infos = exchange::ReadVectorLayers(gpkg.string());
    const auto info =
        std::find_if(infos.begin(), infos.end(), [&](const auto& l) { return l.name == layer; });
    ASSERT_NE(info, infos.end());
    ASSERT_EQ(exchange::KindForLayer(*info), kind);
    auto mapping = exchange::ProposedMapping(kind, *info);
    // The example's impermeable barrier has a porosity of 0, which the barrier's
    // checks refuse: it comes in with the default porosity.
    if (kind == ElementKind::Barrier) {
      EXPECT_EQ(mapping.erase("porosity"), 1u);
    }
    const VectorImportReport r = Import(gpkg, kind, mapping, layer);
    EXPECT_TRUE(r.skipped.empty()) << (r.skipped.empty() ? "" : r.skipped[0].reason);
    const std::vector<Element> after = LoadAll(db_, kind);
    ASSERT_EQ(after.size(), before[kind].size());
    for (std::size_t i = 0; i < after.size(); ++i) {
      const Element& a = after[i];
      const Element& b = before[kind][i];
      SCOPED_TRACE(b.Label());
      ASSERT_EQ(a.vertices.size(), b.vertices.size());
      for (std::size_t v = 0; v < a.vertices.size(); ++v) {
        EXPECT_EQ(a.vertices[v].X, b.vertices[v].X);
        EXPECT_EQ(a.vertices[v].Y, b.vertices[v].Y);
      }
      for (const auto& [field, value] : b.row.Fields()) {
        if (field == "PID" || field == "VID" || field == "RoutePID" || field == "RouteVID")
          continue;
        if (kind == ElementKind::Barrier && field == "Porosity") continue;
        EXPECT_EQ(a.row.Normalised(field, a.row.Get(field)), b.row.Normalised(field, value))
            << field;
      }
    }
  }
}

// The wells shapefile of Tools > Export > Shapefiles comes back through the dialog's
// proposal as the wells it was written from: HEADSPEC tells a discharge from a head,
// PARTICLES is the count of particles. Before, HEAD went to the "head" role alone and
// every well came back head-specified, the pumping rates read as heads.
TEST_F(VectorImportTest, TheWellsShapefileOfTheExportComesBackWithItsKindsOfWell) {
  LoadExample("vincennes.sql");
  const auto shp = dir_ / "wells.shp";
  ScriptedUserInterface ui;
  ui.ExpectSaveFile(shp.string());
  ui.ExpectMessageTitled("Export Complete");
  exchange::GeometryExportContext ctx{ui, ProjectPath(), std::nullopt, 0.0, ""};
  ASSERT_EQ(exchange::ExportShapeKinds(ctx, {exchange::ShapeKind::Wells}), 1);
  const std::vector<Element> before = LoadAll(db_, ElementKind::Well);
  ASSERT_EQ(before.size(), 5u);
  db_.ExecuteRaw("delete from Wells; delete from Vertices where PID=-1;");

  const auto infos = exchange::ReadVectorLayers(shp.string());
  ASSERT_EQ(infos.size(), 1u);
  ASSERT_EQ(exchange::KindForLayer(infos[0]), ElementKind::Well);
  const auto mapping = exchange::ProposedMapping(ElementKind::Well, infos[0]);
  EXPECT_EQ(mapping.at("HeadSpecified"), "HEADSPEC");
  EXPECT_EQ(mapping.at("NParticles"), "PARTICLES");
  EXPECT_EQ(mapping.at("Pond"), "POND");
  EXPECT_EQ(mapping.at("head"), "HEAD");
  const VectorImportReport r = Import(shp, ElementKind::Well, mapping);
  EXPECT_TRUE(r.skipped.empty()) << (r.skipped.empty() ? "" : r.skipped[0].reason);
  const std::vector<Element> after = LoadAll(db_, ElementKind::Well);
  ASSERT_EQ(after.size(), before.size());
  for (const Element& b : before) {
    SCOPED_TRACE(b.Label());
    const auto a = std::find_if(after.begin(), after.end(),
                                [&](const Element& e) { return e.Label() == b.Label(); });
    ASSERT_NE(a, after.end());
    for (const char* field : {"HeadSpecified", "Head", "Radius", "TopElev", "BottomElev", "PPWell",
                              "NParticles", "Pond"})
      EXPECT_EQ(a->row.Normalised(field, a->row.Get(field)),
                b.row.Normalised(field, b.row.Get(field)))
          << field;
  }
}

}  // namespace
}  // namespace tarno::testing
