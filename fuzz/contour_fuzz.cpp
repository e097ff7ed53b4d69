// libFuzzer target for the contour program's grid reader and, for the grids it
// accepts, the contouring and the contour file: any bytes must read without a
// crash, a hang or a sanitizer report, and what comes out must be consistent.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "programs/contour/contour.h"
#include "programs/contour/ctr_file.h"
#include "programs/contour/grid.h"

using namespace tarno::contour;

namespace {

void check(const Grid& g, double level) {
  Contourer c(g);
  std::vector<Polyline> lines = c.level(level);
  for (const Polyline& p : lines) {
    if (p.level != level) std::abort();
    if (p.points.size() < 2) std::abort();
    if (p.closed && (p.points.size() < 3 || !(p.points.front() == p.points.back()))) std::abort();
    for (std::size_t k = 0; k < p.points.size(); ++k) {
      const Point& q = p.points[k];
      if (!(q.x >= g.xlo && q.x <= g.xhi && q.y >= g.ylo && q.y <= g.yhi)) std::abort();
      if (k > 0 && q == p.points[k - 1]) std::abort();
    }
  }
  std::string text;
  appendContourText(lines, text);
  // Every line is a LEVEL line (19 characters) or a point line (34), each
  // ending in CR LF.
  std::size_t pos = 0;
  while (pos < text.size()) {
    std::size_t nl = text.find("\r\n", pos);
    if (nl == std::string::npos) std::abort();
    std::size_t len = nl - pos;
    bool level = text.compare(pos, 5, "LEVEL") == 0;
    if (len != (level ? 19u : 34u)) std::abort();
    pos = nl + 2;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);
  Grid g;
  try {
    g = parseGrid(text, "FUZZ.GRD");
  } catch (const GridError& e) {
    if (e.line() < 0) std::abort();
    return 0;
  }
  if (g.nx < 2 || g.ny < 2 || g.z.size() != static_cast<std::size_t>(g.nx) * g.ny) std::abort();
  if (!(g.xlo < g.xhi) || !(g.ylo < g.yhi)) std::abort();
  // Levels that meet the grid's own values exactly, one between, and the
  // header's range.
  check(g, g.z.front());
  check(g, g.z[g.z.size() / 2]);
  check(g, 0.5 * g.z.front() + 0.5 * g.z.back());
  check(g, g.zlo);
  check(g, g.zhi);
  return 0;
}
