#include "calibration/estimator_dialog.h"

#include <filesystem>

#include "calibration/estimation_support.h"
#include "store/database.h"

namespace tarno {

namespace fs = std::filesystem;

bool EstimateInPestDialog(PestDialog& dialog, SolveContext& ctx,
                          const std::function<void(int, const std::string&)>& progress) {
  UserInterface& ui = *ctx.ui;
  if (ctx.state != nullptr && ctx.state->SolutionPresent &&
      !ui.Question("Warning",
                   {"Running the estimator will invalidate and remove your present solution.",
                    "Do you wish to continue?"}))
    return false;
  dialog.OfferSave();
  EstimationProject p;
  {
    Database db = Database::Open(ctx.projectPath);
    p = LoadEstimationProject(db);
  }
  std::error_code ec;
  const bool haveFiles = fs::exists(p.dir / (p.base + ".pst"), ec) &&
                         fs::exists(p.dir / (p.base + ".tpl"), ec) &&
                         fs::exists(p.dir / (p.base + ".ins"), ec);
  EstimatorOptions o;
  o.onProgress = [&](int done, int planned, int iteration) {
    if (!progress) return;
    progress(planned > 0 ? done * 100 / planned : 100, "Iteration " + std::to_string(iteration) +
                                                           ": model run " + std::to_string(done) +
                                                           " of " + std::to_string(planned));
  };
  const EstimateReport rep = RunEstimation(ctx, o, true, haveFiles);
  if (rep.imported) InvalidateSolution(ctx, false, true);
  dialog.RefreshLists();
  if (!rep.recordFile.empty() && fs::exists(rep.recordFile, ec))
    dialog.ShowFile(rep.recordFile.filename().string(), "OUTPUT");
  return rep.ok;
}

}  // namespace tarno
