// The dialogs "PEST" and "UCODE" as models without a window: the lists of input and
// output files, the text box that shows one of them, and the buttons that write the
// files, run the programs, import the results and delete the files.
//
// The Qt views (app/views/pest_view.cpp) show the lists and the text box, pass the
// clicks to these methods and read the fields back. Every question and message goes
// through the UserInterface port of the solve context; the wait for an outside
// program through its ProcessWaiter.
//
// Outside programs are looked up in the program directory, then on the PATH:
// "pest" and "pestchek" for PEST, "perl" and "ucode.pl" for UCODE. A missing one is
// told by the "Executable Missing" message, and nothing runs.
#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "calibration/estimation_support.h"
#include "calibration/pest_files.h"
#include "core/ui_port.h"
#include "solver/solve_controller.h"

namespace tarno {

// What the two dialogs share: the file lists and the text box.
class EstimationFiles {
 public:
  virtual ~EstimationFiles() = default;
  // The dialog's title ("PEST", "UCODE").
  virtual std::string Title() const = 0;
  // Files larger than this are not put into the text box but given to the system's
  // viewer (UserInterface::ShowTextFile).
  static constexpr std::uintmax_t kTextBoxLimit = 4u * 1024u * 1024u;

  explicit EstimationFiles(SolveContext& ctx) : ctx_(ctx) {}
  // The context the dialog works in (the built-in estimator's button runs in it).
  SolveContext& Context() { return ctx_; }

  // The two lists, the entries that exist in the project's folder, in the order of
  // their patterns; and the buttons that depend on them.
  virtual void RefreshLists() = 0;

  // Shows `name` (a file of the project's folder) in the text box. `kind` is "INPUT"
  // (editable), "OUTPUT" or "NEITHER" (read-only, cmdSave disabled).
  void ShowFile(const std::string& name, const std::string& kind);
  // The view's text box changed.
  void EditText(const std::string& text);
  // cmdSave: writes the text box back to the shown file.
  void Save();
  // "Save Changes": when the text box holds unsaved edits, asks and saves on Yes.
  void OfferSave();
  // A click on a list entry: offers to save, then shows the file ("INPUT" for the
  // editable kinds of the list, "OUTPUT" for the output list).
  void InputListClick(const std::string& name);
  void OutputListClick(const std::string& name);
  // cmdDone: offers to save and closes.
  void Done();
  // Clears the text box and the shown file.
  void ClearShown();
  // "Delete All ... Related Files": asks ("Delete PEST Files?"), then removes the
  // project folder's files of the patterns of both lists.
  void DeleteFiles(const std::vector<std::string>& inputs, const std::vector<std::string>& outputs);
  // "Assign Weights": the weights dialog of this program, written back on OK.
  void AssignWeightsOfProgram();

  // The fields the view shows.
  std::vector<std::string> InputFileList;
  std::vector<std::string> OutputFileList;
  std::string TextBox;
  std::string lblFile;
  std::string shownFile;  // the name in the project's folder; empty when none
  bool TextBoxReadOnly = true;
  bool cmdSaveEnabled = false;
  bool textChanged = false;
  bool closed = false;
  // Called with false while an outside program runs, true after.
  std::function<void(bool)> setEnabled;

 protected:
  // The project's folder and base name, read anew for each operation.
  EstimationProject Project() const;
  // The names of `patterns` that exist in the folder.
  std::vector<std::string> Existing(const std::vector<std::string>& patterns) const;
  // Whether the solver left TARNO.OPS in the folder: then its lines are shown as a
  // fatal error and it is removed. True when it was there.
  bool ReportFatalRun();
  // Runs `program` with `args` in the project's folder and waits for it; standard
  // output to `output` when given. The exit status.
  int RunAndWait(const std::filesystem::path& program, const std::vector<std::string>& args,
                 const std::filesystem::path& output = {});
  // Removes every spelling of <base>.DAT but the exact one, and <base>.SOL: the
  // solver takes an exact match of the name first, so a <base>.dat of a plain solve
  // would be solved in place of the file the estimation program writes.
  void RemoveOtherSpellingsOfTheInput(const EstimationProject& p);
  // After a run: the solution is invalidated without a question and <base>.SOL removed.
  void InvalidateAfterRun(const EstimationProject& p);

  SolveContext& ctx_;
};

// The "PEST" dialog.
class PestDialog : public DialogModel, public EstimationFiles {
 public:
  static constexpr const char* kName = "PEST";
  std::string DialogName() const override { return kName; }
  std::string Title() const override { return kName; }

  PestDialog(SolveContext& ctx, TemplatePromptMemory* prompt)
      : EstimationFiles(ctx), prompt_(prompt) {}

  void RefreshLists() override;
  // cmdWritePEST: "Write PEST Input Files".
  void WritePest();
  // cmdPestcheck: writes pestcheck.bat, runs pestchek on <base> with its output in
  // pestcheck.txt, and shows that ("Pestcheck Failed" when there is none).
  void RunPestcheck();
  // cmdRunPEST. False when the user stopped it or the program is missing.
  bool RunPest();
  // cmdImportPEST: imports <base>.par and shows PEST2TARNO.log.
  void ImportPest();
  // "Delete All PEST Related Files".
  void DeleteAll();
  // cmdAssignWeights: the weights dialog for PEST (OPTWeight).
  void AssignWeights();

  bool cmdRunPESTEnabled = false;
  bool cmdImportPESTEnabled = false;

  // The names of the lists' patterns for `base`.
  static std::vector<std::string> InputPatterns(const std::string& base);
  static std::vector<std::string> OutputPatterns(const std::string& base);

 private:
  TemplatePromptMemory* prompt_;
};

}  // namespace tarno
