// Tools > Import > GIS Vector File... and Tools > Export > GeoPackage... in the shell.
#pragma once

namespace tarno {

class ShellController;

// The import of a GIS vector file into the open project; imported elements remove
// the solution and the map is drawn again.
void ImportGisVectorCommand(ShellController& shell);
// The export of the open project to a GeoPackage.
void ExportGeoPackageCommand(ShellController& shell);

}  // namespace tarno
