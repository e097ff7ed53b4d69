// The user interface port: style codes, the scripted port of the tests and the
// console port of the batch front end.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

#include "core/console_ui.h"
#include "support/scripted_ui.h"

namespace tarno {
namespace {

using Lines = std::vector<std::string>;

// A small dialog model as the element dialogs are built.
class SampleDialog : public DialogModel {
 public:
  std::string DialogName() const override { return "SampleDialog"; }
  std::string label = "default";
  int result = 0;
};

class OtherDialog : public DialogModel {
 public:
  std::string DialogName() const override { return "OtherDialog"; }
};

TEST(MessageStyle, DecodesButtonsAndIcon) {
  EXPECT_EQ(ButtonsFromStyle(49), Buttons::OKCancel);
  EXPECT_EQ(IconFromStyle(49), Icon::Exclamation);
  EXPECT_EQ(ButtonsFromStyle(52), Buttons::YesNo);
  EXPECT_EQ(IconFromStyle(52), Icon::Exclamation);
  EXPECT_EQ(ButtonsFromStyle(36), Buttons::YesNo);
  EXPECT_EQ(IconFromStyle(36), Icon::Question);
  EXPECT_EQ(ButtonsFromStyle(16), Buttons::OK);
  EXPECT_EQ(IconFromStyle(16), Icon::Critical);
  EXPECT_EQ(IconFromStyle(64), Icon::Information);
  EXPECT_EQ(ButtonsFromStyle(3 + 256), Buttons::YesNoCancel);  // default-button flag ignored
  EXPECT_EQ(IconFromStyle(0), Icon::None);
  EXPECT_EQ(ButtonsFromStyle(7), Buttons::OK);  // no such set
}

TEST(MessageStyle, NamesForMessages) {
  EXPECT_STREQ(ToString(Buttons::YesNoCancel), "YesNoCancel");
  EXPECT_STREQ(ToString(Icon::Exclamation), "Exclamation");
  EXPECT_STREQ(ToString(Answer::No), "No");
  EXPECT_EQ(AnswersOf(Buttons::YesNoCancel),
            (std::vector<Answer>{Answer::Yes, Answer::No, Answer::Cancel}));
  EXPECT_EQ(AnswersOf(Buttons::AbortRetryIgnore),
            (std::vector<Answer>{Answer::Abort, Answer::Retry, Answer::Ignore}));
}

// --- ScriptedUserInterface ------------------------------------------------

TEST(ScriptedUi, AnswersMessagesInScriptOrderAndRecordsThem) {
  ScriptedUserInterface ui;
  ui.ExpectMessage("Model Changed!", {"first", "second"}, Answer::No);
  ui.ExpectMessageTitled("Warning");
  EXPECT_EQ(ui.MessageBox("Model Changed!", {"first", "second"}, Buttons::YesNo, Icon::Question),
            Answer::No);
  EXPECT_EQ(ui.MessageBoxStyle("Warning", {"anything"}, 48), Answer::OK);
  EXPECT_NO_THROW(ui.Verify());
  const auto messages = ui.Messages();
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(messages[0].title, "Model Changed!");
  EXPECT_EQ(messages[0].lines, (Lines{"first", "second"}));
  EXPECT_EQ(messages[0].buttons, Buttons::YesNo);
  EXPECT_EQ(messages[0].icon, Icon::Question);
  EXPECT_EQ(messages[0].answer, "No");
  EXPECT_EQ(messages[1].icon, Icon::Exclamation);
}

TEST(ScriptedUi, QuestionHelperIsTrueOnlyForYes) {
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled("Q", Answer::Yes);
  ui.ExpectMessageTitled("Q", Answer::No);
  EXPECT_TRUE(ui.Question("Q", {"?"}));
  EXPECT_FALSE(ui.Question("Q", {"?"}));
}

TEST(ScriptedUi, WithoutAnAnswerAMessageTakesItsFirstButton) {
  ScriptedUserInterface ui;
  ui.Expect(UiCallKind::MessageBox);
  ui.Expect(UiCallKind::MessageBox);
  EXPECT_EQ(ui.MessageBox("a", {}, Buttons::YesNoCancel), Answer::Yes);
  EXPECT_EQ(ui.MessageBox("b", {}, Buttons::RetryCancel), Answer::Retry);
}

TEST(ScriptedUi, UnscriptedCallThrowsAndIsRemembered) {
  ScriptedUserInterface ui;
  try {
    ui.MessageBox("Surprise", {"line"});
    FAIL() << "no exception";
  } catch (const UnexpectedUiCall& e) {
    const std::string what = e.what();
    EXPECT_NE(what.find("Surprise"), std::string::npos) << what;
    EXPECT_NE(what.find("script is empty"), std::string::npos) << what;
  }
  EXPECT_TRUE(ui.Failed());
  EXPECT_THROW(ui.Verify(), UnexpectedUiCall);
  ASSERT_EQ(ui.Calls().size(), 1u);  // recorded all the same
}

TEST(ScriptedUi, MismatchShowsWhatCameAndWhatWasExpected) {
  ScriptedUserInterface ui;
  ui.ExpectMessage("Title", {"expected line"});
  try {
    ui.MessageBox("Title", {"other line"});
    FAIL() << "no exception";
  } catch (const UnexpectedUiCall& e) {
    const std::string what = e.what();
    EXPECT_NE(what.find("other lines"), std::string::npos) << what;
    EXPECT_NE(what.find("\"other line\""), std::string::npos) << what;
    EXPECT_NE(what.find("\"expected line\""), std::string::npos) << what;
  }
}

TEST(ScriptedUi, EachCheckedFieldCanMismatch) {
  {
    ScriptedUserInterface ui;
    ui.ExpectMessageTitled("A");
    EXPECT_THROW(ui.MessageBox("B", {}), UnexpectedUiCall);
  }
  {
    ScriptedUserInterface ui;
    ui.Expect(UiCallKind::MessageBox).WithButtons(Buttons::YesNo);
    EXPECT_THROW(ui.MessageBox("A", {}, Buttons::OKCancel), UnexpectedUiCall);
  }
  {
    ScriptedUserInterface ui;
    ui.Expect(UiCallKind::MessageBox).WithIcon(Icon::Critical);
    EXPECT_THROW(ui.MessageBox("A", {}, Buttons::OK, Icon::Exclamation), UnexpectedUiCall);
  }
  {
    ScriptedUserInterface ui;
    ui.ExpectOpenFile("x.trn");
    EXPECT_THROW(ui.SaveFileDialog({}), UnexpectedUiCall);  // another kind
  }
  {
    ScriptedUserInterface ui;
    ui.ExpectModal("SampleDialog");
    OtherDialog other;
    EXPECT_THROW(ui.ShowModal(other), UnexpectedUiCall);
  }
}

TEST(ScriptedUi, AnAnswerThatIsNotAButtonIsAScriptError) {
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled("Info", Answer::Yes);
  EXPECT_THROW(ui.MessageBox("Info", {"x"}, Buttons::OK), UnexpectedUiCall);
  EXPECT_TRUE(ui.Failed());
}

TEST(ScriptedUi, VerifyListsTheUnusedScript) {
  ScriptedUserInterface ui;
  ui.ExpectMessageTitled("Never shown");
  ui.ExpectSaveFile(std::nullopt);
  EXPECT_EQ(ui.RemainingScript(), 2u);
  try {
    ui.Verify();
    FAIL() << "no exception";
  } catch (const UnexpectedUiCall& e) {
    const std::string what = e.what();
    EXPECT_NE(what.find("2 scripted call(s) never came"), std::string::npos) << what;
    EXPECT_NE(what.find("Never shown"), std::string::npos) << what;
    EXPECT_NE(what.find("SaveFileDialog"), std::string::npos) << what;
  }
  ui.ClearScript();
  EXPECT_NO_THROW(ui.Verify());
}

TEST(ScriptedUi, InputAndFileDialogsAnswerOrCancel) {
  ScriptedUserInterface ui;
  ui.ExpectInput("250").Title("Edit Grid");
  ui.ExpectInput(std::nullopt);
  ui.ExpectOpenFile("/data/a.trn");
  ui.ExpectSaveFile(std::nullopt);
  ui.ExpectOpenFiles({"/m/1.bbm", "/m/2.bbm"});
  ui.ExpectOpenFiles({});
  ui.ExpectColour(0x00FF00u);
  ui.ExpectColour(std::nullopt);

  EXPECT_EQ(ui.InputBox("Enter row height", "Edit Grid", "100"), "250");
  EXPECT_EQ(ui.InputBox("p", "t", "d"), std::nullopt);
  FileDialogRequest open{"Open Project", "trn", "Projects (*.trn)|*.trn", "/data", ""};
  EXPECT_EQ(ui.OpenFileDialog(open), "/data/a.trn");
  EXPECT_EQ(ui.SaveFileDialog({}), std::nullopt);
  EXPECT_EQ(ui.OpenFilesDialog({}), (Lines{"/m/1.bbm", "/m/2.bbm"}));
  EXPECT_TRUE(ui.OpenFilesDialog({}).empty());
  EXPECT_EQ(ui.ColourDialog(5), 0x00FF00u);
  EXPECT_EQ(ui.ColourDialog(5), std::nullopt);
  EXPECT_NO_THROW(ui.Verify());

  const auto inputs = ui.CallsOf(UiCallKind::InputBox);
  ASSERT_EQ(inputs.size(), 2u);
  EXPECT_EQ(inputs[0].lines, (Lines{"Enter row height"}));
  EXPECT_EQ(inputs[0].text, "100");
  EXPECT_EQ(inputs[0].answer, "\"250\"");
  EXPECT_EQ(inputs[1].answer, "cancel");
  const auto opens = ui.CallsOf(UiCallKind::OpenFile);
  ASSERT_EQ(opens.size(), 1u);
  EXPECT_EQ(opens[0].title, "Open Project");
  EXPECT_EQ(opens[0].file.filter, "Projects (*.trn)|*.trn");
}

TEST(ScriptedUi, ModalHandlerFillsTheModel) {
  ScriptedUserInterface ui;
  ui.ExpectModal<SampleDialog>("SampleDialog", [](SampleDialog& d) {
    EXPECT_EQ(d.label, "default");  // the caller's values arrive
    d.label = "WELL1";
    d.result = 1;
  });
  SampleDialog dialog;
  ui.ShowModal(dialog);
  EXPECT_EQ(dialog.label, "WELL1");
  EXPECT_EQ(dialog.result, 1);
  EXPECT_NO_THROW(ui.Verify());
}

TEST(ScriptedUi, TypedModalOfAnotherTypeFails) {
  struct Impostor : DialogModel {
    std::string DialogName() const override { return "SampleDialog"; }
  };
  ScriptedUserInterface ui;
  ui.ExpectModal<SampleDialog>("SampleDialog", [](SampleDialog&) {});
  Impostor impostor;
  EXPECT_THROW(ui.ShowModal(impostor), UnexpectedUiCall);
  EXPECT_TRUE(ui.Failed());
}

TEST(ScriptedUi, NestedCallsInsideAModalDialogUseTheScript) {
  ScriptedUserInterface ui;
  ui.ExpectModal("SampleDialog", [&ui](DialogModel&) {
    ui.MessageBox("Bad Entry", {"Label is required"}, Buttons::OK, Icon::Exclamation);
  });
  ui.ExpectMessage("Bad Entry", {"Label is required"});
  SampleDialog dialog;
  ui.ShowModal(dialog);
  EXPECT_NO_THROW(ui.Verify());
}

TEST(ScriptedUi, WaitWindowAndStatusTextsNeedNoScript) {
  ScriptedUserInterface ui;
  ui.Activity("Solve");
  ui.PleaseWaitShow("Writing TARNO input file", 3000);
  EXPECT_TRUE(ui.WaitWindowVisible());
  ui.Feedback("Click mouse button to select element");
  ui.ShowTextFile("/tmp/error.log");
  ui.PleaseWaitHide();
  EXPECT_FALSE(ui.WaitWindowVisible());
  ui.Activity("Select");
  EXPECT_NO_THROW(ui.Verify());
  EXPECT_EQ(ui.ActivityTexts(), (Lines{"Solve", "Select"}));
  EXPECT_EQ(ui.CurrentActivity(), "Select");
  EXPECT_EQ(ui.FeedbackTexts(), (Lines{"Click mouse button to select element"}));
  EXPECT_EQ(ui.CurrentFeedback(), "Click mouse button to select element");
  EXPECT_EQ(ui.WaitTexts(), (Lines{"Writing TARNO input file"}));
  EXPECT_EQ(ui.TextFilesShown(), (Lines{"/tmp/error.log"}));
  const auto waits = ui.CallsOf(UiCallKind::PleaseWaitShow);
  ASSERT_EQ(waits.size(), 1u);
  EXPECT_EQ(waits[0].width, 3000);
  // The order of all calls is kept.
  ASSERT_EQ(ui.Calls().size(), 6u);
  EXPECT_EQ(ui.Calls()[4].kind, UiCallKind::PleaseWaitHide);
}

// --- ConsoleUserInterface ---------------------------------------------------

TEST(ConsoleUi, WritesOneLinePerMessageLine) {
  std::ostringstream err;
  ConsoleUserInterface ui(err);
  EXPECT_EQ(ui.MessageBox("File Not Found", {"File ", "x.inh does not exist!"}), Answer::OK);
  ui.MessageBox("Empty", {});
  EXPECT_EQ(err.str(), "File Not Found: File \nFile Not Found: x.inh does not exist!\nEmpty:\n");
}

TEST(ConsoleUi, DefaultAnswerIsFittedToTheButtons) {
  std::ostringstream err;
  ConsoleUserInterface no(err, Answer::No);
  EXPECT_EQ(no.MessageBox("q", {}, Buttons::YesNo), Answer::No);
  EXPECT_EQ(no.MessageBox("q", {}, Buttons::OKCancel), Answer::Cancel);
  EXPECT_EQ(no.MessageBox("q", {}, Buttons::OK), Answer::OK);
  ConsoleUserInterface yes(err, Answer::Yes);
  EXPECT_EQ(yes.MessageBox("q", {}, Buttons::OKCancel), Answer::OK);
  EXPECT_EQ(yes.MessageBox("q", {}, Buttons::RetryCancel), Answer::Retry);
  ConsoleUserInterface cancel(err, Answer::Cancel);
  EXPECT_EQ(cancel.MessageBox("q", {}, Buttons::YesNo), Answer::No);
  EXPECT_EQ(cancel.MessageBox("q", {}, Buttons::AbortRetryIgnore), Answer::Abort);
  EXPECT_EQ(cancel.MessageBox("q", {}, Buttons::YesNoCancel), Answer::Cancel);
}

TEST(ConsoleUi, PolicyChoosesPerCall) {
  std::ostringstream err;
  ConsoleUserInterface ui(err, Answer::No);
  std::vector<std::string> asked;
  ui.SetAnswerPolicy([&](const std::string& title, const Lines&, Buttons) -> std::optional<Answer> {
    asked.push_back(title);
    if (title == "Reuse Results?") return Answer::Yes;
    return std::nullopt;  // the default holds
  });
  EXPECT_EQ(ui.MessageBox("Reuse Results?", {"?"}, Buttons::YesNo), Answer::Yes);
  EXPECT_EQ(ui.MessageBox("Model Changed!", {"?"}, Buttons::YesNo), Answer::No);
  EXPECT_EQ(asked, (Lines{"Reuse Results?", "Model Changed!"}));
}

TEST(ConsoleUi, DialogsTakeDefaultsOrPresets) {
  std::ostringstream err;
  ConsoleUserInterface ui(err);
  EXPECT_EQ(ui.InputBox("prompt", "title", "100"), "100");
  EXPECT_EQ(ui.OpenFileDialog({}), std::nullopt);
  EXPECT_EQ(ui.SaveFileDialog({}), std::nullopt);
  EXPECT_TRUE(ui.OpenFilesDialog({}).empty());
  EXPECT_EQ(ui.ColourDialog(0x123456u), 0x123456u);
  ui.SetOpenFileAnswer("/p/model.trn");
  ui.SetSaveFileAnswer("/p/out.dxf");
  ui.SetOpenFilesAnswer({"/p/a.bbm"});
  ui.SetInputPolicy([](const std::string&, const std::string&, const std::string&) {
    return std::optional<std::string>("7");
  });
  EXPECT_EQ(ui.OpenFileDialog({}), "/p/model.trn");
  EXPECT_EQ(ui.SaveFileDialog({}), "/p/out.dxf");
  EXPECT_EQ(ui.OpenFilesDialog({}), (Lines{"/p/a.bbm"}));
  EXPECT_EQ(ui.InputBox("prompt", "title", "100"), "7");
  EXPECT_TRUE(err.str().empty());  // none of these writes anything
}

TEST(ConsoleUi, ModalDialogsKeepDefaultsUnlessAHandlerActs) {
  std::ostringstream err;
  ConsoleUserInterface ui(err);
  SampleDialog dialog;
  ui.ShowModal(dialog);
  EXPECT_EQ(dialog.label, "default");
  int general = 0;
  ui.SetModalHandler([&](DialogModel&) { ++general; });
  ui.SetModalHandler("SampleDialog", [](DialogModel& d) {
    static_cast<SampleDialog&>(d).result = 1;
  });
  ui.ShowModal(dialog);
  EXPECT_EQ(dialog.result, 1);
  EXPECT_EQ(general, 0);  // the named handler wins
  OtherDialog other;
  ui.ShowModal(other);
  EXPECT_EQ(general, 1);
}

TEST(ConsoleUi, StatusTextsOnlyInVerboseMode) {
  std::ostringstream err;
  ConsoleUserInterface ui(err);
  ui.Activity("Solve");
  ui.PleaseWaitShow("Writing", 100);
  ui.PleaseWaitHide();
  ui.ShowTextFile("/tmp/error.log");
  EXPECT_TRUE(err.str().empty());
  ui.SetVerbose(true);
  ui.Activity("Solve");
  ui.Feedback("Done");
  ui.PleaseWaitShow("Writing", 100);
  ui.ShowTextFile("/tmp/error.log");
  EXPECT_EQ(err.str(),
            "Activity: Solve\nFeedback: Done\nPlease wait: Writing\nText file: /tmp/error.log\n");
}

}  // namespace
}  // namespace tarno
