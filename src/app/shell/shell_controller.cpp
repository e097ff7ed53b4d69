#include "app/shell/shell_controller.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "app/help_model.h"
#include "app/shell/exchange_xml_commands.h"
#include "app/shell/exchange_geometry_commands.h"
#include "app/shell/exchange_gis_commands.h"
#include "app/shell/exchange_text_commands.h"
#include "app/shell_models.h"
#include "app/undo_model.h"
#include "calibration/stats_model.h"
#include "calibration/scenario_dialog.h"
#include "basemaps/browser.h"
#include "basemaps/catalogue.h"
#include "calibration/pest_dialog.h"
#include "calibration/ucode_dialog.h"
#include "core/error.h"
#include "core/error_trap.h"
#include "core/file_find.h"
#include "display/navigation.h"
#include "display/residual_scaling.h"
#include "elements/extents.h"
#include "solver/process.h"
#include "solver/result_views.h"
#include "solver/solve_dialogs.h"
#include "store/database.h"

namespace tarno {

namespace fs = std::filesystem;

namespace {

// The source tree, for the examples of a program run from its build directory
// (this file stands in src/app/shell/).
fs::path SourceRoot() {
  return fs::path(__FILE__).parent_path().parent_path().parent_path().parent_path();
}

// The texts of the example offers of the Welcome dialog.
struct ExampleOffer {
  const char* title;
  const char* file;
  std::vector<std::string> lines;
};

const ExampleOffer& Offer(int answer) {
  static const ExampleOffer vincennes{
      "Vincennes, Indiana Example",
      "example.trn",
      {"This example models the well field of Vincennes, Indiana, on the",
       "Wabash River: pumping wells, the river and its tributaries as",
       "line-sinks, and test points with observed heads.", "Load the example file?"}};
  static const ExampleOffer basin{
      "Basin and Range Example",
      "basin and range.trn",
      {"This example models a closed basin between mountain ranges: recharge",
       "on the basin floor, a lake, and the basin's boundaries.", "Load the example file?"}};
  return answer == 2 ? vincennes : basin;
}

// The action number of a Window menu key "ZOOM_CMDS(n)".
int ZoomNumber(const std::string& key) { return std::stoi(key.substr(10, key.size() - 11)); }

// A number as the option fields show it: at most six significant digits, no
// trailing zeros.
std::string ShortNumber(double value) {
  char buffer[32];
  std::snprintf(buffer, sizeof buffer, "%g", value);
  return buffer;
}

MapWindow ToMapWindow(const WorldWindow& w) { return MapWindow{w.Left, w.Right, w.Top, w.Bottom}; }

}  // namespace

// The controller's side of the map editor: redraws, navigation, the solution, the
// inspection clicks and the menus.
class ControllerEditorHost : public EditorHost {
 public:
  explicit ControllerEditorHost(ShellController& c) : c_(c) {}
  void Redraw() override { c_.Zoom(kZoomRedraw); }
  void Repaint() override { c_.host_.RepaintMap(); }
  void ZoomAction(int action, double x1, double y1, double x2, double y2) override {
    c_.MouseZoom(action, x1, y1, x2, y2);
  }
  void InvalidateSolution() override { c_.InvalidateSolution(false); }
  void InspectAt(double x, double y) override { c_.InspectAt(x, y); }
  void TraceStreamlineAt(double x, double y) override { c_.TraceStreamlineAt(x, y); }
  void MenusChanged() override { c_.ApplyMenus(); }
  bool Solving() const override { return c_.solving_; }

