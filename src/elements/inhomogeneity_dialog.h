// The dialog of an inhomogeneity: a closed area with its own conductivity, added
// recharge, porosity, base and average head, each given only where its box says that
// it differs from the model.
//
// A cleared box disables its field and shows the model's value in it (the
// conductivity and base of the aquifer, no added recharge, a porosity of 0.2, an
// average head at the aquifer's top); the row keeps whatever the field shows, and
// the solver takes the model's value for a cleared box.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "elements/element_dialog.h"

namespace tarno {

class Inhomogeneity : public ElementDialog {
 public:
  static constexpr const char* kName = "Inhomogeneity";
  static constexpr const char* kTitle =
      "Inhomogeneity Properties                   (F1 for Help)";
  enum Tab { kGeneralTab = 0, kScenariosTab = 1 };
  enum Data { kHydCond = 0, kRecharge = 1, kPorosity = 2, kBottomElevation = 3, kAverageHead = 4 };
  static constexpr std::array<const char*, 5> kPrompts = {
      "Conductivity", "Added Recharge Rate", "Porosity", "Base Elevation", "Average Head"};
  static constexpr const char* kChangeKCaption = "Change hydraulic conductivity from default";
  static constexpr const char* kChangeRCaption = "Change recharge rate from default";
  static constexpr const char* kChangePCaption = "Change porosity from default";
  static constexpr const char* kChangeBCaption = "Change base elevation from default";
  static constexpr const char* kChangeACaption = "Provide estimate of average head";
  static constexpr const char* kColorButton = "Color...";
  static constexpr const char* kColorPrompt = "Inhomogeneity Color";
  static constexpr const char* kScenarioExplanation =
      "Enter symbolic names for the following properties:";
  static constexpr const char* kScenarioBoxCaption = "Include in scenarios";
  // The prompts of the tags: prompt 6 stands before tbScenario[1], prompt 5 before
  // tbScenario[2].
  static constexpr const char* kScenarioHydCondPrompt = "Conductivity";
  static constexpr const char* kScenarioRechargePrompt = "Added Recharge Rate";
  // The porosity a cleared box shows, whatever the model's porosity.
  static constexpr const char* kDefaultPorosity = "0.2";

  // The field a failed check selects.
  enum class Field { None, Label, HydCond, Porosity, ScenarioHydCond, ScenarioRecharge };

  std::string DialogName() const override { return kName; }

  // Runs the rule of every box for the boxes as they are, in the order K, R, P, B,
  // A and the scenario boxes, so that each cleared box shows the model's value.
  void init();

  // The clicks on the boxes, with the rules that go with them.
  void ClickChangeK(bool checked);
  void ClickChangeR(bool checked);
  void ClickChangeP(bool checked);
  void ClickChangeB(bool checked);
  void ClickChangeA(bool checked);
  void ClickScenarioHydCond(bool checked);
  void ClickScenarioRecharge(bool checked);

  // The colour button: the platform's colour dialog from the present colour.
  // True when a colour was chosen.
  bool ChooseColor(UserInterface& ui);

  void LoadElement(Database& db, const Element& e) override;
  bool OK(Database& db, UserInterface& ui) override;
  void StoreElement(Element& e) const override;
  // A value the solver reads differs from what was loaded: a field, a box, a
  // scenario tag. The label and the colour are not the solver's.
  bool FormChanged() const override;

  // The tags as the row keeps them.
  const std::string& Scenario_HydCond() const { return tbScenario[1]; }
  const std::string& Scenario_Recharge() const { return tbScenario[2]; }

  // The unit beside field i (none for the porosity).
  std::string Unit(int i) const;

  // The model's values that a cleared box shows: AQHydCond, AQBase, AQThickness.
  // LoadElement reads them; a caller without a project may set them.
  void SetModelValues(double hydCond, double base, double thickness);

  std::string Label;
  std::array<std::string, 5> tbData{"0", "0", "0.2", "0", "1"};
  bool chkChangeK = false;
  bool chkChangeR = false;
  bool chkChangeP = false;
  bool chkChangeB = false;
  bool chkChangeA = false;
  std::uint32_t color = 0;
  bool chkScenarioHydCond = false;
  bool chkScenarioRecharge = false;
  // [1] the conductivity's tag, [2] the recharge's; [0] is not used.
  std::array<std::string, 3> tbScenario{"", "__NONE__", "__NONE__"};

  // The enabling state, as the rules leave it. dataEnabled[i] is the prompt, the
  // field and the unit of tbData[i] together; scenarioEnabled[i] the tag
  // tbScenario[i] with its prompt.
  std::array<bool, 5> dataEnabled{false, false, false, false, false};
  bool chkChangeAEnabled = false;
  bool chkScenarioHydCondEnabled = false;
  bool chkScenarioRechargeEnabled = false;
  std::array<bool, 3> scenarioEnabled{false, false, false};

  // Units of the project.
  std::string lengthUnit = "meters";
  std::string rateUnit = "m/day";

  // The failed check of the last OK: its field and the tab it stands on.
  Field failedField = Field::None;
  int failedTab = kGeneralTab;

 private:
  void UpdateEnabled();
  std::string ModelTop() const;

  std::string modelHydCond_ = "1";
  std::string modelBase_ = "0";
  double modelBaseValue_ = 0;
  double modelThickness_ = 1;

  std::int64_t key_ = 0;
  std::string oldLabel_;
  // What LoadElement filled, for FormChanged.
  std::array<std::string, 5> loaded_{};
  std::array<bool, 7> loadedFlags_{};  // K, R, P, B, A, scenario K, scenario R
  std::array<std::string, 3> loadedTags_{};
  std::array<bool, 7> Flags() const;
};

// A new inhomogeneity with the defaults of its dialog: every box cleared, so the
// fields hold the model's values; no tags, colour 0, no label.
Element InhomogeneityDefaults(Database& db);

}  // namespace tarno
