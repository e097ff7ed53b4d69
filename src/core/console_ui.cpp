#include "core/console_ui.h"

#include <algorithm>

namespace tarno {

namespace {
bool IsPositive(Answer a) { return a == Answer::OK || a == Answer::Yes || a == Answer::Retry; }
}  // namespace

Answer FitAnswer(Answer wanted, Buttons buttons) {
  const std::vector<Answer> offered = AnswersOf(buttons);
  auto has = [&](Answer a) { return std::find(offered.begin(), offered.end(), a) != offered.end(); };
  if (has(wanted)) return wanted;
  if (IsPositive(wanted)) {
    for (Answer a : {Answer::OK, Answer::Yes, Answer::Retry}) {
      if (has(a)) return a;
    }
  } else {
    for (Answer a : {Answer::Cancel, Answer::No, Answer::Abort}) {
      if (has(a)) return a;
    }
  }
  return offered.front();
}

ConsoleUserInterface::ConsoleUserInterface(std::ostream& out, Answer defaultAnswer)
    : out_(out), defaultAnswer_(defaultAnswer) {}

void ConsoleUserInterface::SetModalHandler(const std::string& dialogName, ModalHandler handler) {
  modalHandlers_[dialogName] = std::move(handler);
}

Answer ConsoleUserInterface::MessageBox(const std::string& title,
                                        const std::vector<std::string>& lines, Buttons buttons,
                                        Icon icon) {
  if (lines.empty()) {
    out_ << title << ":\n";
  } else {
    for (const std::string& line : lines) out_ << title << ": " << line << '\n';
  }
  out_.flush();
  Answer wanted = defaultAnswer_;
  if (answerPolicy_) {
    if (std::optional<Answer> chosen = answerPolicy_(title, lines, buttons)) wanted = *chosen;
  }
  return FitAnswer(wanted, buttons);
}

std::optional<std::string> ConsoleUserInterface::InputBox(const std::string& prompt,
                                                          const std::string& title,
                                                          const std::string& defaultText) {
  if (inputPolicy_) return inputPolicy_(prompt, title, defaultText);
  return defaultText;
}

std::optional<std::string> ConsoleUserInterface::OpenFileDialog(const FileDialogRequest&) {
  return openFile_;
}

std::optional<std::string> ConsoleUserInterface::SaveFileDialog(const FileDialogRequest&) {
  return saveFile_;
}

std::vector<std::string> ConsoleUserInterface::OpenFilesDialog(const FileDialogRequest&) {
  return openFiles_;
}

std::optional<std::uint32_t> ConsoleUserInterface::ColourDialog(std::uint32_t initial) {
  return initial;
}

void ConsoleUserInterface::ShowModal(DialogModel& dialog) {
  const auto it = modalHandlers_.find(dialog.DialogName());
  if (it != modalHandlers_.end()) {
    if (it->second) it->second(dialog);
  } else if (generalModal_) {
    generalModal_(dialog);
  }
}

void ConsoleUserInterface::PleaseWaitShow(const std::string& text, int) {
  if (verbose_) out_ << "Please wait: " << text << '\n';
}

void ConsoleUserInterface::PleaseWaitHide() {}

void ConsoleUserInterface::ShowTextFile(const std::string& path) {
  if (verbose_) out_ << "Text file: " << path << '\n';
}

void ConsoleUserInterface::Activity(const std::string& text) {
  if (verbose_) out_ << "Activity: " << text << '\n';
}

void ConsoleUserInterface::Feedback(const std::string& text) {
  if (verbose_) out_ << "Feedback: " << text << '\n';
}

}  // namespace tarno
