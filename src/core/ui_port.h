// The user interface port.
//
// Every message box, question, input box, file dialog, colour dialog, wait window,
// modal dialog and status bar text of the system goes through this interface. The
// desktop program implements it with Qt widgets; the batch front end with standard
// error and command-line defaults; the tests with a scripted port, which answers
// from a script and records every call with its exact texts. A port that cannot
// answer throws UiPortFailure (core/error.h), which the error traps let through.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tarno {

// Button sets and icons of a message box. The numeric values are those of the
// classic message box style code, so that a style such as 49 (OK and Cancel with the
// exclamation icon) or 52 (Yes and No with the exclamation icon) decodes directly.
enum class Buttons : int {
  OK = 0,
  OKCancel = 1,
  AbortRetryIgnore = 2,
  YesNoCancel = 3,
  YesNo = 4,
  RetryCancel = 5,
};

enum class Icon : int {
  None = 0,
  Critical = 16,
  Question = 32,
  Exclamation = 48,
  Information = 64,
};

// The answer of a message box, numbered as the classic message box answers.
enum class Answer : int {
  OK = 1,
  Cancel = 2,
  Abort = 3,
  Retry = 4,
  Ignore = 5,
  Yes = 6,
  No = 7,
};

// Splits a classic style code (buttons + icon) into its two parts.
Buttons ButtonsFromStyle(int style);
Icon IconFromStyle(int style);
const char* ToString(Buttons b);
const char* ToString(Icon i);
const char* ToString(Answer a);

// The answers a button set offers, in the order of its buttons.
std::vector<Answer> AnswersOf(Buttons buttons);

// A file dialog's request: title, default extension (without the dot), the filter in
// the form "Description (*.ext)|*.ext[|...]", and the directory to start in.
struct FileDialogRequest {
  std::string title;
  std::string defaultExtension;
  std::string filter;
  std::string initialDirectory;
  std::string initialFile;
};

// A modal dialog model. The dialog models of the system (the new-project wizard,
// the project settings, the model settings, ...) derive from this. The Qt program
// maps each model to its view by DialogName(); the scripted port lets a test fill
// in the model's fields and press its buttons.
class DialogModel {
 public:
  virtual ~DialogModel() = default;
  // The dialog's name, for example "NewDatabaseWizard".
  virtual std::string DialogName() const = 0;
};

class UserInterface {
 public:
  virtual ~UserInterface() = default;

  // A message box: title, its lines (shown one below the other), buttons and icon.
  virtual Answer MessageBox(const std::string& title, const std::vector<std::string>& lines,
                            Buttons buttons = Buttons::OK, Icon icon = Icon::None) = 0;

  // A message box given by a classic style code (for example 49, 52 or 36).
  Answer MessageBoxStyle(const std::string& title, const std::vector<std::string>& lines,
                         int style) {
    return MessageBox(title, lines, ButtonsFromStyle(style), IconFromStyle(style));
  }

  // A question with Yes and No; true for Yes.
  bool Question(const std::string& title, const std::vector<std::string>& lines,
                Icon icon = Icon::Question) {
    return MessageBox(title, lines, Buttons::YesNo, icon) == Answer::Yes;
  }

  // An input box. Returns nothing on Cancel.
  virtual std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                              const std::string& defaultText) = 0;

  // File dialogs. Each returns nothing (or an empty list) on Cancel.
  virtual std::optional<std::string> OpenFileDialog(const FileDialogRequest& request) = 0;
  virtual std::optional<std::string> SaveFileDialog(const FileDialogRequest& request) = 0;
  virtual std::vector<std::string> OpenFilesDialog(const FileDialogRequest& request) = 0;

  // The colour dialog: a packed RGB colour, or nothing on Cancel.
  virtual std::optional<std::uint32_t> ColourDialog(std::uint32_t initial) = 0;

  // Shows a modal dialog. The model carries the fields and, after the call, the
  // dialog's result as the model defines it.
  virtual void ShowModal(DialogModel& dialog) = 0;

  // The wait window: shown centred over the main window with the given text and
  // width (in the window system's logical units), hidden by PleaseWaitHide.
  virtual void PleaseWaitShow(const std::string& text, int width) = 0;
  virtual void PleaseWaitHide() = 0;

  // Shows a text file to the user (a log, a command file).
  virtual void ShowTextFile(const std::string& path) = 0;

  // The two panels of the status bar: what the system does, what the user is to do.
  virtual void Activity(const std::string& text) = 0;
  virtual void Feedback(const std::string& text) = 0;
};

}  // namespace tarno
