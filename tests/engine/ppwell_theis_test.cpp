// Partially penetrating wells and transient (Theis) wells against exact answers: the
// Theis drawdown, superposition of a schedule, the partial penetration loss written out
// independently here, head conditions, the water balance, .SOL and the extract file.
#include "engine/solution.h"
#include "engine/wells.h"
#include "helpers.h"
#include "support/program_runner.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace fs = std::filesystem;
using namespace tarno::engine;
using namespace tarno::engine::testing;

namespace {

// The exponential integral: from the standard library, E1(u) = -Ei(-u), and for large u
// (where the library loses accuracy) from the asymptotic series
// e^-u / u (1 - 1/u + 2!/u^2 - ...), whose error at u >= 100 is below 1e-17 after 12 terms.
double E1(double u) {
    if (u < 100) return -std::expint(-u);
    double term = 1.0, sum = 1.0;
    for (int k = 1; k <= 12; ++k) {
        term *= -k / u;
        sum += term;
    }
    return std::exp(-u) / u * sum;
}

// The partial penetration factor written out from its series, independently of the
// engine: screen from zb to zt above the base, saturated thickness b, radius rw.
double lossFactor(double b, double zb, double zt, double rw) {
    const double L = zt - zb;
    double sum = 0.0;
    for (int n = 1; n * kPi * rw / b < 60.0; ++n) {
        const double s = std::sin(n * kPi * zt / b) - std::sin(n * kPi * zb / b);
        sum += s * s / (double(n) * n) * std::cyl_bessel_k(0.0, n * kPi * rw / b);
    }
    return 2.0 * b * b / (kPi * kPi * L * L) * sum;
}

TheisWell theisLine(double x, double y, double q, double t0, double h0, double S, double rw = 0.1,
                    const std::string& label = "WL_000020") {
    TheisWell t;
    t.x = x; t.y = y; t.discharge = q; t.startTime = t0; t.startHead = h0; t.storage = S; t.radius = rw; t.label = label;
    return t;
}

PartialWell ppwell(double x, double y, double top, double bottom, double value, bool head, double rw = 0.2,
                   const std::string& label = "WL_000030") {
    PartialWell p;
    p.x = x; p.y = y; p.top = top; p.bottom = bottom; p.value = value; p.headSpecified = head; p.radius = rw; p.label = label;
    return p;
}

}  // namespace

TEST(WellFunctions, ExponentialIntegralMatchesTheLibraryOnBothBranches) {
    for (double u : {1e-10, 1e-4, 0.01, 0.3, 0.999, 1.0, 1.001, 2.5, 10.0, 50.0, 300.0, 700.0})
        EXPECT_NEAR(detail::expintE1(u), E1(u), 2e-14 * E1(u)) << "u = " << u;
    EXPECT_EQ(detail::expintE1(800.0), 0.0);
    EXPECT_TRUE(std::isinf(detail::expintE1(0.0)));
}

TEST(WellFunctions, PenetrationFactorVanishesAtFullPenetrationAndIsSymmetric) {
    EXPECT_EQ(detail::partialPenetrationFactor(20.0, 0.0, 20.0, 0.2), 0.0);
    const double top = detail::partialPenetrationFactor(20.0, 14.0, 20.0, 0.2);
    const double bottom = detail::partialPenetrationFactor(20.0, 0.0, 6.0, 0.2);
    EXPECT_NEAR(top, bottom, 1e-12 * top);  // a screen at the top is the mirror of one at the bottom
    EXPECT_NEAR(top, lossFactor(20.0, 14.0, 20.0, 0.2), 1e-10 * top);
    // A very thin well is summed to the bound of terms and stays finite.
    EXPECT_TRUE(std::isfinite(detail::partialPenetrationFactor(20.0, 0.0, 6.0, 1e-300)));
    // Shorter screens lose more; a longer one less.
    EXPECT_GT(detail::partialPenetrationFactor(20.0, 17.0, 20.0, 0.2), top);
    EXPECT_LT(detail::partialPenetrationFactor(20.0, 6.0, 20.0, 0.2), top);
}

