// The vertex operations shared by the element kinds. See vertex_edit.h.
#include "elements/vertex_edit.h"

#include <sqlite3.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <numbers>

#include "core/error_trap.h"
#include "core/format.h"
#include "core/text.h"
#include "core/ui_port.h"
#include "elements/element_ops.h"
#include "elements/element_store.h"
#include "elements/ls_confirm_dialog.h"

namespace tarno {

namespace {

constexpr double kNoDistance = 1e30;

// ---------------------------------------------------------------------------
// The connection's R*Tree of the vertices.
//
// The fresh search of a click wants the nearest vertex; without help it sorts the
// whole table by distance. The connection keeps a TEMP R*Tree of the vertex points
// (not part of the project file) so that the search reads only the box around the
// search radius. TEMP triggers on main.Vertices keep it current whoever writes the
// table through this connection; a write by another connection changes the file's
// data version, and the index is then filled again. (A trigger's body may not name
// a schema: the unqualified vertex_index finds the TEMP table first.)

// The four objects of the index; their presence says the index is there.
constexpr const char* kIndexObjects[] = {"vertex_index", "vertex_index_ai", "vertex_index_au",
                                         "vertex_index_ad"};

std::int64_t DataVersion(Database& db) {
  Statement st = db.PrepareRaw("pragma main.data_version");
  return st.Step() ? st.GetInt64(0) : 0;
}

bool IndexPresent(Database& db) {
  Statement st = db.PrepareRaw(
      "select count(*) from sqlite_temp_master where name in "
      "('vertex_index', 'vertex_index_ai', 'vertex_index_au', 'vertex_index_ad', "
      "'vertex_index_state')");
  return st.Step() && st.GetInt64(0) == 5;
}

void DropIndex(Database& db) {
  db.ExecuteRaw(
      "drop trigger if exists temp.vertex_index_ai; drop trigger if exists temp.vertex_index_au; "
      "drop trigger if exists temp.vertex_index_ad; drop table if exists temp.vertex_index; "
      "drop table if exists temp.vertex_index_state;");
}

// Builds the index from the table and records the data version it reflects.
void BuildIndex(Database& db, std::int64_t version) {
  Transaction tx(db);
  DropIndex(db);
  db.ExecuteRaw(
      "create virtual table temp.vertex_index using rtree(id, minx, maxx, miny, maxy);"
      "create table temp.vertex_index_state (version integer);"
      "insert into temp.vertex_index select VID, X, X, Y, Y from main.Vertices;"
      "create temp trigger vertex_index_ai after insert on main.Vertices begin "
      "  insert into vertex_index values (new.VID, new.X, new.X, new.Y, new.Y); end;"
      "create temp trigger vertex_index_au after update on main.Vertices begin "
      "  delete from vertex_index where id = old.VID;"
      "  insert into vertex_index values (new.VID, new.X, new.X, new.Y, new.Y); end;"
      "create temp trigger vertex_index_ad after delete on main.Vertices begin "
      "  delete from vertex_index where id = old.VID; end;");
  Statement st = db.PrepareRaw("insert into temp.vertex_index_state values (?)");
  st.Bind(1, version);
  st.Run();
  tx.Commit();
}

// Makes sure the index is there and current; the result is false when it cannot
// be had (an SQLite without the R*Tree module), and the search then reads the table.
bool EnsureIndex(Database& db) {
  const std::int64_t version = DataVersion(db);
  if (IndexPresent(db)) {
    Statement st = db.PrepareRaw("select version from temp.vertex_index_state");
    if (st.Step() && st.GetInt64(0) == version) return true;
  }
  try {
    BuildIndex(db, version);
    return true;
  } catch (const StoreError&) {
    return false;
  }
}

// A candidate of the search: a vertex or a text label at its squared distance.
struct Candidate {
  std::int64_t vid = -1;  // -2: a text label
  std::int64_t label = 0;
  double r2 = kNoDistance;
};

// The fresh search: the vertex nearest (x, y), nearest first and, between equals,
// the lower VID. With the index only vertices within the radius are looked at; no
// vertex there means none that the search could accept.
Candidate NearestVertex(Database& db, double x, double y, double radius2, bool useIndex) {
  Candidate best;
  Statement st;
  if (useIndex && EnsureIndex(db)) {
    const double r = std::sqrt(std::max(radius2, 0.0));
    st = db.PrepareRaw(
        "select v.VID, (?1 - v.X) * (?1 - v.X) + (?2 - v.Y) * (?2 - v.Y) as r2 "
        "from temp.vertex_index i join main.Vertices v on v.VID = i.id "
        "where i.maxx >= ?3 and i.minx <= ?4 and i.maxy >= ?5 and i.miny <= ?6 "
        "order by r2, v.VID limit 1");
    st.Bind(3, x - r).Bind(4, x + r).Bind(5, y - r).Bind(6, y + r);
  } else {
    st = db.PrepareRaw(
        "select VID, (?1 - X) * (?1 - X) + (?2 - Y) * (?2 - Y) as r2 from Vertices "
        "order by r2, VID limit 1");
  }
  st.Bind(1, x).Bind(2, y);
  if (st.Step()) {
    best.vid = st.GetInt64(0);
    best.r2 = st.GetDouble(1);
  }
  return best;
}

// The cycling search: the nearest vertex not yet visited, the first (lowest VID) of
// equals staying. Only vertices within the radius can be accepted, so with the index
// only those are read.
Candidate NearestUnvisited(Database& db, double x, double y, double radius2,
                           const std::vector<std::int64_t>& visited, bool useIndex) {
  Candidate best;
  Statement st;
  if (useIndex && EnsureIndex(db)) {
    const double r = std::sqrt(std::max(radius2, 0.0));
    st = db.PrepareRaw(
        "select v.VID, v.X, v.Y from temp.vertex_index i join main.Vertices v on v.VID = i.id "
        "where i.maxx >= ?1 and i.minx <= ?2 and i.maxy >= ?3 and i.miny <= ?4 order by v.VID");
    st.Bind(1, x - r).Bind(2, x + r).Bind(3, y - r).Bind(4, y + r);
  } else {
    st = db.PrepareRaw("select VID, X, Y from Vertices order by VID");
  }
  while (st.Step()) {
    const std::int64_t vid = st.GetInt64(0);
    const double dx = x - st.GetDouble(1);
    const double dy = y - st.GetDouble(2);
    const double r2 = dx * dx + dy * dy;
    if (r2 < best.r2 && std::find(visited.begin(), visited.end(), vid) == visited.end()) {
      best.vid = vid;
      best.r2 = r2;
    }
  }
  return best;
}

// The text labels that the map shows take part as if they were vertices: the
// nearest one below the best so far replaces it. Labels already visited in the cycle
// are skipped as vertices are.
void NearerLabel(Database& db, double x, double y, const LabelSearch& labels,
                 const std::vector<std::int64_t>& visitedLabels, Candidate& best) {
  if (!labels.enabled) return;
  Statement st =
      db.PrepareRaw(std::string("select rowid, X, Y from TextLabels where LabelType = 0") +
                    (labels.showHydrography ? " or LabelType = 1" : "") + " order by rowid");
  while (st.Step()) {
    const std::int64_t key = st.GetInt64(0);
    const double dx = x - st.GetDouble(1);
    const double dy = y - st.GetDouble(2);
    const double r2 = dx * dx + dy * dy;
    if (r2 < best.r2 &&
        std::find(visitedLabels.begin(), visitedLabels.end(), key) == visitedLabels.end()) {
      best.vid = -2;
      best.label = key;
      best.r2 = r2;
    }
  }
}

// What the search gives back for a candidate: the vertex's row, or the label's place.
FoundVertex Found(Database& db, std::int64_t vid, std::int64_t label) {
  FoundVertex f;
  if (vid == -2) {
    Statement st = db.PrepareRaw("select X, Y from TextLabels where rowid = ?");
    st.Bind(1, label);
    if (!st.Step()) return f;
    f.vid = -2;
    f.label = label;
    f.vertex.VID = -2;
    f.vertex.X = st.GetDouble(0);
    f.vertex.Y = st.GetDouble(1);
    return f;
  }
  if (auto v = LoadVertex(db, vid)) {
    f.vid = vid;
    f.vertex = *v;
  }
  return f;
}

// ---------------------------------------------------------------------------
// Strings.

using namespace vertex_text;

bool Contains(const std::vector<std::int64_t>& list, std::int64_t value) {
  return std::find(list.begin(), list.end(), value) != list.end();
}
void AddOnce(std::vector<std::int64_t>& list, std::int64_t value) {
  if (!Contains(list, value)) list.push_back(value);
}

// Whether the string `pid` belongs to an element of `kind`.
bool StringOfKind(Database& db, ElementKind kind, std::int64_t pid) {
  const KindInfo& info = Info(kind);
  if (info.table.empty() || info.key != "PID") return false;
  Statement st = db.PrepareRaw("select 1 from " + std::string(info.table) + " where PID = ?");
  st.Bind(1, pid);
  return st.Step();
}

// Whether the string closes on its first vertex: the Polygons row says so; a kind
// drawn as a polygon is closed without it.
bool IsClosed(Database& db, ElementKind kind, std::int64_t pid) {
  Statement st = db.PrepareRaw("select Closed from Polygons where PID = ?");
  st.Bind(1, pid);
  if (st.Step() && st.GetInt64(0) != 0) return true;
  return Info(kind).geometry == Geometry::Polygon;
}

bool IsString(ElementKind kind) {
  const Geometry g = Info(kind).geometry;
  return g == Geometry::String || g == Geometry::Polygon;
}

int IndexOf(const std::vector<Vertex>& vs, std::int64_t vid) {
  for (std::size_t i = 0; i < vs.size(); ++i)
    if (vs[i].VID == vid) return static_cast<int>(i);
  return -1;
}

// Adds a vertex at (x, y) between `a` and `b`, neighbours in the string `pid`
// (a before b), with the mean of their numbers; renumbers the string first when
// there is no whole number between them.
std::int64_t InsertBetween(Database& db, std::int64_t pid, Vertex a, Vertex b, double x, double y) {
  if (std::llabs(b.Seq - a.Seq) < 2) {
    Resequence(db, pid, a.VID);
    a = *LoadVertex(db, a.VID);
    b = *LoadVertex(db, b.VID);
  }
  return AddVertex(db, x, y, pid, (a.Seq + b.Seq) / 2);
}

// The vertex added after the last of a closed string, on its closing edge.
std::int64_t InsertAfterLast(Database& db, std::int64_t pid, const Vertex& last, double x,
                             double y) {
  return AddVertex(db, x, y, pid, last.Seq + 100);
}

// The pair of vertices whose edge a refine of `vs[index]` splits, as indexes;
// second == 0 with first == last index means the closing edge. None for a string
// of fewer than two vertices.
std::optional<std::pair<int, int>> RefinedEdge(const std::vector<Vertex>& vs, int index,
                                               bool closed) {
  const int n = static_cast<int>(vs.size());
  if (n < 2 || index < 0) return std::nullopt;
  if (index == n - 1) {
    if (closed) return std::make_pair(n - 1, 0);
    return std::make_pair(n - 2, n - 1);
  }
  return std::make_pair(index, index + 1);
}

// Splits the edge (i, j) of the string with a vertex at its middle.
std::int64_t SplitEdge(Database& db, std::int64_t pid, const std::vector<Vertex>& vs, int i,
                       int j) {
  const double x = (vs[i].X + vs[j].X) / 2.0;
  const double y = (vs[i].Y + vs[j].Y) / 2.0;
  const int n = static_cast<int>(vs.size());
  if ((i == n - 1 && j == 0) || (j == n - 1 && i == 0 && n > 2))
    return InsertAfterLast(db, pid, vs[n - 1], x, y);
  return InsertBetween(db, pid, vs[std::min(i, j)], vs[std::max(i, j)], x, y);
}

// The vertices of other strings of `kind` that lie exactly at (x, y).
std::vector<Vertex> CoincidentVertices(Database& db, ElementKind kind, std::int64_t pid, double x,
                                       double y) {
  Statement st = db.PrepareRaw(
      "select VID, PID, Seq, X, Y from Vertices where X >= ?1 and X <= ?1 and Y >= ?2 and Y <= ?2 "
      "and PID <> ?3 and PID in (select PID from " +
      std::string(Info(kind).table) + ") order by VID");
  st.Bind(1, x).Bind(2, y).Bind(3, pid);
  std::vector<Vertex> out;
  while (st.Step())
    out.push_back(
        {st.GetInt64(0), st.GetInt64(1), st.GetInt64(2), st.GetDouble(3), st.GetDouble(4)});
  return out;
}

bool SamePlace(const Vertex& a, const Vertex& b) { return a.X == b.X && a.Y == b.Y; }

bool SharesEdges(ElementKind kind) {
  return kind == ElementKind::Inhomogeneity || kind == ElementKind::Domain;
}

bool Snaps(ElementKind kind) {
  return kind == ElementKind::Linesink || kind == ElementKind::Inhomogeneity ||
         kind == ElementKind::Domain;
}

// ---------------------------------------------------------------------------
// Domains.

bool StartsWith(const std::string& text, std::string_view prefix) {
  return text.size() >= prefix.size() && EqualsIgnoreCase(text.substr(0, prefix.size()), prefix);
}

// The lines of the refusal when a vertex of the domain `pid` would come to (x, y)
// on the wrong side of another boundary; empty when the place is allowed. The
// model boundary lies outside the far field, the far field outside the hydrologic
// units, and both of those inside the model boundary.
std::vector<std::string> DomainRefusal(Database& db, std::int64_t pid, double x, double y) {
  struct Boundary {
    std::int64_t pid;
    std::string label;
  };
  std::string own;
  std::vector<Boundary> others;
  Statement st = db.PrepareRaw("select PID, Label from Domains order by PID");
  while (st.Step()) {
    if (st.GetInt64(0) == pid)
      own = st.GetText(1);
    else
      others.push_back({st.GetInt64(0), st.GetText(1)});
  }
  const auto isModel = [](const std::string& l) { return StartsWith(l, "Model_"); };
  const auto isFar = [](const std::string& l) { return StartsWith(l, "Far_Field_"); };
  if (isModel(own)) {
    for (const Boundary& b : others)
      if (isFar(b.label) && PointInPolygon(db, b.pid, x, y))
        return {kInsideFarField, kChooseOutside};
    return {};
  }
  if (isFar(own)) {
    for (const Boundary& b : others)
      if (!isFar(b.label) && !isModel(b.label) && PointInPolygon(db, b.pid, x, y))
        return {kInsideUnit, kChooseOutside};
  }
  for (const Boundary& b : others)
    if (isModel(b.label) && !PointInPolygon(db, b.pid, x, y)) return {kOutsideModel, kChooseInside};
  return {};
}

// Deletes a phantom string of `kind` (one vertex left) with the warning `text`.
bool CheckPhantom(Database& db, ElementKind kind, std::int64_t pid, UserInterface& ui,
                  const char* operation, const char* text) {
  bool deleted = false;
  RunOperation(ui, operation, [&] {
    Transaction tx(db);
    CheckPolyVertices(db, pid, ui);
    Statement count = db.PrepareRaw("select count(*) from Vertices where PID = ?");
    count.Bind(1, pid);
    if (count.Step() && count.GetInt64(0) == 1) {
      ui.MessageBox(kWarningTitle, {text}, Buttons::OK, Icon::Exclamation);
      Remove(db, kind, pid);
      deleted = true;
    }
    tx.Commit();
  });
  return deleted;
}

}  // namespace

void VertexSearch::SetWindow(double width, double height) {
  radius2 = 0.0005 * (width * width + height * height);
  Reset();
}

void VertexSearch::Reset() {
  lastX = lastY = 0.0;
  visited.clear();
  visitedLabels.clear();
  lastEntryLabel = 0;
  lastReturned = -1;
}

bool VertexIndexAvailable(Database& db) { return EnsureIndex(db); }

FoundVertex FindVertex(Database& db, VertexSearch& search, double x, double y, bool cycle,
                       const LabelSearch& labels) {
  // At most two rounds: the second starts again after every near vertex was visited.
  for (int round = 0; round < 2; ++round) {
    bool fresh = true;
    if (search.lastX == 0.0 && search.lastY == 0.0) {
      search.visited.clear();
      search.visitedLabels.clear();
      search.lastEntryLabel = 0;
    } else {
      const double dx = x - search.lastX;
      const double dy = y - search.lastY;
      if (dx * dx + dy * dy < 0.333 * search.radius2) {
        fresh = false;
      } else {
        search.visited.clear();
        search.visitedLabels.clear();
        search.lastEntryLabel = 0;
        search.lastReturned = -1;
      }
    }

    // A drawing mode's snap in the middle of a cycle takes the selected vertex.
    const bool listEmpty = search.visited.empty() && search.visitedLabels.empty();
    if (!cycle && !fresh && !listEmpty) {
      if (search.lastEntryLabel != 0) return Found(db, -2, search.lastEntryLabel);
      return Found(db, search.visited.back(), 0);
    }

    Candidate best =
        fresh ? NearestVertex(db, x, y, search.radius2, search.useIndex)
              : NearestUnvisited(db, x, y, search.radius2, search.visited, search.useIndex);
    NearerLabel(db, x, y, labels, search.visitedLabels, best);

    const bool accepted = listEmpty ? best.r2 < search.radius2 : best.r2 < 0.2 * search.radius2;
    if (accepted && best.vid != -1) {
      if (cycle) {
        if (listEmpty) {
          search.lastX = x;
          search.lastY = y;
        }
        if (best.vid == -2) {
          search.visitedLabels.push_back(best.label);
          search.lastEntryLabel = best.label;
        } else {
          search.visited.push_back(best.vid);
          search.lastEntryLabel = 0;
        }
        search.lastReturned = best.vid;
      }
      return Found(db, best.vid, best.label);
    }
    if (!cycle || listEmpty) return {};
    // Every near vertex has been visited: the round begins again.
    search.lastReturned = search.lastEntryLabel != 0 ? -2 : search.visited.back();
    search.visited.clear();
    search.visitedLabels.clear();
    search.lastEntryLabel = 0;
  }
  return {};
}

}  // namespace tarno

