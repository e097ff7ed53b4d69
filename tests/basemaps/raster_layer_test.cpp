// Raster layers: an image written by GDAL, placed by its own georeferencing or its
// world file, drawn at the right place and from the right overview level.
#include <gtest/gtest.h>

#include <gdal_priv.h>

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <utility>

#include "basemaps/converters.h"
#include "basemaps/raster_layer.h"
#include "basemaps/world_file.h"
#include "core/error.h"
#include "display/vgraph.h"
#include "support/temp_dir.h"

namespace tarno::test {
namespace {

namespace fs = std::filesystem;
using Kind = RecordingCanvas::Kind;

// A GeoTIFF of width x height pixels whose bands are colour(band, column, row),
// with the transform gt (none when null).
void WriteTiff(const fs::path& path, int width, int height, int bands,
               const std::function<int(int, int, int)>& colour, const double* gt) {
  GDALAllRegister();
  GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("GTiff");
  ASSERT_NE(driver, nullptr);
  GDALDataset* ds = driver->Create(path.string().c_str(), width, height, bands, GDT_Byte, nullptr);
  ASSERT_NE(ds, nullptr);
  if (gt != nullptr) ds->SetGeoTransform(const_cast<double*>(gt));
  std::vector<std::uint8_t> row(static_cast<std::size_t>(width));
  for (int b = 1; b <= bands; ++b) {
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) row[x] = static_cast<std::uint8_t>(colour(b, x, y));
      ASSERT_EQ(ds->GetRasterBand(b)->RasterIO(GF_Write, 0, y, width, 1, row.data(), width, 1,
                                               GDT_Byte, 0, 0, nullptr),
                CE_None);
    }
  }
  GDALClose(ds);
}

// The four by two test image: each pixel's red is 10 x column + 1, green 100 + row,
// blue 200.
int Pattern(int band, int x, int y) { return band == 1 ? 10 * x + 1 : band == 2 ? 100 + y : 200; }
constexpr std::uint32_t PatternArgb(int x, int y) {
  return 0xFF000000u | (static_cast<std::uint32_t>(10 * x + 1) << 16) |
         (static_cast<std::uint32_t>(100 + y) << 8) | 200u;
}

BaseMapRow Row(const fs::path& p) {
  BaseMapRow r;
  r.MapName = p.string();
  return r;
}

// The one image a draw left on the canvas.
const RecordingCanvas::Op& OnlyImage(const RecordingCanvas& canvas) {
  EXPECT_EQ(canvas.Count(Kind::Image), 1);
  for (const auto& op : canvas.Ops())
    if (op.kind == Kind::Image) return op;
  static RecordingCanvas::Op none;
  return none;
}

std::uint32_t PixelAt(const RecordingCanvas::Op& op, int deviceX, int deviceY) {
  // The device pixel's place in the image (the image may be smaller than its box).
  const int w = op.points[1].x - op.points[0].x, h = op.points[1].y - op.points[0].y;
  const int ix = (deviceX - op.points[0].x) * op.imageWidth / w;
  const int iy = (deviceY - op.points[0].y) * op.imageHeight / h;
  return op.pixels.at(static_cast<std::size_t>(iy) * op.imageWidth + ix);
}

class RasterLayerTest : public ::testing::Test {
 protected:
  void Draw(RasterLayer& layer, RecordingCanvas& canvas, WorldWindow window) {
    g.vgGDIInitObject(canvas, window, false, 10.0);
    layer.Draw(g);
  }
  TempDir dir;
  VGraphGDI g;
};

TEST_F(RasterLayerTest, AGeoTiffIsPlacedByItsOwnTransformAndDrawnOverTheWindow) {
  const double gt[6] = {1000, 10, 0, 2020, 0, -10};  // 40 by 20 units
  WriteTiff(dir / "small.tif", 4, 2, 3, Pattern, gt);
  RasterLayer layer(Row(dir / "small.tif"));
  EXPECT_EQ(layer.Georeference(), RasterGeoreference::Embedded);
  const MapExtents e = *layer.Extents();
  EXPECT_DOUBLE_EQ(e.Left, 1000);
  EXPECT_DOUBLE_EQ(e.Right, 1040);
  EXPECT_DOUBLE_EQ(e.Bottom, 2000);
  EXPECT_DOUBLE_EQ(e.Top, 2020);
  EXPECT_TRUE(layer.IsRaster());

  // The window is the image: it fills the 400 by 200 surface.
  RecordingCanvas canvas(400, 200);
  Draw(layer, canvas, WorldWindow{1000, 1040, 2020, 2000});
  const auto& op = OnlyImage(canvas);
  EXPECT_EQ(op.points[0], (DevicePoint{0, 0}));
  EXPECT_EQ(op.points[1], (DevicePoint{400, 200}));
  EXPECT_EQ(PixelAt(op, 5, 5), PatternArgb(0, 0));
  EXPECT_EQ(PixelAt(op, 395, 195), PatternArgb(3, 1));
  EXPECT_EQ(PixelAt(op, 150, 150), PatternArgb(1, 1));
}

