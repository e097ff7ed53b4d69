// The session behind the main window, driven without widgets: a host that records
// what the window would show, two recording map surfaces, a scripted port. The
// example of Vincennes is built with tarnocmd in a temporary folder, opened, solved
// with the real solver and contourer, and its commands run through the registry.
#include "app/shell/shell_controller.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "app/help_model.h"
#include "app/shell_models.h"
#include "calibration/scenario_dialog.h"
#include "calibration/stats_model.h"
#include "core/error_trap.h"
#include "core/file_find.h"
#include "display/map_fixture.h"
#include "display/navigation.h"
#include "elements/element_store.h"
#include "elements/inhomogeneity_dialog.h"
#include "elements/linesink.h"
#include "elements/linesink_dialog.h"
#include "elements/solver_label.h"
#include "elements/test_point_dialog.h"
#include "elements/well_dialog.h"
#include "exchange/vector_import.h"
#include "solver/command_file.h"
#include "solver/inspect.h"
#include "solver/result_views.h"
#include "solver/solve_dialogs.h"
#include "store/database.h"
#include "support/program_runner.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace tarno {
namespace {

namespace fs = std::filesystem;
using test::RecordingSurface;

// What the window would show, kept for the tests.
class RecordingHost : public ShellHost {
 public:
  RecordingHost(RecordingSurface& map, RecordingSurface& map2) : map_(map), map2_(map2) {}

  void CloseWindow() override { ++closes; }
  void CopyMapToClipboard() override { ++clipboardCopies; }
  void RepaintMap() override { ++repaints; }
  void ApplyMenus(const MenuState& state, bool layerMenu) override {
    menus = state;
    layerMenuOn = layerMenu;
    ++menuUpdates;
  }
  void ShowToolbar(bool visible) override { toolbar = visible; }
  void OpenHelp(const std::string& target) override { helpTargets.push_back(target); }
  void SetMapCursor(MapCursor c) override { cursor = c; }
  void SetMouseEnabled(bool enabled) override { mouse = enabled; }
  void SetCaption(const std::string& c) override { caption = c; }
  void SetStatusText(int panel, const std::string& text) override { panels[panel] = text; }
  std::string StatusText(int panel) const override {
    const auto it = panels.find(panel);
    return it == panels.end() ? std::string() : it->second;
  }
  void LayoutSurfaces() override {
    map_.Resize(kWidth, kHeight);
    map2_.Resize(kWidth, kHeight);
  }
  std::pair<int, int> MapSize() const override { return {kWidth, kHeight}; }
  void ProcessEvents() override { ++pumps; }
  void StoreGuiOptions(const DisplayOptions& options) override { stored = options; }

  static constexpr int kWidth = 400;
  static constexpr int kHeight = 300;

  int closes = 0, clipboardCopies = 0, repaints = 0, menuUpdates = 0, pumps = 0;
  MenuState menus;
  bool layerMenuOn = true;
  bool toolbar = true;
  bool mouse = false;
  MapCursor cursor = MapCursor::Arrow;
  std::string caption;
  std::map<int, std::string> panels;
  std::vector<std::string> helpTargets;
  std::optional<DisplayOptions> stored;

 private:
  RecordingSurface& map_;
  RecordingSurface& map2_;
};

int CountPolylinesOf(const std::vector<RecordingCanvas::Op>& ops, Colour colour) {
  return static_cast<int>(std::count_if(ops.begin(), ops.end(), [&](const RecordingCanvas::Op& op) {
    return op.kind == RecordingCanvas::Kind::Polyline && op.colour == colour;
  }));
}

class ShellControllerTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    temp_ = new test::TempDir("tarno-shell");
    ::setenv("TARNO_CONFIG_DIR", (temp_->Path() / "config").c_str(), 1);
  }
  static void TearDownTestSuite() {
    delete temp_;
    temp_ = nullptr;
  }

  // A fresh copy of the example for each test, made as scripts/make-examples does.
  void SetUp() override {
    const std::string name = ::testing::UnitTest::GetInstance()->current_test_info()->name();
    work_ = temp_->Path() / name;
    fs::create_directories(work_);
    project_ = (work_ / "example.trn").string();
    test::RunOptions made;
    made.cwd = work_;
    made.env = {"TARNO_CONFIG_DIR=" + (temp_->Path() / "config").string()};
    const test::RunResult created = test::RunProgram(
        "tarnocmd",
        {"new", project_, "--yes", "--description", "Vincennes, Indiana Example", "--map-units",
         "meters", "--model-units", "meters", "--base-name", "example"},
        made);
    ASSERT_EQ(created.status, 0) << created.err;
    test::RunOptions script;
    script.input = fs::path(TARNO_SOURCE_DIR) / "examples" / "vincennes.sql";
    const test::RunResult filled = test::RunExecutable("sqlite3", {"-bail", project_}, script);
    ASSERT_EQ(filled.status, 0) << filled.err;

    shell_ = std::make_unique<ShellController>(host_, map_, map2_,
                                               ShellOptions{work_.string(), TARNO_BIN_DIR});
    shell_->Port().SetInner(ui_);
  }
  void TearDown() override {
    // Whatever the test left open closes (and is compacted) before the folder goes.
    shell_.reset();
  }

  void OpenExample() {
    ASSERT_TRUE(shell_->OpenProject(project_)) << Describe();
    ASSERT_TRUE(shell_->Session().ProjectOpen());
  }
  void SolveExample() {
    ASSERT_TRUE(shell_->Commands().Run("MODEL_CMDS(1)"));
    ASSERT_EQ(shell_->LastSolve().outcome, SolveOutcome::Completed)
        << shell_->LastSolve().failure << Describe();
  }
  // The calls of the port so far, for failure messages.
  std::string Describe() const {
    std::string s;
    for (const UiCall& c : ui_.Calls()) s += "\n  " + c.Describe();
    return s;
  }
  bool Exists(const std::string& file) const { return !FindFileNoCase(work_, file).empty(); }
  std::string ModelValue(const std::string& column) {
    Database db = Database::Open(project_);
    Statement st = db.PrepareRaw("select " + column + " from Model");
    st.Step();
    return st.GetText(0);
  }
  void ExpectUnhandledIn(const std::string& operation) {
    ui_.ExpectMessageTitled(kUnhandledErrorTitle).WithIcon(kUnhandledErrorIcon);
    expectedOperation_ = operation;
  }
  void CheckUnhandledIn() {
    const auto messages = ui_.Messages();
    ASSERT_FALSE(messages.empty());
    ASSERT_FALSE(messages.back().lines.empty());
    EXPECT_EQ(messages.back().lines[0], "Unhandled error in " + expectedOperation_);
  }

  static test::TempDir* temp_;
  fs::path work_;
  std::string project_;
  ScriptedUserInterface ui_;
  RecordingSurface map_{RecordingHost::kWidth, RecordingHost::kHeight};
  RecordingSurface map2_{RecordingHost::kWidth, RecordingHost::kHeight};
  RecordingHost host_{map_, map2_};
  std::unique_ptr<ShellController> shell_;
  std::string expectedOperation_;
};

