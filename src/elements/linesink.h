// Line-sink strings: their three blocks of the solver's command file (discharge
// strings, head strings with drains and galleries, routed streams), the blank
// LSResults row of every segment, the type of a string in the result views, and the
// questions a new solve asks about them.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "elements/command_block.h"
#include "elements/element.h"

namespace tarno {

// "LS_", the string's PID and the Seq of the segment's end vertex.
std::string LinesinkSegmentLabel(std::int64_t pid, std::int64_t seq);

// The three blocks in their order, each with the strings of its kind in PID order
// (the order of `strings`, which LoadAllRows gives: a menu is written as soon as its
// kind has a row, and a string of fewer than two vertices writes nothing else).
// With `rows` each segment gets its blank LSResults row. Throws tarno::Error
// (division by zero) for a string whose vertices all coincide.
void WriteLinesinkCommands(std::ostream& out, const std::vector<Element>& strings,
                           const CommandWriterContext& ctx, ResultRowSink* rows);

// The string's type as the result views and the search show it: "NearField",
// "Farfield", "Drain", "Galleries", "Discharge", "Lake" or "Stream" (the last test
// that holds wins, in this order).
std::string LinesinkSearchType(const Element& string);

// Half of the mean of the end heads of the head-specified strings, as the
// reference head of a new solve takes it.
double HalfMeanHeadOfHeadLinesinks(Database& db);

}  // namespace tarno
