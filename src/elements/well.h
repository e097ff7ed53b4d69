// Wells: their blocks of the solver's command file, their result rows, their
// particles for the tracing, and the counts of the model size.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "elements/command_block.h"
#include "elements/element.h"

namespace tarno {

// "WL_" and the VID: the well's label in the solver and in WLResults.
std::string WellSolverLabel(std::int64_t vid);

// The seven blocks of wells, each written when it has a well, in this order:
// discharge and head wells, discharge and head partially penetrating wells,
// transient wells, sink disks with discharge and with head. Within a block the
// wells go by VID (the order of `wells`, which LoadAll gives). With `rows` each
// well of the first five blocks gets its blank WLResults row (a pumping schedule
// of several rows with one label gets one).
void WriteWellCommands(std::ostream& out, const std::vector<Element>& wells,
                       const CommandWriterContext& ctx, ResultRowSink* rows);

// The tracing block's lines of wells that release particles (NParticles > 0).
void WriteWellParticleCommands(std::ostream& out, const std::vector<Element>& wells,
                               const ModelFrame& frame);

// The wells by kind, as "Model Size" and the batch front end's description count
// them: a partially penetrating well is of that kind whatever else it is, a
// transient one is not counted among the plain (2-D) wells. `unknowns` is the number
// of equations they add (1 for a head-specified plain well, 3 for a head-specified
// and 2 for a discharge-specified partially penetrating well).
struct WellCounts {
  std::int64_t twoD = 0;
  std::int64_t partiallyPenetrating = 0;
  std::int64_t transient = 0;
  std::int64_t unknowns = 0;
  std::int64_t total() const { return twoD + partiallyPenetrating + transient; }
};
// Counts every row of Wells, with or without its vertex. Throws StoreError when the
// table lacks the three kinds' fields (a file of an older version).
WellCounts CountWells(Database& db);

// Half of the mean head of the head-specified wells, as the reference head of a
// new solve takes it.
double HalfMeanHeadOfHeadWells(Database& db);

}  // namespace tarno
