#include "solver/plot_files.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <sstream>

namespace tarno {

namespace pl = solver_files::plot_line;
namespace pf = solver_files::path_file;

PlotFileError::PlotFileError(const std::filesystem::path& file, int line, const std::string& what)
    : Error(file.string() + (line > 0 ? ", line " + std::to_string(line) : std::string()) + ": " +
                what,
            line == 0 ? error_number::kFileNotFound : error_number::kTypeMismatch),
      file_(file),
      line_(line) {}

namespace {

// A line reader that keeps the line number and drops a trailing CR.
class LineReader {
 public:
  explicit LineReader(const std::filesystem::path& file) : file_(file), in_(file) {}
  bool IsOpen() const { return static_cast<bool>(in_); }
  bool Next(std::string& line) {
    if (!std::getline(in_, line)) return false;
    ++number_;
    if (!line.empty() && line.back() == '\r') line.pop_back();
    return true;
  }
  int Number() const { return number_; }
  [[noreturn]] void Fail(const std::string& what) const { throw PlotFileError(file_, number_, what); }

 private:
  std::filesystem::path file_;
  std::ifstream in_;
  int number_ = 0;
};

bool IsBlankLine(const std::string& s) { return s.find_first_not_of(" \t") == std::string::npos; }

// Parses the whole of `text` (blanks around it allowed) as a number.
bool ParseNumber(const std::string& text, double& value) {
  const std::size_t b = text.find_first_not_of(" \t");
  if (b == std::string::npos) return false;
  const std::size_t e = text.find_last_not_of(" \t");
  const std::string t = text.substr(b, e - b + 1);
  char* end = nullptr;
  errno = 0;
  value = std::strtod(t.c_str(), &end);
  return end == t.c_str() + t.size() && errno != ERANGE;
}

std::vector<std::string> SplitBlanks(const std::string& s) {
  std::istringstream in(s);
  std::vector<std::string> out;
  std::string w;
  while (in >> w) out.push_back(w);
  return out;
}

// The field of `width` columns that starts at the one-based `column`.
double Column(const LineReader& r, const std::string& line, std::size_t column, std::size_t width,
              const char* name) {
  if (line.size() < column) r.Fail(std::string("no ") + name + " in column " + std::to_string(column) + ": \"" + line + "\"");
  double v = 0;
  if (!ParseNumber(line.substr(column - 1, width), v))
    r.Fail(std::string("bad ") + name + " in columns " + std::to_string(column) + " to " +
           std::to_string(column + width - 1) + ": \"" + line + "\"");
  return v;
}

bool StartsWith(const std::string& s, const char* prefix) { return s.rfind(prefix, 0) == 0; }

void ReadPair(LineReader& r, double& a, double& b, const char* what) {
  std::string line;
  if (!r.Next(line)) r.Fail(std::string("the file ends before the ") + what);
  const auto f = SplitBlanks(line);
  if (f.size() < 2 || !ParseNumber(f[0], a) || !ParseNumber(f[1], b))
    r.Fail(std::string("expected the ") + what + ", found \"" + line + "\"");
}

}  // namespace

GridRange ReadGridRange(const std::filesystem::path& file) {
  LineReader r(file);
  if (!r.IsOpen()) throw PlotFileError(file, 0, "cannot open the grid file");
  std::string line;
  for (int i = 0; i < solver_files::grid::kRangeLine; ++i) {
    if (!r.Next(line)) r.Fail("the grid file has fewer than five lines");
  }
  const auto f = SplitBlanks(line);
  GridRange g;
  if (f.size() < 2 || !ParseNumber(f[0], g.zlo) || !ParseNumber(f[1], g.zhi))
    r.Fail("expected the lowest and highest value, found \"" + line + "\"");
  return g;
}

SurferGrid ReadSurferGrid(const std::filesystem::path& file) {
  LineReader r(file);
  if (!r.IsOpen()) throw PlotFileError(file, 0, "cannot open the grid file");
  std::string line;
  if (!r.Next(line) || SplitBlanks(line) != std::vector<std::string>{solver_files::grid::kTag})
    r.Fail("a text grid begins with \"DSAA\", found \"" + line + "\"");
  SurferGrid g;
  double nx = 0, ny = 0;
  ReadPair(r, nx, ny, "numbers of columns and rows");
  if (nx < 2 || ny < 2 || nx != static_cast<int>(nx) || ny != static_cast<int>(ny) || nx * ny > 1e8)
    r.Fail("bad numbers of columns and rows: " + line);
  g.nx = static_cast<int>(nx);
  g.ny = static_cast<int>(ny);
  ReadPair(r, g.xlo, g.xhi, "X range");
  ReadPair(r, g.ylo, g.yhi, "Y range");
  ReadPair(r, g.zlo, g.zhi, "value range");
  const std::size_t n = static_cast<std::size_t>(g.nx) * g.ny;
  g.z.reserve(n);
  while (r.Next(line)) {
    for (const auto& w : SplitBlanks(line)) {
      double v = 0;
      if (!ParseNumber(w, v)) r.Fail("bad grid value \"" + w + "\"");
      if (g.z.size() == n) r.Fail("more than " + std::to_string(n) + " grid values");
      g.z.push_back(v);
    }
  }
  if (g.z.size() != n)
    r.Fail("the grid has " + std::to_string(g.z.size()) + " values, expected " + std::to_string(n));
  return g;
}

std::vector<ContourPolyline> ReadContourFile(const std::filesystem::path& file) {
  std::vector<ContourPolyline> lines;
  if (!std::filesystem::exists(file)) return lines;
  LineReader r(file);
  if (!r.IsOpen()) throw PlotFileError(file, 0, "cannot open the contour file");
  std::string line;
  while (r.Next(line)) {
    if (IsBlankLine(line)) continue;
    if (StartsWith(line, solver_files::contour_file::kLevel)) {
      ContourPolyline c;
      if (!ParseNumber(line.substr(solver_files::contour_file::kLevelColumn - 1), c.level)) r.Fail("bad level in \"" + line + "\"");
      lines.push_back(std::move(c));
      continue;
    }
    if (lines.empty()) r.Fail("a point before the first LEVEL line: \"" + line + "\"");
    PlotPoint p;
    p.x = Column(r, line, pl::kXColumn, pl::kWidth, "X");
    p.y = Column(r, line, pl::kYColumn, pl::kWidth, "Y");
    lines.back().points.push_back(p);
  }
  return lines;
}

std::vector<Pathline> ReadPathFile(const std::filesystem::path& file) {
  std::vector<Pathline> paths;
  if (!std::filesystem::exists(file)) return paths;
  LineReader r(file);
  if (!r.IsOpen()) throw PlotFileError(file, 0, "cannot open the pathline file");
  std::string line;
  std::string label;
  bool open = false;
  int openedAt = 0;
  while (r.Next(line)) {
    if (IsBlankLine(line)) continue;
    if (StartsWith(line, pf::kLabel)) {
      if (open) r.Fail("LABEL inside the path opened on line " + std::to_string(openedAt));
      const std::size_t b = line.find_first_not_of(' ', std::char_traits<char>::length(pf::kLabel));
      label = b == std::string::npos ? "" : line.substr(b);
      continue;
    }
    if (StartsWith(line, pf::kStartPrefix)) {
      if (open) r.Fail("a path opened inside the path opened on line " + std::to_string(openedAt));
      open = true;
      openedAt = r.Number();
      paths.push_back(Pathline{label, {}});
      label.clear();
      continue;
    }
    if (StartsWith(line, pf::kEnd)) {
      if (!open) r.Fail("END without a path");
      open = false;
      continue;
    }
    if (!open) r.Fail("a point outside a path: \"" + line + "\"");
    PathPoint p;
    p.x = Column(r, line, pl::kXColumn, pl::kWidth, "X");
    p.y = Column(r, line, pl::kYColumn, pl::kWidth, "Y");
    p.value1 = Column(r, line, pl::kValue1Column, pl::kWidth, "first value");
    p.value2 = Column(r, line, pl::kValue2Column, pl::kWidth, "second value");
    p.value3 = Column(r, line, pl::kValue3Column, pl::kWidth, "third value");
    if (paths.back().points.size() < kMaxPathPoints) paths.back().points.push_back(p);
  }
  if (open) r.Fail("the path opened on line " + std::to_string(openedAt) + " has no END");
  return paths;
}

std::vector<TicMark> ReadTicMarkFile(const std::filesystem::path& file, bool withDirection) {
  std::vector<TicMark> marks;
  if (!std::filesystem::exists(file)) return marks;
  LineReader r(file);
  if (!r.IsOpen()) throw PlotFileError(file, 0, "cannot open the mark file");
  std::string line;
  const std::size_t wanted = withDirection ? 3 : 2;
  while (r.Next(line)) {
    if (IsBlankLine(line)) continue;
    const auto f = SplitBlanks(line);
    TicMark m;
    double direction = 0.0;
    if (f.size() < wanted || !ParseNumber(f[0], m.x) || !ParseNumber(f[1], m.y) ||
        (withDirection && !ParseNumber(f[2], direction)))
      r.Fail(std::string("expected X, Y") + (withDirection ? " and the direction" : "") +
             ", found \"" + line + "\"");
    if (withDirection) {
      if (direction != 1.0 && direction != -1.0)
        r.Fail("the direction of a mark is 1 or -1, found \"" + f[2] + "\"");
      m.direction = static_cast<int>(direction);
    }
    marks.push_back(m);
  }
  return marks;
}

}  // namespace tarno

