// The front end's side of a solve on a large model: writing the command file (with
// the blank result rows) and loading the extract file of the solver.
//
//   tarno-bench-frontend [segments] [repeats]
//
// Builds a project with `segments` head-specified line-sink segments (default
// 20000, in strings of 100 segments), 200 wells of four kinds and 100 test points,
// times ModelWriteInputFile (a new solve) and ToolsWriteTARNOElements on its own,
// then writes an extract file with the solver's record layout for every element
// and times the results loader on it. Each figure is the best of `repeats` runs
// (default 3). The target is under 1 s for each at 20000 segments.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "core/console_ui.h"
#include "solver/command_file.h"
#include "solver/model_settings.h"
#include "solver/results_loader.h"
#include "store/database.h"
#include "store/schema.h"
#include "../support/timing.h"

namespace fs = std::filesystem;
using namespace tarno;

namespace {

using tarno::bench::Seconds;

double Best(int repeats, const std::function<void()>& f) {
  double best = 1e300;
  for (int i = 0; i < repeats; ++i) best = std::min(best, Seconds(f));
  return best;
}

void BuildModel(Database& db, int segments) {
  db.ExecuteRaw("BEGIN");
  db.ExecuteRaw(
      "update Model set AQBase=0, AQThickness='30', AQHydCond=10, AQPorosity=0.25, "
      "CONTOURShow=1, TRACECompute=1, SOLVERIterations=3");
  Statement poly = db.PrepareRaw("insert into Polygons (Closed) values (0)");
  Statement vert = db.PrepareRaw("insert into Vertices (PID, Seq, X, Y) values (?, ?, ?, ?)");
  Statement ls = db.PrepareRaw(
      "insert into LinesinkStrings (PID, Label, HeadSpecified, StartingHead, EndingHead, "
      "Resistance, Width, Depth) values (?, ?, 1, ?, ?, ?, 2, 1)");
  const int perString = 100;
  for (int s = 0; s * perString < segments; ++s) {
    const int n = std::min(perString, segments - s * perString);
    poly.Reset();
    poly.Run();
    const std::int64_t pid = db.LastInsertId();
    for (int i = 0; i <= n; ++i) {
      vert.Reset();
      vert.Bind(1, pid)
          .Bind(2, static_cast<std::int64_t>(i) * 100)
          .Bind(3, 10.0 * i + 3.0 * s)
          .Bind(4, 50.0 * s + 5.0 * std::sin(0.1 * i));
      vert.Run();
    }
    ls.Reset();
    ls.Bind(1, pid)
        .Bind(2, std::string("River").append(std::to_string(s)))
        .Bind(3, 40.0 - 0.01 * s)
        .Bind(4, 38.0 - 0.01 * s)
        .Bind(5, s % 2 ? 0.5 : 0.0);
    ls.Run();
  }
  Statement pt = db.PrepareRaw("insert into Vertices (PID, Seq, X, Y) values (-1, -1, ?, ?)");
  Statement well = db.PrepareRaw(
      "insert into Wells (VID, Label, Head, Radius, HeadSpecified, PPWell, TopElev, BottomElev) "
      "values (?, ?, ?, 0.3, ?, ?, 25, 10)");
  for (int i = 0; i < 200; ++i) {
    pt.Reset();
    pt.Bind(1, 25.0 + 4.9 * i).Bind(2, 25.0 + 37.0 * (i % 50));
    pt.Run();
    well.Reset();
    well.Bind(1, db.LastInsertId())
        .Bind(2, std::string("W").append(std::to_string(i)))
        .Bind(3, i % 2 ? 35.0 : 500.0)
        .Bind(4, static_cast<std::int64_t>(i % 2))
        .Bind(5, static_cast<std::int64_t>(i % 4 >= 2 ? 1 : 0));
    well.Run();
  }
  Statement tp = db.PrepareRaw("insert into TestPoints (VID, Label, ObsHead) values (?, ?, 36)");
  for (int i = 0; i < 100; ++i) {
    pt.Reset();
    pt.Bind(1, 31.0 + 9.7 * i).Bind(2, 40.0 + 20.0 * (i % 40));
    pt.Run();
    tp.Reset();
    tp.Bind(1, db.LastInsertId()).Bind(2, std::string("Obs").append(std::to_string(i)));
    tp.Run();
  }
  db.ExecuteRaw("COMMIT");
}

// An extract file as the solver writes it, for the rows the writer prepared.
void WriteExtractFile(Database& db, const fs::path& file) {
  std::ofstream out(file, std::ios::binary | std::ios::trunc);
  char buf[512];
  out << "* data points\r\n";
  {
    Statement st = db.PrepareRaw(
        "select X, Y, TestPoints.VID from TestPoints join Vertices on TestPoints.VID = "
        "Vertices.VID order by TestPoints.VID");
    while (st.Step()) {
      std::snprintf(buf, sizeof buf,
                    "@%15.6E,%14.6E,%14.6E,%14.6E,%14.6E,%14.6E,%14.6E,%14.6E,%14.6E,%14.6E,%14.6E,"
                    "%14.6E,%14.6E,%14.6E,TP_%06lld\r\n",
                    st.GetDouble(0), st.GetDouble(1), 20.0, 3000.0, 0.1, -0.2, 0.4, -0.8, 36.5,
                    0.0, 0.25, 10.0, 0.0, 0.0, static_cast<long long>(st.GetInt64(2)));
      out << buf;
    }
  }
  out << "* discharge specified wells\r\n";
  {
    Statement st = db.PrepareRaw(
        "select X, Y, Radius, TARNOLabel from WLResults where SpecifiedHead < -998");
    while (st.Step()) {
      std::snprintf(buf, sizeof buf, " %.8E, %.8E, %.8E, %.8E, %.8E, %s\r\n", st.GetDouble(0),
                    st.GetDouble(1), st.GetDouble(2), 500.0, 34.25, st.GetText(3).c_str());
      out << buf;
    }
  }
  out << "* head specified wells\r\n";
  {
    Statement st = db.PrepareRaw(
        "select X, Y, Radius, TARNOLabel, SpecifiedHead from WLResults where SpecifiedHead > -998");
    while (st.Step()) {
      std::snprintf(buf, sizeof buf, " %.8E, %.8E, %.8E, %.8E, %.8E, %.8E, %s\r\n",
                    st.GetDouble(0), st.GetDouble(1), st.GetDouble(2), 812.5, st.GetDouble(4),
                    1.5e-9, st.GetText(3).c_str());
      out << buf;
    }
  }
  out << "* head specified line sinks\r\n";
  {
    Statement st = db.PrepareRaw(
        "select X1, Y1, X2, Y2, SpecifiedHead, TARNOLabel from LSResults order by rowid");
    while (st.Step()) {
      std::snprintf(buf, sizeof buf,
                    " %.8E, %.8E, %.8E, %.8E, %.8E, %.8E, %.8E, %.8E, %.8E, %.8E, %.8E, %.8E, "
                    "%.8E, %s\r\n",
                    st.GetDouble(0), st.GetDouble(1), st.GetDouble(2), st.GetDouble(3),
                    st.GetDouble(4), st.GetDouble(4) + 0.01, 12.5, 2.0, 0.5, 1.0, 0.0, 0.0, 1e-7,
                    st.GetText(5).c_str());
      out << buf;
    }
  }
  out << "! leakage totals\r\n";
}

std::int64_t Count(Database& db, const std::string& sql) {
  Statement st = db.PrepareRaw(sql);
  st.Step();
  return st.GetInt64(0);
}

}  // namespace

