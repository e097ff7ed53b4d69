#include "solver/solve_dialogs.h"

#include "core/error.h"
#include "solver/model_settings.h"
#include "store/database.h"

namespace tarno {

namespace {

// The decimal parse of a text field: stops at the first foreign character, an
// empty field reads as 0.
double FieldValue(const std::string& text) {
  try {
    return std::stod(text.empty() ? "0" : text);
  } catch (...) {
    return 0.0;
  }
}

}  // namespace

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
    ui.MessageBox("Bad Entry",
                  {"Number of Iterations must be positive.",
                   "Please enter a new value for the Number of Iterations."},
                  Buttons::OK, Icon::Exclamation);
    return false;
  }
  if (chkOutsideLoop && !(FieldValue(tbOuterIterations) > 0)) {
    ui.MessageBox("Bad Entry",
                  {"Number of Iterations (Outside Loop) must be positive.",
                   "Please enter a new value for the Number of Iterations for the Outside Loop."},
                  Buttons::OK, Icon::Exclamation);
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
