// The two example projects, built by scripts/make-examples into a temporary folder
// and solved with the programs of the build.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "program_test_util.h"
#include "store/database.h"

namespace tarno::test {
namespace {

namespace fs = std::filesystem;

struct Example {
  const char* file;
  const char* base;
  const char* description;
  double base_elevation;  // the aquifer's base, model units
  double highest;         // no head above this, model units
};

const Example kExamples[] = {
    {"example.trn", "example", "Vincennes, Indiana Example", 100.0, 130.0},
    {"basin and range.trn", "basinrng", "Basin and Range Example", 4200.0, 4700.0},
};

// Builds both examples once for the suite.
class Examples : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    temp_ = new TempDir("tarno-examples");
    dir_ = temp_->Path();
    const fs::path build = fs::path(TARNO_BIN_DIR).parent_path();
    const RunResult r = RunExecutable(fs::path(TARNO_SOURCE_DIR) / "scripts" / "make-examples",
                                      {build.string(), dir_.string()}, Options());
    ASSERT_EQ(r.status, 0) << r.out << r.err;
  }
  static void TearDownTestSuite() {
    delete temp_;
    temp_ = nullptr;
  }

  static RunOptions Options() {
    RunOptions options;
    options.env = {"TARNO_CONFIG_DIR=" + (dir_ / "config").string()};
    return options;
  }
  static RunResult Tarnocmd(const std::vector<std::string>& args) {
    return RunProgram("tarnocmd", args, Options());
  }
  static std::int64_t Count(Database& db, const std::string& sql) {
    Statement st = db.PrepareRaw(sql);
    st.Step();
    return st.GetInt64(0);
  }

  static TempDir* temp_;
  static fs::path dir_;
};
TempDir* Examples::temp_ = nullptr;
fs::path Examples::dir_;

TEST_F(Examples, EveryElementKindIsThere) {
  for (const Example& e : kExamples) {
    SCOPED_TRACE(e.file);
    Database db = Database::OpenReadOnly(dir_ / e.file);
    {
      Statement st = db.PrepareRaw("select Description, TARNOBaseName, TARNOBasePath from Project");
      ASSERT_TRUE(st.Step());
      EXPECT_EQ(st.GetText(0), e.description);
      EXPECT_EQ(st.GetText(1), e.base);
      EXPECT_EQ(fs::canonical(st.GetText(2)), fs::canonical(dir_));
    }
    // The river system: head-specified, far-field and routed strings and drains.
    EXPECT_GE(Count(db, "select count(*) from LinesinkStrings where HeadSpecified=1 and "
                        "Routing=0 and Drain=0 and Farfield=0"), 1);
    EXPECT_GE(Count(db, "select count(*) from LinesinkStrings where Farfield=1"), 1);
    EXPECT_GE(Count(db, "select count(*) from LinesinkStrings where Routing=1"), 2);
    EXPECT_GE(Count(db, "select count(*) from LinesinkStrings where Drain=1"), 1);
    // Wells of several kinds.
    EXPECT_GE(Count(db, "select count(*) from Wells where HeadSpecified=0 and PPWell=0 and Pond=0"), 1);
    EXPECT_GE(Count(db, "select count(*) from Wells where HeadSpecified=1"), 1);
    EXPECT_GE(Count(db, "select count(*) from Wells where PPWell=1"), 1);
    EXPECT_GE(Count(db, "select count(*) from Wells where Pond=1"), 1);
    EXPECT_GE(Count(db, "select count(*) from Wells where NParticles>0"), 1);
    // Area elements, observations and tracing.
    EXPECT_EQ(Count(db, "select count(*) from Inhomogeneities where ChangeR=1 and Recharge>0"), 1);
    EXPECT_EQ(Count(db, "select count(*) from NoFlowStrings"), 1);
    EXPECT_GE(Count(db, "select count(*) from TestPoints where Type='Piezometer' and ObsHead>0"), 5);
    EXPECT_EQ(Count(db, "select count(*) from TestPoints where Type='Gage'"), 1);
    EXPECT_GE(Count(db, "select count(*) from Particles"), 3);
    EXPECT_EQ(Count(db, "select count(*) from FluxInspect"), 1);
    // Every string and area element has its geometry.
    EXPECT_EQ(Count(db, "select count(*) from LinesinkStrings where (select count(*) from "
                        "Vertices where Vertices.PID=LinesinkStrings.PID) < 2"), 0);
    EXPECT_EQ(Count(db, "select count(*) from Model where CONTOURShow > 0 and TRACECompute <> 0"), 1);
  }
}

