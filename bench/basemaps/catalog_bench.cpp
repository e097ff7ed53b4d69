// The pre-scan of a project's base maps: a project of 20 maps of every kind, written
// in a temporary folder, is opened by PrescanMaps as the desktop program does on
// opening a project:
//   8 BBM maps of 4000 lines of 25 vertices (100,000 vertices each),
//   8 shapefiles of 4000 lines of 25 points with a table of two fields, one of them
//     the colour field,
//   2 GeoTIFF images of 4000 x 4000 pixels with world files,
//   2 DXF drawings of 2000 lines.
// The figure is the median of the runs (BenchRuns) of the whole pre-scan, and the
// extents of the layers after it; the target is under 1 s.
#include <gdal_priv.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "basemaps/bbm_writer.h"
#include "basemaps/catalogue.h"
#include "basemaps/dbf.h"
#include "basemaps/shapefile.h"
#include "basemaps/world_file.h"
#include "bench.h"
#include "core/console_ui.h"
#include "store/database.h"
#include "store/schema.h"

namespace fs = std::filesystem;
using namespace tarno;

namespace {

constexpr int kLines = 4000;
constexpr int kVertices = 25;
constexpr int kImageSize = 4000;
constexpr double kTargetSeconds = 1.0;

double Seconds(std::chrono::steady_clock::time_point since) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - since).count();
}

// The vertices of line l of map m, in metres over a 100 km square.
void Walk(int m, int l, std::vector<double>& xs, std::vector<double>& ys) {
  xs.clear();
  ys.clear();
  const double x0 = 500000.0 + 100000.0 * ((l * 37 + m * 11) % 1000) / 1000.0;
  const double y0 = 4100000.0 + 100000.0 * ((l * 53 + m * 7) % 1000) / 1000.0;
  for (int i = 0; i < kVertices; ++i) {
    xs.push_back(x0 + 40.0 * i);
    ys.push_back(y0 + 60.0 * std::sin(0.4 * i + l));
  }
}

std::string WriteBbm(const fs::path& dir, int m) {
  BbmHeaderFields fields;
  fields.title = "Catalogue benchmark " + std::to_string(m);
  fields.dataType = bbm::kUnattributed;
  BbmRecordWriter records(fields);
  std::vector<double> xs, ys;
  for (int l = 0; l < kLines; ++l) {
    Walk(m, l, xs, ys);
    std::vector<std::int32_t> ix, iy;
    for (std::size_t i = 0; i < xs.size(); ++i) {
      ix.push_back(static_cast<std::int32_t>(std::lround(xs[i] * 100)));
      iy.push_back(static_cast<std::int32_t>(std::lround(ys[i] * 100)));
    }
    records.AddLine(l + 1, ix, iy, {});
  }
  const std::string path = (dir / ("map" + std::to_string(m) + ".bbm")).string();
  records.Save(path);
  return path;
}

std::string WriteShape(const fs::path& dir, int m) {
  const std::string path = (dir / ("streams" + std::to_string(m) + ".shp")).string();
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(path), CShapeFile::kCreate, ShapeType::PolyLine);
    std::vector<double> xs, ys;
    for (int l = 0; l < kLines; ++l) {
      Walk(m, l, xs, ys);
      CPart part;
      for (std::size_t i = 0; i < xs.size(); ++i) part.Add(xs[i], ys[i]);
      CPolyLine line;
      line.Add(part);
      f.Add(line);
    }
  }
  DbfColumn kind{"KIND", "C", "", {}}, name{"NAME", "C", "", {}};
  for (int l = 0; l < kLines; ++l) {
    kind.Values.push_back(std::string("class ") + std::to_string(l % 12));
    name.Values.push_back(std::string("S") + std::to_string(l));
  }
  WriteDBFColumns(dir / ("streams" + std::to_string(m) + ".dbf"), {kind, name}, kLines);
  return path;
}