test::TempDir* ShellControllerTest::temp_ = nullptr;

TEST_F(ShellControllerTest, EveryBuiltCommandOfTheMenusHasAHandler) {
  // The editing entries are left to the map editor; every other built command and
  // switch runs something.
  for (const MenuEntry& e : MenuModel::Entries()) {
    if (e.kind == MenuKind::Submenu || !e.built) continue;
    EXPECT_TRUE(shell_->Commands().Has(e.key)) << e.key;
  }
  for (const ToolbarButton& b : MenuModel::Toolbar()) {
    if (!MenuModel::Entry(b.menuKey).built) continue;
    EXPECT_TRUE(shell_->Commands().HasButton(b.key) || shell_->Commands().Has(b.menuKey)) << b.key;
  }
}

TEST_F(ShellControllerTest, ConvertEntriesRunTheirTools) {
  OpenExample();
  ui_.ExpectMessage("MORV DM Converter",
                    {"The MORV DM format is not supported by this version of TARNO."});
  ASSERT_TRUE(shell_->Commands().Run("CONVERT(2)"));
  ui_.ExpectMessageTitled("Shapefile to BBM Conversion", Answer::Cancel);
  ASSERT_TRUE(shell_->Commands().Run("CONVERT(5)"));
  ui_.ExpectModal("ReprojectMaps");  // left as it opened: Cancel
  ASSERT_TRUE(shell_->Commands().Run("ReprojectMaps"));
  ui_.Verify();
}

TEST_F(ShellControllerTest, XmlElementFileEntriesExportImportAndUndo) {
  OpenExample();
  const std::string file = (work_ / "rivers.lss.xml").string();
  ui_.ExpectSaveFile(file);
  ui_.ExpectMessage("LSS.XML Export", {"Export of linesink strings complete!", "6 linesink strings exported."});
  ASSERT_TRUE(shell_->Commands().Run("EXPORT(1)"));
  ui_.Verify();
  ASSERT_TRUE(fs::exists(file));

  // Into the project it came from: every string is there already.
  ui_.ExpectOpenFiles({file});
  ui_.ExpectMessage("LSS.XML Import", {"No linesink strings were imported."});
  ASSERT_TRUE(shell_->Commands().Run("IMPORT(1)"));
  ui_.Verify();

  // A new barrier comes in through the import of all, and Undo takes it out again.
  const std::string brr = (work_ / "new.brr.xml").string();
  ASSERT_TRUE(test::WriteFile(brr, "<?xml version='1.0'?>\n<HorizontalBarriersFile version=\"1\">"
                                   "<HorizontalBarrier><Label>NewWall</Label><HydCond>0.1</HydCond>"
                                   "<Vertices><Vertex><X>450000</X><Y>4390000</Y></Vertex>"
                                   "<Vertex><X>451000</X><Y>4391000</Y></Vertex></Vertices>"
                                   "</HorizontalBarrier></HorizontalBarriersFile>"));
  auto barriers = [&] {
    Database db = Database::Open(project_);
    Statement st = db.PrepareRaw("select count(*) from NoFlowStrings where Label = 'NewWall'");
    st.Step();
    return st.GetInt64(0);
  };
  ui_.ExpectOpenFiles({brr});
  ui_.ExpectMessage("BRR.XML Import", {"Import of Elements complete!", "1 elements imported."});
  ASSERT_TRUE(shell_->Commands().Run("IMPORT(0)"));
  ui_.Verify();
  EXPECT_EQ(barriers(), 1);
  EXPECT_TRUE(Exists("ImportElements.log"));
  ASSERT_TRUE(shell_->Commands().Run("EDIT_UNDO"));
  ui_.Verify();
  EXPECT_EQ(barriers(), 0) << Describe();
}

// Elements read into a window that shows none of the project (a new project's window
// lies about the origin, the elements at their map coordinates) brought an empty map
// and the box "8 elements imported.": the import now zooms to the extents. A window
// that shows the project keeps its place.
TEST_F(ShellControllerTest, AnImportIntoAWindowShowingNothingZoomsToTheExtents) {
  OpenExample();
  const std::string brr = (work_ / "far.brr.xml").string();
  ASSERT_TRUE(test::WriteFile(brr,
                              "<?xml version='1.0'?>\n<HorizontalBarriersFile version=\"1\">"
                              "<HorizontalBarrier><Label>FarWall</Label><HydCond>0.1</HydCond>"
                              "<Vertices><Vertex><X>450000</X><Y>4390000</Y></Vertex>"
                              "<Vertex><X>451000</X><Y>4391000</Y></Vertex></Vertices>"
                              "</HorizontalBarrier></HorizontalBarriersFile>"));
  auto inside = [&](double x, double y) {
    const WorldWindow& w = shell_->State().Window;
    return x >= std::min(w.Left, w.Right) && x <= std::max(w.Left, w.Right) &&
           y >= std::min(w.Bottom, w.Top) && y <= std::max(w.Bottom, w.Top);
  };
  // The window of the project as it opened shows its elements: an import leaves it.
  const WorldWindow opened = shell_->State().Window;
  ASSERT_TRUE(inside(457300, 4393400));
  ui_.ExpectOpenFiles({brr});
  ui_.ExpectMessage("BRR.XML Import", {"Import of Elements complete!", "1 elements imported."});
  ASSERT_TRUE(shell_->Commands().Run("IMPORT(0)"));
  ui_.Verify();
  EXPECT_EQ(shell_->State().Window, opened);
  ASSERT_TRUE(shell_->Commands().Run("EDIT_UNDO"));

  // A window about the origin, as a new project has.
  shell_->Zoom(kZoomRedraw);
  shell_->State().Window = WorldWindow{0, 1000, 1000, 0};
  ASSERT_FALSE(inside(450000, 4390000));
  ui_.ExpectOpenFiles({brr});
  ui_.ExpectMessage("BRR.XML Import", {"Import of Elements complete!", "1 elements imported."});
  ASSERT_TRUE(shell_->Commands().Run("IMPORT(0)"));
  ui_.Verify();
  EXPECT_TRUE(inside(450000, 4390000)) << "the imported barrier is in the window";
  EXPECT_TRUE(inside(457300, 4393400)) << "and the rest of the project";
}

