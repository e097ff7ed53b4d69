// Water balance, flux across polylines, and the .SOL file (save, load, continue).
#include "helpers.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

using namespace tarno::engine;
using namespace tarno::engine::testing;
namespace fs = std::filesystem;

namespace {

// A model with every kind of element the solver handles, unconfined so that the
// resistance conditions need iterations.
Model mixedModel() {
    Model m = aquiferModel(0.0, 15.0, 40.0, -4000.0, 500.0, 30.0);
    m.aquifer.qx0 = 0.8;
    m.aquifer.qy0 = 0.2;
    m.wells.push_back(well(400.0, 300.0, 900.0, false, 0.15, "WL_000001"));
    m.wells.push_back(well(-300.0, -200.0, 27.0, true, 0.2, "WL_000002"));
    auto river = straightString(LineSinkKind::Head, 800.0, -1500.0, 900.0, 1500.0, 30, 27.0, 25.0, "LS_000010");
    river.resistance = 3.0;
    river.width = 8.0;
    river.depth = 1.0;
    m.lineSinks.push_back(river);
    auto drain = straightString(LineSinkKind::Drain, -800.0, 600.0, 200.0, 700.0, 10, 29.0, 28.0, "LS_000011");
    m.lineSinks.push_back(drain);
    auto gal = straightString(LineSinkKind::Gallery, -600.0, -800.0, -200.0, -900.0, 6, 10.0, 10.0, "LS_000012");
    gal.pumping = 700.0;
    m.lineSinks.push_back(gal);
    auto st = straightString(LineSinkKind::Stream, -1500.0, 1200.0, 600.0, 1100.0, 12, 29.0, 27.0, "LS_000013");
    st.endInflow = 300.0;
    st.overlandFlow = 0.05;
    st.resistance = 2.0;
    st.width = 4.0;
    m.lineSinks.push_back(st);
    m.lineSinks.push_back(straightString(LineSinkKind::Discharge, 0.0, 0.0, 100.0, 50.0, 2, -0.3, -0.3, "LS_000014"));
    return m;
}

// A temporary folder with the paths of its files as the solution's save and load take them.
class TempDir {
public:
    std::string file(const std::string& n) const { return (dir_ / n).string(); }
private:
    tarno::test::TempDir dir_{"tarno_engine"};
};

TEST(Balance, ClosesForAMixedModel) {
    Solution s(mixedModel());
    const auto rep = s.solve(opts(40, 5));
    EXPECT_TRUE(rep.converged);
    const auto& b = rep.balance;
    EXPECT_LT(b.closureError, 1e-6);
    EXPECT_GT(b.totalIn, 0.0);
    // Every kind present appears, and the well term is the well's discharge.
    auto find = [&](const std::string& k) -> const BalanceTerm* {
        for (const auto& t : b.terms)
            if (t.kind == k) return &t;
        return nullptr;
    };
    for (const char* k : {"wells, discharge specified", "wells, head specified", "line-sinks, head specified",
                          "drains", "galleries", "streams", "line-sinks, discharge specified", "far field"})
        EXPECT_NE(find(k), nullptr) << k;
    EXPECT_NEAR(find("wells, discharge specified")->out, 900.0, 1e-12);
    EXPECT_NEAR(find("galleries")->out, 700.0, 1e-6);
    EXPECT_NEAR(find("line-sinks, discharge specified")->in, 0.3 * std::hypot(100.0, 50.0), 1e-9);
    const auto lines = formatBalance(b);
    EXPECT_GE(lines.size(), b.terms.size() + 2);
}

TEST(Flux, ClosedPolygonsCatchWhatTheElementsInsideTake) {
    Solution s(mixedModel());
    s.solve(opts(40, 5));
    // Around the pumping well (counter-clockwise: outward normal on the right): the
    // flow out of the polygon is minus the well's discharge.
    const std::vector<std::pair<double, double>> box{{300, 200}, {500, 200}, {500, 400}, {300, 400}, {300, 200}};
    EXPECT_NEAR(s.flux(box), -900.0, 1e-8 * 900.0);
    // Around nothing: zero, even in uniform flow.
    EXPECT_NEAR(s.flux({{-3000, -3000}, {-2900, -3000}, {-2900, -2900}, {-3000, -2900}, {-3000, -3000}}), 0.0, 1e-9);
    // A polygon crossing the river: it encloses part of the river's segments, so the
    // flow out equals minus the inflow of the enclosed river length. The polygon cuts
    // segments at arbitrary points; each enclosed piece takes sigma per unit length.
    const double y0 = -333.3, y1 = 517.7;
    double inside = 0.0;
    for (const auto& r : s.segmentResults()) {
        if (r.label.rfind("LS_000010", 0) != 0) continue;
        const double lo = std::max(std::min(r.y1, r.y2), y0), hi = std::min(std::max(r.y1, r.y2), y1);
        if (hi > lo) inside += r.strength * (hi - lo) / std::fabs(r.y2 - r.y1) * std::hypot(r.x2 - r.x1, r.y2 - r.y1);
    }
    const std::vector<std::pair<double, double>> cut{{700, y0}, {1000, y0}, {1000, y1}, {700, y1}, {700, y0}};
    EXPECT_NEAR(s.flux(cut), -inside, 1e-8 * (std::fabs(inside) + 1.0));
    // Reversing a polyline reverses the flux.
    const std::vector<std::pair<double, double>> open{{-100, -2000}, {1200, 30}, {0, 2500}};
    std::vector<std::pair<double, double>> rev(open.rbegin(), open.rend());
    EXPECT_NEAR(s.flux(open), -s.flux(rev), 1e-9 * (1.0 + std::fabs(s.flux(open))));
}

TEST(Flux, NumericalIntegrationAgreesOnAnOpenLine) {
    // Independent check: Gauss-Legendre integration of the normal discharge along a
    // line that crosses no element, refined until it settles.
    Solution s(mixedModel());
    s.solve(opts(40, 5));
    const double ax = -1000, ay = -1200, bx = 700, by = 900;
    auto integrate = [&](int pieces) {
        const double g[2] = {-1.0 / std::sqrt(3.0), 1.0 / std::sqrt(3.0)};
        const double len = std::hypot(bx - ax, by - ay), nx = (by - ay) / len, ny = -(bx - ax) / len;  // right normal
        double sum = 0;
        for (int p = 0; p < pieces; ++p)
            for (double t : g) {
                const double u = (p + 0.5 + 0.5 * t) / pieces;
                const auto [qx, qy] = s.discharge(ax + u * (bx - ax), ay + u * (by - ay));
                sum += (qx * nx + qy * ny) * len / pieces / 2;
            }
        return sum;
    };
    const double num = integrate(4000);
    EXPECT_NEAR(s.flux({{ax, ay}, {bx, by}}), num, 1e-6 * (1.0 + std::fabs(num)));
}

TEST(SolFile, SaveLoadAndContinueGiveTheSameHeads) {
    TempDir dir;
    // One run of many iterations ...
    Solution whole(mixedModel());
    whole.solve(opts(40, 5));
    // ... against a run cut short, saved, loaded and continued.
    Solution part(mixedModel());
    part.solve(opts(2, 1));
    part.save(dir.file("PART.SOL"));
    Solution loaded = Solution::load(dir.file("PART.SOL"));
    EXPECT_TRUE(loaded.solved());
    EXPECT_EQ(loaded.model().wells[1].label, "WL_000002");
    EXPECT_EQ(loaded.model().lineSinks[3].kind, LineSinkKind::Stream);
    // The loaded state evaluates exactly as the saved one.
    for (auto [x, y] : {std::pair{0.0, 0.0}, {850.0, 10.0}, {-400.0, -850.0}})
        EXPECT_EQ(loaded.head(x, y), part.head(x, y));
    loaded.solve(opts(40, 5));
    for (auto [x, y] : {std::pair{0.0, 0.0}, {850.0, 10.0}, {-400.0, -850.0}, {-1000.0, 1150.0}, {2000.0, -2000.0}})
        EXPECT_NEAR(loaded.head(x, y), whole.head(x, y), 1e-7) << x << "," << y;
    const auto a = loaded.segmentResults(), b = whole.segmentResults();
    ASSERT_EQ(a.size(), b.size());
    for (size_t i = 0; i < a.size(); ++i) {
        EXPECT_NEAR(a[i].discharge, b[i].discharge, 1e-6 * (1.0 + std::fabs(b[i].discharge))) << a[i].label;
        EXPECT_EQ(a[i].downstreamLabel, b[i].downstreamLabel);
    }
    // Saving a loaded solution gives the same file.
    whole.save(dir.file("A.SOL"));
    Solution::load(dir.file("A.SOL")).save(dir.file("B.SOL"));
    std::ifstream fa(dir.file("A.SOL")), fb(dir.file("B.SOL"));
    std::stringstream sa, sb;
    sa << fa.rdbuf();
    sb << fb.rdbuf();
    EXPECT_EQ(sa.str(), sb.str());
}

TEST(SolFile, RefusesMissingTruncatedForeignAndOtherVersionFiles) {
    TempDir dir;
    Solution s(mixedModel());
    s.solve(opts(3, 1));
    s.save(dir.file("GOOD.SOL"));
    std::ifstream f(dir.file("GOOD.SOL"));
    std::stringstream ss;
    ss << f.rdbuf();
    const std::string good = ss.str();

    auto expectRefused = [&](const std::string& name, const std::string& content, const std::string& word) {
        if (!content.empty() || name != "MISSING.SOL") {
            std::ofstream o(dir.file(name), std::ios::binary);
            o << content;
        }
        try {
            Solution::load(dir.file(name));
            ADD_FAILURE() << name << " was loaded";
        } catch (const FatalError& e) {
            const std::string what = e.what();
            EXPECT_NE(what.find(name), std::string::npos) << what;
            EXPECT_NE(what.find(word), std::string::npos) << what;
        }
    };
    expectRefused("MISSING.SOL", "", "does not exist");
    expectRefused("TRUNC.SOL", good.substr(0, good.size() / 2), "cannot be loaded");
    expectRefused("NOEND.SOL", good.substr(0, good.size() - 4), "cannot be loaded");
    expectRefused("FOREIGN.SOL", "DSAA\n10 10\n", "not a solution file");
    std::string other = good;
    other.replace(0, other.find('\n'), "TARNO-SOL 1");
    expectRefused("OTHER.SOL", other, "version 1");
    std::string bad = good;
    const size_t p = bad.find('\n', bad.find('\n') + 1);  // the third line: a number
    bad.insert(p + 1, "x");
    expectRefused("BAD.SOL", bad, "line");
    expectRefused("EMPTY.SOL", "", "empty");
}

}  // namespace
