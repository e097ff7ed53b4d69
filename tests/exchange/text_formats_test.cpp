// The text element files line by line, without a project: numbers read whole, the
// property blocks with their problems, and the record lines of .wl, .tp and .tx.
#include "exchange/text_formats.h"

#include <gtest/gtest.h>

#include "store/schema.h"

namespace tarno::exchange {
namespace {

std::vector<TextLine> Lines(const std::string& text) { return SplitTextLines(text); }

TEST(TextFormatsTest, LinesSplitAtCrLfAndLfAlike) {
  const auto lines = SplitTextLines("a\r\nb\nc");
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0].text, "a");
  EXPECT_EQ(lines[1].text, "b");
  EXPECT_EQ(lines[2].text, "c");
  EXPECT_EQ(lines[2].number, 3);
  EXPECT_TRUE(SplitTextLines("").empty());
  EXPECT_EQ(SplitTextLines("x\r\n").size(), 1u);
}

TEST(TextFormatsTest, NumbersAreReadWholeAndWrittenExactly) {
  EXPECT_EQ(WholeNumber(" 12 "), 12.0);
  EXPECT_EQ(WholeNumber("+.5"), 0.5);
  EXPECT_EQ(WholeNumber("-1e3"), -1000.0);
  for (const char* bad : {"", "12abc", "1,5", "0x10", "inf", "nan", "1e999", "--1", "."})
    EXPECT_FALSE(WholeNumber(bad).has_value()) << bad;
  for (double v : {0.1, 4393400.0, 1e-7, -123.456, 1.0 / 3.0, 1e300, -4.9e-324})
    EXPECT_EQ(WholeNumber(ExactNumber(v)), v) << ExactNumber(v);
  EXPECT_EQ(ExactNumber(-0.0), "0");
  EXPECT_EQ(ExactNumber(600000), "600000") << "plain digits where they are short";
  EXPECT_EQ(ExactNumber(0.002), "0.002");
}

TEST(TextFormatsTest, FieldsTakeOnlyValuesOfTheirType) {
  Row row = Row::Defaults("LinesinkStrings");
  EXPECT_FALSE(SetFieldFromFile(row, "LinesinkStrings", "Width", " 2.5 "));
  EXPECT_EQ(row.Number("Width"), 2.5);
  EXPECT_EQ(*SetFieldFromFile(row, "LinesinkStrings", "Width", "2,5"),
            "\"2,5\" is not a number for Width");
  EXPECT_FALSE(SetFieldFromFile(row, "LinesinkStrings", "chkScenario", "True"));
  EXPECT_TRUE(row.Flag("chkScenario"));
  EXPECT_FALSE(SetFieldFromFile(row, "LinesinkStrings", "Lake", "-1"));
  EXPECT_EQ(row.Integer("Lake"), -1);
  EXPECT_TRUE(SetFieldFromFile(row, "LinesinkStrings", "Routing", "1.5").has_value());
  EXPECT_TRUE(SetFieldFromFile(row, "LinesinkStrings", "Routing", "9999999999").has_value());
  EXPECT_TRUE(SetFieldFromFile(row, "LinesinkStrings", "AutoSWIZC", "40000").has_value())
      << "AutoSWIZC is a 16-bit field";
  EXPECT_FALSE(SetFieldFromFile(row, "LinesinkStrings", "Label", "  Creek  "));
  EXPECT_EQ(row.Text("Label"), "Creek");
}

std::string InhBlock(const std::string& label, bool versionTwo, const std::string& hydCond = "5") {
  std::string b = "Inhomogeneity\n" + label + "\n" + hydCond +
                  "\n90\n-9999\n0.001\n0.3\n255\nTrue\nTrue\nFalse\nFalse\nFalse\nKtag\n__NONE__\n";
  if (versionTwo) b += "4\n0.002\nTrue\nFalse\n";
  return b + "0 0\n100 0\n100 100\nend\n";
}