std::string WriteImage(const fs::path& dir, int m) {
  GDALAllRegister();
  const std::string path = (dir / ("photo" + std::to_string(m) + ".tif")).string();
  GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("GTiff");
  char** options = CSLSetNameValue(nullptr, "TILED", "YES");
  GDALDataset* ds = driver->Create(path.c_str(), kImageSize, kImageSize, 3, GDT_Byte, options);
  CSLDestroy(options);
  GDALClose(ds);
  std::ofstream world(dir / ("photo" + std::to_string(m) + ".tfw"));
  world << "25.0\n0.0\n0.0\n-25.0\n" << 500000.0 + 1000.0 * m << "\n4200000.0\n";
  return path;
}

std::string WriteDxf(const fs::path& dir, int m) {
  const std::string path = (dir / ("plan" + std::to_string(m) + ".dxf")).string();
  std::ofstream out(path);
  out << "0\nSECTION\n2\nENTITIES\n";
  for (int l = 0; l < kLines / 2; ++l) {
    const double x = 500000.0 + 25.0 * l, y = 4150000.0 + 10.0 * m;
    out << "0\nLINE\n8\nLAYER" << l % 5 << "\n10\n"
        << x << "\n20\n"
        << y << "\n30\n0.0\n11\n"
        << x + 20 << "\n21\n"
        << y + 30 << "\n31\n0.0\n";
  }
  out << "0\nENDSEC\n0\nEOF\n";
  return path;
}

}  // namespace

int BenchCatalog() {
  const int runs = BenchRuns();
  const fs::path dir = fs::temp_directory_path() / "tarno-bench-catalog";
  std::error_code ec;
  fs::remove_all(dir, ec);
  fs::create_directories(dir);
  const std::string project = (dir / "maps.trn").string();
  try {
    DBNewDatabase(project, "catalogue benchmark", true, true);
    Database db = Database::Open(project);
    for (int m = 0; m < 8; ++m) {
      InsertBaseMap(db, WriteBbm(dir, m));
      const std::string shp = WriteShape(dir, m);
      InsertBaseMap(db, shp);
      BaseMapRow row = *FindBaseMap(db, shp);
      row.ColorField = "KIND";
      row.UseColorField = true;
      row.TextField = m % 2 == 0 ? "NAME" : "__NONE__";
      UpdateBaseMap(db, row);
    }
    for (int m = 0; m < 2; ++m) {
      InsertBaseMap(db, WriteImage(dir, m));
      InsertBaseMap(db, WriteDxf(dir, m));
    }
  } catch (const std::exception& e) {
    std::printf("catalogue: cannot write the maps: %s\n", e.what());
    return 1;
  }

  std::ostringstream messages;
  ConsoleUserInterface ui(messages, Answer::OK);
  std::vector<double> times;
  std::size_t opened = 0;
  std::optional<ModelExtents> box;
  for (int r = 0; r < runs; ++r) {
    const auto t0 = std::chrono::steady_clock::now();
    BaseMapLayers layers = PrescanMaps(project, ui, DefaultOpeners());
    box = ModelCheckMapExtents(layers);
    times.push_back(Seconds(t0));
    opened = layers.size();
  }
  std::sort(times.begin(), times.end());
  const double median = times[times.size() / 2];
  std::printf("catalogue: pre-scan of 20 maps (8 BBM, 8 shapefiles, 2 images, 2 DXF), %zu opened\n",
              opened);
  std::printf(
      "catalogue:   median %.3f s, best %.3f s, worst %.3f s over %d runs (target < %.1f s)\n",
      median, times.front(), times.back(), runs, kTargetSeconds);
  if (box)
    std::printf("catalogue:   extents %.0f..%.0f x %.0f..%.0f\n", box->MinX, box->MaxX, box->MinY,
                box->MaxY);
  if (!messages.str().empty()) std::printf("catalogue: messages:\n%s", messages.str().c_str());
  fs::remove_all(dir, ec);
  const bool ok = opened == 20 && messages.str().empty() && median < kTargetSeconds;
  if (!ok) std::printf("catalogue: FAILED\n");
  return ok ? 0 : 1;
}
