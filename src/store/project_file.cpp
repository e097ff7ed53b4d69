#include "store/project_file.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>

#include "store/database.h"
#include "store/schema.h"

namespace tarno {

namespace {

namespace fs = std::filesystem;

// How long a probe waits for another program's lock before calling the file
// locked. Short: the user is waiting for a project to open.
constexpr int kProbeBusyTimeoutMs = 200;

ProjectFileState StateForCode(int code) {
    switch (code & 0xff) {
        case SQLITE_BUSY:
        case SQLITE_LOCKED: return ProjectFileState::Locked;
        case SQLITE_NOTADB:
        case SQLITE_CORRUPT:
        case SQLITE_FORMAT:
        case SQLITE_RANGE: return ProjectFileState::Corrupt;
        default: return ProjectFileState::NotReadable;
    }
}

// Flushes a file or directory to disk. Errors are ignored: the caller's
// sequence stays safe without it, only less durable against power loss.
void SyncPath(const fs::path& p, bool directory) {
    int fd = ::open(p.c_str(), directory ? (O_RDONLY | O_DIRECTORY) : O_RDONLY);
    if (fd < 0) return;
    ::fsync(fd);
    ::close(fd);
}

fs::path DirectoryOf(const fs::path& p) {
    fs::path d = p.parent_path();
    return d.empty() ? fs::path(".") : d;
}

std::string Quoted(const fs::path& p) {
    std::string r(1, '"');
    r.append(p.string());
    r.push_back('"');
    return r;
}

}  // namespace

fs::path CompressedCopyPath(const fs::path& path) {
    fs::path p = path;
    p += ".compress";
    return p;
}

namespace {
ProjectFileProbe Probe(const fs::path& path, bool mayRollBack);
}  // namespace

ProjectFileProbe ProbeProjectFile(const fs::path& path) { return Probe(path, true); }

namespace {

ProjectFileProbe Probe(const fs::path& path, bool mayRollBack) {
    ProjectFileProbe r;
    std::error_code ec;
    if (path.empty() || !fs::exists(path, ec)) {
        r.state = ProjectFileState::Missing;
        if (!path.empty()) {
            fs::path copy = CompressedCopyPath(path);
            if (fs::exists(copy, ec)) {
                ProjectFileProbe c = ProbeProjectFile(copy);
                if (c.state == ProjectFileState::Project) {
                    r.state = ProjectFileState::MissingButCompacted;
                    r.version = c.version;
                }
            }
        }
        return r;
    }
    if (fs::is_directory(path, ec)) {
        r.state = ProjectFileState::NotReadable;
        r.detail = "it is a folder";
        return r;
    }

    // The first bytes tell the kind of file.
    unsigned char head[100] = {};
    std::size_t got = 0;
    {
        int fd = ::open(path.c_str(), O_RDONLY);
        if (fd < 0) {
            r.state = ProjectFileState::NotReadable;
            r.detail = std::strerror(errno);
            return r;
        }
        while (got < sizeof head) {
            ssize_t n = ::read(fd, head + got, sizeof head - got);
            if (n < 0) {
                if (errno == EINTR) continue;
                r.state = ProjectFileState::NotReadable;
                r.detail = std::strerror(errno);
                ::close(fd);
                return r;
            }
            if (n == 0) break;
            got += static_cast<std::size_t>(n);
        }
        ::close(fd);
    }
    if (got == 0) {
        r.state = ProjectFileState::Empty;
        return r;
    }
    if (got >= 19 && (std::memcmp(head + 4, "Standard Jet DB", 15) == 0 ||
                      std::memcmp(head + 4, "Standard ACE DB", 15) == 0)) {
        r.state = ProjectFileState::JetDatabase;
        return r;
    }
    if (got < 16 || std::memcmp(head, "SQLite format 3\0", 16) != 0) {
        r.state = ProjectFileState::NotSqlite;
        return r;
    }
    if (got < sizeof head) {
        r.state = ProjectFileState::Corrupt;
        r.detail = "the file ends inside its header";
        return r;
    }

    try {
        Database db = Database::OpenReadOnly(path, kProbeBusyTimeoutMs);
        {
            Statement qc = db.PrepareRaw("pragma quick_check");
            std::string first;
            if (qc.Step()) first = qc.GetText(0);
            if (first != "ok") {
                r.state = ProjectFileState::Corrupt;
                r.detail = first.empty() ? "the integrity check gave no answer" : first;
                return r;
            }
        }
        if (!db.TableExists("Project")) {
            r.state = ProjectFileState::NotProject;
            return r;
        }
        r.version = ReadProjectVersion(db);
        r.state = ProjectFileState::Project;
    } catch (const StoreError& e) {
        if (e.code() == SQLITE_READONLY_ROLLBACK && mayRollBack) {
            // A write was interrupted (the program crashed or was killed) and
            // its journal lies beside the file. A read-only connection cannot
            // undo it; any connection that may write undoes it on opening,
            // bringing back the file as last committed. That is the one
            // change a probe makes, and the same any open would make.
            try {
                Database rw = Database::Open(path);
            } catch (const StoreError&) {
            }
            return Probe(path, false);
        }
        r.state = StateForCode(e.code());
        r.detail = e.description();
    }
    return r;
}

}  // namespace

std::string ProbeTitle(const ProjectFileProbe& probe) {
    switch (probe.state) {
        case ProjectFileState::Project: return "Project File";
        case ProjectFileState::Missing: return "No Such File";
        case ProjectFileState::MissingButCompacted: return "Project File Found as a Copy";
        case ProjectFileState::NotReadable: return "Cannot Read Project File";
        case ProjectFileState::Locked: return "Project File in Use";
        case ProjectFileState::Empty: return "Empty Project File";
        case ProjectFileState::JetDatabase: return "Project of the Earlier Windows Program";
        case ProjectFileState::NotSqlite: return "Not a Project File";
        case ProjectFileState::NotProject: return "Not a Project File";
        case ProjectFileState::Corrupt: return "Damaged Project File";
    }
    return "Project File";
}

std::string ProbeMessage(const fs::path& path, const ProjectFileProbe& probe) {
    const std::string f = Quoted(path);
    const std::string detail = probe.detail.empty() ? "" : " (" + probe.detail + ")";
    switch (probe.state) {
        case ProjectFileState::Project:
            return "The file " + f + " is a TARNO project of version " + std::to_string(probe.version) + ".";
        case ProjectFileState::Missing:
            return "The project file " + f + " does not exist.";
        case ProjectFileState::MissingButCompacted:
            return "The project file " + f + " is missing, but a complete copy of it was found in " +
                   Quoted(CompressedCopyPath(path)) +
                   ". The copy was left when the project was last closed and its compaction did "
                   "not finish. It can be put back in place of the missing file.";
        case ProjectFileState::NotReadable:
            return "The project file " + f + " cannot be read" + detail +
                   ". Check that it is a file and that you are allowed to read and write it.";
        case ProjectFileState::Locked:
            return "The project file " + f +
                   " is in use by another program, which is writing to it. Close the other "
                   "program, or wait until it has finished, and try again.";
        case ProjectFileState::Empty:
            return "The file " + f +
                   " is empty. It holds no project; it may be what is left of a copy or a "
                   "transfer that did not finish.";
        case ProjectFileState::JetDatabase:
            return "The file " + f +
                   " is a project of the earlier Windows program (a Jet database). Projects of "
                   "the earlier Windows program cannot be opened yet.";
        case ProjectFileState::NotSqlite:
            return "The file " + f + " is not a TARNO project file: it is not a database at all.";
        case ProjectFileState::NotProject:
            return "The file " + f +
                   " is a database, but not a TARNO project: it has no Project table.";
        case ProjectFileState::Corrupt:
            return "The project file " + f + " is damaged or incomplete" + detail +
                   " and cannot be opened. If you have a copy of the project, use that.";
    }
    return {};
}

bool RestoreCompactedCopy(const fs::path& path) {
    std::error_code ec;
    if (path.empty() || fs::exists(path, ec)) return false;
    fs::path copy = CompressedCopyPath(path);
    if (ProbeProjectFile(copy).state != ProjectFileState::Project) return false;
    if (std::rename(copy.c_str(), path.c_str()) != 0) return false;
    SyncPath(DirectoryOf(path), true);
    return true;
}

bool CompactProject(const fs::path& path, const std::function<void(int step)>& stepHook) {
    if (path.empty()) return false;
    auto step = [&](int k) {
        if (stepHook) stepHook(k);
    };
    const fs::path copy = CompressedCopyPath(path);
    std::error_code ec;
    try {
        step(1);
        fs::remove(copy, ec);

        step(2);
        {
            // Opened for writing so that SQLite first rolls back what an
            // interrupted write left in a journal; the copy is then of the
            // file as it stands committed.
            Database db = Database::Open(path);
            std::string target;
            for (char c : copy.string()) {
                if (c == '\'') target += "''";
                else target += c;
            }
            db.ExecuteRaw("VACUUM INTO '" + target + "'");
            db.Close();
        }
        // A journal beside the file would be played back into the new file
        // on the next open: then leave everything as it is.
        for (const char* suffix : {"-journal", "-wal"}) {
            fs::path j = path;
            j += suffix;
            if (fs::exists(j, ec)) {
                fs::remove(copy, ec);
                return false;
            }
        }
        ProjectFileState copied = ProbeProjectFile(copy).state;
        if (copied != ProjectFileState::Project && copied != ProjectFileState::NotProject) {
            fs::remove(copy, ec);
            return false;
        }

        step(3);
        SyncPath(copy, false);

        step(4);
        // rename(2) replaces the file in one step: <path> is the old file or
        // the new one, never missing and never half written.
        if (std::rename(copy.c_str(), path.c_str()) != 0) {
            fs::remove(copy, ec);
            return false;
        }

        step(5);
        SyncPath(DirectoryOf(path), true);
        return true;
    } catch (const std::exception&) {
        fs::remove(copy, ec);
        return false;
    }
}

}  // namespace tarno
