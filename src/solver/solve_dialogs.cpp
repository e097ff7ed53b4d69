#include "solver/solve_dialogs.h"

#include "core/error.h"
#include "core/text.h"
#include "solver/command_file.h"
#include "solver/model_settings.h"
#include "store/database.h"

namespace tarno {

namespace {

// The decimal parse of a text field: stops at the first foreign character, an
// empty field reads as 0.
double FieldValue(const std::string& text) { return Val(text); }

constexpr const char* kIterationsLine1 = "Number of Iterations must be positive.";
constexpr const char* kIterationsLine2 = "Please enter a new value for the Number of Iterations.";
constexpr const char* kOuterLine1 = "Number of Iterations (Outside Loop) must be positive.";
constexpr const char* kOuterLine2 =
    "Please enter a new value for the Number of Iterations for the Outside Loop.";

void BadEntry(UserInterface& ui, const char* line1, const char* line2) {
  ui.MessageBox("Bad Entry", {line1, line2}, Buttons::OK, Icon::Exclamation);
}

}  // namespace

std::string IterationsDialog::AdviceText() const {
  // The gap is the first run of two or more blanks; a text without one gets the
  // number at its end.
  // Built by appends: GCC 12 warns falsely (-Wrestrict) on " " + std::to_string(...).
  std::string number(1, ' ');
  number.append(std::to_string(lblRecommendedIterations)).push_back(' ');
  const std::size_t start = lblRecommended.find("  ");
  if (start == std::string::npos) return lblRecommended + number;
  const std::size_t end = lblRecommended.find_first_not_of(' ', start);
  return lblRecommended.substr(0, start) + number +
         (end == std::string::npos ? std::string() : lblRecommended.substr(end));
}

bool IterationsDialog::OK(UserInterface& ui) {
  if (!(FieldValue(tbIterations) > 0)) {
    BadEntry(ui, kIterationsLine1, kIterationsLine2);
    return false;
  }
  Result = 1;
  return true;
}

void RelaxDialog::Load(const ModelSettings& s) {
  chkOutsideLoop = s.chkOutsideLoop;
  tbOuterIterations = s.tbOuterIterations;
  Result = 2;
}

bool RelaxDialog::Ok(ModelSettings& s, UserInterface& ui) {
  // The count matters only while the loop is switched on, as in the model settings.
  if (chkOutsideLoop && !(FieldValue(tbOuterIterations) > 0)) {
    BadEntry(ui, kOuterLine1, kOuterLine2);
    return false;
  }
  s.chkOutsideLoop = chkOutsideLoop;
  s.tbOuterIterations = tbOuterIterations;
  Result = 1;
  return true;
}

void ConvergeDialog::Load(const ModelSettings& s) {
  tbIterations = s.tbIterations;
  chkFastSolution = s.chkFastSolution;
  chkStoreMatrixOnDisk = s.chkStoreMatrixOnDisk;
  Result = 2;
}

bool ConvergeDialog::Ok(ModelSettings& s, UserInterface& ui) {
  if (!(FieldValue(tbIterations) > 0)) {
    BadEntry(ui, kIterationsLine1, kIterationsLine2);
    return false;
  }
  s.SetIterations(tbIterations);
  s.chkFastSolution = chkFastSolution;
  s.chkStoreMatrixOnDisk = chkStoreMatrixOnDisk;
  Result = 1;
  return true;
}

void FormContinueSolve::Load(ModelSettings& s, const std::filesystem::path& projectPath) {
  settings_ = &s;
  projectPath_ = projectPath;
  tbIterations = s.tbIterations;
  chkOutsideLoop = s.chkOutsideLoop;
  tbOuterIterations = s.tbOuterIterations;
  chkFastSolution = s.chkFastSolution;
  chkViewError = s.chkViewError;
  chkViewMessage = s.chkViewMessage;
  chkStoreMatrixOnDisk = s.chkStoreMatrixOnDisk;
  Cancel = true;
}

bool FormContinueSolve::Ok(UserInterface& ui) {
  if (settings_ == nullptr) throw Error("The continue form was not loaded");
  ModelSettings& s = *settings_;
  if (!(FieldValue(tbIterations) > 0)) {
    BadEntry(ui, kIterationsLine1, kIterationsLine2);
    return false;
  }
  if (chkOutsideLoop && !(FieldValue(tbOuterIterations) > 0)) {
    BadEntry(ui, kOuterLine1, kOuterLine2);
    return false;
  }
  Database db = Database::Open(projectPath_);
  Statement up = db.PrepareRaw(
      "update Model set SOLVERIterations=?, OuterIterations=?, FastSolution=?, "
      "OuterIterationsFlag=?, ViewErrorLog=?, ViewMessageLog=?, StoreMatrixOnDisk=?");
  up.Bind(1, static_cast<std::int64_t>(FieldValue(tbIterations)))
      .Bind(2, static_cast<std::int64_t>(FieldValue(tbOuterIterations)))
      .Bind(3, chkFastSolution)
      .Bind(4, chkOutsideLoop)
      .Bind(5, chkViewError)
      .Bind(6, chkViewMessage)
      .Bind(7, chkStoreMatrixOnDisk);
  up.Run();
  s.chkStoreMatrixOnDisk = chkStoreMatrixOnDisk;
  s.chkViewError = chkViewError;
  s.chkViewMessage = chkViewMessage;
  s.chkOutsideLoop = chkOutsideLoop;
  s.chkFastSolution = chkFastSolution;
  s.tbOuterIterations = tbOuterIterations;
  Cancel = false;
  return true;
}

}  // namespace tarno
