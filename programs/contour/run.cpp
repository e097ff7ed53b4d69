#include "programs/contour/run.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <ostream>
#include <system_error>

#include "core/file_find.h"
#include "programs/contour/contour.h"
#include "programs/contour/ctr_file.h"
#include "programs/contour/grid.h"
#include "programs/contour/levels.h"

namespace fs = std::filesystem;

namespace tarno::contour {

namespace {

constexpr const char* kUsage = "usage: contour <base> <min> <interval> <max>";

// A new file beside `target` that takes its place on commit(); removed when
// it goes out of scope uncommitted, so a failed run leaves no file behind and
// an older `target` as it was.
class ReplacingFile {
 public:
  explicit ReplacingFile(const fs::path& target) : target_(target), temp_(target.string() + ".XXXXXX") {
    fd_ = mkstemp(temp_.data());
    if (fd_ < 0) fail("cannot create a file beside \"" + target_.string() + "\": " + std::strerror(errno));
  }
  ReplacingFile(const ReplacingFile&) = delete;
  ReplacingFile& operator=(const ReplacingFile&) = delete;
  ~ReplacingFile() {
    if (fd_ >= 0) ::close(fd_);
    if (!committed_ && !temp_.empty()) ::unlink(temp_.c_str());
  }

  // The first failure, empty while there is none.
  const std::string& error() const { return error_; }

  void write(const std::string& text) {
    std::size_t done = 0;
    while (error_.empty() && done < text.size()) {
      ssize_t n = ::write(fd_, text.data() + done, text.size() - done);
      if (n < 0 && errno == EINTR) continue;
      if (n <= 0) fail("cannot write \"" + target_.string() + "\": " + std::strerror(n < 0 ? errno : EIO));
      else done += static_cast<std::size_t>(n);
    }
  }

  bool commit() {
    if (!error_.empty()) return false;
    // mkstemp creates the file for its owner only; a contour file is an
    // ordinary file.
    mode_t mask = ::umask(0);
    ::umask(mask);
    ::fchmod(fd_, 0666 & ~mask);
    int rc = ::close(fd_);
    fd_ = -1;
    if (rc != 0) {
      fail("cannot write \"" + target_.string() + "\": " + std::strerror(errno));
      return false;
    }
    std::error_code ec;
    fs::rename(temp_, target_, ec);
    if (ec) {
      fail("cannot write \"" + target_.string() + "\": " + ec.message());
      return false;
    }
    committed_ = true;
    return true;
  }

 private:
  void fail(const std::string& why) {
    if (error_.empty()) error_ = why;
  }

  fs::path target_;
  std::string temp_;
  int fd_ = -1;
  bool committed_ = false;
  std::string error_;
};

// Removes the files beside `target` whose names differ from its name only in
// case, so that a reader that ignores case cannot pick up a stale one.
void removeCaseVariants(const fs::path& target) {
  const fs::path dir = target.has_parent_path() ? target.parent_path() : fs::path(".");
  const fs::path leaf = target.filename();
  std::error_code ec;
  for (const fs::path& other : FilesNamedNoCase(dir, leaf.string()))
    if (other.filename() != leaf) fs::remove(other, ec);
}

bool readArgument(const std::string& text, double& value) { return parseNumber(text, value) && std::isfinite(value); }

}  // namespace

std::optional<fs::path> findFileNoCase(const fs::path& dir, const std::string& name) {
  fs::path found = FindFileNoCase(dir, name);
  if (found.empty()) return std::nullopt;
  return found;
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

  const fs::path target = fs::path(workDir) / (base + ".CTR");
  ReplacingFile out(target);
  if (!out.error().empty()) {
    err << "contour: " << out.error() << "\n";
    return kExitFileError;
  }
  // The levels are contoured and formatted in parallel and written in their
  // order as they come, so that only the levels in flight are held in memory.
  const int n = static_cast<int>(levels.size());
  std::exception_ptr failure;
  std::atomic<bool> failed{false};
  auto keep = [&failure, &failed] {
#pragma omp critical(contour_run_failure)
    if (!failure) failure = std::current_exception();
    failed = true;
  };
#pragma omp parallel
  {
    std::optional<Contourer> contourer;
    try {
      contourer.emplace(grid);
    } catch (...) {
      keep();
    }
#pragma omp for ordered schedule(dynamic, 1)
    for (int k = 0; k < n; ++k) {
      std::string text;
      if (contourer) {
        try {
          appendContourText(contourer->level(levels[k]), text);
        } catch (...) {
          keep();
        }
      }
#pragma omp ordered
      if (!failed && out.error().empty()) out.write(text);
    }
  }
  if (failure) std::rethrow_exception(failure);  // out of memory: main reports it
  if (!out.commit()) {
    err << "contour: " << out.error() << "\n";
    return kExitFileError;
  }
  removeCaseVariants(target);
  return kExitOk;
}

}  // namespace tarno::contour
