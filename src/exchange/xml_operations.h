// The eight XML element file operations of the Tools menu: export of one kind and
// of all three, import of one kind and of many files. Each asks for its files,
// asks before it overwrites, shows the wait window, writes its log into the
// project's folder, shows the log when it holds errors or warnings, and ends with
// its message; everything through the user interface port.
//
//     XmlExchangeContext ctx{ui, projectPath, ProgramDirectory()};
//     ctx.invalidate = [&] { InvalidateSolution(); };
//     ctx.zoom = [&] { ZoomActions(0); };
//     ToolsImportLinesinkStrings(ctx);
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "core/ui_port.h"
#include "exchange/exchange_log.h"
#include "exchange/xml_document.h"
#include "exchange/xml_elements.h"

namespace tarno::exchange {

struct XmlExchangeContext {
  XmlExchangeContext(UserInterface& port, std::string project, std::filesystem::path schemas)
      : ui(port), projectPath(std::move(project)), schemaDirectory(std::move(schemas)) {}
  UserInterface& ui;
  std::string projectPath;                // the open project
  std::filesystem::path schemaDirectory;  // where the three .xsd files stand: the program's folder
  std::function<void()> invalidate;       // InvalidateSolution, after an import that added elements
  std::function<void()> zoom;             // ZoomActions with action 0, after the same
  std::string defaultDirectoriesFile;     // TARNO.def; DefaultDirectoriesFile() when empty
  UnitPolicy units = UnitPolicy::Convert;
};

// What an operation did, for a caller that reports it (tarnocmd).
struct XmlOperationResult {
  bool ran = false;  // false: cancelled at a file dialog or an overwrite question
  int count = 0;     // elements exported or imported
  ExchangeLog log;
  std::filesystem::path logFile;  // empty when no log was written
};

// The texts of the operations, as they are shown.
namespace xml_text {
inline constexpr const char* kAllFilter = "XML element files (*.xml)|*.xml";
inline constexpr const char* kBarrierFilter = "Horizontal barrier files (*.brr.xml)|*.brr.xml";
inline constexpr const char* kInhomogeneityFilter = "Inhomgoeneities files (*.inh.xml)|*.inh.xml";
inline constexpr const char* kLinesinkFilter = "Line-sink string files (*.lss.xml)|*.lss.xml";
inline constexpr const char* kAllImportFilter =
    "XML element files (*.xml)|*.xml|All files (*.*)|*.*";
inline constexpr const char* kBarrierImportFilter =
    "Horizontal barrier files (*.brr.xml)|*.brr.xml|All files (*.*)|*.*";
inline constexpr const char* kInhomogeneityImportFilter =
    "Inhomogeneities files (*.inh.xml)|*.inh.xml|All files (*.*)|*.*";
inline constexpr const char* kLinesinkImportFilter =
    "Line-sink string files (*.lss.xml)|*.lss.xml|All files (*.*)|*.*";
inline constexpr const char* kAllKey = "Default Export Elements path";
inline constexpr const char* kBarrierKey = "Default Export Barriers path";
inline constexpr const char* kInhomogeneityKey = "Default Export Inhomogeneities path";
inline constexpr const char* kLinesinkKey = "Default Export Linesink Strings path";
inline constexpr const char* kSaveAllTitle = "Save as .XML file";
inline constexpr const char* kFileExistsTitle = "File Exists";
inline constexpr const char* kOverwrite = "Do you want to overwrite it?";
inline constexpr const char* kAbortTitle = "Abort";
inline constexpr const char* kElementsAborted = "Export of elements aborted";
inline constexpr const char* kExportingAll = "Exporting all elements...";
inline constexpr const char* kAllComplete = "Export of elements complete!";
inline constexpr const char* kAllExported = " elements exported.";
inline constexpr const char* kAllExportTitle = "XML Export";
inline constexpr const char* kUnrecognizedTitle = "Unrecognized extension";
inline constexpr const char* kExpecting =
    "Expecting one of the following: .brr.xml, .inh.xml, .lss.xml";
inline constexpr const char* kImportAllTitle = "BRR.XML Import";
inline constexpr const char* kImportAllComplete = "Import of Elements complete!";
inline constexpr const char* kImportAllCount = " elements imported.";
inline constexpr const char* kNothingTitle = "Import";
inline constexpr const char* kNoElements = "No elements were imported.";
inline constexpr const char* kImportingAll = "Importing elements...";
inline constexpr const char* kImportAllDialogTitle = "Import XML element files";
}  // namespace xml_text

// The texts of one kind's operations.
struct XmlKindOperationText {
  XmlKind kind;
  const char* exportLog;       // "ExportLinesinkStrings.log"
  const char* importLog;       // "ImportLinesinkStrings.log"
  const char* exportTitle;     // "LSS.XML Export"
  const char* importTitle;     // "LSS.XML Import"
  const char* exportDialog;    // the save dialog's title
  const char* importDialog;    // the open dialog's title
  const char* filter;          // the save dialog's filter
  const char* importFilter;    // the open dialog's filter
  const char* key;             // TARNO.def key of the folder
  const char* aborted;         // "Export of linesink strings aborted"
  const char* exporting;       // "Exporting linesink strings..."
  const char* importing;       // "Importing linesink strings..."
  const char* exportComplete;  // "Export of linesink strings complete!"
  const char* exportedCount;   // " linesink strings exported."
  const char* noneExported;    // "No linesink strings were found in the model domain ..."
  const char* importComplete;  // "Import of linesink strings complete!"
  const char* importedCount;   // " linesink strings imported."
  const char* noneImported;    // "No linesink strings were imported."
};
const XmlKindOperationText& OperationText(XmlKind kind);

// Export of one kind (ToolsExportBarriers, ToolsExportInhomogeneities,
// ToolsExportLinesinkStrings): asks for the file, then ExportKindTo.
XmlOperationResult ToolsExportKind(XmlExchangeContext& ctx, XmlKind kind);
// The same with the file given (tarnocmd): from the overwrite question on.
XmlOperationResult ExportKindTo(XmlExchangeContext& ctx, XmlKind kind, const std::string& file);

// ToolsExportAllElements: asks for one name; its base name gets the three
// extensions; then ExportAllTo.
XmlOperationResult ToolsExportAllElements(XmlExchangeContext& ctx);
XmlOperationResult ExportAllTo(XmlExchangeContext& ctx, const std::string& file);
// The three files of an export of all from the name given: "<base>.brr.xml", ...,
// in the order of writing. A name ending in ".xml" (or a kind's extension) loses it.
std::vector<std::string> ExportAllFiles(const std::string& file);

// Import of one kind (ToolsImportBarriers, ToolsImportInhomogeneities,
// ToolsImportLinesinkStrings): asks for files (several at once), then ImportKindFrom.
XmlOperationResult ToolsImportKind(XmlExchangeContext& ctx, XmlKind kind);
XmlOperationResult ImportKindFrom(XmlExchangeContext& ctx, XmlKind kind,
                                  const std::vector<std::string>& files);

// ToolsImportAllElements: asks for files, then ImportAllFrom, which takes each
// file by its extension.
XmlOperationResult ToolsImportAllElements(XmlExchangeContext& ctx);
XmlOperationResult ImportAllFrom(XmlExchangeContext& ctx, const std::vector<std::string>& files);

inline XmlOperationResult ToolsExportBarriers(XmlExchangeContext& c) {
  return ToolsExportKind(c, XmlKind::Barrier);
}
inline XmlOperationResult ToolsExportInhomogeneities(XmlExchangeContext& c) {
  return ToolsExportKind(c, XmlKind::Inhomogeneity);
}
inline XmlOperationResult ToolsExportLinesinkStrings(XmlExchangeContext& c) {
  return ToolsExportKind(c, XmlKind::Linesink);
}
inline XmlOperationResult ToolsImportBarriers(XmlExchangeContext& c) {
  return ToolsImportKind(c, XmlKind::Barrier);
}
inline XmlOperationResult ToolsImportInhomogeneities(XmlExchangeContext& c) {
  return ToolsImportKind(c, XmlKind::Inhomogeneity);
}
inline XmlOperationResult ToolsImportLinesinkStrings(XmlExchangeContext& c) {
  return ToolsImportKind(c, XmlKind::Linesink);
}

}  // namespace tarno::exchange
