// A BBM vector map as a base map layer of the redraw (display/basemap_layer.h).
#pragma once

#include <optional>
#include <string>

#include "basemaps/bbm.h"
#include "basemaps/layers.h"

namespace tarno {

class BbmLayer : public BaseMapLayer {
 public:
  // Connects the map of the row and gives it the row's colour. Throws Error naming
  // the file when it cannot be opened or is not a BBM file.
  explicit BbmLayer(const BaseMapRow& row);

  const std::string& Name() const override { return name_; }
  bool IsRaster() const override { return false; }
  // The header's bounding box; none for a multiplier of 0, which places nothing.
  std::optional<MapExtents> Extents() const override;
  // Draws areas, lines and points (or the command stream) inside the layer's
  // window, telling its boxes through the layer's user interface.
  void Draw(VGraphGDI& layer) override;

  BBMap& Map() { return map_; }
  const BBMap& Map() const { return map_; }

 private:
  std::string name_;
  BBMap map_;
};

}  // namespace tarno
