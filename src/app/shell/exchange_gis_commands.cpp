#include "app/shell/exchange_gis_commands.h"

#include "app/shell/shell_controller.h"
#include "display/navigation.h"
#include "exchange/gpkg_export.h"
#include "exchange/vector_import.h"

namespace tarno {

void ImportGisVectorCommand(ShellController& shell) {
  const std::string project = shell.Session().Settings().DBName;
  if (project.empty()) return;
  // The operation has its own error trap (ToolsImportVector).
  if (!exchange::ToolsImportVector(shell.Port(), project)) return;
  // New elements make a present solution another model's.
  shell.InvalidateSolution(false);
  shell.ZoomAfterImport();
  shell.ApplyMenus();
}

void ExportGeoPackageCommand(ShellController& shell) {
  const std::string project = shell.Session().Settings().DBName;
  if (project.empty()) return;
  exchange::ToolsExportGeoPackage(shell.Port(), project);
}

}  // namespace tarno
