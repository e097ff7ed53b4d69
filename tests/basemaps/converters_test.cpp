// The converters' library: the BBM scan, shapefile to BBM, reprojection of BBM maps
// and world files, the DLG input preparation and the parameter file.
#include "basemaps/converters.h"

#include <gtest/gtest.h>

#include <cpl_vsi.h>

#include <cmath>
#include <fstream>

#include "basemaps/bbm.h"
#include "basemaps/bbm_writer.h"
#include "basemaps/convert_tools.h"
#include "basemaps/shapefile.h"
#include "basemaps/world_file.h"
#include "support/temp_dir.h"

namespace fs = std::filesystem;

namespace tarno {
namespace {

BbmHeaderFields Fields(std::int32_t dataType = bbm::kUnattributed) {
  BbmHeaderFields f;
  f.title = "t";
  f.dataType = dataType;
  f.projection = 15;
  return f;
}

std::int32_t I32(const std::string& b, std::size_t at) {
  return static_cast<std::int32_t>(
      static_cast<unsigned char>(b[at]) | (static_cast<unsigned char>(b[at + 1]) << 8) |
      (static_cast<unsigned char>(b[at + 2]) << 16) |
      (static_cast<std::uint32_t>(static_cast<unsigned char>(b[at + 3])) << 24));
}

class ConvertersTest : public ::testing::Test {
 protected:
  test::TempDir dir_;
};

TEST_F(ConvertersTest, ScanFindsEveryCoordinateOfTheRecordForm) {
  BbmRecordWriter w(Fields());
  w.AddPoint(7, 100, 200, {{1, 2}}, {9});
  const auto line = w.AddLine(8, {0, 10, 20}, {5, 15, 25}, {}, 1, {1, 2, 3});
  w.AddArea(9, {line}, {}, {});
  w.AddEndMark();
  const std::string bytes = w.Bytes();
  const BbmScan scan = ScanBbm(bytes, "m.bbm");
  EXPECT_EQ(scan.projection, 15);
  ASSERT_EQ(scan.shapes.size(), 2u);  // the area has no coordinates of its own
  EXPECT_EQ(scan.shapes[0].id, 7);
  EXPECT_EQ(I32(bytes, scan.shapes[0].xy[0]), 100);
  EXPECT_EQ(I32(bytes, scan.shapes[0].xy[0] + 4), 200);
  ASSERT_EQ(scan.shapes[1].xy.size(), 3u);
  // The vertices' extra values are stepped over.
  EXPECT_EQ(I32(bytes, scan.shapes[1].xy[2]), 20);
  EXPECT_EQ(I32(bytes, scan.shapes[1].xy[2] + 4), 25);
}

TEST_F(ConvertersTest, ScanReadsTheCommandFormAndRefusesBadFiles) {
  BbmCommandWriter c(Fields(bbm::kCommands));
  c.MoveTo(0, 0);
  c.LineTo(10, 0);
  c.Colour(3);
  c.LineTo(10, 10);
  c.Polygon({1, 2, 3}, {4, 5, 6});
  c.End();
  const BbmScan scan = ScanBbm(c.Bytes(), "c.bbm");
  EXPECT_TRUE(scan.commandForm);
  ASSERT_GE(scan.shapes.size(), 2u);
  EXPECT_EQ(scan.shapes[0].xy.size(), 3u);
  EXPECT_EQ(scan.shapes[1].kind, BbmShapeSlots::Kind::Polygon);
  EXPECT_EQ(scan.shapes[1].xy.size(), 3u);

  try {
    ScanBbm("*BAD" + std::string(400, '\0'), "/maps/bad.bbm");
    FAIL();
  } catch (const ConvertError& e) {
    EXPECT_NE(std::string(e.what()).find("/maps/bad.bbm"), std::string::npos);
  }
  BbmRecordWriter w(Fields());
  w.AddLine(1, {0, 1, 2, 3}, {0, 1, 2, 3}, {});
  const std::string cut = w.Bytes().substr(0, w.Bytes().size() - 8);
  EXPECT_THROW(ScanBbm(cut, "cut.bbm"), ConvertError);
}

TEST_F(ConvertersTest, ShapefileBecomesAMapOfPointsLinesAndAreas) {
  const fs::path shp = dir_ / "poly.shp";
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(shp.string()), CShapeFile::kCreate, ShapeType::Polygon);
    CPolygon p;
    CPart ring;
    ring.Add(0, 0);
    ring.Add(0, 10.5);
    ring.Add(10, 10.5);
    ring.Add(0, 0);
    p.Add(ring);
    f.Add(p);
    CPolygon empty;
    f.Add(empty);
  }
  const fs::path out = dir_ / "poly.bbm";
  const ConvertCounts c = ShapeToBbm(shp, out);
  EXPECT_EQ(c.lines, 1);
  EXPECT_EQ(c.areas, 1);
  EXPECT_EQ(c.skipped, 1);
  BBMap map;
  map.Connect(out.string());
  ASSERT_TRUE(map.Connected());
  EXPECT_EQ(map.Header().LineCount, 1);
  EXPECT_EQ(map.Header().AreaCount, 1);
  EXPECT_DOUBLE_EQ(map.Top(), 10.5);
  EXPECT_DOUBLE_EQ(map.Right(), 10.0);

