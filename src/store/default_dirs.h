// The directory memory of the file dialogs.
//
// Each file dialog of the program starts in the directory where the user last
// found a file of its kind. The directories are kept in a small text file,
// TARNO.def, one entry a line in the form "<key> = <directory>". The file lives in
// the user's configuration directory: $TARNO_CONFIG_DIR if that is set (the tests
// use it), else $XDG_CONFIG_HOME/tarno, else ~/.config/tarno.
//
// Directories are returned with a closing '/' (the directory separator of this
// platform).
#pragma once

#include <string>

namespace tarno {

enum class DirectoryMode { Read, Write };

// The keys in use by the program.
inline constexpr const char* kOpenProjectPathKey = "Open Project Path";
inline constexpr const char* kSelectBBMPathKey = "Default select BBM path";

// At most this many lines of TARNO.def are looked at.
inline constexpr int kDefaultDirectoriesMaxLines = 50;

// The directory that holds TARNO.def (created if missing), with a closing '/'.
std::string ConfigDirectory();

// The full path of TARNO.def.
std::string DefaultDirectoriesFile();

// The file of the window's per-user settings (its size, the toolbar, the Welcome
// box, the GUI options) when $TARNO_CONFIG_DIR names a configuration directory:
// "TARNO2K.ini" there. Empty without it, and the platform's per-user store holds
// them. A run with a configuration directory of its own so starts from that
// directory's settings, not from what another run left in the shared store.
std::string WindowSettingsFile();

// Read mode: the directory stored for `key`. A missing TARNO.def is created with
// one line holding the key and the process's current directory, and that directory
// is the answer. A key that is not found among the first 50 lines answers the
// directory of TARNO.def itself.
// Write mode: stores the process's current directory for `key` (the caller makes
// the directory current first) and returns it.
// Throws tarno::Error naming the file when TARNO.def cannot be read or written.
std::string DefaultDirectories(const std::string& key, DirectoryMode mode);

// The same on an explicit file and current directory; DefaultDirectories calls it
// with TARNO.def and the process's current directory.
std::string DefaultDirectoriesIn(const std::string& defFile, const std::string& key,
                                 DirectoryMode mode, const std::string& currentDirectory);

// Where a file dialog of `key` starts: the directory stored for it in `defFile`, else
// `fallback` (the project's folder, say) rather than the folder of TARNO.def, which
// holds no files of the user's. Reads only: a missing file or key is not written.
std::string StartDirectoryIn(const std::string& defFile, const std::string& key,
                             const std::string& fallback);

// Adds a closing '/' to a directory that lacks one (an empty text stays empty).
std::string WithClosingSeparator(const std::string& directory);

}  // namespace tarno
