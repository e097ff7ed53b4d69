// The dialog of the uniform flow: the head at its reference point, the regional
// gradient and the direction of the flow. The reference point itself is where the
// user clicked; it is the element's one vertex.
#pragma once

#include <array>
#include <string>

#include "elements/element_dialog.h"

namespace tarno {

class UniformFlow : public ElementDialog {
 public:
  static constexpr const char* kName = "UniformFlow";
  static constexpr const char* kTitle =
      "Uniform Flow Properties                         (F1 for Help)";
  enum Data { kHead = 0, kGradient = 1, kOrientation = 2 };
  static constexpr std::array<const char*, 3> kPrompts = {
      "Reference Head", "Regional Hydraulic Gradient", "Orientation:"};
  static constexpr const char* kOrientationUnit = "degrees counterclockwise";

  enum class Field { None, Head, Gradient, Orientation };

  std::string DialogName() const override { return kName; }

  // Takes head, gradient and orientation from the Model row's UNIFLOW fields and
  // the unit from the project's ComputeMeters.
  void init(Database& db);

  void LoadElement(Database& db, const Element& e) override;
  // The checks against the aquifer base of the Model row: the head not below it,
  // the gradient not negative, the orientation from -180 to 180 degrees.
  bool OK(Database& db, UserInterface& ui) override;
  // Writes the three values, and the reference point from the element's vertex;
  // the uniform flow is then in use.
  void StoreElement(Element& e) const override;
  // One of the three values changed. A moved reference point is the caller's to
  // compare: the dialog does not show it.
  bool FormChanged() const override { return tbdata != loaded_; }

  // The unit beside field i: the length unit for the head, none for the gradient,
  // kOrientationUnit for the orientation.
  std::string Unit(int i) const;

  const std::string& Head() const { return tbdata[kHead]; }
  const std::string& Gradient() const { return tbdata[kGradient]; }
  const std::string& Orientation() const { return tbdata[kOrientation]; }

  std::array<std::string, 3> tbdata{"0", "0", "0"};
  std::string lengthUnit = "meters";

  Field failedField = Field::None;

 private:
  std::array<std::string, 3> loaded_{"0", "0", "0"};
};

// The uniform flow a click begins with: the values in use (or zeros) and the
// reference point at (x, y).
Element UniformFlowDefaults(Database& db, double x, double y);
// The same at the reference point in use (the origin when there is none).
Element UniformFlowDefaults(Database& db);

}  // namespace tarno
