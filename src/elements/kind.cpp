#include "elements/kind.h"

#include <array>
#include <stdexcept>

#include "core/text.h"

namespace tarno {

namespace {

constexpr std::array<KindInfo, 12> kKinds{{
    {ElementKind::Well, "well", "Well", "Wells", "VID", Geometry::Point, "WL_", 1},
    {ElementKind::Linesink, "linesink", "Line-sink string", "LinesinkStrings", "PID",
     Geometry::String, "LS_", 2},
    {ElementKind::Barrier, "barrier", "Barrier", "NoFlowStrings", "PID", Geometry::String, "HB_",
     2},
    {ElementKind::Inhomogeneity, "inhomogeneity", "Inhomogeneity", "Inhomogeneities", "PID",
     Geometry::Polygon, "IN_", 3},
    {ElementKind::Lake, "lake", "Lake", "Lakes", "PID", Geometry::Polygon, "LK_", 3},
    {ElementKind::TestPoint, "testpoint", "Test point", "TestPoints", "VID", Geometry::Point,
     "TP_", 1},
    {ElementKind::Particle, "particle", "Particle", "Particles", "VID", Geometry::Point, "", 1},
    {ElementKind::FluxLine, "fluxline", "Flux inspection line", "FluxInspect", "PID",
     Geometry::String, "FL_", 2},
    {ElementKind::Capzone, "capzone", "Protection area", "Capzones", "PID", Geometry::Polygon, "",
     3},
    {ElementKind::Domain, "domain", "Hydrologic unit boundary", "Domains", "PID",
     Geometry::Polygon, "", 3},
    {ElementKind::Text, "text", "Text label", "TextLabels", "", Geometry::Row, "", 0},
    {ElementKind::UniformFlow, "uniflow", "Uniform flow", "", "", Geometry::Model, "", 1},
}};

}  // namespace

std::span<const KindInfo> ElementKinds() { return kKinds; }

const KindInfo& Info(ElementKind kind) {
  for (const KindInfo& k : kKinds)
    if (k.kind == kind) return k;
  throw std::invalid_argument("unknown element kind " + std::to_string(static_cast<int>(kind)));
}

std::optional<ElementKind> KindFromWord(std::string_view word) {
  for (const KindInfo& k : kKinds)
    if (EqualsIgnoreCase(k.word, word)) return k.kind;
  return std::nullopt;
}

std::optional<ElementKind> KindFromTable(std::string_view table) {
  for (const KindInfo& k : kKinds)
    if (!k.table.empty() && EqualsIgnoreCase(k.table, table)) return k.kind;
  return std::nullopt;
}

}  // namespace tarno
