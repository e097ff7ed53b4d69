// The registry of the dialog views: one function per dialog name that builds the
// view over the model, runs it modally and leaves the result in the model.
#include "app/dialog_views.h"

#include "app/dialog_registry.h"
#include "app/shell_models.h"
#include "app/views/barrier_view.h"
#include "app/views/export_views.h"
#include "app/views/basemap_views.h"
#include "app/views/flux_inspect_view.h"
#include "app/views/gui_options_view.h"
#include "app/views/inhomogeneity_view.h"
#include "app/views/inspector_view.h"
#include "app/views/lake_view.h"
#include "app/views/linesink_view.h"
#include "app/views/ls_confirm_view.h"
#include "app/views/model_settings_view.h"
#include "app/views/new_database_wizard_view.h"
#include "app/views/particle_view.h"
#include "app/views/pest_view.h"
#include "app/views/project_settings_view.h"
#include "app/views/reproject_view.h"
#include "app/views/restore_window_view.h"
#include "app/views/result_views.h"
#include "app/views/scenario_view.h"
#include "app/views/solve_views.h"
#include "app/views/stats_view.h"
#include "app/views/select_area_view.h"
#include "app/views/test_point_view.h"
#include "app/views/text_label_view.h"
#include "app/views/uniform_flow_view.h"
#include "app/views/vector_import_view.h"
#include "app/views/unit_change_view.h"
#include "app/views/welcome_view.h"
#include "app/views/well_view.h"
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

// What the views need beyond their model.
struct ViewContext {
  UserInterface* port;
  std::function<std::string()> projectFile;
};

// One view per dialog model of the registry; a model of the list without its
// overload here does not compile.
auto MakeView(NewDatabaseWizard& m, const ViewContext&, QWidget* parent) {
  return std::make_unique<NewDatabaseWizardView>(m, parent);
}
auto MakeView(ProjectSettings& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<ProjectSettingsView>(m, *c.port, parent);
}
auto MakeView(UnitChange& m, const ViewContext&, QWidget* parent) {
  return std::make_unique<UnitChangeView>(m, parent);
}
auto MakeView(ModelSettingsDialog& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<ModelSettingsView>(m, *c.port, parent);
}
auto MakeView(GUIOptions& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<GUIOptionsView>(m, *c.port, parent);
}
auto MakeView(Welcome& m, const ViewContext&, QWidget* parent) {
  return std::make_unique<WelcomeView>(m, parent);
}
auto MakeView(RestoreWindow& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<RestoreWindowView>(m, *c.port, c.projectFile, parent);
}
auto MakeView(SelectArea& m, const ViewContext&, QWidget* parent) {
  return std::make_unique<SelectAreaView>(m, parent);
}
auto MakeView(SelectAreaOptions& m, const ViewContext&, QWidget* parent) {
  return std::make_unique<SelectAreaOptionsView>(m, parent);
}
auto MakeView(SolvePrompt& m, const ViewContext&, QWidget* parent) {
  return std::make_unique<SolvePromptView>(m, parent);
}
auto MakeView(FormContinueSolve& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<FormContinueSolveView>(m, *c.port, parent);
}
auto MakeView(IterationsDialog& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<IterationsDialogView>(m, *c.port, parent);
}
auto MakeView(RelaxDialog& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<RelaxDialogView>(m, *c.port, nullptr, parent);
}
auto MakeView(ConvergeDialog& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<ConvergeDialogView>(m, *c.port, nullptr, parent);
}
auto MakeView(SolverIntegrity& m, const ViewContext&, QWidget* parent) {
  return std::make_unique<SolverIntegrityView>(m, parent);
}
auto MakeView(InspectorDialog& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<InspectorView>(m, *c.port, parent);
}
auto MakeView(WellProperties& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<WellPropertiesView>(m, *c.port, c.projectFile, parent);
}
auto MakeView(LinesinkString& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<LinesinkStringView>(m, *c.port, c.projectFile, parent);
}
auto MakeView(NoFlowString& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<NoFlowStringView>(m, *c.port, c.projectFile, parent);
}
auto MakeView(Inhomogeneity& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<InhomogeneityView>(m, *c.port, c.projectFile, parent);
}
auto MakeView(Lake& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<LakeView>(m, *c.port, c.projectFile, parent);
}
auto MakeView(UniformFlow& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<UniformFlowView>(m, *c.port, c.projectFile, parent);
}
auto MakeView(TestPointProperties& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<TestPointView>(m, *c.port, c.projectFile, parent);
}
auto MakeView(ParticleProperties& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<ParticleView>(m, *c.port, c.projectFile, parent);
}
auto MakeView(FluxInspectDialog& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<FluxInspectView>(m, *c.port, c.projectFile, parent);
}
auto MakeView(TextLabelProperties& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<TextLabelView>(m, *c.port, c.projectFile, parent);
}
auto MakeView(LSConfirm& m, const ViewContext&, QWidget* parent) {
  return std::make_unique<LSConfirmView>(m, parent);
}
auto MakeView(Calibration& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<StatsView>(m, *c.port, parent);
}
auto MakeView(Scenarios& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<ScenariosView>(m, *c.port, parent);
}

