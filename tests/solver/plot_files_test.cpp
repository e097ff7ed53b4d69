// The readers of the grid, contour and pathline files on hand-written files,
// including malformed ones whose errors must name the file and the line.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "solver/plot_files.h"
#include "support/temp_dir.h"

namespace tarno {
namespace {

namespace fs = std::filesystem;

class PlotFiles : public ::testing::Test {
 protected:
  test::TempDir temp_{"tarno_plot"};
  const fs::path dir_ = temp_.Path();
  fs::path Write(const std::string& name, const std::string& text) {
    std::ofstream(dir_ / name, std::ios::binary) << text;
    return dir_ / name;
  }
  // Runs `read` and returns the error's text; fails the test when nothing is thrown.
  template <typename F>
  std::string ErrorOf(F read) {
    try {
      read();
    } catch (const PlotFileError& e) {
      return e.what();
    }
    ADD_FAILURE() << "no error";
    return "";
  }
};

// Fixed columns: 6 characters, then fields of 14 as the programs write them.
std::string Point(const char* x, const char* y) { return std::string("     1") + x + y + "\r\n"; }

TEST_F(PlotFiles, GridRangeIsTheFifthLineAnyRunOfBlanks) {
  const auto p = Write("a.GRD", "DSAA\r\n3 2\r\n0 10\r\n0 5\r\n   -2.5      17.25  \r\n1 2 3\r\n4 5 6\r\n");
  const GridRange r = ReadGridRange(p);
  EXPECT_DOUBLE_EQ(r.zlo, -2.5);
  EXPECT_DOUBLE_EQ(r.zhi, 17.25);
}

TEST_F(PlotFiles, WholeGridKeepsRowsAndBlanks) {
  const auto p = Write("a.GRD",
                       "DSAA\n3 2\n0 10\n0 5\n1 6\n1 2\n3\n4 5 1.70141E+38\n");
  const SurferGrid g = ReadSurferGrid(p);
  EXPECT_EQ(g.nx, 3);
  EXPECT_EQ(g.ny, 2);
  EXPECT_DOUBLE_EQ(g.xhi, 10);
  EXPECT_DOUBLE_EQ(g.yhi, 5);
  EXPECT_DOUBLE_EQ(g.At(2, 0), 3);  // last of the row at ylo
  EXPECT_DOUBLE_EQ(g.At(0, 1), 4);
  EXPECT_TRUE(SurferGrid::IsBlank(g.At(2, 1)));
  EXPECT_FALSE(SurferGrid::IsBlank(g.At(1, 1)));
}

TEST_F(PlotFiles, MalformedGridsNameFileLineAndText) {
  const auto shortFile = Write("s.GRD", "DSAA\r\n3 2\r\n0 10\r\n");
  EXPECT_THAT(ErrorOf([&] { ReadGridRange(shortFile); }),
              ::testing::AllOf(::testing::HasSubstr("s.GRD"), ::testing::HasSubstr("line 3"),
                               ::testing::HasSubstr("fewer than five lines")));
  const auto badRange = Write("b.GRD", "DSAA\n3 2\n0 10\n0 5\n1 x\n");
  EXPECT_THAT(ErrorOf([&] { ReadGridRange(badRange); }),
              ::testing::AllOf(::testing::HasSubstr("line 5"), ::testing::HasSubstr("\"1 x\"")));
  const auto tooFew = Write("f.GRD", "DSAA\n3 2\n0 10\n0 5\n1 6\n1 2 3\n4 5\n");
  EXPECT_THAT(ErrorOf([&] { ReadSurferGrid(tooFew); }), ::testing::HasSubstr("5 values, expected 6"));
  const auto tooMany = Write("m.GRD", "DSAA\n2 2\n0 10\n0 5\n1 6\n1 2 3 4 5\n");
  EXPECT_THAT(ErrorOf([&] { ReadSurferGrid(tooMany); }), ::testing::HasSubstr("more than 4"));
  const auto notDsaa = Write("n.GRD", "DSBB\n2 2\n");
  EXPECT_THAT(ErrorOf([&] { ReadSurferGrid(notDsaa); }), ::testing::HasSubstr("line 1"));
  const auto badValue = Write("v.GRD", "DSAA\n2 2\n0 10\n0 5\n1 6\n1 2\n3 four\n");
  EXPECT_THAT(ErrorOf([&] { ReadSurferGrid(badValue); }),
              ::testing::AllOf(::testing::HasSubstr("line 7"), ::testing::HasSubstr("four")));
  EXPECT_THAT(ErrorOf([&] { ReadGridRange(dir_ / "missing.GRD"); }),
              ::testing::HasSubstr("missing.GRD"));
}

TEST_F(PlotFiles, ContourLevelsOpenPolylinesAndPointsUseFixedColumns) {
  const std::string text = "LEVEL  1.000000E+01\r\n" + Point("  1.500000E+00", " -2.000000E+00") +
                           Point("  3.000000E+00", "  4.000000E+00") + "\r\n" +
                           "LEVEL  1.000000E+01\r\n" + Point("  5.000000E+00", "  6.000000E+00") +
                           "LEVEL  1.250000E+01\r\n";
  const auto lines = ReadContourFile(Write("a.CTR", text));
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_DOUBLE_EQ(lines[0].level, 10);
  ASSERT_EQ(lines[0].points.size(), 2u);
  EXPECT_DOUBLE_EQ(lines[0].points[0].x, 1.5);
  EXPECT_DOUBLE_EQ(lines[0].points[0].y, -2);
  EXPECT_EQ(lines[1].points.size(), 1u);  // its own LEVEL line, its own polyline
  EXPECT_DOUBLE_EQ(lines[2].level, 12.5);
  EXPECT_TRUE(lines[2].points.empty());
}

TEST_F(PlotFiles, ContourColumnsAreNotSplitAtBlanks) {
  // A counter that runs into the X field would be read as part of a blank-split
  // field; the fixed columns keep X and Y apart even without blanks between them.
  const auto lines =
      ReadContourFile(Write("c.CTR", "LEVEL 2\n123456 -1.000000E+00-2.000000E+00\n"));
  ASSERT_EQ(lines.at(0).points.size(), 1u);
  EXPECT_DOUBLE_EQ(lines[0].points[0].x, -1);
  EXPECT_DOUBLE_EQ(lines[0].points[0].y, -2);
}

TEST_F(PlotFiles, MalformedContourFiles) {
  EXPECT_TRUE(ReadContourFile(dir_ / "none.CTR").empty());
  const auto before = Write("b.CTR", Point("  1.000000E+00", "  2.000000E+00"));
  EXPECT_THAT(ErrorOf([&] { ReadContourFile(before); }),
              ::testing::AllOf(::testing::HasSubstr("b.CTR, line 1"),
                               ::testing::HasSubstr("before the first LEVEL")));
  const auto badLevel = Write("l.CTR", "LEVEL abc\n");
  EXPECT_THAT(ErrorOf([&] { ReadContourFile(badLevel); }), ::testing::HasSubstr("bad level"));
  const auto shortLine = Write("p.CTR", "LEVEL 1\n      1.0\n");
  EXPECT_THAT(ErrorOf([&] { ReadContourFile(shortLine); }),
              ::testing::AllOf(::testing::HasSubstr("line 2"), ::testing::HasSubstr("Y")));
}

std::string PathPoint5(const char* x, const char* y, const char* t, const char* z, const char* h) {
  return std::string("      ") + x + y + t + z + h + "\r\n";
}

TEST_F(PlotFiles, PathsWithLabelsAndFiveValues) {
  const std::string text =
      "LABEL particle 1\r\nSTART\r\n" +
      PathPoint5("  1.000000E+00", "  2.000000E+00", "  0.000000E+00", "  5.000000E+00",
                 "  9.000000E+00") +
      PathPoint5("  1.500000E+00", "  2.500000E+00", "  1.000000E+01", "  4.500000E+00",
                 "  8.900000E+00") +
      "END\r\nSTART\r\n" +
      PathPoint5("  7.000000E+00", "  8.000000E+00", "  0.000000E+00", "  1.000000E+00",
                 "  2.000000E+00") +
      "END\r\n";
  const auto paths = ReadPathFile(Write("a.PTH", text));
  ASSERT_EQ(paths.size(), 2u);
  EXPECT_EQ(paths[0].label, "particle 1");
  ASSERT_EQ(paths[0].points.size(), 2u);
  EXPECT_DOUBLE_EQ(paths[0].points[1].x, 1.5);
  EXPECT_DOUBLE_EQ(paths[0].points[1].value1, 10);
  EXPECT_DOUBLE_EQ(paths[0].points[1].value2, 4.5);
  EXPECT_DOUBLE_EQ(paths[0].points[1].value3, 8.9);
  EXPECT_EQ(paths[1].label, "");  // a label belongs to the next path only
  EXPECT_EQ(paths[1].points.size(), 1u);  // a one-point path is kept for the caller
}

TEST_F(PlotFiles, LongPathsAreCutAtTheLimit) {
  std::string text = "START\n";
  const std::string p = PathPoint5("  1.000000E+00", "  2.000000E+00", "  0.000000E+00",
                                   "  5.000000E+00", "  9.000000E+00");
  for (std::size_t i = 0; i < kMaxPathPoints + 10; ++i) text += p;
  text += "END\n";
  const auto paths = ReadPathFile(Write("l.PTH", text));
  EXPECT_EQ(paths.at(0).points.size(), kMaxPathPoints);
}

TEST_F(PlotFiles, MalformedPathFiles) {
  EXPECT_TRUE(ReadPathFile(dir_ / "none.PTH").empty());
  const std::string pt = PathPoint5("  1.000000E+00", "  2.000000E+00", "  0.000000E+00",
                                    "  5.000000E+00", "  9.000000E+00");
  EXPECT_THAT(ErrorOf([&] { ReadPathFile(Write("o.PTH", pt)); }),
              ::testing::AllOf(::testing::HasSubstr("o.PTH, line 1"),
                               ::testing::HasSubstr("outside a path")));
  EXPECT_THAT(ErrorOf([&] { ReadPathFile(Write("n.PTH", "START\n" + pt)); }),
              ::testing::HasSubstr("opened on line 1 has no END"));
  EXPECT_THAT(ErrorOf([&] { ReadPathFile(Write("t.PTH", "START\nSTART\nEND\n")); }),
              ::testing::HasSubstr("line 2"));
  EXPECT_THAT(ErrorOf([&] { ReadPathFile(Write("e.PTH", "END\n")); }),
              ::testing::HasSubstr("END without a path"));
  EXPECT_THAT(
      ErrorOf([&] { ReadPathFile(Write("v.PTH", "START\n      1.0           2.0\nEND\n")); }),
      ::testing::AllOf(::testing::HasSubstr("line 2"), ::testing::HasSubstr("first value")));
}

}  // namespace
}  // namespace tarno
