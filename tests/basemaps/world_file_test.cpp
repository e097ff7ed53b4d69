// World files: which file an image is placed by, what a bad one says, and the
// writing of one.
#include <gtest/gtest.h>

#include <array>
#include <fstream>

#include "basemaps/world_file.h"
#include "core/error.h"
#include "support/temp_dir.h"

namespace tarno::test {
namespace {

namespace fs = std::filesystem;

void Touch(const fs::path& p, const std::string& text = "") { ASSERT_TRUE(WriteFile(p, text)); }

std::string ErrorOf(const fs::path& p) {
  try {
    ReadWorldFile(p);
  } catch (const Error& e) {
    return e.what();
  }
  return "(no error)";
}

TEST(WorldFileSearch, AJpgWithOnlyAJgwHasItsWorldFile) {
  TempDir dir;
  Touch(dir / "photo.jpg");
  Touch(dir / "photo.jgw");
  ASSERT_TRUE(WorldFileExists(dir / "photo.jpg"));
  EXPECT_EQ(*FindWorldFile(dir / "photo.jpg"), dir / "photo.jgw");
}

TEST(WorldFileSearch, AnImageWithNeitherHasNone) {
  TempDir dir;
  Touch(dir / "photo.jpg");
  Touch(dir / "photo.tfw");  // the world file of another kind of image
  EXPECT_FALSE(WorldFileExists(dir / "photo.jpg"));
  EXPECT_FALSE(FindWorldFile(dir / "photo.jpg").has_value());
}

TEST(WorldFileSearch, TheTableOrderDecidesBetweenTwoCandidates) {
  TempDir dir;
  Touch(dir / "a.jpg");
  Touch(dir / "a.jgw");
  Touch(dir / "a.jpgw");
  EXPECT_EQ(*FindWorldFile(dir / "a.jpg"), dir / "a.jpgw");
  Touch(dir / "b.bmp");
  Touch(dir / "b.bmpw");
  Touch(dir / "b.bpw");
  EXPECT_EQ(*FindWorldFile(dir / "b.bmp"), dir / "b.bpw");
  EXPECT_EQ(WorldFileExtensions("JPEG"), (std::vector<std::string>{".jpgw", ".jgw"}));
  EXPECT_EQ(WorldFileExtensions(".tiff"), (std::vector<std::string>{".tfw"}));
  EXPECT_TRUE(WorldFileExtensions("png").empty());
}

TEST(WorldFileSearch, BothCasesOfTheExtensionAreFound) {
  TempDir dir;
  Touch(dir / "SCAN.TIF");
  Touch(dir / "SCAN.TFW");
  EXPECT_EQ(*FindWorldFile(dir / "SCAN.TIF"), dir / "SCAN.TFW");
  Touch(dir / "map.Tif");
  Touch(dir / "map.tfw");
  EXPECT_EQ(*FindWorldFile(dir / "map.Tif"), dir / "map.tfw");
}

TEST(WorldFileSearch, AnRsImageIsNotItsOwnWorldFile) {
  TempDir dir;
  Touch(dir / "scene.rs");
  EXPECT_FALSE(WorldFileExists(dir / "scene.rs"));
  EXPECT_FALSE(WorldFileExists(dir / "notes.txt"));
}

TEST(WorldFileRead, SixNumbersWithBlanksAndCrLf) {
  TempDir dir;
  Touch(dir / "a.tfw", " 2.5\r\n0\r\n 0 \r\n-2.5\r\n1000.25\r\n2000.75\r\n\r\n");
  const WorldFile w = ReadWorldFile(dir / "a.tfw");
  EXPECT_EQ(w, (WorldFile{2.5, 0, 0, -2.5, 1000.25, 2000.75}));
  // The transform names the corner half a pixel up and left of the first centre.
  const std::array<double, 6> gt = w.GeoTransform();
  EXPECT_DOUBLE_EQ(gt[0], 1000.25 - 1.25);
  EXPECT_DOUBLE_EQ(gt[3], 2000.75 + 1.25);
  EXPECT_EQ(WorldFile::FromGeoTransform(gt), w);
}

TEST(WorldFileRead, BadFilesNameTheFileAndTheLine) {
  TempDir dir;
  Touch(dir / "five.tfw", "1\n0\n0\n-1\n100\n");
  std::string message = ErrorOf(dir / "five.tfw");
  EXPECT_NE(message.find((dir / "five.tfw").string()), std::string::npos) << message;
  EXPECT_NE(message.find("5 lines"), std::string::npos) << message;

  Touch(dir / "text.tfw", "1\n0\nzero\n-1\n100\n200\n");
  message = ErrorOf(dir / "text.tfw");
  EXPECT_NE(message.find((dir / "text.tfw").string()), std::string::npos) << message;
  EXPECT_NE(message.find("line 3"), std::string::npos) << message;
  EXPECT_NE(message.find("\"zero\""), std::string::npos) << message;

  Touch(dir / "tail.tfw", "1\n0\n0\n-1\n100 m\n200\n");
  EXPECT_NE(ErrorOf(dir / "tail.tfw").find("line 5"), std::string::npos);

  Touch(dir / "blank.tfw", "1\n\n0\n-1\n100\n200\n");
  EXPECT_NE(ErrorOf(dir / "blank.tfw").find("line 2"), std::string::npos);

  Touch(dir / "flat.tfw", "0\n0\n0\n-1\n100\n200\n");
  message = ErrorOf(dir / "flat.tfw");
  EXPECT_NE(message.find("line 1"), std::string::npos) << message;

  message = ErrorOf(dir / "missing.tfw");
  EXPECT_NE(message.find("missing.tfw"), std::string::npos) << message;
}

TEST(WorldFileWrite, SixLinesEachANumberBehindABlankReadBackExactly) {
  TempDir dir;
  const WorldFile w{0.1, 0, 0, -0.30000000000000004, 512345.123456789, 4400000.5};
  WriteWorldFile(dir / "out.jgw", w);
  EXPECT_EQ(ReadFile(dir / "out.jgw"),
            " 0.1\r\n 0\r\n 0\r\n -0.30000000000000004\r\n 512345.123456789\r\n 4400000.5\r\n");
  EXPECT_EQ(ReadWorldFile(dir / "out.jgw"), w);
  EXPECT_THROW(WriteWorldFile(dir / "no such folder" / "x.tfw", w), Error);
}

}  // namespace
}  // namespace tarno::test
