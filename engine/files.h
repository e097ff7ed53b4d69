#pragma once
// File names as the solver meets them: the front end writes names in any case
// (ERROR.LOG and error.log are one file to it), so every file the solver reads
// is looked up case-insensitively in its directory, an exact spelling first.

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tarno::engine {

// ASCII case-insensitive comparison of two names.
bool equalsNoCase(std::string_view a, std::string_view b);

// Finds `name` in `dir`: the exact spelling when that file exists, otherwise the
// first entry (in sorted order, so the choice is stable) whose name differs only
// in case. `name` may carry directory parts; only its last part is matched
// loosely. Returns nothing when no such regular file exists.
std::optional<std::filesystem::path> findFileNoCase(const std::filesystem::path& dir,
                                                    const std::string& name);

// The path a new output file gets: `dir`/`name` in the spelling given. Files in
// `dir` that differ from it only in case are removed first, so that afterwards
// exactly one spelling of the name exists and a reader that ignores case cannot
// pick up a stale file.
std::filesystem::path prepareOutputFile(const std::filesystem::path& dir, const std::string& name);

// True when the last part of `name` has an extension (a dot after its first character).
bool hasExtension(std::string_view name);

// `name` with the upper-case extension `ext` (".SOL", ".XTR", ...) appended,
// unless the name already carries an extension, in which case it is kept as given.
std::string withDefaultExtension(std::string_view name, std::string_view ext);

// Resolves the `<name>` argument of the program: a name ending in .DAT (any case)
// is the command file itself; any other name is a base name whose "<name>.DAT" is
// read. Returns the path found, or nothing when no such file exists.
std::optional<std::filesystem::path> findCommandFile(const std::filesystem::path& workDir,
                                                     const std::string& nameArg);

// The name the command file is looked for under (for messages when it is missing).
std::string commandFileName(const std::string& nameArg);

}  // namespace tarno::engine
