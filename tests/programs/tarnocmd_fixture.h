// A project in a temporary folder, made by `tarnocmd new`, and a runner of tarnocmd
// on it, for the tests that solve with the programs of the build.
#pragma once

#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "program_test_util.h"

namespace tarno::test {

class TarnocmdProject : public ::testing::Test {
 protected:
  // Creates <tmp>/<base>.trn with the solver files beside it.
  void MakeProject(const std::string& base) {
    std::string tmpl = (std::filesystem::temp_directory_path() / "tarno-solve-XXXXXX").string();
    ASSERT_NE(::mkdtemp(tmpl.data()), nullptr);
    dir_ = tmpl;
    project_ = (dir_ / (base + ".trn")).string();
    const RunResult r = Run({"new", project_, "--yes", "--base-name", base});
    ASSERT_EQ(r.status, 0) << r.err;
  }
  void TearDown() override {
    std::error_code ec;
    if (!dir_.empty()) std::filesystem::remove_all(dir_, ec);
  }

  // Runs tarnocmd in the project's folder; `env` is put before the command.
  RunResult Run(const std::vector<std::string>& args, const std::string& env = "") {
    std::string cmd = "cd " + Quote(dir_.string()) + " && TARNO_CONFIG_DIR=" +
                      Quote((dir_ / "config").string()) + " " + env + " " +
                      Quote(std::string(TARNO_BIN_DIR) + "/tarnocmd");
    for (const auto& a : args) cmd.append(" ").append(Quote(a));
    cmd += " >" + Quote((dir_ / "out.txt").string()) + " 2>" + Quote((dir_ / "err.txt").string());
    const int raw = std::system(cmd.c_str());
    RunResult r;
    r.status = WIFEXITED(raw) ? WEXITSTATUS(raw) : -1;
    r.out = ReadAll(dir_ / "out.txt");
    r.err = ReadAll(dir_ / "err.txt");
    return r;
  }

  std::filesystem::path dir_;
  std::string project_;
};

}  // namespace tarno::test
