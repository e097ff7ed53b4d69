// tarnocmd estimate: the built-in estimator on a project's scenario parameters.
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "calibration/estimator.h"
#include "core/console_ui.h"
#include "solver/process.h"
#include "solver/solve_controller.h"
#include "store/database.h"
#include "store/project_file.h"
#include "tarnocmd_commands.h"

namespace tarno::cmd {

namespace fs = std::filesystem;

int Estimate(const EstimateCommandOptions& options, std::ostream& out, std::ostream& err) {
  const ProjectFileProbe probe = ProbeProjectFile(options.path);
  if (probe.state != ProjectFileState::Project) {
    err << ProbeTitle(probe) << ": " << ProbeMessage(options.path, probe) << "\n";
    return 1;
  }
  ConsoleUserInterface ui(err, Answer::OK);
  BatchRun run;
  if (!OpenBatchRun(options.path, ui, run, err, ProjectWindow)) return 1;
  SolveContext& ctx = run.ctx;
  ctx.programOutput = "/dev/null";
  ctx.solverErrors = "/dev/null";
  ui.SetModalHandler("Iterations", [](DialogModel& m) {
    dynamic_cast<IterationsDialog&>(m).Result = 2;  // keep the project's iterations
  });

  EstimatorOptions eo;
  eo.threads = options.threads;
  eo.maxIterations = options.maxIterations;
  eo.onIteration = [&](const EstimatorIteration& it) {
    char buf[96];
    std::snprintf(buf, sizeof buf, "Iteration %d: phi %.6E, runs %d,", it.number, it.phi, it.runs);
    out << buf;
    for (double v : it.values) {
      std::snprintf(buf, sizeof buf, " %.8G", v);
      out << buf;
    }
    out << std::endl;
  };
  EstimateReport rep;
  try {
    rep = RunEstimation(ctx, eo, !options.noImport, options.useExistingFiles);
  } catch (const std::exception& e) {
    err << "tarnocmd: the estimation failed: " << e.what() << "\n";
    return 1;
  }
  if (!rep.ok) {
    err << "tarnocmd: no estimate: " << rep.failure << "\n";
    return 1;
  }
  out << "Stopped: " << rep.result.stopReason << "\n";
  out << "Iterations: " << rep.result.iterations << "\n";
  out << "Model runs: " << rep.result.runs << "\n";
  out << "Parameter file: " << rep.parFile.string() << "\n";
  out << "Record: " << rep.recordFile.string() << "\n";
  out << (options.noImport ? "Not imported (--no-import)\n"
          : rep.imported   ? "Imported into the project\n"
                           : "Not imported\n");
  return options.noImport || rep.imported ? 0 : 1;
}

}  // namespace tarno::cmd
