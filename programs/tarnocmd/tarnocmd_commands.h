// The commands of tarnocmd, callable from main and usable by other batch tools.
#pragma once

#include <filesystem>
#include <optional>
#include <ostream>
#include <string>

#include "solver/command_file.h"
#include "solver/model_settings.h"
#include "solver/process.h"
#include "solver/solve_controller.h"

namespace tarno {
class UserInterface;
}

namespace tarno::cmd {

// How the questions of a project operation are answered.
enum class Answers {
  Defaults,  // each question by its documented default
  Yes,       // every question Yes (or OK): also overwrites an existing file
  No,        // every question No (or Cancel)
};

struct NewOptions {
  std::string path;
  std::optional<std::string> description;  // default: the wizard's own
  bool basemapMeters = true;
  bool computeMeters = true;
  std::optional<std::string> baseName;     // default: from the date and time
  Answers answers = Answers::Defaults;
};

// Creates a project through the life cycle. Returns the exit status.
int New(const NewOptions& options, std::ostream& out, std::ostream& err);

// Prints what a project holds. Returns the exit status.
int Info(const std::string& path, std::ostream& out, std::ostream& err);

// tarnocmd settings: the project settings dialog without a window.
struct SettingsOptions {
  std::string path;
  std::optional<std::string> description;  // nothing: kept
  std::optional<std::string> baseName;     // nothing: kept
  std::optional<std::string> basePath;     // the folder of the solver files; nothing: kept
  Answers answers = Answers::Defaults;     // "Create Folder?": No unless Yes
  bool Changes() const { return description || baseName || basePath; }
};

// Without a change: prints the settings (description, base name, solver folder,
// units) and changes nothing. With one: fills the settings dialog of the project
// with the given values and confirms it, so that the dialog's checks and messages
// apply; a refused value leaves the project as it was (exit status 1), an accepted
// one is written and the new settings are printed.
int Settings(const SettingsOptions& options, std::ostream& out, std::ostream& err);

// tarnocmd solve: the whole solve cycle without a window.
struct SolveCommandOptions {
  std::string path;
  bool regrid = false;                   // --regrid: no new solution, only grid and traces
  std::string continueIterations;        // --continue N: N more iterations ("" none)
  Answers answers = Answers::Defaults;   // the "Valid Solution Present" question: Yes by default
};

// Solves the project; prints what the run did. Returns 0 after a completed run, 1
// after a fatal, failed or cancelled one.
int Solve(const SolveCommandOptions& options, std::ostream& out, std::ostream& err);

// tarnocmd inspect: the Instant Inspector at a point of the map.
struct InspectCommandOptions {
  std::string path;
  double x = 0, y = 0;                   // map units
  std::optional<double> elevation;       // --elevation Z; nothing: the top of the saturated zone
  std::optional<double> integrityStep;   // --integrity STEP: the integrity check with this step
  double time = 0;                       // --time T: the time of evaluation
};

// Prints the lines of the "Model Results" box (and with --integrity the pairs of the
// integrity check) for the present solution. Returns 0 after an inspection, 1 when
// none was made (no solution, a fatal run, a bad record).
int Inspect(const InspectCommandOptions& options, std::ostream& out, std::ostream& err);

// tarnocmd info <path> <x> <y>: the right click on the map in the select state with a
// solution: the result dialog (LSInfo, INInfo or Lakeinfo) of the element whose
// vertex lies nearest the map point (x, y), within the search radius of the stored
// map window, printed as its title and one "caption: value" line per value. No
// vertex near, an element of another kind, or no results: a message and status 1.
int ResultInfo(const std::string& path, double x, double y, std::ostream& out, std::ostream& err);

// Prints the eight residual statistics of each kind of observation (piezometers,
// gages, lake stages) from TPResults; a kind with fewer than two observations
// says so instead.
int Stats(const std::string& path, std::ostream& out, std::ostream& err);

// Prints a result table as CSV: the field names, then one line per row.
int Results(const std::string& path, const std::string& table, std::ostream& out,
            std::ostream& err);

// tarnocmd estimate: the built-in estimator.
struct EstimateCommandOptions {
  std::string path;
  bool noImport = false;          // --no-import: the .par is written, the project kept
  bool useExistingFiles = false;  // --use-files: the .pst, .tpl, .ins as they stand
  int threads = 0;                // --threads N; 0: all cores
  int maxIterations = 30;         // --max-iterations N
};

// Estimates the project's scenario parameters; prints a line per iteration. Returns
// 0 after an estimate (imported unless --no-import), 1 otherwise.
int Estimate(const EstimateCommandOptions& options, std::ostream& out, std::ostream& err);

std::string UsageText();

// A project as the batch commands that run the solver see it: its model settings,
// the folder and base name of its solver files, and the state of its solution as
// the files of the last run left it.
struct BatchProject {
  ModelSettings settings;
  SolutionState state;
  std::filesystem::path dir;
  std::string base;
};
// Reads it from the open project file; throws the store's errors.
void LoadBatchProject(Database& db, BatchProject& project);

// The folder of tarno1 and contour: $TARNO_PROGRAM_DIR where it is set, else the
// folder of this program.
std::filesystem::path BatchProgramDirectory();

// A project made ready for a run of the solver: its settings and state, a waiter that
// blocks, and the solve context that points at them (so a BatchRun stays where it is
// made). OpenBatchRun reads the project and fills the context: the project path, the
// port, the program folder and, where `window` is given, the map window it reads.
// Says why on `err` and answers false when the project cannot be read.
struct BatchRun {
  BatchProject project;
  BlockingWaiter waiter;
  SolveContext ctx;
};
bool OpenBatchRun(const std::string& path, UserInterface& ui, BatchRun& run, std::ostream& err,
                  MapWindow (*window)(Database&));

// tarnocmd pest: writes the PEST files of the project (<base>.tpl, .ins, .pst,
// T-PEST.bat, T-PEST.sh) and prints their paths. 1 without scenarios or on an error.
int Pest(const std::string& path, std::ostream& out, std::ostream& err);

// tarnocmd import-par: imports the optimised values of a PEST parameter file, writes
// PEST2TARNO.log and prints its lines. 1 when nothing was imported (a bad file is
// told line by line, and then nothing is imported).
int ImportPar(const std::string& path, const std::string& parFile, std::ostream& out,
              std::ostream& err);

// What the commands on an existing project share: a usage error (told on `err`, exit
// status 2); whether `path` is a project of this version (else the reason on `err`);
// and the removal of the solution of a model that a command changed, as the desktop
// program removes it after an edit (the state of the solution is that of the solver
// files, as `tarnocmd solve` reads it).
int BadUsage(std::ostream& err, const std::string& message);
// The map window stored in the Model row, its corners sorted (zero when the row is missing).
MapWindow ProjectWindow(Database& db);
bool CheckProject(const std::string& path, std::ostream& err);
void RemoveSolution(const std::string& path, UserInterface& ui, std::ostream& out);

}  // namespace tarno::cmd
