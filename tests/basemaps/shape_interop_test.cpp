// Shapefiles against another implementation: files our classes write are read by
// GDAL's ogrinfo, and files GDAL's ogr2ogr writes are read by our classes. Skipped
// where the GDAL programs are not installed.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <regex>

#include "basemaps/dbf.h"
#include "basemaps/shapefile.h"
#include "support/program_runner.h"
#include "support/temp_dir.h"

namespace tarno {
namespace {

using test::RunExecutable;
using test::RunResult;

bool HaveProgram(const char* name) {
  const RunResult r = RunExecutable(name, {"--version"});
  return r.status == 0;
}

struct OgrSummary {
  std::string geometry;
  int count = -1;
  double xmin = 0, ymin = 0, xmax = 0, ymax = 0;
};

// The geometry type, feature count and extent of `ogrinfo -al -so`.
OgrSummary Summary(const std::string& out) {
  OgrSummary s;
  std::smatch m;
  if (std::regex_search(out, m, std::regex(R"(Geometry: ([^\r\n]+))"))) s.geometry = m[1];
  if (std::regex_search(out, m, std::regex(R"(Feature Count: (\d+))"))) s.count = std::stoi(m[1]);
  if (std::regex_search(
          out, m,
          std::regex(R"(Extent: \(([-\d.e+]+), ([-\d.e+]+)\) - \(([-\d.e+]+), ([-\d.e+]+)\))"))) {
    s.xmin = std::stod(m[1]);
    s.ymin = std::stod(m[2]);
    s.xmax = std::stod(m[3]);
    s.ymax = std::stod(m[4]);
  }
  return s;
}

// The values of a field in the order of the features of `ogrinfo -al`.
std::vector<std::string> Values(const std::string& out, const std::string& field) {
  std::vector<std::string> v;
  const std::regex re("\\n  " + field + " \\([A-Za-z]+\\) = ([^\\r\\n]*)");
  for (auto it = std::sregex_iterator(out.begin(), out.end(), re); it != std::sregex_iterator();
       ++it)
    v.push_back((*it)[1]);
  return v;
}

// The WKT geometry lines of `ogrinfo -al`.
std::vector<std::string> Geometries(const std::string& out) {
  std::vector<std::string> v;
  const std::regex re(
      R"(\n  ((POINT|LINESTRING|MULTILINESTRING|POLYGON|MULTIPOLYGON|MULTIPOINT) [^\r\n]*))");
  for (auto it = std::sregex_iterator(out.begin(), out.end(), re); it != std::sregex_iterator();
       ++it)
    v.push_back((*it)[1]);
  return v;
}

CPart Part(std::initializer_list<std::pair<double, double>> pts) {
  CPart p;
  for (auto [x, y] : pts) p.Add(x, y);
  return p;
}

class ShapeInteropTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!HaveProgram("ogrinfo") || !HaveProgram("ogr2ogr"))
      GTEST_SKIP() << "GDAL's ogrinfo and ogr2ogr are not installed (package gdal-bin)";
  }
  RunResult OgrInfo(const std::string& shp, bool summary) {
    std::vector<std::string> args = {"-ro", "-al"};
    if (summary) args.push_back("-so");
    args.push_back(shp);
    RunResult r = RunExecutable("ogrinfo", args);
    EXPECT_EQ(r.status, 0) << r.err;
    return r;
  }
  // Converts a file the test wrote (GeoJSON, CSV) to a shapefile by ogr2ogr.
  std::string Convert(const std::string& name, const std::string& text,
                      std::vector<std::string> extra = {}) {
    EXPECT_TRUE(test::WriteFile(dir_ / name, text));
    const std::string shp = (dir_ / "converted.shp").string();
    std::vector<std::string> args = {"-f", "ESRI Shapefile", shp, (dir_ / name).string()};
    args.insert(args.end(), extra.begin(), extra.end());
    const RunResult r = RunExecutable("ogr2ogr", args);
    EXPECT_EQ(r.status, 0) << r.err;
    return shp;
  }
  test::TempDir dir_{"tarno-shape-interop"};
};

