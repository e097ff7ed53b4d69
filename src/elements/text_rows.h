// What the text element files need of the element layer beyond element_store.h:
// the stand-alone point at an exact place (a test point import reuses it) and a
// row of a point element written onto a vertex that already exists.
#pragma once

#include <cstdint>
#include <optional>

#include "elements/element.h"
#include "store/database.h"

namespace tarno {

// The VID of a stand-alone point (PID -1) whose X and Y are exactly (x, y), the
// lowest VID when there are several; none when there is none.
std::optional<std::int64_t> FindPointVertexAt(Database& db, double x, double y);

// Writes the row of the point element `e` (a test point, a well, a particle) for the
// existing vertex `vid`, in one transaction: e.key, the row's VID and e.vertices take
// that vertex. Throws InvalidArgumentError for a kind that is not a point, or when
// the vertex is missing or already carries a row of the kind's table.
void InsertPointOnVertex(Database& db, Element& e, std::int64_t vid);

}  // namespace tarno
