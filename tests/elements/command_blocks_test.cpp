// The element kinds' blocks of the command file written straight from elements:
// the block a well or string goes to, what an incomplete element still writes, the
// complexity the elements raise, the template fields, and the blank result rows
// keyed by the solver labels. The whole file, byte for byte, is the solver suite's
// golden test; these cases pin the rules of each unit on their own.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "elements/barrier.h"
#include "elements/element_store.h"
#include "elements/inhomogeneity.h"
#include "elements/lake.h"
#include "elements/linesink.h"
#include "elements/observation.h"
#include "elements/well.h"
#include "store/schema.h"
#include "support/project_fixture.h"

namespace tarno {
namespace {

class CommandBlocksTest : public testing::ScratchProject {
 protected:
  void SetUp() override {
    ScratchProject::SetUp();
    ctx_.frame = ModelFrame{100.0, 50.0, 1.0};
  }

  static Element Well(std::int64_t vid, double x, double y, const std::string& label) {
    Element e = NewElement(ElementKind::Well, {Vertex{vid, -1, 0, x, y}});
    e.key = vid;
    e.row.Set("VID", vid);
    e.row.Set("Label", label);
    return e;
  }
  static Element String(ElementKind kind, std::int64_t pid,
                        std::initializer_list<std::pair<double, double>> xy) {
    std::vector<Vertex> v;
    std::int64_t seq = 0;
    for (auto [x, y] : xy) v.push_back({0, pid, seq += 100, x, y});
    Element e = NewElement(kind, v);
    e.key = pid;
    e.row.Set("PID", pid);
    e.row.Set("Label", "S" + std::to_string(pid));
    return e;
  }
  static std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> out;
    std::size_t start = 0;
    for (std::size_t crlf; (crlf = text.find("\r\n", start)) != std::string::npos; start = crlf + 2)
      out.push_back(text.substr(start, crlf - start));
    EXPECT_EQ(start, text.size()) << "every line ends with CR LF";
    return out;
  }
  std::vector<std::string> Column(const std::string& sql) {
    std::vector<std::string> out;
    Statement st = db_.PrepareRaw(sql);
    while (st.Step()) out.push_back(st.GetText(0));
    return out;
  }

