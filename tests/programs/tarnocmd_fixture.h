// A project in a temporary folder, made by `tarnocmd new`, and a runner of tarnocmd
// on it, for the tests that solve with the programs of the build.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "program_test_util.h"

namespace tarno::test {

class TarnocmdProject : public ::testing::Test {
 protected:
  // Creates <tmp>/<base>.trn with the solver files beside it.
  void MakeProject(const std::string& base) {
    temp_.emplace("tarno-solve");
    dir_ = temp_->Path();
    project_ = (dir_ / (base + ".trn")).string();
    const RunResult r = Run({"new", project_, "--yes", "--base-name", base});
    ASSERT_EQ(r.status, 0) << r.err;
  }
  void TearDown() override { temp_.reset(); }

  // Runs tarnocmd in the project's folder; `env` ("NAME=value") is added to its
  // environment.
  RunResult Run(const std::vector<std::string>& args, const std::vector<std::string>& env = {}) {
    RunOptions options;
    options.cwd = dir_;
    options.env = env;
    options.env.push_back("TARNO_CONFIG_DIR=" + (dir_ / "config").string());
    return RunProgram("tarnocmd", args, options);
  }

  std::optional<TempDir> temp_;
  std::filesystem::path dir_;
  std::string project_;
};

}  // namespace tarno::test
