#include "app/main_window.h"

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QClipboard>
#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QSettings>
#include <QStatusBar>
#include <QToolBar>
#include <QWindow>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "app/dialog_views.h"
#include "app/help_model.h"
#include "app/help_window.h"
#include "app/map_widget.h"
#include "app/qt_ui.h"
#include "app/shell/map_editor.h"
#include "app/shell_models.h"
#include "app/toolbar_icons.h"
#include "core/error.h"
#include "core/error_trap.h"
#include "core/file_find.h"
#include "display/navigation.h"
#include "display/qt_canvas.h"
#include "display/redraw.h"
#include "solver/process.h"
#include "solver/solve_dialogs.h"
#include "store/database.h"

namespace tarno {

namespace fs = std::filesystem;

namespace {

// The source tree, for the manual pages and the examples of a program run from its
// build directory (this file stands in src/app/).
fs::path SourceRoot() { return fs::path(__FILE__).parent_path().parent_path().parent_path(); }

QString Q(const std::string& s) { return QString::fromStdString(s); }

// The texts of the example offers of the Welcome dialog.
struct ExampleOffer {
  const char* title;
  const char* file;
  std::vector<std::string> lines;
};

const ExampleOffer& Offer(int answer) {
  static const ExampleOffer vincennes{
      "Vincennes, Indiana Example", "example.trn",
      {"This example models the well field of Vincennes, Indiana, on the",
       "Wabash River: pumping wells, the river and its tributaries as",
       "line-sinks, and test points with observed heads.", "Load the example file?"}};
  static const ExampleOffer basin{
      "Basin and Range Example", "basin and range.trn",
      {"This example models a closed basin between mountain ranges: recharge",
       "on the basin floor, a lake, and the basin's boundaries.", "Load the example file?"}};
  return answer == 2 ? vincennes : basin;
}

// The action number of a Window menu key "ZOOM_CMDS(n)".
int ZoomNumber(const std::string& key) { return std::stoi(key.substr(10, key.size() - 11)); }

}  // namespace

// The window's side of the map editor: redraws, navigation, the solution, the
// inspection clicks and the menus.
class WindowEditorHost : public EditorHost {
 public:
  explicit WindowEditorHost(MainWindow& w) : w_(w) {}
  void Redraw() override { w_.Zoom(kZoomRedraw); }
  void Repaint() override { w_.mapWidget_->update(); }
  void ZoomAction(int action, double x1, double y1, double x2, double y2) override {
    w_.Zoom(action, x1, y1, x2, y2);
    // The rectangle or the click ends the mode: back to the select state.
    if (action == kZoomWindowEnd || action == kRecenterEnd) {
      w_.state_.mouseState = 0;
      w_.state_.mouseMode = 0;
    }
    w_.AfterMouseAction();
  }
  void InvalidateSolution() override { w_.InvalidateSolution(false); }
  void InspectAt(double x, double y) override { w_.InspectAt(x, y); }
  void TraceStreamlineAt(double x, double y) override { w_.TraceStreamlineAt(x, y); }
  void MenusChanged() override { w_.ApplyMenus(); }
  bool Solving() const override { return w_.solving_; }