TEST_F(ShellControllerTest, WithoutAProjectOnlyProjectAndHelpCommandsAreOffered) {
  shell_->StartUp("", false);
  EXPECT_FALSE(host_.menus.projectOpen);
  EXPECT_FALSE(host_.mouse);
  EXPECT_FALSE(MenuModel::Enabled("MODEL_CMDS(1)", host_.menus));
  EXPECT_TRUE(MenuModel::Enabled("FILE_CMDS(1)", host_.menus));
  EXPECT_TRUE(MenuModel::Enabled("HELP_CMDS(0)", host_.menus));
  // A solve without a project does nothing and asks nothing.
  EXPECT_EQ(shell_->Solve(true), SolveOutcome::Cancelled);
  ui_.Verify();
}

TEST_F(ShellControllerTest, OpeningAndClosingSetTheMenusCaptionPanelsAndTheMap) {
  OpenExample();
  EXPECT_EQ(host_.caption, "example.trn - TARNO");
  EXPECT_TRUE(host_.menus.projectOpen);
  EXPECT_FALSE(host_.menus.solutionValid);
  EXPECT_TRUE(host_.mouse);
  EXPECT_EQ(host_.panels[kPanelNote], " m");
  EXPECT_EQ(host_.panels[kPanelActivity], "Select");
  const WorldWindow& w = shell_->State().Window;
  EXPECT_LT(w.Left, w.Right);
  EXPECT_LT(w.Bottom, w.Top);
  // The elements are drawn on the visible surface.
  EXPECT_GT(map_.Ops().size(), 10u);

  ASSERT_TRUE(shell_->Commands().Run("FILE_CMDS(3)"));
  EXPECT_FALSE(shell_->Session().ProjectOpen());
  EXPECT_EQ(host_.caption, "TARNO");
  EXPECT_FALSE(host_.menus.projectOpen);
  for (int panel : {kPanelActivity, kPanelFeedback, kPanelNote, kPanelX, kPanelY})
    EXPECT_EQ(host_.panels[panel], "") << "panel " << panel;
  ui_.Verify();
}

TEST_F(ShellControllerTest, SolveRunsTheSolverAndDrawsContoursAndPathlines) {
  OpenExample();
  const Colour contour = shell_->State().options.ContourColor;
  const Colour path = shell_->State().options.PathlineColor;
  EXPECT_EQ(CountPolylinesOf(map_.Ops(), contour), 0);
  SolveExample();
  EXPECT_TRUE(shell_->Solution().SolutionPresent);
  EXPECT_TRUE(shell_->Solution().ContourLinesPresent);
  EXPECT_TRUE(Exists("example.SOL"));
  EXPECT_TRUE(host_.menus.solutionValid);
  EXPECT_FALSE(host_.menus.solving);
  EXPECT_TRUE(host_.mouse);
  EXPECT_TRUE(MenuModel::Enabled("MODEL_CMDS(2)", host_.menus));  // Continue Solve
  EXPECT_GT(host_.pumps, 0);  // the window was served while the solver ran
  // The note tells what the contours show.
  EXPECT_EQ(host_.panels[kPanelNote], shell_->Solution().Note);
  EXPECT_FALSE(shell_->Solution().Note.empty());
  EXPECT_GT(CountPolylinesOf(map_.Ops(), contour), 0);
  EXPECT_GT(CountPolylinesOf(map_.Ops(), path), 0);

  // The run files are shown; one the solver did not write is reported.
  const std::size_t shown = ui_.TextFilesShown().size();  // the logs of the run
  ASSERT_TRUE(shell_->Commands().Run("RUN_FILES(0)"));
  ASSERT_EQ(ui_.TextFilesShown().size(), shown + 1);
  // Found whatever the case the solver wrote its name in.
  EXPECT_EQ(fs::path(ui_.TextFilesShown().back()), FindFileNoCase(work_, "example.DAT"));

  // Solving again asks whether to resolve; Cancel leaves everything as it was.
  ui_.ExpectModal<SolvePrompt>(SolvePrompt::kName, [](SolvePrompt& p) { p.Result = 2; });
  ASSERT_TRUE(shell_->Commands().RunButton("MODELCALC"));
  EXPECT_EQ(shell_->LastSolve().outcome, SolveOutcome::Cancelled);
  EXPECT_TRUE(shell_->Solution().SolutionPresent);
  EXPECT_TRUE(Exists("example.SOL"));
  ui_.Verify();
}

TEST_F(ShellControllerTest, InvalidateSolutionAsksAndRemovesOnlyOnYes) {
  OpenExample();
  EXPECT_FALSE(shell_->InvalidateSolution(true));  // no solution: no question
  SolveExample();
  const std::vector<std::string> question = {
      "This change may make the current solution inconsistent with your",
      "current element layout.  Do you want to remove the current solution",
      "results from view and invalidate the solution?  "};
  ui_.ExpectMessage("Model Changed!", question, Answer::No);
  EXPECT_FALSE(shell_->InvalidateSolution(true));
  EXPECT_TRUE(shell_->Solution().SolutionPresent);
  EXPECT_TRUE(Exists("example.SOL"));

  ui_.ExpectMessage("Model Changed!", question, Answer::Yes);
  EXPECT_TRUE(shell_->InvalidateSolution(true));
  EXPECT_FALSE(shell_->Solution().SolutionPresent);
  EXPECT_FALSE(shell_->Solution().ContourLinesPresent);
  EXPECT_FALSE(Exists("example.SOL"));
  EXPECT_FALSE(Exists("example.CTR"));
  EXPECT_FALSE(host_.menus.solutionValid);
  EXPECT_EQ(host_.panels[kPanelNote], " m");  // the units again
  // The contours left the map.
  EXPECT_EQ(CountPolylinesOf(map_.Ops(), shell_->State().options.ContourColor), 0);
  ui_.Verify();
}

TEST_F(ShellControllerTest, ModelSettingsCancelWritesNothingAndOkWritesAndInvalidates) {
  OpenExample();
  SolveExample();
  const std::string thickness = ModelValue("AQThickness");
  ui_.ExpectModal<ModelSettingsDialog>(ModelSettingsDialog::kName, [](ModelSettingsDialog& d) {
    d.settings.tbThickness = "123";
    d.Cancel();
  });
  ASSERT_TRUE(shell_->Commands().Run("MODEL_CMDS(0)"));
  EXPECT_EQ(ModelValue("AQThickness"), thickness);
  EXPECT_TRUE(shell_->Solution().SolutionPresent);

  // A bad entry keeps the dialog: the user corrects it and presses OK again. The new
  // aquifer makes the solution another model's; the user lets it go.
  ui_.ExpectModal<ModelSettingsDialog>(ModelSettingsDialog::kName, [this](ModelSettingsDialog& d) {
    d.settings.tbThickness = "0";
    EXPECT_FALSE(d.OK(ui_));
    d.settings.tbThickness = "123";
    EXPECT_TRUE(d.OK(ui_));
  });
  ui_.ExpectMessage("Bad Entry",
                    {"Thickness must be greater than 0.", "Please enter a new value."});
  ui_.ExpectMessageTitled("Model Changed!", Answer::Yes);
  ASSERT_TRUE(shell_->Commands().Run("MODEL_CMDS(0)"));
  EXPECT_EQ(std::stod(ModelValue("AQThickness")), 123.0);
  EXPECT_FALSE(shell_->Solution().SolutionPresent);
  EXPECT_FALSE(Exists("example.SOL"));
  ui_.Verify();
}

