// The command-language reader: every form the front end writes, and the ways a
// file can go wrong (reported and skipped, or fatal for parameter fields).

#include "engine/command.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

using namespace tarno::engine;

namespace {

// Joins lines with the given line end.
std::string lines(const std::vector<std::string>& ls, const std::string& eol = "\n") {
  std::string s;
  for (const auto& l : ls) s += l + eol;
  return s;
}

template <class T>
std::vector<const T*> stepsOf(const CommandFile& f) {
  std::vector<const T*> r;
  for (const auto& s : f.steps)
    if (auto* p = std::get_if<T>(&s.data)) r.push_back(p);
  return r;
}

ModelElements allElements(const CommandFile& f) {
  ModelElements all;
  auto append = [](auto& to, const auto& from) { to.insert(to.end(), from.begin(), from.end()); };
  for (const ModelElements* e : stepsOf<ModelElements>(f)) {
    append(all.wells, e->wells);
    append(all.partialWells, e->partialWells);
    append(all.theisWells, e->theisWells);
    append(all.ponds, e->ponds);
    append(all.lineSinks, e->lineSinks);
    append(all.inhomogeneities, e->inhomogeneities);
    append(all.walls, e->walls);
    append(all.lakes, e->lakes);
  }
  return all;
}

// A command file as the front end writes it for a new solve.
const std::vector<std::string> kFrontEndFile = {
    "* Written by TARNO for Windows 2.2.4",
    " error error.log",
    " yes",
    " message message.log",
    " yes",
    " echo echo.log",
    " yes",
    " picture off",
    " quit",
    " ",
    " bfname  demo",
    " modelorigin 1000.5 2000 0 ",
    " title demo",
    " aquifer",
    " base .0000E+00",
    " permeability .1000000E+02",
    " thickness .2000000E+02",
    " porosity .3000000E+00",
    " uniflow      .1000000E+01 -.5000000E+00 ",
    " reference    .1000000E+04 .0000000E+00 .1500000E+02 ",
    " quit ",
    " layout ",
    " window       -1000.00       -1000.00        1000.00        1000.00 ",
    " quit ",
    " well ",
    " discharge ",
    "  12.345678E+02 0.000000E+00 5.00000E+02 1.00000E-01 WL_000001",
    " quit ",
    " well ",
    " head ",
    "  -.5000000E+01 .2500000E+02 .1200000E+02 .3000000E+00 WL_000002",
    " quit ",
    " linesink ",
    " head ",
    " resistance .500000E+01 ",
    " width .200000E+01  1",
    " depth .150000E+01 ",
    "  -.5000000E+03 -.1000000E+04 -.5000000E+03 .0000000E+00 .1000000E+02 LS_000003_0200",
    "  -.5000000E+03 .0000000E+00 -.5000000E+03 .1000000E+04 .9000000E+01 LS_000003_0300",
    " quit ",
    " layout ",
    " window       -1000.00       -1000.00        1000.00        1000.00 ",
    " quit ",
    " time 0",
    " solve 3 3 0 1",
    " ",
    " save demo",
    "y",
    " time          0",
    " extract",
    " file demo",
    " y",
    "  10.00 20.00 TP_000004",
    "  gage 10.00 20.00 TG_000005",
    "  lake_stage 10.00 20.00 TS_000006",
    " well discharge",
    " well head",
    " ppwell discharge",
    " ppwell head",
    " Theis well",
    " linesink discharge",
    " linesink head",
    " inhomogeneity",
    " flux FL_000007",
    "  0.00 -100.00",
    "  0.00 100.00",
    " quit",
    " quit",
    " stop",
};

}  // namespace

TEST(CommandNumbers, ReadsEveryFormTheFrontEndWrites) {
  EXPECT_DOUBLE_EQ(*parseNumber(".1234567E+02"), 12.34567);
  EXPECT_DOUBLE_EQ(*parseNumber("-.5E+01"), -5.0);
  EXPECT_DOUBLE_EQ(*parseNumber("12.345678E+00"), 12.345678);  // two digits before the point
  EXPECT_DOUBLE_EQ(*parseNumber("0.00000E+00"), 0.0);
  EXPECT_DOUBLE_EQ(*parseNumber(".000000E+00"), 0.0);
  EXPECT_DOUBLE_EQ(*parseNumber("-1000.00"), -1000.0);
  EXPECT_DOUBLE_EQ(*parseNumber(".00"), 0.0);
  EXPECT_DOUBLE_EQ(*parseNumber("5."), 5.0);
  EXPECT_DOUBLE_EQ(*parseNumber("+3"), 3.0);
  EXPECT_DOUBLE_EQ(*parseNumber("1.5D+02"), 150.0);
  EXPECT_DOUBLE_EQ(*parseNumber("1.70141E+38"), 1.70141e38);
}

