#pragma once
// The analytic element solution of a Model: solve, evaluate, report, save and load.
//
// Typical use by a program:
//
//   tarno::engine::Solution s(model);
//   s.setWarningSink([&](const std::string& w) { errorLog << w << '\n'; });
//   s.solve({inner, outer, store, full}, [&](const std::string& l) { messageLog << l << '\n'; });
//   auto p = s.evaluate(x, y);          // the twelve numbers of a point record
//   s.save("NAME.SOL");
//   auto t = tarno::engine::Solution::load("NAME.SOL");   // then t.solve(...) continues
//
// Every fatal condition (a singular system, memory exhausted, a .SOL that cannot be
// read) throws FatalError whose what() is a sentence for the user.

#include "engine/model.h"

#include <functional>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace tarno::engine {

class FatalError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// The head reported for a dry point.
inline constexpr double kDryHead = -9999.0;

// How the linear system of each iteration is solved: a dense LU factorisation, or a
// compressed influence matrix and GMRES (engine/hoperator.h); automatically the dense one
// below `crossover` equations.
enum class SolveMethod { Automatic, Dense, Compressed };

struct SolveOptions {
    int innerIterations = 5;       // I of " solve I O S F": at most this many inner iterations
    int outerIterations = 1;       // O: bounds the outer loop of stream routing
    bool storeOnDisk = false;      // S: accepted; the matrix is always kept in memory
    bool fullFactorisation = false;// F: true refactorises the matrix in every iteration
    SolveMethod method = SolveMethod::Automatic;  // the word after F: dense, compressed, automatic
    int crossover = kDefaultCrossover;            // Automatic: compressed from this many equations on
    // Where the compressed path is measured to win on the machines it is built for
    // (tarno-bench-hsolve; see docs/solver.md).
    static constexpr int kDefaultCrossover = 5000;
    // Compressed path: accuracy of the low-rank blocks and the residual GMRES stops at.
    // The blocks' accuracy bounds the difference from the dense solution (GMRES's does
    // not): on the regional benchmark model 1e-11 left 1.1e-8 relative in the unknowns at
    // 20,000 unknowns, 1e-12 leaves 2.8e-9 there for about 7 % more memory.
    double compressionTolerance = 1e-12;
    double gmresTolerance = 1e-13;
};

// One line of the message log per call.
using LineSink = std::function<void(const std::string&)>;

struct IterationReport {
    int outer = 0;                 // 1-based
    int inner = 0;                 // 1-based
    double largestChange = 0.0;    // largest change of any unknown (its own units)
    double largestResidual = 0.0;  // largest residual of any condition, in head
    int switches = 0;              // conditions that changed their type after this iteration
    bool refactorised = false;     // the matrix was (re)factorised in this iteration
};

// Flows by element kind. `in` is water put into the aquifer, `out` water taken out,
// both >= 0. The far-field term is the net flow across a large circle that encloses
// every element, found by integrating the normal discharge (it is what an infinite
// aquifer supplies to balance the elements). `closureError` is
// |in - out| / max(in, out) over all terms including the far field.
struct BalanceTerm {
    std::string kind;
    double in = 0.0;
    double out = 0.0;
};

struct WaterBalance {
    std::vector<BalanceTerm> terms;
    double totalIn = 0.0;
    double totalOut = 0.0;
    double difference = 0.0;       // totalIn - totalOut
    double closureError = 0.0;     // |difference| / max(totalIn, totalOut)
};

struct SolveReport {
    int wells = 0;
    int lineSinkStrings = 0;
    int lineSinkSegments = 0;
    int inhomogeneities = 0;       // accepted ones (bad polygons are skipped)
    int walls = 0;
    int ponds = 0;
    int partialWells = 0;          // accepted partially penetrating wells
    int theisWells = 0;            // transient wells (schedules: lines of one label count once)
    int theisLines = 0;            // accepted schedule lines of all transient wells
    int unknowns = 0;              // equals the number of equations
    std::vector<IterationReport> iterations;
    bool converged = false;
    WaterBalance balance;
    double assemblySeconds = 0.0;
    double factorSeconds = 0.0;
    double totalSeconds = 0.0;
    // The compressed path (compressed true): the time to build the compressed matrix (in
    // assemblySeconds as well), its memory with the sparse part and the preconditioner,
    // and the GMRES iterations of all solves.
    bool compressed = false;
    double compressSeconds = 0.0;
    double compressedBytes = 0.0;
    int krylovIterations = 0;
};

