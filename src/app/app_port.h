// The port the main window hands to every operation: it passes each call to the
// port underneath (the Qt one in the program, a quiet or scripted one in tests and
// for screenshots) and writes the status bar texts to the window's panels as well,
// so that Activity and Feedback show whatever port answers the questions.
#pragma once

#include <functional>
#include <string>

#include "core/ui_port.h"

namespace tarno {

class ForwardingUserInterface : public UserInterface {
 public:
  ForwardingUserInterface() = default;
  explicit ForwardingUserInterface(UserInterface& inner) : inner_(&inner) {}
  void SetInner(UserInterface& inner) { inner_ = &inner; }
  UserInterface& Inner() const { return *inner_; }

  // The window's panels; empty hooks write nothing.
  std::function<void(const std::string&)> onActivity;
  std::function<void(const std::string&)> onFeedback;
  // Called while the wait window shows a text, so that the window repaints at once.
  std::function<void()> onWaitShown;

  Answer MessageBox(const std::string& title, const std::vector<std::string>& lines,
                    Buttons buttons = Buttons::OK, Icon icon = Icon::None) override {
    return inner_->MessageBox(title, lines, buttons, icon);
  }
  std::optional<std::string> InputBox(const std::string& prompt, const std::string& title,
                                      const std::string& defaultText) override {
    return inner_->InputBox(prompt, title, defaultText);
  }
  std::optional<std::string> OpenFileDialog(const FileDialogRequest& request) override {
    return inner_->OpenFileDialog(request);
  }
  std::optional<std::string> SaveFileDialog(const FileDialogRequest& request) override {
    return inner_->SaveFileDialog(request);
  }
  std::vector<std::string> OpenFilesDialog(const FileDialogRequest& request) override {
    return inner_->OpenFilesDialog(request);
  }
  std::optional<std::uint32_t> ColourDialog(std::uint32_t initial) override {
    return inner_->ColourDialog(initial);
  }
  void ShowModal(DialogModel& dialog) override { inner_->ShowModal(dialog); }
  void PleaseWaitShow(const std::string& text, int width) override {
    waitText_ = text;
    inner_->PleaseWaitShow(text, width);
    if (onWaitShown) onWaitShown();
  }
  void PleaseWaitHide() override {
    waitText_.clear();
    inner_->PleaseWaitHide();
  }
  void ShowTextFile(const std::string& path) override { inner_->ShowTextFile(path); }
  void Activity(const std::string& text) override {
    if (onActivity) onActivity(text);
    inner_->Activity(text);
  }
  void Feedback(const std::string& text) override {
    if (onFeedback) onFeedback(text);
    inner_->Feedback(text);
  }

  // The text of the wait window now; empty when hidden.
  const std::string& WaitText() const { return waitText_; }

 private:
  UserInterface* inner_ = nullptr;
  std::string waitText_;
};

}  // namespace tarno
