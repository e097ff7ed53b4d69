// The well's dialog model: every check of OK with its exact texts and the field it
// points at, the enabling rules of the boxes, the change flags, the sign of the
// particle count, the defaults of a new well and the round trip through a row.
#include "elements/well_dialog.h"

#include <gtest/gtest.h>

#include "support/scripted_ui.h"
#include "dialog_test_support.h"
#include "elements/element_store.h"

namespace tarno::testing {
namespace {

using W = WellProperties;

class WellDialogTest : public DialogProject {
 protected:
  // A discharge well at (x, y) that passes every check, stored with label W1.
  Element StoredWell(const std::string& label = "W1", double x = 500, double y = 500) {
    Element e = WellDefaults(db_, x, y);
    e.row.Set("Label", label);
    Insert(db_, e);
    return e;
  }
  // The dialog filled from a stored well.
  W Loaded(const Element& e) {
    W d;
    d.LoadElement(db_, e);
    return d;
  }
  // Runs OK expecting one "Bad Entry"-like message; returns the dialog's verdict.
  bool ExpectRefused(W& d, const std::string& title, const std::vector<std::string>& lines) {
    ScriptedUserInterface ui;
    ui.ExpectMessage(title, lines).WithIcon(Icon::Exclamation);
    const bool ok = d.OK(db_, ui);
    ui.Verify();
    return ok;
  }
};

// ---------------------------------------------------------------------------
// OK: the checks in their order, their texts and the field each selects.

TEST_F(WellDialogTest, EachNumberCheckNamesItsFieldAndTab) {
  struct Case {
    int field;
    std::string text;
    std::vector<std::string> lines;
    int tab;
  };
  const std::string again = "Please enter a new value.";
  const std::vector<Case> cases = {
      {W::kRadius, "0", {"Radius must be greater than 0.", again}, W::kGeneralTab},
      {W::kRadius, "-2", {"Radius must be greater than 0.", again}, W::kGeneralTab},
      {W::kTopElev,
       "60.5",
       {"Top of Screen must be between the local base and the aquifer top.",
        "The local base is 10 and the auifer top is 60.", again},
       W::kGeometryTab},
      {W::kTopElev,
       "9.5",
       {"Top of Screen must be between the local base and the aquifer top.",
        "The local base is 10 and the auifer top is 60.", again},
       W::kGeometryTab},
      {W::kBottomElev,
       "9.99",
       {"Bottom of Screen must be greater than or equal to the local base.",
        "The local base at this well is 10", again},
       W::kGeometryTab},
      {W::kSS, "1.01", {"Storage Coefficient must be between 0 and 1.", again}, W::kTransientTab},
      {W::kSS, "-0.01", {"Storage Coefficient must be between 0 and 1.", again}, W::kTransientTab},
      {W::kCycles, "-1", {"Number of Cycles must be positive.", again}, W::kTransientTab},
      {W::kSetback, "-0.5", {"Setback Radius must be positive.", again}, W::kOtherTab},
  };
  const Element well = StoredWell();
  for (const Case& c : cases) {
    SCOPED_TRACE(std::to_string(c.field) + " = " + c.text);
    W d = Loaded(well);
    d.TypeField(c.field, c.text);
    EXPECT_FALSE(ExpectRefused(d, "Bad Entry", c.lines));
    EXPECT_EQ(d.failedField, c.field);
    EXPECT_EQ(d.failedTab, c.tab);
    EXPECT_EQ(d.Result, 2) << "a failed OK leaves the result";
  }
}

TEST_F(WellDialogTest, TheTimeMessageFollowsTheCyclicBox) {
  const Element well = StoredWell();
  W d = Loaded(well);
  d.TypeField(W::kTime, "-1");
  EXPECT_FALSE(ExpectRefused(d, "Bad Entry",
                             {"Starting Time must be positive.", "Please enter a new value."}));
  d.ClickTransient(1, true);
  EXPECT_FALSE(ExpectRefused(
      d, "Bad Entry", {"On/Off Time Period must be positive.", "Please enter a new value."}));
  EXPECT_EQ(d.failedField, W::kTime);
}

TEST_F(WellDialogTest, ZeroesAndBoundsThatPass) {
  const Element well = StoredWell();
  W d = Loaded(well);
  d.TypeField(W::kTime, "0");
  d.TypeField(W::kCycles, "0");
  d.TypeField(W::kSetback, "0");
  d.TypeField(W::kTopElev, "60");     // the aquifer top itself
  d.TypeField(W::kBottomElev, "10");  // the local base itself
  d.TypeField(W::kSS, "1");
  d.TypeField(W::kStartElev, "1000");  // not tested while tracing is off
  ScriptedUserInterface ui;
  EXPECT_TRUE(d.OK(db_, ui));
  ui.Verify();
  EXPECT_EQ(d.Result, 1);
  EXPECT_TRUE(ui.Messages().empty());
}

TEST_F(WellDialogTest, AnEmptiedFieldReadsAsZero) {
  const Element well = StoredWell();
  W d = Loaded(well);
  d.TypeField(W::kRadius, "");
  d.TypeField(W::kHead, "");
  EXPECT_FALSE(ExpectRefused(d, "Bad Entry",
                             {"Radius must be greater than 0.", "Please enter a new value."}));
  EXPECT_EQ(d.tbData[W::kRadius], "0");
  EXPECT_EQ(d.tbData[W::kHead], "0");
  // A number with trailing text reads as far as it goes.
  d.TypeField(W::kRadius, "2.5ft");
  ScriptedUserInterface ui;
  EXPECT_TRUE(d.OK(db_, ui));
  EXPECT_EQ(d.Radius(), 2.5);
}

TEST_F(WellDialogTest, TheChecksStopAtTheFirstFailure) {
  const Element well = StoredWell();
  W d = Loaded(well);
  d.TypeField(W::kSetback, "-1");
  d.TypeField(W::kSS, "2");
  d.TypeField(W::kRadius, "0");
  d.TypeLabel("has blank");
  EXPECT_FALSE(ExpectRefused(d, "Invalid Label",
                             {"Well label cannot contain spaces or commas, be blank, or be larger "
                              "than 32 characters.",
                              "Please enter a new label"}));
  EXPECT_EQ(d.failedField, W::kLabelField);
  EXPECT_EQ(d.failedTab, -1);
  d.TypeLabel("W1");
  EXPECT_FALSE(ExpectRefused(d, "Bad Entry",
                             {"Radius must be greater than 0.", "Please enter a new value."}));
  d.TypeField(W::kRadius, "1");
  EXPECT_FALSE(
      ExpectRefused(d, "Bad Entry",
                    {"Storage Coefficient must be between 0 and 1.", "Please enter a new value."}));
}

TEST_F(WellDialogTest, LabelsDuplicateTooLongBlankOrWithComma) {
  StoredWell("Other");
  const Element well = StoredWell("W1", 600, 600);
  W d = Loaded(well);
  {
    ScriptedUserInterface ui;
    EXPECT_TRUE(d.OK(db_, ui)) << "its own unchanged label is no duplicate";
  }
  d.TypeLabel("Other");
  EXPECT_FALSE(ExpectRefused(
      d, "Duplicate Label", {"Well Label ('Other') already exists!", "Please enter a new label."}));
  // The project compares labels without regard to case; the message names the row found.
  d.TypeLabel("OTHER");
  EXPECT_FALSE(ExpectRefused(
      d, "Duplicate Label", {"Well Label ('Other') already exists!", "Please enter a new label."}));

  const std::vector<std::string> invalid = {
      "Well label cannot contain spaces or commas, be blank, or be larger than 32 characters.",
      "Please enter a new label"};
  for (const std::string& label :
       {std::string(33, 'A'), std::string(" "), std::string("a,b"), std::string("")}) {
    SCOPED_TRACE("[" + label + "]");
    d.TypeLabel(label);
    EXPECT_FALSE(ExpectRefused(d, "Invalid Label", invalid));
  }
  d.TypeLabel(std::string(32, 'A'));
  ScriptedUserInterface ui;
  EXPECT_TRUE(d.OK(db_, ui));
}

TEST_F(WellDialogTest, TheLocalBaseComesFromTheInhomogeneityAtTheWell) {
  RaiseBaseOverSquare(20);
  const Element inside = StoredWell("In", 50, 50);
  EXPECT_EQ(inside.row.Number("BottomElev"), 20) << "a new well is screened from the local base";
  W d = Loaded(inside);
  d.TypeField(W::kBottomElev, "15");
  EXPECT_FALSE(ExpectRefused(d, "Bad Entry",
                             {"Bottom of Screen must be greater than or equal to the local base.",
                              "The local base at this well is 20", "Please enter a new value."}));
  // Moved out of the raised square, the same bottom is above the model's base.
  d.TypeField(W::kX, "150");
  ScriptedUserInterface ui;
  EXPECT_TRUE(d.OK(db_, ui));
  EXPECT_EQ(d.localBase, 10);
}

TEST_F(WellDialogTest, TracingChecksTheCountAndTheStartingElevation) {
  const Element well = StoredWell();
  W d = Loaded(well);
  d.ClickTrace(true);
  d.TypeField(W::kNParticles, "0");
  EXPECT_FALSE(
      ExpectRefused(d, "Bad Entry",
                    {"Number of Particles must be greater than 0.", "Please enter a new value."}));
  EXPECT_EQ(d.failedTab, W::kOtherTab);
  d.TypeField(W::kNParticles, "8");
  d.TypeField(W::kStartElev, "61");
  EXPECT_FALSE(ExpectRefused(
      d, "Bad Entry",
      {"Starting Elevation must be between the local base and the aquifer top.",
       "The local base is 10 and the aquifer top is 60.", "Please enter a new value."}));
  EXPECT_EQ(d.failedField, W::kStartElev);
}

TEST_F(WellDialogTest, AHiddenOrDisabledFieldStillBlocksOK) {
  const Element well = StoredWell();
  W d = Loaded(well);
  d.ClickHeadSpec(0);
  d.ClickPond(true);
  ASSERT_FALSE(d.field[W::kBottomElev].visible);
  d.TypeField(W::kTopElev, "65");  // a pond above the aquifer top
  EXPECT_FALSE(ExpectRefused(
      d, "Bad Entry",
      {"Top of Screen must be between the local base and the aquifer top.",
       "The local base is 10 and the auifer top is 60.", "Please enter a new value."}));
  d.TypeField(W::kTopElev, "50");
  d.TypeField(W::kBottomElev, "5");
  EXPECT_FALSE(ExpectRefused(d, "Bad Entry",
                             {"Bottom of Screen must be greater than or equal to the local base.",
                              "The local base at this well is 10", "Please enter a new value."}));
  d.TypeField(W::kBottomElev, "10");
  ASSERT_FALSE(d.field[W::kSS].enabled);
  d.TypeField(W::kSS, "3");
  EXPECT_FALSE(
      ExpectRefused(d, "Bad Entry",
                    {"Storage Coefficient must be between 0 and 1.", "Please enter a new value."}));
}

// ---------------------------------------------------------------------------
// The enabling rules.

TEST_F(WellDialogTest, ADischargeWellOffersEverythingButTheTracingFields) {
  const Element well = StoredWell();
  W d = Loaded(well);
  EXPECT_FALSE(d.HeadSpecified());
  EXPECT_EQ(d.field[W::kHead].prompt, "Discharge");
  EXPECT_EQ(d.field[W::kHead].unit, "m^3/day");
  EXPECT_EQ(d.field[W::kX].unit, "meters");
  EXPECT_EQ(d.field[W::kTopElev].prompt, "Top of screen");
  EXPECT_EQ(d.field[W::kSS].unit, "(dimensionless)");
  EXPECT_EQ(d.field[W::kTime].unit, "days");
  EXPECT_EQ(d.field[W::kTime].prompt, "Starting Time");
  for (int i :
       {W::kTopElev, W::kBottomElev, W::kSS, W::kStartHead, W::kTime, W::kCycles, W::kSetback})
    EXPECT_TRUE(d.field[i].enabled) << i;
  EXPECT_TRUE(d.chkTransient[0].enabled);
  EXPECT_FALSE(d.field[W::kNParticles].enabled);
  EXPECT_FALSE(d.field[W::kStartElev].enabled);
  d.ClickTrace(true);
  EXPECT_TRUE(d.field[W::kNParticles].enabled);
  EXPECT_TRUE(d.field[W::kStartElev].enabled);
}

TEST_F(WellDialogTest, AHeadSpecifiedWellHasNoTransientState) {
  const Element well = StoredWell();
  W d = Loaded(well);
  d.ClickTransient(0, true);
  d.ClickHeadSpec(0);
  EXPECT_EQ(d.field[W::kHead].prompt, "Head");
  EXPECT_EQ(d.field[W::kHead].unit, "meters");
  EXPECT_FALSE(d.chkTransient[0].checked) << "cleared, not only greyed";
  EXPECT_FALSE(d.chkTransient[0].enabled);
  EXPECT_FALSE(d.chkTransient[1].enabled);
  for (int i : {W::kSS, W::kStartHead, W::kTime, W::kCycles}) EXPECT_FALSE(d.field[i].enabled);
  EXPECT_TRUE(d.chkTrace.enabled);
  EXPECT_TRUE(d.field[W::kSetback].enabled);
  // The transient state had greyed the screen; the head-specified rules leave it so.
  EXPECT_FALSE(d.field[W::kTopElev].enabled);
  EXPECT_FALSE(d.field[W::kBottomElev].enabled);
}

TEST_F(WellDialogTest, APondTurnsTheScreenIntoThePondElevation) {
  const Element well = StoredWell();
  W d = Loaded(well);
  d.ClickTrace(true);
  d.ClickPond(true);  // a pond with a given rate
  EXPECT_EQ(d.field[W::kHead].unit, "m/day");
  EXPECT_EQ(d.field[W::kTopElev].prompt, "Pond elevation");
  EXPECT_FALSE(d.field[W::kBottomElev].visible);
  EXPECT_TRUE(d.chkPPWell.enabled);
  EXPECT_FALSE(d.chkTransient[0].enabled);
  EXPECT_FALSE(d.chkTrace.enabled);
  for (int i : {W::kSetback, W::kNParticles, W::kStartElev}) EXPECT_FALSE(d.field[i].enabled);

  d.ClickHeadSpec(0);  // a pond with a given elevation
  EXPECT_EQ(d.field[W::kHead].unit, "meters");
  EXPECT_FALSE(d.chkTrace.checked) << "a head-specified pond traces nothing";
  EXPECT_EQ(d.field[W::kNParticles].unit, "");
  EXPECT_FALSE(d.field[W::kBottomElev].visible);

  d.ClickPond(false);
  EXPECT_EQ(d.field[W::kTopElev].prompt, "Top of screen");
  EXPECT_TRUE(d.field[W::kBottomElev].visible);
  EXPECT_TRUE(d.chkTrace.enabled);
}

TEST_F(WellDialogTest, TransientAndPartialPenetrationExcludeEachOther) {
  const Element well = StoredWell();
  W d = Loaded(well);
  d.ClickPPWell(true);
  EXPECT_FALSE(d.chkTransient[0].enabled);
  EXPECT_FALSE(d.field[W::kSS].enabled);
  d.ClickPPWell(false);
  d.ClickTransient(0, true);
  EXPECT_FALSE(d.chkPond.enabled);
  EXPECT_FALSE(d.chkPPWell.enabled);
  EXPECT_FALSE(d.field[W::kTopElev].enabled);
  EXPECT_FALSE(d.field[W::kBottomElev].enabled);
  EXPECT_FALSE(d.chkTrace.enabled);
  EXPECT_FALSE(d.field[W::kSetback].enabled);

  d.ClickTransient(1, true);
  EXPECT_EQ(d.field[W::kTime].prompt, "On/Off Time Period");
  d.ClickTransient(1, false);
  EXPECT_EQ(d.field[W::kTime].prompt, "Starting Time");
  // Cyclic pumping stays settable without the transient function.
  d.ClickTransient(0, false);
  d.ClickTransient(1, true);
  EXPECT_TRUE(d.Cyclic());
  EXPECT_FALSE(d.Transient());
  EXPECT_TRUE(d.field[W::kTopElev].enabled);
  EXPECT_TRUE(d.field[W::kSetback].enabled);
  // Only the head-specified rules give the trace box back.
  EXPECT_FALSE(d.chkTrace.enabled);
}

TEST_F(WellDialogTest, FeetProjectsShowFeet) {
  UseFeet();
  const Element well = StoredWell();
  W d = Loaded(well);
  EXPECT_EQ(d.field[W::kHead].unit, "ft^3/day");
  EXPECT_EQ(d.field[W::kRadius].unit, "feet");
  EXPECT_EQ(d.field[W::kX].unit, "feet");
  d.ClickPond(true);
  EXPECT_EQ(d.field[W::kHead].unit, "ft/day");
}

// ---------------------------------------------------------------------------
// Change tracking, focus and particles.

TEST_F(WellDialogTest, WhatSetsTheChangeFlags) {
  const Element well = StoredWell();
  W d = Loaded(well);
  EXPECT_FALSE(d.FormChanged());
  EXPECT_FALSE(d.NeedRetrace());
  d.TypeLabel("Renamed");
  EXPECT_FALSE(d.FormChanged()) << "the label changes neither";
  d.ClickTrace(true);
  EXPECT_TRUE(d.NeedRetrace());
  EXPECT_FALSE(d.FormChanged());
  d.init();
  d.ClickPond(true);
  EXPECT_TRUE(d.FormChanged());
  EXPECT_FALSE(d.NeedRetrace());
  d.init();
  d.TypeField(W::kHead, "250");
  EXPECT_TRUE(d.FormChanged());
  EXPECT_TRUE(d.NeedRetrace());
  d.init();
  d.TypeField(W::kHead, "250");
  EXPECT_FALSE(d.FormChanged()) << "the same text is no change";
}

TEST_F(WellDialogTest, LeavingAFieldFillsTheEmptyOnesAndActivationPicksTheFocus) {
  W d;
  d.tbData[W::kHead] = "";
  d.tbData[W::kSS] = "";
  d.LeaveField();
  EXPECT_EQ(d.tbData[W::kHead], "0");
  EXPECT_EQ(d.tbData[W::kSS], "0");
  EXPECT_TRUE(d.Activate()) << "an empty label takes the focus";
  d.TypeLabel("W9");
  EXPECT_FALSE(d.Activate());
  EXPECT_EQ(d.OldLabel(), "W9");
}

TEST_F(WellDialogTest, TheParticleCountCarriesTheTraceBoxInItsSign) {
  W d;
  d.SetNParticles(12);
  EXPECT_TRUE(d.chkTrace.checked);
  EXPECT_EQ(d.tbData[W::kNParticles], "12");
  EXPECT_EQ(d.NParticles(), 12);
  d.SetNParticles(-12);
  EXPECT_FALSE(d.chkTrace.checked);
  EXPECT_EQ(d.tbData[W::kNParticles], "12") << "the count is kept while tracing is off";
  EXPECT_EQ(d.NParticles(), -12);
  d.SetNParticles(0);
  EXPECT_FALSE(d.chkTrace.checked);
  EXPECT_EQ(d.NParticles(), 0);

  // Stored: an untraced well keeps its count as a negative number.
  Element well = StoredWell();
  well.row.Set("NParticles", 6);
  Update(db_, well);
  W loaded = Loaded(well);
  EXPECT_TRUE(loaded.chkTrace.checked);
  loaded.ClickTrace(false);
  loaded.TypeField(W::kStartElev, "-500");  // untested while tracing is off
  ScriptedUserInterface ui;
  ASSERT_TRUE(loaded.OK(db_, ui));
  loaded.StoreElement(well);
  EXPECT_EQ(well.row.Integer("NParticles"), -6);
}

// ---------------------------------------------------------------------------
// Defaults and the round trip.

TEST_F(WellDialogTest, ANewWellsDefaults) {
  RaiseBaseOverSquare(20);
  const Element e = WellDefaults(db_, 50, 50);
  EXPECT_EQ(e.X(), 50);
  EXPECT_EQ(e.vertices.front().PID, -1);
  EXPECT_EQ(e.Label(), "");
  EXPECT_EQ(e.row.Number("Radius"), 1);
  EXPECT_EQ(e.row.Number("BottomElev"), 20);
  EXPECT_EQ(e.row.Number("TopElev"), 60);
  EXPECT_EQ(e.row.Number("StartElev"), 10);
  EXPECT_EQ(e.row.Number("Setback"), 0) << "not the table's default of 1";
  EXPECT_EQ(e.row.Integer("NParticles"), 0) << "not the table's default of -1";
  EXPECT_FALSE(e.row.Flag("HeadSpecified"));

  W d;
  d.LoadElement(db_, e);
  EXPECT_TRUE(d.Activate());
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled("Invalid Label");
  EXPECT_FALSE(d.OK(db_, ui)) << "a new well needs its label";
  d.TypeLabel("New1");
  EXPECT_TRUE(d.OK(db_, ui));
  ui.Verify();
}

TEST_F(WellDialogTest, LoadThenStoreLeavesTheRowAsItWas) {
  Element e = StoredWell("Full");
  e.row.Set("HeadSpecified", true);
  e.row.Set("Head", 0.1 + 0.2);  // no short decimal form
  e.row.Set("Radius", 0.3048);
  e.row.Set("PPWell", true);
  e.row.Set("TopElev", 55.5);
  e.row.Set("BottomElev", 12.25);
  e.row.Set("Transient", true);  // held although the head-specified rules clear the box
  e.row.Set("Cyclic", true);
  e.row.Set("SS", 1e-5);
  e.row.Set("StartHead", 42.0);
  e.row.Set("Time", 30.0);
  e.row.Set("Cycles", 4);
  e.row.Set("Setback", 25.0);
  e.row.Set("NParticles", -9);
  e.row.Set("StartElev", 33.0);
  e.vertices.front().X = 1234.5678901234567;
  Update(db_, e);
  const Element before = *Load(db_, ElementKind::Well, e.key);

  auto dialog = MakeElementDialog(ElementKind::Well);
  ASSERT_NE(dynamic_cast<W*>(dialog.get()), nullptr);
  dialog->LoadElement(db_, before);
  ScriptedUserInterface ui;
  ASSERT_TRUE(dialog->OK(db_, ui)) << ui.Messages().size();
  Element after = before;
  dialog->StoreElement(after);
  // The one thing a loaded head-specified well loses is its transient box.
  EXPECT_FALSE(after.row.Flag("Transient"));
  after.row.Set("Transient", true);
  EXPECT_EQ(after, before);

  // A plain discharge well goes through unchanged, and so does the file.
  const Element plain = *Load(db_, ElementKind::Well, StoredWell("Plain", 700, 700).key);
  W d = Loaded(plain);
  ASSERT_TRUE(d.OK(db_, ui));
  Element stored = plain;
  d.StoreElement(stored);
  Update(db_, stored);
  EXPECT_EQ(*Load(db_, ElementKind::Well, plain.key), plain);
}

TEST_F(WellDialogTest, StoreWritesTheTypedValuesAndThePosition) {
  Element e = StoredWell();
  W d = Loaded(e);
  d.TypeLabel("Moved");
  d.TypeField(W::kX, "111.5");
  d.TypeField(W::kY, "222.25");
  d.TypeField(W::kHead, "-350");
  d.TypeField(W::kCycles, "2.5");  // stored in a whole-number field, ties to even
  d.ClickHeadSpec(0);
  ScriptedUserInterface ui;
  ASSERT_TRUE(d.OK(db_, ui));
  d.StoreElement(e);
  Update(db_, e);
  const Element back = *Load(db_, ElementKind::Well, e.key);
  EXPECT_EQ(back.Label(), "Moved");
  EXPECT_EQ(back.X(), 111.5);
  EXPECT_EQ(back.Y(), 222.25);
  EXPECT_EQ(back.row.Number("Head"), -350);
  EXPECT_EQ(back.row.Integer("Cycles"), 2);
  EXPECT_TRUE(back.row.Flag("HeadSpecified"));
}

}  // namespace
}  // namespace tarno::testing
