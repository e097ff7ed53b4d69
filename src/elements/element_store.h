// Reading and writing elements: the one place where the element tables, Polygons
// and Vertices are queried and changed for an element as a whole.
//
//     Database db = Database::Open(path);
//     for (const Element& w : LoadAll(db, ElementKind::Well)) ...
//     Element e = NewElement(ElementKind::Well, {{0, -1, 0, 100.0, 200.0}});
//     e.row.Set("Label", "W1");
//     Insert(db, e);            // adds the vertex and the row, sets e.key
//
// An element whose rows are incomplete in the file (a point without its vertex, a
// string with fewer vertices than its kind needs) is not returned by LoadAll; its
// label goes into the list of skipped elements, so the caller can report it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "elements/element.h"
#include "store/database.h"

namespace tarno {

// An element that LoadAll left out, and why ("has no vertex", "has 1 vertex").
struct SkippedElement {
  ElementKind kind;
  std::string label;
  std::string reason;
};

// Every element of `kind` in key order (text labels in table order), with their
// vertices, read in two queries whatever the number of elements.
std::vector<Element> LoadAll(Database& db, ElementKind kind,
                             std::vector<SkippedElement>* skipped = nullptr);
// One element by its key; none if it is not there or incomplete.
std::optional<Element> Load(Database& db, ElementKind kind, std::int64_t key);

// As LoadAll and Load, but the incomplete elements are kept, with the vertices
// they have (none for a point without its vertex): for the code that has its own
// rule for them, as the command file's blocks (a menu is written as soon as its
// table has a row) and the map (a one-vertex string is drawn as a marker) have.
std::vector<Element> LoadAllRows(Database& db, ElementKind kind);
std::optional<Element> LoadRow(Database& db, ElementKind kind, std::int64_t key);

// Whether the kind's table has any row; with a field, any row whose field compares
// to `value` by `op` ("=", "<>", ">", ">=", "<", "<=") as the store compares (text
// without regard to case). The rows need not be complete.
bool AnyElement(Database& db, ElementKind kind);
bool AnyElementWhere(Database& db, ElementKind kind, std::string_view field, std::string_view op,
                     const Value& value);
// The number of rows of the kind's table, complete or not.
std::int64_t CountElements(Database& db, ElementKind kind);
// The element of `kind` whose label is `label` (compared as the project file
// compares text: without regard to case); none if there is none.
std::optional<Element> FindByLabel(Database& db, ElementKind kind, std::string_view label);
// The kind of the element that owns the string `pid`, or the point `vid`; none if no
// element table holds it.
std::optional<ElementKind> OwnerOfString(Database& db, std::int64_t pid);
std::optional<ElementKind> OwnerOfPoint(Database& db, std::int64_t vid);

// Stores a new element: its Polygons row (strings and polygons), its vertices and its
// row, in one transaction. Sets e.key and the VID/PID of the row and vertices.
// Vertices of a string get Seq 100, 200, ...; a point's vertex PID -1 and Seq 0.
std::int64_t Insert(Database& db, Element& e);
// Writes the row back and moves the vertices to the element's positions (matched
// by VID; vertices without a VID are added at the end). The key is not changed.
void Update(Database& db, const Element& e);
// Deletes the element's row, its vertices and its Polygons row.
void Remove(Database& db, ElementKind kind, std::int64_t key);

// The vertex operations that the elements share.
// Adds a vertex; the result is its VID. A `seq` below 0 means "next": the string's
// highest Seq plus 100 (100 for its first vertex).
std::int64_t AddVertex(Database& db, double x, double y, std::int64_t pid, std::int64_t seq);
// Adds a Polygons row; the result is its PID.
std::int64_t AddPolygon(Database& db, int closed);
// The vertices of a string in Seq order.
std::vector<Vertex> LoadVertices(Database& db, std::int64_t pid);
// One vertex by its VID, whoever owns it; none if there is no such vertex.
std::optional<Vertex> LoadVertex(Database& db, std::int64_t vid);

// Uniform flow lives in the Model row (the UNIFLOW fields) and a PID -10 vertex.
// The element's row holds the UNIFLOW fields; none when UNIFLOWCompute is off.
std::optional<Element> LoadUniformFlow(Database& db);
// Writes the UNIFLOW fields to the Model row and puts the reference vertex at
// (UNIFLOWRefX, UNIFLOWRefY), adding it if missing.
void StoreUniformFlow(Database& db, const Element& e);
// Clears the uniform flow: UNIFLOWCompute false, the fields zero, the vertex gone.
void RemoveUniformFlow(Database& db);

// The model's aquifer as the element checks need it.
struct AquiferFrame {
  double base = 0.0;       // AQBase
  double thickness = 0.0;  // AQThickness
  double Top() const { return base + thickness; }
  bool computeMeters = true;
  bool basemapMeters = true;
};
AquiferFrame LoadAquiferFrame(Database& db);

// The project's folder of the solver files and stage tables (Project.TARNOBasePath).
std::string LoadBasePath(Database& db);
// The model's hydraulic conductivity (AQHydCond), which an inhomogeneity whose
// conductivity is not its own shows.
double LoadAquiferHydCond(Database& db);

}  // namespace tarno
