// CAD layers: a DXF written by OGR read back into areas, lines, points and texts
// and drawn in the map's colour; DWG refused; bad drawings named.
#include <gtest/gtest.h>

#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include "basemaps/cad_layer.h"
#include "core/error.h"
#include "display/vgraph.h"
#include "support/temp_dir.h"

namespace tarno::test {
namespace {

namespace fs = std::filesystem;
using Kind = RecordingCanvas::Kind;

// A DXF with a line from (0, 0) to (100, 50) to (200, 0), a point at (50, 80), the
// text "Well field" 5 units high at (120, 90), and a square area of 20 units at
// (10, 10).
void WriteDxf(const fs::path& path) {
  GDALAllRegister();
  GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("DXF");
  ASSERT_NE(driver, nullptr);
  GDALDataset* ds = driver->Create(path.string().c_str(), 0, 0, 0, GDT_Unknown, nullptr);
  ASSERT_NE(ds, nullptr);
  OGRLayer* layer = ds->CreateLayer("entities", nullptr, wkbUnknown, nullptr);
  ASSERT_NE(layer, nullptr);
  auto add = [&](const char* wkt, const char* style) {
    OGRFeature feature(layer->GetLayerDefn());
    OGRGeometry* geometry = nullptr;
    ASSERT_EQ(OGRGeometryFactory::createFromWkt(wkt, nullptr, &geometry), OGRERR_NONE);
    feature.SetGeometryDirectly(geometry);
    if (style != nullptr) feature.SetStyleString(style);
    ASSERT_EQ(layer->CreateFeature(&feature), OGRERR_NONE);
  };
  add("LINESTRING (0 0,100 50,200 0)", nullptr);
  add("POINT (50 80)", nullptr);
  add("POINT (120 90)", "LABEL(f:\"Arial\",t:\"Well field\",s:5g)");
  add("POLYGON ((10 10,30 10,30 30,10 30,10 10))", "BRUSH(fc:#ff0000)");
  GDALClose(ds);
}

BaseMapRow Row(const fs::path& p, int colour) {
  BaseMapRow r;
  r.MapName = p.string();
  r.Color = colour;
  return r;
}

std::string ErrorOf(const fs::path& p) {
  try {
    OpenCadLayer(Row(p, 0));
  } catch (const Error& e) {
    return e.what();
  }
  return "(no error)";
}

TEST(CadColour, TheRowsRgbOrBlack) {
  EXPECT_EQ(CADColorConvert(33023), 33023);
  EXPECT_EQ(CADColorConvert(0xFFFFFF), 0xFFFFFF);
  EXPECT_EQ(CADColorConvert(-1), 0);
  EXPECT_EQ(CADColorConvert(0x1000000), 0);
  EXPECT_EQ(CADColorConvert(static_cast<int>(0x80000008u)), 0);  // a system colour
}

TEST(CadLayerRead, ADxfGivesItsFourKindsOfFigure) {
  TempDir dir;
  WriteDxf(dir / "site.dxf");
  CadLayer layer(Row(dir / "site.dxf", Rgb(255, 0, 0)));
  EXPECT_FALSE(layer.IsRaster());
  ASSERT_EQ(layer.Lines().size(), 1u);
  EXPECT_EQ(layer.Lines()[0].xs, (std::vector<double>{0, 100, 200}));
  EXPECT_EQ(layer.Lines()[0].ys, (std::vector<double>{0, 50, 0}));
  ASSERT_EQ(layer.Points().size(), 1u);
  EXPECT_DOUBLE_EQ(layer.Points()[0].xs[0], 50);
  ASSERT_EQ(layer.Texts().size(), 1u);
  EXPECT_EQ(layer.Texts()[0].text, "Well field");
  EXPECT_DOUBLE_EQ(layer.Texts()[0].height, 5);
  ASSERT_EQ(layer.Areas().size(), 1u);
  EXPECT_DOUBLE_EQ(layer.Areas()[0].left, 10);
  EXPECT_DOUBLE_EQ(layer.Areas()[0].top, 30);
  const MapExtents e = *layer.Extents();
  EXPECT_DOUBLE_EQ(e.Left, 0);
  EXPECT_DOUBLE_EQ(e.Right, 200);
  EXPECT_DOUBLE_EQ(e.Bottom, 0);
  EXPECT_DOUBLE_EQ(e.Top, 90);
  const std::string name = (dir / "site.dxf").string();
  EXPECT_EQ(layer.LayerNames(),
            (std::vector<std::string>{"[CADArea]" + name, "[CADLine]" + name, "[CADPoint]" + name,
                                      "[CADText]" + name}));
}

TEST(CadLayerDraw, AreasLinesPointsTextsInTheMapsColourAtTheirPlaces) {
  TempDir dir;
  WriteDxf(dir / "site.dxf");
  const Colour orange = 33023;
  CadLayer layer(Row(dir / "site.dxf", orange));
  VGraphGDI g;
  RecordingCanvas canvas(400, 200);
  WorldWindow window{0, 200, 100, 0};  // two pixels a unit
  g.vgGDIInitObject(canvas, window, false, 10.0);
  layer.Draw(g);
  const auto& ops = canvas.Ops();
  ASSERT_EQ(ops.size(), 4u);
  EXPECT_EQ(ops[0].kind, Kind::Polygon);
  EXPECT_EQ(ops[0].fill, orange);
  EXPECT_EQ(ops[0].points.front(), (DevicePoint{20, 180}));
  EXPECT_EQ(ops[1].kind, Kind::Polyline);
  EXPECT_EQ(ops[1].colour, orange);
  EXPECT_EQ(ops[1].points, (std::vector<DevicePoint>{{0, 200}, {200, 100}, {400, 200}}));
  EXPECT_EQ(ops[2].kind, Kind::Circle);
  EXPECT_EQ(ops[3].kind, Kind::Text);
  EXPECT_EQ(ops[3].text, "Well field");
  EXPECT_EQ(ops[3].font, "Times");
  EXPECT_EQ(ops[3].colour, orange);
  EXPECT_EQ(ops[3].points[0], (DevicePoint{240, 20}));
  EXPECT_EQ(ops[3].height, 10);  // 5 units of 2 pixels

  // Zoomed out a hundred times the text is too small to read and is left out;
  // the window beside the drawing draws nothing at all.
  RecordingCanvas far(400, 200);
  WorldWindow wide{-10000, 10000, 5000, -5000};
  g.vgGDIInitObject(far, wide, false, 10.0);
  layer.Draw(g);
  EXPECT_EQ(far.Count(Kind::Text), 0);
  EXPECT_EQ(far.Count(Kind::Polyline), 1);
  RecordingCanvas beside(400, 200);
  WorldWindow away{1000, 1200, 1100, 1000};
  g.vgGDIInitObject(beside, away, false, 10.0);
  layer.Draw(g);
  EXPECT_TRUE(beside.Ops().empty());
}

TEST(CadLayerRead, ADgnGivesItsLines) {
  TempDir dir;
  GDALAllRegister();
  GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("DGN");
  ASSERT_NE(driver, nullptr);
  const fs::path path = dir / "plan.dgn";
  GDALDataset* ds = driver->Create(path.string().c_str(), 0, 0, 0, GDT_Unknown, nullptr);
  ASSERT_NE(ds, nullptr);
  OGRLayer* layer = ds->CreateLayer("elements", nullptr, wkbUnknown, nullptr);
  ASSERT_NE(layer, nullptr);
  OGRFeature feature(layer->GetLayerDefn());
  OGRLineString line;
  line.addPoint(100, 200);
  line.addPoint(300, 250);
  feature.SetGeometry(&line);
  ASSERT_EQ(layer->CreateFeature(&feature), OGRERR_NONE);
  GDALClose(ds);

  CadLayer cad(Row(path, 0));
  ASSERT_EQ(cad.Lines().size(), 1u);
  EXPECT_NEAR(cad.Lines()[0].xs[1], 300, 1e-6);
  EXPECT_NEAR(cad.Lines()[0].ys[1], 250, 1e-6);
  EXPECT_TRUE(cad.Areas().empty());
}

TEST(CadLayerRead, DwgIsRefusedAndBadDrawingsAreNamed) {
  TempDir dir;
  ASSERT_TRUE(WriteFile(dir / "plan.dwg", "AC1015 and some bytes"));
  std::string message = ErrorOf(dir / "plan.dwg");
  EXPECT_NE(message.find((dir / "plan.dwg").string()), std::string::npos) << message;
  EXPECT_NE(message.find("DWG"), std::string::npos) << message;
  // Also in capitals, and whether or not the file is there.
  EXPECT_NE(ErrorOf(dir / "OTHER.DWG").find("DWG"), std::string::npos);

  ASSERT_TRUE(WriteFile(dir / "junk.dxf", "not a drawing at all\n"));
  message = ErrorOf(dir / "junk.dxf");
  EXPECT_NE(message.find((dir / "junk.dxf").string()), std::string::npos) << message;
  message = ErrorOf(dir / "missing.dgn");
  EXPECT_NE(message.find("missing.dgn"), std::string::npos) << message;
  EXPECT_NE(message.find("does not exist"), std::string::npos) << message;
}

}  // namespace
}  // namespace tarno::test
