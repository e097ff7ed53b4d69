// The built-in estimator's button in the "PEST" dialog (cmdEstimate, "Estimate
// Without PEST"): the model of the click, for the dialog's view to call.
//
// The click offers to save the text box, asks before it invalidates a present
// solution, estimates on the PEST files of the folder when they are there (so that
// edits of the control file count; they are written first when not), imports the
// result as "Import Optimized Parameters" does, and shows the record. `progress` is
// called in the calling thread during the estimation with a percentage of the
// present batch of model runs and a line such as "Iteration 3: model run 2 of 5",
// for the view's progress bar.
#pragma once

#include <functional>
#include <string>

#include "calibration/estimator.h"
#include "calibration/pest_dialog.h"

namespace tarno {

inline constexpr const char* kEstimateButtonCaption = "Estimate Without PEST";

// False when the user stopped it or the estimation gave no result (the messages said
// why).
bool EstimateInPestDialog(
    PestDialog& dialog, SolveContext& ctx,
    const std::function<void(int percent, const std::string& text)>& progress);

}  // namespace tarno
