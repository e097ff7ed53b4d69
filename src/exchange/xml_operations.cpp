#include "exchange/xml_operations.h"

#include <algorithm>
#include <cctype>

#include "core/text.h"
#include "exchange/exchange_files.h"
#include "store/database.h"
#include "store/default_dirs.h"
#include "store/undo_history.h"

namespace tarno::exchange {

namespace {

namespace fs = std::filesystem;

constexpr int kWaitWidth = 3000;

const XmlKindOperationText kOperations[] = {
    {XmlKind::Barrier, "ExportHorizontalBarriers.log", "ImportHorizontalBarriers.log",
     "BRR.XML Export", "BRR.XML Import", "Export horizontal barriers", "Import horizontal barriers",
     xml_text::kBarrierFilter, xml_text::kBarrierImportFilter, xml_text::kBarrierKey,
     "Export of horizontal barriers aborted", "Exporting horizontal barriers...",
     "Importing horizontal barriers...", "Export of horizontal barriers complete!",
     " barriers exported.", "No horizontal barriers were found in the model",
     "Import of horizontal barriers complete!", " horizontal barriers imported.",
     "No horizontal barriers were imported."},
    {XmlKind::Inhomogeneity, "ExportInhomogeneities.log", "ImportInhomogeneities.log",
     "INH.XML Export", "INH.XML Import", "Export inhomogeneities", "Import inhomogeneities",
     xml_text::kInhomogeneityFilter, xml_text::kInhomogeneityImportFilter,
     xml_text::kInhomogeneityKey, "Export of inhomogeneities aborted",
     "Exporting inhomogeneities...", "Importing inhomogeneities...",
     "Export of inhomogeneities complete!", " inhomogeneities exported.",
     "No inhomogeneities were found in the model domain defined by a Hydroligic Unit Boundary",
     "Import of Inhomogeneities complete!", " inhomogeneities imported.",
     "No innhomogeneities were imported."},
    {XmlKind::Linesink, "ExportLinesinkStrings.log", "ImportLinesinkStrings.log", "LSS.XML Export",
     "LSS.XML Import", "Export linesink strings", "Import linesink strings",
     xml_text::kLinesinkFilter, xml_text::kLinesinkImportFilter, xml_text::kLinesinkKey,
     "Export of linesink strings aborted", "Exporting linesink strings...",
     "Importing linesink strings...", "Export of linesink strings complete!",
     " linesink strings exported.",
     "No linesink strings were found in the model domain defined by a Hydroligic Unit Boundary",
     "Import of linesink strings complete!", " linesink strings imported.",
     "No linesink strings were imported."},
};

constexpr XmlKind kExportOrder[] = {XmlKind::Barrier, XmlKind::Inhomogeneity, XmlKind::Linesink};

// Hides the wait window however the operation ends.
class PleaseWait {
 public:
  PleaseWait(UserInterface& ui, const std::string& text) : ui_(ui) {
    ui_.PleaseWaitShow(text, kWaitWidth);
  }
  ~PleaseWait() { Hide(); }
  void Hide() {
    if (shown_) ui_.PleaseWaitHide();
    shown_ = false;
  }

