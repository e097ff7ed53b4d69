// Shared fixture of the drawing tests: a new project in a temporary folder, a
// recording surface bound to a graphics layer, and helpers that insert elements.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "display/canvas.h"
#include "display/elem_draw.h"
#include "elements/element_store.h"
#include "display/vgraph.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace tarno::testing {

using Kind = RecordingCanvas::Kind;

class DrawTest : public ::testing::Test {
 protected:
  void SetUp() override {
    temp_.emplace("tarno-draw");
    dir_ = temp_->Path();
    DBNewDatabase(dir_ / "model.trn", "Drawing test", true, true);
    db_ = Database::Open(dir_ / "model.trn");
    state_.ProjectOpen = true;
    state_.solution.directory = dir_;
    state_.solution.baseName = "model";
    Bind({0, 100, 100, 0});
  }
  void TearDown() override {
    db_.Close();
    temp_.reset();
  }

  // Binds the square surface to a window and forgets what was drawn so far.
  void Bind(WorldWindow w) {
    state_.Window = w;
    ASSERT_EQ(g_.vgGDIInitObject(canvas_, state_.Window, false, 10.0), 0);
    canvas_.ClearOps();
  }

  DrawContext Ctx() { return DrawContext{g_, state_, db_, ui_}; }

  void Sql(const std::string& sql) { db_.ExecuteRaw(sql); }

  std::int64_t Point(double x, double y) { return AddVertex(db_, x, y, -1, -1); }

  std::int64_t String(const std::vector<std::pair<double, double>>& xy) {
    const std::int64_t pid = AddPolygon(db_, 0);
    std::int64_t seq = 0;
    for (const auto& [x, y] : xy) {
      AddVertex(db_, x, y, pid, seq);
      seq += 100;
    }
    return pid;
  }

  std::int64_t VidAt(std::int64_t pid, int index) {
    const std::vector<Vertex> v = LoadVertices(db_, pid);
    return index >= 0 && index < static_cast<int>(v.size()) ? v[index].VID : 0;
  }

  std::vector<RecordingCanvas::Op> OpsOf(Kind kind) const {
    std::vector<RecordingCanvas::Op> out;
    for (const auto& op : canvas_.Ops())
      if (op.kind == kind) out.push_back(op);
    return out;
  }
  // The colours of every figure drawn (polylines, polygons, circles and texts).
  std::set<Colour> Colours() const {
    std::set<Colour> out;
    for (const auto& op : canvas_.Ops())
      if (op.kind == Kind::Polyline || op.kind == Kind::Polygon || op.kind == Kind::Circle ||
          op.kind == Kind::Text)
        out.insert(op.colour);
    return out;
  }
  int Figures() const {
    return static_cast<int>(canvas_.Ops().size()) - canvas_.Count(Kind::Clip) -
           canvas_.Count(Kind::ResetClip) - canvas_.Count(Kind::Clear) -
           canvas_.Count(Kind::Refresh);
  }
  DevicePoint Dev(double x, double y) const { return g_.vgGDIWorldToDevice(x, y); }

  std::optional<test::TempDir> temp_;
  std::filesystem::path dir_;
  Database db_;
  ScriptedUserInterface ui_;
  VGraphGDI g_{&ui_};
  RecordingCanvas canvas_{800, 800};
  MapState state_;
};

}  // namespace tarno::testing
