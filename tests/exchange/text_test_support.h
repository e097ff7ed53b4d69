// What the tests of the text element files share: a source and a target project,
// the examples loaded into a project, and elements written as comparable lines.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "core/format.h"
#include "core/text.h"
#include "elements/element_store.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/temp_dir.h"

namespace tarno::testing {

inline void LoadExampleSql(Database& db, const std::string& name) {
  std::ifstream in(std::string(TARNO_SOURCE_DIR) + "/examples/" + name);
  ASSERT_TRUE(in) << name;
  std::stringstream sql;
  sql << in.rdbuf();
  db.ExecuteRaw(sql.str());
}

inline std::string ValueText(const Value& v) {
  if (const auto* s = std::get_if<std::string>(&v))
    return std::string(1, '\'').append(*s).append(1, '\'');
  if (const auto* i = std::get_if<std::int64_t>(&v)) return std::to_string(*i);
  if (const auto* d = std::get_if<double>(&v)) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%.17g", *d);
    return buf;
  }
  return "null";
}

// One element as a line: the label, the chosen fields (all but the keys when
// `fields` is empty) and the vertices' X and Y in order. A line-sink string's
// routing link is written as the label of the string it links to and the place of
// the linked vertex in it, since keys differ from project to project.
inline std::string ElementLine(Database& db, const Element& e,
                               const std::vector<std::string>& fields = {}) {
  std::string line = e.Label() + " |";
  for (const auto& [name, value] : e.row.Fields()) {
    if (EqualsIgnoreCase(name, "PID") || EqualsIgnoreCase(name, "VID")) continue;
    if (!fields.empty() && std::none_of(fields.begin(), fields.end(), [&](const std::string& f) {
          return EqualsIgnoreCase(f, name);
        }))
      continue;
    if (EqualsIgnoreCase(name, "RoutePID") || EqualsIgnoreCase(name, "RouteVID")) continue;
    line += " " + name + "=" + ValueText(value);
  }
  if (e.kind == ElementKind::Linesink && e.row.Integer("RoutePID") != 0) {
    const auto target = Load(db, ElementKind::Linesink, e.row.Integer("RoutePID"));
    line += " route=" + (target ? target->Label() : std::string("?"));
    if (target)
      for (std::size_t i = 0; i < target->vertices.size(); ++i)
        if (target->vertices[i].VID == e.row.Integer("RouteVID")) line += "@" + std::to_string(i);
  }
  line += " |";
  for (const Vertex& v : e.vertices) line += " " + ValueText(v.X) + "," + ValueText(v.Y);
  return line;
}

// The lines of every element of `kind`, sorted.
inline std::vector<std::string> ElementLines(Database& db, ElementKind kind,
                                             const std::vector<std::string>& fields = {},
                                             bool (*keep)(const Element&) = nullptr) {
  std::vector<std::string> lines;
  for (const Element& e : LoadAll(db, kind))
    if (keep == nullptr || keep(e)) lines.push_back(ElementLine(db, e, fields));
  std::sort(lines.begin(), lines.end());
  return lines;
}

// A source project and an empty target project in one temporary folder.
class TwoProjects : public ::testing::Test {
 protected:
  void SetUp() override {
    DBNewDatabase(dir_ / "source.trn", "Source", true, true);
    DBNewDatabase(dir_ / "target.trn", "Target", true, true);
    source_ = Database::Open(dir_ / "source.trn");
    target_ = Database::Open(dir_ / "target.trn");
  }
  void TearDown() override {
    source_.Close();
    target_.Close();
  }
  std::string File(const std::string& name) const { return (dir_ / name).string(); }
  void WriteText(const std::string& name, const std::string& text) const {
    std::ofstream out(dir_ / name, std::ios::binary);
    out << text;
  }
  std::string ReadText(const std::string& name) const {
    std::ifstream in(dir_ / name, std::ios::binary);
    std::stringstream s;
    s << in.rdbuf();
    return s.str();
  }

  test::TempDir tmp_;
  std::filesystem::path dir_ = tmp_.Path();
  Database source_;
  Database target_;
};

}  // namespace tarno::testing
