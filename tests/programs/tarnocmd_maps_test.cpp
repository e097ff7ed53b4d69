// tarnocmd map: adding, listing and removing base maps with the catalogue's checks.
#include <gtest/gtest.h>

#include <filesystem>

#include "../basemaps/map_files.h"
#include "program_test_util.h"
#include "tarnocmd_fixture.h"

namespace tarno::test {
namespace {

namespace fs = std::filesystem;

class TarnocmdMapTest : public TarnocmdProject {
 protected:
  void SetUp() override { MakeProject("maps"); }
  std::vector<std::string> ListLines() {
    const RunResult r = Run({"map", "list", project_});
    EXPECT_EQ(r.status, 0) << r.err;
    std::vector<std::string> lines;
    std::size_t start = 0;
    while (start < r.out.size()) {
      const auto end = r.out.find('\n', start);
      lines.push_back(r.out.substr(start, end - start));
      start = end == std::string::npos ? r.out.size() : end + 1;
    }
    return lines;
  }
};

TEST_F(TarnocmdMapTest, AddedMapsAreListedByFullPathAndASecondAddIsRefused) {
  const std::string wells = MakeShapefile(dir_ / "wells.shp");
  // Given relative to the working folder: listed by the full path.
  RunResult r = Run({"map", "add", project_, "wells.shp"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "Added " + wells + " (shape)\n");
  EXPECT_EQ(r.err, "");
  EXPECT_EQ(ListLines(),
            std::vector<std::string>{wells + "\tshape\tshown\t#000000\t__NONE__\t__NONE__"});

  r = Run({"map", "add", project_, wells});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "File Already Added: " + wells + " has already been added.\n");
  EXPECT_EQ(r.out, "Not added " + wells + ": already added\n");
  EXPECT_EQ(ListLines().size(), 1u);
}

TEST_F(TarnocmdMapTest, AFileThatIsNoVectorMapIsRefusedWithItsBox) {
  const std::string bad = (dir_ / "broken.shp").string();
  WriteFile(bad, "this is not a shapefile");
  const std::string good = MakeShapefile(dir_ / "good.shp");
  const RunResult r = Run({"map", "add", project_, bad, good});
  EXPECT_EQ(r.status, 1);
  // The box ends with the reader's reason: here the missing index file.
  EXPECT_EQ(r.err,
            "Invalid File: The image is not a valid vector data set!\n"
            "Invalid File: Could not add the file: " +
                bad +
                ".\n"
                "Invalid File: The specified file " +
                (dir_ / "broken.shx").string() + " does not exist.\n");
  EXPECT_TRUE(Contains(r.out, "Added " + good));
  EXPECT_EQ(ListLines().size(), 1u);
}

TEST_F(TarnocmdMapTest, RemoveTakesTheMapOutOfTheListAndKeepsTheFile) {
  const std::string wells = MakeShapefile(dir_ / "wells.shp");
  ASSERT_EQ(Run({"map", "add", project_, wells}).status, 0);
  RunResult r = Run({"map", "remove", project_, "wells.shp"});
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "Removed " + wells + "\n");
  EXPECT_EQ(ListLines(), std::vector<std::string>{});
  EXPECT_TRUE(fs::exists(wells));
  r = Run({"map", "remove", project_, wells});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, "tarnocmd: " + wells + " is not a base map of " + project_ + "\n");
}

TEST_F(TarnocmdMapTest, AnImageWithoutWorldFileIsAddedWithTheWarningUnlessAnsweredNo) {
  const std::string bare = MakeImage(dir_ / "bare.jpg", "JPEG");
  const std::string placed = MakeImage(dir_ / "placed.jpg", "JPEG");
  WriteWorld(dir_ / "placed.jgw");
  RunResult r = Run({"map", "add", project_, bare, placed});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, "Not Georeferenced: The file " + bare +
                       " may not be georeferenced!\n"
                       "Not Georeferenced: Click OK to proceed or Cancel to remove map.\n");
  EXPECT_EQ(ListLines().size(), 2u);
  EXPECT_EQ(Run({"map", "remove", project_, bare}).status, 0);
  r = Run({"map", "add", project_, bare, "--no"});
  EXPECT_EQ(r.status, 1);
  EXPECT_TRUE(Contains(r.err, "may not be georeferenced!"));
  EXPECT_EQ(r.out, "Not added " + bare + ": removed\n");
  EXPECT_EQ(ListLines(),
            std::vector<std::string>{placed + "\traster\tshown\t#000000\t__NONE__\t__NONE__"});
}

TEST_F(TarnocmdMapTest, BadUsageAndBadProjects) {
  EXPECT_EQ(Run({"map"}).status, 2);
  EXPECT_EQ(Run({"map", "paint", project_}).status, 2);
  EXPECT_EQ(Run({"map", "add", project_}).status, 2);
  EXPECT_EQ(Run({"map", "list", project_, "extra"}).status, 2);
  EXPECT_EQ(Run({"map", "remove", project_, "--yes", "x.shp"}).status, 2);
  const RunResult r = Run({"map", "list", (dir_ / "none.trn").string()});
  EXPECT_EQ(r.status, 1);
  EXPECT_FALSE(r.err.empty());
  EXPECT_TRUE(Contains(Run({"help"}).out, "tarnocmd map add <project> <file>..."));
}

}  // namespace
}  // namespace tarno::test
