// Command reader: the inhomogeneity menu: transmissivity polygons, walls (slurry) and lakes, and
// their vertices.
#include "engine/command_reader.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <string>
#include <utility>

namespace tarno::engine::reader {

bool Reader::readPolygonCommand(const std::string& w) {
  PolygonInput p;
  p.line = lineNo_;
  size_t count = 0;
  if (w == "transmissivity") {
    p.kind = PolygonKind::Transmissivity;
    count = 5;
  } else if (w == "slurry") {
    if (items_.size() < 2) {
      report("\"slurry\" needs its kind (open, closed, outside or inside); line skipped");
      polygon_.reset();
      return true;
    }
    std::string kind = lower(items_[1]);
    if (kind == "open") p.kind = PolygonKind::WallOpen;
    else if (kind == "closed") p.kind = PolygonKind::WallClosed;
    else if (kind == "outside") p.kind = PolygonKind::WallOutside;
    else if (kind == "inside") p.kind = PolygonKind::WallInside;
    else {
      report("unknown wall kind \"" + std::string(items_[1]) + "\" (open, closed, outside or inside); line and its vertices skipped");
      polygon_.reset();
      return true;
    }
    count = 4;
  } else if (w == "lake") {
    p.kind = PolygonKind::Lake;
    count = 4;
  } else {
    return false;
  }
  size_t first = p.kind == PolygonKind::Transmissivity || p.kind == PolygonKind::Lake ? 1 : 2;
  p.params.resize(count);
  if (!numbers(first, count, p.params.data())) {
    report(quoted(items_[0]) + " needs " + std::to_string(count) +
           " numbers and a label; line and its vertices skipped");
    polygon_.reset();
    return true;
  }
  size_t after = first + count;
  if (p.kind == PolygonKind::Lake && items_.size() > after + 1) {
    // Lake: stage table, then the label.
    p.label = std::string(items_.back());
    const char* b = items_[after].data();
    const char* e = items_[items_.size() - 2].data() + items_[items_.size() - 2].size();
    p.table = std::string(b, static_cast<size_t>(e - b));
  } else {
    p.label = rest(after);
  }
  elements_.polygons.push_back(std::move(p));
  polygon_ = elements_.polygons.size() - 1;
  return true;
}

void Reader::readVertex() {
  if (!polygon_) {
    report("vertex line in the inhomogeneity menu without an open transmissivity, slurry or Lake line; line skipped");
    return;
  }
  double v[2];
  if (!numbers(0, 2, v)) return unreadable("x y label");
  elements_.polygons[*polygon_].vertices.push_back(VertexInput{lineNo_, v[0], v[1], rest(2)});
}

}  // namespace tarno::engine::reader
