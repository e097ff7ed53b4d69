// Head-specified line-sinks with resistance, drains, galleries and routed streams.
// The conditions are met at the segment centres: confined models are linear and meet
// them to round-off; unconfined ones after the inner iterations converge, so the
// residual tolerance is that of the iteration's stopping rule (1e-9 of the head scale).
#include "helpers.h"

#include <gtest/gtest.h>

#include <map>

using namespace tarno::engine;
using namespace tarno::engine::testing;

namespace {

double aquiferHeadAtCentre(const Solution& s, const SegmentResult& r) {
    return s.head(0.5 * (r.x1 + r.x2), 0.5 * (r.y1 + r.y2));
}

struct ResistanceCase {
    const char* name;
    double refHead;
    int iterations;
};

class Resistance : public ::testing::TestWithParam<ResistanceCase> {};

TEST_P(Resistance, InflowFollowsTheHeadDifferenceAtEveryCentre) {
    const double B = 0.0, k = 15.0, H = 30.0, c = 2.0, w = 5.0;
    Model m = aquiferModel(B, k, H, -3000.0, 0.0, GetParam().refHead);
    m.aquifer.qx0 = 1.5;
    m.wells.push_back(well(300.0, 100.0, 1200.0, false));
    auto ls = straightString(LineSinkKind::Head, 0.0, -1000.0, 50.0, 1000.0, 40,
                             GetParam().refHead - 1.0, GetParam().refHead - 3.0);
    ls.resistance = c;
    ls.width = w;
    m.lineSinks.push_back(ls);
    Solution s(m);
    const auto rep = s.solve(opts(GetParam().iterations));
    EXPECT_TRUE(rep.converged);
    double gaining = 0, losing = 0;
    for (const auto& r : s.segmentResults()) {
        const double ha = aquiferHeadAtCentre(s, r);
        EXPECT_NEAR(r.strength, w * (ha - r.specifiedHead) / c, 1e-7) << r.label;
        EXPECT_NEAR(r.calculatedHead, ha, 1e-12);
        EXPECT_NEAR(r.error, 0.0, 1e-7);
        EXPECT_EQ(r.resistance, c);
        EXPECT_EQ(r.width, w);
        (r.strength > 0 ? gaining : losing) += 1;
    }
    // Uniform flow towards +x: the upstream part of this river gains, the pumped part loses.
    EXPECT_GT(gaining + losing, 0);
}

INSTANTIATE_TEST_SUITE_P(Aquifer, Resistance,
                         ::testing::Values(ResistanceCase{"confined", 45.0, 3},
                                           ResistanceCase{"unconfined", 20.0, 60}),
                         [](const auto& i) { return std::string(i.param.name); });

TEST(Resistance, PercolatingReachIsHeldAtTheDepthLimit) {
    // A river perched high above a pumped water table: where the aquifer head falls
    // below the bottom of the water (h - d) the loss is w d / c and no more.
    const double c = 10.0, w = 4.0, d = 1.5;
    Model m = aquiferModel(0.0, 20.0, 100.0, -5000.0, 0.0, 41.0);
    m.wells.push_back(well(0.0, 50.0, 6000.0, false));
    auto ls = straightString(LineSinkKind::Head, -3000.0, 0.0, 3000.0, 0.0, 60, 41.0, 41.0);
    ls.resistance = c;
    ls.width = w;
    ls.depth = d;
    m.lineSinks.push_back(ls);
    Solution s(m);
    const auto rep = s.solve(opts(40));
    EXPECT_TRUE(rep.converged);
    int perc = 0, free = 0;
    for (const auto& r : s.segmentResults()) {
        const double ha = aquiferHeadAtCentre(s, r);
        if (r.percolating) {
            ++perc;
            EXPECT_NEAR(r.strength, -w * d / c, 1e-12);
            EXPECT_LT(ha, 41.0 - d);
        } else {
            ++free;
            EXPECT_GE(ha, 41.0 - d - 1e-9);
            EXPECT_NEAR(r.strength, w * (ha - 41.0) / c, 1e-7);
        }
    }
    EXPECT_GT(perc, 0);
    EXPECT_GT(free, 0);
}

TEST(Drain, BesideALowWaterTableTakesNothing) {
    // Water table at about 10; a drain at head 15 would recharge if it could.
    Model m = aquiferModel(0.0, 10.0, 20.0, -1000.0, 0.0, 10.0);
    m.aquifer.qx0 = 0.5;
    m.wells.push_back(well(500.0, 300.0, 400.0, false));
    Model without = m;
    auto dr = straightString(LineSinkKind::Drain, 0.0, 0.0, 800.0, 100.0, 16, 15.0, 15.0);
    dr.resistance = 1.0;
    dr.width = 2.0;
    m.lineSinks.push_back(dr);
    Solution s(m), ref(without);
    s.solve(opts(10));
    ref.solve(opts(1));
    for (const auto& r : s.segmentResults()) {
        EXPECT_EQ(r.strength, 0.0) << r.label;
        EXPECT_TRUE(r.inactive);
    }
    for (auto [x, y] : {std::pair{100.0, 50.0}, {400.0, -300.0}, {-500.0, 20.0}})
        EXPECT_NEAR(s.head(x, y), ref.head(x, y), 1e-9);
}

TEST(Drain, TakesWaterOnlyWhereTheWaterTableLiesAboveIt) {
    // The drain runs from below the water table (downstream) to above it (upstream).
    Model m = aquiferModel(0.0, 10.0, 30.0, -2000.0, 0.0, 24.0);
    m.aquifer.qx0 = 0.5;  // head falls towards +x, from about 22 to 19 along the drain
    auto dr = straightString(LineSinkKind::Drain, -1000.0, 0.0, 1000.0, 0.0, 40, 26.0, 14.0);
    m.lineSinks.push_back(dr);
    Solution s(m);
    s.solve(opts(30));
    int on = 0, off = 0;
    for (const auto& r : s.segmentResults()) {
        EXPECT_GE(r.strength, 0.0);
        if (r.inactive) {
            ++off;
            EXPECT_LE(aquiferHeadAtCentre(s, r), r.specifiedHead + 1e-9);
        } else {
            ++on;
            EXPECT_NEAR(aquiferHeadAtCentre(s, r), r.specifiedHead, 1e-8);
        }
    }
    EXPECT_GT(on, 0);
    EXPECT_GT(off, 0);
}

TEST(Gallery, DeliversItsTotalDischargeAtOneCommonHead) {
    const double Q = 3000.0;
    Model m = aquiferModel(0.0, 25.0, 40.0, -3000.0, 0.0, 50.0);
    auto g = straightString(LineSinkKind::Gallery, -200.0, 0.0, 200.0, 100.0, 10, 0.0, 0.0);
    g.pumping = Q;
    m.lineSinks.push_back(g);
    Solution s(m);
    s.solve(opts(5));
    const auto rs = s.segmentResults();
    double total = 0.0;
    for (const auto& r : rs) {
        total += r.discharge;
        EXPECT_NEAR(r.calculatedHead, rs[0].calculatedHead, 1e-9);
        EXPECT_GT(r.strength, 0.0);
    }
    EXPECT_NEAR(total, Q, 1e-9 * Q);
    EXPECT_LT(rs[0].calculatedHead, 50.0);
    // The end segments take more than the middle ones (the classic end effect).
    EXPECT_GT(rs.front().strength, rs[5].strength);
}

TEST(Gallery, SegmentsWhoseMinimumHeadIsHigherAreHeldThere) {
    const double Q = 6000.0;
    Model m = aquiferModel(0.0, 25.0, 40.0, -3000.0, 0.0, 50.0);
    auto g = straightString(LineSinkKind::Gallery, 0.0, 0.0, 1000.0, 0.0, 10, 30.0, 30.0);
    g.segments[9].value = 48.0;  // this one may not draw the head below 48
    g.pumping = Q;
    m.lineSinks.push_back(g);
    Solution s(m);
    s.solve(opts(20));
    const auto rs = s.segmentResults();
    double total = 0.0;
    for (const auto& r : rs) total += r.discharge;
    EXPECT_NEAR(total, Q, 1e-9 * Q);
    EXPECT_TRUE(rs[9].inactive);
    EXPECT_NEAR(rs[9].calculatedHead, 48.0, 1e-8);
    for (int i = 0; i < 9; ++i) {
        EXPECT_NEAR(rs[i].calculatedHead, rs[0].calculatedHead, 1e-8);
        EXPECT_GE(rs[i].calculatedHead, 30.0);
    }
    EXPECT_LT(rs[0].calculatedHead, 48.0);
    EXPECT_LT(rs[9].discharge, rs[8].discharge);  // reduced
}

// Streams: a main string from (0,0) to (3000,0) in three segments and a tributary from
// (1000,1500) down to (1000,0), joining the main string at its second vertex.
Model streamModel(double refHead, double mainHead, double qin, double overland, double c) {
    Model m = aquiferModel(0.0, 20.0, 100.0, 1500.0, 3000.0, refHead);
    auto a = straightString(LineSinkKind::Stream, 0.0, 0.0, 3000.0, 0.0, 3, mainHead, mainHead - 2.0, "LS_000001");
    a.endInflow = qin;
    a.overlandFlow = overland;
    a.resistance = c;
    a.width = 10.0;
    auto b = straightString(LineSinkKind::Stream, 1000.0, 1500.0, 1000.0, 0.0, 3, mainHead + 2.0, mainHead + 0.5, "LS_000002");
    b.endInflow = 0.5 * qin;
    b.overlandFlow = overland;
    b.resistance = c;
    b.width = 10.0;
    m.lineSinks.push_back(a);
    m.lineSinks.push_back(b);
    return m;
}

TEST(Stream, GainingNetworkAccumulatesFlowDownstream) {
    const double qin = 500.0, ol = 0.2;
    Model m = streamModel(60.0, 50.0, qin, ol, 1.0);
    Solution s(m);
    const auto rep = s.solve(opts(10, 5));
    EXPECT_TRUE(rep.converged);
    const auto rs = s.segmentResults();
    std::map<std::string, const SegmentResult*> byLabel;
    for (const auto& r : rs) byLabel[r.label] = &r;
    auto flow = [](const SegmentResult* r) { return r->baseFlow + r->overlandFlow; };
    auto len = [](const SegmentResult* r) { return std::hypot(r->x2 - r->x1, r->y2 - r->y1); };
    const auto* a1 = byLabel.at("LS_000001_0100");
    const auto* a2 = byLabel.at("LS_000001_0200");
    const auto* a3 = byLabel.at("LS_000001_0300");
    const auto* b3 = byLabel.at("LS_000002_0300");
    for (const auto& r : rs) EXPECT_GT(r.strength, 0.0) << r.label;
    EXPECT_NEAR(flow(a1), qin + (a1->strength + ol) * len(a1), 1e-9 * qin);
    EXPECT_NEAR(a1->overlandFlow, qin + ol * len(a1), 1e-9 * qin);
    // The junction: the tributary's flow joins the main string's second segment.
    EXPECT_EQ(b3->downstreamLabel, "LS_000001_0200");
    EXPECT_EQ(a1->downstreamLabel, "LS_000001_0200");
    EXPECT_EQ(a3->downstreamLabel, "");
    EXPECT_NEAR(flow(a2), flow(a1) + flow(b3) + (a2->strength + ol) * len(a2), 1e-9 * qin);
    EXPECT_NEAR(flow(a3), flow(a2) + (a3->strength + ol) * len(a3), 1e-9 * qin);
    // Everything that entered: end inflows, overland flow and groundwater.
    double gw = 0, total = 0;
    for (const auto& r : rs) { gw += r.discharge; total += len(&r); }
    EXPECT_NEAR(flow(a3), 1.5 * qin + ol * total + gw, 1e-9 * flow(a3));
    EXPECT_NEAR(a3->baseFlow, gw, 1e-9 * flow(a3));
    // The gage reads the flow of the nearest segment.
    EXPECT_NEAR(s.gageFlow(2900.0, 10.0), flow(a3), 1e-12);
    EXPECT_NEAR(s.gageFlow(1010.0, 1400.0), flow(byLabel.at("LS_000002_0100")), 1e-12);
}

TEST(Stream, LosingStreamGoesDryDownstream) {
    // The stream lies 10 above the water table: it loses w (h_aq - h) / c per unit
    // length until its inflow is used up; downstream of that it carries nothing.
    const double qin = 2000.0;
    Model m = Model();
    m = aquiferModel(0.0, 20.0, 100.0, 0.0, -3000.0, 30.0);
    auto a = straightString(LineSinkKind::Stream, 0.0, 0.0, 6000.0, 0.0, 30, 40.0, 40.0);
    a.endInflow = qin;
    a.resistance = 5.0;
    a.width = 2.0;
    m.lineSinks.push_back(a);
    Solution s(m);
    const auto rep = s.solve(opts(30, 10));
    EXPECT_TRUE(rep.converged);
    const auto rs = s.segmentResults();
    int dry = 0, wet = 0;
    double lost = 0;
    for (const auto& r : rs) {
        const double f = r.baseFlow + r.overlandFlow;
        // The inner loop stops at a head residual of about 1e-7 here; through w / c and
        // the segment length that is a flow of about 1e-5, so 1e-8 of the inflow.
        EXPECT_GE(f, -1e-8 * qin) << r.label;
        lost -= r.discharge;
        if (r.inactive) {
            ++dry;
            EXPECT_NEAR(f, 0.0, 1e-8 * qin);
            EXPECT_LE(r.strength, 0.0);
        } else {
            ++wet;
            EXPECT_NEAR(r.strength, 2.0 * (aquiferHeadAtCentre(s, r) - 40.0) / 5.0, 1e-7);
        }
    }
    EXPECT_GT(dry, 0);
    EXPECT_GT(wet, 0);
    EXPECT_NEAR(lost, qin, 1e-6 * qin);  // all of it went into the aquifer
    EXPECT_FALSE(rs.front().inactive);
    EXPECT_TRUE(rs.back().inactive);
}

// A dry reach takes the flow that reaches it, and that flow depends on the reaches
// upstream, which the dry reach's loss in turn changes through the aquifer. Once the
// reaches have switched, each outer iteration meets every condition within a few inner
// iterations: the dry reach's row holds the upstream strengths themselves.
TEST(Stream, DryReachesConvergeInAFewIterations) {
    const double qin = 1200.0;
    Model m = aquiferModel(0.0, 20.0, 100.0, 0.0, -3000.0, 30.0);
    auto a = straightString(LineSinkKind::Stream, 0.0, 0.0, 6000.0, 0.0, 12, 40.0, 40.0, "LS_000001");
    a.endInflow = qin;
    a.resistance = 50.0;
    a.width = 2.0;
    // A tributary that loses too, joining the main stream at its fourth vertex.
    auto b = straightString(LineSinkKind::Stream, 1500.0, 2000.0, 1500.0, 0.0, 4, 42.0, 40.5, "LS_000002");
    b.endInflow = 0.5 * qin;
    b.resistance = 50.0;
    b.width = 2.0;
    m.lineSinks.push_back(a);
    m.lineSinks.push_back(b);
    Solution s(m);
    const auto rep = s.solve(opts(5, 10));
    ASSERT_TRUE(rep.converged);
    int limitedOuter = 0;
    for (int outer = 2; outer <= rep.iterations.back().outer; ++outer) {
        int inner = 0;
        for (const auto& it : rep.iterations) inner += it.outer == outer;
        EXPECT_LE(inner, 3) << "outer iteration " << outer;
        ++limitedOuter;
    }
    EXPECT_GT(limitedOuter, 0);
    // Every reach that went dry ends with no flow; all the inflow went into the aquifer.
    double lost = 0.0;
    int dry = 0;
    for (const auto& r : s.segmentResults()) {
        lost -= r.discharge;
        if (!r.inactive) continue;
        ++dry;
        EXPECT_NEAR(r.baseFlow + r.overlandFlow, 0.0, 1e-9 * qin) << r.label;
    }
    EXPECT_GT(dry, 0);
    EXPECT_NEAR(lost, 1.5 * qin, 1e-8 * qin);
}

TEST(Stream, EndStringDoesNotFlowOn) {
    Model m = streamModel(60.0, 50.0, 100.0, 0.0, 1.0);
    m.lineSinks[1].end = true;
    Solution s(m);
    s.solve(opts(10, 3));
    for (const auto& r : s.segmentResults())
        if (r.label == "LS_000002_0300") EXPECT_EQ(r.downstreamLabel, "");
}

TEST(Strings, CoincidentVerticesAreSkippedWithAWarning) {
    Model m = aquiferModel(0.0, 10.0, 20.0, 500.0, 0.0, 25.0);
    auto ls = straightString(LineSinkKind::Head, 0.0, 0.0, 100.0, 0.0, 2, 24.0, 24.0);
    Segment zero = ls.segments[1];
    zero.x1 = zero.x2;
    zero.label = "LS_000001_0300";
    ls.segments.push_back(zero);
    m.lineSinks.push_back(ls);
    Solution s(m);
    ASSERT_EQ(s.warnings().size(), 1u);
    EXPECT_NE(s.warnings()[0].find("LS_000001_0300"), std::string::npos);
    s.solve(opts(2));
    const auto rs = s.segmentResults();
    ASSERT_EQ(rs.size(), 2u);
    EXPECT_EQ(rs[1].label, "LS_000001_0200");
    EXPECT_NEAR(rs[1].calculatedHead, 24.0, 1e-9);
}

TEST(Strings, DischargeSegmentsExtractTheirGivenStrength) {
    Model m = aquiferModel(0.0, 10.0, 20.0, 5000.0, 0.0, 25.0);
    m.lineSinks.push_back(straightString(LineSinkKind::Discharge, 0.0, 0.0, 200.0, 0.0, 4, 0.5, 0.5));
    Solution s(m);
    s.solve(opts(1));
    double total = 0;
    for (const auto& r : s.segmentResults()) total += r.discharge;
    EXPECT_NEAR(total, 100.0, 1e-12);
    // Far away it acts as a well of discharge Q = 100 at its centre plus a quadrupole
    // term -Q / (4 pi) (L/2)^2 / (3 r^2) along its own line; the next term is
    // (L / 2r)^4 / 10 smaller, below 1e-6 here.
    const double r1 = 2000.0, r2 = 4000.0, Q = 100.0, h = 100.0;
    const double expected = Q / (2 * kPi) * std::log(r2 / r1) -
                            Q / (4 * kPi) * h * h / 3.0 * (1.0 / (r2 * r2) - 1.0 / (r1 * r1));
    EXPECT_NEAR(s.potential(100.0 + r2, 0.0) - s.potential(100.0 + r1, 0.0), expected, 1e-5);
    // Normal flow jumps by sigma across the line-sink: 0.25 each side towards it.
    EXPECT_NEAR(s.discharge(100.0, 1e-7).second, -0.25, 1e-6);
    EXPECT_NEAR(s.discharge(100.0, -1e-7).second, 0.25, 1e-6);
}

}  // namespace
