#include "display/basemap_layer.h"

#include <algorithm>
#include <cmath>

#include "core/error.h"

namespace tarno {

std::optional<ModelExtents> ShownMapExtents(const BaseMapLayers* maps) {
  if (maps == nullptr) return std::nullopt;
  std::optional<ModelExtents> box;
  for (const auto& map : *maps) {
    if (!map || !map->Show) continue;
    std::optional<MapExtents> e;
    try {
      e = map->Extents();
    } catch (const Error&) {
      continue;  // the redraw reports the map that cannot be read
    }
    if (!e || !std::isfinite(e->Left) || !std::isfinite(e->Right) || !std::isfinite(e->Top) ||
        !std::isfinite(e->Bottom))
      continue;
    const double minX = std::min(e->Left, e->Right), maxX = std::max(e->Left, e->Right);
    const double minY = std::min(e->Bottom, e->Top), maxY = std::max(e->Bottom, e->Top);
    if (!box) {
      box = ModelExtents{minX, maxX, minY, maxY};
    } else {
      box->MinX = std::min(box->MinX, minX);
      box->MaxX = std::max(box->MaxX, maxX);
      box->MinY = std::min(box->MinY, minY);
      box->MaxY = std::max(box->MaxY, maxY);
    }
  }
  return box;
}

}  // namespace tarno
