// The text element files on a large model.
//
//   tarno-bench-text-exchange [wells] [strings]
//
// Writes a .wl file of `wells` wells (default 5000) and a project of `strings`
// line-sink strings of 20 vertices (default 500), then times, each once, on a new
// project (every message box counts; there should be three):
//   - the import of the wells (identical-well test, screen checks, the vertex offset
//     against the wells already read, one transaction for the file),
//   - the export of the wells back to a .wl file,
//   - the export of the strings to an .lss and its import into an empty project.
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <string>

#include "../support/quiet_ui.h"
#include "elements/element_store.h"
#include "exchange/text_exchange.h"
#include "store/database.h"
#include "store/schema.h"
#include "../support/timing.h"

namespace fs = std::filesystem;
using namespace tarno;

namespace {

using tarno::bench::Seconds;

std::string NewProject(const fs::path& dir, const std::string& name) {
  const fs::path p = dir / name;
  DBNewDatabase(p, "Bench", true, true);
  Database db = Database::Open(p);
  db.ExecuteRaw("update Model set AQBase = 100, AQThickness = '35'");
  return p.string();
}

}  // namespace

int main(int argc, char** argv) {
  const int wells = argc > 1 ? std::atoi(argv[1]) : 5000;
  const int strings = argc > 2 ? std::atoi(argv[2]) : 500;
  const fs::path dir = fs::temp_directory_path() / ("tarno-bench-text-" + std::to_string(getpid()));
  fs::create_directories(dir);
  bench::QuietUserInterface ui;

  {
    std::ofstream wl(dir / "in.wl", std::ios::binary);
    for (int i = 0; i < wells; ++i)
      wl << 450000.0 + 7.31 * (i % 1000) << "," << 4390000.0 + 11.7 * (i / 1000) << ",100,0.3,W"
         << i << ",130,105\r\n";
  }
  const std::string project = NewProject(dir, "wells.trn");
  Database db = Database::Open(project);
  const double importWells = Seconds([&] {
    exchange::ImportWells(db, ui, (dir / "in.wl").string(), exchange::WellKind::Discharge);
  });
  const double exportWells = Seconds([&] {
    exchange::ExportWells(db, ui, (dir / "out.wl").string(), exchange::WellKind::Discharge);
  });
  db.Close();

  const std::string source = NewProject(dir, "strings.trn");
  db = Database::Open(source);
  for (int s = 0; s < strings; ++s) {
    std::vector<Vertex> v;
    for (int k = 0; k < 20; ++k)
      v.push_back({0, 0, 0, 1000.0 * (s % 50) + 40.0 * k, 700.0 * (s / 50) + 3.0 * k});
    Element e = NewElement(ElementKind::Linesink, std::move(v));
    e.row.Set("Label", std::string("S").append(std::to_string(s)));
    Insert(db, e);
  }
  const double exportLss = Seconds([&] { exchange::ExportLss(db, ui, (dir / "s.lss").string()); });
  db.Close();
  Database target = Database::Open(NewProject(dir, "target.trn"));
  const double importLss =
      Seconds([&] { exchange::ImportLss(target, ui, (dir / "s.lss").string(), true); });
  target.Close();

  std::printf("import of %d wells (.wl)          %8.3f s\n", wells, importWells);
  std::printf("export of %d wells (.wl)          %8.3f s\n", wells, exportWells);
  std::printf("export of %d strings x 20 (.lss)  %8.3f s\n", strings, exportLss);
  std::printf("import of %d strings x 20 (.lss)  %8.3f s\n", strings, importLss);
  std::printf("message boxes                     %8d\n", ui.messages);
  fs::remove_all(dir);
  return 0;
}
