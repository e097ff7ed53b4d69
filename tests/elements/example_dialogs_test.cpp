// The dialogs over the elements of both example projects: every well and every
// line-sink string opens, passes OK unchanged, and is written back as it was read.
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "support/scripted_ui.h"
#include "dialog_test_support.h"
#include "elements/element_dialog.h"
#include "elements/element_store.h"

namespace tarno::testing {
namespace {

class ExampleDialogsTest : public DialogProject, public ::testing::WithParamInterface<const char*> {
 protected:
  void LoadExample() {
    std::ifstream in(std::string(TARNO_SOURCE_DIR) + "/examples/" + GetParam());
    ASSERT_TRUE(in) << GetParam();
    std::stringstream sql;
    sql << in.rdbuf();
    db_.ExecuteRaw(sql.str());
  }
};

TEST_P(ExampleDialogsTest, UnchangedDialogsLeaveEveryElementAsItWas) {
  LoadExample();
  int seen = 0;
  for (ElementKind kind : {ElementKind::Well, ElementKind::Linesink}) {
    for (const Element& before : LoadAll(db_, kind)) {
      SCOPED_TRACE(before.Label());
      ++seen;
      auto dialog = MakeElementDialog(kind);
      dialog->LoadElement(db_, before);
      ScriptedUserInterface ui;  // no message is expected
      bool ok = false;
      try {
        ok = dialog->OK(db_, ui);
      } catch (const UnexpectedUiCall& e) {
        ADD_FAILURE() << e.what();
        continue;
      }
      EXPECT_TRUE(ok);
      EXPECT_EQ(dialog->Result, 1);
      EXPECT_FALSE(dialog->FormChanged());
      Element after = before;
      dialog->StoreElement(after);
      EXPECT_EQ(after, before);
    }
  }
  EXPECT_GT(seen, 10);
}

INSTANTIATE_TEST_SUITE_P(Examples, ExampleDialogsTest,
                         ::testing::Values("vincennes.sql", "basin-and-range.sql"));

}  // namespace
}  // namespace tarno::testing
