// The element layer's store: every kind written and read back equal, incomplete
// elements reported and skipped, lookups by label, removal, uniform flow in the
// Model row; the solver labels; the polygon tests and the local base.
#include <gtest/gtest.h>

#include "elements/element_store.h"
#include "elements/geometry.h"
#include "elements/solver_label.h"
#include "store/schema.h"
#include "support/project_fixture.h"

namespace tarno {
namespace {

class ElementStoreTest : public testing::ScratchProject {};

TEST_F(ElementStoreTest, EveryKindReadsBackAsWritten) {
  for (const KindInfo& k : ElementKinds()) {
    SCOPED_TRACE(std::string(k.word));
    std::vector<Vertex> v;
    if (k.geometry == Geometry::Point || k.geometry == Geometry::Model) v = At({{10.5, 20.25}});
    else if (k.geometry != Geometry::Row) v = At({{0, 0}, {100, 0}, {100, 50}});
    Element e = NewElement(k.kind, v);
    if (k.kind == ElementKind::UniformFlow) {
      e.row.Set("UNIFLOWCompute", 1);
      e.row.Set("UNIFLOWRefX", 10.5);
      e.row.Set("UNIFLOWRefY", 20.25);
      e.row.Set("UNIFLOWGradient", 0.001);
    } else if (k.kind == ElementKind::Text) {
      e.row.Set("Text", "River Road");
      e.row.Set("X", 5.0);
      e.row.Set("Y", 6.0);
    } else if (k.kind != ElementKind::Particle) {
      e.row.Set("Label", "E_" + std::string(k.word));
      if (e.row.Has("StageTableFilename")) e.row.Set("StageTableFilename", "stage.tbl");
    }
    Insert(db_, e);
    auto back = Load(db_, k.kind, e.key);
    ASSERT_TRUE(back.has_value());
    EXPECT_EQ(back->row, e.row);
    ASSERT_EQ(back->vertices.size(), v.size());
    for (std::size_t i = 0; i < v.size(); ++i) {
      EXPECT_EQ(back->vertices[i].X, v[i].X);
      EXPECT_EQ(back->vertices[i].Y, v[i].Y);
    }
    if (k.geometry == Geometry::String || k.geometry == Geometry::Polygon) {
      EXPECT_EQ(back->vertices[1].Seq, 200);
      EXPECT_EQ(back->vertices[0].PID, e.key);
    }
  }
  EXPECT_EQ(LoadAll(db_, ElementKind::Well).size(), 1u);
}

TEST_F(ElementStoreTest, UpdateWritesTheRowAndMovesTheVertices) {
  Element s = NewElement(ElementKind::Linesink, At({{0, 0}, {10, 0}}));
  s.row.Set("Label", "River");
  Insert(db_, s);
  s.row.Set("Resistance", 2.5);
  s.vertices[1].X = 12;
  s.vertices.push_back({0, 0, 0, 20, 5});  // a new vertex goes to the end
  Update(db_, s);
  auto back = Load(db_, ElementKind::Linesink, s.key);
  ASSERT_TRUE(back);
  EXPECT_DOUBLE_EQ(back->row.Number("resistance"), 2.5);
  ASSERT_EQ(back->vertices.size(), 3u);
  EXPECT_DOUBLE_EQ(back->vertices[1].X, 12);
  EXPECT_DOUBLE_EQ(back->vertices[2].X, 20);
  EXPECT_GT(back->vertices[2].Seq, back->vertices[1].Seq);
}

TEST_F(ElementStoreTest, IncompleteElementsAreSkippedByLabel) {
  db_.ExecuteRaw(
      "insert into Wells (VID, Label) values (999, 'Lost'); "
      "insert into Polygons (Closed) values (0);"
      "insert into LinesinkStrings (PID, Label) values (last_insert_rowid(), 'Short');");
  const std::int64_t pid = db_.LastInsertId();
  AddVertex(db_, 1, 1, pid, 100);  // one vertex: not a string
  Element ok = NewElement(ElementKind::Well, At({{1, 2}}));
  ok.row.Set("Label", "Good");
  Insert(db_, ok);

  std::vector<SkippedElement> skipped;
  auto wells = LoadAll(db_, ElementKind::Well, &skipped);
  ASSERT_EQ(wells.size(), 1u);
  EXPECT_EQ(wells[0].Label(), "Good");
  auto strings = LoadAll(db_, ElementKind::Linesink, &skipped);
  EXPECT_TRUE(strings.empty());
  ASSERT_EQ(skipped.size(), 2u);
  EXPECT_EQ(skipped[0].label, "Lost");
  EXPECT_EQ(skipped[0].reason, "has no vertex");
  EXPECT_EQ(skipped[1].label, "Short");
  EXPECT_EQ(skipped[1].reason, "has 1 vertex");
}

TEST_F(ElementStoreTest, LabelsAreFoundWithoutRegardToCaseAndRemovalTakesEverything) {
  Element b = NewElement(ElementKind::Barrier, At({{0, 0}, {5, 5}}));
  b.row.Set("Label", "Wall");
  Insert(db_, b);
  auto found = FindByLabel(db_, ElementKind::Barrier, "WALL");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->key, b.key);
  EXPECT_FALSE(FindByLabel(db_, ElementKind::Linesink, "Wall"));
  EXPECT_EQ(OwnerOfString(db_, b.key), ElementKind::Barrier);

