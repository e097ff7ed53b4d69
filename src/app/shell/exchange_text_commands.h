// The Tools menu's entries of the text element files: Import IMPORT(4) to IMPORT(10)
// (.huc, .lss, .inh, discharge and head wells, test points, text labels) and Export
// EXPORT(4) to EXPORT(9) (the hydrologic unit's .lss or .huc, .inh, both kinds of
// wells, test points, text labels).
#pragma once

#include <string>

namespace tarno {

class ShellController;

// Runs one entry in the error trap: the mouse is off while it runs; an import that
// changed the model removes the solution, and any import redraws the map.
void TextExchangeCommand(ShellController& shell, const std::string& key);

}  // namespace tarno
