#include "store/lifecycle.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "core/error_trap.h"
#include "core/text.h"
#include "store/database.h"
#include "store/default_dirs.h"
#include "store/lifecycle_basename.h"
#include "store/project_file.h"
#include "store/schema.h"

namespace tarno {

namespace fs = std::filesystem;
namespace lt = lifecycle_text;

// ---------------------------------------------------------------------------
// Texts.

const std::vector<std::string>& FileErrorLines() {
  static const std::vector<std::string> lines = {"Cannot remove the previous project database",
                                                 "Please exit TARNO and try again"};
  return lines;
}

const std::vector<std::string>& ReadOnlyLines() {
  // "before before" is the message as users know it.
  static const std::vector<std::string> lines = {
      "Could not open project. The specified project database",
      "is read-only. You must disable the read-only attribute of",
      "the project file before before opening this project."};
  return lines;
}

const std::vector<std::string>& VersionUpdateLines() {
  static const std::vector<std::string> lines = {
      "The project database needs to be updated for use with this version of TARNO.",
      "If you press Yes, the project will be updated.  This will make the project",
      "incompatible with older versions of TARNO.",
      "",
      "Do you wish to update the project database?"};
  return lines;
}

const std::vector<std::string>& NewerVersionLines() {
  static const std::vector<std::string> lines = {
      "The project database was written by a newer version of TARNO.",
      "It is incompatible with this version.  Please update TARNO",
      "before using this project database."};
  return lines;
}

const std::vector<std::string>& BasePathQuestionLines() {
  static const std::vector<std::string> lines = {
      "Your Project File and your Intermediate Model Files are not set in the same place!",
      "This may cause problems. Would you like TARNO to set your Intermediate Model File path "
      "to your project path?"};
  return lines;
}

std::vector<std::string> MissingBBMLines(const std::string& mapName) {
  return {"TARNO cannot load the project because the BBM basemap file",
          "     " + mapName,
          "was not found at its specified location.  It is possible that the file has",
          "been moved from its original location.  Would you like to locate the file?",
          "If you press No, the basemap file will be removed from the project.",
          "NOTE: You may click No and reselect all the BBM files at once in",
          "Project Settings in the Project menu after the project has been opened."};
}

const std::vector<std::string>& PleaseNoteLines() {
  static const std::vector<std::string> lines = {
      "The directories specified in the project file are not accessible.",
      "the files may have been moved. The project drive has been changed",
      "to the current directory.  Use the Project/Basemap Settings ",
      "command to change this."};
  return lines;
}

std::vector<std::string> CannotUpgradeLines(const std::string& path, int version) {
  return {"This version of TARNO cannot yet update a project database of version " +
              std::to_string(version) + ":",
          "     " + path,
          "The project database was left unchanged and has not been opened."};
}

// ---------------------------------------------------------------------------
// Helpers.

std::string StripCommandLineQuotes(const std::string& text) {
  std::string s = text;
  if (!s.empty() && s.back() == '"') s.pop_back();
  if (!s.empty() && s.front() == '"') s.erase(0, 1);
  return s;
}

bool IsReadOnlyFile(const std::string& path) {
  struct stat st {};
  if (::stat(path.c_str(), &st) != 0) return false;
  if (!S_ISREG(st.st_mode)) return false;
  if ((st.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0) return true;
  return ::access(path.c_str(), W_OK) != 0;
}

double EditGridStep(double spacing) {
  if (!(spacing > 0) || !std::isfinite(spacing)) return 1.0;
  // The quotient of the two logarithms, floored, as the grid has always done it.
  return std::pow(10.0, std::floor(std::log(spacing) / std::log(10.0)));
}

namespace {

std::string EnvOrEmpty(const char* name) {
  const char* v = std::getenv(name);
  return v ? std::string(v) : std::string();
}

std::string ExecutableDirectory() {
  std::error_code ec;
  fs::path exe = fs::read_symlink("/proc/self/exe", ec);
  if (ec || exe.empty()) {
    fs::path cwd = fs::current_path(ec);
    return ec ? std::string("/") : WithClosingSeparator(cwd.string());
  }
  return WithClosingSeparator(exe.parent_path().string());
}

std::string ProcessCurrentDirectory() {
  std::error_code ec;
  fs::path cwd = fs::current_path(ec);
  return ec ? std::string() : cwd.string();
}

std::string LowerCase(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

// Case-blind comparison of two directories, each with its closing separator.
bool SameDirectory(const std::string& a, const std::string& b) {
  const std::string x = WithClosingSeparator(a), y = WithClosingSeparator(b);
  if (x.size() != y.size()) return false;
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(x[i])) !=
        std::tolower(static_cast<unsigned char>(y[i])))
      return false;
  }
  return true;
}

bool AccessibleDirectory(const std::string& dir) {
  std::error_code ec;
  if (dir.empty() || !fs::is_directory(dir, ec)) return false;
  return ::access(dir.c_str(), X_OK) == 0;
}

bool EndsWithBBM(const std::string& name) {
  if (name.size() < 4) return false;
  std::string ext = name.substr(name.size() - 4);
  for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return ext == ".bbm";
}

// The directory of a file with its closing separator; the current directory for a
// bare name.
std::string DirectoryOfFile(const std::string& path) {
  std::string dir = GetPathFromFile(path);
  if (dir.empty()) dir = WithClosingSeparator(ProcessCurrentDirectory());
  return dir;
}

// Makes a relative path absolute against the current directory; the project's
// path is held in full.
std::string AbsolutePath(const std::string& path) {
  std::error_code ec;
  fs::path p = fs::absolute(path, ec);
  return ec ? path : p.lexically_normal().string();
}

}  // namespace

