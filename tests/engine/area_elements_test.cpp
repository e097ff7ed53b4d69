// Area elements, walls and ponds against exact solutions.
#include "engine/area.h"
#include "engine/extract.h"
#include "engine/solution.h"
#include "helpers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstdio>
#include <sstream>

using namespace tarno::engine;
using namespace tarno::engine::testing;

namespace {

// A regular polygon of n vertices whose area equals that of the circle of radius R
// (so the recharge and the flow through it match the circle's to second order).
std::vector<Vertex> circle(double cx, double cy, double R, int n, const std::string& prefix, bool equalArea = true) {
    const double Rp = equalArea ? R * std::sqrt(2.0 * kPi / (n * std::sin(2.0 * kPi / n))) : R;
    std::vector<Vertex> v;
    for (int i = 0; i < n; ++i) {
        const double t = 2.0 * kPi * i / n;
        char buf[16];
        std::snprintf(buf, sizeof buf, "_%04d", i + 1);
        v.push_back({cx + Rp * std::cos(t), cy + Rp * std::sin(t), prefix + buf});
    }
    return v;
}

Inhomogeneity inho(std::vector<Vertex> v, double k, double extraction = 0.0, const std::string& label = "IN_000001_0000") {
    Inhomogeneity in;
    in.conductivity = k;
    in.extraction = extraction;
    in.label = label;
    in.vertices = std::move(v);
    return in;
}

Wall wall(WallKind kind, std::vector<Vertex> v, double K, double T, double bottom, const std::string& label = "HB_000001_0000") {
    Wall w;
    w.kind = kind;
    w.conductivity = K;
    w.thickness = T;
    w.bottom = bottom;
    w.label = label;
    w.vertices = std::move(v);
    return w;
}

std::vector<Vertex> straight(double x1, double y1, double x2, double y2, int n) {
    std::vector<Vertex> v;
    for (int i = 0; i <= n; ++i) {
        const double t = double(i) / n;
        v.push_back({x1 + t * (x2 - x1), y1 + t * (y2 - y1), "HB_000001_" + std::to_string(1000 + i)});
    }
    return v;
}

}  // namespace

// ---------------------------------------------------------------------------------
// Ponds: exact radial solutions inside and outside.

TEST(Ponds, DischargeSpecifiedMatchesRadialSolution) {
    const double k = 10, H = 20, B = 0, R = 50, rate = 0.002, rref = 5000, href = 30;
    Model m = aquiferModel(B, k, H, rref, 0, href);
    m.ponds.push_back(Pond{0, 0, R, rate, false, "WL_000009"});
    Solution s(m);
    s.solve(opts(3));
    auto exactPhi = [&](double r) {
        const double phiRef = phiOf(href, B, k, H) + rate * R * R / 4.0 * std::log(rref * rref);
        if (r < R) return phiRef - rate / 4.0 * (r * r - R * R) - rate * R * R / 4.0 * std::log(R * R);
        return phiRef - rate * R * R / 4.0 * std::log(r * r);
    };
    for (double r : {0.0, 20.0, 49.0, 51.0, 200.0, 1000.0}) {
        EXPECT_NEAR(s.potential(r * 0.6, r * 0.8), exactPhi(r), 1e-8 * phiOf(href, B, k, H)) << r;
        EXPECT_NEAR(s.head(r * 0.6, r * 0.8), headOf(exactPhi(r), B, k, H), 1e-9) << r;
    }
    // Discharge: inside rate r / 2 outward, outside rate R^2 / (2 r).
    auto [qx, qy] = s.discharge(30, 0);
    EXPECT_NEAR(qx, rate * 30 / 2, 1e-12);
    EXPECT_NEAR(qy, 0.0, 1e-12);
    std::tie(qx, qy) = s.discharge(0, -100);
    EXPECT_NEAR(qy, -rate * R * R / 200, 1e-12);
    EXPECT_NEAR(s.evaluate(10, 10).recharge, rate, 1e-15);
    EXPECT_EQ(s.evaluate(100, 10).recharge, 0.0);
    EXPECT_LT(s.waterBalance().closureError, 1e-6);
}

TEST(Ponds, HeadSpecifiedMeetsItsHeadAndTheRadialRate) {
    const double k = 5, H = 100, B = 0, R = 30, hp = 42, rref = 3000, href = 40;
    Model m = aquiferModel(B, k, H, rref, 0, href);
    Pond p{100, 50, R, hp, true, "WL_000010"};
    m.ponds.push_back(p);
    Solution s(m);
    s.solve(opts(5));
    EXPECT_NEAR(s.head(100, 50), hp, 1e-8);
    // Unconfined: Phi = k (h - B)^2 / 2 with the unit pond potentials at the centre and
    // the reference point.
    const double P0 = R * R / 4.0 - R * R / 4.0 * std::log(R * R);
    const double rr = std::hypot(rref - 100, 50.0);
    const double Pr = -R * R / 4.0 * std::log(rr * rr);
    const double rate = (phiOf(hp, B, k, H) - phiOf(href, B, k, H)) / (P0 - Pr);
    EXPECT_NEAR(s.evaluate(100, 60).recharge, rate, 1e-9 * std::fabs(rate));
    const auto b = s.waterBalance();
    EXPECT_LT(b.closureError, 1e-6);
    bool found = false;
    for (const auto& t : b.terms)
        if (t.kind == "ponds, head specified") {
            found = true;
            EXPECT_NEAR(t.in, rate * kPi * R * R, 1e-9 * rate * kPi * R * R);
        }
    EXPECT_TRUE(found);
}

