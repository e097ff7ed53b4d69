#include "exchange/project_crs.h"

#include <gdal_priv.h>
#include <ogr_spatialref.h>
#include <ogrsf_frmts.h>

#include <fstream>
#include <sstream>

#include "basemaps/gdal_support.h"
#include "core/error.h"
#include "core/text.h"
#include "store/database.h"

namespace tarno::exchange {

namespace {

std::optional<ProjectCrs> FromReference(const OGRSpatialReference& srs, const std::string& source) {
  char* wkt = nullptr;
  const char* options[] = {"FORMAT=WKT2_2018", nullptr};
  if (srs.exportToWkt(&wkt, options) != OGRERR_NONE || wkt == nullptr) {
    CPLFree(wkt);
    return std::nullopt;
  }
  ProjectCrs crs{wkt, srs.GetName() != nullptr ? srs.GetName() : "", source};
  CPLFree(wkt);
  return crs;
}

// The system a base map carries, when GDAL opens it and finds one.
std::optional<ProjectCrs> CrsOfMap(const std::string& path) {
  const std::string ext = [&] {
    std::string e = std::filesystem::path(path).extension().string();
    for (char& c : e) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return e;
  }();
  if (ext == ".bbm" || !std::filesystem::exists(path)) return std::nullopt;
  EnsureGdalRegistered();
  GdalErrorCapture quiet;
  GdalDatasetPtr ds(
      GDALDataset::Open(path.c_str(), GDAL_OF_VECTOR | GDAL_OF_RASTER | GDAL_OF_READONLY));
  if (!ds) return std::nullopt;
  if (const OGRSpatialReference* srs = ds->GetSpatialRef(); srs != nullptr && !srs->IsEmpty())
    return FromReference(*srs, path);
  for (int i = 0; i < ds->GetLayerCount(); ++i) {
    const OGRSpatialReference* srs = ds->GetLayer(i)->GetSpatialRef();
    if (srs != nullptr && !srs->IsEmpty()) return FromReference(*srs, path);
  }
  return std::nullopt;
}

}  // namespace

std::filesystem::path ProjectCrsFile(const std::filesystem::path& projectFile) {
  std::filesystem::path p = projectFile;
  return p.replace_extension(".prj");
}

OGRSpatialReference SpatialReferenceOf(const std::string& definition) {
  OGRSpatialReference srs;
  GdalErrorCapture quiet;
  if (srs.SetFromUserInput(definition.c_str()) != OGRERR_NONE)
    throw Error("Not a coordinate reference system GDAL knows" + quiet.Detail());
  srs.SetAxisMappingStrategy(OAMS_TRADITIONAL_GIS_ORDER);
  return srs;
}

std::optional<ProjectCrs> FindProjectCrs(Database& db, const std::filesystem::path& projectFile) {
  const std::filesystem::path prj = ProjectCrsFile(projectFile);
  if (std::filesystem::exists(prj)) {
    std::ifstream in(prj, std::ios::binary);
    std::stringstream text;
    text << in.rdbuf();
    const std::string definition = TrimST(text.str());
    try {
      return FromReference(SpatialReferenceOf(definition), prj.string());
    } catch (const Error& e) {
      const std::string first = definition.substr(0, definition.find_first_of("\r\n"));
      throw Error("The coordinate system file " + prj.string() + ", line 1: \"" + first +
                  "\": " + e.what());
    }
  }
  Statement st = db.Prepare("select MapName from Basemaps");
  while (st.Step()) {
    if (auto crs = CrsOfMap(st.GetText(0))) return crs;
  }
  return std::nullopt;
}

}  // namespace tarno::exchange
