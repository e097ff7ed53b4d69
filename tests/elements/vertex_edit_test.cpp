// The vertex operations on a scratch project: renumbering, refine (shared edges of
// inhomogeneities stay shared), moves with snapping and the domains' refusals, the
// deletes with their questions, the clean-up of close vertices and phantom strings,
// the offset of imported vertices and the two polygon tests. Messages are checked
// word for word through the scripted port.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "elements/element_store.h"
#include "elements/ls_confirm_dialog.h"
#include "elements/vertex_edit.h"
#include "support/project_fixture.h"
#include "support/scripted_ui.h"

namespace tarno {
namespace {

using namespace vertex_text;

class VertexEditTest : public testing::ScratchProject {
 protected:
  void SetUp() override {
    ScratchProject::SetUp();
    search_.SetWindow(1000, 1000);
  }
  void TearDown() override {
    ui_.ClearScript();
    ScratchProject::TearDown();
  }
  std::vector<Vertex> Vs(std::int64_t pid) { return LoadVertices(db_, pid); }
  std::vector<std::pair<double, double>> PlacesOf(std::int64_t pid) {
    std::vector<std::pair<double, double>> out;
    for (const Vertex& v : Vs(pid)) out.emplace_back(v.X, v.Y);
    return out;
  }
  std::vector<std::int64_t> Seqs(std::int64_t pid) {
    std::vector<std::int64_t> out;
    for (const Vertex& v : Vs(pid)) out.push_back(v.Seq);
    return out;
  }
  std::int64_t Count(const std::string& sql) {
    Statement st = db_.PrepareRaw(sql);
    return st.Step() ? st.GetInt64(0) : -1;
  }
  // Scripts the LSConfirm dialog: checks its message and presses `button`.
  void ExpectConfirm(const std::string& message, int button) {
    ui_.ExpectModal<LSConfirm>(LSConfirm::kName, [message, button](LSConfirm& d) {
      EXPECT_EQ(d.Message, message);
      d.Click(button);
    });
  }