TEST_F(RasterLayerTest, AWindowLargerThanTheImageDrawsItInItsPlace) {
  const double gt[6] = {1000, 10, 0, 2020, 0, -10};
  WriteTiff(dir / "small.tif", 4, 2, 3, Pattern, gt);
  RasterLayer layer(Row(dir / "small.tif"));
  RecordingCanvas canvas(400, 200);
  Draw(layer, canvas, WorldWindow{980, 1060, 2030, 1990});  // 5 pixels of the surface a unit
  const auto& op = OnlyImage(canvas);
  EXPECT_EQ(op.points[0], (DevicePoint{100, 50}));
  EXPECT_EQ(op.points[1], (DevicePoint{300, 150}));
  EXPECT_EQ(PixelAt(op, 101, 51), PatternArgb(0, 0));
  EXPECT_EQ(PixelAt(op, 299, 149), PatternArgb(3, 1));

  // Beside the window: nothing is drawn.
  RecordingCanvas beside(400, 200);
  Draw(layer, beside, WorldWindow{0, 80, 40, 0});
  EXPECT_EQ(beside.Count(Kind::Image), 0);
}

TEST_F(RasterLayerTest, ZoomedInTheWholePixelsUnderTheWindowAreStretchedOverTheirPlace) {
  const double gt[6] = {1000, 10, 0, 2020, 0, -10};
  WriteTiff(dir / "small.tif", 4, 2, 3, Pattern, gt);
  RasterLayer layer(Row(dir / "small.tif"));
  // Inside pixel (2, 1), which spans 1020 to 1030 and 2000 to 2010: a hundred
  // device pixels a unit.
  RecordingCanvas canvas(200, 100);
  Draw(layer, canvas, WorldWindow{1021, 1023, 2009, 2008});
  const auto& op = OnlyImage(canvas);
  EXPECT_EQ(op.imageWidth, 1);
  EXPECT_EQ(op.imageHeight, 1);
  EXPECT_EQ(op.points[0], (DevicePoint{-100, -100}));
  EXPECT_EQ(op.points[1], (DevicePoint{900, 900}));
  EXPECT_EQ(op.pixels.at(0), PatternArgb(2, 1));

  // Across the corner of four pixels: the four, each in its own place.
  RecordingCanvas corner(200, 200);
  Draw(layer, corner, WorldWindow{1019, 1021, 2011, 2009});
  const auto& four = OnlyImage(corner);
  EXPECT_EQ(four.imageWidth, 2);
  EXPECT_EQ(four.imageHeight, 2);
  EXPECT_EQ(four.points[0], (DevicePoint{-900, -900}));
  EXPECT_EQ(four.points[1], (DevicePoint{1100, 1100}));
  EXPECT_EQ(four.pixels, (std::vector<std::uint32_t>{PatternArgb(1, 0), PatternArgb(2, 0),
                                                     PatternArgb(1, 1), PatternArgb(2, 1)}));
}

TEST_F(RasterLayerTest, TheWorldFileComesBeforeTheFilesOwnPlace) {
  const double gt[6] = {1000, 10, 0, 2020, 0, -10};
  WriteTiff(dir / "placed.tif", 4, 2, 3, Pattern, gt);
  WriteWorldFile(dir / "placed.tfw", WorldFile{1, 0, 0, -1, 0.5, 1.5});
  RasterLayer layer(Row(dir / "placed.tif"));
  EXPECT_EQ(layer.Georeference(), RasterGeoreference::WorldFile);
  EXPECT_EQ(*layer.WorldFilePath(), (dir / "placed.tfw").string());
  const MapExtents e = *layer.Extents();
  EXPECT_DOUBLE_EQ(e.Left, 0);
  EXPECT_DOUBLE_EQ(e.Right, 4);
  EXPECT_DOUBLE_EQ(e.Bottom, 0);
  EXPECT_DOUBLE_EQ(e.Top, 2);
}

TEST_F(RasterLayerTest, AnImageWithoutPlaceLiesAtTheOriginOneUnitAPixel) {
  WriteTiff(dir / "plain.tif", 4, 2, 1, Pattern, nullptr);
  RasterLayer layer(Row(dir / "plain.tif"));
  EXPECT_EQ(layer.Georeference(), RasterGeoreference::None);
  const MapExtents e = *layer.Extents();
  EXPECT_DOUBLE_EQ(e.Left, 0);
  EXPECT_DOUBLE_EQ(e.Right, 4);
  EXPECT_DOUBLE_EQ(e.Bottom, 0);
  EXPECT_DOUBLE_EQ(e.Top, 2);
  // One band of bytes is grey.
  RecordingCanvas canvas(400, 200);
  Draw(layer, canvas, WorldWindow{0, 4, 2, 0});
  EXPECT_EQ(PixelAt(OnlyImage(canvas), 150, 10), 0xFF0B0B0Bu);  // 10 x 1 + 1 = 11
}

