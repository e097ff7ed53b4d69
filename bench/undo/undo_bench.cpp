// The cost of the edit history on a large project.
//
//   tarno-bench-undo [wells] [ops]
//
// Builds a project with `wells` wells (default 5000) and 100 line-sink strings of
// 100 vertices, then times, each figure the mean over `ops` operations (default
// 50), each on a connection of its own as the program opens one per operation:
//   - adding a well through AddElement without an edit history and with one,
//   - undoing and redoing one such add,
//   - deleting a string of 100 vertices and undoing it,
//   - opening a connection, and opening one with an operation that writes nothing,
// and, once, one operation that deletes every well (record, undo, redo).
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <sstream>
#include <string>

#include "core/console_ui.h"
#include "elements/element_ops.h"
#include "store/database.h"
#include "store/schema.h"
#include "store/undo_history.h"
#include "../support/timing.h"

namespace fs = std::filesystem;
using namespace tarno;

namespace {

using tarno::bench::Seconds;

void BuildModel(const std::string& path, int wells) {
  Database db = Database::Open(path);
  db.ExecuteRaw("BEGIN");
  Statement vert = db.PrepareRaw("insert into Vertices (PID, Seq, X, Y) values (?, ?, ?, ?)");
  Statement well =
      db.PrepareRaw("insert into Wells (VID, Label, Head, Radius) values (?, ?, 10, 0.3)");
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
  for (int s = 0; s < 100; ++s) {
    poly.Reset();
    poly.Run();
    const std::int64_t pid = db.LastInsertId();
    ls.Reset();
    ls.Bind(1, pid).Bind(2, "LS" + std::to_string(s)).Run();
    for (int k = 0; k < 100; ++k) {
      vert.Reset();
      vert.Bind(1, pid).Bind(2, k * 100).Bind(3, 7.0 * k).Bind(4, 1000.0 + 11.0 * s).Run();
    }
  }
  db.ExecuteRaw("COMMIT");
}

}  // namespace

int main(int argc, char** argv) {
  const int wells = argc > 1 ? std::atoi(argv[1]) : 5000;
  const int ops = argc > 2 ? std::atoi(argv[2]) : 50;
  const fs::path dir = fs::temp_directory_path() / ("tarno-bench-undo-" + std::to_string(getpid()));
  fs::create_directories(dir);
  const std::string path = (dir / "b.trn").string();
  DBNewDatabase(path, "bench", true, true);
  BuildModel(path, wells);
  std::ostringstream quiet;
  ConsoleUserInterface ui(quiet);

  auto addWells = [&](const char* prefix) {
    return Seconds([&] {
             for (int i = 0; i < ops; ++i) {
               Database db = Database::Open(path);
               AddElement(db, ElementKind::Well, {{-5.0 * i, -7.0}},
                          {std::string("Label=") + prefix + std::to_string(i)}, ui);
             }
           }) /
           ops;
  };

  const double plain = addWells("A");
  UndoHistory history;
  history.Attach(path);
  const double recorded = addWells("B");
  const double undo = Seconds([&] {
                        for (int i = 0; i < ops; ++i) history.Undo();
                      }) /
                      ops;
  const double redo = Seconds([&] {
                        for (int i = 0; i < ops; ++i) history.Redo();
                      }) /
                      ops;

  // The recording's own cost: an operation that writes nothing, and opening the
  // connection alone.
  const double openOnly = Seconds([&] {
                            for (int i = 0; i < ops; ++i) Database db = Database::Open(path);
                          }) /
                          ops;
  const double emptyOp = Seconds([&] {
                           for (int i = 0; i < ops; ++i) {
                             Database db = Database::Open(path);
                             UndoScope op(history, db, "Nothing");
                             op.Commit();
                           }
                         }) /
                         ops;

  history.Clear();
  const int strings = std::min(ops, 100);
  const double deleteString = Seconds([&] {
                                for (int s = 0; s < strings; ++s) {
                                  Database db = Database::Open(path);
                                  DeleteElement(db, "LS" + std::to_string(s), ui);
                                }
                              }) /
                              strings;
  const double undoString = Seconds([&] {
                              for (int s = 0; s < strings; ++s) history.Undo();
                            }) /
                            strings;

  history.Clear();
  const double deleteAll = Seconds([&] {
    Database db = Database::Open(path);
    UndoScope op(history, db, "Delete All");
    db.ExecuteRaw("BEGIN; delete from Wells; delete from Vertices where PID = -1; COMMIT;");
    op.Commit();
  });
  const double undoAll = Seconds([&] { history.Undo(); });
  const double redoAll = Seconds([&] { history.Redo(); });

  std::printf("project: %d wells, 100 line-sink strings of 100 vertices; %d operations each\n",
              wells, ops);
  std::printf("open a connection           %8.3f ms\n", openOnly * 1e3);
  std::printf("open + empty operation      %8.3f ms\n", emptyOp * 1e3);
  std::printf("add a well, no history      %8.2f ms\n", plain * 1e3);
  std::printf("add a well, recorded        %8.2f ms\n", recorded * 1e3);
  std::printf("undo one add                %8.2f ms\n", undo * 1e3);
  std::printf("redo one add                %8.2f ms\n", redo * 1e3);
  std::printf("delete a string (recorded)  %8.2f ms\n", deleteString * 1e3);
  std::printf("undo one string delete      %8.2f ms\n", undoString * 1e3);
  std::printf("delete all %d wells (rec.)  %8.2f ms\n", wells, deleteAll * 1e3);
  std::printf("undo it                     %8.2f ms\n", undoAll * 1e3);
  std::printf("redo it                     %8.2f ms\n", redoAll * 1e3);
  history.Detach();
  fs::remove_all(dir);
  return 0;
}
