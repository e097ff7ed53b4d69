// The command registry: keys to handlers, the error trap around every command, the
// groups of keys for one object (the map editor's), toolbar buttons through their
// menu entries, and the report of a key that no handler takes.
#include "app/shell/command_registry.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "app/menu_model.h"
#include "core/error_trap.h"
#include "support/scripted_ui.h"

namespace tarno {
namespace {

class CommandRegistryTest : public ::testing::Test {
 protected:
  void ExpectUnhandled(const std::string& operation, const std::string& description) {
    ui.ExpectMessage(kUnhandledErrorTitle, UnhandledErrorLines(operation, description))
        .WithIcon(kUnhandledErrorIcon);
  }

  ScriptedUserInterface ui;
  CommandRegistry registry{ui};
  std::vector<std::string> ran;
};

TEST_F(CommandRegistryTest, RunCallsTheHandlerOfTheKeyOnly) {
  registry.Register("MODEL_CMDS(1)", [&] { ran.push_back("solve"); });
  registry.Register("ModelSize", [&] { ran.push_back("size"); });
  EXPECT_TRUE(registry.Has("MODEL_CMDS(1)"));
  EXPECT_FALSE(registry.Has("MODEL_CMDS(2)"));
  EXPECT_TRUE(registry.Run("ModelSize"));
  EXPECT_EQ(ran, std::vector<std::string>{"size"});
  EXPECT_EQ(registry.Keys(), (std::vector<std::string>{"MODEL_CMDS(1)", "ModelSize"}));
  ui.Verify();
}

TEST_F(CommandRegistryTest, ASecondRegistrationReplacesTheFirst) {
  registry.Register("About", [&] { ran.push_back("first"); });
  registry.Register("About", [&] { ran.push_back("second"); });
  registry.Run("About");
  EXPECT_EQ(ran, std::vector<std::string>{"second"});
}

TEST_F(CommandRegistryTest, AnUnknownKeyIsReportedAndRunsNothing) {
  registry.Register("About", [&] { ran.push_back("about"); });
  ExpectUnhandled(kUnknownCommandOperation, "No command for the menu key \"NO_SUCH(3)\"");
  EXPECT_FALSE(registry.Run("NO_SUCH(3)"));
  EXPECT_TRUE(ran.empty());
  ui.Verify();
}

TEST_F(CommandRegistryTest, AThrowingCommandShowsTheGeneralMessageAndItsWorkStands) {
  int done = 0;
  registry.Register(
      "MODEL_CMDS(0)",
      [&] {
        done = 1;  // the part of the work before the failure
        throw std::runtime_error("the Model row is missing");
      },
      "ModelSettings");
  ExpectUnhandled("ModelSettings", "the Model row is missing");
  EXPECT_FALSE(registry.Run("MODEL_CMDS(0)"));
  EXPECT_EQ(done, 1);
  // The registry goes on: the next command runs.
  registry.Register("About", [&] { done = 2; });
  EXPECT_TRUE(registry.Run("About"));
  EXPECT_EQ(done, 2);
  ui.Verify();
}

TEST_F(CommandRegistryTest, WithoutAnOperationNameTheKeyNamesTheFailure) {
  registry.Register("SET_TIME", [] { throw std::runtime_error("no solution"); });
  ExpectUnhandled("SET_TIME", "no solution");
  EXPECT_FALSE(registry.Run("SET_TIME"));
  ui.Verify();
}

TEST_F(CommandRegistryTest, AGroupOfKeysGoesToOneHandlerThatIsToldTheKey) {
  registry.Register(
      {"EDIT_CMDS(0)", "EDIT_CMDS(1)", "EDIT_CMDS(2)"},
      [&](const std::string& key) { ran.push_back(key); }, "EDIT_CMDS_Click");
  EXPECT_TRUE(registry.Has("EDIT_CMDS(1)"));
  registry.Run("EDIT_CMDS(2)");
  registry.Run("EDIT_CMDS(0)");
  EXPECT_EQ(ran, (std::vector<std::string>{"EDIT_CMDS(2)", "EDIT_CMDS(0)"}));
  // The group's name is the failure's.
  registry.Register(
      {"EDIT_CMDS(3)"}, [](const std::string&) { throw std::runtime_error("x"); },
      "EDIT_CMDS_Click");
  ExpectUnhandled("EDIT_CMDS_Click", "x");
  registry.Run("EDIT_CMDS(3)");
  ui.Verify();
}

TEST_F(CommandRegistryTest, APrefixTakesItsKeysButAKeyOfItsOwnComesFirst) {
  registry.RegisterPrefix("RUN_FILES(",
                          [&](const std::string& key) { ran.push_back("file " + key); });
  registry.Register("RUN_FILES(7)", [&] { ran.push_back("echo"); });
  EXPECT_TRUE(registry.Has("RUN_FILES(3)"));
  EXPECT_FALSE(registry.Has("RUN_FILE"));
  registry.Run("RUN_FILES(3)");
  registry.Run("RUN_FILES(7)");
  EXPECT_EQ(ran, (std::vector<std::string>{"file RUN_FILES(3)", "echo"}));
}

TEST_F(CommandRegistryTest, FallbacksAreAskedInOrderForKeysNobodyElseTakes) {
  registry.Register("About", [&] { ran.push_back("about"); });
  registry.RegisterFallback([&](const std::string& key) {
    ran.push_back("first " + key);
    return key == "ELEM_NEW(0)";
  });
  registry.RegisterFallback([&](const std::string& key) {
    ran.push_back("second " + key);
    return key.rfind("MODEL_CMDS(", 0) == 0;
  });
  // A fallback is no handler of its own: Has does not ask it.
  EXPECT_FALSE(registry.Has("ELEM_NEW(0)"));
  EXPECT_TRUE(registry.Run("About"));
  EXPECT_TRUE(registry.Run("ELEM_NEW(0)"));
  EXPECT_TRUE(registry.Run("MODEL_CMDS(3)"));
  EXPECT_EQ(ran, (std::vector<std::string>{"about", "first ELEM_NEW(0)", "first MODEL_CMDS(3)",
                                           "second MODEL_CMDS(3)"}));
  // Declined by all: reported as unknown.
  ran.clear();
  ExpectUnhandled(kUnknownCommandOperation, "No command for the menu key \"GM_Extract\"");
  EXPECT_FALSE(registry.Run("GM_Extract"));
  EXPECT_EQ(ran, (std::vector<std::string>{"first GM_Extract", "second GM_Extract"}));
  ui.Verify();
}

TEST_F(CommandRegistryTest, AFailingFallbackIsReportedUnderItsNameAndEndsTheSearch) {
  registry.RegisterFallback(
      [](const std::string&) -> bool { throw std::runtime_error("bad vertex"); }, "MapEditor");
  registry.RegisterFallback([&](const std::string& key) {
    ran.push_back(key);
    return true;
  });
  ExpectUnhandled("MapEditor", "bad vertex");
  EXPECT_FALSE(registry.Run("EDIT_CMDS(1)"));
  EXPECT_TRUE(ran.empty());
  ui.Verify();
}

TEST_F(CommandRegistryTest, AButtonRunsItsMenuEntryUnlessItHasAHandlerOfItsOwn) {
  registry.Register("MODEL_CMDS(1)", [&] { ran.push_back("solve"); });
  registry.Register("ZOOM_CMDS(1)", [&] { ran.push_back("zoom in entry"); });
  registry.RegisterButton("WINDOWSCROLLLEFT", [&] { ran.push_back("scroll left"); });
  EXPECT_EQ(MenuModel::Button("MODELCALC").menuKey, "MODEL_CMDS(1)");
  EXPECT_TRUE(registry.RunButton("MODELCALC"));
  // The scroll button shares the availability of Zoom In, not its action.
  EXPECT_EQ(MenuModel::Button("WINDOWSCROLLLEFT").menuKey, "ZOOM_CMDS(1)");
  EXPECT_TRUE(registry.HasButton("WINDOWSCROLLLEFT"));
  EXPECT_TRUE(registry.RunButton("WINDOWSCROLLLEFT"));
  EXPECT_EQ(ran, (std::vector<std::string>{"solve", "scroll left"}));
  ui.Verify();
}

TEST_F(CommandRegistryTest, AnUnknownButtonOrAButtonWithoutCommandIsReported) {
  ExpectUnhandled(kUnknownCommandOperation, "No command for the menu key \"NOBUTTON\"");
  EXPECT_FALSE(registry.RunButton("NOBUTTON"));
  // A known button whose entry nobody registered: its menu key is reported.
  ExpectUnhandled(kUnknownCommandOperation, "No command for the menu key \"EDIT_CMDS(2)\"");
  EXPECT_FALSE(registry.RunButton("EDITDELETE"));
  ui.Verify();
}

TEST_F(CommandRegistryTest, AHandlerMayReplaceItselfWhileItRuns) {
  registry.Register("Layermenu(10)", [&] {
    ran.push_back("old");
    registry.Register("Layermenu(10)", [&] { ran.push_back("new"); });
    ran.push_back("old again");
  });
  registry.Run("Layermenu(10)");
  registry.Run("Layermenu(10)");
  EXPECT_EQ(ran, (std::vector<std::string>{"old", "old again", "new"}));
}

}  // namespace
}  // namespace tarno
