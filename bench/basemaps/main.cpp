// The base map benchmarks: each prints its figures.
//
//   tarno-bench-basemaps
#include <QGuiApplication>

#include "bench.h"

int main(int argc, char** argv) {
  // The images are drawn with the Qt canvas, as on the screen (offscreen platform).
  QGuiApplication app(argc, argv);
  int failed = 0;
  failed += BenchRaster() != 0;
  // failed += BenchBbm() != 0;  (with the BBM benchmark)
  return failed == 0 ? 0 : 1;
}