 private:
  MainWindow& w_;
};

MainWindow::MainWindow(Options options, QWidget* parent)
    : QMainWindow(parent), options_(std::move(options)) {
  if (options_.ui == nullptr) {
    qtUi_ = std::make_unique<QtUserInterface>(this);
    RegisterDialogViews(*qtUi_, [this] {
      return session_ != nullptr ? session_->Settings().DBName : std::string();
    });
    port_.SetInner(*qtUi_);
    qtUi_->onHelp = [this](const std::string& dialog, const std::string& tab) {
      ShowHelpTopic(HelpIndex::PageForDialog(dialog, tab));
    };
  } else {
    port_.SetInner(*options_.ui);
  }
  layer_.SetUserInterface(&port_);
  const double ratio = QGuiApplication::primaryScreen() != nullptr
                           ? QGuiApplication::primaryScreen()->devicePixelRatio()
                           : 1.0;
  map_ = std::make_unique<QtMapSurface>(ratio);
  map2_ = std::make_unique<QtMapSurface>(ratio);
  view_ = std::make_unique<MapView>(state_, layer_, port_, *map_, *map2_);
  nav_ = std::make_unique<Navigator>(state_, *view_, port_);

  editorHost_ = std::make_unique<WindowEditorHost>(*this);
  editor_ = std::make_unique<MapEditor>(state_, layer_, port_, *editorHost_);
  mapWidget_ = new MapWidget(state_, layer_, this);
  mapWidget_->SetSurface(map_.get());
  mapWidget_->SetEditor(editor_.get());
  mapWidget_->onBeforeMouse = [this] { SyncSolutionView(); };
  setCentralWidget(mapWidget_);
  BuildMenus();
  BuildToolbar();
  BuildStatusBar();

  // The redraw's side of the window.
  RedrawHooks& rh = view_->hooks;
  rh.showToolbar = [this](bool visible) { toolbar_->setVisible(visible); };
  rh.layoutSurfaces = [this] { LayoutSurfaces(); };
  rh.disableMouse = [this] { DisableMouse(); };
  rh.enableMouse = [this] { EnableMouse(); };
  rh.resetMenus = [this] { ApplyMenus(); };
  rh.elemTurnOffSelection = [this] { ElemTurnOffSelection(); };
  rh.layersChanged = [this] { ApplyMenus(); };
  rh.currentActivity = [this] { return panels_[0]->text().toStdString(); };
  rh.currentFeedback = [this] { return panels_[1]->text().toStdString(); };

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
    MapWindow saved{state_.Window.Left, state_.Window.Right, state_.Window.Top, state_.Window.Bottom};
    // Read only: a zoom leaves the model origin to the next solve.
    const ModelExtents e = ElementExtents(db, saved);
    // Widened by a twentieth on every side, so that no element lies on the edge.
    const double dx = std::max(1.0, e.MaxX - e.MinX) / 20, dy = std::max(1.0, e.MaxY - e.MinY) / 20;
    extents = WorldWindow{e.MinX - dx, e.MaxX + dx, e.MaxY + dy, e.MinY - dy};
    return true;
  };

  mapWidget_->onWheelZoom = [this](const WorldWindow& w) {
    if (closing_) return;
    // Checked against the layer's limits as every zoom is.
    RunOperation(port_, "ZoomActions", [&] {
      SyncSolutionView();
      nav_->ZoomTo(w);
    });
    mapWidget_->update();
  };
  mapWidget_->onPosition = [this](double x, double y) {
    panels_[3]->setText(QString::number(x, 'f', 2));
    panels_[4]->setText(QString::number(y, 'f', 2));
  };
  mapWidget_->onResized = [this] {
    if (closing_) return;
    if (state_.ProjectOpen && !solving_) {
      Zoom(kZoomRefresh);
    } else {
      LayoutSurfaces();
      mapWidget_->update();
    }
  };

  port_.onActivity = [this](const std::string& t) {
    panels_[0]->setText(Q(t));
    panels_[0]->repaint();
  };
  port_.onFeedback = [this](const std::string& t) {
    panels_[1]->setText(Q(t));
    panels_[1]->repaint();
  };

  // The window's place and the toolbar from the per-user settings.
  resize(1000, 700);
  if (options_.useSettings) {
    const auto settings = OpenSettings();
    QSettings& s = *settings;
    s.beginGroup(kStartupGroup);
    const int w = s.value("Width", 0).toInt(), h = s.value("Height", 0).toInt();
    if (w >= 200 && h >= 150) {
      move(s.value("Left", 0).toInt(), s.value("Top", 0).toInt());
      resize(w, h);
    }
    state_.layers.toolbar = s.value("Toolbar", true).toBool();
    s.endGroup();
  }
  toolbar_->setVisible(state_.layers.toolbar);
  LoadGuiOptions();

  session_ = std::make_unique<ProjectSession>(port_, *this, options_.applicationDirectory);
  SetCaption(lifecycle_text::kProductTitle);
  DisableMouse();
  ApplyMenus();
}

std::unique_ptr<QSettings> MainWindow::OpenSettings() const {
  if (!options_.settingsFile.empty())
    return std::make_unique<QSettings>(Q(options_.settingsFile), QSettings::IniFormat);
  return std::make_unique<QSettings>(kSettingsOrganisation, kSettingsApplication);
}

void MainWindow::showEvent(QShowEvent* event) {
  QMainWindow::showEvent(event);
  // A window moved to a screen of another pixel ratio lays its map out again.
  if (!screenWatched_ && windowHandle() != nullptr) {
    screenWatched_ = true;
    connect(windowHandle(), &QWindow::screenChanged, this, [this] {
      if (!closing_ && mapWidget_->onResized) mapWidget_->onResized();
    });
  }
}

MainWindow::~MainWindow() {
  closing_ = true;
  if (session_ && session_->ProjectOpen()) session_->CloseAll();
}

// --- Menus and toolbar -----------------------------------------------------

