#pragma once
// Shared fixture of the store tests: a fresh temporary folder per test.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>

namespace tarno::test {

class TempDirTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string tmpl = (std::filesystem::temp_directory_path() / "tarno-store-XXXXXX").string();
        char* made = ::mkdtemp(tmpl.data());
        ASSERT_NE(made, nullptr);
        dir_ = made;
    }
    void TearDown() override {
        std::error_code ec;
        std::filesystem::permissions(dir_, std::filesystem::perms::owner_all,
                                     std::filesystem::perm_options::add, ec);
        std::filesystem::remove_all(dir_, ec);
    }
    std::filesystem::path Path(const std::string& name) const { return dir_ / name; }

    std::filesystem::path dir_;
};

}  // namespace tarno::test