// ---------------------------------------------------------------------------------
// Inhomogeneities.

// Confined circular inhomogeneity in uniform flow: inside the flow is uniform and
// 2 k2 / (k1 + k2) times the far discharge; outside the disturbance is a dipole.
TEST(Inhomogeneities, CircleOfOtherConductivityInUniformFlow) {
    const double k1 = 10, k2 = 40, H = 10, B = 0, R = 100, Q0 = 1.0;
    const double xr = -5000, href = 100;
    Model m = aquiferModel(B, k1, H, xr, 0, href);
    m.aquifer.qx0 = Q0;
    const int n = 48;
    m.inhomogeneities.push_back(inho(circle(0, 0, R, n, "IN_000001", true), k2));
    Solution s(m);
    const auto rep = s.solve(opts(4));
    EXPECT_EQ(rep.inhomogeneities, 1);
    EXPECT_EQ(s.unknowns(), 2 * n + 1);
    const double G = Q0 / (k1 * H);
    const double A = G * R * R * (k1 - k2) / (k1 + k2);
    const double c0 = href + G * xr + A / xr;
    auto exact = [&](double x, double y) {
        const double r2 = x * x + y * y;
        if (r2 < R * R) return c0 - G * 2 * k1 / (k1 + k2) * x;
        return c0 - G * x - A * x / r2;
    };
    // The N-gon stands for the circle: its edges lie within R (pi/n)^2 / 2 of it, which
    // bounds the error in head by about G R (pi/n)^2 near the boundary.
    const double tol = 2.0 * G * R * (kPi / n) * (kPi / n);
    for (auto [x, y] : {std::pair{0.0, 0.0}, {50.0, 30.0}, {-70.0, 0.0}, {0.0, 80.0}, {150.0, 0.0}, {0.0, 130.0},
                        {-200.0, 100.0}, {400.0, -300.0}})
        EXPECT_NEAR(s.head(x, y), exact(x, y), tol) << x << ", " << y;
    // Inside the discharge is uniform.
    const auto [qx, qy] = s.discharge(20, -10);
    EXPECT_NEAR(qx, Q0 * 2 * k2 / (k1 + k2), 0.01 * Q0);
    EXPECT_NEAR(qy, 0.0, 0.01 * Q0);
    const PointValues p = s.evaluate(10, 10);
    EXPECT_EQ(p.conductivity, k2);
    EXPECT_EQ(s.evaluate(300, 10).conductivity, k1);
    EXPECT_LT(s.waterBalance().closureError, 1e-6);
}

// Unconfined, with a different base inside: head and normal flow are continuous at
// the collocation points (checked just inside and just outside).
TEST(Inhomogeneities, UnconfinedOtherBaseIsContinuousAcrossTheBoundary) {
    const double k1 = 10, H = 50, B = 0;
    Model m = aquiferModel(B, k1, H, -3000, 0, 20);
    m.aquifer.qx0 = 0.5;
    Inhomogeneity in = inho(circle(0, 0, 200, 12, "IN_000001", false), 3.0);
    in.base = -10;
    in.averageHead = 18;
    m.inhomogeneities.push_back(in);
    m.wells.push_back(well(50, 0, 40, false));
    Solution s(m);
    const auto rep = s.solve(opts(20));
    EXPECT_TRUE(rep.converged);
    const auto& v = in.vertices;
    for (size_t i = 0; i < v.size(); ++i) {
        const auto& a = v[i];
        const auto& b = v[(i + 1) % v.size()];
        const double L = std::hypot(b.x - a.x, b.y - a.y);
        const double nx = (b.y - a.y) / L, ny = -(b.x - a.x) / L;  // outward (counter-clockwise polygon)
        // The collocation points of a closed boundary: near the start node (local -0.9,
        // t = 0.05) and the centre; between them the condition holds approximately.
        for (auto [t, tolH] : {std::pair{0.05, 1e-6}, {0.5, 1e-6}, {0.25, 5e-3}, {0.8, 5e-3}}) {
            const double x = a.x + t * (b.x - a.x), y = a.y + t * (b.y - a.y), d = 1e-7 * L;
            const double hin = s.head(x - d * nx, y - d * ny), hout = s.head(x + d * nx, y + d * ny);
            EXPECT_NEAR(hin, hout, tolH) << i << " " << t;
            const auto qi = s.discharge(x - d * nx, y - d * ny), qo = s.discharge(x + d * nx, y + d * ny);
            EXPECT_NEAR(qi.first * nx + qi.second * ny, qo.first * nx + qo.second * ny, 1e-4);
        }
    }
    EXPECT_EQ(s.evaluate(0, 0).base, -10);
    EXPECT_LT(s.waterBalance().closureError, 1e-6);
}

