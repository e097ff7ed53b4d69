// The views of the element dialogs, built without exec(): filled from the elements
// of an example, their widgets follow the model's rules, a failed OK brings the
// field forward, and OK on an unchanged dialog leaves the project's rows as they were.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QTabWidget>
#include <fstream>
#include <sstream>

#include "app/dialog_views.h"
#include "app/views/linesink_view.h"
#include "app/views/well_view.h"
#include "core/error_trap.h"
#include "support/scripted_ui.h"
#include "dialogs_test_support.h"
#include "elements/element_store.h"

namespace tarno::testing {
namespace {

using W = WellProperties;
using L = LinesinkString;

std::string Text(const QWidget* w) {
  if (const auto* e = qobject_cast<const QLineEdit*>(w)) return e->text().toStdString();
  if (const auto* l = qobject_cast<const QLabel*>(w)) return l->text().toStdString();
  return {};
}

class ElementViewTest : public ProjectTest {
 protected:
  void SetUp() override {
    ProjectTest::SetUp();
    std::ifstream in(std::string(TARNO_SOURCE_DIR) + "/examples/vincennes.sql");
    std::stringstream sql;
    sql << in.rdbuf();
    Database db = Open();
    db.ExecuteRaw(sql.str());
  }
  std::function<std::string()> File() {
    return [this] { return path_.string(); };
  }
  Element Find(ElementKind kind, const std::string& label) {
    Database db = Open();
    auto e = FindByLabel(db, kind, label);
    EXPECT_TRUE(e.has_value()) << label;
    return e.value_or(Element{});
  }
  template <typename Model>
  void Fill(Model& model, const Element& e) {
    Database db = Open();
    model.LoadElement(db, e);
  }
};

// ---------------------------------------------------------------------------
// Wells.

TEST_F(ElementViewTest, EveryWellPassesOKUnchangedAndKeepsItsRows) {
  Database db = Open();
  const std::vector<Element> before = LoadAll(db, ElementKind::Well);
  ASSERT_EQ(before.size(), 5u);
  db.Close();
  for (const Element& well : before) {
    SCOPED_TRACE(well.Label());
    W model;
    Fill(model, well);
    ScriptedUserInterface ui;
    WellPropertiesView view(model, ui, File());
    EXPECT_EQ(view.windowTitle().toStdString(), W::kTitle);
    EXPECT_EQ(Text(view.label()), well.Label());
    view.okButton()->click();
    ui.Verify();
    EXPECT_EQ(view.result(), 1);
    ASSERT_EQ(model.Result, 1);
    Element after = well;
    model.StoreElement(after);
    Database write = Open();
    Update(write, after);
  }
  Database again = Open();
  EXPECT_EQ(LoadAll(again, ElementKind::Well), before);
}

TEST_F(ElementViewTest, TheWellViewShowsTheModelAndFollowsItsRules) {
  W model;
  Fill(model, Find(ElementKind::Well, "CityWell1"));
  ScriptedUserInterface ui;
  WellPropertiesView view(model, ui, File());
  ASSERT_EQ(view.tabs()->count(), 4);
  for (int i = 0; i < 4; ++i) EXPECT_EQ(view.tabs()->tabText(i).toStdString(), W::kTabNames[i]);
  EXPECT_EQ(Text(view.field(W::kHead)), "2500");
  EXPECT_EQ(Text(view.prompt(W::kHead)), "Discharge");
  EXPECT_EQ(Text(view.unit(W::kHead)), "m^3/day");
  EXPECT_EQ(Text(view.unit(W::kX)), "meters");
  EXPECT_TRUE(view.trace()->isChecked());
  EXPECT_TRUE(view.headSpec(1)->isChecked());
  for (int i = 0; i < W::kFieldCount; ++i) {
    EXPECT_TRUE(view.tabs()->widget(W::TabOf(i))->isAncestorOf(view.field(i)))
        << "field " << i << " sits on the tab its failure brings forward";
  }

  view.pond()->click();
  EXPECT_TRUE(model.Pond());
  EXPECT_EQ(Text(view.prompt(W::kTopElev)), "Pond elevation");
  EXPECT_TRUE(view.field(W::kBottomElev)->isHidden());
  EXPECT_EQ(Text(view.unit(W::kHead)), "m/day");
  EXPECT_FALSE(view.trace()->isEnabled());
  EXPECT_FALSE(view.transient(0)->isEnabled());
  EXPECT_TRUE(model.FormChanged());
  view.pond()->click();
  EXPECT_FALSE(view.field(W::kBottomElev)->isHidden());

  view.transient(1)->click();
  EXPECT_EQ(Text(view.prompt(W::kTime)), "On/Off Time Period");
  view.headSpec(0)->click();
  EXPECT_EQ(Text(view.prompt(W::kHead)), "Head");
  EXPECT_FALSE(view.field(W::kSS)->isEnabled());

  // Typing goes to the model, and so does the label.
  view.field(W::kRadius)->setText("0.75");
  emit view.field(W::kRadius)->textEdited("0.75");
  EXPECT_EQ(model.Radius(), 0.75);
  EXPECT_TRUE(model.NeedRetrace());
}

TEST_F(ElementViewTest, AFailedWellOKKeepsTheDialogWithTheFieldForward) {
  W model;
  Fill(model, Find(ElementKind::Well, "CityWell1"));
  ScriptedUserInterface ui;
  WellPropertiesView view(model, ui, File());
  view.tabs()->setCurrentIndex(W::kGeneralTab);
  view.field(W::kSetback)->setText("-3");
  emit view.field(W::kSetback)->textEdited("-3");
  ui.ExpectMessage("Bad Entry", {"Setback Radius must be positive.", "Please enter a new value."})
      .WithIcon(Icon::Exclamation);
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.result(), 0) << "the dialog stays";
  EXPECT_EQ(view.tabs()->currentIndex(), W::kOtherTab);
  EXPECT_EQ(view.field(W::kSetback)->selectedText().toStdString(), "-3");

