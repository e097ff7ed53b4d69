// The lake's dialog: its two checks, the stage table's 8.3 name, the units, the
// fields against the columns of the row, and the round trip of a stored lake.
#include <gtest/gtest.h>

#include "area_dialog_fixture.h"
#include "support/scripted_ui.h"
#include "elements/lake_dialog.h"

namespace tarno::testing {
namespace {

using Field = Lake::Field;

class LakeDialogTest : public AreaDialogTest {
 protected:
  Element Pond(const std::string& label) {
    return Add(ElementKind::Lake, label, Square(0, 0, 50), [](Row& r) {
      r.Set("InterriorConductivity", 100.0);
      r.Set("AddedRechargeRate", 0.002);
      r.Set("Evapotranspiration", 0.003);
      r.Set("Resistance", 12.0);
      r.Set("Width", 4.5);
      r.Set("StageTableFilename", "pond.stg");
      r.Set("Color", std::int64_t{0xff0000});
    });
  }
  Lake Open(const Element& e) {
    Lake d;
    d.LoadElement(db_, *Load(db_, ElementKind::Lake, e.key));
    return d;
  }
  bool Ok(Lake& d, ScriptedUserInterface& ui) {
    const bool ok = d.OK(db_, ui);
    ui.Verify();
    return ok;
  }
  const std::vector<std::string> kFileLine = {
      "Filename must be no more than 12 characters including the dos extension, with no spaces"};
};

TEST_F(LakeDialogTest, FieldsShowTheirColumns) {
  Lake d = Open(Pond("L1"));
  EXPECT_EQ(d.tbLabel, "L1");
  EXPECT_EQ(d.InterriorConductivity(), "100");
  EXPECT_EQ(d.Evapotranspiration(), "0.003");
  EXPECT_EQ(d.LakeWidth(), "4.5");
  EXPECT_EQ(d.AddedRechargeRate(), "0.002");
  EXPECT_EQ(d.Resistance(), "12");
  EXPECT_EQ(std::string(Lake::kPrompts[Lake::kResistance]), "Lambda Parameter:");
  EXPECT_EQ(d.StageTableFilename(), "pond.stg");
  EXPECT_EQ(d.color, 0xff0000u);
}

TEST_F(LakeDialogTest, UnchangedDialogWritesBackWhatItRead) {
  Element e = Pond("L1");
  const Element before = *Load(db_, ElementKind::Lake, e.key);
  Lake d = Open(e);
  ScriptedUserInterface ui;
  EXPECT_TRUE(Ok(d, ui));
  EXPECT_EQ(d.Result, 1);
  EXPECT_FALSE(d.FormChanged());
  Element after = before;
  d.StoreElement(after);
  EXPECT_EQ(after, before);
}

TEST_F(LakeDialogTest, EditsReachTheirColumns) {
  Element e = Pond("L1");
  Lake d = Open(e);
  d.tbData = {"50", "0.004", "6", "0.001", "20", "lake2.stg"};
  d.tbLabel = "L2";
  d.color = 0x00ff00;
  EXPECT_TRUE(d.FormChanged());
  d.StoreElement(e);
  EXPECT_EQ(e.row.Number("InterriorConductivity"), 50);
  EXPECT_EQ(e.row.Number("Evapotranspiration"), 0.004);
  EXPECT_EQ(e.row.Number("Width"), 6);
  EXPECT_EQ(e.row.Number("AddedRechargeRate"), 0.001);
  EXPECT_EQ(e.row.Number("Resistance"), 20);
  EXPECT_EQ(e.row.Text("StageTableFilename"), "lake2.stg");
  EXPECT_EQ(e.row.Text("Label"), "L2");
  EXPECT_EQ(e.row.Integer("Color"), 0x00ff00);
  Update(db_, e);
  EXPECT_EQ(Load(db_, ElementKind::Lake, e.key)->row, e.row);
}

// A lake without a stage table shows an empty field and is stored with the
// project's "no value", which the file requires and the solver reads as no table.
TEST_F(LakeDialogTest, ANewLakeWithoutAStageTableCanBeStored) {
  Element e = LakeDefaults(db_);
  e.vertices = Square(0, 0, 100);
  Lake d;
  d.LoadElement(db_, e);
  EXPECT_EQ(d.tbData[Lake::kStageTable], "");
  d.tbLabel = "Pond";
  d.StoreElement(e);
  EXPECT_EQ(e.row.Text("StageTableFilename"), "__NONE__");
  Insert(db_, e);
  Lake again = Open(*Load(db_, ElementKind::Lake, e.key));
  EXPECT_EQ(again.tbData[Lake::kStageTable], "");
}

TEST_F(LakeDialogTest, TheLabelIsCheckedFirst) {
  Lake d = Open(Pond("L1"));
  d.tbLabel = "";
  d.tbData[Lake::kStageTable] = "a name with blanks";
  ScriptedUserInterface ui;
  ui.ExpectMessage("Data Missing", {"Label must be specified. "}).WithIcon(Icon::Exclamation);
  EXPECT_FALSE(Ok(d, ui));
  EXPECT_EQ(d.failedField, Field::Label);
  EXPECT_EQ(d.Result, 2);
}

TEST_F(LakeDialogTest, TheStageTableIsAnEightDotThreeName) {
  Lake d = Open(Pond("L1"));
  for (const char* bad : {"ABCDEFGH.STGX", "a b.stg", " ", "stage.stg "}) {
    SCOPED_TRACE(bad);
    d.tbData[Lake::kStageTable] = bad;
    ScriptedUserInterface ui;
    ui.ExpectMessage("Bad Entry", kFileLine).WithIcon(Icon::Exclamation);
    EXPECT_FALSE(Ok(d, ui));
    EXPECT_EQ(d.failedField, Field::StageTable);
  }
  for (const char* good : {"ABCDEFGH.STG", "", "s.t"}) {
    SCOPED_TRACE(good);
    d.tbData[Lake::kStageTable] = good;
    ScriptedUserInterface ui;
    EXPECT_TRUE(Ok(d, ui));
  }
}

TEST_F(LakeDialogTest, TwoLakesMayShareALabel) {
  // The lake's dialog has no test of a label in use.
  Pond("Same");
  Lake d;
  d.LoadElement(db_, LakeDefaults(db_));
  d.tbLabel = "Same";
  ScriptedUserInterface ui;
  EXPECT_TRUE(Ok(d, ui));
}

TEST_F(LakeDialogTest, DefaultsAndUnits) {
  Element e = LakeDefaults(db_);
  EXPECT_EQ(e.kind, ElementKind::Lake);
  Lake d;
  d.LoadElement(db_, e);
  EXPECT_EQ(d.tbData, (std::array<std::string, 6>{"0", "0", "0", "0", "0", ""}));
  EXPECT_EQ(d.tbLabel, "");
  EXPECT_EQ(d.Unit(Lake::kInterriorConductivity), "m/day");
  EXPECT_EQ(d.Unit(Lake::kWidth), "meters");
  EXPECT_EQ(d.Unit(Lake::kStageTable), "");
  MakeProject(false);
  d.LoadElement(db_, LakeDefaults(db_));
  EXPECT_EQ(d.Unit(Lake::kEvapotranspiration), "feet/day");
  EXPECT_EQ(d.Unit(Lake::kResistance), "feet");
}

}  // namespace
}  // namespace tarno::testing
