// Import of line-sink strings, barriers, inhomogeneities and wells from any vector
// file that GDAL/OGR reads (shapefile, GeoPackage, GeoJSON, KML, ...).
//
// The dialog model VectorImport chooses the layer of the file, the kind of element
// and the field mapping: which attribute gives the label, the head, the resistance,
// the discharge, the conductivity... (the roles of the kind, below). A role left
// without an attribute leaves its fields at the kind's defaults, as a new element
// drawn on the map has them. Every field of the kind's table is a role of its own
// too, under the field's name, so that a file written by the GeoPackage export maps
// back field by field; the dialog proposes, for each role, the attribute of the
// same name (without regard to case).
//
// ImportVectorLayer then takes feature by feature: points make wells, lines make
// strings, polygons (their outer ring) inhomogeneities or closed strings; a
// multi-geometry gives one element per part. Coordinates are reprojected to the
// project's coordinate system when the layer and the project both have one. Each
// element is checked as the element's dialog checks it and written in one
// transaction (AddElement). What is not taken is reported with its feature id and
// why: a geometry the kind cannot use, an empty mapped value, a value the field
// does not take, a refusal of the element's checks.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "core/ui_port.h"
#include "elements/kind.h"

namespace tarno {
class Database;
}

namespace tarno::exchange {

namespace vector_import_text {
inline constexpr const char* kDialogName = "VectorImport";
inline constexpr const char* kTitle = "Import GIS Vector File";
inline constexpr const char* kOpenTitle = "GIS Vector File to be Imported";
inline constexpr const char* kFilter =
    "GIS vector files (*.shp;*.gpkg;*.geojson;*.json;*.kml;*.gml;*.csv)|*.shp;*.gpkg;*.geojson;"
    "*.json;*.kml;*.gml;*.csv|All files (*.*)|*.*";
inline constexpr const char* kWait = "Importing GIS features...";
inline constexpr const char* kSummaryTitle = "GIS Import";
inline constexpr const char* kNoLayerTitle = "No Layer";
inline constexpr const char* kNoLayer = "The file has no layer that can be imported.";
inline constexpr const char* kCannotOpenTitle = "Cannot Open";
inline constexpr const char* kBadMappingTitle = "Field Mapping";
}  // namespace vector_import_text

// One layer of a vector file, as the dialog lists it.
struct VectorLayerInfo {
  std::string name;
  std::string geometry;       // OGR's name of the layer's type: "Point", "Line String", ...
  std::int64_t features = 0;  // -1 when the driver cannot tell without reading
  std::vector<std::string> attributes;
  std::string crsName;  // empty when the layer has no coordinate system
};

// Opens `file` and lists its vector layers. Throws Error naming the file and GDAL's
// reason when it is no vector file GDAL reads.
std::vector<VectorLayerInfo> ReadVectorLayers(const std::string& file);

// A role of the field mapping.
struct FieldRole {
  std::string role;     // what --field takes: "label", "head", "StartingHead", ...
  std::string caption;  // what the dialog shows: "Label", "Head (both ends)", ...
  // The fields the attribute's value goes to, and fields set along with it
  // ("HeadSpecified=0" for a discharge).
  std::vector<std::string> fields;
  std::vector<std::string> alsoSets;
  bool text = false;  // the value is text (the label); else a number
};

// The kinds that can be imported, in the dialog's order: line-sink string,
// barrier, inhomogeneity, well.
const std::vector<ElementKind>& ImportKinds();
// The roles of a kind: the named ones first, then one per field of its table (but
// the key and a line-sink's RoutePID and RouteVID, keys of another project).
std::vector<FieldRole> RolesOf(ElementKind kind);
// The role of a name (without regard to case); none for an unknown one.
std::optional<FieldRole> FindRole(ElementKind kind, const std::string& role);
// The kind whose elements a layer's geometry makes: points wells, lines line-sink
// strings, polygons inhomogeneities. None for another geometry.
std::optional<ElementKind> KindForGeometry(const std::string& geometry);
// The kind for a layer: by its name when it is one of the GeoPackage export's
// ("linesink_strings", "barriers", "inhomogeneities", "wells"), else by its geometry.
std::optional<ElementKind> KindForLayer(const VectorLayerInfo& layer);
// For each role of `kind`, the attribute of the layer named as the role or as the
// role's one field (without regard to case): the mapping the dialog proposes.
std::map<std::string, std::string> ProposedMapping(ElementKind kind, const VectorLayerInfo& layer);

struct VectorImportOptions {
  std::string file;
  std::string layer;  // the layer's name
  ElementKind kind = ElementKind::Linesink;
  // role -> attribute; a role not in the map is unmapped.
  std::map<std::string, std::string> mapping;
};

struct SkippedFeature {
  std::int64_t fid = 0;
  std::string reason;
};

struct VectorImportReport {
  std::string file;
  std::string layer;
  ElementKind kind = ElementKind::Linesink;
  std::int64_t features = 0;        // features read
  std::vector<std::string> labels;  // of the elements taken, in order
  std::vector<SkippedFeature> skipped;
  std::vector<std::string> notes;  // the reprojection, or why there was none
  std::size_t Taken() const { return labels.size(); }
};

// Imports the layer into the project open in `db`, whose file is `projectFile` (for
// its coordinate system). Throws Error for a file or layer that cannot be read and
// for a mapping that names a role the kind does not have or an attribute the layer
// does not have; a bad feature only goes into the report.
VectorImportReport ImportVectorLayer(Database& db, const std::filesystem::path& projectFile,
                                     const VectorImportOptions& options);

// The lines of the summary: what was taken, then each skipped feature.
std::vector<std::string> ImportSummaryLines(const VectorImportReport& report);

// The dialog: the file's layers, the chosen layer, the kind and the mapping.
class VectorImport : public DialogModel {
 public:
  static constexpr const char* kName = "VectorImport";
  std::string DialogName() const override { return kName; }

  // Reads the file's layers and chooses the first (ChooseLayer). Throws as
  // ReadVectorLayers does.
  void Load(const std::string& file);
  // Chooses a layer: the kind follows its geometry (where one fits), and the
  // mapping is proposed anew.
  void ChooseLayer(int index);
  // Chooses a kind: the mapping is proposed anew for its roles.
  void ChooseKind(ElementKind kind);
  // Proposes, for each role of the kind, the attribute of the same name.
  void ProposeMapping();
  // Maps a role to an attribute ("" unmaps it).
  void Map(const std::string& role, const std::string& attribute);
  std::string AttributeOf(const std::string& role) const;
  const VectorLayerInfo* CurrentLayer() const;

  // OK: a layer must be chosen and every mapped attribute be one of the layer's;
  // otherwise a message says what is wrong and the dialog stays (false). Result 1.
  bool OK(UserInterface& ui);
  void Cancel() { Result = 2; }
  VectorImportOptions Options() const;

  std::string file;
  std::vector<VectorLayerInfo> layers;
  int layer = -1;
  ElementKind kind = ElementKind::Linesink;
  std::map<std::string, std::string> mapping;
  int Result = 2;
};

// Tools > Import > GIS Vector File: the file, the dialog, the import under the wait
// window, and the summary in a box. True when an element was imported (the model
// changed).
bool ToolsImportVector(UserInterface& ui, const std::string& projectFile);

}  // namespace tarno::exchange