// ---- Theis wells --------------------------------------------------------------

class TheisAlone : public ::testing::TestWithParam<bool> {};  // confined / unconfined

TEST_P(TheisAlone, DrawdownIsTheTheisFunctionAtEveryRadiusAndTime) {
    const bool confined = GetParam();
    const double B = 0, k = 10, H = 20, h0 = confined ? 30.0 : 12.0, S = confined ? 1e-4 : 0.15, Q = 500;
    Model m = aquiferModel(B, k, H, 1e6, 0.0, h0);
    m.theisWells.push_back(theisLine(0, 0, Q, 0.5, h0, S));
    Solution s(m);
    s.solve(opts(3));
    const double T = k * std::min(h0 - B, H);
    const double phi0 = phiOf(h0, B, k, H);
    EXPECT_NEAR(s.head(10, 0), h0, 1e-12);  // the time of evaluation is 0, before the start
    for (double t : {0.6, 2.0, 30.0}) {
        s.setTime(t);
        for (double r : {0.5, 5.0, 50.0, 400.0}) {
            const double u = r * r * S / (4 * T * (t - 0.5));
            const double phi = phi0 - Q / (4 * kPi) * E1(u);
            EXPECT_NEAR(s.potential(r * 0.6, r * 0.8), phi, 1e-9 * phi0) << "t " << t << " r " << r;
            EXPECT_NEAR(s.head(r * 0.6, r * 0.8), headOf(phi, B, k, H), 1e-9) << "t " << t << " r " << r;
            // Radial discharge Q e^-u / (2 pi r) towards the well.
            const auto [qx, qy] = s.discharge(r, 0.0);
            EXPECT_NEAR(qx, -Q * std::exp(-u) / (2 * kPi * r), 1e-10 * Q / r);
            EXPECT_NEAR(qy, 0.0, 1e-12 * Q / r);
        }
    }
    // The reported head is that at the screen radius, at the time of evaluation.
    s.setTime(2.0);
    const auto r = s.theisWellResults();
    ASSERT_EQ(r.size(), 1u);
    EXPECT_EQ(r[0].label, "WL_000020");
    EXPECT_DOUBLE_EQ(r[0].discharge, Q);
    EXPECT_NEAR(r[0].head, headOf(phi0 - Q / (4 * kPi) * E1(0.01 * S / (4 * T * 1.5)), B, k, H), 1e-9);
    EXPECT_EQ(r[0].activeLines, 1);
}

INSTANTIATE_TEST_SUITE_P(Aquifer, TheisAlone, ::testing::Values(true, false),
                         [](const auto& i) { return std::string(i.param ? "confined" : "unconfined"); });

TEST(TheisSchedule, LinesAddFromTheirStartTimes) {
    const double B = 0, k = 5, H = 40, h0 = 50, S = 2e-4, T = k * H;
    Model m = aquiferModel(B, k, H, 1e6, 0.0, h0);
    // On at day 0, off at day 2 by a line of the opposite discharge, on again at day 4.
    m.theisWells.push_back(theisLine(10, 20, 400, 0, h0, S, 0.15, "WL_000007"));
    m.theisWells.push_back(theisLine(10, 20, -400, 2, h0, S, 0.15, "WL_000007"));
    m.theisWells.push_back(theisLine(10, 20, 400, 4, h0, S, 0.15, "WL_000007"));
    Solution s(m);
    s.solve(opts(2));
    const double x = 10 + 30, y = 20;
    auto drawdown = [&](double t) {
        double sum = 0;
        const double q[3] = {400, -400, 400}, t0[3] = {0, 2, 4};
        for (int i = 0; i < 3; ++i)
            if (t > t0[i]) sum += q[i] * E1(900 * S / (4 * T * (t - t0[i])));
        return sum / (4 * kPi * T);
    };
    for (double t : {1.0, 3.0, 5.0}) {
        s.setTime(t);
        EXPECT_NEAR(h0 - s.head(x, y), drawdown(t), 1e-10) << t;
        const auto r = s.theisWellResults();
        ASSERT_EQ(r.size(), 1u);
        EXPECT_EQ(r[0].lines, 3);
        EXPECT_EQ(r[0].activeLines, t < 2 ? 1 : t < 4 ? 2 : 3);
        EXPECT_DOUBLE_EQ(r[0].discharge, t < 2 || t > 4 ? 400.0 : 0.0);
    }
    // During the pause the well recovers: less drawdown than while pumping, but not none.
    s.setTime(3.0);
    EXPECT_GT(drawdown(3.0), 0.0);
    EXPECT_LT(drawdown(3.0), drawdown(1.0));
}

