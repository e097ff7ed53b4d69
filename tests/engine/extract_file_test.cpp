// The extract file, read back the way the front end reads it: the first
// character decides a line's kind, section heads are found by the first of the
// section names they contain, records are split at commas (a run of commas
// counting as one), numbers are read by a conversion that stops at the first
// foreign character, and estimation instructions read fixed columns.

#include "engine/extract.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <map>
#include <sstream>
#include <string>
#include <vector>

using namespace tarno::engine;

namespace {

// ---- a reader with the front end's rules ----------------------------------

std::vector<std::string> parseFields(const std::string& line, char delimiter) {
  std::vector<std::string> fields;
  std::string cur;
  bool inField = false;
  for (char c : line) {
    if (c == delimiter) {
      if (inField) fields.push_back(cur);
      cur.clear();
      inField = false;
    } else {
      cur.push_back(c);
      inField = true;
    }
  }
  if (inField) fields.push_back(cur);
  return fields;
}

double val(const std::string& s) { return std::strtod(s.c_str(), nullptr); }

std::string trimmed(const std::string& s) {
  size_t b = s.find_first_not_of(' '), e = s.find_last_not_of(' ');
  return b == std::string::npos ? std::string() : s.substr(b, e - b + 1);
}

// Section numbers of the front end, in the order its tests run.
const std::vector<std::pair<std::string, int>> kSectionNames = {
    {"discharge specified wells", 2},
    {"head specified wells", 1},
    {"discharge specified line sinks", 4},
    {"drain", 7},
    {"galleries", 12},
    {"head specified line sinks", 3},
    {"trans", 5},
    {"slurry", 6},
    {"flux", 8},
    {"head specified partially penetrating wells", 10},
    {"discharge specified partially penetrating wells", 9},
    {"Theis wells", 11},
    {"stream linkages", 13},
    {"lake balances", 14}};

int sectionOf(const std::string& head, int current) {
  std::string text = head.substr(1);
  for (const auto& [name, number] : kSectionNames)
    if (text.find(name) != std::string::npos) return number;
  return current;
}

// Minimum field counts by section; inhomogeneity and wall records are checked apart.
const std::map<int, size_t> kMinimumFields = {{1, 7}, {2, 6}, {3, 14}, {4, 6}, {7, 12}, {8, 2}, {9, 6},
                                              {10, 7}, {11, 6}, {12, 12}, {13, 2}};

struct ReadBack {
  std::vector<std::vector<std::string>> dataRecords;           // '@' lines, split
  std::map<int, std::vector<std::vector<std::string>>> records;  // by section number
  std::vector<std::string> badRecords;
  std::vector<std::string> heads;
  int comments = 0;
};

ReadBack readBack(const std::string& text) {
  ReadBack r;
  std::istringstream in(text);
  std::string line;
  int section = 0;
  while (std::getline(in, line)) {
    if (line.empty()) continue;
    switch (line[0]) {
      case '*':
        r.heads.push_back(line);
        section = sectionOf(line, section);
        break;
      case '!': ++r.comments; break;
      case '@': {
        auto f = parseFields(line.substr(1), ',');
        std::string kind = f.empty() ? "" : trimmed(f[0]);
        // Gages, lake stages and (in the inspection) interface records are word records.
        bool special = kind.size() >= 4 &&
                       (kind.ends_with("gage") || kind.ends_with("lake_stage") || kind.ends_with("interface"));
        if (!special && f.size() < 13) r.badRecords.push_back(line);
        r.dataRecords.push_back(f);
        break;
      }
      case ' ': {
        auto f = parseFields(line, ',');
        auto min = kMinimumFields.find(section);
        if (min != kMinimumFields.end() && f.size() < min->second) r.badRecords.push_back(line);
        r.records[section].push_back(f);
        break;
      }
      default: break;
    }
  }
  return r;
}

// ---- a stand-in for the solution -----------------------------------------

class FakeSource : public ExtractSource {
 public:
  std::vector<WellResult> wellList;
  std::vector<SegmentResult> segmentList;
  double flowAtGage = 123.456;
  double stage = -17.25;
  bool dry = false;
  bool broken = false;

