// The shapefile base map layer: what it draws for a window, in which colours, with
// which labels, and how it fails on a file it cannot read.

#include <gtest/gtest.h>

#include <set>

#include "basemaps/dbf.h"
#include "basemaps/shape_layer.h"
#include "display/canvas.h"
#include "display/vgraph.h"
#include "support/temp_dir.h"

namespace tarno {
namespace {

using Kind = RecordingCanvas::Kind;

class ShapeLayerTest : public ::testing::Test {
 protected:
  void Bind(WorldWindow w) {
    ASSERT_EQ(g_.vgGDIInitObject(canvas_, w, false, 10.0), 0);
    canvas_.ClearOps();
  }

  // Three lines side by side at x = 10, 50 and 90, from y 10 to 90, with a table
  // of a kind (two "river", one "canal") and a name.
  std::string WriteLines() {
    const std::string spec = (dir_ / "lines.shp").string();
    CShapeFile f;
    f.SetFileSpec(CFileName(spec), CShapeFile::kCreate, ShapeType::PolyLine);
    for (double x : {10.0, 50.0, 90.0}) {
      CPart part;
      part.Add(x, 10);
      part.Add(x, 50);
      part.Add(x, 90);
      CPolyLine line;
      line.Add(part);
      f.Add(line);
    }
    WriteDBFColumns(
        dir_ / "lines.dbf",
        {{"KIND", "C", "", {std::string("river"), std::string("canal"), std::string("river")}},
         {"NAME", "C", "", {std::string("West"), std::string("Middle"), std::string("East")}}},
        3);
    return spec;
  }

  std::vector<RecordingCanvas::Op> OpsOf(Kind kind) const {
    std::vector<RecordingCanvas::Op> out;
    for (const auto& op : canvas_.Ops())
      if (op.kind == kind) out.push_back(op);
    return out;
  }

  test::TempDir dir_{"tarno-shape-layer"};
  VGraphGDI g_;
  RecordingCanvas canvas_{400, 400};
};

TEST_F(ShapeLayerTest, DrawsOnlyTheRecordsInsideTheWindowInTheRowColour) {
  BaseMapRow row;
  row.MapName = WriteLines();
  row.Color = Rgb(10, 20, 30);
  auto layer = OpenShapeLayer(row);
  ASSERT_TRUE(layer);
  EXPECT_FALSE(layer->IsRaster());
  EXPECT_EQ(layer->Name(), row.MapName);
  const auto ext = layer->Extents();
  ASSERT_TRUE(ext);
  EXPECT_DOUBLE_EQ(ext->Left, 10);
  EXPECT_DOUBLE_EQ(ext->Right, 90);
  EXPECT_DOUBLE_EQ(ext->Bottom, 10);
  EXPECT_DOUBLE_EQ(ext->Top, 90);

  Bind({0, 100, 100, 0});
  layer->Draw(g_);
  EXPECT_EQ(canvas_.Count(Kind::Polyline), 3);
  EXPECT_EQ(canvas_.Count(Kind::Polyline, Rgb(10, 20, 30)), 3);
  EXPECT_EQ(canvas_.Count(Kind::Text), 0);

  // A window around the middle line alone.
  Bind({40, 60, 60, 40});
  layer->Draw(g_);
  const auto lines = OpsOf(Kind::Polyline);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].points.size(), 3u);
  EXPECT_EQ(lines[0].points[1], g_.vgGDIWorldToDevice(50, 50));

  // A window beside every line draws nothing.
  Bind({200, 300, 300, 200});
  layer->Draw(g_);
  EXPECT_EQ(canvas_.Ops().size(), 0u);
}

TEST_F(ShapeLayerTest, ColourFieldGivesEachValueItsOwnColourAndLabelsComeFromTheTextField) {
  BaseMapRow row;
  row.MapName = WriteLines();
  row.Color = Rgb(1, 2, 3);
  row.UseColorField = true;
  row.ColorField = "kind";  // field names match without regard to case
  row.TextField = "NAME";
  auto layer = std::make_unique<ShapeLayer>(row);
  ASSERT_EQ(layer->ValueColours().size(), 2u);
  const Colour river = layer->ValueColours().at("river");
  const Colour canal = layer->ValueColours().at("canal");
  EXPECT_NE(river, canal);

  Bind({0, 100, 100, 0});
  layer->Draw(g_);
  const auto lines = OpsOf(Kind::Polyline);
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0].colour, river);
  EXPECT_EQ(lines[1].colour, canal);
  EXPECT_EQ(lines[2].colour, river);
  const auto texts = OpsOf(Kind::Text);
  ASSERT_EQ(texts.size(), 3u);
  std::set<std::string> names;
  for (const auto& t : texts) names.insert(t.text);
  EXPECT_EQ(names, (std::set<std::string>{"West", "Middle", "East"}));
  // A line's label stands on its middle vertex.
  EXPECT_EQ(texts[1].points.at(0).x, g_.vgGDIWorldToDevice(50, 50).x);
}

