// Scenario tags and the scenarios dialog on scratch projects: the cleaning of tags,
// the tables the dialog fills, Update and the defaults, the dialog through the
// scripted port.
#include <gtest/gtest.h>

#include <string>

#include "calibration/scenario_dialog.h"
#include "calibration/scenario_tags.h"
#include "elements/scenario_fields.h"
#include "support/project_fixture.h"
#include "support/scripted_ui.h"

namespace tarno {
namespace {

class ScenarioTest : public testing::ScratchProject {
 protected:
  // A line-sink string with the resistance `r` (default `d`) under `tag`.
  Element Stream(const std::string& label, const std::string& tag, double r, double d = 0,
                 bool included = true) {
    return Add(ElementKind::Linesink, label, At({{0, 0}, {10, 0}}), [&](Row& row) {
      row.Set("chkScenario", included);
      row.Set("ScenResistance", tag);
      row.Set("Resistance", r);
      row.Set("DefaultResistance", d);
    });
  }
  // An inhomogeneity with conductivity and recharge under their tags ("" leaves a
  // switch cleared).
  Element Inho(const std::string& label, const std::string& kTag, double k, const std::string& nTag,
               double n) {
    return Add(ElementKind::Inhomogeneity, label, At({{0, 0}, {10, 0}, {10, 10}}), [&](Row& row) {
      row.Set("chkScenarioHydCond", !kTag.empty());
      row.Set("ScenHydCond", kTag.empty() ? std::string(kNoScenarioTag) : kTag);
      row.Set("HydCond", k);
      row.Set("DefaultHydCond", k * 2);
      row.Set("chkScenarioRecharge", !nTag.empty());
      row.Set("ScenRecharge", nTag.empty() ? std::string(kNoScenarioTag) : nTag);
      row.Set("Recharge", n);
      row.Set("DefaultRecharge", n * 2);
    });
  }
  void TagAquifer(const std::string& kTag, double k, const std::string& baseTag, double base) {
    Statement st = db_.PrepareRaw(
        "update Model set chkScenarioHydCond = ?1, ScenHydCond = ?2, AQHydCond = ?3, "
        "DefaultAQHydCond = ?4, chkScenarioBaseElev = ?5, ScenBaseElev = ?6, AQBase = ?7, "
        "DefaultAQBase = ?8");
    st.Bind(1, !kTag.empty()).Bind(2, kTag.empty() ? kNoScenarioTag : kTag.c_str()).Bind(3, k);
    st.Bind(4, k / 10).Bind(5, !baseTag.empty());
    st.Bind(6, baseTag.empty() ? kNoScenarioTag : baseTag.c_str()).Bind(7, base).Bind(8, base - 1);
    st.Run();
  }
  double Number(const std::string& sql) {
    Statement st = db_.PrepareRaw(sql);
    EXPECT_TRUE(st.Step()) << sql;
    return st.GetDouble(0);
  }
  std::string Text(const std::string& sql) {
    Statement st = db_.PrepareRaw(sql);
    EXPECT_TRUE(st.Step()) << sql;
    return st.GetText(0);
  }
  double Resistance(const Element& e) {
    return Number("select Resistance from LinesinkStrings where PID = " + std::to_string(e.key));
  }
  std::string Tag(const char* table, const char* field, const Element& e) {
    return Text(std::string("select ") + field + " from " + table +
                " where PID = " + std::to_string(e.key));
  }
};

// --- Tags --------------------------------------------------------------------

TEST(ScenarioTags, TheDialogsRuleRefusesBlanksSeparatorsLengthAndNone) {
  EXPECT_FALSE(ScenarioTagRefusal("kriver"));
  EXPECT_FALSE(ScenarioTagRefusal("abcdefghijkl")) << "exactly 12 characters pass";
  EXPECT_FALSE(ScenarioTagRefusal("  k1  ")) << "blanks around the tag are trimmed";
  for (const char* bad : {"abcdefghijklm", "", "   ", "__NONE__", "k 1", "k-1", "k_1", "k,1"}) {
    const auto lines = ScenarioTagRefusal(bad);
    ASSERT_TRUE(lines) << "\"" << bad << "\" must be refused";
    EXPECT_EQ(*lines, (std::vector<std::string>{
                          "You must specify a valid scenario tag.",
                          "Scenario tags may not include spaces or the characters - , or _.",
                          "Scenario tags may also not be '__NONE__'."}));
  }
}

TEST(ScenarioTags, TextRulesOfTheCheck) {
  EXPECT_EQ(RemoveTagBlanks("k riv er"), "kriver");
  EXPECT_EQ(RemoveTagBlanks("   "), "blank");
  EXPECT_EQ(RemoveBadScenChar("a,b-c"), "ab_c");
  EXPECT_EQ(RemoveBadScenChar("plain"), "plain");
  EXPECT_EQ(CroppedTag("abcdefghijklmnop", 1), "abcdefghij~1");
  EXPECT_EQ(CroppedTag("abcdefghijklmnop", 10), "abcdefghi~10");
  EXPECT_EQ(CroppedTag("  abcdefghijklmnop", 2), "abcdefghij~2");
}

TEST_F(ScenarioTest, CleaningRemovesBlanksCropsLongTagsAndReplacesSeparators) {
  const Element blank = Stream("S1", "riv er", 1);
  const Element longA = Stream("S2", "averyverylongtag", 1);
  const Element longB = Stream("S3", "averyverylongtag", 1);
  const Element minus = Stream("S4", "a-b,c", 1);
  const Element off = Stream("S5", "not included", 1, 0, false);
  const Element commas = Stream("S6", ",,", 1);
  const Element inho = Inho("I1", "k-zone", 1, "", 0);
  TagAquifer("aq,k", 5, "", 0);
  ScriptedUserInterface ui;
  ui.ExpectMessage("DB Integrity Check", {"Scenarios were found with names that were invalid.",
                                          "Spaces in Scenario names were removed."})
      .WithIcon(Icon::Information);
  ui.ExpectMessage("DB Integrity Check",
                   {"Scenarios were found with names that were invalid.",
                    "Scenario Names with more than 12 characters were cropped."})
      .WithIcon(Icon::Information);
  const TagCleaning done = CleanScenarioTags(db_, ui);
  ui.Verify();
  EXPECT_EQ(Tag("LinesinkStrings", "ScenResistance", blank), "river");
  EXPECT_EQ(Tag("LinesinkStrings", "ScenResistance", longA), "averyveryl~1");
  EXPECT_EQ(Tag("LinesinkStrings", "ScenResistance", longB), "averyveryl~2")
      << "the candidate of a taken name counts on";
  EXPECT_EQ(Tag("LinesinkStrings", "ScenResistance", minus), "a_bc");
  EXPECT_EQ(Tag("LinesinkStrings", "ScenResistance", off), "not included")
      << "a tag whose switch is cleared is left alone";
  EXPECT_EQ(Tag("LinesinkStrings", "ScenResistance", commas), "blank")
      << "the project keeps no empty tag";
  EXPECT_EQ(Tag("Inhomogeneities", "ScenHydCond", inho), "k_zone");
  EXPECT_EQ(Tag("Inhomogeneities", "ScenRecharge", inho), kNoScenarioTag);
  EXPECT_EQ(Text("select ScenHydCond from Model"), "aqk");
  EXPECT_EQ(Text("select ScenBaseElev from Model"), kNoScenarioTag);
  EXPECT_EQ(done.blanksRemoved, 1);
  EXPECT_EQ(done.cropped, 2);
  EXPECT_EQ(done.separatorsCleaned, 4);

  // Clean tags stay as they are, without a message.
  ScriptedUserInterface quiet;
  EXPECT_EQ(CleanScenarioTags(db_, quiet).Total(), 0);
  quiet.Verify();
  EXPECT_TRUE(quiet.Messages().empty());
}

// --- The dialog's tables -------------------------------------------------------

TEST_F(ScenarioTest, OpeningListsEachTagOnceWithTheFirstRowsValues) {
  Stream("S1", "riv", 3.0, 1.0);
  Stream("S2", "riv", 7.0, 2.0);  // same tag, other values: the first row's are shown
  Stream("S3", "drain", 0.5, 0.25);
  Stream("S4", "off", 9.0, 0.0, false);    // switch cleared: not listed
  Stream("S5", kNoScenarioTag, 4.0, 0.0);  // "__NONE__" is passed over
  Inho("I1", "kz", 10, "rz", 0.001);
  Inho("I2", "rz", 20, "kz", 0.002);  // rz first borne by I1's recharge
  TagAquifer("K", 25, "B", -10);

  Scenarios d;
  d.init(db_);
  EXPECT_EQ(d.LSDataTable, (std::vector<ScenarioRow>{{"riv", 3.0, 1.0}, {"drain", 0.5, 0.25}}));
  EXPECT_EQ(d.InDataTable, (std::vector<ScenarioRow>{{"kz", 10, 20}, {"rz", 0.001, 0.002}}));
  EXPECT_EQ(d.AqDataTable, (std::vector<ScenarioRow>{{"K", 25, 2.5}, {"B", -10, -11}}));
  EXPECT_FALSE(d.Invalidate);
  // The working tables in the project hold the same rows.
  EXPECT_EQ(LoadWorkingTable(db_, ScenarioTable::Linesink), d.LSDataTable);
  EXPECT_EQ(LoadWorkingTable(db_, ScenarioTable::Inhomogeneity), d.InDataTable);
  EXPECT_EQ(LoadWorkingTable(db_, ScenarioTable::Aquifer), d.AqDataTable);

  // Opening again rebuilds them rather than adding to them.
  Scenarios again;
  again.init(db_);
  EXPECT_EQ(LoadWorkingTable(db_, ScenarioTable::Linesink).size(), 2u);
}

TEST_F(ScenarioTest, AProjectWithoutTagsOpensWithEmptyTables) {
  Stream("S1", kNoScenarioTag, 1.0);
  Scenarios d;
  d.init(db_);
  EXPECT_TRUE(d.AqDataTable.empty());
  EXPECT_TRUE(d.LSDataTable.empty());
  EXPECT_TRUE(d.InDataTable.empty());
  d.cmdUpdate_Click(db_);
  EXPECT_FALSE(d.Invalidate);
}

TEST_F(ScenarioTest, UpdateBringsEveryTaggedElementToTheRowsValues) {
  const Element s1 = Stream("S1", "riv", 3.0, 1.0);
  const Element s2 = Stream("S2", "RIV", 7.0, 2.0);  // tags compare without regard to case
  const Element other = Stream("S3", "drain", 0.5);
  const Element off = Stream("S4", "riv", 9.0, 0.0, false);
  Scenarios d;
  d.init(db_);
  ASSERT_EQ(d.LSDataTable.size(), 2u);
  ASSERT_TRUE(d.SetCell(ScenarioTable::Linesink, 0, kCurrentColumn, " 4.5 "));
  ASSERT_TRUE(d.SetCell(ScenarioTable::Linesink, 0, kDefaultColumn, "1E+01"));
  d.cmdUpdate_Click(db_);
  EXPECT_TRUE(d.Invalidate);
  EXPECT_EQ(Resistance(s1), 4.5);
  EXPECT_EQ(Resistance(s2), 4.5);
  EXPECT_EQ(
      Number("select DefaultResistance from LinesinkStrings where PID = " + std::to_string(s2.key)),
      10.0);
  EXPECT_EQ(Resistance(other), 0.5);
  EXPECT_EQ(Resistance(off), 9.0) << "an element not included in scenarios keeps its value";
  EXPECT_EQ(LoadWorkingTable(db_, ScenarioTable::Linesink)[0], (ScenarioRow{"riv", 4.5, 10.0}));
}

TEST_F(ScenarioTest, UpdateReachesTheAquiferAndBothInhomogeneityFields) {
  const Element i1 = Inho("I1", "kz", 10, "", 0);
  const Element i2 = Inho("I2", "", 5, "kz", 0.001);  // the same tag on the recharge
  TagAquifer("K", 25, "B", -10);
  Scenarios d;
  d.init(db_);
  ASSERT_EQ(d.InDataTable.size(), 1u);
  ASSERT_TRUE(d.SetCell(ScenarioTable::Inhomogeneity, 0, kCurrentColumn, "12"));
  ASSERT_EQ(d.AqDataTable.size(), 2u);
  ASSERT_TRUE(d.SetCell(ScenarioTable::Aquifer, 1, kCurrentColumn, "-20"));
  d.cmdUpdate_Click(db_);
  EXPECT_TRUE(d.Invalidate);
  const std::string pid1 = std::to_string(i1.key), pid2 = std::to_string(i2.key);
  EXPECT_EQ(Number("select HydCond from Inhomogeneities where PID = " + pid1), 12);
  EXPECT_EQ(Number("select Recharge from Inhomogeneities where PID = " + pid2), 12);
  EXPECT_EQ(Number("select HydCond from Inhomogeneities where PID = " + pid2), 5)
      << "the untagged conductivity of I2 stays";
  EXPECT_EQ(Number("select AQBase from Model"), -20);
  EXPECT_EQ(Number("select AQHydCond from Model"), 25);
}

TEST_F(ScenarioTest, UpdateWithoutAChangedCurrentValueLeavesTheSolution) {
  const Element s = Stream("S1", "riv", 3.0, 1.0);
  Scenarios d;
  d.init(db_);
  ASSERT_TRUE(d.SetCell(ScenarioTable::Linesink, 0, kDefaultColumn, "8"));
  d.cmdUpdate_Click(db_);
  EXPECT_FALSE(d.Invalidate) << "a default alone is not read by the solver";
  EXPECT_EQ(
      Number("select DefaultResistance from LinesinkStrings where PID = " + std::to_string(s.key)),
      8.0);
}

TEST_F(ScenarioTest, NonNumericCellsAreRefused) {
  Stream("S1", "riv", 3.0, 1.0);
  Scenarios d;
  d.init(db_);
  for (const char* bad : {"abc", "", "  ", "3x", "1e999"}) {
    EXPECT_FALSE(d.SetCell(ScenarioTable::Linesink, 0, kCurrentColumn, bad)) << bad;
  }
  EXPECT_FALSE(d.SetCell(ScenarioTable::Linesink, 0, 0, "5")) << "the tag column is no number";
  EXPECT_FALSE(d.SetCell(ScenarioTable::Linesink, 1, kCurrentColumn, "5")) << "no such row";
  EXPECT_EQ(d.LSDataTable[0], (ScenarioRow{"riv", 3.0, 1.0}));
}

TEST_F(ScenarioTest, DefaultsCopyOneColumnOntoTheOtherInAllTables) {
  const Element s = Stream("S1", "riv", 3.0, 1.0);
  Inho("I1", "kz", 10, "", 0);
  TagAquifer("K", 25, "", 0);
  Scenarios d;
  d.init(db_);
  d.cmdDefault(0);  // "Replace all Current Values with Default"
  EXPECT_EQ(d.LSDataTable[0], (ScenarioRow{"riv", 1.0, 1.0}));
  EXPECT_EQ(d.InDataTable[0], (ScenarioRow{"kz", 20, 20}));
  EXPECT_EQ(d.AqDataTable[0], (ScenarioRow{"K", 2.5, 2.5}));
  EXPECT_EQ(Resistance(s), 3.0) << "the model changes only on Update";
  d.cmdUpdate_Click(db_);
  EXPECT_EQ(Resistance(s), 1.0);
  EXPECT_EQ(Number("select AQHydCond from Model"), 2.5);

  ASSERT_TRUE(d.SetCell(ScenarioTable::Linesink, 0, kCurrentColumn, "6"));
  d.cmdDefault(1);  // "Replace all Default Values with Current"
  EXPECT_EQ(d.LSDataTable[0], (ScenarioRow{"riv", 6, 6}));
}

// --- Through the port ----------------------------------------------------------

TEST_F(ScenarioTest, TheDialogShownByTheMenuCarriesAValueToTheModel) {
  const Element s1 = Stream("S1", "riv", 3.0, 1.0);
  const Element s2 = Stream("S2", "riv", 7.0, 2.0);
  db_.Close();
  ScriptedUserInterface ui;
  ui.ExpectModal<Scenarios>("Scenarios", [](Scenarios& d) {
    EXPECT_EQ(d.LSDataTable, (std::vector<ScenarioRow>{{"riv", 3.0, 1.0}}));
    EXPECT_FALSE(d.SetCell(ScenarioTable::Linesink, 0, kCurrentColumn, "fast"));
    EXPECT_TRUE(d.SetCell(ScenarioTable::Linesink, 0, kCurrentColumn, "0.25"));
    d.cmdUpdate_Click();
    d.cmdDone();
  });
  EXPECT_TRUE(ImplementScenarios(ui, ProjectPath().string()));
  ui.Verify();
  db_ = Database::Open(ProjectPath());
  EXPECT_EQ(Resistance(s1), 0.25);
  EXPECT_EQ(Resistance(s2), 0.25);
}

TEST_F(ScenarioTest, DoneWithoutUpdateChangesNothing) {
  const Element s1 = Stream("S1", "riv", 3.0, 1.0);
  db_.Close();
  ScriptedUserInterface ui;
  ui.ExpectModal<Scenarios>("Scenarios", [](Scenarios& d) {
    EXPECT_TRUE(d.SetCell(ScenarioTable::Linesink, 0, kCurrentColumn, "5"));
    d.cmdDone();
  });
  EXPECT_FALSE(ImplementScenarios(ui, ProjectPath().string()));
  ui.Verify();
  db_ = Database::Open(ProjectPath());
  EXPECT_EQ(Resistance(s1), 3.0);
}

}  // namespace
}  // namespace tarno
