// The geometric tests on polygons that the elements share, and the local aquifer
// base that inhomogeneities set.
#pragma once

#include <span>
#include <string_view>

#include "elements/element.h"
#include "store/database.h"

namespace tarno {

// Inside by the sum of the angles the edges (the closing one included) subtend at
// the point: about 2 pi inside, about 0 outside. A point on a vertex is outside;
// fewer than three vertices hold nothing.
bool PointInPolygon(std::span<const Vertex> polygon, double x, double y);

// The area by the trapezoids under the edges, the closing edge included: positive
// for vertices in clockwise order, negative for counter-clockwise. Needs three
// vertices (0 otherwise; the caller says "Not enough points to calculate area.").
double PolygonArea(std::span<const Vertex> polygon);

// The aquifer base at a point: the BottomElevation of the smallest inhomogeneity
// with ChangeB that holds it (the first of equal areas), else the model's AQBase.
double FindLocalBase(Database& db, double x, double y);
// The local value of an aquifer property by its name. "Base" (in any case) is the
// one property that inhomogeneities set locally; any other name throws
// InvalidArgumentError.
double FindLocal(Database& db, std::string_view property, double x, double y);

}  // namespace tarno