// ---------------------------------------------------------------------------
// ProjectSession.

ProjectSession::ProjectSession(UserInterface& ui, SessionHooks& hooks,
                               std::string applicationDirectory)
    : ui_(ui), hooks_(hooks) {
  applicationDirectory_ = applicationDirectory.empty()
                              ? ExecutableDirectory()
                              : WithClosingSeparator(applicationDirectory);
  projectDirectory_ = applicationDirectory_;
  std::string home = EnvOrEmpty("HOME");
  if (home.empty()) home = ProcessCurrentDirectory();
  defaultProjectDirectory_ = WithClosingSeparator(home) + "Documents/TARNO projects/";
  std::string data = EnvOrEmpty("XDG_DATA_HOME");
  applicationDataDirectory_ = data.empty() ? WithClosingSeparator(home) + ".local/share/tarno/"
                                           : WithClosingSeparator(data) + "tarno/";
  caption_ = lt::kProductTitle;
  baseNameSource_ = [] { return DefaultBaseNameNow(); };
}

ProjectSession::~ProjectSession() {
  try {
    if (projectOpen_) CloseAllBody();
  } catch (...) {
    // A destructor must not throw; the file stands as it was last written.
  }
}

void ProjectSession::RememberDirectory(const std::string& key, const std::string& file) {
  // The file dialog of the original made the chosen directory the current one and
  // the memory stored the current directory; here the directory is passed directly.
  std::string dir = DirectoryOfFile(file);
  if (dir.size() > 1 && dir.back() == '/') dir.pop_back();
  DefaultDirectoriesIn(DefaultDirectoriesFile(), key, DirectoryMode::Write, dir);
}

std::string ProjectSession::RememberedDirectory(const std::string& key) {
  return DefaultDirectories(key, DirectoryMode::Read);
}

bool ProjectSession::AskFileExists(const std::string& path) {
  const Answer a = ui_.MessageBoxStyle(lt::kFileExistsTitle, {path + lt::kFileExistsSuffix}, 49);
  if (a != Answer::OK) {
    ui_.MessageBox(lt::kAbortedTitle, {lt::kAbortedText});
    return false;
  }
  return true;
}

