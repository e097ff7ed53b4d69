// The dialog models of the application's frame, without a window: the GUI options,
// the Welcome dialog and the model settings dialog (the settings' own model,
// solver/model_settings.h, with the project it writes to).
#pragma once

#include <string>

#include "core/ui_port.h"
#include "display/map_state.h"
#include "solver/model_settings.h"
#include "store/dialogs.h"

namespace tarno {

class Database;
struct BaseMapOpeners;

// The base maps of the project settings dialog. "Add Map...": the catalogue's
// select dialog and checks on the dialog's project; "Remove Map": a question, then
// the map's row goes. Either writes at once (Cancel of the dialog does not undo
// it); when the list changed, the dialog's list is read again and Reload and
// MustRedraw are raised so that the map is set up anew. True when it changed.
bool ProjectSettingsAddMap(ProjectSettings& settings, UserInterface& ui,
                           const BaseMapOpeners& openers);
bool ProjectSettingsRemoveMap(ProjectSettings& settings, UserInterface& ui, int index);
inline constexpr const char* kRemoveMapTitle = "Remove Map";

class GUIOptions : public DialogModel {
 public:
  static constexpr const char* kName = "GUIOptions";
  static constexpr const char* kTitle = "GUI Options                                   (F1 for Help)";
  static constexpr const char* kLineTypes[5] = {"SOLID", "DASH", "DOT", "DASH-DOT", "DASH-DOT-DOT"};
  std::string DialogName() const override { return kName; }

  // Reads the contour and pathline pens from the Model row ("select * from model")
  // and the unit text ("Meters" or "Feet" by BasemapMeters), and fills the text
  // fields from the per-user properties (haze, tolerance, shadow), which the main
  // window sets from its own settings before and takes back after OK.
  void init(Database& db);
  // "Load Defaults": contour line type "DOT", pathline type "SOLID".
  void LoadDefaults();
  // OK: a haze level outside 1 to 5 gives "Invalid Data" and the dialog stays
  // (false); otherwise the fields are taken, the pens written to the Model row and
  // Result is 1.
  bool OK(UserInterface& ui, Database& db);
  // The same on the project file that init read (projectFile); the dialog's view
  // presses this one.
  bool OK(UserInterface& ui);
  void Cancel() { Result = 2; }

  // The pen style code of a line type name (SOLID 0 ... DASH-DOT-DOT 4); 0 for an
  // unknown name.
  static int PenStyleOf(const std::string& lineType);
  // The options the map draws with.
  void ApplyTo(DisplayOptions& options) const;

  int Result = 2;
  std::string UnitText = "Meters";
  // The project file init read the pens from.
  std::string projectFile;
  // Properties.
  int HazeLevel = 3;
  Colour HazeColor = Rgb(255, 255, 255);
  double VertexTolerance = 0.01;
  double LinesinkShadow = 2.0;
  std::string ContourType = "DOT";
  std::string PathlineType = "SOLID";
  int ContourWidth = 1;
  int PathlineWidth = 1;
  Colour ContourColor = 0x800000;
  Colour PathlineColor = 0x000080;
  bool SuppressTranslation = false;
  // The text fields as typed.
  std::string DataVertexTolerance = "0.01";
  std::string DataLinesinkShadow = "2";
  std::string DataHazeLevel = "3";
};

class Welcome : public DialogModel {
 public:
  static constexpr const char* kName = "Welcome";
  static constexpr const char* kTitle = "Welcome to TARNO";
  std::string DialogName() const override { return kName; }

  // 1 start TARNO (no project), 2 the first example, 3 the second.
  int Result = 1;
  // "Don't show this dialog box in the future".
  bool chkShowBox = false;
};

// The model settings as a modal dialog: the settings model and the project file its
// OK writes to.
class ModelSettingsDialog : public DialogModel {
 public:
  static constexpr const char* kName = "ModelSettings";
  static constexpr const char* kTitle = "Model Settings                          (F1 for Help)";
  ModelSettingsDialog(ModelSettings& settings, std::string projectFile)
      : settings(settings), projectFile(std::move(projectFile)) {}
  std::string DialogName() const override { return kName; }

  // Opens the project, checks and writes; true when accepted (Result 1).
  bool OK(UserInterface& ui);
  void Cancel() { Result = 2; }

  ModelSettings& settings;
  std::string projectFile;
  int Result = 2;
  ModelSettings::OkResult last;
};

}  // namespace tarno
