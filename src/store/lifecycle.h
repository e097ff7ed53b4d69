// The project life cycle: the road from no project to an open project and back.
//
// ProjectSession holds the state of the open project (at most one at a time) and
// carries out the project operations of the File menu: new, open, save as, close,
// the project settings and the unit change. Every message, question, file dialog and
// modal dialog goes through the UserInterface; the window work that the desktop
// program does around these operations (menus, toolbar, captions, layers, the map)
// goes through SessionHooks, whose defaults do nothing, so that the batch program and
// the tests run the same operations without a window.
//
// The session never changes the process's current directory: the directory of the
// solver files is ProjectSettings::TARNOPath.
#pragma once

#include <functional>
#include <string>

#include "core/ui_port.h"
#include "store/dialogs.h"
#include "store/undo_history.h"

namespace tarno {

class ProjectSession;

// The map window as stored in the Model row (WINDOWX1, WINDOWX2, WINDOWY1, WINDOWY2).
struct StoredWindow {
  double x1 = 0, x2 = 0, y1 = 0, y2 = 0;
};

// The window work around the project operations. The desktop program overrides what
// it needs; every default does nothing.
class SessionHooks {
 public:
  virtual ~SessionHooks() = default;

  // Menus and toolbar. TurnOffMenus leaves only the File and Help menus.
  virtual void TurnOffMenus() {}
  virtual void TurnOnMenus() {}
  virtual void SetUpToolbar() {}
  // The layer menu, disabled while the file dialog of FileOpenProject is up.
  virtual void EnableLayerMenu(bool enabled) {}
  // The entries that need an open project (import entries, solver integrity check,
  // the solve, results table, run files and statistics commands, the File entries
  // 3 to 6).
  virtual void EnableProjectCommands(bool enabled) {}
  // The hydrologic unit entries of the View menu: enabled and checked only where the
  // project has a far-field boundary, a near-field hydrologic unit.
  virtual void SetHydrologicUnitEntries(bool farField, bool nearField) {}
  // The editor grid's menu checks.
  virtual void SetEditGridChecks(bool show, bool snap) {}
  // The main window's caption.
  virtual void SetCaption(const std::string& caption) {}

  // Map and selection.
  virtual void SetUpLayers() {}
  virtual void ElemTurnOffSelection() {}
  virtual void ZoomActions(bool first) {}
  virtual void EnableMouse() {}
  virtual void DisableMouse() {}
  // Clears the maps' displays, the pathline state and the windows that belong to
  // the open project (the conjunctive window, the inspector, the dialogs holding
  // table cursors).
  virtual void ClearProjectViews() {}

  // Checks run on opening. These are later work (labels and gradient, the integrity
  // check and repair of the file, the model extents): until they exist the defaults
  // do nothing.
  virtual void CheckGradient(ProjectSession& session) {}
  virtual void DBIntegrity(ProjectSession& session) {}
  // May widen `window` so that it covers the model's extents.
  virtual void ModelCheckExtents(ProjectSession& session, StoredWindow& window) {}
  // The unit designations of the open project changed: a solution computed under
  // the old ones no longer fits the map. Called before the session derives the
  // units' values anew (SetUpLayers, ModelCheckExtents, ZoomActions).
  virtual void UnitsChanged() {}
};

// The fixed texts of the life cycle.
namespace lifecycle_text {
inline constexpr const char* kProductTitle = "TARNO";
inline constexpr const char* kProjectFilter = "Project Database Files (*.trn)|*.trn";
inline constexpr const char* kNewProjectTitle = "Create New Project Database";
inline constexpr const char* kOpenProjectTitle = "Open Project Database";
inline constexpr const char* kSaveAsTitle = "Save As";
inline constexpr const char* kSelectBasemapTitle = "Select Basemap File";
inline constexpr const char* kFileExistsTitle = "File Exists";
inline constexpr const char* kFileExistsSuffix = " already exists -- should I overwrite it?";
inline constexpr const char* kAbortedTitle = "Aborted";
inline constexpr const char* kAbortedText = "New file creation aborted";
inline constexpr const char* kFileErrorTitle = "File Error";
inline constexpr const char* kReadOnlyTitle = "File is Read-only!";
inline constexpr const char* kNoSuchFileTitle = "No Such File";
inline constexpr const char* kNoSuchFileText =
    "The specified project database does not exist.  Create a new database?";
inline constexpr const char* kVersionUpdateTitle = "Version Update";
inline constexpr const char* kMustUpdateTitle = "Must update";
inline constexpr const char* kMustUpdateText =
    "Can't open this project database unless it is updated.";
inline constexpr const char* kNewerVersionTitle = "Can't open database";
inline constexpr const char* kCannotUpgradeTitle = "Cannot Update";
inline constexpr const char* kBasePathTitle = "TARNO";
inline constexpr const char* kMissingBBMTitle = "Can't Open BBM Basemap File";
inline constexpr const char* kPleaseNoteTitle = "Please Note";
inline constexpr const char* kRestoreTitle = "Restore Project";
inline constexpr const char* kSelectActivity = "Select";
inline constexpr const char* kSelectFeedback = "Click mouse button to select element";
inline constexpr const char* kCompactingText = "Compacting the project database...";
}  // namespace lifecycle_text

// The lines of the messages with several lines.
const std::vector<std::string>& FileErrorLines();
const std::vector<std::string>& ReadOnlyLines();
const std::vector<std::string>& VersionUpdateLines();
const std::vector<std::string>& NewerVersionLines();
const std::vector<std::string>& BasePathQuestionLines();
std::vector<std::string> MissingBBMLines(const std::string& mapName);
const std::vector<std::string>& PleaseNoteLines();
std::vector<std::string> CannotUpgradeLines(const std::string& path, int version);

// Removes a pair of double quotes around a command-line path: first a closing quote
// is cut, then an opening one.
std::string StripCommandLineQuotes(const std::string& text);

// Whether the file at `path` may not be written by this user: no write permission
// bit at all (mode 0444, even for the superuser) or no write access.
bool IsReadOnlyFile(const std::string& path);

// The snapping step of the editor grid: 10 raised to Int(log(spacing) / log(10)),
// 1 for a spacing that is not positive.
double EditGridStep(double spacing);

class ProjectSession {
 public:
  // The schema version this program reads and writes.
  static constexpr int kCurrentVersion = 123;

