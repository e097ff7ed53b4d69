// The project's list of base maps: the Basemaps and MapLabels rows, the kinds of map
// by extension, the adding of maps with their checks and boxes, the pre-scan that
// opens the listed maps as layers of the map, the maps' extents, and the entry of the
// BBM group selection.
//
// The catalogue opens maps only through a BaseMapOpeners table, so that it does not
// care how a kind is read: the program uses DefaultOpeners() (the readers of
// src/basemaps), the tests give openers of their own.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "basemaps/layers.h"
#include "core/ui_port.h"
#include "display/basemap_layer.h"
#include "elements/extents.h"

namespace tarno {

class Database;

// The fixed texts of the catalogue.
namespace catalogue_text {
inline constexpr const char* kNone = "__NONE__";
inline constexpr const char* kSelectTitle = "Select Basemap File";
inline constexpr const char* kDefaultExtension = "BBM";
inline constexpr const char* kAlreadyAddedTitle = "File Already Added";
inline constexpr const char* kAlreadyAddedSuffix = " has already been added.";
inline constexpr const char* kInvalidFileTitle = "Invalid File";
inline constexpr const char* kInvalidVectorText = "The image is not a valid vector data set!";
inline constexpr const char* kCouldNotAddPrefix = "Could not add the file: ";
inline constexpr const char* kCantAddTitle = "Can't Add";
inline constexpr const char* kInvalidRasterText = "The image is not a valid raster data set.";
inline constexpr const char* kNotGeoreferencedTitle = "Not Georeferenced";
inline constexpr const char* kProceedOrRemoveText = "Click OK to proceed or Cancel to remove map.";
inline constexpr const char* kPrescanText = "Pre-scanning maps...";
inline constexpr const char* kErrorAddingTitle = "Error Adding Image";
inline constexpr const char* kErrorAddingVector = "Error adding vector image ";
inline constexpr const char* kErrorAddingRaster = "Error adding raster image ";
inline constexpr const char* kNoMapsTitle = "No Maps";
inline constexpr const char* kNoMapsText = "No BBM Maps are loaded in current project";
inline constexpr const char* kSelectGroupActivity = "Select BBM Group";
inline constexpr const char* kSelectGroupFeedback = "Click mouse on map to select a group of ...";
// The width of the wait window of the pre-scan.
inline constexpr int kPrescanWaitWidth = 3000;
}  // namespace catalogue_text

// The mouse mode of the BBM group selection; the map editor owns the mode.
inline constexpr int kSelectBBMGroupMouseMode = 36;

// ---------------------------------------------------------------------------
// Kinds.

// The extension of a path, in lower case and without the dot ("" when none).
std::string MapExtension(const std::string& path);
// The kind of a map by its extension, without regard to case; Unknown for others.
BaseMapKind KindOfMap(const std::string& path);
// The extensions of a kind, as the table of kinds gives them.
const std::vector<std::string>& ExtensionsOf(BaseMapKind kind);
// "BBM", "shape", "CAD", "raster", "unknown".
const char* KindName(BaseMapKind kind);
// Vector maps are BBM, shape and CAD files.
inline bool IsVectorKind(BaseMapKind k) {
  return k == BaseMapKind::Bbm || k == BaseMapKind::Shape || k == BaseMapKind::Cad;
}

// The filter of the select dialog: "All Supported Types" with every extension of the
// table, then one entry per kind and "All Files".
const std::string& SelectMapFilter();
// The select dialog's request, starting in `initialDirectory`.
FileDialogRequest SelectMapRequest(const std::string& initialDirectory = {});

// ---------------------------------------------------------------------------
// Rows.

// The rows of Basemaps in table order, each with the label field of its MapLabels
// row ("__NONE__" without one). Throws StoreError.
std::vector<BaseMapRow> ReadBaseMaps(Database& db);
std::vector<BaseMapRow> ReadBaseMaps(const std::string& projectFile);
// The row of one map, found as the store compares texts (without regard to case).
std::optional<BaseMapRow> FindBaseMap(Database& db, const std::string& mapName);
// Adds the row of a new map: MapName, Show true, ColorField "__NONE__", the colour
// and colour switch as the table's defaults give them; no label field.
void InsertBaseMap(Database& db, const std::string& mapName);
// Removes the map's Basemaps row and its MapLabels rows; false when it was not listed.
bool RemoveBaseMap(Database& db, const std::string& mapName);
// Writes Show, Color, ColorField and UseColorField of the row named by row.MapName,
// and its label field: one MapLabels row, none for "__NONE__". False when the map is
// not listed.
bool UpdateBaseMap(Database& db, const BaseMapRow& row);

// ---------------------------------------------------------------------------
// Opening maps.

// How the catalogue opens each kind, finds world files and builds the overviews of
// an image. Each opener throws Error (naming the file) for a file it cannot read.
struct BaseMapOpeners {
  using Opener = std::function<std::unique_ptr<BaseMapLayer>(const BaseMapRow&)>;
  Opener bbm, shape, cad, raster;
  std::function<bool(const std::string& imagePath)> worldFileExists;
  std::function<void(const std::string& imagePath)> buildOverviews;

