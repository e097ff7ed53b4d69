// Benchmark of the large-model path of the solver on the regional model family
// (bench/engine/regional_model.h: meandering head strings with resistance, head and
// discharge wells, a few inhomogeneities), with the dense path beside it where it fits.
// Per size and path: compression (or assembly) time, the matrix's bytes and the peak
// resident memory of the solve, GMRES iterations, solve time, heads at 10,000 points
// through Solution::heads (the multipole evaluator on large models) and their time, the
// balance closure; where dense ran, the largest relative difference of the unknowns and
// the largest difference of the heads.
//
// Usage: tarno-bench-hsolve [--no-dense | --dense-up-to N] [--compress-tol T] [--gmres-tol T]
//                           [unknowns ...]
//        (default 20000 50000 100000, dense beside up to 20000)
//        tarno-bench-hsolve crossover   (both paths at 2000 ... 12000: where they cross)
//        tarno-bench-hsolve tarno1 [unknowns]  (default 20000) the model written as a command
//               file and solved by tarno1 (beside this program) with "compressed", then
//               "dense": times and the largest difference of the heads in the extract
//               file (100 points, the discharge wells, the line sinks' calculated heads)
//
// Peak memory is the process's high-water mark (VmHWM), reset before each solve
// (/proc/self/clear_refs), so each row's peak is that solve's own.
#include "bench/engine/regional_model.h"
#include "engine/model.h"
#include "engine/solution.h"

#include <omp.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <vector>

using namespace tarno::engine;

