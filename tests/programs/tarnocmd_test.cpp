// The batch front end, run as a program: exit status, output and the files it makes.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "program_test_util.h"
#include "store/database.h"
#include "store/dialogs.h"
#include "store/schema.h"

namespace tarno::test {
namespace {

namespace fs = std::filesystem;


class TarnocmdTest : public ::testing::Test {
 protected:
  void SetUp() override {
    temp_.emplace("tarno-cmd");
    dir_ = temp_->Path();
    fs::create_directories(dir_ / "elsewhere");
  }
  void TearDown() override { temp_.reset(); }

  // Runs tarnocmd with `args` in the directory `cwd` (the test folder by default).
  RunResult Run(const std::vector<std::string>& args, const fs::path& cwd = {}) {
    RunOptions options;
    options.cwd = cwd.empty() ? dir_ : cwd;
    options.env = {"TARNO_CONFIG_DIR=" + (dir_ / "config").string()};
    return RunProgram("tarnocmd", args, options);
  }
  std::string P(const std::string& name) const { return (dir_ / name).string(); }

  static std::string Text(const std::string& path, const std::string& sql) {
    Database db = Database::Open(path);
    Statement st = db.PrepareRaw(sql);
    return st.Step() ? st.GetText(0) : "<no row>";
  }

  std::optional<TempDir> temp_;
  fs::path dir_;
};

TEST_F(TarnocmdTest, HelpAndBadUsage) {
  RunResult r = Run({"help"});
  EXPECT_EQ(r.status, 0);
  EXPECT_TRUE(Contains(r.out, "tarnocmd new <path>"));
  EXPECT_TRUE(Contains(r.out, "tarnocmd info <path>"));

  r = Run({});
  EXPECT_EQ(r.status, 2);
  EXPECT_TRUE(Contains(r.err, "Usage:"));

  r = Run({"frobnicate"});
  EXPECT_EQ(r.status, 2);
  EXPECT_TRUE(Contains(r.err, "unknown command \"frobnicate\""));

  r = Run({"new", P("a.trn"), "--map-units", "yards"});
  EXPECT_EQ(r.status, 2);
  EXPECT_TRUE(Contains(r.err, "\"yards\""));
  EXPECT_FALSE(fs::exists(P("a.trn")));

  r = Run({"new"});
  EXPECT_EQ(r.status, 2);
  r = Run({"new", P("a.trn"), "--bogus"});
  EXPECT_EQ(r.status, 2);
  EXPECT_TRUE(Contains(r.err, "--bogus"));
  r = Run({"info"});
  EXPECT_EQ(r.status, 2);
}

TEST_F(TarnocmdTest, NewCreatesTheFullSchemaWithDefaults) {
  const std::string path = P("model.trn");
  // Run from another directory: the solver files go beside the project unasked.
  RunResult r = Run({"new", path, "--description", "Vincennes test", "--map-units", "feet",
                     "--model-units", "meters"},
                    dir_ / "elsewhere");
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(Contains(r.out, "Created " + path));
  EXPECT_FALSE(Contains(r.err, "TARNO: Your Project File and your Intermediate Model Files"));

  Database db = Database::Open(path);
  std::set<std::string> tables;
  {
    Statement st = db.PrepareRaw(
        "select name from sqlite_master where type='table' and name not like 'sqlite_%';");
    while (st.Step()) tables.insert(st.GetText(0));
  }
  EXPECT_EQ(tables.size(), 24u);
  for (const TableDef& t : ProjectSchema()) EXPECT_EQ(tables.count(std::string(t.name)), 1u) << t.name;

  Statement m = db.Prepare("select * from Model;");
  ASSERT_TRUE(m.Step());
  EXPECT_EQ(m.GetText("AQThickness"), "1");
  EXPECT_EQ(m.GetDouble("SOLVERX0"), -100);
  EXPECT_EQ(m.GetDouble("SOLVERY0"), -100);
  EXPECT_EQ(m.GetDouble("WINDOWX1"), 100);
  EXPECT_EQ(m.GetDouble("WINDOWX2"), -100);
  EXPECT_FALSE(m.GetBool("BasemapMeters"));
  EXPECT_TRUE(m.GetBool("ComputeMeters"));
  EXPECT_FALSE(m.Step());

  Statement p = db.Prepare("select * from Project;");
  ASSERT_TRUE(p.Step());
  EXPECT_EQ(p.GetText("Description"), "Vincennes test");
  EXPECT_EQ(p.GetInt64("ProjectVersion"), 123);
  EXPECT_EQ(p.GetText("TARNOBasePath"), dir_.string());
  const std::string base = p.GetText("TARNOBaseName");
  EXPECT_TRUE(ProjectSettings::ValidBaseName(base)) << base;
  EXPECT_NE(base, "basename");
  EXPECT_FALSE(fs::exists(path + ".compress"));
}

TEST_F(TarnocmdTest, NewAnswersNoAndKeepsExistingFiles) {
  const std::string path = P("keep.trn");
  RunResult r = Run({"new", path, "--no", "--base-name", "run7"}, dir_ / "elsewhere");
  ASSERT_EQ(r.status, 0) << r.err;
  // The solver files go beside the new project, not where the program ran; no
  // question on their place is asked, so --no does not move them away.
  EXPECT_EQ(Text(path, "select TARNOBasePath from Project"), dir_.string());
  EXPECT_FALSE(Contains(r.err, "not set in the same place")) << r.err;
  EXPECT_EQ(Text(path, "select TARNOBaseName from Project"), "run7");
  EXPECT_EQ(Text(path, "select Description from Project"), "New TARNO Project\n");

  const std::string before = ReadFile(path);
  r = Run({"new", path, "--description", "second"});
  EXPECT_EQ(r.status, 1);
  EXPECT_TRUE(Contains(r.err, "File Exists: " + path + " already exists -- should I overwrite it?"));
  EXPECT_TRUE(Contains(r.err, "Aborted: New file creation aborted"));
  EXPECT_EQ(ReadFile(path), before);

  r = Run({"new", path, "--description", "second", "--yes"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(Text(path, "select Description from Project"), "second");
}

TEST_F(TarnocmdTest, NewWithABadBaseNameFails) {
  RunResult r = Run({"new", P("bad.trn"), "--base-name", "too long name"});
  EXPECT_EQ(r.status, 1);
  EXPECT_TRUE(Contains(r.err, "Bad file name: Base file name must be less than 8 characters, with no spaces"));
}

TEST_F(TarnocmdTest, InfoShowsCountsAndExtents) {
  const std::string path = P("info.trn");
  ASSERT_EQ(Run({"new", path, "--base-name", "inf1"}).status, 0);
  RunResult r = Run({"info", path});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(Contains(r.out, "Version: 123"));
  EXPECT_TRUE(Contains(r.out, "Base name: inf1"));
  EXPECT_TRUE(Contains(r.out, "Basemap units: Meters"));
  EXPECT_TRUE(Contains(r.out, "  Wells            0 (2-D 0, partially penetrating 0, transient 0)\n"));
  EXPECT_TRUE(Contains(r.out, "Extents: no elements"));

  {
    Database db = Database::Open(path);
    db.ExecuteRaw(
        "insert into Vertices(PID, Seq, X, Y) values (-1, -1, 10.5, -3);"
        "insert into Vertices(PID, Seq, X, Y) values (-1, -1, 250, 40);"
        "insert into Polygons(Closed) values (0);"
        "insert into Vertices(PID, Seq, X, Y) values (1, 0, -7, 12);");
  }
  const std::string before = ReadFile(path);
  r = Run({"info", path});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(Contains(r.out, "  Vertices         3\n"));
  EXPECT_TRUE(Contains(r.out, "  Polygons         1\n"));
  EXPECT_TRUE(Contains(r.out, "Extents: X -7 to 250, Y -3 to 40"));
  EXPECT_EQ(ReadFile(path), before);  // info changes nothing
}

// The wells are counted by kind as the desktop program's "Model Size" counts them: a
// partially penetrating well is not also a plain (2-D) one, a transient one neither.
TEST_F(TarnocmdTest, InfoCountsTheWellsByKindAsModelSizeDoes) {
  const std::string path = P("wells.trn");
  ASSERT_EQ(Run({"new", path, "--base-name", "wl1"}).status, 0);
  {
    Database db = Database::Open(path);
    for (int i = 1; i <= 5; ++i)
      db.ExecuteRaw("insert into Vertices(PID, Seq, X, Y) values (-1, -1, " + std::to_string(i) +
                    ", 0);");
    db.ExecuteRaw(
        "insert into Wells (VID, Label, HeadSpecified, PPWell, Transient) values "
        "(1,'a',1,0,0),(2,'b',0,0,0),(3,'c',1,1,0),(4,'d',0,1,1),(5,'e',0,0,1)");
  }
  RunResult r = Run({"info", path});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(Contains(r.out, "  Wells            5 (2-D 2, partially penetrating 2, transient 1)\n"))
      << r.out;
}

TEST_F(TarnocmdTest, InfoOfBadFilesFails) {
  RunResult r = Run({"info", P("missing.trn")});
  EXPECT_EQ(r.status, 1);
  EXPECT_TRUE(Contains(r.err, "missing.trn"));

  { std::ofstream(P("notes.trn")) << "hello\n"; }
  r = Run({"info", P("notes.trn")});
  EXPECT_EQ(r.status, 1);
  EXPECT_TRUE(Contains(r.err, "Not a Project File"));
  EXPECT_TRUE(Contains(r.err, "notes.trn"));
  EXPECT_EQ(r.out, "");
}

// --- settings ----------------------------------------------------------------

TEST_F(TarnocmdTest, SettingsWithoutAChangePrintsThemAndChangesNothing) {
  const std::string path = P("show.trn");
  ASSERT_EQ(Run({"new", path, "--base-name", "show1", "--map-units", "feet"}).status, 0);
  const std::string before = ReadFile(path);
  const RunResult r = Run({"settings", path});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "Description: New TARNO Project\nBase name: show1\nBase path: " + dir_.string() +
                       "\nBasemap units: Feet\nComputation units: Meters\n");
  EXPECT_EQ(r.err, "");
  EXPECT_EQ(ReadFile(path), before);
}

TEST_F(TarnocmdTest, SettingsChangesTheBaseNameAndPathThatInfoReports) {
  const std::string path = P("change.trn");
  ASSERT_EQ(Run({"new", path, "--base-name", "first"}).status, 0);
  const std::string elsewhere = (dir_ / "elsewhere").string();
  RunResult r = Run({"settings", path, "--base-name", " second ", "--path", elsewhere + "/",
                     "--description", "Calibration runs"});
  ASSERT_EQ(r.status, 0) << r.err;
  // The name is trimmed and the closing separator dropped, as the dialog does.
  EXPECT_TRUE(Contains(r.out, "Base name: second\nBase path: " + elsewhere + "\n")) << r.out;
  r = Run({"info", path});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(Contains(r.out, "Description: Calibration runs\n")) << r.out;
  EXPECT_TRUE(Contains(r.out, "Base name: second\n")) << r.out;
  EXPECT_TRUE(Contains(r.out, "Base path: " + elsewhere + "\n")) << r.out;

  // One value alone leaves the others; a relative folder is taken from where the
  // program runs and stored whole.
  r = Run({"settings", path, "--path", ".."}, dir_ / "elsewhere");
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(Text(path, "select TARNOBasePath from Project"), dir_.string());
  EXPECT_EQ(Text(path, "select TARNOBaseName from Project"), "second");
  EXPECT_EQ(Text(path, "select Description from Project"), "Calibration runs");
}

TEST_F(TarnocmdTest, SettingsRefusesABadValueWithTheDialogsMessageAndChangesNothing) {
  const std::string path = P("refuse.trn");
  ASSERT_EQ(Run({"new", path, "--base-name", "keep"}).status, 0);
  const std::string before = ReadFile(path);
  const std::string notChanged = "tarnocmd: the settings of " + path + " were not changed\n";
  struct Case {
    std::vector<std::string> options;
    std::string message;
  };
  const std::vector<Case> cases = {
      {{"--base-name", "ninechars"},
       "Bad file name: Base file name must be less than 8 characters, with no spaces\n"},
      {{"--base-name", "a b"},
       "Bad file name: Base file name must be less than 8 characters, with no spaces\n"},
      {{"--base-name", "a*b", "--description", "lost"},
       "Bad file name: Base file name must not contain any of the characters / \\ : * ? \" < > |\n"},
      {{"--path", path, "--base-name", "other"},
       "Bad path: The path " + path + " is not a folder.\nBad path: Please enter another path.\n"},
      {{"--path", ""},
       "Bad path: The path of the solver files is empty.\nBad path: Please enter another path.\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.options[1]);
    std::vector<std::string> args = {"settings", path};
    args.insert(args.end(), c.options.begin(), c.options.end());
    const RunResult r = Run(args);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.err, c.message + notChanged);
    EXPECT_EQ(r.out, "");
    EXPECT_EQ(ReadFile(path), before);
  }
  // Eight characters pass.
  const RunResult r = Run({"settings", path, "--base-name", "ninechar"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(Text(path, "select TARNOBaseName from Project"), "ninechar");
}

// A base name that another project in the folder gives its solver files there would
// let a solve of either overwrite the other's run files.
TEST_F(TarnocmdTest, SettingsRefusesABaseNameAnotherProjectUsesInTheFolder) {
  const std::string path = P("mine.trn");
  const std::string other = P("other.trn");
  ASSERT_EQ(Run({"new", path, "--base-name", "mine"}).status, 0);
  ASSERT_EQ(Run({"new", other, "--base-name", "Shared"}).status, 0);
  const std::string before = ReadFile(path);
  RunResult r = Run({"settings", path, "--base-name", "SHARED"});
  EXPECT_EQ(r.status, 1);
  EXPECT_TRUE(Contains(r.err, "Bad file name: Base file name SHARED is used by the project " +
                                  other + " in this folder.\n"
                                  "Bad file name: Please enter another base file name.\n"))
      << r.err;
  EXPECT_EQ(ReadFile(path), before);

  // Once the other project keeps its solver files elsewhere the name is free here.
  ASSERT_EQ(Run({"settings", other, "--path", (dir_ / "elsewhere").string()}).status, 0);
  r = Run({"settings", path, "--base-name", "SHARED"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(Text(path, "select TARNOBaseName from Project"), "SHARED");
}

TEST_F(TarnocmdTest, SettingsCreatesAMissingFolderOnlyWithYes) {
  const std::string path = P("folder.trn");
  ASSERT_EQ(Run({"new", path, "--base-name", "fold"}).status, 0);
  const std::string before = ReadFile(path);
  const fs::path missing = dir_ / "runs" / "first";
  const std::string question = "Create Folder?: The path " + missing.string() +
                               " does not exist.\nCreate Folder?: Create it?\n";
  const std::string notChanged = "tarnocmd: the settings of " + path + " were not changed\n";

  RunResult r = Run({"settings", path, "--path", missing.string()});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, question + "tarnocmd: --yes creates the folder\n" + notChanged);
  EXPECT_FALSE(fs::exists(dir_ / "runs"));
  EXPECT_EQ(ReadFile(path), before);

  r = Run({"settings", path, "--path", missing.string(), "--no"});
  EXPECT_EQ(r.status, 1);
  EXPECT_EQ(r.err, question + notChanged);
  EXPECT_FALSE(fs::exists(dir_ / "runs"));
  EXPECT_EQ(ReadFile(path), before);

  r = Run({"settings", path, "--path", missing.string(), "--yes"});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.err, question);
  EXPECT_TRUE(fs::is_directory(missing));
  r = Run({"info", path});
  EXPECT_TRUE(Contains(r.out, "Base path: " + missing.string() + "\n")) << r.out;
}

TEST_F(TarnocmdTest, SettingsBadUsageAndBadFiles) {
  const std::string path = P("usage.trn");
  ASSERT_EQ(Run({"new", path, "--base-name", "use"}).status, 0);
  EXPECT_EQ(Run({"settings"}).status, 2);
  EXPECT_EQ(Run({"settings", path, "--base-name"}).status, 2);
  EXPECT_EQ(Run({"settings", path, "--path"}).status, 2);
  EXPECT_EQ(Run({"settings", path, P("second.trn")}).status, 2);
  RunResult r = Run({"settings", path, "--units", "feet"});
  EXPECT_EQ(r.status, 2);
  EXPECT_TRUE(Contains(r.err, "\"--units\"")) << r.err;
  EXPECT_TRUE(Contains(Run({"help"}).out, "tarnocmd settings <path>"));

  r = Run({"settings", P("missing.trn"), "--base-name", "x"});
  EXPECT_EQ(r.status, 1);
  EXPECT_TRUE(Contains(r.err, "missing.trn")) << r.err;
  EXPECT_FALSE(fs::exists(P("missing.trn")));

  // A project of a newer version is not written to.
  Database::Open(path).ExecuteRaw("update Project set ProjectVersion = 124");
  const std::string before = ReadFile(path);
  r = Run({"settings", path, "--base-name", "newer"});
  EXPECT_EQ(r.status, 1);
  EXPECT_TRUE(Contains(r.err, "Can't open database: The project database was written by a newer "
                              "version of TARNO."))
      << r.err;
  EXPECT_EQ(ReadFile(path), before);
}

// The desktop's advice after a refused solve names the dialog; the batch program
// adds the command that changes the same two values.
TEST_F(TarnocmdTest, ARefusedSolveNamesTheSettingsCommand) {
  const std::string path = P("solve me.trn");
  ASSERT_EQ(Run({"new", path, "--base-name", "solv"}).status, 0);
  Database::Open(path).ExecuteRaw("update Project set TARNOBaseName = 'a*b'");
  RunResult r = Run({"solve", path});
  EXPECT_EQ(r.status, 1);
  EXPECT_TRUE(Contains(
      r.err,
      "Cannot Write Solver Files: Change the base file name or the path in Project Settings, then "
      "solve again.\n"
      "tarnocmd settings '" + path + "' --base-name NAME --path DIR changes them.\n"
      "tarnocmd: the solve was not started\n"))
      << r.err;

  // Following the advice clears the refusal; a refusal for another reason gets no
  // such line.
  ASSERT_EQ(Run({"settings", path, "--base-name", "ab"}).status, 0);
  Database::Open(path).ExecuteRaw("update Model set CONTOURShow = 1, CONTOURLevel = 1");
  r = Run({"solve", path});
  EXPECT_EQ(r.status, 1);
  EXPECT_TRUE(Contains(r.err, "Bad Entry: ")) << r.err;
  EXPECT_FALSE(Contains(r.err, "Cannot Write Solver Files")) << r.err;
  EXPECT_FALSE(Contains(r.err, "tarnocmd settings")) << r.err;
}

}  // namespace
}  // namespace tarno::test
