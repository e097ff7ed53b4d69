// The main window of the desktop program: the menus, the toolbar, the status bar
// and the map, and the session of the open project.
//
// The window owns the session (ProjectSession, with this window as its hooks), the
// map state, the two map surfaces, the redraw pipeline (MapView) and the navigation
// (Navigator). Every question and message goes through one port: the Qt port with
// the dialog views in the program, any other port (a quiet or scripted one) in the
// tests and for screenshots. Which entries are available is decided by MenuModel.
#pragma once

#include <QMainWindow>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "app/app_port.h"
#include "app/menu_model.h"
#include "display/map_state.h"
#include "display/vgraph.h"
#include "solver/command_file.h"
#include "solver/inspect.h"
#include "solver/model_settings.h"
#include "solver/solve_controller.h"
#include "store/lifecycle.h"

class QAction;
class QLabel;
class QMenu;
class QSettings;
class QToolBar;

namespace tarno {

class HelpWindow;
class EditorHost;
class MapEditor;
class MapView;
class MapWidget;
class Navigator;
class QtMapSurface;
class QtUserInterface;
class ProcessWaiter;

// The per-user settings of the program: organisation "TARNO2K", group "Startup".
inline constexpr const char* kSettingsOrganisation = "TARNO2K";
inline constexpr const char* kSettingsApplication = "TARNO";
inline constexpr const char* kStartupGroup = "Startup";
inline constexpr const char* kGuiOptionsGroup = "GUIOptions";

struct MainWindowOptions {
  // The port for questions and messages; null: the Qt port with every dialog view.
  UserInterface* ui = nullptr;
  // Where the program's own files are (the examples); empty: the executable's.
  std::string applicationDirectory;
  // Where tarno1 and contour stand; empty: TARNO_PROGRAM_DIR or the executable's.
  std::string programDirectory;
  // Read and write the per-user settings (window, toolbar, Welcome, GUI options).
  bool useSettings = true;
  // A settings file of its own (INI) instead of the per-user store; the tests
  // keep theirs apart so.
  std::string settingsFile;
};


class MainWindow : public QMainWindow, public SessionHooks {
  Q_OBJECT

 public:
  using Options = MainWindowOptions;

  explicit MainWindow(Options options = Options(), QWidget* parent = nullptr);
  ~MainWindow() override;

  // The start-up after the window is shown: the project of the command line (its
  // quotes removed), or the Welcome dialog when the settings ask for it.
  void StartUp(const std::string& commandLine);

  // The operations of the menus, each in the general error trap.
  bool OpenProject(const std::string& path);
  bool CloseProject();
  // Sol&ve (and "Run!"); `prompt`: ask when a valid solution is present.
  SolveOutcome Solve(bool prompt = true);
  SolveOutcome ContinueSolve();
  // Removes the present solution after a change of the model (asking first with
  // `ask`): its files, flags, result rows and its picture. True when removed.
  bool InvalidateSolution(bool ask);
  void ModelSettingsCommand();
  void GuiOptionsCommand();
  void ModelSizeCommand();
  // Model menu "Time...": the time of evaluation, then a regrid.
  void SetTimeCommand();
  // Tools menu: the Instant Inspector's settings, and the switch of the integrity check.
  void InspectorSettingsCommand();
  void SolverIntegrityCheckCommand();
  // The questions of a Shift-click (Shift+Ctrl for the streamline) at a map point,
  // for the map's mouse handling: the "Model Results" box, one streamline drawn
  // with the pathlines.
  InspectReport InspectAt(double x, double y);
  void TraceStreamlineAt(double x, double y);
  InspectorSettings& Inspector() { return inspector_; }
  void ShowRunFile(const std::string& key);
  // ZoomActions through the error trap, followed by a repaint of the map.
  void Zoom(int action, double x1 = 0, double y1 = 0, double x2 = 0, double y2 = 0);

  // Lays the map out at a fixed size in pixels and redraws it (the screenshot);
  // the picture is then MapImage().
  void RenderMapAt(int width, int height);
  // The visible picture.
  QImage MapImage();

  // The status bar: Activity, Feedback, the note (units), X and Y.
  void Note(const std::string& text1, const std::string& text2);
  QString PanelText(int panel) const;

