// The availability rules of the menus and the toolbar, without a window.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>

#include "app/menu_model.h"
#include "core/error.h"

namespace tarno {
namespace {

std::set<std::string> EnabledKeys(const MenuState& s) {
  std::set<std::string> keys;
  for (const auto& e : MenuModel::Entries())
    if (MenuModel::Enabled(e.key, s)) keys.insert(e.key);
  return keys;
}

MenuState WithProject() {
  MenuState s;
  s.projectOpen = true;
  return s;
}

MenuState WithSolution() {
  MenuState s = WithProject();
  s.solutionValid = true;
  s.layers.contoursEnabled = true;
  s.layers.pathlinesEnabled = true;
  return s;
}

TEST(MenuTree, EveryParentStandsBeforeItsEntriesAndKeysAreUnique) {
  std::set<std::string> seen;
  for (const auto& e : MenuModel::Entries()) {
    EXPECT_TRUE(seen.insert(e.key).second) << "duplicate key " << e.key;
    if (!e.parent.empty()) {
      EXPECT_TRUE(seen.count(e.parent)) << e.key << " stands before its menu " << e.parent;
      EXPECT_EQ(MenuModel::Entry(e.parent).kind, MenuKind::Submenu) << e.key;
    }
  }
  EXPECT_THROW(MenuModel::Entry("NOSUCHENTRY"), Error);
}

TEST(MenuTree, TopMenusInTheOrderOfTheMenuBar) {
  const std::vector<std::string> expected = {"FILEMENU", "EDITMENU",  "VIEWMENU",   "ELEMMENU", "MODELMENU",
                                             "GMMenu",   "TOOLSMENU", "WINDOWMENU", "HELPMENU"};
  EXPECT_EQ(MenuModel::TopMenus(), expected);
  EXPECT_EQ(MenuModel::Entry("FILEMENU").caption, "&Project");
  EXPECT_EQ(MenuModel::Entry("ELEMMENU").caption, "E&lement");
  EXPECT_EQ(MenuModel::Entry("GMMenu").caption, "Grid");
}

TEST(MenuTree, CaptionsOfTheCommandsThatRun) {
  EXPECT_EQ(MenuModel::Entry("FILE_CMDS(0)").caption, "&New Database...");
  EXPECT_EQ(MenuModel::Entry("FILE_CMDS(7)").caption, "E&xit");
  EXPECT_EQ(MenuModel::Entry("MODEL_CMDS(1)").caption, "Sol&ve");
  EXPECT_EQ(MenuModel::Entry("ZOOM_CMDS(4)").caption, "Zoom to &Window...");
  EXPECT_EQ(MenuModel::Entry("ZOOM_CMDS(8)").caption, "Sa&ved Windows...");
  EXPECT_EQ(MenuModel::Entry("Layermenu(10)").shortcut, "Ctrl+L");
  EXPECT_EQ(MenuModel::Entry("Layermenu(2)").kind, MenuKind::Switch);
  EXPECT_EQ(MenuModel::Entry("Layermenu(10)").kind, MenuKind::Command);
  EXPECT_EQ(MenuModel::Entry("Haze").caption, "Haze Background");
}

TEST(MenuTree, ConvertMenuHoldsTheSixConverters) {
  EXPECT_EQ(MenuModel::Entry("TOOLS_CMDS(1)").kind, MenuKind::Submenu);
  const std::vector<std::string> captions = {"DLG to BBM...",     "SDTS to BBM...",
                                             "DM to BBM...",      "CAD File to BBM...",
                                             "BBM to DXF...",     "Shape File to BBM..."};
  for (std::size_t i = 0; i < captions.size(); ++i) {
    const MenuEntry& e = MenuModel::Entry("CONVERT(" + std::to_string(i) + ")");
    EXPECT_EQ(e.caption, captions[i]);
    EXPECT_EQ(e.parent, "TOOLS_CMDS(1)");
    EXPECT_TRUE(e.built);
  }
  EXPECT_TRUE(MenuModel::Entry("ReprojectMaps").built);
}

TEST(MenuTree, RunFilesNameTheFilesOfTheBaseName) {
  const auto files = MenuModel::RunFiles("vinc");
  ASSERT_EQ(files.size(), 8u);
  EXPECT_EQ(files[0].caption, "Input File");
  EXPECT_EQ(files[0].file, "vinc.DAT");
  EXPECT_EQ(files[1].caption, "Error Log File ");  // the trailing blank is part of it
  EXPECT_EQ(files[1].file, "ERROR.LOG");
  EXPECT_EQ(files[5].file, "vinc.XTR");
  EXPECT_EQ(files[7].file, "ECHO.LOG");
  for (const auto& f : files) EXPECT_EQ(MenuModel::Entry(f.key).parent, "MODELRUNFILES");
}

TEST(MenuAvailability, WithoutAProjectOnlyProjectCommandsAndHelp) {
  const MenuState none;
  std::set<std::string> expected = {"FILEMENU", "FILE_CMDS(0)", "FILE_CMDS(1)", "FILE_CMDS(7)",
                                    "HELPMENU", "ReleaseNotes", "About"};
  for (const auto& h : MenuModel::HelpPages()) expected.insert(h.key);
  EXPECT_EQ(EnabledKeys(none), expected);
  // A solution flag left over does not open the menus either.
  MenuState stale;
  stale.solutionValid = true;
  stale.layers.contoursEnabled = true;
  EXPECT_EQ(EnabledKeys(stale), expected);
}

TEST(MenuAvailability, WithAProjectTheModelCommandsButNoSolutionEntries) {
  const MenuState s = WithProject();
  for (const char* key : {"FILE_CMDS(2)", "FILE_CMDS(3)", "FILE_CMDS(4)", "MODEL_CMDS(0)",
                          "MODEL_CMDS(1)", "ModelSize", "MODELRUNFILES", "RUN_FILES(0)",
                          "TOOLS_CMDS(0)", "ZOOM_CMDS(1)", "ZOOM_CMDS(8)", "Layermenu(1)",
                          "Layermenu(10)", "EDIT_CMDS(7)"})
    EXPECT_TRUE(MenuModel::Enabled(key, s)) << key;
  for (const char* key : {"MODEL_CMDS(2)", "Layermenu(2)", "Layermenu(3)", "TESTDISPLAY(3)"})
    EXPECT_FALSE(MenuModel::Enabled(key, s)) << key;
  // The layer's own availability does not help without a valid solution.
  MenuState allowed = s;
  allowed.layers.contoursEnabled = true;
  EXPECT_FALSE(MenuModel::Enabled("Layermenu(2)", allowed));
}

TEST(MenuAvailability, UndoAndRedoFollowTheHistoryAndNameTheOperation) {
  const auto& entries = MenuModel::Entries();
  const auto first = std::find_if(entries.begin(), entries.end(),
                                  [](const MenuEntry& e) { return e.parent == "EDITMENU"; });
  ASSERT_NE(first, entries.end());
  EXPECT_EQ(first->key, "EDIT_UNDO") << "Undo heads the Edit menu";
  EXPECT_EQ((first + 1)->key, "EDIT_REDO");
  EXPECT_EQ(MenuModel::Entry("EDIT_UNDO").shortcut, "Ctrl+Z");
  EXPECT_EQ(MenuModel::Entry("EDIT_REDO").shortcut, "Ctrl+Y");

  MenuState s = WithProject();
  EXPECT_FALSE(MenuModel::Enabled("EDIT_UNDO", s));
  EXPECT_FALSE(MenuModel::Enabled("EDIT_REDO", s));
  EXPECT_EQ(MenuModel::Caption("EDIT_UNDO", s), "&Undo");
  EXPECT_EQ(MenuModel::Caption("EDIT_REDO", s), "&Redo");
  s.canUndo = true;
  s.undoName = "Delete Well";
  EXPECT_TRUE(MenuModel::Enabled("EDIT_UNDO", s));
  EXPECT_FALSE(MenuModel::Enabled("EDIT_REDO", s));
  EXPECT_EQ(MenuModel::Caption("EDIT_UNDO", s), "&Undo Delete Well");
  s.canRedo = true;
  s.redoName = "Add Text & Label";
  EXPECT_EQ(MenuModel::Caption("EDIT_REDO", s), "&Redo Add Text && Label");
  EXPECT_EQ(MenuModel::Caption("FILE_CMDS(0)", s), "&New Database...");

  // Neither without a project, while solving or during a mouse operation.
  MenuState closed = s;
  closed.projectOpen = false;
  EXPECT_FALSE(MenuModel::Enabled("EDIT_UNDO", closed));
  MenuState solving = s;
  solving.solving = true;
  EXPECT_FALSE(MenuModel::Enabled("EDIT_REDO", solving));
  MenuState mouse = s;
  mouse.mouseOperation = true;
  EXPECT_FALSE(MenuModel::Enabled("EDIT_UNDO", mouse));
}

TEST(MenuAvailability, FeaturesBuiltLaterStayDisabledInEveryState) {
  for (const auto& e : MenuModel::Entries()) {
    if (e.built) continue;
    EXPECT_FALSE(MenuModel::Enabled(e.key, WithSolution())) << e.key;
  }
  EXPECT_FALSE(MenuModel::Entry("FILE_CMDS(6)").built);  // printing
  EXPECT_FALSE(MenuModel::Entry("EDIT_CMDS(4)").built);  // Delete All
}

TEST(MenuAvailability, AddingEntriesNeedAProjectAndTheSelectionEntriesASelection) {
  const MenuState s = WithProject();
  for (const char* key : {"ELEM_NEW(0)", "ELEM_NEW(1)", "ELEM_NEW(2)", "ELEM_NEW(3)",
                          "ELEM_NEW(4)", "ElemUniformFlow", "mnuEditSelect", "EDIT_CMDS(5)",
                          "EDIT_CMDS(6)", "MODEL_CMDS(3)", "MODEL_CMDS(4)", "MODEL_CMDS(5)",
                          "MODEL_CMDS(6)", "MODEL_CMDS(7)", "MODEL_CMDS(8)", "MODEL_CMDS(9)",
                          "MODEL_CMDS(10)"}) {
    EXPECT_TRUE(MenuModel::Enabled(key, s)) << key;
    EXPECT_FALSE(MenuModel::Enabled(key, MenuState{})) << key;
  }
  EXPECT_TRUE(MenuModel::ButtonEnabled("ELEMWELL", s));
  EXPECT_TRUE(MenuModel::ButtonEnabled("MODELCAPZONE", s));
  // Nothing selected: Properties, Move, Delete and Refine are off, with their buttons.
  for (int i = 0; i < 4; ++i)
    EXPECT_FALSE(MenuModel::Enabled("EDIT_CMDS(" + std::to_string(i) + ")", s)) << i;
  EXPECT_FALSE(MenuModel::ButtonEnabled("EDITDELETE", s));
  // A selected well: all but Refine.
  MenuState well = s;
  well.editEntries = {true, true, true, false};
  EXPECT_TRUE(MenuModel::Enabled("EDIT_CMDS(0)", well));
  EXPECT_TRUE(MenuModel::ButtonEnabled("EDITMOVEVERTEX", well));
  EXPECT_FALSE(MenuModel::ButtonEnabled("EDITREFINE", well));
  // A string being drawn turns the menus off, the selection's entries too.
  well.mouseOperation = true;
  EXPECT_FALSE(MenuModel::Enabled("EDIT_CMDS(0)", well));
  EXPECT_FALSE(MenuModel::Enabled("ELEM_NEW(0)", well));
}

TEST(MenuAvailability, TheEstimationDialogsNeedAnOpenProject) {
  for (const char* key : {"PestMenu", "UcodeMenu"}) {
    EXPECT_TRUE(MenuModel::Entry(key).built) << key;
    EXPECT_TRUE(MenuModel::Enabled(key, WithSolution())) << key;
    EXPECT_FALSE(MenuModel::Enabled(key, MenuState{})) << key;
  }
}

TEST(MenuAvailability, ASolutionOpensContinueAndTheResultLayers) {
  MenuState s = WithSolution();
  EXPECT_TRUE(MenuModel::Enabled("MODEL_CMDS(2)", s));
  EXPECT_TRUE(MenuModel::Enabled("Layermenu(2)", s));
  EXPECT_TRUE(MenuModel::Enabled("Layermenu(3)", s));
  // A solution without traces (or without contours) keeps that layer off.
  s.layers.pathlinesEnabled = false;
  EXPECT_FALSE(MenuModel::Enabled("Layermenu(3)", s));
  EXPECT_TRUE(MenuModel::Enabled("Layermenu(2)", s));
  s.layers.contoursEnabled = false;
  EXPECT_FALSE(MenuModel::Enabled("Layermenu(2)", s));
}

TEST(MenuAvailability, RunFilesAreOutOfReachWhileTheSolverControllerSaysSo) {
  MenuState s = WithSolution();
  EXPECT_TRUE(MenuModel::Enabled("RUN_FILES(1)", s));
  s.runFiles = false;
  EXPECT_FALSE(MenuModel::Enabled("MODELRUNFILES", s));
  EXPECT_FALSE(MenuModel::Enabled("RUN_FILES(1)", s));
  EXPECT_TRUE(MenuModel::Enabled("MODEL_CMDS(1)", s));
}

TEST(MenuAvailability, LayerEntriesFollowWhatTheProjectHolds) {
  MenuState s = WithProject();
  EXPECT_FALSE(MenuModel::Enabled("Layermenu(7)", s));
  EXPECT_FALSE(MenuModel::Enabled("View_HU(1)", s));
  s.layers.hydrographyLabelsEnabled = true;
  s.layers.viewFarFieldEnabled = true;
  EXPECT_TRUE(MenuModel::Enabled("Layermenu(7)", s));
  EXPECT_TRUE(MenuModel::Enabled("View_HU(1)", s));
  EXPECT_FALSE(MenuModel::Enabled("View_HU(0)", s));
}

TEST(MenuAvailability, AMouseOperationTurnsTheMenusOffButKeepsItsOwnKey) {
  MenuState s = WithSolution();
  s.mouseOperation = true;
  EXPECT_TRUE(EnabledKeys(s).empty());
  EXPECT_TRUE(MenuModel::ButtonEnabled("WINDOWZOOMWIN", s));
  EXPECT_TRUE(MenuModel::ButtonEnabled("WINDOWRECENTER", s));
  EXPECT_FALSE(MenuModel::ButtonEnabled("WINDOWZOOMIN", s));
  EXPECT_FALSE(MenuModel::ButtonEnabled("MODELCALC", s));
}

TEST(MenuAvailability, ASolveTurnsEverythingOff) {
  MenuState s = WithSolution();
  s.solving = true;
  EXPECT_TRUE(EnabledKeys(s).empty());
  for (const auto& b : MenuModel::Toolbar()) EXPECT_FALSE(MenuModel::ButtonEnabled(b.key, s)) << b.key;
}

TEST(Toolbar, KeysTipsAndTheirMenuEntries) {
  const auto& buttons = MenuModel::Toolbar();
  ASSERT_EQ(buttons.size(), 27u);
  EXPECT_EQ(MenuModel::Button("MODELCALC").tip, "Run!");
  EXPECT_EQ(MenuModel::Button("FILENEW").tip, "New...");
  EXPECT_EQ(MenuModel::Button("WINDOWRECENTER").tip, "Recenter view...");
  EXPECT_EQ(MenuModel::Button("ELEMINHO").tip, "Add Inhomogeneity...");
  for (const auto& b : buttons) EXPECT_NO_THROW(MenuModel::Entry(b.menuKey)) << b.key;
  EXPECT_THROW(MenuModel::Button("NOSUCHKEY"), Error);
}

TEST(Toolbar, ButtonsShareTheAvailabilityOfTheirEntries) {
  const MenuState none;
  EXPECT_TRUE(MenuModel::ButtonEnabled("FILENEW", none));
  EXPECT_TRUE(MenuModel::ButtonEnabled("FILEOPEN", none));
  EXPECT_FALSE(MenuModel::ButtonEnabled("MODELCALC", none));
  EXPECT_FALSE(MenuModel::ButtonEnabled("WINDOWZOOMIN", none));
  EXPECT_FALSE(MenuModel::ButtonEnabled("WINDOWZOOMWIN", none));
  const MenuState s = WithProject();
  EXPECT_TRUE(MenuModel::ButtonEnabled("MODELCALC", s));
  EXPECT_TRUE(MenuModel::ButtonEnabled("WINDOWSCROLLUP", s));
  EXPECT_FALSE(MenuModel::ButtonEnabled("FILEPRINT", s));
  EXPECT_TRUE(MenuModel::ButtonEnabled("ELEMWELL", s));
  EXPECT_FALSE(MenuModel::ButtonEnabled("SEARCH", s));
}

TEST(Switches, KeysMapToTheLayerSwitches) {
  LayerSwitches l;
  l.contours = false;
  EXPECT_FALSE(MenuModel::Checked("Layermenu(2)", l));
  bool* on = MenuModel::SwitchOf("Layermenu(2)", l);
  ASSERT_NE(on, nullptr);
  *on = true;
  EXPECT_TRUE(l.contours);
  EXPECT_TRUE(MenuModel::Checked("Layermenu(2)", l));
  *MenuModel::SwitchOf("Haze", l) = true;
  EXPECT_TRUE(l.haze);
  *MenuModel::SwitchOf("View_HU(1)", l) = true;
  EXPECT_TRUE(l.viewFarField);
  EXPECT_FALSE(l.viewNearField);
  EXPECT_EQ(MenuModel::SwitchOf("Layermenu(10)", l), nullptr);  // Refresh is a command
  // Every switch of the tree has its field.
  for (const auto& e : MenuModel::Entries())
    if (e.kind == MenuKind::Switch) EXPECT_NE(MenuModel::SwitchOf(e.key, l), nullptr) << e.key;
}

}  // namespace
}  // namespace tarno

