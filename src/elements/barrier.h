// Barriers (horizontal barriers, slurry walls): their block of the solver's
// command file and the blank NFResults row of every wall segment.
#pragma once

#include <ostream>
#include <vector>

#include "elements/command_block.h"
#include "elements/element.h"

namespace tarno {

// The barriers in PID order (the order of `barriers`, which LoadAllRows gives: the
// menu is written as soon as there is a row, and a barrier of fewer than two
// vertices writes nothing else). With `rows` every wall segment gets its blank
// NFResults row: the last vertex has one only on a closed barrier.
void WriteBarrierCommands(std::ostream& out, const std::vector<Element>& barriers,
                          const CommandWriterContext& ctx, ResultRowSink* rows);

}  // namespace tarno