TEST_F(Examples, SolveAndLoadResultsOfEveryKind) {
  for (const Example& e : kExamples) {
    SCOPED_TRACE(e.file);
    const fs::path project = dir_ / e.file;
    const RunResult r = Tarnocmd({"solve", project.string()});
    ASSERT_EQ(r.status, 0) << r.out << r.err;
    EXPECT_NE(r.out.find("Run: new solution"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("Water balance"), std::string::npos) << r.out;
    EXPECT_NE(r.out.find("(0 bad records)"), std::string::npos) << r.out;

    Database db = Database::OpenReadOnly(project);
    // Discharge wells pump what the project says.
    EXPECT_EQ(Count(db, "select count(*) from WLResults join Wells on WLResults.Label = "
                        "Wells.Label where Wells.HeadSpecified=0 and Wells.PPWell=0 and "
                        "Wells.Pond=0 and abs(WLResults.Discharge - Wells.Head) > 1e-6"), 0);
    // Heads of test points, wells and segments lie within the aquifer's range.
    const std::string inRange = " between " + std::to_string(e.base_elevation) + " and " +
                                std::to_string(e.highest);
    EXPECT_EQ(Count(db, "select count(*) from TPResults where Type='Piezometer' and not (ModelHead" +
                            inRange + ")"), 0);
    EXPECT_EQ(Count(db, "select count(*) from TPResults where Type='Piezometer'"), 6);
    EXPECT_EQ(Count(db, "select count(*) from WLResults join Wells on WLResults.Label = "
                        "Wells.Label where Wells.PPWell=0 and not (WLResults.Head" + inRange + ")"), 0);
    EXPECT_EQ(Count(db, "select count(*) from LSResults where not (CalculatedHead" + inRange + ")"), 0);
    // Every segment has its row and its kind.
    EXPECT_EQ(Count(db, "select count(*) from LSResults"),
              Count(db, "select count(*) - (select count(*) from LinesinkStrings) from Vertices "
                        "where PID in (select PID from LinesinkStrings)"));
    for (const char* kind : {"NearField", "Farfield", "Drain", "Stream"})
      EXPECT_GE(Count(db, std::string("select count(*) from LSResults where SearchType='") + kind +
                              "'"), 1) << kind;
    // Routed reaches are linked downstream; the flux line has its total.
    EXPECT_GE(Count(db, "select count(*) from LSResults where LinkedTo like 'LS_%'"), 2);
    EXPECT_EQ(Count(db, "select count(*) from FIResults where TotalFlux <> 0"), 1);
  }
}

// A new user's first solve: each example, solved afresh with the iteration counts it
// stores, meets every condition, and the solver has nothing to report.
TEST_F(Examples, SolveToConvergenceWithTheirStoredSettings) {
  for (const Example& e : kExamples) {
    SCOPED_TRACE(e.file);
    const fs::path project = dir_ / e.file;
    const RunResult r = Tarnocmd({"solve", project.string()});
    ASSERT_EQ(r.status, 0) << r.out << r.err;
    EXPECT_NE(r.out.find("Run: new solution"), std::string::npos) << r.out;
    EXPECT_FALSE(Contains(r.err, "the iterations ended before every condition was met")) << r.err;
    EXPECT_FALSE(Contains(r.err, "The solver reports")) << r.err;
    // The solver's own error log holds its one line "*" and nothing else.
    std::string log = ReadFile(dir_ / "error.log");
    while (!log.empty() && (log.back() == '\n' || log.back() == '\r')) log.pop_back();
    EXPECT_EQ(log, "*");
    // The inner loop stopped early in its last outer iteration: fewer iterations in
    // it than the stored count allows, so the count leaves room to spare.
    Database db = Database::OpenReadOnly(project);
    const std::int64_t stored = Count(db, "select SOLVERIterations from Model");
    ASSERT_GT(stored, 0);
    const std::string messages = ReadFile(dir_ / "message.log");
    std::int64_t inLastOuter = 0;
    std::string lastOuter;
    for (std::size_t at = messages.find("\nIteration "); at != std::string::npos;
         at = messages.find("\nIteration ", at + 1)) {
      const std::size_t open = messages.find("(outer ", at);
      const std::size_t eol = messages.find('\n', at + 1);
      const std::string outer =
          open < eol ? messages.substr(open, messages.find(')', open) - open) : std::string();
      inLastOuter = outer == lastOuter ? inLastOuter + 1 : 1;
      lastOuter = outer;
    }
    EXPECT_GT(inLastOuter, 0) << messages;
    EXPECT_LT(inLastOuter, stored) << messages;
  }
}

// What the grid, the contour program, the pathlines and the area elements of the
// solver add. These parts are built on other branches; until the contour program
// stands in the program folder the test is skipped.
TEST_F(Examples, ContoursPathlinesAndAreaElements) {
  if (!fs::exists(fs::path(TARNO_BIN_DIR) / "contour"))
    GTEST_SKIP() << "the contour program is not in " << TARNO_BIN_DIR
                 << "; contours, pathlines and area elements are checked once it is built";
  for (const Example& e : kExamples) {
    SCOPED_TRACE(e.file);
    const fs::path project = dir_ / e.file;
    const RunResult r = Tarnocmd({"solve", project.string(), "--yes"});
    ASSERT_EQ(r.status, 0) << r.out << r.err;
    EXPECT_NE(r.out.find("Contour lines written: "), std::string::npos) << r.out << r.err;
    EXPECT_EQ(r.out.find("Contour lines written: 0 "), std::string::npos) << r.out;
    EXPECT_TRUE(fs::exists(dir_ / (std::string(e.base) + ".GRD")));
    EXPECT_TRUE(fs::exists(dir_ / (std::string(e.base) + ".CTR")));
    EXPECT_TRUE(fs::exists(dir_ / (std::string(e.base) + ".PTH")));
    Database db = Database::OpenReadOnly(project);
    EXPECT_GT(Count(db, "select count(*) from INResults where Conductivity > 0"), 0);
    EXPECT_GT(Count(db, "select count(*) from NFResults where Width > 0"), 0);
    EXPECT_EQ(Count(db, "select count(*) from WLResults join Wells on WLResults.Label = "
                        "Wells.Label where Wells.PPWell=1 and WLResults.Discharge = 0"), 0);
  }
}

// tarnocmd info at a map point: the result dialog of the element whose vertex lies
// nearest, as a right click shows it, with the values of its row.
TEST_F(Examples, InfoAtAPointPrintsTheResultsOfTheSegmentThere) {
  for (const Example& e : kExamples) {
    SCOPED_TRACE(e.file);
    const fs::path project = dir_ / e.file;
    ASSERT_EQ(Tarnocmd({"solve", project.string()}).status, 0);
    Database db = Database::OpenReadOnly(project);
    // A segment whose first vertex has no other vertex within 1 map unit: a click there
    // shows the segment that starts at it.
    Statement st = db.PrepareRaw(
        "select r.TARNOLabel, r.X1, r.Y1 from LSResults r where (select count(*) from Vertices o "
        "where abs(o.X - r.X1) < 1 and abs(o.Y - r.Y1) < 1) = 1 limit 1");
    ASSERT_TRUE(st.Step());
    const std::string label = st.GetText(0);
    char x[40], y[40];
    std::snprintf(x, sizeof x, "%.6f", st.GetDouble(1));
    std::snprintf(y, sizeof y, "%.6f", st.GetDouble(2));
    const RunResult r = Tarnocmd({"info", project.string(), x, y});
    ASSERT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out.rfind("Linesink Results: ", 0), 0u) << r.out;
    EXPECT_TRUE(Contains(r.out, "\nTARNO Label: " + label + "\n")) << r.out;
    EXPECT_TRUE(Contains(r.out, "\nDischarge: ")) << r.out;
    EXPECT_TRUE(Contains(r.out, "\nSearchType: ")) << r.out;

    // Far from every vertex: nothing there.
    const RunResult none = Tarnocmd({"info", project.string(), "1e9", "1e9"});
    EXPECT_EQ(none.status, 1);
    EXPECT_TRUE(Contains(none.err, "no line-sink, inhomogeneity or lake vertex near")) << none.err;
    EXPECT_EQ(Tarnocmd({"info", project.string(), "east", "1"}).status, 2);
  }
}

}  // namespace
}  // namespace tarno::test
