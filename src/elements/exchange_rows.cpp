#include "elements/exchange_rows.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "core/error.h"
#include "core/text.h"
#include "elements/element_store.h"
#include "elements/field_text.h"
#include "elements/geometry.h"
#include "store/schema.h"

namespace tarno {

namespace {

const FieldDef* FieldOf(std::string_view table, std::string_view field) {
  const TableDef* t = FindTable(table);
  return t == nullptr ? nullptr : FindField(*t, field);
}

std::string TableOf(ElementKind kind) {
  const KindInfo& info = Info(kind);
  if (info.table.empty() || info.key.empty())
    throw InvalidArgumentError(std::string(info.name) +
                               " is not kept in a table keyed by PID or VID");
  return std::string(info.table);
}

}  // namespace

std::string ValueText(std::string_view table, std::string_view field, const Value& value) {
  if (std::holds_alternative<std::monostate>(value)) return {};
  const FieldDef* def = FieldOf(table, field);
  const FieldType type = def == nullptr ? FieldType::Text : def->type;
  switch (type) {
    case FieldType::Double:
      if (const auto* d = std::get_if<double>(&value)) return FieldText(*d);
      if (const auto* n = std::get_if<std::int64_t>(&value))
        return FieldText(static_cast<double>(*n));
      return std::get<std::string>(value);
    case FieldType::Boolean: {
      bool on = false;
      if (const auto* n = std::get_if<std::int64_t>(&value))
        on = *n != 0;
      else if (const auto* d = std::get_if<double>(&value))
        on = *d != 0;
      else
        return std::get<std::string>(value);
      return on ? "True" : "False";
    }
    case FieldType::Integer:
    case FieldType::Long:
      if (const auto* n = std::get_if<std::int64_t>(&value)) return std::to_string(*n);
      if (const auto* d = std::get_if<double>(&value))
        return std::to_string(static_cast<std::int64_t>(*d));
      return std::get<std::string>(value);
    case FieldType::Text:
    case FieldType::Date:
      if (const auto* s = std::get_if<std::string>(&value)) return *s;
      if (const auto* n = std::get_if<std::int64_t>(&value)) return std::to_string(*n);
      return FieldText(std::get<double>(value));
  }
  return {};
}

std::vector<ExchangeRow> LoadExchangeRows(Database& db, ElementKind kind) {
  const std::string table = TableOf(kind);
  std::vector<ExchangeRow> out;
  for (const Element& e : LoadAllRows(db, kind)) {
    ExchangeRow r;
    r.key = e.key;
    r.label = e.Label();
    for (const auto& [name, value] : e.row.Fields())
      r.fields.emplace_back(name, ValueText(table, name, value));
    r.vertices = e.vertices;
    out.push_back(std::move(r));
  }
  return out;
}

NewRowResult MakeElementFromTexts(ElementKind kind, const FieldTexts& fields,
                                  std::span<const MapPoint> points) {
  const std::string table = TableOf(kind);
  const std::string key(Info(kind).key);
  NewRowResult made;
  std::vector<Vertex> vertices;
  for (const auto& [x, y] : points) vertices.push_back({0, 0, 0, x, y});
  made.element = NewElement(kind, std::move(vertices));
  for (const auto& [name, text] : fields) {
    if (!made.element.row.Has(name)) {
      made.unknownFields.push_back(name);
      continue;
    }
    if (EqualsIgnoreCase(name, key)) continue;
    if (!made.element.row.SetFromText(name, text)) made.badValues.push_back(name + "=" + text);
  }
  return made;
}

namespace {

// The distinct points of a set, sorted: two sets are the same when these are equal.
std::vector<MapPoint> SetOf(std::span<const MapPoint> points) {
  std::vector<MapPoint> set(points.begin(), points.end());
  std::sort(set.begin(), set.end());
  set.erase(std::unique(set.begin(), set.end()), set.end());
  return set;
}

}  // namespace

VertexSets::VertexSets(Database& db, ElementKind kind) {
  const std::string table = TableOf(kind);
  std::map<std::int64_t, std::vector<MapPoint>> points;
  {
    Statement st = db.PrepareRaw("select PID, X, Y from Vertices where PID in (select PID from " +
                                 table + ") order by PID, Seq");
    while (st.Step()) points[st.GetInt64(0)].emplace_back(st.GetDouble(1), st.GetDouble(2));
  }
  for (const auto& [pid, p] : points) Added(pid, p);
}

std::optional<std::int64_t> VertexSets::Find(std::span<const MapPoint> points) const {
  if (points.empty()) return std::nullopt;
  const auto it = byPoints_.find(SetOf(points));
  if (it == byPoints_.end()) return std::nullopt;
  return it->second;
}

void VertexSets::Added(std::int64_t key, std::span<const MapPoint> points) {
  if (!points.empty()) byPoints_.emplace(SetOf(points), key);
}

std::optional<std::int64_t> FindSameVertexSet(Database& db, ElementKind kind,
                                              std::span<const MapPoint> points) {
  return VertexSets(db, kind).Find(points);
}

std::optional<std::int64_t> FindSameLabel(Database& db, ElementKind kind, std::string_view label) {
  const std::string table = TableOf(kind);
  const std::string key(Info(kind).key);
  Statement st =
      db.PrepareRaw("select " + key + " from " + table + " where Label = ? order by " + key);
  st.Bind(1, label);
  if (st.Step()) return st.GetInt64(0);
  return std::nullopt;
}

bool AreVerticesInDomain(Database& db, std::span<const MapPoint> points, std::int64_t pid) {
  const std::vector<Vertex> domain = LoadVertices(db, pid);
  for (const auto& [x, y] : points)
    if (PointInPolygon(domain, x, y)) return true;
  return false;
}

HydrologicUnits::HydrologicUnits(Database& db) {
  std::vector<std::pair<std::int64_t, std::string>> domains;
  {
    Statement st = db.Prepare("Select * from Domains where FarFieldBoundary=False");
    while (st.Step()) domains.emplace_back(st.GetInt64("PID"), st.GetText("Label"));
  }
  none_ = domains.empty();
  for (const auto& [pid, label] : domains)
    if (label.rfind("Model_", 0) != 0) units_.push_back(LoadVertices(db, pid));
}

bool HydrologicUnits::Holds(std::span<const MapPoint> points) const {
  if (none_) return true;
  for (const std::vector<Vertex>& unit : units_)
    for (const auto& [x, y] : points)
      if (PointInPolygon(unit, x, y)) return true;  // areVerticesInDomain
  return false;
}

bool InHydrologicUnit(Database& db, std::span<const MapPoint> points) {
  return HydrologicUnits(db).Holds(points);
}

ProjectUnits LoadProjectUnits(Database& db) {
  const AquiferFrame frame = LoadAquiferFrame(db);
  return {frame.basemapMeters, frame.computeMeters};
}

int LengthPower(ElementKind kind, std::string_view field, bool headSpecified) {
  struct Entry {
    ElementKind kind;
    std::string_view field;
    int power;
  };
  // The fields with a length in their dimension, from the meaning of each field
  // and the unit its dialog shows: heads, elevations, widths, depths and
  // thicknesses are lengths; conductivities, recharge, precipitation and
  // evapotranspiration are lengths per day; overland flow along a string is
  // L^2/day; inflows and discharges L^3/day. Resistance is a time, porosity a ratio.
  static const Entry kEntries[] = {
      {ElementKind::Linesink, "StartingHead", 1},
      {ElementKind::Linesink, "EndingHead", 1},
      {ElementKind::Linesink, "Width", 1},
      {ElementKind::Linesink, "Depth", 1},
      {ElementKind::Linesink, "OverlandFlow", 2},
      {ElementKind::Linesink, "EndInflow", 3},
      {ElementKind::Linesink, "TotalDischarge", 3},
      {ElementKind::Linesink, "Precipitation", 1},
      {ElementKind::Linesink, "Evapotranspiration", 1},
      {ElementKind::Inhomogeneity, "HydCond", 1},
      {ElementKind::Inhomogeneity, "BottomElevation", 1},
      {ElementKind::Inhomogeneity, "AverageHead", 1},
      {ElementKind::Inhomogeneity, "Recharge", 1},
      {ElementKind::Inhomogeneity, "DefaultHydCond", 1},
      {ElementKind::Inhomogeneity, "DefaultRecharge", 1},
      {ElementKind::Barrier, "HydCond", 1},
      {ElementKind::Barrier, "Thickness", 1},
      {ElementKind::Barrier, "BottomElevation", 1},
      {ElementKind::Lake, "InterriorConductivity", 1},
      {ElementKind::Lake, "AddedRechargeRate", 1},
      {ElementKind::Lake, "Evapotranspiration", 1},
      {ElementKind::Lake, "Width", 1},
  };
  for (const Entry& e : kEntries) {
    if (e.kind != kind || !EqualsIgnoreCase(e.field, field)) continue;
    // A discharge-specified string holds sink densities (L^2/day) in its head fields.
    if (kind == ElementKind::Linesink && !headSpecified &&
        (EqualsIgnoreCase(field, "StartingHead") || EqualsIgnoreCase(field, "EndingHead")))
      return 2;
    return e.power;
  }
  return 0;
}

double LengthFactor(bool fromMeters, bool toMeters) {
  if (fromMeters == toMeters) return 1.0;
  return fromMeters ? 1.0 / kMetresPerFoot : kMetresPerFoot;
}

void ScaleLengthFields(Element& e, double factor) {
  if (factor == 1.0) return;
  const bool headSpecified = !e.row.Has("HeadSpecified") || e.row.Integer("HeadSpecified") != 0;
  std::vector<std::pair<std::string, double>> changes;
  for (const auto& [name, value] : e.row.Fields()) {
    const int power = LengthPower(e.kind, name, headSpecified);
    if (power == 0) continue;
    const double v = e.row.Number(name);
    if (v == -9999.0) continue;
    changes.emplace_back(name, v * std::pow(factor, power));
  }
  for (const auto& [name, v] : changes) e.row.Set(name, v);
}

}  // namespace tarno
