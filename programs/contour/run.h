// The contour program as a whole: contour <base> <min> <interval> <max>.
#pragma once

#include <filesystem>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

namespace tarno::contour {

// Exit statuses.
inline constexpr int kExitOk = 0;
inline constexpr int kExitFileError = 1;  // the grid file missing or malformed, the output not writable
inline constexpr int kExitUsage = 2;      // wrong arguments or levels

// Finds `name` in `dir`: the exact spelling when that file exists, otherwise
// the first (in sorted order) whose last part differs from it only in ASCII
// case. `name` may carry directory parts; only its last part is matched
// loosely.
std::optional<std::filesystem::path> findFileNoCase(const std::filesystem::path& dir, const std::string& name);

// Reads <base>.GRD from `workDir`, contours it at the levels of the arguments
// and writes <base>.CTR there through a temporary file renamed into place.
// Messages go to `err`, each line beginning "contour: ". Returns the exit status;
// after any failure no .CTR has been written (an existing one is left as it
// was).
int runContour(const std::vector<std::string>& args, const std::filesystem::path& workDir, std::ostream& err);

}  // namespace tarno::contour