  PointValues point(double x, double y, std::optional<double> z) const override {
    PointValues v;
    v.x = x;
    v.y = y;
    v.z = z.value_or(30.0);
    v.potential = 1.0e5 + x;
    v.qx = -1.5e-200;
    v.qy = 2.5e+150;
    v.vx = -3.0;
    v.vy = 4.0;
    v.head = dry ? kDryHead : 10.0 + x / 1000.0 + y / 1.0e6;
    v.vz = broken ? std::numeric_limits<double>::quiet_NaN() : -1.0e-7;
    v.porosity = 0.25;
    v.conductivity = 12.0;
    v.base = -50.0;
    v.recharge = 0.001;
    return v;
  }
  double gageFlow(double, double) const override { return flowAtGage; }
  double lakeStage(double, double) const override { return stage; }
  std::optional<double> interfaceElevation(double x, double) const override {
    if (x > 0) return -12.5;
    return std::nullopt;
  }
  std::vector<WellResult> wells() const override { return wellList; }
  std::vector<SegmentResult> segments() const override { return segmentList; }
  double flux(const std::vector<std::pair<double, double>>& p) const override {
    return 100.0 * static_cast<double>(p.size());
  }
};

SegmentResult segment(LineSinkKind kind, const std::string& label, const std::string& down = "") {
  SegmentResult s;
  s.kind = kind;
  s.label = label;
  s.x1 = -1;
  s.y1 = -2;
  s.x2 = 3;
  s.y2 = 4;
  s.specifiedHead = 9.5;
  s.calculatedHead = 9.75;
  s.discharge = -42.0;
  s.width = 2;
  s.resistance = 1;
  s.depth = 0.5;
  s.baseFlow = 11;
  s.overlandFlow = 22;
  s.error = 1e-9;
  s.downstreamLabel = down;
  return s;
}

ExtractInput fullRequest() {
  ExtractInput x;
  x.file = "demo";
  x.points.push_back({1, ExtractPoint::Kind::Point, 1500.0, -2500.0, std::nullopt, "TP_000001"});
  x.points.push_back({2, ExtractPoint::Kind::Gage, 10.0, 20.0, std::nullopt, "TG_000002"});
  x.points.push_back({3, ExtractPoint::Kind::LakeStage, -10.0, -20.0, std::nullopt, "TS_000003"});
  x.points.push_back({4, ExtractPoint::Kind::Point, -7.0, 8.0, 4.5, ""});
  x.requests = {ExtractRequest::WellDischarge,      ExtractRequest::WellHead,          ExtractRequest::PartialWellDischarge,
                ExtractRequest::PartialWellHead,    ExtractRequest::TheisWell,         ExtractRequest::LineSinkDischarge,
                ExtractRequest::LineSinkHead,       ExtractRequest::Inhomogeneity};
  x.fluxLines.push_back({5, "FL_000004", {{0, 0}, {0, 10}, {5, 10}}});
  x.interfacePoints.push_back({6, 1.0, 2.0});
  return x;
}

FakeSource fullSource() {
  FakeSource f;
  WellResult q;
  q.label = "WL_000010";
  q.x = 100;
  q.y = 200;
  q.radius = 0.3;
  q.discharge = 500;
  q.head = 8.5;
  f.wellList.push_back(q);
  WellResult h = q;
  h.label = "WL_000011";
  h.headSpecified = true;
  h.specifiedHead = 7.0;
  h.headError = -1e-8;
  f.wellList.push_back(h);
  f.segmentList = {segment(LineSinkKind::Discharge, "LS_000020_0200"), segment(LineSinkKind::Head, "LS_000021_0200"),
                   segment(LineSinkKind::Drain, "LS_000022_0200"), segment(LineSinkKind::Gallery, "LS_000023_0200"),
                   segment(LineSinkKind::Stream, "LS_000024_0200", "LS_000024_0300"),
                   segment(LineSinkKind::Stream, "LS_000024_0300", "")};
  return f;
}

}  // namespace

TEST(ExtractRecords, PointRecordKeepsItsColumns) {
  PointValues v;
  v.x = -1.23456789e100;
  v.y = 9.87e-100;
  v.head = -1234.5678;
  v.recharge = -0.0;
  std::string r = formatPointRecord(v, "TP_000042");
  ASSERT_EQ(r[0], '@');
  // '@', 15 characters, then 13 fields of a comma and 14 characters, a comma, the label.
  ASSERT_EQ(r.size(), 1u + 15u + 13u * 15u + 1u + 9u);
  for (int field = 2; field <= 15; ++field) EXPECT_EQ(r[static_cast<size_t>(16 + (field - 2) * 15)], ',') << field;
  // The head in columns 123 to 136 (one-based), as an estimation instruction reads it.
  EXPECT_DOUBLE_EQ(val(r.substr(122, 14)), -1234.568);
  EXPECT_EQ(r.substr(122, 14), " -1.234568E+03");
  EXPECT_DOUBLE_EQ(val(r.substr(1, 15)), -1.234568e100);
  EXPECT_EQ(r.substr(r.size() - 9), "TP_000042");
  auto f = parseFields(r.substr(1), ',');
  EXPECT_EQ(f.size(), 15u);
}