int main(int argc, char** argv) {
  const int segments = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20000;
  const int repeats = argc > 2 ? std::max(1, std::atoi(argv[2])) : 3;
  const fs::path dir = fs::temp_directory_path() / ("tarno-bench-frontend-" + std::to_string(::getpid()));
  fs::remove_all(dir);
  fs::create_directories(dir);
  const fs::path project = dir / "bench.trn";
  std::ostringstream messages;
  ConsoleUserInterface ui(messages, Answer::OK);
  ui.SetModalHandler([](DialogModel&) {});

  int status = 0;
  try {
    DBNewDatabase(project, "Benchmark", true, true);
    ModelSettings settings;
    {
      Database db = Database::Open(project);
      Statement st = db.PrepareRaw("update Project set TARNOBaseName='bench', TARNOBasePath=?");
      st.Bind(1, dir.string());
      st.Run();
      BuildModel(db, segments);
      settings.Load(db);
    }
    SolutionState state;
    CommandFileContext ctx;
    ctx.projectPath = project;
    ctx.settings = &settings;
    ctx.state = &state;
    ctx.window = MapWindow{0, 1000, 10000, 0};
    ctx.ui = &ui;

    fs::path dat;
    const double tWrite = Best(repeats, [&] { dat = ModelWriteInputFile(kWriteNewSolve, false, true, ctx); });

    double tElements = 0;
    std::size_t elementBytes = 0;
    {
      Database db = Database::Open(project);
      ElementWriterContext ec;
      ec.settings = &settings;
      ec.state = &state;
      ec.window = ctx.window;
      ec.extents = ModelCheckExtents(db, ctx.window, std::nullopt);
      ec.frame = ModelRestoreModelOrigin(db, settings.BasemapConvert);
      ec.baseName = "bench";
      ec.ui = &ui;
      tElements = Best(repeats, [&] {
        std::ostringstream out;
        int level = 0;
        ToolsWriteTARNOElements(out, db, ec, true, false, "_", level);
        elementBytes = out.str().size();
      });
    }

    fs::path xtr = dir / "bench.XTR";
    ModelFrame frame;
    std::int64_t lsRows = 0, wlRows = 0;
    {
      Database db = Database::Open(project);
      WriteExtractFile(db, xtr);
      frame = ModelRestoreModelOrigin(db, settings.BasemapConvert);
      lsRows = Count(db, "select count(*) from LSResults");
      wlRows = Count(db, "select count(*) from WLResults");
    }
    LoadSummary summary;
    const double tLoad = Best(repeats, [&] { summary = ModelLoadTARNOResults(project, frame, ui); });

    Database db = Database::Open(project);
    const std::int64_t filled = Count(db, "select count(*) from LSResults where Discharge = 12.5");
    std::printf("front end, %d head line-sink segments, %lld result rows of wells, best of %d\n",
                segments, static_cast<long long>(wlRows), repeats);
    std::printf("  ModelWriteInputFile (new solve)   %8.3f s  (%s, %lld bytes)\n", tWrite,
                dat.filename().string().c_str(), static_cast<long long>(fs::file_size(dat)));
    std::printf("  ToolsWriteTARNOElements           %8.3f s  (%zu bytes)\n", tElements, elementBytes);
    std::printf("  ModelLoadTARNOResults             %8.3f s  (%lld bytes, %d lines, %d rows updated)\n",
                tLoad, static_cast<long long>(fs::file_size(xtr)), summary.linesRead,
                summary.rowsUpdated);
    if (lsRows != segments || filled != segments || summary.badRecords != 0) {
      std::fprintf(stderr,
                   "tarno-bench-frontend: %lld line-sink rows, %lld loaded, %d bad records "
                   "(expected %d, %d, 0)\n",
                   static_cast<long long>(lsRows), static_cast<long long>(filled),
                   summary.badRecords, segments, segments);
      status = 1;
    }
    const double limit = 1.0;
    if (segments == 20000 && (tWrite >= limit || tLoad >= limit))
      std::printf("  above the target of %.1f s\n", limit);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "tarno-bench-frontend: %s\n", e.what());
    status = 1;
  }
  std::error_code ec;
  fs::remove_all(dir, ec);
  return status;
}
