// The question before a vertex of a string goes: only that vertex, the whole
// string, or nothing. The caller puts the kind's question into Message, shows the
// dialog and reads Result: the index of the button pressed.
#pragma once

#include <array>
#include <string>

#include "core/ui_port.h"

namespace tarno {

class LSConfirm : public DialogModel {
 public:
  static constexpr const char* kName = "LSConfirm";
  static constexpr const char* kTitle = "Confirm...";
  // The label's text until Message replaces it.
  static constexpr const char* kDefaultMessage = "Delete the selected vertex or the entire string?";

  // The buttons, by their index (the value Result takes).
  enum Choice : int { kCancel = 0, kVertex = 1, kEntireString = 2 };
  struct Button {
    const char* caption;
    const char* tip;
  };
  static constexpr std::array<Button, 3> kButtons = {{
      {"Cancel", "Abort deletion"},
      {"Vertex", "Delete only the selected vertex"},
      {"Entire String", "Delete the entire selected string of elements"},
  }};

  std::string DialogName() const override { return kName; }

  // A click on button `index` (0 to 2): the index becomes the result.
  void Click(int index) { Result = index; }

  std::string Message = kDefaultMessage;
  // Closing the window without a button leaves Cancel.
  int Result = kCancel;
};

}  // namespace tarno
