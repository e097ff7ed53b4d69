#include "engine/files.h"

#include <system_error>
#include <vector>

#include "core/file_find.h"

namespace fs = std::filesystem;

namespace tarno::engine {

namespace {
char lowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }
}  // namespace

bool equalsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (lowerAscii(a[i]) != lowerAscii(b[i])) return false;
  return true;
}

std::optional<fs::path> findFileNoCase(const fs::path& dir, const std::string& name) {
  fs::path found = tarno::FindFileNoCase(dir, name);
  if (found.empty()) return std::nullopt;
  return found;
}

fs::path prepareOutputFile(const fs::path& dir, const std::string& name) {
  fs::path rel(name);
  fs::path where = rel.has_parent_path() ? dir / rel.parent_path() : dir;
  std::string leaf = rel.filename().string();
  std::error_code ec;
  for (const fs::path& other : tarno::FilesNamedNoCase(dir, name))
    if (other.filename() != leaf) fs::remove(other, ec);
  return where / leaf;
}

bool hasExtension(std::string_view name) {
  size_t slash = name.find_last_of("/\\");
  std::string_view leaf = slash == std::string_view::npos ? name : name.substr(slash + 1);
  size_t dot = leaf.rfind('.');
  return dot != std::string_view::npos && dot > 0 && dot + 1 < leaf.size();
}

std::string withDefaultExtension(std::string_view name, std::string_view ext) {
  if (hasExtension(name)) return std::string(name);
  return std::string(name) + std::string(ext);
}

namespace {
bool endsWithDat(const std::string& s) {
  return s.size() >= 4 && equalsNoCase(std::string_view(s).substr(s.size() - 4), ".dat");
}
}  // namespace

std::string commandFileName(const std::string& nameArg) {
  return endsWithDat(nameArg) ? nameArg : nameArg + ".DAT";
}

std::optional<fs::path> findCommandFile(const fs::path& workDir, const std::string& nameArg) {
  if (nameArg.empty()) return std::nullopt;
  fs::path given(nameArg);
  fs::path base = given.is_absolute() ? fs::path() : workDir;
  if (given.is_absolute()) {
    base = given.parent_path();
    given = given.filename();
  }
  return findFileNoCase(base, commandFileName(given.string()));
}

}  // namespace tarno::engine
