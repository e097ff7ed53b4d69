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
#include <cmath>
#include <filesystem>

#include "app/dialog_views.h"
#include "app/help_model.h"
#include "app/help_window.h"
#include "app/map_widget.h"
#include "app/qt_ui.h"
#include "app/shell_models.h"
#include "app/toolbar_icons.h"
#include "core/error_trap.h"
#include "display/navigation.h"
#include "display/qt_canvas.h"
#include "display/redraw.h"

namespace tarno {

namespace fs = std::filesystem;

namespace {

// The source tree, for the manual pages of a program run from its build directory
// (this file stands in src/app/).
fs::path SourceRoot() { return fs::path(__FILE__).parent_path().parent_path().parent_path(); }

QString Q(const std::string& s) { return QString::fromStdString(s); }

}  // namespace

MainWindow::MainWindow(Options options, QWidget* parent)
    : QMainWindow(parent), options_(std::move(options)) {
  const double ratio = QGuiApplication::primaryScreen() != nullptr
                           ? QGuiApplication::primaryScreen()->devicePixelRatio()
                           : 1.0;
  map_ = std::make_unique<QtMapSurface>(ratio);
  map2_ = std::make_unique<QtMapSurface>(ratio);
  shell_ = std::make_unique<ShellController>(
      *this, *map_, *map2_, ShellOptions{options_.applicationDirectory, options_.programDirectory});
  ForwardingUserInterface& port = shell_->Port();
  if (options_.ui == nullptr) {
    qtUi_ = std::make_unique<QtUserInterface>(this);
    RegisterDialogViews(*qtUi_, [this] { return shell_->Session().Settings().DBName; });
    port.SetInner(*qtUi_);
    qtUi_->onHelp = [this](const std::string& dialog, const std::string& tab) {
      ShowHelpTopic(HelpIndex::PageForDialog(dialog, tab));
    };
  } else {
    port.SetInner(*options_.ui);
  }

  mapWidget_ = new MapWidget(shell_->State(), shell_->Layer(), this);
  mapWidget_->SetSurface(map_.get());
  setCentralWidget(mapWidget_);
  BuildMenus();
  BuildToolbar();
  BuildStatusBar();

  // The map's mouse goes to the controller.
  mapWidget_->SetEditor(&shell_->Editor());
  mapWidget_->onBeforeMouse = [this] { shell_->SyncSolutionView(); };
  mapWidget_->onWheelZoom = [this](const WorldWindow& w) { shell_->WheelZoom(w); };
  mapWidget_->onPosition = [this](double x, double y) {
    panels_[kPanelX]->setText(QString::number(x, 'f', 2));
    panels_[kPanelY]->setText(QString::number(y, 'f', 2));
  };
  mapWidget_->onResized = [this] { shell_->MapResized(); };

  // The window's place and the toolbar from the per-user settings.
  resize(1000, 700);
  MapState& state = shell_->State();
  if (options_.useSettings) {
    const auto settings = OpenSettings();
    QSettings& s = *settings;
    s.beginGroup(kStartupGroup);
    const int w = s.value("Width", 0).toInt(), h = s.value("Height", 0).toInt();
    if (w >= 200 && h >= 150) {
      move(s.value("Left", 0).toInt(), s.value("Top", 0).toInt());
      resize(w, h);
    }
    state.layers.toolbar = s.value("Toolbar", true).toBool();
    s.endGroup();
  }
  toolbar_->setVisible(state.layers.toolbar);
  LoadGuiOptions();

  SetCaption(lifecycle_text::kProductTitle);
  shell_->DisableMouse();
  shell_->ApplyMenus();
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
      if (!shell_->Closing() && mapWidget_->onResized) mapWidget_->onResized();
    });
  }
}

MainWindow::~MainWindow() {
  // The project closes while the widgets still stand; nothing is drawn any more.
  shell_->SetClosing();
  if (shell_->Session().ProjectOpen()) shell_->Session().CloseAll();
  shell_.reset();
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
          for (const auto& f : MenuModel::RunFiles(shell_->Session().Settings().TARNOBaseName))
            actions_.at(f.key)->setStatusTip(Q(f.file));
        });
      }
      continue;
    }
    if (e.separatorBefore) parent->addSeparator();
    QAction* a = parent->addAction(Q(e.caption));
    a->setObjectName(Q(e.key));
    if (!e.shortcut.empty()) a->setShortcut(QKeySequence(Q(e.shortcut)));
    if (e.kind == MenuKind::Switch || e.kind == MenuKind::Choice) a->setCheckable(true);
    if (!e.built) a->setStatusTip(kNotAvailableTip);
    const std::string key = e.key;
    connect(a, &QAction::triggered, this, [this, key] { shell_->Commands().Run(key); });
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
    connect(a, &QAction::triggered, this, [this, key] { shell_->Commands().RunButton(key); });
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

