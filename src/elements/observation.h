// The observation and tracing objects as the solver sees them: test points (and
// their TPResults rows), flux inspection lines and particles, with their lines in
// the extract and trace blocks of the command file.
#pragma once

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "elements/command_block.h"
#include "elements/element.h"

namespace tarno {

// The solver label of a test point of a type: "TP_" for a piezometer, "TG_" for a
// gage, "TS_" for a lake stage, and the VID.
std::string TestPointSolverLabel(const std::string& type, std::int64_t vid);
// "FL_" and the PID.
std::string FluxLineSolverLabel(std::int64_t pid);

// The extraction points of the extract block: the piezometers, then the gages, then
// the lake stages, each by VID (the order of `testPoints`, which LoadAll gives).
void WriteTestPointExtracts(std::ostream& out, const std::vector<Element>& testPoints,
                            const ModelFrame& frame);
// The flux inspection lines of the extract block, in PID order, each with its
// vertices (a line of no vertices still gets its two lines).
void WriteFluxLineExtracts(std::ostream& out, const std::vector<Element>& fluxLines,
                           const ModelFrame& frame);
// The points of the trace block: " points", one line per particle, " quit"; nothing
// without particles. A particle at a share of the saturated thickness (SatdThick 1)
// starts at `saturatedTop`, the others at their Elevation.
void WriteParticleTraces(std::ostream& out, const std::vector<Element>& particles,
                         const ModelFrame& frame, double saturatedTop);

// Fills TPResults with one blank row per test point (label, VID, observations,
// position, type), for the results loader to complete. The table is emptied first.
void PrepareTestPointResultRows(Database& db, const std::vector<Element>& testPoints);

}  // namespace tarno
