// Wells and uniform flow against closed-form solutions. A single well with a reference
// point is represented exactly by the method, so these tolerances are round-off only.
#include "helpers.h"

#include <gtest/gtest.h>

using namespace tarno::engine;
using namespace tarno::engine::testing;

namespace {

struct ThiemCase {
    const char* name;
    double refHead;  // above base + H: confined everywhere; below: unconfined
};

class Thiem : public ::testing::TestWithParam<ThiemCase> {};

TEST_P(Thiem, DischargeWellMatchesThiem) {
    const double B = 5.0, k = 12.0, H = 30.0, R = 800.0, Q = 1500.0;
    Model m = aquiferModel(B, k, H, R, 0.0, GetParam().refHead);
    m.wells.push_back(well(0.0, 0.0, Q, false, 0.2));
    Solution s(m);
    s.solve(opts(3));
    const double phiR = phiOf(GetParam().refHead, B, k, H);
    for (double r : {0.2, 1.0, 10.0, 99.0, 400.0, 800.0, 3000.0}) {
        const double expected = headOf(phiR + Q / (2 * kPi) * std::log(r / R), B, k, H);
        // Evaluate at an angle so that no coordinate is special.
        const double h = s.head(r * std::cos(0.7), r * std::sin(0.7));
        EXPECT_NEAR(h, expected, 1e-9 * (1 + std::fabs(expected))) << "r = " << r;
    }
    // Discharge: radial, magnitude Q / (2 pi r), towards the well.
    const auto [qx, qy] = s.discharge(30.0, 40.0);
    EXPECT_NEAR(qx, -Q / (2 * kPi * 50.0) * 0.6, 1e-10);
    EXPECT_NEAR(qy, -Q / (2 * kPi * 50.0) * 0.8, 1e-10);
}

TEST_P(Thiem, HeadWellDrawsTheThiemDischarge) {
    const double B = 5.0, k = 12.0, H = 30.0, R = 800.0, rw = 0.3;
    const double hw = GetParam().refHead - 4.0;
    Model m = aquiferModel(B, k, H, R, 0.0, GetParam().refHead);
    m.wells.push_back(well(100.0, -50.0, hw, true, rw));
    m.aquifer.referenceX = 100.0 + R;
    m.aquifer.referenceY = -50.0;
    Solution s(m);
    s.solve(opts(3));
    const double expectedQ =
        2 * kPi * (phiOf(GetParam().refHead, B, k, H) - phiOf(hw, B, k, H)) / std::log(R / rw);
    const auto wr = s.wellResults();
    ASSERT_EQ(wr.size(), 1u);
    EXPECT_NEAR(wr[0].discharge, expectedQ, 1e-9 * expectedQ);
    EXPECT_NEAR(wr[0].head, hw, 1e-9);
    EXPECT_NEAR(wr[0].headError, 0.0, 1e-9);
    EXPECT_TRUE(wr[0].headSpecified);
}

INSTANTIATE_TEST_SUITE_P(Aquifer, Thiem,
                         ::testing::Values(ThiemCase{"confined", 60.0}, ThiemCase{"unconfined", 25.0}),
                         [](const auto& i) { return std::string(i.param.name); });

TEST(Thiem, ConfinedAndUnconfinedZonesMeetSmoothly) {
    // Reference head just above the top: the drawdown cone becomes unconfined near the
    // well. The head must be continuous where Phi = k H^2 / 2.
    const double B = 0.0, k = 10.0, H = 20.0;
    Model m = aquiferModel(B, k, H, 1000.0, 0.0, 22.0);
    m.wells.push_back(well(0.0, 0.0, 3000.0, false, 0.2));
    Solution s(m);
    s.solve(opts(2));
    const double phiTop = 0.5 * k * H * H;
    // Radius where Phi = phiTop, from Thiem.
    const double rTop = 1000.0 * std::exp((phiTop - phiOf(22.0, B, k, H)) * 2 * kPi / 3000.0);
    EXPECT_NEAR(s.head(rTop * 0.999999, 0), H, 1e-4);
    EXPECT_NEAR(s.head(rTop * 1.000001, 0), H, 1e-4);
    EXPECT_LT(s.head(rTop * 0.5, 0), H);
    EXPECT_GT(s.head(rTop * 2.0, 0), H);
}

TEST(Dry, PointsWithoutSaturatedThicknessReportTheDryHead) {
    Model m = aquiferModel(0.0, 5.0, 10.0, 500.0, 0.0, 3.0);
    m.wells.push_back(well(0.0, 0.0, 2000.0, false, 0.2));
    Solution s(m);
    s.solve(opts(2));
    const auto p = s.evaluate(1.0, 0.0);
    EXPECT_EQ(p.head, kDryHead);
    EXPECT_LE(p.potential, 0.0);
    EXPECT_GT(s.head(499.0, 0.0), 0.0);
}

TEST(UniformFlow, StagnationPointAndCaptureZone) {
    const double Qx0 = 2.5, Q = 800.0;
    Model m = aquiferModel(0.0, 10.0, 50.0, -2000.0, 0.0, 80.0);
    m.aquifer.qx0 = Qx0;
    m.wells.push_back(well(0.0, 0.0, Q, false, 0.2));
    Solution s(m);
    s.solve(opts(2));
    const double xs = Q / (2 * kPi * Qx0);
    const auto [qx, qy] = s.discharge(xs, 0.0);
    EXPECT_NEAR(qx, 0.0, 1e-12);
    EXPECT_NEAR(qy, 0.0, 1e-12);
    EXPECT_LT(s.discharge(0.9 * xs, 0.0).first, 0.0);  // towards the well
    EXPECT_GT(s.discharge(1.1 * xs, 0.0).first, 0.0);  // away downstream
    // The dividing streamline crosses the line through the well at y = Q / (4 Qx0)
    // and approaches y = Q / (2 Qx0) far upstream.
    EXPECT_NEAR(s.streamFunction(0.0, Q / (4 * Qx0)), s.streamFunction(xs, 0.0), 1e-9 * Q);
    const double far = -1e6;
    // Walking in +y, the flow in +x crosses from left to right: positive.
    EXPECT_NEAR(s.flux({{far, -Q / (2 * Qx0)}, {far, Q / (2 * Qx0)}}), Q, 1e-3 * Q);
    EXPECT_NEAR(s.flux({{far, Q / (2 * Qx0)}, {far, -Q / (2 * Qx0)}}), -Q, 1e-3 * Q);
    // Head at the reference point is the given one.
    EXPECT_NEAR(s.head(-2000.0, 0.0), 80.0, 1e-9);
}

TEST(UniformFlow, HeadsFallAlongTheFlowAtTheGivenGradient) {
    // Confined: Phi = -Qx0 x + C, so the head gradient is Qx0 / (k H).
    const double k = 4.0, H = 25.0, Qx0 = 1.0, Qy0 = -0.5;
    Model m = aquiferModel(10.0, k, H, 0.0, 0.0, 100.0);
    m.aquifer.qx0 = Qx0;
    m.aquifer.qy0 = Qy0;
    Solution s(m);
    s.solve(opts(1));
    EXPECT_NEAR(s.head(100.0, 40.0), 100.0 - (Qx0 * 100.0 + Qy0 * 40.0) / (k * H), 1e-10);
    const auto p = s.evaluate(100.0, 40.0);
    EXPECT_NEAR(p.qx, Qx0, 1e-12);
    EXPECT_NEAR(p.qy, Qy0, 1e-12);
    EXPECT_NEAR(p.vx, Qx0 / (0.25 * H), 1e-12);
    EXPECT_NEAR(p.z, 10.0 + H, 1e-12);  // top of the saturated zone: the aquifer's top
    EXPECT_EQ(p.vz, 0.0);               // confined: no vertical flow
    EXPECT_EQ(p.conductivity, k);
    EXPECT_EQ(p.base, 10.0);
}

TEST(UniformFlow, UnconfinedFlowMovesDownwardsAlongTheFallingWaterTable) {
    Model m = aquiferModel(0.0, 10.0, 100.0, 0.0, 0.0, 20.0);
    m.aquifer.qx0 = 3.0;
    Solution s(m);
    s.solve(opts(1));
    const auto top = s.evaluate(50.0, 0.0);
    const auto mid = s.evaluate(50.0, 0.0, top.z / 2);
    EXPECT_NEAR(top.z, top.head, 1e-12);
    EXPECT_LT(top.vz, 0.0);
    EXPECT_NEAR(mid.vz, top.vz / 2, 1e-12 * std::fabs(top.vz));  // linear in elevation
    // The water table's slope times the horizontal velocity is the vertical velocity
    // at the water table (a particle there stays on it).
    const double dh = (s.head(50.001, 0.0) - s.head(49.999, 0.0)) / 0.002;
    EXPECT_NEAR(top.vz, top.vx * dh, 1e-6 * std::fabs(top.vz));
}

TEST(ImageWell, WellNearALongRiver) {
    // A river along x = 0 at head h0 and a well at distance d: the exact solution is the
    // well and its image. The river is 2 x 4000 long in segments of 20: with the
    // condition met at the segment centres, the head along the river between centres
    // and the far-field share of the river (about (2/pi) d / L of Q) set the tolerance.
    const double k = 20.0, H = 40.0, B = 0.0, h0 = 60.0, d = 100.0, Q = 2000.0;
    Model m = aquiferModel(B, k, H, -1e6, 0.0, h0);
    m.wells.push_back(well(d, 0.0, Q, false, 0.2));
    m.lineSinks.push_back(straightString(LineSinkKind::Head, 0.0, -4000.0, 0.0, 4000.0, 400, h0, h0));
    Solution s(m);
    s.solve(opts(2));
    const double phi0 = phiOf(h0, B, k, H);
    auto exact = [&](double x, double y) {
        return phi0 + Q / (4 * kPi) * std::log(((x - d) * (x - d) + y * y) / ((x + d) * (x + d) + y * y));
    };
    const double drawdownScale = phi0 - exact(d + 0.2, 0.0);
    for (auto [x, y] : {std::pair{d + 0.2, 0.0}, {50.0, 0.0}, {d, 150.0}, {300.0, -200.0}, {d / 2, 40.0}}) {
        const double err = std::fabs(s.potential(x, y) - exact(x, y));
        EXPECT_LT(err, 0.01 * drawdownScale) << x << "," << y;
    }
    // The river delivers nearly all the water; its inflow per unit length at the point
    // closest to the well is Q d / (pi (d^2 + y^2)) at y = 0 (negative: it loses water).
    const auto seg = s.segmentResults();
    double total = 0.0, nearest = 0.0, best = 1e300;
    for (const auto& r : seg) {
        total += r.discharge;
        const double yc = 0.5 * (r.y1 + r.y2);
        if (std::fabs(yc) < best) { best = std::fabs(yc); nearest = r.strength; }
        EXPECT_NEAR(r.calculatedHead, h0, 1e-8);
        EXPECT_NEAR(r.error, 0.0, 1e-8);
    }
    EXPECT_NEAR(total, -Q, 0.03 * Q);
    EXPECT_NEAR(nearest, -Q * d / (kPi * (d * d + best * best)), 0.01 * Q / (kPi * d));
}

TEST(Reference, MissingReferencePointFixesTheTopOfTheAquiferFarAwayAndWarns) {
    Model m = aquiferModel(0.0, 10.0, 20.0, 0, 0, 0);
    m.aquifer.hasReference = false;
    m.wells.push_back(well(0.0, 0.0, 100.0, false));
    m.wells.push_back(well(100.0, 0.0, -100.0, false, 0.1, "WL_000002"));
    Solution s(m);
    std::vector<std::string> seen;
    s.setWarningSink([&](const std::string& w) { seen.push_back(w); });
    ASSERT_EQ(seen.size(), 1u);  // replayed to a sink set after construction
    EXPECT_NE(seen[0].find("reference"), std::string::npos);
    s.solve(opts(1));
    // The extent of the elements is 100 long, so the reference lies at the centre plus
    // ten half-diagonals in x and y: (550, 500).
    EXPECT_NEAR(s.head(550.0, 500.0), 20.0, 1e-9);
    EXPECT_LT(s.head(1.0, 0.0), s.head(99.0, 0.0));  // pumping at 0, injecting at 100
}

TEST(Errors, BadAquiferAndCoincidentHeadWellsAreFatal) {
    Model m = aquiferModel(0.0, 0.0, 20.0, 100, 0, 30);
    EXPECT_THROW(Solution{m}, FatalError);
    m.aquifer.conductivity = 1.0;
    m.wells.push_back(well(0.0, 0.0, 10.0, true));
    m.wells.push_back(well(0.0, 0.0, 12.0, true, 0.1, "WL_000002"));
    Solution s(m);
    try {
        s.solve(opts(1));
        FAIL() << "a singular system must be fatal";
    } catch (const FatalError& e) {
        EXPECT_NE(std::string(e.what()).find("singular"), std::string::npos);
        EXPECT_NE(std::string(e.what()).find("WL_00000"), std::string::npos);
    }
}

}  // namespace
