// Recognising bad project files, and compaction that survives being killed.

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <thread>

#include "store/database.h"
#include "store/project_file.h"
#include "store/schema.h"
#include "store_test_util.h"

namespace tarno {
namespace {

namespace fs = std::filesystem;

class ProjectFileTest : public test::TempDirTest {
protected:
    // A project with `wells` wells, each with a vertex.
    fs::path MakeProject(const std::string& name, int wells) {
        fs::path p = Path(name);
        DBNewDatabase(p, "probe", true, true);
        Database db = Database::Open(p);
        Transaction tx(db);
        Statement v = db.Prepare("INSERT INTO Vertices (X, Y) VALUES (?, ?)");
        Statement w = db.Prepare("INSERT INTO Wells (VID, Label) VALUES (?, ?)");
        for (int i = 0; i < wells; ++i) {
            v.Reset();
            v.Bind(1, i * 1.0).Bind(2, i * 2.0).Run();
            w.Reset();
            std::string label = "W";
            label += std::to_string(i);
            w.Bind(1, db.LastInsertId()).Bind(2, label).Run();
        }
        tx.Commit();
        return p;
    }
    static std::int64_t WellCount(const fs::path& p) {
        Database db = Database::OpenReadOnly(p);
        Statement s = db.Prepare("select count(*) from Wells");
        s.Step();
        return s.GetInt64(0);
    }
    static void WriteBytes(const fs::path& p, const std::string& bytes) {
        std::ofstream out(p, std::ios::binary);
        out << bytes;
    }
};

TEST_F(ProjectFileTest, ANewProjectIsRecognisedWithItsVersion) {
    fs::path p = MakeProject("good.trn", 3);
    auto before = fs::last_write_time(p);
    ProjectFileProbe r = ProbeProjectFile(p);
    EXPECT_EQ(r.state, ProjectFileState::Project);
    EXPECT_EQ(r.version, 123);
    EXPECT_EQ(fs::last_write_time(p), before) << "probing must not write";
    EXPECT_FALSE(fs::exists(Path("good.trn-journal")));
    EXPECT_NE(ProbeMessage(p, r).find("version 123"), std::string::npos);
}

TEST_F(ProjectFileTest, OldProjectWithoutVersionFieldCountsAs100) {
    fs::path p = Path("old.trn");
    {
        Database db = Database::Create(p);
        db.ExecuteRaw("CREATE TABLE Project (Description TEXT)");
        db.ExecuteRaw("INSERT INTO Project VALUES ('x')");
    }
    ProjectFileProbe r = ProbeProjectFile(p);
    EXPECT_EQ(r.state, ProjectFileState::Project);
    EXPECT_EQ(r.version, 100);
}

TEST_F(ProjectFileTest, MissingEmptyAndFolder) {
    EXPECT_EQ(ProbeProjectFile(Path("nothing.trn")).state, ProjectFileState::Missing);
    EXPECT_EQ(ProbeProjectFile("").state, ProjectFileState::Missing);
    WriteBytes(Path("empty.trn"), "");
    EXPECT_EQ(ProbeProjectFile(Path("empty.trn")).state, ProjectFileState::Empty);
    fs::create_directory(Path("dir.trn"));
    EXPECT_EQ(ProbeProjectFile(Path("dir.trn")).state, ProjectFileState::NotReadable);
}

TEST_F(ProjectFileTest, UnreadableFile) {
    if (::geteuid() == 0) GTEST_SKIP() << "permissions do not bind the super-user";
    fs::path p = MakeProject("secret.trn", 1);
    fs::permissions(p, fs::perms::none);
    ProjectFileProbe r = ProbeProjectFile(p);
    fs::permissions(p, fs::perms::owner_read | fs::perms::owner_write);
    EXPECT_EQ(r.state, ProjectFileState::NotReadable);
    EXPECT_FALSE(r.detail.empty());
}

TEST_F(ProjectFileTest, JetDatabaseOfTheEarlierProgram) {
    for (const char* sig : {"Standard Jet DB", "Standard ACE DB"}) {
        std::string bytes("\x00\x01\x00\x00", 4);
        bytes += sig;
        bytes += std::string(2048 - bytes.size(), '\0');
        WriteBytes(Path("old.mdb"), bytes);
        ProjectFileProbe r = ProbeProjectFile(Path("old.mdb"));
        EXPECT_EQ(r.state, ProjectFileState::JetDatabase) << sig;
        std::string msg = ProbeMessage(Path("old.mdb"), r);
        EXPECT_NE(msg.find("old.mdb"), std::string::npos);
        EXPECT_NE(msg.find("cannot be opened yet"), std::string::npos);
    }
}

TEST_F(ProjectFileTest, OtherFilesAndOtherDatabases) {
    WriteBytes(Path("notes.trn"), "Observed heads\r\nW1 12.5\r\n");
    EXPECT_EQ(ProbeProjectFile(Path("notes.trn")).state, ProjectFileState::NotSqlite);
    WriteBytes(Path("tiny.trn"), "SQL");
    EXPECT_EQ(ProbeProjectFile(Path("tiny.trn")).state, ProjectFileState::NotSqlite);
    WriteBytes(Path("header.trn"), std::string("SQLite format 3\0", 16) + "abc");
    EXPECT_EQ(ProbeProjectFile(Path("header.trn")).state, ProjectFileState::Corrupt);
    {
        Database db = Database::Create(Path("other.db"));
        db.ExecuteRaw("CREATE TABLE Stations (Name TEXT)");
    }
    ProjectFileProbe r = ProbeProjectFile(Path("other.db"));
    EXPECT_EQ(r.state, ProjectFileState::NotProject);
    EXPECT_NE(ProbeMessage(Path("other.db"), r).find("no Project table"), std::string::npos);
}

TEST_F(ProjectFileTest, TruncatedAndDamagedProjects) {
    fs::path p = MakeProject("cut.trn", 2000);
    auto size = fs::file_size(p);
    ASSERT_GT(size, 8 * 4096u);
    fs::resize_file(p, size / 2);
    ProjectFileProbe r = ProbeProjectFile(p);
    EXPECT_EQ(r.state, ProjectFileState::Corrupt) << r.detail;

    // Same size, but pages in the middle overwritten.
    fs::path q = MakeProject("scribbled.trn", 2000);
    {
        std::fstream f(q, std::ios::in | std::ios::out | std::ios::binary);
        f.seekp(static_cast<std::streamoff>(fs::file_size(q) / 2));
        std::string junk(3 * 4096, '\x5a');
        f.write(junk.data(), static_cast<std::streamsize>(junk.size()));
    }
    EXPECT_EQ(ProbeProjectFile(q).state, ProjectFileState::Corrupt);
}

TEST_F(ProjectFileTest, FileLockedByAnotherWriterIsRecognised) {
    fs::path p = MakeProject("busy.trn", 1);
    Database other = Database::Open(p);
    other.ExecuteRaw("BEGIN EXCLUSIVE");
    other.Execute("UPDATE Wells SET Head = 3");
    auto t0 = std::chrono::steady_clock::now();
    ProjectFileProbe r = ProbeProjectFile(p);
    auto waited = std::chrono::steady_clock::now() - t0;
    EXPECT_EQ(r.state, ProjectFileState::Locked) << r.detail;
    EXPECT_LT(waited, std::chrono::seconds(2)) << "the probe must not wait long for a lock";
    EXPECT_NE(ProbeMessage(p, r).find("busy.trn"), std::string::npos);
    other.ExecuteRaw("ROLLBACK");
    EXPECT_EQ(ProbeProjectFile(p).state, ProjectFileState::Project);
}

TEST_F(ProjectFileTest, AWriteInterruptedByACrashIsRolledBackNotReportedUnreadable) {
    fs::path p = MakeProject("crash.trn", 50);
    pid_t pid = ::fork();
    if (pid == 0) {
        Database db = Database::Open(p);
        db.ExecuteRaw("pragma cache_size = 1");  // spill pages: the journal is hot
        db.ExecuteRaw("BEGIN");
        db.Execute("DELETE * FROM Wells");
        db.Execute("INSERT INTO Vertices (X, Y) SELECT X + 1, Y FROM Vertices");
        db.Execute("INSERT INTO Vertices (X, Y) SELECT X + 1, Y FROM Vertices");
        ::raise(SIGKILL);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    ASSERT_TRUE(WIFSIGNALED(status));
    ASSERT_TRUE(fs::exists(Path("crash.trn-journal")));
    ProjectFileProbe r = ProbeProjectFile(p);
    EXPECT_EQ(r.state, ProjectFileState::Project) << r.detail;
    EXPECT_EQ(WellCount(p), 50) << "the interrupted delete is undone";
}

TEST_F(ProjectFileTest, EveryStateHasAMessageNamingTheFile) {
    for (auto st : {ProjectFileState::Project, ProjectFileState::Missing, ProjectFileState::MissingButCompacted,
                    ProjectFileState::NotReadable, ProjectFileState::Locked, ProjectFileState::Empty,
                    ProjectFileState::JetDatabase, ProjectFileState::NotSqlite, ProjectFileState::NotProject,
                    ProjectFileState::Corrupt}) {
        ProjectFileProbe r;
        r.state = st;
        EXPECT_NE(ProbeMessage("/data/valley.trn", r).find("\"/data/valley.trn\""), std::string::npos);
        EXPECT_FALSE(ProbeTitle(r).empty());
    }
}

// ------------------------------------------------------------ compaction

TEST_F(ProjectFileTest, CompactionShrinksAndKeepsTheRows) {
    fs::path p = MakeProject("big.trn", 12000);
    {
        Database db = Database::Open(p);
        db.Execute("DELETE * FROM Wells WHERE VID > 100");
        db.Execute("DELETE * FROM Vertices WHERE VID > 100");
    }
    // Deleting frees pages but leaves the file as large as it was.
    auto before = fs::file_size(p);
    ASSERT_TRUE(CompactProject(p));
    EXPECT_LT(fs::file_size(p), before / 4);
    EXPECT_EQ(WellCount(p), 100);
    EXPECT_FALSE(fs::exists(CompressedCopyPath(p)));
    EXPECT_EQ(ProbeProjectFile(p).version, 123);
    // Keys handed out go on from where they were, not from the compacted rows.
    Database db = Database::Open(p);
    db.Execute("INSERT INTO Vertices (X, Y) VALUES (0, 0)");
    EXPECT_EQ(db.LastInsertId(), 12001);
}

TEST_F(ProjectFileTest, CompactionOfNothingOrOfABadFileLeavesItAlone) {
    EXPECT_FALSE(CompactProject(""));
    EXPECT_FALSE(CompactProject(Path("missing.trn")));
    EXPECT_FALSE(fs::exists(Path("missing.trn")));
    WriteBytes(Path("notes.trn"), "not a database at all, just some text of a reasonable length");
    EXPECT_FALSE(CompactProject(Path("notes.trn")));
    EXPECT_EQ(ProbeProjectFile(Path("notes.trn")).state, ProjectFileState::NotSqlite);
    EXPECT_FALSE(fs::exists(CompressedCopyPath(Path("notes.trn"))));
}

TEST_F(ProjectFileTest, CompactionRemovesAStaleCopyFirst) {
    fs::path p = MakeProject("stale.trn", 5);
    WriteBytes(CompressedCopyPath(p), "left over from an old crash");
    ASSERT_TRUE(CompactProject(p));
    EXPECT_EQ(WellCount(p), 5);
    EXPECT_FALSE(fs::exists(CompressedCopyPath(p)));
}

// Runs the compaction in a child process that kills itself with SIGKILL
// just before step `killAt`; returns the child's wait status.
int CompactInChildKilledAt(const fs::path& p, int killAt) {
    pid_t pid = ::fork();
    if (pid == 0) {
        bool ok = CompactProject(p, [killAt](int step) {
            if (step == killAt) ::raise(SIGKILL);
        });
        ::_exit(ok ? 0 : 1);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    return status;
}

TEST_F(ProjectFileTest, CompactionKilledAtAnyStepLeavesACompleteProject) {
    fs::path p = MakeProject("kill.trn", 500);
    for (int step = 1; step <= 5; ++step) {
        SCOPED_TRACE("killed before step " + std::to_string(step));
        int status = CompactInChildKilledAt(p, step);
        ASSERT_TRUE(WIFSIGNALED(status));
        EXPECT_EQ(WTERMSIG(status), SIGKILL);
        ProjectFileProbe r = ProbeProjectFile(p);
        ASSERT_EQ(r.state, ProjectFileState::Project) << r.detail;
        EXPECT_EQ(WellCount(p), 500);
        // A further compaction after the crash succeeds and tidies up.
        ASSERT_TRUE(CompactProject(p));
        EXPECT_FALSE(fs::exists(CompressedCopyPath(p)));
        EXPECT_EQ(WellCount(p), 500);
    }
    // And the same run not killed: exits normally.
    int status = CompactInChildKilledAt(p, 0);
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), 0);
}

TEST_F(ProjectFileTest, CompactionKilledAtRandomMomentsLeavesACompleteProject) {
    // Kills from outside, while the copy is being written, at spread times.
    fs::path p = MakeProject("timed.trn", 20000);
    for (int i = 0; i < 8; ++i) {
        pid_t pid = ::fork();
        if (pid == 0) {
            ::_exit(CompactProject(p) ? 0 : 1);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(300 + 1500 * i));
        ::kill(pid, SIGKILL);
        int status = 0;
        ::waitpid(pid, &status, 0);
        ProjectFileProbe r = ProbeProjectFile(p);
        ASSERT_EQ(r.state, ProjectFileState::Project) << "attempt " << i << ": " << r.detail;
        EXPECT_EQ(WellCount(p), 20000);
    }
}

TEST_F(ProjectFileTest, ACopyLeftInPlaceOfAMissingFileIsFoundAndRestored) {
    fs::path p = MakeProject("lost.trn", 7);
    fs::rename(p, CompressedCopyPath(p));
    ProjectFileProbe r = ProbeProjectFile(p);
    EXPECT_EQ(r.state, ProjectFileState::MissingButCompacted);
    EXPECT_NE(ProbeMessage(p, r).find("lost.trn.compress"), std::string::npos);
    ASSERT_TRUE(RestoreCompactedCopy(p));
    EXPECT_EQ(ProbeProjectFile(p).state, ProjectFileState::Project);
    EXPECT_EQ(WellCount(p), 7);
    EXPECT_FALSE(RestoreCompactedCopy(p)) << "nothing to restore any more";

    // A damaged copy is not offered.
    fs::path q = Path("gone.trn");
    WriteBytes(CompressedCopyPath(q), std::string("SQLite format 3\0", 16) + std::string(200, 'x'));
    EXPECT_EQ(ProbeProjectFile(q).state, ProjectFileState::Missing);
    EXPECT_FALSE(RestoreCompactedCopy(q));
}

}  // namespace
}  // namespace tarno
