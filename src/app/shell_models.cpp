// The shell's dialog models: the GUI options (the map's pens from the Model row and
// the per-user display options), and the model settings as a dialog bound to the
// project file.
#include "app/shell_models.h"

#include "basemaps/catalogue.h"
#include "core/error.h"
#include "core/format.h"
#include "core/rounding.h"
#include "core/text.h"
#include "store/database.h"
#include "store/dialogs.h"

namespace tarno {

namespace {

// A line type as stored: an unknown or empty text falls back to the default of its pen.
std::string KnownLineType(const std::string& stored, const char* fallback) {
  for (const char* name : GUIOptions::kLineTypes) {
    if (stored == name) return stored;
  }
  return fallback;
}

}  // namespace

void GUIOptions::init(Database& db) {
  projectFile = db.Path();
  Statement st = db.Prepare("select * from model");
  if (st.Step()) {
    ContourWidth = static_cast<int>(st.GetInt64("ContourLineWidth"));
    ContourType = KnownLineType(st.GetText("ContourLineType"), "DOT");
    ContourColor = static_cast<Colour>(st.GetInt64("ContourLineColor"));
    PathlineWidth = static_cast<int>(st.GetInt64("PathlineLineWidth"));
    PathlineType = KnownLineType(st.GetText("PathlineLineType"), "SOLID");
    PathlineColor = static_cast<Colour>(st.GetInt64("PathlineLineColor"));
    UnitText = tarno::UnitText(st.GetBool("BasemapMeters"));
  }
  // The text fields show the per-user values the main window handed in.
  DataVertexTolerance = GeneralNumber(VertexTolerance);
  DataLinesinkShadow = GeneralNumber(LinesinkShadow);
  DataHazeLevel = std::to_string(HazeLevel);
}

void GUIOptions::LoadDefaults() {
  ContourType = "DOT";
  PathlineType = "SOLID";
}

bool GUIOptions::OK(UserInterface& ui, Database& db) {
  const double haze = Val(DataHazeLevel);
  if (haze < 1 || haze > 5) {
    ui.MessageBox("Invalid Data", {"Invalid Haze Level!", "Please enter a new value."},
                  Buttons::OK, Icon::Exclamation);
    return false;
  }
  HazeLevel = CInt(haze);
  VertexTolerance = Val(DataVertexTolerance);
  LinesinkShadow = Val(DataLinesinkShadow);

  Statement st = db.Prepare(
      "update Model set ContourLineWidth=?, ContourLineType=?, ContourLineColor=?, "
      "PathlineLineWidth=?, PathlineLineType=?, PathlineLineColor=?");
  st.Bind(1, ContourWidth)
      .Bind(2, ContourType)
      .Bind(3, static_cast<std::int64_t>(ContourColor))
      .Bind(4, PathlineWidth)
      .Bind(5, PathlineType)
      .Bind(6, static_cast<std::int64_t>(PathlineColor));
  st.Run();
  Result = 1;
  return true;
}

bool GUIOptions::OK(UserInterface& ui) {
  if (projectFile.empty()) throw Error("The GUI options were not read from a project");
  Database db = Database::Open(projectFile);
  return OK(ui, db);
}

int GUIOptions::PenStyleOf(const std::string& lineType) {
  for (int i = 0; i < 5; ++i) {
    if (lineType == kLineTypes[i]) return i;
  }
  return 0;
}

void GUIOptions::ApplyTo(DisplayOptions& options) const {
  options.HazeLevel = HazeLevel;
  options.HazeColor = HazeColor;
  options.VertexTolerance = VertexTolerance;
  options.LinesinkShadow = LinesinkShadow;
  options.ContourType = PenStyleOf(ContourType);
  options.PathlineType = PenStyleOf(PathlineType);
  options.ContourWidth = ContourWidth;
  options.PathlineWidth = PathlineWidth;
  options.ContourColor = ContourColor;
  options.PathlineColor = PathlineColor;
}

bool ModelSettingsDialog::OK(UserInterface& ui) {
  Database db = Database::Open(projectFile);
  last = settings.Ok(db, ui);
  if (!last.accepted) return false;
  Result = 1;
  return true;
}

namespace {

void ReadMapList(ProjectSettings& settings) {
  settings.BaseMaps.clear();
  for (const auto& row : ReadBaseMaps(settings.DBName)) settings.BaseMaps.push_back(row.MapName);
  settings.Reload = true;
  settings.MustRedraw = true;
}

}  // namespace

bool ProjectSettingsAddMap(ProjectSettings& settings, UserInterface& ui,
                           const BaseMapOpeners& openers) {
  if (!SelectAndAddMaps(settings.DBName, ui, openers)) return false;
  ReadMapList(settings);
  return true;
}

bool ProjectSettingsRemoveMap(ProjectSettings& settings, UserInterface& ui, int index) {
  if (index < 0 || index >= static_cast<int>(settings.BaseMaps.size())) return false;
  const std::string name = settings.BaseMaps[static_cast<std::size_t>(index)];
  if (!ui.Question(kRemoveMapTitle, {"Remove the map " + name + " from the project?",
                                     "The file itself is not deleted."}))
    return false;
  {
    Database db = Database::Open(settings.DBName);
    RemoveBaseMap(db, name);
  }
  ReadMapList(settings);
  return true;
}

}  // namespace tarno
