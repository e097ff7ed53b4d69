// The built-in estimator on the benchmark model of build-bench-model.sh (1,000
// line-sink segments, 50 test points, 2 or 5 parameters put off by a factor of 3):
// wall time, model runs and iterations of a whole estimation on one worker and on
// more, and the speed-up of the parallel model runs over one worker.
//
//   bench/calibration/build-bench-model.sh build/bin /tmp/est 5
//   tarno-bench-calibration /tmp/est/bench5.trn [workers ...]
//
// The workers default to 1 and the number of cores. tarno1 is taken from the
// directory of this program (build/bin). The project is not changed (no import).
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <sstream>
#include <thread>
#include <vector>

#include "calibration/estimator.h"
#include "core/console_ui.h"
#include "solver/command_file.h"
#include "solver/model_settings.h"
#include "solver/process.h"
#include "solver/solve_controller.h"
#include "store/database.h"

namespace fs = std::filesystem;
using namespace tarno;

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: tarno-bench-calibration <project.trn> [workers ...]\n");
    return 2;
  }
  const fs::path project = argv[1];
  std::vector<int> workers;
  for (int i = 2; i < argc; ++i) workers.push_back(std::max(1, std::atoi(argv[i])));
  if (workers.empty())
    workers = {1, static_cast<int>(std::max(1u, std::thread::hardware_concurrency()))};

  std::ostringstream messages;
  ConsoleUserInterface ui(messages, Answer::OK);
  ui.SetModalHandler("Iterations",
                     [](DialogModel& m) { dynamic_cast<IterationsDialog&>(m).Result = 2; });
  ModelSettings settings;
  {
    Database db = Database::Open(project);
    settings.Load(db);
  }
  SolutionState state;
  BlockingWaiter waiter;
  double serial = 0;
  std::printf("%-8s %10s %6s %10s %10s %10s %9s\n", "workers", "wall (s)", "runs", "iterations",
              "phi", "s per run", "speed-up");
  for (int w : workers) {
    SolveContext ctx;
    ctx.projectPath = project;
    ctx.settings = &settings;
    ctx.state = &state;
    ctx.ui = &ui;
    ctx.waiter = &waiter;
    ctx.programDirectory = ProgramDirectory();
    ctx.programOutput = "/dev/null";
    ctx.solverErrors = "/dev/null";
    EstimatorOptions o;
    o.threads = w;
    const auto t0 = std::chrono::steady_clock::now();
    const EstimateReport rep = RunEstimation(ctx, o, false);
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    if (!rep.ok) {
      std::fprintf(stderr, "estimation failed: %s\n%s", rep.failure.c_str(),
                   messages.str().c_str());
      return 1;
    }
    if (serial == 0) serial = s;
    std::printf("%-8d %10.2f %6d %10d %10.3E %10.3f %9.2f\n", w, s, rep.result.runs,
                rep.result.iterations, rep.result.phi, s / rep.result.runs, serial / s);
    std::printf("         values:");
    for (double v : rep.result.values) std::printf(" %.8G", v);
    std::printf("\n");
    std::fflush(stdout);
  }
  return 0;
}