TEST(ExtractRecords, GageAndLakeStageColumns) {
  std::string g = formatGageRecord(1.0e6, -2.0e-3, -98765.4321, "TG_000007");
  EXPECT_EQ(g.substr(0, 15), "@         gage,");
  EXPECT_EQ(g[56], ',');
  EXPECT_DOUBLE_EQ(val(g.substr(43, 13)), -9.87654e4);  // columns 44 to 56
  std::string l = formatLakeStageRecord(5.0, 6.0, 123.456789, "TS_000008");
  EXPECT_EQ(l.substr(0, 21), "@         lake_stage,");
  EXPECT_EQ(l[62], ',');
  EXPECT_DOUBLE_EQ(val(l.substr(49, 13)), 123.457);  // columns 50 to 62
  auto f = parseFields(l.substr(1), ',');
  ASSERT_EQ(f.size(), 5u);
  EXPECT_TRUE(trimmed(f[0]).ends_with("lake_stage"));
  EXPECT_EQ(f[4], "TS_000008");
}

TEST(ExtractRecords, SectionRecordsUseEightDecimalsAndCleanLabels) {
  std::string r = formatSectionRecord({1.0 / 3.0, -2.0e-300}, "A,B");
  EXPECT_EQ(r, " 3.33333333E-01, -2.00000000E-300, A_B");
  auto f = parseFields(r, ',');
  ASSERT_EQ(f.size(), 3u);
  EXPECT_EQ(trimmed(f[2]), "A_B");
}

TEST(ExtractFile, WholeFileReadsBackUnderTheFrontEndsRules) {
  FakeSource src = fullSource();
  std::ostringstream out;
  int nonFinite = 0;
  writeExtract(out, fullRequest(), src, &nonFinite);
  std::string text = out.str();
  EXPECT_EQ(nonFinite, 0);
  ASSERT_EQ(text.substr(0, 14), "* data points\n");

  ReadBack rb = readBack(text);
  EXPECT_TRUE(rb.badRecords.empty()) << rb.badRecords.front();
  // The point records come directly after the first line, in the order given.
  std::istringstream lines(text);
  std::string line;
  std::getline(lines, line);
  const char* labels[] = {"TP_000001", "TG_000002", "TS_000003"};
  for (int i = 0; i < 4; ++i) {
    std::getline(lines, line);
    ASSERT_EQ(line[0], '@');
    if (i < 3) {
      EXPECT_TRUE(line.ends_with(labels[i])) << line;
    }
  }
  ASSERT_EQ(rb.dataRecords.size(), 5u);
  // Test point: head from field 9 and from columns 123-136.
  EXPECT_NEAR(val(rb.dataRecords[0][8]), 10.0 + 1.5 - 0.0025, 1e-6);
  EXPECT_EQ(trimmed(rb.dataRecords[0][14]), "TP_000001");
  EXPECT_DOUBLE_EQ(val(rb.dataRecords[1][3]), 123.456);
  EXPECT_DOUBLE_EQ(val(rb.dataRecords[2][3]), -17.25);
  // The inspection point with its own elevation: 14 fields, no label.
  EXPECT_EQ(rb.dataRecords[3].size(), 14u);
  EXPECT_DOUBLE_EQ(val(rb.dataRecords[3][2]), 4.5);

  // Each kind of record lands in its own section.
  ASSERT_EQ(rb.records[2].size(), 1u);
  EXPECT_EQ(trimmed(rb.records[2][0][5]), "WL_000010");
  EXPECT_DOUBLE_EQ(val(rb.records[2][0][3]), 500.0);
  EXPECT_DOUBLE_EQ(val(rb.records[2][0][4]), 8.5);
  ASSERT_EQ(rb.records[1].size(), 1u);
  EXPECT_EQ(rb.records[1][0].size(), 7u);
  EXPECT_DOUBLE_EQ(val(rb.records[1][0][4]), 7.0);
  EXPECT_DOUBLE_EQ(val(rb.records[1][0][5]), -1e-8);
  ASSERT_EQ(rb.records[4].size(), 1u);
  EXPECT_DOUBLE_EQ(val(rb.records[4][0][4]), -42.0);
  ASSERT_EQ(rb.records[3].size(), 3u);  // the head string and the two stream segments
  EXPECT_EQ(rb.records[3][0].size(), 14u);
  EXPECT_DOUBLE_EQ(val(rb.records[3][1][10]), 11.0);  // base flow
  EXPECT_DOUBLE_EQ(val(rb.records[3][1][11]), 22.0);  // overland flow
  ASSERT_EQ(rb.records[7].size(), 1u);
  EXPECT_EQ(rb.records[7][0].size(), 12u);
  EXPECT_DOUBLE_EQ(val(rb.records[7][0][10]), 1e-9);  // the error, where the drain form has it
  ASSERT_EQ(rb.records[12].size(), 1u);
  EXPECT_EQ(trimmed(rb.records[12][0][11]), "LS_000023_0200");
  ASSERT_EQ(rb.records[13].size(), 1u);  // only the segment that flows into another
  EXPECT_EQ(trimmed(rb.records[13][0][0]), "LS_000024_0200");
  EXPECT_EQ(trimmed(rb.records[13][0][1]), "LS_000024_0300");
  ASSERT_EQ(rb.records[8].size(), 1u);
  EXPECT_EQ(trimmed(rb.records[8][0][0]), "FL_000004");
  EXPECT_DOUBLE_EQ(val(rb.records[8][0][1]), 300.0);
  EXPECT_TRUE(rb.records[5].empty());
  EXPECT_TRUE(rb.records[6].empty());
  EXPECT_EQ(rb.comments, 0);
  // The interface inspection (line 6) follows the points of lines 1 to 4.
  ASSERT_EQ(rb.dataRecords[4].size(), 4u);
  EXPECT_EQ(rb.dataRecords[4][0], "    interface");
  EXPECT_DOUBLE_EQ(val(rb.dataRecords[4][1]), 1.0);
  EXPECT_DOUBLE_EQ(val(rb.dataRecords[4][2]), 2.0);
  EXPECT_DOUBLE_EQ(val(rb.dataRecords[4][3]), -12.5);
}

