// The batch front end, run as a program: exit status, output and the files it makes.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
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
    std::string tmpl = (fs::temp_directory_path() / "tarno-cmd-XXXXXX").string();
    ASSERT_NE(::mkdtemp(tmpl.data()), nullptr);
    dir_ = tmpl;
    fs::create_directories(dir_ / "elsewhere");
  }
  void TearDown() override {
    std::error_code ec;
    fs::remove_all(dir_, ec);
  }

  // Runs tarnocmd with `args` in the directory `cwd` (the test folder by default).
  RunResult Run(const std::vector<std::string>& args, const fs::path& cwd = {}) {
    std::string cmd = "cd " + Quote((cwd.empty() ? dir_ : cwd).string()) +
                      " && TARNO_CONFIG_DIR=" + Quote((dir_ / "config").string()) + " " +
                      Quote(std::string(TARNO_BIN_DIR) + "/tarnocmd");
    for (const auto& a : args) cmd += " " + Quote(a);
    cmd += " >" + Quote((dir_ / "out.txt").string()) + " 2>" + Quote((dir_ / "err.txt").string());
    const int raw = std::system(cmd.c_str());
    RunResult r;
    r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    r.out = ReadAll(dir_ / "out.txt");
    r.err = ReadAll(dir_ / "err.txt");
    return r;
  }
  std::string P(const std::string& name) const { return (dir_ / name).string(); }

  static std::string Text(const std::string& path, const std::string& sql) {
    Database db = Database::Open(path);
    Statement st = db.PrepareRaw(sql);
    return st.Step() ? st.GetText(0) : "<no row>";
  }

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

  const std::string before = ReadAll(path);
  r = Run({"new", path, "--description", "second"});
  EXPECT_EQ(r.status, 1);
  EXPECT_TRUE(Contains(r.err, "File Exists: " + path + " already exists -- should I overwrite it?"));
  EXPECT_TRUE(Contains(r.err, "Aborted: New file creation aborted"));
  EXPECT_EQ(ReadAll(path), before);

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
  const std::string before = ReadAll(path);
  r = Run({"info", path});
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(Contains(r.out, "  Vertices         3\n"));
  EXPECT_TRUE(Contains(r.out, "  Polygons         1\n"));
  EXPECT_TRUE(Contains(r.out, "Extents: X -7 to 250, Y -3 to 40"));
  EXPECT_EQ(ReadAll(path), before);  // info changes nothing
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

}  // namespace
}  // namespace tarno::test