TEST(TheisBalance, StorageReleaseAndFarFieldCloseTheBalance) {
    // A Theis well beside a pumping well and a river: the steady elements keep their
    // strengths, the transient well's water comes from storage and from across the circle.
    Model m = aquiferModel(0, 10, 30, -5000, 0, 40);
    m.wells.push_back(well(200, 0, 300, false));
    m.lineSinks.push_back(straightString(LineSinkKind::Head, 0, -1000, 0, 1000, 20, 40, 40));
    m.theisWells.push_back(theisLine(300, 100, 800, 0, 40, 1e-3, 0.1, "WL_000009"));
    m.theisWells.push_back(theisLine(300, 100, -200, 1, 40, 1e-3, 0.1, "WL_000009"));
    Solution s(m);
    s.solve(opts(3));
    const auto steadyHead = s.head(150, 0);
    for (double t : {0.5, 3.0, 200.0}) {
        s.setTime(t);
        const WaterBalance b = s.waterBalance();
        EXPECT_LT(b.closureError, 1e-6) << t;
        double theisOut = -1, storageIn = -1;
        for (const auto& term : b.terms) {
            if (term.kind == "Theis wells") theisOut = term.out - term.in;
            if (term.kind == "storage release, Theis wells") storageIn = term.in - term.out;
        }
        EXPECT_DOUBLE_EQ(theisOut, t < 1 ? 800.0 : 600.0);
        EXPECT_GT(storageIn, 0.0);
        EXPECT_LE(storageIn, theisOut * (1 + 1e-12));
    }
    // The steady unknowns do not respond to the transient wells.
    s.setTime(0.0);
    EXPECT_DOUBLE_EQ(s.head(150, 0), steadyHead);
}

TEST(TheisFlux, FlowAcrossALongLineIsHalfTheDischargeTimesErfc) {
    // Across the line x = c the Theis well draws (Q/2) erfc(c sqrt(S / (4 T tau))): the
    // integral of Q c exp(-(c^2 + y^2) a) / (2 pi (c^2 + y^2)) over y.
    const double k = 10, H = 20, h0 = 30, S = 1e-4, Q = 600, T = k * H, c = 50;
    Model m = aquiferModel(0, k, H, 1e7, 0, h0);
    m.theisWells.push_back(theisLine(0, 0, Q, 1.0, h0, S));
    Solution s(m);
    s.solve(opts(2));
    std::vector<std::pair<double, double>> line;
    for (double y : {-1e6, -1e5, -1e4, -2e3, -500.0, -100.0, 0.0, 100.0, 500.0, 2e3, 1e4, 1e5, 1e6}) line.emplace_back(c, y);
    for (double t : {1.5, 3.0, 40.0}) {
        s.setTime(t);
        const double a = S / (4 * T * (t - 1.0));
        // Towards the well: from the right of the line's direction (+y) to its left.
        EXPECT_NEAR(s.flux(line), -0.5 * Q * std::erfc(c * std::sqrt(a)), 1e-6 * Q) << t;
    }
}

