// The name-and-colour dialog of flux inspection lines, protection areas and the three
// boundaries: its purpose and title by kind, the label checks of each table in
// their order, the prefixes of the boundaries' labels, and the colour.
#include "elements/flux_inspect_dialog.h"

#include <gtest/gtest.h>

#include <string>

#include "support/scripted_ui.h"
#include "dialog_project.h"
#include "elements/element_dialog.h"

namespace tarno::testing {
namespace {

class FluxInspectDialogTest : public ObservationProject {
 protected:
  Element Named(ElementKind kind, const std::string& label) {
    Element e = NewElement(kind, Square());
    e.row.Set("Label", label);
    return Stored(e);
  }
  Element Boundary(BoundaryKind kind, const std::string& storedLabel, std::int64_t colour = 0) {
    Element e = NewBoundary(kind, Square());
    e.row.Set("Label", storedLabel);
    e.row.Set("Color", colour);
    return Stored(e);
  }
  void ExpectRefused(FluxInspectDialog& d, const std::string& title,
                     const std::vector<std::string>& lines) {
    ScriptedUserInterface ui;
    ui.ExpectMessage(title, lines).WithIcon(Icon::Exclamation);
    EXPECT_FALSE(d.OK(db_, ui));
    ui.Verify();
    EXPECT_EQ(d.failedField, FluxInspectDialog::Field::Label);
  }
  bool Accepts(FluxInspectDialog& d) {
    ScriptedUserInterface ui;
    const bool ok = d.OK(db_, ui);
    ui.Verify();
    return ok;
  }
};

const std::vector<std::string> kMissing = {"Label must be specified. "};
const std::vector<std::string> kNonUnique = {
    "A Hydrologic Unit Boundary with that label already exists!", "Please choose another name."};

TEST_F(FluxInspectDialogTest, ThePromptTellsWhatTheDialogServes) {
  const auto prompt = [](ElementKind kind) {
    auto d = MakeElementDialog(kind);
    auto* named = dynamic_cast<FluxInspectDialog*>(d.get());
    return named == nullptr ? std::string("none") : named->Prompt;
  };
  EXPECT_EQ(prompt(ElementKind::FluxLine), "Flux Inspection Line Properties");
  EXPECT_EQ(prompt(ElementKind::Capzone), "Capzone Properties");
  EXPECT_EQ(prompt(ElementKind::Domain), "Domain Properties");

  // A stored boundary is read by its flags.
  FluxInspectDialog d;
  d.LoadElement(db_, Boundary(BoundaryKind::FarField, "Far_Field_Valley"));
  EXPECT_EQ(d.Prompt, "Farfield Properties");
  EXPECT_EQ(d.tbLabel, "Valley");
  d.LoadElement(db_, Boundary(BoundaryKind::Model, "Model_Valley"));
  EXPECT_EQ(d.Prompt, "Model Boundary Properties");
  EXPECT_EQ(d.tbLabel, "Valley");
  d.LoadElement(db_, Boundary(BoundaryKind::HydrologicUnit, "Valley"));
  EXPECT_EQ(d.Prompt, "Domain Properties");
  EXPECT_EQ(d.tbLabel, "Valley");
  d.LoadElement(db_, Named(ElementKind::Capzone, "Wellfield"));
  EXPECT_EQ(d.Prompt, "Capzone Properties");
  EXPECT_FALSE(d.ColourShown()) << "a protection area keeps no colour";
}

TEST_F(FluxInspectDialogTest, FluxLinesAndProtectionAreasEachSearchTheirOwnTable) {
  Named(ElementKind::FluxLine, "Outflow");
  FluxInspectDialog flux(ElementKind::FluxLine);
  flux.LoadElement(db_, NewElement(ElementKind::FluxLine, Square()));
  EXPECT_EQ(flux.Result, 2);
  ExpectRefused(flux, "Data Missing", kMissing);
  flux.tbLabel = "OUTFLOW";
  ExpectRefused(flux, "Duplicate Label",
                {"Label ('OUTFLOW') already exists!", "Please enter a new label."});
  flux.tbLabel = "Inflow";
  EXPECT_TRUE(Accepts(flux));
  EXPECT_EQ(flux.Result, 1);

  // A protection area may share the label of a flux line, not of another area.
  FluxInspectDialog area(ElementKind::Capzone);
  area.LoadElement(db_, NewElement(ElementKind::Capzone, Square()));
  area.tbLabel = "Outflow";
  EXPECT_TRUE(Accepts(area));
  Named(ElementKind::Capzone, "Outflow");
  ExpectRefused(area, "Duplicate Label",
                {"Label ('Outflow') already exists!", "Please enter a new label."});
}

TEST_F(FluxInspectDialogTest, AStoredStringIsNoDuplicateOfItself) {
  const Element line = Named(ElementKind::FluxLine, "Outflow");
  FluxInspectDialog d;
  d.LoadElement(db_, line);
  EXPECT_TRUE(Accepts(d));
  const Element unit = Boundary(BoundaryKind::FarField, "Far_Field_Valley");
  d.LoadElement(db_, unit);
  EXPECT_TRUE(Accepts(d));
}

TEST_F(FluxInspectDialogTest, TheUniquenessOfABoundarySeesItsStoredLabel) {
  Boundary(BoundaryKind::FarField, "Far_Field_Valley");
  FluxInspectDialog d;
  d.LoadElement(db_, NewBoundary(BoundaryKind::FarField, Square()));
  EXPECT_EQ(d.Prompt, "Farfield Properties");
  ExpectRefused(d, "Data Missing", kMissing);
  d.tbLabel = "valley";
  ExpectRefused(d, "Non-unique label", kNonUnique);

  // The same word as a hydrologic unit or a model boundary is another label.
  FluxInspectDialog unit(ElementKind::Domain, BoundaryKind::HydrologicUnit);
  unit.LoadElement(db_, NewBoundary(BoundaryKind::HydrologicUnit, Square()));
  unit.tbLabel = "Valley";
  EXPECT_TRUE(Accepts(unit));
  FluxInspectDialog model;
  model.LoadElement(db_, NewBoundary(BoundaryKind::Model, Square()));
  model.tbLabel = "Valley";
  EXPECT_TRUE(Accepts(model));
  // ... but a hydrologic unit named as the far-field boundary is stored is not.
  unit.tbLabel = "Far_Field_Valley";
  ExpectRefused(unit, "Non-unique label", kNonUnique);
}

TEST_F(FluxInspectDialogTest, ALabelMustFitTheFileWithItsPrefix) {
  FluxInspectDialog flux;
  flux.LoadElement(db_, NewElement(ElementKind::FluxLine, Square()));
  flux.tbLabel = std::string(32, 'F');
  EXPECT_TRUE(Accepts(flux));
  flux.tbLabel = std::string(33, 'F');
  ExpectRefused(flux, "Invalid Label",
                {"The label cannot be longer than 32 characters.", "Please enter a new label."});
  FluxInspectDialog far;
  far.LoadElement(db_, NewBoundary(BoundaryKind::FarField, Square()));
  far.tbLabel = std::string(23, 'F');
  ExpectRefused(far, "Invalid Label",
                {"The label cannot be longer than 22 characters.", "Please enter a new label."});
  far.tbLabel.pop_back();
  EXPECT_TRUE(Accepts(far));
}

TEST_F(FluxInspectDialogTest, ANewBoundaryIsStoredWithItsPrefixFlagsAndColour) {
  FluxInspectDialog d;
  Element e = NewBoundary(BoundaryKind::FarField, Square());
  d.LoadElement(db_, e);
  EXPECT_EQ(d.color, DefaultBoundaryColour());
  EXPECT_TRUE(d.ColourShown());
  d.tbLabel = "Basin";
  ScriptedUserInterface ui;
  ui.ExpectColour(255);
  ui.ExpectColour(std::nullopt);  // cancelled: the colour stays
  EXPECT_TRUE(d.ChooseColour(ui));
  EXPECT_FALSE(d.ChooseColour(ui));
  ui.Verify();
  EXPECT_EQ(ui.CallsOf(UiCallKind::Colour).at(1).colour, 255u) << "the dialog starts at the colour";
  EXPECT_TRUE(d.FormChanged());
  d.StoreElement(e);
  EXPECT_EQ(e.row.Text("Label"), "Far_Field_Basin");
  EXPECT_TRUE(e.row.Flag("FarFieldBoundary"));
  EXPECT_FALSE(e.row.Flag("NearFieldHU"));
  EXPECT_EQ(e.row.Integer("Color"), 255);
  Insert(db_, e);
  ASSERT_TRUE(FindByLabel(db_, ElementKind::Domain, "Far_Field_Basin").has_value());

  Element hu = NewBoundary(BoundaryKind::HydrologicUnit, Square());
  EXPECT_FALSE(hu.row.Flag("FarFieldBoundary"));
  EXPECT_TRUE(hu.row.Flag("NearFieldHU"));
  Element mb = NewBoundary(BoundaryKind::Model, Square());
  d.LoadElement(db_, mb);
  d.tbLabel = "Edge";
  d.StoreElement(mb);
  EXPECT_EQ(mb.row.Text("Label"), "Model_Edge");
  EXPECT_FALSE(mb.row.Flag("FarFieldBoundary"));
  EXPECT_FALSE(mb.row.Flag("NearFieldHU"));
}

TEST_F(FluxInspectDialogTest, AnUnchangedDialogWritesTheStringBackAsItWas) {
  for (const Element& stored :
       {Named(ElementKind::FluxLine, "Outflow"), Named(ElementKind::Capzone, "Wellfield"),
        Boundary(BoundaryKind::FarField, "far_field_Valley", 0x00FF00),
        Boundary(BoundaryKind::Model, "Model_Edge"),
        // An older far-field string whose label lacks the prefix keeps its label.
        Boundary(BoundaryKind::FarField, "Outer")}) {
    SCOPED_TRACE(stored.Label());
    FluxInspectDialog d;
    d.LoadElement(db_, stored);
    EXPECT_FALSE(d.FormChanged());
    Element back = stored;
    d.StoreElement(back);
    EXPECT_EQ(back, stored);
  }
}

TEST_F(FluxInspectDialogTest, OnlyChangesThatReachTheSolverChangeTheModel) {
  FluxInspectDialog d;
  d.LoadElement(db_, Named(ElementKind::FluxLine, "Outflow"));
  d.tbLabel = "Outflow2";
  EXPECT_TRUE(d.FormChanged());
  d.LoadElement(db_, Named(ElementKind::Capzone, "Wellfield"));
  d.tbLabel = "Wellfield2";
  EXPECT_FALSE(d.FormChanged()) << "a protection area marks the map only";
  d.LoadElement(db_, Boundary(BoundaryKind::HydrologicUnit, "Valley"));
  d.color = 12345;
  EXPECT_TRUE(d.FormChanged());
}

TEST_F(FluxInspectDialogTest, DefaultLabelsAreFreeInTheirTable) {
  EXPECT_EQ(DefaultStringLabel(db_, ElementKind::FluxLine), "FL1");
  Named(ElementKind::FluxLine, "FL2");
  EXPECT_EQ(DefaultStringLabel(db_, ElementKind::FluxLine), "FL3");
  EXPECT_EQ(DefaultStringLabel(db_, ElementKind::Capzone), "PA1");
  Boundary(BoundaryKind::FarField, "Far_Field_FF1");
  EXPECT_EQ(DefaultStringLabel(db_, ElementKind::Domain, BoundaryKind::FarField), "FF2");
  EXPECT_EQ(DefaultStringLabel(db_, ElementKind::Domain, BoundaryKind::Model), "MB2");
  EXPECT_EQ(DefaultStringLabel(db_, ElementKind::Domain, BoundaryKind::HydrologicUnit), "HU2");
}

}  // namespace
}  // namespace tarno::testing
