// The dialogs of the geometry exports, as models without a window: VectorExport
// (what a DXF or SURFER boundary line file holds, and the DXF layer of contours)
// and ExportShapefile (which kind of shapefile to write).
#pragma once

#include <array>
#include <string>

#include "core/ui_port.h"

namespace tarno::exchange {

// What a vector file holds, as `mode` names it.
enum class VectorMode { None, Contours, Pathlines, Capzones, Elements };

// The word of a mode ("CONTOURS", "PATHLINES", "CAPZONES", "ELEMENTS"; "" for
// none) and the mode of a word (None for any other).
const char* ModeWord(VectorMode mode);
VectorMode ModeFromWord(const std::string& word);

class VectorExport : public DialogModel {
 public:
  static constexpr const char* kName = "VectorExport";
  static constexpr const char* kTitle = "Export Vector File                (F1 for Help)";
  static constexpr const char* kDxfTitle = "Export DXF File";
  static constexpr const char* kBlnTitle = "Export SURFER\u00ae BLN File";
  static constexpr const char* kLayerCaption = "Layer Name";
  // The captions of chkExportSelection, in the order of the modes Contours to
  // Elements.
  static constexpr std::array<const char*, 4> kOptions = {"Contour Lines", "Particle Paths",
                                                          "Wellhead Protection Areas", "Elements"};
  static constexpr const char* kChooseTitle = "Choose Type";
  static constexpr const char* kChooseText = "Please choose a type to export.";

  std::string DialogName() const override { return kName; }

  // The title by FileMode: "Export DXF File", "Export SURFER® BLN File", else the
  // dialog's own.
  std::string Title() const;
  // The layer name is asked for DXF files only.
  bool LayerVisible() const { return FileMode == "DXF"; }
  // The option of chkExportSelection chosen (0 to 3), -1 for none.
  int Selection() const;
  void Select(int option);

  // OK: without a choice the box "Choose Type" and false (the dialog stays open);
  // otherwise Result 1 and true.
  bool OK(UserInterface& ui);
  void Cancel() { Result = 2; }

  std::string FileMode = "DXF";  // "DXF" or "BLN"
  std::string mode;              // "CONTOURS", "PATHLINES", "CAPZONES", "ELEMENTS" or ""
  std::string Layer;             // tbLayerName
  int Result = 2;
};

// What the shapefile export writes, in the order of SfOption.
enum class ShapeOption {
  Contours = 0,
  PathsAndTics = 1,
  WhpAreas = 2,
  Wells = 3,
  TestPoints = 4,
  Particles = 5,
  Inhomogeneities = 6,
  LineSinks = 7,
  NoFlows = 8,
};

class ExportShapefile : public DialogModel {
 public:
  static constexpr const char* kName = "ExportShapefile";
  static constexpr const char* kTitle = "Export Shapefiles";
  static constexpr std::array<const char*, 9> kOptions = {
      "Contours",        "Path Lines, TicMarks", "WHP Areas",
      "Wells",           "TestPoints",           "Particles",
      "Inhomogeneities", "Line Sinks",           "No Flow Boundaries"};

  std::string DialogName() const override { return kName; }

  // OK: without a choice the box "Choose Type" ("Please choose a type to export.")
  // and false; otherwise Result 1 and true.
  bool OK(UserInterface& ui);
  void Cancel() { Result = 2; }

  int SfOption = -1;  // 0 to 8, -1 for none
  int Result = 2;
};

}  // namespace tarno::exchange
