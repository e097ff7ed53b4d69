// The vectorised sums of potential and discharge (engine/fields.h) against the plain
// complex-logarithm formulas of each element, at points far away, near and on the
// extension of segments, next to and at their ends; and a solved model's discharge
// against the gradient of its potential.
#include "engine/area.h"
#include "engine/fields.h"
#include "engine/kernels.h"
#include "engine/solution.h"
#include "helpers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <complex>
#include <random>
#include <vector>

using namespace tarno::engine;
using namespace tarno::engine::detail;
using cplx = std::complex<double>;

namespace {

constexpr double kPi = tarno::engine::detail::kPi;

struct Seg {
    double x1, y1, x2, y2, sig;
};

// Complex potential of a line-sink of strength sig, written from its definition.
cplx lineSinkOmega(const Seg& s, double x, double y) {
    const cplx z1(s.x1, s.y1), z2(s.x2, s.y2), z(x, y);
    const cplx h = 0.5 * (z2 - z1);
    const cplx Z = (z - 0.5 * (z1 + z2)) / h;
    const double L = 2.0 * std::abs(h);
    return s.sig * L / (4.0 * kPi) * ((Z + 1.0) * std::log(Z + 1.0) - (Z - 1.0) * std::log(Z - 1.0) + 2.0 * std::log(h) - 2.0);
}

// W = -dOmega/dz of the same.
cplx lineSinkWRef(const Seg& s, double x, double y) {
    const cplx z1(s.x1, s.y1), z2(s.x2, s.y2), z(x, y);
    const cplx h = 0.5 * (z2 - z1);
    const cplx Z = (z - 0.5 * (z1 + z2)) / h;
    const double L = 2.0 * std::abs(h);
    return -s.sig * L / (4.0 * kPi) * (std::log(Z + 1.0) - std::log(Z - 1.0)) / h;
}

// Structure-of-arrays form of segments, as the solution keeps them.
struct SegArrays {
    std::vector<double> cx, cy, ihr, ihi, sc, c0, sig;
    explicit SegArrays(const std::vector<Seg>& v) {
        for (const Seg& s : v) {
            const LsGeom g = makeGeom(s.x1, s.y1, s.x2, s.y2);
            cx.push_back(g.cx); cy.push_back(g.cy); ihr.push_back(g.ihr); ihi.push_back(g.ihi);
            sc.push_back(g.scale); c0.push_back(g.c0); sig.push_back(s.sig);
        }
    }
    Field at(double x, double y) const {
        Field f;
        lineSinkField(cx.data(), cy.data(), ihr.data(), ihi.data(), sc.data(), c0.data(), sig.data(), (int)cx.size(), x, y, f);
        return f;
    }
};

// A point at local coordinate (X, Y) of a segment.
void localPoint(const Seg& s, double X, double Y, double& x, double& y) {
    const cplx z1(s.x1, s.y1), z2(s.x2, s.y2);
    const cplx z = 0.5 * (z1 + z2) + cplx(X, Y) * 0.5 * (z2 - z1);
    x = z.real();
    y = z.imag();
}

// Round-off in the local coordinate Z is magnified near the ends: the relative error
// to expect there in ln|Z -+ 1| (line-sinks) or 1 / (Z -+ 1) (doublets), beyond that
// of the formulas themselves.
double endCondition(double X, double Y) {
    const double d = std::min(std::hypot(X - 1.0, Y), std::hypot(X + 1.0, Y));
    return 1e-15 * (1.0 + std::hypot(X, Y)) / std::max(d, 1e-12);
}

// Local coordinates that matter: far away, near, on the extension of the segment,
// just off its ends and just off the segment itself.
const std::vector<std::pair<double, double>> kLocal = {
    {0.3, 0.7},   {-0.4, -1.3}, {2.5, 0.0},    {-3.0, 0.0},   {1.0 + 1e-7, 0.0}, {-1.0 - 1e-9, 0.0},
    {1.0, 1e-8},  {-1.0, -1e-6}, {0.2, 1e-9},  {0.2, -1e-9},  {40.0, 25.0},      {-700.0, 300.0},
    {1e4, -3e3},  {0.0, 2.0},   {1.5, -0.01}, {-1.2, 0.3},
};

TEST(LineSinkField, AgreesWithTheComplexLogarithmsNearFarAndOnTheExtension) {
    const Seg s{120.0, -40.0, 180.0, 35.0, 0.7};
    const SegArrays a({s});
    for (const auto& [X, Y] : kLocal) {
        double x, y;
        localPoint(s, X, Y, x, y);
        const Field f = a.at(x, y);
        const cplx w = lineSinkWRef(s, x, y);
        const double phi = lineSinkOmega(s, x, y).real();
        EXPECT_NEAR(f.phi, phi, 1e-11 * (1.0 + std::fabs(phi))) << X << ", " << Y;
        const double tol = 1e-9 * std::abs(w) + s.sig / (2.0 * kPi) * endCondition(X, Y);
        EXPECT_NEAR(f.wr, w.real(), tol) << X << ", " << Y;
        EXPECT_NEAR(f.wi, w.imag(), tol) << X << ", " << Y;
    }
}

TEST(LineSinkField, SumsManySegmentsAsTheLoopOverElementsDoes) {
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> u(-500.0, 500.0), q(-2.0, 2.0);
    std::vector<Seg> v;
    for (int i = 0; i < 37; ++i) {  // an odd count: the vector loop's tail is used
        const double x = u(rng), y = u(rng);
        v.push_back({x, y, x + 0.1 * u(rng), y + 0.1 * u(rng), q(rng)});
    }
    const SegArrays a(v);
    for (int k = 0; k < 50; ++k) {
        double x = u(rng), y = u(rng);
        if (k < 10) localPoint(v[k], kLocal[k].first, kLocal[k].second, x, y);  // near a segment or its end
        cplx w = 0.0;
        double phi = 0.0, pabs = 0.0, wtol = 0.0;
        for (const Seg& s : v) {
            w += lineSinkWRef(s, x, y);
            const LsGeom g = makeGeom(s.x1, s.y1, s.x2, s.y2);
            const cplx Z = localZ(g, x, y);
            wtol += 1e-10 * std::abs(lineSinkWRef(s, x, y)) +
                    std::fabs(s.sig) / (2.0 * kPi) * endCondition(Z.real(), Z.imag());
            phi += lineSinkOmega(s, x, y).real();
            pabs += std::fabs(lineSinkOmega(s, x, y).real());
        }
        const Field f = a.at(x, y);
        EXPECT_NEAR(f.phi, phi, 1e-12 * pabs) << k;
        EXPECT_NEAR(f.wr, w.real(), wtol) << k;
        EXPECT_NEAR(f.wi, w.imag(), wtol) << k;
        // The potential agrees with the potential-only sum used for heads.
        EXPECT_NEAR(f.phi, lineSinkSum(a.cx.data(), a.cy.data(), a.ihr.data(), a.ihi.data(), a.sc.data(), a.c0.data(),
                                       a.sig.data(), (int)v.size(), x, y),
                    1e-13 * pabs);
    }
}

TEST(LineSinkField, StaysFiniteAtTheEndsAndOnTheSegment) {
    const Seg s{0.0, 0.0, 10.0, 0.0, 1.0};
    const SegArrays a({s});
    for (double x : {0.0, 10.0, 5.0, 2.5}) {
        const Field f = a.at(x, 0.0);
        EXPECT_TRUE(std::isfinite(f.phi) && std::isfinite(f.wr) && std::isfinite(f.wi)) << x;
    }
    // Each side of the segment gives sigma / 2 to it: Qy = -1/2 above, +1/2 below,
    // and the flow along it is the same on both sides.
    const Field above = a.at(2.5, 1e-9), below = a.at(2.5, -1e-9);
    EXPECT_NEAR(-above.wi, -0.5, 1e-6);
    EXPECT_NEAR(-below.wi, 0.5, 1e-6);
    EXPECT_NEAR(above.wr, below.wr, 1e-9);
}

TEST(WellField, AgreesWithThePlainFormulaAndIsZeroAtTheCentre) {
    const std::vector<double> wx{0.0, 30.0, -12.0}, wy{0.0, 5.0, 40.0}, q{100.0, -35.0, 7.5};
    for (auto [x, y] : std::vector<std::pair<double, double>>{{3.0, 4.0}, {30.0 + 1e-6, 5.0}, {-1e5, 2e5}, {0.0, 0.0}}) {
        Field f;
        wellField(wx.data(), wy.data(), q.data(), 3, x, y, f);
        cplx w = 0.0;
        double phi = 0.0;
        for (int j = 0; j < 3; ++j) {
            phi += q[j] * wellPotential(wx[j], wy[j], x, y);
            const cplx d(x - wx[j], y - wy[j]);
            if (std::abs(d) > 0) w += -q[j] / (2.0 * kPi) / d;
        }
        EXPECT_NEAR(f.phi, phi, 1e-12 * std::fabs(phi)) << x << ", " << y;
        EXPECT_NEAR(f.wr, w.real(), 1e-12 * std::abs(w)) << x << ", " << y;
        EXPECT_NEAR(f.wi, w.imag(), 1e-12 * std::abs(w)) << x << ", " << y;
    }
}

// A line-doublet with jump m1 (1 - X)/2 + m2 (1 + X)/2 + p (1 - X^2) from its Cauchy
// integral, written with complex logarithms: Omega = B / (2 pi i) with
// B = m1 (G0 - G1)/2 + m2 (G0 + G1)/2 + p (G0 - G2), G0 = L, G1 = Z L + 2,
// G2 = Z^2 L + 2 Z, L = ln((Z - 1)/(Z + 1)) (real on the segment: the average of
// both sides); W = -dOmega/dz. Ends are moved off by 1e-12 as the engine does.
Field doubletOne(const DbGeom& g, const std::array<double, 3>& v, double x, double y) {
    const cplx h = 1.0 / g.ih;
    cplx Z = (cplx(x, y) - cplx(g.cx, g.cy)) / h;
    if (std::abs(Z - 1.0) < 1e-12) Z = 1.0 + 1e-12;
    if (std::abs(Z + 1.0) < 1e-12) Z = -1.0 - 1e-12;
    const bool on = std::fabs(Z.imag()) < 1e-10 && std::fabs(Z.real()) < 1.0;
    const cplx L = on ? cplx(std::log((1.0 - Z.real()) / (1.0 + Z.real()))) : std::log((Z - 1.0) / (Z + 1.0));
    const cplx G0 = L, G1 = Z * L + 2.0, G2 = Z * Z * L + 2.0 * Z;
    const cplx B = v[0] * 0.5 * (G0 - G1) + v[1] * 0.5 * (G0 + G1) + v[2] * (G0 - G2);
    const cplx dL = 2.0 / (Z * Z - 1.0);
    const cplx dG0 = dL, dG1 = L + Z * dL, dG2 = 2.0 * Z * L + Z * Z * dL + 2.0;
    const cplx dB = v[0] * 0.5 * (dG0 - dG1) + v[1] * 0.5 * (dG0 + dG1) + v[2] * (dG0 - dG2);
    const cplx I(0.0, 1.0);
    const cplx W = -(dB / h) / (2.0 * kPi * I);
    Field f;
    f.phi = (B / (2.0 * kPi * I)).real();
    f.wr = W.real();
    f.wi = W.imag();
    return f;
}

Field doubletRef(const std::vector<DbGeom>& g, const std::vector<std::array<double, 3>>& val, double x, double y) {
    Field f;
    for (size_t e = 0; e < g.size(); ++e) {
        const Field o = doubletOne(g[e], val[e], x, y);
        f.phi += o.phi;
        f.wr += o.wr;
        f.wi += o.wi;
    }
    return f;
}

TEST(DoubletBasis, AgreesWithTheComplexLogarithms) {
    const DbGeom g = makeDbGeom(-30.0, 10.0, 25.0, 40.0);
    const Seg s{-30.0, 10.0, 25.0, 40.0, 0.0};
    for (const auto& [X, Y] : kLocal) {
        if (std::hypot(X, Y) > 1e3) continue;
        double x, y;
        localPoint(s, X, Y, x, y);
        const DbBasis b = dbBasis(g, x, y, true);
        for (int k = 0; k < 3; ++k) {
            std::array<double, 3> v{0.0, 0.0, 0.0};
            v[k] = 1.0;
            const Field r = doubletOne(g, v, x, y);
            const double c = 1e-9 + 10.0 * endCondition(X, Y);
            EXPECT_NEAR(b.phi[k], r.phi, c * (1.0 + std::fabs(r.phi))) << X << ", " << Y << " basis " << k;
            EXPECT_NEAR(b.w[k].real(), r.wr, c * (1e-3 + std::hypot(r.wr, r.wi))) << X << ", " << Y << " basis " << k;
            EXPECT_NEAR(b.w[k].imag(), r.wi, c * (1e-3 + std::hypot(r.wr, r.wi))) << X << ", " << Y << " basis " << k;
        }
    }
}

struct Doublets {
    std::vector<DbGeom> g;
    std::vector<std::array<double, 3>> val;
    DoubletEdges arr;
    void add(double x1, double y1, double x2, double y2, double m1, double m2, double p) {
        g.push_back(makeDbGeom(x1, y1, x2, y2));
        val.push_back({m1, m2, p});
        arr.add(g.back().cx, g.back().cy, g.back().ih.real(), g.back().ih.imag());
        arr.setStrengths(arr.size() - 1, m1, m2, p);
    }
    Field at(double x, double y, bool wantW = true) const {
        Field f;
        doubletField(arr, x, y, wantW, f);
        return f;
    }
};

TEST(DoubletField, AgreesWithTheBasisFunctionsOnNearAndAtTheSegment) {
    Doublets d;
    d.add(10.0, 20.0, 50.0, -10.0, 1.5, -0.7, 0.4);
    const Seg s{10.0, 20.0, 50.0, -10.0, 0.0};
    auto check = [&](double X, double Y, double tol) {
        double x, y;
        localPoint(s, X, Y, x, y);
        const Field f = d.at(x, y), r = doubletRef(d.g, d.val, x, y);
        const double wabs = std::hypot(r.wr, r.wi);
        EXPECT_NEAR(f.phi, r.phi, (tol + 10.0 * endCondition(X, Y)) * (1.0 + std::fabs(r.phi))) << X << ", " << Y;
        // W has poles at the ends: there round-off in Z counts relative to W itself.
        const double wtol = (tol + 10.0 * endCondition(X, Y)) * (1e-3 + wabs);
        EXPECT_NEAR(f.wr, r.wr, wtol) << X << ", " << Y;
        EXPECT_NEAR(f.wi, r.wi, wtol) << X << ", " << Y;
        EXPECT_NEAR(d.at(x, y, false).phi, f.phi, 1e-12 * (1.0 + std::fabs(f.phi)));
    };
    for (const auto& [X, Y] : kLocal)
        if (std::hypot(X, Y) < 1e3) check(X, Y, 1e-9);
    // On the segment (average of both sides), exactly at the ends, and far away where
    // both forms lose digits to cancellation.
    for (double X : {-0.9, 0.0, 0.5, -1.0, 1.0}) check(X, 0.0, 1e-9);
    check(3e3, -1e3, 1e-4);
}

TEST(DoubletField, JumpsByTheStrengthAcrossTheSegment) {
    Doublets d;
    d.add(0.0, 0.0, 20.0, 0.0, 2.0, 3.0, -1.0);
    for (double X : {-0.8, -0.3, 0.0, 0.6}) {
        const double x = 10.0 + 10.0 * X;
        const double mu = dbJump(2.0, 3.0, -1.0, X);
        const double up = d.at(x, 1e-7).phi, down = d.at(x, -1e-7).phi, on = d.at(x, 0.0).phi;
        EXPECT_NEAR(up - down, mu, 1e-6) << X;
        EXPECT_NEAR(on, 0.5 * (up + down), 1e-6) << X;
        // The normal flow is continuous across it.
        EXPECT_NEAR(d.at(x, 1e-7).wi, d.at(x, -1e-7).wi, 1e-5 * (1.0 + std::fabs(d.at(x, 1e-7).wi))) << X;
    }
}

TEST(DoubletField, SumsManyEdgesWithZeroStrengthsLeftOut) {
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> u(-200.0, 200.0), m(-1.0, 1.0);
    Doublets d;
    for (int i = 0; i < 23; ++i) {
        const double x = u(rng), y = u(rng);
        if (i % 5 == 0) d.add(x, y, x + 0.2 * u(rng), y + 0.2 * u(rng), 0.0, 0.0, 0.0);
        else d.add(x, y, x + 0.2 * u(rng), y + 0.2 * u(rng), m(rng), m(rng), m(rng));
    }
    for (int k = 0; k < 40; ++k) {
        const double x = u(rng), y = u(rng);
        const Field f = d.at(x, y), r = doubletRef(d.g, d.val, x, y);
        EXPECT_NEAR(f.phi, r.phi, 1e-10 * (1.0 + std::fabs(r.phi))) << k;
        EXPECT_NEAR(f.wr, r.wr, 1e-9 * (1e-3 + std::hypot(r.wr, r.wi))) << k;
        EXPECT_NEAR(f.wi, r.wi, 1e-9 * (1e-3 + std::hypot(r.wr, r.wi))) << k;
    }
}

TEST(AreaSinkField, AgreesWithThePolygonSumAndWithTheGradientOfItsPotential) {
    // A clockwise polygon (turned round by makeAreaSink) and a square, with two rates.
    const std::vector<Pt> p1{{0, 0}, {0, 50}, {40, 60}, {70, 20}, {35, -10}};
    const std::vector<Pt> p2{{100, 100}, {130, 100}, {130, 130}, {100, 130}};
    const AreaSinkGeom a1 = makeAreaSink(p1), a2 = makeAreaSink(p2);
    const double r1 = 0.002, r2 = -0.0007;
    AreaSinkEdges e;
    for (const auto& [a, r] : {std::pair{&a1, r1}, std::pair{&a2, r2}})
        for (size_t k = 0; k < a->edges.size(); ++k) e.add(a->edges[k], a->v[k].x, a->v[k].y, a->nx[k], a->ny[k], r);
    auto phiAt = [&](double x, double y) {
        Field f;
        areaSinkField(e, x, y, false, f);
        return f.phi;
    };
    // Inside, on an edge, at and next to vertices, outside near and far.
    const double pts[][2] = {{30, 20}, {115, 118}, {-400, 900}, {80, 80}, {0, 25}, {0, 0}, {130, 130}, {70, 20.001}};
    for (int i = 0; i < 8; ++i) {
        const double x = pts[i][0], y = pts[i][1];
        Field f;
        areaSinkField(e, x, y, true, f);
        const double phi = r1 * areaSinkPotential(a1, x, y) + r2 * areaSinkPotential(a2, x, y);
        const cplx w = r1 * areaSinkW(a1, x, y) + r2 * areaSinkW(a2, x, y);
        EXPECT_NEAR(f.phi, phi, 1e-12 * (1.0 + std::fabs(phi))) << x << ", " << y;
        EXPECT_NEAR(f.wr, w.real(), 1e-10 * (1e-3 + std::abs(w))) << x << ", " << y;
        EXPECT_NEAR(f.wi, w.imag(), 1e-10 * (1e-3 + std::abs(w))) << x << ", " << y;
        EXPECT_NEAR(phiAt(x, y), f.phi, 1e-13 * (1.0 + std::fabs(phi)));
        // Q = -grad Phi, by central differences, away from the edges (where the second
        // derivatives jump and the differences lose accuracy).
        if (i >= 4) continue;
        const double h = 1e-3;
        const double qx = -(phiAt(x + h, y) - phiAt(x - h, y)) / (2 * h);
        const double qy = -(phiAt(x, y + h) - phiAt(x, y - h)) / (2 * h);
        EXPECT_NEAR(f.wr, qx, 1e-6 * (1e-2 + std::abs(w))) << x << ", " << y;
        EXPECT_NEAR(-f.wi, qy, 1e-6 * (1e-2 + std::abs(w))) << x << ", " << y;
    }
}

// A solved model with every kind of element: the discharge that evaluate and discharge
// report is minus the gradient of the potential, and evaluate's potential is potential's.
TEST(SolutionField, DischargeIsMinusTheGradientOfThePotential) {
    using tarno::engine::testing::aquiferModel;
    using tarno::engine::testing::opts;
    using tarno::engine::testing::straightString;
    using tarno::engine::testing::well;
    Model m = aquiferModel(0.0, 10.0, 20.0, -2000.0, 0.0, 40.0);
    m.aquifer.qx0 = 0.3;
    m.aquifer.qy0 = -0.1;
    m.wells.push_back(well(150.0, 40.0, 400.0, false));
    m.wells.push_back(well(-120.0, -60.0, 30.0, true, 0.2, "WL_000002"));
    m.lineSinks.push_back(straightString(LineSinkKind::Head, -300.0, 200.0, 300.0, 260.0, 6, 36.0, 34.0));
    Inhomogeneity in;
    in.conductivity = 3.0;
    in.extraction = -0.0005;
    in.label = "IN_000001_0000";
    for (int i = 0; i < 12; ++i) {
        const double t = 2.0 * kPi * i / 12;
        in.vertices.push_back({20.0 + 80.0 * std::cos(t), -20.0 + 60.0 * std::sin(t), "IN_000001_" + std::to_string(1000 + i)});
    }
    m.inhomogeneities.push_back(in);
    Wall w;
    w.kind = WallKind::Open;
    w.conductivity = 0.01;
    w.thickness = 1.0;
    w.bottom = 0.0;
    w.label = "HB_000001_0000";
    w.vertices = {{-250.0, -150.0, "HB_000001_1000"}, {-150.0, -200.0, "HB_000001_1001"}, {-50.0, -260.0, "HB_000001_1002"}};
    m.walls.push_back(w);
    Pond p;
    p.x = 200.0;
    p.y = -150.0;
    p.radius = 40.0;
    p.value = 0.001;
    p.label = "PD_000001";
    m.ponds.push_back(p);
    Solution s(std::move(m));
    s.solve(opts(5));
    const double pts[][2] = {{0, 0}, {150.0, 45.0}, {-100.0, 100.0}, {20.0, 30.0}, {90.0, -20.0},
                             {200.0, -130.0}, {-150.0, -190.0}, {500.0, 500.0}, {-120.0, -59.5}};
    for (const auto& pt : pts) {
        const double x = pt[0], y = pt[1];
        const PointValues v = s.evaluate(x, y);
        EXPECT_NEAR(v.potential, s.potential(x, y), 1e-12 * std::fabs(v.potential)) << x << ", " << y;
        const auto [qx, qy] = s.discharge(x, y);
        EXPECT_EQ(v.qx, qx);
        EXPECT_EQ(v.qy, qy);
        const double h = 1e-3;
        const double gx = -(s.potential(x + h, y) - s.potential(x - h, y)) / (2 * h);
        const double gy = -(s.potential(x, y + h) - s.potential(x, y - h)) / (2 * h);
        const double scale = 1e-4 * (1.0 + std::hypot(qx, qy));
        EXPECT_NEAR(qx, gx, scale) << x << ", " << y;
        EXPECT_NEAR(qy, gy, scale) << x << ", " << y;
    }
}

}  // namespace