// The twelve numbers of a point record (after X and Y).
struct PointValues {
    double x = 0.0;
    double y = 0.0;
    double z = 0.0;              // elevation of evaluation (top of the saturated zone unless given)
    double potential = 0.0;      // discharge potential
    double qx = 0.0;
    double qy = 0.0;
    double vx = 0.0;             // average velocities (Q / (porosity * saturated thickness))
    double vy = 0.0;
    double head = 0.0;           // kDryHead where the aquifer is dry
    double vz = 0.0;
    double porosity = 0.0;
    double conductivity = 0.0;
    double base = 0.0;
    double recharge = 0.0;       // local areal recharge rate: -N inside inhomogeneities, the rate inside ponds
};

struct WellResult {
    std::string label;
    double x = 0.0;
    double y = 0.0;
    double radius = 0.0;
    bool headSpecified = false;
    double discharge = 0.0;      // > 0 pumping
    double head = 0.0;           // head at the screen radius (kDryHead when dry)
    double specifiedHead = 0.0;  // head-specified wells only
    double headError = 0.0;      // computed minus specified (head-specified wells only)
};

// A partially penetrating well. `head` (and `headError`) include the head loss of the
// partial penetration; the screen is the one used: clipped to the saturated zone.
struct PartialWellResult : WellResult {
    double screenTop = 0.0;
    double screenBottom = 0.0;
    double saturatedThickness = 0.0;  // at the well, from the head of the Dupuit field
    double penetration = 1.0;         // screen length over saturated thickness
    double lossFactor = 0.0;          // dimensionless f: the loss in potential is Q f / (2 pi)
    double headLoss = 0.0;            // head of the Dupuit field at the screen radius minus `head`
    bool clipped = false;             // the screen reached outside the saturated zone
};

// A transient (Theis) well at the time of evaluation: one per label. `discharge` is the sum
// of the schedule lines that started before the time; `head` the head at the screen radius
// at that time (steady solution plus every transient well).
struct TheisWellResult : WellResult {
    double time = 0.0;                // the time of evaluation
    int lines = 0;                    // schedule lines of this well
    int activeLines = 0;              // lines that started before the time of evaluation
};

struct SegmentResult {
    std::string label;
    std::string stringLabel;
    LineSinkKind kind = LineSinkKind::Head;
    double x1 = 0.0, y1 = 0.0, x2 = 0.0, y2 = 0.0;
    double strength = 0.0;       // sigma (L^2/T), > 0 takes water out of the aquifer
    double discharge = 0.0;      // total inflow: sigma * length
    double specifiedHead = 0.0;  // the head of the condition (sigma for discharge segments)
    double calculatedHead = 0.0; // aquifer head at the segment's centre
    double error = 0.0;          // residual of the segment's condition, in head
    double width = 0.0;
    double resistance = 0.0;
    double depth = 0.0;
    double baseFlow = 0.0;       // routed: groundwater part of the stream flow at the downstream end
    double overlandFlow = 0.0;   // routed: end inflows and overland flow part of it
    std::string downstreamLabel; // routed: the segment this one flows into ("" at an end)
    bool percolating = false;    // held at -w d / c
    bool inactive = false;       // a drain taking nothing, a dry stream reach, a held gallery segment
};

// One vertex of an inhomogeneity: the vertex, the centre of the edge that starts there,
// and the state of the boundary. Jumps are Phi(inside) - Phi(outside); "errors" are the
// residuals of the conditions: in potential for the jump condition, in discharge per
// unit length for the normal flow (outside minus inside).
struct InhomogeneityNode {
    std::string label;
    double x1 = 0, y1 = 0, xc = 0, yc = 0;
    double jumpNode = 0.0;             // jump at the vertex
    double jumpParabolic = 0.0;        // parabolic part of the jump at the edge's centre
    double extractionNode = 0.0;       // extraction rate N at the vertex (real part)
    double extractionNodeImag = 0.0;   // always 0: the area sink is uniform
    double extractionCentre = 0.0;     // N at the edge's centre
    double transmissivityFactor = 1.0; // inside over outside transmissivity at the edge's centre
    double errorNode = 0.0;            // jump condition near the vertex (potential)
    double errorCentre = 0.0;          // jump condition at the centre (potential)
    double flowErrorCentre = 0.0;      // normal flow at the centre, outside minus inside
};

struct InhomogeneityResult {
    std::string label;
    double conductivity = 0, base = 0, extraction = 0, porosity = 0;  // as used (kAsAquifer resolved)
    double area = 0;
    double averageJump = 0;            // mean jump of the potential along the boundary
    std::vector<InhomogeneityNode> nodes;
};

// One segment of a wall, by the vertex it starts at. Jumps are Phi(left) - Phi(right)
// for the direction in which the vertices are given.
struct WallNode {
    std::string label;
    double x1 = 0, y1 = 0, xc = 0, yc = 0;
    double jumpNode = 0.0;
    double jumpParabolic = 0.0;
    double flowErrorCentre = 0.0;      // flow through the wall minus conductance times head difference
    double flowErrorNode = 0.0;        // the same near the vertex
    double headDifferenceCentre = 0.0; // head left minus head right at the centre
};

