// Files found by name without regard to the case of its letters.
//
// The solver and the contourer were written for a file system that ignores case, and
// project folders carried over from one hold names such as "MODEL.SOL" and
// "model.xtr" side by side with what a new run writes. Every lookup of a run file by
// name goes through here, so that all of them choose the same file.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tarno {

// The regular file called `name` in `directory`, its letters in any case: the exact
// spelling when there is such a file, otherwise the first of the other spellings in
// byte order (so that the choice does not depend on the order of the folder). `name`
// may hold a sub-folder ("sub/model.dat"); the sub-folder is taken as spelled. Empty
// when there is none, and for an empty name.
std::filesystem::path FindFileNoCase(const std::filesystem::path& directory, std::string_view name);

// Every regular file of `directory` whose name equals `name` with case ignored, the
// exact spelling included, in byte order. `name` may hold a sub-folder as above.
std::vector<std::filesystem::path> FilesNamedNoCase(const std::filesystem::path& directory,
                                                    std::string_view name);

}  // namespace tarno
