// The vertex operations shared by the element kinds. See vertex_edit.h.
#include "elements/vertex_edit.h"

#include <sqlite3.h>

#include <algorithm>
#include <cmath>

#include "elements/element_store.h"

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