// --- FileNewProject --------------------------------------------------------

bool ProjectSession::FileNewProject() {
  bool opened = false;
  RunOperation(ui_, "FileNewProject", [&] {
    FileDialogRequest req;
    req.title = lt::kNewProjectTitle;
    req.defaultExtension = "wrk";
    req.filter = lt::kProjectFilter;
    req.initialDirectory = RememberedDirectory(kOpenProjectPathKey);
    std::optional<std::string> chosen = ui_.SaveFileDialog(req);
    if (!chosen || chosen->empty()) return;
    const std::string path = AbsolutePath(*chosen);
    RememberDirectory(kOpenProjectPathKey, path);

    if (FileExists(path)) {
      if (!AskFileExists(path)) return;
      CloseProjectBody();
      std::error_code ec;
      if (!fs::remove(path, ec) || ec) {
        ui_.MessageBox(lt::kFileErrorTitle, FileErrorLines());
        return;
      }
    }

    CloseProjectBody();
    wizard_.Reset();
    ui_.ShowModal(wizard_);
    if (wizard_.Result != NewDatabaseWizard::kCreate) {
      // Closing the wizard's window without a button counts as Abort.
      CloseProjectBody();
      return;
    }
    bool made = RunOperation(ui_, "DBNewDatabase", [&] {
      DBNewDatabase(path, wizard_.Description, wizard_.BasemapMeters, wizard_.ComputeMeters);
      // The solver files go beside the new project: the folder chosen in the file
      // dialog, not the one the program was started in.
      Database db = Database::Open(path);
      Statement st = db.Prepare("update Project set TARNOBasePath = ?;");
      st.Bind(1, fs::path(path).parent_path().string());
      st.Run();
    });
    if (!made) return;
    opened = FileOpenProject(path, false, true, true);
    hooks_.SetUpToolbar();
  });
  return opened && projectOpen_;
}

// --- FileOpenProject -------------------------------------------------------

bool ProjectSession::FileOpenProject(const std::string& path, bool fromDialog, bool isNew,
                                     bool makeBaseName) {
  bool opened = false;
  // Errors of opening belong to the solver's error analysis, which comes with the
  // solve cycle; until then they go to the general trap under this name.
  RunOperation(ui_, "FileOpenProject",
               [&] { opened = OpenProjectBody(path, fromDialog, isNew, makeBaseName); });
  if (!projectOpen_) {
    // A refused or failed opening leaves no project: the captions and the project
    // directory are those of no project, not those of the refused file.
    caption_ = lt::kProductTitle;
    hooks_.SetCaption(caption_);
    settings_.Caption = ProjectSettings::kPlainCaption;
    projectDirectory_ = applicationDirectory_;
  }
  return opened && projectOpen_;
}

