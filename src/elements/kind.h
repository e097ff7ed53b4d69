// The kinds of model element and what the element layer knows about each: its
// table, the key that joins it to its geometry, the shape of that geometry, the
// word that tarnocmd uses for it, and the prefix of its solver label.
//
// The numbers are the element kinds of the mouse modes and of the selection.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tarno {

enum class ElementKind : int {
  Well = 1,
  Linesink = 2,
  Barrier = 3,
  UniformFlow = 4,
  Inhomogeneity = 5,
  Lake = 6,
  TestPoint = 21,
  Particle = 22,
  FluxLine = 23,
  Capzone = 24,
  Text = 30,
  Domain = 35,
};

// How an element holds its place on the map.
enum class Geometry {
  Point,    // one Vertices row, joined by VID, PID -1
  String,   // a Polygons row with ordered Vertices rows, joined by PID (open)
  Polygon,  // as String, but closed: the last vertex connects back to the first
  Row,      // no vertex of its own: the text labels keep X and Y in their row
  Model,    // no table of its own: uniform flow lives in the Model row and a PID -10 vertex
};

struct KindInfo {
  ElementKind kind;
  std::string_view word;     // tarnocmd's word: "well", "linesink", ...
  std::string_view name;     // for messages: "Well", "Line-sink string", ...
  std::string_view table;    // "Wells", ...; empty for uniform flow
  std::string_view key;      // "VID" or "PID"; empty where the row has no key of its own
  Geometry geometry;
  std::string_view solverPrefix;  // "WL_", "LS_", ...; empty when the solver has no label
  int minVertices;           // fewest vertices of a complete element
};

// Every kind, in the order tarnocmd lists them.
std::span<const KindInfo> ElementKinds();
const KindInfo& Info(ElementKind kind);
// The kind of a tarnocmd word, case-insensitive; none for an unknown word.
std::optional<ElementKind> KindFromWord(std::string_view word);
// The kind whose table is `table` (case-insensitive).
std::optional<ElementKind> KindFromTable(std::string_view table);

}  // namespace tarno
