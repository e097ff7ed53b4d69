// What the GeoPackage and GIS import tests share: a scratch project that can take an
// example's elements, a coordinate system and results files, and small readers and
// writers of vector files through OGR.
#pragma once

#include <gdal_priv.h>
#include <ogr_spatialref.h>
#include <ogrsf_frmts.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "basemaps/gdal_support.h"
#include "support/program_runner.h"
#include "support/project_fixture.h"

namespace tarno::testing {

class GisProject : public ScratchProject {
 protected:
  void SetUp() override {
    ScratchProject::SetUp();
    EnsureGdalRegistered();
    PointSolverFilesHere();
  }
  // The solver files of the project are "m.*" in the test's folder.
  void PointSolverFilesHere() {
    db_.ExecuteRaw("update Project set TARNOBaseName='m', TARNOBasePath='" + dir_.string() + "'");
  }
  void LoadExample(const std::string& script) {
    std::ifstream in(std::string(TARNO_SOURCE_DIR) + "/examples/" + script);
    ASSERT_TRUE(in) << script;
    std::stringstream sql;
    sql << in.rdbuf();
    db_.ExecuteRaw(sql.str());
  }
  void SetCrs(const std::string& definition) {
    std::ofstream(dir_ / "m.prj") << definition << "\n";
  }
  double ModelNumber(const std::string& field) {
    Statement st = db_.PrepareRaw("select " + field + " from Model");
    EXPECT_TRUE(st.Step());
    return st.GetDouble(0);
  }
};

// A point line of the contour and path files: the counter's six columns, then
// fields of fourteen.
inline std::string PlotLine(std::initializer_list<double> values) {
  std::string line = "      ";
  char buffer[32];
  for (double v : values) {
    std::snprintf(buffer, sizeof buffer, "%14.6E", v);
    line += buffer;
  }
  return line;
}

inline GdalDatasetPtr OpenVectorFile(const std::filesystem::path& file) {
  return GdalDatasetPtr(
      GDALDataset::Open(file.string().c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY));
}

// A new vector file of `driver` with one layer.
struct VectorFileWriter {
  VectorFileWriter(const std::string& driver, const std::filesystem::path& file,
                   const std::string& layerName, OGRwkbGeometryType type, int epsg = 0) {
    GDALDriver* d = GetGDALDriverManager()->GetDriverByName(driver.c_str());
    ds.reset(d->Create(file.string().c_str(), 0, 0, 0, GDT_Unknown, nullptr));
    OGRSpatialReference srs;
    if (epsg != 0) {
      srs.importFromEPSG(epsg);
      srs.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
    }
    layer = ds->CreateLayer(layerName.c_str(), epsg != 0 ? &srs : nullptr, type, nullptr);
  }
  void Field(const std::string& name, OGRFieldType type) {
    OGRFieldDefn defn(name.c_str(), type);
    EXPECT_EQ(layer->CreateField(&defn), OGRERR_NONE);
  }
  // A feature from WKT; `set` fills its attributes.
  template <typename Set>
  void Add(const std::string& wkt, Set set) {
    OGRFeature f(layer->GetLayerDefn());
    OGRGeometry* g = nullptr;
    if (!wkt.empty()) {
      OGRGeometryFactory::createFromWkt(wkt.c_str(), nullptr, &g);
      f.SetGeometryDirectly(g);
    }
    set(f);
    EXPECT_EQ(layer->CreateFeature(&f), OGRERR_NONE);
  }
  void Close() { ds.reset(); }
  GdalDatasetPtr ds;
  OGRLayer* layer = nullptr;
};

// The output of an outside program, or a skip when it is not installed.
inline bool HaveProgram(const std::string& name) {
  return test::RunExecutable("sh", {"-c", "command -v " + name}).status == 0;
}

}  // namespace tarno::testing
