// The new-project road, save as, closing, the settings dialog and the unit change.
#include <filesystem>
#include <fstream>

#include <unistd.h>

#include "lifecycle_fixture.h"
#include "store/default_dirs.h"
#include "store/lifecycle_basename.h"

namespace tarno::test {
namespace {

namespace lt = lifecycle_text;

class NewProjectTest : public LifecycleTest {
 protected:
  // Scripts the wizard and the settings dialog of a new project.
  void ExpectWizardAndSettings(const std::string& description, bool mapMeters, bool compMeters,
                               std::string baseName = "") {
    ui_.ExpectModal<NewDatabaseWizard>("NewDatabaseWizard", [=](NewDatabaseWizard& w) {
      EXPECT_EQ(w.Title(), "New Database Wizard                                    (F1 for help)");
      EXPECT_EQ(w.Description, "New TARNO Project\n");
      w.Description = description;
      w.BasemapMeters = mapMeters;
      w.ComputeMeters = compMeters;
      w.Create();
    });
    ui_.ExpectModal<ProjectSettings>("ProjectSettings", [=, this](ProjectSettings& s) {
      EXPECT_FALSE(s.CancelEnabled);
      EXPECT_EQ(s.BaseName, "c25a0");
      EXPECT_EQ(s.MapUnits(), UnitText(mapMeters));
      EXPECT_EQ(s.CompUnits(), UnitText(compMeters));
      // The solver files go beside the new project, in the folder chosen in the file
      // dialog, wherever the program was started: no question of their place follows.
      EXPECT_EQ(s.TARNOPath, Dir());
      if (!baseName.empty()) s.BaseName = baseName;
      EXPECT_TRUE(s.OK(ui_));
    });
  }
};

TEST_F(NewProjectTest, CreatesAndOpensANewProject) {
  const std::string path = P("new.trn");
  ui_.ExpectSaveFile(path).Title("Create New Project Database");
  ExpectWizardAndSettings("My model", /*mapMeters=*/false, /*compMeters=*/true);
  ASSERT_TRUE(session_->FileNewProject());
  ui_.Verify();
  const auto dialogs = ui_.CallsOf(UiCallKind::SaveFile);
  ASSERT_EQ(dialogs.size(), 1u);
  EXPECT_EQ(dialogs[0].file.defaultExtension, "wrk");
  EXPECT_EQ(dialogs[0].file.filter, "Project Database Files (*.trn)|*.trn");
  EXPECT_TRUE(session_->ProjectOpen());
  EXPECT_EQ(Text(path, "select Description from Project"), "My model");
  EXPECT_EQ(Int(path, "select BasemapMeters from Model"), 0);
  EXPECT_EQ(Int(path, "select ComputeMeters from Model"), 1);
  EXPECT_EQ(Text(path, "select TARNOBaseName from Project"), "c25a0");
  EXPECT_EQ(Text(path, "select TARNOBasePath from Project"), Dir());
  EXPECT_EQ(session_->UnitsText(), " ft");
  EXPECT_EQ(DefaultDirectories(kOpenProjectPathKey, DirectoryMode::Read), Dir() + "/");
}

TEST_F(NewProjectTest, CancelledDialogOrAbortedWizardMakesNothing) {
  ui_.ExpectSaveFile(std::nullopt);
  EXPECT_FALSE(session_->FileNewProject());
  ui_.Verify();

  ui_.ExpectSaveFile(P("x.trn"));
  ui_.ExpectModal<NewDatabaseWizard>("NewDatabaseWizard",
                                     [](NewDatabaseWizard& w) { w.Abort(); });
  EXPECT_FALSE(session_->FileNewProject());
  ui_.Verify();
  EXPECT_FALSE(std::filesystem::exists(P("x.trn")));

  // A wizard closed without either button aborts as well.
  ui_.ExpectSaveFile(P("x.trn"));
  ui_.ExpectModal("NewDatabaseWizard");
  EXPECT_FALSE(session_->FileNewProject());
  ui_.Verify();
  EXPECT_FALSE(std::filesystem::exists(P("x.trn")));
  EXPECT_FALSE(session_->ProjectOpen());
}

TEST_F(NewProjectTest, ExistingFileOverwriteOrCancel) {
  const std::string path = MakeProject("exists.trn");
  Exec(path, "update Project set Description = 'old one';");
  const std::string before = Bytes(path);
  ui_.ExpectSaveFile(path);
  ui_.ExpectMessage("File Exists", {path + " already exists -- should I overwrite it?"},
                    Answer::Cancel)
      .WithButtons(Buttons::OKCancel)
      .WithIcon(Icon::Exclamation);
  ui_.ExpectMessage("Aborted", {"New file creation aborted"});
  EXPECT_FALSE(session_->FileNewProject());
  ui_.Verify();
  EXPECT_EQ(Bytes(path), before);

  ui_.ExpectSaveFile(path);
  ui_.ExpectMessageTitled("File Exists", Answer::OK);
  ExpectWizardAndSettings("replacement", true, true);
  ASSERT_TRUE(session_->FileNewProject());
  ui_.Verify();
  EXPECT_EQ(Text(path, "select Description from Project"), "replacement");
}

TEST_F(NewProjectTest, BaseNameCheckOfTheSettingsDialog) {
  const std::string path = P("names.trn");
  ui_.ExpectSaveFile(path);
  ui_.ExpectModal<NewDatabaseWizard>("NewDatabaseWizard", [](NewDatabaseWizard& w) { w.Create(); });
  const std::vector<std::string> bads = {"ninechars", "a b", "", "   "};
  ui_.ExpectModal<ProjectSettings>("ProjectSettings", [this, bads](ProjectSettings& s) {
    for (const std::string& bad : bads) {
      SCOPED_TRACE(bad);
      s.BaseName = bad;
      EXPECT_FALSE(s.OK(ui_));
      EXPECT_EQ(s.Result, -1);  // the dialog stays
    }
    s.BaseName = "  eight888  ";
    EXPECT_TRUE(s.OK(ui_));
  });
  for (std::size_t i = 0; i < bads.size(); ++i)
    ui_.ExpectMessage("Bad file name",
                      {"Base file name must be less than 8 characters, with no spaces"});
  ASSERT_TRUE(session_->FileNewProject());
  ui_.Verify();
  EXPECT_EQ(Text(path, "select TARNOBaseName from Project"), "eight888");
}

TEST_F(LifecycleTest, ProjectSettingsOKWritesAndCancelRestores) {
  const std::string path = MakeProject("s.trn");
  ASSERT_TRUE(session_->FileOpenProject(path));
  ui_.ExpectModal<ProjectSettings>("ProjectSettings", [this](ProjectSettings& s) {
    EXPECT_TRUE(s.CancelEnabled);
    s.Description = "changed";
    s.BaseName = "run1";
    s.BasePath = Dir() + "/";
    EXPECT_TRUE(s.OK(ui_));
  });
  ASSERT_TRUE(session_->FileProjectSettings());
  ui_.Verify();
  EXPECT_EQ(Text(path, "select Description from Project"), "changed");
  EXPECT_EQ(Text(path, "select TARNOBaseName from Project"), "run1");
  EXPECT_EQ(Text(path, "select TARNOBasePath from Project"), Dir());
  EXPECT_EQ(session_->Settings().TARNOBaseName, "run1");

  ui_.ExpectModal<ProjectSettings>("ProjectSettings", [](ProjectSettings& s) {
    s.BaseName = "other";
    s.Description = "not kept";
    EXPECT_TRUE(s.Cancel());
  });
  ASSERT_TRUE(session_->FileProjectSettings());
  ui_.Verify();
  EXPECT_EQ(session_->Settings().Result, ProjectSettings::kCancel);
  EXPECT_EQ(Text(path, "select TARNOBaseName from Project"), "run1");
  EXPECT_EQ(Text(path, "select Description from Project"), "changed");
  EXPECT_EQ(session_->Settings().BaseName, "run1");
}

TEST_F(LifecycleTest, UnitChangeWarnsThenWritesOnlyTheDesignation) {
  const std::string path = MakeProject("u.trn", /*meters=*/true);
  Exec(path, "update Model set AQHydCond = 12.5;");
  ASSERT_TRUE(session_->FileOpenProject(path));

  ui_.ExpectMessage("                                           STOP!", UnitChangeWarningLines(),
                    Answer::No)
      .WithButtons(Buttons::YesNo);
  EXPECT_FALSE(session_->UnitChange());
  ui_.Verify();
  EXPECT_EQ(Int(path, "select BasemapMeters from Model"), 1);

  ui_.ExpectMessageTitled("                                           STOP!", Answer::Yes);
  ui_.ExpectModal<UnitChange>("UnitChange", [](UnitChange& d) {
    EXPECT_TRUE(d.ComputeMeters);
    EXPECT_TRUE(d.BasemapMeters);
    d.BasemapMeters = false;
    d.OK();
  });
  ui_.ExpectMessage("Reopen Project", {"You must now close and reopen your project.",
                                       "Failure to do so may lead to unexpected", "results!"});
  EXPECT_TRUE(session_->UnitChange());
  ui_.Verify();
  EXPECT_EQ(Int(path, "select BasemapMeters from Model"), 0);
  EXPECT_EQ(Int(path, "select ComputeMeters from Model"), 1);
  EXPECT_EQ(Text(path, "select AQHydCond from Model"), "12.5");
  EXPECT_EQ(session_->Settings().MapUnits(), "Feet");
  // The open session takes the new designation at once: no reopening is needed.
  EXPECT_EQ(session_->UnitsText(), " ft");
  EXPECT_EQ(hooks_.Count("UnitsChanged"), 1);

  ASSERT_EQ(UnitChangeWarningLines().size(), 11u);
  EXPECT_EQ(UnitChangeWarningLines()[9], "                no data conversion takes place.");
}

// "Change Units..." inside the project settings, then Cancel: the new designation
// stands in the file, and the session derives everything from it anew (the model
// settings, the unit text, the frame) before the map is drawn again.
TEST_F(LifecycleTest, AUnitChangeInTheProjectSettingsIsAppliedWhicheverButtonCloses) {
  const std::string path = MakeProject("v.trn", /*meters=*/true);
  ASSERT_TRUE(session_->FileOpenProject(path));
  ASSERT_EQ(session_->UnitsText(), " m");
  hooks_.calls.clear();
  ui_.ExpectModal<ProjectSettings>("ProjectSettings", [this](ProjectSettings& p) {
    ui_.ExpectMessageTitled("                                           STOP!", Answer::Yes);
    ui_.ExpectModal<UnitChange>("UnitChange", [](UnitChange& d) {
      d.BasemapMeters = false;
      d.OK();
    });
    ui_.ExpectMessageTitled("Reopen Project");
    EXPECT_TRUE(p.ChangeUnits(ui_));
    EXPECT_TRUE(p.Cancel());
  });
  ASSERT_TRUE(session_->FileProjectSettings());
  ui_.Verify();
  EXPECT_EQ(Int(path, "select BasemapMeters from Model"), 0);
  EXPECT_EQ(session_->UnitsText(), " ft");
  const std::vector<std::string> expected = {"UnitsChanged", "SetUpLayers", "ZoomActions"};
  EXPECT_EQ(hooks_.calls, expected);

  // Project settings that leave the units alone derive nothing anew.
  hooks_.calls.clear();
  ui_.ExpectModal<ProjectSettings>("ProjectSettings", [](ProjectSettings& p) { p.Cancel(); });
  ASSERT_TRUE(session_->FileProjectSettings());
  EXPECT_TRUE(hooks_.calls.empty());
  EXPECT_EQ(session_->UnitsText(), " ft");
}

TEST_F(LifecycleTest, CloseCompactsAndResetsTheState) {
  const std::string path = MakeProject("c.trn");
  Exec(path, "create table Junk(x); insert into Junk values (zeroblob(200000)); drop table Junk;");
  const auto sizeBefore = std::filesystem::file_size(path);
  ASSERT_TRUE(session_->FileOpenProject(path));
  ASSERT_TRUE(session_->FileCloseProject());
  EXPECT_FALSE(session_->ProjectOpen());
  EXPECT_EQ(session_->Caption(), "TARNO");
  EXPECT_EQ(session_->Settings().Caption, "Project Settings");
  EXPECT_EQ(session_->Settings().DBName, "");
  EXPECT_EQ(session_->ProjectDirectory(), P("app") + "/");
  EXPECT_FALSE(hooks_.menusOn);
  EXPECT_LT(std::filesystem::file_size(path), sizeBefore);
  EXPECT_FALSE(std::filesystem::exists(path + ".compress"));
  EXPECT_FALSE(ui_.WaitWindowVisible());
  EXPECT_EQ(ui_.WaitTexts().size(), 1u);
  EXPECT_EQ(Text(path, "select Description from Project"), "Test project");
  // Closing with nothing open compacts nothing.
  ASSERT_TRUE(session_->FileCloseProject());
  EXPECT_EQ(ui_.WaitTexts().size(), 1u);
}

TEST_F(LifecycleTest, SaveAsCopiesAndOpensTheCopy) {
  const std::string path = MakeProject("orig.trn");
  const std::string copy = P("copy.trn");
  ASSERT_TRUE(session_->FileOpenProject(path));
  ui_.ExpectSaveFile(copy).Title("Save As");
  // The copy stands in the folder of the original's solver files: its own base name.
  ui_.ExpectModal<ProjectSettings>("ProjectSettings", [this](ProjectSettings& s) { s.OK(ui_); });
  ASSERT_TRUE(session_->FileSaveAs());
  ui_.Verify();
  EXPECT_EQ(session_->Settings().DBName, copy);
  EXPECT_TRUE(std::filesystem::exists(path));
  EXPECT_EQ(Text(copy, "select Description from Project"), "Test project");

  // Onto an existing file, then onto itself: the project must survive.
  ui_.ExpectSaveFile(copy);
  ui_.ExpectMessageTitled("File Exists", Answer::OK);
  ASSERT_TRUE(session_->FileSaveAs());
  ui_.Verify();
  EXPECT_TRUE(session_->ProjectOpen());
  EXPECT_EQ(Text(copy, "select Description from Project"), "Test project");
}

TEST_F(LifecycleTest, DestroyingTheSessionClosesTheProject) {
  const std::string path = MakeProject("d.trn");
  ASSERT_TRUE(session_->FileOpenProject(path));
  session_.reset();
  EXPECT_EQ(ui_.WaitTexts().size(), 1u);
  EXPECT_EQ(Text(path, "select Description from Project"), "Test project");
}

}  // namespace
}  // namespace tarno::test

