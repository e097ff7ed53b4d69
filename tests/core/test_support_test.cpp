// The shared test support: the temporary folder of a test and the program runner.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <utility>

#include "support/program_runner.h"
#include "support/temp_dir.h"

namespace tarno::test {
namespace {

namespace fs = std::filesystem;

TEST(TempDir, IsNewAndEmptyAndGoesWithEverythingInIt) {
  fs::path kept;
  {
    TempDir a("support");
    TempDir b("support");
    ASSERT_TRUE(fs::is_directory(a.Path()));
    EXPECT_NE(a.Path(), b.Path());
    EXPECT_TRUE(fs::is_empty(a.Path()));
    // Named after the running test, so that a folder left behind can be traced.
    EXPECT_NE(a.Path().filename().string().find("TempDir.IsNewAndEmpty"), std::string::npos);

    // A folder that its test made read-only and unsearchable is removed all the same.
    fs::create_directories(a / "locked" / "inner");
    ASSERT_TRUE(WriteFile(a / "locked" / "inner" / "f.txt", "x"));
    fs::permissions(a / "locked" / "inner", fs::perms::owner_read);
    fs::permissions(a / "locked", fs::perms::owner_read);
    kept = a.Path();
  }
  EXPECT_FALSE(fs::exists(kept));
}

TEST(TempDir, AMovedFolderIsRemovedOnceByItsNewOwner) {
  TempDir moved("support");
  const fs::path path = moved.Path();
  {
    TempDir first("support");
    const fs::path replaced = first.Path();
    first = std::move(moved);
    EXPECT_FALSE(fs::exists(replaced));
    EXPECT_TRUE(moved.Path().empty());
    EXPECT_EQ(first.Path(), path);
  }
  EXPECT_FALSE(fs::exists(path));
}

TEST(TempDir, FilesReadBackByteForByte) {
  TempDir dir;
  const std::string bytes = std::string("a\r\nb\0c", 6);
  ASSERT_TRUE(WriteFile(dir / "f.bin", bytes));
  EXPECT_EQ(ReadFile(dir / "f.bin"), bytes);
  EXPECT_EQ(ReadFile(dir / "missing"), "");
  EXPECT_FALSE(WriteFile(dir / "no such folder" / "f.bin", "x"));
}

TEST(RunExecutable, GivesExitCodeAndBothStreamsApart) {
  RunResult r = RunExecutable("sh", {"-c", "echo out; echo err >&2; exit 3"});
  EXPECT_EQ(r.status, 3);
  EXPECT_EQ(r.out, "out\n");
  EXPECT_EQ(r.err, "err\n");

  // Arguments reach the program as they are, blanks and quotes included.
  r = RunExecutable("sh", {"-c", "printf '%s|' \"$@\"", "sh", "a b", "it's", ""});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out, "a b|it's||");

  // Much output on both streams at once must not block the program.
  r = RunExecutable(
      "sh", {"-c",
             "i=0; while [ $i -lt 4000 ]; do echo 0123456789012345678901234567890123456789; "
             "echo 0123456789012345678901234567890123456789 >&2; i=$((i+1)); done"});
  EXPECT_EQ(r.status, 0);
  EXPECT_EQ(r.out.size(), 4000u * 41);
  EXPECT_EQ(r.err.size(), 4000u * 41);
}

TEST(RunExecutable, RunsInTheFolderWithTheEnvironmentAndInputAsked) {
  TempDir dir;
  ASSERT_TRUE(WriteFile(dir / "in.txt", "from the file\n"));
  ::setenv("TARNO_SUPPORT_TEST_GONE", "still here", 1);
  RunOptions options;
  options.cwd = dir.Path();
  options.env = {"TARNO_SUPPORT_TEST=set", "TARNO_SUPPORT_TEST_EMPTY="};
  options.unset = {"TARNO_SUPPORT_TEST_GONE"};
  options.input = "in.txt";  // relative to the program's folder
  const RunResult r = RunExecutable(
      "sh",
      {"-c",
       "pwd -P; echo \"$TARNO_SUPPORT_TEST\"; echo \"${TARNO_SUPPORT_TEST_EMPTY-unset}.\"; "
       "echo \"${TARNO_SUPPORT_TEST_GONE-unset}\"; cat"},
      options);
  ::unsetenv("TARNO_SUPPORT_TEST_GONE");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, fs::canonical(dir.Path()).string() + "\nset\n.\nunset\nfrom the file\n");
}

TEST(RunExecutable, AProgramThatCannotStartOrIsKilledSaysSo) {
  TempDir dir;
  RunResult r = RunExecutable(dir / "no-such-program", {});
  EXPECT_EQ(r.status, 127);
  EXPECT_NE(r.err.find("no-such-program"), std::string::npos) << r.err;

  RunOptions elsewhere;
  elsewhere.cwd = dir / "no such folder";
  r = RunExecutable("sh", {"-c", "exit 0"}, elsewhere);
  EXPECT_EQ(r.status, 127);

  r = RunExecutable("sh", {"-c", "echo partial; kill -KILL $$"});
  EXPECT_EQ(r.status, -1);
  EXPECT_EQ(r.out, "partial\n");
}

TEST(RunProgram, RunsTheProgramsOfTheBuild) {
  EXPECT_EQ(ProgramPath("tarno1"), fs::path(TARNO_BIN_DIR) / "tarno1");
  // The suite's own runner is there whatever else was built.
  EXPECT_TRUE(fs::exists(ProgramPath("test_core")));
  const RunResult r =
      RunProgram("test_core", {"--gtest_list_tests", "--gtest_filter=RunProgram.*"});
  EXPECT_EQ(r.status, 0);
  EXPECT_NE(r.out.find("RunsTheProgramsOfTheBuild"), std::string::npos) << r.out;
}

}  // namespace
}  // namespace tarno::test
