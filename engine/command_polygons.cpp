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
  // Transmissivity: K B A N P; walls: K T P Bw; lake: K P E R (+ stage table).
  PolygonKind kind = PolygonKind::Inhomogeneity;
  WallKind wallKind = WallKind::Open;
  size_t count = 0;
  if (w == "transmissivity") {
    count = 5;
  } else if (w == "slurry") {
    if (items_.size() < 2) {
      report("\"slurry\" needs its kind (open, closed, outside or inside); line skipped");
      polygon_.reset();
      return true;
    }
    std::string word = lower(items_[1]);
    if (word == "open") wallKind = WallKind::Open;
    else if (word == "closed") wallKind = WallKind::Closed;
    else if (word == "outside") wallKind = WallKind::Outside;
    else if (word == "inside") wallKind = WallKind::Inside;
    else {
      report("unknown wall kind \"" + std::string(items_[1]) + "\" (open, closed, outside or inside); line and its vertices skipped");
      polygon_.reset();
      return true;
    }
    kind = PolygonKind::Wall;
    count = 4;
  } else if (w == "lake") {
    kind = PolygonKind::Lake;
    count = 4;
  } else {
    return false;
  }
  size_t first = kind == PolygonKind::Wall ? 2 : 1;
  double v[5];
  if (!numbers(first, count, v)) {
    report(quoted(items_[0]) + " needs " + std::to_string(count) +
           " numbers and a label; line and its vertices skipped");
    polygon_.reset();
    return true;
  }
  size_t after = first + count;
  switch (kind) {
    case PolygonKind::Inhomogeneity: {
      Inhomogeneity in;
      in.conductivity = v[0];
      in.base = v[1];
      in.averageHead = v[2];
      in.extraction = v[3];
      in.porosity = v[4];
      in.label = rest(after);
      in.line = lineNo_;
      elements_.inhomogeneities.push_back(std::move(in));
      polygon_ = {kind, elements_.inhomogeneities.size() - 1};
      break;
    }
    case PolygonKind::Wall: {
      Wall wall;
      wall.kind = wallKind;
      wall.conductivity = v[0];
      wall.thickness = v[1];
      wall.porosity = v[2];
      wall.bottom = v[3];
      wall.label = rest(after);
      wall.line = lineNo_;
      elements_.walls.push_back(std::move(wall));
      polygon_ = {kind, elements_.walls.size() - 1};
      break;
    }
    case PolygonKind::Lake: {
      Lake l;
      l.conductivity = v[0];
      l.precipitation = v[1];
      l.evaporation = v[2];
      l.resistance = v[3];
      if (items_.size() > after + 1) {
        // The stage table, then the label.
        l.label = std::string(items_.back());
        const char* b = items_[after].data();
        const char* e = items_[items_.size() - 2].data() + items_[items_.size() - 2].size();
        l.tableName = std::string(b, static_cast<size_t>(e - b));
      } else {
        l.label = rest(after);
      }
      l.line = lineNo_;
      elements_.lakes.push_back(std::move(l));
      polygon_ = {kind, elements_.lakes.size() - 1};
      break;
    }
  }
  return true;
}

std::vector<Vertex>* Reader::openVertices() {
  if (!polygon_) return nullptr;
  switch (polygon_->first) {
    case PolygonKind::Inhomogeneity: return &elements_.inhomogeneities[polygon_->second].vertices;
    case PolygonKind::Wall: return &elements_.walls[polygon_->second].vertices;
    case PolygonKind::Lake: return &elements_.lakes[polygon_->second].vertices;
  }
  return nullptr;
}

void Reader::readVertex() {
  std::vector<Vertex>* vertices = openVertices();
  if (!vertices) {
    report("vertex line in the inhomogeneity menu without an open transmissivity, slurry or Lake line; line skipped");
    return;
  }
  double v[2];
  if (!numbers(0, 2, v)) return unreadable("x y label");
  vertices->push_back(Vertex{v[0], v[1], rest(2), lineNo_});
}

}  // namespace tarno::engine::reader