 private:
  ShellController& c_;
};

ShellController::ShellController(ShellHost& host, MapSurface& map, MapSurface& map2,
                                 ShellOptions options)
    : host_(host), options_(std::move(options)), map_(map), map2_(map2) {
  layer_.SetUserInterface(&port_);
  // The status bar shows Activity and Feedback whatever port answers the questions.
  port_.onActivity = [this](const std::string& t) { host_.SetStatusText(kPanelActivity, t); };
  port_.onFeedback = [this](const std::string& t) { host_.SetStatusText(kPanelFeedback, t); };
  view_ = std::make_unique<MapView>(state_, layer_, port_, map_, map2_);
  view_->SetBaseMaps(&baseMaps_);
  nav_ = std::make_unique<Navigator>(state_, *view_, port_);

  // The redraw's side of the window.
  RedrawHooks& rh = view_->hooks;
  rh.showToolbar = [this](bool visible) { host_.ShowToolbar(visible); };
  rh.layoutSurfaces = [this] { host_.LayoutSurfaces(); };
  rh.disableMouse = [this] { DisableMouse(); };
  rh.enableMouse = [this] { EnableMouse(); };
  rh.resetMenus = [this] { ApplyMenus(); };
  rh.elemTurnOffSelection = [this] { ElemTurnOffSelection(); };
  rh.layersChanged = [this] { ApplyMenus(); };
  rh.currentActivity = [this] { return host_.StatusText(kPanelActivity); };
  rh.currentFeedback = [this] { return host_.StatusText(kPanelFeedback); };

  Navigator::Hooks& nh = nav_->hooks;
  nh.setUpToolbar = [this] { SetUpToolbar(); };
  nh.turnOffMenus = [this] {
    mouseOperation_ = true;
    ApplyMenus();
  };
  nh.turnOnMenus = [this] {
    mouseOperation_ = false;
    ApplyMenus();
  };
  nh.clearMouseMode = [this] {
    state_.mouseState = 0;
    state_.mouseMode = 0;
  };
  nh.elemTurnOffSelection = [this] { ElemTurnOffSelection(); };
  nh.solverRunning = [this] { return solving_; };
  nh.modelExtents = [this](WorldWindow& extents) {
    const std::string& file = session_->Settings().DBName;
    if (file.empty()) return false;
    Database db = Database::Open(file);
    // Read only: a zoom leaves the model origin to the next solve. The shown base
    // maps widen the extents.
    const ModelExtents e = ElementExtents(db, ToMapWindow(state_.Window), ShownMapExtents(&baseMaps_));
    // Widened by a twentieth on every side, so that no element lies on the edge.
    const double dx = std::max(1.0, e.MaxX - e.MinX) / 20, dy = std::max(1.0, e.MaxY - e.MinY) / 20;
    extents = WorldWindow{e.MinX - dx, e.MaxX + dx, e.MaxY + dy, e.MinY - dy};
    return true;
  };

  editorHost_ = std::make_unique<ControllerEditorHost>(*this);
  editor_ = std::make_unique<MapEditor>(state_, layer_, port_, *editorHost_);

  RegisterCommands();
  session_ = std::make_unique<ProjectSession>(port_, *this, options_.applicationDirectory);
}

ShellController::~ShellController() {
  closing_ = true;
  if (session_ && session_->ProjectOpen()) session_->CloseAll();
}

// --- The commands ------------------------------------------------------------

void ShellController::RegisterCommands() {
  CommandRegistry& c = commands_;
  // The project's operations run in their own traps under their own names.
  c.Register("FILE_CMDS(0)", [this] { session_->FileNewProject(); });
  c.Register("FILE_CMDS(1)", [this] { session_->FileOpenProject("", true); });
  c.Register("FILE_CMDS(2)", [this] { session_->FileSaveAs(); });
  c.Register("FILE_CMDS(3)", [this] { session_->FileCloseProject(); });
  c.Register("FILE_CMDS(4)", [this] { session_->FileProjectSettings(); });
  c.Register(
      "FILE_CMDS(7)", [this] { host_.CloseWindow(); }, "Form_Unload");
  c.Register(
      "EDIT_CMDS(7)", [this] { host_.CopyMapToClipboard(); }, "EDIT_CMDS_Click");
  c.Register({"EDIT_UNDO", "EDIT_REDO"}, [this](const std::string& key) { UndoCommand(key == "EDIT_REDO"); });
  c.Register(
      "Layermenu(10)", [this] { Zoom(kZoomRefresh); }, "ZoomActions");
  c.Register("MODEL_CMDS(0)", [this] { ModelSettingsCommand(); });
  c.Register(
      "MODEL_CMDS(1)", [this] { Solve(true); }, "ModelRunTARNO");
  c.Register(
      "MODEL_CMDS(2)", [this] { ContinueSolve(); }, "ModelRunTARNO");
  c.Register("ModelSize", [this] { ModelSizeCommand(); });
  c.Register("SET_TIME", [this] { SetTimeCommand(); });
  c.Register("InspectorSettings", [this] { InspectorSettingsCommand(); });
  c.Register("SolverIntegrityCheck", [this] { SolverIntegrityCheckCommand(); });
  c.Register(
      "RESULTS_TABLE", [this] { ResultsTableCommand(); }, "RESULTS_TABLE_Click");
  c.Register("CALIBRATION_STATS",
             [this] { ShowCalibrationStatistics(port_, session_->Settings().DBName); });
  // The scales of the residual marks: the choice, then a redraw.
  for (const ResidualScaleChoice& choice : ResidualScaleChoices()) {
    const std::string key = choice.key;
    c.Register(key, [this, key] {
      if (!SetTestPointScaling(key, state_.layers)) return;
      ApplyMenus();  // the check moves to the choice
      Zoom(kZoomRedraw);
    });
  }
  // Tools > Import and Export: the text element files.
  c.Register(
      {"IMPORT(4)", "IMPORT(5)", "IMPORT(6)", "IMPORT(7)", "IMPORT(8)", "IMPORT(9)", "IMPORT(10)",
       "EXPORT(4)", "EXPORT(5)", "EXPORT(6)", "EXPORT(7)", "EXPORT(8)", "EXPORT(9)"},
      [this](const std::string& key) { TextExchangeCommand(*this, key); }, "TOOLS_CMDS");
  c.Register("PestMenu", [this] { PestCommand(); });
  c.Register("UcodeMenu", [this] { UcodeCommand(); });
  c.Register("TOOLS_CMDS(0)", [this] { GuiOptionsCommand(); });
  c.Register(
      "TOOLS_CMDS(5)", [this] { MapBrowserCommand(); }, "MapBrowser");
  c.RegisterPrefix(
      "CONVERT(", [this](const std::string& key) { ConvertCommand(key); }, "CONVERT_Click");
  c.Register(
      "ReprojectMaps", [this] { ReprojectCommand(); }, "REPROJECT_Click");
  // Tools > Import and Export: the XML element files.
  for (const std::string& key : XmlExchangeKeys()) {
    c.Register(
        key,
        [this, key] {
          RunXmlExchangeCommand(
              key, port_, session_->Settings().DBName, ProgramDirectory(),
              [this] { InvalidateSolution(false); }, [this] { ZoomAfterImport(); });
        },
        XmlExchangeOperation(key));
  }
  c.Register("About", [this] { About(); });
  // Tools > Export: the DXF, SURFER and shapefile exports.
  RegisterGeometryExportCommands(*this);
  // Tools > Import and Export: GIS vector files and the GeoPackage.
  c.Register("IMPORT(11)", [this] { ImportGisVectorCommand(*this); });
  c.Register("EXPORT(14)", [this] { ExportGeoPackageCommand(*this); });
  // Model > Implement Scenario: like a solve, it starts from the select state; a
  // model changed by it loses its solution.
  c.Register(
      "ImpScenario",
      [this] {
        state_.mouseState = 0;
        state_.mouseMode = 0;
        AfterMouseAction();
        if (ImplementScenarios(port_, session_->Settings().DBName)) InvalidateSolution(true);
      },
      "Scenarios");
  c.RegisterPrefix(
      "RUN_FILES(", [this](const std::string& key) { ShowRunFile(key); }, "MODELRUNFILES");
  c.RegisterPrefix(
      "ZOOM_CMDS(", [this](const std::string& key) { Zoom(ZoomNumber(key)); }, "ZoomActions");
  const auto help = [this](const std::string& key) {
    RunOperation(port_, "HELP_CMDS", [&] { host_.OpenHelp(HelpIndex::PageForKey(key)); });
  };
  c.RegisterPrefix("HELP_CMDS(", help, "HELP_CMDS");
  c.Register(
      "ReleaseNotes", [help] { help("ReleaseNotes"); }, "HELP_CMDS");

  // The View menu's switches, one handler for all.
  std::vector<std::string> switches;
  for (const MenuEntry& e : MenuModel::Entries()) {
    if (e.kind == MenuKind::Switch) switches.push_back(e.key);
  }
  c.Register(
      switches, [this](const std::string& key) { ToggleSwitch(key); }, "Layermenu_Click");

  // The navigation buttons act on their own; the other buttons run their entry.
  for (const char* key :
       {"WINDOWZOOMIN", "WINDOWZOOMOUT", "WINDOWZOOMWIN", "WINDOWZOOMEXTENTS", "WINDOWSCROLLLEFT",
        "WINDOWSCROLLRIGHT", "WINDOWSCROLLUP", "WINDOWSCROLLDOWN", "WINDOWRECENTER"}) {
    const std::string k = key;
    c.RegisterButton(
        k, [this, k] { NavigationButton(k); }, "Toolbar1_ButtonClick");
  }
  // The editing keys (Element > New, the Edit commands, the Model menu's add
  // entries) are the map editor's: it registers them when it exists. Until then
  // their entries are disabled and never reach the registry.
  // The adding and editing of elements: the map editor's modes and operations.
  for (const MenuEntry& e : MenuModel::Entries()) {
    if (!MapEditor::Handles(e.key) || c.Has(e.key)) continue;
    const std::string key = e.key;
    c.Register(key, [this, key] {
      SyncSolutionView();
      editor_->Command(key);
      ApplyMenus();
      host_.RepaintMap();
    });
  }
}

void ShellController::NavigationButton(const std::string& key) {
  static const std::map<std::string, int> zoom = {
      {"WINDOWZOOMIN", kZoomIn},          {"WINDOWZOOMOUT", kZoomOut},
      {"WINDOWZOOMWIN", kZoomWindowMode}, {"WINDOWZOOMEXTENTS", kZoomExtents},
      {"WINDOWSCROLLLEFT", kScrollLeft},  {"WINDOWSCROLLRIGHT", kScrollRight},
      {"WINDOWSCROLLUP", kScrollUp},      {"WINDOWSCROLLDOWN", kScrollDown},
      {"WINDOWRECENTER", kRecenterMode}};
  const int action = zoom.at(key);
  // A second click on the key of the mode that runs leaves it.
  if (key == "WINDOWRECENTER" && state_.mouseState == kRecenterMouseState &&
      state_.mouseMode == kRecenterMouseMode) {
    Zoom(kZoomModeLeave);
    AfterMouseAction();
    return;
  }
  Zoom(action);
  if (key == "WINDOWZOOMWIN") AfterMouseAction();
}

void ShellController::ToggleSwitch(const std::string& key) {
  bool* on = MenuModel::SwitchOf(key, state_.layers);
  if (on == nullptr) return;
  *on = !*on;
  if (key == "Layermenu(9)") {
    // The toolbar and the surfaces under it.
    host_.ShowToolbar(*on);
    ApplyMenus();
    return;
  }
  if (key == "Haze" || key == "Layermenu(8)") view_->RedrawBasemap = true;
  if (key == "EDITORGRID(1)") {
    ApplyMenus();
    return;
  }
  if (key == "EDITORGRID(0)") view_->RedrawBasemap = true;
  if (key == "Layermenu(13)" && *on) {
    // Turning Manual Redraw on leaves a current picture current.
    ApplyMenus();
    return;
  }
  if (key == "Layermenu(12)" && !solution_.SolutionPresent) {
    ApplyMenus();
    return;
  }
  if (key == "Layermenu(2)") ShowSolutionNote();
  Zoom(kZoomRedraw);
}

void ShellController::About() {
  port_.MessageBox("About TARNO",
                   {"TARNO", "Groundwater flow modelling by the analytic element method:",
                    "single-aquifer Dupuit-Forchheimer models of wells, line-sinks,",
                    "inhomogeneities, barriers, lakes and uniform flow."},
                   Buttons::OK, Icon::Information);
}

// --- Project and model commands ---------------------------------------------

bool ShellController::OpenProject(const std::string& path) {
  return session_->FileOpenProject(path);
}

bool ShellController::CloseProject() { return session_->FileCloseProject(); }

std::string ShellController::ProgramDirectory() const {
  if (!options_.programDirectory.empty()) return options_.programDirectory;
  const char* env = std::getenv("TARNO_PROGRAM_DIR");
  if (env != nullptr && *env != '\0') return env;
  return tarno::ProgramDirectory().string();
}

SolveContext ShellController::SolveContextFor(ProcessWaiter* waiter) {
  SolveContext ctx;
  ctx.projectPath = session_->Settings().DBName;
  ctx.settings = &settings_;
  ctx.state = &solution_;
  ctx.ui = &port_;
  ctx.waiter = waiter;
  ctx.programDirectory = ProgramDirectory();
  ctx.window = ToMapWindow(state_.Window);
  ctx.basemapExtents = ShownMapExtents(&baseMaps_);
  ctx.programOutput = "/dev/null";
  ctx.solverErrors = "/dev/null";
  ctx.hooks.enableMenu = [this](const std::string& entry, bool enabled) {
    // A solve shows what it computed: its contours and its pathlines.
    if (entry == "chkContour") state_.layers.contoursEnabled = state_.layers.contours = enabled;
    if (entry == "chkComputePaths")
      state_.layers.pathlinesEnabled = state_.layers.pathlines = enabled;
    if (entry == "MODELRUNFILES") runFiles_ = enabled;
  };
  ctx.hooks.redraw = [this] {
    SyncSolutionView();
    Zoom(kZoomRedraw);
  };
  return ctx;
}

bool ShellController::InvalidateSolution(bool ask) {
  if (!session_->ProjectOpen() || !solution_.SolutionPresent) return false;
  BlockingWaiter waiter;  // no program runs here
  SolveContext ctx = SolveContextFor(&waiter);
  const bool removed = tarno::InvalidateSolution(ctx, ask, true);
  if (removed) {
    // The note told what the removed contours showed; the units stand there again.
    Note("", "");
    ApplyMenus();
  }
  return removed;
}

SolveOutcome ShellController::RunSolve(SolveOptions options) {
  if (!session_->ProjectOpen()) return SolveOutcome::Cancelled;
  // The window repaints while the solver and the contourer run; the user's input
  // waits until the run is over.
  PollingWaiter waiter([this] { host_.ProcessEvents(); }, std::chrono::milliseconds(30));
  // The tracing step that follows the window, for a model that asks for it.
  settings_.DefaultStepSize = ComputeDefaultStep(state_.Window.Left, state_.Window.Bottom,
                                                 state_.Window.Right, state_.Window.Top);
  SolveContext ctx = SolveContextFor(&waiter);
  solving_ = true;
  DisableMouse();
  ApplyMenus();
  lastSolve_ = ModelRunTARNO(ctx, options);
  solving_ = false;
  SyncSolutionView();
  // The note panel tells what the contours show (the units without them).
  ShowSolutionNote();
  // A completed run has redrawn the map with its results; any other leaves the
  // picture of the flags as they now stand.
  if (lastSolve_.outcome != SolveOutcome::Completed) Zoom(kZoomRedraw);
  EnableMouse();
  ApplyMenus();
  return lastSolve_.outcome;
}

SolveOutcome ShellController::Solve(bool prompt) {
  SolveOptions o;
  o.Prompt = prompt;
  return RunSolve(o);
}

SolveOutcome ShellController::ContinueSolve() {
  SolveOptions o;
  o.ContinueSolve = true;
  return RunSolve(o);
}

void ShellController::UndoCommand(bool redo) {
  RunOperation(port_, redo ? "Redo" : "Undo", [&] {
    if (UndoLastOperation(*session_, redo).touchesFlow) InvalidateSolution(false);
    Zoom(kZoomRedraw);
  });
  ApplyMenus();
}

void ShellController::ModelSettingsCommand() {
  RunOperation(port_, "ModelSettings", [&] {
    const std::string file = session_->Settings().DBName;
    {
      Database db = Database::Open(file);
      settings_.Load(db);
    }
    settings_.DefaultStepSize = ComputeDefaultStep(state_.Window.Left, state_.Window.Bottom,
                                                   state_.Window.Right, state_.Window.Top);
    ModelSettingsDialog dialog(settings_, file);
    port_.ShowModal(dialog);
    if (dialog.Result != 1) return;
    // A new aquifer or new solver settings make the solution another model's: it
    // goes as after an edit of an element, unless the user keeps it.
    if (dialog.last.invalidate) InvalidateSolution(true);
    const bool flagged = dialog.last.regrid || dialog.last.retrace;
    // The grid or the traces of the present solution no longer answer the settings:
    // the next regrid (now, or when the next solve is answered No) writes them anew.
    if (dialog.last.regrid) {
      solution_.ContoursPresent = false;
      solution_.ContourLinesPresent = false;
    }
    if (dialog.last.retrace) solution_.PathsPresent = false;
    const fs::path dir = session_->Settings().TARNOPath;
    const std::string base = session_->Settings().TARNOBaseName;
    const bool files = !FindFileNoCase(dir, base + ".GRD").empty() ||
                       !FindFileNoCase(dir, base + ".CTR").empty() ||
                       !FindFileNoCase(dir, base + ".PTH").empty();
    if (solution_.SolutionPresent && files && flagged &&
        port_.Question("Regrid/Retrace?", {"Calculate new grid or trace now?"})) {
      SolveOptions o;
      o.ForceRegrid = true;
      o.Prompt = false;
      RunSolve(o);
    }
    Database db = Database::Open(file);
    tarno::ModelCheckExtents(db, ToMapWindow(state_.Window), ShownMapExtents(&baseMaps_));
    state_.frame = ModelRestoreModelOrigin(db, settings_.BasemapConvert);
  });
  ApplyMenus();  // Undo names the settings now
}

void ShellController::ModelSizeCommand() {
  RunOperation(port_, "ModelGetSize", [&] {
    Database db = Database::Open(session_->Settings().DBName);
    ModelGetSize(db, true, port_);
  });
}

void ShellController::SetTimeCommand() {
  if (!session_->ProjectOpen()) return;
  PollingWaiter waiter([this] { host_.ProcessEvents(); }, std::chrono::milliseconds(30));
  SolveContext ctx = SolveContextFor(&waiter);
  bool changed = false;
  RunOperation(port_, "SET_TIME_Click", [&] { changed = SET_TIME_Click(ctx); });
  if (!changed) return;
  SyncSolutionView();
  ShowSolutionNote();
  ApplyMenus();
}

void ShellController::InspectorSettingsCommand() {
  RunOperation(port_, "InspectorSettings", [&] {
    InspectorDialog dialog;
    dialog.Load(inspector_, settings_.basemapMeters);
    port_.ShowModal(dialog);
    if (dialog.Result == 1) inspector_ = dialog.Settings;
  });
}

ConvertContext ShellController::ConvertContextFor(ProcessWaiter* waiter) {
  std::error_code ec;
  ConvertContext ctx{port_, ProgramDirectory(), std::filesystem::temp_directory_path(ec),
                     WaitingProgramRunner(waiter), {}};
  return ctx;
}

void ShellController::ConvertCommand(const std::string& key) {
  // The entries of the CONVERT menu in their order.
  static const std::vector<std::pair<const char*, void (*)(ConvertContext&)>> tools = {
      {"ToolsConvertDLG", ToolsConvertDLG},   {"ToolsConvertSDTS", ToolsConvertSDTS},
      {"ToolsConvertDM", ToolsConvertDM},     {"ToolsConvertDXF", ToolsConvertDXF},
      {"ToolsBBMtoDXF", ToolsBBMtoDXF},       {"ToolsConvertShape", ToolsConvertShape}};
  const std::string number = key.substr(8, key.size() - 9);  // "CONVERT(n)"
  const int index = number.empty() ? -1 : std::atoi(number.c_str());
  if (index < 0 || index >= static_cast<int>(tools.size())) return;
  PollingWaiter waiter([this] { host_.ProcessEvents(); }, std::chrono::milliseconds(30));
  ConvertContext ctx = ConvertContextFor(&waiter);
  RunOperation(port_, tools[index].first, [&] { tools[index].second(ctx); });
}

void ShellController::ReprojectCommand() {
  PollingWaiter waiter([this] { host_.ProcessEvents(); }, std::chrono::milliseconds(30));
  ConvertContext ctx = ConvertContextFor(&waiter);
  RunOperation(port_, "REPROJECT_Click", [&] { REPROJECT_Click(ctx); });
}

void ShellController::ResultsTableCommand() {
  // The tables as they stand now; the viewer reads them once and shows them read-only.
  ResultViewer viewer;
  {
    Database db = Database::Open(session_->Settings().DBName);
    viewer.Load(db);
  }
  port_.ShowModal(viewer);
}

void ShellController::SolverIntegrityCheckCommand() {
  RunOperation(port_, "SolverIntegrityCheck_Click",
               [&] { SolverIntegrityCheck_Click(port_, inspector_); });
}

namespace {

// Shows an estimation dialog over `ctx`, with its lists filled.
template <typename Dialog>
void ShowEstimationDialog(UserInterface& ui, SolveContext& ctx, TemplatePromptMemory& prompt) {
  Dialog dialog(ctx, &prompt);
  dialog.RefreshLists();
  ui.ShowModal(dialog);
}

}  // namespace

void ShellController::PestCommand() {
  RunOperation(port_, "PestMenu_Click", [&] {
    // The window repaints while PEST runs the solver.
    PollingWaiter waiter([this] { host_.ProcessEvents(); }, std::chrono::milliseconds(30));
    SolveContext ctx = SolveContextFor(&waiter);
    ShowEstimationDialog<PestDialog>(port_, ctx, templatePrompt_);
  });
  SyncSolutionView();
  Zoom(kZoomRedraw);
  ApplyMenus();
}

void ShellController::UcodeCommand() {
  RunOperation(port_, "UcodeMenu_Click", [&] {
    PollingWaiter waiter([this] { host_.ProcessEvents(); }, std::chrono::milliseconds(30));
    SolveContext ctx = SolveContextFor(&waiter);
    ShowEstimationDialog<UcodeDialog>(port_, ctx, templatePrompt_);
  });
  SyncSolutionView();
  Zoom(kZoomRedraw);
  ApplyMenus();
}

InspectReport ShellController::InspectAt(double x, double y) {
  if (!session_->ProjectOpen()) return {};
  BlockingWaiter waiter;  // a run of a few milliseconds
  SolveContext ctx = SolveContextFor(&waiter);
  return ModelInspectResults(ctx, inspector_, x, y);
}

void ShellController::TraceStreamlineAt(double x, double y) {
  if (!session_->ProjectOpen()) return;
  BlockingWaiter waiter;
  SolveContext ctx = SolveContextFor(&waiter);
  if (!ModelTraceOneStreamline(ctx, inspector_, x, y)) return;
  // The streamline is drawn with the pathlines of the solution.
  state_.layers.pathlinesEnabled = state_.layers.pathlines = true;
  SyncSolutionView();
  Zoom(kZoomRedraw);
}

void ShellController::ShowRunFile(const std::string& key) {
  RunOperation(port_, "MODELRUNFILES", [&] {
    for (const auto& f : MenuModel::RunFiles(session_->Settings().TARNOBaseName)) {
      if (f.key != key) continue;
      const fs::path found = FindFileNoCase(session_->Settings().TARNOPath, f.file);
      if (found.empty()) {
        port_.MessageBox("File Not Found",
                         {(fs::path(session_->Settings().TARNOPath) / f.file).string(),
                          "does not exist. Solve the model first."},
                         Buttons::OK, Icon::Information);
      } else {
        port_.ShowTextFile(found.string());
      }
    }
  });
}

void ShellController::GuiOptionsCommand() {
  RunOperation(port_, "GUIOptions", [&] {
    GUIOptions gui;
    {
      Database db = Database::Open(session_->Settings().DBName);
      gui.init(db);
    }
    gui.projectFile = session_->Settings().DBName;
    const DisplayOptions& o = state_.options;
    gui.HazeLevel = o.HazeLevel;
    gui.HazeColor = o.HazeColor;
    gui.VertexTolerance = o.VertexTolerance;
    gui.LinesinkShadow = o.LinesinkShadow;
    gui.DataHazeLevel = std::to_string(o.HazeLevel);
    gui.DataVertexTolerance = ShortNumber(o.VertexTolerance);
    gui.DataLinesinkShadow = ShortNumber(o.LinesinkShadow);
    port_.ShowModal(gui);
    if (gui.Result != 1) return;
    gui.ApplyTo(state_.options);
    host_.StoreGuiOptions(state_.options);
    view_->RedrawBasemap = true;
  });
  Zoom(kZoomRedraw);
}

// --- Start-up -------------------------------------------------------------------

std::string ShellController::ExampleFile(const std::string& name) const {
  for (const fs::path& dir :
       {fs::path(session_->ApplicationDirectory()), SourceRoot() / "examples"}) {
    const fs::path p = dir / name;
    if (fs::exists(p)) return p.string();
  }
  return {};
}

bool ShellController::ShowWelcome() {
  Welcome welcome;
  port_.ShowModal(welcome);
  if (welcome.Result == 2 || welcome.Result == 3) {
    const ExampleOffer& offer = Offer(welcome.Result);
    if (port_.MessageBox(offer.title, offer.lines, Buttons::YesNo, Icon::Question) == Answer::Yes) {
      const std::string file = ExampleFile(offer.file);
      if (file.empty()) {
        port_.MessageBox(offer.title,
                         {std::string("The example file \"") + offer.file + "\" was not found.",
                          "Build it with scripts/make-examples."},
                         Buttons::OK, Icon::Exclamation);
      } else {
        session_->FileOpenProject(file);
      }
    }
  }
  return welcome.chkShowBox;
}

bool ShellController::StartUp(const std::string& path, bool welcome) {
  DisableMouse();
  bool hide = false;
  if (!path.empty()) {
    session_->FileOpenProject(path);
  } else if (welcome) {
    RunOperation(port_, "Welcome", [&] { hide = ShowWelcome(); });
  }
  if (!session_->ProjectOpen()) {
    TurnOffMenus();
    SetUpToolbar();
    ZoomActions(true);
  }
  return hide;
}

// --- Menus -------------------------------------------------------------------

MenuState ShellController::CurrentMenuState() const {
  MenuState s;
  s.projectOpen = session_ != nullptr && session_->ProjectOpen();
  s.solutionValid = solution_.SolutionPresent;
  s.solving = solving_;
  s.mouseOperation = mouseOperation_ || (editor_ != nullptr && editor_->MenusOff());
  if (editor_ != nullptr)
    for (std::size_t i = 0; i < s.editEntries.size(); ++i) {
      s.editEntries[i] = editor_->EditMenu()[i].enabled;
      s.editCaptions[i] = editor_->EditMenu()[i].caption;
    }
  s.runFiles = runFiles_;
  s.layers = state_.layers;
  if (session_ != nullptr) SetUndoState(s, session_->History());
  return s;
}

void ShellController::ApplyMenus() {
  if (closing_) return;
  host_.ApplyMenus(CurrentMenuState(), layerMenuEnabled_);
}

void ShellController::TurnOffMenus() {
  // Without a project the menus shrink to File and Help; with one, a mouse
  // operation runs.
  mouseOperation_ = session_ != nullptr && session_->ProjectOpen();
  ApplyMenus();
}

void ShellController::TurnOnMenus() {
  mouseOperation_ = false;
  ApplyMenus();
}

void ShellController::SetUpToolbar() {
  host_.ShowToolbar(state_.layers.toolbar);
  ApplyMenus();
}

void ShellController::EnableLayerMenu(bool enabled) {
  layerMenuEnabled_ = enabled;
  ApplyMenus();
}

void ShellController::EnableProjectCommands(bool) { ApplyMenus(); }

void ShellController::SetHydrologicUnitEntries(bool farField, bool nearField) {
  state_.layers.viewFarField = state_.layers.viewFarFieldEnabled = farField;
  state_.layers.viewNearField = state_.layers.viewNearFieldEnabled = nearField;
  ApplyMenus();
}

void ShellController::SetEditGridChecks(bool show, bool snap) {
  state_.layers.showEditorGrid = show;
  state_.layers.snapToGrid = snap;
  ApplyMenus();
}

void ShellController::SetCaption(const std::string& caption) { host_.SetCaption(caption); }

// --- Map ----------------------------------------------------------------------

void ShellController::ShowSolutionNote() {
  // What the contours show while they are on the map; the units otherwise.
  const bool shown = solution_.SolutionPresent && state_.layers.contours;
  Note(shown ? solution_.Note : std::string(), "");
}

void ShellController::Note(const std::string& text1, const std::string& text2) {
  std::string note = text1;
  if (!text2.empty()) note += (note.empty() ? "" : " ") + text2;
  host_.SetStatusText(kPanelNote, note.empty() ? unitsText_ : note);
}

void ShellController::AfterMouseAction() {
  // The end or the leaving of a navigation mode brings the select state back.
  const bool inMode =
      (state_.mouseState == kZoomWindowMouseState && state_.mouseMode == kZoomWindowMouseMode) ||
      (state_.mouseState == kRecenterMouseState && state_.mouseMode == kRecenterMouseMode);
  host_.SetMapCursor(inMode ? MapCursor::Cross : MapCursor::Arrow);
  if (!inMode && mouseOperation_) TurnOnMenus();
}

void ShellController::MouseZoom(int action, double x1, double y1, double x2, double y2) {
  Zoom(action, x1, y1, x2, y2);
  // The rectangle or the click ends the mode: back to the select state.
  if (action == kZoomWindowEnd || action == kRecenterEnd) {
    state_.mouseState = 0;
    state_.mouseMode = 0;
  }
  AfterMouseAction();
}

void ShellController::WheelZoom(const WorldWindow& window) {
  if (closing_) return;
  // Checked against the layer's limits as every zoom is.
  RunOperation(port_, "ZoomActions", [&] {
    SyncSolutionView();
    nav_->ZoomTo(window);
  });
  host_.RepaintMap();
}

void ShellController::MapResized() {
  if (closing_) return;
  if (state_.ProjectOpen && !solving_) {
    Zoom(kZoomRefresh);
  } else {
    host_.LayoutSurfaces();
    host_.RepaintMap();
  }
}

void ShellController::SyncSolutionView() {
  state_.ProjectOpen = session_ != nullptr && session_->ProjectOpen();
  state_.projectFile = session_ != nullptr ? session_->Settings().DBName : std::string();
  SolutionView& v = state_.solution;
  v.valid = solution_.SolutionPresent;
  v.contourLinesPresent = solution_.ContourLinesPresent;
  v.pathsPresent = solution_.PathsPresent;
  if (session_ != nullptr) {
    v.directory = session_->Settings().TARNOPath;
    v.baseName = session_->Settings().TARNOBaseName;
  }
}

void ShellController::Zoom(int action, double x1, double y1, double x2, double y2) {
  if (closing_) return;
  RunOperation(port_, "ZoomActions", [&] {
    SyncSolutionView();
    nav_->ZoomActions(action, x1, y1, x2, y2);
  });
  host_.ReportPointer();
  host_.RepaintMap();
}

void ShellController::ZoomAfterImport() {
  if (closing_ || session_ == nullptr || !session_->ProjectOpen()) return;
  bool outside = false;
  RunOperation(port_, "ZoomActions", [&] {
    Database db = Database::OpenReadOnly(session_->Settings().DBName);
    const VertexSummary vertices = SummariseVertices(db);
    if (!vertices.box) return;
    const WorldWindow& w = state_.Window;
    const double left = std::min(w.Left, w.Right), right = std::max(w.Left, w.Right);
    const double bottom = std::min(w.Bottom, w.Top), top = std::max(w.Bottom, w.Top);
    const ModelExtents& box = *vertices.box;
    outside = box.MaxX < left || box.MinX > right || box.MaxY < bottom || box.MinY > top;
  });
  Zoom(outside ? kZoomExtents : kZoomRedraw);
}

void ShellController::ZoomActions(bool first) {
  if (closing_) return;
  if (first) {
    // The project closes: the map lays out its surfaces and draws nothing.
    SyncSolutionView();
    state_.ProjectOpen = false;
    RunOperation(port_, "ZoomActions", [&] { view_->Redraw(false, false); });
    host_.RepaintMap();
    return;
  }
  Zoom(kZoomRedraw);
}

void ShellController::EnableMouse() {
  host_.SetMouseEnabled(true);
  // The mouse comes back after an open or a redraw: the vertex search's index is
  // made ready on the editor's connection while nobody waits for a click.
  if (editor_ != nullptr) {
    editor_->SetMouseEnabled(true);
    SyncSolutionView();
    RunOperation(port_, "EnableMouse", [&] { editor_->Prepare(); });
  }
  host_.RepaintMap();
}

void ShellController::DisableMouse() {
  host_.SetMouseEnabled(false);
  if (editor_ != nullptr) editor_->SetMouseEnabled(false);
}

void ShellController::ElemTurnOffSelection() {
  if (editor_ != nullptr)
    editor_->ElemTurnOffSelection();
  else
    state_.selection = Selection{};
}

void ShellController::ClearProjectViews() {
  solution_ = SolutionState{};
  inspector_ = InspectorSettings{};  // the inspector's settings are a session's
  baseMaps_.clear();
  runFiles_ = true;
  state_.selection = Selection{};
  state_.mouseState = state_.mouseMode = 0;
  // The editor's connection to the file goes before the file is compacted.
  if (editor_ != nullptr) editor_->Reset();
  mouseOperation_ = false;
  unitsText_.clear();
  Note("", "");
  // No mode, no prompt and no pointer position without a project.
  for (int panel : {kPanelActivity, kPanelFeedback, kPanelX, kPanelY})
    host_.SetStatusText(panel, "");
  for (MapSurface* s : {&map_, &map2_}) s->GetCanvas().Clear(state_.options.Background);
  host_.RepaintMap();
}

void ShellController::SetUpLayers() {
  // The map state of the project just opened (or of new project settings): the
  // pens, the model settings, then the View menu's switches. The solution stays:
  // a project starts without one, as ClearProjectViews left it.
  state_.ProjectOpen = true;
  const std::string file = session_->Settings().DBName;
  state_.projectFile = file;
  {
    Database db = Database::Open(file);
    settings_ = ModelSettings{};
    settings_.Load(db);
    GUIOptions gui;
    gui.init(db);
    const DisplayOptions kept = state_.options;
    gui.ApplyTo(state_.options);
    // Haze and tolerances are the user's, not the project's.
    state_.options.HazeLevel = kept.HazeLevel;
    state_.options.HazeColor = kept.HazeColor;
    state_.options.VertexTolerance = kept.VertexTolerance;
    state_.options.LinesinkShadow = kept.LinesinkShadow;
  }
  SyncSolutionView();
  // The pre-scan opens the project's base maps for the redraw (the view keeps a
  // pointer to this list); the background is drawn anew with them.
  baseMaps_ = PrescanMaps(file, port_, DefaultOpeners());
  view_->RedrawBasemap = true;
  view_->SetUpLayers();
  ApplyMenus();
}

void ShellController::MapBrowserCommand() {
  MapBrowser browser(session_->Settings().DBName, DefaultOpeners());
  browser.Load();
  port_.ShowModal(browser);
  if (browser.Changed) {
    SetUpLayers();
    ZoomActions(false);
  }
}

void ShellController::ModelCheckExtents(ProjectSession& session, StoredWindow& window) {
  Database db = Database::Open(session.Settings().DBName);
  const MapWindow saved{std::min(window.x1, window.x2), std::max(window.x1, window.x2),
                        std::max(window.y1, window.y2), std::min(window.y1, window.y2)};
  const ModelExtents e = tarno::ModelCheckExtents(db, saved, ShownMapExtents(&baseMaps_));
  state_.frame = ModelRestoreModelOrigin(db, settings_.BasemapConvert);
  // A window of no extent, or one that lies wholly beside the model, gives way to
  // the model's extents widened by a tenth.
  const bool empty = !(window.x1 < window.x2) || !(window.y1 < window.y2);
  const bool beside =
      saved.Right < e.MinX || saved.Left > e.MaxX || saved.Top < e.MinY || saved.Bottom > e.MaxY;
  // So does a window the map cannot draw (stored before the zoom had its limits).
  const auto [width, height] = host_.MapSize();
  const bool undrawable =
      !empty && CheckWindowRange(WorldWindow{saved.Left, saved.Right, saved.Top, saved.Bottom},
                                 std::max(1, width), std::max(1, height)) != WindowRange::kFits;
  if (empty || beside || undrawable) {
    const double dx = std::max(1.0, e.MaxX - e.MinX) / 10, dy = std::max(1.0, e.MaxY - e.MinY) / 10;
    window = StoredWindow{e.MinX - dx, e.MaxX + dx, e.MinY - dy, e.MaxY + dy};
  }
  state_.Window = WorldWindow{window.x1, window.x2, window.y2, window.y1};
  unitsText_ = session.UnitsText();
  Note("", "");
}

void ShellController::UnitsChanged() {
  // The solution's coordinates were computed with the old factor: drawn with the
  // new one they would stand in the wrong places, so it goes without a question.
  InvalidateSolution(false);
}

}  // namespace tarno