namespace tarno {

std::int64_t Resequence(Database& db, std::int64_t pid, std::int64_t vid) {
  Transaction tx(db);
  std::int64_t result = -1;
  std::int64_t seq = 0;
  Statement up = db.PrepareRaw("update Vertices set Seq = ? where VID = ?");
  for (const Vertex& v : LoadVertices(db, pid)) {
    seq += 100;
    up.Reset();
    up.Bind(1, seq).Bind(2, v.VID);
    up.Run();
    if (v.VID == vid) result = seq;
  }
  tx.Commit();
  return result;
}

EditResult Refine(Database& db, ElementKind kind, std::int64_t vid, UserInterface& ui) {
  EditResult r;
  if (!IsString(kind)) return r;
  RunOperation(ui, "ElemRefineString", [&] {
    const std::optional<Vertex> selected = LoadVertex(db, vid);
    const std::vector<Vertex> vs =
        selected ? LoadVertices(db, selected->PID) : std::vector<Vertex>{};
    const int index = IndexOf(vs, vid);
    if (index < 0) {
      ui.MessageBox(kInternalErrorTitle, {kVertexNotFound}, Buttons::OK, Icon::Critical);
      return;
    }
    const std::int64_t pid = selected->PID;
    const auto edge = RefinedEdge(vs, index, IsClosed(db, kind, pid));
    if (!edge) return;  // a string of one vertex has no edge to split
    Transaction tx(db);
    SplitEdge(db, pid, vs, edge->first, edge->second);
    r.strings.push_back(pid);
    if (SharesEdges(kind)) {
      // The same edge of a neighbouring element: the vertex coincident with the
      // selected one whose neighbour coincides with the other end of the edge.
      const Vertex& other = vs[edge->first == index ? edge->second : edge->first];
      for (const Vertex& c : CoincidentVertices(db, kind, pid, selected->X, selected->Y)) {
        if (Contains(r.strings, c.PID)) continue;
        const std::vector<Vertex> ns = LoadVertices(db, c.PID);
        const int at = IndexOf(ns, c.VID);
        const int n = static_cast<int>(ns.size());
        const bool closed = IsClosed(db, kind, c.PID);
        for (int step : {1, -1}) {
          int next = at + step;
          if (next < 0 || next >= n) {
            if (!closed || n < 3) continue;
            next = (next + n) % n;
          }
          if (!SamePlace(ns[next], other)) continue;
          SplitEdge(db, c.PID, ns, at, next);
          r.strings.push_back(c.PID);
          r.redrawAll = true;
          break;
        }
      }
    }
    tx.Commit();
    r.done = true;
    r.invalidatesSolution = ActsOnFlow(kind);
    if (kind == ElementKind::FluxLine)
      ui.MessageBox(kPleaseNoteTitle, {kFluxRefineNote}, Buttons::OK, Icon::Information);
  });
  return r;
}

EditResult MoveVertex(Database& db, VertexSearch& search, ElementKind kind, std::int64_t vid,
                      double x, double y, UserInterface& ui) {
  EditResult r;
  RunOperation(ui, "ElemMoveVertex", [&] {
    Transaction tx(db);
    const Geometry geometry = Info(kind).geometry;
    if (geometry == Geometry::Row) {
      Statement st = db.PrepareRaw("update TextLabels set X = ?, Y = ? where rowid = ?");
      st.Bind(1, x).Bind(2, y).Bind(3, vid);
      st.Run();
      if (db.Changes() == 0) return;
      r.points.push_back(vid);
    } else if (geometry == Geometry::Model) {
      Statement st = db.PrepareRaw("update Vertices set X = ?, Y = ? where PID = -10");
      st.Bind(1, x).Bind(2, y);
      st.Run();
      Statement m = db.PrepareRaw("update Model set UNIFLOWRefX = ?, UNIFLOWRefY = ?");
      m.Bind(1, x).Bind(2, y);
      m.Run();
      r.redrawAll = true;
    } else {
      const std::optional<Vertex> old = LoadVertex(db, vid);
      if (!old) return;
      double nx = x, ny = y;
      if (Snaps(kind)) {
        // Dropped on another vertex of a string of its kind: it takes that place.
        const FoundVertex f = FindVertex(db, search, x, y, false);
        if (f.vid > 0 && f.vid != vid && StringOfKind(db, kind, f.vertex.PID)) {
          nx = f.vertex.X;
          ny = f.vertex.Y;
        }
      }
      if (kind == ElementKind::Domain) {
        const std::vector<std::string> refusal = DomainRefusal(db, old->PID, nx, ny);
        if (!refusal.empty()) {
          ui.MessageBox(kReEnterTitle, refusal, Buttons::OK, Icon::Exclamation);
          return;
        }
      }
      std::vector<Vertex> moving{*old};
      if (SharesEdges(kind))
        for (const Vertex& c : CoincidentVertices(db, kind, old->PID, old->X, old->Y))
          moving.push_back(c);
      Statement st = db.PrepareRaw("update Vertices set X = ?, Y = ? where VID = ?");
      for (const Vertex& v : moving) {
        st.Reset();
        st.Bind(1, nx).Bind(2, ny).Bind(3, v.VID);
        st.Run();
        if (geometry == Geometry::Point)
          AddOnce(r.points, v.VID);
        else
          AddOnce(r.strings, v.PID);
      }
      r.redrawAll = moving.size() > 1 || kind == ElementKind::Domain;
    }
    tx.Commit();
    r.done = true;
    r.invalidatesSolution = ActsOnFlow(kind);
  });
  return r;
}

EditResult DeleteElements(Database& db, ElementKind kind, std::int64_t vid, UserInterface& ui) {
  EditResult r;
  RunOperation(ui, "ElemDeleteElements", [&] {
    const Geometry geometry = Info(kind).geometry;
    if (kind == ElementKind::UniformFlow) {
      if (!ui.Question(kConfirmTitle, {kRemoveUniformFlow})) {
        ui.MessageBox(kCanceledTitle, {kUniformFlowInUse}, Buttons::OK, Icon::Information);
        return;
      }
      RemoveUniformFlow(db);
      r.done = r.removedElement = r.selectionGone = r.redrawAll = true;
      r.invalidatesSolution = true;
      return;
    }
    if (geometry == Geometry::Point || geometry == Geometry::Row) {
      const char* question = kind == ElementKind::TestPoint  ? kDeleteTestPoint
                             : kind == ElementKind::Particle ? kDeleteParticle
                             : kind == ElementKind::Text     ? kDeleteLabel
                                                             : kDeleteElement;
      if (!ui.Question(kConfirmTitle, {question})) return;
      Remove(db, kind, vid);
      r.points.push_back(vid);
    } else {
      const std::optional<Vertex> v = LoadVertex(db, vid);
      if (!v) return;
      const std::int64_t pid = v->PID;
      LSConfirm confirm;
      confirm.Message = kind == ElementKind::Domain     ? kDeleteDomain
                        : kind == ElementKind::Capzone  ? kDeleteCapzone
                        : kind == ElementKind::FluxLine ? kDeleteFluxLine
                                                        : kDeleteString;
      ui.ShowModal(confirm);
      if (confirm.Result == LSConfirm::kVertex) {
        Transaction tx(db);
        Statement st = db.PrepareRaw("delete from Vertices where VID = ?");
        st.Bind(1, vid);
        st.Run();
        r.strings.push_back(pid);
        if (kind == ElementKind::Linesink)
          r.removedElement = CheckPhantomLinesinkVertices(db, pid, ui);
        else if (kind == ElementKind::Barrier)
          r.removedElement = CheckPhantomNoFlowVertices(db, pid, ui);
        tx.Commit();
        if (r.removedElement) r.redrawAll = true;
      } else if (confirm.Result == LSConfirm::kEntireString) {
        Remove(db, kind, pid);
        r.strings.push_back(pid);
        r.removedElement = true;
      } else {
        return;
      }
      if (kind == ElementKind::FluxLine)
        ui.MessageBox(kPleaseNoteTitle, {kFluxDeleteNote}, Buttons::OK, Icon::Information);
    }
    r.done = r.selectionGone = true;
    if (geometry != Geometry::String && geometry != Geometry::Polygon) r.removedElement = true;
    r.invalidatesSolution = ActsOnFlow(kind);
    ui.Activity(kSelectActivity);
    ui.Feedback(kSelectFeedback);
  });
  return r;
}

int CheckPolyVertices(Database& db, std::int64_t pid, UserInterface& ui) {
  int removed = 0;
  RunOperation(ui, "ElemCheckPolyVertices", [&] {
    const std::vector<Vertex> vs = LoadVertices(db, pid);
    if (vs.size() < 2) return;
    double length = 0.0;
    for (std::size_t i = 1; i < vs.size(); ++i)
      length += std::hypot(vs[i].X - vs[i - 1].X, vs[i].Y - vs[i - 1].Y);
    const double mean = length / static_cast<double>(vs.size() - 1);
    Transaction tx(db);
    Statement del = db.PrepareRaw("delete from Vertices where VID = ?");
    const Vertex* kept = &vs.front();
    for (std::size_t i = 1; i < vs.size(); ++i) {
      if (std::hypot(vs[i].X - kept->X, vs[i].Y - kept->Y) < 0.1 * mean) {
        ui.MessageBox(kTooCloseTitle, {kTooClose}, Buttons::OK, Icon::Exclamation);
        del.Reset();
        del.Bind(1, vs[i].VID);
        del.Run();
        ++removed;
      } else {
        kept = &vs[i];
      }
    }
    tx.Commit();
  });
  return removed;
}

bool CheckPhantomLinesinkVertices(Database& db, std::int64_t pid, UserInterface& ui) {
  return CheckPhantom(db, ElementKind::Linesink, pid, ui, "ElemCheckPhantomLinesinkVertices",
                      kPhantomLinesink);
}

bool CheckPhantomNoFlowVertices(Database& db, std::int64_t pid, UserInterface& ui) {
  return CheckPhantom(db, ElementKind::Barrier, pid, ui, "ElemCheckPhantomNoFlowVertices",
                      kPhantomNoFlow);
}

bool PointInPolygon(Database& db, std::int64_t pid, double x, double y) {
  const std::vector<Vertex> vs = LoadVertices(db, pid);
  if (vs.size() < 3) return false;
  for (const Vertex& v : vs)
    if (v.X == x && v.Y == y) return false;
  double sum = 0.0;
  for (std::size_t i = 0; i < vs.size(); ++i) {
    const Vertex& a = vs[i];
    const Vertex& b = vs[(i + 1) % vs.size()];
    double angle = std::atan2(b.Y - y, b.X - x) - std::atan2(a.Y - y, a.X - x);
    while (angle > std::numbers::pi) angle -= 2 * std::numbers::pi;
    while (angle < -std::numbers::pi) angle += 2 * std::numbers::pi;
    sum += angle;
  }
  return std::fabs(sum) > 1.0;
}

std::optional<double> PolygonArea(Database& db, std::int64_t pid, UserInterface& ui) {
  const std::vector<Vertex> vs = LoadVertices(db, pid);
  if (vs.size() < 3) {
    ui.MessageBox(kNotEnoughPointsTitle, {kNotEnoughPoints}, Buttons::OK, Icon::Exclamation);
    return std::nullopt;
  }
  double area = 0.0;
  for (std::size_t i = 0; i < vs.size(); ++i) {
    const Vertex& a = vs[i];
    const Vertex& b = vs[(i + 1) % vs.size()];
    area += (b.X - a.X) * (a.Y + b.Y);
  }
  return 0.5 * area;
}

double CheckVertices(Database& db, double x, double y, double tolerance,
                     const std::string& logFile) {
  if (!(tolerance > 0.0)) return x;  // no box to leave
  const double start = x;
  Statement st = db.PrepareRaw(
      "select 1 from Vertices where X < ?1 + ?3 and X > ?1 - ?3 and Y < ?2 + ?3 and Y > ?2 - ?3 "
      "limit 1");
  for (;;) {
    st.Reset();
    st.Bind(1, x).Bind(2, y).Bind(3, tolerance);
    if (!st.Step()) break;
    const double next = x + tolerance;
    if (next == x) break;  // the tolerance is below the precision of x
    x = next;
  }
  if (x != start && !logFile.empty()) {
    std::ofstream log(logFile, std::ios::binary | std::ios::app);
    if (!log) throw Error("Cannot write the log file \"" + logFile + "\"");
    log << "X:" << GeneralNumber(start) << "\tY:" << GeneralNumber(y)
        << "\t|\tX:" << GeneralNumber(x) << "\tY:" << GeneralNumber(y) << "\r\n";
  }
  return x;
}

}  // namespace tarno
