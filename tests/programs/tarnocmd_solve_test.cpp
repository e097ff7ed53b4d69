// tarnocmd solve and results, end to end with the real solver of the build.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include "program_test_util.h"
#include "tarnocmd_fixture.h"
#include "store/database.h"

namespace tarno::test {
namespace {

namespace fs = std::filesystem;


// An aquifer, three pumping wells (rates in Head) and a river of four vertices.
constexpr const char* kThreeWellsAndARiver = R"sql(
BEGIN;
UPDATE Model SET AQBase = 80.0, AQThickness = '40', AQHydCond = 15.0, AQPorosity = 0.25;
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 1200.0, 850.0);
INSERT INTO Wells(VID, Label, Head) VALUES (last_insert_rowid(), 'Municipal1', 800.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 1450.0, 700.0);
INSERT INTO Wells(VID, Label, Head) VALUES (last_insert_rowid(), 'Municipal2', 500.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 900.0, 1300.0);
INSERT INTO Wells(VID, Label, Head) VALUES (last_insert_rowid(), 'Irrigation', 300.0);
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES ((SELECT max(PID) FROM Polygons), 0, 0.0, 0.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES ((SELECT max(PID) FROM Polygons), 100, 600.0, 250.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES ((SELECT max(PID) FROM Polygons), 200, 1300.0, 300.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES ((SELECT max(PID) FROM Polygons), 300, 2000.0, 100.0);
INSERT INTO LinesinkStrings(PID, Label, StartingHead, EndingHead)
  VALUES ((SELECT max(PID) FROM Polygons), 'WabashRiver', 120.0, 118.5);
COMMIT;
)sql";

class TarnocmdSolve : public TarnocmdProject {
 protected:
  void SetUp() override {
    MakeProject("example");
    Database db = Database::Open(project_);
    db.ExecuteRaw(kThreeWellsAndARiver);
  }
};

TEST_F(TarnocmdSolve, SolvesTheExampleAndLoadsHeads) {
  const RunResult r = Run({"solve", project_});
  ASSERT_EQ(r.status, 0) << r.out << r.err;
  EXPECT_TRUE(Contains(r.out, "Run: new solution")) << r.out;
  EXPECT_TRUE(Contains(r.out, "Water balance")) << r.out;
  EXPECT_TRUE(Contains(r.out, "Result rows loaded: ")) << r.out;
  EXPECT_TRUE(fs::exists(dir_ / "example.SOL"));

  // The wells pump 800, 500 and 300 m3/day next to a river at 118.5 to 120 m: their
  // heads are drawn down below the river but stay far above the base at 80 m, and the
  // solver's discharges come back into the result table.
  Database db = Database::Open(project_);
  Statement st = db.PrepareRaw("select Label, Head, Discharge from WLResults order by Label");
  int rows = 0;
  double pumped = 0;
  while (st.Step()) {
    ++rows;
    EXPECT_GT(st.GetDouble(1), 100.0) << st.GetText(0);
    EXPECT_LT(st.GetDouble(1), 119.0) << st.GetText(0);
    pumped += st.GetDouble(2);
  }
  EXPECT_EQ(rows, 3);
  EXPECT_NEAR(pumped, 1600.0, 1e-6);
  db.Close();

  const RunResult csv = Run({"results", project_, "wlresults"});
  ASSERT_EQ(csv.status, 0) << csv.err;
  std::istringstream lines(csv.out);
  std::string header, line;
  std::getline(lines, header);
  EXPECT_EQ(header.rfind("Label,TARNOLabel,", 0), 0u) << header;
  EXPECT_TRUE(Contains(header, ",Head")) << header;
  int n = 0;
  while (std::getline(lines, line)) {
    ++n;
    EXPECT_EQ(std::count(line.begin(), line.end(), ','), std::count(header.begin(), header.end(), ','))
        << line;
  }
  EXPECT_EQ(n, 3);
  EXPECT_TRUE(Contains(csv.out, "Municipal1,WL_"));
}

TEST_F(TarnocmdSolve, RegridAndContinueAfterAFirstSolve) {
  ASSERT_EQ(Run({"solve", project_}).status, 0);
  const RunResult regrid = Run({"solve", project_, "--no"});
  EXPECT_EQ(regrid.status, 0) << regrid.err;
  EXPECT_TRUE(Contains(regrid.out, "Run: regrid")) << regrid.out;
  const RunResult more = Run({"solve", project_, "--continue", "2"});
  EXPECT_EQ(more.status, 0) << more.err;
  EXPECT_TRUE(Contains(more.out, "Run: continued solution (2 more iterations)")) << more.out;
  Database db = Database::Open(project_);
  Statement st = db.PrepareRaw("select SOLVERIterations from Model");
  ASSERT_TRUE(st.Step());
  EXPECT_EQ(st.GetInt64(0), 2);
}

// Counts the occurrences of `part` in `text`.
std::size_t Occurrences(const std::string& text, const std::string& part) {
  std::size_t n = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
  return n;
}

TEST_F(TarnocmdSolve, FatalRunExitsNonZeroWithTheReportShownOnce) {
  ASSERT_EQ(Run({"solve", project_}).status, 0);
  std::ofstream(dir_ / "example.SOL", std::ios::trunc) << "not a solution";
  const RunResult r = Run({"solve", project_, "--continue", "1"});
  EXPECT_EQ(r.status, 1) << r.out;
  EXPECT_EQ(Occurrences(r.err, "Fatal execution error: TARNO Encountered a fatal error: "), 1u)
      << r.err;
  // Every line of the solver's report once, as a line of the message; the solver's
  // own standard error does not pass through.
  EXPECT_EQ(Occurrences(r.err, "cannot be loaded"), 2u) << r.err;
  std::istringstream lines(r.err);
  std::string line;
  while (std::getline(lines, line)) {
    if (Contains(line, "cannot be loaded")) {
      EXPECT_EQ(line.rfind("Fatal execution error: ", 0), 0u) << line;
    }
  }
  EXPECT_TRUE(Contains(r.err, "tarnocmd: the solver ended with a fatal error (exit status "))
      << r.err;
  EXPECT_FALSE(fs::exists(dir_ / "TARNO.OPS"));

  // The next solve starts anew and works.
  const RunResult again = Run({"solve", project_});
  EXPECT_EQ(again.status, 0) << again.err;
  EXPECT_TRUE(Contains(again.out, "Run: new solution")) << again.out;
}

TEST_F(TarnocmdSolve, KilledSolverIsFatalAndTheNextSolveWorks) {
  // A program folder whose solver is killed half-way through its extract file.
  const fs::path bin = dir_ / "bin";
  fs::create_directories(bin);
  {
    std::ofstream s(bin / "tarno1");
    s << "#!/bin/sh\nprintf '* data points\\r\\n* discharge specified wells\\r\\n 1.0' > "
         "example.XTR\nkill -KILL $$\n";
  }
  fs::permissions(bin / "tarno1", fs::perms::owner_all);
  const RunResult r = Run({"solve", project_}, {"TARNO_PROGRAM_DIR=" + bin.string()});
  EXPECT_EQ(r.status, 1) << r.out;
  EXPECT_TRUE(Contains(r.err, "Fatal execution error: The solver ended abnormally (signal 9)"))
      << r.err;
  EXPECT_TRUE(Contains(r.out, "Solver exit status: 137")) << r.out;

  const RunResult again = Run({"solve", project_});
  ASSERT_EQ(again.status, 0) << again.err;
  EXPECT_TRUE(Contains(again.out, "Run: new solution")) << again.out;
  Database db = Database::Open(project_);
  Statement st = db.PrepareRaw("select count(*) from WLResults where Discharge > 0");
  ASSERT_TRUE(st.Step());
  EXPECT_EQ(st.GetInt64(0), 3);
}

TEST_F(TarnocmdSolve, BadArgumentsAndTables) {
  EXPECT_EQ(Run({"solve"}).status, 2);
  EXPECT_EQ(Run({"solve", project_, "--continue", "0"}).status, 2);
  EXPECT_EQ(Run({"solve", project_, "--regrid", "--continue", "3"}).status, 2);
  EXPECT_EQ(Run({"results", project_, "Wells"}).status, 2);
  const RunResult missing = Run({"solve", (dir_ / "nothing.trn").string()});
  EXPECT_EQ(missing.status, 1);
  EXPECT_TRUE(Contains(missing.err, "nothing.trn")) << missing.err;
}

}  // namespace
}  // namespace tarno::test

namespace tarno::test {
namespace {

// A base name or a folder that the file system refuses stops the solve before it
// deletes anything: the message names the name or the path, the run files of the
// last solve stay, and the general error trap is never reached.
TEST_F(TarnocmdSolve, UnwritableSolverFilesAreToldAndTheSolutionStays) {
  ASSERT_EQ(Run({"solve", project_}).status, 0);
  ASSERT_TRUE(fs::exists(dir_ / "example.SOL"));
  const std::string missing = (dir_ / "no such folder").string();
  for (const auto& [name, path, named] :
       std::vector<std::tuple<std::string, std::string, std::string>>{
           {"a/b*c", dir_.string(), "a/b*c"}, {"example", missing, missing}}) {
    SCOPED_TRACE(name + " in " + path);
    {
      Database db = Database::Open(project_);
      Statement st = db.PrepareRaw("update Project set TARNOBaseName = ?, TARNOBasePath = ?");
      st.Bind(1, name).Bind(2, path);
      st.Run();
    }
    const RunResult r = Run({"solve", project_});
    EXPECT_EQ(r.status, 1);
    EXPECT_TRUE(Contains(r.err, "Cannot Write Solver Files")) << r.err;
    EXPECT_TRUE(Contains(r.err, named)) << r.err;
    EXPECT_FALSE(Contains(r.err, "Unhandled error")) << r.err;
    EXPECT_TRUE(fs::exists(dir_ / "example.SOL"));
    EXPECT_TRUE(fs::exists(dir_ / "example.XTR"));
  }
}

}  // namespace
}  // namespace tarno::test
