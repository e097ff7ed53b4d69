// The map converters on a generated map of one million vertices (10,000 lines of 100
// vertices, random walks 25 m a step in UTM zone 15 around 480000, 4990000). Figures,
// median of five runs, wall time:
//   shape2bbm    the map as a polyline shapefile to BBM (ShapeToBbm);
//   bbmproject   the BBM from UTM zone 15 to Minnesota Central (2202), NAD83
//                (ReprojectBbm: PROJ per vertex, boxes and bounds);
//   bbm2dxf      the BBM to DXF through OGR's writer (BbmToDxf).
// Run: build/bin/tarno-bench-convert [folder]  (default: the system's temp folder).
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <random>
#include <vector>

#include "basemaps/converters.h"
#include "basemaps/shapefile.h"

namespace fs = std::filesystem;
using namespace tarno;

namespace {

constexpr int kLines = 10000;
constexpr int kVertices = 100;
constexpr int kRuns = 5;

double Median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v[v.size() / 2];
}

double Time(const std::function<void()>& work) {
  std::vector<double> runs;
  for (int i = 0; i < kRuns; ++i) {
    const auto start = std::chrono::steady_clock::now();
    work();
    runs.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
  }
  return Median(runs);
}

}  // namespace

int main(int argc, char** argv) {
  const fs::path dir =
      (argc > 1 ? fs::path(argv[1]) : fs::temp_directory_path()) / "tarno-bench-convert";
  fs::create_directories(dir);
  const fs::path shp = dir / "walks.shp", bbm = dir / "walks.bbm", out = dir / "walks-mn.bbm",
                 dxf = dir / "walks.dxf";
  {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> angle(0, 6.283185307179586);
    std::uniform_real_distribution<double> start(0, 80000);
    CShapeFile f;
    f.SetFileSpec(CFileName(shp.string()), CShapeFile::kCreate, ShapeType::PolyLine);
    for (int l = 0; l < kLines; ++l) {
      double x = 440000 + start(random), y = 4950000 + start(random);
      CPart part;
      for (int v = 0; v < kVertices; ++v) {
        part.Add(x, y);
        const double a = angle(random);
        x += 25 * std::cos(a);
        y += 25 * std::sin(a);
      }
      CPolyLine line;
      line.Add(part);
      f.Add(line);
    }
  }
  std::printf("map: %d lines of %d vertices\n", kLines, kVertices);
  std::printf("shape2bbm   %8.3f s\n", Time([&] { ShapeToBbm(shp, bbm); }));
  std::printf("bbmproject  %8.3f s\n",
              Time([&] { ReprojectBbm(bbm, out, 15, 2202, Datum::NAD83); }));
  std::printf("bbm2dxf     %8.3f s\n", Time([&] { BbmToDxf(bbm, dxf, "WALKS"); }));
  std::error_code ec;
  fs::remove_all(dir, ec);
  return 0;
}