TEST(CommandNumbers, RefusesWhatIsNotAFiniteNumber) {
  for (const char* bad : {"", "-", "+", ".", "inf", "-inf", "nan", "1.#INF", "-1.#IND", "12abc", "1e999", "0x10",
                          "1,5", "--1", "E+02", "TP_000001"})
    EXPECT_FALSE(parseNumber(bad).has_value()) << bad;
}

TEST(CommandItems, SplitsAtBlanksAndKeepsParameterFieldsWhole) {
  auto items = splitItems("  base\t! Kh__________ !  x");
  ASSERT_EQ(items.size(), 3u);
  EXPECT_EQ(items[0], "base");
  EXPECT_EQ(items[1], "! Kh__________ !");
  EXPECT_EQ(items[2], "x");
  EXPECT_TRUE(isParameterField(items[1]));
  EXPECT_TRUE(isParameterField("!Kh!"));
  EXPECT_FALSE(isParameterField("!"));
  EXPECT_FALSE(isParameterField("Kh!"));
  // An unclosed mark is an ordinary item.
  auto open = splitItems(" base !Kh 3");
  ASSERT_EQ(open.size(), 3u);
  EXPECT_EQ(open[1], "!Kh");
}

TEST(CommandFile, ReadsAFrontEndFileWithoutProblems) {
  CommandFile f = parseCommandFile(lines(kFrontEndFile, "\r\n"));
  for (const auto& p : f.problems) ADD_FAILURE() << "line " << p.line << ": " << p.message;
  EXPECT_FALSE(f.fatal);
  EXPECT_TRUE(f.stopped);
  EXPECT_EQ(f.lines.size(), kFrontEndFile.size());
  EXPECT_EQ(f.lines[1], " error error.log");  // the CR is gone

  auto logs = stepsOf<LogCommand>(f);
  ASSERT_EQ(logs.size(), 3u);
  EXPECT_EQ(logs[0]->kind, LogCommand::Kind::Error);
  EXPECT_EQ(logs[0]->file, "error.log");
  EXPECT_EQ(logs[2]->kind, LogCommand::Kind::Echo);

  auto origin = stepsOf<OriginCommand>(f);
  ASSERT_EQ(origin.size(), 1u);
  EXPECT_DOUBLE_EQ(origin[0]->x0, 1000.5);
  EXPECT_EQ(origin[0]->code, 0);

  auto aq = stepsOf<AquiferInput>(f);
  ASSERT_EQ(aq.size(), 1u);
  EXPECT_DOUBLE_EQ(*aq[0]->base, 0.0);
  EXPECT_DOUBLE_EQ(*aq[0]->permeability, 10.0);
  EXPECT_DOUBLE_EQ(*aq[0]->thickness, 20.0);
  EXPECT_DOUBLE_EQ(*aq[0]->porosity, 0.3);
  EXPECT_DOUBLE_EQ((*aq[0]->uniflow)[1], -0.5);
  EXPECT_DOUBLE_EQ((*aq[0]->reference)[0], 1000.0);
  EXPECT_DOUBLE_EQ((*aq[0]->reference)[2], 15.0);

  ModelElements e = allElements(f);
  ASSERT_EQ(e.wells.size(), 2u);
  EXPECT_DOUBLE_EQ(e.wells[0].x, 1234.5678);
  EXPECT_DOUBLE_EQ(e.wells[0].value, 500.0);
  EXPECT_FALSE(e.wells[0].headSpecified);
  EXPECT_EQ(e.wells[0].label, "WL_000001");
  EXPECT_TRUE(e.wells[1].headSpecified);
  EXPECT_DOUBLE_EQ(e.wells[1].x, -5.0);
  EXPECT_DOUBLE_EQ(e.wells[1].radius, 0.3);

  ASSERT_EQ(e.lineSinks.size(), 1u);
  const LineSinkString& s = e.lineSinks[0];
  EXPECT_EQ(s.kind, LineSinkKind::Head);
  EXPECT_DOUBLE_EQ(s.resistance, 5.0);
  EXPECT_DOUBLE_EQ(s.width, 2.0);
  EXPECT_EQ(s.locationCode, 1);
  EXPECT_DOUBLE_EQ(s.depth, 1.5);
  ASSERT_EQ(s.segments.size(), 2u);
  EXPECT_DOUBLE_EQ(s.segments[1].value, 9.0);
  EXPECT_EQ(s.segments[1].label, "LS_000003_0300");

  auto solve = stepsOf<SolveCommand>(f);
  ASSERT_EQ(solve.size(), 1u);
  EXPECT_EQ(solve[0]->inner, 3);
  EXPECT_EQ(solve[0]->outer, 3);
  EXPECT_EQ(solve[0]->store, 0);
  EXPECT_EQ(solve[0]->full, 1);
  EXPECT_FALSE(solve[0]->conjunctive);

  ASSERT_EQ(stepsOf<SaveCommand>(f).size(), 1u);
  EXPECT_EQ(stepsOf<SaveCommand>(f)[0]->name, "demo");
  EXPECT_EQ(stepsOf<WindowInput>(f).size(), 2u);

  auto x = stepsOf<ExtractInput>(f);
  ASSERT_EQ(x.size(), 1u);
  EXPECT_EQ(x[0]->file, "demo");
  ASSERT_EQ(x[0]->points.size(), 3u);
  EXPECT_EQ(x[0]->points[0].kind, ExtractPoint::Kind::Point);
  EXPECT_EQ(x[0]->points[0].label, "TP_000004");
  EXPECT_FALSE(x[0]->points[0].z);
  EXPECT_EQ(x[0]->points[1].kind, ExtractPoint::Kind::Gage);
  EXPECT_EQ(x[0]->points[1].label, "TG_000005");
  EXPECT_EQ(x[0]->points[2].kind, ExtractPoint::Kind::LakeStage);
  EXPECT_EQ(x[0]->requests.size(), 8u);
  EXPECT_EQ(x[0]->requests.front(), ExtractRequest::WellDischarge);
  EXPECT_EQ(x[0]->requests.back(), ExtractRequest::Inhomogeneity);
  ASSERT_EQ(x[0]->fluxLines.size(), 1u);
  EXPECT_EQ(x[0]->fluxLines[0].label, "FL_000007");
  EXPECT_EQ(x[0]->fluxLines[0].points.size(), 2u);

  // The steps keep the file's order: solve before save before extract.
  std::vector<size_t> order;
  for (const auto& st : f.steps) order.push_back(st.data.index());
  auto pos = [&](size_t idx) { return std::find(order.begin(), order.end(), idx) - order.begin(); };
  EXPECT_LT(pos(StepData(SolveCommand{}).index()), pos(StepData(SaveCommand{}).index()));
  EXPECT_LT(pos(StepData(SaveCommand{}).index()), pos(StepData(ExtractInput{}).index()));
}

