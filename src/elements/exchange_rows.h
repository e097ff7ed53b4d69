// The element rows as the exchange files see them: every field of a kind's table
// as text, with the element's vertices; a new element built from such texts and
// stored in one transaction; the searches an import runs before it adds an element
// (same set of vertices, same label, inside a hydrologic unit); and which fields
// hold lengths, for an import into a project of other units.
//
//     for (const ExchangeRow& r : LoadExchangeRows(db, ElementKind::Barrier))
//       for (const auto& [field, text] : r.fields) ...   // "HydCond", "0.5"
//
//     NewRowResult made = MakeElementFromTexts(ElementKind::Barrier, fields, points);
//     if (!InHydrologicUnit(db, points)) ...;
//     if (FindSameVertexSet(db, ElementKind::Barrier, points)) ...;
//     Insert(db, made.element);
//
// Element SQL stays in the element layer: the exchange readers and writers call
// these and never query the tables themselves.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "elements/element.h"
#include "elements/element_ops.h"
#include "store/database.h"

namespace tarno {

// Field name (as the schema spells it) and its value as text, in table order.
using FieldTexts = std::vector<std::pair<std::string, std::string>>;

// The text of a stored value, by the field's type: a real in the shortest form that
// reads back as the same number ("0.1", "1e-05"), a whole number or yes/no field as
// its number ("1", "-1"), a yes/no field of the Boolean type as "True" or "False", a
// text as it is. A NULL is the empty text.
std::string ValueText(std::string_view table, std::string_view field, const Value& value);

// One element of a kind's table: its key, label, every field as text (the key
// field included; the caller leaves out what it does not write) and its vertices
// in Seq order.
struct ExchangeRow {
  std::int64_t key = 0;
  std::string label;
  FieldTexts fields;
  std::vector<Vertex> vertices;
};

// Every row of the kind's table in key order, with its vertices. Rows without
// vertices are included (with none): the caller reports them.
std::vector<ExchangeRow> LoadExchangeRows(Database& db, ElementKind kind);

// A new element built from texts, not yet stored.
struct NewRowResult {
  Element element;
  // Fields the table does not have, as given.
  std::vector<std::string> unknownFields;
  // "field=text" of values that are no value of the field's type ("abc" for a
  // number); the field keeps its default.
  std::vector<std::string> badValues;
};

// A new element of `kind` with its table's defaults, then each field text that the
// table has (the key field ignored: the store assigns it), and the vertices in
// order. Store it with Insert (element_store.h), which writes the Polygons row, the
// vertices and the row in one transaction.
NewRowResult MakeElementFromTexts(ElementKind kind, const FieldTexts& fields,
                                  std::span<const MapPoint> points);

// The key of an element of `kind` whose vertices are the same set of points as
// `points`: each point of the one is a point of the other (so all of its vertices
// lie in the box of `points`, and a small element inside a large one's box is no
// match). Points are the same when their coordinates are equal. None if there is none.
std::optional<std::int64_t> FindSameVertexSet(Database& db, ElementKind kind,
                                              std::span<const MapPoint> points);

// The key of an element of `kind` labelled `label` (compared without regard to
// case, as the project compares text); none if there is none.
std::optional<std::int64_t> FindSameLabel(Database& db, ElementKind kind, std::string_view label);

// areVerticesInDomain: true at the first of `points` (in order) that lies inside
// the string `pid` of the Domains table, by the point-in-polygon test of the
// vertex editing. So a string is in a domain when any of its vertices is.
bool AreVerticesInDomain(Database& db, std::span<const MapPoint> points, std::int64_t pid);

// Whether `points` lie within a hydrologic unit: the strings of Domains that are
// not the far-field boundary; with none at all, yes. Otherwise each one whose label
// does not begin with "Model_" is tested by AreVerticesInDomain, and the first that
// holds the points gives yes. A project whose only domains are model boundaries
// holds nothing.
bool InHydrologicUnit(Database& db, std::span<const MapPoint> points);

// The two searches of the conflict rules for a whole import, each reading the
// project once instead of once an element: the hydrologic units with their
// vertices, and the vertex sets of the kind's elements. The answers are those of
// InHydrologicUnit and FindSameVertexSet on the project as it stands, as long as
// every element the import adds is told to Added. (The tables are read once,
// because the Vertices table has no index on PID: a query per element would read
// all of it each time.)
class HydrologicUnits {
 public:
  explicit HydrologicUnits(Database& db);
  bool Holds(std::span<const MapPoint> points) const;

 private:
  bool none_ = true;                        // no unit or boundary at all
  std::vector<std::vector<Vertex>> units_;  // the units not labelled Model_*
};

class VertexSets {
 public:
  VertexSets(Database& db, ElementKind kind);
  std::optional<std::int64_t> Find(std::span<const MapPoint> points) const;
  void Added(std::int64_t key, std::span<const MapPoint> points);

 private:
  // Each element's distinct points, sorted, with its key.
  std::multimap<std::vector<MapPoint>, std::int64_t> byPoints_;
};

// The units of the project's lengths (the Model row's BasemapMeters and
// ComputeMeters).
struct ProjectUnits {
  bool basemapMeters = true;
  bool computeMeters = true;
};
ProjectUnits LoadProjectUnits(Database& db);

// How a field of an element table scales with the unit of length: the power of
// length in its dimension (0: none, 1: a length, head, elevation, conductivity or
// rate, 2: a flow along a line, 3: a discharge). For the line-sink strings the
// power of StartingHead and EndingHead depends on the row: heads (1) for a
// head-specified string, sink densities (2) for a discharge-specified one; pass the
// row's HeadSpecified. Fields not listed (flags, labels, tags, porosity,
// resistance, colours) scale with nothing. This table is the one place that says
// which fields are lengths.
int LengthPower(ElementKind kind, std::string_view field, bool headSpecified = true);

// Metres in one foot.
inline constexpr double kMetresPerFoot = 0.3048;
// The factor that takes a length in `fromMeters` units to `toMeters` units.
double LengthFactor(bool fromMeters, bool toMeters);

// Converts the computational fields of `e` by `factor` to the power of each field
// (LengthPower). The value -9999 (no value to the solver) is left as it stands.
void ScaleLengthFields(Element& e, double factor);

}  // namespace tarno
