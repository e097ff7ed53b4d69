// The view of the GIS import, built without exec(): the layer and the kind chosen in
// their lists, attributes chosen for the fields, OK and Cancel, and the model read back.
#include "app/views/vector_import_view.h"

#include <QComboBox>
#include <QPushButton>

#include "dialogs_test_support.h"
#include "support/scripted_ui.h"

namespace tarno {
namespace {

using testing::EnsureApplication;

exchange::VectorImport TwoLayers() {
  exchange::VectorImport model;
  model.file = "/data/hydro.gpkg";
  model.layers = {{"rivers", "Line String", 3, {"NAME", "Stage", "Width"}, ""},
                  {"pumps", "Point", 2, {"ID", "Q"}, "WGS 84"}};
  model.ChooseLayer(0);
  return model;
}

int RoleIndex(ElementKind kind, const std::string& role) {
  const auto roles = exchange::RolesOf(kind);
  for (std::size_t i = 0; i < roles.size(); ++i)
    if (roles[i].role == role) return static_cast<int>(i);
  return -1;
}

TEST(VectorImportViewTest, TheLayerSetsTheKindAndTheChosenAttributesBecomeTheMapping) {
  EnsureApplication();
  exchange::VectorImport model = TwoLayers();
  ScriptedUserInterface ui;
  VectorImportView view(model, ui);
  ASSERT_EQ(view.layers()->count(), 2);
  EXPECT_EQ(view.layers()->itemText(0), QStringLiteral("rivers (Line String, 3 features)"));
  EXPECT_EQ(view.kinds()->currentText(), QStringLiteral("Line-sink string"));
  ASSERT_EQ(view.attributes().size(), exchange::RolesOf(ElementKind::Linesink).size());
  // The proposal: Width by its name.
  EXPECT_EQ(view.attributes()[RoleIndex(ElementKind::Linesink, "width")]->currentText(),
            QStringLiteral("Width"));

  // The point layer makes wells, with the rows of a well.
  view.layers()->setCurrentIndex(1);
  EXPECT_EQ(model.kind, ElementKind::Well);
  EXPECT_EQ(view.kinds()->currentText(), QStringLiteral("Well"));
  ASSERT_EQ(view.attributes().size(), exchange::RolesOf(ElementKind::Well).size());
  view.attributes()[RoleIndex(ElementKind::Well, "label")]->setCurrentText(QStringLiteral("ID"));
  view.attributes()[RoleIndex(ElementKind::Well, "discharge")]->setCurrentText(QStringLiteral("Q"));
  view.okButton()->click();
  EXPECT_EQ(model.Result, 1);
  EXPECT_EQ(model.mapping,
            (std::map<std::string, std::string>{{"label", "ID"}, {"discharge", "Q"}}));
  EXPECT_EQ(model.Options().layer, "pumps");
  ui.Verify();
}

TEST(VectorImportViewTest, AnotherKindBringsItsFieldsAndCancelLeavesTheResult) {
  EnsureApplication();
  exchange::VectorImport model = TwoLayers();
  ScriptedUserInterface ui;
  VectorImportView view(model, ui);
  view.kinds()->setCurrentIndex(1);  // barrier
  EXPECT_EQ(model.kind, ElementKind::Barrier);
  EXPECT_EQ(view.attributes().size(), exchange::RolesOf(ElementKind::Barrier).size());
  view.reject();
  EXPECT_EQ(model.Result, 2);
}

}  // namespace
}  // namespace tarno
