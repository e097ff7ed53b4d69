// Benchmark of the shapefile classes and the shapefile base map layer: writing a
// map of many lines with its table, opening it as a layer (every record read, a
// colour per value of a field), and drawing it whole and zoomed in on a recording
// surface.
//
// Usage: tarno-bench-basemaps [lines [points]]   (default 20000 lines of 50 points)

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "basemaps/dbf.h"
#include "basemaps/shape_layer.h"
#include "basemaps/shapefile.h"
#include "display/canvas.h"
#include "display/vgraph.h"
#include "bench.h"

using namespace tarno;
namespace fs = std::filesystem;

namespace {

double Now() {
  return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

int BenchShape() {
  const int lines = 20000;
  const int points = 50;
  const fs::path dir = fs::temp_directory_path() / "tarno-bench-basemaps";
  fs::create_directories(dir);
  const std::string spec = (dir / "streams.shp").string();

  // Meandering lines over a 100 km square, in rows.
  double t0 = Now();
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(spec), CShapeFile::kCreate, ShapeType::PolyLine);
    const int perRow = static_cast<int>(std::ceil(std::sqrt(lines)));
    for (int k = 0; k < lines; ++k) {
      const double x0 = 100000.0 * (k % perRow) / perRow, y0 = 100000.0 * (k / perRow) / perRow;
      CPart part;
      for (int i = 0; i < points; ++i)
        part.Add(x0 + 2000.0 * i / points, y0 + 300.0 * std::sin(0.3 * i + k));
      CPolyLine line;
      line.Add(part);
      f.Add(line);
    }
  }
  DbfColumn kind{"KIND", "C", "", {}}, name{"NAME", "C", "", {}};
  for (int k = 0; k < lines; ++k) {
    std::string cls = "class ", id = "S";
    cls += std::to_string(k % 12);
    id += std::to_string(k);
    kind.Values.push_back(cls);
    name.Values.push_back(id);
  }
  WriteDBFColumns(dir / "streams.dbf", {kind, name}, lines);
  const double tWrite = Now() - t0;

  BaseMapRow row;
  row.MapName = spec;
  row.UseColorField = true;
  row.ColorField = "KIND";
  row.TextField = "NAME";
  t0 = Now();
  auto layer = OpenShapeLayer(row);
  const double tOpen = Now() - t0;

  RecordingCanvas canvas(1600, 1200);
  VGraphGDI g;
  WorldWindow all{0, 102000, 102000, 0};
  g.vgGDIInitObject(canvas, all, false, 1000.0);
  canvas.ClearOps();
  t0 = Now();
  layer->Draw(g);
  const double tAll = Now() - t0;
  const auto opsAll = canvas.Ops().size();

  WorldWindow zoom{40000, 45000, 45000, 40000};
  g.vgGDIInitObject(canvas, zoom, false, 1000.0);
  canvas.ClearOps();
  t0 = Now();
  for (int r = 0; r < 10; ++r) layer->Draw(g);
  const double tZoom = (Now() - t0) / 10;
  const auto opsZoom = canvas.Ops().size() / 10;

  std::printf("lines %d x %d points, .shp %.1f MB\n", lines, points, fs::file_size(spec) / 1e6);
  std::printf("write (shp, shx, dbf)     %8.3f s\n", tWrite);
  std::printf("open layer (read all)     %8.3f s\n", tOpen);
  std::printf("draw whole map            %8.3f s  (%zu figures)\n", tAll, opsAll);
  std::printf("draw 5 km window          %8.4f s  (%zu figures)\n", tZoom, opsZoom);
  fs::remove_all(dir);
  return 0;
}
