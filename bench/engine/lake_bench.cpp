// Benchmark of lakes: 20 lakes in a chain, each linked to the next by a stream that
// leaves it through an outlet with a rating table and enters the next as an inlet, in a
// uniform flow; an inlet stream feeds the first lake. Times the whole solve (the lakes'
// outer iteration included) and reports the solves it took and the worst lake balance.
// Run alone with "tarno-bench lakes".
#include "engine/lake.h"
#include "engine/model.h"
#include "engine/solution.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

namespace tarno::engine::bench {

namespace {

double now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

constexpr double kPi = 3.14159265358979323846;

// The head of the uniform flow alone.
double background(const Aquifer& a, double x) {
  return a.referenceHead - a.qx0 / (a.conductivity * a.thickness) * (x - a.referenceX);
}

LineSinkString streamBetween(double x1, double x2, double y, int n, double head, double endInflow,
                             const std::string& label) {
  LineSinkString s;
  s.kind = LineSinkKind::Stream;
  s.label = label;
  s.resistance = 5.0;
  s.width = 3.0;
  s.endInflow = endInflow;
  for (int i = 0; i < n; ++i) {
    Segment g;
    g.x1 = x1 + (x2 - x1) * i / n;
    g.x2 = x1 + (x2 - x1) * (i + 1) / n;
    g.y1 = g.y2 = y;
    g.value = head;
    char b[16];
    std::snprintf(b, sizeof b, "_%04d", i + 1);
    g.label = label + b;
    s.segments.push_back(g);
  }
  return s;
}

Model chainOfLakes(int lakes) {
  Model m;
  m.aquifer.base = 0.0;
  m.aquifer.conductivity = 10.0;
  m.aquifer.thickness = 10.0;
  m.aquifer.porosity = 0.25;
  m.aquifer.qx0 = 0.2;
  m.aquifer.hasReference = true;
  m.aquifer.referenceX = -20000.0;
  m.aquifer.referenceY = 0.0;
  m.aquifer.referenceHead = 100.0;
  const double spacing = 800.0, R = 150.0;
  for (int i = 0; i < lakes; ++i) {
    const double cx = spacing * i, cy = 120.0 * std::sin(0.7 * i);
    Lake l;
    l.conductivity = 1000.0;
    l.precipitation = 0.002;
    l.evaporation = 0.003;
    l.resistance = 20.0;
    char b[32];
    std::snprintf(b, sizeof b, "LK_%06d", i + 1);
    l.label = std::string(b) + "_0000";
    for (int k = 0; k < 24; ++k) {
      const double t = 2 * kPi * k / 24;
      char v[40];
      std::snprintf(v, sizeof v, "%s_%04d", b, k + 1);
      l.vertices.push_back({cx + R * std::cos(t), cy + R * std::sin(t), v});
    }
    if (i % 3 == 0)
      l.table = {{background(m.aquifer, cx) - 4, 0, 0},
                 {background(m.aquifer, cx) + 2, kPi * R * R, 3 * kPi * R * R}};
    m.lakes.push_back(l);
    // The stream from this lake's centre to the next one's (or on past the last lake).
    const double x2 = cx + spacing;
    char sl[32];
    std::snprintf(sl, sizeof sl, "LS_%06d", 100 + i);
    LineSinkString s = streamBetween(cx + 50, x2 - 50, cy, 6,
                                     background(m.aquifer, cx + spacing / 2) - 0.5, 0.0, sl);
    s.segments.back().y2 = 120.0 * std::sin(0.7 * (i + 1));
    s.outletTable = "rating";
    s.outletRating = {{background(m.aquifer, cx) - 1.0, 0.0},
                      {background(m.aquifer, cx) + 1.0, 3000.0}};
    s.inlet = i + 1 < lakes;
    m.lineSinks.push_back(s);
  }
  LineSinkString feed =
      streamBetween(-2000, -50, 0, 8, background(m.aquifer, -1000) - 0.5, 500.0, "LS_000099");
  feed.inlet = true;
  m.lineSinks.push_back(feed);
  return m;
}

}  // namespace

void runLakeBench() {
  const Model m = chainOfLakes(20);
  std::optional<Solution> s;
  const double t = now();
  const bool verbose = std::getenv("TARNO_BENCH_VERBOSE") != nullptr;
  const LakeSolveReport rep = solveWithLakes(m, s, SolveOptions{5, 5, false, false},
                                             [&](const std::string& l) {
                                               if (verbose && l.rfind("Lake balance", 0) == 0)
                                                 std::printf("  %s\n", l.c_str());
                                             },
                                             {});
  const double seconds = now() - t;
  double worst = 0.0, outflow = 0.0;
  int dry = 0;
  const auto lakes = lakeResults(*s);
  for (const LakeResult& l : lakes) {
    worst = std::max(worst, std::fabs(l.error) / std::max({l.totalIn, l.totalOut, 1e-300}));
    dry += l.dry;
    outflow += l.streamOut;
  }
  if (verbose)
    for (const LakeResult& l : lakes)
      std::printf("  %s stage %.4f head %.4f dry %d surface %.1f gw %.2f/%.2f stream %.2f/%.2f\n",
                  l.label.c_str(), l.stage, l.aquiferHead, (int)l.dry, l.surfaceArea,
                  l.groundwaterIn, l.groundwaterOut, l.streamIn, l.streamOut);
  std::printf(
      "lakes: %zu lakes linked by %zu streams, %d unknowns: %d solves in %.3f s (%.3f s per "
      "solve), %s\n",
      lakes.size(), m.lineSinks.size(), s->unknowns(), rep.lakeIterations, seconds,
      seconds / std::max(1, rep.lakeIterations), rep.converged ? "converged" : "NOT converged");
  std::printf(
      "       worst lake balance error %.2e of its largest term, %d dry, total outflow %.1f\n",
      worst, dry, outflow);
  std::fflush(stdout);
}

}  // namespace tarno::engine::bench