  CommandWriterContext ctx_;
};

TEST_F(CommandBlocksTest, WellsGoToTheBlockOfTheirKindInTheOrderGiven) {
  Element head = Well(7, 110, 60, "H");
  head.row.Set("HeadSpecified", 1);
  head.row.Set("Head", 12.5);
  Element pumping = Well(3, 90, 40, "P");
  pumping.row.Set("Head", 500.0);
  Element pp = Well(9, 100, 50, "PP");
  pp.row.Set("PPWell", 1);
  Element neither = Well(11, 100, 50, "X");  // a head-specified transient well has no block
  neither.row.Set("HeadSpecified", 1);
  neither.row.Set("Transient", 1);

  std::ostringstream out;
  ResultRowSink rows(db_);
  WriteWellCommands(out, {head, pumping, pp, neither}, ctx_, &rows);
  const auto lines = Lines(out.str());
  ASSERT_EQ(lines.size(), 12u);
  EXPECT_EQ(lines[0], " well ");
  EXPECT_EQ(lines[1], " discharge ");
  EXPECT_NE(lines[2].find("WL_000003"), std::string::npos);
  EXPECT_EQ(lines[4], " well ");
  EXPECT_EQ(lines[5], " head ");
  EXPECT_NE(lines[6].find("WL_000007"), std::string::npos);
  EXPECT_EQ(lines[8], " ppwell ");
  EXPECT_NE(lines[10].find("WL_000009"), std::string::npos);
  EXPECT_EQ(ctx_.level, 3) << "a partially penetrating well raises the model to 3";
  // One result row per written well; the specified head only for head wells.
  EXPECT_EQ(Column("select TARNOLabel || ':' || SpecifiedHead from WLResults order by rowid"),
            (std::vector<std::string>{"WL_000003:0.0", "WL_000007:12.5", "WL_000009:0.0"}));
}

TEST_F(CommandBlocksTest, ATransientScheduleOfOneLabelGetsOneResultRowAndNoSinkNone) {
  Element a = Well(1, 100, 50, "T");
  a.row.Set("Transient", 1);
  a.row.Set("Cyclic", 1);
  a.row.Set("Cycles", 2);
  a.row.Set("Head", 100.0);
  a.row.Set("Time", 10.0);
  Element b = Well(2, 100, 50, "T");  // the schedule's second row, same label
  b.row.Set("Transient", 1);
  std::ostringstream out;
  ResultRowSink rows(db_);
  WriteWellCommands(out, {a, b}, ctx_, &rows);
  const auto lines = Lines(out.str());
  // Menu, mode, four switching lines of the cyclic well, one of the other, quit.
  EXPECT_EQ(lines.size(), 2u + 4u + 1u + 1u);
  EXPECT_EQ(Column("select TARNOLabel from WLResults"), (std::vector<std::string>{"WL_000001"}));

  std::ostringstream again;
  WriteWellCommands(again, {a, b}, ctx_, nullptr);
  EXPECT_EQ(again.str(), out.str()) << "the sink does not change the file";
}

TEST_F(CommandBlocksTest, AStringWithTooFewVerticesWritesItsMenuButNothingElse) {
  Element single = String(ElementKind::Linesink, 4, {{3, 3}});
  single.row.Set("HeadSpecified", 1);
  single.row.Set("Routing", 1);
  std::ostringstream out;
  ResultRowSink rows(db_);
  WriteLinesinkCommands(out, {single}, ctx_, &rows);
  EXPECT_EQ(Lines(out.str()), (std::vector<std::string>{" linesink ", " quit "}));
  EXPECT_EQ(ctx_.level, 6) << "a routed string raises the level even when it is skipped";
  EXPECT_TRUE(Column("select TARNOLabel from LSResults").empty());

  std::ostringstream none;
  WriteLinesinkCommands(none, {}, ctx_, &rows);
  EXPECT_EQ(none.str(), "") << "no strings, no menu";
}

TEST_F(CommandBlocksTest, LinesinkSegmentsAreLabelledByTheirEndVertexAndInterpolated) {
  Element s = String(ElementKind::Linesink, 12, {{100, 50}, {110, 50}, {130, 50}});
  s.row.Set("HeadSpecified", 1);
  s.row.Set("StartingHead", 10.0);
  s.row.Set("EndingHead", 13.0);
  s.row.Set("Resistance", 2.0);
  std::ostringstream out;
  ResultRowSink rows(db_);
  WriteLinesinkCommands(out, {s}, ctx_, &rows);
  EXPECT_EQ(ctx_.level, 4) << "resistance raises the model to 4";
  EXPECT_EQ(Column("select TARNOLabel || ':' || SpecifiedHead from LSResults order by rowid"),
            (std::vector<std::string>{"LS_000012_0200:10.5", "LS_000012_0300:12.0"}));
  // A zero through "#.000000E+00 " has no digit before the point.
  EXPECT_NE(out.str().find("  .000000E+00 .000000E+00 1.000000E+01 .000000E+00 "
                           "1.05000E+01 LS_000012_0200"),
            std::string::npos)
      << out.str();

  // A coincident string cannot be interpolated.
  Element flat = String(ElementKind::Linesink, 13, {{5, 5}, {5, 5}});
  flat.row.Set("HeadSpecified", 0);
  std::ostringstream bad;
  EXPECT_THROW(WriteLinesinkCommands(bad, {flat}, ctx_, nullptr), Error);
}

TEST_F(CommandBlocksTest, TemplatesTakeTheScenarioFieldsOnlyWithSwitchAndTag) {
  Element in = String(ElementKind::Inhomogeneity, 2, {{100, 50}, {110, 50}, {110, 60}});
  in.row.Set("ChangeK", 1);
  in.row.Set("HydCond", 5.0);
  in.row.Set("chkScenarioHydCond", 1);
  in.row.Set("ScenHydCond", "kzone");
  in.row.Set("Recharge", 0.001);
  in.row.Set("chkScenarioRecharge", 0);
  in.row.Set("ScenRecharge", "rch");
  CommandWriterContext plain = ctx_;
  std::ostringstream a;
  WriteInhomogeneityCommands(a, {in}, plain, nullptr);
  EXPECT_EQ(Lines(a.str())[1],
            " transmissivity 5.00000E+00 -9.99900E+03 -9.99900E+03 -1.0000000E-03 -9.99900E+03 "
            "IN_000002_0000");

  CommandWriterContext tpl = ctx_;
  tpl.isTemplate = true;
  tpl.pad = "_";
  std::ostringstream b;
  WriteInhomogeneityCommands(b, {in}, tpl, nullptr);
  EXPECT_EQ(Lines(b.str())[1],
            " transmissivity ! kzone_______ ! -9.99900E+03 -9.99900E+03 -1.0000000E-03 "
            "-9.99900E+03 IN_000002_0000");
  EXPECT_EQ(tpl.ScenarioOr(true, "__NONE__", 1.0, "0.0"), "1.0") << "no tag, no field";
}

TEST_F(CommandBlocksTest, BarrierRowsPerWallSegmentAndLakesHaveNone) {
  Element open = String(ElementKind::Barrier, 5, {{100, 50}, {110, 50}, {110, 60}});
  Element closed = String(ElementKind::Barrier, 6, {{100, 50}, {110, 50}, {110, 60}});
  closed.row.Set("Closed", 1);
  std::ostringstream out;
  ResultRowSink rows(db_);
  WriteBarrierCommands(out, {open, closed}, ctx_, &rows);
  EXPECT_EQ(Column("select TARNOLabel from NFResults order by rowid"),
            (std::vector<std::string>{"HB_000005_0100", "HB_000005_0200", "HB_000006_0100",
                                      "HB_000006_0200", "HB_000006_0300"}));
  EXPECT_EQ(ctx_.level, 3);

  Element lake = String(ElementKind::Lake, 8, {{100, 50}, {110, 50}, {110, 60}});
  lake.row.Set("StageTableFilename", "l.stg");
  std::ostringstream l;
  WriteLakeCommands(l, {lake}, ctx_);
  const auto lines = Lines(l.str());
  EXPECT_EQ(lines.front(), " Inhomogeneity");
  EXPECT_NE(lines[1].find("l.stg LK_000008_0000"), std::string::npos) << lines[1];
  EXPECT_NE(lines[4].find("LK_000008_0300"), std::string::npos) << lines[4];
}

TEST_F(CommandBlocksTest, TestPointsByTypeThenVidAndTheirResultRows) {
  auto point = [&](const char* label, const char* type, double x) {
    Element e = NewElement(ElementKind::TestPoint, {Vertex{0, -1, 0, x, 50}});
    e.row.Set("Label", label);
    e.row.Set("Type", type);
    Insert(db_, e);
  };
  point("G", "Gage", 110);
  point("P", "Piezometer", 120);
  point("S", "Lake Stage", 130);
  const auto tps = LoadAll(db_, ElementKind::TestPoint);
  std::ostringstream out;
  WriteTestPointExtracts(out, tps, ctx_.frame);
  EXPECT_EQ(Lines(out.str()), (std::vector<std::string>{"  20.00 0.00 TP_000002",
                                                       "  gage 10.00 0.00 TG_000001",
                                                       "  lake_stage 30.00 0.00 TS_000003"}));
  PrepareTestPointResultRows(db_, tps);
  PrepareTestPointResultRows(db_, tps);  // emptied first: no doubles
  EXPECT_EQ(Column("select Label || VID || Type from TPResults order by rowid"),
            (std::vector<std::string>{"G1Gage", "P2Piezometer", "S3Lake Stage"}));
}

TEST_F(CommandBlocksTest, SearchTypeTakesTheLastTestThatHolds) {
  Element s = String(ElementKind::Linesink, 1, {{0, 0}, {1, 0}});
  s.row.Set("HeadSpecified", 1);
  EXPECT_EQ(LinesinkSearchType(s), "NearField");
  s.row.Set("FarField", 1);
  EXPECT_EQ(LinesinkSearchType(s), "Farfield");
  s.row.Set("Drain", 1);
  EXPECT_EQ(LinesinkSearchType(s), "Drain");
  s.row.Set("HeadSpecified", 0);
  EXPECT_EQ(LinesinkSearchType(s), "Discharge");
  s.row.Set("Routing", 1);
  EXPECT_EQ(LinesinkSearchType(s), "Stream");
}

}  // namespace
}  // namespace tarno
