// Tools > Export's geometry entries through the controller's command registry, on
// the solved example: the dialogs, the file dialogs and the boxes in order, and the
// files they leave.
#include "app/shell/exchange_geometry_commands.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "app/shell/shell_controller.h"
#include "display/map_fixture.h"
#include "exchange/geometry_export.h"
#include "support/program_runner.h"
#include "support/scripted_ui.h"
#include "support/temp_dir.h"

namespace tarno {
namespace {

namespace fs = std::filesystem;
namespace gt = exchange::geometry_text;

class SizedHost : public ShellHost {
 public:
  std::pair<int, int> MapSize() const override { return {400, 300}; }
};

class GeometryCommandsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ::setenv("TARNO_CONFIG_DIR", (dir_ / "config").c_str(), 1);
    project_ = (dir_ / "example.trn").string();
    test::RunOptions made;
    made.cwd = dir_.Path();
    const test::RunResult created =
        test::RunProgram("tarnocmd", {"new", project_, "--yes", "--base-name", "example"}, made);
    ASSERT_EQ(created.status, 0) << created.err;
    test::RunOptions script;
    script.input = fs::path(TARNO_SOURCE_DIR) / "examples" / "vincennes.sql";
    const test::RunResult filled = test::RunExecutable("sqlite3", {"-bail", project_}, script);
    if (filled.status == 127) GTEST_SKIP() << "no sqlite3";
    ASSERT_EQ(filled.status, 0) << filled.err;
    shell_ = std::make_unique<ShellController>(host_, map_, map2_,
                                               ShellOptions{dir_.Path().string(), TARNO_BIN_DIR});
    shell_->Port().SetInner(ui_);
    ASSERT_TRUE(shell_->OpenProject(project_));
  }
  void TearDown() override { shell_.reset(); }

  test::TempDir dir_;
  std::string project_;
  ScriptedUserInterface ui_;
  test::RecordingSurface map_{400, 300};
  test::RecordingSurface map2_{400, 300};
  SizedHost host_;
  std::unique_ptr<ShellController> shell_;
};

TEST_F(GeometryCommandsTest, TheExportEntriesRunTheirDialogsAndWriteTheirFiles) {
  // Before a solve: no grid and no contours, and nothing is asked.
  ui_.ExpectMessage(gt::kCantExportLower, {gt::kNoGrid});
  ASSERT_TRUE(shell_->Commands().Run("EXPORT(12)"));
  ui_.Verify();

  ASSERT_TRUE(shell_->Commands().Run("MODEL_CMDS(1)"));
  ASSERT_EQ(shell_->LastSolve().outcome, SolveOutcome::Completed);
  ui_.ClearRecord();

  ui_.ExpectMessage(gt::kGridTitle, {gt::kGridLine1, std::string(gt::kGridLine2) + "Heads"});
  ui_.ExpectSaveFile((dir_ / "g.grd").string());
  ui_.ExpectMessage(gt::kCompleteTitle, {gt::kGridDone});
  ASSERT_TRUE(shell_->Commands().Run("EXPORT(12)"));

  ui_.ExpectModal<exchange::VectorExport>("VectorExport", [](exchange::VectorExport& d) {
    EXPECT_EQ(d.Title(), "Export DXF File");
    d.Select(0);
    d.Layer = "Heads";
    d.Result = 1;
  });
  ui_.ExpectSaveFile((dir_ / "c.dxf").string()).Title(gt::kDxfDialogTitle);
  ui_.ExpectMessage(gt::kCompleteTitle, {gt::kDxfContoursDone, gt::kDxfVersion});
  ASSERT_TRUE(shell_->Commands().Run("EXPORT(10)"));

  ui_.ExpectModal<exchange::VectorExport>("VectorExport", [](exchange::VectorExport& d) {
    d.Select(2);
    d.Result = 1;
  });
  ui_.ExpectMessage(gt::kCantExport, {gt::kNoCapzonesBln});
  ASSERT_TRUE(shell_->Commands().Run("EXPORT(11)"));

  ui_.ExpectModal<exchange::ExportShapefile>("ExportShapefile", [](exchange::ExportShapefile& d) {
    d.SfOption = static_cast<int>(exchange::ShapeOption::Wells);
    d.Result = 1;
  });
  ui_.ExpectSaveFile((dir_ / "w.shp").string()).Title("Output ShapeFile name for Wells");
  ui_.ExpectMessage(gt::kCompleteTitle, {(dir_ / "w.shp").string() + gt::kWritten});
  ASSERT_TRUE(shell_->Commands().Run("EXPORT(13)"));
  ui_.Verify();

  std::ifstream grid(dir_ / "g.grd");
  std::string line;
  for (int i = 0; i < 3; ++i) std::getline(grid, line);
  EXPECT_EQ(line, "447000.00  463500.00\r") << "the grid stands in map coordinates";
  std::ifstream dxf(dir_ / "c.dxf");
  const std::string text((std::istreambuf_iterator<char>(dxf)), std::istreambuf_iterator<char>());
  EXPECT_NE(text.find("  8\r\nHeads\r\n"), std::string::npos);
  EXPECT_TRUE(fs::exists(dir_ / "w.dbf"));
}

}  // namespace
}  // namespace tarno
