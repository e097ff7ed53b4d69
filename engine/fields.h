#pragma once
// Vectorisable loops over elements or points (internal to the engine).
//
// The sums over elements at one point come in two kinds: potential only (heads,
// collocation) and potential with W = Qx - i Qy together (velocities, pathlines,
// flows). The second kind shares the logarithms and arctangents of each element
// between both, and writes the complex logarithms of W in real arithmetic:
//   ln(Z+1) - ln(Z-1) = (1/2) ln(|Z+1|^2 / |Z-1|^2) + i atan2(-2Y, |Z|^2 - 1)
// where the arctangent is arg(Z+1) - arg(Z-1), the same one the potential uses.
#include "engine/kernels.h"

#include <vector>

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

// Potential and W = Qx - i Qy at one point, summed.
struct Field {
    double phi = 0.0;
    double wr = 0.0;  // Re W = Qx
    double wi = 0.0;  // Im W = -Qy
};

// Adds sig[j] times the unit line-sink's potential and W. W agrees with lsW, which
// moves a point closer than 1e-14 (in local units) to an end onto that distance.
void lineSinkField(const double* cx, const double* cy, const double* ihr, const double* ihi, const double* sc,
                   const double* c0, const double* sig, int n, double x, double y, Field& f);
// Adds q[j] times the unit well's potential and W (W = 0 at the well's centre).
void wellField(const double* wx, const double* wy, const double* q, int n, double x, double y, Field& f);

// The edges of all uniform area sinks, flattened, each with the weight of its sink
// (the recharge rate, -N of its domain). See areaSinkPotential / areaSinkW in area.h.
struct AreaSinkEdges {
    std::vector<double> cx, cy, ihr, ihi, scale, c0, L;  // the edge as a line-sink
    std::vector<double> vx, vy, nx, ny;                   // start vertex, outward normal
    std::vector<double> wt;                               // weight of the edge's sink
    void add(const LsGeom& g, double vx, double vy, double nx, double ny, double wt);
    int size() const { return (int)cx.size(); }
};
// Weighted sum of the area sinks' potentials (and W when wantW) at (x, y), added to f.
void areaSinkField(const AreaSinkEdges& e, double x, double y, bool wantW, Field& f);

// Line-doublets (area.h), flattened, with the strengths folded into the coefficients
// of the weighted sum of the three basis functions (see doubletField).
struct DoubletEdges {
    std::vector<double> cx, cy, ihr, ihi;  // centre and 1 / h
    std::vector<double> a, b, c;           // from the strengths (m1, m2, p): see setStrengths
    void add(double cx, double cy, double ihr, double ihi);
    void setStrengths(int j, double m1, double m2, double p);
    int size() const { return (int)cx.size(); }
};
// Sum of the doublets' potentials (and W when wantW) at (x, y), added to f. Agrees with
// the sum of val[k] times dbBasis, with the same treatment of points on a segment and
// at its ends.
void doubletField(const DoubletEdges& e, double x, double y, bool wantW, Field& f);
// The same over the edges [begin, end) only.
void doubletFieldRange(const DoubletEdges& e, int begin, int end, double x, double y, bool wantW, Field& f);

}  // namespace tarno::engine::detail