namespace tarno::test {
namespace {

// Names and paths that the file system refuses are refused by the dialog, each with
// its message, and the dialog stays; a missing folder is offered to be created.
TEST_F(LifecycleTest, ProjectSettingsRefusesNamesAndPathsTheFileSystemRefuses) {
  const std::string path = MakeProject("p.trn");
  ASSERT_TRUE(session_->FileOpenProject(path));
  std::ofstream(P("plain")) << "a file";
  const std::string missing = P("new/solver");
  ui_.ExpectModal<ProjectSettings>("ProjectSettings", [&, this](ProjectSettings& s) {
    for (const std::string bad : {"a/b*c", "run:1", "x?", "..", "a\\b"}) {
      SCOPED_TRACE(bad);
      s.BaseName = bad;
      EXPECT_FALSE(s.OK(ui_));
    }
    s.BaseName = "run1";
    s.BasePath = P("plain");
    EXPECT_FALSE(s.OK(ui_));
    s.BasePath = missing;
    EXPECT_FALSE(s.OK(ui_));  // No: nothing is created
    EXPECT_FALSE(std::filesystem::exists(missing));
    EXPECT_TRUE(s.OK(ui_));   // Yes: created
  });
  for (int i = 0; i < 5; ++i)
    ui_.ExpectMessage(ProjectSettings::kBadNameTitle, {ProjectSettings::kBadNameCharactersText});
  ui_.ExpectMessage(ProjectSettings::kBadPathTitle,
                    {"The path " + P("plain") + " is not a folder.", "Please enter another path."});
  ui_.ExpectMessage(ProjectSettings::kCreateFolderTitle,
                    {"The path " + missing + " does not exist.", "Create it?"}, Answer::No);
  ui_.ExpectMessage(ProjectSettings::kCreateFolderTitle,
                    {"The path " + missing + " does not exist.", "Create it?"}, Answer::Yes);
  ASSERT_TRUE(session_->FileProjectSettings());
  ui_.Verify();
  EXPECT_TRUE(std::filesystem::is_directory(missing));
  EXPECT_EQ(Text(path, "select TARNOBasePath from Project"), missing);
  EXPECT_EQ(Text(path, "select TARNOBaseName from Project"), "run1");
}

TEST(SolverFilesProblem, NamesWhatKeepsTheFilesFromBeingWritten) {
  const std::string dir = std::filesystem::temp_directory_path().string();
  EXPECT_EQ(SolverFilesProblem(dir, "golden"), "");
  EXPECT_NE(SolverFilesProblem(dir, "a/b*c").find("a/b*c"), std::string::npos);
  EXPECT_NE(SolverFilesProblem(dir, "").find("empty"), std::string::npos);
  EXPECT_NE(SolverFilesProblem(dir + "/tarno-no-such-folder", "golden").find("tarno-no-such-folder"),
            std::string::npos);
  EXPECT_NE(SolverFilesProblem("", "golden").find("empty"), std::string::npos);
}

}  // namespace
}  // namespace tarno::test