TEST(ExtractFile, EverySectionHeadSelectsItsOwnSection) {
  const std::vector<std::pair<const char*, int>> expected = {
      {kHeadDischargeWells, 2},    {kHeadHeadWells, 1},    {kHeadDischargePartialWells, 9},
      {kHeadHeadPartialWells, 10}, {kHeadTheisWells, 11},  {kHeadDischargeLineSinks, 4},
      {kHeadHeadLineSinks, 3},     {kHeadDrains, 7},       {kHeadGalleries, 12},
      {kHeadInhomogeneities, 5},   {kHeadWalls, 6},        {kHeadFluxLines, 8},
      {kHeadStreamLinkages, 13},   {kHeadLakeBalances, 14}};
  for (const auto& [head, number] : expected) EXPECT_EQ(sectionOf(head, -1), number) << head;
  EXPECT_EQ(sectionOf(kHeadDataPoints, -1), -1);  // selects nothing
}

TEST(ExtractFile, OnlyRequestedSectionsInTheirOrder) {
  FakeSource src = fullSource();
  ExtractInput x;
  x.requests = {ExtractRequest::LineSinkDischarge, ExtractRequest::WellHead};
  std::ostringstream out;
  writeExtract(out, x, src);
  ReadBack rb = readBack(out.str());
  ASSERT_EQ(rb.heads.size(), 3u);
  EXPECT_EQ(rb.heads[0], kHeadDataPoints);
  EXPECT_EQ(rb.heads[1], kHeadDischargeLineSinks);
  EXPECT_EQ(rb.heads[2], kHeadHeadWells);
  EXPECT_TRUE(rb.records[2].empty());
  EXPECT_EQ(rb.records[1].size(), 1u);
}

