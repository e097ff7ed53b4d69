#pragma once
// Vectorisable loops over elements or points (internal to the engine).
#include "engine/kernels.h"

namespace tarno::engine::detail {

// out[i] = potential at (px[i], py[i]) of a unit-strength line-sink.
void lineSinkColumn(const LsGeom& g, const double* px, const double* py, int n, double* out);
// out[i] = potential at (px[i], py[i]) of a unit-discharge well at (wx, wy).
void wellColumn(double wx, double wy, const double* px, const double* py, int n, double* out);
// Sum over n line-sinks of sig[j] times the unit potential at (x, y).
double lineSinkSum(const double* cx, const double* cy, const double* ihr, const double* ihi,
                   const double* sc, const double* c0, const double* sig, int n, double x, double y);
// Sum over n wells of q[j] times the unit potential at (x, y).
double wellSum(const double* wx, const double* wy, const double* q, int n, double x, double y);

}  // namespace tarno::engine::detail
