#include "app/menu_model.h"

#include <algorithm>
#include <map>

#include "core/error.h"
#include "display/residual_scaling.h"

namespace tarno {

namespace {

using K = MenuKind;
using N = MenuNeed;

MenuEntry Top(const char* key, const char* caption, MenuNeed need) {
  return MenuEntry{key, "", caption, K::Submenu, need, true, "", false};
}
MenuEntry Sub(const char* key, const char* parent, const char* caption, MenuNeed need = N::Project,
              bool built = true, bool sep = false) {
  return MenuEntry{key, parent, caption, K::Submenu, need, built, "", sep};
}
MenuEntry Cmd(const char* key, const char* parent, const char* caption, MenuNeed need = N::Project,
              bool built = true, const char* shortcut = "", bool sep = false) {
  return MenuEntry{key, parent, caption, K::Command, need, built, shortcut, sep};
}
// An entry of a feature this version does not have yet: printing, base maps,
// import and export, calibration, PEST and UCODE, MODFLOW, search, scenarios and
// the repair of a file. Each stands in its menu, disabled, until its work is done.
MenuEntry Later(const char* key, const char* parent, const char* caption, bool sep = false) {
  return MenuEntry{key, parent, caption, K::Command, N::Project, false, "", sep};
}
MenuEntry Switch(const char* key, const char* parent, const char* caption, MenuNeed need = N::Project,
                 bool built = true, bool sep = false) {
  return MenuEntry{key, parent, caption, K::Switch, need, built, "", sep};
}

std::vector<MenuEntry> BuildEntries() {
  std::vector<MenuEntry> e;
  // Project.
  e.push_back(Top("FILEMENU", "&Project", N::Always));
  e.push_back(Cmd("FILE_CMDS(0)", "FILEMENU", "&New Database...", N::Always));
  e.push_back(Cmd("FILE_CMDS(1)", "FILEMENU", "&Open Database", N::Always));
  e.push_back(Cmd("FILE_CMDS(2)", "FILEMENU", "Make Duplicate Database..."));
  e.push_back(Cmd("FILE_CMDS(3)", "FILEMENU", "&Close Database"));
  e.push_back(Cmd("FILE_CMDS(4)", "FILEMENU", "&Project Settings...", N::Project, true, "", true));
  e.push_back(Later("FILE_CMDS(5)", "FILEMENU", "&Page Setup..", true));
  e.push_back(Later("FILE_CMDS(6)", "FILEMENU", "&Print..."));
  e.push_back(Cmd("FILE_CMDS(7)", "FILEMENU", "E&xit", N::Always, true, "", true));
  // Edit: the selection's entries (their captions and availability follow the
  // selected element, see the map editor) and the drawing of text and protection
  // areas. "Delete &All..." has no operation yet.
  e.push_back(Top("EDITMENU", "&Edit", N::Project));
  e.push_back(Cmd("EDIT_UNDO", "EDITMENU", "&Undo", N::Undo, true, "Ctrl+Z"));
  e.push_back(Cmd("EDIT_REDO", "EDITMENU", "&Redo", N::Redo, true, "Ctrl+Y"));
  e.push_back(Cmd("mnuEditSelect", "EDITMENU", "Select With Window"));
  e.push_back(Cmd("EDIT_CMDS(0)", "EDITMENU", "&Properties", N::Project, true, "", true));
  e.push_back(Cmd("EDIT_CMDS(1)", "EDITMENU", "&Move"));
  e.push_back(Cmd("EDIT_CMDS(2)", "EDITMENU", "&Delete"));
  e.push_back(Cmd("EDIT_CMDS(3)", "EDITMENU", "&Refine"));
  e.push_back(Later("EDIT_CMDS(4)", "EDITMENU", "Delete &All..."));
  e.push_back(Cmd("EDIT_CMDS(5)", "EDITMENU", "Add &Text...", N::Project, true, "", true));
  e.push_back(Cmd("EDIT_CMDS(6)", "EDITMENU", "Draw Wellhead &Protection Area..."));
  e.push_back(Cmd("EDIT_CMDS(7)", "EDITMENU", "&Copy to Clipboard", N::Project, true, "", true));
  // View: the display switches.
  e.push_back(Top("VIEWMENU", "&View", N::Project));
  e.push_back(Switch("Layermenu(1)", "VIEWMENU", "Elements"));
  e.push_back(Switch("Layermenu(2)", "VIEWMENU", "Contours", N::ContoursLayer));
  e.push_back(Switch("Layermenu(3)", "VIEWMENU", "Pathlines", N::PathlinesLayer));
  e.push_back(Sub("Layermenu(4)", "VIEWMENU", "Test Points"));
  e.push_back(Switch("TESTDISPLAY(0)", "Layermenu(4)", "&Show Test Points"));
  e.push_back(Switch("TESTDISPLAY(1)", "Layermenu(4)", "Show &Numbers"));
  e.push_back(Switch("TESTDISPLAY(2)", "Layermenu(4)", "Show &Labels"));
  e.push_back(Switch("TESTDISPLAY(3)", "Layermenu(4)", "Scaled Symbols", N::Solution));
  e.push_back(Sub("TPSCALING", "Layermenu(4)", "Scaled Symbols (Piezometers)", N::Project, true, true));
  e.push_back(Sub("TGSCALING", "Layermenu(4)", "Scaled Symbols (Gages)"));
  e.push_back(Sub("TSSCALING", "Layermenu(4)", "Scaled Symbols (Lake Stages)"));
  for (const ResidualScaleChoice& c : ResidualScaleChoices())
    e.push_back(MenuEntry{c.key, c.group, c.caption, K::Choice, N::Project, true, "", false});
  e.push_back(Later("Layermenu(5)", "VIEWMENU", "Results Overlay..."));
  e.push_back(Switch("Layermenu(6)", "VIEWMENU", "Wellhead Protection Areas", N::ProtectionAreasLayer));
  e.push_back(Switch("Layermenu(7)", "VIEWMENU", "View Hydrography Labels", N::HydrographyLabelsLayer));
  e.push_back(Switch("Layermenu(8)", "VIEWMENU", "View Hypsography Labels"));
  e.push_back(Switch("Layermenu(9)", "VIEWMENU", "Toolbar", N::Project, true, true));
  e.push_back(Cmd("Layermenu(10)", "VIEWMENU", "Refresh", N::Project, true, "Ctrl+L"));
  e.push_back(Sub("Layermenu(11)", "VIEWMENU", "Show Vertices", N::Project, true, true));
  e.push_back(Switch("ShowVertices(0)", "Layermenu(11)", "Linesink Vertices"));
  e.push_back(Switch("ShowVertices(1)", "Layermenu(11)", "Inhomogeneity Vertices"));
  e.push_back(Switch("ShowVertices(2)", "Layermenu(11)", "Domain and Boundary Vertices"));
  e.push_back(Switch("Layermenu(12)", "VIEWMENU", "Show Stream Linkages"));
  e.push_back(Switch("Layermenu(13)", "VIEWMENU", "Manual Redraw"));
  e.push_back(Sub("Layermenu(14)", "VIEWMENU", "Base Map..."));
  e.push_back(Switch("EDITORGRID(0)", "Layermenu(14)", "Show Editor Grid"));
  e.push_back(Switch("EDITORGRID(1)", "Layermenu(14)", "Snap to Grid"));
  e.push_back(Later("ViewGraphicsMenu(0)", "Layermenu(14)", "Vector Graphics", true));
  e.push_back(Later("ViewGraphicsMenu(1)", "Layermenu(14)", "Raster Graphics"));
  e.push_back(Later("SelectBBMGroup", "Layermenu(14)", "Select BBM Group"));
  e.push_back(Sub("Layermenu(15)", "VIEWMENU", "Hydrologic Unit"));
  e.push_back(Switch("View_HU(0)", "Layermenu(15)", "Hydrologic Unit Boundary", N::NearFieldLayer));
  e.push_back(Switch("View_HU(1)", "Layermenu(15)", "FarField Boundary", N::FarFieldLayer));
  e.push_back(Switch("Haze", "VIEWMENU", "Haze Background", N::Project, true, true));
  // Element: a new element is drawn on the map by the map editor's modes.
  e.push_back(Top("ELEMMENU", "E&lement", N::Project));
  e.push_back(Sub("ELEMNEW", "ELEMMENU", "&New"));
  e.push_back(Cmd("ELEM_NEW(0)", "ELEMNEW", "&Well"));
  e.push_back(Cmd("ELEM_NEW(1)", "ELEMNEW", "&Linesink"));
  e.push_back(Cmd("ELEM_NEW(2)", "ELEMNEW", "&Horizontal Barrier"));
  e.push_back(Cmd("ELEM_NEW(3)", "ELEMNEW", "&Inhomogeneity"));
  e.push_back(Cmd("ELEM_NEW(4)", "ELEMNEW", "L&ake"));
  e.push_back(Cmd("ElemUniformFlow", "ELEMMENU", "&Uniform Flow..."));
  // Model.
  e.push_back(Top("MODELMENU", "&Model", N::Project));
  e.push_back(Cmd("MODEL_CMDS(0)", "MODELMENU", "&Settings..."));
  e.push_back(Cmd("MODEL_CMDS(1)", "MODELMENU", "Sol&ve"));
  e.push_back(Cmd("MODEL_CMDS(2)", "MODELMENU", "Continue Solve", N::Solution));
  e.push_back(Cmd("MODEL_CMDS(3)", "MODELMENU", "Add &Particle", N::Project, true, "", true));
  e.push_back(Cmd("MODEL_CMDS(4)", "MODELMENU", "Add Particle Mode"));
  e.push_back(Cmd("MODEL_CMDS(5)", "MODELMENU", "Add Particle Grid"));
  e.push_back(Cmd("MODEL_CMDS(6)", "MODELMENU", "Add &Test Point"));
  e.push_back(Cmd("MODEL_CMDS(7)", "MODELMENU", "Add &Flux Inspection Line"));
  e.push_back(Cmd("MODEL_CMDS(8)", "MODELMENU", "Add a Hydrologic Unit Boundary"));
  e.push_back(Cmd("MODEL_CMDS(9)", "MODELMENU", "Add a FarField Boundary"));
  e.push_back(Cmd("MODEL_CMDS(10)", "MODELMENU", "Add a Model Boundary"));
  e.push_back(Cmd("ModelSize", "MODELMENU", "Model &Size...", N::Project, true, "", true));
  e.push_back(Cmd("RESULTS_TABLE", "MODELMENU", "View Results Table", N::Solution));
  e.push_back(Cmd("CALIBRATION_STATS", "MODELMENU", "View Calibration Statistics"));
  e.push_back(Sub("MODELRUNFILES", "MODELMENU", "View Model Run Files...", N::SolverFiles));
  for (const auto& f : MenuModel::RunFiles("")) {
    e.push_back(MenuEntry{f.key, "MODELRUNFILES", f.caption, K::Command, N::SolverFiles, true, "", false});
  }
  e.push_back(Cmd("SET_TIME", "MODELMENU", "Time...", N::Project, true, "", true));
  e.push_back(Cmd("ImpScenario", "MODELMENU", "Implement Scenario"));
  // Grid: the MODFLOW coupling.
  e.push_back(Top("GMMenu", "Grid", N::Project));
  e.push_back(Later("GM_Extract", "GMMenu", "MODFLOW Extract"));
  e.push_back(Later("GM_Leakage", "GMMenu", "Leakage from MODFLOW"));
  // Tools.
  e.push_back(Top("TOOLSMENU", "&Tools", N::Project));
  e.push_back(Cmd("TOOLS_CMDS(0)", "TOOLSMENU", "GUI Options"));
  e.push_back(Sub("TOOLS_CMDS(1)", "TOOLSMENU", "&Convert"));
  e.push_back(Cmd("CONVERT(0)", "TOOLS_CMDS(1)", "DLG to BBM..."));
  e.push_back(Cmd("CONVERT(1)", "TOOLS_CMDS(1)", "SDTS to BBM..."));
  e.push_back(Cmd("CONVERT(2)", "TOOLS_CMDS(1)", "DM to BBM..."));
  e.push_back(Cmd("CONVERT(3)", "TOOLS_CMDS(1)", "CAD File to BBM..."));
  e.push_back(Cmd("CONVERT(4)", "TOOLS_CMDS(1)", "BBM to DXF..."));
  e.push_back(Cmd("CONVERT(5)", "TOOLS_CMDS(1)", "Shape File to BBM..."));
  // Import and Export: the element files, the geometry and grid exports and the GIS
  // formats. An entry stays disabled until its reader or writer is built.
  e.push_back(Sub("TOOLS_CMDS(2)", "TOOLSMENU", "&Import"));
  e.push_back(Cmd("IMPORT(0)", "TOOLS_CMDS(2)", "All XML Element Files..."));
  e.push_back(Cmd("IMPORT(1)", "TOOLS_CMDS(2)", "Line-sink Strings (.lss.xml)..."));
  e.push_back(Cmd("IMPORT(2)", "TOOLS_CMDS(2)", "Inhomogeneities (.inh.xml)..."));
  e.push_back(Cmd("IMPORT(3)", "TOOLS_CMDS(2)", "Horizontal Barriers (.brr.xml)..."));
  e.push_back(Cmd("IMPORT(4)", "TOOLS_CMDS(2)", "Hydrologic Unit (.huc)...", N::Project, true, "", true));
  e.push_back(Cmd("IMPORT(5)", "TOOLS_CMDS(2)", "Line-sink Strings (.lss)..."));
  e.push_back(Cmd("IMPORT(6)", "TOOLS_CMDS(2)", "Inhomogeneities (.inh)..."));
  e.push_back(Cmd("IMPORT(7)", "TOOLS_CMDS(2)", "Discharge Specified Wells (.wl)..."));
  e.push_back(Cmd("IMPORT(8)", "TOOLS_CMDS(2)", "Head Specified Wells (.wl)..."));
  e.push_back(Cmd("IMPORT(9)", "TOOLS_CMDS(2)", "Test Points (.tp)..."));
  e.push_back(Cmd("IMPORT(10)", "TOOLS_CMDS(2)", "Text Labels (.tx)..."));
  e.push_back(Cmd("IMPORT(11)", "TOOLS_CMDS(2)", "GIS Vector File...", N::Project, true, "", true));
  e.push_back(Sub("TOOLS_CMDS(3)", "TOOLSMENU", "&Export"));
  e.push_back(Cmd("EXPORT(0)", "TOOLS_CMDS(3)", "All XML Element Files..."));
  e.push_back(Cmd("EXPORT(1)", "TOOLS_CMDS(3)", "Line-sink Strings (.lss.xml)..."));
  e.push_back(Cmd("EXPORT(2)", "TOOLS_CMDS(3)", "Inhomogeneities (.inh.xml)..."));
  e.push_back(Cmd("EXPORT(3)", "TOOLS_CMDS(3)", "Horizontal Barriers (.brr.xml)..."));
  e.push_back(Cmd("EXPORT(4)", "TOOLS_CMDS(3)", "Hydrologic Unit (.lss, .huc)...", N::Project, true, "", true));
  e.push_back(Cmd("EXPORT(5)", "TOOLS_CMDS(3)", "Inhomogeneities (.inh)..."));
  e.push_back(Cmd("EXPORT(6)", "TOOLS_CMDS(3)", "Discharge Specified Wells (.wl)..."));
  e.push_back(Cmd("EXPORT(7)", "TOOLS_CMDS(3)", "Head Specified Wells (.wl)..."));
  e.push_back(Cmd("EXPORT(8)", "TOOLS_CMDS(3)", "Test Points (.tp)..."));
  e.push_back(Cmd("EXPORT(9)", "TOOLS_CMDS(3)", "Text Labels (.tx)..."));
  e.push_back(Cmd("EXPORT(10)", "TOOLS_CMDS(3)", "DXF File...", N::Project, true, "", true));
  e.push_back(Cmd("EXPORT(11)", "TOOLS_CMDS(3)", "SURFER Boundary Line File..."));
  e.push_back(Cmd("EXPORT(12)", "TOOLS_CMDS(3)", "SURFER Grid File..."));
  e.push_back(Cmd("EXPORT(13)", "TOOLS_CMDS(3)", "Shapefiles..."));
  e.push_back(Cmd("EXPORT(14)", "TOOLS_CMDS(3)", "GeoPackage...", N::Project, true, "", true));
  e.push_back(Later("TOOLS_CMDS(4)", "TOOLSMENU", "TARNO Database &Viewer"));
  e.push_back(Cmd("TOOLS_CMDS(5)", "TOOLSMENU", "TARNO Base Map Browser"));
  e.push_back(Cmd("InspectorSettings", "TOOLSMENU", "Instant Inspector Settings...", N::Project, true, "", true));
  e.push_back(Cmd("ReprojectMaps", "TOOLSMENU", "Reproject Maps..."));
  e.push_back(Later("ToolsSearch", "TOOLSMENU", "Search"));
  e.push_back(Cmd("SolverIntegrityCheck", "TOOLSMENU", "Solver Integrity Check"));
  e.push_back(Later("LeakageCheck", "TOOLSMENU", "Leakage Check"));
  e.push_back(Cmd("PestMenu", "TOOLSMENU", "PEST", N::Project, true, "", true));
  e.push_back(Cmd("UcodeMenu", "TOOLSMENU", "UCODE"));
  e.push_back(Later("DBRepair", "TOOLSMENU", "Database Repair", true));
  // Window: the zoom commands (their action numbers follow the key).
  e.push_back(Top("WINDOWMENU", "&Window", N::Project));
  e.push_back(Cmd("ZOOM_CMDS(1)", "WINDOWMENU", "Zoom &In"));
  e.push_back(Cmd("ZOOM_CMDS(2)", "WINDOWMENU", "Zoom &Out"));
  e.push_back(Cmd("ZOOM_CMDS(3)", "WINDOWMENU", "Zoom E&xtents"));
  e.push_back(Cmd("ZOOM_CMDS(4)", "WINDOWMENU", "Zoom to &Window..."));
  e.push_back(Cmd("ZOOM_CMDS(5)", "WINDOWMENU", "&Refresh", N::Project, true, "", true));
  e.push_back(Cmd("ZOOM_CMDS(7)", "WINDOWMENU", "&Save Current Window", N::Project, true, "", true));
  e.push_back(Cmd("ZOOM_CMDS(8)", "WINDOWMENU", "Sa&ved Windows..."));
  // Help: the manual pages, the release notes and the About box.
  e.push_back(Top("HELPMENU", "&Help", N::Always));
  e.push_back(Cmd("HELP_CMDS(0)", "HELPMENU", "&Getting Started", N::Always));
  e.push_back(Cmd("HELP_CMDS(1)", "HELPMENU", "&Projects", N::Always));
  e.push_back(Cmd("HELP_CMDS(2)", "HELPMENU", "&Solving a Model", N::Always));
  e.push_back(Cmd("HELP_CMDS(3)", "HELPMENU", "&Batch Program", N::Always));
  e.push_back(Cmd("HELP_CMDS(4)", "HELPMENU", "&How TARNO Works", N::Always));
  e.push_back(Cmd("ReleaseNotes", "HELPMENU", "TARNO Release Notes", N::Always, true, "", true));
  e.push_back(Cmd("About", "HELPMENU", "About", N::Always));
  return e;
}

std::vector<ToolbarButton> BuildToolbar() {
  return {
      {"FILENEW", "New...", "FILE_CMDS(0)", false},
      {"FILEOPEN", "Open", "FILE_CMDS(1)", false},
      {"FILEPRINT", "Print", "FILE_CMDS(6)", false},
      {"EDITDELETE", "Delete", "EDIT_CMDS(2)", true},
      {"EDITMOVEVERTEX", "Move Vertex", "EDIT_CMDS(1)", false},
      {"EDITREFINE", "Refine string", "EDIT_CMDS(3)", false},
      {"EDITPROPERTIES", "Properties...", "EDIT_CMDS(0)", false},
      {"ELEMWELL", "Add well...", "ELEM_NEW(0)", true},
      {"ELEMLINESINK", "Add linesink string...", "ELEM_NEW(1)", false},
      {"ELEMNOFLOW", "Add horizontal barrier...", "ELEM_NEW(2)", false},
      {"ELEMINHO", "Add Inhomogeneity...", "ELEM_NEW(3)", false},
      {"MODELPARTICLE", "Add particle", "MODEL_CMDS(3)", true},
      {"MODELTESTPOINT", "Add test point", "MODEL_CMDS(6)", false},
      {"MODELFLUXINSPECT", "Add flux inspector", "MODEL_CMDS(7)", false},
      {"MODELCAPZONE", "Draw capture zone...", "EDIT_CMDS(6)", false},
      {"MODELCALC", "Run!", "MODEL_CMDS(1)", true},
      {"MODELSETTINGS", "Model settings...", "MODEL_CMDS(0)", false},
      {"SEARCH", "Search for elements...", "ToolsSearch", false},
      {"WINDOWZOOMIN", "Zoom in", "ZOOM_CMDS(1)", true},
      {"WINDOWZOOMOUT", "Zoom out", "ZOOM_CMDS(2)", false},
      {"WINDOWZOOMWIN", "Zoom to window", "ZOOM_CMDS(4)", false},
      {"WINDOWZOOMEXTENTS", "Zoom extents", "ZOOM_CMDS(3)", false},
      {"WINDOWSCROLLLEFT", "Scroll left", "ZOOM_CMDS(1)", true},
      {"WINDOWSCROLLRIGHT", "Scroll right", "ZOOM_CMDS(1)", false},
      {"WINDOWSCROLLUP", "Scroll up", "ZOOM_CMDS(1)", false},
      {"WINDOWSCROLLDOWN", "Scroll down", "ZOOM_CMDS(1)", false},
      {"WINDOWRECENTER", "Recenter view...", "ZOOM_CMDS(1)", false},
  };
}

const std::map<std::string, std::size_t>& Index() {
  static const std::map<std::string, std::size_t> index = [] {
    std::map<std::string, std::size_t> m;
    const auto& e = MenuModel::Entries();
    for (std::size_t i = 0; i < e.size(); ++i) m.emplace(e[i].key, i);
    return m;
  }();
  return index;
}

bool NeedMet(MenuNeed need, const MenuState& s) {
  const bool project = s.projectOpen;
  const bool solution = project && s.solutionValid;
  switch (need) {
    case N::Always: return true;
    case N::Project: return project;
    case N::Solution: return solution;
    case N::SolverFiles: return project && s.runFiles;
    case N::ContoursLayer: return solution && s.layers.contoursEnabled;
    case N::PathlinesLayer: return solution && s.layers.pathlinesEnabled;
    case N::ProtectionAreasLayer: return project && s.layers.protectionAreasEnabled;
    case N::HydrographyLabelsLayer: return project && s.layers.hydrographyLabelsEnabled;
    case N::FarFieldLayer: return project && s.layers.viewFarFieldEnabled;
    case N::NearFieldLayer: return project && s.layers.viewNearFieldEnabled;
    case N::Undo: return project && s.canUndo;
    case N::Redo: return project && s.canRedo;
  }
  return false;
}

}  // namespace

const std::vector<MenuEntry>& MenuModel::Entries() {
  static const std::vector<MenuEntry> entries = BuildEntries();
  return entries;
}

const std::vector<ToolbarButton>& MenuModel::Toolbar() {
  static const std::vector<ToolbarButton> buttons = BuildToolbar();
  return buttons;
}

const MenuEntry& MenuModel::Entry(const std::string& key) {
  const auto it = Index().find(key);
  if (it == Index().end()) throw Error("No menu entry \"" + key + "\"");
  return Entries()[it->second];
}

const ToolbarButton& MenuModel::Button(const std::string& key) {
  for (const auto& b : Toolbar())
    if (b.key == key) return b;
  throw Error("No toolbar button \"" + key + "\"");
}

std::vector<std::string> MenuModel::TopMenus() {
  std::vector<std::string> keys;
  for (const auto& e : Entries())
    if (e.parent.empty()) keys.push_back(e.key);
  return keys;
}

bool MenuModel::Enabled(const std::string& key, const MenuState& state) {
  if (state.solving || state.mouseOperation) return false;
  const MenuEntry& e = Entry(key);
  if (!e.built || !NeedMet(e.need, state)) return false;
  // The selection's entries of the Edit menu: as the map editor says.
  for (std::size_t i = 0; i < state.editEntries.size(); ++i)
    if (key == "EDIT_CMDS(" + std::to_string(i) + ")" && !state.editEntries[i]) return false;
  return e.parent.empty() || Enabled(e.parent, state);
}

std::string MenuModel::Caption(const std::string& key, const MenuState& state) {
  const MenuEntry& e = Entry(key);
  const std::string* name = key == "EDIT_UNDO"   ? &state.undoName
                            : key == "EDIT_REDO" ? &state.redoName
                                                 : nullptr;
  if (name == nullptr || name->empty()) return e.caption;
  // An ampersand of the name is shown as itself, not taken as a mnemonic.
  std::string shown;
  for (char c : *name) shown += c == '&' ? std::string("&&") : std::string(1, c);
  return e.caption + " " + shown;
}

bool MenuModel::ButtonEnabled(const std::string& key, const MenuState& state) {
  const ToolbarButton& b = Button(key);
  if (state.mouseOperation && !state.solving && state.projectOpen &&
      (key == "WINDOWZOOMWIN" || key == "WINDOWRECENTER"))
    return true;
  return Enabled(b.menuKey, state);
}

bool* MenuModel::SwitchOf(const std::string& key, LayerSwitches& l) {
  static const std::map<std::string, bool LayerSwitches::*> switches = {
      {"Layermenu(1)", &LayerSwitches::elements},
      {"Layermenu(2)", &LayerSwitches::contours},
      {"Layermenu(3)", &LayerSwitches::pathlines},
      {"TESTDISPLAY(0)", &LayerSwitches::showTestPoints},
      {"TESTDISPLAY(1)", &LayerSwitches::testPointNumbers},
      {"TESTDISPLAY(2)", &LayerSwitches::testPointLabels},
      {"TESTDISPLAY(3)", &LayerSwitches::testPointScaled},
      {"Layermenu(6)", &LayerSwitches::protectionAreas},
      {"Layermenu(7)", &LayerSwitches::hydrographyLabels},
      {"Layermenu(8)", &LayerSwitches::hypsographyLabels},
      {"Layermenu(9)", &LayerSwitches::toolbar},
      {"ShowVertices(0)", &LayerSwitches::linesinkVertices},
      {"ShowVertices(1)", &LayerSwitches::inhomogeneityVertices},
      {"ShowVertices(2)", &LayerSwitches::domainVertices},
      {"Layermenu(12)", &LayerSwitches::streamLinkages},
      {"Layermenu(13)", &LayerSwitches::manualRedraw},
      {"EDITORGRID(0)", &LayerSwitches::showEditorGrid},
      {"EDITORGRID(1)", &LayerSwitches::snapToGrid},
      {"View_HU(0)", &LayerSwitches::viewNearField},
      {"View_HU(1)", &LayerSwitches::viewFarField},
      {"Haze", &LayerSwitches::haze},
  };
  const auto it = switches.find(key);
  return it == switches.end() ? nullptr : &(l.*(it->second));
}

bool MenuModel::Checked(const std::string& key, const LayerSwitches& layers) {
  if (const auto scale = TestPointScaleChecked(key, layers)) return *scale;
  LayerSwitches copy = layers;
  const bool* b = SwitchOf(key, copy);
  return b != nullptr && *b;
}

std::vector<MenuModel::RunFile> MenuModel::RunFiles(const std::string& baseName) {
  return {
      {"RUN_FILES(0)", "Input File", baseName + ".DAT"},
      {"RUN_FILES(1)", "Error Log File ", "ERROR.LOG"},
      {"RUN_FILES(2)", "Output File", baseName + ".OUT"},
      {"RUN_FILES(3)", "Contour File", baseName + ".CTR"},
      {"RUN_FILES(4)", "Trace File", baseName + ".PTH"},
      {"RUN_FILES(5)", "Inquiry File", baseName + ".XTR"},
      {"RUN_FILES(6)", "Runtime Message File", "MESSAGE.LOG"},
      {"RUN_FILES(7)", "Command Echo File", "ECHO.LOG"},
  };
}

const std::vector<MenuModel::HelpPage>& MenuModel::HelpPages() {
  static const std::vector<HelpPage> pages = {
      {"HELP_CMDS(0)", "getting-started.md"}, {"HELP_CMDS(1)", "projects.md"},
      {"HELP_CMDS(2)", "solving.md"},          {"HELP_CMDS(3)", "batch.md"},
      {"HELP_CMDS(4)", "how-it-works.md"},     {"ReleaseNotes", "release-notes.md"},
  };
  return pages;
}

}  // namespace tarno
