#pragma once
// Small builders for engine test models.
#include "engine/model.h"
#include "engine/solution.h"

#include <cmath>
#include <string>

namespace tarno::engine::testing {

inline constexpr double kPi = 3.14159265358979323846;

inline Model aquiferModel(double base, double k, double H, double refX, double refY, double refHead) {
    Model m;
    m.aquifer.base = base;
    m.aquifer.conductivity = k;
    m.aquifer.thickness = H;
    m.aquifer.porosity = 0.25;
    m.aquifer.hasReference = true;
    m.aquifer.referenceX = refX;
    m.aquifer.referenceY = refY;
    m.aquifer.referenceHead = refHead;
    return m;
}

inline Well well(double x, double y, double value, bool headSpecified, double rw = 0.1,
                 const std::string& label = "WL_000001") {
    Well w;
    w.x = x; w.y = y; w.value = value; w.headSpecified = headSpecified; w.radius = rw; w.label = label;
    return w;
}

// A straight string from (x1, y1) to (x2, y2) cut into n segments; the specified value
// varies linearly from v1 to v2 (taken at each segment's centre).
inline LineSinkString straightString(LineSinkKind kind, double x1, double y1, double x2, double y2, int n,
                                     double v1, double v2, const std::string& prefix = "LS_000001") {
    LineSinkString s;
    s.kind = kind;
    s.label = prefix;
    for (int i = 0; i < n; ++i) {
        const double t0 = double(i) / n, t1 = double(i + 1) / n, tc = 0.5 * (t0 + t1);
        Segment g;
        g.x1 = x1 + t0 * (x2 - x1); g.y1 = y1 + t0 * (y2 - y1);
        g.x2 = x1 + t1 * (x2 - x1); g.y2 = y1 + t1 * (y2 - y1);
        g.value = v1 + tc * (v2 - v1);
        char buf[16];
        std::snprintf(buf, sizeof buf, "_%04d", (i + 1) * 100);
        g.label = prefix + buf;
        s.segments.push_back(g);
    }
    return s;
}

// Potential of the aquifer for a head (confined and unconfined), written independently
// of the engine.
inline double phiOf(double h, double B, double k, double H) {
    return h - B >= H ? k * H * (h - B) - 0.5 * k * H * H : 0.5 * k * (h - B) * (h - B);
}
inline double headOf(double phi, double B, double k, double H) {
    return phi >= 0.5 * k * H * H ? B + (phi + 0.5 * k * H * H) / (k * H) : B + std::sqrt(2.0 * phi / k);
}

inline SolveOptions opts(int inner, int outer = 1) {
    SolveOptions o;
    o.innerIterations = inner;
    o.outerIterations = outer;
    return o;
}

}  // namespace tarno::engine::testing
