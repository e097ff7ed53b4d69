#include "app/shell/exchange_geometry_commands.h"

#include <algorithm>

#include "app/shell/shell_controller.h"
#include "exchange/geometry_export.h"

namespace tarno {

namespace {

exchange::GeometryExportContext ContextOf(ShellController& shell) {
  exchange::GeometryExportContext ctx{shell.Port(), shell.Session().Settings().DBName};
  const WorldWindow& w = shell.State().Window;
  ctx.window = MapWindow{std::min(w.Left, w.Right), std::max(w.Left, w.Right),
                         std::max(w.Top, w.Bottom), std::min(w.Top, w.Bottom)};
  ctx.timeMarkStep = shell.State().layers.timeMarkStep;
  return ctx;
}

}  // namespace

void RegisterGeometryExportCommands(ShellController& shell) {
  CommandRegistry& c = shell.Commands();
  c.Register(
      "EXPORT(10)",
      [&shell] {
        auto ctx = ContextOf(shell);
        exchange::ToolsExportDXF(ctx);
      },
      "ToolsExportDXF");
  c.Register(
      "EXPORT(11)",
      [&shell] {
        auto ctx = ContextOf(shell);
        exchange::ToolsExportBLN(ctx);
      },
      "ToolsExportBLN");
  c.Register(
      "EXPORT(12)",
      [&shell] {
        auto ctx = ContextOf(shell);
        exchange::ToolsExportGrid(ctx);
      },
      "ToolsExportGrid");
  c.Register(
      "EXPORT(13)",
      [&shell] {
        auto ctx = ContextOf(shell);
        exchange::ToolsExportShape(ctx);
      },
      "ToolsExportShape");
}

}  // namespace tarno
