// The particle dialog: direction and elevation checks, the enabling rules, the
// settings of the last use, the write-back, and the arithmetic of a particle grid.
#include "elements/particle_dialog.h"

#include <gtest/gtest.h>

#include <cmath>

#include "support/scripted_ui.h"
#include "dialog_project.h"
#include "elements/element_dialog.h"

namespace tarno::testing {
namespace {

using Field = ParticleProperties::Field;

class ParticleDialogTest : public ObservationProject {
 protected:
  void SetUp() override {
    ObservationProject::SetUp();
    ParticleLastUse() = ParticleSettings{};
  }
  void TearDown() override {
    ParticleLastUse() = ParticleSettings{};
    ObservationProject::TearDown();
  }
  Element Particle(double x, double y, int forward, int satdThick, double elevation) {
    Element e = NewElement(ElementKind::Particle, Point(x, y));
    e.row.Set("Forward", forward);
    e.row.Set("SatdThick", satdThick);
    e.row.Set("Elevation", elevation);
    return Stored(e);
  }
  void ExpectRefused(ParticleProperties& d, const std::string& title,
                     const std::vector<std::string>& lines, Field field) {
    ScriptedUserInterface ui;
    ui.ExpectMessage(title, lines).WithIcon(Icon::Exclamation);
    EXPECT_FALSE(d.OK(db_, ui));
    ui.Verify();
    EXPECT_EQ(d.failedField, field);
  }
  bool Accepts(ParticleProperties& d) {
    ScriptedUserInterface ui;
    const bool ok = d.OK(db_, ui);
    ui.Verify();
    return ok;
  }
};

const std::vector<std::string> kInvalidEntry = {"Invalid data value.  Please re-enter"};

TEST_F(ParticleDialogTest, ADirectionMustBeChosenAndTheElevationRead) {
  // A stored direction that is neither forward nor backward chooses no option.
  ParticleProperties d;
  d.LoadElement(db_, Particle(0, 0, 5, 1, 0));
  EXPECT_EQ(d.chkDirection, -1);
  d.tbElevation = "abc";  // not used while the particle starts at the top
  ExpectRefused(d, "Tracing Direction", {"Please choose a tracing direction."}, Field::Direction);
  d.chkDirection = 0;
  EXPECT_TRUE(Accepts(d));

  d.chkSatdThick = false;
  ExpectRefused(d, "Invalid Entry", kInvalidEntry, Field::Elevation);
  d.tbElevation = "95.5";
  EXPECT_TRUE(Accepts(d));
  EXPECT_EQ(d.Result, 1);
}

TEST_F(ParticleDialogTest, TheNumberOfAGridIsAskedAndCheckedOnlyWithMultiple) {
  ParticleProperties d;
  d.LoadLastUse(db_);
  EXPECT_EQ(d.NumOfParticles, "0");
  EXPECT_FALSE(d.NumberVisible());
  d.NumOfParticles = "2.5";
  EXPECT_TRUE(Accepts(d)) << "a single particle has no number";
  d.Multiple = true;
  EXPECT_TRUE(d.NumberVisible());
  ExpectRefused(d, "Invalid Entry", kInvalidEntry, Field::Number);
  d.NumOfParticles = "25";
  EXPECT_TRUE(Accepts(d));
  EXPECT_EQ(d.ParticleNum(), 25);
}

TEST_F(ParticleDialogTest, TheElevationIsTypedOnlyWithoutTheStartAtTheTop) {
  ParticleProperties d;
  d.LoadElement(db_, Particle(0, 0, 1, 1, 0));
  EXPECT_FALSE(d.ElevationEnabled());
  d.chkSatdThick = false;
  EXPECT_TRUE(d.ElevationEnabled());
  EXPECT_EQ(d.lblElevationUnit, "meters");
  db_.ExecuteRaw("update Model set ComputeMeters=0");
  d.LoadLastUse(db_);
  EXPECT_EQ(d.lblElevationUnit, "feet");
}

TEST_F(ParticleDialogTest, APassingOkIsOfferedAgainAsTheLastUse) {
  ParticleProperties first;
  first.LoadLastUse(db_);
  EXPECT_EQ(first.chkDirection, 1);
  EXPECT_TRUE(first.chkSatdThick);
  EXPECT_EQ(first.tbElevation, "0");
  first.chkDirection = 0;
  first.chkSatdThick = false;
  first.tbElevation = "101.25";
  first.NumOfParticles = "12";

  // A refused or cancelled dialog leaves the last use as it was.
  first.chkDirection = -1;
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled("Tracing Direction");
  EXPECT_FALSE(first.OK(db_, ui));
  first.Cancel();
  EXPECT_EQ(ParticleLastUse(), ParticleSettings{});

  first.chkDirection = 0;
  EXPECT_TRUE(Accepts(first));
  ParticleProperties next;
  next.LoadLastUse(db_);
  EXPECT_EQ(next.chkDirection, 0);
  EXPECT_FALSE(next.chkSatdThick);
  EXPECT_EQ(next.tbElevation, "101.25");
  EXPECT_EQ(next.NumOfParticles, "0");
  EXPECT_TRUE(next.FormChanged()) << "a new particle changes the pathlines";
}

TEST_F(ParticleDialogTest, DirectionAndStartAreStoredAsTheirFlags) {
  const Element stored = Particle(3, 4, 1, 1, 1.0 / 3.0);
  ParticleProperties d;
  d.LoadElement(db_, stored);
  Element back = stored;
  d.StoreElement(back);
  EXPECT_EQ(back, stored);
  EXPECT_FALSE(d.FormChanged());

  d.chkDirection = 0;
  d.chkSatdThick = false;
  d.tbElevation = "88";
  EXPECT_TRUE(d.FormChanged());
  d.StoreElement(back);
  EXPECT_EQ(back.row.Integer("Forward"), 0);
  EXPECT_EQ(back.row.Integer("SatdThick"), 0);
  EXPECT_DOUBLE_EQ(back.row.Number("Elevation"), 88.0);
  EXPECT_EQ(back.vertices, stored.vertices) << "the dialog has no position";

  auto dialog = MakeElementDialog(ElementKind::Particle);
  ASSERT_NE(dialog, nullptr);
  EXPECT_EQ(dialog->DialogName(), "ParticleProperties");
}

TEST(ParticleGridTest, SpacingAndCountsFollowTheWishedNumber) {
  // 100 by 50 for 8 particles: spacing 25, four by two, at the centres of the cells,
  // row by row from the lower left corner.
  const auto grid = ParticleGrid(1000, 2000, 1100, 2050, 8);
  ASSERT_EQ(grid.size(), 8u);
  EXPECT_EQ(grid[0], (GridPoint{1012.5, 2012.5}));
  EXPECT_EQ(grid[1], (GridPoint{1037.5, 2012.5}));
  EXPECT_EQ(grid[4], (GridPoint{1012.5, 2037.5}));
  EXPECT_EQ(grid[7], (GridPoint{1087.5, 2037.5}));
  // The corners may come in any order.
  EXPECT_EQ(ParticleGrid(1100, 2050, 1000, 2000, 8), grid);
  EXPECT_EQ(ParticleGrid(1000, 2050, 1100, 2000, 8), grid);
}

TEST(ParticleGridTest, CountsAreTruncatedAndNeverExceedTheWish) {
  // 100 by 100 for 10: spacing 31.6, three by three.
  EXPECT_EQ(ParticleGrid(0, 0, 100, 100, 10).size(), 9u);
  // A narrow rectangle: the spacing is wider than the rectangle is high.
  EXPECT_TRUE(ParticleGrid(0, 0, 100, 10, 3).empty());
  // A quotient that is whole in decimals gives its full count.
  EXPECT_EQ(ParticleGrid(0, 0, 0.3, 0.3, 9).size(), 9u);
  for (const auto& [w, h, n] : {std::tuple{37.0, 11.0, 17}, std::tuple{5.0, 500.0, 40},
                                std::tuple{1e4, 3e3, 1000}, std::tuple{7.0, 7.0, 1}}) {
    const auto grid = ParticleGrid(-w, -h, 0, 0, n);
    EXPECT_LE(grid.size(), static_cast<std::size_t>(n)) << w << " x " << h << " for " << n;
    for (const GridPoint& p : grid) {
      EXPECT_GT(p.x, -w);
      EXPECT_LT(p.x, 0.0);
      EXPECT_GT(p.y, -h);
      EXPECT_LT(p.y, 0.0);
    }
  }
}

TEST(ParticleGridTest, NoWishOrNoAreaGivesNoParticle) {
  EXPECT_TRUE(ParticleGrid(0, 0, 100, 100, 0).empty());
  EXPECT_TRUE(ParticleGrid(0, 0, 100, 100, -4).empty());
  EXPECT_TRUE(ParticleGrid(0, 0, 0, 100, 4).empty());
  EXPECT_TRUE(ParticleGrid(5, 5, 5, 5, 4).empty());
}

}  // namespace
}  // namespace tarno::testing
