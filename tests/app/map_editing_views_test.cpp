// The views of the area selection of the map: each button leaves its answer in the
// model.
#include <gtest/gtest.h>

#include <QComboBox>
#include <QPushButton>
#include <algorithm>

#include "app/shell/select_area.h"
#include "app/views/select_area_view.h"
#include "dialogs_test_support.h"

namespace tarno::testing {
namespace {

TEST(MapEditingViews, AreaSelectionViewsLeaveTheChoiceInTheirModels) {
  EnsureApplication();
  SelectArea which;
  which.ElementType = 1;
  SelectAreaView v(which);
  EXPECT_EQ(v.elementType()->count(), 3);
  EXPECT_EQ(v.elementType()->currentText(), "Wells");
  v.elementType()->setCurrentIndex(0);
  EXPECT_EQ(which.Result, 2);  // nothing chosen yet: Cancel
  auto buttons = v.findChildren<QPushButton*>();
  auto ok = std::find_if(buttons.begin(), buttons.end(),
                         [](QPushButton* b) { return b->text() == "OK"; });
  ASSERT_NE(ok, buttons.end());
  (*ok)->click();
  EXPECT_EQ(which.Result, 1);
  EXPECT_EQ(which.Selection(), "TestPoints");

  SelectAreaOptions wells;
  wells.Load(ElementKind::Well, 3);
  SelectAreaOptionsView w(wells);
  EXPECT_TRUE(w.editButton()->isHidden());  // only particles are edited together
  w.deleteButton()->click();
  EXPECT_EQ(wells.Command, SelectAreaOptions::kDelete);

  SelectAreaOptions particles;
  particles.Load(ElementKind::Particle, 2);
  SelectAreaOptionsView p(particles);
  EXPECT_FALSE(p.editButton()->isHidden());
  p.editButton()->click();
  EXPECT_EQ(particles.Command, SelectAreaOptions::kEdit);
}

}  // namespace
}  // namespace tarno::testing