TEST(CommandFile, LineEndsCaseAndTrailingBlanksDoNotMatter) {
  CommandFile lf = parseCommandFile(lines(kFrontEndFile, "\n"));
  CommandFile crlf = parseCommandFile(lines(kFrontEndFile, "\r\n"));
  EXPECT_EQ(lf.steps.size(), crlf.steps.size());
  EXPECT_EQ(lf.lines, crlf.lines);

  CommandFile upper = parseCommandFile(lines({" AQUIFER   ", " Base 5  ", " PERMEABILITY\t2", " Quit   ", " WELL",
                                              " Discharge   ", " 1 2 3 0.5 W", " QUIT", " Stop  "}));
  EXPECT_TRUE(upper.problems.empty());
  EXPECT_TRUE(upper.stopped);
  ASSERT_EQ(stepsOf<AquiferInput>(upper).size(), 1u);
  EXPECT_DOUBLE_EQ(*stepsOf<AquiferInput>(upper)[0]->base, 5.0);
  EXPECT_EQ(allElements(upper).wells.size(), 1u);
}

TEST(CommandFile, CommentsBlankLinesAnswersAndTopLevelQuitAreQuiet) {
  CommandFile f = parseCommandFile(lines({"* comment", "", "   ", "\t", " quit", " quit ", " yes", " y", " y ", "y",
                                          " well", "* a comment inside a menu", " discharge", " y", "  1 2 3 .1 W1",
                                          " quit", " stop"}));
  EXPECT_TRUE(f.problems.empty()) << f.problems.front().message;
  EXPECT_EQ(allElements(f).wells.size(), 1u);
}

