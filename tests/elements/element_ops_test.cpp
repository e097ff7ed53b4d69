// The element operations on a scratch project: add, set, delete and find with the
// defaults of each kind, the FIELD=VALUE texts, the refusals with their exact
// messages (and the project file untouched after them), and when the solution is
// to go.
#include <gtest/gtest.h>

#include "elements/element_dialog.h"
#include "elements/element_ops.h"
#include "elements/element_store.h"
#include "elements/well_dialog.h"
#include "store/schema.h"
#include "support/project_fixture.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace tarno {
namespace {

using namespace ops_text;

class ElementOpsTest : public testing::ScratchProject {
 protected:
  void SetUp() override {
    ScratchProject::SetUp();
    // An aquifer from 10 to 40.
    db_.ExecuteRaw("update Model set AQBase = 10, AQThickness = '30', AQHydCond = 25");
  }
  void TearDown() override {
    ui_.ClearScript();
    ScratchProject::TearDown();
  }

  std::string FileBytes() const { return test::ReadFile(ProjectPath()); }

  // Runs `op`, which must refuse with one message of `title` and `lines`, and
  // checks that the project file did not change.
  template <typename Op>
  void ExpectRefused(const std::string& title, const std::vector<std::string>& lines, Op op) {
    const std::string before = FileBytes();
    ui_.ExpectMessage(title, lines).WithIcon(Icon::Exclamation);
    EXPECT_FALSE(op());
    ui_.Verify();
    EXPECT_TRUE(FileBytes() == before) << "a refused operation wrote to the project";
  }

  std::optional<std::int64_t> Add(ElementKind kind, std::vector<MapPoint> points,
                                  std::vector<std::string> fields) {
    return AddElement(db_, kind, points, fields, ui_, [this] { ++invalidations_; });
  }

