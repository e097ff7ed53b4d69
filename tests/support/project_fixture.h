// A scratch project for a test: a new project file in the test's temporary folder,
// open for the test, and elements stored through the element layer. For the suites
// that link the element layer.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "elements/element_store.h"
#include "store/database.h"
#include "store/schema.h"
#include "support/temp_dir.h"

namespace tarno::testing {

class ScratchProject : public ::testing::Test {
 protected:
  void SetUp() override { MakeProject(true, true); }
  void TearDown() override {
    if (db_.IsOpen()) db_.Close();
  }

  // A new project in place of the present one, in metres or feet.
  void MakeProject(bool basemapMeters, bool computeMeters) {
    if (db_.IsOpen()) db_.Close();
    std::filesystem::remove(dir_ / "m.trn");
    DBNewDatabase(dir_ / "m.trn", "Test project", basemapMeters, computeMeters);
    db_ = Database::Open(dir_ / "m.trn");
  }
  std::filesystem::path ProjectPath() const { return dir_ / "m.trn"; }

  static std::vector<Vertex> At(std::initializer_list<std::pair<double, double>> xy) {
    std::vector<Vertex> v;
    for (auto [x, y] : xy) v.push_back({0, 0, 0, x, y});
    return v;
  }
  static std::vector<Vertex> Point(double x, double y) { return {{0, -1, 0, x, y}}; }

  // Stores an element of `kind` with its table's defaults, the label and the
  // vertices; `edit` may set more of the row first.
  template <typename Edit>
  Element Add(ElementKind kind, const std::string& label, std::vector<Vertex> vertices,
              Edit edit) {
    Element e = NewElement(kind, std::move(vertices));
    e.row.Set("Label", label);
    edit(e.row);
    Insert(db_, e);
    return e;
  }
  Element Add(ElementKind kind, const std::string& label, std::vector<Vertex> vertices) {
    return Add(kind, label, std::move(vertices), [](Row&) {});
  }
  // Stores an element and returns it as the project reads it back.
  Element Stored(Element e) {
    Insert(db_, e);
    auto back = Load(db_, e.kind, e.key);
    EXPECT_TRUE(back.has_value());
    return back ? *back : e;
  }

  test::TempDir tmp_;
  std::filesystem::path dir_ = tmp_.Path();
  Database db_;
};

}  // namespace tarno::testing