struct WallResult {
    std::string label;
    double conductivity = 0, thickness = 0, porosity = 0, bottom = 0;
    std::vector<WallNode> nodes;
};

// A segment of a wall that passes no water at all: conductivity 0 reaching the base
// (a wall whose bottom lies above the base lets the flow under it pass), or a wall that
// bounds a region that is not part of the model. Pathlines do not cross these.
struct BarrierSegment {
    std::string label;           // the wall's label
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    bool bounding = false;       // bounds an ignored region (` outside` / ` inside`)
};

class Solution {
public:
    explicit Solution(Model model);
    ~Solution();
    Solution(Solution&&) noexcept;
    Solution& operator=(Solution&&) noexcept;
    Solution(const Solution&) = delete;
    Solution& operator=(const Solution&) = delete;

    const Model& model() const;

    // Warnings about the model (skipped strings, conditions that cannot be met, ...):
    // each is sent to the sink when one is set, and always kept in warnings().
    void setWarningSink(LineSink sink);
    const std::vector<std::string>& warnings() const;

    // Runs the iterations; a second call continues from the current state.
    // Lines for the message log go to `log` (may be empty). Throws FatalError.
    SolveReport solve(const SolveOptions& options, const LineSink& log = {});
    bool solved() const;

    // The time of evaluation for transient elements (kept and saved).
    void setTime(double t);

    // Point evaluation. `z` is the elevation of evaluation; without it the top of the
    // saturated zone is used.
    PointValues evaluate(double x, double y, std::optional<double> z = std::nullopt) const;
    double potential(double x, double y) const;
    double head(double x, double y) const;
    std::pair<double, double> discharge(double x, double y) const;  // (Qx, Qy)
    // Heads at many points at once (in parallel; large models by the multipole
    // expansions of engine/fast_eval.h, within its documented tolerance).
    std::vector<double> heads(const std::vector<double>& xs, const std::vector<double>& ys) const;
    // True where a wall of kind outside or inside excludes the point from the model
    // (heads there are kDryHead; grids blank them).
    bool ignored(double x, double y) const;
    // The stream function (branch cuts run from each well and pond in the -x direction,
    // from each recharge polygon's first vertex in the -x direction, and from each
    // line-sink along its own line beyond its first vertex). Line-doublets add their
    // continuous part. NaN inside recharge polygons and ponds, where water is recharged
    // and no stream function exists. Transient wells are left out (their flow comes from
    // storage: no stream function includes it).
    double streamFunction(double x, double y) const;

    std::vector<WellResult> wellResults() const;          // fully penetrating wells
    std::vector<PartialWellResult> partialWellResults() const;
    std::vector<TheisWellResult> theisWellResults() const; // at the time of evaluation
    std::vector<SegmentResult> segmentResults() const;
    // Accepted inhomogeneities and walls (skipped bad polygons are not listed).
    std::vector<InhomogeneityResult> inhomogeneityResults() const;
    std::vector<WallResult> wallResults() const;
    // Every segment of the accepted walls that no water passes (see BarrierSegment).
    std::vector<BarrierSegment> barrierSegments() const;

    // Total flow across the polyline, counted positive from the left to the right
    // of the direction in which the vertices are given.
    double flux(const std::vector<std::pair<double, double>>& polyline) const;

    // The stream flow at the downstream end of the routed segment nearest to the point
    // (0 when the model has no routed segment).
    double gageFlow(double x, double y) const;

    WaterBalance waterBalance() const;

    // <name>.SOL: the whole state, so that a later load can evaluate and continue.
    void save(const std::string& path) const;
    static Solution load(const std::string& path);

    // The number of unknowns (= equations) of the current model.
    int unknowns() const;
    // Their values after the last solve, in the order of the equations.
    const std::vector<double>& unknownValues() const;

    struct State;  // internal

private:
    friend class FieldEvaluator;  // engine/fast_eval.h: the strengths for the expansions
    friend void setStandInStrengths(Solution& s, unsigned seed);

    std::unique_ptr<State> s_;
};

// Log text for a water balance (several lines).
std::vector<std::string> formatBalance(const WaterBalance& b);

// The words for a kind of line-sink string, in one table: its name in logs ("head",
// "drain", ...), its words in the output report ("head specified", "drain", ...) and
// its line of the water balance ("line-sinks, head specified", "drains", ...).
struct LineSinkKindWords {
    const char* name;
    const char* report;
    const char* balance;
};
const LineSinkKindWords& wordsOf(LineSinkKind k);

// The name of a line-sink kind as used in logs ("head", "drain", ...).
inline const char* kindName(LineSinkKind k) { return wordsOf(k).name; }

}  // namespace tarno::engine
