// A scratch project for the element dialog tests: a new project in a temporary
// folder with an aquifer from 10 to 60 and, where asked, an inhomogeneity that
// raises the base to 20 over the square (0,0)-(100,100).
#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "elements/element_store.h"
#include "store/database.h"
#include "store/schema.h"

namespace tarno::testing {

class DialogProject : public ::testing::Test {
 protected:
  void SetUp() override {
    const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
    dir_ = std::filesystem::temp_directory_path() /
           ("tarno_dlg_" + std::string(info->test_suite_name()) + "_" + info->name() + "_" +
            std::to_string(::getpid()));
    std::filesystem::remove_all(dir_);
    std::filesystem::create_directories(dir_);
    DBNewDatabase(dir_ / "m.trn", "Dialog test", true, true);
    db_ = Database::Open(dir_ / "m.trn");
    db_.ExecuteRaw("update Model set AQBase=10, AQThickness='50'");
  }
  void TearDown() override {
    db_.Close();
    std::filesystem::remove_all(dir_);
  }
  void RaiseBaseOverSquare(double base) {
    Element inho =
        NewElement(ElementKind::Inhomogeneity,
                   {{0, 0, 0, 0, 0}, {0, 0, 0, 100, 0}, {0, 0, 0, 100, 100}, {0, 0, 0, 0, 100}});
    inho.row.Set("Label", "raised");
    inho.row.Set("ChangeB", true);
    inho.row.Set("BottomElevation", base);
    Insert(db_, inho);
  }
  void UseFeet() { db_.ExecuteRaw("update Model set ComputeMeters=0, BasemapMeters=0"); }

  std::filesystem::path dir_;
  Database db_;
};

}  // namespace tarno::testing
