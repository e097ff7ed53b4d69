// examples/exchange-roundtrip.sh: the example's elements carried to a new project
// through the XML and text element files give the same heads at the test points,
// and the DXF, shapefile and GeoPackage exports open in ogrinfo.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "program_test_util.h"

namespace tarno::test {
namespace {

namespace fs = std::filesystem;

// Label -> ModelHead of a TPResults table as tarnocmd results prints it.
std::map<std::string, double> Heads(const fs::path& csv) {
  std::map<std::string, double> out;
  std::ifstream in(csv);
  std::string line;
  std::getline(in, line);  // the header
  while (std::getline(in, line)) {
    std::vector<std::string> cells;
    std::stringstream s(line);
    for (std::string cell; std::getline(s, cell, ',');) cells.push_back(cell);
    if (cells.size() > 3) out[cells[0]] = std::stod(cells[3]);
  }
  return out;
}

TEST(ExchangeRoundTripScript, TheCopyHasTheHeadsOfTheOriginalAndTheExportsOpen) {
  if (RunExecutable("ogrinfo", {"--version"}).status == 127)
    GTEST_SKIP() << "ogrinfo (gdal-bin) is not installed";
  TempDir temp("tarno-roundtrip");
  const fs::path build = fs::path(TARNO_BIN_DIR).parent_path();
  const RunResult r =
      RunExecutable(fs::path(TARNO_SOURCE_DIR) / "examples" / "exchange-roundtrip.sh",
                    {build.string(), temp.Path().string()});
  ASSERT_EQ(r.status, 0) << r.out << r.err;
  EXPECT_NE(r.out.find("heads agree within 1e-6"), std::string::npos) << r.out;
  // What the text files cannot carry is said, not hidden.
  EXPECT_NE(r.out.find("set by hand: IndustrialPP PPWell=1"), std::string::npos) << r.out;
  EXPECT_NE(r.out.find("set by hand: RechargeBasin Pond=1"), std::string::npos) << r.out;
  for (const char* f : {"contours.dxf", "pathlines.dxf", "elements.dxf", "wells.shp",
                        "contours.shp", "pathlines.shp", "example.gpkg"})
    EXPECT_NE(r.out.find(std::string(f) + ": opens"), std::string::npos) << f << "\n" << r.out;

  // The script's verdict checked here from its two tables: the same test points, and
  // heads that are solved values, not copies of the table.
  const auto original = Heads(temp.Path() / "tp-original.csv");
  const auto copy = Heads(temp.Path() / "tp-copy.csv");
  ASSERT_GE(original.size(), 7u);
  ASSERT_EQ(copy.size(), original.size());
  for (const auto& [label, head] : original) {
    SCOPED_TRACE(label);
    ASSERT_EQ(copy.count(label), 1u);
    EXPECT_NEAR(copy.at(label), head, 1e-6);
  }
  EXPECT_GT(original.at("MW-1"), 100.0) << "a head above the aquifer's base";
  EXPECT_TRUE(fs::exists(temp.Path() / "copy" / "copy.XTR")) << "the copy was solved itself";
}

// An export into a folder that does not exist (a typing slip in a script) is named
// as such before anything is written, not reported as an "Unhandled Error" with the
// advice to restart the program.
TEST(ExchangeRoundTripScript, AnExportIntoAMissingFolderNamesTheFolder) {
  TempDir temp("tarno-missing-folder");
  RunOptions options;
  options.env = {"TARNO_CONFIG_DIR=" + (temp.Path() / "config").string()};
  options.cwd = temp.Path();
  const fs::path project = temp.Path() / "p.trn";
  ASSERT_EQ(RunProgram("tarnocmd", {"new", project.string(), "--yes"}, options).status, 0);
  ASSERT_EQ(
      RunProgram("tarnocmd", {"add", project.string(), "well", "100", "200", "--set", "Label=W1"},
                 options)
          .status,
      0);
  for (const std::vector<std::string>& args :
       {std::vector<std::string>{"export", project.string(), "brr.xml", "nodir/b.brr.xml"},
        std::vector<std::string>{"export", project.string(), "wl", "nodir/w.wl", "discharge"},
        std::vector<std::string>{"export", project.string(), "gpkg", "nodir/p.gpkg"}}) {
    SCOPED_TRACE(args[2]);
    const RunResult r = RunProgram("tarnocmd", args, options);
    EXPECT_EQ(r.status, 1);
    EXPECT_NE(r.err.find("tarnocmd: the folder nodir of " + args[3] + " does not exist"),
              std::string::npos)
        << r.err;
    EXPECT_EQ(r.err.find("Unhandled"), std::string::npos) << r.err;
  }
  EXPECT_FALSE(fs::exists(temp.Path() / "nodir"));
}

}  // namespace
}  // namespace tarno::test
