// The case-blind lookup of run files by name.
#include "core/file_find.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <vector>

#include "support/temp_dir.h"

namespace tarno {
namespace {

namespace fs = std::filesystem;
using test::TempDir;
using test::WriteFile;

TEST(FindFileNoCase, FindsTheFileInAnyCaseAndNothingElse) {
  TempDir dir;
  ASSERT_TRUE(WriteFile(dir / "MODEL.SOL", "solution"));
  EXPECT_EQ(FindFileNoCase(dir.Path(), "MODEL.SOL"), dir / "MODEL.SOL");
  EXPECT_EQ(FindFileNoCase(dir.Path(), "model.sol"), dir / "MODEL.SOL");
  EXPECT_EQ(FindFileNoCase(dir.Path(), "Model.Sol"), dir / "MODEL.SOL");

  // A miss: another name, a shorter one, an empty one.
  EXPECT_TRUE(FindFileNoCase(dir.Path(), "model.xtr").empty());
  EXPECT_TRUE(FindFileNoCase(dir.Path(), "model.so").empty());
  EXPECT_TRUE(FindFileNoCase(dir.Path(), "").empty());
  EXPECT_TRUE(FindFileNoCase(dir / "no such folder", "model.sol").empty());
  // A folder of that name is not a file.
  fs::create_directory(dir / "RUN.GRD");
  EXPECT_TRUE(FindFileNoCase(dir.Path(), "run.grd").empty());
  EXPECT_TRUE(FilesNamedNoCase(dir.Path(), "run.grd").empty());
}

TEST(FindFileNoCase, OfTwoSpellingsTheExactOneWinsThenTheFirstInByteOrder) {
  TempDir dir;
  ASSERT_TRUE(WriteFile(dir / "base.xtr", "lower"));
  ASSERT_TRUE(WriteFile(dir / "BASE.XTR", "upper"));
  EXPECT_EQ(FindFileNoCase(dir.Path(), "base.xtr"), dir / "base.xtr");
  EXPECT_EQ(FindFileNoCase(dir.Path(), "BASE.XTR"), dir / "BASE.XTR");
  // Neither spelled as asked: "BASE.XTR" sorts before "base.xtr", whatever the
  // order of the folder.
  EXPECT_EQ(FindFileNoCase(dir.Path(), "Base.Xtr"), dir / "BASE.XTR");
  EXPECT_EQ(FilesNamedNoCase(dir.Path(), "Base.xtr"),
            (std::vector<fs::path>{dir / "BASE.XTR", dir / "base.xtr"}));
}

TEST(FindFileNoCase, ASubFolderInTheNameIsTakenAsSpelled) {
  TempDir dir;
  fs::create_directory(dir / "Runs");
  ASSERT_TRUE(WriteFile(dir / "Runs" / "DEMO.DAT", "x"));
  EXPECT_EQ(FindFileNoCase(dir.Path(), "Runs/demo.dat"), dir / "Runs" / "DEMO.DAT");
  EXPECT_TRUE(FindFileNoCase(dir.Path(), "runs/demo.dat").empty());
}

}  // namespace
}  // namespace tarno