namespace {

double now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// The peak resident memory of the process (kB in /proc/self/status), in MB.
double peakMB() {
  std::ifstream f("/proc/self/status");
  std::string line;
  while (std::getline(f, line))
    if (line.rfind("VmHWM:", 0) == 0) return std::atof(line.c_str() + 6) / 1024.0;
  return -1;
}

// Resets the high-water mark to the memory resident now (Linux 4.0 on); false where
// the kernel does not allow it (the peaks are then those of the whole run so far).
bool resetPeak() {
  std::ofstream f("/proc/self/clear_refs");
  f << "5";
  f.flush();
  return (bool)f;
}

double loadAverage() {
  std::ifstream f("/proc/loadavg");
  double l = 0;
  f >> l;
  return l;
}

// The compressed path's tolerances (0: the solver's defaults), set by --compress-tol and
// --gmres-tol to see which of them bounds the difference from the dense solve.
double compressTol = 0, gmresTol = 0;

SolveOptions options(SolveMethod method) {
  SolveOptions o;
  if (compressTol > 0) o.compressionTolerance = compressTol;
  if (gmresTol > 0) o.gmresTolerance = gmresTol;
  o.innerIterations = 1;
  o.outerIterations = 1;
  o.method = method;
  return o;
}

// A 100 x 100 lattice over the model's window, shifted off the elements' round
// coordinates.
void lattice(const Model& m, std::vector<double>& xs, std::vector<double>& ys) {
  const double x0 = m.window.x1, y0 = m.window.y1, dx = (m.window.x2 - x0) / 100,
               dy = (m.window.y2 - y0) / 100;
  for (int j = 0; j < 100; ++j)
    for (int i = 0; i < 100; ++i) {
      xs.push_back(x0 + (i + 0.37) * dx);
      ys.push_back(y0 + (j + 0.61) * dy);
    }
}

struct Run {
  SolveReport rep;
  double seconds = 0, headsSeconds = 0, peak = 0;
  std::vector<double> x, heads;
};

Run solveOnce(const Model& m, SolveMethod method) {
  Run r;
  resetPeak();
  Solution s(m);
  const double t0 = now();
  r.rep = s.solve(options(method));
  r.seconds = now() - t0;
  r.peak = peakMB();
  r.x = s.unknownValues();
  std::vector<double> xs, ys;
  lattice(m, xs, ys);
  const double t1 = now();
  r.heads = s.heads(xs, ys);
  r.headsSeconds = now() - t1;
  return r;
}

void printRun(const char* path, const Run& r) {
  const SolveReport& p = r.rep;
  const double matrixMB = p.compressed ? p.compressedBytes / 1048576.0
                                       : 8.0 * p.unknowns * (double)p.unknowns / 1048576.0;
  std::printf("%8d %-10s %9.2fs %9.2fs %9.2fs %6d %10.1f %9.1f %9.3fs %9.1e  %4.1f\n", p.unknowns,
              path, p.compressed ? p.compressSeconds : p.assemblySeconds, p.factorSeconds,
              r.seconds, p.krylovIterations, matrixMB, r.peak, r.headsSeconds,
              p.balance.closureError, loadAverage());
  std::fflush(stdout);
}

// The largest difference of the unknowns relative to the largest unknown, and the
// largest difference of the heads (m).
void compare(const Run& c, const Run& d) {
  double scale = 0, dx = 0, dh = 0;
  for (size_t i = 0; i < d.x.size(); ++i) {
    scale = std::max(scale, std::fabs(d.x[i]));
    dx = std::max(dx, std::fabs(c.x[i] - d.x[i]));
  }
  for (size_t i = 0; i < d.heads.size(); ++i) dh = std::max(dh, std::fabs(c.heads[i] - d.heads[i]));
  std::printf(
      "         compressed against dense: unknowns %.2e relative (target 1e-8), heads %.2e m "
      "(target 1e-6)\n",
      scale > 0 ? dx / scale : 0.0, dh);
  std::fflush(stdout);
}

void header() {
  std::printf(
      "threads: OpenMP %d; model: MakeRegionalModel(n, 1); heads: 100 x 100 lattice over the "
      "window\n",
      omp_get_max_threads());
  std::printf("%8s %-10s %10s %10s %10s %6s %10s %9s %10s %9s  %4s\n", "unknowns", "path",
              "compress", "factor/pc", "solve", "gmres", "matrix MB", "peak MB", "heads10k",
              "balance", "load");
  std::printf(
      "         (compress: the compressed matrix's build, or the dense assembly; solve: the whole "
      "solve)\n");
}

int tarno1Check(const char* argv0, int n) {
  namespace fs = std::filesystem;
  const fs::path tarno1 = fs::absolute(argv0).parent_path() / "tarno1";
  if (!fs::exists(tarno1)) {
    std::fprintf(stderr, "tarno-bench-hsolve: no tarno1 at %s\n", tarno1.c_str());
    return 2;
  }
  const fs::path dir =
      fs::temp_directory_path() / ("tarno-bench-hsolve-" + std::to_string(getpid()));
  fs::create_directories(dir);
  const Model m = tarno::engine::bench::MakeRegionalModel(n, 1u);
  std::vector<std::pair<double, double>> points;
  std::vector<double> xs, ys;
  lattice(m, xs, ys);
  for (size_t i = 0; i < xs.size(); i += 100) points.push_back({xs[i], ys[i]});
  std::map<std::string, double> heads[2];
  const char* methods[2] = {"compressed", "dense"};
  std::printf("tarno1 on the regional model of %d unknowns asked (%s), load %.1f\n", n, dir.c_str(),
              loadAverage());
  for (int k = 0; k < 2; ++k) {
    const std::string name = std::string("REG") + (k ? "D" : "C");
    {
      std::ofstream f(dir / (name + ".DAT"), std::ios::binary);
      tarno::engine::bench::WriteCommandFile(m, f, name, methods[k], points);
    }
    const std::string cmd =
        "cd '" + dir.string() + "' && '" + tarno1.string() + "' 61 " + name + " > /dev/null 2>&1";
    const double t0 = now();
    const int rc = std::system(cmd.c_str());
    const double t = now() - t0;
    heads[k] = tarno::engine::bench::ExtractHeads((dir / (name + ".XTR")).string());
    std::printf("  %-10s exit %d, %7.2f s, %zu heads in the extract file, load %.1f\n", methods[k],
                rc, t, heads[k].size(), loadAverage());
    std::fflush(stdout);
    if (rc != 0) return 1;
  }
  double dp = 0, dw = 0;
  std::string worst;
  size_t matched = 0;
  for (const auto& [label, h] : heads[1]) {
    auto it = heads[0].find(label);
    if (it == heads[0].end()) continue;
    ++matched;
    const double d = std::fabs(it->second - h);
    if (label.rfind("TP_", 0) == 0) {
      dp = std::max(dp, d);
    } else if (d > dw) {
      dw = d;
      worst = label;
    }
  }
  std::printf(
      "  compressed against dense, %zu heads: points %.2e m (printed to 1e-5), wells and line "
      "sinks %.2e m "
      "(at %s; target 1e-6)\n",
      matched, dp, dw, worst.c_str());
  fs::remove_all(dir);
  return matched == heads[1].size() && !heads[1].empty() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<int> sizes;
  int denseUpTo = 20000;
  bool crossover = false;
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    if (a == "--dense-up-to" && i + 1 < argc) {
      denseUpTo = std::atoi(argv[++i]);
    } else if (a == "--compress-tol" && i + 1 < argc) {
      compressTol = std::atof(argv[++i]);
    } else if (a == "--gmres-tol" && i + 1 < argc) {
      gmresTol = std::atof(argv[++i]);
    } else if (a == "--no-dense") {
      denseUpTo = -1;
    } else if (a == "tarno1") {
      return tarno1Check(argv[0], i + 1 < argc ? std::atoi(argv[i + 1]) : 20000);
    } else if (a == "crossover") {
      crossover = true;
    } else if (std::atoi(a.c_str()) >= 1) {
      sizes.push_back(std::atoi(a.c_str()));
    } else {
      std::fprintf(stderr,
                   "tarno-bench-hsolve: \"%s\" is neither an option nor a number of unknowns\n",
                   a.c_str());
      return 2;
    }
  }
  if (crossover) {
    if (sizes.empty()) sizes = {2000, 4000, 6000, 8000, 10000, 12000};
    denseUpTo = 1 << 30;
  }
  if (sizes.empty()) sizes = {20000, 50000, 100000};
  if (!resetPeak())
    std::printf("(peak memory cannot be reset here: each peak is the run's so far)\n");
  header();
  for (int n : sizes) {
    const Model m = tarno::engine::bench::MakeRegionalModel(n, 1u);
    const Run c = solveOnce(m, SolveMethod::Compressed);
    printRun("compressed", c);
    if (n <= denseUpTo) {
      const Run d = solveOnce(m, SolveMethod::Dense);
      printRun("dense", d);
      compare(c, d);
    }
  }
  return 0;
}