auto MakeView(MapBrowser& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<MapBrowserView>(m, *c.port, parent);
}
auto MakeView(BaseMapBrowserOptions& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<BaseMapBrowserOptionsView>(m, *c.port, parent);
}
auto MakeView(ViewShape& m, const ViewContext&, QWidget* parent) {
  return std::make_unique<ViewShapeView>(m, parent);
}
auto MakeView(ViewGraphics& m, const ViewContext&, QWidget* parent) {
  return std::make_unique<ViewGraphicsView>(m, parent);
}
auto MakeView(ReprojectMapsDialog& m, const ViewContext&, QWidget* parent) {
  return std::make_unique<ReprojectMapsView>(m, parent);
}
auto MakeView(MapTargetDialog& m, const ViewContext&, QWidget* parent) {
  return std::make_unique<MapTargetView>(m, parent);
}
auto MakeView(PestDialog& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<EstimationView>(m, *c.port, parent);
}
auto MakeView(UcodeDialog& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<EstimationView>(m, *c.port, parent);
}
auto MakeView(TemplatePrompt& m, const ViewContext&, QWidget* parent) {
  return std::make_unique<TemplatePromptView>(m, parent);
}
auto MakeView(OptWeight& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<OptWeightView>(m, *c.port, parent);
}
auto MakeView(exchange::VectorExport& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<VectorExportView>(m, *c.port, parent);
}
auto MakeView(exchange::ExportShapefile& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<ExportShapefileView>(m, *c.port, parent);
}
auto MakeView(exchange::VectorImport& m, const ViewContext& c, QWidget* parent) {
  return std::make_unique<VectorImportView>(m, *c.port, parent);
}
auto MakeView(LSInfo& m, const ViewContext&, QWidget* parent) {
  return std::make_unique<ResultInfoView>(m, parent);
}
auto MakeView(INInfo& m, const ViewContext&, QWidget* parent) {
  return std::make_unique<ResultInfoView>(m, parent);
}
auto MakeView(Lakeinfo& m, const ViewContext&, QWidget* parent) {
  return std::make_unique<ResultInfoView>(m, parent);
}
// The viewer copies to the desktop's clipboard.
class ViewerWithClipboard : public ResultViewerView {
 public:
  ViewerWithClipboard(ResultViewer& m, QWidget* parent)
      : ResultViewerView(m, clipboard_, parent) {}

 private:
  QtClipboard clipboard_;
};
auto MakeView(ResultViewer& m, const ViewContext&, QWidget* parent) {
  return std::make_unique<ViewerWithClipboard>(m, parent);
}

}  // namespace

void RegisterDialogViews(QtUserInterface& ui) { RegisterDialogViews(ui, {}); }

void RegisterDialogViews(QtUserInterface& ui, std::function<std::string()> projectFile) {
  const ViewContext context{&ui, std::move(projectFile)};
  ShownDialogs::ForEach([&]<typename Model>() {
    Register<Model>(ui, Model::kName, [context](Model& m, QWidget* parent) {
      return MakeView(m, context, parent);
    });
  });
}

}  // namespace tarno
