// The PEST files: parameters and observations from the project, the control and
// instruction files against hand-derived files, the model commands, and the whole
// set written for a project with the names of the control file found in the template.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdlib>
#include <set>

#include "calibration/pest_files.h"
#include "pest_fixture.h"

namespace tarno::testing {
namespace {

namespace fs = std::filesystem;

using PestFilesTest = PestProject;

TEST_F(PestFilesTest, ParametersTakeEachTagOnceWithTheFirstRowsValueAndSignedBounds) {
  BuildScenarios();
  const auto p = PestParameters(db_);
  ASSERT_EQ(p.size(), 6u);
  EXPECT_EQ(p[0].group, PestGroup::Kh);
  EXPECT_EQ(p[0].tag, "Kaq");
  EXPECT_TRUE(p[0].logTransform);
  // AQBase -50: the bounds are turned round so that the lower is the lower.
  EXPECT_EQ(p[1].group, PestGroup::Base);
  EXPECT_DOUBLE_EQ(p[1].lower, -500);
  EXPECT_DOUBLE_EQ(p[1].upper, -5);
  // "kin" and "KIN" are one tag; the value is the first row's, and I3's switch is off.
  EXPECT_EQ(p[2].group, PestGroup::Khi);
  EXPECT_EQ(p[2].tag, "kin");
  EXPECT_DOUBLE_EQ(p[2].value, 5);
  // A recharge of zero becomes 1e-25.
  EXPECT_EQ(p[3].tag, "rch1");
  EXPECT_DOUBLE_EQ(p[3].value, 1e-25);
  EXPECT_DOUBLE_EQ(p[3].lower, 1e-26);
  EXPECT_DOUBLE_EQ(p[3].upper, 1e-24);
  EXPECT_EQ(p[4].tag, "Rch2");
  EXPECT_LT(p[4].lower, p[4].upper);
  EXPECT_EQ(p[5].group, PestGroup::Res);
  EXPECT_EQ(p[5].tag, "res");
}

TEST_F(PestFilesTest, NoScenarioUntilATagIsSwitchedOn) {
  EXPECT_FALSE(AnyScenario(db_));
  EXPECT_TRUE(PestParameters(db_).empty());
  // A switch without a real tag is no parameter.
  db_.Execute("update Model set chkScenarioHydCond=True, ScenHydCond='__NONE__'");
  EXPECT_TRUE(PestParameters(db_).empty());
  Add(ElementKind::Linesink, "S1", At({{0, 0}, {1, 0}}), [](Row& r) {
    r.Set("chkScenario", true);
    r.Set("ScenResistance", "r");
  });
  EXPECT_TRUE(AnyScenario(db_));
}

TEST_F(PestFilesTest, ControlAndInstructionFilesMatchTheHandWrittenOnes) {
  BuildScenarios();
  const auto params = PestParameters(db_);
  const auto obs = PestObservations(db_);
  EXPECT_EQ(PestControlText(params, obs, 3, "m", "T-PEST.bat"), Golden("golden.pst"));
  EXPECT_EQ(PestInstructionText(obs), Golden("golden.ins"));
  // Here the control file runs the shell script.
  EXPECT_EQ(PestModelCommandLine(), "./T-PEST.sh");
}

TEST_F(PestFilesTest, WithoutTestPointsTheControlFileHasNoObservations) {
  db_.Execute("update Model set chkScenarioHydCond=True, ScenHydCond='k', AQHydCond=2");
  const auto lines = Lines(PestControlText(PestParameters(db_), PestObservations(db_), 0, "b", "x"));
  EXPECT_EQ(lines[3], "1 0 1 0 0");
  const auto groups = std::find(lines.begin(), lines.end(), "* observation groups");
  ASSERT_NE(groups, lines.end());
  EXPECT_EQ(*(groups + 1), "* observation data");
  EXPECT_EQ(*(groups + 2), "* model command line");
}

TEST_F(PestFilesTest, TestPointsOfAnotherTypeCountButAreNoObservation) {
  TestPoint("TP1", "Piezometer", 1, 1);
  TestPoint("LS1", "Lake Stage", 2, 1);
  TestPoint("X", "Other", 3, 1);
  const auto obs = PestObservations(db_);
  ASSERT_EQ(obs.size(), 2u);
  EXPECT_EQ(obs[1].label, "LS1");
  const auto lines = Lines(PestControlText({}, obs, 3, "b", "x"));
  EXPECT_EQ(lines[3], "0 3 0 0 2");
  EXPECT_EQ(Lines(PestInstructionText(obs))[3], "l1 [LS1]50:62");
  EXPECT_NE(std::find(lines.begin(), lines.end(), "LS1 2\t1.000000 Lakestage"), lines.end());
}

TEST_F(PestFilesTest, ModelCommandsNameTheSolverAndTheInputFile) {
  EXPECT_EQ(PestBatchText("C:\\tarno", 61, "m"), "\"C:\\tarno\\TARNO1.EXE\" 61 m.dat\r\n");
  const std::string sh = PestShellText("/opt/my tarno", 75, "m");
  EXPECT_EQ(sh.rfind("#!/bin/sh\n", 0), 0u);
  EXPECT_NE(sh.find("\nexec '/opt/my tarno/tarno1' 75 m.DAT\n"), std::string::npos) << sh;
  EXPECT_EQ(sh.find('\r'), std::string::npos);
}

// A fake solver that records its arguments and working directory: the script must
// run it on the file the control file names, m.DAT.
TEST_F(PestFilesTest, ShellScriptRunsTheSolverOnTheControlFilesInput) {
  const fs::path programs = dir_ / "bin";
  fs::create_directories(programs);
  Write(programs / "tarno1", "#!/bin/sh\necho \"$@\" > args.txt\n");
  ::chmod((programs / "tarno1").c_str(), 0755);
  Write(dir_ / "T-PEST.sh", PestShellText(programs, 64, "m"));
  ::chmod((dir_ / "T-PEST.sh").c_str(), 0755);
  const std::string cmd = "cd '" + dir_.string() + "' && ./T-PEST.sh";
  ASSERT_EQ(std::system(cmd.c_str()), 0);
  EXPECT_EQ(Read(dir_ / "args.txt"), "64 m.DAT\n");
}

// The names of the parameter fields of the template, as PEST reads them: the text
// between two marks, without the blanks around it.
std::set<std::string> TemplateNames(const std::string& text) {
  std::set<std::string> names;
  for (const std::string& line : PestProject::Lines(text)) {
    if (line == "ptf !") continue;
    std::size_t at = 0;
    while ((at = line.find('!', at)) != std::string::npos) {
      const std::size_t end = line.find('!', at + 1);
      if (end == std::string::npos) break;
      std::string name = line.substr(at + 1, end - at - 1);
      name.erase(0, name.find_first_not_of(' '));
      name.erase(name.find_last_not_of(' ') + 1);
      for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
      names.insert(name);
      EXPECT_EQ(end - at + 1, line[at + 1] == ' ' ? 16u : 14u) << "field width in: " << line;
      at = end + 1;
    }
  }
  return names;
}

TEST_F(PestFilesTest, WritesEveryFileAndTheTemplateHoldsEveryParameterOfTheControlFile) {
  BuildScenarios();
  ScriptedUserInterface ui;
  TemplatePromptMemory memory;
  ui.ExpectModal<TemplatePrompt>(TemplatePrompt::kName, [](TemplatePrompt& p) {
    EXPECT_EQ(p.ExportType, "PEST");
    EXPECT_NE(p.Text().find("for the PEST controlled TARNO runs."), std::string::npos);
    p.chkDontShow = true;
  });
  ui.ExpectMessageTitled("Write PEST");
  SolveContext ctx = Context(ui);
  settings_.chkContour = true;
  const auto written = WritePestFiles(ctx, &memory);
  ui.Verify();
  ASSERT_EQ(written.size(), 5u);
  EXPECT_EQ(written[0], dir_ / "m.tpl");
  for (const auto& p : written) EXPECT_TRUE(fs::exists(p)) << p;
  EXPECT_TRUE(memory.dontShowPest);
  EXPECT_FALSE(memory.dontShowUcode);
  EXPECT_TRUE(settings_.chkContour) << "the contour box is put back after the export";
  const auto box = ui.Messages().back();
  EXPECT_EQ(box.lines[0], "The following files were written:");
  EXPECT_EQ(box.lines[1], "- " + (dir_ / "m.tpl").string());
  EXPECT_EQ(box.lines[4], "- " + (dir_ / "T-PEST.bat").string());

  // The estimation program stops when a parameter of the control file is missing
  // from the template: compare the names as it does.
  const std::string tpl = Read(dir_ / "m.tpl");
  EXPECT_EQ(tpl.rfind("ptf !\r\n", 0), 0u);
  EXPECT_EQ(tpl.find(" grid"), std::string::npos) << "a PEST run computes no contours";
  std::set<std::string> controlNames;
  const auto pst = Lines(Read(dir_ / "m.pst"));
  auto it = std::find(pst.begin(), pst.end(), "* parameter data");
  ASSERT_NE(it, pst.end());
  for (++it; it != pst.end() && (*it)[0] != '*'; ++it) {
    std::string name = it->substr(0, it->find('\t'));
    EXPECT_EQ(name.size(), 12u);
    name.erase(name.find_last_not_of(' ') + 1);
    for (char& c : name) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    controlNames.insert(name);
  }
  EXPECT_EQ(controlNames, (std::set<std::string>{"kaq", "bot", "kin", "rch1", "rch2", "res"}));
  EXPECT_EQ(TemplateNames(tpl), controlNames);
  EXPECT_EQ(pst[pst.size() - 2], "m.tpl m.DAT");
  EXPECT_TRUE(Read(dir_ / "T-PEST.sh").find(" m.DAT\n") != std::string::npos);

  // The second time the prompt stays away.
  ui.ExpectMessageTitled("Write PEST");
  WritePestFiles(ctx, &memory);
  ui.Verify();
}

TEST_F(PestFilesTest, WithoutScenariosNothingIsWritten) {
  TestPoint("TP1", "Piezometer", 1, 1);
  ScriptedUserInterface ui;
  ui.ExpectMessage("No Scenarios",
                   {"There are no Scenarios in this project!", "No PEST Input files will be written."});
  SolveContext ctx = Context(ui);
  EXPECT_TRUE(WritePestFiles(ctx).empty());
  ui.Verify();
  EXPECT_FALSE(fs::exists(dir_ / "m.tpl"));
  EXPECT_FALSE(fs::exists(dir_ / "m.pst"));
}

}  // namespace
}  // namespace tarno::testing
