// The line-sink string's dialog model: the checks of OK with their exact texts and
// fields, the rules of the five options and of the routing, far-field and scenario
// boxes, the change flag, and every kind of string through a row and back.
#include "elements/linesink_dialog.h"

#include <gtest/gtest.h>

#include "support/scripted_ui.h"
#include "dialog_test_support.h"
#include "elements/element_store.h"

namespace tarno::testing {
namespace {

using L = LinesinkString;

class LinesinkDialogTest : public DialogProject {
 protected:
  // A head-specified stream of three vertices with a resistance, stored.
  Element StoredString(const std::string& label = "S1") {
    Element e = LinesinkDefaults({{0, 0, 0, 0, 0}, {0, 0, 0, 100, 0}, {0, 0, 0, 200, 50}});
    e.row.Set("Label", label);
    e.row.Set("StartingHead", 30.0);
    e.row.Set("EndingHead", 25.0);
    e.row.Set("Resistance", 2.0);
    Insert(db_, e);
    return e;
  }
  L Loaded(const Element& e) {
    L d;
    d.LoadElement(db_, e);
    return d;
  }
  bool Passes(L& d) {
    ScriptedUserInterface ui;
    const bool ok = d.OK(db_, ui);
    for (const UiCall& m : ui.Messages()) ADD_FAILURE() << m.Describe();
    return ok;
  }
  void ExpectRefused(L& d, const std::string& title, const std::vector<std::string>& lines,
                     int field, int tab) {
    ScriptedUserInterface ui;
    ui.ExpectMessage(title, lines).WithIcon(Icon::Exclamation);
    const int result = d.Result;
    EXPECT_FALSE(d.OK(db_, ui));
    ui.Verify();
    EXPECT_EQ(d.failedField, field);
    EXPECT_EQ(d.failedTab, tab);
    EXPECT_EQ(d.Result, result) << "a failed OK leaves the result as it was";
  }
  // Stored, loaded, OK'd and stored again: the row must come back unchanged.
  void ExpectRoundTrip(Element e) {
    Insert(db_, e);
    const Element before = *Load(db_, ElementKind::Linesink, e.key);
    auto dialog = MakeElementDialog(ElementKind::Linesink);
    ASSERT_NE(dynamic_cast<L*>(dialog.get()), nullptr);
    dialog->LoadElement(db_, before);
    ScriptedUserInterface ui;
    ASSERT_TRUE(dialog->OK(db_, ui)) << (ui.Messages().empty() ? "" : ui.Messages()[0].Describe());
    Element after = before;
    dialog->StoreElement(after);
    EXPECT_EQ(after, before);
    EXPECT_FALSE(dialog->FormChanged());
  }
};

const char* kPositive = "Please enter a positive value.";

// ---------------------------------------------------------------------------
// OK.

TEST_F(LinesinkDialogTest, LabelMissingOrTaken) {
  StoredString("Taken");
  const Element s = StoredString("S1");
  L d = Loaded(s);
  EXPECT_TRUE(Passes(d)) << "its own label is no duplicate";
  d.TypeLabel("");
  ExpectRefused(d, "Data Missing", {"A unique Label must be specified."}, L::kLabelField, -1);
  d.TypeLabel("taken");
  ExpectRefused(d, "Duplicate Label",
                {"Linesink Label ('Taken') already exists!", "Please enter a new label."},
                L::kLabelField, -1);
}

TEST_F(LinesinkDialogTest, ARoutedStringNeedsAGradient) {
  const Element s = StoredString();
  L d = Loaded(s);
  d.ClickRouting(0, true);
  d.TypeField(L::kEndHead, "30");
  ExpectRefused(d, "Bad Entry",
                {"You may not have a linesink with routing enabled but no gradient.",
                 "Please set a starting head different from the ending head."},
                L::kStartHead, L::kGeneralTab);
  d.TypeField(L::kEndHead, "31");  // rising along the string: the caller checks the gradient
  EXPECT_TRUE(Passes(d));
  d.ClickRouting(0, false);
  d.TypeField(L::kEndHead, "30");
  EXPECT_TRUE(Passes(d)) << "equal heads are fine without routing";
}

TEST_F(LinesinkDialogTest, ADrainNeedsResistance) {
  const Element s = StoredString();
  L d = Loaded(s);
  d.ClickDrain();
  d.TypeField(L::kResistance, "0");
  d.TypeField(L::kWidth, "3");
  ExpectRefused(d, "Bad Entry", {"Linesinks specified as drains must have resistance"},
                L::kResistance, L::kGeneralTab);
}

TEST_F(LinesinkDialogTest, AllZeroPropertiesNeedTheFarFieldBox) {
  const std::vector<std::string> lines = {
      "All linesink properties are zero, but", "\"treat as far-field\" is unchecked.",
      "Check \"treat as far-field\"or enter", "non-zero property or properties."};
  const Element s = StoredString();
  L d = Loaded(s);
  d.TypeField(L::kResistance, "0");
  ExpectRefused(d, "Bad Entry", lines, L::kResistance, L::kGeneralTab);
  d.ClickFarField(true);
  EXPECT_TRUE(Passes(d));
  d.ClickFarField(false);
  d.TypeField(L::kDepth, "0.5");
  EXPECT_TRUE(Passes(d));
  d.TypeField(L::kDepth, "0");
  d.ClickHeadSpec(1);
  EXPECT_TRUE(Passes(d)) << "a discharge string may have zeros";
  // A new string has no properties yet.
  L fresh;
  fresh.LoadElement(db_, LinesinkDefaults());
  fresh.TypeLabel("New");
  ExpectRefused(fresh, "Bad Entry", lines, L::kResistance, L::kGeneralTab);
}

TEST_F(LinesinkDialogTest, NegativeNumbersInTheirOrder) {
  struct Case {
    int field;
    std::string message;
    int tab;
  };
  const std::vector<Case> cases = {
      {L::kResistance, "Resistance cannot be negative.", L::kGeneralTab},
      {L::kWidth, "Width cannot be negative.", L::kGeneralTab},
      {L::kDepth, "Depth cannot be negative.", L::kGeneralTab},
      {L::kOverlandFlow, "Overland Flow cannot be negative.", L::kRoutingTab},
      {L::kEndInflow, "End Inflow Flow cannot be negative.", L::kRoutingTab},
      {L::kPrecipitation, "Precipitation cannot be negative.", L::kRoutingTab},
  };
  const Element s = StoredString();
  for (const Case& c : cases) {
    SCOPED_TRACE(c.message);
    L d = Loaded(s);
    // A fault of the last field waits for this one.
    if (c.field != L::kPrecipitation) d.TypeField(L::kPrecipitation, "-2");
    d.TypeField(c.field, "-1");
    ExpectRefused(d, "Bad Entry", {c.message, kPositive}, c.field, c.tab);
  }
}

TEST_F(LinesinkDialogTest, TheLakeBottomLiesBelowBothLevels) {
  const Element s = StoredString();
  L d = Loaded(s);
  d.ClickLake();
  d.TypeField(L::kStartHead, "20");
  d.TypeField(L::kEndHead, "22");
  d.TypeField(L::kTotalDischarge, "21");
  ExpectRefused(d, "Bad Entry",
                {"Lake Bottom must be no greater than either of the estimated levels."},
                L::kTotalDischarge, L::kGeneralTab);
  d.TypeField(L::kTotalDischarge, "20");
  EXPECT_TRUE(Passes(d));
}

TEST_F(LinesinkDialogTest, ScenarioTags) {
  const std::vector<std::string> lines = {
      "You must specify a valid scenario tag.",
      "Scenario tags may not include spaces or the characters - , or _.",
      "Scenario tags may also not be '__NONE__'."};
  const Element s = StoredString();
  L d = Loaded(s);
  d.tbScenario[1] = "bad tag";
  EXPECT_TRUE(Passes(d)) << "no check without the box";
  d.ClickScenario(true);
  for (const std::string& tag :
       {std::string(13, 'k'), std::string(""), std::string("__NONE__"), std::string("a-b"),
        std::string("a_b"), std::string("a,b"), std::string("a b"), std::string("   ")}) {
    SCOPED_TRACE("[" + tag + "]");
    d.tbScenario[1] = tag;
    ExpectRefused(d, "Bad Entry", lines, L::kScenarioResistanceField, L::kScenariosTab);
    EXPECT_EQ(d.currentTab, L::kScenariosTab);
  }
  d.tbScenario[1] = std::string(12, 'k');
  EXPECT_TRUE(Passes(d));
  d.tbScenario[1] = "  rivK1  ";  // judged trimmed
  EXPECT_TRUE(Passes(d));
}

TEST_F(LinesinkDialogTest, EmptyFieldsReadAsZeroTheStageTableIncluded) {
  const Element s = StoredString();
  L d = Loaded(s);
  d.TypeField(L::kOutletTable, "");
  d.TypeField(L::kOverlandFlow, "");
  EXPECT_TRUE(Passes(d));
  EXPECT_EQ(d.tbdata[L::kOutletTable], "0");
  EXPECT_EQ(d.tbdata[L::kOverlandFlow], "0");
}

// ---------------------------------------------------------------------------
// The option rules.

TEST_F(LinesinkDialogTest, HeadAndDischargeSpecified) {
  const Element s = StoredString();
  L d = Loaded(s);
  EXPECT_EQ(d.option, L::kHeadSpecified);
  EXPECT_TRUE(d.tabEnabled[L::kRoutingTab]);
  EXPECT_TRUE(d.chkFarField.enabled);
  EXPECT_EQ(d.prompt[0].text, "Starting Head");
  EXPECT_EQ(d.unit[0].text, "meters");
  EXPECT_EQ(d.unit[L::kResistance].text, "days");
  EXPECT_FALSE(d.field[L::kTotalDischarge].visible);
  EXPECT_FALSE(d.field[L::kPrecipitation].visible);
  EXPECT_TRUE(d.field[L::kEndInflow].visible);

  d.ClickFarField(true);
  d.ClickHeadSpec(1);
  EXPECT_EQ(d.prompt[0].text, "Starting Sink Density");
  EXPECT_EQ(d.prompt[1].text, "Ending Sink Density");
  EXPECT_EQ(d.unit[1].text, "m^2/day");
  EXPECT_EQ(d.tbdata[L::kStartHead], "0") << "heads are no sink densities";
  EXPECT_EQ(d.tbdata[L::kEndHead], "0");
  EXPECT_FALSE(d.chkFarField.checked);
  EXPECT_FALSE(d.chkFarField.enabled);
  EXPECT_FALSE(d.tabEnabled[L::kRoutingTab]);
  for (int i : {2, 3, 4}) EXPECT_FALSE(d.field[i].enabled) << i;
  EXPECT_TRUE(d.field[0].enabled);

  d.ClickHeadSpec(0);
  EXPECT_EQ(d.prompt[0].text, "Starting Head");
  EXPECT_EQ(d.unit[0].text, "meters");
  EXPECT_EQ(d.prompt[L::kEndInflow].text, "End Inflow");
  EXPECT_TRUE(d.tabEnabled[L::kRoutingTab]);
  for (int i : {2, 3, 4}) EXPECT_TRUE(d.prompt[i].enabled) << i;
}

TEST_F(LinesinkDialogTest, DrainAndGallery) {
  const Element s = StoredString();
  L d = Loaded(s);
  d.ClickFarField(true);
  d.ClickDrain();
  EXPECT_FALSE(d.chkFarField.checked);
  EXPECT_FALSE(d.tabEnabled[L::kRoutingTab]);
  for (int i : {0, 1, 2, 3}) EXPECT_TRUE(d.field[i].enabled) << i;
  EXPECT_FALSE(d.field[L::kDepth].enabled);

  d.ClickRouting(0, true);
  d.ClickGallery();
  EXPECT_FALSE(d.chkRouting[0].checked);
  EXPECT_EQ(d.prompt[0].text, "Starting Head (Minimum)");
  EXPECT_EQ(d.prompt[1].text, "Ending Head (Minimum)");
  EXPECT_TRUE(d.field[L::kTotalDischarge].visible);
  EXPECT_TRUE(d.unit[L::kTotalDischarge].visible);
  EXPECT_EQ(d.prompt[L::kTotalDischarge].text, "Total Discharge:");
  EXPECT_EQ(d.unit[L::kTotalDischarge].text, "m^3/day");
  EXPECT_FALSE(d.field[L::kDepth].enabled);
  d.ClickDrain();
  EXPECT_FALSE(d.field[L::kTotalDischarge].visible);
}

TEST_F(LinesinkDialogTest, ALakeEdge) {
  UseFeet();
  const Element s = StoredString();
  L d = Loaded(s);
  d.ClickLake();
  EXPECT_EQ(d.prompt[0].text, "Estimated Level 1");
  EXPECT_EQ(d.prompt[1].text, "Estimated Level 2");
  EXPECT_EQ(d.prompt[L::kTotalDischarge].text, "Lake Bottom");
  EXPECT_EQ(d.unit[L::kTotalDischarge].text, "feet");
  EXPECT_TRUE(d.field[L::kTotalDischarge].visible);
  EXPECT_TRUE(d.chkRouting[0].checked);
  EXPECT_TRUE(d.chkRouting[1].checked);
  for (const L::Box& b : d.chkRouting) EXPECT_FALSE(b.enabled);
  EXPECT_EQ(d.prompt[L::kEndInflow].text, "Evapotranspiration");
  EXPECT_FALSE(d.field[L::kEndInflow].visible);
  EXPECT_TRUE(d.field[L::kEvapotranspiration].visible);
  EXPECT_TRUE(d.field[L::kEvapotranspiration].enabled);
  EXPECT_TRUE(d.field[L::kPrecipitation].visible);
  EXPECT_EQ(d.unit[6].text, "ft/day");
  EXPECT_EQ(d.unit[8].text, "ft/day");
  EXPECT_FALSE(d.field[L::kOutletTable].enabled);
  EXPECT_FALSE(d.chkFarField.enabled);
  EXPECT_TRUE(d.tabEnabled[L::kRoutingTab]);

  // Back to a stream: the routing boxes are cleared and the lake's fields go.
  d.ClickHeadSpec(0);
  EXPECT_FALSE(d.chkRouting[0].checked);
  EXPECT_TRUE(d.field[L::kEndInflow].visible);
  EXPECT_FALSE(d.field[L::kEvapotranspiration].visible);
  EXPECT_FALSE(d.field[L::kPrecipitation].visible);
}

TEST_F(LinesinkDialogTest, RoutingFarFieldAndScenarioBoxes) {
  const Element s = StoredString();
  L d = Loaded(s);
  EXPECT_FALSE(d.field[L::kOverlandFlow].enabled);
  d.ClickRouting(0, true);
  EXPECT_TRUE(d.field[L::kOverlandFlow].enabled);
  EXPECT_TRUE(d.field[L::kEndInflow].enabled);
  EXPECT_TRUE(d.chkRouting[3].enabled);
  EXPECT_FALSE(d.field[L::kOutletTable].enabled) << "no stage table but for an outlet";

  d.ClickRouting(3, true);  // an outlet stream reads its stage table
  EXPECT_TRUE(d.field[L::kOutletTable].enabled);
  EXPECT_TRUE(d.fileOutletFileEnabled);
  EXPECT_FALSE(d.chkRouting[2].enabled);
  d.ClickRouting(3, false);
  d.ClickRouting(2, true);  // an inlet stream ends in the lake
  EXPECT_TRUE(d.chkRouting[1].checked);
  EXPECT_FALSE(d.chkRouting[3].enabled);

  d.ClickFarField(true);
  for (int i : {2, 3, 4}) EXPECT_FALSE(d.field[i].enabled) << i;
  EXPECT_FALSE(d.tabEnabled[L::kRoutingTab]);
  d.ClickFarField(false);
  for (int i : {2, 3, 4}) EXPECT_TRUE(d.field[i].enabled) << i;
  EXPECT_TRUE(d.tabEnabled[L::kRoutingTab]);

  // The box brings back the tag's field, not the flux target name's.
  EXPECT_FALSE(d.scenarioField[1].enabled);
  d.ClickScenario(true);
  EXPECT_TRUE(d.scenarioField[1].enabled);
  EXPECT_FALSE(d.scenarioField[2].enabled);
}

TEST_F(LinesinkDialogTest, TheChangeFlagAndTheOutletFile) {
  db_.ExecuteRaw("update Project set TARNOBasePath='/data/stage tables'");
  const Element s = StoredString();
  L d = Loaded(s);
  EXPECT_FALSE(d.FormChanged());
  d.ClickRouting(0, true);
  d.ClickScenario(true);
  EXPECT_FALSE(d.FormChanged()) << "boxes alone do not set it";
  d.ClickAuto(2);
  EXPECT_TRUE(d.FormChanged());
  EXPECT_EQ(d.GetAuto(), 2);

  L e = Loaded(s);
  e.ChooseOutletFile("north.lake.stg");
  EXPECT_EQ(e.OutletTable(), "north.lake");
  EXPECT_TRUE(e.FormChanged());
  e.ChooseOutletFile("plain");
  EXPECT_EQ(e.OutletTable(), "plain");
  EXPECT_EQ(e.BasePath, "/data/stage tables")
      << "outlet files are listed from the project's folder";
}

// ---------------------------------------------------------------------------
// Rows.

TEST_F(LinesinkDialogTest, EveryKindOfStringGoesThroughUnchanged) {
  const std::vector<Vertex> v = {{0, 0, 0, 0, 0}, {0, 0, 0, 10, 0}, {0, 0, 0, 20, 0}};
  auto string = [&](const std::string& label) {
    Element e = LinesinkDefaults(v);
    e.row.Set("Label", label);
    e.row.Set("StartingHead", 12.5);
    e.row.Set("EndingHead", 11.0 + 0.1);
    e.row.Set("Resistance", 3.0);
    e.row.Set("Width", 4.0);
    e.row.Set("Depth", 0.5);
    e.row.Set("AutoSWIZC", 1);
    return e;
  };
  {
    SCOPED_TRACE("stream");
    Element e = string("Stream");
    e.row.Set("chkScenario", true);
    e.row.Set("ScenResistance", "rivk");
    e.row.Set("ScenFluxName", "flux1");
    ExpectRoundTrip(e);
  }
  {
    SCOPED_TRACE("far field");
    Element e = string("Far");
    for (const char* f : {"Resistance", "Width", "Depth"}) e.row.Set(f, 0.0);
    e.row.Set("Farfield", 1);
    ExpectRoundTrip(e);
  }
  {
    SCOPED_TRACE("routed outlet");
    Element e = string("Routed");
    e.row.Set("Routing", 1);
    e.row.Set("OutletStream", 1);
    e.row.Set("OutletTable", "lake1");
    e.row.Set("OverlandFlow", 0.25);
    e.row.Set("EndInflow", 100.0);
    ExpectRoundTrip(e);
  }
  {
    SCOPED_TRACE("discharge");
    Element e = string("Discharge");
    e.row.Set("HeadSpecified", 0);
    e.row.Set("StartingHead", -0.5);
    ExpectRoundTrip(e);
  }
  {
    SCOPED_TRACE("drain");
    Element e = string("Drain");
    e.row.Set("Drain", 1);
    e.row.Set("Depth", 0.0);
    ExpectRoundTrip(e);
  }
  {
    SCOPED_TRACE("gallery");
    Element e = string("Gallery");
    e.row.Set("Gallery", 1);
    e.row.Set("TotalDischarge", -500.0);
    ExpectRoundTrip(e);
  }
  {
    SCOPED_TRACE("lake");
    Element e = string("Lake");
    e.row.Set("Lake", -1);
    e.row.Set("Routing", 1);
    e.row.Set("EndStream", 1);
    e.row.Set("TotalDischarge", 5.0);
    e.row.Set("Precipitation", 0.002);
    e.row.Set("Evapotranspiration", 0.001);
    ExpectRoundTrip(e);
  }
}

TEST_F(LinesinkDialogTest, StoreWritesTheOptionsAsTheTableHoldsThem) {
  Element s = StoredString();
  L d = Loaded(s);
  d.ClickLake();
  d.TypeField(L::kTotalDischarge, "1");
  d.TypeField(L::kEvapotranspiration, "0.003");
  ASSERT_TRUE(Passes(d));
  d.StoreElement(s);
  EXPECT_EQ(s.row.Integer("Lake"), -1);
  EXPECT_EQ(s.row.Integer("HeadSpecified"), 1);
  EXPECT_EQ(s.row.Number("Evapotranspiration"), 0.003);

  L g = Loaded(s);
  EXPECT_TRUE(g.Lake()) << "the lake option is restored from its own flag";
  g.ClickGallery();
  ASSERT_TRUE(Passes(g));
  g.StoreElement(s);
  EXPECT_EQ(s.row.Integer("Lake"), 0);
  EXPECT_EQ(s.row.Integer("Gallery"), 1);
  EXPECT_EQ(s.row.Integer("HeadSpecified"), 1) << "a gallery is stored as head-specified";

  L q = Loaded(s);
  q.ClickHeadSpec(1);
  q.TypeField(L::kStartHead, "0.01");
  ASSERT_TRUE(Passes(q));
  q.StoreElement(s);
  EXPECT_EQ(s.row.Integer("HeadSpecified"), 0);
  EXPECT_EQ(s.row.Integer("Gallery"), 0);
  EXPECT_EQ(s.row.Number("StartingHead"), 0.01);
  Update(db_, s);
  EXPECT_EQ(*Load(db_, ElementKind::Linesink, s.key), s);
}

TEST_F(LinesinkDialogTest, AFarFieldStringLeavesTheStreamNetwork) {
  Element s = StoredString();
  s.row.Set("Routing", 1);
  s.row.Set("InletStream", 1);
  L d = Loaded(s);
  d.ClickFarField(true);
  ASSERT_TRUE(Passes(d));
  d.StoreElement(s);
  EXPECT_EQ(s.row.Integer("Farfield"), 1);
  for (const char* f : {"Routing", "EndStream", "InletStream", "OutletStream"})
    EXPECT_EQ(s.row.Integer(f), 0) << f;
}

TEST_F(LinesinkDialogTest, ScenarioTagsAreStoredWithTheirBox) {
  Element s = StoredString();
  L d = Loaded(s);
  EXPECT_EQ(d.Scenario_Resistance(), " ") << "no tag while the box is cleared";
  d.tbScenario[1] = "typed";
  ASSERT_TRUE(Passes(d));
  d.StoreElement(s);
  EXPECT_EQ(s.row.Text("ScenResistance"), "__NONE__");
  d.ClickScenario(true);
  d.tbScenario[1] = "rivK";
  d.tbScenario[2] = "gage3";
  ASSERT_TRUE(Passes(d));
  d.StoreElement(s);
  EXPECT_TRUE(s.row.Flag("chkScenario"));
  EXPECT_EQ(s.row.Text("ScenResistance"), "rivK");
  EXPECT_EQ(s.row.Text("ScenFluxName"), "gage3");
}

TEST_F(LinesinkDialogTest, ARoutedStringOfOneLinesinkLosesItsRouting) {
  Element s = LinesinkDefaults({{0, 0, 0, 0, 0}, {0, 0, 0, 10, 0}});
  s.row.Set("Label", "Short");
  s.row.Set("Routing", 1);
  ScriptedUserInterface ui;
  ui.ExpectMessage(
      "DATABASE INTEGRITY CHECK",
      {"The line-sink string 'Short' is part of a stream network,",
       "but contains only one line-sink.", " TARNO has disabled ",
       "stream flow for this string! After the database integrity",
       "check is complete you must:", "1) add at least one vertex to this line-sink string",
       "2) set the starting head different from the ending head",
       "3) check 'Use stream flow routing' on the Routing tab",
       "Failure to do this may corrupt your stream network."});
  EXPECT_TRUE(DisableRoutingOfShortString(s, true, ui));
  ui.Verify();
  EXPECT_EQ(s.row.Integer("Routing"), 0);

  s.row.Set("Routing", 1);
  EXPECT_FALSE(DisableRoutingOfShortString(s, false, ui)) << "only when the box is set";
  s.vertices.push_back({0, 0, 0, 20, 0});
  EXPECT_FALSE(DisableRoutingOfShortString(s, true, ui));
  EXPECT_EQ(s.row.Integer("Routing"), 1);
}

}  // namespace
}  // namespace tarno::testing