TEST(PropertyBlockReaderTest, AnInhWithoutVersionTwoLeavesTheScenarioFieldsAtTheirDefaults) {
  PropertyBlockReader old(BlockFile::Inh, Lines(InhBlock("A", false)));
  EXPECT_FALSE(old.VersionTwo());
  BlockResult r = old.Next();
  ASSERT_EQ(r.status, BlockStatus::Block) << r.problem.reason;
  const Row defaults = Row::Defaults("Inhomogeneities");
  for (const char* f :
       {"DefaultHydCond", "DefaultRecharge", "chkScenarioHydCond", "chkScenarioRecharge"})
    EXPECT_EQ(r.block.element.row.Get(f), defaults.Get(f)) << f;
  EXPECT_EQ(r.block.element.row.Text("ScenHydCond"), "Ktag");
  EXPECT_EQ(r.block.element.vertices.size(), 3u);
  EXPECT_EQ(old.Next().status, BlockStatus::End);

  PropertyBlockReader two(BlockFile::Inh, Lines("version 2\n" + InhBlock("B", true)));
  EXPECT_TRUE(two.VersionTwo());
  r = two.Next();
  ASSERT_EQ(r.status, BlockStatus::Block);
  EXPECT_EQ(r.block.element.row.Number("DefaultHydCond"), 4.0);
  EXPECT_TRUE(r.block.element.row.Flag("chkScenarioHydCond"));
}

TEST(PropertyBlockReaderTest, ABadValueIsReportedWithItsLineAndTheNextBlockStillReads) {
  PropertyBlockReader reader(
      BlockFile::Inh, Lines("version 2\n" + InhBlock("A", true, "5x") + InhBlock("B", true)));
  BlockResult r = reader.Next();
  ASSERT_EQ(r.status, BlockStatus::Problem);
  EXPECT_EQ(r.problem.line, 4);
  EXPECT_EQ(r.problem.reason, "\"5x\" is not a number for HydCond");
  r = reader.Next();
  ASSERT_EQ(r.status, BlockStatus::Block);
  EXPECT_EQ(r.block.element.Label(), "B");
}

TEST(PropertyBlockReaderTest, ShortBlocksMissingEndsAndBadVerticesAreProblems) {
  {
    PropertyBlockReader r(BlockFile::Inh, Lines("Inhomogeneity\nA\n5\n"));
    EXPECT_EQ(r.Next().status, BlockStatus::Problem);
    EXPECT_EQ(r.Next().status, BlockStatus::End);
  }
  {
    std::string b = InhBlock("A", false);
    b.erase(b.rfind("end"));  // the block runs to the end of the file
    PropertyBlockReader r(BlockFile::Inh, Lines(b));
    const BlockResult p = r.Next();
    EXPECT_EQ(p.status, BlockStatus::Problem);
    EXPECT_NE(p.problem.reason.find("has no \"end\""), std::string::npos);
  }
  {
    std::string b = InhBlock("A", false);
    b.replace(b.find("100 0"), 5, "100;0");
    PropertyBlockReader r(BlockFile::Inh, Lines(b + InhBlock("B", false)));
    const BlockResult p = r.Next();
    ASSERT_EQ(p.status, BlockStatus::Problem);
    EXPECT_EQ(p.problem.line, 17);
    EXPECT_EQ(r.Next().block.element.Label(), "B");
  }
  {
    // Two vertices make no polygon.
    std::string b = InhBlock("A", false);
    b.replace(b.find("100 100\n"), 8, "");
    PropertyBlockReader r(BlockFile::Inh, Lines(b));
    EXPECT_EQ(r.Next().status, BlockStatus::Problem);
  }
}

TEST(PropertyBlockReaderTest, AFileOfAnotherFormatIsForeignAtItsFirstBlock) {
  PropertyBlockReader r(BlockFile::Inh, Lines("version 2\nnearfield\nA\n"));
  EXPECT_EQ(r.Next().status, BlockStatus::Foreign);
  EXPECT_EQ(r.Next().status, BlockStatus::End);
  PropertyBlockReader lss(BlockFile::Lss, Lines(InhBlock("A", true)));
  EXPECT_EQ(lss.Next().status, BlockStatus::Foreign);
}

