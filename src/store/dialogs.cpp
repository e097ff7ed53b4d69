#include "store/dialogs.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "core/text.h"
#include "store/database.h"

namespace tarno {

namespace fs = std::filesystem;

namespace {

std::string LowerText(std::string s) {
  for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return s;
}

bool SameFolder(const std::string& a, const std::string& b) {
  std::error_code ec;
  if (fs::equivalent(a, b, ec) && !ec) return true;
  std::string x = a, y = b;
  while (x.size() > 1 && x.back() == '/') x.pop_back();
  while (y.size() > 1 && y.back() == '/') y.pop_back();
  return LowerText(x) == LowerText(y);
}

// The problem of a folder as it stands: empty when files can be written in it.
std::string FolderProblem(const std::string& path) {
  if (path.empty()) return "The path of the solver files is empty.";
  std::error_code ec;
  if (!fs::exists(path, ec)) return "The path " + path + " does not exist.";
  if (!fs::is_directory(path, ec)) return "The path " + path + " is not a folder.";
  if (::access(path.c_str(), W_OK | X_OK) != 0)
    return "No files can be written in the folder " + path + ".";
  return {};
}

}  // namespace

bool ProjectSettings::HasBadFileCharacters(const std::string& name) {
  const std::string trimmed = TrimST(name);
  for (unsigned char c : trimmed) {
    if (c < 32 || c == 127) return true;
    if (std::string_view("/\\:*?\"<>|").find(static_cast<char>(c)) != std::string_view::npos) return true;
  }
  return !trimmed.empty() && trimmed.find_first_not_of('.') == std::string::npos;
}

std::string SolverFilesProblem(const std::string& directory, const std::string& baseName) {
  const std::string name = TrimST(baseName);
  if (name.empty()) return "The base file name of the solver files is empty.";
  if (ProjectSettings::HasBadFileCharacters(name))
    return "The base file name \"" + name + "\" holds a character that a file name may not hold.";
  std::string problem = FolderProblem(directory);
  if (!problem.empty()) return problem;
  // A command file left read-only by an earlier run cannot be replaced.
  for (const std::string& file : {name + ".DAT", std::string("REGRID.DAT")}) {
    const fs::path p = fs::path(directory) / file;
    std::error_code ec;
    if (fs::exists(p, ec) && ::access(p.c_str(), W_OK) != 0)
      return "The command file " + p.string() + " cannot be written.";
  }
  return {};
}

void NewDatabaseWizard::Reset() {
  Result = kAbort;
  Description = kDefaultDescription;
  BasemapMeters = true;
  ComputeMeters = true;
}

const std::vector<std::string>& UnitChangeWarningLines() {
  static const std::vector<std::string> lines = {
      "In general these units should NOT be changed!",
      "These units have been set at the time the database was created.",
      "If a mistake was made at that time, you can redefine the units below.",
      "For instance, if you declared the ",
      "Distance units in Basemap files",
      " to be feet,",
      "but you are using BBM files that have UTM coordinates (meters), you should",
      "change feet into meters for a proper interpretation of the map coordinates.",
      "Warning: When making changes only the unit designation is changed,",
      "                no data conversion takes place.",
      "Do you wish to continue?",
  };
  return lines;
}

const std::vector<std::string>& ReopenProjectLines() {
  static const std::vector<std::string> lines = {
      "You must now close and reopen your project.",
      "Failure to do so may lead to unexpected",
      "results!",
  };
  return lines;
}

std::string UnitText(bool meters) { return meters ? "Meters" : "Feet"; }

bool ProjectSettings::ValidBaseName(const std::string& name) {
  const std::string trimmed = TrimST(name);
  // The message speaks of "less than 8"; eight characters are accepted.
  if (trimmed.empty() || trimmed.size() > static_cast<std::size_t>(kMaxBaseNameLength))
    return false;
  return trimmed.find(' ') == std::string::npos && trimmed.find('\t') == std::string::npos;
}

void ProjectSettings::Load(const std::string& dbName) {
  Database db = Database::Open(dbName);
  {
    Statement st = db.Prepare("select * from Project;");
    if (!st.Step()) throw Error("The Project table of " + dbName + " has no row");
    Description = st.GetText("Description");
    TARNOBaseName = st.GetText("TARNOBaseName");
    TARNOPath = st.GetText("TARNOBasePath");
  }
  {
    Statement st = db.Prepare("select * from Model;");
    if (!st.Step()) throw Error("The Model table of " + dbName + " has no row");
    ModelCompUnits = st.GetBool("ComputeMeters");
    ModelMapUnits = st.GetBool("BasemapMeters");
  }
  BaseMaps.clear();
  {
    Statement st = db.Prepare("select MapName from Basemaps;");
    while (st.Step()) BaseMaps.push_back(st.GetText(0));
  }
  db.Close();
  DBName = dbName;
  BaseName = TARNOBaseName;
  BasePath = TARNOPath;
  savedBaseName_ = TARNOBaseName;
  savedBasePath_ = TARNOPath;
  MustRedraw = false;
  Reload = false;
  // The table tested on loading is the list of base maps: a project without any
  // answers -1, which makes a brand-new project show this dialog.
  Result = BaseMaps.empty() ? -1 : kOK;
}

void ProjectSettings::LoadUnits() {
  Database db = Database::Open(DBName);
  Statement st = db.Prepare("Select * from Model");
  if (!st.Step()) throw Error("The Model table of " + DBName + " has no row");
  ModelCompUnits = st.GetBool("ComputeMeters");
  ModelMapUnits = st.GetBool("BasemapMeters");
}

void ProjectSettings::WriteNames(const std::string& name, const std::string& path,
                                 const std::string* description) {
  Database db = Database::Open(DBName);
  if (description != nullptr) {
    Statement st = db.Prepare("update Project set Description = ?;");
    st.Bind(1, *description);
    st.Run();
  }
  Statement st = db.Prepare("update Project set TARNOBaseName = ?, TARNOBasePath = ?;");
  st.Bind(1, name);
  st.Bind(2, path);
  st.Run();
}

bool ProjectSettings::OK(UserInterface& ui) {
  const std::string name = TrimST(BaseName);
  Refused = Field::BaseName;
  if (!ValidBaseName(name)) {
    ui.MessageBox(kBadNameTitle, {kBadNameText});
    return false;
  }
  if (HasBadFileCharacters(name)) {
    ui.MessageBox(kBadNameTitle, {kBadNameCharactersText});
    return false;
  }
  Refused = Field::Path;
  std::string path = TrimST(BasePath);
  // The path is kept without a closing separator, as a new project stores it.
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  std::error_code ec;
  if (!path.empty() && !fs::exists(path, ec)) {
    if (!ui.Question(kCreateFolderTitle, {"The path " + path + " does not exist.", "Create it?"}))
      return false;
    fs::create_directories(path, ec);
    if (ec) {
      ui.MessageBox(kBadPathTitle, {"The path " + path + " cannot be created: " + ec.message() + ".",
                                    "Please enter another path."});
      return false;
    }
  }
  const std::string problem = FolderProblem(path);
  if (!problem.empty()) {
    ui.MessageBox(kBadPathTitle, {problem, "Please enter another path."});
    return false;
  }
  if (!TakenBaseNames.empty() && SameFolder(path, TakenFolder)) {
    Refused = Field::BaseName;
    for (const std::string& taken : TakenBaseNames) {
      if (LowerText(taken) != LowerText(name)) continue;
      ui.MessageBox(kBadNameTitle, {"Base file name " + name + " is used by " + TakenBy + " in this folder.",
                                    "Please enter another base file name."});
      return false;
    }
  }
  Refused = Field::None;
  BaseName = name;
  WriteNames(name, path, &Description);
  TARNOBaseName = name;
  TARNOPath = path;
  BasePath = path;
  savedBaseName_ = name;
  savedBasePath_ = path;
  Result = kOK;
  return true;
}

bool ProjectSettings::Cancel() {
  if (!CancelEnabled) return false;
  Result = kCancel;
  WriteNames(savedBaseName_, savedBasePath_, nullptr);
  TARNOBaseName = savedBaseName_;
  TARNOPath = savedBasePath_;
  BaseName = savedBaseName_;
  BasePath = savedBasePath_;
  return true;
}

void ProjectSettings::SetSolverPath(const std::string& dir) {
  {
    Database db = Database::Open(DBName);
    Statement st = db.Prepare("update Project set TARNOBasePath = ?;");
    st.Bind(1, dir);
    st.Run();
  }
  TARNOPath = dir;
  BasePath = dir;
  savedBasePath_ = dir;
}

bool ProjectSettings::ChangeUnits(UserInterface& ui) {
  if (!ui.Question(kUnitChangeWarningTitle, UnitChangeWarningLines(), Icon::None))
    return false;
  UnitChangeDialog.ComputeMeters = CompUnits() == "Meters";
  UnitChangeDialog.BasemapMeters = MapUnits() == "Meters";
  UnitChangeDialog.Result = UnitChange::kCancel;
  ui.ShowModal(UnitChangeDialog);
  if (UnitChangeDialog.Result != UnitChange::kOK) return false;
  {
    // Only the designation changes: no stored number is converted.
    Database db = Database::Open(DBName);
    Statement st = db.Prepare("update Model set ComputeMeters = ?, BasemapMeters = ?;");
    st.Bind(1, UnitChangeDialog.ComputeMeters);
    st.Bind(2, UnitChangeDialog.BasemapMeters);
    st.Run();
  }
  ui.MessageBox(kReopenProjectTitle, ReopenProjectLines());
  ModelCompUnits = UnitChangeDialog.ComputeMeters;
  ModelMapUnits = UnitChangeDialog.BasemapMeters;
  return true;
}

}  // namespace tarno
