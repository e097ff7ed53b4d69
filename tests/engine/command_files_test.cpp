// File names: the case-insensitive lookup of what the solver reads, the single
// spelling of what it writes, and the extensions it adds.

#include "engine/files.h"
#include "support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace fs = std::filesystem;
using namespace tarno::engine;

namespace {

struct Dir {
  tarno::test::TempDir temp{"tarno1-files"};
  fs::path path = temp.Path();
  void touch(const std::string& name, const std::string& text = "x") const { std::ofstream(path / name) << text; }
};

std::string contents(const fs::path& p) {
  std::ifstream f(p);
  std::string s;
  std::getline(f, s);
  return s;
}

}  // namespace

TEST(CommandFiles, LookupPrefersTheExactSpellingThenAnyCase) {
  Dir d;
  d.touch("demo.dat", "lower");
  d.touch("DEMO.DAT", "upper");
  EXPECT_EQ(contents(*findFileNoCase(d.path, "DEMO.DAT")), "upper");
  EXPECT_EQ(contents(*findFileNoCase(d.path, "demo.dat")), "lower");
  auto other = findFileNoCase(d.path, "Demo.Dat");
  ASSERT_TRUE(other);
  EXPECT_TRUE(equalsNoCase(other->filename().string(), "demo.dat"));
  EXPECT_FALSE(findFileNoCase(d.path, "demo.da"));
  EXPECT_FALSE(findFileNoCase(d.path, ""));
  fs::create_directory(d.path / "SUB.DAT");  // a directory is not a command file
  EXPECT_FALSE(findFileNoCase(d.path, "sub.dat"));
}

TEST(CommandFiles, CommandFileFromBaseNameOrFullName) {
  Dir d;
  d.touch("PROJ.DAT");
  d.touch("_inspect.dat");
  EXPECT_EQ(findCommandFile(d.path, "proj")->filename(), "PROJ.DAT");
  EXPECT_EQ(findCommandFile(d.path, "PROJ")->filename(), "PROJ.DAT");
  EXPECT_EQ(findCommandFile(d.path, "_INSPECT.DAT")->filename(), "_inspect.dat");
  EXPECT_EQ(findCommandFile(d.path, (d.path / "proj").string())->filename(), "PROJ.DAT");  // a full path too
  EXPECT_FALSE(findCommandFile(d.path, "missing"));
  EXPECT_FALSE(findCommandFile(d.path, "PROJ.DAT.DAT"));
  EXPECT_EQ(commandFileName("proj"), "proj.DAT");
  EXPECT_EQ(commandFileName("GRID__.DAT"), "GRID__.DAT");
  EXPECT_EQ(commandFileName("regrid.dat"), "regrid.dat");
}

TEST(CommandFiles, OutputsKeepOneSpelling) {
  Dir d;
  d.touch("ERROR.LOG");
  d.touch("Error.Log");
  d.touch("other.log");
  fs::path p = prepareOutputFile(d.path, "error.log");
  EXPECT_EQ(p, d.path / "error.log");
  EXPECT_FALSE(fs::exists(d.path / "ERROR.LOG"));
  EXPECT_FALSE(fs::exists(d.path / "Error.Log"));
  EXPECT_TRUE(fs::exists(d.path / "other.log"));
}

TEST(CommandFiles, DefaultExtensionsAreAddedOnlyToBareNames) {
  EXPECT_EQ(withDefaultExtension("demo", ".SOL"), "demo.SOL");
  EXPECT_EQ(withDefaultExtension("_INSPECT.XTR", ".XTR"), "_INSPECT.XTR");
  EXPECT_EQ(withDefaultExtension("GRID__.xtr", ".XTR"), "GRID__.xtr");
  EXPECT_EQ(withDefaultExtension("dir.v2/demo", ".XTR"), "dir.v2/demo.XTR");
  EXPECT_EQ(withDefaultExtension(".hidden", ".SOL"), ".hidden.SOL");
  EXPECT_EQ(withDefaultExtension("name.", ".SOL"), "name..SOL");
}