TEST_F(ShellControllerTest, AFailingCommandShowsTheGeneralMessageAndTheSessionStands) {
  OpenExample();
  SolveExample();
  const WorldWindow window = shell_->State().Window;
  // The project file goes behind the program's back: the size command cannot read it.
  const fs::path moved = work_ / "moved.trn";
  fs::rename(project_, moved);
  ExpectUnhandledIn("ModelGetSize");
  shell_->Commands().Run("ModelSize");
  CheckUnhandledIn();
  EXPECT_TRUE(shell_->Session().ProjectOpen());
  EXPECT_TRUE(shell_->Solution().SolutionPresent);
  EXPECT_TRUE(host_.menus.projectOpen);
  EXPECT_EQ(shell_->State().Window.Left, window.Left);
  // Back in place, the commands work again.
  fs::rename(moved, project_);
  ui_.ExpectMessageTitled("Model Size");
  EXPECT_TRUE(shell_->Commands().Run("ModelSize"));
  ui_.Verify();
}

TEST_F(ShellControllerTest, CalibrationStatisticsShowTheSolvedTestPoints) {
  OpenExample();
  EXPECT_TRUE(MenuModel::Enabled("CALIBRATION_STATS", shell_->CurrentMenuState()));
  // Before a solve there are no results: every tab is disabled, the dialog opens.
  ui_.ExpectModal<Calibration>(Calibration::kName, [](Calibration& d) {
    for (const auto& tab : d.tabs) EXPECT_FALSE(tab.enabled);
  });
  ASSERT_TRUE(shell_->Commands().Run("CALIBRATION_STATS"));
  SolveExample();
  int piezometers = 0;
  {
    Database db = Database::Open(project_);
    Statement st = db.Prepare("select count(*) from TPResults where Type = 'Piezometer'");
    ASSERT_TRUE(st.Step());
    piezometers = static_cast<int>(st.GetInt64(0));
  }
  ASSERT_GE(piezometers, 2) << "the example has observed heads";
  ui_.ExpectModal<Calibration>(Calibration::kName, [&](Calibration& d) {
    const CalibrationTab& tab = d.Tab(ObservationKind::Piezometer);
    EXPECT_TRUE(tab.enabled);
    EXPECT_EQ(tab.texts[6], std::to_string(piezometers));
    EXPECT_TRUE(std::is_sorted(tab.set.difference.begin(), tab.set.difference.end()));
  });
  ASSERT_TRUE(shell_->Commands().Run("CALIBRATION_STATS"));
  ui_.Verify();
}

TEST_F(ShellControllerTest, AScaleChoiceOfTheResidualMarksTakesEffect) {
  OpenExample();
  ASSERT_TRUE(shell_->Commands().Run("TGSCALING(2)"));
  ASSERT_TRUE(shell_->Commands().Run("TPSCALING(0)"));
  EXPECT_EQ(shell_->State().layers.gageScale, 100);
  EXPECT_EQ(shell_->State().layers.piezometerScale, 5);
  EXPECT_EQ(shell_->State().layers.stageScale, 10);
  EXPECT_TRUE(MenuModel::Checked("TGSCALING(2)", shell_->CurrentMenuState().layers));
  ui_.Verify();
}

TEST_F(ShellControllerTest, AnUnknownKeyIsReportedAndChangesNothing) {
  OpenExample();
  const int updates = host_.menuUpdates;
  ui_.ExpectMessage(kUnhandledErrorTitle,
                    UnhandledErrorLines(kUnknownCommandOperation,
                                        "No command for the menu key \"MODEL_CMDS(99)\""));
  EXPECT_FALSE(shell_->Commands().Run("MODEL_CMDS(99)"));
  EXPECT_EQ(host_.menuUpdates, updates);
  EXPECT_TRUE(shell_->Session().ProjectOpen());
  ui_.Verify();
}

TEST_F(ShellControllerTest, SwitchesFlipTheirLayerAndRedrawWhatTheyChange) {
  OpenExample();
  CommandRegistry& c = shell_->Commands();
  // The toolbar: shown and hidden, no redraw.
  const int copies = map_.copies;
  ASSERT_TRUE(c.Run("Layermenu(9)"));
  EXPECT_FALSE(host_.toolbar);
  EXPECT_FALSE(host_.menus.layers.toolbar);
  EXPECT_EQ(map_.copies, copies);
  ASSERT_TRUE(c.Run("Layermenu(9)"));
  EXPECT_TRUE(host_.toolbar);

  // The elements off: the map is drawn again with less on it.
  const std::size_t withElements = map_.Ops().size();
  ASSERT_TRUE(c.Run("Layermenu(1)"));
  EXPECT_FALSE(shell_->State().layers.elements);
  const std::size_t withoutElements = map_.Ops().size();
  EXPECT_LT(withoutElements + 10, withElements);
  ASSERT_TRUE(c.Run("Layermenu(1)"));
  EXPECT_GT(map_.Ops().size(), withoutElements + 10);

  // Manual Redraw on keeps the picture; an element switch then leaves it obsolete.
  ASSERT_TRUE(c.Run("Layermenu(13)"));
  EXPECT_TRUE(shell_->State().layers.manualRedraw);
  const int beforeCopies = map_.copies;
  ASSERT_TRUE(c.Run("Layermenu(1)"));
  EXPECT_EQ(map_.copies, beforeCopies);
  EXPECT_TRUE(shell_->View().PictureObsolete());
  // Refresh (Ctrl+L) draws it all the same.
  ASSERT_TRUE(c.Run("Layermenu(10)"));
  EXPECT_GT(map_.copies, beforeCopies);
  EXPECT_FALSE(shell_->View().PictureObsolete());
  ui_.Verify();
}