QAction* MainWindow::Action(const std::string& menuKey) const {
  const auto it = actions_.find(menuKey);
  return it == actions_.end() ? nullptr : it->second;
}

QAction* MainWindow::ToolbarAction(const std::string& key) const {
  const auto it = buttons_.find(key);
  return it == buttons_.end() ? nullptr : it->second;
}

// --- ShellHost ------------------------------------------------------------------

void MainWindow::ApplyMenus(const MenuState& s, bool layerMenu) {
  for (auto& [key, action] : actions_) {
    bool enabled = MenuModel::Enabled(key, s);
    if (key == "VIEWMENU" && !layerMenu) enabled = false;
    action->setEnabled(enabled);
    if (key == "EDIT_UNDO" || key == "EDIT_REDO") action->setText(Q(MenuModel::Caption(key, s)));
    // The selection's entries take their captions from the map editor.
    for (std::size_t i = 0; i < s.editCaptions.size(); ++i)
      if (key == "EDIT_CMDS(" + std::to_string(i) + ")" && !s.editCaptions[i].empty())
        action->setText(Q(s.editCaptions[i]));
    if (action->isCheckable()) action->setChecked(MenuModel::Checked(key, s.layers));
  }
  for (auto& [key, action] : buttons_) action->setEnabled(MenuModel::ButtonEnabled(key, s));
}

void MainWindow::ShowToolbar(bool visible) {
  if (toolbar_ != nullptr) toolbar_->setVisible(visible);
}

void MainWindow::CopyMapToClipboard() { QGuiApplication::clipboard()->setImage(MapImage()); }

void MainWindow::RepaintMap() {
  if (mapWidget_ != nullptr) mapWidget_->update();
}

void MainWindow::ReportPointer() {
  if (mapWidget_ != nullptr) mapWidget_->ReportPosition();
}

void MainWindow::SetMapCursor(MapCursor cursor) {
  mapWidget_->setCursor(cursor == MapCursor::Cross ? Qt::CrossCursor : Qt::ArrowCursor);
}

void MainWindow::SetMouseEnabled(bool enabled) {
  if (mapWidget_ != nullptr) mapWidget_->SetMouseEnabled(enabled);
}

void MainWindow::SetCaption(const std::string& caption) { setWindowTitle(Q(caption)); }

void MainWindow::SetStatusText(int panel, const std::string& text) {
  if (panel < 0 || panel >= 5 || panels_[panel] == nullptr) return;
  panels_[panel]->setText(Q(text));
  // What the program does and what the user is to do show at once, also while a
  // long operation keeps the event loop busy.
  if (panel == kPanelActivity || panel == kPanelFeedback) panels_[panel]->repaint();
}

std::string MainWindow::StatusText(int panel) const { return PanelText(panel).toStdString(); }

QString MainWindow::PanelText(int panel) const {
  return panel >= 0 && panel < 5 && panels_[panel] != nullptr ? panels_[panel]->text() : QString();
}

void MainWindow::LayoutSurfaces() {
  int w = mapWidget_->width(), h = mapWidget_->height();
  if (fixedMapSize_) {
    std::tie(w, h) = *fixedMapSize_;
  } else {
    // The ratio of the screen the map stands on now (a window may move to another).
    map_->SetDevicePixelRatio(mapWidget_->devicePixelRatioF());
    map2_->SetDevicePixelRatio(mapWidget_->devicePixelRatioF());
  }
  w = std::max(1, w);
  h = std::max(1, h);
  map_->Resize(w, h);
  // Map2 keeps the background (base maps, haze) while its size stays: a redraw
  // rebuilds it only when the window or the map list changed, so a new, blank Map2
  // must be drawn again.
  const QImage& background = map2_->Image();
  const double ratio = background.isNull() ? 0.0 : background.devicePixelRatio();
  const bool sameSize = !background.isNull() && ratio > 0 &&
                        background.width() == static_cast<int>(std::lround(w * ratio)) &&
                        background.height() == static_cast<int>(std::lround(h * ratio)) &&
                        (fixedMapSize_ || ratio == mapWidget_->devicePixelRatioF());
  if (!sameSize) {
    map2_->Resize(w, h);
    if (shell_) shell_->View().RedrawBasemap = true;
  }
}