void MainWindow::BuildMenus() {
  for (const MenuEntry& e : MenuModel::Entries()) {
    QMenu* parent = e.parent.empty() ? nullptr : menus_.at(e.parent);
    if (e.kind == MenuKind::Submenu) {
      QMenu* m = parent == nullptr ? menuBar()->addMenu(Q(e.caption)) : nullptr;
      if (parent != nullptr) {
        if (e.separatorBefore) parent->addSeparator();
        m = parent->addMenu(Q(e.caption));
      }
      menus_[e.key] = m;
      actions_[e.key] = m->menuAction();
      if (e.key == "MODELRUNFILES") {
        // The entries name the files of the present base name.
        connect(m, &QMenu::aboutToShow, this, [this] {
          for (const auto& f : MenuModel::RunFiles(session_->Settings().TARNOBaseName))
            actions_.at(f.key)->setStatusTip(Q(f.file));
        });
      }
      continue;
    }
    if (e.separatorBefore) parent->addSeparator();
    QAction* a = parent->addAction(Q(e.caption));
    a->setObjectName(Q(e.key));
    if (!e.shortcut.empty()) a->setShortcut(QKeySequence(Q(e.shortcut)));
    if (e.kind == MenuKind::Switch) a->setCheckable(true);
    if (!e.built) a->setStatusTip(kNotAvailableTip);
    const std::string key = e.key;
    connect(a, &QAction::triggered, this, [this, key] { Dispatch(key); });
    actions_[key] = a;
  }
}

void MainWindow::BuildToolbar() {
  toolbar_ = addToolBar("Toolbar");
  toolbar_->setObjectName("Toolbar1");
  toolbar_->setMovable(false);
  toolbar_->setIconSize(QSize(24, 24));
  for (const ToolbarButton& b : MenuModel::Toolbar()) {
    if (b.separatorBefore) toolbar_->addSeparator();
    QAction* a = toolbar_->addAction(ToolbarIcon(b.key), Q(b.tip));
    a->setObjectName(Q(b.key));
    a->setToolTip(Q(b.tip));
    if (!MenuModel::Entry(b.menuKey).built) a->setStatusTip(kNotAvailableTip);
    const std::string key = b.key;
    connect(a, &QAction::triggered, this, [this, key] { ToolbarClick(key); });
    buttons_[key] = a;
  }
}

void MainWindow::BuildStatusBar() {
  const int widths[5] = {90, 0, 120, 110, 110};
  for (int i = 0; i < 5; ++i) {
    panels_[i] = new QLabel(this);
    panels_[i]->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    if (widths[i] > 0) panels_[i]->setMinimumWidth(widths[i]);
    if (i == 1) {
      statusBar()->addWidget(panels_[i], 1);
    } else if (i == 0) {
      statusBar()->addWidget(panels_[i]);
    } else {
      statusBar()->addPermanentWidget(panels_[i]);
    }
  }
}

MenuState MainWindow::CurrentMenuState() const {
  MenuState s;
  s.projectOpen = session_ != nullptr && session_->ProjectOpen();
  s.solutionValid = solution_.SolutionPresent;
  s.solving = solving_;
  s.mouseOperation = mouseOperation_ || (editor_ != nullptr && editor_->MenusOff());
  s.runFiles = runFiles_;
  if (editor_ != nullptr)
    for (std::size_t i = 0; i < s.editEntries.size(); ++i)
      s.editEntries[i] = editor_->EditMenu()[i].enabled;
  s.layers = state_.layers;
  return s;
}

void MainWindow::ApplyMenus() {
  if (closing_) return;
  const MenuState s = CurrentMenuState();
  for (auto& [key, action] : actions_) {
    bool enabled = MenuModel::Enabled(key, s);
    if (key == "VIEWMENU" && !layerMenuEnabled_) enabled = false;
    action->setEnabled(enabled);
    // The selection's entries take their captions from the editor.
    if (editor_ != nullptr && key.rfind("EDIT_CMDS(", 0) == 0 && key.size() == 12 &&
        key[10] >= '0' && key[10] <= '3')
      action->setText(Q(editor_->EditMenu()[key[10] - '0'].caption));
    if (action->isCheckable()) action->setChecked(MenuModel::Checked(key, state_.layers));
  }
  for (auto& [key, action] : buttons_) action->setEnabled(MenuModel::ButtonEnabled(key, s));
}

void MainWindow::TurnOffMenus() {
  // Without a project the menus shrink to File and Help; with one, a mouse
  // operation runs.
  mouseOperation_ = session_ != nullptr && session_->ProjectOpen();
  ApplyMenus();
}

