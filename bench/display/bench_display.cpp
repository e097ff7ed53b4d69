// The redraw of the map on images of 1600 x 1000 pixels (the offscreen platform):
// the two example projects are built with the batch front end, example.trn is
// solved, and three redraws are timed, median of 20 runs each:
//   background  a redraw that rebuilds Map2 (the first redraw of a window);
//   elements    a redraw with the window unchanged: Map2 copied, elements,
//               contours and pathlines drawn over it (target: well under 100 ms);
//   zoom        ZoomActions zooming in and out in turn: the background rebuilt,
//               the window stored in the project;
//   haze        a background rebuilt with the haze on (a quarter of the runs).
//
//   tarno-bench-display [runs]
#include <sys/wait.h>
#include <unistd.h>

#include <QGuiApplication>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <iostream>
#include <string>
#include <vector>

#include "../support/quiet_ui.h"
#include "core/error.h"
#include "core/ui_port.h"
#include "display/map_state.h"
#include "display/navigation.h"
#include "display/qt_canvas.h"
#include "display/redraw.h"
#include "display/vgraph.h"
#include "solver/command_file.h"
#include "solver/model_settings.h"
#include "store/database.h"

namespace fs = std::filesystem;
using namespace tarno;

namespace {

constexpr int kWidth = 1600;
constexpr int kHeight = 1000;

using bench::QuietUserInterface;

std::string Quote(const std::string& s) {
  std::string q = "'";
  for (char c : s) {
    if (c == '\'') q += "'\\''";
    else q += c;
  }
  return q + "'";
}

int Shell(const std::string& command) {
  const int raw = std::system(command.c_str());
  return WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
}

double Median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  const std::size_t n = v.size();
  return n % 2 ? v[n / 2] : (v[n / 2 - 1] + v[n / 2]) / 2.0;
}

// Milliseconds of each of `runs` calls of `body`, `before` run untimed ahead of each.
std::vector<double> Time(int runs, const std::function<void()>& before,
                         const std::function<void()>& body) {
  std::vector<double> ms;
  for (int i = 0; i < runs; ++i) {
    if (before) before();
    const auto t0 = std::chrono::steady_clock::now();
    body();
    const auto t1 = std::chrono::steady_clock::now();
    ms.push_back(std::chrono::duration<double, std::milli>(t1 - t0).count());
  }
  return ms;
}

void Report(const std::string& project, const std::string& what, const std::vector<double>& ms) {
  std::printf("%-22s %-12s median %8.2f ms   min %8.2f   max %8.2f   (%zu runs)\n",
              project.c_str(), what.c_str(), Median(ms),
              *std::min_element(ms.begin(), ms.end()), *std::max_element(ms.begin(), ms.end()),
              ms.size());
}

std::int64_t CountOf(const fs::path& project, const std::string& sql) {
  Database db = Database::OpenReadOnly(project);
  Statement st = db.PrepareRaw(sql);
  st.Step();
  return st.GetInt64(0);
}