  // Opens a row by the kind of its extension; throws Error for an unknown kind or a
  // kind without an opener.
  std::unique_ptr<BaseMapLayer> Open(const BaseMapRow& row) const;
};

// The readers of this library: OpenBbmLayer, OpenShapeLayer, OpenCadLayer,
// OpenRasterLayer, WorldFileExists, BuildOverviews (catalogue_openers.cpp).
const BaseMapOpeners& DefaultOpeners();

// ---------------------------------------------------------------------------
// Adding.

enum class AddOutcome {
  Added,
  AlreadyAdded,   // "File Already Added"
  InvalidFile,    // a vector map that cannot be opened, or a file of no known kind
  CantAdd,        // a raster image that cannot be opened
  RemovedByUser,  // an image without world file, answered Cancel
};
const char* ToString(AddOutcome outcome);

struct AddedMap {
  std::string mapName;
  AddOutcome outcome;
};

// Adds the files to the project's list in order, each with the checks and boxes of
// the catalogue: a listed map says so, a vector map that cannot be opened and an
// image that cannot be read are refused, an image without a world file is asked
// about (OK keeps it, Cancel removes it). Each accepted file gets its row at once.
std::vector<AddedMap> AddMaps(Database& db, UserInterface& ui,
                              const std::vector<std::string>& files, const BaseMapOpeners& openers);
std::vector<AddedMap> AddMaps(const std::string& projectFile, UserInterface& ui,
                              const std::vector<std::string>& files, const BaseMapOpeners& openers);

// "Add Map...": the select dialog (many files at once, starting in the directory
// remembered under "Default select BBM path", which the choice then updates), then
// AddMaps. Nothing on Cancel. True when at least one map was added.
bool SelectAndAddMaps(const std::string& projectFile, UserInterface& ui,
                      const BaseMapOpeners& openers);

// ---------------------------------------------------------------------------
// Pre-scan.

// Opens every listed map under the wait window "Pre-scanning maps...". A map that
// cannot be opened gives "Error Adding Image" ("Error adding vector image " or
// "Error adding raster image " with its name) and is left out. The layers are
// returned in the list's order, each with the Show of its row: the redraw draws and
// the extents count only the maps shown.
BaseMapLayers PrescanMaps(const std::vector<BaseMapRow>& rows, UserInterface& ui,
                          const BaseMapOpeners& openers);
BaseMapLayers PrescanMaps(const std::string& projectFile, UserInterface& ui,
                          const BaseMapOpeners& openers);

// ---------------------------------------------------------------------------
// Extents.

// The box of the extents of the layers shown (a layer without geometry adds
// nothing); none when no such layer has extents. Widens the model's extents.
std::optional<ModelExtents> ModelCheckMapExtents(const BaseMapLayers& layers);
// The same for the shown maps of a project, opened for the purpose; maps that
// cannot be opened are passed over without a box (the pre-scan reports them).
std::optional<ModelExtents> ModelCheckMapExtents(const std::string& projectFile,
                                                 const BaseMapOpeners& openers);

// ---------------------------------------------------------------------------
// BBM groups.

// "Select BBM Group": without a BBM map in the list, the box "No Maps" and false;
// otherwise the status bar says what to do and the answer is true: the map editor
// then enters mouse mode kSelectBBMGroupMouseMode, in which a click on the map picks
// the group.
bool BBMSelect(const std::vector<BaseMapRow>& rows, UserInterface& ui);
bool BBMSelect(const std::string& projectFile, UserInterface& ui);

}  // namespace tarno
