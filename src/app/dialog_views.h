// The Qt views of the dialog models: each is a QDialog built from the model's
// fields, which on its buttons writes the widgets back into the model and calls the
// model's own button (so the checks and messages are the model's).
#pragma once

#include "app/qt_ui.h"

namespace tarno {

class DatabaseOpener;

// Registers every view below with the port:
//   NewDatabaseWizard, ProjectSettings, UnitChange   (the project life cycle)
//   ModelSettings                                   (the model settings with their tabs)
//   GUIOptions, Welcome                             (the shell)
//   RestoreWindow                                   (saved windows)
//   SolvePrompt, FormContinueSolve, RelaxDialog, ConvergeDialog, SolverIntegrity
void RegisterDialogViews(QtUserInterface& ui);

}  // namespace tarno
