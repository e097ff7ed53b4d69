// The estimation commands of tarnocmd: the PEST files of a project, and the import
// of a PEST parameter file.
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <ostream>

#include "calibration/estimation_support.h"
#include "calibration/pest_files.h"
#include "calibration/pest_import.h"
#include "core/console_ui.h"
#include "solver/process.h"
#include "solver/solve_controller.h"
#include "store/database.h"
#include "store/project_file.h"
#include "tarnocmd_commands.h"

namespace tarno::cmd {

namespace fs = std::filesystem;

namespace {

bool IsProject(const std::string& path, std::ostream& err) {
  const ProjectFileProbe probe = ProbeProjectFile(path);
  if (probe.state == ProjectFileState::Project) return true;
  err << ProbeTitle(probe) << ": " << ProbeMessage(path, probe) << "\n";
  return false;
}

}  // namespace

int Pest(const std::string& path, std::ostream& out, std::ostream& err) {
  if (!IsProject(path, err)) return 1;
  ConsoleUserInterface ui(err, Answer::OK);
  BatchRun run;
  if (!OpenBatchRun(path, ui, run, err, ProjectWindow)) return 1;
  SolveContext& ctx = run.ctx;
  try {
    // No prompt and no closing message: the written files are listed here.
    const auto written = WritePestFiles(ctx, nullptr, false);
    if (written.empty()) return 1;
    for (const fs::path& p : written) out << p.string() << "\n";
  } catch (const std::exception& e) {
    err << "tarnocmd: the PEST files were not written: " << e.what() << "\n";
    return 1;
  }
  return 0;
}

int ImportPar(const std::string& path, const std::string& parFile, std::ostream& out,
              std::ostream& err) {
  if (!IsProject(path, err)) return 1;
  ConsoleUserInterface ui(err, Answer::OK);
  try {
    Database db = Database::Open(path);
    const EstimationProject p = LoadEstimationProject(db);
    const ParImportResult r = ImportParFile(db, parFile, ui, p.dir / kPestImportLog);
    if (r.imported == 0) return 1;
    for (const std::string& line : r.log) out << line << "\n";
  } catch (const std::exception& e) {
    err << "tarnocmd: the parameters were not imported: " << e.what() << "\n";
    return 1;
  }
  return 0;
}

}  // namespace tarno::cmd
