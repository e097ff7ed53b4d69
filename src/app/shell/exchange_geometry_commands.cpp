#include "app/shell/exchange_geometry_commands.h"

#include <algorithm>
#include <functional>

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
  // Each export reports its outcome in its own boxes; the result is not needed here.
  using Export = std::function<void(exchange::GeometryExportContext&)>;
  const struct {
    const char* key;
    Export run;
    const char* operation;
  } kExports[] = {{"EXPORT(10)", exchange::ToolsExportDXF, "ToolsExportDXF"},
                  {"EXPORT(11)", exchange::ToolsExportBLN, "ToolsExportBLN"},
                  {"EXPORT(12)", exchange::ToolsExportGrid, "ToolsExportGrid"},
                  {"EXPORT(13)", exchange::ToolsExportShape, "ToolsExportShape"}};
  for (const auto& e : kExports) {
    shell.Commands().Register(
        e.key,
        [&shell, run = e.run] {
          auto ctx = ContextOf(shell);
          run(ctx);
        },
        e.operation);
  }
}

}  // namespace tarno
