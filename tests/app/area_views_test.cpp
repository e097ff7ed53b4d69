// The views of barriers, inhomogeneities, lakes and the uniform flow, built without
// exec(): each is filled from an element of the basin-and-range example (the lake
// and the uniform flow, which the example lacks, are added to it), and OK on the
// unchanged dialog writes back rows equal to those it read; a refused OK keeps the
// view with its field selected on its tab.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "app/views/barrier_view.h"
#include "app/views/inhomogeneity_view.h"
#include "app/views/lake_view.h"
#include "app/views/uniform_flow_view.h"
#include "support/scripted_ui.h"
#include "dialogs_test_support.h"
#include "elements/element_store.h"

namespace tarno::testing {
namespace {

std::string Text(const QLineEdit* edit) { return edit->text().toStdString(); }

class AreaViewTest : public ProjectTest {
 protected:
  void SetUp() override {
    ProjectTest::SetUp();
    std::ifstream in(std::filesystem::path(TARNO_SOURCE_DIR) / "examples" / "basin-and-range.sql");
    const std::string sql((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    ASSERT_FALSE(sql.empty());
    Database db = Open();
    db.ExecuteRaw(sql);
  }
  std::function<std::string()> File() {
    return [this] { return path_.string(); };
  }
  // The one element of `kind` in the project.
  Element Only(ElementKind kind) {
    Database db = Open();
    const std::vector<Element> all = LoadAll(db, kind);
    EXPECT_EQ(all.size(), 1u);
    return all.empty() ? Element{} : all.front();
  }
  // Fills `model` from the element, presses OK on its unchanged view, writes the
  // model back and compares the stored element with the one before.
  template <typename View, typename Model>
  void UnchangedOkLeavesTheRows(Model& model, const Element& before) {
    {
      Database db = Open();
      model.LoadElement(db, before);
    }
    ScriptedUserInterface ui;
    View view(model, ui, File());
    view.okButton()->click();
    ui.Verify();
    EXPECT_EQ(view.result(), 1);
    EXPECT_EQ(model.Result, 1);
    EXPECT_FALSE(model.FormChanged());
    Element written = before;
    model.StoreElement(written);
    Database db = Open();
    Update(db, written);
    const auto after = Load(db, before.kind, before.key);
    ASSERT_TRUE(after.has_value());
    EXPECT_EQ(*after, before);
  }
};

TEST_F(AreaViewTest, BarrierUnchangedOkLeavesTheRows) {
  NoFlowString model;
  UnchangedOkLeavesTheRows<NoFlowStringView>(model, Only(ElementKind::Barrier));
}

TEST_F(AreaViewTest, InhomogeneityUnchangedOkLeavesTheRows) {
  Inhomogeneity model;
  UnchangedOkLeavesTheRows<InhomogeneityView>(model, Only(ElementKind::Inhomogeneity));
}

TEST_F(AreaViewTest, LakeUnchangedOkLeavesTheRows) {
  {
    Database db = Open();
    Element lake = NewElement(ElementKind::Lake, {{0, 0, 0, 600000, 4300000},
                                                  {0, 0, 0, 601000, 4300000},
                                                  {0, 0, 0, 600500, 4301000}});
    lake.row.Set("Label", "Playa");
    lake.row.Set("Evapotranspiration", 0.004);
    lake.row.Set("StageTableFilename", "playa.stg");
    Insert(db, lake);
  }
  Lake model;
  UnchangedOkLeavesTheRows<LakeView>(model, Only(ElementKind::Lake));
}

TEST_F(AreaViewTest, UniformFlowUnchangedOkLeavesTheRows) {
  {
    Database db = Open();
    Element flow = NewElement(ElementKind::UniformFlow, {{0, -10, 0, 600000, 4300000}});
    flow.row.Set("UNIFLOWRefX", 600000.0);
    flow.row.Set("UNIFLOWRefY", 4300000.0);
    flow.row.Set("UNIFLOWRefHead", 4550.0);
    flow.row.Set("UNIFLOWGradient", 0.001);
    flow.row.Set("UNIFLOWOrientation", -30.0);
    StoreUniformFlow(db, flow);
  }
  UniformFlow model;
  UnchangedOkLeavesTheRows<UniformFlowView>(model, Only(ElementKind::UniformFlow));
}

TEST_F(AreaViewTest, BarrierViewShowsTheClosedCodingAndSelectsARefusedField) {
  NoFlowString model;
  {
    Database db = Open();
    model.LoadElement(db, Only(ElementKind::Barrier));
  }
  ScriptedUserInterface ui;
  NoFlowStringView view(model, ui, File());
  EXPECT_EQ(view.windowTitle().toStdString(), NoFlowString::kTitle);
  EXPECT_EQ(view.unit(NoFlowString::kHydCond)->text().toStdString(), "m/day");
  EXPECT_EQ(view.unit(NoFlowString::kBottomElevation)->text().toStdString(), "meters");
  EXPECT_EQ(view.ignoreFrame()->title().toStdString(), "Ignore Region");

  view.closedDomain()->setChecked(true);
  view.ignoreInside()->click();
  view.ignoreOutside()->click();
  EXPECT_FALSE(view.ignoreInside()->isChecked()) << "one Ignore box clears the other";
  EXPECT_EQ(model.ClosedCode(), 3);

  view.data(NoFlowString::kPorosity)->setText("1.5");
  view.data(NoFlowString::kThickness)->clear();
  ui.ExpectMessage("Bad Entry", {"Porosity must be greater than 0 and less than or equal to 1.",
                                 "Please enter a new value."});
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.result(), 0) << "the dialog stays";
  EXPECT_EQ(Text(view.data(NoFlowString::kThickness)), "0") << "an empty field reads 0";
  EXPECT_EQ(view.data(NoFlowString::kPorosity)->selectedText().toStdString(), "1.5");

  view.cancelButton()->click();
  EXPECT_EQ(model.Result, 2);
}

TEST_F(AreaViewTest, InhomogeneityViewRunsTheBoxRulesAndBringsTheScenarioTabForward) {
  Inhomogeneity model;
  {
    Database db = Open();
    model.LoadElement(db, Only(ElementKind::Inhomogeneity));
  }
  ASSERT_TRUE(model.chkChangeK);
  ScriptedUserInterface ui;
  InhomogeneityView view(model, ui, File());
  EXPECT_EQ(view.windowTitle().toStdString(), Inhomogeneity::kTitle);
  ASSERT_EQ(view.tabs()->count(), 2);
  EXPECT_EQ(view.tabs()->tabText(1).toStdString(), "Scenarios");

  // The example's base is the aquifer's: base and head are locked.
  EXPECT_FALSE(view.data(Inhomogeneity::kBottomElevation)->isEnabled());
  EXPECT_FALSE(view.change(4)->isEnabled());
  view.change(3)->click();
  EXPECT_TRUE(view.data(Inhomogeneity::kBottomElevation)->isEnabled());
  EXPECT_TRUE(view.change(4)->isEnabled());

  // Clearing the conductivity's box shows the model's and locks its tag.
  view.scenarioHydCond()->click();
  EXPECT_TRUE(view.scenario(1)->isEnabled());
  view.data(Inhomogeneity::kRecharge)->setText("0.0125");  // typed, kept through the rule
  view.change(0)->click();
  EXPECT_EQ(Text(view.data(Inhomogeneity::kHydCond)), "25") << "the example's AQHydCond";
  EXPECT_FALSE(view.data(Inhomogeneity::kHydCond)->isEnabled());
  EXPECT_FALSE(view.scenarioHydCond()->isEnabled());
  EXPECT_FALSE(view.scenario(1)->isEnabled());
  EXPECT_EQ(Text(view.data(Inhomogeneity::kRecharge)), "0.0125");

  // A bad tag of the recharge: the Scenarios tab comes forward with the tag selected.
  view.tabs()->setCurrentIndex(0);
  ASSERT_TRUE(view.scenarioRecharge()->isEnabled());
  view.scenarioRecharge()->click();
  view.scenario(2)->setText("rch_1");
  ui.ExpectMessage("Bad Entry", {"You must specify a valid scenario tag.",
                                 "Scenario tags may not include spaces or the characters - , or _.",
                                 "Scenario tags may also not be '__NONE__'."});
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.result(), 0);
  EXPECT_EQ(view.tabs()->currentIndex(), Inhomogeneity::kScenariosTab);
  EXPECT_EQ(view.scenario(2)->selectedText().toStdString(), "rch_1");

