// tarnocmd inspect: the Instant Inspector without a window. The "Model Results"
// box goes to standard output; every other message to standard error. tarnocmd info
// with a point: the result dialog of the element there, as a right click shows it.
#include <cstdlib>
#include <filesystem>

#include "core/console_ui.h"
#include "core/file_find.h"
#include "core/format.h"
#include "elements/element_store.h"
#include "elements/vertex_edit.h"
#include "solver/inspect.h"
#include "solver/model_settings.h"
#include "solver/process.h"
#include "solver/result_views.h"
#include "store/database.h"
#include "store/project_file.h"
#include "tarnocmd_commands.h"

namespace tarno::cmd {

namespace fs = std::filesystem;

namespace {

// The console port, with the box of the results on standard output.
class InspectPort : public ConsoleUserInterface {
 public:
  InspectPort(std::ostream& out, std::ostream& err)
      : ConsoleUserInterface(err, Answer::OK), out_(out) {}
  Answer MessageBox(const std::string& title, const std::vector<std::string>& lines,
                    Buttons buttons, Icon icon) override {
    if (title != "Model Results")
      return ConsoleUserInterface::MessageBox(title, lines, buttons, icon);
    for (const auto& l : lines) out_ << l << "\n";
    return Answer::OK;
  }

 private:
  std::ostream& out_;
};

}  // namespace

int Inspect(const InspectCommandOptions& options, std::ostream& out, std::ostream& err) {
  const ProjectFileProbe probe = ProbeProjectFile(options.path);
  if (probe.state != ProjectFileState::Project) {
    err << ProbeTitle(probe) << ": " << ProbeMessage(options.path, probe) << "\n";
    return 1;
  }
  InspectPort ui(out, err);
  BatchRun run;
  if (!OpenBatchRun(options.path, ui, run, err, nullptr)) return 1;
  SolveContext& ctx = run.ctx;
  run.project.state.SolutionTime = options.time;
  ctx.programOutput = "/dev/null";
  ctx.solverErrors = "/dev/null";

  InspectorSettings inspector;
  if (options.elevation) {
    inspector.InspectAtTop = false;
    inspector.Elevation = *options.elevation;
  }
  if (options.integrityStep) {
    inspector.IntegrityCheck = true;
    inspector.StepSize = *options.integrityStep;
  }
  ui.SetModalHandler(SolverIntegrity::kName, [&](DialogModel& m) {
    const auto& d = dynamic_cast<SolverIntegrity&>(m);
    out << SolverIntegrity::kTitle << "\n";
    out << "            Analytic     Numerical\n";
    const std::pair<const char*, std::pair<double, double>> rows[] = {
        {"Vx        ", {d.VxAnyl, d.VxNum}},
        {"Vy        ", {d.VyAnyl, d.VyNum}},
        {"Vz        ", {d.VzAnyl, d.VzNum}},
        {"div q     ", {d.divqAnyl, d.divqNum}},
        {"div Q     ", {d.divCapQAnyl, d.divCapQNum}}};
    for (const auto& [caption, v] : rows)
      out << caption << FormatNumber(v.first, " 0.0000E+00") << "  "
          << FormatNumber(v.second, " 0.0000E+00") << "\n";
  });
  const InspectReport r = ModelInspectResults(ctx, inspector, options.x, options.y);
  if (!r.ran) {
    err << "tarnocmd: nothing was inspected\n";
    return 1;
  }
  return 0;
}

int ResultInfo(const std::string& path, double x, double y, std::ostream& out, std::ostream& err) {
  const ProjectFileProbe probe = ProbeProjectFile(path);
  if (probe.state != ProjectFileState::Project) {
    err << ProbeTitle(probe) << ": " << ProbeMessage(path, probe) << "\n";
    return 1;
  }
  ConsoleUserInterface ui(err, Answer::OK);
  auto print = [&](DialogModel& m) {
    const auto& d = dynamic_cast<tarno::ResultInfo&>(m);
    out << d.Title << ": " << d.Label << "\n";
    for (const InfoLine& l : d.Lines) out << l.caption << ": " << l.text << "\n";
  };
  for (const char* name : {LSInfo::kName, INInfo::kName, Lakeinfo::kName})
    ui.SetModalHandler(name, print);
  try {
    Database db = Database::Open(path);
    // The search radius of the map as it was last shown.
    const MapWindow w = ProjectWindow(db);
    VertexSearch search;
    search.SetWindow(w.Right - w.Left, w.Top - w.Bottom);
    const FoundVertex found = FindVertex(db, search, x, y, false);
    std::optional<ElementKind> kind;
    if (found.Found() && found.vid >= 0 && found.vertex.PID > 0)
      kind = OwnerOfString(db, found.vertex.PID);
    if (!kind) {
      err << "tarnocmd: no line-sink, inhomogeneity or lake vertex near " << GeneralNumber(x) << " "
          << GeneralNumber(y) << "\n";
      return 1;
    }
    const InfoShown shown = ShowResultInfo(db, ui, *kind, found.vertex);
    if (shown == InfoShown::Nothing)
      err << "tarnocmd: the element near the point has no result dialog\n";
    return shown == InfoShown::LSInfo || shown == InfoShown::INInfo || shown == InfoShown::Lakeinfo
               ? 0
               : 1;
  } catch (const std::exception& e) {
    err << "tarnocmd: cannot read " << path << ": " << e.what() << "\n";
    return 1;
  }
}

}  // namespace tarno::cmd
