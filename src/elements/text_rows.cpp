#include "elements/text_rows.h"

#include <string>
#include <vector>

#include "core/error.h"
#include "elements/element_store.h"
#include "elements/kind.h"

namespace tarno {

std::optional<std::int64_t> FindPointVertexAt(Database& db, double x, double y) {
  Statement st =
      db.PrepareRaw("select VID from Vertices where PID = -1 and X = ?1 and Y = ?2 order by VID");
  st.Bind(1, x).Bind(2, y);
  if (!st.Step()) return std::nullopt;
  return st.GetInt64(0);
}

void InsertPointOnVertex(Database& db, Element& e, std::int64_t vid) {
  const KindInfo& info = Info(e.kind);
  if (info.geometry != Geometry::Point || info.table.empty())
    throw InvalidArgumentError(std::string(info.name) + " is not a point element");
  const std::optional<Vertex> vertex = LoadVertex(db, vid);
  if (!vertex) throw InvalidArgumentError("There is no vertex " + std::to_string(vid));
  const std::string table(info.table);
  Transaction tx(db);
  {
    Statement taken = db.PrepareRaw("select 1 from " + table + " where VID = ?1");
    taken.Bind(1, vid);
    if (taken.Step())
      throw InvalidArgumentError("Vertex " + std::to_string(vid) + " already has a row in " +
                                 table);
  }
  e.row.Set("VID", vid);
  std::string names, marks;
  std::vector<const Value*> values;
  for (const auto& [name, value] : e.row.Fields()) {
    if (!names.empty()) {
      names += ", ";
      marks += ", ";
    }
    names += "\"" + name + "\"";
    marks += "?";
    values.push_back(&value);
  }
  Statement st = db.PrepareRaw("insert into " + table + " (" + names + ") values (" + marks + ")");
  int i = 1;
  for (const Value* v : values) st.Bind(i++, *v);
  st.Run();
  tx.Commit();
  e.key = vid;
  e.vertices = {*vertex};
}

}  // namespace tarno
