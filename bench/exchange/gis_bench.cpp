// The GeoPackage export and the import of a GIS layer on a large model.
//
//   tarno-bench-exchange [wells] [strings] [vertices]
//
// Builds a project with `wells` wells (default 5000) and `strings` line-sink strings
// (default 500) of `vertices` vertices (default 50), then times:
//   - the export of the whole project to a GeoPackage,
//   - the import of its wells layer and of its line-sink layer into an empty
//     project (label and head mapped), each element through the element checks
//     and a transaction of its own.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include "exchange/gpkg_export.h"
#include "exchange/vector_import.h"
#include "store/database.h"
#include "store/schema.h"
#include "../support/timing.h"

namespace fs = std::filesystem;
using namespace tarno;

namespace {

using tarno::bench::Seconds;

void BuildModel(const fs::path& path, int wells, int strings, int vertices) {
  Database db = Database::Open(path);
  db.ExecuteRaw("BEGIN");
  Statement vert = db.PrepareRaw("insert into Vertices (PID, Seq, X, Y) values (?, ?, ?, ?)");
  Statement well = db.PrepareRaw(
      "insert into Wells (VID, Label, Head, Radius, TopElev, BottomElev) values (?, ?, 100, 0.3, "
      "1, 0)");
  for (int i = 0; i < wells; ++i) {
    vert.Reset();
    vert.Bind(1, -1).Bind(2, -1).Bind(3, 10.0 * i).Bind(4, 5.0 * (i % 97)).Run();
    well.Reset();
    well.Bind(1, db.LastInsertId()).Bind(2, "W" + std::to_string(i)).Run();
  }
  Statement poly = db.PrepareRaw("insert into Polygons (Closed) values (0)");
  Statement ls = db.PrepareRaw(
      "insert into LinesinkStrings (PID, Label, StartingHead, EndingHead, Resistance) "
      "values (?, ?, 10, 9, 1)");
  for (int s = 0; s < strings; ++s) {
    poly.Reset();
    poly.Run();
    const std::int64_t pid = db.LastInsertId();
    ls.Reset();
    ls.Bind(1, pid).Bind(2, "LS" + std::to_string(s)).Run();
    for (int v = 0; v < vertices; ++v) {
      vert.Reset();
      vert.Bind(1, pid).Bind(2, 100 * v).Bind(3, 7.0 * v).Bind(4, 1000.0 + 13.0 * s).Run();
    }
  }
  db.ExecuteRaw("COMMIT");
}

}  // namespace

int main(int argc, char** argv) {
  const int wells = argc > 1 ? std::atoi(argv[1]) : 5000;
  const int strings = argc > 2 ? std::atoi(argv[2]) : 500;
  const int vertices = argc > 3 ? std::atoi(argv[3]) : 50;
  const fs::path dir =
      fs::temp_directory_path() / ("tarno-bench-exchange-" + std::to_string(getpid()));
  fs::create_directories(dir);
  const fs::path source = dir / "source.trn", target = dir / "target.trn", gpkg = dir / "out.gpkg";
  DBNewDatabase(source, "Bench", true, true);
  DBNewDatabase(target, "Bench", true, true);
  BuildModel(source, wells, strings, vertices);
  std::printf("model: %d wells, %d line-sink strings of %d vertices\n", wells, strings, vertices);

  double t = Seconds([&] {
    Database db = Database::Open(source);
    exchange::WriteGeoPackage(db, source, gpkg);
  });
  std::printf("GeoPackage export:           %8.3f s\n", t);

  for (const auto& [layer, kind, head] :
       {std::tuple{"wells", ElementKind::Well, "discharge"},
        std::tuple{"linesink_strings", ElementKind::Linesink, "head"}}) {
    exchange::VectorImportOptions o;
    o.file = gpkg.string();
    o.layer = layer;
    o.kind = kind;
    o.mapping = {{"label", "Label"}, {head, kind == ElementKind::Well ? "Head" : "StartingHead"}};
    if (kind == ElementKind::Linesink) o.mapping["resistance"] = "Resistance";
    std::size_t taken = 0;
    t = Seconds([&] {
      Database db = Database::Open(target);
      taken = exchange::ImportVectorLayer(db, target, o).Taken();
    });
    std::printf("import of %-18s %8.3f s (%zu elements, %.3f ms each)\n", layer, t, taken,
                taken ? 1000.0 * t / taken : 0.0);
  }
  fs::remove_all(dir);
  return 0;
}
