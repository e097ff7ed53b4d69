#pragma once
// The run of a command file, internal to the engine: the Runner carries out the steps
// the reader found, in order. engine/run.cpp holds the run itself (the logs, the order of
// the steps, the fatal end); the step handlers and file writers have files of their own:
//   run_model.cpp    title, base name, origin, aquifer, window and element menus: the model
//   run_solve.cpp    solve (lakes included), time, save and load
//   run_leakage.cpp  the leakage menu and the leakage update after each solve
//   run_output.cpp   the writers of the output report (.OUT), the extract file (.XTR), the
//                    grids (.GRD, .KGR) and the pathline file (.PTH)

#include "engine/run.h"

#include "engine/extract.h"
#include "engine/files.h"
#include "engine/grid.h"
#include "engine/lake.h"
#include "engine/lake_edge.h"
#include "engine/leakage.h"
#include "engine/logs.h"
#include "engine/report.h"
#include "engine/saltwater.h"
#include "engine/solution.h"
#include "engine/trace.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <map>
#include <new>
#include <optional>
#include <sstream>
#include <system_error>

namespace tarno::engine::running {

namespace fs = std::filesystem;

// A grid without " horizontalpoints" gets this many points across.
constexpr int kDefaultGridPoints = 50;
// The most points of one grid (about 80 MB of values).
constexpr double kMaxGridPoints = 1.0e7;

// The most particles traced by one trace block.
constexpr size_t kMaxParticles = 100000;

// Ends the run: the lines go to TARNO.OPS.
struct RunFatal {
  int line = 0;
  std::vector<std::string> lines;
};

inline std::string number(double v) {
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.6G", v);
  return buf;
}

inline std::string stringLabelOf(const std::string& segmentLabel) {
  size_t us = segmentLabel.rfind('_');
  return (us == std::string::npos || us == 0) ? segmentLabel : segmentLabel.substr(0, us);
}

inline std::string clockText() {
  std::time_t t = std::time(nullptr);
  char buf[64];
  std::tm tmv{};
  localtime_r(&t, &tmv);
  std::strftime(buf, sizeof buf, "%Y-%m-%d %H:%M:%S", &tmv);
  return buf;
}

inline void removeStaleFatalReport(const fs::path& workDir) {
  std::error_code ec;
  // Only one spelling can be found at a time; a few rounds remove them all.
  for (int i = 0; i < 8; ++i) {
    auto p = findFileNoCase(workDir, kFatalReportName);
    if (!p || !fs::remove(*p, ec)) break;
  }
}

// The extract's source: the solution with its lakes and the run's last leakage check.
class RunSource : public LakeSolutionSource {
 public:
  RunSource(const Solution& s, const std::optional<LeakageCheckResult>& check) : LakeSolutionSource(s), check_(check) {}
  std::optional<std::vector<double>> leakageCheck() const override {
    if (!check_) return std::nullopt;
    if (!check_->integratedKnown) return std::vector<double>{check_->total};
    return std::vector<double>{check_->total, check_->integrated, check_->error()};
  }

 private:
  const std::optional<LeakageCheckResult>& check_;
};

class Runner {
 public:
  Runner(const CommandFile& file, fs::path commandFile, fs::path workDir, std::string sizeArg)
      : file_(file), commandFile_(std::move(commandFile)), workDir_(std::move(workDir)), sizeArg_(std::move(sizeArg)),
        logs_(workDir_) {}

  int run();

 private:
  const CommandFile& file_;
  fs::path commandFile_, workDir_;
  std::string sizeArg_;
  RunLogs logs_;
  Model model_;
  std::optional<Solution> solution_;
  bool modelChanged_ = false;
  int currentLine_ = 0;
  std::string baseName_;
  std::string started_;
  std::optional<SolveReport> lastSolve_;
  std::chrono::steady_clock::time_point start_;

  // Warnings of the engine go to the error log under the line of the step that
  // caused them. Set once per solution: setting the sink replays earlier warnings.
  void attachWarnings();
  int fatal(const RunFatal& f);
  std::string where(int line) const;
  int runSteps();

