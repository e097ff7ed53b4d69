// Opening one base map of the project's list as a layer of the map, by its kind.
// Each kind's unit defines its opener; the catalogue picks the opener by the file's
// extension (see catalogue.h) and reports a failure with the kind's own box.
#pragma once

#include <memory>
#include <string>

#include "display/basemap_layer.h"

namespace tarno {

class UserInterface;

// One row of the project's Basemaps table and the label field of its MapLabels row.
struct BaseMapRow {
  std::string MapName;             // the full path
  int Color = 0;                   // packed RGB
  bool Show = true;
  std::string ColorField = "__NONE__";  // attribute that colours the shapes
  bool UseColorField = false;
  std::string TextField = "__NONE__";   // attribute written as labels; "__NONE__": none
};

// The kinds of base map by extension.
enum class BaseMapKind { Unknown, Bbm, Shape, Cad, Raster };

// Each throws Error with a message naming the file when the file cannot be read as
// that kind; the catalogue turns it into the kind's box.
std::unique_ptr<BaseMapLayer> OpenBbmLayer(const BaseMapRow& row);      // bbm_layer.cpp
std::unique_ptr<BaseMapLayer> OpenShapeLayer(const BaseMapRow& row);    // shape_layer.cpp
std::unique_ptr<BaseMapLayer> OpenCadLayer(const BaseMapRow& row);      // cad_layer.cpp
std::unique_ptr<BaseMapLayer> OpenRasterLayer(const BaseMapRow& row);   // raster_layer.cpp

}  // namespace tarno
