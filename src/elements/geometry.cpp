#include "elements/geometry.h"

#include <cmath>

#include "core/error.h"
#include "core/text.h"
#include "elements/element_store.h"

namespace tarno {

bool PointInPolygon(std::span<const Vertex> polygon, double x, double y) {
  if (polygon.size() < 3) return false;
  for (const Vertex& v : polygon)
    if (v.X == x && v.Y == y) return false;
  constexpr double kPi = 3.14159265358979323846;
  double sum = 0.0;
  for (std::size_t i = 0; i < polygon.size(); ++i) {
    const Vertex& a = polygon[i];
    const Vertex& b = polygon[(i + 1) % polygon.size()];
    double d = std::atan2(b.Y - y, b.X - x) - std::atan2(a.Y - y, a.X - x);
    while (d > kPi) d -= 2 * kPi;
    while (d < -kPi) d += 2 * kPi;
    sum += d;
  }
  return std::abs(sum) > 1.0;
}

double PolygonArea(std::span<const Vertex> polygon) {
  if (polygon.size() < 3) return 0.0;
  double area = 0.0;
  for (std::size_t i = 0; i < polygon.size(); ++i) {
    const Vertex& a = polygon[i];
    const Vertex& b = polygon[(i + 1) % polygon.size()];
    area += (b.X - a.X) * (b.Y + a.Y);
  }
  return 0.5 * area;
}

double FindLocalBase(Database& db, double x, double y) {
  double bestArea = -99.0;
  double base = 0.0;
  bool found = false;
  for (const Element& in : LoadAll(db, ElementKind::Inhomogeneity)) {
    if (!in.row.Flag("ChangeB")) continue;
    if (!PointInPolygon(in.vertices, x, y)) continue;
    const double area = std::abs(PolygonArea(in.vertices));
    if (bestArea == -99.0 || area < bestArea) {
      bestArea = area;
      base = in.row.Number("BottomElevation");
      found = true;
    }
  }
  return found ? base : LoadAquiferFrame(db).base;
}

double FindLocal(Database& db, std::string_view property, double x, double y) {
  if (!EqualsIgnoreCase(property, "Base"))
    throw InvalidArgumentError("no local value of " + std::string(property));
  return FindLocalBase(db, x, y);
}

}  // namespace tarno