  ScriptedUserInterface ui_;
  VertexSearch search_;
};

using Places = std::vector<std::pair<double, double>>;

// ---------------------------------------------------------------------------
// Numbering.

TEST_F(VertexEditTest, NextSeqRisesByHundredPerStringAndResequenceRenumbers) {
  const std::int64_t pid = AddPolygon(db_, 0);
  const auto a = AddVertex(db_, 0, 0, pid, -1);
  const auto b = AddVertex(db_, 1, 0, pid, -1);
  AddVertex(db_, 5, 5, AddPolygon(db_, 0), -1);  // another string starts at 100 again
  EXPECT_EQ(LoadVertex(db_, a)->Seq, 100);
  EXPECT_EQ(LoadVertex(db_, b)->Seq, 200);
  // An explicit number is kept; the next "next" follows the highest.
  const auto c = AddVertex(db_, 2, 0, pid, 250);
  const auto d = AddVertex(db_, 3, 0, pid, -1);
  EXPECT_EQ(LoadVertex(db_, c)->Seq, 250);
  EXPECT_EQ(LoadVertex(db_, d)->Seq, 350);
  EXPECT_EQ(Resequence(db_, pid, c), 300);
  EXPECT_EQ(Seqs(pid), (std::vector<std::int64_t>{100, 200, 300, 400}));
  EXPECT_EQ(Resequence(db_, pid, 999), -1) << "a vertex not in the string";
}

// ---------------------------------------------------------------------------
// Refine.

TEST_F(VertexEditTest, RefineSplitsTheEdgeAfterTheVertexAndBeforeTheEndOfAnOpenString) {
  const Element ls = Add(ElementKind::Linesink, "S1", At({{0, 0}, {10, 0}, {10, 20}}));
  EditResult r = Refine(db_, ElementKind::Linesink, ls.vertices[0].VID, ui_);
  EXPECT_TRUE(r.done);
  EXPECT_TRUE(r.invalidatesSolution);
  EXPECT_EQ(r.strings, std::vector<std::int64_t>{ls.key});
  EXPECT_EQ(PlacesOf(ls.key), (Places{{0, 0}, {5, 0}, {10, 0}, {10, 20}}));
  EXPECT_EQ(Seqs(ls.key), (std::vector<std::int64_t>{100, 150, 200, 300}));
  // The last vertex: the new one goes before it, never beyond the end.
  Refine(db_, ElementKind::Linesink, ls.vertices[2].VID, ui_);
  EXPECT_EQ(PlacesOf(ls.key), (Places{{0, 0}, {5, 0}, {10, 0}, {10, 10}, {10, 20}}));
  EXPECT_EQ(Vs(ls.key).back().VID, ls.vertices[2].VID);
  ui_.Verify();
}

TEST_F(VertexEditTest, RefineOnTheLastVertexOfAPolygonSplitsTheClosingEdge) {
  const Element lake = Add(ElementKind::Capzone, "L", At({{0, 0}, {0, 10}, {10, 10}, {10, 0}}));
  Refine(db_, ElementKind::Capzone, lake.vertices[3].VID, ui_);
  EXPECT_EQ(PlacesOf(lake.key), (Places{{0, 0}, {0, 10}, {10, 10}, {10, 0}, {5, 0}}));
  EXPECT_EQ(Seqs(lake.key).back(), 500);
}

TEST_F(VertexEditTest, SixHalvingsFitBetweenTwoNumbersThenTheStringIsRenumbered) {
  const Element ls = Add(ElementKind::Linesink, "S", At({{0, 0}, {64, 0}}));
  const std::int64_t first = ls.vertices[0].VID;
  const std::vector<std::int64_t> expected = {150, 125, 112, 106, 103, 101};
  for (std::int64_t seq : expected) {
    Refine(db_, ElementKind::Linesink, first, ui_);
    const std::vector<Vertex> vs = Vs(ls.key);
    EXPECT_EQ(vs[0].Seq, 100) << "renumbered too early";
    EXPECT_EQ(vs[1].Seq, seq);
    EXPECT_EQ(vs.back().Seq, 200);
  }
  // 100 and 101 leave no room: the seventh renumbers first.
  Refine(db_, ElementKind::Linesink, first, ui_);
  const std::vector<Vertex> vs = Vs(ls.key);
  ASSERT_EQ(vs.size(), 9u);
  EXPECT_EQ(vs[0].Seq, 100);
  EXPECT_EQ(vs[1].Seq, 150);
  EXPECT_EQ(vs[2].Seq, 200);
  EXPECT_EQ(vs.back().Seq, 800);
  // Each halving went nearer the first vertex; the order of the string holds.
  EXPECT_EQ(PlacesOf(ls.key),
            (Places{{0, 0}, {0.5, 0}, {1, 0}, {2, 0}, {4, 0}, {8, 0}, {16, 0}, {32, 0}, {64, 0}}));
}

TEST_F(VertexEditTest, RefineOfAVertexGoneSaysSoAndChangesNothing) {
  const Element ls = Add(ElementKind::Linesink, "S", At({{0, 0}, {10, 0}}));
  ui_.ExpectMessage(kInternalErrorTitle, {kVertexNotFound});
  EXPECT_FALSE(Refine(db_, ElementKind::Linesink, 4242, ui_).done);
  ui_.Verify();
  EXPECT_EQ(Vs(ls.key).size(), 2u);
}

TEST_F(VertexEditTest, RefineOfAFluxLineShowsItsNote) {
  const Element fl = Add(ElementKind::FluxLine, "F", At({{0, 0}, {10, 0}}));
  ui_.ExpectMessage(kPleaseNoteTitle, {kFluxRefineNote});
  const EditResult r = Refine(db_, ElementKind::FluxLine, fl.vertices[0].VID, ui_);
  ui_.Verify();
  EXPECT_TRUE(r.done);
  EXPECT_FALSE(r.invalidatesSolution) << "a flux line does not act on the flow";
  EXPECT_EQ(Vs(fl.key).size(), 3u);
}

// Two inhomogeneities that share the edge from (10, 0) to (10, 10), drawn in
// opposite directions, and a third that touches the corner (10, 0) only.
class SharedEdgeTest : public VertexEditTest {
 protected:
  void SetUp() override {
    VertexEditTest::SetUp();
    a_ = Add(ElementKind::Inhomogeneity, "A", At({{0, 0}, {10, 0}, {10, 10}, {0, 10}}));
    b_ = Add(ElementKind::Inhomogeneity, "B", At({{10, 0}, {20, 0}, {20, 10}, {10, 10}}));
    c_ = Add(ElementKind::Inhomogeneity, "C", At({{10, 0}, {15, -10}, {5, -10}}));
  }
  Element a_, b_, c_;
};

TEST_F(SharedEdgeTest, RefineSplitsTheSharedEdgeOnBothSides) {
  const EditResult r = Refine(db_, ElementKind::Inhomogeneity, a_.vertices[1].VID, ui_);
  EXPECT_TRUE(r.done);
  EXPECT_TRUE(r.redrawAll);
  EXPECT_EQ(r.strings, (std::vector<std::int64_t>{a_.key, b_.key}));
  EXPECT_EQ(PlacesOf(a_.key), (Places{{0, 0}, {10, 0}, {10, 5}, {10, 10}, {0, 10}}));
  // B runs the edge backwards, as its closing edge: the new vertex closes it.
  EXPECT_EQ(PlacesOf(b_.key), (Places{{10, 0}, {20, 0}, {20, 10}, {10, 10}, {10, 5}}));
  EXPECT_EQ(PlacesOf(c_.key), (Places{{10, 0}, {15, -10}, {5, -10}})) << "C shares no edge";
  // From B's side: the vertex (10, 10) on B's closing edge splits A's middle edge.
  const Element b = *Load(db_, ElementKind::Inhomogeneity, b_.key);
  Refine(db_, ElementKind::Inhomogeneity, b.vertices[4].VID, ui_);  // (10, 5), last of B
  EXPECT_EQ(PlacesOf(b_.key), (Places{{10, 0}, {20, 0}, {20, 10}, {10, 10}, {10, 5}, {10, 2.5}}));
  EXPECT_EQ(PlacesOf(a_.key), (Places{{0, 0}, {10, 0}, {10, 2.5}, {10, 5}, {10, 10}, {0, 10}}));
}

TEST_F(SharedEdgeTest, MoveTakesTheCoincidentVerticesAlong) {
  const EditResult r =
      MoveVertex(db_, search_, ElementKind::Inhomogeneity, a_.vertices[1].VID, 12, 1, ui_);
  EXPECT_TRUE(r.done);
  EXPECT_TRUE(r.redrawAll);
  EXPECT_EQ(PlacesOf(a_.key)[1], std::make_pair(12.0, 1.0));
  EXPECT_EQ(PlacesOf(b_.key)[0], std::make_pair(12.0, 1.0));
  EXPECT_EQ(PlacesOf(c_.key)[0], std::make_pair(12.0, 1.0));
  // A line-sink ending there is no inhomogeneity: it stays.
  const Element ls = Add(ElementKind::Linesink, "S", At({{0, 10}, {-10, 20}}));
  MoveVertex(db_, search_, ElementKind::Inhomogeneity, a_.vertices[3].VID, -100, -100, ui_);
  EXPECT_EQ(PlacesOf(ls.key)[0], std::make_pair(0.0, 10.0));
  ui_.Verify();
}

TEST_F(VertexEditTest, RefineOfALinesinkLeavesOtherStringsAlone) {
  const Element s1 = Add(ElementKind::Linesink, "S1", At({{0, 0}, {10, 0}}));
  const Element s2 = Add(ElementKind::Linesink, "S2", At({{0, 0}, {10, 0}}));
  const EditResult r = Refine(db_, ElementKind::Linesink, s1.vertices[0].VID, ui_);
  EXPECT_EQ(r.strings, std::vector<std::int64_t>{s1.key});
  EXPECT_EQ(Vs(s2.key).size(), 2u);
}

// ---------------------------------------------------------------------------
// Move.

TEST_F(VertexEditTest, ALinesinkVertexSnapsOntoAVertexOfAnotherLinesinkOnly) {
  const Element s1 = Add(ElementKind::Linesink, "S1", At({{0, 0}, {100, 0}}));
  const Element s2 = Add(ElementKind::Linesink, "S2", At({{300, 300}, {400, 300}}));
  const Element well = Add(ElementKind::Well, "W", Point(600, 600));
  // Dropped 5 away from S2's first vertex (the radius is 31.6): it snaps.
  EditResult r = MoveVertex(db_, search_, ElementKind::Linesink, s1.vertices[1].VID, 305, 303, ui_);
  EXPECT_TRUE(r.done);
  EXPECT_EQ(r.strings, std::vector<std::int64_t>{s1.key});
  EXPECT_EQ(PlacesOf(s1.key)[1], std::make_pair(300.0, 300.0));
  // Near a well it goes where it was dropped.
  search_.Reset();
  MoveVertex(db_, search_, ElementKind::Linesink, s1.vertices[1].VID, 603, 604, ui_);
  EXPECT_EQ(PlacesOf(s1.key)[1], std::make_pair(603.0, 604.0));
  EXPECT_EQ(Vs(s2.key)[0].X, 300.0) << "the target of a snap does not move";
  // A barrier does not snap at all.
  const Element br = Add(ElementKind::Barrier, "B", At({{0, 500}, {10, 500}}));
  search_.Reset();
  MoveVertex(db_, search_, ElementKind::Barrier, br.vertices[0].VID, 402, 301, ui_);
  EXPECT_EQ(PlacesOf(br.key)[0], std::make_pair(402.0, 301.0));
  EXPECT_EQ(LoadVertex(db_, well.key)->X, 600.0);
  ui_.Verify();
}

TEST_F(VertexEditTest, PointsLabelsAndTheUniformFlowMoveTheirRows) {
  const Element well = Add(ElementKind::Well, "W", Point(10, 10));
  EditResult r = MoveVertex(db_, search_, ElementKind::Well, well.key, 20, 30, ui_);
  EXPECT_TRUE(r.done);
  EXPECT_EQ(r.points, std::vector<std::int64_t>{well.key});
  EXPECT_TRUE(r.invalidatesSolution);
  EXPECT_EQ(Load(db_, ElementKind::Well, well.key)->X(), 20.0);

  const Element tp = Add(ElementKind::TestPoint, "T", Point(1, 1));
  EXPECT_FALSE(
      MoveVertex(db_, search_, ElementKind::TestPoint, tp.key, 2, 3, ui_).invalidatesSolution);
  EXPECT_EQ(LoadVertex(db_, tp.key)->Y, 3.0);

  db_.ExecuteRaw("insert into TextLabels (Text, X, Y) values ('town', 5, 5)");
  r = MoveVertex(db_, search_, ElementKind::Text, 1, 50, 60, ui_);
  EXPECT_TRUE(r.done);
  EXPECT_FALSE(r.invalidatesSolution);
  EXPECT_EQ(Count("select count(*) from TextLabels where X = 50 and Y = 60"), 1);

  Element uf = NewElement(ElementKind::UniformFlow, {{0, -10, 0, 7, 8}});
  uf.row.Set("UNIFLOWCompute", 1);
  uf.row.Set("UNIFLOWRefX", 7.0);
  uf.row.Set("UNIFLOWRefY", 8.0);
  StoreUniformFlow(db_, uf);
  r = MoveVertex(db_, search_, ElementKind::UniformFlow, 0, 70, 80, ui_);
  EXPECT_TRUE(r.invalidatesSolution);
  const auto moved = LoadUniformFlow(db_);
  ASSERT_TRUE(moved.has_value());
  EXPECT_EQ(moved->row.Number("UNIFLOWRefX"), 70.0);
  EXPECT_EQ(moved->vertices.at(0).Y, 80.0);
  ui_.Verify();
}

// A model boundary around a far field around a hydrologic unit.
class DomainMoveTest : public VertexEditTest {
 protected:
  void SetUp() override {
    VertexEditTest::SetUp();
    search_.SetWindow(10, 10);  // a small radius: no snapping here
    model_ = Add(ElementKind::Domain, "Model_M", At({{0, 0}, {0, 100}, {100, 100}, {100, 0}}));
    far_ = Add(ElementKind::Domain, "Far_Field_F", At({{20, 20}, {20, 80}, {80, 80}, {80, 20}}));
    unit_ = Add(ElementKind::Domain, "Unit", At({{40, 40}, {40, 60}, {60, 60}, {60, 40}}));
  }
  void ExpectRefused(const Element& d, double x, double y, const std::string& line1,
                     const std::string& line2) {
    const auto before = PlacesOf(d.key);
    ui_.ExpectMessage(kReEnterTitle, {line1, line2});
    EXPECT_FALSE(MoveVertex(db_, search_, ElementKind::Domain, d.vertices[0].VID, x, y, ui_).done);
    ui_.Verify();
    EXPECT_EQ(PlacesOf(d.key), before) << "a refused vertex stays where it was";
  }
  Element model_, far_, unit_;
};

TEST_F(DomainMoveTest, BoundariesKeepTheirOrder) {
  ExpectRefused(far_, 150, 150, kOutsideModel, kChooseInside);
  ExpectRefused(far_, 50, 50, kInsideUnit, kChooseOutside);
  ExpectRefused(model_, 30, 30, kInsideFarField, kChooseOutside);
  ExpectRefused(unit_, 101, 50, kOutsideModel, kChooseInside);
  // Allowed moves.
  EditResult r = MoveVertex(db_, search_, ElementKind::Domain, far_.vertices[0].VID, 10, 10, ui_);
  EXPECT_TRUE(r.done);
  EXPECT_TRUE(r.redrawAll);
  EXPECT_EQ(PlacesOf(far_.key)[0], std::make_pair(10.0, 10.0));
  EXPECT_TRUE(
      MoveVertex(db_, search_, ElementKind::Domain, model_.vertices[0].VID, -5, -5, ui_).done);
  ui_.Verify();
}

// ---------------------------------------------------------------------------
// Delete.

TEST_F(VertexEditTest, APointIsDeletedAfterItsQuestion) {
  const Element well = Add(ElementKind::Well, "W", Point(10, 10));
  ui_.ExpectMessage(kConfirmTitle, {kDeleteElement}, Answer::No);
  EXPECT_FALSE(DeleteElements(db_, ElementKind::Well, well.key, ui_).done);
  EXPECT_TRUE(Load(db_, ElementKind::Well, well.key).has_value());

  ui_.ExpectMessage(kConfirmTitle, {kDeleteElement}, Answer::Yes).WithButtons(Buttons::YesNo);
  const EditResult r = DeleteElements(db_, ElementKind::Well, well.key, ui_);
  ui_.Verify();
  EXPECT_TRUE(r.done && r.removedElement && r.selectionGone && r.invalidatesSolution);
  EXPECT_EQ(Count("select count(*) from Wells"), 0);
  EXPECT_EQ(Count("select count(*) from Vertices"), 0);
  EXPECT_EQ(ui_.CurrentActivity(), kSelectActivity);
  EXPECT_EQ(ui_.CurrentFeedback(), kSelectFeedback);

  const Element tp = Add(ElementKind::TestPoint, "T", Point(1, 1));
  Element pa = NewElement(ElementKind::Particle, Point(2, 2));
  Insert(db_, pa);
  db_.ExecuteRaw("insert into TextLabels (Text, X, Y) values ('town', 5, 5)");
  ui_.ExpectMessage(kConfirmTitle, {kDeleteTestPoint}, Answer::Yes);
  ui_.ExpectMessage(kConfirmTitle, {kDeleteParticle}, Answer::Yes);
  ui_.ExpectMessage(kConfirmTitle, {kDeleteLabel}, Answer::Yes);
  EXPECT_FALSE(DeleteElements(db_, ElementKind::TestPoint, tp.key, ui_).invalidatesSolution);
  DeleteElements(db_, ElementKind::Particle, pa.key, ui_);
  DeleteElements(db_, ElementKind::Text, 1, ui_);
  ui_.Verify();
  EXPECT_EQ(Count("select count(*) from TestPoints"), 0);
  EXPECT_EQ(Count("select count(*) from Particles"), 0);
  EXPECT_EQ(Count("select count(*) from TextLabels"), 0);
}

TEST_F(VertexEditTest, UniformFlowIsRemovedOnlyOnYes) {
  Element uf = NewElement(ElementKind::UniformFlow, {{0, -10, 0, 7, 8}});
  uf.row.Set("UNIFLOWCompute", 1);
  uf.row.Set("UNIFLOWGradient", 0.01);
  StoreUniformFlow(db_, uf);
  ui_.ExpectMessage(kConfirmTitle, {kRemoveUniformFlow}, Answer::No);
  ui_.ExpectMessage(kCanceledTitle, {kUniformFlowInUse});
  EXPECT_FALSE(DeleteElements(db_, ElementKind::UniformFlow, 0, ui_).done);
  ui_.Verify();
  EXPECT_TRUE(LoadUniformFlow(db_).has_value());
  ui_.ExpectMessage(kConfirmTitle, {kRemoveUniformFlow}, Answer::Yes);
  EXPECT_TRUE(DeleteElements(db_, ElementKind::UniformFlow, 0, ui_).done);
  ui_.Verify();
  EXPECT_FALSE(LoadUniformFlow(db_).has_value());
  EXPECT_EQ(Count("select count(*) from Vertices where PID = -10"), 0);
}

TEST_F(VertexEditTest, AStringLosesAVertexOrAllOfItAsTheDialogSays) {
  const Element ls = Add(ElementKind::Linesink, "S", At({{0, 0}, {10, 0}, {20, 0}}));
  ExpectConfirm(kDeleteString, LSConfirm::kCancel);
  EXPECT_FALSE(DeleteElements(db_, ElementKind::Linesink, ls.vertices[1].VID, ui_).done);
  EXPECT_EQ(Vs(ls.key).size(), 3u);

  ExpectConfirm(kDeleteString, LSConfirm::kVertex);
  EditResult r = DeleteElements(db_, ElementKind::Linesink, ls.vertices[1].VID, ui_);
  EXPECT_TRUE(r.done && r.selectionGone && r.invalidatesSolution);
  EXPECT_FALSE(r.removedElement);
  EXPECT_EQ(PlacesOf(ls.key), (Places{{0, 0}, {20, 0}}));

  ExpectConfirm(kDeleteString, LSConfirm::kEntireString);
  r = DeleteElements(db_, ElementKind::Linesink, ls.vertices[2].VID, ui_);
  ui_.Verify();
  EXPECT_TRUE(r.removedElement);
  EXPECT_EQ(Count("select count(*) from LinesinkStrings"), 0);
  EXPECT_EQ(Count("select count(*) from Polygons"), 0);
  EXPECT_EQ(Count("select count(*) from Vertices"), 0);
}

TEST_F(VertexEditTest, DeletingTheLastButOneVertexDeletesTheStringWithTheWarning) {
  const Element ls = Add(ElementKind::Linesink, "S", At({{0, 0}, {10, 0}}));
  const Element keep = Add(ElementKind::Linesink, "K", At({{50, 0}, {60, 0}}));
  ExpectConfirm(kDeleteString, LSConfirm::kVertex);
  ui_.ExpectMessage(kWarningTitle, {kPhantomLinesink});
  const EditResult r = DeleteElements(db_, ElementKind::Linesink, ls.vertices[0].VID, ui_);
  ui_.Verify();
  EXPECT_TRUE(r.removedElement);
  EXPECT_FALSE(Load(db_, ElementKind::Linesink, ls.key).has_value());
  EXPECT_EQ(Count("select count(*) from Vertices where PID = " + std::to_string(ls.key)), 0);
  EXPECT_EQ(Count("select count(*) from Polygons where PID = " + std::to_string(ls.key)), 0);
  EXPECT_TRUE(Load(db_, ElementKind::Linesink, keep.key).has_value());

  const Element br = Add(ElementKind::Barrier, "B", At({{0, 0}, {10, 0}}));
  ExpectConfirm(kDeleteString, LSConfirm::kVertex);
  ui_.ExpectMessage(kWarningTitle, {kPhantomNoFlow});
  EXPECT_TRUE(DeleteElements(db_, ElementKind::Barrier, br.vertices[1].VID, ui_).removedElement);
  ui_.Verify();
  EXPECT_EQ(Count("select count(*) from NoFlowStrings"), 0);
}

TEST_F(VertexEditTest, EachStringKindAsksItsOwnQuestion) {
  const Element d = Add(ElementKind::Domain, "D", At({{0, 0}, {0, 10}, {10, 10}}));
  const Element c = Add(ElementKind::Capzone, "C", At({{0, 0}, {0, 10}, {10, 10}}));
  const Element f = Add(ElementKind::FluxLine, "F", At({{0, 0}, {10, 10}, {20, 10}}));
  ExpectConfirm(kDeleteDomain, LSConfirm::kCancel);
  ExpectConfirm(kDeleteCapzone, LSConfirm::kCancel);
  ExpectConfirm(kDeleteFluxLine, LSConfirm::kVertex);
  ui_.ExpectMessage(kPleaseNoteTitle, {kFluxDeleteNote});
  DeleteElements(db_, ElementKind::Domain, d.vertices[0].VID, ui_);
  DeleteElements(db_, ElementKind::Capzone, c.vertices[0].VID, ui_);
  DeleteElements(db_, ElementKind::FluxLine, f.vertices[0].VID, ui_);
  ui_.Verify();
  EXPECT_EQ(Vs(f.key).size(), 2u);
}

// A failure halfway (here: the port cannot answer the warning) leaves the file as
// it was: the vertex is not deleted without its string.
TEST_F(VertexEditTest, ADeleteThatFailsHalfwayChangesNothing) {
  const Element ls = Add(ElementKind::Linesink, "S", At({{0, 0}, {10, 0}}));
  ExpectConfirm(kDeleteString, LSConfirm::kVertex);
  EXPECT_THROW(DeleteElements(db_, ElementKind::Linesink, ls.vertices[0].VID, ui_),
               UnexpectedUiCall);
  ui_.ClearScript();
  EXPECT_EQ(Vs(ls.key).size(), 2u);
  EXPECT_TRUE(Load(db_, ElementKind::Linesink, ls.key).has_value());
}

// ---------------------------------------------------------------------------
// Clean-up of strings.

TEST_F(VertexEditTest, VerticesTooCloseToTheLastKeptAreRemoved) {
  // Segments 10, 0.5, 9.5, 0.4: mean 5.1, so anything under 0.51 of the last kept goes.
  const Element ls =
      Add(ElementKind::Linesink, "S", At({{0, 0}, {10, 0}, {10.5, 0}, {20, 0}, {20.4, 0}}));
  ui_.ExpectMessage(kTooCloseTitle, {kTooClose});
  ui_.ExpectMessage(kTooCloseTitle, {kTooClose});
  EXPECT_EQ(CheckPolyVertices(db_, ls.key, ui_), 2);
  ui_.Verify();
  EXPECT_EQ(PlacesOf(ls.key), (Places{{0, 0}, {10, 0}, {20, 0}}));
  // Nothing to do for a single vertex or a well spaced string.
  EXPECT_EQ(CheckPolyVertices(db_, ls.key, ui_), 0);
  EXPECT_EQ(CheckPolyVertices(db_, 9999, ui_), 0);
}

TEST_F(VertexEditTest, AStringThatShrinksToOneVertexIsAPhantom) {
  const Element ls = Add(ElementKind::Linesink, "S", At({{0, 0}, {10, 0}}));
  EXPECT_FALSE(CheckPhantomLinesinkVertices(db_, ls.key, ui_));
  // Close vertices never take a string below two (the first kept is always the
  // far end's neighbour); a string written with one vertex left is the phantom.
  const Element tiny = Add(ElementKind::Barrier, "B", At({{0, 0}, {10, 0}}));
  db_.ExecuteRaw("delete from Vertices where VID = " + std::to_string(tiny.vertices[1].VID));
  ui_.ExpectMessage(kWarningTitle, {kPhantomNoFlow});
  EXPECT_TRUE(CheckPhantomNoFlowVertices(db_, tiny.key, ui_));
  ui_.Verify();
  EXPECT_FALSE(Load(db_, ElementKind::Barrier, tiny.key).has_value());
  EXPECT_EQ(Count("select count(*) from Vertices"), 2);
}

// ---------------------------------------------------------------------------
// Imported vertices and polygon tests.

TEST_F(VertexEditTest, CheckVerticesStepsRightUntilTheBoxIsFreeAndLogsTheChange) {
  AddVertex(db_, 100, 100, -1, 0);
  AddVertex(db_, 100.9, 100.5, -1, 0);
  EXPECT_EQ(CheckVertices(db_, 50, 50, 1.0), 50.0);
  const std::string log = (dir_ / "import.log").string();
  // 100 and 101 fall within 1 of a vertex; 102 is free (100.9 is 1.1 away).
  EXPECT_EQ(CheckVertices(db_, 100, 100.2, 1.0, log), 102.0);
  EXPECT_EQ(CheckVertices(db_, 99, 100, 1.0, log), 99.0) << "exactly one tolerance away is free";
  EXPECT_EQ(CheckVertices(db_, 100, 100, 0.0), 100.0);
  std::ifstream in(log, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  EXPECT_EQ(text.str(), "X:100\tY:100.2\t|\tX:102\tY:100.2\r\n");
}

TEST_F(VertexEditTest, PointInPolygonAndArea) {
  const Element sq = Add(ElementKind::Capzone, "L", At({{0, 0}, {0, 10}, {10, 10}, {10, 0}}));
  EXPECT_TRUE(PointInPolygon(db_, sq.key, 5, 5));
  EXPECT_TRUE(PointInPolygon(db_, sq.key, 9.99, 0.01));
  EXPECT_FALSE(PointInPolygon(db_, sq.key, 15, 5));
  EXPECT_FALSE(PointInPolygon(db_, sq.key, -0.01, 5));
  EXPECT_FALSE(PointInPolygon(db_, sq.key, 10, 10)) << "a point on a vertex is outside";
  EXPECT_FALSE(PointInPolygon(db_, sq.key, 0, 0));
  ASSERT_TRUE(PolygonArea(db_, sq.key, ui_).has_value());
  EXPECT_DOUBLE_EQ(*PolygonArea(db_, sq.key, ui_), 100.0);  // clockwise
  const Element ccw = Add(ElementKind::Capzone, "C", At({{0, 0}, {4, 0}, {4, 3}}));
  EXPECT_DOUBLE_EQ(*PolygonArea(db_, ccw.key, ui_), -6.0);
  const Element line = Add(ElementKind::Linesink, "S", At({{0, 0}, {4, 0}}));
  EXPECT_FALSE(PointInPolygon(db_, line.key, 2, 0));
  ui_.ExpectMessage(kNotEnoughPointsTitle, {kNotEnoughPoints});
  EXPECT_FALSE(PolygonArea(db_, line.key, ui_).has_value());
  ui_.Verify();
}

TEST(LSConfirmTest, ButtonsAndResult) {
  LSConfirm d;
  EXPECT_EQ(d.DialogName(), "LSConfirm");
  EXPECT_EQ(d.Message, "Delete the selected vertex or the entire string?");
  EXPECT_EQ(d.Result, LSConfirm::kCancel);
  EXPECT_STREQ(LSConfirm::kButtons[2].caption, "Entire String");
  EXPECT_STREQ(LSConfirm::kButtons[1].tip, "Delete only the selected vertex");
  d.Click(2);
  EXPECT_EQ(d.Result, 2);
}

}  // namespace
}  // namespace tarno
