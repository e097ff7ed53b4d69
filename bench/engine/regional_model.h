#pragma once
// The regional benchmark model family: a river basin of meandering head-specified
// line-sink strings with resistance (a main river across the basin and tributaries
// from both sides running into it), head-specified and discharge wells between the
// rivers, and a few inhomogeneities with recharge in the gaps between tributaries.
//
// The basin grows with the size asked for, so that the density of the elements stays
// that of a real basin (segments of about 200 m, tributaries about 6 km apart): the
// side is 1000 m times the square root of `unknowns`. The aquifer is confined at the
// heads of the rivers, so that one iteration is the whole solution.
//
// The number of unknowns of the model (Solution::unknowns()) lies within 1 % of
// `unknowns` for unknowns >= 1000 (small sizes: within a few unknowns). The same
// (unknowns, seed) gives the same model on every machine: only integer arithmetic
// drives the random choices (std::mt19937 and our own conversion to [0, 1)).

#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "engine/model.h"

namespace tarno::engine::bench {

Model MakeRegionalModel(int unknowns, unsigned seed);

// Writes a model of this family as a command file for tarno1 (the aquifer with its
// reference point, the wells, the head-specified line-sink strings with resistance and
// width, the inhomogeneities), then ` solve 1 1 0 1 <method>` (method "dense",
// "compressed", "automatic" or empty) and an extract file `<name>.XTR` with the points
// given (labelled TP_<k>), the wells and the line sinks. Only the kinds of element this
// family uses are written.
void WriteCommandFile(const Model& m, std::ostream& out, const std::string& name,
                      const std::string& method,
                      const std::vector<std::pair<double, double>>& points);

// The heads of an extract file written for this family, by label: the points (the head
// in columns 123-136), the discharge wells (the fifth number) and the head-specified line
// sinks (the sixth, the calculated head).
std::map<std::string, double> ExtractHeads(const std::string& path);

}  // namespace tarno::engine::bench
