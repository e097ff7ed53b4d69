#pragma once
// The extract file: the results a front end reads back after a run.
//
// Layout (core/solver_files.h fixes it for the writer here and the front end's
// reader; the first character of each line gives its kind):
//   * data points                      first line, always
//   @<point records>                   one per point line, in the order given
//   * <section head>                   the requested sections, each followed by
//    <record>, <record>, ...           records that begin with a blank
//   ! ...                              lines the reader skips (notes, values
//                                      of parts not computed by this version)
//
// Point record: '@', then 15 comma-separated fields: X as %15.6E, then Y, Z,
// potential, Qx, Qy, vx, vy, head, vz, porosity, conductivity, base, recharge as
// %14.6E, then the label. The head occupies columns 123-136.
// Gage record: '@', "gage" right-aligned in 13 characters, X, Y and the stream
// flow as %13.5E, the label: the flow occupies columns 44-56.
// Lake stage record: '@', "lake_stage" right-aligned in 19 characters, X, Y and
// the head as %13.5E, the label: the head occupies columns 50-62.
// Interface record (` interface x y`): '@', "interface" right-aligned in 13
// characters, X, Y and the elevation of the salt water interface as %13.5E, then an
// empty label: the elevation occupies columns 44-56, as a gage's flow. -9999 where
// there is no interface under the point (no interface data, no fresh water, or
// fresh water down to the base). Interface and point records keep the order of
// their lines in the command file.
// Cell leakage record (` cell_leakage x y`): as the interface record, with the word
// "cell_leakage" and the leakage rate of the grid cell under the point (0 outside it).
// Section records: numbers as %.8E separated by ", ".
// Inhomogeneities: per element a header " label, K, B, N, P, area, average jump" (7 fields)
// and per vertex a node record of 14 fields; walls: a header " label, K, T, P, bottom"
// (5 fields) and per segment a node record of 10 fields (see InhomogeneityNode, WallNode).
// Lake balances (with the inhomogeneities, when the model has lakes): per lake one record
// of label, first and last vertex label and 17 numbers (core/solver_files.h, lake_balance).

#include "core/solver_files.h"
#include "engine/command.h"
#include "engine/saltwater.h"
#include "engine/fast_eval.h"
#include "engine/solution.h"

#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace tarno::engine {

// A lake's balance, as the lake information of the front end shows it. Inflows and
// outflows are rates (L^3/T), all >= 0. Groundwater in/out is the net exchange through
// the bottom (the exchange is uniform over the bottom, so it is either in or out).
struct LakeResult {
  std::string label;
  std::string firstLabel, lastLabel;  // labels of the first and last vertex
  // Overland flow straight into a lake has no command of its own: both terms are 0 (the
  // overland flow of an inlet string reaches the lake as part of its stream flow).
  double polygonArea = 0.0;
  double surfaceArea = 0.0;  // water surface at the stage
  double volume = 0.0;       // from the stage table (0 without one)
  bool hasTable = false;     // the lake has a stage table (the volume is its)
  double stage = 0.0;        // kDryHead when dry
  double aquiferHead = 0.0;  // head of the aquifer under the lake
  bool dry = false;
  double precipitation = 0.0, groundwaterIn = 0.0, overlandIn = 0.0, streamIn = 0.0, totalIn = 0.0;
  double evaporation = 0.0, groundwaterOut = 0.0, overlandOut = 0.0, streamOut = 0.0,
         totalOut = 0.0;
  double error = 0.0;         // totalIn - totalOut
  double errorPercent = 0.0;  // 100 |error| / max(totalIn, totalOut)
};

// Where the extract file's values come from: the solution, or a stand-in in tests.
class ExtractSource {
 public:
  virtual ~ExtractSource() = default;
  // Told before the point records how many there are (a source may prepare for many).
  virtual void expectPoints(long count) const {}
  virtual PointValues point(double x, double y, std::optional<double> z) const = 0;
  virtual double gageFlow(double x, double y) const = 0;
  // The stage of the lake whose boundary lies nearest the point.
  virtual double lakeStage(double x, double y) const = 0;
  virtual std::vector<WellResult> wells() const = 0;
  virtual std::vector<SegmentResult> segments() const = 0;
  virtual double flux(const std::vector<std::pair<double, double>>& polyline) const = 0;
  virtual std::vector<InhomogeneityResult> inhomogeneities() const { return {}; }
  virtual std::vector<WallResult> walls() const { return {}; }
  virtual std::vector<PartialWellResult> partialWells() const { return {}; }
  virtual std::vector<TheisWellResult> theisWells() const { return {}; }
  // The elevation of the salt water interface under the point (none: no interface there).
  virtual std::optional<double> interfaceElevation(double, double) const { return std::nullopt; }
  // The last leakage check of the run: the total leakage of the cells' rates, the total
  // integrated from the heads (when known) and the relative difference (none: no check).
  virtual std::optional<std::vector<double>> leakageCheck() const { return std::nullopt; }
  // The balances of the lakes (none: a model without lakes).
  virtual std::vector<LakeResult> lakes() const { return {}; }
  // The leakage rate of the leakage grid's cell under the point (0 outside the grid).
  virtual double leakageRate(double, double) const { return 0.0; }
};

