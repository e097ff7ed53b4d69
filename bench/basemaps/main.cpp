// The base map benchmarks (see bench.h).
//
//   tarno-bench-basemaps [runs] [bbm|shape|raster|catalog]
#include <QGuiApplication>
#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "bench.h"

namespace {
int g_runs = 15;
}

int BenchRuns() { return g_runs; }

int main(int argc, char** argv) {
  // Images need no screen; text needs fonts, which the offscreen platform gives.
  if (std::getenv("QT_QPA_PLATFORM") == nullptr) setenv("QT_QPA_PLATFORM", "offscreen", 1);
  int qtArgc = 1;
  QGuiApplication app(qtArgc, argv);
  if (argc > 1) g_runs = std::max(1, std::atoi(argv[1]));
  const char* only = argc > 2 ? argv[2] : nullptr;
  auto wanted = [&](const char* name) { return only == nullptr || std::strcmp(only, name) == 0; };
  int failures = 0;
  if (wanted("bbm")) failures += BenchBbm();
  if (wanted("shape")) failures += BenchShape();
  if (wanted("raster") && &BenchRaster != nullptr) failures += BenchRaster();
  if (wanted("catalog") && &BenchCatalog != nullptr) failures += BenchCatalog();
  return failures == 0 ? 0 : 1;
}
