// What the consumers of the element layer lean on besides LoadAll: the rows kept
// with their incomplete geometry, the existence and count questions, single
// vertices, the extents (which only read), and the rule that no code outside the
// element layer and the store queries the element tables.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <regex>
#include <sstream>

#include "elements/element_store.h"
#include "elements/extents.h"
#include "store/schema.h"
#include "support/project_fixture.h"

namespace tarno {
namespace {

class ElementLayerTest : public testing::ScratchProject {
 protected:
  double ModelNumber(const char* field) {
    Statement st = db_.PrepareRaw(std::string("select ") + field + " from Model");
    st.Step();
    return st.GetDouble(0);
  }
};

TEST_F(ElementLayerTest, LoadAllRowsKeepsTheIncompleteWithWhatTheyHave) {
  const std::int64_t lonely = AddPolygon(db_, 0);
  AddVertex(db_, 1, 2, lonely, 100);
  db_.ExecuteRaw("insert into LinesinkStrings (PID, Label) values (" + std::to_string(lonely) +
                 ", 'short')");
  Element full = NewElement(ElementKind::Linesink, {{0, 0, 0, 0, 0}, {0, 0, 0, 5, 0}});
  full.row.Set("Label", "full");
  Insert(db_, full);
  db_.ExecuteRaw("insert into Wells (VID, Label) values (999, 'ghost')");

  EXPECT_EQ(LoadAll(db_, ElementKind::Linesink).size(), 1u);
  const auto rows = LoadAllRows(db_, ElementKind::Linesink);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].Label(), "short");
  ASSERT_EQ(rows[0].vertices.size(), 1u);
  EXPECT_EQ(rows[0].vertices[0].X, 1);
  EXPECT_EQ(rows[1].vertices.size(), 2u);

  EXPECT_TRUE(LoadAll(db_, ElementKind::Well).empty());
  const auto wells = LoadAllRows(db_, ElementKind::Well);
  ASSERT_EQ(wells.size(), 1u);
  EXPECT_TRUE(wells[0].vertices.empty());
  EXPECT_FALSE(Load(db_, ElementKind::Linesink, lonely).has_value());
  ASSERT_TRUE(LoadRow(db_, ElementKind::Linesink, lonely).has_value());
  EXPECT_FALSE(LoadRow(db_, ElementKind::Linesink, 12345).has_value());
}

TEST_F(ElementLayerTest, RowsSharingAPidEachGetTheVertices) {
  // Flux lines, hydrologic units and protection areas have no unique key.
  Element f = NewElement(ElementKind::FluxLine, {{0, 0, 0, 0, 0}, {0, 0, 0, 1, 1}});
  f.row.Set("Label", "F1");
  Insert(db_, f);
  db_.ExecuteRaw("insert into FluxInspect (Label, PID) values ('F2', " + std::to_string(f.key) +
                 ")");
  const auto all = LoadAll(db_, ElementKind::FluxLine);
  ASSERT_EQ(all.size(), 2u);
  EXPECT_EQ(all[0].vertices, all[1].vertices);
}

TEST_F(ElementLayerTest, ExistenceCountAndComparisonQuestions) {
  EXPECT_FALSE(AnyElement(db_, ElementKind::TestPoint));
  Element tp = NewElement(ElementKind::TestPoint, {{0, 0, 0, 3, 4}});
  tp.row.Set("Label", "T");
  tp.row.Set("Type", "Lake Stage");
  Insert(db_, tp);
  EXPECT_TRUE(AnyElement(db_, ElementKind::TestPoint));
  EXPECT_EQ(CountElements(db_, ElementKind::TestPoint), 1);
  EXPECT_TRUE(AnyElementWhere(db_, ElementKind::TestPoint, "type", "=", Value{std::string("lake stage")}))
      << "text compares without regard to case";
  EXPECT_FALSE(AnyElementWhere(db_, ElementKind::TestPoint, "Type", "=", Value{std::string("Gage")}));
  EXPECT_TRUE(AnyElementWhere(db_, ElementKind::TestPoint, "ObsHead", ">=", Value{0.0}));
  EXPECT_FALSE(AnyElementWhere(db_, ElementKind::TestPoint, "ObsHead", ">", Value{0.0}));
  EXPECT_THROW(AnyElementWhere(db_, ElementKind::TestPoint, "ObsHead", "; drop", Value{0.0}),
               InvalidArgumentError);
  EXPECT_THROW(AnyElementWhere(db_, ElementKind::TestPoint, "NoSuchField", "=", Value{0.0}),
               InvalidArgumentError);
  EXPECT_THROW(AnyElement(db_, ElementKind::UniformFlow), InvalidArgumentError);

  const auto v = LoadVertex(db_, tp.key);
  ASSERT_TRUE(v.has_value());
  EXPECT_EQ(v->X, 3);
  EXPECT_EQ(v->PID, -1);
  EXPECT_FALSE(LoadVertex(db_, 777).has_value());
}

