// Lakes: their block of the solver's command file. Lakes have no result rows of
// their own; their stage comes back through the lake stage test points.
#pragma once

#include <ostream>
#include <vector>

#include "elements/command_block.h"
#include "elements/element.h"

namespace tarno {

// The lakes in PID order (the order of `lakes`, which LoadAllRows gives: the menu,
// with its capital I, is written as soon as there is a row, and a lake of fewer
// than two vertices writes nothing else).
void WriteLakeCommands(std::ostream& out, const std::vector<Element>& lakes,
                       const CommandWriterContext& ctx);

}  // namespace tarno
