// Benchmark of contour grids and pathlines, called from the engine benchmark's
// main (tarno-bench), or alone with "tarno-bench grids".
//
// - a 100 x 100 grid of heads over a model of 1,000 line-sinks, 200 wells and 10
//   inhomogeneities of 50 vertices each (target: under 0.5 s);
// - 100 pathlines of up to 1,000 steps each over the same model (target: under 2 s);
// - a 100 x 100 grid of heads over a string of 100 head-specified line-sinks alone.
#include "engine/grid.h"
#include "engine/model.h"
#include "engine/solution.h"
#include "engine/trace.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <random>

namespace tarno::engine::bench {

namespace {

double now() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

constexpr double kPi = 3.14159265358979323846;
constexpr double kSize = 20000.0;

Aquifer benchAquifer() {
  Aquifer a;
  a.base = 0.0;
  a.conductivity = 10.0;
  a.thickness = 30.0;
  a.porosity = 0.25;
  a.qx0 = 0.5;
  a.hasReference = true;
  a.referenceX = -20000.0;
  a.referenceY = 0.5 * kSize;
  a.referenceHead = 70.0;
  return a;
}

// Ten meandering head-specified rivers of 100 segments, 200 wells (a quarter of
// them head-specified) and ten polygons of 50 vertices.
Model largeModel() {
  std::mt19937 rng(2024);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  Model m;
  m.aquifer = benchAquifer();
  for (int s = 0; s < 10; ++s) {
    LineSinkString ls;
    ls.kind = LineSinkKind::Head;
    ls.label = "LS_" + std::to_string(s);
    const double y0 = kSize * (s + 0.5) / 10.0;
    double x = 0.0, y = y0;
    for (int k = 0; k < 100; ++k) {
      Segment g;
      g.x1 = x;
      g.y1 = y;
      x += kSize / 100.0;
      y = y0 + 300.0 * std::sin(0.2 * k + s);
      g.x2 = x;
      g.y2 = y;
      g.value = 60.0 - 15.0 * k / 100.0;
      g.label = ls.label + "_" + std::to_string(k);
      ls.segments.push_back(g);
    }
    m.lineSinks.push_back(std::move(ls));
  }
  for (int i = 0; i < 200; ++i) {
    Well w;
    w.x = kSize * u(rng);
    w.y = kSize * u(rng);
    w.radius = 0.2;
    w.headSpecified = i % 4 == 0;
    w.value = w.headSpecified ? 50.0 + 5.0 * u(rng) : 800.0 * u(rng);
    w.label = "WL_" + std::to_string(i);
    m.wells.push_back(w);
  }
  for (int i = 0; i < 10; ++i) {
    Inhomogeneity h;
    h.conductivity = 5.0 + 10.0 * u(rng);
    h.label = "IN_" + std::to_string(i);
    const double cx = kSize * (0.1 + 0.8 * u(rng)), cy = kSize * (0.1 + 0.8 * u(rng)), r = 600.0;
    for (int k = 0; k < 50; ++k) {
      const double a = 2.0 * kPi * k / 50.0;
      h.vertices.push_back(Vertex{cx + r * std::cos(a), cy + r * std::sin(a), h.label + "_" + std::to_string(k)});
    }
    m.inhomogeneities.push_back(std::move(h));
  }
  m.window = Window{true, 0.0, 0.0, kSize, kSize};
  return m;
}

Model riverOnly() {
  Model m;
  m.aquifer = benchAquifer();
  LineSinkString ls;
  ls.kind = LineSinkKind::Head;
  ls.label = "LS_1";
  for (int k = 0; k < 100; ++k) {
    Segment g;
    g.x1 = kSize * k / 100.0;
    g.y1 = 0.5 * kSize + 500.0 * std::sin(0.1 * k);
    g.x2 = kSize * (k + 1) / 100.0;
    g.y2 = 0.5 * kSize + 500.0 * std::sin(0.1 * (k + 1));
    g.value = 60.0 - 10.0 * k / 100.0;
    g.label = ls.label + "_" + std::to_string(k);
    ls.segments.push_back(g);
  }
  m.lineSinks.push_back(std::move(ls));
  m.window = Window{true, 0.0, 0.0, kSize, kSize};
  return m;
}

double timeGrid(const Solution& s, int* blanks) {
  auto g = gridGeometry(0.0, 0.0, kSize, kSize, 100);
  const double t = now();
  Grid grid = computeGrid(s, *g, GridQuantity::Heads);
  const double seconds = now() - t;
  *blanks = 0;
  for (double v : grid.z) *blanks += Grid::isBlank(v);
  return seconds;
}

}  // namespace

void runGridTraceBench() {
  std::printf("\ngrids and pathlines\n");
  Solution big(largeModel());
  big.solve(SolveOptions{1, 1, false, false});
  int blanks = 0;
  const double gridSeconds = timeGrid(big, &blanks);
  std::printf("  grid 100 x 100 heads, 1000 line-sinks + 200 wells + 10 x 50-vertex polygons: %8.3f s"
              "  (target 0.5 s; %d blank)\n",
              gridSeconds, blanks);
  std::fflush(stdout);

  // 100 particles on a line across the upstream side, forward, at most 1,000 steps.
  // With steps of 20 most paths soon end in a river; with steps of 1 every path
  // runs its full 1,000 steps, which is the case the target is set for.
  std::vector<Particle> particles;
  for (int i = 0; i < 100; ++i)
    particles.push_back(Particle{500.0, kSize * (i + 0.5) / 100.0, 10.0, 1, "particle " + std::to_string(i + 1)});
  for (double step : {20.0, 1.0}) {
    TraceSettings st;
    st.step = step;
    st.maxSteps = 1000;
    st.x1 = 0.0;
    st.y1 = 0.0;
    st.x2 = kSize;
    st.y2 = kSize;
    const double t = now();
    std::vector<Path> paths = tracePaths(big, particles, st);
    const double traceSeconds = now() - t;
    long steps = 0;
    for (const Path& p : paths) steps += p.steps;
    std::printf("  100 pathlines of up to 1000 steps of %4.0f (%6ld steps in all), same model:  %8.3f s"
                "  (target 2 s; %.1f us per step)\n",
                step, steps, traceSeconds, 1e6 * traceSeconds / std::max(1L, steps));
    std::fflush(stdout);
  }

  Solution river(riverOnly());
  river.solve(SolveOptions{1, 1, false, false});
  const double riverSeconds = timeGrid(river, &blanks);
  std::printf("  grid 100 x 100 heads, one string of 100 head-specified line-sinks:              %8.3f s\n",
              riverSeconds);
  std::fflush(stdout);
}

}  // namespace tarno::engine::bench