TEST(TheisInput, BadLinesAreSkippedOrMendedAndReported) {
    Model m = aquiferModel(0, 10, 20, 1e5, 0, 30);
    m.theisWells.push_back(theisLine(0, 0, 100, 0, 30, 0.0, 0.1, "WL_A"));    // no storage: skipped
    m.theisWells.push_back(theisLine(50, 0, 100, 0, 30, 1e-4, -1, "WL_B"));   // radius mended
    m.theisWells.push_back(theisLine(90, 0, 100, 0, -5, 1e-4, 0.1, "WL_C"));  // start head below the base
    Solution s(m);
    auto r = s.solve(opts(2));
    EXPECT_EQ(r.theisWells, 2);
    EXPECT_EQ(r.theisLines, 2);
    int storage = 0, radius = 0;
    for (const auto& w : s.warnings()) {
        storage += w.find("WL_A") != std::string::npos && w.find("skipped") != std::string::npos;
        radius += w.find("WL_B") != std::string::npos && w.find("radius") != std::string::npos;
    }
    EXPECT_EQ(storage, 1);
    EXPECT_EQ(radius, 1);
    // WL_C takes its transmissivity from the steady head (30: confined, k H = 200).
    s.setTime(1.0);
    const double u = 400.0 * 1e-4 / (4 * 200.0 * 1.0);
    const double other = 100 * E1(3600.0 * 1e-4 / (4 * 200.0)) / (4 * kPi * 200.0);  // WL_B, 60 away
    EXPECT_NEAR(30 - s.head(110, 0), 100 * E1(u) / (4 * kPi * 200.0) + other, 1e-9);
}

// ---- Partially penetrating wells -------------------------------------------------

TEST(PartialWell, FullPenetrationIsAPlainWell) {
    for (bool head : {false, true}) {
        Model a = aquiferModel(0, 10, 20, 800, 0, 30);
        Model b = a;
        a.wells.push_back(well(0, 0, head ? 26.0 : 700.0, head, 0.2));
        b.partialWells.push_back(ppwell(0, 0, 20, 0, head ? 26.0 : 700.0, head));
        Solution sa(a), sb(b);
        sa.solve(opts(3));
        sb.solve(opts(3));
        const auto pw = sb.partialWellResults();
        ASSERT_EQ(pw.size(), 1u);
        EXPECT_TRUE(sb.wellResults().empty());
        EXPECT_NEAR(pw[0].discharge, sa.wellResults()[0].discharge, 1e-9 * 700);
        EXPECT_NEAR(pw[0].head, sa.wellResults()[0].head, 1e-10);
        EXPECT_EQ(pw[0].lossFactor, 0.0);
        for (double x : {1.0, 30.0, 300.0}) EXPECT_NEAR(sb.head(x, 7), sa.head(x, 7), 1e-10);
    }
}

TEST(PartialWell, HeadAtTheWellCarriesTheLossOfTheFormula) {
    // Confined, also in the well: the field is Thiem's; the head in the well is lower by
    // Q f / (2 pi k H).
    const double B = 0, k = 10, H = 20, R = 1000, hR = 40, Q = 1000, rw = 0.2;
    Model m = aquiferModel(B, k, H, R, 0, hR);
    m.partialWells.push_back(ppwell(0, 0, 18, 12, Q, false, rw));
    Solution s(m);
    s.solve(opts(3));
    const double f = lossFactor(H, 12, 18, rw);
    const double thiem = hR + Q / (2 * kPi * k * H) * std::log(rw / R);
    const auto w = s.partialWellResults().at(0);
    EXPECT_NEAR(w.lossFactor, f, 1e-9 * f);
    EXPECT_NEAR(w.headLoss, Q * f / (2 * kPi * k * H), 1e-9);
    EXPECT_NEAR(w.head, thiem - Q * f / (2 * kPi * k * H), 1e-9);
    EXPECT_NEAR(w.penetration, 0.3, 1e-12);
    EXPECT_FALSE(w.clipped);
    // Away from the well the field is that of a plain well.
    EXPECT_NEAR(s.head(50, 0), hR + Q / (2 * kPi * k * H) * std::log(50 / R), 1e-9);
}