TEST(ExtractFile, DryAndNonFiniteValuesKeepTheLayout) {
  FakeSource src;
  src.dry = true;
  src.broken = true;
  src.flowAtGage = std::numeric_limits<double>::infinity();
  ExtractInput x;
  x.points.push_back({1, ExtractPoint::Kind::Point, 0, 0, std::nullopt, "TP_1"});
  x.points.push_back({2, ExtractPoint::Kind::Gage, 0, 0, std::nullopt, "TG_1"});
  std::ostringstream out;
  int nonFinite = 0;
  writeExtract(out, x, src, &nonFinite);
  EXPECT_EQ(nonFinite, 2);
  ReadBack rb = readBack(out.str());
  ASSERT_EQ(rb.dataRecords.size(), 2u);
  EXPECT_LT(val(rb.dataRecords[0][8]), -1000.0);  // dry to the front end
  EXPECT_DOUBLE_EQ(val(rb.dataRecords[0][9]), -9999.0);
  EXPECT_DOUBLE_EQ(val(rb.dataRecords[1][3]), -9999.0);
  EXPECT_EQ(out.str().find("nan"), std::string::npos);
  EXPECT_EQ(out.str().find("inf"), std::string::npos);
}

// The lake balances follow the walls in the inhomogeneity request, one record per lake
// (a dry lake's stage is the dry mark); the cell leakage record stands among the point
// records by its line, as an interface record does.
TEST(ExtractFile, LakeBalancesAndCellLeakageRecords) {
  struct LakeSource : FakeSource {
    std::vector<LakeResult> lakes() const override {
      LakeResult wet;
      wet.label = "LK_000007_0000";
      wet.firstLabel = "LK_000007_0000";
      wet.lastLabel = "LK_000007_0300";
      wet.polygonArea = 400;
      wet.surfaceArea = 380;
      wet.stage = 9.5;
      wet.aquiferHead = 10;
      wet.precipitation = 0.4;
      wet.groundwaterIn = 0.8;
      wet.totalIn = 1.2;
      wet.evaporation = 1.2;
      wet.totalOut = 1.2;
      LakeResult dry = wet;
      dry.label = "Shore, east";  // a shore string's label, comma and all
      dry.dry = true;
      return {wet, dry};
    }
    double leakageRate(double x, double) const override { return x > 0 ? 2.5e-3 : 0.0; }
  } src;
  ExtractInput x;
  x.points.push_back({1, ExtractPoint::Kind::Point, 5, 5, std::nullopt, ""});
  x.interfacePoints.push_back({2, 5.0, 5.0, true});
  x.interfacePoints.push_back({3, -5.0, 5.0, true});
  x.requests = {ExtractRequest::Inhomogeneity};
  std::ostringstream out;
  writeExtract(out, x, src);
  const std::string text = out.str();
  ReadBack rb = readBack(text);
  ASSERT_EQ(rb.dataRecords.size(), 3u);
  EXPECT_EQ(rb.dataRecords[1][0], " cell_leakage");
  EXPECT_DOUBLE_EQ(val(rb.dataRecords[1][3]), 2.5e-3);
  EXPECT_DOUBLE_EQ(val(rb.dataRecords[2][3]), 0.0);
  ASSERT_EQ(rb.heads.back(), kHeadLakeBalances);
  const auto tail = text.substr(text.find(kHeadLakeBalances));
  std::istringstream lines(tail);
  std::string line;
  std::getline(lines, line);
  std::vector<std::vector<std::string>> records;
  while (std::getline(lines, line)) records.push_back(parseFields(line, ','));
  ASSERT_EQ(records.size(), 2u);
  namespace lb = tarno::solver_files::lake_balance;
  for (const auto& r : records) ASSERT_EQ(r.size(), static_cast<size_t>(lb::kFields));
  EXPECT_EQ(trimmed(records[0][lb::kLabel - 1]), "LK_000007_0000");
  EXPECT_EQ(trimmed(records[0][lb::kLastLabel - 1]), "LK_000007_0300");
  EXPECT_DOUBLE_EQ(val(records[0][lb::kStage - 1]), 9.5);
  EXPECT_DOUBLE_EQ(val(records[0][lb::kGroundwaterIn - 1]), 0.8);
  EXPECT_DOUBLE_EQ(val(records[0][lb::kTotalOut - 1]), 1.2);
  EXPECT_EQ(trimmed(records[1][lb::kLabel - 1]), "Shore_ east");
  EXPECT_DOUBLE_EQ(val(records[1][lb::kStage - 1]), kDryHead);

  // Without lakes there is no section at all.
  FakeSource plain;
  std::ostringstream none;
  writeExtract(none, x, plain);
  EXPECT_EQ(none.str().find(kHeadLakeBalances), std::string::npos);
}
