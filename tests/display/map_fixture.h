// A small project on disk and a map view over two recording surfaces, for the
// tests of the redraw pipeline and of navigation.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "display/canvas.h"
#include "display/map_state.h"
#include "display/redraw.h"
#include "display/vgraph.h"
#include "elements/element_store.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace tarno::test {

// A map surface whose image is the list of recorded drawing calls: copying one
// surface into another replays the calls, so Map's record after a redraw is the
// background followed by what was drawn over it.
class RecordingSurface : public MapSurface {
 public:
  RecordingSurface(int width, int height) : canvas_(width, height) {}
  Canvas& GetCanvas() override { return canvas_; }
  void Resize(int width, int height) override {
    canvas_ = RecordingCanvas(width, height);
    ++resizes;
  }
  void CopyImageFrom(MapSurface& other) override {
    auto& source = dynamic_cast<RecordingSurface&>(other);
    canvas_.ClearOps();
    for (const RecordingCanvas::Op& op : source.canvas_.Ops()) Replay(op);
    ++copies;
  }
  const std::vector<RecordingCanvas::Op>& Ops() const { return canvas_.Ops(); }
  RecordingCanvas& Recording() { return canvas_; }

  int copies = 0;
  int resizes = 0;

 private:
  void Replay(const RecordingCanvas::Op& op) {
    using K = RecordingCanvas::Kind;
    const auto n = static_cast<int>(op.points.size());
    switch (op.kind) {
      case K::Polyline: canvas_.Polyline(op.points.data(), n, op.colour, op.width, op.style); break;
      case K::Polygon:
        canvas_.Polygon(op.points.data(), n, op.colour, op.width, op.style, op.fill);
        break;
      case K::Circle:
        canvas_.Circle(op.points[0].x, op.points[0].y, op.points[1].x, op.points[1].y, op.colour,
                       op.width, op.style, op.fill);
        break;
      case K::Text:
        canvas_.Text(op.points[0], op.text, op.height, op.escapement, op.alignment, op.colour,
                     op.font);
        break;
      case K::Clip: canvas_.SetClipRect(op.points[0], op.points[1]); break;
      case K::ResetClip: canvas_.ResetClip(); break;
      case K::Clear: canvas_.Clear(op.colour); break;
      case K::Refresh: canvas_.Refresh(); break;
      case K::Image:
        canvas_.Image(op.points[0].x, op.points[0].y, op.points[1].x - op.points[0].x,
                      op.points[1].y - op.points[0].y, op.pixels.data(), op.imageWidth,
                      op.imageHeight);
        break;
    }
  }
  RecordingCanvas canvas_;
};

inline bool SameOp(const RecordingCanvas::Op& a, const RecordingCanvas::Op& b) {
  return a.kind == b.kind && a.points == b.points && a.colour == b.colour &&
         a.width == b.width && a.style == b.style && a.fill == b.fill && a.text == b.text &&
         a.font == b.font && a.height == b.height && a.escapement == b.escapement &&
         a.alignment == b.alignment && a.imageWidth == b.imageWidth &&
         a.imageHeight == b.imageHeight && a.pixels == b.pixels;
}

// True when `whole` begins with `prefix`.
inline bool StartsWith(const std::vector<RecordingCanvas::Op>& whole,
                       const std::vector<RecordingCanvas::Op>& prefix) {
  if (prefix.size() > whole.size()) return false;
  for (std::size_t i = 0; i < prefix.size(); ++i) {
    if (!SameOp(whole[i], prefix[i])) return false;
  }
  return true;
}

inline std::vector<RecordingCanvas::Op> Tail(const std::vector<RecordingCanvas::Op>& whole,
                                             std::size_t from) {
  return {whole.begin() + static_cast<std::ptrdiff_t>(std::min(from, whole.size())), whole.end()};
}

// A new project with a window of 200 by 100 units over a map of 200 by 100 pixels
// (the window already has the surface's aspect, so the layer leaves it alone).
class MapFixture : public ::testing::Test {
 protected:
  static constexpr int kWidth = 200;
  static constexpr int kHeight = 100;

  MapFixture() : MapFixture(kWidth, kHeight) {}
  MapFixture(int width, int height)
      : map(width, height), map2(width, height), view(state, layer, ui, map, map2) {}

  void SetUp() override {
    temp.emplace("tarno-map");
    dir = temp->Path();
    project = dir / "map test.trn";
    DBNewDatabase(project, "Map test", true, true);
    state.ProjectOpen = true;
    state.projectFile = project;
    state.Window = WorldWindow{0.0, 200.0, 100.0, 0.0};
    state.solution.directory = dir;
    state.solution.baseName = "maptest";
    state.options.Background = Rgb(250, 250, 250);
    state.options.HazeColor = Rgb(7, 8, 9);
    state.options.ContourColor = Rgb(1, 2, 3);
    state.options.PathlineColor = Rgb(4, 5, 6);
    Execute("update Model set WINDOWX1 = 0, WINDOWX2 = 200, WINDOWY1 = 0, WINDOWY2 = 100");
  }
  void TearDown() override { temp.reset(); }

  void Execute(const std::string& sql) {
    Database db = Database::Open(project);
    db.ExecuteRaw(sql);
  }
  std::int64_t Count(const std::string& sql) {
    Database db = Database::Open(project);
    Statement st = db.PrepareRaw(sql);
    st.Step();
    return st.GetInt64(0);
  }
  // A pumping well at (x, y).
  void AddWell(double x, double y) {
    Database db = Database::Open(project);
    Element w = NewElement(ElementKind::Well, {Vertex{0, -1, 0, x, y}});
    w.row.Set("Radius", 0.5);
    w.row.Set("Setback", 1.0);
    Insert(db, w);
    w.row.Set("Label", "W" + std::to_string(w.key));  // labelled by its VID
    Update(db, w);
  }
  WorldWindow StoredWindow() {
    Database db = Database::Open(project);
    Statement st = db.PrepareRaw("select WINDOWX1, WINDOWX2, WINDOWY1, WINDOWY2 from Model");
    st.Step();
    return WorldWindow{st.GetDouble(0), st.GetDouble(1), st.GetDouble(3), st.GetDouble(2)};
  }

  std::optional<TempDir> temp;
  std::filesystem::path dir;
  std::filesystem::path project;
  MapState state;
  ScriptedUserInterface ui;
  VGraphGDI layer{&ui};
  RecordingSurface map;
  RecordingSurface map2;
  MapView view;
};

}  // namespace tarno::test
