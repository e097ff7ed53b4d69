// The main window with a project, offscreen: the example of Vincennes is built in
// a temporary folder with tarnocmd, opened, solved through the menu, looked at in
// the map's pixels, zoomed and closed; and the screenshot of the program.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <QAction>
#include <QApplication>
#include <QImage>
#include <QMouseEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSettings>
#include <QToolBar>
#include <QStandardPaths>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>

#include "app/app_screenshot.h"
#include "app/main_window.h"
#include "app/map_widget.h"
#include "app/shell/map_editor.h"
#include "app/shell_models.h"
#include "app/views/solve_views.h"
#include "core/console_ui.h"
#include "dialogs_test_support.h"
#include "display/navigation.h"
#include "display/redraw.h"
#include "elements/element_store.h"
#include "elements/linesink_dialog.h"
#include "solver/solve_dialogs.h"
#include "store/database.h"
#include "store/dialogs.h"
#include "support/program_runner.h"
#include "support/temp_dir.h"

namespace tarno {
namespace {

namespace fs = std::filesystem;

void EnsureApp() {
  // The per-user settings of the tests go to Qt's test location, never the user's.
  QStandardPaths::setTestModeEnabled(true);
  if (QApplication::instance() != nullptr) return;
  ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
  static int argc = 1;
  static char name[] = "test_app";
  static char* argv[] = {name, nullptr};
  new QApplication(argc, argv);
}

using test::RunExecutable;
using test::RunOptions;
using test::RunProgram;
using test::RunResult;

// The pixels of an image near a colour (anti-aliased edges count when close).
int CountColour(const QImage& image, Colour c) {
  const QImage img = image.convertToFormat(QImage::Format_RGB32);
  int n = 0;
  for (int y = 0; y < img.height(); ++y) {
    const QRgb* line = reinterpret_cast<const QRgb*>(img.constScanLine(y));
    for (int x = 0; x < img.width(); ++x) {
      const int d = std::abs(qRed(line[x]) - RedOf(c)) + std::abs(qGreen(line[x]) - GreenOf(c)) +
                    std::abs(qBlue(line[x]) - BlueOf(c));
      if (d < 60) ++n;
    }
  }
  return n;
}

class ExampleSession : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    EnsureApp();
    temp_ = new test::TempDir("tarno-app");
    dir_ = temp_->Path();
    ::setenv("TARNO_CONFIG_DIR", (dir_ / "config").c_str(), 1);
  }
  static void TearDownTestSuite() {
    delete temp_;
    temp_ = nullptr;
  }

  // A fresh copy of the example for each test, made as scripts/make-examples does.
  void SetUp() override {
    const std::string name = ::testing::UnitTest::GetInstance()->current_test_info()->name();
    work_ = dir_ / name;
    fs::create_directories(work_);
    project_ = (work_ / "example.trn").string();
    const std::string sql = (fs::path(TARNO_SOURCE_DIR) / "examples" / "vincennes.sql").string();
    RunOptions made;
    made.cwd = work_;
    made.env = {"TARNO_CONFIG_DIR=" + (dir_ / "config").string()};
    const RunResult created =
        RunProgram("tarnocmd",
                   {"new", project_, "--yes", "--description", "Vincennes, Indiana Example",
                    "--map-units", "meters", "--model-units", "meters", "--base-name", "example"},
                   made);
    ASSERT_EQ(created.status, 0) << created.err;
    RunOptions script;
    script.input = sql;
    const RunResult filled = RunExecutable("sqlite3", {"-bail", project_}, script);
    ASSERT_EQ(filled.status, 0) << filled.err;
    ui_.SetModalHandler(SolvePrompt::kName,
                        [](DialogModel& m) { dynamic_cast<SolvePrompt&>(m).Result = 6; });
    ui_.SetModalHandler([this](DialogModel& m) { shown_.push_back(m.DialogName()); });
    options_.ui = &ui_;
    options_.useSettings = false;
    options_.programDirectory = TARNO_BIN_DIR;
  }

  static test::TempDir* temp_;
  static fs::path dir_;
  fs::path work_;
  std::string project_;
  std::ostringstream messages_;
  ConsoleUserInterface ui_{messages_, Answer::Yes};
  MainWindowOptions options_;
  std::vector<std::string> shown_;
};

test::TempDir* ExampleSession::temp_ = nullptr;
fs::path ExampleSession::dir_;