TEST_F(ShellControllerTest, NavigationButtonsAndTheirModes) {
  OpenExample();
  CommandRegistry& c = shell_->Commands();
  const WorldWindow start = shell_->State().Window;
  ASSERT_TRUE(c.RunButton("WINDOWZOOMIN"));
  const WorldWindow in = shell_->State().Window;
  EXPECT_LT(in.Right - in.Left, start.Right - start.Left);
  ASSERT_TRUE(c.Run("ZOOM_CMDS(2)"));  // the menu's Zoom Out
  EXPECT_GT(shell_->State().Window.Right - shell_->State().Window.Left, in.Right - in.Left);
  const WorldWindow before = shell_->State().Window;
  ASSERT_TRUE(c.RunButton("WINDOWSCROLLLEFT"));
  EXPECT_LT(shell_->State().Window.Left, before.Left);

  // Zoom to window waits for a rectangle: a cross, the menus off; the rectangle
  // ends the mode.
  ASSERT_TRUE(c.RunButton("WINDOWZOOMWIN"));
  EXPECT_EQ(shell_->State().mouseState, kZoomWindowMouseState);
  EXPECT_EQ(host_.cursor, MapCursor::Cross);
  EXPECT_TRUE(host_.menus.mouseOperation);
  const WorldWindow w = shell_->State().Window;
  const double cx = (w.Left + w.Right) / 2, cy = (w.Top + w.Bottom) / 2;
  const double dx = (w.Right - w.Left) / 8, dy = (w.Top - w.Bottom) / 8;
  shell_->MouseZoom(kZoomWindowEnd, cx - dx, cy + dy, cx + dx, cy - dy);
  EXPECT_EQ(shell_->State().mouseState, 0);
  EXPECT_EQ(host_.cursor, MapCursor::Arrow);
  EXPECT_FALSE(host_.menus.mouseOperation);
  EXPECT_LT(shell_->State().Window.Right - shell_->State().Window.Left, w.Right - w.Left);

  // Recenter: a second click on the button leaves the mode.
  ASSERT_TRUE(c.RunButton("WINDOWRECENTER"));
  EXPECT_EQ(shell_->State().mouseState, kRecenterMouseState);
  EXPECT_EQ(shell_->State().mouseMode, kRecenterMouseMode);
  ASSERT_TRUE(c.RunButton("WINDOWRECENTER"));
  EXPECT_EQ(shell_->State().mouseState, 0);
  EXPECT_EQ(host_.cursor, MapCursor::Arrow);
  EXPECT_FALSE(host_.menus.mouseOperation);
  ui_.Verify();
}

TEST_F(ShellControllerTest, WindowCommandsGoToTheHost) {
  OpenExample();
  CommandRegistry& c = shell_->Commands();
  ASSERT_TRUE(c.Run("EDIT_CMDS(7)"));
  EXPECT_EQ(host_.clipboardCopies, 1);
  ASSERT_TRUE(c.Run("HELP_CMDS(2)"));
  ASSERT_TRUE(c.Run("ReleaseNotes"));
  EXPECT_EQ(host_.helpTargets, (std::vector<std::string>{HelpIndex::PageForKey("HELP_CMDS(2)"),
                                                         HelpIndex::PageForKey("ReleaseNotes")}));
  ui_.ExpectMessageTitled("About TARNO");
  ASSERT_TRUE(c.Run("About"));
  ASSERT_TRUE(c.Run("FILE_CMDS(7)"));
  EXPECT_EQ(host_.closes, 1);
  // The closing window draws nothing more.
  shell_->SetClosing();
  const int repaints = host_.repaints;
  shell_->Zoom(kZoomIn);
  EXPECT_EQ(host_.repaints, repaints);
  ui_.Verify();
}

TEST_F(ShellControllerTest, OptionsDialogsKeepWhatOkAcceptedAndNothingOnCancel) {
  OpenExample();
  host_.stored.reset();
  // The GUI options show the user's own values and hand the accepted ones to the
  // host to keep.
  shell_->State().options.VertexTolerance = 0.25;
  ui_.ExpectModal<GUIOptions>(GUIOptions::kName, [this](GUIOptions& g) {
    EXPECT_EQ(g.DataVertexTolerance, "0.25");
    EXPECT_EQ(g.DataHazeLevel, std::to_string(shell_->State().options.HazeLevel));
    g.DataHazeLevel = "2";
    EXPECT_TRUE(g.OK(ui_));
  });
  ASSERT_TRUE(shell_->Commands().Run("TOOLS_CMDS(0)"));
  EXPECT_EQ(shell_->State().options.HazeLevel, 2);
  ASSERT_TRUE(host_.stored.has_value());
  EXPECT_EQ(host_.stored->HazeLevel, 2);

  host_.stored.reset();
  ui_.ExpectModal<GUIOptions>(GUIOptions::kName, [](GUIOptions& g) {
    g.DataHazeLevel = "4";
    g.Cancel();
  });
  ASSERT_TRUE(shell_->Commands().Run("TOOLS_CMDS(0)"));
  EXPECT_EQ(shell_->State().options.HazeLevel, 2);
  EXPECT_FALSE(host_.stored.has_value());

  // The inspector's settings: kept on OK only.
  ui_.ExpectModal<InspectorDialog>(InspectorDialog::kName, [](InspectorDialog& d) {
    d.Settings.TraceBackwards = true;
    d.Cancel();
  });
  ASSERT_TRUE(shell_->Commands().Run("InspectorSettings"));
  EXPECT_FALSE(shell_->Inspector().TraceBackwards);
  ui_.Verify();
}

TEST_F(ShellControllerTest, TheWelcomeOpensTheExampleTheUserChose) {
  // The example beside the program: the test's folder stands for it.
  ui_.ExpectModal<Welcome>(Welcome::kName, [](Welcome& w) {
    w.Result = 2;
    w.chkShowBox = true;
  });
  ui_.ExpectMessageTitled("Vincennes, Indiana Example", Answer::Yes);
  EXPECT_TRUE(shell_->StartUp("", true));
  EXPECT_TRUE(shell_->Session().ProjectOpen());
  EXPECT_TRUE(fs::equivalent(shell_->Session().Settings().DBName, project_));
  ui_.Verify();
}

TEST_F(ShellControllerTest, ImplementScenarioResetsTheMouseAndInvalidatesAChangedModel) {
  {
    // Two strings of the example under one tag.
    Database db = Database::Open(project_);
    db.ExecuteRaw(
        "update LinesinkStrings set chkScenario = 1, ScenResistance = 'riv', Resistance = 0.5 "
        "where PID in (select PID from LinesinkStrings order by PID limit 2)");
  }
  OpenExample();
  SolveExample();
  shell_->State().mouseState = 5;  // a mode left standing
  shell_->State().mouseMode = 2;
  ui_.ExpectModal<Scenarios>(Scenarios::kName, [](Scenarios& d) {
    ASSERT_EQ(d.LSDataTable.size(), 1u);
    EXPECT_EQ(d.LSDataTable[0].Scenario, "riv");
    EXPECT_TRUE(d.SetCell(ScenarioTable::Linesink, 0, kCurrentColumn, "2"));
    d.cmdUpdate_Click();
    d.cmdDone();
  });
  ui_.ExpectMessageTitled("Model Changed!", Answer::Yes);
  ASSERT_TRUE(shell_->Commands().Run("ImpScenario")) << Describe();
  ui_.Verify();
  EXPECT_EQ(shell_->State().mouseState, 0);
  EXPECT_EQ(shell_->State().mouseMode, 0);
  EXPECT_FALSE(shell_->Solution().SolutionPresent);
  {
    Database db = Database::Open(project_);
    Statement st = db.PrepareRaw(
        "select count(*) from LinesinkStrings where ScenResistance = 'riv' and Resistance = 2");
    st.Step();
    EXPECT_EQ(st.GetInt64(0), 2);
  }

  // Done without a change keeps the (new) solution and asks nothing.
  SolveExample();
  ui_.ExpectModal<Scenarios>(Scenarios::kName, [](Scenarios& d) { d.cmdDone(); });
  ASSERT_TRUE(shell_->Commands().Run("ImpScenario"));
  ui_.Verify();
  EXPECT_TRUE(shell_->Solution().SolutionPresent);
}

