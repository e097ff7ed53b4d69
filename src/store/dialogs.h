// The dialog models of the project life cycle: the new-project wizard, the project
// settings dialog and the unit change dialog.
//
// A dialog model holds the dialog's fields and implements its buttons; the caller
// fills the fields, shows it with UserInterface::ShowModal and reads Result. The
// views (Qt widgets) map to these models by DialogName(); tests drive the models
// through a scripted user interface port.
#pragma once

#include <string>
#include <vector>

#include "core/ui_port.h"

namespace tarno {

// ---------------------------------------------------------------------------
// New-project wizard.

class NewDatabaseWizard : public DialogModel {
 public:
  static constexpr int kCreate = 1;
  static constexpr int kAbort = 3;
  static constexpr const char* kName = "NewDatabaseWizard";
  static constexpr const char* kTitle =
      "New Database Wizard                                    (F1 for help)";
  // The default description: the text and a line end.
  static constexpr const char* kDefaultDescription = "New TARNO Project\n";
  // The captions of the options and buttons.
  static constexpr const char* kComputeFeetCaption = "Feet and Days";
  static constexpr const char* kComputeMetersCaption = "Meters and Days";
  static constexpr const char* kMapFeetCaption = "Feet";
  static constexpr const char* kMapMetersCaption = "Meters";
  static constexpr const char* kCreateCaption = "Create Database";
  static constexpr const char* kAbortCaption = "Abort";

  std::string DialogName() const override { return kName; }
  std::string Title() const { return kTitle; }

  // Puts the fields back to their defaults; Result to Abort, so that a window
  // closed without either button aborts.
  void Reset();

  // The two buttons: "Create Database" (Result 1) and "Abort" (Result 3).
  void Create() { Result = kCreate; }
  void Abort() { Result = kAbort; }

  int Result = kAbort;
  std::string Description = kDefaultDescription;
  // Units: true for metres. Both options start on metres.
  bool BasemapMeters = true;
  bool ComputeMeters = true;
};

// ---------------------------------------------------------------------------
// Unit change: the two unit designations of the model, with the warning that
// comes before the dialog.

class UnitChange : public DialogModel {
 public:
  static constexpr int kOK = 1;
  static constexpr int kCancel = 2;
  static constexpr const char* kName = "UnitChange";

  std::string DialogName() const override { return kName; }

  void OK() { Result = kOK; }
  void Cancel() { Result = kCancel; }

  int Result = kCancel;
  bool ComputeMeters = true;
  bool BasemapMeters = true;
};

// The STOP! warning shown before the unit change dialog.
inline constexpr const char* kUnitChangeWarningTitle =
    "                                           STOP!";
const std::vector<std::string>& UnitChangeWarningLines();
inline constexpr const char* kReopenProjectTitle = "Reopen Project";
const std::vector<std::string>& ReopenProjectLines();

// "Meters" or "Feet", the texts of the read-only unit fields.
std::string UnitText(bool meters);

// What keeps the solver files <directory>/<baseName>.* from being written: an
// empty text when nothing does, else one sentence that names the name or the path
// (a bad base name, a missing folder, a path that is not a folder, a folder or a
// command file that cannot be written).
std::string SolverFilesProblem(const std::string& directory, const std::string& baseName);

// ---------------------------------------------------------------------------
// Project settings.

class ProjectSettings : public DialogModel {
 public:
  static constexpr int kOK = 1;
  static constexpr int kCancel = 2;
  static constexpr const char* kName = "ProjectSettings";
  static constexpr const char* kPlainCaption = "Project Settings";
  static constexpr const char* kBadNameTitle = "Bad file name";
  static constexpr const char* kBadNameText =
      "Base file name must be less than 8 characters, with no spaces";
  static constexpr int kMaxBaseNameLength = 8;
  // The checks of a name the file system would refuse, of a missing folder and of
  // a folder where no file can be written.
  static constexpr const char* kBadNameCharactersText =
      "Base file name must not contain any of the characters / \\ : * ? \" < > |";
  static constexpr const char* kBadPathTitle = "Bad path";
  static constexpr const char* kCreateFolderTitle = "Create Folder?";

  std::string DialogName() const override { return kName; }

  // Fills the fields from the project file at `dbName`: Project.Description,
  // TARNOBaseName, TARNOBasePath, the Model's two units and the list of base maps.
  // Remembers the names and the path for Cancel. Throws StoreError.
  void Load(const std::string& dbName);
  // Reads the Model's two units into ModelCompUnits and ModelMapUnits.
  void LoadUnits();

  // OK: checks the base name (trimmed; at most 8 characters, no blank, not empty,
  // none of the characters a file name may not hold) and the path (it must be a
  // folder where files can be written; a missing one is offered to be created).
  // A bad name or path shows its message and the dialog stays (returns false). A
  // good one writes the description, the name and the path to the Project row, sets
  // TARNOBaseName, TARNOPath and Result 1, and the dialog hides (returns true).
  bool OK(UserInterface& ui);
  // The field that the last refused OK named, so that the view puts the cursor
  // there; None after an accepted OK.
  enum class Field { None, BaseName, Path };
  Field Refused = Field::None;
  // Cancel: Result 2, the names and path of Load are written back; the dialog
  // hides. Does nothing (and returns false) while Cancel is disabled.
  bool Cancel();
  // Moves the solver files to `dir` (the opening's own choice, not the user's
  // edit): written to the Project row and kept as the path that Cancel restores.
  void SetSolverPath(const std::string& dir);
  // The "Change Units..." button: the STOP! warning, the UnitChange dialog, the new
  // designations written to Model and the "Reopen Project" message. Returns true
  // when the units were written.
  bool ChangeUnits(UserInterface& ui);

  // Whether a base file name passes the OK check (after trimming).
  static bool ValidBaseName(const std::string& name);
  // Whether a base file name holds a character that no file name may hold here or
  // on the other systems a project may be carried to (/ \ : * ? " < > |, control
  // characters), or is made of dots only.
  static bool HasBadFileCharacters(const std::string& name);

  // Base names that the dialog refuses for the present path (a project copied into
  // the folder of its original must not share the original's solver files); empty
  // unless the caller sets it. The message names the project that uses the name.
  std::vector<std::string> TakenBaseNames;
  std::string TakenFolder;
  std::string TakenBy;

  // State.
  std::string DBName;          // full path of the open file
  std::string Caption = kPlainCaption;
  int Result = kOK;            // 1 OK, 2 Cancel; -1 after loading a project with no base maps
  bool MustRedraw = false;
  bool Reload = false;
  bool CancelEnabled = true;

  // Fields.
  std::string Description;     // ProjectDesc
  std::string BaseName = "basefile";  // the text field
  std::string BasePath;        // the directory of the solver files (no drive on this platform)
  std::vector<std::string> BaseMaps;

  // The stored values.
  std::string TARNOBaseName;
  std::string TARNOPath;
  bool ModelCompUnits = true;  // true: metres
  bool ModelMapUnits = true;
  std::string CompUnits() const { return UnitText(ModelCompUnits); }
  std::string MapUnits() const { return UnitText(ModelMapUnits); }

  // The model of the unit change dialog, reused between showings.
  UnitChange UnitChangeDialog;

 private:
  void WriteNames(const std::string& name, const std::string& path, const std::string* description);
  std::string savedBaseName_;
  std::string savedBasePath_;
};

}  // namespace tarno