  // `applicationDirectory`: where the program's own files are; empty means the
  // directory of the running executable.
  ProjectSession(UserInterface& ui, SessionHooks& hooks, std::string applicationDirectory = {});
  ProjectSession(const ProjectSession&) = delete;
  ProjectSession& operator=(const ProjectSession&) = delete;
  // Closes (and compacts) a project that is still open.
  ~ProjectSession();

  // The operations. Each runs inside the general error trap under its own name and
  // returns whether it reached its end (for FileOpenProject and FileNewProject:
  // whether a project is open afterwards).
  bool FileNewProject();
  bool FileOpenProject(const std::string& path, bool fromDialog = false, bool isNew = false,
                       bool makeBaseName = false);
  bool FileSaveAs();
  bool FileCloseProject();
  bool CloseAll();
  bool FileProjectSettings();
  // The "Change Units..." button of the settings dialog.
  bool UnitChange();

  // The schema upgrade of an older file. Until the upgrade chain exists the session
  // answers a Yes to "Version Update" with a message that this program cannot yet
  // update the file, which is left untouched. A later upgrader is plugged in here:
  // it is given the path and the stored version and returns whether the file now
  // has the current version.
  using Upgrader = std::function<bool(const std::string& path, int version)>;
  void SetUpgrader(Upgrader upgrader) { upgrader_ = std::move(upgrader); }

  // The base name used for a new project; by default the one of the present
  // date and time. Tests fix it.
  void SetBaseNameSource(std::function<std::string()> source) { baseNameSource_ = std::move(source); }

  // State.
  bool ProjectOpen() const { return projectOpen_; }
  const std::string& ProjectDirectory() const { return projectDirectory_; }
  const std::string& DefaultProjectDirectory() const { return defaultProjectDirectory_; }
  const std::string& ApplicationDataDirectory() const { return applicationDataDirectory_; }
  const std::string& ApplicationDirectory() const { return applicationDirectory_; }
  const std::string& Caption() const { return caption_; }
  // " m" or " ft": the unit text of the status bar.
  const std::string& UnitsText() const { return unitsText_; }
  const StoredWindow& Window() const { return window_; }
  double MarginLeft() const { return marginLeft_; }
  double MarginRight() const { return marginRight_; }
  double MarginTop() const { return marginTop_; }
  double MarginBottom() const { return marginBottom_; }
  bool MarginDrawBox() const { return marginDrawBox_; }
  double EditGridSpacing() const { return editGridSpacing_; }
  bool EditGridShow() const { return editGridShow_; }
  bool EditGridSnap() const { return editGridSnap_; }
  double EditGridSnapStep() const { return EditGridStep(editGridSpacing_); }
  bool StoreMatrixOnDisk() const { return storeMatrixOnDisk_; }
  bool FarFieldBoundaryPresent() const { return farField_; }
  bool NearFieldUnitPresent() const { return nearField_; }

  // The edit history of the open project: attached to its file at open, cleared
  // when it closes (Undo and Redo last while the project stays open).
  UndoHistory& History() { return history_; }
  const UndoHistory& History() const { return history_; }

  ProjectSettings& Settings() { return settings_; }
  NewDatabaseWizard& Wizard() { return wizard_; }
  UserInterface& UI() { return ui_; }

 private:
  bool OpenProjectBody(std::string path, bool fromDialog, bool isNew, bool makeBaseName);
  bool CheckFileBeforeOpening(const std::string& path, bool& isNew);
  bool AskFileExists(const std::string& path);
  bool OpenCursors(const std::string& path);
  void ReadModel(const std::string& path);
  // After a change of the unit designations: everything the open session derived
  // from them (model settings, unit text, model frame) is derived anew, as on
  // opening, so that the project need not be reopened.
  void ApplyUnitChange();
  void RememberDirectory(const std::string& key, const std::string& file);
  std::string RememberedDirectory(const std::string& key);
  bool CloseAllBody();
  void CloseProjectBody();
  void GiveCopyItsOwnBaseName(const std::string& copy, const std::string& original,
                              const std::string& originalBase, const std::string& originalPath);

  UserInterface& ui_;
  SessionHooks& hooks_;
  ProjectSettings settings_;
  NewDatabaseWizard wizard_;
  Upgrader upgrader_;
  std::function<std::string()> baseNameSource_;
  UndoHistory history_;

  bool projectOpen_ = false;
  std::string applicationDirectory_;
  std::string projectDirectory_;
  std::string defaultProjectDirectory_;
  std::string applicationDataDirectory_;
  std::string caption_;
  std::string unitsText_;
  StoredWindow window_;
  double marginLeft_ = 1, marginRight_ = 1, marginTop_ = 1, marginBottom_ = 1;
  bool marginDrawBox_ = true;
  double editGridSpacing_ = 10;
  bool editGridShow_ = false;
  bool editGridSnap_ = false;
  bool storeMatrixOnDisk_ = false;
  bool farField_ = false;
  bool nearField_ = false;
};

}  // namespace tarno
