// The directory memory TARNO.def and the default base name.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "core/error.h"
#include "lifecycle_fixture.h"
#include "store/default_dirs.h"
#include "store/lifecycle_basename.h"

namespace tarno::test {
namespace {

class DefaultDirectoriesTest : public LifecycleTest {
 protected:
  std::string Def() const { return P("config/TARNO.def"); }
  std::vector<std::string> Lines() const {
    std::ifstream in(Def());
    std::vector<std::string> out;
    for (std::string l; std::getline(in, l);) out.push_back(l);
    return out;
  }
  void WriteDef(const std::vector<std::string>& lines) {
    std::ofstream out(Def());
    for (const auto& l : lines) out << l << "\n";
  }
};

TEST_F(DefaultDirectoriesTest, MissingFileIsCreatedWithTheKeyAndCurrentDirectory) {
  EXPECT_EQ(DefaultDirectoriesFile(), Def());
  EXPECT_EQ(DefaultDirectoriesIn(Def(), "Open Project Path", DirectoryMode::Read, "/data/x"),
            "/data/x/");
  EXPECT_EQ(Lines(), std::vector<std::string>{"Open Project Path = /data/x"});
}

TEST_F(DefaultDirectoriesTest, ReadFindsTheKeyAndAddsTheClosingSeparator) {
  WriteDef({"Default select BBM path = /maps/bbm", "Open Project Path = /proj/", "",
            "Default Export Wells path = /out\r"});
  EXPECT_EQ(DefaultDirectories("Open Project Path", DirectoryMode::Read), "/proj/");
  EXPECT_EQ(DefaultDirectories("Default select BBM path", DirectoryMode::Read), "/maps/bbm/");
  // A line written with CR LF reads the same.
  EXPECT_EQ(DefaultDirectories("Default Export Wells path", DirectoryMode::Read), "/out/");
  // A key that is not there answers the directory of TARNO.def.
  EXPECT_EQ(DefaultDirectories("Default Import WL path", DirectoryMode::Read), P("config") + "/");
  // A key is not matched by a longer key's line.
  EXPECT_EQ(DefaultDirectories("Default select", DirectoryMode::Read), P("config") + "/");
}

// Where an exchange dialog starts: the remembered folder, else the one it is given
// (the project's), never the folder of TARNO.def; and it writes nothing.
TEST_F(DefaultDirectoriesTest, AStartDirectoryFallsBackToTheGivenFolderAndWritesNothing) {
  EXPECT_EQ(StartDirectoryIn(Def(), "Default DXF conversion path", "/proj"), "/proj/");
  EXPECT_FALSE(std::filesystem::exists(Def())) << "a missing memory is not created";
  WriteDef({"Open Project Path = /proj", "Default DXF conversion path = /cad\r",
            "Default Export Elements path = "});
  EXPECT_EQ(StartDirectoryIn(Def(), "Default DXF conversion path", "/proj"), "/cad/");
  EXPECT_EQ(StartDirectoryIn(Def(), "Default Export Elements path", "/proj"), "/proj/")
      << "an empty entry is none";
  EXPECT_EQ(StartDirectoryIn(Def(), "Default Export Barriers path", "/proj"), "/proj/");
  EXPECT_EQ(Lines().size(), 3u);
}

TEST_F(DefaultDirectoriesTest, OnlyTheFirstFiftyLinesAreLookedAt) {
  std::vector<std::string> lines;
  for (int i = 0; i < 49; ++i) lines.push_back("Filler " + std::to_string(i) + " = /f");
  lines.push_back("Line fifty = /fifty");
  lines.push_back("Line fifty-one = /fiftyone");
  WriteDef(lines);
  EXPECT_EQ(DefaultDirectories("Line fifty", DirectoryMode::Read), "/fifty/");
  EXPECT_EQ(DefaultDirectories("Line fifty-one", DirectoryMode::Read), P("config") + "/");

  // Writing a key that is not within reach puts it where it will be found.
  DefaultDirectoriesIn(Def(), "Line fifty-one", DirectoryMode::Write, "/new");
  EXPECT_EQ(DefaultDirectories("Line fifty-one", DirectoryMode::Read), "/new/");
  EXPECT_EQ(Lines().size(), 52u);
}

TEST_F(DefaultDirectoriesTest, WriteReplacesOnlyItsLine) {
  WriteDef({"A = /a", "Open Project Path = /old", "B = /b"});
  EXPECT_EQ(DefaultDirectoriesIn(Def(), "Open Project Path", DirectoryMode::Write, "/new/dir"),
            "/new/dir/");
  EXPECT_EQ(Lines(), (std::vector<std::string>{"A = /a", "Open Project Path = /new/dir", "B = /b"}));
  DefaultDirectoriesIn(Def(), "C", DirectoryMode::Write, "/c");
  EXPECT_EQ(Lines().back(), "C = /c");
  // Write mode with the process's current directory.
  DefaultDirectories("B", DirectoryMode::Write);
  EXPECT_EQ(DefaultDirectories("B", DirectoryMode::Read),
            WithClosingSeparator(std::filesystem::current_path().string()));
}

TEST_F(DefaultDirectoriesTest, UnwritableFileIsAClearError) {
  std::filesystem::create_directories(P("config/TARNO.def"));  // a directory in its place
  try {
    DefaultDirectories("Open Project Path", DirectoryMode::Write);
    FAIL() << "no error";
  } catch (const Error& e) {
    EXPECT_NE(std::string(e.what()).find("TARNO.def"), std::string::npos);
  }
}

TEST_F(DefaultDirectoriesTest, WindowSettingsFollowTheConfigurationDirectory) {
  // The fixture points TARNO_CONFIG_DIR at its own folder.
  const std::string dir = ::getenv("TARNO_CONFIG_DIR");
  EXPECT_EQ(WindowSettingsFile(), WithClosingSeparator(dir) + "TARNO2K.ini");
  EXPECT_TRUE(std::filesystem::is_directory(dir));
  // Without it the platform's per-user store is used: no file of our own.
  ::unsetenv("TARNO_CONFIG_DIR");
  EXPECT_EQ(WindowSettingsFile(), "");
  ::setenv("TARNO_CONFIG_DIR", dir.c_str(), 1);
}

TEST(DefaultBaseName, CodesEachPlace) {
  // month, day, year, hour, minute, second
  EXPECT_EQ(DefaultBaseName({2005, 1, 2, 3, 4, 5}), "125342");
  EXPECT_EQ(DefaultBaseName({2024, 12, 31, 23, 59, 59}), "cv24n59t");
  EXPECT_EQ(DefaultBaseName({2010, 10, 10, 10, 10, 20}), "aa10a10a");
  EXPECT_EQ(DefaultBaseName({2000, 9, 9, 9, 0, 19}), "990909");
  EXPECT_EQ(DefaultBaseName({1999, 11, 25, 0, 30, 1}), "bp990300");
  EXPECT_EQ(DefaultBaseName({2024, 12, 31, 23, 59, 60}), "cv24n59t");
}

TEST(DefaultBaseName, IsAValidBaseNameAtAnyTime) {
  for (int m = 1; m <= 12; ++m)
    for (int h = 0; h < 24; h += 5)
      for (int s = 0; s < 60; s += 7) {
        const std::string name = DefaultBaseName({2023, m, 28, h, 58, s});
        EXPECT_TRUE(ProjectSettings::ValidBaseName(name)) << name;
      }
  EXPECT_TRUE(ProjectSettings::ValidBaseName(DefaultBaseNameNow()));
}

TEST(DefaultBaseName, RejectsFieldsOutOfRange) {
  EXPECT_THROW(DefaultBaseName({2024, 13, 1, 0, 0, 0}), Error);
  EXPECT_THROW(DefaultBaseName({2024, 1, 0, 0, 0, 0}), Error);
  EXPECT_THROW(DefaultBaseName({2024, 1, 1, 24, 0, 0}), Error);
  EXPECT_THROW(DefaultBaseName({2024, 1, 1, 0, 60, 0}), Error);
}

}  // namespace
}  // namespace tarno::test
