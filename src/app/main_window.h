// The main window of the desktop program: the menus, the toolbar, the status bar
// and the map. It only shows: the session of the open project, the map state, the
// redraw and navigation, the solution and the commands are the ShellController's
// (app/shell/shell_controller.h), which the window serves as its ShellHost. A
// triggered QAction runs its key in the controller's CommandRegistry.
//
// Every question and message goes through one port: the Qt port with the dialog
// views in the program, any other port (a quiet or scripted one) in the tests and
// for screenshots. Which entries are available is decided by MenuModel.
#pragma once

#include <QMainWindow>
#include <map>
#include <memory>
#include <optional>
#include <string>

#include "app/app_port.h"
#include "app/menu_model.h"
#include "app/shell/shell_controller.h"
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
class MapView;
class MapWidget;
class QtMapSurface;
class QtUserInterface;

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


class MainWindow : public QMainWindow, public ShellHost {
  Q_OBJECT

 public:
  using Options = MainWindowOptions;

  explicit MainWindow(Options options = Options(), QWidget* parent = nullptr);
  ~MainWindow() override;

  // The start-up after the window is shown: the project of the command line (its
  // quotes removed), or the Welcome dialog when the settings ask for it.
  void StartUp(const std::string& commandLine);

  // The controller behind the window: the session, the state and the commands.
  ShellController& Shell() { return *shell_; }

  // The operations of the menus, the controller's (see shell_controller.h).
  bool OpenProject(const std::string& path) { return shell_->OpenProject(path); }
  bool CloseProject() { return shell_->CloseProject(); }
  SolveOutcome Solve(bool prompt = true) { return shell_->Solve(prompt); }
  SolveOutcome ContinueSolve() { return shell_->ContinueSolve(); }
  bool InvalidateSolution(bool ask) { return shell_->InvalidateSolution(ask); }
  void ModelSettingsCommand() { shell_->ModelSettingsCommand(); }
  void GuiOptionsCommand() { shell_->GuiOptionsCommand(); }
  void ModelSizeCommand() { shell_->ModelSizeCommand(); }
  void SetTimeCommand() { shell_->SetTimeCommand(); }
  void InspectorSettingsCommand() { shell_->InspectorSettingsCommand(); }
  void SolverIntegrityCheckCommand() { shell_->SolverIntegrityCheckCommand(); }
  InspectReport InspectAt(double x, double y) { return shell_->InspectAt(x, y); }
  void TraceStreamlineAt(double x, double y) { shell_->TraceStreamlineAt(x, y); }
  InspectorSettings& Inspector() { return shell_->Inspector(); }
  void ShowRunFile(const std::string& key) { shell_->ShowRunFile(key); }
  void Zoom(int action, double x1 = 0, double y1 = 0, double x2 = 0, double y2 = 0) {
    shell_->Zoom(action, x1, y1, x2, y2);
  }

  // Lays the map out at a fixed size in pixels and redraws it (the screenshot);
  // the picture is then MapImage().
  void RenderMapAt(int width, int height);
  // The visible picture.
  QImage MapImage();

  // The status bar: Activity, Feedback, the note (units), X and Y.
  void Note(const std::string& text1, const std::string& text2) { shell_->Note(text1, text2); }
  QString PanelText(int panel) const;

  // Access for the program and the tests.
  QAction* Action(const std::string& menuKey) const;
  QAction* ToolbarAction(const std::string& key) const;
  QToolBar* Toolbar() const { return toolbar_; }
  MapWidget* Map() const { return mapWidget_; }
  MapView& View() { return shell_->View(); }
  // The map editor: the mouse state machine the map widget forwards to.
  MapEditor& Editor() { return shell_->Editor(); }
  ProjectSession& Session() { return shell_->Session(); }
  MapState& State() { return shell_->State(); }
  SolutionState& Solution() { return shell_->Solution(); }
  ModelSettings& Settings() { return shell_->Settings(); }
  ForwardingUserInterface& Port() { return shell_->Port(); }
  MenuState CurrentMenuState() const { return shell_->CurrentMenuState(); }
  const SolveReport& LastSolve() const { return shell_->LastSolve(); }

  // The file of an example project ("example.trn"): beside the program, else in
  // examples/ of the source tree; empty when neither exists.
  std::string ExampleFile(const std::string& name) const { return shell_->ExampleFile(name); }
  // The folder of the help pages: "help" beside the program, else docs/help of the
  // source tree; empty when neither holds them.
  std::string HelpFolder() const;
  // Shows a help target ("page.md#anchor", empty: the contents) in the one help
  // window; a missing page is reported and gives false.
  bool ShowHelpTopic(const std::string& target);
  // The help window once it has been opened (null before).
  HelpWindow* Help() const { return help_; }

  // ShellHost.
  void CloseWindow() override { close(); }
  void CopyMapToClipboard() override;
  void RepaintMap() override;
  void ReportPointer() override;
  void ApplyMenus(const MenuState& state, bool layerMenu) override;
  void ShowToolbar(bool visible) override;
  void OpenHelp(const std::string& target) override { ShowHelpTopic(target); }
  void SetMapCursor(MapCursor cursor) override;
  void SetMouseEnabled(bool enabled) override;
  void SetCaption(const std::string& caption) override;
  void SetStatusText(int panel, const std::string& text) override;
  std::string StatusText(int panel) const override;
  void LayoutSurfaces() override;
  std::pair<int, int> MapSize() const override;
  void ProcessEvents() override;
  void StoreGuiOptions(const DisplayOptions& options) override;

 protected:
  void closeEvent(QCloseEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void BuildMenus();
  void BuildToolbar();
  void BuildStatusBar();
  void LoadGuiOptions();
  void SaveStartupSettings();
  std::unique_ptr<QSettings> OpenSettings() const;

  Options options_;
  std::unique_ptr<QtUserInterface> qtUi_;
  std::unique_ptr<QtMapSurface> map_, map2_;

  MapWidget* mapWidget_ = nullptr;
  QToolBar* toolbar_ = nullptr;
  HelpWindow* help_ = nullptr;
  QLabel* panels_[5] = {};
  std::map<std::string, QAction*> actions_;
  std::map<std::string, QMenu*> menus_;
  std::map<std::string, QAction*> buttons_;

  bool screenWatched_ = false;
  std::optional<std::pair<int, int>> fixedMapSize_;

  // Last: the controller closes a project still open while the rest stands.
  std::unique_ptr<ShellController> shell_;
};

}  // namespace tarno