// A circular recharge area in an infinite aquifer (as the aquifer inside): the exact
// radial solution, no line-doublets.
TEST(Inhomogeneities, CircularRechargeAreaMatchesRadialSolution) {
    const double k = 20, H = 30, B = 0, R = 500, N = -0.001, rref = 20000, href = 25;
    Model m = aquiferModel(B, k, H, rref, 0, href);
    const int n = 64;
    m.inhomogeneities.push_back(inho(circle(0, 0, R, n, "IN_000001", true), kAsAquifer, N));
    Solution s(m);
    s.solve(opts(3));
    EXPECT_EQ(s.unknowns(), 1);
    const double g = -N;  // recharge
    const double phiRef = phiOf(href, B, k, H) + g * R * R / 4.0 * std::log(rref * rref);
    auto exactPhi = [&](double r) {
        if (r < R) return phiRef - g / 4.0 * (r * r - R * R) - g * R * R / 4.0 * std::log(R * R);
        return phiRef - g * R * R / 4.0 * std::log(r * r);
    };
    // The equal-area polygon differs from the circle by O((2 pi / n)^2) near its edge.
    const double scale = g * R * R / 4.0;
    for (double r : {0.0, 200.0, 400.0, 700.0, 2000.0}) {
        EXPECT_NEAR(s.potential(r, 0), exactPhi(r), 2.0 * scale * (2 * kPi / n) * (2 * kPi / n)) << r;
    }
    EXPECT_NEAR(s.evaluate(100, 100).recharge, g, 1e-15);
    EXPECT_EQ(s.evaluate(1000, 100).recharge, 0.0);
    const auto b = s.waterBalance();
    EXPECT_LT(b.closureError, 1e-6);
    double in = 0;
    for (const auto& t : b.terms)
        if (t.kind == "area sinks, inhomogeneities") in = t.in;
    EXPECT_NEAR(in, g * kPi * R * R, 1e-9 * g * kPi * R * R);
    // The flow out of a square around the area is the recharge inside it.
    const double F = s.flux({{-600, -600}, {600, -600}, {600, 600}, {-600, 600}, {-600, -600}});
    EXPECT_NEAR(std::fabs(F), g * kPi * R * R, 1e-4 * g * kPi * R * R);
}

// Two adjoining squares sharing an edge, and a square nested in one of them.
TEST(Inhomogeneities, AdjoiningAndNestedMeetTheirConditions) {
    Model m = aquiferModel(0, 10, 20, -5000, 100, 40);
    m.aquifer.qx0 = 1.0;
    m.aquifer.qy0 = 0.3;
    auto square = [](double x0, double y0, double a, const std::string& p) {
        return std::vector<Vertex>{{x0, y0, p + "_0001"}, {x0 + a, y0, p + "_0002"}, {x0 + a, y0 + a, p + "_0003"},
                                   {x0, y0 + a, p + "_0004"}};
    };
    m.inhomogeneities.push_back(inho(square(0, 0, 200, "IN_000001"), 30, 0, "IN_000001_0000"));
    // The neighbour lists the shared edge in the other direction, and splits nothing.
    m.inhomogeneities.push_back(inho(square(200, 0, 200, "IN_000002"), 2, -0.0005, "IN_000002_0000"));
    m.inhomogeneities.push_back(inho(square(50, 50, 100, "IN_000003"), 100, 0, "IN_000003_0000"));
    Solution s(m);
    const auto rep = s.solve(opts(5));
    EXPECT_EQ(rep.inhomogeneities, 3);
    // The shared edge is one doublet: 4 + 4 + 4 edges less one.
    EXPECT_EQ(s.evaluate(100, 100).conductivity, 100);
    EXPECT_EQ(s.evaluate(20, 100).conductivity, 30);
    EXPECT_EQ(s.evaluate(300, 100).conductivity, 2);
    EXPECT_EQ(s.evaluate(300, 100).recharge, 0.0005);
    // Every edge has a collocation point at its centre: head continuous there; at the
    // quarter points only approximately (edges of 100 to 200 with a parabolic jump and a
    // conductivity contrast of 5 to 15). The normal flow is continuous everywhere.
    auto check = [&](double x1, double y1, double x2, double y2) {
        const double L = std::hypot(x2 - x1, y2 - y1), nx = (y2 - y1) / L, ny = -(x2 - x1) / L, d = 1e-7 * L;
        for (auto [t, tolH] : {std::pair{0.5, 1e-6}, {0.25, 0.15}, {0.75, 0.15}}) {
            const double x = x1 + t * (x2 - x1), y = y1 + t * (y2 - y1);
            EXPECT_NEAR(s.head(x - d * nx, y - d * ny), s.head(x + d * nx, y + d * ny), tolH) << x << ", " << y;
            const auto qa = s.discharge(x - d * nx, y - d * ny), qb = s.discharge(x + d * nx, y + d * ny);
            EXPECT_NEAR(qa.first * nx + qa.second * ny, qb.first * nx + qb.second * ny, 1e-4) << x << ", " << y;
        }
    };
    check(200, 0, 200, 200);  // the shared edge
    check(50, 50, 150, 50);   // the nested square
    check(0, 0, 200, 0);
    check(400, 0, 400, 200);
    check(200, 200, 0, 200);
    EXPECT_LT(s.waterBalance().closureError, 1e-6);
}

