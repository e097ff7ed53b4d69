// The registry of the dialog views: one function per dialog name that builds the
// view over the model, runs it modally and leaves the result in the model.
#include "app/dialog_views.h"

#include "app/shell_models.h"
#include "app/views/gui_options_view.h"
#include "app/views/model_settings_view.h"
#include "app/views/new_database_wizard_view.h"
#include "app/views/project_settings_view.h"
#include "app/views/restore_window_view.h"
#include "app/views/solve_views.h"
#include "app/views/unit_change_view.h"
#include "app/views/welcome_view.h"
#include "core/error.h"
#include "display/navigation.h"
#include "solver/solve_dialogs.h"
#include "store/dialogs.h"

namespace tarno {

namespace {

template <typename Model>
Model& As(DialogModel& model) {
  auto* typed = dynamic_cast<Model*>(&model);
  if (typed == nullptr) {
    throw Error("The dialog " + model.DialogName() + " is not of the kind its view shows");
  }
  return *typed;
}

// Registers a view built by `make(model, parent)` and run modally.
template <typename Model, typename Make>
void Register(QtUserInterface& ui, const char* name, Make make) {
  ui.RegisterView(name, [make](DialogModel& model, QWidget* parent) {
    auto view = make(As<Model>(model), parent);
    view->exec();
  });
}

}  // namespace

void RegisterDialogViews(QtUserInterface& ui) { RegisterDialogViews(ui, {}); }

void RegisterDialogViews(QtUserInterface& ui, std::function<std::string()> projectFile) {
  UserInterface* port = &ui;
  Register<NewDatabaseWizard>(ui, NewDatabaseWizard::kName, [](auto& m, QWidget* parent) {
    return std::make_unique<NewDatabaseWizardView>(m, parent);
  });
  Register<ProjectSettings>(ui, ProjectSettings::kName, [port](auto& m, QWidget* parent) {
    return std::make_unique<ProjectSettingsView>(m, *port, parent);
  });
  Register<UnitChange>(ui, UnitChange::kName, [](auto& m, QWidget* parent) {
    return std::make_unique<UnitChangeView>(m, parent);
  });
  Register<ModelSettingsDialog>(ui, ModelSettingsDialog::kName, [port](auto& m, QWidget* parent) {
    return std::make_unique<ModelSettingsView>(m, *port, parent);
  });
  Register<GUIOptions>(ui, GUIOptions::kName, [port](auto& m, QWidget* parent) {
    return std::make_unique<GUIOptionsView>(m, *port, parent);
  });
  Register<Welcome>(ui, Welcome::kName, [](auto& m, QWidget* parent) {
    return std::make_unique<WelcomeView>(m, parent);
  });
  Register<RestoreWindow>(ui, RestoreWindow::kName,
                          [port, projectFile](auto& m, QWidget* parent) {
                            return std::make_unique<RestoreWindowView>(m, *port, projectFile,
                                                                       parent);
                          });
  Register<SolvePrompt>(ui, SolvePrompt::kName, [](auto& m, QWidget* parent) {
    return std::make_unique<SolvePromptView>(m, parent);
  });
  Register<FormContinueSolve>(ui, FormContinueSolve::kName, [port](auto& m, QWidget* parent) {
    return std::make_unique<FormContinueSolveView>(m, *port, parent);
  });
  Register<RelaxDialog>(ui, RelaxDialog::kName, [port](auto& m, QWidget* parent) {
    return std::make_unique<RelaxDialogView>(m, *port, nullptr, parent);
  });
  Register<ConvergeDialog>(ui, ConvergeDialog::kName, [port](auto& m, QWidget* parent) {
    return std::make_unique<ConvergeDialogView>(m, *port, nullptr, parent);
  });
  Register<SolverIntegrity>(ui, SolverIntegrity::kName, [](auto& m, QWidget* parent) {
    return std::make_unique<SolverIntegrityView>(m, parent);
  });
}

}  // namespace tarno
