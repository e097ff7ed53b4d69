// The uniform flow's dialog: its checks against the aquifer base, the gradient and
// the orientation's range; its values from the Model row; the reference point from
// the element's vertex; and the round trip through the Model row.
#include <gtest/gtest.h>

#include "area_dialog_fixture.h"
#include "support/scripted_ui.h"
#include "elements/uniform_flow_dialog.h"

namespace tarno::testing {
namespace {

using Field = UniformFlow::Field;

class UniformFlowDialogTest : public AreaDialogTest {
 protected:
  void SetUp() override {
    AreaDialogTest::SetUp();
    db_.ExecuteRaw("update Model set AQBase = -12.5");
  }
  void ExpectRefused(UniformFlow& d, const std::vector<std::string>& lines, Field field) {
    ScriptedUserInterface ui;
    ui.ExpectMessage("Bad Entry", lines).WithIcon(Icon::Exclamation);
    EXPECT_FALSE(d.OK(db_, ui));
    ui.Verify();
    EXPECT_EQ(d.failedField, field);
    EXPECT_EQ(d.Result, 2);
  }
  void ExpectAccepted(UniformFlow& d) {
    ScriptedUserInterface ui;
    EXPECT_TRUE(d.OK(db_, ui));
    ui.Verify();
    EXPECT_EQ(d.Result, 1);
  }
  // A uniform flow in use.
  Element InUse() {
    Element e = NewElement(ElementKind::UniformFlow, {Vertex{0, -10, 0, 500, 600}});
    e.row.Set("UNIFLOWRefX", 500.0);
    e.row.Set("UNIFLOWRefY", 600.0);
    e.row.Set("UNIFLOWRefHead", 20.0);
    e.row.Set("UNIFLOWGradient", 0.002);
    e.row.Set("UNIFLOWOrientation", 45.0);
    StoreUniformFlow(db_, e);
    return *LoadUniformFlow(db_);
  }
};

TEST_F(UniformFlowDialogTest, ChecksInOrderWithTheirTexts) {
  UniformFlow d;
  d.init(db_);
  d.tbdata = {"-13", "-1", "200"};
  ExpectRefused(d,
                {"Specified Reference Head is below aquifer base of -12.5.",
                 "Press Ok to re-enter Reference Head."},
                Field::Head);
  d.tbdata[UniformFlow::kHead] = "-12.5";  // at the base passes
  ExpectRefused(d,
                {"Specified gradient is negative. Gradient must be positive.",
                 "Press Ok to re-enter Gradient."},
                Field::Gradient);
  d.tbdata[UniformFlow::kGradient] = "0";
  const std::vector<std::string> orientation = {"Orientation must be between -180 and 180 degrees.",
                                                "Press Ok to re-enter Orientation."};
  ExpectRefused(d, orientation, Field::Orientation);
  d.tbdata[UniformFlow::kOrientation] = "-180.001";
  ExpectRefused(d, orientation, Field::Orientation);
  for (const char* edge : {"-180", "180", "0"}) {
    SCOPED_TRACE(edge);
    d.tbdata[UniformFlow::kOrientation] = edge;
    ExpectAccepted(d);
  }
}

TEST_F(UniformFlowDialogTest, InitReadsTheValuesInUse) {
  UniformFlow fresh;
  fresh.init(db_);
  EXPECT_EQ(fresh.tbdata, (std::array<std::string, 3>{"0", "0", "0"}));
  InUse();
  UniformFlow d;
  d.init(db_);
  EXPECT_EQ(d.tbdata, (std::array<std::string, 3>{"20", "0.002", "45"}));
  EXPECT_EQ(d.Unit(UniformFlow::kHead), "meters");
  EXPECT_EQ(d.Unit(UniformFlow::kGradient), "");
  EXPECT_EQ(d.Unit(UniformFlow::kOrientation), "degrees counterclockwise");
  MakeProject(false);
  d.init(db_);
  EXPECT_EQ(d.Unit(UniformFlow::kHead), "feet");
}

TEST_F(UniformFlowDialogTest, UnchangedDialogWritesBackWhatItRead) {
  const Element before = InUse();
  UniformFlow d;
  d.LoadElement(db_, before);
  ExpectAccepted(d);
  EXPECT_FALSE(d.FormChanged());
  Element after = before;
  d.StoreElement(after);
  EXPECT_EQ(after, before);
}

TEST_F(UniformFlowDialogTest, ANewReferencePointAndValuesReachTheModelRow) {
  InUse();
  Element e = UniformFlowDefaults(db_, 10.5, -7.25);
  ASSERT_EQ(e.vertices.size(), 1u);
  EXPECT_EQ(e.vertices[0].X, 10.5);
  UniformFlow d;
  d.LoadElement(db_, e);
  EXPECT_EQ(d.Head(), "20") << "the values in use are offered again";
  d.tbdata = {"30", "0.01", "-90"};
  EXPECT_TRUE(d.FormChanged());
  ExpectAccepted(d);
  d.StoreElement(e);
  StoreUniformFlow(db_, e);
  const auto back = LoadUniformFlow(db_);
  ASSERT_TRUE(back.has_value());
  EXPECT_EQ(back->row.Number("UNIFLOWRefX"), 10.5);
  EXPECT_EQ(back->row.Number("UNIFLOWRefY"), -7.25);
  EXPECT_EQ(back->row.Number("UNIFLOWRefHead"), 30);
  EXPECT_EQ(back->row.Number("UNIFLOWGradient"), 0.01);
  EXPECT_EQ(back->row.Number("UNIFLOWOrientation"), -90);
  EXPECT_EQ(back->vertices.at(0).X, 10.5);
  EXPECT_EQ(back->vertices.at(0).Y, -7.25);
}

TEST_F(UniformFlowDialogTest, AFirstUniformFlowIsSwitchedOn) {
  Element e = UniformFlowDefaults(db_, 1, 2);
  UniformFlow d;
  d.LoadElement(db_, e);
  d.tbdata = {"5", "0.001", "10"};
  e.row.Set("UNIFLOWCompute", 0);
  d.StoreElement(e);
  EXPECT_EQ(e.row.Integer("UNIFLOWCompute"), 1);
  StoreUniformFlow(db_, e);
  ASSERT_TRUE(LoadUniformFlow(db_).has_value());
}

}  // namespace
}  // namespace tarno::testing