// The image kinds the catalogue lists that GDAL reads, each placed by a world file
// of its kind.
TEST_F(RasterLayerTest, BmpJpegAndErdasImagesArePlacedByTheirWorldFiles) {
  WriteTiff(dir / "source.tif", 4, 2, 3, Pattern, nullptr);
  GDALAllRegister();
  GDALDataset* source =
      GDALDataset::FromHandle(GDALOpen((dir / "source.tif").string().c_str(), GA_ReadOnly));
  ASSERT_NE(source, nullptr);
  const std::pair<const char*, const char*> kinds[] = {
      {"BMP", "scan.bmp"}, {"JPEG", "photo.jpg"}, {"LAN", "scene.lan"}, {"EHdr", "grid.bil"}};
  for (const auto& [driverName, file] : kinds) {
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName(driverName);
    ASSERT_NE(driver, nullptr) << driverName;
    GDALDataset* copy =
        driver->CreateCopy((dir / file).string().c_str(), source, FALSE, nullptr, nullptr, nullptr);
    ASSERT_NE(copy, nullptr) << driverName;
    GDALClose(copy);
    fs::path world = dir / file;
    world.replace_extension(WorldFileExtensions(fs::path(file).extension().string()).back());
    WriteWorldFile(world, WorldFile{2, 0, 0, -2, 101, 199});
    RasterLayer layer(Row(dir / file));
    EXPECT_EQ(layer.Georeference(), RasterGeoreference::WorldFile) << file;
    const MapExtents e = *layer.Extents();
    EXPECT_DOUBLE_EQ(e.Left, 100) << file;
    EXPECT_DOUBLE_EQ(e.Right, 108) << file;
    EXPECT_DOUBLE_EQ(e.Top, 200) << file;
    EXPECT_DOUBLE_EQ(e.Bottom, 196) << file;
    RecordingCanvas canvas(400, 200);
    Draw(layer, canvas, WorldWindow{100, 108, 200, 196});
    EXPECT_EQ(OnlyImage(canvas).pixels.size(), 8u) << file;
  }
  GDALClose(source);
}

TEST_F(RasterLayerTest, BadFilesAreReportedWithTheirNames) {
  ASSERT_TRUE(WriteFile(dir / "junk.tif", "this is not an image"));
  try {
    RasterLayer layer(Row(dir / "junk.tif"));
    FAIL() << "a text file opened as an image";
  } catch (const Error& e) {
    EXPECT_NE(std::string(e.what()).find((dir / "junk.tif").string()), std::string::npos)
        << e.what();
    EXPECT_NE(std::string(e.what()).find("not a valid raster data set"), std::string::npos)
        << e.what();
  }
  try {
    OpenRasterLayer(Row(dir / "gone.jpg"));
    FAIL() << "a missing image opened";
  } catch (const Error& e) {
    EXPECT_NE(std::string(e.what()).find("gone.jpg"), std::string::npos) << e.what();
  }
  // A bad world file stops the image with the world file's name and line.
  WriteTiff(dir / "bad.tif", 4, 2, 1, Pattern, nullptr);
  ASSERT_TRUE(WriteFile(dir / "bad.tfw", "1\n0\n0\nminus one\n0\n0\n"));
  try {
    RasterLayer layer(Row(dir / "bad.tif"));
    FAIL() << "a bad world file was taken";
  } catch (const Error& e) {
    EXPECT_NE(std::string(e.what()).find("bad.tfw"), std::string::npos) << e.what();
    EXPECT_NE(std::string(e.what()).find("line 4"), std::string::npos) << e.what();
  }
  // A rotated image is refused rather than drawn in the wrong place.
  WriteTiff(dir / "turned.tif", 4, 2, 1, Pattern, nullptr);
  WriteWorldFile(dir / "turned.tfw", WorldFile{1, 0.2, 0.2, -1, 0, 0});
  EXPECT_THROW(RasterLayer(Row(dir / "turned.tif")), Error);
}

