#pragma once
// Shared fixture of the store tests: a fresh temporary folder per test.

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

#include "support/temp_dir.h"

namespace tarno::test {

class TempDirTest : public ::testing::Test {
protected:
    void SetUp() override {
        temp_.emplace("tarno-store");
        dir_ = temp_->Path();
    }
    void TearDown() override { temp_.reset(); }
    std::filesystem::path Path(const std::string& name) const { return dir_ / name; }

    std::optional<TempDir> temp_;
    std::filesystem::path dir_;
};

}  // namespace tarno::test
