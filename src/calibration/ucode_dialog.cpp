#include "calibration/ucode_dialog.h"

#include "calibration/estimation_support.h"
#include "calibration/pest_weights.h"
#include "store/database.h"

namespace tarno {

namespace fs = std::filesystem;

std::vector<std::string> UcodeDialog::OutputPatterns(const std::string& base) {
  std::vector<std::string> out;
  for (const char* ext :
       {".#uout", "._os", "._r", "._w", "._ws", "._sc", "._sd", "._nm", "._mv", "._pa"})
    out.push_back(base + ext);
  return out;
}

void UcodeDialog::RefreshLists() {
  const EstimationProject p = Project();
  InputFileList = Existing(UcodeInputFiles(p.base));
  OutputFileList = Existing(OutputPatterns(p.base));
  std::error_code ec;
  cmdRunUCODEEnabled = true;
  for (const std::string& name :
       {p.base + ".uni", p.base + ".pre", p.base + ".ext", p.base + ".tpl"})
    if (!fs::exists(p.dir / name, ec)) cmdRunUCODEEnabled = false;
}

void UcodeDialog::WriteUcode() {
  OfferSave();
  ClearShown();
  WriteUcodeFiles(ctx_, prompt_);
  RefreshLists();
}

bool UcodeDialog::RunUcode() {
  UserInterface& ui = *ctx_.ui;
  if (ctx_.state != nullptr && ctx_.state->SolutionPresent &&
      !ui.Question("Warning", {"Running UCODE will invalidate and remove your present solution.",
                               "Do you wish to continue?"}))
    return false;
  OfferSave();
  const fs::path perl = FindEstimationProgram(ctx_.programDirectory, "perl");
  if (perl.empty()) {
    noexecutable(ui, ctx_.programDirectory, "perl");
    return false;
  }
  // ucode.pl is a perl script: it need not be executable, only present.
  fs::path script = ctx_.programDirectory / "ucode.pl";
  std::error_code ec;
  if (!fs::is_regular_file(script, ec)) {
    noexecutable(ui, ctx_.programDirectory, "ucode.pl");
    return false;
  }
  const EstimationProject p = Project();
  RemoveOtherSpellingsOfTheInput(p);
  RunAndWait(perl, {script.string(), p.base + ".uni", p.base});
  ReportFatalRun();
  InvalidateAfterRun(p);
  RefreshLists();
  return true;
}

void UcodeDialog::DeleteAll() {
  const std::string base = Project().base;
  DeleteFiles(UcodeInputFiles(base), OutputPatterns(base));
}

void UcodeDialog::AssignWeights() { AssignWeightsOfProgram(); }

}  // namespace tarno
