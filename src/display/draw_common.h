// Helpers shared by the drawing of elements and of a solution: the prepared
// statements of one drawing pass (on the result tables; the elements themselves
// are read through the element layer), vertex reading, colours by mode and the
// drawing of long world polylines.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "display/elem_draw.h"
#include "elements/element.h"
#include "store/database.h"

namespace tarno::draw {

struct Vertex {
  std::int64_t vid = 0;
  double x = 0.0;
  double y = 0.0;
};

// A lazily prepared statement that is reset and rebound for every use, so one
// drawing pass compiles each query text once.
class CachedStatement {
 public:
  explicit CachedStatement(std::string sql) : sql_(std::move(sql)) {}
  Statement& Get(Database& db) {
    if (!st_.IsValid()) st_ = db.Prepare(sql_);
    st_.Reset();
    st_.ClearBindings();
    return st_;
  }

 private:
  std::string sql_;
  Statement st_;
};

// Vertices of inhomogeneities keyed by their exact position: which polygons hold a
// vertex at a place. Answers "is there a vertex of another inhomogeneity exactly
// here" from one pass over the vertices of all inhomogeneities.
class SharedVertexIndex {
 public:
  // From the inhomogeneities' vertices (every row of Inhomogeneities, as
  // LoadAllRows reads them).
  void Build(const std::vector<Element>& inhomogeneities);
  bool SharedWithOther(double x, double y, std::int64_t pid) const;

 private:
  struct Key {
    std::uint64_t x, y;
    bool operator==(const Key&) const = default;
  };
  struct KeyHash {
    std::size_t operator()(const Key& k) const noexcept {
      return static_cast<std::size_t>(k.x * 0x9E3779B97F4A7C15ull ^ (k.y + 0x632BE59BD9B4E019ull));
    }
  };
  static Key MakeKey(double x, double y);
  // Up to two distinct owners are enough to answer the question for any PID.
  struct Owners {
    std::int64_t first = 0;
    std::int64_t second = 0;
    bool hasSecond = false;
  };
  std::unordered_map<Key, Owners, KeyHash> owners_;
};

// The statements one pass keeps for its whole length.
struct DrawCache {
  CachedStatement wellResult{"select * from WLResults where TARNOLabel=?"};
  CachedStatement lsResultsOfLabel{"select * from LsResults where Label=?"};
  CachedStatement lsResultOfTarnoLabel{"select * from LSResults where TARNOLabel=?"};
  std::optional<SharedVertexIndex> shared;
};

// The vertices of an element as the drawing uses them.
std::vector<Vertex> Points(const std::vector<tarno::Vertex>& vertices);
// The vertices of the string `pid` in Seq order, whoever owns it.
std::vector<Vertex> ReadVertices(DrawContext& ctx, std::int64_t pid);

// The colour of modes 2 (selected) and 3 (erase); `normal` for every other mode.
Colour ModeColour(const DrawContext& ctx, int mode, Colour normal);

// A world polyline through the points, split into pieces the layer accepts (each
// piece starts at the last point of the one before, so the line is unbroken).
void DrawWorldPolyline(DrawContext& ctx, const std::vector<double>& xs,
                       const std::vector<double>& ys, Colour colour, double widthPoints,
                       int style);
// The same through the vertices; `closed` adds the segment back to the first.
void DrawVertexLine(DrawContext& ctx, const std::vector<Vertex>& v, bool closed, Colour colour,
                    double widthPoints, int style);

// A text converted to a 32-bit integer as a stored value is: blanks around a
// number are allowed, anything else is a type mismatch (Error 13).
std::int32_t TextToLong(std::string_view text);

}  // namespace tarno::draw
