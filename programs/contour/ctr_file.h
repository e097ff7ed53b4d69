// The contour file <base>.CTR:
//
//   LEVEL  1.000000E+01            one line per polyline: "LEVEL", then from
//          5.000000E+02 -2.500000E+02  column 6 the level in 14 columns (%14.6E);
//          ...                         then its points: 6 blanks, X from column 7
//                                      and Y from column 21, 14 columns each.
//
// Lines end with CR LF, as every text file of the system does. Two points in a
// row that print the same are written once; a polyline left with fewer than two
// point lines is not written.
#pragma once

#include <string>
#include <vector>

#include "programs/contour/contour.h"

namespace tarno::contour {

// Writes `v` as printf's "%14.6E" does, into out[0..13]; no terminator.
void format14E(double v, char* out);

// Appends the text of the contour file for `lines` to `out`.
void appendContourText(const std::vector<Polyline>& lines, std::string& out);

}  // namespace tarno::contour
