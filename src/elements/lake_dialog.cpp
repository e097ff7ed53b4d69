#include "elements/lake_dialog.h"

#include "elements/area_dialog_support.h"
#include "elements/element_store.h"

namespace tarno {

namespace {
constexpr const char* kNoValue = "__NONE__";
}  // namespace


using area_dialogs::NumberText;

void Lake::init() { failedField = Field::None; }

bool Lake::ChooseColor(UserInterface& ui) {
  const auto chosen = ui.ColourDialog(color);
  if (!chosen) return false;
  color = *chosen;
  return true;
}

std::string Lake::Unit(int i) const {
  switch (i) {
    case kInterriorConductivity:
    case kEvapotranspiration:
    case kAddedRechargeRate:
      return rateUnit;
    case kWidth:
    case kResistance:
      return lengthUnit;
    default:
      return {};
  }
}

void Lake::LoadElement(Database& db, const Element& e) {
  // The lake's own unit words: "feet/day" where the other dialogs say "ft/day".
  const bool meters = LoadAquiferFrame(db).computeMeters;
  lengthUnit = meters ? "meters" : "feet";
  rateUnit = meters ? "m/day" : "feet/day";

  tbLabel = e.row.Text("Label");
  tbData[kInterriorConductivity] = NumberText(e.row, "InterriorConductivity");
  tbData[kEvapotranspiration] = NumberText(e.row, "Evapotranspiration");
  tbData[kWidth] = NumberText(e.row, "Width");
  tbData[kAddedRechargeRate] = NumberText(e.row, "AddedRechargeRate");
  tbData[kResistance] = NumberText(e.row, "Resistance");
  // No table is stored as the project's "no value" (the field may not be empty in the
  // file) and shown as an empty field.
  tbData[kStageTable] = e.row.Text("StageTableFilename");
  if (tbData[kStageTable] == kNoValue) tbData[kStageTable].clear();
  color = static_cast<std::uint32_t>(e.row.Integer("Color"));

  loaded_ = tbData;
  failedField = Field::None;
  Result = 2;
}

bool Lake::OK(Database&, UserInterface& ui) {
  failedField = Field::None;
  if (tbLabel.empty()) {
    ui.MessageBox("Data Missing", {area_dialogs::kNoLabel}, Buttons::OK, Icon::Exclamation);
    failedField = Field::Label;
    Result = 2;
    return false;
  }
  // The solver opens the stage table by a DOS 8.3 name.
  const std::string& table = tbData[kStageTable];
  if (table.find(' ') != std::string::npos || table.size() > kMaxStageTableName) {
    ui.MessageBox("Bad Entry",
                  {"Filename must be no more than 12 characters including the dos extension, "
                   "with no spaces"},
                  Buttons::OK, Icon::Exclamation);
    failedField = Field::StageTable;
    Result = 2;
    return false;
  }
  Result = 1;
  return true;
}

void Lake::StoreElement(Element& e) const {
  using area_dialogs::StoreNumber;
  area_dialogs::StoreText(e.row, "Label", tbLabel);
  StoreNumber(e.row, "InterriorConductivity", tbData[kInterriorConductivity]);
  StoreNumber(e.row, "AddedRechargeRate", tbData[kAddedRechargeRate]);
  StoreNumber(e.row, "Evapotranspiration", tbData[kEvapotranspiration]);
  StoreNumber(e.row, "Resistance", tbData[kResistance]);
  StoreNumber(e.row, "Width", tbData[kWidth]);
  area_dialogs::StoreText(e.row, "StageTableFilename",
                          tbData[kStageTable].empty() ? std::string(kNoValue) : tbData[kStageTable]);
  if (static_cast<std::uint32_t>(e.row.Integer("Color")) != color)
    e.row.Set("Color", static_cast<std::int64_t>(color));
}

bool Lake::FormChanged() const { return tbData != loaded_; }

Element LakeDefaults(Database&) {
  // The dialog offers the values last used; a new dialog's are those of the table.
  Element e = NewElement(ElementKind::Lake);
  e.row.Set("Label", "");
  e.row.Set("StageTableFilename", kNoValue);
  return e;
}

}  // namespace tarno
