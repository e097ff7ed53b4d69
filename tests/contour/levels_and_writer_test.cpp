// The levels of the arguments and the text of the contour file.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <random>
#include <string>

#include "contour_test_util.h"
#include "programs/contour/ctr_file.h"
#include "programs/contour/levels.h"

namespace tarno::contour {
namespace {

TEST(Levels, FromMinToMaxInclusive) {
  EXPECT_EQ(makeLevels(0, 1, 3), (std::vector<double>{0, 1, 2, 3}));
  EXPECT_EQ(makeLevels(0, 2, 3), (std::vector<double>{0, 2}));
  EXPECT_EQ(makeLevels(5, 1, 5), (std::vector<double>{5}));
  EXPECT_EQ(makeLevels(-2, 0.5, -1), (std::vector<double>{-2, -1.5, -1}));
}

TEST(Levels, MaxReachedUpToRoundingIsIncludedAndExact) {
  // 0.3 + 6 * 0.1 is 0.9000000000000001: still the level 0.9, written as 0.9.
  auto l = makeLevels(0.3, 0.1, 0.9);
  ASSERT_EQ(l.size(), 7u);
  EXPECT_EQ(l.back(), 0.9);
  // Each level is min + i * interval, not a running sum.
  auto m = makeLevels(0, 0.1, 100);
  ASSERT_EQ(m.size(), 1001u);
  EXPECT_EQ(m[537], 537 * 0.1);
  EXPECT_EQ(m.back(), 100);
  // A step that passes max by more than the tolerance is left out.
  EXPECT_EQ(makeLevels(0, 1, 2.999999).size(), 3u);
  // The front end's stream-function levels: (zmax - zmin) / (n - 1).
  const double zmin = -3.7, zmax = 12.9;
  auto s = makeLevels(zmin, (zmax - zmin) / 9, zmax);
  ASSERT_EQ(s.size(), 10u);
  EXPECT_EQ(s.back(), zmax);
}

TEST(Levels, RefusesBadArguments) {
  EXPECT_THROW(makeLevels(0, 0, 1), LevelError);
  EXPECT_THROW(makeLevels(0, -1, 1), LevelError);
  EXPECT_THROW(makeLevels(2, 1, 1), LevelError);
  EXPECT_THROW(makeLevels(NAN, 1, 1), LevelError);
  EXPECT_THROW(makeLevels(0, INFINITY, 1), LevelError);
  EXPECT_THROW(makeLevels(-1e308, 1, 1e308), LevelError);  // the span overflows
  EXPECT_EQ(makeLevels(0, 1, 99999).size(), 100000u);
  try {
    makeLevels(0, 1, 100000);
    FAIL();
  } catch (const LevelError& e) {
    EXPECT_NE(std::string(e.what()).find("more than 100000 levels"), std::string::npos);
  }
}

TEST(ContourFileFormat, Format14EMatchesPrintf) {
  std::mt19937_64 rng(7);
  std::uniform_real_distribution<double> mant(-10, 10);
  std::uniform_int_distribution<int> expo(-120, 120);
  std::vector<double> values = {0.0, -0.0, 1, -1, 9.9999995, 9.99999949, 1234567.5, 1234568.5, 0.5e-300,
                                1.70141e38, -1.7976931348623157e308, 5e-324, 123456789012.0, 2.5e-7};
  for (int k = 0; k < 20000; ++k) values.push_back(mant(rng) * std::pow(10.0, expo(rng)));
  for (double v : values) {
    char mine[15] = {};
    format14E(v, mine);
    char ref[64];
    std::snprintf(ref, sizeof ref, "%14.6E", v);
    ASSERT_STREQ(mine, ref) << v;
  }
}

TEST(ContourFileFormat, LevelLineThenPointLinesByColumns) {
  Polyline p;
  p.level = -12.5;
  p.points = {{1000, -2.25}, {1e-3, 7e12}};
  std::string text;
  appendContourText({p}, text);
  EXPECT_EQ(text,
            "LEVEL -1.250000E+01\r\n"
            "        1.000000E+03 -2.250000E+00\r\n"
            "        1.000000E-03  7.000000E+12\r\n");
  // Column positions as the front end reads them.
  auto lines = test::parseCtr(text);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(lines[0].level, -12.5);
  EXPECT_EQ(lines[0].points[1].y, 7e12);
}

TEST(ContourFileFormat, PointsThatPrintAlikeAreWrittenOnce) {
  Polyline p;
  p.level = 1;
  p.points = {{1, 1}, {1 + 1e-12, 1}, {2, 2}, {2, 2 + 1e-13}, {3, 3}};
  Polyline tiny;  // collapses to one printed point: not written
  tiny.level = 2;
  tiny.closed = true;
  tiny.points = {{5, 5}, {5 + 1e-12, 5}, {5, 5 + 1e-12}, {5, 5}};
  Polyline ring;
  ring.level = 3;
  ring.closed = true;
  ring.points = {{0, 0}, {1, 0}, {1, 1}, {0, 0}};
  std::string text;
  appendContourText({p, tiny, ring}, text);
  auto lines = test::parseCtr(text);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].points.size(), 3u);
  EXPECT_EQ(lines[1].level, 3);
  ASSERT_EQ(lines[1].points.size(), 4u);
  EXPECT_EQ(lines[1].points.front().x, lines[1].points.back().x);
  std::string none;
  appendContourText({}, none);
  EXPECT_TRUE(none.empty());
}

}  // namespace
}  // namespace tarno::contour
