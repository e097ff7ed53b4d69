// The views of the test point, particle, name-and-colour and text label dialogs,
// built without exec(): filled from the elements of an example, OK on an unchanged
// dialog writes nothing new, refused fields come forward, and the enabling rules
// reach the widgets.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "app/dialog_views.h"
#include "app/views/flux_inspect_view.h"
#include "app/views/particle_view.h"
#include "app/views/test_point_view.h"
#include "app/views/text_label_view.h"
#include "support/scripted_ui.h"
#include "dialogs_test_support.h"
#include "elements/element_store.h"

namespace tarno::testing {
namespace {

std::string Text(const QLineEdit* edit) { return edit->text().toStdString(); }

class ObservationViewTest : public ProjectTest {
 protected:
  void SetUp() override {
    ProjectTest::SetUp();
    std::ifstream in(std::filesystem::path(TARNO_SOURCE_DIR) / "examples" / "basin-and-range.sql");
    ASSERT_TRUE(in);
    const std::string sql((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    Database db = Open();
    db.ExecuteRaw(sql);
    // The kinds the example does not have.
    const std::vector<Vertex> square = {
        {0, 0, 0, 100, 100}, {0, 0, 0, 900, 100}, {0, 0, 0, 900, 700}};
    Element far = NewBoundary(BoundaryKind::FarField, square);
    far.row.Set("Label", "Far_Field_Basin");
    Insert(db, far);
    Element unit = NewBoundary(BoundaryKind::HydrologicUnit, square);
    unit.row.Set("Label", "Playa");
    unit.row.Set("Color", std::int64_t{0x0000FF});
    Insert(db, unit);
    Element area = NewElement(ElementKind::Capzone, square);
    area.row.Set("Label", "Wellfield");
    Insert(db, area);
    Element text = NewTextLabel("Playa", 0.1 + 0.2, 4.2e6);
    text.row.Set("ScalerX", 5000.0);
    Insert(db, text);
  }

  std::function<std::string()> File() {
    return [this] { return path_.string(); };
  }

  // Every element of `kind` through its view: filled, OK pressed unchanged, written
  // back as the edit of an element does; the project's elements stay as they were.
  template <typename Model, typename View>
  void OkOnEveryElementLeavesTheRows(ElementKind kind) {
    std::vector<Element> before;
    {
      Database db = Open();
      before = LoadAll(db, kind);
    }
    ASSERT_FALSE(before.empty()) << Info(kind).word;
    for (const Element& e : before) {
      SCOPED_TRACE(e.Label());
      auto made = MakeElementDialog(kind);
      auto* model = dynamic_cast<Model*>(made.get());
      ASSERT_NE(model, nullptr);
      {
        Database db = Open();
        model->LoadElement(db, e);
      }
      ScriptedUserInterface ui;
      View view(*model, ui, File());
      view.okButton()->click();
      ui.Verify();
      EXPECT_EQ(view.result(), 1);
      EXPECT_EQ(model->Result, 1);
      EXPECT_FALSE(model->FormChanged());
      Element back = e;
      model->StoreElement(back);
      Database db = Open();
      Update(db, back);
    }
    Database db = Open();
    EXPECT_EQ(LoadAll(db, kind), before);
  }
};

TEST_F(ObservationViewTest, UnchangedOkLeavesEveryTestPoint) {
  OkOnEveryElementLeavesTheRows<TestPointProperties, TestPointView>(ElementKind::TestPoint);
}
TEST_F(ObservationViewTest, UnchangedOkLeavesEveryParticle) {
  OkOnEveryElementLeavesTheRows<ParticleProperties, ParticleView>(ElementKind::Particle);
}
TEST_F(ObservationViewTest, UnchangedOkLeavesEveryNamedString) {
  OkOnEveryElementLeavesTheRows<FluxInspectDialog, FluxInspectView>(ElementKind::FluxLine);
  OkOnEveryElementLeavesTheRows<FluxInspectDialog, FluxInspectView>(ElementKind::Capzone);
  OkOnEveryElementLeavesTheRows<FluxInspectDialog, FluxInspectView>(ElementKind::Domain);
}
TEST_F(ObservationViewTest, UnchangedOkLeavesEveryTextLabel) {
  OkOnEveryElementLeavesTheRows<TextLabelProperties, TextLabelView>(ElementKind::Text);
}

TEST_F(ObservationViewTest, TestPointTypesSwitchCaptionUnitAndValue) {
  Database db = Open();
  Element gage = NewElement(ElementKind::TestPoint, {{0, -1, 0, 5, 6}});
  gage.row.Set("Label", "G1");
  gage.row.Set("Type", "Gage");
  gage.row.Set("ObsHead", 4500.0);
  gage.row.Set("ObsStreamFlow", 2500.0);
  Insert(db, gage);
  TestPointProperties model;
  model.LoadElement(db, gage);
  db.Close();
  ScriptedUserInterface ui;
  TestPointView view(model, ui, File());
  EXPECT_EQ(view.windowTitle().toStdString(), TestPointProperties::kTitle);
  EXPECT_TRUE(view.typeOption(TestPointType::Gage)->isChecked());
  EXPECT_EQ(Text(view.tbObs()), "2500");
  EXPECT_EQ(view.observedCaption()->text().toStdString(), "Observed Stream Flow");
  EXPECT_EQ(view.observedUnit()->text().toStdString(), "m^3/day");
  view.tbObs()->setText("2600");
  view.typeOption(TestPointType::Piezometer)->click();
  EXPECT_EQ(Text(view.tbObs()), "4500");
  EXPECT_EQ(view.observedCaption()->text().toStdString(), "Observed Head");
  EXPECT_EQ(view.observedUnit()->text().toStdString(), "m");
  view.typeOption(TestPointType::LakeStage)->click();
  EXPECT_EQ(view.note()->text().toStdString(), "* Place near linesink boundary of lake.");
  EXPECT_DOUBLE_EQ(model.ObsStreamFlow(), 2600.0) << "the flow typed before the switch is kept";
}

TEST_F(ObservationViewTest, ARefusedTestPointKeepsTheDialogWithTheFieldSelected) {
  Database db = Open();
  const Element first = LoadAll(db, ElementKind::TestPoint).front();
  TestPointProperties model;
  model.LoadElement(db, first);
  db.Close();
  ScriptedUserInterface ui;
  TestPointView view(model, ui, File());
  view.tbLabel()->setText("BR 1");
  ui.ExpectMessageTitled("Invalid Label");
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.result(), 0) << "the dialog stays";
  EXPECT_EQ(view.tbLabel()->selectedText().toStdString(), "BR 1");
  view.tbLabel()->setText("BR-2");
  ui.ExpectMessage("Duplicate Label",
                   {"Test Point Label ('BR-2') already exists!", "Please enter a new label."});
  view.okButton()->click();
  ui.Verify();
  view.cancelButton()->click();
  EXPECT_EQ(model.Result, 2);
}

TEST_F(ObservationViewTest, ParticleElevationAndNumberFollowTheirRules) {
  ParticleLastUse() = ParticleSettings{};  // other tests' OKs were a last use
  ParticleProperties model;
  {
    Database db = Open();
    model.LoadLastUse(db);
  }
  model.Multiple = true;
  ScriptedUserInterface ui;
  ParticleView view(model, ui, File());
  EXPECT_EQ(view.windowTitle().toStdString(), ParticleProperties::kTitle);
  EXPECT_TRUE(view.direction(1)->isChecked());
  EXPECT_FALSE(view.numOfParticles()->isHidden());
  EXPECT_EQ(view.chkSatdThick()->toolTip().toStdString(),
            "On-start at aquifer top  Off-start at entered elevation");
  EXPECT_FALSE(view.tbElevation()->isEnabled());
  view.chkSatdThick()->setChecked(false);
  EXPECT_TRUE(view.tbElevation()->isEnabled());
  EXPECT_EQ(view.elevationUnit()->text().toStdString(), "meters");
  view.tbElevation()->setText("4400");
  view.numOfParticles()->setText("2.5");
  ui.ExpectMessage("Invalid Entry", {"Invalid data value.  Please re-enter"});
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.numOfParticles()->selectedText().toStdString(), "2.5");
  view.numOfParticles()->setText("16");
  view.direction(0)->setChecked(true);
  view.okButton()->click();
  EXPECT_EQ(view.result(), 1);
  EXPECT_EQ(model.ParticleNum(), 16);
  EXPECT_EQ(model.Forward(), 0);
  EXPECT_DOUBLE_EQ(model.Elevation(), 4400.0);

