// The desktop program's session without widgets: what the main window did besides
// showing. The controller owns the open project's session (and is its hooks), the
// map state and the redraw over two map surfaces, navigation, the model settings,
// the state of the solution and the solve, and the commands of the menus and the
// toolbar in a CommandRegistry. The window (or a test) implements ShellHost: the
// few things only a window can do, such as closing itself, the clipboard, the
// cursor, the enabling of its QActions and pumping its events while a program runs.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "app/app_port.h"
#include "app/menu_model.h"
#include "app/shell/command_registry.h"
#include "app/shell/map_editor.h"
#include "basemaps/convert_tools.h"
#include "calibration/pest_files.h"
#include "display/basemap_layer.h"
#include "display/map_state.h"
#include "display/redraw.h"
#include "display/vgraph.h"
#include "solver/command_file.h"
#include "solver/inspect.h"
#include "solver/model_settings.h"
#include "solver/solve_controller.h"
#include "store/lifecycle.h"

namespace tarno {

class Navigator;

// The pointer over the map: an arrow in the select state, a cross in a navigation
// mode that waits for a click or a rectangle.
enum class MapCursor { Arrow, Cross };

// The status bar panels: Activity, Feedback, the note (units), X and Y.
inline constexpr int kPanelActivity = 0;
inline constexpr int kPanelFeedback = 1;
inline constexpr int kPanelNote = 2;
inline constexpr int kPanelX = 3;
inline constexpr int kPanelY = 4;

// What the controller asks of the window. Every default does nothing, so that a
// test implements only what it looks at.
class ShellHost {
 public:
  virtual ~ShellHost() = default;

  // Exit: the window closes (and its closing closes the project).
  virtual void CloseWindow() {}
  // Copy to Clipboard: the visible map's picture.
  virtual void CopyMapToClipboard() {}
  // The visible surface changed: show it again.
  virtual void RepaintMap() {}
  // The window under a resting pointer changed: report its position anew.
  virtual void ReportPointer() {}
  // Which entries and buttons are available and checked (MenuModel decides from
  // `state`); `layerMenu` false keeps the View menu off whatever the state.
  virtual void ApplyMenus(const MenuState& state, bool layerMenu) {}
  virtual void ShowToolbar(bool visible) {}
  // A help target ("page.md#anchor"); the window reports a missing page itself.
  virtual void OpenHelp(const std::string& target) {}
  virtual void SetMapCursor(MapCursor cursor) {}
  virtual void SetMouseEnabled(bool enabled) {}
  virtual void SetCaption(const std::string& caption) {}
  virtual void SetStatusText(int panel, const std::string& text) {}
  virtual std::string StatusText(int panel) const { return {}; }
  // Resizes the two surfaces to the map's area (or the fixed size of a screenshot).
  virtual void LayoutSurfaces() {}
  // The map's size in pixels now.
  virtual std::pair<int, int> MapSize() const { return {1, 1}; }
  // Called between the polls of a running program (the solver, the contourer), so
  // that the window repaints; user input waits until the run is over.
  virtual void ProcessEvents() {}
  // The GUI options of the user (haze, tolerances) changed: keep them for the next
  // start of the program.
  virtual void StoreGuiOptions(const DisplayOptions& options) {}
};

struct ShellOptions {
  // Where the program's own files are (the examples); empty: the executable's.
  std::string applicationDirectory;
  // Where tarno1 and contour stand; empty: TARNO_PROGRAM_DIR or the executable's.
  std::string programDirectory;
};

class ShellController : public SessionHooks {
 public:
  // `map` is the visible surface, `map2` the hidden one under it. The port's inner
  // port is set by the caller (Port().SetInner) before any command runs.
  ShellController(ShellHost& host, MapSurface& map, MapSurface& map2, ShellOptions options = {});
  ~ShellController() override;
  ShellController(const ShellController&) = delete;
  ShellController& operator=(const ShellController&) = delete;

