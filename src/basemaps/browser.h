// The dialogs of the base map list, as models without a window:
//
// - MapBrowser ("TARNO Base Map Browser" of the Tools menu): the project's maps with
//   their kind and state; adds, removes and views maps and opens the options of one.
// - BaseMapBrowserOptions: how one map is shown: shown or not, its colour, the
//   attribute that colours it, the attribute written as labels, and for an image
//   the building of its pyramids (overviews).
// - ViewShape: the attribute table of a shapefile.
// - ViewGraphics: what a CAD file or an image holds: the layers of a CAD file, the
//   bands of an image.
//
// The views (src/app/views/basemap_views.*) show these models and press their
// buttons; the tests drive them through the scripted port.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "basemaps/catalogue.h"
#include "core/ui_port.h"

namespace tarno {

// ---------------------------------------------------------------------------

class BaseMapBrowserOptions : public DialogModel {
 public:
  static constexpr const char* kName = "BaseMapBrowserOptions";
  static constexpr const char* kTitle = "Base Map Options";
  static constexpr int kOK = 1;
  static constexpr int kCancel = 2;
  static constexpr const char* kBadFieldTitle = "Invalid Field";
  std::string DialogName() const override { return kName; }

  // Fills the fields from the row; the attribute names of a shapefile are read
  // from its table (none for other kinds, or when the table cannot be read).
  void Load(const BaseMapRow& row);

  // The colour button: the colour dialog, starting at the present colour.
  void ChooseColour(UserInterface& ui);
  // OK: a colour or label field that the map does not have gives "Invalid Field"
  // and the dialog stays (false). Otherwise Result 1 and the row holds the fields.
  bool OK(UserInterface& ui);
  void Cancel() { Result = kCancel; }

  int Result = kCancel;
  BaseMapKind Kind = BaseMapKind::Unknown;
  // The row as edited: Show, Color, ColorField, UseColorField, TextField.
  BaseMapRow Row;
  // The attribute names offered for ColorField and TextField ("__NONE__" first).
  std::vector<std::string> Fields;
  // "Build pyramids": only for images.
  bool BuildPyramids = false;
  bool PyramidsOffered() const { return Kind == BaseMapKind::Raster; }
};

// ---------------------------------------------------------------------------

class ViewShape : public DialogModel {
 public:
  static constexpr const char* kName = "ViewShape";
  // The caption is this text and the file's name.
  static constexpr const char* kTitlePrefix = "Shapefile Attributes - ";
  // At most this many records are read for the table.
  static constexpr std::size_t kMaxRecords = 5000;
  std::string DialogName() const override { return kName; }

  // Reads the attribute table of the shapefile; throws Error naming the file when
  // it cannot be read.
  void Load(const std::string& shapefile);
  std::string Title() const;

  std::string MapName;
  std::vector<std::string> Columns;
  std::vector<std::vector<std::string>> Rows;
  // Records in the file (Rows may hold fewer, at most kMaxRecords).
  std::int64_t RecordCount = 0;
  std::string GeometryType;
  int Result = 1;
};

// ---------------------------------------------------------------------------

class ViewGraphics : public DialogModel {
 public:
  static constexpr const char* kName = "ViewGraphics";
  static constexpr const char* kTitlePrefix = "Graphics Layers - ";
  std::string DialogName() const override { return kName; }

  struct Entry {
    std::string Name;     // layer or band
    std::string Details;  // what it holds
  };

  // Reads what the file holds: for a CAD file its layers with their geometry and
  // number of features, for an image its size, bands and georeference. Throws
  // Error naming the file when it cannot be read.
  void Load(const std::string& mapName);
  std::string Title() const;

  std::string MapName;
  BaseMapKind Kind = BaseMapKind::Unknown;
  std::string Summary;
  std::vector<Entry> Entries;
  int Result = 1;
};

// ---------------------------------------------------------------------------

class MapBrowser : public DialogModel {
 public:
  static constexpr const char* kName = "MapBrowser";
  static constexpr const char* kTitle = "TARNO Base Map Browser";
  static constexpr const char* kRemoveTitle = "Remove Map";
  static constexpr const char* kNoSelectionTitle = "No Map Selected";
  static constexpr const char* kNoSelectionText = "Please select a map in the list first.";
  static constexpr const char* kNothingToViewTitle = "Nothing to View";
  static constexpr const char* kViewErrorTitle = "Cannot View Map";
  std::string DialogName() const override { return kName; }

  MapBrowser(std::string projectFile, const BaseMapOpeners& openers)
      : projectFile_(std::move(projectFile)), openers_(&openers) {}

  // Reads the list of maps of the project.
  void Load();

  // "Add Map...": the select dialog and the catalogue's checks.
  bool AddMaps(UserInterface& ui);
  // "Remove": asks, then removes the selected map (and its labels) from the list.
  bool Remove(UserInterface& ui);
  // "Options...": the options of the selected map; OK writes them (and builds the
  // pyramids when asked).
  bool Options(UserInterface& ui);
  // "View...": the attribute table of a shapefile, the layers of a CAD file or an
  // image, the header of a BBM map ("BBM File Header"); a file that cannot be read
  // gives "Cannot View Map".
  void View(UserInterface& ui);
  void Close() { Result = 1; }

  // The lines of the list: the file's name, its kind, "shown" or "hidden".
  std::vector<std::string> ListLines() const;

  std::vector<BaseMapRow> Maps;
  int Selected = -1;  // index into Maps, -1 for none
  // The list or the look of a map changed: the map is to be set up again.
  bool Changed = false;
  int Result = 1;
  const std::string& ProjectFile() const { return projectFile_; }

  // The models shown by Options and View, kept for the views and the tests.
  BaseMapBrowserOptions OptionsDialog;
  ViewShape ShapeDialog;
  ViewGraphics GraphicsDialog;

 private:
  const BaseMapRow* SelectedMap(UserInterface& ui);
  std::string projectFile_;
  const BaseMapOpeners* openers_;
};

// The attribute names of a shapefile's table; empty when it has none or cannot be
// read.
std::vector<std::string> ShapeAttributeNames(const std::string& shapefile);

}  // namespace tarno