namespace tarno::test {
namespace {

// A duplicate in the folder of the original's solver files gets a base name of its
// own, derived from its file name and shown in the settings dialog, where any name
// but the original's may be given; the original keeps its own.
TEST_F(LifecycleTest, DuplicateInTheSameFolderGetsABaseNameOfItsOwn) {
  const std::string path = MakeProject("orig.trn");
  Exec(path, "update Project set TARNOBaseName = 'example'");
  std::ofstream(P("scenario.SOL")) << "a file of another run";
  ASSERT_TRUE(session_->FileOpenProject(path));
  ui_.ExpectSaveFile(P("Scenario B.trn"));
  ui_.ExpectModal<ProjectSettings>("ProjectSettings", [this](ProjectSettings& s) {
    EXPECT_FALSE(s.CancelEnabled);
    EXPECT_EQ(s.BaseName, "Scenari2");  // "Scenario" is in use
    s.BaseName = "EXAMPLE";
    EXPECT_FALSE(s.OK(ui_));
    s.BaseName = "scen_b";
    EXPECT_TRUE(s.OK(ui_));
  });
  ui_.ExpectMessage(ProjectSettings::kBadNameTitle,
                    {"Base file name EXAMPLE is used by the project " + path + " in this folder.",
                     "Please enter another base file name."});
  ASSERT_TRUE(session_->FileSaveAs());
  ui_.Verify();
  EXPECT_EQ(Text(P("Scenario B.trn"), "select TARNOBaseName from Project"), "scen_b");
  EXPECT_EQ(session_->Settings().TARNOBaseName, "scen_b");
  EXPECT_EQ(Text(path, "select TARNOBaseName from Project"), "example");
}

// A duplicate in another folder whose solver files move beside it keeps the base
// name; one whose solver files stay in the original's folder gets its own.
TEST_F(LifecycleTest, DuplicateElsewhereGetsItsOwnNameOnlyWhenItSharesTheFolder) {
  const std::string path = MakeProject("orig.trn");
  Exec(path, "update Project set TARNOBaseName = 'example'");
  std::filesystem::create_directories(P("other"));
  ASSERT_TRUE(session_->FileOpenProject(path));
  ui_.ExpectSaveFile(P("other/moved.trn"));
  ui_.ExpectMessageTitled("TARNO", Answer::Yes);
  ASSERT_TRUE(session_->FileSaveAs());
  ui_.Verify();
  EXPECT_EQ(session_->Settings().TARNOBaseName, "example");
  EXPECT_EQ(session_->Settings().TARNOPath, P("other"));

  ASSERT_TRUE(session_->FileOpenProject(path));
  ui_.ExpectSaveFile(P("other/kept.trn"));
  ui_.ExpectMessageTitled("TARNO", Answer::No);
  ui_.ExpectModal<ProjectSettings>("ProjectSettings", [this](ProjectSettings& s) {
    EXPECT_EQ(s.BaseName, "kept");
    EXPECT_TRUE(s.OK(ui_));
  });
  ASSERT_TRUE(session_->FileSaveAs());
  ui_.Verify();
  EXPECT_EQ(Text(P("other/kept.trn"), "select TARNOBaseName from Project"), "kept");
  EXPECT_EQ(Text(P("other/kept.trn"), "select TARNOBasePath from Project"), Dir());
}

TEST(DerivedBaseName, FromTheFileNameAndFreeInTheFolder) {
  const TempDir temp("tarno-derived");
  const std::filesystem::path dir = temp.Path();
  for (const char* f : {"model.DAT", "model2.sol", "longname.XTR", "plan.trn"})
    std::ofstream(dir / f) << "x";
  EXPECT_EQ(DerivedBaseName("Plan", dir.string(), {"example"}), "Plan");  // project files do not count
  EXPECT_EQ(DerivedBaseName("model", dir.string(), {}), "model3");
  EXPECT_EQ(DerivedBaseName("Long name of a copy", dir.string(), {}), "Longnam2");
  EXPECT_EQ(DerivedBaseName("example", dir.string(), {"EXAMPLE"}), "example2");
  EXPECT_EQ(DerivedBaseName("%%%", dir.string(), {}), "copy");
  for (const std::string& name : {DerivedBaseName("a very long name", dir.string(), {"averylon"}),
                                 DerivedBaseName("x", dir.string(), {})})
    EXPECT_TRUE(ProjectSettings::ValidBaseName(name) && !ProjectSettings::HasBadFileCharacters(name))
        << name;
}

}  // namespace
}  // namespace tarno::test
