// The inhomogeneity's dialog: the rules of its boxes with the model's values they
// show, its checks with their texts, tabs and fields, the scenario tags, the colour,
// the round trip of a stored inhomogeneity and the defaults of a new one; and the
// local base that inhomogeneities set.
#include <gtest/gtest.h>

#include <algorithm>

#include "area_dialog_fixture.h"
#include "core/error.h"
#include "support/scripted_ui.h"
#include "elements/geometry.h"
#include "elements/inhomogeneity_dialog.h"

namespace tarno::testing {
namespace {

using Field = Inhomogeneity::Field;

class InhomogeneityDialogTest : public AreaDialogTest {
 protected:
  void SetUp() override {
    AreaDialogTest::SetUp();
    db_.ExecuteRaw("update Model set AQBase = -20, AQThickness = '35', AQHydCond = 12.5, "
                   "AQPorosity = 0.3");
  }
  Inhomogeneity Open(const Element& e) {
    Inhomogeneity d;
    auto stored = Load(db_, ElementKind::Inhomogeneity, e.key);
    EXPECT_TRUE(stored.has_value());
    d.LoadElement(db_, *stored);
    return d;
  }
  // An inhomogeneity with every box checked and values of its own.
  Element Zone(const std::string& label) {
    return Add(ElementKind::Inhomogeneity, label, Square(0, 0, 100), [](Row& r) {
      r.Set("HydCond", 3.0);
      r.Set("Recharge", 0.001);
      r.Set("Porosity", 0.25);
      r.Set("BottomElevation", -40.0);
      r.Set("AverageHead", 8.0);
      r.Set("Color", std::int64_t{255});
      for (const char* f : {"ChangeK", "ChangeR", "ChangeP", "ChangeB", "ChangeA"}) r.Set(f, true);
      r.Set("ScenHydCond", "KZone");
      r.Set("ScenRecharge", "RZone");
    });
  }
  void ExpectRefused(Inhomogeneity& d, const std::string& title,
                     const std::vector<std::string>& lines, Field field, int tab) {
    ScriptedUserInterface ui;
    ui.ExpectMessage(title, lines).WithIcon(Icon::Exclamation);
    EXPECT_FALSE(d.OK(db_, ui));
    ui.Verify();
    EXPECT_EQ(d.failedField, field);
    EXPECT_EQ(d.failedTab, tab);
    EXPECT_EQ(d.Result, 2);
  }
  void ExpectAccepted(Inhomogeneity& d) {
    ScriptedUserInterface ui;
    EXPECT_TRUE(d.OK(db_, ui));
    ui.Verify();
    EXPECT_EQ(d.Result, 1);
  }
  const std::vector<std::string> kTagLines = {
      "You must specify a valid scenario tag.",
      "Scenario tags may not include spaces or the characters - , or _.",
      "Scenario tags may also not be '__NONE__'."};
};

TEST_F(InhomogeneityDialogTest, ClearedBoxesShowTheModelsValuesAndLockTheirFields) {
  Inhomogeneity d = Open(Zone("Z1"));
  EXPECT_EQ(d.dataEnabled, (std::array<bool, 5>{true, true, true, true, true}));
  EXPECT_TRUE(d.chkChangeAEnabled);

  d.ClickChangeK(false);
  EXPECT_EQ(d.tbData[Inhomogeneity::kHydCond], "12.5");
  EXPECT_FALSE(d.dataEnabled[Inhomogeneity::kHydCond]);
  d.ClickChangeR(false);
  EXPECT_EQ(d.tbData[Inhomogeneity::kRecharge], "0");
  EXPECT_FALSE(d.dataEnabled[Inhomogeneity::kRecharge]);
  d.ClickChangeP(false);
  EXPECT_EQ(d.tbData[Inhomogeneity::kPorosity], "0.2") << "not the model's porosity of 0.3";
  EXPECT_FALSE(d.dataEnabled[Inhomogeneity::kPorosity]);
  EXPECT_EQ(d.Unit(Inhomogeneity::kPorosity), "");

  // Clearing the base takes the average head with it: both go to the aquifer.
  d.ClickChangeB(false);
  EXPECT_EQ(d.tbData[Inhomogeneity::kBottomElevation], "-20");
  EXPECT_EQ(d.tbData[Inhomogeneity::kAverageHead], "15");
  EXPECT_FALSE(d.chkChangeA);
  EXPECT_FALSE(d.chkChangeAEnabled);
  EXPECT_FALSE(d.dataEnabled[Inhomogeneity::kBottomElevation]);
  EXPECT_FALSE(d.dataEnabled[Inhomogeneity::kAverageHead]);

  // Checking a box again frees its field and keeps what it shows.
  d.ClickChangeB(true);
  EXPECT_TRUE(d.chkChangeAEnabled);
  EXPECT_TRUE(d.dataEnabled[Inhomogeneity::kBottomElevation]);
  EXPECT_FALSE(d.dataEnabled[Inhomogeneity::kAverageHead]) << "until the head box is checked";
  d.tbData[Inhomogeneity::kAverageHead] = "99";
  d.ClickChangeA(true);
  EXPECT_TRUE(d.dataEnabled[Inhomogeneity::kAverageHead]);
  EXPECT_EQ(d.tbData[Inhomogeneity::kAverageHead], "99");
  d.ClickChangeA(false);
  EXPECT_EQ(d.tbData[Inhomogeneity::kAverageHead], "15");
}

TEST_F(InhomogeneityDialogTest, ScenarioBoxesFollowTheirChangeBoxes) {
  Inhomogeneity d = Open(Zone("Z1"));
  EXPECT_TRUE(d.chkScenarioHydCondEnabled);
  EXPECT_FALSE(d.scenarioEnabled[1]) << "a tag is editable only with its box";
  d.ClickScenarioHydCond(true);
  EXPECT_TRUE(d.scenarioEnabled[1]);
  d.ClickScenarioRecharge(true);
  EXPECT_TRUE(d.scenarioEnabled[2]);

  d.ClickChangeK(false);
  EXPECT_FALSE(d.chkScenarioHydCond);
  EXPECT_FALSE(d.chkScenarioHydCondEnabled);
  EXPECT_FALSE(d.scenarioEnabled[1]);
  EXPECT_TRUE(d.scenarioEnabled[2]) << "the other tag is not touched";
  d.ClickChangeK(true);
  EXPECT_TRUE(d.chkScenarioHydCondEnabled);
  EXPECT_FALSE(d.chkScenarioHydCond) << "the box stays cleared";

  d.ClickChangeR(false);
  EXPECT_FALSE(d.chkScenarioRecharge);
  EXPECT_FALSE(d.chkScenarioRechargeEnabled);
  EXPECT_FALSE(d.scenarioEnabled[2]);
  EXPECT_EQ(d.Scenario_Recharge(), "RZone") << "the tag itself stays";
}

TEST_F(InhomogeneityDialogTest, StoredRowShowsAsItIsAndWritesBackUnchanged) {
  // Boxes cleared, values that differ from the model's: the fields show the row.
  Element odd = Add(ElementKind::Inhomogeneity, "Odd", Square(0, 0, 10), [](Row& r) {
    r.Set("HydCond", 7.0);
    r.Set("Porosity", 0.45);
    r.Set("BottomElevation", 1.0 / 3.0);
  });
  for (const Element& e : {Zone("Z1"), odd}) {
    SCOPED_TRACE(e.Label());
    const Element before = *Load(db_, ElementKind::Inhomogeneity, e.key);
    Inhomogeneity d = Open(e);
    ExpectAccepted(d);
    EXPECT_FALSE(d.FormChanged());
    Element after = before;
    d.StoreElement(after);
    EXPECT_EQ(after, before);
  }
  Inhomogeneity d = Open(odd);
  EXPECT_EQ(d.tbData[Inhomogeneity::kHydCond], "7");
  EXPECT_EQ(d.tbData[Inhomogeneity::kPorosity], "0.45");
  EXPECT_FALSE(d.dataEnabled[Inhomogeneity::kHydCond]);
}

TEST_F(InhomogeneityDialogTest, EditsReachTheRow) {
  Element e = Zone("Z1");
  Inhomogeneity d = Open(e);
  d.ClickChangeK(false);
  d.tbData[Inhomogeneity::kRecharge] = "0.002";
  d.ClickScenarioRecharge(true);
  d.tbScenario[2] = "Rain";
  d.Label = "Z2";
  EXPECT_TRUE(d.FormChanged());
  d.StoreElement(e);
  EXPECT_FALSE(e.row.Flag("ChangeK"));
  EXPECT_EQ(e.row.Number("HydCond"), 12.5);
  EXPECT_EQ(e.row.Number("Recharge"), 0.002);
  EXPECT_TRUE(e.row.Flag("chkScenarioRecharge"));
  EXPECT_EQ(e.row.Text("ScenRecharge"), "Rain");
  EXPECT_EQ(e.row.Text("ScenHydCond"), "KZone");
  EXPECT_EQ(e.row.Text("Label"), "Z2");
  Update(db_, e);
  EXPECT_EQ(Load(db_, ElementKind::Inhomogeneity, e.key)->row, e.row);

  // The label and the colour are drawn, not solved.
  Inhomogeneity look = Open(Zone("Z3"));
  look.Label = "Renamed";
  look.color = 0x00ff00;
  EXPECT_FALSE(look.FormChanged());
}

TEST_F(InhomogeneityDialogTest, TheColourComesFromTheColourDialog) {
  Element e = Zone("Z1");
  Inhomogeneity d = Open(e);
  ScriptedUserInterface ui;
  ui.ExpectColour(std::nullopt);
  ui.ExpectColour(0x123456u);
  EXPECT_FALSE(d.ChooseColor(ui));
  EXPECT_EQ(d.color, 255u) << "cancel keeps the colour";
  EXPECT_TRUE(d.ChooseColor(ui));
  ui.Verify();
  EXPECT_EQ(ui.CallsOf(UiCallKind::Colour).front().colour, 255u);
  d.StoreElement(e);
  EXPECT_EQ(e.row.Integer("Color"), 0x123456);
}

TEST_F(InhomogeneityDialogTest, ChecksInOrderWithTheirTexts) {
  Zone("Taken");
  Element mine = Zone("Mine");
  Inhomogeneity d = Open(mine);

  d.Label = "";
  d.tbData[Inhomogeneity::kHydCond] = "-1";
  ExpectRefused(d, "Data Missing", {"Label must be specified. "}, Field::Label, 0);
  d.Label = "TAKEN";
  ExpectRefused(d, "Duplicate Label", {"Inhomogeneity Label ('TAKEN') already exists!"},
                Field::Label, 0);
  d.Label = "Mine";
  ExpectRefused(d, "Bad Entry",
                {"Hydraulic Conductivity cannot be negative.", "Please enter a positive value."},
                Field::HydCond, 0);
  d.tbData[Inhomogeneity::kHydCond] = "0";

  const std::vector<std::string> porosity = {
      "Porosity must be greater than 0 and no larger than 1.", "Please enter a new value."};
  for (const char* bad : {"0", "-0.5", "1.01", "", "-2"}) {
    SCOPED_TRACE(bad);
    d.tbData[Inhomogeneity::kPorosity] = bad;
    ExpectRefused(d, "Bad Entry", porosity, Field::Porosity, 0);
  }
  d.tbData[Inhomogeneity::kPorosity] = "1";
  ExpectAccepted(d);

  // Without its box the porosity is never tested.
  d.chkChangeP = false;
  d.tbData[Inhomogeneity::kPorosity] = "7";
  ExpectAccepted(d);
}

TEST_F(InhomogeneityDialogTest, ScenarioTagsAreTestedOnlyWithTheirBox) {
  Inhomogeneity d = Open(Zone("Z1"));
  d.tbScenario[1] = "bad tag";
  d.tbScenario[2] = "__NONE__";
  ExpectAccepted(d);

  d.ClickScenarioHydCond(true);
  for (const char* bad : {"", "   ", "__NONE__", "a b", "a-b", "a_b", "a,b", "ABCDEFGHIJKLM"}) {
    SCOPED_TRACE(bad);
    d.tbScenario[1] = bad;
    ExpectRefused(d, "Bad Entry", kTagLines, Field::ScenarioHydCond, Inhomogeneity::kScenariosTab);
  }
  for (const char* good : {"ABCDEFGHIJKL", " Kzone ", "K2"}) {
    SCOPED_TRACE(good);
    d.tbScenario[1] = good;
    ExpectAccepted(d);
  }
  d.ClickScenarioRecharge(true);
  ExpectRefused(d, "Bad Entry", kTagLines, Field::ScenarioRecharge, Inhomogeneity::kScenariosTab);
  d.tbScenario[2] = "Rch";
  ExpectAccepted(d);
}

TEST_F(InhomogeneityDialogTest, DefaultsAreTheModelsValuesWithEveryBoxCleared) {
  Element e = InhomogeneityDefaults(db_);
  EXPECT_EQ(e.kind, ElementKind::Inhomogeneity);
  EXPECT_EQ(e.row.Text("Label"), "");
  EXPECT_EQ(e.row.Number("HydCond"), 12.5);
  EXPECT_EQ(e.row.Number("Recharge"), 0);
  EXPECT_EQ(e.row.Number("Porosity"), 0.2);
  EXPECT_EQ(e.row.Number("BottomElevation"), -20);
  EXPECT_EQ(e.row.Number("AverageHead"), 15);
  for (const char* f : {"ChangeK", "ChangeR", "ChangeP", "ChangeB", "ChangeA",
                        "chkScenarioHydCond", "chkScenarioRecharge"})
    EXPECT_FALSE(e.row.Flag(f)) << f;
  EXPECT_EQ(e.row.Text("ScenHydCond"), "__NONE__");
  EXPECT_EQ(e.row.Text("ScenRecharge"), "__NONE__");
  EXPECT_EQ(e.row.Integer("Color"), 0);

  Inhomogeneity d;
  d.LoadElement(db_, e);
  EXPECT_EQ(d.dataEnabled, (std::array<bool, 5>{false, false, false, false, false}));
  EXPECT_FALSE(d.chkScenarioHydCondEnabled);
  EXPECT_FALSE(d.chkChangeAEnabled);
  EXPECT_EQ(d.Unit(Inhomogeneity::kHydCond), "m/day");
  EXPECT_EQ(d.Unit(Inhomogeneity::kAverageHead), "meters");
}

TEST_F(InhomogeneityDialogTest, FeetProjectsShowFeet) {
  MakeProject(false);
  Inhomogeneity d;
  d.LoadElement(db_, InhomogeneityDefaults(db_));
  EXPECT_EQ(d.Unit(Inhomogeneity::kRecharge), "ft/day");
  EXPECT_EQ(d.Unit(Inhomogeneity::kBottomElevation), "feet");
}

// The local base: the property is named, and of the inhomogeneities with a base of
// their own that hold the point, the smallest decides whichever way it is drawn.
TEST_F(InhomogeneityDialogTest, LocalBaseOfNestedInhomogeneities) {
  EXPECT_EQ(FindLocal(db_, "Base", 5, 5), -20) << "outside all: the model's base";
  // The outer one drawn counter-clockwise (a negative signed area), the inner one
  // clockwise: the inner one still decides.
  std::vector<Vertex> outer = Square(0, 0, 100);
  std::reverse(outer.begin(), outer.end());
  Add(ElementKind::Inhomogeneity, "Outer", outer, [](Row& r) {
    r.Set("ChangeB", true);
    r.Set("BottomElevation", -60.0);
  });
  Add(ElementKind::Inhomogeneity, "Inner", Square(10, 10, 20), [](Row& r) {
    r.Set("ChangeB", true);
    r.Set("BottomElevation", -30.0);
  });
  EXPECT_EQ(FindLocal(db_, "Base", 15, 15), -30);
  EXPECT_EQ(FindLocal(db_, "base", 50, 50), -60);
  EXPECT_EQ(FindLocal(db_, "Base", 150, 50), -20);
  // Of two of the same area, the first stays.
  Add(ElementKind::Inhomogeneity, "Twin", Square(10, 10, 20), [](Row& r) {
    r.Set("ChangeB", true);
    r.Set("BottomElevation", -99.0);
  });
  EXPECT_EQ(FindLocal(db_, "Base", 15, 15), -30);
  EXPECT_THROW(FindLocal(db_, "Thickness", 15, 15), InvalidArgumentError);
}

}  // namespace
}  // namespace tarno::testing
