// A user interface for tests: answers from a script and records every call.
//
// A test queues what it expects the code under test to ask, with the answers, in
// order:
//
//   ScriptedUserInterface ui;
//   ui.ExpectMessage("Model Changed!", {"line 1", "line 2"}, Answer::No);
//   ui.Expect(UiCallKind::MessageBox).Title("Warning").Answer(Answer::OK);
//   ui.ExpectOpenFile("/tmp/model.trn");
//   ui.ExpectModal<WellDialog>("WellProperties", [](WellDialog& d) { d.Result = 1; });
//   RunTheOperation(ui);
//   ui.Verify();   // throws if part of the script was not used
//
// Each interactive call (message box, input box, file and colour dialogs, modal
// dialog) takes the next entry of the script. If there is none, or the entry is of
// another kind or names another title, other lines, buttons or icon, the call
// throws UnexpectedUiCall with a message that shows what came and what was
// expected, and the failure is remembered, so that Verify() reports it even when the
// code under test swallowed the exception. The wait window, the status bar texts and
// ShowTextFile need no script: they are only recorded.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <typeinfo>
#include <vector>

#include "core/error.h"
#include "core/ui_port.h"

namespace tarno {

enum class UiCallKind {
  MessageBox,
  InputBox,
  OpenFile,
  SaveFile,
  OpenFiles,
  Colour,
  Modal,
  PleaseWaitShow,
  PleaseWaitHide,
  ShowTextFile,
  Activity,
  Feedback,
};
const char* ToString(UiCallKind kind);

// One recorded call with everything it showed.
struct UiCall {
  UiCallKind kind = UiCallKind::MessageBox;
  // Message box: its title; input box: its title; file dialogs: the dialog's title;
  // modal dialog: the dialog's name.
  std::string title;
  // Message box: its lines; input box: the prompt as its one line.
  std::vector<std::string> lines;
  Buttons buttons = Buttons::OK;
  Icon icon = Icon::None;
  // Input box: the default text; wait window, Activity, Feedback: the text;
  // ShowTextFile: the path.
  std::string text;
  int width = 0;                  // wait window
  FileDialogRequest file;         // file dialogs
  std::uint32_t colour = 0;       // colour dialog: the initial colour
  // What the call answered, in words ("Yes", "cancel", "\"a.trn\""), for messages.
  std::string answer;

  // One line describing the call, for failure messages.
  std::string Describe() const;
};

// An interactive call that the script did not foresee, or a script left unused. A
// failure of the port, not of the operation: the error traps let it through.
class UnexpectedUiCall : public UiPortFailure {
 public:
  explicit UnexpectedUiCall(const std::string& message) : UiPortFailure(message) {}
};

class ScriptedUserInterface : public UserInterface {
 public:
  // One entry of the script. The fields left unset are not checked.
  class Expectation {
   public:
    explicit Expectation(UiCallKind kind) : kind_(kind) {}
    Expectation& Title(std::string title);
    Expectation& Lines(std::vector<std::string> lines);
    Expectation& WithButtons(tarno::Buttons buttons);
    Expectation& WithIcon(tarno::Icon icon);
    // Message box answer. Without one, a message box answers its first button.
    Expectation& Answer(tarno::Answer answer);
    // Input box, open and save dialogs: the text or path; nothing means Cancel.
    Expectation& Text(std::optional<std::string> text);
    // Multiple-file dialog: the paths; an empty list means Cancel.
    Expectation& Files(std::vector<std::string> paths);
    // Colour dialog: the colour; nothing means Cancel.
    Expectation& Colour(std::optional<std::uint32_t> colour);
    // Modal dialog: what the user does with the model (fill fields, press a button).
    Expectation& Handler(std::function<void(DialogModel&)> handler);

    std::string Describe() const;

   private:
    friend class ScriptedUserInterface;
    UiCallKind kind_;
    std::optional<std::string> title_;
    std::optional<std::vector<std::string>> lines_;
    std::optional<tarno::Buttons> buttons_;
    std::optional<tarno::Icon> icon_;
    std::optional<tarno::Answer> answer_;
    std::optional<std::string> text_;
    std::vector<std::string> files_;
    std::optional<std::uint32_t> colour_;
    std::function<void(DialogModel&)> handler_;
  };