  view.label()->setText("CityWell2");
  emit view.label()->textEdited("CityWell2");
  view.field(W::kSetback)->setText("");
  emit view.field(W::kSetback)->textEdited("");
  ui.ExpectMessage("Duplicate Label",
                   {"Well Label ('CityWell2') already exists!", "Please enter a new label."});
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(Text(view.field(W::kSetback)), "0") << "the emptied field shows the 0 it reads as";
  EXPECT_EQ(view.label()->selectedText().toStdString(), "CityWell2");

  view.cancelButton()->click();
  EXPECT_EQ(view.result(), 2);
  EXPECT_EQ(model.Result, 2);
}

TEST_F(ElementViewTest, AnUnreadableProjectGivesTheStandardMessage) {
  W model;
  Fill(model, Find(ElementKind::Well, "CityWell1"));
  ScriptedUserInterface ui;
  WellPropertiesView view(model, ui, [this] { return (dir_ / "gone.trn").string(); });
  ui.ExpectMessageTitled(kUnhandledErrorTitle);
  view.okButton()->click();
  ui.Verify();
  ASSERT_EQ(ui.Messages().size(), 1u);
  EXPECT_EQ(ui.Messages()[0].lines.at(0), "Unhandled error in Well_OKClick");
  EXPECT_EQ(view.result(), 0);
}

// ---------------------------------------------------------------------------
// Line-sink strings.

TEST_F(ElementViewTest, EveryStringPassesOKUnchangedAndKeepsItsRows) {
  Database db = Open();
  const std::vector<Element> before = LoadAll(db, ElementKind::Linesink);
  ASSERT_GE(before.size(), 5u);
  db.Close();
  for (const Element& string : before) {
    SCOPED_TRACE(string.Label());
    L model;
    Fill(model, string);
    ScriptedUserInterface ui;
    LinesinkStringView view(model, ui, File());
    EXPECT_EQ(view.windowTitle().toStdString(), L::kTitle);
    EXPECT_TRUE(view.option(model.option)->isChecked());
    view.okButton()->click();
    ui.Verify();
    EXPECT_EQ(view.result(), 1);
    ASSERT_EQ(model.Result, 1);
    Element after = string;
    model.StoreElement(after);
    Database write = Open();
    Update(write, after);
  }
  Database again = Open();
  EXPECT_EQ(LoadAll(again, ElementKind::Linesink), before);
}

TEST_F(ElementViewTest, TheStringViewFollowsTheOptionsAndBoxes) {
  Database db = Open();
  const Element first = LoadAll(db, ElementKind::Linesink).front();
  db.Close();
  L model;
  Fill(model, first);
  ScriptedUserInterface ui;
  LinesinkStringView view(model, ui, File());
  ASSERT_EQ(view.tabs()->count(), 3);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(view.tabs()->tabText(i).toStdString(), L::kTabNames[i]);
  for (int i : {L::kStartHead, L::kDepth, L::kTotalDischarge, L::kOverlandFlow, L::kOutletTable,
                L::kPrecipitation}) {
    EXPECT_TRUE(view.tabs()->widget(L::TabOf(i))->isAncestorOf(view.field(i))) << i;
  }
  EXPECT_EQ(Text(view.unit(L::kResistance)), "days");

  view.option(L::kLake)->click();
  EXPECT_EQ(Text(view.prompt(L::kStartHead)), "Estimated Level 1");
  EXPECT_EQ(Text(view.prompt(L::kTotalDischarge)), "Lake Bottom");
  EXPECT_FALSE(view.field(L::kTotalDischarge)->isHidden());
  EXPECT_TRUE(view.field(L::kEndInflow)->isHidden());
  EXPECT_FALSE(view.field(L::kEvapotranspiration)->isHidden());
  EXPECT_EQ(Text(view.prompt(L::kEndInflow)), "Evapotranspiration");
  EXPECT_TRUE(view.routing(0)->isChecked());
  EXPECT_FALSE(view.routing(0)->isEnabled());
  EXPECT_FALSE(view.farField()->isEnabled());

  view.option(L::kDischargeSpecified)->click();
  EXPECT_EQ(Text(view.prompt(L::kStartHead)), "Starting Sink Density");
  EXPECT_EQ(Text(view.unit(L::kStartHead)), "m^2/day");
  EXPECT_FALSE(view.tabs()->isTabEnabled(L::kRoutingTab));
  EXPECT_FALSE(view.field(L::kResistance)->isEnabled());

  view.option(L::kHeadSpecified)->click();
  view.farField()->click();
  EXPECT_FALSE(view.field(L::kResistance)->isEnabled());
  EXPECT_FALSE(view.tabs()->isTabEnabled(L::kRoutingTab));
  view.farField()->click();
  EXPECT_TRUE(view.tabs()->isTabEnabled(L::kRoutingTab));

  view.location(1)->click();
  EXPECT_EQ(model.GetAuto(), 1);
  EXPECT_TRUE(model.FormChanged());
}

TEST_F(ElementViewTest, TheOutletFileListAndTheScenarioTabOnAFailedOK) {
  {
    std::ofstream(dir_ / "north.stg") << "stage\n";
    std::ofstream(dir_ / "notes.txt") << "x\n";
  }
  L model;
  Fill(model, Find(ElementKind::Linesink, "WabashRiver"));
  ScriptedUserInterface ui;
  LinesinkStringView view(model, ui, File());
  ASSERT_EQ(view.outletFiles()->count(), 1) << "the stage tables of the project's folder";
  view.routing(0)->click();
  view.routing(3)->click();
  EXPECT_TRUE(view.field(L::kOutletTable)->isEnabled());
  emit view.outletFiles()->itemClicked(view.outletFiles()->item(0));
  EXPECT_EQ(Text(view.field(L::kOutletTable)), "north");

  view.scenario()->click();
  EXPECT_TRUE(view.scenarioField(1)->isEnabled());
  view.scenarioField(1)->setText("bad-tag");
  emit view.scenarioField(1)->textEdited("bad-tag");
  ui.ExpectMessage("Bad Entry", {"You must specify a valid scenario tag.",
                                 "Scenario tags may not include spaces or the characters - , or _.",
                                 "Scenario tags may also not be '__NONE__'."});
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.result(), 0);
  EXPECT_EQ(view.tabs()->currentIndex(), L::kScenariosTab);
  EXPECT_EQ(view.scenarioField(1)->selectedText().toStdString(), "bad-tag");
}

TEST_F(ElementViewTest, ShowModalOpensTheElementViewsByTheirNames) {
  QtUserInterface qt;
  RegisterDialogViews(qt, File());
  EXPECT_TRUE(qt.HasView(W::kName));
  EXPECT_TRUE(qt.HasView(L::kName));
  W well;
  Fill(well, Find(ElementKind::Well, "CityWell2"));
  OnNextDialog<WellPropertiesView>([](WellPropertiesView* v) { v->okButton()->click(); });
  qt.ShowModal(well);
  EXPECT_EQ(well.Result, 1);
}

}  // namespace
}  // namespace tarno::testing
