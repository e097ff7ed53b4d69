// The menus and the toolbar of the main window, without a window: the tree of
// entries with their captions, and which entries are available in a given state of
// the program. The Qt main window builds its QActions from this table and asks it
// for every entry's availability (TurnOnMenus, TurnOffMenus, SetUpToolbar), so that
// the rules can be tested without a display.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "display/map_state.h"

namespace tarno {

// The status tip of the entries of features this version does not have yet.
inline constexpr const char* kNotAvailableTip = "Not available in this version yet";

// What an entry needs to be available.
enum class MenuNeed {
  Always,         // also without a project (New, Open, Exit, Help)
  Project,        // an open project
  Solution,       // a valid solution of the open project
  SolverFiles,    // an open project whose solver files may be looked at (not while solving)
  ContoursLayer,  // the View menu's "Contours": a valid solution with contour lines allowed
  PathlinesLayer, // the View menu's "Pathlines": a valid solution with traces allowed
  ProtectionAreasLayer,
  HydrographyLabelsLayer,
  FarFieldLayer,
  NearFieldLayer,
  Undo,           // an open project whose edit history has an operation to undo
  Redo,           // ... one to redo
};

// What a click does with the check mark.
enum class MenuKind {
  Submenu,  // a top menu or a submenu: holds entries
  Command,  // runs an operation
  Switch,   // toggles its check mark (and runs its operation)
  Choice,   // one of a radio group: checked while its choice is the present one
};

struct MenuEntry {
  std::string key;      // unique name, e.g. "FILE_CMDS(1)" or "Layermenu(2)"
  std::string parent;   // key of the menu holding it; empty for a top menu
  std::string caption;  // with its & mnemonic
  MenuKind kind = MenuKind::Command;
  MenuNeed need = MenuNeed::Project;
  // False for a feature built later: it stands in the menu, disabled, with the
  // status tip kNotAvailableTip.
  bool built = true;
  std::string shortcut;  // in the form "Ctrl+L"
  bool separatorBefore = false;
};

struct ToolbarButton {
  std::string key;       // "FILENEW", "MODELCALC", ...
  std::string tip;       // the tool tip
  std::string menuKey;   // the menu entry whose availability the button shares
  bool separatorBefore = false;
};

// The state the availability is decided from.
struct MenuState {
  bool projectOpen = false;
  bool solutionValid = false;
  bool solving = false;         // a solve runs: every entry is off
  bool mouseOperation = false;  // TurnOffMenus: a mouse operation (zoom, recenter) runs
  // EDIT_CMDS(0) to (3), Properties, Move, Delete and Refine: available only as the
  // selection on the map allows (the map editor's EditMenu).
  std::array<bool, 4> editEntries{};
  // Their captions as the selection sets them ("Well &Properties", "&Move Vertex");
  // empty: the menu's own.
  std::array<std::string, 4> editCaptions{};
  // The solve controller's MODELRUNFILES: off from the start of a solve until its
  // results are processed (so after a fatal run the files of the failed run stay
  // out of reach until the next solve).
  bool runFiles = true;
  LayerSwitches layers;
  // The edit history: whether an operation can be undone or redone, and its name
  // for the Edit menu's caption ("&Undo Delete Well").
  bool canUndo = false;
  bool canRedo = false;
  std::string undoName;
  std::string redoName;
};

class MenuModel {
 public:
  // The whole tree, each menu followed by its entries in order.
  static const std::vector<MenuEntry>& Entries();
  static const std::vector<ToolbarButton>& Toolbar();
  // The entry of `key`; throws Error for an unknown key.
  static const MenuEntry& Entry(const std::string& key);
  static const ToolbarButton& Button(const std::string& key);
  // The keys of the top menus, in the order of the menu bar.
  static std::vector<std::string> TopMenus();

  // Whether an entry (or a top menu) is available in `state`. A top menu is
  // available when one of its entries could be; an entry only when its menu is.
  static bool Enabled(const std::string& key, const MenuState& state);
  // The caption of an entry in `state`: Undo and Redo name the operation they
  // would apply ("&Undo Delete Well"), plain "&Undo" and "&Redo" when there is
  // none; every other entry has its fixed caption.
  static std::string Caption(const std::string& key, const MenuState& state);
  // A toolbar button is available as its menu entry; the keys that end a mouse
  // mode of their own (zoom to window, recenter) stay available during it so that
  // a second click leaves the mode.
  static bool ButtonEnabled(const std::string& key, const MenuState& state);
  // The check mark of a switch as the layer switches hold it.
  static bool Checked(const std::string& key, const LayerSwitches& layers);
  // The switch of a key in the layer switches; nullptr for a key that is no
  // layer switch.
  static bool* SwitchOf(const std::string& key, LayerSwitches& layers);

  // The files of "View Model Run Files...": caption and file name for a base name.
  struct RunFile {
    std::string key;
    std::string caption;
    std::string file;
  };
  static std::vector<RunFile> RunFiles(const std::string& baseName);

  // The Help entries: the page of each in the help window (see help_model.h).
  struct HelpPage {
    std::string key;
    std::string page;
  };
  static const std::vector<HelpPage>& HelpPages();
};

}  // namespace tarno
