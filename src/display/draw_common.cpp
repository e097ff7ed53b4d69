#include "display/draw_common.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

#include "core/error.h"
#include "core/rounding.h"
#include "elements/element_store.h"

namespace tarno::draw {

SharedVertexIndex::Key SharedVertexIndex::MakeKey(double x, double y) {
  // The store's test compares numbers, so minus zero and zero are one place.
  if (x == 0.0) x = 0.0;
  if (y == 0.0) y = 0.0;
  Key k{};
  std::memcpy(&k.x, &x, sizeof x);
  std::memcpy(&k.y, &y, sizeof y);
  return k;
}

void SharedVertexIndex::Build(const std::vector<Element>& inhomogeneities) {
  owners_.clear();
  for (const Element& in : inhomogeneities) {
    for (const tarno::Vertex& v : in.vertices) {
      const std::int64_t pid = v.PID;
      auto [it, inserted] = owners_.try_emplace(MakeKey(v.X, v.Y));
      Owners& o = it->second;
      if (inserted) {
        o.first = pid;
      } else if (!o.hasSecond && o.first != pid) {
        o.second = pid;
        o.hasSecond = true;
      }
    }
  }
}

bool SharedVertexIndex::SharedWithOther(double x, double y, std::int64_t pid) const {
  const auto it = owners_.find(MakeKey(x, y));
  if (it == owners_.end()) return false;
  const Owners& o = it->second;
  if (o.first != pid) return true;
  return o.hasSecond && o.second != pid;
}

std::vector<Vertex> Points(const std::vector<tarno::Vertex>& vertices) {
  std::vector<Vertex> out;
  out.reserve(vertices.size());
  for (const tarno::Vertex& v : vertices) out.push_back({v.VID, v.X, v.Y});
  return out;
}

std::vector<Vertex> ReadVertices(DrawContext& ctx, std::int64_t pid) {
  return Points(LoadVertices(ctx.db, pid));
}

Colour ModeColour(const DrawContext& ctx, int mode, Colour normal) {
  if (mode == kDrawSelected) return PaletteColour(12);
  if (mode == kDrawErase) return ctx.state.options.Background;
  return normal;
}

void DrawWorldPolyline(DrawContext& ctx, const std::vector<double>& xs,
                       const std::vector<double>& ys, Colour colour, double widthPoints,
                       int style) {
  const int n = static_cast<int>(std::min(xs.size(), ys.size()));
  if (n < 2) return;
  int start = 0;
  while (start < n - 1) {
    const int count = std::min(kMaxWorldPolylinePoints, n - start);
    ctx.g.vgGDIPolyline(xs.data() + start, ys.data() + start, count, colour, widthPoints, style);
    start += count - 1;
  }
}

void DrawVertexLine(DrawContext& ctx, const std::vector<Vertex>& v, bool closed, Colour colour,
                    double widthPoints, int style) {
  std::vector<double> xs, ys;
  xs.reserve(v.size() + 1);
  ys.reserve(v.size() + 1);
  for (const auto& p : v) {
    xs.push_back(p.x);
    ys.push_back(p.y);
  }
  if (closed && v.size() > 1) {
    xs.push_back(v.front().x);
    ys.push_back(v.front().y);
  }
  DrawWorldPolyline(ctx, xs, ys, colour, widthPoints, style);
}

std::int32_t TextToLong(std::string_view text) {
  std::string s(text);
  const auto first = s.find_first_not_of(" \t");
  const auto last = s.find_last_not_of(" \t");
  if (first == std::string::npos) throw Error("Type mismatch", error_number::kTypeMismatch);
  s = s.substr(first, last - first + 1);
  char* end = nullptr;
  const double v = std::strtod(s.c_str(), &end);
  // strtod would take "inf", "nan" and hexadecimal forms, which are no numbers here.
  const bool plain = s.find_first_not_of("0123456789.+-eE") == std::string::npos;
  if (!plain || end == s.c_str() || *end != '\0')
    throw Error("Type mismatch", error_number::kTypeMismatch);
  return CLng(v);
}

}  // namespace tarno::draw
