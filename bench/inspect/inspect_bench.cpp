// The round trip of the Instant Inspector on a solved project: writing
// "_INSPECT.DAT", running tarno1 on it (load of the saved solution, one extract),
// reading "_INSPECT.XTR" and building the "Model Results" box; the same with the
// integrity check (six neighbours more); and one streamline ("_TRACE.DAT").
//
//   tarno-bench-inspect <project.trn> [x y] [repeats]
//
// The project must have been solved (tarnocmd solve); x and y are map coordinates,
// by default the model's origin (the centre of its elements). tarno1 is taken from
// the directory of this program (build/bin). Each figure is the best and the mean of
// `repeats` runs (default 20). The target of a click's round trip is under 0.3 s.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <sstream>
#include <string>

#include "core/console_ui.h"
#include "core/file_find.h"
#include "solver/inspect.h"
#include "solver/model_settings.h"
#include "solver/process.h"
#include "store/database.h"

namespace fs = std::filesystem;
using namespace tarno;

namespace {

struct Timing {
  double best = 1e300;
  double mean = 0;
};

Timing Time(int repeats, const std::function<bool()>& f) {
  Timing t;
  for (int i = 0; i < repeats; ++i) {
    const auto t0 = std::chrono::steady_clock::now();
    if (!f()) throw std::runtime_error("the run gave no result");
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    t.best = std::min(t.best, s);
    t.mean += s / repeats;
  }
  return t;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: tarno-bench-inspect <project.trn> [x y] [repeats]\n");
    return 2;
  }
  const std::string project = argv[1];
  const int repeats = argc > 4 ? std::max(1, std::atoi(argv[4])) : 20;
  std::ostringstream messages;
  ConsoleUserInterface ui(messages, Answer::OK);
  ui.SetModalHandler([](DialogModel&) {});
  try {
    ModelSettings settings;
    SolutionState state;
    double x = 0, y = 0;
    MapWindow window;
    {
      Database db = Database::Open(project);
      settings.Load(db);
      Statement p = db.Prepare("select TARNOBaseName, TARNOBasePath from Project");
      p.Step();
      const std::string base = p.GetText(0);
      const fs::path dir = p.GetText(1);
      if (FindFileNoCase(dir, base + ".SOL").empty()) {
        std::fprintf(stderr, "%s has no solution: run tarnocmd solve first\n", project.c_str());
        return 1;
      }
      Statement m = db.PrepareRaw(
          "select SOLVERX0, SOLVERY0, WINDOWX1, WINDOWX2, WINDOWY1, WINDOWY2 from Model");
      m.Step();
      x = argc > 3 ? std::atof(argv[2]) : m.GetDouble(0);
      y = argc > 3 ? std::atof(argv[3]) : m.GetDouble(1);
      window = MapWindow{
          std::min(m.GetDouble(2), m.GetDouble(3)), std::max(m.GetDouble(2), m.GetDouble(3)),
          std::max(m.GetDouble(4), m.GetDouble(5)), std::min(m.GetDouble(4), m.GetDouble(5))};
    }
    state.SolutionPresent = true;
    BlockingWaiter waiter;
    SolveContext ctx;
    ctx.projectPath = project;
    ctx.settings = &settings;
    ctx.state = &state;
    ctx.ui = &ui;
    ctx.waiter = &waiter;
    ctx.programDirectory = ProgramDirectory();
    ctx.window = window;
    ctx.programOutput = "/dev/null";
    ctx.solverErrors = "/dev/null";

    InspectorSettings inspector;
    const Timing plain =
        Time(repeats, [&] { return ModelInspectResults(ctx, inspector, x, y).ran; });
    inspector.IntegrityCheck = true;
    const Timing integrity =
        Time(repeats, [&] { return ModelInspectResults(ctx, inspector, x, y).ran; });
    inspector.InspectAtTop = false;
    inspector.Elevation = 0;
    const Timing oneRun =
        Time(repeats, [&] { return ModelInspectResults(ctx, inspector, x, y).ran; });
    const Timing trace = Time(std::max(1, repeats / 4), [&] {
      return ModelTraceOneStreamline(ctx, inspector, x, y).has_value();
    });

    std::printf("inspection round trip of %s at (%.2f, %.2f), %d runs\n", project.c_str(), x, y,
                repeats);
    std::printf("  Model Results                         best %8.4f s  mean %8.4f s\n", plain.best,
                plain.mean);
    std::printf("  with the integrity check (two runs)   best %8.4f s  mean %8.4f s\n",
                integrity.best, integrity.mean);
    std::printf("  integrity check at an elevation       best %8.4f s  mean %8.4f s\n", oneRun.best,
                oneRun.mean);
    std::printf("  one streamline                        best %8.4f s  mean %8.4f s\n", trace.best,
                trace.mean);
    std::printf("  target: under 0.3 s\n");
  } catch (const std::exception& e) {
    std::fprintf(stderr, "tarno-bench-inspect: %s\n%s", e.what(), messages.str().c_str());
    return 1;
  }
  return 0;
}