// Steps 5 to 8 of opening: the read-only refusal, the bad-file recognition, the
// offer to create a missing file and the version check. Returns whether opening
// goes on.
bool ProjectSession::CheckFileBeforeOpening(const std::string& path, bool& isNew) {
  if (IsReadOnlyFile(path)) {
    ui_.MessageBox(lt::kReadOnlyTitle, ReadOnlyLines());
    return false;
  }

  ProjectFileProbe probe = ProbeProjectFile(path);
  if (probe.state == ProjectFileState::MissingButCompacted) {
    std::vector<std::string> lines = {ProbeMessage(path, probe),
                                      "Put the copy back and open the project?"};
    if (!ui_.Question(lt::kRestoreTitle, lines, Icon::Exclamation)) return false;
    if (!RestoreCompactedCopy(path)) {
      ui_.MessageBox(lt::kRestoreTitle,
                     {"The copy could not be put back in place of " + path + ".",
                      "Nothing has been changed."});
      return false;
    }
    probe = ProbeProjectFile(path);
  }

  if (probe.state == ProjectFileState::Missing) {
    if (ui_.MessageBoxStyle(lt::kNoSuchFileTitle, {lt::kNoSuchFileText}, 52) != Answer::Yes)
      return false;
    bool made = RunOperation(ui_, "DBNewDatabase", [&] {
      DBNewDatabase(path, wizard_.Description, wizard_.BasemapMeters, wizard_.ComputeMeters);
    });
    if (!made) return false;
    isNew = true;
    probe = ProbeProjectFile(path);
  }

  if (probe.state != ProjectFileState::Project) {
    ui_.MessageBox(ProbeTitle(probe), {ProbeMessage(path, probe)}, Buttons::OK, Icon::Critical);
    return false;
  }

  if (probe.version < kCurrentVersion) {
    if (ui_.MessageBoxStyle(lt::kVersionUpdateTitle, VersionUpdateLines(), 52) != Answer::Yes) {
      ui_.MessageBox(lt::kMustUpdateTitle, {lt::kMustUpdateText});
      return false;
    }
    // The schema upgrade chain is later work: without an upgrader the file is left
    // untouched and not opened.
    if (!upgrader_) {
      ui_.MessageBox(lt::kCannotUpgradeTitle, CannotUpgradeLines(path, probe.version),
                     Buttons::OK, Icon::Exclamation);
      return false;
    }
    if (!upgrader_(path, probe.version)) return false;
  } else if (probe.version > kCurrentVersion) {
    ui_.MessageBox(lt::kNewerVersionTitle, NewerVersionLines());
    return false;
  }
  return true;
}

bool ProjectSession::OpenProjectBody(std::string path, bool fromDialog, bool isNew,
                                     bool makeBaseName) {
  // 1. The file dialog when no path is given.
  const std::string startDir = RememberedDirectory(kOpenProjectPathKey);
  if (path.empty()) {
    FileDialogRequest req;
    req.title = lt::kOpenProjectTitle;
    req.defaultExtension = "trn";
    req.filter = lt::kProjectFilter;
    req.initialDirectory = startDir;
    hooks_.EnableLayerMenu(false);
    std::optional<std::string> chosen = ui_.OpenFileDialog(req);
    hooks_.EnableLayerMenu(true);
    if (!chosen || chosen->empty()) return false;
    path = *chosen;
    fromDialog = true;
  }
  path = AbsolutePath(StripCommandLineQuotes(path));

  // 2. An open project is closed first.
  if (projectOpen_) CloseProjectBody();

  // 3. Directory memory and captions.
  RememberDirectory(kOpenProjectPathKey, path);
  const std::string fileName = GetNameFromFile(path);
  caption_ = fileName + " - " + lt::kProductTitle;
  hooks_.SetCaption(caption_);
  settings_.Caption = fileName + " - Project Settings";

  // 4. The project directory.
  projectDirectory_ = DirectoryOfFile(path);

  // 5 to 8.
  if (!CheckFileBeforeOpening(path, isNew)) return false;

  // 9. Open the cursors: the base maps are checked and the settings read.
  if (!OpenCursors(path)) return false;

  // 10. The default base name of a new project.
  std::string baseName;
  if (makeBaseName) {
    baseName = baseNameSource_();
    settings_.TARNOBaseName = baseName;
    settings_.BaseName = baseName;
  }

  // 11. A new project's settings must be confirmed: Cancel is disabled.
  if (settings_.Result != ProjectSettings::kOK && isNew) {
    settings_.ModelCompUnits = wizard_.ComputeMeters;
    settings_.ModelMapUnits = wizard_.BasemapMeters;
    if (makeBaseName) settings_.BaseName = baseName;
    settings_.CancelEnabled = false;
    ui_.ShowModal(settings_);
    settings_.CancelEnabled = true;
    if (settings_.Result != ProjectSettings::kOK) {
      settings_.DBName.clear();
      return false;
    }
  }

  // 12. The solver files belong beside the project file.
  if (!SameDirectory(projectDirectory_, settings_.TARNOPath)) {
    if (ui_.MessageBoxStyle(lt::kBasePathTitle, BasePathQuestionLines(), 36) == Answer::Yes) {
      std::string dir = projectDirectory_;
      if (dir.size() > 1 && dir.back() == '/') dir.pop_back();
      settings_.SetSolverPath(dir);
    }
  }
  projectOpen_ = true;
  history_.Attach(path);

  // 13. Layers and selection.
  hooks_.SetUpLayers();
  hooks_.ElemTurnOffSelection();

  // 14. Units, window, margins and the editor grid from the Model row.
  ReadModel(path);

  // 15 to 17. Menus, map and the checks of an opened project.
  hooks_.SetHydrologicUnitEntries(farField_, nearField_);
  hooks_.TurnOnMenus();
  hooks_.ZoomActions(false);
  hooks_.EnableMouse();
  hooks_.EnableProjectCommands(true);
  hooks_.SetCaption(caption_);
  ui_.Activity(lt::kSelectActivity);
  ui_.Feedback(lt::kSelectFeedback);
  hooks_.SetUpToolbar();
  // The label and gradient checks and the integrity check and repair are later
  // work; the hooks do nothing until then.
  hooks_.CheckGradient(*this);
  hooks_.DBIntegrity(*this);
  (void)fromDialog;
  return true;
}

