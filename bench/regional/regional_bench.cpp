// Benchmark of the regional model family (bench/engine/regional_model.h): heads at
// 10,000 points by direct summation and by the multipole expansions (engine/fast_eval.h).
//
// Usage: tarno-bench-regional [unknowns ...]        (default 20000 50000 100000)
//        tarno-bench-regional model [unknowns ...]  the models' make-up (and a dense
//                                                   solve where the model is small)
//        tarno-bench-regional crossover             direct against multipole on small
//                                                   models: where the multipole path wins
//        tarno-bench-regional terms [unknowns]      error and time against p and theta
//        tarno-bench-regional multipole [unknowns ...] the multipole path only (no direct sums)
//        tarno-bench-regional paths [unknowns]      pathline steps both ways (default 100000)
//
// The unknowns get random stand-in values of the right size instead of a solve (the
// cost of evaluation does not depend on the values), so that these figures stand apart
// from the solver's: tarno-bench-hsolve solves the same models by the compressed path
// and times the heads of the solved ones.
#include "bench/engine/regional_model.h"
#include "engine/fast_eval.h"
#include "engine/solution.h"
#include "engine/trace.h"

#include <omp.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

using namespace tarno::engine;

namespace {

double now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// The load of the machine (1-minute average), to read the times against.
double loadAverage() {
  std::ifstream in("/proc/loadavg");
  double l = -1;
  in >> l;
  return l;
}

// A lattice of `side` x `side` points over the model's window, shifted off the
// elements' round coordinates.
void lattice(const Model& m, int side, std::vector<double>& xs, std::vector<double>& ys) {
  xs.clear();
  ys.clear();
  const double x0 = m.window.x1, y0 = m.window.y1, dx = (m.window.x2 - x0) / side,
               dy = (m.window.y2 - y0) / side;
  for (int j = 0; j < side; ++j)
    for (int i = 0; i < side; ++i) {
      xs.push_back(x0 + (i + 0.37) * dx);
      ys.push_back(y0 + (j + 0.61) * dy);
    }
}

void describe(int n) {
  const double t0 = now();
  Model m = bench::MakeRegionalModel(n, 1u);
  const double t1 = now();
  Solution s(m);
  int segs = 0;
  for (const auto& l : m.lineSinks) segs += (int)l.segments.size();
  std::printf(
      "%8d asked: %8d unknowns, %6zu strings, %7d segments, %5zu wells, %2zu inhomogeneities, "
      "made in %.3f s, %zu warnings\n",
      n, s.unknowns(), m.lineSinks.size(), segs, m.wells.size(), m.inhomogeneities.size(), t1 - t0,
      s.warnings().size());
  for (size_t i = 0; i < s.warnings().size() && i < 5; ++i)
    std::printf("   warning: %s\n", s.warnings()[i].c_str());
  if (s.unknowns() <= 5000) {
    const SolveReport r = s.solve(SolveOptions{5, 1, false, false});
    std::printf("         dense solve %.3f s, converged %d, balance closure %.2e\n", r.totalSeconds,
                (int)r.converged, r.balance.closureError);
  }
}

struct Compare {
  double direct = 0, build = 0, fast = 0;  // seconds
  double maxHead = 0;                      // largest |head difference|
  double maxPhiRel = 0;                    // largest |potential difference| / |potential|
  double maxQRel = 0;                      // largest |Q difference| / max |Q| (on a subset)
  size_t bytes = 0;
  int clusters = 0;
  int elements = 0;
};

Compare compare(const Solution& s, const std::vector<double>& xs, const std::vector<double>& ys,
                const MultipoleOptions& o, bool withDirect = true) {
  Compare c;
  std::vector<double> hd;
  if (withDirect) {
    const double t0 = now();
    hd = FieldEvaluator(s, FieldEvaluator::Path::Direct).heads(xs, ys);
    c.direct = now() - t0;
  }
  const double t1 = now();
  FieldEvaluator f(s, FieldEvaluator::Path::Multipole, o);
  c.build = now() - t1;
  const double t2 = now();
  const std::vector<double> hf = f.heads(xs, ys);
  c.fast = now() - t2;
  c.bytes = f.tree()->bytes();
  c.clusters = f.tree()->clusters();
  c.elements = f.tree()->elements();
  if (!withDirect) return c;
  for (size_t i = 0; i < xs.size(); ++i) c.maxHead = std::max(c.maxHead, std::fabs(hd[i] - hf[i]));
  const size_t every = std::max<size_t>(1, xs.size() / 500);
  double qmax = 0, dq = 0;
  for (size_t i = 0; i < xs.size(); i += every) {
    const double pd = s.potential(xs[i], ys[i]), pf = f.potential(xs[i], ys[i]);
    c.maxPhiRel = std::max(c.maxPhiRel, std::fabs(pd - pf) / std::max(std::fabs(pd), 1e-300));
    const auto qd = s.discharge(xs[i], ys[i]), qf = f.discharge(xs[i], ys[i]);
    qmax = std::max(qmax, std::hypot(qd.first, qd.second));
    dq = std::max(dq, std::hypot(qd.first - qf.first, qd.second - qf.second));
  }
  c.maxQRel = qmax > 0 ? dq / qmax : 0;
  return c;
}

void headsAtPoints(const std::vector<int>& sizes, bool withDirect = true) {
  std::printf(
      "Heads at 10,000 points (a 100 x 100 lattice over the basin), direct sum and multipole\n"
      "expansions (p = %d, theta = %.2f). Strengths: random stand-ins, no solve (evaluation\n"
      "does not depend on the values). threads: OpenMP %d, load average %.2f\n",
      MultipoleOptions{}.terms, MultipoleOptions{}.theta, omp_get_max_threads(), loadAverage());
  std::printf("%8s %9s %9s %9s %9s %8s %8s %10s %10s %10s\n", "unknowns", "elements", "direct",
              "build", "multipole", "speedup", "tree MB", "max|dh|", "max dPhi/Phi", "max dQ/Q");
  for (int n : sizes) {
    Model m = bench::MakeRegionalModel(n, 1u);
    Solution s(m);
    setStandInStrengths(s, 7u);
    std::vector<double> xs, ys;
    lattice(m, 100, xs, ys);
    const Compare c = compare(s, xs, ys, MultipoleOptions{}, withDirect);
    if (withDirect)
      std::printf("%8d %9d %8.3fs %8.3fs %8.3fs %8.1f %8.2f %10.2e %10.2e %10.2e\n", s.unknowns(),
                  c.elements, c.direct, c.build, c.fast, c.direct / (c.build + c.fast),
                  c.bytes / 1048576.0, c.maxHead, c.maxPhiRel, c.maxQRel);
    else
      std::printf("%8d %9d %9s %8.3fs %8.3fs %8s %8.2f\n", s.unknowns(), c.elements, "-", c.build,
                  c.fast, "-", c.bytes / 1048576.0);
    std::fflush(stdout);
  }
  std::printf("load average after: %.2f\n", loadAverage());
}

// Direct against multipole on models of a few hundred to a few thousand elements: the
// time per point of each and the time to build the tree, at 1,000 points.
void crossover() {
  std::printf("Crossover: 1,000 points (the build of the tree included in the multipole time)\n");
  std::printf("%8s %9s %12s %12s %9s %12s\n", "unknowns", "elements", "direct/pt", "multipole/pt",
              "build", "break-even");
  for (int n : {500, 1000, 2000, 3000, 5000, 10000}) {
    Model m = bench::MakeRegionalModel(n, 1u);
    Solution s(m);
    setStandInStrengths(s, 7u);
    std::vector<double> xs, ys;
    lattice(m, 32, xs, ys);
    const Compare c = compare(s, xs, ys, MultipoleOptions{});
    const double pd = c.direct / xs.size(), pf = c.fast / xs.size();
    const FieldEvaluator f(s, FieldEvaluator::Path::Multipole);
    char be[32] = "never";
    if (pd > pf) std::snprintf(be, sizeof be, "%.0f points", c.build / (pd - pf));
    std::printf("%8d %9d %10.2fus %10.2fus %8.4fs %12s\n", s.unknowns(), f.tree()->elements(),
                1e6 * pd, 1e6 * pf, c.build, be);
    std::fflush(stdout);
  }
}

void terms(int n) {
  Model m = bench::MakeRegionalModel(n, 1u);
  Solution s(m);
  setStandInStrengths(s, 7u);
  std::vector<double> xs, ys;
  lattice(m, 100, xs, ys);
  std::printf("%d unknowns, 10,000 points: error and time against the terms p and theta\n",
              s.unknowns());
  std::printf("%4s %6s %5s %9s %9s %10s %10s %10s\n", "p", "theta", "leaf", "build", "multipole",
              "max|dh|", "max dPhi/Phi", "max dQ/Q");
  bool first = true;
  double direct = 0;
  for (double theta : {0.35, 0.5, 0.65})
    for (int p : {10, 20, 30, 40})
      for (int leaf : {32}) {
        MultipoleOptions o;
        o.terms = p;
        o.theta = theta;
        o.leafSize = leaf;
        const Compare c = compare(s, xs, ys, o);
        if (first) direct = c.direct;
        first = false;
        std::printf("%4d %6.2f %5d %8.3fs %8.3fs %10.2e %10.2e %10.2e\n", p, theta, leaf, c.build,
                    c.fast, c.maxHead, c.maxPhiRel, c.maxQRel);
        std::fflush(stdout);
      }
  std::printf("direct: %.3f s\n", direct);
}

// Pathlines: 8 particles of at most 300 steps each, traced with the direct sums and with
// the expansions (the tree's build included).
void paths(int n) {
  Model m = bench::MakeRegionalModel(n, 1u);
  Solution s(m);
  setStandInStrengths(s, 7u);
  std::vector<Particle> particles;
  for (int i = 0; i < 8; ++i) {
    Particle p;
    p.x = m.window.x1 + (m.window.x2 - m.window.x1) * (0.1 + 0.1 * i);
    p.y = m.window.y1 + (m.window.y2 - m.window.y1) * (0.85 - 0.09 * i);
    p.z = 5.0;
    particles.push_back(p);
  }
  TraceSettings st;
  st.step = 100.0;
  st.maxSteps = 300;
  st.x1 = m.window.x1;
  st.y1 = m.window.y1;
  st.x2 = m.window.x2;
  st.y2 = m.window.y2;
  std::printf(
      "%d unknowns, 8 pathlines of at most 300 steps (stand-in strengths), load average %.2f\n",
      s.unknowns(), loadAverage());
  for (auto path : {FieldEvaluator::Path::Multipole, FieldEvaluator::Path::Direct}) {
    st.evaluation = path;
    const double ts = now();
    tracePaths(s, {}, st);  // the set-up alone: the sinks' results, the tree
    const double setup = now() - ts;
    const double t0 = now();
    const std::vector<Path> r = tracePaths(s, particles, st);
    const double t = now() - t0;
    long steps = 0;
    for (const Path& p : r) steps += (long)p.points.size() - 1;
    std::printf("  %-9s set-up %7.3fs, %8.3fs for %ld steps: %8.1f us a step after the set-up\n",
                path == FieldEvaluator::Path::Direct ? "direct" : "multipole", setup, t, steps,
                1e6 * (t - setup) / std::max(1L, steps));
    std::fflush(stdout);
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<int> sizes;
  std::string mode;
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    if (a == "model" || a == "crossover" || a == "terms" || a == "multipole" || a == "paths") {
      mode = a;
    } else if (std::atoi(argv[i]) >= 1) {
      sizes.push_back(std::atoi(argv[i]));
    } else {
      std::fprintf(stderr,
                   "tarno-bench-regional: \"%s\" is neither a mode nor a number of unknowns\n",
                   argv[i]);
      return 2;
    }
  }
  if (mode == "model") {
    for (int n : sizes.empty() ? std::vector<int>{20000, 50000, 100000} : sizes) describe(n);
    return 0;
  }
  if (mode == "crossover") {
    crossover();
    return 0;
  }
  if (mode == "paths") {
    paths(sizes.empty() ? 100000 : sizes.front());
    return 0;
  }
  if (mode == "terms") {
    terms(sizes.empty() ? 20000 : sizes.front());
    return 0;
  }
  if (sizes.empty()) sizes = {20000, 50000, 100000};
  headsAtPoints(sizes, mode != "multipole");
  return 0;
}
