// Edit > Undo and Edit > Redo of the open project, without a window: the menu
// state of the edit history and the two commands. The main window calls these and
// does the window's part (the solution, the redraw, the menus).
#pragma once

#include <string>
#include <vector>

#include "app/menu_model.h"
#include "store/lifecycle.h"
#include "store/undo_history.h"

namespace tarno {

inline constexpr const char* kCannotUndoTitle = "Cannot Undo";
inline constexpr const char* kCannotRedoTitle = "Cannot Redo";

// The history's part of the menu state: whether Undo and Redo are available and
// the names of the operations they would apply.
void SetUndoState(MenuState& state, const UndoHistory& history);

// What an undo or redo did.
struct UndoOutcome {
  bool applied = false;             // rows of the project file changed
  bool touchesFlow = false;         // among them rows the solver reads: the solution is to go
  std::vector<std::string> tables;  // the tables changed
};

// Whether a change of these tables can change the flow the solver computes. Only
// the tables that annotate the map or ask questions of a solution (text labels,
// test points, particles, flux inspection lines, protection areas, saved windows,
// base maps, the project's names) do not; a change of Vertices or Model counts, as
// the element or setting it belongs to is not told apart.
bool TablesTouchFlow(const std::vector<std::string>& tables);

// Undo (redo = false) or Redo of the last operation of the session's project. A
// file changed behind the history is shown as "Cannot Undo" ("Cannot Redo") with
// the reason, the history is cleared and the file stays as it was; any other
// failure is shown as the general error message of "EditUndo" ("EditRedo").
UndoOutcome UndoLastOperation(ProjectSession& session, bool redo = false);

}  // namespace tarno