// The source backed by a solved Solution. This version has no lakes: a lake
// stage point reports the aquifer head at the point.
class SolutionSource : public ExtractSource {
 public:
  explicit SolutionSource(const Solution& s) : s_(s) {}
  // Many points of a large model are evaluated by the multipole expansions (fast_eval.h).
  void expectPoints(long count) const override {
    evaluator_.reset();
    if (FieldEvaluator::multipoleFor(s_, count)) evaluator_ = std::make_unique<FieldEvaluator>(s_, count);
  }
  PointValues point(double x, double y, std::optional<double> z) const override {
    return evaluator_ ? evaluator_->evaluate(x, y, z) : s_.evaluate(x, y, z);
  }
  double gageFlow(double x, double y) const override { return s_.gageFlow(x, y); }
  double lakeStage(double x, double y) const override { return s_.head(x, y); }
  std::vector<WellResult> wells() const override { return s_.wellResults(); }
  std::vector<SegmentResult> segments() const override { return s_.segmentResults(); }
  double flux(const std::vector<std::pair<double, double>>& p) const override { return s_.flux(p); }
  std::vector<InhomogeneityResult> inhomogeneities() const override { return s_.inhomogeneityResults(); }
  std::vector<WallResult> walls() const override { return s_.wallResults(); }
  std::vector<PartialWellResult> partialWells() const override { return s_.partialWellResults(); }
  std::vector<TheisWellResult> theisWells() const override { return s_.theisWellResults(); }
  double leakageRate(double x, double y) const override;
  std::optional<double> interfaceElevation(double x, double y) const override { return interfaceElevationAt(s_, x, y); }

 private:
  const Solution& s_;
  mutable std::unique_ptr<FieldEvaluator> evaluator_;
};

// Exact head texts of the sections (their layout is shared with the front end's reader).
inline constexpr const char* kHeadDataPoints = solver_files::kHeadDataPoints;
inline constexpr const char* kHeadDischargeWells = solver_files::kHeadDischargeWells;
inline constexpr const char* kHeadHeadWells = solver_files::kHeadHeadWells;
inline constexpr const char* kHeadDischargePartialWells = solver_files::kHeadDischargePartialWells;
inline constexpr const char* kHeadHeadPartialWells = solver_files::kHeadHeadPartialWells;
inline constexpr const char* kHeadTheisWells = solver_files::kHeadTheisWells;
inline constexpr const char* kHeadDischargeLineSinks = solver_files::kHeadDischargeLineSinks;
inline constexpr const char* kHeadHeadLineSinks = solver_files::kHeadHeadLineSinks;
inline constexpr const char* kHeadDrains = solver_files::kHeadDrains;
inline constexpr const char* kHeadGalleries = solver_files::kHeadGalleries;
inline constexpr const char* kHeadInhomogeneities = solver_files::kHeadInhomogeneities;
inline constexpr const char* kHeadWalls = solver_files::kHeadWalls;
inline constexpr const char* kHeadFluxLines = solver_files::kHeadFluxLines;
inline constexpr const char* kHeadStreamLinkages = solver_files::kHeadStreamLinkages;
inline constexpr const char* kHeadLakeBalances = solver_files::kHeadLakeBalances;

// Record formatters (one line each, without line end).
std::string formatPointRecord(const PointValues& v, const std::string& label);
std::string formatGageRecord(double x, double y, double flow, const std::string& label);
std::string formatLakeStageRecord(double x, double y, double head, const std::string& label);
std::string formatInterfaceRecord(double x, double y, double elevation);
std::string formatCellLeakageRecord(double x, double y, double rate);
// " v1, v2, ..., label": numbers as %.8E.
std::string formatSectionRecord(const std::vector<double>& values, const std::string& label);
// " label, v1, v2, ...": the records of inhomogeneities and walls, label first.
std::string formatLabelFirstRecord(const std::string& label, const std::vector<double>& values);

// Writes the whole extract file for one extract block. Values that are not
// finite are written as -9999 and counted in `nonFinite` (for the error log).
void writeExtract(std::ostream& out, const ExtractInput& block, const ExtractSource& source, int* nonFinite = nullptr);

}  // namespace tarno::engine
