#include "store/default_dirs.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <vector>

#include "core/error.h"

namespace tarno {

namespace fs = std::filesystem;

namespace {

const char kSeparator[] = " = ";

std::string EnvOrEmpty(const char* name) {
  const char* v = std::getenv(name);
  return v ? std::string(v) : std::string();
}

std::string CurrentDirectory() {
  std::error_code ec;
  fs::path p = fs::current_path(ec);
  if (ec) return std::string();
  return p.string();
}

// Reads all lines of a text file, dropping a carriage return before each line end
// so that a file written with CR LF line ends reads the same.
bool ReadLines(const std::string& path, std::vector<std::string>& lines) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return false;
  std::string line;
  while (std::getline(in, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    lines.push_back(line);
  }
  return true;
}

void WriteLines(const std::string& path, const std::vector<std::string>& lines) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  if (!out) throw Error("Cannot write the directory file " + path);
  for (const auto& l : lines) out << l << '\n';
  out.flush();
  if (!out) throw Error("Cannot write the directory file " + path);
}

// The line of `key` among the first lines looked at, or -1.
int FindKey(const std::vector<std::string>& lines, const std::string& key) {
  const std::string prefix = key + kSeparator;
  const int n = std::min<int>(static_cast<int>(lines.size()), kDefaultDirectoriesMaxLines);
  for (int i = 0; i < n; ++i) {
    if (lines[i].compare(0, prefix.size(), prefix) == 0) return i;
  }
  return -1;
}

std::string DirectoryOf(const std::string& file) {
  fs::path p(file);
  std::string dir = p.parent_path().string();
  if (dir.empty()) dir = CurrentDirectory();
  return WithClosingSeparator(dir);
}

}  // namespace

std::string WithClosingSeparator(const std::string& directory) {
  if (directory.empty() || directory.back() == '/') return directory;
  return directory + '/';
}

std::string ConfigDirectory() {
  std::string dir = EnvOrEmpty("TARNO_CONFIG_DIR");
  if (dir.empty()) {
    std::string xdg = EnvOrEmpty("XDG_CONFIG_HOME");
    if (!xdg.empty()) {
      dir = WithClosingSeparator(xdg) + "tarno";
    } else {
      std::string home = EnvOrEmpty("HOME");
      if (home.empty()) home = CurrentDirectory();
      dir = WithClosingSeparator(home) + ".config/tarno";
    }
  }
  std::error_code ec;
  fs::create_directories(dir, ec);
  if (ec && !fs::is_directory(dir))
    throw Error("Cannot create the configuration directory " + dir + ": " + ec.message());
  return WithClosingSeparator(dir);
}

std::string DefaultDirectoriesFile() { return ConfigDirectory() + "TARNO.def"; }

std::string WindowSettingsFile() {
  if (EnvOrEmpty("TARNO_CONFIG_DIR").empty()) return {};
  return ConfigDirectory() + "TARNO2K.ini";
}

std::string DefaultDirectoriesIn(const std::string& defFile, const std::string& key,
                                 DirectoryMode mode, const std::string& currentDirectory) {
  std::vector<std::string> lines;
  const bool present = ReadLines(defFile, lines);

  if (mode == DirectoryMode::Read) {
    if (!present) {
      // A first run: start the memory with this key at the current directory.
      WriteLines(defFile, {key + kSeparator + currentDirectory});
      return WithClosingSeparator(currentDirectory);
    }
    const int i = FindKey(lines, key);
    if (i < 0) return DirectoryOf(defFile);
    std::string dir = lines[i].substr(key.size() + 3);
    if (dir.empty()) return DirectoryOf(defFile);
    return WithClosingSeparator(dir);
  }

  // Write mode: the line of the key is replaced, every other line stays as it is.
  const std::string entry = key + kSeparator + currentDirectory;
  const int i = FindKey(lines, key);
  if (i >= 0) {
    lines[i] = entry;
  } else if (static_cast<int>(lines.size()) < kDefaultDirectoriesMaxLines) {
    lines.push_back(entry);
  } else {
    // A file already at the limit: a line added at the end would never be found
    // again, so the new entry goes first.
    lines.insert(lines.begin(), entry);
  }
  WriteLines(defFile, lines);
  return WithClosingSeparator(currentDirectory);
}

std::string StartDirectoryIn(const std::string& defFile, const std::string& key,
                             const std::string& fallback) {
  std::vector<std::string> lines;
  if (ReadLines(defFile, lines)) {
    const int i = FindKey(lines, key);
    if (i >= 0 && lines[i].size() > key.size() + 3)
      return WithClosingSeparator(lines[i].substr(key.size() + 3));
  }
  return WithClosingSeparator(fallback);
}

std::string DefaultDirectories(const std::string& key, DirectoryMode mode) {
  return DefaultDirectoriesIn(DefaultDirectoriesFile(), key, mode, CurrentDirectory());
}

}  // namespace tarno