TEST(CommandFile, UnknownCommandsAndBadDataAreReportedAndSkipped) {
  CommandFile f = parseCommandFile(lines({" frobnicate 3", " well", " discharge", "  1 2 abc .1 W1", "  1 2",
                                          "  1.#INF 2 3 .1 W2", "  5 6 7 .1 W3", " quit", " aquifer", " base x",
                                          " thickness 10", " quit", " stop"}));
  ASSERT_EQ(f.problems.size(), 5u);
  EXPECT_EQ(f.problems[0].line, 1);
  EXPECT_EQ(f.problems[0].text, " frobnicate 3");
  EXPECT_NE(f.problems[0].message.find("unknown command"), std::string::npos);
  EXPECT_EQ(f.problems[1].line, 4);
  EXPECT_EQ(f.problems[2].line, 5);
  EXPECT_EQ(f.problems[3].line, 6);
  EXPECT_EQ(f.problems[4].line, 10);
  // The good lines around them are kept.
  ModelElements e = allElements(f);
  ASSERT_EQ(e.wells.size(), 1u);
  EXPECT_EQ(e.wells[0].label, "W3");
  auto aq = stepsOf<AquiferInput>(f);
  ASSERT_EQ(aq.size(), 1u);
  EXPECT_FALSE(aq[0]->base);
  EXPECT_DOUBLE_EQ(*aq[0]->thickness, 10.0);
}

TEST(CommandFile, ParameterFieldIsFatalAndNamesLineAndField) {
  for (const std::string& field : {std::string("!Kh__________!"), std::string("! Kh !")}) {
    CommandFile f = parseCommandFile(lines({" aquifer", " base 0", " permeability " + field, " quit", " solve 1 1 0 1"}));
    ASSERT_TRUE(f.fatal) << field;
    EXPECT_EQ(f.fatal->line, 3);
    EXPECT_NE(f.fatal->message.find(field), std::string::npos);
    EXPECT_NE(f.fatal->message.find("item 2"), std::string::npos);
    EXPECT_NE(f.fatal->message.find("cannot be solved as it stands"), std::string::npos);
    EXPECT_TRUE(stepsOf<SolveCommand>(f).empty());  // reading stopped there
  }
  // In a data line and in a string property as well.
  CommandFile w = parseCommandFile(lines({" well", " discharge", "  1 2 ! Q1 ! .1 W1"}));
  ASSERT_TRUE(w.fatal);
  EXPECT_EQ(w.fatal->line, 3);
  EXPECT_NE(w.fatal->message.find("item 3"), std::string::npos);
  CommandFile r = parseCommandFile(lines({" linesink", " head", " resistance ! Res_1 !"}));
  ASSERT_TRUE(r.fatal);
  EXPECT_EQ(r.fatal->line, 3);
}

TEST(CommandFile, MasksOfOtherElementsAreRead) {
  CommandFile f = parseCommandFile(lines({
      " ppwell ", " discharge ", "  .1000000E+03 .2000000E+03 .1000000E+02 .0000000E+00 .5000000E+03 .1000000E+00 WL_000010",
      " quit ", " ppwell ", " head ", "  1 2 3 4 5 .5 WL_000011", " quit ",
      " twell ", " discharge ", "  .1E+03 .2E+03 .5E+03 .0E+00 .1E+02 .1E-03 .1E+00 WL_000012",
      "  .1E+03 .2E+03 -.5E+03 .1E+02 .1E+02 .1E-03 .1E+00 WL_000012", " quit ",
      " sinkdisk ", " discharge ", "  .1000000E+03 .2000000E+03 .1500000E+03 .2000000E+03  12.500000E-03 .000000E+00 WL_000013",
      " quit ", " sinkdisk ", " head ", "  .1E+03 .2E+03 .15E+03 .2E+03 .9E+01 WL_000014", " quit ", " stop"}));
  EXPECT_TRUE(f.problems.empty()) << f.problems.front().message;
  ModelElements e = allElements(f);
  ASSERT_EQ(e.partialWells.size(), 2u);
  EXPECT_DOUBLE_EQ(e.partialWells[0].top, 10.0);
  EXPECT_DOUBLE_EQ(e.partialWells[0].value, 500.0);
  EXPECT_FALSE(e.partialWells[0].headSpecified);
  EXPECT_TRUE(e.partialWells[1].headSpecified);
  ASSERT_EQ(e.theisWells.size(), 2u);
  EXPECT_DOUBLE_EQ(e.theisWells[1].discharge, -500.0);
  EXPECT_DOUBLE_EQ(e.theisWells[1].startTime, 10.0);
  EXPECT_DOUBLE_EQ(e.theisWells[0].storage, 1e-4);
  ASSERT_EQ(e.ponds.size(), 2u);
  EXPECT_DOUBLE_EQ(e.ponds[0].value, 12.5e-3);
  EXPECT_EQ(e.ponds[0].label, "WL_000013");  // the literal zero is not part of the label
  EXPECT_TRUE(e.ponds[1].headSpecified);
  EXPECT_EQ(e.ponds[1].label, "WL_000014");
}

