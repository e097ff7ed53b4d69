#include "elements/inhomogeneity_dialog.h"

#include <cmath>

#include "core/text.h"
#include "elements/area_dialog_support.h"
#include "elements/element_store.h"

namespace tarno {

using area_dialogs::NumberText;

void Inhomogeneity::SetModelValues(double hydCond, double base, double thickness) {
  modelHydCond_ = NumberText(hydCond);
  modelBase_ = NumberText(base);
  modelBaseValue_ = base;
  modelThickness_ = thickness;
}

std::string Inhomogeneity::ModelTop() const {
  return NumberText(modelBaseValue_ + modelThickness_);
}

void Inhomogeneity::UpdateEnabled() {
  dataEnabled[kHydCond] = chkChangeK;
  dataEnabled[kRecharge] = chkChangeR;
  dataEnabled[kPorosity] = chkChangeP;
  dataEnabled[kBottomElevation] = chkChangeB;
  dataEnabled[kAverageHead] = chkChangeA;
  chkChangeAEnabled = chkChangeB;
  chkScenarioHydCondEnabled = chkChangeK;
  chkScenarioRechargeEnabled = chkChangeR;
  // A tag is editable with its box checked, and only while the box itself may be
  // changed (a row that holds a checked box behind a cleared value keeps it locked).
  scenarioEnabled[1] = chkScenarioHydCond && chkScenarioHydCondEnabled;
  scenarioEnabled[2] = chkScenarioRecharge && chkScenarioRechargeEnabled;
}

void Inhomogeneity::ClickChangeK(bool checked) {
  chkChangeK = checked;
  if (!checked) {
    chkScenarioHydCond = false;
    tbData[kHydCond] = modelHydCond_;
  }
  UpdateEnabled();
}

void Inhomogeneity::ClickChangeR(bool checked) {
  chkChangeR = checked;
  if (!checked) {
    chkScenarioRecharge = false;
    tbData[kRecharge].assign(1, '0');
  }
  UpdateEnabled();
}

void Inhomogeneity::ClickChangeP(bool checked) {
  chkChangeP = checked;
  if (!checked) tbData[kPorosity] = kDefaultPorosity;
  UpdateEnabled();
}

void Inhomogeneity::ClickChangeB(bool checked) {
  chkChangeB = checked;
  if (!checked) {
    // Without a base of its own there is no head of its own to estimate either.
    chkChangeA = false;
    tbData[kAverageHead] = ModelTop();
    tbData[kBottomElevation] = modelBase_;
  }
  UpdateEnabled();
}

void Inhomogeneity::ClickChangeA(bool checked) {
  chkChangeA = checked;
  if (!checked) tbData[kAverageHead] = ModelTop();
  UpdateEnabled();
}

void Inhomogeneity::ClickScenarioHydCond(bool checked) {
  chkScenarioHydCond = checked;
  UpdateEnabled();
}

void Inhomogeneity::ClickScenarioRecharge(bool checked) {
  chkScenarioRecharge = checked;
  UpdateEnabled();
}

void Inhomogeneity::init() {
  ClickChangeK(chkChangeK);
  ClickChangeR(chkChangeR);
  ClickChangeP(chkChangeP);
  ClickChangeB(chkChangeB);
  ClickChangeA(chkChangeA);
  ClickScenarioHydCond(chkScenarioHydCond);
  ClickScenarioRecharge(chkScenarioRecharge);
  failedField = Field::None;
  failedTab = kGeneralTab;
}

bool Inhomogeneity::ChooseColor(UserInterface& ui) {
  const auto chosen = ui.ColourDialog(color);
  if (!chosen) return false;
  color = *chosen;
  return true;
}

std::string Inhomogeneity::Unit(int i) const {
  switch (i) {
    case kHydCond:
    case kRecharge:
      return rateUnit;
    case kBottomElevation:
    case kAverageHead:
      return lengthUnit;
    default:
      return {};
  }
}

std::array<bool, 7> Inhomogeneity::Flags() const {
  return {chkChangeK, chkChangeR, chkChangeP, chkChangeB, chkChangeA, chkScenarioHydCond,
          chkScenarioRecharge};
}

void Inhomogeneity::LoadElement(Database& db, const Element& e) {
  const AquiferFrame frame = LoadAquiferFrame(db);
  SetModelValues(LoadAquiferHydCond(db), frame.base, frame.thickness);
  const area_dialogs::Units units = area_dialogs::UnitsOf(frame.computeMeters);
  lengthUnit = units.length;
  rateUnit = units.rate;

  // The boxes first, then the values: the fields show the row as it is, also where
  // a box is cleared, and the boxes only decide what may be edited.
  key_ = e.key;
  Label = e.row.Text("Label");
  chkChangeK = e.row.Flag("ChangeK");
  chkChangeR = e.row.Flag("ChangeR");
  chkChangeP = e.row.Flag("ChangeP");
  chkChangeB = e.row.Flag("ChangeB");
  chkChangeA = e.row.Flag("ChangeA");
  chkScenarioHydCond = e.row.Flag("chkScenarioHydCond");
  chkScenarioRecharge = e.row.Flag("chkScenarioRecharge");
  tbData[kHydCond] = NumberText(e.row, "HydCond");
  tbData[kRecharge] = NumberText(e.row, "Recharge");
  tbData[kPorosity] = NumberText(e.row, "Porosity");
  tbData[kBottomElevation] = NumberText(e.row, "BottomElevation");
  tbData[kAverageHead] = NumberText(e.row, "AverageHead");
  tbScenario[1] = e.row.Text("ScenHydCond");
  tbScenario[2] = e.row.Text("ScenRecharge");
  color = static_cast<std::uint32_t>(e.row.Integer("Color"));
  UpdateEnabled();

  oldLabel_ = Label;
  loaded_ = tbData;
  loadedFlags_ = Flags();
  loadedTags_ = tbScenario;
  failedField = Field::None;
  failedTab = kGeneralTab;
  Result = 2;
}

bool Inhomogeneity::OK(Database& db, UserInterface& ui) {
  failedField = Field::None;
  failedTab = kGeneralTab;
  auto fail = [&](Field field, int tab, const std::string& title, std::vector<std::string> lines) {
    ui.MessageBox(title, lines, Buttons::OK, Icon::Exclamation);
    failedField = field;
    failedTab = tab;
    Result = 2;
    return false;
  };

  if (Label.empty())
    return fail(Field::Label, kGeneralTab, "Data Missing", {area_dialogs::kNoLabel});
  if (Label != oldLabel_) {
    const auto other = FindByLabel(db, ElementKind::Inhomogeneity, Label);
    if (other && (key_ == 0 || other->key != key_))
      return fail(Field::Label, kGeneralTab, "Duplicate Label",
                  {area_dialogs::DuplicateLabelLine("Inhomogeneity", Label)});
  }
  if (Val(tbData[kHydCond]) < 0)
    return fail(Field::HydCond, kGeneralTab, "Bad Entry",
                {"Hydraulic Conductivity cannot be negative.", "Please enter a positive value."});
  // A cleared box keeps the model's porosity, which is not tested here.
  if (chkChangeP) {
    const double porosity = Val(tbData[kPorosity]);
    if (std::abs(porosity) > 1 || porosity <= 0)
      return fail(Field::Porosity, kGeneralTab, "Bad Entry",
                  {"Porosity must be greater than 0 and no larger than 1.",
                   "Please enter a new value."});
  }
  if (chkScenarioHydCond && area_dialogs::BadScenarioTag(tbScenario[1]))
    return fail(Field::ScenarioHydCond, kScenariosTab, "Bad Entry",
                area_dialogs::BadScenarioTagLines());
  if (chkScenarioRecharge && area_dialogs::BadScenarioTag(tbScenario[2]))
    return fail(Field::ScenarioRecharge, kScenariosTab, "Bad Entry",
                area_dialogs::BadScenarioTagLines());
  Result = 1;
  return true;
}

void Inhomogeneity::StoreElement(Element& e) const {
  using area_dialogs::StoreFlag;
  using area_dialogs::StoreNumber;
  using area_dialogs::StoreText;
  StoreText(e.row, "Label", Label);
  StoreFlag(e.row, "ChangeK", chkChangeK);
  StoreNumber(e.row, "HydCond", tbData[kHydCond]);
  StoreFlag(e.row, "ChangeR", chkChangeR);
  StoreNumber(e.row, "Recharge", tbData[kRecharge]);
  StoreFlag(e.row, "ChangeP", chkChangeP);
  StoreNumber(e.row, "Porosity", tbData[kPorosity]);
  StoreFlag(e.row, "ChangeB", chkChangeB);
  StoreNumber(e.row, "BottomElevation", tbData[kBottomElevation]);
  StoreNumber(e.row, "AverageHead", tbData[kAverageHead]);
  StoreFlag(e.row, "ChangeA", chkChangeA);
  StoreFlag(e.row, "chkScenarioHydCond", chkScenarioHydCond);
  StoreFlag(e.row, "chkScenarioRecharge", chkScenarioRecharge);
  StoreText(e.row, "ScenHydCond", tbScenario[1]);
  StoreText(e.row, "ScenRecharge", tbScenario[2]);
  if (static_cast<std::uint32_t>(e.row.Integer("Color")) != color)
    e.row.Set("Color", static_cast<std::int64_t>(color));
}

bool Inhomogeneity::FormChanged() const {
  return tbData != loaded_ || Flags() != loadedFlags_ || tbScenario != loadedTags_;
}

Element InhomogeneityDefaults(Database& db) {
  Element e = NewElement(ElementKind::Inhomogeneity);
  Inhomogeneity dialog;
  const AquiferFrame frame = LoadAquiferFrame(db);
  dialog.SetModelValues(LoadAquiferHydCond(db), frame.base, frame.thickness);
  dialog.init();
  e.row.Set("Label", "");
  e.row.Set("HydCond", Val(dialog.tbData[Inhomogeneity::kHydCond]));
  e.row.Set("Recharge", Val(dialog.tbData[Inhomogeneity::kRecharge]));
  e.row.Set("Porosity", Val(dialog.tbData[Inhomogeneity::kPorosity]));
  e.row.Set("BottomElevation", Val(dialog.tbData[Inhomogeneity::kBottomElevation]));
  e.row.Set("AverageHead", Val(dialog.tbData[Inhomogeneity::kAverageHead]));
  for (const char* flag : {"ChangeK", "ChangeR", "ChangeP", "ChangeB", "ChangeA",
                           "chkScenarioHydCond", "chkScenarioRecharge"})
    e.row.Set(flag, false);
  e.row.Set("ScenHydCond", area_dialogs::kNoTag);
  e.row.Set("ScenRecharge", area_dialogs::kNoTag);
  e.row.Set("Color", std::int64_t{0});
  return e;
}

}  // namespace tarno
