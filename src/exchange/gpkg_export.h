// Export of a project to one GeoPackage: a layer for every kind of element and for
// the results of the last solve, in map coordinates, for GIS programs.
//
//   wells, linesink_strings, barriers, inhomogeneities, lakes, test_points,
//   particles, flux_lines, boundaries, capture_zones, text_labels, uniform_flow:
//       one feature per element, its feature id the element's key (VID or PID;
//       the text labels and the uniform flow are numbered), every field of its
//       table but the key under the table's own names. Strings are line strings
//       (a closed barrier repeats its first vertex at the end), areas polygons.
//       test_points also carry ModelHead, ModelFlow and Residual of the last
//       solve (TPResults; the residual as the results keep it: modelled less
//       observed, the flow's for a gage), empty where the solve gave none.
//   contours: the lines of <base>.CTR with their Level;
//   pathlines: the paths of <base>.PTH with their Label; each point's Z is the
//       elevation the solver wrote for it, and M its time.
// The results files hold model coordinates; they are brought to map coordinates
// with the model origin (MToW_X, MToW_Y). Every layer is written, empty or not. The
// layers carry the project's coordinate system when it has one (project_crs.h).
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "core/ui_port.h"

namespace tarno {
class Database;
}

namespace tarno::exchange {

namespace gpkg_text {
inline constexpr const char* kDialogTitle = "Write GeoPackage File";
inline constexpr const char* kFilter = "GeoPackage Files (*.gpkg)|*.gpkg";
inline constexpr const char* kDefaultExtension = "gpkg";
inline constexpr const char* kDirectoryKey = "Default GeoPackage path";
inline constexpr const char* kFileExistsTitle = "File Exists";
inline constexpr const char* kAbortTitle = "Abort";
inline constexpr const char* kAborted = "GeoPackage export aborted";
inline constexpr const char* kWait = "Exporting GeoPackage...";
inline constexpr const char* kCompleteTitle = "Export Complete";
inline constexpr const char* kWritten = " has been written.";
inline constexpr const char* kFailedTitle = "Export Failed";
inline constexpr const char* kFailed = "GeoPackage Export Failed - ";
}  // namespace gpkg_text

struct GpkgLayerCount {
  std::string layer;
  std::int64_t features = 0;
};

struct GpkgExportReport {
  std::vector<GpkgLayerCount> layers;  // in the order written
  std::string crsName;                 // empty: the layers have no coordinate system
  std::string crsSource;
  // Elements that could not be written whole (a string without vertices), as
  // "layer: label: why".
  std::vector<std::string> skipped;
  std::int64_t Count(const std::string& layer) const;
};

// The layer names, in the order they are written.
const std::vector<std::string>& GpkgLayerNames();

// Writes the GeoPackage `file` from the project open in `db`, whose file is
// `projectFile` (for its coordinate system); an existing `file` is replaced without
// a question. The results come from the solver files of the project's folder
// (Project.TARNOBasePath, TARNOBaseName). Throws Error naming the file and GDAL's
// reason when the file cannot be written, and PlotFileError for a bad results file.
GpkgExportReport WriteGeoPackage(Database& db, const std::filesystem::path& projectFile,
                                 const std::filesystem::path& file);

// The lines of the "Export Complete" box after the name: one per layer with
// features, then the coordinate system.
std::vector<std::string> GpkgReportLines(const GpkgExportReport& report);

// Tools > Export > GeoPackage: asks for the file (with the overwrite question of the
// other exports), writes it under the wait window and tells what was written. True
// when a file was written.
bool ToolsExportGeoPackage(UserInterface& ui, const std::string& projectFile);

}  // namespace tarno::exchange
