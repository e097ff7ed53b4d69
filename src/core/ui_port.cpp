#include "core/ui_port.h"

namespace tarno {

// A style code is the sum of a button set (0 to 5), an icon (16, 32, 48 or 64) and
// further flags (default button 256 and 512, modality 4096) that are ignored here.
Buttons ButtonsFromStyle(int style) {
  const int buttons = style & 0x7;
  if (buttons > static_cast<int>(Buttons::RetryCancel)) return Buttons::OK;
  return static_cast<Buttons>(buttons);
}

Icon IconFromStyle(int style) {
  switch (style & 0x70) {
    case 16: return Icon::Critical;
    case 32: return Icon::Question;
    case 48: return Icon::Exclamation;
    case 64: return Icon::Information;
    default: return Icon::None;
  }
}

std::vector<Answer> AnswersOf(Buttons buttons) {
  switch (buttons) {
    case Buttons::OK: return {Answer::OK};
    case Buttons::OKCancel: return {Answer::OK, Answer::Cancel};
    case Buttons::AbortRetryIgnore: return {Answer::Abort, Answer::Retry, Answer::Ignore};
    case Buttons::YesNoCancel: return {Answer::Yes, Answer::No, Answer::Cancel};
    case Buttons::YesNo: return {Answer::Yes, Answer::No};
    case Buttons::RetryCancel: return {Answer::Retry, Answer::Cancel};
  }
  return {Answer::OK};
}

const char* ToString(Buttons b) {
  switch (b) {
    case Buttons::OK: return "OK";
    case Buttons::OKCancel: return "OKCancel";
    case Buttons::AbortRetryIgnore: return "AbortRetryIgnore";
    case Buttons::YesNoCancel: return "YesNoCancel";
    case Buttons::YesNo: return "YesNo";
    case Buttons::RetryCancel: return "RetryCancel";
  }
  return "?";
}

const char* ToString(Icon i) {
  switch (i) {
    case Icon::None: return "None";
    case Icon::Critical: return "Critical";
    case Icon::Question: return "Question";
    case Icon::Exclamation: return "Exclamation";
    case Icon::Information: return "Information";
  }
  return "?";
}

const char* ToString(Answer a) {
  switch (a) {
    case Answer::OK: return "OK";
    case Answer::Cancel: return "Cancel";
    case Answer::Abort: return "Abort";
    case Answer::Retry: return "Retry";
    case Answer::Ignore: return "Ignore";
    case Answer::Yes: return "Yes";
    case Answer::No: return "No";
  }
  return "?";
}

}  // namespace tarno