// Writing DBName: the base maps are checked (a missing .bbm file is located or
// removed, a missing map of another kind stays), then the settings are read and the
// directory of the solver files is checked.
bool ProjectSession::OpenCursors(const std::string& path) {
  {
    Database db = Database::Open(path);
    std::vector<std::pair<std::int64_t, std::string>> maps;
    {
      Statement st = db.PrepareRaw("select rowid, MapName from Basemaps;");
      while (st.Step()) maps.emplace_back(st.GetInt64(0), st.GetText(1));
    }
    for (const auto& [rowid, name] : maps) {
      if (FileExists(name) || !EndsWithBBM(name)) continue;
      if (ui_.MessageBox(lt::kMissingBBMTitle, MissingBBMLines(name), Buttons::YesNo) ==
          Answer::Yes) {
        FileDialogRequest req;
        req.title = lt::kSelectBasemapTitle;
        req.defaultExtension = "bbm";
        req.filter = "BBM Basemap Files (*.bbm)|*.bbm";
        req.initialDirectory = DirectoryOfFile(name);
        req.initialFile = GetNameFromFile(name);
        std::optional<std::string> chosen = ui_.OpenFileDialog(req);
        // A cancelled search leaves the row as it is.
        if (chosen && !chosen->empty()) {
          Statement up = db.PrepareRaw("update Basemaps set MapName = ? where rowid = ?;");
          up.Bind(1, *chosen);
          up.Bind(2, rowid);
          up.Run();
        }
      } else {
        Statement del = db.PrepareRaw("delete from Basemaps where rowid = ?;");
        del.Bind(1, rowid);
        del.Run();
      }
    }
  }

  settings_.Load(path);

  if (!AccessibleDirectory(settings_.TARNOPath)) {
    settings_.SetSolverPath(ProcessCurrentDirectory());
    ui_.MessageBox(lt::kPleaseNoteTitle, PleaseNoteLines());
  }
  return true;
}

