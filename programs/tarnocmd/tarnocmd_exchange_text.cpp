// tarnocmd's export and import of the text element files: .lss, .inh, .huc, .wl,
// .tp and .tx, through the operations the Tools menu runs.
//
// The boxes are printed as "<title>: <line>": those that report on standard output,
// the others (errors, questions) on standard error. The questions: "File Exists" is
// answered No unless --yes is given (an existing file stays); every other question
// ("Continue import?", the head-specified wells' warning, the test point question)
// Yes unless --no is given.
#include <filesystem>

#include "core/console_ui.h"
#include "core/error_trap.h"
#include "elements/element_store.h"
#include "exchange/exchange_files.h"
#include "exchange/text_exchange.h"
#include "store/database.h"
#include "tarnocmd_exchange.h"

namespace tarno::cmd {

namespace {

namespace fs = std::filesystem;
using exchange::TextImportResult;
using exchange::WellKind;

// Reports to `out`, asks and complains on `err`.
class TextCommandPort : public ConsoleUserInterface {
 public:
  TextCommandPort(std::ostream& out, std::ostream& err, Answers answers)
      : ConsoleUserInterface(err, Answer::OK), out_(out) {
    SetAnswerPolicy([answers](const std::string& title, const std::vector<std::string>&,
                              Buttons) -> std::optional<Answer> {
      if (title == exchange::text_text::kFileExistsTitle)
        return answers == Answers::Yes ? Answer::Yes : Answer::No;
      return answers == Answers::No ? Answer::No : Answer::Yes;
    });
  }
  Answer MessageBox(const std::string& title, const std::vector<std::string>& lines,
                    Buttons buttons, Icon icon) override {
    if (buttons != Buttons::OK || icon != Icon::Information)
      return ConsoleUserInterface::MessageBox(title, lines, buttons, icon);
    for (const std::string& line : lines) out_ << title << ": " << line << '\n';
    return Answer::OK;
  }

 private:
  std::ostream& out_;
};

std::optional<Database> OpenProject(const std::string& path, std::ostream& err) {
  if (!CheckProject(path, err)) return std::nullopt;
  try {
    return Database::Open(path);
  } catch (const std::exception& e) {
    err << "tarnocmd: cannot open " << path << ": " << e.what() << "\n";
    return std::nullopt;
  }
}

// The log of the wells that an import moved off a vertex: in the project's folder.
std::string VertexLog(const std::string& project) {
  return (fs::absolute(project).parent_path() / "ImportWells.log").string();
}

}  // namespace

int ExportText(const ExportOptions& o, std::ostream& out, std::ostream& err) {
  WellKind kind = WellKind::Discharge;
  if (o.format == "wl") {
    if (o.what == "head")
      kind = WellKind::Head;
    else if (!o.what.empty() && o.what != "discharge")
      return BadUsage(err, "the wells to export are discharge or head, not \"" + o.what + "\"");
  } else if (!o.what.empty()) {
    return BadUsage(err, "export to " + o.format + " takes no \"" + o.what + "\"");
  }
  std::optional<Database> db = OpenProject(o.project, err);
  if (!db) return 1;
  TextCommandPort ui(out, err, o.answers);
  std::optional<int> written;
  const bool ran = RunOperation(ui, "ToolsExport", [&] {
    if (o.format == "lss")
      written = exchange::ExportLss(*db, ui, o.file);
    else if (o.format == "inh")
      written = exchange::ExportInh(*db, ui, o.file);
    else if (o.format == "huc")
      written = exchange::ExportHuc(*db, ui, o.file);
    else if (o.format == "wl")
      written = exchange::ExportWells(*db, ui, o.file, kind);
    else if (o.format == "tp")
      written = exchange::ExportTestPoints(*db, ui, o.file);
    else
      written = exchange::ExportTextLabels(*db, ui, o.file);
  });
  return ran && written ? 0 : 1;
}

int ImportText(const ImportOptions& o, const std::vector<std::string>& files, std::ostream& out,
               std::ostream& err) {
  std::optional<Database> db = OpenProject(o.project, err);
  if (!db) return 1;
  TextCommandPort ui(out, err, o.answers);
  exchange::TextExchangeOptions options;
  options.vertexLog = VertexLog(o.project);
  const WellKind kind = o.wells == "head" ? WellKind::Head : WellKind::Discharge;
  bool ok = true;
  bool flowChanged = false;
  for (const std::string& file : files) {
    const std::string ext = exchange::ExtensionOfFile(file);
    TextImportResult r;
    bool asked = true;
    const bool ran = RunOperation(ui, "ToolsImport", [&] {
      if (ext == "lss")
        r = exchange::ImportLss(*db, ui, file);
      else if (ext == "inh")
        r = exchange::ImportInh(*db, ui, file);
      else if (ext == "huc")
        r = exchange::ImportHuc(*db, ui, file);
      else if (ext == "wl") {
        asked = kind == WellKind::Discharge || exchange::ConfirmHeadWells(ui);
        if (asked) r = exchange::ImportWells(*db, ui, file, kind, options);
      } else if (ext == "tp") {
        asked = exchange::ConfirmTestPointImport(ui);
        if (asked) r = exchange::ImportTestPoints(*db, ui, file);
      } else {
        r = exchange::ImportTextLabels(*db, ui, file);
      }
    });
    if (!ran || !asked || r.stopped ||
        ((ext == "huc" || ext == "lss" || ext == "inh") && r.filesRead == 0))
      ok = false;
    if (ext != "tp" && ext != "tx" && r.read > 0) flowChanged = true;
  }
  db->Close();
  if (flowChanged) RemoveSolution(o.project, ui, out);
  return ok ? 0 : 1;
}

}  // namespace tarno::cmd