  // The menu and toolbar commands; Run(key) is what a click does.
  CommandRegistry& Commands() { return commands_; }

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
  // Edit > Undo and Redo: the last recorded operation of the open project, undone or
  // done again; a change that touches the flow removes the solution.
  void UndoCommand(bool redo);
  void GuiOptionsCommand();
  // Tools, "TARNO Base Map Browser": the browser of the project's maps; a changed
  // list or look sets the layers up again (a new pre-scan) and redraws.
  void MapBrowserCommand();
  void ModelSizeCommand();
  // Model menu "Time...": the time of evaluation, then a regrid.
  void SetTimeCommand();
  // Tools menu: the Instant Inspector's settings, and the switch of the integrity check.
  void InspectorSettingsCommand();
  void SolverIntegrityCheckCommand();
  // View Results Table: the results viewer over the result tables.
  void ResultsTableCommand();
  // The Tools menu's CONVERT entries ("CONVERT(0)" to "CONVERT(5)") and Reproject Maps.
  void ConvertCommand(const std::string& key);
  void ReprojectCommand();
  // Tools menu "PEST" and "UCODE": the dialogs of the estimation files and runs.
  void PestCommand();
  void UcodeCommand();
  // The questions of a Shift-click (Shift+Ctrl for the streamline) at a map point:
  // the "Model Results" box, one streamline drawn with the pathlines.
  InspectReport InspectAt(double x, double y);
  void TraceStreamlineAt(double x, double y);
  // "View Model Run Files...": the file of a RUN_FILES key in the text viewer.
  void ShowRunFile(const std::string& key);
  // A View menu switch: flips it and redraws what it changes.
  void ToggleSwitch(const std::string& key);
  // A toolbar key of navigation (zoom, scroll, recenter).
  void NavigationButton(const std::string& key);
  // ZoomActions through the error trap, followed by a repaint of the map.
  void Zoom(int action, double x1 = 0, double y1 = 0, double x2 = 0, double y2 = 0);
  // The redraw after an import: when the window shows none of the project's vertices
  // (elements read into a new project, whose window lies elsewhere) it zooms to the
  // extents, so that what came in is seen; otherwise it redraws the window as it is.
  void ZoomAfterImport();
  // The map's mouse: the end of a rectangle or a click of a navigation mode; the
  // wheel's new window; a new size of the map.
  void MouseZoom(int action, double x1, double y1, double x2, double y2);
  void WheelZoom(const WorldWindow& window);
  void MapResized();
  // The About box.
  void About();
  // The Welcome dialog of the start-up and the example it may open. True when the
  // user asked not to see it again.
  bool ShowWelcome();
  // The project of the command line (`path`, its quotes removed), else the Welcome
  // dialog when `welcome`; without a project then the menus of no project. True
  // when the user asked not to see the Welcome dialog again.
  bool StartUp(const std::string& path, bool welcome);

  // The status bar's note: two texts, the units when both are empty.
  void Note(const std::string& text1, const std::string& text2);
  // The file of an example project ("example.trn"): beside the program, else in
  // examples/ of the source tree; empty when neither exists.
  std::string ExampleFile(const std::string& name) const;

  // The window is closing: no more redraws or menu changes.
  void SetClosing() { closing_ = true; }
  bool Closing() const { return closing_; }
  bool Solving() const { return solving_; }

  ProjectSession& Session() { return *session_; }
  MapState& State() { return state_; }
  VGraphGDI& Layer() { return layer_; }
  MapView& View() { return *view_; }
  // The map editor: the mouse state machine that the map widget forwards to.
  MapEditor& Editor() { return *editor_; }
  // The map state's view of the session and the solution, brought up to date before
  // a drawing or a mouse event reads it.
  void SyncSolutionView();
  // The project's base maps as the map draws them, in the order of its list. The
  // pre-scan of an opened project fills it; after changing it, call
  // View().SetBaseMaps(&BaseMaps()) so that the background is drawn again.
  BaseMapLayers& BaseMaps() { return baseMaps_; }
  Navigator& Nav() { return *nav_; }
  SolutionState& Solution() { return solution_; }
  ModelSettings& Settings() { return settings_; }
  ForwardingUserInterface& Port() { return port_; }
  InspectorSettings& Inspector() { return inspector_; }
  const SolveReport& LastSolve() const { return lastSolve_; }
  MenuState CurrentMenuState() const;
  // Tells the host the availability of every entry as it stands now.
  void ApplyMenus();

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

 private:
  void RegisterCommands();
  void ShowSolutionNote();
  void AfterMouseAction();
  SolveOutcome RunSolve(SolveOptions options);
  // The solve controller's view of this session (its state, settings, port, menus
  // and redraw), waiting for programs with `waiter`.
  SolveContext SolveContextFor(ProcessWaiter* waiter);
  ConvertContext ConvertContextFor(ProcessWaiter* waiter);
  std::string ProgramDirectory() const;

  ShellHost& host_;
  ShellOptions options_;
  MapSurface& map_;
  MapSurface& map2_;
  ForwardingUserInterface port_;
  CommandRegistry commands_{port_};
  MapState state_;
  VGraphGDI layer_;
  // Declared before the view, which keeps a pointer to it.
  BaseMapLayers baseMaps_;
  std::unique_ptr<MapView> view_;
  std::unique_ptr<Navigator> nav_;
  friend class ControllerEditorHost;
  std::unique_ptr<EditorHost> editorHost_;
  std::unique_ptr<MapEditor> editor_;
  ModelSettings settings_;
  SolutionState solution_;
  SolveReport lastSolve_;
  // "Don't show again" of the template advice, for PEST and UCODE, for this run.
  TemplatePromptMemory templatePrompt_;
  InspectorSettings inspector_;

  bool mouseOperation_ = false;
  bool solving_ = false;
  bool closing_ = false;
  bool layerMenuEnabled_ = true;
  bool runFiles_ = true;
  std::string unitsText_;

  // Last: the session closes a project still open while the rest stands.
  std::unique_ptr<ProjectSession> session_;
};

}  // namespace tarno
