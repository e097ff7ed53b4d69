// The map editor driven by synthetic mouse events on a 960 x 480 surface that shows
// the map 0..960 by 0..480: one map unit a pixel, Y upward on the map and downward
// on the surface.
#include "app/shell/map_editor.h"

#include <gtest/gtest.h>

#include <tuple>

#include "app/shell/select_area.h"
#include "display/canvas.h"
#include "display/navigation.h"
#include "elements/barrier_dialog.h"
#include "elements/element_store.h"
#include "elements/flux_inspect_dialog.h"
#include "elements/inhomogeneity_dialog.h"
#include "elements/lake_dialog.h"
#include "elements/linesink.h"
#include "elements/linesink_dialog.h"
#include "elements/particle_dialog.h"
#include "elements/test_point_dialog.h"
#include "elements/text_label_dialog.h"
#include "elements/uniform_flow_dialog.h"
#include "elements/well.h"
#include "elements/well_dialog.h"
#include "store/undo_history.h"
#include "support/project_fixture.h"
#include "support/scripted_ui.h"

namespace tarno {
namespace {

class RecordingHost : public EditorHost {
 public:
  void Redraw() override {
    ++redraws;
    if (onRedraw) onRedraw();
  }
  void Repaint() override { ++repaints; }
  void ZoomAction(int action, double x1, double y1, double x2, double y2) override {
    zooms.emplace_back(action, x1, y1, x2, y2);
  }
  void InvalidateSolution() override { ++invalidations; }
  void InspectAt(double x, double y) override { inspected.emplace_back(x, y); }
  void TraceStreamlineAt(double x, double y) override { traced.emplace_back(x, y); }
  void CheckGradient() override { ++gradientChecks; }
  bool Solving() const override { return solving; }

  int redraws = 0;
  int repaints = 0;
  int invalidations = 0;
  int gradientChecks = 0;
  bool solving = false;
  // What the window's redraw does besides drawing (it turns the selection off).
  std::function<void()> onRedraw;
  std::vector<std::tuple<int, double, double, double, double>> zooms;
  std::vector<std::pair<double, double>> inspected, traced;
};

class MapEditorTest : public testing::ScratchProject {
 protected:
  void SetUp() override {
    ScratchProject::SetUp();
    state.ProjectOpen = true;
    state.projectFile = ProjectPath();
    state.Window = WorldWindow{0, 960, 480, 0};
    ASSERT_EQ(layer.vgGDIInitObject(canvas, state.Window, false, 100), 0);
  }
  void TearDown() override {
    EXPECT_NO_THROW(ui.Verify());
    editor.Reset();
    ScratchProject::TearDown();
  }

  // Mouse events at a map point (x, y).
  void Down(double x, double y, int button = kLeftButton, int shift = 0) {
    editor.MouseDown(button, shift, x, 480 - y);
  }
  void Up(double x, double y, int button = kLeftButton, int shift = 0) {
    editor.MouseUp(button, shift, x, 480 - y);
  }
  void Click(double x, double y, int button = kLeftButton, int shift = 0) {
    Down(x, y, button, shift);
    Up(x, y, button, shift);
  }
  void RightClick() { Click(480, 240, kRightButton); }

  std::vector<std::string> Captions() const {
    std::vector<std::string> c;
    for (int i = 0; i < 4; ++i) c.push_back(editor.EditMenu()[i].caption);
    return c;
  }
  std::vector<bool> Enabled() const {
    std::vector<bool> e;
    for (const auto& entry : editor.EditMenu()) e.push_back(entry.enabled);
    return e;
  }
  void ExpectSelectState() {
    EXPECT_EQ(editor.MouseState(), kStateSelect);
    EXPECT_EQ(editor.MouseMode(), 0);
    EXPECT_EQ(ui.CurrentActivity(), "Select");
    EXPECT_EQ(ui.CurrentFeedback(), "Click mouse button to select element");
    EXPECT_FALSE(editor.MenusOff());
  }
  // A string kind's dialog that is answered with OK (its checks run as the view's OK).
  template <typename D>
  void OkDialog(const char* name, std::function<void(D&)> fill = {}) {
    ui.ExpectModal<D>(name, [this, fill](D& d) {
      if (fill) fill(d);
      EXPECT_TRUE(d.OK(db_, ui));
    });
  }

