// The extents of the model as the elements make them: the box of every vertex,
// widened by the base maps shown and by the uniform flow's reference point. The
// model origin of the solver is their centre; it is written only by the command
// file writer (ModelCheckExtents), never as a side effect of reading the extents.
#pragma once

#include <cstdint>
#include <optional>

#include "store/database.h"

namespace tarno {

// The map window now on screen, in map units.
struct MapWindow {
  double Left = 0.0;
  double Right = 0.0;
  double Top = 0.0;
  double Bottom = 0.0;
};

// The extents of the model (all vertices, widened as the extents operation does).
struct ModelExtents {
  double MinX = 0.0;
  double MaxX = 0.0;
  double MinY = 0.0;
  double MaxY = 0.0;
};

// The number of vertices of the project and their box; the box is none when there
// are none.
struct VertexSummary {
  std::int64_t count = 0;
  std::optional<ModelExtents> box;
};
VertexSummary SummariseVertices(Database& db);
// The number of Polygons rows (strings and polygons).
std::int64_t CountPolygons(Database& db);

// The extents of all vertices; the map window `fallback` when there are none. The
// base maps' extents widen them; a single point is widened by 1 in every
// direction; the uniform flow's reference point widens them when it is in use.
// Reads only.
ModelExtents ElementExtents(Database& db, const MapWindow& fallback,
                            const std::optional<ModelExtents>& basemapExtents = std::nullopt);

}  // namespace tarno
