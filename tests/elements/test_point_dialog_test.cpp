// The test point dialog: its checks in order with their exact texts, the one field
// that serves the observed head or the stream flow by type, and the write-back.
#include "elements/test_point_dialog.h"

#include <gtest/gtest.h>

#include <string>

#include "support/scripted_ui.h"
#include "dialog_project.h"

namespace tarno::testing {
namespace {

using Field = TestPointProperties::Field;

class TestPointDialogTest : public ObservationProject {
 protected:
  Element TestPoint(const std::string& label, double x, double y,
                    const std::string& type = "Piezometer", double head = 0, double flow = 0) {
    Element e = NewElement(ElementKind::TestPoint, Point(x, y));
    e.row.Set("Label", label);
    e.row.Set("Type", type);
    e.row.Set("ObsHead", head);
    e.row.Set("ObsStreamFlow", flow);
    return Stored(e);
  }
  // OK on the dialog expecting one refusal: its title, lines and field.
  void ExpectRefused(TestPointProperties& d, const std::string& title,
                     const std::vector<std::string>& lines, Field field) {
    ScriptedUserInterface ui;
    ui.ExpectMessage(title, lines).WithIcon(Icon::Exclamation);
    EXPECT_FALSE(d.OK(db_, ui));
    ui.Verify();
    EXPECT_EQ(d.failedField, field);
  }
  void ExpectAccepted(TestPointProperties& d) {
    ScriptedUserInterface ui;
    EXPECT_TRUE(d.OK(db_, ui));
    ui.Verify();
    EXPECT_EQ(d.Result, 1);
  }
};

const std::vector<std::string> kInvalidLabel = {
    "Test Point label cannot contain spaces or commas, be blank, or be larger than 20 "
    "characters.",
    "Please enter a new label"};
const std::vector<std::string> kInvalidEntry = {"Invalid data value.  Please re-enter"};

TEST_F(TestPointDialogTest, LabelChecksComeInTheirOrder) {
  TestPoint("OW-1", 10, 20);
  TestPointProperties d;
  d.LoadElement(db_, NewElement(ElementKind::TestPoint, Point(5, 5)));

  // The project compares labels without regard to case; the message shows the label
  // as typed. The duplicate check comes before the form of the label.
  d.tbLabel = "ow-1";
  EXPECT_EQ(d.Result, 2);
  ExpectRefused(d, "Duplicate Label",
                {"Test Point Label ('ow-1') already exists!", "Please enter a new label."},
                Field::Label);

  // A blank is refused although other elements may hold one: it splits the label
  // in the files of parameter estimation.
  for (const std::string bad : {"OW 2", "OW,2", "", "ABCDEFGHIJKLMNOPQRSTU"}) {
    SCOPED_TRACE(bad);
    d.tbLabel = bad;
    ExpectRefused(d, "Invalid Label", kInvalidLabel, Field::Label);
  }
  EXPECT_EQ(d.Result, 2) << "a refused OK leaves the dialog open";
  d.tbLabel = "ABCDEFGHIJKLMNOPQRST";  // 20 characters
  ExpectAccepted(d);
}

TEST_F(TestPointDialogTest, NumbersAreCheckedAfterTheLabelFieldByField) {
  TestPointProperties d;
  d.LoadElement(db_, NewElement(ElementKind::TestPoint, Point(5, 5)));
  d.tbLabel = "OW 1";
  d.tbX = "abc";
  ExpectRefused(d, "Invalid Label", kInvalidLabel, Field::Label);
  d.tbLabel = "OW1";
  ExpectRefused(d, "Invalid Entry", kInvalidEntry, Field::X);
  d.tbX = "1.5E3";
  d.tbY = "1.2.3";
  ExpectRefused(d, "Invalid Entry", kInvalidEntry, Field::Y);
  d.tbY = "-7";
  d.tbObs = "5-";
  ExpectRefused(d, "Invalid Entry", kInvalidEntry, Field::Obs);
  d.tbObs = "";  // an empty field reads as 0
  ExpectAccepted(d);
  EXPECT_DOUBLE_EQ(d.X(), 1500.0);
  EXPECT_DOUBLE_EQ(d.Y(), -7.0);
  EXPECT_DOUBLE_EQ(d.ObsHead(), 0.0);
}

TEST_F(TestPointDialogTest, AStoredPointIsNoDuplicateOfItselfButOfAnother) {
  const Element one = TestPoint("OW-1", 10, 20);
  TestPoint("OW-2", 30, 40);
  TestPointProperties d;
  d.LoadElement(db_, one);
  ExpectAccepted(d);
  d.tbLabel = "OW-2";
  ExpectRefused(d, "Duplicate Label",
                {"Test Point Label ('OW-2') already exists!", "Please enter a new label."},
                Field::Label);
}

TEST_F(TestPointDialogTest, TheObservationFieldServesTheValueOfTheType) {
  const Element gage = TestPoint("G1", 0, 0, "Gage", 112.5, 3400);
  TestPointProperties d;
  d.LoadElement(db_, gage);
  EXPECT_EQ(d.TPType, TestPointType::Gage);
  EXPECT_EQ(d.tbObs, "3400");
  EXPECT_EQ(d.lblObserved, "Observed Stream Flow");
  EXPECT_EQ(d.lblUnit, "m^3/day");
  EXPECT_EQ(d.lblNote, TestPointProperties::kFirstNote) << "the note changes with a pick only";

  d.SelectType(TestPointType::Piezometer);
  EXPECT_EQ(d.tbObs, "112.5");
  EXPECT_EQ(d.lblObserved, "Observed Head");
  EXPECT_EQ(d.lblUnit, "m");
  EXPECT_EQ(d.lblNote, TestPointProperties::kFirstNote);

  d.tbObs = "113";
  d.SelectType(TestPointType::LakeStage);  // a stage is a head: the text stays
  EXPECT_EQ(d.tbObs, "113");
  EXPECT_EQ(d.lblObserved, "Observed Stage");
  EXPECT_EQ(d.lblNote, "* Place near linesink boundary of lake.");

  d.SelectType(TestPointType::Gage);
  EXPECT_EQ(d.tbObs, "3400");
  EXPECT_EQ(d.lblNote, "* Place near linesink where stream flow is to be measured.");
  d.tbObs = "3500";

  Element e = gage;
  d.StoreElement(e);
  EXPECT_EQ(e.row.Text("Type"), "Gage");
  EXPECT_DOUBLE_EQ(e.row.Number("ObsHead"), 113.0);
  EXPECT_DOUBLE_EQ(e.row.Number("ObsStreamFlow"), 3500.0);
}

TEST_F(TestPointDialogTest, FeetProjectsShowFeet) {
  db_.ExecuteRaw("update Model set ComputeMeters=0, BasemapMeters=0");
  TestPointProperties d;
  d.LoadElement(db_, TestPoint("G1", 0, 0, "Gage"));
  EXPECT_EQ(d.lblUnit, "ft^3/day");
  EXPECT_EQ(d.lblCoordinateUnit, "feet");
  d.SelectType(TestPointType::Piezometer);
  EXPECT_EQ(d.lblUnit, "ft");
}

TEST_F(TestPointDialogTest, AnUnchangedDialogWritesTheElementBackAsItWas) {
  // Values that the shown text does not hold exactly, and an optional field left
  // empty in the file.
  Element e = NewElement(ElementKind::TestPoint, Point(0.1 + 0.2, 1.0 / 3.0));
  e.row.Set("Label", "OW-1");
  e.row.Set("ObsHead", 2.0 / 3.0);
  e.row.Set("ObsStreamFlow", Value{});
  e.row.Set("PESTWeight", 0.25);
  const Element stored = Stored(e);

  TestPointProperties d;
  d.LoadElement(db_, stored);
  EXPECT_FALSE(d.FormChanged());
  Element back = stored;
  d.StoreElement(back);
  EXPECT_EQ(back, stored);

  d.tbX = "12.5";
  EXPECT_TRUE(d.FormChanged());
  d.StoreElement(back);
  EXPECT_DOUBLE_EQ(back.vertices.front().X, 12.5);
  EXPECT_DOUBLE_EQ(back.vertices.front().Y, 1.0 / 3.0);
  EXPECT_DOUBLE_EQ(back.row.Number("PESTWeight"), 0.25) << "an edit keeps the weights";
  Update(db_, back);
  EXPECT_EQ(*Load(db_, ElementKind::TestPoint, stored.key), back);
}

TEST_F(TestPointDialogTest, ANewPointStartsAsAPiezometerAndChangesTheModel) {
  TestPointProperties d;
  d.init("TP1", 100, 200);
  EXPECT_EQ(d.tbLabel, "TP1");
  EXPECT_EQ(d.tbX, "100");
  EXPECT_EQ(d.tbObs, "0");
  EXPECT_EQ(d.TPType, TestPointType::Piezometer);
  EXPECT_TRUE(d.FormChanged());
  Element e = NewElement(ElementKind::TestPoint);
  d.StoreElement(e);
  ASSERT_EQ(e.vertices.size(), 1u);
  EXPECT_DOUBLE_EQ(e.vertices[0].Y, 200.0);
  EXPECT_EQ(e.vertices[0].PID, -1);
}

TEST_F(TestPointDialogTest, DefaultsForTheAddingOfAPoint) {
  EXPECT_EQ(DefaultTestPointLabel(db_), "TP1");
  TestPoint("TP2", 0, 0);  // one point, whose label is the next free number's
  EXPECT_EQ(DefaultTestPointLabel(db_), "TP3");

  EXPECT_EQ(TestPointTypeFromText("gauge"), TestPointType::Gage);
  EXPECT_EQ(TestPointTypeFromText("LAKE STAGE"), TestPointType::LakeStage);
  EXPECT_EQ(TestPointTypeFromText("well"), TestPointType::Piezometer);

  Element gage = NewElement(ElementKind::TestPoint, Point(0, 0));
  gage.row.Set("Type", "Gage");
  ApplyDefaultWeights(gage);
  EXPECT_DOUBLE_EQ(gage.row.Number("PESTWeight"), 0.0001);
  EXPECT_DOUBLE_EQ(gage.row.Number("UCODEWeight"), 0.1);
  gage.row.Set("Type", "Lake Stage");
  ApplyDefaultWeights(gage);
  EXPECT_DOUBLE_EQ(gage.row.Number("PESTWeight"), 1.0);
  EXPECT_DOUBLE_EQ(gage.row.Number("UCODEWeight"), 10.0);
}

TEST(NumberEntryTest, WhatAFieldAccepts) {
  for (const char* good : {"", "  ", "0", "-12.5", "+3", ".5", "5.", "1E3", "1.5e-05", " 7 "})
    EXPECT_TRUE(IsNumberEntry(good)) << good;
  for (const char* bad : {"abc", "1.2.3", "5-", "1E", "E5", "-", ".", "1e999", "12abc", "1 2"})
    EXPECT_FALSE(IsNumberEntry(bad)) << bad;
  EXPECT_TRUE(IsWholeEntry("12", 1, 20));
  EXPECT_FALSE(IsWholeEntry("12.5", 1, 20));
  EXPECT_FALSE(IsWholeEntry("21", 1, 20));
}

}  // namespace
}  // namespace tarno::testing