TEST(Inhomogeneities, BadPolygonsAreReportedAndSkippedOrMended) {
    Model m = aquiferModel(0, 10, 20, -5000, 0, 30);
    // Two vertices only.
    m.inhomogeneities.push_back(inho({{0, 0, "a"}, {10, 0, "b"}}, 5, 0, "IN_000001_0000"));
    // A bow tie: its edges cross.
    m.inhomogeneities.push_back(inho({{0, 0, "a"}, {10, 10, "b"}, {10, 0, "c"}, {0, 10, "d"}}, 5, 0, "IN_000002_0000"));
    // A repeated vertex and a closing vertex equal to the first: mended.
    m.inhomogeneities.push_back(
        inho({{0, 0, "a"}, {100, 0, "b"}, {100, 0, "b2"}, {100, 100, "c"}, {0, 0, "a2"}}, 5, 0, "IN_000003_0000"));
    // All vertices at one place.
    m.inhomogeneities.push_back(inho({{5, 5, "a"}, {5, 5, "b"}, {5, 5, "c"}}, 5, 0, "IN_000004_0000"));
    m.walls.push_back(wall(WallKind::Closed, {{0, 0, "a"}, {1, 0, "b"}}, 0, 1, 0, "HB_000005_0000"));
    Solution s(m);
    const auto rep = s.solve(opts(3));
    EXPECT_EQ(rep.inhomogeneities, 1);
    EXPECT_EQ(rep.walls, 0);
    std::string all;
    for (const auto& w : s.warnings()) all += w + "\n";
    EXPECT_NE(all.find("inhomogeneity IN_000001_0000: fewer than three"), std::string::npos) << all;
    EXPECT_NE(all.find("inhomogeneity IN_000002_0000: edges 1 and 3 touch or cross; the inhomogeneity is skipped"),
              std::string::npos) << all;
    EXPECT_NE(all.find("inhomogeneity IN_000003_0000: 2 repeated"), std::string::npos) << all;
    EXPECT_NE(all.find("mended polygon is used"), std::string::npos) << all;
    EXPECT_NE(all.find("inhomogeneity IN_000004_0000: fewer than three"), std::string::npos) << all;
    EXPECT_NE(all.find("wall HB_000005_0000: fewer than three"), std::string::npos) << all;
    EXPECT_EQ(s.evaluate(80, 20).conductivity, 5);
}

TEST(Inhomogeneities, CrossingPolygonsAreReportedWithBothLabels) {
    Model m = aquiferModel(0, 10, 20, -5000, 0, 30);
    auto rect = [](double x0, double y0, double x1, double y1, const std::string& p) {
        return std::vector<Vertex>{{x0, y0, p + "_0100"}, {x1, y0, p + "_0200"}, {x1, y1, p + "_0300"},
                                   {x0, y1, p + "_0400"}};
    };
    // Crossing: B overlaps A, and no vertex of either lies on the other.
    m.inhomogeneities.push_back(inho(rect(0, 0, 200, 200, "IN_000001"), 5, 0, "IN_000001_0000"));
    m.inhomogeneities.back().line = 12;
    m.inhomogeneities.push_back(inho(rect(100, 50, 300, 250, "IN_000002"), 20, 0, "IN_000002_0000"));
    m.inhomogeneities.back().line = 18;
    // Not crossing: C adjoins A along a shared edge with shared vertices; D touches C
    // with a vertex on C's edge; E is nested in C; F shares one vertex with D only.
    m.inhomogeneities.push_back(inho(rect(0, -200, 200, 0, "IN_000003"), 8, 0, "IN_000003_0000"));
    m.inhomogeneities.push_back(inho(rect(200, -100, 300, 0, "IN_000004"), 9, 0, "IN_000004_0000"));
    m.inhomogeneities.push_back(inho(rect(50, -150, 100, -100, "IN_000005"), 3, 0, "IN_000005_0000"));
    m.inhomogeneities.push_back(inho(rect(300, -200, 400, -100, "IN_000006"), 4, 0, "IN_000006_0000"));
    // A closed wall across A's corner, a second closed wall across the first, and an
    // island whose vertex lies on A's edge (touching, not crossing).
    m.walls.push_back(wall(WallKind::Closed, rect(150, 150, 250, 350, "HB_000007"), 0, 1, -1, "HB_000007_0000"));
    m.walls.back().line = 30;
    m.walls.push_back(wall(WallKind::Closed, rect(200, 300, 260, 400, "HB_000008"), 0.1, 1, -1, "HB_000008_0000"));
    m.walls.push_back(wall(WallKind::Inside, {{-50, 100, "a"}, {0, 150, "b"}, {-50, 200, "c"}}, 0, 1, -1, "HB_000009_0000"));
    Solution s(m);
    const auto rep = s.solve(opts(3));
    std::vector<std::string> crossings;
    for (const auto& w : s.warnings())
        if (w.find("cross those of") != std::string::npos) crossings.push_back(w);
    ASSERT_EQ(crossings.size(), 3u) << ::testing::PrintToString(crossings);
    // The later inhomogeneity is left out; the domains stay nested.
    EXPECT_EQ(crossings[0], "inhomogeneity IN_000002_0000 (line 18): its edges cross those of inhomogeneity "
                            "IN_000001_0000 (line 12) at (200, 50), where neither has a vertex; the inhomogeneity "
                            "IN_000002_0000 is skipped");
    EXPECT_EQ(rep.inhomogeneities, 5);
    EXPECT_EQ(s.evaluate(250, 150).conductivity, 10);  // B's own part: the aquifer
    EXPECT_EQ(s.evaluate(150, 100).conductivity, 5);   // A, also where B would have been
    // Walls are kept, each crossing named with both labels.
    EXPECT_NE(crossings[1].find("wall HB_000007_0000 (line 30): its edges cross those of inhomogeneity "
                                "IN_000001_0000 (line 12)"), std::string::npos) << crossings[1];
    EXPECT_NE(crossings[1].find("both are used"), std::string::npos) << crossings[1];
    EXPECT_NE(crossings[2].find("wall HB_000008_0000: its edges cross those of wall HB_000007_0000 (line 30)"),
              std::string::npos) << crossings[2];
    EXPECT_EQ(rep.walls, 3);
    for (const auto& w : s.warnings()) {
        for (const char* quiet : {"IN_000003", "IN_000004", "IN_000005", "IN_000006", "HB_000009"})
            EXPECT_EQ(w.find(quiet), std::string::npos) << w;
    }
}

