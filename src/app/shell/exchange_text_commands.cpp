#include "app/shell/exchange_text_commands.h"

#include <filesystem>

#include "app/shell/shell_controller.h"
#include "core/error_trap.h"
#include "display/navigation.h"
#include "exchange/text_exchange.h"
#include "store/database.h"

namespace tarno {

namespace {

// Where the import keeps the wells it moved off a vertex: the project's folder.
constexpr const char* kVertexLog = "ImportWells.log";

// The operation's name in the error message.
const char* OperationName(const std::string& key) {
  if (key == "IMPORT(4)") return "ToolsImportHUC";
  if (key == "IMPORT(5)") return "ToolsImportLSS";
  if (key == "IMPORT(6)") return "ToolsImportInhomogeneity";
  if (key == "IMPORT(7)" || key == "IMPORT(8)") return "ToolsImportWL";
  if (key == "IMPORT(9)") return "ToolsImportTP";
  if (key == "IMPORT(10)") return "ToolsImportTX";
  if (key == "EXPORT(4)") return "ToolsExportHuc";
  if (key == "EXPORT(5)") return "ToolsExportInhomogeneity";
  return "EXPORTDB";
}

}  // namespace

void TextExchangeCommand(ShellController& shell, const std::string& key) {
  ProjectSession& session = shell.Session();
  if (!session.ProjectOpen()) return;
  const std::string project = session.Settings().DBName;
  const std::filesystem::path folder = std::filesystem::path(project).parent_path();
  exchange::TextExchangeOptions options;
  options.vertexTolerance = shell.State().options.VertexTolerance;
  options.vertexLog = (folder / kVertexLog).string();
  const bool import = key.rfind("IMPORT(", 0) == 0;
  exchange::TextImportResult result;
  shell.DisableMouse();
  RunOperation(shell.Port(), OperationName(key), [&] {
    Database db = Database::Open(project);
    result = exchange::RunTextExchangeCommand(key, db, shell.Port(), folder.string(), options);
  });
  shell.EnableMouse();
  if (!import) return;
  // Test points and text labels ask questions of a solution or annotate the map;
  // the other files change the flow.
  const bool actsOnFlow = key != "IMPORT(9)" && key != "IMPORT(10)";
  if (result.read > 0 && actsOnFlow) shell.InvalidateSolution(false);
  if (result.read > 0 || result.filesRead > 0) shell.ZoomAfterImport();
}

}  // namespace tarno
