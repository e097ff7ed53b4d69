// The SQLite wrapper: opening, binding, reading, transactions, errors.

#include <gtest/gtest.h>

#include <fstream>

#include "store/database.h"
#include "store_test_util.h"

namespace tarno {
namespace {

class DatabaseTest : public test::TempDirTest {
protected:
    void SetUp() override {
        TempDirTest::SetUp();
        db_ = Database::Create(Path("t.db"));
        db_.ExecuteRaw("CREATE TABLE T (Id INTEGER PRIMARY KEY, Name TEXT COLLATE NOCASE, V DOUBLE, N INTEGER)");
    }
    Database db_;
};

TEST_F(DatabaseTest, OpenMissingFileNamesTheFile) {
    try {
        Database::Open(Path("none.trn"));
        FAIL();
    } catch (const StoreError& e) {
        EXPECT_EQ(e.path(), Path("none.trn").string());
        EXPECT_EQ(e.number(), error_number::kFileNotFound);
        EXPECT_NE(std::string(e.what()).find("none.trn"), std::string::npos);
    }
    EXPECT_FALSE(std::filesystem::exists(Path("none.trn"))) << "Open must not create a file";
}

TEST_F(DatabaseTest, CreateRefusesAnExistingFileAndWritesAHeader) {
    EXPECT_THROW(Database::Create(Path("t.db")), StoreError);
    Database::Create(Path("fresh.db"));
    std::ifstream in(Path("fresh.db"), std::ios::binary);
    char magic[16] = {};
    in.read(magic, 16);
    EXPECT_EQ(std::string(magic, 15), "SQLite format 3");
}

TEST_F(DatabaseTest, OpenOfANonDatabaseFails) {
    std::ofstream(Path("text.trn")) << "this is not a database, it is a text file of some length\n";
    EXPECT_THROW(Database::Open(Path("text.trn")), StoreError);
}

TEST_F(DatabaseTest, BindByIndexAndNameAndReadBack) {
    Statement ins = db_.PrepareRaw("INSERT INTO T (Name, V, N) VALUES (:name, ?2, @n)");
    ins.Bind(":name", "alpha").Bind(2, 1.25).Bind("@n", std::int64_t{1} << 40).Run();
    EXPECT_EQ(db_.LastInsertId(), 1);
    EXPECT_EQ(db_.Changes(), 1);
    ins.Reset();
    ins.Bind(":name", nullptr).Bind(2, Value{std::string("2.5")}).Bind("@n", Value{}).Run();

    Statement s = db_.Prepare("select * from T order by Id");
    ASSERT_TRUE(s.Step());
    EXPECT_EQ(s.ColumnCount(), 4);
    EXPECT_EQ(s.GetText("NAME"), "alpha");
    EXPECT_EQ(s.GetDouble("v"), 1.25);
    EXPECT_EQ(s.GetInt64("N"), std::int64_t{1} << 40);
    EXPECT_EQ(s.Kind("N"), ValueKind::Integer);
    EXPECT_EQ(std::get<std::string>(s.GetValue("Name")), "alpha");
    ASSERT_TRUE(s.Step());
    EXPECT_TRUE(s.IsNull("Name"));
    EXPECT_EQ(s.GetText("Name"), "");
    EXPECT_EQ(s.GetDouble("V"), 2.5) << "text bound to a DOUBLE column converts";
    EXPECT_TRUE(std::holds_alternative<std::monostate>(s.GetValue("N")));
    EXPECT_FALSE(s.Step());

    EXPECT_THROW(s.ColumnIndex("Missing"), StoreError);
    EXPECT_EQ(s.FindColumn("Missing"), -1);
    EXPECT_THROW(ins.Bind(":nope", 1), StoreError);
    EXPECT_THROW(ins.Bind(9, 1), StoreError);
}

TEST_F(DatabaseTest, BoolReadsAnyNonZeroAsTrue) {
    db_.ExecuteRaw("INSERT INTO T (N) VALUES (-1), (0), (1), (NULL)");
    Statement s = db_.PrepareRaw("select N from T order by Id");
    std::vector<bool> got;
    while (s.Step()) got.push_back(s.GetBool(0));
    EXPECT_EQ(got, (std::vector<bool>{true, false, true, false}));
}

TEST_F(DatabaseTest, TransactionRollsBackUnlessCommitted) {
    {
        Transaction tx(db_);
        db_.Execute("INSERT INTO T (Name) VALUES ('gone')");
    }
    {
        Transaction tx(db_);
        db_.Execute("INSERT INTO T (Name) VALUES ('kept')");
        tx.Commit();
        EXPECT_THROW(tx.Commit(), StoreError);
    }
    Statement s = db_.Prepare("select Name from T");
    ASSERT_TRUE(s.Step());
    EXPECT_EQ(s.GetText(0), "kept");
    EXPECT_FALSE(s.Step());
}

TEST_F(DatabaseTest, FailedStepLeavesTheStatementUsable) {
    db_.ExecuteRaw("CREATE TABLE U (K INTEGER UNIQUE)");
    Statement ins = db_.PrepareRaw("INSERT INTO U VALUES (?1)");
    ins.Bind(1, 1).Run();
    ins.Reset();
    try {
        ins.Bind(1, 1).Run();
        FAIL();
    } catch (const StoreError& e) {
        EXPECT_NE(e.description().find("UNIQUE constraint failed: U.K"), std::string::npos);
        EXPECT_NE(std::string(e.what()).find("t.db"), std::string::npos);
    }
    ins.Reset();
    ins.Bind(1, 2).Run();
    Statement c = db_.PrepareRaw("select count(*) from U");
    ASSERT_TRUE(c.Step());
    EXPECT_EQ(c.GetInt64(0), 2);
}

TEST_F(DatabaseTest, OneStatementAtATime) {
    EXPECT_THROW(db_.Prepare("select 1; select 2"), StoreError);
    EXPECT_THROW(db_.Prepare("   "), StoreError);
    db_.ExecuteRaw("INSERT INTO T (N) VALUES (1); INSERT INTO T (N) VALUES (2);");
    Statement c = db_.PrepareRaw("select count(*) from T");
    ASSERT_TRUE(c.Step());
    EXPECT_EQ(c.GetInt64(0), 2);
}

TEST_F(DatabaseTest, CatalogueQuestionsIgnoreCase) {
    EXPECT_TRUE(db_.TableExists("t"));
    EXPECT_FALSE(db_.TableExists("W"));
    EXPECT_TRUE(db_.ColumnExists("T", "name"));
    EXPECT_FALSE(db_.ColumnExists("T", "Nome"));
}

TEST_F(DatabaseTest, MovedStatementsAndClosedDatabases) {
    Statement a = db_.PrepareRaw("select 42");
    Statement b = std::move(a);
    EXPECT_FALSE(a.IsValid());
    ASSERT_TRUE(b.Step());
    EXPECT_EQ(b.GetInt64(0), 42);
    Database moved = std::move(db_);
    EXPECT_FALSE(db_.IsOpen());
    EXPECT_THROW(db_.Execute("select 1"), StoreError);
    // A statement made before the move still works: it holds the connection.
    b.Reset();
    ASSERT_TRUE(b.Step());
    moved.Close();
    moved.Close();
    EXPECT_FALSE(moved.IsOpen());
}

TEST_F(DatabaseTest, ReadOnlyConnectionRefusesWrites) {
    db_.Close();
    Database ro = Database::OpenReadOnly(Path("t.db"));
    EXPECT_THROW(ro.Execute("INSERT INTO T (N) VALUES (1)"), StoreError);
}

}  // namespace
}  // namespace tarno
