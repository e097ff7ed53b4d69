// The two dialogs of the area selection: SelectArea asks which kind of element
// the dragged box is to select (test points, wells or particles), SelectAreaOptions
// says how many were found and asks what to do with them.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "core/ui_port.h"
#include "elements/kind.h"

namespace tarno {

class SelectArea : public DialogModel {
 public:
  static constexpr const char* kName = "SelectArea";
  static constexpr const char* kTitle = "Select which element type?";
  static constexpr std::array<const char*, 3> kElementTypes = {"Test points", "Wells", "Particles"};
  std::string DialogName() const override { return kName; }

  // The chosen entry of kElementTypes, -1 for none.
  int ElementType = 2;
  // "TestPoints", "Wells" or "Particles" for the chosen entry; empty for none.
  std::string Selection() const;
  // The element kind of the chosen entry (a particle when none is chosen).
  ElementKind Kind() const;
  void OK() { Result = ElementType >= 0 && ElementType < 3 ? 1 : 2; }
  void Cancel() { Result = 2; }
  int Result = 2;  // 1 OK, 2 Cancel
};

class SelectAreaOptions : public DialogModel {
 public:
  static constexpr const char* kName = "SelectAreaOptions";
  static constexpr const char* kHeading = "You have selected:";
  static constexpr const char* kDelete = "Delete";
  static constexpr const char* kEdit = "Edit";
  static constexpr const char* kCancel = "Cancel";
  std::string DialogName() const override { return kName; }

  // Fills the text for `count` elements of `kind` (a well, a test point or a
  // particle); only particles can be edited together.
  void Load(ElementKind kind, std::int64_t count);
  // The line under the heading: the count and what may be done.
  std::string Text;
  bool EditAvailable = false;
  // The answer: kDelete, kEdit or kCancel (the buttons set it).
  std::string Command = kCancel;
  void Press(const std::string& command) { Command = command; }
};

// The title and text of the box shown when the area holds no element of the kind.
inline constexpr const char* kNothingSelectedTitle = "Nothing Selected";
std::string NothingInWindowText(ElementKind kind);

}  // namespace tarno