TEST_F(ShapeInteropTest, OurPolylinesAndTableReadByOgrinfo) {
  const std::string shp = (dir_ / "contours.shp").string();
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(shp), CShapeFile::kCreate, ShapeType::PolyLine);
    CPolyLine a;
    a.Add(Part({{100.5, 200}, {150, 250.25}, {175, 180}}));
    f.Add(a);
    CPolyLine b;
    b.Add(Part({{90, 190}, {95, 195}}));
    b.Add(Part({{300, 400}, {310, 401}}));
    f.Add(b);
  }
  WriteDBFColumns(dir_ / "contours.dbf",
                  {{"LABEL", "C", "", {std::string("LEVEL_1"), std::string("Ridge road")}},
                   {"LEVEL", "N", "######.#0", {12.5, -1003.25}},
                   {"CLOSED", "L", "", {false, true}}},
                  2);
  const OgrSummary s = Summary(OgrInfo(shp, true).out);
  EXPECT_EQ(s.geometry, "Line String");
  EXPECT_EQ(s.count, 2);
  EXPECT_DOUBLE_EQ(s.xmin, 90);
  EXPECT_DOUBLE_EQ(s.ymin, 180);
  EXPECT_DOUBLE_EQ(s.xmax, 310);
  EXPECT_DOUBLE_EQ(s.ymax, 401);

  const std::string all = OgrInfo(shp, false).out;
  EXPECT_EQ(Values(all, "LABEL"), (std::vector<std::string>{"LEVEL_1", "Ridge road"}));
  // Our numbers stand left-justified in their fields; GDAL reads them all the same.
  const auto levels = Values(all, "LEVEL");
  ASSERT_EQ(levels.size(), 2u);
  EXPECT_DOUBLE_EQ(std::stod(levels[0]), 12.5);
  EXPECT_DOUBLE_EQ(std::stod(levels[1]), -1003.25);
  const auto closed = Values(all, "CLOSED");
  ASSERT_EQ(closed.size(), 2u);
  EXPECT_TRUE(closed[0] == "F" || closed[0] == "0") << closed[0];
  EXPECT_TRUE(closed[1] == "T" || closed[1] == "1") << closed[1];
  EXPECT_EQ(Geometries(all),
            (std::vector<std::string>{"LINESTRING (100.5 200.0,150.0 250.25,175 180)",
                                      "MULTILINESTRING ((90 190,95 195),(300 400,310 401))"}));
}

TEST_F(ShapeInteropTest, OurPointsPolygonsAndMultipointsReadByOgrinfo) {
  struct Case {
    ShapeType type;
    const char* geometry;
  };
  const std::string pts = (dir_ / "wells.shp").string();
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(pts), CShapeFile::kCreate, ShapeType::Point);
    f.Add(CPoint(1.5, -2));
    f.Add(CPoint(1e6, 5e6));
    f.Add(CPoint(-7, 3));
  }
  WriteDBFTable(dir_ / "wells.dbf", {{"NAME", 'C', 8, 0}}, {{"WL_0001"}, {"WL_0002"}, {"WL_0003"}});
  OgrSummary s = Summary(OgrInfo(pts, true).out);
  EXPECT_EQ(s.geometry, "Point");
  EXPECT_EQ(s.count, 3);
  EXPECT_DOUBLE_EQ(s.xmin, -7);
  EXPECT_DOUBLE_EQ(s.xmax, 1e6);
  EXPECT_DOUBLE_EQ(s.ymax, 5e6);
  std::string all = OgrInfo(pts, false).out;
  EXPECT_EQ(Values(all, "NAME"), (std::vector<std::string>{"WL_0001", "WL_0002", "WL_0003"}));
  EXPECT_EQ(Geometries(all).at(1), "POINT (1000000 5000000)");

  // A clockwise outer ring with an anticlockwise hole, as the format wants.
  const std::string polys = (dir_ / "areas.shp").string();
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(polys), CShapeFile::kCreate, ShapeType::Polygon);
    CPolygon p;
    p.Add(Part({{0, 0}, {0, 10}, {10, 10}, {10, 0}, {0, 0}}));
    p.Add(Part({{2, 2}, {8, 2}, {8, 8}, {2, 2}}));
    f.Add(p);
  }
  WriteDBFColumns(dir_ / "areas.dbf", {{"K", "N", "0.000", {2.5}}}, 1);
  s = Summary(OgrInfo(polys, true).out);
  EXPECT_EQ(s.geometry, "Polygon");
  EXPECT_EQ(s.count, 1);
  EXPECT_DOUBLE_EQ(s.xmax, 10);
  all = OgrInfo(polys, false).out;
  EXPECT_EQ(Geometries(all),
            (std::vector<std::string>{"POLYGON ((0 0,0 10,10 10,10 0,0 0),(2 2,8 2,8 8,2 2))"}));
  EXPECT_EQ(Values(all, "K"), (std::vector<std::string>{"2.500"}));

  const std::string multi = (dir_ / "multi.shp").string();
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(multi), CShapeFile::kCreate, ShapeType::MultiPoint);
    CMultiPoint mp;
    mp.Add(1, 2);
    mp.Add(3, 4);
    f.Add(mp);
  }
  WriteDBFColumns(dir_ / "multi.dbf", {{"ID", "C", "", {std::string("a")}}}, 1);
  s = Summary(OgrInfo(multi, true).out);
  EXPECT_EQ(s.geometry, "Multi Point");
  EXPECT_EQ(s.count, 1);
  all = OgrInfo(multi, false).out;
  ASSERT_EQ(Geometries(all).size(), 1u);
  EXPECT_NE(Geometries(all)[0].find("MULTIPOINT"), std::string::npos);
  EXPECT_NE(Geometries(all)[0].find("3 4"), std::string::npos);
}