  // Access for the program and the tests.
  QAction* Action(const std::string& menuKey) const;
  QAction* ToolbarAction(const std::string& key) const;
  QToolBar* Toolbar() const { return toolbar_; }
  MapWidget* Map() const { return mapWidget_; }
  // The map editor: the mouse state machine the map widget forwards to.
  MapEditor& Editor() { return *editor_; }
  MapView& View() { return *view_; }
  ProjectSession& Session() { return *session_; }
  MapState& State() { return state_; }
  SolutionState& Solution() { return solution_; }
  ModelSettings& Settings() { return settings_; }
  ForwardingUserInterface& Port() { return port_; }
  MenuState CurrentMenuState() const;
  const SolveReport& LastSolve() const { return lastSolve_; }

  // The file of an example project ("example.trn"): beside the program, else in
  // examples/ of the source tree; empty when neither exists.
  std::string ExampleFile(const std::string& name) const;
  // The folder of the help pages: "help" beside the program, else docs/help of the
  // source tree; empty when neither holds them.
  std::string HelpFolder() const;
  // Shows a help target ("page.md#anchor", empty: the contents) in the one help
  // window; a missing page is reported and gives false.
  bool ShowHelpTopic(const std::string& target);
  // The help window once it has been opened (null before).
  HelpWindow* Help() const { return help_; }

  // SessionHooks.
  void TurnOffMenus() override;
  void TurnOnMenus() override;
  void SetUpToolbar() override;
  void EnableLayerMenu(bool enabled) override;
  void EnableProjectCommands(bool enabled) override;
  void SetHydrologicUnitEntries(bool farField, bool nearField) override;
  void SetEditGridChecks(bool show, bool snap) override;
  void SetCaption(const std::string& caption) override;
  void SetUpLayers() override;
  void ElemTurnOffSelection() override;
  void ZoomActions(bool first) override;
  void EnableMouse() override;
  void DisableMouse() override;
  void ClearProjectViews() override;
  void ModelCheckExtents(ProjectSession& session, StoredWindow& window) override;
  void UnitsChanged() override;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  friend class WindowEditorHost;
  void BuildMenus();
  void BuildToolbar();
  void BuildStatusBar();
  void Dispatch(const std::string& key);
  void ToolbarClick(const std::string& key);
  void ToggleSwitch(const std::string& key);
  void ApplyMenus();
  void SyncSolutionView();
  void ShowSolutionNote();
  void LayoutSurfaces();
  void LoadGuiOptions();
  void SaveStartupSettings();
  void OpenHelp(const std::string& key);
  void About();
  void AfterMouseAction();
  void ShowWelcome();
  SolveOutcome RunSolve(SolveOptions options);
  // The solve controller's view of this window (its state, settings, port, menus
  // and redraw), waiting for programs with `waiter`.
  SolveContext SolveContextFor(ProcessWaiter* waiter);
  std::string ProgramDirectory() const;
  std::unique_ptr<QSettings> OpenSettings() const;

  Options options_;
  std::unique_ptr<QtUserInterface> qtUi_;
  ForwardingUserInterface port_;
  MapState state_;
  VGraphGDI layer_;
  std::unique_ptr<QtMapSurface> map_, map2_;
  std::unique_ptr<MapView> view_;
  std::unique_ptr<Navigator> nav_;
  std::unique_ptr<EditorHost> editorHost_;
  std::unique_ptr<MapEditor> editor_;
  ModelSettings settings_;
  SolutionState solution_;
  SolveReport lastSolve_;
  InspectorSettings inspector_;

  MapWidget* mapWidget_ = nullptr;
  QToolBar* toolbar_ = nullptr;
  HelpWindow* help_ = nullptr;
  QLabel* panels_[5] = {};
  std::map<std::string, QAction*> actions_;
  std::map<std::string, QMenu*> menus_;
  std::map<std::string, QAction*> buttons_;

  bool mouseOperation_ = false;
  bool solving_ = false;
  bool closing_ = false;
  bool layerMenuEnabled_ = true;
  bool runFiles_ = true;
  bool screenWatched_ = false;
  std::optional<std::pair<int, int>> fixedMapSize_;
  std::string unitsText_;

  // Last: the session closes a project still open while the rest stands.
  std::unique_ptr<ProjectSession> session_;
};

}  // namespace tarno
