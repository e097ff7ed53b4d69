// The base map benchmarks (see bench.h).
//
//   tarno-bench-basemaps [runs] [bbm|raster]
#include <QGuiApplication>
#include <cstdlib>
#include <cstring>
#include <iostream>

#include "bench.h"

int main(int argc, char** argv) {
  // Images need no screen; text needs fonts, which the offscreen platform gives.
  if (std::getenv("QT_QPA_PLATFORM") == nullptr) setenv("QT_QPA_PLATFORM", "offscreen", 1);
  int qtArgc = 1;
  QGuiApplication app(qtArgc, argv);
  const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 15;
  const char* only = argc > 2 ? argv[2] : nullptr;
  auto wanted = [&](const char* name) { return only == nullptr || std::strcmp(only, name) == 0; };
  int failures = 0;
  if (wanted("bbm")) failures += BenchBbm(runs);
  if (wanted("raster") && &BenchRaster != nullptr) failures += BenchRaster(runs);
  return failures == 0 ? 0 : 1;
}