TEST_F(ShapeInteropTest, Ogr2ogrLinesReadByOurClasses) {
  const std::string shp = Convert("streams.geojson", R"({"type":"FeatureCollection","features":[
{"type":"Feature","properties":{"NAME":"Mill Creek","DEPTH":2.5,"N":3},
 "geometry":{"type":"LineString","coordinates":[[1,2],[3.5,4],[5,-6]]}},
{"type":"Feature","properties":{"NAME":"Öster","DEPTH":-1.25,"N":7},
 "geometry":{"type":"MultiLineString","coordinates":[[[10,20],[11,21]],[[12,22],[13,23],[14,24.125]]]}}
]})");
  CShapeFile f;
  f.SetFileSpec(CFileName(shp), CShapeFile::kOpenExisting);
  EXPECT_EQ(f.FileType(), ShapeType::PolyLine);
  ASSERT_EQ(f.Count(), 2);
  EXPECT_EQ(f.Left(), 1);
  EXPECT_EQ(f.Bottom(), -6);
  EXPECT_EQ(f.Right(), 14);
  EXPECT_EQ(f.Top(), 24.125);
  auto a = f.Item(1);
  const auto& la = static_cast<const CPolyLine&>(*a);
  ASSERT_EQ(la.Count(), 1);
  ASSERT_EQ(la.Item(1).Count(), 3);
  EXPECT_EQ(la.Item(1).Item(2).X(), 3.5);
  EXPECT_EQ(la.Item(1).Item(3).Y(), -6);
  auto b = f.Item(2);
  const auto& lb = static_cast<const CPolyLine&>(*b);
  ASSERT_EQ(lb.Count(), 2);
  EXPECT_EQ(lb.Item(1).Count(), 2);
  ASSERT_EQ(lb.Item(2).Count(), 3);
  EXPECT_EQ(lb.Item(2).Item(3).X(), 14);
  EXPECT_EQ(lb.Item(2).Item(3).Y(), 24.125);

  const DbfTable t = ReadDBF(dir_ / "converted.dbf");
  ASSERT_EQ(t.Records.size(), 2u);
  const int name = t.FieldIndex("NAME"), depth = t.FieldIndex("DEPTH"), n = t.FieldIndex("N");
  ASSERT_GE(name, 0);
  ASSERT_GE(depth, 0);
  ASSERT_GE(n, 0);
  EXPECT_EQ(t.Fields[depth].Type, 'N');
  EXPECT_EQ(t.Records[0][name], "Mill Creek");
  EXPECT_EQ(t.Records[1][name], "Öster");
  EXPECT_DOUBLE_EQ(std::stod(t.Records[0][depth]), 2.5);
  EXPECT_DOUBLE_EQ(std::stod(t.Records[1][depth]), -1.25);
  EXPECT_EQ(t.Records[1][n], "7");
}

TEST_F(ShapeInteropTest, Ogr2ogrPolygonsAndCsvPointsReadByOurClasses) {
  std::string shp = Convert("ponds.geojson", R"({"type":"FeatureCollection","features":[
{"type":"Feature","properties":{"ID":1},"geometry":{"type":"Polygon",
 "coordinates":[[[0,0],[10,0],[10,10],[0,10],[0,0]],[[2,2],[2,8],[8,8],[2,2]]]}}]})");
  {
    CShapeFile f;
    f.SetFileSpec(CFileName(shp), CShapeFile::kOpenExisting);
    EXPECT_EQ(f.FileType(), ShapeType::Polygon);
    ASSERT_EQ(f.Count(), 1);
    auto s = f.Item(1);
    const auto& p = static_cast<const CPolygon&>(*s);
    ASSERT_EQ(p.Count(), 2);
    EXPECT_EQ(p.Item(1).Count(), 5);
    EXPECT_EQ(p.Item(2).Count(), 4);
    // The same rings, whichever way GDAL turned them.
    EXPECT_EQ(p.Distance(1, 1), 0.0);
    EXPECT_GT(p.Distance(3, 6), 0.0);  // in the hole
    EXPECT_EQ(p.Right(), 10);
  }

  std::filesystem::remove(dir_ / "converted.shp");
  std::filesystem::remove(dir_ / "converted.shx");
  std::filesystem::remove(dir_ / "converted.dbf");
  shp = Convert(
      "wells.csv", "X,Y,NAME,Q\n1.5,2.25,W1,100\n-3,400000.5,W2,-2.5\n",
      {"-oo", "X_POSSIBLE_NAMES=X", "-oo", "Y_POSSIBLE_NAMES=Y", "-oo", "AUTODETECT_TYPE=YES"});
  CShapeFile f;
  f.SetFileSpec(CFileName(shp), CShapeFile::kOpenExisting);
  EXPECT_EQ(f.FileType(), ShapeType::Point);
  ASSERT_EQ(f.Count(), 2);
  EXPECT_EQ(static_cast<const CPoint&>(*f.Item(1)).X(), 1.5);
  EXPECT_EQ(static_cast<const CPoint&>(*f.Item(2)).Y(), 400000.5);
  EXPECT_EQ(f.Top(), 400000.5);
  const DbfTable t = ReadDBF(dir_ / "converted.dbf");
  ASSERT_EQ(t.Records.size(), 2u);
  EXPECT_EQ(t.Records[1][t.FieldIndex("NAME")], "W2");
  EXPECT_DOUBLE_EQ(std::stod(t.Records[1][t.FieldIndex("Q")]), -2.5);
}

}  // namespace
}  // namespace tarno
