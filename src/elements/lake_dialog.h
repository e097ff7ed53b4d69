// The dialog of a lake: a closed string with a water balance, its interior
// conductivity, evapotranspiration, bottom width, added recharge, lambda parameter
// and the file of its stage table.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "elements/element_dialog.h"

namespace tarno {

class Lake : public ElementDialog {
 public:
  static constexpr const char* kName = "Lake";
  static constexpr const char* kTitle = "Lake Properties                      (F1 for Help)";
  static constexpr const char* kLabelPrompt = "Lake Label";
  static constexpr const char* kColorButton = "Color";
  enum Data {
    kInterriorConductivity = 0,
    kEvapotranspiration = 1,
    kWidth = 2,
    kAddedRechargeRate = 3,
    kResistance = 4,  // prompted "Lambda Parameter:"
    kStageTable = 5,
  };
  static constexpr std::array<const char*, 6> kPrompts = {
      "Interior Conductivity:", "Evapotranspiration Rate:", "Width:",
      "Added Recharge Rate:",   "Lambda Parameter:",        "Stage Table"};
  // The longest stage table name: eight characters, the dot and three.
  static constexpr std::size_t kMaxStageTableName = 12;

  enum class Field { None, Label, StageTable };

  std::string DialogName() const override { return kName; }

  // Nothing to set up beyond the fields themselves: the lake's dialog has no rules
  // between its fields. Clears the failure of an earlier OK.
  void init();

  bool ChooseColor(UserInterface& ui);

  void LoadElement(Database& db, const Element& e) override;
  bool OK(Database& db, UserInterface& ui) override;
  void StoreElement(Element& e) const override;
  // A number or the stage table changed (the label and colour do not reach the
  // solver's arithmetic).
  bool FormChanged() const override;

  // The unit beside field i: "m/day" or "feet/day" for the rates and the
  // conductivity, "meters" or "feet" for the width and the lambda parameter.
  std::string Unit(int i) const;

  // The properties by the names the lake's operations use.
  const std::string& InterriorConductivity() const { return tbData[kInterriorConductivity]; }
  const std::string& AddedRechargeRate() const { return tbData[kAddedRechargeRate]; }
  const std::string& Evapotranspiration() const { return tbData[kEvapotranspiration]; }
  const std::string& Resistance() const { return tbData[kResistance]; }
  const std::string& LakeWidth() const { return tbData[kWidth]; }
  const std::string& StageTableFilename() const { return tbData[kStageTable]; }

  std::string tbLabel;
  std::array<std::string, 6> tbData{"0", "0", "0", "0", "0", ""};
  std::uint32_t color = 0;

  std::string lengthUnit = "meters";
  std::string rateUnit = "m/day";

  Field failedField = Field::None;

 private:
  std::array<std::string, 6> loaded_{};
};

// A new lake with the defaults of its table: every number 0, no stage table, no
// label, colour 0.
Element LakeDefaults(Database& db);

}  // namespace tarno
