// The converter and reprojection programs run as the desktop program runs them:
// a shapefile through shape2bbm and bbm2dxf back to the same vertices as OGR reads
// them, a reprojection against PROJ's own cs2cs, rasterproject on a world file, and
// the messages and exit codes of bad input.
#include <gtest/gtest.h>

#include <gdal_priv.h>
#include <ogrsf_frmts.h>

#include <cmath>
#include <cstring>
#include <sstream>

#include "basemaps/bbm.h"
#include "basemaps/bbm_writer.h"
#include "basemaps/converters.h"
#include "basemaps/shapefile.h"
#include "basemaps/world_file.h"
#include "program_test_util.h"

namespace fs = std::filesystem;

namespace tarno::test {
namespace {

class ConverterProgramsTest : public ::testing::Test {
 protected:
  TempDir dir_;
};

struct Vertex {
  double x, y;
};

// The vertices of each feature of a DXF file as OGR reads them, and the layer names.
std::vector<std::vector<Vertex>> ReadDxf(const fs::path& dxf, std::vector<std::string>& layers) {
  GDALAllRegister();
  std::unique_ptr<GDALDataset> ds(
      GDALDataset::Open(dxf.string().c_str(), GDAL_OF_VECTOR, nullptr, nullptr, nullptr));
  std::vector<std::vector<Vertex>> out;
  if (!ds) return out;
  for (OGRLayer* layer : ds->GetLayers()) {
    for (auto& f : *layer) {
      layers.push_back(f->GetFieldAsString("Layer"));
      const OGRGeometry* g = f->GetGeometryRef();
      std::vector<Vertex> v;
      if (wkbFlatten(g->getGeometryType()) == wkbPoint) {
        v.push_back({g->toPoint()->getX(), g->toPoint()->getY()});
      } else if (wkbFlatten(g->getGeometryType()) == wkbLineString) {
        for (const auto& p : *g->toLineString()) v.push_back({p.getX(), p.getY()});
      }
      out.push_back(v);
    }
  }
  return out;
}

TEST_F(ConverterProgramsTest, ShapefileToBbmToDxfKeepsTheVertices) {
  const fs::path shp = dir_ / "streams.shp";
  const std::vector<std::vector<Vertex>> parts = {
      {{1000.25, 2000.5}, {1010.75, 2020.0}, {1050.0, 2001.01}}, {{-300.0, 40.0}, {-310.5, 45.25}}};
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(shp.string()), CShapeFile::kCreate, ShapeType::PolyLine);
    for (const auto& part : parts) {
      CPolyLine line;
      CPart p;
      for (const auto& v : part) p.Add(v.x, v.y);
      line.Add(p);
      f.Add(line);
    }
  }
  const fs::path bbm = dir_ / "streams.bbm", dxf = dir_ / "streams.dxf";
  const auto toBbm = RunProgram("shape2bbm", {shp.string(), bbm.string()});
  ASSERT_EQ(toBbm.status, 0) << toBbm.err;
  EXPECT_TRUE(Contains(toBbm.out, "0 points, 2 lines, 0 areas")) << toBbm.out;
  const auto toDxf = RunProgram("bbm2dxf", {bbm.string(), dxf.string(), "STREAMS"});
  ASSERT_EQ(toDxf.status, 0) << toDxf.err;

  std::vector<std::string> layers;
  const auto read = ReadDxf(dxf, layers);
  ASSERT_EQ(read.size(), parts.size());
  for (std::size_t i = 0; i < parts.size(); ++i) {
    ASSERT_EQ(read[i].size(), parts[i].size()) << i;
    for (std::size_t j = 0; j < parts[i].size(); ++j) {
      // Hundredths are what a BBM keeps.
      EXPECT_NEAR(read[i][j].x, parts[i][j].x, 0.005 + 1e-9) << i << "," << j;
      EXPECT_NEAR(read[i][j].y, parts[i][j].y, 0.005 + 1e-9) << i << "," << j;
    }
    EXPECT_EQ(layers[i], "STREAMS");
  }

  // And back: the DXF through odwg2bbm gives the same map's lines.
  const fs::path again = dir_ / "again.bbm";
  const auto back = RunProgram("odwg2bbm", {dxf.string(), again.string(), "15"});
  ASSERT_EQ(back.status, 0) << back.err;
  BBMap map;
  map.Connect(again.string());
  ASSERT_TRUE(map.Connected());
  EXPECT_EQ(map.Header().LineCount, 2);
  EXPECT_EQ(map.Header().Projection, 15);
  EXPECT_DOUBLE_EQ(map.Left(), -310.5);
  EXPECT_DOUBLE_EQ(map.Right(), 1050.0);
}

