// The search for the vertex at a click: its radius, the cycle through near vertices
// on repeated clicks, text labels as vertices, and the connection's R*Tree index,
// which must give the same answers as reading the whole table.
#include <gtest/gtest.h>

#include <random>

#include "elements/element_store.h"
#include "elements/vertex_edit.h"
#include "support/project_fixture.h"

namespace tarno {
namespace {

class VertexSearchTest : public testing::ScratchProject,
                         public ::testing::WithParamInterface<bool> {
 protected:
  void SetUp() override {
    ScratchProject::SetUp();
    // A window 1000 by 1000: radius2 = 0.0005 * 2e6 = 1000, a radius of about 31.6.
    search_.SetWindow(1000, 1000);
    search_.useIndex = GetParam();
  }
  std::int64_t V(double x, double y, std::int64_t pid = -1) { return AddVertex(db_, x, y, pid, 0); }
  std::int64_t Click(double x, double y, bool cycle = true, const LabelSearch& labels = {}) {
    return FindVertex(db_, search_, x, y, cycle, labels).vid;
  }
  VertexSearch search_;
};

TEST_P(VertexSearchTest, RadiusFollowsTheWindowAndNothingNearGivesMinusOne) {
  EXPECT_DOUBLE_EQ(search_.radius2, 1000.0);
  V(500, 500);
  // A click at the window's corner, far from the one vertex.
  EXPECT_EQ(Click(0.5, 0.5), -1);
  EXPECT_EQ(Click(1000, 1000), -1);
  // Just inside and just outside the radius (31.62...).
  EXPECT_EQ(Click(531, 500, false), 1);
  search_.Reset();
  EXPECT_EQ(Click(532, 500, false), -1);
  // A zoom to a window a tenth the size shrinks the radius to 3.16.
  search_.SetWindow(100, 100);
  EXPECT_DOUBLE_EQ(search_.radius2, 10.0);
  EXPECT_EQ(Click(510, 500), -1);
  EXPECT_EQ(Click(503, 500), 1);
}

TEST_P(VertexSearchTest, FindsTheNearestAndReturnsItsRow) {
  V(100, 100);
  const auto b = V(110, 100, 7);
  V(130, 100);
  const FoundVertex f = FindVertex(db_, search_, 108, 101, true);
  ASSERT_TRUE(f.Found());
  EXPECT_EQ(f.vid, b);
  EXPECT_EQ(f.vertex.PID, 7);
  EXPECT_EQ(f.vertex.X, 110.0);
  EXPECT_EQ(search_.lastX, 108.0);
  EXPECT_EQ(search_.lastY, 101.0);
  EXPECT_EQ(search_.visited, std::vector<std::int64_t>{b});
}

TEST_P(VertexSearchTest, CoincidentVerticesComeInTurnThenTheRoundStartsAgain) {
  const auto a = V(200, 200);
  const auto b = V(200, 200);
  const auto c = V(201, 200);  // within 0.2 of the radius (14.1)
  V(225, 200);                 // within the radius, but not within its 45 %
  EXPECT_EQ(Click(200, 200), a);
  EXPECT_EQ(Click(200.5, 200), b);
  EXPECT_EQ(Click(200, 200.5), c);
  // All near vertices visited: the next click goes round to the nearest.
  EXPECT_EQ(Click(200, 200), a);
  EXPECT_EQ(search_.lastReturned, a);
  EXPECT_EQ(search_.visited, std::vector<std::int64_t>{a});
  EXPECT_EQ(Click(200, 200), b);
}

TEST_P(VertexSearchTest, AClickAwayFromTheCycleStartsAFreshSearch) {
  const auto a = V(300, 300);
  const auto b = V(300, 300);
  EXPECT_EQ(Click(300, 300), a);
  // 0.333 * 1000 = 333: a click 19 away (361) is not in the cycle any more.
  EXPECT_EQ(Click(319, 300), a);
  // 9 from (319, 300): within the cycle, and b lies 10 away, within 0.2 * 1000.
  EXPECT_EQ(Click(310, 300), b);
  EXPECT_EQ(search_.lastX, 319.0);
  // 15 away from b is beyond 0.2 of the radius: the cycle goes round to the nearest.
  EXPECT_EQ(Click(315, 300), a);
}

TEST_P(VertexSearchTest, ASnapInTheMiddleOfACycleTakesTheSelectedVertex) {
  V(400, 400);
  const auto b = V(401, 400);
  Click(400, 400);
  EXPECT_EQ(Click(400, 400), b);
  // A snap search near the cycle's point gives back the last selected vertex ...
  EXPECT_EQ(Click(400, 400, false), b);
  // ... and does not move the cycle on.
  EXPECT_EQ(search_.visited.size(), 2u);
  // Without a cycle it is a plain nearest search.
  search_.Reset();
  EXPECT_EQ(Click(401.2, 400, false), b);
  EXPECT_TRUE(search_.visited.empty());
  EXPECT_EQ(search_.lastX, 0.0);
}

TEST_P(VertexSearchTest, TextLabelsCountWhenShown) {
  const auto v = V(600, 600);
  db_.ExecuteRaw(
      "insert into TextLabels (Text, X, Y, LabelType) values ('river', 602, 600, 1);"
      "insert into TextLabels (Text, X, Y, LabelType) values ('town', 605, 600, 0);");
  EXPECT_EQ(Click(604, 600), v) << "labels are not searched unless shown";
  search_.Reset();
  const FoundVertex town = FindVertex(db_, search_, 604, 600, true, {true, false});
  EXPECT_EQ(town.vid, -2);
  EXPECT_EQ(town.label, 2);
  EXPECT_EQ(town.vertex.X, 605.0);
  search_.Reset();
  // A hydrography label only with its switch.
  EXPECT_EQ(FindVertex(db_, search_, 602.5, 600, true, {true, false}).vid, v);
  search_.Reset();
  const FoundVertex river = FindVertex(db_, search_, 602.5, 600, true, {true, true});
  EXPECT_EQ(river.vid, -2);
  EXPECT_EQ(river.label, 1);
  // Cycling steps from the label to the vertex and the other label.
  EXPECT_EQ(FindVertex(db_, search_, 602.5, 600, true, {true, true}).vid, v);
  EXPECT_EQ(FindVertex(db_, search_, 602.5, 600, true, {true, true}).label, 2);
}

TEST_P(VertexSearchTest, EmptyProjectFindsNothing) {
  EXPECT_EQ(Click(10, 10), -1);
  EXPECT_EQ(Click(10, 10, false), -1);
}

INSTANTIATE_TEST_SUITE_P(IndexOnAndOff, VertexSearchTest, ::testing::Bool(),
                         [](const auto& info) { return info.param ? "Index" : "Table"; });

class VertexIndexTest : public testing::ScratchProject {};

// Random vertices (with many on a coarse grid, so that equal distances occur) and
// random clicks, repeated in place to cycle: the index and the table agree at each.
TEST_F(VertexIndexTest, IndexedSearchEqualsTheFullQuery) {
  std::mt19937 rng(20261123);
  std::uniform_real_distribution<double> coord(0.0, 1000.0);
  std::uniform_int_distribution<int> grid(0, 50);
  Transaction tx(db_);
  for (int i = 0; i < 3000; ++i) {
    if (i % 3 == 0)
      AddVertex(db_, grid(rng) * 20.0, grid(rng) * 20.0, -1, 0);
    else
      AddVertex(db_, coord(rng), coord(rng), i % 7, i);
  }
  tx.Commit();
  ASSERT_TRUE(VertexIndexAvailable(db_));
  VertexSearch indexed, plain;
  indexed.useIndex = true;
  plain.useIndex = false;
  int found = 0;
  for (double window : {1000.0, 300.0, 60.0}) {
    indexed.SetWindow(window, window);
    plain.SetWindow(window, window);
    for (int click = 0; click < 100; ++click) {
      double x = coord(rng), y = coord(rng);
      if (click % 4 == 0) x = grid(rng) * 20.0, y = grid(rng) * 20.0;
      const bool cycle = click % 5 != 0;
      for (int repeat = 0; repeat < 4; ++repeat) {
        const FoundVertex a = FindVertex(db_, indexed, x, y, cycle);
        const FoundVertex b = FindVertex(db_, plain, x, y, cycle);
        ASSERT_EQ(a.vid, b.vid) << "click " << click << " at " << x << ", " << y;
        ASSERT_EQ(indexed.visited, plain.visited);
        found += a.Found();
      }
    }
  }
  EXPECT_GT(found, 300);
}

TEST_F(VertexIndexTest, IndexFollowsEveryWriterAndStaysOutOfTheFile) {
  ASSERT_TRUE(VertexIndexAvailable(db_));
  VertexSearch s;
  s.SetWindow(1000, 1000);
  const auto a = AddVertex(db_, 100, 100, -1, 0);
  EXPECT_EQ(FindVertex(db_, s, 100, 100, false).vid, a);
  // Moved and deleted by plain SQL on the connection: the TEMP triggers follow.
  db_.ExecuteRaw("update Vertices set X = 800 where VID = " + std::to_string(a));
  EXPECT_EQ(FindVertex(db_, s, 100, 100, false).vid, -1);
  EXPECT_EQ(FindVertex(db_, s, 800, 100, false).vid, a);
  db_.ExecuteRaw("delete from Vertices where VID = " + std::to_string(a));
  EXPECT_EQ(FindVertex(db_, s, 800, 100, false).vid, -1);
  // Written by another connection: the index is filled again.
  {
    Database other = Database::Open(ProjectPath());
    other.ExecuteRaw("insert into Vertices (PID, Seq, X, Y) values (-1, 0, 300, 300)");
  }
  EXPECT_TRUE(FindVertex(db_, s, 300, 300, false).Found());
  // The project file's own schema has no trace of the index.
  Statement st = db_.PrepareRaw(
      "select count(*) from main.sqlite_master where name like '%vertex_index%' or sql like "
      "'%rtree%'");
  ASSERT_TRUE(st.Step());
  EXPECT_EQ(st.GetInt64(0), 0);
  // A new connection starts without it and builds its own.
  db_.Close();
  db_ = Database::Open(ProjectPath());
  EXPECT_TRUE(FindVertex(db_, s, 300, 300, false).Found());
}

}  // namespace
}  // namespace tarno
