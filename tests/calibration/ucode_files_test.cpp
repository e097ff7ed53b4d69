// The UCODE files against hand-derived files, the set written for a project, and the
// UCODE dialog's run and deletion.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>

#include "calibration/ucode_dialog.h"
#include "calibration/ucode_files.h"
#include "pest_fixture.h"

namespace tarno::testing {
namespace {

namespace fs = std::filesystem;

class UcodeFilesTest : public PestProject {
 protected:
  // The record keys of the test points are their vertex numbers.
  std::int64_t Vid(const std::string& label) {
    return FindByLabel(db_, ElementKind::TestPoint, label)->key;
  }
};

TEST_F(UcodeFilesTest, UniversalPrepareExtractAndFunctionFilesMatchTheHandWrittenOnes) {
  BuildScenarios();
  // The golden files were written for the vertex numbers of the fixture.
  ASSERT_EQ(Vid("TP1"), 17);
  ASSERT_EQ(Vid("TG1"), 18);
  const auto obs = PestObservations(db_);
  EXPECT_EQ(UcodeUniversalText(obs, "11/23/26", "T-UCODE.bat"), Golden("golden.uni"));
  EXPECT_EQ(UcodePrepareText(UcodeParameters(db_), true, "m", "2.2.4"), Golden("golden.pre"));
  EXPECT_EQ(UcodeExtractText(obs, "m"), Golden("golden.ext"));
  EXPECT_EQ(UcodeFunctionText({"rch1", "Rch2"}, "m"), Golden("golden.fnc"));
  EXPECT_EQ(UcodeBatchText("C:\\work", 61, "m"), "C:\\work\\TARNO1.EXE 61 m.dat\r\n");
  EXPECT_NE(UcodeShellText("/opt/t", 61, "m").find("\nexec /opt/t/tarno1 61 m.DAT\n"),
            std::string::npos);
}

TEST_F(UcodeFilesTest, WithoutRechargeScenariosNoFunctionFileAndThePrepareFileSaysNo) {
  db_.Execute("update Model set chkScenarioHydCond=True, ScenHydCond='k', AQHydCond=2");
  ScriptedUserInterface ui;
  SolveContext ctx = Context(ui);
  Write(dir_ / "m.fnc", "left over");
  const auto written = WriteUcodeFiles(ctx, nullptr, "01/02/03");
  ui.Verify();
  EXPECT_EQ(written.size(), 6u);
  EXPECT_FALSE(fs::exists(dir_ / "m.fnc")) << "an old function file is cleared";
  const auto pre = Lines(Read(dir_ / "m.pre"));
  EXPECT_EQ(pre[4], "F no #### no .fnc file used");
  EXPECT_EQ(pre[11].substr(0, 17), "!k!              ");
  EXPECT_EQ(pre.back(), "END");
  const auto uni = Lines(Read(dir_ / "m.uni"));
  EXPECT_EQ(uni[4], "#####         01/02/03              #####");
  EXPECT_EQ(uni[17], "./T-UCODE.sh          # APPLICATION MODEL EXECUTION COMMAND");
  // UCODE's template has no "ptf" line and keeps the underscores of its fields.
  const std::string tpl = Read(dir_ / "m.tpl");
  EXPECT_EQ(tpl.rfind("* Written by TARNO", 0), 0u);
  EXPECT_NE(tpl.find(" permeability !k___________!"), std::string::npos);
}

TEST_F(UcodeFilesTest, WithoutScenariosNothingIsWritten) {
  ScriptedUserInterface ui;
  ui.ExpectMessage("No Scenarios",
                   {"There are no Scenarios in this project!", "No UCODE Input files will be written."});
  SolveContext ctx = Context(ui);
  EXPECT_TRUE(WriteUcodeFiles(ctx).empty());
  ui.Verify();
  EXPECT_FALSE(fs::exists(dir_ / "m.uni"));
}

TEST_F(UcodeFilesTest, DialogRunsPerlWithTheScriptAndDeleteAllLeavesTheSolverInput) {
  BuildScenarios();
  ScriptedUserInterface ui;
  SolveContext ctx = Context(ui);
  fs::create_directories(ctx.programDirectory);
  UcodeDialog d(ctx, nullptr);
  d.WriteUcode();
  EXPECT_TRUE(d.cmdRunUCODEEnabled);
  EXPECT_EQ(d.InputFileList, UcodeInputFiles("m"));

  // Without ucode.pl in the program directory nothing runs.
  const char* path = std::getenv("PATH");
  const std::string saved = path ? path : "";
  fs::create_directories(dir_ / "bin");
  ::setenv("PATH", (dir_ / "bin").c_str(), 1);
  ui.ExpectMessage("Executable Missing", {"perl does not exist in the tarno directory!"});
  EXPECT_FALSE(d.RunUcode());
  Write(dir_ / "bin" / "perl", "#!/bin/sh\necho \"$@\" > perl-args.txt\nprintf 'x' > m._os\n");
  ::chmod((dir_ / "bin" / "perl").c_str(), 0755);
  ui.ExpectMessage("Executable Missing", {"ucode.pl does not exist in the tarno directory!"});
  EXPECT_FALSE(d.RunUcode());
  Write(ctx.programDirectory / "ucode.pl", "# stand-in\n");
  Write(dir_ / "m.dat", "stale input of a plain solve");
  EXPECT_TRUE(d.RunUcode());
  ::setenv("PATH", saved.c_str(), 1);
  ui.Verify();
  EXPECT_EQ(Read(dir_ / "perl-args.txt"), (ctx.programDirectory / "ucode.pl").string() + " m.uni m\n");
  EXPECT_FALSE(fs::exists(dir_ / "m.dat"));
  EXPECT_EQ(d.OutputFileList, (std::vector<std::string>{"m._os"}));

  Write(dir_ / "m.dat", "input");
  ui.ExpectMessageTitled("Delete UCODE Files?", Answer::Yes);
  d.DeleteAll();
  ui.Verify();
  EXPECT_TRUE(d.InputFileList.empty());
  EXPECT_TRUE(d.OutputFileList.empty());
  EXPECT_TRUE(fs::exists(dir_ / "m.dat"));
}

}  // namespace
}  // namespace tarno::testing