void MainWindow::TurnOnMenus() {
  mouseOperation_ = false;
  ApplyMenus();
}

void MainWindow::SetUpToolbar() {
  toolbar_->setVisible(state_.layers.toolbar);
  ApplyMenus();
}

void MainWindow::EnableLayerMenu(bool enabled) {
  layerMenuEnabled_ = enabled;
  ApplyMenus();
}

void MainWindow::EnableProjectCommands(bool) { ApplyMenus(); }

void MainWindow::SetHydrologicUnitEntries(bool farField, bool nearField) {
  state_.layers.viewFarField = state_.layers.viewFarFieldEnabled = farField;
  state_.layers.viewNearField = state_.layers.viewNearFieldEnabled = nearField;
  ApplyMenus();
}

void MainWindow::SetEditGridChecks(bool show, bool snap) {
  state_.layers.showEditorGrid = show;
  state_.layers.snapToGrid = snap;
  ApplyMenus();
}

void MainWindow::SetCaption(const std::string& caption) { setWindowTitle(Q(caption)); }

QAction* MainWindow::Action(const std::string& menuKey) const {
  const auto it = actions_.find(menuKey);
  return it == actions_.end() ? nullptr : it->second;
}

QAction* MainWindow::ToolbarAction(const std::string& key) const {
  const auto it = buttons_.find(key);
  return it == buttons_.end() ? nullptr : it->second;
}

// --- Dispatch ----------------------------------------------------------------

void MainWindow::Dispatch(const std::string& key) {
  const MenuEntry& e = MenuModel::Entry(key);
  if (e.kind == MenuKind::Switch) {
    ToggleSwitch(key);
    return;
  }
  // The adding and editing of elements: the map editor's modes and operations.
  if (MapEditor::Handles(key)) {
    SyncSolutionView();
    editor_->Command(key);
    ApplyMenus();
    mapWidget_->update();
    return;
  }
  if (key == "FILE_CMDS(0)") {
    session_->FileNewProject();
  } else if (key == "FILE_CMDS(1)") {
    session_->FileOpenProject("", true);
  } else if (key == "FILE_CMDS(2)") {
    session_->FileSaveAs();
  } else if (key == "FILE_CMDS(3)") {
    session_->FileCloseProject();
  } else if (key == "FILE_CMDS(4)") {
    session_->FileProjectSettings();
  } else if (key == "FILE_CMDS(7)") {
    close();
  } else if (key == "EDIT_CMDS(7)") {
    QGuiApplication::clipboard()->setImage(MapImage());
  } else if (key == "Layermenu(10)") {
    Zoom(kZoomRefresh);
  } else if (key == "MODEL_CMDS(0)") {
    ModelSettingsCommand();
  } else if (key == "MODEL_CMDS(1)") {
    Solve(true);
  } else if (key == "MODEL_CMDS(2)") {
    ContinueSolve();
  } else if (key == "ModelSize") {
    ModelSizeCommand();
  } else if (key == "SET_TIME") {
    SetTimeCommand();
  } else if (key == "InspectorSettings") {
    InspectorSettingsCommand();
  } else if (key == "SolverIntegrityCheck") {
    SolverIntegrityCheckCommand();
  } else if (key.rfind("RUN_FILES(", 0) == 0) {
    ShowRunFile(key);
  } else if (key == "TOOLS_CMDS(0)") {
    GuiOptionsCommand();
  } else if (key.rfind("ZOOM_CMDS(", 0) == 0) {
    Zoom(ZoomNumber(key));
  } else if (key.rfind("HELP_CMDS(", 0) == 0 || key == "ReleaseNotes") {
    OpenHelp(key);
  } else if (key == "About") {
    About();
  }
  // Entries of features not built yet are disabled and never reach this point.
}

void MainWindow::ToolbarClick(const std::string& key) {
  static const std::map<std::string, int> zoom = {
      {"WINDOWZOOMIN", kZoomIn},         {"WINDOWZOOMOUT", kZoomOut},
      {"WINDOWZOOMWIN", kZoomWindowMode}, {"WINDOWZOOMEXTENTS", kZoomExtents},
      {"WINDOWSCROLLLEFT", kScrollLeft},  {"WINDOWSCROLLRIGHT", kScrollRight},
      {"WINDOWSCROLLUP", kScrollUp},      {"WINDOWSCROLLDOWN", kScrollDown},
      {"WINDOWRECENTER", kRecenterMode}};
  const auto it = zoom.find(key);
  if (it != zoom.end()) {
    // A second click on the key of the mode that runs leaves it.
    if (key == "WINDOWRECENTER" && state_.mouseState == kRecenterMouseState &&
        state_.mouseMode == kRecenterMouseMode) {
      Zoom(kZoomModeLeave);
      AfterMouseAction();
      return;
    }
    Zoom(it->second);
    if (key == "WINDOWZOOMWIN") AfterMouseAction();
    return;
  }
  // The other keys run their menu entry; the edit keys act on the selected kind
  // ("Move Well", "Move Vertex", ...) through the editor.
  Dispatch(MenuModel::Button(key).menuKey);
}