// A model made from an empty project by the mouse alone, as a user makes it: the
// element commands of the registry, clicks on the map (surface pixels, through the
// editor as the map widget forwards them), the dialogs answered through the port.
// It is solved with the real solver and contourer, edited (a vertex dragged, a
// segment refined, the well deleted and the deletion undone) and solved again.
TEST_F(ShellControllerTest, AModelDrawnByClicksOnAnEmptyProjectIsSolvedAndContoured) {
  const std::string blank = (work_ / "blank.trn").string();
  test::RunOptions made;
  made.cwd = work_;
  made.env = {"TARNO_CONFIG_DIR=" + (temp_->Path() / "config").string()};
  const test::RunResult created = test::RunProgram(
      "tarnocmd",
      {"new", blank, "--yes", "--description", "Drawn by clicks", "--map-units", "meters",
       "--model-units", "meters", "--base-name", "drawn"},
      made);
  ASSERT_EQ(created.status, 0) << created.err;
  ASSERT_TRUE(shell_->OpenProject(blank)) << Describe();
  Database db = Database::Open(blank);
  ASSERT_EQ(CountElements(db, ElementKind::Well) + CountElements(db, ElementKind::Linesink), 0);

  MapEditor& editor = shell_->Editor();
  auto press = [&](int button, double px, double py) {
    shell_->SyncSolutionView();  // as the map widget does before each event
    editor.MouseDown(button, 0, px, py);
  };
  auto release = [&](double px, double py) {
    shell_->SyncSolutionView();
    editor.MouseUp(kLeftButton, 0, px, py);
  };
  auto click = [&](double px, double py) {
    press(kLeftButton, px, py);
    release(px, py);
  };
  auto rightClick = [&] { press(kRightButton, 200, 150); };
  auto run = [&](const std::string& key) { ASSERT_TRUE(shell_->Commands().Run(key)) << key; };
  auto river = [&](LinesinkString& d, const char* label, const char* start, const char* end) {
    d.TypeLabel(label);
    d.TypeField(LinesinkString::kStartHead, start);
    d.TypeField(LinesinkString::kEndHead, end);
    d.TypeField(LinesinkString::kResistance, "1");
    d.TypeField(LinesinkString::kWidth, "5");
    EXPECT_TRUE(d.OK(db, ui_));
  };

  // The contour levels first, so that the picture has several.
  ui_.ExpectModal<ModelSettingsDialog>(ModelSettingsDialog::kName, [this](ModelSettingsDialog& d) {
    d.settings.tbContourMax = "16";
    d.settings.tbContourMin = "8";
    d.settings.tbContourInt = "0.5";
    EXPECT_TRUE(d.OK(ui_));
  });
  run("MODEL_CMDS(0)");

  // A discharge well.
  run("ELEM_NEW(0)");
  ui_.ExpectModal<WellProperties>("WellProperties", [&](WellProperties& d) {
    d.TypeLabel("W1");
    d.TypeField(WellProperties::kHead, "500");
    EXPECT_TRUE(d.OK(db, ui_));
  });
  click(100, 100);
  // A head-specified river of five vertices: the dialog before and after the clicks.
  ui_.ExpectModal<LinesinkString>("LinesinkString",
                                  [&](LinesinkString& d) { river(d, "River", "12", "10"); });
  run("ELEM_NEW(1)");
  const double riverX[] = {20, 100, 200, 280, 380}, riverY[] = {250, 235, 220, 205, 190};
  for (int i = 0; i < 5; ++i) click(riverX[i], riverY[i]);
  ui_.ExpectModal<LinesinkString>("LinesinkString",
                                  [&](LinesinkString& d) { EXPECT_TRUE(d.OK(db, ui_)); });
  rightClick();
  // A tributary whose first vertex, clicked beside the river's third, snaps onto it.
  ui_.ExpectModal<LinesinkString>("LinesinkString",
                                  [&](LinesinkString& d) { river(d, "Trib", "15", "11"); });
  run("ELEM_NEW(1)");
  click(180, 40);
  click(190, 120);
  click(202, 218);
  ui_.ExpectModal<LinesinkString>("LinesinkString",
                                  [&](LinesinkString& d) { EXPECT_TRUE(d.OK(db, ui_)); });
  rightClick();
  // An inhomogeneity of four corners.
  ui_.ExpectModal<Inhomogeneity>("Inhomogeneity", [&](Inhomogeneity& d) {
    d.Label = "Sand";
    d.chkChangeK = true;
    d.tbData[0] = "5";
    EXPECT_TRUE(d.OK(db, ui_));
  });
  run("ELEM_NEW(3)");
  for (auto [px, py] : {std::pair{250, 40}, {350, 40}, {350, 120}, {250, 120}}) click(px, py);
  rightClick();
  // A test point.
  run("MODEL_CMDS(6)");
  ui_.ExpectModal<TestPointProperties>("TestPointProperties", [&](TestPointProperties& d) {
    EXPECT_TRUE(d.OK(db, ui_));
  });
  click(60, 150);
  EXPECT_EQ(editor.MouseState(), kStateSelect);

  // The project holds what was drawn.
  EXPECT_EQ(CountElements(db, ElementKind::Well), 1);
  EXPECT_EQ(CountElements(db, ElementKind::TestPoint), 1);
  EXPECT_EQ(CountElements(db, ElementKind::Inhomogeneity), 1);
  const auto riverRow = FindByLabel(db, ElementKind::Linesink, "River");
  const auto tribRow = FindByLabel(db, ElementKind::Linesink, "Trib");
  ASSERT_TRUE(riverRow && tribRow);
  ASSERT_EQ(riverRow->vertices.size(), 5u);
  ASSERT_EQ(tribRow->vertices.size(), 3u);
  EXPECT_EQ(tribRow->vertices[2].X, riverRow->vertices[2].X);
  EXPECT_EQ(tribRow->vertices[2].Y, riverRow->vertices[2].Y);
  EXPECT_EQ(FindByLabel(db, ElementKind::Inhomogeneity, "Sand")->vertices.size(), 4u);

  // Solved: the advice on the iterations is taken.
  ui_.ExpectModal<IterationsDialog>(IterationsDialog::kName, [](IterationsDialog& d) {
    d.tbIterations = "2";
    d.Result = 1;
  });
  run("MODEL_CMDS(1)");
  ASSERT_EQ(shell_->LastSolve().outcome, SolveOutcome::Completed)
      << shell_->LastSolve().failure << Describe();
  EXPECT_TRUE(shell_->Solution().ContourLinesPresent);

  // The edits: the river's fourth vertex dragged south, the first segment refined,
  // the well deleted and brought back with Undo.
  click(280, 205);
  ASSERT_EQ(editor.SelectedKind(), static_cast<int>(ElementKind::Linesink));
  run("EDIT_CMDS(1)");
  press(kLeftButton, 280, 205);
  editor.MouseMove(kLeftButton, 0, 285, 240);
  EXPECT_EQ(editor.Rubber().kind, RubberShape::Kind::Line);
  release(285, 260);
  EXPECT_EQ(editor.Rubber().kind, RubberShape::Kind::None);
  EXPECT_FALSE(shell_->Solution().SolutionPresent);  // the model changed
  click(20, 250);
  run("EDIT_CMDS(3)");
  const auto moved = FindByLabel(db, ElementKind::Linesink, "River");
  ASSERT_EQ(moved->vertices.size(), 6u);
  EXPECT_LT(moved->vertices[4].Y, riverRow->vertices[3].Y);  // dragged down the screen
  click(100, 100);
  ASSERT_EQ(editor.SelectedKind(), static_cast<int>(ElementKind::Well));
  ui_.ExpectMessage("Confirm", {"Delete this element?"}, Answer::Yes);
  run("EDIT_CMDS(2)");
  EXPECT_EQ(CountElements(db, ElementKind::Well), 0);
  run("EDIT_UNDO");
  EXPECT_EQ(CountElements(db, ElementKind::Well), 1);

  // Solved again: the contour file holds levels of the settings, and the map shows
  // its lines in the contour colour.
  run("MODEL_CMDS(1)");
  ASSERT_EQ(shell_->LastSolve().outcome, SolveOutcome::Completed)
      << shell_->LastSolve().failure << Describe();
  const fs::path ctr = FindFileNoCase(work_, "drawn.CTR");
  ASSERT_FALSE(ctr.empty());
  std::ifstream in(ctr);
  int levels = 0;
  for (std::string line; std::getline(in, line);) {
    if (line.rfind("LEVEL", 0) != 0) continue;
    ++levels;
    const double level = std::stod(line.substr(5));
    EXPECT_GE(level, 8.0);
    EXPECT_LE(level, 16.0);
  }
  EXPECT_GT(levels, 3);
  EXPECT_GT(CountPolylinesOf(map_.Ops(), shell_->State().options.ContourColor), 3);
  ui_.Verify();
}

