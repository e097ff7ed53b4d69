// The Qt views of the dialog models: each is a QDialog built from the model's
// fields, which on its buttons writes the widgets back into the model and calls the
// model's own button (so the checks and messages are the model's).
#pragma once

#include <functional>
#include <string>

#include "app/qt_ui.h"

namespace tarno {

class DatabaseOpener;

// Registers a view for every dialog model of the registry (app/dialog_registry.h).
void RegisterDialogViews(QtUserInterface& ui);
// The same, with the open project's file (empty while none is open) for the views
// that write to it outside their model's buttons: the saved windows' Delete.
void RegisterDialogViews(QtUserInterface& ui, std::function<std::string()> projectFile);

}  // namespace tarno