TEST_F(ConverterProgramsTest, DgnDrawingBecomesLinesAndAreasWithTheZone) {
  GDALAllRegister();
  const fs::path dgn = dir_ / "site.dgn";
  {
    GDALDriver* driver = GetGDALDriverManager()->GetDriverByName("DGN");
    ASSERT_NE(driver, nullptr);
    std::unique_ptr<GDALDataset> ds(
        driver->Create(dgn.string().c_str(), 0, 0, 0, GDT_Unknown, nullptr));
    ASSERT_TRUE(ds);
    OGRLayer* layer = ds->CreateLayer("elements", nullptr, wkbUnknown, nullptr);
    ASSERT_NE(layer, nullptr);
    OGRLineString line;
    line.addPoint(100, 200);
    line.addPoint(150, 260);
    OGRFeature f1(layer->GetLayerDefn());
    f1.SetGeometry(&line);
    ASSERT_EQ(layer->CreateFeature(&f1), OGRERR_NONE);
    OGRPolygon polygon;
    OGRLinearRing ring;
    ring.addPoint(0, 0);
    ring.addPoint(10, 0);
    ring.addPoint(10, 10);
    ring.addPoint(0, 0);
    polygon.addRing(&ring);
    OGRFeature f2(layer->GetLayerDefn());
    f2.SetGeometry(&polygon);
    ASSERT_EQ(layer->CreateFeature(&f2), OGRERR_NONE);
  }
  const fs::path bbm = dir_ / "site.bbm";
  const auto r = RunProgram("odwg2bbm", {dgn.string(), bbm.string(), "2202"});
  ASSERT_EQ(r.status, 0) << r.err;
  BBMap map;
  map.Connect(bbm.string());
  ASSERT_TRUE(map.Connected());
  EXPECT_EQ(map.Header().LineCount, 2);
  EXPECT_EQ(map.Header().AreaCount, 1);
  EXPECT_EQ(map.Header().Projection, 2202);
  EXPECT_DOUBLE_EQ(map.Right(), 150.0);
  EXPECT_DOUBLE_EQ(map.Top(), 260.0);
}

// Runs cs2cs with `args` on "x y" lines and gives back the transformed pairs.
std::vector<Vertex> Cs2cs(const std::vector<std::string>& args, const std::vector<Vertex>& in,
                          const fs::path& dir) {
  std::ostringstream s;
  s.precision(17);
  for (const auto& v : in) s << v.x << " " << v.y << "\n";
  WriteFile(dir / "cs2cs.in", s.str());
  RunOptions options;
  options.input = dir / "cs2cs.in";
  std::vector<std::string> all = {"-f", "%.6f"};
  all.insert(all.end(), args.begin(), args.end());
  const auto r = RunExecutable("cs2cs", all, options);
  std::vector<Vertex> out;
  if (r.status != 0) return out;
  std::istringstream lines(r.out);
  double x = 0, y = 0, z = 0;
  while (lines >> x >> y >> z) out.push_back({x, y});
  return out;
}

