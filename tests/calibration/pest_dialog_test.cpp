// The PEST dialog's operations: the missing programs, a run of a stand-in PEST (a
// shell script in the program directory), the check run, the text box, the import
// and the deletion of the files.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cstdlib>

#include "calibration/pest_dialog.h"
#include "calibration/pest_import.h"
#include "calibration/pest_weights.h"
#include "pest_fixture.h"

namespace tarno::testing {
namespace {

namespace fs = std::filesystem;

class PestDialogTest : public PestProject {
 protected:
  void SetUp() override {
    PestProject::SetUp();
    BuildScenarios();
    fs::create_directories(dir_ / "programs");
    // No estimation program of the machine may stand in for the ones of a test.
    const char* path = std::getenv("PATH");
    savedPath_ = path ? path : "";
    ::setenv("PATH", (dir_ / "nothing-here").c_str(), 1);
  }
  void TearDown() override {
    ::setenv("PATH", savedPath_.c_str(), 1);
    PestProject::TearDown();
  }
  void Program(const std::string& name, const std::string& body) {
    const fs::path p = dir_ / "programs" / name;
    Write(p, "#!/bin/sh\nPATH=/usr/bin:/bin\n" + body);
    ::chmod(p.c_str(), 0755);
  }
  std::string savedPath_;
};

TEST_F(PestDialogTest, MissingProgramsAreToldAndNothingRuns) {
  ScriptedUserInterface ui;
  SolveContext ctx = Context(ui);
  PestDialog d(ctx, nullptr);
  ui.ExpectMessage("Executable Missing", {"pest does not exist in the tarno directory!"});
  EXPECT_FALSE(d.RunPest());
  ui.ExpectMessage("Executable Missing", {"pestchek does not exist in the tarno directory!"});
  d.RunPestcheck();
  ui.Verify();
  EXPECT_FALSE(fs::exists(dir_ / "pestcheck.txt"));
  // The check run's batch file is written all the same, as the folder shows it.
  EXPECT_EQ(Read(dir_ / "pestcheck.bat"),
            "\"" + (dir_ / "programs").string() + "\\pestchek.exe\" m > pestcheck.txt\r\n");
}

TEST_F(PestDialogTest, AProgramOnThePathIsFound) {
  fs::create_directories(dir_ / "nothing-here");
  const fs::path p = dir_ / "nothing-here" / "pestchek";
  Write(p, "#!/bin/sh\necho \"checked $1\"\n");
  ::chmod(p.c_str(), 0755);
  ScriptedUserInterface ui;
  SolveContext ctx = Context(ui);
  PestDialog d(ctx, nullptr);
  d.RunPestcheck();
  ui.Verify();
  EXPECT_EQ(d.shownFile, "pestcheck.txt");
  EXPECT_EQ(d.TextBox, "checked m\n");
  EXPECT_TRUE(d.TextBoxReadOnly);
  EXPECT_FALSE(d.cmdSaveEnabled);
}

TEST_F(PestDialogTest, RunRemovesTheOtherSpellingOfTheInputAndEnablesTheImport) {
  // The stand-in notes which spellings of the input it finds, and leaves a .par.
  Program("pest",
          "ls m.dat m.DAT > seen.txt 2>/dev/null\n"
          "printf 'single point\\nkaq 11 1 0\\n' > \"$1.par\"\n");
  Write(dir_ / "m.dat", "stale input of a plain solve");
  Write(dir_ / "m.DAT", "the estimation program's input");
  Write(dir_ / "m.SOL", "solution");
  ScriptedUserInterface ui;
  SolveContext ctx = Context(ui);
  state_.SolutionPresent = true;
  PestDialog d(ctx, nullptr);
  ui.ExpectMessage("Warning", {"Running PEST will invalidate and remove your present solution.",
                               "Do you wish to continue?"},
                   Answer::No);
  EXPECT_FALSE(d.RunPest());
  EXPECT_FALSE(fs::exists(dir_ / "m.par"));
  EXPECT_TRUE(fs::exists(dir_ / "m.dat"));

  ui.ExpectMessageTitled("Warning", Answer::Yes);
  std::vector<bool> enabled;
  d.setEnabled = [&](bool on) { enabled.push_back(on); };
  EXPECT_TRUE(d.RunPest());
  ui.Verify();
  EXPECT_EQ(Read(dir_ / "seen.txt"), "m.DAT\n");
  EXPECT_TRUE(d.cmdImportPESTEnabled);
  EXPECT_FALSE(state_.SolutionPresent);
  EXPECT_FALSE(fs::exists(dir_ / "m.SOL"));
  EXPECT_EQ(enabled, (std::vector<bool>{false, true}));
  EXPECT_EQ(d.OutputFileList, (std::vector<std::string>{"m.par"}));
}

TEST_F(PestDialogTest, AFatalSolverRunIsShownAndItsReportRemoved) {
  Program("pest", "printf 'Bad element\\r\\nline 12\\r\\n' > TARNO.OPS\n");
  ScriptedUserInterface ui;
  SolveContext ctx = Context(ui);
  PestDialog d(ctx, nullptr);
  ui.ExpectMessage("Fatal execution error",
                   {"TARNO Encountered a fatal error: ", "", "Bad element", "line 12"});
  d.RunPest();
  ui.Verify();
  EXPECT_FALSE(fs::exists(dir_ / "TARNO.OPS"));
  EXPECT_FALSE(d.cmdImportPESTEnabled);
}

TEST_F(PestDialogTest, EditsOfTheControlFileAreOfferedForSaving) {
  ScriptedUserInterface ui;
  SolveContext ctx = Context(ui);
  PestDialog d(ctx, nullptr);
  ui.ExpectMessageTitled("Write PEST");
  d.WritePest();
  EXPECT_TRUE(d.cmdRunPESTEnabled);
  EXPECT_EQ(d.InputFileList,
            (std::vector<std::string>{"m.pst", "m.ins", "m.tpl", "T-PEST.bat", "T-PEST.sh"}));
  d.InputListClick("m.pst");
  EXPECT_EQ(d.lblFile, "File: m.pst");
  EXPECT_FALSE(d.TextBoxReadOnly);
  d.EditText("pcf\r\nedited\r\n");
  ui.ExpectMessage("Save Changes",
                   {"You have made changes to the m.pst", "Would you like to save these changes?"},
                   Answer::Yes);
  d.InputListClick("m.ins");
  ui.Verify();
  EXPECT_EQ(Read(dir_ / "m.pst"), "pcf\r\nedited\r\n");
  EXPECT_EQ(d.shownFile, "m.ins");
  // Declined edits are dropped; Done closes.
  d.EditText("changed");
  ui.ExpectMessageTitled("Save Changes", Answer::No);
  d.Done();
  ui.Verify();
  EXPECT_TRUE(d.closed);
  EXPECT_NE(Read(dir_ / "m.ins"), "changed");
}

TEST_F(PestDialogTest, ImportShowsTheLogAndDeleteAllLeavesTheSolverInput) {
  Write(dir_ / "m.par",
        "single point\nkaq 11 1 0\nbot -40 1 0\nkin 4 1 0\nrch1 1e-5 1 0\nrch2 -1e-3 1 0\n"
        "res 3 1 0\n");
  Write(dir_ / "m.dat", "input");
  ScriptedUserInterface ui;
  SolveContext ctx = Context(ui);
  PestDialog d(ctx, nullptr);
  ui.ExpectMessageTitled("PEST Parameters Imported");
  d.ImportPest();
  ui.Verify();
  EXPECT_EQ(d.shownFile, kPestImportLog);
  EXPECT_DOUBLE_EQ(ModelValue("AQHydCond"), 11);

  ui.ExpectMessageTitled("Write PEST");
  d.WritePest();
  ui.ExpectMessage("Delete PEST Files?",
                   {"Warning: All Input and Output Files of the latest",
                    "PEST run will be deleted from the working directory.", "Do you wish to Continue?"},
                   Answer::Yes);
  d.DeleteAll();
  ui.Verify();
  for (const char* name : {"m.pst", "m.ins", "m.tpl", "T-PEST.bat", "T-PEST.sh", "m.par",
                           "PEST2TARNO.log"})
    EXPECT_FALSE(fs::exists(dir_ / name)) << name;
  EXPECT_TRUE(fs::exists(dir_ / "m.dat"));
  EXPECT_TRUE(d.InputFileList.empty());
  EXPECT_TRUE(d.shownFile.empty());
  EXPECT_FALSE(d.cmdRunPESTEnabled);
}

TEST_F(PestDialogTest, WeightsAreCheckedAndWrittenToTheirOwnField) {
  ScriptedUserInterface ui;
  OptWeight w("UCODE");
  w.init(db_);
  ASSERT_EQ(w.Piezometer_Weights.size(), 2u);
  ASSERT_EQ(w.Gage_Weights.size(), 1u);
  EXPECT_EQ(w.Gage_Weights[0].Weight, "1.5");  // the UCODE weight, three times the PEST one
  w.Gage_Weights[0].Weight = "-1";
  ui.ExpectMessageTitled("Bad Entry");
  EXPECT_FALSE(w.OK(ui));
  w.Gage_Weights[0].Weight = "0.25";
  EXPECT_TRUE(w.OK(ui));
  w.Write(db_);
  ui.Verify();
  EXPECT_DOUBLE_EQ(ElementValue(ElementKind::TestPoint, "TG1", "UCODEWeight"), 0.25);
  EXPECT_DOUBLE_EQ(ElementValue(ElementKind::TestPoint, "TG1", "PESTWeight"), 0.5);
}

}  // namespace
}  // namespace tarno::testing