TEST_F(ElementLayerTest, ExtentsOnlyReadAndWidenAsTheSolveNeeds) {
  const double x0 = ModelNumber("SOLVERX0");
  const MapWindow window{0, 50, 40, 10};
  // No vertices: the window, whichever way round it is.
  ModelExtents e = ElementExtents(db_, MapWindow{50, 0, 10, 40});
  EXPECT_EQ(e.MinX, 0);
  EXPECT_EQ(e.MaxX, 50);
  EXPECT_EQ(e.MinY, 10);
  EXPECT_EQ(e.MaxY, 40);
  EXPECT_EQ(SummariseVertices(db_).count, 0);
  EXPECT_FALSE(SummariseVertices(db_).box.has_value());

  // A single point is widened by 1.
  AddVertex(db_, 7, 8, -1, 0);
  e = ElementExtents(db_, window);
  EXPECT_EQ(e.MinX, 6);
  EXPECT_EQ(e.MaxY, 9);

  // The base maps and the uniform flow's reference point widen them.
  e = ElementExtents(db_, window, ModelExtents{-20, 0, 0, 0});
  EXPECT_EQ(e.MinX, -20);
  EXPECT_EQ(e.MaxX, 7);
  Element u = NewElement(ElementKind::UniformFlow);
  u.row.Set("UNIFLOWRefX", 300.0);
  u.row.Set("UNIFLOWRefY", -5.0);
  Insert(db_, u);
  e = ElementExtents(db_, window);
  EXPECT_EQ(e.MaxX, 300);
  EXPECT_EQ(e.MinY, -5);
  // The uniform flow's vertex counts among the vertices.
  EXPECT_EQ(SummariseVertices(db_).count, 2);
  EXPECT_EQ(CountPolygons(db_), 0);
  EXPECT_EQ(ModelNumber("SOLVERX0"), x0) << "reading the extents leaves the model origin";
}

// The element tables are read and written only in the element layer and the store.
TEST(ElementSql, NoElementTableIsQueriedOutsideTheElementLayer) {
  const std::filesystem::path root = TARNO_SOURCE_DIR;
  const std::regex query(
      "(from|into|update|join) +(Wells|Vertices|Polygons|LinesinkStrings|NoFlowStrings|"
      "Inhomogeneities|Lakes|TestPoints|Particles|FluxInspect|Capzones|Domains|TextLabels)\\b",
      std::regex::icase);
  int files = 0;
  std::vector<std::string> found;
  for (const char* top : {"src", "programs"}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(root / top)) {
      const auto& p = entry.path();
      if (p.extension() != ".cpp" && p.extension() != ".h") continue;
      const std::string rel = std::filesystem::relative(p, root).generic_string();
      if (rel.rfind("src/elements/", 0) == 0 || rel.rfind("src/store/", 0) == 0) continue;
      ++files;
      std::ifstream in(p);
      std::string line;
      for (int n = 1; std::getline(in, line); ++n)
        if (std::regex_search(line, query)) found.push_back(rel + ":" + std::to_string(n) + ": " + line);
    }
  }
  EXPECT_GT(files, 20) << "the sources were not found under " << root;
  std::ostringstream list;
  for (const auto& f : found) list << "\n  " << f;
  EXPECT_TRUE(found.empty()) << "element SQL outside src/elements and src/store:" << list.str();
}

}  // namespace
}  // namespace tarno