  // Script building. Each returns its entry for further checks or the answer.
  Expectation& Expect(UiCallKind kind);
  Expectation& ExpectMessage(const std::string& title, const std::vector<std::string>& lines,
                             tarno::Answer answer = tarno::Answer::OK);
  Expectation& ExpectMessageTitled(const std::string& title,
                                   tarno::Answer answer = tarno::Answer::OK);
  Expectation& ExpectInput(std::optional<std::string> answer);
  Expectation& ExpectOpenFile(std::optional<std::string> path);
  Expectation& ExpectSaveFile(std::optional<std::string> path);
  Expectation& ExpectOpenFiles(std::vector<std::string> paths);
  Expectation& ExpectColour(std::optional<std::uint32_t> colour);
  Expectation& ExpectModal(const std::string& dialogName,
                           std::function<void(DialogModel&)> handler = {});
  // A modal dialog of a known model type; the call fails if the model shown is not a T.
  template <typename T>
  Expectation& ExpectModal(const std::string& dialogName, std::function<void(T&)> handler) {
    return ExpectModal(dialogName, [handler, dialogName](DialogModel& model) {
      T* typed = dynamic_cast<T*>(&model);
      if (typed == nullptr) {
        throw UnexpectedUiCall("modal dialog \"" + dialogName + "\" is not of the scripted type " +
                               typeid(T).name());
      }
      if (handler) handler(*typed);
    });
  }

  // The script: entries not yet used, and a check that all were used and nothing
  // unexpected came. Verify throws UnexpectedUiCall describing what is wrong.
  std::size_t RemainingScript() const { return script_.size(); }
  bool Failed() const { return !failures_.empty(); }
  void Verify() const;
  // Drops what is left of the script (and the remembered failures).
  void ClearScript();

  // The record.
  const std::vector<UiCall>& Calls() const { return calls_; }
  std::vector<UiCall> CallsOf(UiCallKind kind) const;
  std::vector<UiCall> Messages() const { return CallsOf(UiCallKind::MessageBox); }
  std::vector<std::string> ActivityTexts() const;
  std::vector<std::string> FeedbackTexts() const;
  std::vector<std::string> WaitTexts() const;
  std::vector<std::string> TextFilesShown() const;
  const std::string& CurrentActivity() const { return activity_; }
  const std::string& CurrentFeedback() const { return feedback_; }
  bool WaitWindowVisible() const { return waitVisible_; }
  void ClearRecord() { calls_.clear(); }

  // UserInterface.
  tarno::Answer MessageBox(const std::string& title, const std::vector<std::string>& lines,
                           tarno::Buttons buttons = tarno::Buttons::OK,
                           tarno::Icon icon = tarno::Icon::None) override;
  std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                      const std::string& defaultText) override;
  std::optional<std::string> OpenFileDialog(const FileDialogRequest& request) override;
  std::optional<std::string> SaveFileDialog(const FileDialogRequest& request) override;
  std::vector<std::string> OpenFilesDialog(const FileDialogRequest& request) override;
  std::optional<std::uint32_t> ColourDialog(std::uint32_t initial) override;
  void ShowModal(DialogModel& dialog) override;
  void PleaseWaitShow(const std::string& text, int width) override;
  void PleaseWaitHide() override;
  void ShowTextFile(const std::string& path) override;
  void Activity(const std::string& text) override;
  void Feedback(const std::string& text) override;

 private:
  // Records the call, takes the next script entry and checks it against the call.
  Expectation Take(UiCall& call);
  [[noreturn]] void Fail(const std::string& message);

  std::deque<Expectation> script_;
  std::vector<UiCall> calls_;
  std::vector<std::string> failures_;
  std::string activity_;
  std::string feedback_;
  bool waitVisible_ = false;
};

}  // namespace tarno
