// The solve and results commands of tarnocmd. They live apart from the project
// commands because the solver's headers and the life cycle's headers each declare
// their own map window type.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "core/console_ui.h"
#include "core/error.h"
#include "core/file_find.h"
#include "solver/command_file.h"
#include "solver/model_settings.h"
#include "solver/plot_files.h"
#include "solver/process.h"
#include "solver/results_loader.h"
#include "solver/solve_controller.h"
#include "solver/solve_dialogs.h"
#include "store/database.h"
#include "store/project_file.h"
#include "tarnocmd_commands.h"

namespace tarno::cmd {

namespace fs = std::filesystem;

namespace {

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

// The window of the Model row; a window that is empty or turned inside out (a new
// project's) gives way to the extents of the vertices, widened by a tenth.
MapWindow WindowOf(Database& db) {
  MapWindow w = ProjectWindow(db);
  {
    Statement raw = db.PrepareRaw("select WINDOWX1 < WINDOWX2 and WINDOWY1 < WINDOWY2 from Model");
    if (raw.Step() && raw.GetBool(0)) return w;
  }
  const VertexSummary v = SummariseVertices(db);
  if (v.count == 0 || !v.box) return w;
  const ModelExtents& b = *v.box;
  const double dx = std::max(1.0, b.MaxX - b.MinX);
  const double dy = std::max(1.0, b.MaxY - b.MinY);
  w.Left = b.MinX - dx / 10;
  w.Right = b.MaxX + dx / 10;
  w.Bottom = b.MinY - dy / 10;
  w.Top = b.MaxY + dy / 10;
  return w;
}

std::vector<std::string> FileLines(const fs::path& p) {
  std::vector<std::string> lines;
  std::ifstream in(p, std::ios::binary);
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return lines;
}

const char* WriteTypeText(int type) {
  switch (type) {
    case kWriteNewSolve: return "new solution";
    case kWriteContinue: return "continued solution";
    case kWriteRegrid: return "regrid of the present solution";
    default: return "none";
  }
}

// A path as it is typed on a shell's command line: in single quotes when it holds
// anything but letters, digits and . / _ - + , : @ %.
std::string ShellWord(const std::string& word) {
  const bool plain =
      !word.empty() && word.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"
                                              "0123456789./_-+,:@%") == std::string::npos;
  if (plain) return word;
  std::string q = "'";
  for (char c : word) q += c == '\'' ? std::string("'\\''") : std::string(1, c);
  return q + "'";
}

std::string CsvField(const std::string& v) {
  if (v.find_first_of(",\"\r\n") == std::string::npos) return v;
  std::string q = "\"";
  for (char c : v) q += c == '"' ? std::string("\"\"") : std::string(1, c);
  return q + "\"";
}

}  // namespace