TEST(CommandFile, StreamsListVerticesAndEndWithABareVertex) {
  CommandFile f = parseCommandFile(lines({
      " linesink ", "* stream parameter is End Inflow (L^3/day)", " stream 0.150000E+03", " end", " Inlet ",
      " Outlet table1.tab", " Lake lake.tab", " Levels 100 12.5", " overlandflow 0.100000E-01",
      " resistance .100000E+01 ", " width 0.50000E+01  2", " depth 0.10000E+01 ",
      "  .0000000E+00 .0000000E+00 .120000 LS_000020_0200", "  .1000000E+03 .0000000E+00 11.500000 LS_000020_0300",
      " .2000000E+03 .0000000E+00", "  .3000000E+03 .0000000E+00 1 LS_X", " stream 0", "  0 0 5 A", " 0 10",
      " quit", " stop"}));
  ModelElements e = allElements(f);
  ASSERT_EQ(e.lineSinks.size(), 2u);
  const LineSinkString& s = e.lineSinks[0];
  EXPECT_EQ(s.kind, LineSinkKind::Stream);
  EXPECT_DOUBLE_EQ(s.endInflow, 150.0);
  EXPECT_TRUE(s.end);
  EXPECT_TRUE(s.inlet);
  EXPECT_EQ(s.outletTable, "table1.tab");
  EXPECT_EQ(*s.lakeName, "lake.tab");
  EXPECT_DOUBLE_EQ((*s.levels)[1], 12.5);
  EXPECT_DOUBLE_EQ(s.overlandFlow, 0.01);
  EXPECT_EQ(s.locationCode, 2);
  ASSERT_EQ(s.segments.size(), 2u);
  EXPECT_DOUBLE_EQ(s.segments[0].value, 0.12);
  EXPECT_DOUBLE_EQ(s.segments[0].x2, 100.0);
  EXPECT_DOUBLE_EQ(s.segments[1].x1, 100.0);
  EXPECT_DOUBLE_EQ(s.segments[1].x2, 200.0);
  EXPECT_EQ(s.segments[1].label, "LS_000020_0300");
  // Each element keeps the line it came from, for the run's messages.
  EXPECT_EQ(s.line, 3);
  EXPECT_EQ(s.linkLine, 5);
  EXPECT_EQ(s.segments[0].line, 13);
  EXPECT_EQ(s.segments[1].line, 14);
  ASSERT_EQ(e.lineSinks[1].segments.size(), 1u);
  // The vertex after the bare last one is reported and skipped.
  ASSERT_EQ(f.problems.size(), 1u);
  EXPECT_EQ(f.problems[0].line, 16);
}

TEST(CommandFile, DischargeSegmentsJoinIntoStringsAndPropertiesNeedAString) {
  CommandFile f = parseCommandFile(lines({" linesink ", " discharge ", "  0 0 1 0 .5 LS_1_1", "  1 0 2 0 .5 LS_1_2",
                                          "  5 5 6 6 .2 LS_2_1", " resistance 3", " gallery ", " pumping 250",
                                          "  0 0 0 10 4 LS_3_1", " drain ", " resistance 0", "  9 9 9 19 4 LS_4_1",
                                          " quit ", " stop"}));
  ModelElements e = allElements(f);
  ASSERT_EQ(e.lineSinks.size(), 4u);
  EXPECT_EQ(e.lineSinks[0].segments.size(), 2u);
  EXPECT_EQ(e.lineSinks[1].segments.size(), 1u);
  EXPECT_EQ(e.lineSinks[2].kind, LineSinkKind::Gallery);
  EXPECT_TRUE(e.lineSinks[2].pumpingGiven);
  EXPECT_DOUBLE_EQ(e.lineSinks[2].pumping, 250.0);
  EXPECT_EQ(e.lineSinks[3].kind, LineSinkKind::Drain);
  EXPECT_DOUBLE_EQ(e.lineSinks[3].resistance, 0.0);
  ASSERT_EQ(f.problems.size(), 1u);  // the resistance in discharge mode
  EXPECT_EQ(f.problems[0].line, 6);
}

