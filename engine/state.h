#pragma once
// Internal state of a Solution: the elements in the form the mathematics needs,
// the unknowns, the factorised matrix and the nonlinear states. Internal to the engine.

#include "engine/area.h"
#include "engine/fields.h"
#include "engine/kernels.h"
#include "engine/solution.h"

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace tarno::engine {

class RowSink;        // engine/elements.h
struct IterativeSolve;  // engine/hoperator.h: the compressed operator and its preconditioner

enum class SegState : std::uint8_t {
    Free = 0,         // its own condition holds (head, resistance, common gallery head)
    Percolating = 1,  // resistance string with the aquifer below the bottom of the water: sigma = -w d / c
    Off = 2,          // drain that would recharge the aquifer: sigma = 0
    Held = 3,         // gallery segment held at its own (minimum) head
    Limited = 4,      // dry stream reach: takes exactly the flow that reaches it
};

enum class UnknownKind : std::uint8_t { WellQ, SegSigma, GalleryPhi, Constant, DbNode, DbPara, PondRate };

// A region of the model with its own aquifer properties. Domain 0 is the aquifer;
// domain i + 1 the inside of the i-th accepted inhomogeneity.
struct DomainEl {
    int model = -1;               // index into Model::inhomogeneities (-1: the aquifer)
    detail::AquiferFn aq;
    double porosity = 0.3;
    double extraction = 0.0;      // N: the recharge inside is -N
    double averageHead = 0.0;     // estimate of the head inside (first iteration)
    double area = 0.0;
    std::vector<detail::Pt> poly;
    bool hasSink = false;
    detail::AreaSinkGeom sink;
};

// A region that is not part of the model (behind a wall of kind outside or inside).
struct IgnoredEl {
    std::vector<detail::Pt> poly;
    bool outside = false;         // true: the outside of the polygon is ignored
};

// One line-doublet: an edge between two inhomogeneity domains, or a wall segment.
// u[k] is the unknown of the start node, end node and parabolic part (-1: held at 0).
struct DbEdge {
    detail::DbGeom g;
    bool wall = false;
    int owner = 0;                // index into Model::inhomogeneities or Model::walls
    int vertex = 0;               // index of the model vertex the edge starts at
    int dl = 0, dr = 0;           // domains on the left and the right
    double K = 0, T = 1, Bw = 0;  // wall: conductivity, thickness, bottom
    bool impermeable = false;     // wall: no flow at all (K = 0 reaching the base, or bounding an ignored region)
    int u[3] = {-1, -1, -1};
    double val[3] = {0, 0, 0};
};

// A pond. `rate` is the rate per area put into the aquifer (known or solved).
struct PondEl {
    int model = 0;
    double x = 0, y = 0, R = 0;
    bool headSpecified = false;
    double value = 0;
    double rate = 0;
    int unknown = -1;
    int dom = 0;
};

struct WellEl {
    int model = 0;       // index into Model::wells (or Model::partialWells when partial >= 0)
    int partial = -1;    // index into Model::partialWells: a partially penetrating well
    double top = 0, bottom = 0;  // partial: the screen as given (top above bottom)
    double loss = 0;     // partial: potential lost at the well per unit discharge, f / (2 pi)
    double usedTop = 0, usedBottom = 0, saturated = 0;  // partial: the screen clipped to the saturated zone
    bool clipped = false;       // partial: the screen reached outside the saturated zone
    bool clipReported = false;  // partial: the clipping has been reported (once per solution)
    double fB = -1, fZb = 0, fZt = 0, fValue = 0;  // partial: the last loss factor and its arguments
    double x = 0, y = 0, rw = 0;
    bool headSpecified = false;
    double value = 0;    // head (head-specified) or discharge
    double q = 0;        // discharge (known or solved)
    int unknown = -1;
    int dom = 0;         // domain of the well's screen point
};

// One line of a transient well's schedule: a Theis well of discharge q from t0 on.
struct TheisEl {
    int model = 0;       // index into Model::theisWells
    int group = 0;       // index into State::theisGroups
    double x = 0, y = 0;
    double q = 0, t0 = 0, S = 0;
    double T = 0;        // transmissivity of the Theis function
    bool steadyT = false;// T from the steady head at the well (the start head lies at or below the base)
    int dom = 0;
};

// A transient well: the schedule lines of one label.
struct TheisGroup {
    std::string label;
    double x = 0, y = 0, rw = 0;
    std::vector<int> lines;  // into State::theis
};

struct SegEl {
    int string = 0;      // index into Model::lineSinks
    int index = 0;       // index of the segment within its string (skipped ones not counted)
    int modelSeg = 0;    // index into LineSinkString::segments
    LineSinkKind kind = LineSinkKind::Head;
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    double value = 0;    // specified head, or sigma for discharge segments
    bool resist = false; // resistance condition (c > 0, w > 0, not far field)
    double c = 0, w = 0, d = 0;
    double a = 0;        // frozen coefficient c T / w of the resistance condition
    int unknown = -1;    // -1 for discharge segments
    int dom = 0;         // domain at the segment's centre
    int gallery = -1;    // index into State::galleries
    SegState state = SegState::Free;
    double fixedValue = 0.0;  // sigma of the identity rows
    // Routing (streams only)
    int downstream = -1;      // segment this one flows into
    double qUp = 0, qDown = 0, baseDown = 0, overDown = 0;
};

struct GalleryEl {
    int string = 0;
    int unknown = -1;     // the common potential
    double total = 0.0;   // required discharge
    bool allHeld = false;
    std::vector<int> segs;
};

struct Solution::State {
    Model model;
    detail::AquiferFn aq;
    std::vector<std::string> warnings;
    LineSink warnSink;

    bool prepared = false;
    bool solved = false;
    int iterationsDone = 0;

    std::vector<WellEl> wells;     // fully penetrating wells, then partially penetrating ones
    std::vector<TheisEl> theis;
    std::vector<TheisGroup> theisGroups;
    bool theisReady = false;       // transmissivities set: the transient wells take part in evaluation
    std::vector<SegEl> segs;
    std::vector<GalleryEl> galleries;
    std::vector<int> streamOrder;  // routed segments, upstream first

    double refX = 0, refY = 0, refHead = 0;
    int refDom = 0;

    // Area elements and walls (engine/area.cpp).
    std::vector<DomainEl> domains;
    std::vector<IgnoredEl> ignored;
    std::vector<DbEdge> edges;
    std::vector<PondEl> ponds;
    // Accepted polygons and walls: kept model vertex indices and, per kept vertex, the
    // doublet edge that starts there (-1: none) and the sign that turns the edge's jump
    // into Phi(left) - Phi(right) for the direction in which the model gives the vertices.
    struct AreaOwner {
        int model = 0;
        int domain = 0;           // inhomogeneities: their domain
        bool closed = true;
        std::vector<int> verts;
        std::vector<int> edge;
        std::vector<int> sign;
    };
    std::vector<AreaOwner> inhos, wallEls;
    // Per unknown of a doublet: up to two (edge, basis) pairs whose strength it is.
    std::vector<std::array<int, 4>> udb;
    // Per row of a doublet unknown: the edge and local coordinate of its collocation
    // point, and the coefficient of its linearised condition (slope or conductance).
    std::vector<int> rowEdge;
    std::vector<double> rowX, rowCoef, knownQn;
    std::vector<char> rowDropped;
    std::vector<int> chainPrev_;   // per edge: the edge whose end node is its start node (-1: none)  // closed impermeable wall: row replaced by a zero mean jump

    // Unknowns: kind and owner; collocation point of the row of the same index.
    int n = 0;
    std::vector<UnknownKind> ukind;
    std::vector<int> uowner;
    std::vector<double> px, py;
    std::vector<double> known;   // potential of the known elements at the collocation points
    std::vector<double> x;       // current solution
    std::vector<double> rhs;     // right-hand side of the last solve
    std::vector<double> phiPts;  // potential at the collocation points after the last solve (NaN: none yet)
    double constant = 0.0;

    // Factorised matrix
    std::vector<double> lu;
    std::vector<int> ipiv;
    bool factorsValid = false;
    // The large-model path: the compressed influence matrix (built once, the geometry does
    // not change), the sparse own entries and the preconditioner (rebuilt where the dense
    // path would refactorise).
    std::shared_ptr<IterativeSolve> iterative;

    // Arrays for evaluation (all segments, discharge ones included)
    std::vector<double> scx, scy, sihr, sihi, sscale, sc0, ssig;
    std::vector<double> wx, wy, wq;
    detail::AreaSinkEdges sinkArr;  // edges of the inhomogeneities' area sinks, weighted by their rates
    detail::DoubletEdges dbArr;     // one per entry of edges; strengths set by syncStrengths

    void warn(const std::string& w);
    void prepare();
    // Area elements: domains, ignored regions, doublet edges and ponds (before the
    // unknowns of the other elements are numbered), then their unknowns.
    void prepareAreaElements(double tol);
    void numberAreaUnknowns();
    // knownQn of the wall rows from wAt while only the known elements have strengths.
    void setKnownFlows();
    int domainAt(double x, double y) const;
    bool ignoredAt(double x, double y) const;
    const detail::AquiferFn& aqOf(int d) const { return domains[d].aq; }
    double areaPotential(double x, double y) const;          // area sinks, ponds, doublets
    std::complex<double> areaW(double x, double y) const;
    // Area sinks, ponds and doublets added to f (W too when wantW).
    void areaField(double x, double y, bool wantW, detail::Field& f) const;
    // The evaluation arrays of the area sinks and doublets (after prepareAreaElements).
    void buildAreaArrays();
    double knownAreaPotential(double x, double y) const;     // area sinks and discharge ponds only
    std::complex<double> knownAreaW(double x, double y) const;
    // Potential of a unit value of unknown j (doublet or pond) at the points.
    void areaColumn(int j, const double* px, const double* py, int n, double* out) const;
    // W of a unit value of unknown j, any kind, at a point.
    std::complex<double> unitW(int j, double x, double y) const;
    // Jump of the edge at local coordinate X from the current strengths.
    double jumpAt(int e, double X) const;
    // Rows of the doublets in the assembled matrix (A column-major, n x n) and the
    // right-hand side; the state update after a solve (residual in head). Returns true
    // when the linearisation moved so far that the matrix should be rebuilt.
    void assembleAreaRows(RowSink& A);
    double areaRhs(int i) const;
    bool updateArea(double& residual);
    // Copies the unknowns into the strength arrays. With applyFixed, segments whose row
    // fixes their strength get that exact value (right after a solve, whose states they are).
    void syncStrengths(bool applyFixed);
    double route();  // stream flows along the network (see engine/elements.cpp)
    // Wells (engine/wells.cpp): partially penetrating wells join `wells` after the plain
    // ones; transient wells are prepared apart. updatePartialWells sets the loss factors
    // from the heads at the wells (residual: in head, the effect of the change) and returns
    // true when a head-specified well's factor moved (the matrix must be rebuilt).
    void preparePartialWells(double size);
    void prepareTheisWells(double size);
    bool updatePartialWells(double& residual);
    void settleTheis();            // after a solve or load: transmissivities, then theisReady
    double theisPotential(double x, double y) const;
    std::complex<double> theisW(double x, double y) const;
    // The part of theisW that is left after each line's steady well (smooth at the wells).
    std::complex<double> theisWRemainder(double x, double y) const;
    // Balance terms of the transient wells at the time of evaluation (kind, extraction > 0
    // out of the aquifer): their net discharge, and the water released from storage inside
    // the circle (cx, cy, R) over which the far field is integrated.
    std::vector<std::pair<std::string, double>> theisBalance(double cx, double cy, double R) const;
    std::string wellLabel(const WellEl& w) const;
    double potentialAt(double x, double y) const;
    std::complex<double> wAt(double x, double y) const;  // Qx - i Qy
    detail::Field fieldAt(double x, double y) const;     // potential and W in one pass
    // The point record at (x, y) from the potential and W there (f, as fieldAt gives).
    PointValues pointValues(double x, double y, std::optional<double> z, const detail::Field& f) const;
};

}  // namespace tarno::engine
