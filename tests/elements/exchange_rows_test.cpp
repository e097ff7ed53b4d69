#include "elements/exchange_rows.h"

#include <gtest/gtest.h>

#include <cmath>

#include "elements/element_store.h"
#include "support/project_fixture.h"

namespace tarno {
namespace {

using Points = std::vector<MapPoint>;

class ExchangeRowsTest : public testing::ScratchProject {
 protected:
  Element AddDomain(const std::string& label, Points pts, bool farField = false) {
    std::vector<Vertex> v;
    for (auto [x, y] : pts) v.push_back({0, 0, 0, x, y});
    return Add(ElementKind::Domain, label, v, [&](Row& r) {
      r.Set("FarFieldBoundary", farField);
      r.Set("NearFieldHU", !farField);
    });
  }
  static Points Square(double x0, double y0, double size) {
    return {{x0, y0}, {x0 + size, y0}, {x0 + size, y0 + size}, {x0, y0 + size}};
  }
};

TEST_F(ExchangeRowsTest, RowsComeAsTextsByFieldTypeWithTheirVertices) {
  Add(ElementKind::Inhomogeneity, "IN1", At({{0, 0}, {10, 0}, {10, 10}}), [](Row& r) {
    r.Set("HydCond", 0.1);
    r.Set("ChangeK", true);
    r.Set("BottomElevation", -12.5);
  });
  Add(ElementKind::Inhomogeneity, "IN2", {});  // a row without vertices still comes
  const auto rows = LoadExchangeRows(db_, ElementKind::Inhomogeneity);
  ASSERT_EQ(rows.size(), 2u);
  EXPECT_EQ(rows[0].label, "IN1");
  ASSERT_EQ(rows[0].vertices.size(), 3u);
  EXPECT_DOUBLE_EQ(rows[0].vertices[1].X, 10.0);
  auto text = [&](const std::string& f) {
    for (const auto& [n, t] : rows[0].fields)
      if (n == f) return t;
    return std::string("<absent>");
  };
  EXPECT_EQ(text("HydCond"), "0.1");
  EXPECT_EQ(text("BottomElevation"), "-12.5");
  EXPECT_EQ(text("ChangeK"), "True");
  EXPECT_EQ(text("ChangeR"), "False");
  EXPECT_EQ(text("ScenHydCond"), "__NONE__");
  EXPECT_EQ(rows[0].fields.front().first, "PID");
  EXPECT_TRUE(rows[1].vertices.empty());
}

TEST_F(ExchangeRowsTest, TextsBuildAnElementAndReportUnknownFieldsAndBadValues) {
  const Points pts{{1, 2}, {3, 4}};
  const auto made = MakeElementFromTexts(ElementKind::Linesink,
                                         {{"Label", "S1"},
                                          {"PID", "77"},
                                          {"Width", "2.5"},
                                          {"Lake", "-1"},
                                          {"chkScenario", "True"},
                                          {"Colour", "3"},
                                          {"Depth", "deep"}},
                                         pts);
  EXPECT_EQ(made.unknownFields, std::vector<std::string>{"Colour"});
  EXPECT_EQ(made.badValues, std::vector<std::string>{"Depth=deep"});
  Element e = made.element;
  EXPECT_EQ(e.row.Text("Label"), "S1");
  EXPECT_EQ(e.row.Integer("PID"), 0);  // the store assigns the key
  EXPECT_EQ(e.row.Integer("Lake"), -1);
  EXPECT_TRUE(e.row.Flag("chkScenario"));
  EXPECT_EQ(e.row.Text("ScenResistance"), "__NONE__");  // default kept
  Insert(db_, e);
  const auto back = Load(db_, ElementKind::Linesink, e.key);
  ASSERT_TRUE(back.has_value());
  EXPECT_DOUBLE_EQ(back->row.Number("Width"), 2.5);
  ASSERT_EQ(back->vertices.size(), 2u);
  EXPECT_DOUBLE_EQ(back->vertices[1].Y, 4.0);
}

TEST_F(ExchangeRowsTest, SameVertexSetIsTheSameSetNotMerelyInsideTheBox) {
  const Element inner = Add(ElementKind::Inhomogeneity, "inner", At({{4, 4}, {6, 4}, {6, 6}}));
  const Points outer{{0, 0}, {10, 0}, {10, 10}, {0, 10}};
  // Every vertex of the inner one lies in the outer one's box, but it is another set.
  EXPECT_FALSE(FindSameVertexSet(db_, ElementKind::Inhomogeneity, outer).has_value());
  // The same points in another order are the same set.
  const Points same{{6, 6}, {4, 4}, {6, 4}};
  EXPECT_EQ(FindSameVertexSet(db_, ElementKind::Inhomogeneity, same), inner.key);
  // Only within the kind asked about.
  EXPECT_FALSE(FindSameVertexSet(db_, ElementKind::Barrier, same).has_value());
  // One point more is not the same set.
  const Points more{{4, 4}, {6, 4}, {6, 6}, {5, 5}};
  EXPECT_FALSE(FindSameVertexSet(db_, ElementKind::Inhomogeneity, more).has_value());
}

TEST_F(ExchangeRowsTest, SameLabelIgnoresCaseAndKind) {
  const Element b = Add(ElementKind::Barrier, "Wall", At({{0, 0}, {1, 1}}));
  EXPECT_EQ(FindSameLabel(db_, ElementKind::Barrier, "WALL"), b.key);
  EXPECT_FALSE(FindSameLabel(db_, ElementKind::Linesink, "Wall").has_value());
  EXPECT_FALSE(FindSameLabel(db_, ElementKind::Barrier, "Wal").has_value());
}

TEST_F(ExchangeRowsTest, HydrologicUnitTestFollowsTheDomainsThatAreUnits) {
  const Points inside{{5, 5}, {6, 6}};
  const Points across{{5, 5}, {50, 50}};
  const Points outside{{50, 50}, {60, 60}};
  // No domain at all: everything is within.
  EXPECT_TRUE(InHydrologicUnit(db_, outside));
  // Only a model boundary: nothing is within.
  AddDomain("Model_Box", Square(0, 0, 100));
  EXPECT_FALSE(InHydrologicUnit(db_, inside));
  // A far-field boundary is no unit either.
  AddDomain("Far_Field_FF", Square(-100, -100, 300), true);
  EXPECT_FALSE(InHydrologicUnit(db_, inside));
  const Element unit = AddDomain("HU1", Square(0, 0, 10));
  EXPECT_TRUE(InHydrologicUnit(db_, inside));
  EXPECT_FALSE(InHydrologicUnit(db_, outside));
  // areVerticesInDomain answers yes at the first vertex inside.
  EXPECT_TRUE(AreVerticesInDomain(db_, across, unit.key));
  EXPECT_TRUE(InHydrologicUnit(db_, across));
  // A point on a vertex of the unit counts as outside.
  EXPECT_FALSE(AreVerticesInDomain(db_, Points{{0, 0}}, unit.key));
}

TEST_F(ExchangeRowsTest, LengthFieldsScaleByTheirPowerOfLength) {
  EXPECT_EQ(LengthPower(ElementKind::Barrier, "thickness"), 1);
  EXPECT_EQ(LengthPower(ElementKind::Barrier, "Porosity"), 0);
  EXPECT_EQ(LengthPower(ElementKind::Linesink, "Resistance"), 0);
  EXPECT_EQ(LengthPower(ElementKind::Linesink, "EndInflow"), 3);
  EXPECT_EQ(LengthPower(ElementKind::Linesink, "StartingHead", true), 1);
  EXPECT_EQ(LengthPower(ElementKind::Linesink, "StartingHead", false), 2);
  EXPECT_DOUBLE_EQ(LengthFactor(true, true), 1.0);
  EXPECT_DOUBLE_EQ(LengthFactor(false, true), 0.3048);
  EXPECT_DOUBLE_EQ(LengthFactor(true, false), 1.0 / 0.3048);

  Element ls = NewElement(ElementKind::Linesink, {});
  ls.row.Set("HeadSpecified", 0);
  ls.row.Set("StartingHead", 10.0);
  ls.row.Set("Width", 10.0);
  ls.row.Set("EndInflow", 10.0);
  ls.row.Set("Resistance", 10.0);
  ScaleLengthFields(ls, 0.5);
  EXPECT_DOUBLE_EQ(ls.row.Number("StartingHead"), 2.5);  // a sink density
  EXPECT_DOUBLE_EQ(ls.row.Number("Width"), 5.0);
  EXPECT_DOUBLE_EQ(ls.row.Number("EndInflow"), 1.25);
  EXPECT_DOUBLE_EQ(ls.row.Number("Resistance"), 10.0);

  Element in = NewElement(ElementKind::Inhomogeneity, {});
  in.row.Set("AverageHead", -9999.0);
  in.row.Set("BottomElevation", 100.0);
  ScaleLengthFields(in, 0.3048);
  EXPECT_DOUBLE_EQ(in.row.Number("AverageHead"), -9999.0);  // "no value" stays
  EXPECT_NEAR(in.row.Number("BottomElevation"), 30.48, 1e-12);
}

}  // namespace
}  // namespace tarno
