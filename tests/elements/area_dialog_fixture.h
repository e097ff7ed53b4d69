// A scratch project for the tests of the element dialogs: a new project file in a
// temporary folder, open for the test, and elements built through the element layer.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "elements/element_store.h"
#include "store/database.h"
#include "store/schema.h"

namespace tarno::testing {

class AreaDialogTest : public ::testing::Test {
 protected:
  void SetUp() override { MakeProject(true); }
  void TearDown() override {
    db_.Close();
    std::filesystem::remove_all(dir_);
  }

  // A new project in metres (or in feet) in place of the present one.
  void MakeProject(bool computeMeters) {
    if (db_.IsOpen()) db_.Close();
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = std::filesystem::temp_directory_path() /
           ("tarno_area_dialogs_" + std::string(info->test_suite_name()) + "_" + info->name() +
            "_" + std::to_string(::getpid()));
    std::filesystem::remove_all(dir_);
    std::filesystem::create_directories(dir_);
    DBNewDatabase(dir_ / "m.trn", "Area dialog test", true, computeMeters);
    db_ = Database::Open(dir_ / "m.trn");
  }

  static std::vector<Vertex> At(std::initializer_list<std::pair<double, double>> xy) {
    std::vector<Vertex> v;
    for (auto [x, y] : xy) v.push_back({0, 0, 0, x, y});
    return v;
  }
  static std::vector<Vertex> Square(double x0, double y0, double size) {
    return At({{x0, y0}, {x0, y0 + size}, {x0 + size, y0 + size}, {x0 + size, y0}});
  }

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

  std::filesystem::path dir_;
  Database db_;
};

}  // namespace tarno::testing
