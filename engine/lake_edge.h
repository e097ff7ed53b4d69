#pragma once
// Lake edges: a lake drawn by its shore, a line-sink string that holds the lake's stage.
//
// A routed string marked ` Lake <name>` with ` Levels <bottom> <estimate>` is the shore
// of a lake. Its segments are head-specified line-sinks (with the string's resistance,
// width and depth) at one common head, the stage s, and the water inside the shore
// (the polygon of the string's vertices, closing implicitly) has the balance
//
//   Q_gw(s) + Q_in - Q_out(s) - (E - P) A = 0
//
// with Q_gw the groundwater the edge takes from the aquifer (the sum of its segments'
// discharges, negative where the lake loses water to the aquifer), Q_in the stream
// flow of the routed strings that end on the shore or inside it, Q_out the outflow of
// the strings marked ` Outlet <table>` that start there (their rating table at the
// stage), E - P the string's end inflow, read as evaporation less precipitation per
// unit of the lake's area A. Q_gw falls as s rises (a linear function of s for a fixed
// state of the other conditions), so the stage is found by a secant iteration that
// starts from the two estimates the string gives: the segments' head and the estimate
// of ` Levels`. Each step is a full solve of the model (with its polygon lakes, whose
// own iteration runs inside it).
//
// A stage below the bottom makes the lake dry: the edge becomes a drain at the bottom
// (it takes what reaches it, never gives water back), evaporation takes whatever comes
// in, and the stage is reported as the dry mark.
//
// The ` Lake` name is not used: each lake edge string is a lake of its own (several
// strings around one lake would have to be drawn as one string).

#include "engine/lake.h"
#include "engine/model.h"
#include "engine/solution.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tarno::engine {

bool hasLakeEdges(const Model& model);

// Solves a model with lake edges (and polygon lakes) and leaves the solution in
// `solution`, whose model holds the lake edges as head-specified strings at their
// stages with the stage, the dry flag and the linked strings recorded. Without lake
// edges it is solveWithLakes. Arguments and errors as solveWithLakes.
LakeSolveReport solveWithLakeEdges(const Model& model, std::optional<Solution>& solution,
                                   const SolveOptions& options, const LineSink& log,
                                   const std::function<void(Solution&)>& attach);

// The balances of the lake edges of a solved solution, in the form of the lakes'.
std::vector<LakeResult> lakeEdgeResults(const Solution& solution);

// The stage of the lake edge nearest the point and its distance (NaN and infinity when
// the solution has none); a dry lake gives kDryHead.
std::pair<double, double> nearestLakeEdgeStage(const Solution& solution, double x, double y);

}  // namespace tarno::engine
