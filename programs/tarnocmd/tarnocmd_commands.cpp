#include "tarnocmd_commands.h"
#include "tarnocmd_convert.h"
#include "tarnocmd_exchange.h"
#include "tarnocmd_maps.h"
#include "tarnocmd_elements.h"
#include "tarnocmd_scenario.h"

#include <cctype>
#include <cstdlib>
#include <cstdio>
#include <filesystem>
#include <limits>
#include <sstream>
#include <vector>

#include "core/console_ui.h"
#include "core/error_trap.h"
#include "core/file_find.h"
#include "core/text.h"
#include "elements/element_store.h"
#include "elements/extents.h"
#include "store/database.h"
#include "store/dialogs.h"
#include "store/lifecycle.h"
#include "solver/process.h"
#include "solver/solve_controller.h"
#include "store/schema.h"
#include "store/project_file.h"

namespace tarno::cmd {

namespace lt = lifecycle_text;

std::string UsageText() {
  return "Usage:\n"
         "  tarnocmd new <path> [--description TEXT] [--map-units meters|feet]\n"
         "                      [--model-units meters|feet] [--base-name NAME] [--yes | --no]\n"
         "      Creates a new project file and sets it up as the desktop program does.\n"
         "      An existing file is kept unless --yes is given.\n"
         "  tarnocmd info <path> [<x> <y>]\n"
         "      Shows the version, description, units, solver file names, element\n"
         "      counts and extents of a project without changing it. With a map point:\n"
         "      the results of the line-sink segment, inhomogeneity or lake whose\n"
         "      vertex lies nearest, as a right click on the map shows them.\n"
         "  tarnocmd settings <path> [--description TEXT] [--base-name NAME] [--path DIR]\n"
         "                           [--yes | --no]\n"
         "      Shows the project settings or changes them as the Project Settings dialog\n"
         "      does: the description, the base file name and the folder of the solver\n"
         "      files. A missing folder is created only with --yes; a refused value\n"
         "      changes nothing.\n"
         "  tarnocmd solve <path> [--regrid] [--continue <iterations>] [--yes | --no]\n"
         "      Writes the command file, runs tarno1 (and contour on a new grid) from the\n"
         "      program directory and loads the results. A present solution is solved\n"
         "      anew unless --no (regrid only) is given.\n"
         "  tarnocmd inspect <path> <x> <y> [--elevation Z] [--integrity STEP] [--time T]\n"
         "      Asks the present solution for everything at the map point (x, y) and\n"
         "      prints the lines of the Model Results box; --integrity adds the solver\n"
         "      integrity check with the given step (map units).\n"
         "  tarnocmd results <path> <table>\n"
         "      Prints a result table (WLResults, LSResults, ...) as CSV.\n"
         "  tarnocmd stats <path>\n"
         "      Prints the residual statistics of the piezometers, gages and lake stages.\n"
         "  tarnocmd pest <path>\n"
         "      Writes the PEST files of the project's scenarios and test points\n"
         "      (<base>.tpl, .ins, .pst, T-PEST.bat, T-PEST.sh) and prints their paths.\n"
         "  tarnocmd import-par <path> <file.par>\n"
         "      Imports the optimised values of a PEST parameter file into the project\n"
         "      and writes PEST2TARNO.log; a faulty file is reported and changes nothing.\n"
         "  tarnocmd estimate <path> [--no-import] [--use-files] [--threads N]\n"
         "                           [--max-iterations N]\n"
         "      Estimates the scenario parameters from the test points with the built-in\n"
         "      estimator, writes <base>.par and the record <base>.erc and imports the\n"
         "      values (not with --no-import). --use-files takes the PEST files as they\n"
         "      stand instead of writing them anew.\n"
         + ElementUsageText() + ScenarioUsageText() + MapUsageText() + ConvertUsageText() + ExchangeUsageText() +
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

// The lines of the settings dialog's fields: description, base name and folder of
// the solver files, the two units.
void PrintSettings(Database& db, std::ostream& out) {
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
}

std::string Lower(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

// Another project whose solver files would share the folder `folder` and the base
// name `name` with the project `self`, so that a solve of either overwrites the
// other's run files. Looked for among the project files in that folder.
struct BaseNameUser {
  std::string project;   // its file
  std::string baseName;  // as it spells the name
  std::string basePath;  // as it stores the folder
};

std::optional<BaseNameUser> ProjectUsingBaseName(const std::string& folder,
                                                 const std::string& name,
                                                 const std::string& self) {
  namespace fs = std::filesystem;
  std::error_code ec;
  for (fs::directory_iterator it(folder, ec), end; !ec && it != end; it.increment(ec)) {
    const fs::path file = it->path();
    std::error_code fileEc;
    if (Lower(file.extension().string()) != ".trn" || !it->is_regular_file(fileEc)) continue;
    if (fs::equivalent(file, self, fileEc)) continue;
    if (ProbeProjectFile(file.string()).state != ProjectFileState::Project) continue;
    try {
      Database db = Database::OpenReadOnly(file.string());
      Statement st = db.Prepare("select TARNOBaseName, TARNOBasePath from Project;");
      if (!st.Step()) continue;
      BaseNameUser user{file.string(), st.GetText(0), st.GetText(1)};
      if (Lower(TrimST(user.baseName)) != Lower(name)) continue;
      if (!fs::equivalent(user.basePath, folder, fileEc)) continue;
      return user;
    } catch (const std::exception&) {
      // A project that cannot be read here is no obstacle.
    }
  }
  return std::nullopt;
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

namespace {

// The rows of a table of the info listing: the element tables and the geometry
// through the element layer, the base map list directly.
std::int64_t CountRows(Database& db, const char* table) {
  if (const auto kind = KindFromTable(table)) return CountElements(db, *kind);
  if (std::string_view(table) == "Vertices") return SummariseVertices(db).count;
  if (std::string_view(table) == "Polygons") return CountPolygons(db);
  Statement st = db.PrepareRaw(std::string("select count(*) from ") + table + ";");
  st.Step();
  return st.GetInt64(0);
}

}  // namespace

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
    PrintSettings(db, out);
    static const char* const kTables[] = {
        "Wells",     "LinesinkStrings", "NoFlowStrings", "Inhomogeneities", "Lakes",
        "TestPoints", "Particles",      "FluxInspect",   "Domains",         "Capzones",
        "TextLabels", "Basemaps",       "Vertices",      "Polygons"};
    out << "Elements:\n";
    for (const char* table : kTables) {
      char line[64];
      if (db.TableExists(table)) {
        std::snprintf(line, sizeof line, "  %-16s %lld", table,
                      static_cast<long long>(CountRows(db, table)));
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
      const VertexSummary v = SummariseVertices(db);
      if (v.count == 0 || !v.box) {
        out << "Extents: no elements\n";
      } else {
        out << "Extents: X " << Number(v.box->MinX) << " to " << Number(v.box->MaxX) << ", Y "
            << Number(v.box->MinY) << " to " << Number(v.box->MaxY) << "\n";
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

namespace {

// Prints the settings as they stand in the project file; 1 if it cannot be read.
int PrintStoredSettings(const std::string& path, std::ostream& out, std::ostream& err) {
  try {
    Database db = Database::OpenReadOnly(path);
    PrintSettings(db, out);
  } catch (const std::exception& e) {
    err << "tarnocmd: cannot read " << path << ": " << e.what() << "\n";
    return 1;
  }
  return 0;
}

}  // namespace

int Settings(const SettingsOptions& options, std::ostream& out, std::ostream& err) {
  namespace fs = std::filesystem;
  const ProjectFileProbe probe = ProbeProjectFile(options.path);
  if (probe.state != ProjectFileState::Project) {
    err << ProbeTitle(probe) << ": " << ProbeMessage(options.path, probe) << "\n";
    return 1;
  }
  if (!options.Changes()) return PrintStoredSettings(options.path, out, err);

  // Only the dialog runs: the project is not opened as the desktop program opens
  // it (no question on the folder of the solver files, no check of the base maps,
  // no compaction), so that nothing but the settings changes.
  ConsoleUserInterface ui(err, Answer::OK);
  // "Create Folder?" is the one question of the dialog: a folder is made only
  // when asked for with --yes.
  ui.SetDefaultAnswer(options.answers == Answers::Yes ? Answer::Yes : Answer::No);
  bool folderRefused = false;
  ui.SetAnswerPolicy([&](const std::string& title, const std::vector<std::string>&, Buttons) {
    if (title == ProjectSettings::kCreateFolderTitle && options.answers != Answers::Yes)
      folderRefused = true;
    return std::optional<Answer>();
  });
  const auto notChanged = [&] {
    if (folderRefused && options.answers == Answers::Defaults)
      err << "tarnocmd: --yes creates the folder\n";
    err << "tarnocmd: the settings of " << options.path << " were not changed\n";
    return 1;
  };
  if (IsReadOnlyFile(options.path)) {
    ui.MessageBox(lt::kReadOnlyTitle, ReadOnlyLines());
    return notChanged();
  }
  if (probe.version < ProjectSession::kCurrentVersion) {
    ui.MessageBox(lt::kMustUpdateTitle, {lt::kMustUpdateText});
    return notChanged();
  }
  if (probe.version > ProjectSession::kCurrentVersion) {
    ui.MessageBox(lt::kNewerVersionTitle, NewerVersionLines());
    return notChanged();
  }

  std::error_code ec;
  const std::string path = fs::absolute(options.path, ec).lexically_normal().string();
  ProjectSettings settings;
  bool accepted = false;
  ui.SetModalHandler(ProjectSettings::kName, [&](DialogModel& m) {
    auto& s = dynamic_cast<ProjectSettings&>(m);
    if (options.description) s.Description = *options.description;
    if (options.baseName) s.BaseName = *options.baseName;
    if (options.basePath) {
      // A relative folder is taken from where the program runs, as the project's.
      const std::string folder = TrimST(*options.basePath);
      std::error_code folderEc;
      const fs::path absolute = folder.empty() ? fs::path() : fs::absolute(folder, folderEc);
      s.BasePath = folder.empty() || folderEc ? *options.basePath
                                              : absolute.lexically_normal().string();
    }
    // A name that another project in the folder gives its solver files is refused
    // as the desktop program refuses it for a copy beside its original.
    if (auto user = ProjectUsingBaseName(TrimST(s.BasePath), TrimST(s.BaseName), path)) {
      s.TakenBaseNames = {user->baseName};
      s.TakenFolder = user->basePath;
      s.TakenBy = "the project " + user->project;
    }
    // A refused value leaves the dialog unconfirmed: nothing has been written.
    accepted = s.OK(ui);
  });
  const bool ran = RunOperation(ui, "FileProjectSettings", [&] {
    settings.Load(ec ? options.path : path);
    ui.ShowModal(settings);
  });
  if (!ran || !accepted) return notChanged();
  return PrintStoredSettings(options.path, out, err);
}

void LoadBatchProject(Database& db, BatchProject& project) {
  project.settings.Load(db);
  Statement p = db.Prepare("select TARNOBaseName, TARNOBasePath from Project");
  if (!p.Step()) throw Error("The Project table has no row");
  project.base = p.GetText(0);
  project.dir = p.GetText(1);
  const auto present = [&](const char* extension) {
    return !FindFileNoCase(project.dir, project.base + extension).empty();
  };
  project.state.SolutionPresent = present(".SOL");
  project.state.ContoursPresent = present(".GRD");
  project.state.PathsPresent = present(".PTH");
  project.state.ContourLinesPresent = present(".CTR");
}

std::filesystem::path BatchProgramDirectory() {
  const char* dir = std::getenv("TARNO_PROGRAM_DIR");
  return dir != nullptr && *dir != '\0' ? std::filesystem::path(dir) : ProgramDirectory();
}

bool OpenBatchRun(const std::string& path, UserInterface& ui, BatchRun& run, std::ostream& err,
                  MapWindow (*window)(Database&)) {
  try {
    Database db = Database::Open(path);
    LoadBatchProject(db, run.project);
    if (window != nullptr) run.ctx.window = window(db);
  } catch (const std::exception& e) {
    err << "tarnocmd: cannot read " << path << ": " << e.what() << "\n";
    return false;
  }
  run.ctx.projectPath = path;
  run.ctx.settings = &run.project.settings;
  run.ctx.state = &run.project.state;
  run.ctx.ui = &ui;
  run.ctx.waiter = &run.waiter;
  run.ctx.programDirectory = BatchProgramDirectory();
  return true;
}

MapWindow ProjectWindow(Database& db) {
  MapWindow w;
  Statement st = db.PrepareRaw("select WINDOWX1, WINDOWX2, WINDOWY1, WINDOWY2 from Model");
  if (st.Step()) {
    w.Left = std::min(st.GetDouble(0), st.GetDouble(1));
    w.Right = std::max(st.GetDouble(0), st.GetDouble(1));
    w.Bottom = std::min(st.GetDouble(2), st.GetDouble(3));
    w.Top = std::max(st.GetDouble(2), st.GetDouble(3));
  }
  return w;
}

int BadUsage(std::ostream& err, const std::string& message) {
  err << "tarnocmd: " << message << "\n";
  err << "Run \"tarnocmd help\" for the usage.\n";
  return 2;
}

bool CheckProject(const std::string& path, std::ostream& err) {
  const ProjectFileProbe probe = ProbeProjectFile(path);
  if (probe.state != ProjectFileState::Project) {
    err << ProbeTitle(probe) << ": " << ProbeMessage(path, probe) << "\n";
    return false;
  }
  if (probe.version != kProjectVersion) {
    err << "tarnocmd: " << path << " is a project of version " << probe.version
        << "; open it in TARNO, which brings it to version " << kProjectVersion << "\n";
    return false;
  }
  return true;
}

void RemoveSolution(const std::string& path, UserInterface& ui, std::ostream& out) {
  BatchProject project;
  {
    Database db = Database::Open(path);
    LoadBatchProject(db, project);
  }
  BlockingWaiter waiter;
  SolveContext ctx;
  ctx.projectPath = path;
  ctx.settings = &project.settings;
  ctx.state = &project.state;
  ctx.ui = &ui;
  ctx.waiter = &waiter;
  if (InvalidateSolution(ctx, false, false)) out << "The solution of the old model was removed.\n";
}

}  // namespace tarno::cmd
