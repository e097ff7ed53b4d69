// tarnocmd's XML element files: `export <p> lss.xml|inh.xml|brr.xml <file>` and
// `import <p> <files>` for the .lss.xml, .inh.xml and .brr.xml files. They run the
// operations of the Tools menu with the file given: the boxes print as
// "<title>: <line>", then the lists of the operation's log and where the log went.
// The schemas are read from the program's folder (TARNO_PROGRAM_DIR overrides it).
#include <cstdlib>
#include <filesystem>

#include "core/console_ui.h"
#include "core/error_trap.h"
#include "exchange/xml_operations.h"
#include "solver/process.h"
#include "tarnocmd_exchange.h"

namespace tarno::cmd {

namespace {

namespace fs = std::filesystem;
using exchange::XmlExchangeContext;
using exchange::XmlOperationResult;

fs::path SchemaDirectory() { return BatchProgramDirectory(); }

std::string Absolute(const std::string& path) {
  std::error_code ec;
  const fs::path p = fs::absolute(path, ec);
  return ec ? path : p.lexically_normal().string();
}

// The overwrite question is answered Yes only with --yes: a batch run does not
// replace a file unless told to.
void SetAnswers(ConsoleUserInterface& ui, Answers answers) {
  ui.SetDefaultAnswer(answers == Answers::Yes ? Answer::Yes : Answer::No);
  ui.SetAnswerPolicy([answers](const std::string& title, const std::vector<std::string>&,
                               Buttons buttons) -> std::optional<Answer> {
    if (buttons == Buttons::OK) return Answer::OK;
    if (answers == Answers::Yes) return Answer::Yes;
    return Answer::No;
  });
}

void PrintLog(std::ostream& out, const XmlOperationResult& r) {
  auto list = [&](const char* heading, const std::vector<std::string>& lines) {
    out << heading << "\n";
    for (const std::string& line : lines) out << "  " << line << "\n";
  };
  list("Errors:", r.log.Errors());
  list("Warnings:", r.log.Warnings());
  list("Details:", r.log.Details());
  if (!r.logFile.empty()) out << "Log written to " << r.logFile.string() << "\n";
}

}  // namespace

int ExportXml(const ExportOptions& o, std::ostream& out, std::ostream& err) {
  const auto kind = exchange::XmlKindFromExtension(o.format);
  if (!kind) {
    err << "tarnocmd: " << o.format << " is no XML element file format\n";
    return 2;
  }
  if (!o.what.empty()) {
    err << "tarnocmd: export to " << o.format << " takes no \"" << o.what << "\"\n";
    return 2;
  }
  if (!CheckProject(o.project, err)) return 1;
  ConsoleUserInterface ui(out, Answer::OK);
  SetAnswers(ui, o.answers);
  XmlExchangeContext ctx(ui, Absolute(o.project), SchemaDirectory());
  XmlOperationResult result;
  const char* operation = *kind == exchange::XmlKind::Barrier ? "ToolsExportBarriers"
                          : *kind == exchange::XmlKind::Inhomogeneity
                              ? "ToolsExportInhomogeneities"
                              : "ToolsExportLinesinkStrings";
  const bool ran = RunOperation(
      ui, operation, [&] { result = exchange::ExportKindTo(ctx, *kind, Absolute(o.file)); });
  if (result.ran) PrintLog(out, result);
  return ran && result.ran && result.log.Errors().empty() ? 0 : 1;
}

int ImportXml(const ImportOptions& o, const std::vector<std::string>& files, std::ostream& out,
              std::ostream& err) {
  if (!CheckProject(o.project, err)) return 1;
  ConsoleUserInterface ui(out, Answer::OK);
  SetAnswers(ui, o.answers);
  const std::string project = Absolute(o.project);
  XmlExchangeContext ctx(ui, project, SchemaDirectory());
  bool changed = false;
  ctx.invalidate = [&] { changed = true; };
  std::vector<std::string> absolute;
  for (const std::string& f : files) absolute.push_back(Absolute(f));
  XmlOperationResult result;
  const bool ran = RunOperation(ui, "ToolsImportAllElements", [&] {
    result = exchange::ImportAllFrom(ctx, absolute);
    if (changed) RemoveSolution(project, ui, out);
  });
  if (result.ran) PrintLog(out, result);
  // Nothing imported counts as refused.
  return ran && result.count > 0 && result.log.Errors().empty() ? 0 : 1;
}

}  // namespace tarno::cmd
