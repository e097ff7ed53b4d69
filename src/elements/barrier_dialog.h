// The dialog of a barrier: a thin wall with its own conductivity, thickness,
// porosity and bottom, open or closed.
//
// The row keeps open and closed in one number, Closed; the dialog shows it in three
// boxes:
//
//   Closed  ClosedDomain  IgnoreInside  IgnoreOutside
//     0        cleared       cleared       cleared      open barrier
//     1        checked       cleared       cleared      closed, nothing ignored
//     2        checked       checked       cleared      closed, the inside is ignored
//     3        checked       cleared       checked      closed, the outside is ignored
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "elements/element_dialog.h"

namespace tarno {

class NoFlowString : public ElementDialog {
 public:
  static constexpr const char* kName = "NoFlowString";
  static constexpr const char* kTitle = "Barrier Properties                     (F1 for help)";
  static constexpr const char* kClosedCaption = "Barrier bounds a closed domain";
  static constexpr const char* kIgnoreFrame = "Ignore Region";
  static constexpr const char* kIgnoreOutsideCaption = "Outside Boundary";
  static constexpr const char* kIgnoreInsideCaption = "Inside Boundary";
  static constexpr const char* kNote =
      "Note: A closed no-flow barrier must have at least one head specified feature (well or "
      "line sink) inside.";
  // The prompts of tbData, in its order.
  static constexpr std::array<const char*, 4> kPrompts = {"Conductivity", "Thickness", "Porosity",
                                                          "Bottom Elevation"};
  enum Data { kHydCond = 0, kThickness = 1, kPorosity = 2, kBottomElevation = 3 };

  // The field a failed check selects; the dialog has the one tab General.
  enum class Field { None, Label, HydCond, Thickness, Porosity };

  std::string DialogName() const override { return kName; }

  // The defaults of a new barrier before the add step: "0", "1", "0.2", "0", the
  // three boxes cleared.
  void init();

  void LoadElement(Database& db, const Element& e) override;
  bool OK(Database& db, UserInterface& ui) override;
  void StoreElement(Element& e) const override;
  // A field or the closed coding differs from what was loaded.
  bool FormChanged() const override { return Invalidate(); }
  bool Invalidate() const;

  // A click that sets one of the two Ignore boxes clears the other.
  void ClickIgnoreInside(bool checked);
  void ClickIgnoreOutside(bool checked);

  // The boxes as the row's number, and the reverse.
  int ClosedCode() const;
  void SetClosedCode(std::int64_t closed);
  static int EncodeClosed(bool closedDomain, bool ignoreInside, bool ignoreOutside);

  // The unit beside field i: the conductivity a rate, thickness and bottom lengths,
  // the porosity none.
  std::string Unit(int i) const;

  std::string Label;
  std::array<std::string, 4> tbData{"0", "1", "0.2", "0"};
  bool ClosedDomain = false;
  bool IgnoreInside = false;
  bool IgnoreOutside = false;

  // Units of the project (from ComputeMeters).
  std::string flowUnit = "m^3/day";
  std::string lengthUnit = "meters";
  std::string rateUnit = "m/day";

  // The failed check of the last OK.
  Field failedField = Field::None;
  int failedTab = 0;

 private:
  std::int64_t key_ = 0;
  std::string oldLabel_;
  std::array<std::string, 4> loaded_{"0", "1", "0.2", "0"};
  int loadedClosed_ = 0;
};

// A new barrier with the defaults of its dialog, at no vertex yet: the bottom is the
// lowest base of the model, the aquifer's or any inhomogeneity's lower one.
Element BarrierDefaults(Database& db);

}  // namespace tarno