TEST_F(ConverterProgramsTest, BbmprojectAgreesWithCs2csFromUtm15ToMinnesotaCentral) {
  const auto probe = RunExecutable("cs2cs", {});
  if (probe.status == 127) GTEST_SKIP() << "cs2cs (proj-bin) is not installed";
  const std::vector<Vertex> points = {{480000, 4990000}, {520000, 5010000}, {455123.45, 5102030.4}};
  BbmHeaderFields f;
  f.dataType = bbm::kUnattributed;
  f.projection = 15;
  BbmRecordWriter w(f);
  std::vector<std::int32_t> xs, ys;
  for (const auto& p : points) {
    xs.push_back(static_cast<std::int32_t>(std::lround(p.x * 100)));
    ys.push_back(static_cast<std::int32_t>(std::lround(p.y * 100)));
  }
  w.AddLine(1, xs, ys, {});
  w.AddEndMark();
  const fs::path in = dir_ / "utm15.bbm", out = dir_ / "mn.bbm";
  w.Save(in.string());
  const auto r =
      RunProgram("bbmproject", {in.string(), out.string(), "15", "2202", "/opt/tarno/nad83sp"});
  ASSERT_EQ(r.status, 0) << r.err;
  const auto expected =
      Cs2cs({"+proj=utm", "+zone=15", "+datum=NAD83", "+to", "EPSG:26992"}, points, dir_.Path());
  ASSERT_EQ(expected.size(), points.size());
  const std::string bytes = ReadFile(out);
  const BbmScan scan = ScanBbm(bytes, out.string());
  EXPECT_EQ(scan.projection, 2202);
  ASSERT_EQ(scan.shapes.size(), 1u);
  ASSERT_EQ(scan.shapes[0].xy.size(), points.size());
  for (std::size_t i = 0; i < points.size(); ++i) {
    std::int32_t sx = 0, sy = 0;
    std::memcpy(&sx, bytes.data() + scan.shapes[0].xy[i], 4);
    std::memcpy(&sy, bytes.data() + scan.shapes[0].xy[i] + 4, 4);
    EXPECT_NEAR(sx / 100.0, expected[i].x, 0.006) << i;
    EXPECT_NEAR(sy / 100.0, expected[i].y, 0.006) << i;
  }
}

TEST_F(ConverterProgramsTest, RasterprojectRewritesTheWorldFileAsCs2csMovesItsCorner) {
  const auto probe = RunExecutable("cs2cs", {});
  if (probe.status == 127) GTEST_SKIP() << "cs2cs (proj-bin) is not installed";
  WorldFile w;
  w.A = 1.0;
  w.E = -1.0;
  w.C = 480000.5;
  w.F = 4990000.5;
  WriteWorldFile(dir_ / "photo_temp_rpj.tfw", w);
  WriteFile(dir_ / "RasterProj.dat", (dir_ / "photo_temp_rpj.tfw").string() + "\r\n" +
                                         (dir_ / "photo.tfw").string() +
                                         "\r\n15\r\n2202\r\nnad83sp\r\n");
  RunOptions options;
  options.cwd = dir_.Path();
  const auto r = RunProgram("rasterproject", {"RasterProj.dat"}, options);
  ASSERT_EQ(r.status, 0) << r.err;
  const WorldFile out = ReadWorldFile(dir_ / "photo.tfw");
  const auto corner = Cs2cs({"+proj=utm", "+zone=15", "+datum=NAD83", "+to", "EPSG:26992"},
                            {{w.C, w.F}}, dir_.Path());
  ASSERT_EQ(corner.size(), 1u);
  EXPECT_NEAR(out.C, corner[0].x, 1e-5);
  EXPECT_NEAR(out.F, corner[0].y, 1e-5);
  EXPECT_NEAR(std::hypot(out.A, out.D), 1.0, 0.01);
  EXPECT_LT(out.E, 0.0);

  WriteFile(dir_ / "bad.dat", "a.tfw\r\nb.tfw\r\n15\r\nfifteen\r\nnad83sp\r\n");
  const auto bad = RunProgram("rasterproject", {"bad.dat"}, options);
  EXPECT_EQ(bad.status, 1);
  EXPECT_TRUE(Contains(bad.err, "bad.dat, line 4: \"fifteen\" is not a projection code"))
      << bad.err;
}

