#include "programs/contour/ctr_file.h"

#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>

#include "core/solver_files.h"

namespace tarno::contour {

void format14E(double v, char* out) {
  // to_chars gives the same correctly rounded digits as printf, many times
  // faster; only the exponent letter and the right alignment differ.
  char buf[32];
  auto [end, ec] = std::to_chars(buf, buf + sizeof buf, v, std::chars_format::scientific, 6);
  std::size_t len = ec == std::errc() ? static_cast<std::size_t>(end - buf) : 0;
  if (len == 0 || len > 14) {
    char tmp[64];
    int n = std::snprintf(tmp, sizeof tmp, "%14.6E", v);
    std::memcpy(out, tmp + (n > 14 ? n - 14 : 0), 14);
    return;
  }
  for (std::size_t k = 0; k < len; ++k)
    if (buf[k] == 'e') buf[k] = 'E';
  std::memset(out, ' ', 14 - len);
  std::memcpy(out + (14 - len), buf, len);
}

namespace pl = solver_files::plot_line;
static_assert(pl::kWidth == 14, "format14E writes the 14 columns of a field");

void appendContourText(const std::vector<Polyline>& lines, std::string& out) {
  constexpr std::size_t kX = pl::kXColumn - 1;
  constexpr std::size_t kY = pl::kYColumn - 1;
  constexpr std::size_t kPointLine = kY + pl::kWidth + 2;
  std::vector<char> points;
  for (const Polyline& p : lines) {
    points.clear();
    std::size_t count = 0;
    for (const Point& q : p.points) {
      char line[kPointLine];
      std::memset(line, ' ', kX);
      format14E(q.x, line + kX);
      format14E(q.y, line + kY);
      line[kPointLine - 2] = '\r';
      line[kPointLine - 1] = '\n';
      if (count > 0 && std::memcmp(points.data() + points.size() - kPointLine, line, kPointLine) == 0) continue;
      points.insert(points.end(), line, line + kPointLine);
      ++count;
    }
    if (count < 2) continue;
    // "LEVEL", the level from its column, CR LF.
    constexpr std::size_t kLevelAt = solver_files::contour_file::kLevelColumn - 1;
    static_assert(kLevelAt == std::char_traits<char>::length(solver_files::contour_file::kLevel));
    char head[kLevelAt + pl::kWidth + 2];
    std::memcpy(head, solver_files::contour_file::kLevel, kLevelAt);
    format14E(p.level, head + kLevelAt);
    head[kLevelAt + pl::kWidth] = '\r';
    head[kLevelAt + pl::kWidth + 1] = '\n';
    out.append(head, sizeof head);
    out.append(points.data(), points.size());
  }
}

}  // namespace tarno::contour