// ---------------------------------------------------------------------------------
// Walls.

// An impermeable plate of half-length a across uniform flow: Omega = -Q0 z sqrt(1 + a^2/z^2).
TEST(Walls, ImpermeableWallAcrossUniformFlow) {
    const double k = 10, H = 10, Q0 = 1.0, a = 100;
    Model m = aquiferModel(0, k, H, -1e4, 0, 1000);
    m.aquifer.qx0 = Q0;
    m.walls.push_back(wall(WallKind::Open, straight(0, -a, 0, a, 40), 0, 1, -10));
    Solution s(m);
    s.solve(opts(3));
    auto exactPhi = [&](double x, double y) {
        const std::complex<double> z(x, y);
        return (-Q0 * z * std::sqrt(1.0 + a * a / (z * z))).real();
    };
    // Potential differences between points against the exact ones (the constant differs).
    const double p0 = s.potential(-300, 50), e0 = exactPhi(-300, 50);
    for (auto [x, y] : {std::pair{-1.0, 0.0}, {1.0, 0.0}, {-5.0, 60.0}, {5.0, -60.0}, {150.0, 40.0}, {0.0, 150.0}})
        EXPECT_NEAR(s.potential(x, y) - p0, exactPhi(x, y) - e0, 0.01 * Q0 * a) << x << ", " << y;
    // The head jump at the middle: 2 Q0 a / (k H).
    EXPECT_NEAR(s.head(-1e-3, 2.5) - s.head(1e-3, 2.5), 2 * Q0 * std::sqrt(a * a - 2.5 * 2.5) / (k * H),
                0.01 * 2 * Q0 * a / (k * H));
    // No flow through it.
    // At the collocation points (the edge centres, 5 apart, and near the nodes) no water
    // passes.
    for (double y : {-77.5, -32.5, 2.5, 47.5, -74.75}) EXPECT_NEAR(s.discharge(1e-6, y).first, 0.0, 1e-6 * Q0) << y;
    // Parallel to the flow the wall does nothing.
    Model p = aquiferModel(0, k, H, -1e4, 0, 1000);
    p.aquifer.qx0 = Q0;
    p.walls.push_back(wall(WallKind::Open, straight(-a, 0, a, 0, 10), 0, 1, -10));
    Solution sp(p);
    sp.solve(opts(3));
    EXPECT_NEAR(sp.discharge(0, 1).first, Q0, 1e-9);
    EXPECT_NEAR(sp.head(0, 1) - sp.head(0, -1), 0.0, 1e-9);
    EXPECT_LT(s.waterBalance().closureError, 1e-6);
}

