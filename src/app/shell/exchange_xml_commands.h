// The Tools menu's entries of the XML element files: Import > IMPORT(0) to IMPORT(3)
// and Export > EXPORT(0) to EXPORT(3), each running its operation (xml_operations.h)
// on the open project, with the schemas from the program's folder.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace tarno {

class UserInterface;

// The menu keys these commands answer, in menu order.
const std::vector<std::string>& XmlExchangeKeys();
// The operation's name of a key, for the error trap ("ToolsImportLinesinkStrings");
// empty for another key.
std::string XmlExchangeOperation(const std::string& key);

// Runs the operation of `key` on the project `projectPath`. `invalidate` removes a
// present solution and `zoom` redraws the map, after an import that added elements.
// Failures throw; the caller's trap reports them.
void RunXmlExchangeCommand(const std::string& key, UserInterface& ui,
                           const std::string& projectPath, const std::string& programDirectory,
                           const std::function<void()>& invalidate,
                           const std::function<void()>& zoom);

}  // namespace tarno