TEST(OverviewLevel, TheCoarsestOverviewThatStillFillsEveryPixel) {
  const std::vector<double> factors{2, 4, 8};
  EXPECT_EQ(PickOverviewLevel(0.25, factors), 0);
  EXPECT_EQ(PickOverviewLevel(1.0, factors), 0);
  EXPECT_EQ(PickOverviewLevel(1.9, factors), 0);
  EXPECT_EQ(PickOverviewLevel(2.0, factors), 1);
  EXPECT_EQ(PickOverviewLevel(3.99, factors), 1);
  EXPECT_EQ(PickOverviewLevel(4.0, factors), 2);
  EXPECT_EQ(PickOverviewLevel(1000.0, factors), 3);
  EXPECT_EQ(PickOverviewLevel(1000.0, {}), 0);
  EXPECT_EQ(OverviewFactors(10000, 300), (std::vector<int>{2, 4, 8, 16, 32, 64}));
  EXPECT_EQ(OverviewFactors(1024, 1024), (std::vector<int>{2, 4}));
  EXPECT_TRUE(OverviewFactors(256, 200).empty());
}

TEST_F(RasterLayerTest, PyramidsAreBuiltBesideTheImageAndReadAtTheWindowsScale) {
  // 1024 x 1024, grey by column: the overviews average neighbouring columns.
  WriteTiff(
      dir / "big.tif", 1024, 1024, 1, [](int, int x, int) { return x / 4; }, nullptr);
  std::vector<double> told;
  ASSERT_TRUE(BuildOverviews((dir / "big.tif").string(), [&](double done) {
    told.push_back(done);
    return true;
  }));
  EXPECT_TRUE(fs::exists(dir / "big.tif.ovr"));
  ASSERT_FALSE(told.empty());
  EXPECT_DOUBLE_EQ(told.back(), 1.0);

  RasterLayer layer(Row(dir / "big.tif"));
  EXPECT_EQ(layer.OverviewCount(), 2);
  // The whole image on 256 pixels: four image pixels a pixel, the second overview.
  RecordingCanvas whole(256, 256);
  Draw(layer, whole, WorldWindow{0, 1024, 1024, 0});
  EXPECT_EQ(layer.LastLevel(), 2);
  const auto& op = OnlyImage(whole);
  EXPECT_EQ(op.imageWidth, 256);
  EXPECT_EQ(PixelAt(op, 100, 10) & 0xFFu, 100u);  // columns 400 to 403 are all 100
  // Half the image on 256 pixels: the first overview.
  RecordingCanvas half(256, 256);
  Draw(layer, half, WorldWindow{0, 512, 512, 0});
  EXPECT_EQ(layer.LastLevel(), 1);
  // One to one and closer: the image itself.
  RecordingCanvas close(256, 256);
  Draw(layer, close, WorldWindow{512, 768, 1024, 768});
  EXPECT_EQ(layer.LastLevel(), 0);
  EXPECT_EQ(PixelAt(OnlyImage(close), 0, 0) & 0xFFu, 128u);
}

TEST_F(RasterLayerTest, StoppedPyramidsLeaveNoHalfFile) {
  WriteTiff(
      dir / "big.tif", 600, 600, 1, [](int, int x, int y) { return (x + y) % 256; }, nullptr);
  EXPECT_FALSE(BuildOverviews((dir / "big.tif").string(), [](double) { return false; }));
  EXPECT_FALSE(fs::exists(dir / "big.tif.ovr"));
  // A small image needs none.
  WriteTiff(dir / "small.tif", 100, 80, 1, Pattern, nullptr);
  EXPECT_TRUE(BuildOverviews((dir / "small.tif").string()));
  EXPECT_FALSE(fs::exists(dir / "small.tif.ovr"));
  EXPECT_THROW(BuildOverviews((dir / "none.tif").string()), Error);
}

// Reproject Maps rewrites an image's world file from UTM to a state plane zone; the
// image must still be drawn afterwards, at its transformed upper left corner.
TEST(RasterLayerReprojection, AnImageReprojectedToAStatePlaneZoneIsStillDrawn) {
  TempDir dir;
  WriteTiff(dir / "scan.tif", 4, 2, 3, Pattern, nullptr);
  WorldFile w;
  w.A = 100.0;
  w.E = -100.0;
  w.C = 445050.0;
  w.F = 4397950.0;
  WriteWorldFile(dir / "scan_temp_rpj.tfw", w);
  ReprojectWorldFile({dir / "scan_temp_rpj.tfw", dir / "scan.tfw", 15, 2202, "nad83sp"});
  std::unique_ptr<RasterLayer> layer;
  ASSERT_NO_THROW(layer = std::make_unique<RasterLayer>(Row(dir / "scan.tif")));
  const auto e = layer->Extents();
  ASSERT_TRUE(e.has_value());
  const WorldFile placed = ReadWorldFile(dir / "scan.tfw");
  EXPECT_NEAR(e->Left, placed.C - placed.A / 2, 1e-6);
  EXPECT_NEAR(e->Top, placed.F - placed.E / 2, 1e-6);
  EXPECT_NEAR(e->Right - e->Left, 4 * placed.A, 1e-6);
}

}  // namespace
}  // namespace tarno::test