TEST_F(ConverterProgramsTest, BadInputIsRefusedNamingFileAndValue) {
  const auto usage = RunProgram("shape2bbm", {"only-one"});
  EXPECT_EQ(usage.status, 2);
  EXPECT_TRUE(Contains(usage.err, "usage: shape2bbm <input.shp> <output.bbm>"));

  const auto missing =
      RunProgram("shape2bbm", {(dir_ / "none.shp").string(), (dir_ / "o.bbm").string()});
  EXPECT_EQ(missing.status, 1);
  EXPECT_TRUE(Contains(missing.err, (dir_ / "none.shp").string())) << missing.err;

  WriteFile(dir_ / "drawing.dwg", "AC1032 not really a drawing");
  const auto dwg =
      RunProgram("odwg2bbm", {(dir_ / "drawing.dwg").string(), (dir_ / "o.bbm").string(), "0"});
  EXPECT_EQ(dwg.status, 1);
  EXPECT_TRUE(Contains(dwg.err, "is a DWG file, which cannot be read here; save it as DXF"))
      << dwg.err;

  WriteFile(dir_ / "site.dxf", "0\nSECTION\n");
  const auto zone =
      RunProgram("odwg2bbm", {(dir_ / "site.dxf").string(), (dir_ / "o.bbm").string(), "abc"});
  EXPECT_EQ(zone.status, 1);
  EXPECT_TRUE(Contains(zone.err, "The zone \"abc\" is not a whole number.")) << zone.err;

  WriteFile(dir_ / "not.bbm", "hello");
  const auto notBbm =
      RunProgram("bbm2dxf", {(dir_ / "not.bbm").string(), (dir_ / "o.dxf").string()});
  EXPECT_EQ(notBbm.status, 1);
  EXPECT_TRUE(Contains(notBbm.err, (dir_ / "not.bbm").string() + " is not a BBM map"))
      << notBbm.err;

  const auto datum = RunProgram("bbmproject", {"a.bbm", "b.bbm", "15", "2202", "WGS84"});
  EXPECT_EQ(datum.status, 1);
  EXPECT_TRUE(Contains(datum.err, "\"WGS84\"")) << datum.err;

  BbmHeaderFields f;
  f.projection = 15;
  BbmRecordWriter w(f);
  w.AddPoint(1, 48000000, 499000000, {});
  w.AddEndMark();
  w.Save((dir_ / "m.bbm").string());
  const auto noZone = RunProgram(
      "bbmproject", {(dir_ / "m.bbm").string(), (dir_ / "o.bbm").string(), "15", "407", "NAD83"});
  EXPECT_EQ(noZone.status, 1);
  EXPECT_TRUE(Contains(noZone.err, "CALIFORNIA ZONE VII")) << noZone.err;
  EXPECT_FALSE(fs::exists(dir_ / "o.bbm"));

  const auto sdts = RunProgram("sdts2bbm", {(dir_ / "m.bbm").string(), (dir_ / "o.bbm").string()});
  EXPECT_EQ(sdts.status, 1);
  EXPECT_TRUE(Contains(sdts.err, "No SDTS catalogue module")) << sdts.err;
}

TEST_F(ConverterProgramsTest, TarnocmdConvertsAndReprojects) {
  const fs::path shp = dir_ / "wells.shp";
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(shp.string()), CShapeFile::kCreate, ShapeType::Point);
    f.Add(CPoint(480000, 4990000));
  }
  const fs::path bbm = dir_ / "wells.bbm";
  const auto c = RunProgram("tarnocmd", {"convert", "shape", shp.string(), bbm.string()});
  ASSERT_EQ(c.status, 0) << c.err;
  EXPECT_TRUE(fs::exists(bbm));
  const auto again = RunProgram("tarnocmd", {"convert", "shape", shp.string(), bbm.string()});
  EXPECT_EQ(again.status, 1);
  EXPECT_TRUE(Contains(again.err, "File Exists: File already exists! Overwrite?")) << again.err;
  EXPECT_EQ(
      RunProgram("tarnocmd", {"convert", "shape", shp.string(), bbm.string(), "--yes"}).status, 0);
  EXPECT_EQ(RunProgram("tarnocmd", {"convert", "paint", shp.string(), bbm.string()}).status, 2);

  // Two maps, one read-only: one of two reprojected, the other named.
  fs::copy_file(bbm, dir_ / "locked.bbm");
  fs::permissions(dir_ / "locked.bbm",
                  fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write,
                  fs::perm_options::remove);
  const auto r = RunProgram("tarnocmd", {"reproject", "15", "2202", "NAD83", bbm.string(),
                                         (dir_ / "locked.bbm").string()});
  EXPECT_EQ(r.status, 1) << r.err;
  EXPECT_TRUE(Contains(r.out, "1 of 2")) << r.out;
  EXPECT_TRUE(Contains(r.err, "locked.bbm is read only. TARNO cannot reproject a read-only file."))
      << r.err;
  EXPECT_TRUE(Contains(r.err, "Reproject Complete: 1 of 2 files reprojected to:")) << r.err;
  EXPECT_EQ(ScanBbm(ReadFile(bbm), "wells.bbm").projection, 2202);
  EXPECT_TRUE(fs::exists(dir_ / "wells.old"));
  EXPECT_EQ(RunProgram("tarnocmd", {"reproject", "15", "2202", "WGS84", bbm.string()}).status, 2);
  EXPECT_EQ(RunProgram("tarnocmd", {"reproject", "15", "5300", "NAD83", bbm.string()}).status, 2);
}

}  // namespace
}  // namespace tarno::test
