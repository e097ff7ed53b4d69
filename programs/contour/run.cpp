#include "programs/contour/run.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ostream>
#include <system_error>

#include "programs/contour/contour.h"
#include "programs/contour/ctr_file.h"
#include "programs/contour/grid.h"
#include "programs/contour/levels.h"

namespace fs = std::filesystem;

namespace tarno::contour {

namespace {

char lowerAscii(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

bool equalsNoCase(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return false;
  for (std::size_t k = 0; k < a.size(); ++k)
    if (lowerAscii(a[k]) != lowerAscii(b[k])) return false;
  return true;
}

constexpr const char* kUsage = "usage: contour <base> <min> <interval> <max>";

// Writes `text` to a new temporary file beside `target` and renames it into
// place. On failure the temporary is removed and the message returned.
std::optional<std::string> writeReplacing(const fs::path& target, const std::string& text) {
  std::string tmpl = target.string() + ".XXXXXX";
  int fd = mkstemp(tmpl.data());
  if (fd < 0) return "cannot create a file beside \"" + target.string() + "\": " + std::strerror(errno);
  std::size_t done = 0;
  while (done < text.size()) {
    ssize_t n = ::write(fd, text.data() + done, text.size() - done);
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) {
      std::string why = std::strerror(n < 0 ? errno : EIO);
      ::close(fd);
      ::unlink(tmpl.c_str());
      return "cannot write \"" + target.string() + "\": " + why;
    }
    done += static_cast<std::size_t>(n);
  }
  if (::close(fd) != 0) {
    std::string why = std::strerror(errno);
    ::unlink(tmpl.c_str());
    return "cannot write \"" + target.string() + "\": " + why;
  }
  // mkstemp creates the file for its owner only; a contour file is an
  // ordinary file.
  mode_t mask = ::umask(0);
  ::umask(mask);
  ::chmod(tmpl.c_str(), 0666 & ~mask);
  std::error_code ec;
  fs::rename(tmpl, target, ec);
  if (ec) {
    fs::remove(tmpl, ec);
    return "cannot write \"" + target.string() + "\": " + ec.message();
  }
  return std::nullopt;
}

// Removes the files beside `target` whose names differ from its name only in
// case, so that a reader that ignores case cannot pick up a stale one.
void removeCaseVariants(const fs::path& target) {
  const fs::path dir = target.has_parent_path() ? target.parent_path() : fs::path(".");
  const std::string leaf = target.filename().string();
  std::error_code ec;
  std::vector<fs::path> stale;
  fs::directory_iterator it(dir, ec), end;
  for (std::size_t n = 0; !ec && it != end && n < 1000000; it.increment(ec), ++n) {
    std::string entry = it->path().filename().string();
    if (entry != leaf && equalsNoCase(entry, leaf) && fs::is_regular_file(it->path(), ec))
      stale.push_back(it->path());
  }
  for (const auto& p : stale) fs::remove(p, ec);
}

bool readArgument(const std::string& text, double& value) { return parseNumber(text, value) && std::isfinite(value); }

}  // namespace

std::optional<fs::path> findFileNoCase(const fs::path& dir, const std::string& name) {
  if (name.empty()) return std::nullopt;
  fs::path rel(name);
  fs::path where = rel.has_parent_path() ? dir / rel.parent_path() : dir;
  const std::string leaf = rel.filename().string();
  if (leaf.empty()) return std::nullopt;
  std::error_code ec;
  fs::path exact = where / leaf;
  if (fs::is_regular_file(exact, ec)) return exact;
  std::vector<fs::path> found;
  fs::directory_iterator it(where.empty() ? fs::path(".") : where, ec), end;
  for (std::size_t n = 0; !ec && it != end && n < 1000000; it.increment(ec), ++n) {
    std::string entry = it->path().filename().string();
    if (equalsNoCase(entry, leaf) && fs::is_regular_file(it->path(), ec)) found.push_back(where / entry);
  }
  if (found.empty()) return std::nullopt;
  return *std::min_element(found.begin(), found.end());
}

int runContour(const std::vector<std::string>& args, const fs::path& workDir, std::ostream& err) {
  if (args.size() != 4) {
    err << "contour: expected 4 arguments, found " << args.size() << "\ncontour: " << kUsage << "\n";
    return kExitUsage;
  }
  const std::string& base = args[0];
  if (base.empty()) {
    err << "contour: the base name is empty\ncontour: " << kUsage << "\n";
    return kExitUsage;
  }
  static const char* const kNames[3] = {"minimum", "interval", "maximum"};
  double v[3];
  for (int k = 0; k < 3; ++k) {
    if (!readArgument(args[1 + k], v[k])) {
      err << "contour: the " << kNames[k] << " is not a number: " << quoteToken(args[1 + k]) << "\ncontour: "
          << kUsage << "\n";
      return kExitUsage;
    }
  }
  std::vector<double> levels;
  try {
    levels = makeLevels(v[0], v[1], v[2]);
  } catch (const LevelError& e) {
    err << "contour: " << e.what() << "\n";
    return kExitUsage;
  }

  const std::string gridName = base + ".GRD";
  std::optional<fs::path> gridFile = findFileNoCase(workDir, gridName);
  if (!gridFile) {
    err << "contour: " << gridName << ": no such grid file in " << workDir.string() << "\n";
    return kExitFileError;
  }
  Grid grid;
  try {
    grid = readGridFile(*gridFile);
  } catch (const GridError& e) {
    // Name the file as the user knows it, relative to the working directory.
    std::string where = gridFile->lexically_relative(workDir).string();
    if (where.empty() || where.rfind("..", 0) == 0) where = gridFile->string();
    err << "contour: " << GridError::describe(where, e.line(), e.detail()) << "\n";
    return kExitFileError;
  }

  std::vector<Polyline> lines = contourGrid(grid, levels);
  std::string text;
  appendContourText(lines, text);

  const fs::path target = fs::path(workDir) / (base + ".CTR");
  if (auto problem = writeReplacing(target, text)) {
    err << "contour: " << *problem << "\n";
    return kExitFileError;
  }
  removeCaseVariants(target);
  return kExitOk;
}

}  // namespace tarno::contour
