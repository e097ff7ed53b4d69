// The small dialogs around a solve, as models without a window: the question
// whether to solve again when a valid solution is present (SolvePrompt) and the
// form that continues the iterations of a solution (FormContinueSolve). The advice
// dialog on the number of iterations is IterationsDialog (solver/command_file.h).
#pragma once

#include <filesystem>
#include <string>

#include "core/ui_port.h"

namespace tarno {

class Database;
class ModelSettings;

// "Valid Solution Present... Resolve?": Yes solves anew, No only recomputes what is
// missing, Cancel stops. Result is 6 (Yes), 7 (No) or 2 (Cancel).
class SolvePrompt : public DialogModel {
 public:
  static constexpr const char* kName = "SolvePrompt";
  static constexpr const char* kTitle = "Valid Solution Present... Resolve?";
  static constexpr const char* kLine1 = "A valid solution is present. ";
  static constexpr const char* kLine2 = "Do you want to resolve?";
  static constexpr const char* kYesText =
      "Generate a new solution and new contours, pathlines, and flux inspector results.";
  static constexpr const char* kNoText =
      "Just recalculate contour grid, pathlines, test points, and/or flux inspector results as "
      "needed.";
  std::string DialogName() const override { return kName; }
  int Result = 2;
};

// "Continue to Solve": the number of further iterations and the switches of the
// solver page of the model settings. OK writes them into the Model row and copies
// them to the model settings; Cancel stays true unless OK succeeded.
class FormContinueSolve : public DialogModel {
 public:
  static constexpr const char* kName = "FormContinueSolve";
  static constexpr const char* kTitle = "Continue to Solve";
  std::string DialogName() const override { return kName; }

  // Fills the fields from the model settings; OK writes to `projectPath` and back
  // into `settings`.
  void Load(ModelSettings& settings, const std::filesystem::path& projectPath);
  // Checks the two iteration counts (the messages of the model settings, "Bad
  // Entry"), writes the Model row (solveriterations, OuterIterations, FastSolution,
  // outeriterationsflag, ViewErrorLog, ViewMessageLog, StoreMatrixOnDisk), copies
  // the switches to the model settings and clears Cancel. False, with nothing
  // written, when a check fails.
  bool Ok(UserInterface& ui);

  std::string tbIterations = "1";
  bool chkOutsideLoop = false;
  std::string tbOuterIterations = "0";
  bool chkFastSolution = false;
  bool chkViewError = true;
  bool chkViewMessage = true;
  bool chkStoreMatrixOnDisk = false;
  bool Cancel = true;

 private:
  ModelSettings* settings_ = nullptr;
  std::filesystem::path projectPath_;
};

}  // namespace tarno