TEST(CommandFile, AreaElementsWallsAndLakes) {
  CommandFile f = parseCommandFile(lines({
      " Inhomogeneity", " Lake .50000E+03 .10000E-02 .20000E-02 .10000E+01 stage.tab LK_000001_0000",
      "  .0E+00 .0E+00 LK_000001_0100", "  .1E+03 .0E+00 LK_000001_0200", "  .1E+03 .1E+03 LK_000001_0300",
      " Lake 1 2 3 4 LK_000002_0000", "  5 5 LK_000002_0100", " quit ", " inhomogeneity ",
      " transmissivity .20000E+02 -.99990E+04 -.99990E+04 -.1000000E-02 -.99990E+04 IN_000003_0000",
      "  .0E+00 .0E+00 IN_000003_0100", "  .1E+03 .0E+00 IN_000003_0200", " quit ", " inhomogeneity ",
      "slurry open     .00000E+00 .10000E+01 .30000E+00 .50000E+01 HB_000004_0000", "  0 0 HB_000004_0100",
      "  0 10 HB_000004_0200", "slurry closed   .1000000E-01 .1000000E+01 .3000000E+00 .5000000E+01 HB_000005_0000",
      "  0 0 HB_000005_0100", "slurry inside   1 2 3 4 HB_000006_0000", "slurry outside  1 2 3 4 HB_000007_0000",
      " quit ", " stop"}));
  EXPECT_TRUE(f.problems.empty()) << f.problems.front().message;
  ModelElements e = allElements(f);
  ASSERT_EQ(e.lakes.size(), 2u);
  ASSERT_EQ(e.inhomogeneities.size(), 1u);
  ASSERT_EQ(e.walls.size(), 4u);
  EXPECT_EQ(e.lakes[0].tableName, "stage.tab");
  EXPECT_EQ(e.lakes[0].label, "LK_000001_0000");
  EXPECT_EQ(e.lakes[0].vertices.size(), 3u);
  EXPECT_DOUBLE_EQ(e.lakes[0].evaporation, 0.002);
  EXPECT_DOUBLE_EQ(e.lakes[0].resistance, 1.0);
  EXPECT_EQ(e.lakes[1].tableName, "");
  EXPECT_EQ(e.lakes[1].label, "LK_000002_0000");
  EXPECT_DOUBLE_EQ(e.inhomogeneities[0].base, -9999.0);
  EXPECT_DOUBLE_EQ(e.inhomogeneities[0].extraction, -0.001);
  EXPECT_EQ(e.inhomogeneities[0].vertices[1].label, "IN_000003_0200");
  EXPECT_EQ(e.inhomogeneities[0].vertices[1].line, 12);
  EXPECT_EQ(e.walls[0].kind, WallKind::Open);
  EXPECT_DOUBLE_EQ(e.walls[0].bottom, 5.0);
  EXPECT_EQ(e.walls[0].vertices.size(), 2u);
  EXPECT_EQ(e.walls[1].kind, WallKind::Closed);
  EXPECT_EQ(e.walls[2].kind, WallKind::Inside);
  EXPECT_EQ(e.walls[3].kind, WallKind::Outside);
  EXPECT_EQ(e.walls[3].line, 21);
}