  ScriptedUserInterface ui;
  VGraphGDI layer{&ui};
  RecordingCanvas canvas{960, 480, 96, 96};
  MapState state;
  RecordingHost host;
  MapEditor editor{state, layer, ui, host};
};

// --- one-click modes ----------------------------------------------------------------

TEST_F(MapEditorTest, WellModeAddsOneWellAtTheClickAndEndsTheMode) {
  EXPECT_TRUE(editor.Command("ELEM_NEW(0)"));
  EXPECT_EQ(editor.MouseState(), kStateClick);
  EXPECT_EQ(editor.MouseMode(), 1);
  EXPECT_EQ(ui.CurrentActivity(), "Add Well");
  EXPECT_EQ(ui.CurrentFeedback(), "Click mouse at location for new well");

  OkDialog<WellProperties>("WellProperties", [](WellProperties& d) { d.TypeLabel("PW1"); });
  Click(100, 200);
  const auto wells = LoadAll(db_, ElementKind::Well);
  ASSERT_EQ(wells.size(), 1u);
  EXPECT_EQ(wells[0].Label(), "PW1");
  EXPECT_NEAR(wells[0].X(), 100, 1);
  EXPECT_NEAR(wells[0].Y(), 200, 1);
  EXPECT_NEAR(editor.LastClickX(), 100, 1);
  EXPECT_NEAR(editor.LastClickY(), 200, 1);
  EXPECT_EQ(host.invalidations, 1);
  EXPECT_GE(host.redraws, 1);
  ExpectSelectState();
}

TEST_F(MapEditorTest, CancelledWellWritesNothingAndLeavesTheSolution) {
  editor.Command("ELEM_NEW(0)");
  ui.ExpectModal<WellProperties>("WellProperties", [](WellProperties& d) { d.Cancel(); });
  Click(100, 200);
  EXPECT_EQ(CountElements(db_, ElementKind::Well), 0);
  EXPECT_EQ(host.invalidations, 0);
  ExpectSelectState();
}

TEST_F(MapEditorTest, ClicksOutsideTheMapWhileSolvingOrWithTheMouseOffDoNothing) {
  editor.Command("ELEM_NEW(0)");
  // Outside the surface: no click on the map (no dialog is scripted).
  editor.MouseDown(kLeftButton, 0, -5, 100);
  editor.MouseDown(kLeftButton, 0, 400, 480);
  host.solving = true;
  Click(100, 100);
  host.solving = false;
  editor.SetMouseEnabled(false);
  Click(100, 100);
  editor.SetMouseEnabled(true);
  state.ProjectOpen = false;
  Click(100, 100);
  state.ProjectOpen = true;
  EXPECT_EQ(editor.MouseMode(), 1);
  EXPECT_EQ(CountElements(db_, ElementKind::Well), 0);
  // The mode still takes a click.
  ui.ExpectModal<WellProperties>("WellProperties", [](WellProperties& d) { d.Cancel(); });
  Click(100, 100);
  EXPECT_EQ(editor.MouseMode(), 0);
}

TEST_F(MapEditorTest, TestPointModeOffersTheNextLabelAndTurnsTheMenusOffMeanwhile) {
  Add(ElementKind::TestPoint, "TP1", Point(700, 50));
  editor.Command("MODEL_CMDS(6)");
  EXPECT_EQ(ui.CurrentActivity(), "Add Test Point");
  EXPECT_EQ(ui.CurrentFeedback(), "Click mouse at location for new test point");
  EXPECT_TRUE(editor.MenusOff());
  OkDialog<TestPointProperties>("TestPointProperties",
                                [](TestPointProperties& d) { EXPECT_EQ(d.Label(), "TP2"); });
  Click(300, 300);
  ASSERT_EQ(CountElements(db_, ElementKind::TestPoint), 2);
  EXPECT_TRUE(FindByLabel(db_, ElementKind::TestPoint, "TP2").has_value());
  EXPECT_EQ(host.invalidations, 0);  // a test point only asks the solution
  ExpectSelectState();
}

TEST_F(MapEditorTest, ParticleModesPlaceOneOrManyWithTheSettingsChosenOnEntry) {
  ui.ExpectModal<ParticleProperties>("ParticleProperties", [this](ParticleProperties& d) {
    d.chkDirection = 0;
    EXPECT_TRUE(d.OK(db_, ui));
  });
  editor.Command("MODEL_CMDS(4)");
  EXPECT_EQ(editor.MouseMode(), kModeParticleRepeat);
  EXPECT_EQ(ui.CurrentFeedback(),
            "Click mouse at location for new particle, right click to exit add particle mode");
  Click(10, 10);
  Click(20, 20);
  Click(30, 30);
  EXPECT_EQ(editor.MouseMode(), kModeParticleRepeat);
  RightClick();
  ExpectSelectState();
  auto particles = LoadAll(db_, ElementKind::Particle);
  ASSERT_EQ(particles.size(), 3u);
  for (const Element& p : particles) EXPECT_EQ(p.row.Integer("Forward"), 0);

  // "Add Particle": one click, then the select state.
  OkDialog<ParticleProperties>("ParticleProperties");
  editor.Command("MODEL_CMDS(3)");
  EXPECT_EQ(ui.CurrentFeedback(), "Click mouse at location for new particle");
  Click(40, 40);
  ExpectSelectState();
  EXPECT_EQ(CountElements(db_, ElementKind::Particle), 4);

  // A right click straight after entering adds nothing.
  OkDialog<ParticleProperties>("ParticleProperties");
  editor.Command("MODEL_CMDS(4)");
  RightClick();
  EXPECT_EQ(CountElements(db_, ElementKind::Particle), 4);
  ExpectSelectState();
}

TEST_F(MapEditorTest, TextModeAddsALabelPerClickUntilTheRightClick) {
  editor.Command("EDIT_CMDS(5)");
  EXPECT_EQ(ui.CurrentActivity(), "Add Text");
  EXPECT_EQ(ui.CurrentFeedback(), "Click mouse to add text, right-click to end");
  OkDialog<TextLabelProperties>("TextLabelProperties",
                                [](TextLabelProperties& d) { d.tbText = "Wabash"; });
  Click(50, 60);
  ui.ExpectModal<TextLabelProperties>("TextLabelProperties",
                                      [](TextLabelProperties& d) { d.Cancel(); });
  Click(70, 80);
  EXPECT_EQ(editor.MouseMode(), 30);
  RightClick();
  ExpectSelectState();
  const auto labels = LoadAll(db_, ElementKind::Text);
  ASSERT_EQ(labels.size(), 1u);
  EXPECT_EQ(labels[0].Label(), "Wabash");
}

TEST_F(MapEditorTest, DeleteParticleModeDeletesTheParticleClickedUntilTheRightClick) {
  const Element p = Stored(NewElement(ElementKind::Particle, Point(300, 300)));
  Add(ElementKind::Well, "PW1", Point(500, 300));
  editor.EnterMode(kStateClick, kModeDeleteParticle);
  EXPECT_EQ(ui.CurrentActivity(), "Delete Particle Mode");
  EXPECT_EQ(ui.CurrentFeedback(),
            "Click on a particle to delete it. Right click to abort delete mode.");
  Click(500, 300);  // a well: not a particle, nothing asked
  ui.ExpectMessage("Confirm", {"Delete this particle?"}, Answer::Yes);
  Click(302, 301);
  EXPECT_FALSE(Load(db_, ElementKind::Particle, p.key).has_value());
  EXPECT_EQ(CountElements(db_, ElementKind::Well), 1);
  EXPECT_EQ(editor.MouseMode(), kModeDeleteParticle);
  RightClick();
  ExpectSelectState();
}

TEST_F(MapEditorTest, AShownTextLabelIsSelectedWithItsOwnCaptions) {
  Stored(NewTextLabel("Wabash", 400, 200));
  Click(400, 200);  // labels hidden: nothing there
  EXPECT_EQ(editor.SelectedKind(), 0);
  state.layers.hydrographyLabels = true;
  Click(800, 50);
  Click(401, 201);
  EXPECT_EQ(editor.SelectedKind(), 30);
  EXPECT_EQ(Captions(), (std::vector<std::string>{"Text &Properties", "&Move Label",
                                                  "&Delete Label", "&Refine"}));
  EXPECT_EQ(ui.CurrentFeedback(), "Text: Wabash");
  editor.Command("EDIT_CMDS(1)");
  EXPECT_EQ(ui.CurrentActivity(), "Move Text");
}

TEST_F(MapEditorTest, UniformFlowAsksFirstAndTakesTheClickAsItsReferencePoint) {
  ui.ExpectMessageTitled("Warning - Uniform Flow", Answer::No);
  editor.Command("ElemUniformFlow");  // no uniform flow to remove: nothing more
  EXPECT_EQ(editor.MouseMode(), 0);

  ui.ExpectMessageTitled("Warning - Uniform Flow", Answer::Yes);
  editor.Command("ElemUniformFlow");
  EXPECT_EQ(editor.MouseMode(), 4);
  EXPECT_EQ(ui.CurrentActivity(), "Uniform Flow");
  EXPECT_EQ(ui.CurrentFeedback(), "Place mouse at the point of known head and click the button");
  OkDialog<UniformFlow>("UniformFlow");
  Click(250, 150);
  auto u = LoadUniformFlow(db_);
  ASSERT_TRUE(u.has_value());
  EXPECT_NEAR(u->row.Number("UNIFLOWRefX"), 250, 1);
  EXPECT_NEAR(u->row.Number("UNIFLOWRefY"), 150, 1);
  EXPECT_EQ(host.invalidations, 1);
  ExpectSelectState();

  // No removes it after its own question.
  ui.ExpectMessageTitled("Warning - Uniform Flow", Answer::No);
  ui.ExpectMessage("Remove function", {"Remove the current uniform flow field?"}, Answer::Yes);
  editor.Command("ElemUniformFlow");
  EXPECT_FALSE(LoadUniformFlow(db_).has_value());
}

// --- strings -------------------------------------------------------------------------

TEST_F(MapEditorTest, LineSinkStringIsWrittenWholeAtTheRightClick) {
  OkDialog<LinesinkString>("LinesinkString", [](LinesinkString& d) {
    d.TypeLabel("Creek");
    d.TypeField(LinesinkString::kResistance, "1");
  });
  editor.Command("ELEM_NEW(1)");
  EXPECT_EQ(editor.MouseState(), kStateString);
  EXPECT_EQ(editor.MouseMode(), 2);
  EXPECT_EQ(ui.CurrentActivity(), "Add Linesinks");
  EXPECT_EQ(ui.CurrentFeedback(), "Click mouse at vertices -- right-click to end");
  EXPECT_TRUE(editor.MenusOff());

  Click(100, 100);
  EXPECT_TRUE(editor.StringStarted());
  Click(200, 120);
  Click(300, 100);
  // While drawing, the project holds nothing of the string.
  EXPECT_EQ(CountElements(db_, ElementKind::Linesink), 0);
  ASSERT_EQ(editor.PendingVertices().size(), 3u);
  // The rubber line runs from the last vertex to the pointer.
  editor.MouseMove(0, 0, 350, 480 - 150);
  const RubberShape r = editor.Rubber();
  EXPECT_EQ(r.kind, RubberShape::Kind::Line);
  EXPECT_NEAR(r.x1, 300, 1);
  EXPECT_NEAR(r.y1, 380, 1);
  EXPECT_EQ(r.x2, 350);
  EXPECT_EQ(r.y2, 330);

  // The dialog comes a second time over the string as drawn.
  OkDialog<LinesinkString>("LinesinkString",
                           [](LinesinkString& d) { EXPECT_EQ(d.Label(), "Creek"); });
  RightClick();
  const auto strings = LoadAll(db_, ElementKind::Linesink);
  ASSERT_EQ(strings.size(), 1u);
  ASSERT_EQ(strings[0].vertices.size(), 3u);
  EXPECT_NEAR(strings[0].vertices[1].X, 200, 1);
  EXPECT_NEAR(strings[0].vertices[1].Y, 120, 1);
  EXPECT_LT(strings[0].vertices[0].Seq, strings[0].vertices[1].Seq);
  EXPECT_EQ(host.invalidations, 1);
  EXPECT_EQ(editor.Rubber().kind, RubberShape::Kind::None);
  ExpectSelectState();
}

TEST_F(MapEditorTest, ANewLineSinkVertexSnapsOntoALineSinkVertexNearTheClick) {
  Add(ElementKind::Linesink, "Main", At({{100, 100}, {200, 100}}));
  Add(ElementKind::Barrier, "Wall", At({{400, 100}, {400, 300}}));
  OkDialog<LinesinkString>("LinesinkString", [](LinesinkString& d) {
    d.TypeLabel("Trib");
    d.TypeField(LinesinkString::kResistance, "1");
  });
  editor.Command("ELEM_NEW(1)");
  Click(204, 103);  // near the line-sink's vertex: snaps
  Click(404, 303);  // near a barrier's vertex: stays at the click
  ASSERT_EQ(editor.PendingVertices().size(), 2u);
  EXPECT_EQ(editor.PendingVertices()[0], std::make_pair(200.0, 100.0));
  EXPECT_NE(editor.PendingVertices()[1].first, 400.0);
  ui.ExpectModal<LinesinkString>("LinesinkString", [](LinesinkString& d) { d.Cancel(); });
  RightClick();
  // Cancel in the second dialog keeps the string with the first one's values.
  EXPECT_TRUE(FindByLabel(db_, ElementKind::Linesink, "Trib").has_value());
}

TEST_F(MapEditorTest, RightClickBeforeTheFirstVertexEndsTheModeWithNothingWritten) {
  OkDialog<LinesinkString>("LinesinkString", [](LinesinkString& d) {
    d.TypeLabel("Creek");
    d.TypeField(LinesinkString::kResistance, "1");
  });
  editor.Command("ELEM_NEW(1)");
  RightClick();
  EXPECT_EQ(CountElements(db_, ElementKind::Linesink), 0);
  EXPECT_EQ(host.invalidations, 0);
  ExpectSelectState();
}

TEST_F(MapEditorTest, ALineSinkStringOfOneVertexIsDeletedWithItsWarning) {
  OkDialog<LinesinkString>("LinesinkString", [](LinesinkString& d) {
    d.TypeLabel("Creek");
    d.TypeField(LinesinkString::kResistance, "1");
  });
  editor.Command("ELEM_NEW(1)");
  Click(100, 100);
  ui.ExpectMessage("Warning", {"The currently selected linesink string has only one point.  "
                               "The string will be deleted."});
  RightClick();
  EXPECT_EQ(CountElements(db_, ElementKind::Linesink), 0);
  EXPECT_TRUE(LoadVertices(db_, 1).empty());
  ExpectSelectState();
}

TEST_F(MapEditorTest, ACancelledStringDialogStartsNoMode) {
  ui.ExpectModal<LinesinkString>("LinesinkString", [](LinesinkString& d) { d.Cancel(); });
  editor.Command("ELEM_NEW(1)");
  EXPECT_EQ(editor.MouseState(), kStateSelect);
  EXPECT_FALSE(editor.MenusOff());
  Click(10, 10);  // a select click on an empty map: no dialog
  EXPECT_EQ(CountElements(db_, ElementKind::Linesink), 0);
}

TEST_F(MapEditorTest, ClosedBarrierOfTwoVerticesIsRefusedAndAnOpenOneStands) {
  OkDialog<NoFlowString>("NoFlowString", [](NoFlowString& d) {
    d.Label = "Ring";
    d.ClosedDomain = true;
  });
  editor.Command("ELEM_NEW(2)");
  EXPECT_EQ(ui.CurrentActivity(), "Add No-flow");
  Click(10, 10);
  Click(50, 10);
  ui.ExpectMessage("Not Enough Vertices", {"Not enough vertices to complete the current barrier!",
                                           "You must have at least 2 vertices for an open barrier",
                                           "and at least 3 vertices to create a closed barrier."});
  RightClick();
  EXPECT_EQ(CountElements(db_, ElementKind::Barrier), 0);
  ExpectSelectState();

  OkDialog<NoFlowString>("NoFlowString", [](NoFlowString& d) {
    d.Label = "Wall";
    d.ClosedDomain = false;
  });
  editor.Command("ELEM_NEW(2)");
  Click(10, 10);
  Click(50, 10);
  RightClick();
  EXPECT_EQ(CountElements(db_, ElementKind::Barrier), 1);
  EXPECT_EQ(host.invalidations, 1);
}

TEST_F(MapEditorTest, InhomogeneityOfTwoVerticesIsRemovedWithItsMessage) {
  OkDialog<Inhomogeneity>("Inhomogeneity", [](Inhomogeneity& d) { d.Label = "Sand"; });
  editor.Command("ELEM_NEW(3)");
  EXPECT_EQ(ui.CurrentActivity(), "Add Inhomogeneity");
  Click(10, 10);
  Click(50, 10);
  ui.ExpectMessage("Not Enough Vertices",
                   {"Not enough vertices to complete the current inhomogeneity!",
                    "You must add at least 2 vertices to create this element."});
  RightClick();
  EXPECT_EQ(CountElements(db_, ElementKind::Inhomogeneity), 0);
  ExpectSelectState();
}

TEST_F(MapEditorTest, AdjoiningInhomogeneitiesShareTheirEdgeVertices) {
  Add(ElementKind::Inhomogeneity, "West", At({{100, 100}, {200, 100}, {200, 200}, {100, 200}}));
  OkDialog<Inhomogeneity>("Inhomogeneity", [](Inhomogeneity& d) { d.Label = "East"; });
  editor.Command("ELEM_NEW(3)");
  Click(203, 98);
  Click(300, 100);
  Click(300, 200);
  Click(198, 203);
  RightClick();
  const auto east = FindByLabel(db_, ElementKind::Inhomogeneity, "East");
  ASSERT_TRUE(east.has_value());
  ASSERT_EQ(east->vertices.size(), 4u);
  EXPECT_EQ(east->vertices[0].X, 200.0);
  EXPECT_EQ(east->vertices[0].Y, 100.0);
  EXPECT_EQ(east->vertices[3].X, 200.0);
  EXPECT_EQ(east->vertices[3].Y, 200.0);
}

TEST_F(MapEditorTest, FluxLineAndBoundaryModesOfferTheirLabelsAndWriteTheString) {
  OkDialog<FluxInspectDialog>("FluxInspectDialog",
                              [](FluxInspectDialog& d) { EXPECT_EQ(d.Label(), "FL1"); });
  editor.Command("MODEL_CMDS(7)");
  EXPECT_EQ(editor.MouseMode(), 23);
  EXPECT_EQ(ui.CurrentActivity(), "Add Flux");
  Click(10, 10);
  Click(90, 10);
  RightClick();
  EXPECT_TRUE(FindByLabel(db_, ElementKind::FluxLine, "FL1").has_value());
  EXPECT_EQ(host.invalidations, 0);

  OkDialog<FluxInspectDialog>("FluxInspectDialog", [](FluxInspectDialog& d) {
    EXPECT_EQ(d.Prompt, FluxInspectDialog::kFarfieldPrompt);
  });
  editor.Command("MODEL_CMDS(9)");
  EXPECT_EQ(editor.MouseMode(), 35);
  EXPECT_EQ(ui.CurrentActivity(), "Add FarField Boundary");
  Click(10, 10);
  Click(900, 10);
  ui.ExpectMessage(
      "Not Enough Vertices",
      {"Not enough vertices to complete the current " +
           [] {
             std::string n(Info(ElementKind::Domain).name);
             for (char& c : n) c = static_cast<char>(std::tolower(c));
             return n;
           }() +
           "!",
       "You must have at least " + std::to_string(Info(ElementKind::Domain).minVertices) +
           " vertices to create this element."});
  RightClick();
  EXPECT_EQ(CountElements(db_, ElementKind::Domain), 0);
}

TEST_F(MapEditorTest, LakesAndProtectionAreasAreWrittenClosedWithTheirVertices) {
  OkDialog<Lake>("Lake", [](Lake& d) { d.tbLabel = "Pond"; });
  editor.Command("ELEM_NEW(4)");
  EXPECT_EQ(ui.CurrentActivity(), "Add Lake");
  Click(100, 100);
  Click(200, 100);
  Click(150, 200);
  RightClick();
  const auto lake = FindByLabel(db_, ElementKind::Lake, "Pond");
  ASSERT_TRUE(lake.has_value());
  EXPECT_EQ(lake->vertices.size(), 3u);
  EXPECT_EQ(host.invalidations, 1);

  OkDialog<FluxInspectDialog>("FluxInspectDialog", [](FluxInspectDialog& d) {
    EXPECT_EQ(d.Prompt, FluxInspectDialog::kCapzonePrompt);
  });
  editor.Command("EDIT_CMDS(6)");
  EXPECT_EQ(editor.MouseMode(), 24);
  Click(300, 300);
  Click(400, 300);
  Click(350, 400);
  RightClick();
  EXPECT_EQ(CountElements(db_, ElementKind::Capzone), 1);
  EXPECT_EQ(host.invalidations, 1);  // a protection area asks the solution only
  ExpectSelectState();
}

// --- selection -----------------------------------------------------------------------

TEST_F(MapEditorTest, SelectingAWellSetsItsCaptionsAndFeedback) {
  const Element w = Add(ElementKind::Well, "PW1", Point(300, 300), [](Row& r) {
    r.Set("HeadSpecified", true);
    r.Set("Head", 100.0);
    r.Set("Radius", 0.5);
  });
  Click(303, 302);
  EXPECT_EQ(editor.SelectedKind(), 1);
  EXPECT_EQ(editor.Selected().vid, w.key);
  EXPECT_EQ(Captions(), (std::vector<std::string>{"Well &Properties", "&Move Well", "&Delete Well",
                                                  "&Refine"}));
  EXPECT_EQ(Enabled(), (std::vector<bool>{true, true, true, false, true}));
  EXPECT_EQ(ui.CurrentFeedback(), "Well: PW1 Head: 100 Radius: 0.5");
  EXPECT_GE(host.repaints, 1);  // drawn as selected over the picture

  // A click on empty map clears the selection and leaves Delete All on.
  Click(800, 50);
  EXPECT_EQ(editor.SelectedKind(), 0);
  EXPECT_EQ(Captions(), (std::vector<std::string>{"&Properties", "&Move", "&Delete", "&Refine"}));
  EXPECT_EQ(Enabled(), (std::vector<bool>{false, false, false, false, true}));
  EXPECT_EQ(ui.CurrentFeedback(), "Click mouse button to select element");
}

TEST_F(MapEditorTest, WithASolutionTheFeedbackAddsTheComputedValues) {
  const Element w = Add(ElementKind::Well, "PW1", Point(300, 300), [](Row& r) {
    r.Set("HeadSpecified", false);
    r.Set("Head", 500.0);
    r.Set("Radius", 1.0);
  });
  const Element s = Add(ElementKind::Linesink, "Creek", At({{100, 100}, {200, 100}}), [](Row& r) {
    r.Set("HeadSpecified", 1);
    r.Set("StartingHead", 10.0);
    r.Set("EndingHead", 9.0);
  });
  db_.Execute(
      "insert into WLResults (Label, TARNOLabel, X, Y, Radius, SpecifiedHead, Discharge, Head) "
      "values ('PW1', '" +
      WellSolverLabel(w.key) + "', 300, 300, 1, 0, 500, -1500)");
  Statement ls = db_.Prepare(
      "insert into LSResults (Label, TARNOLabel, X1, Y1, X2, Y2, SpecifiedHead, Discharge, "
      "CalculatedHead, Resistance) values ('Creek', ?, 100, 100, 200, 100, 10, 2.5, 10, 1)");
  ls.Bind(1, LinesinkSegmentLabel(s.key, s.vertices[0].Seq));
  ls.Step();
  Click(300, 300);
  EXPECT_EQ(ui.CurrentFeedback(), "Well: PW1 Pumping Rate: 500 Radius: 1");  // no solution
  state.solution.valid = true;
  Click(800, 50);
  Click(300, 300);
  EXPECT_EQ(ui.CurrentFeedback(),
            "Well: PW1 Pumping Rate: 500 Radius: 1 Computed Head: -1500 Aquifer is DRY ");
  Click(800, 50);
  Click(100, 100);
  EXPECT_EQ(
      ui.CurrentFeedback(),
      "Label: Creek  Starting Head: 10. Ending Head: 9.00  Specified Head: 10  Discharge: 2.5");
}

TEST_F(MapEditorTest, SelectingAStringEnablesRefineAndDescribesTheString) {
  Add(ElementKind::Linesink, "Creek", At({{100, 100}, {200, 100}}), [](Row& r) {
    r.Set("HeadSpecified", 1);
    r.Set("StartingHead", 10.5);
    r.Set("EndingHead", 9.0);
  });
  Click(200, 100);
  EXPECT_EQ(editor.SelectedKind(), 2);
  EXPECT_EQ(Captions(),
            (std::vector<std::string>{"&Properties...", "&Move Vertex", "&Delete...", "&Refine"}));
  EXPECT_EQ(Enabled(), (std::vector<bool>{true, true, true, true, true}));
  EXPECT_EQ(ui.CurrentFeedback(), "Label: Creek  Starting Head: 10.5 Ending Head: 9.00");

  Add(ElementKind::Barrier, "Wall", At({{500, 100}, {500, 200}}));
  Click(500, 200);
  EXPECT_EQ(editor.SelectedKind(), 3);
  EXPECT_EQ(ui.CurrentFeedback(), "Horizontal barrier: Wall");
}

TEST_F(MapEditorTest, TheSelectionIsDrawnHighlightedAndPutBackWithoutARedraw) {
  Add(ElementKind::Linesink, "Creek", At({{100, 100}, {200, 100}}));
  auto polylines = [this](bool highlighted) {
    int n = 0;
    for (const auto& op : canvas.Ops())
      if (op.kind == RecordingCanvas::Kind::Polyline &&
          (op.colour == PaletteColour(12)) == highlighted)
        ++n;
    return n;
  };
  Click(100, 100);
  ASSERT_EQ(editor.SelectedKind(), 2);
  EXPECT_GE(polylines(true), 1);
  EXPECT_EQ(host.redraws, 0);
  EXPECT_EQ(host.repaints, 1);
  // Away from it: the string is drawn in its own colour again.
  canvas.ClearOps();
  Click(800, 400);
  EXPECT_EQ(editor.SelectedKind(), 0);
  EXPECT_GE(polylines(false), 1);
  EXPECT_EQ(polylines(true), 0);
  EXPECT_EQ(host.redraws, 0);

  // A test point's symbol follows the results: the map is redrawn instead.
  Add(ElementKind::TestPoint, "TP1", Point(600, 300));
  Click(600, 300);
  EXPECT_EQ(editor.SelectedKind(), 21);
  EXPECT_EQ(host.redraws, 1);
}

TEST_F(MapEditorTest, RepeatedClicksOnCoincidentVerticesSelectThemInTurn) {
  const Element a = Add(ElementKind::Linesink, "A", At({{100, 100}, {200, 100}}));
  const Element b = Add(ElementKind::Barrier, "B", At({{200, 100}, {200, 300}}));
  Click(201, 101);
  const std::int64_t first = editor.Selected().pid;
  Click(201, 101);
  const std::int64_t second = editor.Selected().pid;
  EXPECT_NE(first, second);
  EXPECT_TRUE((first == a.key && second == b.key) || (first == b.key && second == a.key));
}

TEST_F(MapEditorTest, AClickInsideNestedInhomogeneitiesSelectsTheInnerOne) {
  const Element outer = Add(ElementKind::Inhomogeneity, "Outer",
                            At({{100, 100}, {400, 100}, {400, 400}, {100, 400}}));
  // A thin triangle whose corners lie beyond the search radius of the click.
  const Element inner =
      Add(ElementKind::Inhomogeneity, "Inner", At({{80, 120}, {120, 80}, {300, 300}}));
  // The nearest vertex is the outer polygon's corner, but the click lies inside
  // the triangle too, and the smaller polygon is the one the user sees there.
  Click(105, 105);
  EXPECT_EQ(editor.SelectedKind(), 5);
  EXPECT_EQ(editor.Selected().pid, inner.key);
  // Outside the triangle the corner's polygon stays selected.
  Click(800, 50);
  Click(395, 395);
  EXPECT_EQ(editor.Selected().pid, outer.key);
}

TEST_F(MapEditorTest, ShiftClickInspectsWithASolutionAndOtherwiseSaysThereIsNone) {
  Add(ElementKind::Well, "PW1", Point(300, 300));
  Click(300, 300);
  ASSERT_EQ(editor.SelectedKind(), 1);
  auto redMarks = [&] {
    int n = 0;
    for (const auto& op : canvas.Ops()) n += op.colour == PaletteColour(12) ? 1 : 0;
    return n;
  };
  const int before = redMarks();
  ui.ExpectMessage(kNoSolutionTitle, {kNoSolutionText});
  Click(100, 100, kLeftButton, kShiftMask);
  EXPECT_EQ(editor.SelectedKind(), 1);  // the selection stays
  EXPECT_TRUE(host.inspected.empty());
  EXPECT_EQ(redMarks(), before);  // no marker without a solution

  state.solution.valid = true;
  Click(100, 100, kLeftButton, kShiftMask);
  EXPECT_GT(redMarks(), before);  // the point asked about is marked in red
  Click(120, 80, kLeftButton, kShiftMask | kCtrlMask);
  ASSERT_EQ(host.inspected.size(), 1u);
  EXPECT_NEAR(host.inspected[0].first, 100, 1);
  EXPECT_NEAR(host.inspected[0].second, 100, 1);
  ASSERT_EQ(host.traced.size(), 1u);
  EXPECT_NEAR(host.traced[0].second, 80, 1);
  EXPECT_EQ(editor.SelectedKind(), 1);
}

// --- boxes ---------------------------------------------------------------------------

TEST_F(MapEditorTest, ParticleGridFillsTheBoxClippedToTheWindow) {
  editor.Command("MODEL_CMDS(5)");
  EXPECT_EQ(editor.MouseState(), kStateDrag);
  EXPECT_EQ(ui.CurrentActivity(), "Add Particle Grid");
  Down(100, 100);
  editor.MouseMove(kLeftButton, 0, 500, 480 - 300);
  RubberShape box = editor.Rubber();
  EXPECT_EQ(box.kind, RubberShape::Kind::Box);
  EXPECT_EQ(std::make_tuple(box.x1, box.y1, box.x2, box.y2), std::make_tuple(100, 180, 500, 380));
  ui.ExpectModal<ParticleProperties>("ParticleProperties", [this](ParticleProperties& d) {
    EXPECT_TRUE(d.Multiple);
    d.NumOfParticles = "4";
    EXPECT_TRUE(d.OK(db_, ui));
  });
  // The drag ends beyond the window's right and top edges.
  editor.MouseUp(kLeftButton, 0, 2000, -50);
  EXPECT_NEAR(editor.Area().LLx(), 100, 1);
  EXPECT_NEAR(editor.Area().LLy(), 100, 1);
  EXPECT_NEAR(editor.Area().URx(), 959, 1);
  EXPECT_NEAR(editor.Area().URy(), 480, 1);
  const auto particles = LoadAll(db_, ElementKind::Particle);
  EXPECT_FALSE(particles.empty());
  for (const Element& p : particles) {
    EXPECT_GE(p.X(), 100 - 1e-6);
    EXPECT_LE(p.X(), 960);
    EXPECT_GE(p.Y(), 100 - 1e-6);
  }
  ExpectSelectState();

  // No particles asked for: none added.
  editor.Command("MODEL_CMDS(5)");
  Down(10, 10);
  ui.ExpectModal<ParticleProperties>("ParticleProperties", [this](ParticleProperties& d) {
    d.NumOfParticles = "0";
    d.OK(db_, ui);
  });
  Up(50, 50);
  EXPECT_EQ(LoadAll(db_, ElementKind::Particle).size(), particles.size());
}

TEST_F(MapEditorTest, AreaSelectionDeletesTheChosenKindInTheBox) {
  for (auto [x, y] : {std::pair{100.0, 100.0}, {150.0, 150.0}, {700.0, 400.0}})
    Stored(NewElement(ElementKind::Particle, Point(x, y)));
  Add(ElementKind::Well, "PW1", Point(800, 50));
  editor.Command("mnuEditSelect");
  EXPECT_EQ(ui.CurrentActivity(), "Select Area");
  Down(50, 50);
  ui.ExpectModal<SelectArea>("SelectArea", [](SelectArea& d) {
    d.ElementType = 2;
    d.OK();
  });
  ui.ExpectModal<SelectAreaOptions>("SelectAreaOptions", [](SelectAreaOptions& d) {
    EXPECT_EQ(d.Text,
              "2 Particle(s). Choose Delete to remove them from the project or edit to edit "
              "their properties");
    EXPECT_TRUE(d.EditAvailable);
    d.Press(SelectAreaOptions::kDelete);
  });
  Up(200, 200);
  EXPECT_EQ(CountElements(db_, ElementKind::Particle), 1);
  EXPECT_EQ(editor.Area().Command(), "Delete");
  EXPECT_EQ(ui.CurrentActivity(), "Select");

  // Wells in a box that holds none.
  editor.Command("mnuEditSelect");
  Down(50, 50);
  ui.ExpectModal<SelectArea>("SelectArea", [](SelectArea& d) {
    d.ElementType = 1;
    d.OK();
  });
  ui.ExpectMessage(kNothingSelectedTitle, {"There are no Wells in this window!"});
  Up(200, 200);
  EXPECT_EQ(CountElements(db_, ElementKind::Well), 1);
}

TEST_F(MapEditorTest, ZoomBoxAndRecentreGoToTheNavigation) {
  state.mouseState = kZoomWindowMouseState;
  state.mouseMode = kZoomWindowMouseMode;
  Down(400, 100);
  Up(100, 300);
  ASSERT_EQ(host.zooms.size(), 1u);
  EXPECT_EQ(std::get<0>(host.zooms[0]), kZoomWindowEnd);
  EXPECT_NEAR(std::get<1>(host.zooms[0]), 100, 1);
  EXPECT_NEAR(std::get<2>(host.zooms[0]), 100, 1);
  EXPECT_NEAR(std::get<3>(host.zooms[0]), 400, 1);
  EXPECT_NEAR(std::get<4>(host.zooms[0]), 300, 1);
  RightClick();
  EXPECT_EQ(std::get<0>(host.zooms.back()), kZoomModeLeave);

  state.mouseState = kRecenterMouseState;
  state.mouseMode = kRecenterMouseMode;
  Click(600, 200);
  EXPECT_EQ(std::get<0>(host.zooms.back()), kRecenterEnd);
  EXPECT_NEAR(std::get<1>(host.zooms.back()), 600, 1);
}

// --- the Edit menu on the selection ---------------------------------------------------

TEST_F(MapEditorTest, PropertiesOfTheSelectedWellOpenItsDialog) {
  Add(ElementKind::Well, "PW1", Point(300, 300));
  Click(300, 300);
  OkDialog<WellProperties>("WellProperties", [](WellProperties& d) {
    EXPECT_EQ(d.Label(), "PW1");
    d.TypeField(WellProperties::kHead, "250");
  });
  EXPECT_TRUE(editor.Command("EDIT_CMDS(0)"));
  EXPECT_EQ(FindByLabel(db_, ElementKind::Well, "PW1")->row.Number("Head"), 250.0);
  EXPECT_EQ(host.invalidations, 1);
  // Nothing selected: nothing opens.
  Click(800, 50);
  editor.Command("EDIT_CMDS(0)");
}

TEST_F(MapEditorTest, MoveIsADragThatEndsWhereTheButtonComesUp) {
  Add(ElementKind::Well, "PW1", Point(300, 300));
  Click(300, 300);
  editor.Command("EDIT_CMDS(1)");
  EXPECT_TRUE(editor.VertexDrag());
  EXPECT_TRUE(editor.MenusOff());
  EXPECT_EQ(ui.CurrentActivity(), "Move Well");
  Down(310, 310);
  EXPECT_EQ(ui.CurrentFeedback(), "Place cursor at new vertex location and release mouse button");
  editor.MouseMove(kLeftButton, 0, 400, 480 - 100);
  EXPECT_EQ(editor.Rubber().kind, RubberShape::Kind::Line);
  Up(400, 100);
  EXPECT_FALSE(editor.VertexDrag());
  const auto w = FindByLabel(db_, ElementKind::Well, "PW1");
  ASSERT_TRUE(w.has_value());
  EXPECT_NEAR(w->X(), 400, 1);
  EXPECT_NEAR(w->Y(), 100, 1);
  ExpectSelectState();
}

TEST_F(MapEditorTest, AMoveThatEndsOutsideTheWindowStopsAtItsEdge) {
  const Element s = Add(ElementKind::Barrier, "Wall", At({{100, 100}, {200, 100}}));
  Click(200, 100);
  ASSERT_EQ(editor.SelectedKind(), 3);
  editor.Command("EDIT_CMDS(1)");
  EXPECT_EQ(ui.CurrentActivity(), "Move Vertex");
  Down(200, 100);
  editor.MouseUp(kLeftButton, 0, 5000, 480 - 300);
  const auto wall = Load(db_, ElementKind::Barrier, s.key);
  ASSERT_TRUE(wall.has_value());
  EXPECT_NEAR(wall->vertices[1].X, 959, 1);
  EXPECT_NEAR(wall->vertices[1].Y, 300, 1);
  EXPECT_EQ(wall->vertices[0].X, 100.0);
  EXPECT_EQ(host.invalidations, 1);
}

TEST_F(MapEditorTest, DeleteAsksAndRemovesTheSelectedWell) {
  Add(ElementKind::Well, "PW1", Point(300, 300));
  Click(300, 300);
  ui.ExpectMessage("Confirm", {"Delete this element?"}, Answer::Yes);
  editor.Command("EDIT_CMDS(2)");
  EXPECT_EQ(CountElements(db_, ElementKind::Well), 0);
  EXPECT_EQ(editor.SelectedKind(), 0);
  EXPECT_EQ(Enabled(), (std::vector<bool>{false, false, false, false, true}));
  EXPECT_EQ(host.invalidations, 1);
}

TEST_F(MapEditorTest, RefineInsertsAVertexIntoTheSelectedString) {
  Add(ElementKind::Linesink, "Creek", At({{100, 100}, {300, 100}}));
  Click(100, 100);
  editor.Command("EDIT_CMDS(3)");
  const auto s = FindByLabel(db_, ElementKind::Linesink, "Creek");
  ASSERT_TRUE(s.has_value());
  ASSERT_EQ(s->vertices.size(), 3u);
  EXPECT_EQ(s->vertices[1].X, 200.0);
}

// After an edit through the Edit menu the redraw shows the element unselected: the
// status bar and the Edit menu must not go on describing the old selection.
TEST_F(MapEditorTest, RefineAndPropertiesEndTheSelectionWithTheSelectTexts) {
  Add(ElementKind::Linesink, "Creek", At({{100, 100}, {300, 100}}));
  Click(100, 100);
  ASSERT_EQ(editor.SelectedKind(), 2);
  ASSERT_NE(ui.CurrentFeedback(), "Click mouse button to select element");
  editor.Command("EDIT_CMDS(3)");
  EXPECT_EQ(editor.SelectedKind(), 0);
  EXPECT_EQ(Enabled(), (std::vector<bool>{false, false, false, false, true}));
  ExpectSelectState();

  Click(100, 100);
  ASSERT_EQ(editor.SelectedKind(), 2);
  OkDialog<LinesinkString>("LinesinkString", [](LinesinkString& d) {
    d.TypeLabel("Brook");
    d.TypeField(LinesinkString::kResistance, "1");
  });
  editor.Command("EDIT_CMDS(0)");
  EXPECT_TRUE(FindByLabel(db_, ElementKind::Linesink, "Brook").has_value());
  EXPECT_EQ(editor.SelectedKind(), 0);
  ExpectSelectState();

  // Cancelled properties change nothing, the selection included.
  Click(100, 100);
  ui.ExpectModal<LinesinkString>("LinesinkString", [](LinesinkString& d) { d.Cancel(); });
  editor.Command("EDIT_CMDS(0)");
  EXPECT_EQ(editor.SelectedKind(), 2);
}

// A mode started with an element selected puts the highlight and the status bar back
// first, so that a mode whose dialog is cancelled leaves nothing shown as selected.
TEST_F(MapEditorTest, ANewModeOverASelectionDrawsItPlainAgainEvenWhenCancelled) {
  Add(ElementKind::Linesink, "Creek", At({{100, 100}, {200, 100}}));
  auto highlighted = [this] {
    int n = 0;
    for (const auto& op : canvas.Ops())
      if (op.kind == RecordingCanvas::Kind::Polyline && op.colour == PaletteColour(12)) ++n;
    return n;
  };
  Click(100, 100);
  ASSERT_EQ(editor.SelectedKind(), 2);
  ASSERT_GE(highlighted(), 1);
  canvas.ClearOps();
  const int repaints = host.repaints;
  ui.ExpectModal<LinesinkString>("LinesinkString", [](LinesinkString& d) { d.Cancel(); });
  editor.Command("ELEM_NEW(1)");
  EXPECT_EQ(editor.SelectedKind(), 0);
  EXPECT_EQ(highlighted(), 0);
  EXPECT_FALSE(canvas.Ops().empty());  // the string drawn in its own colour
  EXPECT_EQ(host.repaints, repaints + 1);
  ExpectSelectState();
}

// A test point is shown by a redraw, and the window's redraw turns every selection
// off: the point just picked must stay selected over it, or it cannot be edited.
TEST_F(MapEditorTest, ATestPointStaysSelectedOverTheRedrawThatShowsIt) {
  host.onRedraw = [this] { editor.ElemTurnOffSelection(); };
  Add(ElementKind::TestPoint, "TP1", Point(600, 300));
  Add(ElementKind::TestPoint, "TP2", Point(600, 300));
  Click(600, 300);
  EXPECT_EQ(host.redraws, 1);
  ASSERT_EQ(editor.SelectedKind(), static_cast<int>(ElementKind::TestPoint));
  EXPECT_EQ(Captions()[2], "&Delete Test Point");
  EXPECT_EQ(Enabled(), (std::vector<bool>{true, true, true, false, true}));
  const std::int64_t first = editor.Selected().vid;
  // The cycle survives the redraw: the next click takes the other point.
  Click(600, 300);
  ASSERT_EQ(editor.SelectedKind(), static_cast<int>(ElementKind::TestPoint));
  EXPECT_NE(editor.Selected().vid, first);
  ui.ExpectMessage("Confirm", {"Delete this test point?"}, Answer::Yes);
  editor.Command("EDIT_CMDS(2)");
  EXPECT_EQ(CountElements(db_, ElementKind::TestPoint), 1);
}

// --- the edit history --------------------------------------------------------------------

TEST_F(MapEditorTest, EachEditByMouseIsOneStepOfTheHistoryAndASelectionNone) {
  UndoHistory history;
  history.Attach(ProjectPath().string());
  editor.Command("ELEM_NEW(0)");
  OkDialog<WellProperties>("WellProperties", [](WellProperties& d) { d.TypeLabel("PW1"); });
  Click(100, 200);
  ASSERT_EQ(history.UndoCount(), 1u);
  EXPECT_EQ(history.UndoName(), "Add Well");
  Click(100, 200);  // selects: writes nothing
  EXPECT_EQ(editor.SelectedKind(), 1);
  EXPECT_EQ(history.UndoCount(), 1u);

  OkDialog<LinesinkString>("LinesinkString", [](LinesinkString& d) {
    d.TypeLabel("Creek");
    d.TypeField(LinesinkString::kResistance, "1");
  });
  editor.Command("ELEM_NEW(1)");
  Click(300, 100);
  Click(400, 100);
  OkDialog<LinesinkString>("LinesinkString");
  RightClick();
  ASSERT_EQ(history.UndoCount(), 2u);
  EXPECT_EQ(history.UndoName(), "Add Linesinks");
  // Undo takes the whole string away: row, polygon and vertices.
  editor.Reset();
  EXPECT_TRUE(history.Undo());
  EXPECT_EQ(CountElements(db_, ElementKind::Linesink), 0);
  EXPECT_EQ(CountElements(db_, ElementKind::Well), 1);
  history.Detach();
}

// --- the record of a choice -------------------------------------------------------------

TEST(SelectorTest, CarriesItsFieldsAndRefusesAFileBeyondFive) {
  Selector s;
  s.Command("Delete");
  s.Tag("T1");
  s.LLx(1);
  s.URy(4);
  s.File(1, "a.bbm");
  s.File(5, "e.bbm");
  EXPECT_EQ(s.Command(), "Delete");
  EXPECT_EQ(s.Tag(), "T1");
  EXPECT_EQ(s.LLx(), 1);
  EXPECT_EQ(s.URy(), 4);
  EXPECT_EQ(s.File(1), "a.bbm");
  EXPECT_EQ(s.File(5), "e.bbm");
  EXPECT_EQ(s.File(3), "");
  EXPECT_THROW(s.File(0, "x"), InvalidArgumentError);
  EXPECT_THROW((void)s.File(6), InvalidArgumentError);
}

TEST(EditorKeysTest, TheEditorTakesItsMenuKeysAndNoOthers) {
  for (const char* key :
       {"ELEM_NEW(0)", "ELEM_NEW(4)", "ElemUniformFlow", "EDIT_CMDS(0)", "EDIT_CMDS(3)",
        "EDIT_CMDS(6)", "mnuEditSelect", "MODEL_CMDS(3)", "MODEL_CMDS(10)"})
    EXPECT_TRUE(MapEditor::Handles(key)) << key;
  for (const char* key :
       {"EDIT_CMDS(4)", "EDIT_CMDS(7)", "MODEL_CMDS(1)", "ZOOM_CMDS(4)", "FILE_CMDS(0)"})
    EXPECT_FALSE(MapEditor::Handles(key)) << key;
}

}  // namespace
}  // namespace tarno
