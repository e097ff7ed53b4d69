// Benchmark of the contour program: a grid of heads of a few wells in uniform
// flow, written as a text grid, then read, contoured at evenly spaced levels and
// written as a contour file; and the whole program run in-process on it.
//
// Usage: tarno-bench-contour [n [levels [dir]]]   (default 1000 50)
// With `dir` the grid stays there as BENCH.GRD (for timing the executable:
// cd dir && time contour BENCH <min> <interval> <max>, with the levels printed).

#include <omp.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "programs/contour/contour.h"
#include "programs/contour/ctr_file.h"
#include "programs/contour/grid.h"
#include "programs/contour/levels.h"
#include "programs/contour/run.h"

using namespace tarno::contour;
namespace fs = std::filesystem;

namespace {

double now() { return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count(); }

// Heads of a confined aquifer (k H = 200) with uniform flow along x and ten
// wells, pumping and injecting, over a 5 km square; the wells sit between grid
// points.
std::string makeGridText(int n) {
  const double lo = 0, hi = 5000, kh = 200, qx = 0.4;
  struct W {
    double x, y, q;
  } wells[] = {{1203.3, 2511.7, 800},  {2702.1, 1488.9, 1200}, {3950.7, 3320.3, 600}, {2210.4, 4011.1, -300},
               {4402.9, 902.6, 900},   {601.7, 611.3, -500},   {3301.1, 4550.9, 400}, {4711.3, 2204.7, -700},
               {1850.2, 3302.4, 300},  {3502.6, 2702.2, 1000}};
  const double pi = std::acos(-1.0);
  std::vector<double> z(static_cast<std::size_t>(n) * n);
#pragma omp parallel for
  for (int j = 0; j < n; ++j) {
    const double y = lo + (hi - lo) * j / (n - 1);
    for (int i = 0; i < n; ++i) {
      const double x = lo + (hi - lo) * i / (n - 1);
      double phi = -qx * x + 20000;
      for (const W& w : wells) phi += w.q / (2 * pi) * std::log(std::hypot(x - w.x, y - w.y));
      z[static_cast<std::size_t>(j) * n + i] = phi / kh;
    }
  }
  const auto [mn, mx] = std::minmax_element(z.begin(), z.end());
  std::string text;
  text.reserve(z.size() * 16 + 200);
  char buf[128];
  std::snprintf(buf, sizeof buf, "DSAA\r\n%d %d\r\n%.6f %.6f\r\n%.6f %.6f\r\n%.7E %.7E\r\n", n, n, lo, hi, lo, hi, *mn,
                *mx);
  text += buf;
  for (int j = 0; j < n; ++j) {
    for (int i = 0; i < n; ++i) {
      int len = std::snprintf(buf, sizeof buf, (i % 10 == 9 || i == n - 1) ? "%.7E\r\n" : "%.7E ",
                              z[static_cast<std::size_t>(j) * n + i]);
      text.append(buf, static_cast<std::size_t>(len));
    }
  }
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  const int n = argc > 1 ? std::atoi(argv[1]) : 1000;
  const int nLevels = argc > 2 ? std::atoi(argv[2]) : 50;
  if (n < 2 || nLevels < 1) {
    std::fprintf(stderr, "usage: tarno-bench-contour [n [levels [dir]]]\n");
    return 2;
  }
  fs::path dir;
  bool keep = argc > 3;
  if (keep) {
    dir = argv[3];
    fs::create_directories(dir);
  } else {
    std::string tmpl = (fs::temp_directory_path() / "contour-bench-XXXXXX").string();
    if (!mkdtemp(tmpl.data())) return 1;
    dir = tmpl;
  }
  const fs::path gridFile = dir / "BENCH.GRD";
  {
    std::ofstream out(gridFile, std::ios::binary);
    out << makeGridText(n);
  }
  std::printf("contour benchmark: %d x %d grid (%.1f MB), %d levels, %d threads\n", n, n,
              fs::file_size(gridFile) / 1e6, nLevels, omp_get_max_threads());

  double tRead = 1e300, tContour = 1e300, tWrite = 1e300, tTotal = 1e300;
  std::size_t polylines = 0, points = 0, bytes = 0;
  char minText[32], stepText[32], maxText[32];
  for (int rep = 0; rep < 3; ++rep) {
    double t0 = now();
    Grid g = readGridFile(gridFile);
    double t1 = now();
    if (rep == 0) {
    // Levels across the bulk of the values (from the 1st to the 99th
    // percentile; the deep narrow cones of the wells would otherwise take most).
    std::vector<double> sorted = g.z;
    std::sort(sorted.begin(), sorted.end());
    const double lo = sorted[sorted.size() / 100], hi = sorted[sorted.size() * 99 / 100];
    const double step = (hi - lo) / (nLevels - 1 > 0 ? nLevels - 1 : 1);
    std::snprintf(minText, sizeof minText, "%.6g", lo);
    std::snprintf(stepText, sizeof stepText, "%.6g", step);
    std::snprintf(maxText, sizeof maxText, "%.6g", lo + (nLevels - 1) * step);
    }
    t1 = now();
    std::vector<double> levels = makeLevels(std::atof(minText), std::atof(stepText), std::atof(maxText));
    std::vector<Polyline> lines = contourGrid(g, levels);
    double t2 = now();
    std::string text;
    appendContourText(lines, text);
    {
      std::ofstream out(dir / "BENCH.CTR", std::ios::binary);
      out.write(text.data(), static_cast<std::streamsize>(text.size()));
    }
    double t3 = now();
    std::ostringstream err;
    int status = runContour({"BENCH", minText, stepText, maxText}, dir, err);
    double t4 = now();
    if (status != 0) {
      std::fprintf(stderr, "%s", err.str().c_str());
      return 1;
    }
    tRead = std::min(tRead, t1 - t0);
    tContour = std::min(tContour, t2 - t1);
    tWrite = std::min(tWrite, t3 - t2);
    tTotal = std::min(tTotal, t4 - t3);
    polylines = lines.size();
    points = 0;
    for (const auto& p : lines) points += p.points.size();
    bytes = text.size();
  }
  std::printf("levels %s %s %s: %zu polylines, %zu points, %.1f MB of contour file\n", minText, stepText, maxText,
              polylines, points, bytes / 1e6);
  std::printf("best of 3 (s):  read %.3f   contour %.3f   write %.3f   sum %.3f   whole run %.3f\n", tRead,
              tContour, tWrite, tRead + tContour + tWrite, tTotal);
  if (keep)
    std::printf("kept %s; time the program with: cd %s && time contour BENCH %s %s %s\n", gridFile.c_str(),
                dir.c_str(), minText, stepText, maxText);
  else
    fs::remove_all(dir);
  return 0;
}