// Times the three redraws of one project. Returns the median of the element redraw.
double BenchProject(const fs::path& project, const std::string& baseName, bool solved, int runs) {
  QuietUserInterface ui;
  MapState state;
  state.ProjectOpen = true;
  state.projectFile = project;
  {
    Database db = Database::Open(project);
    ModelSettings settings;
    settings.Load(db);
    state.frame = ModelRestoreModelOrigin(db, settings.BasemapConvert);
    Statement st = db.PrepareRaw("select WINDOWX1, WINDOWX2, WINDOWY1, WINDOWY2 from Model");
    st.Step();
    state.Window = WorldWindow{st.GetDouble(0), st.GetDouble(1), st.GetDouble(3), st.GetDouble(2)};
  }
  state.solution.valid = solved;
  state.solution.directory = project.parent_path();
  state.solution.baseName = baseName;
  state.solution.contourLinesPresent = solved;
  state.solution.pathsPresent = solved;
  state.layers.pathlines = solved;

  QtMapSurface map;
  QtMapSurface map2;
  map.Resize(kWidth, kHeight);
  map2.Resize(kWidth, kHeight);
  VGraphGDI layer(&ui);
  MapView view(state, layer, ui, map, map2);
  Navigator nav(state, view, ui);

  const std::string name = project.filename().string();
  std::printf("%s: %lld vertices, %lld wells, %lld line-sink strings, solution %s\n",
              name.c_str(),
              static_cast<long long>(CountOf(project, "select count(*) from Vertices")),
              static_cast<long long>(CountOf(project, "select count(*) from Wells")),
              static_cast<long long>(CountOf(project, "select count(*) from LinesinkStrings")),
              solved ? "drawn" : "none");

  view.Redraw(false, false);  // the window takes the surface's aspect
  const auto background =
      Time(runs, [&] { view.RedrawBasemap = true; }, [&] { view.Redraw(false, false); });
  const int builds = view.BackgroundBuilds();
  const auto elements = Time(runs, nullptr, [&] { view.Redraw(false, false); });
  if (view.BackgroundBuilds() != builds) {
    std::fprintf(stderr, "an unchanged window rebuilt the background\n");
    std::exit(1);
  }
  int step = 0;
  const auto zoom = Time(runs, nullptr, [&] { nav.ZoomActions(step++ % 2 ? kZoomOut : kZoomIn); });
  if (view.BackgroundBuilds() != builds + runs) {
    std::fprintf(stderr, "a zoom did not rebuild the background\n");
    std::exit(1);
  }
  if (ui.messages != 0) {
    std::fprintf(stderr, "the redraws showed %d messages\n", ui.messages);
    std::exit(1);
  }
  // The background with the haze on (the default level, 3 pixels): the dot screen is
  // the slowest part of a background without base maps.
  state.layers.haze = true;
  const auto haze = Time(std::max(1, runs / 4), [&] { view.RedrawBasemap = true; },
                         [&] { view.Redraw(false, false); });
  state.layers.haze = false;
  Report(name, "background", background);
  Report(name, "elements", elements);
  Report(name, "zoom", zoom);
  Report(name, "haze", haze);
  return Median(elements);
}

}  // namespace

int main(int argc, char** argv) {
  const int runs = argc > 1 ? std::max(1, std::atoi(argv[1])) : 20;
  ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QGuiApplication app(argc, argv);

  const fs::path bin = fs::canonical("/proc/self/exe").parent_path();
  const fs::path build = bin.parent_path();
  const fs::path source = TARNO_SOURCE_DIR;
  std::string tmpl = (fs::temp_directory_path() / "tarno-bench-display-XXXXXX").string();
  if (::mkdtemp(tmpl.data()) == nullptr) {
    std::perror("mkdtemp");
    return 1;
  }
  const fs::path dir = tmpl;
  const std::string env = "TARNO_CONFIG_DIR=" + Quote((dir / "config").string()) + " ";
  const std::string quiet = " >" + Quote((dir / "out.txt").string()) + " 2>&1";

  int status = Shell(env + Quote((source / "scripts" / "make-examples").string()) + " " +
                     Quote(build.string()) + " " + Quote(dir.string()) + quiet);
  if (status != 0) {
    std::fprintf(stderr, "making the examples failed (status %d); see %s\n", status,
                 (dir / "out.txt").c_str());
    return 1;
  }
  status = Shell("cd " + Quote(dir.string()) + " && " + env + Quote((bin / "tarnocmd").string()) +
                 " solve example.trn" + quiet);
  if (status != 0) {
    std::fprintf(stderr, "solving example.trn failed (status %d); see %s\n", status,
                 (dir / "out.txt").c_str());
    return 1;
  }

  int rc = 0;
  try {
    const double example = BenchProject(dir / "example.trn", "example", true, runs);
    BenchProject(dir / "basin and range.trn", "basinrng", false, runs);
    std::printf("target: a redraw of the elements well under 100 ms: %s (%.2f ms)\n",
                example < 100.0 ? "met" : "NOT met", example);
  } catch (const std::exception& e) {
    std::fprintf(stderr, "benchmark failed: %s\n", e.what());
    rc = 1;
  }
  std::error_code ec;
  fs::remove_all(dir, ec);
  return rc;
}
