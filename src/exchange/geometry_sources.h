// What the geometry exports (DXF, SURFER boundary lines and grid, shapefiles) read:
// the project's solver files (<base>.CTR, <base>.PTH, <base>.GRD), the mark files
// TICMARKST.TIC and TICMARKSZ.TIC, and the element tables, all brought to map
// coordinates. Model coordinates of the solver files go through MToW_X and MToW_Y
// with the project's model origin; the marks and the vertices are map coordinates
// already.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "core/coords.h"
#include "elements/extents.h"
#include "elements/geometry_rows.h"
#include "solver/plot_files.h"

namespace tarno::exchange {

// The names of the mark files, beside the path file.
inline constexpr const char* kTimeTicFile = "TICMARKST.TIC";
inline constexpr const char* kElevationTicFile = "TICMARKSZ.TIC";

// The parts of a project the exports need, read once from its file.
struct GeometryProject {
  std::filesystem::path projectFile;
  std::filesystem::path solverDirectory;  // Project.TARNOBasePath
  std::string baseName;                   // Project.TARNOBaseName
  ModelFrame frame;                       // SOLVERX0, SOLVERY0 and BasemapConvert
  MapWindow window;                       // the Model row's window, corners sorted
  int contourKind = 0;                    // ContourKind of the model settings
};

// Reads the project's settings (read only). Throws the store's errors.
GeometryProject LoadGeometryProject(const std::filesystem::path& projectFile);

// A solver file of the project by its extension (".CTR"), found without regard to
// case; empty when there is none.
std::filesystem::path SolverFile(const GeometryProject& p, const std::string& extension);
// A mark file beside the solver files; empty when there is none.
std::filesystem::path TicFile(const GeometryProject& p, const char* name);

struct MapPoint {
  double x = 0.0;
  double y = 0.0;
  bool operator==(const MapPoint&) const = default;
};

// A line of a solver file in map coordinates: a contour line with its level, or a
// pathline with its label and the time at its last point.
struct MapLine {
  double level = 0.0;
  std::string label;
  double endTime = 0.0;
  std::vector<MapPoint> points;
};

// The contour lines of <base>.CTR in map coordinates, one per LEVEL record; none
// when the file is missing. Lines of fewer than two points are kept (a reader may
// want them), callers skip them.
std::vector<MapLine> ContourLinesInMap(const GeometryProject& p);
// The pathlines of <base>.PTH, one per START ... END record, in map coordinates;
// none when the file is missing.
std::vector<MapLine> PathlinesInMap(const GeometryProject& p);

// The vertices of an element as map points; a closed outline gets its first point
// again at the end, so that its last segment is written.
std::vector<MapPoint> Outline(const GeometryElement& e);

// The radius of the marks drawn for points (wells, tic marks): a five-hundredth of
// the larger side of the window, 1 for a window without size.
double MarkRadius(const MapWindow& w);

}  // namespace tarno::exchange
