#include "solver/solve_controller.h"

#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>

#include "core/error.h"
#include "core/error_trap.h"
#include "core/file_find.h"
#include "core/text.h"
#include "elements/element_store.h"
#include "solver/model_settings.h"
#include "solver/plot_files.h"
#include "solver/process.h"
#include "solver/results_loader.h"
#include "solver/solve_dialogs.h"
#include "store/database.h"
#include "store/dialogs.h"

namespace tarno {

namespace fs = std::filesystem;

namespace {

constexpr int kWaitWidth = 3000;

// The numbers of grid points across that the solver's "horizontalpoints" takes.
constexpr int kSolverMinGridPoints = 2;
constexpr int kSolverMaxGridPoints = 100000;

void Enable(const SolveContext& ctx, const char* entry, bool on) {
  if (ctx.hooks.enableMenu) ctx.hooks.enableMenu(entry, on);
}

// Deletes every file of `directory` called `name` in any case of its letters;
// errors are ignored. Records the names deleted.
void DeleteNoCase(const fs::path& directory, const std::string& name,
                  std::vector<std::string>* deleted) {
  for (const auto& p : FilesNamedNoCase(directory, name)) {
    std::error_code rc;
    if (fs::remove(p, rc) && deleted) deleted->push_back(p.filename().string());
  }
}

std::vector<std::string> ReadLines(const fs::path& p) {
  std::ifstream in(p, std::ios::binary);
  std::vector<std::string> lines;
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

struct ProjectFiles {
  std::string base;
  fs::path dir;
};

ProjectFiles ReadProjectFiles(Database& db) {
  Statement p = db.Prepare("select TARNOBaseName, TARNOBasePath from Project");
  if (!p.Step()) throw Error("The Project table has no row");
  return {p.GetText("TARNOBaseName"), fs::path(p.GetText("TARNOBasePath"))};
}

// A number as the contourer's argument, in its shortest form ("3", "0.5").
std::string NumberText(double v) {
  char buf[40];
  std::snprintf(buf, sizeof buf, "%.15g", v);
  return buf;
}

// The levels of the contourer: from the grid's range for the stream function,
// otherwise the texts of the settings as they stand.
void ContourLevels(const ModelSettings& s, const fs::path& grid, std::string& min,
                   std::string& interval, std::string& max) {
  if (s.ContourProperty() == kContourStreamFunction) {
    const GridRange r = ReadGridRange(grid);
    double lines = 0;
    try {
      lines = std::stod(s.tbContourInt);
    } catch (...) {
      lines = 0;
    }
    if (lines - 1 == 0) throw Error("Division by zero", error_number::kDivisionByZero);
    std::ostringstream a, b, c;
    a.precision(15);
    b.precision(15);
    c.precision(15);
    a << r.zlo;
    b << (r.zhi - r.zlo) / (lines - 1);
    c << r.zhi;
    min = a.str();
    interval = b.str();
    max = c.str();
  } else {
    // The numbers the fields read as (a field that is no number reads as 0, as
    // everywhere in the settings), so that the contourer is never given a text
    // it refuses.
    min = NumberText(Val(s.tbContourMin));
    interval = NumberText(Val(s.tbContourInt));
    max = NumberText(Val(s.tbContourMax));
  }
}

// Runs the contourer on <base>.GRD and waits for it; returns its exit status.
// The old <base>.CTR stays until the contourer replaces it (it writes a temporary
// file and renames it), so a failed run leaves the last contour lines in place. A
// run that fails is told in a message that quotes what the contourer said.
int RunContour(SolveContext& ctx, const ProjectFiles& pf, const std::string& min,
               const std::string& interval, const std::string& max) {
  UserInterface& ui = *ctx.ui;
  noexecutable(ui, ctx.programDirectory, kContourProgram);
  ui.PleaseWaitShow("Contouring...", kWaitWidth);
  std::error_code ec;
  const fs::path errors = fs::temp_directory_path(ec) /
                          ("tarno-contour-" + std::to_string(::getpid()) + ".err");
  int status = -1;
  try {
    const pid_t pid = StartProgram(ctx.programDirectory / kContourProgram,
                                   {pf.base, min, interval, max}, pf.dir, ctx.programOutput,
                                   errors);
    status = WaitForTerm1(*ctx.waiter, pid);
  } catch (...) {
    ui.PleaseWaitHide();
    fs::remove(errors, ec);
    throw;
  }
  ui.PleaseWaitHide();
  std::vector<std::string> said = ReadLines(errors);
  fs::remove(errors, ec);
  if (status != 0) {
    std::vector<std::string> lines{"The contour program failed (exit status " +
                                   std::to_string(status) + ") on " + pf.base + ".GRD with the levels " +
                                   min + " to " + max + " by " + interval + "."};
    for (const std::string& l : said)
      if (!l.empty()) lines.push_back(l);
    if (said.empty()) lines.push_back("It gave no reason.");
    lines.push_back(FindFileNoCase(pf.dir, pf.base + ".CTR").empty()
                        ? "No contour lines are drawn."
                        : "The contour lines drawn before are kept.");
    ui.MessageBox(kContourFailedTitle, lines, Buttons::OK, Icon::Exclamation);
  }
  return status;
}

void CheckContext(const SolveContext& ctx) {
  if (!ctx.settings || !ctx.state || !ctx.ui || !ctx.waiter)
    throw InvalidArgumentError("The solve needs the model settings, state, interface and waiter");
}

int ErrorNumberOf(const std::exception& e) {
  if (const auto* se = dynamic_cast<const StoreError*>(&e)) {
    if ((se->code() & 0xff) == SQLITE_READONLY) return kErrorReadOnly;
  }
  if (const auto* te = dynamic_cast<const Error*>(&e)) return te->number();
  return 0;
}

void RunSolve(SolveContext& ctx, SolveOptions& o, SolveReport& report) {
  CheckContext(ctx);
  UserInterface& ui = *ctx.ui;
  SolutionState& state = *ctx.state;
  ModelSettings& settings = *ctx.settings;

  // 1. The continue form.
  std::string continueIterations = "1";
  if (o.ContinueSolve) {
    FormContinueSolve form;
    form.Load(settings, ctx.projectPath);
    ui.ShowModal(form);
    if (form.Cancel) return;
    continueIterations = form.tbIterations;
  }

  // 2. The project and its directory (the working directory of the solver).
  Database db = Database::Open(ctx.projectPath);
  const ProjectFiles pf = ReadProjectFiles(db);

  // A base name or a folder that the file system refuses is told before anything
  // is deleted: the present solution stays as it is.
  const std::string problem = SolverFilesProblem(pf.dir.string(), pf.base);
  if (!problem.empty()) {
    ui.MessageBox(kSolverFilesTitle,
                  {"The solver files cannot be written.", problem,
                   "Change the base file name or the path in Project Settings, then solve again."},
                  Buttons::OK, Icon::Exclamation);
    report.outcome = SolveOutcome::Refused;
    return;
  }

  // The number of grid points across must be one the solver takes: it skips a
  // "horizontalpoints" line out of its range, and the grid would then not be the
  // one asked for. A custom Contour Level of 0 or 1 passes the settings' check.
  const int across = settings.DetailedContours();
  if (settings.chkContour && (across < kSolverMinGridPoints || across > kSolverMaxGridPoints)) {
    ui.MessageBox("Bad Entry",
                  {"The contour grid needs from " + std::to_string(kSolverMinGridPoints) + " to " +
                       std::to_string(kSolverMaxGridPoints) + " points across; the Contour Level is " +
                       std::to_string(across) + ".",
                   "Please enter a new Contour Level in the Model Settings, or turn the contours off."},
                  Buttons::OK, Icon::Exclamation);
    report.outcome = SolveOutcome::Refused;
    return;
  }

  // 3. New solution or not.
  bool newSolution = false;
  if (o.ForceRegrid) {
    newSolution = false;
  } else if (!state.SolutionPresent || FindFileNoCase(pf.dir, pf.base + ".SOL").empty()) {
    newSolution = true;
  } else if (o.ContinueSolve) {
    newSolution = false;
    ClearGridAndTraceFlags(state);
  } else if (o.Prompt) {
    SolvePrompt prompt;
    ui.ShowModal(prompt);
    if (prompt.Result == static_cast<int>(Answer::Yes)) {
      newSolution = true;
    } else if (prompt.Result == static_cast<int>(Answer::No)) {
      newSolution = false;
      o.ShowLogs = false;
    } else {
      return;
    }
  }
  report.newSolution = newSolution;

  // 4. Results are not to be looked at until the run is over.
  Enable(ctx, "RESULTS_TABLE", false);
  Enable(ctx, "MODELRUNFILES", false);

  // 5. Stale files. The extract file goes in any case, so that a run that fails to
  // start leaves no old results to be misread.
  if (newSolution) {
    for (const std::string& name :
         {pf.base + ".DAT", pf.base + ".SOL", std::string("ERROR.LOG"), std::string("MESSAGE.LOG")})
      DeleteNoCase(pf.dir, name, &report.deletedFiles);
    ClearSolutionFlags(state);
  }
  for (const std::string& name : {pf.base + ".XTR", std::string("TARNO1.INI"), std::string("TARNO.OPS")})
    DeleteNoCase(pf.dir, name, &report.deletedFiles);

  // 6. The command file.
  CommandFileContext wctx;
  wctx.projectPath = ctx.projectPath;
  wctx.settings = &settings;
  wctx.state = &state;
  wctx.window = ctx.window;
  wctx.modflow = ctx.modflow;
  wctx.continueIterations = continueIterations;
  wctx.basemapExtents = ctx.basemapExtents;
  wctx.ui = &ui;
  int writeType = kWriteRegrid;
  if (newSolution) {
    writeType = kWriteNewSolve;
  } else if (o.ContinueSolve) {
    writeType = kWriteContinue;
  }
  report.writeType = writeType;
  db.Close();  // the writer and the loader open the project themselves
  if (writeType == kWriteRegrid && o.Rewrite) {
    ModelWriteInputFile(kWriteNewSolve, false, false, wctx);
    ModelWriteInputFile(kWriteRegrid, false, false, wctx);
    state.ContourLinesPresent = false;
  } else {
    ModelWriteInputFile(writeType, false, false, wctx);
  }

  // 7, 8. The solver, from the program directory, in the project's directory.
  noexecutable(ui, ctx.programDirectory, kSolverProgram);
  {
    Database sdb = Database::Open(ctx.projectPath);
    ctx.Size = ModelGetSize(sdb, false, ui, ctx.leakageCells, ctx.modflow.GridPresent);
  }
  report.size = ctx.Size;
  const std::string name = writeType == kWriteRegrid ? std::string("REGRID.DAT") : pf.base;
  const pid_t pid = StartProgram(ctx.programDirectory / kSolverProgram,
                                 {std::to_string(ctx.Size), name}, pf.dir, ctx.programOutput,
                                 ctx.solverErrors);

  // 9. The wait.
  ui.PleaseWaitShow("Running Solver...", kWaitWidth);
  try {
    report.solverStatus = WaitForTerm1(*ctx.waiter, pid);
  } catch (...) {
    ui.PleaseWaitHide();
    throw;
  }
  ui.PleaseWaitHide();

  // 10. A fatal run. A solver ended by a signal (it crashed or was killed) leaves
  // no report and may leave half-written files; it is fatal all the same, so that
  // nothing of it is loaded.
  const fs::path ops = FindFileNoCase(pf.dir, "TARNO.OPS");
  if (!ops.empty() || EndedBySignal(report.solverStatus)) {
    if (!ops.empty()) {
      report.fatalLines = ReadLines(ops);
    } else {
      report.fatalLines = {"The solver ended abnormally (signal " +
                               std::to_string(report.solverStatus - 128) +
                               ") before it finished its run.",
                           "Its result files are incomplete and were not loaded."};
    }
    std::vector<std::string> lines{"TARNO Encountered a fatal error: ", ""};
    lines.insert(lines.end(), report.fatalLines.begin(), report.fatalLines.end());
    ui.MessageBox("Fatal execution error", lines, Buttons::OK, Icon::Critical);
    ClearSolutionFlags(state);
    std::error_code ec;
    fs::remove(ops, ec);
    report.outcome = SolveOutcome::Fatal;
    return;
  }

  // 11. The results.
  ModelProcessSolverResults(ctx, o.ShowResults, o.ShowLogs, report);
  report.outcome = SolveOutcome::Completed;
}

}  // namespace

void ClearSolutionFlags(SolutionState& state) {
  state.SolutionPresent = false;
  ClearGridAndTraceFlags(state);
}

void ClearGridAndTraceFlags(SolutionState& state) {
  state.ContoursPresent = false;
  state.PathsPresent = false;
  state.ContourLinesPresent = false;
}

bool noexecutable(UserInterface& ui, const fs::path& programDirectory, const std::string& name) {
  std::error_code ec;
  if (fs::exists(programDirectory / name, ec)) return true;
  ui.MessageBox("Executable Missing", {name + " does not exist in the tarno directory!"});
  return false;
}

void TARNOErrorAnalysis(UserInterface& ui, const std::string& operation,
                        const std::string& description, int number) {
  const std::string text = description + " (error number " + std::to_string(number) + ")";
  if (number == kErrorReadOnly) {
    ui.MessageBox("Read Only File",
                  {text,
                   " The file might be 'read only'. If the file was copied from, or opened from, "
                   "a cd, the file will be 'read only'."},
                  Buttons::OK, Icon::Critical);
    return;
  }
  ui.MessageBox(kUnhandledErrorTitle, {"Unhandled error in " + operation, text, kPersistsLine},
                Buttons::OK, Icon::Critical);
}

SolveReport ModelRunTARNO(SolveContext& ctx, SolveOptions& options) {
  SolveReport report;
  try {
    RunSolve(ctx, options, report);
  } catch (const UiPortFailure&) {
    throw;  // a test script's failure, not the operation's
  } catch (const std::exception& e) {
    report.outcome = SolveOutcome::Failed;
    report.failure = e.what();
    if (ctx.ui) TARNOErrorAnalysis(*ctx.ui, "ModelRunTARNO", e.what(), ErrorNumberOf(e));
  }
  return report;
}

void ModelProcessSolverResults(SolveContext& ctx, bool showResults, bool showLogs,
                               SolveReport& report) {
  CheckContext(ctx);
  UserInterface& ui = *ctx.ui;
  SolutionState& state = *ctx.state;
  const ModelSettings& s = *ctx.settings;
  Database db = Database::Open(ctx.projectPath);
  const ProjectFiles pf = ReadProjectFiles(db);

  Enable(ctx, "RESULTS_TABLE", true);
  Enable(ctx, "MODELRUNFILES", true);
  Enable(ctx, "CALIBRATION_STATS", true);

  // The contourer runs on a grid that the solver has just written. A solver that
  // asked for contours but wrote no grid reports why in its error log.
  const fs::path grid = FindFileNoCase(pf.dir, pf.base + ".GRD");
  if (!state.ContourLinesPresent && s.chkContour && !grid.empty()) {
    std::string min, interval, max;
    ContourLevels(s, grid, min, interval, max);
    report.contourStatus = RunContour(ctx, pf, min, interval, max);
    report.contourRun = true;
    // A failed run leaves the contour lines there were (told by RunContour).
    state.ContourLinesPresent =
        report.contourStatus == 0 || !FindFileNoCase(pf.dir, pf.base + ".CTR").empty();
  }
  Enable(ctx, "chkContour", state.ContourLinesPresent);
  Enable(ctx, "chkComputePaths", !FindFileNoCase(pf.dir, pf.base + ".PTH").empty());
  Enable(ctx, "TestPoints", true);

  state.SolutionPresent = true;
  Enable(ctx, "SolverIntegrityCheck", true);

  const ModelFrame frame = ModelRestoreModelOrigin(db, s.BasemapConvert);
  db.Close();
  report.load = ModelLoadTARNOResults(ctx.projectPath, frame, ui);
  report.resultsUnusable = ReportUnusableResults(report.load, ui);
  // The leakage of a MODFLOW grid, when the solve included it. Not done yet: the
  // reader of <base>.vlk comes with the MODFLOW coupling, through this hook.
  if (ctx.modflow.GridPresent && ctx.modflow.IncludeLeakage && ctx.hooks.loadLeakage)
    ctx.hooks.loadLeakage(pf.dir / (pf.base + ".vlk"));

  if (ctx.hooks.redraw) ctx.hooks.redraw();
  Enable(ctx, "MODEL_CMDS", true);

  const bool regrid = report.writeType == kWriteRegrid;
  report.messageLog = FindFileNoCase(pf.dir, regrid ? "message_gr.log" : "message.log");
  report.errorLog = FindFileNoCase(pf.dir, regrid ? "error_gr.log" : "error.log");
  if (s.chkViewMessage && !report.messageLog.empty()) ui.ShowTextFile(report.messageLog.string());
  if (!report.errorLog.empty()) {
    const auto lines = ReadLines(report.errorLog);
    report.errorLogHasReport = lines.empty() || lines[0] != "*" || lines.size() > 1;
    const bool drawdowns = s.ContourProperty() == kContourDrawdowns;
    if (report.errorLogHasReport && ((showLogs && s.chkViewError) || drawdowns))
      ui.ShowTextFile(report.errorLog.string());
  }
  (void)showResults;  // the map shows the results by the redraw above
}

int ModelGetSize(Database& db, bool show, UserInterface& ui, int leakageCells, bool gridPresent) {
  // Every row of each kind with the vertices it has, complete or not.
  auto countOf = [](const Element& e) { return static_cast<std::int64_t>(e.vertices.size()); };
  const WellCounts wells = CountWells(db);
  const std::int64_t wells2d = wells.twoD, ppWells = wells.partiallyPenetrating,
                     transient = wells.transient, wellUnknowns = wells.unknowns;
  std::int64_t strings = 0, linesinks = 0;
  for (const Element& s : LoadAllRows(db, ElementKind::Linesink)) {
    ++strings;
    linesinks += std::max<std::int64_t>(0, countOf(s) - 1);
  }
  std::int64_t barriers = 0, barrierDoublets = 0;
  for (const Element& b : LoadAllRows(db, ElementKind::Barrier)) {
    ++barriers;
    const std::int64_t n = countOf(b);
    barrierDoublets += b.row.Flag("Closed") ? n : std::max<std::int64_t>(0, n - 1);
  }
  std::int64_t inhoms = 0, inhomDoublets = 0;
  for (const Element& in : LoadAllRows(db, ElementKind::Inhomogeneity)) {
    ++inhoms;
    if (in.row.Flag("ChangeK") || in.row.Flag("ChangeB")) inhomDoublets += countOf(in);
  }
  std::int64_t size = linesinks + 2 * barrierDoublets + 2 * inhomDoublets + 1 + wellUnknowns +
                      leakageCells + 25;
  size = std::max<std::int64_t>(size, 61);
  if (show) {
    auto n = [](std::int64_t v) { return std::to_string(v); };
    std::vector<std::string> lines{
        "Current model size:",
        "Number of wells (2-D): " + n(wells2d),
        "Number of partially penetrating wells: " + n(ppWells),
        "Number of transient wells: " + n(transient),
        "Number of linesink strings: " + n(strings),
        "Number of linesinks: " + n(linesinks),
        "Number of inhomogeneities: " + n(inhoms),
        "Number of inhomogeneity elements (line doublets): " + n(inhomDoublets),
        "Number of barriers: " + n(barriers),
        "Number of barrier elements (line doublets): " + n(barrierDoublets),
    };
    if (gridPresent) lines.push_back("Number of Leakage cells:" + n(leakageCells));
    for (const char* limit :
         {"Maximum number of wells (2-D) allowed:  2000",
          "Maximum number of partially penetrating wells allowed:  200",
          "Maximum number of transient wells allowed:  500",
          "Maximum number of line-sinks allowed:  5000",
          "Maximum number of inhomogeneities + barriers allowed:  1000",
          "Maximum number of line doublets allowed:  3000", "Maximum number of equations allowed: 7000"})
      lines.push_back(limit);
    lines.push_back("Estimated number of equations is less than: " + n(size));
    ui.MessageBox("Model Size", lines);
  }
  return static_cast<int>(size);
}

bool InvalidateSolution(SolveContext& ctx, bool ask, bool redraw) {
  CheckContext(ctx);
  SolutionState& state = *ctx.state;
  bool removed = false;
  if (state.SolutionPresent) {
    if (ask && !ctx.ui->Question("Model Changed!",
                                 {"This change may make the current solution inconsistent with your",
                                  "current element layout.  Do you want to remove the current solution",
                                  "results from view and invalidate the solution?  "})) {
      return false;
    }
    Database db = Database::Open(ctx.projectPath);
    const ProjectFiles pf = ReadProjectFiles(db);
    for (const char* ext : {".SOL", ".DAT", ".XTR", ".PTH", ".CTR", ".GRD"})
      DeleteNoCase(pf.dir, pf.base + ext, nullptr);
    state.ContourLinesPresent = false;
    state.ContoursPresent = false;
    state.PathsPresent = false;
    for (const char* entry : {"chkContour", "chkComputePaths", "TestPoints", "MODELRUNFILES",
                              "RESULTS_TABLE", "CALIBRATION_STATS", "SolverIntegrityCheck"})
      Enable(ctx, entry, false);
    state.SolutionTime = 0;
    state.SolutionPresent = false;
    state.Note.clear();
    for (const char* table :
         {"NFResults", "TPResults", "FIResults", "INResults", "WLResults", "LSResults"})
      db.Execute(std::string("DELETE * FROM ") + table + ";");
    ClearLakeResults(db);
    // Drawn once the results are gone, so that the map shows no part of the removed
    // solution (the wells and test points are drawn by their results).
    if (redraw && ctx.hooks.redraw) ctx.hooks.redraw();
    removed = true;
  }
  if (ctx.hooks.closeSearch) ctx.hooks.closeSearch();
  return removed;
}

void InvalidateContours(SolveContext& ctx) {
  CheckContext(ctx);
  if (!ctx.state->SolutionPresent) return;
  UserInterface& ui = *ctx.ui;
  if (ui.Question("Recompute?", {"This change makes the current contour lines and/or pathlines invalid.",
                                 "Recompute contours and pathlines based on the new settings?"},
                  Icon::None)) {
    try {
      Database db = Database::Open(ctx.projectPath);
      const ProjectFiles pf = ReadProjectFiles(db);
      Statement m = db.Prepare("select CONTOURMinimum, CONTOURInterval, CONTOURMaximum from Model");
      if (!m.Step()) throw Error("The Model table has no row");
      const std::string min = NumberText(m.GetDouble(0)), interval = NumberText(m.GetDouble(1)),
                        max = NumberText(m.GetDouble(2));
      db.Close();
      // A failed run has been told and leaves the contour lines there were.
      if (RunContour(ctx, pf, min, interval, max) == 0) ctx.state->ContourLinesPresent = true;
    } catch (const UiPortFailure&) {
      throw;
    } catch (const std::exception&) {
      ui.MessageBox(kUnhandledErrorTitle,
                    {"Could not run the contouring program", kPersistsLine}, Buttons::OK,
                    Icon::Critical);
      return;
    }
    Enable(ctx, "chkContour", true);
  } else {
    Enable(ctx, "chkContour", false);
  }
  if (ctx.hooks.redraw) ctx.hooks.redraw();
}

}  // namespace tarno
