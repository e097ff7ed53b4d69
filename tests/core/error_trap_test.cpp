// The general error trap of operations.
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "core/error.h"
#include "core/error_trap.h"
#include "core/rounding.h"
#include "support/scripted_ui.h"

namespace tarno {
namespace {

using Lines = std::vector<std::string>;

const Lines kStandardTail = {
    "TARNO may have become unstable.  For best results, exit TARNO and restart",
    "If the problem persists, contact the authors"};

TEST(ErrorTrap, FailingOperationShowsTheGeneralMessageAndReturnsFalse) {
  ScriptedUserInterface ui;
  ui.ExpectMessage("Unhandled Error -- Contact the Authors",
                   {"Unhandled error in ElemAddWell", "Disk full", kStandardTail[0],
                    kStandardTail[1]});
  const bool ok = RunOperation(ui, "ElemAddWell", [] { throw Error("Disk full"); });
  EXPECT_FALSE(ok);
  EXPECT_NO_THROW(ui.Verify());
  ASSERT_EQ(ui.Messages().size(), 1u);
  EXPECT_EQ(ui.Messages()[0].buttons, Buttons::OK);
  EXPECT_EQ(ui.Messages()[0].icon, kUnhandledErrorIcon);
}

TEST(ErrorTrap, SuccessfulOperationShowsNothing) {
  ScriptedUserInterface ui;
  int runs = 0;
  EXPECT_TRUE(RunOperation(ui, "Quiet", [&] { ++runs; }));
  EXPECT_EQ(runs, 1);
  EXPECT_TRUE(ui.Calls().empty());
}

TEST(ErrorTrap, WorkBeforeTheFailureStands) {
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled(kUnhandledErrorTitle);
  std::vector<int> written;
  RunOperation(ui, "ToolsWrite", [&] {
    written.push_back(1);
    written.push_back(2);
    CLng(1e12);  // overflow
    written.push_back(3);
  });
  EXPECT_EQ(written, (std::vector<int>{1, 2}));
  ASSERT_EQ(ui.Messages().size(), 1u);
  EXPECT_EQ(ui.Messages()[0].lines[0], "Unhandled error in ToolsWrite");
  EXPECT_NE(ui.Messages()[0].lines[1].find("Overflow"), std::string::npos);
}

TEST(ErrorTrap, AnyExceptionIsCaught) {
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled(kUnhandledErrorTitle);
  ui.ExpectMessageTitled(kUnhandledErrorTitle);
  EXPECT_FALSE(RunOperation(ui, "A", [] { throw std::out_of_range("index 7"); }));
  EXPECT_FALSE(RunOperation(ui, "B", [] { throw 42; }));
  const auto messages = ui.Messages();
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0].lines[1], "index 7");
  EXPECT_EQ(messages[1].lines[1], "Unknown error");
}

TEST(ErrorTrap, AScriptFailureIsNotSwallowed) {
  // An unscripted question inside the operation must fail the test, not turn into
  // the general error message.
  ScriptedUserInterface ui;
  EXPECT_THROW(RunOperation(ui, "Op", [&] { ui.MessageBox("Unplanned", {"?"}); }),
               UnexpectedUiCall);
  EXPECT_EQ(ui.Messages().size(), 1u);  // only the unplanned one
}

TEST(ErrorTrap, CustomHandlerReceivesTheDescription) {
  std::string seen;
  const bool ok = RunOperation([] { throw Error("TARNO.OPS found", 53); },
                               [&](const std::string& description) { seen = description; });
  EXPECT_FALSE(ok);
  EXPECT_EQ(seen, "TARNO.OPS found");
}

TEST(ErrorTrap, LinesForAnOperationName) {
  EXPECT_EQ(UnhandledErrorLines("DBIntegrity", "bad"),
            (Lines{"Unhandled error in DBIntegrity", "bad", kStandardTail[0], kStandardTail[1]}));
}

TEST(ErrorTypes, NumbersAndHierarchy) {
  EXPECT_EQ(OverflowError().number(), error_number::kOverflow);
  EXPECT_EQ(InvalidArgumentError("x").number(), error_number::kInvalidCall);
  EXPECT_EQ(Error("x").number(), error_number::kNone);
  try {
    throw OverflowError("too big");
  } catch (const std::runtime_error& e) {  // callers may catch the standard base
    EXPECT_STREQ(e.what(), "too big");
  }
}

}  // namespace
}  // namespace tarno
