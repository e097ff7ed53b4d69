// The "UCODE" dialog as a model without a window: the UCODE files, the run of UCODE
// through perl, the deletion of the files. It shares the lists and the text box
// with the PEST dialog (calibration/pest_dialog.h).
#pragma once

#include <string>
#include <vector>

#include "calibration/pest_dialog.h"
#include "calibration/ucode_files.h"

namespace tarno {

class UcodeDialog : public DialogModel, public EstimationFiles {
 public:
  static constexpr const char* kName = "UCODE";
  std::string DialogName() const override { return kName; }
  std::string Title() const override { return kName; }

  UcodeDialog(SolveContext& ctx, TemplatePromptMemory* prompt)
      : EstimationFiles(ctx), prompt_(prompt) {}

  void RefreshLists() override;
  // cmdWriteUCODE: "Write UCODE Input Files".
  void WriteUcode();
  // cmdRunUCODE: "Run UCODE -->": perl with ucode.pl, <base>.uni and <base>. False
  // when the user stopped it or a program is missing.
  bool RunUcode();
  // cmdDeleteAll: "Delete All UCODE Related Files"; the solver's input stays.
  void DeleteAll();
  // cmdAssignWeights: the weights dialog for UCODE (OPTWeight).
  void AssignWeights();

  bool cmdRunUCODEEnabled = false;

  // The output files of UCODE that the list shows: its main output and the data
  // sets of its graphs (<base>.#uout, ._os, ._r, ._w, ._ws, ._sc, ._sd, ._nm, ._mv,
  // ._pa).
  static std::vector<std::string> OutputPatterns(const std::string& base);

 private:
  TemplatePromptMemory* prompt_;
};

}  // namespace tarno
