// The barrier's dialog: the closed coding in three boxes, its checks in order with
// their texts and fields, the units, the defaults of a new barrier and the round
// trip of a stored barrier.
#include <gtest/gtest.h>

#include "area_dialog_fixture.h"
#include "support/scripted_ui.h"
#include "elements/barrier_dialog.h"
#include "elements/element_dialog.h"

namespace tarno::testing {
namespace {

using Field = NoFlowString::Field;

class BarrierDialogTest : public AreaDialogTest {
 protected:
  // A dialog filled from a stored barrier.
  NoFlowString Open(const Element& e) {
    NoFlowString d;
    auto stored = Load(db_, ElementKind::Barrier, e.key);
    EXPECT_TRUE(stored.has_value());
    d.LoadElement(db_, *stored);
    return d;
  }
  // OK must fail with exactly this box and select `field`.
  void ExpectRefused(NoFlowString& d, const std::string& title,
                     const std::vector<std::string>& lines, Field field) {
    ScriptedUserInterface ui;
    ui.ExpectMessage(title, lines).WithIcon(Icon::Exclamation);
    EXPECT_FALSE(d.OK(db_, ui));
    ui.Verify();
    EXPECT_EQ(d.failedField, field);
    EXPECT_EQ(d.failedTab, 0);
    EXPECT_EQ(d.Result, 2);
  }
  void ExpectAccepted(NoFlowString& d) {
    ScriptedUserInterface ui;
    EXPECT_TRUE(d.OK(db_, ui));
    ui.Verify();
    EXPECT_EQ(d.Result, 1);
    EXPECT_EQ(d.failedField, Field::None);
  }
  Element Wall(const std::string& label, int closed = 0) {
    return Add(ElementKind::Barrier, label, At({{0, 0}, {10, 0}, {10, 10}}),
               [&](Row& r) {
                 r.Set("HydCond", 0.25);
                 r.Set("Thickness", 0.5);
                 r.Set("Porosity", 0.3);
                 r.Set("BottomElevation", -12.5);
                 r.Set("Closed", closed);
               });
  }
};

TEST_F(BarrierDialogTest, ClosedIsCodedInThreeBoxes) {
  struct Case {
    int code;
    bool closed, inside, outside;
  };
  for (const Case c : {Case{0, false, false, false}, Case{1, true, false, false},
                       Case{2, true, true, false}, Case{3, true, false, true}}) {
    SCOPED_TRACE(c.code);
    EXPECT_EQ(NoFlowString::EncodeClosed(c.closed, c.inside, c.outside), c.code);
    const Element e = Wall("B" + std::to_string(c.code), c.code);
    NoFlowString d = Open(e);
    EXPECT_EQ(d.ClosedDomain, c.closed);
    EXPECT_EQ(d.IgnoreInside, c.inside);
    EXPECT_EQ(d.IgnoreOutside, c.outside);
    EXPECT_EQ(d.ClosedCode(), c.code);
  }
  // An open barrier ignores nothing, whatever the Ignore boxes hold.
  EXPECT_EQ(NoFlowString::EncodeClosed(false, true, false), 0);
  EXPECT_EQ(NoFlowString::EncodeClosed(false, false, true), 0);
}

TEST_F(BarrierDialogTest, SettingOneIgnoreBoxClearsTheOther) {
  NoFlowString d;
  d.init();
  d.ClosedDomain = true;
  d.ClickIgnoreInside(true);
  EXPECT_EQ(d.ClosedCode(), 2);
  d.ClickIgnoreOutside(true);
  EXPECT_FALSE(d.IgnoreInside);
  EXPECT_EQ(d.ClosedCode(), 3);
  d.ClickIgnoreInside(true);
  EXPECT_FALSE(d.IgnoreOutside);
  // Clearing a box leaves the other as it is.
  d.ClickIgnoreInside(false);
  EXPECT_FALSE(d.IgnoreOutside);
  EXPECT_EQ(d.ClosedCode(), 1);
}

TEST_F(BarrierDialogTest, TheBoxesAreWrittenBackAsTheirCode) {
  Element e = Wall("B1");
  NoFlowString d = Open(e);
  d.ClosedDomain = true;
  d.ClickIgnoreOutside(true);
  d.StoreElement(e);
  EXPECT_EQ(e.row.Integer("Closed"), 3);
  EXPECT_TRUE(d.Invalidate()) << "closing the barrier changes the model";
  d.ClosedDomain = false;
  d.StoreElement(e);
  EXPECT_EQ(e.row.Integer("Closed"), 0);
}

TEST_F(BarrierDialogTest, UnchangedDialogWritesBackWhatItRead) {
  for (int code : {0, 1, 2, 3}) {
    Element e = Wall("W" + std::to_string(code), code);
    Element before = *Load(db_, ElementKind::Barrier, e.key);
    NoFlowString d = Open(e);
    ExpectAccepted(d);
    EXPECT_FALSE(d.Invalidate());
    Element after = before;
    d.StoreElement(after);
    EXPECT_EQ(after, before);
  }
  // A number that its text shows rounded is kept as stored.
  Element fine = Add(ElementKind::Barrier, "Fine", At({{0, 0}, {1, 1}}),
                     [](Row& r) { r.Set("HydCond", 0.1 + 0.2); });
  Element before = *Load(db_, ElementKind::Barrier, fine.key);
  NoFlowString d = Open(fine);
  Element after = before;
  d.StoreElement(after);
  EXPECT_EQ(after.row.Number("HydCond"), 0.1 + 0.2);
}

TEST_F(BarrierDialogTest, EditedFieldsReachTheRow) {
  Element e = Wall("B1");
  NoFlowString d = Open(e);
  EXPECT_EQ(d.tbData[NoFlowString::kBottomElevation], "-12.5");
  d.tbData = {"2.5", "0.75", "0.35", "-40"};
  d.Label = "Wall_2";
  EXPECT_TRUE(d.Invalidate());
  d.StoreElement(e);
  EXPECT_EQ(e.row.Number("HydCond"), 2.5);
  EXPECT_EQ(e.row.Number("Thickness"), 0.75);
  EXPECT_EQ(e.row.Number("Porosity"), 0.35);
  EXPECT_EQ(e.row.Number("BottomElevation"), -40);
  EXPECT_EQ(e.row.Text("Label"), "Wall_2");
  // A new label alone does not touch the solution.
  NoFlowString relabel = Open(Wall("B9"));
  relabel.Label = "Other";
  EXPECT_FALSE(relabel.Invalidate());
}

TEST_F(BarrierDialogTest, ChecksStopAtTheFirstFailureInOrder) {
  Wall("Taken");
  Element mine = Wall("Mine");
  NoFlowString d = Open(mine);

  // A duplicate comes first, even when the numbers are also wrong.
  d.Label = "Taken";
  d.tbData[NoFlowString::kHydCond] = "-1";
  ExpectRefused(d, "Duplicate Label",
                {"Barrier Label ('Taken') already exists!", "Please enter a new label."},
                Field::Label);
  d.Label = "taken";  // labels compare without regard to case
  ExpectRefused(d, "Duplicate Label",
                {"Barrier Label ('taken') already exists!", "Please enter a new label."},
                Field::Label);

  d.Label = "";
  ExpectRefused(d, "Data Missing", {"Label must be specified. "}, Field::Label);

  d.Label = "Mine";
  ExpectRefused(d, "Bad Entry", {"Conductivity must be positive.", "Please enter a new value."},
                Field::HydCond);
  d.tbData[NoFlowString::kHydCond] = "0";  // a conductivity of 0 passes
  d.tbData[NoFlowString::kThickness] = "-0.1";
  d.tbData[NoFlowString::kPorosity] = "2";
  ExpectRefused(d, "Bad Entry", {"Thickness must be positive.", "Please enter a new value."},
                Field::Thickness);
  d.tbData[NoFlowString::kThickness] = "0";
  const std::vector<std::string> porosity = {
      "Porosity must be greater than 0 and less than or equal to 1.", "Please enter a new value."};
  ExpectRefused(d, "Bad Entry", porosity, Field::Porosity);
  d.tbData[NoFlowString::kPorosity] = "0";
  ExpectRefused(d, "Bad Entry", porosity, Field::Porosity);
  d.tbData[NoFlowString::kPorosity] = "1";
  ExpectAccepted(d);
}

TEST_F(BarrierDialogTest, EmptyFieldsReadAsZero) {
  NoFlowString d = Open(Wall("B1"));
  d.tbData = {"", "", "0.5", ""};
  ExpectAccepted(d);
  EXPECT_EQ(d.tbData, (std::array<std::string, 4>{"0", "0", "0.5", "0"}));
  // An empty porosity becomes 0, which the porosity check refuses.
  d.tbData[NoFlowString::kPorosity] = "";
  ExpectRefused(d, "Bad Entry",
                {"Porosity must be greater than 0 and less than or equal to 1.",
                 "Please enter a new value."},
                Field::Porosity);
  EXPECT_EQ(d.tbData[NoFlowString::kPorosity], "0");
}

TEST_F(BarrierDialogTest, ANewBarrierIsADuplicateOfAnyStoredLabel) {
  Wall("B1");
  NoFlowString d;
  d.LoadElement(db_, BarrierDefaults(db_));
  d.Label = "B1";
  ExpectRefused(d, "Duplicate Label",
                {"Barrier Label ('B1') already exists!", "Please enter a new label."},
                Field::Label);
  d.Label = "B2";
  ExpectAccepted(d);
}

TEST_F(BarrierDialogTest, UnitsFollowTheProject) {
  NoFlowString d = Open(Wall("B1"));
  EXPECT_EQ(d.Unit(NoFlowString::kHydCond), "m/day");
  EXPECT_EQ(d.Unit(NoFlowString::kThickness), "meters");
  EXPECT_EQ(d.Unit(NoFlowString::kPorosity), "");
  EXPECT_EQ(d.Unit(NoFlowString::kBottomElevation), "meters");
  EXPECT_EQ(d.flowUnit, "m^3/day");
  MakeProject(false);
  NoFlowString f = Open(Wall("B1"));
  EXPECT_EQ(f.Unit(NoFlowString::kHydCond), "ft/day");
  EXPECT_EQ(f.Unit(NoFlowString::kBottomElevation), "feet");
  EXPECT_EQ(f.flowUnit, "ft^3/day");
}

TEST_F(BarrierDialogTest, DefaultsReachTheLowestBaseOfTheModel) {
  db_.ExecuteRaw("update Model set AQBase = -5");
  Element e = BarrierDefaults(db_);
  EXPECT_EQ(e.kind, ElementKind::Barrier);
  EXPECT_EQ(e.row.Number("HydCond"), 0);
  EXPECT_EQ(e.row.Number("Thickness"), 1);
  EXPECT_EQ(e.row.Number("Porosity"), 0.2);
  EXPECT_EQ(e.row.Integer("Closed"), 0);
  EXPECT_EQ(e.row.Text("Label"), "");
  EXPECT_EQ(e.row.Number("BottomElevation"), -5);

  // Any inhomogeneity's bottom counts, whether or not its base is its own.
  Add(ElementKind::Inhomogeneity, "Deep", Square(0, 0, 10),
      [](Row& r) { r.Set("BottomElevation", -50.0); });
  Add(ElementKind::Inhomogeneity, "Shallow", Square(20, 0, 10), [](Row& r) {
    r.Set("BottomElevation", 3.0);
    r.Set("ChangeB", true);
  });
  EXPECT_EQ(BarrierDefaults(db_).row.Number("BottomElevation"), -50);

  NoFlowString d;
  d.LoadElement(db_, BarrierDefaults(db_));
  EXPECT_EQ(d.tbData, (std::array<std::string, 4>{"0", "1", "0.2", "-50"}));
  EXPECT_FALSE(d.ClosedDomain);
}

TEST(ElementDialogFactory, AreaKindsHaveTheirDialogs) {
  EXPECT_EQ(MakeElementDialog(ElementKind::Barrier)->DialogName(), "NoFlowString");
  EXPECT_EQ(MakeElementDialog(ElementKind::Inhomogeneity)->DialogName(), "Inhomogeneity");
  EXPECT_EQ(MakeElementDialog(ElementKind::Lake)->DialogName(), "Lake");
  EXPECT_EQ(MakeElementDialog(ElementKind::UniformFlow)->DialogName(), "UniformFlow");
}

}  // namespace
}  // namespace tarno::testing