namespace tarno {
namespace {

TEST(MenuResidualScales, EachGroupChecksItsPresentScale) {
  for (const char* group : {"TPSCALING", "TGSCALING", "TSSCALING"}) {
    EXPECT_EQ(MenuModel::Entry(group).kind, MenuKind::Submenu) << group;
    EXPECT_EQ(MenuModel::Entry(group).parent, "Layermenu(4)") << group;
  }
  EXPECT_EQ(MenuModel::Entry("TGSCALING").caption, "Scaled Symbols (Gages)");
  EXPECT_EQ(MenuModel::Entry("TGSCALING(2)").kind, MenuKind::Choice);
  EXPECT_EQ(MenuModel::Entry("TGSCALING(2)").caption, "+/- 100 %");
  EXPECT_EQ(MenuModel::Entry("TPSCALING(0)").caption, "+/- &5 %");
  LayerSwitches l;  // the start-up scales: 10, 50 and 10 %
  EXPECT_TRUE(MenuModel::Checked("TPSCALING(1)", l));
  EXPECT_TRUE(MenuModel::Checked("TGSCALING(1)", l));
  EXPECT_TRUE(MenuModel::Checked("TSSCALING(1)", l));
  l.gageScale = 100;
  EXPECT_FALSE(MenuModel::Checked("TGSCALING(1)", l));
  EXPECT_TRUE(MenuModel::Checked("TGSCALING(2)", l));
  EXPECT_FALSE(MenuModel::Checked("TSSCALING(0)", l));
}

}  // namespace
}  // namespace tarno
