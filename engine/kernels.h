#pragma once
// Influence functions of the elements and the aquifer's potential-head relation.
// Internal to the engine.
//
// Line-sink of constant strength sigma from z1 to z2 (length L), with the local
// coordinate Z = (z - (z1 + z2)/2) / ((z2 - z1)/2):
//   Omega = sigma L / (4 pi) [ (Z+1) ln(Z+1) - (Z-1) ln(Z-1) + 2 ln((z2-z1)/2) - 2 ]
// which behaves like a well of discharge sigma L far away. Its real part is written
// with real logarithms and one arctangent:
//   Re[...] = (X+1) ln|Z+1| - (X-1) ln|Z-1| - Y atan2(-2Y, X^2+Y^2-1)
// (the arctangent is arg(Z+1) - arg(Z-1), continuous everywhere off the segment).

#include "engine/interface.h"

#include <cmath>
#include <complex>

namespace tarno::engine::detail {

inline constexpr double kPi = 3.14159265358979323846;
inline constexpr double kTiny = 1e-300;

// Potential-head relation of the aquifer (uniform base B, conductivity k, thickness H),
// with a salt water interface when `salt.on` (engine/interface.h).
struct AquiferFn {
    double B = 0.0, k = 1.0, H = 1.0;
    SaltWater salt;

    // Fresh water on salt water of relative density contrast nu below the sea level.
    void setInterface(double nu, double seaLevel) { salt.set(B, H, nu, seaLevel); }

    double phiFromHead(double h) const {
        if (salt.on) return k * salt.phiOverK(h);
        const double b = h - B;
        if (b >= H) return k * H * b - 0.5 * k * H * H;
        return 0.5 * k * b * std::fabs(b);  // below the base: negative (dry), odd extension
    }
    // Inverse of phiFromHead over the whole real line (used inside iterations).
    double headFromPhiExtended(double phi) const {
        if (salt.on) return salt.headFromPhiOverK(phi / k);
        const double pc = 0.5 * k * H * H;
        if (phi >= pc) return B + (phi + pc) / (k * H);
        if (phi >= 0.0) return B + std::sqrt(2.0 * phi / k);
        return B - std::sqrt(-2.0 * phi / k);
    }
    // The head reported to users: kDry (-9999) where the aquifer is dry (holds no
    // fresh water).
    double headFromPhi(double phi) const {
        if (!(phi > 0.0)) {
            // With an interface Phi = 0 is the coast, where conditions at sea level hold:
            // a potential that misses zero by round-off is the sea level, not dry.
            if (salt.on && phi > -k * salt.roundoff) return salt.h[0];
            return -9999.0;
        }
        return headFromPhiExtended(phi);
    }
    // The thickness of the (fresh) water, from bottom(h) to top(h).
    double saturated(double h) const {
        if (salt.on) return salt.thickness(h);
        const double b = h - B;
        return b < 0.0 ? 0.0 : (b > H ? H : b);
    }
    // The bottom of the water: the base, or the interface where it stands above the base.
    double bottom(double h) const { return salt.on ? salt.bottom(h) : B; }
    double top(double h) const { return bottom(h) + saturated(h); }
    // How the top and the bottom of the water move with the head (for the vertical
    // velocity): d(top)/dh is 1 where unconfined, d(bottom)/dh -1/nu under an interface.
    double topSlope(double h) const { return h < B + H ? 1.0 : 0.0; }
    double bottomSlope(double h) const { return salt.on ? salt.bottomSlope(h) : 0.0; }
    // dPhi/dh at head h, kept away from zero so that it can scale conditions.
    double transmissivity(double h) const {
        double b = saturated(h);
        if (b < 0.05 * H) b = 0.05 * H;
        return k * b;
    }
};

// Precomputed geometry of one line-sink segment.
struct LsGeom {
    double cx = 0, cy = 0;    // centre
    double ihr = 0, ihi = 0;  // 1 / ((z2 - z1)/2)
    double scale = 0;         // L / (4 pi)
    double c0 = 0;            // 2 ln(L/2) - 2
    double L = 0;
};

inline LsGeom makeGeom(double x1, double y1, double x2, double y2) {
    LsGeom g;
    g.cx = 0.5 * (x1 + x2);
    g.cy = 0.5 * (y1 + y2);
    const double hx = 0.5 * (x2 - x1), hy = 0.5 * (y2 - y1);
    const double h2 = hx * hx + hy * hy;
    g.ihr = hx / h2;
    g.ihi = -hy / h2;
    g.L = 2.0 * std::sqrt(h2);
    g.scale = g.L / (4.0 * kPi);
    g.c0 = 2.0 * std::log(0.5 * g.L) - 2.0;
    return g;
}

// Potential of a unit-strength line-sink, written with plain arrays so that loops
// over many segments or many points vectorise.
inline double lsPotential(double cx, double cy, double ihr, double ihi, double scale, double c0,
                          double x, double y) {
    const double dx = x - cx, dy = y - cy;
    const double X = dx * ihr - dy * ihi;
    const double Y = dx * ihi + dy * ihr;
    const double r1 = (X + 1.0) * (X + 1.0) + Y * Y;
    const double r2 = (X - 1.0) * (X - 1.0) + Y * Y;
    const double t = 0.5 * ((X + 1.0) * std::log(r1 + kTiny) - (X - 1.0) * std::log(r2 + kTiny));
    const double th = std::atan2(-2.0 * Y, X * X + Y * Y - 1.0);
    return scale * (t - Y * th + c0);
}

inline double lsPotential(const LsGeom& g, double x, double y) {
    return lsPotential(g.cx, g.cy, g.ihr, g.ihi, g.scale, g.c0, x, y);
}

inline std::complex<double> localZ(const LsGeom& g, double x, double y) {
    const double dx = x - g.cx, dy = y - g.cy;
    return {dx * g.ihr - dy * g.ihi, dx * g.ihi + dy * g.ihr};
}

// W = Qx - i Qy of a unit-strength line-sink.
inline std::complex<double> lsW(const LsGeom& g, double x, double y) {
    const std::complex<double> Z = localZ(g, x, y);
    const std::complex<double> ih(g.ihr, g.ihi);
    std::complex<double> a = Z + 1.0, b = Z - 1.0;
    if (std::abs(a) < 1e-14) a = 1e-14;
    if (std::abs(b) < 1e-14) b = 1e-14;
    return -g.scale * ih * (std::log(a) - std::log(b));
}

// Im[(Z+1) ln(Z+1) - (Z-1) ln(Z-1)] on the principal branches.
inline double lsImF(std::complex<double> Z) {
    const double X = Z.real(), Y = Z.imag();
    const double r1 = std::hypot(X + 1.0, Y), r2 = std::hypot(X - 1.0, Y);
    const double l1 = r1 > 0 ? std::log(r1) : 0.0, l2 = r2 > 0 ? std::log(r2) : 0.0;
    return (Y * l1 + (X + 1.0) * std::atan2(Y, X + 1.0)) - (Y * l2 + (X - 1.0) * std::atan2(Y, X - 1.0));
}

// Jump of lsImF when the line Y = 0 is crossed at X from below (Y < 0) to above.
inline double lsImFJump(double X) {
    if (X < -1.0) return 4.0 * kPi;
    if (X < 1.0) return 2.0 * kPi * (1.0 - X);
    return 0.0;
}

// Potential of a unit-discharge well.
inline double wellPotential(double wx, double wy, double x, double y) {
    const double dx = x - wx, dy = y - wy;
    return (0.25 / kPi) * std::log(dx * dx + dy * dy + kTiny);
}

}  // namespace tarno::engine::detail