 private:
  UserInterface& ui_;
  bool shown_ = true;
};

std::string DefFile(const XmlExchangeContext& ctx) {
  return ctx.defaultDirectoriesFile.empty() ? DefaultDirectoriesFile() : ctx.defaultDirectoriesFile;
}

// The folder remembered for the key, else the project's: a first export or import
// starts beside the project, not in the folder of the directory memory.
std::string StartDirectory(const XmlExchangeContext& ctx, const char* key) {
  std::error_code ec;
  const fs::path project = fs::path(ctx.projectPath).parent_path();
  return StartDirectoryIn(DefFile(ctx), key,
                          project.empty() ? fs::current_path(ec).string() : project.string());
}

void Remember(const XmlExchangeContext& ctx, const char* key, const std::string& file) {
  DefaultDirectoriesIn(DefFile(ctx), key, DirectoryMode::Write,
                       fs::path(file).parent_path().string());
}

// The overwrite question; true to go on.
bool MayWrite(UserInterface& ui, const std::string& file) {
  std::error_code ec;
  if (!fs::exists(file, ec)) return true;
  return ui.Question(xml_text::kFileExistsTitle,
                     {"File " + file + " already exists.", xml_text::kOverwrite});
}

// Writes the log into the project's folder and shows it when something went wrong.
void FinishLog(XmlExchangeContext& ctx, XmlOperationResult& result, const char* name) {
  result.logFile = LogFolder(ctx.projectPath) / name;
  result.log.Write(result.logFile);
}

void ShowLogIfNeeded(XmlExchangeContext& ctx, const XmlOperationResult& result) {
  if (result.log.HasProblems() && !result.logFile.empty())
    ctx.ui.ShowTextFile(result.logFile.string());
}

std::string Lower(std::string s) {
  std::transform(s.begin(), s.end(), s.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return s;
}

bool EndsWithNoCase(const std::string& s, const std::string& end) {
  return s.size() >= end.size() && Lower(s.substr(s.size() - end.size())) == end;
}

}  // namespace

const XmlKindOperationText& OperationText(XmlKind kind) {
  for (const XmlKindOperationText& t : kOperations)
    if (t.kind == kind) return t;
  return kOperations[0];
}

XmlOperationResult ToolsExportKind(XmlExchangeContext& ctx, XmlKind kind) {
  const XmlKindOperationText& t = OperationText(kind);
  FileDialogRequest request;
  request.title = t.exportDialog;
  request.defaultExtension = KindText(kind).extension;
  request.filter = t.filter;
  request.initialDirectory = StartDirectory(ctx, t.key);
  const auto file = ctx.ui.SaveFileDialog(request);
  if (!file || file->empty()) return {};
  Remember(ctx, t.key, *file);
  return ExportKindTo(ctx, kind, *file);
}

XmlOperationResult ExportKindTo(XmlExchangeContext& ctx, XmlKind kind, const std::string& given) {
  const XmlKindOperationText& t = OperationText(kind);
  // A name without any extension gets the kind's, so that an import finds its kind.
  const std::string file =
      ExtensionOfFile(given).empty() ? given + "." + KindText(kind).extension : given;
  XmlOperationResult result;
  if (!MayWrite(ctx.ui, file)) {
    ctx.ui.MessageBox(xml_text::kAbortTitle, {t.aborted});
    return result;
  }
  result.ran = true;
  {
    PleaseWait wait(ctx.ui, t.exporting);
    Database db = Database::Open(ctx.projectPath);
    result.count = WriteElementFile(db, kind, file, result.log);
    wait.Hide();
    FinishLog(ctx, result, t.exportLog);
  }
  ShowLogIfNeeded(ctx, result);
  if (result.count > 0)
    ctx.ui.MessageBox(t.exportTitle,
                      {t.exportComplete, std::to_string(result.count) + t.exportedCount});
  else
    ctx.ui.MessageBox(t.exportTitle, {t.noneExported});
  return result;
}

std::vector<std::string> ExportAllFiles(const std::string& file) {
  std::string base = file;
  for (const char* ext : {".lss.xml", ".inh.xml", ".brr.xml", ".xml"}) {
    if (EndsWithNoCase(base, ext)) {
      base.resize(base.size() - std::string(ext).size());
      break;
    }
  }
  std::vector<std::string> files;
  for (const XmlKind kind : kExportOrder) files.push_back(base + "." + KindText(kind).extension);
  return files;
}

XmlOperationResult ToolsExportAllElements(XmlExchangeContext& ctx) {
  FileDialogRequest request;
  request.title = xml_text::kSaveAllTitle;
  request.defaultExtension = "xml";
  request.filter = xml_text::kAllFilter;
  request.initialDirectory = StartDirectory(ctx, xml_text::kAllKey);
  const auto file = ctx.ui.SaveFileDialog(request);
  if (!file || file->empty()) return {};
  Remember(ctx, xml_text::kAllKey, *file);
  return ExportAllTo(ctx, *file);
}

XmlOperationResult ExportAllTo(XmlExchangeContext& ctx, const std::string& file) {
  const std::vector<std::string> files = ExportAllFiles(file);
  XmlOperationResult result;
  for (const std::string& f : files) {
    if (!MayWrite(ctx.ui, f)) {
      ctx.ui.MessageBox(xml_text::kAbortTitle, {xml_text::kElementsAborted});
      return result;
    }
  }
  result.ran = true;
  {
    PleaseWait wait(ctx.ui, xml_text::kExportingAll);
    Database db = Database::Open(ctx.projectPath);
    for (std::size_t i = 0; i < files.size(); ++i)
      result.count += WriteElementFile(db, kExportOrder[i], files[i], result.log);
    wait.Hide();
    FinishLog(ctx, result, "ExportElements.log");
  }
  ShowLogIfNeeded(ctx, result);
  ctx.ui.MessageBox(
      xml_text::kAllExportTitle,
      {xml_text::kAllComplete, std::to_string(result.count) + xml_text::kAllExported});
  return result;
}

XmlOperationResult ToolsImportKind(XmlExchangeContext& ctx, XmlKind kind) {
  const XmlKindOperationText& t = OperationText(kind);
  FileDialogRequest request;
  request.title = t.importDialog;
  request.filter = t.importFilter;
  request.initialDirectory = StartDirectory(ctx, t.key);
  const std::vector<std::string> files = ctx.ui.OpenFilesDialog(request);
  if (files.empty()) return {};
  Remember(ctx, t.key, files.front());
  return ImportKindFrom(ctx, kind, files);
}

namespace {

// The common end of the imports: the log, the solution and the map, the message.
void FinishImport(XmlExchangeContext& ctx, XmlOperationResult& result, const char* logName) {
  FinishLog(ctx, result, logName);
  if (result.count > 0) {
    if (ctx.invalidate) ctx.invalidate();
    if (ctx.zoom) ctx.zoom();
  }
  ShowLogIfNeeded(ctx, result);
}

}  // namespace

XmlOperationResult ImportKindFrom(XmlExchangeContext& ctx, XmlKind kind,
                                  const std::vector<std::string>& files) {
  const XmlKindOperationText& t = OperationText(kind);
  XmlOperationResult result;
  result.ran = true;
  {
    PleaseWait wait(ctx.ui, t.importing);
    Database db = Database::Open(ctx.projectPath);
    UndoScope undo(db, std::string("Import ") + KindText(kind).plural);
    for (const std::string& file : files)
      result.count +=
          ImportElementFile(db, kind, file, ctx.schemaDirectory, result.log, ctx.units).accepted;
    undo.Commit();
    wait.Hide();
  }
  FinishImport(ctx, result, t.importLog);
  if (result.count > 0)
    ctx.ui.MessageBox(t.importTitle,
                      {t.importComplete, std::to_string(result.count) + t.importedCount});
  else
    ctx.ui.MessageBox(t.importTitle, {t.noneImported});
  return result;
}

XmlOperationResult ToolsImportAllElements(XmlExchangeContext& ctx) {
  FileDialogRequest request;
  request.title = xml_text::kImportAllDialogTitle;
  request.filter = xml_text::kAllImportFilter;
  request.initialDirectory = StartDirectory(ctx, xml_text::kAllKey);
  const std::vector<std::string> files = ctx.ui.OpenFilesDialog(request);
  if (files.empty()) return {};
  Remember(ctx, xml_text::kAllKey, files.front());
  return ImportAllFrom(ctx, files);
}

XmlOperationResult ImportAllFrom(XmlExchangeContext& ctx, const std::vector<std::string>& files) {
  XmlOperationResult result;
  result.ran = true;
  {
    PleaseWait wait(ctx.ui, xml_text::kImportingAll);
    Database db = Database::Open(ctx.projectPath);
    UndoScope undo(db, "Import Elements");
    for (const std::string& file : files) {
      const std::string extension = ExtensionOfFile(file);
      const std::optional<XmlKind> kind = XmlKindFromExtension(extension);
      if (!kind) {
        ctx.ui.MessageBox(xml_text::kUnrecognizedTitle, {"Skipping file with unknown extension '" +
                                                             extension + "': '" + file + "'",
                                                         xml_text::kExpecting});
        continue;
      }
      result.count +=
          ImportElementFile(db, *kind, file, ctx.schemaDirectory, result.log, ctx.units).accepted;
    }
    undo.Commit();
    wait.Hide();
  }
  FinishImport(ctx, result, "ImportElements.log");
  if (result.count > 0)
    ctx.ui.MessageBox(
        xml_text::kImportAllTitle,
        {xml_text::kImportAllComplete, std::to_string(result.count) + xml_text::kImportAllCount});
  else
    ctx.ui.MessageBox(xml_text::kNothingTitle, {xml_text::kNoElements});
  return result;
}

}  // namespace tarno::exchange
