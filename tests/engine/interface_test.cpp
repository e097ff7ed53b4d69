// The salt water interface against the exact single-potential solutions of coastal
// aquifers: the toe under a uniform inflow (unconfined and confined below the sea),
// a head-specified well across the toe, the interface against Ghyben-Herzberg, the
// continuity of the head at the toe, the vertical velocity at the interface, paths
// that stay above it, and its grid and extract records.
#include "helpers.h"

#include "engine/extract.h"
#include "engine/grid.h"
#include "engine/saltwater.h"
#include "engine/trace.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

using namespace tarno::engine;
using namespace tarno::engine::testing;

namespace {

// An unconfined coastal aquifer: base 30 below the sea (at 0), top far above the heads.
constexpr double kB = -30.0, kK = 20.0, kH = 60.0, kSea = 0.0;
constexpr double kFresh = 1.0, kSalt = 1.025;
constexpr double kNu = (kSalt - kFresh) / kFresh;
constexpr double kD = kSea - kB;

// The single potential of an unconfined coastal aquifer, written from its zones
// (interface zone, fresh water only) rather than from the engine's pieces.
double phiUnconfined(double h) {
    const double toe = kSea + kNu * kD;
    if (h <= toe) return 0.5 * kK * (1 + kNu) / kNu * (h - kSea) * (h - kSea);
    return 0.5 * kK * ((h - kB) * (h - kB) - (1 + kNu) * kD * kD);
}
double headUnconfined(double phi) {
    const double phiToe = 0.5 * kK * kNu * (1 + kNu) * kD * kD;
    if (phi <= phiToe) return kSea + std::sqrt(2 * kNu * phi / (kK * (1 + kNu)));
    return kB + std::sqrt(2 * phi / kK + (1 + kNu) * kD * kD);
}

Model coastalModel(double q0, double refX) {
    // Uniform inflow q0 towards the sea at x < 0; the reference head is the exact head
    // at refX of the one-dimensional solution Phi = q0 x (coast at x = 0).
    Model m = aquiferModel(kB, kK, kH, refX, 0.0, headUnconfined(q0 * refX));
    m.aquifer.qx0 = -q0;
    m.aquifer.hasInterface = true;
    m.aquifer.freshGravity = kFresh;
    m.aquifer.saltGravity = kSalt;
    m.aquifer.seaLevel = kSea;
    return m;
}

// The landward end of the interface along y = y0 between a and b (a has an interface,
// b has none), by bisection on the solution's own answer.
double toeBetween(const Solution& s, double a, double b, double y0 = 0.0) {
    for (int i = 0; i < 200 && std::fabs(b - a) > 1e-12 * (1 + std::fabs(a)); ++i) {
        const double m = 0.5 * (a + b);
        (interfaceElevationAt(s, m, y0) ? a : b) = m;
    }
    return 0.5 * (a + b);
}

TEST(SaltWaterInterface, ToeOfUniformInflowIsTheExactOne) {
    const double q0 = 0.5;
    Solution s(coastalModel(q0, 1000.0));
    s.solve(opts(3));
    // Phi = q0 x: the toe lies where Phi = k nu (1 + nu) d^2 / 2.
    const double exactToe = kK * kNu * (1 + kNu) * kD * kD / (2 * q0);
    ASSERT_TRUE(interfaceElevationAt(s, 0.5 * exactToe, 0.0));
    ASSERT_FALSE(interfaceElevationAt(s, 2 * exactToe, 0.0));
    EXPECT_NEAR(toeBetween(s, 0.5 * exactToe, 2 * exactToe), exactToe, 1e-9 * exactToe);
    // The same toe, reported for the aquifer.
    const auto toe = interfaceToe(s.model().aquifer, kB, kK, kH);
    ASSERT_TRUE(toe);
    EXPECT_NEAR(toe->head, kSea + kNu * kD, 1e-12);
    EXPECT_NEAR(toe->potential, q0 * exactToe, 1e-9 * q0 * exactToe);
    // The coast is where the potential is zero: sea level there, no fresh water beyond.
    EXPECT_NEAR(s.head(1e-3, 0.0), kSea, 1e-2);
    EXPECT_EQ(s.head(-1.0, 0.0), kDryHead);
    EXPECT_FALSE(interfaceElevationAt(s, -1.0, 0.0));
    // The head everywhere is the exact one, in both zones; along y too (uniform flow).
    for (double x : {1.0, 50.0, 200.0, exactToe - 1.0, exactToe + 1.0, 700.0, 2500.0})
        EXPECT_NEAR(s.head(x, 137.0), headUnconfined(q0 * x), 1e-9) << "x = " << x;
}

TEST(SaltWaterInterface, InterfaceFollowsGhybenHerzberg) {
    const double q0 = 0.5;
    Solution s(coastalModel(q0, 1000.0));
    s.solve(opts(3));
    for (double x : {0.5, 10.0, 100.0, 300.0, 450.0}) {
        const double h = s.head(x, -40.0);
        const auto z = interfaceElevationAt(s, x, -40.0);
        ASSERT_TRUE(z) << "x = " << x;
        // Depth below sea level = rho_f / (rho_s - rho_f) times the head above it.
        EXPECT_NEAR(kSea - *z, kFresh / (kSalt - kFresh) * (h - kSea), 1e-9) << "x = " << x;
        EXPECT_NEAR(*z, kSea - (headUnconfined(q0 * x) - kSea) / kNu, 1e-7) << "x = " << x;
        // The point record: the top of the fresh water is the head; its thickness
        // (head minus interface) sets the velocity.
        const PointValues p = s.evaluate(x, -40.0);
        EXPECT_NEAR(p.z, h, 1e-12);
        EXPECT_NEAR(p.vx, p.qx / (p.porosity * (h - *z)), 1e-12 * std::fabs(p.vx));
        EXPECT_DOUBLE_EQ(p.base, kB);
    }
}

TEST(SaltWaterInterface, HeadIsContinuousAcrossTheToe) {
    const double q0 = 0.5;
    Solution s(coastalModel(q0, 1000.0));
    s.solve(opts(3));
    const double toe = kK * kNu * (1 + kNu) * kD * kD / (2 * q0);
    const double toeHead = kSea + kNu * kD;
    // The head gradient at the toe is q0 / (k d) from both sides (b = d there), so the
    // head a distance e either side differs from the toe head by about e q0 / (k d).
    for (double e : {1e-2, 1e-4, 1e-6}) {
        const double below = s.head(toe - e, 0.0), above = s.head(toe + e, 0.0);
        EXPECT_NEAR(below, toeHead - e * q0 / (kK * kD), 1e-3 * e + 1e-12) << "e = " << e;
        EXPECT_NEAR(above, toeHead + e * q0 / (kK * kD), 1e-3 * e + 1e-12) << "e = " << e;
    }
    // The interface closes onto the base at the toe.
    const auto z = interfaceElevationAt(s, toe - 1e-6, 0.0);
    ASSERT_TRUE(z);
    EXPECT_NEAR(*z, kB, 1e-5);
}

TEST(SaltWaterInterface, ConfinedAquiferBelowTheSea) {
    // Base 50 and top 30 below the sea: fresh water first reaches the aquifer's top at
    // the head z_s + nu (z_s - top) (Phi = 0, the submarine outcrop of the fresh water),
    // the interface then falls to the base at z_s + nu (z_s - B); between the two,
    // b = (h - h1) / nu and Phi = k (h - h1)^2 / (2 nu), so the toe lies at
    // Phi = k nu H^2 / 2 (Strack 1976).
    const double B = -50.0, H = 20.0, k = 15.0, q0 = 0.3;
    const double h1 = kSea + kNu * (kSea - B - H);
    auto phiExact = [&](double h) {
        const double hToe = kSea + kNu * (kSea - B);
        if (h <= hToe) return k * (h - h1) * (h - h1) / (2 * kNu);
        return 0.5 * k * kNu * H * H + k * H * (h - hToe);
    };
    Model m = aquiferModel(B, k, H, 2000.0, 0.0, 0.0);
    // The reference head whose potential is q0 * 2000, by bisection on the exact relation.
    double lo = h1, hi = h1 + 100.0;
    for (int i = 0; i < 200; ++i) ((phiExact(0.5 * (lo + hi)) < q0 * 2000.0) ? lo : hi) = 0.5 * (lo + hi);
    m.aquifer.referenceHead = 0.5 * (lo + hi);
    m.aquifer.qx0 = -q0;
    m.aquifer.hasInterface = true;
    m.aquifer.freshGravity = kFresh;
    m.aquifer.saltGravity = kSalt;
    m.aquifer.seaLevel = kSea;
    Solution s(m);
    s.solve(opts(3));
    const double exactToe = k * kNu * H * H / (2 * q0);
    EXPECT_NEAR(toeBetween(s, 0.5 * exactToe, 3 * exactToe), exactToe, 1e-9 * exactToe);
    // Confined: the fresh water fills the aquifer up to its top, above the interface.
    const double x = 0.5 * exactToe;
    const PointValues p = s.evaluate(x, 0.0);
    const auto z = interfaceElevationAt(s, x, 0.0);
    ASSERT_TRUE(z);
    EXPECT_NEAR(p.z, B + H, 1e-12);
    EXPECT_NEAR(phiExact(p.head), q0 * x, 1e-9 * q0 * x);
    EXPECT_NEAR(*z, kSea - (p.head - kSea) / kNu, 1e-9);
    EXPECT_GT(*z, B);
    EXPECT_LT(*z, B + H);
    // Offshore of the outcrop (Phi < 0) the aquifer holds salt water only.
    EXPECT_EQ(s.head(-5.0, 0.0), kDryHead);
}

TEST(SaltWaterInterface, HeadSpecifiedWellAcrossTheToe) {
    // A well held at a head inside the interface zone, a reference head beyond the toe:
    // Phi = Phi_R + Q / (2 pi) ln(r / R), with Phi from the zones' own formulas.
    const double R = 2000.0, rw = 0.2, hR = 2.0, hw = 0.3;
    Model m = coastalModel(0.0, R);
    m.aquifer.qx0 = 0.0;
    m.aquifer.referenceHead = hR;
    m.wells.push_back(well(0.0, 0.0, hw, true, rw));
    Solution s(m);
    s.solve(opts(4));
    const double Q = 2 * kPi * (phiUnconfined(hR) - phiUnconfined(hw)) / std::log(R / rw);
    const auto wr = s.wellResults();
    ASSERT_EQ(wr.size(), 1u);
    EXPECT_NEAR(wr[0].discharge, Q, 1e-9 * Q);
    EXPECT_NEAR(wr[0].head, hw, 1e-9);
    for (double r : {0.5, 3.0, 40.0, 400.0, 1500.0})
        EXPECT_NEAR(s.head(r * 0.6, r * 0.8), headUnconfined(phiUnconfined(hR) + Q / (2 * kPi) * std::log(r / R)),
                    1e-9)
            << "r = " << r;
    // The salt water cone under the well reaches the base on the circle where Phi is the
    // toe potential.
    const double phiToe = 0.5 * kK * kNu * (1 + kNu) * kD * kD;
    const double rToe = R * std::exp(2 * kPi * (phiToe - phiUnconfined(hR)) / Q);
    ASSERT_GT(rToe, rw);
    EXPECT_NEAR(toeBetween(s, rw * 1.01, 10 * rToe), rToe, 1e-9 * rToe);
}

TEST(SaltWaterInterface, VerticalVelocityFollowsTheInterfaceAndTheWaterTable) {
    // Two-dimensional flow: uniform inflow and a well. A particle on the interface or
    // on the water table stays on it: vz = v . grad z there.
    Model m = coastalModel(0.5, 1000.0);
    m.wells.push_back(well(250.0, 120.0, 40.0, false, 0.2));
    Solution s(m);
    s.solve(opts(3));
    const double x = 180.0, y = 60.0, e = 1e-3;
    const auto zi = interfaceElevationAt(s, x, y);
    ASSERT_TRUE(zi);
    auto ziAt = [&](double px, double py) { return *interfaceElevationAt(s, px, py); };
    const double dzx = (ziAt(x + e, y) - ziAt(x - e, y)) / (2 * e);
    const double dzy = (ziAt(x, y + e) - ziAt(x, y - e)) / (2 * e);
    const double dhx = (s.head(x + e, y) - s.head(x - e, y)) / (2 * e);
    const double dhy = (s.head(x, y + e) - s.head(x, y - e)) / (2 * e);
    const PointValues atInterface = s.evaluate(x, y, *zi);
    const PointValues atTop = s.evaluate(x, y);
    const double wBottom = atInterface.vx * dzx + atInterface.vy * dzy;
    const double wTop = atTop.vx * dhx + atTop.vy * dhy;
    EXPECT_NEAR(atInterface.vz, wBottom, 1e-5 * std::fabs(wBottom));
    EXPECT_NEAR(atTop.vz, wTop, 1e-5 * std::fabs(wTop));
    // Water rises along the interface towards the coast.
    EXPECT_GT(atInterface.vz, 0.0);
    // Linear in between.
    const PointValues mid = s.evaluate(x, y, 0.5 * (*zi + atTop.z));
    EXPECT_NEAR(mid.vz, 0.5 * (wBottom + wTop), 1e-5 * (std::fabs(wBottom) + std::fabs(wTop)));
}

TEST(SaltWaterInterface, PathlinesStayAboveTheInterface) {
    Model m = coastalModel(0.5, 1000.0);
    Solution s(m);
    s.solve(opts(3));
    TraceSettings st;
    st.step = 4.0;
    st.x1 = -1000;
    st.y1 = -1000;
    st.x2 = 1000;
    st.y2 = 1000;
    // From the base and from mid-depth beyond the toe, seawards.
    const std::vector<Particle> particles = {Particle{900.0, 0.0, kB, 1, "base"},
                                             Particle{900.0, 0.0, kB + 0.5 * (s.head(900.0, 0.0) - kB), 1, "mid"},
                                             Particle{100.0, 0.0, -200.0, 1, "below"}};
    const auto paths = tracePaths(s, particles, st);
    ASSERT_EQ(paths.size(), 3u);
    for (const Path& p : paths) {
        ASSERT_GT(p.points.size(), 10u) << p.label;
        int underInterface = 0;
        for (const PathPoint& q : p.points) {
            const auto zi = interfaceElevationAt(s, q.x, q.y);
            const double bottom = zi ? *zi : kB;
            EXPECT_GE(q.elevation, bottom - 1e-6 * (1 + std::fabs(bottom))) << p.label << " at x = " << q.x;
            EXPECT_LE(q.elevation, s.head(q.x, q.y) + 1e-6) << p.label << " at x = " << q.x;
            if (zi) ++underInterface;
        }
        EXPECT_GT(underInterface, 0) << p.label;  // each reached the interface zone
    }
    // A particle on the bottom of the fresh water stays on it: along the base, then along
    // the interface up towards the coast.
    const Path& base = paths[0];
    for (const PathPoint& q : base.points) {
        const auto zi = interfaceElevationAt(s, q.x, q.y);
        EXPECT_NEAR(q.elevation, zi ? *zi : kB, 1e-6 * (1 + std::fabs(q.elevation))) << "x = " << q.x;
    }
    // One started below the interface begins on it.
    const auto zi = interfaceElevationAt(s, 100.0, 0.0);
    EXPECT_NEAR(paths[2].points.front().elevation, *zi, 1e-9);
}

TEST(SaltWaterInterface, GridHoldsTheInterfaceUpToTheToe) {
    const double q0 = 0.5;
    Solution s(coastalModel(q0, 1000.0));
    s.solve(opts(3));
    const double toe = kK * kNu * (1 + kNu) * kD * kD / (2 * q0);
    auto geometry = gridGeometry(-100.0, -50.0, 900.0, 50.0, 101);
    ASSERT_TRUE(geometry);
    const Grid g = computeGrid(s, *geometry, GridQuantity::Interface);
    int values = 0;
    for (int j = 0; j < geometry->ny; ++j)
        for (int i = 0; i < geometry->nx; ++i) {
            const double x = g.x(i), v = g.z[static_cast<size_t>(j) * geometry->nx + i];
            if (x <= 0.0 || x >= toe) {
                EXPECT_EQ(v, kGridBlank) << "x = " << x;  // the sea, and fresh water to the base
            } else {
                ++values;
                EXPECT_NEAR(v, kSea - (headUnconfined(q0 * x) - kSea) / kNu, 1e-7) << "x = " << x;
                EXPECT_GT(v, kB);
            }
        }
    EXPECT_GT(values, 0);
}

// An extract block with points and interface inspections interleaved by their lines.
ExtractInput interfaceBlock() {
    ExtractInput x;
    x.points.push_back({2, ExtractPoint::Kind::Point, 100.0, 0.0, std::nullopt, "TP_000001"});
    x.points.push_back({5, ExtractPoint::Kind::Point, 100.0, 0.0, -20.0, ""});
    x.interfacePoints.push_back({3, 100.0, 0.0});
    x.interfacePoints.push_back({6, 800.0, 0.0});   // beyond the toe
    x.interfacePoints.push_back({7, -20.0, 0.0});   // the sea
    return x;
}

std::vector<std::string> linesOf(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream in(text);
    for (std::string l; std::getline(in, l);) out.push_back(l);
    return out;
}

TEST(SaltWaterInterface, ExtractWritesInterfaceRecordsInTheOrderOfTheirLines) {
    const double q0 = 0.5;
    Solution s(coastalModel(q0, 1000.0));
    s.solve(opts(3));
    std::ostringstream out;
    writeExtract(out, interfaceBlock(), SolutionSource(s));
    const auto lines = linesOf(out.str());
    ASSERT_GE(lines.size(), 6u);
    EXPECT_EQ(lines[0], kHeadDataPoints);
    EXPECT_TRUE(lines[1].ends_with("TP_000001"));
    EXPECT_EQ(lines[2].substr(0, 14), "@    interface");
    EXPECT_EQ(lines[3].substr(0, 1), "@");
    EXPECT_EQ(lines[3].find("interface"), std::string::npos);  // the point with its own Z
    EXPECT_EQ(lines[4].substr(0, 14), "@    interface");
    EXPECT_EQ(lines[5].substr(0, 14), "@    interface");
    // The elevation in columns 44-56, as a gage's flow; X and Y before it.
    EXPECT_EQ(lines[2].size(), 57u);  // the empty label ends the record
    EXPECT_NEAR(std::strtod(lines[2].substr(15, 13).c_str(), nullptr), 100.0, 1e-9);
    const double expected = kSea - (headUnconfined(q0 * 100.0) - kSea) / kNu;
    EXPECT_NEAR(std::strtod(lines[2].substr(43, 13).c_str(), nullptr), expected, 1e-5 * std::fabs(expected));
    EXPECT_EQ(lines[2].substr(43, 13), formatInterfaceRecord(100.0, 0.0, expected).substr(43, 13));
    // No interface beyond the toe nor in the sea: -9999.
    EXPECT_DOUBLE_EQ(std::strtod(lines[4].substr(43, 13).c_str(), nullptr), -9999.0);
    EXPECT_DOUBLE_EQ(std::strtod(lines[5].substr(43, 13).c_str(), nullptr), -9999.0);
}

TEST(SaltWaterInterface, WithoutInterfaceDataNothingChanges) {
    // A plain aquifer: the interface records say -9999 and the heads are the plain ones.
    Model m = coastalModel(0.5, 1000.0);
    m.aquifer.hasInterface = false;
    m.aquifer.referenceHead = 2.0;
    Solution s(m);
    s.solve(opts(3));
    EXPECT_NEAR(s.head(300.0, 0.0), headOf(phiOf(2.0, kB, kK, kH) - 0.5 * 700.0, kB, kK, kH), 1e-9);
    EXPECT_FALSE(interfaceElevationAt(s, 300.0, 0.0));
    std::ostringstream out;
    writeExtract(out, interfaceBlock(), SolutionSource(s));
    const auto lines = linesOf(out.str());
    EXPECT_DOUBLE_EQ(std::strtod(lines[2].substr(43, 13).c_str(), nullptr), -9999.0);
    // Interface data whose salt water is not heavier: warned, and solved as plain.
    m.aquifer.hasInterface = true;
    m.aquifer.saltGravity = m.aquifer.freshGravity;
    Solution t(m);
    t.solve(opts(3));
    EXPECT_NEAR(t.head(300.0, 0.0), s.head(300.0, 0.0), 1e-12);
    ASSERT_FALSE(t.warnings().empty());
    EXPECT_NE(t.warnings().front().find("without an interface"), std::string::npos);
    EXPECT_FALSE(interfaceToe(m.aquifer, kB, kK, kH));
}

TEST(SaltWaterInterface, BaseAboveTheSeaHasNoInterface) {
    // An aquifer whose base lies above sea level: the relation is the plain one.
    Model m = coastalModel(0.5, 1000.0);
    m.aquifer.seaLevel = kB - 5.0;
    m.aquifer.referenceHead = 2.0;
    Solution s(m);
    s.solve(opts(3));
    EXPECT_NEAR(s.head(300.0, 0.0), headOf(phiOf(2.0, kB, kK, kH) - 0.5 * 700.0, kB, kK, kH), 1e-9);
    EXPECT_FALSE(interfaceElevationAt(s, 300.0, 0.0));
    EXPECT_FALSE(interfaceToe(m.aquifer, kB, kK, kH));
}

}  // namespace

