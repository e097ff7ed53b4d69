// A full dump of a project file's tables, for tests that compare the file before
// and after an operation row by row.
#pragma once

#include <cstdio>
#include <string>
#include <variant>
#include <vector>

#include "store/database.h"

namespace tarno::test {

// Every row of every table, rowid included, each value with its type and reals
// written exactly (hexadecimal), tables in name order. sqlite_sequence (the
// numbers inserts have used) is left out.
inline std::string DumpTables(Database& db) {
  std::vector<std::string> tables;
  {
    Statement st = db.PrepareRaw(
        "SELECT name FROM main.sqlite_master WHERE type = 'table' AND name <> 'sqlite_sequence' "
        "ORDER BY name");
    while (st.Step()) tables.push_back(st.GetText(0));
  }
  std::string out;
  for (const std::string& t : tables) {
    out += "[" + t + "]\n";
    Statement st = db.PrepareRaw("SELECT rowid, * FROM \"" + t + "\" ORDER BY rowid");
    while (st.Step()) {
      for (int i = 0; i < st.ColumnCount(); ++i) {
        const Value v = st.GetValue(i);
        if (std::holds_alternative<std::monostate>(v)) {
          out += "null";
        } else if (const auto* n = std::get_if<std::int64_t>(&v)) {
          out += "i" + std::to_string(*n);
        } else if (const auto* d = std::get_if<double>(&v)) {
          char buf[64];
          std::snprintf(buf, sizeof buf, "r%a", *d);
          out += buf;
        } else {
          out += "t'" + std::get<std::string>(v) + "'";
        }
        out += "|";
      }
      out += "\n";
    }
  }
  return out;
}

}  // namespace tarno::test
