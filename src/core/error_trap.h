// The general error trap of every operation.
//
// An operation that fails shows one message box, titled
// "Unhandled Error -- Contact the Authors", with the lines
//   "Unhandled error in " + the operation's name
//   the error's description
//   "TARNO may have become unstable.  For best results, exit TARNO and restart"
//   "If the problem persists, contact the authors"
// and ends. Work the operation did before the failure stands: nothing is undone.
//
// Usage:
//   RunOperation(ui, "ElemAddWell", [&] { ... });
// A failing body (any exception) gives the message and RunOperation returns false.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "core/ui_port.h"

namespace tarno {

inline constexpr const char* kUnhandledErrorTitle = "Unhandled Error -- Contact the Authors";
inline constexpr const char* kUnstableLine =
    "TARNO may have become unstable.  For best results, exit TARNO and restart";
inline constexpr const char* kPersistsLine = "If the problem persists, contact the authors";
// The message carries the stop icon and an OK button.
inline constexpr Icon kUnhandledErrorIcon = Icon::Critical;

// The four lines of the general message.
std::vector<std::string> UnhandledErrorLines(std::string_view operation,
                                             std::string_view description);

// Shows the general message for `operation` with `description`.
void ShowUnhandledError(UserInterface& ui, std::string_view operation,
                        std::string_view description);

// The description of the exception being handled (call inside a catch block):
// what() of a std::exception, "Unknown error" for anything else.
std::string CurrentExceptionDescription();

// Runs `body`; if it throws, shows the general message for `operation` and returns
// false. Returns true when the body ran to its end. A failure of the port itself
// (UiPortFailure) is not an error of the operation and passes through.
bool RunOperation(UserInterface& ui, std::string_view operation,
                  const std::function<void()>& body);

// Runs `body`; if it throws, calls `onError` with the description instead of the
// general message, for operations whose failure has a message of its own (those next
// to the solver, which analyse the error instead). Returns false after a failure.
bool RunOperation(const std::function<void()>& body,
                  const std::function<void(const std::string& description)>& onError);

}  // namespace tarno