void MainWindow::ToggleSwitch(const std::string& key) {
  bool* on = MenuModel::SwitchOf(key, state_.layers);
  if (on == nullptr) return;
  *on = !*on;
  if (key == "Layermenu(9)") {
    // The toolbar and the surfaces under it.
    toolbar_->setVisible(*on);
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

void MainWindow::ShowSolutionNote() {
  // What the contours show while they are on the map; the units otherwise.
  const bool shown = solution_.SolutionPresent && state_.layers.contours;
  Note(shown ? solution_.Note : std::string(), "");
}

void MainWindow::AfterMouseAction() {
  // The end or the leaving of a navigation mode brings the select state back.
  const bool inMode = (state_.mouseState == kZoomWindowMouseState &&
                       state_.mouseMode == kZoomWindowMouseMode) ||
                      (state_.mouseState == kRecenterMouseState &&
                       state_.mouseMode == kRecenterMouseMode);
  mapWidget_->setCursor(inMode ? Qt::CrossCursor : Qt::ArrowCursor);
  if (!inMode && mouseOperation_) TurnOnMenus();
}

// --- Map --------------------------------------------------------------------

void MainWindow::LayoutSurfaces() {
  int w = mapWidget_->width(), h = mapWidget_->height();
  if (fixedMapSize_) {
    std::tie(w, h) = *fixedMapSize_;
  } else {
    // The ratio of the screen the map stands on now (a window may move to another).
    map_->SetDevicePixelRatio(mapWidget_->devicePixelRatioF());
    map2_->SetDevicePixelRatio(mapWidget_->devicePixelRatioF());
  }
  map_->Resize(std::max(1, w), std::max(1, h));
  map2_->Resize(std::max(1, w), std::max(1, h));
}

void MainWindow::SyncSolutionView() {
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

void MainWindow::Zoom(int action, double x1, double y1, double x2, double y2) {
  if (closing_) return;
  RunOperation(port_, "ZoomActions", [&] {
    SyncSolutionView();
    nav_->ZoomActions(action, x1, y1, x2, y2);
  });
  mapWidget_->ReportPosition();
  mapWidget_->update();
}

void MainWindow::ZoomActions(bool first) {
  if (closing_) return;
  if (first) {
    // The project closes: the map lays out its surfaces and draws nothing.
    SyncSolutionView();
    state_.ProjectOpen = false;
    RunOperation(port_, "ZoomActions", [&] { view_->Redraw(false, false); });
    mapWidget_->update();
    return;
  }
  Zoom(kZoomRedraw);
}

void MainWindow::EnableMouse() {
  mapWidget_->SetMouseEnabled(true);  // the editor's too
  // The mouse comes back after an open or a redraw: the vertex search's index is
  // made ready on the editor's connection while nobody waits for a click.
  if (editor_ != nullptr) {
    SyncSolutionView();
    editor_->Prepare();
  }
  mapWidget_->update();
}

void MainWindow::DisableMouse() { mapWidget_->SetMouseEnabled(false); }

void MainWindow::ElemTurnOffSelection() {
  if (editor_ != nullptr)
    editor_->ElemTurnOffSelection();
  else
    state_.selection = Selection{};
}

void MainWindow::ClearProjectViews() {
  solution_ = SolutionState{};
  inspector_ = InspectorSettings{};  // the inspector's settings are a session's
  runFiles_ = true;
  state_.selection = Selection{};
  state_.mouseState = state_.mouseMode = 0;
  if (editor_ != nullptr) editor_->Reset();
  mouseOperation_ = false;
  unitsText_.clear();
  Note("", "");
  // No mode, no prompt and no pointer position without a project.
  for (int panel : {0, 1, 3, 4}) panels_[panel]->clear();
  for (QtMapSurface* s : {map_.get(), map2_.get()}) s->GetCanvas().Clear(state_.options.Background);
  mapWidget_->update();
}

void MainWindow::SetUpLayers() {
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
  view_->SetUpLayers();
  ApplyMenus();
}

void MainWindow::ModelCheckExtents(ProjectSession& session, StoredWindow& window) {
  Database db = Database::Open(session.Settings().DBName);
  const MapWindow saved{std::min(window.x1, window.x2), std::max(window.x1, window.x2),
                        std::max(window.y1, window.y2), std::min(window.y1, window.y2)};
  const ModelExtents e = tarno::ModelCheckExtents(db, saved, std::nullopt);
  state_.frame = ModelRestoreModelOrigin(db, settings_.BasemapConvert);
  // A window of no extent, or one that lies wholly beside the model, gives way to
  // the model's extents widened by a tenth.
  const bool empty = !(window.x1 < window.x2) || !(window.y1 < window.y2);
  const bool beside = saved.Right < e.MinX || saved.Left > e.MaxX || saved.Top < e.MinY ||
                      saved.Bottom > e.MaxY;
  // So does a window the map cannot draw (stored before the zoom had its limits).
  const bool undrawable =
      !empty && CheckWindowRange(WorldWindow{saved.Left, saved.Right, saved.Top, saved.Bottom},
                                 std::max(1, mapWidget_->width()),
                                 std::max(1, mapWidget_->height())) != WindowRange::kFits;
  if (empty || beside || undrawable) {
    const double dx = std::max(1.0, e.MaxX - e.MinX) / 10, dy = std::max(1.0, e.MaxY - e.MinY) / 10;
    window = StoredWindow{e.MinX - dx, e.MaxX + dx, e.MinY - dy, e.MaxY + dy};
  }
  state_.Window = WorldWindow{window.x1, window.x2, window.y2, window.y1};
  unitsText_ = session.UnitsText();
  Note("", "");
}

void MainWindow::UnitsChanged() {
  // The solution's coordinates were computed with the old factor: drawn with the
  // new one they would stand in the wrong places, so it goes without a question.
  InvalidateSolution(false);
}

void MainWindow::RenderMapAt(int width, int height) {
  fixedMapSize_ = std::make_pair(width, height);
  if (state_.ProjectOpen) {
    Zoom(kZoomRefresh);
  } else {
    LayoutSurfaces();
  }
}

QImage MainWindow::MapImage() { return map_->Image().copy(); }

void MainWindow::Note(const std::string& text1, const std::string& text2) {
  std::string note = text1;
  if (!text2.empty()) note += (note.empty() ? "" : " ") + text2;
  panels_[2]->setText(Q(note.empty() ? unitsText_ : note));
}

QString MainWindow::PanelText(int panel) const {
  return panel >= 0 && panel < 5 ? panels_[panel]->text() : QString();
}

// --- Project and model commands ---------------------------------------------

bool MainWindow::OpenProject(const std::string& path) { return session_->FileOpenProject(path); }

bool MainWindow::CloseProject() { return session_->FileCloseProject(); }

std::string MainWindow::ProgramDirectory() const {
  if (!options_.programDirectory.empty()) return options_.programDirectory;
  const char* env = std::getenv("TARNO_PROGRAM_DIR");
  if (env != nullptr && *env != '\0') return env;
  return tarno::ProgramDirectory().string();
}

SolveContext MainWindow::SolveContextFor(ProcessWaiter* waiter) {
  SolveContext ctx;
  ctx.projectPath = session_->Settings().DBName;
  ctx.settings = &settings_;
  ctx.state = &solution_;
  ctx.ui = &port_;
  ctx.waiter = waiter;
  ctx.programDirectory = ProgramDirectory();
  ctx.window = MapWindow{state_.Window.Left, state_.Window.Right, state_.Window.Top, state_.Window.Bottom};
  ctx.programOutput = "/dev/null";
  ctx.solverErrors = "/dev/null";
  ctx.hooks.enableMenu = [this](const std::string& entry, bool enabled) {
    // A solve shows what it computed: its contours and its pathlines.
    if (entry == "chkContour") state_.layers.contoursEnabled = state_.layers.contours = enabled;
    if (entry == "chkComputePaths") state_.layers.pathlinesEnabled = state_.layers.pathlines = enabled;
    if (entry == "MODELRUNFILES") runFiles_ = enabled;
  };
  ctx.hooks.redraw = [this] {
    SyncSolutionView();
    Zoom(kZoomRedraw);
  };
  return ctx;
}

bool MainWindow::InvalidateSolution(bool ask) {
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

SolveOutcome MainWindow::RunSolve(SolveOptions options) {
  if (!session_->ProjectOpen()) return SolveOutcome::Cancelled;
  // The window repaints while the solver and the contourer run; the user's input
  // waits until the run is over.
  PollingWaiter waiter([] { QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); },
                       std::chrono::milliseconds(30));
  // The tracing step that follows the window, for a model that asks for it.
  settings_.DefaultStepSize =
      ComputeDefaultStep(state_.Window.Left, state_.Window.Bottom, state_.Window.Right, state_.Window.Top);
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

SolveOutcome MainWindow::Solve(bool prompt) {
  SolveOptions o;
  o.Prompt = prompt;
  return RunSolve(o);
}

SolveOutcome MainWindow::ContinueSolve() {
  SolveOptions o;
  o.ContinueSolve = true;
  return RunSolve(o);
}

void MainWindow::ModelSettingsCommand() {
  RunOperation(port_, "ModelSettings", [&] {
    const std::string file = session_->Settings().DBName;
    {
      Database db = Database::Open(file);
      settings_.Load(db);
    }
    settings_.DefaultStepSize =
        ComputeDefaultStep(state_.Window.Left, state_.Window.Bottom, state_.Window.Right, state_.Window.Top);
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
    const MapWindow w{state_.Window.Left, state_.Window.Right, state_.Window.Top, state_.Window.Bottom};
    tarno::ModelCheckExtents(db, w, std::nullopt);
    state_.frame = ModelRestoreModelOrigin(db, settings_.BasemapConvert);
  });
}

void MainWindow::ModelSizeCommand() {
  RunOperation(port_, "ModelGetSize", [&] {
    Database db = Database::Open(session_->Settings().DBName);
    ModelGetSize(db, true, port_);
  });
}

void MainWindow::SetTimeCommand() {
  if (!session_->ProjectOpen()) return;
  PollingWaiter waiter([] { QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents); },
                       std::chrono::milliseconds(30));
  SolveContext ctx = SolveContextFor(&waiter);
  bool changed = false;
  RunOperation(port_, "SET_TIME_Click", [&] { changed = SET_TIME_Click(ctx); });
  if (!changed) return;
  SyncSolutionView();
  ShowSolutionNote();
  ApplyMenus();
}

void MainWindow::InspectorSettingsCommand() {
  RunOperation(port_, "InspectorSettings", [&] {
    InspectorDialog dialog;
    dialog.Load(inspector_, settings_.basemapMeters);
    port_.ShowModal(dialog);
    if (dialog.Result == 1) inspector_ = dialog.Settings;
  });
}

void MainWindow::SolverIntegrityCheckCommand() {
  RunOperation(port_, "SolverIntegrityCheck_Click", [&] { SolverIntegrityCheck_Click(port_, inspector_); });
}

InspectReport MainWindow::InspectAt(double x, double y) {
  if (!session_->ProjectOpen()) return {};
  BlockingWaiter waiter;  // a run of a few milliseconds
  SolveContext ctx = SolveContextFor(&waiter);
  return ModelInspectResults(ctx, inspector_, x, y);
}

void MainWindow::TraceStreamlineAt(double x, double y) {
  if (!session_->ProjectOpen()) return;
  BlockingWaiter waiter;
  SolveContext ctx = SolveContextFor(&waiter);
  if (!ModelTraceOneStreamline(ctx, inspector_, x, y)) return;
  // The streamline is drawn with the pathlines of the solution.
  state_.layers.pathlinesEnabled = state_.layers.pathlines = true;
  SyncSolutionView();
  Zoom(kZoomRedraw);
}

void MainWindow::ShowRunFile(const std::string& key) {
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

void MainWindow::LoadGuiOptions() {
  if (!options_.useSettings) return;
  const auto settings = OpenSettings();
  QSettings& s = *settings;
  s.beginGroup(kGuiOptionsGroup);
  DisplayOptions& o = state_.options;
  o.HazeLevel = s.value("HazeLevel", o.HazeLevel).toInt();
  o.HazeColor = s.value("HazeColor", o.HazeColor).toInt();
  o.VertexTolerance = s.value("VertexTolerance", o.VertexTolerance).toDouble();
  o.LinesinkShadow = s.value("LinesinkShadow", o.LinesinkShadow).toDouble();
  s.endGroup();
}

void MainWindow::GuiOptionsCommand() {
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
    gui.DataVertexTolerance = QString::number(o.VertexTolerance).toStdString();
    gui.DataLinesinkShadow = QString::number(o.LinesinkShadow).toStdString();
    port_.ShowModal(gui);
    if (gui.Result != 1) return;
    gui.ApplyTo(state_.options);
    if (options_.useSettings) {
      const auto settings = OpenSettings();
      QSettings& s = *settings;
      s.beginGroup(kGuiOptionsGroup);
      s.setValue("HazeLevel", state_.options.HazeLevel);
      s.setValue("HazeColor", state_.options.HazeColor);
      s.setValue("VertexTolerance", state_.options.VertexTolerance);
      s.setValue("LinesinkShadow", state_.options.LinesinkShadow);
      s.endGroup();
    }
    view_->RedrawBasemap = true;
  });
  Zoom(kZoomRedraw);
}

// --- Help -------------------------------------------------------------------

std::string MainWindow::HelpFolder() const {
  const fs::path program(session_->ApplicationDirectory());
  return HelpIndex::FindFolder({(program / HelpIndex::kProgramFolder).string(),
                                (program.parent_path() / HelpIndex::kSourceFolder).string(),
                                (SourceRoot() / HelpIndex::kSourceFolder).string()});
}

bool MainWindow::ShowHelpTopic(const std::string& target) {
  if (help_ == nullptr) {
    const std::string folder = HelpFolder();
    if (folder.empty()) {
      port_.MessageBox("Help", {"The help pages were not found."}, Buttons::OK, Icon::Exclamation);
      return false;
    }
    help_ = new HelpWindow(folder, this);
  }
  if (help_->ShowTopic(target)) return true;
  port_.MessageBox("Help", {"The page " + HelpIndex::Split(target).page + " was not found."},
                   Buttons::OK, Icon::Exclamation);
  return false;
}

void MainWindow::OpenHelp(const std::string& key) {
  RunOperation(port_, "HELP_CMDS", [&] { ShowHelpTopic(HelpIndex::PageForKey(key)); });
}

void MainWindow::About() {
  port_.MessageBox("About TARNO",
                   {"TARNO", "Groundwater flow modelling by the analytic element method:",
                    "single-aquifer Dupuit-Forchheimer models of wells, line-sinks,",
                    "inhomogeneities, barriers, lakes and uniform flow."},
                   Buttons::OK, Icon::Information);
}

// --- Start-up and closing -----------------------------------------------------

std::string MainWindow::ExampleFile(const std::string& name) const {
  for (const fs::path& dir : {fs::path(session_->ApplicationDirectory()), SourceRoot() / "examples"}) {
    const fs::path p = dir / name;
    if (fs::exists(p)) return p.string();
  }
  return {};
}

void MainWindow::ShowWelcome() {
  Welcome welcome;
  port_.ShowModal(welcome);
  if (welcome.chkShowBox && options_.useSettings) {
    const auto settings = OpenSettings();
    QSettings& s = *settings;
    s.setValue(QString(kStartupGroup) + "/WelcomeBox", 1);
  }
  if (welcome.Result != 2 && welcome.Result != 3) return;
  const ExampleOffer& offer = Offer(welcome.Result);
  if (port_.MessageBox(offer.title, offer.lines, Buttons::YesNo, Icon::Question) != Answer::Yes)
    return;
  const std::string file = ExampleFile(offer.file);
  if (file.empty()) {
    port_.MessageBox(offer.title,
                     {std::string("The example file \"") + offer.file + "\" was not found.",
                      "Build it with scripts/make-examples."},
                     Buttons::OK, Icon::Exclamation);
    return;
  }
  session_->FileOpenProject(file);
}

void MainWindow::StartUp(const std::string& commandLine) {
  DisableMouse();
  const std::string path = StripCommandLineQuotes(commandLine);
  if (!path.empty()) {
    session_->FileOpenProject(path);
  } else {
    int welcomeBox = 1;
    if (options_.useSettings) {
      const auto settings = OpenSettings();
      QSettings& s = *settings;
      welcomeBox = s.value(QString(kStartupGroup) + "/WelcomeBox", 0).toInt();
    }
    if (welcomeBox == 0) RunOperation(port_, "Welcome", [&] { ShowWelcome(); });
  }
  if (!session_->ProjectOpen()) {
    TurnOffMenus();
    SetUpToolbar();
    ZoomActions(true);
  }
}

void MainWindow::SaveStartupSettings() {
  if (!options_.useSettings) return;
  const auto settings = OpenSettings();
  QSettings& s = *settings;
  s.beginGroup(kStartupGroup);
  s.setValue("Top", y());
  s.setValue("Left", x());
  s.setValue("Width", width());
  s.setValue("Height", height());
  s.setValue("Toolbar", state_.layers.toolbar);
  s.endGroup();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (solving_) {
    event->ignore();
    return;
  }
  RunOperation(port_, "Form_Unload", [&] {
    SaveStartupSettings();
    session_->CloseAll();
  });
  closing_ = true;
  event->accept();
}

}  // namespace tarno
