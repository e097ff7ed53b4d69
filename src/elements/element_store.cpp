#include "elements/element_store.h"

#include <algorithm>
#include <map>
#include <unordered_map>

#include "core/error.h"
#include "core/text.h"

namespace tarno {

namespace {

std::string Table(ElementKind kind) { return std::string(Info(kind).table); }

// Reads the current row of `st` into a row of the table's fields. Columns the
// statement does not have keep their defaults.
Row ReadRow(const Statement& st, const std::string& table) {
  Row r = Row::Defaults(table);
  std::vector<std::string> names;
  for (const auto& field : r.Fields()) names.push_back(field.first);
  for (const std::string& name : names) {
    const int c = st.FindColumn(name);
    if (c < 0) continue;
    r.Set(name, r.Normalised(name, st.GetValue(c)));
  }
  return r;
}

Vertex ReadVertex(const Statement& st) {
  return {st.GetInt64("VID"), st.GetInt64("PID"), st.GetInt64("Seq"), st.GetDouble("X"),
          st.GetDouble("Y")};
}

std::string KeyColumn(ElementKind kind) {
  const KindInfo& info = Info(kind);
  return info.key.empty() ? std::string("rowid") : std::string(info.key);
}

// Completes the elements read from the element table with their vertices, and
// leaves out the incomplete ones (reported in `skipped`), unless `keepIncomplete`
// keeps them with the vertices they have.
std::vector<Element> Complete(Database& db, ElementKind kind, std::vector<Element> rows,
                              std::vector<SkippedElement>* skipped, bool keepIncomplete) {
  const KindInfo& info = Info(kind);
  if (info.geometry == Geometry::Row) return rows;
  std::vector<Element> out;
  out.reserve(rows.size());
  if (info.geometry == Geometry::Point) {
    // All stand-alone points in one pass: the Vertices table has no index on PID.
    std::unordered_map<std::int64_t, Vertex> points;
    Statement st = db.Prepare("select VID, PID, Seq, X, Y from Vertices where PID < 0");
    while (st.Step()) points.emplace(st.GetInt64(0), ReadVertex(st));
    for (Element& e : rows) {
      const auto it = points.find(e.key);
      if (it == points.end()) {
        if (skipped != nullptr) skipped->push_back({kind, e.Label(), "has no vertex"});
        if (keepIncomplete) out.push_back(std::move(e));
        continue;
      }
      e.vertices = {it->second};
      out.push_back(std::move(e));
    }
    return out;
  }
  std::unordered_map<std::int64_t, std::vector<Vertex>> strings;
  if (rows.size() == 1) {
    strings[rows.front().key] = LoadVertices(db, rows.front().key);
  } else if (!rows.empty()) {
    Statement st = db.Prepare("select VID, PID, Seq, X, Y from Vertices where PID >= 0 order by PID, Seq");
    while (st.Step()) strings[st.GetInt64(1)].push_back(ReadVertex(st));
  }
  for (Element& e : rows) {
    auto it = strings.find(e.key);
    const std::size_t n = it == strings.end() ? 0 : it->second.size();
    // Copied, not moved: the tables without a unique key (flux lines, hydrologic
    // units, protection areas) may hold two rows of one PID.
    if (it != strings.end()) e.vertices = it->second;
    if (static_cast<int>(n) < info.minVertices) {
      if (skipped != nullptr)
        skipped->push_back({kind, e.Label(),
                            n == 0   ? "has no vertices"
                            : n == 1 ? "has 1 vertex"
                                     : "has " + std::to_string(n) + " vertices"});
      if (!keepIncomplete) continue;
    }
    out.push_back(std::move(e));
  }
  return out;
}

std::vector<Element> Query(Database& db, ElementKind kind, const std::string& where,
                           const std::vector<Value>& binds, std::vector<SkippedElement>* skipped,
                           bool keepIncomplete = false) {
  const std::string table = Table(kind);
  const std::string key = KeyColumn(kind);
  Statement st = db.PrepareRaw("select rowid as rowid__, * from " + table + where + " order by " +
                               (Info(kind).key.empty() ? std::string("rowid") : key));
  for (std::size_t i = 0; i < binds.size(); ++i) st.Bind(static_cast<int>(i + 1), binds[i]);
  std::vector<Element> rows;
  while (st.Step()) {
    Element e;
    e.kind = kind;
    e.row = ReadRow(st, table);
    e.key = Info(kind).key.empty() ? st.GetInt64("rowid__") : st.GetInt64(key);
    rows.push_back(std::move(e));
  }
  return Complete(db, kind, std::move(rows), skipped, keepIncomplete);
}

void RequireTable(ElementKind kind) {
  if (Info(kind).table.empty())
    throw InvalidArgumentError(std::string(Info(kind).name) + " has no table of its own");
}

void WriteRow(Database& db, const std::string& table, const Row& row, std::int64_t key,
              const std::string& keyColumn, bool insert) {
  std::string sql;
  std::vector<const Value*> values;
  if (insert) {
    std::string names, marks;
    for (const auto& [name, value] : row.Fields()) {
      if (!names.empty()) {
        names += ", ";
        marks += ", ";
      }
      names += "\"" + name + "\"";
      marks += "?";
      values.push_back(&value);
    }
    sql = "insert into " + table + " (" + names + ") values (" + marks + ")";
  } else {
    std::string sets;
    for (const auto& [name, value] : row.Fields()) {
      if (EqualsIgnoreCase(name, keyColumn)) continue;
      if (!sets.empty()) sets += ", ";
      sets += "\"" + name + "\" = ?";
      values.push_back(&value);
    }
    sql = "update " + table + " set " + sets + " where " + keyColumn + " = ?";
  }
  Statement st = db.PrepareRaw(sql);
  int i = 1;
  for (const Value* v : values) st.Bind(i++, *v);
  if (!insert) st.Bind(i, key);
  st.Run();
}

}  // namespace

std::vector<Element> LoadAll(Database& db, ElementKind kind, std::vector<SkippedElement>* skipped) {
  if (kind == ElementKind::UniformFlow) {
    std::vector<Element> out;
    if (auto u = LoadUniformFlow(db)) out.push_back(std::move(*u));
    return out;
  }
  return Query(db, kind, "", {}, skipped);
}

std::optional<Element> Load(Database& db, ElementKind kind, std::int64_t key) {
  if (kind == ElementKind::UniformFlow) return LoadUniformFlow(db);
  auto found = Query(db, kind, " where " + KeyColumn(kind) + " = ?", {Value{key}}, nullptr);
  if (found.empty()) return std::nullopt;
  return std::move(found.front());
}

std::vector<Element> LoadAllRows(Database& db, ElementKind kind) {
  if (kind == ElementKind::UniformFlow) return LoadAll(db, kind);
  return Query(db, kind, "", {}, nullptr, true);
}

std::optional<Element> LoadRow(Database& db, ElementKind kind, std::int64_t key) {
  if (kind == ElementKind::UniformFlow) return LoadUniformFlow(db);
  auto found = Query(db, kind, " where " + KeyColumn(kind) + " = ?", {Value{key}}, nullptr, true);
  if (found.empty()) return std::nullopt;
  return std::move(found.front());
}

bool AnyElement(Database& db, ElementKind kind) {
  RequireTable(kind);
  Statement st = db.PrepareRaw("select 1 from " + Table(kind) + " limit 1");
  return st.Step();
}

bool AnyElementWhere(Database& db, ElementKind kind, std::string_view field, std::string_view op,
                     const Value& value) {
  RequireTable(kind);
  static const char* const kOps[] = {"=", "<>", ">", ">=", "<", "<="};
  bool known = false;
  for (const char* o : kOps) known = known || op == o;
  if (!known) throw InvalidArgumentError("no comparison " + std::string(op));
  const std::string column = Row::Defaults(Table(kind)).CanonicalName(field);
  if (column.empty())
    throw InvalidArgumentError(Table(kind) + " has no field " + std::string(field));
  Statement st = db.PrepareRaw("select 1 from " + Table(kind) + " where \"" + column + "\" " +
                               std::string(op) + " ? limit 1");
  st.Bind(1, value);
  return st.Step();
}

std::int64_t CountElements(Database& db, ElementKind kind) {
  RequireTable(kind);
  Statement st = db.PrepareRaw("select count(*) from " + Table(kind));
  st.Step();
  return st.GetInt64(0);
}

std::optional<Element> FindByLabel(Database& db, ElementKind kind, std::string_view label) {
  RequireTable(kind);
  const char* column = kind == ElementKind::Text ? "Text" : "Label";
  auto found = Query(db, kind, std::string(" where ") + column + " = ? collate nocase",
                     {Value{std::string(label)}}, nullptr);
  if (found.empty()) return std::nullopt;
  return std::move(found.front());
}

std::optional<ElementKind> OwnerOfString(Database& db, std::int64_t pid) {
  for (const KindInfo& k : ElementKinds()) {
    if (k.geometry != Geometry::String && k.geometry != Geometry::Polygon) continue;
    Statement st = db.PrepareRaw("select 1 from " + std::string(k.table) + " where PID = ?");
    st.Bind(1, pid);
    if (st.Step()) return k.kind;
  }
  return std::nullopt;
}

std::optional<ElementKind> OwnerOfPoint(Database& db, std::int64_t vid) {
  for (const KindInfo& k : ElementKinds()) {
    if (k.geometry != Geometry::Point) continue;
    Statement st = db.PrepareRaw("select 1 from " + std::string(k.table) + " where VID = ?");
    st.Bind(1, vid);
    if (st.Step()) return k.kind;
  }
  return std::nullopt;
}

std::int64_t AddVertex(Database& db, double x, double y, std::int64_t pid, std::int64_t seq) {
  if (seq < 0) {
    // "Next": 100 past the highest number the string has, so that the vertices
    // added click by click rise by 100 and a refine can halve between them.
    Statement last = db.PrepareRaw("select max(Seq) from Vertices where PID = ?");
    last.Bind(1, pid);
    seq = (last.Step() && !last.IsNull(0) ? std::max<std::int64_t>(last.GetInt64(0), 0) : 0) + 100;
  }
  Statement st = db.PrepareRaw("insert into Vertices (PID, Seq, X, Y) values (?, ?, ?, ?)");
  st.Bind(1, pid).Bind(2, seq).Bind(3, x).Bind(4, y);
  st.Run();
  return db.LastInsertId();
}

std::int64_t AddPolygon(Database& db, int closed) {
  Statement st = db.PrepareRaw("insert into Polygons (Closed) values (?)");
  st.Bind(1, closed);
  st.Run();
  return db.LastInsertId();
}

std::vector<Vertex> LoadVertices(Database& db, std::int64_t pid) {
  Statement st =
      db.PrepareRaw("select VID, PID, Seq, X, Y from Vertices where PID = ? order by Seq");
  st.Bind(1, pid);
  std::vector<Vertex> v;
  while (st.Step()) v.push_back(ReadVertex(st));
  return v;
}

std::optional<Vertex> LoadVertex(Database& db, std::int64_t vid) {
  Statement st = db.PrepareRaw("select VID, PID, Seq, X, Y from Vertices where VID = ?");
  st.Bind(1, vid);
  if (!st.Step()) return std::nullopt;
  return ReadVertex(st);
}

std::int64_t Insert(Database& db, Element& e) {
  if (e.kind == ElementKind::UniformFlow) {
    StoreUniformFlow(db, e);
    return 0;
  }
  RequireTable(e.kind);
  const KindInfo& info = Info(e.kind);
  Transaction tx(db);
  switch (info.geometry) {
    case Geometry::Point: {
      if (e.vertices.size() != 1)
        throw InvalidArgumentError(std::string(info.name) + " needs exactly one vertex");
      Vertex& v = e.vertices.front();
      v.PID = -1;
      v.Seq = 0;
      v.VID = AddVertex(db, v.X, v.Y, v.PID, v.Seq);
      e.key = v.VID;
      e.row.Set("VID", e.key);
      WriteRow(db, Table(e.kind), e.row, e.key, "VID", true);
      break;
    }
    case Geometry::String:
    case Geometry::Polygon: {
      int closed = info.geometry == Geometry::Polygon ? 1 : 0;
      if (e.row.Has("Closed")) closed = e.row.Integer("Closed") != 0 ? 1 : 0;
      e.key = AddPolygon(db, closed);
      e.row.Set("PID", e.key);
      std::int64_t seq = 0;
      // One statement for all the vertices: preparing the insert (with the table's
      // checks) costs more than running it.
      Statement vertex = db.PrepareRaw("insert into Vertices (PID, Seq, X, Y) values (?, ?, ?, ?)");
      for (Vertex& v : e.vertices) {
        seq += 100;
        v.PID = e.key;
        v.Seq = seq;
        vertex.Reset();
        vertex.Bind(1, v.PID).Bind(2, v.Seq).Bind(3, v.X).Bind(4, v.Y);
        vertex.Run();
        v.VID = db.LastInsertId();
      }
      WriteRow(db, Table(e.kind), e.row, e.key, "PID", true);
      break;
    }
    case Geometry::Row:
      WriteRow(db, Table(e.kind), e.row, 0, "rowid", true);
      e.key = db.LastInsertId();
      break;
    case Geometry::Model:
      break;
  }
  tx.Commit();
  return e.key;
}

void Update(Database& db, const Element& e) {
  if (e.kind == ElementKind::UniformFlow) {
    StoreUniformFlow(db, e);
    return;
  }
  RequireTable(e.kind);
  const KindInfo& info = Info(e.kind);
  Transaction tx(db);
  WriteRow(db, Table(e.kind), e.row, e.key, KeyColumn(e.kind), false);
  std::int64_t lastSeq = 0;
  for (const Vertex& v : e.vertices) lastSeq = std::max(lastSeq, v.Seq);
  for (const Vertex& v : e.vertices) {
    if (v.VID > 0) {
      Statement st = db.PrepareRaw("update Vertices set X = ?, Y = ? where VID = ?");
      st.Bind(1, v.X).Bind(2, v.Y).Bind(3, v.VID);
      st.Run();
    } else if (info.geometry == Geometry::String || info.geometry == Geometry::Polygon) {
      lastSeq += 100;
      AddVertex(db, v.X, v.Y, e.key, lastSeq);
    }
  }
  tx.Commit();
}

void Remove(Database& db, ElementKind kind, std::int64_t key) {
  if (kind == ElementKind::UniformFlow) {
    RemoveUniformFlow(db);
    return;
  }
  RequireTable(kind);
  const KindInfo& info = Info(kind);
  Transaction tx(db);
  Statement row = db.PrepareRaw("delete from " + Table(kind) + " where " + KeyColumn(kind) + " = ?");
  row.Bind(1, key);
  row.Run();
  if (info.geometry == Geometry::Point) {
    Statement v = db.PrepareRaw("delete from Vertices where VID = ?");
    v.Bind(1, key);
    v.Run();
  } else if (info.geometry == Geometry::String || info.geometry == Geometry::Polygon) {
    Statement v = db.PrepareRaw("delete from Vertices where PID = ?");
    v.Bind(1, key);
    v.Run();
    Statement p = db.PrepareRaw("delete from Polygons where PID = ?");
    p.Bind(1, key);
    p.Run();
  }
  tx.Commit();
}

std::optional<Element> LoadUniformFlow(Database& db) {
  Statement st = db.Prepare("select * from Model");
  if (!st.Step()) throw Error("The Model table has no row");
  if (st.GetInt64("UNIFLOWCompute") == 0) return std::nullopt;
  Element e;
  e.kind = ElementKind::UniformFlow;
  e.row = Row::Defaults("Model", UniformFlowFields());
  for (std::string_view f : UniformFlowFields()) e.row.Set(f, e.row.Normalised(f, st.GetValue(f)));
  Statement v = db.PrepareRaw("select VID, PID, Seq, X, Y from Vertices where PID = -10");
  if (v.Step()) e.vertices = {ReadVertex(v)};
  else e.vertices = {{0, -10, 0, e.row.Number("UNIFLOWRefX"), e.row.Number("UNIFLOWRefY")}};
  return e;
}

void StoreUniformFlow(Database& db, const Element& e) {
  Transaction tx(db);
  std::string sets;
  for (std::string_view f : UniformFlowFields()) {
    if (!sets.empty()) sets += ", ";
    sets += std::string(f) + " = ?";
  }
  Statement st = db.PrepareRaw("update Model set " + sets);
  int i = 1;
  for (std::string_view f : UniformFlowFields()) st.Bind(i++, e.row.Get(f));
  st.Run();
  const double x = e.row.Number("UNIFLOWRefX");
  const double y = e.row.Number("UNIFLOWRefY");
  Statement find = db.PrepareRaw("select VID from Vertices where PID = -10");
  if (find.Step()) {
    Statement up = db.PrepareRaw("update Vertices set X = ?, Y = ? where PID = -10");
    up.Bind(1, x).Bind(2, y);
    up.Run();
  } else {
    AddVertex(db, x, y, -10, 0);
  }
  tx.Commit();
}

void RemoveUniformFlow(Database& db) {
  Transaction tx(db);
  db.ExecuteRaw(
      "update Model set UNIFLOWCompute = 0, UNIFLOWRefX = 0, UNIFLOWRefY = 0, UNIFLOWRefHead = 0, "
      "UNIFLOWGradient = 0, UNIFLOWOrientation = 0; delete from Vertices where PID = -10;");
  tx.Commit();
}

AquiferFrame LoadAquiferFrame(Database& db) {
  Statement st = db.Prepare("select AQBase, AQThickness, ComputeMeters, BasemapMeters from Model");
  if (!st.Step()) throw Error("The Model table has no row");
  AquiferFrame f;
  f.base = st.GetDouble(0);
  f.thickness = Val(st.GetText(1));
  f.computeMeters = st.GetBool(2);
  f.basemapMeters = st.GetBool(3);
  return f;
}

std::string LoadBasePath(Database& db) {
  Statement st = db.Prepare("select TARNOBasePath from Project");
  return st.Step() ? st.GetText(0) : std::string();
}

double LoadAquiferHydCond(Database& db) {
  Statement st = db.Prepare("select AQHydCond from Model");
  if (!st.Step()) throw Error("The Model table has no row");
  return st.GetDouble(0);
}

}  // namespace tarno
