// The edit history belongs to the open project: it starts with the project and
// goes when it closes.

#include "lifecycle_fixture.h"
#include "store/undo_history.h"

namespace tarno::test {
namespace {

TEST_F(LifecycleTest, TheHistoryLastsWhileTheProjectStaysOpen) {
  const std::string alpha = MakeProject("alpha.trn");
  const std::string beta = MakeProject("beta.trn");
  EXPECT_EQ(session_->History().Path(), "") << "no project, no history";
  ASSERT_TRUE(session_->FileOpenProject(alpha));
  {
    Database db = Database::Open(alpha);
    ASSERT_EQ(UndoHistory::Of(db), &session_->History());
    UndoScope op(db, "Add Text Label");  // an operation finds the session's history
    db.ExecuteRaw("insert into TextLabels (Text, X, Y) values ('a', 1, 2)");
    op.Commit();
  }
  ASSERT_TRUE(session_->History().CanUndo());
  ASSERT_TRUE(session_->History().Undo());
  EXPECT_EQ(Int(alpha, "select count(*) from TextLabels"), 0);
  EXPECT_TRUE(session_->History().CanRedo());

  // Opening another project closes the first: its history goes with it, and the
  // first file no longer has one.
  ASSERT_TRUE(session_->FileOpenProject(beta));
  EXPECT_FALSE(session_->History().CanRedo());
  {
    Database db = Database::Open(alpha);
    EXPECT_EQ(UndoHistory::Of(db), nullptr);
  }
  {
    Database db = Database::Open(beta);
    UndoScope op(db, "Uniform Flow");
    db.ExecuteRaw("update Model set UNIFLOWGradient = 0.5");
    op.Commit();
  }
  EXPECT_EQ(session_->History().UndoName(), "Uniform Flow");
  ASSERT_TRUE(session_->FileCloseProject());
  EXPECT_FALSE(session_->History().CanUndo());
  EXPECT_EQ(session_->History().Path(), "");
  EXPECT_FALSE(session_->History().Undo());
}

}  // namespace
}  // namespace tarno::test
