#include "tarnocmd_commands.h"

#include <cstdio>
#include <filesystem>
#include <limits>
#include <sstream>
#include <vector>

#include "core/console_ui.h"
#include "core/error_trap.h"
#include "store/database.h"
#include "store/dialogs.h"
#include "store/lifecycle.h"
#include "solver/solve_controller.h"
#include "store/project_file.h"

namespace tarno::cmd {

namespace lt = lifecycle_text;

std::string UsageText() {
  return "Usage:\n"
         "  tarnocmd new <path> [--description TEXT] [--map-units meters|feet]\n"
         "                      [--model-units meters|feet] [--base-name NAME] [--yes | --no]\n"
         "      Creates a new project file and sets it up as the desktop program does.\n"
         "      An existing file is kept unless --yes is given.\n"
         "  tarnocmd info <path>\n"
         "      Shows the version, description, units, solver file names, element\n"
         "      counts and extents of a project without changing it.\n"
         "  tarnocmd solve <path> [--regrid] [--continue <iterations>] [--yes | --no]\n"
         "      Writes the command file, runs tarno1 (and contour on a new grid) from the\n"
         "      program directory and loads the results. A present solution is solved\n"
         "      anew unless --no (regrid only) is given.\n"
         "  tarnocmd results <path> <table>\n"
         "      Prints a result table (WLResults, LSResults, ...) as CSV.\n"
         "  tarnocmd help\n"
         "      Shows this text.\n"
         "Messages go to standard error. Exit status: 0 success, 1 failure, 2 bad usage.\n";
}

namespace {

// The documented default answers of the questions a project operation may ask.
std::optional<Answer> DefaultAnswer(const std::string& title) {
  if (title == lt::kFileExistsTitle) return Answer::Cancel;    // never overwrite silently
  if (title == lt::kNoSuchFileTitle) return Answer::No;
  if (title == lt::kVersionUpdateTitle) return Answer::No;
  if (title == lt::kRestoreTitle) return Answer::No;
  if (title == lt::kBasePathTitle) return Answer::Yes;         // solver files beside the project
  if (title == lt::kMissingBBMTitle) return Answer::Yes;       // locate: keeps the row
  if (title == kUnitChangeWarningTitle) return Answer::No;
  return std::nullopt;                                         // the first button
}

std::string Trimmed(std::string s) {
  while (!s.empty() && (s.back() == '\n' || s.back() == '\r' || s.back() == ' ')) s.pop_back();
  return s;
}

std::string Number(double v) {
  std::ostringstream o;
  o.precision(15);
  o << v;
  return o.str();
}

}  // namespace

int New(const NewOptions& options, std::ostream& out, std::ostream& err) {
  ConsoleUserInterface ui(err, Answer::OK);
  switch (options.answers) {
    case Answers::Yes: ui.SetDefaultAnswer(Answer::Yes); break;
    case Answers::No: ui.SetDefaultAnswer(Answer::No); break;
    case Answers::Defaults:
      ui.SetAnswerPolicy([](const std::string& title, const std::vector<std::string>&, Buttons) {
        return DefaultAnswer(title);
      });
      break;
  }
  std::error_code ec;
  const std::string path = std::filesystem::absolute(options.path, ec).lexically_normal().string();
  ui.SetSaveFileAnswer(ec ? options.path : path);

  ui.SetModalHandler(NewDatabaseWizard::kName, [&](DialogModel& m) {
    auto& w = dynamic_cast<NewDatabaseWizard&>(m);
    if (options.description) w.Description = *options.description;
    w.BasemapMeters = options.basemapMeters;
    w.ComputeMeters = options.computeMeters;
    w.Create();
  });
  ui.SetModalHandler(ProjectSettings::kName, [&](DialogModel& m) {
    auto& s = dynamic_cast<ProjectSettings&>(m);
    if (options.baseName) s.BaseName = *options.baseName;
    // A refused name leaves the dialog unconfirmed: the project stays closed.
    s.OK(ui);
  });

  SessionHooks hooks;
  ProjectSession session(ui, hooks);
  if (!session.FileNewProject()) {
    err << "tarnocmd: the project " << options.path << " was not created\n";
    return 1;
  }
  const std::string created = session.Settings().DBName;
  if (!session.FileCloseProject()) return 1;
  out << "Created " << created << "\n";
  return 0;
}

int Info(const std::string& path, std::ostream& out, std::ostream& err) {
  const ProjectFileProbe probe = ProbeProjectFile(path);
  if (probe.state != ProjectFileState::Project) {
    err << ProbeTitle(probe) << ": " << ProbeMessage(path, probe) << "\n";
    return 1;
  }
  try {
    Database db = Database::OpenReadOnly(path);
    out << "File: " << path << "\n";
    out << "Version: " << probe.version << "\n";
    {
      Statement st = db.Prepare("select * from Project;");
      if (st.Step()) {
        out << "Description: " << Trimmed(st.GetText("Description")) << "\n";
        out << "Base name: " << st.GetText("TARNOBaseName") << "\n";
        out << "Base path: " << st.GetText("TARNOBasePath") << "\n";
      }
    }
    if (db.TableExists("Model")) {
      Statement st = db.Prepare("select BasemapMeters, ComputeMeters from Model;");
      if (st.Step()) {
        out << "Basemap units: " << UnitText(st.GetBool(0)) << "\n";
        out << "Computation units: " << UnitText(st.GetBool(1)) << "\n";
      }
    }
    static const char* const kTables[] = {
        "Wells",     "LinesinkStrings", "NoFlowStrings", "Inhomogeneities", "Lakes",
        "TestPoints", "Particles",      "FluxInspect",   "Domains",         "Capzones",
        "TextLabels", "Basemaps",       "Vertices",      "Polygons"};
    out << "Elements:\n";
    for (const char* table : kTables) {
      char line[64];
      if (db.TableExists(table)) {
        Statement st = db.PrepareRaw(std::string("select count(*) from ") + table + ";");
        st.Step();
        std::snprintf(line, sizeof line, "  %-16s %lld", table,
                      static_cast<long long>(st.GetInt64(0)));
        out << line;
        // The wells by kind, counted as the desktop program's "Model Size" counts them.
        if (std::string(table) == "Wells") {
          try {
            const WellCounts w = CountWells(db);
            out << " (2-D " << w.twoD << ", partially penetrating " << w.partiallyPenetrating
                << ", transient " << w.transient << ")";
          } catch (const StoreError&) {
            // A file of an older version may lack the kinds; the total stands alone.
          }
        }
        std::snprintf(line, sizeof line, "\n");
      } else {
        std::snprintf(line, sizeof line, "  %-16s absent\n", table);
      }
      out << line;
    }
    if (db.TableExists("Vertices")) {
      Statement st = db.PrepareRaw(
          "select count(*), min(X), max(X), min(Y), max(Y) from Vertices;");
      st.Step();
      if (st.GetInt64(0) == 0) {
        out << "Extents: no elements\n";
      } else {
        out << "Extents: X " << Number(st.GetDouble(1)) << " to " << Number(st.GetDouble(2))
            << ", Y " << Number(st.GetDouble(3)) << " to " << Number(st.GetDouble(4)) << "\n";
      }
    } else {
      out << "Extents: no elements\n";
    }
  } catch (const std::exception& e) {
    err << "tarnocmd: cannot read " << path << ": " << e.what() << "\n";
    return 1;
  }
  return 0;
}

}  // namespace tarno::cmd
