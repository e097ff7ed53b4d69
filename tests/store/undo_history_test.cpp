// The edit history: undo and redo of recorded operations on a project file,
// compared with full dumps of the file's tables.

#include <gtest/gtest.h>

#include <string>

#include "store/database.h"
#include "store/schema.h"
#include "store/undo_history.h"
#include "store_test_util.h"
#include "support/table_dump.h"

namespace tarno {
namespace {

using test::DumpTables;
std::string Dump(Database& db) { return DumpTables(db); }

class UndoHistoryTest : public test::TempDirTest {
protected:
    void SetUp() override {
        TempDirTest::SetUp();
        file_ = Path("p.trn").string();
        DBNewDatabase(file_, "undo", true, true);
        db_ = Database::Open(file_);
        history_.Attach(file_);
    }
    void TearDown() override {
        db_.Close();
        TempDirTest::TearDown();
    }

    // A well at (x, y) written as the element store writes one: its vertex, then
    // its row. Gives the VID.
    std::int64_t AddWell(Database& db, double x, double y, double head) {
        Statement v = db.PrepareRaw("INSERT INTO Vertices (PID, Seq, X, Y) VALUES (-1, -1, ?1, ?2)");
        v.Bind(1, x).Bind(2, y).Run();
        const std::int64_t vid = db.LastInsertId();
        Statement w = db.PrepareRaw("INSERT INTO Wells (VID, Head, Radius) VALUES (?1, ?2, 0.3)");
        w.Bind(1, vid).Bind(2, head).Run();
        return vid;
    }
    // A line-sink string of three vertices: Polygons row, string row, vertices.
    std::int64_t AddString(Database& db, const std::string& label) {
        db.ExecuteRaw("INSERT INTO Polygons (Closed) VALUES (0)");
        const std::int64_t pid = db.LastInsertId();
        Statement s = db.PrepareRaw("INSERT INTO LinesinkStrings (PID, Label, StartingHead) VALUES (?1, ?2, 10.125)");
        s.Bind(1, pid).Bind(2, label).Run();
        for (int i = 0; i < 3; ++i) {
            Statement v = db.PrepareRaw("INSERT INTO Vertices (PID, Seq, X, Y) VALUES (?1, ?2, ?3, ?4)");
            v.Bind(1, pid).Bind(2, i * 100).Bind(3, 0.1 * i).Bind(4, 1.0 / 3.0 + i).Run();
        }
        return pid;
    }
    std::int64_t Count(const std::string& sql) {
        Statement st = db_.PrepareRaw(sql);
        st.Step();
        return st.GetInt64(0);
    }

