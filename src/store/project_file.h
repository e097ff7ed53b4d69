#pragma once
// Recognising what lies at a project path before it is opened, and the safe
// compaction of a project file on closing.
//
// ProbeProjectFile does not modify the file: it reads the first bytes, opens
// the file read-only with a short busy timeout, runs `pragma quick_check`
// and reads the version. The one exception is a journal left by a write that
// was interrupted: it is rolled back, as any open of the file would do.

#include <filesystem>
#include <functional>
#include <string>

namespace tarno {

enum class ProjectFileState {
    Project,             // a project file; version holds its ProjectVersion
    Missing,             // nothing at the path
    MissingButCompacted, // nothing at the path, but <path>.compress is a
                         // complete project left by an interrupted compaction
    NotReadable,         // no permission, a directory, or an I/O error
    Locked,              // another program holds a write lock on it
    Empty,               // a file of zero bytes
    JetDatabase,         // a database of the earlier Windows program
    NotSqlite,           // some other kind of file
    NotProject,          // an SQLite database without a Project table
    Corrupt,             // damaged or truncated database
};

struct ProjectFileProbe {
    ProjectFileState state = ProjectFileState::Missing;
    int version = 0;        // only for Project (and MissingButCompacted)
    std::string detail;     // the engine's text where there is one
};

ProjectFileProbe ProbeProjectFile(const std::filesystem::path& path);

// A message for the user naming the file, in plain words, for every state
// other than Project (for Project it says the file is a project of its
// version). Titles for a message box come from ProbeTitle.
std::string ProbeMessage(const std::filesystem::path& path, const ProjectFileProbe& probe);
std::string ProbeTitle(const ProjectFileProbe& probe);

// The path of the compacted copy: <path>.compress.
std::filesystem::path CompressedCopyPath(const std::filesystem::path& path);

// Moves a complete <path>.compress back to <path> when <path> is missing
// (the state MissingButCompacted). Returns true when it did.
bool RestoreCompactedCopy(const std::filesystem::path& path);

// Compacts the project file at `path` safely:
//   1. remove any <path>.compress (errors ignored);
//   2. write the compacted copy to <path>.compress (VACUUM INTO);
//   3. flush it to disk;
//   4. rename it over <path> (atomic);
//   5. flush the directory.
// At every moment a complete project stands at <path>. Does nothing for an
// empty path. Returns false (leaving <path> untouched) when compaction fails.
// `stepHook`, if given, is called with the step number 1..5 before each
// step; tests use it to interrupt the compaction.
bool CompactProject(const std::filesystem::path& path,
                    const std::function<void(int step)>& stepHook = {});

}  // namespace tarno
