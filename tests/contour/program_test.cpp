// The contour executable run as the front end runs it: in the project's
// directory, with the base name and the three level texts.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <set>
#include <string>

#include "contour_test_util.h"
#include "programs/contour/contour.h"
#include "programs/contour/ctr_file.h"
#include "programs/contour/levels.h"

namespace tarno::contour {
namespace {

namespace fs = std::filesystem;
using test::readFile;
using test::runContourProgram;
using test::writeFile;

// The files of `dir`.
std::set<std::string> filesIn(const fs::path& dir) {
  std::set<std::string> names;
  for (const auto& e : fs::directory_iterator(dir)) names.insert(e.path().filename().string());
  return names;
}

std::string coneGrid() {
  // z = distance from (100, 200), on 61 x 41 points over [70, 130] x [180, 220].
  Grid g = test::makeGrid(61, 41, 70, 130, 180, 220, [](double x, double y) { return std::hypot(x - 100, y - 200); });
  return test::gridText(g);
}

TEST(ContourProgram, ConeRoundTripThroughTheFrontEndsColumns) {
  test::TempDir dir;
  writeFile(dir.Path() / "CONE.GRD", coneGrid());
  auto r = runContourProgram(dir.Path(), "CONE 2 4 18.5");
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(r.err.empty()) << r.err;
  const std::string text = readFile(dir.Path() / "CONE.CTR");
  auto lines = test::parseCtr(text);
  ASSERT_EQ(lines.size(), 5u);  // 2, 6, 10, 14, 18: all circles inside the grid
  for (std::size_t k = 0; k < lines.size(); ++k) {
    const auto& l = lines[k];
    EXPECT_EQ(l.level, 2 + 4.0 * k);
    ASSERT_GT(l.points.size(), 10u);
    EXPECT_EQ(l.points.front().x, l.points.back().x);  // closed: first point repeated
    EXPECT_EQ(l.points.front().y, l.points.back().y);
    for (const auto& p : l.points) EXPECT_NEAR(std::hypot(p.x - 100, p.y - 200), l.level, 0.1);
  }
  // Every line is "LEVEL" + 14 columns or 6 blanks + 2 x 14 columns, CR LF.
  std::size_t pos = 0;
  while (pos < text.size()) {
    std::size_t nl = text.find("\r\n", pos);
    ASSERT_NE(nl, std::string::npos);
    std::string line = text.substr(pos, nl - pos);
    if (line.rfind("LEVEL", 0) == 0)
      EXPECT_EQ(line.size(), 19u) << line;
    else {
      EXPECT_EQ(line.size(), 34u) << line;
      EXPECT_EQ(line.substr(0, 6), "      ");
    }
    pos = nl + 2;
  }
  EXPECT_EQ(filesIn(dir.Path()), (std::set<std::string>{"CONE.GRD", "CONE.CTR"}));
}

TEST(ContourProgram, OpenLinesOfAPlaneEachWithItsOwnLevelLine) {
  test::TempDir dir;
  // z = y with a blank row in the middle of column 3: each level line of the
  // plane is whole except the one through the blank, which comes in two.
  Grid g = test::makeGrid(7, 5, 0, 6, 0, 4, [](double, double y) { return y; });
  g.z[2 * 7 + 3] = test::kBlank;
  writeFile(dir.Path() / "PLANE.GRD", test::gridText(g, "\n"));
  auto r = runContourProgram(dir.Path(), "PLANE 0.5 1 3.5");
  ASSERT_EQ(r.status, 0) << r.err;
  auto lines = test::parseCtr(readFile(dir.Path() / "PLANE.CTR"));
  std::vector<double> levels;
  for (const auto& l : lines) levels.push_back(l.level);
  EXPECT_EQ(levels, (std::vector<double>{0.5, 1.5, 1.5, 2.5, 2.5, 3.5}));
  for (const auto& l : lines)
    for (const auto& p : l.points) EXPECT_EQ(p.y, l.level);
}

TEST(ContourProgram, SameTextAsTheLibraryLevelByLevel) {
  // Many levels written as they come from the parallel loop: the file is the
  // library's text of all levels in order, whatever the threads did.
  test::TempDir dir;
  Grid g = test::makeGrid(120, 90, 0, 1200, 0, 900, [](double x, double y) {
    return std::sin(x / 97) * std::cos(y / 61) + 1e-3 * x;
  });
  g.z[40 * 120 + 40] = test::kBlank;
  writeFile(dir.Path() / "WAVES.GRD", test::gridText(g));
  auto r = runContourProgram(dir.Path(), "WAVES -1 0.05 2");
  ASSERT_EQ(r.status, 0) << r.err;
  Grid back = parseGrid(readFile(dir.Path() / "WAVES.GRD"), "WAVES.GRD");
  std::string expected;
  appendContourText(contourGrid(back, makeLevels(-1, 0.05, 2)), expected);
  EXPECT_GT(expected.size(), 10000u);
  EXPECT_TRUE(readFile(dir.Path() / "WAVES.CTR") == expected);
}

TEST(ContourProgram, GridFoundIgnoringCaseExactSpellingFirst) {
  test::TempDir dir;
  writeFile(dir.Path() / "model.grd", coneGrid());
  auto r = runContourProgram(dir.Path(), "MODEL 5 5 5");
  ASSERT_EQ(r.status, 0) << r.err;
  ASSERT_TRUE(fs::exists(dir.Path() / "MODEL.CTR"));
  EXPECT_EQ(test::parseCtr(readFile(dir.Path() / "MODEL.CTR")).size(), 1u);

  // With both spellings present the exact one is read: here a malformed one.
  writeFile(dir.Path() / "MODEL.GRD", "DSAA\n2 2\n0 1\n0 1\n0 1\n1 2 3\n");
  r = runContourProgram(dir.Path(), "MODEL 5 5 5");
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("MODEL.GRD, line 6: the grid ends after 3 of 4 values"), std::string::npos) << r.err;
}

TEST(ContourProgram, OutputReplacesOldFileAndItsOtherSpellings) {
  test::TempDir dir;
  writeFile(dir.Path() / "CONE.GRD", coneGrid());
  writeFile(dir.Path() / "CONE.CTR", "old\n");
  writeFile(dir.Path() / "cone.ctr", "stale\n");
  auto r = runContourProgram(dir.Path(), "CONE 1 1 1");
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(filesIn(dir.Path()), (std::set<std::string>{"CONE.GRD", "CONE.CTR"}));
  EXPECT_EQ(test::parseCtr(readFile(dir.Path() / "CONE.CTR")).size(), 1u);
}

TEST(ContourProgram, NoLevelInsideTheGridGivesAnEmptyFile) {
  test::TempDir dir;
  writeFile(dir.Path() / "CONE.GRD", coneGrid());
  auto r = runContourProgram(dir.Path(), "CONE 1000 1 1001");
  ASSERT_EQ(r.status, 0) << r.err;
  EXPECT_TRUE(fs::exists(dir.Path() / "CONE.CTR"));
  EXPECT_TRUE(readFile(dir.Path() / "CONE.CTR").empty());
}

struct Refusal {
  const char* args;
  int status;
  const char* message;
};

TEST(ContourProgramErrors, BadArgumentsWriteNothing) {
  const Refusal cases[] = {
      {"", 2, "expected 4 arguments, found 0"},
      {"CONE 1 2", 2, "expected 4 arguments, found 3"},
      {"CONE 1 2 3 4", 2, "expected 4 arguments, found 5"},
      {"CONE x 1 3", 2, "the minimum is not a number: \"x\""},
      {"CONE 1 1,5 3", 2, "the interval is not a number: \"1,5\""},
      {"CONE 1 1 nan", 2, "the maximum is not a number: \"nan\""},
      {"CONE 1 0 3", 2, "the interval must be greater than zero, found 0"},
      {"CONE 1 -2 3", 2, "the interval must be greater than zero, found -2"},
      {"CONE 5 1 3", 2, "the maximum 3 is below the minimum 5"},
      {"CONE 0 1e-6 1", 2, "from 0 to 1 by 1e-06 is more than 100000 levels"},
      {"NONE 1 1 3", 1, "NONE.GRD: no such grid file in "},
  };
  for (const auto& c : cases) {
    test::TempDir dir;
    writeFile(dir.Path() / "CONE.GRD", coneGrid());
    auto r = runContourProgram(dir.Path(), c.args);
    EXPECT_EQ(r.status, c.status) << c.args;
    EXPECT_NE(r.err.find(std::string("contour: ") + c.message), std::string::npos) << c.args << ": " << r.err;
    EXPECT_EQ(filesIn(dir.Path()), (std::set<std::string>{"CONE.GRD"})) << c.args;
  }
}

TEST(ContourProgramErrors, MalformedGridsLeaveAnOldFileAlone) {
  const struct {
    const char* text;
    const char* message;
  } cases[] = {
      {"DSBB\n2 2\n0 1\n0 1\n0 1\n1 2 3 4\n", "BAD.GRD, line 1: a text grid begins with \"DSAA\", found \"DSBB\""},
      {"DSAA\n1 2\n0 1\n0 1\n0 1\n1 2\n", "BAD.GRD, line 2: the number of columns must be from 2 to"},
      {"DSAA\n2 2\n1 1\n0 1\n0 1\n1 2 3 4\n", "BAD.GRD, line 3: the X range is empty"},
      {"DSAA\n2 2\n0 1\n0 1\n0 1\n1 2\n3 four\n", "BAD.GRD, line 7: not a number: \"four\""},
      {"DSAA\n2 2\n0 1\n0 1\n0 1\n1 2\n3\n", "BAD.GRD, line 7: the grid ends after 3 of 4 values"},
      {"DSAA\n2 2\n0 1\n0 1\n0 1\n1 2\n3 -inf\n", "BAD.GRD, line 7: not a finite number: \"-inf\""},
      {"", "BAD.GRD, line 1: the file is empty"},
  };
  for (const auto& c : cases) {
    test::TempDir dir;
    writeFile(dir.Path() / "BAD.GRD", c.text);
    writeFile(dir.Path() / "BAD.CTR", "LEVEL  1.000000E+00\r\n");
    auto r = runContourProgram(dir.Path(), "BAD 0 1 3");
    EXPECT_EQ(r.status, 1) << c.text;
    EXPECT_NE(r.err.find(std::string("contour: ") + c.message), std::string::npos) << r.err;
    EXPECT_EQ(filesIn(dir.Path()), (std::set<std::string>{"BAD.GRD", "BAD.CTR"}));
    EXPECT_EQ(readFile(dir.Path() / "BAD.CTR"), "LEVEL  1.000000E+00\r\n");
  }
}

TEST(ContourProgramErrors, UnwritableDirectoryIsReported) {
  if (geteuid() == 0) GTEST_SKIP() << "root writes anywhere";
  test::TempDir dir;
  writeFile(dir.Path() / "CONE.GRD", coneGrid());
  fs::permissions(dir.Path(), fs::perms::owner_read | fs::perms::owner_exec);
  auto r = runContourProgram(dir.Path(), "CONE 1 1 3");
  fs::permissions(dir.Path(), fs::perms::owner_all);
  EXPECT_EQ(r.status, 1);
  EXPECT_NE(r.err.find("contour: cannot create a file beside"), std::string::npos) << r.err;
  EXPECT_EQ(filesIn(dir.Path()), (std::set<std::string>{"CONE.GRD"}));
}

}  // namespace
}  // namespace tarno::contour