void ProjectSession::ReadModel(const std::string& path) {
  Database db = Database::Open(path);
  {
    Statement st = db.Prepare("Select * from Model");
    if (!st.Step()) throw Error("The Model table of " + path + " has no row");
    unitsText_ = st.GetBool("BasemapMeters") ? " m" : " ft";
    window_.x1 = st.GetDouble("WINDOWX1");
    window_.x2 = st.GetDouble("WINDOWX2");
    window_.y1 = st.GetDouble("WINDOWY1");
    window_.y2 = st.GetDouble("WINDOWY2");
    marginLeft_ = st.GetDouble("MARGINLeft");
    marginRight_ = st.GetDouble("MARGINRight");
    marginTop_ = st.GetDouble("MARGINTop");
    marginBottom_ = st.GetDouble("MARGINBottom");
    marginDrawBox_ = st.GetInt64("MARGINDrawBox") != 0;
    editGridSpacing_ = st.GetDouble("EDITGRIDSpacing");
    editGridShow_ = st.GetBool("EDITGRIDShow");
    editGridSnap_ = st.GetBool("EDITGRIDSnap");
    storeMatrixOnDisk_ = st.GetInt64("StoreMatrixOnDisk") != 0;
  }
  {
    Statement st = db.Prepare("select count(*) from Domains where FarFieldBoundary=True;");
    farField_ = st.Step() && st.GetInt64(0) > 0;
  }
  {
    Statement st = db.Prepare("select count(*) from Domains where farfieldBoundary=false;");
    nearField_ = st.Step() && st.GetInt64(0) > 0;
  }
  db.Close();
  // The model's extents widen a window that lies outside them (later work).
  hooks_.ModelCheckExtents(*this, window_);
  hooks_.SetEditGridChecks(editGridShow_, editGridSnap_);
}

// --- FileSaveAs --------------------------------------------------------------

bool ProjectSession::FileSaveAs() {
  bool done = false;
  RunOperation(ui_, "FileSaveAs", [&] {
    const std::string present = settings_.DBName;
    if (!projectOpen_ || present.empty()) return;
    FileDialogRequest req;
    req.title = lt::kSaveAsTitle;
    req.defaultExtension = "trn";
    req.filter = lt::kProjectFilter;
    req.initialDirectory = projectDirectory_;
    std::optional<std::string> chosen = ui_.SaveFileDialog(req);
    if (!chosen || chosen->empty()) return;
    const std::string target = AbsolutePath(*chosen);
    std::error_code ec;
    const bool same = fs::equivalent(target, present, ec) && !ec;
    if (FileExists(target)) {
      if (!AskFileExists(target)) return;
      // Saving a project onto itself must not remove it.
      if (!same && (!fs::remove(target, ec) || ec)) {
        ui_.MessageBox(lt::kFileErrorTitle, FileErrorLines());
        return;
      }
    }
    const std::string originalBase = settings_.TARNOBaseName;
    const std::string originalPath = settings_.TARNOPath;
    CloseProjectBody();
    if (!same) {
      fs::copy_file(present, target, fs::copy_options::overwrite_existing, ec);
      if (ec) throw Error("Cannot copy " + present + " to " + target + ": " + ec.message());
    }
    done = FileOpenProject(target);
    if (done && !same) GiveCopyItsOwnBaseName(target, present, originalBase, originalPath);
    hooks_.SetUpToolbar();
  });
  return done;
}

// A copy whose solver files would stand in the folder of the original's under the
// same base name would overwrite the original's run files at its next solve (and
// the original's at the copy's). It gets a base name of its own, derived from its
// file name, written at once and shown in the settings dialog, where it may be
// changed to any name but the original's.
void ProjectSession::GiveCopyItsOwnBaseName(const std::string& copy, const std::string& original,
                                            const std::string& originalBase,
                                            const std::string& originalPath) {
  if (!SameDirectory(settings_.TARNOPath, originalPath)) return;
  if (LowerCase(settings_.TARNOBaseName) != LowerCase(originalBase)) return;
  const std::string derived =
      DerivedBaseName(fs::path(copy).stem().string(), settings_.TARNOPath, {originalBase});
  {
    Database db = Database::Open(copy);
    Statement st = db.Prepare("update Project set TARNOBaseName = ?;");
    st.Bind(1, derived);
    st.Run();
  }
  settings_.Load(copy);
  settings_.TakenBaseNames = {originalBase};
  settings_.TakenFolder = originalPath;
  settings_.TakenBy = "the project " + original;
  settings_.CancelEnabled = false;
  ui_.ShowModal(settings_);
  settings_.CancelEnabled = true;
  settings_.TakenBaseNames.clear();
  settings_.TakenFolder.clear();
  settings_.TakenBy.clear();
  settings_.BaseName = settings_.TARNOBaseName;
  settings_.BasePath = settings_.TARNOPath;
}

