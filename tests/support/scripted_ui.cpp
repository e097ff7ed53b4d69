#include "support/scripted_ui.h"

#include <algorithm>
#include <sstream>
#include <utility>

namespace tarno {

const char* ToString(UiCallKind kind) {
  switch (kind) {
    case UiCallKind::MessageBox: return "MessageBox";
    case UiCallKind::InputBox: return "InputBox";
    case UiCallKind::OpenFile: return "OpenFileDialog";
    case UiCallKind::SaveFile: return "SaveFileDialog";
    case UiCallKind::OpenFiles: return "OpenFilesDialog";
    case UiCallKind::Colour: return "ColourDialog";
    case UiCallKind::Modal: return "ShowModal";
    case UiCallKind::PleaseWaitShow: return "PleaseWaitShow";
    case UiCallKind::PleaseWaitHide: return "PleaseWaitHide";
    case UiCallKind::ShowTextFile: return "ShowTextFile";
    case UiCallKind::Activity: return "Activity";
    case UiCallKind::Feedback: return "Feedback";
  }
  return "?";
}

namespace {

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

std::string QuotedLines(const std::vector<std::string>& lines) {
  std::string out = "[";
  for (std::size_t i = 0; i < lines.size(); ++i) {
    if (i > 0) out += ", ";
    out += Quoted(lines[i]);
  }
  return out + "]";
}

bool HasTitle(UiCallKind kind) {
  switch (kind) {
    case UiCallKind::MessageBox:
    case UiCallKind::InputBox:
    case UiCallKind::OpenFile:
    case UiCallKind::SaveFile:
    case UiCallKind::OpenFiles:
    case UiCallKind::Modal:
      return true;
    default:
      return false;
  }
}

}  // namespace

std::string UiCall::Describe() const {
  std::ostringstream out;
  out << ToString(kind);
  if (HasTitle(kind)) out << " " << Quoted(title);
  switch (kind) {
    case UiCallKind::MessageBox:
      out << " " << QuotedLines(lines) << " buttons " << ToString(buttons) << " icon "
          << ToString(icon);
      break;
    case UiCallKind::InputBox:
      out << " prompt " << QuotedLines(lines) << " default " << Quoted(text);
      break;
    case UiCallKind::OpenFile:
    case UiCallKind::SaveFile:
    case UiCallKind::OpenFiles:
      out << " filter " << Quoted(file.filter) << " extension " << Quoted(file.defaultExtension);
      break;
    case UiCallKind::Colour:
      out << " initial " << colour;
      break;
    case UiCallKind::PleaseWaitShow:
      out << " " << Quoted(text) << " width " << width;
      break;
    case UiCallKind::ShowTextFile:
    case UiCallKind::Activity:
    case UiCallKind::Feedback:
      out << " " << Quoted(text);
      break;
    default:
      break;
  }
  return out.str();
}

// --- Expectation -----------------------------------------------------------

using Expectation = ScriptedUserInterface::Expectation;

Expectation& Expectation::Title(std::string title) {
  title_ = std::move(title);
  return *this;
}
Expectation& Expectation::Lines(std::vector<std::string> lines) {
  lines_ = std::move(lines);
  return *this;
}
Expectation& Expectation::WithButtons(tarno::Buttons buttons) {
  buttons_ = buttons;
  return *this;
}
Expectation& Expectation::WithIcon(tarno::Icon icon) {
  icon_ = icon;
  return *this;
}
Expectation& Expectation::Answer(tarno::Answer answer) {
  answer_ = answer;
  return *this;
}
Expectation& Expectation::Text(std::optional<std::string> text) {
  text_ = std::move(text);
  return *this;
}
Expectation& Expectation::Files(std::vector<std::string> paths) {
  files_ = std::move(paths);
  return *this;
}
Expectation& Expectation::Colour(std::optional<std::uint32_t> colour) {
  colour_ = colour;
  return *this;
}
Expectation& Expectation::Handler(std::function<void(DialogModel&)> handler) {
  handler_ = std::move(handler);
  return *this;
}

std::string Expectation::Describe() const {
  std::ostringstream out;
  out << ToString(kind_);
  if (title_) out << " " << Quoted(*title_);
  if (lines_) out << " " << QuotedLines(*lines_);
  if (buttons_) out << " buttons " << ToString(*buttons_);
  if (icon_) out << " icon " << ToString(*icon_);
  if (answer_) out << " -> " << ToString(*answer_);
  return out.str();
}

// --- Script ----------------------------------------------------------------

Expectation& ScriptedUserInterface::Expect(UiCallKind kind) {
  script_.emplace_back(kind);
  return script_.back();
}

Expectation& ScriptedUserInterface::ExpectMessage(const std::string& title,
                                                  const std::vector<std::string>& lines,
                                                  tarno::Answer answer) {
  return Expect(UiCallKind::MessageBox).Title(title).Lines(lines).Answer(answer);
}

Expectation& ScriptedUserInterface::ExpectMessageTitled(const std::string& title,
                                                        tarno::Answer answer) {
  return Expect(UiCallKind::MessageBox).Title(title).Answer(answer);
}

Expectation& ScriptedUserInterface::ExpectInput(std::optional<std::string> answer) {
  return Expect(UiCallKind::InputBox).Text(std::move(answer));
}

Expectation& ScriptedUserInterface::ExpectOpenFile(std::optional<std::string> path) {
  return Expect(UiCallKind::OpenFile).Text(std::move(path));
}

Expectation& ScriptedUserInterface::ExpectSaveFile(std::optional<std::string> path) {
  return Expect(UiCallKind::SaveFile).Text(std::move(path));
}

Expectation& ScriptedUserInterface::ExpectOpenFiles(std::vector<std::string> paths) {
  return Expect(UiCallKind::OpenFiles).Files(std::move(paths));
}

Expectation& ScriptedUserInterface::ExpectColour(std::optional<std::uint32_t> colour) {
  return Expect(UiCallKind::Colour).Colour(colour);
}

Expectation& ScriptedUserInterface::ExpectModal(const std::string& dialogName,
                                                std::function<void(DialogModel&)> handler) {
  return Expect(UiCallKind::Modal).Title(dialogName).Handler(std::move(handler));
}

void ScriptedUserInterface::Verify() const {
  std::string problems;
  for (const std::string& failure : failures_) problems += "\n  " + failure;
  if (!script_.empty()) {
    problems += "\n  " + std::to_string(script_.size()) + " scripted call(s) never came:";
    for (const Expectation& e : script_) problems += "\n    " + e.Describe();
  }
  if (!problems.empty()) throw UnexpectedUiCall("user interface script not satisfied:" + problems);
}

void ScriptedUserInterface::ClearScript() {
  script_.clear();
  failures_.clear();
}

void ScriptedUserInterface::Fail(const std::string& message) {
  failures_.push_back(message);
  throw UnexpectedUiCall(message);
}

Expectation ScriptedUserInterface::Take(UiCall& call) {
  calls_.push_back(call);
  if (script_.empty()) {
    Fail("unexpected call: " + call.Describe() + "; the script is empty");
  }
  Expectation e = std::move(script_.front());
  script_.pop_front();
  std::string mismatch;
  if (e.kind_ != call.kind) {
    mismatch = "another kind of call";
  } else if (e.title_ && *e.title_ != call.title) {
    mismatch = "another title";
  } else if (e.lines_ && *e.lines_ != call.lines) {
    mismatch = "other lines";
  } else if (e.buttons_ && *e.buttons_ != call.buttons) {
    mismatch = "other buttons";
  } else if (e.icon_ && *e.icon_ != call.icon) {
    mismatch = "another icon";
  }
  if (!mismatch.empty()) {
    Fail("unexpected call (" + mismatch + "):\n    came:     " + call.Describe() +
         "\n    expected: " + e.Describe());
  }
  return e;
}

// --- The port --------------------------------------------------------------

tarno::Answer ScriptedUserInterface::MessageBox(const std::string& title,
                                                const std::vector<std::string>& lines,
                                                tarno::Buttons buttons, tarno::Icon icon) {
  UiCall call;
  call.kind = UiCallKind::MessageBox;
  call.title = title;
  call.lines = lines;
  call.buttons = buttons;
  call.icon = icon;
  Expectation e = Take(call);
  const std::vector<tarno::Answer> offered = AnswersOf(buttons);
  const tarno::Answer answer = e.answer_.value_or(offered.front());
  if (std::find(offered.begin(), offered.end(), answer) == offered.end()) {
    Fail("scripted answer " + std::string(ToString(answer)) + " is not a button of " +
         call.Describe());
  }
  calls_.back().answer = ToString(answer);
  return answer;
}

std::optional<std::string> ScriptedUserInterface::InputBox(const std::string& prompt,
                                                           const std::string& title,
                                                           const std::string& defaultText) {
  UiCall call;
  call.kind = UiCallKind::InputBox;
  call.title = title;
  call.lines = {prompt};
  call.text = defaultText;
  Expectation e = Take(call);
  calls_.back().answer = e.text_ ? Quoted(*e.text_) : "cancel";
  return e.text_;
}

std::optional<std::string> ScriptedUserInterface::OpenFileDialog(const FileDialogRequest& request) {
  UiCall call;
  call.kind = UiCallKind::OpenFile;
  call.title = request.title;
  call.file = request;
  Expectation e = Take(call);
  calls_.back().answer = e.text_ ? Quoted(*e.text_) : "cancel";
  return e.text_;
}

std::optional<std::string> ScriptedUserInterface::SaveFileDialog(const FileDialogRequest& request) {
  UiCall call;
  call.kind = UiCallKind::SaveFile;
  call.title = request.title;
  call.file = request;
  Expectation e = Take(call);
  calls_.back().answer = e.text_ ? Quoted(*e.text_) : "cancel";
  return e.text_;
}

std::vector<std::string> ScriptedUserInterface::OpenFilesDialog(const FileDialogRequest& request) {
  UiCall call;
  call.kind = UiCallKind::OpenFiles;
  call.title = request.title;
  call.file = request;
  Expectation e = Take(call);
  calls_.back().answer = e.files_.empty() ? "cancel" : QuotedLines(e.files_);
  return e.files_;
}

std::optional<std::uint32_t> ScriptedUserInterface::ColourDialog(std::uint32_t initial) {
  UiCall call;
  call.kind = UiCallKind::Colour;
  call.colour = initial;
  Expectation e = Take(call);
  calls_.back().answer = e.colour_ ? std::to_string(*e.colour_) : "cancel";
  return e.colour_;
}

void ScriptedUserInterface::ShowModal(DialogModel& dialog) {
  UiCall call;
  call.kind = UiCallKind::Modal;
  call.title = dialog.DialogName();
  Expectation e = Take(call);
  if (e.handler_) {
    try {
      e.handler_(dialog);
    } catch (const UnexpectedUiCall& failure) {
      // A nested scripted call has recorded its own failure already.
      if (failures_.empty() || failures_.back() != failure.what()) failures_.push_back(failure.what());
      throw;
    }
  }
}

void ScriptedUserInterface::PleaseWaitShow(const std::string& text, int width) {
  UiCall call;
  call.kind = UiCallKind::PleaseWaitShow;
  call.text = text;
  call.width = width;
  calls_.push_back(call);
  waitVisible_ = true;
}

void ScriptedUserInterface::PleaseWaitHide() {
  UiCall call;
  call.kind = UiCallKind::PleaseWaitHide;
  calls_.push_back(call);
  waitVisible_ = false;
}

void ScriptedUserInterface::ShowTextFile(const std::string& path) {
  UiCall call;
  call.kind = UiCallKind::ShowTextFile;
  call.text = path;
  calls_.push_back(call);
}

void ScriptedUserInterface::Activity(const std::string& text) {
  UiCall call;
  call.kind = UiCallKind::Activity;
  call.text = text;
  calls_.push_back(call);
  activity_ = text;
}

void ScriptedUserInterface::Feedback(const std::string& text) {
  UiCall call;
  call.kind = UiCallKind::Feedback;
  call.text = text;
  calls_.push_back(call);
  feedback_ = text;
}

// --- Queries of the record ---------------------------------------------------

std::vector<UiCall> ScriptedUserInterface::CallsOf(UiCallKind kind) const {
  std::vector<UiCall> out;
  for (const UiCall& c : calls_) {
    if (c.kind == kind) out.push_back(c);
  }
  return out;
}

namespace {
std::vector<std::string> TextsOf(const std::vector<UiCall>& calls, UiCallKind kind) {
  std::vector<std::string> out;
  for (const UiCall& c : calls) {
    if (c.kind == kind) out.push_back(c.text);
  }
  return out;
}
}  // namespace

std::vector<std::string> ScriptedUserInterface::ActivityTexts() const {
  return TextsOf(calls_, UiCallKind::Activity);
}
std::vector<std::string> ScriptedUserInterface::FeedbackTexts() const {
  return TextsOf(calls_, UiCallKind::Feedback);
}
std::vector<std::string> ScriptedUserInterface::WaitTexts() const {
  return TextsOf(calls_, UiCallKind::PleaseWaitShow);
}
std::vector<std::string> ScriptedUserInterface::TextFilesShown() const {
  return TextsOf(calls_, UiCallKind::ShowTextFile);
}

}  // namespace tarno