int Solve(const SolveCommandOptions& options, std::ostream& out, std::ostream& err) {
  const ProjectFileProbe probe = ProbeProjectFile(options.path);
  if (probe.state != ProjectFileState::Project) {
    err << ProbeTitle(probe) << ": " << ProbeMessage(options.path, probe) << "\n";
    return 1;
  }
  ConsoleUserInterface ui(err, Answer::OK);
  BatchRun run;
  if (!OpenBatchRun(options.path, ui, run, err, WindowOf)) return 1;
  SolveContext& ctx = run.ctx;
  BatchProject& project = run.project;
  // A base name or a folder that cannot take the solver files is told by the
  // solve itself ("Cannot Write Solver Files"), before it deletes anything.
  ctx.programOutput = "/dev/null";
  // The solver's own complaints on standard error repeat TARNO.OPS, which the fatal
  // message shows.
  ctx.solverErrors = "/dev/null";

  // Whether the solve refused a base name or a folder that cannot take the solver
  // files; the desktop's advice then gets the command that follows it here.
  bool solverFilesRefused = false;
  ui.SetAnswerPolicy([&](const std::string& title, const std::vector<std::string>&, Buttons) {
    if (title == kSolverFilesTitle) solverFilesRefused = true;
    return std::optional<Answer>();
  });
  if (options.answers == Answers::No) ui.SetDefaultAnswer(Answer::No);
  if (options.answers == Answers::Yes) ui.SetDefaultAnswer(Answer::Yes);
  ui.SetModalHandler(SolvePrompt::kName, [&](DialogModel& m) {
    dynamic_cast<SolvePrompt&>(m).Result =
        static_cast<int>(options.answers == Answers::No ? Answer::No : Answer::Yes);
  });
  ui.SetModalHandler(FormContinueSolve::kName, [&](DialogModel& m) {
    auto& f = dynamic_cast<FormContinueSolve&>(m);
    f.tbIterations = options.continueIterations;
    f.Ok(ui);
  });
  ui.SetModalHandler("Iterations", [&](DialogModel& m) {
    auto& d = dynamic_cast<IterationsDialog&>(m);
    // Batch runs keep the iterations the project asks for.
    d.Result = 2;
  });

  SolveOptions so;
  so.ForceRegrid = options.regrid;
  so.ContinueSolve = !options.continueIterations.empty();
  so.Prompt = true;
  const SolveReport r = ModelRunTARNO(ctx, so);

  switch (r.outcome) {
    case SolveOutcome::Cancelled:
      err << "tarnocmd: the solve was cancelled\n";
      return 1;
    case SolveOutcome::Refused:
      // The message above says why; nothing of the project was changed.
      if (solverFilesRefused)
        err << "tarnocmd settings " << ShellWord(options.path)
            << " --base-name NAME --path DIR changes them.\n";
      err << "tarnocmd: the solve was not started\n";
      return 1;
    case SolveOutcome::Failed:
      err << "tarnocmd: the solve failed: " << r.failure << "\n";
      return 1;
    case SolveOutcome::Fatal:
      out << "Run: " << WriteTypeText(r.writeType) << "\n";
      out << "Solver exit status: " << r.solverStatus << "\n";
      // The lines of the report were shown by the "Fatal execution error" message.
      err << "tarnocmd: the solver ended with a fatal error (exit status " << r.solverStatus
          << ")\n";
      return 1;
    case SolveOutcome::Completed:
      break;
  }
  out << "Run: " << WriteTypeText(r.writeType);
  if (r.writeType == kWriteContinue) out << " (" << options.continueIterations << " more iterations)";
  out << "\n";
  out << "Estimated equations: " << r.size << "\n";
  out << "Solver exit status: " << r.solverStatus << "\n";
  if (!r.messageLog.empty()) {
    // The iterations and the water balance, as the solver's message log tells them.
    bool inBalance = false;
    for (const auto& line : FileLines(r.messageLog)) {
      const std::string l = Lower(line);
      if (l.rfind("water balance", 0) == 0) {
        inBalance = true;
      } else if (inBalance && (line.empty() || line[0] != ' ')) {
        inBalance = false;
      }
      if (inBalance || l.rfind("iteration", 0) == 0) out << "  " << line << "\n";
    }
  }
  out << "Result rows loaded: " << r.load.rowsUpdated << " (" << r.load.badRecords
      << " bad records)\n";
  if (r.contourRun) {
    std::size_t n = 0;
    try {
      const fs::path ctr = FindFileNoCase(project.dir, project.base + ".CTR");
      if (!ctr.empty()) n = ReadContourFile(ctr).size();
    } catch (const std::exception& e) {
      err << "tarnocmd: " << e.what() << "\n";
    }
    out << "Contour lines written: " << n << " (contour exit status " << r.contourStatus << ")\n";
  }
  if (r.errorLogHasReport) {
    err << "The solver reports (" << r.errorLog.filename().string() << "):\n";
    for (const auto& l : FileLines(r.errorLog)) err << "  " << l << "\n";
  }
  if (r.resultsUnusable) {
    err << "tarnocmd: no results were loaded\n";
    return 1;
  }
  return 0;
}

int Results(const std::string& path, const std::string& table, std::ostream& out,
            std::ostream& err) {
  static const char* const kTables[] = {"WLResults", "LSResults", "INResults", "NFResults",
                                        "TPResults", "FIResults", "LKResults"};
  std::string name;
  for (const char* t : kTables)
    if (Lower(t) == Lower(table)) name = t;
  if (name.empty()) {
    err << "tarnocmd: \"" << table
        << "\" is not a result table (WLResults, LSResults, INResults, NFResults, TPResults, "
           "FIResults, LKResults)\n";
    return 2;
  }
  const ProjectFileProbe probe = ProbeProjectFile(path);
  if (probe.state != ProjectFileState::Project) {
    err << ProbeTitle(probe) << ": " << ProbeMessage(path, probe) << "\n";
    return 1;
  }
  try {
    Database db = Database::OpenReadOnly(path);
    // The lakes' table is made by the first load of results: before it, no rows.
    if (name == kLakeResultsTable && !HasLakeResultsTable(db)) {
      for (std::size_t c = 0; c < std::size(kLakeResultsFields); ++c)
        out << (c ? "," : "") << kLakeResultsFields[c];
      out << "\n";
      return 0;
    }
    Statement st = db.PrepareRaw("select * from " + name + " order by rowid");
    for (int c = 0; c < st.ColumnCount(); ++c) out << (c ? "," : "") << CsvField(st.ColumnName(c));
    out << "\n";
    while (st.Step()) {
      for (int c = 0; c < st.ColumnCount(); ++c) {
        if (c) out << ",";
        if (st.IsNull(c)) continue;
        if (st.Kind(c) == ValueKind::Double) {
          char buf[40];
          std::snprintf(buf, sizeof buf, "%.15g", st.GetDouble(c));
          out << buf;
        } else {
          out << CsvField(st.GetText(c));
        }
      }
      out << "\n";
    }
  } catch (const std::exception& e) {
    err << "tarnocmd: cannot read " << name << " of " << path << ": " << e.what() << "\n";
    return 1;
  }
  return 0;
}

}  // namespace tarno::cmd