  Remove(db_, ElementKind::Barrier, b.key);
  EXPECT_FALSE(Load(db_, ElementKind::Barrier, b.key));
  Statement n = db_.PrepareRaw("select (select count(*) from Vertices), (select count(*) from Polygons)");
  ASSERT_TRUE(n.Step());
  EXPECT_EQ(n.GetInt64(0), 0);
  EXPECT_EQ(n.GetInt64(1), 0);
}

TEST_F(ElementStoreTest, UniformFlowLivesInTheModelRow) {
  EXPECT_FALSE(LoadUniformFlow(db_));
  Element u = NewElement(ElementKind::UniformFlow);
  u.row.Set("UNIFLOWRefX", 7.0);
  u.row.Set("UNIFLOWOrientation", 45.0);
  StoreUniformFlow(db_, u);
  StoreUniformFlow(db_, u);  // a second store moves the one reference vertex
  auto back = LoadUniformFlow(db_);
  ASSERT_TRUE(back);
  EXPECT_DOUBLE_EQ(back->row.Number("UNIFLOWOrientation"), 45.0);
  ASSERT_EQ(back->vertices.size(), 1u);
  EXPECT_DOUBLE_EQ(back->vertices[0].X, 7.0);
  EXPECT_EQ(LoadVertices(db_, -10).size(), 1u);
  RemoveUniformFlow(db_);
  EXPECT_FALSE(LoadUniformFlow(db_));
  EXPECT_TRUE(LoadVertices(db_, -10).empty());
}

TEST_F(ElementStoreTest, FieldsAreSetFromTextByTheirType) {
  Element w = NewElement(ElementKind::Well, At({{0, 0}}));
  EXPECT_TRUE(w.row.SetFromText("radius", "0.25"));
  EXPECT_TRUE(w.row.SetFromText("HEADSPECIFIED", "true"));
  EXPECT_TRUE(w.row.SetFromText("Label", "P 1"));  // the checks belong to the dialogs
  EXPECT_FALSE(w.row.SetFromText("Radius", "abc"));
  EXPECT_FALSE(w.row.SetFromText("NoSuchField", "1"));
  EXPECT_DOUBLE_EQ(w.row.Number("Radius"), 0.25);
  EXPECT_TRUE(w.row.Flag("HeadSpecified"));
  EXPECT_EQ(w.row.CanonicalName("headspecified"), "HeadSpecified");
}

TEST_F(ElementStoreTest, AnInnerTransactionCommitsIntoTheOuterOne) {
  {
    Transaction outer(db_);
    Element w = NewElement(ElementKind::Well, At({{0, 0}}));
    w.row.Set("Label", "Gone");
    Insert(db_, w);  // its own transaction, nested
  }  // the outer one rolls back
  EXPECT_TRUE(LoadAll(db_, ElementKind::Well).empty());
  EXPECT_TRUE(LoadVertices(db_, -1).empty());
}

TEST(SolverLabelTest, BuildAndParse) {
  EXPECT_EQ(SolverLabel("WL_", 12), "WL_000012");
  EXPECT_EQ(SolverVertexLabel("LS_", 3, 200), "LS_000003_0200");
  auto p = ParseSolverLabel("LS_000003_0200");
  ASSERT_TRUE(p);
  EXPECT_EQ(p->prefix, "LS_");
  EXPECT_EQ(p->key, 3);
  EXPECT_EQ(p->seq, 200);
  auto w = ParseSolverLabel("TP_1234567");
  ASSERT_TRUE(w);
  EXPECT_EQ(w->key, 1234567);
  EXPECT_FALSE(w->seq);
  EXPECT_FALSE(ParseSolverLabel("W1"));
  EXPECT_FALSE(ParseSolverLabel("WL_12a"));
}

TEST(PolygonTest, InsideOutsideAndArea) {
  const std::vector<Vertex> square = {{0, 0, 0, 0, 0}, {0, 0, 0, 0, 10}, {0, 0, 0, 10, 10},
                                      {0, 0, 0, 10, 0}};
  EXPECT_TRUE(PointInPolygon(square, 5, 5));
  EXPECT_FALSE(PointInPolygon(square, 15, 5));
  EXPECT_FALSE(PointInPolygon(square, 10, 10));  // on a vertex: outside
  EXPECT_FALSE(PointInPolygon(std::span(square).first(2), 5, 5));
  EXPECT_DOUBLE_EQ(PolygonArea(square), 100.0);  // clockwise
  std::vector<Vertex> ccw(square.rbegin(), square.rend());
  EXPECT_DOUBLE_EQ(PolygonArea(ccw), -100.0);
}

TEST_F(ElementStoreTest, LocalBaseIsThatOfTheSmallestInhomogeneityHoldingThePoint) {
  db_.ExecuteRaw("update Model set AQBase = -5");
  auto add = [&](const char* label, double size, bool changeB, double bottom) {
    Element in = NewElement(ElementKind::Inhomogeneity,
                            At({{0, 0}, {0, size}, {size, size}, {size, 0}}));
    in.row.Set("Label", label);
    in.row.Set("ChangeB", changeB);
    in.row.Set("BottomElevation", bottom);
    Insert(db_, in);
  };
  add("Big", 100, true, -20);
  add("Small", 10, true, -30);
  add("Smaller", 5, false, -40);  // ChangeB off: no base of its own
  EXPECT_DOUBLE_EQ(FindLocalBase(db_, 3, 3), -30);
  EXPECT_DOUBLE_EQ(FindLocalBase(db_, 50, 50), -20);
  EXPECT_DOUBLE_EQ(FindLocalBase(db_, 500, 500), -5);
}

}  // namespace
}  // namespace tarno