TEST(CommandFile, ExtractPointsOfInspectionAndGridFiles) {
  CommandFile f = parseCommandFile(lines({" load demo", " time 0", " extract ", " file _INSPECT.XTR", " y",
                                          "1.2345670E+03 4.5678900E+03 10.00", " interface 1.5 2.5",
                                          "  100.00 200.00 00001_00002", "  1 2 -5.00 TP_1", " leakage", " well sideways",
                                          " quit ", " stop"}));
  auto x = stepsOf<ExtractInput>(f);
  ASSERT_EQ(x.size(), 1u);
  ASSERT_EQ(x[0]->points.size(), 3u);
  EXPECT_DOUBLE_EQ(*x[0]->points[0].z, 10.0);
  EXPECT_EQ(x[0]->points[0].label, "");
  EXPECT_FALSE(x[0]->points[1].z);
  EXPECT_EQ(x[0]->points[1].label, "00001_00002");
  EXPECT_DOUBLE_EQ(*x[0]->points[2].z, -5.0);
  EXPECT_EQ(x[0]->points[2].label, "TP_1");
  ASSERT_EQ(x[0]->interfacePoints.size(), 1u);
  EXPECT_DOUBLE_EQ(x[0]->interfacePoints[0].y, 2.5);
  ASSERT_EQ(x[0]->requests.size(), 1u);
  EXPECT_EQ(x[0]->requests[0], ExtractRequest::Leakage);
  ASSERT_EQ(f.problems.size(), 1u);  // "well sideways"
  EXPECT_EQ(f.problems[0].line, 11);
  ASSERT_EQ(stepsOf<LoadCommand>(f).size(), 1u);
}

TEST(CommandFile, MissingQuitClosesTheMenuAndIsReported) {
  CommandFile f = parseCommandFile(lines({" well", " discharge", "  1 2 3 .1 W1", " solve 2 1 0 1", " extract",
                                          " flux FL_1", "  0 0", "  1 1", " flux FL_2", "  2 2", "  3 3", " quit",
                                          " quit", " stop"}));
  ASSERT_EQ(f.problems.size(), 2u);
  EXPECT_EQ(f.problems[0].line, 4);
  EXPECT_EQ(f.problems[1].line, 9);
  EXPECT_EQ(allElements(f).wells.size(), 1u);
  EXPECT_EQ(stepsOf<SolveCommand>(f).size(), 1u);
  auto x = stepsOf<ExtractInput>(f);
  ASSERT_EQ(x.size(), 1u);
  ASSERT_EQ(x[0]->fluxLines.size(), 2u);
  EXPECT_EQ(x[0]->fluxLines[1].points.size(), 2u);
}

TEST(CommandFile, EndOfFileInsideAMenuKeepsTheBlock) {
  CommandFile f = parseCommandFile(lines({" well", " head", "  1 2 3 .1 W1"}));
  ASSERT_EQ(f.problems.size(), 1u);
  EXPECT_EQ(f.problems[0].line, 3);
  EXPECT_FALSE(f.stopped);
  EXPECT_EQ(allElements(f).wells.size(), 1u);
}

TEST(CommandFile, StopEndsReading) {
  CommandFile f = parseCommandFile(lines({" time 1", " stop", " frobnicate", " time 2"}));
  EXPECT_TRUE(f.stopped);
  EXPECT_EQ(f.lines.size(), 2u);
  EXPECT_TRUE(f.problems.empty());
  EXPECT_EQ(stepsOf<TimeCommand>(f).size(), 1u);
}

TEST(CommandFile, SolveValuesAreBoundedAndConjunctiveIsRead) {
  CommandFile f = parseCommandFile(lines({" solve 0 -2 0 1", " solve 100000 5000 1 0", " solve conjunctive 5 3 0 1",
                                          " solve 4"}));
  auto s = stepsOf<SolveCommand>(f);
  ASSERT_EQ(s.size(), 4u);
  EXPECT_EQ(s[0]->inner, 1);
  EXPECT_EQ(s[0]->outer, 0);
  EXPECT_EQ(s[1]->inner, 1000);
  EXPECT_EQ(s[1]->outer, 100);
  EXPECT_EQ(s[1]->store, 1);
  EXPECT_EQ(s[1]->full, 0);
  EXPECT_TRUE(s[2]->conjunctive);
  EXPECT_EQ(s[2]->inner, 5);
  EXPECT_EQ(s[3]->inner, 4);
  EXPECT_EQ(s[3]->full, 1);  // missing values take their defaults, reported
  EXPECT_EQ(f.problems.size(), 4u + 3u);
}

