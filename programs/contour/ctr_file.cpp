#include "programs/contour/ctr_file.h"

#include <charconv>
#include <cstdio>
#include <cstring>

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

void appendContourText(const std::vector<Polyline>& lines, std::string& out) {
  constexpr std::size_t kPointLine = 6 + 14 + 14 + 2;
  std::vector<char> points;
  for (const Polyline& p : lines) {
    points.clear();
    std::size_t count = 0;
    for (const Point& q : p.points) {
      char line[kPointLine];
      std::memset(line, ' ', 6);
      format14E(q.x, line + 6);
      format14E(q.y, line + 20);
      line[34] = '\r';
      line[35] = '\n';
      if (count > 0 && std::memcmp(points.data() + points.size() - kPointLine, line, kPointLine) == 0) continue;
      points.insert(points.end(), line, line + kPointLine);
      ++count;
    }
    if (count < 2) continue;
    char head[5 + 14 + 2] = {'L', 'E', 'V', 'E', 'L'};
    format14E(p.level, head + 5);
    head[19] = '\r';
    head[20] = '\n';
    out.append(head, sizeof head);
    out.append(points.data(), points.size());
  }
}

}  // namespace tarno::contour