// --- FileCloseProject, CloseAll --------------------------------------------

void ProjectSession::CloseProjectBody() {
  hooks_.ElemTurnOffSelection();
  CloseAllBody();
  hooks_.TurnOffMenus();
  hooks_.SetUpToolbar();
  hooks_.ClearProjectViews();
  caption_ = lt::kProductTitle;
  hooks_.SetCaption(caption_);
  settings_.Caption = ProjectSettings::kPlainCaption;
  projectDirectory_ = applicationDirectory_;
  hooks_.EnableProjectCommands(false);
}

bool ProjectSession::FileCloseProject() {
  return RunOperation(ui_, "FileCloseProject", [&] { CloseProjectBody(); });
}

bool ProjectSession::CloseAllBody() {
  if (!projectOpen_) return true;
  projectOpen_ = false;
  history_.Detach();
  hooks_.ZoomActions(true);
  const std::string path = settings_.DBName;
  settings_.DBName.clear();
  if (path.empty()) return true;
  ui_.PleaseWaitShow(lt::kCompactingText, 3000);
  // Compaction failures leave the file as it was; they are not reported.
  const bool compacted = CompactProject(path);
  ui_.PleaseWaitHide();
  return compacted;
}

bool ProjectSession::CloseAll() {
  return RunOperation(ui_, "CloseAll", [&] { CloseAllBody(); });
}

// --- FileProjectSettings, UnitChange ----------------------------------------

bool ProjectSession::FileProjectSettings() {
  return RunOperation(ui_, "FileProjectSettings", [&] {
    if (!projectOpen_ || settings_.DBName.empty()) return;
    settings_.LoadUnits();
    settings_.MustRedraw = false;
    settings_.Reload = false;
    settings_.CancelEnabled = true;
    const bool compUnits = settings_.ModelCompUnits, mapUnits = settings_.ModelMapUnits;
    ui_.ShowModal(settings_);
    if (settings_.Result == ProjectSettings::kOK) {
      settings_.BaseName = settings_.TARNOBaseName;
      settings_.BasePath = settings_.TARNOPath;
    }
    // "Change Units..." writes the new designations at once, whichever button
    // closes the dialog afterwards.
    if (compUnits != settings_.ModelCompUnits || mapUnits != settings_.ModelMapUnits) {
      ApplyUnitChange();
    } else if (settings_.Reload || settings_.MustRedraw) {
      hooks_.SetUpLayers();
      hooks_.ZoomActions(false);
    }
  });
}

void ProjectSession::ApplyUnitChange() {
  if (!projectOpen_ || settings_.DBName.empty()) return;
  hooks_.UnitsChanged();
  hooks_.SetUpLayers();
  ReadModel(settings_.DBName);
  hooks_.ZoomActions(false);
}

bool ProjectSession::UnitChange() {
  bool changed = false;
  RunOperation(ui_, "UnitChange", [&] {
    if (settings_.DBName.empty()) return;
    // Only the stored designation changes, no number; what the session derived
    // from the old designations is derived anew.
    const bool compUnits = settings_.ModelCompUnits, mapUnits = settings_.ModelMapUnits;
    changed = settings_.ChangeUnits(ui_);
    if (compUnits != settings_.ModelCompUnits || mapUnits != settings_.ModelMapUnits)
      ApplyUnitChange();
  });
  return changed;
}

}  // namespace tarno
