// Benchmark of the analytic element solver: assembly, factorisation and one solve of
// generated models, against a bare LAPACK dgetrf of the same size, and heads at many
// points; then grids and pathlines (grid_trace_bench.cpp).
// Usage: tarno-bench [unknowns ...]   (default 1000 5000 10000)
//        tarno-bench grids            (grids and pathlines only)
//        tarno-bench lakes            (20 lakes linked by streams only, lake_bench.cpp)
#include "engine/lapack.h"
#include "engine/model.h"
#include "engine/solution.h"

#include <omp.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

using namespace tarno::engine;

namespace tarno::engine::bench {
void runGridTraceBench();
void runLakeBench();
}

namespace {

double now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// Meandering rivers with resistance, plus discharge and head-specified wells, in a
// confined aquifer (one iteration is the whole solution). About `unknowns` equations.
Model generate(int unknowns, unsigned seed) {
    std::mt19937 rng(seed);
    std::uniform_real_distribution<double> u(0.0, 1.0);
    Model m;
    m.aquifer.base = 0.0;
    m.aquifer.conductivity = 10.0;
    m.aquifer.thickness = 20.0;
    m.aquifer.porosity = 0.25;
    m.aquifer.qx0 = 0.5;
    m.aquifer.hasReference = true;
    m.aquifer.referenceX = -60000.0;
    m.aquifer.referenceY = 0.0;
    m.aquifer.referenceHead = 60.0;
    const double size = 20000.0;
    const int headWells = unknowns / 50;
    const int segments = unknowns - headWells - 1;
    for (int i = 0; i < headWells; ++i) {
        Well w;
        w.x = size * u(rng); w.y = size * u(rng); w.radius = 0.2; w.value = 45.0 + 5 * u(rng);
        w.headSpecified = true; w.label = "WL_H" + std::to_string(i);
        m.wells.push_back(w);
    }
    for (int i = 0; i < unknowns / 50; ++i) {
        Well w;
        w.x = size * u(rng); w.y = size * u(rng); w.radius = 0.2; w.value = 500.0 * u(rng);
        w.label = "WL_Q" + std::to_string(i);
        m.wells.push_back(w);
    }
    const int perString = 100;
    int made = 0, s = 0;
    while (made < segments) {
        LineSinkString ls;
        ls.kind = LineSinkKind::Head;
        ls.resistance = 5.0;
        ls.width = 10.0;
        ls.label = "LS_" + std::to_string(s);
        const double y0 = size * (s + 0.5) / (segments / perString + 1);
        double x = 0.0, y = y0, dir = 0.0;
        const int n = std::min(perString, segments - made);
        for (int k = 0; k < n; ++k) {
            dir = 0.8 * std::sin(0.15 * k + s) + 0.3 * (u(rng) - 0.5);
            const double step = size / perString;
            Segment g;
            g.x1 = x; g.y1 = y;
            x += step * std::cos(dir); y += 0.4 * step * std::sin(dir);
            g.x2 = x; g.y2 = y;
            g.value = 55.0 - 10.0 * k / perString;
            g.label = ls.label + "_" + std::to_string(k);
            ls.segments.push_back(g);
        }
        made += n;
        ++s;
        m.lineSinks.push_back(std::move(ls));
    }
    return m;
}

double bareDgetrf(int n) {
    std::vector<double> a((size_t)n * n);
    std::mt19937 rng(7);
    std::uniform_real_distribution<double> u(-1.0, 1.0);
    for (auto& v : a) v = u(rng);
    for (int i = 0; i < n; ++i) a[i + (size_t)i * n] += n;
    std::vector<int> piv(n);
    int info = 0;
    const double t = now();
    dgetrf_(&n, &n, a.data(), &n, piv.data(), &info);
    return now() - t;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::string(argv[1]) == "grids") {
        std::printf("threads: OpenMP %d\n", omp_get_max_threads());
        tarno::engine::bench::runGridTraceBench();
        return 0;
    }
    if (argc == 2 && std::string(argv[1]) == "lakes") {
        std::printf("threads: OpenMP %d\n", omp_get_max_threads());
        tarno::engine::bench::runLakeBench();
        return 0;
    }
    std::vector<int> sizes;
    for (int i = 1; i < argc; ++i) sizes.push_back(std::atoi(argv[i]));
    if (sizes.empty()) sizes = {1000, 5000, 10000};
    std::printf("threads: OpenMP %d\n", omp_get_max_threads());
    std::printf("%8s %10s %10s %10s %10s %12s %10s %10s\n", "unknowns", "assembly", "factor", "solve", "dgetrf",
                "coef/s", "solve/lu", "heads10k");
    for (int n : sizes) {
        Model m = generate(n, 42u + n);
        Solution s(m);
        // The dense path, against a bare dgetrf (the compressed one: tarno-bench-hsolve).
        const SolveReport r = s.solve(SolveOptions{1, 1, false, false, SolveMethod::Dense});
        const double lu = bareDgetrf(s.unknowns());
        double headsTime = -1.0;
        if (n == 5000 || sizes.size() == 1) {
            std::vector<double> xs, ys;
            for (int i = 0; i < 100; ++i)
                for (int j = 0; j < 100; ++j) { xs.push_back(200.0 * i + 37.0); ys.push_back(200.0 * j + 11.0); }
            const double t = now();
            const auto h = s.heads(xs, ys);
            headsTime = now() - t;
            double sum = 0;
            for (double v : h) sum += v;
            if (!std::isfinite(sum)) std::printf("heads not finite\n");
        }
        const double nn = (double)s.unknowns() * s.unknowns();
        char heads[32] = "         -";
        if (headsTime >= 0) std::snprintf(heads, sizeof heads, "%9.3fs", headsTime);
        std::printf("%8d %9.3fs %9.3fs %9.3fs %9.3fs %12.3e %10.2f %s\n", s.unknowns(), r.assemblySeconds,
                    r.factorSeconds, r.totalSeconds, lu, nn / r.assemblySeconds, r.totalSeconds / lu, heads);
        std::printf("         balance closure %.2e, residual %.2e\n", r.balance.closureError,
                    r.iterations.empty() ? 0.0 : r.iterations.back().largestResidual);
        std::fflush(stdout);
    }
    tarno::engine::bench::runGridTraceBench();
    tarno::engine::bench::runLakeBench();
    return 0;
}
