// The drawing of a large raster base map. A 10,000 x 10,000 RGB GeoTIFF (tiled,
// 256-pixel blocks, a synthetic pattern) is written by GDAL in a temporary folder,
// its overviews are built, and it is drawn on a 1200 x 800 Qt image through the
// graphics layer at three zooms:
//   full extent  the whole image on the surface (an overview);
//   1:1          one image pixel to a surface pixel (the image itself);
//   deep         100 surface pixels to an image pixel.
// For each: the first draw after opening the image (GDAL's block cache empty, the
// file in the system's cache), then the mean and the worst of 8 draws at windows
// panned across the image. The target is under 0.2 s for every draw.
#include <gdal_priv.h>
#include <unistd.h>

#include <QImage>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "basemaps/raster_layer.h"
#include "bench.h"
#include "core/error.h"
#include "display/qt_canvas.h"
#include "display/vgraph.h"

namespace fs = std::filesystem;
using namespace tarno;

namespace {

constexpr int kSize = 10000;
constexpr int kBlock = 256;
constexpr int kWidth = 1200;
constexpr int kHeight = 800;
constexpr double kTargetSeconds = 0.2;

double Seconds(std::chrono::steady_clock::time_point since) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

// Writes the test image: colour bands of a pattern that changes at every pixel, so
// that no block compresses or repeats.
bool WriteImage(const fs::path& path) {
  GDALAllRegister();
  GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("GTiff");
  if (driver == nullptr) return false;
  char** options = nullptr;
  options = CSLSetNameValue(options, "TILED", "YES");
  options = CSLSetNameValue(options, "BLOCKXSIZE", std::to_string(kBlock).c_str());
  options = CSLSetNameValue(options, "BLOCKYSIZE", std::to_string(kBlock).c_str());
  options = CSLSetNameValue(options, "INTERLEAVE", "PIXEL");
  GDALDataset* ds = driver->Create(path.string().c_str(), kSize, kSize, 3, GDT_Byte, options);
  CSLDestroy(options);
  if (ds == nullptr) return false;
  double gt[6] = {500000.0, 1.0, 0.0, 4200000.0, 0.0, -1.0};  // one metre pixels
  ds->SetGeoTransform(gt);
  std::vector<std::uint8_t> strip(static_cast<std::size_t>(kSize) * kBlock * 3);
  bool ok = true;
  for (int y0 = 0; y0 < kSize && ok; y0 += kBlock) {
    const int rows = std::min(kBlock, kSize - y0);
    for (int r = 0; r < rows; ++r) {
      const int y = y0 + r;
      std::uint8_t* p = strip.data() + static_cast<std::size_t>(r) * kSize * 3;
      for (int x = 0; x < kSize; ++x) {
        p[3 * x] = static_cast<std::uint8_t>(x ^ y);
        p[3 * x + 1] = static_cast<std::uint8_t>((x / 40) * 7 + (y / 40) * 13);
        p[3 * x + 2] = static_cast<std::uint8_t>((x + 2 * y) >> 5);
      }
    }
    ok = ds->RasterIO(GF_Write, 0, y0, kSize, rows, strip.data(), kSize, rows, GDT_Byte, 3, nullptr,
                      3, static_cast<GSpacing>(kSize) * 3, 1, nullptr) == CE_None;
  }
  GDALClose(ds);
  return ok;
}

struct Zoom {
  const char* name;
  double unitsPerPixel;  // map units (image pixels) to a surface pixel
};

// Draws the image in a window of the zoom centred at (cx, cy); the seconds taken.
double DrawOnce(RasterLayer& layer, QImage& image, double cx, double cy, double unitsPerPixel,
                int& level) {
  image.fill(Qt::white);
  QtCanvas canvas(image, 96, 96);
  VGraphGDI g;
  const double hw = unitsPerPixel * kWidth / 2, hh = unitsPerPixel * kHeight / 2;
  WorldWindow window{cx - hw, cx + hw, cy + hh, cy - hh};
  const auto start = std::chrono::steady_clock::now();
  g.vgGDIInitObject(canvas, window, false, 1000.0);
  layer.Draw(g);
  canvas.End();  // the picture is finished when the painter is
  const double s = Seconds(start);
  level = layer.LastLevel();
  return s;
}

}  // namespace

int BenchRaster() {
  const fs::path dir =
      fs::temp_directory_path() / ("tarno-bench-raster-" + std::to_string(::getpid()));
  std::error_code ec;
  fs::create_directories(dir, ec);
  const fs::path tif = dir / "large.tif";
  int result = 0;
  try {
    auto start = std::chrono::steady_clock::now();
    if (!WriteImage(tif)) {
      std::printf("raster: cannot write %s\n", tif.string().c_str());
      fs::remove_all(dir, ec);
      return 1;
    }
    std::printf("raster: %d x %d RGB GeoTIFF written in %.1f s\n", kSize, kSize, Seconds(start));
    start = std::chrono::steady_clock::now();
    BuildOverviews(tif.string());
    std::printf("raster: overviews (%zu levels) built in %.1f s\n",
                OverviewFactors(kSize, kSize).size(), Seconds(start));

    BaseMapRow row;
    row.MapName = tif.string();
    QImage image(kWidth, kHeight, QImage::Format_ARGB32_Premultiplied);
    const Zoom zooms[] = {{"full extent", static_cast<double>(kSize) / kHeight},
                          {"1:1 pixel", 1.0},
                          {"deep (100 px a pixel)", 0.01}};
    const double x0 = 500000.0, y1 = 4200000.0;
    std::printf("raster: drawn on %d x %d pixels (Qt image), seconds\n", kWidth, kHeight);
    std::printf("  %-24s %8s %8s %8s %6s\n", "zoom", "first", "mean", "worst", "level");
    for (const Zoom& z : zooms) {
      RasterLayer layer(row);  // a fresh block cache for the first draw
      int level = 0;
      const double first =
          DrawOnce(layer, image, x0 + kSize / 2.0, y1 - kSize / 2.0, z.unitsPerPixel, level);
      double sum = 0, worst = 0;
      const int pans = 8;
      for (int i = 0; i < pans; ++i) {
        // Windows spread along the diagonal, each over blocks not read before.
        const double f = (i + 0.5) / pans;
        const double s =
            DrawOnce(layer, image, x0 + kSize * f, y1 - kSize * (1.0 - f), z.unitsPerPixel, level);
        sum += s;
        worst = std::max(worst, s);
      }
      const double mean = sum / pans;
      const bool over = std::max(first, worst) >= kTargetSeconds;
      std::printf("  %-24s %8.4f %8.4f %8.4f %6d%s\n", z.name, first, mean, worst, level,
                  over ? "  over the 0.2 s target" : "");
    }
  } catch (const Error& e) {
    std::printf("raster: %s\n", e.what());
    result = 1;
  }
  fs::remove_all(dir, ec);
  return result;
}