namespace {

TEST(SaltWaterInterface, WellNearACoastHeldAtSeaLevel) {
    // A well pumping Q at distance dw from a straight coast (Strack 1976): with the
    // coast at sea level (Phi = 0) and a uniform inflow q0 the exact potential has an
    // image well, Phi = q0 x + Q / (4 pi) ln(((x - dw)^2 + y^2) / ((x + dw)^2 + y^2)).
    // The coast here is a 200 km head-specified line-sink at sea level (segments of
    // 50 m near the well), so the exact field holds near the well up to the line's
    // discretisation.
    const double q0 = 0.5, Q = 50.0, dw = 300.0;
    auto phiExact = [&](double x, double y) {
        return q0 * x + Q / (4 * kPi) * std::log(((x - dw) * (x - dw) + y * y) / ((x + dw) * (x + dw) + y * y));
    };
    Model m = coastalModel(q0, 3000.0);
    m.aquifer.referenceHead = headUnconfined(phiExact(3000.0, 0.0));
    m.wells.push_back(well(dw, 0.0, Q, false, 0.1));
    std::vector<double> ys = {-100000, -60000, -30000, -15000, -8000, -4000, -2000};
    for (int i = 1; i <= 80; ++i) ys.push_back(-2000.0 + 50.0 * i);
    for (double y : {4000.0, 8000.0, 15000.0, 30000.0, 60000.0, 100000.0}) ys.push_back(y);
    LineSinkString coast;
    coast.kind = LineSinkKind::Head;
    coast.label = "LS_000001";
    for (size_t i = 0; i + 1 < ys.size(); ++i) {
        Segment g;
        g.x1 = 0.0; g.y1 = ys[i]; g.x2 = 0.0; g.y2 = ys[i + 1];
        g.value = kSea;
        g.label = "LS_000001_" + std::to_string(i);
        coast.segments.push_back(g);
    }
    m.lineSinks.push_back(coast);
    Solution s(m);
    s.solve(opts(3));
    // Every segment meets its condition and reports the sea level, not a dry head.
    for (const SegmentResult& r : s.segmentResults()) {
        EXPECT_NEAR(r.calculatedHead, kSea, 1e-6) << r.label;
        EXPECT_NEAR(r.error, 0.0, 1e-6) << r.label;
    }
    // Heads near the well in both zones against the exact ones.
    for (auto [x, y] : {std::pair{50.0, 0.0}, {200.0, 100.0}, {300.5, 0.0}, {450.0, -150.0}, {800.0, 300.0}})
        EXPECT_NEAR(s.head(x, y), headUnconfined(phiExact(x, y)), 2e-3) << x << " " << y;
    // The toe on the landward side of the well: Phi(x, 0) = k nu (1 + nu) d^2 / 2.
    const double phiToe = 0.5 * kK * kNu * (1 + kNu) * kD * kD;
    double a = dw + 1.0, b = 2000.0;
    for (int i = 0; i < 200; ++i) ((phiExact(0.5 * (a + b), 0.0) < phiToe) ? a : b) = 0.5 * (a + b);
    const double exactToe = 0.5 * (a + b);
    const double toeWithoutWell = phiToe / q0;
    ASSERT_GT(exactToe - toeWithoutWell, 10.0);  // the well pulls the toe inland
    EXPECT_NEAR(toeBetween(s, dw + 1.0, 2000.0), exactToe, 1e-3 * exactToe);
    // Under the well the interface stands above the base: the salt water cone.
    const auto cone = interfaceElevationAt(s, dw + 1.0, 0.0);
    ASSERT_TRUE(cone);
    EXPECT_NEAR(*cone, kSea - (headUnconfined(phiExact(dw + 1.0, 0.0)) - kSea) / kNu, 0.1);
}

TEST(SaltWaterInterface, InhomogeneityAcrossTheToeKeepsHeadAndFlowContinuous) {
    // A polygon of higher conductivity and a deeper base around the toe: the boundary
    // conditions go through the interface relation of each side (its own base and
    // conductivity under the same sea), and hold at the collocation points.
    Model m = coastalModel(0.5, 1000.0);
    Inhomogeneity in;
    in.conductivity = 40.0;
    in.base = -45.0;
    in.averageHead = 0.7;
    in.label = "IN_000001_0000";
    const int n = 12;
    for (int i = 0; i < n; ++i) {
        const double t = 2.0 * kPi * i / n;
        in.vertices.push_back({600.0 + 200.0 * std::cos(t), 200.0 * std::sin(t), "IN_000001_" + std::to_string(i + 1)});
    }
    m.inhomogeneities.push_back(in);
    Solution s(m);
    const auto rep = s.solve(opts(30));
    EXPECT_TRUE(rep.converged);
    for (int i = 0; i < n; ++i) {
        const auto& a = in.vertices[i];
        const auto& b = in.vertices[(i + 1) % n];
        const double L = std::hypot(b.x - a.x, b.y - a.y);
        const double nx = (b.y - a.y) / L, ny = -(b.x - a.x) / L;  // outward
        for (double t : {0.05, 0.5}) {
            const double x = a.x + t * (b.x - a.x), y = a.y + t * (b.y - a.y), d = 1e-7 * L;
            const double hin = s.head(x - d * nx, y - d * ny), hout = s.head(x + d * nx, y + d * ny);
            EXPECT_NEAR(hin, hout, 1e-6) << i << " " << t;
            const auto qi = s.discharge(x - d * nx, y - d * ny), qo = s.discharge(x + d * nx, y + d * ny);
            EXPECT_NEAR(qi.first * nx + qi.second * ny, qo.first * nx + qo.second * ny, 1e-4) << i << " " << t;
        }
    }
    // Inside, the deeper base moves the toe inland: where the head lies between the two
    // toe heads, the interface stands below the outside base but above the inside one.
    const double toeOut = kSea + kNu * kD, toeIn = kSea + kNu * (kSea + 45.0);
    int between = 0;
    for (double x = 420.0; x < 780.0; x += 10.0) {
        const double h = s.head(x, 0.0);
        if (!(h > toeOut && h < toeIn)) continue;
        ++between;
        const auto z = interfaceElevationAt(s, x, 0.0);
        ASSERT_TRUE(z) << "x = " << x;
        EXPECT_LT(*z, kB);
        EXPECT_GT(*z, -45.0);
    }
    EXPECT_GT(between, 3);
    EXPECT_LT(s.waterBalance().closureError, 1e-6);
}

}  // namespace
