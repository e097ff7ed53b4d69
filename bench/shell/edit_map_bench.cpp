// The map editor on a large model: 1,000 line-sink strings of 21 vertices (20,000
// segments) written through the element layer, drawn on an image of 1600 x 1000
// pixels (the offscreen platform). Timed, median of the runs:
//   select        a click in the select state on a vertex: the vertex search, the
//                 owner's lookup, the Edit captions, the status texts, and the
//                 element before drawn normally and the new one highlighted over
//                 the picture (no redraw; target under 50 ms);
//   redraw        a redraw of the map with the window unchanged (the elements over
//                 the kept background), what an edit costs after it is written;
//   drag step     one pointer move of a vertex drag: the editor's move and the
//                 widget's paint of the map image with the rubber line (screen
//                 rate: well under 16 ms);
//   drop          the end of the drag: the vertex moved in the project and the map
//                 redrawn.
// Building the search's index on the editor's connection (Prepare, which the window
// runs when the mouse comes back after an open or a redraw) and the first click
// after it are reported apart.
//
//   tarno-bench-edit-map [runs]
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
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
#include "app/shell/map_editor.h"
#include "core/ui_port.h"
#include "display/map_state.h"
#include "display/qt_canvas.h"
#include "display/redraw.h"
#include "display/vgraph.h"
#include "elements/element_store.h"
#include "store/database.h"
#include "store/schema.h"

namespace fs = std::filesystem;
using namespace tarno;

namespace {

constexpr int kWidth = 1600;
constexpr int kHeight = 1000;
constexpr int kStrings = 1000;
constexpr int kVerticesPerString = 21;

using bench::QuietUserInterface;

class BenchHost : public EditorHost {
 public:
  explicit BenchHost(MapView& view) : view_(view) {}
  void Redraw() override {
    ++redraws;
    if (draw) view_.Redraw(false, false);
  }
  bool draw = false;
  int redraws = 0;

 private:
  MapView& view_;
};

double Ms(std::chrono::steady_clock::duration d) {
  return std::chrono::duration<double, std::milli>(d).count();
}

double Median(std::vector<double> v) {
  std::sort(v.begin(), v.end());
  return v[v.size() / 2];
}

// The string i: a zig-zag line across the model, 21 vertices 10 units apart in X.
double VertexX(int i, int k) { return 50.0 + (i % 40) * 240.0 + k * 10.0; }
double VertexY(int i, int k) { return 50.0 + (i / 40) * 390.0 + (k % 2) * 7.0; }

}  // namespace

int main(int argc, char** argv) {
  const int runs = argc > 1 ? std::max(3, std::atoi(argv[1])) : 50;
  ::setenv("QT_QPA_PLATFORM", "offscreen", 1);
  QGuiApplication app(argc, argv);

  const fs::path dir =
      fs::temp_directory_path() / ("tarno-bench-edit-map-" + std::to_string(::getpid()));
  fs::create_directories(dir);
  const fs::path project = dir / "large.trn";
  DBNewDatabase(project, "Edit bench", true, true);
  {
    Database db = Database::Open(project);
    for (int i = 0; i < kStrings; ++i) {
      std::vector<Vertex> vs;
      for (int k = 0; k < kVerticesPerString; ++k)
        vs.push_back({0, 0, 0, VertexX(i, k), VertexY(i, k)});
      Element e = NewElement(ElementKind::Linesink, std::move(vs));
      e.row.Set("Label", "S" + std::to_string(i + 1));
      e.row.Set("Resistance", 1.0);
      Insert(db, e);
    }
  }

  QuietUserInterface ui;
  MapState state;
  state.ProjectOpen = true;
  state.projectFile = project;
  state.Window = WorldWindow{0, 10000, 10000, 0};
  QtMapSurface map, map2;
  map.Resize(kWidth, kHeight);
  map2.Resize(kWidth, kHeight);
  VGraphGDI layer(&ui);
  MapView view(state, layer, ui, map, map2);
  view.Redraw(false, false);  // binds the layer; the window takes the surface's aspect
  BenchHost host(view);
  MapEditor editor(state, layer, ui, host);

  std::printf("model: %d line-sink strings, %d segments, %d vertices; surface %d x %d\n", kStrings,
              kStrings * (kVerticesPerString - 1), kStrings * kVerticesPerString, kWidth, kHeight);

  // The device pixel of a map point, for the synthetic clicks.
  auto pixel = [&](double x, double y) { return layer.vgGDIWorldToDevice(x, y); };
  int n = 0;
  auto click = [&] {
    // A vertex of another string each time, so that no click continues a cycle.
    const int i = (n * 37) % kStrings, k = (n * 7) % kVerticesPerString;
    ++n;
    const DevicePoint p = pixel(VertexX(i, k), VertexY(i, k));
    editor.MouseDown(kLeftButton, 0, p.x, p.y);
    editor.MouseUp(kLeftButton, 0, p.x, p.y);
    if (editor.SelectedKind() != 2) {
      std::fprintf(stderr, "a click on a vertex selected nothing\n");
      std::exit(1);
    }
  };
  auto time = [&](const std::function<void()>& f) {
    const auto t0 = std::chrono::steady_clock::now();
    f();
    return Ms(std::chrono::steady_clock::now() - t0);
  };

  const double prepare = time([&] { editor.Prepare(); });
  const double first = time(click);
  std::vector<double> select, redraw, drag, drop;
  for (int r = 0; r < runs; ++r) select.push_back(time(click));
  if (host.redraws != 0) {
    std::fprintf(stderr, "a selection redrew the map\n");
    std::exit(1);
  }
  for (int r = 0; r < std::max(3, runs / 5); ++r)
    redraw.push_back(time([&] { view.Redraw(false, false); }));

  // Drags: select a vertex, Move, press, then pointer moves, then the drop.
  QImage screen(kWidth, kHeight, QImage::Format_ARGB32_Premultiplied);
  for (int r = 0; r < std::max(3, runs / 5); ++r) {
    host.draw = false;
    click();
    editor.Command("EDIT_CMDS(1)");
    const DevicePoint from = pixel(editor.LastClickX(), editor.LastClickY());
    editor.MouseDown(kLeftButton, 0, from.x, from.y);
    for (int s = 1; s <= 10; ++s) {
      drag.push_back(time([&] {
        editor.MouseMove(kLeftButton, 0, from.x + 3 * s, from.y + 2 * s);
        // What the widget's paint does with it: the picture, then the rubber line.
        QPainter p(&screen);
        p.drawImage(0, 0, map.Image());
        const RubberShape rs = editor.Rubber();
        if (rs.kind == RubberShape::Kind::Line) p.drawLine(rs.x1, rs.y1, rs.x2, rs.y2);
      }));
    }
    host.draw = true;
    drop.push_back(time([&] { editor.MouseUp(kLeftButton, 0, from.x + 30, from.y + 20); }));
  }

  std::printf("prepare (builds the search index):     %8.2f ms\n", prepare);
  std::printf("first click after it:                  %8.2f ms\n", first);
  std::printf("select       median %8.2f ms  (%d runs)\n", Median(select), runs);
  std::printf("redraw       median %8.2f ms  (%zu runs)\n", Median(redraw), redraw.size());
  std::printf("drag step    median %8.2f ms  (%zu steps)\n", Median(drag), drag.size());
  std::printf("drop         median %8.2f ms  (%zu drags)\n", Median(drop), drop.size());
  editor.Reset();
  fs::remove_all(dir);
  if (ui.messages != 0) {
    std::fprintf(stderr, "%d unexpected messages\n", ui.messages);
    return 1;
  }
  return 0;
}
