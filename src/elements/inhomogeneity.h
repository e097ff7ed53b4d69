// Inhomogeneities: their block of the solver's command file and the blank
// INResults row of every vertex.
#pragma once

#include <ostream>
#include <vector>

#include "elements/command_block.h"
#include "elements/element.h"

namespace tarno {

// The inhomogeneities in PID order (the order of `inhomogeneities`, which
// LoadAllRows gives: the menu is written as soon as there is a row, and one of
// fewer than two vertices writes nothing else). A property whose switch is off is
// -9999 (the aquifer's); the recharge goes as an extraction rate. With `rows` every
// vertex gets its blank INResults row.
void WriteInhomogeneityCommands(std::ostream& out, const std::vector<Element>& inhomogeneities,
                                const CommandWriterContext& ctx, ResultRowSink* rows);

}  // namespace tarno
