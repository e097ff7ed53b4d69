// The readers of this library as the catalogue's openers. Kept apart from the
// catalogue so that a program or test that brings openers of its own does not pull
// in every reader.
#include "basemaps/catalogue.h"
#include "basemaps/raster_layer.h"
#include "basemaps/world_file.h"

namespace tarno {

const BaseMapOpeners& DefaultOpeners() {
  static const BaseMapOpeners openers = [] {
    BaseMapOpeners o;
    o.bbm = OpenBbmLayer;
    o.shape = OpenShapeLayer;
    o.cad = OpenCadLayer;
    o.raster = OpenRasterLayer;
    o.worldFileExists = [](const std::string& image) { return WorldFileExists(image); };
    o.buildOverviews = [](const std::string& image) { (void)BuildOverviews(image); };
    return o;
  }();
  return openers;
}

}  // namespace tarno
