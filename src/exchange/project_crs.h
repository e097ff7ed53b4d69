// The coordinate reference system of a project, where it has one.
//
// The project file keeps no coordinate system of its own: its map coordinates are
// whatever its base maps use. A project has a coordinate system when
//   1. a file "<project name>.prj" stands beside the project file ("example.prj"
//      beside "example.trn"), holding anything GDAL takes as a definition: WKT,
//      "EPSG:26916", a PROJ string; or else
//   2. one of its base maps carries one that GDAL reads (a shapefile with its .prj,
//      a GeoPackage, a georeferenced raster). The first such map of the list counts.
// BBM maps carry only a zone number without its datum, and so give none.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

class OGRSpatialReference;

namespace tarno {
class Database;
}

namespace tarno::exchange {

struct ProjectCrs {
  std::string wkt;     // WKT2 of the system
  std::string name;    // its name ("NAD83 / UTM zone 16N")
  std::string source;  // the file it was read from
};

// The project's system, or none. A .prj beside the project that GDAL cannot read
// throws Error naming the file and its first line.
std::optional<ProjectCrs> FindProjectCrs(Database& db, const std::filesystem::path& projectFile);

// The sidecar file that gives a project its system: the project file with ".prj".
std::filesystem::path ProjectCrsFile(const std::filesystem::path& projectFile);

// A reference built from WKT, with x east and y north whatever the system's own axis
// order (as GIS files keep coordinates). Throws Error on a bad definition.
OGRSpatialReference SpatialReferenceOf(const std::string& definition);

}  // namespace tarno::exchange
