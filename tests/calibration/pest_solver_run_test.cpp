// One model run as PEST makes it, with the solver of the build: the parameter values
// put into the template's fields (each field filled to its width, as PEST does), the
// model command of the control file run, and the observation read from <base>.XTR by
// the instruction file's rules. A changed conductivity must change the head read.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <map>

#include "calibration/pest_files.h"
#include "pest_fixture.h"

namespace tarno::testing {
namespace {

namespace fs = std::filesystem;

// The template with every field replaced by its value, right-aligned in the field.
std::string FillTemplate(const std::string& tpl, const std::map<std::string, double>& values) {
  std::string out;
  bool first = true;
  for (const std::string& line : PestProject::Lines(tpl)) {
    if (first) {  // "ptf !"
      first = false;
      continue;
    }
    std::string l = line;
    std::size_t at = 0;
    while ((at = l.find('!', at)) != std::string::npos) {
      const std::size_t end = l.find('!', at + 1);
      const std::size_t width = end - at + 1;
      std::string name = l.substr(at + 1, end - at - 1);
      name.erase(0, name.find_first_not_of(' '));
      name.erase(name.find_last_not_of(' ') + 1);
      const double v = values.at(name);
      std::string number;
      for (int digits = 15; digits > 0; --digits) {
        char buffer[64];
        std::snprintf(buffer, sizeof buffer, "%.*g", digits, v);
        number = buffer;
        if (number.size() <= width) break;
      }
      number.insert(0, width - number.size(), ' ');
      l.replace(at, width, number);
      at += width;
    }
    out += l + "\r\n";
  }
  return out;
}

// The instruction file's rules: after the first line holding "*", one line per
// observation, the value in the given columns (1-based, inclusive).
std::vector<double> ReadObservations(const std::string& xtr, const std::string& ins) {
  const auto x = PestProject::Lines(xtr);
  const auto rules = PestProject::Lines(ins);
  std::size_t line = 0;
  while (line < x.size() && x[line].find('*') == std::string::npos) ++line;
  std::vector<double> values;
  for (std::size_t r = 2; r < rules.size(); ++r) {
    ++line;
    const std::string& rule = rules[r];
    const std::size_t colon = rule.rfind(':');
    const std::size_t bracket = rule.find(']');
    const int from = std::stoi(rule.substr(bracket + 1, colon - bracket - 1));
    const int to = std::stoi(rule.substr(colon + 1));
    if (line >= x.size() || static_cast<int>(x[line].size()) < to) {
      ADD_FAILURE() << "no record for " << rule;
      return values;
    }
    values.push_back(std::stod(x[line].substr(from - 1, to - from + 1)));
  }
  return values;
}

class PestSolverRunTest : public PestProject {};

TEST_F(PestSolverRunTest, TheTemplateFilledAsPestFillsItSolvesAndTheObservationIsRead) {
  const fs::path bin = TARNO_BIN_DIR;
  if (!fs::exists(bin / "tarno1")) GTEST_SKIP() << "the solver is not built";
  db_.Execute("update Model set chkScenarioHydCond=True, ScenHydCond='kaq', AQHydCond=10, "
              "AQBase=0, AQThickness=50");
  Add(ElementKind::Linesink, "River", At({{0, -500}, {0, 500}}), [](Row& r) {
    r.Set("HeadSpecified", true);
    r.Set("StartingHead", 20.0);
    r.Set("EndingHead", 20.0);
    r.Set("Resistance", 1.0);
    r.Set("chkScenario", true);
    r.Set("ScenResistance", "res");
  });
  // A well of discharge 500 (Head holds the discharge of a discharge-specified well).
  Add(ElementKind::Well, "W1", Point(300, 0), [](Row& r) { r.Set("Head", 500.0); });
  TestPoint("TP1", "Piezometer", 18, 1);
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled("Write PEST");
  SolveContext ctx = Context(ui);
  ctx.programDirectory = bin;
  ctx.window = {-600, 600, 600, -600};
  WritePestFiles(ctx, nullptr);
  ui.Verify();

  auto run = [&](double k) {
    Write(dir_ / "m.DAT", FillTemplate(Read(dir_ / "m.tpl"), {{"kaq", k}, {"res", 1.0}}));
    fs::remove(dir_ / "m.XTR");
    const std::string cmd = "cd '" + dir_.string() + "' && ./T-PEST.sh > run.txt 2>&1";
    EXPECT_EQ(std::system(cmd.c_str()), 0) << Read(dir_ / "run.txt");
    const auto values = ReadObservations(Read(dir_ / "m.XTR"), Read(dir_ / "m.ins"));
    EXPECT_EQ(values.size(), 1u);
    return values.empty() ? 0.0 : values[0];
  };
  const double h10 = run(10);
  const double h40 = run(40);
  // The well draws the head down below the river's; a larger conductivity less so.
  EXPECT_LT(h10, 20.0);
  EXPECT_GT(h10, 0.0);
  EXPECT_GT(h40, h10);
  EXPECT_LT(h40, 20.0);
}

}  // namespace
}  // namespace tarno::testing