TEST_F(ShapeLayerTest, NoColourFieldOrAnUnknownFieldFallsBackToTheRowColour) {
  BaseMapRow row;
  row.MapName = WriteLines();
  row.Color = Rgb(200, 0, 0);
  row.UseColorField = true;
  row.ColorField = "__NONE__";
  Bind({0, 100, 100, 0});
  ShapeLayer(row).Draw(g_);
  EXPECT_EQ(canvas_.Count(Kind::Polyline, Rgb(200, 0, 0)), 3);

  // UseColorField off: the field is ignored.
  row.ColorField = "KIND";
  row.UseColorField = false;
  EXPECT_TRUE(ShapeLayer(row).ValueColours().empty());

  // A field the table lacks, and a text field it lacks: row colour, no labels.
  row.UseColorField = true;
  row.ColorField = "DEPTH";
  row.TextField = "LABEL";
  canvas_.ClearOps();
  ShapeLayer(row).Draw(g_);
  EXPECT_EQ(canvas_.Count(Kind::Polyline, Rgb(200, 0, 0)), 3);
  EXPECT_EQ(canvas_.Count(Kind::Text), 0);

  // Without a table at all.
  std::filesystem::remove(dir_ / "lines.dbf");
  canvas_.ClearOps();
  ShapeLayer(row).Draw(g_);
  EXPECT_EQ(canvas_.Count(Kind::Polyline, Rgb(200, 0, 0)), 3);
}

TEST_F(ShapeLayerTest, PointsAndPolygonsAndNullRecords) {
  const std::string pts = (dir_ / "wells.shp").string();
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(pts), CShapeFile::kCreate, ShapeType::Point);
    f.Add(CPoint(20, 20));
    f.Add(CPoint());  // a null record
    f.Add(CPoint(80, 80));
  }
  BaseMapRow row;
  row.MapName = pts;
  row.Color = Rgb(0, 0, 255);
  ShapeLayer points(row);
  EXPECT_EQ(points.Records().size(), 2u);
  Bind({0, 50, 50, 0});
  points.Draw(g_);
  // One dot (a filled circle) for the one point inside.
  EXPECT_EQ(canvas_.Count(Kind::Circle, Rgb(0, 0, 255)), 1);

  const std::string polys = (dir_ / "ponds.shp").string();
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(polys), CShapeFile::kCreate, ShapeType::Polygon);
    CPart outer, hole;
    for (auto [x, y] : {std::pair{0.0, 0.0}, {0.0, 40.0}, {40.0, 40.0}, {40.0, 0.0}, {0.0, 0.0}})
      outer.Add(x, y);
    for (auto [x, y] : {std::pair{10.0, 10.0}, {30.0, 10.0}, {30.0, 30.0}, {10.0, 10.0}})
      hole.Add(x, y);
    CPolygon p;
    p.Add(outer);
    p.Add(hole);
    f.Add(p);
  }
  row.MapName = polys;
  canvas_.ClearOps();
  ShapeLayer(row).Draw(g_);
  const auto rings = OpsOf(Kind::Polygon);
  ASSERT_EQ(rings.size(), 2u);
  EXPECT_LT(rings[0].fill, 0);  // outlines only
  EXPECT_EQ(rings[0].points.size(), 5u);
  EXPECT_EQ(rings[1].points.size(), 4u);
}

TEST_F(ShapeLayerTest, ALineOfMoreThanTheWorldLimitIsDrawnWhole) {
  const std::string spec = (dir_ / "long.shp").string();
  const int n = kMaxWorldPolylinePoints * 2 + 7;
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(spec), CShapeFile::kCreate, ShapeType::PolyLine);
    CPart part;
    for (int i = 0; i < n; ++i) part.Add(100.0 * i / n, 50);
    CPolyLine line;
    line.Add(part);
    f.Add(line);
  }
  BaseMapRow row;
  row.MapName = spec;
  Bind({0, 100, 100, 0});
  ShapeLayer(row).Draw(g_);
  const auto runs = OpsOf(Kind::Polyline);
  ASSERT_EQ(runs.size(), 3u);
  std::size_t total = 0;
  for (const auto& r : runs) total += r.points.size();
  EXPECT_EQ(total, static_cast<std::size_t>(n + 2));  // the runs share their joints
  EXPECT_EQ(runs[0].points.back(), runs[1].points.front());
}

TEST_F(ShapeLayerTest, AFileThatCannotBeReadThrowsAnErrorNamingIt) {
  BaseMapRow row;
  row.MapName = (dir_ / "missing.shp").string();
  try {
    OpenShapeLayer(row);
    FAIL() << "no error";
  } catch (const ShapeFileError& e) {
    EXPECT_EQ(e.number(), shape_error::kFileMissing);
    EXPECT_NE(std::string(e.what()).find("missing.shp"), std::string::npos);
  }

  // A table with a broken header, asked for a label field.
  row.MapName = WriteLines();
  row.TextField = "NAME";
  ASSERT_TRUE(test::WriteFile(dir_ / "lines.dbf", std::string(40, '\x03')));
  try {
    ShapeLayer layer(row);
    FAIL() << "no error";
  } catch (const Error& e) {
    EXPECT_NE(std::string(e.what()).find("lines.dbf"), std::string::npos) << e.what();
  }
}

TEST(DistinctColoursTest, EveryColourDiffersAndTheListIsStable) {
  for (int n : {0, 1, 2, 16, 1000}) {
    const auto colours = DistinctColours(n);
    ASSERT_EQ(colours.size(), static_cast<std::size_t>(n));
    EXPECT_EQ(std::set<Colour>(colours.begin(), colours.end()).size(), colours.size());
    EXPECT_EQ(colours, DistinctColours(n));
  }
  // The first colours are far apart, not shades of one.
  const auto c = DistinctColours(2);
  const int d = std::abs(RedOf(c[0]) - RedOf(c[1])) + std::abs(GreenOf(c[0]) - GreenOf(c[1])) +
                std::abs(BlueOf(c[0]) - BlueOf(c[1]));
  EXPECT_GT(d, 150);
}

}  // namespace
}  // namespace tarno
