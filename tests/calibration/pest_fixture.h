// A project with scenario tags of every kind and test points of two types, shared by
// the PEST and UCODE tests.
//
//   Model:  conductivity 10 tagged "Kaq", base -50 tagged "Bot"
//   I1:     conductivity 5 tagged "kin", recharge 0 tagged "rch1"
//   I2:     conductivity 7 tagged "KIN" (the same tag), recharge -0.001 tagged "Rch2"
//   I3:     conductivity 9 tagged "kin" but with its switch off
//   S1:     resistance 2 tagged "res"; S2: resistance 4, no scenario
//   TP1:    piezometer, 12.5, weight 1;  TG1: gage, 300, weight 0.5;
//   TP2:    piezometer, 11.25, weight 2
#pragma once

#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "solver/command_file.h"
#include "solver/model_settings.h"
#include "solver/solve_controller.h"
#include "support/project_fixture.h"
#include "support/scripted_ui.h"

namespace tarno::testing {

class PestProject : public ScratchProject {
 protected:
  void SetUp() override {
    ScratchProject::SetUp();
    db_.Execute("update Project set TARNOBaseName='m', TARNOBasePath='" + dir_.string() + "'");
  }

  void BuildScenarios() {
    db_.Execute(
        "update Model set chkScenarioHydCond=True, ScenHydCond='Kaq', AQHydCond=10, "
        "chkScenarioBaseElev=True, ScenBaseElev='Bot', AQBase=-50");
    Inhomogeneity("I1", 0, 5, "kin", true, 0, "rch1", true);
    Inhomogeneity("I2", 100, 7, "KIN", true, -0.001, "Rch2", true);
    Inhomogeneity("I3", 200, 9, "kin", false, 0.5, "__NONE__", false);
    Add(ElementKind::Linesink, "S1", At({{0, 500}, {100, 500}}), [](Row& r) {
      r.Set("Resistance", 2.0);
      r.Set("chkScenario", true);
      r.Set("ScenResistance", "res");
    });
    Add(ElementKind::Linesink, "S2", At({{0, 600}, {100, 600}}),
        [](Row& r) { r.Set("Resistance", 4.0); });
    TestPoint("TP1", "Piezometer", 12.5, 1.0);
    TestPoint("TG1", "Gage", 300, 0.5);
    TestPoint("TP2", "Piezometer", 11.25, 2.0);
  }

  void Inhomogeneity(const std::string& label, double x, double k, const std::string& kTag,
                     bool kOn, double recharge, const std::string& rTag, bool rOn) {
    Add(ElementKind::Inhomogeneity, label, At({{x, 0}, {x + 50, 0}, {x + 50, 50}, {x, 50}}),
        [&](Row& r) {
          r.Set("HydCond", k);
          r.Set("ScenHydCond", kTag);
          r.Set("chkScenarioHydCond", kOn);
          r.Set("Recharge", recharge);
          r.Set("ScenRecharge", rTag);
          r.Set("chkScenarioRecharge", rOn);
        });
  }

  void TestPoint(const std::string& label, const std::string& type, double observed,
                 double weight) {
    Add(ElementKind::TestPoint, label, Point(10 + observed, 20), [&](Row& r) {
      r.Set("Type", type);
      if (type == "Gage")
        r.Set("ObsStreamFlow", observed);
      else
        r.Set("ObsHead", observed);
      r.Set("PESTWeight", weight);
      r.Set("UCODEWeight", weight * 3);
    });
  }

  double ModelValue(const std::string& field) {
    Statement st = db_.Prepare("select " + field + " from Model");
    st.Step();
    return st.GetDouble(0);
  }
  double ElementValue(ElementKind kind, const std::string& label, const std::string& field) {
    auto e = FindByLabel(db_, kind, label);
    EXPECT_TRUE(e.has_value()) << label;
    return e ? e->row.Number(field) : -1;
  }

  // A solve context on the project with the settings read from it.
  SolveContext Context(ScriptedUserInterface& ui) {
    settings_.Load(db_);
    SolveContext ctx;
    ctx.projectPath = ProjectPath();
    ctx.settings = &settings_;
    ctx.state = &state_;
    ctx.ui = &ui;
    ctx.programDirectory = dir_ / "programs";
    ctx.window = {-100, 400, 700, -100};
    return ctx;
  }

  static std::string Read(const std::filesystem::path& p) {
    std::ifstream in(p, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), {});
  }
  static std::string Golden(const std::string& name) {
    return Read(std::filesystem::path(TARNO_TEST_DATA_DIR) / name);
  }
  static void Write(const std::filesystem::path& p, const std::string& text) {
    std::ofstream out(p, std::ios::binary | std::ios::trunc);
    out << text;
  }

 public:
  static std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    std::string line;
    while (std::getline(in, line)) {
      if (!line.empty() && line.back() == '\r') line.pop_back();
      lines.push_back(line);
    }
    return lines;
  }

 protected:
  ModelSettings settings_;
  SolutionState state_;
};

}  // namespace tarno::testing