// Tools > Export > GeoPackage writes the solved model; Tools > Import > GIS Vector
// File brings a well in, which removes the solution.
TEST_F(ShellControllerTest, TheGeoPackageExportAndTheGisImportRunFromTheMenus) {
  OpenExample();
  SolveExample();
  ui_.ClearRecord();
  const std::string gpkg = (work_ / "example.gpkg").string();
  ui_.ExpectSaveFile(gpkg).Title("Write GeoPackage File");
  ui_.ExpectMessageTitled("Export Complete");
  ASSERT_TRUE(shell_->Commands().Run("EXPORT(14)"));
  ui_.Verify();
  const std::vector<std::string> said = ui_.Messages().back().lines;
  EXPECT_EQ(said.front(), gpkg + " has been written.");
  EXPECT_TRUE(std::any_of(said.begin(), said.end(),
                          [](const std::string& l) { return l.rfind("contours: ", 0) == 0; }))
      << Describe();
  EXPECT_TRUE(shell_->Solution().SolutionPresent) << "an export leaves the solution";

  // The wells of the GeoPackage come in again at their places, labelled by the
  // layer's name and their feature id.
  ui_.ExpectOpenFile(gpkg);
  ui_.ExpectModal<exchange::VectorImport>("VectorImport", [&](exchange::VectorImport& d) {
    for (int i = 0; i < static_cast<int>(d.layers.size()); ++i)
      if (d.layers[i].name == "wells") d.ChooseLayer(i);
    EXPECT_EQ(d.kind, ElementKind::Well);
    d.Map("label", "");  // labels of the layer and feature id
    ASSERT_TRUE(d.OK(ui_));
  });
  ui_.ExpectMessageTitled("GIS Import");
  ASSERT_TRUE(shell_->Commands().Run("IMPORT(11)"));
  ui_.Verify();
  EXPECT_EQ(ui_.Messages().back().lines.front().rfind("Imported 5 wells from 5 features", 0), 0u)
      << Describe();
  EXPECT_FALSE(shell_->Solution().SolutionPresent);
  EXPECT_FALSE(Exists("example.SOL"));
  Database db = Database::Open(project_);
  EXPECT_EQ(CountElements(db, ElementKind::Well), 10);
}