TEST_F(ExampleSession, OpeningSetsCaptionMenusAndTheMap) {
  MainWindow w(options_);
  w.resize(800, 600);
  ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
  EXPECT_EQ(w.windowTitle().toStdString(), "example.trn - TARNO");
  EXPECT_TRUE(w.Action("MODEL_CMDS(1)")->isEnabled());
  EXPECT_TRUE(w.Action("VIEWMENU")->isEnabled());
  EXPECT_TRUE(w.ToolbarAction("MODELCALC")->isEnabled());
  EXPECT_FALSE(w.Action("MODEL_CMDS(2)")->isEnabled());  // no solution yet
  EXPECT_FALSE(w.Action("Layermenu(2)")->isEnabled());
  EXPECT_FALSE(w.Action("FILE_CMDS(6)")->isEnabled());   // printing comes later
  EXPECT_EQ(w.PanelText(0).toStdString(), "Select");
  EXPECT_EQ(w.PanelText(1).toStdString(), "Click mouse button to select element");
  EXPECT_EQ(w.PanelText(2).toStdString(), " m");
  const WorldWindow& win = w.State().Window;
  EXPECT_LT(win.Left, win.Right);
  EXPECT_LT(win.Bottom, win.Top);
  // Elements are drawn: the picture is not blank.
  const QImage img = w.MapImage();
  ASSERT_FALSE(img.isNull());
  EXPECT_LT(CountColour(img, Rgb(255, 255, 255)), img.width() * img.height());

  // The pointer over the map shows its position.
  {
    QMouseEvent move(QEvent::MouseMove, QPointF(40, 30), QPointF(40, 30), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QApplication::sendEvent(w.Map(), &move);
  }
  EXPECT_FALSE(w.PanelText(3).isEmpty());
  EXPECT_FALSE(w.PanelText(4).isEmpty());

  ASSERT_TRUE(w.CloseProject());
  // Nothing of the project stays in the status bar: mode, prompt, units, position.
  for (int panel = 0; panel < 5; ++panel)
    EXPECT_EQ(w.PanelText(panel).toStdString(), "") << "panel " << panel;
  EXPECT_EQ(w.windowTitle().toStdString(), "TARNO");
  EXPECT_FALSE(w.Action("MODEL_CMDS(1)")->isEnabled());
  EXPECT_FALSE(w.Action("VIEWMENU")->isEnabled());
  EXPECT_TRUE(w.Action("FILE_CMDS(1)")->isEnabled());
}

TEST_F(ExampleSession, SolveFromTheMenuDrawsContoursAndPathlines) {
  MainWindow w(options_);
  w.resize(900, 700);
  ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
  const QImage before = w.MapImage();
  const Colour contour = w.State().options.ContourColor;
  const Colour path = w.State().options.PathlineColor;

  w.Action("MODEL_CMDS(1)")->trigger();
  ASSERT_EQ(w.LastSolve().outcome, SolveOutcome::Completed) << messages_.str();
  EXPECT_TRUE(w.Solution().SolutionPresent);
  EXPECT_TRUE(w.Solution().ContourLinesPresent);
  EXPECT_TRUE(w.Action("MODEL_CMDS(2)")->isEnabled());
  ASSERT_TRUE(w.Action("Layermenu(2)")->isEnabled());
  EXPECT_TRUE(w.Action("Layermenu(2)")->isChecked());
  EXPECT_TRUE(w.Action("MODEL_CMDS(1)")->isEnabled());  // on again after the run
  EXPECT_TRUE(w.Map()->MouseEnabled());
  EXPECT_EQ(w.PanelText(2).toStdString(), "Contours: Heads");

  const QImage solved = w.MapImage();
  const int contourBefore = CountColour(before, contour);
  const int contourAfter = CountColour(solved, contour);
  EXPECT_GT(contourAfter, contourBefore + 80) << "contour pixels " << contourBefore << " -> "
                                               << contourAfter;
  // The example traces particles: the solve turns the Pathlines switch on.
  ASSERT_TRUE(w.Solution().PathsPresent);
  EXPECT_TRUE(w.Action("Layermenu(3)")->isEnabled());
  EXPECT_TRUE(w.Action("Layermenu(3)")->isChecked());
  EXPECT_GT(CountColour(solved, path), CountColour(before, path) + 50);

  // "Contours" off removes the contour lines from the picture, and their note.
  w.Action("Layermenu(2)")->trigger();
  EXPECT_FALSE(w.State().layers.contours);
  const int contourOff = CountColour(w.MapImage(), contour);
  EXPECT_LT(contourOff, contourBefore + (contourAfter - contourBefore) / 10);
  EXPECT_EQ(w.PanelText(2).toStdString(), " m");
  w.Action("Layermenu(2)")->trigger();
  EXPECT_EQ(w.PanelText(2).toStdString(), "Contours: Heads");
}

// Reads a text file whole.
std::string ReadAll(const fs::path& file) {
  std::ifstream in(file);
  return std::string((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
}

// The example's river has a resistance: one iteration is below the advice. The
// window's own port shows the advice, and the solve goes on with the count chosen.
TEST_F(ExampleSession, TheIterationsAdviceShowsInTheWindowAndTheSolveGoesOn) {
  const RunResult set = RunExecutable(
      "sqlite3",
      {project_, "update Model set SOLVERIterations=1, ViewMessageLog=0, ViewErrorLog=0"});
  ASSERT_EQ(set.status, 0) << set.err;
  options_.ui = nullptr;  // the Qt port with the dialog views
  MainWindow w(options_);
  w.resize(800, 600);
  ASSERT_TRUE(w.OpenProject(project_));
  std::string advice, count;
  testing::OnNextDialog<IterationsDialogView>([&](IterationsDialogView* view) {
    advice = view->advice()->text().toStdString();
    count = view->iterations()->text().toStdString();
    view->iterations()->setText("2");
    view->okButton()->click();
  });
  EXPECT_EQ(w.Solve(false), SolveOutcome::Completed) << w.LastSolve().failure;
  EXPECT_EQ(advice,
            "For models containing linesinks with resistance, it is recommended to use at least 2 "
            "iterations.");
  EXPECT_EQ(count, "1");
  EXPECT_TRUE(w.Solution().SolutionPresent);
  EXPECT_NE(ReadAll(work_ / "example.dat").find("\n solve 2 "), std::string::npos);
}

// A new conductivity in the model settings: the old solution goes (after the
// question), with its files, its contours and its note; a regrid cannot contour it
// under the new settings any more.
TEST_F(ExampleSession, ANewAquiferInTheModelSettingsInvalidatesTheSolution) {
  MainWindow w(options_);
  w.resize(800, 600);
  ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
  const QImage before = w.MapImage();
  ASSERT_EQ(w.Solve(false), SolveOutcome::Completed) << messages_.str();
  ASSERT_TRUE(fs::exists(work_ / "example.SOL"));
  const Colour contour = w.State().options.ContourColor;
  const int contourBefore = CountColour(before, contour);
  ASSERT_GT(CountColour(w.MapImage(), contour), contourBefore + 80);

  ui_.SetVerbose(true);
  // The interval changes too: with the solution gone there is no regrid to ask for.
  ui_.SetModalHandler(ModelSettingsDialog::kName, [this](DialogModel& m) {
    auto& d = dynamic_cast<ModelSettingsDialog&>(m);
    d.settings.tbHydCond = "40";
    d.settings.tbContourInt = "0.25";
    d.OK(ui_);
  });
  messages_.str("");
  w.Action("MODEL_CMDS(0)")->trigger();
  EXPECT_NE(messages_.str().find("Model Changed!"), std::string::npos) << messages_.str();
  EXPECT_EQ(messages_.str().find("Regrid/Retrace?"), std::string::npos) << messages_.str();
  EXPECT_FALSE(w.Solution().SolutionPresent);
  EXPECT_FALSE(w.Solution().ContourLinesPresent);
  EXPECT_FALSE(fs::exists(work_ / "example.SOL"));
  EXPECT_FALSE(fs::exists(work_ / "example.CTR"));
  EXPECT_FALSE(w.Action("MODEL_CMDS(2)")->isEnabled()) << "nothing to continue";
  EXPECT_FALSE(w.Action("Layermenu(2)")->isEnabled());
  EXPECT_EQ(w.PanelText(2).toStdString(), " m");
  EXPECT_LT(CountColour(w.MapImage(), contour), contourBefore + 20);

  // A change that touches neither aquifer nor solver keeps a new solution.
  ASSERT_EQ(w.Solve(false), SolveOutcome::Completed) << messages_.str();
  ui_.SetModalHandler(ModelSettingsDialog::kName, [this](DialogModel& m) {
    auto& d = dynamic_cast<ModelSettingsDialog&>(m);
    d.settings.chkViewMessage = !d.settings.chkViewMessage;
    d.OK(ui_);
  });
  messages_.str("");
  w.Action("MODEL_CMDS(0)")->trigger();
  EXPECT_EQ(messages_.str().find("Model Changed!"), std::string::npos) << messages_.str();
  EXPECT_TRUE(w.Solution().SolutionPresent);
}

// Edit > Undo takes the settings back, as an edit removes the solution, and Redo
// brings them again; the entries name the operation.
TEST_F(ExampleSession, UndoAndRedoOfTheModelSettings) {
  MainWindow w(options_);
  w.resize(800, 600);
  ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
  EXPECT_FALSE(w.Action("EDIT_UNDO")->isEnabled());
  EXPECT_FALSE(w.Action("EDIT_REDO")->isEnabled());
  EXPECT_EQ(w.Action("EDIT_UNDO")->shortcut(), QKeySequence("Ctrl+Z"));
  auto hydCond = [this] {
    Database db = Database::Open(project_);
    Statement st = db.PrepareRaw("select AQHydCond from Model");
    st.Step();
    return st.GetDouble(0);
  };
  const double before = hydCond();
  ASSERT_NE(before, 40.0);

  ui_.SetModalHandler(ModelSettingsDialog::kName, [this](DialogModel& m) {
    auto& d = dynamic_cast<ModelSettingsDialog&>(m);
    d.settings.tbHydCond = "40";
    d.OK(ui_);
  });
  w.Action("MODEL_CMDS(0)")->trigger();
  EXPECT_EQ(hydCond(), 40.0);
  ASSERT_TRUE(w.Action("EDIT_UNDO")->isEnabled());
  EXPECT_EQ(w.Action("EDIT_UNDO")->text().toStdString(), "&Undo Model Settings");
  EXPECT_EQ(w.Action("EDIT_REDO")->text().toStdString(), "&Redo");

  ASSERT_EQ(w.Solve(false), SolveOutcome::Completed) << messages_.str();
  ASSERT_TRUE(w.Solution().SolutionPresent);
  w.Action("EDIT_UNDO")->trigger();
  EXPECT_EQ(hydCond(), before);
  EXPECT_FALSE(w.Solution().SolutionPresent) << "the aquifer of the solution is gone";
  EXPECT_FALSE(w.Action("EDIT_UNDO")->isEnabled());
  ASSERT_TRUE(w.Action("EDIT_REDO")->isEnabled());
  EXPECT_EQ(w.Action("EDIT_REDO")->text().toStdString(), "&Redo Model Settings");
  EXPECT_EQ(w.Action("EDIT_UNDO")->text().toStdString(), "&Undo");

  w.Action("EDIT_REDO")->trigger();
  EXPECT_EQ(hydCond(), 40.0);
  EXPECT_TRUE(w.Action("EDIT_UNDO")->isEnabled());

  // Closing the project ends its history.
  ASSERT_TRUE(w.CloseProject());
  ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
  EXPECT_FALSE(w.Action("EDIT_UNDO")->isEnabled());
}

// The user may keep the solution: No leaves it, and the next regrid answers the new
// contour settings on it as before.
TEST_F(ExampleSession, KeepingTheSolutionAfterANewAquiferLeavesItStanding) {
  MainWindow w(options_);
  w.resize(800, 600);
  ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
  ASSERT_EQ(w.Solve(false), SolveOutcome::Completed) << messages_.str();
  std::vector<std::string> asked;
  ui_.SetAnswerPolicy([&](const std::string& title, const std::vector<std::string>&,
                          Buttons) -> std::optional<Answer> {
    asked.push_back(title);
    return Answer::No;
  });
  ui_.SetModalHandler(ModelSettingsDialog::kName, [this](DialogModel& m) {
    auto& d = dynamic_cast<ModelSettingsDialog&>(m);
    d.settings.tbIterations = "3";
    d.OK(ui_);
  });
  w.Action("MODEL_CMDS(0)")->trigger();
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_EQ(asked[0], "Model Changed!");
  EXPECT_TRUE(w.Solution().SolutionPresent);
  EXPECT_TRUE(fs::exists(work_ / "example.SOL"));
}

// Change Units (the map in feet) and Cancel, then solve without reopening: the
// command file's window, the map's frame and the unit text all follow the new
// designation, and the solution of the old units is gone.
TEST_F(ExampleSession, AUnitChangeAppliesToTheNextSolveWithoutReopening) {
  MainWindow w(options_);
  w.resize(800, 600);
  ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
  ASSERT_EQ(w.Solve(false), SolveOutcome::Completed) << messages_.str();
  ASSERT_DOUBLE_EQ(w.State().frame.basemapConvert, 1.0);

  ui_.SetModalHandler(UnitChange::kName, [](DialogModel& m) {
    auto& d = dynamic_cast<UnitChange&>(m);
    d.BasemapMeters = false;
    d.OK();
  });
  ui_.SetModalHandler(ProjectSettings::kName, [this](DialogModel& m) {
    auto& p = dynamic_cast<ProjectSettings&>(m);
    p.ChangeUnits(ui_);
    p.Cancel();
  });
  w.Action("FILE_CMDS(4)")->trigger();
  {
    Database db = Database::Open(project_);
    Statement st = db.Prepare("select BasemapMeters from Model");
    ASSERT_TRUE(st.Step());
    ASSERT_FALSE(st.GetBool(0)) << "Change Units writes at once";
  }
  const double factor = 0.3048;  // map feet, model metres
  EXPECT_FALSE(w.Solution().SolutionPresent) << "the old solution belongs to the old units";
  EXPECT_NEAR(w.Settings().BasemapConvert, factor, 1e-12);
  EXPECT_NEAR(w.State().frame.basemapConvert, factor, 1e-12);
  EXPECT_EQ(w.PanelText(2).toStdString(), " ft");

  ASSERT_EQ(w.Solve(false), SolveOutcome::Completed) << messages_.str();
  EXPECT_NEAR(w.State().frame.basemapConvert, factor, 1e-12);
  // The window line of the command file is the map's window in model coordinates of
  // the new factor.
  const std::string dat = ReadAll(work_ / "example.dat");
  const std::size_t at = dat.find("\n window ");
  ASSERT_NE(at, std::string::npos) << dat;
  std::istringstream line(dat.substr(at + 9, dat.find('\n', at + 1) - at - 9));
  double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
  ASSERT_TRUE(line >> x1 >> y1 >> x2 >> y2);
  const ModelFrame& f = w.State().frame;
  const WorldWindow& win = w.State().Window;
  EXPECT_NEAR(x1, (win.Left - f.originX) * factor, 0.01);
  EXPECT_NEAR(y1, (win.Bottom - f.originY) * factor, 0.01);
  EXPECT_NEAR(x2, (win.Right - f.originX) * factor, 0.01);
  EXPECT_NEAR(y2, (win.Top - f.originY) * factor, 0.01);
}

TEST_F(ExampleSession, ZoomInHalvesTheWindowAndStoresItInTheModelRow) {
  MainWindow w(options_);
  w.resize(800, 600);
  ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
  const WorldWindow a = w.State().Window;
  w.Action("ZOOM_CMDS(1)")->trigger();
  const WorldWindow b = w.State().Window;
  EXPECT_NEAR((b.Right - b.Left) / (a.Right - a.Left), 0.5, 1e-6);
  EXPECT_NEAR((b.Top - b.Bottom) / (a.Top - a.Bottom), 0.5, 1e-6);
  EXPECT_NEAR((b.Left + b.Right) / 2, (a.Left + a.Right) / 2, 1e-6 * (a.Right - a.Left));
  {
    Database db = Database::Open(project_);
    Statement st = db.Prepare("select WINDOWX1, WINDOWX2, WINDOWY1, WINDOWY2 from Model");
    ASSERT_TRUE(st.Step());
    EXPECT_DOUBLE_EQ(st.GetDouble(0), b.Left);
    EXPECT_DOUBLE_EQ(st.GetDouble(1), b.Right);
    EXPECT_DOUBLE_EQ(st.GetDouble(2), b.Bottom);
    EXPECT_DOUBLE_EQ(st.GetDouble(3), b.Top);
  }
  // Scrolling right by the toolbar moves by a quarter of the width.
  w.ToolbarAction("WINDOWSCROLLRIGHT")->trigger();
  EXPECT_NEAR(w.State().Window.Left - b.Left, (b.Right - b.Left) / 4, 1e-6 * (b.Right - b.Left));
  // The project reopens where it was left.
  const WorldWindow left = w.State().Window;
  ASSERT_TRUE(w.CloseProject());
  ASSERT_TRUE(w.OpenProject(project_));
  EXPECT_NEAR(w.State().Window.Left, left.Left, 1e-6 * (left.Right - left.Left));
}

// How many messages of a title the console port has written.
int CountOf(const std::string& text, const std::string& what) {
  int n = 0;
  for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
  return n;
}

TEST_F(ExampleSession, DeepZoomStopsAtTheLimitAndAnUndrawableWindowOpensAtTheExtents) {
  {
    MainWindow w(options_);
    w.resize(800, 600);
    ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
    w.Action("ZOOM_CMDS(3)")->trigger();
    // The wheel, notch by notch, then the menu, far past the limit.
    MapWidget* map = w.Map();
    for (int i = 0; i < 80; ++i) map->Wheel(QPoint(map->width() / 2, map->height() / 2), 1);
    for (int i = 0; i < 25; ++i) w.Action("ZOOM_CMDS(1)")->trigger();
    const std::string told = messages_.str();
    EXPECT_EQ(CountOf(told, "Unhandled"), 0) << told;
    EXPECT_EQ(CountOf(told, "Can't zoom in any further!"), 1 + 25) << told;
    const WorldWindow deepest = w.State().Window;
    EXPECT_EQ(CheckWindowRange(deepest, map->width(), map->height()), WindowRange::kFits);
    EXPECT_LT(deepest.Right - deepest.Left, 2.0 * map->width() / 100);
    ASSERT_TRUE(w.CloseProject());
  }
  // A window stored before the zoom had its limits (a hundred-thousandth of a unit).
  {
    Database db = Database::Open(project_);
    db.ExecuteRaw(
        "update Model set WINDOWX1 = 1000, WINDOWX2 = 1000.00001, WINDOWY1 = 500, "
        "WINDOWY2 = 500.00001");
  }
  messages_.str("");
  MainWindow w(options_);
  w.resize(800, 600);
  ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
  EXPECT_EQ(messages_.str(), "");
  const WorldWindow opened = w.State().Window;
  EXPECT_GT(opened.Right - opened.Left, 1000.0);
  {
    Database db = Database::Open(project_);
    Statement st = db.Prepare("select count(*) from Vertices where X < ? or X > ? or Y < ? or Y > ?");
    st.Bind(1, opened.Left).Bind(2, opened.Right).Bind(3, opened.Bottom).Bind(4, opened.Top);
    ASSERT_TRUE(st.Step());
    EXPECT_EQ(st.GetInt64(0), 0) << "the whole model is in view";
  }
}

TEST_F(ExampleSession, TurningManualRedrawOnLeavesThePictureCurrent) {
  MainWindow w(options_);
  w.resize(800, 600);
  ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
  w.Action("Layermenu(13)")->trigger();
  EXPECT_TRUE(w.State().layers.manualRedraw);
  EXPECT_EQ(w.PanelText(0).toStdString(), "Select");
  w.Action("Layermenu(1)")->trigger();  // an edit of the picture: now it is obsolete
  EXPECT_EQ(w.PanelText(1).toStdString(), "Current picture is obsolete -- press CTRL-L to refresh");
  w.Action("Layermenu(10)")->trigger();
  EXPECT_EQ(w.PanelText(0).toStdString(), "Select");
  EXPECT_EQ(w.PanelText(1).toStdString(), "Click mouse button to select element");
}

TEST_F(ExampleSession, ZoomToWindowByTheRubberBand) {
  MainWindow w(options_);
  w.resize(800, 600);
  ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
  const WorldWindow a = w.State().Window;
  w.ToolbarAction("WINDOWZOOMWIN")->trigger();
  EXPECT_EQ(w.State().mouseState, kZoomWindowMouseState);
  EXPECT_EQ(w.State().mouseMode, kZoomWindowMouseMode);
  // The menus are off during the mode, its own key stays on.
  EXPECT_FALSE(w.Action("MODEL_CMDS(1)")->isEnabled());
  EXPECT_TRUE(w.ToolbarAction("WINDOWZOOMWIN")->isEnabled());
  MapWidget* map = w.Map();
  const int mw = map->width(), mh = map->height();
  map->BeginRubberBand(QPoint(mw / 4, mh / 4));
  map->EndRubberBand(QPoint(mw / 2, mh / 2));
  const WorldWindow b = w.State().Window;
  EXPECT_LT(b.Right - b.Left, (a.Right - a.Left) * 0.6);
  EXPECT_GT(b.Left, a.Left);
  EXPECT_LT(b.Top, a.Top);
  EXPECT_EQ(w.State().mouseState, 0);
  EXPECT_TRUE(w.Action("MODEL_CMDS(1)")->isEnabled());
}

// The position in the status bar is that of the pointer on the picture now shown:
// a pointer resting on the map while the window changes under it (the end of the
// rubber band, a scroll by the keys) reads the new coordinates at once.
TEST_F(ExampleSession, ThePositionFollowsTheWindowUnderARestingPointer) {
  MainWindow w(options_);
  w.resize(800, 600);
  ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
  MapWidget* map = w.Map();
  const QPoint end(map->width() / 2, map->height() / 2);
  auto shown = [&w] {
    return std::make_pair(w.PanelText(3).toDouble(), w.PanelText(4).toDouble());
  };
  auto near = [](std::pair<double, double> a, double x, double y) {
    return std::abs(a.first - x) < 0.01 && std::abs(a.second - y) < 0.01;
  };

  w.ToolbarAction("WINDOWZOOMWIN")->trigger();
  map->BeginRubberBand(QPoint(map->width() / 4, map->height() / 4));
  {
    QMouseEvent move(QEvent::MouseMove, QPointF(end), QPointF(end), Qt::LeftButton,
                     Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(map, &move);
  }
  const double beforeX = map->WorldX(end.x()), beforeY = map->WorldY(end.y());
  EXPECT_TRUE(near(shown(), beforeX, beforeY));
  map->EndRubberBand(end);
  const double afterX = map->WorldX(end.x()), afterY = map->WorldY(end.y());
  ASSERT_GT(std::abs(afterX - beforeX), 1.0) << "the zoom moves the point under the pointer";
  EXPECT_TRUE(near(shown(), afterX, afterY))
      << w.PanelText(3).toStdString() << " " << w.PanelText(4).toStdString();

  w.ToolbarAction("WINDOWSCROLLRIGHT")->trigger();
  EXPECT_TRUE(near(shown(), map->WorldX(end.x()), map->WorldY(end.y())));
  EXPECT_GT(shown().first, afterX);

  // A pointer that has left the map reports nothing more.
  {
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(map, &leave);
  }
  const auto left = shown();
  w.ToolbarAction("WINDOWSCROLLRIGHT")->trigger();
  EXPECT_EQ(shown(), left);
}

TEST_F(ExampleSession, RecenterByAClickAndTheWheelZoomAboutThePointer) {
  MainWindow w(options_);
  w.resize(800, 600);
  ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
  MapWidget* map = w.Map();
  const WorldWindow a = w.State().Window;
  const double width = a.Right - a.Left, height = a.Top - a.Bottom;
  // Recenter: the key enters the mode, a click ends it at the new centre.
  w.ToolbarAction("WINDOWRECENTER")->trigger();
  EXPECT_EQ(w.State().mouseState, kRecenterMouseState);
  EXPECT_EQ(w.State().mouseMode, kRecenterMouseMode);
  const QPoint at(map->width() / 4, map->height() / 3);
  const double px = map->WorldX(at.x()), py = map->WorldY(at.y());
  map->Click(at);
  const WorldWindow b = w.State().Window;
  EXPECT_NEAR((b.Left + b.Right) / 2, px, 1e-6 * width);
  EXPECT_NEAR((b.Top + b.Bottom) / 2, py, 1e-6 * height);
  EXPECT_NEAR(b.Right - b.Left, width, 1e-6 * width);
  EXPECT_EQ(w.State().mouseState, 0);
  EXPECT_TRUE(w.Action("MODEL_CMDS(1)")->isEnabled());

  // The wheel: the point under the pointer stays where it is.
  const QPoint p(map->width() * 3 / 4, map->height() / 2);
  const double wx = map->WorldX(p.x()), wy = map->WorldY(p.y());
  map->Wheel(p, 1);
  const WorldWindow c = w.State().Window;
  EXPECT_LT(c.Right - c.Left, (b.Right - b.Left) * 0.85);
  EXPECT_NEAR(map->WorldX(p.x()), wx, (c.Right - c.Left) / map->width() * 1.5);
  EXPECT_NEAR(map->WorldY(p.y()), wy, (c.Top - c.Bottom) / map->height() * 1.5);
  // The mouse does nothing while it is off (a redraw or a solve runs).
  map->SetMouseEnabled(false);
  map->Wheel(p, 1);
  EXPECT_EQ(w.State().Window, c);
}

TEST_F(ExampleSession, AClickOnTheMapSelectsAndTheEditMenuFollowsTheSelection) {
  MainWindow w(options_);
  w.resize(800, 600);
  ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
  MapWidget* map = w.Map();
  Element well;
  {
    Database db = Database::Open(project_);
    const auto wells = LoadAll(db, ElementKind::Well);
    ASSERT_FALSE(wells.empty());
    well = wells.front();
  }
  // The pixel of a map point, by the map's own conversion (linear in each axis).
  const double x0 = map->WorldX(0), x1 = map->WorldX(100);
  const double y0 = map->WorldY(0), y1 = map->WorldY(100);
  const QPoint at(static_cast<int>(std::lround((well.X() - x0) / (x1 - x0) * 100)),
                  static_cast<int>(std::lround((well.Y() - y0) / (y1 - y0) * 100)));
  map->Click(at);
  EXPECT_EQ(w.Editor().SelectedKind(), 1);
  EXPECT_EQ(w.Action("EDIT_CMDS(0)")->text().toStdString(), "Well &Properties");
  EXPECT_TRUE(w.Action("EDIT_CMDS(2)")->isEnabled());
  EXPECT_TRUE(w.ToolbarAction("EDITDELETE")->isEnabled());
  EXPECT_FALSE(w.ToolbarAction("EDITREFINE")->isEnabled());

  // A corner of the map holds nothing: the selection's entries go off.
  map->Click(QPoint(1, 1));
  EXPECT_EQ(w.Editor().SelectedKind(), 0);
  EXPECT_EQ(w.Action("EDIT_CMDS(0)")->text().toStdString(), "&Properties");
  EXPECT_FALSE(w.Action("EDIT_CMDS(0)")->isEnabled());

  // A new line-sink string: the menus are off while it is drawn, on after it.
  ui_.SetModalHandler(LinesinkString::kName, [](DialogModel& m) {
    auto& d = dynamic_cast<LinesinkString&>(m);
    d.TypeLabel("Ditch");
    d.Result = 1;
  });
  w.Action("ELEM_NEW(1)")->trigger();
  EXPECT_EQ(w.Editor().MouseMode(), 2);
  EXPECT_FALSE(w.Action("ELEM_NEW(0)")->isEnabled());
  EXPECT_FALSE(w.Action("MODEL_CMDS(1)")->isEnabled());
  map->Click(QPoint(map->width() / 4, map->height() / 4));
  map->Click(QPoint(map->width() / 2, map->height() / 3));
  EXPECT_EQ(w.Editor().PendingVertices().size(), 2u);
  w.Editor().MouseDown(kRightButton, 0, 1, 1);
  EXPECT_EQ(w.Editor().MouseMode(), 0);
  EXPECT_TRUE(w.Action("ELEM_NEW(0)")->isEnabled());
  Database db = Database::Open(project_);
  const auto ditch = FindByLabel(db, ElementKind::Linesink, "Ditch");
  ASSERT_TRUE(ditch.has_value()) << messages_.str();
  EXPECT_EQ(ditch->vertices.size(), 2u);
}

TEST_F(ExampleSession, RunFilesAndTheRegridOfTheModelSettings) {
  MainWindow w(options_);
  w.resize(800, 600);
  ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
  ui_.SetVerbose(true);
  // Before a solve there is no command file to show.
  w.Action("RUN_FILES(0)")->trigger();
  EXPECT_NE(messages_.str().find("File Not Found"), std::string::npos) << messages_.str();
  ASSERT_EQ(w.Solve(false), SolveOutcome::Completed) << messages_.str();
  messages_.str("");
  w.Action("RUN_FILES(0)")->trigger();
  EXPECT_NE(messages_.str().find("Text file: "), std::string::npos) << messages_.str();
  EXPECT_NE(messages_.str().find("example.dat"), std::string::npos) << messages_.str();

  // A new contour interval: the settings ask to regrid, and Yes runs the regrid.
  ui_.SetModalHandler(ModelSettingsDialog::kName, [this](DialogModel& m) {
    auto& d = dynamic_cast<ModelSettingsDialog&>(m);
    d.settings.tbContourInt = "0.25";
    d.OK(ui_);
  });
  messages_.str("");
  w.Action("MODEL_CMDS(0)")->trigger();
  EXPECT_NE(messages_.str().find("Regrid/Retrace?"), std::string::npos) << messages_.str();
  EXPECT_EQ(w.LastSolve().outcome, SolveOutcome::Completed) << messages_.str();
  EXPECT_EQ(w.LastSolve().writeType, kWriteRegrid);
  EXPECT_TRUE(w.Solution().SolutionPresent);
  // The regrid computed a new grid, and the contour lines follow the new interval:
  // a level between two of the old ones (every 0.5) is there now.
  {
    std::ifstream dat(work_ / "regrid.dat");
    const std::string text((std::istreambuf_iterator<char>(dat)), std::istreambuf_iterator<char>());
    EXPECT_NE(text.find("\n grid"), std::string::npos) << text;
    std::ifstream ctr(work_ / "example.CTR");
    std::string line;
    bool quarter = false;
    while (std::getline(ctr, line)) {
      if (line.rfind("LEVEL", 0) != 0) continue;
      const double level = std::stod(line.substr(5));
      const double halves = level * 2.0;
      if (std::fabs(halves - std::round(halves)) > 0.25) quarter = true;
    }
    EXPECT_TRUE(quarter) << "no contour level between the old ones";
  }

  // Project settings that redraw the map keep the solution and its menus.
  ui_.SetModalHandler(ProjectSettings::kName, [](DialogModel& m) {
    auto& p = dynamic_cast<ProjectSettings&>(m);
    p.Result = ProjectSettings::kOK;
    p.MustRedraw = true;
  });
  w.Action("FILE_CMDS(4)")->trigger();
  EXPECT_TRUE(w.Solution().SolutionPresent);
  EXPECT_TRUE(w.Action("MODEL_CMDS(2)")->isEnabled());
  EXPECT_TRUE(w.Action("Layermenu(2)")->isEnabled());
}

TEST_F(ExampleSession, ViewSwitchesRedrawAsTheyShould) {
  MainWindow w(options_);
  w.resize(800, 600);
  ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
  const QImage withElements = w.MapImage();
  const int builds = w.View().BackgroundBuilds();
  // Elements off: a redraw over the old background.
  w.Action("Layermenu(1)")->trigger();
  EXPECT_FALSE(w.State().layers.elements);
  EXPECT_FALSE(w.Action("Layermenu(1)")->isChecked());
  EXPECT_NE(w.MapImage(), withElements);
  EXPECT_EQ(w.View().BackgroundBuilds(), builds);
  // Haze rebuilds the background.
  w.Action("Haze")->trigger();
  EXPECT_TRUE(w.State().layers.haze);
  EXPECT_EQ(w.View().BackgroundBuilds(), builds + 1);

  // Manual Redraw: a switch leaves the picture obsolete until Refresh.
  w.Action("Layermenu(13)")->trigger();
  const QImage obsolete = w.MapImage();
  w.Action("Layermenu(1)")->trigger();
  EXPECT_TRUE(w.State().layers.elements);
  EXPECT_EQ(w.MapImage(), obsolete);
  EXPECT_EQ(w.PanelText(0).toStdString(), "REDRAW");
  EXPECT_EQ(w.PanelText(1).toStdString(), "Current picture is obsolete -- press CTRL-L to refresh");
  w.Action("Layermenu(10)")->trigger();
  EXPECT_NE(w.MapImage(), obsolete);

  // Toolbar: hidden and shown again.
  w.Action("Layermenu(9)")->trigger();
  EXPECT_TRUE(w.Toolbar()->isHidden());
  w.Action("Layermenu(9)")->trigger();
  EXPECT_FALSE(w.Toolbar()->isHidden());
}

TEST_F(ExampleSession, StartUpWithAQuotedPathOpensWithoutWelcome) {
  MainWindow w(options_);
  w.StartUp("\"" + project_ + "\"");
  EXPECT_TRUE(w.Session().ProjectOpen()) << messages_.str();
  EXPECT_TRUE(std::find(shown_.begin(), shown_.end(), "Welcome") == shown_.end());
}

TEST_F(ExampleSession, TheWelcomeOpensTheExampleBesideTheProgram) {
  options_.useSettings = true;
  options_.settingsFile = (work_ / "TARNO.conf").string();
  options_.applicationDirectory = work_.string();
  std::vector<std::string> asked;
  ui_.SetAnswerPolicy([&](const std::string& title, const std::vector<std::string>& lines,
                          Buttons) -> std::optional<Answer> {
    asked.push_back(title);
    EXPECT_EQ(lines.back(), "Load the example file?");
    return std::nullopt;  // the port's Yes
  });
  ui_.SetModalHandler(Welcome::kName, [](DialogModel& m) { dynamic_cast<Welcome&>(m).Result = 2; });
  MainWindow w(options_);
  w.StartUp("");
  ASSERT_FALSE(asked.empty());
  EXPECT_EQ(asked[0], "Vincennes, Indiana Example");
  ASSERT_TRUE(w.Session().ProjectOpen()) << messages_.str();
  EXPECT_EQ(fs::path(w.Session().Settings().DBName), work_ / "example.trn");
}

TEST_F(ExampleSession, ScreenshotWritesAPngOfTheRequestedSize) {
  const std::string png = (work_ / "shot.png").string();
  std::ostringstream out, err;
  ScreenshotRequest r;
  r.output = png;
  r.width = 320;
  r.height = 200;
  r.solve = true;
  r.project = project_;
  ::setenv("TARNO_PROGRAM_DIR", TARNO_BIN_DIR, 1);
  ASSERT_EQ(TakeScreenshot(r, out, err), 0) << err.str();
  EXPECT_EQ(out.str(), "Screenshot written to " + png + "\n");
  QImage img(QString::fromStdString(png));
  ASSERT_FALSE(img.isNull());
  EXPECT_EQ(img.width(), 320);
  EXPECT_EQ(img.height(), 200);

  // A file that cannot be written, a project that is not there.
  r.output = (work_ / "no such folder" / "shot.png").string();
  std::ostringstream err2;
  EXPECT_EQ(TakeScreenshot(r, out, err2), 1);
  EXPECT_NE(err2.str().find("cannot write"), std::string::npos) << err2.str();
  r.output = png;
  r.project = (work_ / "missing.trn").string();
  std::ostringstream err3;
  EXPECT_EQ(TakeScreenshot(r, out, err3), 1);
  EXPECT_NE(err3.str().find("missing.trn"), std::string::npos) << err3.str();
}

TEST_F(ExampleSession, TheProgramTakesAScreenshotWithoutADisplay) {
  const std::string png = (work_ / "program shot.png").string();
  // No platform given: the program chooses the offscreen one itself.
  RunOptions bare;
  bare.unset = {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"};
  bare.env = {"TARNO_CONFIG_DIR=" + (dir_ / "config").string()};
  const RunResult r =
      RunProgram("tarno", {"--screenshot", png, "--size", "300x200", "--solve", project_}, bare);
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out + r.err, "Screenshot written to " + png + "\n");
  QImage img(QString::fromStdString(png));
  ASSERT_FALSE(img.isNull());
  EXPECT_EQ(img.size(), QSize(300, 200));
  // A bad size is refused before anything opens.
  EXPECT_EQ(RunProgram("tarno", {"--screenshot", png, "--size", "300", project_}, bare).status, 2);
}

}  // namespace
}  // namespace tarno

namespace tarno {
namespace {

// The inspection from the menus: the settings, the integrity switch, the time, and
// the questions a Shift-click asks (the map's click itself comes with its editing).
TEST_F(ExampleSession, InspectionEntriesOfTheMenusAskTheSolution) {
  MainWindow w(options_);
  w.resize(900, 700);
  ASSERT_TRUE(w.OpenProject(project_)) << messages_.str();
  EXPECT_TRUE(w.Action("SET_TIME")->isEnabled());
  EXPECT_TRUE(w.Action("InspectorSettings")->isEnabled());
  EXPECT_TRUE(w.Action("SolverIntegrityCheck")->isEnabled());

  // Without a solution the time is refused and an inspection tells it.
  w.Action("SET_TIME")->trigger();
  EXPECT_NE(messages_.str().find("Can't set time: You must have a valid solution before changing the time setting"),
            std::string::npos)
      << messages_.str();
  EXPECT_FALSE(w.InspectAt(456300, 4395200).ran);
  EXPECT_NE(messages_.str().find("Error: No solution is present.  Solve the model and try again."),
            std::string::npos);

  w.Action("MODEL_CMDS(1)")->trigger();
  ASSERT_EQ(w.LastSolve().outcome, SolveOutcome::Completed) << messages_.str();

  // The settings dialog: a step of 2 map units at the elevation 110.
  ui_.SetModalHandler(InspectorDialog::kName, [&w](DialogModel& m) {
    auto& d = dynamic_cast<InspectorDialog&>(m);
    d.dataStepSize = "2";
    d.chkTop = false;
    d.tbElevation = "110";
    d.OK(w.Port());
  });
  w.Action("InspectorSettings")->trigger();
  EXPECT_DOUBLE_EQ(w.Inspector().StepSize, 2.0);
  EXPECT_FALSE(w.Inspector().InspectAtTop);
  w.Action("SolverIntegrityCheck")->trigger();
  EXPECT_TRUE(w.Inspector().IntegrityCheck);
  EXPECT_NE(messages_.str().find("Solver Integrity Check: the Instant Inspector (Shift left-mouse click)."),
            std::string::npos);

  SolverIntegrity integrity;
  ui_.SetModalHandler(SolverIntegrity::kName,
                      [&](DialogModel& m) { integrity = dynamic_cast<SolverIntegrity&>(m); });
  const InspectReport r = w.InspectAt(456300, 4395200);
  ASSERT_TRUE(r.ran) << messages_.str();
  EXPECT_EQ(r.lines[0], "X        456300.0");
  EXPECT_EQ(r.lines[2], "Z        1.1000E+02");
  EXPECT_NE(messages_.str().find("Model Results: Y        4395200.0"), std::string::npos);
  EXPECT_EQ(integrity.VxAnyl, r.point.vx);
  EXPECT_NE(integrity.VxNum, 0.0);

  // The time: a regrid at the new time.
  ui_.SetInputPolicy([](const std::string&, const std::string& title, const std::string&) {
    return title == "Solution Time" ? std::optional<std::string>("30") : std::nullopt;
  });
  w.Action("SET_TIME")->trigger();
  EXPECT_DOUBLE_EQ(w.Solution().SolutionTime, 30.0);
  EXPECT_TRUE(w.Solution().SolutionPresent);
  EXPECT_TRUE(fs::exists(work_ / "regrid.dat"));
}

}  // namespace
}  // namespace tarno
