#include "app/shell/exchange_xml_commands.h"

#include "exchange/xml_operations.h"

namespace tarno {

namespace {

using exchange::XmlExchangeContext;
using exchange::XmlKind;

struct XmlCommand {
  const char* key;
  const char* operation;
  exchange::XmlOperationResult (*run)(XmlExchangeContext&);
};

const XmlCommand kCommands[] = {
    {"IMPORT(0)", "ToolsImportAllElements", exchange::ToolsImportAllElements},
    {"IMPORT(1)", "ToolsImportLinesinkStrings", exchange::ToolsImportLinesinkStrings},
    {"IMPORT(2)", "ToolsImportInhomogeneities", exchange::ToolsImportInhomogeneities},
    {"IMPORT(3)", "ToolsImportBarriers", exchange::ToolsImportBarriers},
    {"EXPORT(0)", "ToolsExportAllElements", exchange::ToolsExportAllElements},
    {"EXPORT(1)", "ToolsExportLinesinkStrings", exchange::ToolsExportLinesinkStrings},
    {"EXPORT(2)", "ToolsExportInhomogeneities", exchange::ToolsExportInhomogeneities},
    {"EXPORT(3)", "ToolsExportBarriers", exchange::ToolsExportBarriers},
};

}  // namespace

const std::vector<std::string>& XmlExchangeKeys() {
  static const std::vector<std::string> keys = [] {
    std::vector<std::string> k;
    for (const XmlCommand& c : kCommands) k.emplace_back(c.key);
    return k;
  }();
  return keys;
}

std::string XmlExchangeOperation(const std::string& key) {
  for (const XmlCommand& c : kCommands)
    if (key == c.key) return c.operation;
  return {};
}

void RunXmlExchangeCommand(const std::string& key, UserInterface& ui,
                           const std::string& projectPath, const std::string& programDirectory,
                           const std::function<void()>& invalidate,
                           const std::function<void()>& zoom) {
  for (const XmlCommand& c : kCommands) {
    if (key != c.key) continue;
    XmlExchangeContext ctx(ui, projectPath, programDirectory);
    ctx.invalidate = invalidate;
    ctx.zoom = zoom;
    c.run(ctx);
    return;
  }
}

}  // namespace tarno
