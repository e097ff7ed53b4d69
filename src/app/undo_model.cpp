#include "app/undo_model.h"

#include <algorithm>
#include <cctype>
#include <string_view>

#include "core/error_trap.h"

namespace tarno {

namespace {

bool EqualsNoCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::tolower(static_cast<unsigned char>(x)) ==
                  std::tolower(static_cast<unsigned char>(y));
         });
}

}  // namespace

void SetUndoState(MenuState& state, const UndoHistory& history) {
  state.canUndo = history.CanUndo();
  state.canRedo = history.CanRedo();
  state.undoName = history.UndoName();
  state.redoName = history.RedoName();
}

bool TablesTouchFlow(const std::vector<std::string>& tables) {
  static constexpr std::string_view kAside[] = {"TextLabels",  "TestPoints", "Particles",
                                                "FluxInspect", "Capzones",   "SavedWindows",
                                                "Basemaps",    "MapLabels",  "Project"};
  return std::any_of(tables.begin(), tables.end(), [](const std::string& t) {
    return std::none_of(std::begin(kAside), std::end(kAside),
                        [&](std::string_view a) { return EqualsNoCase(a, t); });
  });
}

UndoOutcome UndoLastOperation(ProjectSession& session, bool redo) {
  UndoOutcome outcome;
  UndoHistory& history = session.History();
  if (!session.ProjectOpen()) return outcome;
  const UndoEntry* next = redo ? history.NextRedo() : history.NextUndo();
  if (next == nullptr) return outcome;
  std::vector<std::string> tables = ChangedTables(*next);
  UserInterface& ui = session.UI();
  RunOperation(ui, redo ? "EditRedo" : "EditUndo", [&] {
    try {
      outcome.applied = redo ? history.Redo() : history.Undo();
    } catch (const UndoConflictError& e) {
      ui.MessageBox(redo ? kCannotRedoTitle : kCannotUndoTitle, {e.what()}, Buttons::OK,
                    Icon::Exclamation);
    }
  });
  if (outcome.applied) {
    outcome.tables = std::move(tables);
    outcome.touchesFlow = TablesTouchFlow(outcome.tables);
  }
  return outcome;
}

}  // namespace tarno