  ui.ExpectColour(0x0000ffu);
  view.colorButton()->click();
  ui.Verify();
  EXPECT_EQ(model.color, 0x0000ffu);

  view.scenario(2)->setText("Rch1");
  view.okButton()->click();
  EXPECT_EQ(view.result(), 1);
  EXPECT_EQ(model.Scenario_Recharge(), "Rch1");
}

TEST_F(AreaViewTest, LakeViewSelectsATooLongStageTable) {
  Lake model;
  {
    Database db = Open();
    model.LoadElement(db, LakeDefaults(db));
  }
  ScriptedUserInterface ui;
  LakeView view(model, ui, File());
  EXPECT_EQ(view.windowTitle().toStdString(), Lake::kTitle);
  EXPECT_EQ(view.unit(Lake::kEvapotranspiration)->text().toStdString(), "m/day");
  view.label()->setText("Playa");
  view.data(Lake::kStageTable)->setText("playalake.stg");
  ui.ExpectMessage("Bad Entry", {"Filename must be no more than 12 characters including the dos "
                                 "extension, with no spaces"});
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.result(), 0);
  EXPECT_EQ(view.data(Lake::kStageTable)->selectedText().toStdString(), "playalake.stg");
  view.data(Lake::kStageTable)->setText("playa.stg");
  view.okButton()->click();
  EXPECT_EQ(view.result(), 1);
  EXPECT_EQ(model.StageTableFilename(), "playa.stg");
}

TEST_F(AreaViewTest, UniformFlowViewChecksAgainstTheExamplesBase) {
  UniformFlow model;
  {
    Database db = Open();
    model.init(db);
  }
  ScriptedUserInterface ui;
  UniformFlowView view(model, ui, File());
  EXPECT_EQ(view.unit(UniformFlow::kOrientation)->text().toStdString(),
            "degrees counterclockwise");
  view.data(UniformFlow::kHead)->setText("4100");
  ui.ExpectMessage("Bad Entry", {"Specified Reference Head is below aquifer base of 4200.",
                                 "Press Ok to re-enter Reference Head."});
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.result(), 0);
  EXPECT_EQ(view.data(UniformFlow::kHead)->selectedText().toStdString(), "4100");
  view.data(UniformFlow::kHead)->setText("4550");
  view.data(UniformFlow::kOrientation)->setText("180");
  view.okButton()->click();
  EXPECT_EQ(view.result(), 1);
}

TEST_F(AreaViewTest, WithoutAProjectOkGivesTheGeneralMessage) {
  NoFlowString model;
  model.init();
  model.Label = "B";
  ScriptedUserInterface ui;
  NoFlowStringView view(model, ui, [] { return std::string(); });
  ui.ExpectMessageTitled("Unhandled Error -- Contact the Authors");
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.result(), 0);
}

}  // namespace
}  // namespace tarno::testing