  ParticleProperties single;
  single.Multiple = false;
  ParticleView plain(single, ui, File());
  EXPECT_TRUE(plain.numOfParticles()->isHidden());
}

TEST_F(ObservationViewTest, TheNamedStringViewTakesItsTitleAndColourFromThePurpose) {
  FluxInspectDialog flux(ElementKind::FluxLine);
  ScriptedUserInterface ui;
  FluxInspectView fluxView(flux, ui, File());
  EXPECT_EQ(fluxView.windowTitle().toStdString(), "Flux Inspection Line Properties");
  EXPECT_TRUE(fluxView.colourButton()->isHidden());
  ui.ExpectMessage("Duplicate Label",
                   {"Label ('FanOutflow') already exists!", "Please enter a new label."});
  fluxView.tbLabel()->setText("FanOutflow");
  fluxView.okButton()->click();
  ui.Verify();
  EXPECT_EQ(fluxView.result(), 0);

  FluxInspectDialog far;
  {
    Database db = Open();
    far.LoadElement(db, *FindByLabel(db, ElementKind::Domain, "Far_Field_Basin"));
  }
  FluxInspectView farView(far, ui, File());
  EXPECT_EQ(farView.windowTitle().toStdString(), "Farfield Properties");
  EXPECT_EQ(farView.prefix()->text().toStdString(), "Far_Field_");
  EXPECT_EQ(Text(farView.tbLabel()), "Basin");
  EXPECT_FALSE(farView.colourButton()->isHidden());
  ui.ExpectColour(0x00FF00);
  farView.colourButton()->click();
  ui.Verify();
  EXPECT_EQ(far.color, 0x00FF00u);
  EXPECT_TRUE(farView.colourSwatch()->styleSheet().contains("rgb(0, 255, 0)"));
}

TEST_F(ObservationViewTest, ARefusedTextLabelSelectsItsField) {
  TextLabelProperties model;
  {
    Database db = Open();
    model.LoadElement(db, LoadAll(db, ElementKind::Text).front());
  }
  ScriptedUserInterface ui;
  TextLabelView view(model, ui, File());
  EXPECT_EQ(Text(view.tbText()), "Playa");
  EXPECT_EQ(view.xUnit()->text().toStdString(), "meters");
  view.tbFontSize()->setText("0");
  ui.ExpectMessageTitled("Invalid Entry");
  view.okButton()->click();
  ui.Verify();
  EXPECT_EQ(view.result(), 0);
  EXPECT_EQ(view.tbFontSize()->selectedText().toStdString(), "0");
}

TEST_F(ObservationViewTest, TheRegistryShowsTheElementDialogsThroughTheirViews) {
  QtUserInterface ui;
  RegisterDialogViews(ui, File());
  for (const char* name : {TestPointProperties::kName, ParticleProperties::kName,
                           FluxInspectDialog::kName, TextLabelProperties::kName})
    EXPECT_TRUE(ui.HasView(name)) << name;
  FluxInspectDialog area(ElementKind::Capzone);
  OnNextDialog<FluxInspectView>([](FluxInspectView* view) {
    view->tbLabel()->setText("Recharge area");
    view->okButton()->click();
  });
  ui.ShowModal(area);
  EXPECT_EQ(area.Result, 1);
  EXPECT_EQ(area.Label(), "Recharge area");
}

}  // namespace
}  // namespace tarno::testing
