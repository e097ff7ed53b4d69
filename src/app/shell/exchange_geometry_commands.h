// Tools > Export: the geometry exports (EXPORT(10) "DXF File...", EXPORT(11)
// "SURFER Boundary Line File...", EXPORT(12) "SURFER Grid File...", EXPORT(13)
// "Shapefiles...") over the open project, the map window on screen and the step of
// the time marks drawn now.
#pragma once

namespace tarno {

class ShellController;

// Registers the four keys with the controller's command registry; each runs in the
// registry's error trap under the name of its operation.
void RegisterGeometryExportCommands(ShellController& shell);

}  // namespace tarno
