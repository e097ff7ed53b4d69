// The solve controller: the one road from "Solve" to results in the tables.
//
// ModelRunTARNO decides between a new, a continued and a regridded solve, deletes
// the stale files, has the command file written, starts the solver from the
// program directory in the project's directory, waits for it, reports a fatal run
// (TARNO.OPS) and otherwise hands on to ModelProcessSolverResults, which runs the
// contourer on a new grid, loads the extract file and shows the logs.
//
// The state of a solution (SolutionState, solver/command_file.h) moves so:
//   SolutionPresent      set at the end of ModelProcessSolverResults; cleared by a
//                        new solve's start, InvalidateSolution and a fatal run.
//   ContoursPresent,     set by the command file writer when it writes the grid or
//   PathsPresent         trace block; cleared by a new solve's start, a continue,
//                        InvalidateSolution and a fatal run.
//   ContourLinesPresent  set when the contourer has run; cleared as the two above,
//                        and after a rewritten regrid.
//
// Everything window-bound (menus, redraw, the search window) goes through
// SolveHooks; every question and message through the UserInterface port; the wait
// for a program through a ProcessWaiter.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/ui_port.h"
#include "elements/well.h"
#include "solver/command_file.h"
#include "solver/results_loader.h"

namespace tarno {

class Database;
class ModelSettings;
class ProcessWaiter;

// The title of the message that a solve cannot write its files.
inline constexpr const char* kSolverFilesTitle = "Cannot Write Solver Files";

// The title of the message that the contour program failed.
inline constexpr const char* kContourFailedTitle = "Contouring Failed";

// The program names of this platform.
inline constexpr const char* kSolverProgram = "tarno1";
inline constexpr const char* kContourProgram = "contour";

// The main window's side of a solve. Every hook may be left empty.
struct SolveHooks {
  // Enables or disables a menu entry or layer entry ("RESULTS_TABLE",
  // "MODELRUNFILES", "CALIBRATION_STATS", "SolverIntegrityCheck", "MODEL_CMDS",
  // "chkContour", "chkComputePaths", "TestPoints").
  std::function<void(const std::string& entry, bool enabled)> enableMenu;
  // ZoomActions: redraws the map.
  std::function<void()> redraw;
  // Closes the Search window if it is open.
  std::function<void()> closeSearch;
  // Loads the leakage of the MODFLOW grid from <base>.vlk after a solve that
  // included it. The reader belongs to the MODFLOW coupling, which is not built
  // yet; until it is, this hook stays empty and the leakage is not loaded.
  std::function<void(const std::filesystem::path& vlkFile)> loadLeakage;
};

// Everything a solve reads besides its options.
struct SolveContext {
  std::filesystem::path projectPath;  // the .trn file
  ModelSettings* settings = nullptr;
  SolutionState* state = nullptr;
  UserInterface* ui = nullptr;
  ProcessWaiter* waiter = nullptr;
  // Where tarno1 and contour stand; ProgramDirectory() in the programs, a test
  // folder in the tests.
  std::filesystem::path programDirectory;
  MapWindow window;
  ModflowLink modflow;
  int leakageCells = 0;  // ModflowTarno.NCells
  std::optional<ModelExtents> basemapExtents;
  SolveHooks hooks;
  // Where the programs' standard output goes; empty: inherited.
  std::filesystem::path programOutput;
  // Where the solver's standard error goes; empty: inherited. The batch front end
  // discards it: a fatal run reaches the user through TARNO.OPS, once.
  std::filesystem::path solverErrors;
  // The last estimated number of equations (ModelGetSize).
  int Size = 0;
};

// The arguments of ModelRunTARNO. ShowLogs is cleared by a No in SolvePrompt.
struct SolveOptions {
  bool ForceRegrid = false;
  bool ContinueSolve = false;
  bool Prompt = true;
  bool ShowResults = true;
  bool ShowLogs = true;
  bool Rewrite = false;
};

enum class SolveOutcome {
  Cancelled,  // the user stopped at a question; nothing changed
  Refused,    // a setting keeps the solve from starting (the solver files cannot be
              // written, the contour grid is out of range); a message said which;
              // nothing changed
  Fatal,      // the solver left TARNO.OPS, or was ended by a signal
  Completed,  // the results were processed
  Failed,     // an error ended the operation (reported by TARNOErrorAnalysis)
};

// What a run did, for the batch front end's report and for tests.
struct SolveReport {
  SolveOutcome outcome = SolveOutcome::Cancelled;
  bool newSolution = false;
  int writeType = 0;
  int size = 0;
  std::vector<std::string> deletedFiles;  // in the order deleted
  int solverStatus = -1;                  // the solver's exit status
  std::vector<std::string> fatalLines;    // the lines of TARNO.OPS
  bool contourRun = false;
  int contourStatus = -1;
  LoadSummary load;
  bool resultsUnusable = false;  // the extract file was empty, not one, or another's
  std::filesystem::path errorLog;    // of this run, empty when absent
  std::filesystem::path messageLog;  // of this run, empty when absent
  bool errorLogHasReport = false;
  std::string failure;  // the error's description when Failed
};

// The whole solve. Errors are reported with TARNOErrorAnalysis and end in Failed.
SolveReport ModelRunTARNO(SolveContext& ctx, SolveOptions& options);

// After a successful solver run. Throws on errors (the caller reports them).
void ModelProcessSolverResults(SolveContext& ctx, bool showResults, bool showLogs,
                               SolveReport& report);

// WellCounts and CountWells (the wells by kind) are the wells' unit's: elements/well.h.

// The estimated number of equations, at least 61. With `show` the "Model Size" box
// gives the counts and the solver's limits.
int ModelGetSize(Database& db, bool show, UserInterface& ui, int leakageCells = 0,
                 bool gridPresent = false);

// Asks (with `ask`) and removes the present solution: its files, the flags, the
// result rows. True when the solution was removed.
bool InvalidateSolution(SolveContext& ctx, bool ask, bool redraw);

// After a change of the contour settings: asks whether to run the contourer again
// on the present grid with the Model row's levels.
void InvalidateContours(SolveContext& ctx);

// "Executable Missing" when `name` does not stand in the program directory. True
// when it does.
bool noexecutable(UserInterface& ui, const std::filesystem::path& programDirectory,
                  const std::string& name);

// The error report of the operations next to the solver: the error's text with its
// number; error 3051 (a read-only file) with its own advice.
void TARNOErrorAnalysis(UserInterface& ui, const std::string& operation,
                        const std::string& description, int number);
inline constexpr int kErrorReadOnly = 3051;

// Transitions of the state of a solution.
void ClearSolutionFlags(SolutionState& state);    // all four
void ClearGridAndTraceFlags(SolutionState& state);  // contours, lines, paths

}  // namespace tarno
