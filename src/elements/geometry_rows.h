// The element rows that the geometry exports (DXF, SURFER boundary lines,
// shapefiles) read: every element of a kind with its vertices in order, whether
// its outline closes back to the first vertex, and the row for the fields the
// exports classify by or write to their attribute tables.
#pragma once

#include <string>
#include <vector>

#include "elements/element.h"
#include "store/database.h"

namespace tarno {

struct GeometryElement {
  ElementKind kind = ElementKind::Well;
  std::int64_t key = 0;  // VID of a point, PID of a string or polygon
  std::string label;
  // In order; one for a point element.
  std::vector<Vertex> vertices;
  // The outline closes back to its first vertex: inhomogeneities, lakes, protection
  // areas, and barriers whose Closed is 1 to 3.
  bool closed = false;
  Row row;
};

// Every complete element of `kind` (wells, line-sink strings, barriers,
// inhomogeneities, protection areas, particles, test points: any kind with a
// vertex of its own), in key order. Incomplete elements (a point without its
// vertex, a string without vertices enough) are left out.
std::vector<GeometryElement> LoadGeometry(Database& db, ElementKind kind);

// A barrier with a conductivity of its own (HydCond above 0) is a horizontal
// barrier; without one it is a no-flow string.
bool BarrierHasConductivity(const GeometryElement& e);

}  // namespace tarno
