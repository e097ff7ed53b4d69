// The readers of this library as the catalogue's openers. Kept apart from the
// catalogue so that a program or test that brings openers of its own does not pull
// in every reader.
#include "basemaps/catalogue.h"

namespace tarno {

const BaseMapOpeners& DefaultOpeners() {
  static const BaseMapOpeners openers = [] {
    BaseMapOpeners o;
    o.bbm = OpenBbmLayer;
    o.shape = OpenShapeLayer;
    // Not yet: the CAD and raster readers, the world file search and the overview
    // builder come with the raster layers (OpenCadLayer, OpenRasterLayer,
    // WorldFileExists, BuildOverviews). Until they are merged a CAD file or an image
    // is refused by the catalogue's boxes as a file it cannot read.
    return o;
  }();
  return openers;
}

}  // namespace tarno
