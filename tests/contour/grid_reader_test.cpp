// The grid reader: well-formed grids in their variants, and every kind of
// malformed grid refused with the file, the line and the offending text.

#include <gtest/gtest.h>

#include <string>

#include "contour_test_util.h"
#include "programs/contour/contour.h"
#include "programs/contour/grid.h"

namespace tarno::contour {
namespace {

const char* const kSmall =
    "DSAA\n"
    "3 2\n"
    "10 20\n"
    "-5 5\n"
    "1 6\n"
    "1 2 3\n"
    "4 5 6\n";

TEST(GridReader, ReadsHeaderAndRowsFromYlo) {
  Grid g = parseGrid(kSmall, "a.grd");
  EXPECT_EQ(g.nx, 3);
  EXPECT_EQ(g.ny, 2);
  EXPECT_EQ(g.xlo, 10);
  EXPECT_EQ(g.xhi, 20);
  EXPECT_EQ(g.ylo, -5);
  EXPECT_EQ(g.yhi, 5);
  EXPECT_EQ(g.zlo, 1);
  EXPECT_EQ(g.zhi, 6);
  EXPECT_EQ(g.at(0, 0), 1);
  EXPECT_EQ(g.at(2, 0), 3);
  EXPECT_EQ(g.at(0, 1), 4);
  EXPECT_EQ(g.x(1), 15);
  EXPECT_EQ(g.x(2), 20);
  EXPECT_EQ(g.y(1), 5);
}

TEST(GridReader, AcceptsCrLfTabsAnyValuesPerLineAndNumberForms) {
  Grid g = parseGrid("DSAA\r\n 3\t2 \r\n0 1\r\n0 1\r\n-1 1.70141E+38\r\n+1.5 -.5e1\r\n\r\n2E0 1.70141E+38\r\n  7 8",
                     "b.GRD");
  ASSERT_EQ(g.z.size(), 6u);
  EXPECT_EQ(g.z[0], 1.5);
  EXPECT_EQ(g.z[1], -5);
  EXPECT_EQ(g.z[2], 2);
  EXPECT_TRUE(isBlank(g.z[3]));
  EXPECT_EQ(g.z[5], 8);
  // Anything from 1.7e38 up is blank; just below it is a value.
  EXPECT_TRUE(isBlank(1.7e38));
  EXPECT_FALSE(isBlank(1.69e38));
}

TEST(GridReader, GridOfTheTestHelperReadsBack) {
  Grid g = test::makeGrid(7, 4, -3.5, 2.25, 100, 101, [](double x, double y) { return x * x - y; });
  g.z[5] = test::kBlank;
  Grid back = parseGrid(test::gridText(g), "c.grd");
  EXPECT_EQ(back.nx, 7);
  EXPECT_EQ(back.ny, 4);
  EXPECT_EQ(back.z, g.z);
}

// The message of the error for `text`, which must be refused at `line`.
std::string refusal(const std::string& text, int line) {
  try {
    parseGrid(text, "DEMO.GRD");
  } catch (const GridError& e) {
    EXPECT_EQ(e.line(), line) << e.what();
    EXPECT_EQ(e.file(), "DEMO.GRD");
    return e.what();
  }
  ADD_FAILURE() << "accepted: " << text;
  return {};
}

std::string header(const std::string& counts = "2 2", const std::string& x = "0 1", const std::string& y = "0 1",
                   const std::string& z = "0 1") {
  return "DSAA\n" + counts + "\n" + x + "\n" + y + "\n" + z + "\n";
}

TEST(GridReaderErrors, WrongFirstWordOrEmptyFile) {
  EXPECT_EQ(refusal("DSBB\n2 2\n", 1), "DEMO.GRD, line 1: a text grid begins with \"DSAA\", found \"DSBB\"");
  EXPECT_NE(refusal("", 1).find("empty"), std::string::npos);
  EXPECT_NE(refusal("\n", 1).find("found an empty line"), std::string::npos);
  EXPECT_NE(refusal("DSAA x\n", 1).find("\"x\""), std::string::npos);
  // A binary grid is not a text grid.
  EXPECT_NE(refusal(std::string("DSBB\x01\x02", 6), 1).find("\"DSBB??\""), std::string::npos);
}

TEST(GridReaderErrors, CountsOutOfRangeOrNotWhole) {
  EXPECT_NE(refusal(header("1 5"), 2).find("number of columns must be from 2 to"), std::string::npos);
  EXPECT_NE(refusal(header("5 1"), 2).find("number of rows must be from 2 to"), std::string::npos);
  EXPECT_NE(refusal(header("-3 5"), 2).find("\"-3\""), std::string::npos);
  EXPECT_NE(refusal(header("100001 2"), 2).find("\"100001\""), std::string::npos);
  EXPECT_NE(refusal(header("99999999999999999999 2"), 2).find("from 2 to"), std::string::npos);
  EXPECT_NE(refusal(header("2.5 3"), 2).find("not a whole number: \"2.5\""), std::string::npos);
  EXPECT_NE(refusal(header("10000 10000"), 2).find("more than the"), std::string::npos);
  EXPECT_NE(refusal(header("3"), 2).find("found 1 fields"), std::string::npos);
  EXPECT_NE(refusal("DSAA\n", 2).find("ends before"), std::string::npos);
}

TEST(GridReaderErrors, RangesEmptyReversedOrNotNumbers) {
  EXPECT_NE(refusal(header("2 2", "5 5"), 3).find("X range is empty"), std::string::npos);
  EXPECT_NE(refusal(header("2 2", "6 5"), 3).find("xlo \"6\", xhi \"5\""), std::string::npos);
  EXPECT_NE(refusal(header("2 2", "0 1", "1 0"), 4).find("Y range is empty"), std::string::npos);
  EXPECT_NE(refusal(header("2 2", "-1e308 1e308"), 3).find("too wide"), std::string::npos);
  EXPECT_NE(refusal(header("2 2", "0 one"), 3).find("not a number in the X range: \"one\""), std::string::npos);
  EXPECT_NE(refusal(header("2 2", "0 1", "0 1", "0 nan"), 5).find("not a finite number"), std::string::npos);
  EXPECT_NE(refusal(header("2 2", "0 1", "0 1", "0 1 2"), 5).find("found 3 fields"), std::string::npos);
  EXPECT_NE(refusal("DSAA\n2 2\n0 1\n0 1\n", 5).find("ends before the line of the value range"), std::string::npos);
}

TEST(GridReaderErrors, BadValuesNamedWithTheirLine) {
  EXPECT_EQ(refusal(header() + "1 2\n3 x4\n", 7), "DEMO.GRD, line 7: not a number: \"x4\"");
  EXPECT_NE(refusal(header() + "1 2\n3 1,5\n", 7).find("\"1,5\""), std::string::npos);
  EXPECT_NE(refusal(header() + "1 2\n\n3 inf\n", 8).find("not a finite number: \"inf\""), std::string::npos);
  EXPECT_NE(refusal(header() + "1 2\n3 1e999\n", 7).find("not a finite number"), std::string::npos);
  EXPECT_NE(refusal(header() + "1 nan\n3 4\n", 6).find("not a finite number"), std::string::npos);
  EXPECT_NE(refusal(header() + "1 2\n3 +-4\n", 7).find("not a number"), std::string::npos);
  EXPECT_NE(refusal(header() + "1 2\n3 4 5\n", 7).find("more than the 4 values of the grid: \"5\""),
            std::string::npos);
  // A long token is cut in the message.
  std::string msg = refusal(header() + "1 2\n3 " + std::string(500, '7') + "x\n", 7);
  EXPECT_LT(msg.size(), 120u);
  EXPECT_NE(msg.find("...\""), std::string::npos);
}

TEST(GridReaderErrors, TooFewValues) {
  EXPECT_EQ(refusal(header() + "1 2\n3\n", 7), "DEMO.GRD, line 7: the grid ends after 3 of 4 values");
  // A count far beyond what the file holds is refused before anything is allocated.
  EXPECT_NE(refusal(header("5000 5000") + "1 2 3\n", 6).find("after 3 of 25000000"), std::string::npos);
  EXPECT_NE(refusal(header("3 3") + "1 2 3 4 5 6 7 8", 6).find("after 8 of 9"), std::string::npos);
}

TEST(GridReaderErrors, MissingFileNamesIt) {
  test::TempDir dir;
  try {
    readGridFile(dir.Path() / "NONE.GRD");
    FAIL() << "read a missing file";
  } catch (const GridError& e) {
    EXPECT_EQ(e.line(), 0);
    EXPECT_NE(std::string(e.what()).find("NONE.GRD: cannot open"), std::string::npos);
  }
}

TEST(NumberParse, WholeTokensOnly) {
  double v = 0;
  EXPECT_TRUE(parseNumber("1.70141E+38", v));
  EXPECT_EQ(v, 1.70141e38);
  EXPECT_TRUE(parseNumber("+.5", v));
  EXPECT_EQ(v, 0.5);
  EXPECT_TRUE(parseNumber("1e-400", v));  // underflow reads as zero
  EXPECT_EQ(v, 0);
  EXPECT_TRUE(parseNumber("-1e400", v));  // overflow reads as infinite, refused by the callers
  EXPECT_TRUE(std::isinf(v));
  for (const char* bad : {"", "+", "-", "1.0.0", "0x10", "1e", "12abc", " 1", "1 ", "+-1", "1d5"})
    EXPECT_FALSE(parseNumber(bad, v)) << bad;
}

}  // namespace
}  // namespace tarno::contour

namespace tarno::contour {
namespace {

// The seed corpus of the fuzz target: each file is read or refused with a
// GridError, and what is read contours at its own values.
TEST(GridFuzzCorpus, EveryFileReadsOrIsRefused) {
  namespace fs = std::filesystem;
  int read = 0;
  for (const auto& e : fs::directory_iterator(fs::path(TARNO_TEST_DATA_DIR) / "fuzz-corpus")) {
    std::string text = test::readFile(e.path());
    try {
      Grid g = parseGrid(text, e.path().filename().string());
      for (double level : {g.z.front(), g.z.back(), g.zlo, g.zhi}) {
        for (const auto& p : Contourer(g).level(level)) {
          EXPECT_GE(p.points.size(), 2u);
          if (p.closed) {
            EXPECT_TRUE(p.points.front() == p.points.back());
          }
        }
      }
      ++read;
    } catch (const GridError& e) {
      EXPECT_GT(e.line(), 0) << e.what();
    }
  }
  EXPECT_GE(read, 5);
}

}  // namespace
}  // namespace tarno::contour
