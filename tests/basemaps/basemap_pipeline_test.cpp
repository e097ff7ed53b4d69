// Base maps in the redraw: the images under the vector maps, only the shown maps,
// a failing map told once, and the extents of the shown maps in Zoom Extents.
#include <gtest/gtest.h>

#include <stdexcept>

#include "core/error.h"
#include "core/error_trap.h"
#include "display/map_fixture.h"
#include "display/navigation.h"

namespace tarno::test {
namespace {

using Kind = RecordingCanvas::Kind;

// A map that draws one short line in its own colour and notes the order of draws.
class FakeMap : public BaseMapLayer {
 public:
  FakeMap(std::string name, bool raster, Colour colour, std::vector<std::string>* log,
          std::optional<MapExtents> extents = std::nullopt)
      : name_(std::move(name)), raster_(raster), colour_(colour), log_(log), extents_(extents) {}
  const std::string& Name() const override { return name_; }
  bool IsRaster() const override { return raster_; }
  std::optional<MapExtents> Extents() const override { return extents_; }
  void Draw(VGraphGDI& layer) override {
    if (log_ != nullptr) log_->push_back(name_);
    if (fail) throw Error("Cannot read the image \"" + name_ + "\"");
    const double xs[2] = {10, 20}, ys[2] = {10, 20};
    layer.vgGDIPolyline(xs, ys, 2, colour_, 0, kPenSolid);
  }
  bool fail = false;

 private:
  std::string name_;
  bool raster_;
  Colour colour_;
  std::vector<std::string>* log_;
  std::optional<MapExtents> extents_;
};

class BaseMapRedraw : public MapFixture {
 protected:
  FakeMap& Add(const std::string& name, bool raster, Colour colour,
               std::optional<MapExtents> extents = std::nullopt) {
    maps.push_back(std::make_unique<FakeMap>(name, raster, colour, &log, extents));
    return static_cast<FakeMap&>(*maps.back());
  }
  // The colours of the lines on Map2 since it was last cleared, in order.
  std::vector<Colour> BackgroundLines() const {
    std::vector<Colour> colours;
    for (const auto& op : map2.Ops()) {
      if (op.kind == Kind::Clear) colours.clear();
      if (op.kind == Kind::Polyline) colours.push_back(op.colour);
    }
    return colours;
  }
  BaseMapLayers maps;
  std::vector<std::string> log;
};

TEST_F(BaseMapRedraw, ImagesFirstThenVectorMapsEachInListOrderOnlyTheShown) {
  Add("roads.bbm", false, 1);
  Add("photo.tif", true, 2);
  Add("wells.dxf", false, 3).Show = false;
  Add("scan.jpg", true, 4);
  Add("rivers.shp", false, 5);
  view.SetBaseMaps(&maps);
  ASSERT_TRUE(view.Redraw(false, false));
  EXPECT_EQ(log, (std::vector<std::string>{"photo.tif", "scan.jpg", "roads.bbm", "rivers.shp"}));
  EXPECT_EQ(BackgroundLines(), (std::vector<Colour>{2, 4, 1, 5}));
  // On the visible map the background is copied under the elements.
  EXPECT_EQ(map.Recording().Count(Kind::Polyline, 2), 1);
  ui.Verify();
}

TEST_F(BaseMapRedraw, TheBackgroundIsDrawnAgainOnlyWhenItMust) {
  Add("photo.tif", true, 2);
  view.SetBaseMaps(&maps);
  view.Redraw(false, false);
  view.Redraw(false, false);  // the same window: Map2 stands
  EXPECT_EQ(log.size(), 1u);
  view.SetBaseMaps(&maps);  // a changed list draws the maps again
  view.Redraw(false, false);
  EXPECT_EQ(log.size(), 2u);
  view.SetBaseMaps(nullptr);
  view.Redraw(false, false);
  EXPECT_EQ(log.size(), 2u);
  EXPECT_TRUE(BackgroundLines().empty());
}

TEST_F(BaseMapRedraw, AMapThatFailsIsToldOnceAndTheOthersStillDraw) {
  Add("photo.tif", true, 2).fail = true;
  Add("roads.bbm", false, 1);
  view.SetBaseMaps(&maps);
  ui.ExpectMessage(kUnhandledErrorTitle,
                   UnhandledErrorLines("Redraw_Basemap", "Cannot read the image \"photo.tif\""));
  EXPECT_TRUE(view.Redraw(false, false));
  EXPECT_EQ(BackgroundLines(), (std::vector<Colour>{1}));
  // The window moves: the map fails again, silently.
  state.Window = WorldWindow{10, 210, 100, 0};
  EXPECT_TRUE(view.Redraw(false, false));
  EXPECT_EQ(log, (std::vector<std::string>{"photo.tif", "roads.bbm", "photo.tif", "roads.bbm"}));
  EXPECT_EQ(BackgroundLines(), (std::vector<Colour>{1}));
  ui.Verify();
}

TEST(ShownMaps, TheirExtentsTogetherLeavingOutHiddenAndEmptyMaps) {
  EXPECT_FALSE(ShownMapExtents(nullptr).has_value());
  BaseMapLayers maps;
  maps.push_back(std::make_unique<FakeMap>("a", true, 0, nullptr, MapExtents{0, 100, 50, -20}));
  maps.push_back(std::make_unique<FakeMap>("b", false, 0, nullptr, MapExtents{-5, 10, 300, 0}));
  maps.push_back(
      std::make_unique<FakeMap>("c", false, 0, nullptr, MapExtents{-900, 900, 900, -900}));
  maps.back()->Show = false;
  maps.push_back(std::make_unique<FakeMap>("d", false, 0, nullptr, std::nullopt));
  const std::optional<ModelExtents> e = ShownMapExtents(&maps);
  ASSERT_TRUE(e.has_value());
  EXPECT_DOUBLE_EQ(e->MinX, -5);
  EXPECT_DOUBLE_EQ(e->MaxX, 100);
  EXPECT_DOUBLE_EQ(e->MinY, -20);
  EXPECT_DOUBLE_EQ(e->MaxY, 300);
  maps[0]->Show = false;
  maps[1]->Show = false;
  EXPECT_FALSE(ShownMapExtents(&maps).has_value());
}

class BaseMapExtents : public BaseMapRedraw {
 protected:
  Navigator nav{state, view, ui};
};

TEST_F(BaseMapExtents, ZoomExtentsTakesInTheShownMaps) {
  AddWell(100, 50);
  AddWell(110, 60);
  Add("photo.tif", true, 2, MapExtents{-1000, 3000, 2000, 0});
  view.SetBaseMaps(&maps);
  nav.ZoomActions(kZoomExtents);
  EXPECT_LE(state.Window.Left, -1000);
  EXPECT_GE(state.Window.Right, 3000);
  EXPECT_LE(state.Window.Bottom, 0);
  EXPECT_GE(state.Window.Top, 2000);
  // Hidden, the map no longer counts: the window closes in on the wells.
  maps[0]->Show = false;
  nav.ZoomActions(kZoomExtents);
  EXPECT_GT(state.Window.Left, 0);
  EXPECT_LT(state.Window.Right, 300);
  ui.Verify();
}

}  // namespace
}  // namespace tarno::test
