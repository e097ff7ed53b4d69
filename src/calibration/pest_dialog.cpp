#include "calibration/pest_dialog.h"

#include <fstream>
#include <sstream>

#include "calibration/estimation_support.h"
#include "calibration/pest_import.h"
#include "calibration/pest_weights.h"
#include "core/error.h"
#include "core/file_find.h"
#include "core/text.h"
#include "solver/process.h"
#include "store/database.h"

namespace tarno {

namespace fs = std::filesystem;

// ---- EstimationFiles ----

EstimationProject EstimationFiles::Project() const {
  Database db = Database::Open(ctx_.projectPath);
  return LoadEstimationProject(db);
}

std::vector<std::string> EstimationFiles::Existing(const std::vector<std::string>& patterns) const {
  const fs::path dir = Project().dir;
  std::vector<std::string> out;
  std::error_code ec;
  for (const std::string& name : patterns)
    if (fs::is_regular_file(dir / name, ec)) out.push_back(name);
  return out;
}

void EstimationFiles::ShowFile(const std::string& name, const std::string& kind) {
  UserInterface& ui = *ctx_.ui;
  const fs::path path = Project().dir / name;
  std::error_code ec;
  const std::uintmax_t size = fs::file_size(path, ec);
  if (!ec && size > kTextBoxLimit) {
    ui.ShowTextFile(path.string());
    ui.MessageBox(Title(), {"File " + name + " was too large to display here... using notepad."});
    return;
  }
  TextBox = ReadTextFile(path);
  shownFile = name;
  lblFile = "File: " + name;
  TextBoxReadOnly = kind != "INPUT";
  cmdSaveEnabled = !TextBoxReadOnly;
  textChanged = false;
}

void EstimationFiles::EditText(const std::string& text) {
  if (TextBoxReadOnly || text == TextBox) return;
  TextBox = text;
  textChanged = true;
}

void EstimationFiles::Save() {
  if (shownFile.empty() || TextBoxReadOnly) return;
  WriteTextFile(Project().dir / shownFile, TextBox);
  textChanged = false;
}

void EstimationFiles::OfferSave() {
  if (!textChanged) return;
  if (ctx_.ui->Question("Save Changes", {"You have made changes to the " + shownFile,
                                         "Would you like to save these changes?"}))
    Save();
  textChanged = false;
}

void EstimationFiles::InputListClick(const std::string& name) {
  OfferSave();
  ShowFile(name, "INPUT");
}

void EstimationFiles::OutputListClick(const std::string& name) {
  OfferSave();
  ShowFile(name, "OUTPUT");
}

void EstimationFiles::Done() {
  OfferSave();
  closed = true;
}

void EstimationFiles::ClearShown() {
  TextBox.clear();
  shownFile.clear();
  lblFile.clear();
  textChanged = false;
  TextBoxReadOnly = true;
  cmdSaveEnabled = false;
}

bool EstimationFiles::ReportFatalRun() {
  const fs::path ops = FindFileNoCase(Project().dir, "TARNO.OPS");
  if (ops.empty()) return false;
  std::vector<std::string> lines{"TARNO Encountered a fatal error: ", ""};
  std::istringstream in(ReadTextFile(ops));
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  ctx_.ui->MessageBox("Fatal execution error", lines, Buttons::OK, Icon::Critical);
  std::error_code ec;
  fs::remove(ops, ec);
  return true;
}

int EstimationFiles::RunAndWait(const fs::path& program, const std::vector<std::string>& args,
                                const fs::path& output) {
  BlockingWaiter blocking;
  ProcessWaiter& waiter = ctx_.waiter != nullptr ? *ctx_.waiter : blocking;
  const fs::path dir = Project().dir;
  if (setEnabled) setEnabled(false);
  int status = -1;
  try {
    const pid_t pid = StartProgram(program, args, dir, output);
    status = WaitForTerm1(waiter, pid);
  } catch (...) {
    if (setEnabled) setEnabled(true);
    throw;
  }
  if (setEnabled) setEnabled(true);
  return status;
}

void EstimationFiles::RemoveOtherSpellingsOfTheInput(const EstimationProject& p) {
  const std::string exact = p.base + ".DAT";
  std::error_code ec;
  for (const fs::path& f : FilesNamedNoCase(p.dir, exact))
    if (f.filename().string() != exact) fs::remove(f, ec);
}

void EstimationFiles::InvalidateAfterRun(const EstimationProject& p) {
  BlockingWaiter blocking;
  SolveContext c = ctx_;
  if (c.waiter == nullptr) c.waiter = &blocking;
  InvalidateSolution(c, false, true);
  std::error_code ec;
  for (const fs::path& f : FilesNamedNoCase(p.dir, p.base + ".SOL")) fs::remove(f, ec);
}

// ---- PestDialog ----

std::vector<std::string> PestDialog::InputPatterns(const std::string& base) {
  return {base + ".pst", base + ".ins", base + ".tpl", kPestBatchFile, kPestShellFile};
}

std::vector<std::string> PestDialog::OutputPatterns(const std::string& base) {
  return {base + ".cnd", base + ".par", base + ".rec", base + ".res",
          base + ".rst", base + ".sen", base + ".seo", kPestImportLog};
}

void PestDialog::RefreshLists() {
  const EstimationProject p = Project();
  InputFileList = Existing(InputPatterns(p.base));
  OutputFileList = Existing(OutputPatterns(p.base));
  std::error_code ec;
  cmdRunPESTEnabled =
      fs::exists(p.dir / (p.base + ".pst"), ec) && fs::exists(p.dir / (p.base + ".ins"), ec) &&
      fs::exists(p.dir / (p.base + ".tpl"), ec) && fs::exists(p.dir / kPestBatchFile, ec);
  cmdImportPESTEnabled = fs::exists(p.dir / (p.base + ".par"), ec);
}

void PestDialog::WritePest() {
  OfferSave();
  ClearShown();
  WritePestFiles(ctx_, prompt_);
  RefreshLists();
}

void PestDialog::RunPestcheck() {
  OfferSave();
  const EstimationProject p = Project();
  // The check run as a Windows batch file, as the estimation program's users know it.
  WriteTextFile(p.dir / "pestcheck.bat", "\"" + ctx_.programDirectory.string() +
                                             "\\pestchek.exe\" " + p.base + " > pestcheck.txt\r\n");
  const fs::path program = FindEstimationProgram(ctx_.programDirectory, "pestchek");
  if (program.empty()) {
    noexecutable(*ctx_.ui, ctx_.programDirectory, "pestchek");
    return;
  }
  std::error_code ec;
  fs::remove(p.dir / "pestcheck.txt", ec);
  RunAndWait(program, {p.base}, p.dir / "pestcheck.txt");
  if (fs::exists(p.dir / "pestcheck.txt", ec)) {
    ShowFile("pestcheck.txt", "NEITHER");
  } else {
    ctx_.ui->MessageBox("Pestcheck Failed", {"Error running the Pestcheck utility.",
                                             "Pestcheck did not return any information."});
  }
}

bool PestDialog::RunPest() {
  UserInterface& ui = *ctx_.ui;
  if (ctx_.state != nullptr && ctx_.state->SolutionPresent &&
      !ui.Question("Warning", {"Running PEST will invalidate and remove your present solution.",
                               "Do you wish to continue?"}))
    return false;
  OfferSave();
  const fs::path program = FindEstimationProgram(ctx_.programDirectory, "pest");
  if (program.empty()) {
    noexecutable(ui, ctx_.programDirectory, "pest");
    return false;
  }
  const EstimationProject p = Project();
  RemoveOtherSpellingsOfTheInput(p);
  RunAndWait(program, {p.base});
  ReportFatalRun();
  std::error_code ec;
  if (fs::exists(p.dir / (p.base + ".par"), ec)) cmdImportPESTEnabled = true;
  InvalidateAfterRun(p);
  RefreshLists();
  return true;
}

void PestDialog::ImportPest() {
  OfferSave();
  const EstimationProject p = Project();
  ParImportResult r;
  {
    Database db = Database::Open(ctx_.projectPath);
    r = ImportParFile(db, p.dir / (p.base + ".par"), *ctx_.ui, p.dir / kPestImportLog);
  }
  if (r.logWritten) {
    ShowFile(kPestImportLog, "NEITHER");
    RefreshLists();
  }
}

void EstimationFiles::DeleteFiles(const std::vector<std::string>& inputs,
                                  const std::vector<std::string>& outputs) {
  if (!ctx_.ui->Question(
          "Delete " + Title() + " Files?",
          {"Warning: All Input and Output Files of the latest",
           Title() + " run will be deleted from the working directory.", "Do you wish to Continue?"}))
    return;
  const EstimationProject p = Project();
  std::error_code ec;
  for (const auto* list : {&inputs, &outputs})
    for (const std::string& name : *list) fs::remove(p.dir / name, ec);
  ClearShown();
  RefreshLists();
}

void EstimationFiles::AssignWeightsOfProgram() {
  OptWeight weights(Title());
  {
    Database db = Database::Open(ctx_.projectPath);
    weights.init(db);
  }
  ctx_.ui->ShowModal(weights);
  if (weights.Result == 1) {
    Database db = Database::Open(ctx_.projectPath);
    weights.Write(db);
  }
}

void PestDialog::DeleteAll() {
  const std::string base = Project().base;
  DeleteFiles(InputPatterns(base), OutputPatterns(base));
}

void PestDialog::AssignWeights() { AssignWeightsOfProgram(); }

}  // namespace tarno