TEST(PartialWell, HeadModeMeetsItsHeadWithTheLoss) {
    const double B = 0, k = 10, H = 20, R = 1000, hR = 30, hw = 26, rw = 0.2;
    Model m = aquiferModel(B, k, H, R, 0, hR);
    m.partialWells.push_back(ppwell(0, 0, 10, 4, hw, true, rw));
    Solution s(m);
    s.solve(opts(3));
    const double f = lossFactor(H, 4, 10, rw);
    const auto w = s.partialWellResults().at(0);
    EXPECT_NEAR(w.head, hw, 1e-9);
    EXPECT_NEAR(w.headError, 0.0, 1e-9);
    EXPECT_NEAR(w.discharge, 2 * kPi * k * H * (hR - hw) / (std::log(R / rw) + f), 1e-8 * w.discharge);
    // The balance closes with the partially penetrating well as its own term.
    const WaterBalance b = s.waterBalance();
    EXPECT_LT(b.closureError, 1e-6);
    bool found = false;
    for (const auto& t : b.terms) found = found || (t.kind == "partial wells, head specified" && t.out > 0);
    EXPECT_TRUE(found);
}

TEST(PartialWell, UnconfinedHeadModeIteratesToTheLossOfItsSaturatedThickness) {
    const double B = 0, k = 10, H = 50, R = 500, hR = 20, hw = 15, rw = 0.3;
    Model m = aquiferModel(B, k, H, R, 0, hR);
    m.partialWells.push_back(ppwell(0, 0, 30, 5, hw, true, rw));  // the top lies above the water table
    Solution s(m);
    auto rep = s.solve(opts(30));
    EXPECT_TRUE(rep.converged);
    const auto w = s.partialWellResults().at(0);
    EXPECT_NEAR(w.head, hw, 1e-7);  // the iterations stop at 1e-9 (1 + H + |hR - B|)
    EXPECT_TRUE(w.clipped);
    // The screen is clipped to the water table of the field at the well.
    EXPECT_NEAR(w.screenTop, w.saturatedThickness, 1e-12);
    EXPECT_NEAR(w.screenBottom, 5.0, 1e-12);
    const double f = lossFactor(w.saturatedThickness, 5, w.saturatedThickness, rw);
    EXPECT_NEAR(w.lossFactor, f, 1e-8 * f);
    // Unconfined Thiem in potentials with the loss: Phi_R - Phi_w = Q (ln(R/rw) + f) / (2 pi).
    EXPECT_NEAR(phiOf(hR, B, k, H) - phiOf(hw, B, k, H), w.discharge * (std::log(R / rw) + f) / (2 * kPi),
                1e-7 * phiOf(hR, B, k, H));
    int clipped = 0;
    for (const auto& x : s.warnings()) clipped += x.find("clipped") != std::string::npos;
    EXPECT_EQ(clipped, 1);  // reported once
}

TEST(PartialWell, BadScreensAreMendedAndReported) {
    Model m = aquiferModel(0, 10, 20, 1000, 0, 30);
    m.partialWells.push_back(ppwell(0, 0, 4, 10, 500, false, 0.2, "WL_SWAP"));     // top below bottom
    m.partialWells.push_back(ppwell(300, 0, 60, 40, 500, false, 0.2, "WL_ABOVE")); // above the aquifer
    Solution s(m);
    s.solve(opts(3));
    const auto w = s.partialWellResults();
    ASSERT_EQ(w.size(), 2u);
    EXPECT_DOUBLE_EQ(w[0].screenTop, 10.0);
    EXPECT_DOUBLE_EQ(w[0].screenBottom, 4.0);
    EXPECT_GT(w[0].lossFactor, 0.0);
    EXPECT_EQ(w[1].lossFactor, 0.0);  // no screen in the saturated zone: fully penetrating
    EXPECT_TRUE(w[1].clipped);
    int swapped = 0, none = 0;
    for (const auto& x : s.warnings()) {
        swapped += x.find("WL_SWAP") != std::string::npos && x.find("swapped") != std::string::npos;
        none += x.find("WL_ABOVE") != std::string::npos && x.find("fully penetrating") != std::string::npos;
    }
    EXPECT_EQ(swapped, 1);
    EXPECT_EQ(none, 1);
}

