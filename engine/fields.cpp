// Hot loops: columns of the influence matrix and potentials at many points.
// Kept apart so that they can be compiled for vectorisation.
#include "engine/fields.h"

#include "engine/kernels.h"

#include <cmath>

// Each loop is built twice, for the baseline instruction set and for AVX2 with FMA,
// and the one the processor supports is picked when the program is loaded. The AVX2
// versions call the four-wide vector logarithms and arctangents of the C library,
// which are several times faster than the two-wide ones.
#if defined(__x86_64__) && defined(__GNUC__) && !defined(__clang__) && defined(__linux__) && !defined(TARNO_NO_VECTOR_CLONES)
#define TARNO_VECTOR_CLONES __attribute__((target_clones("arch=x86-64-v3", "default")))
#else
#define TARNO_VECTOR_CLONES
#endif

namespace tarno::engine::detail {

TARNO_VECTOR_CLONES void lineSinkColumn(const LsGeom& g, const double* px, const double* py, int n, double* out) {
    const double cx = g.cx, cy = g.cy, ihr = g.ihr, ihi = g.ihi, sc = g.scale, c0 = g.c0;
#pragma omp simd
    for (int i = 0; i < n; ++i) out[i] = lsPotential(cx, cy, ihr, ihi, sc, c0, px[i], py[i]);
}

TARNO_VECTOR_CLONES void wellColumn(double wx, double wy, const double* px, const double* py, int n, double* out) {
#pragma omp simd
    for (int i = 0; i < n; ++i) out[i] = wellPotential(wx, wy, px[i], py[i]);
}

TARNO_VECTOR_CLONES double lineSinkSum(const double* cx, const double* cy, const double* ihr, const double* ihi,
                   const double* sc, const double* c0, const double* sig, int n, double x, double y) {
    double s = 0.0;
#pragma omp simd reduction(+ : s)
    for (int j = 0; j < n; ++j) s += sig[j] * lsPotential(cx[j], cy[j], ihr[j], ihi[j], sc[j], c0[j], x, y);
    return s;
}

TARNO_VECTOR_CLONES double wellSum(const double* wx, const double* wy, const double* q, int n, double x, double y) {
    double s = 0.0;
#pragma omp simd reduction(+ : s)
    for (int j = 0; j < n; ++j) s += q[j] * wellPotential(wx[j], wy[j], x, y);
    return s;
}

// ---------------------------------------------------------------------------------
// Potential and W together

namespace {

constexpr double kLogTinyEnd = -64.47238260383328;  // ln(1e-28): |Z -+ 1| held at 1e-14 in W

// Unit line-sink at local (X, Y): potential / scale, and ln(Z+1) - ln(Z-1) = D + i th.
// Inline so that the loops below vectorise.
inline void lsParts(double X, double Y, double& t, double& D, double& th) {
    const double r1 = (X + 1.0) * (X + 1.0) + Y * Y;
    const double r2 = (X - 1.0) * (X - 1.0) + Y * Y;
    const double l1 = std::log(r1 + kTiny), l2 = std::log(r2 + kTiny);
    th = std::atan2(-2.0 * Y, X * X + Y * Y - 1.0);
    t = 0.5 * ((X + 1.0) * l1 - (X - 1.0) * l2) - Y * th;
    const double l1w = r1 < 1e-28 ? kLogTinyEnd : l1;
    const double l2w = r2 < 1e-28 ? kLogTinyEnd : l2;
    D = 0.5 * (l1w - l2w);
}

}  // namespace

TARNO_VECTOR_CLONES void lineSinkField(const double* cx, const double* cy, const double* ihr, const double* ihi, const double* sc,
                   const double* c0, const double* sig, int n, double x, double y, Field& f) {
    double phi = 0.0, wr = 0.0, wi = 0.0;
#pragma omp simd reduction(+ : phi, wr, wi)
    for (int j = 0; j < n; ++j) {
        const double dx = x - cx[j], dy = y - cy[j];
        const double X = dx * ihr[j] - dy * ihi[j];
        const double Y = dx * ihi[j] + dy * ihr[j];
        double t, D, th;
        lsParts(X, Y, t, D, th);
        const double s = sig[j] * sc[j];
        phi += s * (t + c0[j]);
        // W = -scale ih (D + i th)
        wr -= s * (ihr[j] * D - ihi[j] * th);
        wi -= s * (ihr[j] * th + ihi[j] * D);
    }
    f.phi += phi;
    f.wr += wr;
    f.wi += wi;
}

TARNO_VECTOR_CLONES void wellField(const double* wx, const double* wy, const double* q, int n, double x, double y, Field& f) {
    double phi = 0.0, wr = 0.0, wi = 0.0;
#pragma omp simd reduction(+ : phi, wr, wi)
    for (int j = 0; j < n; ++j) {
        const double dx = x - wx[j], dy = y - wy[j];
        const double r2 = dx * dx + dy * dy;
        phi += q[j] * (0.25 / kPi) * std::log(r2 + kTiny);
        // W = -q / (2 pi (x + i y)) = -q (dx - i dy) / (2 pi r^2); nothing at the centre.
        const double g = r2 > 0.0 ? q[j] / (2.0 * kPi * r2) : 0.0;
        wr -= g * dx;
        wi += g * dy;
    }
    f.phi += phi;
    f.wr += wr;
    f.wi += wi;
}

void AreaSinkEdges::add(const LsGeom& g, double vx_, double vy_, double nx_, double ny_, double wt_) {
    cx.push_back(g.cx); cy.push_back(g.cy); ihr.push_back(g.ihr); ihi.push_back(g.ihi);
    scale.push_back(g.scale); c0.push_back(g.c0); L.push_back(g.L);
    vx.push_back(vx_); vy.push_back(vy_); nx.push_back(nx_); ny.push_back(ny_);
    wt.push_back(wt_);
}

// With I = sum_e d_e (2 pi phi_e - L_e / 2) the potential is -I / (4 pi) and
// Q = grad(I) / (4 pi), grad I = sum_e [ -n_e (2 pi phi_e - L_e / 2) + d_e 2 pi grad phi_e ]
// (phi_e the unit line-sink along edge e, grad phi_e = (-Re W_e, Im W_e)).
TARNO_VECTOR_CLONES void areaSinkField(const AreaSinkEdges& e, double x, double y, bool wantW, Field& f) {
    const int n = e.size();
    const double *cx = e.cx.data(), *cy = e.cy.data(), *ihr = e.ihr.data(), *ihi = e.ihi.data();
    const double *sc = e.scale.data(), *c0 = e.c0.data(), *L = e.L.data();
    const double *vx = e.vx.data(), *vy = e.vy.data(), *nx = e.nx.data(), *ny = e.ny.data(), *wt = e.wt.data();
    double I = 0.0, gx = 0.0, gy = 0.0;
    if (!wantW) {
#pragma omp simd reduction(+ : I)
        for (int j = 0; j < n; ++j) {
            const double d = (vx[j] - x) * nx[j] + (vy[j] - y) * ny[j];
            const double T = 2.0 * kPi * lsPotential(cx[j], cy[j], ihr[j], ihi[j], sc[j], c0[j], x, y) - 0.5 * L[j];
            I += wt[j] * d * T;
        }
    } else {
#pragma omp simd reduction(+ : I, gx, gy)
        for (int j = 0; j < n; ++j) {
            const double dx = x - cx[j], dy = y - cy[j];
            const double X = dx * ihr[j] - dy * ihi[j];
            const double Y = dx * ihi[j] + dy * ihr[j];
            double t, D, th;
            lsParts(X, Y, t, D, th);
            const double d = (vx[j] - x) * nx[j] + (vy[j] - y) * ny[j];
            const double T = 2.0 * kPi * sc[j] * (t + c0[j]) - 0.5 * L[j];
            const double wr = -sc[j] * (ihr[j] * D - ihi[j] * th);
            const double wi = -sc[j] * (ihr[j] * th + ihi[j] * D);
            I += wt[j] * d * T;
            gx += wt[j] * (-nx[j] * T - d * 2.0 * kPi * wr);
            gy += wt[j] * (-ny[j] * T + d * 2.0 * kPi * wi);
        }
    }
    f.phi += -I / (4.0 * kPi);
    if (wantW) {
        f.wr += gx / (4.0 * kPi);
        f.wi -= gy / (4.0 * kPi);
    }
}

void DoubletEdges::add(double cx_, double cy_, double ihr_, double ihi_) {
    cx.push_back(cx_); cy.push_back(cy_); ihr.push_back(ihr_); ihi.push_back(ihi_);
    a.push_back(0.0); b.push_back(0.0); c.push_back(0.0);
}

// m1 B0 + m2 B1 + p B2 with B0 = (G0 - G1)/2, B1 = (G0 + G1)/2, B2 = G0 - G2 is
// a G0 + b G1 - c G2 with these a, b, c.
void DoubletEdges::setStrengths(int j, double m1, double m2, double p) {
    a[j] = 0.5 * (m1 + m2) + p;
    b[j] = 0.5 * (m2 - m1);
    c[j] = p;
}

// With L = ln((Z-1)/(Z+1)), G0 = L, G1 = Z L + 2, G2 = Z^2 L + 2 Z, the weighted sum is
//   B = a G0 + b G1 - c G2 = L P + 2 b - 2 c Z,   P = a + b Z - c Z^2,
// its derivative dB/dZ = P 2/(Z^2 - 1) + L (b - 2 c Z) - 2 c; Phi = Im(B) / (2 pi) and
// W = i (1/h) dB/dZ / (2 pi). L in real arithmetic:
//   Re L = ln(|Z-1|^2 / |Z+1|^2) / 2,  Im L = atan2(2Y, |Z|^2 - 1),
// and on the segment (|Y| < 1e-10, |X| < 1) the average of both sides, Im L = 0.
namespace {

// Inlined into each version of doubletField, so that it is built for both.
template <bool WantW>
[[gnu::always_inline]] inline void doubletLoop(const DoubletEdges& e, int begin, int n, double x, double y, Field& f) {
    const double *cx = e.cx.data(), *cy = e.cy.data(), *ihr = e.ihr.data(), *ihi = e.ihi.data();
    const double *ca = e.a.data(), *cb = e.b.data(), *cc = e.c.data();
    double phi = 0.0, wr = 0.0, wi = 0.0;
#pragma omp simd reduction(+ : phi, wr, wi)
    for (int j = begin; j < n; ++j) {
        const double dx = x - cx[j], dy = y - cy[j];
        double X = dx * ihr[j] - dy * ihi[j];
        double Y = dx * ihi[j] + dy * ihr[j];
        // Points at an end are moved off it along the segment's line.
        const bool atEnd1 = (X - 1.0) * (X - 1.0) + Y * Y < 1e-24;
        const bool atEnd0 = (X + 1.0) * (X + 1.0) + Y * Y < 1e-24;
        X = atEnd1 ? 1.0 + 1e-12 : (atEnd0 ? -1.0 - 1e-12 : X);
        Y = (atEnd1 || atEnd0) ? 0.0 : Y;
        const bool onSeg = std::fabs(Y) < 1e-10 && std::fabs(X) < 1.0;
        const double YL = onSeg ? 0.0 : Y;
        const double r1 = (X + 1.0) * (X + 1.0) + YL * YL;
        const double r2 = (X - 1.0) * (X - 1.0) + YL * YL;
        const double Lr = 0.5 * std::log(r2 / r1);
        const double Li = onSeg ? 0.0 : std::atan2(2.0 * Y, X * X + Y * Y - 1.0);
        const double a = ca[j], b = cb[j], c = cc[j];
        const double Pr = a + b * X - c * (X * X - Y * Y);
        const double Pi = b * Y - 2.0 * c * X * Y;
        phi += Lr * Pi + Li * Pr - 2.0 * c * Y;
        if constexpr (WantW) {
            // d0 = 2 / (Z^2 - 1)
            const double u = X * X - Y * Y - 1.0, v = 2.0 * X * Y;
            const double m = 2.0 / (u * u + v * v);
            const double d0r = m * u, d0i = -m * v;
            const double Qr = b - 2.0 * c * X, Qi = -2.0 * c * Y;
            const double dBr = d0r * Pr - d0i * Pi + Lr * Qr - Li * Qi - 2.0 * c;
            const double dBi = d0r * Pi + d0i * Pr + Lr * Qi + Li * Qr;
            // i (1/h): (-ihi, ihr)
            wr += -ihi[j] * dBr - ihr[j] * dBi;
            wi += -ihi[j] * dBi + ihr[j] * dBr;
        }
    }
    f.phi += phi / (2.0 * kPi);
    f.wr += wr / (2.0 * kPi);
    f.wi += wi / (2.0 * kPi);
}

}  // namespace

TARNO_VECTOR_CLONES void doubletField(const DoubletEdges& e, double x, double y, bool wantW, Field& f) {
    if (wantW) doubletLoop<true>(e, 0, e.size(), x, y, f);
    else doubletLoop<false>(e, 0, e.size(), x, y, f);
}

TARNO_VECTOR_CLONES void doubletFieldRange(const DoubletEdges& e, int begin, int end, double x, double y, bool wantW,
                                           Field& f) {
    if (wantW) doubletLoop<true>(e, begin, end, x, y, f);
    else doubletLoop<false>(e, begin, end, x, y, f);
}

}  // namespace tarno::engine::detail
