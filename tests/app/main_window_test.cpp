// The main window without a project, offscreen: its menus and toolbar, the
// start-up with the Welcome dialog, the settings kept on closing, and the
// arguments of the program's screenshot option.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <QAction>
#include <QApplication>
#include <QCloseEvent>
#include <QSettings>
#include <QStandardPaths>
#include <QToolBar>
#include <filesystem>
#include <sstream>

#include "app/app_screenshot.h"
#include "app/main_window.h"
#include "app/map_widget.h"
#include "app/shell_models.h"
#include "app/toolbar_icons.h"
#include "core/console_ui.h"
#include "core/error.h"
#include "support/temp_dir.h"

namespace tarno {
namespace {

void EnsureApp() {
  // The per-user settings of the tests go to Qt's test location, never the user's.
  QStandardPaths::setTestModeEnabled(true);
  if (QApplication::instance() != nullptr) return;
  ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
  static int argc = 1;
  static char name[] = "test_app";
  static char* argv[] = {name, nullptr};
  new QApplication(argc, argv);
}

class Window : public ::testing::Test {
 protected:
  void SetUp() override {
    EnsureApp();
    // Each test keeps its settings in a file of its own (tests may run in parallel).
    temp_.emplace("tarno-window");
    dir_ = temp_->Path();
    options_.settingsFile = (dir_ / "TARNO.conf").string();
    options_.ui = &ui_;
    options_.useSettings = false;
    ui_.SetAnswerPolicy([this](const std::string& title, const std::vector<std::string>&,
                               Buttons) -> std::optional<Answer> {
      titles_.push_back(title);
      return std::nullopt;
    });
  }
  void TearDown() override { temp_.reset(); }
  QSettings Settings() const {
    return QSettings(QString::fromStdString(options_.settingsFile), QSettings::IniFormat);
  }