TEST(WellsFile, SaveAndLoadKeepEveryKindOfWell) {
    Model m = aquiferModel(0, 10, 20, 1000, 0, 30);
    m.partialWells.push_back(ppwell(0, 0, 18, 12, 600, false));
    m.partialWells.push_back(ppwell(100, 0, 8, 2, 27, true, 0.2, "WL_000031"));
    m.theisWells.push_back(theisLine(-100, 50, 300, 0, -1, 1e-4));
    m.theisWells.push_back(theisLine(-100, 50, -300, 2, -1, 1e-4));
    Solution s(m);
    s.solve(opts(4));
    s.setTime(3.5);
    const tarno::test::TempDir dir("ppwell-theis");
    const fs::path p = dir / "RUN.SOL";
    s.save(p.string());
    Solution t = Solution::load(p.string());
    const auto a = s.partialWellResults(), b = t.partialWellResults();
    ASSERT_EQ(b.size(), 2u);
    for (size_t i = 0; i < 2; ++i) {
        EXPECT_EQ(a[i].head, b[i].head);
        EXPECT_EQ(a[i].discharge, b[i].discharge);
        EXPECT_EQ(a[i].lossFactor, b[i].lossFactor);
    }
    const auto ta = s.theisWellResults(), tb = t.theisWellResults();
    ASSERT_EQ(tb.size(), 1u);
    EXPECT_EQ(tb[0].time, 3.5);
    EXPECT_EQ(ta[0].head, tb[0].head);
    EXPECT_EQ(s.head(-60, 80), t.head(-60, 80));
}

// ---- Through the program ------------------------------------------------------

namespace {

using tarno::test::TempDir;

std::vector<std::string> readLines(const fs::path& p) {
    std::vector<std::string> out;
    std::ifstream f(p, std::ios::binary);
    std::string l;
    while (std::getline(f, l)) {
        if (!l.empty() && l.back() == '\r') l.pop_back();
        out.push_back(l);
    }
    return out;
}

// The records of the section whose head line is `head`.
std::vector<std::vector<std::string>> section(const std::vector<std::string>& xtr, const std::string& head) {
    std::vector<std::vector<std::string>> recs;
    bool in = false;
    for (const auto& l : xtr) {
        if (!l.empty() && l[0] == '*') { in = l == head; continue; }
        if (!in || l.empty() || l[0] != ' ') continue;
        std::vector<std::string> fields;
        std::stringstream ss(l);
        std::string f;
        while (std::getline(ss, f, ',')) fields.push_back(f.substr(f.find_first_not_of(' ')));
        recs.push_back(fields);
    }
    return recs;
}

}  // namespace

