// Benchmark of the regional model family (bench/engine/regional_model.h).
// Usage: tarno-bench-regional [unknowns ...]      (default 20000 50000 100000)
//        tarno-bench-regional model [unknowns ...] (the models' make-up only, and a
//                                                  dense solve where it is small)
#include "bench/engine/regional_model.h"
#include "engine/solution.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

using namespace tarno::engine;

namespace {

double now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

void describe(int n) {
  const double t0 = now();
  Model m = bench::MakeRegionalModel(n, 1u);
  const double t1 = now();
  Solution s(m);
  int segs = 0;
  for (const auto& l : m.lineSinks) segs += (int)l.segments.size();
  std::printf("%8d asked: %8d unknowns, %6zu strings, %7d segments, %5zu wells, %2zu inhomogeneities, "
              "made in %.3f s, %zu warnings\n",
              n, s.unknowns(), m.lineSinks.size(), segs, m.wells.size(), m.inhomogeneities.size(), t1 - t0,
              s.warnings().size());
  for (size_t i = 0; i < s.warnings().size() && i < 5; ++i) std::printf("   warning: %s\n", s.warnings()[i].c_str());
  if (s.unknowns() <= 5000) {
    const SolveReport r = s.solve(SolveOptions{5, 1, false, false});
    std::printf("         dense solve %.3f s, converged %d, balance closure %.2e\n", r.totalSeconds, (int)r.converged,
                r.balance.closureError);
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<int> sizes;
  bool model = false;
  for (int i = 1; i < argc; ++i) {
    if (std::string(argv[i]) == "model") model = true;
    else sizes.push_back(std::atoi(argv[i]));
  }
  if (sizes.empty()) sizes = {20000, 50000, 100000};
  if (model) {
    for (int n : sizes) describe(n);
    return 0;
  }
  return 0;
}
