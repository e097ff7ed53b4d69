// tarnocmd inspect, end to end with the real solver of the build.
#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>
#include <string>
#include <vector>

#include "program_test_util.h"
#include "store/database.h"
#include "tarnocmd_fixture.h"

namespace tarno::test {
namespace {

namespace fs = std::filesystem;

// One pumping well of 800 in a confined aquifer (base 80, thickness 40) and a river.
constexpr const char* kWellAndRiver = R"sql(
BEGIN;
UPDATE Model SET AQBase = 80.0, AQThickness = '40', AQHydCond = 15.0, AQPorosity = 0.25;
INSERT INTO Vertices(PID, Seq, X, Y) VALUES (-1, -1, 1200.0, 850.0);
INSERT INTO Wells(VID, Label, Head) VALUES (last_insert_rowid(), 'Municipal1', 800.0);
INSERT INTO Polygons(Closed) VALUES (0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES ((SELECT max(PID) FROM Polygons), 0, 0.0, 0.0);
INSERT INTO Vertices(PID, Seq, X, Y) VALUES ((SELECT max(PID) FROM Polygons), 100, 2000.0, 100.0);
INSERT INTO LinesinkStrings(PID, Label, StartingHead, EndingHead)
  VALUES ((SELECT max(PID) FROM Polygons), 'River', 120.0, 118.5);
COMMIT;
)sql";

class TarnocmdInspect : public TarnocmdProject {
 protected:
  void SetUp() override {
    MakeProject("example");
    Database db = Database::Open(project_);
    db.ExecuteRaw(kWellAndRiver);
  }

  static std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    std::string l;
    while (std::getline(in, l)) lines.push_back(l);
    return lines;
  }
};

TEST_F(TarnocmdInspect, PrintsTheModelResultsOfAPointAfterASolve) {
  const RunResult none = Run({"inspect", project_, "1000", "800"});
  EXPECT_EQ(none.status, 1);
  EXPECT_TRUE(Contains(none.err, "Error: No solution is present.  Solve the model and try again."))
      << none.err;
  EXPECT_FALSE(fs::exists(dir_ / "_INSPECT.DAT"));

  ASSERT_EQ(Run({"solve", project_}).status, 0);
  const RunResult r = Run({"inspect", project_, "1000", "800"});
  ASSERT_EQ(r.status, 0) << r.out << r.err;
  const auto lines = Lines(r.out);
  ASSERT_EQ(lines.size(), 13u) << r.out;
  EXPECT_EQ(lines[0], "X        1.0000E+03");
  EXPECT_EQ(lines[1], "Y        8.0000E+02");
  EXPECT_EQ(lines[4], "Porosity 2.5000E-01");
  EXPECT_EQ(lines[5], "Conductivity 1.5000E+01");
  EXPECT_EQ(lines[6], "Bottom Elev 8.0000E+01");
  EXPECT_EQ(lines[11], "All data are in computational units, except");
  // Drawn down by the well below the river (119.25 at its one segment's centre),
  // far above the base.
  const double head = std::stod(lines[3].substr(4));
  EXPECT_GT(head, 100.0);
  EXPECT_LT(head, 119.25);
  // Water flows towards the well, east of the point.
  EXPECT_GT(std::stod(lines[8].substr(12)), 0.0) << lines[8];

  const RunResult i =
      Run({"inspect", project_, "1000", "800", "--integrity", "2", "--elevation", "100"});
  ASSERT_EQ(i.status, 0) << i.err;
  EXPECT_TRUE(Contains(i.out, "Z        1.0000E+02")) << i.out;
  EXPECT_TRUE(Contains(i.out, "Solver Integrity Check\n")) << i.out;
}

TEST_F(TarnocmdInspect, BadArgumentsAreUsageErrors) {
  EXPECT_EQ(Run({"inspect", project_, "1000"}).status, 2);
  EXPECT_EQ(Run({"inspect", project_, "1000", "north"}).status, 2);
  EXPECT_EQ(Run({"inspect", project_, "1", "2", "--integrity", "0"}).status, 2);
  EXPECT_EQ(Run({"inspect", project_, "1", "2", "--depth", "3"}).status, 2);
  // Negative coordinates are coordinates, not options.
  EXPECT_EQ(Run({"inspect", project_, "-1", "-2"}).status, 1);
}

}  // namespace
}  // namespace tarno::test