TEST(WellsProgram, ExtractSectionsHaveTheirFieldsAndBadLinesAreReported) {
    TempDir dir;
    const std::vector<std::string> lines = {
        " error error.log", " yes", " message message.log", " yes", " picture off", " quit", " bfname demo",
        " aquifer", " base .0E+00", " permeability .1E+02", " thickness .2E+02", " porosity .25",
        " reference .1E+04 .0E+00 .3E+02", " quit",
        " ppwell ", " discharge ", "  .0E+00 .0E+00 .18E+02 .12E+02 .6E+03 .2E+00 WL_000001",
        "  .5E+02 .0E+00 .4E+01 .1E+02 .3E+03 .2E+00 WL_000002", " quit ",                        // lines 17, 18
        " ppwell ", " head ", "  .1E+03 .0E+00 .8E+01 .2E+01 .27E+02 .2E+00 WL_000003",
        "  .2E+03 .0E+00 .8E+01 .2E+01 .27E+02 .0E+00 WL_000004", " quit ",                       // line 23: rw 0
        " twell ", " discharge ", "  -.1E+03 .5E+02 .3E+03 .0E+00 .3E+02 .1E-03 .1E+00 WL_000005",
        "  -.1E+03 .5E+02 -.3E+03 .2E+01 .3E+02 .1E-03 .1E+00 WL_000005",
        "  -.2E+03 .5E+02 .3E+03 .0E+00 .3E+02 .0E+00 .1E+00 WL_000006", " quit ",                // line 29: S 0
        " time 0", " solve 5 1 0 1", " time 3", " extract", " file demo", " y",
        " ppwell discharge", " ppwell head", " Theis well", " quit", " stop"};
    {
        std::ofstream f(dir.Path() / "DEMO.DAT", std::ios::binary);
        for (const auto& l : lines) f << l << "\r\n";
    }
    tarno::test::RunOptions run;
    run.cwd = dir.Path();
    const tarno::test::RunResult r = tarno::test::RunProgram("tarno1", {"61", "DEMO"}, run);
    ASSERT_EQ(r.status, 0) << r.err;
    const auto xtr = readLines(dir.Path() / "demo.XTR");
    const auto dis = section(xtr, "* discharge specified partially penetrating wells");
    const auto head = section(xtr, "* head specified partially penetrating wells");
    const auto theis = section(xtr, "* Theis wells");
    ASSERT_EQ(dis.size(), 2u);
    ASSERT_EQ(head.size(), 1u);   // WL_000004 was skipped
    ASSERT_EQ(theis.size(), 1u);  // one record for the schedule of WL_000005; WL_000006 was skipped
    for (const auto& r : dis) EXPECT_EQ(r.size(), 6u);
    EXPECT_EQ(head[0].size(), 7u);
    EXPECT_EQ(theis[0].size(), 6u);
    EXPECT_EQ(dis[1][5], "WL_000002");
    EXPECT_EQ(head[0][6], "WL_000003");
    EXPECT_EQ(theis[0][5], "WL_000005");
    EXPECT_NEAR(std::stod(head[0][4]), 27.0, 1e-12);   // specified head
    // The steady solution meets the head; at day 3 the cone of WL_000005 (T = k H = 200,
    // S = 1e-4) lowers it: the head error is minus the Theis drawdown there.
    const double r2 = 200.2 * 200.2 + 50.0 * 50.0;
    const double cone = 300 * (E1(r2 * 1e-4 / (4 * 200 * 3.0)) - E1(r2 * 1e-4 / (4 * 200 * 1.0))) / (4 * kPi * 200);
    EXPECT_NEAR(std::stod(head[0][5]), -cone, 1e-7);
    EXPECT_DOUBLE_EQ(std::stod(theis[0][3]), 0.0);     // at day 3 the second line has switched it off
    EXPECT_LT(std::stod(theis[0][4]), 30.0);           // but the cone has not recovered yet
    // The bad lines are in the error log with their line numbers and labels.
    const auto err = readLines(dir.Path() / "error.log");
    auto has = [&](const std::string& start, const std::string& a, const std::string& b) {
        for (const auto& l : err)
            if (l.rfind(start, 0) == 0 && l.find(a) != std::string::npos && l.find(b) != std::string::npos) return true;
        return false;
    };
    EXPECT_TRUE(has("line 18", "WL_000002", "swapped"));
    EXPECT_TRUE(has("line 23", "WL_000004", "radius"));
    EXPECT_TRUE(has("line 29", "WL_000006", "storage"));
    // The message log counts the wells and the balance has the transient terms.
    const auto msg = readLines(dir.Path() / "message.log");
    bool counts = false, balance = false;
    for (const auto& l : msg) {
        counts = counts || l.find("Partially penetrating wells: 3 (1 head specified)") != std::string::npos;
        balance = balance || l.find("storage release, Theis wells") != std::string::npos;
    }
    EXPECT_TRUE(counts);
    EXPECT_TRUE(balance);
}