// The result views on both examples, solved: every row of LSResults and INResults
// fills its dialog with the row's values; a right click in the select state on a
// line-sink or inhomogeneity vertex shows the dialog of that element (the last
// vertex of a string has no segment); without a solution the right click shows
// nothing; View Results Table shows the tables with all their rows.
TEST_F(ShellControllerTest, ResultViewsOfBothExamplesShowTheirTableRows) {
  struct Ex {
    const char* file;
    const char* base;
    const char* description;
    const char* modelUnits;
    const char* sql;
  };
  const Ex examples[] = {
      {"example.trn", "example", "Vincennes, Indiana Example", "meters", "vincennes.sql"},
      {"basin and range.trn", "basinrng", "Basin and Range Example", "feet",
       "basin-and-range.sql"}};
  for (const Ex& e : examples) {
    SCOPED_TRACE(e.file);
    const std::string project = (work_ / e.file).string();
    if (project != project_) {
      test::RunOptions made;
      made.cwd = work_;
      made.env = {"TARNO_CONFIG_DIR=" + (temp_->Path() / "config").string()};
      ASSERT_EQ(
          test::RunProgram("tarnocmd",
                           {"new", project, "--yes", "--description", e.description, "--map-units",
                            "meters", "--model-units", e.modelUnits, "--base-name", e.base},
                           made)
              .status,
          0);
      test::RunOptions script;
      script.input = fs::path(TARNO_SOURCE_DIR) / "examples" / e.sql;
      ASSERT_EQ(test::RunExecutable("sqlite3", {"-bail", project}, script).status, 0);
    }
    ASSERT_TRUE(shell_->OpenProject(project)) << Describe();
    MapEditor& editor = shell_->Editor();
    auto rightClickAt = [&](double x, double y) {
      const DevicePoint p = shell_->Layer().vgGDIWorldToDevice(x, y);
      shell_->SyncSolutionView();
      editor.MouseDown(kRightButton, 0, p.x, p.y);
    };
    Database db = Database::Open(project);
    const std::vector<Element> strings = LoadAllRows(db, ElementKind::Linesink);
    ASSERT_FALSE(strings.empty());
    const std::vector<Vertex> first = LoadVertices(db, strings[0].key);

    // No solution yet: the right click asks nothing.
    ui_.ClearRecord();
    rightClickAt(first[0].X, first[0].Y);
    EXPECT_TRUE(ui_.Calls().empty()) << Describe();

    SolveExample();
    ui_.ClearRecord();

    // Every row fills its dialog with its own values.
    auto checkRow = [&](const char* table, const ResultInfo& d, const std::string& label) {
      Statement row = db.PrepareRaw(std::string("select * from ") + table + " where TARNOLabel=?");
      row.Bind(1, label);
      ASSERT_TRUE(row.Step()) << label;
      EXPECT_EQ(d.TARNOLabel, label);
      EXPECT_EQ(d.Label, row.GetText("Label"));
      ASSERT_FALSE(d.Lines.empty());
      for (const InfoLine& l : d.Lines) {
        if (l.isText)
          EXPECT_EQ(l.text, row.GetText(l.field)) << label << " " << l.field;
        else
          EXPECT_DOUBLE_EQ(l.value, row.GetDouble(l.field)) << label << " " << l.field;
      }
    };
    int lsRows = 0, inRows = 0;
    {
      Statement st = db.PrepareRaw("select TARNOLabel from LSResults");
      while (st.Step()) {
        const auto d = LoadLSInfo(db, st.GetText(0));
        ASSERT_TRUE(d.has_value());
        checkRow("LSResults", *d, st.GetText(0));
        EXPECT_TRUE(std::isfinite(d->Value("Discharge")));
        ++lsRows;
      }
      Statement in = db.PrepareRaw("select TARNOLabel from INResults");
      while (in.Step()) {
        const auto d = LoadINInfo(db, in.GetText(0));
        ASSERT_TRUE(d.has_value());
        checkRow("INResults", *d, in.GetText(0));
        ++inRows;
      }
    }
    EXPECT_GT(lsRows, 5);
    EXPECT_GT(inRows, 2);

    // Right clicks on vertices that no other vertex lies near on the screen.
    std::vector<Vertex> all;
    {
      Statement v = db.PrepareRaw("select VID, PID, Seq, X, Y from Vertices");
      while (v.Step())
        all.push_back(
            Vertex{v.GetInt64(0), v.GetInt64(1), v.GetInt64(2), v.GetDouble(3), v.GetDouble(4)});
    }
    auto alone = [&](const Vertex& at) {
      const DevicePoint p = shell_->Layer().vgGDIWorldToDevice(at.X, at.Y);
      if (p.x < 0 || p.y < 0 || p.x >= RecordingHost::kWidth || p.y >= RecordingHost::kHeight)
        return false;
      for (const Vertex& o : all) {
        if (o.VID == at.VID) continue;
        const DevicePoint q = shell_->Layer().vgGDIWorldToDevice(o.X, o.Y);
        if (std::abs(q.x - p.x) <= 4 && std::abs(q.y - p.y) <= 4) return false;
      }
      return true;
    };
    int segments = 0, lastVertices = 0, inhomogeneities = 0;
    for (const Element& s : strings) {
      const std::vector<Vertex> v = LoadVertices(db, s.key);
      for (size_t i = 0; i < v.size(); ++i) {
        if (!alone(v[i])) continue;
        if (i + 1 == v.size()) {
          ui_.ExpectMessage(kNoLinesinkTitle, {kNoLinesinkLine1, kNoLinesinkLine2});
          rightClickAt(v[i].X, v[i].Y);
          ++lastVertices;
        } else {
          LSInfo shown;
          ui_.ExpectModal<LSInfo>(LSInfo::kName, [&](LSInfo& d) { shown = d; });
          rightClickAt(v[i].X, v[i].Y);
          EXPECT_EQ(editor.LastResultInfo(), static_cast<int>(InfoShown::LSInfo));
          // The segment from this vertex to the next, labelled by the next one's Seq.
          EXPECT_EQ(shown.TARNOLabel, LinesinkSegmentLabel(s.key, v[i + 1].Seq));
          // Back from the solver's units (feet in one example): to a hundredth.
          EXPECT_NEAR(shown.Value("X1"), v[i].X, 0.01);
          EXPECT_NEAR(shown.Value("Y1"), v[i].Y, 0.01);
          checkRow("LSResults", shown, shown.TARNOLabel);
          ++segments;
        }
        ui_.Verify();
      }
    }
    for (const Element& h : LoadAllRows(db, ElementKind::Inhomogeneity)) {
      for (const Vertex& v : LoadVertices(db, h.key)) {
        if (!alone(v)) continue;
        INInfo shown;
        ui_.ExpectModal<INInfo>(INInfo::kName, [&](INInfo& d) { shown = d; });
        rightClickAt(v.X, v.Y);
        ui_.Verify();
        EXPECT_EQ(shown.TARNOLabel, SolverVertexLabel("IN_", h.key, v.Seq));
        checkRow("INResults", shown, shown.TARNOLabel);
        ++inhomogeneities;
      }
    }
    EXPECT_GT(segments, 0);
    EXPECT_GT(lastVertices, 0);
    EXPECT_GT(inhomogeneities, 0);
    // The right click leaves the select state and the selection as they were.
    EXPECT_EQ(editor.MouseState(), kStateSelect);

    // The results viewer over the same tables.
    ResultViewer viewer;
    ui_.ExpectModal<ResultViewer>(ResultViewer::kName, [&](ResultViewer& v) { viewer = v; });
    ASSERT_TRUE(shell_->Commands().Run("RESULTS_TABLE"));
    ui_.Verify();
    ASSERT_EQ(viewer.Tables.size(), ResultTables().size());
    EXPECT_EQ(static_cast<int>(viewer.Tables[0].rows.size()), lsRows);
    EXPECT_EQ(static_cast<int>(viewer.Tables[5].rows.size()), inRows);
    EXPECT_EQ(viewer.Tables[4].rows.size(), 7u);  // the test points
    EXPECT_EQ(viewer.Tables[0].headers.size(), 18u);
    ASSERT_TRUE(shell_->CloseProject());
  }
}

}  // namespace
}  // namespace tarno
