#include "engine/interface.h"

#include "engine/grid.h"
#include "engine/saltwater.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace tarno::engine {

namespace detail {

// The thickness b(h) changes its slope only where the head reaches the base, the
// top or the sea level, and where the interface reaches the base (the toe) or the
// top (the coast of an aquifer confined below the sea). Between these heads b is
// linear, so each piece of Phi is a quadratic and the sums below are exact.
void SaltWater::set(double base, double thickness_, double contrast, double seaLevel) {
    on = true;
    B = base;
    H = thickness_;
    nu = contrast;
    sea = seaLevel;
    roundoff = sea > B ? 1e-10 * H * H : 0.0;  // a base above the sea has no coast
    std::array<double, 5> c = {B, B + H, sea, sea + nu * (sea - B), sea + nu * (sea - B - H)};
    std::sort(c.begin(), c.end());
    const auto last = std::unique(c.begin(), c.end());
    const int m = static_cast<int>(last - c.begin());
    // b is zero up to the largest break with b = 0 (the lowest break always has it:
    // there the head lies at or below the base or the sea), and positive above it.
    int first = 0;
    for (int i = 0; i < m; ++i)
        if (!(thickness(c[i]) > 0.0)) first = i;
    // The slope of b just above a head, where b > 0: d(top)/dh - d(bottom)/dh.
    auto slopeAbove = [&](double head) {
        const double up = head < B + H ? 1.0 : 0.0;
        return up - bottomSlope(head);
    };
    n = 0;
    double p = 0.0;
    for (int i = first; i < m && n < kMaxPieces; ++i) {
        const double start = c[i];
        const double end = i + 1 < m ? c[i + 1] : start + 1.0;
        h[n] = start;
        b[n] = i == first ? 0.0 : thickness(start);
        s[n] = slopeAbove(0.5 * (start + end));
        P[n] = p;
        if (i + 1 < m) {
            const double t = end - start;
            p += b[n] * t + 0.5 * s[n] * t * t;
        }
        ++n;
    }
}

}  // namespace detail

std::optional<double> interfaceContrast(const Aquifer& a) {
    if (!a.hasInterface) return std::nullopt;
    const double contrast = (a.saltGravity - a.freshGravity) / a.freshGravity;
    if (!(a.freshGravity > 0.0) || !(contrast > 0.0) || !std::isfinite(contrast) || !std::isfinite(a.seaLevel))
        return std::nullopt;
    return contrast;
}

std::optional<InterfaceToe> interfaceToe(const Aquifer& a, double base, double conductivity, double thickness) {
    const auto nu = interfaceContrast(a);
    if (!nu) return std::nullopt;
    const double d = a.seaLevel - base;
    // A base above the sea: no salt water reaches the aquifer. An interface that reaches
    // the base only above the top of the aquifer: none in it either.
    if (!(d > 0.0)) return std::nullopt;
    InterfaceToe t;
    t.head = a.seaLevel + *nu * d;
    detail::SaltWater w;
    w.set(base, thickness, *nu, a.seaLevel);
    if (!(w.thickness(t.head) > 0.0)) return std::nullopt;  // the toe would lie above the top
    t.potential = conductivity * w.phiOverK(t.head);
    return t;
}

std::optional<double> interfaceElevationAt(const Solution& s, double x, double y) {
    if (!s.model().aquifer.hasInterface) return std::nullopt;
    const PointValues p = s.evaluate(x, y);
    return interfaceElevation(s.model().aquifer, p.head, p.base);
}

}  // namespace tarno::engine
