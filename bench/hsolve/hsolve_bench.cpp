// Benchmark of the large-model path of the solver: the compressed influence matrix and
// GMRES on a regional model family (meandering head strings with resistance, head and
// discharge wells, a few inhomogeneities), with the dense path beside it where it fits.
// Per size: compression time, memory, GMRES iterations, solve time, heads at 10,000
// points, and against the dense solve the largest differences in the unknowns and heads.
//
// Usage: tarno-bench-hsolve [--dense-up-to N] [unknowns ...]
//        (default 5000 10000 20000 50000 100000, dense beside up to 20000)
//        tarno-bench-hsolve crossover   (both paths at 2000 ... 12000: where they cross)
//
// The model family is this program's own until the shared regional model of the bench
// (MakeRegionalModel) lands; it is built the same way (see regionalModel below).
#include "engine/model.h"
#include "engine/solution.h"

#include <omp.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <string>
#include <unistd.h>
#include <vector>

using namespace tarno::engine;

namespace {

double now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

double residentMB() {
  std::ifstream f("/proc/self/statm");
  long pages = 0, resident = 0;
  f >> pages >> resident;
  return resident * (double)sysconf(_SC_PAGESIZE) / 1048576.0;
}

double loadAverage() {
  std::ifstream f("/proc/loadavg");
  double l = 0;
  f >> l;
  return l;
}

struct Extent {
  double w = 0, h = 0;
};

// Strings of 100 segments of 50 m (5 km long) laid out in rows 500 m apart, as many
// columns of them as make the region about square; 1 % head wells, 1 % discharge wells,
// three inhomogeneities of 24 vertices. Confined, so that one iteration solves it.
Model regionalModel(int unknowns, unsigned seed, Extent& ext) {
  std::mt19937 rng(seed);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  const int headWells = unknowns / 100;
  const int inhoVerts = 24, inhos = 3;
  const int segments = std::max(100, unknowns - headWells - 1 - inhos * 2 * inhoVerts);
  const int perString = 100;
  const double step = 50.0, rowGap = 500.0, colWidth = perString * step + 500.0;
  const int strings = (segments + perString - 1) / perString;
  const int cols = std::max(1, (int)std::ceil(std::sqrt(strings * rowGap / colWidth)));
  const int rows = (strings + cols - 1) / cols;
  ext.w = cols * colWidth;
  ext.h = (rows + 1) * rowGap;
  Model m;
  m.aquifer.base = 0.0;
  m.aquifer.conductivity = 10.0;
  m.aquifer.thickness = 20.0;
  m.aquifer.porosity = 0.25;
  m.aquifer.qx0 = 0.5;
  m.aquifer.hasReference = true;
  m.aquifer.referenceX = -2.0 * ext.w;
  m.aquifer.referenceY = 0.5 * ext.h;
  m.aquifer.referenceHead = 80.0;
  auto regionalHead = [&](double x) { return 60.0 - 15.0 * x / ext.w; };
  for (int i = 0; i < headWells; ++i) {
    Well w;
    w.x = ext.w * u(rng);
    w.y = ext.h * u(rng);
    w.radius = 0.2;
    w.value = regionalHead(w.x) - 3.0 * u(rng);
    w.headSpecified = true;
    w.label = "WL_H" + std::to_string(i);
    m.wells.push_back(w);
  }
  for (int i = 0; i < unknowns / 100; ++i) {
    Well w;
    w.x = ext.w * u(rng);
    w.y = ext.h * u(rng);
    w.radius = 0.2;
    w.value = 500.0 * u(rng);
    w.label = "WL_Q" + std::to_string(i);
    m.wells.push_back(w);
  }
  int made = 0;
  for (int s = 0; made < segments; ++s) {
    LineSinkString ls;
    ls.kind = LineSinkKind::Head;
    ls.resistance = 5.0;
    ls.width = 10.0;
    ls.label = "LS_" + std::to_string(s);
    double x = (s % cols) * colWidth + 250.0, y = (s / cols + 1) * rowGap;
    const int n = std::min(perString, segments - made);
    for (int k = 0; k < n; ++k) {
      const double dir = 0.8 * std::sin(0.15 * k + s) + 0.3 * (u(rng) - 0.5);
      Segment g;
      g.x1 = x;
      g.y1 = y;
      x += step * std::cos(dir);
      y += 0.4 * step * std::sin(dir);
      g.x2 = x;
      g.y2 = y;
      g.value = regionalHead(0.5 * (g.x1 + g.x2)) - 1.0;
      g.label = ls.label + "_" + std::to_string(k);
      ls.segments.push_back(g);
    }
    made += n;
    m.lineSinks.push_back(std::move(ls));
  }
  for (int i = 0; i < inhos; ++i) {
    Inhomogeneity in;
    in.conductivity = i % 2 ? 5.0 : 30.0;
    in.label = "HB_" + std::to_string(i);
    const double cx = ext.w * (0.25 + 0.25 * i), cy = ext.h * (0.3 + 0.2 * i);
    const double r = 0.08 * std::min(ext.w, ext.h) + 300.0;
    for (int k = 0; k < inhoVerts; ++k) {
      const double a = 2.0 * M_PI * k / inhoVerts;
      const double rr = r * (1.0 + 0.15 * std::sin(3.0 * a + i));
      in.vertices.push_back({cx + rr * std::cos(a), cy + rr * std::sin(a), "v" + std::to_string(k)});
    }
    m.inhomogeneities.push_back(in);
  }
  return m;
}

SolveOptions options(SolveMethod method) {
  SolveOptions o;
  o.innerIterations = 1;
  o.outerIterations = 1;
  o.method = method;
  return o;
}

struct Run {
  SolveReport rep;
  double seconds = 0, headsSeconds = 0, rssMB = 0;
  std::vector<double> x, heads;
};

Run solveOnce(const Model& m, const Extent& ext, SolveMethod method) {
  Run r;
  Solution s(m);
  const double t0 = now();
  r.rep = s.solve(options(method));
  r.seconds = now() - t0;
  r.rssMB = residentMB();
  r.x = s.unknownValues();
  std::vector<double> xs, ys;
  for (int i = 0; i < 100; ++i)
    for (int j = 0; j < 100; ++j) {
      xs.push_back(ext.w * (i + 0.37) / 100.0);
      ys.push_back(ext.h * (j + 0.61) / 100.0);
    }
  const double t1 = now();
  r.heads = s.heads(xs, ys);
  r.headsSeconds = now() - t1;
  return r;
}

void printRun(const char* path, const Run& r) {
  std::printf("%8d %-10s %9.2fs %9.2fs %9.2fs %6d %10.1f %9.1f %9.2fs %9.1e   load %.1f\n", r.rep.unknowns, path,
              r.rep.compressed ? r.rep.compressSeconds : r.rep.assemblySeconds, r.rep.factorSeconds, r.seconds,
              r.rep.krylovIterations, r.rep.compressed ? r.rep.compressedBytes / 1048576.0 : 8e-6 * r.rep.unknowns * (double)r.rep.unknowns / 1.048576,
              r.rssMB, r.headsSeconds, r.rep.balance.closureError, loadAverage());
  std::fflush(stdout);
}

void compare(const Run& c, const Run& d) {
  double scale = 0, dx = 0, dh = 0;
  for (size_t i = 0; i < d.x.size(); ++i) {
    scale = std::max(scale, std::fabs(d.x[i]));
    dx = std::max(dx, std::fabs(c.x[i] - d.x[i]));
  }
  for (size_t i = 0; i < d.heads.size(); ++i) dh = std::max(dh, std::fabs(c.heads[i] - d.heads[i]));
  std::printf("         compressed against dense: unknowns %.2e relative, heads %.2e\n", dx / scale, dh);
}

void header() {
  std::printf("threads: OpenMP %d\n", omp_get_max_threads());
  std::printf("%8s %-10s %10s %10s %10s %6s %10s %9s %10s %9s\n", "unknowns", "path", "assem/comp", "factor/pc",
              "solve", "gmres", "matrix MB", "RSS MB", "heads10k", "balance");
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<int> sizes;
  int denseUpTo = 20000;
  bool crossover = false;
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    if (a == "--dense-up-to" && i + 1 < argc) denseUpTo = std::atoi(argv[++i]);
    else if (a == "crossover") crossover = true;
    else sizes.push_back(std::atoi(a.c_str()));
  }
  if (crossover) {
    sizes = {2000, 4000, 6000, 8000, 10000, 12000};
    denseUpTo = 1 << 30;
  }
  if (sizes.empty()) sizes = {5000, 10000, 20000, 50000, 100000};
  header();
  for (int n : sizes) {
    Extent ext;
    const Model m = regionalModel(n, 42u + n, ext);
    const Run c = solveOnce(m, ext, SolveMethod::Compressed);
    printRun("compressed", c);
    if (n <= denseUpTo) {
      const Run d = solveOnce(m, ext, SolveMethod::Dense);
      printRun("dense", d);
      compare(c, d);
    }
  }
  return 0;
}
