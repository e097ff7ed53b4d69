// The drawing of a solution: contour lines with their labels and pathlines with
// their time and elevation marks, read from the files the solver and the
// contourer left in the project's solver directory (<base>.CTR, <base>.PTH).
#pragma once

#include <filesystem>
#include <vector>

#include "display/elem_draw.h"

namespace tarno {

// The contour lines of <base>.CTR, one polyline per line of a level with the
// contour pen, labelled "###0.0" in Arial along the first segment whose midpoint
// lies inside the window shrunk by 4 percent. A labelled line is drawn in pieces
// around the label's box, so that no pen, however thick, crosses the text.
// Nothing when the Model row's contourshow is not above 0, the Contours switch is
// off, or the file is missing.
void ModelDrawContours(DrawContext& ctx);

// The box of a label in world units: the text stands on its baseline through
// (x, y), centred along it, in the direction `angle` (degrees, counter-clockwise);
// the box reaches `halfLength` either way along the baseline, `below` under it and
// `above` over it.
struct LabelBox {
  double x = 0, y = 0, angle = 0;
  double halfLength = 0, below = 0, above = 0;
};
struct WorldPoint {
  double x = 0, y = 0;
  friend bool operator==(const WorldPoint&, const WorldPoint&) = default;
};
// The parts of a polyline that lie outside a box, in order: the line is cut where
// it enters the box and starts again where it leaves. A line that misses the box
// comes back whole, one wholly inside it not at all.
std::vector<std::vector<WorldPoint>> SplitAroundBox(const std::vector<double>& xs,
                                                    const std::vector<double>& ys,
                                                    const LabelBox& box);

// The pathlines of <base>.PTH with the pathline pen; with time or elevation marks
// on, the marks are written to TICMARKST.TIC and TICMARKSZ.TIC in the same
// directory and drawn. Nothing when the file is missing or the switch is off.
void ModelDrawPathlines(DrawContext& ctx);

}  // namespace tarno
