// Hot loops: columns of the influence matrix and potentials at many points.
// Kept apart so that they can be compiled for vectorisation.
#include "engine/fields.h"

#include "engine/kernels.h"

namespace tarno::engine::detail {

void lineSinkColumn(const LsGeom& g, const double* px, const double* py, int n, double* out) {
    const double cx = g.cx, cy = g.cy, ihr = g.ihr, ihi = g.ihi, sc = g.scale, c0 = g.c0;
#pragma omp simd
    for (int i = 0; i < n; ++i) out[i] = lsPotential(cx, cy, ihr, ihi, sc, c0, px[i], py[i]);
}

void wellColumn(double wx, double wy, const double* px, const double* py, int n, double* out) {
#pragma omp simd
    for (int i = 0; i < n; ++i) out[i] = wellPotential(wx, wy, px[i], py[i]);
}

double lineSinkSum(const double* cx, const double* cy, const double* ihr, const double* ihi,
                   const double* sc, const double* c0, const double* sig, int n, double x, double y) {
    double s = 0.0;
#pragma omp simd reduction(+ : s)
    for (int j = 0; j < n; ++j) s += sig[j] * lsPotential(cx[j], cy[j], ihr[j], ihi[j], sc[j], c0[j], x, y);
    return s;
}

double wellSum(const double* wx, const double* wy, const double* q, int n, double x, double y) {
    double s = 0.0;
#pragma omp simd reduction(+ : s)
    for (int j = 0; j < n; ++j) s += q[j] * wellPotential(wx[j], wy[j], x, y);
    return s;
}

}  // namespace tarno::engine::detail
