// Edit > Undo and Redo on an open project, without a window: the menu state, the
// outcome the window acts on, and the message of a file changed behind the history.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <memory>
#include <string>

#include "app/undo_model.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/scripted_ui.h"
#include "support/table_dump.h"
#include "support/temp_dir.h"

namespace tarno {
namespace {

class UndoModelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    std::filesystem::create_directories(tmp_.Path() / "config");
    ::setenv("TARNO_CONFIG_DIR", (tmp_.Path() / "config").c_str(), 1);
    path_ = (tmp_.Path() / "u.trn").string();
    DBNewDatabase(path_, "Undo", true, true);
    {
      // The solver files beside the project: opening asks nothing.
      Database db = Database::Open(path_);
      Statement st = db.PrepareRaw("update Project set TARNOBasePath = ?1");
      st.Bind(1, tmp_.Path().string()).Run();
    }
    session_ = std::make_unique<ProjectSession>(ui_, hooks_, (tmp_.Path() / "app").string());
    ASSERT_TRUE(session_->FileOpenProject(path_));
    ui_.Verify();
  }
  void TearDown() override {
    ui_.ClearScript();
    session_.reset();
    ::unsetenv("TARNO_CONFIG_DIR");
  }

  void Operation(const std::string& name, const std::string& sql) {
    Database db = Database::Open(path_);
    UndoScope op(db, name);
    db.ExecuteRaw(sql);
    op.Commit();
  }
  std::string Dump() {
    Database db = Database::Open(path_);
    return test::DumpTables(db);
  }

  test::TempDir tmp_;
  std::string path_;
  ScriptedUserInterface ui_;
  SessionHooks hooks_;
  std::unique_ptr<ProjectSession> session_;
};

TEST_F(UndoModelTest, MenuStateAndOutcomesFollowTheHistory) {
  MenuState s;
  SetUndoState(s, session_->History());
  EXPECT_FALSE(s.canUndo);
  EXPECT_FALSE(s.canRedo);
  EXPECT_FALSE(UndoLastOperation(*session_).applied) << "nothing to undo";

  const std::string empty = Dump();
  Operation("Add Text label", "insert into TextLabels (Text, X, Y) values ('Town', 1, 2)");
  const std::string labelled = Dump();
  Operation("Add Well",
            "insert into Vertices (PID, Seq, X, Y) values (-1, -1, 5, 5);"
            "insert into Wells (VID, Head) values (last_insert_rowid(), 10)");
  SetUndoState(s, session_->History());
  EXPECT_TRUE(s.canUndo);
  EXPECT_EQ(s.undoName, "Add Well");
  EXPECT_EQ(MenuModel::Caption("EDIT_UNDO", s), "&Undo Add Well");

  UndoOutcome o = UndoLastOperation(*session_);
  EXPECT_TRUE(o.applied);
  EXPECT_TRUE(o.touchesFlow) << "a well's rows are the solver's";
  EXPECT_EQ(o.tables, (std::vector<std::string>{"Vertices", "Wells"}));
  EXPECT_EQ(Dump(), labelled);

  o = UndoLastOperation(*session_);
  EXPECT_TRUE(o.applied);
  EXPECT_FALSE(o.touchesFlow) << "a text label leaves the solution standing";
  EXPECT_EQ(Dump(), empty);
  SetUndoState(s, session_->History());
  EXPECT_FALSE(s.canUndo);
  EXPECT_TRUE(s.canRedo);
  EXPECT_EQ(MenuModel::Caption("EDIT_REDO", s), "&Redo Add Text label");
  EXPECT_EQ(MenuModel::Caption("EDIT_UNDO", s), "&Undo");

  EXPECT_TRUE(UndoLastOperation(*session_, true).applied);
  EXPECT_EQ(Dump(), labelled);
  ui_.Verify();  // no message on the way
}

TEST_F(UndoModelTest, AFileChangedBehindTheHistoryIsReportedAndLeftAlone) {
  Operation("Edit Model", "update Model set AQHydCond = 5");
  {
    Database other = Database::Open(path_);  // as another program would
    other.ExecuteRaw("update Model set AQHydCond = 7");
  }
  const std::string changed = Dump();
  ui_.ExpectMessageTitled(kCannotUndoTitle).WithIcon(Icon::Exclamation);
  const UndoOutcome o = UndoLastOperation(*session_);
  ui_.Verify();
  EXPECT_FALSE(o.applied);
  EXPECT_EQ(Dump(), changed);
  MenuState s;
  SetUndoState(s, session_->History());
  EXPECT_FALSE(s.canUndo);
  EXPECT_FALSE(s.canRedo);
}

TEST(UndoModel, OnlyAnnotationTablesLeaveTheFlowAlone) {
  EXPECT_FALSE(TablesTouchFlow({}));
  EXPECT_FALSE(TablesTouchFlow({"TextLabels", "testpoints", "Particles", "SavedWindows"}));
  EXPECT_TRUE(TablesTouchFlow({"TestPoints", "Vertices"}));
  EXPECT_TRUE(TablesTouchFlow({"Model"}));
  EXPECT_TRUE(TablesTouchFlow({"LinesinkStrings"}));
}

}  // namespace
}  // namespace tarno