// A long leaky wall across uniform flow: near its middle the flow passes through it
// with a head loss Q0 T / (K H); a wall that stops above the base passes the rest
// below it, in parallel.
TEST(Walls, LeakyWallAndWallAboveTheBase) {
    const double k = 10, H = 10, Q0 = 0.5, a = 5000, K = 0.1, T = 1.0;
    for (double bottom : {-1.0, 5.0}) {
        Model m = aquiferModel(0, k, H, -1e4, 0, 1000);
        m.aquifer.qx0 = Q0;
        m.walls.push_back(wall(WallKind::Open, straight(0, -a, 0, a, 200), K, T, bottom));
        Solution s(m);
        s.solve(opts(5));
        const double covered = H - std::max(bottom, 0.0), gap = H - covered;
        const double C = (K * covered + k * gap) / T;
        const double dh = s.head(-1e-3, 25) - s.head(1e-3, 25);  // 25: an edge's centre
        EXPECT_NEAR(dh, Q0 / C, 0.02 * Q0 / C) << bottom;
        EXPECT_NEAR(s.discharge(1e-3, 25).first, Q0, 0.02 * Q0) << bottom;
    }
}

// A closed wall whose inside is not part of the model, and one whose outside is not.
TEST(Walls, IgnoredRegionsAreDry) {
    Model m = aquiferModel(0, 10, 20, -5000, 0, 30);
    m.aquifer.qx0 = 0.2;
    m.walls.push_back(wall(WallKind::Inside, circle(0, 0, 100, 16, "HB_000001", false), 5, 1, 0));
    Solution s(m);
    s.solve(opts(3));
    EXPECT_TRUE(s.ignored(0, 0));
    EXPECT_FALSE(s.ignored(300, 0));
    EXPECT_EQ(s.head(0, 0), kDryHead);
    EXPECT_EQ(s.evaluate(10, 10).head, kDryHead);
    EXPECT_NE(s.head(300, 0), kDryHead);
    // Impermeable: the flow goes around (stagnation at the front, more flow at the sides).
    // Around a cylinder Qx = Q0 (1 - R^2 cos 2theta / r^2); the 16-gon is not quite a circle.
    auto cylinderQx = [](double x, double y) {
        const double r2 = x * x + y * y, c2 = (x * x - y * y) / r2;
        return 0.2 * (1.0 - 100.0 * 100.0 * c2 / r2);
    };
    EXPECT_NEAR(s.discharge(-101, 5).first, cylinderQx(-101, 5), 0.1 * 0.2);
    EXPECT_NEAR(s.discharge(5, 101).first, cylinderQx(5, 101), 0.1 * 0.2);

    // The reference point lies outside (in the ignored region, as the front end puts it
    // far from the model): it fixes the level there, the head-specified well the level
    // inside; the well's discharge follows from the balance inside the closed wall.
    Model o = aquiferModel(0, 10, 20, 5000, 5000, 30);
    o.walls.push_back(wall(WallKind::Outside, circle(0, 0, 500, 24, "HB_000002", false), 0, 1, 0));
    o.wells.push_back(well(100, 0, 25, true));
    o.wells.push_back(well(-100, 50, 300, false, 0.1, "WL_000002"));
    Solution so(o);
    so.solve(opts(5));
    EXPECT_TRUE(so.ignored(600, 0));
    EXPECT_EQ(so.head(600, 0), kDryHead);
    // Inside a closed impermeable wall the head-specified well delivers what the other pumps.
    EXPECT_NEAR(so.wellResults()[0].discharge, -300, 3.0);
    EXPECT_LT(so.waterBalance().closureError, 1e-6);
}

// ---------------------------------------------------------------------------------
// Results: extract records, stream function and flux, save and load.

namespace {

// A model with one of everything: a recharge inhomogeneity of other conductivity, a
// leaky open wall, a closed wall and both kinds of pond.
Model mixedModel() {
    Model m = aquiferModel(0, 10, 30, -4000, 0, 25);
    m.aquifer.qx0 = 0.3;
    Inhomogeneity in = inho(circle(0, 0, 150, 10, "IN_000001", false), 25, -0.002, "IN_000001_0000");
    in.base = -5;
    m.inhomogeneities.push_back(in);
    m.walls.push_back(wall(WallKind::Open, straight(400, -200, 400, 200, 4), 0.05, 0.5, 2));
    m.walls.push_back(wall(WallKind::Closed, circle(-500, 400, 80, 6, "HB_000002", false), 0, 1, -1, "HB_000002_0000"));
    m.ponds.push_back(Pond{-300, -300, 40, 0.01, false, "WL_000021"});
    m.ponds.push_back(Pond{250, 300, 30, 26, true, "WL_000022"});
    return m;
}

std::vector<std::string> splitLines(const std::string& text) {
    std::vector<std::string> out;
    size_t a = 0;
    while (a < text.size()) {
        size_t b = text.find('\n', a);
        if (b == std::string::npos) b = text.size();
        out.push_back(text.substr(a, b - a));
        a = b + 1;
    }
    return out;
}

size_t fields(const std::string& line) { return 1 + std::count(line.begin(), line.end(), ','); }

}  // namespace

