#pragma once
// Influence functions of the area elements and walls (internal to the engine):
// line-doublets with a linear-plus-parabolic jump, the uniform area sink over a
// polygon, the circular area sink of a pond, and polygon geometry.
//
// Line-doublet from z1 to z2, local coordinate Z = (z - c) / h with c the centre and
// h = (z2 - z1) / 2. The jump mu(X) = Phi(left) - Phi(right) (left: Y > 0, the left
// side when walking from z1 to z2) is
//   mu(X) = m1 (1 - X) / 2 + m2 (1 + X) / 2 + p (1 - X^2).
// The complex potential is the Cauchy integral Omega = 1/(2 pi i) int mu(t) / (t - Z) dt,
// which jumps by exactly mu across the segment in its real part and is continuous in
// its imaginary part (so the normal flow is continuous). With L = ln((Z - 1)/(Z + 1)):
//   int 1/(t-Z) = L,  int t/(t-Z) = Z L + 2,  int t^2/(t-Z) = Z^2 L + 2 Z.
// On the segment itself the average of both sides is used (L real), which is what the
// collocation conditions need.

#include "engine/kernels.h"
#include "engine/model.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <complex>
#include <vector>

namespace tarno::engine::detail {

struct DbGeom {
    double x1 = 0, y1 = 0, x2 = 0, y2 = 0;
    double cx = 0, cy = 0;
    std::complex<double> ih;  // 1 / h
    double L = 0;
};

inline DbGeom makeDbGeom(double x1, double y1, double x2, double y2) {
    DbGeom g;
    g.x1 = x1; g.y1 = y1; g.x2 = x2; g.y2 = y2;
    g.cx = 0.5 * (x1 + x2);
    g.cy = 0.5 * (y1 + y2);
    const std::complex<double> h(0.5 * (x2 - x1), 0.5 * (y2 - y1));
    g.ih = 1.0 / h;
    g.L = 2.0 * std::abs(h);
    return g;
}

inline std::complex<double> dbLocal(const DbGeom& g, double x, double y) {
    return std::complex<double>(x - g.cx, y - g.cy) * g.ih;
}

// The three basis functions (start node, end node, parabolic part): potentials and
// W = Qx - i Qy at a point. Points at the end points are moved off them slightly.
struct DbBasis {
    std::array<double, 3> phi{};
    std::array<std::complex<double>, 3> w{};
};

// ln((Z - 1)/(Z + 1)) on the principal branch, in real arithmetic: the complex
// logarithm of a quotient near 1 (every point far from the segment) is slow.
inline std::complex<double> dbLog(std::complex<double> Z) {
    const double X = Z.real(), Y = Z.imag();
    const double r1 = (X + 1.0) * (X + 1.0) + Y * Y, r2 = (X - 1.0) * (X - 1.0) + Y * Y;
    return {0.5 * std::log(r2 / r1), std::atan2(2.0 * Y, X * X + Y * Y - 1.0)};
}

inline DbBasis dbBasis(const DbGeom& g, double x, double y, bool wantW = true) {
    std::complex<double> Z = dbLocal(g, x, y);
    if (std::abs(Z - 1.0) < 1e-12) Z = {1.0 + 1e-12, 0.0};
    if (std::abs(Z + 1.0) < 1e-12) Z = {-1.0 - 1e-12, 0.0};
    std::complex<double> Lg;
    if (std::fabs(Z.imag()) < 1e-10 && std::fabs(Z.real()) < 1.0)
        Lg = std::log(std::fabs((1.0 - Z.real()) / (1.0 + Z.real())));  // average of both sides
    else
        Lg = dbLog(Z);
    const std::complex<double> G0 = Lg, G1 = Z * Lg + 2.0, G2 = Z * Z * Lg + 2.0 * Z;
    const std::complex<double> B[3] = {0.5 * (G0 - G1), 0.5 * (G0 + G1), G0 - G2};
    DbBasis r;
    // Omega = B / (2 pi i): Phi = Im(B) / (2 pi).
    for (int k = 0; k < 3; ++k) r.phi[k] = B[k].imag() / (2.0 * kPi);
    if (wantW) {
        const std::complex<double> d0 = 2.0 / (Z * Z - 1.0);
        const std::complex<double> d1 = Lg + Z * d0;
        const std::complex<double> d2 = 2.0 * Z * Lg + Z * Z * d0 + 2.0;
        const std::complex<double> dB[3] = {0.5 * (d0 - d1), 0.5 * (d0 + d1), d0 - d2};
        const std::complex<double> f = -g.ih / std::complex<double>(0.0, 2.0 * kPi);
        for (int k = 0; k < 3; ++k) r.w[k] = f * dB[k];
    }
    return r;
}

// Stream function (imaginary part of Omega) of the three basis functions: -Re(B)/(2 pi).
// Single-valued and continuous everywhere.
inline std::array<double, 3> dbPsi(const DbGeom& g, double x, double y) {
    std::complex<double> Z = dbLocal(g, x, y);
    if (std::abs(Z - 1.0) < 1e-12) Z = {1.0 + 1e-12, 0.0};
    if (std::abs(Z + 1.0) < 1e-12) Z = {-1.0 - 1e-12, 0.0};
    const std::complex<double> Lg = std::log((Z - 1.0) / (Z + 1.0));
    const std::complex<double> G0 = Lg, G1 = Z * Lg + 2.0, G2 = Z * Z * Lg + 2.0 * Z;
    return {-0.5 * (G0 - G1).real() / (2.0 * kPi), -0.5 * (G0 + G1).real() / (2.0 * kPi),
            -(G0 - G2).real() / (2.0 * kPi)};
}

// The jump at local coordinate X from the three strengths.
inline double dbJump(double m1, double m2, double p, double X) {
    return m1 * 0.5 * (1.0 - X) + m2 * 0.5 * (1.0 + X) + p * (1.0 - X * X);
}

// ---------------------------------------------------------------------------------
// Polygons

struct Pt {
    double x = 0, y = 0;
};

// Signed area (> 0 counter-clockwise).
inline double signedArea(const std::vector<Pt>& p) {
    double a = 0.0;
    for (size_t i = 0, n = p.size(); i < n; ++i) {
        const Pt& u = p[i];
        const Pt& v = p[(i + 1) % n];
        a += u.x * v.y - v.x * u.y;
    }
    return 0.5 * a;
}

// Crossing-number test; points on the boundary count as whichever side the
// arithmetic gives.
inline bool insidePolygon(const std::vector<Pt>& p, double x, double y) {
    bool in = false;
    for (size_t i = 0, n = p.size(), j = n - 1; i < n; j = i++) {
        const Pt& a = p[i];
        const Pt& b = p[j];
        if ((a.y > y) != (b.y > y)) {
            const double xc = a.x + (y - a.y) * (b.x - a.x) / (b.y - a.y);
            if (x < xc) in = !in;
        }
    }
    return in;
}

// Uniform area sink of unit recharge (1 L/T put into the aquifer over the polygon).
// With f = (r^2 / 2)(ln r - 1), whose Laplacian is ln r^2, Green's theorem turns the
// area integral of ln r^2 into a sum over the edges:
//   int_A ln r^2 dA = sum_e d_e (int_e ln r ds - L_e / 2),
// d_e the distance (outward positive) from the point to the edge's line, and
// int_e ln r ds = 2 pi times the potential of a unit line-sink along the edge. The
// potential is Phi = -(1 / (4 pi)) int_A ln r^2 dA (recharge as distributed injection).
struct AreaSinkGeom {
    std::vector<Pt> v;            // counter-clockwise
    std::vector<LsGeom> edges;
    std::vector<double> nx, ny;   // outward unit normals
    double area = 0.0;
};

inline AreaSinkGeom makeAreaSink(std::vector<Pt> v) {
    AreaSinkGeom a;
    if (signedArea(v) < 0) std::reverse(v.begin(), v.end());
    a.area = signedArea(v);
    const size_t n = v.size();
    for (size_t i = 0; i < n; ++i) {
        const Pt& p = v[i];
        const Pt& q = v[(i + 1) % n];
        a.edges.push_back(makeGeom(p.x, p.y, q.x, q.y));
        const double L = std::hypot(q.x - p.x, q.y - p.y);
        a.nx.push_back((q.y - p.y) / L);
        a.ny.push_back(-(q.x - p.x) / L);
    }
    a.v = std::move(v);
    return a;
}

inline double areaSinkPotential(const AreaSinkGeom& a, double x, double y) {
    double I = 0.0;
    for (size_t e = 0; e < a.edges.size(); ++e) {
        const double d = (a.v[e].x - x) * a.nx[e] + (a.v[e].y - y) * a.ny[e];
        I += d * (2.0 * kPi * lsPotential(a.edges[e], x, y) - 0.5 * a.edges[e].L);
    }
    return -I / (4.0 * kPi);
}

// W = Qx - i Qy of the unit area sink: Q = -grad Phi = grad(I) / (4 pi), with
// grad I = sum_e [ -n_e (2 pi phi_e - L_e / 2) + d_e 2 pi grad phi_e ].
inline std::complex<double> areaSinkW(const AreaSinkGeom& a, double x, double y) {
    double gx = 0.0, gy = 0.0;
    for (size_t e = 0; e < a.edges.size(); ++e) {
        const LsGeom& g = a.edges[e];
        const double d = (a.v[e].x - x) * a.nx[e] + (a.v[e].y - y) * a.ny[e];
        const double t = 2.0 * kPi * lsPotential(g, x, y) - 0.5 * g.L;
        const std::complex<double> w = lsW(g, x, y);  // (-dphi/dx) - i (-dphi/dy)
        gx += -a.nx[e] * t + d * 2.0 * kPi * (-w.real());
        gy += -a.ny[e] * t + d * 2.0 * kPi * (w.imag());
    }
    const double qx = gx / (4.0 * kPi), qy = gy / (4.0 * kPi);
    return {qx, -qy};
}

// Complex potential Omega = Phi + i Psi of the unit area sink at a point outside the
// polygon. Phi = -(1 / (2 pi)) Re int_A ln(z - zeta) dA, and for z outside A the
// integrand is analytic in zeta over A, so the complex form of Green's theorem,
// int_A f dA = 1 / (2 i) oint zeta-bar f(zeta) d zeta (counter-clockwise), turns it into
// a sum over the edges. On the edge from a to b, with u = z - zeta running from
// alpha = z - a to beta = z - b, zeta-bar = c - r u where r = conj(b - a) / (b - a) and
// c = conj(a) + r alpha, so that
//   int_edge zeta-bar ln(z - zeta) d zeta = -[c F1(u) - r F2(u)] from alpha to beta,
//   F1(u) = u ln u - u,   F2(u) = (u^2 / 2) ln u - u^2 / 4,
// and Omega = (i / (4 pi)) times the sum over the edges. The logarithms must be one
// branch of ln(z - zeta) along the whole boundary: arg(z - v) is carried from vertex to
// vertex by the principal argument of (z - v_next) / (z - v), which is the change of the
// angle along the edge seen from z (no edge passes through z). Outside the polygon the
// angle comes back to its start after the loop. The start is the principal argument at
// the first vertex, so Psi has one branch cut: the ray from the first vertex in the -x
// direction, across which it jumps by the area (the water put in, as for a well that
// injects it). Inside the polygon no stream function exists (div Q = 1 there); the value
// is then meaningless and callers do not ask for it. NaN at a vertex.
inline std::complex<double> areaSinkOmegaOutside(const AreaSinkGeom& a, double x, double y) {
    const std::complex<double> z(x, y);
    const size_t n = a.v.size();
    if (n < 3) return {0.0, 0.0};
    auto vertex = [&](size_t k) { return std::complex<double>(a.v[k % n].x, a.v[k % n].y); };
    std::complex<double> alpha = z - vertex(0);
    double theta = std::atan2(alpha.imag(), alpha.real());
    std::complex<double> lnAlpha(std::log(std::abs(alpha)), theta);
    std::complex<double> sum(0.0, 0.0);
    for (size_t k = 0; k < n; ++k) {
        const std::complex<double> va = vertex(k), vb = vertex(k + 1);
        const std::complex<double> beta = z - vb;
        const std::complex<double> q = beta / alpha;
        theta += std::atan2(q.imag(), q.real());
        const std::complex<double> lnBeta(std::log(std::abs(beta)), theta);
        const std::complex<double> e = vb - va;
        const std::complex<double> r = std::conj(e) / e;
        const std::complex<double> c = std::conj(va) + r * alpha;
        const std::complex<double> f1 = beta * lnBeta - beta - (alpha * lnAlpha - alpha);
        const std::complex<double> f2 =
            0.5 * beta * beta * lnBeta - 0.25 * beta * beta - (0.5 * alpha * alpha * lnAlpha - 0.25 * alpha * alpha);
        sum -= c * f1 - r * f2;
        alpha = beta;
        lnAlpha = lnBeta;
    }
    return std::complex<double>(0.0, 1.0 / (4.0 * kPi)) * sum;
}

// Whether a point lies in a leakage cell (lower and left edges belong to it, so that a
// point on the edge between two cells lies in one of them).
inline bool insideLeakageCell(const LeakageCell& c, double x, double y) {
    return x >= c.x1 && x < c.x2 && y >= c.y1 && y < c.y2;
}

// ---------------------------------------------------------------------------------
// Pond: circular area sink of unit rate (1 L/T put into the aquifer), radius R.
// Inside Phi = -(r^2 - R^2)/4 - (R^2/4) ln R^2, outside Phi = -(R^2/4) ln r^2.

inline double pondPotential(double cx, double cy, double R, double x, double y) {
    const double r2 = (x - cx) * (x - cx) + (y - cy) * (y - cy);
    const double R2 = R * R;
    if (r2 < R2) return -0.25 * (r2 - R2) - 0.25 * R2 * std::log(R2);
    return -0.25 * R2 * std::log(r2 + kTiny);
}

inline std::complex<double> pondW(double cx, double cy, double R, double x, double y) {
    const double dx = x - cx, dy = y - cy;
    const double r2 = dx * dx + dy * dy;
    const double R2 = R * R;
    // Q = -grad Phi: inside (x, y) / 2, outside R^2 (x, y) / (2 r^2).
    const double f = r2 < R2 ? 0.5 : (r2 > 0 ? 0.5 * R2 / r2 : 0.0);
    return {f * dx, -f * dy};
}

}  // namespace tarno::engine::detail
