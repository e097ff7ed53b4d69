#include "elements/geometry_rows.h"

#include "elements/element_store.h"

namespace tarno {

std::vector<GeometryElement> LoadGeometry(Database& db, ElementKind kind) {
  std::vector<GeometryElement> out;
  for (Element& e : LoadAll(db, kind)) {
    GeometryElement g;
    g.kind = e.kind;
    g.key = e.key;
    g.label = e.Label();
    g.vertices = std::move(e.vertices);
    const Geometry shape = Info(kind).geometry;
    if (shape == Geometry::Polygon) {
      g.closed = true;
    } else if (kind == ElementKind::Barrier) {
      g.closed = e.row.Integer("Closed") != 0;
    }
    g.row = std::move(e.row);
    out.push_back(std::move(g));
  }
  return out;
}

bool BarrierHasConductivity(const GeometryElement& e) { return e.row.Number("HydCond") > 0.0; }

}  // namespace tarno
