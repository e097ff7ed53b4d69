// The user interface of the batch front end: no windows, no questions.
//
// Message boxes are written to a stream (standard error by default), one line per
// message line, as "<title>: <line>"; a message without lines gives "<title>:".
// A message box is answered by the answer policy when one is set, otherwise by the
// default answer given at construction; an answer that is not among the box's
// buttons is fitted to them (see FitAnswer). Input boxes return their default text
// unless an input policy is set. File dialogs answer Cancel unless an answer has
// been preset. The colour dialog keeps the initial colour. Modal dialogs keep their
// defaults: the handler registered for the dialog's name (or the general handler)
// is called with the model, if there is one. The wait window, the status bar texts
// and shown text files are written only in verbose mode.
#pragma once

#include <functional>
#include <iostream>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "core/ui_port.h"

namespace tarno {

// Fits `wanted` to a button set: itself if the set has it; otherwise a positive
// answer (OK, Yes, Retry) becomes the set's positive button and a negative one
// (Cancel, No, Abort, Ignore) the set's negative button (Cancel, No, or Abort in
// that order of preference); failing that, the set's first button.
Answer FitAnswer(Answer wanted, Buttons buttons);

class ConsoleUserInterface : public UserInterface {
 public:
  using AnswerPolicy = std::function<std::optional<Answer>(
      const std::string& title, const std::vector<std::string>& lines, Buttons buttons)>;
  using InputPolicy = std::function<std::optional<std::string>(
      const std::string& prompt, const std::string& title, const std::string& defaultText)>;
  using ModalHandler = std::function<void(DialogModel&)>;

  explicit ConsoleUserInterface(std::ostream& out = std::cerr, Answer defaultAnswer = Answer::OK);

  // The policy decides per call; when it gives nothing the default answer holds.
  void SetAnswerPolicy(AnswerPolicy policy) { answerPolicy_ = std::move(policy); }
  void SetDefaultAnswer(Answer answer) { defaultAnswer_ = answer; }
  void SetInputPolicy(InputPolicy policy) { inputPolicy_ = std::move(policy); }
  // Preset answers of the file dialogs (nothing: Cancel).
  void SetOpenFileAnswer(std::optional<std::string> path) { openFile_ = std::move(path); }
  void SetSaveFileAnswer(std::optional<std::string> path) { saveFile_ = std::move(path); }
  void SetOpenFilesAnswer(std::vector<std::string> paths) { openFiles_ = std::move(paths); }
  // Modal dialog handlers: by dialog name, and one for all other dialogs.
  void SetModalHandler(const std::string& dialogName, ModalHandler handler);
  void SetModalHandler(ModalHandler handler) { generalModal_ = std::move(handler); }
  void SetVerbose(bool verbose) { verbose_ = verbose; }

  Answer MessageBox(const std::string& title, const std::vector<std::string>& lines,
                    Buttons buttons = Buttons::OK, Icon icon = Icon::None) override;
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
  std::ostream& out_;
  Answer defaultAnswer_;
  AnswerPolicy answerPolicy_;
  InputPolicy inputPolicy_;
  std::optional<std::string> openFile_;
  std::optional<std::string> saveFile_;
  std::vector<std::string> openFiles_;
  std::map<std::string, ModalHandler> modalHandlers_;
  ModalHandler generalModal_;
  bool verbose_ = false;
};

}  // namespace tarno