  // ---- steps ----------------------------------------------------------------

  void apply(int, const LogCommand&) {}
  void apply(int, const PictureCommand&) {}
  void apply(int, const StopCommand&) {}

  // ---- leakage to the model below (engine/leakage.h) -------------------------------

  std::optional<std::array<double, 5>> leakSolve_;  // include, average, update, subgrid, relax
  int leakLine_ = 0;
  bool leakUpdatePending_ = false;
  std::optional<LeakageCheckResult> leakCheck_;
  std::string leakBase() const { return baseName_.empty() ? commandFile_.stem().string() : baseName_; }

  void leakProblems(int line, const std::vector<LeakageFileProblem>& ps);

  // The grid of <base>.del, placed at the leakage origin (or the corner in the file).
  std::optional<LeakageGrid> loadLeakageGrid(int line);
  bool loadCellFile(int line, const LeakageGrid& g, const std::string& ext, std::vector<double>& values);

  // Resistances and heads below (and the sub-grid when its switch is on).
  std::optional<LeakageExchange> loadExchange(int line, const LeakageGrid& g);
  void apply(int line, const LeakageInput& l);

  // After a solve: the leakage from the heads, relaxed, written for the model below.
  void updateLeakage();
  void checkLeakageAt(int line, const std::array<double, 5>& c);
  void apply(int, const TitleCommand& c);
  void apply(int, const BaseNameCommand& c);
  void apply(int, const OriginCommand& c);
  void apply(int line, const AquiferInput& a);
  void apply(int, const WindowInput& w);
  // The elements of an element menu: each checked by the check of its kind, those kept
  // added to the model.
  void apply(int, const ModelElements& e);
  bool check(const Well& w);
  bool check(PartialWell& w);
  bool check(const TheisWell& w);
  bool check(Lake& l);
  bool check(LineSinkString& ls);

  // The rating table of a stream that flows out of a lake (read here; the link to the
  // lake is made by the solve). Without one nothing flows out through the outlet.
  void readOutletRating(LineSinkString& ls);

  // A lake's stage table, looked up in the working folder without regard to case. The
  // front end writes "0" or nothing for a lake without one. A lake whose table cannot be
  // read is solved without it (its water surface is its polygon).
  void readLakeTable(Lake& l);
  void apply(int line, const SolveCommand& c);

  // A model with lakes is solved afresh by each solve: the lakes' outer iteration
  // rebuilds the solution with each new exchange through the lake bottoms.
  size_t lakeCount() const;
  void solveLakes(int line, const SolveCommand& c);

  // <name>.OUT, the report of the run for a person to read, after a run that solved.
  // A run that only loads a solution (a regrid, an inspection) leaves the report of
  // the solve in place.
  void writeOutputReport();
  void apply(int, const TimeCommand& c);
  void apply(int line, const SaveCommand& c);
  void apply(int line, const LoadCommand& c);
  void apply(int line, const ExtractInput& x);

  // ---- grids ------------------------------------------------------------------

  // Grids kept by " save" in this run, by name (any case); a kept grid is also
  // written to <name>.KGR, so that a later run's " minusgrid" finds it.
  std::map<std::string, Grid> keptGrids_;
  static std::string lowerName(const std::string& s);
  static std::string keptGridFile(const std::string& name) { return name + ".KGR"; }

  bool writeText(const fs::path& p, const std::string& text);
  std::optional<Grid> computeGridFor(const GridAction& a);
  std::optional<Grid> findKeptGrid(const std::string& name, int line);
  void apply(int line, const GridInput& g);

  // ---- pathlines ----------------------------------------------------------------

  // The box that stands in for the window when none was given: the elements and
  // the particles, with a margin.
  std::array<double, 4> traceBox(const std::vector<Particle>& particles) const;
  void apply(int line, const TraceInput& tr);
};

}  // namespace tarno::engine::running
