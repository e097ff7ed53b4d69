// The geometry exports of the Tools menu: DXF files, SURFER boundary line files
// with their level script, the SURFER grid in map coordinates, and shapefiles.
//
// Each operation reads the project named in its context (read only), checks that
// it has something to export (else its box, and no file is asked for or written),
// asks for the file with the overwrite question, writes, and ends with its "Export
// Complete" box. The boxes, titles and filters are the texts below, exactly.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "core/ui_port.h"
#include "elements/extents.h"
#include "exchange/export_dialogs.h"
#include "exchange/geometry_sources.h"

namespace tarno::exchange {

struct GeometryExportContext {
  UserInterface& ui;
  std::filesystem::path projectFile;
  // The map window on screen, which gives a DXF file its extents and the size of
  // the marks of points; none: the window stored in the Model row.
  std::optional<MapWindow> window;
  // The step of the time marks now drawn along the pathlines (T_Interval), written
  // into the time marks' shapefile; 0 when unknown.
  double timeMarkStep = 0.0;
  // TARNO.def for the directory memory of the DXF dialog; DefaultDirectoriesFile()
  // when empty.
  std::string defaultDirectoriesFile;
};

namespace geometry_text {
inline constexpr const char* kFileExistsTitle = "File Exists";
inline constexpr const char* kOverwrite = "Do you want to overwrite it?";
inline constexpr const char* kCompleteTitle = "Export Complete";
inline constexpr const char* kWritten = " has been written.";

inline constexpr const char* kDxfDialogTitle = "Write DXF File";
inline constexpr const char* kDxfFilter = "DXF Files (*.dxf)|*.DXF";
inline constexpr const char* kDxfDirectoryKey = "Default DXF conversion path";
inline constexpr const char* kDxfVersion = "DXF version AC1015 (Autocad 2000)";
inline constexpr const char* kDxfContoursDone = "DXF contour file export is complete";
inline constexpr const char* kDxfPathsDone = "DXF pathline file export is complete";
inline constexpr const char* kDxfCapzonesDone = "DXF capture zone file export is complete";
inline constexpr const char* kDxfElementsDone = "DXF element file export is complete";

inline constexpr const char* kCantExportLower = "Can't export";
inline constexpr const char* kCantExport = "Can't Export";
inline constexpr const char* kNoContours = "No Contours to be exported";
inline constexpr const char* kNoPathlines = "No pathlines to be exported";
inline constexpr const char* kNoCapzones = "No capture zones to be exported!";
inline constexpr const char* kNoDxfWritten = "No Dxf file written!";
inline constexpr const char* kNoElements = "No elements to be exported!";
inline constexpr const char* kNoCapzonesBln = "No capture zones";

inline constexpr const char* kBlnDialogTitle = "Write SURFER(tm) Boundary Line File";
inline constexpr const char* kBlnFilter = "Boundary Line Files|*.BLN";
inline constexpr const char* kIoErrorTitle = "I/O Error";

inline constexpr const char* kGridTitle = "Grid Export";
inline constexpr const char* kGridLine1 = "A Surfer Grid file will be written with the";
inline constexpr const char* kGridLine2 = "current contour grid data: ";
inline constexpr const char* kGridDialogTitle = "Write SURFER(tm) Grid File";
inline constexpr const char* kGridFilter = "Grid Format Files|*.GRD";
inline constexpr const char* kGridDone = "Grid file export is complete";
// No grid to export (no solve yet): not a box of the classic program, which
// failed in the copy instead.
inline constexpr const char* kNoGrid = "No contour grid to be exported";

inline constexpr const char* kShapeFilter = "Shapefiles (*.shp)|*.shp";
inline constexpr const char* kExportFailedTitle = "Export Failed";
}  // namespace geometry_text

// "Heads", "Potentials", "Discharge", "Interface", "Stream Functions" or
// "Drawdowns" for a ContourKind.
const char* ContourKindName(int contourKind);

// Tools > Export > "DXF File...": the dialog VectorExport (FileMode "DXF"), then
// ExportDxf with its choice. True when a file was written.
bool ToolsExportDXF(GeometryExportContext& ctx);
// Tools > Export > "SURFER Boundary Line File...": VectorExport with "BLN", then
// ExportBln.
bool ToolsExportBLN(GeometryExportContext& ctx);
// Tools > Export > "SURFER Grid File...".
bool ToolsExportGrid(GeometryExportContext& ctx);
// Tools > Export > "Shapefiles...": the dialog ExportShapefile, then
// ExportShapeKinds with the kinds of its choice. The number of files written.
int ToolsExportShape(GeometryExportContext& ctx);

// A DXF file of `mode`; `layer` names the layer of contour lines ("Contours" when
// empty).
bool ExportDxf(GeometryExportContext& ctx, VectorMode mode, const std::string& layer);
// A boundary line file of `mode` (and TARNO.SCR beside it for contours).
bool ExportBln(GeometryExportContext& ctx, VectorMode mode);

// The kinds of shapefile, each a stage of its own.
enum class ShapeKind {
  Contours,
  Paths,
  TimeTics,
  ElevationTics,
  Capzones,
  Particles,
  TestPoints,
  Wells,
  Inhomogeneities,
  LineSinks,
  NoFlows,
};

struct ShapeKindInfo {
  ShapeKind kind;
  const char* dialogTitle;  // "Output ShapeFile name for contours", ...
  const char* suffix;       // "_contours", ..., "day-tics", "elevation-tics"
  const char* failure;      // "Contours Export Failed - ", ...
};
const ShapeKindInfo& ShapeInfo(ShapeKind kind);

// The kinds a choice of the ExportShapefile dialog writes. "Path Lines, TicMarks"
// gives the paths and, for each mark file that the pathline drawing left, its marks.
std::vector<ShapeKind> KindsOfOption(const GeometryProject& p, ShapeOption option);

// Writes one shapefile per kind, each under a name asked with its own dialog (the
// default: the base name and the kind's suffix), with the overwrite question; an
// existing .shp, .shx and .dbf of the name are replaced. A failing kind shows
// "Export Failed" with its words and the reason, and the next kind goes on. The
// number of files written.
int ExportShapeKinds(GeometryExportContext& ctx, const std::vector<ShapeKind>& kinds);

// The SURFER grid file `grid` copied to `target` line for line, but for the lines
// of the X and Y limits, which go through MToW_X and MToW_Y (mask "#######0.00",
// two blanks between). Throws Error naming the file for a grid without those lines.
void CopyGridInMap(const std::filesystem::path& grid, const std::filesystem::path& target,
                   const ModelFrame& frame);

}  // namespace tarno::exchange
