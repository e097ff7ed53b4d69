// Fixture of the solve controller tests: a project in a temporary folder, a
// program folder with small shell scripts standing in for tarno1 and contour, and
// the context of a solve wired to the scripted port.
#pragma once

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "core/error_trap.h"
#include "solver/process.h"
#include "solver/solve_controller.h"
#include "solver_fixture.h"

namespace tarno::testing {

class ControllerTest : public SolverProject {
 protected:
  void SetUp() override {
    SolverProject::SetUp();
    bin_ = Dir() / "bin";
    std::filesystem::create_directories(bin_);
  }

  // A program of the program folder: records its arguments and working directory
  // in <name>.args and <name>.cwd (in the working directory), then runs `body`.
  void FakeProgram(const std::string& name, const std::string& body) {
    const auto p = bin_ / name;
    std::ofstream out(p, std::ios::binary | std::ios::trunc);
    out << "#!/bin/sh\necho \"$@\" > " << name << ".args\npwd > " << name << ".cwd\n" << body
        << "\n";
    out.close();
    ::chmod(p.c_str(), 0755);
  }

  // A solver that succeeds: a solution, an empty extract file and the two logs.
  void GoodSolver(const std::string& errorLog = "*\\r\\n", const std::string& extra = "") {
    FakeProgram("tarno1", "printf 'solution' > golden.SOL\n"
                          "printf '* data points\\r\\n! nothing to report\\r\\n' > golden.XTR\n"
                          "printf '" + errorLog + "' > error.log\n"
                          "printf 'Iteration 1\\r\\n' > message.log\n" + extra);
  }

  void Touch(const std::string& name) { std::ofstream(Dir() / name) << "old"; }
  bool Has(const std::string& name) const { return std::filesystem::exists(Dir() / name); }
  std::string Args(const std::string& program) const {
    std::string s = ReadFile(Dir() / (program + ".args"));
    while (!s.empty() && (s.back() == '\n' || s.back() == '\r')) s.pop_back();
    return s;
  }

  SolveContext& Context() {
    settings_ = LoadSettings();
    ctx_.projectPath = ProjectPath();
    ctx_.settings = &settings_;
    ctx_.state = &state_;
    ctx_.ui = &ui_;
    ctx_.waiter = &waiter_;
    ctx_.programDirectory = bin_;
    ctx_.window = MapWindow{0, 200, 100, 0};
    ctx_.hooks.enableMenu = [this](const std::string& entry, bool on) {
      menus_.push_back(entry + (on ? "+" : "-"));
    };
    ctx_.hooks.redraw = [this] { ++redraws_; };
    ctx_.hooks.closeSearch = [this] { ++searchClosed_; };
    return ctx_;
  }

  // A new project has no head-specified element: the first full write warns.
  void ExpectReferenceHeadWarning() { ui_.ExpectMessageTitled("Warning"); }

  std::filesystem::path bin_;
  ModelSettings settings_;
  SolutionState state_;
  ScriptedUserInterface ui_;
  BlockingWaiter waiter_;
  SolveContext ctx_;
  std::vector<std::string> menus_;
  int redraws_ = 0;
  int searchClosed_ = 0;
};

}  // namespace tarno::testing
