// The drawing of a solution: contour lines with their labels and pathlines with
// their time and elevation marks, read from the files the solver and the
// contourer left in the project's solver directory (<base>.CTR, <base>.PTH).
#pragma once

#include <filesystem>

#include "display/elem_draw.h"

namespace tarno {

// The contour lines of <base>.CTR, one polyline per line of a level with the
// contour pen, labelled "###0.0" in Arial along the first segment whose midpoint
// lies inside the window shrunk by 4 percent. Nothing when the Model row's
// contourshow is not above 0, the Contours switch is off, or the file is missing.
void ModelDrawContours(DrawContext& ctx);

// The pathlines of <base>.PTH with the pathline pen; with time or elevation marks
// on, the marks are written to TICMARKST.TIC and TICMARKSZ.TIC in the same
// directory and drawn. Nothing when the file is missing or the switch is off.
void ModelDrawPathlines(DrawContext& ctx);

}  // namespace tarno