  std::optional<test::TempDir> temp_;
  std::filesystem::path dir_;
  std::ostringstream messages_;
  ConsoleUserInterface ui_{messages_, Answer::No};
  MainWindowOptions options_;
  std::vector<std::string> titles_;
};

TEST_F(Window, WithoutAProjectOnlyTheProjectCommandsAndHelp) {
  MainWindow w(options_);
  w.StartUp("");
  EXPECT_EQ(w.windowTitle().toStdString(), "TARNO");
  for (const char* key : {"FILEMENU", "FILE_CMDS(0)", "FILE_CMDS(1)", "FILE_CMDS(7)", "HELPMENU",
                          "About", "ReleaseNotes"})
    EXPECT_TRUE(w.Action(key)->isEnabled()) << key;
  for (const char* key : {"FILE_CMDS(3)", "FILE_CMDS(4)", "VIEWMENU", "MODELMENU", "WINDOWMENU",
                          "TOOLSMENU", "EDITMENU", "MODEL_CMDS(1)"})
    EXPECT_FALSE(w.Action(key)->isEnabled()) << key;
  EXPECT_TRUE(w.ToolbarAction("FILEOPEN")->isEnabled());
  EXPECT_FALSE(w.ToolbarAction("MODELCALC")->isEnabled());
  EXPECT_FALSE(w.ToolbarAction("WINDOWZOOMIN")->isEnabled());
  EXPECT_FALSE(w.Map()->MouseEnabled());
}

TEST_F(Window, MenusCarryTheCaptionsAndTheirStateOfConstruction) {
  MainWindow w(options_);
  for (const auto& e : MenuModel::Entries()) {
    QAction* a = w.Action(e.key);
    ASSERT_NE(a, nullptr) << e.key;
    EXPECT_EQ(a->text().toStdString(), e.caption) << e.key;
    if (!e.built) {
      EXPECT_EQ(a->statusTip().toStdString(), kNotAvailableTip) << e.key;
    }
    EXPECT_EQ(a->isCheckable(), e.kind == MenuKind::Switch || e.kind == MenuKind::Choice)
        << e.key;
  }
  EXPECT_EQ(w.Action("Layermenu(10)")->shortcut(), QKeySequence("Ctrl+L"));
  for (const auto& b : MenuModel::Toolbar()) {
    QAction* a = w.ToolbarAction(b.key);
    ASSERT_NE(a, nullptr) << b.key;
    EXPECT_EQ(a->toolTip().toStdString(), b.tip);
    EXPECT_FALSE(a->icon().isNull()) << b.key;
  }
}

TEST_F(Window, StatusBarNoteAndPanels) {
  MainWindow w(options_);
  w.Port().Activity("Solving");
  w.Port().Feedback("Please wait");
  w.Note("Head", "12.5");
  EXPECT_EQ(w.PanelText(0).toStdString(), "Solving");
  EXPECT_EQ(w.PanelText(1).toStdString(), "Please wait");
  EXPECT_EQ(w.PanelText(2).toStdString(), "Head 12.5");
  EXPECT_EQ(w.PanelText(7).toStdString(), "");
}

TEST_F(Window, TheWelcomeOffersTheExamples) {
  options_.useSettings = true;
  int welcomes = 0;
  ui_.SetModalHandler(Welcome::kName, [&](DialogModel& m) {
    ++welcomes;
    auto& welcome = dynamic_cast<Welcome&>(m);
    welcome.Result = 3;
    welcome.chkShowBox = true;
  });
  {
    MainWindow w(options_);
    w.StartUp("");
    EXPECT_EQ(welcomes, 1);
    // The offer is declined (the port answers No): no project.
    ASSERT_EQ(titles_.size(), 1u);
    EXPECT_EQ(titles_[0], "Basin and Range Example");
    EXPECT_FALSE(w.Session().ProjectOpen());
  }
  // "Don't show this dialog box in the future" is kept.
  EXPECT_EQ(Settings().value("Startup/WelcomeBox").toInt(), 1);
  {
    MainWindow w(options_);
    w.StartUp("");
    EXPECT_EQ(welcomes, 1);
  }
}

TEST_F(Window, ClosingStoresTheWindowAndTheToolbar) {
  options_.useSettings = true;
  {
    MainWindow w(options_);
    w.resize(640, 480);
    w.State().layers.toolbar = false;
    QCloseEvent e;
    QApplication::sendEvent(&w, &e);
    EXPECT_TRUE(e.isAccepted());
  }
  QSettings s(QString::fromStdString(options_.settingsFile), QSettings::IniFormat);
  EXPECT_EQ(s.value("Startup/Width").toInt(), 640);
  EXPECT_EQ(s.value("Startup/Height").toInt(), 480);
  EXPECT_FALSE(s.value("Startup/Toolbar").toBool());
  MainWindow again(options_);
  EXPECT_EQ(again.width(), 640);
  EXPECT_FALSE(again.State().layers.toolbar);
}

TEST(ScreenshotArguments, ReadsTheOptions) {
  EXPECT_FALSE(ParseScreenshotArguments({"my project.trn"}).has_value());
  const auto r = ParseScreenshotArguments({"--screenshot", "a.png", "--size", "640x480", "--solve", "p.trn"});
  ASSERT_TRUE(r.has_value());
  EXPECT_EQ(r->output, "a.png");
  EXPECT_EQ(r->width, 640);
  EXPECT_EQ(r->height, 480);
  EXPECT_TRUE(r->solve);
  EXPECT_EQ(r->project, "p.trn");
  const auto d = ParseScreenshotArguments({"--screenshot", "a.png", "p.trn"});
  EXPECT_EQ(d->width, 1200);
  EXPECT_EQ(d->height, 800);
  EXPECT_FALSE(d->solve);
}

TEST(ScreenshotArguments, RefusesWhatItCannotUse) {
  EXPECT_THROW(ParseScreenshotArguments({"--screenshot", "a.png"}), Error);          // no project
  EXPECT_THROW(ParseScreenshotArguments({"p.trn", "--screenshot"}), Error);          // no file
  EXPECT_THROW(ParseScreenshotArguments({"--screenshot", "a.png", "--zoom", "p"}), Error);
  EXPECT_THROW(ParseScreenshotArguments({"--screenshot", "a.png", "p", "q"}), Error);
  int w = 0, h = 0;
  EXPECT_THROW(ParseSize("640", w, h), Error);
  EXPECT_THROW(ParseSize("640x", w, h), Error);
  EXPECT_THROW(ParseSize("-5x10", w, h), Error);
  EXPECT_THROW(ParseSize("8x8", w, h), Error);
  EXPECT_THROW(ParseSize("20000x100", w, h), Error);
  try {
    ParseSize("12ax40", w, h);
    FAIL();
  } catch (const Error& e) {
    EXPECT_NE(std::string(e.what()).find("12ax40"), std::string::npos);
  }
  ParseSize("16X10000", w, h);
  EXPECT_EQ(w, 16);
  EXPECT_EQ(h, 10000);
}

}  // namespace
}  // namespace tarno