    std::string file_;
    Database db_;
    UndoHistory history_;
};

TEST_F(UndoHistoryTest, WellInsertUpdateDeleteUndoAndRedoRestoreEveryRow) {
    const std::string empty = Dump(db_);

    history_.Begin(db_, "Add Well");
    const std::int64_t vid = AddWell(db_, 100.5, 200.25, 512.0);
    history_.Commit();
    const std::string added = Dump(db_);
    ASSERT_NE(added, empty);
    // The vertex (a keyed table) went through the session, the well row (no key)
    // through the rowid log.
    ASSERT_EQ(history_.UndoCount(), 1u);
    EXPECT_FALSE(history_.UndoEntries()[0].changeset.empty());
    ASSERT_EQ(history_.UndoEntries()[0].rows.size(), 1u);
    EXPECT_EQ(history_.UndoEntries()[0].rows[0].table, "Wells");

    UndoScope edit(history_, db_, "Edit Well");
    Statement up = db_.PrepareRaw("UPDATE Wells SET Head = 1.0/7.0, Radius = 0.5 WHERE VID = ?1");
    up.Bind(1, vid).Run();
    Statement mv = db_.PrepareRaw("UPDATE Vertices SET X = 101.75 WHERE VID = ?1");
    mv.Bind(1, vid).Run();
    edit.Commit();
    const std::string edited = Dump(db_);

    {
        UndoScope del(history_, db_, "Delete Well");
        db_.ExecuteRaw("DELETE FROM Wells; DELETE FROM Vertices;");
        del.Commit();
    }
    EXPECT_EQ(Dump(db_), empty);
    EXPECT_EQ(history_.UndoCount(), 3u);
    EXPECT_EQ(history_.UndoName(), "Delete Well");
    EXPECT_FALSE(history_.CanRedo());

    ASSERT_TRUE(history_.Undo(db_));
    EXPECT_EQ(Dump(db_), edited);
    EXPECT_EQ(history_.UndoName(), "Edit Well");
    EXPECT_EQ(history_.RedoName(), "Delete Well");
    ASSERT_TRUE(history_.Undo(db_));
    EXPECT_EQ(Dump(db_), added);
    ASSERT_TRUE(history_.Undo(db_));
    EXPECT_EQ(Dump(db_), empty);
    EXPECT_FALSE(history_.CanUndo());
    EXPECT_FALSE(history_.Undo(db_)) << "nothing left to undo";
    EXPECT_EQ(history_.RedoCount(), 3u);

    ASSERT_TRUE(history_.Redo(db_));
    EXPECT_EQ(Dump(db_), added);
    ASSERT_TRUE(history_.Redo(db_));
    EXPECT_EQ(Dump(db_), edited);
    ASSERT_TRUE(history_.Redo(db_));
    EXPECT_EQ(Dump(db_), empty);
    EXPECT_FALSE(history_.Redo(db_));
    EXPECT_EQ(history_.UndoName(), "Delete Well");
}

TEST_F(UndoHistoryTest, StringWithPolygonAndVerticesComesBackWithItsKeys) {
    AddWell(db_, 1, 2, 3);  // not recorded: made before any operation
    const std::string before = Dump(db_);
    {
        UndoScope add(history_, db_, "Add Line-sink string");
        AddString(db_, "LS1");
        add.Commit();
    }
    const std::string withString = Dump(db_);
    const std::int64_t pid = Count("SELECT PID FROM LinesinkStrings");
    {
        UndoScope del(history_, db_, "Delete Line-sink string");
        Statement v = db_.PrepareRaw("DELETE FROM Vertices WHERE PID = ?1");
        v.Bind(1, pid).Run();
        Statement s = db_.PrepareRaw("DELETE FROM LinesinkStrings WHERE PID = ?1");
        s.Bind(1, pid).Run();
        Statement p = db_.PrepareRaw("DELETE FROM Polygons WHERE PID = ?1");
        p.Bind(1, pid).Run();
        del.Commit();
    }
    EXPECT_EQ(Dump(db_), before);

    ASSERT_TRUE(history_.Undo());  // opens the attached file itself
    EXPECT_EQ(Dump(db_), withString);
    ASSERT_TRUE(history_.Undo());
    EXPECT_EQ(Dump(db_), before);
    ASSERT_TRUE(history_.Redo());
    EXPECT_EQ(Dump(db_), withString);

    // A new string after the undo gets a key of its own, and the redone delete
    // still finds the one it removed.
    ASSERT_TRUE(history_.Redo());
    EXPECT_EQ(Dump(db_), before);
}

TEST_F(UndoHistoryTest, TextLabelsAndTheModelRowHaveNoKeyAndAreRestoredByRowid) {
    db_.ExecuteRaw("INSERT INTO TextLabels (Text, X, Y) VALUES ('first', 1, 1)");
    db_.ExecuteRaw("INSERT INTO TextLabels (Text, X, Y) VALUES ('second', 2, 2)");
    db_.ExecuteRaw("INSERT INTO TextLabels (Text, X, Y) VALUES ('third', 3, 3)");
    const std::string before = Dump(db_);

    {
        UndoScope op(history_, db_, "Delete Text Label");
        db_.ExecuteRaw("DELETE FROM TextLabels WHERE Text = 'second'");
        op.Commit();
    }
    {
        UndoScope op(history_, db_, "Add Text Label");
        db_.ExecuteRaw("INSERT INTO TextLabels (Text, X, Y, FontBold) VALUES ('fourth', 4.5, 4, 1)");
        op.Commit();
    }
    {
        UndoScope op(history_, db_, "Edit Text Label");
        db_.ExecuteRaw("UPDATE TextLabels SET Text = 'FIRST', FontSize = 12 WHERE rowid = 1");
        op.Commit();
    }
    {
        UndoScope op(history_, db_, "Uniform Flow");
        db_.ExecuteRaw(
            "UPDATE Model SET UNIFLOWCompute = 1, UNIFLOWRefX = 10.5, UNIFLOWRefY = -3.25, "
            "UNIFLOWRefHead = 1.0/3.0, UNIFLOWGradient = 0.001, UNIFLOWOrientation = 45");
        op.Commit();
    }
    const std::string after = Dump(db_);
    ASSERT_EQ(history_.UndoCount(), 4u);
    EXPECT_EQ(history_.UndoEntries()[0].rows.size(), 1u);
    EXPECT_TRUE(history_.UndoEntries()[3].changeset.empty()) << "Model has no key";

    for (int i = 0; i < 4; ++i) ASSERT_TRUE(history_.Undo(db_));
    EXPECT_EQ(Dump(db_), before) << "the second label is back under its own rowid";
    for (int i = 0; i < 4; ++i) ASSERT_TRUE(history_.Redo(db_));
    EXPECT_EQ(Dump(db_), after);
}

TEST_F(UndoHistoryTest, ANewOperationClearsRedoAndEmptyOperationsAreNotRecorded) {
    {
        UndoScope op(history_, db_, "Add Well");
        AddWell(db_, 5, 5, 5);
        op.Commit();
    }
    ASSERT_TRUE(history_.Undo(db_));
    ASSERT_TRUE(history_.CanRedo());

    // Nothing written, a row changed and changed back, a row added and removed,
    // a write rolled back: none of them is an entry, and redo stays.
    history_.Begin(db_, "Nothing");
    history_.Commit();
    {
        UndoScope op(history_, db_, "There and back");
        db_.ExecuteRaw("UPDATE Model SET AQHydCond = 99");
        db_.ExecuteRaw("UPDATE Model SET AQHydCond = 1");
        AddWell(db_, 7, 7, 7);
        db_.ExecuteRaw("DELETE FROM Wells; DELETE FROM Vertices;");
        op.Commit();
    }
    {
        UndoScope op(history_, db_, "Rolled back");
        Transaction tx(db_);
        AddWell(db_, 8, 8, 8);
        db_.ExecuteRaw("UPDATE Model SET AQBase = -50");
        tx.Rollback();
        op.Commit();
    }
    EXPECT_FALSE(history_.CanUndo());
    EXPECT_EQ(history_.RedoName(), "Add Well");

    {
        UndoScope op(history_, db_, "Aquifer");
        db_.ExecuteRaw("UPDATE Model SET AQBase = -50");
        op.Commit();
    }
    EXPECT_FALSE(history_.CanRedo()) << "a new operation clears the redo list";
    EXPECT_EQ(history_.RedoName(), "");
    EXPECT_EQ(history_.UndoName(), "Aquifer");
}

TEST_F(UndoHistoryTest, ResultTablesAreNotRecorded) {
    const std::string before = Dump(db_);
    {
        UndoScope op(history_, db_, "Add Well");
        AddWell(db_, 1, 1, 1);
        db_.ExecuteRaw(
            "INSERT INTO WLResults (Label, X, Y, Radius, SpecifiedHead, Discharge, Head) "
            "VALUES ('W', 1, 1, 0.3, 1, 2, 3)");
        op.Commit();
    }
    {
        UndoScope solve(history_, db_, "Solve");  // only result tables: nothing recorded
        db_.ExecuteRaw("INSERT INTO FIResults (Label, PID, TotalFlux) VALUES ('F', 1, 2.5)");
        db_.ExecuteRaw("UPDATE WLResults SET Head = 4");
        solve.Commit();
    }
    EXPECT_EQ(history_.UndoCount(), 1u);
    ASSERT_TRUE(history_.Undo(db_));
    EXPECT_EQ(Count("SELECT count(*) FROM Wells"), 0);
    EXPECT_EQ(Count("SELECT count(*) FROM WLResults"), 1) << "results stay as the solve left them";
    EXPECT_EQ(Count("SELECT count(*) FROM FIResults"), 1);

    // With a filter that records everything, a result row is undone too.
    history_.SetTableFilter({});
    {
        UndoScope op(history_, db_, "Clear results");
        db_.ExecuteRaw("DELETE FROM WLResults; DELETE FROM FIResults;");
        op.Commit();
    }
    ASSERT_TRUE(history_.Undo(db_));
    EXPECT_EQ(Count("SELECT count(*) FROM WLResults"), 1);
    EXPECT_TRUE(UndoHistory::IsResultTable("lsresults"));
    EXPECT_FALSE(UndoHistory::IsResultTable("Wells"));
    (void)before;
}

TEST_F(UndoHistoryTest, AConflictLeavesTheFileUnchangedAndClearsTheHistory) {
    {
        UndoScope op(history_, db_, "Add Well");
        AddWell(db_, 1, 1, 1);
        op.Commit();
    }
    {
        UndoScope op(history_, db_, "Edit Well");
        db_.ExecuteRaw("UPDATE Wells SET Head = 20; UPDATE Vertices SET X = 2;");
        op.Commit();
    }
    // Another program changes the vertex the edit moved (a keyed table).
    {
        Database other = Database::Open(file_);
        other.ExecuteRaw("UPDATE Vertices SET X = 3");
    }
    const std::string changed = Dump(db_);
    try {
        history_.Undo(db_);
        FAIL() << "the undo must stop";
    } catch (const UndoConflictError& e) {
        const std::string what = e.what();
        EXPECT_NE(what.find("Cannot undo \"Edit Well\""), std::string::npos) << what;
        EXPECT_NE(what.find("Vertices"), std::string::npos) << what;
        EXPECT_NE(what.find("p.trn"), std::string::npos) << what;
    }
    EXPECT_EQ(Dump(db_), changed) << "the Wells row must not be undone alone";
    EXPECT_FALSE(history_.CanUndo());
    EXPECT_FALSE(history_.CanRedo());
}

TEST_F(UndoHistoryTest, AConflictOnARowidTableStopsTheUndoToo) {
    {
        UndoScope op(history_, db_, "Edit Text Label");
        db_.ExecuteRaw("INSERT INTO TextLabels (Text, X) VALUES ('a', 1)");
        db_.ExecuteRaw("UPDATE Model SET AQBase = 5");
        op.Commit();
    }
    // Changes to other fields of the Model row do not matter (the solver writes
    // some); a change of the label does.
    db_.ExecuteRaw("UPDATE Model SET SOLVERIterations = 7");
    db_.ExecuteRaw("UPDATE TextLabels SET Text = 'b'");
    const std::string changed = Dump(db_);
    EXPECT_THROW(history_.Undo(db_), UndoConflictError);
    EXPECT_EQ(Dump(db_), changed);
    EXPECT_FALSE(history_.CanUndo());

    // A redo that meets a row in its way stops as well.
    {
        UndoScope op(history_, db_, "Aquifer");
        db_.ExecuteRaw("UPDATE Model SET AQBase = 6");
        op.Commit();
    }
    ASSERT_TRUE(history_.Undo(db_));
    db_.ExecuteRaw("UPDATE Model SET AQBase = 8");
    EXPECT_THROW(history_.Redo(db_), UndoConflictError);
    EXPECT_EQ(Count("SELECT AQBase FROM Model"), 8);
    EXPECT_FALSE(history_.CanRedo());
}

TEST_F(UndoHistoryTest, NestedScopesMakeOneEntryUnderTheOuterName) {
    const std::string before = Dump(db_);
    {
        UndoScope outer(history_, db_, "Move Vertex");
        AddWell(db_, 1, 1, 1);
        {
            UndoScope inner(history_, db_, "Edit Well");
            db_.ExecuteRaw("UPDATE Wells SET Head = 2");
            inner.Commit();
        }
        {
            // Another connection of the same operation is recorded as well.
            Database second = Database::Open(file_);
            UndoScope inner(history_, second, "Add Text Label");
            second.ExecuteRaw("INSERT INTO TextLabels (Text, X) VALUES ('t', 1)");
            inner.Commit();
        }
        {
            UndoScope refused(history_, db_, "Refused");  // abandoned: the outer decides
            db_.ExecuteRaw("UPDATE Model SET AQRecharge = 0.25");
        }
        EXPECT_TRUE(history_.InOperation());
        EXPECT_FALSE(history_.Undo(db_)) << "no undo while an operation is open";
        outer.Commit();
    }
    EXPECT_FALSE(history_.InOperation());
    ASSERT_EQ(history_.UndoCount(), 1u);
    EXPECT_EQ(history_.UndoName(), "Move Vertex");
    ASSERT_TRUE(history_.Undo(db_));
    EXPECT_EQ(Dump(db_), before);
}

TEST_F(UndoHistoryTest, AbandonRecordsNothing) {
    history_.Begin(db_, "Add Well");
    AddWell(db_, 1, 1, 1);
    history_.Abandon();
    EXPECT_FALSE(history_.CanUndo());
    EXPECT_EQ(Count("SELECT count(*) FROM Wells"), 1) << "Abandon does not roll back";

    try {
        UndoScope op(history_, db_, "Failing");
        db_.ExecuteRaw("UPDATE Wells SET Head = 3");
        throw std::runtime_error("refused");
    } catch (const std::runtime_error&) {
    }
    EXPECT_FALSE(history_.CanUndo());
    EXPECT_FALSE(history_.InOperation());

    // The next operation is recorded from its own start only.
    {
        UndoScope op(history_, db_, "Edit Well");
        db_.ExecuteRaw("UPDATE Wells SET Head = 4");
        op.Commit();
    }
    ASSERT_TRUE(history_.Undo(db_));
    EXPECT_EQ(Count("SELECT Head FROM Wells"), 3);
    EXPECT_THROW(history_.Commit(), std::logic_error);
}

TEST_F(UndoHistoryTest, ScopesFindTheHistoryOfTheirFile) {
    EXPECT_EQ(UndoHistory::Of(db_), &history_);
    Database viaOtherPath = Database::Open(dir_ / "." / "p.trn");
    EXPECT_EQ(UndoHistory::Of(viaOtherPath), &history_);
    {
        UndoScope op(db_, "Add Well");
        EXPECT_EQ(op.History(), &history_);
        AddWell(db_, 1, 1, 1);
        op.Commit();
    }
    EXPECT_EQ(history_.UndoCount(), 1u);

    history_.Detach();
    EXPECT_FALSE(history_.CanUndo()) << "closing the project forgets its history";
    EXPECT_EQ(UndoHistory::Of(db_), nullptr);
    {
        UndoScope op(db_, "Add Well");  // no history: records nothing, does no harm
        EXPECT_EQ(op.History(), nullptr);
        AddWell(db_, 2, 2, 2);
        op.Commit();
    }
    EXPECT_FALSE(history_.CanUndo());
    EXPECT_FALSE(history_.Undo()) << "no file attached";
}

}  // namespace
}  // namespace tarno