  ScriptedUserInterface ui_;
  int invalidations_ = 0;
};

const std::vector<MapPoint> kSquare = {{0, 0}, {100, 0}, {100, 100}, {0, 100}};

TEST_F(ElementOpsTest, AddsAWellWithItsDefaultsAndTheGivenFields) {
  const auto key = Add(ElementKind::Well, {{50, 60}}, {"label=PW1", "HEAD=-500", "Radius=0.3"});
  ASSERT_TRUE(key.has_value());
  ui_.Verify();
  const auto w = Load(db_, ElementKind::Well, *key);
  ASSERT_TRUE(w.has_value());
  EXPECT_EQ(w->Label(), "PW1");
  EXPECT_EQ(w->row.Number("Head"), -500.0);
  EXPECT_EQ(w->row.Number("Radius"), 0.3);
  // The screen spans the aquifer at the well; no setback, no particles.
  EXPECT_EQ(w->row.Number("TopElev"), 40.0);
  EXPECT_EQ(w->row.Number("BottomElev"), 10.0);
  EXPECT_EQ(w->row.Number("StartElev"), 10.0);
  EXPECT_EQ(w->row.Number("Setback"), 0.0);
  EXPECT_EQ(w->row.Integer("NParticles"), 0);
  EXPECT_EQ(w->X(), 50.0);
  EXPECT_EQ(w->Y(), 60.0);
  EXPECT_EQ(invalidations_, 1);
}

TEST_F(ElementOpsTest, DefaultsFollowTheModelAndTheInhomogeneities) {
  // A base lowered to 2 inside an inhomogeneity: a well there is screened from 2,
  // and a new barrier stands on the lowest base of the model.
  ASSERT_TRUE(
      Add(ElementKind::Inhomogeneity, kSquare, {"Label=Low", "ChangeB=yes", "BottomElevation=2"}));
  const auto in = FindByLabel(db_, ElementKind::Inhomogeneity, "Low");
  ASSERT_TRUE(in);
  // Nothing else changed from the model: the model's conductivity, the top as
  // average head.
  EXPECT_EQ(in->row.Number("HydCond"), 25.0);
  EXPECT_EQ(in->row.Number("AverageHead"), 40.0);
  EXPECT_EQ(in->row.Number("Porosity"), 0.2);

  const auto w = Add(ElementKind::Well, {{50, 50}}, {"Label=Inside"});
  ASSERT_TRUE(w);
  EXPECT_EQ(Load(db_, ElementKind::Well, *w)->row.Number("BottomElev"), 2.0);

  ASSERT_TRUE(Add(ElementKind::Barrier, {{0, 200}, {100, 200}}, {"Label=Wall"}));
  const auto b = FindByLabel(db_, ElementKind::Barrier, "Wall");
  EXPECT_EQ(b->row.Number("BottomElevation"), 2.0);
  EXPECT_EQ(b->row.Number("Thickness"), 1.0);
  EXPECT_EQ(b->row.Integer("Closed"), 0);
}

TEST_F(ElementOpsTest, PointsStringsAndPolygonsTakeTheirVerticesInOrder) {
  const auto ls =
      Add(ElementKind::Linesink, {{0, 0}, {10, 5}, {20, 0}}, {"Label=River", "Resistance=1"});
  ASSERT_TRUE(ls);
  const auto river = Load(db_, ElementKind::Linesink, *ls);
  ASSERT_EQ(river->vertices.size(), 3u);
  EXPECT_EQ(river->vertices[1].X, 10.0);
  EXPECT_EQ(river->vertices[2].Seq, 300);

  const auto text = Add(ElementKind::Text, {{7, 8}}, {"Text=River Road", "FontSize=12"});
  ASSERT_TRUE(text);
  const auto t = Load(db_, ElementKind::Text, *text);
  EXPECT_EQ(t->Label(), "River Road");
  EXPECT_EQ(t->X(), 7.0);
  EXPECT_EQ(t->Y(), 8.0);
  EXPECT_EQ(t->row.Integer("FontSize"), 12);
}

TEST_F(ElementOpsTest, ObservationsAndTextLeaveTheSolutionStanding) {
  ASSERT_TRUE(Add(ElementKind::TestPoint, {{1, 1}}, {"Label=MW1", "ObsHead=19.5"}));
  ASSERT_TRUE(Add(ElementKind::Particle, {{2, 2}}, {"Forward=0"}));
  ASSERT_TRUE(Add(ElementKind::FluxLine, {{0, 0}, {5, 5}}, {"Label=F1"}));
  ASSERT_TRUE(Add(ElementKind::Text, {{3, 3}}, {"Text=note"}));
  EXPECT_EQ(invalidations_, 0);
  ASSERT_TRUE(Add(ElementKind::Lake, kSquare, {"Label=Pond"}));
  EXPECT_EQ(invalidations_, 1);
}

TEST_F(ElementOpsTest, FieldTextsAreRefusedNamingTheFieldAndTheValue) {
  ExpectRefused(kUnknownFieldTitle,
                {"'Depth=3': Wells has no field 'Depth'.",
                 "The fields are: Head, Radius, NParticles, Label, Setback, Transient, Cyclic, "
                 "Cycles, SS, Time, TopElev, BottomElev, HeadSpecified, PPWell, StartHead, "
                 "StartElev, Pond."},
                [&] {
                  return Add(ElementKind::Well, {{0, 0}}, {"Label=W", "Depth=3"}).has_value();
                });
  ExpectRefused(kInvalidEntryTitle,
                {"'Radius=abc': 'abc' is not a valid value for Radius (a number).",
                 "Please enter a new value."},
                [&] {
                  return Add(ElementKind::Well, {{0, 0}}, {"Radius=abc"}).has_value();
                });
  ExpectRefused(
      kInvalidEntryTitle,
      {"'ChangeK=perhaps': 'perhaps' is not a valid value for ChangeK (yes, no, true, "
       "false or a number).",
       "Please enter a new value."},
      [&] { return Add(ElementKind::Inhomogeneity, kSquare, {"ChangeK=perhaps"}).has_value(); });
  ExpectRefused(kInvalidEntryTitle,
                {"'Cycles=': '' is not a valid value for Cycles (a whole number, yes or no).",
                 "Please enter a new value."},
                [&] {
                  return Add(ElementKind::Well, {{0, 0}}, {"Cycles="}).has_value();
                });
  // A number is taken whole: the dialogs' parse would read "0,3" as 0.
  ExpectRefused(kInvalidEntryTitle,
                {"'Radius=0,3': '0,3' is not a valid value for Radius (a number).",
                 "Please enter a new value."},
                [&] {
                  return Add(ElementKind::Well, {{0, 0}}, {"Radius=0,3"}).has_value();
                });
  ExpectRefused(kInvalidEntryTitle,
                {"'Head=0x10': '0x10' is not a valid value for Head (a number).",
                 "Please enter a new value."},
                [&] {
                  return Add(ElementKind::Well, {{0, 0}}, {"Head=0x10"}).has_value();
                });
  ExpectRefused(kInvalidEntryTitle,
                {"'Label' is not of the form FIELD=VALUE.", "Please enter a new value."}, [&] {
                  return Add(ElementKind::Well, {{0, 0}}, {"Label"}).has_value();
                });
  ExpectRefused(kInvalidEntryTitle, {"'VID=3': VID is set by TARNO and cannot be given."}, [&] {
    return Add(ElementKind::Well, {{0, 0}}, {"VID=3"}).has_value();
  });
  ExpectRefused(kInvalidEntryTitle,
                {"'UNIFLOWCompute=0': UNIFLOWCompute is set by TARNO and cannot be given."}, [&] {
                  return Add(ElementKind::UniformFlow, {{0, 0}}, {"UNIFLOWCompute=0"}).has_value();
                });
  EXPECT_EQ(invalidations_, 0);
  const auto w =
      Add(ElementKind::Well, {{0, 0}}, {"Label=W", "Head=1.5E2", "Radius= 2 ", "Pond=yes"});
  ASSERT_TRUE(w);
  const auto well = Load(db_, ElementKind::Well, *w);
  EXPECT_EQ(well->row.Number("Head"), 150.0);
  EXPECT_EQ(well->row.Number("Radius"), 2.0);
  EXPECT_EQ(well->row.Integer("Pond"), 1);
}

TEST_F(ElementOpsTest, TheNumberOfVerticesFitsTheKind) {
  ExpectRefused(kVerticesTitle, {"A well is placed at one point (x y); 2 were given."}, [&] {
    return Add(ElementKind::Well, {{0, 0}, {1, 1}}, {"Label=W"}).has_value();
  });
  ExpectRefused(kVerticesTitle, {"A line-sink string needs at least 2 vertices; 1 was given."},
                [&] {
                  return Add(ElementKind::Linesink, {{0, 0}}, {"Label=L"}).has_value();
                });
  ExpectRefused(kVerticesTitle, {"An inhomogeneity needs at least 3 vertices; 2 were given."}, [&] {
    return Add(ElementKind::Inhomogeneity, {{0, 0}, {1, 1}}, {"Label=I"}).has_value();
  });
  // An open barrier of two vertices stands; closed, it needs three, also when it
  // is closed later.
  ExpectRefused(kVerticesTitle, {"A closed barrier needs at least 3 vertices; 2 were given."}, [&] {
    return Add(ElementKind::Barrier, {{0, 0}, {1, 1}}, {"Label=B", "Closed=1"}).has_value();
  });
  ASSERT_TRUE(Add(ElementKind::Barrier, {{0, 0}, {1, 1}}, {"Label=B"}));
  ExpectRefused(kVerticesTitle, {"A closed barrier needs at least 3 vertices; 2 were given."},
                [&] { return EditElement(db_, "B", {"Closed=2"}, ui_).has_value(); });
  ExpectRefused(kVerticesTitle, {"A uniform flow is placed at one point (x y); 0 were given."},
                [&] { return Add(ElementKind::UniformFlow, {}, {}).has_value(); });
}

// Each kind's dialog checks the label given with the element as one typed into it:
// a new element may not take a label of its table, nor an element be renamed to
// one; its own label, in any case, is no duplicate. Lakes and text labels are not
// checked for duplicates by their dialogs.
TEST_F(ElementOpsTest, LabelsGivenWithTheElementAreCheckedByItsDialog) {
  struct Case {
    ElementKind kind;
    std::vector<MapPoint> points;
    std::vector<std::string> fields;  // what the kind needs besides its label
    std::string title;
    std::vector<std::string> lines;  // the message for the label "Taken"
  };
  const std::vector<MapPoint> line = {{0, 0}, {10, 0}};
  const std::string again = "Please enter a new label.";
  const std::vector<Case> cases = {
      {ElementKind::Well,
       {{1, 1}},
       {},
       "Duplicate Label",
       {"Well Label ('Taken') already exists!", again}},
      {ElementKind::Linesink,
       line,
       {"Resistance=1"},
       "Duplicate Label",
       {"Linesink Label ('Taken') already exists!", again}},
      {ElementKind::Barrier,
       line,
       {},
       "Duplicate Label",
       {"Barrier Label ('Taken') already exists!", again}},
      {ElementKind::Inhomogeneity,
       kSquare,
       {},
       "Duplicate Label",
       {"Inhomogeneity Label ('Taken') already exists!"}},
      {ElementKind::TestPoint,
       {{1, 1}},
       {},
       "Duplicate Label",
       {"Test Point Label ('Taken') already exists!", again}},
      {ElementKind::FluxLine,
       line,
       {},
       "Duplicate Label",
       {"Label ('Taken') already exists!", again}},
      {ElementKind::Capzone,
       kSquare,
       {},
       "Duplicate Label",
       {"Label ('Taken') already exists!", again}},
      {ElementKind::Domain,
       kSquare,
       {},
       "Non-unique label",
       {"A Hydrologic Unit Boundary with that label already exists!",
        "Please choose another name."}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(Info(c.kind).word));
    auto fields = [&](const std::string& label) {
      std::vector<std::string> f = c.fields;
      f.push_back("Label=" + label);
      return f;
    };
    ASSERT_TRUE(Add(c.kind, c.points, fields("Taken")));
    ui_.Verify();
    ExpectRefused(c.title, c.lines,
                  [&] { return Add(c.kind, c.points, fields("Taken")).has_value(); });
    ASSERT_TRUE(Add(c.kind, c.points, fields("Other")));
    const std::string other = std::string(Info(c.kind).word) + ":Other";
    ExpectRefused(c.title, c.lines,
                  [&] { return EditElement(db_, other, {"Label=Taken"}, ui_).has_value(); });
    EXPECT_TRUE(EditElement(db_, other, {"Label=Other"}, ui_));
    ui_.Verify();
  }
  // Another table may hold the label: a well and a test point share "Taken".
  EXPECT_TRUE(FindByLabel(db_, ElementKind::Well, "Taken"));
  EXPECT_TRUE(FindByLabel(db_, ElementKind::TestPoint, "Taken"));
  // The label rules of the dialog: a well's label holds no blank.
  ExpectRefused("Invalid Label",
                {"Well label cannot contain spaces or commas, be blank, or be larger than 32 "
                 "characters.",
                 "Please enter a new label"},
                [&] {
                  return Add(ElementKind::Well, {{2, 2}}, {"Label=two words"}).has_value();
                });
}

TEST_F(ElementOpsTest, ObservationsAndNamedStringsAreOfferedTheFirstFreeLabel) {
  const std::vector<MapPoint> line = {{0, 0}, {10, 0}};
  ASSERT_TRUE(Add(ElementKind::TestPoint, {{1, 1}}, {"ObsHead=3"}));
  ASSERT_TRUE(Add(ElementKind::TestPoint, {{2, 2}}, {}));
  ASSERT_TRUE(Add(ElementKind::FluxLine, line, {}));
  ASSERT_TRUE(Add(ElementKind::Capzone, kSquare, {}));
  ASSERT_TRUE(Add(ElementKind::Domain, kSquare, {}));
  ASSERT_TRUE(Add(ElementKind::Domain, kSquare, {"FarFieldBoundary=yes", "NearFieldHU=no"}));
  EXPECT_TRUE(FindByLabel(db_, ElementKind::TestPoint, "TP1"));
  EXPECT_TRUE(FindByLabel(db_, ElementKind::TestPoint, "TP2"));
  EXPECT_TRUE(FindByLabel(db_, ElementKind::FluxLine, "FL1"));
  EXPECT_TRUE(FindByLabel(db_, ElementKind::Capzone, "PA1"));
  EXPECT_TRUE(FindByLabel(db_, ElementKind::Domain, "HU1"));
  // A far-field boundary's label is stored with its prefix.
  EXPECT_TRUE(FindByLabel(db_, ElementKind::Domain, "Far_Field_FF2"));
  // A gage is weighted as a gage unless weights are given.
  ASSERT_TRUE(Add(ElementKind::TestPoint, {{3, 3}}, {"Label=G1", "Type=Gage"}));
  EXPECT_EQ(FindByLabel(db_, ElementKind::TestPoint, "G1")->row.Number("PESTWeight"), 0.0001);
  ASSERT_TRUE(Add(ElementKind::TestPoint, {{4, 4}}, {"Label=G2", "Type=Gage", "PESTWeight=2"}));
  EXPECT_EQ(FindByLabel(db_, ElementKind::TestPoint, "G2")->row.Number("PESTWeight"), 2.0);
  ui_.Verify();
}

TEST_F(ElementOpsTest, AddressesFindOneElement) {
  ASSERT_TRUE(Add(ElementKind::Well, {{0, 0}}, {"Label=PW1"}));
  ASSERT_TRUE(Add(ElementKind::TestPoint, {{5, 5}}, {"Label=PW1"}));
  ASSERT_TRUE(Add(ElementKind::Lake, kSquare, {"Label=well:odd"}));
  const auto particle = Add(ElementKind::Particle, {{2, 2}}, {});
  ASSERT_TRUE(particle);

  ui_.ExpectMessage(kAmbiguousLabelTitle,
                    {"The label 'PW1' names elements of more than one kind: well, testpoint.",
                     "Name the kind with the label, as in well:PW1."});
  EXPECT_FALSE(FindElement(db_, "PW1", ui_));
  EXPECT_EQ(FindElement(db_, "testpoint:pw1", ui_)->kind, ElementKind::TestPoint);
  const auto well = FindElement(db_, "WELL:PW1", ui_);
  ASSERT_TRUE(well);
  EXPECT_EQ(AddressOf(db_, *well), "well:PW1");
  // A label with a colon that is a kind's word is found with its own kind ahead.
  ui_.ExpectMessage(kNoSuchElementTitle, {"There is no well labelled 'odd'."});
  EXPECT_FALSE(FindElement(db_, "well:odd", ui_));
  const auto lake = FindElement(db_, "lake:well:odd", ui_);
  ASSERT_TRUE(lake);
  EXPECT_EQ(AddressOf(db_, *lake), "lake:well:odd");

  const std::string p = "particle:" + std::to_string(*particle);
  const auto found = FindElement(db_, p, ui_);
  ASSERT_TRUE(found);
  EXPECT_EQ(AddressOf(db_, *found), p);
  ui_.ExpectMessage(kNoSuchElementTitle,
                    {"A particle is addressed by its number: particle:<VID>, not 'particle:x'."});
  EXPECT_FALSE(FindElement(db_, "particle:x", ui_));
  ui_.ExpectMessage(kNoSuchElementTitle, {"There is no particle 999."});
  EXPECT_FALSE(FindElement(db_, "particle:999", ui_));
  ui_.ExpectMessage(kNoSuchElementTitle, {"No element is labelled 'Nowhere'."});
  EXPECT_FALSE(FindElement(db_, "Nowhere", ui_));
  ui_.ExpectMessage(kNoSuchElementTitle, {"The model has no uniform flow."});
  EXPECT_FALSE(FindElement(db_, "uniflow", ui_));
  ui_.Verify();
}

TEST_F(ElementOpsTest, EditingInvalidatesOnlyWhatTheSolverSees) {
  ASSERT_TRUE(Add(ElementKind::Linesink, {{0, 0}, {10, 0}}, {"Label=River", "Resistance=1"}));
  invalidations_ = 0;
  const InvalidateFn count = [this] { ++invalidations_; };
  // A new name changes no flow.
  auto e = EditElement(db_, "River", {"Label=WestRiver"}, ui_, count);
  ASSERT_TRUE(e);
  EXPECT_EQ(invalidations_, 0);
  EXPECT_FALSE(FindByLabel(db_, ElementKind::Linesink, "River"));
  e = EditElement(db_, "WestRiver", {"Resistance=2.5", "width=20"}, ui_, count);
  ASSERT_TRUE(e);
  EXPECT_EQ(invalidations_, 1);
  const auto back = FindByLabel(db_, ElementKind::Linesink, "WestRiver");
  EXPECT_EQ(back->row.Number("Resistance"), 2.5);
  EXPECT_EQ(back->row.Number("Width"), 20.0);
  EXPECT_EQ(back->vertices.size(), 2u);
  // The same values again change nothing.
  ASSERT_TRUE(EditElement(db_, "WestRiver", {"Resistance=2.5"}, ui_, count));
  EXPECT_EQ(invalidations_, 1);
  ui_.Verify();
}

TEST_F(ElementOpsTest, AnEditedRoutedStringOfOneLineSinkLosesItsRouting) {
  const std::vector<std::string> fields = {"Label=Creek", "Routing=1", "StartingHead=10",
                                           "EndingHead=9", "Resistance=1"};
  ASSERT_TRUE(Add(ElementKind::Linesink, {{0, 0}, {10, 0}, {20, 0}}, fields));
  ASSERT_TRUE(Add(ElementKind::Linesink, {{0, 5}, {10, 5}},
                  {"Label=Short", "Routing=1", "StartingHead=10", "EndingHead=9", "Resistance=1"}));
  // Three vertices keep their routing.
  ASSERT_TRUE(EditElement(db_, "Creek", {"Width=2"}, ui_));
  EXPECT_EQ(FindByLabel(db_, ElementKind::Linesink, "Creek")->row.Integer("Routing"), 1);
  ui_.ExpectMessage(
      "DATABASE INTEGRITY CHECK",
      {"The line-sink string 'Short' is part of a stream network,",
       "but contains only one line-sink.", " TARNO has disabled ",
       "stream flow for this string! After the database integrity",
       "check is complete you must:", "1) add at least one vertex to this line-sink string",
       "2) set the starting head different from the ending head",
       "3) check 'Use stream flow routing' on the Routing tab",
       "Failure to do this may corrupt your stream network."});
  ASSERT_TRUE(EditElement(db_, "Short", {"Width=2"}, ui_));
  ui_.Verify();
  const auto s = FindByLabel(db_, ElementKind::Linesink, "Short");
  EXPECT_EQ(s->row.Integer("Routing"), 0);
  EXPECT_EQ(s->row.Number("Width"), 2.0);
}

TEST_F(ElementOpsTest, DeletingTakesTheVerticesAlong) {
  ASSERT_TRUE(Add(ElementKind::Inhomogeneity, kSquare, {"Label=Zone"}));
  const auto tp = Add(ElementKind::TestPoint, {{5, 5}}, {"Label=MW1"});
  invalidations_ = 0;
  const InvalidateFn count = [this] { ++invalidations_; };
  const auto zone = DeleteElement(db_, "zone", ui_, count);
  ASSERT_TRUE(zone);
  EXPECT_EQ(zone->kind, ElementKind::Inhomogeneity);
  EXPECT_TRUE(LoadVertices(db_, zone->key).empty());
  EXPECT_EQ(invalidations_, 1);
  ASSERT_TRUE(DeleteElement(db_, "MW1", ui_, count));
  EXPECT_FALSE(Load(db_, ElementKind::TestPoint, *tp));
  EXPECT_EQ(invalidations_, 1);
  ExpectRefused(kNoSuchElementTitle, {"No element is labelled 'MW1'."},
                [&] { return DeleteElement(db_, "MW1", ui_, count).has_value(); });
}

TEST_F(ElementOpsTest, TheUniformFlowIsOneAndKeepsItsSettings) {
  ASSERT_TRUE(Add(ElementKind::UniformFlow, {{100, 200}},
                  {"Head=20", "Gradient=0.002", "UNIFLOWOrientation=45"}));
  auto u = LoadUniformFlow(db_);
  ASSERT_TRUE(u);
  EXPECT_EQ(u->row.Number("UNIFLOWRefHead"), 20.0);
  EXPECT_EQ(u->row.Number("UNIFLOWGradient"), 0.002);
  EXPECT_EQ(u->row.Number("UNIFLOWRefX"), 100.0);
  // Placed again: the point moves, the settings stay.
  ASSERT_TRUE(Add(ElementKind::UniformFlow, {{300, 400}}, {}));
  u = LoadUniformFlow(db_);
  EXPECT_EQ(u->row.Number("UNIFLOWRefHead"), 20.0);
  EXPECT_EQ(u->row.Number("UNIFLOWRefY"), 400.0);
  EXPECT_EQ(u->vertices.front().X, 300.0);
  // The reference point set by its fields moves the vertex too.
  ASSERT_TRUE(EditElement(db_, "uniflow", {"UNIFLOWRefX=5"}, ui_));
  EXPECT_EQ(LoadUniformFlow(db_)->vertices.front().X, 5.0);
  ASSERT_TRUE(DeleteElement(db_, "UNIFLOW", ui_));
  EXPECT_FALSE(LoadUniformFlow(db_));
  ui_.Verify();
}

// The window's Properties: the dialog shown through the port, written back on OK,
// the solution invalidated when the dialog says the model changed.
TEST_F(ElementOpsTest, PropertiesWriteBackOnOkOnly) {
  const auto key = Add(ElementKind::Well, {{5, 5}}, {"Label=PW1", "Head=100"});
  ASSERT_TRUE(key);
  invalidations_ = 0;
  const InvalidateFn count = [this] { ++invalidations_; };

  const std::string before = FileBytes();
  ui_.ExpectModal<WellProperties>("WellProperties", [](WellProperties& d) {
    d.TypeField(WellProperties::kHead, "250");
    d.Cancel();
  });
  EXPECT_FALSE(OpenProperties(db_, ElementKind::Well, *key, ui_, count));
  ui_.Verify();
  EXPECT_TRUE(FileBytes() == before);
  EXPECT_EQ(invalidations_, 0);

  ui_.ExpectModal<WellProperties>("WellProperties", [this](WellProperties& d) {
    EXPECT_EQ(d.Label(), "PW1");
    d.TypeField(WellProperties::kHead, "250");
    EXPECT_TRUE(d.OK(db_, ui_));
  });
  EXPECT_TRUE(OpenProperties(db_, ElementKind::Well, *key, ui_, count));
  ui_.Verify();
  EXPECT_EQ(Load(db_, ElementKind::Well, *key)->row.Number("Head"), 250.0);
  EXPECT_EQ(invalidations_, 1);

  // A new label alone changes no flow.
  ui_.ExpectModal<WellProperties>("WellProperties", [this](WellProperties& d) {
    d.TypeLabel("Town");
    EXPECT_TRUE(d.OK(db_, ui_));
  });
  EXPECT_TRUE(OpenProperties(db_, ElementKind::Well, *key, ui_, count));
  EXPECT_EQ(Load(db_, ElementKind::Well, *key)->Label(), "Town");
  EXPECT_EQ(invalidations_, 1);
  ui_.Verify();
}

}  // namespace
}  // namespace tarno
