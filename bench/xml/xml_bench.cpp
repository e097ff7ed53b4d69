// The XML element files on a large project.
//
//   tarno-bench-xml [strings] [vertices]
//
// Builds a project of `strings` line-sink strings (default 1000) of `vertices`
// vertices each (default 50), then times, once each:
//   - the export of the strings to a .lss.xml file (with the schema check of the
//     file by the importer's reader, for its size),
//   - the import of that file into an empty project (every string new),
//   - the import of it again (every string found with the same set of vertices: the
//     search of the conflict rules at its worst).
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include "elements/element_store.h"
#include "exchange/xml_elements.h"
#include "store/database.h"
#include "store/schema.h"
#include "../support/timing.h"

namespace fs = std::filesystem;
using namespace tarno;
using namespace tarno::exchange;

namespace {

using tarno::bench::Seconds;

}  // namespace

int main(int argc, char** argv) {
  const int strings = argc > 1 ? std::atoi(argv[1]) : 1000;
  const int vertices = argc > 2 ? std::atoi(argv[2]) : 50;
  const fs::path dir =
      fs::temp_directory_path() / ("tarno-bench-xml-" + std::to_string(::getpid()));
  fs::create_directories(dir);
  const fs::path source = dir / "source.trn", target = dir / "target.trn";
  const fs::path file = dir / "strings.lss.xml";
  const fs::path schemas = fs::path(argv[0]).parent_path();
  DBNewDatabase(source, "Bench", true, true);
  DBNewDatabase(target, "Bench", true, true);
  {
    Database db = Database::Open(source);
    Transaction tx(db);
    for (int s = 0; s < strings; ++s) {
      std::vector<Vertex> v;
      for (int i = 0; i < vertices; ++i)
        v.push_back({0, 0, 0, 100.0 * i + 0.5 * s, 37.0 * s + (i % 7)});
      Element e = NewElement(ElementKind::Linesink, v);
      std::string label = "S";
      label += std::to_string(s);  // (not "S" + ...: GCC 12 warns falsely of an overlap)
      e.row.Set("Label", label);
      e.row.Set("StartingHead", 10.0);
      e.row.Set("EndingHead", 9.0);
      e.row.Set("Resistance", 1.0);
      Insert(db, e);
    }
    tx.Commit();
  }
  ExchangeLog log;
  int exported = 0;
  ImportCount first, second;
  Database from = Database::Open(source);
  Database into = Database::Open(target);
  const double tExport =
      Seconds([&] { exported = WriteElementFile(from, XmlKind::Linesink, file.string(), log); });
  const double tFirst = Seconds(
      [&] { first = ImportElementFile(into, XmlKind::Linesink, file.string(), schemas, log); });
  const double tSecond = Seconds(
      [&] { second = ImportElementFile(into, XmlKind::Linesink, file.string(), schemas, log); });
  std::printf("%d strings of %d vertices, file of %.1f MB\n", strings, vertices,
              static_cast<double>(fs::file_size(file)) / 1e6);
  std::printf("export                      %8.3f s (%d exported)\n", tExport, exported);
  std::printf("import into an empty project %7.3f s (%d of %d imported)\n", tFirst, first.accepted,
              first.total);
  std::printf("import again (all found)    %8.3f s (%d of %d imported)\n", tSecond, second.accepted,
              second.total);
  from.Close();
  into.Close();
  fs::remove_all(dir);
  return first.accepted == strings && second.accepted == 0 ? 0 : 1;
}