std::pair<int, int> MainWindow::MapSize() const {
  return {mapWidget_->width(), mapWidget_->height()};
}

void MainWindow::ProcessEvents() {
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
}

void MainWindow::StoreGuiOptions(const DisplayOptions& o) {
  if (!options_.useSettings) return;
  const auto settings = OpenSettings();
  QSettings& s = *settings;
  s.beginGroup(kGuiOptionsGroup);
  s.setValue("HazeLevel", o.HazeLevel);
  s.setValue("HazeColor", o.HazeColor);
  s.setValue("VertexTolerance", o.VertexTolerance);
  s.setValue("LinesinkShadow", o.LinesinkShadow);
  s.endGroup();
}

void MainWindow::RenderMapAt(int width, int height) {
  fixedMapSize_ = std::make_pair(width, height);
  if (shell_->State().ProjectOpen) {
    shell_->Zoom(kZoomRefresh);
  } else {
    LayoutSurfaces();
  }
}

QImage MainWindow::MapImage() { return map_->Image().copy(); }

void MainWindow::LoadGuiOptions() {
  if (!options_.useSettings) return;
  const auto settings = OpenSettings();
  QSettings& s = *settings;
  s.beginGroup(kGuiOptionsGroup);
  DisplayOptions& o = shell_->State().options;
  o.HazeLevel = s.value("HazeLevel", o.HazeLevel).toInt();
  o.HazeColor = s.value("HazeColor", o.HazeColor).toInt();
  o.VertexTolerance = s.value("VertexTolerance", o.VertexTolerance).toDouble();
  o.LinesinkShadow = s.value("LinesinkShadow", o.LinesinkShadow).toDouble();
  s.endGroup();
}

// --- Help -------------------------------------------------------------------

std::string MainWindow::HelpFolder() const {
  const fs::path program(shell_->Session().ApplicationDirectory());
  return HelpIndex::FindFolder({(program / HelpIndex::kProgramFolder).string(),
                                (program.parent_path() / HelpIndex::kSourceFolder).string(),
                                (SourceRoot() / HelpIndex::kSourceFolder).string()});
}

bool MainWindow::ShowHelpTopic(const std::string& target) {
  if (help_ == nullptr) {
    const std::string folder = HelpFolder();
    if (folder.empty()) {
      shell_->Port().MessageBox("Help", {"The help pages were not found."}, Buttons::OK, Icon::Exclamation);
      return false;
    }
    help_ = new HelpWindow(folder, this);
  }
  if (help_->ShowTopic(target)) return true;
  shell_->Port().MessageBox("Help", {"The page " + HelpIndex::Split(target).page + " was not found."},
                   Buttons::OK, Icon::Exclamation);
  return false;
}

// --- Start-up and closing -----------------------------------------------------

void MainWindow::StartUp(const std::string& commandLine) {
  const std::string path = StripCommandLineQuotes(commandLine);
  int welcomeBox = 1;
  if (path.empty() && options_.useSettings) {
    const auto settings = OpenSettings();
    QSettings& s = *settings;
    welcomeBox = s.value(QString(kStartupGroup) + "/WelcomeBox", 0).toInt();
  }
  const bool hide = shell_->StartUp(path, path.empty() && welcomeBox == 0);
  if (hide && options_.useSettings) {
    const auto settings = OpenSettings();
    QSettings& s = *settings;
    s.setValue(QString(kStartupGroup) + "/WelcomeBox", 1);
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
  s.setValue("Toolbar", shell_->State().layers.toolbar);
  s.endGroup();
}

void MainWindow::closeEvent(QCloseEvent* event) {
  if (shell_->Solving()) {
    event->ignore();
    return;
  }
  RunOperation(shell_->Port(), "Form_Unload", [&] {
    SaveStartupSettings();
    shell_->Session().CloseAll();
  });
  shell_->SetClosing();
  event->accept();
}

}  // namespace tarno
