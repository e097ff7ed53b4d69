// A base map under the model, as the redraw pipeline sees it: something with
// extents that draws itself on the graphics layer for the current window.
//
// The base map kinds (BBM vector maps, shapefiles, CAD files, raster images) live in
// src/basemaps; the pipeline knows them only through this interface, so the display
// does not depend on the map readers. Raster layers draw before vector layers.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "display/vgraph.h"
#include "elements/extents.h"

namespace tarno {

struct MapExtents {
  double Left = 0.0, Right = 0.0, Top = 0.0, Bottom = 0.0;
};

class BaseMapLayer {
 public:
  virtual ~BaseMapLayer() = default;
  // The full path of the map (the Basemaps row's MapName).
  virtual const std::string& Name() const = 0;
  // True for images, drawn first; vector maps draw over them.
  virtual bool IsRaster() const = 0;
  // The map's extents in map units; none when the map holds no geometry.
  virtual std::optional<MapExtents> Extents() const = 0;
  // Draws the part of the map inside the layer's current window. A layer that is
  // switched off (the row's Show) is not asked to draw.
  virtual void Draw(VGraphGDI& layer) = 0;

  // The row's Show: a map switched off is neither drawn nor counted in the extents.
  bool Show = true;
};

using BaseMapLayers = std::vector<std::unique_ptr<BaseMapLayer>>;

// The box of the extents of the shown maps of a list, for widening the model's
// extents (Zoom Extents, the model origin). None without a list, without a shown
// map, or when no shown map has extents. A map whose extents cannot be read is
// left out.
std::optional<ModelExtents> ShownMapExtents(const BaseMapLayers* maps);

}  // namespace tarno
