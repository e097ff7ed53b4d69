#pragma once
// Lakes: closed polygons whose stage follows from their water balance.
//
// A lake is solved as an inhomogeneity with the lake's interior conductivity and a
// uniform area sink over its polygon: the exchange through the lake bottom, N per unit
// area (> 0 takes water out of the aquifer into the lake). The bottom has resistance c,
// so the stage s and the aquifer head h under the lake meet N = (h - s) / c. In a steady
// state the lake stores nothing, so the exchange closes the lake's balance:
//
//   N A_p = (E - P) A_s(s)
//
// with A_p the polygon's area, A_s the water surface (A_p, or the stage table's area at
// the stage), P the precipitation and E the evaporation rate on the water surface.
// Without a stage table N is known at once; with one, N and s are found together by an
// outer iteration (see solveWithLakes). A lake whose stage would lie below the first
// stage of its table, or whose aquifer is dry under it, is dry: no water surface, and
// the exchange is what its inlets bring (nothing without them); its stage is reported as
// kDryHead.
//
// Routed streams link to lakes: a string marked ` Inlet` whose last vertex lies in a
// lake (or on its shore) delivers its stream flow to the lake (all of it: groundwater,
// end inflows and overland flow along the string). A string marked ` Outlet <table>` whose first
// vertex lies in a lake starts with the lake's outflow, which its rating table gives from the stage
// (replacing the string's own end inflow). The balance becomes
//
//   N A_p = (E - P) A_s(s) - Q_in + Q_out(s)
//
// and the inflows, which depend on the solution, are taken from the last solve.
//
// Lakes drawn by their shores (routed strings with ` Lake` and ` Levels`) are solved by
// engine/lake_edge.h around this iteration; their balances are part of lakeResults.

#include "engine/extract.h"
#include "engine/model.h"
#include "engine/solution.h"

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tarno::engine {

// Reads a stage table: one row per line, "stage area volume" (numbers separated by
// blanks or commas), stages strictly rising, areas and volumes not negative. Empty lines
// and lines that start with '!', '*' or '#' are comments. Returns false with a sentence
// in `error` when the file cannot be read or a row is bad.
bool readStageTable(const std::filesystem::path& path, std::vector<StageRow>& rows,
                    std::string& error);
bool parseStageTable(const std::string& text, std::vector<StageRow>& rows, std::string& error);

// Reads an outlet's rating table: one row per line, "stage discharge", stages strictly
// rising, discharges not negative; comments as in a stage table.
bool readRatingTable(const std::filesystem::path& path,
                     std::vector<std::pair<double, double>>& rows, std::string& error);
bool parseRatingTable(const std::string& text, std::vector<std::pair<double, double>>& rows,
                      std::string& error);
// The outflow at a stage: 0 below the first stage (the outlet runs dry), linear between
// the rows, on with the last two rows' slope above them (never below 0).
double ratingFlow(const std::vector<std::pair<double, double>>& rating, double stage);

// The water surface at a stage: 0 below the first stage (a dry lake), linear between
// rows, the last area above the last stage (banks that rise straight up).
double stageArea(const std::vector<StageRow>& table, double stage);
// The volume held at a stage, in the same way (the last row's volume grows with the
// last area above it).
double stageVolume(const std::vector<StageRow>& table, double stage);

// LakeResult (a lake's balance) is declared in engine/extract.h, which writes it.

// The model as the engine solves it: each lake with three or more vertices appended to
// the inhomogeneities (its label, interior conductivity, extraction = its exchange).
Model withLakeElements(const Model& model);

// The point at which the aquifer head under a lake is taken: the polygon's centroid
// when it lies inside, else the vertex-average point moved inside along a grid search.
std::pair<double, double> lakeHeadPoint(const std::vector<Vertex>& vertices);

struct LakeSolveReport {
  SolveReport last;        // the report of the last solve
  int lakeIterations = 0;  // solves of the whole model made for the lakes
  bool converged = true;   // every lake's balance closed (else the caller warns)
};

// Solves `model` (lakes included) and leaves the solution in `solution`; its model()
// carries the lakes with the exchange it was built with (the stage follows from it and
// the solved head, so that a saved and loaded solution reports the same). `attach` is called once
// on the final solution (to set its warning sink: earlier warnings are replayed then). `log` gets
// the message-log lines. Throws FatalError as Solution::solve.
LakeSolveReport solveWithLakes(const Model& model, std::optional<Solution>& solution,
                               const SolveOptions& options, const LineSink& log,
                               const std::function<void(Solution&)>& attach);

// Balances of the lakes of a solved solution.
std::vector<LakeResult> lakeResults(const Solution& solution);
// Lines for the message log: one block per lake.
std::vector<std::string> formatLakeBalance(const std::vector<LakeResult>& lakes);

// The stage of the lake whose boundary lies nearest the point (NaN when the model has no
// solved lake).
double nearestLakeStage(const Solution& solution, double x, double y);

// The extract source of a solution with lakes: lake stages from the lakes, and the
// lakes left out of the inhomogeneity section (they are no transmissivity inhomogeneity).
class LakeSolutionSource : public SolutionSource {
 public:
  explicit LakeSolutionSource(const Solution& s) : SolutionSource(s), s_(s) {}
  double lakeStage(double x, double y) const override;
  std::vector<InhomogeneityResult> inhomogeneities() const override;
  std::vector<LakeResult> lakes() const override;

 private:
  const Solution& s_;
};

}  // namespace tarno::engine
