// The writers of the solver take their layouts from core/solver_files.h, the
// layout the front end's readers use: each field of a written record stands where
// the shared layout says, read by column or by field number.

#include <gtest/gtest.h>

#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "core/solver_files.h"
#include "engine/extract.h"
#include "engine/trace.h"

using namespace tarno::engine;
namespace layout = tarno::solver_files;

namespace {

// The text of the one-based columns [column, column + width).
double At(const std::string& line, int column, int width) {
  EXPECT_GE(static_cast<int>(line.size()), column + width - 1) << line;
  return std::strtod(
      line.substr(static_cast<size_t>(column - 1), static_cast<size_t>(width)).c_str(), nullptr);
}

std::vector<std::string> Fields(const std::string& body) {
  std::vector<std::string> f{""};  // one-based
  std::stringstream in(body);
  std::string item;
  while (std::getline(in, item, layout::kFieldSeparator)) f.push_back(item);
  return f;
}

TEST(SharedFileLayout, PointRecordFieldsStandInTheirColumnsAndNumbers) {
  namespace pt = layout::point;
  PointValues v;
  // Distinct values, so that a field in the wrong place shows.
  double* slots[] = {&v.x,  &v.y,    &v.z,  &v.potential, &v.qx,           &v.qy,   &v.vx,
                     &v.vy, &v.head, &v.vz, &v.porosity,  &v.conductivity, &v.base, &v.recharge};
  const int numbers[] = {
      pt::kX,  pt::kY,    pt::kZ,  pt::kPotential, pt::kQx,           pt::kQy,   pt::kVx,
      pt::kVy, pt::kHead, pt::kVz, pt::kPorosity,  pt::kConductivity, pt::kBase, pt::kRecharge};
  for (int i = 0; i < pt::kNumbers; ++i) *slots[i] = -(i + 1) * 1.25e3 + 0.5;
  const std::string line = formatPointRecord(v, "TP_000001");
  ASSERT_EQ(line[0], layout::kPointMark);
  const auto f = Fields(line.substr(1));
  ASSERT_EQ(static_cast<int>(f.size()) - 1, pt::kFields);
  EXPECT_EQ(f[pt::kLabel], "TP_000001");
  for (int i = 0; i < pt::kNumbers; ++i) {
    const int field = numbers[i];
    const int width = field == 1 ? pt::kFirstWidth : pt::kWidth;
    EXPECT_EQ(static_cast<int>(f[static_cast<size_t>(field)].size()), width) << field;
    EXPECT_DOUBLE_EQ(std::strtod(f[static_cast<size_t>(field)].c_str(), nullptr), *slots[i])
        << field;
    EXPECT_DOUBLE_EQ(At(line, pt::Column(field), width), *slots[i]) << field;
  }
}

TEST(SharedFileLayout, GageAndLakeStageValuesStandInTheirColumns) {
  namespace wr = layout::word_record;
  const std::string gage = formatGageRecord(1, 2, -123.5, "TG_000002");
  EXPECT_DOUBLE_EQ(At(gage, wr::ValueColumn(wr::kGageWordWidth), wr::kNumberWidth), -123.5);
  EXPECT_EQ(Fields(gage.substr(1))[wr::kLabel], "TG_000002");
  const std::string lake = formatLakeStageRecord(1, 2, 98.25, "TS_000003");
  EXPECT_DOUBLE_EQ(At(lake, wr::ValueColumn(wr::kLakeStageWordWidth), wr::kNumberWidth), 98.25);
  EXPECT_NE(Fields(lake.substr(1))[wr::kWord].find(wr::kLakeStageWord), std::string::npos);
}

TEST(SharedFileLayout, PathPointsStandInTheColumnsOfThePlotLines) {
  namespace pl = layout::plot_line;
  Path p;
  p.label = "particle 1";
  p.points = {{-1234.5, 678.25, 0, 9.5, 11.75}, {1e6, -2e-3, 365.25, -3, 1e-5}};
  std::ostringstream out;
  writePathFile(out, {p});
  std::istringstream in(out.str());
  std::string line;
  std::vector<std::string> lines;
  while (std::getline(in, line)) lines.push_back(line);
  ASSERT_EQ(lines.size(), 5u);
  EXPECT_EQ(lines[0], std::string(layout::path_file::kLabel) + " particle 1");
  EXPECT_EQ(lines[1].rfind(layout::path_file::kStartPrefix, 0), 0u);
  EXPECT_EQ(lines[4], layout::path_file::kEnd);
  for (size_t k = 0; k < 2; ++k) {
    const std::string& l = lines[k + 2];
    const PathPoint& q = p.points[k];
    EXPECT_DOUBLE_EQ(At(l, pl::kXColumn, pl::kWidth), q.x);
    EXPECT_DOUBLE_EQ(At(l, pl::kYColumn, pl::kWidth), q.y);
    EXPECT_DOUBLE_EQ(At(l, pl::kValue1Column, pl::kWidth), q.time);
    EXPECT_DOUBLE_EQ(At(l, pl::kValue2Column, pl::kWidth), q.elevation);
    EXPECT_DOUBLE_EQ(At(l, pl::kValue3Column, pl::kWidth), q.head);
    EXPECT_EQ(static_cast<int>(l.size()), pl::kValue3Column + pl::kWidth - 1);
  }
}

}  // namespace