  EXPECT_THROW(ShapeToBbm(dir_ / "missing.shp", out), ConvertError);
}

TEST_F(ConvertersTest, CoordinatesBeyondTheIntegersAreRefusedNamingTheRecord) {
  const fs::path shp = dir_ / "far.shp";
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(shp.string()), CShapeFile::kCreate, ShapeType::Point);
    f.Add(CPoint(1, 1));
    f.Add(CPoint(1e9, 1));  // 1e11 hundredths
  }
  try {
    ShapeToBbm(shp, dir_ / "far.bbm");
    FAIL();
  } catch (const ConvertError& e) {
    EXPECT_NE(std::string(e.what()).find("far.shp, record 2"), std::string::npos) << e.what();
  }
}

TEST_F(ConvertersTest, ReprojectionMovesPointsBoxesBoundsAndZone) {
  BbmRecordWriter w(Fields());
  w.AddPoint(1, 48000000, 499000000, {});
  w.AddLine(2, {48000000, 52000000}, {499000000, 501000000}, {});
  w.AddEndMark();
  const fs::path in = dir_ / "in.bbm", out = dir_ / "out.bbm";
  w.Save(in.string());
  EXPECT_EQ(ReprojectBbm(in, out, 15, 2202, Datum::NAD83), 3);
  const std::string bytes = test::ReadFile(out);
  const BbmScan scan = ScanBbm(bytes, out.string());
  EXPECT_EQ(scan.projection, 2202);
  ZoneTransform t(15, 2202, Datum::NAD83);
  double x = 480000, y = 4990000;
  ASSERT_TRUE(t.Apply(x, y));
  EXPECT_EQ(I32(bytes, scan.shapes[0].xy[0]), std::lround(x * 100));
  EXPECT_EQ(I32(bytes, scan.shapes[0].xy[0] + 4), std::lround(y * 100));
  // The line's box and the header's bounds follow the new coordinates.
  BBMap map;
  map.Connect(out.string());
  ASSERT_TRUE(map.Connected());
  const auto& li = map.LineIndex().at(0);
  const std::int32_t x0 = I32(bytes, scan.shapes[1].xy[0]), x1 = I32(bytes, scan.shapes[1].xy[1]);
  EXPECT_EQ(li.Xmin, std::min(x0, x1));
  EXPECT_EQ(li.Xmax, std::max(x0, x1));
  EXPECT_NEAR(map.Left() * 100, std::min(x0, x1), 0.5);
  // The input is left as it was.
  EXPECT_EQ(ScanBbm(test::ReadFile(in), "in").projection, 15);
}

TEST_F(ConvertersTest, RasterProjFileIsCheckedLineByLine) {
  const fs::path file = dir_ / "RasterProj.dat";
  RasterProjParameters p{dir_ / "a_temp_rpj.tfw", dir_ / "a.tfw", 15, 2202, "/x/nad83sp"};
  WriteRasterProjFile(file, p);
  const auto back = ReadRasterProjFile(file);
  EXPECT_EQ(back.input, p.input);
  EXPECT_EQ(back.toCode, 2202);
  EXPECT_EQ(back.datumDirectory, "/x/nad83sp");

  test::WriteFile(file, "a.tfw\r\nb.tfw\r\n15\r\nzone\r\nnad27sp\r\n");
  try {
    ReadRasterProjFile(file);
    FAIL();
  } catch (const ConvertError& e) {
    EXPECT_NE(std::string(e.what()).find("line 4: \"zone\""), std::string::npos) << e.what();
  }
  test::WriteFile(file, "a.tfw\r\nb.tfw\r\n15\r\n16\r\nwgs84\r\n");
  EXPECT_THROW(ReadRasterProjFile(file), ConvertError);
  test::WriteFile(file, "a.tfw\r\nb.tfw\r\n15\r\n");
  EXPECT_THROW(ReadRasterProjFile(file), ConvertError);
}