TEST(AreaResults, ExtractRecordsHaveTheFieldCountsTheFrontEndReads) {
    Solution s(mixedModel());
    const auto rep = s.solve(opts(10));
    EXPECT_TRUE(rep.converged);
    EXPECT_EQ(rep.inhomogeneities, 1);
    EXPECT_EQ(rep.walls, 2);
    EXPECT_EQ(rep.ponds, 2);
    EXPECT_LT(rep.balance.closureError, 1e-6);
    ExtractInput block;
    block.requests = {ExtractRequest::Inhomogeneity};
    std::ostringstream out;
    SolutionSource src(s);
    int nonFinite = 0;
    writeExtract(out, block, src, &nonFinite);
    EXPECT_EQ(nonFinite, 0);
    const auto lines = splitLines(out.str());
    auto at = std::find(lines.begin(), lines.end(), "* transmissivity inhomogeneities");
    auto wl = std::find(lines.begin(), lines.end(), "* slurry walls");
    ASSERT_NE(at, lines.end());
    ASSERT_NE(wl, lines.end());
    // Inhomogeneity: a header of 7 fields, then one node record of exactly 14 per vertex.
    ASSERT_EQ(wl - at, 1 + 1 + 10);
    EXPECT_EQ(fields(at[1]), 7u) << at[1];
    EXPECT_EQ(at[1].rfind(" IN_000001_0000, ", 0), 0u) << at[1];
    for (int k = 0; k < 10; ++k) {
        EXPECT_EQ(fields(at[2 + k]), 14u) << at[2 + k];
        EXPECT_EQ(at[2 + k].rfind(" IN_000001_" + std::string(k + 1 < 10 ? "000" : "00") + std::to_string(k + 1) + ",", 0), 0u);
    }
    // Walls: a header of 5 fields, one node record of exactly 10 per segment (an open wall
    // of 5 vertices has 4 segments; a closed one of 6 vertices 6).
    std::vector<std::string> wallLines(wl + 1, lines.end());
    while (!wallLines.empty() && wallLines.back().empty()) wallLines.pop_back();
    ASSERT_EQ(wallLines.size(), 1u + 4u + 1u + 6u);
    EXPECT_EQ(fields(wallLines[0]), 5u);
    for (int k = 1; k <= 4; ++k) EXPECT_EQ(fields(wallLines[k]), 10u) << wallLines[k];
    EXPECT_EQ(fields(wallLines[5]), 5u);
    for (int k = 6; k < 12; ++k) EXPECT_EQ(fields(wallLines[k]), 10u) << wallLines[k];

    // The values: the conditions hold at the centres, the jump has the sign of the
    // conductivity contrast (inside more conductive: Phi inside is larger).
    const auto in = s.inhomogeneityResults();
    ASSERT_EQ(in.size(), 1u);
    EXPECT_EQ(in[0].conductivity, 25);
    EXPECT_EQ(in[0].base, -5);
    EXPECT_GT(in[0].averageJump, 0.0);
    for (const auto& n : in[0].nodes) {
        EXPECT_NEAR(n.errorCentre, 0.0, 1e-6 * 25 * 30 * 30);
        EXPECT_NEAR(n.flowErrorCentre, 0.0, 1e-5);
        EXPECT_GT(n.transmissivityFactor, 2.5);
        EXPECT_EQ(n.extractionNode, -0.002);
    }
    const auto walls = s.wallResults();
    ASSERT_EQ(walls.size(), 2u);
    for (const auto& w : walls)
        for (const auto& n : w.nodes) EXPECT_NEAR(n.flowErrorCentre, 0.0, 1e-6) << n.label;
}

// The flux across a polyline from the stream function (line-doublets included) agrees
// with the integral of the normal discharge along it.
TEST(AreaResults, FluxWithDoubletsMatchesIntegratedDischarge) {
    Solution s(mixedModel());
    s.solve(opts(10));
    const std::vector<std::pair<double, double>> line = {{-50, -600}, {80, 0}, {600, 500}};
    double q = 0.0;
    const int m = 4000;
    for (size_t k = 1; k < line.size(); ++k) {
        const double ax = line[k - 1].first, ay = line[k - 1].second, bx = line[k].first, by = line[k].second;
        const double L = std::hypot(bx - ax, by - ay), nx = (by - ay) / L, ny = -(bx - ax) / L;
        for (int i = 0; i < m; ++i) {
            const double t = (i + 0.5) / m;
            const auto [qx, qy] = s.discharge(ax + t * (bx - ax), ay + t * (by - ay));
            q += (qx * nx + qy * ny) * L / m;
        }
    }
    EXPECT_NEAR(s.flux(line), q, 1e-3 * std::fabs(q));
    // Around the closed impermeable wall nothing passes.
    std::vector<std::pair<double, double>> around = {{-650, 250}, {-350, 250}, {-350, 550}, {-650, 550}, {-650, 250}};
    EXPECT_NEAR(s.flux(around), 0.0, 1e-6 * std::fabs(q));
}

