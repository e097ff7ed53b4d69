// The small dialogs around a solve, as models without a window: the question
// whether to solve again when a valid solution is present (SolvePrompt), the form
// that continues the iterations of a solution (FormContinueSolve), the two advanced
// dialogs behind buttons of the model settings (RelaxDialog, ConvergeDialog) and
// the integrity check's view of the fluxes at a point (SolverIntegrity). The advice
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

// "Surface Water relaxation" (cmdRelax of the model settings): the outer loop that
// the solver runs around the stream routing and the lake balances. OK checks the
// count and copies the two fields into the model settings, whose own OK writes them
// to the Model row (OuterIterationsFlag, OuterIterations). Result is 1 after OK, 2
// when the dialog was left otherwise.
class RelaxDialog : public DialogModel {
 public:
  static constexpr const char* kName = "relax";
  static constexpr const char* kTitle = "Surface Water relaxation";
  std::string DialogName() const override { return kName; }

  void Load(const ModelSettings& settings);
  // False, with nothing copied, when the check fails ("Bad Entry").
  bool Ok(ModelSettings& settings, UserInterface& ui);

  bool chkOutsideLoop = false;
  std::string tbOuterIterations = "0";
  int Result = 2;
};

// "Solver Convergence" (cmdConverge of the model settings): the iterations of the
// inner loop and how the solver treats its matrix. OK checks the count and copies
// the fields into the model settings (SOLVERIterations, FastSolution,
// StoreMatrixOnDisk on the model settings' OK).
class ConvergeDialog : public DialogModel {
 public:
  static constexpr const char* kName = "Converge";
  static constexpr const char* kTitle = "Solver Convergence";
  std::string DialogName() const override { return kName; }

  void Load(const ModelSettings& settings);
  bool Ok(ModelSettings& settings, UserInterface& ui);

  std::string tbIterations = "1";
  bool chkFastSolution = false;       // reuse the factorised matrix between iterations
  bool chkStoreMatrixOnDisk = false;  // keep large matrices out of memory
  int Result = 2;
};

// "Solver Integrity Check": the analytic and the numerical value of the velocity
// components and divergences at one point, side by side. A plain holder: the
// inspection at a point fills it (ComputeIntegrity, solver/inspect.h) and shows it.
class SolverIntegrity : public DialogModel {
 public:
  static constexpr const char* kName = "SolverIntegrity";
  static constexpr const char* kTitle = "Solver Integrity Check";
  std::string DialogName() const override { return kName; }

  double VxAnyl = 0, VxNum = 0;
  double VyAnyl = 0, VyNum = 0;
  double VzAnyl = 0, VzNum = 0;
  double divqAnyl = 0, divqNum = 0;
  double divCapQAnyl = 0, divCapQNum = 0;
};

}  // namespace tarno
