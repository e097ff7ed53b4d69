// tarnocmd export <p> gpkg and tarnocmd import of a GIS vector file: what they print,
// their exit status, the overwrite answer and the options of the import.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "program_test_util.h"
#include "store/database.h"
#include "tarnocmd_fixture.h"

namespace tarno::test {
namespace {

class TarnocmdGis : public TarnocmdProject {
 protected:
  void SetUp() override { MakeProject("gis"); }
  std::int64_t Count(const std::string& table) {
    Database db = Database::Open(project_);
    Statement st = db.PrepareRaw("select count(*) from " + table);
    st.Step();
    return st.GetInt64(0);
  }
};

TEST_F(TarnocmdGis, AGeoJsonFileComesInWithItsMappingAndGoesOutToAGeoPackage) {
  const auto json = dir_ / "pumps.geojson";
  ASSERT_TRUE(WriteFile(json, R"({"type": "FeatureCollection", "features": [
    {"type": "Feature", "id": 1, "properties": {"name": "P1", "q": 250.0},
     "geometry": {"type": "Point", "coordinates": [100.0, 200.0]}},
    {"type": "Feature", "id": 2, "properties": {"name": "P2", "q": null},
     "geometry": {"type": "Point", "coordinates": [300.0, 400.0]}},
    {"type": "Feature", "id": 3, "properties": {"name": "R1", "q": 1.0},
     "geometry": {"type": "LineString", "coordinates": [[0, 0], [1, 1]]}}]})"));
  RunResult r = Run({"import", project_, json.string(), "--field", "label=name", "--field",
                     "discharge=q", "--kind", "well"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(
      r.out,
      "Imported 1 wells from 3 features of the layer 'pumps' in " + json.string() +
          ".\n"
          "Skipped 2:\n"
          "Feature 2: the attribute 'q' (discharge) has no value\n"
          "Feature 3: a line cannot make a well\n"
          "The project has no coordinate reference system: the coordinates in WGS 84 are taken "
          "as map coordinates.\n");
  EXPECT_EQ(Count("Wells"), 1);

  // A kind that the file cannot give is bad usage; a missing attribute a failure.
  r = Run({"import", project_, json.string(), "--kind", "lake"});
  EXPECT_EQ(r.status, 2);
  r = Run({"import", project_, json.string(), "--field", "label=nosuch", "--kind", "well"});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("has no attribute 'nosuch'"), std::string::npos) << r.err;
  // Points and lines in one layer: the kind must be named.
  r = Run({"import", project_, json.string()});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("gives no kind of element; name one with --kind"), std::string::npos)
      << r.err;
  EXPECT_EQ(Count("Wells"), 1);

  const auto gpkg = dir_ / "gis.gpkg";
  r = Run({"export", project_, "gpkg", gpkg.string()});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "Export Complete: " + gpkg.string() +
                       " has been written.\n"
                       "Export Complete: wells: 1\n"
                       "Export Complete: The project has no coordinate reference system.\n");
  // An existing file is kept with --no.
  r = Run({"export", project_, "gpkg", gpkg.string(), "--no"});
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.out.find("Abort: GeoPackage export aborted"), std::string::npos) << r.out;
}

}  // namespace
}  // namespace tarno::test