TEST(PropertyBlockReaderTest, LssBlocksCarryTheirRoutingLinkByBlockAndSeq) {
  Element s = NewElement(ElementKind::Linesink, {{0, 0, 0, 1, 2}, {0, 0, 0, 3, 4}});
  s.row.Set("Label", "Creek");
  s.row.Set("Routing", std::int64_t{1});
  std::ostringstream out;
  WriteVersionLine(out);
  Element d = NewElement(ElementKind::Domain, {{0, 0, 0, 0, 0}, {0, 0, 0, 9, 0}, {0, 0, 0, 9, 9}});
  d.row.Set("Label", "Unit");
  d.row.Set("NearFieldHU", true);
  WriteBoundaryBlock(out, BlockKind::HydrologicUnit, d);
  WriteLinesinkBlock(out, kNearFieldHeader, s, 2, 200);
  WriteLinesinkBlock(out, kNewHeader, s, 0, 0);
  PropertyBlockReader r(BlockFile::Lss, Lines(out.str()));
  BlockResult b = r.Next();
  ASSERT_EQ(b.status, BlockStatus::Block);
  EXPECT_EQ(b.block.kind, BlockKind::HydrologicUnit);
  EXPECT_TRUE(b.block.element.row.Flag("NearFieldHU"));
  b = r.Next();
  ASSERT_EQ(b.status, BlockStatus::Block) << b.problem.reason;
  EXPECT_EQ(b.block.kind, BlockKind::Linesink);
  EXPECT_EQ(b.block.routeBlock, 2);
  EXPECT_EQ(b.block.routeSeq, 200);
  EXPECT_EQ(b.block.element.row.Integer("RoutePID"), 0) << "keys of the file's project stay out";
  EXPECT_EQ(r.StringBlocks(), 1);
  b = r.Next();
  ASSERT_EQ(b.status, BlockStatus::Block);
  EXPECT_EQ(b.block.routeBlock, 0);
  EXPECT_EQ(r.StringBlocks(), 2);
}

TEST(RecordLinesTest, TheDelimiterIsACommaThenABlank) {
  EXPECT_EQ(DetectDelimiter("1 2,3"), ',');
  EXPECT_EQ(DetectDelimiter("1\t2"), ' ');
  EXPECT_EQ(DetectDelimiter("12"), 0);
  EXPECT_TRUE(IsStopLine("end", ','));
  EXPECT_TRUE(IsStopLine("  Exit  ", ' '));
  EXPECT_FALSE(IsStopLine("END", ' ')) << "only the words as the file format lists them";
  EXPECT_FALSE(IsStopLine("1,2,3,4,Endicott", ','));
  EXPECT_TRUE(IsCommentLine("  * a note"));
}

