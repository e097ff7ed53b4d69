#include "elements/exchange_rows.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

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

// Two coordinates are one point when they differ by no more than rounding does.
bool SameCoordinate(double a, double b) {
  return std::fabs(a - b) <= 1e-9 * std::max({1.0, std::fabs(a), std::fabs(b)});
}

bool SamePoint(const MapPoint& p, const Vertex& v) {
  return SameCoordinate(p.first, v.X) && SameCoordinate(p.second, v.Y);
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

std::optional<std::int64_t> FindSameVertexSet(Database& db, ElementKind kind,
                                              std::span<const MapPoint> points) {
  if (points.empty()) return std::nullopt;
  const std::string table = TableOf(kind);
  double x0 = points.front().first, x1 = x0, y0 = points.front().second, y1 = y0;
  for (const auto& [x, y] : points) {
    x0 = std::min(x0, x);
    x1 = std::max(x1, x);
    y0 = std::min(y0, y);
    y1 = std::max(y1, y);
  }
  // The candidates: the elements of the kind that have a vertex inside the box.
  std::set<std::int64_t> candidates;
  {
    Statement st = db.PrepareRaw(
        "select distinct PID from Vertices where X >= ? and X <= ? and Y >= ? "
        "and Y <= ? and PID in (select PID from " +
        table + ") order by PID");
    st.Bind(1, x0).Bind(2, x1).Bind(3, y0).Bind(4, y1);
    while (st.Step()) candidates.insert(st.GetInt64(0));
  }
  for (const std::int64_t pid : candidates) {
    const std::vector<Vertex> theirs = LoadVertices(db, pid);
    const bool allInBox = std::all_of(theirs.begin(), theirs.end(), [&](const Vertex& v) {
      return v.X >= x0 && v.X <= x1 && v.Y >= y0 && v.Y <= y1;
    });
    if (!allInBox || theirs.empty()) continue;
    // The box alone would take a small element inside a large one for the same:
    // the sets must hold each other's points.
    const bool oursInTheirs = std::all_of(points.begin(), points.end(), [&](const MapPoint& p) {
      return std::any_of(theirs.begin(), theirs.end(),
                         [&](const Vertex& v) { return SamePoint(p, v); });
    });
    const bool theirsInOurs = std::all_of(theirs.begin(), theirs.end(), [&](const Vertex& v) {
      return std::any_of(points.begin(), points.end(),
                         [&](const MapPoint& p) { return SamePoint(p, v); });
    });
    if (oursInTheirs && theirsInOurs) return pid;
  }
  return std::nullopt;
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

bool InHydrologicUnit(Database& db, std::span<const MapPoint> points) {
  std::vector<std::pair<std::int64_t, std::string>> units;
  {
    Statement st = db.Prepare("Select * from Domains where FarFieldBoundary=False");
    while (st.Step()) units.emplace_back(st.GetInt64("PID"), st.GetText("Label"));
  }
  if (units.empty()) return true;
  for (const auto& [pid, label] : units) {
    if (label.rfind("Model_", 0) == 0) continue;
    if (AreVerticesInDomain(db, points, pid)) return true;
  }
  return false;
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
