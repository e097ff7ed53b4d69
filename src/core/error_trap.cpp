#include "core/error_trap.h"

#include <exception>
#include <utility>

#include "core/error.h"

namespace tarno {

std::vector<std::string> UnhandledErrorLines(std::string_view operation,
                                             std::string_view description) {
  std::string first = "Unhandled error in ";
  first.append(operation);
  return {std::move(first), std::string(description), kUnstableLine, kPersistsLine};
}

void ShowUnhandledError(UserInterface& ui, std::string_view operation,
                        std::string_view description) {
  ui.MessageBox(kUnhandledErrorTitle, UnhandledErrorLines(operation, description), Buttons::OK,
                kUnhandledErrorIcon);
}

std::string CurrentExceptionDescription() {
  try {
    throw;
  } catch (const std::exception& e) {
    return e.what();
  } catch (...) {
    return "Unknown error";
  }
}

bool RunOperation(const std::function<void()>& body,
                  const std::function<void(const std::string& description)>& onError) {
  try {
    body();
    return true;
  } catch (const UiPortFailure&) {
    throw;
  } catch (...) {
    const std::string description = CurrentExceptionDescription();
    onError(description);
    return false;
  }
}

bool RunOperation(UserInterface& ui, std::string_view operation,
                  const std::function<void()>& body) {
  return RunOperation(body, [&](const std::string& description) {
    ShowUnhandledError(ui, operation, description);
  });
}

}  // namespace tarno
