#include "elements/extents.h"

#include <algorithm>

#include "elements/element_store.h"

namespace tarno {

VertexSummary SummariseVertices(Database& db) {
  Statement st = db.PrepareRaw("select count(*), min(X), max(X), min(Y), max(Y) from Vertices");
  VertexSummary s;
  if (!st.Step()) return s;
  s.count = st.GetInt64(0);
  if (!st.IsNull(1)) s.box = ModelExtents{st.GetDouble(1), st.GetDouble(2), st.GetDouble(3), st.GetDouble(4)};
  return s;
}

std::int64_t CountPolygons(Database& db) {
  Statement st = db.PrepareRaw("select count(*) from Polygons");
  st.Step();
  return st.GetInt64(0);
}

ModelExtents ElementExtents(Database& db, const MapWindow& fallback,
                            const std::optional<ModelExtents>& basemapExtents) {
  ModelExtents e;
  if (const auto box = SummariseVertices(db).box) {
    e = *box;
  } else {
    e.MinX = std::min(fallback.Left, fallback.Right);
    e.MaxX = std::max(fallback.Left, fallback.Right);
    e.MinY = std::min(fallback.Bottom, fallback.Top);
    e.MaxY = std::max(fallback.Bottom, fallback.Top);
  }
  if (basemapExtents) {
    e.MinX = std::min(e.MinX, basemapExtents->MinX);
    e.MaxX = std::max(e.MaxX, basemapExtents->MaxX);
    e.MinY = std::min(e.MinY, basemapExtents->MinY);
    e.MaxY = std::max(e.MaxY, basemapExtents->MaxY);
  }
  if (e.MinX == e.MaxX && e.MinY == e.MaxY) {
    e.MinX -= 1.0;
    e.MaxX += 1.0;
    e.MinY -= 1.0;
    e.MaxY += 1.0;
  }
  if (const auto u = LoadUniformFlow(db)) {
    const double rx = u->row.Number("UNIFLOWRefX");
    const double ry = u->row.Number("UNIFLOWRefY");
    e.MinX = std::min(e.MinX, rx);
    e.MaxX = std::max(e.MaxX, rx);
    e.MinY = std::min(e.MinY, ry);
    e.MaxY = std::max(e.MaxY, ry);
  }
  return e;
}

}  // namespace tarno
