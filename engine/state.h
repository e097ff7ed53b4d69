#pragma once
// Internal state of a Solution: the elements in the form the mathematics needs,
// the unknowns, the factorised matrix and the nonlinear states. Internal to the engine.

#include "engine/kernels.h"
#include "engine/solution.h"

#include <cstdint>
#include <string>
#include <vector>

namespace tarno::engine {

enum class SegState : std::uint8_t {
    Free = 0,         // its own condition holds (head, resistance, common gallery head)
    Percolating = 1,  // resistance string with the aquifer below the bottom of the water: sigma = -w d / c
    Off = 2,          // drain that would recharge the aquifer: sigma = 0
    Held = 3,         // gallery segment held at its own (minimum) head
    Limited = 4,      // dry stream reach: takes exactly the flow that reaches it
};

enum class UnknownKind : std::uint8_t { WellQ, SegSigma, GalleryPhi, Constant };

struct WellEl {
    int model = 0;       // index into Model::wells
    double x = 0, y = 0, rw = 0;
    bool headSpecified = false;
    double value = 0;    // head (head-specified) or discharge
    double q = 0;        // discharge (known or solved)
    int unknown = -1;
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

    std::vector<WellEl> wells;
    std::vector<SegEl> segs;
    std::vector<GalleryEl> galleries;
    std::vector<int> streamOrder;  // routed segments, upstream first

    double refX = 0, refY = 0, refHead = 0;

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

    // Arrays for evaluation (all segments, discharge ones included)
    std::vector<double> scx, scy, sihr, sihi, sscale, sc0, ssig;
    std::vector<double> wx, wy, wq;

    void warn(const std::string& w);
    void prepare();
    // Copies the unknowns into the strength arrays. With applyFixed, segments whose row
    // fixes their strength get that exact value (right after a solve, whose states they are).
    void syncStrengths(bool applyFixed);
    double route(bool setLimited);  // stream flows along the network (see solution.cpp)
    double potentialAt(double x, double y) const;
    std::complex<double> wAt(double x, double y) const;  // Qx - i Qy
};

}  // namespace tarno::engine