TEST(CommandFile, GridTraceAndLeakageBlocksAreRead) {
  CommandFile f = parseCommandFile(lines({" grid", " window 0.00 0.00 5.00 100.00 200.00 5.00", " dotmap off",
                                          " horizontalpoints 40", " plot heads", " go", " save demo", " y",
                                          " minusgrid demo", " surfer demo", " y ", " quit", " trace", " picture off",
                                          " file demo", " y ", " time 365", " step 10", " points",
                                          " 1.0000000E+02 2.0000000E+02 5.0000000E+00 -1.0", " quit",
                                          " well 1.0E+02 2.0E+02 5.00000E+00 8", " go", " quit", " leakage",
                                          " origin 10 20", " solve 1 0 1 0       0.50 ", " check 0 0 10 10 4", " quit",
                                          " stop"}));
  EXPECT_TRUE(f.problems.empty()) << f.problems.front().message;
  auto g = stepsOf<GridInput>(f);
  ASSERT_EQ(g.size(), 1u);
  EXPECT_DOUBLE_EQ(g[0]->settings.window->x2, 100.0);
  EXPECT_DOUBLE_EQ((*g[0]->settings.elevations)[1], 5.0);
  EXPECT_EQ(g[0]->settings.horizontalPoints, 40);
  EXPECT_EQ(g[0]->settings.plot, "heads");
  ASSERT_EQ(g[0]->actions.size(), 4u);
  EXPECT_EQ(g[0]->actions.back().kind, GridAction::Kind::Surfer);
  auto t = stepsOf<TraceInput>(f);
  ASSERT_EQ(t.size(), 1u);
  ASSERT_EQ(t[0]->points.size(), 1u);
  EXPECT_DOUBLE_EQ(t[0]->points[0].direction, -1.0);
  EXPECT_EQ(t[0]->wells.size(), 1u);
  EXPECT_DOUBLE_EQ(*t[0]->time, 365.0);
  auto l = stepsOf<LeakageInput>(f);
  ASSERT_EQ(l.size(), 1u);
  EXPECT_DOUBLE_EQ((*l[0]->solve)[4], 0.5);
  EXPECT_EQ(l[0]->checks.size(), 1u);
}

TEST(CommandFile, OverlongLinesAndBinaryGarbageAreReportedNotFatal) {
  std::string text = " time 1\n" + std::string(kMaxLineLength + 10, 'x') + "\n" + std::string("\x01\x02\xff\0 z", 6) +
                     "\n stop\n";
  CommandFile f = parseCommandFile(text);
  EXPECT_FALSE(f.fatal);
  EXPECT_TRUE(f.stopped);
  ASSERT_EQ(f.problems.size(), 2u);
  EXPECT_EQ(f.problems[0].line, 2);
  EXPECT_EQ(f.problems[1].line, 3);
  EXPECT_LE(f.problems[0].text.size(), 200u);
}

TEST(CommandFile, NumbersWrittenWithoutABlankBetweenThem) {
  // The inspection point: Y and the elevation run together; the one-streamline
  // trace: the elevation and the direction run together.
  CommandFile f = parseCommandFile(lines({" extract", " file _INSPECT.XTR", "1.2345670E+03 4.5678900E+0310.00",
                                          "1.2345670E+03 4.5678900E+03-5.00", "  1 2 TP-1", " quit", " trace",
                                          " points", "  1234.00 5678.00 10.001 ", "  1234.00 5678.00 10.00-1 ",
                                          " quit", " quit", " stop"}));
  EXPECT_TRUE(f.problems.empty()) << f.problems.front().message;
  auto x = stepsOf<ExtractInput>(f);
  ASSERT_EQ(x.size(), 1u);
  ASSERT_EQ(x[0]->points.size(), 3u);
  EXPECT_DOUBLE_EQ(x[0]->points[0].y, 4567.89);
  EXPECT_DOUBLE_EQ(*x[0]->points[0].z, 10.0);
  EXPECT_DOUBLE_EQ(*x[0]->points[1].z, -5.0);
  EXPECT_EQ(x[0]->points[2].label, "TP-1");  // a label is not split
  auto t = stepsOf<TraceInput>(f);
  ASSERT_EQ(t.size(), 1u);
  ASSERT_EQ(t[0]->points.size(), 2u);
  EXPECT_DOUBLE_EQ(t[0]->points[0].z, 10.0);
  EXPECT_DOUBLE_EQ(t[0]->points[0].direction, 1.0);
  EXPECT_DOUBLE_EQ(t[0]->points[1].z, 10.0);
  EXPECT_DOUBLE_EQ(t[0]->points[1].direction, -1.0);
  // Items that are numbers already, or that do not split into two, stay whole.
  auto same = splitGluedNumbers(splitItems("1.5E+03 -2 E+0310 1-2x"));
  EXPECT_EQ(same.size(), 4u);
}
