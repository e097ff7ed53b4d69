// The geometry exports of tarnocmd on the solved example project: the example is
// built by scripts/make-examples, solved by tarnocmd and exported, and each file is
// read by GDAL/OGR. Skipped where the programs of the build or the sqlite3 tool are
// missing.
#include <gdal.h>
#include <ogr_api.h>

#include <gtest/gtest.h>

#include <fstream>

#include "support/program_runner.h"
#include "support/temp_dir.h"

namespace tarno::exchange {

namespace fs = std::filesystem;

namespace {

struct Layered {
  long features = 0;
  std::map<std::string, long> byLayer;
  long points = 0;
};

Layered Read(const fs::path& file) {
  GDALAllRegister();
  Layered out;
  GDALDatasetH ds =
      GDALOpenEx(file.c_str(), GDAL_OF_VECTOR | GDAL_OF_READONLY, nullptr, nullptr, nullptr);
  if (ds == nullptr) {
    ADD_FAILURE() << "OGR cannot open " << file;
    return out;
  }
  OGRLayerH layer = GDALDatasetGetLayer(ds, 0);
  while (OGRFeatureH f = OGR_L_GetNextFeature(layer)) {
    ++out.features;
    const int i = OGR_F_GetFieldIndex(f, "Layer");
    if (i >= 0) ++out.byLayer[OGR_F_GetFieldAsString(f, i)];
    if (OGRGeometryH g = OGR_F_GetGeometryRef(f)) out.points += OGR_G_GetPointCount(g);
    OGR_F_Destroy(f);
  }
  GDALClose(ds);
  return out;
}

// The contour lines of a contour file with two points or more.
long DrawableLevels(const fs::path& ctr) {
  std::ifstream in(ctr);
  long lines = 0, points = 0;
  std::string line;
  auto close = [&] {
    if (points >= 2) ++lines;
    points = 0;
  };
  while (std::getline(in, line)) {
    if (line.rfind("LEVEL", 0) == 0)
      close();
    else if (line.find_first_not_of(" \r") != std::string::npos)
      ++points;
  }
  close();
  return lines;
}

class GeometryExampleTest : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!fs::exists(test::ProgramPath("tarnocmd")) || !fs::exists(test::ProgramPath("tarno1")) ||
        !fs::exists(test::ProgramPath("contour")))
      GTEST_SKIP() << "tarnocmd, tarno1 and contour of the build are needed";
    if (test::RunExecutable("sqlite3", {"-version"}).status != 0) GTEST_SKIP() << "no sqlite3";
    const auto made = test::RunExecutable(
        "bash", {std::string(TARNO_SOURCE_DIR) + "/scripts/make-examples",
                 fs::path(TARNO_BIN_DIR).parent_path().string(), dir_.Path().string()});
    ASSERT_EQ(made.status, 0) << made.err;
    project_ = (dir_ / "example.trn").string();
  }
  test::RunResult Cmd(const std::vector<std::string>& args) {
    test::RunOptions o;
    o.cwd = dir_.Path();
    o.env = {"TARNO_CONFIG_DIR=" + (dir_ / "config").string()};
    return test::RunProgram("tarnocmd", args, o);
  }
  test::TempDir dir_;
  std::string project_;
};

TEST_F(GeometryExampleTest, BeforeTheSolveNoContoursAndAfterItEveryExportReadsBack) {
  const auto early = Cmd({"export", project_, "dxf", "early.dxf", "contours"});
  EXPECT_EQ(early.status, 1);
  EXPECT_NE(early.out.find("Can't export: No Contours to be exported"), std::string::npos)
      << early.out;
  EXPECT_FALSE(fs::exists(dir_ / "early.dxf"));

  const auto solved = Cmd({"solve", project_, "--yes"});
  ASSERT_EQ(solved.status, 0) << solved.out << solved.err;
  ASSERT_TRUE(fs::exists(dir_ / "example.CTR"));

  ASSERT_EQ(Cmd({"export", project_, "dxf", "c.dxf", "contours"}).status, 0);
  Layered contours = Read(dir_ / "c.dxf");
  EXPECT_EQ(contours.features, DrawableLevels(dir_ / "example.CTR"));
  EXPECT_EQ(contours.byLayer["Contours"], contours.features);

  const auto elements = Cmd({"export", project_, "dxf", "e.dxf", "elements"});
  ASSERT_EQ(elements.status, 0) << elements.out << elements.err;
  Layered e = Read(dir_ / "e.dxf");
  EXPECT_EQ(e.byLayer["Wells"], 5);
  EXPECT_EQ(e.byLayer["Inhomogeneities"], 1);
  EXPECT_EQ(e.byLayer["No Flow Strings"], 1);

  ASSERT_EQ(Cmd({"export", project_, "dxf", "p.dxf", "pathlines"}).status, 0);
  EXPECT_GT(Read(dir_ / "p.dxf").byLayer["Pathlines"], 0);

  ASSERT_EQ(Cmd({"export", project_, "shp", "w.shp", "wells"}).status, 0);
  EXPECT_EQ(Read(dir_ / "w.shp").features, 5);
  ASSERT_EQ(Cmd({"export", project_, "shp", "l.shp", "linesinks"}).status, 0);
  EXPECT_EQ(Read(dir_ / "l.shp").features, 6);
  ASSERT_EQ(Cmd({"export", project_, "shp", "k.shp", "contours"}).status, 0);
  EXPECT_EQ(Read(dir_ / "k.shp").features, contours.features);
  const auto none = Cmd({"export", project_, "shp", "z.shp", "whpareas"});
  EXPECT_EQ(none.status, 1);
  EXPECT_NE(none.out.find("Export Failed: CapZone Export Failed - "), std::string::npos)
      << none.out;

  // The marks the desktop program's pathline drawing leaves beside the path file.
  std::ofstream(dir_ / "TICMARKST.TIC") << " 450000        4390000 \r\n 450100 4390100\r\n";
  std::ofstream(dir_ / "TICMARKSZ.TIC") << " 450000 4390000 -1\r\n";
  const auto tics = Cmd({"export", project_, "shp", "t.shp", "tics"});
  ASSERT_EQ(tics.status, 0) << tics.out << tics.err;
  EXPECT_EQ(Read(dir_ / "t.shp").features, 2);
  EXPECT_EQ(Read(dir_ / "t-elevation.shp").features, 1);
  ASSERT_EQ(Cmd({"export", project_, "shp", "p.shp", "pathlines"}).status, 0);
  EXPECT_GT(Read(dir_ / "p.shp").features, 0);

  ASSERT_EQ(Cmd({"export", project_, "bln", "b.bln", "contours"}).status, 0);
  EXPECT_TRUE(fs::exists(dir_ / "TARNO.SCR"));

  // The example's model origin is (455150, 4391500): the grid's limits come back in
  // map coordinates.
  ASSERT_EQ(Cmd({"export", project_, "grd", "g.grd"}).status, 0);
  std::ifstream grid(dir_ / "g.grd");
  std::string line1, line2, line3, line4;
  std::getline(grid, line1);
  std::getline(grid, line2);
  std::getline(grid, line3);
  std::getline(grid, line4);
  EXPECT_EQ(line3, "447000.00  463500.00\r");
  EXPECT_EQ(line4, "4386000.00  4397500.00\r");

  const auto usage = Cmd({"export", project_, "shp", "x.shp", "lakes"});
  EXPECT_EQ(usage.status, 2);
}

}  // namespace

}  // namespace tarno::exchange
