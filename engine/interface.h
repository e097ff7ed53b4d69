#pragma once
// The salt water interface of a coastal aquifer: the relation between the fresh
// water head and the discharge potential when fresh water floats on salt water
// at rest. Internal to the engine; docs/solver-interface.md explains it.
//
// With the specific gravities g_f and g_s, nu = (g_s - g_f) / g_f, and the sea
// level z_s, the interface under a fresh water head h lies (Ghyben-Herzberg) at
//   z_i(h) = z_s - (h - z_s) / nu.
// Fresh water fills the aquifer from z_b = max(B, z_i) to z_t = min(h, B + H); its
// thickness b(h) = max(0, z_t - z_b) is piecewise linear in h and never decreases.
// The single potential Phi(h) = k * integral of b(h) dh, zero where b becomes
// positive, gives the fresh water discharge Q = -grad Phi in every zone: with an
// interface (z_i above the base) and with fresh water only (the interface has
// reached the base: beyond the toe). Phi is harmonic wherever there is no recharge,
// so the elements superpose as they do without an interface; only the relation
// between head and potential changes. For an unconfined aquifer with d = z_s - B:
//   interface zone:   Phi = k (1 + nu) / (2 nu) (h - z_s)^2,     z_s <= h <= z_s + nu d
//   fresh water only: Phi = k [(h - B)^2 - (1 + nu) d^2] / 2,    h >= z_s + nu d
// and the toe lies where Phi = k nu (1 + nu) d^2 / 2. Phi = 0 at sea level (the
// coast): a point of Phi <= 0 holds no fresh water (salt water up to the sea, or
// for an aquifer confined below the sea, up to its top).

#include <algorithm>
#include <cmath>

namespace tarno::engine::detail {

// The pieces of the head-potential relation with an interface. Off (`on` false),
// the owner (AquiferFn) uses the plain relation.
struct SaltWater {
    static constexpr int kMaxPieces = 6;

    bool on = false;
    double nu = 0.025;  // (g_s - g_f) / g_f
    double sea = 0.0;   // sea level z_s
    double B = 0.0;     // base and thickness of the aquifer (those of the owner)
    double H = 1.0;
    // Piece i starts at head h[i] with thickness b[i], slope s[i] = db/dh and
    // potential k * P[i]; piece 0 starts at h0, where fresh water begins.
    int n = 0;
    double h[kMaxPieces] = {};
    double b[kMaxPieces] = {};
    double s[kMaxPieces] = {};
    double P[kMaxPieces] = {};
    // Phi / k within this of zero counts as zero: the coast.
    double roundoff = 0.0;

    // Builds the pieces (engine/interface.cpp). nu must be positive.
    void set(double base, double thickness, double contrast, double seaLevel);

    double interfaceAt(double head) const { return sea - (head - sea) / nu; }
    double bottom(double head) const { return std::max(B, interfaceAt(head)); }
    double top(double head) const { return std::min(head, B + H); }
    double thickness(double head) const { return std::max(0.0, top(head) - bottom(head)); }
    // d(bottom)/dh: -1/nu while the interface stands above the base.
    double bottomSlope(double head) const { return interfaceAt(head) > B ? -1.0 / nu : 0.0; }

    // Phi / k; below the start of fresh water the quadratic continues downwards with
    // the first piece's slope (negative values: no fresh water), so that conditions
    // stay defined inside the iterations.
    double phiOverK(double head) const {
        const double t0 = head - h[0];
        if (t0 <= 0.0) return -0.5 * s[0] * t0 * t0;
        int i = n - 1;
        while (i > 0 && head < h[i]) --i;
        const double t = head - h[i];
        return P[i] + b[i] * t + 0.5 * s[i] * t * t;
    }
    // Inverse of phiOverK over the whole real line.
    double headFromPhiOverK(double p) const {
        if (p <= 0.0) return h[0] - std::sqrt(-2.0 * p / s[0]);
        int i = n - 1;
        while (i > 0 && p < P[i]) --i;
        const double dp = p - P[i];
        // The root of s t^2 / 2 + b t = dp written so that it holds for s = 0 too.
        const double root = std::sqrt(b[i] * b[i] + 2.0 * s[i] * dp);
        const double den = b[i] + root;
        return h[i] + (den > 0.0 ? 2.0 * dp / den : 0.0);
    }
};

}  // namespace tarno::engine::detail
