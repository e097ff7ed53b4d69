// The Tools menu's entries of the text element files run through the command
// registry on the solved example: an import of wells removes the solution and adds
// the wells, an import of test points leaves the solution, an export writes its file.
#include "app/shell/exchange_text_commands.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "app/shell/shell_controller.h"
#include "display/map_fixture.h"
#include "elements/element_store.h"
#include "support/program_runner.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace tarno {
namespace {

namespace fs = std::filesystem;

class QuietHost : public ShellHost {
 public:
  std::pair<int, int> MapSize() const override { return {400, 300}; }
};

class TextExchangeCommandsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ::setenv("TARNO_CONFIG_DIR", (temp_.Path() / "config").c_str(), 1);
    project_ = (temp_.Path() / "example.trn").string();
    test::RunOptions made;
    made.cwd = temp_.Path();
    const test::RunResult created =
        test::RunProgram("tarnocmd", {"new", project_, "--yes", "--base-name", "example"}, made);
    ASSERT_EQ(created.status, 0) << created.err;
    test::RunOptions script;
    script.input = fs::path(TARNO_SOURCE_DIR) / "examples" / "vincennes.sql";
    ASSERT_EQ(test::RunExecutable("sqlite3", {"-bail", project_}, script).status, 0);
    shell_ = std::make_unique<ShellController>(host_, map_, map2_,
                                               ShellOptions{temp_.Path().string(), TARNO_BIN_DIR});
    shell_->Port().SetInner(ui_);
    ASSERT_TRUE(shell_->OpenProject(project_));
  }
  void TearDown() override { shell_.reset(); }
  std::string File(const std::string& name) const { return (temp_.Path() / name).string(); }
  std::int64_t Count(ElementKind kind) {
    Database db = Database::Open(project_);
    return CountElements(db, kind);
  }

  test::TempDir temp_{"tarno-text-commands"};
  std::string project_;
  ScriptedUserInterface ui_;
  test::RecordingSurface map_{400, 300};
  test::RecordingSurface map2_{400, 300};
  QuietHost host_;
  std::unique_ptr<ShellController> shell_;
};

TEST_F(TextExchangeCommandsTest, ImportsChangeTheModelOrOnlyItsObservationsAndExportsWrite) {
  ASSERT_TRUE(shell_->Commands().Run("MODEL_CMDS(1)"));
  ASSERT_TRUE(shell_->Solution().SolutionPresent);
  {
    std::ofstream tp(File("more.tp"), std::ios::binary);
    tp << "458000,4392000,117.2,0 , Piezometer , MW-9\r\n";
  }
  ui_.ExpectMessageTitled("TARNO Test Point Import", Answer::Yes);
  ui_.ExpectOpenFile(File("more.tp"));
  ui_.ExpectMessage("Import Complete", {"1 test points were read in."});
  ASSERT_TRUE(shell_->Commands().Run("IMPORT(9)"));
  EXPECT_TRUE(shell_->Solution().SolutionPresent) << "a test point leaves the solution";
  EXPECT_EQ(Count(ElementKind::TestPoint), 8);

  {
    std::ofstream wl(File("more.wl"), std::ios::binary);
    wl << "458100,4391000,800,0.3,NewWell,130,105\r\n";
  }
  ui_.ExpectOpenFile(File("more.wl")).Title("Well File to be Imported");
  ui_.ExpectMessage("Import Complete", {"1 wells were read in."});
  ASSERT_TRUE(shell_->Commands().Run("IMPORT(7)"));
  EXPECT_FALSE(shell_->Solution().SolutionPresent) << "a new well changes the flow";
  EXPECT_EQ(Count(ElementKind::Well), 6);
  ASSERT_TRUE(shell_->Commands().Run("EDIT_UNDO"));
  EXPECT_EQ(Count(ElementKind::Well), 5) << "the import is one entry of the edit history";

  ui_.ExpectSaveFile(File("observations.tp")).Title("Export Test Points");
  ui_.ExpectMessage("Test Points Written", {"Export Complete: 8 Test Points were written."});
  ASSERT_TRUE(shell_->Commands().Run("EXPORT(8)"));
  EXPECT_TRUE(fs::exists(File("observations.tp")));
  ui_.Verify();
  EXPECT_TRUE(shell_->Commands().Has("IMPORT(4)"));
  EXPECT_TRUE(shell_->Commands().Has("EXPORT(9)"));
}

}  // namespace
}  // namespace tarno
