// The one list of the dialog models that the program shows with
// UserInterface::ShowModal. The desktop program registers a view for each model of
// this list (app/dialog_views.cpp walks it, so that a model without a view does not
// compile), and the tests take the names from here. A new dialog model joins the
// list where it is declared beside the others.
#pragma once

#include <string>
#include <vector>

#include "app/shell/select_area.h"
#include "app/shell_models.h"
#include "calibration/stats_model.h"
#include "calibration/scenario_dialog.h"
#include "basemaps/browser.h"
#include "basemaps/convert_tools.h"
#include "calibration/pest_dialog.h"
#include "calibration/pest_weights.h"
#include "calibration/ucode_dialog.h"
#include "display/navigation.h"
#include "elements/barrier_dialog.h"
#include "elements/flux_inspect_dialog.h"
#include "elements/inhomogeneity_dialog.h"
#include "elements/lake_dialog.h"
#include "elements/ls_confirm_dialog.h"
#include "elements/linesink_dialog.h"
#include "elements/ls_confirm_dialog.h"
#include "elements/particle_dialog.h"
#include "elements/test_point_dialog.h"
#include "elements/text_label_dialog.h"
#include "elements/uniform_flow_dialog.h"
#include "elements/well_dialog.h"
#include "exchange/export_dialogs.h"
#include "exchange/vector_import.h"
#include "solver/command_file.h"
#include "solver/inspect.h"
#include "solver/result_views.h"
#include "solver/solve_dialogs.h"
#include "store/dialogs.h"

namespace tarno {

template <typename... Models>
struct DialogList {
  // Calls f.template operator()<Model>() for each model, in the order of the list.
  template <typename F>
  static void ForEach(F&& f) {
    (f.template operator()<Models>(), ...);
  }
  // The DialogName() of each model.
  static std::vector<std::string> Names() { return {Models::kName...}; }
};

using ShownDialogs =
    DialogList<NewDatabaseWizard, ProjectSettings, UnitChange,  // the project life cycle
               ModelSettingsDialog, GUIOptions, Welcome,        // the shell
               RestoreWindow, SelectArea, SelectAreaOptions,    // windows, area selection
               SolvePrompt, FormContinueSolve, IterationsDialog, RelaxDialog, ConvergeDialog,
               SolverIntegrity, InspectorDialog,                     // around a solve
               WellProperties, LinesinkString,                       // wells and streams
               NoFlowString, Inhomogeneity, Lake, UniformFlow,  // barriers, areas, uniform flow
               TestPointProperties, ParticleProperties, FluxInspectDialog,
               TextLabelProperties,  // observation and tracing objects, text labels
               LSConfirm,            // editing vertices
               Calibration,          // calibration statistics
               Scenarios,            // scenarios
               MapBrowser, BaseMapBrowserOptions, ViewShape, ViewGraphics,  // base maps
               ReprojectMapsDialog, MapTargetDialog,  // reprojection of maps
               PestDialog, UcodeDialog, TemplatePrompt, OptWeight,  // estimation files
               exchange::VectorExport, exchange::ExportShapefile,  // geometry exports
               exchange::VectorImport,                               // element exchange
               LSInfo, INInfo, Lakeinfo, ResultViewer>;              // result views

}  // namespace tarno
