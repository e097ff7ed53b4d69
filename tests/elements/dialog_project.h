// A scratch project for the dialog tests of the element layer: a new project file in
// a temporary folder, open for the test, and small builders of stored elements.
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "elements/element_store.h"
#include "store/schema.h"

namespace tarno::testing {

class ObservationProject : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = std::filesystem::temp_directory_path() /
           ("tarno_dlg_" + std::string(info->test_suite_name()) + "_" + info->name() + "_" +
            std::to_string(::getpid()));
    std::filesystem::remove_all(dir_);
    std::filesystem::create_directories(dir_);
    DBNewDatabase(dir_ / "m.trn", "Dialog test", basemapMeters_, computeMeters_);
    db_ = Database::Open(dir_ / "m.trn");
  }
  void TearDown() override {
    db_.Close();
    std::error_code ec;
    std::filesystem::remove_all(dir_, ec);
  }

  // Stores an element and returns it as the project reads it back.
  Element Stored(Element e) {
    Insert(db_, e);
    auto back = Load(db_, e.kind, e.key);
    EXPECT_TRUE(back.has_value());
    return back ? *back : e;
  }
  static std::vector<Vertex> Square(double x = 0, double y = 0, double size = 100) {
    return {{0, 0, 0, x, y}, {0, 0, 0, x + size, y}, {0, 0, 0, x + size, y + size}};
  }
  static std::vector<Vertex> Point(double x, double y) { return {{0, -1, 0, x, y}}; }

  bool basemapMeters_ = true;
  bool computeMeters_ = true;
  std::filesystem::path dir_;
  Database db_;
};

}  // namespace tarno::testing