TEST(RecordLinesTest, WellLinesReadWithEitherDelimiterAndShortOrBadLinesAreRefused) {
  auto w = ParseWellLine("100, 200, 500, 0.3, PW1, 120, 90", ',');
  ASSERT_TRUE(w);
  EXPECT_EQ(w->label, "PW1");
  EXPECT_EQ(w->top, 120.0);
  w = ParseWellLine("100 200\t500 0.3", ' ');
  ASSERT_TRUE(w);
  EXPECT_EQ(w->radius, 0.3);
  EXPECT_FALSE(w->top.has_value());
  EXPECT_FALSE(ParseWellLine("100,200,500", ','));
  EXPECT_FALSE(ParseWellLine("100,200x,500,0.3", ','));
  EXPECT_FALSE(ParseWellLine("100,200,500,0.3,PW1,top,90", ','));
  EXPECT_FALSE(ParseWellLine("1,2,3,4,5,6,7,8", ','));

  // A well without a label keeps the places of its screen.
  const auto unnamed = ParseWellLine(WellLine({1, 2, 3, 4, "", 130.0, 90.0}), ',');
  ASSERT_TRUE(unnamed);
  EXPECT_EQ(unnamed->label, "");
  EXPECT_EQ(unnamed->top, 130.0);
  EXPECT_EQ(unnamed->bottom, 90.0);

  WellRecord r{457300.0, 4393400.0, 2500.0, 0.3, "CityWell1", 135.0, 100.0};
  EXPECT_EQ(WellLine(r),
            "4.573000000E+05 ,4.393400000E+06 ,2.50000E+03 ,3.00000E-01,CityWell1,135,100");
  const auto back = ParseWellLine(WellLine(r), ',');
  ASSERT_TRUE(back);
  EXPECT_EQ(back->x, r.x);
  EXPECT_EQ(back->y, r.y);
  EXPECT_EQ(back->bottom, 100.0);
}

TEST(RecordLinesTest, TestPointTypesInAnyCaseLabelsCleanedAndTheOlderForm) {
  auto t = ParseTestPointLine("10,20,117.5,0 , piezometer , MW 1", ',');
  ASSERT_TRUE(t);
  EXPECT_EQ(t->type, "Piezometer");
  EXPECT_EQ(t->label, "MW1");
  t = ParseTestPointLine("10 20 0 1150 GAUGE Kelso Gage", ' ');
  ASSERT_TRUE(t);
  EXPECT_EQ(t->type, "Gage");
  EXPECT_EQ(t->obsStreamFlow, 1150.0);
  EXPECT_EQ(t->label, "KelsoGage");
  t = ParseTestPointLine("10 20 118 0 lake stage L1", ' ');
  ASSERT_TRUE(t);
  EXPECT_EQ(t->type, "Lake Stage");
  EXPECT_EQ(t->label, "L1");
  t = ParseTestPointLine("10 20 116.4 MW-3", ' ');
  ASSERT_TRUE(t);
  EXPECT_TRUE(t->olderForm);
  EXPECT_EQ(t->type, "Piezometer");
  EXPECT_EQ(t->obsHead, 116.4);
  EXPECT_EQ(t->label, "MW-3");
  EXPECT_FALSE(ParseTestPointLine("10,20,117.5", ','));
  EXPECT_FALSE(ParseTestPointLine("10,20,117.5,0,Gage", ',')) << "a full record needs its label";
  EXPECT_FALSE(ParseTestPointLine("10,20,abc,MW1", ','));

  TestPointRecord r{1.5, 2.5, 3, 4, "Lake Stage", "L 1,x"};
  EXPECT_EQ(TestPointLine(r), "1.5,2.5,3,4 , Lake Stage , L1x");
}

TEST(RecordLinesTest, TextLabelsTakeTheRestOfTheLineAsTheirText) {
  auto t = ParseTextLabelLine("4.57250E+05 4.39313E+06 1 Wabash  Valley ");
  ASSERT_TRUE(t);
  EXPECT_EQ(t->x, 457250.0);
  EXPECT_EQ(t->labelType, 1);
  EXPECT_EQ(t->text, "Wabash  Valley");
  EXPECT_TRUE(ParseTextLabelLine("1,2,0,a, b"));
  EXPECT_EQ(ParseTextLabelLine("1,2,0,a, b")->text, "a, b");
  EXPECT_FALSE(ParseTextLabelLine("1 2 0"));
  EXPECT_FALSE(ParseTextLabelLine("1 2 3 text")) << "LabelType is 0 or 1";
  EXPECT_FALSE(ParseTextLabelLine("1 y 0 text"));
  EXPECT_EQ(TextLabelLine({457250.0, 4393125.0, 1, "Wabash Valley"}),
            "4.57250E+05 4.39313E+06 1 Wabash Valley");
}

}  // namespace
}  // namespace tarno::exchange