// A U-shaped recharge polygon: outside it, also in its notch (where the polygon lies on
// three sides of the point), the stream function includes its area sink exactly; inside
// it and inside a pond there is none.
TEST(AreaResults, StreamFunctionIncludesRechargePolygonsOutsideThem) {
    const std::vector<Vertex> u = {{0, 0, "a"},     {300, 0, "b"},   {300, 300, "c"}, {200, 300, "d"},
                                   {200, 100, "e"}, {100, 100, "f"}, {100, 300, "g"}, {0, 300, "h"}};
    const double area = 300 * 300 - 100 * 200, N = -0.002;  // recharge 0.002 inside
    const std::vector<std::pair<double, double>> outside = {
        {150, 200}, {150, 290}, {400, 150}, {150, -100}, {-200, 500}, {1500, -900}, {-80, 40}};

    // The kernel: its real part is the area sink's potential, found by the other route.
    {
        std::vector<detail::Pt> poly;
        for (const auto& v : u) poly.push_back({v.x, v.y});
        const auto sink = detail::makeAreaSink(poly);
        for (auto [x, y] : outside)
            EXPECT_NEAR(detail::areaSinkOmegaOutside(sink, x, y).real(), detail::areaSinkPotential(sink, x, y),
                        1e-9 * area) << x << ", " << y;
    }

    Model m = aquiferModel(0, 10, 20, -3000, 0, 40);
    m.aquifer.qx0 = 0.5;
    m.aquifer.qy0 = -0.2;
    m.inhomogeneities.push_back(inho(u, 25, N, "IN_000001_0000"));
    Pond pond;
    pond.x = 800;
    pond.y = 600;
    pond.radius = 50;
    pond.value = 0.01;
    pond.label = "WL_000002";
    m.ponds.push_back(pond);
    Solution s(m);
    s.solve(opts(10));

    // Cauchy-Riemann: Qx = -dPsi/dy, Qy = dPsi/dx.
    const double h = 1e-3;
    for (auto [x, y] : outside) {
        const auto [qx, qy] = s.discharge(x, y);
        const double dPsiDx = (s.streamFunction(x + h, y) - s.streamFunction(x - h, y)) / (2 * h);
        const double dPsiDy = (s.streamFunction(x, y + h) - s.streamFunction(x, y - h)) / (2 * h);
        const double scale = std::hypot(qx, qy);
        EXPECT_NEAR(-dPsiDy, qx, 1e-6 * scale) << x << ", " << y;
        EXPECT_NEAR(dPsiDx, qy, 1e-6 * scale) << x << ", " << y;
    }
    // The flow between two points, integrated along the line between them, is the
    // difference of the stream function (the line passes the notch, not the polygon).
    for (auto [a, b] : {std::pair{std::pair{150.0, 150.0}, std::pair{150.0, 550.0}},
                        std::pair{std::pair{400.0, -50.0}, std::pair{-200.0, -20.0}},
                        std::pair{std::pair{-200.0, 20.0}, std::pair{-100.0, 580.0}}}) {
        const double q = s.flux({a, b});
        EXPECT_NEAR(s.streamFunction(a.first, a.second) - s.streamFunction(b.first, b.second), q,
                    1e-7 * std::fabs(N) * area) << q;
    }
    // The branch cut runs from the first vertex in the -x direction: across it the
    // stream function jumps by the water put in.
    const double jump = s.streamFunction(-150, 1e-7) - s.streamFunction(-150, -1e-7);
    EXPECT_NEAR(jump, N * area, 1e-6 * std::fabs(N) * area);
    EXPECT_NEAR(s.streamFunction(-150, 1) - s.streamFunction(-150, 2), s.flux({{-150, 1}, {-150, 2}}),
                1e-6 * std::fabs(N) * area);
    // Where water is recharged there is none.
    EXPECT_TRUE(std::isnan(s.streamFunction(50, 150)));
    EXPECT_TRUE(std::isnan(s.streamFunction(250, 50)));
    EXPECT_TRUE(std::isnan(s.streamFunction(810, 590)));
    EXPECT_TRUE(std::isfinite(s.streamFunction(870, 600)));
}

TEST(AreaResults, SaveAndLoadKeepTheAreaElements) {
    const std::string path = ::testing::TempDir() + "area_elements_test.SOL";
    Solution s(mixedModel());
    s.solve(opts(10));
    s.save(path);
    Solution t = Solution::load(path);
    EXPECT_EQ(t.model().inhomogeneities.size(), 1u);
    EXPECT_EQ(t.model().walls.size(), 2u);
    EXPECT_EQ(t.model().ponds.size(), 2u);
    EXPECT_EQ(t.model().walls[1].kind, WallKind::Closed);
    EXPECT_EQ(t.unknowns(), s.unknowns());
    for (auto [x, y] : {std::pair{0.0, 0.0}, {420.0, 0.0}, {-300.0, -310.0}, {250.0, 300.0}, {-500.0, 400.0}}) {
        EXPECT_DOUBLE_EQ(t.head(x, y), s.head(x, y)) << x << ", " << y;
        EXPECT_EQ(t.evaluate(x, y).recharge, s.evaluate(x, y).recharge);
    }
    // Continuing from the loaded state changes nothing of substance.
    const auto rep = t.solve(opts(3));
    EXPECT_TRUE(rep.converged);
    EXPECT_NEAR(t.head(100, 50), s.head(100, 50), 1e-7);
    std::remove(path.c_str());
}
