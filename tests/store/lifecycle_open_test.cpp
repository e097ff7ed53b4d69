// Opening a project: the checks before opening, the questions on the way and the
// state of an opened project.
#include <filesystem>

#include "lifecycle_fixture.h"
#include "store/default_dirs.h"
#include "store/project_file.h"

namespace tarno::test {
namespace {

namespace lt = lifecycle_text;

TEST_F(LifecycleTest, OpensAProjectAndReadsItsState) {
  const std::string path = MakeProject("alpha.trn", /*meters=*/false);
  Exec(path, "update Model set EDITGRIDSpacing = 250, EDITGRIDShow = 1, StoreMatrixOnDisk = 1;");
  ASSERT_TRUE(session_->FileOpenProject(path));
  ui_.Verify();
  EXPECT_TRUE(session_->ProjectOpen());
  EXPECT_EQ(session_->Caption(), "alpha.trn - TARNO");
  EXPECT_EQ(hooks_.caption, "alpha.trn - TARNO");
  EXPECT_EQ(session_->Settings().Caption, "alpha.trn - Project Settings");
  EXPECT_EQ(session_->Settings().DBName, path);
  EXPECT_EQ(session_->ProjectDirectory(), Dir() + "/");
  EXPECT_EQ(session_->UnitsText(), " ft");
  EXPECT_EQ(session_->Settings().Description, "Test project");
  EXPECT_EQ(session_->Settings().TARNOBaseName, "basename");
  // The default window of a new file is inverted on purpose.
  EXPECT_EQ(session_->Window().x1, 100);
  EXPECT_EQ(session_->Window().x2, -100);
  EXPECT_EQ(session_->Window().y1, 100);
  EXPECT_EQ(session_->Window().y2, -100);
  EXPECT_EQ(session_->EditGridSpacing(), 250);
  EXPECT_EQ(session_->EditGridSnapStep(), 100);
  EXPECT_TRUE(session_->EditGridShow());
  EXPECT_FALSE(session_->EditGridSnap());
  EXPECT_TRUE(session_->StoreMatrixOnDisk());
  EXPECT_EQ(ui_.CurrentActivity(), "Select");
  EXPECT_EQ(ui_.CurrentFeedback(), "Click mouse button to select element");
  EXPECT_TRUE(hooks_.menusOn);
  EXPECT_EQ(hooks_.Count("CheckGradient"), 1);
  EXPECT_EQ(hooks_.Count("DBIntegrity"), 1);
  // The directory is remembered for the next file dialog.
  EXPECT_EQ(DefaultDirectories(kOpenProjectPathKey, DirectoryMode::Read), Dir() + "/");
}

TEST_F(LifecycleTest, QuotedCommandLinePathOpens) {
  const std::string path = MakeProject("quoted name.trn");
  ASSERT_TRUE(session_->FileOpenProject("\"" + path + "\""));
  EXPECT_EQ(session_->Settings().DBName, path);
  EXPECT_EQ(StripCommandLineQuotes("\"a b.trn\""), "a b.trn");
  EXPECT_EQ(StripCommandLineQuotes("a.trn\""), "a.trn");
  EXPECT_EQ(StripCommandLineQuotes("\"a.trn"), "a.trn");
  EXPECT_EQ(StripCommandLineQuotes("\""), "");
}

TEST_F(LifecycleTest, EmptyPathShowsTheOpenDialogAndCancelKeepsTheOpenProject) {
  const std::string path = MakeProject("alpha.trn");
  ASSERT_TRUE(session_->FileOpenProject(path));
  auto& e = ui_.ExpectOpenFile(std::nullopt);
  e.Title(lt::kOpenProjectTitle);
  EXPECT_FALSE(session_->FileOpenProject(""));
  ui_.Verify();
  const auto dialogs = ui_.CallsOf(UiCallKind::OpenFile);
  ASSERT_EQ(dialogs.size(), 1u);
  EXPECT_EQ(dialogs[0].file.defaultExtension, "trn");
  EXPECT_EQ(dialogs[0].file.filter, "Project Database Files (*.trn)|*.trn");
  EXPECT_EQ(dialogs[0].file.initialDirectory, Dir() + "/");
  EXPECT_TRUE(session_->ProjectOpen());
  EXPECT_EQ(session_->Settings().DBName, path);
}

TEST_F(LifecycleTest, OpeningAnotherProjectClosesTheFirst) {
  const std::string a = MakeProject("a.trn");
  const std::string b = MakeProject("b.trn");
  ASSERT_TRUE(session_->FileOpenProject(a));
  ASSERT_TRUE(session_->FileOpenProject(b));
  EXPECT_EQ(session_->Settings().DBName, b);
  EXPECT_EQ(hooks_.Count("ZoomActions(first)"), 1);  // CloseAll of the first
  EXPECT_EQ(ui_.WaitTexts().size(), 1u);              // its compaction
  EXPECT_FALSE(std::filesystem::exists(a + ".compress"));
}

TEST_F(LifecycleTest, ReadOnlyFileIsRefusedAndLeftAlone) {
  const std::string path = MakeProject("ro.trn");
  const std::string before = Bytes(path);
  ::chmod(path.c_str(), 0444);
  ui_.ExpectMessage("File is Read-only!",
                    {"Could not open project. The specified project database",
                     "is read-only. You must disable the read-only attribute of",
                     "the project file before before opening this project."});
  EXPECT_FALSE(session_->FileOpenProject(path));
  ui_.Verify();
  EXPECT_FALSE(session_->ProjectOpen());
  EXPECT_EQ(session_->Caption(), "TARNO");
  EXPECT_EQ(hooks_.caption, "TARNO");
  EXPECT_EQ(session_->ProjectDirectory(), P("app") + "/");
  EXPECT_EQ(Bytes(path), before);
  ::chmod(path.c_str(), 0644);
  EXPECT_FALSE(IsReadOnlyFile(path));
  EXPECT_FALSE(IsReadOnlyFile(P("nothing.trn")));
}

TEST_F(LifecycleTest, MissingFileNoEndsWithoutCreating) {
  ui_.ExpectMessage("No Such File",
                    {"The specified project database does not exist.  Create a new database?"},
                    Answer::No)
      .WithButtons(Buttons::YesNo)
      .WithIcon(Icon::Exclamation);
  EXPECT_FALSE(session_->FileOpenProject(P("none.trn")));
  ui_.Verify();
  EXPECT_FALSE(std::filesystem::exists(P("none.trn")));
  EXPECT_FALSE(session_->ProjectOpen());
}

TEST_F(LifecycleTest, MissingFileYesCreatesAndMustConfirmTheSettings) {
  const std::string path = P("fresh.trn");
  ui_.ExpectMessageTitled("No Such File", Answer::Yes);
  bool cancelWasDisabled = false;
  ui_.ExpectModal<ProjectSettings>("ProjectSettings", [&](ProjectSettings& d) {
    cancelWasDisabled = !d.CancelEnabled;
    EXPECT_FALSE(d.Cancel());  // a new project's settings cannot be cancelled
    d.BaseName = "fresh";
    EXPECT_TRUE(d.OK(ui_));
  });
  // The new file's solver directory is the process's directory, not the project's.
  if (std::filesystem::current_path() != dir_)
    ui_.ExpectMessage("TARNO", BasePathQuestionLines(), Answer::Yes)
        .WithButtons(Buttons::YesNo)
        .WithIcon(Icon::Question);
  ASSERT_TRUE(session_->FileOpenProject(path));
  ui_.Verify();
  EXPECT_TRUE(cancelWasDisabled);
  EXPECT_TRUE(session_->Settings().CancelEnabled);
  EXPECT_EQ(Text(path, "select TARNOBaseName from Project"), "fresh");
  EXPECT_EQ(Text(path, "select TARNOBasePath from Project"), Dir());
}

TEST_F(LifecycleTest, Version122OfferedUpdateNoLeavesFileUnchanged) {
  const std::string path = MakeProject("old.trn");
  Exec(path, "update Project set ProjectVersion = 122;");
  const std::string before = Bytes(path);
  ui_.ExpectMessage("Version Update", VersionUpdateLines(), Answer::No)
      .WithButtons(Buttons::YesNo)
      .WithIcon(Icon::Exclamation);
  ui_.ExpectMessage("Must update", {"Can't open this project database unless it is updated."});
  EXPECT_FALSE(session_->FileOpenProject(path));
  ui_.Verify();
  EXPECT_FALSE(session_->ProjectOpen());
  EXPECT_EQ(Bytes(path), before);
  ASSERT_EQ(VersionUpdateLines().size(), 5u);
  EXPECT_EQ(VersionUpdateLines()[3], "");
}

TEST_F(LifecycleTest, Version122YesSaysItCannotUpgradeYet) {
  const std::string path = MakeProject("old.trn");
  Exec(path, "update Project set ProjectVersion = 122;");
  const std::string before = Bytes(path);
  ui_.ExpectMessageTitled("Version Update", Answer::Yes);
  ui_.ExpectMessage("Cannot Update", CannotUpgradeLines(path, 122));
  EXPECT_FALSE(session_->FileOpenProject(path));
  ui_.Verify();
  EXPECT_FALSE(session_->ProjectOpen());
  EXPECT_EQ(Bytes(path), before);
  EXPECT_NE(CannotUpgradeLines(path, 122)[0].find("122"), std::string::npos);
}

TEST_F(LifecycleTest, PluggedUpgraderIsGivenTheFileAndItsVersion) {
  const std::string path = MakeProject("old.trn");
  Exec(path, "update Project set ProjectVersion = 110;");
  int seen = 0;
  session_->SetUpgrader([&](const std::string& p, int v) {
    seen = v;
    Exec(p, "update Project set ProjectVersion = 123;");
    return true;
  });
  ui_.ExpectMessageTitled("Version Update", Answer::Yes);
  EXPECT_TRUE(session_->FileOpenProject(path));
  ui_.Verify();
  EXPECT_EQ(seen, 110);
}

TEST_F(LifecycleTest, Version124IsRefused) {
  const std::string path = MakeProject("new.trn");
  Exec(path, "update Project set ProjectVersion = 124;");
  const std::string before = Bytes(path);
  ui_.ExpectMessage("Can't open database",
                    {"The project database was written by a newer version of TARNO.",
                     "It is incompatible with this version.  Please update TARNO",
                     "before using this project database."});
  EXPECT_FALSE(session_->FileOpenProject(path));
  ui_.Verify();
  EXPECT_FALSE(session_->ProjectOpen());
  EXPECT_EQ(Bytes(path), before);
}

TEST_F(LifecycleTest, FileWithoutVersionFieldCountsAs100) {
  const std::string path = MakeProject("ancient.trn");
  Exec(path, "alter table Project drop column ProjectVersion;");
  int seen = 0;
  session_->SetUpgrader([&](const std::string&, int v) { seen = v; return false; });
  ui_.ExpectMessageTitled("Version Update", Answer::Yes);
  EXPECT_FALSE(session_->FileOpenProject(path));
  ui_.Verify();
  EXPECT_EQ(seen, 100);
}

TEST_F(LifecycleTest, BasePathQuestion) {
  std::filesystem::create_directories(P("solver"));
  const std::string path = MakeProject("p.trn");
  Exec(path, "update Project set TARNOBasePath = '" + P("solver") + "';");
  ui_.ExpectMessage("TARNO",
                    {"Your Project File and your Intermediate Model Files are not set in the same place!",
                     "This may cause problems. Would you like TARNO to set your Intermediate Model "
                     "File path to your project path?"},
                    Answer::No)
      .WithButtons(Buttons::YesNo)
      .WithIcon(Icon::Question);
  ASSERT_TRUE(session_->FileOpenProject(path));
  ui_.Verify();
  EXPECT_EQ(Text(path, "select TARNOBasePath from Project"), P("solver"));
  ASSERT_TRUE(session_->FileCloseProject());

  ui_.ExpectMessageTitled("TARNO", Answer::Yes);
  ASSERT_TRUE(session_->FileOpenProject(path));
  ui_.Verify();
  EXPECT_EQ(Text(path, "select TARNOBasePath from Project"), Dir());
  EXPECT_EQ(session_->Settings().TARNOPath, Dir());
  // Cancel in the project settings keeps the path the opening chose: the solver
  // files stay where the last solve wrote them.
  ui_.ExpectModal<ProjectSettings>("ProjectSettings", [](ProjectSettings& s) {
    EXPECT_TRUE(s.Cancel());
  });
  ASSERT_TRUE(session_->FileProjectSettings());
  ui_.Verify();
  EXPECT_EQ(Text(path, "select TARNOBasePath from Project"), Dir());
  EXPECT_EQ(session_->Settings().TARNOPath, Dir());
  ASSERT_TRUE(session_->FileCloseProject());

  // The same directory with a closing separator asks nothing.
  Exec(path, "update Project set TARNOBasePath = '" + Dir() + "/';");
  ASSERT_TRUE(session_->FileOpenProject(path));
  ui_.Verify();
}

TEST_F(LifecycleTest, InaccessibleBasePathIsReplacedByTheCurrentDirectory) {
  const std::string path = MakeProject("p.trn");
  Exec(path, "update Project set TARNOBasePath = '/no/such/dir/anywhere';");
  ui_.ExpectMessage("Please Note",
                    {"The directories specified in the project file are not accessible.",
                     "the files may have been moved. The project drive has been changed",
                     "to the current directory.  Use the Project/Basemap Settings ",
                     "command to change this."});
  const std::string cwd = std::filesystem::current_path().string();
  if (cwd != Dir()) ui_.ExpectMessageTitled("TARNO", Answer::No);
  ASSERT_TRUE(session_->FileOpenProject(path));
  ui_.Verify();
  EXPECT_EQ(Text(path, "select TARNOBasePath from Project"), cwd);
  // Cancel in the project settings does not bring the inaccessible path back.
  ui_.ExpectModal<ProjectSettings>("ProjectSettings", [](ProjectSettings& s) {
    EXPECT_TRUE(s.Cancel());
  });
  ASSERT_TRUE(session_->FileProjectSettings());
  ui_.Verify();
  EXPECT_EQ(Text(path, "select TARNOBasePath from Project"), cwd);
  EXPECT_EQ(session_->Settings().TARNOPath, cwd);
}

TEST_F(LifecycleTest, MissingBasemaps) {
  const std::string path = MakeProject("maps.trn");
  WriteFile(P("present.bbm"), "x");
  Exec(path, "insert into Basemaps(MapName) values ('" + P("present.bbm") + "');"
             "insert into Basemaps(MapName) values ('" + P("lost.bbm") + "');"
             "insert into Basemaps(MapName) values ('" + P("gone.BBM") + "');"
             "insert into Basemaps(MapName) values ('" + P("roads.shp") + "');");
  ui_.ExpectMessage("Can't Open BBM Basemap File", MissingBBMLines(P("lost.bbm")), Answer::Yes)
      .WithButtons(Buttons::YesNo);
  ui_.ExpectOpenFile(P("found.bbm")).Title("Select Basemap File");
  ui_.ExpectMessage("Can't Open BBM Basemap File", MissingBBMLines(P("gone.BBM")), Answer::No);
  ASSERT_TRUE(session_->FileOpenProject(path));
  ui_.Verify();
  EXPECT_EQ(MissingBBMLines("m.bbm")[1], "     m.bbm");
  const std::vector<std::string> expected = {P("present.bbm"), P("found.bbm"), P("roads.shp")};
  EXPECT_EQ(session_->Settings().BaseMaps, expected);
  EXPECT_EQ(Int(path, "select count(*) from Basemaps"), 3);
  EXPECT_EQ(session_->Settings().Result, ProjectSettings::kOK);
}

TEST_F(LifecycleTest, BadFilesGetAMessageAndAreLeftAlone) {
  struct Case {
    std::string name;
    std::string bytes;
  };
  std::string jet(0x800, '\0');
  jet.replace(0, 19, std::string("\x00\x01\x00\x00Standard Jet DB", 19));
  const std::vector<Case> cases = {
      {"text.trn", "just some text\nnot a database\n"},
      {"empty.trn", ""},
      {"jet.trn", jet},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    WriteFile(P(c.name), c.bytes);
    const ProjectFileProbe probe = ProbeProjectFile(P(c.name));
    ui_.ExpectMessage(ProbeTitle(probe), {ProbeMessage(P(c.name), probe)});
    EXPECT_FALSE(session_->FileOpenProject(P(c.name)));
    ui_.Verify();
    EXPECT_NE(ProbeMessage(P(c.name), probe).find(c.name), std::string::npos);
    EXPECT_EQ(Bytes(P(c.name)), c.bytes);
    EXPECT_FALSE(session_->ProjectOpen());
  }
  // An SQLite file that is not a project.
  {
    Database db = Database::Create(P("other.trn"));
    db.ExecuteRaw("create table t(x);");
  }
  const std::string before = Bytes(P("other.trn"));
  ui_.ExpectMessageTitled("Not a Project File");
  EXPECT_FALSE(session_->FileOpenProject(P("other.trn")));
  ui_.Verify();
  EXPECT_EQ(Bytes(P("other.trn")), before);
}

TEST_F(LifecycleTest, TruncatedAndLockedProjectsAreRefused) {
  const std::string path = MakeProject("cut.trn");
  std::string bytes = Bytes(path);
  bytes.resize(bytes.size() / 2);
  WriteFile(path, bytes);
  ui_.ExpectMessage(ProbeTitle(ProbeProjectFile(path)), {ProbeMessage(path, ProbeProjectFile(path))});
  EXPECT_FALSE(session_->FileOpenProject(path));
  ui_.Verify();
  EXPECT_EQ(Bytes(path), bytes);

  const std::string locked = MakeProject("locked.trn");
  Database holder = Database::Open(locked);
  holder.ExecuteRaw("begin exclusive; update Project set Description = 'busy';");
  ui_.ExpectMessageTitled("Project File in Use");
  EXPECT_FALSE(session_->FileOpenProject(locked));
  ui_.Verify();
  EXPECT_FALSE(session_->ProjectOpen());
  holder.ExecuteRaw("rollback;");
}

TEST_F(LifecycleTest, FailureInsideOpeningGoesToTheErrorTrap) {
  const std::string path = MakeProject("broken.trn");
  Exec(path, "delete from Model;");
  ui_.Expect(UiCallKind::MessageBox)
      .Title("Unhandled Error -- Contact the Authors")
      .Lines({"Unhandled error in FileOpenProject", "The Model table of " + path + " has no row",
              "TARNO may have become unstable.  For best results, exit TARNO and restart",
              "If the problem persists, contact the authors"});
  EXPECT_FALSE(session_->FileOpenProject(path));
  ui_.Verify();
  EXPECT_FALSE(session_->ProjectOpen());
}

TEST(LifecycleHelpers, EditGridStepIsThePowerOfTenBelow) {
  EXPECT_EQ(EditGridStep(10), 10);
  EXPECT_EQ(EditGridStep(99), 10);
  EXPECT_EQ(EditGridStep(0.5), 0.1);
  EXPECT_EQ(EditGridStep(1), 1);
  EXPECT_EQ(EditGridStep(0), 1);
  EXPECT_EQ(EditGridStep(-5), 1);
}

}  // namespace
}  // namespace tarno::test
