#include "core/file_find.h"

#include <algorithm>
#include <system_error>

namespace tarno {

namespace fs = std::filesystem;

namespace {

char LowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

// A walk of a folder stops here: a folder with a million entries is no project folder.
constexpr std::size_t kMaxEntries = 1000000;

// Equal with the case of the ASCII letters ignored.
bool SameNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (LowerAscii(a[i]) != LowerAscii(b[i])) return false;
  }
  return true;
}

}  // namespace

std::vector<fs::path> FilesNamedNoCase(const fs::path& directory, std::string_view name) {
  std::vector<fs::path> found;
  if (name.empty()) return found;
  const fs::path relative{std::string(name)};
  const std::string leaf = relative.filename().string();
  if (leaf.empty()) return found;
  const fs::path where =
      relative.has_parent_path() ? directory / relative.parent_path() : directory;
  std::error_code ec;
  fs::directory_iterator it(where.empty() ? fs::path(".") : where, ec), end;
  for (std::size_t n = 0; !ec && it != end && n < kMaxEntries; it.increment(ec), ++n) {
    const std::string entry = it->path().filename().string();
    std::error_code fileEc;
    if (SameNoCase(entry, leaf) && it->is_regular_file(fileEc)) found.push_back(where / entry);
  }
  std::sort(found.begin(), found.end());
  return found;
}

fs::path FindFileNoCase(const fs::path& directory, std::string_view name) {
  if (name.empty()) return {};
  const fs::path relative{std::string(name)};
  if (relative.filename().empty()) return {};
  std::error_code ec;
  const fs::path exact = directory / relative;
  if (fs::is_regular_file(exact, ec)) return exact;
  const std::vector<fs::path> found = FilesNamedNoCase(directory, name);
  return found.empty() ? fs::path() : found.front();
}

}  // namespace tarno