TEST_F(ConvertersTest, WorldFileReprojectionKeepsPixelSizeAcrossUtmZonesOfOneDatum) {
  WorldFile w;
  w.A = 2.0;
  w.E = -2.0;
  w.C = 500000.0;
  w.F = 5000000.0;
  WriteWorldFile(dir_ / "a.tfw", w);
  // Zone 15 to zone 15 changes nothing.
  ReprojectWorldFile({dir_ / "a.tfw", dir_ / "same.tfw", 15, 15, "nad83sp"});
  const WorldFile same = ReadWorldFile(dir_ / "same.tfw");
  EXPECT_NEAR(same.C, w.C, 1e-6);
  EXPECT_NEAR(same.A, 2.0, 1e-9);
  // To zone 16 the corner moves as PROJ moves it and the pixel keeps its size (to the
  // scale factor); the image stays upright, as the map draws no rotated image.
  ReprojectWorldFile({dir_ / "a.tfw", dir_ / "b.tfw", 15, 16, "nad83sp"});
  const WorldFile b = ReadWorldFile(dir_ / "b.tfw");
  ZoneTransform t(15, 16, Datum::NAD83);
  double x = w.C, y = w.F;
  ASSERT_TRUE(t.Apply(x, y));
  EXPECT_DOUBLE_EQ(b.C, x);
  EXPECT_DOUBLE_EQ(b.F, y);
  EXPECT_NEAR(std::hypot(b.A, b.D), 2.0, 0.01);
  EXPECT_NEAR(std::hypot(b.B, b.E), 2.0, 0.01);
  EXPECT_EQ(b.B, 0.0);
  EXPECT_EQ(b.D, 0.0);
  EXPECT_GT(b.A, 1.99);
  EXPECT_LT(b.E, -1.99);
  // The pixel's size is the distance to its transformed neighbours, not the x or y
  // part of it alone.
  double x1 = w.C + w.A, y1 = w.F;
  ASSERT_TRUE(t.Apply(x1, y1));
  EXPECT_NEAR(b.A, std::hypot(x1 - x, y1 - y), 1e-9);

  // A world file that was turned already keeps rotation terms, moved as its
  // neighbours move (by about four degrees here).
  WorldFile turned = w;
  turned.B = 0.5;
  turned.D = 0.5;
  WriteWorldFile(dir_ / "turned.tfw", turned);
  ReprojectWorldFile({dir_ / "turned.tfw", dir_ / "c.tfw", 15, 16, "nad83sp"});
  const WorldFile c = ReadWorldFile(dir_ / "c.tfw");
  EXPECT_GT(c.B, 0.1);
  EXPECT_GT(c.D, 0.1);
}

TEST_F(ConvertersTest, DlgInputIsUnpackedOnceAndChoppedInto80Columns) {
  const std::string records(200, 'A');  // no line ends
  // Pack with GDAL's gzip writer.
  const fs::path gz = dir_ / "quad.dlg.gz";
  {
    const std::string vsi = "/vsigzip/" + gz.string();
    VSILFILE* f = VSIFOpenL(vsi.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    VSIFWriteL(records.data(), 1, records.size(), f);
    VSIFCloseL(f);
  }
  ASSERT_NE(test::ReadFile(gz).substr(0, 2), "AA");
  const fs::path work = dir_ / "work";
  fs::create_directories(work);
  const fs::path out = PrepareDlgInput(gz, work);
  EXPECT_EQ(out.filename(), "TARNO2K.DLG");
  const std::string text = test::ReadFile(out);
  EXPECT_EQ(text, std::string(80, 'A') + "\r\n" + std::string(80, 'A') + "\r\n" +
                      std::string(40, 'A') + "\r\n");
  EXPECT_FALSE(fs::exists(work / "TARNO2K.GZ"));
  // A file with line ends is taken as it is.
  test::WriteFile(dir_ / "plain.dlg", "line one\nline two\n");
  EXPECT_EQ(test::ReadFile(PrepareDlgInput(dir_ / "plain.dlg", work)), "line one\nline two\n");
  EXPECT_THROW(PrepareDlgInput(dir_ / "none.dlg", work), Error);
}

TEST_F(ConvertersTest, OgrInputIsReadAlsoWhenGzipped) {
  const std::string json =
      R"({"type":"FeatureCollection","features":[)"
      R"({"type":"Feature","properties":{},"geometry":{"type":"MultiPoint","coordinates":[[1,2],[3,4]]}},)"
      R"({"type":"Feature","properties":{},"geometry":{"type":"LineString","coordinates":[[0,0],[5,5]]}},)"
      R"({"type":"Feature","properties":{},"geometry":null}]})";
  const fs::path gz = dir_ / "roads.geojson.gz";
  {
    const std::string vsi = "/vsigzip/" + gz.string();
    VSILFILE* f = VSIFOpenL(vsi.c_str(), "wb");
    ASSERT_NE(f, nullptr);
    VSIFWriteL(json.data(), 1, json.size(), f);
    VSIFCloseL(f);
  }
  const ConvertCounts c = OgrToBbm(gz, dir_ / "roads.bbm", 100);
  EXPECT_EQ(c.points, 2);
  EXPECT_EQ(c.lines, 1);
  EXPECT_EQ(c.skipped, 1);  // the feature without geometry
  test::WriteFile(dir_ / "junk.dlg", "not a map at all");
  try {
    OgrToBbm(dir_ / "junk.dlg", dir_ / "junk.bbm", 100);
    FAIL();
  } catch (const ConvertError& e) {
    EXPECT_NE(std::string(e.what()).find("junk.dlg is not in a vector format"), std::string::npos)
        << e.what();
  }
  EXPECT_THROW(OgrToBbm(gz, dir_ / "x.bbm", 0), ConvertError);
}

}  // namespace
}  // namespace tarno
